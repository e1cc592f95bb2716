#include "editors/sprite/imgresizedlg.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QSpinBox>

namespace Ovra {

ImgResizeDlg::ImgResizeDlg(const QSize &size, QWidget *parent)
    : QDialog(parent)
    , m_width(new QSpinBox(this))
    , m_height(new QSpinBox(this))
    , m_filter(new QComboBox(this))
{
    setObjectName(QStringLiteral("spr_image_resize"));
    setWindowTitle(tr("Resize"));
    m_width->setObjectName(QStringLiteral("resize_width"));
    m_height->setObjectName(QStringLiteral("resize_height"));
    m_filter->setObjectName(QStringLiteral("resize_filter"));
    for (QSpinBox *box : {m_width, m_height})
        box->setRange(1, 65535);
    m_width->setValue(qMax(1, size.width()));
    m_height->setValue(qMax(1, size.height()));
    // The rows are the filters' numbers.
    for (int filter = NearestNeighborFilter; filter <= HqBilinearFilter; ++filter) {
        const char *name = imageResizeFilterName(ImageResizeFilter(filter));
        m_filter->addItem(QCoreApplication::translate("Ovra", name), filter);
    }
    auto *form = new QFormLayout(this);
    form->addRow(tr("Width:"), m_width);
    form->addRow(tr("Height:"), m_height);
    form->addRow(tr("Filter:"), m_filter);
    auto *box = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(box, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(box, &QDialogButtonBox::rejected, this, &QDialog::reject);
    form->addRow(box);
}

ImgResizeDlg::~ImgResizeDlg() = default;

QSize ImgResizeDlg::imageSize() const
{
    return QSize(m_width->value(), m_height->value());
}

ImageResizeFilter ImgResizeDlg::filter() const
{
    return ImageResizeFilter(m_filter->currentData().toInt());
}

} // namespace Ovra
