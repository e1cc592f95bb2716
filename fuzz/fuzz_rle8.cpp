#include "image/spritecompression.h"
#include "image/spritecompression_p.h"
#include "streamtarget.h"

#include <cstring>

// Besides the checks of every stream target, each way of decoding must leave the same
// result, picture bytes and read position as the careful one.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    QByteArray careful;
    qint64 carefulRead = 0;
    bool carefulResult = false;
    const Ovra::DecodePath paths[] = {Ovra::DecodePath::Careful, Ovra::DecodePath::Portable, Ovra::DecodePath::Avx2,
                                      Ovra::DecodePath::Avx512};
    for (Ovra::DecodePath path : paths) {
        if (!Ovra::decodePathAvailable(path))
            continue;
        decodeStream(data, size, [&](QImage &image, QIODevice *device) {
            memset(image.bits(), 0xAA, size_t(image.sizeInBytes()));
            const bool result = Ovra::loadRLE8Using(path, image, device);
            const QByteArray bytes(reinterpret_cast<const char *>(image.constBits()), int(image.sizeInBytes()));
            if (path == Ovra::DecodePath::Careful) {
                careful = bytes;
                carefulRead = device->pos();
                carefulResult = result;
            } else if (bytes != careful || device->pos() != carefulRead || result != carefulResult) {
                std::abort();
            }
            return result;
        });
    }
    return 0;
}
