// The studio's start-up, from launching the program until its window with the example
// work is painted, against a bare Qt Widgets program that shows an empty main window of
// the same size: both whole processes, on the same platform, in the same run. Each says
// on its standard output when it has painted; how long it takes to end is not timed.
#include "ratioreporter.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>

namespace {

QString program(const char *name)
{
    return QCoreApplication::applicationDirPath() + QLatin1Char('/') + QLatin1String(name);
}

QString examplesDir()
{
    return QStringLiteral(OVRA_EXAMPLES_DIR);
}

// A copy of the example work and a settings file of the benchmark's own, so that no user
// setting and no earlier session changes what starts.
struct Work
{
    QTemporaryDir directory;
    QString root;

    Work()
    {
        root = directory.filePath(QStringLiteral("sample"));
        QProcess copy;
        copy.start(QStringLiteral("cp"), {QStringLiteral("-R"), examplesDir() + QStringLiteral("/sample"), root});
        if (!copy.waitForFinished() || copy.exitCode() != 0)
            qFatal("can't copy the example work");
    }
};

Work &work()
{
    static Work instance;
    return instance;
}

// Runs a program that writes to its standard output once its window has been painted:
// the time until then is the iteration's, its end is not timed. Gives what it wrote, or
// ends the benchmark if it failed.
QByteArray run(benchmark::State &state, const QString &path, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::SeparateChannels);
    QElapsedTimer clock;
    clock.start();
    process.start(path, arguments);
    while (process.bytesAvailable() == 0 && process.state() != QProcess::NotRunning)
        process.waitForReadyRead(60000);
    state.SetIterationTime(clock.nsecsElapsed() / 1e9);
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        qFatal("%s failed: %s", qPrintable(path), process.readAllStandardError().constData());
    return process.readAllStandardOutput();
}

void bareWindow(benchmark::State &state)
{
    for (auto _ : state)
        run(state, program("ovra-bare-window"), {});
}

QStringList studioArguments()
{
    const QString settings = work().directory.filePath(QStringLiteral("studio.ini"));
    QFile::remove(settings);
    return {QStringLiteral("--settings"), settings, QStringLiteral("--startup-time"), work().root,
            work().root + QStringLiteral("/knight/knight.def")};
}

void studioStartup(benchmark::State &state)
{
    QByteArray phases;
    for (auto _ : state)
        phases = run(state, program("ovra-studio"), studioArguments());
    // What the program says its time went to, from the last run.
    std::fprintf(stderr, "%s", phases.constData());
}

} // namespace

BENCHMARK(bareWindow)->Unit(benchmark::kMillisecond)->UseManualTime()->MinTime(2.0);
BENCHMARK(studioStartup)->Unit(benchmark::kMillisecond)->UseManualTime()->MinTime(2.0);

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QCoreApplication app(argc, argv);
    work();
    RatioReporter reporter;
    reporter.addRatio("studioStartup/min_time:2.000/manual_time", "bareWindow/min_time:2.000/manual_time");
    return runWithRatios(argc, argv, reporter);
}
