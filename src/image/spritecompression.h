#pragma once

#include "foundation/global.h"

class QIODevice;
class QImage;

namespace Ovra {

// Raw pixel streams of sprites, for engine extensions that keep sprites in container
// files of their own. A stream has no header, size or end marker: the container knows
// the image's size and format and hands over an image of that size and a device placed
// on the stream. A loader stops when the image is full or the device ends, leaves the
// bytes behind the stream unread, never resizes the image or touches its colours, and
// answers false when the device can't be opened or the stream ends inside a packet.
// A device that isn't open yet is opened (for reading, or for writing).

// Run and back-reference packets over 32 colours, grouped under control bytes.
OVRA_EXPORT bool loadLZ5(QImage &image, QIODevice *device);
// With `lz` false only runs are written (control bytes all zero); with it, copies of
// earlier pixels are searched as well. Pixels must be below 32.
OVRA_EXPORT bool saveLZ5(const QImage &image, QIODevice *device, bool lz);

// Runs over 32 colours. There is no encoder: saveRLE5 writes nothing and is false.
OVRA_EXPORT bool loadRLE5(QImage &image, QIODevice *device);
OVRA_EXPORT bool saveRLE5(const QImage &image, QIODevice *device);

// Runs over the image's raw bytes, marked by the top bits 01.
OVRA_EXPORT bool loadRLE8(QImage &image, QIODevice *device);
OVRA_EXPORT bool saveRLE8(const QImage &image, QIODevice *device);

} // namespace Ovra
