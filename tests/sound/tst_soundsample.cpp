#include "sound/soundsample.h"
#include "testsounds.h"

#include <QtTest>

#include <cmath>

using namespace Ovra;

namespace {

QByteArray bytesOf(std::initializer_list<int> values)
{
    QByteArray bytes;
    for (int value : values)
        bytes.append(char(value));
    return bytes;
}

} // namespace

class SoundSampleTest : public QObject
{
    Q_OBJECT

private slots:
    void filters();
    void decoding_data();
    void decoding();
    void encodingWrapsAndTruncates_data();
    void encodingWrapsAndTruncates();
    void roundTripOfEveryValue();
    void scaling_data();
    void scaling();
    void resampleDepthOnlyIsAPureRoundTrip();
    void resampleEightBitsIsExact();
    void resampleRate_data();
    void resampleRate();
    void resampleChannels();
    void resampleRefusals();
};

void SoundSampleTest::filters()
{
    QCOMPARE(soundFileExtension(AllSoundWildcards), " (*.wav *.ogg *.flac *.mp3);;");
    QCOMPARE(soundFileExtension(SoundWriteFilters),
             "WAVEform audio format (*.wav);;Ogg Vorbis (*.ogg);;Free Lossless Audio Codec (*.flac)");
    QVERIFY(QByteArray(soundFileExtension(SoundReadFilters)).endsWith("MPEG-1/2 Audio Layer 3 (*.mp3)"));
    QCOMPARE(soundFileExtension(SoundExtensionType(3)), nullptr);
}

void SoundSampleTest::decoding_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("bits");
    QTest::addColumn<float>("value");
    QTest::addRow("8 silence") << bytesOf({128}) << 8 << 0.f;
    QTest::addRow("8 lowest") << bytesOf({0}) << 8 << -1.f;
    QTest::addRow("8 highest") << bytesOf({255}) << 8 << 0.9921875f;
    QTest::addRow("16 lowest") << bytesOf({0x00, 0x80}) << 16 << -1.f;
    QTest::addRow("16 half") << bytesOf({0x00, 0x40}) << 16 << 0.5f;
    QTest::addRow("24 lowest") << bytesOf({0x00, 0x00, 0x80}) << 24 << -1.f;
    QTest::addRow("24 quarter") << bytesOf({0x00, 0x00, 0x20}) << 24 << 0.25f;
    QTest::addRow("20 like 24") << bytesOf({0x00, 0x00, 0xC0}) << 20 << -0.5f;
    QTest::addRow("32 half") << bytesOf({0x00, 0x00, 0x00, 0x40}) << 32 << 0.5f;
    QTest::addRow("32 lowest") << bytesOf({0x00, 0x00, 0x00, 0x80}) << 32 << -1.f;
}

void SoundSampleTest::decoding()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, bits);
    QFETCH(float, value);
    QCOMPARE(decodeSample(bytes.constData(), quint16(bits)), value);
}

void SoundSampleTest::encodingWrapsAndTruncates_data()
{
    QTest::addColumn<float>("value");
    QTest::addColumn<int>("bits");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addRow("8 silence") << 0.f << 8 << bytesOf({128});
    QTest::addRow("8 truncates") << 0.0077f << 8 << bytesOf({128}); // 128.98 to 128
    QTest::addRow("8 full wraps") << 1.f << 8 << bytesOf({0});       // 256 keeps its low byte
    QTest::addRow("16 full wraps") << 1.f << 16 << bytesOf({0x00, 0x80});
    QTest::addRow("16 negative") << -0.5f << 16 << bytesOf({0x00, 0xC0});
    QTest::addRow("24 half") << 0.5f << 24 << bytesOf({0x00, 0x00, 0x40});
    QTest::addRow("24 full wraps") << 1.f << 24 << bytesOf({0x00, 0x00, 0x80});
    QTest::addRow("32 full wraps") << 1.f << 32 << bytesOf({0x00, 0x00, 0x00, 0x80});
    QTest::addRow("32 past the range") << 1.5f << 32 << bytesOf({0x00, 0x00, 0x00, 0xC0});
}

void SoundSampleTest::encodingWrapsAndTruncates()
{
    QFETCH(float, value);
    QFETCH(int, bits);
    QFETCH(QByteArray, bytes);
    QByteArray out(bytes.size(), char(0x55));
    encodeSample(value, out.data(), quint16(bits));
    QCOMPARE(out.toHex(), bytes.toHex());
}

void SoundSampleTest::roundTripOfEveryValue()
{
    // Every 8- and 16-bit value, and a walk through the 24-bit ones, come back unchanged.
    for (int v = 0; v < 256; ++v) {
        const uchar in = uchar(v);
        uchar out = 0;
        encodeSample(decodeSample(&in, 8), &out, 8);
        QCOMPARE(out, in);
    }
    for (int v = -32768; v < 32768; ++v) {
        const qint16 in = qint16(v);
        qint16 out = 0;
        encodeSample(decodeSample(&in, 16), &out, 16);
        QCOMPARE(out, in);
    }
    for (int v = -8388608; v < 8388608; v += 997) {
        const uchar in[3] = {uchar(v), uchar(v >> 8), uchar(v >> 16)};
        uchar out[3] = {};
        encodeSample(decodeSample(in, 24), out, 24);
        QCOMPARE(QByteArray(reinterpret_cast<const char *>(out), 3), QByteArray(reinterpret_cast<const char *>(in), 3));
    }
}

void SoundSampleTest::scaling_data()
{
    QTest::addColumn<QByteArray>("in");
    QTest::addColumn<float>("scale");
    QTest::addColumn<int>("bits");
    QTest::addColumn<QByteArray>("out");
    QTest::addRow("8 half") << bytesOf({228}) << 0.5f << 8 << bytesOf({178});
    QTest::addRow("8 clamps high") << bytesOf({228}) << 2.f << 8 << bytesOf({255});
    QTest::addRow("8 clamps low") << bytesOf({20}) << 2.f << 8 << bytesOf({0});
    QTest::addRow("16 half") << bytesOf({0x00, 0x40}) << 0.5f << 16 << bytesOf({0x00, 0x20});
    QTest::addRow("16 clamps") << bytesOf({0x00, 0x40}) << 3.f << 16 << bytesOf({0xFF, 0x7F});
    QTest::addRow("16 clamps low") << bytesOf({0x00, 0xC0}) << 3.f << 16 << bytesOf({0x00, 0x80});
    // 24 bits: the value keeps its empty low byte while it is held, so all but a strong
    // attenuation hits the limit, and the stored bytes are those above the lowest.
    QTest::addRow("24 strong attenuation") << bytesOf({0x00, 0x00, 0x01}) << (1.f / 256) << 24 << bytesOf({0x00, 0x01, 0x00});
    QTest::addRow("24 held") << bytesOf({0x00, 0x00, 0x40}) << 0.5f << 24 << bytesOf({0xFF, 0x7F, 0x00});
    QTest::addRow("24 held low") << bytesOf({0x00, 0x00, 0xC0}) << 0.5f << 24 << bytesOf({0x00, 0x80, 0xFF});
    // 32 bits: only the low half is stored; the high bytes of the target stay.
    QTest::addRow("32 low half") << bytesOf({0x34, 0x12, 0x00, 0x00}) << 2.f << 32 << bytesOf({0x68, 0x24, 0xAA, 0xAA});
    QTest::addRow("32 clamps") << bytesOf({0x00, 0x00, 0x00, 0x40}) << 4.f << 32 << bytesOf({0xFF, 0xFF, 0xAA, 0xAA});
}

void SoundSampleTest::scaling()
{
    QFETCH(QByteArray, in);
    QFETCH(float, scale);
    QFETCH(int, bits);
    QFETCH(QByteArray, out);
    QByteArray target(out.size(), char(0xAA));
    scaleSample(target.data(), in.constData(), scale, quint16(bits));
    QCOMPARE(target.toHex(), out.toHex());
}

void SoundSampleTest::resampleDepthOnlyIsAPureRoundTrip()
{
    // Same rate, 8 to 16 bits: no filter, each value as byte / 127.5 - 1 made short.
    SoundSample sample;
    sample.channels = 1;
    sample.bits = 8;
    sample.frequency = 8000;
    sample.samples = 256;
    for (int v = 0; v < 256; ++v)
        sample.data.append(char(v));
    QVERIFY(resampleSound(sample, SampleInfo{1, 16, 8000, 0}));
    QCOMPARE(sample.bits, quint16(16));
    QCOMPARE(sample.samples, quint32(256));
    QCOMPARE(sample.data.size(), 512);
    const auto *values = reinterpret_cast<const qint16 *>(sample.data.constData());
    for (int v = 0; v < 256; ++v) {
        const float f = float(v / 127.5 - 1.0);
        const qint16 expected = qint16(qBound(-32768L, lrintf(f * 32768.f), 32767L));
        QCOMPARE(values[v], expected);
    }
}

void SoundSampleTest::resampleEightBitsIsExact()
{
    SoundSample sample;
    sample.channels = 2;
    sample.bits = 8;
    sample.frequency = 11025;
    sample.samples = 128;
    for (int v = 0; v < 256; ++v)
        sample.data.append(char(v));
    QVERIFY(resampleSound(sample, SampleInfo{2, 8, 11025, 0}));
    // The ends are exact; between them a value may fall one step, as the float of
    // byte / 127.5 - 1 lies just below the byte.
    QCOMPARE(uchar(sample.data.at(0)), uchar(0));
    QCOMPARE(uchar(sample.data.at(255)), uchar(255));
    QCOMPARE(uchar(sample.data.at(128)), uchar(128));
    for (int v = 0; v < 256; ++v)
        QVERIFY(v - uchar(sample.data.at(v)) == 0 || v - uchar(sample.data.at(v)) == 1);
}

void SoundSampleTest::resampleRate_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::addColumn<int>("bits");
    QTest::addRow("44100 to 22050, 16 bits") << 44100 << 22050 << 16;
    QTest::addRow("22050 to 44100, 16 bits") << 22050 << 44100 << 16;
    QTest::addRow("8000 to 11025, 8 bits") << 8000 << 11025 << 8;
}

void SoundSampleTest::resampleRate()
{
    QFETCH(int, from);
    QFETCH(int, to);
    QFETCH(int, bits);
    SoundSample sample = sineSample(quint32(from), 1, quint16(bits), quint32(from / 10), 440, 0.5);
    QVERIFY(resampleSound(sample, SampleInfo{1, quint16(bits), quint32(to), 0}));
    // The frame count is the source's times the ratio, truncated, whatever was made.
    QCOMPARE(sample.samples, quint32(double(from / 10) * (double(to) / from)));
    QCOMPARE(sample.frequency, quint32(to));
    QCOMPARE(sample.data.size(), int(sample.samples * bits / 8));
    // The tone is still a 440 Hz tone: count its rising zero crossings in the middle.
    int crossings = 0;
    float previous = 0;
    const int first = int(sample.samples / 4);
    const int last = int(sample.samples * 3 / 4);
    for (int i = first; i < last; ++i) {
        const float value = decodeSample(sample.data.constData() + i * bits / 8, quint16(bits));
        if (i > first && previous < 0 && value >= 0)
            ++crossings;
        previous = value;
    }
    const double seconds = double(last - first) / to;
    QVERIFY2(qAbs(crossings - 440 * seconds) <= 2, qPrintable(QString::number(crossings)));
}

void SoundSampleTest::resampleChannels()
{
    // Stereo to mono averages pairs.
    SoundSample stereo;
    stereo.channels = 2;
    stereo.bits = 16;
    stereo.frequency = 8000;
    stereo.samples = 2;
    const qint16 values[] = {1000, 3000, -2000, 0};
    stereo.data = QByteArray(reinterpret_cast<const char *>(values), sizeof values);
    QVERIFY(resampleSound(stereo, SampleInfo{1, 16, 8000, 0}));
    QCOMPARE(stereo.channels, quint16(1));
    QCOMPARE(stereo.data.size(), 4);
    const auto *mono = reinterpret_cast<const qint16 *>(stereo.data.constData());
    QCOMPARE(mono[0], qint16(2000));
    QCOMPARE(mono[1], qint16(-1000));
    // Mono to stereo doubles each value.
    QVERIFY(resampleSound(stereo, SampleInfo{2, 16, 8000, 0}));
    QCOMPARE(stereo.data.size(), 8);
    const auto *doubled = reinterpret_cast<const qint16 *>(stereo.data.constData());
    QCOMPARE(doubled[0], qint16(2000));
    QCOMPARE(doubled[1], qint16(2000));
    QCOMPARE(doubled[3], qint16(-1000));
}

void SoundSampleTest::resampleRefusals()
{
    SoundSample sample = sineSample(44100, 1, 16, 441, 100, 0.5);
    const QByteArray before = sample.data;
    // A ratio above 256 is the converter's to refuse; the sound stays as it was.
    QVERIFY(!resampleSound(sample, SampleInfo{1, 16, 44100 * 300, 0}));
    QCOMPARE(sample.data, before);
    QCOMPARE(sample.frequency, quint32(44100));
    QVERIFY(!resampleSound(sample, SampleInfo{1, 16, 100, 0}));
    // Nor can a sound of no rate: an unloaded one has no channels and one bit.
    SoundSample empty;
    QCOMPARE(empty.bits, quint16(1));
    QVERIFY(!resampleSound(empty, SampleInfo{1, 16, 44100, 0}));
}

QTEST_MAIN(SoundSampleTest)
#include "tst_soundsample.moc"
