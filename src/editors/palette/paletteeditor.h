#pragma once
#include "editors/extraeditor.h"
#include "image/imagedata.h"
#include <QMap>

namespace Ovra {

class Palette;
class PaletteEditorPrivate;
class PaletteWidget;
class Palettes;

// The side editor of the sprite painter for the palettes of a sprite file: a selector of
// the palettes, the colours of the current one in a PaletteWidget, and the commands on
// whole palettes (add from files, delete, remove duplicates, change from a file, save,
// remap, apply to sprites). The palettes belong to the sprite editor: each command first
// makes that editor the current one.
class OVRA_EXPORT PaletteEditor : public ExtraEditor
{
    Q_OBJECT
public:
    PaletteEditor();
    ~PaletteEditor() override;

    // The whole editor: the selector, the colours, the commands.
    QWidget *widget() override;
    PaletteWidget *paletteWidget() const;
    QString displayName() const;
    void engineSwitched(bool hasEngine) override;
    void retranslate() override;

    // The palettes shown (null for none); the editor doesn't own them.
    void setPalettes(Palettes *palettes);
    Palettes *palettes() const;
    // Shows a table of colours that belongs to no palette of the file (a picture's own).
    void setPalette(RGBA (&table)[256]);
    void setCurrentPalette(Palette *palette);
    Palette *currentPalette() const;
    // The remap table of the remap tool: source index to target index; empty for none.
    QMap<uint, uint> remapTable() const;

signals:
    void noFile(bool none);
    void enabled(bool enabled);
    void setSelPos(int position);
    void setPosText(const QString &text);
    // The colours of the palette shown changed (an edit, another palette).
    void paletteChanged();
    // The user moved colour `source` to slot `target` of the palette shown.
    void colorMoved(int source, int target);
    // The remap tool's table changed; the sprite editor takes it for the current sprite.
    void remapRequested(const QMap<uint, uint> &remap);

protected:
    // Asks for the identifiers of the palettes of `files` and whether their colours are
    // reversed (PalDlg); false when cancelled.
    virtual bool askIdentifiers(const QStringList &files, QList<QVariant> *identifiers, bool *reversed);
    virtual void remapChanged();

private:
    friend class PaletteEditorPrivate;
    PaletteEditorPrivate *const d;
};

} // namespace Ovra
