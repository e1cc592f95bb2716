#include "foundation/filesystemarchive.h"

#include "memoryarchive.h"
#include "testfiles.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace Ovra;

class ArchiveTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void referenceCounting();
    void fileSystemNames();
    void entriesSkipLinksAndDots();
    void openCreatesDirectoriesOnlyForWriting();
    void newFileIsWrittenDirectly();
    void copyFile_data();
    void copyFile();
    void copyFileRefusals();
    void fixFileCase_data();
    void fixFileCase();
    void absolutePathToRelative_data();
    void absolutePathToRelative();
    void entryNameProblem_data();
    void entryNameProblem();
    void isInsideDirectory_data();
    void isInsideDirectory();

private:
    QTemporaryDir m_dir;
    QString m_root;
};

void ArchiveTest::init()
{
    QVERIFY(m_dir.isValid());
    m_root = m_dir.path() + QLatin1Char('/') + QString::fromLatin1(QTest::currentTestFunction())
             + QLatin1Char('/');
    QDir(m_root).removeRecursively();
    QVERIFY(QDir().mkpath(m_root));
}

void ArchiveTest::referenceCounting()
{
    MemoryArchive archive;
    archive.addRef();
    archive.release();
    QCOMPARE(archive.freed, 0);
    MemoryArchive copy(archive); // copies the count as it stands
    QCOMPARE(copy.refCount(), 1u);
    archive.release();
    QCOMPARE(archive.freed, 1);

    // The file system outlives its holders: at a count of zero it still works.
    FileSystemArchive &disk = FileSystemArchive::instance();
    const uint count = disk.refCount();
    for (uint i = 0; i < count; ++i)
        disk.release();
    QVERIFY(writeFile(m_root + "a.txt", "abc"));
    QVERIFY(FileSystemArchive::instance().fileExists(m_root + "a.txt"));
    for (uint i = 0; i < count; ++i)
        disk.addRef();
}

void ArchiveTest::fileSystemNames()
{
    FileSystemArchive &archive = FileSystemArchive::instance();
    // The directory of a name, and the full name: the crossed meanings callers rely on.
    QCOMPARE(archive.absoluteFilePath(m_root + "sub/x.def"), m_root + "sub");
    QCOMPARE(archive.absoluteFileName(m_root + "sub/../x.def"), m_root + "x.def");
    QCOMPARE(archive.absoluteFilePath(QString()), QString());
    QCOMPARE(archive.absoluteFileName(QString()), QString());
    // A name that isn't there yet can be written.
    QVERIFY(archive.isWritable(m_root + "does-not-exist"));
}

void ArchiveTest::entriesSkipLinksAndDots()
{
    QVERIFY(writeFile(m_root + "b.txt", "b"));
    QVERIFY(writeFile(m_root + "a.txt", "a"));
    QVERIFY(QDir().mkpath(m_root + "dir"));
    QVERIFY(QFile::link(m_root + "a.txt", m_root + "link.txt"));
    FileSystemArchive &archive = FileSystemArchive::instance();
    QCOMPARE(archive.entries(m_root, QDir::Files, QDir::Name), QStringList({"a.txt", "b.txt"}));
    QCOMPARE(archive.entries(m_root, QDir::Dirs, QDir::Name), QStringList({"dir"}));
    QCOMPARE(archive.entries(m_root, {QStringLiteral("b*")}, QDir::Files, QDir::Name),
             QStringList({"b.txt"}));
}

void ArchiveTest::openCreatesDirectoriesOnlyForWriting()
{
    FileSystemArchive &archive = FileSystemArchive::instance();
    QVERIFY(!archive.openFile(m_root + "missing/none.def", QIODevice::ReadOnly));
    QVERIFY(!QFileInfo::exists(m_root + "missing"));
    const QString name = m_root + "x/y/z/new.def";
    QIODevice *device = archive.openFile(name, QIODevice::WriteOnly);
    QVERIFY(device);
    device->write("hello");
    archive.closeFile(device);
    QCOMPARE(readFile(name, "<missing>"), QByteArray("hello"));
}

void ArchiveTest::newFileIsWrittenDirectly()
{
    // No temporary for a new name: the data lands under the target name while writing.
    FileSystemArchive &archive = FileSystemArchive::instance();
    const QString name = m_root + "direct.def";
    QIODevice *device = archive.openFile(name, QIODevice::WriteOnly);
    QVERIFY(device);
    device->write("partial");
    static_cast<QFile *>(device)->flush();
    QCOMPARE(readFile(name, "<missing>"), QByteArray("partial"));
    QCOMPARE(QDir(m_root).entryList(QDir::Files), QStringList({"direct.def"}));
    archive.closeFile(device);
}

void ArchiveTest::copyFile_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("binary") << QByteArray("\x00\xFF\x10\r\n\x1A", 6);
    QByteArray large(0x20000 * 3 + 17, Qt::Uninitialized);
    for (int i = 0; i < large.size(); ++i)
        large[i] = char((i * 31) ^ (i >> 9));
    QTest::newRow("across 128 KiB blocks") << large;
}

void ArchiveTest::copyFile()
{
    QFETCH(QByteArray, content);
    MemoryArchive memory;
    memory.files.insert("in.bin", content);
    FileSystemArchive &disk = FileSystemArchive::instance();
    QVERIFY(Ovra::copyFile(memory, "in.bin", disk, m_root + "out/out.bin"));
    QCOMPARE(readFile(m_root + "out/out.bin", "<missing>"), content);
    QVERIFY(Ovra::copyFile(disk, m_root + "out/out.bin", disk, m_root + "again.bin"));
    QVERIFY(Ovra::copyFile(disk, m_root + "again.bin", memory, "back.bin"));
    QCOMPARE(memory.files.value("back.bin"), content);
}

void ArchiveTest::copyFileRefusals()
{
    // Equal names are refused whichever the archives.
    MemoryArchive a, b;
    a.files.insert("x", "data");
    QVERIFY(!Ovra::copyFile(a, "x", b, "x"));
    QVERIFY(!b.files.contains("x"));
    QVERIFY(!Ovra::copyFile(a, "x", a, "x"));

    FileSystemArchive &disk = FileSystemArchive::instance();
    QVERIFY(writeFile(m_root + "target.bin", "precious"));
    // A missing source must not replace the target with an empty file.
    QVERIFY(!Ovra::copyFile(disk, m_root + "missing.bin", disk, m_root + "target.bin"));
    QCOMPARE(readFile(m_root + "target.bin", "<missing>"), QByteArray("precious"));
    QCOMPARE(QDir(m_root).entryList(QDir::Files), QStringList({"target.bin"}));
    // Nor must a refused target lose the source.
    MemoryArchive readOnly;
    readOnly.readOnly = true;
    QVERIFY(!Ovra::copyFile(disk, m_root + "target.bin", readOnly, "t"));
    QCOMPARE(readFile(m_root + "target.bin", "<missing>"), QByteArray("precious"));
}

void ArchiveTest::fixFileCase_data()
{
    QTest::addColumn<QString>("relative");
    QTest::addColumn<QString>("expected");
    QTest::newRow("already right") << "dir/file.txt" << "dir/file.txt";
    QTest::newRow("wrong case everywhere") << "DIR/File.TXT" << "dir/file.txt";
    QTest::newRow("deep") << "Dir/SUB/Deep.Bin" << "dir/Sub/deep.bin";
    QTest::newRow("missing directory kept, search goes on below") << "NoDir/File.TXT"
                                                                    << "NoDir/File.TXT";
    QTest::newRow("missing file kept") << "DIR/none.txt" << "dir/none.txt";
    QTest::newRow("a directory is not taken for the file") << "DIR/SUB" << "dir/SUB";
    QTest::newRow("top level") << "TOP.DEF" << "top.def";
}

void ArchiveTest::fixFileCase()
{
    QFETCH(QString, relative);
    QFETCH(QString, expected);
    QVERIFY(writeFile(m_root + "dir/file.txt", "f"));
    QVERIFY(writeFile(m_root + "dir/Sub/deep.bin", "d"));
    QVERIFY(writeFile(m_root + "top.def", "t"));
    QCOMPARE(Ovra::fixFileCase(m_root, FileSystemArchive::instance(), relative),
             QFileInfo(m_root + expected).absoluteFilePath());
}

void ArchiveTest::absolutePathToRelative_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("base");
    QTest::addColumn<QString>("expected");
    QTest::newRow("sibling") << "/a/b/c.txt" << "/a/d" << "../b/c.txt";
    QTest::newRow("inside") << "/a/b/c.txt" << "/a/b" << "c.txt";
    QTest::newRow("inside, base with slash") << "/a/b/c.txt" << "/a/b/" << "c.txt";
    QTest::newRow("back slashes") << "\\a\\b\\c.txt" << "\\a\\d" << "../b/c.txt";
    QTest::newRow("two levels up") << "/a/x.txt" << "/a/b/c" << "../../x.txt";
    QTest::newRow("case-sensitive") << "/A/b/c.txt" << "/a/b" << "../../A/b/c.txt";
    QTest::newRow("deeper") << "/r/s/t/u.def" << "/r" << "s/t/u.def";
    // Without a common root the first character goes: long-standing behaviour.
    QTest::newRow("no common root") << "c:/x/y.txt" << "d:/z" << "../../:/x/y.txt";
    QTest::newRow("short path without common root") << "x" << "y" << "x";
}

void ArchiveTest::absolutePathToRelative()
{
    QFETCH(QString, path);
    QFETCH(QString, base);
    QFETCH(QString, expected);
    QCOMPARE(Ovra::absolutePathToRelative(path, base), expected);
}

void ArchiveTest::entryNameProblem_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("problem");
    QTest::newRow("plain") << "knight/knight.def" << "";
    QTest::newRow("dot parts and doubled slashes") << "knight/.//knight.def" << "";
    QTest::newRow("climbs and comes back") << "knight/../knight.def" << "";
    QTest::newRow("a folder") << "knight/" << "";
    QTest::newRow("a name with dots") << "..knight...def" << "";
    QTest::newRow("climbs out") << "../escaped.txt" << "climbs out of its folder with '..'";
    QTest::newRow("climbs out from below") << "knight/../../escaped.txt" << "climbs out of its folder with '..'";
    QTest::newRow("only climbs") << ".." << "climbs out of its folder with '..'";
    QTest::newRow("absolute") << "/etc/passwd" << "is an absolute path";
    QTest::newRow("drive letter") << "C:/escaped.txt" << "holds a drive letter";
    QTest::newRow("drive letter, no slash") << "c:escaped.txt" << "holds a drive letter";
    QTest::newRow("drive letter after a dot") << "./D:/escaped.txt" << "holds a drive letter";
    QTest::newRow("absolute after cleaning") << ".//etc/passwd" << "";
    QTest::newRow("doubled slash in front") << "//server/share" << "is an absolute path";
    QTest::newRow("backslash") << "knight\\knight.def" << "holds a backslash";
    QTest::newRow("empty") << "" << "names no file";
    QTest::newRow("only a dot") << "./" << "names no file";
}

void ArchiveTest::entryNameProblem()
{
    QFETCH(QString, name);
    QFETCH(QString, problem);
    QCOMPARE(Ovra::entryNameProblem(name), problem);
}

void ArchiveTest::isInsideDirectory_data()
{
    QTest::addColumn<QString>("path"); // relative to the test's folder, or absolute
    QTest::addColumn<bool>("inside");  // of the folder "root"
    QTest::newRow("the root itself") << "root" << true;
    QTest::newRow("a file") << "root/a.def" << true;
    QTest::newRow("not there yet") << "root/new/deeper/b.def" << true;
    QTest::newRow("climbs out") << "root/../outside.def" << false;
    QTest::newRow("climbs out and back") << "root/../root/a.def" << true;
    QTest::newRow("a sibling with the root's name in front") << "rootless/a.def" << false;
    QTest::newRow("a link to a file outside") << "root/link-out.def" << false;
    QTest::newRow("below a link to a folder outside") << "root/folder-out/c.def" << false;
    QTest::newRow("a link that stays inside") << "root/link-in.def" << true;
    QTest::newRow("a link that leads nowhere") << "root/dangling.def" << false;
    QTest::newRow("empty") << "" << false;
}

void ArchiveTest::isInsideDirectory()
{
    QFETCH(QString, path);
    QFETCH(bool, inside);
    QVERIFY(writeFile(m_root + QStringLiteral("root/a.def")));
    QVERIFY(writeFile(m_root + QStringLiteral("outside.def")));
    QVERIFY(writeFile(m_root + QStringLiteral("rootless/a.def")));
    QVERIFY(QFile::link(m_root + QStringLiteral("outside.def"), m_root + QStringLiteral("root/link-out.def")));
    QVERIFY(QFile::link(m_root + QStringLiteral("rootless"), m_root + QStringLiteral("root/folder-out")));
    QVERIFY(QFile::link(m_root + QStringLiteral("root/a.def"), m_root + QStringLiteral("root/link-in.def")));
    QVERIFY(QFile::link(m_root + QStringLiteral("nothing"), m_root + QStringLiteral("root/dangling.def")));
    if (!path.isEmpty() && !QFileInfo(path).isAbsolute())
        path.prepend(m_root);
    QCOMPARE(Ovra::isInsideDirectory(path, m_root + QStringLiteral("root")), inside);
    // The folder may be named through a link of its own, or with a trailing slash.
    QVERIFY(QFile::link(m_root + QStringLiteral("root"), m_root + QStringLiteral("alias")));
    QCOMPARE(Ovra::isInsideDirectory(path, m_root + QStringLiteral("alias/")), inside);
}

QTEST_GUILESS_MAIN(ArchiveTest)
#include "tst_archive.moc"
