// The painting of the time line: the ruler, the lanes with their blocks, the marker.
#include "editors/animation/timelinewidget.h"
#include "editors/animation/timelinewidget_p.h"

#include "editors/animation/timeline.h"

#include <QLinearGradient>
#include <QPainter>

#include <algorithm>
#include <climits>

namespace Ovra {

namespace {

// How far back a lane is searched for a block that began left of the page and runs
// into it: a minute of ticks.
constexpr int LookBehind = 3600;

} // namespace

void TimeLinePrivate::paint(QPainter &painter, const QRect &area)
{
    updateVisibleTicks();
    const QPalette &palette = q->palette();
    painter.fillRect(area, palette.window());
    for (int lane = 0; lane < timeLines.size(); ++lane)
        paintLane(painter, lane);
    paintRuler(painter);
    painter.setPen(palette.color(QPalette::Mid));
    painter.drawLine(lanesLeft - 1, 0, lanesLeft - 1, q->height());
    paintMarker(painter);
}

void TimeLinePrivate::paintRuler(QPainter &painter) const
{
    const QPalette &palette = q->palette();
    const int width = q->width();
    painter.fillRect(QRect(0, 0, width, rulerHeight), palette.button());
    painter.setPen(palette.color(QPalette::Mid));
    painter.drawLine(0, rulerHeight - 1, width, rulerHeight - 1);

    QFont font = q->font();
    font.setPixelSize(std::max(6, rulerHeight * 9 / 20));
    painter.setFont(font);
    const int longStroke = rulerHeight / 2;
    const int shortStroke = std::max(2, rulerHeight / 5);
    // One more than fits, so that the ruler reaches the right edge.
    for (int i = 0; i <= visibleTicks; ++i) {
        const qint64 tick = qint64(firstTick) + i;
        const int x = lanesLeft + i * tickWidth;
        const bool second = ticksPerSecond > 0 && tick % ticksPerSecond == 0;
        if (tick % 5 == 0) {
            painter.setPen(palette.color(second ? QPalette::ButtonText : QPalette::Dark));
            painter.drawLine(x, rulerHeight - longStroke, x, rulerHeight - 1);
            painter.setPen(palette.color(QPalette::ButtonText));
            painter.drawText(QRect(x - 20, 0, 40, rulerHeight - longStroke), Qt::AlignHCenter | Qt::AlignBottom,
                             QString::number(tick));
        } else {
            painter.setPen(palette.color(QPalette::Dark));
            painter.drawLine(x, rulerHeight - shortStroke, x, rulerHeight - 1);
        }
    }
}

void TimeLinePrivate::paintLane(QPainter &painter, int index) const
{
    const QPalette &palette = q->palette();
    const int top = rulerHeight + index * laneHeight;
    const QRect row(0, top, q->width(), laneHeight);
    painter.fillRect(row, index % 2 ? palette.alternateBase() : palette.base());
    if (index == selectedLane) {
        QColor tint = palette.color(QPalette::Highlight);
        tint.setAlphaF(0.18);
        painter.fillRect(row, tint);
    }
    painter.setPen(palette.color(QPalette::Midlight));
    painter.drawLine(0, top + laneHeight - 1, row.right(), top + laneHeight - 1);

    const TimeLine *lane = timeLines.at(index);
    const QRect nameBox(8, top + 2, lanesLeft - 16, laneHeight - 4);
    painter.setPen(palette.color(QPalette::Text));
    painter.setFont(q->font());
    painter.drawText(nameBox, Qt::AlignLeft | Qt::AlignVCenter,
                     painter.fontMetrics().elidedText(lane->name(), Qt::ElideRight, nameBox.width()));

    painter.save();
    painter.setClipRect(QRect(lanesLeft, top, std::max(0, q->width() - lanesLeft), laneHeight));
    uint length = 0;
    // A block that began before the page and is still running.
    const qint64 oldest = std::max<qint64>(0, qint64(firstTick) - LookBehind);
    for (qint64 tick = qint64(firstTick) - 1; tick >= oldest; --tick) {
        if (lane->blockAt(uint(tick), length)) {
            if (qint64(tick) + length > firstTick)
                paintBlock(painter, tickX(long(tick)), top, length);
            break;
        }
    }
    for (int i = 0; i <= visibleTicks; ++i) {
        const qint64 tick = qint64(firstTick) + i;
        if (tick <= UINT_MAX && lane->blockAt(uint(tick), length))
            paintBlock(painter, lanesLeft + i * tickWidth, top, length);
    }
    painter.restore();
}

void TimeLinePrivate::paintBlock(QPainter &painter, int x, int top, uint length) const
{
    const QPalette &palette = q->palette();
    const QColor colour = palette.color(QPalette::Highlight);
    const int cellTop = top + 3;
    const int cellHeight = laneHeight - 7;
    if (length > 1) {
        // Only as far as the widget shows: a held frame reports the largest length.
        const qint64 right = std::min<qint64>(qint64(x) + tickWidth + qint64(tickWidth) * (length - 1), q->width());
        const int bodyWidth = int(std::max<qint64>(0, right - x - tickWidth));
        QLinearGradient gradient(0, cellTop, 0, cellTop + cellHeight);
        gradient.setColorAt(0.0, colour.lighter(150));
        gradient.setColorAt(1.0, colour);
        painter.save();
        painter.setOpacity(0.33);
        painter.fillRect(QRect(x + tickWidth, cellTop, bodyWidth, cellHeight), gradient);
        painter.restore();
    }
    painter.fillRect(QRect(x, cellTop, tickWidth, cellHeight), colour);
}

void TimeLinePrivate::paintMarker(QPainter &painter) const
{
    const int x = tickX(long(currentTick));
    if (x < lanesLeft || x >= q->width())
        return;
    QColor column = q->palette().color(QPalette::Highlight);
    column.setAlphaF(0.35);
    painter.fillRect(QRect(x, 0, tickWidth, q->height()), column);
    painter.setPen(q->palette().color(QPalette::Highlight).darker(170));
    const int centre = x + tickWidth / 2;
    painter.drawLine(centre, 0, centre, q->height());
}

} // namespace Ovra
