#pragma once

// Not part of the interface: the plain exhaustive match search that saveLZ5 must give
// the same bytes as, for tests and benchmarks to hold it against.
#include "foundation/global.h"

class QIODevice;
class QImage;

namespace Ovra {

OVRA_EXPORT bool saveLZ5Exhaustive(const QImage &image, QIODevice *device);

} // namespace Ovra
