#pragma once
#include "foundation/global.h"

#include <QMap>
#include <QWidget>

class QTableWidget;

namespace Ovra {

class PaletteObject;

// The table of the remap tool: pairs of a source slot and the slot its pixels go to,
// one a row, with the two colours beside the numbers. A source appears once.
class OVRA_EXPORT PaletteRemapWidget : public QWidget
{
    Q_OBJECT
public:
    explicit PaletteRemapWidget(QWidget *parent = nullptr);

    // The colours beside the numbers (null shows numbers only).
    void setPaletteObject(PaletteObject *palette);

    QMap<uint, uint> table() const { return m_table; }
    void setTable(const QMap<uint, uint> &table);
    // Sets or replaces the target of `source`; both lie in 0..255.
    void setPair(uint source, uint target);
    // Removes the rows selected in the table.
    void removeSelected();
    void clear();
    QTableWidget *view() const { return m_view; }

signals:
    void changed();

private:
    void refill();

    QMap<uint, uint> m_table;
    QTableWidget *m_view;
    PaletteObject *m_palette = nullptr;
};

} // namespace Ovra
