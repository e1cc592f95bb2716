#pragma once
#include "foundation/global.h"

#include <QDialog>

class QCheckBox;
class QTableWidget;

namespace Ovra {

// Asks, before palettes are added from files, the identifier each one gets in the file
// and whether the colours of the files stand in reversed order.
class OVRA_EXPORT PalAddDlg : public QDialog
{
    Q_OBJECT
public:
    // One row for each file, its identifier field filled with the default of that row.
    PalAddDlg(QWidget *parent, const QStringList &files, const QStringList &identifiers);

    QStringList identifiers() const;
    void setIdentifier(int row, const QString &identifier);
    bool isReversed() const;
    void setReversed(bool reversed);
    QTableWidget *table() const { return m_table; }

private:
    QTableWidget *m_table;
    QCheckBox *m_reversed;
};

} // namespace Ovra
