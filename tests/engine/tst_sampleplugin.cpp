#include "engine/extension.h"
#include "engine/extensionmanager.h"
#include "foundation/archive.h"
#include "foundation/filesystemarchive.h"
#include "image/paletteobject.h"
#include "sound/soundsample.h"
#include "testfiles.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace Ovra;

namespace {

ArchiveExtension *zipExtension()
{
    for (Extension *extension : ExtensionManager::list(Extension::Container)) {
        if (QByteArray(extension->format()) == "ZIP")
            return static_cast<ArchiveExtension *>(extension);
    }
    return nullptr;
}

using ArchivePointer = std::unique_ptr<Archive, void (*)(Archive *)>;

ArchivePointer openZip(const QString &fileName, QIODevice::OpenMode mode)
{
    return ArchivePointer(zipExtension()->open(fileName, mode), [](Archive *archive) {
        if (archive)
            archive->release();
    });
}

void write(Archive &archive, const QString &name, const QByteArray &data)
{
    QIODevice *device = archive.openFile(name, QIODevice::WriteOnly);
    QVERIFY(device);
    device->write(data);
    archive.closeFile(device);
}

} // namespace

// The sample engine's plug-in, loaded as the program loads it.
class SamplePluginTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void zipArchiveTable();
    void zipFlushWritesWhatWasAdded();
    void zipRefusesWhatIsNoZip();
    void gimpPalettes_data();
    void gimpPalettes();
    void gimpPaletteRoundTrip();
    void soundEffects_data();
    void soundEffects();

private:
    std::unique_ptr<ExtensionManager> m_manager;
    QTemporaryDir m_dir;
};

void SamplePluginTest::initTestCase()
{
    m_manager = std::make_unique<ExtensionManager>(QStringLiteral(OVRA_PLUGIN_DIR));
    QVERIFY(zipExtension());
}

void SamplePluginTest::cleanupTestCase()
{
    m_manager.reset();
    QVERIFY(ExtensionManager::list(Extension::Container).isEmpty());
    QVERIFY(ExtensionManager::list(Extension::PaletteLoader).isEmpty());
}

void SamplePluginTest::zipArchiveTable()
{
    const QString fileName = m_dir.filePath(QStringLiteral("table.zip"));
    const QString inside = m_dir.filePath(QStringLiteral("table/"));
    {
        ArchivePointer archive = openZip(fileName, QIODevice::WriteOnly);
        QVERIFY(archive);
        QCOMPARE(archive->path(), inside);
        QVERIFY(!archive->isReadOnly());
        write(*archive, inside + QStringLiteral("actors/hero.def"), "[Stats]\n");
        write(*archive, inside + QStringLiteral("actors/hero.spr"), QByteArray("\x01\x02", 2));
        write(*archive, inside + QStringLiteral("readme.txt"), "read me");
        // A write given back by discardFile leaves nothing.
        QIODevice *dropped = archive->openFile(inside + QStringLiteral("dropped.txt"), QIODevice::WriteOnly);
        dropped->write("gone");
        archive->discardFile(dropped);
        QVERIFY(archive->renameFile(inside + QStringLiteral("readme.txt"), inside + QStringLiteral("notes.txt")));
    }
    ArchivePointer archive = openZip(fileName, QIODevice::ReadOnly);
    QVERIFY(archive);
    QVERIFY(archive->isReadOnly());
    QVERIFY(!archive->isWritable(inside + QStringLiteral("notes.txt")));
    QCOMPARE(archive->entries(inside, {}, QDir::Files, QDir::Name), QStringList({"notes.txt"}));
    QCOMPARE(archive->entries(inside, {}, QDir::Dirs, QDir::Name), QStringList({"actors"}));
    QCOMPARE(archive->entries(inside + QStringLiteral("actors"), {QStringLiteral("*.def")}, QDir::Files, QDir::Name),
             QStringList({"hero.def"}));
    QVERIFY(archive->fileExists(inside + QStringLiteral("actors/hero.spr")));
    QVERIFY(!archive->fileExists(inside + QStringLiteral("dropped.txt")));
    QVERIFY(archive->directoryExists(inside + QStringLiteral("actors")));
    QVERIFY(!archive->directoryExists(inside + QStringLiteral("props")));
    QIODevice *device = archive->openFile(inside + QStringLiteral("notes.txt"), QIODevice::ReadOnly);
    QVERIFY(device);
    QCOMPARE(device->readAll(), QByteArray("read me"));
    archive->closeFile(device);
    QVERIFY(!archive->openFile(inside + QStringLiteral("missing.txt"), QIODevice::ReadOnly));
    QVERIFY(!archive->openFile(inside + QStringLiteral("new.txt"), QIODevice::WriteOnly));
    QVERIFY(!archive->removeFile(inside + QStringLiteral("notes.txt")));
}

void SamplePluginTest::zipFlushWritesWhatWasAdded()
{
    const QString fileName = m_dir.filePath(QStringLiteral("flushed.zip"));
    ArchivePointer archive = openZip(fileName, QIODevice::WriteOnly);
    write(*archive, m_dir.filePath(QStringLiteral("flushed/a.txt")), "first");
    archive->flush();
    // Another reader sees it before the archive ends.
    {
        ArchivePointer reader = openZip(fileName, QIODevice::ReadOnly);
        QVERIFY(reader);
        QVERIFY(reader->fileExists(m_dir.filePath(QStringLiteral("flushed/a.txt"))));
    }
    write(*archive, m_dir.filePath(QStringLiteral("flushed/b.txt")), "second");
    QVERIFY(archive->removeFile(m_dir.filePath(QStringLiteral("flushed/a.txt"))));
    archive.reset();
    ArchivePointer reader = openZip(fileName, QIODevice::ReadOnly);
    QCOMPARE(reader->entries(m_dir.filePath(QStringLiteral("flushed")), {}, QDir::Files, QDir::Name),
             QStringList({"b.txt"}));
}

void SamplePluginTest::zipRefusesWhatIsNoZip()
{
    const QString junk = m_dir.filePath(QStringLiteral("junk.zip"));
    QVERIFY(writeFile(junk, QByteArray(300, 'j')));
    QVERIFY(!openZip(junk, QIODevice::ReadOnly));
    QVERIFY(!openZip(m_dir.filePath(QStringLiteral("missing.zip")), QIODevice::ReadOnly));
    QCOMPARE(readFile(junk), QByteArray(300, 'j')); // untouched
}

void SamplePluginTest::gimpPalettes_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<bool>("read");
    // Written as the program writes them: a header, a name, columns, a comment, colours
    // with and without names, spaces or tabs between the numbers.
    QTest::addRow("as the program writes it")
        << QByteArray("GIMP Palette\nName: Dusk\nColumns: 4\n#\n  0   0   0\tBlack\n255 128  64\tOrange\n"
                      "10\t20\t30\n") << true;
    QTest::addRow("line ends of another system") << QByteArray("GIMP Palette\r\n1 2 3\r\n4 5 6\r\n") << true;
    QTest::addRow("another kind of file") << QByteArray("JASC-PAL\n0100\n2\n1 2 3\n") << false;
    QTest::addRow("a number past 255") << QByteArray("GIMP Palette\n1 2 300\n") << false;
    QTest::addRow("a line that is no colour") << QByteArray("GIMP Palette\n1 2 3\nwhatever\n") << false;
    QTest::addRow("no colours") << QByteArray("GIMP Palette\nName: Empty\n") << false;
}

void SamplePluginTest::gimpPalettes()
{
    QFETCH(QByteArray, file);
    QFETCH(bool, read);
    RGBA table[256];
    for (RGBA &entry : table)
        entry = RGBA(9, 9, 9, 9);
    PaletteObject palette(&table);
    QBuffer buffer(&file);
    buffer.open(QIODevice::ReadOnly);
    QCOMPARE(palette.fromFile(&buffer, "GPL"), read);
    if (!read) {
        QCOMPARE(table[1], RGBA(9, 9, 9, 9)); // untouched
        return;
    }
    QCOMPARE(table[0].alpha, quint8(0)); // index 0 is transparent after every read
    if (file.contains("Orange")) {
        QCOMPARE(table[1], RGBA(255, 128, 64, 255));
        QCOMPARE(table[2], RGBA(10, 20, 30, 255));
    } else {
        QCOMPARE(table[1], RGBA(4, 5, 6, 255));
    }
}

void SamplePluginTest::gimpPaletteRoundTrip()
{
    RGBA table[256];
    for (int i = 0; i < 256; ++i)
        table[i] = RGBA(quint8(i), quint8(255 - i), quint8(i * 7), 255);
    PaletteObject palette(&table);
    QByteArray bytes;
    QBuffer out(&bytes);
    out.open(QIODevice::WriteOnly);
    QVERIFY(palette.toFile(&out, "GPL"));
    QVERIFY(bytes.startsWith("GIMP Palette\n"));
    QCOMPARE(bytes.count('\n'), 4 + 256);
    RGBA back[256];
    PaletteObject reader(&back);
    QBuffer in(&bytes);
    in.open(QIODevice::ReadOnly);
    QVERIFY(reader.fromFile(&in, "GPL"));
    for (int i = 1; i < 256; ++i)
        QCOMPARE(back[i], table[i]);
}

void SamplePluginTest::soundEffects_data()
{
    QTest::addColumn<QByteArray>("effect");
    QTest::addColumn<int>("channels");
    QTest::addColumn<QVector<qint16>>("before");
    QTest::addColumn<QVector<qint16>>("after");
    QTest::addColumn<bool>("applied");
    QTest::addRow("normalize") << QByteArray("NORMALIZE") << 1 << QVector<qint16>{1024, -2048, 512}
                               << QVector<qint16>{16384, -32768, 8192} << true;
    QTest::addRow("normalize silence") << QByteArray("NORMALIZE") << 2 << QVector<qint16>{0, 0, 0, 0}
                                       << QVector<qint16>{0, 0, 0, 0} << true;
    QTest::addRow("reverse keeps frames together") << QByteArray("REVERSE") << 2 << QVector<qint16>{1, 2, 3, 4, 5, 6}
                                                   << QVector<qint16>{5, 6, 3, 4, 1, 2} << true;
    // At 8 frames a second the echo comes two frames later, at half the strength.
    QTest::addRow("echo upon echo") << QByteArray("ECHO") << 1 << QVector<qint16>{16384, 0, 0, 0, 0}
                                    << QVector<qint16>{16384, 0, 8192, 0, 4096} << true;
    QTest::addRow("echo held to full scale") << QByteArray("ECHO") << 1 << QVector<qint16>{29491, 0, 29491}
                                             << QVector<qint16>{29491, 0, 32767} << true;
    QTest::addRow("half a frame") << QByteArray("REVERSE") << 2 << QVector<qint16>{1, 2, 3}
                                  << QVector<qint16>{1, 2, 3} << false;
}

void SamplePluginTest::soundEffects()
{
    QFETCH(QByteArray, effect);
    QFETCH(int, channels);
    QFETCH(QVector<qint16>, before);
    QFETCH(QVector<qint16>, after);
    QFETCH(bool, applied);
    SoundEffectExtension *found = nullptr;
    for (Extension *extension : ExtensionManager::list(Extension::SoundEffect)) {
        if (effect == extension->format())
            found = static_cast<SoundEffectExtension *>(extension);
    }
    QVERIFY(found);
    QByteArray frames(reinterpret_cast<const char *>(before.constData()), before.size() * 2);
    const SampleInfo info{quint16(channels), 16, 8, quint32(before.size() / channels)};
    QCOMPARE(found->apply(info, frames), applied);
    QCOMPARE(QVector<qint16>(reinterpret_cast<const qint16 *>(frames.constData()),
                             reinterpret_cast<const qint16 *>(frames.constData()) + frames.size() / 2),
             after);
    // Depths the library doesn't keep are refused.
    QByteArray odd(6, '\0');
    QVERIFY(!found->apply(SampleInfo{1, 12, 8, 4}, odd));
}

QTEST_MAIN(SamplePluginTest)
#include "tst_sampleplugin.moc"
