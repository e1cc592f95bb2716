#include "code/animationplayer.h"

#include "code/animationcode.h"
#include "code/animations.h"
#include "code/framecode.h"

#include <QPointer>

namespace Ovra {

struct AnimationPlayer::Private
{
    // The list can go while a player still points at it: the editor closes the file.
    QPointer<Animations> animations;
    int totalTime = 0;
    int loopTime = 0;
    uint loopFrame = 0;
    uint animationIndex = 0;
    uint frameIndex = 0;
    uint time = 0;

    AnimationCode *animation() const { return animations ? animations->at(animationIndex) : nullptr; }
};

AnimationPlayer::AnimationPlayer()
    : d(new Private)
{
}

AnimationPlayer::~AnimationPlayer() = default;

Animations *AnimationPlayer::animations() const
{
    return d->animations;
}

int AnimationPlayer::animationIndex() const
{
    return int(d->animationIndex);
}

int AnimationPlayer::totalTime() const
{
    return d->totalTime;
}

int AnimationPlayer::loopTime() const
{
    return d->loopTime;
}

uint AnimationPlayer::time() const
{
    return d->time;
}

void AnimationPlayer::clear()
{
    d->animations = nullptr;
    d->frameIndex = 0;
    d->time = 0;
    m_frameTime = 0;
    update();
}

bool AnimationPlayer::change(Animations *animations, int index, bool force)
{
    // The row past the end passes this test and fails the look-up below.
    if (!animations || index < 0 || index > int(animations->count())) {
        clear();
        return false;
    }
    if (!force && d->animations == animations && d->animationIndex == uint(index)) {
        clear();
        return false;
    }
    d->animations = animations;
    AnimationCode *animation = animations->at(uint(index));
    if (!animation) {
        clear();
        return false;
    }
    d->totalTime = 0;
    d->loopTime = 0;
    d->loopFrame = animation->loopPoint();
    for (const FrameCode *frame : animation->frames()) {
        const int delay = frame->delay();
        if (uint(frame->index()) < d->loopFrame)
            d->loopTime += delay;
        if (d->totalTime >= 0)
            d->totalTime = delay < 0 ? -1 : d->totalTime + delay;
    }
    d->animationIndex = uint(index);
    d->frameIndex = 0;
    d->time = 0;
    m_frameTime = 0;
    update();
    return true;
}

void AnimationPlayer::update()
{
    AnimationCode *animation = d->animation();
    if (!animation) {
        m_currentFrame = nullptr;
        m_nextFrame = nullptr;
        return;
    }
    const QList<FrameCode *> &frames = animation->frames();
    // A frame deleted since the last tick is no current frame any more.
    FrameCode *current = frames.contains(m_currentFrame) ? m_currentFrame : nullptr;
    // The start of each frame is the sum of the delays before it; a negative delay
    // makes every later start unreachable.
    int start = 0;
    for (int i = 0; i < frames.size() && start >= 0 && uint(start) <= d->time; ++i) {
        const int delay = frames.at(i)->delay();
        if (uint(i) >= d->frameIndex) {
            current = frames.at(i);
            d->frameIndex = uint(i);
        }
        start = delay < 0 ? -1 : start + delay;
    }
    if (current != m_currentFrame) {
        m_currentFrame = current;
        m_frameTime = 0;
        const int index = frames.indexOf(current);
        if (index < 0)
            m_nextFrame = nullptr;
        else
            m_nextFrame = index + 1 < frames.size() ? frames.at(index + 1) : frames.value(int(d->loopFrame));
    }
}

uint AnimationPlayer::tick()
{
    update();
    if (!d->animations || d->animations->isEmpty() || !d->animation())
        return 0;
    if (d->totalTime != -1 && d->time >= uint(d->totalTime)) {
        m_frameTime = 0;
        d->time = uint(d->loopTime);
        d->frameIndex = d->loopFrame;
        update();
    }
    ++m_frameTime;
    return d->time++;
}

void AnimationPlayer::reset()
{
    d->frameIndex = 0;
    d->time = 0;
    m_frameTime = 0;
    update();
}

} // namespace Ovra
