#include "editors/graphics/exaxisdlg.h"

#include "editors/graphics/graphicsworkspace.h"

#include <QFormLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QSpinBox>

namespace Ovra {

namespace {

// Far beyond any game screen, yet small enough that a cross there still maps to the view
// without overflow at the largest zoom.
const int AxisLimit = 9999;

QSpinBox *axisBox(QWidget *parent, const char *name)
{
    auto *box = new QSpinBox(parent);
    box->setObjectName(QLatin1String(name));
    box->setRange(-AxisLimit, AxisLimit);
    box->setAccelerated(true);
    return box;
}

} // namespace

ExAxisDlg::ExAxisDlg(GraphicsWorkspace *workspace, QWidget *parent)
    : QDialog(parent)
    , m_workspace(workspace)
    , m_x(axisBox(this, "x"))
    , m_y(axisBox(this, "y"))
    , m_xLabel(new QLabel(this))
    , m_yLabel(new QLabel(this))
{
    setObjectName(QStringLiteral("ExAxisDlg"));
    auto *form = new QFormLayout(this);
    form->addRow(m_xLabel, m_x);
    form->addRow(m_yLabel, m_y);
    m_xLabel->setBuddy(m_x);
    m_yLabel->setBuddy(m_y);
    if (workspace)
        setAxis(workspace->extraAxis());
    connect(m_x, QOverload<int>::of(&QSpinBox::valueChanged), this, &ExAxisDlg::valueChanged);
    connect(m_y, QOverload<int>::of(&QSpinBox::valueChanged), this, &ExAxisDlg::valueChanged);
    retranslate();
}

ExAxisDlg::~ExAxisDlg() = default;

QPoint ExAxisDlg::axis() const
{
    return QPoint(m_x->value(), m_y->value());
}

void ExAxisDlg::setAxis(QPoint axis)
{
    const QSignalBlocker blockX(m_x);
    const QSignalBlocker blockY(m_y);
    m_x->setValue(axis.x());
    m_y->setValue(axis.y());
}

void ExAxisDlg::retranslate()
{
    setWindowTitle(tr("Extra cross"));
    m_xLabel->setText(tr("&X:"));
    m_yLabel->setText(tr("&Y:"));
}

void ExAxisDlg::valueChanged()
{
    if (m_workspace)
        m_workspace->setExtraAxis(axis());
}

} // namespace Ovra
