// "ovra sound convert" and "sound play" with files of other programs: sox, flac, oggenc
// and oggdec make the inputs and read the outputs.
#include "otherprogram.h"
#include "ovratool.h"
#include "sound/soundcodecs.h"
#include "testsounds.h"

#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace Ovra;

class OvraSoundExchangeTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_dir = std::make_unique<QTemporaryDir>(); } // a directory of its own for each row
    void losslessWithOtherPrograms_data();
    void losslessWithOtherPrograms();
    void oggWithOtherPrograms();
    void playWithoutSoundDevice();
    void wording_data();
    void wording();

private:
    ToolRun run(const QString &arguments, const QStringList &environment = {}) const
    {
        return runOvra(m_dir->path(), arguments.split(QLatin1Char(' ')), environment);
    }
    ProgramRun other(const QString &arguments) const
    {
        const QStringList words = arguments.split(QLatin1Char(' '));
        return runProgram(words.first(), words.mid(1), m_dir->path());
    }
    QString path(const QString &name) const { return m_dir->filePath(name); }
    bool writeWav(const QString &name, const SoundSample &sample) const
    {
        QFile file(path(name));
        return file.open(QIODevice::WriteOnly) && soundToWAV(sample, &file);
    }
    std::unique_ptr<QTemporaryDir> m_dir;
};

void OvraSoundExchangeTest::losslessWithOtherPrograms_data()
{
    QTest::addColumn<int>("bits");
    QTest::addColumn<int>("channels");
    // sox writes the extensible header past 16 bits or 2 channels.
    QTest::addRow("8 bits mono") << 8 << 1;
    QTest::addRow("16 bits stereo") << 16 << 2;
    QTest::addRow("24 bits stereo") << 24 << 2;
    QTest::addRow("16 bits, 3 channels") << 16 << 3;
}

void OvraSoundExchangeTest::losslessWithOtherPrograms()
{
    QFETCH(int, bits);
    QFETCH(int, channels);
    const QByteArray raw = sineSample(16000, quint16(channels), quint16(bits), 12345, 440, 0.8).data;
    QVERIFY(writeFile(path("in.raw"), raw));
    const QString shape = QStringLiteral("-r 16000 -e %1 -b %2 -c %3")
                              .arg(bits == 8 ? "unsigned-integer" : "signed-integer").arg(bits).arg(channels);
    ProgramRun made = other("sox -t raw -L " + shape + " in.raw sox.wav");
    QVERIFY2(made.code == 0, made.err.constData());
    made = other("flac -s --channel-map=none -o flac.flac sox.wav"); // sox leaves the speaker mask at 0
    QVERIFY2(made.code == 0, made.err.constData());

    // sox's WAV to our FLAC and WAV, their FLAC to our WAV; each read by the others.
    for (const char *conversion : {"sox.wav ours.flac", "sox.wav ours.wav", "flac.flac fromflac.wav"}) {
        const ToolRun converted = run(QStringLiteral("sound convert ") + conversion);
        QVERIFY2(converted.code == 0, qPrintable(converted.err));
    }
    made = other("flac -d -s -o decoded.wav ours.flac");
    QVERIFY2(made.code == 0, made.err.constData());
    for (const char *wav : {"decoded.wav", "ours.wav", "fromflac.wav"}) {
        made = other(QStringLiteral("sox %1 -t raw out.raw").arg(wav));
        QVERIFY2(made.code == 0 && made.err.isEmpty(), made.err.constData());
        QVERIFY2(readFile(path("out.raw")) == raw, wav);
    }
}

void OvraSoundExchangeTest::oggWithOtherPrograms()
{
    QVERIFY(writeWav("tone.wav", sineSample(22050, 2, 16, 70001, 440, 0.5)));
    ToolRun converted = run("sound convert tone.wav ours.ogg");
    QVERIFY2(converted.code == 0, qPrintable(converted.err));
    ProgramRun made = other("oggdec -Q -o decoded.wav ours.ogg");
    QVERIFY2(made.code == 0 && made.err.isEmpty(), made.err.constData());
    const QByteArray decoded = other("sox --i decoded.wav").out;
    QVERIFY2(decoded.contains("Channels       : 2\n") && decoded.contains(" = 70001 samples"), decoded.constData());
    // Both channels came through: the second one (at 880 Hz) on its own is not silent.
    made = other("sox decoded.wav -n remix 2 stat");
    QVERIFY2(made.err.contains("RMS     amplitude:     0.3"), made.err.constData());

    made = other("oggenc -Q -o theirs.ogg tone.wav");
    QVERIFY2(made.code == 0, made.err.constData());
    converted = run("sound convert theirs.ogg fromogg.wav");
    QCOMPARE(converted.out, QStringLiteral("Wrote fromogg.wav: 22050 Hz, 16 bits, 2 channels, 70001 frames.\n"));
}

void OvraSoundExchangeTest::playWithoutSoundDevice()
{
    QVERIFY(writeWav("beep.wav", sineSample(22050, 1, 16, 2205, 880, 0.3)));
    // A driver name the audio library doesn't have: it finds no device at all.
    const ToolRun played = run("sound play beep.wav", {"ALSOFT_DRIVERS=no-such-driver"});
    QCOMPARE(played.code, 3);
    QCOMPARE(played.out, QString());
    QCOMPARE(played.err, QStringLiteral("ovra sound play: beep.wav: there is no sound device to play on\n"));
}

void OvraSoundExchangeTest::wording_data()
{
    QTest::addColumn<int>("channels");
    QTest::addColumn<int>("frames");
    QTest::addColumn<QString>("said");
    QTest::newRow("one") << 1 << 1 << "Wrote out.wav: 8000 Hz, 8 bits, 1 channel, 1 frame.\n";
    QTest::newRow("more") << 2 << 3 << "Wrote out.wav: 8000 Hz, 8 bits, 2 channels, 3 frames.\n";
}

void OvraSoundExchangeTest::wording()
{
    QFETCH(int, channels);
    QFETCH(int, frames);
    QFETCH(QString, said);
    QVERIFY(writeWav("in.wav", sineSample(8000, quint16(channels), 8, quint32(frames), 440, 0.5)));
    const ToolRun converted = run("sound convert in.wav out.wav");
    QCOMPARE(converted.out, said);
    QCOMPARE(converted.code, 0);
}

QTEST_GUILESS_MAIN(OvraSoundExchangeTest)
#include "tst_ovrasoundexchange.moc"
