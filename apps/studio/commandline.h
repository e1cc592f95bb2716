#pragma once

// The studio's command line, and the program's run over it:
//     ovra-studio [WORK|PROJECT] [FILE...] [--plugins DIR] [--settings FILE] [--screenshot FILE]
//                 [--startup-time]
#include <QString>
#include <QStringList>

class QApplication;
class QImage;
class QWidget;
class QElapsedTimer;

struct CommandLine
{
    QString work;
    QStringList files;
    QString plugins;
    QString settings;
    QString screenshot;
    bool startupTime = false;

    // Reads the arguments (the program's name first). False when the program ends here:
    // --help and --version with their text in `output` and code 0, a wrong argument with
    // the reason in `output` and code 2.
    bool parse(const QStringList &arguments, QString *output, int *exitCode);
};

// Sets the application's names and reads the command line, before there is a window
// system. False when the program ends here, with its exit code; the texts are written.
bool readCommandLine(int &argc, char **argv, CommandLine &line, int *exitCode);

// Runs the window over the command line; returns the program's exit code. The clock
// started with main().
// What the window shows, its OpenGL views included.
QImage windowPicture(QWidget *window);

int runStudio(QApplication &application, const CommandLine &line, const QElapsedTimer &clock);
