#pragma once

// The studio's command line, and the program's run over it:
//     ovra-studio [WORK|PROJECT] [FILE...] [--plugins DIR] [--settings FILE] [--screenshot FILE]
#include <QString>
#include <QStringList>

class QApplication;

struct CommandLine
{
    QString work;
    QStringList files;
    QString plugins;
    QString settings;
    QString screenshot;

    // Reads the arguments (the program's name first). False when the program ends here:
    // --help and --version with their text in `output` and code 0, a wrong argument with
    // the reason in `output` and code 2.
    bool parse(const QStringList &arguments, QString *output, int *exitCode);
};

// Sets the application's names, reads the command line and runs the window; returns the
// program's exit code.
int runStudio(QApplication &application);
