#include "image/imagecodecs.h"

#include "engine/extension.h"
#include "engine/extensionmanager.h"
#include "image/gifimage.h"
#include "image/pcxpng.h"

#include <QImage>
#include <QIODevice>

#include <cstring>

namespace Ovra {

bool loadImage(QIODevice *device, const char *format, QImage &image)
{
    if (!device || !device->isReadable() || !format)
        return false;
    const QByteArray name(format);
    if (name == "PNG" || name == "BMP") {
        image.load(device, format);
        // Two equal pictures are equal byte by byte too: the row padding is cleared.
        const int used = image.isNull() ? 0 : (image.width() * image.depth()) / 8;
        if (!image.isNull() && used < image.bytesPerLine()) {
            for (int y = 0; y < image.height(); ++y)
                memset(image.scanLine(y) + used, 0, size_t(image.bytesPerLine() - used));
        }
    } else if (name == "PCX") {
        loadPCX(image, device, nullptr);
    } else if (name == "GIF") {
        // The first picture alone, with opaque colours but for its transparent entry.
        GIFImage gif;
        if (gif.load(device) && !gif.images().isEmpty()) {
            const GIFImage::SubImage &first = gif.images().first();
            const QVector<RGB> &colors = gif.globalColorMap().isEmpty() ? first.colorMap : gif.globalColorMap();
            QVector<QRgb> table;
            table.reserve(colors.size());
            for (const RGB &color : colors)
                table.append(color.toQRgb());
            if (first.transparentIndex >= 0 && first.transparentIndex < table.size())
                table[first.transparentIndex] &= 0x00FFFFFF;
            image = first.image;
            image.setColorTable(table);
        }
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
    if (image.isNull() || !device || !device->isWritable() || !format)
        return false;
    const QByteArray name(format);
    if (name == "PNG" || name == "BMP")
        return image.save(device, format, -1);
    if (name == "PCX")
        return savePCX(image, device);
    if (name == "GIF") {
        // A true-colour picture finds its 255 colours the way exported animations do.
        if (image.format() != QImage::Format_Indexed8 && image.format() != QImage::Format_Mono)
            return saveGIF(device, {AnimImageFrame{image, 0, 0, 0}}, 1, 1, false, false);
        GIFImage gif(quint16(image.width()), quint16(image.height()), false);
        GIFImage::SubImage sub;
        sub.image = image;
        for (QRgb entry : image.colorTable()) {
            gif.globalColorMap().append(RGB(entry));
            if (sub.transparentIndex < 0 && qAlpha(entry) == 0)
                sub.transparentIndex = qint16(gif.globalColorMap().size() - 1);
        }
        gif.images().append(sub);
        return gif.save(device);
    }
    for (Extension *extension : ExtensionManager::list(Extension::ImageSaver)) {
        if (name == extension->format() && static_cast<ImageSaverExtension *>(extension)->save(device, image))
            return true;
    }
    return false;
}

} // namespace Ovra
