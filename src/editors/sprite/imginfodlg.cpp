#include "editors/sprite/imginfodlg.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QSpinBox>

namespace Ovra {

namespace {

// Sprites are held to 16-bit sides by the files that keep them.
const int LargestSide = 65535;

QSpinBox *sideBox(QWidget *parent, const char *name, int value)
{
    auto *box = new QSpinBox(parent);
    box->setObjectName(QString::fromLatin1(name));
    box->setRange(1, LargestSide);
    box->setValue(qBound(1, value, LargestSide));
    return box;
}

} // namespace

ImgInfoDlg::ImgInfoDlg(int format, const QSize &size, QWidget *parent)
    : QDialog(parent)
    , m_format(new QComboBox(this))
    , m_width(sideBox(this, "image_width", size.width()))
    , m_height(sideBox(this, "image_height", size.height()))
{
    setObjectName(QStringLiteral("spr_image_properties"));
    setWindowTitle(tr("Properties"));
    m_format->setObjectName(QStringLiteral("image_format"));
    // Row 0 indexed, row 1 true colour: the canvas's own numbers.
    m_format->addItem(tr("RGBA (indexed color)"));
    m_format->addItem(tr("RGBA"));
    m_format->setCurrentIndex(format == 0 ? 0 : 1);
    auto *form = new QFormLayout(this);
    form->addRow(tr("Format:"), m_format);
    form->addRow(tr("Width:"), m_width);
    form->addRow(tr("Height:"), m_height);
    auto *box = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(box, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(box, &QDialogButtonBox::rejected, this, &QDialog::reject);
    form->addRow(box);
}

ImgInfoDlg::~ImgInfoDlg() = default;

int ImgInfoDlg::format() const
{
    return m_format->currentIndex();
}

QSize ImgInfoDlg::imageSize() const
{
    return QSize(m_width->value(), m_height->value());
}

} // namespace Ovra
