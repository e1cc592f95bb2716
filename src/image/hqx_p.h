#pragma once

// Not part of the interface: the filters themselves, for resizeImage, tests and benchmarks.
#include "foundation/global.h"

namespace Ovra {

// The hqNx magnification filters over 32-bit pixels. `source` holds `width` x `height`
// pixels without padding; `target` receives N times as many in each direction, its rows
// `bytesPerLine` bytes apart. Neighbours outside the picture are the pixel itself.
OVRA_EXPORT void hq2x(const quint32 *source, quint32 *target, int width, int height, int bytesPerLine);

} // namespace Ovra
