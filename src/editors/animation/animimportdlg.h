#pragma once

#include "foundation/global.h"

#include <QDialog>
#include <QList>

class QListWidget;

namespace Ovra {

class PropertyItem;

// Chooses, by their "Identifier", which of a list of items (the sprites an import
// brings, say) go in. All are ticked at first.
class OVRA_EXPORT AnimImportDlg : public QDialog
{
    Q_OBJECT
public:
    // Null items are listed as empty lines, so that rows keep matching the list given.
    explicit AnimImportDlg(const QList<const PropertyItem *> &items, QWidget *parent = nullptr);
    ~AnimImportDlg() override;

    int count() const;
    bool isChecked(int row) const;
    void setChecked(int row, bool checked);
    // The rows ticked, in list order.
    QList<int> checkedRows() const;

public slots:
    void selectAll();
    void invertSelection();
    void clearSelection();

private:
    QListWidget *m_list;
};

} // namespace Ovra
