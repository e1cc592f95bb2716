#pragma once

// The shape of running a project under observation. The library carries no engine and
// no process control: an engine's subclasses do the running, stepping and watching, and
// report through the protected helpers, which the front ends hear as signals.
#include "foundation/global.h"

#include <QObject>
#include <QStringList>

namespace Ovra {

class Project;
class Variable;

class OVRA_EXPORT BasicDebugger : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    // How often, in milliseconds, watched values are brought up to date while running;
    // the engine's front end sets it, scripts read it.
    uint liveUpdateRate() const { return m_liveUpdateRate; }
    void setLiveUpdateRate(uint milliseconds) { m_liveUpdateRate = milliseconds; }

    virtual void stepOver() = 0;
    virtual void stepInto() = 0;
    virtual void stepOut() = 0;
    // Runs up to the end of the current frame of the game.
    virtual void stepFrame() = 0;
    virtual void stop() = 0;
    // A value of the running program by name, or null; it stays the debugger's.
    virtual Variable *variable(const QString &name) = 0;

signals:
    void finished();
    void outputString(const QString &string);
    void exception(const QString &message);
    // The program stopped: at a break point or a step (pause), or for good.
    void interrupted(bool pause);

protected:
    void debugBreak(bool pause) { emit interrupted(pause); }
    void debugException(const QString &message) { emit exception(message); }
    void debugOutput(const QString &text) { emit outputString(text); }

private:
    uint m_liveUpdateRate = 0;
};

// Runs the game's own program under observation.
class OVRA_EXPORT Debugger : public BasicDebugger
{
    Q_OBJECT
public:
    using BasicDebugger::BasicDebugger;

    virtual bool start(const QString &program, const QStringList &arguments) = 0;
    virtual void interrupt() = 0;
    virtual void resume() = 0;
};

// Runs a project inside the tool, a frame at a time.
class OVRA_EXPORT Emulator : public BasicDebugger
{
    Q_OBJECT
public:
    using BasicDebugger::BasicDebugger;

    // The last step ended at a frame's end.
    virtual bool frameEnded() const = 0;
    // Whether it can run in the mode given (the engine's numbers).
    virtual bool canRun(int mode) const = 0;
    virtual bool start(const Project *project) = 0;
};

} // namespace Ovra
