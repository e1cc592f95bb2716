// The waveform's min/max summaries held against a plain walk over the frames, through
// random edits, undo and redo, at every depth and at random zoom levels.
#include "testinterface.h"

#include "editors/sound/audiodata.h"
#include "editors/sound/audiowaveform.h"

#include <QRandomGenerator>
#include <QtTest>

using namespace Ovra;

namespace {

SoundSample randomSample(QRandomGenerator &random, quint16 channels, quint16 bits, quint32 frames)
{
    SoundSample sample;
    sample.channels = channels;
    sample.bits = bits;
    sample.frequency = 22050;
    sample.samples = frames;
    sample.data.resize(int(frames * channels * (bits / 8)));
    for (char &byte : sample.data)
        byte = char(random.bounded(256));
    return sample;
}

QByteArray randomBytes(QRandomGenerator &random, int size)
{
    QByteArray bytes(size, '\0');
    for (char &byte : bytes)
        byte = char(random.bounded(256));
    return bytes;
}

} // namespace

class AudioWaveformTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
    void summariesMatchFrames_data();
    void summariesMatchFrames();
    void pictureFromSummariesEqualsPictureFromFrames_data();
    void pictureFromSummariesEqualsPictureFromFrames();
    void emptyAndBrokenSounds();
    void scalesRefuseNonsense();
    void viewMapping();

private:
    void comparePeaks(const AudioWaveform &waveform, QRandomGenerator &random, int checks);
    TestInterface m_host;
};

void AudioWaveformTest::comparePeaks(const AudioWaveform &waveform, QRandomGenerator &random, int checks)
{
    const SoundSample &s = waveform.data()->sample;
    for (int i = 0; i < checks; ++i) {
        // Short ranges, ranges across block edges, and ranges of most of the sound.
        const uint n = s.samples;
        uint from = n ? random.bounded(n) : 0;
        uint length = 0;
        switch (i % 3) {
        case 0: length = random.bounded(600u); break;
        case 1: length = random.bounded(AudioWaveform::CoarseBlock * 2); break;
        default: from = random.bounded(1000u); length = n; break;
        }
        const uint to = uint(std::min<quint64>(quint64(from) + length, n + 10));
        for (int c = 0; c < s.channels; ++c) {
            float lo, hi, rawLo, rawHi;
            waveform.peak(c, from, to, lo, hi);
            waveform.rawPeak(c, from, to, rawLo, rawHi);
            if (lo != rawLo || hi != rawHi)
                QFAIL(qPrintable(QStringLiteral("channel %1, frames %2 to %3: %4..%5 against %6..%7")
                                     .arg(c).arg(from).arg(to).arg(lo).arg(hi).arg(rawLo).arg(rawHi)));
        }
    }
}

void AudioWaveformTest::summariesMatchFrames_data()
{
    QTest::addColumn<int>("channels");
    QTest::addColumn<int>("bits");
    QTest::addColumn<int>("frames");
    QTest::newRow("mono 8") << 1 << 8 << 200000;
    QTest::newRow("stereo 16") << 2 << 16 << 270001;
    QTest::newRow("mono 24") << 1 << 24 << 140000;
    QTest::newRow("stereo 32") << 2 << 32 << 131072;
    QTest::newRow("shorter than a block") << 2 << 16 << 100;
}

void AudioWaveformTest::summariesMatchFrames()
{
    QFETCH(int, channels);
    QFETCH(int, bits);
    QFETCH(int, frames);
    QRandomGenerator random(uint(channels * 1000 + bits * 10 + frames));
    AudioData data;
    data.setSample(randomSample(random, quint16(channels), quint16(bits), quint32(frames)));
    AudioWaveform waveform(&data);
    comparePeaks(waveform, random, 60);
    const uint frameBytes = data.bytesPerFrame();
    for (int edit = 0; edit < 40; ++edit) {
        const uint n = data.sample.samples;
        const uint start = n ? random.bounded(n) : 0;
        const uint end = std::min(n, start + random.bounded(3000u));
        data.select(start, end);
        uint a, b;
        data.selection(a, b);
        int newFrames = 0;
        switch (random.bounded(4)) {
        case 0: newFrames = int(b - a); break;        // in place
        case 1: newFrames = 0; break;                 // removal
        default: newFrames = 1 + int(random.bounded(2500u)); break; // other length or insert
        }
        if (newFrames == 0 && a == b)
            newFrames = 1;
        QVERIFY(data.changeSelectedSamples(randomBytes(random, newFrames * int(frameBytes))));
        if (random.bounded(4) == 0)
            data.undoStack.undo();
        if (random.bounded(6) == 0 && data.undoStack.canRedo())
            data.undoStack.redo();
        comparePeaks(waveform, random, 12);
    }
}

void AudioWaveformTest::pictureFromSummariesEqualsPictureFromFrames_data()
{
    QTest::addColumn<double>("hScale");
    QTest::addColumn<double>("vScale");
    QTest::addColumn<int>("firstFrame");
    QTest::newRow("all of it") << 300.0 / 300000 << 1.0 << 0;
    QTest::newRow("a column a fine block") << 1.0 / 256 << 1.0 << 1000;
    QTest::newRow("a column a coarse block and more") << 1.0 / 70000 << 0.5 << 0;
    QTest::newRow("odd frames a column") << 1.0 / 333.3 << 2.0 << 12345;
    QTest::newRow("frame by frame") << 1.0 << 1.0 << 299900;
    QTest::newRow("zoomed in") << 7.5 << 1.0 << 150000;
}

void AudioWaveformTest::pictureFromSummariesEqualsPictureFromFrames()
{
    QFETCH(double, hScale);
    QFETCH(double, vScale);
    QFETCH(int, firstFrame);
    QRandomGenerator random(7);
    AudioData data;
    data.setSample(randomSample(random, 2, 16, 300000));
    AudioWaveform waveform(&data);
    waveform.setHScale(hScale);
    waveform.setVScale(vScale);
    waveform.setFirstFrame(uint(firstFrame));
    const QSize size(300, 120);
    const QImage fromSummaries = waveform.render(size, AudioWaveform::Summaries);
    QCOMPARE(fromSummaries, waveform.render(size, AudioWaveform::Frames));
    // Something was drawn: the wave's colour stands in the picture.
    QVERIFY(fromSummaries.pixelColor(size.width() / 2, size.height() / 4) != QColor(Qt::white)
            || fromSummaries.pixelColor(size.width() / 2, size.height() * 3 / 4) != QColor(Qt::white));
    QCOMPARE(waveform.picture(size), fromSummaries);
}

void AudioWaveformTest::emptyAndBrokenSounds()
{
    AudioData data;
    AudioWaveform waveform(&data);
    float lo = 1, hi = 1;
    waveform.peak(0, 0, 100, lo, hi);
    QCOMPARE(lo, 0.0f);
    QCOMPARE(hi, 0.0f);
    QCOMPARE(waveform.render(QSize(50, 20), AudioWaveform::Summaries).pixelColor(10, 10), QColor(Qt::white));

    // Bytes that end inside a frame and a channel past the last: nothing read beyond.
    SoundSample ragged;
    ragged.channels = 2;
    ragged.bits = 16;
    ragged.frequency = 8000;
    ragged.samples = 1000; // more than the bytes hold
    ragged.data = QByteArray(4 * 300 + 3, char(0x10));
    data.setSample(ragged);
    QCOMPARE(data.sample.samples, 300u);
    waveform.peak(2, 0, 300, lo, hi);
    QCOMPARE(lo, 0.0f);
    waveform.peak(1, 0, 5000, lo, hi);
    QCOMPARE(lo, hi);
    QVERIFY(lo > 0);
    QVERIFY(!waveform.render(QSize(0, 0), AudioWaveform::Summaries).isNull());
}

void AudioWaveformTest::scalesRefuseNonsense()
{
    AudioData data;
    AudioWaveform waveform(&data);
    QSignalSpy changed(&waveform, &AudioWaveform::changed);
    for (double bad : {0.0, -2.0, qQNaN(), qInf()}) {
        waveform.setHScale(bad);
        waveform.setVScale(bad);
    }
    QCOMPARE(waveform.hScale(), 1.0);
    QCOMPARE(waveform.vScale(), 1.0);
    QCOMPARE(changed.count(), 0);
    waveform.setHScale(0.25);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(waveform.framesPerPixel(), 4.0);
}

void AudioWaveformTest::viewMapping()
{
    QRandomGenerator random(3);
    AudioData data;
    data.setSample(randomSample(random, 1, 16, 10000));
    AudioWaveform waveform(&data);
    waveform.setHScale(0.5);
    waveform.setFirstFrame(1000);
    QCOMPARE(waveform.frameAt(0), 1000u);
    QCOMPARE(waveform.frameAt(10), 1020u);
    QCOMPARE(waveform.xOf(1020), 10);
    QCOMPARE(waveform.frameAt(100000), 10000u); // held to the end
    QCOMPARE(waveform.xOf(0), -500);
    waveform.setFirstFrame(20000);
    QCOMPARE(waveform.firstFrame(), 10000u);
    // A removal behind the view pulls the first frame back into the sound.
    data.select(100, 10000);
    QVERIFY(data.changeSelectedSamples(QByteArray()));
    QCOMPARE(waveform.firstFrame(), 100u);
}

QTEST_MAIN(AudioWaveformTest)
#include "tst_audiowaveform.moc"
