#include "image/spritecompression.h"
#include "image/spritecompression_lz5bulk_p.h"
#include "streamtarget.h"

#include <cstring>

// The loader writes the first `width` bytes of each row, whatever the format; the rest of a
// fresh picture is uninitialised.
static bool samePixels(const QImage &a, const QImage &b)
{
    for (int y = 0; y < a.height(); ++y) {
        if (memcmp(a.constScanLine(y), b.constScanLine(y), size_t(a.width())) != 0)
            return false;
    }
    return true;
}

// Each path decodes the stream, and each must leave what the careful loop leaves: the result,
// the pixels and the bytes read.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 2)
        return 0;
    QImage careful;
    bool carefulOk = false;
    qint64 carefulRead = 0;
    for (Ovra::DecodePath path : {Ovra::DecodePath::Careful, Ovra::DecodePath::Portable, Ovra::DecodePath::Avx2}) {
        if (!Ovra::decodePathAvailable(path))
            continue;
        QImage image;
        bool ok = false;
        qint64 read = 0;
        decodeStream(data, size, [&](QImage &target, QIODevice *device) {
            ok = Ovra::loadLZ5Using(path, target, device);
            read = device->pos();
            image = target;
            return ok;
        });
        if (path == Ovra::DecodePath::Careful) {
            careful = image;
            carefulOk = ok;
            carefulRead = read;
        } else if (ok != carefulOk || read != carefulRead || !samePixels(image, careful)) {
            std::abort();
        }
    }
    return 0;
}
