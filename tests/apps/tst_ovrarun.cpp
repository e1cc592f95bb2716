// "ovra run": scripts run by the built program on copies of the example work, the
// sample engine's own script types, and the example scripts with their effect on disk.
#include "testfiles.h"

#include <QImage>
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

const QString examplesDir = QStringLiteral(OVRA_EXAMPLES_DIR);

QString exampleScript(const QString &name)
{
    return examplesDir + QStringLiteral("/scripts/") + name;
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
    void sampleEngineTypes();
    void sampleSpritesAndSounds();
    void sampleAnimations();
    void moveGroup();
    void moveGroupRefusesToOverwrite();
    void boxReport_data();
    void boxReport();
    void applyPaletteFromPicture();
    void applyPaletteByIdentifier();

private:
    // Runs "ovra run" with the arguments (the plug-ins given before any "--").
    Run ovra(const QStringList &arguments);
    // Writes the script into the test directory and runs it on the work copy.
    Run script(const QByteArray &code, const QStringList &scriptArguments = {}, bool withProject = true);
    QString path(const QString &relative) const { return m_dir->path() + QLatin1Char('/') + relative; }

    std::unique_ptr<QTemporaryDir> m_dir;
};

void OvraRunTest::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    QVERIFY(copyTree(examplesDir + QStringLiteral("/sample"), path(QStringLiteral("work"))));
}

Run OvraRunTest::ovra(const QStringList &arguments)
{
    QProcess process;
    process.setWorkingDirectory(m_dir->path());
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), path(QStringLiteral("config")));
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(OVRA_TOOL),
                  QStringList{QStringLiteral("run"), QStringLiteral("--plugins"), QStringLiteral(OVRA_PLUGIN_DIR)} + arguments);
    process.closeWriteChannel();
    Run run;
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit) {
        process.kill();
        return run;
    }
    run.code = process.exitCode();
    run.out = QString::fromUtf8(process.readAllStandardOutput());
    const QStringList lines = QString::fromUtf8(process.readAllStandardError()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString &line : lines) {
        if (!line.startsWith(QLatin1String("QStandardPaths:")))
            run.err += line + QLatin1Char('\n');
    }
    return run;
}

Run OvraRunTest::script(const QByteArray &code, const QStringList &scriptArguments, bool withProject)
{
    if (!writeFile(path(QStringLiteral("test.lua")), code))
        return Run();
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
    const Run run = script("print('one', 2, nil, true)\nio.write('two\\n')\nprint(#arg, arg[1], arg[2], arg[3])\n"
                           "local a, b = ...\nprint(a, b, select('#', ...))\n",
                           {QStringLiteral("ä b"), QStringLiteral("--x"), QStringLiteral("3")}, false);
    QCOMPARE(run.err, QString());
    QCOMPARE(run.code, 0);
    QCOMPARE(run.out, QStringLiteral("one\t2\tnil\ttrue\ntwo\n3\tä b\t--x\t3\nä b\t--x\t3\n"));

    const Run none = script("print(#arg, select('#', ...), project)\n", {}, false);
    QCOMPARE(none.code, 0);
    QCOMPARE(none.out, QStringLiteral("0\t0\tnil\n"));
}

void OvraRunTest::projectGlobal()
{
    const Run run = script("print(project.name, project.typeName ~= nil)\n"
                           "print(project:fileByType(Project.FileType.Sprites):asSprites().count)\n"
                           "print(project:fileByType(Project.FileType.Animations):asSprites())\n");
    QCOMPARE(run.err, QString());
    QCOMPARE(run.code, 0);
    QCOMPARE(run.out, QStringLiteral("Knight\ttrue\n30\nnil\n"));
}

void OvraRunTest::failures_data()
{
    QTest::addColumn<QByteArray>("code");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("output");
    QTest::newRow("syntax error") << QByteArray("print('before')\nlocal x = = 1\n") << QStringList{QStringLiteral("test.lua")}
                                  << 1 << "ovra run: test.lua:2: unexpected symbol near '='\n" << "";
    QTest::newRow("runtime error") << QByteArray("print('before')\n\nlocal t = nil\nprint(t.x)\n")
                                   << QStringList{QStringLiteral("test.lua")} << 1
                                   << "ovra run: test.lua:4: attempt to index a nil value (local 't')\n" << "before\n";
    QTest::newRow("error()") << QByteArray("-- comment\nerror('stopped here')\n") << QStringList{QStringLiteral("test.lua")}
                             << 1 << "ovra run: test.lua:2: stopped here\n" << "";
    // The binding's errors come with the line, without its "lua: error: " prefix.
    QTest::newRow("binding error") << QByteArray("local a = 1\nImage(2, 2, 99)\n") << QStringList{QStringLiteral("test.lua")}
                                   << 1 << "ovra run: test.lua:2: Image: unsupported image format 99 (use Image.Format)\n"
                                   << "";
    QTest::newRow("wrong self") << QByteArray("local s = project:fileByType(Project.FileType.Sprites)\ns.at({}, 0)\n")
                                << QStringList{QStringLiteral("test.lua"), QStringLiteral("work")} << 1
                                << "ovra run: test.lua:2: bad self" << "";
    QTest::newRow("shebang keeps lines") << QByteArray("#!/usr/bin/env ovra-run\nerror('x')\n")
                                         << QStringList{QStringLiteral("test.lua")} << 1 << "ovra run: test.lua:2: x\n" << "";
    QTest::newRow("missing script") << QByteArray() << QStringList{QStringLiteral("absent.lua")} << 3
                                    << "ovra run: absent.lua: No such file or directory\n" << "";
    QTest::newRow("missing project") << QByteArray("print(1)") << QStringList{QStringLiteral("test.lua"), QStringLiteral("nowhere")}
                                     << 3 << "ovra run: nowhere: no such file or directory\n" << "";
    QTest::newRow("no script") << QByteArray() << QStringList() << 2 << "ovra run: missing arguments" << "";
    QTest::newRow("too many") << QByteArray("print(1)") << QStringList{QStringLiteral("test.lua"), QStringLiteral("work"), QStringLiteral("x")}
                              << 2 << "ovra run: too many arguments: 'x'" << "";
}

void OvraRunTest::failures()
{
    QFETCH(QByteArray, code);
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QFETCH(QString, message);
    QFETCH(QString, output);
    if (!code.isEmpty())
        QVERIFY(writeFile(path(QStringLiteral("test.lua")), code));
    const Run run = ovra(arguments);
    QCOMPARE(run.code, exitCode);
    QVERIFY2(run.err.startsWith(message), qPrintable(run.err));
    QCOMPARE(run.out, output);
}

void OvraRunTest::sampleEngineTypes()
{
    const Run run = script("print(SampleEngine.suffix(Project.FileType.Sprites), SampleEngine.fileKey(SampleEngine.FileType.Definitions))\n"
                           "print(SampleEngine.fileTypeOfSuffix('OAN'), SampleEngine.fileTypeOfKey('nothing'))\n"
                           "local engine = project.parent.engine\n"
                           "print(engine.gameSize.width, engine.gameSize.height, engine.path ~= nil)\n",
                           {}, true);
    QCOMPARE(run.err, QString());
    QCOMPARE(run.out, QStringLiteral("osp\tdefinitions\n3\t-1\n640\t480\ttrue\n"));
}

void OvraRunTest::sampleSpritesAndSounds()
{
    const Run run = script(
        "local sprites = project:fileByType(Project.FileType.Sprites):asSprites()\n"
        "local sprite = sprites:findSprite(40, 2)\n"
        "print(sprite.group, sprite.number, sprite.index, sprite.sharesPixels, sprites:findSprite(40, 99))\n"
        "local copy = sprite:duplicate()\n"
        "print(sprite.sharesPixels, #sprite.sharingSprites, sprite.sharingSprites[1] == copy.index)\n"
        "copy:setIdentifier(41, 7)\n"
        "print(sprites:findSprite(41, 7).index == copy.index, sprites.canUndo)\n"
        "print(pcall(function() copy.number = 70000 end))\n"
        "local palette = sprites:findPalette(sprite.palette.group, sprite.palette.number)\n"
        "print(palette.index == sprite.palette.index)\n"
        "local bank = project:fileByType(Project.FileType.Sounds):asSounds()\n"
        "local count = bank.count\n"
        "print(bank:addFile(5, 5, BankSound.Codec.Wav, 'not a sound'), bank.count == count)\n"
        "print(pcall(bank.addFile, bank, 5, 5, 9, ''))\n"
        "local first = bank:at(0)\n"
        "print(bank:findSound(first.group, first.number).index, first.codec >= 1, first.byteCount > 44)\n");
    QCOMPARE(run.err, QString());
    QCOMPARE(run.code, 0);
    const QStringList lines = run.out.split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), 9);
    QVERIFY2(lines.at(0).startsWith(QLatin1String("40\t2\t")) && lines.at(0).endsWith(QLatin1String("\tfalse\tnil")),
             qPrintable(lines.at(0)));
    QCOMPARE(lines.at(1), QStringLiteral("true\t1\ttrue"));
    QCOMPARE(lines.at(2), QStringLiteral("true\ttrue"));
    QVERIFY2(lines.at(3).startsWith(QLatin1String("false\tlua: error: test.lua:8: ")) && lines.at(3).contains(QLatin1String("number 70000 outside 0 to 65535")),
             qPrintable(lines.at(3)));
    QCOMPARE(lines.at(4), QStringLiteral("true"));
    QCOMPARE(lines.at(5), QStringLiteral("nil\ttrue"));
    QVERIFY2(lines.at(6).contains(QLatin1String("codec 9 is none of BankSound.Codec")), qPrintable(lines.at(6)));
    QCOMPARE(lines.at(7), QStringLiteral("0\ttrue\ttrue"));
    // Nothing was saved: the work on disk is as it came.
    QCOMPARE(readFile(path(QStringLiteral("work/knight/knight.osp"))),
             readFile(examplesDir + QStringLiteral("/sample/knight/knight.osp")));
}

void OvraRunTest::sampleAnimations()
{
    const Run run = script("local animations = project:fileByType(Project.FileType.Animations):asAnimations()\n"
                           "local walk = animations:at(1)\n"
                           "print(walk.identifier, walk.name, walk.loopPoint)\n"
                           "local frame = walk:frameAt(0)\n"
                           "print(frame.spriteGroup, frame.spriteNumber, frame.isLoopPoint, frame.hasBoxes)\n"
                           "frame:setSprite(11, 4)\n"
                           "frame = animations:at(1):frameAt(0)\n"
                           "print(frame.spriteGroup, frame.spriteNumber, animations.isModified)\n"
                           "animations:undo()\n"
                           "print(animations:at(1):frameAt(0).spriteGroup, animations:newIdentifier())\n"
                           "print(animations:optimize())\n");
    QCOMPARE(run.err, QString());
    QCOMPARE(run.code, 0);
    QCOMPARE(run.out, QStringLiteral("10\tWalk\t0\n10\t0\ttrue\ttrue\n11\t4\ttrue\n10\t1\n0\n"));
}

void OvraRunTest::moveGroup()
{
    const QString animationFile = path(QStringLiteral("work/knight/knight.oan"));
    const QByteArray before = readFile(animationFile);
    QVERIFY(before.contains("frame (200, 2) delay=6"));
    Run run = ovra({exampleScript(QStringLiteral("movegroup.lua")), QStringLiteral("work"), QStringLiteral("--"),
                    QStringLiteral("200"), QStringLiteral("210")});
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

void OvraRunTest::moveGroupRefusesToOverwrite()
{
    const QByteArray sprites = readFile(path(QStringLiteral("work/knight/knight.osp")));
    const QByteArray animations = readFile(path(QStringLiteral("work/knight/knight.oan")));
    // Group 10 has sprites 0 to 5, and 200 brings 0 to 3.
    Run run = ovra({exampleScript(QStringLiteral("movegroup.lua")), QStringLiteral("work"), QStringLiteral("--"),
                    QStringLiteral("200"), QStringLiteral("10")});
    QCOMPARE(run.code, 1);
    QCOMPARE(run.err, QStringLiteral("ovra run: sprite 10,0 exists already; nothing moved\n"));
    run = ovra({exampleScript(QStringLiteral("movegroup.lua")), QStringLiteral("work"), QStringLiteral("--"), QStringLiteral("x")});
    QCOMPARE(run.code, 1);
    QVERIFY2(run.err.contains(QLatin1String("usage: ovra run movegroup.lua PROJECT -- FROM TO")), qPrintable(run.err));
    QCOMPARE(readFile(path(QStringLiteral("work/knight/knight.osp"))), sprites);
    QCOMPARE(readFile(path(QStringLiteral("work/knight/knight.oan"))), animations);
}

void OvraRunTest::boxReport_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("output");
    QTest::newRow("any") << ""
                         << "1000 \"Spark\": frames 1, 2, 3, 4 of 4 without boxes\n"
                            "1020 \"Fireball, mirrored\": frames 1, 2, 3, 4 of 4 without boxes\n"
                            "2 of 8 animations have frames without boxes\n";
    QTest::newRow("attack") << "attack"
                            << "0 \"Idle\": frames 1, 2, 3, 4 of 4 without attack boxes\n";
}

void OvraRunTest::boxReport()
{
    QFETCH(QString, kind);
    QFETCH(QString, output);
    const QByteArray animations = readFile(path(QStringLiteral("work/knight/knight.oan")));
    QStringList arguments{exampleScript(QStringLiteral("boxreport.lua")), QStringLiteral("work")};
    if (!kind.isEmpty())
        arguments << QStringLiteral("--") << kind;
    const Run run = ovra(arguments);
    QCOMPARE(run.err, QString());
    QCOMPARE(run.code, 0);
    QVERIFY2(run.out.startsWith(output), qPrintable(run.out));
    QCOMPARE(readFile(path(QStringLiteral("work/knight/knight.oan"))), animations);
}

void OvraRunTest::applyPaletteFromPicture()
{
    // A picture whose table is a red ramp; its pixels don't matter.
    QImage picture(2, 2, QImage::Format_Indexed8);
    QVector<QRgb> ramp(256);
    for (int i = 0; i < 256; ++i)
        ramp[i] = qRgb(i, 0, 0);
    picture.setColorTable(ramp);
    picture.fill(0);
    QVERIFY(picture.save(path(QStringLiteral("red.png"))));

    Run run = ovra({exampleScript(QStringLiteral("applypalette.lua")), QStringLiteral("work"), QStringLiteral("--"),
                    QStringLiteral("red.png"), QStringLiteral("0"), QStringLiteral("1000")});
    QCOMPARE(run.err, QString());
    QCOMPARE(run.code, 0);
    QVERIFY2(run.out.contains(QLatin1String(" on 4 sprites; 4 true-colour sprites left as they were")), qPrintable(run.out));
    // Read back from disk: the group's sprites show the ramp, others keep their palette.
    run = script("local s = project:fileByType(Project.FileType.Sprites):asSprites()\n"
                 "local p = s:findSprite(0, 2).palette\n"
                 "print(p.colorTable[201].red, p.colorTable[201].green, s:findSprite(10, 0).palette.index ~= p.index)\n"
                 "local image = s:findSprite(0, 2).image\n"
                 "print(image:color(image:pixel(0, 0)) == (0xFF000000 | (image:pixel(0, 0) << 16)))\n"
                 "print(s:findSprite(1000, 0).palette)\n");
    QCOMPARE(run.err, QString());
    QCOMPARE(run.out, QStringLiteral("200\t0\ttrue\ntrue\nnil\n"));
}

void OvraRunTest::applyPaletteByIdentifier()
{
    // The palette of sprite 50,0, given to group 40 by its identifier.
    Run run = script("local s = project:fileByType(Project.FileType.Sprites):asSprites()\n"
                     "local p = s:findSprite(50, 0).palette\nprint(p.group .. ',' .. p.number)\n");
    QCOMPARE(run.code, 0);
    const QString identifier = run.out.trimmed();
    run = ovra({exampleScript(QStringLiteral("applypalette.lua")), QStringLiteral("work"), QStringLiteral("--"), identifier,
                QStringLiteral("40")});
    QCOMPARE(run.err, QString());
    QCOMPARE(run.out, QStringLiteral("palette %1 on 4 sprites; 0 true-colour sprites left as they were\n").arg(identifier));
    run = script("local s = project:fileByType(Project.FileType.Sprites):asSprites()\n"
                 "print(s:findSprite(40, 3).palette.index == s:findSprite(50, 0).palette.index)\n");
    QCOMPARE(run.out, QStringLiteral("true\n"));
    run = ovra({exampleScript(QStringLiteral("applypalette.lua")), QStringLiteral("work"), QStringLiteral("--"),
                QStringLiteral("99,99"), QStringLiteral("40")});
    QCOMPARE(run.code, 1);
    QCOMPARE(run.err, QStringLiteral("ovra run: the project has no palette 99,99\n"));
}

QTEST_GUILESS_MAIN(OvraRunTest)
#include "tst_ovrarun.moc"
