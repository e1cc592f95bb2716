#include "image/spritecompression_lz5bulk_p.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
#define OVRA_LZ5_X86 1
#define OVRA_LZ5_TARGET(features) __attribute__((target(features)))
#endif

#if defined(__GNUC__) || defined(__clang__)
#define OVRA_LZ5_INLINE inline __attribute__((always_inline))
#define OVRA_LZ5_NOINLINE __attribute__((noinline))
#else
#define OVRA_LZ5_INLINE inline
#define OVRA_LZ5_NOINLINE
#endif

namespace Ovra {
namespace SpriteBulk {
namespace {

// A textured sprite is mostly packets of one to six pixels. A loop that stores exactly each
// packet's pixels spends its time on branches over the length and the form of the packet.
// Here every packet moves one whole 32-byte chunk, from the colour's row of a table for a
// run or from earlier output for a copy, and the output moves on by the packet's length;
// the next packet's chunk overwrites what this one wrote past its end. A run's length and
// size in the stream are worked out without a branch; copies, a fifth of the packets, take
// one. Only packets longer than a chunk, and copies that overlap their own output, take a
// loop of their own.

constexpr size_t Chunk = 32;
constexpr size_t MaxPacketPixels = 263;
// Room a packet needs in front of it: its pixels rounded up to whole chunks.
constexpr size_t OutputSlack = (MaxPacketPixels + Chunk - 1) / Chunk * Chunk;
// A control byte and eight packets of at most three bytes, the last of which reads its
// three bytes whatever its form.
constexpr ptrdiff_t GroupBytes = 1 + 8 * 3;

// Each colour of a run packet repeated over a chunk, so that a run is a copy from here.
struct ColourRows
{
    constexpr ColourRows()
        : rows()
    {
        for (int colour = 0; colour < 32; ++colour)
            for (size_t k = 0; k < Chunk; ++k)
                rows[colour][k] = uchar(colour);
    }
    alignas(64) uchar rows[32][Chunk];
};

constexpr ColourRows colours;

#if defined(__GNUC__) || defined(__clang__)
// A chunk in registers: one 32-byte register where the code is built for one, two halves
// otherwise. Unaligned, and allowed to alias the picture's bytes.
typedef uchar ChunkRegister __attribute__((vector_size(Chunk), aligned(1), may_alias));

OVRA_LZ5_INLINE void moveChunk(uchar *to, const uchar *from)
{
    // Loaded whole before it is stored: the chunk may overlap its source.
    const ChunkRegister chunk = *reinterpret_cast<const ChunkRegister *>(from);
    *reinterpret_cast<ChunkRegister *>(to) = chunk;
}
#else
OVRA_LZ5_INLINE void moveChunk(uchar *to, const uchar *from)
{
    quint64 words[Chunk / 8];
    memcpy(words, from, Chunk);
    memcpy(to, words, Chunk);
}
#endif

// The rare packets. A copy from closer behind than its length reads again the pixels it
// has just written, as the stream means it to.
OVRA_LZ5_NOINLINE void moveOverlapping(uchar *o, size_t distance, size_t length)
{
    const uchar *from = o - distance;
    for (size_t k = 0; k < length; ++k)
        o[k] = from[k];
}

// A packet longer than a chunk. A copy of it comes from at least its length behind, so every
// chunk it reads is final; a run reads its colour's row over and over.
OVRA_LZ5_NOINLINE void moveLong(uchar *o, const uchar *from, size_t length, bool copy)
{
    const size_t step = copy ? Chunk : 0;
    for (size_t k = 0; k < length; k += Chunk)
        moveChunk(o + k, from + (k / Chunk) * step);
}

// The lengths and distances of copy packets, with the short copies' shared distance bits.
struct CopyState
{
    unsigned shortCopies;
    unsigned spread;
};

// A copy packet from its first three bytes: its length, distance and stream bytes, with
// few branches (long and short forms, and the fourth short copy, come mixed).
OVRA_LZ5_INLINE void readCopy(size_t b0, size_t b1, size_t b2, CopyState &state, size_t &length, size_t &distance,
                              size_t &advance)
{
    const bool copyLong = (b0 & 0x3F) == 0;
    const bool fourth = state.shortCopies == 3;
    const size_t shortByte = fourth ? (state.spread | (b0 >> 6)) : b1;
    length = copyLong ? b2 + 3 : (b0 & 0x3F) + 1;
    distance = (copyLong ? (((b0 & 0xC0) << 2) | b1) : shortByte) + 1;
    advance = copyLong ? 3 : 2 - size_t(fourth);
    const unsigned spread = fourth ? 0 : state.spread | unsigned((b0 >> 6) << (6 - 2 * state.shortCopies));
    state.spread = copyLong ? state.spread : spread;
    state.shortCopies = copyLong ? state.shortCopies : (state.shortCopies + 1) & 3;
}

OVRA_LZ5_INLINE void decodeGroups(Lz5Cursor &cursor)
{
    // In locals: the stores into the picture could otherwise alias the cursor's fields.
    const uchar *p = cursor.p;
    const uchar *const end = cursor.end;
    uchar *o = cursor.o;
    uchar *const start = cursor.start;
    if (size_t(cursor.last - o) < OutputSlack)
        return;
    // Packets may start up to here: in front of it lies room for the longest.
    uchar *const lastStart = cursor.last - OutputSlack;
    CopyState state{unsigned(cursor.shortCopies), cursor.spread};
    int stoppedAt = 0;
    unsigned control = 0;
    while (end - p >= GroupBytes) {
        control = p[0];
        const uchar *q = p + 1;
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC unroll 8
#endif
        for (stoppedAt = 0; stoppedAt < 8; ++stoppedAt) {
            if (o > lastStart)
                break;
            const size_t b0 = q[0];
            const size_t b1 = q[1];
            // A run: one or two bytes, from the colour's row.
            const bool runLong = b0 < 32;
            size_t length = runLong ? b1 + 8 : b0 >> 5;
            size_t advance = 1 + size_t(runLong);
            const uchar *from = colours.rows[b0 & 0x1F];
            const bool copy = (control >> stoppedAt) & 1;
            if (copy) {
                CopyState next = state;
                size_t distance = 0;
                readCopy(b0, b1, q[2], next, length, distance, advance);
                // A copy from before the picture's start: the careful loop's.
                if (distance > size_t(o - start))
                    break;
                state = next;
                from = o - distance;
                if (distance < length) {
                    moveOverlapping(o, distance, length);
                    o += length;
                    q += advance;
                    continue;
                }
            }
            if (length > Chunk)
                moveLong(o, from, length, copy);
            else
                moveChunk(o, from);
            o += length;
            q += advance;
        }
        if (stoppedAt < 8) {
            // Before the group's first packet the careful loop reads the control byte again.
            if (stoppedAt > 0)
                p = q;
            break;
        }
        p = q;
        stoppedAt = 0;
    }
    cursor.p = p;
    cursor.o = o;
    cursor.packetIndex = stoppedAt;
    cursor.control = quint8(stoppedAt > 0 ? control : 0);
    cursor.shortCopies = int(state.shortCopies);
    cursor.spread = quint8(state.spread);
}

void decodePortable(Lz5Cursor &cursor)
{
    decodeGroups(cursor);
}

#ifdef OVRA_LZ5_X86
// The same code with whole 32-byte registers for the chunks.
OVRA_LZ5_TARGET("avx2") void decodeAvx2(Lz5Cursor &cursor)
{
    decodeGroups(cursor);
}
#endif

} // namespace

void decodeLz5(DecodePath path, Lz5Cursor &cursor)
{
    if (cursor.packetIndex != 0)
        return;
    switch (path) {
    case DecodePath::Careful:
        return;
#ifdef OVRA_LZ5_X86
    case DecodePath::Avx2:
    case DecodePath::Avx512:
        return decodeAvx2(cursor);
#endif
    default:
        return decodePortable(cursor);
    }
}

} // namespace SpriteBulk
} // namespace Ovra
