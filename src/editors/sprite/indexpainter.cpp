#include "editors/sprite/indexpainter.h"

#include "editors/sprite/imagepainter_p.h"

namespace Ovra {

IndexPainter::IndexPainter()
    : ImagePainter(8)
{
}

IndexPainter::~IndexPainter() = default;

void IndexPainter::setColor(uint color)
{
    d->color = color & 0xFF;
}

void IndexPainter::setRemap(const QMap<uint, uint> &remap)
{
    d->remap = remap;
}

bool IndexPainter::isSelected(int x, int y) const
{
    return selectionAllows(x, y);
}

uint IndexPainter::pixel(int x, int y) const
{
    if (d->bits) {
        const uchar *at = d->at(x, y, 1);
        return at ? *at : 0;
    }
    if (!usable() || !d->image->valid(x, y))
        return 0;
    return d->image->constScanLine(y)[x];
}

void IndexPainter::setPixel(int x, int y)
{
    uchar *at = d->bits ? d->at(x, y, 1) : (usable() && d->image->valid(x, y) ? d->image->scanLine(y) + x : nullptr);
    if (!at)
        return;
    uchar &target = *at;
    if (d->remap.isEmpty()) {
        target = uchar(d->color);
        return;
    }
    const auto mapped = d->remap.constFind(target);
    if (mapped != d->remap.constEnd())
        target = uchar(mapped.value());
}

} // namespace Ovra
