#pragma once

// The shape of every stream fuzz target: two bytes give the image's size and format,
// the rest is the stream. Whatever the decoder answers, the image must keep its size and
// format and nothing may be touched outside it; the sanitizers watch the second part.
#include <QBuffer>
#include <QImage>

#include <cstdint>
#include <cstdlib>

template <typename Load>
int decodeStream(const uint8_t *data, size_t size, Load load)
{
    if (size < 2)
        return 0;
    static const QImage::Format formats[] = {QImage::Format_Indexed8, QImage::Format_RGB32, QImage::Format_ARGB32,
                                             QImage::Format_Grayscale8};
    const int width = 1 + (data[0] & 0x3F);
    const int height = 1 + (data[1] & 0x1F);
    const QImage::Format format = formats[(data[0] >> 6) & 3];
    QImage image(width, height, format);
    QByteArray stream(reinterpret_cast<const char *>(data + 2), int(size - 2));
    QBuffer buffer(&stream);
    load(image, &buffer);
    if (image.width() != width || image.height() != height || image.format() != format)
        std::abort();
    return 0;
}
