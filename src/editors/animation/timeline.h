#pragma once

#include "foundation/global.h"

#include <QString>

namespace Ovra {

// One lane of the time line: a name, and blocks that start at given ticks and last a
// number of ticks. The widget asks a lane about each tick it shows, so a lane answers
// from whatever it keeps (frames, sounds, events) without knowing how it is drawn.
class OVRA_EXPORT TimeLine
{
public:
    virtual ~TimeLine();

    // Shown left of the lane.
    virtual QString name() const = 0;
    // Whether a block starts at `tick`; if so `length` receives its length in ticks.
    // A block of length 0 is an instant; one that never ends gives the largest uint.
    virtual bool blockAt(uint tick, uint &length) const = 0;
};

} // namespace Ovra
