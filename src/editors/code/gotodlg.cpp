#include "editors/code/gotodlg.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QSpinBox>

#include <limits>

namespace Ovra {

GoToDlg::GoToDlg(int line, QWidget *parent)
    : QDialog(parent)
    , m_line(new QSpinBox(this))
{
    setObjectName(QStringLiteral("code_goto"));
    setWindowTitle(tr("Go to line..."));
    m_line->setObjectName(QStringLiteral("line"));
    m_line->setRange(1, std::numeric_limits<int>::max());
    setLine(line);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *layout = new QFormLayout(this);
    layout->addRow(tr("Line:"), m_line);
    layout->addRow(buttons);
    m_line->selectAll();
    m_line->setFocus();
}

GoToDlg::~GoToDlg() = default;

int GoToDlg::line() const
{
    return m_line->value();
}

void GoToDlg::setLine(int line)
{
    m_line->setValue(line);
    m_line->selectAll();
}

} // namespace Ovra
