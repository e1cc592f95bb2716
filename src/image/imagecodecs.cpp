#include "image/imagecodecs.h"

#include "engine/extension.h"
#include "engine/extensionmanager.h"
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
    for (Extension *extension : ExtensionManager::list(Extension::ImageSaver)) {
        if (name == extension->format() && static_cast<ImageSaverExtension *>(extension)->save(device, image))
            return true;
    }
    return false;
}

} // namespace Ovra
