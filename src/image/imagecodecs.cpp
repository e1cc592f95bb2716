#include "image/imagecodecs.h"

#include "engine/extension.h"
#include "engine/extensionmanager.h"
#include "image/gifimage.h"
#include "image/pcxpng.h"

#include <QImage>
#include <QIODevice>

#include <cstring>

namespace Ovra {

namespace {

// The first picture of a GIF with its colours, opaque but for its transparent entry. By
// the designed rule the global map comes first and the picture's own map only without
// one; by the complete rule the picture's own map comes first, as it stands for it.
bool loadGifPicture(QIODevice *device, QImage &image, CodecRules rules)
{
    GIFImage gif;
    if (!gif.load(device, rules) || gif.images().isEmpty())
        return false;
    const GIFImage::SubImage &first = gif.images().first();
    const bool ownFirst = rules == CodecRules::Complete && !first.colorMap.isEmpty();
    const QVector<RGB> &colors = gif.globalColorMap().isEmpty() || ownFirst ? first.colorMap : gif.globalColorMap();
    QVector<QRgb> table;
    table.reserve(colors.size());
    for (const RGB &color : colors)
        table.append(color.toQRgb());
    if (first.transparentIndex >= 0 && first.transparentIndex < table.size())
        table[first.transparentIndex] &= 0x00FFFFFF;
    image = first.image;
    image.setColorTable(table);
    return true;
}

// A GIF has one transparent index: pixels of other clear entries go to it, so that
// every pixel clear in the picture is clear in the file.
QImage withOneClearIndex(const QImage &image, int clearIndex)
{
    const QVector<QRgb> table = image.colorTable();
    bool others = false;
    for (int i = clearIndex + 1; clearIndex >= 0 && i < table.size(); ++i)
        others = others || qAlpha(table.at(i)) == 0;
    if (!others)
        return image;
    QImage result = image;
    for (int y = 0; y < result.height(); ++y) {
        uchar *row = result.scanLine(y);
        for (int x = 0; x < result.width(); ++x) {
            if (row[x] < table.size() && qAlpha(table.at(row[x])) == 0)
                row[x] = uchar(clearIndex);
        }
    }
    return result;
}

bool saveGifPicture(QIODevice *device, const QImage &image, CodecRules rules)
{
    // A true-colour picture finds its 255 colours the way exported animations do.
    if (image.format() != QImage::Format_Indexed8 && image.format() != QImage::Format_Mono)
        return saveGIF(device, {AnimImageFrame{image, 0, 0, 0}}, 1, 1, false, false, rules);
    GIFImage gif(quint16(image.width()), quint16(image.height()), false);
    GIFImage::SubImage sub;
    sub.image = image;
    for (QRgb entry : image.colorTable()) {
        gif.globalColorMap().append(RGB(entry));
        if (sub.transparentIndex < 0 && qAlpha(entry) == 0)
            sub.transparentIndex = qint16(gif.globalColorMap().size() - 1);
    }
    if (rules == CodecRules::Complete && image.format() == QImage::Format_Indexed8)
        sub.image = withOneClearIndex(image, sub.transparentIndex);
    gif.images().append(sub);
    return gif.save(device, rules);
}

// A picture as the library works on it: indexed, RGB32 or ARGB32. Monochrome and grey
// pictures become indexed over their own colours, so no pixel changes.
QImage inWorkingFormat(const QImage &image)
{
    switch (image.format()) {
    case QImage::Format_Indexed8:
    case QImage::Format_RGB32:
    case QImage::Format_ARGB32:
        return image;
    case QImage::Format_Mono:
    case QImage::Format_MonoLSB:
        return image.convertToFormat(QImage::Format_Indexed8);
    case QImage::Format_Grayscale8: {
        QImage indexed(image.size(), QImage::Format_Indexed8);
        QVector<QRgb> greys(256);
        for (int i = 0; i < 256; ++i)
            greys[i] = qRgb(i, i, i);
        indexed.setColorTable(greys);
        for (int y = 0; y < image.height(); ++y)
            memcpy(indexed.scanLine(y), image.constScanLine(y), size_t(image.width()));
        return indexed;
    }
    default:
        return image.convertToFormat(image.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    }
}

bool hasTransparency(const QImage &image)
{
    if (!image.hasAlphaChannel() || image.format() == QImage::Format_Indexed8)
        return false;
    const QImage argb = image.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < argb.height(); ++y) {
        const auto *row = reinterpret_cast<const QRgb *>(argb.constScanLine(y));
        for (int x = 0; x < argb.width(); ++x) {
            if (qAlpha(row[x]) != 255)
                return true;
        }
    }
    return false;
}

void appendLittle(QByteArray &bytes, quint32 value, int size)
{
    for (int i = 0; i < size; ++i)
        bytes.append(char((value >> (8 * i)) & 0xFF));
}

// A bottom-up 32-bit bitmap with a version 4 header whose masks place the alpha byte
// too, so that readers keep the transparency that a plain 24-bit bitmap drops.
bool saveBmpWithAlpha(QIODevice *device, const QImage &image)
{
    const QImage argb = image.convertToFormat(QImage::Format_ARGB32);
    const quint32 pixelBytes = quint32(argb.width()) * quint32(argb.height()) * 4;
    const quint32 offset = 14 + 108;
    QByteArray bytes("BM");
    appendLittle(bytes, offset + pixelBytes, 4);
    appendLittle(bytes, 0, 4);
    appendLittle(bytes, offset, 4);
    appendLittle(bytes, 108, 4); // the header's size
    appendLittle(bytes, quint32(argb.width()), 4);
    appendLittle(bytes, quint32(argb.height()), 4);
    appendLittle(bytes, 1, 2);  // planes
    appendLittle(bytes, 32, 2); // bits a pixel
    appendLittle(bytes, 3, 4);  // bit fields
    appendLittle(bytes, pixelBytes, 4);
    appendLittle(bytes, 2835, 4); // 72 dots an inch
    appendLittle(bytes, 2835, 4);
    appendLittle(bytes, 0, 4);
    appendLittle(bytes, 0, 4);
    for (quint32 mask : {0x00FF0000u, 0x0000FF00u, 0x000000FFu, 0xFF000000u})
        appendLittle(bytes, mask, 4);
    bytes.append("BGRs");                 // the colour space: sRGB, told backwards
    bytes.append(QByteArray(48, '\0')); // end points and gamma, unused for sRGB
    for (int y = argb.height() - 1; y >= 0; --y) {
        const auto *row = reinterpret_cast<const QRgb *>(argb.constScanLine(y));
        for (int x = 0; x < argb.width(); ++x)
            appendLittle(bytes, row[x], 4);
    }
    return device->write(bytes) == bytes.size();
}

// The picture by the complete rule: a picture in a format the library doesn't work on is
// brought to one first, true colour with transparency goes to BMP with its alpha, and PCX,
// which holds none, takes opaque true colour as three planes and refuses transparency.
bool saveComplete(QIODevice *device, const QByteArray &name, const QImage &original)
{
    const QImage image = inWorkingFormat(original);
    const bool transparent = hasTransparency(image);
    if (name == "BMP" && transparent)
        return saveBmpWithAlpha(device, image);
    if (name == "PNG" || name == "BMP")
        return image.save(device, name.constData(), -1);
    if (name == "PCX") {
        if (transparent)
            return false;
        return savePCX(image.format() == QImage::Format_Indexed8 ? image : image.convertToFormat(QImage::Format_RGB32),
                       device);
    }
    return saveGifPicture(device, image, CodecRules::Complete);
}

} // namespace

bool loadImage(QIODevice *device, const char *format, QImage &image)
{
    return loadImage(device, format, image, CodecRules::Designed);
}

bool loadImage(QIODevice *device, const char *format, QImage &image, CodecRules rules)
{
    if (!device || !device->isReadable() || !format)
        return false;
    const QByteArray name(format);
    if (name == "PNG" || name == "BMP") {
        image.load(device, format);
        // In a format the library works on first, by the complete rule: the designed
        // clearing below takes a row of less than a byte for none, and monochrome
        // pictures would lose their pixels.
        if (rules == CodecRules::Complete)
            image = inWorkingFormat(image);
        // Two equal pictures are equal byte by byte too: the row padding is cleared.
        const int used = image.isNull() ? 0 : (image.width() * image.depth()) / 8;
        if (!image.isNull() && used < image.bytesPerLine()) {
            for (int y = 0; y < image.height(); ++y)
                memset(image.scanLine(y) + used, 0, size_t(image.bytesPerLine() - used));
        }
    } else if (name == "PCX") {
        loadPCX(image, device, nullptr);
    } else if (name == "GIF") {
        loadGifPicture(device, image, rules);
    } else {
        for (Extension *extension : ExtensionManager::list(Extension::ImageLoader)) {
            if (name == extension->format() && static_cast<ImageLoaderExtension *>(extension)->load(device, image))
                break;
        }
    }
    return !image.isNull();
}

bool saveImage(QIODevice *device, const char *format, const QImage &image)
{
    return saveImage(device, format, image, CodecRules::Designed);
}

bool saveImage(QIODevice *device, const char *format, const QImage &image, CodecRules rules)
{
    if (image.isNull() || !device || !device->isWritable() || !format)
        return false;
    const QByteArray name(format);
    if (rules == CodecRules::Complete && (name == "PNG" || name == "BMP" || name == "PCX" || name == "GIF"))
        return saveComplete(device, name, image);
    if (name == "PNG" || name == "BMP")
        return image.save(device, format, -1);
    if (name == "PCX")
        return savePCX(image, device);
    if (name == "GIF")
        return saveGifPicture(device, image, rules);
    for (Extension *extension : ExtensionManager::list(Extension::ImageSaver)) {
        if (name == extension->format() && static_cast<ImageSaverExtension *>(extension)->save(device, image))
            return true;
    }
    return false;
}

} // namespace Ovra
