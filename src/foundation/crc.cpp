#include "foundation/utilities.h"

#include <QtEndian>

#include <cstring>

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#define OVRA_CRC_CLMUL 1
#endif

namespace Ovra {
namespace {

// Both checksums are reflected CRCs without a final inversion. Bytes are folded through
// tables eight at a time (slicing-by-eight); on processors with carry-less multiplication
// long buffers are first folded 64 bytes at a time into one 128-bit remainder, which is
// what keeps fingerprinting of large sprite and sound blocks cheap.
template<typename Word>
struct CrcTables
{
    Word table[8][256];
#ifdef OVRA_CRC_CLMUL
    // Folding constants: x^n mod P in the reflected layout of the multiplier, for the
    // distances the folding loops use (see foldConstant).
    quint64 fold512[2];
    quint64 fold128[2];
#endif

    explicit CrcTables(Word reflectedPolynomial)
    {
        for (uint i = 0; i < 256; ++i) {
            Word crc = i;
            for (int bit = 0; bit < 8; ++bit)
                crc = (crc & 1) ? (crc >> 1) ^ reflectedPolynomial : crc >> 1;
            table[0][i] = crc;
        }
        for (uint i = 0; i < 256; ++i)
            for (int k = 1; k < 8; ++k)
                table[k][i] = (table[k - 1][i] >> 8) ^ table[0][table[k - 1][i] & 0xFF];
#ifdef OVRA_CRC_CLMUL
        const quint64 normal = reverseBits(quint64(reflectedPolynomial)) >> (64 - Width);
        fold512[0] = foldConstant(normal, 512 + 64);
        fold512[1] = foldConstant(normal, 512);
        fold128[0] = foldConstant(normal, 128 + 64);
        fold128[1] = foldConstant(normal, 128);
#endif
    }

    static constexpr int Width = int(sizeof(Word) * 8);

    static quint64 reverseBits(quint64 value)
    {
        quint64 result = 0;
        for (int i = 0; i < 64; ++i, value >>= 1)
            result = (result << 1) | (value & 1);
        return result;
    }

#ifdef OVRA_CRC_CLMUL
    // x^(distance - 1) mod P, bit-reversed into 64 bits. A 128-bit register holds the
    // coefficient of x^(127 - j) in bit j; multiplying one of its 64-bit halves carry-less
    // by this constant yields that half times x^distance, already aligned in the same
    // layout (the "- 1" absorbs the one-bit offset of reflected products).
    static quint64 foldConstant(quint64 normalPolynomial, int distance)
    {
        quint64 remainder = 1;
        for (int i = 0; i < distance - 1; ++i) {
            const bool carry = (remainder >> (Width - 1)) & 1;
            remainder <<= 1;
            if (Width < 64)
                remainder &= (quint64(1) << Width) - 1;
            if (carry)
                remainder ^= normalPolynomial;
        }
        return reverseBits(remainder);
    }
#endif
};

// Built on first use; C++ guarantees a thread-safe initialisation of local statics,
// so early calls from several threads can't race.
const CrcTables<quint32> &crc32Tables()
{
    static const CrcTables<quint32> tables(0xEDB88320u);
    return tables;
}

const CrcTables<quint64> &crc64Tables()
{
    static const CrcTables<quint64> tables(0x95AC9329AC4BC9B5ull);
    return tables;
}

quint64 readLittleEndian64(const uchar *p)
{
    quint64 v;
    std::memcpy(&v, p, 8);
    return qFromLittleEndian(v);
}

template<typename Word>
Word crcSliced(const CrcTables<Word> &tables, Word crc, const uchar *p, size_t length)
{
    const auto &t = tables.table;
    for (; length >= 8; length -= 8, p += 8) {
        const quint64 v = readLittleEndian64(p) ^ crc;
        crc = Word(t[7][v & 0xFF] ^ t[6][(v >> 8) & 0xFF] ^ t[5][(v >> 16) & 0xFF]
                   ^ t[4][(v >> 24) & 0xFF] ^ t[3][(v >> 32) & 0xFF] ^ t[2][(v >> 40) & 0xFF]
                   ^ t[1][(v >> 48) & 0xFF] ^ t[0][v >> 56]);
    }
    for (; length > 0; --length, ++p)
        crc = (crc >> 8) ^ t[0][(crc ^ *p) & 0xFF];
    return crc;
}

#ifdef OVRA_CRC_CLMUL

bool hasCarrylessMultiply()
{
    static const bool supported = __builtin_cpu_supports("pclmul") && __builtin_cpu_supports("sse4.1");
    return supported;
}

__attribute__((target("pclmul,sse4.1"))) inline __m128i fold(__m128i value, __m128i constants)
{
    return _mm_xor_si128(_mm_clmulepi64_si128(value, constants, 0x00),
                         _mm_clmulepi64_si128(value, constants, 0x11));
}

// Folds the longest multiple of 64 bytes into a 128-bit remainder and reduces that
// remainder through the tables. Returns the register after `*consumed` bytes.
template<typename Word>
__attribute__((target("pclmul,sse4.1"))) Word crcFolded(const CrcTables<Word> &tables, Word crc,
                                                        const uchar *p, size_t length,
                                                        size_t *consumed)
{
    const size_t blocks = length / 64;
    *consumed = blocks * 64;
    const __m128i by512 = _mm_set_epi64x(qint64(tables.fold512[1]), qint64(tables.fold512[0]));
    const __m128i by128 = _mm_set_epi64x(qint64(tables.fold128[1]), qint64(tables.fold128[0]));

    auto load = [](const uchar *at) { return _mm_loadu_si128(reinterpret_cast<const __m128i *>(at)); };
    // A starting register is the same as a zero register with it added to the first bytes.
    __m128i x0 = _mm_xor_si128(load(p), _mm_set_epi64x(0, qint64(quint64(crc))));
    __m128i x1 = load(p + 16);
    __m128i x2 = load(p + 32);
    __m128i x3 = load(p + 48);
    for (size_t i = 1; i < blocks; ++i) {
        p += 64;
        x0 = _mm_xor_si128(fold(x0, by512), load(p));
        x1 = _mm_xor_si128(fold(x1, by512), load(p + 16));
        x2 = _mm_xor_si128(fold(x2, by512), load(p + 32));
        x3 = _mm_xor_si128(fold(x3, by512), load(p + 48));
    }
    __m128i x = _mm_xor_si128(fold(x0, by128), x1);
    x = _mm_xor_si128(fold(x, by128), x2);
    x = _mm_xor_si128(fold(x, by128), x3);

    uchar remainder[16];
    _mm_storeu_si128(reinterpret_cast<__m128i *>(remainder), x);
    return crcSliced<Word>(tables, 0, remainder, sizeof remainder);
}

#endif

template<typename Word>
Word crc(const CrcTables<Word> &tables, const uchar *p, size_t length)
{
    Word value = ~Word(0);
#ifdef OVRA_CRC_CLMUL
    if (length >= 256 && hasCarrylessMultiply()) {
        size_t consumed = 0;
        value = crcFolded<Word>(tables, value, p, length, &consumed);
        p += consumed;
        length -= consumed;
    }
#endif
    return crcSliced<Word>(tables, value, p, length);
}

} // namespace

quint32 CRC32(const char *data, int length)
{
    if (length <= 0)
        return 0xFFFFFFFFu;
    return crc<quint32>(crc32Tables(), reinterpret_cast<const uchar *>(data), size_t(length));
}

quint64 CRC64(uchar *data, uint length)
{
    return crc<quint64>(crc64Tables(), data, length);
}

} // namespace Ovra
