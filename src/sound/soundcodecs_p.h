#pragma once

// What the sound codecs share between their files: limits, opening devices, reading a
// length that a header claims.
#include "sound/soundsample.h"

#include <QIODevice>

namespace Ovra {
namespace SoundCodecs {

// No decoder makes more than this of one file: a header or a stream can claim any
// length, and a few bytes of some formats decode to minutes of silence.
constexpr qint64 MaxDecodedBytes = qint64(1) << 30;

inline bool openForReading(QIODevice *device)
{
    return device && (device->isOpen() ? device->isReadable() : device->open(QIODevice::ReadOnly));
}

inline bool openForWriting(QIODevice *device)
{
    return device && (device->isOpen() ? device->isWritable() : device->open(QIODevice::WriteOnly));
}

// The depths the complete writers take: 20-bit values are kept in three bytes, at full
// scale, like 24-bit ones.
inline bool isDepth(quint16 bits)
{
    return bits == 8 || bits == 16 || bits == 20 || bits == 24 || bits == 32;
}

// The decoders start from a header of all zeros, so that a failure is no sound of any shape.
inline SoundSample zeroed()
{
    SoundSample sample;
    sample.bits = 0;
    return sample;
}

// Up to `count` bytes, in pieces, so that a length read from a header never allocates
// more than the device really has.
inline QByteArray readUpTo(QIODevice *device, qint64 count)
{
    QByteArray bytes;
    count = qMin(count, MaxDecodedBytes);
    while (bytes.size() < count) {
        // Pieces of what the device says it has (a read allocates its whole size first).
        const qint64 piece = qBound<qint64>(4096, device->bytesAvailable(), 1 << 20);
        const QByteArray bytesRead = device->read(qMin<qint64>(piece, count - bytes.size()));
        if (bytesRead.isEmpty())
            break;
        bytes += bytesRead;
    }
    return bytes;
}

} // namespace SoundCodecs
} // namespace Ovra
