#include "image/sprite.h"

#include <cstring>

namespace Ovra {

Sprite::~Sprite() = default;

QStringList Sprite::propertyNames() const
{
    return {QStringLiteral("Identifier")};
}

void Sprite::setImage(const QImage &image)
{
    setImage(image, true);
}

QImage Sprite::aligned(const QPoint &position, const QPoint &origin, const QPoint &extent) const
{
    const QImage picture = image();
    if (picture.isNull())
        return QImage();
    QImage canvas(origin.x() + extent.x(), origin.y() + extent.y(), picture.format());
    if (canvas.isNull())
        return QImage();
    if (picture.format() == QImage::Format_Indexed8)
        canvas.setColorTable(picture.colorTable());
    memset(canvas.bits(), 0, size_t(canvas.sizeInBytes()));
    const QPoint corner = origin - position;
    const int rowBytes = picture.width() * (picture.depth() / 8);
    const int bytesPerPixel = picture.depth() / 8;
    for (int y = 0; y < picture.height(); ++y) {
        const int target = corner.y() + y;
        // The caller guarantees the fit; a picture that doesn't fit is clipped rather
        // than written past the canvas.
        if (target < 0 || target >= canvas.height() || corner.x() < 0
            || corner.x() + picture.width() > canvas.width())
            continue;
        memcpy(canvas.scanLine(target) + corner.x() * bytesPerPixel, picture.constScanLine(y), size_t(rowBytes));
    }
    return canvas;
}

} // namespace Ovra
