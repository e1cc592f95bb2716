// The animation editor's selection, fields and playback: what follows the user's choice
// of an animation and a frame, the text changing under the editor, and the ticks of the
// time line.
#include "editors/animation/animationeditor.h"
#include "editors/animation/animationeditor_p.h"

#include "code/animationcode.h"
#include "code/animations.h"
#include "code/codedocument.h"
#include "code/framecode.h"
#include "editors/animation/timelinewidget.h"
#include "editors/graphics/graphicsworkspace.h"
#include "foundation/interface.h"
#include "foundation/prompt.h"

#include <QAction>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QSignalBlocker>
#include <QSpinBox>

namespace Ovra {
namespace {

// The tick a frame starts at: the delays before it, a negative one counting as none
// (the time line never gets past it anyway).
uint frameStart(const AnimationCode *animation, int index)
{
    uint start = 0;
    for (int i = 0; animation && i < index && i < int(animation->frameCount()); ++i)
        start += uint(qMax(0, animation->frameAt(uint(i))->delay()));
    return start;
}

QVector<int> delaysOf(const AnimationCode *animation)
{
    QVector<int> delays;
    for (uint i = 0; animation && i < animation->frameCount(); ++i)
        delays << animation->frameAt(i)->delay();
    return delays;
}

} // namespace

TimeLineWidget *AnimationEditorPrivate::timeLine() const
{
    return graphicsWorkspace ? graphicsWorkspace->timeLine() : nullptr;
}

// The player stands one tick ahead of lastTick: after loading, one tick is played and
// lastTick is 0, so that each later tick returns the time the time line shows.
void AnimationEditorPrivate::loadPlayer()
{
    player.change(animations, animationIndex, true);
    player.tick();
    lastTick = 0;
}

void AnimationEditorPrivate::updateFromText()
{
    if (!animations)
        return;
    // Inside a bracket of changes the list may be half way through an edit; the end of
    // the bracket reports the text once more.
    if (CodeDocument *document = animations->document(); document && document->isCodeBeingChanged())
        return;
    FrameCode *before = frame;
    const int animationsBefore = animationBox->count();
    refreshPointers();
    fillAnimationBox();
    if (q->changeNotFromField())
        fillFields();
    updateState();
    // A new frame node has new box lists: the canvas must not keep the old ones. The same
    // frame's lists may be being written by the canvas itself (a drawn or deleted box),
    // which finishes its own list first: the canvas is brought along after it.
    if (frame != before) {
        syncBoxes();
        q->frameChanged();
    } else {
        boxSyncPending = true;
    }
    // The delays may have changed with the text (typing, undo): the player follows now,
    // the time line once the burst of edits is over. The time line stays where it is.
    if (!timeLine() || !timeLine()->isPlaying())
        loadPlayer();
    scheduleRefresh();
    updateOnion();
    if (animationsBefore != animationBox->count())
        q->animationCountChanged();
}

void AnimationEditorPrivate::scheduleRefresh()
{
    if (refreshPending)
        return;
    refreshPending = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            refreshPending = false;
            if (boxSyncPending) {
                syncBoxes();
                q->frameChanged();
            }
            // Operations of the editor that change delays report it themselves; another
            // animation in the current row (one above it went) is news too.
            const QString name = animation ? animation->displayName() : QString();
            if (delaysOf(animation) != reportedDelays || name != reportedName)
                reportIfShown();
        },
        Qt::QueuedConnection);
}

void AnimationEditorPrivate::showFrame()
{
    syncBoxes();
    TimeLineWidget *line = timeLine();
    if (line && q->isActive() && !line->isPlaying() && tickGuard == 0 && frame) {
        ++tickGuard;
        line->setCurrentTick(frameStart(animation, frameIndex), false);
        --tickGuard;
    }
    q->frameChanged();
}

// The editor's own news of another animation or of new delays matters for what is shown:
// it is told only while the editor is shown, and the canvas takes it up on coming back.
void AnimationEditorPrivate::reportIfShown()
{
    if (q->isActive() && !editCodeMode) {
        reportAnimationChanged(true);
    } else {
        reportedDelays = delaysOf(animation);
        reportedName = animation ? animation->displayName() : QString();
    }
}

void AnimationEditorPrivate::reportAnimationChanged(bool time)
{
    if (time) {
        reportedDelays = delaysOf(animation);
        reportedName = animation ? animation->displayName() : QString();
        rebuildTimeLine();
    }
    q->animationChanged(time);
}

// The lanes belong to the engine's editor, which adds them in animationChanged(true);
// the shared time line only shows ours while the editor is active.
void AnimationEditorPrivate::rebuildTimeLine()
{
    if (TimeLineWidget *line = timeLine(); line && q->isActive() && !editCodeMode)
        line->clearTimeLines();
}

void AnimationEditorPrivate::playAnimation()
{
    if (QAction *play = actionNamed("anim_play"))
        play->toggle();
}

void AnimationEditorPrivate::tick(uint tick)
{
    if (tickGuard > 0)
        return;
    if (tick < lastTick) {
        player.reset();
        player.tick();
        lastTick = 0;
    }
    for (uint steps = tick - lastTick; steps > 0; --steps)
        lastTick = player.tick();
    TimeLineWidget *line = timeLine();
    // Looped, or nothing more to play: the time line shows where the player stands.
    if (lastTick != tick && line) {
        ++tickGuard;
        line->setCurrentTick(lastTick, false);
        --tickGuard;
    }
    if (FrameCode *shown = player.currentFrame()) {
        if (shown != frame && animation) {
            const int index = animation->indexOfFrame(shown);
            if (index >= 0) {
                ++tickGuard;
                frameBox->setCurrentIndex(index);
                --tickGuard;
            }
        }
        q->interpolateFrames(shown, qMax(1u, player.frameTime()) - 1);
    }
    if (line && line->isPlaying() && tick % 60 == 0)
        setStatus(tr("%1 FPS").arg(double(line->currentFPS()), 0, 'f', 1));
}

void AnimationEditorPrivate::playChanged(bool checked)
{
    TimeLineWidget *line = timeLine();
    if (!checked) {
        if (line)
            line->stop();
        return;
    }
    makeActive();
    // Without a time line there is no clock to play by.
    if (!line || !animation || !player.change(animations, animationIndex, true)) {
        if (QAction *play = actionNamed("anim_play")) {
            QSignalBlocker blocker(play);
            play->setChecked(false);
        }
        return;
    }
    player.tick();
    lastTick = 0;
    ++tickGuard;
    line->setCurrentTick(0, true);
    --tickGuard;
    line->play();
}

void AnimationEditorPrivate::stopChanged()
{
    if (QAction *play = actionNamed("anim_play")) {
        QSignalBlocker blocker(play);
        play->setChecked(false);
    }
    if (TimeLineWidget *line = timeLine())
        line->stop();
    showFrame();
}

void AnimationEditorPrivate::setPos(int position)
{
    if (TimeLineWidget *line = timeLine())
        line->setCurrentTick(uint(qMax(0, position)), true);
}

void AnimationEditorPrivate::selPosChanged(int index)
{
    if (updating > 0 || !animations || index < 0 || index >= int(animations->count()))
        return;
    makeActive();
    ++updating;
    animationIndex = index;
    animations->setSelected(uint(index));
    frameIndex = -1; // the animation's own remembered frame
    refreshPointers();
    fillFrameBox();
    loadPlayer();
    fillFields();
    updateState();
    --updating;
    if (TimeLineWidget *line = timeLine(); line && line->isPlaying()) {
        ++tickGuard;
        line->setCurrentTick(0, true);
        --tickGuard;
    }
    reportIfShown();
    showFrame();
    setStatus(tr("%1 / %2").arg(index + 1).arg(animations->count()));
}

void AnimationEditorPrivate::frameSelPosChanged(int index)
{
    if (updating > 0 || !animation || index < 0 || index >= int(animation->frameCount()))
        return;
    makeActive();
    ++updating;
    frameIndex = index;
    animation->setSelectedFrame(uint(index));
    refreshPointers();
    fillFields();
    updateState();
    --updating;
    showFrame();
}

// ---- the fields ----------------------------------------------------------------------------

namespace {

// One field's value into the frame, inside the field guard: the text change that comes
// back refreshes the editor without refilling the field being edited.
template<class Write>
void writeField(AnimationEditorPrivate *d, Write write)
{
    if (d->updating > 0 || !d->q->canChangeFieldValue())
        return;
    d->makeActive();
    // Making the editor active may have swapped the file: the frame is read again.
    if (!d->frame)
        return;
    ++d->fieldChanges;
    write(d->frame);
    --d->fieldChanges;
}

} // namespace

void AnimationEditorPrivate::frameXChanged(int x)
{
    writeField(this, [x](FrameCode *frame) { frame->setOffsetX(x); });
}

void AnimationEditorPrivate::frameYChanged(int y)
{
    writeField(this, [y](FrameCode *frame) { frame->setOffsetY(y); });
}

void AnimationEditorPrivate::frameTimeChanged(int time)
{
    writeField(this, [time](FrameCode *frame) { frame->setDelay(time); });
    if (updating == 0 && q->canChangeFieldValue()) {
        positionLabel->setText(positionText());
        reportAnimationChanged(true);
    }
}

void AnimationEditorPrivate::frameFlipChanged(int flip)
{
    writeField(this, [flip](FrameCode *frame) { frame->setFlipFlags(uint(flip) & FrameCode::Both); });
}

void AnimationEditorPrivate::frameXScaleChanged(double scale)
{
    writeField(this, [scale](FrameCode *frame) { frame->setScaleX(scale); });
}

void AnimationEditorPrivate::frameYScaleChanged(double scale)
{
    writeField(this, [scale](FrameCode *frame) { frame->setScaleY(scale); });
}

void AnimationEditorPrivate::frameAngleChanged(double angle)
{
    writeField(this, [angle](FrameCode *frame) { frame->setAngle(angle); });
}

// ---- moving about ----------------------------------------------------------------------------

void AnimationEditorPrivate::nextAnimation()
{
    if (animations && animations->count())
        animationBox->setCurrentIndex((animationIndex + 1) % int(animations->count()));
}

void AnimationEditorPrivate::prevAnimation()
{
    if (animations && animations->count()) {
        const int count = int(animations->count());
        animationBox->setCurrentIndex((animationIndex + count - 1) % count);
    }
}

void AnimationEditorPrivate::nextFrame()
{
    if (animation && animation->frameCount())
        frameBox->setCurrentIndex((frameIndex + 1) % int(animation->frameCount()));
}

void AnimationEditorPrivate::prevFrame()
{
    if (animation && animation->frameCount()) {
        const int count = int(animation->frameCount());
        frameBox->setCurrentIndex((frameIndex + count - 1) % count);
    }
}

void AnimationEditorPrivate::frameAdd()
{
    if (!animation)
        return;
    makeActive();
    // After the current frame, as a copy of nothing: the engine's new frame.
    const int row = frameIndex + 1;
    animations->beginChange();
    FrameCode *added = animation->insertFrame(uint(row));
    animations->endChange();
    if (added) {
        frameIndex = row;
        refreshPointers();
        fillFrameBox();
        fillFields();
        updateState();
        showFrame();
    }
}

void AnimationEditorPrivate::frameDel()
{
    if (!animation || frameIndex < 0)
        return;
    makeActive();
    if (!interface || interface->option(QStringLiteral("confirm_delete"), true).toBool()) {
        Prompt question;
        question.icon = QMessageBox::Question;
        question.title = tr("Confirmation");
        question.text = tr("Do you really want to delete the frame?");
        question.buttons = QMessageBox::Yes | QMessageBox::No;
        question.defaultButton = QMessageBox::No;
        question.parent = panel;
        if (ask(question) != QMessageBox::Yes)
            return;
    }
    // The parse takes the node away and the text's report brings the editor along.
    animation->removeFrame(uint(frameIndex));
}

// The editor is shown by the code workspace and the fields are locked while the code
// mode is on; the animation's own text is edited by editAnimCode.
void AnimationEditorPrivate::codeChanged()
{
    updateFromText();
}

void AnimationEditorPrivate::extraAxisChanged(QPoint axis)
{
    Q_UNUSED(axis)
    q->frameChanged();
}

void AnimationEditorPrivate::cursorChanged(QPoint position)
{
    q->cursorChanged(position);
}

void AnimationEditor::cursorChanged(QPoint position)
{
    QString text = tr("Position: %1, %2").arg(position.x()).arg(position.y());
    if (d->renderer && d->renderer->guidesVisible()) {
        const QPoint guides = d->renderer->guideLines();
        text += QStringLiteral("  ") + tr("Horizontal guide: %1, Vertical guide: %2").arg(guides.y()).arg(guides.x());
    }
    d->setStatus(text);
}

} // namespace Ovra
