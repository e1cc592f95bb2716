#pragma once

#include <QDataStream>

namespace Ovra {

// The 128-byte header of a PCX file, little-endian.
struct PcxHeader
{
    quint8 manufacturer = 0;
    quint8 version = 0;
    quint8 encoding = 0;
    quint8 bitsPerPixel = 0;
    quint16 xMin = 0;
    quint16 yMin = 0;
    quint16 xMax = 0;
    quint16 yMax = 0;
    quint16 horizontalDpi = 0;
    quint16 verticalDpi = 0;
    quint8 colorMap[48] = {};
    quint8 reserved = 0;
    quint8 planes = 0;
    quint16 bytesPerLine = 0;
    quint16 paletteInfo = 0;
};

// Reads the whole header; the stream's status tells whether it was all there.
inline QDataStream &operator>>(QDataStream &in, PcxHeader &header)
{
    in >> header.manufacturer >> header.version >> header.encoding >> header.bitsPerPixel >> header.xMin
        >> header.yMin >> header.xMax >> header.yMax >> header.horizontalDpi >> header.verticalDpi;
    in.readRawData(reinterpret_cast<char *>(header.colorMap), 48);
    in >> header.reserved >> header.planes >> header.bytesPerLine >> header.paletteInfo;
    in.skipRawData(58);
    return in;
}

} // namespace Ovra
