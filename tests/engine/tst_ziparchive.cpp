// The sample engine's zip container with zips made to reach outside their folder: such
// entries are never listed, opened or created, and the container still tells of them.
#include "ziparchive.h"

#include "testfiles.h"
#include "zipbytes.h"

#include <QTemporaryDir>
#include <QtTest>

#include <memory>

class ZipArchiveTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void hostileEntriesAreNotTakenOut();
    void storedEntriesTellOfEveryEntry();
    void hostileNamesAreNotCreated();
    void entriesInflatingPastTheirSizeAreRefused();

private:
    // The zip of the entries, opened for reading; the caller releases it.
    ZipArchive *open(const QList<ZipEntry> &entries);
    QString prefix() const { return m_dir->filePath(QStringLiteral("test/")); }

    std::unique_ptr<QTemporaryDir> m_dir;
};

namespace {

const QList<ZipEntry> mixed{
    {"knight/knight.def", "# the knight\n"},
    {"../up.txt", "up"},
    {"/absolute.txt", "absolute"},
    {"C:/drive.txt", "drive"},
    {"knight\\back.txt", "back"},
    {"knight/link", "../../elsewhere", false, true},
    {"knight/./twice.def", "# first\n", true},
    {"knight/twice.def", "# second\n"},
    {"knight//tidy.def", "# tidy\n"},
};

QByteArray readAll(ZipArchive &zip, const QString &name)
{
    QIODevice *device = zip.openFile(name, QIODevice::ReadOnly);
    if (!device)
        return "<none>";
    const QByteArray bytes = device->readAll();
    zip.closeFile(device);
    return bytes;
}

} // namespace

void ZipArchiveTest::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
}

ZipArchive *ZipArchiveTest::open(const QList<ZipEntry> &entries)
{
    const QString file = m_dir->filePath(QStringLiteral("test.zip"));
    return writeFile(file, zipBytes(entries)) ? ZipArchive::open(file, QIODevice::ReadOnly) : nullptr;
}

void ZipArchiveTest::hostileEntriesAreNotTakenOut()
{
    ZipArchive *zip = open(mixed);
    QVERIFY(zip);
    // Cleaned names; of two entries of one name the first stands.
    QCOMPARE(zip->names(), (QStringList{"knight/knight.def", "knight/twice.def", "knight/tidy.def"}));
    const Ovra::Archive &archive = *zip;
    QCOMPARE(archive.entries(prefix(), QDir::Dirs | QDir::Files), QStringList{"knight"});
    QCOMPARE(archive.entries(prefix() + QStringLiteral("knight"), QDir::Files),
             (QStringList{"knight.def", "tidy.def", "twice.def"}));
    QCOMPARE(readAll(*zip, prefix() + QStringLiteral("knight/twice.def")), QByteArray("# first\n"));
    QCOMPARE(readAll(*zip, prefix() + QStringLiteral("knight/tidy.def")), QByteArray("# tidy\n"));
    for (const char *name : {"../up.txt", "absolute.txt", "C:/drive.txt", "knight\\back.txt", "knight/link"}) {
        QVERIFY2(!zip->fileExists(prefix() + QLatin1String(name)), name);
        QCOMPARE(readAll(*zip, prefix() + QLatin1String(name)), QByteArray("<none>"));
    }
    QVERIFY(!zip->directoryExists(prefix() + QStringLiteral("..")));
    zip->release();
}

void ZipArchiveTest::storedEntriesTellOfEveryEntry()
{
    ZipArchive *zip = open(mixed);
    QVERIFY(zip);
    const QList<Ovra::StoredEntries::Entry> stored = zip->storedEntries();
    QCOMPARE(stored.size(), mixed.size());
    for (int i = 0; i < stored.size(); ++i) {
        QCOMPARE(stored.at(i).name, QString::fromUtf8(mixed.at(i).name));
        QCOMPARE(stored.at(i).size, qint64(mixed.at(i).data.size()));
        QCOMPARE(stored.at(i).link, mixed.at(i).link);
        QVERIFY(stored.at(i).storedSize > 0);
    }
    zip->release();
}

void ZipArchiveTest::hostileNamesAreNotCreated()
{
    const QString file = m_dir->filePath(QStringLiteral("test.zip"));
    ZipArchive *zip = ZipArchive::open(file, QIODevice::WriteOnly);
    QVERIFY(zip);
    for (const char *name : {"../up.txt", "knight/../../up.txt", "C:/drive.txt", "knight\\back.txt"})
        QVERIFY2(!zip->openFile(prefix() + QLatin1String(name), QIODevice::WriteOnly), name);
    QIODevice *device = zip->openFile(prefix() + QStringLiteral("knight/knight.def"), QIODevice::WriteOnly);
    QVERIFY(device);
    device->write("# written\n");
    zip->closeFile(device);
    QVERIFY(!zip->renameFile(prefix() + QStringLiteral("knight/knight.def"), prefix() + QStringLiteral("../moved.def")));
    QVERIFY(zip->fileExists(prefix() + QStringLiteral("knight/knight.def")));
    zip->release();

    zip = ZipArchive::open(file, QIODevice::ReadOnly);
    QVERIFY(zip);
    QCOMPARE(zip->names(), QStringList{"knight/knight.def"});
    QCOMPARE(readAll(*zip, prefix() + QStringLiteral("knight/knight.def")), QByteArray("# written\n"));
    zip->release();
}

void ZipArchiveTest::entriesInflatingPastTheirSizeAreRefused()
{
    const QByteArray text(5000, 'z');
    ZipArchive *zip = open({{"honest.def", text, true}, {"lying.def", text, true, false, 100}});
    QVERIFY(zip);
    QCOMPARE(readAll(*zip, prefix() + QStringLiteral("honest.def")), text);
    QCOMPARE(readAll(*zip, prefix() + QStringLiteral("lying.def")), QByteArray("<none>"));
    zip->release();
}

QTEST_GUILESS_MAIN(ZipArchiveTest)
#include "tst_ziparchive.moc"
