#pragma once

// A lane of the time line for one animation of the sample engine: each frame a block as
// long as its delay, in ticks, back to back from tick 0.
#include "editors/animation/timeline.h"

#include <QMap>

namespace Ovra {
class AnimationCode;
}

class SampleTimeLine : public Ovra::TimeLine
{
public:
    // Reads the frames at once; an animation of null gives an empty lane.
    explicit SampleTimeLine(Ovra::AnimationCode *animation);

    // Reads the frames again, after their delays or their number changed.
    void refresh();

    // The animation's display name: "ID name".
    QString name() const override;
    // A frame of delay 0 that another frame follows starts where that frame starts and
    // is never shown: the lane shows the frame that follows. A negative delay holds its
    // frame for ever, and the frames behind it never come.
    bool blockAt(uint tick, uint &length) const override;
    int blockCount() const { return m_blocks.size(); }

private:
    Ovra::AnimationCode *m_animation;
    QString m_name;
    // Start tick to length.
    QMap<uint, uint> m_blocks;
};
