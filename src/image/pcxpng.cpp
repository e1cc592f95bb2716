#include "image/pcxpng.h"

#include "foundation/utilities.h"
#include "image/imagedata.h"
#include "image/pcxheader_p.h"

#include <QDataStream>
#include <QIODevice>
#include <QImage>

#include <cstring>

namespace Ovra {
namespace {

QDataStream &operator<<(QDataStream &out, const PcxHeader &header)
{
    out << header.manufacturer << header.version << header.encoding << header.bitsPerPixel << header.xMin
        << header.yMin << header.xMax << header.yMax << header.horizontalDpi << header.verticalDpi;
    out.writeRawData(reinterpret_cast<const char *>(header.colorMap), 48);
    out << header.reserved << header.planes << header.bytesPerLine << header.paletteInfo;
    const char filler[58] = {};
    out.writeRawData(filler, 58);
    return out;
}

// The picture the header asks for, cleared, in `image`; false for a header whose size
// the rest of the file can't fill (the image is then null) or that makes no picture of
// its format (the image is then as it was).
bool preparePicture(QImage &image, QIODevice *device, const PcxHeader &header, QImage::Format format)
{
    const int width = int(header.xMax) - int(header.xMin) + 1;
    const int height = int(header.yMax) - int(header.yMin) + 1;
    // Two bytes of the file make at most 63 bytes of lines: a header that asks for more
    // rows than the rest of the file can fill ends as a file cut short would, before a
    // picture of that size is ever allocated.
    if (!device->isSequential() && width > 0 && height > 0) {
        const qint64 lineBytes = qint64(header.planes) * qint64(header.bytesPerLine ? header.bytesPerLine : 1);
        const qint64 rest = device->size() - device->pos();
        if (lineBytes * height > rest * 32 + 64) {
            image = QImage();
            return false;
        }
    }
    if (width > 0 && height > 0 && (image.width() != width || image.height() != height || image.format() != format))
        image = QImage(width, height, format);
    // A header without a size of its own decodes into the picture it was given; only one
    // of the file's format can take its pixels (a true-colour file swaps four bytes a pixel).
    if (image.isNull() || image.format() != format)
        return false;
    memset(image.bits(), 0, size_t(image.sizeInBytes()));
    return true;
}

// The run-length packets into the picture's rows, plane by plane; false (and a null
// image) where the file ends before the last row.
bool decodePackets(QImage &image, QIODevice *device, const PcxHeader &header)
{
    const int planes = header.planes;
    const int step = planes == 3 ? 4 : planes;
    const int imageWidth = image.width();
    const int rows = image.height();
    const int rowSize = image.bytesPerLine();
    int row = 0;
    int plane = 0;
    int column = 0;
    uchar *start = image.scanLine(0);
    // The packets are read from memory; only the bytes they took are taken from the device,
    // so that the palette block behind them is found where it lies.
    const QByteArray data = device->peek(qMax<qint64>(device->bytesAvailable(), 0));
    const auto *const begin = reinterpret_cast<const uchar *>(data.constData());
    const uchar *const end = begin + data.size();
    const uchar *p = begin;
    while (row < rows && p < end) {
        const quint8 byte = *p++;
        int count = 1;
        quint8 value = byte;
        if (byte >= 0xC0) {
            if (p == end)
                break;
            count = byte & 0x3F;
            value = *p++;
        }
        for (; count > 0 && row < rows; --count) {
            if (column < imageWidth) {
                // Planes that don't fit the pixel (more than the bytes of a pixel) are kept
                // inside their row.
                const int at = plane + column * step;
                if (at < rowSize)
                    start[at] = value;
            }
            if (++column == header.bytesPerLine) {
                column = 0;
                if (++plane >= planes) {
                    plane = 0;
                    if (++row < rows)
                        start = image.scanLine(row);
                }
            }
        }
    }
    device->skip(p - begin);
    if (row < rows) {
        image = QImage();
        return false;
    }
    return true;
}

// The planes come red first; the picture's words hold blue first.
void swapRedAndBlue(QImage &image)
{
    for (int y = 0; y < image.height(); ++y) {
        uchar *pixel = image.scanLine(y);
        for (int x = 0; x < image.width(); ++x, pixel += 4)
            std::swap(pixel[0], pixel[2]);
    }
}

// The palette block behind the packets, else the header's sixteen colours: true for
// the block.
bool readPalette(QImage &image, QIODevice *device, QDataStream &in, const PcxHeader &header)
{
    const qint64 size = device->size();
    const qint64 position = device->pos();
    // Lands one byte behind the mark of a regular file with stray bytes before its
    // block; a regular file doesn't skip at all.
    if (position + 769 < size)
        skipRead(device, uint(size - position - 768));
    quint8 mark = 0;
    if (!device->atEnd()) {
        in >> mark;
        if (mark == 0x0C && device->size() - device->pos() >= 768) {
            QVector<QRgb> table(256);
            for (QRgb &entry : table) {
                quint8 red = 0;
                quint8 green = 0;
                quint8 blue = 0;
                in >> red >> green >> blue;
                entry = qRgb(red, green, blue);
            }
            image.setColorTable(table);
            return true;
        }
    }
    QVector<QRgb> table(256, qRgb(0, 0, 0));
    for (int i = 0; i < 16; ++i)
        table[i] = qRgb(header.colorMap[i * 3], header.colorMap[i * 3 + 1], header.colorMap[i * 3 + 2]);
    image.setColorTable(table);
    return false;
}

} // namespace

bool loadPCX(QImage &image, QIODevice *device, bool *hasPalette)
{
    if (!device || !(device->isReadable() || device->open(QIODevice::ReadOnly)))
        return false;
    QDataStream in(device);
    in.setByteOrder(QDataStream::LittleEndian);
    PcxHeader header;
    in >> header;
    const int depth = (header.planes * header.bitsPerPixel) & 0xFF;
    const QImage::Format format = formatOfDepth(depth);
    if (in.status() != QDataStream::Ok || header.manufacturer != 10 || header.version != 5
        || format == QImage::Format_Invalid)
        return false;
    if (!preparePicture(image, device, header, format) || !decodePackets(image, device, header))
        return false;

    if (depth > 8) {
        swapRedAndBlue(image);
        if (hasPalette)
            *hasPalette = false;
    } else if (depth == 8) {
        const bool found = readPalette(image, device, in, header);
        if (hasPalette)
            *hasPalette = found;
    }
    return in.status() == QDataStream::Ok;
}

bool savePCX(const QImage &image, QIODevice *device)
{
    if (!device || !(device->isWritable() || device->open(QIODevice::WriteOnly)))
        return false;
    QDataStream out(device);
    out.setByteOrder(QDataStream::LittleEndian);
    int bits = 0;
    switch (image.format()) {
    case QImage::Format_Indexed8:
        bits = 8;
        break;
    case QImage::Format_RGB32:
        bits = 24;
        break;
    case QImage::Format_ARGB32:
    case QImage::Format_ARGB32_Premultiplied:
        bits = 32;
        break;
    default:
        break;
    }
    const int planes = bits / 8;
    PcxHeader header;
    header.manufacturer = 10;
    header.version = 5;
    header.encoding = 1;
    header.bitsPerPixel = 8;
    header.xMax = quint16(image.width() - 1);
    header.yMax = quint16(image.height() - 1);
    header.planes = quint8(planes);
    header.bytesPerLine = quint16(image.width());
    header.paletteInfo = 1;
    out << header;

    // Several planes come from the swapped picture: red, green, blue, alpha in byte order.
    const QImage work = planes > 1 ? image.rgbSwapped() : image;
    const int step = planes > 1 ? 4 : 1;
    const int width = image.width();
    for (int y = 0; y < image.height() && planes > 0; ++y) {
        const uchar *line = work.constScanLine(y);
        for (int plane = 0; plane < planes; ++plane) {
            for (int x = 0; x < width;) {
                const uchar value = line[plane + x * step];
                int count = 1;
                while (count < 63 && x + count < width && line[plane + (x + count) * step] == value)
                    ++count;
                if (count >= 2 || value >= 0xC0)
                    out << quint8(count | 0xC0) << value;
                else
                    out << value;
                x += count;
            }
        }
    }
    if (planes == 1) {
        out << quint8(0x0C);
        QVector<QRgb> table = image.colorTable();
        table.resize(256);
        for (QRgb entry : qAsConst(table))
            out << quint8(qRed(entry)) << quint8(qGreen(entry)) << quint8(qBlue(entry));
    }
    return out.status() == QDataStream::Ok;
}

bool loadPNG(QImage &image, QIODevice *device)
{
    if (!device || !(device->isReadable() || device->open(QIODevice::ReadOnly)))
        return false;
    image.load(device, "PNG");
    return true;
}

bool savePNG(const QImage &image, QIODevice *device)
{
    // Readable, not writable, is what is asked here; the pairing is kept as it stands.
    if (!device || !(device->isReadable() || device->open(QIODevice::WriteOnly)))
        return false;
    return image.save(device, "PNG", -1);
}

} // namespace Ovra
