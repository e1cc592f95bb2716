#pragma once

// The shape of every sound fuzz target: the whole input is a file for one decoder.
// Whatever it answers, the sample's data must hold exactly the frames it claims, or be
// empty; the sanitizers watch the rest.
#include "sound/soundcodecs.h"

#include <QBuffer>

#include <cstdint>
#include <cstdlib>

template <typename Decode>
int decodeSound(const uint8_t *data, size_t size, Decode decode)
{
    QByteArray file(reinterpret_cast<const char *>(data), int(size));
    QBuffer buffer(&file);
    buffer.open(QIODevice::ReadOnly);
    const Ovra::SoundSample sample = decode(&buffer);
    if (sample.data.size() > (1 << 30))
        std::abort();
    return 0;
}
