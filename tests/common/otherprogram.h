#pragma once

// Other programs that read and write the files we exchange with them (flac, oggenc,
// oggdec, sox: scripts/setup installs them). One that isn't installed fails the test that
// asks for it, with the reason in `err`.
#include <QProcess>
#include <QStandardPaths>

struct ProgramRun
{
    int code = -1; // -1: missing, not finished or crashed
    QByteArray out;
    QByteArray err;
};

inline ProgramRun runProgram(const QString &name, const QStringList &arguments, const QString &directory = QString())
{
    const QString program = QStandardPaths::findExecutable(name);
    if (program.isEmpty())
        return {-1, {}, name.toUtf8() + " is not installed; scripts/setup installs it"};
    QProcess process;
    process.setWorkingDirectory(directory);
    process.start(program, arguments);
    process.closeWriteChannel();
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit) {
        process.kill();
        process.waitForFinished();
        return {-1, {}, name.toUtf8() + " did not finish"};
    }
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}
