#pragma once

// Sounds for tests: sines of the given pitch, the n-th channel at n times the pitch, so
// that channels can be told apart after a codec or a converter.
#include "sound/soundsample.h"

#include <cmath>

inline Ovra::SoundSample sineSample(quint32 frequency, quint16 channels, quint16 bits, quint32 frames, double hertz,
                                    double amplitude)
{
    Ovra::SoundSample sample;
    sample.channels = channels;
    sample.bits = bits;
    sample.frequency = frequency;
    sample.samples = frames;
    sample.data.resize(int(frames * channels * (bits / 8)));
    char *out = sample.data.data();
    for (quint32 i = 0; i < frames; ++i) {
        for (int c = 0; c < channels; ++c) {
            Ovra::encodeSample(float(amplitude * std::sin(2 * M_PI * hertz * (c + 1) * i / frequency)), out, bits);
            out += bits / 8;
        }
    }
    return sample;
}
