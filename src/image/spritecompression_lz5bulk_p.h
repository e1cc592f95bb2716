#pragma once

// The bulk decoder behind loadLZ5. It decodes the part of a stream that lies far from the
// end of the stream and from the end of the picture, where every packet may read a few bytes
// ahead of itself and write a whole vector past its last pixel, and stops at a packet
// boundary; the careful loop in spritecompression.cpp goes on from there with the state
// handed back, so every rule about short streams, full pictures and bad distances lives in
// one place.
#include "image/spritecompression_p.h"

#include <QtGlobal>

namespace Ovra {

// Where an LZ5 decoder stands between two packets.
struct Lz5Cursor
{
    const uchar *p = nullptr; // the next byte of the stream
    const uchar *end = nullptr; // one past the stream's last byte
    uchar *o = nullptr; // the next pixel
    uchar *start = nullptr; // the first pixel: copies may not reach before it
    uchar *last = nullptr; // one past the last pixel
    int packetIndex = 0; // of the packet at p in its group of eight
    quint8 control = 0; // the group's control byte, when packetIndex > 0
    int shortCopies = 0; // short copies of the current group of four seen so far
    quint8 spread = 0; // the fourth short copy's distance bits gathered from the others
};

namespace SpriteBulk {

// Decodes whole packets from `cursor` on (which must stand at a group's control byte) by the
// path given, and leaves it at the packet the careful loop must take next. Pixels at and
// behind the final cursor.o may hold scratch bytes; nothing is written at or past `last`, and
// nothing is read at or past `end`.
void decodeLz5(DecodePath path, Lz5Cursor &cursor);

} // namespace SpriteBulk

// The path loadLZ5 takes: the fastest available.
OVRA_EXPORT DecodePath fastestLz5Path();

// loadLZ5 by the path given (Avx512 runs the Avx2 code); false without reading when the
// path isn't available.
OVRA_EXPORT bool loadLZ5Using(DecodePath path, QImage &image, QIODevice *device);

} // namespace Ovra
