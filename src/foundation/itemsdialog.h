#pragma once

#include "foundation/global.h"

#include <QDialog>
#include <QList>

class QAbstractItemModel;
class QLabel;
class QListWidget;

namespace Ovra {

// A list of a model's rows with a tick box each, for choosing the animations, sprites
// or palettes an operation applies to. The object name keys its window icon.
class OVRA_EXPORT ItemsDialog : public QDialog
{
    Q_OBJECT
public:
    ItemsDialog(QWidget *parent, const QString &name, const QString &title,
                QAbstractItemModel *model, int column);

    // A line above the list that says what the choice is for.
    void setLabel(const QString &text);
    void setChecked(int row, bool checked);
    bool isChecked(int row) const;
    // The rows ticked, in model order.
    QList<int> checkedRows() const;
    int count() const;

public slots:
    void selectAll();
    void invertSelection();
    void clearSelection();

private:
    QLabel *m_label;
    QListWidget *m_list;
};

} // namespace Ovra
