#include "image/imagedata.h"

#include "image/pcxheader_p.h"

#include <QDataStream>
#include <QHash>
#include <QIODevice>

#include <cstring>

namespace Ovra {

RGBA::RGBA(const RGB &rgb)
    : red(rgb.red), green(rgb.green), blue(rgb.blue), alpha(255)
{
}

void RGBA::fromRGB(const RGB &rgb)
{
    red = rgb.red;
    green = rgb.green;
    blue = rgb.blue;
}

RGB RGBA::toRGB() const
{
    return RGB(red, green, blue);
}

QImage::Format formatOfDepth(int depth)
{
    switch (depth) {
    case 5:
    case 8:
        return QImage::Format_Indexed8;
    case 24:
        return QImage::Format_RGB32;
    case 32:
        return QImage::Format_ARGB32;
    default:
        return QImage::Format_Invalid;
    }
}

const char *imageFileExtension(ImageExtensionType type)
{
    static const char *const filters[] = {
        " (*.pcx *.png *.gif *.bmp);;",
        "Personal Computer eXchange (*.pcx);;Portable Network Graphic (*.png);;Graphics Interchange Format "
        "(*.gif);;Bitmap (*.bmp)",
        "Portable Network Graphic (*.png);;Graphics Interchange Format (*.gif);;Personal Computer eXchange "
        "(*.pcx);;Bitmap (*.bmp)",
        " (*.act *.pcx *.png *.gif *.bmp *.pal *.aco *.ase *.txt);;",
        "Adobe Color Table (*.act);;Personal Computer eXchange (*.pcx);;Portable Network Graphic (*.png);;Graphics "
        "Interchange Format (*.gif);;Bitmap (*.bmp);;RIFF / Jasc Palette (*.pal);;Adobe Color Swatch (*.aco);;Adobe "
        "Swatch Exchange (*.ase);;Corel Painter Swatches (*.txt)",
        "Adobe Color Table (*.act)",
    };
    const int index = int(type);
    return index >= 0 && index < 6 ? filters[index] : nullptr;
}

namespace {

void readBmp(QDataStream &in, ImageInfo &info)
{
    in.setByteOrder(QDataStream::LittleEndian);
    in.skipRawData(14);
    quint32 headerSize = 0;
    qint32 width = 0;
    qint32 height = 0;
    quint16 planes = 0;
    quint16 bitCount = 0;
    in >> headerSize >> width >> height >> planes >> bitCount;
    in.skipRawData(24);
    if (in.status() != QDataStream::Ok)
        return;
    // Top-down files give their height negative.
    info.width = quint16(qAbs(width));
    info.height = quint16(qAbs(height));
    info.format = formatOfDepth(bitCount);
}

void readPng(QDataStream &in, ImageInfo &info)
{
    in.setByteOrder(QDataStream::BigEndian);
    static const char signature[8] = {char(0x89), 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A};
    char head[8] = {};
    if (in.readRawData(head, 8) != 8 || memcmp(head, signature, 8) != 0)
        return;
    in.skipRawData(4);
    char chunk[4] = {};
    if (in.readRawData(chunk, 4) != 4 || memcmp(chunk, "IHDR", 4) != 0)
        return;
    quint32 width = 0;
    quint32 height = 0;
    quint8 depth = 0;
    quint8 colourType = 0;
    in >> width >> height >> depth >> colourType;
    if (in.status() != QDataStream::Ok)
        return;
    switch (colourType) {
    case 2:
        info.format = QImage::Format_RGB32;
        break;
    case 6:
        info.format = QImage::Format_ARGB32;
        break;
    default: // grey, palette, and what else there is
        info.format = QImage::Format_Indexed8;
        break;
    }
    info.width = quint16(width);
    info.height = quint16(height);
}

void readPcx(QDataStream &in, ImageInfo &info)
{
    in.setByteOrder(QDataStream::LittleEndian);
    PcxHeader header;
    in >> header;
    if (in.status() != QDataStream::Ok)
        return;
    info.width = quint16(header.xMax - header.xMin + 1);
    info.height = quint16(header.yMax - header.yMin + 1);
    info.format = formatOfDepth((header.planes * header.bitsPerPixel) & 0xFF);
}

void readGif(QDataStream &in, ImageInfo &info)
{
    in.setByteOrder(QDataStream::LittleEndian);
    char head[6] = {};
    if (in.readRawData(head, 6) != 6 || memcmp(head, "GIF8", 4) != 0)
        return;
    quint16 width = 0;
    quint16 height = 0;
    quint8 flags = 0;
    quint8 background = 0;
    quint8 aspect = 0;
    in >> width >> height >> flags >> background >> aspect;
    if (in.status() != QDataStream::Ok)
        return;
    info.width = width;
    info.height = height;
    info.format = formatOfDepth((flags & 7) + 1);
}

} // namespace

ImageInfo imageInfoFromFile(QIODevice *device, const char *format)
{
    ImageInfo info;
    if (!device || !format || !(device->isReadable() || device->open(QIODevice::ReadOnly)))
        return info;
    QDataStream in(device);
    const QByteArray name(format);
    if (name == "BMP")
        readBmp(in, info);
    else if (name == "PNG")
        readPng(in, info);
    else if (name == "PCX")
        readPcx(in, info);
    else if (name == "GIF")
        readGif(in, info);
    return info;
}

QRect cropImageRect(const QImage &image, int margin)
{
    if (image.isNull())
        return QRect();
    const QImage::Format format = image.format();
    if (format != QImage::Format_Indexed8 && format != QImage::Format_RGB32 && format != QImage::Format_ARGB32
        && format != QImage::Format_ARGB32_Premultiplied)
        return QRect();
    const int width = image.width();
    const int height = image.height();
    int left = 100000;
    int top = 100000;
    int right = 0;
    int bottom = 0;
    auto mark = [&](int x, int y) {
        left = qMin(left, x);
        top = qMin(top, y);
        right = qMax(right, x);
        bottom = qMax(bottom, y);
    };
    if (format == QImage::Format_Indexed8) {
        const QVector<QRgb> table = image.colorTable();
        QVector<bool> clear(256, false);
        bool anyClear = false;
        for (int i = 0; i < table.size() && i < 256; ++i) {
            clear[i] = qAlpha(table.at(i)) == 0;
            anyClear = anyClear || clear[i];
        }
        const uchar background = image.constScanLine(0)[0];
        for (int y = 0; y < height; ++y) {
            const uchar *row = image.constScanLine(y);
            for (int x = 0; x < width; ++x) {
                const uchar index = row[x];
                const bool content = anyClear ? !(index < table.size() && clear[index]) : index != background;
                if (content)
                    mark(x, y);
            }
        }
    } else {
        const bool alpha = format == QImage::Format_ARGB32;
        const QRgb background = reinterpret_cast<const QRgb *>(image.constScanLine(0))[0];
        for (int y = 0; y < height; ++y) {
            const auto *row = reinterpret_cast<const QRgb *>(image.constScanLine(y));
            for (int x = 0; x < width; ++x) {
                if (alpha ? qAlpha(row[x]) != 0 : row[x] != background)
                    mark(x, y);
            }
        }
    }
    if (margin > 0) {
        left = qMax(0, left - margin);
        top = qMax(0, top - margin);
        right = qMin(width - 1, right + margin);
        // Held to the width, not the height: callers clip with QImage::copy.
        bottom = qMin(width - 1, bottom + margin);
    }
    return QRect(QPoint(left, top), QPoint(right, bottom));
}

bool cropImage(QImage &image, QPoint *offset, int margin)
{
    const QRect rect = cropImageRect(image, margin);
    if (rect.isNull() || !rect.isValid())
        return false;
    // Content out to every edge: there is nothing to cut away.
    if (rect.left() < 1 && rect.top() < 1 && rect.right() >= image.width() - 1 && rect.bottom() >= image.height() - 1)
        return false;
    if (offset)
        *offset = rect.topLeft();
    image = image.copy(rect);
    return true;
}

void adaptImageToPalette(QImage &image, const RGBA palette[256])
{
    if (image.isNull())
        return;
    bool transparent = image.format() == QImage::Format_ARGB32;
    if (image.format() == QImage::Format_Indexed8) {
        for (QRgb colour : image.colorTable())
            transparent = transparent || qAlpha(colour) < 255;
    }
    QVector<QRgb> table(256);
    for (int i = 0; i < 256; ++i)
        table[i] = qRgba(palette[i].red, palette[i].green, palette[i].blue, transparent ? palette[i].alpha : 255);

    QImage source;
    if (image.format() == QImage::Format_Indexed8) {
        source = QImage(image.size(), QImage::Format_ARGB32);
        for (int y = 0; y < image.height(); ++y) {
            const uchar *in = image.constScanLine(y);
            auto *out = reinterpret_cast<QRgb *>(source.scanLine(y));
            for (int x = 0; x < image.width(); ++x)
                out[x] = image.color(in[x]);
        }
    } else {
        source = image.convertToFormat(QImage::Format_ARGB32);
    }

    QImage result(image.size(), QImage::Format_Indexed8);
    // Pictures repeat their colours: each colour is matched once.
    QHash<QRgb, uchar> matched;
    for (int y = 0; y < source.height(); ++y) {
        const auto *in = reinterpret_cast<const QRgb *>(source.constScanLine(y));
        uchar *out = result.scanLine(y);
        for (int x = 0; x < source.width(); ++x) {
            const QRgb pixel = in[x];
            auto found = matched.constFind(pixel);
            if (found == matched.constEnd()) {
                const int a = qAlpha(pixel);
                const int r = qRed(pixel);
                const int g = qGreen(pixel);
                const int b = qBlue(pixel);
                int best = 0;
                qint64 bestDistance = -1;
                for (int i = 0; i < 256; ++i) {
                    const RGBA &entry = palette[i];
                    qint64 d = qint64(r - entry.red) * (r - entry.red) + qint64(g - entry.green) * (g - entry.green)
                               + qint64(b - entry.blue) * (b - entry.blue);
                    if (a == 0)
                        d = 0;
                    else if (a < 255)
                        d = (a * d) / 255;
                    const qint64 distance = d + qint64(a - entry.alpha) * (a - entry.alpha);
                    if (bestDistance < 0 || distance < bestDistance) {
                        bestDistance = distance;
                        best = i;
                    }
                }
                found = matched.insert(pixel, uchar(best));
            }
            out[x] = found.value();
        }
    }
    result.setColorTable(table);
    image = result;
}

} // namespace Ovra
