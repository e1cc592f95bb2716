// The sample engine end to end, loaded as the program loads it: its names and file
// types, and its example work opened, saved, edited, backed up and damaged.
#include "code/animationcode.h"
#include "code/animations.h"
#include "code/codedocument.h"
#include "code/contactboxcode.h"
#include "code/framecode.h"
#include "code/groupcode.h"
#include "code/valuecode.h"
#include "engine/engine.h"
#include "engine/extension.h"
#include "engine/extensionmanager.h"
#include "foundation/filesystemarchive.h"
#include "foundation/messages.h"
#include "image/sprite.h"
#include "project/parentproject.h"
#include "project/project.h"
#include "sound/sound.h"
#include "held.h"
#include "testfiles.h"

#include <QBuffer>
#include <QDirIterator>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace Ovra;

namespace {

const int Definitions = 5; // the engine's own file type

// The example work copied to `target`.
bool copyWork(const QString &target)
{
    return copyTree(QStringLiteral(OVRA_EXAMPLES_DIR "/sample"), target);
}

// Every file of the work by its name relative to the work, with its bytes.
QMap<QString, QByteArray> snapshot(const QString &root)
{
    QMap<QString, QByteArray> files;
    QDirIterator it(root, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString name = it.next();
        const QString relative = QDir(root).relativeFilePath(name);
        if (!relative.startsWith(QLatin1String("backup/")))
            files.insert(relative, readFile(name));
    }
    return files;
}

using ProjectPointer = Held<Project>;

// The images of a sprite container with their axes and palettes, for comparisons.
QList<QVariantList> spriteModel(Sprites *sprites)
{
    QList<QVariantList> model;
    for (uint i = 0; i < sprites->count(); ++i) {
        Sprite *sprite = sprites->at(i);
        model << QVariantList{sprite->identifier(), sprite->axis(), sprite->image(),
                              sprite->palette() ? int(sprite->palette()->index()) : -1};
    }
    return model;
}

QStringList frameModel(Animations *animations)
{
    QStringList model;
    for (uint a = 0; a < animations->count(); ++a) {
        AnimationCode *animation = animations->at(a);
        for (FrameCode *frame : animation->frames()) {
            QStringList boxes;
            for (auto type : {ContactBoxCode::Attack, ContactBoxCode::Collision}) {
                ContactBoxesCode *list = frame->contactBoxes(type);
                for (uint b = 0; b < list->count(); ++b) {
                    const QRect r = list->at(b)->rect();
                    boxes << QStringLiteral("%1:%2,%3,%4,%5").arg(int(type)).arg(r.left()).arg(r.top()).arg(r.right()).arg(r.bottom());
                }
            }
            model << QStringLiteral("%1 %2 %3,%4 d%5 f%6 %7 [%8]")
                         .arg(animation->property(QStringLiteral("Identifier")).toString())
                         .arg(frame->spriteId().toString())
                         .arg(frame->offsetX()).arg(frame->offsetY())
                         .arg(frame->delay()).arg(frame->flipFlags())
                         .arg(frame->isLoopPoint()).arg(boxes.join(QLatin1Char(' ')));
        }
    }
    return model;
}

GroupCode *firstGroup(CodeDocument *document, uint subType)
{
    for (uint i = 0; i < document->root()->childCount(); ++i) {
        CodeNode *node = document->root()->childAt(i);
        if (node->type() == CodeNode::Group && static_cast<GroupCode *>(node)->subType() == subType)
            return static_cast<GroupCode *>(node);
    }
    return nullptr;
}

} // namespace

class SampleEngineTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();
    void queryString_data();
    void queryString();
    void namesAndFilters();
    void createsEveryFileType_data();
    void createsEveryFileType();
    void opensTheSampleWork();
    void unchangedSaveIsByteIdentical();
    void editsLoadBack();
    void filesAddedAreListed();
    void backupIsARealZip();
    void animationsGoRoundTheExchange();
    void installedData();
    void damagedWorks_data();
    void damagedWorks();
    void garbageDefinitionsAreReported();
    void refusesWhatIsNoProject_data();
    void refusesWhatIsNoProject();

private:
    ProjectPointer open(QString *error = nullptr);
    EngineExtension *m_extension = nullptr;
    std::unique_ptr<ExtensionManager> m_manager;
    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_root;
};

void SampleEngineTest::initTestCase()
{
    m_manager = std::make_unique<ExtensionManager>(QStringLiteral(OVRA_PLUGIN_DIR));
    m_extension = EngineExtension::forProjectFile(QStringLiteral("any.ovp"));
    QVERIFY(m_extension);
}

void SampleEngineTest::cleanupTestCase()
{
    m_manager.reset();
}

void SampleEngineTest::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_root = m_dir->filePath(QStringLiteral("work"));
    QVERIFY(copyWork(m_root));
}

void SampleEngineTest::cleanup()
{
    m_dir.reset();
}

ProjectPointer SampleEngineTest::open(QString *error)
{
    QString reason;
    Project *project = m_extension->openProject(m_root + QStringLiteral("/knight/knight.ovp"), &reason);
    if (error)
        *error = reason;
    return ProjectPointer(project);
}

void SampleEngineTest::queryString_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<uint>("index");
    QTest::addColumn<QString>("answer");
    QTest::newRow("game mark") << int(Engine::GameMarkFile) << 0u << "game.ovg";
    QTest::newRow("past the first") << int(Engine::GameMarkFile) << 1u << "";
    QTest::newRow("a number it doesn't know") << 99 << 0u << "";
}

void SampleEngineTest::queryString()
{
    QFETCH(int, type);
    QFETCH(uint, index);
    QFETCH(QString, answer);
    QCOMPARE(m_extension->engine()->queryString(Engine::StringType(type), index), answer);
}

void SampleEngineTest::namesAndFilters()
{
    Engine *engine = m_extension->engine();
    QCOMPARE(QByteArray(m_extension->name()), QByteArray("sample"));
    QVERIFY(EngineExtension::forProjectFile(QStringLiteral("/some/where/Work.OVP")));
    QVERIFY(!EngineExtension::forProjectFile(QStringLiteral("/some/where/work.def")));
    QCOMPARE(engine->singleFileFilters(Project::Sprites), QStringLiteral("Sprite containers (*.osp)"));
    QVERIFY(engine->singleFileFilters(77).isEmpty());
    const QStringList all = engine->singleFileFilters().split(QStringLiteral(";;"));
    QCOMPARE(all.size(), 7);
    QCOMPARE(all.first(), QStringLiteral("All sample engine files (*.ovp *.def *.osp *.oan *.sbk *.lua)"));
    QCOMPARE(engine->viewSize(), QSize(320, 240)); // 640 x 480 at twice the size
}

void SampleEngineTest::createsEveryFileType_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("suffix"); // a list of nodes answers for its document
    QTest::newRow("project file") << int(Project::Main) << QByteArray("def");
    QTest::newRow("sprites") << int(Project::Sprites) << QByteArray("osp");
    QTest::newRow("sounds") << int(Project::Sounds) << QByteArray("sbk");
    QTest::newRow("animations") << int(Project::Animations) << QByteArray();
    QTest::newRow("scripts") << int(Project::Scripts) << QByteArray("lua");
    QTest::newRow("definitions") << Definitions << QByteArray("def");
}

void SampleEngineTest::createsEveryFileType()
{
    QFETCH(int, type);
    QFETCH(QByteArray, suffix);
    ProjectFile *file = m_extension->engine()->createFile(type, nullptr);
    QVERIFY(file);
    QVERIFY(file->isEmpty());
    if (type == Project::Animations)
        QVERIFY(dynamic_cast<Animations *>(file));
    else
        QCOMPARE(QByteArray(file->fileExtension()), suffix);
    auto *document = dynamic_cast<CodeDocument *>(file);
    QCOMPARE(document != nullptr, suffix == "def" || suffix == "lua");
    if (document)
        QCOMPARE(document->fileType(), short(type));
    file->release();
    QVERIFY(!m_extension->engine()->createFile(77, nullptr));
}

// What the Lua suite doesn't ask of the opened work: its palettes, frames with their
// sprites and boxes, a sound's shape, and the files the project lists.
void SampleEngineTest::opensTheSampleWork()
{
    QString error;
    ProjectPointer project = open(&error);
    QVERIFY2(project, qPrintable(error));
    QCOMPARE(project->parentProject()->engine(), m_extension->engine());
    QCOMPARE(project->messages()->errorCount(), 0u);

    auto *sprites = dynamic_cast<Sprites *>(project->file(Project::Sprites));
    QVERIFY(sprites);
    QCOMPARE(sprites->palettes()->count(), 3u);
    QCOMPARE(sprites->at(0)->image().format(), QImage::Format_Indexed8);

    auto *animations = dynamic_cast<Animations *>(project->file(Project::Animations));
    QVERIFY(animations);
    AnimationCode *walk = animations->at(uint(animations->find(0, 10)));
    QCOMPARE(walk->frameCount(), 6u);
    QCOMPARE(walk->loopPoint(), 0u);
    QCOMPARE(walk->frameAt(1)->sprite(), sprites->at(uint(sprites->find(0, (10u << 16) | 1))));
    AnimationCode *punch = animations->at(uint(animations->find(0, 200)));
    QCOMPARE(punch->frameAt(2)->contactBoxes(ContactBoxCode::Attack)->count(), 1u);
    QCOMPARE(punch->frameAt(2)->contactBoxes(ContactBoxCode::Collision)->count(), 1u);

    auto *sounds = dynamic_cast<Sounds *>(project->file(Project::Sounds));
    QVERIFY(sounds);
    const SoundSample tune = sounds->at(uint(sounds->find(0, QPoint(100, 0))))->sample();
    QCOMPARE(tune.channels, quint16(1));
    QCOMPARE(tune.samples, 65536u);

    auto *definitions = dynamic_cast<CodeDocument *>(project->file(Definitions));
    QVERIFY(definitions);
    QCOMPARE(definitions->messages()->count(Message::All), 0u);

    QList<PathEntry *> entries;
    project->fileList(entries);
    QStringList listed;
    for (PathEntry *entry : entries)
        listed << QStringLiteral("%1 %2").arg(entry->type).arg(entry->name);
    qDeleteAll(entries);
    listed.sort();
    QCOMPARE(listed, (QStringList{"1 knight.osp", "2 knight.sbk", "3 knight.oan", "4 knight.lua", "5 knight.def"}));
}

void SampleEngineTest::unchangedSaveIsByteIdentical()
{
    const QMap<QString, QByteArray> before = snapshot(m_root);
    ProjectPointer project = open();
    QVERIFY(project);
    // Every file written anew, over itself.
    for (ProjectFile *file : project->files())
        QVERIFY2(file->toFile(FileSystemArchive::instance(), file->fileName(), 0, nullptr), qPrintable(file->fileName()));
    const QMap<QString, QByteArray> after = snapshot(m_root);
    QCOMPARE(after.keys(), before.keys());
    for (auto it = before.cbegin(); it != before.cend(); ++it)
        QVERIFY2(after.value(it.key()) == it.value(), qPrintable(it.key()));
}

void SampleEngineTest::editsLoadBack()
{
    QList<QVariantList> spritesBefore;
    QStringList framesBefore;
    RGBA colours[256];
    {
        ProjectPointer project = open();
        QVERIFY(project);
        // A value, through its group.
        auto *definitions = static_cast<CodeDocument *>(project->file(Definitions));
        GroupCode *character = firstGroup(definitions, 3);
        QVERIFY(character);
        const int life = character->childIndex(character->valueByName(QStringLiteral("life")));
        QVERIFY(life >= 0);
        character->removeValue(uint(life));
        QVERIFY(character->insertValue(uint(life), QStringLiteral("life"), 1200));
        QCOMPARE(character->value(QStringLiteral("life")).toInt(), 1200);

        // A frame and a box.
        auto *animations = static_cast<Animations *>(project->file(Project::Animations));
        FrameCode *frame = animations->at(uint(animations->find(0, 10)))->frameAt(2);
        frame->setDelay(9);
        frame->setOffsetX(-3);
        QVERIFY(frame->contactBoxes(ContactBoxCode::Attack)->append(QRect(1, -20, 8, 6)));
        framesBefore = frameModel(animations);

        // A sprite and a palette.
        auto *sprites = static_cast<Sprites *>(project->file(Project::Sprites));
        sprites->at(3)->setAxis(QPoint(5, 7));
        QImage picture(6, 4, QImage::Format_ARGB32);
        picture.fill(qRgba(10, 200, 30, 255));
        QVERIFY(sprites->add(QPoint(77, 1), picture, Archive::NoShare));
        QVERIFY(sprites->palettes()->at(1)->colorTable(colours));
        colours[5] = RGBA(1, 2, 3, 255);
        sprites->palettes()->at(1)->setColorTable(colours, Archive::NoShare);
        spritesBefore = spriteModel(sprites);

        // A sound.
        auto *sounds = static_cast<Sounds *>(project->file(Project::Sounds));
        sounds->remove(uint(sounds->find(0, QPoint(1, 2))));

        // Saved as the program saves: every modified file of the work, in its place.
        project->parentProject()->save(nullptr);
        for (ProjectFile *file : project->files())
            QVERIFY2(!file->isModified(), qPrintable(file->fileName()));
    }
    ProjectPointer again = open();
    QVERIFY(again);
    GroupCode *character = firstGroup(static_cast<CodeDocument *>(again->file(Definitions)), 3);
    QCOMPARE(character->value(QStringLiteral("life")).toInt(), 1200);
    QCOMPARE(frameModel(static_cast<Animations *>(again->file(Project::Animations))), framesBefore);
    auto *sprites = static_cast<Sprites *>(again->file(Project::Sprites));
    QCOMPARE(spriteModel(sprites), spritesBefore);
    RGBA read[256];
    QVERIFY(sprites->palettes()->at(1)->colorTable(read));
    QCOMPARE(read[5], RGBA(1, 2, 3, 255));
    auto *sounds = static_cast<Sounds *>(again->file(Project::Sounds));
    QCOMPARE(sounds->count(), 4u);
    QCOMPARE(sounds->find(0, QPoint(1, 2)), -1);
}

void SampleEngineTest::filesAddedAreListed()
{
    {
        ProjectPointer project = open();
        QVERIFY(project);
        ProjectFile *extra = m_extension->engine()->createFile(Definitions, project.get());
        QVERIFY(extra->toFile(FileSystemArchive::instance(), m_root + QStringLiteral("/knight/moves/extra.def"), 0, nullptr));
        QVERIFY(project->addFile(extra, Definitions));
        QVERIFY(project->mainFile()->isModified());
        QVERIFY(project->mainFile()->toFile(FileSystemArchive::instance(), project->fileName(), 0, nullptr));
    }
    ProjectPointer again = open();
    QVERIFY(again);
    QCOMPARE(again->filesByType(Definitions).size(), 2);
    QVERIFY(again->filesByType(Definitions).at(1)->fileName().endsWith(QLatin1String("knight/moves/extra.def")));
}

void SampleEngineTest::backupIsARealZip()
{
    const QMap<QString, QByteArray> before = snapshot(m_root);
    ProjectPointer project = open();
    QVERIFY(project);
    ParentProject *work = project->parentProject();
    QVERIFY(work->backup(QStringLiteral("nightly"), nullptr));
    const QStringList made = QDir(m_root + QStringLiteral("/backup")).entryList(QDir::Files);
    QCOMPARE(made.size(), 1);
    QVERIFY(made.first().endsWith(QLatin1String(".zip")));

    const QString unzip = QStandardPaths::findExecutable(QStringLiteral("unzip"));
    QVERIFY2(!unzip.isEmpty(), "unzip is one of the packages scripts/setup installs");
    QProcess listing;
    listing.start(unzip, {QStringLiteral("-l"), m_root + QStringLiteral("/backup/") + made.first()});
    QVERIFY(listing.waitForFinished(30000));
    QCOMPARE(listing.exitCode(), 0);
    const QByteArray output = listing.readAllStandardOutput();
    for (const char *name : {"knight/knight.ovp", "knight/knight.osp", "knight/knight.oan", "knight/knight.sbk",
                             "knight/knight.def", "knight/knight.lua"})
        QVERIFY2(output.contains(name), output.constData());

    QVERIFY(writeFile(m_root + QStringLiteral("/knight/knight.osp"), "spoilt"));
    QString name = made.first();
    name.chop(4);
    QVERIFY(work->restoreBackup(name, nullptr));
    const QMap<QString, QByteArray> after = snapshot(m_root);
    for (auto it = before.cbegin(); it != before.cend(); ++it) {
        if (it.key().startsWith(QLatin1String("knight/")))
            QVERIFY2(after.value(it.key()) == it.value(), qPrintable(it.key()));
    }
}

// The knight's animations, written in the engine's own language, through the exchange
// format and into a new animation file: the same frames and boxes come out.
void SampleEngineTest::animationsGoRoundTheExchange()
{
    AnimationExporterExtension *exporter = nullptr;
    AnimationImporterExtension *importer = nullptr;
    for (Extension *extension : ExtensionManager::list(Extension::AnimationExporter))
        exporter = exporter ? exporter : dynamic_cast<AnimationExporterExtension *>(extension);
    for (Extension *extension : ExtensionManager::list(Extension::AnimationImporter))
        importer = importer ? importer : dynamic_cast<AnimationImporterExtension *>(extension);
    QVERIFY(exporter && importer);
    const QString pattern = m_extension->engine()->queryString(Engine::AnimationFilePattern, 0);
    QCOMPARE(exporter->filePattern(), pattern);
    QCOMPARE(importer->filePattern(), pattern);

    ProjectPointer project = open();
    QVERIFY(project);
    auto *animations = static_cast<Animations *>(project->file(Project::Animations));
    QList<uint> rows;
    for (uint i = 0; i < animations->count(); ++i)
        rows << i;
    QByteArray exchange;
    QBuffer out(&exchange);
    out.open(QIODevice::WriteOnly);
    QVERIFY2(exporter->exportAnimations(*animations, rows, &out), qPrintable(exporter->errorString()));

    auto *fresh = static_cast<Animations *>(m_extension->engine()->createFile(Project::Animations, nullptr));
    QBuffer in(&exchange);
    in.open(QIODevice::ReadOnly);
    QStringList imported;
    QVERIFY2(importer->importAnimations(&in, *fresh, {}, &imported), qPrintable(importer->errorString()));
    QCOMPARE(imported.size(), int(animations->count()));
    QCOMPARE(frameModel(fresh), frameModel(animations));
    QCOMPARE(fresh->document()->messages()->count(Message::All), 0u);
    fresh->release();
}

// What a host finds under the engine's path: the icon, the completer's words and the
// snippets, as they are in the sources.
void SampleEngineTest::installedData()
{
    const QString installed = QStringLiteral(OVRA_ENGINE_DATA_DIR);
    QCOMPARE(QImage(installed + QStringLiteral("/icon.png")).size(), QSize(32, 32));
    const QMap<QString, QByteArray> sources = snapshot(QStringLiteral(SAMPLEDATADIR));
    QVERIFY(sources.contains(QStringLiteral("completer.xml")));
    QCOMPARE(snapshot(installed), sources);
}

void SampleEngineTest::damagedWorks_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("content"); // empty: the file is removed
    QTest::addColumn<int>("missingType");
    QTest::addColumn<QString>("message");
    QTest::newRow("sprite container cut short") << "knight/knight.osp" << QByteArray("OVSP\x01\x00\x00\x00", 8)
                                                << int(Project::Sprites) << "knight.osp' can't be read";
    QTest::newRow("sprite container of a later version")
        << "knight/knight.osp" << QByteArray("OVSP\x09\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00", 16)
        << int(Project::Sprites) << "knight.osp' can't be read";
    QTest::newRow("sound bank of garbage") << "knight/knight.sbk" << QByteArray(100, '\x7f') << int(Project::Sounds)
                                           << "knight.sbk' can't be read";
    QTest::newRow("sound bank missing") << "knight/knight.sbk" << QByteArray() << int(Project::Sounds)
                                        << "The file 'knight.sbk' is missing";
    QTest::newRow("animations missing") << "knight/knight.oan" << QByteArray() << int(Project::Animations)
                                        << "The file 'knight.oan' is missing";
}

void SampleEngineTest::damagedWorks()
{
    QFETCH(QString, file);
    QFETCH(QByteArray, content);
    QFETCH(int, missingType);
    QFETCH(QString, message);
    const QString path = m_root + QLatin1Char('/') + file;
    if (content.isEmpty())
        QVERIFY(QFile::remove(path));
    else
        QVERIFY(writeFile(path, content));

    QString error;
    ProjectPointer project = open(&error);
    QVERIFY2(project, qPrintable(error));
    // The rest of the project is there; the damaged file is left out, and said so.
    QVERIFY(!project->file(missingType));
    QVERIFY(project->file(Project::Main));
    QVERIFY(project->messages()->errorCount() >= 1);
    bool found = false;
    for (int row = 0; row < project->messages()->rowCount(); ++row) {
        const Messages *from = nullptr;
        found = found || project->messages()->messageAt(row, from).text.contains(message);
    }
    QVERIFY2(found, qPrintable(message));
    // Nothing of it was written.
    if (!content.isEmpty())
        QCOMPARE(readFile(path), content);
    else
        QVERIFY(!QFile::exists(path));
}

void SampleEngineTest::garbageDefinitionsAreReported()
{
    const QByteArray garbage("[Character: knight]\r\n    life = lots\r\n%%%\r\n    walk = (1\r\n\x01\x02\r\n");
    const QString path = m_root + QStringLiteral("/knight/knight.def");
    QVERIFY(writeFile(path, garbage));
    ProjectPointer project = open();
    QVERIFY(project);
    // The file stays in the project, as it is, with a message for each bad line.
    auto *definitions = dynamic_cast<CodeDocument *>(project->file(Definitions));
    QVERIFY(definitions);
    QCOMPARE(definitions->messages()->count(Message::Error), 4u);
    QVERIFY(project->messages()->errorCount() >= 4);
    QCOMPARE(definitions->toString().toUtf8(), QByteArray(garbage).replace("\r\n", "\n"));
    QCOMPARE(readFile(path), garbage);
}

void SampleEngineTest::refusesWhatIsNoProject_data()
{
    QTest::addColumn<QByteArray>("content"); // empty: no file at all
    QTest::addColumn<QString>("error");
    QTest::newRow("no such file") << QByteArray() << "No such project file";
    QTest::newRow("no groups") << QByteArray("just some words\r\n") << "Not a project file";
    QTest::newRow("no files group") << QByteArray("[Project]\r\nname = X\r\n") << "Not a project file";
    QTest::newRow("binary garbage") << QByteArray("\x00\x01\x02\xff\xfe", 5) << "Not a project file";
}

void SampleEngineTest::refusesWhatIsNoProject()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, error);
    const QString path = m_root + QStringLiteral("/other/other.ovp");
    if (!content.isEmpty())
        QVERIFY(writeFile(path, content));
    QString reason;
    Project *project = m_extension->openProject(path, &reason);
    QVERIFY(!project);
    QVERIFY2(reason.startsWith(error), qPrintable(reason));
    if (!content.isEmpty())
        QCOMPARE(readFile(path), content);
}

QTEST_MAIN(SampleEngineTest)
#include "tst_sampleengine.moc"
