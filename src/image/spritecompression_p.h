#pragma once

// Not part of the interface: the plain exhaustive match search that saveLZ5 must give
// the same bytes as, and the RLE8 loader with a chosen way of decoding, for tests, fuzz
// targets and benchmarks to hold the fast ways against the careful one.
#include "foundation/global.h"

class QIODevice;
class QImage;

namespace Ovra {

OVRA_EXPORT bool saveLZ5Exhaustive(const QImage &image, QIODevice *device);

// How loadRLE8 decodes. Careful takes one item at a time with every bound checked; the
// others decode whole blocks of the stream far from its end and the picture's, and leave
// the last items to the careful loop. Every way gives the same result, pixels and consumed
// bytes for every stream.
enum class DecodePath {
    Careful,
    Portable, // plain C++ with word stores
    Avx2,
    Avx512,
};

// Whether this processor can run the path (Careful and Portable always can).
OVRA_EXPORT bool decodePathAvailable(DecodePath path);
// The fastest path available, which loadRLE8 uses.
OVRA_EXPORT DecodePath fastestDecodePath();

// loadRLE8 by the path given; false without reading when it isn't available.
OVRA_EXPORT bool loadRLE8Using(DecodePath path, QImage &image, QIODevice *device);

} // namespace Ovra
