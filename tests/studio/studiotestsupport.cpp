#include "studiotestsupport.h"

#include "engine/projectlocator.h"
#include "testfiles.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>
#include <QTreeView>
#include <QtTest>

namespace StudioTest {

QString buildDir()
{
    return QDir::cleanPath(QCoreApplication::applicationDirPath() + QStringLiteral("/.."));
}

QString sourceDir()
{
    return QDir::cleanPath(QStringLiteral(TESTDATADIR "/../../.."));
}

QString pluginDir()
{
    return buildDir() + QStringLiteral("/lib/plugins");
}

bool ExampleWork::open()
{
    dir = std::make_unique<QTemporaryDir>();
    work = dir->filePath(QStringLiteral("work"));
    if (!dir->isValid() || !copyTree(sourceDir() + QStringLiteral("/examples/sample"), work))
        return false;
    nobody = std::make_unique<ScriptedAnswerer>();
    locator = std::make_unique<Ovra::ProjectLocator>(pluginDir());
    studio = std::make_unique<Studio>(dir->filePath(QStringLiteral("studio.ini")), locator.get());
    studio->window->resize(1400, 860);
    studio->window->show();
    return QTest::qWaitForWindowExposed(studio->window.get()) && studio->window->openWork(work);
}

void ExampleWork::close()
{
    studio.reset();
    locator.reset();
    nobody.reset();
    dir.reset();
}

bool ExampleWork::reopen()
{
    studio.reset();
    studio = std::make_unique<Studio>(dir->filePath(QStringLiteral("again.ini")), locator.get());
    return studio->window->openWork(work) && studio->host->projectCount() > 0;
}

Studio::Studio(const QString &settingsFile, Ovra::ProjectLocator *locator)
    : settings(std::make_unique<QSettings>(settingsFile, QSettings::IniFormat))
    , host(std::make_unique<StudioHost>(settings.get()))
    , window(std::make_unique<MainWindow>(host.get(), locator))
{
}

Studio::~Studio()
{
    window.reset();
    host.reset();
    settings.reset();
}

QModelIndex findRow(const QAbstractItemModel *model, const QString &text, const QModelIndex &parent)
{
    for (int row = 0; model && row < model->rowCount(parent); ++row) {
        const QModelIndex index = model->index(row, 0, parent);
        if (index.data().toString() == text)
            return index;
        const QModelIndex below = findRow(model, text, index);
        if (below.isValid())
            return below;
    }
    return QModelIndex();
}

bool doubleClickRow(QTreeView *view, const QModelIndex &index)
{
    if (!index.isValid())
        return false;
    view->scrollTo(index);
    const QRect rect = view->visualRect(index);
    if (!rect.isValid())
        return false;
    // A press and release first, as a real double click comes, then the second press.
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, rect.center());
    QTest::mouseDClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, rect.center());
    return true;
}

bool clickToolButton(MainWindow *window, const char *bar, const char *name)
{
    auto *toolBar = window->findChild<QToolBar *>(QString::fromLatin1(bar));
    QAction *action = window->host()->action(name);
    QWidget *button = toolBar && action ? toolBar->widgetForAction(action) : nullptr;
    if (!button || !button->isVisible())
        return false;
    QTest::mouseClick(button, Qt::LeftButton);
    return true;
}

bool chooseFromMenu(MainWindow *window, const char *menuName, const char *name)
{
    // The window's own menus are its children; the editors' menus sit in its menu bar.
    auto *menu = window->findChild<QMenu *>(QString::fromLatin1(menuName));
    for (QAction *entry : window->menuBar()->actions()) {
        if (!menu && entry->menu() && entry->menu()->objectName() == QLatin1String(menuName))
            menu = entry->menu();
    }
    if (!menu)
        return false;
    for (QAction *action : menu->actions()) {
        if (action->objectName() == QLatin1String(name)) {
            if (!action->isEnabled())
                return false;
            action->trigger();
            return true;
        }
    }
    return false;
}

} // namespace StudioTest
