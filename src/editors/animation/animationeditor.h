#pragma once
#include "editors/code/codefileeditor.h"
#include "render/graphicsrenderer.h"

namespace Ovra {

class AnimationCode;
class AnimationEditorPrivate;
class AnimationPlayer;
class Animations;
class FrameCode;
class GraphicsWorkspace;
class Sprites;
class ThumbnailsEditor;
class TimeLineWidget;

// The editor of the animations of a code file, drawn on a graphics canvas with a time
// line for playback, the fields of the current frame, contact box tools, an onion skin
// and batch operations. It edits through the code nodes, so every change lands in the
// text document and its undo stack, and the code view follows. An engine derives from it
// to give the concrete canvas and the sprites of its files.
class OVRA_EXPORT AnimationEditor : public CodeFileEditor
{
    Q_OBJECT
public:
    // `sprite` is the place of the frame's sprite on the canvas, which moves as
    // `spriteItem` when the user drags it.
    AnimationEditor(CodeWorkspace *codeWorkspace, GraphicsWorkspace *graphicsWorkspace, ThumbnailsEditor *thumbnails,
                    GraphicsRenderer *renderer, GraphicsRenderer::SpriteProvider::Info &sprite,
                    GraphicsRenderer::ItemType spriteItem);
    ~AnimationEditor() override;

    QAction *action() const override;
    QWidget *widget() override;
    void activate() override;
    void deactivate() override;
    void retranslate() override;
    void reconfig() override;
    void projectSwitched(Project *project) override;
    void engineSwitched(bool hasEngine) override;
    void saveState() override;
    void restoreState() override;
    void setCurrentFile(ProjectFile *file) override;

    GraphicsWorkspace *graphicsWorkspace() const;
    ThumbnailsEditor *thumbnails() const;
    GraphicsRenderer *renderer() const;
    TimeLineWidget *timeLine() const;
    // The panel of the current frame's fields and the selectors.
    QWidget *panel() const;

    Animations *animations() const;
    Sprites *sprites() const;
    AnimationCode *currentAnimation() const;
    FrameCode *currentFrame() const;
    const AnimationPlayer &player() const;

    // Picks an animation or a frame of the current one as the selectors do.
    void selectAnimation(int index);
    void selectFrame(int index);

    // The code of the file shown in the code workspace instead of the canvas; the fields
    // can't change the code meanwhile.
    void setEditCodeMode(bool on);
    bool isEditCodeMode() const;
    bool canChangeFieldValue() const;

signals:
    // The states of the editor, which enable its actions: no file; a file with
    // animations; a current animation with frames.
    void noFile(bool none);
    void enabled(bool enabled);
    void frameEnabled(bool enabled);

protected:
    // The sprites that the frames of the file show.
    virtual Sprites *spritesOf(Animations *animations) const = 0;

    // Called at each tick with the player's frame and the ticks it has been on before
    // this one; true when the editor drew an in-between picture itself.
    virtual bool interpolateFrames(FrameCode *frame, uint time);
    // The offset of the frame's sprite while an interpolation moves it.
    virtual QPoint offsetToParentFromInterpolation(QPoint offset);
    virtual void itemMoved(GraphicsRenderer::ItemType type, int index, QPoint position);
    virtual void itemReleased(GraphicsRenderer::ItemType type, int index, QPoint position);
    // With `time`, the frames' delays changed and the time line is built anew.
    virtual void animationChanged(bool time);
    // A new current frame (null for none): the derived editor shows its sprite.
    virtual void frameChanged();
    virtual void onionFrameChanged();
    virtual void animationCountChanged();
    virtual void cursorChanged(QPoint position);
    // Cleans the code of the animation file as one undo step, and gives the number of
    // lines that went; -1 when the engine has no such cleaning (the default).
    virtual int optimizeAnimations(Animations *animations);

    // Brackets of a change from the fields: the text change that comes back isn't taken
    // for one from outside.
    void beginChangeFieldValue();
    void endChangeFieldValue();
    // True while no field is writing: the change of the code came from elsewhere.
    bool changeNotFromField() const;

private:
    friend class AnimationEditorPrivate;
    AnimationEditorPrivate *const d;
};

} // namespace Ovra
