#include "graphicseditors.h"

#include "codeeditors.h"
#include "studiohost.h"

#include "editors/animation/animationeditor.h"
#include "editors/animation/animationeditorextension.h"
#include "editors/graphics/emulatoreditor.h"
#include "editors/graphics/graphicsworkspace.h"
#include "editors/organizer/organizereditor.h"
#include "editors/organizer/thumbnailseditor.h"
#include "editors/palette/paletteeditor.h"
#include "editors/sprite/spriteeditor.h"
#include "engine/engine.h"
#include "engine/extension.h"
#include "engine/extensionmanager.h"
#include "project/project.h"

#include <QAction>

using namespace Ovra;

GraphicsEditors::GraphicsEditors(StudioHost *host, CodeEditors *codeEditors, QWidget *parent)
    : m_host(host)
    , m_codeEditors(codeEditors)
    , m_workspace(new GraphicsWorkspace(host, parent))
    , m_organizer(new OrganizerEditor)
    , m_explorer(new ThumbnailsEditor)
    , m_emulator(new EmulatorEditor(m_workspace))
    , m_palettes(new PaletteEditor)
    , m_sprites(new SpriteEditor(m_workspace, m_palettes, m_explorer, Project::Sprites))
{
    // The organizer is the host's first extra editor and the explorer its second: the
    // editors find them by kind, the window gives each a place of its own.
    host->addExtraEditor(m_organizer);
    host->addExtraEditor(m_explorer);
    host->addExtraEditor(m_palettes);
    host->addEditor(m_sprites);
    // The emulator's view comes up by its action, which stays off until the engine brings
    // an emulator.
    if (QAction *action = m_emulator->action())
        connect(action, &QAction::triggered, m_emulator, [this] { m_host->activateEditor(m_emulator); });
}

GraphicsEditors::~GraphicsEditors()
{
    if (m_current)
        m_host->removeEditor(m_current);
    qDeleteAll(m_editors);
    m_host->removeEditor(m_sprites);
    delete m_sprites;
    delete m_palettes;
    delete m_emulator;
    delete m_explorer;
    delete m_organizer;
}

AnimationEditorExtension *GraphicsEditors::extensionFor(Engine *engine) const
{
    if (!engine)
        return nullptr;
    // The engine's plug-in names its animation editor after itself.
    QByteArray name;
    for (Extension *extension : ExtensionManager::list(Extension::Named)) {
        auto *engineExtension = dynamic_cast<EngineExtension *>(extension);
        if (engineExtension && engineExtension->engine() == engine) {
            name = engineExtension->name();
            break;
        }
    }
    if (name.isEmpty())
        return nullptr;
    for (Extension *extension : ExtensionManager::list(Extension::Named)) {
        auto *editorExtension = dynamic_cast<AnimationEditorExtension *>(extension);
        if (editorExtension && name == editorExtension->name())
            return editorExtension;
    }
    return nullptr;
}

void GraphicsEditors::engineChanged(Engine *engine)
{
    m_emulator->setEmulator(engine ? engine->emulator() : nullptr);
    AnimationEditorExtension *extension = extensionFor(engine);
    AnimationEditor *next = nullptr;
    if (extension) {
        next = m_editors.value(extension);
        if (!next) {
            next = extension->create(m_codeEditors->workspace(), m_workspace, m_explorer);
            m_editors.insert(extension, next);
        }
    }
    if (next == m_current)
        return;
    StudioCodeEditor *text = m_codeEditors->editor(CodeEditors::Animations);
    if (m_current)
        m_host->removeEditor(m_current);
    m_current = next;
    if (m_current) {
        m_host->removeEditor(text);
        m_host->addEditor(m_current);
    } else {
        m_host->addEditor(text);
    }
}
