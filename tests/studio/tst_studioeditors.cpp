// The knight's animations and sounds in the studio as a person works on them: the
// animation file opened from the project tree in the sample engine's animation editor,
// boxes and the sprite dragged on the real canvas, the time line played, undone from the
// Edit menu and saved from the File menu, with the text, the nodes, the fields and the
// file on disk checked; the sound bank in the sound editor, with the engine's effects.
#include "studiotestsupport.h"

#include "commandline.h"
#include "graphicseditors.h"
#include "soundeditors.h"

#include "code/animationcode.h"
#include "code/animationplayer.h"
#include "code/animations.h"
#include "code/codedocument.h"
#include "code/framecode.h"
#include "editors/animation/animationeditor.h"
#include "editors/animation/timelinewidget.h"
#include "editors/animation/timesource.h"
#include "editors/graphics/graphicsworkspace.h"
#include "editors/organizer/organizereditor.h"
#include "editors/sound/audiodata.h"
#include "editors/sound/soundeditor.h"
#include "editors/sound/soundworkspace.h"
#include "engine/projectlocator.h"
#include "project/project.h"
#include "render/renderwidgetbase.h"

#include "../render/rendertestsupport.h"
#include "modalanswer.h"
#include "scriptedanswerer.h"
#include "testfiles.h"

#include <QAction>
#include <QDockWidget>
#include <QInputDialog>
#include <QLabel>
#include <QMenu>
#include <QSet>
#include <QSpinBox>
#include <QStackedWidget>
#include <QTemporaryDir>
#include <QToolBar>
#include <QToolButton>
#include <QTreeView>
#include <QtTest>

#include <memory>

using namespace Ovra;
using namespace StudioTest;

namespace {

// A clock that says each tick took its period, so that the time line keeps its pace
// whatever the machine does meanwhile.
class SteadyClock : public TimeSource
{
public:
    void start() override { m_count = 0; }
    qint64 restart() override { return ++m_count % 3 == 0 ? 16 : 17; }

private:
    qint64 m_count = 0;
};

QStringList linesOf(const QByteArray &bytes)
{
    QString text = QString::fromUtf8(bytes);
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    return text.split(QLatin1Char('\n'));
}

// The rows where two texts of as many lines differ.
QList<int> differingLines(const QStringList &before, const QStringList &after)
{
    QList<int> rows;
    for (int i = 0; i < qMin(before.size(), after.size()); ++i) {
        if (before.at(i) != after.at(i))
            rows << i;
    }
    return rows;
}

const int Punch = 2;

// Every row's text of a tree model, depth first.
QStringList treeTexts(const QAbstractItemModel *model, const QModelIndex &parent = QModelIndex())
{
    QStringList texts;
    for (int row = 0; model && row < model->rowCount(parent); ++row) {
        const QModelIndex index = model->index(row, 0, parent);
        texts << index.data().toString() << treeTexts(model, index);
    }
    return texts;
}

} // namespace

class StudioEditorsTest : public QObject, private ExampleWork
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void fileOpensInTheAnimationEditor();
    void draggedAttackBoxChangesItsLine();
    void drawnCollisionBoxAddsALine();
    void movedSpriteChangesTheOffset();
    void playingShowsThePlayersFrames();
    void screenshot();
    void soundsOpenInTheSoundEditor();

private:
    void showKnightsAnimations();
    AnimationEditor *editor() const { return studio->window->graphicsEditors()->animationEditor(); }
    GraphicsWorkspace *graphics() const { return studio->window->graphicsEditors()->workspace(); }
    QWidget *view() const { return dynamic_cast<QWidget *>(graphics()->renderWidget()); }
    QSpinBox *field(const char *name) const
    {
        return editor()->panel()->findChild<QSpinBox *>(QString::fromLatin1(name));
    }
    QByteArray text() const { return editor()->document()->toString().toUtf8(); }
    void drag(QPoint from, QPoint to);
    void selectPunchFrame(int frame);

    QString m_file;
};

void StudioEditorsTest::init()
{
    qRegisterMetaType<GraphicsRenderer::ItemType>();
    QVERIFY(open());
    m_file = work + QStringLiteral("/knight/knight.oan");
}

void StudioEditorsTest::cleanup()
{
    close();
}

void StudioEditorsTest::showKnightsAnimations()
{
    QTreeView *tree = studio->window->projectTree();
    QVERIFY(doubleClickRow(tree, findRow(tree->model(), QStringLiteral("knight.oan"))));
    QVERIFY(editor());
    QVERIFY(editor()->isActive());
    QCOMPARE(studio->window->centre()->currentWidget(), static_cast<QWidget *>(graphics()));
    QVERIFY(QTest::qWaitForWindowExposed(view()));
    // The view puts the origin in its middle the first time it has its size.
    const QRect middle(view()->width() / 4, view()->height() / 4, view()->width() / 2, view()->height() / 2);
    QTRY_VERIFY(middle.contains(GraphicsRenderer::origin()));
}

void StudioEditorsTest::selectPunchFrame(int frame)
{
    editor()->selectAnimation(Punch);
    editor()->selectFrame(frame);
    QCOMPARE(editor()->currentFrame(), editor()->animations()->at(Punch)->frameAt(uint(frame)));
}

void StudioEditorsTest::drag(QPoint from, QPoint to)
{
    QWidget *widget = view();
    QTest::mousePress(widget, Qt::LeftButton, Qt::NoModifier, from);
    for (int step = 1; step <= 4; ++step) {
        QMouseEvent move(QEvent::MouseMove, from + (to - from) * step / 4, Qt::NoButton, Qt::LeftButton,
                         Qt::NoModifier);
        QApplication::sendEvent(widget, &move);
    }
    QTest::mouseRelease(widget, Qt::LeftButton, Qt::NoModifier, to);
}

void StudioEditorsTest::fileOpensInTheAnimationEditor()
{
    showKnightsAnimations();
    QVERIFY(studio->host->action("editor_anim")->isChecked());
    QCOMPARE(studio->host->editorForFile(nullptr, Project::Animations), editor());
    // The fields show the frame the editor stands on.
    FrameCode *frame = editor()->currentFrame();
    QVERIFY(frame);
    QCOMPARE(field("anim_frame_xaxis")->value(), frame->offsetX());
    QCOMPARE(field("anim_frame_yaxis")->value(), frame->offsetY());
    QCOMPARE(field("anim_frame_time")->value(), frame->delay());
    // The organizer orders the file's animations, the explorer shows its sprites.
    auto *organizer = qobject_cast<OrganizerEditor *>(studio->host->extraEditor(0));
    QVERIFY(organizer);
    QCOMPARE(organizer->object(), static_cast<OrganizableObject *>(editor()->animations()));
    QVERIFY(studio->window->dock(QStringLiteral("dock_explorer"))->isVisible());
    QVERIFY(studio->host->statusText(0).startsWith(QStringLiteral("Renderer: ")));
    // The sample engine runs no emulator: its view stays off.
    QVERIFY(studio->host->action("editor_emul"));
    QVERIFY(!studio->host->action("editor_emul")->isEnabled());

    // Back to the text: the explorer goes, the animation editor is left.
    QTreeView *tree = studio->window->projectTree();
    QVERIFY(doubleClickRow(tree, findRow(tree->model(), QStringLiteral("knight.def"))));
    QVERIFY(!editor()->isActive());
    QTRY_VERIFY(!studio->window->dock(QStringLiteral("dock_explorer"))->isVisible());
}

void StudioEditorsTest::draggedAttackBoxChangesItsLine()
{
    showKnightsAnimations();
    selectPunchFrame(2);
    const QByteArray original = readFile(m_file);
    const QByteArray before = text();
    GraphicsRenderer *canvas = editor()->renderer();
    const QRect box = canvas->boxScreenRect(ContactBoxCode::Attack, 0);
    QVERIFY(view()->rect().contains(box));
    const QStringList rows = treeTexts(editor()->tree()->model());
    QVERIFY(rows.contains(QStringLiteral("200 Punch")));
    const QRect rectBefore = editor()->currentFrame()->contactBoxes(ContactBoxCode::Attack)->at(0)->rect();
    const QPointF scale = canvas->scale();
    drag(box.center(), box.center() + QPoint(qRound(5 * scale.x()), qRound(3 * scale.y())));

    const QStringList was = linesOf(before);
    const QStringList now = linesOf(text());
    QCOMPARE(now.size(), was.size());
    const QList<int> changed = differingLines(was, now);
    QCOMPARE(changed.size(), 1);
    QCOMPARE(now.at(changed.first()).trimmed(), QStringLiteral("attack (22, -38, 30, -32)"));
    // The parsed node of the box holds the new rectangle, and the canvas shows it; the
    // tree beside the text keeps its rows.
    const QRect moved = editor()->currentFrame()->contactBoxes(ContactBoxCode::Attack)->at(0)->rect();
    QCOMPARE(moved, rectBefore.translated(5, 3));
    QCOMPARE(canvas->boxes(ContactBoxCode::Attack).at(0).rect.toRect(), moved);
    QCOMPARE(treeTexts(editor()->tree()->model()), rows);

    QVERIFY(chooseFromMenu(studio->window.get(), "menu_edit", "edit_undo"));
    QCOMPARE(text(), before);
    QVERIFY(chooseFromMenu(studio->window.get(), "menu_edit", "edit_redo"));
    QVERIFY(clickToolButton(studio->window.get(), "bar_file", "file_save"));
    QTRY_COMPARE(linesOf(readFile(m_file)), now);
    const QList<int> onDisk = differingLines(linesOf(original), linesOf(readFile(m_file)));
    QCOMPARE(onDisk, changed);
    QVERIFY(nobody->prompts().isEmpty());
}

void StudioEditorsTest::drawnCollisionBoxAddsALine()
{
    showKnightsAnimations();
    selectPunchFrame(1);
    const QStringList was = linesOf(text());
    QToolButton *add = editor()->panel()->findChild<QToolButton *>(QStringLiteral("anim_box_add_collision_button"));
    QVERIFY(add);
    QTest::mouseClick(add, Qt::LeftButton);
    const QPoint origin = GraphicsRenderer::origin();
    drag(origin + QPoint(-150, -160), origin + QPoint(-110, -130));
    QTRY_COMPARE(editor()->currentFrame()->contactBoxes(ContactBoxCode::Collision)->count(), 2u);
    const QStringList now = linesOf(text());
    QCOMPARE(now.size(), was.size() + 1);
    int inserted = 0;
    while (inserted < was.size() && was.at(inserted) == now.at(inserted))
        ++inserted;
    QCOMPARE(now.mid(inserted + 1), was.mid(inserted));
    QVERIFY2(now.at(inserted).trimmed().startsWith(QStringLiteral("body (")), qPrintable(now.at(inserted)));
}

void StudioEditorsTest::movedSpriteChangesTheOffset()
{
    showKnightsAnimations();
    selectPunchFrame(0);
    GraphicsRenderer *canvas = editor()->renderer();
    // The boxes lie over the sprite: they go out of the way to take the sprite itself.
    for (const char *boxes : {"view_attack_box", "view_collision_box"})
        QTest::mouseClick(graphics()->toolBar()->widgetForAction(studio->host->action(boxes)), Qt::LeftButton);
    view()->repaint();
    const QRectF sprite = canvas->spriteRect(0);
    QPoint start;
    for (int y = int(sprite.top()) + 2; y < sprite.bottom() && start.isNull(); y += 2) {
        for (int x = int(sprite.left()) + 2; x < sprite.right() && start.isNull(); x += 2) {
            if (canvas->hitTest(QPoint(x, y)) == GraphicsRenderer::HitSprite)
                start = QPoint(x, y);
        }
    }
    QVERIFY2(!start.isNull(), "a point of the sprite");
    const QStringList was = linesOf(text());
    const QPointF scale = canvas->scale();
    drag(start, start + QPoint(qRound(7 * scale.x()), qRound(-4 * scale.y())));
    QCOMPARE(editor()->currentFrame()->offset(), QPoint(7, -4));
    const QList<int> changed = differingLines(was, linesOf(text()));
    QCOMPARE(changed.size(), 1);
    QCOMPARE(linesOf(text()).at(changed.first()).trimmed(), QStringLiteral("frame (200, 0) delay=3 offset=(7, -4)"));
    QCOMPARE(field("anim_frame_xaxis")->value(), 7);
    QCOMPARE(field("anim_frame_yaxis")->value(), -4);
}

void StudioEditorsTest::playingShowsThePlayersFrames()
{
    showKnightsAnimations();
    selectPunchFrame(0);
    TimeLineWidget *line = graphics()->timeLine();
    line->setTimeSource(new SteadyClock);
    QToolButton *play = editor()->panel()->findChild<QToolButton *>(QStringLiteral("anim_play_button"));
    QVERIFY(play);
    QTest::mouseClick(play, Qt::LeftButton);
    QTRY_VERIFY(line->isPlaying());
    // Each tick shows the frame a player of its own gives after as many ticks.
    Animations *animations = editor()->animations();
    QSet<int> seen;
    QSignalSpy ticks(line, &TimeLineWidget::tickChanged);
    while (ticks.count() < 40 && line->isPlaying()) {
        QVERIFY(ticks.wait(2000));
        // Nothing runs between here and the comparison: the tick and the frame agree.
        AnimationPlayer reference;
        reference.change(animations, Punch, true);
        for (uint i = 0; i <= line->currentTick(); ++i)
            reference.tick();
        QCOMPARE(editor()->currentFrame(), reference.currentFrame());
        seen << animations->at(Punch)->indexOfFrame(reference.currentFrame());
    }
    QVERIFY2(seen.size() > 1, "the frames changed while playing");
    QTest::mouseClick(editor()->panel()->findChild<QToolButton *>(QStringLiteral("anim_stop_button")), Qt::LeftButton);
    QTRY_VERIFY(!line->isPlaying());

    // The user drags the time line's marker back: the player starts again from the first
    // frame and steps up to the tick under the mouse. The time line draws the lane names
    // in 125 pixels and a tick in 6.
    const uint stopped = line->currentTick();
    const auto xOf = [line](uint tick) { return 125 + (int(tick) - line->firstTick()) * 6 + 3; };
    const int y = line->height() - 8;
    QTest::mousePress(line, Qt::LeftButton, Qt::NoModifier, QPoint(xOf(stopped), y));
    for (uint tick : {stopped + 1, 14u, 12u, 7u}) {
        QMouseEvent move(QEvent::MouseMove, QPoint(xOf(tick), y), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(line, &move);
    }
    QTest::mouseRelease(line, Qt::LeftButton, Qt::NoModifier, QPoint(xOf(7), y));
    QCOMPARE(line->currentTick(), 7u);
    AnimationPlayer reference;
    reference.change(animations, Punch, true);
    for (int i = 0; i <= 7; ++i)
        reference.tick();
    QCOMPARE(editor()->currentFrame(), reference.currentFrame());
}

void StudioEditorsTest::screenshot()
{
    showKnightsAnimations();
    selectPunchFrame(2);
    // The punch's first frame as the onion skin under its third, found by its number.
    const auto button = [this](const char *name) {
        return editor()->panel()->findChild<QToolButton *>(QString::fromLatin1(name) + QStringLiteral("_button"));
    };
    QTest::mouseClick(button("anim_onion_skin"), Qt::LeftButton);
    whenShown<QInputDialog>([](QInputDialog *dialog) {
        dialog->setTextValue(QStringLiteral("200"));
        dialog->accept();
    });
    QTest::mouseClick(button("anim_onion_find"), Qt::LeftButton);
    auto *onion = editor()->panel()->findChild<QLabel *>(QStringLiteral("anim_onion_lb"));
    QCOMPARE(onion->text(), QStringLiteral("Animation: 200 Punch, Frame: 1"));
    QCOMPARE(editor()->currentFrame(), editor()->animations()->at(Punch)->frameAt(2));
    const QImage picture = windowPicture(studio->window.get());
    QVERIFY(!picture.isNull());
    // The canvas is no flat pane: the sprite, the boxes and the crosses show on it.
    const QRect canvas(view()->mapTo(studio->window.get(), QPoint()), view()->size());
    QSet<QRgb> colours;
    for (int y = canvas.top(); y < canvas.bottom(); y += 4) {
        for (int x = canvas.left(); x < canvas.right(); x += 4)
            colours << picture.pixel(x, y);
    }
    QVERIFY2(colours.size() > 50, qPrintable(QString::number(colours.size())));
    QVERIFY(picture.save(buildDir() + QStringLiteral("/bin/studio-animation.png")));
}

void StudioEditorsTest::soundsOpenInTheSoundEditor()
{
    QTreeView *tree = studio->window->projectTree();
    QVERIFY(doubleClickRow(tree, findRow(tree->model(), QStringLiteral("knight.sbk"))));
    SoundEditor *sounds = studio->window->soundEditors()->editor();
    QVERIFY(sounds->isActive());
    QCOMPARE(studio->window->centre()->currentWidget(), static_cast<QWidget *>(sounds->workspace()));
    QVERIFY(studio->host->action("editor_snd")->isChecked());
    QCOMPARE(sounds->workspace()->sidePanel(), sounds->panel());
    QVERIFY(sounds->panel()->isVisible());
    QVERIFY(sounds->currentSound());
    // The engine's effects are in the menu of the editor.
    QStringList effects;
    for (QAction *action : sounds->effectMenu()->actions())
        effects << action->text().remove(QLatin1Char('&'));
    for (const QString &name : {QStringLiteral("Normalize"), QStringLiteral("Reverse"), QStringLiteral("Echo")})
        QVERIFY2(effects.contains(name), qPrintable(effects.join(QStringLiteral(", "))));

    // Played from the Sound menu through the player (silent on the null driver), and stopped.
    QSignalSpy states(sounds->workspace(), &SoundWorkspace::stateChanged);
    const auto choose = [this](const char *name) {
        for (QAction *action : studio->host->menu(QStringLiteral("sound"))->actions()) {
            if (action->objectName() == QLatin1String(name) && action->isEnabled()) {
                action->trigger();
                return true;
            }
        }
        return false;
    };
    QVERIFY(choose("snd_play"));
    QVERIFY(!states.isEmpty());
    QCOMPARE(states.first().at(0).value<SoundSample::State>(), SoundSample::Playing);
    QVERIFY(choose("snd_stop"));
    QTRY_COMPARE(states.last().at(0).value<SoundSample::State>(), SoundSample::Stopped);

    // Select the whole sound, reverse it, save: the bank on disk changes, one undo and a
    // save give the bytes back.
    const QString bank = work + QStringLiteral("/knight/knight.sbk");
    const QByteArray original = readFile(bank);
    const QByteArray before = sounds->workspace()->audioData()->sample.data;
    sounds->workspace()->select(0, sounds->workspace()->audioData()->sample.samples);
    QAction *reverse = nullptr;
    for (QAction *action : sounds->effectMenu()->actions()) {
        if (action->text().remove(QLatin1Char('&')) == QStringLiteral("Reverse"))
            reverse = action;
    }
    QVERIFY(reverse && reverse->isEnabled());
    reverse->trigger();
    QByteArray reversed = sounds->workspace()->audioData()->sample.data;
    QVERIFY(reversed != before);
    QVERIFY(clickToolButton(studio->window.get(), "bar_file", "file_save"));
    QTRY_VERIFY(readFile(bank) != original);
    QVERIFY(chooseFromMenu(studio->window.get(), "menu_edit", "edit_undo"));
    QCOMPARE(sounds->workspace()->audioData()->sample.data, before);
    QVERIFY(clickToolButton(studio->window.get(), "bar_file", "file_save"));
    QTRY_COMPARE(readFile(bank), original);
    QVERIFY(nobody->prompts().isEmpty());
}

OVRA_GL_TEST_MAIN(StudioEditorsTest)
#include "tst_studioeditors.moc"
