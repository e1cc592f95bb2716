#pragma once

// What the studio's window tests share: the build and source trees, a studio made of a
// settings file, a host and the window as the program makes them, and the ways a person
// answers file dialogs and finds rows in the views.
#include "mainwindow.h"
#include "studiohost.h"

#include "scriptedanswerer.h"

#include <QModelIndex>
#include <QSettings>
#include <QString>
#include <QTemporaryDir>

#include <functional>
#include <memory>

class QAbstractItemModel;
class QAction;
class QTreeView;
class QWidget;

namespace StudioTest {

// The build tree (programs, plug-ins, the engines' data) and the source tree.
QString buildDir();
QString sourceDir();
QString pluginDir();

// The program's parts over one settings file, made and ended in the program's order.
struct Studio
{
    explicit Studio(const QString &settingsFile, Ovra::ProjectLocator *locator);
    ~Studio();

    std::unique_ptr<QSettings> settings;
    std::unique_ptr<StudioHost> host;
    std::unique_ptr<MainWindow> window;
};

// A copy of the example work in a folder of its own, opened in a studio whose window is
// shown as a person would have it, with nobody answering questions unless a test says so.
struct ExampleWork
{
    // False (with the test failed) when the copy, the window or the work can't be had.
    bool open();
    void close();
    // The work as the next session finds it on disk: the studio ended and made anew.
    bool reopen();

    std::unique_ptr<QTemporaryDir> dir;
    QString work;
    std::unique_ptr<Ovra::ProjectLocator> locator;
    std::unique_ptr<Studio> studio;
    std::unique_ptr<ScriptedAnswerer> nobody;
};

// The first row of the model, at any depth, whose text is `text`.
QModelIndex findRow(const QAbstractItemModel *model, const QString &text, const QModelIndex &parent = QModelIndex());
// A double click on the row, where the view shows it.
bool doubleClickRow(QTreeView *view, const QModelIndex &index);
// Clicks the action's button in the window's tool bar of that name.
bool clickToolButton(MainWindow *window, const char *bar, const char *action);
// Triggers the action of that name from the window's menu of that name, as a choice in
// the open menu does.
bool chooseFromMenu(MainWindow *window, const char *menu, const char *action);

} // namespace StudioTest
