#include "editors/animation/timesource.h"

#include <QElapsedTimer>

namespace Ovra {

TimeSource::~TimeSource() = default;

struct ElapsedTimeSource::Private
{
    QElapsedTimer timer;
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
}

qint64 ElapsedTimeSource::restart()
{
    // Read before the first start, the timer is invalid; count that as no time at all.
    return d->timer.isValid() ? d->timer.restart() : (d->timer.start(), 0);
}

} // namespace Ovra
