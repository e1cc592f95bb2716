#include "codeeditors.h"

#include "studiohost.h"
#include "studiotexts.h"

#include "editors/code/codeworkspace.h"
#include "foundation/translator.h"

#include <QAction>

using namespace Ovra;

StudioCodeEditor::StudioCodeEditor(CodeWorkspace *workspace, const char *name, int fileType,
                                   const QString &actionName, Translator *translator, uint textId)
    : CodeFileEditor(workspace, name)
    , m_fileType(fileType)
    , m_actionName(actionName)
    , m_translator(translator)
    , m_textId(textId)
{
}

QAction *StudioCodeEditor::action() const
{
    // The host makes the action once a name and hands the same one back after.
    return m_interface ? m_interface->editorAction(m_actionName, m_translator, m_textId) : nullptr;
}

int StudioCodeEditor::fileType() const
{
    return m_fileType;
}

CodeEditors::CodeEditors(StudioHost *host, QWidget *parent)
    : m_host(host)
    , m_workspace(new CodeWorkspace(host, parent))
{
    struct Kind
    {
        const char *name;
        int type;
        const char *action;
        Translator *translator;
        uint textId;
    };
    const Kind kinds[] = {
        {"project", ProjectFile, "editor_project", StudioTexts::instance(), StudioTexts::ProjectFiles},
        {"code", Definitions, "editor_code", ovraTranslator(), 17},
        {"animations", Animations, "editor_anim", ovraTranslator(), 51},
        {"scripts", Scripts, "editor_script", StudioTexts::instance(), StudioTexts::ScriptFiles},
    };
    for (const Kind &kind : kinds) {
        auto editor = std::make_unique<StudioCodeEditor>(m_workspace, kind.name, kind.type,
                                                         QString::fromLatin1(kind.action), kind.translator, kind.textId);
        host->addEditor(editor.get());
        m_editors.push_back(std::move(editor));
    }
}

CodeEditors::~CodeEditors()
{
    for (const auto &editor : m_editors)
        m_host->removeEditor(editor.get());
}

StudioCodeEditor *CodeEditors::editor(int fileType) const
{
    for (const auto &editor : m_editors) {
        if (editor->fileType() == fileType)
            return editor.get();
    }
    return nullptr;
}
