#include "image/spritecompression_lz5bulk_p.h"

#include <cstddef>
#include <cstdint>
#include <algorithm>
#include <cstring>

#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
#define OVRA_LZ5_X86 1
#define OVRA_LZ5_TARGET(features) __attribute__((target(features)))
#include <immintrin.h>
#endif

#if defined(__GNUC__) || defined(__clang__)
#define OVRA_LZ5_INLINE inline __attribute__((always_inline))
#define OVRA_LZ5_NOINLINE __attribute__((noinline))
#else
#define OVRA_LZ5_INLINE inline
#define OVRA_LZ5_NOINLINE
#endif

// Loops over the eight packets of a group are written out whole.
#if defined(__GNUC__) && !defined(__clang__)
#define OVRA_LZ5_UNROLL _Pragma("GCC unroll 8")
#elif defined(__clang__)
#define OVRA_LZ5_UNROLL _Pragma("unroll 8")
#else
#define OVRA_LZ5_UNROLL
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
        OVRA_LZ5_UNROLL
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

// The groups of eight packets with the wide vector instructions. A loop that finds each packet
// by reading the one before waits on that read every time, and a loop that decodes packets one
// by one pays for the branches between the forms. Here the group's bytes are first looked at
// all at once: which of them would start a long form, for a run and for a copy. Walking the
// group then needs no read from memory to find the next packet, only a shift of those bits.
// With the eight packets' places known, their first three bytes come out of the group's bytes
// by three shuffles, and their lengths, distances, places in the output and sources are
// worked out side by side for all eight. What is left for each packet is one chunk loaded
// and stored. A group with a packet longer than a chunk or a copy that overlaps its own
// output takes its packets one by one.

#define OVRA_LZ5_WIDE OVRA_LZ5_TARGET("avx512f,avx512bw,avx512vl,avx512vbmi,bmi2")

// Room a group needs in front of it: seven packets and the last one's chunks.
constexpr size_t GroupSlack = 7 * MaxPacketPixels + OutputSlack;
// The bytes of a group looked at at once, after its control byte: eight packets take at most
// 24, and the last one's first three bytes are read whatever its form.
constexpr ptrdiff_t WindowBytes = 32;

// The short copies' state as the walk carries it: how many of the current four were seen, and
// the top bits of their first bytes shifted in one after another, so that after the fourth
// the low byte is its distance byte.
struct ShortCopyBits
{
    unsigned count;
    unsigned bits;
};

// Where the walk found a group's packets, and what it knows of the short copies among them.
struct GroupWalk
{
    const uchar *window; // the byte after the control byte
    // Byte k: twice the place of packet k's first byte in the window, plus one if packet k is
    // the fourth short copy of its group of four.
    quint8 places[8];
    quint8 fourthBytes[8]; // byte k: the distance byte of packet k if it is a fourth short copy
    ShortCopyBits shortsBefore; // as they stand before the group
    quint32 size; // bytes of the packets
    quint8 control;
};

// Groups walked at a time before their packets are moved.
constexpr int WalkedGroups = 32;

// Bits of `word` spread to the even bits of the result.
OVRA_LZ5_TARGET("bmi2") inline quint64 evenBits(quint32 word)
{
    return _pdep_u64(word, 0x5555555555555555ULL);
}

// The long-form bits of a group's window: bit 2j says a run at byte j has the long form, bit
// 2j + 1 that a copy there has.
struct WindowBits
{
    quint64 longForms;
    quint64 topBits; // bit 2j: bit 7 of byte j
    quint64 nextBits; // bit 2j: bit 6 of byte j
};

OVRA_LZ5_TARGET("avx2,bmi,bmi2") OVRA_LZ5_INLINE WindowBits windowBits(const uchar *w)
{
    const __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(w));
    const __m256i zero = _mm256_setzero_si256();
    const __m256i runs = _mm256_cmpeq_epi8(_mm256_and_si256(bytes, _mm256_set1_epi8(char(0xE0))), zero);
    const __m256i copies = _mm256_cmpeq_epi8(_mm256_and_si256(bytes, _mm256_set1_epi8(0x3F)), zero);
    WindowBits bits;
    bits.longForms = evenBits(quint32(_mm256_movemask_epi8(runs))) | (evenBits(quint32(_mm256_movemask_epi8(copies))) << 1);
    bits.topBits = evenBits(quint32(_mm256_movemask_epi8(bytes)));
    bits.nextBits = evenBits(quint32(_mm256_movemask_epi8(_mm256_slli_epi16(bytes, 1))));
    return bits;
}

// Four two-bit pieces in the opposite order.
struct ReversedPieces
{
    constexpr ReversedPieces()
        : pieces()
    {
        for (int value = 0; value < 256; ++value)
            pieces[value] = uchar((value & 3) << 6 | (value & 0x0C) << 2 | (value & 0x30) >> 2 | (value & 0xC0) >> 6);
    }
    uchar pieces[256];
};

constexpr ReversedPieces reversedPieces;

// Where the packets of a group lie, given which of them are fourth short copies.
struct PlacedPackets
{
    size_t end; // twice the bytes of the packets
    unsigned shortCopies; // bit k: packet k is a short copy
    quint64 starts; // bits 2j and 2j + 1: a packet starts at byte j
};

OVRA_LZ5_TARGET("avx2,bmi,bmi2")
OVRA_LZ5_INLINE PlacedPackets placePackets(unsigned control, quint64 longForms, unsigned fourths, GroupWalk &walk)
{
    size_t at2 = 0; // twice the place of the packet in the window
    unsigned longBits = 0; // bit k: packet k has the long form
    quint64 starts = 0;
    OVRA_LZ5_UNROLL
    for (int k = 0; k < 8; ++k) {
        const unsigned copy = (control >> k) & 1;
        const unsigned fourth = (fourths >> k) & 1;
        // Off the path from one packet to the next: the bits for the packet's kind, and the
        // place after it if it has the short form.
        const quint64 kindForms = longForms >> copy;
        const size_t shortEnd = at2 + 2 + 2 * copy - 2 * fourth;
        const unsigned longForm = unsigned(kindForms >> at2) & 1;
        longBits |= longForm << k;
        starts |= quint64(3) << at2;
        walk.places[k] = quint8(at2 | fourth);
        at2 = shortEnd + 2 * size_t(longForm);
    }
    return PlacedPackets{at2, control & ~longBits & 0xFF, starts};
}

// The short copies that complete a group of four: the (4 - count)th and the (8 - count)th of
// the group's, with `count` seen before it.
OVRA_LZ5_TARGET("bmi2") OVRA_LZ5_INLINE unsigned fourthsAmong(unsigned shortCopies, unsigned count)
{
    return unsigned(_pdep_u32((0x88u >> count) & 0xFF, shortCopies));
}

OVRA_LZ5_TARGET("avx2,bmi,bmi2")
OVRA_LZ5_NOINLINE PlacedPackets placeWithFourths(unsigned control, quint64 longForms, unsigned fourths, unsigned count,
                                                 GroupWalk &walk)
{
    // Each walk is right up to the first fourth it doesn't know of.
    for (;;) {
        const PlacedPackets placed = placePackets(control, longForms, fourths, walk);
        const unsigned found = fourthsAmong(placed.shortCopies, count);
        if (found == fourths)
            return placed;
        fourths = found;
    }
}

// Eight bytes of a bitmap of two bits a stream byte, from the bits of byte `offset` on.
OVRA_LZ5_INLINE quint64 bitsFrom(const quint64 *bitmap, size_t offset)
{
    quint64 bits;
    memcpy(&bits, reinterpret_cast<const uchar *>(bitmap) + offset / 4, 8);
    return bits >> (2 * (offset % 4));
}

// The first pass: finds the packets of up to `count` groups from `p` on, as long as a whole
// window lies in front of each group, and returns how many it walked. Built without the wide
// instructions, which the compiler would use for the single bits here, at a cost in time.
OVRA_LZ5_TARGET("avx2,bmi,bmi2")
OVRA_LZ5_NOINLINE int walkGroups(const uchar *p, const uchar *end, ShortCopyBits &state, GroupWalk *walks, int count)
{
    // The long-form bits and the top bits of the stream ahead, two a byte, worked out before
    // the walk: reading them then takes one load, where working them out for each group in
    // turn would keep the walk waiting.
    constexpr int Chunks = (WalkedGroups * 25 + WindowBytes) / 32 + 1;
    quint64 forms[Chunks + 2];
    quint64 tops[Chunks + 2];
    const uchar *const base = p;
    int chunks = 0;
    for (; chunks < Chunks && end - (base + 32 * chunks) >= 32; ++chunks) {
        const WindowBits bits = windowBits(base + 32 * chunks);
        forms[chunks] = bits.longForms;
        tops[chunks] = bits.nextBits | (bits.topBits << 1);
    }
    const uchar *covered = base + 32 * chunks;
    forms[chunks] = forms[chunks + 1] = 0;
    tops[chunks] = tops[chunks + 1] = 0;
    if (chunks < Chunks && end - base >= 32 && end > covered) {
        // The stream's last bytes: the 32 before its end, with the bits of those already
        // covered shifted out.
        const WindowBits bits = windowBits(end - 32);
        const unsigned shift = unsigned(2 * (32 - (end - covered)));
        forms[chunks] = bits.longForms >> shift;
        tops[chunks] = (bits.nextBits | (bits.topBits << 1)) >> shift;
        covered = end;
    }
    // Groups may start before here: their windows lie in the stream and in the bitmaps.
    const uchar *const limit = covered - WindowBytes;
    ShortCopyBits shorts = state;
    int walked = 0;
    for (; walked < count && p < limit; ++walked) {
        GroupWalk &walk = walks[walked];
        const unsigned control = p[0];
        const uchar *const w = p + 1;
        const size_t offset = size_t(w - base);
        const quint64 longForms = bitsFrom(forms, offset);
        walk.window = w;
        walk.control = quint8(control);
        walk.shortsBefore = shorts;
        // The fourth short copy of a group of four takes one byte where the others take two.
        // The group is walked first as if none of its packets were a fourth, which makes each
        // packet's size depend on one bit alone; if the short copies found complete a group of
        // four, it is walked again with the fourth known, up to twice.
        PlacedPackets placed = placePackets(control, longForms, 0, walk);
        const unsigned found = fourthsAmong(placed.shortCopies, shorts.count);
        if (Q_UNLIKELY(found != 0))
            placed = placeWithFourths(control, longForms, found, shorts.count, walk);
        const unsigned shortCopies = placed.shortCopies;
        const quint64 starts = placed.starts;
        const size_t at2 = placed.end;
        // The top two bits of the short copies' first bytes, newest in the lowest bits, after
        // those of the short copies before the group; a fourth's distance byte is the four
        // pieces up to its own.
        const unsigned seen = unsigned(_mm_popcnt_u32(shortCopies));
        const unsigned packetTops = unsigned(_pext_u64(bitsFrom(tops, offset), starts));
        const unsigned pieces = unsigned(_pext_u32(packetTops, _pdep_u32(shortCopies, 0x5555) * 3));
        const unsigned reversed =
            (unsigned(reversedPieces.pieces[pieces & 0xFF]) << 8 | reversedPieces.pieces[pieces >> 8]) >> (2 * (8 - seen));
        const quint64 history = (quint64(shorts.bits) << (2 * seen)) | reversed;
        memset(walk.fourthBytes, 0, sizeof walk.fourthBytes);
        for (unsigned rank = 4 - shorts.count; rank <= seen; rank += 4) {
            const unsigned k = unsigned(__builtin_ctz(_pdep_u32(1u << (rank - 1), shortCopies)));
            walk.fourthBytes[k] = quint8(history >> (2 * (seen - rank)));
        }
        shorts.bits = unsigned(history & 0x3F);
        shorts.count = (shorts.count + seen) & 3;
        const size_t size = at2 / 2;
        walk.size = quint32(size);
        p = w + size;
    }
    state = shorts;
    return walked;
}

// A group's packets side by side, eight lanes of 32 bits.
struct GroupPackets
{
    __m256i length;
    __m256i distance;
    __m256i colourRow; // offset of the run's colour row in the table
    __m256i before; // pixels of the group before the packet
    __mmask8 copies;
    __mmask8 longForms;
};

OVRA_LZ5_WIDE OVRA_LZ5_INLINE GroupPackets readGroup(const GroupWalk &walk)
{
    const __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(walk.window));
    const __m128i placesTwice = _mm_loadl_epi64(reinterpret_cast<const __m128i *>(walk.places));
    const __mmask16 fourths = _mm_test_epi8_mask(placesTwice, _mm_set1_epi8(1));
    const __m256i places = _mm256_zextsi128_si256(_mm_and_si128(_mm_srli_epi16(placesTwice, 1), _mm_set1_epi8(0x7F)));
    const __m256i one = _mm256_set1_epi8(1);
    const __m256i next = _mm256_add_epi8(places, one);
    const __m128i firsts = _mm256_castsi256_si128(_mm256_maskz_permutexvar_epi8(~__mmask32(0), places, bytes));
    const __m128i seconds = _mm256_castsi256_si128(_mm256_maskz_permutexvar_epi8(~__mmask32(0), next, bytes));
    const __m128i thirds =
        _mm256_castsi256_si128(_mm256_maskz_permutexvar_epi8(~__mmask32(0), _mm256_add_epi8(next, one), bytes));
    // A fourth short copy's distance byte is the one the walk gathered, not the byte after it.
    const __m128i fourthBytes = _mm_loadl_epi64(reinterpret_cast<const __m128i *>(walk.fourthBytes));
    const __m128i lows = _mm_mask_blend_epi8(fourths, seconds, fourthBytes);
    const __m256i b0 = _mm256_cvtepu8_epi32(firsts);
    const __m256i b1 = _mm256_cvtepu8_epi32(seconds);
    const __m256i b2 = _mm256_cvtepu8_epi32(thirds);
    const __m256i low = _mm256_cvtepu8_epi32(lows);
    GroupPackets packets;
    packets.copies = __mmask8(walk.control);
    const __mmask8 runLong = _mm256_cmplt_epu32_mask(b0, _mm256_set1_epi32(32));
    const __mmask8 copyLong = _mm256_testn_epi32_mask(b0, _mm256_set1_epi32(0x3F));
    packets.longForms = __mmask8((packets.copies & copyLong) | (~packets.copies & runLong));
    // Runs: b0 >> 5, or b1 + 8. Copies: (b0 & 63) + 1, or b2 + 3.
    const __m256i shortLength = _mm256_mask_add_epi32(_mm256_srli_epi32(b0, 5), packets.copies,
                                                      _mm256_and_si256(b0, _mm256_set1_epi32(0x3F)), _mm256_set1_epi32(1));
    const __m256i longLength = _mm256_mask_add_epi32(_mm256_add_epi32(b1, _mm256_set1_epi32(8)), packets.copies, b2,
                                                     _mm256_set1_epi32(3));
    packets.length = _mm256_mask_blend_epi32(packets.longForms, shortLength, longLength);
    // Copies: the low byte from b1 or, for a fourth, gathered by the walk; a long copy's top
    // two bits from b0.
    const __m256i high = _mm256_maskz_slli_epi32(packets.longForms, _mm256_and_si256(b0, _mm256_set1_epi32(0xC0)), 2);
    packets.distance = _mm256_add_epi32(_mm256_or_si256(low, high), _mm256_set1_epi32(1));
    packets.colourRow = _mm256_slli_epi32(_mm256_and_si256(b0, _mm256_set1_epi32(0x1F)), 5);
    // Pixels before each packet: the lengths summed over the lanes below, in three steps.
    __m256i sums = packets.length;
    sums = _mm256_add_epi32(sums, _mm256_maskz_permutexvar_epi32(0xFE, _mm256_setr_epi32(0, 0, 1, 2, 3, 4, 5, 6), sums));
    sums = _mm256_add_epi32(sums, _mm256_maskz_permutexvar_epi32(0xFC, _mm256_setr_epi32(0, 0, 0, 1, 2, 3, 4, 5), sums));
    sums = _mm256_add_epi32(sums, _mm256_maskz_permutexvar_epi32(0xF0, _mm256_setr_epi32(0, 0, 0, 0, 0, 1, 2, 3), sums));
    sums = _mm256_sub_epi32(sums, packets.length);
    packets.before = sums;
    return packets;
}

// Moves a group's packets one by one: the rare groups with a long packet or an overlapping copy.
OVRA_LZ5_WIDE OVRA_LZ5_NOINLINE void moveOneByOne(uchar *o, const GroupPackets &packets)
{
    alignas(32) quint32 length[8];
    alignas(32) quint32 distance[8];
    alignas(32) quint32 colourRow[8];
    alignas(32) quint32 before[8];
    _mm256_store_si256(reinterpret_cast<__m256i *>(length), packets.length);
    _mm256_store_si256(reinterpret_cast<__m256i *>(distance), packets.distance);
    _mm256_store_si256(reinterpret_cast<__m256i *>(colourRow), packets.colourRow);
    _mm256_store_si256(reinterpret_cast<__m256i *>(before), packets.before);
    OVRA_LZ5_UNROLL
    for (int k = 0; k < 8; ++k) {
        uchar *const to = o + before[k];
        const bool copy = (packets.copies >> k) & 1;
        if (copy && distance[k] < length[k])
            moveOverlapping(to, distance[k], length[k]);
        else if (length[k] > Chunk)
            moveLong(to, copy ? to - distance[k] : colours.rows[0] + colourRow[k], length[k], copy);
        else
            moveChunk(to, copy ? to - distance[k] : colours.rows[0] + colourRow[k]);
    }
}

OVRA_LZ5_WIDE void decodeWide(Lz5Cursor &cursor)
{
    const uchar *p = cursor.p;
    const uchar *const end = cursor.end;
    uchar *o = cursor.o;
    uchar *const start = cursor.start;
    if (size_t(cursor.last - o) < GroupSlack)
        return;
    // Groups may start up to here: in front of it lies room for eight of the longest packets.
    uchar *const lastStart = cursor.last - GroupSlack;
    const unsigned count = unsigned(cursor.shortCopies);
    ShortCopyBits shorts{count, unsigned(cursor.spread) >> (8 - 2 * count)};
    const __m512i rows = _mm512_set1_epi64(qint64(reinterpret_cast<quintptr>(colours.rows[0])));
    alignas(64) const uchar *from[8];
    alignas(32) quint32 before[8];
    GroupWalk walks[WalkedGroups];
    bool stopped = false;
    while (!stopped) {
        const int walked = walkGroups(p, end, shorts, walks, WalkedGroups);
        if (walked == 0)
            break;
        for (int g = 0; g < walked; ++g) {
            const GroupWalk &walk = walks[g];
            const GroupPackets packets = readGroup(walk);
            // Copies from before the picture's start are the careful loop's, from this group
            // on. Far enough into the picture no copy reaches that far.
            const __m256i done = _mm256_set1_epi32(int(std::min<size_t>(size_t(o - start), 1 << 16)));
            const __mmask8 outside = _mm256_mask_cmpgt_epu32_mask(packets.copies, packets.distance,
                                                                  _mm256_add_epi32(done, packets.before));
            if (Q_UNLIKELY(outside || o > lastStart)) {
                p = walk.window - 1;
                shorts = walk.shortsBefore;
                stopped = true;
                break;
            }
            const __mmask8 overlapping = _mm256_mask_cmplt_epu32_mask(packets.copies, packets.distance, packets.length);
            const __mmask8 longer = _mm256_cmpgt_epu32_mask(packets.length, _mm256_set1_epi32(int(Chunk)));
            const __m256i ends = _mm256_add_epi32(packets.before, packets.length);
            const size_t groupPixels = quint32(_mm256_extract_epi32(ends, 7));
            if (Q_UNLIKELY(overlapping | longer)) {
                moveOneByOne(o, packets);
            } else {
                // Sources: behind the packet's place for a copy, the colour's row for a run.
                const __m512i here = _mm512_add_epi64(
                    _mm512_set1_epi64(qint64(reinterpret_cast<quintptr>(o))),
                    _mm512_maskz_cvtepi32_epi64(0xFF, _mm256_sub_epi32(packets.before, packets.distance)));
                const __m512i row = _mm512_add_epi64(rows, _mm512_maskz_cvtepu32_epi64(0xFF, packets.colourRow));
                _mm512_store_si512(from, _mm512_mask_blend_epi64(packets.copies, row, here));
                _mm256_store_si256(reinterpret_cast<__m256i *>(before), packets.before);
                // Read back from memory, which takes one load a packet, where taking the
                // values out of the registers would take two instructions each.
                asm volatile("" : : "r"(from), "r"(before) : "memory");
                OVRA_LZ5_UNROLL
                for (int k = 0; k < 8; ++k)
                    moveChunk(o + before[k], from[k]);
            }
            o += groupPixels;
            p = walk.window + walk.size;
        }
    }
    cursor.p = p;
    cursor.o = o;
    cursor.packetIndex = 0;
    cursor.control = 0;
    cursor.shortCopies = int(shorts.count);
    cursor.spread = quint8(shorts.bits << (8 - 2 * shorts.count));
}

bool wideAvailable()
{
    static const bool available = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw")
                                  && __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512vbmi")
                                  && __builtin_cpu_supports("bmi2");
    return available;
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
    case DecodePath::Avx512:
        return wideAvailable() ? decodeWide(cursor) : decodeAvx2(cursor);
    case DecodePath::Avx2:
        return decodeAvx2(cursor);
#endif
    default:
        return decodePortable(cursor);
    }
}

} // namespace SpriteBulk
} // namespace Ovra
