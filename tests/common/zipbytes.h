#pragma once

// Zip files written byte by byte, so that tests can make the ones no zip tool would:
// names that climb out, drive letters, links, two entries of one name, sizes that lie.
#include <QByteArray>
#include <QList>
#include <QtEndian>

#include <zlib.h>

struct ZipEntry
{
    QByteArray name;
    QByteArray data;             // what the entry inflates to
    bool deflate = false;        // stored otherwise
    bool link = false;           // a symbolic link whose target is `data`
    quint32 declaredSize = 0;    // the inflated size the zip claims; 0: the real one
};

namespace ZipBytes {

inline void put16(QByteArray &out, quint32 value)
{
    out.append(char(value & 0xFF)).append(char((value >> 8) & 0xFF));
}

inline void put32(QByteArray &out, quint32 value)
{
    put16(out, value & 0xFFFF);
    put16(out, value >> 16);
}

// Raw deflate: zlib's stream without qCompress's length, zlib's header and its check sum.
inline QByteArray deflated(const QByteArray &data)
{
    const QByteArray stream = qCompress(data, 9);
    return stream.mid(6, stream.size() - 10);
}

} // namespace ZipBytes

// The zip of the entries, in their order, made on a Unix system (so that the mode of a
// link counts).
inline QByteArray zipBytes(const QList<ZipEntry> &entries)
{
    using namespace ZipBytes;
    QByteArray out;
    QByteArray directory;
    for (const ZipEntry &entry : entries) {
        const QByteArray packed = entry.deflate ? deflated(entry.data) : entry.data;
        const quint32 crc = quint32(crc32(0, reinterpret_cast<const Bytef *>(entry.data.constData()), uInt(entry.data.size())));
        const quint32 size = entry.declaredSize ? entry.declaredSize : quint32(entry.data.size());
        const quint32 offset = quint32(out.size());
        const quint32 mode = entry.link ? 0120777 : 0100644;
        auto common = [&](QByteArray &to) {
            put16(to, 20);     // version needed
            put16(to, 0x0800); // names in UTF-8
            put16(to, entry.deflate ? 8 : 0);
            put16(to, 0);      // time
            put16(to, 0x5B21); // date: 1 January 2025
            put32(to, crc);
            put32(to, quint32(packed.size()));
            put32(to, size);
            put16(to, quint32(entry.name.size()));
            put16(to, 0); // extra field
        };
        put32(out, 0x04034B50);
        common(out);
        out += entry.name + packed;

        put32(directory, 0x02014B50);
        put16(directory, (3 << 8) | 20); // made on Unix
        common(directory);
        put16(directory, 0); // comment
        put16(directory, 0); // disk
        put16(directory, 0); // internal attributes
        put32(directory, mode << 16);
        put32(directory, offset);
        directory += entry.name;
    }
    const quint32 start = quint32(out.size());
    out += directory;
    put32(out, 0x06054B50);
    put16(out, 0);
    put16(out, 0);
    put16(out, quint32(entries.size()));
    put16(out, quint32(entries.size()));
    put32(out, quint32(directory.size()));
    put32(out, start);
    put16(out, 0);
    return out;
}
