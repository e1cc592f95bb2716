#pragma once

// Not part of the interface: the filters themselves, for resizeImage, tests and benchmarks.
#include "foundation/global.h"

namespace Ovra {

// The hqNx magnification filters over 32-bit pixels (0xAARRGGBB). `source` holds `width` x
// `height` pixels without padding; `target` receives N times as many in each direction,
// its rows `bytesPerLine` bytes apart. Neighbours outside the picture are the nearest
// pixel inside it. Colours are compared without alpha; blends weigh alpha like the rest.
OVRA_EXPORT void hq2x(const quint32 *source, quint32 *target, int width, int height, int bytesPerLine);
OVRA_EXPORT void hq3x(const quint32 *source, quint32 *target, int width, int height, int bytesPerLine);
OVRA_EXPORT void hq4x(const quint32 *source, quint32 *target, int width, int height, int bytesPerLine);

} // namespace Ovra
