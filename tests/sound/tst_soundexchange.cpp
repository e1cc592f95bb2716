// The complete codec rules against other programs: what they write is read whole, and what
// is written here they read whole. The programs come from scripts/setup.
#include "otherprogram.h"
#include "testfiles.h"
#include "sound/soundcodecs.h"
#include "pipedevice.h"
#include "testsounds.h"

#include <QBuffer>
#include <QTemporaryDir>
#include <QtEndian>
#include <QtTest>

using namespace Ovra;

namespace {

constexpr CodecRules Complete = CodecRules::Complete;

QByteArray le16(quint16 value) { return QByteArray(reinterpret_cast<const char *>(&value), 2); }
QByteArray le32(quint32 value) { return QByteArray(reinterpret_cast<const char *>(&value), 4); }

QByteArray chunk(const char *id, const QByteArray &payload)
{
    return id + le32(quint32(payload.size())) + payload + (payload.size() % 2 ? QByteArray(1, '\0') : QByteArray());
}

QByteArray fmt(const QByteArray &payload)
{
    return chunk("fmt ", payload);
}

QByteArray dataChunk(const char *hex)
{
    return chunk("data", QByteArray::fromHex(hex));
}

QByteArray riff(const QByteArray &chunks, quint32 declared = 0)
{
    return "RIFF" + le32(declared ? declared : quint32(chunks.size() + 4)) + "WAVE" + chunks;
}

// A format chunk's payload: the 16 bytes every WAV has, and the extensible tail.
QByteArray format(quint16 tag, quint16 channels, quint16 bits)
{
    const quint16 block = quint16(channels * ((bits + 7) / 8));
    return le16(tag) + le16(channels) + le32(8000) + le32(8000u * block) + le16(block) + le16(bits);
}

QByteArray extensible(quint16 code, quint16 channels, quint16 container, quint16 valid,
                      const QByteArray &tail = QByteArray::fromHex("000000001000800000aa00389b71"))
{
    return format(0xFFFE, channels, container) + le16(22) + le16(valid) + le32(0) + le16(code) + tail;
}

QByteArray floats(std::initializer_list<float> values)
{
    QByteArray bytes;
    for (float value : values)
        bytes += QByteArray(reinterpret_cast<const char *>(&value), 4);
    return bytes;
}

using Reader = SoundSample (*)(QIODevice *, CodecRules);
using Writer = bool (*)(const SoundSample &, QIODevice *, CodecRules);

SoundSample load(const QString &fileName, Reader reader, CodecRules rules = Complete)
{
    QFile file(fileName);
    return reader(&file, rules);
}

bool store(const QString &fileName, Writer writer, const SoundSample &sample)
{
    QFile file(fileName);
    return writer(sample, &file, Complete);
}

// The RMS, the mean and the rising zero crossings a second of one channel of a 16-bit
// sound, in full scale.
struct Channel
{
    double rms = 0;
    double mean = 0;
    double pitch = 0;
};

Channel measure(const SoundSample &sample, int channel)
{
    Channel measured;
    const auto *values = reinterpret_cast<const qint16 *>(sample.data.constData());
    int crossings = 0;
    for (quint32 i = 1; i < sample.samples; ++i) {
        const double value = values[i * sample.channels + channel] / 32768.0;
        measured.rms += value * value;
        measured.mean += value;
        crossings += values[(i - 1) * sample.channels + channel] < 0 && value >= 0;
    }
    measured.rms = std::sqrt(measured.rms / sample.samples);
    measured.mean /= sample.samples;
    measured.pitch = crossings * double(sample.frequency) / sample.samples;
    return measured;
}

void depthsAndChannels(std::initializer_list<int> depths, std::initializer_list<int> channelCounts)
{
    QTest::addColumn<int>("bits");
    QTest::addColumn<int>("channels");
    for (int bits : depths) {
        for (int channels : channelCounts)
            QTest::addRow("%d bits, %d channels", bits, channels) << bits << channels;
    }
}

} // namespace

class SoundExchangeTest : public QObject
{
    Q_OBJECT

private slots:
    void wavFromSox_data();
    void wavFromSox();
    void wavFromLayout_data();
    void wavFromLayout();
    void wavToSox_data();
    void wavToSox();
    void flacBothWays_data();
    void flacBothWays();
    void oggWholeForOggdec_data();
    void oggWholeForOggdec();
    void oggFromOggenc();
    void writersReportFailures_data();
    void writersReportFailures();

private:
    QString path(const QString &name) const { return m_dir.filePath(name); }
    QTemporaryDir m_dir;
};

void SoundExchangeTest::wavFromSox_data()
{
    QTest::addColumn<bool>("isFloat");
    QTest::addColumn<int>("bits");
    QTest::addColumn<int>("channels");
    QTest::addColumn<int>("tag"); // the format tag sox chooses
    QTest::addRow("PCM 24 mono") << false << 24 << 1 << 0xFFFE;
    QTest::addRow("PCM 24 stereo") << false << 24 << 2 << 0xFFFE;
    QTest::addRow("PCM 32 stereo") << false << 32 << 2 << 0xFFFE;
    QTest::addRow("PCM 16, 3 channels") << false << 16 << 3 << 0xFFFE;
    QTest::addRow("float 32 stereo") << true << 32 << 2 << 3;
}

void SoundExchangeTest::wavFromSox()
{
    QFETCH(bool, isFloat);
    QFETCH(int, bits);
    QFETCH(int, channels);
    QFETCH(int, tag);
    // Floats of whole 16-bit steps are exact in both forms: k / 32768 is read as k << 16.
    const SoundSample source = sineSample(8000, quint16(channels), quint16(isFloat ? 16 : bits), 999, 440, 0.7);
    QByteArray raw = source.data;
    SoundSample expected = source;
    if (isFloat) {
        raw.clear();
        expected.bits = 32;
        expected.data.clear();
        for (int i = 0; i < source.data.size(); i += 2) {
            const qint16 value = qFromLittleEndian<qint16>(source.data.constData() + i);
            raw += floats({value / 32768.0f});
            expected.data += le32(quint32(value) << 16);
        }
    }
    QVERIFY(writeFile(path("in.raw"), raw));
    const QStringList shape{"-r", "8000", "-e", isFloat ? "floating-point" : "signed-integer", "-b",
                            QString::number(isFloat ? 32 : bits), "-c", QString::number(channels)};
    const ProgramRun sox = runProgram("sox", QStringList{"-t", "raw", "-L"} + shape << path("in.raw") << path("sox.wav"));
    QVERIFY2(sox.code == 0, sox.err.constData());
    QCOMPARE(int(qFromLittleEndian<quint16>(readFile(path("sox.wav"), QByteArray(22, '\0')).constData() + 20)), tag);

    const SoundSample sample = load(path("sox.wav"), soundFromWAV);
    QCOMPARE(sample.channels, expected.channels);
    QCOMPARE(sample.bits, expected.bits);
    QCOMPARE(sample.samples, expected.samples);
    QCOMPARE(sample.data, expected.data);
    // The designed reader takes plain PCM alone.
    QVERIFY(load(path("sox.wav"), soundFromWAV,
                 CodecRules::Designed).data.isEmpty());
}

void SoundExchangeTest::wavFromLayout_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<int>("bits"); // 0: no sound
    QTest::addColumn<int>("channels");
    QTest::addColumn<QByteArray>("data");
    const QByteArray pcm16 = fmt(format(1, 1, 16));
    const QByteArray data16 = dataChunk("0100ff7f");
    auto row = [](const char *name, const QByteArray &file, int bits, int channels, const char *hex) {
        QTest::newRow(name) << file << bits << channels << QByteArray::fromHex(hex);
    };
    row("extensible PCM 24 stereo", riff(fmt(extensible(1, 2, 24, 24)) + dataChunk("0102030405060708090a0b0c")),
        24, 2, "0102030405060708090a0b0c");
    row("20 valid bits of 24: the noise below is cleared", riff(fmt(extensible(1, 1, 24, 20)) + dataChunk("ff34120f8000")),
        24, 1, "f03412008000");
    row("24 valid bits of 32", riff(fmt(extensible(1, 1, 32, 24)) + dataChunk("ff00008012345678")),
        32, 1, "0000008000345678");
    // Full scale and beyond are clamped; a value that is not a number is silence.
    const QByteArray values = chunk("data", floats({0.5f, -1.0f, 1.0f, 2.0f, -3.0f, NAN}));
    row("float 32 with a fact chunk", riff(fmt(format(3, 1, 32) + le16(0)) + chunk("fact", le32(6)) + values),
        32, 1, "00000040" "00000080" "ffffff7f" "ffffff7f" "00000080" "00000000");
    row("extensible float 32 stereo", riff(fmt(extensible(3, 2, 32, 32)) + chunk("data", floats({-0.5f, 0.25f}))), 32, 2,
        "000000c000000020");
    QByteArray doubles;
    for (double value : {0.5, -0.25})
        doubles += QByteArray(reinterpret_cast<const char *>(&value), 8);
    row("extensible float 64", riff(fmt(extensible(3, 1, 64, 64)) + chunk("data", doubles)), 32, 1,
        "00000040000000e0");
    row("odd chunk padded, before the format", riff(chunk("LIST", "abc") + pcm16 + data16), 16, 1, "0100ff7f");
    row("\"data\" inside another chunk", riff(pcm16 + chunk("note", "a data b") + data16), 16, 1, "0100ff7f");
    row("format after the data", riff(data16 + pcm16), 16, 1, "0100ff7f");
    const QByteArray cut = "data" + le32(12) + QByteArray::fromHex("01000200030004000500");
    row("data cut short: whole frames", riff(fmt(format(1, 2, 16)) + cut),
        16, 2, "0100020003000400");
    row("RIFF length beyond the file", riff(pcm16 + data16, 0x7FFFFFF0), 16, 1, "0100ff7f");
    row("8 bits, odd length", riff(fmt(format(1, 1, 8)) + dataChunk("80ff00")), 8, 1, "80ff00");
    row("other sub-format", riff(fmt(extensible(2, 1, 16, 16)) + data16), 0, 0, "");
    row("GUID of another family", riff(fmt(extensible(1, 1, 16, 16, QByteArray(14, 'x'))) + data16), 0, 0, "");
    row("short format chunk", riff(fmt(format(1, 1, 16).left(12)) + data16), 0, 0, "");
    row("no data chunk", riff(pcm16), 0, 0, "");
    row("40-bit PCM", riff(fmt(format(1, 1, 40)) + data16), 0, 0, "");
    row("16-bit float", riff(fmt(format(3, 1, 16)) + data16), 0, 0, "");
    row("compressed", riff(fmt(format(2, 1, 16)) + data16), 0, 0, "");
}

void SoundExchangeTest::wavFromLayout()
{
    QFETCH(QByteArray, file);
    QFETCH(int, bits);
    QFETCH(int, channels);
    QFETCH(QByteArray, data);
    // From a file, and from a pipe that hands the bytes over a few at a time.
    for (const bool piped : {false, true}) {
        QBuffer buffer(&file);
        PipeDevice pipe(file, 3);
        const SoundSample sample = soundFromWAV(piped ? static_cast<QIODevice *>(&pipe) : &buffer, Complete);
        QCOMPARE(sample.data.toHex(), data.toHex());
        buffer.close();
        PipeDevice infoPipe(file, 3);
        const SampleInfo info = soundInfoFromWAV(piped ? static_cast<QIODevice *>(&infoPipe) : &buffer, Complete);
        QCOMPARE(int(info.bits), bits);
        QCOMPARE(int(info.channels), channels);
        QCOMPARE(info.samples, bits ? quint32(data.size() / (bits / 8 * channels)) : 0u);
        if (bits) {
            QCOMPARE(int(sample.bits), bits);
            QCOMPARE(sample.samples, info.samples);
            QCOMPARE(sample.frequency, 8000u);
        }
    }
}

void SoundExchangeTest::wavToSox_data()
{
    depthsAndChannels({8, 16, 24, 32}, {1, 2, 3});
}

void SoundExchangeTest::wavToSox()
{
    QFETCH(int, bits);
    QFETCH(int, channels);
    // An odd frame count: 8-bit mono data has an odd length, and a pad byte after it.
    const SoundSample sample = sineSample(11025, quint16(channels), quint16(bits), 1001, 300, 0.6);
    QVERIFY(store(path("ours.wav"), soundToWAV, sample));
    const ProgramRun raw = runProgram("sox", {path("ours.wav"), "-t", "raw", path("sox.raw")});
    QVERIFY2(raw.code == 0 && raw.err.isEmpty(), raw.err.constData());
    QCOMPARE(readFile(path("sox.raw")), sample.data);
    const QString text = QString::fromUtf8(runProgram("sox", {"--i", path("ours.wav")}).out);
    QVERIFY2(text.contains(QStringLiteral("Channels       : %1\n").arg(channels)), qPrintable(text));
    QVERIFY2(text.contains(QStringLiteral("Precision      : %1-bit\n").arg(bits)), qPrintable(text));
    QVERIFY2(text.contains(QStringLiteral(" = 1001 samples")), qPrintable(text));
}

void SoundExchangeTest::flacBothWays_data()
{
    depthsAndChannels({8, 16, 24}, {1, 2});
}

void SoundExchangeTest::flacBothWays()
{
    QFETCH(int, bits);
    QFETCH(int, channels);
    // Past two of the encoder's blocks of 10000 frames.
    const SoundSample sample = sineSample(22050, quint16(channels), quint16(bits), 23456, 440, 0.9);
    QVERIFY(store(path("in.wav"), soundToWAV, sample));
    const ProgramRun encode = runProgram("flac", {"-s", "-f", "-o", path("theirs.flac"), path("in.wav")});
    QVERIFY2(encode.code == 0, encode.err.constData());
    const SoundSample theirs = load(path("theirs.flac"), soundFromFLAC);
    QCOMPARE(theirs.bits, sample.bits);
    QCOMPARE(theirs.channels, sample.channels);
    QCOMPARE(theirs.samples, sample.samples);
    QVERIFY(theirs.data == sample.data);

    QVERIFY(store(path("ours.flac"), soundToFLAC, sample));
    const ProgramRun decode = runProgram("flac", {"-d", "-s", "-f", "-o", path("back.wav"), path("ours.flac")});
    QVERIFY2(decode.code == 0, decode.err.constData());
    const SoundSample back = load(path("back.wav"), soundFromWAV);
    QCOMPARE(back.bits, sample.bits);
    QCOMPARE(back.samples, sample.samples);
    QVERIFY(back.data == sample.data);
}

void SoundExchangeTest::oggWholeForOggdec_data()
{
    depthsAndChannels({8, 16, 24, 32}, {1, 2});
}

void SoundExchangeTest::oggWholeForOggdec()
{
    QFETCH(int, bits);
    QFETCH(int, channels);
    // More than one block of 65536 frames, and not a whole number of them.
    const SoundSample sample = sineSample(22050, quint16(channels), quint16(bits), 70001, 440, 0.5);
    QVERIFY(store(path("ours.ogg"), soundToOGG, sample));
    const QByteArray ogg = readFile(path("ours.ogg"));
    QVERIFY(ogg.at(ogg.lastIndexOf("OggS") + 5) & 4); // the last page ends the stream

    const ProgramRun oggdec = runProgram("oggdec", {"-Q", "-o", path("back.wav"), path("ours.ogg")});
    QVERIFY2(oggdec.code == 0 && oggdec.err.isEmpty(), oggdec.err.constData());
    const SoundSample back = load(path("back.wav"), soundFromWAV);
    QCOMPARE(back.channels, sample.channels);
    QCOMPARE(back.samples, sample.samples);
    for (int channel = 0; channel < channels; ++channel) {
        // Each channel is its own tone (n times 440 Hz), centred and at its level.
        const Channel measured = measure(back, channel);
        QVERIFY2(qAbs(measured.rms - 0.5 / std::sqrt(2.0)) < 0.03, qPrintable(QString::number(measured.rms)));
        QVERIFY2(qAbs(measured.mean) < 0.01, qPrintable(QString::number(measured.mean)));
        QVERIFY2(qAbs(measured.pitch - 440.0 * (channel + 1)) < 5, qPrintable(QString::number(measured.pitch)));
    }
}

void SoundExchangeTest::oggFromOggenc()
{
    const SoundSample sample = sineSample(44100, 2, 16, 50001, 440, 0.5);
    QVERIFY(store(path("in.wav"), soundToWAV, sample));
    const ProgramRun oggenc = runProgram("oggenc", {"-Q", "-o", path("theirs.ogg"), path("in.wav")});
    QVERIFY2(oggenc.code == 0, oggenc.err.constData());
    const SoundSample theirs = load(path("theirs.ogg"), soundFromOGG);
    QCOMPARE(theirs.channels, quint16(2));
    QCOMPARE(theirs.samples, 50001u);
    QVERIFY(qAbs(measure(theirs, 1).pitch - 880) < 10); // the second channel is its own
}

// A device that takes `room` bytes and then fails.
class FullDevice : public QIODevice
{
public:
    explicit FullDevice(qint64 room) : m_room(room) { open(WriteOnly); }

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *, qint64 length) override
    {
        if (length > m_room)
            return -1;
        m_room -= length;
        return length;
    }

private:
    qint64 m_room;
};

void SoundExchangeTest::writersReportFailures_data()
{
    QTest::addColumn<QByteArray>("format");
    QTest::addColumn<int>("bits");
    QTest::addColumn<int>("room");
    QTest::addColumn<bool>("designed"); // what the designed rules answer
    for (const char *format : {"WAV", "OGG", "FLAC"}) {
        QTest::addRow("%s, the device full", format) << QByteArray(format) << 16 << 200 << (format != QByteArray("WAV"));
        QTest::addRow("%s, 12 bits", format) << QByteArray(format) << 12 << 65536 << true;
    }
}

void SoundExchangeTest::writersReportFailures()
{
    QFETCH(QByteArray, format);
    QFETCH(int, bits);
    QFETCH(int, room);
    QFETCH(bool, designed);
    SoundSample sample = sineSample(22050, 1, 16, 30000, 440, 0.5);
    sample.bits = quint16(bits);
    FullDevice complete(room);
    QVERIFY(!saveSound(&complete, format.constData(), sample, Complete));
    if (bits == 12)
        QCOMPARE(complete.pos(), qint64(0)); // nothing written at all
    FullDevice full(room);
    QCOMPARE(saveSound(&full, format.constData(), sample), designed);
}

QTEST_GUILESS_MAIN(SoundExchangeTest)
#include "tst_soundexchange.moc"
