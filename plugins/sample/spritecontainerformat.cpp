#include "spritecontainerformat.h"

#include "image/spritecompression.h"

#include <QBuffer>
#include <QDataStream>
#include <QtEndian>

#include <cstring>

using namespace Ovra;

namespace {

constexpr char Magic[4] = {'O', 'V', 'S', 'P'};
constexpr quint16 Version = 1;
constexpr int HeaderSize = 16;
constexpr int PaletteHeaderSize = 8;
constexpr int SpriteHeaderSize = 24;

bool isUnused(const RGBA &entry)
{
    return entry == RGBA();
}

// The stored length of a palette: its trailing transparent black entries aren't written.
int storedColors(const QVector<RGBA> &colors)
{
    int count = qMin(colors.size(), 256);
    while (count > 0 && isUnused(colors.at(count - 1)))
        --count;
    return count;
}

// Walks a stream as its decoder would, counting what it produces. The streams we write
// fill their picture exactly, so anything else is a damaged file: a stream that ends
// early or runs on would not show what was saved.
class StreamScan
{
public:
    StreamScan(const QByteArray &stream, qint64 expected)
        : m_bytes(reinterpret_cast<const uchar *>(stream.constData()))
        , m_size(stream.size())
        , m_expected(expected)
    {
    }

    bool scanRle8(QString &reason)
    {
        while (m_at < m_size) {
            // Eight single pixels at a time while no run starts among them and the picture
            // can't fill up: most of a busy picture, with nothing to check but the count.
            while (m_size - m_at >= 8 && m_expected - m_produced > 8 && !hasRunMark(m_bytes + m_at)) {
                m_at += 8;
                m_produced += 8;
            }
            if (m_at == m_size)
                break;
            const uchar first = m_bytes[m_at++];
            qint64 count = 1;
            if ((first & 0xC0) == 0x40) {
                if (m_at == m_size)
                    return cutShort(reason);
                ++m_at;
                count = first & 0x3F;
            }
            if (!produce(count, reason))
                return false;
        }
        return finished(reason);
    }

    bool scanLz5(QString &reason)
    {
        int packetIndex = 0;
        uchar control = 0;
        int shortCopies = 0;
        uchar spread = 0;
        while (m_at < m_size) {
            if (packetIndex == 0) {
                control = m_bytes[m_at++];
                if (m_at == m_size)
                    return cutShort(reason);
            }
            const uchar first = m_bytes[m_at++];
            qint64 length = 0;
            qint64 distance = 0;
            if (control & (1 << packetIndex)) {
                if ((first & 0x3F) == 0) {
                    if (m_size - m_at < 2)
                        return cutShort(reason);
                    distance = ((qint64(first & 0xC0) << 2) | m_bytes[m_at]) + 1;
                    length = qint64(m_bytes[m_at + 1]) + 3;
                    m_at += 2;
                } else {
                    length = (first & 0x3F) + 1;
                    // The fourth short copy of a group has no distance byte: its distance
                    // is spread over the top bits of the four.
                    if (shortCopies < 3) {
                        spread |= uchar((first >> 6) << (6 - 2 * shortCopies));
                        ++shortCopies;
                        if (m_at == m_size)
                            return cutShort(reason);
                        distance = qint64(m_bytes[m_at++]) + 1;
                    } else {
                        distance = qint64(spread | (first >> 6)) + 1;
                        shortCopies = 0;
                        spread = 0;
                    }
                }
                if (distance > m_produced) {
                    reason = QStringLiteral("a copy reaches before the start of the picture");
                    return false;
                }
            } else {
                length = first >> 5;
                if (length == 0) {
                    if (m_at == m_size)
                        return cutShort(reason);
                    length = qint64(m_bytes[m_at++]) + 8;
                }
            }
            if (!produce(length, reason))
                return false;
            packetIndex = (packetIndex + 1) & 7;
        }
        return finished(reason);
    }

private:
    // Whether one of eight bytes has the top bits 01 of a run.
    static bool hasRunMark(const uchar *bytes)
    {
        quint64 word;
        memcpy(&word, bytes, sizeof word);
        const quint64 marks = (word & 0xC0C0C0C0C0C0C0C0ull) ^ 0x4040404040404040ull; // a run's byte is 0
        return ((marks - 0x0101010101010101ull) & ~marks & 0x8080808080808080ull) != 0;
    }

    bool produce(qint64 count, QString &reason)
    {
        m_produced += count;
        // Also a packet after the picture is full: it would never be read.
        if (m_produced > m_expected || (m_produced == m_expected && m_at < m_size && count > 0)) {
            reason = QStringLiteral("the stream holds more than its picture");
            return false;
        }
        return true;
    }

    bool finished(QString &reason)
    {
        if (m_produced == m_expected)
            return true;
        reason = QStringLiteral("the stream ends before its picture is full");
        return false;
    }

    static bool cutShort(QString &reason)
    {
        reason = QStringLiteral("the stream ends inside a packet");
        return false;
    }

    const uchar *m_bytes;
    qint64 m_size;
    qint64 m_at = 0;
    qint64 m_produced = 0;
    qint64 m_expected;
};

QByteArray packed(bool (*save)(const QImage &, QIODevice *), const QImage &picture)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    return save(picture, &buffer) ? bytes : QByteArray();
}

bool saveLz5WithCopies(const QImage &picture, QIODevice *device)
{
    return saveLZ5(picture, device, true);
}

bool below32(const QImage &picture)
{
    for (int y = 0; y < picture.height(); ++y) {
        const uchar *row = picture.constScanLine(y);
        for (int x = 0; x < picture.width(); ++x) {
            if (row[x] >= 32)
                return false;
        }
    }
    return true;
}

QString cutShortText()
{
    return QStringLiteral("The sprite container is cut short.");
}

QString reservedSetText()
{
    return QStringLiteral("The sprite container has reserved bytes that aren't zero.");
}

// Reads a container's records in their order; the first fault refuses the whole file,
// with its reason.
class ContainerReader
{
public:
    ContainerReader(const QByteArray &bytes, QString &reason, StreamCheck streams)
        : m_bytes(bytes)
        , m_reason(reason)
        , m_streams(streams)
    {
    }

    bool read(SpriteContainerData &data)
    {
        quint32 paletteCount = 0;
        quint32 spriteCount = 0;
        if (!readHeader(paletteCount, spriteCount))
            return false;
        for (quint32 i = 0; i < paletteCount; ++i) {
            if (!readPalette(i))
                return false;
        }
        for (quint32 i = 0; i < spriteCount; ++i) {
            if (!readSprite(i))
                return false;
        }
        if (m_at != m_bytes.size())
            return refuse(QStringLiteral("The sprite container has bytes after its last sprite."));
        data = m_read;
        return true;
    }

private:
    bool refuse(const QString &why)
    {
        m_reason = why;
        return false;
    }

    // Records are read straight from the bytes: a stream over them would copy every byte
    // of the file through its buffer on the way past the pixels.
    bool has(qint64 count) const { return count <= m_bytes.size() - m_at; }

    template<typename T>
    T take()
    {
        const T value = qFromLittleEndian<T>(m_bytes.constData() + m_at);
        m_at += qint64(sizeof(T));
        return value;
    }

    bool readHeader(quint32 &paletteCount, quint32 &spriteCount)
    {
        if (m_bytes.size() < HeaderSize)
            return refuse(cutShortText());
        if (memcmp(m_bytes.constData(), Magic, 4) != 0)
            return refuse(QStringLiteral("This is not a sprite container."));
        m_at = 4;
        const auto version = take<quint16>();
        const auto reserved = take<quint16>();
        paletteCount = take<quint32>();
        spriteCount = take<quint32>();
        if (version != Version)
            return refuse(QStringLiteral("Sprite container version %1 is unknown.").arg(version));
        // Reserved bytes are written as zero and read only as zero, so that a file read and
        // written again is the same file.
        if (reserved != 0)
            return refuse(reservedSetText());
        // Every record takes its header at least: counts the bytes can't hold are a cut file.
        if (qint64(paletteCount) * PaletteHeaderSize + qint64(spriteCount) * SpriteHeaderSize
            > m_bytes.size() - HeaderSize)
            return refuse(cutShortText());
        return true;
    }

    bool readPalette(quint32 i)
    {
        if (!has(PaletteHeaderSize))
            return refuse(cutShortText());
        SpriteContainerPalette palette;
        palette.group = take<quint16>();
        palette.number = take<quint16>();
        const auto count = take<quint16>();
        const auto reserved = take<quint16>();
        if (reserved != 0)
            return refuse(reservedSetText());
        if (count > 256)
            return refuse(QStringLiteral("Palette %1 has %2 colours, more than 256.").arg(i).arg(count));
        if (qint64(count) * 4 > m_bytes.size() - m_at)
            return refuse(cutShortText());
        palette.colors.resize(count);
        for (RGBA &entry : palette.colors) {
            entry.red = take<quint8>();
            entry.green = take<quint8>();
            entry.blue = take<quint8>();
            entry.alpha = take<quint8>();
        }
        // Unused entries at the end are never written, so a file holding them would not
        // come back the same.
        if (count > 0 && isUnused(palette.colors.last()))
            return refuse(QStringLiteral("Palette %1 ends in unused colours.").arg(i));
        m_read.palettes << palette;
        return true;
    }

    bool readSprite(quint32 i)
    {
        if (!has(SpriteHeaderSize))
            return refuse(cutShortText());
        SpriteContainerSprite sprite;
        SpritePixels &pixels = sprite.pixels;
        sprite.group = take<quint16>();
        sprite.number = take<quint16>();
        sprite.axisX = take<qint16>();
        sprite.axisY = take<qint16>();
        pixels.width = take<quint16>();
        pixels.height = take<quint16>();
        pixels.format = take<quint8>();
        pixels.codec = take<quint8>();
        sprite.palette = take<quint16>();
        const auto source = take<quint32>();
        const auto length = take<quint32>();
        quint8 format = pixels.format;
        if (source != 0) {
            if (!readSharedPixels(i, sprite, source, length))
                return false;
            format = m_read.sprites.at(sprite.source).pixels.format;
        } else if (!readOwnPixels(i, pixels, length)) {
            return false;
        }
        if (!checkPalette(i, sprite, format))
            return false;
        m_read.sprites << sprite;
        return true;
    }

    // A sprite that shows the pixels of an earlier one has none of its own.
    bool readSharedPixels(quint32 i, SpriteContainerSprite &sprite, quint32 source, quint32 length)
    {
        const SpritePixels &pixels = sprite.pixels;
        if (source - 1 >= i)
            return refuse(QStringLiteral("Sprite %1 shares the pixels of sprite %2, which doesn't come before it.")
                              .arg(i)
                              .arg(qint64(source) - 1));
        const SpriteContainerSprite &owner = m_read.sprites.at(int(source - 1));
        if (owner.source >= 0)
            return refuse(QStringLiteral("Sprite %1 shares the pixels of sprite %2, which has none of its own.")
                              .arg(i)
                              .arg(source - 1));
        if (pixels.width != 0 || pixels.height != 0 || pixels.format != 0 || pixels.codec != 0 || length != 0)
            return refuse(QStringLiteral("Sprite %1 shares pixels and has pixels of its own.").arg(i));
        sprite.source = qint32(source - 1);
        return true;
    }

    bool readOwnPixels(quint32 i, SpritePixels &pixels, quint32 length)
    {
        if (pixels.format != SpritePixels::Indexed && pixels.format != SpritePixels::TrueColor)
            return refuse(QStringLiteral("Sprite %1 has an unknown pixel format (%2).").arg(i).arg(pixels.format));
        if (pixels.width < 1 || pixels.height < 1 || pixels.width > MaxSpriteSide || pixels.height > MaxSpriteSide)
            return refuse(QStringLiteral("Sprite %1 has an impossible size (%2 x %3).")
                              .arg(i)
                              .arg(pixels.width)
                              .arg(pixels.height));
        const bool known = pixels.format == SpritePixels::Indexed
            ? pixels.codec >= SpritePixels::Raw && pixels.codec <= SpritePixels::Lz5
            : pixels.codec == SpritePixels::Raw;
        if (!known)
            return refuse(QStringLiteral("Sprite %1 has an unknown codec (%2).").arg(i).arg(pixels.codec));
        if (!has(length))
            return refuse(cutShortText());
        pixels.setStream(m_bytes, int(m_at), int(length));
        m_at += length;
        if (m_streams == StreamCheck::OnFirstUse)
            return true;
        QString why;
        if (!spriteStreamIsSound(pixels, why))
            return refuse(QStringLiteral("Sprite %1 doesn't decode: %2.").arg(i).arg(why));
        return true;
    }

    // Indexed pixels name a palette that is there; true-colour ones none.
    bool checkPalette(quint32 i, const SpriteContainerSprite &sprite, quint8 format)
    {
        if (format == SpritePixels::Indexed) {
            if (sprite.palette >= m_read.palettes.size())
                return refuse(QStringLiteral("Sprite %1 uses palette %2, which isn't there.").arg(i).arg(sprite.palette));
        } else if (sprite.palette != 0) {
            return refuse(reservedSetText());
        }
        return true;
    }

    const QByteArray &m_bytes;
    QString &m_reason;
    const StreamCheck m_streams;
    qint64 m_at = HeaderSize;
    SpriteContainerData m_read;
};

} // namespace

void SpritePixels::setStream(const QByteArray &bytes, int at, int length)
{
    owner = bytes;
    stream = QByteArray::fromRawData(owner.constData() + at, length);
}

qint64 SpritePixels::unpackedSize() const
{
    return qint64(width) * height * (format == TrueColor ? 4 : 1);
}

QByteArray writeSpriteContainer(const SpriteContainerData &data)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setByteOrder(QDataStream::LittleEndian);
    out.writeRawData(Magic, 4);
    out << Version << quint16(0) << quint32(data.palettes.size()) << quint32(data.sprites.size());
    for (const SpriteContainerPalette &palette : data.palettes) {
        const int count = storedColors(palette.colors);
        out << palette.group << palette.number << quint16(count) << quint16(0);
        for (int i = 0; i < count; ++i) {
            const RGBA &entry = palette.colors.at(i);
            out << entry.red << entry.green << entry.blue << entry.alpha;
        }
    }
    for (const SpriteContainerSprite &sprite : data.sprites) {
        const SpritePixels &pixels = sprite.pixels;
        out << sprite.group << sprite.number << sprite.axisX << sprite.axisY << pixels.width << pixels.height
            << pixels.format << pixels.codec << sprite.palette << quint32(sprite.source + 1)
            << quint32(pixels.stream.size());
        out.writeRawData(pixels.stream.constData(), pixels.stream.size());
    }
    return bytes;
}

bool readSpriteContainer(const QByteArray &bytes, SpriteContainerData &data, QString &reason, StreamCheck streams)
{
    ContainerReader reader(bytes, reason, streams);
    return reader.read(data);
}

bool spriteStreamIsSound(const SpritePixels &pixels, QString &reason)
{
    if (pixels.check == SpritePixels::Unchecked)
        pixels.check = checkSpriteStream(pixels, reason) ? SpritePixels::Sound : SpritePixels::Damaged;
    else if (pixels.check == SpritePixels::Damaged)
        checkSpriteStream(pixels, reason); // the reason again: a damaged stream is rare
    return pixels.check == SpritePixels::Sound;
}

bool checkSpriteStream(const SpritePixels &pixels, QString &reason)
{
    const qint64 expected = pixels.unpackedSize();
    StreamScan scan(pixels.stream, expected);
    switch (pixels.codec) {
    case SpritePixels::Raw:
        if (pixels.stream.size() == expected)
            return true;
        reason = QStringLiteral("%1 bytes of raw pixels instead of %2").arg(pixels.stream.size()).arg(expected);
        return false;
    case SpritePixels::Rle8:
        return scan.scanRle8(reason);
    case SpritePixels::Lz5:
        if (pixels.format == SpritePixels::Indexed)
            return scan.scanLz5(reason);
        break;
    default:
        break;
    }
    reason = QStringLiteral("unknown codec %1").arg(pixels.codec);
    return false;
}

QImage decodeSpritePixels(const SpritePixels &pixels, const QVector<QRgb> &colorTable)
{
    if (pixels.isNull() || pixels.width < 1 || pixels.height < 1 || pixels.width > MaxSpriteSide
        || pixels.height > MaxSpriteSide)
        return QImage();
    const bool indexed = pixels.format == SpritePixels::Indexed;
    QImage picture(pixels.width, pixels.height, indexed ? QImage::Format_Indexed8 : QImage::Format_ARGB32);
    if (picture.isNull())
        return QImage();
    QByteArray stream = pixels.stream;
    QBuffer device(&stream);
    bool decoded = false;
    switch (pixels.codec) {
    case SpritePixels::Raw: {
        if (stream.size() != pixels.unpackedSize())
            return QImage();
        const auto *in = reinterpret_cast<const uchar *>(stream.constData());
        for (int y = 0; y < picture.height(); ++y) {
            if (indexed) {
                memcpy(picture.scanLine(y), in + qint64(y) * pixels.width, pixels.width);
                continue;
            }
            auto *row = reinterpret_cast<QRgb *>(picture.scanLine(y));
            for (int x = 0; x < picture.width(); ++x)
                row[x] = qFromLittleEndian<quint32>(in + (qint64(y) * pixels.width + x) * 4);
        }
        decoded = true;
        break;
    }
    case SpritePixels::Rle8:
        decoded = indexed && loadRLE8(picture, &device);
        break;
    case SpritePixels::Lz5:
        decoded = indexed && loadLZ5(picture, &device);
        break;
    default:
        break;
    }
    if (!decoded)
        return QImage();
    if (indexed) {
        // Every index has a colour, so that pixel() and painting never look past the table.
        QVector<QRgb> table = colorTable.mid(0, 256);
        while (table.size() < 256)
            table.append(0);
        picture.setColorTable(table);
    }
    return picture;
}

SpritePixels encodeSpritePixels(const QImage &image)
{
    SpritePixels pixels;
    if (image.isNull() || image.width() > MaxSpriteSide || image.height() > MaxSpriteSide)
        return pixels;
    pixels.width = quint16(image.width());
    pixels.height = quint16(image.height());
    pixels.codec = SpritePixels::Raw;
    pixels.check = SpritePixels::Sound; // our own encoders fill the picture exactly
    if (image.format() != QImage::Format_Indexed8) {
        const QImage picture = image.convertToFormat(QImage::Format_ARGB32);
        pixels.format = SpritePixels::TrueColor;
        pixels.stream.resize(int(pixels.unpackedSize()));
        auto *out = reinterpret_cast<uchar *>(pixels.stream.data());
        for (int y = 0; y < picture.height(); ++y) {
            const auto *row = reinterpret_cast<const QRgb *>(picture.constScanLine(y));
            for (int x = 0; x < picture.width(); ++x, out += 4)
                qToLittleEndian<quint32>(row[x], out);
        }
        return pixels;
    }
    pixels.format = SpritePixels::Indexed;
    pixels.stream.reserve(int(pixels.unpackedSize()));
    for (int y = 0; y < image.height(); ++y)
        pixels.stream.append(reinterpret_cast<const char *>(image.constScanLine(y)), image.width());
    // The smallest stream wins; on a tie the one quicker to unpack.
    const QByteArray rle8 = packed(saveRLE8, image);
    if (!rle8.isEmpty() && rle8.size() < pixels.stream.size()) {
        pixels.codec = SpritePixels::Rle8;
        pixels.stream = rle8;
    }
    if (below32(image)) {
        const QByteArray lz5 = packed(saveLz5WithCopies, image);
        if (!lz5.isEmpty() && lz5.size() < pixels.stream.size()) {
            pixels.codec = SpritePixels::Lz5;
            pixels.stream = lz5;
        }
    }
    return pixels;
}
