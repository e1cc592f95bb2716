#include "editors/sprite/rasterlayer.h"

#include "editors/sprite/commands/rasterlayeredit.h"
#include "editors/sprite/imagecanvas.h"
#include "image/paletteobject.h"

#include <QUndoStack>

#include <cstring>

namespace Ovra {

namespace {

// A palette's colours as a colour table, for the indexed pictures of the canvas.
QVector<QRgb> colorTableOf(const RGBA (&palette)[256])
{
    QVector<QRgb> table(256);
    for (int i = 0; i < 256; ++i)
        table[i] = palette[i].toQRgb();
    return table;
}

} // namespace

RasterLayer::RasterLayer(ImageCanvas *canvas, const QImage &image)
    : ImageLayer(canvas)
    , m_image(image)
{
}

RasterLayer::~RasterLayer() = default;

ImageLayer *RasterLayer::clone() const
{
    auto *copy = new RasterLayer(canvas(), m_image);
    copy->copyPropertiesFrom(*this);
    return copy;
}

void RasterLayer::paint(QPainter &painter)
{
    ImageLayer::paint(painter);
    painter.drawImage(0, 0, m_image);
}

void RasterLayer::remap(const RGBA (&palette)[256])
{
    if (m_image.format() != QImage::Format_Indexed8 || !canvas())
        return;
    RGBA colours[256];
    memcpy(colours, palette, sizeof colours);
    const PaletteObject target(&colours);
    const RGBA (&current)[256] = canvas()->palette()->palette();
    uchar map[256];
    for (int i = 0; i < 256; ++i)
        map[i] = target.index(current[i]);
    QImage image = m_image.copy();
    for (int y = 0; y < image.height(); ++y) {
        uchar *row = image.scanLine(y);
        for (int x = 0; x < image.width(); ++x)
            row[x] = map[row[x]];
    }
    image.setColorTable(colorTableOf(palette));
    replaceImage(image);
}

void RasterLayer::flip(bool horizontal, bool vertical)
{
    if (!horizontal && !vertical)
        return;
    replaceImage(m_image.mirrored(horizontal, vertical));
}

void RasterLayer::rotate(float angle, uint fill)
{
    const QImage rotated = rotateImage(m_image, angle, fill);
    if (!rotated.isNull())
        replaceImage(rotated);
}

void RasterLayer::scale(const QSize &size, ImageResizeFilter filter)
{
    if (size == m_image.size() || !canvas())
        return;
    QImage scaled = resizeImage(m_image, size, canvas()->palette()->palette(), filter);
    if (scaled.isNull())
        return;
    if (scaled.format() == QImage::Format_Indexed8)
        scaled.setColorTable(m_image.colorTable());
    replaceImage(scaled);
}

void RasterLayer::resize(const QSize &size, const QPoint &position, uint fill)
{
    if (size == m_image.size() || size.isEmpty())
        return;
    QPoint at = position;
    if (at.x() < -65535)
        at = QPoint((size.width() - m_image.width()) >> 1, (size.height() - m_image.height()) >> 1);
    QImage image(size, m_image.format());
    if (image.isNull())
        return;
    image.setColorTable(m_image.colorTable());
    if (image.format() == QImage::Format_ARGB32)
        image.fill(fill);
    else
        memset(image.bits(), int(fill & 0xFF), size_t(image.sizeInBytes()));
    // The part of the old picture that falls inside, row by row.
    const int bytes = m_image.depth() / 8;
    const QRect inside = QRect(at, m_image.size()) & image.rect();
    for (int y = inside.top(); y <= inside.bottom(); ++y) {
        const uchar *from = m_image.constScanLine(y - at.y()) + (inside.left() - at.x()) * bytes;
        memcpy(image.scanLine(y) + inside.left() * bytes, from, size_t(inside.width() * bytes));
    }
    replaceImage(image);
}

void RasterLayer::setFormat(int format, PaletteObject *palette)
{
    const bool indexed = m_image.format() == QImage::Format_Indexed8;
    if ((format == 1) != indexed || !palette)
        return;
    QImage image = m_image;
    if (format == 1) {
        image.setColorTable(colorTableOf(palette->palette()));
        image = image.convertToFormat(QImage::Format_ARGB32);
    } else {
        adaptImageToPalette(image, palette->palette());
    }
    replaceImage(image);
}

QRect RasterLayer::contentRect() const
{
    return cropImageRect(m_image, 0);
}

void RasterLayer::swapImage(QImage &image)
{
    m_image.swap(image);
    changed();
}

void RasterLayer::setImage(const QImage &image)
{
    m_image = image;
    changed();
}

void RasterLayer::changed(const QRect &area)
{
    notifyChanged(area);
}

void RasterLayer::replaceImage(const QImage &image)
{
    QImage old = m_image;
    m_image = image;
    if (canvas())
        canvas()->undoStack()->push(new RasterLayerEdit(this, old, true));
    changed();
}

} // namespace Ovra
