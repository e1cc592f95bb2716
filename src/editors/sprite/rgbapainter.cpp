#include "editors/sprite/rgbapainter.h"

#include "editors/sprite/imagepainter_p.h"
#include "image/paletteobject.h"

namespace Ovra {

RGBAPainter::RGBAPainter()
    : ImagePainter(32)
{
}

RGBAPainter::~RGBAPainter() = default;

void RGBAPainter::setColor(uint color)
{
    d->color = color;
}

void RGBAPainter::setRemap(const QMap<uint, uint> &remap)
{
    d->remap = remap;
}

bool RGBAPainter::isSelected(int x, int y) const
{
    return selectionAllows(x, y);
}

uint RGBAPainter::pixel(int x, int y) const
{
    if (d->bits) {
        const uchar *at = d->at(x, y, 4);
        return at ? *reinterpret_cast<const QRgb *>(at) : 0;
    }
    if (!usable() || !d->image->valid(x, y))
        return 0;
    return reinterpret_cast<const QRgb *>(d->image->constScanLine(y))[x];
}

void RGBAPainter::setPixel(int x, int y)
{
    uchar *at = d->bits ? d->at(x, y, 4) : (usable() && d->image->valid(x, y) ? d->image->scanLine(y) + x * 4 : nullptr);
    if (!at)
        return;
    QRgb &target = *reinterpret_cast<QRgb *>(at);
    if (d->remap.isEmpty()) {
        target = d->color;
        return;
    }
    // Without a palette there is no index to look the colour up by.
    if (!d->palette)
        return;
    const auto mapped = d->remap.constFind(d->palette->index(RGBA(target)));
    if (mapped != d->remap.constEnd())
        target = mapped.value();
}

} // namespace Ovra
