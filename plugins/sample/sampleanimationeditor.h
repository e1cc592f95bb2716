#pragma once

// The sample engine's animation editor: the library's editor on the engine's canvas, over
// the animation files of the engine (SampleAnimations), with a lane of the frames of the
// current animation in the time line.
#include "editors/animation/animationeditor.h"
#include "editors/animation/animationeditorextension.h"

#include <memory>

class SampleCanvas;

class SampleAnimationEditor : public Ovra::AnimationEditor
{
    Q_OBJECT
public:
    SampleAnimationEditor(Ovra::CodeWorkspace *codeWorkspace, Ovra::GraphicsWorkspace *graphicsWorkspace,
                          Ovra::ThumbnailsEditor *thumbnails);
    ~SampleAnimationEditor() override;

    // The project's animation file (Project::Animations).
    int fileType() const override;
    SampleCanvas *canvas() const { return m_canvas; }

protected:
    Ovra::Sprites *spritesOf(Ovra::Animations *animations) const override;
    void frameChanged() override;
    void onionFrameChanged() override;
    void animationChanged(bool time) override;
    int optimizeAnimations(Ovra::Animations *animations) override;

private:
    using Info = Ovra::GraphicsRenderer::SpriteProvider::Info;
    // The canvas and the sprite's place exist before the base, which connects to both.
    SampleAnimationEditor(Ovra::CodeWorkspace *codeWorkspace, Ovra::GraphicsWorkspace *graphicsWorkspace,
                          Ovra::ThumbnailsEditor *thumbnails, SampleCanvas *canvas, Info *sprite);

    SampleCanvas *m_canvas;
    // A copy of the place of the frame's sprite: the canvas's own list is rebuilt with
    // every frame shown, and the base keeps a reference to this one.
    std::unique_ptr<Info> m_sprite;
};

class SampleAnimationEditorExtension : public Ovra::AnimationEditorExtension
{
public:
    // The engine's name, from an array of its own: the extension manager tells a second
    // registration of one extension from another by the pointer of its name.
    const char *name() const override;
    Ovra::AnimationEditor *create(Ovra::CodeWorkspace *codeWorkspace, Ovra::GraphicsWorkspace *graphicsWorkspace,
                                  Ovra::ThumbnailsEditor *thumbnails) override;
};
