#pragma once
#include "foundation/global.h"
#include <QDialog>

class QDoubleSpinBox;

namespace Ovra {

// The angle to turn the picture by, in degrees as the user thinks of it.
class OVRA_EXPORT RotImgDlg : public QDialog
{
    Q_OBJECT
public:
    explicit RotImgDlg(QWidget *parent = nullptr);
    ~RotImgDlg() override;

    double angle() const;
    void setAngle(double degrees);
    QDoubleSpinBox *angleBox() const { return m_angle; }

private:
    QDoubleSpinBox *m_angle;
};

} // namespace Ovra
