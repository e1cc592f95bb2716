#include "engine/extension.h"
#include "engine/extensionmanager.h"
#include "sound/soundcodecs.h"
#include "pipedevice.h"
#include "testsounds.h"

#include <QBuffer>
#include <QFile>
#include <QtTest>

#include <cmath>

using namespace Ovra;

namespace {

SoundSample tone(quint32 frequency, quint16 channels, quint16 bits, quint32 frames)
{
    return sineSample(frequency, channels, bits, frames, 440, 0.4);
}

QByteArray written(bool (*write)(const SoundSample &, QIODevice *), const SoundSample &sample)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    return write(sample, &buffer) ? bytes : QByteArray();
}

SoundSample read(SoundSample (*reader)(QIODevice *), QByteArray bytes)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    return reader(&buffer);
}

QByteArray le32(quint32 value)
{
    return QByteArray(reinterpret_cast<const char *>(&value), 4);
}

QByteArray le16(quint16 value)
{
    return QByteArray(reinterpret_cast<const char *>(&value), 2);
}

// A WAV file written by hand: RIFF header, the format chunk, what `between` holds, and a
// data chunk declaring `declared` bytes of which `data` follow.
QByteArray wavFile(quint16 channels, quint16 bits, quint32 rate, const QByteArray &data, quint32 declared,
                   const QByteArray &between = QByteArray(), quint16 tag = 1)
{
    QByteArray body("WAVEfmt ");
    body += le32(16) + le16(tag) + le16(channels) + le32(rate) + le32(rate * channels * bits / 8)
            + le16(quint16(channels * bits / 8)) + le16(bits);
    body += between;
    body += "data" + le32(declared) + data;
    return "RIFF" + le32(quint32(body.size())) + body;
}

// The largest difference between two 16-bit sounds, in steps.
int largestDifference(const QByteArray &a, const QByteArray &b)
{
    const auto *x = reinterpret_cast<const qint16 *>(a.constData());
    const auto *y = reinterpret_cast<const qint16 *>(b.constData());
    int largest = 0;
    for (int i = 0; i < qMin(a.size(), b.size()) / 2; ++i)
        largest = qMax(largest, qAbs(int(x[i]) - int(y[i])));
    return largest;
}

// Rising zero crossings of one channel of a 16-bit sound, per second.
double pitchOf(const SoundSample &sample, int channel)
{
    const auto *values = reinterpret_cast<const qint16 *>(sample.data.constData());
    int crossings = 0;
    const int frames = int(sample.samples);
    for (int i = frames / 8 + 1; i < frames * 7 / 8; ++i) {
        if (values[(i - 1) * sample.channels + channel] < 0 && values[i * sample.channels + channel] >= 0)
            ++crossings;
    }
    return crossings / (double(frames * 3 / 4) / sample.frequency);
}

class ReverseLoader : public SoundLoaderExtension
{
public:
    const char *format() const override { return "REV"; }
    const char *name() const override { return "reversed bytes"; }
    bool load(QIODevice *device, SoundSample &sample) override
    {
        const QByteArray bytes = device->readAll();
        if (bytes.isEmpty())
            return false;
        sample.channels = 1;
        sample.bits = 8;
        sample.frequency = 8000;
        sample.samples = quint32(bytes.size());
        sample.data = bytes;
        std::reverse(sample.data.begin(), sample.data.end());
        return true;
    }
};

class ReverseSaver : public SoundSaverExtension
{
public:
    const char *format() const override { return "REV"; }
    const char *name() const override { return "reversed bytes"; }
    bool save(QIODevice *device, const SoundSample &sample) override
    {
        QByteArray bytes = sample.data;
        std::reverse(bytes.begin(), bytes.end());
        return device->write(bytes) == bytes.size();
    }
};

} // namespace

class SoundCodecsTest : public QObject
{
    Q_OBJECT

private slots:
    void losslessRoundTrip_data();
    void losslessRoundTrip();
    void wavLayout();
    void wavDataFoundByByteSearch();
    void wavShortDataIsFilledWithSilence();
    void wavRefusals_data();
    void wavRefusals();
    void wavInfo();
    void wavReadAsItComes_data();
    void wavReadAsItComes();
    void flacQuirks_data();
    void flacQuirks();
    void oggRoundTripWithinTolerance();
    void oggDividesTheFrameCountByTheChannels();
    void oggEndsOnlyWholeBlocks();
    void mp3Fixtures_data();
    void mp3Fixtures();
    void damagedFiles_data();
    void damagedFiles();
    void flacCutShortIsNoSound();
    void streamsCutShortGiveWhatDecodes_data();
    void streamsCutShortGiveWhatDecodes();
    void loadAndSaveByName();
    void devicesThatCantBeUsed();
};

void SoundCodecsTest::losslessRoundTrip_data()
{
    QTest::addColumn<bool>("flac");
    QTest::addColumn<int>("channels");
    QTest::addColumn<int>("bits");
    for (int bits : {8, 16, 24, 32}) {
        for (int channels : {1, 2})
            QTest::addRow("WAV, %d bits, %d channels", bits, channels) << false << channels << bits;
    }
    QTest::addRow("FLAC, 24 bits mono") << true << 1 << 24;
    QTest::addRow("FLAC, 24 bits stereo") << true << 2 << 24;
    QTest::addRow("FLAC, 32 bits stereo") << true << 2 << 32;
}

void SoundCodecsTest::losslessRoundTrip()
{
    QFETCH(bool, flac);
    QFETCH(int, channels);
    QFETCH(int, bits);
    // FLAC in three blocks of 10000 frames and a part.
    const SoundSample sample = tone(flac ? 48000 : 22050, quint16(channels), quint16(bits), flac ? 25000 : 1000);
    using Writer = bool (*)(const SoundSample &, QIODevice *);
    using Reader = SoundSample (*)(QIODevice *);
    const QByteArray file = written(flac ? Writer(soundToFLAC) : Writer(soundToWAV), sample);
    if (flac) {
        QVERIFY(file.startsWith("fLaC"));
        QVERIFY(file.size() < sample.data.size());
    } else {
        QCOMPARE(file.size(), 44 + sample.data.size());
    }
    const SoundSample back = read(flac ? Reader(soundFromFLAC) : Reader(soundFromWAV), file);
    QCOMPARE(back.channels, sample.channels);
    QCOMPARE(back.bits, sample.bits);
    QCOMPARE(back.frequency, sample.frequency);
    QCOMPARE(back.samples, sample.samples);
    QCOMPARE(back.data, sample.data);
}

void SoundCodecsTest::wavLayout()
{
    SoundSample sample;
    sample.channels = 2;
    sample.bits = 16;
    sample.frequency = 11025;
    sample.samples = 1;
    sample.data = QByteArray::fromHex("01020304");
    QCOMPARE(written(soundToWAV, sample).toHex(),
             QByteArray("52494646" "28000000" "57415645" "666d7420" "10000000" "0100" "0200" "112b0000" "44ac0000"
                        "0400" "1000" "64617461" "04000000" "01020304"));
}

void SoundCodecsTest::wavDataFoundByByteSearch()
{
    // A list chunk whose text holds "data": reading starts there, as the search is by
    // bytes, so its next four bytes become the length.
    const QByteArray samples = QByteArray::fromHex("1020304050607080");
    const QByteArray list = "LIST" + le32(12) + "INFOdata" + le32(2) + QByteArray::fromHex("aabb");
    const SoundSample sample = read(soundFromWAV, wavFile(1, 8, 8000, samples, 8, list));
    QCOMPARE(sample.data, QByteArray::fromHex("aabb"));
    QCOMPARE(sample.samples, quint32(2));
}

void SoundCodecsTest::wavShortDataIsFilledWithSilence()
{
    const QByteArray samples = QByteArray::fromHex("11223344");
    const SoundSample sample = read(soundFromWAV, wavFile(1, 16, 8000, samples, 10));
    QCOMPARE(sample.data, QByteArray::fromHex("11223344000000000000"));
    QCOMPARE(sample.samples, quint32(5)); // from the declared length
}

void SoundCodecsTest::wavRefusals_data()
{
    QTest::addColumn<QByteArray>("file");
    const QByteArray samples(16, 'x');
    QTest::addRow("not WAVE") << QByteArray(wavFile(1, 8, 8000, samples, 16)).replace(8, 4, "AVI ");
    QTest::addRow("not PCM") << wavFile(1, 8, 8000, samples, 16, QByteArray(), 3);
    QTest::addRow("format chunk not first") << QByteArray(wavFile(1, 8, 8000, samples, 16)).replace(12, 4, "junk");
    QTest::addRow("empty") << QByteArray();
    QTest::addRow("header only") << QByteArray("RIFF\x04\0\0\0WAVE", 12);
    // A declared length far beyond the file is a broken header, not a short recording.
    QTest::addRow("huge declared length") << wavFile(2, 16, 44100, samples, 0xFFFFFFF0u);
    QTest::addRow("huge RIFF length") << QByteArray("RIFF\xF0\xFF\xFF\xFFWAVE", 12) + QByteArray(20, 'x');
}

void SoundCodecsTest::wavRefusals()
{
    QFETCH(QByteArray, file);
    const SoundSample sample = read(soundFromWAV, file);
    QVERIFY(sample.data.isEmpty());
}

void SoundCodecsTest::wavInfo()
{
    const SoundSample sample = tone(32000, 2, 24, 300);
    QByteArray file = written(soundToWAV, sample);
    QBuffer buffer(&file);
    SampleInfo info = soundInfoFromWAV(&buffer);
    QCOMPARE(info.channels, quint16(2));
    QCOMPARE(info.bits, quint16(24));
    QCOMPARE(info.frequency, quint32(32000));
    QCOMPARE(info.samples, quint32(300));
    // Neither "WAVE" nor the chunk id is looked at; the format tag is.
    QByteArray odd = file;
    odd.replace(8, 8, "XXXXyyyy");
    QBuffer oddBuffer(&odd);
    QCOMPARE(soundInfoFromWAV(&oddBuffer).samples, quint32(300));
    QByteArray notPcm = wavFile(1, 8, 8000, QByteArray(4, 'x'), 4, QByteArray(), 2);
    QBuffer notPcmBuffer(&notPcm);
    info = soundInfoFromWAV(&notPcmBuffer);
    QCOMPARE(info.bits, quint16(0));
    QCOMPARE(info.channels, quint16(0));
    QFile missing(QStringLiteral("/nonexistent/dir/a.wav"));
    QCOMPARE(soundInfoFromWAV(&missing).bits, quint16(1));
}

// Files larger than the pieces the readers take at a time, from a file and from a pipe:
// the same sound either way, and from a file the sample's bytes sized once, exactly.
void SoundCodecsTest::wavReadAsItComes_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<bool>("complete");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<quint32>("frames");
    // False where the array holds more than the sound: values made smaller in place, or
    // the data's start found by a search that read on, into the array the data stays in.
    QTest::addColumn<bool>("sizedOnce");
    // Bytes below 64 only: no "data" in the sound for the byte search to find.
    QByteArray pcm(100000, Qt::Uninitialized);
    for (int i = 0; i < pcm.size(); ++i)
        pcm[i] = char((i * 7 + i / 251) & 0x3F);
    const quint32 frames = quint32(pcm.size() / 2);
    const QByteArray plain = wavFile(1, 16, 8000, pcm, 100000);
    QTest::addRow("designed, large") << plain << false << pcm << frames << true;
    QTest::addRow("complete, large") << plain << true << pcm << frames << true;
    // "data" at byte 65534 of the body: across the end of the first piece searched.
    const QByteArray across = wavFile(1, 16, 8000, pcm, 100000, "LIST" + le32(65502) + QByteArray(65502, 'x'));
    QTest::addRow("designed, data across a piece") << across << false << pcm << frames << false;
    QTest::addRow("complete, data across a piece") << across << true << pcm << frames << true;
    QTest::addRow("designed, no \"data\": read after the format")
        << QByteArray(plain).replace(36, 4, "DATA") << false << pcm << frames << false;
    QTest::addRow("designed, short: silence after")
        << wavFile(1, 16, 8000, pcm, 300000) << false << pcm + QByteArray(200000, '\0') << quint32(150000) << true;
    QTest::addRow("designed, far too short") << wavFile(1, 16, 8000, pcm, pcm.size() + (64u << 20) + 2) << false
                                             << QByteArray() << quint32(0) << true;
    QTest::addRow("complete, cut short") << wavFile(1, 16, 8000, pcm, 300001) << true << pcm << frames << true;
    // The data before the format: a pipe can't come back to it.
    const QByteArray body = "data" + le32(quint32(pcm.size())) + pcm + "fmt " + le32(16) + le16(1) + le16(2)
                            + le32(8000) + le32(32000) + le16(4) + le16(16);
    QTest::addRow("complete, data first") << "RIFF" + le32(quint32(body.size() + 4)) + "WAVE" + body << true << pcm
                                          << quint32(pcm.size() / 4) << true;
    QByteArray doubles;
    QByteArray ints;
    for (int i = 0; i < 20000; ++i) {
        const double value = (i % 200 - 100) / 128.0;
        doubles += QByteArray(reinterpret_cast<const char *>(&value), 8);
        ints += le32(quint32(qint32((i % 200 - 100) * (1 << 24))));
    }
    QTest::addRow("complete, float 64 made 32-bit in place")
        << wavFile(1, 64, 8000, doubles, quint32(doubles.size()), QByteArray(), 3) << true << ints << quint32(20000)
        << false;
}

void SoundCodecsTest::wavReadAsItComes()
{
    QFETCH(QByteArray, file);
    QFETCH(bool, complete);
    QFETCH(QByteArray, data);
    QFETCH(quint32, frames);
    QFETCH(bool, sizedOnce);
    const CodecRules rules = complete ? CodecRules::Complete : CodecRules::Designed;
    for (const bool piped : {false, true}) {
        QBuffer buffer(&file);
        PipeDevice pipe(file);
        const SoundSample sample = soundFromWAV(piped ? static_cast<QIODevice *>(&pipe) : &buffer, rules);
        QVERIFY(sample.data == data);
        if (data.isEmpty())
            continue;
        QCOMPARE(sample.samples, frames);
        if (!piped && sizedOnce)
            QCOMPARE(sample.data.capacity(), sample.data.size());
        QBuffer infoBuffer(&file);
        PipeDevice infoPipe(file);
        const SampleInfo info = soundInfoFromWAV(piped ? static_cast<QIODevice *>(&infoPipe) : &infoBuffer, rules);
        QCOMPARE(info.samples, frames);
        QCOMPARE(info.bits, sample.bits);
        QCOMPARE(info.channels, sample.channels);
    }
}

void SoundCodecsTest::flacQuirks_data()
{
    QTest::addColumn<int>("bits");
    QTest::addColumn<QByteArray>("in");
    QTest::addColumn<QByteArray>("out");
    // 16-bit values reach the encoder as their low byte, sign-extended: 0x1234 comes back
    // as 0x0034, 0x00C8 as -56.
    QTest::addRow("16 bits feed the low byte") << 16 << QByteArray::fromHex("3412c800feff7f7f")
                                               << QByteArray::fromHex("3400c8fffeff7f00");
    // An 8-bit FLAC holds signed values; they are kept as the decoder gives them, not
    // moved to the unsigned form of 8-bit sounds (which would add 128 to each).
    QTest::addRow("8 bits come back signed") << 8 << QByteArray::fromHex("000a147f1405")
                                             << QByteArray::fromHex("000a147f1405");
}

void SoundCodecsTest::flacQuirks()
{
    QFETCH(int, bits);
    QFETCH(QByteArray, in);
    QFETCH(QByteArray, out);
    SoundSample sample;
    sample.channels = 1;
    sample.bits = quint16(bits);
    sample.frequency = 8000;
    sample.samples = quint32(in.size() / (bits / 8));
    sample.data = in;
    const SoundSample back = read(soundFromFLAC, written(soundToFLAC, sample));
    QCOMPARE(back.bits, quint16(bits));
    QCOMPARE(back.data.toHex(), out.toHex());
}

void SoundCodecsTest::oggRoundTripWithinTolerance()
{
    // Mono, so that the frame count's second division by the channels changes nothing,
    // and exactly one block long, so that the stream ends properly.
    const SoundSample sample = tone(44100, 1, 16, 65536);
    const QByteArray file = written(soundToOGG, sample);
    QVERIFY(file.startsWith("OggS"));
    QVERIFY(file.size() < sample.data.size() / 4);
    const SoundSample back = read(soundFromOGG, file);
    QCOMPARE(back.channels, quint16(1));
    QCOMPARE(back.bits, quint16(16));
    QCOMPARE(back.frequency, quint32(44100));
    QCOMPARE(back.samples, quint32(65536));
    QCOMPARE(back.data.size(), sample.data.size());
    // A lossy codec: the tone's pitch stays, and no value strays far.
    QVERIFY(qAbs(pitchOf(back, 0) - 440) < 3);
    QVERIFY2(largestDifference(back.data, sample.data) < 2500,
             qPrintable(QString::number(largestDifference(back.data, sample.data))));
}

void SoundCodecsTest::oggDividesTheFrameCountByTheChannels()
{
    // Stereo: samples / channels frames are encoded, half the sound.
    const SoundSample sample = tone(22050, 2, 16, 131072);
    const SoundSample back = read(soundFromOGG, written(soundToOGG, sample));
    QCOMPARE(back.channels, quint16(2));
    QCOMPARE(back.samples, quint32(65536));
    QVERIFY(qAbs(pitchOf(back, 0) - 440) < 3);
    QVERIFY(qAbs(pitchOf(back, 1) - 880) < 5);
}

void SoundCodecsTest::oggEndsOnlyWholeBlocks()
{
    // 70000 frames is no whole number of 65536-frame blocks: the stream is not ended, and
    // what the encoder still held is never written (for a short tone, all of its audio).
    const SoundSample sample = tone(44100, 1, 16, 70000);
    const QByteArray file = written(soundToOGG, sample);
    QVERIFY(file.startsWith("OggS"));
    QVERIFY(read(soundFromOGG, file).samples < 70000);
}

void SoundCodecsTest::mp3Fixtures_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("channels");
    QTest::addColumn<int>("frequency");
    QTest::addColumn<double>("seconds");
    QTest::addColumn<double>("pitch");
    QTest::addRow("mono") << "tone-mono.mp3" << 1 << 44100 << 0.5 << 440.0;
    QTest::addRow("stereo") << "tone-stereo.mp3" << 2 << 22050 << 0.3 << 330.0;
}

void SoundCodecsTest::mp3Fixtures()
{
    QFETCH(QString, file);
    QFETCH(int, channels);
    QFETCH(int, frequency);
    QFETCH(double, seconds);
    QFETCH(double, pitch);
    QFile mp3(QStringLiteral(TESTDATADIR "/") + file);
    SoundSample sample;
    QVERIFY(loadSound(&mp3, "MP3", sample));
    QCOMPARE(sample.bits, quint16(16));
    QCOMPARE(sample.channels, quint16(channels));
    QCOMPARE(sample.frequency, quint32(frequency));
    QCOMPARE(sample.data.size(), int(sample.samples) * channels * 2);
    // The encoder's padding at both ends adds a little.
    QVERIFY(sample.samples >= quint32(seconds * frequency));
    QVERIFY(sample.samples < quint32(seconds * frequency) + 3000);
    QVERIFY(qAbs(pitchOf(sample, 0) - pitch) < 0.05 * pitch);
    if (channels == 2)
        QVERIFY(qAbs(pitchOf(sample, 1) - 2 * pitch) < 0.05 * 2 * pitch);
}

void SoundCodecsTest::damagedFiles_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<QByteArray>("file");
    const QByteArray flac = written(soundToFLAC, tone(8000, 1, 24, 4000));
    const QByteArray ogg = written(soundToOGG, tone(8000, 1, 16, 65536));
    QByteArray noise(3000, '\0');
    QRandomGenerator random(4);
    for (char &byte : noise)
        byte = char(random.bounded(256));
    for (const char *format : {"WAV", "OGG", "FLAC", "MP3"}) {
        QTest::addRow("%s empty", format) << format << QByteArray();
        QTest::addRow("%s noise", format) << format << noise;
    }
    QTest::addRow("FLAC header only") << "FLAC" << flac.left(42);
    QTest::addRow("FLAC cut inside its first frame") << "FLAC" << flac.left(60);
    QTest::addRow("OGG first page only") << "OGG" << ogg.left(58);
    QTest::addRow("MP3 tag only") << "MP3" << QByteArray("ID3\x04\0\0\0\0\0\0", 10);
}

void SoundCodecsTest::damagedFiles()
{
    QFETCH(QString, format);
    QFETCH(QByteArray, file);
    QBuffer buffer(&file);
    SoundSample sample;
    QVERIFY(!loadSound(&buffer, format.toLatin1().constData(), sample));
    QVERIFY(sample.data.isEmpty());
}

void SoundCodecsTest::flacCutShortIsNoSound()
{
    // The decoder reports the frame the file ends in as an error: no half sound is made
    // up (unlike a WAV, whose header alone tells the length).
    const SoundSample sample = tone(8000, 1, 24, 30000);
    const QByteArray file = written(soundToFLAC, sample);
    QVERIFY(!read(soundFromFLAC, file).data.isEmpty());
    const SoundSample back = read(soundFromFLAC, file.left(file.size() / 2));
    QVERIFY(back.data.isEmpty());
}

void SoundCodecsTest::streamsCutShortGiveWhatDecodes_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<QByteArray>("file");
    QFile mp3(QStringLiteral(TESTDATADIR "/tone-mono.mp3"));
    QVERIFY(mp3.open(QIODevice::ReadOnly));
    const QByteArray mp3Bytes = mp3.readAll();
    const QByteArray ogg = written(soundToOGG, tone(44100, 1, 16, 65536 * 8));
    QTest::addRow("OGG") << "OGG" << ogg.left(ogg.size() * 2 / 3);
    QTest::addRow("MP3") << "MP3" << mp3Bytes.left(mp3Bytes.size() / 2);
}

void SoundCodecsTest::streamsCutShortGiveWhatDecodes()
{
    // Ogg and MP3 streams are read until they give no more: a file cut short is the
    // sound up to the cut, its length told by what was decoded.
    QFETCH(QString, format);
    QFETCH(QByteArray, file);
    QBuffer buffer(&file);
    SoundSample sample;
    QVERIFY(loadSound(&buffer, format.toLatin1().constData(), sample));
    QCOMPARE(sample.data.size(), int(sample.samples) * sample.channels * 2);
    QVERIFY(qAbs(pitchOf(sample, 0) - 440) < 25);
}

void SoundCodecsTest::loadAndSaveByName()
{
    const SoundSample sample = tone(16000, 1, 16, 2000);
    for (const char *format : {"WAV", "FLAC"}) {
        QByteArray bytes;
        QBuffer out(&bytes);
        QVERIFY(saveSound(&out, format, sample));
        QVERIFY(out.isWritable() && !out.isReadable()); // a closed device is opened for writing
        out.close();
        SoundSample back;
        QVERIFY(loadSound(&out, format, back));
        // FLAC keeps only the low bytes of 16-bit values: compare what survives.
        if (QByteArray(format) == "WAV")
            QCOMPARE(back.data, sample.data);
        else
            QCOMPARE(back.samples, sample.samples);
    }
    // No MP3 encoder, and unknown names go to extensions.
    QByteArray bytes;
    QBuffer out(&bytes);
    QVERIFY(!saveSound(&out, "MP3", sample));
    QVERIFY(!saveSound(&out, "REV", sample));
    ReverseLoader loader;
    ReverseSaver saver;
    ExtensionManager::add(&loader);
    ExtensionManager::add(&saver);
    QVERIFY(saveSound(&out, "REV", sample));
    out.close();
    SoundSample back;
    QVERIFY(loadSound(&out, "REV", back));
    QCOMPARE(back.data, sample.data);
    ExtensionManager::list(Extension::SoundLoader).removeAll(&loader);
    ExtensionManager::list(Extension::SoundSaver).removeAll(&saver);
}

void SoundCodecsTest::devicesThatCantBeUsed()
{
    QFile missing(QStringLiteral("/nonexistent/dir/sound.wav"));
    SoundSample sample;
    QVERIFY(!loadSound(&missing, "WAV", sample));
    QVERIFY(!loadSound(nullptr, "WAV", sample));
    QVERIFY(!saveSound(&missing, "WAV", tone(8000, 1, 8, 10)));
    QVERIFY(read(soundFromOGG, QByteArray()).data.isEmpty());
    // A sound the encoder can't take writes no Ogg stream.
    SoundSample silent;
    QVERIFY(written(soundToOGG, silent).isEmpty());
}

QTEST_MAIN(SoundCodecsTest)
#include "tst_soundcodecs.moc"
