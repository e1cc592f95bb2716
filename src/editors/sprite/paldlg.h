#pragma once
#include "editors/sprite/sprimport.h"

namespace Ovra {

// The colours of pictures or palette files coming in: which of them, what happens to
// their colours, the palette of the file that the two adapting modes use, and whether a
// palette's entries come in reversed.
class OVRA_EXPORT PalDlg : public ProjImportDlg
{
    Q_OBJECT
public:
    PalDlg(const QStringList &files, const QStringList &palettes, QWidget *parent = nullptr);
    ~PalDlg() override;

    Sprite::PaletteMode mode() const;
    void setMode(Sprite::PaletteMode mode);
    int palette() const;
    void setPalette(int row);
    bool isReversed() const;
    void setReversed(bool reversed);
    PaletteModeFields *modeFields() const { return m_mode; }
    QCheckBox *reversedBox() const { return m_reversed; }

private:
    PaletteModeFields *m_mode;
    QCheckBox *m_reversed;
};

} // namespace Ovra
