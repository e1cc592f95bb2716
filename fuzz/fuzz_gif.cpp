#include "image/gifimage.h"
#include "image/imagecodecs.h"

#include <QBuffer>

#include <cstdint>
#include <cstdlib>

// The whole input is a GIF file: read as an animation, then as a single picture, by
// each of the rules. Every
// picture that comes out has the size its descriptor gave and a format the reader makes.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    QByteArray file(reinterpret_cast<const char *>(data), int(size));
    QBuffer buffer(&file);
    buffer.open(QIODevice::ReadOnly);
    Ovra::GIFImage gif;
    gif.load(&buffer);
    for (const Ovra::GIFImage::SubImage &sub : gif.images()) {
        const QImage::Format format = sub.image.format();
        if (!sub.image.isNull() && format != QImage::Format_Indexed8 && format != QImage::Format_Mono)
            std::abort();
    }
    buffer.seek(0);
    QImage image;
    Ovra::loadImage(&buffer, "GIF", image);
    // By the complete rules every picture is indexed, whatever the header says.
    buffer.seek(0);
    gif.load(&buffer, Ovra::CodecRules::Complete);
    for (const Ovra::GIFImage::SubImage &sub : gif.images()) {
        if (!sub.image.isNull() && sub.image.format() != QImage::Format_Indexed8)
            std::abort();
    }
    buffer.seek(0);
    QImage complete;
    Ovra::loadImage(&buffer, "GIF", complete, Ovra::CodecRules::Complete);
    return 0;
}
