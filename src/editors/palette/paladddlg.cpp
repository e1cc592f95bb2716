#include "editors/palette/paladddlg.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QHeaderView>
#include <QTableWidget>
#include <QVBoxLayout>

namespace Ovra {

PalAddDlg::PalAddDlg(QWidget *parent, const QStringList &files, const QStringList &identifiers)
    : QDialog(parent)
    , m_table(new QTableWidget(files.size(), 2, this))
    , m_reversed(new QCheckBox(tr("Reversed"), this))
{
    setObjectName(QStringLiteral("pal_add"));
    setWindowTitle(tr("Add palettes"));
    m_table->setObjectName(QStringLiteral("pal_add_files"));
    m_reversed->setObjectName(QStringLiteral("pal_add_reversed"));
    m_table->setHorizontalHeaderLabels({tr("File"), tr("Identifier")});
    m_table->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_table->horizontalHeader()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    m_table->verticalHeader()->hide();
    for (int row = 0; row < files.size(); ++row) {
        auto *file = new QTableWidgetItem(QFileInfo(files.at(row)).fileName());
        file->setToolTip(files.at(row));
        file->setFlags(Qt::ItemIsEnabled);
        m_table->setItem(row, 0, file);
        m_table->setItem(row, 1, new QTableWidgetItem(identifiers.value(row)));
    }
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_table, 1);
    layout->addWidget(m_reversed);
    layout->addWidget(buttons);
    resize(420, 120 + 28 * qMin(files.size(), 10));
}

QStringList PalAddDlg::identifiers() const
{
    QStringList texts;
    for (int row = 0; row < m_table->rowCount(); ++row)
        texts << m_table->item(row, 1)->text().trimmed();
    return texts;
}

void PalAddDlg::setIdentifier(int row, const QString &identifier)
{
    if (QTableWidgetItem *item = m_table->item(row, 1))
        item->setText(identifier);
}

bool PalAddDlg::isReversed() const
{
    return m_reversed->isChecked();
}

void PalAddDlg::setReversed(bool reversed)
{
    m_reversed->setChecked(reversed);
}

} // namespace Ovra
