#include "editors/animation/timesource.h"

#include <QElapsedTimer>

namespace Ovra {

TimeSource::~TimeSource() = default;

struct ElapsedTimeSource::Private
{
    QElapsedTimer timer;
    // Nanoseconds since the start handed out so far, in whole milliseconds.
    qint64 reported = 0;
};

ElapsedTimeSource::ElapsedTimeSource()
    : d(new Private)
{
}

ElapsedTimeSource::~ElapsedTimeSource()
{
    delete d;
}

void ElapsedTimeSource::start()
{
    d->timer.start();
    d->reported = 0;
}

qint64 ElapsedTimeSource::restart()
{
    // Read before the first start, the timer is invalid; count that as no time at all.
    if (!d->timer.isValid()) {
        start();
        return 0;
    }
    // Restarting a QElapsedTimer drops the part of a millisecond it had counted: half a
    // millisecond a tick on average, which the tick clock would never see and so never
    // correct (1.5 % slow at 60 Hz). The fraction is kept for the next reading instead,
    // so that the readings add up to the time that really passed.
    const qint64 ms = (d->timer.nsecsElapsed() - d->reported) / 1000000;
    d->reported += ms * 1000000;
    return ms;
}

} // namespace Ovra
