#pragma once

#include "foundation/global.h"

class QIODevice;
class QImage;

namespace Ovra {

// Whole PCX files: 8-bit indexed in one plane (with the 256-colour block at the end, or
// the 16 colours of the header), 24 and 32-bit in three or four planes. The size in the
// file replaces the image's. `hasPalette` says whether an 8-bit file brought its
// 256-colour block; it may be null.
OVRA_EXPORT bool loadPCX(QImage &image, QIODevice *device, bool *hasPalette);
// Indexed images get their colour table without alpha: index 0 is transparent by place
// alone, and the reader's caller makes it so again.
OVRA_EXPORT bool savePCX(const QImage &image, QIODevice *device);

// PNG through Qt's handler, which keeps an indexed image's table with its alpha.
// loadPNG answers true once the device is open: the caller looks at the image.
OVRA_EXPORT bool loadPNG(QImage &image, QIODevice *device);
OVRA_EXPORT bool savePNG(const QImage &image, QIODevice *device);

} // namespace Ovra
