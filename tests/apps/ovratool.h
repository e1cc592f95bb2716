#pragma once

// The built tool run as a program in a test's directory, and what the tests look at
// afterwards: its exit code and words, and the files it was given.
#include "testfiles.h"

#include <QMap>
#include <QProcess>

struct ToolRun
{
    int code = -1; // -1: it didn't end by itself, or crashed
    QString out;
    QString err;
};

inline QStringList lines(const QString &text)
{
    return text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

// A command line written as one string: "image scale in.png out.png --factor 2".
inline QStringList words(const char *text)
{
    return QString::fromUtf8(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

// Runs the tool in `directory` with the sample engine's plug-in (given before a "--",
// which leaves the rest to a script). The engines keep their settings in
// `directory`/config, apart from the user's. `extra` settings ("NAME=value") come last.
inline ToolRun runOvra(const QString &directory, QStringList arguments, const QStringList &extra = {})
{
    const int scriptPart = arguments.indexOf(QStringLiteral("--"));
    const QStringList plugins{QStringLiteral("--plugins"), QStringLiteral(OVRA_PLUGIN_DIR)};
    for (int i = 0; i < plugins.size(); ++i)
        arguments.insert(scriptPart < 0 ? arguments.size() : scriptPart + i, plugins.at(i));
    QProcess process;
    process.setWorkingDirectory(directory);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), directory + QStringLiteral("/config"));
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    // The test sound device: nothing reaches a speaker, the clock runs all the same.
    environment.insert(QStringLiteral("ALSOFT_DRIVERS"), QStringLiteral("null"));
    for (const QString &setting : extra)
        environment.insert(setting.section(QLatin1Char('='), 0, 0), setting.section(QLatin1Char('='), 1));
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(OVRA_TOOL), arguments);
    process.closeWriteChannel();
    ToolRun run;
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit) {
        process.kill();
        process.waitForFinished();
        return run;
    }
    run.code = process.exitCode();
    run.out = QString::fromUtf8(process.readAllStandardOutput());
    // Qt's own notes about the environment are not the tool's words.
    for (const QString &line : lines(QString::fromUtf8(process.readAllStandardError()))) {
        if (!line.startsWith(QLatin1String("QStandardPaths:")))
            run.err += line + QLatin1Char('\n');
    }
    return run;
}

// The example work copied to `target`.
inline bool copyWork(const QString &target)
{
    return copyTree(QStringLiteral(OVRA_EXAMPLES_DIR "/sample"), target);
}

// Every file below `root`, but the engines' settings, with its bytes.
inline QMap<QString, QByteArray> snapshot(const QString &root)
{
    QMap<QString, QByteArray> files;
    QDirIterator it(root, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString name = QDir(root).relativeFilePath(it.next());
        if (!name.startsWith(QLatin1String("config/")))
            files.insert(name, readFile(it.filePath()));
    }
    return files;
}
