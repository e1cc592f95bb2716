#pragma once
#include "foundation/global.h"
#include <QDialog>
#include <QSize>

class QComboBox;
class QSpinBox;

namespace Ovra {

// The properties of the picture on the canvas: its format (0 indexed, 1 true colour)
// and its size, both open to change.
class OVRA_EXPORT ImgInfoDlg : public QDialog
{
    Q_OBJECT
public:
    ImgInfoDlg(int format, const QSize &size, QWidget *parent = nullptr);
    ~ImgInfoDlg() override;

    int format() const;
    QSize imageSize() const;
    QComboBox *formatBox() const { return m_format; }
    QSpinBox *widthBox() const { return m_width; }
    QSpinBox *heightBox() const { return m_height; }

private:
    QComboBox *m_format;
    QSpinBox *m_width;
    QSpinBox *m_height;
};

} // namespace Ovra
