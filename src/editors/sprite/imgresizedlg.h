#pragma once
#include "foundation/global.h"
#include "image/imagescaling.h"
#include <QDialog>
#include <QSize>

class QComboBox;
class QSpinBox;

namespace Ovra {

// The new size of the picture and the filter that scales it there.
class OVRA_EXPORT ImgResizeDlg : public QDialog
{
    Q_OBJECT
public:
    explicit ImgResizeDlg(const QSize &size, QWidget *parent = nullptr);
    ~ImgResizeDlg() override;

    QSize imageSize() const;
    ImageResizeFilter filter() const;
    QSpinBox *widthBox() const { return m_width; }
    QSpinBox *heightBox() const { return m_height; }
    QComboBox *filterBox() const { return m_filter; }

private:
    QSpinBox *m_width;
    QSpinBox *m_height;
    QComboBox *m_filter;
};

} // namespace Ovra
