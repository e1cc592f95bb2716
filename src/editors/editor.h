#pragma once

#include "foundation/object.h"

#include <QObject>

class QAction;
class QWidget;

namespace Ovra {

class Interface;
class Project;
class ProjectFile;

// What every editor shares with the host's main window: shown, hidden, activated,
// told of a change of project or engine.
class OVRA_EXPORT Editor : public QObject, public Object
{
    Q_OBJECT

public:
    Editor();
    // The host ends its editors with this, also from inside their own signals.
    void release() override;

    // The action that opens this editor; its text is the label of the file kind.
    virtual QAction *action() const = 0;
    // As in "Open %1...", and the key of the editor's path option ("<name>_path").
    virtual const char *name() const = 0;
    virtual QWidget *widget() = 0;
    virtual void activate();
    virtual void deactivate();
    virtual void retranslate();
    virtual void engineSwitched(bool hasEngine) = 0;
    virtual void projectSwitched(Project *project);
    virtual void reconfig();
    // The editor's state in the host's settings.
    virtual void saveState() = 0;
    virtual void restoreState() = 0;

    bool isActive() const { return m_active; }
    void setVisible(bool visible);
    void setWritable(bool writable);
    // Asks the host to make this the active editor, unless it is.
    void switchToThis();

signals:
    void visible(bool visible);
    void writable(bool writable);

protected:
    Interface *m_interface;

private:
    bool m_active = false;
};

// An editor of one project file at a time, with the road of new, open, save, save as
// and discard.
class OVRA_EXPORT FileEditor : public Editor
{
    Q_OBJECT

public:
    virtual int fileType() const = 0;
    virtual bool isModified() const;
    virtual bool canDiscard(const ProjectFile *file);
    virtual bool canClose(const ProjectFile *file);
    virtual void navigateTo(uint line, uint column);
    virtual void setCurrentFile(ProjectFile *file);
    virtual void create();
    virtual void open();
    virtual void save();
    virtual void saveAs();
    virtual void cut() = 0;
    virtual void copy() = 0;
    virtual void paste() = 0;
    virtual void undo();
    virtual void redo();
    virtual void contentsChanged();

    ProjectFile *currentFile() const { return m_currentFile; }
    // All files of the editor's type in the project (the host's current one for null);
    // every file is asked.
    bool canDiscard(Project *project);

    // Asks for a name and saves the file there; open to other code than editors.
    static void saveFileAs(ProjectFile *file, FileEditor *editor, Interface *interface);

signals:
    void modified();

protected:
    // The patterns of the editor's file type, from the engine of the project.
    QStringList filePatterns() const;
    // The start directory of the file dialogs, and the option that keeps it.
    QString startDirectory() const;
    QString pathOption() const;

    ProjectFile *m_currentFile = nullptr;
};

} // namespace Ovra
