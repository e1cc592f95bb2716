#include "editors/palette/palettewidget.h"

#include "image/paletteobject.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace Ovra {
namespace {

const int Columns = 16;
const int MinimumSide = 10;
const int Gap = 1;

// Transparent entries are drawn over a small check so that their alpha shows.
void paintChecker(QPainter &painter, const QRect &rect)
{
    painter.fillRect(rect, QColor(236, 236, 236));
    const int half = qMax(2, rect.width() / 2);
    painter.fillRect(QRect(rect.topLeft(), QSize(half, half)) & rect, QColor(200, 200, 200));
    painter.fillRect(QRect(rect.topLeft() + QPoint(half, half), QSize(half, half)) & rect, QColor(200, 200, 200));
}

} // namespace

PaletteWidget::PaletteWidget(QWidget *parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("pal_widget"));
    setMouseTracking(false);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

PaletteWidget::~PaletteWidget() = default;

void PaletteWidget::setPaletteObject(PaletteObject *palette)
{
    if (m_palette == palette)
        return;
    if (m_palette)
        disconnect(m_palette, nullptr, this, nullptr);
    m_palette = palette;
    if (palette) {
        connect(palette, &PaletteObject::changed, this, [this] {
            update();
            emit changed();
        });
    }
    update();
    emit changed();
}

PaletteObject *PaletteWidget::paletteObject() const
{
    return m_palette;
}

void PaletteWidget::setColorCount(int count)
{
    count = qBound(0, count, 256);
    if (count == m_count)
        return;
    m_count = count;
    bool dropped = false;
    for (int i = count; i < 256; ++i) {
        dropped = dropped || m_selection[i];
        m_selection[i] = false;
    }
    if (m_current >= count)
        m_current = -1;
    if (m_anchor >= count)
        m_anchor = -1;
    updateGeometry();
    update();
    if (dropped)
        emit selectionChanged();
}

bool PaletteWidget::isSelected(int index) const
{
    return index >= 0 && index < 256 && m_selection[index];
}

void PaletteWidget::setSelected(int index, bool selected)
{
    if (index < 0 || index >= m_count || m_selection[index] == selected)
        return;
    m_selection[index] = selected;
    update(slotRect(index).adjusted(-2, -2, 2, 2));
    emit selectionChanged();
}

void PaletteWidget::selectOnly(int index)
{
    bool touched = false;
    for (int i = 0; i < 256; ++i) {
        const bool wanted = i == index && i < m_count;
        touched = touched || m_selection[i] != wanted;
        m_selection[i] = wanted;
    }
    if (index >= 0 && index < m_count)
        m_current = m_anchor = index;
    if (touched) {
        update();
        emit selectionChanged();
    }
}

void PaletteWidget::clearSelection()
{
    selectOnly(-1);
}

int PaletteWidget::selectedCount() const
{
    return int(std::count(m_selection, m_selection + 256, true));
}

int PaletteWidget::slotSide() const
{
    const int rows = qMax(1, (m_count + Columns - 1) / Columns);
    const int across = (width() - Gap) / Columns - Gap;
    const int down = (height() - Gap) / rows - Gap;
    return qMax(4, qMin(across, down));
}

QPoint PaletteWidget::gridOrigin() const
{
    const int side = slotSide() + Gap;
    const int rows = qMax(1, (m_count + Columns - 1) / Columns);
    return QPoint(qMax(0, (width() - Columns * side - Gap) / 2), qMax(0, (height() - rows * side - Gap) / 2));
}

QRect PaletteWidget::slotRect(int index) const
{
    if (index < 0 || index >= m_count)
        return QRect();
    const int side = slotSide();
    const QPoint origin = gridOrigin();
    return QRect(origin.x() + Gap + (index % Columns) * (side + Gap), origin.y() + Gap + (index / Columns) * (side + Gap),
                 side, side);
}

int PaletteWidget::indexAt(const QPoint &point) const
{
    const int side = slotSide() + Gap;
    const QPoint inside = point - gridOrigin() - QPoint(Gap, Gap);
    if (inside.x() < 0 || inside.y() < 0)
        return -1;
    const int column = inside.x() / side;
    const int row = inside.y() / side;
    const int index = row * Columns + column;
    if (column >= Columns || index >= m_count)
        return -1;
    return index;
}

QSize PaletteWidget::sizeHint() const
{
    const int rows = qMax(1, (m_count + Columns - 1) / Columns);
    return QSize(Columns * (16 + Gap) + Gap, rows * (16 + Gap) + Gap);
}

QSize PaletteWidget::minimumSizeHint() const
{
    const int rows = qMax(1, (m_count + Columns - 1) / Columns);
    return QSize(Columns * (MinimumSide + Gap) + Gap, rows * (MinimumSide + Gap) + Gap);
}

void PaletteWidget::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().window());
    for (int i = 0; i < m_count; ++i) {
        const QRect slot = slotRect(i);
        if (!m_palette) {
            painter.fillRect(slot, palette().mid());
            continue;
        }
        const RGBA entry = m_palette->at(uchar(i));
        if (entry.alpha < 255)
            paintChecker(painter, slot);
        painter.fillRect(slot, QColor(entry.red, entry.green, entry.blue, entry.alpha));
    }
    // Frames go on top so that a neighbour's fill never covers them.
    for (int i = 0; i < m_count; ++i) {
        if (!m_selection[i] && i != m_dropTarget)
            continue;
        const QRect frame = slotRect(i).adjusted(-1, -1, 0, 0);
        painter.setPen(QPen(Qt::white, 1));
        painter.drawRect(frame.adjusted(1, 1, -1, -1));
        painter.setPen(QPen(i == m_dropTarget ? QColor(230, 120, 0) : Qt::black, 1));
        painter.drawRect(frame);
    }
}

void PaletteWidget::clickSlot(int index, Qt::MouseButton button, Qt::KeyboardModifiers modifiers)
{
    if (modifiers & Qt::ShiftModifier) {
        const int from = m_anchor < 0 ? index : qMin(m_anchor, index);
        const int to = m_anchor < 0 ? index : qMax(m_anchor, index);
        if (!(modifiers & Qt::ControlModifier))
            std::fill(m_selection, m_selection + 256, false);
        for (int i = from; i <= to; ++i)
            m_selection[i] = true;
        m_current = index;
        update();
        emit selectionChanged();
        emit multiColorClick(ushort(index), button);
        return;
    }
    if (modifiers & Qt::ControlModifier) {
        m_selection[index] = !m_selection[index];
        m_current = m_anchor = index;
        update();
        emit selectionChanged();
        emit multiColorClick(ushort(index), button);
        return;
    }
    // A right click on a slot of the selection keeps the selection, as a context click does.
    if (!(button == Qt::RightButton && m_selection[index]))
        selectOnly(index);
    m_current = m_anchor = index;
    emit colorClick(ushort(index), button);
}

void PaletteWidget::mousePressEvent(QMouseEvent *event)
{
    const int index = indexAt(event->pos());
    if (index < 0)
        return;
    m_pressed = event->button() == Qt::LeftButton ? index : -1;
    m_pressPoint = event->pos();
    m_dragging = false;
    clickSlot(index, event->button(), event->modifiers());
}

void PaletteWidget::mouseMoveEvent(QMouseEvent *event)
{
    if (m_pressed < 0)
        return;
    if (!m_dragging && (event->pos() - m_pressPoint).manhattanLength() < QApplication::startDragDistance())
        return;
    m_dragging = true;
    const int target = indexAt(event->pos());
    const int shown = target == m_pressed ? -1 : target;
    if (shown != m_dropTarget) {
        m_dropTarget = shown;
        update();
    }
    setCursor(shown >= 0 ? Qt::DragMoveCursor : Qt::ArrowCursor);
}

void PaletteWidget::mouseReleaseEvent(QMouseEvent *event)
{
    const int source = m_pressed;
    const bool dragged = m_dragging;
    m_pressed = -1;
    m_dragging = false;
    if (m_dropTarget >= 0) {
        m_dropTarget = -1;
        update();
    }
    unsetCursor();
    if (source < 0 || event->button() != Qt::LeftButton)
        return;
    const int target = indexAt(event->pos());
    // A release on another slot is a move even when no move event came between.
    if (target >= 0 && target != source && (dragged || (event->pos() - m_pressPoint).manhattanLength() > 0)) {
        selectOnly(target);
        emit colorMoved(source, target);
    }
}

void PaletteWidget::mouseDoubleClickEvent(QMouseEvent *event)
{
    const int index = indexAt(event->pos());
    if (index < 0 || event->button() != Qt::LeftButton)
        return;
    selectOnly(index);
    emit colorDblClick(ushort(index));
}

} // namespace Ovra
