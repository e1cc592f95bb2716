#include "foundation/filesystemarchive.h"
#include "held.h"
#include "sound/soundcodecs.h"
#include "soundbank.h"
#include "testsounds.h"

#include <QAbstractItemModelTester>
#include <QBuffer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>

using namespace Ovra;

namespace {

// Pitches are given as steps of phase per value, as the tests were written.
SoundSample tone(quint16 channels, quint32 frames, double pitch)
{
    return sineSample(22050, channels, 16, frames, pitch * 22050 / (2 * M_PI), 0.3);
}

QByteArray le32(quint32 value)
{
    return QByteArray(reinterpret_cast<const char *>(&value), 4);
}

// A bank written by hand: the header, then entries of (group, number, codec, bytes).
QByteArray bank(quint16 version, const QList<std::tuple<quint32, quint32, quint8, QByteArray>> &entries,
                qint64 count = -1)
{
    QByteArray bytes("OVSB");
    bytes += QByteArray(reinterpret_cast<const char *>(&version), 2) + QByteArray(2, '\0');
    bytes += le32(count < 0 ? quint32(entries.size()) : quint32(count));
    for (const auto &entry : entries) {
        bytes += le32(std::get<0>(entry)) + le32(std::get<1>(entry)) + char(std::get<2>(entry)) + QByteArray(3, '\0');
        bytes += le32(quint32(std::get<3>(entry).size())) + std::get<3>(entry);
    }
    return bytes;
}

QByteArray encoded(bool (*write)(const SoundSample &, QIODevice *), const SoundSample &sample)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    write(sample, &buffer);
    return bytes;
}

} // namespace

class SoundBankTest : public QObject
{
    Q_OBJECT

private slots:
    void layout();
    void roundTripIsByteIdentical();
    void encodedSoundsStayAsTheyCame();
    void eightBitFlacKeepsItsValues();
    void editing();
    void badBanks_data();
    void badBanks();
    void files();
};

void SoundBankTest::layout()
{
    Held<SoundBank> sounds(new SoundBank);
    const SoundSample sample = tone(1, 10, 0.1);
    QVERIFY(sounds->add(QPoint(3, 7), sample));
    const QByteArray wav = encoded(soundToWAV, sample);
    QCOMPARE(sounds->toBytes(), bank(1, {{3, 7, 1, wav}}));
    QCOMPARE(sounds->toBytes().left(12).toHex(), QByteArray("4f56534201000000" "01000000"));
}

void SoundBankTest::roundTripIsByteIdentical()
{
    Held<SoundBank> sounds(new SoundBank);
    sounds->add(QPoint(0, 0), tone(1, 500, 0.05));
    sounds->add(QPoint(0, 1), tone(2, 300, 0.2));
    sounds->add(QPoint(5, 2), tone(1, 1, 0.3));
    const QByteArray bytes = sounds->toBytes();
    Held<SoundBank> back(new SoundBank);
    QVERIFY(back->fromBytes(bytes));
    QCOMPARE(back->count(), 3u);
    QCOMPARE(back->toBytes(), bytes);
    for (uint i = 0; i < 3; ++i) {
        QCOMPARE(back->at(i)->identifier(), sounds->at(i)->identifier());
        QCOMPARE(back->at(i)->sample().data, sounds->at(i)->sample().data);
        QCOMPARE(back->at(i)->info().samples, sounds->at(i)->sample().samples);
    }
    QCOMPARE(back->at(1)->info().channels, quint16(2));
    QVERIFY(qAbs(back->at(0)->duration() - 500.0 / 22050) < 1e-9);
    QVERIFY(!back->isModified());
}

void SoundBankTest::encodedSoundsStayAsTheyCame()
{
    const QByteArray ogg = encoded(soundToOGG, tone(1, 65536, 0.06));
    const SoundSample deep = [] {
        SoundSample s;
        s.channels = 1;
        s.bits = 24;
        s.frequency = 8000;
        s.samples = 100;
        s.data = QByteArray(300, '\x11');
        return s;
    }();
    const QByteArray flac = encoded(soundToFLAC, deep);
    const QByteArray bytes = bank(1, {{1, 1, 2, ogg}, {1, 2, 3, flac}});
    Held<SoundBank> sounds(new SoundBank);
    QVERIFY(sounds->fromBytes(bytes));
    auto *vorbis = static_cast<BankSound *>(sounds->at(0));
    QCOMPARE(vorbis->codec(), BankSound::Ogg);
    QCOMPARE(vorbis->sample().samples, 65536u);
    QCOMPARE(vorbis->info().frequency, 22050u);
    QCOMPARE(sounds->at(1)->sample().data, deep.data);
    QCOMPARE(sounds->toBytes(), bytes);
    // A changed sound is kept as WAV.
    QVERIFY(vorbis->setSample(tone(1, 50, 0.1)));
    QCOMPARE(vorbis->codec(), BankSound::Wav);
    QCOMPARE(vorbis->sample().samples, 50u);
}

void SoundBankTest::eightBitFlacKeepsItsValues()
{
    // Unsigned with 128 as silence, the extremes included, as the bank hands sounds out.
    SoundSample sample;
    sample.channels = 1;
    sample.bits = 8;
    sample.frequency = 8000;
    sample.data = QByteArray::fromHex("80ff00017f8081fe40c0");
    sample.samples = quint32(sample.data.size());
    QByteArray flac;
    QBuffer buffer(&flac);
    QVERIFY(saveSound(&buffer, "FLAC", sample, CodecRules::Complete));
    Held<SoundBank> sounds(new SoundBank);
    Sound *sound = sounds->addFile(QPoint(2, 1), BankSound::Flac, flac);
    QVERIFY(sound);
    QCOMPARE(sound->sample().data.toHex(), sample.data.toHex());
    QCOMPARE(sound->info().bits, quint16(8));
    // Edited (the first value made quieter) and kept, as WAV, with every other value as it was.
    SoundSample edited = sound->sample();
    edited.data[0] = char(0x90);
    QVERIFY(sound->setSample(edited));
    QCOMPARE(static_cast<BankSound *>(sound)->codec(), BankSound::Wav);
    Held<SoundBank> reloaded(new SoundBank);
    QVERIFY(reloaded->fromBytes(sounds->toBytes()));
    QCOMPARE(reloaded->at(0)->sample().data.toHex(), QByteArray("90ff00017f8081fe40c0"));
    QCOMPARE(reloaded->at(0)->info().samples, 10u);
}

void SoundBankTest::editing()
{
    Held<SoundBank> sounds(new SoundBank);
    QAbstractItemModelTester tester(sounds.get(), QAbstractItemModelTester::FailureReportingMode::QtTest);
    QSignalSpy changed(sounds.get(), &OrganizableObject::changed);
    QVERIFY(!sounds->add(QPoint(1, 1), SoundSample())); // nothing to keep
    QCOMPARE(changed.count(), 0);
    Sound *first = sounds->add(QPoint(1, 1), tone(1, 40, 0.1));
    QVERIFY(sounds->isModified());
    QCOMPARE(changed.count(), 1);
    QCOMPARE(changed.last().first().toBool(), true);
    Sound *copy = first->duplicate();
    QCOMPARE(copy->index(), 1u);
    QCOMPARE(copy->sample().data, first->sample().data);
    QCOMPARE(copy->propertyNames(), QStringList({"Identifier"}));
    copy->setProperty(QStringLiteral("Identifier"), QPoint(1, 2));
    QCOMPARE(copy->property(QStringLiteral("Identifier")), QVariant(QPoint(1, 2)));
    QCOMPARE(sounds->find(0, QPoint(1, 2)), 1);
    QCOMPARE(sounds->find(2, QPoint(1, 2)), -1);
    QCOMPARE(sounds->data(sounds->index(1), Qt::DisplayRole).toString(), QStringLiteral("1, 2"));
    Sound *inserted = sounds->insert(0, QPoint(0, 9), tone(1, 10, 0.2));
    QCOMPARE(inserted->index(), 0u);
    QCOMPARE(first->index(), 1u);
    sounds->remove(9); // nothing there
    QCOMPARE(sounds->count(), 3u);
    sounds->setSelected(5);
    QCOMPARE(sounds->selected(), 2u);

    // Moved, then sorted by group and number.
    sounds->add(QPoint(0, 5), tone(1, 5, 0.1));
    sounds->move(0, 3);
    QCOMPARE(sounds->at(3)->identifier(), QVariant(QPoint(0, 9)));
    sounds->autoOrganize();
    QList<QPoint> order;
    for (uint i = 0; i < sounds->count(); ++i)
        order << sounds->at(i)->identifier().toPoint();
    QCOMPARE(order, QList<QPoint>({QPoint(0, 5), QPoint(0, 9), QPoint(1, 1), QPoint(1, 2)}));
    sounds->clear();
    QVERIFY(sounds->isEmpty());
}

void SoundBankTest::badBanks_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("message");
    const QByteArray wav = encoded(soundToWAV, tone(1, 20, 0.1));
    const QByteArray good = bank(1, {{1, 1, 1, wav}, {1, 2, 1, wav}});
    QTest::addRow("empty") << QByteArray() << "The sound bank is cut short.";
    QTest::addRow("wrong magic") << QByteArray("RIFF") + good.mid(4) << "This is not a sound bank.";
    QTest::addRow("unknown version") << bank(2, {}) << "Sound bank version 2 is unknown.";
    QTest::addRow("count beyond the bytes") << bank(1, {{1, 1, 1, wav}}, 100000000) << "The sound bank is cut short.";
    QTest::addRow("cut inside a sound") << good.left(good.size() - 5) << "The sound bank is cut short.";
    QTest::addRow("cut inside an entry header") << good.left(12 + 16 + wav.size() + 7) << "The sound bank is cut short.";
    QTest::addRow("unknown codec") << bank(1, {{1, 1, 9, wav}}) << "Sound 0 has an unknown codec (9).";
    QTest::addRow("bytes after the end") << good + "tail" << "The sound bank has bytes after its last sound.";
    QByteArray headerReserved = good;
    headerReserved[6] = 1;
    QTest::addRow("reserved header bytes set") << headerReserved << "The sound bank has reserved bytes that aren't zero.";
    // Found by the fuzzer: a reserved byte of an entry, which a rewrite would have lost.
    QTest::addRow("reserved entry bytes set")
        << QByteArray::fromBase64("T1ZTQgEAAAACAAAAAQAAAAIA4AMBAAAAAwAAAAAA4AAAAGFiYwEAAykAAAAAAAA=")
        << "The sound bank has reserved bytes that aren't zero.";
}

void SoundBankTest::badBanks()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, message);
    Held<SoundBank> sounds(new SoundBank);
    sounds->add(QPoint(4, 4), tone(1, 10, 0.1));
    const QByteArray before = sounds->toBytes();
    QVERIFY(!sounds->fromBytes(bytes));
    QCOMPARE(sounds->toBytes(), before); // the bank as it was
    QCOMPARE(sounds->fileMessages()->count(Message::Error), 1u);
    QCOMPARE(sounds->fileMessages()->at(0, Message::Error).text, message);
}

void SoundBankTest::files()
{
    QTemporaryDir directory;
    const QString name = directory.filePath(QStringLiteral("sounds/voices.sbk"));
    Held<SoundBank> sounds(new SoundBank);
    sounds->add(QPoint(0, 0), tone(1, 100, 0.1));
    QVERIFY(sounds->toFile(FileSystemArchive::instance(), name, 0, nullptr));
    QVERIFY(!sounds->isModified());
    QCOMPARE(sounds->fileName(), name);
    Held<SoundBank> back(new SoundBank);
    QVERIFY(back->fromFile(FileSystemArchive::instance(), name, 0, nullptr));
    QCOMPARE(back->toBytes(), sounds->toBytes());
    QVERIFY(!back->fromFile(FileSystemArchive::instance(), directory.filePath(QStringLiteral("none.sbk")), 0, nullptr));
    QCOMPARE(back->count(), 1u);
}

QTEST_MAIN(SoundBankTest)
#include "tst_soundbank.moc"
