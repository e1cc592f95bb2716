#include "editors/palette/paletteremapwidget.h"

#include "image/paletteobject.h"

#include <QHeaderView>
#include <QPainter>
#include <QTableWidget>
#include <QVBoxLayout>

namespace Ovra {
namespace {

QIcon swatch(const PaletteObject *palette, uint index)
{
    QPixmap pixmap(14, 14);
    pixmap.fill(Qt::transparent);
    if (palette) {
        const RGBA entry = palette->at(uchar(index));
        QPainter painter(&pixmap);
        painter.fillRect(pixmap.rect(), QColor(entry.red, entry.green, entry.blue));
        painter.setPen(Qt::black);
        painter.drawRect(pixmap.rect().adjusted(0, 0, -1, -1));
    }
    return QIcon(pixmap);
}

} // namespace

PaletteRemapWidget::PaletteRemapWidget(QWidget *parent)
    : QWidget(parent)
    , m_view(new QTableWidget(0, 2, this))
{
    setObjectName(QStringLiteral("pal_remap_table"));
    m_view->setObjectName(QStringLiteral("pal_remap_view"));
    m_view->setHorizontalHeaderLabels({tr("Source"), tr("Target")});
    m_view->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    m_view->verticalHeader()->hide();
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_view->setSelectionBehavior(QAbstractItemView::SelectRows);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_view);
}

void PaletteRemapWidget::setPaletteObject(PaletteObject *palette)
{
    m_palette = palette;
    refill();
}

void PaletteRemapWidget::setTable(const QMap<uint, uint> &table)
{
    QMap<uint, uint> held;
    for (auto it = table.cbegin(); it != table.cend(); ++it) {
        if (it.key() < 256 && it.value() < 256)
            held.insert(it.key(), it.value());
    }
    if (held == m_table)
        return;
    m_table = held;
    refill();
    emit changed();
}

void PaletteRemapWidget::setPair(uint source, uint target)
{
    if (source > 255 || target > 255 || m_table.value(source, 256) == target)
        return;
    m_table.insert(source, target);
    refill();
    emit changed();
}

void PaletteRemapWidget::removeSelected()
{
    QList<uint> gone;
    const QList<QTableWidgetItem *> items = m_view->selectedItems();
    for (const QTableWidgetItem *item : items) {
        const uint source = m_view->item(item->row(), 0)->data(Qt::UserRole).toUInt();
        if (!gone.contains(source))
            gone.append(source);
    }
    if (gone.isEmpty())
        return;
    for (uint source : qAsConst(gone))
        m_table.remove(source);
    refill();
    emit changed();
}

void PaletteRemapWidget::clear()
{
    if (m_table.isEmpty())
        return;
    m_table.clear();
    refill();
    emit changed();
}

void PaletteRemapWidget::refill()
{
    m_view->setRowCount(m_table.size());
    int row = 0;
    for (auto it = m_table.cbegin(); it != m_table.cend(); ++it, ++row) {
        auto *source = new QTableWidgetItem(swatch(m_palette, it.key()), QString::number(it.key()));
        source->setData(Qt::UserRole, it.key());
        m_view->setItem(row, 0, source);
        m_view->setItem(row, 1, new QTableWidgetItem(swatch(m_palette, it.value()), QString::number(it.value())));
    }
}

} // namespace Ovra
