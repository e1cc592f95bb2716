#include "foundation/utilities.h"

#include <QtEndian>

#include <cstring>

namespace Ovra {
namespace {

// Slicing-by-eight: table[0] is the classic byte table, table[k] advances a byte
// that sits k positions further back. Eight bytes are folded per step, which is
// what keeps large sprite and sound blocks cheap to fingerprint.
template<typename Word, Word Polynomial>
struct CrcTables
{
    Word table[8][256];

    CrcTables()
    {
        for (uint i = 0; i < 256; ++i) {
            Word crc = i;
            for (int bit = 0; bit < 8; ++bit)
                crc = (crc & 1) ? (crc >> 1) ^ Polynomial : crc >> 1;
            table[0][i] = crc;
        }
        for (uint i = 0; i < 256; ++i)
            for (int k = 1; k < 8; ++k)
                table[k][i] = (table[k - 1][i] >> 8) ^ table[0][table[k - 1][i] & 0xFF];
    }
};

// Built on first use; C++ guarantees a thread-safe initialisation of local statics,
// so early calls from several threads can't race.
const CrcTables<quint32, 0xEDB88320u> &crc32Tables()
{
    static const CrcTables<quint32, 0xEDB88320u> tables;
    return tables;
}

const CrcTables<quint64, 0x95AC9329AC4BC9B5ull> &crc64Tables()
{
    static const CrcTables<quint64, 0x95AC9329AC4BC9B5ull> tables;
    return tables;
}

quint64 readLittleEndian64(const uchar *p)
{
    quint64 v;
    std::memcpy(&v, p, 8);
#if Q_BYTE_ORDER == Q_BIG_ENDIAN
    v = qFromLittleEndian(v);
#endif
    return v;
}

} // namespace

quint32 CRC32(const char *data, int length)
{
    const auto &t = crc32Tables().table;
    quint32 crc = 0xFFFFFFFFu;
    auto p = reinterpret_cast<const uchar *>(data);
    for (; length >= 8; length -= 8, p += 8) {
        const quint64 v = readLittleEndian64(p) ^ crc;
        crc = t[7][v & 0xFF] ^ t[6][(v >> 8) & 0xFF] ^ t[5][(v >> 16) & 0xFF]
            ^ t[4][(v >> 24) & 0xFF] ^ t[3][(v >> 32) & 0xFF] ^ t[2][(v >> 40) & 0xFF]
            ^ t[1][(v >> 48) & 0xFF] ^ t[0][v >> 56];
    }
    for (; length > 0; --length, ++p)
        crc = (crc >> 8) ^ t[0][(crc ^ *p) & 0xFF];
    return crc;
}

quint64 CRC64(uchar *data, uint length)
{
    const auto &t = crc64Tables().table;
    quint64 crc = ~quint64(0);
    const uchar *p = data;
    for (; length >= 8; length -= 8, p += 8) {
        const quint64 v = readLittleEndian64(p) ^ crc;
        crc = t[7][v & 0xFF] ^ t[6][(v >> 8) & 0xFF] ^ t[5][(v >> 16) & 0xFF]
            ^ t[4][(v >> 24) & 0xFF] ^ t[3][(v >> 32) & 0xFF] ^ t[2][(v >> 40) & 0xFF]
            ^ t[1][(v >> 48) & 0xFF] ^ t[0][v >> 56];
    }
    for (; length > 0; --length, ++p)
        crc = (crc >> 8) ^ t[0][(crc ^ *p) & 0xFF];
    return crc;
}

} // namespace Ovra
