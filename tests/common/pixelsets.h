#pragma once

// Sets of picture pixels: those a square pen covers along a line, those a fill reaches. The
// references the painting tools' tests hold the pictures against.
#include <QImage>
#include <QPoint>
#include <QRect>
#include <QSet>
#include <QSize>

#include <QVector>

#include <cstdlib>
#include <functional>

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

// The 4-connected pixels of the start's value among those that `allowed` lets in.
inline Pixels region(const QImage &image, QPoint start, const std::function<bool(QPoint)> &allowed = nullptr)
{
    Pixels found{start};
    QVector<QPoint> queue{start};
    const uint value = image.pixel(start);
    while (!queue.isEmpty()) {
        const QPoint p = queue.takeLast();
        for (const QPoint step : {QPoint(1, 0), QPoint(-1, 0), QPoint(0, 1), QPoint(0, -1)}) {
            const QPoint n = p + step;
            if (image.valid(n) && !found.contains(n) && image.pixel(n) == value && (!allowed || allowed(n))) {
                found.insert(n);
                queue.append(n);
            }
        }
    }
    return found;
}
