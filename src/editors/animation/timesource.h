#pragma once

#include "foundation/global.h"

#include <QtGlobal>

namespace Ovra {

// The clock the time line measures its ticks with. The widget reads it once a tick;
// a test gives it a clock of its own to see the timer's correction without waiting.
class OVRA_EXPORT TimeSource
{
public:
    virtual ~TimeSource();

    // Starts measuring from now.
    virtual void start() = 0;
    // Milliseconds since the last start or restart, and starts again from now.
    virtual qint64 restart() = 0;
};

// The real clock: a QElapsedTimer.
class OVRA_EXPORT ElapsedTimeSource : public TimeSource
{
public:
    ElapsedTimeSource();
    ~ElapsedTimeSource() override;

    void start() override;
    qint64 restart() override;

private:
    struct Private;
    Private *const d;
};

} // namespace Ovra
