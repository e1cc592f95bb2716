#pragma once

#include "sound/soundsample.h"

#include <QString>

#include <memory>

namespace sf {
class SoundBuffer;
}

namespace Ovra {

using SoundBuffer = sf::SoundBuffer;

// Plays sounds through the system's audio output: a fixed set of numbered channels for
// short sounds held in memory, and one streamed music track (WAV, Ogg Vorbis, FLAC or
// MP3). A channel is only ever taken when it has stopped: nothing is cut off for a new
// sound. Copies share one player. Volumes go from 0 to 100.
class OVRA_EXPORT SoundPlayer
{
public:
    explicit SoundPlayer(unsigned channelCount);
    ~SoundPlayer();

    // Whether the audio system found an output device. Without one a sound "plays" to
    // nothing and has stopped at once. The first player opens the device, quietly: the
    // audio libraries' own messages about it are kept off the terminal (OpenAL's unless
    // ALSOFT_LOGLEVEL asks for them), since this is what they would say.
    bool hasOutput() const;

    // A buffer for a sound played again and again; give it back by freeBuffer(). Null
    // when the sound can't be made 16-bit or the audio system refuses it.
    SoundBuffer *createBuffer(const SoundSample &sample) const;
    void freeBuffer(SoundBuffer *buffer) const;

    // Plays on the first stopped channel and answers its number, or -1 when every
    // channel is busy (playing or paused) or the sound can't be played.
    int play(const SoundSample &sample, bool loop, float volume);
    // The same with a buffer of the caller's, which must outlive the sound.
    int play(const SoundBuffer *buffer, bool loop, float volume);

    // Paused counts as playing.
    bool isPlaying(int channel) const;
    // A negative channel means all of them; a number past the last does nothing.
    void pause(int channel);
    void resume(int channel);
    void stop(int channel);
    void setVolume(int channel, float volume);
    unsigned channelCount() const;

    bool openMusic(const QString &fileName);
    void startMusic();
    void pauseMusic();
    void stopMusic();
    void setMusicVolume(float volume);
    bool isMusicPlaying() const;

private:
    struct Private;
    std::shared_ptr<Private> d;
};

} // namespace Ovra
