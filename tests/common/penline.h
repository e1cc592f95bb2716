#pragma once

// Sets of picture pixels, and the pixels a square pen covers along a line: the references
// the painting tools' tests hold the pictures against.
#include <QPoint>
#include <QRect>
#include <QSet>
#include <QSize>

#include <cstdlib>

inline uint qHash(const QPoint &p, uint seed = 0)
{
    return qHash(qMakePair(p.x(), p.y()), seed);
}

using Pixels = QSet<QPoint>;

// The line from `a` to `b` with a pen of `size`, inside a picture of that size: along the
// longer axis every step, the shorter one moved by floor((shorter / 2 + i * shorter) /
// longer) after i steps, as the error of the shorter axis starts at half of its own
// difference; the pen's square hangs right and down from each point.
inline Pixels penLine(QPoint a, QPoint b, int size, const QSize &picture)
{
    Pixels pixels;
    const int dx = std::abs(b.x() - a.x());
    const int dy = std::abs(b.y() - a.y());
    const int sx = b.x() >= a.x() ? 1 : -1;
    const int sy = b.y() >= a.y() ? 1 : -1;
    const int longer = qMax(dx, dy);
    const int shorter = qMin(dx, dy);
    for (int i = 0; i <= longer; ++i) {
        const int minor = longer ? (shorter / 2 + i * shorter) / longer : 0;
        const QPoint at = dx >= dy ? QPoint(a.x() + sx * i, a.y() + sy * minor) : QPoint(a.x() + sx * minor, a.y() + sy * i);
        for (int y = 0; y < size; ++y) {
            for (int x = 0; x < size; ++x) {
                if (QRect(QPoint(), picture).contains(at + QPoint(x, y)))
                    pixels.insert(at + QPoint(x, y));
            }
        }
    }
    return pixels;
}
