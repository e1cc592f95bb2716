#pragma once
#include "editors/editor.h"
#include "project/projectfile.h"
#include <QList>
#include <QMap>

class QImage;

namespace Ovra {

class GraphicsWorkspace;
class ImageCanvas;
class ImageRenderer;
class ImageTool;
class Palette;
class PaletteEditor;
class RegExp;
class Sprite;
class SpriteEditorPrivate;
class Sprites;
class ThumbnailsEditor;

// The editor of the sprites of a sprite file: the current sprite on a layered canvas
// with the painting tools, in the graphics workspace, with the palette editor and the
// sprite explorer beside it. It adds, deletes, imports, exports and edits sprites, and
// saves what was painted back into the engine's sprite file. The file type is the
// engine's; the host names it when it builds the editor.
class OVRA_EXPORT SpriteEditor : public FileEditor
{
    Q_OBJECT
public:
    SpriteEditor(GraphicsWorkspace *workspace, PaletteEditor *palettes, ThumbnailsEditor *thumbnails,
                 int fileType);
    ~SpriteEditor() override;

    QAction *action() const override;
    const char *name() const override; // "sprites"
    QWidget *widget() override;
    int fileType() const override;
    QList<QWidget *> areas() const;
    void activate() override;
    void deactivate() override;
    void reconfig() override;
    void retranslate() override;
    void engineSwitched(bool hasEngine) override;
    void projectSwitched(Project *project) override;
    void saveState() override;
    void restoreState() override;
    void setCurrentFile(ProjectFile *file) override;
    bool isModified() const override;
    bool canDiscard(const ProjectFile *file) override;
    void save() override;
    void copy() override;
    void cut() override;
    void paste() override;
    void undo() override;
    void redo() override;
    // `line` is the row of the sprite to show.
    void navigateTo(uint line, uint column) override;
    bool find(const RegExp &expression, uint flags);
    void replace(const QList<ProjectFile::SearchResult> &results, const QString &text);

    Sprites *sprites() const;
    Sprite *currentSprite() const;
    int currentIndex() const;
    // Shows the sprite of that row (after asking about changes to the one shown); false
    // when the user keeps the one shown or there is no such sprite.
    bool setCurrentSprite(int index);
    PaletteEditor *palettesEditor() const;
    ThumbnailsEditor *thumbnails() const;
    ImageCanvas *canvas() const;
    ImageRenderer *renderer() const;
    // The tools in the order of the tool bar, and the one in use.
    QList<ImageTool *> tools() const;
    ImageTool *currentTool() const;
    void setCurrentTool(ImageTool *tool);

    // The layers merged into the current sprite (Sprite::setImage).
    void setSpriteImage(const QImage &image);
    // The current sprite shown anew from the file; changes on the canvas go.
    void refreshSprite();
    // Shows the canvas with another palette of the file (null: the sprite's own).
    void switchPalette(Palette *palette);
    // Shows or hides the sprite explorer in the host's side place.
    void switchExtraEditor(bool shown);
    // The canvas on the back end of the options, in the graphics workspace.
    void setRenderer();
    // Takes a remap table for the pixels of the current sprite (the palette editor's
    // remap tool): the remap pen paints through it.
    void setRemap(const QMap<uint, uint> &remap);
    void crop();
    void resize();
    // True when nothing is changed on the canvas or the user agrees to lose it.
    bool canDiscardChanges();
    bool canEditFileType() const;
    bool canChangeFieldValue() const;

signals:
    void spriteChanged(Ovra::Sprite *sprite);
    void spriteCountChanged();
    // The editor's states, which enable its actions.
    void noFile(bool none);
    void enabled(bool enabled);

private:
    friend class SpriteEditorPrivate;
    SpriteEditorPrivate *const d;
};

} // namespace Ovra
