#pragma once

// The file editors that show their files in the one code workspace: the project file,
// the definitions, the animations' text and the scripts. They differ only in the file
// type they take and in the action that brings them up.
#include "editors/code/codefileeditor.h"

#include <QString>

#include <memory>
#include <vector>

namespace Ovra {
class CodeWorkspace;
class Translator;
}

class StudioHost;

class StudioCodeEditor : public Ovra::CodeFileEditor
{
    Q_OBJECT
public:
    StudioCodeEditor(Ovra::CodeWorkspace *workspace, const char *name, int fileType, const QString &actionName,
                     Ovra::Translator *translator, uint textId);

    QAction *action() const override;
    int fileType() const override;

private:
    const int m_fileType;
    const QString m_actionName;
    Ovra::Translator *const m_translator;
    const uint m_textId;
};

// The code editors of the studio, made over one workspace and registered with the host.
class CodeEditors
{
public:
    // The file types the code editors take.
    enum FileType { ProjectFile = 0, Animations = 3, Scripts = 4, Definitions = 5 };

    // Makes the editors and the workspace, a child of `parent`, and registers them.
    CodeEditors(StudioHost *host, QWidget *parent);
    ~CodeEditors();

    Ovra::CodeWorkspace *workspace() const { return m_workspace; }
    const std::vector<std::unique_ptr<StudioCodeEditor>> &editors() const { return m_editors; }
    StudioCodeEditor *editor(int fileType) const;

private:
    StudioHost *m_host;
    Ovra::CodeWorkspace *m_workspace;
    std::vector<std::unique_ptr<StudioCodeEditor>> m_editors;
};
