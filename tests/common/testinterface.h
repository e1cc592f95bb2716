#pragma once

#include "editors/editor.h"
#include "foundation/interface.h"

#include <QIcon>
#include <QMap>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QVariant>

#include <memory>

// A host for tests: options in a map, icons that carry their name, real actions and
// menus kept by name, and a record of what the library asked for. Installs itself while
// it lives.
class TestInterface : public Ovra::Interface
{
public:
    TestInterface();
    ~TestInterface() override;

    QString text(uint id) override;

    QWidget *mainWidget() override { return main; }
    QString userDataPath() override { return userData; }
    QString installPath() override { return install; }
    QString configPath() override { return config; }
    Ovra::ProgressProvider *progressProvider() override { return nullptr; }
    Ovra::Engine *engine() override { return engineInUse; }
    Ovra::Editor *currentEditor() override { return activeEditor; }
    Ovra::FileEditor *editorForFile(Ovra::ProjectFile *, int) override { return nullptr; }
    uint projectCount() override { return 0; }
    Ovra::Project *project(uint) override { return nullptr; }
    Ovra::Project *currentProject() override { return projectInUse; }
    int scaleToDPI(int length) override { return length * scaleNumerator / scaleDenominator; }
    using Ovra::Interface::scaleToDPI;
    QIcon icon(const QString &name) override;
    QColor color(const QString &name, const QColor &defaultColor) override;
    QTextCharFormat textFormat(const QString &name, const QTextCharFormat &defaultFormat) override;
    QVariant option(const QString &name, const QVariant &defaultValue) override;
    void setOption(const QString &name, const QVariant &value) override;
    void setStatusText(int field, const QString &text) override;
    QWidget *addControl(const QString &name, const Ovra::ControlSpec &request) override;
    void registerControl(const QString &name, QObject *object) override;
    QObject *control(const QString &name) override;
    // A menu of that name, made on first request.
    QMenu *menu(const QString &name) override;
    // A real action: text and tip from the translator, its trigger (or toggle, when it
    // is checkable) connected to the slot, its enabled state to the signal.
    QAction *createAction(Ovra::ActionScope scope, const QString &name, Ovra::Translator *translator,
                          uint textId, bool checkable, QObject *receiver, const char *slot,
                          const char *enablingSignal, bool checked) override;
    QAction *action(const char *name) override;
    QAction *editorAction(const QString &name, Ovra::Translator *translator, uint textId) override;
    Ovra::ExtraEditor *extraEditor(int) override { return nullptr; }
    void projectsRestored() override { ++projectsRestoredCalls; }
    // Records the call and, as a host does, deactivates the editor shown before and
    // activates this one.
    void activateEditor(Ovra::Editor *editor) override;
    void setExtraEditor(Ovra::ExtraEditor *) override {}
    void setWorkspace(Ovra::Workspace *workspace) override { workspaces.append(workspace); }

    // The name an icon of icon() was made for.
    QString iconName(const QIcon &icon) const;

    QMap<QString, QVariant> options;
    QStringList optionWrites;
    // Name, and the kind-0 action or the kind-12 receiver.
    QList<QPair<QString, QVariant>> controlRequests;
    // The slot signature of each kind-12 request, by name.
    QMap<QString, QByteArray> selectorSlots;
    // What addControl gives for a name; null for the others.
    QMap<QString, QWidget *> controlWidgets;
    QMap<QString, QObject *> controls;
    QMap<int, QString> statusTexts;
    QStringList iconRequests;
    int projectsRestoredCalls = 0;
    int scaleNumerator = 1;
    int scaleDenominator = 1;
    QString userData, install, config;
    QWidget *main = nullptr;
    Ovra::Engine *engineInUse = nullptr;
    Ovra::Project *projectInUse = nullptr;
    QPointer<Ovra::Editor> activeEditor;
    QList<Ovra::Editor *> activations;
    QList<Ovra::Workspace *> workspaces;
    // The scope each created action was asked for in, by name.
    QMap<QString, QString> actionScopes;

private:
    Ovra::Interface *m_previous;
    QMap<qint64, QString> m_iconNames;
    // Owns the actions; menus are kept apart, as widgets.
    std::unique_ptr<QObject> m_actionOwner;
    QMap<QString, QPointer<QAction>> m_actions;
    QMap<QString, QMenu *> m_menus;
};
