#pragma once

#include "sound/soundsample.h"

class QIODevice;

namespace Ovra {

// Whole-file sound codecs. A reader opens a closed device for reading, a writer for
// writing; neither closes it again. A reader that fails gives a sample with empty data.

OVRA_EXPORT SoundSample soundFromWAV(QIODevice *device);
// The header of a WAV file alone; all zeros for a file that isn't PCM, and the default
// when the device can't be opened.
OVRA_EXPORT SampleInfo soundInfoFromWAV(QIODevice *device);
OVRA_EXPORT bool soundToWAV(const SoundSample &sample, QIODevice *device);

// Ogg Vorbis, decoded to 16 bits; written at quality 0.4.
OVRA_EXPORT SoundSample soundFromOGG(QIODevice *device);
OVRA_EXPORT bool soundToOGG(const SoundSample &sample, QIODevice *device);

OVRA_EXPORT SoundSample soundFromFLAC(QIODevice *device);
OVRA_EXPORT bool soundToFLAC(const SoundSample &sample, QIODevice *device);

// MPEG audio layer 3, decoded to 16 bits. There is no encoder.
OVRA_EXPORT SoundSample soundFromMP3(QIODevice *device);

// By format name ("WAV", "OGG", "FLAC", "MP3", or what a sound extension serves); true
// when sound data came out.
OVRA_EXPORT bool loadSound(QIODevice *device, const char *format, SoundSample &sample);
// "WAV", "OGG", "FLAC", or a sound-saving extension's format.
OVRA_EXPORT bool saveSound(QIODevice *device, const char *format, const SoundSample &sample);

} // namespace Ovra
