#include "sampletimeline.h"

#include "code/animationcode.h"
#include "code/framecode.h"

#include <climits>

SampleTimeLine::SampleTimeLine(Ovra::AnimationCode *animation)
    : m_animation(animation)
{
    refresh();
}

void SampleTimeLine::refresh()
{
    m_blocks.clear();
    m_name = m_animation ? m_animation->displayName() : QString();
    if (!m_animation)
        return;
    qint64 start = 0;
    for (const Ovra::FrameCode *frame : m_animation->frames()) {
        const int delay = frame->delay();
        if (delay < 0) {
            m_blocks.insert(uint(start), UINT_MAX);
            return;
        }
        // A later frame at the same start takes the place of one of no delay.
        m_blocks.insert(uint(start), uint(delay));
        start += delay;
        // Ticks are counted in uint: what lies beyond can't be shown.
        if (start > UINT_MAX)
            return;
    }
}

QString SampleTimeLine::name() const
{
    return m_name;
}

bool SampleTimeLine::blockAt(uint tick, uint &length) const
{
    const auto found = m_blocks.constFind(tick);
    if (found == m_blocks.constEnd())
        return false;
    length = found.value();
    return true;
}
