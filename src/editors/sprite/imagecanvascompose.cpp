// The composition of the visible layers: through QPainter's modes on a true-colour canvas,
// pixel by pixel over the palette on an indexed one.
#include "editors/sprite/imagecanvas_p.h"
#include "editors/sprite/rasterlayer.h"

#include <QHash>
#include <QVarLengthArray>

namespace Ovra {

namespace {

// A colour mixed halfway towards the one above it, each channel on its own.
RGBA mixedTowards(const RGBA &low, const RGBA &high)
{
    return RGBA(quint8(low.red + ((high.red - low.red) >> 1)), quint8(low.green + ((high.green - low.green) >> 1)),
                quint8(low.blue + ((high.blue - low.blue) >> 1)), quint8(low.alpha + ((high.alpha - low.alpha) >> 1)));
}

quint32 key(const RGBA &color)
{
    return color.toQRgb();
}

struct IndexedLayer
{
    const QImage *image;
    int width;
    int height;
};

// One pixel from the layers at (x, y), top first. Transparent entries are passed over; an
// opaque pixel on top wins as it is; otherwise the colours down to the first opaque one
// are mixed from the bottom up and the nearest entry is taken.
struct IndexedComposer
{
    const RGBA (&colors)[256];
    const PaletteObject &palette;
    QVector<const uchar *> rows;
    QVector<int> widths;
    QHash<quint32, uchar> nearest;

    uchar pixel(int x)
    {
        QVarLengthArray<RGBA, 16> found;
        for (int k = 0; k < rows.size(); ++k) {
            if (!rows.at(k) || x >= widths.at(k))
                continue;
            const uchar index = rows.at(k)[x];
            const RGBA &color = colors[index];
            if (color.alpha == 0)
                continue;
            if (color.alpha == 255 && found.isEmpty())
                return index;
            found.append(color);
            if (color.alpha == 255)
                break;
        }
        if (found.isEmpty())
            return 0;
        RGBA mixed = found.last();
        for (int i = found.size() - 2; i >= 0; --i)
            mixed = mixedTowards(mixed, found.at(i));
        const quint32 mixedKey = key(mixed);
        const auto cached = nearest.constFind(mixedKey);
        if (cached != nearest.constEnd())
            return cached.value();
        const uchar index = palette.index(mixed);
        nearest.insert(mixedKey, index);
        return index;
    }
};

} // namespace

QImage ImageCanvasPrivate::composedIndexed() const
{
    QImage result(m_size, QImage::Format_Indexed8);
    if (result.isNull())
        return result;
    const RGBA (&colors)[256] = palette->palette();
    QVector<QRgb> table(256);
    for (int i = 0; i < 256; ++i)
        table[i] = colors[i].toQRgb();
    result.setColorTable(table);
    QVector<IndexedLayer> visible;
    for (const ImageLayer *layer : layers->layers()) {
        const auto *raster = dynamic_cast<const RasterLayer *>(layer);
        if (raster && layer->isVisible() && raster->image().format() == QImage::Format_Indexed8)
            visible.append({&raster->image(), raster->image().width(), raster->image().height()});
    }
    IndexedComposer composer{colors, *palette, QVector<const uchar *>(visible.size()), QVector<int>(visible.size()), {}};
    for (int k = 0; k < visible.size(); ++k)
        composer.widths[k] = visible.at(k).width;
    for (int y = 0; y < result.height(); ++y) {
        for (int k = 0; k < visible.size(); ++k)
            composer.rows[k] = y < visible.at(k).height ? visible.at(k).image->constScanLine(y) : nullptr;
        uchar *out = result.scanLine(y);
        for (int x = 0; x < result.width(); ++x)
            out[x] = composer.pixel(x);
    }
    return result;
}

QImage ImageCanvasPrivate::composedRgba() const
{
    QImage result(m_size, QImage::Format_ARGB32_Premultiplied);
    if (result.isNull())
        return result;
    result.fill(0);
    {
        QPainter painter(&result);
        const QList<ImageLayer *> &stack = layers->layers();
        for (int i = stack.size() - 1; i >= 0; --i) {
            if (stack.at(i)->isVisible())
                stack.at(i)->paint(painter);
        }
    }
    return result.convertToFormat(QImage::Format_ARGB32);
}

} // namespace Ovra
