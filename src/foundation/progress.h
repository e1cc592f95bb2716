#pragma once

#include "foundation/global.h"

class QString;

namespace Ovra {

// Progress of a long operation. Handed about as a pointer that may be null.
// Calls may come from worker threads of background saves.
class OVRA_EXPORT JobStats
{
public:
    virtual ~JobStats() = default;
    virtual void error(const QString &text) = 0;
    virtual void setMaximum(uint maximum) = 0;
    virtual void setValue(uint value) = 0;
    virtual void incrementValue() = 0;
    virtual bool wasCancelled() = 0;
};

// A job of the host's progress display.
class OVRA_EXPORT Job : public JobStats
{
public:
    // Tells the display that the job ends by itself on another thread
    // after the call that started it has returned.
    virtual void setAsynchronous(bool asynchronous) = 0;
};

// The host's progress display.
class OVRA_EXPORT ProgressProvider
{
public:
    virtual ~ProgressProvider() = default;
    // The library always passes 0 as reserved. The job stays the host's.
    virtual Job *start(const QString &title, int reserved) = 0;
};

} // namespace Ovra
