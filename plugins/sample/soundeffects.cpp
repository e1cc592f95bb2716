#include "soundeffects.h"

#include "sound/soundsample.h"

#include <algorithm>
#include <cmath>
#include <vector>

using namespace Ovra;

namespace {

int valueBytes(const SampleInfo &info)
{
    switch (info.bits) {
    case 8:
    case 16:
    case 24:
    case 32:
        return info.bits / 8;
    default:
        return 0;
    }
}

// The values as floats, and back, held to the range so that nothing wraps.
std::vector<float> decoded(const SampleInfo &info, const QByteArray &frames)
{
    const int bytes = valueBytes(info);
    std::vector<float> values(size_t(frames.size() / bytes));
    for (size_t i = 0; i < values.size(); ++i)
        values[i] = decodeSample(frames.constData() + i * size_t(bytes), info.bits);
    return values;
}

void encoded(const SampleInfo &info, const std::vector<float> &values, QByteArray &frames)
{
    const int bytes = valueBytes(info);
    // The largest value below 1 that each depth can store.
    const float top = 1.0f - 1.0f / float(1u << (qMin(bytes * 8, 24) - 1));
    for (size_t i = 0; i < values.size(); ++i)
        encodeSample(qBound(-1.0f, values[i], top), frames.data() + i * size_t(bytes), info.bits);
}

bool usable(const SampleInfo &info, const QByteArray &frames)
{
    const int bytes = valueBytes(info);
    return bytes > 0 && info.channels > 0 && frames.size() % (bytes * info.channels) == 0;
}

} // namespace

bool NormalizeEffect::apply(const SampleInfo &info, QByteArray &frames)
{
    if (!usable(info, frames))
        return false;
    std::vector<float> values = decoded(info, frames);
    float peak = 0;
    for (float value : values)
        peak = std::max(peak, std::fabs(value));
    if (peak == 0)
        return true;
    const float gain = 1.0f / peak;
    for (float &value : values)
        value *= gain;
    encoded(info, values, frames);
    return true;
}

bool ReverseEffect::apply(const SampleInfo &info, QByteArray &frames)
{
    if (!usable(info, frames))
        return false;
    const int frameBytes = valueBytes(info) * info.channels;
    const int count = frames.size() / frameBytes;
    QByteArray reversed(frames.size(), Qt::Uninitialized);
    for (int i = 0; i < count; ++i)
        memcpy(reversed.data() + i * frameBytes, frames.constData() + (count - 1 - i) * frameBytes, size_t(frameBytes));
    frames = reversed;
    return true;
}

bool EchoEffect::apply(const SampleInfo &info, QByteArray &frames)
{
    if (!usable(info, frames) || info.frequency == 0)
        return false;
    std::vector<float> values = decoded(info, frames);
    const size_t delay = size_t(info.frequency / 4) * info.channels;
    for (size_t i = delay; i < values.size(); ++i)
        values[i] += 0.5f * values[i - delay];
    encoded(info, values, frames);
    return true;
}
