#include "foundation/itemsdialog.h"

#include <QAbstractItemModel>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace Ovra {

ItemsDialog::ItemsDialog(QWidget *parent, const QString &name, const QString &title,
                         QAbstractItemModel *model, int column)
    : QDialog(parent)
    , m_label(new QLabel(this))
    , m_list(new QListWidget(this))
{
    setObjectName(name);
    setWindowTitle(title);
    m_label->hide();

    // A snapshot of the rows: the choice refers to the model as it was when the dialog opened.
    if (model) {
        for (int row = 0; row < model->rowCount(); ++row) {
            const QModelIndex index = model->index(row, column);
            auto *item = new QListWidgetItem(index.data(Qt::DisplayRole).toString(), m_list);
            item->setIcon(index.data(Qt::DecorationRole).value<QIcon>());
            item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable | Qt::ItemIsSelectable);
            item->setCheckState(Qt::Unchecked);
        }
    }

    auto *selectAllButton = new QPushButton(tr("Select all"), this);
    auto *invertButton = new QPushButton(tr("Invert selection"), this);
    auto *clearButton = new QPushButton(tr("Clear selection"), this);
    connect(selectAllButton, &QPushButton::clicked, this, &ItemsDialog::selectAll);
    connect(invertButton, &QPushButton::clicked, this, &ItemsDialog::invertSelection);
    connect(clearButton, &QPushButton::clicked, this, &ItemsDialog::clearSelection);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *selection = new QHBoxLayout;
    selection->addWidget(selectAllButton);
    selection->addWidget(invertButton);
    selection->addWidget(clearButton);
    selection->addStretch();

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_label);
    layout->addWidget(m_list);
    layout->addLayout(selection);
    layout->addWidget(buttons);
}

void ItemsDialog::setLabel(const QString &text)
{
    m_label->setText(text);
    m_label->setVisible(!text.isEmpty());
}

int ItemsDialog::count() const
{
    return m_list->count();
}

void ItemsDialog::setChecked(int row, bool checked)
{
    if (QListWidgetItem *item = m_list->item(row))
        item->setCheckState(checked ? Qt::Checked : Qt::Unchecked);
}

bool ItemsDialog::isChecked(int row) const
{
    const QListWidgetItem *item = m_list->item(row);
    return item && item->checkState() == Qt::Checked;
}

QList<int> ItemsDialog::checkedRows() const
{
    QList<int> rows;
    for (int row = 0; row < m_list->count(); ++row) {
        if (isChecked(row))
            rows.append(row);
    }
    return rows;
}

void ItemsDialog::selectAll()
{
    for (int row = 0; row < m_list->count(); ++row)
        setChecked(row, true);
}

void ItemsDialog::invertSelection()
{
    for (int row = 0; row < m_list->count(); ++row)
        setChecked(row, !isChecked(row));
}

void ItemsDialog::clearSelection()
{
    for (int row = 0; row < m_list->count(); ++row)
        setChecked(row, false);
}

} // namespace Ovra
