#include "image/spritecompression_bulk_p.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
#define OVRA_X86_VECTORS 1
#include <immintrin.h>
#define OVRA_TARGET(features) __attribute__((target(features)))
#endif

namespace Ovra {
namespace SpriteBulk {
namespace {

// ---- RLE8 ---------------------------------------------------------------------------------
//
// A textured sprite is a few bytes an item, so a loop that asks of each item whether it is
// a run, and only then where the next one starts, spends its time on mispredicted branches.
// Here the stream goes in blocks of 64 bytes: first which bytes begin runs is worked out for
// the whole block at once, then every byte of the block stores a whole vector of its value
// and moves the output on by its length (a literal 1, a run its count, a run's value byte
// 0). The next store overwrites what a store wrote past its item, so the only dependency
// from byte to byte is the output position. With AVX-512 (further below) eight items share
// a store.

constexpr int Block = 64;
constexpr uint64_t OddBytes = 0xAAAAAAAAAAAAAAAAULL;
// Each store of a block may reach this far past the block's last byte of output.
constexpr size_t Overhang = 64;

// The overhang lands on bytes that belong to the next items; where decoding stops, it lands on
// bytes that the careful loop may never reach (a stream that ends early leaves the rest of the
// picture as it was), so the original bytes under it are kept aside block by block and put
// back at the end.
class Overhung
{
public:
    explicit Overhung(const uchar *out) { memcpy(m_saved, out, Overhang); }
    // Before a block writes `total` bytes from `out`.
    void keep(const uchar *out, size_t total)
    {
        if (total >= Overhang) {
            memcpy(m_saved, out + total, Overhang); // untouched so far
            return;
        }
        // Partly under the overhang of the block before: those bytes come from m_saved.
        // (Rare in pictures, and slower: the copy reads what was just stored.)
        uchar window[2 * Overhang];
        memcpy(window, m_saved, Overhang);
        memcpy(window + Overhang, out + Overhang, Overhang);
        memcpy(m_saved, window + total, Overhang);
    }
    // Where decoding stops.
    void restore(uchar *out) const { memcpy(out, m_saved, Overhang); }

private:
    uchar m_saved[Overhang]; // the original bytes from the current output on
};

// Which bytes of a block begin a run. `marked` has a bit for each byte with the top bits 01;
// `carry` is 1 when the block's first byte is the value of a run begun by the block before's
// last byte, and becomes the same for the next block. A marked byte at an item start makes
// the next byte its value, whatever that is. So in a stretch of marked bytes that begins at an
// item start the 1st, 3rd, 5th ... begin runs and the others are their values; and every
// stretch begins at an item start, since the byte before it is no run's first byte, once a
// carried value byte is taken out. Adding each stretch's first bit clears the stretch: done
// for the stretches beginning at odd bytes, it tells them from those at even ones.
inline uint64_t runStarts(uint64_t marked, uint64_t &carry)
{
    const uint64_t stretches = marked & ~carry;
    const uint64_t firsts = stretches & ~(stretches << 1);
    const uint64_t oddStretches = stretches & ~(stretches + (firsts & OddBytes));
    const uint64_t starts = (oddStretches & OddBytes) | (stretches & ~oddStretches & ~OddBytes);
    carry = starts >> 63;
    return starts;
}

// What each byte of a block writes: the value and how far the output moves on.
struct Rle8Plan
{
    alignas(64) uchar values[Block];
    alignas(64) uchar lengths[Block];
    size_t total = 0; // output bytes of the whole block
};

using PlanBlock = void (*)(const uchar *bytes, uint64_t &carry, Rle8Plan &plan);
using EmitBlock = void (*)(const Rle8Plan &plan, uchar *out);

// The plain C++ way. `bytes` has one byte more than the block: a run's last byte's value.
void planPortable(const uchar *bytes, uint64_t &carry, Rle8Plan &plan)
{
    uint64_t marked = 0;
    for (int i = 0; i < Block; ++i)
        marked |= uint64_t((bytes[i] & 0xC0) == 0x40) << i;
    const uint64_t valueBytes = carry;
    const uint64_t starts = runStarts(marked, carry);
    const uint64_t skipped = (starts << 1) | valueBytes;
    size_t total = 0;
    for (int i = 0; i < Block; ++i) {
        const bool start = (starts >> i) & 1;
        plan.values[i] = bytes[i + (start ? 1 : 0)];
        plan.lengths[i] = start ? uchar(bytes[i] & 0x3F) : uchar(((skipped >> i) & 1) ^ 1);
        total += plan.lengths[i];
    }
    plan.total = total;
}

void emitPortable(const Rle8Plan &plan, uchar *out)
{
    for (int i = 0; i < Block; ++i) {
        const uint64_t word = uint64_t(plan.values[i]) * 0x0101010101010101ULL;
        memcpy(out, &word, 8);
        memcpy(out + 8, &word, 8);
        for (size_t k = 16; k < plan.lengths[i]; k += 8)
            memcpy(out + k, &word, 8);
        out += plan.lengths[i];
    }
}

#ifdef OVRA_X86_VECTORS
// Some compilers' headers fill the unused half of a narrowing intrinsic with an "undefined"
// vector that their own uninitialised-value warning then reports.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

OVRA_TARGET("avx2") inline __m256i bitsToBytes(uint32_t bits)
{
    // Byte i takes byte i / 8 of the mask, then keeps bit i % 8 of it.
    const __m256i spread = _mm256_shuffle_epi8(_mm256_set1_epi32(int(bits)),
                                               _mm256_setr_epi64x(0, 0x0101010101010101LL, 0x0202020202020202LL,
                                                                  0x0303030303030303LL));
    const __m256i bit = _mm256_set1_epi64x(int64_t(0x8040201008040201ULL));
    return _mm256_cmpeq_epi8(_mm256_and_si256(spread, bit), bit);
}

OVRA_TARGET("avx2") void planAvx2(const uchar *bytes, uint64_t &carry, Rle8Plan &plan)
{
    const __m256i top = _mm256_set1_epi8(char(0xC0));
    const __m256i mark = _mm256_set1_epi8(0x40);
    uint64_t marked = 0;
    __m256i halves[2];
    __m256i next[2];
    for (int h = 0; h < 2; ++h) {
        halves[h] = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(bytes + 32 * h));
        next[h] = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(bytes + 32 * h + 1));
        const uint32_t bits = uint32_t(_mm256_movemask_epi8(_mm256_cmpeq_epi8(_mm256_and_si256(halves[h], top), mark)));
        marked |= uint64_t(bits) << (32 * h);
    }
    const uint64_t valueBytes = carry;
    const uint64_t starts = runStarts(marked, carry);
    const uint64_t skipped = (starts << 1) | valueBytes;
    __m256i sums = _mm256_setzero_si256();
    for (int h = 0; h < 2; ++h) {
        const __m256i isStart = bitsToBytes(uint32_t(starts >> (32 * h)));
        const __m256i isSkipped = bitsToBytes(uint32_t(skipped >> (32 * h)));
        const __m256i counts = _mm256_and_si256(halves[h], _mm256_set1_epi8(0x3F));
        const __m256i lengths = _mm256_andnot_si256(isSkipped, _mm256_blendv_epi8(_mm256_set1_epi8(1), counts, isStart));
        _mm256_store_si256(reinterpret_cast<__m256i *>(plan.lengths + 32 * h), lengths);
        _mm256_store_si256(reinterpret_cast<__m256i *>(plan.values + 32 * h),
                           _mm256_blendv_epi8(halves[h], next[h], isStart));
        sums = _mm256_add_epi64(sums, _mm256_sad_epu8(lengths, _mm256_setzero_si256()));
    }
    const __m128i half = _mm_add_epi64(_mm256_castsi256_si128(sums), _mm256_extracti128_si256(sums, 1));
    plan.total = size_t(_mm_cvtsi128_si64(half) + _mm_extract_epi64(half, 1));
}

// One 32-byte store an item, and a second for the runs longer than that.
OVRA_TARGET("avx2") void emitAvx2(const Rle8Plan &plan, uchar *out)
{
    for (int i = 0; i < Block; ++i) {
        const __m256i value = _mm256_set1_epi8(char(plan.values[i]));
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(out), value);
        if (plan.lengths[i] > 32)
            _mm256_storeu_si256(reinterpret_cast<__m256i *>(out + 32), value);
        out += plan.lengths[i];
    }
}

// ---- AVX-512: eight items a store -----------------------------------------------------------
//
// For textured pictures a store an item is the bound. Here a block's items are squeezed
// together (vpcompressb), then taken eight at a time: each gets eight bytes of a vector filled
// with its value (vpermb), and squeezing out the bytes past each item's length leaves the eight
// items' output, one store. Items longer than eight bytes are stored one by one, as the long
// runs of flat areas want anyway.

// BMI's and-not and shifts keep the bit logic of the plans short.
#define OVRA_AVX512 "avx512f,avx512bw,avx512vbmi,avx512vbmi2,bmi,bmi2,popcnt"

constexpr int Slot = 8; // bytes of a vector for each item
// Rounds of Slot items that every block goes through: a block of a textured picture mostly has
// 33 to 48 items. Stopping at the last item instead would cost a mispredicted branch a block.
constexpr int PlainRounds = 6;

// One store an item, for the items of `values` and `lengths` from `first` to `last` - 1.
OVRA_TARGET(OVRA_AVX512) inline uchar *emitItems(const uchar *values, const uchar *lengths, int first, int last, uchar *out)
{
    for (int i = first; i < last; ++i) {
        const __m256i bytes = _mm256_set1_epi8(char(values[i]));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(out), _mm256_castsi256_si128(bytes));
        if (lengths[i] > 16) {
            _mm256_storeu_si256(reinterpret_cast<__m256i *>(out + 16), bytes);
            _mm256_storeu_si256(reinterpret_cast<__m256i *>(out + 32), bytes);
        }
        out += lengths[i];
    }
    return out;
}

// Items 8 * round to 8 * round + 7, none longer than Slot, in one store.
OVRA_TARGET(OVRA_AVX512) inline uchar *emitRound(__m512i values, uint64_t used, int round, uchar *out)
{
    // Byte j of the vector belongs to item 8 * round + j / 8.
    const __m512i slotOf = _mm512_set_epi64(0x0707070707070707LL, 0x0606060606060606LL, 0x0505050505050505LL,
                                            0x0404040404040404LL, 0x0303030303030303LL, 0x0202020202020202LL,
                                            0x0101010101010101LL, 0);
    const __m512i slots = _mm512_permutexvar_epi8(_mm512_add_epi8(slotOf, _mm512_set1_epi8(char(Slot * round))), values);
    _mm512_storeu_si512(out, _mm512_maskz_compress_epi8(used, slots));
    return out + _mm_popcnt_u64(used);
}

// Writes the block's `items` items, packed from byte 0 of `values` and `lengths`, from `out`
// on. Past the last item the lengths are 0.
OVRA_TARGET(OVRA_AVX512) inline void emitBlockAvx512(__m512i values, __m512i lengths, int items, uchar *out)
{
    const uint64_t longItems = _mm512_cmpgt_epu8_mask(lengths, _mm512_set1_epi8(Slot));
    // Which bytes of its slot each item fills: its length's lowest bits set, a byte an item,
    // so that eight items' bytes read as one word are the mask of a round.
    alignas(64) uint64_t used[Block / Slot];
    const __m128i fill = _mm_setr_epi8(0, 1, 3, 7, 15, 31, 63, char(127), char(255), 0, 0, 0, 0, 0, 0, 0);
    _mm512_store_si512(used, _mm512_shuffle_epi8(_mm512_broadcast_i32x4(fill), lengths));
    if (longItems == 0) {
#pragma GCC unroll 8
        for (int round = 0; round < PlainRounds; ++round)
            out = emitRound(values, used[round], round, out);
        if (items > PlainRounds * Slot) {
            out = emitRound(values, used[PlainRounds], PlainRounds, out);
            emitRound(values, used[PlainRounds + 1], PlainRounds + 1, out);
        }
        return;
    }
    alignas(64) uchar value[Block];
    alignas(64) uchar length[Block];
    _mm512_store_si512(value, values);
    _mm512_store_si512(length, lengths);
    const int rounds = items > PlainRounds * Slot ? Block / Slot : PlainRounds;
    for (int round = 0; round < rounds; ++round) {
        if ((longItems >> (Slot * round)) & 0xFF)
            out = emitItems(value, length, Slot * round, Slot * (round + 1), out);
        else
            out = emitRound(values, used[round], round, out);
    }
}

// A block's items, packed from byte 0 on.
struct Avx512Plan
{
    __m512i values;
    __m512i lengths; // 0 past the last item
    size_t total; // output bytes
    int items;
    uint64_t carry; // out of the block
};

// The carry into the block only decides whether its first byte is a value byte, so both
// answers are worked out before it is known, and the chain from block to block is one select.
OVRA_TARGET(OVRA_AVX512) inline Avx512Plan planAvx512(const uchar *bytes, uint64_t carry)
{
    const __m512i block = _mm512_loadu_si512(bytes);
    const __m512i next = _mm512_loadu_si512(bytes + 1);
    const uint64_t marked = _mm512_cmpeq_epi8_mask(_mm512_and_si512(block, _mm512_set1_epi8(char(0xC0))),
                                                   _mm512_set1_epi8(0x40));
    uint64_t carryOut[2] = {0, 0};
    const uint64_t startsIf[2] = {runStarts(marked, carryOut[0]), runStarts(marked & ~1ULL, carryOut[1])};
    const uint64_t starts = carry ? startsIf[1] : startsIf[0];
    const uint64_t items = ~((starts << 1) | carry);
    const __m512i counts = _mm512_and_si512(block, _mm512_set1_epi8(0x3F));
    Avx512Plan plan;
    plan.lengths = _mm512_maskz_compress_epi8(items, _mm512_mask_blend_epi8(starts, _mm512_set1_epi8(1), counts));
    plan.values = _mm512_maskz_compress_epi8(items, _mm512_mask_blend_epi8(starts, block, next));
    plan.total = size_t(_mm512_reduce_add_epi64(_mm512_sad_epu8(plan.lengths, _mm512_setzero_si512())));
    plan.items = int(_mm_popcnt_u64(items));
    plan.carry = carry ? carryOut[1] : carryOut[0];
    return plan;
}

// The loop of decodeRle8Blocks with the plans kept in registers.
OVRA_TARGET(OVRA_AVX512) void decodeBlocksAvx512(const uchar *&in, const uchar *inEnd, uchar *&out, uchar *outEnd)
{
    const uchar *p = in;
    uchar *o = out;
    if (inEnd - p <= Block || size_t(outEnd - o) < 2 * Overhang)
        return;
    Overhung overhung(o);
    uint64_t carry = 0; // into the block at p
    Avx512Plan plan = planAvx512(p, carry);
    for (;;) {
        // The next block is planned before this one is written, its loads ahead of the stores.
        const bool more = inEnd - p > 2 * Block;
        const Avx512Plan next = more ? planAvx512(p + Block, plan.carry) : plan;
        if (size_t(outEnd - o) < std::max(plan.total, Overhang) + Overhang)
            break;
        overhung.keep(o, plan.total);
        emitBlockAvx512(plan.values, plan.lengths, plan.items, o);
        o += plan.total;
        p += Block;
        carry = plan.carry;
        if (!more)
            break;
        plan = next;
    }
    overhung.restore(o);
    // A run begun by the last block's last byte had its value from this block's first.
    in = p + carry;
    out = o;
}

#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif
#endif

// Block by block while a whole block and the byte after it are in the stream and its output,
// with the stores' overhang, is inside the picture.
void decodeRle8Blocks(PlanBlock planBlock, EmitBlock emitBlock, const uchar *&in, const uchar *inEnd, uchar *&out,
                      uchar *outEnd)
{
    const uchar *p = in;
    uchar *o = out;
    if (inEnd - p <= Block || size_t(outEnd - o) < 2 * Overhang)
        return;
    Overhung overhung(o);
    // Each block is planned while the one before is written: the plan's stores are done by the
    // time its bytes are read back.
    Rle8Plan plans[2];
    uint64_t carry = 0; // into the block at p
    uint64_t carryOut = 0; // out of it
    planBlock(p, carryOut, plans[0]);
    for (int current = 0;; current ^= 1) {
        const Rle8Plan &plan = plans[current];
        const bool more = inEnd - p > 2 * Block;
        uint64_t nextCarry = carryOut;
        if (more)
            planBlock(p + Block, nextCarry, plans[current ^ 1]);
        const size_t total = plan.total;
        if (size_t(outEnd - o) < std::max(total, Overhang) + Overhang)
            break;
        overhung.keep(o, total);
        emitBlock(plan, o);
        o += total;
        p += Block;
        carry = carryOut;
        carryOut = nextCarry;
        if (!more)
            break;
    }
    overhung.restore(o);
    // A run begun by the last block's last byte had its value from this block's first.
    in = p + carry;
    out = o;
}

} // namespace

void decodeRle8(DecodePath path, const uchar *&in, const uchar *inEnd, uchar *&out, uchar *outEnd)
{
    switch (path) {
    case DecodePath::Careful:
        return;
#ifdef OVRA_X86_VECTORS
    case DecodePath::Avx512:
        return decodeBlocksAvx512(in, inEnd, out, outEnd);
    case DecodePath::Avx2:
        return decodeRle8Blocks(planAvx2, emitAvx2, in, inEnd, out, outEnd);
#endif
    default:
        return decodeRle8Blocks(planPortable, emitPortable, in, inEnd, out, outEnd);
    }
}

} // namespace SpriteBulk

bool decodePathAvailable(DecodePath path)
{
    switch (path) {
    case DecodePath::Careful:
    case DecodePath::Portable:
        return true;
#ifdef OVRA_X86_VECTORS
    case DecodePath::Avx2:
        return __builtin_cpu_supports("avx2");
    case DecodePath::Avx512:
        return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw")
               && __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vbmi2")
               && __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("popcnt");
#endif
    default:
        return false;
    }
}

DecodePath fastestDecodePath()
{
    // The plain C++ blocks are slower than the careful loop: they are there to check the
    // block logic on any processor, and to stand beside the vector paths in tests.
    static const DecodePath fastest = decodePathAvailable(DecodePath::Avx512) ? DecodePath::Avx512
                                      : decodePathAvailable(DecodePath::Avx2) ? DecodePath::Avx2
                                                                              : DecodePath::Careful;
    return fastest;
}

} // namespace Ovra
