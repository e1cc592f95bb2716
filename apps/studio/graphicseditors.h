#pragma once
// The editors that draw on the graphics workspace, and the side editors beside them: the
// organizer, the sprite explorer, the engine's animation editor, the emulator view, the
// sprite painter with its palette editor.
#include <QHash>
#include <QObject>

namespace Ovra {
class AnimationEditor;
class AnimationEditorExtension;
class EmulatorEditor;
class Engine;
class GraphicsWorkspace;
class OrganizerEditor;
class PaletteEditor;
class SpriteEditor;
class ThumbnailsEditor;
} // namespace Ovra
class CodeEditors;
class StudioHost;

class GraphicsEditors : public QObject
{
    Q_OBJECT
public:
    // Makes the workspace (a child of `parent`) and the side editors, and registers them.
    GraphicsEditors(StudioHost *host, CodeEditors *codeEditors, QWidget *parent);
    ~GraphicsEditors() override;

    Ovra::GraphicsWorkspace *workspace() const { return m_workspace; }
    Ovra::OrganizerEditor *organizer() const { return m_organizer; }
    Ovra::ThumbnailsEditor *explorer() const { return m_explorer; }
    Ovra::EmulatorEditor *emulator() const { return m_emulator; }
    Ovra::PaletteEditor *palettes() const { return m_palettes; }
    Ovra::SpriteEditor *spriteEditor() const { return m_sprites; }
    // The animation editor of the current engine, or null when the engine brings none (its
    // animation files then open as text).
    Ovra::AnimationEditor *animationEditor() const { return m_current; }

    // Puts the engine's animation editor in place of the text editor of animation files,
    // or back; called before the editors hear of the new engine.
    void engineChanged(Ovra::Engine *engine);

private:
    Ovra::AnimationEditorExtension *extensionFor(Ovra::Engine *engine) const;

    StudioHost *m_host;
    CodeEditors *m_codeEditors;
    Ovra::GraphicsWorkspace *m_workspace;
    Ovra::OrganizerEditor *m_organizer;
    Ovra::ThumbnailsEditor *m_explorer;
    Ovra::EmulatorEditor *m_emulator;
    Ovra::PaletteEditor *m_palettes;
    Ovra::SpriteEditor *m_sprites;
    // One editor an engine, made the first time the engine is used.
    QHash<Ovra::AnimationEditorExtension *, Ovra::AnimationEditor *> m_editors;
    Ovra::AnimationEditor *m_current = nullptr;
};
