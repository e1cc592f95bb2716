// The sprite editor's canvas side as a user works it: the layer panel, the tools and the
// colour wells on the view, the clipboard, the palettes shown, the organizer beside it,
// and the screenshot of the editor with layers and a selection.
#include "iconsheet.h"
#include "spriteeditortestsupport.h"

#include "editors/organizer/organizereditor.h"
#include "editors/sprite/imagecanvas.h"
#include "editors/sprite/imagelayer.h"
#include "editors/sprite/imagelayers.h"
#include "editors/sprite/imagepainter.h"
#include "editors/sprite/imagetool.h"
#include "editors/sprite/rasterlayer.h"
#include "project/regexp.h"

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QMutex>
#include <QPainter>
#include <QSet>
#include <QSignalSpy>
#include <QSlider>
#include <QSpinBox>
#include <QThread>
#include <QToolBar>
#include <QToolButton>
#include <QUndoStack>

using namespace Ovra;

class SpriteEditorLayersTest : public QObject, public SpriteEditorFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { startPlugins(); }
    void init() { open(); }
    void cleanup() { close(); }

    void copyCutPaste();
    void toolsAndRemap();
    void toolsHaveDrawnIcons();
    void layerPanel();
    void pickerSetsTheWells();
    void playLayersAndFind();
    void colourWellsAndPalettes();
    void organizerByOptions_data();
    void organizerByOptions();
    void pictureAsLayerGrowsTheCanvas();
    void screenshot();
};

// The selection goes to the clipboard; a cut clears it on the layer as one step; a paste
// comes back as a layer of its own.
void SpriteEditorLayersTest::copyCutPaste()
{
    m_editor->setCurrentSprite(0);
    ImageCanvas *canvas = m_editor->canvas();
    const QImage before = canvas->composed();
    const QSize size = canvas->size();
    const QRect box(size.width() / 4, size.height() / 4, size.width() / 2, size.height() / 2);
    QByteArray mask(size.width() * size.height(), '\0');
    for (int y = box.top(); y <= box.bottom(); ++y)
        for (int x = box.left(); x <= box.right(); ++x)
            mask[y * size.width() + x] = 1;
    QVERIFY(canvas->setSelection(mask));
    m_editor->copy();
    const QImage copied = QApplication::clipboard()->image().convertToFormat(QImage::Format_ARGB32);
    QCOMPARE(copied.size(), box.size());
    QCOMPARE(copied.pixel(3, 3), before.convertToFormat(QImage::Format_ARGB32).pixel(box.topLeft() + QPoint(3, 3)));

    const int steps = canvas->undoStack()->index();
    m_editor->cut();
    QCOMPARE(canvas->undoStack()->index(), steps + 1);
    const QImage cut = canvas->composed();
    QCOMPARE(cut.pixelIndex(box.center()), 0);
    QCOMPARE(cut.pixelIndex(0, 0), before.pixelIndex(0, 0));
    m_editor->undo();
    QCOMPARE(canvas->composed(), before);

    m_editor->paste();
    QCOMPARE(canvas->layers()->count(), 2);
    QCOMPARE(canvas->size(), size);
}

// The tools are one exclusive group; the remap table of the palette editor reaches the
// canvas's painter.
void SpriteEditorLayersTest::toolsAndRemap()
{
    QCOMPARE(m_editor->tools().size(), 10);
    action("spr_tool_eraser")->trigger();
    QCOMPARE(m_editor->currentTool()->actionName(), "spr_tool_eraser");
    QCOMPARE(m_editor->renderer()->tool(), m_editor->currentTool());
    QVERIFY(m_editor->currentTool()->isActive());
    QVERIFY(!action("spr_tool_pen")->isChecked());
    action("spr_tool_picker")->trigger();
    QVERIFY(!action("spr_tool_eraser")->isChecked());
    QVERIFY(action("spr_tool_picker")->isChecked());
    QCOMPARE(m_editor->currentTool()->actionName(), "spr_tool_picker");

    const QMap<uint, uint> table{{1, 7}, {2, 9}};
    emit m_palettes->remapRequested(table);
    QCOMPARE(m_editor->canvas()->painter()->remap(), table);
    // The painter made anew for another format keeps it.
    m_editor->canvas()->setFormat(1 - m_editor->canvas()->format(), false);
    QCOMPARE(m_editor->canvas()->painter()->remap(), table);
}

// The test host's icons are single pixels: each tool shows a drawing of its own instead,
// sharp at the sizes a tool bar asks for. The sheet of them, for the eye, goes beside
// the program as imagetoolicons.png.
void SpriteEditorLayersTest::toolsHaveDrawnIcons()
{
    QList<QPair<QString, QIcon>> icons;
    for (const ImageTool *tool : m_editor->tools())
        icons << qMakePair(QString::fromLatin1(tool->actionName()), action(tool->actionName())->icon());
    checkIconSheet(icons, QStringLiteral("imagetoolicons.png"));
}

// The layer panel as a user works it: a layer picked in the list, its blend mode chosen
// in the box with the keys, its opacity dragged by the keys on the slider, each an undo
// step of the canvas.
void SpriteEditorLayersTest::layerPanel()
{
    QVERIFY(showEditor());
    m_editor->setCurrentSprite(0);
    action("spr_layer_add")->trigger();
    ImageLayers *layers = m_editor->canvas()->layers();
    QCOMPARE(layers->count(), 2);
    auto *list = field<QListView>("spr_layers_list");
    auto *blend = field<QComboBox>("spr_layers_blendmode");
    auto *opacity = field<QSlider>("spr_layers_opacity");
    QVERIFY(list && blend && opacity);
    QCOMPARE(blend->count(), int(BlendEntryCount));
    QCOMPARE(blend->itemText(0), QStringLiteral("Normal"));
    QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier, list->visualRect(layers->index(1)).center());
    QCOMPARE(list->currentIndex().row(), 1);
    // The painter paints on the layer picked.
    auto *bottom = dynamic_cast<RasterLayer *>(layers->at(1));
    QVERIFY(bottom);
    QCOMPARE(m_editor->canvas()->painter()->image(), bottom->imagePointer());

    QUndoStack *history = m_editor->canvas()->undoStack();
    const int steps = history->index();
    blend->setFocus();
    QTest::keyClick(blend, Qt::Key_Down);
    QTest::keyClick(blend, Qt::Key_Down);
    QCOMPARE(layers->at(1)->blendMode(), blendModeOfEntry(2));
    QCOMPARE(layers->at(0)->blendMode(), QPainter::CompositionMode_SourceOver);
    opacity->setFocus();
    QTest::keyClick(opacity, Qt::Key_PageDown);
    QCOMPARE(layers->at(1)->opacity(), (100 - opacity->pageStep()) / 100.0);
    // Each key on the box was a step of its own: Add, then Multiply, then the opacity.
    QCOMPARE(history->index(), steps + 3);

    // Back on the top layer the fields show its own values.
    QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier, list->visualRect(layers->index(0)).center());
    QCOMPARE(blend->currentIndex(), 0);
    QCOMPARE(opacity->value(), 100);
    // Undone, the bottom layer is as it was.
    for (int i = 0; i < 3; ++i)
        m_editor->undo();
    QCOMPARE(history->index(), steps);
    QCOMPARE(layers->at(1)->blendMode(), QPainter::CompositionMode_SourceOver);
    QCOMPARE(layers->at(1)->opacity(), 1.0);
}

// The picker on the view: the left button gives the foreground, the right one the
// background, and the pen paints with what was picked.
void SpriteEditorLayersTest::pickerSetsTheWells()
{
    QVERIFY(showEditor());
    m_editor->setCurrentSprite(0);
    m_graphics->zoomIn();
    const QImage picture = m_editor->canvas()->composed();
    QVERIFY(picture.format() == QImage::Format_Indexed8);
    // Two pixels of different colours.
    QPoint first(-1, -1);
    QPoint second(-1, -1);
    for (int y = 0; y < picture.height() && second.x() < 0; ++y) {
        for (int x = 0; x < picture.width() && second.x() < 0; ++x) {
            if (picture.pixelIndex(x, y) == 0)
                continue;
            if (first.x() < 0)
                first = QPoint(x, y);
            else if (picture.pixelIndex(x, y) != picture.pixelIndex(first))
                second = QPoint(x, y);
        }
    }
    QVERIFY(second.x() >= 0);
    ImageRenderer *renderer = m_editor->renderer();
    const auto middle = [renderer](const QPoint &pixel) {
        return ((renderer->viewPoint(pixel) + renderer->viewPoint(pixel + QPoint(1, 1))) / 2).toPoint();
    };
    action("spr_tool_picker")->trigger();
    QTest::mouseClick(view(), Qt::LeftButton, Qt::NoModifier, middle(first));
    QTest::mouseClick(view(), Qt::RightButton, Qt::NoModifier, middle(second));
    const uint foreground = uint(picture.pixelIndex(first));
    const uint background = uint(picture.pixelIndex(second));
    QCOMPARE(m_editor->canvas()->painter()->color(), foreground);
    QCOMPARE(field<QToolButton>("spr_foreground")->toolTip(), QStringLiteral("Foreground: %1").arg(foreground));
    QCOMPARE(field<QToolButton>("spr_background")->toolTip(), QStringLiteral("Background: %1").arg(background));
    // Swapped by the background well, the pen paints the second colour.
    QTest::mouseClick(field<QToolButton>("spr_background"), Qt::LeftButton);
    action("spr_tool_pen")->trigger();
    QTest::mouseClick(view(), Qt::LeftButton, Qt::NoModifier, middle(first));
    QCOMPARE(uint(m_editor->canvas()->composed().pixelIndex(first)), background);
}

// The layers shown one by one and then as they were; the search by the names in the list.
void SpriteEditorLayersTest::playLayersAndFind()
{
    m_editor->setCurrentSprite(0);
    action("spr_layer_add")->trigger();
    action("spr_layer_add")->trigger();
    ImageLayers *layers = m_editor->canvas()->layers();
    QCOMPARE(layers->count(), 3);
    layers->at(1)->setVisible(false);
    QSignalSpy changes(layers, &QAbstractItemModel::dataChanged);
    action("spr_layer_play")->trigger();
    // The bottom layer alone first.
    QVERIFY(layers->at(2)->isVisible());
    QVERIFY(!layers->at(0)->isVisible() && !layers->at(1)->isVisible());
    // Then the middle one, the top one, and the three as they were: six changes of
    // visibility in all.
    QTRY_COMPARE_WITH_TIMEOUT(changes.count(), 6, 10000);
    QVERIFY(layers->at(0)->isVisible() && !layers->at(1)->isVisible() && layers->at(2)->isVisible());
    QCOMPARE(m_editor->canvas()->layers()->count(), 3);

    const int count = int(m_sprites->count());
    const QString last = m_sprites->data(m_sprites->index(count - 1), Qt::DisplayRole).toString();
    ScriptedAnswerer answers({QMessageBox::Yes});
    QVERIFY(m_editor->find(RegExp(QRegularExpression::escape(last) + QLatin1Char('$')), 0));
    QCOMPARE(answers.prompts().size(), 1); // the layers added were changes
    QCOMPARE(m_editor->currentIndex(), count - 1);
    QVERIFY(!m_editor->find(RegExp(QStringLiteral("no such sprite")), 0));
    QCOMPARE(m_editor->currentIndex(), count - 1);
}

// The background well swaps the colours; another palette of the file shows the canvas
// in its colours until it is taken away.
void SpriteEditorLayersTest::colourWellsAndPalettes()
{
    m_editor->setCurrentSprite(0);
    auto *background = field<QToolButton>("spr_background");
    QVERIFY(background && field<QToolButton>("spr_foreground"));
    ImagePainter *painter = m_editor->canvas()->painter();
    const uint first = painter->color();
    QTest::mouseClick(background, Qt::LeftButton);
    QVERIFY(painter->color() != first);
    QTest::mouseClick(background, Qt::LeftButton);
    QCOMPARE(painter->color(), first);

    Palettes *palettes = m_sprites->palettes();
    QVERIFY(palettes && palettes->count() > 0);
    RGBA table[256];
    for (int i = 0; i < 256; ++i)
        table[i] = RGBA(quint8(i), 0, quint8(255 - i), 255);
    Palette *other = palettes->add(table, QPoint(9, 9), Archive::NoShare);
    QVERIFY(other);
    m_editor->switchPalette(other);
    QCOMPARE(m_editor->canvas()->palette()->at(10), table[10]);
    // Edited in the palette editor, the colours shown follow; the pixels stay.
    const QImage pixels = m_editor->canvas()->composed();
    table[10] = RGBA(1, 2, 3, 255);
    other->setColorTable(table, Archive::NoShare);
    m_palettes->setCurrentPalette(other);
    emit m_palettes->paletteChanged();
    QCOMPARE(m_editor->canvas()->palette()->at(10), RGBA(1, 2, 3, 255));
    const QImage after = m_editor->canvas()->composed();
    QCOMPARE(QByteArray(reinterpret_cast<const char *>(after.constBits()), int(after.sizeInBytes())),
             QByteArray(reinterpret_cast<const char *>(pixels.constBits()), int(pixels.sizeInBytes())));
    QVERIFY(m_editor->canvas()->undoStack()->isClean());
    m_editor->switchPalette(nullptr);
    QVERIFY(m_editor->canvas()->palette()->at(10) != table[10] || m_editor->canvas()->format() == 1);
}

void SpriteEditorLayersTest::organizerByOptions_data()
{
    QTest::addColumn<bool>("shown");
    QTest::addColumn<bool>("palettes");
    QTest::newRow("sprites") << true << false;
    QTest::newRow("palettes") << true << true;
    QTest::newRow("hidden") << false << false;
}

void SpriteEditorLayersTest::organizerByOptions()
{
    QFETCH(bool, shown);
    QFETCH(bool, palettes);
    OrganizerEditor organizer;
    m_host->organizer = &organizer;
    m_host->options[QStringLiteral("show_organizer")] = shown;
    m_host->options[QStringLiteral("org_palette")] = palettes;
    m_editor->deactivate();
    m_editor->activate();
    QCOMPARE(m_host->shownExtra, shown ? &organizer : nullptr);
    OrganizableObject *expected = m_sprites;
    if (palettes)
        expected = m_sprites->palettes();
    QCOMPARE(organizer.object(), shown ? expected : nullptr);
    m_host->organizer = nullptr;
    organizer.setObject(nullptr);
}

// A sprite of the explorer laid as a layer on a smaller one: the canvas grows to hold
// it, centring the old layers, and the axis moves by half the growth when saved.
void SpriteEditorLayersTest::pictureAsLayerGrowsTheCanvas()
{
    int small = -1;
    int large = -1;
    for (uint row = 0; row < m_sprites->count(); ++row) {
        const QSize size = m_sprites->at(row)->image().size();
        if (small < 0 || size.width() < m_sprites->at(uint(small))->image().width())
            small = int(row);
        if (large < 0 || size.width() > m_sprites->at(uint(large))->image().width())
            large = int(row);
    }
    QVERIFY(small != large);
    const QSize smallSize = m_sprites->at(uint(small))->image().size();
    const QSize largeSize = m_sprites->at(uint(large))->image().size();
    const QSize grown = smallSize.expandedTo(largeSize);
    m_editor->setCurrentSprite(small);
    const QPoint axis = m_editor->currentSprite()->axis();
    QVERIFY(showEditor());
    // The explorer's list: the large sprite clicked.
    auto *list = m_thumbnails->widget()->findChild<QListView *>();
    QVERIFY(list);
    m_thumbnails->widget()->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_thumbnails->widget()));
    list->scrollTo(list->model()->index(large, 0));
    QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier,
                      list->visualRect(list->model()->index(large, 0)).center());
    QCOMPARE(m_thumbnails->selected(), QList<Sprite *>{m_sprites->at(uint(large))});
    action("spr_thumb_add")->trigger();
    QCOMPARE(m_editor->canvas()->layers()->count(), 2);
    QCOMPARE(m_editor->canvas()->size(), grown);
    action("spr_saveimg")->trigger();
    const QPoint shift((grown.width() - smallSize.width()) / 2, (grown.height() - smallSize.height()) / 2);
    QCOMPARE(m_editor->currentSprite()->axis(), axis + shift);
    QCOMPARE(m_editor->currentSprite()->image().size(), grown);
}

// The editor with two layers and a selection, for the eye.
void SpriteEditorLayersTest::screenshot()
{
    QVERIFY(showEditor());
    m_editor->setCurrentSprite(0);
    action("spr_layer_duplicate")->trigger();
    QCOMPARE(m_editor->canvas()->layers()->count(), 2);
    const QSize size = m_editor->canvas()->size();
    QByteArray mask(size.width() * size.height(), '\0');
    for (int y = size.height() / 4; y < size.height() * 3 / 4; ++y)
        for (int x = size.width() / 4; x < size.width() * 3 / 4; ++x)
            mask[y * size.width() + x] = 1;
    QVERIFY(m_editor->canvas()->setSelection(mask));
    // Closer, by the view's buttons.
    for (int i = 0; i < 3; ++i)
        QTest::mouseClick(m_graphics->toolBar()->widgetForAction(action("view_zoom_in")), Qt::LeftButton);
    QVERIFY(m_editor->renderer()->zoomFactor() > 1.0f);
    QVERIFY(m_graphics->sidePanel());
    QVERIFY(m_graphics->sidePanel()->isVisible());
    QApplication::processEvents();
    const QImage picture = m_graphics->grab().toImage();
    QVERIFY(!picture.isNull());
    QVERIFY(picture.save(QCoreApplication::applicationDirPath() + QStringLiteral("/spriteeditor.png")));
}

QTEST_MAIN(SpriteEditorLayersTest)
#include "tst_spriteeditorlayers.moc"
