#include "sound/soundsample.h"

#include <samplerate.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace Ovra {
namespace {

// A float truncated to a 64-bit integer. Values past its range stand at its ends (where
// a plain cast would be undefined), which leaves every wrap of the 32-bit and smaller
// results as it would be.
qint64 truncated(double value)
{
    if (std::isnan(value))
        return 0;
    if (value >= 9.2e18)
        return std::numeric_limits<qint64>::max();
    if (value <= -9.2e18)
        return std::numeric_limits<qint64>::min();
    return qint64(value);
}

qint32 read24(const uchar *bytes)
{
    return qint32(quint32(bytes[0]) << 8 | quint32(bytes[1]) << 16 | quint32(bytes[2]) << 24);
}

void write24(uchar *bytes, qint64 value)
{
    bytes[0] = uchar(value >> 8);
    bytes[1] = uchar(value >> 16);
    bytes[2] = uchar(value >> 24);
}

bool isWholeByteDepth(quint16 bits)
{
    return bits == 8 || bits == 16 || bits == 24 || bits == 32;
}

// One value as the top bits of a 32-bit integer, and back: 8-bit values are unsigned
// around 128, the others signed little-endian.
qint32 widened(const uchar *value, quint16 bits)
{
    switch (bits) {
    case 8:
        return qint32(quint32(value[0] ^ 0x80u) << 24);
    case 16:
        return qint32(quint32(value[0]) << 16 | quint32(value[1]) << 24);
    case 24:
        return read24(value);
    default:
        return qint32(quint32(value[0]) | quint32(value[1]) << 8 | quint32(value[2]) << 16 | quint32(value[3]) << 24);
    }
}

void narrowed(qint32 value, uchar *out, quint16 bits)
{
    const quint32 word = quint32(value);
    if (bits == 8) {
        out[0] = uchar((word >> 24) ^ 0x80u);
        return;
    }
    for (int i = 0; i < bits / 8; ++i)
        out[i] = uchar(word >> (32 - bits + 8 * i));
}

} // namespace

const char *soundFileExtension(SoundExtensionType type)
{
    switch (type) {
    case AllSoundWildcards:
        return " (*.wav *.ogg *.flac *.mp3);;";
    case SoundReadFilters:
        return "WAVEform audio format (*.wav);;Ogg Vorbis (*.ogg);;Free Lossless Audio Codec (*.flac);;MPEG-1/2 Audio "
               "Layer 3 (*.mp3)";
    case SoundWriteFilters:
        return "WAVEform audio format (*.wav);;Ogg Vorbis (*.ogg);;Free Lossless Audio Codec (*.flac)";
    }
    return nullptr;
}

float decodeSample(const void *sample, unsigned short bits)
{
    const auto *bytes = static_cast<const uchar *>(sample);
    switch (bits) {
    case 8:
        return float(int(bytes[0]) - 128) * 0.0078125f;
    case 16: {
        qint16 value;
        memcpy(&value, bytes, 2);
        return float(value) * 3.0517578125e-05f;
    }
    case 20:
    case 24:
        return float(read24(bytes)) * 4.656612873077393e-10f;
    case 32: {
        qint32 value;
        memcpy(&value, bytes, 4);
        return float(double(value) * 4.656612873077393e-10);
    }
    default:
        return 0;
    }
}

void encodeSample(float value, void *sample, unsigned short bits)
{
    auto *bytes = static_cast<uchar *>(sample);
    switch (bits) {
    case 8:
        bytes[0] = uchar(truncated(double(value * 128 + 128)));
        break;
    case 16: {
        const quint16 low = quint16(truncated(double(value * 32768)));
        memcpy(bytes, &low, 2);
        break;
    }
    case 20:
    case 24:
        write24(bytes, truncated(double(value) * 2147483648.0));
        break;
    case 32: {
        const quint32 low = quint32(truncated(double(value) * 2147483648.0));
        memcpy(bytes, &low, 4);
        break;
    }
    default:
        break;
    }
}

void scaleSample(void *out, const void *in, float scale, unsigned short bits)
{
    const auto *source = static_cast<const uchar *>(in);
    auto *target = static_cast<uchar *>(out);
    switch (bits) {
    case 8: {
        const qint64 v = truncated(double(float(int(source[0]) - 128) * scale));
        target[0] = v < -128 ? 0 : v > 127 ? 255 : uchar(v + 128);
        break;
    }
    case 16: {
        qint16 value;
        memcpy(&value, source, 2);
        const qint16 scaled = qint16(qBound<qint64>(-32768, truncated(double(float(value) * scale)), 32767));
        memcpy(target, &scaled, 2);
        break;
    }
    case 20:
    case 24: {
        const qint64 t = qBound<qint64>(-8388608, truncated(double(float(read24(source)) * scale)), 8388607);
        write24(target, t);
        break;
    }
    case 32: {
        qint32 value;
        memcpy(&value, source, 4);
        const qint64 t = qBound<qint64>(std::numeric_limits<qint32>::min(), truncated(double(float(value) * scale)),
                                        std::numeric_limits<qint32>::max());
        const quint16 low = quint16(t);
        memcpy(target, &low, 2);
        break;
    }
    default:
        break;
    }
}

bool resampleSound(SoundSample &sample, SampleInfo target)
{
    // The converter can't take a sound without channels (it would stop the program).
    if (sample.channels == 0)
        return false;
    const qint64 count = qint64(sample.channels) * sample.samples;
    std::vector<float> input(size_t(qMax<qint64>(count, 0)));
    const auto *bytes = reinterpret_cast<const uchar *>(sample.data.constData());
    const qint64 available = sample.bits ? qint64(sample.data.size()) * 8 / sample.bits : 0;
    const long usable = long(qMin(count, available)); // never read past the data
    if (sample.bits == 8) {
        for (long i = 0; i < usable; ++i)
            input[size_t(i)] = float(bytes[i] / 127.5 - 1.0);
    } else if (sample.bits == 16) {
        src_short_to_float_array(reinterpret_cast<const short *>(bytes), input.data(), int(usable));
    } else {
        // Four bytes a value: a 24-bit sound is no fit input here.
        src_int_to_float_array(reinterpret_cast<const int *>(bytes), input.data(),
                               int(qMin<qint64>(usable, sample.data.size() / 4)));
    }

    const double ratio = double(target.frequency) / double(sample.frequency);
    const qint64 frames = truncated(double(sample.samples) * ratio);
    if (frames < 0 || frames > (qint64(1) << 31) / qMax<qint64>(sample.channels, 1))
        return false;
    std::vector<float> output;
    if (sample.frequency == target.frequency && !input.empty()) {
        output = std::move(input);
    } else {
        output.resize(size_t(frames) * sample.channels);
        SRC_DATA data{};
        data.data_in = input.data();
        data.data_out = output.data();
        data.input_frames = long(sample.samples);
        data.output_frames = long(frames);
        data.src_ratio = ratio;
        if (src_simple(&data, SRC_SINC_BEST_QUALITY, sample.channels) != 0)
            return false;
    }

    if (target.channels != sample.channels) {
        std::vector<float> mixed;
        if (target.channels == 1) {
            // Pairs are averaged, whatever the channel count was.
            mixed.resize(output.size() / 2);
            for (size_t i = 0; i < mixed.size(); ++i)
                mixed[i] = (output[2 * i] + output[2 * i + 1]) * 0.5f;
        } else {
            // Each value twice: mono to stereo.
            mixed.resize(output.size() * 2);
            for (size_t i = 0; i < output.size(); ++i)
                mixed[2 * i] = mixed[2 * i + 1] = output[i];
        }
        output = std::move(mixed);
    }

    sample.channels = target.channels;
    sample.frequency = target.frequency;
    sample.samples = quint32(frames);
    sample.bits = target.bits;
    const qint64 size = qint64(sample.bits) * qint64(output.size()) / 8;
    sample.data.resize(int(size));
    auto *out = reinterpret_cast<uchar *>(sample.data.data());
    if (sample.bits == 8) {
        for (size_t i = 0; i < output.size() && qint64(i) < size; ++i)
            out[i] = uchar(truncated((double(output[i]) + 1.0) * 127.5));
    } else if (sample.bits == 16) {
        src_float_to_short_array(output.data(), reinterpret_cast<short *>(out), int(qMin<qint64>(qint64(output.size()), size / 2)));
    } else {
        src_float_to_int_array(output.data(), reinterpret_cast<int *>(out), int(qMin<qint64>(qint64(output.size()), size / 4)));
    }
    return true;
}

bool changeSampleDepth(SoundSample &sample, quint16 bits)
{
    if (!isWholeByteDepth(sample.bits) || !isWholeByteDepth(bits))
        return false;
    if (bits == sample.bits)
        return true;
    const int from = sample.bits / 8;
    const int to = bits / 8;
    const qint64 count = sample.data.size() / from;
    if (count * to > std::numeric_limits<int>::max() - 64)
        return false;
    QByteArray data(int(count * to), Qt::Uninitialized);
    const auto *in = reinterpret_cast<const uchar *>(sample.data.constData());
    auto *out = reinterpret_cast<uchar *>(data.data());
    for (qint64 i = 0; i < count; ++i)
        narrowed(widened(in + i * from, sample.bits), out + i * to, bits);
    sample.data = data;
    sample.bits = bits;
    return true;
}

} // namespace Ovra
