// "ovra run": scripts run by the built program on copies of the example work, and the
// example scripts with their effect on disk.
#include "ovratool.h"

#include <QImage>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

QString exampleScript(const QString &name)
{
    return QStringLiteral(OVRA_EXAMPLES_DIR "/scripts/") + name;
}

} // namespace

class OvraRunTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void printAndArguments();
    void projectGlobal();
    void failures_data();
    void failures();
    void examples_data();
    void examples();
    void moveGroup();

private:
    ToolRun ovra(const QStringList &arguments) { return runOvra(m_dir->path(), QStringList{QStringLiteral("run")} + arguments); }
    // Writes the script into the test's directory and runs it, on the work unless told not to.
    ToolRun script(const QByteArray &code, const QStringList &scriptArguments = {}, bool withProject = true);
    QString path(const QString &relative) const { return m_dir->filePath(relative); }

    std::unique_ptr<QTemporaryDir> m_dir;
};

void OvraRunTest::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    QVERIFY(copyWork(path(QStringLiteral("work"))));
}

ToolRun OvraRunTest::script(const QByteArray &code, const QStringList &scriptArguments, bool withProject)
{
    if (!writeFile(path(QStringLiteral("test.lua")), code))
        return ToolRun();
    QStringList arguments{QStringLiteral("test.lua")};
    if (withProject)
        arguments << QStringLiteral("work");
    if (!scriptArguments.isEmpty())
        arguments << QStringLiteral("--") << scriptArguments;
    return ovra(arguments);
}

void OvraRunTest::printAndArguments()
{
    // print and io.write share stdout in the order the script wrote; "--x" after "--" is
    // the script's, not an option of the tool.
    const ToolRun run = script("print('one', 2, nil, true)\nio.write('two\\n')\nprint(#arg, arg[1], arg[2], arg[3])\n"
                               "local a, b = ...\nprint(a, b, select('#', ...))\n",
                               {QStringLiteral("ä b"), QStringLiteral("--x"), QStringLiteral("3")}, false);
    QCOMPARE(run.err, QString());
    QCOMPARE(run.code, 0);
    QCOMPARE(run.out, QStringLiteral("one\t2\tnil\ttrue\ntwo\n3\tä b\t--x\t3\nä b\t--x\t3\n"));

    const ToolRun none = script("print(#arg, select('#', ...), project)\n", {}, false);
    QCOMPARE(none.code, 0);
    QCOMPARE(none.out, QStringLiteral("0\t0\tnil\n"));
}

void OvraRunTest::projectGlobal()
{
    // The library's classes, the picture type and the engine's own types are there.
    const ToolRun run = script("print(project.name, project.typeName ~= nil, Image(2, 1).width)\n"
                               "print(project:fileByType(Project.FileType.Sprites):asSprites():findSprite(40, 2).number)\n"
                               "print(project:fileByType(Project.FileType.Animations):asSprites())\n");
    QCOMPARE(run.err, QString());
    QCOMPARE(run.code, 0);
    QCOMPARE(run.out, QStringLiteral("Knight\ttrue\t2\n2\nnil\n"));
}

void OvraRunTest::failures_data()
{
    QTest::addColumn<QByteArray>("code"); // of test.lua; none: no such file
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("output");

    QTest::newRow("syntax error") << QByteArray("print('before')\nlocal x = = 1\n") << "test.lua" << 1
                                  << "ovra run: test.lua:2: unexpected symbol near '='\n" << "";
    QTest::newRow("runtime error") << QByteArray("print('before')\n\nlocal t = nil\nprint(t.x)\n") << "test.lua" << 1
                                   << "ovra run: test.lua:4: attempt to index a nil value (local 't')\n" << "before\n";
    QTest::newRow("error()") << QByteArray("-- comment\nerror('stopped here')\n") << "test.lua" << 1
                             << "ovra run: test.lua:2: stopped here\n" << "";
    // The binding's errors come with the line, without its "lua: error: " prefix.
    QTest::newRow("binding error") << QByteArray("local a = 1\nImage(2, 2, 99)\n") << "test.lua" << 1
                                   << "ovra run: test.lua:2: Image: unsupported image format 99 (use Image.Format)\n" << "";
    QTest::newRow("wrong self") << QByteArray("local s = project:fileByType(Project.FileType.Sprites)\ns.at({}, 0)\n")
                                << "test.lua work" << 1
                                << "ovra run: test.lua:2: bad self to 'Sprites.at' (expected Sprites, got table)\n" << "";
    QTest::newRow("shebang keeps lines") << QByteArray("#!/usr/bin/env ovra-run\nerror('x')\n") << "test.lua" << 1
                                         << "ovra run: test.lua:2: x\n" << "";
    QTest::newRow("missing script") << QByteArray() << "absent.lua" << 3 << "ovra run: absent.lua: No such file or directory\n" << "";
    QTest::newRow("missing project") << QByteArray("print(1)") << "test.lua nowhere" << 3
                                     << "ovra run: nowhere: no such file or directory\n" << "";
    QTest::newRow("no script") << QByteArray() << "" << 2
                               << "ovra run: missing arguments: SCRIPT.lua [PROJECT] [-- ARGS]\nTry 'ovra run --help'.\n" << "";
    QTest::newRow("too many") << QByteArray("print(1)") << "test.lua work x" << 2
                              << "ovra run: too many arguments: 'x'\nTry 'ovra run --help'.\n" << "";
}

void OvraRunTest::failures()
{
    QFETCH(QByteArray, code);
    QFETCH(QString, arguments);
    QFETCH(int, exitCode);
    QFETCH(QString, message);
    QFETCH(QString, output);
    if (!code.isEmpty())
        QVERIFY(writeFile(path(QStringLiteral("test.lua")), code));
    const QMap<QString, QByteArray> before = snapshot(path(QStringLiteral("work")));
    const ToolRun run = ovra(arguments.split(QLatin1Char(' '), Qt::SkipEmptyParts));
    QCOMPARE(run.code, exitCode);
    QCOMPARE(run.err, message);
    QCOMPARE(run.out, output);
    QCOMPARE(snapshot(path(QStringLiteral("work"))), before);
}

void OvraRunTest::examples_data()
{
    QTest::addColumn<QString>("arguments"); // the example script, and its own arguments
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("out");
    QTest::addColumn<QString>("err");
    // A script run afterwards on the work and what it prints; none: the work is as it was.
    QTest::addColumn<QByteArray>("check");
    QTest::addColumn<QString>("checked");

    const auto row = [](const char *name, const char *arguments, int code, const QString &out, const QString &err,
                        const QByteArray &check = QByteArray(), const QString &checked = QString()) {
        QTest::newRow(name) << QString::fromLatin1(arguments) << code << out << err << check << checked;
    };
    const QString none;
    row("box report", "boxreport.lua", 0,
        QStringLiteral("1000 \"Spark\": frames 1, 2, 3, 4 of 4 without boxes\n"
                       "1020 \"Fireball, mirrored\": frames 1, 2, 3, 4 of 4 without boxes\n"
                       "2 of 8 animations have frames without boxes\n"),
        none);
    // The punch's third frame is the only one that hits.
    row("box report of attacks", "boxreport.lua attack", 0,
        QStringLiteral("0 \"Idle\": frames 1, 2, 3, 4 of 4 without attack boxes\n"
                       "10 \"Walk\": frames 1, 2, 3, 4, 5, 6 of 6 without attack boxes\n"
                       "200 \"Punch\": frames 1, 2, 4 of 4 without attack boxes\n"
                       "40 \"Jump\": frames 1, 2, 3, 4 of 4 without attack boxes\n"
                       "50 \"Hurt\": frames 1, 2 of 2 without attack boxes\n"
                       "1000 \"Spark\": frames 1, 2, 3, 4 of 4 without attack boxes\n"
                       "1020 \"Fireball, mirrored\": frames 1, 2, 3, 4 of 4 without attack boxes\n"
                       "7 of 8 animations have frames without attack boxes\n"),
        none);
    row("box report of nothing known", "boxreport.lua x", 1, none,
        QStringLiteral("ovra run: KIND is any, body or attack, not 'x'\n"));
    // Group 10 has sprites 0 to 5, and 200 brings 0 to 3.
    row("move onto taken sprites", "movegroup.lua 200 10", 1, none,
        QStringLiteral("ovra run: sprite 10,0 exists already; nothing moved\n"));
    row("move without a target", "movegroup.lua x", 1, none,
        QStringLiteral("ovra run: usage: ovra run movegroup.lua PROJECT -- FROM TO\n"));
    row("palette that isn't there", "applypalette.lua 99,99 40", 1, none,
        QStringLiteral("ovra run: the project has no palette 99,99\n"));
    // A picture's table, a red ramp, as a new palette of the group 0's sprites; the sparks
    // of group 1000 are true-colour and keep none.
    row("palette of a picture", "applypalette.lua red.png 0 1000", 0,
        QStringLiteral("palette 2,0 on 4 sprites; 4 true-colour sprites left as they were\n"), none,
        "local s = project:fileByType(Project.FileType.Sprites):asSprites()\n"
        "local p = s:findSprite(0, 2).palette\n"
        "print(p.colorTable[201].red, p.colorTable[201].green, s:findSprite(10, 0).palette.index ~= p.index)\n"
        "local image = s:findSprite(0, 2).image\n"
        "print(image:color(image:pixel(0, 0)) == (0xFF000000 | (image:pixel(0, 0) << 16)))\n"
        "print(s:findSprite(1000, 0).palette)\n",
        QStringLiteral("200\t0\ttrue\ntrue\nnil\n"));
    // Every sprite of the knight shows palette 0,0; 1,2 is a team's colours.
    row("palette by its identifier", "applypalette.lua 1,2 40", 0,
        QStringLiteral("palette 1,2 on 4 sprites; 0 true-colour sprites left as they were\n"), none,
        "local s = project:fileByType(Project.FileType.Sprites):asSprites()\n"
        "print(s:findSprite(40, 3).palette == s:findPalette(1, 2), s:findSprite(10, 0).palette == s:findPalette(0, 0))\n",
        QStringLiteral("true\ttrue\n"));
}

void OvraRunTest::examples()
{
    QFETCH(QString, arguments);
    QFETCH(int, code);
    QFETCH(QString, out);
    QFETCH(QString, err);
    QFETCH(QByteArray, check);
    QFETCH(QString, checked);

    QImage picture(2, 2, QImage::Format_Indexed8);
    QVector<QRgb> ramp(256);
    for (int i = 0; i < 256; ++i)
        ramp[i] = qRgb(i, 0, 0);
    picture.setColorTable(ramp);
    picture.fill(0);
    QVERIFY(picture.save(path(QStringLiteral("red.png"))));

    const QMap<QString, QByteArray> before = snapshot(path(QStringLiteral("work")));
    QStringList scriptArguments = arguments.split(QLatin1Char(' '));
    const QString example = exampleScript(scriptArguments.takeFirst());
    const ToolRun run = ovra(QStringList{example, QStringLiteral("work"), QStringLiteral("--")} + scriptArguments);
    QCOMPARE(run.err, err);
    QCOMPARE(run.out, out);
    QCOMPARE(run.code, code);
    if (check.isEmpty()) {
        QCOMPARE(snapshot(path(QStringLiteral("work"))), before);
        return;
    }
    const ToolRun after = script(check);
    QCOMPARE(after.err, QString());
    QCOMPARE(after.out, checked);
}

void OvraRunTest::moveGroup()
{
    const QString animationFile = path(QStringLiteral("work/knight/knight.oan"));
    const QByteArray before = readFile(animationFile);
    QVERIFY(before.contains("frame (200, 2) delay=6"));
    ToolRun run = ovra(QStringList{exampleScript(QStringLiteral("movegroup.lua"))} << words("work -- 200 210"));
    QCOMPARE(run.err, QString());
    QCOMPARE(run.code, 0);
    QCOMPARE(run.out, QStringLiteral("moved 4 sprites from group 200 to group 210; 4 frames follow them\n"));
    // The animation file changed in those lines only.
    QByteArray expected = before;
    expected.replace("frame (200, ", "frame (210, ");
    QCOMPARE(readFile(animationFile), expected);
    // A fresh run sees the sprites saved under their new group.
    run = script("local s = project:fileByType(Project.FileType.Sprites):asSprites()\n"
                 "print(s:findSprite(200, 0), s:findSprite(210, 0) ~= nil, s:findSprite(210, 3) ~= nil)\n");
    QCOMPARE(run.out, QStringLiteral("nil\ttrue\ttrue\n"));
}

QTEST_GUILESS_MAIN(OvraRunTest)
#include "tst_ovrarun.moc"
