#include "engine/engine.h"

#include "scriptedanswerer.h"
#include "testfiles.h"
#include "testinterface.h"

#include <QAbstractItemModelTester>
#include <QColor>
#include <QIcon>
#include <QRect>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <QtTest>

using namespace Ovra;

namespace {

class Host : public TestInterface
{
public:
    QString text(uint id) override
    {
        return id == 1 ? QStringLiteral("Parse error: %1 at line %2, column %3")
                       : QStringLiteral("Engine configuration");
    }
};

class TestEngine : public Engine
{
public:
    TestEngine() : Engine(QStringLiteral("tester")) {}
    QString queryString(StringType, uint) const override { return QString(); }
    QString singleFileFilters(int) const override { return QString(); }
    ProjectFile *createFile(int, Project *) override { return nullptr; }
};

// The elements of a file as "element name=... value=..." lines, in order.
QStringList outline(const QString &name)
{
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly))
        return {QStringLiteral("<unreadable>")};
    QXmlStreamReader reader(&file);
    QStringList lines;
    while (reader.readNextStartElement() || !reader.atEnd()) {
        if (!reader.isStartElement())
            continue;
        QString line = reader.name().toString();
        for (const QXmlStreamAttribute &attribute : reader.attributes())
            line += QLatin1Char(' ') + attribute.name() + QLatin1Char('=') + attribute.value();
        lines.append(line);
    }
    return lines;
}

} // namespace

class EnginePrivateTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void instancesAsListModel();
    void savedAndReadBack();
    void valueTyping_data();
    void valueTyping();
    void missingFileIsNoError();
    void malformedFileKeepsWhatWasRead();
    void unreadableAndUnwritableFiles();
    void optionLookup();
    void withoutHostNothingIsStored();

private:
    QTemporaryDir *m_dir = nullptr;
    Host *m_host = nullptr;
    QString configFile() const { return m_host->config + QStringLiteral("/tester_config.xml"); }
};

void EnginePrivateTest::init()
{
    m_dir = new QTemporaryDir;
    m_host = new Host;
    m_host->config = m_dir->filePath(QStringLiteral("config"));
    m_host->install = m_dir->filePath(QStringLiteral("install"));
}

void EnginePrivateTest::cleanup()
{
    delete m_host;
    delete m_dir;
}

void EnginePrivateTest::instancesAsListModel()
{
    TestEngine engine;
    QAbstractItemModelTester tester(&engine, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QCOMPARE(engine.configFileName(), configFile());
    engine.add("Release", "/games/rel/game", "-w", QString());
    engine.add("Debug", "/games/dbg/game", "-d", "/icons/dbg.png");
    engine.add("Old", "/games/old/game", QString(), QString());
    QSignalSpy changed(&engine, &QAbstractItemModel::dataChanged);
    engine.edit(2, "Older", "/games/old/game2", "-x", QString());
    QCOMPARE(changed.count(), 1);
    QCOMPARE(engine.at(2).exe, QStringLiteral("/games/old/game2"));
    engine.move(0, 2);
    engine.move(2, 0);
    engine.move(1, 2);
    QCOMPARE(engine.at(2).name, QStringLiteral("Debug"));
    QCOMPARE(engine.data(engine.index(0)).toString(), QStringLiteral("Release"));
    // A missing icon path falls back to the engine's installed icon.
    QVERIFY(QDir().mkpath(m_host->install + QStringLiteral("/engines/tester")));
    QVERIFY(QImage(4, 4, QImage::Format_ARGB32).save(m_host->install + QStringLiteral("/engines/tester/icon.png")));
    QVERIFY(!engine.data(engine.index(0), Qt::DecorationRole).value<QIcon>().pixmap(4).isNull());
    // An icon of its own wins, even one whose file is missing.
    QVERIFY(engine.data(engine.index(2), Qt::DecorationRole).value<QIcon>().pixmap(4).isNull());
    engine.remove(1);
    engine.remove(7);
    QCOMPARE(engine.count(), 2);
    engine.clear();
    QCOMPARE(engine.rowCount(), 0);
}

void EnginePrivateTest::savedAndReadBack()
{
    {
        TestEngine engine;
        engine.add("Main", "/g/main", "-a b", "/i/main.png");
        engine.add("Second", "/g/second", QString(), QString());
        engine.setOption("zoom", 2);
        engine.setOption("background", QColor(10, 20, 30));
        engine.setOption("area", QRect(1, 2, 3, 4));
        QVERIFY(engine.save()); // makes the missing directory
    }
    QCOMPARE(outline(configFile()),
             QStringList({"configuration",
                          "engine name=Main", "param name=exe value=/g/main",
                          "param name=icon value=/i/main.png", "param name=params value=-a b",
                          "engine name=Second", "param name=exe value=/g/second",
                          "param name=icon value=", "param name=params value=",
                          "config name=area value=1,2,3,4", "config name=background value=10,20,30",
                          "config name=zoom value=2"}));
    TestEngine engine; // reads at construction
    QCOMPARE(engine.count(), 2);
    QCOMPARE(engine.at(0).params, QStringLiteral("-a b"));
    QCOMPARE(engine.at(0).icon, QStringLiteral("/i/main.png"));
    QCOMPARE(engine.at(1).name, QStringLiteral("Second"));
    QCOMPARE(engine.option("zoom").toString(), QStringLiteral("2"));
    QCOMPARE(engine.option("background").value<QColor>(), QColor(10, 20, 30));
}

void EnginePrivateTest::valueTyping_data()
{
    QTest::addColumn<QString>("written");
    QTest::addColumn<QVariant>("read");
    QTest::newRow("three numbers") << "1,2,3" << QVariant(QColor(1, 2, 3));
    // A rectangle is written as four numbers and comes back as the colour of the first three.
    QTest::newRow("four numbers lose the fourth") << "1,2,3,4" << QVariant(QColor(1, 2, 3));
    QTest::newRow("two numbers") << "1,2" << QVariant(QStringLiteral("1,2"));
    QTest::newRow("spaces") << "1, 2, 3" << QVariant(QStringLiteral("1, 2, 3"));
    QTest::newRow("five numbers") << "1,2,3,4,5" << QVariant(QStringLiteral("1,2,3,4,5"));
    QTest::newRow("text") << "Courier" << QVariant(QStringLiteral("Courier"));
}

void EnginePrivateTest::valueTyping()
{
    QFETCH(QString, written);
    QFETCH(QVariant, read);
    QVERIFY(writeFile(configFile(), "<configuration><config name=\"v\" value=\"" + written.toUtf8()
                                        + "\"/></configuration>"));
    TestEngine engine;
    QCOMPARE(engine.option("v"), read);
}

void EnginePrivateTest::missingFileIsNoError()
{
    ScriptedAnswerer user;
    TestEngine engine;
    QVERIFY(engine.load());
    QCOMPARE(engine.count(), 0);
    QVERIFY(user.prompts().isEmpty());
}

void EnginePrivateTest::malformedFileKeepsWhatWasRead()
{
    QVERIFY(writeFile(configFile(), "<configuration>\n"
                                    "  <engine name=\"Kept\"><param name=\"exe\" value=\"/k\"/>"
                                    "<param name=\"ext\" value=\"ignored\"/></engine>\n"
                                    "  <config name=\"first\" value=\"yes\"/>\n"
                                    "  <engine name=\"Broken\"><param name=\"exe\" value=\"/b\"\n"
                                    "</configuration>\n"));
    ScriptedAnswerer user({QMessageBox::Ok});
    TestEngine engine;
    QCOMPARE(user.prompts().size(), 1);
    const Prompt &prompt = user.prompts().first();
    QCOMPARE(prompt.icon, QMessageBox::Critical);
    QCOMPARE(prompt.title, QStringLiteral("Engine configuration"));
    QVERIFY2(prompt.text.contains(QStringLiteral("at line 5, column ")), qPrintable(prompt.text));
    QCOMPARE(prompt.defaultButton, QMessageBox::Ok);
    QCOMPARE(engine.count(), 1);
    QCOMPARE(engine.at(0).exe, QStringLiteral("/k"));
    QCOMPARE(engine.option("first").toString(), QStringLiteral("yes"));
    QVERIFY(!engine.load());
}

void EnginePrivateTest::unreadableAndUnwritableFiles()
{
    // A directory where the file should be can be neither read nor written.
    QVERIFY(QDir().mkpath(configFile()));
    ScriptedAnswerer user({QMessageBox::Ok, QMessageBox::Ok});
    TestEngine engine;
    QVERIFY(!engine.save());
    QCOMPARE(user.prompts().size(), 2);
    QCOMPARE(user.prompts().at(0).title, QStringLiteral("Configuration error!"));
    QCOMPARE(user.prompts().at(0).text,
             QStringLiteral("Can't open engine configuration from '%1'!").arg(configFile()));
    QCOMPARE(user.prompts().at(1).text,
             QStringLiteral("Can't save engine configuration to '%1'!").arg(configFile()));
}

void EnginePrivateTest::optionLookup()
{
    TestEngine engine;
    m_host->options.insert("shared", "host");
    m_host->options.insert("blank", "host");
    QCOMPARE(engine.option("shared").toString(), QStringLiteral("host"));
    QCOMPARE(engine.option("absent", 7).toInt(), 7);
    engine.setOption("shared", "engine");
    engine.setOption("blank", QVariant());
    QCOMPARE(engine.option("shared").toString(), QStringLiteral("engine"));
    // The key is the engine's even with nothing in it: the host isn't asked.
    QVERIFY(!engine.option("blank", 5).isValid());
}

void EnginePrivateTest::withoutHostNothingIsStored()
{
    delete m_host;
    m_host = nullptr;
    TestEngine engine;
    QVERIFY(engine.configFileName().isEmpty());
    engine.add("x", "y", "z", QString());
    QVERIFY(engine.save());
    QVERIFY(engine.load());
    QCOMPARE(engine.option("anything", 3).toInt(), 3);
    QCOMPARE(engine.installDirectory(), QDir::currentPath() + QStringLiteral("/engines/tester"));
    m_host = new Host; // for cleanup
}

QTEST_MAIN(EnginePrivateTest)
#include "tst_engineprivate.moc"
