#pragma once

#include "sound/soundsample.h"

class QIODevice;

namespace Ovra {

// Whole-file sound codecs. A reader opens a closed device for reading, a writer for
// writing; neither closes it again. A reader that fails gives a sample with empty data.
//
// Each codec comes in two sets of rules. The forms without a CodecRules argument keep the
// designed behaviour that files made so far depend on. CodecRules::Complete reads and
// writes the files other programs make and expect:
// - WAV is read by walking its chunks, in PCM, IEEE float or the extensible layout; float
//   values become 32-bit signed ones, and a data chunk cut short gives the whole frames
//   that are there. It is written as plain PCM with its chunks padded to even sizes.
// - Ogg Vorbis is written with every frame of every channel and always ends its stream.
// - FLAC holds 8-bit values in this system's unsigned form and 16-bit values whole; a
//   failing encoder is reported as false.

OVRA_EXPORT SoundSample soundFromWAV(QIODevice *device);
OVRA_EXPORT SoundSample soundFromWAV(QIODevice *device, CodecRules rules);
// The header of a WAV file alone; all zeros for a file that isn't PCM, and the default
// when the device can't be opened.
OVRA_EXPORT SampleInfo soundInfoFromWAV(QIODevice *device);
OVRA_EXPORT SampleInfo soundInfoFromWAV(QIODevice *device, CodecRules rules);
OVRA_EXPORT bool soundToWAV(const SoundSample &sample, QIODevice *device);
OVRA_EXPORT bool soundToWAV(const SoundSample &sample, QIODevice *device, CodecRules rules);

// Ogg Vorbis, decoded to 16 bits; written at quality 0.4.
OVRA_EXPORT SoundSample soundFromOGG(QIODevice *device);
OVRA_EXPORT SoundSample soundFromOGG(QIODevice *device, CodecRules rules);
OVRA_EXPORT bool soundToOGG(const SoundSample &sample, QIODevice *device);
OVRA_EXPORT bool soundToOGG(const SoundSample &sample, QIODevice *device, CodecRules rules);

OVRA_EXPORT SoundSample soundFromFLAC(QIODevice *device);
OVRA_EXPORT SoundSample soundFromFLAC(QIODevice *device, CodecRules rules);
OVRA_EXPORT bool soundToFLAC(const SoundSample &sample, QIODevice *device);
OVRA_EXPORT bool soundToFLAC(const SoundSample &sample, QIODevice *device, CodecRules rules);

// MPEG audio layer 3, decoded to 16 bits. There is no encoder.
OVRA_EXPORT SoundSample soundFromMP3(QIODevice *device);

// By format name ("WAV", "OGG", "FLAC", "MP3", or what a sound extension serves); true
// when sound data came out.
OVRA_EXPORT bool loadSound(QIODevice *device, const char *format, SoundSample &sample);
OVRA_EXPORT bool loadSound(QIODevice *device, const char *format, SoundSample &sample, CodecRules rules);
// "WAV", "OGG", "FLAC", or a sound-saving extension's format.
OVRA_EXPORT bool saveSound(QIODevice *device, const char *format, const SoundSample &sample);
OVRA_EXPORT bool saveSound(QIODevice *device, const char *format, const SoundSample &sample, CodecRules rules);

} // namespace Ovra
