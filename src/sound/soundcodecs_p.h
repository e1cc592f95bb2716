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

// A device read as far as a length that a header claims, and never further than the
// decoders' limit. The bytes go straight into the array they are meant for: a device that
// tells its size (a file, a buffer) has the array sized once for what it really holds,
// and one that can't tell (a pipe) is read in pieces, so that a claimed length never
// allocates more than the device has.
class BoundedReader
{
public:
    BoundedReader(QIODevice *device, qint64 length)
        : m_device(device)
        , m_left(qBound<qint64>(0, length, MaxDecodedBytes))
    {
    }

    // What may still be read.
    qint64 left() const { return m_left; }

    // How many of the next `count` bytes the device holds, or -1 where it can't tell.
    qint64 holds(qint64 count) const
    {
        if (m_device->isSequential())
            return -1;
        return qBound<qint64>(0, m_device->size() - m_device->pos(), qMin(count, m_left));
    }

    // Up to `count` bytes appended to `target`; the number appended.
    qint64 readInto(QByteArray &target, qint64 count)
    {
        count = qMin(count, m_left);
        const qint64 start = target.size();
        qint64 got = 0;
        const qint64 held = holds(count);
        if (held > 0) {
            if (target.capacity() < start + held)
                target.reserve(int(start + held));
            target.resize(int(start + held));
            got = fill(target.data() + start, held);
        }
        // Where the device couldn't tell its size, or has more than it told.
        while (got < count && (held < 0 || (got == held && !m_device->atEnd()))) {
            const qint64 piece = qMin(qBound<qint64>(4096, m_device->bytesAvailable(), 1 << 20), count - got);
            target.resize(int(start + got + piece));
            const qint64 read = fill(target.data() + start + got, piece);
            got += read;
            if (read < piece)
                break;
        }
        target.resize(int(start + got));
        return got;
    }

    QByteArray read(qint64 count)
    {
        QByteArray bytes;
        readInto(bytes, count);
        return bytes;
    }

    // Passes over up to `count` bytes; the number passed over.
    qint64 skip(qint64 count)
    {
        count = qMin(count, m_left);
        qint64 skipped = 0;
        const qint64 held = holds(count);
        if (held > 0 && m_device->seek(m_device->pos() + held)) {
            m_left -= held;
            skipped = held;
        }
        char piece[16384];
        while (skipped < count && (held < 0 || !m_device->atEnd())) {
            const qint64 read = fill(piece, qMin<qint64>(sizeof piece, count - skipped));
            skipped += read;
            if (read == 0)
                break;
        }
        return skipped;
    }

private:
    // Reads until `count` bytes are in or the device has no more.
    qint64 fill(char *target, qint64 count)
    {
        qint64 got = 0;
        while (got < count) {
            const qint64 read = m_device->read(target + got, count - got);
            if (read <= 0)
                break;
            got += read;
        }
        m_left -= got;
        return got;
    }

    QIODevice *m_device;
    qint64 m_left;
};

} // namespace SoundCodecs
} // namespace Ovra
