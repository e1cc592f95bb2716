// The animation editor as a user meets it: the knight of the example work opened through
// the sample engine's plug-in, its editor made the way a host makes it, and the mouse
// and the keys on the real render widget, the panel's buttons and its fields. What the
// user does lands in the animation file's text, line by line, with one undo step each.
#include "animationeditortestsupport.h"
#include "modalanswer.h"
#include "scriptedanswerer.h"

#include "code/framecode.h"
#include "editors/animation/timelinewidget.h"
#include "editors/organizer/organizereditor.h"
#include "engine/extensionmanager.h"
#include "foundation/itemsdialog.h"
#include "image/sprite.h"
#include "render/renderer.h"

#include <QAction>
#include <QComboBox>
#include <QInputDialog>
#include <QLabel>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QToolBar>
#include <QToolButton>
#include <QtTest>

#include <memory>

using namespace Ovra;

namespace {

const int Punch = 2;
const int Walk = 1;

} // namespace

class AnimationEditorTest : public QObject, public AnimationEditorFixture
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void states();
    void selectorsAndPositionText();
    void dragAttackBox_data();
    void dragAttackBox();
    void drawCollisionBox();
    void moveSprite();
    void nudgeButton();
    void deleteAndSwitchBoxes();
    void deleteFrame();
    void oddText_data();
    void oddText();
    void fieldGuard();
    void typeIntoField_data();
    void typeIntoField();
    void undoKeepsSelection();
    void playTicks();
    void playHoldsForEver();
    void onionLabel();
    void spriteExplorerActions();
    void statusTexts();
    void organizerByOption();
    void withoutGraphicsWorkspace();
    void screenshot();

private:
    std::unique_ptr<ExtensionManager> m_manager;
    AnimationEditorExtension *m_extension = nullptr;
};

void AnimationEditorTest::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    qRegisterMetaType<GraphicsRenderer::ItemType>();
    m_manager = std::make_unique<ExtensionManager>(QStringLiteral(OVRA_PLUGIN_DIR));
    for (Extension *extension : ExtensionManager::list(Extension::Named)) {
        if (qstrcmp(extension->format(), "ANIMATION_EDITOR") == 0 && qstrcmp(extension->name(), "sample") == 0)
            m_extension = dynamic_cast<AnimationEditorExtension *>(extension);
    }
    QVERIFY2(m_extension, "the sample plug-in registers its animation editor");
}

void AnimationEditorTest::init()
{
    open(m_extension);
}

void AnimationEditorTest::cleanup()
{
    close();
}

// The four states and the actions they enable, as the text changes under the editor.
void AnimationEditorTest::states()
{
    QSignalSpy noFile(m_editor.get(), &AnimationEditor::noFile);
    QSignalSpy enabled(m_editor.get(), &AnimationEditor::enabled);
    QSignalSpy frameEnabled(m_editor.get(), &AnimationEditor::frameEnabled);

    m_editor->setCurrentFile(nullptr);
    QCOMPARE(noFile.last().at(0).toBool(), true);
    QCOMPARE(enabled.last().at(0).toBool(), false);
    QCOMPARE(frameEnabled.last().at(0).toBool(), false);
    QVERIFY(!action("anim_add")->isEnabled());
    QVERIFY(!action("anim_play")->isEnabled());
    QCOMPARE(field<QLabel>("anim_frame_lb")->text(), QStringLiteral("0 / 0"));

    m_editor->setCurrentFile(m_animations);
    QCOMPARE(noFile.last().at(0).toBool(), false);
    QCOMPARE(enabled.last().at(0).toBool(), true);
    QCOMPARE(frameEnabled.last().at(0).toBool(), true);
    QVERIFY(action("anim_add")->isEnabled());
    QVERIFY(action("anim_box_add_attack")->isEnabled());

    // A file whose only animation has no frame yet.
    m_animations->document()->fromString(QStringLiteral("@version 1\n\nanimation 5 \"Empty\"\n"));
    QCOMPARE(m_animations->count(), 1u);
    QCOMPARE(enabled.last().at(0).toBool(), true);
    QCOMPARE(frameEnabled.last().at(0).toBool(), false);
    QVERIFY(action("anim_frame_add")->isEnabled());
    QVERIFY(!action("anim_frame_delete")->isEnabled());
    QCOMPARE(m_editor->currentFrame(), nullptr);
    QCOMPARE(field<QSpinBox>("anim_frame_xaxis")->value(), 0);

    // No animation at all.
    m_animations->document()->fromString(QStringLiteral("@version 1\n"));
    QCOMPARE(noFile.last().at(0).toBool(), false);
    QCOMPARE(enabled.last().at(0).toBool(), false);
    QCOMPARE(frameEnabled.last().at(0).toBool(), false);
    QCOMPARE(m_editor->currentAnimation(), nullptr);
    QVERIFY(action("anim_add")->isEnabled());
    QVERIFY(!action("anim_delete")->isEnabled());
}

void AnimationEditorTest::selectorsAndPositionText()
{
    auto *animations = field<QComboBox>("anim_sel");
    auto *frames = field<QComboBox>("anim_frame_sel");
    QCOMPARE(animations->count(), int(m_animations->count()));
    QCOMPARE(m_host->controls.value(QStringLiteral("anim_sel")), static_cast<QObject *>(animations));
    QCOMPARE(m_host->controls.value(QStringLiteral("anim_frame_xaxis_lb"))->objectName(),
             QStringLiteral("anim_frame_xaxis_lb"));

    QVERIFY(showEditor());
    // The user picks the punch in the list, then its third frame.
    animations->setFocus();
    QTest::keyClick(animations, Qt::Key_Down);
    QTest::keyClick(animations, Qt::Key_Down);
    QCOMPARE(m_editor->currentAnimation(), m_animations->at(Punch));
    QCOMPARE(frames->count(), 4);
    QCOMPARE(m_host->statusTexts.value(0), QStringLiteral("3 / %1").arg(m_animations->count()));
    frames->setFocus();
    QTest::keyClick(frames, Qt::Key_Down);
    QTest::keyClick(frames, Qt::Key_Down);
    QCOMPARE(m_editor->currentFrame(), m_animations->at(Punch)->frameAt(2));
    QCOMPARE(field<QLabel>("anim_frame_lb")->text(), QStringLiteral("3 / 4 - 6 ticks"));
    QCOMPARE(field<QSpinBox>("anim_frame_time")->value(), 6);
    // The time line stands at the frame's start: 3 + 3 ticks.
    QCOMPARE(m_graphics->timeLine()->currentTick(), 6u);
    QCOMPARE(m_editor->renderer()->boxes(ContactBoxCode::Attack).size(), 1);
    QCOMPARE(m_editor->renderer()->boxes(ContactBoxCode::Collision).size(), 1);
    QCOMPARE(m_graphics->timeLine()->timeLineCount(), 1);
    QCOMPARE(m_graphics->sidePanel(), m_editor->panel());

    // The next-frame button runs round.
    QTest::mouseClick(button("anim_next_frame"), Qt::LeftButton);
    QTest::mouseClick(button("anim_next_frame"), Qt::LeftButton);
    QCOMPARE(m_editor->currentFrame(), m_animations->at(Punch)->frameAt(0));
    // The animation keeps the frame that was picked in it.
    m_editor->selectAnimation(0);
    m_editor->selectAnimation(Punch);
    QCOMPARE(frames->currentIndex(), 0);
}

void AnimationEditorTest::dragAttackBox_data()
{
    QTest::addColumn<bool>("openGL");
    QTest::newRow("painter") << false;
    QTest::newRow("OpenGL") << true;
}

void AnimationEditorTest::dragAttackBox()
{
    QFETCH(bool, openGL);
    m_host->options[QStringLiteral("native_painting")] = !openGL;
    m_graphics->reconfig();
    QVERIFY(showEditor());
    QCOMPARE(m_editor->renderer()->isOpenGL(), openGL);
    m_editor->selectAnimation(Punch);
    m_editor->selectFrame(2);
    GraphicsRenderer *canvas = m_editor->renderer();
    QCOMPARE(canvas->boxes(ContactBoxCode::Attack).size(), 1);
    const QString before = text();
    const QRect box = canvas->boxScreenRect(ContactBoxCode::Attack, 0);
    QVERIFY(!box.isEmpty());
    const QPointF scale = canvas->scale();
    // Five pixels of the world to the right, three down.
    drag(box.center(), box.center() + QPoint(qRound(5 * scale.x()), qRound(3 * scale.y())));

    const QString after = text();
    const QList<int> changed = differingLines(linesOf(before), linesOf(after));
    QCOMPARE(linesOf(after).size(), linesOf(before).size());
    QCOMPARE(changed.size(), 1);
    QCOMPARE(linesOf(after).at(changed.first()).trimmed(), QStringLiteral("attack (22, -38, 30, -32)"));
    ContactBoxCode *code = m_editor->currentFrame()->contactBoxes(ContactBoxCode::Attack)->at(0);
    QCOMPARE(code->rect(), canvas->boxes(ContactBoxCode::Attack).at(0).rect.toRect());
    // The rest of the file, the collision box included, stays.
    QCOMPARE(m_editor->currentFrame()->contactBoxes(ContactBoxCode::Collision)->at(0)->rect(),
             QRect(QPoint(-8, -50), QPoint(8, 0)));

    // One step back gives the text byte for byte; again forward, and saved.
    m_editor->undo();
    QCOMPARE(text(), before);
    QTRY_COMPARE(canvas->boxes(ContactBoxCode::Attack).at(0).rect.toRect(),
                 m_editor->currentFrame()->contactBoxes(ContactBoxCode::Attack)->at(0)->rect());
    m_editor->redo();
    QCOMPARE(text(), after);
    m_editor->save();
    // The document may finish its save on a worker thread.
    const QString file = m_dir->filePath(QStringLiteral("work/knight/knight.oan"));
    QTRY_COMPARE(linesOf(QString::fromUtf8(readFile(file))), linesOf(after));
    QVERIFY(!m_animations->isModified());
}

void AnimationEditorTest::drawCollisionBox()
{
    QVERIFY(showEditor());
    m_editor->selectAnimation(Punch);
    m_editor->selectFrame(1);
    const QString before = text();
    QTest::mouseClick(button("anim_box_add_collision"), Qt::LeftButton);
    QVERIFY(action("anim_box_add_collision")->isChecked());
    QCOMPARE(m_editor->renderer()->clickMode(), GraphicsRenderer::DrawContactBoxMode);
    // Away from the sprite, up and to the left of the origin.
    const QPoint origin = GraphicsRenderer::origin();
    drag(origin + QPoint(-150, -160), origin + QPoint(-110, -130));
    QTRY_COMPARE(m_editor->renderer()->boxes(ContactBoxCode::Collision).size(), 2);

    const QStringList was = linesOf(before);
    const QStringList now = linesOf(text());
    QCOMPARE(now.size(), was.size() + 1);
    int inserted = 0;
    while (inserted < was.size() && was.at(inserted) == now.at(inserted))
        ++inserted;
    QCOMPARE(now.mid(inserted + 1), was.mid(inserted));
    QVERIFY2(now.at(inserted).trimmed().startsWith(QStringLiteral("body (")), qPrintable(now.at(inserted)));
    QCOMPARE(m_editor->currentFrame()->contactBoxes(ContactBoxCode::Collision)->count(), 2u);

    // A right click leaves the drawing mode, and the button shows it.
    QTest::mouseClick(view(), Qt::RightButton, Qt::NoModifier, origin + QPoint(-200, -200));
    QVERIFY(!action("anim_box_add_collision")->isChecked());
    QCOMPARE(m_editor->renderer()->clickMode(), GraphicsRenderer::PositioningMode);
    m_editor->undo();
    QCOMPARE(text(), before);
}

void AnimationEditorTest::moveSprite()
{
    QVERIFY(showEditor());
    m_editor->selectAnimation(Punch);
    m_editor->selectFrame(0);
    GraphicsRenderer *canvas = m_editor->renderer();
    // The boxes lie over the sprite: the user hides them to take the sprite itself.
    for (const char *boxes : {"view_attack_box", "view_collision_box"}) {
        QVERIFY(action(boxes)->isChecked());
        QTest::mouseClick(m_graphics->toolBar()->widgetForAction(action(boxes)), Qt::LeftButton);
    }
    // Where the view drew the sprite last.
    view()->repaint();
    const QRectF sprite = canvas->spriteRect(0);
    QVERIFY(view()->rect().contains(sprite.toRect()));
    const QPointF scale = canvas->scale();
    QPoint start;
    for (int y = int(sprite.top()) + 2; y < sprite.bottom() && start.isNull(); y += 2) {
        for (int x = int(sprite.left()) + 2; x < sprite.right() && start.isNull(); x += 2) {
            if (canvas->hitTest(QPoint(x, y)) == GraphicsRenderer::HitSprite)
                start = QPoint(x, y);
        }
    }
    QVERIFY2(!start.isNull(), "a point of the sprite");
    const QString before = text();
    drag(start, start + QPoint(qRound(7 * scale.x()), qRound(-4 * scale.y())));

    QCOMPARE(m_editor->currentFrame()->offset(), QPoint(7, -4));
    const QList<int> changed = differingLines(linesOf(before), linesOf(text()));
    QCOMPARE(changed.size(), 1);
    QCOMPARE(linesOf(text()).at(changed.first()).trimmed(), QStringLiteral("frame (200, 0) delay=3 offset=(7, -4)"));
    QCOMPARE(field<QSpinBox>("anim_frame_xaxis")->value(), 7);
    QCOMPARE(field<QSpinBox>("anim_frame_yaxis")->value(), -4);
    m_editor->undo();
    QCOMPARE(text(), before);
    QCOMPARE(field<QSpinBox>("anim_frame_xaxis")->value(), 0);
}

void AnimationEditorTest::nudgeButton()
{
    m_editor->selectAnimation(Punch);
    m_editor->selectFrame(3);
    QTest::mouseClick(button("anim_pos_right"), Qt::LeftButton);
    QTest::mouseClick(button("anim_pos_down"), Qt::LeftButton);
    QTest::mouseClick(button("anim_pos_down"), Qt::LeftButton);
    QCOMPARE(m_editor->currentFrame()->offset(), QPoint(1, 2));
    QVERIFY(text().contains(QStringLiteral("frame (200, 3) delay=3 offset=(1, 2)")));
    QTest::mouseClick(button("anim_pos_left"), Qt::LeftButton);
    QTest::mouseClick(button("anim_pos_up"), Qt::LeftButton);
    QCOMPARE(m_editor->currentFrame()->offset(), QPoint(0, 1));
    QCOMPARE(field<QSpinBox>("anim_frame_yaxis")->value(), 1);
}

// Delete, switch type and clear, each one undo step of the file.
void AnimationEditorTest::deleteAndSwitchBoxes()
{
    QVERIFY(showEditor());
    m_editor->selectAnimation(Punch);
    m_editor->selectFrame(2);
    GraphicsRenderer *canvas = m_editor->renderer();
    const QString before = text();
    // Selecting the attack box by a click on it.
    const QPoint attackBox = canvas->boxScreenRect(ContactBoxCode::Attack, 0).center();
    QTest::mouseClick(view(), Qt::LeftButton, Qt::NoModifier, attackBox);
    QCOMPARE(canvas->selectedContactBoxes().size(), 1);
    QTest::mouseClick(button("anim_box_type"), Qt::LeftButton);
    FrameCode *frame = m_editor->currentFrame();
    QCOMPARE(frame->contactBoxes(ContactBoxCode::Attack)->count(), 0u);
    QCOMPARE(frame->contactBoxes(ContactBoxCode::Collision)->count(), 2u);
    QCOMPARE(frame->contactBoxes(ContactBoxCode::Collision)->at(1)->rect(), QRect(QPoint(17, -41), QPoint(25, -35)));
    QCOMPARE(canvas->boxes(ContactBoxCode::Collision).size(), 2);
    m_editor->undo();
    QCOMPARE(text(), before);
    // The canvas catches up with the text at the next turn of the event loop, which a
    // user's next click always comes after.
    QApplication::processEvents();

    // The selected box deleted by its button: one line less, one step back.
    QTest::mouseClick(view(), Qt::LeftButton, Qt::NoModifier, attackBox);
    QCOMPARE(canvas->selectedContactBoxes().size(), 1);
    QTest::mouseClick(button("anim_box_del"), Qt::LeftButton);
    QCOMPARE(m_editor->currentFrame()->contactBoxes(ContactBoxCode::Attack)->count(), 0u);
    QCOMPARE(m_editor->currentFrame()->contactBoxes(ContactBoxCode::Collision)->count(), 1u);
    QCOMPARE(linesOf(text()).size(), linesOf(before).size() - 1);
    QCOMPARE(canvas->boxes(ContactBoxCode::Attack).size(), 0);
    m_editor->undo();
    QCOMPARE(text(), before);

    QTest::mouseClick(button("anim_box_delall"), Qt::LeftButton);
    QCOMPARE(m_editor->currentFrame()->contactBoxes(ContactBoxCode::Collision)->count(), 0u);
    QCOMPARE(linesOf(text()).size(), linesOf(before).size() - 2);
    m_editor->undo();
    QCOMPARE(text(), before);

    // The previous frame's boxes take the place of the current ones.
    QTest::mouseClick(button("anim_box_prev"), Qt::LeftButton);
    QCOMPARE(m_editor->currentFrame()->contactBoxes(ContactBoxCode::Attack)->count(), 0u);
    QCOMPARE(m_editor->currentFrame()->contactBoxes(ContactBoxCode::Collision)->count(), 1u);
    m_editor->undo();
    QCOMPARE(text(), before);

    QTest::mouseClick(button("anim_box_delall_anim"), Qt::LeftButton);
    for (FrameCode *each : m_editor->currentAnimation()->frames())
        QCOMPARE(each->contactBoxes(ContactBoxCode::Collision)->count(), 0u);
    m_editor->undo();
    QCOMPARE(text(), before);
}

void AnimationEditorTest::deleteFrame()
{
    m_editor->selectAnimation(Punch);
    m_editor->selectFrame(3);
    const QString before = text();
    // Asked first, the user says no: nothing goes.
    m_host->options[QStringLiteral("confirm_delete")] = true;
    {
        ScriptedAnswerer user({QMessageBox::No});
        QTest::mouseClick(button("anim_frame_delete"), Qt::LeftButton);
        QCOMPARE(user.prompts().size(), 1);
        QCOMPARE(user.prompts().first().text, QStringLiteral("Do you really want to delete the frame?"));
    }
    QCOMPARE(text(), before);
    {
        ScriptedAnswerer user({QMessageBox::Yes});
        QTest::mouseClick(button("anim_frame_delete"), Qt::LeftButton);
    }
    // The last frame went with its box: the one before it is current now.
    QCOMPARE(m_animations->at(Punch)->frameCount(), 3u);
    QCOMPARE(linesOf(text()).size(), linesOf(before).size() - 2);
    QCOMPARE(m_editor->currentFrame(), m_animations->at(Punch)->frameAt(2));
    QCOMPARE(field<QComboBox>("anim_frame_sel")->count(), 3);
    QCOMPARE(field<QLabel>("anim_frame_lb")->text(), QStringLiteral("3 / 3 - 6 ticks"));
    m_editor->undo();
    QCOMPARE(text(), before);
    QCOMPARE(field<QComboBox>("anim_frame_sel")->count(), 4);
}

// Texts a user may type or a file may hold: the editor shows what parses and never
// trips over what doesn't.
void AnimationEditorTest::oddText_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<int>("animations");

    QTest::newRow("unknown sprite") << "animation 1\n    frame (999, 999) delay=4\n" << 1;
    QTest::newRow("broken values") << "animation 1\n    frame (1, x) delay=abc offset=(,)\n    body (1, 2)\n" << 1;
    QTest::newRow("frame before any animation") << "    frame (0, 0) delay=3\nanimation 2\n" << 1;
    QTest::newRow("boxes without a frame") << "animation 3\n    attack (1, 2, 3, 4)\n" << 1;
    QTest::newRow("huge numbers") << "animation 4\n    frame (0, 0) delay=99999999999 offset=(99999999, -99999999)\n"
                                  << 1;
    QTest::newRow("all delays zero") << "animation 5\n    frame (0, 0) delay=0\n    frame (0, 1) delay=0\n" << 1;
    QTest::newRow("binary noise") << QString::fromLatin1("\x01\x02animation\x7f\n\tframe\x00(\n") << -1;
}

void AnimationEditorTest::oddText()
{
    QFETCH(QString, code);
    QFETCH(int, animations);

    QVERIFY(showEditor());
    m_animations->document()->fromString(code);
    if (animations >= 0)
        QCOMPARE(int(m_animations->count()), animations);
    QCOMPARE(field<QComboBox>("anim_sel")->count(), int(m_animations->count()));
    for (int a = 0; a < int(m_animations->count()); ++a) {
        m_editor->selectAnimation(a);
        QCOMPARE(m_editor->currentAnimation(), m_animations->at(uint(a)));
        const int frames = int(m_editor->currentAnimation()->frameCount());
        QCOMPARE(field<QComboBox>("anim_frame_sel")->count(), frames);
        for (int f = 0; f < frames; ++f) {
            m_editor->selectFrame(f);
            QCOMPARE(m_editor->currentFrame(), m_editor->currentAnimation()->frameAt(uint(f)));
            QTest::mouseClick(button("anim_pos_right"), Qt::LeftButton);
            QTest::mouseClick(button("anim_next_frame"), Qt::LeftButton);
        }
        // A few ticks on whatever the animation holds.
        m_graphics->timeLine()->setCurrentTick(5);
        m_graphics->timeLine()->setCurrentTick(0);
    }
    view()->repaint();
}

void AnimationEditorTest::fieldGuard()
{
    m_editor->selectAnimation(Punch);
    m_editor->selectFrame(1);
    const QString before = text();
    AnimationEditorPrivate *d = inside();
    QVERIFY(d);
    ++d->updating;
    field<QSpinBox>("anim_frame_xaxis")->setValue(33);
    field<QSpinBox>("anim_frame_time")->setValue(9);
    field<QDoubleSpinBox>("anim_frame_angle")->setValue(12.0);
    --d->updating;
    QCOMPARE(text(), before);
    // Without the guard the same call writes.
    field<QSpinBox>("anim_frame_yaxis")->setValue(-5);
    QCOMPARE(m_editor->currentFrame()->offsetY(), -5);
    QVERIFY(text() != before);
    // The code mode locks the fields.
    m_editor->undo();
    m_editor->setEditCodeMode(true);
    QVERIFY(!m_editor->canChangeFieldValue());
    field<QSpinBox>("anim_frame_yaxis")->setValue(-8);
    QCOMPARE(text(), before);
    m_editor->setEditCodeMode(false);
    QVERIFY(m_editor->canChangeFieldValue());
}

void AnimationEditorTest::typeIntoField_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("line");

    QTest::newRow("x") << "anim_frame_xaxis" << "12" << "frame (200, 1) delay=3 offset=(12, 0)";
    QTest::newRow("negative y") << "anim_frame_yaxis" << "-7" << "frame (200, 1) delay=3 offset=(0, -7)";
    QTest::newRow("time") << "anim_frame_time" << "10" << "frame (200, 1) delay=10";
}

void AnimationEditorTest::typeIntoField()
{
    QFETCH(QString, name);
    QFETCH(QString, typed);
    QFETCH(QString, line);

    QVERIFY(showEditor());
    m_editor->selectAnimation(Punch);
    m_editor->selectFrame(1);
    const QStringList before = linesOf(text());
    auto *box = field<QSpinBox>(name.toLatin1().constData());
    QVERIFY(box);
    box->setFocus();
    QTest::keyClick(box, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(box, typed);
    // Nothing is written until the value is complete.
    QCOMPARE(linesOf(text()), before);
    QTest::keyClick(box, Qt::Key_Return);
    const QList<int> changed = differingLines(before, linesOf(text()));
    QCOMPARE(changed.size(), 1);
    QCOMPARE(linesOf(text()).at(changed.first()).trimmed(), line);
    QCOMPARE(box->value(), typed.toInt());
    QCOMPARE(m_editor->currentFrame(), m_animations->at(Punch)->frameAt(1));
}

// Typing in the code and undoing keep the animation and the frame shown, by their rows.
void AnimationEditorTest::undoKeepsSelection()
{
    m_editor->selectAnimation(Punch);
    m_editor->selectFrame(3);
    CodeDocument *document = m_animations->document();
    const QString before = text();
    // A new animation written above the punch, as a user types it in the code.
    QTextCursor cursor(document->findBlockByNumber(0));
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(QStringLiteral("\nanimation 300 \"Kick\"\n    frame (200, 0) delay=2\n"));
    QCOMPARE(m_animations->count(), 9u);
    QCOMPARE(field<QComboBox>("anim_sel")->count(), 9);
    QCOMPARE(m_editor->currentAnimation(), m_animations->at(Punch));
    QCOMPARE(m_editor->currentFrame(), m_animations->at(Punch)->frameAt(3));
    // The frames of the punch go and come back with the undo stack.
    document->undo();
    QCOMPARE(text(), before);
    QCOMPARE(field<QComboBox>("anim_sel")->count(), 8);
    QCOMPARE(m_editor->currentFrame(), m_animations->at(Punch)->frameAt(3));
    const int header = before.split(QLatin1Char('\n')).indexOf(QStringLiteral("animation 200 \"Punch\""));
    QVERIFY(header > 0);
    QTextCursor punch(document->findBlockByNumber(header));
    punch.movePosition(QTextCursor::NextBlock);
    punch.movePosition(QTextCursor::NextBlock, QTextCursor::KeepAnchor, 4);
    punch.removeSelectedText();
    // Two frames are left; the editor stands on the last of them, and its fields say so.
    QCOMPARE(m_animations->at(Punch)->frameCount(), 2u);
    QCOMPARE(m_editor->currentFrame(), m_animations->at(Punch)->frameAt(1));
    QCOMPARE(field<QComboBox>("anim_frame_sel")->count(), 2);
    QCOMPARE(field<QSpinBox>("anim_frame_time")->value(), 3);
    document->undo();
    QCOMPARE(text(), before);
    QCOMPARE(m_editor->currentFrame(), m_animations->at(Punch)->frameAt(1));
}

void AnimationEditorTest::playTicks()
{
    QVERIFY(showEditor());
    m_editor->selectAnimation(Walk);
    TimeLineWidget *line = m_graphics->timeLine();
    line->setTimeSource(new SteadyClock);
    QList<QPair<uint, int>> seen;
    connect(line, &TimeLineWidget::tickChanged, this, [&](uint tick) {
        seen << qMakePair(tick, m_editor->currentAnimation()->indexOfFrame(m_editor->currentFrame()));
    });
    QTest::mouseClick(button("anim_play"), Qt::LeftButton);
    QVERIFY(line->isPlaying());
    // The walk is 36 ticks long: past its loop.
    QTRY_VERIFY_WITH_TIMEOUT(seen.size() >= 62, 20000);
    QTest::mouseClick(button("anim_stop"), Qt::LeftButton);
    QVERIFY(!line->isPlaying());
    QVERIFY(!action("anim_play")->isChecked());
    // At the loop the editor puts the time line back while it handles the tick past the
    // end: that report (tick 0, before the one it interrupts) comes before the frame changes.
    bool looped = false;
    for (int i = 0; i < seen.size(); ++i) {
        const bool putBack = seen.at(i).first == 0 && i + 1 < seen.size() && seen.at(i + 1).first > 1;
        looped = looped || putBack;
        if (!putBack)
            QCOMPARE(seen.at(i).second, playedFrame(m_animations, Walk, seen.at(i).first));
    }
    QVERIFY2(looped, "the walk went round to its loop frame");
    // Each second of play, the rate.
    QVERIFY2(m_host->statusTexts.value(0).endsWith(QStringLiteral(" FPS")), qPrintable(m_host->statusTexts.value(0)));

    // A frame picked puts the time line at its start.
    m_editor->selectFrame(4);
    QCOMPARE(line->currentTick(), 24u);
    line->setCurrentTick(30);
    QCOMPARE(m_editor->currentAnimation()->indexOfFrame(m_editor->currentFrame()), 5);
    // Back on the ruler by a key: the player has no way back and starts again.
    line->setFocus();
    QTest::keyClick(line, Qt::Key_Left);
    QCOMPARE(line->currentTick(), 29u);
    QCOMPARE(m_editor->currentAnimation()->indexOfFrame(m_editor->currentFrame()), 4);
    QCOMPARE(m_editor->player().currentFrame(), m_editor->currentFrame());
    QCOMPARE(m_editor->player().time(), 30u);
}

// A frame whose delay is negative is the last one shown: the play stays on it.
void AnimationEditorTest::playHoldsForEver()
{
    const int hurt = 4;
    QCOMPARE(m_animations->at(hurt)->frameAt(1)->delay(), -1);
    QVERIFY(showEditor());
    m_editor->selectAnimation(hurt);
    TimeLineWidget *line = m_graphics->timeLine();
    line->setTimeSource(new SteadyClock);
    QList<QPair<uint, int>> seen;
    connect(line, &TimeLineWidget::tickChanged, this, [&](uint tick) {
        seen << qMakePair(tick, m_editor->currentAnimation()->indexOfFrame(m_editor->currentFrame()));
    });
    QTest::mouseClick(button("anim_play"), Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(seen.size() >= 30, 20000);
    QTest::mouseClick(button("anim_play"), Qt::LeftButton);
    QVERIFY(!line->isPlaying());
    // The ticks run on without a loop back; the first frame lasts 8 of them.
    for (int i = 0; i < seen.size(); ++i) {
        if (i > 0)
            QVERIFY(seen.at(i).first >= seen.at(i - 1).first);
        QCOMPARE(seen.at(i).second, seen.at(i).first < 8 ? 0 : 1);
    }
    QVERIFY(seen.last().first >= 28);
}

void AnimationEditorTest::onionLabel()
{
    auto *label = field<QLabel>("anim_onion_lb");
    QCOMPARE(label->text(), QStringLiteral("Animation: none, Frame: none"));
    QTest::mouseClick(button("anim_onion_skin"), Qt::LeftButton);
    QVERIFY(action("anim_onion_skin")->isChecked());
    // The user ticks the walk in the list, then its third frame.
    whenShown<ItemsDialog>([](ItemsDialog *dialog) {
        dialog->clearSelection();
        dialog->setChecked(Walk, true);
        dialog->accept();
    });
    QTest::mouseClick(button("anim_onion_sel"), Qt::LeftButton);
    QCOMPARE(label->text(), QStringLiteral("Animation: %1, Frame: 1").arg(m_animations->at(Walk)->displayName()));
    whenShown<ItemsDialog>([](ItemsDialog *dialog) {
        QCOMPARE(dialog->count(), 6);
        dialog->clearSelection();
        dialog->setChecked(2, true);
        dialog->accept();
    });
    QTest::mouseClick(button("anim_onion_framesel"), Qt::LeftButton);
    QCOMPARE(label->text(), QStringLiteral("Animation: %1, Frame: 3").arg(m_animations->at(Walk)->displayName()));
    // A cancelled choice changes nothing.
    whenShown<ItemsDialog>([](ItemsDialog *dialog) { dialog->reject(); });
    QTest::mouseClick(button("anim_onion_sel"), Qt::LeftButton);
    QCOMPARE(label->text(), QStringLiteral("Animation: %1, Frame: 3").arg(m_animations->at(Walk)->displayName()));
    // The user finds the punch by its number; a number no animation has changes nothing.
    whenShown<QInputDialog>([](QInputDialog *dialog) {
        dialog->setTextValue(QStringLiteral("200"));
        dialog->accept();
    });
    QTest::mouseClick(button("anim_onion_find"), Qt::LeftButton);
    const QString punch = QStringLiteral("Animation: %1, Frame: 1").arg(m_animations->at(Punch)->displayName());
    QCOMPARE(label->text(), punch);
    {
        ScriptedAnswerer user({QMessageBox::Ok});
        whenShown<QInputDialog>([](QInputDialog *dialog) {
            dialog->setTextValue(QStringLiteral("4242"));
            dialog->accept();
        });
        QTest::mouseClick(button("anim_onion_find"), Qt::LeftButton);
        QCOMPARE(user.prompts().size(), 1);
        QCOMPARE(user.prompts().first().text, QStringLiteral("No animation found!"));
    }
    QCOMPARE(label->text(), punch);
    QCOMPARE(m_editor->currentAnimation(), m_animations->at(0));
    // The choice stays with the file: away and back.
    m_editor->setCurrentFile(nullptr);
    QCOMPARE(label->text(), QStringLiteral("Animation: none, Frame: none"));
    m_editor->setCurrentFile(m_animations);
    QCOMPARE(label->text(), punch);
}

// The sprite explorer shows the editor's four actions for the sprites of the file.
void AnimationEditorTest::spriteExplorerActions()
{
    QCOMPARE(m_thumbnails->files(), m_editor->sprites());
    QVERIFY(m_editor->sprites());
    const QList<Sprite *> all = m_thumbnails->all();
    QVERIFY(all.size() > 4);
    const QString before = text();
    const uint count = m_animations->count();

    action("anim_thumb_new_all")->trigger();
    QCOMPARE(m_animations->count(), count + 1);
    AnimationCode *made = m_editor->currentAnimation();
    QCOMPARE(made, m_animations->at(count));
    QCOMPARE(made->frameCount(), uint(all.size()));
    for (int i = 0; i < all.size(); ++i)
        QCOMPARE(made->frameAt(uint(i))->spriteId(), all.at(i)->identifier());
    // One step of the user's: back in one undo.
    m_editor->undo();
    QCOMPARE(text(), before);
    QCOMPARE(field<QComboBox>("anim_sel")->count(), int(count));

    m_editor->selectAnimation(Punch);
    action("anim_thumb_add_all")->trigger();
    QCOMPARE(m_animations->at(Punch)->frameCount(), 4u + uint(all.size()));
    QCOMPARE(m_editor->currentFrame(), m_animations->at(Punch)->frameAt(3 + uint(all.size())));
    m_editor->undo();
    QCOMPARE(text(), before);
    // Nothing picked in the explorer: nothing to add.
    QVERIFY(m_thumbnails->selected().isEmpty());
    action("anim_thumb_add")->trigger();
    action("anim_thumb_new")->trigger();
    QCOMPARE(text(), before);
}

void AnimationEditorTest::statusTexts()
{
    QCOMPARE(m_host->statusTexts.value(0).left(10), QStringLiteral("Renderer: "));
    QVERIFY(showEditor());
    const QPoint origin = GraphicsRenderer::origin();
    const QPointF scale = m_editor->renderer()->scale();
    QTest::mouseMove(view(), origin + QPoint(qRound(10 * scale.x()), qRound(-20 * scale.y())));
    QTRY_COMPARE(m_host->statusTexts.value(0), QStringLiteral("Position: 10, -20"));
}

// The host's organizer shows the file's animations beside the canvas when the user wants it.
void AnimationEditorTest::organizerByOption()
{
    OrganizerEditor organizer;
    m_host->organizer = &organizer;
    m_host->options[QStringLiteral("show_organizer")] = true;
    m_host->activateEditor(nullptr);
    m_host->activateEditor(m_editor.get());
    QCOMPARE(organizer.object(), static_cast<OrganizableObject *>(m_animations));
    QCOMPARE(m_host->shownExtra, &organizer);

    m_host->options[QStringLiteral("show_organizer")] = false;
    m_host->activateEditor(nullptr);
    m_host->activateEditor(m_editor.get());
    QCOMPARE(organizer.object(), nullptr);
    QCOMPARE(m_host->shownExtra, nullptr);
    m_host->organizer = nullptr;
}

// A host that has no graphics view yet still gets a working editor of the fields.
void AnimationEditorTest::withoutGraphicsWorkspace()
{
    Held<AnimationEditor> bare(m_extension->create(m_code.get(), nullptr, nullptr));
    QVERIFY(bare);
    QCOMPARE(bare->timeLine(), nullptr);
    bare->setCurrentFile(m_animations);
    m_host->activateEditor(bare.get());
    QVERIFY(bare->isActive());
    QCOMPARE(bare->widget(), static_cast<QWidget *>(m_code.get()));
    bare->selectAnimation(Punch);
    bare->selectFrame(1);
    auto *x = bare->panel()->findChild<QSpinBox *>(QStringLiteral("anim_frame_xaxis"));
    x->setValue(4);
    QCOMPARE(m_animations->at(Punch)->frameAt(1)->offsetX(), 4);
    QVERIFY(bare->panel()->findChild<QToolButton *>(QStringLiteral("anim_play_button")));
    // Play has no clock to play by: the button doesn't stay down.
    bare->panel()->findChild<QToolButton *>(QStringLiteral("anim_play_button"))->click();
    QVERIFY(!m_host->action("anim_play")->isChecked());
    m_host->activateEditor(nullptr);
    bare->setCurrentFile(nullptr);
}

void AnimationEditorTest::screenshot()
{
    QVERIFY(showEditor());
    m_editor->selectAnimation(Punch);
    m_editor->selectFrame(2);
    // Closer, as a user looks at boxes.
    for (int i = 0; i < 2; ++i)
        QTest::mouseClick(m_graphics->toolBar()->widgetForAction(action("view_zoom_in")), Qt::LeftButton);
    QApplication::processEvents();
    const QImage picture = m_graphics->grab().toImage();
    QVERIFY(!picture.isNull());
    const QString file = QCoreApplication::applicationDirPath() + QStringLiteral("/animationeditor.png");
    QVERIFY(picture.save(file));
    // The view shows the boxes in their colours.
    const QImage viewPicture = view()->grab().toImage().convertToFormat(QImage::Format_RGB32);
    const QRect attack = m_editor->renderer()->boxScreenRect(ContactBoxCode::Attack, 0);
    const QRgb inside = viewPicture.pixel(attack.center());
    QVERIFY2(qRed(inside) > qBlue(inside) + 40, qPrintable(QString::number(inside, 16)));
}

QTEST_MAIN(AnimationEditorTest)
#include "tst_animationeditor.moc"
