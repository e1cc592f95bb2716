#pragma once

#include "foundation/global.h"

class QImage;
class QIODevice;

namespace Ovra {

// Reads an image by format name ("PNG", "BMP", "PCX", or what an image-loading extension
// serves). True when an image came out.
OVRA_EXPORT bool loadImage(QIODevice *device, const char *format, QImage &image);
// Writes an image by format name; false for a null image or an unwritable device.
OVRA_EXPORT bool saveImage(QIODevice *device, const char *format, const QImage &image);

} // namespace Ovra
