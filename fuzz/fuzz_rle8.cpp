#include "image/spritecompression.h"
#include "streamtarget.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    return decodeStream(data, size, [](QImage &image, QIODevice *device) { return Ovra::loadRLE8(image, device); });
}
