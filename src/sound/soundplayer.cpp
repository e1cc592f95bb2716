#include "sound/soundplayer.h"

#include "sound/soundfilereadermp3.h"

#include <SFML/System/InputStream.hpp>
#include <SFML/Audio/Music.hpp>
#include <SFML/Audio/Sound.hpp>
#include <SFML/Audio/SoundBuffer.hpp>
#include <SFML/Audio/SoundFileFactory.hpp>
#include <SFML/System/Err.hpp>

#include <mpg123.h>

#include <QtGlobal>

#include <cstdio>
#include <mutex>
#include <sstream>
#include <vector>

namespace Ovra {

// ---- MP3 through the sound file factory -------------------------------------------------

namespace {

mpg123_ssize_t streamRead(void *handle, void *buffer, size_t count)
{
    return mpg123_ssize_t(static_cast<sf::InputStream *>(handle)->read(buffer, sf::Int64(count)));
}

off_t streamSeek(void *handle, off_t offset, int whence)
{
    auto *stream = static_cast<sf::InputStream *>(handle);
    sf::Int64 base = 0;
    if (whence == SEEK_CUR)
        base = stream->tell();
    else if (whence == SEEK_END)
        base = stream->getSize();
    return off_t(stream->seek(base + offset));
}

} // namespace

SoundFileReaderMp3::SoundFileReaderMp3()
{
    const int error = mpg123_init();
    if (error != MPG123_OK)
        sf::err() << mpg123_plain_strerror(error) << std::endl;
}

SoundFileReaderMp3::~SoundFileReaderMp3()
{
    if (m_handle) {
        mpg123_close(m_handle);
        mpg123_delete(m_handle);
    }
    mpg123_exit();
}

bool SoundFileReaderMp3::check(sf::InputStream &stream)
{
    mpg123_init();
    int error = MPG123_OK;
    mpg123_handle *handle = mpg123_new(nullptr, &error);
    bool ok = false;
    if (handle) {
        mpg123_param(handle, MPG123_ADD_FLAGS, MPG123_QUIET, 0);
        long rate = 0;
        int channels = 0;
        int encoding = 0;
        ok = mpg123_replace_reader_handle(handle, streamRead, streamSeek, nullptr) == MPG123_OK
             && mpg123_open_handle(handle, &stream) == MPG123_OK
             && mpg123_getformat(handle, &rate, &channels, &encoding) == MPG123_OK;
        mpg123_close(handle);
        mpg123_delete(handle);
    }
    mpg123_exit();
    return ok;
}

bool SoundFileReaderMp3::open(sf::InputStream &stream, Info &info)
{
    int error = MPG123_OK;
    m_handle = mpg123_new(nullptr, &error);
    if (!m_handle) {
        sf::err() << "Unable to create mpg123 handle: " << mpg123_plain_strerror(error) << std::endl;
        return false;
    }
    mpg123_param(m_handle, MPG123_ADD_FLAGS, MPG123_QUIET, 0);
    mpg123_replace_reader_handle(m_handle, streamRead, streamSeek, nullptr);
    if (mpg123_open_handle(m_handle, &stream) != MPG123_OK) {
        sf::err() << mpg123_strerror(m_handle) << std::endl;
        mpg123_close(m_handle);
        return false;
    }
    long rate = 0;
    int channels = 0;
    int encoding = 0;
    if (mpg123_getformat(m_handle, &rate, &channels, &encoding) != MPG123_OK) {
        sf::err() << "Failed to get format information" << std::endl;
        return false;
    }
    if (encoding != MPG123_ENC_SIGNED_16) {
        mpg123_format_none(m_handle);
        mpg123_format(m_handle, rate, channels, MPG123_ENC_SIGNED_16);
    }
    mpg123_scan(m_handle);
    info.sampleCount = sf::Uint64(qMax<off_t>(mpg123_length(m_handle), 0)) * sf::Uint64(channels);
    info.channelCount = unsigned(channels);
    info.sampleRate = unsigned(rate);
    return true;
}

void SoundFileReaderMp3::seek(sf::Uint64 sampleOffset)
{
    if (m_handle)
        mpg123_seek(m_handle, off_t(sampleOffset), SEEK_SET);
}

sf::Uint64 SoundFileReaderMp3::read(sf::Int16 *samples, sf::Uint64 maxCount)
{
    size_t done = 0;
    if (m_handle)
        mpg123_read(m_handle, reinterpret_cast<unsigned char *>(samples), size_t(maxCount * 2), &done);
    return done / 2;
}

// ---- the player ---------------------------------------------------------------------------

namespace {

// The players alive, and what became of the audio device when the first of them opened it.
struct AudioOutput
{
    std::mutex mutex;
    int players = 0;
    bool available = true;
    std::streambuf *errors = nullptr; // SFML's error stream, while it is kept quiet
};

AudioOutput &audioOutput()
{
    static AudioOutput output;
    return output;
}

// Held by each player's private part as its first member, so that it goes last: the
// player's sound objects have gone when SFML's error stream is given back.
struct OutputUse
{
    OutputUse() = default;
    Q_DISABLE_COPY(OutputUse)
    ~OutputUse()
    {
        AudioOutput &output = audioOutput();
        std::lock_guard<std::mutex> lock(output.mutex);
        if (--output.players == 0 && output.errors) {
            sf::err().rdbuf(output.errors);
            output.errors = nullptr;
        }
    }
};

} // namespace

struct SoundPlayer::Private
{
    struct Channel
    {
        SoundBuffer *buffer = nullptr; // owned; null when the caller owns the sound's buffer
        sf::Sound sound;
    };

    OutputUse use; // first, to go last

    explicit Private(unsigned count)
        : channels(count)
    {
    }
    ~Private()
    {
        music.stop();
        for (Channel &channel : channels) {
            channel.sound.stop();
            channel.sound.resetBuffer();
            delete channel.buffer;
        }
    }

    // The channel `number` stands for: all of them when negative, none past the last.
    template <typename Action>
    void forChannels(int number, Action action)
    {
        if (number < 0) {
            for (Channel &channel : channels)
                action(channel.sound);
        } else if (number < int(channels.size())) {
            action(channels[size_t(number)].sound);
        }
    }

    int start(const SoundBuffer *buffer, SoundBuffer *owned, bool loop, float volume)
    {
        for (size_t i = 0; i < channels.size(); ++i) {
            Channel &channel = channels[i];
            if (channel.sound.getStatus() != sf::Sound::Stopped)
                continue;
            channel.sound.stop();
            channel.sound.resetBuffer();
            delete channel.buffer;
            channel.buffer = owned;
            channel.sound.setBuffer(*buffer);
            channel.sound.setLoop(loop);
            channel.sound.setVolume(volume);
            channel.sound.play();
            return int(i);
        }
        delete owned;
        return -1;
    }

    std::vector<Channel> channels;
    bool hasOutput = true;
    bool musicOpened = false;
    sf::Music music;
};

SoundPlayer::SoundPlayer(unsigned channelCount)
{
    static std::once_flag registered;
    std::call_once(registered, [] { sf::SoundFileFactory::registerReader<SoundFileReaderMp3>(); });
    AudioOutput &output = audioOutput();
    std::lock_guard<std::mutex> lock(output.mutex);
    if (output.players++ > 0) {
        d = std::make_shared<Private>(channelCount);
        d->hasOutput = output.available;
        return;
    }
    // The device opens with the first sound object. SFML says something only when that
    // fails, and then again at every call that needs the device: it is all kept for
    // hasOutput() to tell, while no device is there.
    if (!qEnvironmentVariableIsSet("ALSOFT_LOGLEVEL"))
        qputenv("ALSOFT_LOGLEVEL", "0");
    std::stringbuf said;
    std::streambuf *errors = sf::err().rdbuf(&said);
    d = std::make_shared<Private>(channelCount);
    output.available = said.str().empty();
    d->hasOutput = output.available;
    sf::err().rdbuf(output.available ? errors : nullptr);
    output.errors = output.available ? nullptr : errors;
}

SoundPlayer::~SoundPlayer() = default;

bool SoundPlayer::hasOutput() const
{
    return d->hasOutput;
}

SoundBuffer *SoundPlayer::createBuffer(const SoundSample &sample) const
{
    SoundSample sixteen = sample;
    if (sample.bits != 16 && !resampleSound(sixteen, SampleInfo{sample.channels, 16, sample.frequency, 0}))
        return nullptr;
    const qint64 values = qMin<qint64>(qint64(sixteen.channels) * sixteen.samples, sixteen.data.size() / 2);
    auto *buffer = new SoundBuffer;
    if (!buffer->loadFromSamples(reinterpret_cast<const sf::Int16 *>(sixteen.data.constData()), sf::Uint64(values),
                                 sixteen.channels, sixteen.frequency)) {
        delete buffer;
        return nullptr;
    }
    return buffer;
}

void SoundPlayer::freeBuffer(SoundBuffer *buffer) const
{
    delete buffer;
}

int SoundPlayer::play(const SoundSample &sample, bool loop, float volume)
{
    SoundBuffer *buffer = createBuffer(sample);
    if (!buffer)
        return -1;
    return d->start(buffer, buffer, loop, volume);
}

int SoundPlayer::play(const SoundBuffer *buffer, bool loop, float volume)
{
    if (!buffer)
        return -1;
    return d->start(buffer, nullptr, loop, volume);
}

bool SoundPlayer::isPlaying(int channel) const
{
    if (channel < 0 || channel >= int(d->channels.size()))
        return false;
    return d->channels[size_t(channel)].sound.getStatus() != sf::Sound::Stopped;
}

void SoundPlayer::pause(int channel)
{
    d->forChannels(channel, [](sf::Sound &sound) {
        if (sound.getStatus() == sf::Sound::Playing)
            sound.pause();
    });
}

void SoundPlayer::resume(int channel)
{
    d->forChannels(channel, [](sf::Sound &sound) {
        if (sound.getStatus() == sf::Sound::Paused)
            sound.play();
    });
}

void SoundPlayer::stop(int channel)
{
    d->forChannels(channel, [](sf::Sound &sound) { sound.stop(); });
}

void SoundPlayer::setVolume(int channel, float volume)
{
    d->forChannels(channel, [volume](sf::Sound &sound) { sound.setVolume(volume); });
}

unsigned SoundPlayer::channelCount() const
{
    return unsigned(d->channels.size());
}

bool SoundPlayer::openMusic(const QString &fileName)
{
    d->musicOpened = d->music.openFromFile(fileName.toLocal8Bit().toStdString());
    return d->musicOpened;
}

void SoundPlayer::startMusic()
{
    if (d->musicOpened)
        d->music.play();
}

void SoundPlayer::pauseMusic()
{
    if (d->music.getStatus() == sf::Music::Playing)
        d->music.pause();
}

void SoundPlayer::stopMusic()
{
    d->music.stop();
}

void SoundPlayer::setMusicVolume(float volume)
{
    d->music.setVolume(volume);
}

bool SoundPlayer::isMusicPlaying() const
{
    return d->musicOpened && d->music.getStatus() != sf::Music::Stopped;
}

} // namespace Ovra
