// The project commands of the tool (info, check, backup, restore, backups), run as the
// built program on copies of the example work and on damaged copies of it.
#include "ovratool.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

// A definition file with an unknown line, an unclosed header and a key its group
// doesn't have.
const QByteArray brokenDefinitions("# The knight, broken on purpose.\n@version 1\n\n[Character: knight]\n"
                                   "    life = 1000\n%%% not a line\n    power = 3000\n[Move: punch\n    damage = 40\n");

enum Damage { Intact, BrokenDefinitions, AnimationsTail, ContainerCutShort };

const QString intactInfo = QStringLiteral("Knight 1.0 (work/knight/knight.ovp)\nFiles:\n"
                                          "  Sample projects:     knight.ovp\n"
                                          "  Sprite containers:   knight.osp\n"
                                          "  Sound banks:         knight.sbk\n"
                                          "  Animations:          knight.oan\n"
                                          "  Scripts:             knight.lua\n"
                                          "  Definitions:         knight.def\n"
                                          "Sprites:    30\nPalettes:   3\nAnimations: 8 (32 frames)\nSounds:     5\n"
                                          "Messages:   0 errors, 0 warnings, 0 notes\n");

// The project file's line that lists the container.
const QString cutShort = QStringLiteral("work/knight/knight.ovp:12:1: error: The file 'knight.osp' can't be read: "
                                        "The sprite container is cut short.");

} // namespace

Q_DECLARE_METATYPE(Damage)

class OvraProjectTest : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void info_data();
    void info();
    void check_data();
    void check();
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
    }
    return false;
}

void OvraProjectTest::info_data()
{
    QTest::addColumn<Damage>("damage");
    QTest::addColumn<QStringList>("arguments"); // "@" stands for the test's directory
    QTest::addColumn<QString>("out");

    QString damaged = intactInfo;
    damaged.replace(QLatin1String("  Sprite containers:   knight.osp\n"), QString())
        .replace(QLatin1String("Sprites:    30\nPalettes:   3"), QLatin1String("Sprites:    0\nPalettes:   0"))
        .replace(QLatin1String("0 errors, 0 warnings, 0 notes\n"), QLatin1String("1 error, 0 warnings, 0 notes\n  ") + cutShort + '\n');
    QTest::newRow("text") << Intact << QStringList{QStringLiteral("info"), QStringLiteral("work")} << intactInfo;
    QTest::newRow("text, container cut short") << ContainerCutShort << QStringList{QStringLiteral("info"), QStringLiteral("work")}
                                               << damaged;

    // The directory of the project works as well as the work or the file.
    const QString files = QStringLiteral("\"files\":[{\"path\":\"knight.ovp\",\"type\":0,\"typeName\":\"Sample projects\"},"
                                         "{\"path\":\"knight.osp\",\"type\":1,\"typeName\":\"Sprite containers\"},"
                                         "{\"path\":\"knight.sbk\",\"type\":2,\"typeName\":\"Sound banks\"},"
                                         "{\"path\":\"knight.oan\",\"type\":3,\"typeName\":\"Animations\"},"
                                         "{\"path\":\"knight.lua\",\"type\":4,\"typeName\":\"Scripts\"},"
                                         "{\"path\":\"knight.def\",\"type\":5,\"typeName\":\"Definitions\"}]");
    QTest::newRow("json") << Intact
                          << QStringList{QStringLiteral("info"), QStringLiteral("--json"), QStringLiteral("@/work/knight")}
                          << QStringLiteral("{\"animations\":8,\"engine\":\"sample\",\"errors\":0,\"file\":\"@/work/knight/knight.ovp\",")
                                 + files
                                 + QStringLiteral(",\"frames\":32,\"messages\":[],\"notes\":0,\"palettes\":3,\"project\":\"Knight\","
                                                  "\"sounds\":5,\"sprites\":30,\"version\":\"1.0\",\"warnings\":0}" "\n");
    QTest::newRow("json, container cut short")
        << ContainerCutShort << QStringList{QStringLiteral("info"), QStringLiteral("--json"), QStringLiteral("work")}
        << QStringLiteral("{\"animations\":8,\"engine\":\"sample\",\"errors\":1,\"file\":\"work/knight/knight.ovp\",")
               + QString(files).remove(QLatin1String("{\"path\":\"knight.osp\",\"type\":1,\"typeName\":\"Sprite containers\"},"))
               + QStringLiteral(",\"frames\":32,\"messages\":[{\"column\":1,\"file\":\"work/knight/knight.ovp\",\"line\":12,"
                                "\"text\":\"The file 'knight.osp' can't be read: The sprite container is cut short.\","
                                "\"type\":\"error\"}],\"notes\":0,\"palettes\":0,\"project\":\"Knight\",\"sounds\":5,\"sprites\":0,"
                                "\"version\":\"1.0\",\"warnings\":0}" "\n");
}

void OvraProjectTest::info()
{
    QFETCH(Damage, damage);
    QFETCH(QStringList, arguments);
    QFETCH(QString, out);
    QVERIFY(this->damage(damage));
    arguments.replaceInStrings(QStringLiteral("@"), m_dir->path());
    const QMap<QString, QByteArray> before = snapshot(path(QStringLiteral("work")));

    const ToolRun run = ovra(arguments);
    QCOMPARE(run.err, QString());
    QCOMPARE(run.out, out.replace(QLatin1Char('@'), m_dir->path()));
    QCOMPARE(run.code, 0);
    // Nothing written, the damaged file least of all.
    QCOMPARE(snapshot(path(QStringLiteral("work"))), before);
}

void OvraProjectTest::check_data()
{
    QTest::addColumn<Damage>("damage");
    QTest::addColumn<QStringList>("arguments"); // "@" stands for the test's directory
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("out");
    QTest::addColumn<QString>("err");

    const auto broken = [](const QString &shown) -> QString {
        return shown + QStringLiteral(":6:1: error: Unknown line: expected a header [Kind: name] or a value key = value\n")
               + shown + QStringLiteral(":8:1: error: Unclosed bracket\n") + shown
               + QStringLiteral(":9:5: warning: Unknown key 'damage' of [Character], read as text\n");
    };
    const QString def = QStringLiteral("work/knight/knight.def");
    const QString summary = QStringLiteral("2 errors, 1 warning in 4 files\n");
    // The project file, the definitions, the animations and the script.
    QTest::newRow("intact") << Intact << QStringList{QStringLiteral("work")} << 0 << QString()
                            << QStringLiteral("0 errors, 0 warnings in 4 files\n");
    QTest::newRow("the work") << BrokenDefinitions << QStringList{QStringLiteral("work")} << 1 << broken(def) << summary;
    QTest::newRow("the project file, absolute")
        << BrokenDefinitions << QStringList{QStringLiteral("@/work/knight/knight.ovp")} << 1
        << broken(QStringLiteral("@/work/knight/knight.def")) << summary;
    QTest::newRow("the file alone") << BrokenDefinitions << QStringList{def} << 1 << broken(def)
                                    << QStringLiteral("2 errors, 1 warning in 1 file\n");
    QTest::newRow("the file, options last")
        << BrokenDefinitions
        << QStringList{QStringLiteral("./work/knight/knight.def"), QStringLiteral("work/knight/knight.oan"), QStringLiteral("-q")}
        << 1 << broken(QStringLiteral("./work/knight/knight.def")) << QString();
    // The load's messages count for check too.
    QTest::newRow("container cut short") << ContainerCutShort << QStringList{QStringLiteral("work")} << 1 << cutShort + '\n'
                                         << QStringLiteral("1 error, 0 warnings in 4 files\n");
    const int lastLine = lines(QString::fromUtf8(readFile(QStringLiteral(OVRA_EXAMPLES_DIR "/sample/knight/knight.oan")))).size() + 1;
    QTest::newRow("json") << AnimationsTail << QStringList{QStringLiteral("--json"), QStringLiteral("work")} << 1
                          << QStringLiteral("{\"errors\":1,\"files\":4,\"messages\":[{\"column\":1,\"file\":\"work/knight/knight.oan\","
                                            "\"line\":%1,\"text\":\"Unknown line: expected animation, frame, attack or body\","
                                            "\"type\":\"error\"}],\"notes\":0,\"warnings\":0}" "\n")
                                 .arg(lastLine)
                          << QString();
}

void OvraProjectTest::check()
{
    QFETCH(Damage, damage);
    QFETCH(QStringList, arguments);
    QFETCH(int, code);
    QFETCH(QString, out);
    QFETCH(QString, err);
    QVERIFY(this->damage(damage));
    arguments.replaceInStrings(QStringLiteral("@"), m_dir->path());
    const QMap<QString, QByteArray> before = snapshot(path(QStringLiteral("work")));

    const ToolRun run = ovra(QStringList{QStringLiteral("check")} + arguments);
    QCOMPARE(run.out, out.replace(QLatin1Char('@'), m_dir->path()));
    QCOMPARE(run.err, err);
    QCOMPARE(run.code, code);
    QCOMPARE(snapshot(path(QStringLiteral("work"))), before);
}

void OvraProjectTest::backupAndRestore()
{
    const QMap<QString, QByteArray> original = snapshot(path(QStringLiteral("work")));
    ToolRun run = ovra({QStringLiteral("backup"), QStringLiteral("work"), QStringLiteral("first")});
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
    QCOMPARE(entries, (QStringList{QStringLiteral("knight/knight.def"), QStringLiteral("knight/knight.lua"),
                                   QStringLiteral("knight/knight.oan"), QStringLiteral("knight/knight.osp"),
                                   QStringLiteral("knight/knight.ovp"), QStringLiteral("knight/knight.sbk")}));

    // Spoiled files come back byte for byte.
    QVERIFY(damage(BrokenDefinitions));
    QVERIFY(writeFile(path(QStringLiteral("work/knight/knight.sbk")), QByteArray(64, '\x7f')));
    run = ovra({QStringLiteral("restore"), QStringLiteral("work"), zip.chopped(4)});
    QCOMPARE(run.code, 0);
    QCOMPARE(run.out, QStringLiteral("Restored %1 over work\n").arg(zip.chopped(4)));
    QMap<QString, QByteArray> after = snapshot(path(QStringLiteral("work")));
    QVERIFY(after.remove(QStringLiteral("backup/") + zip));
    QCOMPARE(after, original);
}

void OvraProjectTest::backupsListNewestLast()
{
    ToolRun run = ovra({QStringLiteral("backups"), QStringLiteral("work")});
    QCOMPARE(run.code, 0);
    QCOMPARE(run.out, QStringLiteral("No backups in work/backup\n"));

    // The same name twice in a row: two backups all the same.
    for (const char *name : {"one", "two", "two"})
        QCOMPARE(ovra({QStringLiteral("backup"), QStringLiteral("-q"), QStringLiteral("work"), QLatin1String(name)}).out, QString());

    run = ovra({QStringLiteral("backups"), QStringLiteral("work"), QStringLiteral("--json")});
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

    const QStringList out = lines(ovra({QStringLiteral("backups"), QStringLiteral("work")}).out);
    QCOMPARE(out.size(), 3);
    for (int i = 0; i < 3; ++i)
        QVERIFY2(out.at(i).endsWith(QLatin1String("KiB  ") + names.at(i)), qPrintable(out.at(i)));
}

void OvraProjectTest::restoreRefusesUnknownName()
{
    QCOMPARE(ovra({QStringLiteral("backup"), QStringLiteral("work"), QStringLiteral("kept")}).code, 0);
    const QString kept = QDir(path(QStringLiteral("work/backup"))).entryList(QDir::Files).value(0).chopped(4);
    const QMap<QString, QByteArray> before = snapshot(path(QStringLiteral("work")));
    const ToolRun run = ovra({QStringLiteral("restore"), QStringLiteral("work"), QStringLiteral("nosuch")});
    QCOMPARE(run.code, 3);
    QCOMPARE(run.out, QString());
    QCOMPARE(run.err, QStringLiteral("ovra restore: nosuch: no such backup; there are: %1\n").arg(kept));
    QCOMPARE(snapshot(path(QStringLiteral("work"))), before);
}

void OvraProjectTest::failures_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("error"); // on stderr, before the hint at --help of a usage error

    const auto row = [](const char *name, const QStringList &arguments, int code, const char *error) {
        QTest::newRow(name) << arguments << code << QString::fromUtf8(error) + QLatin1Char('\n');
    };
    row("info of nothing", {QStringLiteral("info"), QStringLiteral("nowhere")}, 3,
        "ovra info: nowhere: no such file or directory");
    // The files that are there are checked all the same.
    row("check of nothing", {QStringLiteral("check"), QStringLiteral("work"), QStringLiteral("nowhere.def")}, 3,
        "ovra check: nowhere.def: no such file or directory\n0 errors, 0 warnings in 4 files");
    row("backup of nothing", {QStringLiteral("backup"), QStringLiteral("nowhere/x.ovp")}, 3,
        "ovra backup: nowhere/x.ovp: no such file or directory");
    row("info of a text", {QStringLiteral("info"), QStringLiteral("junk/notes.txt")}, 3,
        "ovra info: junk/notes.txt: no engine of " OVRA_PLUGIN_DIR " takes this file as a project");
    row("info of a broken project file", {QStringLiteral("info"), QStringLiteral("junk/broken.ovp")}, 3,
        "ovra info: junk/broken.ovp: Not a project file: it needs a [Project] and a [Files] group");
    row("check of a text", {QStringLiteral("check"), QStringLiteral("junk/notes.txt")}, 3,
        "ovra check: junk/notes.txt: no engine reads files like this one");
    row("info of a directory without projects", {QStringLiteral("info"), QStringLiteral("empty")}, 3,
        "ovra info: empty: no project file in this directory");
    row("unknown option", {QStringLiteral("info"), QStringLiteral("work"), QStringLiteral("--colour")}, 2,
        "ovra info: Unknown option 'colour'.");
    row("info without project", {QStringLiteral("info")}, 2, "ovra info: missing arguments: PROJECT");
    row("check without files", {QStringLiteral("check"), QStringLiteral("-q")}, 2, "ovra check: missing arguments: PROJECT|FILE...");
    row("restore without name", {QStringLiteral("restore"), QStringLiteral("work")}, 2, "ovra restore: missing arguments: PROJECT NAME");
    row("info of two", {QStringLiteral("info"), QStringLiteral("work"), QStringLiteral("work")}, 2, "ovra info: too many arguments: 'work'");
    row("backup name with a slash", {QStringLiteral("backup"), QStringLiteral("work"), QStringLiteral("../up")}, 2,
        "ovra backup: a backup's name has no '/', '\\' or leading '.': '../up'");
}

void OvraProjectTest::failures()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, code);
    QFETCH(QString, error);
    QVERIFY(writeFile(path(QStringLiteral("junk/notes.txt")), "no project\n"));
    QVERIFY(writeFile(path(QStringLiteral("junk/broken.ovp")), "[Elsewhere]\n    x = 1\n"));
    QVERIFY(QDir().mkpath(path(QStringLiteral("empty"))));
    const QMap<QString, QByteArray> before = snapshot(m_dir->path());

    const ToolRun run = ovra(arguments);
    QCOMPARE(run.code, code);
    QCOMPARE(run.out, QString());
    QCOMPARE(run.err, error + (code == 2 ? QStringLiteral("Try 'ovra %1 --help'.\n").arg(arguments.first()) : QString()));
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
    const ToolRun run = ovra({command, QStringLiteral("--help"), QStringLiteral("nowhere")});
    QCOMPARE(run.code, 0);
    QCOMPARE(run.err, QString());
    QCOMPARE(lines(run.out).value(0), usage);
    QVERIFY(run.out.contains(QLatin1String("--quiet")));
    QVERIFY(!QFileInfo::exists(path(QStringLiteral("work/backup"))));
}

QTEST_GUILESS_MAIN(OvraProjectTest)
#include "tst_ovraproject.moc"
