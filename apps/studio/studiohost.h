#pragma once

// The studio's side of the seam: everything the library and the editors ask of the
// program that hosts them. It owns no window; it keeps the settings, the colour scheme,
// the named actions, menus and controls, the job list, the engine and the open projects,
// and it tells the main window through signals what to show.
#include "foundation/interface.h"

#include <QKeySequence>
#include <QList>
#include <QMap>
#include <QObject>
#include <QPointer>

#include <memory>

class QSettings;
class ColorScheme;
class JobList;

class StudioHost : public QObject, public Ovra::Interface
{
    Q_OBJECT
public:
    // The settings stay the caller's and must outlive the host. The host installs itself
    // as the library's interface while it lives.
    explicit StudioHost(QSettings *settings, QObject *parent = nullptr);
    ~StudioHost() override;

    // Translator: the library's own string table.
    QString text(uint id) override;
    QString tip(uint id) override;

    QWidget *mainWidget() override;
    // The user's data (snippets of their own): the application's data folder.
    QString userDataPath() override;
    // Where "engines/<name>/" lies with the engines' completion words and snippets: the
    // folder above the program's, as in the build tree and in an installation.
    QString installPath() override;
    // Where each engine keeps "<name>_config.xml": the settings' own folder.
    QString configPath() override;
    Ovra::ProgressProvider *progressProvider() override;
    Ovra::Engine *engine() override;
    Ovra::Editor *currentEditor() override;
    // The registered file editor whose type is the given one; null when none edits it.
    Ovra::FileEditor *editorForFile(Ovra::ProjectFile *file, int fileType) override;
    uint projectCount() override;
    Ovra::Project *project(uint index) override;
    Ovra::Project *currentProject() override;
    // Lengths of a design at 96 dots an inch, in the main window's logical dots.
    int scaleToDPI(int length) override;
    using Ovra::Interface::scaleToDPI;
    // The studio's icon of that name, else the library's, else an empty icon.
    QIcon icon(const QString &name) override;
    QColor color(const QString &name, const QColor &defaultColor) override;
    QTextCharFormat textFormat(const QString &name, const QTextCharFormat &defaultFormat) override;
    // The program's options, kept in the settings under "options/"; a null value removes
    // the key.
    QVariant option(const QString &name, const QVariant &defaultValue) override;
    void setOption(const QString &name, const QVariant &value) override;
    void setStatusText(int field, const QString &text) override;
    // Kind 0 gives a tool button for the action, announced with controlAdded(). Kind 12
    // gives null, so that the code file editors keep their node trees beside the text.
    QWidget *addControl(const QString &name, const Ovra::ControlSpec &request) override;
    void registerControl(const QString &name, QObject *object) override;
    QObject *control(const QString &name) override;
    // A menu of that name, made on first request and announced with menuCreated().
    QMenu *menu(const QString &name) override;
    // A named action with the translator's text and tip, the icon of its name and the
    // user's shortcut for it. An action of a scope other than "all" also goes into the
    // menu named by its scope word.
    QAction *createAction(Ovra::ActionScope scope, const QString &name, Ovra::Translator *translator,
                          uint textId, bool checkable, QObject *receiver, const char *slot,
                          const char *enablingSignal, bool checked) override;
    QAction *action(const char *name) override;
    // The checkable action that switches to an editor, one of an exclusive group; made once
    // a name.
    QAction *editorAction(const QString &name, Ovra::Translator *translator, uint textId) override;
    Ovra::ExtraEditor *extraEditor(int index) override;
    void projectsRestored() override;
    // Deactivates the editor shown before, activates this one, checks its action and
    // tells the window.
    void activateEditor(Ovra::Editor *editor) override;
    void setExtraEditor(Ovra::ExtraEditor *editor) override;
    void setWorkspace(Ovra::Workspace *workspace) override;

    // --- For the main window and the options dialog.
    QSettings *settings() const;
    ColorScheme *colorScheme() const;
    JobList *jobs() const;

    void setMainWidget(QWidget *widget);
    // Tells every editor whether there is an engine now.
    void setEngine(Ovra::Engine *engine);
    // The open projects, in the order they were opened. Removing the current one makes the
    // first of the others current.
    void addProject(Ovra::Project *project);
    void removeProject(Ovra::Project *project);
    // Tells every editor of the switch.
    void setCurrentProject(Ovra::Project *project);

    // The editors the studio made, asked by editorForFile(); extra editors by index. An
    // editor's action activates it.
    void addEditor(Ovra::FileEditor *editor);
    void removeEditor(Ovra::FileEditor *editor);
    QList<Ovra::FileEditor *> editors() const;
    void addExtraEditor(Ovra::ExtraEditor *editor);

    // Every action made so far, of createAction() and editorAction(), and the ones the
    // window adds of its own with addAction(): the list the shortcut editor shows.
    QList<QAction *> actions() const;
    // Makes a window action known by its object name, with the user's shortcut over
    // `defaultShortcut`.
    void addAction(QAction *action, const QKeySequence &defaultShortcut = QKeySequence());
    // The shortcut an action had before the user changed it.
    QKeySequence defaultShortcut(const QString &name) const;
    // Sets and keeps the user's shortcut; an empty sequence removes it (the action then has
    // none), and resetShortcut() brings the default back.
    void setShortcut(const QString &name, const QKeySequence &shortcut);
    void resetShortcut(const QString &name);

    // Hands the scheme's syntax formats to the parsers (open documents are highlighted
    // anew when they changed) and tells every editor that the settings changed.
    void reconfigure();

    QString statusText(int field) const;

signals:
    void workspaceRequested(Ovra::Workspace *workspace);
    void extraEditorRequested(Ovra::ExtraEditor *editor);
    void editorActivated(Ovra::Editor *editor);
    void statusTextChanged(int field, const QString &text);
    void menuCreated(const QString &name, QMenu *menu);
    void controlAdded(const QString &name, QWidget *control);
    void currentProjectChanged(Ovra::Project *project);
    // Before the editors hear of it, so that the window can put the engine's own editors
    // in place.
    void engineChanged(Ovra::Engine *engine);
    void projectsChanged();
    void restored();
    void reconfigured();

private:
    // A named action of the host with the translator's text and tip and its icon.
    QAction *newAction(const QString &name, Ovra::Translator *translator, uint textId);
    void rehighlightDocuments();

    struct Private;
    std::unique_ptr<Private> d;
};
