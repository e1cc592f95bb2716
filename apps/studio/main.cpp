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
    // The canvases of the graphics views share their textures across OpenGL contexts,
    // which Qt only allows when asked before the application exists.
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QApplication application(argc, argv);
    return runStudio(application, line, clock);
}
