#include "editors/animation/animimportdlg.h"

#include "project/propertyitem.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace Ovra {

AnimImportDlg::AnimImportDlg(const QList<const PropertyItem *> &items, QWidget *parent)
    : QDialog(parent)
    , m_list(new QListWidget(this))
{
    setObjectName(QStringLiteral("anim_import"));
    setWindowTitle(tr("Import sprites"));
    m_list->setObjectName(QStringLiteral("items"));
    const QString identifier = QStringLiteral("Identifier");
    for (const PropertyItem *item : items) {
        const QString text = item ? item->property(identifier).toString() : QString();
        auto *row = new QListWidgetItem(text, m_list);
        row->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable | Qt::ItemIsSelectable);
        row->setCheckState(Qt::Checked);
    }

    auto *selectAllButton = new QPushButton(tr("Select all"), this);
    auto *invertButton = new QPushButton(tr("Invert selection"), this);
    auto *clearButton = new QPushButton(tr("Clear selection"), this);
    for (QPushButton *button : {selectAllButton, invertButton, clearButton})
        button->setAutoDefault(false);
    connect(selectAllButton, &QPushButton::clicked, this, &AnimImportDlg::selectAll);
    connect(invertButton, &QPushButton::clicked, this, &AnimImportDlg::invertSelection);
    connect(clearButton, &QPushButton::clicked, this, &AnimImportDlg::clearSelection);
    auto *selection = new QHBoxLayout;
    selection->addWidget(selectAllButton);
    selection->addWidget(invertButton);
    selection->addWidget(clearButton);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_list);
    layout->addLayout(selection);
    layout->addWidget(buttons);
}

AnimImportDlg::~AnimImportDlg() = default;

int AnimImportDlg::count() const
{
    return m_list->count();
}

bool AnimImportDlg::isChecked(int row) const
{
    const QListWidgetItem *item = m_list->item(row);
    return item && item->checkState() == Qt::Checked;
}

void AnimImportDlg::setChecked(int row, bool checked)
{
    if (QListWidgetItem *item = m_list->item(row))
        item->setCheckState(checked ? Qt::Checked : Qt::Unchecked);
}

QList<int> AnimImportDlg::checkedRows() const
{
    QList<int> rows;
    for (int row = 0; row < m_list->count(); ++row) {
        if (isChecked(row))
            rows.append(row);
    }
    return rows;
}

void AnimImportDlg::selectAll()
{
    for (int row = 0; row < m_list->count(); ++row)
        setChecked(row, true);
}

void AnimImportDlg::invertSelection()
{
    for (int row = 0; row < m_list->count(); ++row)
        setChecked(row, !isChecked(row));
}

void AnimImportDlg::clearSelection()
{
    for (int row = 0; row < m_list->count(); ++row)
        setChecked(row, false);
}

} // namespace Ovra
