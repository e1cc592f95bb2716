// Runs one script of the Lua test suite on a copy of the example work: the sample engine
// comes from its plug-in, as the tool loads it, so its zip container is there too. The
// script sees the library's classes, the engine's own, the knight project as `project`,
// the work's directory as `workDir`, and a debugger, an emulator and a progress of this
// runner (the sample engine has none) whose calls `callLog()` lists. A Lua error (a
// failed assert among them) ends the run with its message and a non-zero exit.
#include "engine/debugger.h"
#include "engine/engine.h"
#include "engine/extension.h"
#include "engine/extensionmanager.h"
#include "engine/script/script.h"
#include "engine/script/scriptclasses.h"
#include "engine/variable.h"
#include "foundation/progress.h"
#include "project/parentproject.h"
#include "project/project.h"
#include "testfiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QTemporaryDir>

#include <cstdio>
#include <memory>

using namespace Ovra;

namespace {

QStringList &callLog()
{
    static QStringList log;
    return log;
}

void logCall(const QString &call)
{
    callLog().append(call);
}

class RecordingProgress : public JobStats
{
public:
    void error(const QString &text) override { logCall(QStringLiteral("error ") + text); }
    void setMaximum(uint maximum) override { logCall(QStringLiteral("setMaximum %1").arg(maximum)); }
    void setValue(uint value) override { logCall(QStringLiteral("setValue %1").arg(value)); }
    void incrementValue() override { logCall(QStringLiteral("incrementValue")); }
    bool wasCancelled() override { return false; }
};

// Knows one variable, "lives", as a running game would show it.
class RecordingDebugger : public Debugger
{
public:
    void stepOver() override { logCall(QStringLiteral("stepOver")); }
    void stepInto() override { logCall(QStringLiteral("stepInto")); }
    void stepOut() override { logCall(QStringLiteral("stepOut")); }
    void stepFrame() override { logCall(QStringLiteral("stepFrame")); }
    void stop() override { logCall(QStringLiteral("stop")); }
    Variable *variable(const QString &name) override { return name == m_lives.name() ? &m_lives : nullptr; }
    bool start(const QString &program, const QStringList &arguments) override
    {
        logCall(QStringLiteral("start ") + program + QLatin1Char(' ') + arguments.join(QLatin1Char(',')));
        return !program.isEmpty();
    }
    void interrupt() override { logCall(QStringLiteral("interrupt")); }
    void resume() override { logCall(QStringLiteral("resume")); }

private:
    Variable m_lives{QStringLiteral("lives"), 3};
};

// Runs in mode 0 only; a step of a frame ends the frame.
class RecordingEmulator : public Emulator
{
public:
    void stepOver() override { m_frameEnded = false; }
    void stepInto() override { m_frameEnded = false; }
    void stepOut() override { m_frameEnded = false; }
    void stepFrame() override { m_frameEnded = true; }
    void stop() override { logCall(QStringLiteral("emulator stop")); }
    Variable *variable(const QString &) override { return nullptr; }
    bool frameEnded() const override { return m_frameEnded; }
    bool canRun(int mode) const override { return mode == 0; }
    bool start(const Project *project) override
    {
        logCall(QStringLiteral("emulator start ") + (project ? project->name() : QStringLiteral("nothing")));
        return project != nullptr;
    }

private:
    bool m_frameEnded = false;
};

int fail(const QString &message)
{
    std::fprintf(stderr, "%s\n", qPrintable(message));
    return 1;
}

} // namespace

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    if (argc != 2)
        return fail(QStringLiteral("usage: ovra_scriptrunner SCRIPT.lua"));
    const QString scriptName = QString::fromLocal8Bit(argv[1]);
    QFile scriptFile(scriptName);
    if (!scriptFile.open(QIODevice::ReadOnly))
        return fail(QStringLiteral("can't read ") + scriptName);
    const QString code = QString::fromUtf8(scriptFile.readAll());

    QTemporaryDir dir;
    const QString work = dir.filePath(QStringLiteral("work"));
    if (!copyTree(QStringLiteral(OVRA_EXAMPLES_DIR "/sample"), work))
        return fail(QStringLiteral("can't copy the example work"));

    ExtensionManager manager{QStringLiteral(OVRA_PLUGIN_DIR)};
    const QString projectFile = work + QStringLiteral("/knight/knight.ovp");
    EngineExtension *extension = EngineExtension::forProjectFile(projectFile);
    if (!extension)
        return fail(QStringLiteral("the sample engine's plug-in isn't in " OVRA_PLUGIN_DIR));
    QString error;
    Project *project = extension->openProject(projectFile, &error);
    if (!project)
        return fail(QStringLiteral("can't open the knight: ") + error);

    RecordingProgress progress;
    RecordingDebugger debugger;
    RecordingEmulator emulator;
    int result = 0;
    {
        Script::State state;
        state.openLibraries(Script::State::SafeLibraries);
        Script::Table globals = state.globals();
        registerScriptClasses(globals);
        if (Engine *engine = project->parentProject()->engine())
            engine->registerScriptClasses(state);
        globals.set("project", project);
        globals.set("workDir", work);
        globals.set("progress", static_cast<JobStats *>(&progress));
        globals.set("debugger", static_cast<Debugger *>(&debugger));
        globals.set("emulator", static_cast<Emulator *>(&emulator));
        globals.function("callLog", [] { return callLog(); });
        // The helpers every script of the suite shares.
        const QString helpersName = QFileInfo(scriptName).dir().filePath(QStringLiteral("common/helpers.lua"));
        QFile helpers(helpersName);
        if (!helpers.open(QIODevice::ReadOnly))
            result = fail(QStringLiteral("can't read ") + helpersName);
        else if (!state.run(QString::fromUtf8(helpers.readAll()), QStringLiteral("helpers.lua"), &error))
            result = fail(error);
        const QString chunk = QFileInfo(scriptName).fileName();
        if (result == 0 && !state.run(code, chunk, &error))
            result = fail(error);
    }
    project->release();
    return result;
}
