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

// The same by the given rules. Complete: a GIF's picture always comes in Format_Indexed8
// over its own colour map where it has one, transparent only where a graphic control
// block says so, and is written with such a block; a true-colour picture with
// transparency goes to BMP with its alpha.
OVRA_EXPORT bool loadImage(QIODevice *device, const char *format, QImage &image, CodecRules rules);
OVRA_EXPORT bool saveImage(QIODevice *device, const char *format, const QImage &image, CodecRules rules);

} // namespace Ovra
