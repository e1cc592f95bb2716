// The composition of the visible layers: through QPainter's modes on a true-colour canvas,
// pixel by pixel over the palette on an indexed one.
#include "editors/sprite/imagecanvas_p.h"
#include "editors/sprite/rasterlayer.h"

#include <vector>

namespace Ovra {

namespace {

// A colour mixed halfway towards the one above it, each channel on its own.
RGBA mixedTowards(const RGBA &low, const RGBA &high)
{
    return RGBA(quint8(low.red + ((high.red - low.red) >> 1)), quint8(low.green + ((high.green - low.green) >> 1)),
                quint8(low.blue + ((high.blue - low.blue) >> 1)), quint8(low.alpha + ((high.alpha - low.alpha) >> 1)));
}

// One pixel from the layers at (x, y), top first. Transparent entries are passed over; an
// opaque pixel on top wins as it is; otherwise the colours down to the first opaque one
// are mixed from the bottom up and the nearest entry is taken.
class IndexedComposer
{
public:
    IndexedComposer(const RGBA (&colors)[256], const PaletteObject &palette, const QVector<const QImage *> &layers)
        : m_colors(colors)
        , m_palette(palette)
        , m_layers(layers)
        , m_rows(layers.size())
        , m_widths(layers.size())
    {
        for (int k = 0; k < layers.size(); ++k)
            m_widths[k] = layers.at(k)->width();
        m_found.reserve(size_t(layers.size()));
        for (int i = 0; i < 256; ++i)
            m_alphas[i] = colors[i].alpha;
    }

    void startRow(int y)
    {
        for (int k = 0; k < m_layers.size(); ++k)
            m_rows[k] = y < m_layers.at(k)->height() ? m_layers.at(k)->constScanLine(y) : nullptr;
    }

    uchar pixel(int x)
    {
        m_found.clear(); // keeps its room: no allocation a pixel
        const int count = m_rows.size();
        const uchar *const *rows = m_rows.constData();
        const int *widths = m_widths.constData();
        for (int k = 0; k < count; ++k) {
            const uchar *row = rows[k];
            if (!row || x >= widths[k])
                continue;
            const uchar index = row[x];
            const uchar alpha = m_alphas[index];
            if (alpha == 0)
                continue;
            if (alpha == 255 && m_found.empty())
                return index;
            m_found.push_back(m_colors[index]);
            if (alpha == 255)
                break;
        }
        return m_found.empty() ? 0 : mixed();
    }

private:
    uchar mixed()
    {
        RGBA color = m_found.back();
        for (int i = int(m_found.size()) - 2; i >= 0; --i)
            color = mixedTowards(color, m_found[size_t(i)]);
        // The search over 256 entries is the cost of a mixed pixel, and the same few mixtures
        // come back all over a picture: a small table remembers the latest answers.
        const quint32 key = color.toQRgb();
        Remembered &slot = m_nearest[(key * 2654435761u) >> (32 - rememberedBits)];
        if (!slot.used || slot.key != key) {
            slot.key = key;
            slot.index = m_palette.index(color);
            slot.used = true;
        }
        return slot.index;
    }

    const RGBA (&m_colors)[256];
    const PaletteObject &m_palette;
    const QVector<const QImage *> &m_layers;
    QVector<const uchar *> m_rows;
    QVector<int> m_widths;
    uchar m_alphas[256];
    std::vector<RGBA> m_found;
    struct Remembered
    {
        quint32 key = 0;
        uchar index = 0;
        bool used = false;
    };
    static const int rememberedBits = 12;
    std::vector<Remembered> m_nearest = std::vector<Remembered>(1 << rememberedBits);
};

} // namespace

QImage ImageCanvasPrivate::composedIndexed(const QRect &area) const
{
    QImage result(area.size(), QImage::Format_Indexed8);
    if (result.isNull())
        return result;
    const RGBA (&colors)[256] = palette->palette();
    QVector<QRgb> table(256);
    for (int i = 0; i < 256; ++i)
        table[i] = colors[i].toQRgb();
    result.setColorTable(table);
    QVector<const QImage *> visible;
    for (const ImageLayer *layer : layers->layers()) {
        const auto *raster = dynamic_cast<const RasterLayer *>(layer);
        if (raster && layer->isVisible() && raster->image().format() == QImage::Format_Indexed8)
            visible.append(&raster->image());
    }
    IndexedComposer composer(colors, *palette, visible);
    for (int y = 0; y < result.height(); ++y) {
        composer.startRow(area.top() + y);
        uchar *out = result.scanLine(y);
        for (int x = 0; x < result.width(); ++x)
            out[x] = composer.pixel(area.left() + x);
    }
    return result;
}

QImage ImageCanvasPrivate::composedRgba(const QRect &area) const
{
    QImage result(area.size(), QImage::Format_ARGB32_Premultiplied);
    if (result.isNull())
        return result;
    result.fill(0);
    {
        QPainter painter(&result);
        painter.translate(-area.topLeft());
        const QList<ImageLayer *> &stack = layers->layers();
        for (int i = stack.size() - 1; i >= 0; --i) {
            if (stack.at(i)->isVisible())
                stack.at(i)->paint(painter);
        }
    }
    return result.convertToFormat(QImage::Format_ARGB32);
}

} // namespace Ovra
