#include "commandline.h"

#include "mainwindow.h"
#include "studiohost.h"

#include "engine/projectlocator.h"
#include "foundation/prompt.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QImage>
#include <QSettings>
#include <QWindow>

#include <cstdio>
#include <memory>

namespace {

QString description()
{
    return QCoreApplication::translate("CommandLine",
                                       "The authoring studio: opens a work folder or a project file, and the files "
                                       "of it given after it (the last one shown). Without a work, the last "
                                       "session comes back.");
}

void write(FILE *stream, const QString &text)
{
    const QByteArray bytes = text.toLocal8Bit();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stream);
    std::fflush(stream);
}

// Waits, without a fixed delay, until the window is on the screen and has painted.
bool waitUntilShown(QWidget *window)
{
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 10000) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        if (window->windowHandle() && window->windowHandle()->isExposed())
            break;
    }
    if (!window->windowHandle() || !window->windowHandle()->isExposed())
        return false;
    // The layouts that the first exposure set off, and the paints they ask for.
    for (int i = 0; i < 10; ++i)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    return true;
}

int takeScreenshot(MainWindow &window, const QString &fileName)
{
    window.setFixedSize(1280, 800);
    window.show();
    if (!waitUntilShown(&window)) {
        write(stderr, QStringLiteral("ovra-studio: the window was never shown, no screenshot taken\n"));
        return 1;
    }
    const QImage image = window.grab().toImage();
    if (image.isNull() || !image.save(fileName, "PNG")) {
        write(stderr, QStringLiteral("ovra-studio: %1: the screenshot could not be written\n").arg(fileName));
        return 1;
    }
    return 0;
}

} // namespace

bool CommandLine::parse(const QStringList &arguments, QString *output, int *exitCode)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(description());
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    const QCommandLineOption pluginsOption(QStringLiteral("plugins"), QCoreApplication::translate("CommandLine", "Load the engines' plug-ins from DIR."), QStringLiteral("DIR"));
    const QCommandLineOption settingsOption(QStringLiteral("settings"), QCoreApplication::translate("CommandLine", "Keep the settings in the INI file FILE instead of the user's."), QStringLiteral("FILE"));
    const QCommandLineOption screenshotOption(QStringLiteral("screenshot"), QCoreApplication::translate("CommandLine", "Open, lay the window out at 1280x800, write a picture of it to FILE (PNG) and exit."), QStringLiteral("FILE"));
    parser.addOptions({pluginsOption, settingsOption, screenshotOption});
    parser.addPositionalArgument(QStringLiteral("WORK"), QCoreApplication::translate("CommandLine", "A work folder or a project file."), QStringLiteral("[WORK|PROJECT]"));
    parser.addPositionalArgument(QStringLiteral("FILE"), QCoreApplication::translate("CommandLine", "Files of the work to open."), QStringLiteral("[FILE...]"));

    if (!parser.parse(arguments)) {
        *output = QStringLiteral("ovra-studio: %1\nTry 'ovra-studio --help'.\n").arg(parser.errorText());
        *exitCode = 2;
        return false;
    }
    if (parser.isSet(help)) {
        *output = parser.helpText();
        *exitCode = 0;
        return false;
    }
    if (parser.isSet(version)) {
        *output = QStringLiteral("%1 %2\n").arg(QCoreApplication::applicationName(), QCoreApplication::applicationVersion());
        *exitCode = 0;
        return false;
    }
    plugins = parser.value(pluginsOption);
    settings = parser.value(settingsOption);
    screenshot = parser.value(screenshotOption);
    const QStringList positional = parser.positionalArguments();
    work = positional.value(0);
    files = positional.mid(1);
    if ((parser.isSet(screenshotOption) && screenshot.isEmpty()) || (parser.isSet(settingsOption) && settings.isEmpty())) {
        *output = QStringLiteral("ovra-studio: --screenshot and --settings need a file name\n");
        *exitCode = 2;
        return false;
    }
    return true;
}

int runStudio(QApplication &application)
{
    QCoreApplication::setOrganizationName(QStringLiteral("ovra"));
    QCoreApplication::setApplicationName(QStringLiteral("ovra-studio"));
    QCoreApplication::setApplicationVersion(QStringLiteral(OVRA_VERSION));

    CommandLine line;
    QString output;
    int exitCode = 0;
    if (!line.parse(QCoreApplication::arguments(), &output, &exitCode)) {
        write(exitCode == 0 ? stdout : stderr, output);
        return exitCode;
    }

    // In a screenshot run nobody answers: a question gets the escape answer, and what it
    // said goes to the error stream.
    Ovra::Answerer previous;
    if (!line.screenshot.isEmpty()) {
        previous = Ovra::setAnswerer([](const Ovra::Prompt &prompt) {
            write(stderr, QStringLiteral("ovra-studio: %1: %2\n").arg(prompt.title, prompt.text));
            return Ovra::escapeAnswer(prompt);
        });
    }

    std::unique_ptr<QSettings> settings = line.settings.isEmpty()
                                              ? std::make_unique<QSettings>(QSettings::IniFormat, QSettings::UserScope,
                                                                            QCoreApplication::organizationName(),
                                                                            QCoreApplication::applicationName())
                                              : std::make_unique<QSettings>(line.settings, QSettings::IniFormat);
    int result = 0;
    {
        StudioHost host(settings.get());
        // The locator before the window: the projects the window opens close before the
        // plug-ins that made them are unloaded.
        Ovra::ProjectLocator locator(line.plugins);
        MainWindow window(&host, &locator);
        window.reportEngines();
        bool opened = true;
        if (!line.work.isEmpty()) {
            opened = window.openWork(line.work);
            for (const QString &file : qAsConst(line.files))
                opened = opened && window.openFile(file);
        } else if (line.screenshot.isEmpty()) {
            window.restoreSession();
        }
        if (!line.screenshot.isEmpty()) {
            result = opened ? takeScreenshot(window, line.screenshot) : 1;
            if (!opened)
                write(stderr, QStringLiteral("ovra-studio: %1 could not be opened, no screenshot taken\n").arg(line.work));
        } else {
            window.show();
            result = application.exec();
        }
    }
    if (!line.screenshot.isEmpty())
        Ovra::setAnswerer(previous);
    return result;
}
