#include "commandline.h"

#include <QApplication>
#include <QElapsedTimer>

int main(int argc, char *argv[])
{
    QElapsedTimer clock;
    clock.start();
    CommandLine line;
    int exitCode = 0;
    if (!readCommandLine(argc, argv, line, &exitCode))
        return exitCode;
    QApplication application(argc, argv);
    return runStudio(application, line, clock);
}
