#include "image/imagescaling.h"

#include "image/hqx_p.h"
#include "image/paletteobject.h"

#include <QHash>

#include <cmath>
#include <cstring>
#include <vector>

namespace Ovra {
namespace {

// Bytes a pixel takes in the plain scalers; an RGB32 picture is walked three bytes at a
// time, as its callers never give one.
int pixelBytes(QImage::Format format)
{
    switch (format) {
    case QImage::Format_Indexed8:
        return 1;
    case QImage::Format_RGB32:
        return 3;
    case QImage::Format_ARGB32:
    case QImage::Format_ARGB32_Premultiplied:
        return 4;
    default:
        return 0;
    }
}

bool isThirtyTwoBit(QImage::Format format)
{
    return format == QImage::Format_RGB32 || format == QImage::Format_ARGB32
           || format == QImage::Format_ARGB32_Premultiplied;
}

// The nearest palette entry of many colours, each colour looked up once.
class PaletteIndex
{
public:
    explicit PaletteIndex(RGBA (&palette)[256])
        : m_palette(&palette)
    {
    }
    uchar operator()(QRgb colour)
    {
        auto found = m_known.constFind(colour);
        if (found != m_known.constEnd())
            return *found;
        const uchar index = m_palette.index(RGBA(colour));
        m_known.insert(colour, index);
        return index;
    }

private:
    PaletteObject m_palette;
    QHash<QRgb, uchar> m_known;
};

QVector<QRgb> tableOf(const RGBA (&palette)[256])
{
    QVector<QRgb> table(256);
    for (int i = 0; i < 256; ++i)
        table[i] = palette[i].toQRgb();
    return table;
}

// The factor the pixel-art filters aim at: the larger of the two.
float enlargement(const QImage &image, QSize size)
{
    return qMax(float(size.height()) / float(image.height()), float(size.width()) / float(image.width()));
}

QImage finish(const QImage &enlarged, QSize size, RGBA (&palette)[256], ImageResizeFilter filter)
{
    return enlarged.size() == size ? enlarged : resizeImage(enlarged, size, palette, filter);
}

// ---- EPX ------------------------------------------------------------------------------

// The neighbours of a pixel, those outside the picture being the pixel itself.
template <typename Pixel>
struct Neighbourhood
{
    Pixel a, b, c, d, e, f, g, h, i;
};

template <typename Pixel>
Neighbourhood<Pixel> neighbourhood(const QImage &image, int x, int y)
{
    const int width = image.width();
    const int height = image.height();
    const auto *row = reinterpret_cast<const Pixel *>(image.constScanLine(y));
    const auto *above = y > 0 ? reinterpret_cast<const Pixel *>(image.constScanLine(y - 1)) : nullptr;
    const auto *below = y + 1 < height ? reinterpret_cast<const Pixel *>(image.constScanLine(y + 1)) : nullptr;
    const Pixel e = row[x];
    const bool left = x > 0;
    const bool right = x + 1 < width;
    Neighbourhood<Pixel> n;
    n.e = e;
    n.a = above && left ? above[x - 1] : e;
    n.b = above ? above[x] : e;
    n.c = above && right ? above[x + 1] : e;
    n.d = left ? row[x - 1] : e;
    n.f = right ? row[x + 1] : e;
    n.g = below && left ? below[x - 1] : e;
    n.h = below ? below[x] : e;
    n.i = below && right ? below[x + 1] : e;
    return n;
}

template <typename Pixel>
QImage epx2x(const QImage &image)
{
    QImage result(image.width() * 2, image.height() * 2, image.format());
    if (result.isNull())
        return result;
    result.setColorTable(image.colorTable());
    for (int y = 0; y < image.height(); ++y) {
        auto *top = reinterpret_cast<Pixel *>(result.scanLine(2 * y));
        auto *bottom = reinterpret_cast<Pixel *>(result.scanLine(2 * y + 1));
        for (int x = 0; x < image.width(); ++x) {
            const Neighbourhood<Pixel> n = neighbourhood<Pixel>(image, x, y);
            Pixel *out[2] = {top + 2 * x, bottom + 2 * x};
            if (n.b != n.h && n.d != n.f) {
                out[0][0] = n.d == n.b ? n.d : n.e;
                out[0][1] = n.b == n.f ? n.f : n.e;
                out[1][0] = n.d == n.h ? n.d : n.e;
                out[1][1] = n.h == n.f ? n.f : n.e;
            } else {
                out[0][0] = out[0][1] = out[1][0] = out[1][1] = n.e;
            }
        }
    }
    return result;
}

template <typename Pixel>
QImage epx3x(const QImage &image)
{
    QImage result(image.width() * 3, image.height() * 3, image.format());
    if (result.isNull())
        return result;
    result.setColorTable(image.colorTable());
    for (int y = 0; y < image.height(); ++y) {
        Pixel *rows[3];
        for (int k = 0; k < 3; ++k)
            rows[k] = reinterpret_cast<Pixel *>(result.scanLine(3 * y + k));
        for (int x = 0; x < image.width(); ++x) {
            const Neighbourhood<Pixel> n = neighbourhood<Pixel>(image, x, y);
            const Pixel e = n.e;
            Pixel out[9] = {e, e, e, e, e, e, e, e, e};
            if (n.b != n.h && n.d != n.f) {
                out[0] = n.d == n.b ? n.d : e;
                out[1] = (n.d == n.b && e != n.c) || (n.b == n.f && e != n.a) ? n.b : e;
                out[2] = n.b == n.f ? n.f : e;
                out[3] = (n.d == n.b && e != n.g) || (n.d == n.h && e != n.a) ? n.d : e;
                out[5] = (n.b == n.f && e != n.i) || (n.h == n.f && e != n.c) ? n.f : e;
                out[6] = n.d == n.h ? n.d : e;
                out[7] = (n.d == n.h && e != n.i) || (n.h == n.f && e != n.g) ? n.h : e;
                out[8] = n.h == n.f ? n.f : e;
            }
            for (int k = 0; k < 3; ++k)
                memcpy(rows[k] + 3 * x, out + 3 * k, 3 * sizeof(Pixel));
        }
    }
    return result;
}

// ---- hqNx -----------------------------------------------------------------------------

// The picture through hq2x, hq3x or hq4x by the factor, told as for EPX. The filters work
// on 32-bit pixels: an indexed picture is coloured by the palette first and indexed again
// afterwards, each colour matched once.
QImage hqEnlarge(const QImage &image, float factor, RGBA (&palette)[256])
{
    using Filter = void (*)(const quint32 *, quint32 *, int, int, int);
    const int scale = factor <= 2 ? 2 : factor <= 3 ? 3 : 4;
    const Filter filter = scale == 2 ? hq2x : scale == 3 ? hq3x : hq4x;
    const bool indexed = image.format() == QImage::Format_Indexed8;
    QImage source = image;
    if (indexed)
        source.setColorTable(tableOf(palette));
    source = source.convertToFormat(QImage::Format_ARGB32);
    const int width = source.width();
    const int height = source.height();
    QImage enlarged(width * scale, height * scale, QImage::Format_ARGB32);
    if (source.isNull() || enlarged.isNull())
        return QImage();
    auto *target = reinterpret_cast<quint32 *>(enlarged.bits());
    // 32-bit rows are never padded, but the filters are not to depend on that.
    if (source.bytesPerLine() == width * 4) {
        filter(reinterpret_cast<const quint32 *>(source.constBits()), target, width, height, enlarged.bytesPerLine());
    } else {
        std::vector<quint32> packed(size_t(width) * size_t(height));
        for (int y = 0; y < height; ++y)
            memcpy(packed.data() + size_t(y) * size_t(width), source.constScanLine(y), size_t(width) * 4);
        filter(packed.data(), target, width, height, enlarged.bytesPerLine());
    }
    if (!indexed)
        return image.format() == QImage::Format_ARGB32 ? enlarged : enlarged.convertToFormat(image.format());

    QImage result(enlarged.size(), QImage::Format_Indexed8);
    if (result.isNull())
        return QImage();
    result.setColorTable(tableOf(palette));
    PaletteIndex nearest(palette);
    for (int y = 0; y < enlarged.height(); ++y) {
        const auto *in = reinterpret_cast<const QRgb *>(enlarged.constScanLine(y));
        uchar *out = result.scanLine(y);
        for (int x = 0; x < enlarged.width(); ++x)
            out[x] = nearest(in[x]);
    }
    return result;
}

} // namespace

const char *imageResizeFilterName(ImageResizeFilter filter)
{
    static const char *const names[] = {"Nearest Neighbor", "Bilinear", "EPX + Nearest Neighbor", "EPX + Bilinear",
                                        "HQ + Nearest Neighbor", "HQ + Bilinear"};
    return filter >= 0 && filter < 6 ? names[filter] : nullptr;
}

QImage scaleEpx2x(const QImage &image)
{
    if (image.format() == QImage::Format_Indexed8)
        return epx2x<uchar>(image);
    if (isThirtyTwoBit(image.format()))
        return epx2x<quint32>(image);
    return QImage();
}

QImage scaleEpx3x(const QImage &image)
{
    if (image.format() == QImage::Format_Indexed8)
        return epx3x<uchar>(image);
    if (isThirtyTwoBit(image.format()))
        return epx3x<quint32>(image);
    return QImage();
}

QImage resizeImage(QImage image, QSize size, RGBA (&palette)[256], ImageResizeFilter filter)
{
    if (image.isNull() || size.isEmpty())
        return QImage();
    switch (filter) {
    // The plain scalers leave the colour table to their callers; here an indexed picture
    // comes back with its own table, or with the palette its pixels were matched against.
    case NearestNeighborFilter: {
        QImage result = resizeImageNearest(image, size);
        if (image.format() == QImage::Format_Indexed8)
            result.setColorTable(image.colorTable());
        return result;
    }
    case BilinearFilter: {
        QImage result = resizeImageBilinear(image, size, palette);
        if (image.format() == QImage::Format_Indexed8)
            result.setColorTable(tableOf(palette));
        return result;
    }
    case EpxNearestFilter:
    case EpxBilinearFilter: {
        const ImageResizeFilter then = filter == EpxNearestFilter ? NearestNeighborFilter : BilinearFilter;
        const float factor = enlargement(image, size);
        QImage enlarged;
        if (factor <= 2)
            enlarged = scaleEpx2x(image);
        else if (factor <= 3)
            enlarged = scaleEpx3x(image);
        else
            enlarged = scaleEpx2x(scaleEpx2x(image));
        if (enlarged.isNull())
            return QImage();
        return finish(enlarged, size, palette, then);
    }
    case HqNearestFilter:
    case HqBilinearFilter: {
        const ImageResizeFilter then = filter == HqNearestFilter ? NearestNeighborFilter : BilinearFilter;
        const QImage enlarged = hqEnlarge(image, enlargement(image, size), palette);
        if (enlarged.isNull())
            return QImage();
        return finish(enlarged, size, palette, then);
    }
    }
    return QImage();
}

QImage resizeImageNearest(QImage image, QSize size)
{
    if (image.isNull() || size.isEmpty())
        return QImage();
    QImage result(size, image.format());
    if (result.isNull())
        return result;
    result.fill(0);
    const int bytes = pixelBytes(image.format());
    const qint64 stepX = (qint64(image.width()) << 16) / size.width() + 1;
    const qint64 stepY = (qint64(image.height()) << 16) / size.height() + 1;
    // The extra step of 1 can carry the last target pixel one place past the source's
    // edge on large enlargements; it stays on the edge.
    const int lastColumn = image.width() - 1;
    const int lastRow = image.height() - 1;
    qint64 accY = 0;
    for (int y = 0; y < size.height(); ++y, accY += stepY) {
        const uchar *in = image.constScanLine(qMin(int(accY >> 16), lastRow));
        uchar *out = result.scanLine(y);
        qint64 accX = 0;
        for (int x = 0; x < size.width(); ++x, accX += stepX)
            memcpy(out + x * bytes, in + qMin(int(accX >> 16), lastColumn) * bytes, size_t(bytes));
    }
    return result;
}

QImage resizeImageBilinear(QImage image, QSize size, RGBA (&palette)[256])
{
    if (image.isNull() || size.isEmpty())
        return QImage();
    const bool indexed = image.format() == QImage::Format_Indexed8;
    // Only indexed and 32-bit pictures are weighed; others come as ARGB32 and stay so.
    if (!indexed && !isThirtyTwoBit(image.format()))
        image = image.convertToFormat(QImage::Format_ARGB32);
    QImage result(size, image.format());
    if (result.isNull())
        return result;
    const QVector<QRgb> table = image.colorTable();
    auto pixel = [&](int x, int y) -> QRgb {
        if (!indexed)
            return reinterpret_cast<const QRgb *>(image.constScanLine(y))[x];
        const int index = image.constScanLine(y)[x];
        return index < table.size() ? table.at(index) : 0;
    };
    PaletteIndex nearest(palette);
    const double ratioX = double(image.width()) / size.width();
    const double ratioY = double(image.height()) / size.height();
    for (int y = 0; y < size.height(); ++y) {
        const double sy = y * ratioY;
        const int y0 = int(std::floor(sy));
        const double fy = sy - y0;
        const int y1 = y0 + 1 < image.height() ? y0 + 1 : y0;
        uchar *out = result.scanLine(y);
        for (int x = 0; x < size.width(); ++x) {
            const double sx = x * ratioX;
            const int x0 = int(std::floor(sx));
            const double fx = sx - x0;
            const int x1 = x0 + 1 < image.width() ? x0 + 1 : x0;
            const QRgb c00 = pixel(x0, y0);
            const QRgb c10 = pixel(x1, y0);
            const QRgb c01 = pixel(x0, y1);
            const QRgb c11 = pixel(x1, y1);
            QRgb value = 0;
            for (int shift = 0; shift < 32; shift += 8) {
                auto channel = [shift](QRgb c) { return double((c >> shift) & 0xFF); };
                const int top = int(channel(c00) * (1 - fx) + channel(c10) * fx);
                const int bottom = int(channel(c01) * (1 - fx) + channel(c11) * fx);
                const int mixed = int(top * (1 - fy) + bottom * fy);
                value |= QRgb(mixed & 0xFF) << shift;
            }
            if (indexed)
                out[x] = nearest(value);
            else
                reinterpret_cast<QRgb *>(out)[x] = value;
        }
    }
    return result;
}

QImage rotateImage(QImage image, float angle, uint fill)
{
    if (image.isNull())
        return QImage();
    const float c = std::cos(angle);
    const float s = std::sin(angle);
    const int width = image.width();
    const int height = image.height();
    int minX = 0;
    int minY = 0;
    int maxX = 0;
    int maxY = 0;
    const QPoint corners[] = {{0, height}, {width, height}, {width, 0}};
    for (const QPoint &corner : corners) {
        const int x = int(corner.x() * c - corner.y() * s);
        const int y = int(corner.x() * s + corner.y() * c);
        minX = qMin(minX, x);
        minY = qMin(minY, y);
        maxX = qMax(maxX, x);
        maxY = qMax(maxY, y);
    }
    QImage result(maxX - minX, maxY - minY, image.format());
    if (result.isNull())
        return result;
    const QImage::Format format = image.format();
    if (format == QImage::Format_Indexed8) {
        result.setColorTable(image.colorTable());
        memset(result.bits(), int(fill & 0xFF), size_t(result.sizeInBytes()));
    } else {
        result.fill(0);
    }
    const bool fills = format == QImage::Format_RGB32 || format == QImage::Format_ARGB32;
    const int bytes = format == QImage::Format_Indexed8 ? 1 : 4;
    const bool copies = format == QImage::Format_Indexed8 || image.depth() == 32;
    for (int y = 0; y < result.height(); ++y) {
        uchar *out = result.scanLine(y);
        const int py = minY + y;
        for (int x = 0; x < result.width(); ++x) {
            const int px = minX + x;
            const int sx = int(px * c + py * s);
            const int sy = int(py * c - px * s);
            if (sx >= 0 && sx < width && sy >= 0 && sy < height) {
                if (copies)
                    memcpy(out + x * bytes, image.constScanLine(sy) + sx * bytes, size_t(bytes));
            } else if (fills) {
                reinterpret_cast<quint32 *>(out)[x] = fill;
            }
        }
    }
    return result;
}

} // namespace Ovra
