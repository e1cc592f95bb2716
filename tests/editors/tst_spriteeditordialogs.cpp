// The dialogs of the sprite editor as a user reads and works them, and the identifiers
// that the import reads from file names and the export writes into them.
#include "editors/sprite/imginfodlg.h"
#include "editors/sprite/imgresizedlg.h"
#include "editors/sprite/paldlg.h"
#include "editors/sprite/rotimgdlg.h"
#include "editors/sprite/spriteeditor_p.h"
#include "editors/sprite/sprimport.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QtTest>

using namespace Ovra;

class SpriteDialogsTest : public QObject
{
    Q_OBJECT

private slots:
    void dialogTexts();
    void identifiersOfFileNames_data();
    void identifiersOfFileNames();
};

// The labels of the dialogs, as the user reads them.
void SpriteDialogsTest::dialogTexts()
{
    const auto labels = [](QWidget *dialog) {
        QStringList texts;
        for (QLabel *label : dialog->findChildren<QLabel *>())
            texts << label->text();
        for (QAbstractButton *button : dialog->findChildren<QAbstractButton *>())
            texts << button->text();
        return texts;
    };
    PalDlg palette({QStringLiteral("a.png")}, {QStringLiteral("P1")});
    const QStringList paletteTexts = labels(&palette);
    for (const char *text : {"Palette:", "Reversed", "Select all", "Clear", "Invert selection"})
        QVERIFY2(paletteTexts.contains(QString::fromLatin1(text)), text);
    QStringList modes;
    for (int row = 0; row < palette.modeFields()->modeBox()->count(); ++row)
        modes << palette.modeFields()->modeBox()->itemText(row);
    QCOMPARE(modes.mid(1), QStringList({QStringLiteral("Image's palette, if not already added"),
                                        QStringLiteral("Force the specified palette (adapt the image)"),
                                        QStringLiteral("Exchange with the specified palette")}));
    // The list's buttons work on the ticks.
    PalDlg three({QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")}, {});
    QTest::mouseClick(three.findChild<QPushButton *>(QStringLiteral("import_clear")), Qt::LeftButton);
    QCOMPARE(three.checkedRows(), QList<int>());
    three.setChecked(1, true);
    QTest::mouseClick(three.findChild<QPushButton *>(QStringLiteral("import_invert")), Qt::LeftButton);
    QCOMPARE(three.checkedRows(), QList<int>({0, 2}));
    QTest::mouseClick(three.findChild<QPushButton *>(QStringLiteral("import_select_all")), Qt::LeftButton);
    QCOMPARE(three.checkedRows(), QList<int>({0, 1, 2}));
    // Without palettes in the file the adapting modes can't be chosen.
    three.setMode(Sprite::AdaptImage);
    QCOMPARE(three.mode(), Sprite::OwnPalette);

    SprImport import({QStringLiteral("0, 0")}, {QStringLiteral("P1")});
    QVERIFY(labels(&import).contains(QStringLiteral("Palette:")));
    QCOMPARE(import.objectName(), QStringLiteral("spr_import"));

    ImgInfoDlg info(0, QSize(4, 3));
    QCOMPARE(info.windowTitle(), QStringLiteral("Properties"));
    for (const char *text : {"Format:", "Width:", "Height:"})
        QVERIFY2(labels(&info).contains(QString::fromLatin1(text)), text);
    QCOMPARE(info.formatBox()->itemText(info.format()), QStringLiteral("RGBA (indexed color)"));
    QVERIFY(info.formatBox()->findText(QStringLiteral("RGBA")) >= 0);

    ImgResizeDlg resize(QSize(4, 3));
    QCOMPARE(resize.windowTitle(), QStringLiteral("Resize"));
    QVERIFY(labels(&resize).contains(QStringLiteral("Filter:")));
    QStringList filters;
    for (int row = 0; row < resize.filterBox()->count(); ++row)
        filters << resize.filterBox()->itemText(row);
    QCOMPARE(filters, QStringList({QStringLiteral("Nearest Neighbor"), QStringLiteral("Bilinear"),
                                   QStringLiteral("EPX + Nearest Neighbor"), QStringLiteral("EPX + Bilinear"),
                                   QStringLiteral("HQ + Nearest Neighbor"), QStringLiteral("HQ + Bilinear")}));

    RotImgDlg rotate;
    QCOMPARE(rotate.windowTitle(), QStringLiteral("Rotate"));
    QVERIFY(labels(&rotate).contains(QStringLiteral("Angle:")));
}

void SpriteDialogsTest::identifiersOfFileNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QVariant>("identifier");
    QTest::newRow("export name") << "knight_12_3.png" << QVariant(QPoint(12, 3));
    QTest::newRow("bare") << "0_7.pcx" << QVariant(QPoint(0, 7));
    QTest::newRow("one number") << "pic_07.png" << QVariant();
    QTest::newRow("too large") << "a_70000_1.png" << QVariant();
    QTest::newRow("words") << "walk.png" << QVariant();
}

void SpriteDialogsTest::identifiersOfFileNames()
{
    QFETCH(QString, name);
    QFETCH(QVariant, identifier);
    QCOMPARE(spriteIdentifierOfFile(QStringLiteral("/some/where/") + name), identifier);
    if (identifier.isValid())
        QCOMPARE(spriteIdentifierOfFile(QStringLiteral("x_") + spriteIdentifierText(identifier)), identifier);
}

QTEST_MAIN(SpriteDialogsTest)
#include "tst_spriteeditordialogs.moc"
