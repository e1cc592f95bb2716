// The project commands of the tool (info, check, backup, restore, backups), run as the
// built program on copies of the example work and on damaged copies of it.
#include "testfiles.h"

#include <QDirIterator>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

struct Run
{
    int code = -1;
    QString out;
    QString err;
};

// The example work copied to `target`.
bool copyWork(const QString &target)
{
    return copyTree(QStringLiteral(OVRA_EXAMPLES_DIR "/sample"), target);
}

// Every file below `root` with its bytes.
QMap<QString, QByteArray> snapshot(const QString &root)
{
    QMap<QString, QByteArray> files;
    QDirIterator it(root, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString name = it.next();
        files.insert(QDir(root).relativeFilePath(name), readFile(name));
    }
    return files;
}

QStringList lines(const QString &text)
{
    return text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

// A definition file with an unknown line, an unclosed header and a key its group
// doesn't have.
const QByteArray brokenDefinitions("# The knight, broken on purpose.\n@version 1\n\n[Character: knight]\n"
                                   "    life = 1000\n%%% not a line\n    power = 3000\n[Move: punch\n    damage = 40\n");

} // namespace

class OvraProjectTest : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void infoText();
    void infoJson();
    void checkCleanWork();
    void checkDamaged_data();
    void checkDamaged();
    void checkJson();
    void truncatedSpriteContainer();
    void backupAndRestore();
    void backupsListNewestLast();
    void restoreRefusesUnknownName();
    void failures_data();
    void failures();
    void help_data();
    void help();

private:
    Run ovra(const QStringList &arguments);
    QString path(const QString &relative) const { return m_dir->path() + QLatin1Char('/') + relative; }
    QJsonObject json(const Run &run);

    std::unique_ptr<QTemporaryDir> m_dir;
};

void OvraProjectTest::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    QVERIFY(copyWork(path(QStringLiteral("work"))));
}

Run OvraProjectTest::ovra(const QStringList &arguments)
{
    QProcess process;
    process.setWorkingDirectory(m_dir->path());
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    // The engines keep their configuration there; the tests' runs keep theirs apart.
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), path(QStringLiteral("config")));
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(OVRA_TOOL), arguments + QStringList{QStringLiteral("--plugins"), QStringLiteral(OVRA_PLUGIN_DIR)});
    process.closeWriteChannel();
    Run run;
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit) {
        process.kill();
        return run;
    }
    run.code = process.exitCode();
    run.out = QString::fromUtf8(process.readAllStandardOutput());
    // Qt's own notes about the environment are not the tool's words.
    for (const QString &line : lines(QString::fromUtf8(process.readAllStandardError()))) {
        if (!line.startsWith(QLatin1String("QStandardPaths:")))
            run.err += line + QLatin1Char('\n');
    }
    return run;
}

QJsonObject OvraProjectTest::json(const Run &run)
{
    // One object on one line.
    if (lines(run.out).size() != 1)
        return QJsonObject();
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(run.out.toUtf8(), &error);
    return error.error == QJsonParseError::NoError ? document.object() : QJsonObject();
}

void OvraProjectTest::infoText()
{
    const Run run = ovra({QStringLiteral("info"), QStringLiteral("work")});
    QCOMPARE(run.code, 0);
    QCOMPARE(run.err, QString());
    const QStringList out = lines(run.out);
    QCOMPARE(out.value(0), QStringLiteral("Knight 1.0 (work/knight/knight.ovp)"));
    for (const char *line : {"  Sample projects:     knight.ovp", "  Definitions:         knight.def",
                             "  Sprite containers:   knight.osp", "  Animations:          knight.oan",
                             "  Sound banks:         knight.sbk", "  Scripts:             knight.lua",
                             "Sprites:    30", "Palettes:   3", "Animations: 8 (32 frames)", "Sounds:     5",
                             "Messages:   0 errors, 0 warnings, 0 notes"})
        QVERIFY2(out.contains(QLatin1String(line)), line);
}

void OvraProjectTest::infoJson()
{
    // The directory of the project works as well as the work or the file.
    const Run run = ovra({QStringLiteral("info"), QStringLiteral("--json"), path(QStringLiteral("work/knight"))});
    QCOMPARE(run.code, 0);
    const QJsonObject info = json(run);
    QVERIFY2(!info.isEmpty(), qPrintable(run.out));
    QCOMPARE(info.value(QStringLiteral("project")).toString(), QStringLiteral("Knight"));
    QCOMPARE(info.value(QStringLiteral("engine")).toString(), QStringLiteral("sample"));
    QCOMPARE(info.value(QStringLiteral("file")).toString(), path(QStringLiteral("work/knight/knight.ovp")));
    QCOMPARE(info.value(QStringLiteral("sprites")).toInt(-1), 30);
    QCOMPARE(info.value(QStringLiteral("palettes")).toInt(-1), 3);
    QCOMPARE(info.value(QStringLiteral("animations")).toInt(-1), 8);
    QCOMPARE(info.value(QStringLiteral("frames")).toInt(-1), 32);
    QCOMPARE(info.value(QStringLiteral("sounds")).toInt(-1), 5);
    QCOMPARE(info.value(QStringLiteral("errors")).toInt(-1), 0);
    QCOMPARE(info.value(QStringLiteral("warnings")).toInt(-1), 0);
    QCOMPARE(info.value(QStringLiteral("notes")).toInt(-1), 0);
    QCOMPARE(info.value(QStringLiteral("messages")).toArray().size(), 0);

    QMap<int, QString> files;
    for (const QJsonValue &value : info.value(QStringLiteral("files")).toArray())
        files.insert(value.toObject().value(QStringLiteral("type")).toInt(), value.toObject().value(QStringLiteral("path")).toString());
    const QMap<int, QString> expected{{0, QStringLiteral("knight.ovp")}, {1, QStringLiteral("knight.osp")},
                                      {2, QStringLiteral("knight.sbk")}, {3, QStringLiteral("knight.oan")},
                                      {4, QStringLiteral("knight.lua")}, {5, QStringLiteral("knight.def")}};
    QCOMPARE(files, expected);
}

void OvraProjectTest::checkCleanWork()
{
    const Run run = ovra({QStringLiteral("check"), QStringLiteral("work")});
    QCOMPARE(run.code, 0);
    QCOMPARE(run.out, QString());
    // The project file, the definitions, the animations and the script.
    QCOMPARE(run.err, QStringLiteral("0 errors, 0 warnings in 4 files\n"));
}

void OvraProjectTest::checkDamaged_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("shown"); // the file as the messages name it
    QTest::addColumn<QString>("summary");

    QTest::newRow("the work") << QStringList{QStringLiteral("work")} << QStringLiteral("work/knight/knight.def")
                              << QStringLiteral("2 errors, 1 warning in 4 files");
    QTest::newRow("the project file, absolute")
        << QStringList{QStringLiteral("@/work/knight/knight.ovp")} << QStringLiteral("@/work/knight/knight.def")
        << QStringLiteral("2 errors, 1 warning in 4 files");
    QTest::newRow("the file alone") << QStringList{QStringLiteral("work/knight/knight.def")}
                                    << QStringLiteral("work/knight/knight.def") << QStringLiteral("2 errors, 1 warning in 1 file");
    QTest::newRow("the file, options last")
        << QStringList{QStringLiteral("./work/knight/knight.def"), QStringLiteral("work/knight/knight.oan"), QStringLiteral("-q")}
        << QStringLiteral("./work/knight/knight.def") << QString();
}

void OvraProjectTest::checkDamaged()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, shown);
    QFETCH(QString, summary);
    QVERIFY(writeFile(path(QStringLiteral("work/knight/knight.def")), brokenDefinitions));
    for (QString &argument : arguments)
        argument.replace(QLatin1Char('@'), m_dir->path());
    shown.replace(QLatin1Char('@'), m_dir->path());
    const QMap<QString, QByteArray> before = snapshot(path(QStringLiteral("work")));

    const Run run = ovra(QStringList{QStringLiteral("check")} + arguments);
    QCOMPARE(run.code, 1);
    QCOMPARE(lines(run.out), (QStringList{
                                 shown + QStringLiteral(":6:1: error: Unknown line: expected a header [Kind: name] or a value key = value"),
                                 shown + QStringLiteral(":8:1: error: Unclosed bracket"),
                                 shown + QStringLiteral(":9:5: warning: Unknown key 'damage' of [Character], read as text"),
                             }));
    QCOMPARE(run.err, summary.isEmpty() ? QString() : summary + QLatin1Char('\n'));
    QCOMPARE(snapshot(path(QStringLiteral("work"))), before);
}

void OvraProjectTest::checkJson()
{
    QVERIFY(writeFile(path(QStringLiteral("work/knight/knight.oan")),
                      readFile(path(QStringLiteral("work/knight/knight.oan"))) + "zzz\n"));
    const int lastLine = lines(QString::fromUtf8(readFile(path(QStringLiteral("work/knight/knight.oan"))))).size();

    const Run run = ovra({QStringLiteral("check"), QStringLiteral("--json"), QStringLiteral("work")});
    QCOMPARE(run.code, 1);
    QCOMPARE(run.err, QString());
    const QJsonObject result = json(run);
    QCOMPARE(result.value(QStringLiteral("files")).toInt(), 4);
    QCOMPARE(result.value(QStringLiteral("errors")).toInt(), 1);
    QCOMPARE(result.value(QStringLiteral("warnings")).toInt(), 0);
    const QJsonArray messages = result.value(QStringLiteral("messages")).toArray();
    QCOMPARE(messages.size(), 1);
    const QJsonObject message = messages.at(0).toObject();
    QCOMPARE(message.value(QStringLiteral("file")).toString(), QStringLiteral("work/knight/knight.oan"));
    QCOMPARE(message.value(QStringLiteral("line")).toInt(), lastLine);
    QCOMPARE(message.value(QStringLiteral("column")).toInt(), 1);
    QCOMPARE(message.value(QStringLiteral("type")).toString(), QStringLiteral("error"));
    QCOMPARE(message.value(QStringLiteral("text")).toString(), QStringLiteral("Unknown line: expected animation, frame, attack or body"));
}

void OvraProjectTest::truncatedSpriteContainer()
{
    const QString container = path(QStringLiteral("work/knight/knight.osp"));
    QVERIFY(writeFile(container, readFile(container).left(100)));
    const QMap<QString, QByteArray> before = snapshot(path(QStringLiteral("work")));

    Run run = ovra({QStringLiteral("info"), QStringLiteral("work")});
    QCOMPARE(run.code, 0);
    const QStringList out = lines(run.out);
    QVERIFY(out.contains(QStringLiteral("Sprites:    0")));
    QVERIFY(out.contains(QStringLiteral("Sounds:     5")));
    QVERIFY(out.contains(QStringLiteral("Messages:   1 error, 0 warnings, 0 notes")));
    // The project file's line that lists the container.
    QVERIFY2(out.contains(QStringLiteral("  work/knight/knight.ovp:12:1: error: The file 'knight.osp' can't be read: "
                                         "The sprite container is cut short.")),
             qPrintable(run.out));

    run = ovra({QStringLiteral("info"), QStringLiteral("--json"), QStringLiteral("work")});
    QCOMPARE(run.code, 0);
    const QJsonObject info = json(run);
    QCOMPARE(info.value(QStringLiteral("errors")).toInt(), 1);
    QCOMPARE(info.value(QStringLiteral("sprites")).toInt(-1), 0);
    QCOMPARE(info.value(QStringLiteral("palettes")).toInt(-1), 0);
    QCOMPARE(info.value(QStringLiteral("files")).toArray().size(), 5);

    // The load's messages count for check too.
    run = ovra({QStringLiteral("check"), QStringLiteral("work")});
    QCOMPARE(run.code, 1);
    QVERIFY(run.out.startsWith(QStringLiteral("work/knight/knight.ovp:12:1: error: The file 'knight.osp' can't be read")));
    // Neither command wrote anything, the damaged file least of all.
    QCOMPARE(snapshot(path(QStringLiteral("work"))), before);
}

void OvraProjectTest::backupAndRestore()
{
    const QMap<QString, QByteArray> original = snapshot(path(QStringLiteral("work")));
    Run run = ovra({QStringLiteral("backup"), QStringLiteral("work"), QStringLiteral("first")});
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
    QVERIFY(writeFile(path(QStringLiteral("work/knight/knight.def")), brokenDefinitions));
    QVERIFY(writeFile(path(QStringLiteral("work/knight/knight.sbk")), QByteArray(64, '\x7f')));
    run = ovra({QStringLiteral("restore"), QStringLiteral("work"), zip.chopped(4)});
    QCOMPARE(run.code, 0);
    QCOMPARE(run.out, QStringLiteral("Restored %1 over work\n").arg(zip.chopped(4)));
    QMap<QString, QByteArray> after = snapshot(path(QStringLiteral("work")));
    QVERIFY(after.remove(QStringLiteral("backup/") + zip));
    QCOMPARE(after.keys(), original.keys());
    for (auto it = original.cbegin(); it != original.cend(); ++it)
        QVERIFY2(after.value(it.key()) == it.value(), qPrintable(it.key()));
}

void OvraProjectTest::backupsListNewestLast()
{
    Run run = ovra({QStringLiteral("backups"), QStringLiteral("work")});
    QCOMPARE(run.code, 0);
    QCOMPARE(run.out, QStringLiteral("No backups in work/backup\n"));

    // The same name twice in a row: two backups all the same.
    for (const char *name : {"one", "two", "two"})
        QCOMPARE(ovra({QStringLiteral("backup"), QStringLiteral("-q"), QStringLiteral("work"), QLatin1String(name)}).out, QString());

    run = ovra({QStringLiteral("backups"), QStringLiteral("work"), QStringLiteral("--json")});
    QCOMPARE(run.code, 0);
    const QJsonObject result = json(run);
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

    run = ovra({QStringLiteral("backups"), QStringLiteral("work")});
    const QStringList out = lines(run.out);
    QCOMPARE(out.size(), 3);
    for (int i = 0; i < 3; ++i)
        QVERIFY2(out.at(i).endsWith(QLatin1String("KiB  ") + names.at(i)), qPrintable(out.at(i)));
}

void OvraProjectTest::restoreRefusesUnknownName()
{
    QCOMPARE(ovra({QStringLiteral("backup"), QStringLiteral("work"), QStringLiteral("kept")}).code, 0);
    const QString kept = QDir(path(QStringLiteral("work/backup"))).entryList(QDir::Files).value(0).chopped(4);
    const QMap<QString, QByteArray> before = snapshot(path(QStringLiteral("work")));
    const Run run = ovra({QStringLiteral("restore"), QStringLiteral("work"), QStringLiteral("nosuch")});
    QCOMPARE(run.code, 3);
    QCOMPARE(run.out, QString());
    QCOMPARE(run.err, QStringLiteral("ovra restore: nosuch: no such backup; there are: %1\n").arg(kept));
    QCOMPARE(snapshot(path(QStringLiteral("work"))), before);
}

void OvraProjectTest::failures_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("error"); // the first line on stderr

    const auto row = [](const char *name, const QStringList &arguments, int code, const char *error) {
        QTest::newRow(name) << arguments << code << QString::fromUtf8(error);
    };
    row("info of nothing", {QStringLiteral("info"), QStringLiteral("nowhere")}, 3,
        "ovra info: nowhere: no such file or directory");
    row("check of nothing", {QStringLiteral("check"), QStringLiteral("work"), QStringLiteral("nowhere.def")}, 3,
        "ovra check: nowhere.def: no such file or directory");
    row("backup of nothing", {QStringLiteral("backup"), QStringLiteral("nowhere/x.ovp")}, 3,
        "ovra backup: nowhere/x.ovp: no such file or directory");
    row("info of a text", {QStringLiteral("info"), QStringLiteral("junk/notes.txt")}, 3,
        "ovra info: junk/notes.txt: no engine of " OVRA_PLUGIN_DIR " takes this file as a project");
    row("info of a broken project file", {QStringLiteral("info"), QStringLiteral("junk/broken.ovp")}, 3,
        "ovra info: junk/broken.ovp: Not a project file: it needs a [Project] and a [Files] group");
    row("check of a text", {QStringLiteral("check"), QStringLiteral("junk/notes.txt")}, 3,
        "ovra check: junk/notes.txt: no engine reads files like this one");
    row("info of a directory without projects", {QStringLiteral("info"), QStringLiteral("config")}, 3,
        "ovra info: config: no project file in this directory");
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
    QVERIFY(QDir().mkpath(path(QStringLiteral("config"))));
    const QMap<QString, QByteArray> before = snapshot(path(QStringLiteral("work")));
    const QMap<QString, QByteArray> junk = snapshot(path(QStringLiteral("junk")));

    const Run run = ovra(arguments);
    QCOMPARE(run.code, code);
    QCOMPARE(lines(run.err).value(0), error);
    if (code == 2)
        QCOMPARE(lines(run.err).value(1), QStringLiteral("Try 'ovra %1 --help'.").arg(arguments.first()));
    QCOMPARE(snapshot(path(QStringLiteral("work"))), before);
    QCOMPARE(snapshot(path(QStringLiteral("junk"))), junk);
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
    const Run run = ovra({command, QStringLiteral("--help"), QStringLiteral("nowhere")});
    QCOMPARE(run.code, 0);
    QCOMPARE(run.err, QString());
    QCOMPARE(lines(run.out).value(0), usage);
    QVERIFY(run.out.contains(QLatin1String("--quiet")));
    QVERIFY(!QFileInfo::exists(path(QStringLiteral("work/backup"))));
}

QTEST_GUILESS_MAIN(OvraProjectTest)
#include "tst_ovraproject.moc"
