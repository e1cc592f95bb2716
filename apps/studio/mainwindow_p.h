#pragma once

// The main window's parts, shared by the files that build its menus, its docks and its
// File road.
#include "mainwindow.h"

#include "codeeditors.h"
#include "graphicseditors.h"
#include "soundeditors.h"

#include <QList>
#include <QPointer>

class QAction;
class QLabel;
class QMenu;
class QToolBar;

namespace Ovra {
class Editor;
class ExtraEditor;
class Workspace;
}

struct MainWindowPrivate
{
    explicit MainWindowPrivate(MainWindow *window) : q(window) {}

    MainWindow *const q;
    StudioHost *host = nullptr;
    Ovra::ProjectLocator *locator = nullptr;
    std::unique_ptr<CodeEditors> codeEditors;
    std::unique_ptr<GraphicsEditors> graphicsEditors;
    std::unique_ptr<SoundEditors> soundEditors;
    Ovra::Project *project = nullptr;
    QStringList openFiles;

    QStackedWidget *centre = nullptr;
    QLabel *emptyPage = nullptr;
    QLabel *statusFields[4] = {nullptr, nullptr, nullptr, nullptr};
    QToolBar *fileBar = nullptr;
    QToolBar *controlBar = nullptr;
    QMenu *fileMenu = nullptr;
    QMenu *recentMenu = nullptr;
    QMenu *editMenu = nullptr;
    QMenu *viewMenu = nullptr;
    QMenu *toolsMenu = nullptr;
    QMenu *helpMenu = nullptr;
    QMenu *workspaceMenu = nullptr;
    QMenu *toolBarMenu = nullptr;
    QMenu *dockMenu = nullptr;
    QAction *hostMenusBefore = nullptr;

    QDockWidget *projectDock = nullptr;
    QDockWidget *messagesDock = nullptr;
    QDockWidget *sideDock = nullptr;
    QDockWidget *explorerDock = nullptr;
    QDockWidget *palettesDock = nullptr;
    QDockWidget *outputDock = nullptr;
    QTreeView *tree = nullptr;
    QTreeView *messages = nullptr;
    QPlainTextEdit *output = nullptr;
    QLabel *noSideEditor = nullptr;

    // mainwindow.cpp
    QAction *makeAction(const char *name, const QString &text, const QKeySequence &shortcut,
                        void (MainWindow::*slot)());
    void createMenus();
    void createEditMenu();
    void createViewMenu();
    void createStatusBar();
    void connectHost();
    void showWorkspace(Ovra::Workspace *workspace);
    void applyViewOptions();
    void addHostMenu(const QString &name, QMenu *menu);
    Ovra::FileEditor *currentFileEditor() const;
    void updateTitle();

    // mainwindowdocks.cpp
    void createDocks();
    // The sprite explorer's and the palette editor's docks, beside the editors that use them.
    void createGraphicsDocks();
    void setTreeModels();
    void treeActivated(const QModelIndex &index);
    // Makes the file's row the tree's current one, in view.
    void showInTree(Ovra::ProjectFile *file);
    void messageActivated(const QModelIndex &index);
    void showExtraEditor(Ovra::ExtraEditor *editor);
    // The sprite explorer stands beside the editors that take sprites from it.
    void placeExplorer(Ovra::Editor *active);
    void appendOutput(const QString &text);

    // mainwindowfile.cpp
    void updateRecentMenu();
    void addRecent(const QString &path);
    void forgetFile(Ovra::ProjectFile *file);
    void switchProject(Ovra::Project *project);
    Ovra::ProjectFile *fileOf(const QString &path) const;
    QString workName() const;
};
