// A sound's depth changed value by value: every pair of depths, exact widening, narrowing
// that drops low bits, and depths that aren't refused without harm.
#include "sound/soundsample.h"

#include <QtTest>

#include <limits>

using namespace Ovra;

namespace {

// Levels as the top bits of a 32-bit word: the extremes, silence and values between.
const QVector<qint32> levels{std::numeric_limits<qint32>::min(), -0x12345678, -1, 0, 1, 0x0000FF00,
                             0x12345678, std::numeric_limits<qint32>::max()};

// The word's top `bits` bits as one stored value: little-endian, 8 bits unsigned around 128.
QByteArray stored(qint32 word, int bits)
{
    const quint32 top = quint32(word) >> (32 - bits);
    QByteArray bytes;
    for (int i = 0; i < bits / 8; ++i)
        bytes.append(char(top >> (8 * i)));
    if (bits == 8)
        bytes[0] = char(uchar(bytes.at(0)) ^ 0x80);
    return bytes;
}

QByteArray storedLevels(int keptBits, int bits)
{
    QByteArray bytes;
    for (qint32 level : levels) {
        const quint32 kept = keptBits == 32 ? quint32(level) : quint32(level) & ~(0xFFFFFFFFu >> keptBits);
        bytes += stored(qint32(kept), bits);
    }
    return bytes;
}

SoundSample sampleOf(int bits, const QByteArray &data)
{
    SoundSample sample;
    sample.channels = 2;
    sample.bits = quint16(bits);
    sample.frequency = 22050;
    sample.samples = 1234; // not looked at: the depth change goes by the bytes
    sample.data = data;
    return sample;
}

} // namespace

class SampleDepthTest : public QObject
{
    Q_OBJECT

private slots:
    void knownValues_data();
    void knownValues();
    void everyPair_data();
    void everyPair();
    void refusesUnknownDepths_data();
    void refusesUnknownDepths();
};

void SampleDepthTest::knownValues_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<QByteArray>("in");
    QTest::addColumn<int>("to");
    QTest::addColumn<QByteArray>("out");
    QTest::newRow("8-bit silence") << 8 << QByteArray("\x80") << 16 << QByteArray("\x00\x00", 2);
    QTest::newRow("8-bit lowest") << 8 << QByteArray("\x00", 1) << 32 << QByteArray("\x00\x00\x00\x80", 4);
    QTest::newRow("8-bit highest") << 8 << QByteArray("\xFF") << 24 << QByteArray("\x00\x00\x7F", 3);
    QTest::newRow("16 to 8 drops the low byte") << 16 << QByteArray("\xFF\x7F") << 8 << QByteArray("\xFF");
    QTest::newRow("16-bit -1 to 8 rounds down") << 16 << QByteArray("\xFF\xFF") << 8 << QByteArray("\x7F");
    QTest::newRow("16 to 24") << 16 << QByteArray("\x34\x12") << 24 << QByteArray("\x00\x34\x12", 3);
    QTest::newRow("24 to 16") << 24 << QByteArray("\x12\x34\x56") << 16 << QByteArray("\x34\x56");
    QTest::newRow("32 to 24") << 32 << QByteArray("\x01\x02\x03\x04") << 24 << QByteArray("\x02\x03\x04");
    QTest::newRow("two 24-bit values to 32") << 24 << QByteArray("\x01\x02\x03\xFF\xFF\xFF") << 32
                                             << QByteArray("\x00\x01\x02\x03\x00\xFF\xFF\xFF", 8);
    QTest::newRow("a broken last value goes") << 16 << QByteArray("\x01\x02\x03") << 8 << QByteArray("\x82");
    QTest::newRow("no values") << 24 << QByteArray() << 8 << QByteArray();
}

void SampleDepthTest::knownValues()
{
    QFETCH(int, from);
    QFETCH(QByteArray, in);
    QFETCH(int, to);
    QFETCH(QByteArray, out);
    SoundSample sample = sampleOf(from, in);
    QVERIFY(changeSampleDepth(sample, quint16(to)));
    QCOMPARE(sample.data, out);
    QCOMPARE(sample.bits, quint16(to));
}

void SampleDepthTest::everyPair_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    for (int from : {8, 16, 24, 32}) {
        for (int to : {8, 16, 24, 32}) {
            if (from != to)
                QTest::addRow("%d to %d", from, to) << from << to;
        }
    }
}

void SampleDepthTest::everyPair()
{
    QFETCH(int, from);
    QFETCH(int, to);
    const QByteArray input = storedLevels(from, from);
    SoundSample sample = sampleOf(from, input);
    QVERIFY(changeSampleDepth(sample, quint16(to)));
    // Each value keeps the bits both depths have, and only those.
    QCOMPARE(sample.data, storedLevels(qMin(from, to), to));
    QCOMPARE(sample.bits, quint16(to));
    QCOMPARE(sample.channels, quint16(2));
    QCOMPARE(sample.frequency, quint32(22050));
    QCOMPARE(sample.samples, quint32(1234));

    QVERIFY(changeSampleDepth(sample, quint16(from)));
    QCOMPARE(sample.data, to > from ? input : storedLevels(to, from));
}

void SampleDepthTest::refusesUnknownDepths_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::newRow("from 20") << 20 << 16;
    QTest::newRow("to 20") << 16 << 20;
    QTest::newRow("to 0") << 16 << 0;
    QTest::newRow("an unloaded sound") << 1 << 16;
    QTest::newRow("to 12") << 8 << 12;
    QTest::newRow("to 64") << 32 << 64;
}

void SampleDepthTest::refusesUnknownDepths()
{
    QFETCH(int, from);
    QFETCH(int, to);
    const QByteArray data("\x01\x02\x03\x04\x05\x06", 6);
    SoundSample sample = sampleOf(from, data);
    QVERIFY(!changeSampleDepth(sample, quint16(to)));
    QCOMPARE(sample.data, data);
    QCOMPARE(sample.bits, quint16(from));
}

QTEST_GUILESS_MAIN(SampleDepthTest)
#include "tst_sampledepth.moc"
