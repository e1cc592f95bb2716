#include "sound/soundcodecs.h"
#include "sound/soundplayer.h"
#include "testsounds.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>

using namespace Ovra;

namespace {

SoundSample beep(quint16 bits, double seconds)
{
    return sineSample(22050, 1, bits, quint32(seconds * 22050), 350, 0.3);
}

} // namespace

// Runs against the audio library's null output (ALSOFT_DRIVERS=null): sounds play,
// advance and end as they would, without a sound card.
class SoundPlayerTest : public QObject
{
    Q_OBJECT

private slots:
    void channelsAreNeverCutOff();
    void allChannelsAtOnce();
    void aFinishedSoundFreesItsChannel();
    void callersBuffers();
    void copiesShareOnePlayer();
    void music_data();
    void music();
    void musicThatCantOpen();
};

void SoundPlayerTest::channelsAreNeverCutOff()
{
    SoundPlayer none(0);
    QCOMPARE(none.play(beep(16, 0.1), false, 100), -1);
    QVERIFY(!none.isPlaying(0));

    SoundPlayer player(2);
    const SoundSample sound = beep(16, 1);
    QCOMPARE(player.play(sound, true, 50), 0);
    player.pause(0);
    QVERIFY(player.isPlaying(0)); // paused counts as playing, and keeps its channel
    QCOMPARE(player.play(sound, true, 50), 1);
    QCOMPARE(player.play(sound, true, 50), -1);
    QVERIFY(!player.isPlaying(2));
    QVERIFY(!player.isPlaying(-1));
    player.stop(0);
    QVERIFY(!player.isPlaying(0));
    QCOMPARE(player.play(sound, false, 50), 0);
    player.stop(7); // past the last: nothing
    QVERIFY(player.isPlaying(1));
}

void SoundPlayerTest::allChannelsAtOnce()
{
    SoundPlayer player(3);
    const SoundSample sound = beep(16, 1);
    QCOMPARE(player.play(sound, true, 50), 0);
    QCOMPARE(player.play(sound, true, 50), 1);
    player.stop(1);
    // pause(-1) leaves the stopped channel stopped; resume(-1) leaves a playing one be.
    player.pause(-1);
    QVERIFY(player.isPlaying(0));
    QVERIFY(!player.isPlaying(1));
    QCOMPARE(player.play(sound, true, 50), 1);
    player.resume(-1);
    QVERIFY(player.isPlaying(0));
    QVERIFY(player.isPlaying(1));
    player.setVolume(-1, 10);
    player.stop(-1);
    for (int channel = 0; channel < 3; ++channel)
        QVERIFY(!player.isPlaying(channel));
}

void SoundPlayerTest::aFinishedSoundFreesItsChannel()
{
    SoundPlayer player(1);
    QCOMPARE(player.play(beep(16, 0.05), false, 100), 0);
    QTRY_VERIFY_WITH_TIMEOUT(!player.isPlaying(0), 5000);
    QCOMPARE(player.play(beep(16, 1), true, 100), 0);
}

void SoundPlayerTest::callersBuffers()
{
    SoundPlayer player(2);
    SoundBuffer *buffer = player.createBuffer(beep(16, 1));
    QVERIFY(buffer);
    QCOMPARE(player.play(buffer, true, 40), 0);
    QCOMPARE(player.play(buffer, true, 40), 1); // one buffer, two channels
    QCOMPARE(player.play(static_cast<const SoundBuffer *>(nullptr), true, 40), -1);
    player.stop(-1);
    player.freeBuffer(buffer);
    player.freeBuffer(nullptr);
    // 8-bit sounds are converted to what the audio library takes.
    QCOMPARE(player.play(beep(8, 0.5), true, 100), 0);
    // A sound the audio library can't take: no channels.
    SoundSample empty;
    empty.bits = 16;
    QVERIFY(!player.createBuffer(empty));
    QCOMPARE(player.play(empty, false, 100), -1);
}

void SoundPlayerTest::copiesShareOnePlayer()
{
    SoundPlayer player(1);
    SoundPlayer copy = player;
    QCOMPARE(copy.play(beep(16, 1), true, 100), 0);
    QVERIFY(player.isPlaying(0));
    QCOMPARE(player.play(beep(16, 1), true, 100), -1);
}

void SoundPlayerTest::music_data()
{
    QTest::addColumn<QString>("format");
    QTest::addRow("WAV") << "WAV";
    QTest::addRow("MP3") << "MP3";
}

void SoundPlayerTest::music()
{
    QFETCH(QString, format);
    QTemporaryDir directory;
    QString fileName = QStringLiteral(TESTDATADIR "/tone-mono.mp3");
    if (format == "WAV") {
        fileName = directory.filePath(QStringLiteral("beep.wav"));
        QFile file(fileName);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(soundToWAV(beep(16, 2), &file));
    }
    SoundPlayer player(1);
    QVERIFY(!player.isMusicPlaying());
    QVERIFY(player.openMusic(fileName));
    player.setMusicVolume(30);
    player.startMusic();
    QVERIFY(player.isMusicPlaying());
    player.pauseMusic();
    QVERIFY(player.isMusicPlaying()); // paused counts as playing
    player.startMusic();
    player.stopMusic();
    QVERIFY(!player.isMusicPlaying());
}

void SoundPlayerTest::musicThatCantOpen()
{
    SoundPlayer player(1);
    QVERIFY(!player.openMusic(QStringLiteral("/nonexistent/dir/music.ogg")));
    player.startMusic();
    QVERIFY(!player.isMusicPlaying());
    // Not a sound at all.
    QTemporaryDir directory;
    const QString junk = directory.filePath(QStringLiteral("junk.mp3"));
    QFile file(junk);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(5000, 'j'));
    file.close();
    QVERIFY(!player.openMusic(junk));
}

QTEST_MAIN(SoundPlayerTest)
#include "tst_soundplayer.moc"
