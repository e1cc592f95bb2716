#include "editors/code/snipfielddlg.h"

#include "foundation/prompt.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace Ovra {
namespace {

const QLatin1Char separator('|');

QString cellText(const QTableWidget *table, int row, int column)
{
    const QTableWidgetItem *item = table->item(row, column);
    return item ? item->text() : QString();
}

} // namespace

SnipFieldDlg::SnipFieldDlg(QWidget *parent)
    : QDialog(parent)
    , m_name(new QLineEdit(this))
    , m_title(new QLineEdit(this))
    , m_type(new QComboBox(this))
    , m_items(new QTableWidget(0, 2, this))
    , m_addItem(new QPushButton(tr("Add item"), this))
    , m_removeItem(new QPushButton(tr("Remove item"), this))
{
    setWindowTitle(tr("Snippet field"));
    m_name->setObjectName(QStringLiteral("name"));
    m_title->setObjectName(QStringLiteral("title"));
    m_type->setObjectName(QStringLiteral("type"));
    m_items->setObjectName(QStringLiteral("items"));
    m_addItem->setObjectName(QStringLiteral("addItem"));
    m_removeItem->setObjectName(QStringLiteral("removeItem"));
    m_type->addItems({QStringLiteral("string"), QStringLiteral("int"), QStringLiteral("float"), QStringLiteral("items")});
    m_items->setHorizontalHeaderLabels({tr("Value"), tr("Title")});
    m_items->horizontalHeader()->setStretchLastSection(true);
    m_items->verticalHeader()->hide();

    auto *form = new QFormLayout;
    form->addRow(tr("&Name:"), m_name);
    form->addRow(tr("&Title:"), m_title);
    form->addRow(tr("T&ype:"), m_type);
    auto *itemButtons = new QHBoxLayout;
    itemButtons->addWidget(m_addItem);
    itemButtons->addWidget(m_removeItem);
    itemButtons->addStretch();
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(m_items);
    layout->addLayout(itemButtons);
    layout->addWidget(buttons);

    connect(buttons, &QDialogButtonBox::accepted, this, &SnipFieldDlg::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &SnipFieldDlg::reject);
    connect(m_addItem, &QPushButton::clicked, this, &SnipFieldDlg::addItem);
    connect(m_removeItem, &QPushButton::clicked, this, &SnipFieldDlg::removeItem);
    connect(m_type, &QComboBox::currentTextChanged, this, &SnipFieldDlg::typeChanged);
    typeChanged();
    resize(380, 360);
}

SnipFieldDlg::~SnipFieldDlg() = default;

void SnipFieldDlg::setField(const SnipFieldInfo &field)
{
    m_name->setText(field.name);
    m_title->setText(field.title);
    if (m_type->findText(field.type) < 0)
        m_type->addItem(field.type);
    m_type->setCurrentText(field.type);
    m_column = field.column;
    m_items->setRowCount(0);
    for (int i = 0; i < field.values.size(); ++i) {
        m_items->insertRow(i);
        m_items->setItem(i, 0, new QTableWidgetItem(field.values.at(i)));
        m_items->setItem(i, 1, new QTableWidgetItem(field.valueTitles.value(i)));
    }
}

SnipFieldInfo SnipFieldDlg::field() const
{
    SnipFieldInfo field;
    field.name = m_name->text().trimmed();
    field.title = m_title->text();
    field.type = m_type->currentText();
    field.column = m_column;
    if (field.type == QLatin1String("items")) {
        for (int row = 0; row < m_items->rowCount(); ++row) {
            const QString value = cellText(m_items, row, 0);
            const QString title = cellText(m_items, row, 1);
            if (value.isEmpty() && title.isEmpty())
                continue;
            field.values << value;
            field.valueTitles << (title.isEmpty() ? value : title);
        }
    }
    return field;
}

void SnipFieldDlg::setTakenNames(const QStringList &names)
{
    m_taken = names;
}

QString SnipFieldDlg::problem() const
{
    const SnipFieldInfo info = field();
    if (info.name.isEmpty())
        return tr("The field needs a name.");
    if (m_taken.contains(info.name))
        return tr("There is a field named %1 already.").arg(info.name);
    if (info.type != QLatin1String("items"))
        return QString();
    if (info.values.isEmpty())
        return tr("A field of items needs at least one item.");
    for (int i = 0; i < info.values.size(); ++i) {
        if (info.values.at(i).isEmpty())
            return tr("Every item needs a value.");
        if (info.values.at(i).contains(separator) || info.valueTitles.at(i).contains(separator))
            return tr("Values and titles of items can't hold the character '|'.");
    }
    return QString();
}

void SnipFieldDlg::accept()
{
    const QString text = problem();
    if (!text.isEmpty()) {
        tell(QMessageBox::Warning, windowTitle(), text, this);
        return;
    }
    QDialog::accept();
}

void SnipFieldDlg::addItem()
{
    const int row = m_items->rowCount();
    m_items->insertRow(row);
    m_items->setItem(row, 0, new QTableWidgetItem);
    m_items->setItem(row, 1, new QTableWidgetItem);
    m_items->setCurrentCell(row, 0);
    m_items->editItem(m_items->item(row, 0));
}

void SnipFieldDlg::removeItem()
{
    const int row = m_items->currentRow();
    if (row >= 0)
        m_items->removeRow(row);
}

void SnipFieldDlg::typeChanged()
{
    const bool items = m_type->currentText() == QLatin1String("items");
    m_items->setEnabled(items);
    m_addItem->setEnabled(items);
    m_removeItem->setEnabled(items);
}

} // namespace Ovra
