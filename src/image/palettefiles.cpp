#include "image/palettefiles_p.h"

#include "image/imagecodecs.h"

#include <QColor>
#include <QDataStream>
#include <QIODevice>
#include <QImage>
#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace Ovra {
namespace PaletteFiles {
namespace {

quint8 clamp255(int value)
{
    return quint8(qBound(0, value, 255));
}

// Half away from zero, as all float values of palette files are rounded.
int rounded(double value)
{
    return int(std::round(value));
}

// The colour model and its values of a swatch exchange colour entry: false, and twelve
// bytes passed over, for a model that isn't RGB, CMYK or grey.
bool readAseColour(QDataStream &in, QColor &colour)
{
    auto channel = [](float value) { return clamp255(rounded(double(value) * 255.0)); };
    char model[4] = {};
    in.readRawData(model, 4);
    const QByteArray kind(model, 4);
    if (kind == "RGB ") {
        float r = 0, g = 0, b = 0;
        in >> r >> g >> b;
        colour = QColor(channel(r), channel(g), channel(b));
    } else if (kind == "CMYK") {
        float c = 0, m = 0, y = 0, k = 0;
        in >> c >> m >> y >> k;
        colour = QColor::fromCmyk(channel(c), channel(m), channel(y), channel(k), 255).toRgb();
    } else if (kind == "Gray") {
        float grey = 0;
        in >> grey;
        colour = QColor(channel(grey), channel(grey), channel(grey));
    } else {
        in.skipRawData(12);
        return false;
    }
    return true;
}

// A RIFF palette by its chunks: "RIFF", size, "PAL ", then chunks of a four-letter name
// and a size, padded to even sizes; the "data" chunk holds a version, a count and the
// entries of red, green, blue and flags.
bool readRiffWhole(QIODevice *device, RGBA (&table)[256])
{
    if (!device->seek(0))
        return false;
    const QByteArray header = device->read(12);
    if (header.size() != 12 || !header.startsWith("RIFF") || header.mid(8, 4) != "PAL ")
        return false;
    QDataStream in(device);
    in.setByteOrder(QDataStream::LittleEndian);
    for (;;) {
        char name[4] = {};
        quint32 size = 0;
        if (in.readRawData(name, 4) != 4)
            return false;
        in >> size;
        if (in.status() != QDataStream::Ok)
            return false;
        if (QByteArray(name, 4) != "data") {
            if (!device->seek(device->pos() + qint64(size) + (size & 1)))
                return false;
            continue;
        }
        quint16 version = 0;
        quint16 count = 0;
        in >> version >> count;
        if (in.status() != QDataStream::Ok || size < 4)
            return false;
        const int entries = int(qMin<quint32>(qMin<quint32>(count, (size - 4) / 4), 256));
        const QByteArray bytes = device->read(entries * 4);
        if (bytes.size() != entries * 4)
            return false;
        for (int i = 0; i < entries; ++i)
            table[i] = RGBA(quint8(bytes[i * 4]), quint8(bytes[i * 4 + 1]), quint8(bytes[i * 4 + 2]), 255);
        return true;
    }
}

// A JASC text palette with lines ended by LF or CRLF: the count line says how many
// entries follow, at most 256 are taken. A line that isn't three or four numbers leaves
// its entry as it was.
bool readJascWhole(QIODevice *device, RGBA (&table)[256])
{
    QStringList lines;
    for (const QString &line : QString::fromLatin1(device->readAll()).split(QLatin1Char('\n'))) {
        if (!line.trimmed().isEmpty())
            lines << line.trimmed();
    }
    if (lines.size() < 3 || lines.at(0) != QLatin1String("JASC-PAL") || lines.at(1) != QLatin1String("0100"))
        return false;
    bool ok = false;
    const int count = lines.at(2).toInt(&ok);
    if (!ok || count < 0)
        return false;
    static const QRegularExpression entry(QStringLiteral("^(\\d{1,3})\\s+(\\d{1,3})\\s+(\\d{1,3})(?:\\s+(\\d{1,3}))?$"));
    for (int k = 0; k < count && k < 256 && k + 3 < lines.size(); ++k) {
        const QRegularExpressionMatch match = entry.match(lines.at(k + 3));
        if (!match.hasMatch())
            continue;
        const QString alpha = match.captured(4);
        table[k] = RGBA(clamp255(match.captured(1).toInt()), clamp255(match.captured(2).toInt()),
                        clamp255(match.captured(3).toInt()), alpha.isEmpty() ? 255 : clamp255(alpha.toInt()));
    }
    return true;
}

// A swatch exchange file by its blocks' lengths: each block is read whole and only a
// colour entry is looked into, so groups, their ends and kinds of blocks unknown here
// take nothing from the colours. A block cut short makes the file unreadable.
bool readAseWhole(QIODevice *device, RGBA (&table)[256])
{
    if (!device->seek(4))
        return false;
    QDataStream in(device);
    in.setByteOrder(QDataStream::BigEndian);
    quint16 major = 0;
    quint16 minor = 0;
    quint32 blocks = 0;
    in >> major >> minor >> blocks;
    if (in.status() != QDataStream::Ok || major != 1)
        return false;
    int stored = 0;
    for (quint32 b = 0; b < blocks && stored < 256; ++b) {
        quint16 type = 0;
        quint32 length = 0;
        in >> type >> length;
        if (in.status() != QDataStream::Ok || length > quint32(device->bytesAvailable()))
            return false;
        const QByteArray body = device->read(qint64(length));
        if (type != 1)
            continue;
        QDataStream block(body);
        block.setByteOrder(QDataStream::BigEndian);
        block.setFloatingPointPrecision(QDataStream::SinglePrecision);
        quint16 nameLength = 0;
        block >> nameLength;
        block.skipRawData(2 * nameLength);
        QColor colour;
        if (readAseColour(block, colour) && block.status() == QDataStream::Ok)
            table[stored++] = RGBA(quint8(colour.red()), quint8(colour.green()), quint8(colour.blue()), 255);
    }
    return true;
}

} // namespace

void reverse(RGBA (&table)[256])
{
    for (int i = 0; i < 128; ++i)
        std::swap(table[i], table[255 - i]);
}

bool readAct(QIODevice *device, RGBA (&table)[256], CodecRules rules)
{
    const QByteArray bytes = device->read(768);
    if (bytes.size() != 768)
        return false;
    for (int i = 0; i < 256; ++i)
        table[i] = RGBA(quint8(bytes[i * 3]), quint8(bytes[i * 3 + 1]), quint8(bytes[i * 3 + 2]), 255);
    if (rules == CodecRules::Designed) {
        reverse(table);
        return true;
    }
    // The longer kind of the file ends in the number of colours and the transparent
    // index, both big-endian; 0xFFFF for none.
    const QByteArray tail = device->read(4);
    if (tail.size() == 4) {
        const int transparent = (quint8(tail[2]) << 8) | quint8(tail[3]);
        if (transparent < 256)
            table[transparent].alpha = 0;
    }
    return true;
}

bool readAco(QIODevice *device, RGBA (&table)[256])
{
    QDataStream in(device);
    in.setByteOrder(QDataStream::BigEndian);
    quint16 version = 0;
    quint16 count = 0;
    in >> version >> count;
    if (in.status() != QDataStream::Ok || version != 1)
        return false;
    int stored = 0;
    for (int i = 0; i < count && stored < 256 && in.status() == QDataStream::Ok; ++i) {
        quint16 space = 0;
        quint16 w = 0;
        quint16 x = 0;
        quint16 y = 0;
        quint16 z = 0;
        in >> space >> w >> x >> y >> z;
        if (in.status() != QDataStream::Ok)
            break;
        QColor colour;
        switch (space) {
        case 0:
            colour = QColor(w / 257, x / 257, y / 257);
            break;
        case 1:
            colour = QColor::fromHsv(rounded(w / 182.5487f), x / 257, y / 257, 255).toRgb();
            break;
        case 2:
            colour = QColor::fromCmyk(255 - w / 257, 255 - x / 257, 255 - y / 257, 255 - z / 257, 255).toRgb();
            break;
        case 8: {
            const int grey = 255 - rounded(w / 39.2157f);
            colour = QColor(clamp255(grey), clamp255(grey), clamp255(grey));
            break;
        }
        default:
            continue; // another colour space: no entry used up
        }
        table[stored++] = RGBA(quint8(colour.red()), quint8(colour.green()), quint8(colour.blue()), 255);
    }
    return true;
}

bool readRiff(QIODevice *device, RGBA (&table)[256], CodecRules rules)
{
    if (rules == CodecRules::Complete)
        return readRiffWhole(device, table);
    if (!device->seek(8) || device->read(8) != "PAL data")
        return false;
    QDataStream in(device);
    in.setByteOrder(QDataStream::LittleEndian);
    quint32 size = 0;
    in >> size;
    size -= 8;
    if (in.status() != QDataStream::Ok || size >= 1025 || !device->seek(24))
        return false;
    const QByteArray bytes = device->read(size);
    if (bytes.size() != int(size))
        return false;
    memcpy(table, bytes.constData(), size);
    for (RGBA &entry : table)
        entry.alpha = 255;
    reverse(table);
    return true;
}

bool readJasc(QIODevice *device, RGBA (&table)[256], CodecRules rules)
{
    if (rules == CodecRules::Complete)
        return readJascWhole(device, table);
    const QStringList lines = QString::fromLatin1(device->readAll()).split(QStringLiteral("\r\n"), Qt::SkipEmptyParts);
    if (lines.size() < 2 || lines.at(0) != QLatin1String("JASC-PAL") || lines.at(1) != QLatin1String("0100"))
        return false;
    static const QRegularExpression entry(QStringLiteral("^(\\d{1,3})\\s(\\d{1,3})\\s(\\d{1,3})(?:\\s(\\d{1,3}))?$"));
    for (int k = 3; k < lines.size() && k < 259; ++k) {
        const QRegularExpressionMatch match = entry.match(lines.at(k));
        if (!match.hasMatch())
            continue;
        const QString alpha = match.captured(4);
        table[k - 3] = RGBA(clamp255(match.captured(1).toInt()), clamp255(match.captured(2).toInt()),
                            clamp255(match.captured(3).toInt()), alpha.isEmpty() ? 255 : clamp255(alpha.toInt()));
    }
    return true;
}

bool readAse(QIODevice *device, RGBA (&table)[256], CodecRules rules)
{
    if (rules == CodecRules::Complete)
        return readAseWhole(device, table);
    if (!device->seek(4))
        return false;
    QDataStream in(device);
    in.setByteOrder(QDataStream::BigEndian);
    in.setFloatingPointPrecision(QDataStream::SinglePrecision);
    quint16 major = 0;
    quint16 minor = 0;
    quint32 blocks = 0;
    in >> major >> minor >> blocks;
    if (in.status() != QDataStream::Ok || major != 1 || minor != 0)
        return false;
    int stored = 0;
    for (quint32 b = 0; b < blocks && stored < 256 && in.status() == QDataStream::Ok; ++b) {
        quint16 type = 0;
        quint32 length = 0;
        in >> type >> length;
        if (type == 1) {
            quint16 nameLength = 0;
            in >> nameLength;
            in.skipRawData(2 * nameLength);
            QColor colour;
            const bool known = readAseColour(in, colour);
            in.skipRawData(2); // colour type
            if (known && in.status() == QDataStream::Ok)
                table[stored++] = RGBA(quint8(colour.red()), quint8(colour.green()), quint8(colour.blue()), 255);
        } else if (type == 0xC001 || type == 0xC002) {
            quint16 nameLength = 0;
            in >> nameLength;
            in.skipRawData(2 * nameLength);
        } else {
            in.skipRawData(int(qMin<quint32>(length, INT_MAX)));
        }
    }
    return true;
}

bool readRows(QIODevice *device, RGBA (&table)[256])
{
    const QStringList lines = QString::fromLatin1(device->readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    static const QRegularExpression entry(
        QStringLiteral("^R:\\s?(\\d{1,3}),\\s?G:\\s?(\\d{1,3}),\\s?B:\\s?(\\d{1,3})(?:\\s?A:\\s?(\\d{1,3}))?"));
    int stored = 0;
    for (const QString &line : lines) {
        if (stored >= 256)
            break;
        const QRegularExpressionMatch match = entry.match(line);
        if (!match.hasMatch())
            continue;
        const QString alpha = match.captured(4);
        table[stored++] = RGBA(clamp255(match.captured(1).toInt()), clamp255(match.captured(2).toInt()),
                               clamp255(match.captured(3).toInt()), alpha.isEmpty() ? 255 : clamp255(alpha.toInt()));
    }
    return true;
}

bool readImagePalette(QIODevice *device, const char *format, RGBA (&table)[256], CodecRules rules)
{
    QImage image;
    if (!loadImage(device, format, image, rules) || image.format() != QImage::Format_Indexed8)
        return false;
    const QVector<QRgb> colours = image.colorTable();
    for (int i = 0; i < colours.size() && i < 256; ++i)
        table[i] = RGBA(colours.at(i));
    return true;
}


QByteArray actBytes(const RGBA (&table)[256], CodecRules rules)
{
    RGBA ordered[256];
    std::copy(std::begin(table), std::end(table), ordered);
    if (rules == CodecRules::Designed)
        reverse(ordered);
    QByteArray bytes;
    bytes.reserve(768);
    for (const RGBA &entry : ordered)
        bytes.append(char(entry.red)).append(char(entry.green)).append(char(entry.blue));
    return bytes;
}

namespace {

void appendLittle(QByteArray &bytes, quint32 value, int size)
{
    for (int i = 0; i < size; ++i)
        bytes.append(char((value >> (8 * i)) & 0xFF));
}

void appendBig(QByteArray &bytes, quint32 value, int size)
{
    for (int i = size - 1; i >= 0; --i)
        bytes.append(char((value >> (8 * i)) & 0xFF));
}

} // namespace

QByteArray riffBytes(const RGBA (&table)[256])
{
    const quint32 dataSize = 4 + 256 * 4; // version and count, then the entries
    QByteArray bytes("RIFF");
    appendLittle(bytes, 4 + 8 + dataSize, 4); // "PAL " and the data chunk
    bytes.append("PAL data");
    appendLittle(bytes, dataSize, 4);
    appendLittle(bytes, 0x0300, 2);
    appendLittle(bytes, 256, 2);
    for (const RGBA &entry : table)
        bytes.append(char(entry.red)).append(char(entry.green)).append(char(entry.blue)).append('\0');
    return bytes;
}

QByteArray jascBytes(const RGBA (&table)[256])
{
    QByteArray bytes("JASC-PAL\r\n0100\r\n256\r\n");
    for (const RGBA &entry : table)
        bytes += QByteArray::number(entry.red) + ' ' + QByteArray::number(entry.green) + ' '
                 + QByteArray::number(entry.blue) + "\r\n";
    return bytes;
}

// Version 1.0, one colour entry a block, each named by its colour as "#rrggbb", in RGB
// floats of 0..1, of the normal colour type.
QByteArray aseBytes(const RGBA (&table)[256])
{
    QByteArray bytes("ASEF");
    appendBig(bytes, 1, 2);
    appendBig(bytes, 0, 2);
    appendBig(bytes, 256, 4);
    for (const RGBA &entry : table) {
        const QString name = QColor(entry.red, entry.green, entry.blue).name();
        QByteArray block;
        appendBig(block, quint32(name.size() + 1), 2);
        for (const QChar c : name)
            appendBig(block, c.unicode(), 2);
        appendBig(block, 0, 2);
        block.append("RGB ");
        for (const quint8 channel : {entry.red, entry.green, entry.blue}) {
            const float value = float(channel) / 255.0f;
            quint32 word = 0;
            memcpy(&word, &value, 4);
            appendBig(block, word, 4);
        }
        appendBig(block, 2, 2);
        appendBig(bytes, 0x0001, 2);
        appendBig(bytes, quint32(block.size()), 4);
        bytes += block;
    }
    return bytes;
}

} // namespace PaletteFiles
} // namespace Ovra
