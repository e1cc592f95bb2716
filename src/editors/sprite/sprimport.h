#pragma once
#include "foundation/global.h"
#include "image/sprite.h"
#include <QDialog>
#include <QList>
#include <QStringList>

class QCheckBox;
class QComboBox;
class QGridLayout;
class QListWidget;
class QVBoxLayout;

namespace Ovra {

// Chooses which of a list of items (the sprites of another project, the pictures of an
// import) go in: a list of ticked lines with "Select all", "Clear" and "Invert selection",
// and room under it for what the derived dialogs ask besides.
class OVRA_EXPORT ProjImportDlg : public QDialog
{
    Q_OBJECT
public:
    explicit ProjImportDlg(const QStringList &items, QWidget *parent = nullptr);
    ~ProjImportDlg() override;

    int count() const;
    bool isChecked(int row) const;
    void setChecked(int row, bool checked);
    // The rows ticked, in list order.
    QList<int> checkedRows() const;
    QListWidget *list() const { return m_list; }

public slots:
    void selectAll();
    void clearSelection();
    void invertSelection();

protected:
    // The grid under the list where the derived dialogs put their fields.
    QGridLayout *fields() const { return m_fields; }

private:
    QListWidget *m_list;
    QGridLayout *m_fields;
};

// The box of what happens to the colours of pictures coming in, and the box of the
// palettes of the file beside "Palette:"; both are given to a grid at a row.
class OVRA_EXPORT PaletteModeFields : public QObject
{
    Q_OBJECT
public:
    PaletteModeFields(QGridLayout *grid, int row, const QStringList &palettes, QWidget *parent);

    Sprite::PaletteMode mode() const;
    void setMode(Sprite::PaletteMode mode);
    // The row of the chosen palette of the file, -1 for none.
    int palette() const;
    void setPalette(int row);
    QComboBox *modeBox() const { return m_mode; }
    QComboBox *paletteBox() const { return m_palette; }
    // The label of a mode in the box.
    static QString label(Sprite::PaletteMode mode);

private:
    void updateEnabled();
    QComboBox *m_mode;
    QComboBox *m_palette;
};

// The import of sprites from another project: which sprites, and what of their colours.
class OVRA_EXPORT SprImport : public ProjImportDlg
{
    Q_OBJECT
public:
    SprImport(const QStringList &sprites, const QStringList &palettes, QWidget *parent = nullptr);
    ~SprImport() override;

    Sprite::PaletteMode mode() const;
    void setMode(Sprite::PaletteMode mode);
    int palette() const;
    void setPalette(int row);
    PaletteModeFields *modeFields() const { return m_mode; }

private:
    PaletteModeFields *m_mode;
};

} // namespace Ovra
