#include "editors/palette/remapdlg.h"

#include "editors/palette/paletteremapwidget.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace Ovra {

RemapDlg::RemapDlg(QWidget *parent)
    : QDialog(parent)
    , m_remap(new PaletteRemapWidget(this))
    , m_source(new QSpinBox(this))
    , m_target(new QSpinBox(this))
    , m_add(new QPushButton(this))
    , m_delete(new QPushButton(this))
    , m_clear(new QPushButton(this))
    , m_close(new QPushButton(this))
{
    setObjectName(QStringLiteral("pal_remap"));
    m_source->setObjectName(QStringLiteral("pal_remap_source"));
    m_target->setObjectName(QStringLiteral("pal_remap_target"));
    m_add->setObjectName(QStringLiteral("pal_remap_add"));
    m_delete->setObjectName(QStringLiteral("pal_remap_delete"));
    m_clear->setObjectName(QStringLiteral("pal_remap_clear"));
    m_close->setObjectName(QStringLiteral("pal_remap_close"));
    m_source->setRange(0, 255);
    m_target->setRange(0, 255);
    m_add->setAutoDefault(false);
    m_delete->setAutoDefault(false);
    m_clear->setAutoDefault(false);

    auto *pair = new QHBoxLayout;
    pair->addWidget(m_source, 1);
    pair->addWidget(m_target, 1);
    pair->addWidget(m_add);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_delete);
    buttons->addWidget(m_clear);
    buttons->addStretch();
    buttons->addWidget(m_close);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(pair);
    layout->addWidget(m_remap, 1);
    layout->addLayout(buttons);

    connect(m_add, &QPushButton::clicked, this, &RemapDlg::addPair);
    connect(m_delete, &QPushButton::clicked, m_remap, &PaletteRemapWidget::removeSelected);
    connect(m_clear, &QPushButton::clicked, m_remap, &PaletteRemapWidget::clear);
    connect(m_close, &QPushButton::clicked, this, &QDialog::close);
    retranslate();
}

void RemapDlg::retranslate()
{
    setWindowTitle(tr("Remap"));
    m_source->setPrefix(tr("From "));
    m_target->setPrefix(tr("To "));
    m_add->setText(tr("Add"));
    m_delete->setText(tr("Delete"));
    m_clear->setText(tr("Clear"));
    m_close->setText(tr("Close"));
}

void RemapDlg::setSource(int index)
{
    m_source->setValue(index);
}

void RemapDlg::setTarget(int index)
{
    m_target->setValue(index);
    addPair();
}

void RemapDlg::addPair()
{
    m_remap->setPair(uint(m_source->value()), uint(m_target->value()));
}

} // namespace Ovra
