// The knight's sprites in the studio as a person paints them: the sprite file opened from
// the project tree in the sprite painter with the palette editor and the explorer beside
// it, a tool and a colour chosen with the mouse, a stroke on the real OpenGL canvas, undone
// and saved from the menus, and the work opened again; pictures imported from the Sprite
// menu and kept on disk.
#include "studiotestsupport.h"

#include "commandline.h"
#include "graphicseditors.h"

#include "editors/graphics/graphicsworkspace.h"
#include "editors/organizer/organizereditor.h"
#include "editors/palette/paletteeditor.h"
#include "editors/palette/paladddlg.h"
#include "editors/palette/palettewidget.h"
#include "editors/sprite/imagecanvas.h"
#include "editors/sprite/imagelayer.h"
#include "editors/sprite/imagelayers.h"
#include "editors/sprite/imagerenderer.h"
#include "editors/sprite/imagetool.h"
#include "editors/sprite/paldlg.h"
#include "editors/sprite/rasterlayer.h"
#include "editors/sprite/spriteeditor.h"
#include "engine/projectlocator.h"
#include "image/paletteobject.h"
#include "image/sprite.h"
#include "project/project.h"
#include "render/renderwidgetbase.h"

#include "../render/rendertestsupport.h"
#include "modalanswer.h"
#include "pixelsets.h"
#include "scriptedanswerer.h"
#include "testfiles.h"

#include <QAction>
#include <QCheckBox>
#include <QDockWidget>
#include <QSet>
#include <QStackedWidget>
#include <QTemporaryDir>
#include <QToolBar>
#include <QToolButton>
#include <QTreeView>
#include <QtTest>

#include <algorithm>
#include <memory>

using namespace Ovra;
using namespace StudioTest;

namespace {

// The pixels where two indexed pictures of one size differ.
Pixels changedPixels(const QImage &before, const QImage &after)
{
    Pixels changed;
    for (int y = 0; y < before.height(); ++y) {
        for (int x = 0; x < before.width(); ++x) {
            if (before.pixelIndex(x, y) != after.pixelIndex(x, y))
                changed.insert(QPoint(x, y));
        }
    }
    return changed;
}

} // namespace

class StudioSpritesTest : public QObject, private ExampleWork
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void spriteFileOpensInThePainter();
    void penStrokeIsUndoneSavedAndKept();
    void toolsOnTheKnight_data();
    void toolsOnTheKnight();
    void importedPicturesAreKept();
    void paletteAddedFromAFileIsKept();
    void screenshot();

private:
    void showKnightsSprites();
    SpriteEditor *editor() const { return studio->window->graphicsEditors()->spriteEditor(); }
    GraphicsWorkspace *graphics() const { return studio->window->graphicsEditors()->workspace(); }
    PaletteWidget *colours() const { return studio->window->graphicsEditors()->palettes()->paletteWidget(); }
    QWidget *view() const { return dynamic_cast<QWidget *>(graphics()->renderWidget()); }
    QImage layerImage(int row = 0) const
    {
        return static_cast<const RasterLayer *>(editor()->canvas()->layers()->at(row))->image();
    }
    // The middle of a picture pixel on the view.
    QPoint viewOf(QPoint pixel) const
    {
        const double scale = editor()->canvas()->scale();
        return (editor()->renderer()->viewPoint(pixel) + QPointF(scale / 2, scale / 2)).toPoint();
    }
    // Presses at the first pixel, moves through the others and lets go at the last.
    void stroke(const QVector<QPoint> &path);
    Sprites *reopenedSprites();

};

void StudioSpritesTest::init()
{
    QVERIFY(open());
}

void StudioSpritesTest::cleanup()
{
    close();
}

void StudioSpritesTest::showKnightsSprites()
{
    QTreeView *tree = studio->window->projectTree();
    QVERIFY(doubleClickRow(tree, findRow(tree->model(), QStringLiteral("knight.osp"))));
    QVERIFY(editor()->isActive());
    QCOMPARE(studio->window->centre()->currentWidget(), static_cast<QWidget *>(graphics()));
    QVERIFY(QTest::qWaitForWindowExposed(view()));
    QVERIFY(editor()->currentSprite());
    QCOMPARE(editor()->canvas()->format(), 0);
}

void StudioSpritesTest::stroke(const QVector<QPoint> &path)
{
    QWidget *widget = view();
    QTest::mouseMove(widget, viewOf(path.first()));
    QTest::mousePress(widget, Qt::LeftButton, Qt::NoModifier, viewOf(path.first()));
    for (const QPoint &pixel : path.mid(1)) {
        QMouseEvent move(QEvent::MouseMove, viewOf(pixel), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(widget, &move);
    }
    QTest::mouseRelease(widget, Qt::LeftButton, Qt::NoModifier, viewOf(path.last()));
}

// The sprites of the work as the next session finds them on disk.
Sprites *StudioSpritesTest::reopenedSprites()
{
    return reopen() ? dynamic_cast<Sprites *>(studio->host->project(0)->file(Project::Sprites)) : nullptr;
}

void StudioSpritesTest::spriteFileOpensInThePainter()
{
    showKnightsSprites();
    QVERIFY(studio->host->action("editor_spr")->isChecked());
    QCOMPARE(studio->host->editorForFile(nullptr, Project::Sprites), editor());
    // The palettes, the explorer and the organizer of the sprites stand beside the canvas.
    QDockWidget *palettes = studio->window->dock(QStringLiteral("dock_palettes"));
    QDockWidget *explorer = studio->window->dock(QStringLiteral("dock_explorer"));
    QVERIFY(palettes->isVisible());
    QVERIFY(explorer->isVisible());
    QCOMPARE(studio->window->graphicsEditors()->palettes()->palettes(), editor()->sprites()->palettes());
    auto *organizer = qobject_cast<OrganizerEditor *>(studio->host->extraEditor(0));
    QCOMPARE(organizer->object(), static_cast<OrganizableObject *>(editor()->sprites()));
    // The painting tools stand on the view's bar in place of the animation view's switches.
    QToolBar *bar = graphics()->toolBar();
    for (ImageTool *tool : editor()->tools())
        QVERIFY(bar->widgetForAction(studio->host->action(tool->actionName()))->isVisible());
    QVERIFY(!bar->widgetForAction(studio->host->action("view_rulers"))->isVisible());

    // The explorer put away and brought back by its switch in the Sprite menu.
    QVERIFY(chooseFromMenu(studio->window.get(), "sprite", "spr_explorer"));
    QTRY_VERIFY(!explorer->isVisible());
    QCOMPARE(organizer->object(), static_cast<OrganizableObject *>(editor()->sprites()));
    QVERIFY(chooseFromMenu(studio->window.get(), "sprite", "spr_explorer"));
    QTRY_VERIFY(explorer->isVisible());

    // On to the animations: the palettes go, the view's own switches come back.
    QTreeView *tree = studio->window->projectTree();
    QVERIFY(doubleClickRow(tree, findRow(tree->model(), QStringLiteral("knight.oan"))));
    QVERIFY(!editor()->isActive());
    QTRY_VERIFY(!palettes->isVisible());
    QVERIFY(bar->widgetForAction(studio->host->action("view_rulers"))->isVisible());
    QVERIFY(!bar->widgetForAction(studio->host->action("spr_tool_pen")));
    QVERIFY(nobody->prompts().isEmpty());
}

// The pen chosen on the bar, its size by "+" on the view, its colour by a click in the
// palette editor; a stroke with a corner at zoom 4 paints exactly the pen's two lines, Edit ▸ Undo takes it
// back, Redo and File ▸ Save keep it in the sprite file.
void StudioSpritesTest::penStrokeIsUndoneSavedAndKept()
{
    showKnightsSprites();
    editor()->canvas()->setScale(4);
    QVERIFY(clickToolButton(studio->window.get(), "graphics_toolbar", "spr_tool_eraser"));
    QVERIFY(clickToolButton(studio->window.get(), "graphics_toolbar", "spr_tool_pen"));
    QCOMPARE(QByteArray(editor()->currentTool()->actionName()), QByteArray("spr_tool_pen"));
    QTest::mouseMove(view(), viewOf(QPoint(1, 1)));
    QTest::keyClick(view(), Qt::Key_Plus);
    QTest::keyClick(view(), Qt::Key_Plus);
    const int ink = 7;
    QTest::mouseClick(colours(), Qt::LeftButton, Qt::NoModifier, colours()->slotRect(ink).center());

    const int row = editor()->currentIndex();
    const QImage before = layerImage();
    const QPoint a(4, 6), b(30, 19), c(12, 40);
    stroke({a, b, c});
    const QImage painted = layerImage();
    const Pixels expected = penLine(a, b, 3, before.size()) + penLine(b, c, 3, before.size());
    Pixels inked; // the pen's pixels that weren't of its colour already
    for (const QPoint &p : expected) {
        if (before.pixelIndex(p) != ink)
            inked.insert(p);
    }
    QVERIFY(inked.size() > 40);
    QCOMPARE(changedPixels(before, painted), inked);
    for (const QPoint &p : expected)
        QCOMPARE(painted.pixelIndex(p), ink);

    QVERIFY(chooseFromMenu(studio->window.get(), "menu_edit", "edit_undo"));
    QVERIFY(changedPixels(before, layerImage()).isEmpty());
    QVERIFY(chooseFromMenu(studio->window.get(), "menu_edit", "edit_redo"));
    QVERIFY(changedPixels(painted, layerImage()).isEmpty());
    QVERIFY(clickToolButton(studio->window.get(), "bar_file", "file_save"));
    QVERIFY(nobody->prompts().isEmpty());

    Sprites *sprites = reopenedSprites();
    QVERIFY(sprites);
    const QImage kept = sprites->at(uint(row))->image();
    QCOMPARE(kept.size(), painted.size());
    QVERIFY(changedPixels(painted, kept).isEmpty());
}

void StudioSpritesTest::toolsOnTheKnight_data()
{
    QTest::addColumn<QByteArray>("tool");
    QTest::addColumn<bool>("contiguous");
    QTest::newRow("bucket, contiguous") << QByteArray("spr_tool_paintbucket") << true;
    QTest::newRow("bucket, everywhere") << QByteArray("spr_tool_paintbucket") << false;
    QTest::newRow("eraser") << QByteArray("spr_tool_eraser") << true;
    QTest::newRow("picker") << QByteArray("spr_tool_picker") << true;
    QTest::newRow("magic wand") << QByteArray("spr_tool_magicwand") << true;
}

// Each tool taken from the bar, its "Contiguous" box clicked beside the colour wells, used
// with the mouse on the knight: the pixels, the colour or the mask a reference gives.
void StudioSpritesTest::toolsOnTheKnight()
{
    QFETCH(QByteArray, tool);
    QFETCH(bool, contiguous);
    showKnightsSprites();
    const QImage before = layerImage();
    // A spot of the knight's own colours (not the clear ground) in a patch of some size.
    QPoint spot(-1, -1);
    for (int y = before.height() / 2; y < before.height() && spot.x() < 0; ++y) {
        for (int x = 0; x < before.width() && spot.x() < 0; ++x) {
            if (before.pixelIndex(x, y) != 0 && region(before, QPoint(x, y)).size() > 12)
                spot = QPoint(x, y);
        }
    }
    QVERIFY(spot.x() >= 0);
    const int under = before.pixelIndex(spot);
    const int ink = under == 7 ? 8 : 7;
    QTest::mouseClick(colours(), Qt::LeftButton, Qt::NoModifier, colours()->slotRect(ink).center());
    QVERIFY(clickToolButton(studio->window.get(), "graphics_toolbar", tool.constData()));
    if (auto *box = editor()->widget()->findChild<QCheckBox *>()) {
        QCOMPARE(box->text(), QStringLiteral("Contiguous"));
        if (box->isChecked() != contiguous)
            QTest::mouseClick(box, Qt::LeftButton, Qt::NoModifier, QPoint(8, box->height() / 2));
        QCOMPARE(box->isChecked(), contiguous);
    }

    Pixels expected;
    if (tool == "spr_tool_eraser") {
        stroke({spot, spot + QPoint(9, 4)});
        expected = penLine(spot, spot + QPoint(9, 4), 1, before.size());
    } else {
        stroke({spot});
        expected = region(before, spot);
        if (!contiguous) {
            expected.clear();
            for (int y = 0; y < before.height(); ++y)
                for (int x = 0; x < before.width(); ++x)
                    if (before.pixelIndex(x, y) == under)
                        expected.insert(QPoint(x, y));
            QVERIFY2(expected.size() > region(before, spot).size(), "the colour should stand in other places too");
        }
    }
    if (tool == "spr_tool_picker") {
        QVERIFY(changedPixels(before, layerImage()).isEmpty());
        auto *well = editor()->widget()->findChild<QToolButton *>(QStringLiteral("spr_foreground"));
        QCOMPARE(well->toolTip(), QStringLiteral("Foreground: %1").arg(under));
    } else if (tool == "spr_tool_magicwand") {
        QVERIFY(changedPixels(before, layerImage()).isEmpty());
        for (int y = 0; y < before.height(); ++y)
            for (int x = 0; x < before.width(); ++x)
                QCOMPARE(editor()->canvas()->isSelected(x, y), expected.contains(QPoint(x, y)));
    } else {
        const int value = tool == "spr_tool_eraser" ? 0 : ink;
        Pixels painted;
        for (const QPoint &p : expected)
            if (before.pixelIndex(p) != value)
                painted.insert(p);
        QCOMPARE(changedPixels(before, layerImage()), painted);
        for (const QPoint &p : expected)
            QCOMPARE(layerImage().pixelIndex(p), value);
    }
    QVERIFY(nobody->prompts().isEmpty());
}

// Three pictures chosen from the Sprite menu, one of them no picture at all: the broken one
// is told and skipped, the others become sprites that File ▸ Save writes.
void StudioSpritesTest::importedPicturesAreKept()
{
    showKnightsSprites();
    const QString folder = dir->filePath(QStringLiteral("pictures"));
    QVERIFY(QDir().mkpath(folder));
    const QStringList names{QStringLiteral("a_900_0.png"), QStringLiteral("broken.png"), QStringLiteral("c_900_1.png")};
    QImage picture(12, 10, QImage::Format_ARGB32);
    picture.fill(qRgb(200, 40, 40));
    QVERIFY(picture.save(QDir(folder).filePath(names.at(0))));
    QVERIFY(writeFile(QDir(folder).filePath(names.at(1)), QByteArray("\x89PNG cut short", 14)));
    picture.fill(qRgb(40, 40, 200));
    QVERIFY(picture.save(QDir(folder).filePath(names.at(2))));
    const uint before = editor()->sprites()->count();

    ScriptedAnswerer answers({QMessageBox::No, QMessageBox::Ok, QMessageBox::Ok});
    answerFilesDialog(folder, names);
    acceptWhenShown<PalDlg>();
    QVERIFY(chooseFromMenu(studio->window.get(), "sprite", "spr_add"));
    QCOMPARE(answers.prompts().size(), 3);
    QVERIFY(answers.prompts().at(1).text.contains(names.at(1)));
    QCOMPARE(answers.prompts().at(2).text, QStringLiteral("2 new sprite(s) were imported!"));
    QCOMPARE(editor()->sprites()->count(), before + 2);
    QVERIFY(clickToolButton(studio->window.get(), "bar_file", "file_save"));

    Sprites *sprites = reopenedSprites();
    QVERIFY(sprites);
    QCOMPARE(sprites->count(), before + 2);
    const QImage first = sprites->at(before)->image().convertToFormat(QImage::Format_ARGB32);
    const QImage second = sprites->at(before + 1)->image().convertToFormat(QImage::Format_ARGB32);
    QCOMPARE(first.size(), QSize(12, 10));
    QCOMPARE(first.pixel(5, 5), qRgb(200, 40, 40));
    QCOMPARE(second.pixel(5, 5), qRgb(40, 40, 200));
}

// A palette file chosen from the Palettes menu, its colours read reversed: the container
// written by File ▸ Save holds it, and the painter's palettes show it.
void StudioSpritesTest::paletteAddedFromAFileIsKept()
{
    showKnightsSprites();
    RGBA ramp[256];
    for (int i = 0; i < 256; ++i)
        ramp[i] = RGBA(uchar(i), uchar(255 - i), uchar(i * 7), 255);
    {
        PaletteObject palette(&ramp);
        QFile file(dir->filePath(QStringLiteral("ramp.gpl")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(palette.toFile(&file, "GPL", CodecRules::Complete));
        palette.switchColors(nullptr, true);
    }
    const uint before = editor()->sprites()->palettes()->count();

    ScriptedAnswerer answers({QMessageBox::Yes});
    answerFilesDialog(dir->path(), {QStringLiteral("ramp.gpl")});
    acceptWhenShown<PalAddDlg>([](PalAddDlg *dialog) {
        auto *box = dialog->findChild<QCheckBox *>(QStringLiteral("pal_add_reversed"));
        QTest::mouseClick(box, Qt::LeftButton, Qt::NoModifier, QPoint(8, box->height() / 2));
        QVERIFY(dialog->isReversed());
    });
    QVERIFY(chooseFromMenu(studio->window.get(), "palettes", "pal_add"));
    QCOMPARE(answers.prompts().size(), 1);
    QCOMPARE(answers.prompts().at(0).text, QStringLiteral("Do you want to load the palettes from files?"));
    QCOMPARE(editor()->sprites()->palettes()->count(), before + 1);
    QVERIFY(clickToolButton(studio->window.get(), "bar_file", "file_save"));

    Sprites *sprites = reopenedSprites();
    QVERIFY(sprites);
    QCOMPARE(sprites->palettes()->count(), before + 1);
    bool found = false;
    for (uint i = 0; i < sprites->palettes()->count() && !found; ++i) {
        RGBA table[256];
        // The colours, whatever clearness the container gives its first entry.
        found = sprites->palettes()->at(i)->colorTable(table)
                && std::equal(table, table + 256, ramp, [](const RGBA &a, const RGBA &b) {
                       return a.red == b.red && a.green == b.green && a.blue == b.blue;
                   });
    }
    QVERIFY2(found, "the reversed ramp is among the saved palettes");
}

// The painter with two layers and a selection, the palettes and the explorer beside it.
void StudioSpritesTest::screenshot()
{
    showKnightsSprites();
    QVERIFY(chooseFromMenu(studio->window.get(), "sprite", "spr_layer_duplicate"));
    QCOMPARE(editor()->canvas()->layers()->count(), 2);
    QVERIFY(clickToolButton(studio->window.get(), "graphics_toolbar", "spr_tool_rectsel"));
    stroke({QPoint(8, 20), QPoint(20, 30), QPoint(36, 44)});
    QVERIFY(editor()->canvas()->hasSelection());
    QVERIFY(editor()->canvas()->isSelected(20, 30));
    QVERIFY(!editor()->canvas()->isSelected(2, 2));

    const QImage picture = windowPicture(studio->window.get());
    QVERIFY(!picture.isNull());
    // The canvas shows the sprite over its checker board, not a flat pane.
    const QRect canvas(view()->mapTo(studio->window.get(), QPoint()), view()->size());
    QSet<QRgb> seen;
    for (int y = canvas.top(); y < canvas.bottom(); y += 3) {
        for (int x = canvas.left(); x < canvas.right(); x += 3)
            seen << picture.pixel(x, y);
    }
    QVERIFY2(seen.size() > 12, qPrintable(QString::number(seen.size())));
    QVERIFY(picture.save(buildDir() + QStringLiteral("/bin/studio-sprites.png")));
}

OVRA_GL_TEST_MAIN(StudioSpritesTest)
#include "tst_studiosprites.moc"
