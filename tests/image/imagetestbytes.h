#pragma once

#include "image/imagecodecs.h"

#include <QBuffer>
#include <QByteArray>
#include <QDir>
#include <QImage>
#include <QtTest>

#include <initializer_list>

// Byte builders the image tests share.
namespace ImageTestBytes {

// One data row ("file") for each input a fuzz target once crashed on, kept in `folder`.
inline void addFuzzFindings(const QString &folder)
{
    QTest::addColumn<QString>("file");
    const QStringList names = QDir(folder).entryList(QDir::Files);
    QVERIFY2(!names.isEmpty(), qPrintable(folder));
    for (const QString &name : names)
        QTest::newRow(qPrintable(name)) << QDir(folder).filePath(name);
}

inline QByteArray bytes(std::initializer_list<int> values)
{
    QByteArray result;
    for (int value : values)
        result.append(char(value));
    return result;
}

// A PCX header of 128 bytes; its 16 colours are entry i = (i, 2i, 3i).
inline QByteArray pcxHeader(int xMin, int yMin, int xMax, int yMax, int bits, int planes, int bytesPerLine,
                            int manufacturer = 10, int version = 5)
{
    QByteArray header(128, '\0');
    header[0] = char(manufacturer);
    header[1] = char(version);
    header[2] = 1;
    header[3] = char(bits);
    auto word = [&header](int at, int value) {
        header[at] = char(value & 0xFF);
        header[at + 1] = char((value >> 8) & 0xFF);
    };
    word(4, xMin);
    word(6, yMin);
    word(8, xMax);
    word(10, yMax);
    for (int i = 0; i < 48; ++i)
        header[16 + i] = char((i / 3) * (i % 3 + 1));
    header[65] = char(planes);
    word(66, bytesPerLine);
    return header;
}

// The picture written by the library's saver of that format name; empty when it refuses.
inline QByteArray savedByName(const QImage &image, const char *format)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    return Ovra::saveImage(&buffer, format, image) ? bytes : QByteArray();
}

inline bool loadByName(QByteArray bytes, const char *format, QImage &image)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    return Ovra::loadImage(&buffer, format, image);
}

} // namespace ImageTestBytes
