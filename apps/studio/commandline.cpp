#include "commandline.h"

#include "mainwindow.h"
#include "studiohost.h"

#include "engine/projectlocator.h"
#include "foundation/prompt.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QEvent>
#include <QImage>
#include <QOpenGLWidget>
#include <QPainter>
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

} // namespace

QImage windowPicture(QWidget *window)
{
    QImage picture = window->grab().toImage();
    // The OpenGL views draw into buffers of their own, which the grab of the window
    // doesn't read: their pictures go over it where they stand.
    QPainter painter(&picture);
    for (QOpenGLWidget *view : window->findChildren<QOpenGLWidget *>()) {
        if (view->isVisible() && view->isValid())
            painter.drawImage(QRect(view->mapTo(window, QPoint()), view->size()), view->grabFramebuffer());
    }
    return picture;
}

namespace {

int takeScreenshot(MainWindow &window, const QString &fileName)
{
    window.setFixedSize(1280, 800);
    window.show();
    if (!waitUntilShown(&window)) {
        write(stderr, QStringLiteral("ovra-studio: the window was never shown, no screenshot taken\n"));
        return 1;
    }
    const QImage image = windowPicture(&window);
    if (image.isNull() || !image.save(fileName, "PNG")) {
        write(stderr, QStringLiteral("ovra-studio: %1: the screenshot could not be written\n").arg(fileName));
        return 1;
    }
    return 0;
}

// Where the time of a start went, phase by phase, from the start of main().
class StartupPhases
{
public:
    explicit StartupPhases(const QElapsedTimer &clock) : m_clock(clock) { mark("application"); }

    void mark(const char *phase)
    {
        const double now = m_clock.nsecsElapsed() / 1e6;
        m_lines << QStringLiteral("%1 %2 ms\n").arg(QLatin1String(phase), -12).arg(now - m_last, 0, 'f', 1);
        m_last = now;
    }
    QString report() const
    {
        return m_lines.join(QString()) + QStringLiteral("%1 %2 ms\n").arg(QStringLiteral("total"), -12).arg(m_last, 0, 'f', 1);
    }

private:
    const QElapsedTimer &m_clock;
    QStringList m_lines;
    double m_last = 0;
};

// Shows the window until its first paint is done, then reports the phases.
int showOnce(MainWindow &window, StartupPhases &phases)
{
    struct FirstPaint : QObject
    {
        bool painted = false;
        bool eventFilter(QObject *watched, QEvent *event) override
        {
            if (event->type() == QEvent::Paint)
                painted = true;
            return QObject::eventFilter(watched, event);
        }
    } watcher;
    window.installEventFilter(&watcher);
    window.resize(1280, 800);
    window.show();
    QElapsedTimer waited;
    waited.start();
    while (!watcher.painted && waited.elapsed() < 30000)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
    window.removeEventFilter(&watcher);
    if (!watcher.painted) {
        write(stderr, QStringLiteral("ovra-studio: the window was never painted\n"));
        return 1;
    }
    phases.mark("first paint");
    write(stdout, phases.report());
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
    const QCommandLineOption startupOption(QStringLiteral("startup-time"), QCoreApplication::translate("CommandLine", "Open, paint the window once, print what the start-up's time went to (milliseconds since main) and exit."));
    const QCommandLineOption screenshotOption(QStringLiteral("screenshot"), QCoreApplication::translate("CommandLine", "Open, lay the window out at 1280x800, write a picture of it to FILE (PNG) and exit."), QStringLiteral("FILE"));
    parser.addOptions({pluginsOption, settingsOption, screenshotOption, startupOption});
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
    startupTime = parser.isSet(startupOption);
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

bool readCommandLine(int &argc, char **argv, CommandLine &line, int *exitCode)
{
    QCoreApplication::setOrganizationName(QStringLiteral("ovra"));
    QCoreApplication::setApplicationName(QStringLiteral("ovra-studio"));
    QCoreApplication::setApplicationVersion(QStringLiteral(OVRA_VERSION));
    // An application without windows reads it, so that --help, --version and a wrong
    // argument are answered where there is no display.
    QCoreApplication reader(argc, argv);
    QString output;
    if (line.parse(QCoreApplication::arguments(), &output, exitCode))
        return true;
    write(*exitCode == 0 ? stdout : stderr, output);
    return false;
}

int runStudio(QApplication &application, const CommandLine &line, const QElapsedTimer &clock)
{

    // In a screenshot or timing run nobody answers: a question gets the escape answer, and
    // what it said goes to the error stream.
    const bool unattended = !line.screenshot.isEmpty() || line.startupTime;
    Ovra::Answerer previous;
    if (unattended) {
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
        StartupPhases phases(clock);
        StudioHost host(settings.get());
        // The locator before the window: the projects the window opens close before the
        // plug-ins that made them are unloaded.
        Ovra::ProjectLocator locator(line.plugins);
        phases.mark("plug-ins");
        MainWindow window(&host, &locator);
        window.reportEngines();
        phases.mark("window");
        bool opened = true;
        if (!line.work.isEmpty()) {
            opened = window.openWork(line.work);
            for (const QString &file : qAsConst(line.files))
                opened = opened && window.openFile(file);
        } else if (!unattended) {
            window.restoreSession();
        }
        phases.mark("work");
        if (line.startupTime) {
            result = opened ? showOnce(window, phases) : 1;
        } else if (!line.screenshot.isEmpty()) {
            result = opened ? takeScreenshot(window, line.screenshot) : 1;
            if (!opened)
                write(stderr, QStringLiteral("ovra-studio: %1 could not be opened, no screenshot taken\n").arg(line.work));
        } else {
            window.show();
            result = application.exec();
        }
    }
    if (unattended)
        Ovra::setAnswerer(previous);
    return result;
}
