#include "editors/sprite/imagepainter.h"

#include "editors/sprite/imagepainter_p.h"

#include <QVector>

#include <cstdlib>

namespace Ovra {

namespace {

// Far beyond any picture: a line to a wild point stays a line through the picture rather
// than a walk of billions of steps outside it.
const int coordinateBound = 1 << 16;

QPoint bounded(const QPoint &point)
{
    return QPoint(qBound(-coordinateBound, point.x(), coordinateBound),
                  qBound(-coordinateBound, point.y(), coordinateBound));
}

} // namespace

ImagePainter::ImagePainter(int depth)
    : d(new ImagePainterPrivate)
{
    d->depth = depth;
}

ImagePainter::~ImagePainter() = default;

void ImagePainter::drawPoint(const QPoint &point)
{
    if (!usable())
        return;
    const PaintSession session(d.get());
    const QRect pen = QRect(point, QSize(d->size, d->size)) & d->image->rect();
    for (int y = pen.top(); y <= pen.bottom(); ++y) {
        for (int x = pen.left(); x <= pen.right(); ++x) {
            if (!isProtected(x, y) && isSelected(x, y))
                setPixel(x, y);
        }
    }
}

void ImagePainter::drawLine(const QPoint &from, const QPoint &to)
{
    if (!usable())
        return;
    const PaintSession session(d.get());
    const QPoint start = bounded(from);
    const QPoint end = bounded(to);
    const int dx = std::abs(end.x() - start.x());
    const int dy = std::abs(end.y() - start.y());
    const int stepX = end.x() >= start.x() ? 1 : -1;
    const int stepY = end.y() >= start.y() ? 1 : -1;
    int errorX = dx / 2;
    int errorY = dy / 2;
    QPoint at = start;
    drawPoint(at);
    if (dx >= dy) {
        for (int i = 0; i < dx; ++i) {
            at.rx() += stepX;
            errorY += dy;
            if (errorY >= dx) {
                errorY -= dx;
                at.ry() += stepY;
            }
            drawPoint(at);
        }
    } else {
        for (int i = 0; i < dy; ++i) {
            at.ry() += stepY;
            errorX += dx;
            if (errorX >= dy) {
                errorX -= dy;
                at.rx() += stepX;
            }
            drawPoint(at);
        }
    }
}

void ImagePainter::floodFill(const QPoint &start, bool contiguous)
{
    if (!usable() || !d->image->valid(start))
        return;
    const PaintSession session(d.get());
    const uint target = pixel(start.x(), start.y());
    if (target == d->color)
        return;
    if (contiguous) {
        fillColumns(start, target);
        return;
    }
    for (int y = 0; y < d->image->height(); ++y) {
        for (int x = 0; x < d->image->width(); ++x) {
            if (pixel(x, y) == target && isSelected(x, y))
                setPixel(x, y);
        }
    }
}

// The column scan: each popped point fills the run of target pixels of its column, from the
// run's top down, and pushes the first pixel of every run of qualifying pixels it passes on
// either side. Only the pushing asks the selection, so a selection bounds the fill sideways.
void ImagePainter::fillColumns(const QPoint &start, uint target)
{
    const int width = d->image->width();
    const int height = d->image->height();
    QVector<QPoint> stack;
    stack.reserve(1024);
    stack.append(start);
    const auto qualifies = [&](int x, int y) { return pixel(x, y) == target && isSelected(x, y); };
    while (!stack.isEmpty()) {
        const QPoint point = stack.takeLast();
        const int x = point.x();
        int y = point.y();
        while (y > 0 && pixel(x, y - 1) == target && !isProtected(x, y - 1))
            --y;
        bool left = false;
        bool right = false;
        for (; y < height && pixel(x, y) == target && !isProtected(x, y); ++y) {
            setPixel(x, y);
            // A write that leaves the pixel as it was (a remap without this colour) would
            // bring the scan back here for ever: the fill ends instead.
            if (pixel(x, y) == target)
                return;
            if (x > 0) {
                const bool fits = qualifies(x - 1, y);
                if (!left && fits)
                    stack.append(QPoint(x - 1, y));
                left = fits;
            }
            if (x < width - 1) {
                const bool fits = qualifies(x + 1, y);
                if (!right && fits)
                    stack.append(QPoint(x + 1, y));
                right = fits;
            }
        }
    }
}

uint ImagePainter::color() const
{
    return d->color;
}

QMap<uint, uint> ImagePainter::remap() const
{
    return d->remap;
}

PaletteObject *ImagePainter::palette() const
{
    return d->palette;
}

void ImagePainter::setPalette(PaletteObject *palette)
{
    d->palette = palette;
}

QImage *ImagePainter::image() const
{
    return d->image;
}

void ImagePainter::setImage(QImage *image)
{
    d->image = image;
}

bool *ImagePainter::protectFirst() const
{
    return d->protectFirst;
}

void ImagePainter::setProtectFirst(bool *protectFirst)
{
    d->protectFirst = protectFirst;
}

int ImagePainter::size() const
{
    return d->size;
}

void ImagePainter::setSize(int size)
{
    d->size = qBound(1, size, 128);
}

const QByteArray *ImagePainter::selection() const
{
    return d->selection;
}

void ImagePainter::setSelection(const QByteArray *selection)
{
    d->selection = selection;
}

bool ImagePainter::usable() const
{
    return d->image && !d->image->isNull() && d->image->depth() == d->depth;
}

bool ImagePainter::isProtected(int x, int y) const
{
    return d->protectFirst && *d->protectFirst && pixel(x, y) < 1;
}

bool ImagePainter::selectionAllows(int x, int y) const
{
    if (!d->selection || d->selection->isEmpty())
        return true;
    const int width = d->bits ? d->width : (d->image ? d->image->width() : 0);
    if (x < 0 || y < 0 || x >= width)
        return false;
    const qsizetype at = qsizetype(y) * width + x;
    return at < d->selection->size() && d->selection->at(int(at)) != 0;
}

} // namespace Ovra
