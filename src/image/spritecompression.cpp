#include "image/spritecompression.h"
#include "image/spritecompression_bulk_p.h"
#include "image/spritecompression_lz5bulk_p.h"
#include "image/spritecompression_p.h"

#include <QIODevice>
#include <QImage>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

namespace Ovra {
namespace {

bool openForReading(QIODevice *device)
{
    return device && (device->isReadable() || device->open(QIODevice::ReadOnly));
}

bool openForWriting(QIODevice *device)
{
    return device && (device->isWritable() || device->open(QIODevice::WriteOnly));
}

// The image's pixel bytes as one string: rows of `rowBytes` without their padding,
// followed by one zero byte that a look past the last pixel may read.
QByteArray gatherRows(const QImage &image, int rowBytes)
{
    QByteArray bytes;
    const int height = image.height();
    if (rowBytes <= 0 || height <= 0)
        return QByteArray(1, '\0');
    bytes.reserve(rowBytes * height + 1);
    for (int y = 0; y < height; ++y)
        bytes.append(reinterpret_cast<const char *>(image.constScanLine(y)), rowBytes);
    bytes.append('\0');
    return bytes;
}

// ---- LZ5 ----------------------------------------------------------------------------

struct Lz5Packet
{
    bool isCopy = false;
    bool isShort = false;
    quint16 value = 0; // colour of a run, distance of a copy
    quint16 length = 0;
};

constexpr int MaxShortRun = 7;
constexpr int MaxRun = 263;
constexpr int MaxDistance = 1024;
constexpr int MaxCopy = 258;
constexpr int MaxShortCopy = 64;
constexpr int MaxShortDistance = 256;

// The best copy of earlier pixels for `pos`, by exhaustive search; length 1 when none.
// Distance 1 is a run's business. Among equally long matches the nearest stays.
bool tryDistance(const uchar *pixels, int n, int pos, int d, Lz5Packet &best);

Lz5Packet searchMatch(const uchar *pixels, int n, int pos)
{
    Lz5Packet best;
    best.length = 1;
    const int farthest = std::min(pos, MaxDistance);
    for (int d = 2; d <= farthest; ++d)
        tryDistance(pixels, n, pos, d, best);
    return best;
}

// Weighs one distance as the exhaustive search does; true when it became the best.
bool tryDistance(const uchar *pixels, int n, int pos, int d, Lz5Packet &best)
{
    int length = 0;
    int changes = 0;
    int sameRun = 0;
    bool longRun = false;
    while (length < MaxCopy && pos + length < n && pixels[pos + length] == pixels[pos + length - d]) {
        if (length > 0 && pixels[pos + length] != pixels[pos + length - 1]) {
            ++changes;
            sameRun = 0;
        } else {
            ++sameRun;
        }
        if (sameRun > MaxShortRun)
            longRun = true;
        ++length;
    }
    if (changes == 0 || length <= best.length)
        return false;
    if (length <= MaxShortCopy && d <= MaxShortDistance) {
        if (changes > 1 || pixels[pos + length] != pixels[pos + length - 1]) {
            best = Lz5Packet{true, true, quint16(d), quint16(length)};
            return true;
        }
    } else if ((changes == 2 && longRun) || (length >= 4 && changes >= 3)) {
        best = Lz5Packet{true, false, quint16(d), quint16(length)};
        return true;
    }
    return false;
}

// The same answer as searchMatch, faster: a distance can only win with a match of two
// bytes or more, so only the earlier places of the same two bytes are weighed, nearest
// first, as the exhaustive search meets them.
class PairChains
{
public:
    PairChains(const uchar *pixels, int n)
        : m_previous(size_t(qMax(n, 1)), -1)
    {
        std::vector<int> last(65536, -1);
        for (int p = 0; p + 1 < n; ++p) {
            const int key = (pixels[p] << 8) | pixels[p + 1];
            m_previous[size_t(p)] = last[size_t(key)];
            last[size_t(key)] = p;
        }
    }

    Lz5Packet search(const uchar *pixels, int n, int pos) const
    {
        Lz5Packet best;
        best.length = 1;
        if (pos + 1 >= n)
            return best;
        const int nearest = pos - std::min(pos, MaxDistance);
        int run = 1;
        while (pos + run < n && run < MaxCopy && pixels[pos + run] == pixels[pos])
            ++run;
        if (run == 1) {
            for (int p = m_previous[size_t(pos)]; p >= nearest && p >= 0; p = m_previous[size_t(p)]) {
                if (pos - p >= 2)
                    tryDistance(pixels, n, pos, pos - p, best);
            }
            return best;
        }
        // Inside a run of one colour a match counts only if it reaches past the run (a match
        // of one colour is a run's business), so it must hold the same run followed by the same
        // next byte. Those places are the earlier ones of the pair that ends the run: the
        // exhaustive search accepts nothing else, and meets these in the same order.
        if (pos + run >= n || run >= MaxCopy)
            return best;
        const int lead = run - 1;
        for (int q = m_previous[size_t(pos + lead)]; q - lead >= nearest && q >= lead; q = m_previous[size_t(q)]) {
            const int p = q - lead;
            if (pos - p >= 2)
                tryDistance(pixels, n, pos, pos - p, best);
        }
        return best;
    }

private:
    std::vector<int> m_previous; // the last earlier place of the same two bytes
};

QVector<Lz5Packet> lz5Packets(const uchar *pixels, int n, bool lz, bool exhaustive)
{
    QVector<Lz5Packet> packets;
    const PairChains chains(lz && !exhaustive ? pixels : nullptr, lz && !exhaustive ? n : 0);
    auto findMatch = [&](const uchar *bytes, int count, int at) {
        return exhaustive ? searchMatch(bytes, count, at) : chains.search(bytes, count, at);
    };
    int pos = 0;
    while (pos < n) {
        if (lz && pos > 0) {
            const Lz5Packet match = findMatch(pixels, n, pos);
            if (match.isCopy) {
                packets.append(match);
                pos += match.length;
                continue;
            }
        }
        const uchar colour = pixels[pos];
        int run = 1;
        while (run < MaxShortRun && pos + run < n && pixels[pos + run] == colour)
            ++run;
        // A run of seven gives way to a match behind it, even if it would go on.
        if (lz && run == MaxShortRun && pos + run < n) {
            const Lz5Packet match = findMatch(pixels, n, pos + run);
            if (match.isCopy) {
                packets.append(Lz5Packet{false, true, colour, quint16(run)});
                packets.append(match);
                pos += run + match.length;
                continue;
            }
        }
        while (run < MaxRun && pos + run < n && pixels[pos + run] == colour)
            ++run;
        packets.append(Lz5Packet{false, run <= MaxShortRun, colour, quint16(run)});
        pos += run;
    }
    return packets;
}

void writeLz5(QByteArray &out, QVector<Lz5Packet> &packets)
{
    int shortCopies = 0;
    for (int i = 0; i < packets.size(); ++i) {
        const int packetIndex = i % 8;
        if (packetIndex == 0) {
            quint8 control = 0;
            for (int k = 0; k < 8 && i + k < packets.size(); ++k) {
                if (packets.at(i + k).isCopy)
                    control |= quint8(1 << k);
            }
            out.append(char(control));
        }
        Lz5Packet &packet = packets[i];
        if (!packet.isCopy) {
            if (packet.isShort) {
                out.append(char((packet.value & 0x1F) | (packet.length << 5)));
            } else {
                out.append(char(packet.value & 0x1F)).append(char(packet.length - 8));
            }
        } else if (!packet.isShort) {
            const int distance = packet.value - 1;
            out.append(char((distance >> 2) & 0xC0)).append(char(distance & 0xFF)).append(char(packet.length - 3));
        } else {
            ++shortCopies;
            if (shortCopies == 1) {
                // This packet and the next three short copies become a group: lengths and
                // distances less one, and the fourth's distance spread over the four.
                int group[4] = {i, -1, -1, -1};
                int found = 1;
                for (int j = i + 1; j < packets.size() && found < 4; ++j) {
                    if (packets.at(j).isCopy && packets.at(j).isShort)
                        group[found++] = j;
                }
                for (int k = 0; k < found; ++k) {
                    --packets[group[k]].length;
                    --packets[group[k]].value;
                }
                if (found == 4) {
                    const quint16 spread = packets.at(group[3]).value;
                    packets[group[0]].length |= spread & 0xC0;
                    packets[group[1]].length |= (spread & 0x30) << 2;
                    packets[group[2]].length |= (spread & 0x0C) << 4;
                    packets[group[3]].length |= (spread & 0x03) << 6;
                }
            }
            out.append(char(packet.length & 0xFF));
            if (shortCopies < 4)
                out.append(char(packet.value & 0xFF));
            else
                shortCopies = 0;
        }
    }
}

// ---- stream input -----------------------------------------------------------------------

// The bytes a device has to offer, read through a pointer. Only what the decoder used
// is taken from the device at the end: the bytes behind the stream stay for the caller.
class ByteSource
{
public:
    explicit ByteSource(QIODevice *device)
        : m_device(device)
        , m_data(device->peek(qMax<qint64>(device->bytesAvailable(), 0)))
        , m_bytes(reinterpret_cast<const uchar *>(m_data.constData()))
        , m_size(m_data.size())
    {
    }
    ~ByteSource() { m_device->skip(m_at); }

    bool atEnd() const { return m_at >= m_size; }
    // False, once and for good, when the stream ends before the byte.
    bool read(quint8 &byte)
    {
        if (m_at >= m_size) {
            m_pastEnd = true;
            return false;
        }
        byte = m_bytes[m_at++];
        return true;
    }
    bool ok() const { return !m_pastEnd; }

    // Raw access for the tight loops: they read up to end() and report where they stopped.
    const uchar *cursor() const { return m_bytes + m_at; }
    const uchar *end() const { return m_bytes + m_size; }
    void advanceTo(const uchar *at, bool pastEnd)
    {
        m_at = at - m_bytes;
        m_pastEnd = m_pastEnd || pastEnd;
    }

private:
    QIODevice *m_device;
    QByteArray m_data;
    const uchar *m_bytes;
    qint64 m_size;
    qint64 m_at = 0;
    bool m_pastEnd = false;
};

// ---- pixel output with row padding ------------------------------------------------------

// Writes bytes into an image row by row, jumping over the padding, and refuses to write
// past the last byte of the image.
class RowWriter
{
public:
    RowWriter(QImage &image, int rowBytes, int padding)
        : m_data(image.isNull() ? nullptr : image.bits())
        , m_size(image.isNull() ? 0 : size_t(image.bytesPerLine()) * size_t(image.height()))
        , m_rowBytes(rowBytes)
        , m_padding(padding)
    {
    }
    bool full() const { return m_at >= m_size; }
    void put(uchar value)
    {
        // Inside a row a single byte needs none of the row bookkeeping.
        if (m_at < m_size && (m_column & 0xFFFF) + 1 < uint(m_rowBytes) && m_rowBytes < 0x10000) {
            m_data[m_at++] = value;
            ++m_column;
            return;
        }
        fill(value, 1);
    }
    // `count` times the value, row by row; a row ends where the low 16 bits of the
    // column count reach the bytes of a row.
    void fill(uchar value, size_t count)
    {
        while (count > 0 && !full()) {
            const uint column = m_column & 0xFFFF;
            size_t toRowEnd = SIZE_MAX;
            if (m_rowBytes > 0 && m_rowBytes < 0x10000)
                toRowEnd = size_t(m_rowBytes) - column;
            else if (m_rowBytes == 0)
                toRowEnd = 0x10000 - column;
            const size_t chunk = std::min({count, toRowEnd, m_size - m_at});
            memset(m_data + m_at, value, chunk);
            m_at += chunk;
            m_column += uint(chunk);
            count -= chunk;
            if ((m_column & 0xFFFF) == uint(m_rowBytes)) {
                m_column = 0;
                m_at += size_t(m_padding);
            }
        }
    }

private:
    uchar *m_data;
    size_t m_size;
    size_t m_at = 0;
    uint m_column = 0;
    int m_rowBytes;
    int m_padding;
};

// Runs and copies of a few bytes are the bulk of a sprite stream; these write them in
// whole words, with the last word overlapping the one before, and never past `count`.
inline void fillBytes(uchar *out, uchar value, size_t count)
{
    if (count >= 8) {
        const quint64 word = quint64(value) * 0x0101010101010101ULL;
        for (size_t k = 0; k + 8 < count; k += 8)
            memcpy(out + k, &word, 8);
        memcpy(out + count - 8, &word, 8);
    } else if (count >= 4) {
        const quint32 word = quint32(value) * 0x01010101U;
        memcpy(out, &word, 4);
        memcpy(out + count - 4, &word, 4);
    } else if (count > 0) {
        out[0] = value;
        out[count / 2] = value;
        out[count - 1] = value;
    }
}

// Copies `count` bytes from `distance` behind. Overlapping copies repeat what they have
// just written, as the stream means them to; from eight bytes back or more every word
// read is already final.
inline void copyBehind(uchar *out, size_t distance, size_t count)
{
    const uchar *from = out - distance;
    if (distance >= 8 && count >= 8) {
        quint64 word;
        for (size_t k = 0; k + 8 < count; k += 8) {
            memcpy(&word, from + k, 8);
            memcpy(out + k, &word, 8);
        }
        memcpy(&word, from + count - 8, 8);
        memcpy(out + count - 8, &word, 8);
    } else if (distance >= count) {
        memcpy(out, from, count);
    } else {
        for (size_t k = 0; k < count; ++k)
            out[k] = from[k];
    }
}

// LZ5 clears what its stream leaves unreached, so far from the end of the output its runs
// and copies may write whole words past their last byte; the longest packet is 263 bytes.
constexpr size_t WordSlack = 272;

inline void fillWords(uchar *out, uchar value, size_t count)
{
    const quint64 word = quint64(value) * 0x0101010101010101ULL;
    for (size_t k = 0; k < count; k += 8)
        memcpy(out + k, &word, 8);
}

inline void copyWords(uchar *out, size_t distance, size_t count)
{
    const uchar *from = out - distance;
    quint64 word;
    for (size_t k = 0; k < count; k += 8) {
        memcpy(&word, from + k, 8);
        memcpy(out + k, &word, 8);
    }
}

// RLE8 into contiguous rows: one flat stretch of `size` bytes. The bulk of the stream goes
// by the path asked for; the items near either end go here, one by one.
void decodeRle8Flat(ByteSource &in, uchar *out, size_t size, DecodePath path)
{
    const uchar *p = in.cursor();
    const uchar *const end = in.end();
    uchar *o = out;
    uchar *const last = out + size;
    SpriteBulk::decodeRle8(path, p, end, o, last);
    bool pastEnd = false;
    while (p < end && o < last) {
        const uchar first = *p++;
        if ((first & 0xC0) != 0x40) {
            *o++ = first;
            continue;
        }
        if (p == end) {
            pastEnd = true;
            break;
        }
        const uchar value = *p++;
        const size_t count = std::min(size_t(first & 0x3F), size_t(last - o));
        fillBytes(o, value, count);
        o += count;
    }
    in.advanceTo(p, pastEnd);
}

// The bytes of an LZ5 stream as its packets take them, with the high bits of the
// distances that short copies spread over the packets between them.
struct Lz5Input
{
    const uchar *p;
    const uchar *end;
    bool pastEnd = false;
    int shortCopies = 0;
    quint8 spread = 0;

    bool read(quint8 &byte)
    {
        if (p == end) {
            pastEnd = true;
            return false;
        }
        byte = *p++;
        return true;
    }

    // A copy packet's length and distance; false where the stream ends inside it.
    bool readCopy(quint8 first, size_t &length, size_t &distance)
    {
        if ((first & 0x3F) == 0) {
            quint8 low = 0;
            quint8 count = 0;
            if (!read(low) || !read(count))
                return false;
            distance = ((size_t(first & 0xC0) << 2) | low) + 1;
            length = size_t(count) + 3;
            return true;
        }
        length = size_t(first & 0x3F) + 1;
        quint8 byte = 0;
        if (shortCopies < 3) {
            spread |= quint8((first >> 6) << (6 - 2 * shortCopies));
            ++shortCopies;
            if (!read(byte))
                return false;
        } else {
            byte = quint8(spread | (first >> 6));
            shortCopies = 0;
            spread = 0;
        }
        distance = size_t(byte) + 1;
        return true;
    }

    // A run packet's length; false where the stream ends inside it.
    bool readRunLength(quint8 first, size_t &length)
    {
        length = first >> 5;
        if (length == 0) {
            quint8 more = 0;
            if (!read(more))
                return false;
            length = size_t(more) + 8;
        }
        return true;
    }
};

// Decodes the stream into `n` contiguous bytes; false for a copy from before the start.
// Bytes the stream doesn't reach are transparent (and free of the words written ahead).
bool decodeLz5(ByteSource &source, uchar *const output, size_t n, DecodePath path)
{
    // The bulk of the stream by the path asked for; the packets near either end go here.
    Lz5Cursor bulk;
    bulk.p = source.cursor();
    bulk.end = source.end();
    bulk.o = bulk.start = output;
    bulk.last = output + n;
    SpriteBulk::decodeLz5(path, bulk);
    Lz5Input in{bulk.p, bulk.end, false, bulk.shortCopies, bulk.spread};
    uchar *o = bulk.o;
    uchar *const last = output + n;
    int packetIndex = bulk.packetIndex;
    quint8 control = bulk.control;
    bool valid = true;
    while (in.p < in.end && o < last) {
        if (packetIndex == 0 && !in.read(control))
            break;
        quint8 first = 0;
        if (!in.read(first))
            break;
        size_t length = 0;
        if (control & (1 << packetIndex)) {
            size_t distance = 0;
            if (!in.readCopy(first, length, distance))
                break;
            // A copy from before the start of the image: no stream of ours holds one.
            if (distance > size_t(o - output)) {
                valid = false;
                break;
            }
            length = std::min(length, size_t(last - o));
            if (distance >= 8 && size_t(last - o) >= WordSlack)
                copyWords(o, distance, length);
            else
                copyBehind(o, distance, length);
        } else {
            if (!in.readRunLength(first, length))
                break;
            length = std::min(length, size_t(last - o));
            if (size_t(last - o) >= WordSlack)
                fillWords(o, first & 0x1F, length);
            else
                fillBytes(o, first & 0x1F, length);
        }
        o += length;
        packetIndex = (packetIndex + 1) & 7;
    }
    source.advanceTo(in.p, in.pastEnd);
    memset(o, 0, size_t(last - o));
    return valid;
}

} // namespace

namespace {

bool loadLZ5By(DecodePath path, QImage &image, QIODevice *device)
{
    if (!openForReading(device))
        return false;
    ByteSource in(device);
    const int width = image.isNull() ? 0 : image.width();
    const size_t n = size_t(width) * size_t(image.isNull() ? 0 : image.height());
    // Padded rows are decoded into a flat buffer first: copies reach across row ends.
    const bool flat = width > 0 && image.bytesPerLine() == width;
    std::vector<uchar> buffer(flat ? 0 : n, 0);
    uchar *const output = flat ? image.bits() : buffer.data();
    const bool valid = decodeLz5(in, output, n, path);
    for (int y = 0; !flat && width > 0 && y < image.height(); ++y)
        memcpy(image.scanLine(y), output + size_t(y) * size_t(width), size_t(width));
    return valid && in.ok();
}

} // namespace

bool loadLZ5(QImage &image, QIODevice *device)
{
    return loadLZ5By(fastestLz5Path(), image, device);
}

DecodePath fastestLz5Path()
{
    static const DecodePath fastest = decodePathAvailable(DecodePath::Avx2) ? DecodePath::Avx2 : DecodePath::Portable;
    return fastest;
}

bool loadLZ5Using(DecodePath path, QImage &image, QIODevice *device)
{
    return decodePathAvailable(path) && loadLZ5By(path, image, device);
}

namespace {

bool encodeLZ5(const QImage &image, QIODevice *device, bool lz, bool exhaustive)
{
    if (!openForWriting(device))
        return false;
    const int width = image.isNull() ? 0 : image.width();
    const int n = width * (image.isNull() ? 0 : image.height());
    if (n <= 0)
        return true;
    const QByteArray pixels = gatherRows(image, width);
    QVector<Lz5Packet> packets = lz5Packets(reinterpret_cast<const uchar *>(pixels.constData()), n, lz, exhaustive);
    QByteArray stream;
    stream.reserve(packets.size() * 2 + packets.size() / 8 + 1);
    writeLz5(stream, packets);
    return device->write(stream) == stream.size();
}

} // namespace

bool saveLZ5(const QImage &image, QIODevice *device, bool lz)
{
    return encodeLZ5(image, device, lz, false);
}

bool saveLZ5Exhaustive(const QImage &image, QIODevice *device)
{
    return encodeLZ5(image, device, true, true);
}

bool loadRLE5(QImage &image, QIODevice *device)
{
    if (!openForReading(device))
        return false;
    ByteSource in(device);
    const int width = image.isNull() ? 0 : image.width();
    RowWriter writer(image, width, image.isNull() ? 0 : image.bytesPerLine() - width);
    while (!in.atEnd() && !writer.full()) {
        quint8 first = 0;
        quint8 flags = 0;
        quint8 colour = 0;
        if (!in.read(first) || !in.read(flags) || ((flags & 0x80) && !in.read(colour)))
            break;
        writer.fill(colour & 0x1F, size_t(first) + 1);
        // The group's packets are read even where the image is full.
        quint8 packet = 0;
        for (int count = flags & 0x1F; count > 0 && in.read(packet); --count)
            writer.fill(packet & 0x1F, size_t(packet >> 5) + 1);
    }
    return in.ok();
}

bool saveRLE5(const QImage &, QIODevice *)
{
    return false;
}

namespace {

bool loadRLE8By(DecodePath path, QImage &image, QIODevice *device)
{
    if (!openForReading(device))
        return false;
    ByteSource in(device);
    int bytesPerPixel = 0;
    switch (image.format()) {
    case QImage::Format_Indexed8:
        bytesPerPixel = 1;
        break;
    case QImage::Format_RGB32:
        bytesPerPixel = 3;
        break;
    case QImage::Format_ARGB32:
    case QImage::Format_ARGB32_Premultiplied:
        bytesPerPixel = 4;
        break;
    default:
        break;
    }
    const int rowBytes = image.isNull() ? 0 : image.width() * bytesPerPixel;
    const int padding = image.isNull() ? 0 : (image.bytesPerLine() - rowBytes) & 0xFF;
    // Rows without padding, as most sprites have, are one stretch of bytes.
    if (rowBytes > 0 && rowBytes < 0x10000 && image.bytesPerLine() == rowBytes) {
        decodeRle8Flat(in, image.bits(), size_t(rowBytes) * size_t(image.height()), path);
        return in.ok();
    }
    RowWriter writer(image, rowBytes, padding);
    while (!in.atEnd() && !writer.full()) {
        quint8 first = 0;
        if (!in.read(first))
            break;
        if ((first & 0xC0) == 0x40) {
            quint8 value = 0;
            if (!in.read(value))
                break;
            writer.fill(value, first & 0x3F);
        } else {
            writer.put(first);
        }
    }
    return in.ok();
}

} // namespace

bool loadRLE8(QImage &image, QIODevice *device)
{
    return loadRLE8By(fastestDecodePath(), image, device);
}

bool loadRLE8Using(DecodePath path, QImage &image, QIODevice *device)
{
    return decodePathAvailable(path) && loadRLE8By(path, image, device);
}

bool saveRLE8(const QImage &image, QIODevice *device)
{
    if (!openForWriting(device))
        return false;
    const int rowBytes = image.isNull() ? 0 : image.width() * (image.depth() / 8);
    const int length = rowBytes * (image.isNull() ? 0 : image.height());
    const QByteArray bytes = gatherRows(image, rowBytes);
    const auto *data = reinterpret_cast<const uchar *>(bytes.constData());
    QByteArray stream;
    stream.reserve(length / 2 + 16);
    for (int i = 0; i < length;) {
        const uchar value = data[i];
        int count = 1;
        while (count < 63 && i + count < length && data[i + count] == value)
            ++count;
        if (count >= 2 || (value & 0xC0) == 0x40)
            stream.append(char(count | 0x40));
        stream.append(char(value));
        i += count;
    }
    return device->write(stream) == stream.size();
}

} // namespace Ovra
