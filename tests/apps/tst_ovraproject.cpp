// The project commands of the tool (info, check, backup, restore, backups), run as the
// built program on copies of the example work and on damaged copies of it.
#include "ovratool.h"

#include <QDataStream>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

// A definition file with an unknown line, an unclosed header and a key its group
// doesn't have.
const char brokenDefinitions[] = "# The knight, broken on purpose.\n@version 1\n\n[Character: knight]\n"
                                 "    life = 1000\n%%% not a line\n    power = 3000\n[Move: punch\n    damage = 40\n";

enum Damage { Intact, BrokenDefinitions, AnimationsTail, ContainerCutShort, SpriteStreamDamaged };

// The container with its first sprite one row taller than its stream fills: the file is
// sound in its structure, only that sprite's pixels don't decode.
QByteArray tallerFirstSprite(QByteArray bytes)
{
    QDataStream in(bytes);
    in.setByteOrder(QDataStream::LittleEndian);
    in.skipRawData(8);
    quint32 palettes = 0;
    in >> palettes;
    int at = 16;
    for (quint32 i = 0; i < palettes && at + 8 <= bytes.size(); ++i) {
        quint16 colors = 0;
        in.device()->seek(at + 4);
        in >> colors;
        at += 8 + 4 * colors;
    }
    const int height = at + 10; // group, number, axis and width come first
    if (height + 2 > bytes.size())
        return QByteArray();
    const int taller = (uchar(bytes.at(height)) | uchar(bytes.at(height + 1)) << 8) + 1;
    bytes[height] = char(taller & 0xFF);
    bytes[height + 1] = char(taller >> 8);
    return bytes;
}

// The message of check for that sprite.
const char damagedSprite[] = "work/knight/knight.osp:1:1: error: Sprite 0 doesn't decode: "
                             "the stream ends before its picture is full.\n";

const char intactInfo[] = "Knight 1.0 (work/knight/knight.ovp)\nFiles:\n"
                          "  Sample projects:     knight.ovp\n"
                          "  Sprite containers:   knight.osp\n"
                          "  Sound banks:         knight.sbk\n"
                          "  Animations:          knight.oan\n"
                          "  Scripts:             knight.lua\n"
                          "  Definitions:         knight.def\n"
                          "Sprites:    30\nPalettes:   3\nAnimations: 8 (32 frames)\nSounds:     5\n"
                          "Messages:   0 errors, 0 warnings, 0 notes\n";

// The project file's line that lists the container.
const char cutShort[] = "work/knight/knight.ovp:12:1: error: The file 'knight.osp' can't be read: "
                        "The sprite container is cut short.\n";

} // namespace

Q_DECLARE_METATYPE(Damage)

class OvraProjectTest : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void inspect_data();
    void inspect();
    void backupAndRestore();
    void backupsListNewestLast();
    void restoreRefusesUnknownName();
    void failures_data();
    void failures();
    void help_data();
    void help();

private:
    ToolRun ovra(const QStringList &arguments) { return runOvra(m_dir->path(), arguments); }
    QString path(const QString &relative) const { return m_dir->path() + QLatin1Char('/') + relative; }
    bool damage(Damage damage);

    std::unique_ptr<QTemporaryDir> m_dir;
};

void OvraProjectTest::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    QVERIFY(copyWork(path(QStringLiteral("work"))));
}

bool OvraProjectTest::damage(Damage damage)
{
    const auto file = [this](const char *suffix) { return path(QStringLiteral("work/knight/knight.") + QLatin1String(suffix)); };
    switch (damage) {
    case Intact:
        return true;
    case BrokenDefinitions:
        return writeFile(file("def"), brokenDefinitions);
    case AnimationsTail:
        return writeFile(file("oan"), readFile(file("oan")) + "zzz\n");
    case ContainerCutShort:
        return writeFile(file("osp"), readFile(file("osp")).left(100));
    case SpriteStreamDamaged: {
        const QByteArray damaged = tallerFirstSprite(readFile(file("osp")));
        return !damaged.isEmpty() && writeFile(file("osp"), damaged);
    }
    }
    return false;
}

void OvraProjectTest::inspect_data()
{
    QTest::addColumn<Damage>("damage");
    QTest::addColumn<QString>("arguments"); // "@" stands for the test's directory, here and in the output
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("out");
    QTest::addColumn<QString>("err");

    QString damaged = QString::fromLatin1(intactInfo);
    damaged.replace(QLatin1String("  Sprite containers:   knight.osp\n"), QString())
        .replace(QLatin1String("Sprites:    30\nPalettes:   3"), QLatin1String("Sprites:    0\nPalettes:   0"))
        .replace(QLatin1String("0 errors, 0 warnings, 0 notes\n"), QLatin1String("1 error, 0 warnings, 0 notes\n  ") + QLatin1String(cutShort));
    QTest::newRow("info") << Intact << "info work" << 0 << QString::fromLatin1(intactInfo) << QString();
    QTest::newRow("info, container cut short") << ContainerCutShort << "info work" << 0 << damaged << QString();

    const QString files = QStringLiteral("\"files\":[{\"path\":\"knight.ovp\",\"type\":0,\"typeName\":\"Sample projects\"},"
                                         "{\"path\":\"knight.osp\",\"type\":1,\"typeName\":\"Sprite containers\"},"
                                         "{\"path\":\"knight.sbk\",\"type\":2,\"typeName\":\"Sound banks\"},"
                                         "{\"path\":\"knight.oan\",\"type\":3,\"typeName\":\"Animations\"},"
                                         "{\"path\":\"knight.lua\",\"type\":4,\"typeName\":\"Scripts\"},"
                                         "{\"path\":\"knight.def\",\"type\":5,\"typeName\":\"Definitions\"}]");
    // The directory of the project works as well as the work or the file.
    QTest::newRow("info, json") << Intact << "info --json @/work/knight" << 0
                                << QStringLiteral("{\"animations\":8,\"engine\":\"sample\",\"errors\":0,\"file\":\"@/work/knight/knight.ovp\",")
                                       + files
                                       + QStringLiteral(",\"frames\":32,\"messages\":[],\"notes\":0,\"palettes\":3,\"project\":\"Knight\","
                                                        "\"sounds\":5,\"sprites\":30,\"version\":\"1.0\",\"warnings\":0}\n")
                                << QString();
    QTest::newRow("info, json, container cut short")
        << ContainerCutShort << "info --json work" << 0
        << QStringLiteral("{\"animations\":8,\"engine\":\"sample\",\"errors\":1,\"file\":\"work/knight/knight.ovp\",")
               + QString(files).remove(QLatin1String("{\"path\":\"knight.osp\",\"type\":1,\"typeName\":\"Sprite containers\"},"))
               + QStringLiteral(",\"frames\":32,\"messages\":[{\"column\":1,\"file\":\"work/knight/knight.ovp\",\"line\":12,"
                                "\"text\":\"The file 'knight.osp' can't be read: The sprite container is cut short.\","
                                "\"type\":\"error\"}],\"notes\":0,\"palettes\":0,\"project\":\"Knight\",\"sounds\":5,\"sprites\":0,"
                                "\"version\":\"1.0\",\"warnings\":0}\n")
        << QString();

    const auto broken = [](const QString &shown) -> QString {
        return shown + QStringLiteral(":6:1: error: Unknown line: expected a header [Kind: name] or a value key = value\n")
               + shown + QStringLiteral(":8:1: error: Unclosed bracket\n") + shown
               + QStringLiteral(":9:5: warning: Unknown key 'damage' of [Character], read as text\n");
    };
    const QString def = QStringLiteral("work/knight/knight.def");
    const QString summary = QStringLiteral("2 errors, 1 warning in 4 files\n");
    // The project file, the definitions, the animations and the script.
    QTest::newRow("check") << Intact << "check work" << 0 << QString() << QStringLiteral("0 errors, 0 warnings in 4 files\n");
    QTest::newRow("check of the work") << BrokenDefinitions << "check work" << 1 << broken(def) << summary;
    QTest::newRow("check of the project file, absolute") << BrokenDefinitions << "check @/work/knight/knight.ovp" << 1
                                                         << broken(QStringLiteral("@/work/knight/knight.def")) << summary;
    QTest::newRow("check of the file alone") << BrokenDefinitions << "check work/knight/knight.def" << 1 << broken(def)
                                             << QStringLiteral("2 errors, 1 warning in 1 file\n");
    QTest::newRow("check of the files, options last")
        << BrokenDefinitions << "check ./work/knight/knight.def work/knight/knight.oan -q" << 1
        << broken(QStringLiteral("./work/knight/knight.def")) << QString();
    // The load's messages count for check too.
    QTest::newRow("check, container cut short") << ContainerCutShort << "check work" << 1 << QString::fromLatin1(cutShort)
                                                << QStringLiteral("1 error, 0 warnings in 4 files\n");
    // Opening doesn't look at the pixels of sprites: info shows no message, check looks at
    // every sprite and finds the damaged one, in the work and in the file alone.
    QTest::newRow("info, a sprite's pixels damaged") << SpriteStreamDamaged << "info work" << 0
                                                     << QString::fromLatin1(intactInfo) << QString();
    QTest::newRow("check, a sprite's pixels damaged") << SpriteStreamDamaged << "check work" << 1
                                                      << QString::fromLatin1(damagedSprite)
                                                      << QStringLiteral("1 error, 0 warnings in 4 files\n");
    QTest::newRow("check of the container alone, a sprite's pixels damaged")
        << SpriteStreamDamaged << "check work/knight/knight.osp" << 1 << QString::fromLatin1(damagedSprite)
        << QStringLiteral("1 error, 0 warnings in 1 file\n");
    const int lastLine = lines(QString::fromUtf8(readFile(QStringLiteral(OVRA_EXAMPLES_DIR "/sample/knight/knight.oan")))).size() + 1;
    QTest::newRow("check, json") << AnimationsTail << "check --json work" << 1
                                 << QStringLiteral("{\"errors\":1,\"files\":4,\"messages\":[{\"column\":1,\"file\":\"work/knight/knight.oan\","
                                                   "\"line\":%1,\"text\":\"Unknown line: expected animation, frame, attack or body\","
                                                   "\"type\":\"error\"}],\"notes\":0,\"warnings\":0}\n")
                                        .arg(lastLine)
                                 << QString();
}

void OvraProjectTest::inspect()
{
    QFETCH(Damage, damage);
    QFETCH(QString, arguments);
    QFETCH(int, code);
    QFETCH(QString, out);
    QFETCH(QString, err);
    QVERIFY(this->damage(damage));
    const QMap<QString, QByteArray> before = snapshot(path(QStringLiteral("work")));

    const ToolRun run = ovra(arguments.replace(QLatin1Char('@'), m_dir->path()).split(QLatin1Char(' ')));
    QCOMPARE(run.out, out.replace(QLatin1Char('@'), m_dir->path()));
    QCOMPARE(run.err, err);
    QCOMPARE(run.code, code);
    // Nothing written, the damaged file least of all.
    QCOMPARE(snapshot(path(QStringLiteral("work"))), before);
}

void OvraProjectTest::backupAndRestore()
{
    const QMap<QString, QByteArray> original = snapshot(path(QStringLiteral("work")));
    ToolRun run = ovra(words("backup work first"));
    QCOMPARE(run.code, 0);
    const QStringList made = QDir(path(QStringLiteral("work/backup"))).entryList(QDir::Files);
    QCOMPARE(made.size(), 1);
    const QString zip = made.first();
    QVERIFY2(zip.endsWith(QLatin1String("_first.zip")), qPrintable(zip));
    QCOMPARE(run.out, QStringLiteral("Backup %1 written to work/backup/%2 (%3 KiB)\n")
                          .arg(zip.chopped(4), zip)
                          .arg(double(QFileInfo(path(QStringLiteral("work/backup/")) + zip).size()) / 1024, 0, 'f', 1));

    // Any program that reads zips lists the project's files in it.
    QProcess unzip;
    unzip.start(QStringLiteral("unzip"), {QStringLiteral("-Z1"), path(QStringLiteral("work/backup/")) + zip});
    QVERIFY(unzip.waitForFinished());
    QCOMPARE(unzip.exitCode(), 0);
    QStringList entries = lines(QString::fromUtf8(unzip.readAllStandardOutput()));
    entries.sort();
    QCOMPARE(entries, words("knight/knight.def knight/knight.lua knight/knight.oan knight/knight.osp knight/knight.ovp "
                            "knight/knight.sbk"));

    // Spoiled files come back byte for byte.
    QVERIFY(damage(BrokenDefinitions));
    QVERIFY(writeFile(path(QStringLiteral("work/knight/knight.sbk")), QByteArray(64, '\x7f')));
    run = ovra(words("restore work") << zip.chopped(4));
    QCOMPARE(run.code, 0);
    QCOMPARE(run.out, QStringLiteral("Restored %1 over work\n").arg(zip.chopped(4)));
    QMap<QString, QByteArray> after = snapshot(path(QStringLiteral("work")));
    QVERIFY(after.remove(QStringLiteral("backup/") + zip));
    QCOMPARE(after, original);
}

void OvraProjectTest::backupsListNewestLast()
{
    ToolRun run = ovra(words("backups work"));
    QCOMPARE(run.code, 0);
    QCOMPARE(run.out, QStringLiteral("No backups in work/backup\n"));

    // The same name twice in a row: two backups all the same.
    for (const char *name : {"one", "two", "two"})
        QCOMPARE(ovra(words("backup -q work") << QLatin1String(name)).out, QString());

    run = ovra(words("backups work --json"));
    QCOMPARE(run.code, 0);
    const QJsonObject result = QJsonDocument::fromJson(run.out.toUtf8()).object();
    QCOMPARE(result.value(QStringLiteral("directory")).toString(), QStringLiteral("work/backup"));
    const QJsonArray list = result.value(QStringLiteral("backups")).toArray();
    QCOMPARE(list.size(), 3);
    QStringList names;
    for (const QJsonValue &value : list) {
        const QJsonObject entry = value.toObject();
        const QString name = entry.value(QStringLiteral("name")).toString();
        names << name;
        const QFileInfo file(path(QStringLiteral("work/backup/")) + name + QLatin1String(".zip"));
        QVERIFY2(file.isFile(), qPrintable(name));
        QCOMPARE(entry.value(QStringLiteral("path")).toString(), QStringLiteral("work/backup/") + file.fileName());
        QCOMPARE(qint64(entry.value(QStringLiteral("size")).toDouble()), file.size());
        QVERIFY(QDateTime::fromString(entry.value(QStringLiteral("date")).toString(), Qt::ISODate).isValid());
    }
    QVERIFY(names.at(0).endsWith(QLatin1String("_one")));
    QVERIFY(names.at(1).endsWith(QLatin1String("_two")));
    QVERIFY(names.at(2).endsWith(QLatin1String("_two")));
    QVERIFY(names.at(1) != names.at(2));

    const QStringList out = lines(ovra(words("backups work")).out);
    QCOMPARE(out.size(), 3);
    for (int i = 0; i < 3; ++i)
        QVERIFY2(out.at(i).endsWith(QLatin1String("KiB  ") + names.at(i)), qPrintable(out.at(i)));
}

void OvraProjectTest::restoreRefusesUnknownName()
{
    QCOMPARE(ovra(words("backup work kept")).code, 0);
    const QString kept = QDir(path(QStringLiteral("work/backup"))).entryList(QDir::Files).value(0).chopped(4);
    const QMap<QString, QByteArray> before = snapshot(path(QStringLiteral("work")));
    const ToolRun run = ovra(words("restore work nosuch"));
    QCOMPARE(run.code, 3);
    QCOMPARE(run.out, QString());
    QCOMPARE(run.err, QStringLiteral("ovra restore: nosuch: no such backup; there are: %1\n").arg(kept));
    QCOMPARE(snapshot(path(QStringLiteral("work"))), before);
}

void OvraProjectTest::failures_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("error"); // on stderr, before the hint at --help of a usage error

    const auto row = [](const char *name, const char *arguments, int code, const char *error) {
        QTest::newRow(name) << QString::fromLatin1(arguments) << code << QString::fromUtf8(error) + QLatin1Char('\n');
    };
    row("info of nothing", "info nowhere", 3, "ovra info: nowhere: no such file or directory");
    // The files that are there are checked all the same.
    row("check of nothing", "check work nowhere.def", 3,
        "ovra check: nowhere.def: no such file or directory\n0 errors, 0 warnings in 4 files");
    row("backup of nothing", "backup nowhere/x.ovp", 3, "ovra backup: nowhere/x.ovp: no such file or directory");
    row("info of a text", "info junk/notes.txt", 3,
        "ovra info: junk/notes.txt: no engine of " OVRA_PLUGIN_DIR " takes this file as a project");
    row("info of a broken project file", "info junk/broken.ovp", 3,
        "ovra info: junk/broken.ovp: Not a project file: it needs a [Project] and a [Files] group");
    row("check of a text", "check junk/notes.txt", 3, "ovra check: junk/notes.txt: no engine reads files like this one");
    row("info of a directory without projects", "info empty", 3, "ovra info: empty: no project file in this directory");
    row("unknown option", "info work --colour", 2, "ovra info: Unknown option 'colour'.");
    row("info without project", "info", 2, "ovra info: missing arguments: PROJECT");
    row("check without files", "check -q", 2, "ovra check: missing arguments: PROJECT|FILE...");
    row("restore without name", "restore work", 2, "ovra restore: missing arguments: PROJECT NAME");
    row("info of two", "info work work", 2, "ovra info: too many arguments: 'work'");
    row("backup name with a slash", "backup work ../up", 2, "ovra backup: a backup's name has no '/', '\\' or leading '.': '../up'");
}

void OvraProjectTest::failures()
{
    QFETCH(QString, arguments);
    QFETCH(int, code);
    QFETCH(QString, error);
    QVERIFY(writeFile(path(QStringLiteral("junk/notes.txt")), "no project\n"));
    QVERIFY(writeFile(path(QStringLiteral("junk/broken.ovp")), "[Elsewhere]\n    x = 1\n"));
    QVERIFY(QDir().mkpath(path(QStringLiteral("empty"))));
    const QMap<QString, QByteArray> before = snapshot(m_dir->path());

    const ToolRun run = ovra(arguments.split(QLatin1Char(' ')));
    QCOMPARE(run.code, code);
    QCOMPARE(run.out, QString());
    QCOMPARE(run.err, error + (code == 2 ? QStringLiteral("Try 'ovra %1 --help'.\n").arg(arguments.section(QLatin1Char(' '), 0, 0)) : QString()));
    QCOMPARE(snapshot(m_dir->path()), before);
}

void OvraProjectTest::help_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("usage");
    QTest::newRow("info") << "info" << "Usage: ovra info [options] PROJECT";
    QTest::newRow("check") << "check" << "Usage: ovra check [options] PROJECT|FILE...";
    QTest::newRow("backup") << "backup" << "Usage: ovra backup [options] PROJECT [NAME]";
    QTest::newRow("restore") << "restore" << "Usage: ovra restore [options] PROJECT NAME";
    QTest::newRow("backups") << "backups" << "Usage: ovra backups [options] PROJECT";
}

void OvraProjectTest::help()
{
    QFETCH(QString, command);
    QFETCH(QString, usage);
    // Help wins over missing or wrong arguments.
    const ToolRun run = ovra(QStringList{command} << words("--help nowhere"));
    QCOMPARE(run.code, 0);
    QCOMPARE(run.err, QString());
    QCOMPARE(lines(run.out).value(0), usage);
    QVERIFY(run.out.contains(QLatin1String("--quiet")));
    QVERIFY(!QFileInfo::exists(path(QStringLiteral("work/backup"))));
}

QTEST_GUILESS_MAIN(OvraProjectTest)
#include "tst_ovraproject.moc"
