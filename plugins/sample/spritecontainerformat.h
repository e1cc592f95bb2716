#pragma once

// The bytes of a sprite container file (FORMATS.md), apart from the model that holds
// them, so that the reader can be tested and fuzzed on its own.
#include "image/imagedata.h"

#include <QByteArray>
#include <QImage>
#include <QString>
#include <QVector>

// No side of a sprite may be longer: it keeps a hostile file from asking for gigabytes.
constexpr int MaxSpriteSide = 16384;

// The picture of a sprite as it is kept: its size and kind and the packed pixel stream.
struct SpritePixels
{
    enum Format : quint8 { NoFormat = 0, Indexed = 1, TrueColor = 2 };
    enum Codec : quint8 { NoCodec = 0, Raw = 1, Rle8 = 2, Lz5 = 3 };

    // What is known of the stream: one read without its check is checked on first use.
    // It says nothing of what the pixels are, so equality leaves it out.
    enum Check : quint8 { Unchecked = 0, Sound = 1, Damaged = 2 };

    quint16 width = 0;
    quint16 height = 0;
    quint8 format = NoFormat;
    quint8 codec = NoCodec;
    QByteArray stream;
    mutable quint8 check = Unchecked;
    // What a stream read in place views (see setStream); empty for a stream of its own.
    QByteArray owner = {};

    bool isNull() const { return format == NoFormat; }
    // A stream that is a piece of a container's bytes, read in place: it views them, and
    // keeps a shared copy of the whole array so that they live as long as it does.
    void setStream(const QByteArray &bytes, int at, int length);
    // The bytes the stream unpacks to.
    qint64 unpackedSize() const;
    bool operator==(const SpritePixels &other) const
    {
        return width == other.width && height == other.height && format == other.format && codec == other.codec
            && stream == other.stream;
    }
};

struct SpriteContainerPalette
{
    quint16 group = 0;
    quint16 number = 0;
    // Up to 256 entries; those missing are transparent black.
    QVector<Ovra::RGBA> colors;
};

struct SpriteContainerSprite
{
    quint16 group = 0;
    quint16 number = 0;
    qint16 axisX = 0;
    qint16 axisY = 0;
    // For indexed pixels (own or shared); 0 otherwise.
    quint16 palette = 0;
    // The earlier sprite whose pixels these are, or -1 for pixels of its own.
    qint32 source = -1;
    // Null for a sprite that shares another's.
    SpritePixels pixels;
};

struct SpriteContainerData
{
    QVector<SpriteContainerPalette> palettes;
    QVector<SpriteContainerSprite> sprites;
};

// When the reader checks that every stream unpacks to exactly its picture: at once, or
// left to the first use of each (the streams stay Unchecked), so that opening a large
// file costs no more than its structure.
enum class StreamCheck { AtRead, OnFirstUse };

// The file of the data. Palettes are written without their trailing unused entries.
QByteArray writeSpriteContainer(const SpriteContainerData &data);
// The data of a file; false, with the reason, for bytes that aren't one or that wouldn't
// be written back the same. The structure (header, sizes, codecs, lengths, palettes and
// links) is always checked; the streams as `streams` says.
bool readSpriteContainer(const QByteArray &bytes, SpriteContainerData &data, QString &reason,
                         StreamCheck streams = StreamCheck::AtRead);

// Whether the stream unpacks to exactly the bytes of its picture, without unpacking it.
bool checkSpriteStream(const SpritePixels &pixels, QString &reason);
// The same, once for the pixels: the answer is kept in their `check`.
bool spriteStreamIsSound(const SpritePixels &pixels, QString &reason);

// The picture of the pixels, indexed ones with the colour table given; null when the
// stream doesn't decode.
QImage decodeSpritePixels(const SpritePixels &pixels, const QVector<QRgb> &colorTable);
// The pixels of a picture: an indexed one packed by the smallest of the codecs (LZ5 only
// where every index is below 32), anything else as raw ARGB32. Null for a null picture
// or one with a side beyond MaxSpriteSide.
SpritePixels encodeSpritePixels(const QImage &picture);
