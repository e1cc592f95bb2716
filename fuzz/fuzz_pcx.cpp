#include "image/pcxpng.h"

#include <QBuffer>
#include <QImage>

#include <cstdint>
#include <cstdlib>

// A whole file: the decoder may replace the image by one of the size the header gives,
// or leave it null; it must never reach outside what it made.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    QByteArray file(reinterpret_cast<const char *>(data), int(size));
    QBuffer buffer(&file);
    QImage image(4, 4, QImage::Format_Indexed8);
    bool hasPalette = false;
    const bool loaded = Ovra::loadPCX(image, &buffer, &hasPalette);
    if (loaded && image.isNull())
        std::abort();
    return 0;
}
