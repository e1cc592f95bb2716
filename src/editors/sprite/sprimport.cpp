// The choosers of what an import brings: the ticked list shared by the imports, and the
// colour fields of the sprite imports.
#include "editors/sprite/sprimport.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace Ovra {

ProjImportDlg::ProjImportDlg(const QStringList &items, QWidget *parent)
    : QDialog(parent)
    , m_list(new QListWidget(this))
    , m_fields(new QGridLayout)
{
    setObjectName(QStringLiteral("proj_import"));
    m_list->setObjectName(QStringLiteral("import_list"));
    for (const QString &item : items) {
        auto *line = new QListWidgetItem(item, m_list);
        line->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable | Qt::ItemIsSelectable);
        line->setCheckState(Qt::Checked);
    }
    auto *buttons = new QHBoxLayout;
    const struct
    {
        const char *name;
        QString text;
        void (ProjImportDlg::*slot)();
    } listButtons[] = {{"import_select_all", tr("Select all"), &ProjImportDlg::selectAll},
                       {"import_clear", tr("Clear"), &ProjImportDlg::clearSelection},
                       {"import_invert", tr("Invert selection"), &ProjImportDlg::invertSelection}};
    for (const auto &entry : listButtons) {
        auto *button = new QPushButton(entry.text, this);
        button->setObjectName(QString::fromLatin1(entry.name));
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, entry.slot);
        buttons->addWidget(button);
    }
    auto *box = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(box, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(box, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_list);
    layout->addLayout(buttons);
    layout->addLayout(m_fields);
    layout->addWidget(box);
}

ProjImportDlg::~ProjImportDlg() = default;

int ProjImportDlg::count() const
{
    return m_list->count();
}

bool ProjImportDlg::isChecked(int row) const
{
    const QListWidgetItem *line = m_list->item(row);
    return line && line->checkState() == Qt::Checked;
}

void ProjImportDlg::setChecked(int row, bool checked)
{
    if (QListWidgetItem *line = m_list->item(row))
        line->setCheckState(checked ? Qt::Checked : Qt::Unchecked);
}

QList<int> ProjImportDlg::checkedRows() const
{
    QList<int> rows;
    for (int row = 0; row < count(); ++row) {
        if (isChecked(row))
            rows << row;
    }
    return rows;
}

void ProjImportDlg::selectAll()
{
    for (int row = 0; row < count(); ++row)
        setChecked(row, true);
}

void ProjImportDlg::clearSelection()
{
    for (int row = 0; row < count(); ++row)
        setChecked(row, false);
}

void ProjImportDlg::invertSelection()
{
    for (int row = 0; row < count(); ++row)
        setChecked(row, !isChecked(row));
}

// ---- the colour fields -----------------------------------------------------------------------

PaletteModeFields::PaletteModeFields(QGridLayout *grid, int row, const QStringList &palettes, QWidget *parent)
    : QObject(parent)
    , m_mode(new QComboBox(parent))
    , m_palette(new QComboBox(parent))
{
    m_mode->setObjectName(QStringLiteral("palette_mode"));
    m_palette->setObjectName(QStringLiteral("palette_choice"));
    for (Sprite::PaletteMode mode : {Sprite::Ignore, Sprite::OwnPalette, Sprite::AdaptImage, Sprite::SwapPalette})
        m_mode->addItem(label(mode), int(mode));
    m_mode->setCurrentIndex(int(Sprite::OwnPalette));
    m_palette->addItems(palettes);
    auto *paletteLabel = new QLabel(tr("Palette:"), parent);
    paletteLabel->setBuddy(m_palette);
    grid->addWidget(m_mode, row, 0, 1, 2);
    grid->addWidget(paletteLabel, row + 1, 0);
    grid->addWidget(m_palette, row + 1, 1);
    connect(m_mode, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &PaletteModeFields::updateEnabled);
    updateEnabled();
}

QString PaletteModeFields::label(Sprite::PaletteMode mode)
{
    switch (mode) {
    case Sprite::Ignore:
        return tr("Keep the image and the palettes as they are");
    case Sprite::OwnPalette:
        return tr("Image's palette, if not already added");
    case Sprite::AdaptImage:
        return tr("Force the specified palette (adapt the image)");
    case Sprite::SwapPalette:
        return tr("Exchange with the specified palette");
    }
    return QString();
}

Sprite::PaletteMode PaletteModeFields::mode() const
{
    return Sprite::PaletteMode(m_mode->currentData().toInt());
}

void PaletteModeFields::setMode(Sprite::PaletteMode mode)
{
    m_mode->setCurrentIndex(m_mode->findData(int(mode)));
}

int PaletteModeFields::palette() const
{
    return m_palette->currentIndex();
}

void PaletteModeFields::setPalette(int row)
{
    m_palette->setCurrentIndex(row);
}

// Only the two modes that take a palette of the file need the box; without palettes in
// the file those modes can't be chosen.
void PaletteModeFields::updateEnabled()
{
    const Sprite::PaletteMode chosen = mode();
    m_palette->setEnabled(chosen == Sprite::AdaptImage || chosen == Sprite::SwapPalette);
    if (m_palette->count() == 0 && (chosen == Sprite::AdaptImage || chosen == Sprite::SwapPalette))
        setMode(Sprite::OwnPalette);
}

// ---- the import from another project ----------------------------------------------------------

SprImport::SprImport(const QStringList &sprites, const QStringList &palettes, QWidget *parent)
    : ProjImportDlg(sprites, parent)
    , m_mode(new PaletteModeFields(fields(), 0, palettes, this))
{
    setObjectName(QStringLiteral("spr_import"));
    setWindowTitle(tr("Import sprites"));
}

SprImport::~SprImport() = default;

Sprite::PaletteMode SprImport::mode() const
{
    return m_mode->mode();
}

void SprImport::setMode(Sprite::PaletteMode mode)
{
    m_mode->setMode(mode);
}

int SprImport::palette() const
{
    return m_mode->palette();
}

void SprImport::setPalette(int row)
{
    m_mode->setPalette(row);
}

} // namespace Ovra
