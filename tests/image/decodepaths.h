#pragma once

// One sprite stream decoded by every path of a decoder, each held to the careful one.

#include "image/spritecompression_p.h"

#include <QBuffer>
#include <QImage>
#include <QString>

#include <cstring>

// What a decoder leaves: its result, every byte of the picture (padding included) and how
// much of the device it read.
struct Decoding
{
    bool ok = false;
    QByteArray bytes;
    qint64 consumed = -1;
    bool operator==(const Decoding &other) const
    {
        return ok == other.ok && bytes == other.bytes && consumed == other.consumed;
    }
};

using PathLoader = bool (*)(Ovra::DecodePath, QImage &, QIODevice *);

inline Decoding decodedBy(PathLoader load, Ovra::DecodePath path, const QByteArray &stream, int width,
                          int height, QImage::Format format = QImage::Format_Indexed8)
{
    QImage image(width, height, format);
    memset(image.bits(), 0xAA, size_t(image.sizeInBytes()));
    QByteArray data = stream;
    QBuffer buffer(&data);
    buffer.open(QIODevice::ReadOnly);
    Decoding decoding;
    decoding.ok = load(path, image, &buffer);
    decoding.bytes = QByteArray(reinterpret_cast<const char *>(image.constBits()), int(image.sizeInBytes()));
    decoding.consumed = buffer.pos();
    return decoding;
}

// Every other path against the careful one; an empty string when all agree.
inline QString pathsDisagree(PathLoader load, const QByteArray &stream, int width, int height,
                             QImage::Format format = QImage::Format_Indexed8)
{
    using Ovra::DecodePath;
    const Decoding careful = decodedBy(load, DecodePath::Careful, stream, width, height, format);
    for (DecodePath path : {DecodePath::Portable, DecodePath::Avx2, DecodePath::Avx512}) {
        if (Ovra::decodePathAvailable(path) && !(decodedBy(load, path, stream, width, height, format) == careful))
            return QStringLiteral("path %1 differs for %2 bytes into %3x%4 (format %5)")
                .arg(int(path)).arg(stream.size()).arg(width).arg(height).arg(int(format));
    }
    return QString();
}
