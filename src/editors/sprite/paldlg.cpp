#include "editors/sprite/paldlg.h"

#include <QCheckBox>
#include <QGridLayout>

namespace Ovra {

PalDlg::PalDlg(const QStringList &files, const QStringList &palettes, QWidget *parent)
    : ProjImportDlg(files, parent)
    , m_mode(new PaletteModeFields(fields(), 0, palettes, this))
    , m_reversed(new QCheckBox(tr("Reversed"), this))
{
    setObjectName(QStringLiteral("pal_dlg"));
    setWindowTitle(tr("Palette"));
    m_reversed->setObjectName(QStringLiteral("palette_reversed"));
    // Beside the palette box, on its row.
    fields()->addWidget(m_reversed, 1, 2);
}

PalDlg::~PalDlg() = default;

Sprite::PaletteMode PalDlg::mode() const
{
    return m_mode->mode();
}

void PalDlg::setMode(Sprite::PaletteMode mode)
{
    m_mode->setMode(mode);
}

int PalDlg::palette() const
{
    return m_mode->palette();
}

void PalDlg::setPalette(int row)
{
    m_mode->setPalette(row);
}

bool PalDlg::isReversed() const
{
    return m_reversed->isChecked();
}

void PalDlg::setReversed(bool reversed)
{
    m_reversed->setChecked(reversed);
}

} // namespace Ovra
