// From a user's path to an open project: the project file a path means, the default
// places of the plug-ins, and projects opened through the real sample plug-in.
#include "engine/projectlocator.h"
#include "project/project.h"
#include "testfiles.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace Ovra;

class ProjectLocatorTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void projectFile_data();
    void projectFile();
    void defaultPlaces();
    void opens_data();
    void opens();
    void refuses_data();
    void refuses();

private:
    std::unique_ptr<QTemporaryDir> m_dir;
};

void ProjectLocatorTest::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
}

void ProjectLocatorTest::projectFile_data()
{
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("found");  // relative; empty when none
    QTest::addColumn<QString>("error");  // "@" stands for the temporary root
    const QStringList work{QStringLiteral("w/game.ovg"), QStringLiteral("w/knight/knight.ovp"),
                           QStringLiteral("w/knight/knight.def")};
    QTest::newRow("a file is itself") << QStringList{"a/notes.txt"} << "a/notes.txt" << "a/notes.txt" << "";
    QTest::newRow("a work with one project") << work << "w" << "w/knight/knight.ovp" << "";
    QTest::newRow("a project directory") << work << "w/knight" << "w/knight/knight.ovp" << "";
    QTest::newRow("none") << QStringList{"n/readme.txt", "n/sub/x.def"} << "n" << ""
                          << "no project file in this directory";
    QTest::newRow("two levels down is too deep") << QStringList{"d/x/y/z.ovp"} << "d" << ""
                                                 << "no project file in this directory";
    QTest::newRow("two, sorted") << QStringList{"t/sub/b.ovp", "t/a.ovp"} << "t" << ""
                                 << "more than one project file here: @/t/a.ovp, @/t/sub/b.ovp";
    QTest::newRow("missing") << QStringList() << "gone" << "" << "no such file or directory";
}

void ProjectLocatorTest::projectFile()
{
    QFETCH(QStringList, files);
    QFETCH(QString, path);
    QFETCH(QString, found);
    QFETCH(QString, error);
    const QString root = m_dir->path();
    for (const QString &file : files)
        QVERIFY(writeFile(root + QLatin1Char('/') + file));
    ProjectLocator locator(QStringLiteral(OVRA_PLUGIN_DIR));
    QString reason;
    const QString file = ProjectLocator::projectFile(root + QLatin1Char('/') + path, &reason);
    QCOMPARE(file, found.isEmpty() ? QString() : root + QLatin1Char('/') + found);
    QCOMPARE(reason, QString(error).replace(QLatin1Char('@'), root));
}

void ProjectLocatorTest::defaultPlaces()
{
    // Beside a program of the build, ../lib/plugins is the build's plug-in directory.
    const QStringList places = ProjectLocator::defaultPluginDirectories();
    const QString parent = QDir::cleanPath(QCoreApplication::applicationDirPath() + QStringLiteral("/.."));
    QCOMPARE(places, QStringList({parent + QStringLiteral("/lib/plugins"), parent + QStringLiteral("/lib/ovra/plugins")}));
    QCOMPARE(QFileInfo(ProjectLocator::defaultPluginDirectory()).canonicalFilePath(),
             QFileInfo(QStringLiteral(OVRA_PLUGIN_DIR)).canonicalFilePath());
    QCOMPARE(ProjectLocator().pluginDirectory(), ProjectLocator::defaultPluginDirectory());
    QCOMPARE(ProjectLocator(m_dir->path()).pluginDirectory(), m_dir->path());
}

void ProjectLocatorTest::opens_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("the work") << "work";
    QTest::newRow("the project file") << "work/knight/knight.ovp";
}

void ProjectLocatorTest::opens()
{
    QFETCH(QString, path);
    const QString work = m_dir->filePath(QStringLiteral("work"));
    QVERIFY(copyTree(QStringLiteral(OVRA_EXAMPLES_DIR "/sample"), work));
    const ProjectLocator locator; // the default places: the build's plug-ins
    QString error;
    Project *project = locator.openProject(m_dir->filePath(path), &error);
    QVERIFY2(project, qPrintable(error));
    QCOMPARE(project->fileName(), work + QStringLiteral("/knight/knight.ovp"));
    QVERIFY(project->filesByType(Project::Sprites).size() == 1);
    QVERIFY(error.isEmpty());
    project->release();
}

void ProjectLocatorTest::refuses_data()
{
    QTest::addColumn<QString>("plugins");  // empty: the build's
    QTest::addColumn<QString>("file");     // written, unless empty
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("error");    // its start; "@" stands for the plug-in directory
    QTest::newRow("no engine takes it") << "" << "notes.txt" << QByteArray("words\n") << "notes.txt"
                                        << "no engine of @ takes this file as a project";
    QTest::newRow("the engine's reason") << "" << "w/bad.ovp" << QByteArray("just some words\r\n") << "w"
                                         << "Not a project file";
    QTest::newRow("no plug-ins in the directory") << "empty" << "w/p.ovp" << QByteArray("[Project]\r\n") << "w"
                                                  << "no project file in this directory";
    QTest::newRow("missing") << "" << "" << QByteArray() << "gone" << "no such file or directory";
}

void ProjectLocatorTest::refuses()
{
    QFETCH(QString, plugins);
    QFETCH(QString, file);
    QFETCH(QByteArray, content);
    QFETCH(QString, path);
    QFETCH(QString, error);
    const QString directory = plugins.isEmpty() ? QStringLiteral(OVRA_PLUGIN_DIR) : m_dir->filePath(plugins);
    QVERIFY(QDir().mkpath(directory));
    if (!file.isEmpty())
        QVERIFY(writeFile(m_dir->filePath(file), content));
    const ProjectLocator locator(directory);
    QString reason;
    QVERIFY(!locator.openProject(m_dir->filePath(path), &reason));
    const QString expected = QString(error).replace(QLatin1Char('@'), directory);
    QVERIFY2(reason.startsWith(expected), qPrintable(reason));
    if (!file.isEmpty())
        QCOMPARE(readFile(m_dir->filePath(file)), content); // refused, and untouched
}

QTEST_MAIN(ProjectLocatorTest)
#include "tst_projectlocator.moc"
