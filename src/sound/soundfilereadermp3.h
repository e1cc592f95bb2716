#pragma once

#include <SFML/Audio/SoundFileReader.hpp>

struct mpg123_handle_struct;

namespace Ovra {

// Teaches the audio library's sound file factory to read MP3 through libmpg123, so that
// the music track can be an MP3. SoundPlayer registers it once, before any music opens.
class SoundFileReaderMp3 : public sf::SoundFileReader
{
public:
    SoundFileReaderMp3();
    ~SoundFileReaderMp3() override;

    static bool check(sf::InputStream &stream);

    bool open(sf::InputStream &stream, Info &info) override;
    // The offset goes to libmpg123 as it comes, counted in values of all channels.
    void seek(sf::Uint64 sampleOffset) override;
    sf::Uint64 read(sf::Int16 *samples, sf::Uint64 maxCount) override;

private:
    mpg123_handle_struct *m_handle = nullptr;
};

} // namespace Ovra
