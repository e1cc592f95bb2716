#pragma once

#include "foundation/interface.h"

#include <QIcon>
#include <QMap>
#include <QStringList>
#include <QVariant>

// A host for tests: options in a map, icons that carry their name, and a record of
// what the library asked for. Installs itself while it lives.
class TestInterface : public Ovra::Interface
{
public:
    TestInterface();
    ~TestInterface() override;

    QString text(uint id) override;

    QWidget *mainWidget() override { return nullptr; }
    QString userDataPath() override { return userData; }
    QString installPath() override { return install; }
    QString configPath() override { return config; }
    Ovra::ProgressProvider *progressProvider() override { return nullptr; }
    Ovra::Engine *engine() override { return nullptr; }
    Ovra::Editor *currentEditor() override { return nullptr; }
    Ovra::FileEditor *editorForFile(Ovra::ProjectFile *, int) override { return nullptr; }
    uint projectCount() override { return 0; }
    Ovra::Project *project(uint) override { return nullptr; }
    Ovra::Project *currentProject() override { return nullptr; }
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
    QMenu *menu(const QString &) override { return nullptr; }
    QAction *createAction(Ovra::ActionScope, const QString &, Ovra::Translator *, uint, bool,
                          QObject *, const char *, const char *, bool) override
    {
        return nullptr;
    }
    QAction *action(const char *) override { return nullptr; }
    QAction *editorAction(const QString &, Ovra::Translator *, uint) override { return nullptr; }
    Ovra::ExtraEditor *extraEditor(int) override { return nullptr; }
    void projectsRestored() override { ++projectsRestoredCalls; }
    void activateEditor(Ovra::Editor *) override {}
    void setExtraEditor(Ovra::ExtraEditor *) override {}
    void setWorkspace(Ovra::Workspace *) override {}

    // The name an icon of icon() was made for.
    QString iconName(const QIcon &icon) const;

    QMap<QString, QVariant> options;
    QStringList optionWrites;
    QList<QPair<QString, QVariant>> controlRequests; // name, and the kind-0 action pointer
    QMap<QString, QObject *> controls;
    QMap<int, QString> statusTexts;
    QStringList iconRequests;
    int projectsRestoredCalls = 0;
    int scaleNumerator = 1;
    int scaleDenominator = 1;
    QString userData, install, config;

private:
    Ovra::Interface *m_previous;
    QMap<qint64, QString> m_iconNames;
};
