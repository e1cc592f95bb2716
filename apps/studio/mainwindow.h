#pragma once

// The studio's main window: the code workspace in the centre, the project tree, the
// messages, the side editor and the script output in docks, and the menus that lead
// through opening, saving and closing a work. The host (settings, actions, the open
// projects) and the plug-in locator stay the caller's and must outlive the window.
#include <QMainWindow>
#include <QString>
#include <QStringList>

#include <memory>

class QCloseEvent;
class QDockWidget;
class QPlainTextEdit;
class QStackedWidget;
class QTreeView;
class CodeEditors;
class GraphicsEditors;
class SoundEditors;
class StudioHost;

namespace Ovra {
class FileEditor;
class Project;
class ProjectFile;
class ProjectLocator;
}

class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    MainWindow(StudioHost *host, Ovra::ProjectLocator *locator, QWidget *parent = nullptr);
    ~MainWindow() override;

    StudioHost *host() const;
    CodeEditors *codeEditors() const;
    GraphicsEditors *graphicsEditors() const;
    SoundEditors *soundEditors() const;
    Ovra::Project *project() const;

    // Opens a work folder or a project file, after the work that is open has been closed.
    // A path that leads to no project is told to the user and changes nothing.
    bool openWork(const QString &path);
    // Shows a file of the open project in its editor: an absolute name, or one relative
    // to the work's root. False, told to the user, for a file the project doesn't hold.
    bool openFile(const QString &path);
    // Shows a file of the open project in the editor of its type.
    bool showFile(Ovra::ProjectFile *file);
    // Asks about every changed file; false when the user keeps the work open.
    bool closeWork();
    // Runs a Lua script on the open project; its output goes to the script output dock.
    bool runScript(const QString &fileName);

    // The work and the files of the last session, unless nothing was open then.
    bool restoreSession();
    void saveSession();
    // Tells the user when the plug-ins brought no engine, so that no work can be opened.
    void reportEngines();

    QStringList recentWorks() const;
    // The files shown since the work was opened, the one shown now last.
    QStringList openFiles() const;

    QStackedWidget *centre() const;
    QTreeView *projectTree() const;
    QTreeView *messageView() const;
    QPlainTextEdit *scriptOutput() const;
    QDockWidget *dock(const QString &name) const;

public slots:
    void openDialog();
    void save();
    void saveAll();
    void saveAs();
    void backup();
    void restoreBackup();
    void closeWorkAction();
    void findAndReplace();
    void runScriptDialog();
    void showOptions();
    void about();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    friend struct MainWindowPrivate;
    std::unique_ptr<struct MainWindowPrivate> d;
};
