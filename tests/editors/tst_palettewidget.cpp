#include "editors/palette/palettewidget.h"
#include "image/paletteobject.h"

#include <QSignalSpy>
#include <QtTest>

using namespace Ovra;

Q_DECLARE_METATYPE(Qt::MouseButton)

class PaletteWidgetTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void clickSelectsOne_data();
    void clickSelectsOne();
    void modifiersBuildSelections();
    void doubleClickAsksForTheColour();
    void dragMovesAColour_data();
    void dragMovesAColour();
    void colourCountLimitsTheSlots();
    void slotsShowTheirColours();
    void changesOfThePaletteRepaint();

private:
    QPoint centre(int index) const { return m_widget->slotRect(index).center(); }

    RGBA m_table[256];
    std::unique_ptr<PaletteObject> m_palette;
    std::unique_ptr<PaletteWidget> m_widget;
};

void PaletteWidgetTest::init()
{
    qRegisterMetaType<Qt::MouseButton>();
    for (int i = 0; i < 256; ++i)
        m_table[i] = RGBA(quint8(i), quint8(255 - i), quint8((i * 7) & 255), 255);
    m_table[0].alpha = 0;
    m_palette = std::make_unique<PaletteObject>(&m_table);
    m_widget = std::make_unique<PaletteWidget>();
    m_widget->setPaletteObject(m_palette.get());
    m_widget->resize(16 * 17 + 1, 16 * 17 + 1);
    m_widget->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_widget.get()));
}

void PaletteWidgetTest::cleanup()
{
    m_widget.reset();
    m_palette.reset();
}

void PaletteWidgetTest::clickSelectsOne_data()
{
    QTest::addColumn<int>("slot");
    QTest::addColumn<Qt::MouseButton>("button");
    QTest::newRow("first, left") << 0 << Qt::LeftButton;
    QTest::newRow("middle, left") << 137 << Qt::LeftButton;
    QTest::newRow("last, right") << 255 << Qt::RightButton;
}

void PaletteWidgetTest::clickSelectsOne()
{
    QFETCH(int, slot);
    QFETCH(Qt::MouseButton, button);
    QSignalSpy clicks(m_widget.get(), &PaletteWidget::colorClick);
    QSignalSpy selection(m_widget.get(), &PaletteWidget::selectionChanged);
    QTest::mouseClick(m_widget.get(), Qt::LeftButton, Qt::NoModifier, centre(200));
    QTest::mouseClick(m_widget.get(), button, Qt::NoModifier, centre(slot));
    QCOMPARE(clicks.count(), 2);
    QCOMPARE(clicks.last().at(0).value<ushort>(), ushort(slot));
    QCOMPARE(clicks.last().at(1).value<Qt::MouseButton>(), button);
    QCOMPARE(m_widget->selectedCount(), 1);
    QVERIFY(m_widget->selection()[slot]);
    QCOMPARE(m_widget->currentIndex(), slot);
    QCOMPARE(selection.count(), 2);
}

void PaletteWidgetTest::modifiersBuildSelections()
{
    QSignalSpy multi(m_widget.get(), &PaletteWidget::multiColorClick);
    QTest::mouseClick(m_widget.get(), Qt::LeftButton, Qt::NoModifier, centre(10));
    QTest::mouseClick(m_widget.get(), Qt::LeftButton, Qt::ControlModifier, centre(40));
    QCOMPARE(m_widget->selectedCount(), 2);
    // Shift takes the run from the last slot clicked alone or with Ctrl.
    QTest::mouseClick(m_widget.get(), Qt::LeftButton, Qt::ShiftModifier, centre(45));
    QCOMPARE(m_widget->selectedCount(), 6);
    for (int i = 40; i <= 45; ++i)
        QVERIFY2(m_widget->isSelected(i), qPrintable(QString::number(i)));
    QVERIFY(!m_widget->isSelected(10));
    // Ctrl on a selected slot takes it out.
    QTest::mouseClick(m_widget.get(), Qt::LeftButton, Qt::ControlModifier, centre(42));
    QCOMPARE(m_widget->selectedCount(), 5);
    QVERIFY(!m_widget->isSelected(42));
    QCOMPARE(multi.count(), 3);
    QCOMPARE(multi.last().at(0).value<ushort>(), ushort(42));
    // The flags are what the colour operations take: a colour for the selection only.
    m_palette->setColor(m_widget->selection(), RGBA(1, 2, 3, 255));
    QCOMPARE(m_table[41], RGBA(1, 2, 3, 255));
    QVERIFY(m_table[42] != RGBA(1, 2, 3, 255));
}

void PaletteWidgetTest::doubleClickAsksForTheColour()
{
    QSignalSpy doubles(m_widget.get(), &PaletteWidget::colorDblClick);
    QTest::mouseDClick(m_widget.get(), Qt::LeftButton, Qt::NoModifier, centre(77));
    QCOMPARE(doubles.count(), 1);
    QCOMPARE(doubles.first().at(0).value<ushort>(), ushort(77));
    QCOMPARE(m_widget->selectedCount(), 1);
    QVERIFY(m_widget->isSelected(77));
}

void PaletteWidgetTest::dragMovesAColour_data()
{
    QTest::addColumn<int>("source");
    QTest::addColumn<int>("target");
    QTest::newRow("forwards") << 3 << 20;
    QTest::newRow("backwards") << 250 << 1;
    QTest::newRow("neighbour") << 16 << 17;
}

void PaletteWidgetTest::dragMovesAColour()
{
    QFETCH(int, source);
    QFETCH(int, target);
    QSignalSpy moves(m_widget.get(), &PaletteWidget::colorMoved);
    QTest::mousePress(m_widget.get(), Qt::LeftButton, Qt::NoModifier, centre(source));
    QTest::mouseMove(m_widget.get(), (centre(source) + centre(target)) / 2);
    QTest::mouseMove(m_widget.get(), centre(target));
    QTest::mouseRelease(m_widget.get(), Qt::LeftButton, Qt::NoModifier, centre(target));
    QCOMPARE(moves.count(), 1);
    QCOMPARE(moves.first().at(0).toInt(), source);
    QCOMPARE(moves.first().at(1).toInt(), target);
    QVERIFY(m_widget->isSelected(target));
    // The widget only asks: the colours stay until someone moves them.
    QCOMPARE(m_table[source], RGBA(quint8(source), quint8(255 - source), quint8((source * 7) & 255),
                                   source == 0 ? 0 : 255));

    // A press and release on one slot is a click, never a move; so is a drag off the grid.
    QTest::mouseClick(m_widget.get(), Qt::LeftButton, Qt::NoModifier, centre(target));
    QTest::mousePress(m_widget.get(), Qt::LeftButton, Qt::NoModifier, centre(source));
    QTest::mouseMove(m_widget.get(), QPoint(m_widget->width() + 40, 5));
    QTest::mouseRelease(m_widget.get(), Qt::LeftButton, Qt::NoModifier, QPoint(m_widget->width() + 40, 5));
    QCOMPARE(moves.count(), 1);
}

void PaletteWidgetTest::colourCountLimitsTheSlots()
{
    QTest::mouseClick(m_widget.get(), Qt::LeftButton, Qt::NoModifier, centre(100));
    QSignalSpy selection(m_widget.get(), &PaletteWidget::selectionChanged);
    QSignalSpy clicks(m_widget.get(), &PaletteWidget::colorClick);
    m_widget->setColorCount(32);
    // The selected slot went away with the others.
    QCOMPARE(selection.count(), 1);
    QCOMPARE(m_widget->selectedCount(), 0);
    QCOMPARE(m_widget->indexAt(m_widget->slotRect(31).center()), 31);
    QVERIFY(m_widget->slotRect(32).isNull());
    // Two rows fill the widget now; below them nothing answers.
    QTest::mouseClick(m_widget.get(), Qt::LeftButton, Qt::NoModifier, QPoint(m_widget->width() / 2, m_widget->height() - 2));
    QCOMPARE(clicks.count(), 0);
    QTest::mouseClick(m_widget.get(), Qt::LeftButton, Qt::NoModifier, m_widget->slotRect(31).center());
    QCOMPARE(clicks.count(), 1);
    m_widget->setColorCount(300);
    QCOMPARE(m_widget->colorCount(), 256);
    m_widget->setColorCount(-4);
    QCOMPARE(m_widget->colorCount(), 0);
    QCOMPARE(m_widget->indexAt(QPoint(5, 5)), -1);
}

void PaletteWidgetTest::slotsShowTheirColours()
{
    const QImage shot = m_widget->grab().toImage();
    for (int index : {1, 17, 128, 255}) {
        const QPoint point = centre(index);
        QCOMPARE(QColor(shot.pixel(point)), QColor(m_table[index].red, m_table[index].green, m_table[index].blue));
    }
    // The transparent entry shows the check behind it, not black.
    const QColor transparent(shot.pixel(m_widget->slotRect(0).topLeft() + QPoint(1, 1)));
    QVERIFY2(transparent.lightness() > 150, qPrintable(transparent.name()));
}

void PaletteWidgetTest::changesOfThePaletteRepaint()
{
    QSignalSpy changed(m_widget.get(), &PaletteWidget::changed);
    m_palette->setColor(uchar(9), RGBA(10, 200, 30, 255));
    QCOMPARE(changed.count(), 1);
    QTRY_COMPARE(QColor(m_widget->grab().toImage().pixel(centre(9))), QColor(10, 200, 30));
    // A widget left without colours no longer follows the old ones.
    m_widget->setPaletteObject(nullptr);
    QCOMPARE(changed.count(), 2);
    m_palette->setColor(uchar(9), RGBA(1, 1, 1, 255));
    QCOMPARE(changed.count(), 2);
}

QTEST_MAIN(PaletteWidgetTest)
#include "tst_palettewidget.moc"
