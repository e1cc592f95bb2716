#pragma once
#include "editors/extraeditor.h"
#include <QList>

class QAction;

namespace Ovra {

class Sprite;
class Sprites;
class ThumbnailsEditorPrivate;

// The "Sprite explorer": the sprites of a file as small pictures, from which the user
// picks some for the editor beside it (whose four actions it shows), or saves them as
// picture files.
class OVRA_EXPORT ThumbnailsEditor : public ExtraEditor
{
    Q_OBJECT
public:
    ThumbnailsEditor();
    ~ThumbnailsEditor() override;

    QWidget *widget() override;
    void activate() override;
    void deactivate() override;
    void reconfig() override;
    void retranslate() override;
    void release() override;

    // The sprites shown, and the four actions of the editor beside it ("thumb_action1"
    // to "thumb_action4" show them); `actions` may be null, or hold nulls.
    void setFiles(Sprites *sprites, QAction **actions);
    Sprites *files() const;
    // In the order of the list.
    QList<Sprite *> selected() const;
    QList<Sprite *> all() const;
    // Draws the thumbnails again (after a change of the sprites' pixels).
    void update();

public slots:
    // The sprites of the file were replaced, added or removed.
    void filesChanged(Ovra::Sprites *sprites);
    // Before the first file of a save and after each; setting `cancel` stops the save.
    virtual void onSaveProgress(uint current, uint maximum, bool *cancel);

private:
    friend class ThumbnailsEditorPrivate;
    ThumbnailsEditorPrivate *const d;
};

} // namespace Ovra
