#include "editors/sprite/rotimgdlg.h"

#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>

namespace Ovra {

RotImgDlg::RotImgDlg(QWidget *parent)
    : QDialog(parent)
    , m_angle(new QDoubleSpinBox(this))
{
    setObjectName(QStringLiteral("spr_image_rotate"));
    setWindowTitle(tr("Rotate"));
    m_angle->setObjectName(QStringLiteral("rotate_angle"));
    m_angle->setRange(-360.0, 360.0);
    m_angle->setDecimals(1);
    m_angle->setSuffix(QStringLiteral("\u00b0"));
    auto *form = new QFormLayout(this);
    form->addRow(tr("Angle:"), m_angle);
    auto *box = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(box, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(box, &QDialogButtonBox::rejected, this, &QDialog::reject);
    form->addRow(box);
}

RotImgDlg::~RotImgDlg() = default;

double RotImgDlg::angle() const
{
    return m_angle->value();
}

void RotImgDlg::setAngle(double degrees)
{
    m_angle->setValue(degrees);
}

} // namespace Ovra
