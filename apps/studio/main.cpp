#include "commandline.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    return runStudio(application);
}
