// The reference of the studio's start-up: a Qt Widgets program that shows an empty main
// window of the studio's size and ends as soon as it has been painted.
#include <QApplication>
#include <QEvent>
#include <QMainWindow>
#include <QTimer>

#include <cstdio>

namespace {

// Ends the program once the window's first paint is done.
class FirstPaint : public QObject
{
public:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && !m_seen) {
            m_seen = true;
            std::fputs("painted\n", stdout);
            std::fflush(stdout);
            QTimer::singleShot(0, qApp, &QCoreApplication::quit);
        }
        return QObject::eventFilter(watched, event);
    }

private:
    bool m_seen = false;
};

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QMainWindow window;
    window.resize(1280, 800);
    FirstPaint watcher;
    window.installEventFilter(&watcher);
    window.show();
    return app.exec();
}
