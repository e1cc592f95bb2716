#pragma once

// The bulk decoder behind loadRLE8. It takes the part of a stream that lies far from the end
// of the stream and from the end of the output, where whole vectors may be read and written
// past the current item without a check, and stops at an item boundary; the careful loop in
// spritecompression.cpp goes on from there, so the rules at both ends (short streams, full
// pictures) live in one place.
#include "image/spritecompression_p.h"

#include <QtGlobal>

namespace Ovra {
namespace SpriteBulk {

// RLE8 from `in` into the contiguous bytes from `out` to `outEnd`. Advances `in` and `out`
// to where the careful loop must go on; bytes at and behind the final `out` keep their
// contents.
void decodeRle8(DecodePath path, const uchar *&in, const uchar *inEnd, uchar *&out, uchar *outEnd);

} // namespace SpriteBulk
} // namespace Ovra
