// Works and backups made by strangers to reach outside the work: run through the built
// tool and through the library, each case checked for what the tool says and for every
// byte around the work staying as it was.
//
// The test's folder holds nest/deeper/work (the example work), nest/sibling and
// nest/outside.def beside it: an entry climbing two folders up from the work lands in
// nest/, still inside the temporary folder, where the snapshot sees it.
#include "ovratool.h"
#include "zipbytes.h"

#include "engine/projectlocator.h"
#include "project/project.h"
#include "project/projectfile.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStorageInfo>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

const char workPath[] = "nest/deeper/work";
const QByteArray restoredBytes = "# restored from the backup\n";
// A definition file that gives an error wherever it is read.
const QByteArray outsideBytes = "# Not of this work.\n@version 1\n%%% read from outside\n";

// Every name below `root` with what it is: a link's target, a folder, or a file's bytes
// (and so its size). Names starting with one of `skipped` are left out.
QMap<QString, QByteArray> tree(const QString &root, const QStringList &skipped = {})
{
    QMap<QString, QByteArray> entries;
    QDirIterator it(root, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString name = QDir(root).relativeFilePath(it.next());
        if (std::any_of(skipped.begin(), skipped.end(), [&name](const QString &prefix) { return name.startsWith(prefix); }))
            continue;
        const QFileInfo info = it.fileInfo();
        if (info.isSymLink())
            entries.insert(name, "link to " + QFile::encodeName(info.symLinkTarget()));
        else if (info.isDir())
            entries.insert(name, "folder");
        else
            entries.insert(name, QByteArray::number(info.size()) + " bytes: " + readFile(info.filePath()));
    }
    return entries;
}

} // namespace

class OvraHostileTest : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void refusedZipBackups_data();
    void refusedZipBackups();
    void namesAreCleanedBeforeTheyAreJudged();
    void folderBackups_data();
    void folderBackups();
    void listedFilesOutsideTheWork_data();
    void listedFilesOutsideTheWork();
    void linkedProjectElsewhereIsNotFound();
    void backupFolderLinkedElsewhere();
    void scriptsDoNotRunWhenAWorkOpens();

private:
    ToolRun ovra(const QStringList &arguments) { return runOvra(m_dir->path(), arguments); }
    QString path(const QString &relative) const { return m_dir->filePath(relative); }
    QString work(const QString &relative = QString()) const
    {
        return path(QLatin1String(workPath) + (relative.isEmpty() ? QString() : QLatin1Char('/') + relative));
    }
    // What lies around the work, and the work itself.
    QMap<QString, QByteArray> around() const
    {
        return tree(m_dir->path(), {QLatin1String(workPath) + QLatin1Char('/'), QStringLiteral("config/")});
    }
    QMap<QString, QByteArray> inside() const { return tree(work()); }
    QList<ZipEntry> hostileEntries(const QString &kind) const;
    bool addListedLine(const QString &line);

    std::unique_ptr<QTemporaryDir> m_dir;
};

void OvraHostileTest::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    QVERIFY(copyWork(work()));
    QVERIFY(writeFile(path(QStringLiteral("nest/sibling/keep.txt")), "the sibling's own\n"));
    QVERIFY(writeFile(path(QStringLiteral("nest/sibling/other.def")), outsideBytes));
    QVERIFY(writeFile(path(QStringLiteral("nest/outside.def")), outsideBytes));
}

// A zip that starts with an entry as a real backup holds, and ends with the hostile one.
QList<ZipEntry> OvraHostileTest::hostileEntries(const QString &kind) const
{
    QList<ZipEntry> entries{{"knight/knight.def", restoredBytes}};
    if (kind == QLatin1String("climbs out"))
        entries << ZipEntry{"../../escaped.txt", "out"};
    else if (kind == QLatin1String("climbs out from a folder"))
        entries << ZipEntry{"knight/../../escaped2.txt", "out"};
    else if (kind == QLatin1String("both climb out"))
        entries << ZipEntry{"../../escaped.txt", "out"} << ZipEntry{"knight/../../escaped2.txt", "out"};
    else if (kind == QLatin1String("absolute"))
        entries << ZipEntry{QFile::encodeName(path(QStringLiteral("nest/sibling/planted.txt"))), "out"};
    else if (kind == QLatin1String("drive letter"))
        entries << ZipEntry{"C:/escaped.txt", "out"};
    else if (kind == QLatin1String("backslash"))
        entries << ZipEntry{"..\\..\\escaped.txt", "out"};
    else if (kind == QLatin1String("link"))
        entries << ZipEntry{"knight/shortcut", "../../../sibling", false, true};
    else if (kind == QLatin1String("one name twice"))
        entries << ZipEntry{"knight/knight.def", "# the second of two\n"};
    else if (kind == QLatin1String("inflates too far"))
        entries << ZipEntry{"knight/blank.def", QByteArray(8 << 20, ' '), true};
    else if (kind == QLatin1String("larger than the disk")) {
        // Sizes the zip claims, far beyond what it holds: the free space decides first.
        const qint64 declared = 0xFFFFFF00;
        const qint64 count = QStorageInfo(work()).bytesAvailable() / declared + 2;
        for (qint64 i = 0; i < count; ++i)
            entries << ZipEntry{"knight/huge" + QByteArray::number(i) + ".def", "x", false, false, quint32(declared)};
    } else if (kind == QLatin1String("through a link in the work"))
        entries << ZipEntry{"knight/out/planted.txt", "out"};
    return entries;
}

void OvraHostileTest::refusedZipBackups_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("message");
    QTest::newRow("climbs out") << "climbs out" << "The entry '../../escaped.txt' climbs out of its folder with '..'";
    QTest::newRow("climbs out from a folder") << "climbs out from a folder"
                                              << "The entry 'knight/../../escaped2.txt' climbs out of its folder with '..'";
    QTest::newRow("both climb out") << "both climb out" << "The entry '../../escaped.txt' climbs out";
    QTest::newRow("absolute") << "absolute" << "nest/sibling/planted.txt' is an absolute path";
    QTest::newRow("drive letter") << "drive letter" << "The entry 'C:/escaped.txt' holds a drive letter";
    QTest::newRow("backslash") << "backslash" << "The entry '..\\..\\escaped.txt' holds a backslash";
    QTest::newRow("link") << "link" << "The entry 'knight/shortcut' is a symbolic link";
    QTest::newRow("one name twice") << "one name twice" << "The entry 'knight/knight.def' is stored twice";
    QTest::newRow("inflates too far") << "inflates too far" << "no backup of a work packs that well";
    QTest::newRow("larger than the disk") << "larger than the disk" << "bytes free on the disk";
    QTest::newRow("through a link in the work")
        << "through a link in the work"
        << "The entry 'knight/out/planted.txt' would be written through a symbolic link that leads out of the work";
}

void OvraHostileTest::refusedZipBackups()
{
    QFETCH(QString, kind);
    QFETCH(QString, message);
    if (kind == QLatin1String("through a link in the work"))
        QVERIFY(QFile::link(path(QStringLiteral("nest/sibling")), work(QStringLiteral("knight/out"))));
    QVERIFY(writeFile(work(QStringLiteral("backup/evil.zip")), zipBytes(hostileEntries(kind))));
    const auto aroundBefore = around();
    const auto insideBefore = inside();

    const ToolRun run = ovra({QStringLiteral("restore"), QLatin1String(workPath), QStringLiteral("evil")});
    QCOMPARE(run.code, 3);
    QVERIFY2(run.err.contains(message), qPrintable(run.err));
    QVERIFY2(run.err.startsWith(QLatin1String("ovra restore: evil: ")), qPrintable(run.err));
    QVERIFY2(run.err.contains(QLatin1String("; nothing was restored")), qPrintable(run.err));
    QVERIFY(!run.out.contains(QLatin1String("Restored")));
    QCOMPARE(around(), aroundBefore);
    // Not even the harmless first entry was written.
    QCOMPARE(inside(), insideBefore);
}

void OvraHostileTest::namesAreCleanedBeforeTheyAreJudged()
{
    // "." parts and doubled slashes are no escape: such a backup comes back as usual.
    QVERIFY(writeFile(work(QStringLiteral("backup/tidy.zip")),
                      zipBytes({{"knight/./knight.def", restoredBytes}, {"knight//extra.def", "# extra\n", true}})));
    const auto aroundBefore = around();
    const ToolRun run = ovra({QStringLiteral("restore"), QLatin1String(workPath), QStringLiteral("tidy")});
    QCOMPARE(run.code, 0);
    QVERIFY2(run.out.startsWith(QLatin1String("Restored tidy over ")), qPrintable(run.out));
    QCOMPARE(readFile(work(QStringLiteral("knight/knight.def"))), restoredBytes);
    QCOMPARE(readFile(work(QStringLiteral("knight/extra.def"))), QByteArray("# extra\n"));
    QCOMPARE(around(), aroundBefore);
}

void OvraHostileTest::folderBackups_data()
{
    QTest::addColumn<QString>("link"); // a link in the backup folder, to this place; none when empty
    QTest::addColumn<QString>("message");
    QTest::newRow("no link") << QString() << QString();
    QTest::newRow("a link out of the backup") << "nest/sibling/keep.txt"
                                              << "The entry 'knight/peek.def' is a symbolic link to a place outside the backup";
    QTest::newRow("a link to a folder outside") << "nest/sibling"
                                                << "The entry 'knight/peek.def' is a symbolic link to a place outside the backup";
    QTest::newRow("a link that leads nowhere") << "nest/nothing-here"
                                               << "The entry 'knight/peek.def' is a symbolic link to a place outside the backup";
}

void OvraHostileTest::folderBackups()
{
    QFETCH(QString, link);
    QFETCH(QString, message);
    QVERIFY(writeFile(work(QStringLiteral("backup/folder/knight/knight.def")), restoredBytes));
    if (!link.isEmpty())
        QVERIFY(QFile::link(path(link), work(QStringLiteral("backup/folder/knight/peek.def"))));
    const auto aroundBefore = around();
    const auto insideBefore = inside();

    const ToolRun run = ovra({QStringLiteral("restore"), QLatin1String(workPath), QStringLiteral("folder")});
    QCOMPARE(around(), aroundBefore);
    if (message.isEmpty()) {
        QCOMPARE(run.code, 0);
        QCOMPARE(readFile(work(QStringLiteral("knight/knight.def"))), restoredBytes);
        return;
    }
    QCOMPARE(run.code, 3);
    QVERIFY2(run.err.contains(message), qPrintable(run.err));
    QCOMPARE(inside(), insideBefore);
}

// Appends a line to the [Files] group, the last group of the example's project file.
bool OvraHostileTest::addListedLine(const QString &line)
{
    const QString file = work(QStringLiteral("knight/knight.ovp"));
    return writeFile(file, readFile(file) + "    " + line.toUtf8() + '\n');
}

void OvraHostileTest::listedFilesOutsideTheWork_data()
{
    QTest::addColumn<QString>("listed");
    QTest::addColumn<QString>("link"); // made in the work's knight folder: "name=target"
    QTest::addColumn<QString>("reason");
    const QString outside = QStringLiteral("lies outside the work's folder; it is left out");
    QTest::newRow("climbs out") << "../../../outside.def" << "" << outside;
    QTest::newRow("absolute") << "@/nest/outside.def" << "" << outside;
    QTest::newRow("a link in the work to a file outside") << "linked.def" << "linked.def=nest/outside.def" << outside;
    QTest::newRow("a file in a linked folder") << "shared/other.def" << "shared=nest/sibling" << outside;
    QTest::newRow("the project file itself") << "knight.ovp" << "" << "is the project file itself; it is left out";
    QTest::newRow("one file twice") << "knight.def" << "" << "is listed twice; it is taken once";
}

void OvraHostileTest::listedFilesOutsideTheWork()
{
    QFETCH(QString, listed);
    QFETCH(QString, link);
    QFETCH(QString, reason);
    listed.replace(QLatin1Char('@'), m_dir->path());
    if (!link.isEmpty()) {
        const QStringList parts = link.split(QLatin1Char('='));
        QVERIFY(QFile::link(path(parts.at(1)), work(QStringLiteral("knight/") + parts.at(0))));
    }
    QVERIFY(addListedLine(QStringLiteral("definitions = ") + listed));
    const auto aroundBefore = around();
    const QString expected = QStringLiteral("error: The file '%1' %2").arg(listed, reason);

    const ToolRun info = ovra({QStringLiteral("info"), QStringLiteral("--json"), QLatin1String(workPath)});
    QCOMPARE(info.code, 0);
    const QJsonObject object = QJsonDocument::fromJson(info.out.toUtf8()).object();
    // The six files of the example and nothing else; one message, about the line.
    QCOMPARE(object.value(QStringLiteral("files")).toArray().size(), 6);
    const QJsonArray messages = object.value(QStringLiteral("messages")).toArray();
    QCOMPARE(messages.size(), 1);
    QCOMPARE(messages.at(0).toObject().value(QStringLiteral("text")).toString(),
             QStringLiteral("The file '%1' %2").arg(listed, reason));
    QCOMPARE(messages.at(0).toObject().value(QStringLiteral("file")).toString(),
             QLatin1String(workPath) + QStringLiteral("/knight/knight.ovp"));

    const ToolRun check = ovra({QStringLiteral("check"), QLatin1String(workPath)});
    QCOMPARE(check.code, 1);
    QCOMPARE(lines(check.out).size(), 1);
    QVERIFY2(check.out.contains(expected), qPrintable(check.out));
    QVERIFY(!check.out.contains(QLatin1String("read from outside")));

    // A backup and a restore of the work touch nothing outside it either.
    const ToolRun backup = ovra({QStringLiteral("backup"), QLatin1String(workPath), QStringLiteral("copy")});
    QCOMPARE(backup.code, 0);
    const QStringList backups = QDir(work(QStringLiteral("backup"))).entryList({QStringLiteral("*.zip")});
    QCOMPARE(backups.size(), 1);
    QVERIFY(QFile::remove(work(QStringLiteral("knight/knight.def"))));
    const ToolRun restore = ovra({QStringLiteral("restore"), QLatin1String(workPath), QFileInfo(backups.first()).completeBaseName()});
    QCOMPARE(restore.code, 0);
    QVERIFY(QFileInfo::exists(work(QStringLiteral("knight/knight.def"))));
    QCOMPARE(around(), aroundBefore);
}

void OvraHostileTest::linkedProjectElsewhereIsNotFound()
{
    // A folder holding only a link to a project that lies elsewhere has no project.
    QVERIFY(QDir().mkpath(path(QStringLiteral("nest/lonely"))));
    QVERIFY(QFile::link(work(QStringLiteral("knight/knight.ovp")), path(QStringLiteral("nest/lonely/link.ovp"))));
    const ToolRun run = ovra({QStringLiteral("info"), QStringLiteral("nest/lonely")});
    QCOMPARE(run.code, 3);
    QCOMPARE(run.err, QStringLiteral("ovra info: nest/lonely: no project file in this directory\n"));
    // A link to a project file kept inside the folder is found like any file.
    QVERIFY(QFile::remove(path(QStringLiteral("nest/lonely/link.ovp"))));
    QVERIFY(writeFile(path(QStringLiteral("nest/lonely/.kept/knight.ovp")), readFile(work(QStringLiteral("knight/knight.ovp")))));
    QVERIFY(QFile::link(path(QStringLiteral("nest/lonely/.kept/knight.ovp")), path(QStringLiteral("nest/lonely/link.ovp"))));
    const ToolRun found = ovra({QStringLiteral("info"), QStringLiteral("nest/lonely")});
    QCOMPARE(found.code, 0);
    QVERIFY2(found.out.startsWith(QLatin1String("Knight 1.0 (nest/lonely/link.ovp)")), qPrintable(found.out));
}

void OvraHostileTest::backupFolderLinkedElsewhere()
{
    QVERIFY(QDir().mkpath(path(QStringLiteral("nest/sibling/backups"))));
    QVERIFY(QFile::link(path(QStringLiteral("nest/sibling/backups")), work(QStringLiteral("backup"))));
    const auto before = around();
    const ToolRun backup = ovra({QStringLiteral("backup"), QLatin1String(workPath)});
    QCOMPARE(backup.code, 3);
    QVERIFY2(backup.err.contains(QLatin1String("its backup folder leads outside the work; nothing was written")),
             qPrintable(backup.err));
    QCOMPARE(around(), before);
}

void OvraHostileTest::scriptsDoNotRunWhenAWorkOpens()
{
    const QString marker = path(QStringLiteral("marker.txt"));
    QVERIFY(writeFile(work(QStringLiteral("knight/knight.lua")),
                      "-- Writes a marker wherever it runs.\nlocal file = io.open(\"" + QFile::encodeName(marker)
                          + "\", \"w\")\nfile:write(\"ran\")\nfile:close()\n"));
    QCOMPARE(ovra({QStringLiteral("info"), QLatin1String(workPath)}).code, 0);
    QCOMPARE(ovra({QStringLiteral("check"), QLatin1String(workPath)}).code, 0);
    QCOMPARE(ovra({QStringLiteral("backup"), QLatin1String(workPath)}).code, 0);
    QVERIFY(!QFileInfo::exists(marker));
    {
        Ovra::ProjectLocator locator(QStringLiteral(OVRA_PLUGIN_DIR));
        QString error;
        Ovra::Project *project = locator.openProject(work(), &error);
        QVERIFY2(project, qPrintable(error));
        const QList<Ovra::ProjectFile *> scripts = project->filesByType(Ovra::Project::Scripts);
        QCOMPARE(scripts.size(), 1);
        QCOMPARE(QFileInfo(scripts.first()->fileName()).fileName(), QStringLiteral("knight.lua"));
        project->release();
    }
    QVERIFY(!QFileInfo::exists(marker));
    // The script does write its marker when it is run on purpose.
    const ToolRun run = ovra({QStringLiteral("run"), QLatin1String(workPath) + QStringLiteral("/knight/knight.lua")});
    QCOMPARE(run.code, 0);
    QCOMPARE(readFile(marker), QByteArray("ran"));
}

QTEST_MAIN(OvraHostileTest)
#include "tst_ovrahostile.moc"
