// The example work is what its generator writes, byte for byte; generated works open with
// what was put in; and without the plug-in's zip container a backup is a directory.
#include "sampleengine.h"
#include "samplework.h"

#include "code/animationcode.h"
#include "code/animations.h"
#include "code/framecode.h"
#include "foundation/messages.h"
#include "image/sprite.h"
#include "project/parentproject.h"
#include "project/project.h"
#include "sound/sound.h"
#include "held.h"
#include "testfiles.h"

#include <QDirIterator>
#include <QTemporaryDir>
#include <QtTest>

using namespace Ovra;

namespace {

QMap<QString, QByteArray> filesBelow(const QString &root)
{
    QMap<QString, QByteArray> files;
    QDirIterator it(root, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString name = it.next();
        files.insert(QDir(root).relativeFilePath(name), readFile(name));
    }
    return files;
}

} // namespace

class SampleWorkTest : public QObject
{
    Q_OBJECT

private slots:
    void exampleIsWhatTheGeneratorWrites();
    void generatedWorksOpen_data();
    void generatedWorksOpen();
    void backupWithoutThePluginIsADirectory();
};

void SampleWorkTest::exampleIsWhatTheGeneratorWrites()
{
    QTemporaryDir dir;
    QString error;
    QVERIFY2(SampleWork::write(dir.path(), &error), qPrintable(error));
    const QMap<QString, QByteArray> written = filesBelow(dir.path());
    const QMap<QString, QByteArray> committed = filesBelow(QStringLiteral(OVRA_EXAMPLES_DIR "/sample"));
    QCOMPARE(written.keys(), committed.keys());
    for (auto it = written.cbegin(); it != written.cend(); ++it)
        QVERIFY2(committed.value(it.key()) == it.value(),
                 qPrintable(it.key() + QStringLiteral(" differs: run scripts/make-sample-work")));
}

void SampleWorkTest::generatedWorksOpen_data()
{
    QTest::addColumn<int>("sprites");
    QTest::addColumn<int>("animations");
    QTest::addColumn<int>("sounds");
    QTest::newRow("small") << 25 << 4 << 3;
    QTest::newRow("no sounds") << 10 << 1 << 0;
}

void SampleWorkTest::generatedWorksOpen()
{
    QFETCH(int, sprites);
    QFETCH(int, animations);
    QFETCH(int, sounds);
    QTemporaryDir dir;
    QString error;
    QVERIFY2(SampleWork::writeLarge(dir.path(), {sprites, animations, sounds}, &error), qPrintable(error));
    SampleEngineExtension engine;
    Held<Project> project(engine.openProject(dir.filePath(QStringLiteral("bulk/bulk.ovp")), &error));
    QVERIFY2(project, qPrintable(error));
    QCOMPARE(project->messages()->errorCount(), 0u);
    QCOMPARE(static_cast<Sprites *>(project->file(Project::Sprites))->count(), uint(sprites));
    auto *list = static_cast<Animations *>(project->file(Project::Animations));
    QCOMPARE(list->count(), uint(animations));
    QCOMPARE(list->at(0)->frameCount(), 10u);
    QVERIFY(list->at(0)->frameAt(3)->sprite()); // frames find their sprites
    QCOMPARE(static_cast<Sounds *>(project->file(Project::Sounds))->count(), uint(sounds));
}

void SampleWorkTest::backupWithoutThePluginIsADirectory()
{
    QTemporaryDir dir;
    QString error;
    QVERIFY2(SampleWork::write(dir.path(), &error), qPrintable(error));
    const QMap<QString, QByteArray> before = filesBelow(dir.path());
    SampleEngineExtension engine; // no plug-in loaded: no container serves "ZIP"
    Held<Project> project(engine.openProject(dir.filePath(SampleWork::projectFile()), &error));
    QVERIFY2(project, qPrintable(error));
    QVERIFY(project->parentProject()->backup(QStringLiteral("plain"), nullptr));
    const QStringList made = QDir(dir.filePath(QStringLiteral("backup"))).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    QCOMPARE(made.size(), 1);
    const QString backup = dir.filePath(QStringLiteral("backup/") + made.first());
    QCOMPARE(readFile(backup + QStringLiteral("/knight/knight.osp")), before.value(QStringLiteral("knight/knight.osp")));
    QCOMPARE(readFile(backup + QStringLiteral("/knight/knight.ovp")), before.value(QStringLiteral("knight/knight.ovp")));

    QVERIFY(writeFile(dir.filePath(QStringLiteral("knight/knight.def")), "spoilt"));
    QVERIFY(project->parentProject()->restoreBackup(made.first(), nullptr));
    QCOMPARE(readFile(dir.filePath(QStringLiteral("knight/knight.def"))), before.value(QStringLiteral("knight/knight.def")));
}

QTEST_MAIN(SampleWorkTest)
#include "tst_samplework.moc"
