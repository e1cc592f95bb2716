#pragma once

#include "foundation/global.h"

#include <QByteArray>

namespace Ovra {

// The shape of a sound: what a header tells without the samples. A default one, with
// no channels and one bit, marks a sound that isn't loaded.
struct OVRA_EXPORT SampleInfo
{
    quint16 channels = 0;
    quint16 bits = 1;      // 8, 16, 24 or 32 (20 is kept like 24)
    quint32 frequency = 0; // frames a second
    quint32 samples = 0;   // frames; a frame holds one value for each channel
};

// A sound in memory: interleaved little-endian PCM, `samples * channels * bits / 8`
// bytes. 8-bit values are unsigned with 128 as silence, the others signed; 24-bit
// values take three bytes.
struct OVRA_EXPORT SoundSample : SampleInfo
{
    // The play state of a sound being edited.
    enum State { Stopped, Playing, Paused };

    QByteArray data;
};

// File-dialog filters of sounds.
enum SoundExtensionType {
    AllSoundWildcards = 0, // the patterns behind a label for all sound formats
    SoundReadFilters = 1,
    SoundWriteFilters = 2, // without MP3, which is read only
};

// The filter text, or null past the table.
OVRA_EXPORT const char *soundFileExtension(SoundExtensionType type);

// One value of `bits` bits as a float of about -1 to 1.
OVRA_EXPORT float decodeSample(const void *sample, unsigned short bits);
// The inverse, truncating and without a clamp: values past the range wrap.
OVRA_EXPORT void encodeSample(float value, void *sample, unsigned short bits);
// One value times `scale`, held to the range of its depth. A 24-bit value is held before
// its low byte goes, so only attenuation is of use there, and of a 32-bit value only the
// low 16 bits are stored.
OVRA_EXPORT void scaleSample(void *out, const void *in, float scale, unsigned short bits);

// Converts the sound to the channels, bits and frequency of `target` (its frame count
// doesn't count); the rate goes through libsamplerate's best sinc converter. False, and
// the sound as it was, when the converter refuses (a ratio below 1/256 or above 256).
OVRA_EXPORT bool resampleSound(SoundSample &sample, SampleInfo target);

// Gives every value of the sound `bits` bits, of 8, 16, 24 or 32: a wider depth keeps each
// value exactly, a narrower one drops its low bits. Bytes past the last whole value go.
// False, and the sound untouched, for any other depth on either side or a result too
// large to hold.
OVRA_EXPORT bool changeSampleDepth(SoundSample &sample, quint16 bits);

} // namespace Ovra
