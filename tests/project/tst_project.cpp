#include "foundation/filesystemarchive.h"
#include "foundation/messages.h"
#include "project/parentproject.h"
#include "project/project.h"
#include "project/projectfile.h"

#include "projecttestsupport.h"
#include "testfiles.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace Ovra;

Q_DECLARE_METATYPE(const Ovra::ProjectFile *)

class ProjectTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void constructor_data();
    void constructor();
    void addFile();
    void removeAndTake();
    void moveAndSelect();
    void emptyAndModified_data();
    void emptyAndModified();
    void parentLifetime();
    void nothingReachesAnEndedParent();
    void saveAllRefusesReadOnlyArchive();
    void saveAll_data();
    void saveAll();
    void saveAllToAnotherArchive_data();
    void saveAllToAnotherArchive();

private:
    QTemporaryDir m_dir;
};

void ProjectTest::initTestCase()
{
    qRegisterMetaType<const ProjectFile *>();
    QVERIFY(m_dir.isValid());
}

void ProjectTest::constructor_data()
{
    QTest::addColumn<bool>("addMain");
    QTest::newRow("main file filed") << true;
    QTest::newRow("main file apart") << false;
}

void ProjectTest::constructor()
{
    QFETCH(bool, addMain);
    MemoryArchive archive;
    RecordingParent parent(QStringLiteral("/work/"), archive);
    TestFile main(QStringLiteral("/work/actors/hero/hero.def"));
    main.setOption(QStringLiteral("parseCode"), true, false, false);
    main.setOption(QStringLiteral("modelCode"), QStringLiteral("full"), false, false);
    main.setOption(QStringLiteral("font"), QStringLiteral("mono"), false, false);

    auto *project = new TestProject(&parent, 5, &main, addMain);
    QCOMPARE(archive.refCount(), 3u); // ours, the parent's, the project's
    QCOMPARE(main.refCount(), 2u);
    QCOMPARE(project->mainFile(), &main);
    QCOMPARE(project->type(), 5);
    QCOMPARE(project->files().size(), addMain ? 1 : 0);
    QCOMPARE(project->fileID(&main), Project::FileTypes(addMain ? 1 : 0));
    QCOMPARE(project->absolutePath(), QStringLiteral("/work/actors/hero/"));
    QCOMPARE(project->basePath(), QStringLiteral("actors/hero/"));

    QCOMPARE(project->option(QStringLiteral("parseCode")), QVariant(true));
    QCOMPARE(project->option(QStringLiteral("modelCode")), QVariant(QStringLiteral("full")));
    QVERIFY(!project->option(QStringLiteral("highlightCode")).isValid());
    QVERIFY(!project->option(QStringLiteral("font")).isValid());
    // The project-wide ones left the main file; a cleared project shows it.
    project->setOption(QStringLiteral("parseCode"), QVariant());
    project->setOption(QStringLiteral("modelCode"), QVariant());
    QVERIFY(!main.option(QStringLiteral("parseCode")).isValid());
    QVERIFY(!main.option(QStringLiteral("modelCode")).isValid());
    QCOMPARE(main.option(QStringLiteral("font")), QVariant(QStringLiteral("mono")));

    QCOMPARE(parent.added.size(), addMain ? 1 : 0);
    main.addRef(); // keep the file through the release of a filed main file
    project->release();
    QCOMPARE(archive.refCount(), 2u);
    QCOMPARE(main.refCount(), addMain ? 1u : 2u);
    QCOMPARE(main.freed, 0);
}

void ProjectTest::addFile()
{
    MemoryArchive archive;
    RecordingParent parent(QStringLiteral("/work/"), archive);
    auto *project = new TestProject(&parent, 0, nullptr, false);
    QSignalSpy added(project, &Project::fileAdded);
    TestFile file;
    file.ownMessages.reset(new SimpleMessages(&file));
    file.ownMessages->add(Message::Error, QStringLiteral("broken"), 1, 2);
    file.ownMessages->add(Message::Warning, QStringLiteral("odd"), 3, 0);
    file.addRef();

    QVERIFY(project->addFile(&file, Project::Animations));
    QVERIFY(!project->addFile(&file, Project::Animations));
    QVERIFY(project->addFile(&file, Project::Scripts));
    QCOMPARE(project->fileID(&file), Project::FileTypes((1 << 3) | (1 << 4)));
    QCOMPARE(project->files(), QList<ProjectFile *>{&file});
    QCOMPARE(project->filesByType(3), QList<ProjectFile *>{&file});
    QCOMPARE(project->filesByType(4), QList<ProjectFile *>{&file});
    QCOMPARE(file.project(), project);
    QCOMPARE(file.refCount(), 2u); // a filing takes no reference of its own

    QCOMPARE(added.size(), 2);
    QCOMPARE(added.at(0).at(0).value<const ProjectFile *>(), &file);
    QCOMPARE(added.at(0).at(1).toInt(), 3);
    QCOMPARE(added.at(1).at(1).toInt(), 4);
    QCOMPARE(parent.added, (QList<ProjectFile *>{&file, &file}));
    QCOMPARE(file.ownMessages->messageList(), project->messages());
    QCOMPARE(project->messages()->errorCount(), 1u);
    QCOMPARE(project->messages()->warningCount(), 1u);

    // Nonsense is refused without a trace.
    TestFile stranger;
    QVERIFY(!project->addFile(nullptr, 1));
    QVERIFY(!project->addFile(&stranger, -1));
    QVERIFY(!project->addFile(&stranger, 32));
    QVERIFY(!project->takeFile(&stranger));
    project->removeFile(&stranger);
    project->removeFile(Project::Sprites, 0);
    QCOMPARE(stranger.refCount(), 1u);
    QCOMPARE(project->files().size(), 1);
    QCOMPARE(added.size(), 2);

    project->release();
    QVERIFY(!file.ownMessages->messageList());
    QCOMPARE(file.refCount(), 1u);
}

void ProjectTest::removeAndTake()
{
    MemoryArchive archive;
    RecordingParent parent(QStringLiteral("/work/"), archive);
    auto *project = new TestProject(&parent, 0, nullptr, false);
    QSignalSpy removed(project, &Project::fileRemoved);
    TestFile a, b;
    a.addRef();
    b.addRef();
    project->addFile(&a, Project::Sprites);
    project->addFile(&a, Project::Sounds);
    project->addFile(&b, Project::Sprites);

    project->removeFile(Project::Sprites, 5); // out of range
    project->removeFile(Project::Sprites, 0);
    QCOMPARE(removed.size(), 1);
    QCOMPARE(removed.at(0).at(0).value<const ProjectFile *>(), &a);
    QCOMPARE(removed.at(0).at(1).toInt(), int(Project::Sprites));
    QCOMPARE(project->fileID(&a), Project::FileTypes(1 << Project::Sounds));
    QCOMPARE(project->filesByType(Project::Sprites), QList<ProjectFile *>{&b});
    QCOMPARE(a.refCount(), 2u); // still filed as a sound
    QCOMPARE(a.project(), project);

    project->addFile(&a, Project::Sprites);
    project->removeFile(&a);
    QCOMPARE(removed.size(), 3);
    QCOMPARE(project->fileID(&a), Project::FileTypes(0));
    QCOMPARE(project->files(), QList<ProjectFile *>{&b});
    QCOMPARE(a.refCount(), 1u);
    QVERIFY(!a.project());
    QCOMPARE(parent.closed, QList<ProjectFile *>{&a});

    QCOMPARE(project->takeFile(&b), &b);
    QCOMPARE(b.refCount(), 2u); // the project's reference came back with it
    QVERIFY(!b.project());
    QVERIFY(project->files().isEmpty());
    QVERIFY(project->filesByType(Project::Sprites).isEmpty());
    QCOMPARE(removed.size(), 4);
    b.release();
    project->release();
    QCOMPARE(a.freed + b.freed, 0);
}

void ProjectTest::moveAndSelect()
{
    auto *project = new TestProject(nullptr, 0, nullptr, false);
    QSignalSpy changed(project, &Project::fileHierarchyChanged);
    TestFile a, b, c;
    for (TestFile *file : {&a, &b, &c}) {
        file->addRef();
        project->addFile(file, Project::Sprites);
    }
    QCOMPARE(project->selectedFile(Project::Sprites), 0u);
    QCOMPARE(project->file(Project::Sprites), &a);

    project->moveFile(Project::Sprites, 0, 2);
    QCOMPARE(project->filesByType(Project::Sprites), (QList<ProjectFile *>{&b, &c, &a}));
    QCOMPARE(changed.size(), 1);
    project->moveFile(Project::Sprites, 0, 3);
    project->moveFile(Project::Sprites, -1, 0);
    project->moveFile(Project::Sounds, 0, 1);
    QCOMPARE(changed.size(), 1);
    QCOMPARE(project->filesByType(Project::Sprites), (QList<ProjectFile *>{&b, &c, &a}));

    project->setSelectedFile(Project::Sprites, 1);
    QCOMPARE(project->selectedFile(Project::Sprites), 1u);
    QCOMPARE(project->file(Project::Sprites), &c);
    project->setSelectedFile(Project::Sprites, 9);
    QVERIFY(!project->file(Project::Sprites));
    project->release();
}

void ProjectTest::emptyAndModified_data()
{
    QTest::addColumn<QList<bool>>("empty");
    QTest::addColumn<QList<bool>>("modified");
    QTest::newRow("no files") << QList<bool>{} << QList<bool>{};
    QTest::newRow("all empty, clean") << QList<bool>{true, true} << QList<bool>{false, false};
    QTest::newRow("one with content") << QList<bool>{true, false} << QList<bool>{false, false};
    QTest::newRow("one modified") << QList<bool>{true, true} << QList<bool>{false, true};
}

void ProjectTest::emptyAndModified()
{
    QFETCH(QList<bool>, empty);
    QFETCH(QList<bool>, modified);
    std::vector<std::unique_ptr<TestFile>> files;
    auto *project = new TestProject(nullptr, 0, nullptr, false);
    for (int i = 0; i < empty.size(); ++i) {
        files.emplace_back(new TestFile);
        files.back()->empty = empty.at(i);
        files.back()->modified = modified.at(i);
        files.back()->addRef();
        project->addFile(files.back().get(), i);
    }
    QCOMPARE(project->isEmpty(), !empty.contains(false));
    QCOMPARE(project->isModified(), modified.contains(true));
    project->release();
}

void ProjectTest::parentLifetime()
{
    MemoryArchive archive, other;
    RecordingParent parent(QStringLiteral("/work/"), archive);
    TestFile first(QStringLiteral("/work/a/a.def")), second(QStringLiteral("/work/b/b.def"));
    TestFile sprite(QStringLiteral("/work/a/a.spr"));
    auto *a = new TestProject(&parent, 0, &first, true);
    auto *b = new TestProject(&parent, 0, &second, true);
    auto *loose = new TestProject(&parent, 0, nullptr, false);
    a->addToParent();
    b->addToParent();
    QCOMPARE(parent.refCount(), 2u);
    QCOMPARE(parent.openedProjects(), (QList<Project *>{a, b}));
    a->addFile(&sprite, Project::Sprites);

    sprite.fromFile(archive, sprite.name, 0, nullptr);
    sprite.toFile(other, sprite.name, 0, nullptr);
    QCOMPARE(parent.opened, QList<ProjectFile *>{&sprite});
    QCOMPARE(parent.saved, QList<ProjectFile *>{&sprite});
    QCOMPARE(parent.added, (QList<ProjectFile *>{&first, &second, &sprite}));
    first.fromFile(other, first.name, 0, nullptr);
    a->reload();
    QCOMPARE(first.loads, 2);
    QCOMPARE(sprite.loads, 2);
    QCOMPARE(second.loads, 0);
    QCOMPARE(parent.opened.size(), 4);

    loose->release(); // never entered the parent
    QCOMPARE(parent.refCount(), 2u);
    a->release();
    QCOMPARE(parent.refCount(), 1u);
    QCOMPARE(parent.openedProjects(), QList<Project *>{b});
    QCOMPARE(parent.allClosed, 0);
    QCOMPARE(first.freed, 1); // the project held the only references
    QCOMPARE(sprite.freed, 1);
    b->release();
    QCOMPARE(parent.refCount(), 0u);
    QCOMPARE(parent.allClosed, 1);
    QCOMPARE(second.freed, 1);
    QCOMPARE(archive.refCount(), 2u); // the projects gave theirs back
}

void ProjectTest::nothingReachesAnEndedParent()
{
    MemoryArchive archive;
    RecordingParent parent(QStringLiteral("/work/"), archive);
    TestFile main(QStringLiteral("/work/a/a.def")), sprite(QStringLiteral("/work/a/a.spr"));
    auto *project = new TestProject(&parent, 0, &main, true);
    project->addFile(&sprite, Project::Sprites);
    project->addToParent();
    project->release();
    QCOMPARE(parent.allClosed, 1);
    QCOMPARE(sprite.freed, 1);
    QCOMPARE(parent.touchedAfterEnd, 0);
}

void ProjectTest::saveAllRefusesReadOnlyArchive()
{
    MemoryArchive source, target;
    target.readOnly = true;
    source.files.insert(QStringLiteral("/work/a/notes.txt"), "notes");
    RecordingParent parent(QStringLiteral("/work/"), source);
    TestFile main(QStringLiteral("/work/a/a.def"), "main"), sprite(QStringLiteral("/work/a/a.spr"), "spr");
    main.modified = sprite.modified = true;
    auto *project = new TestProject(&parent, 0, &main, true);
    project->listed = {{1, QStringLiteral("a.spr")}, {4, QStringLiteral("notes.txt")}};
    sprite.addRef();
    project->addFile(&sprite, Project::Sprites);
    sprite.fromFile(source, sprite.name, 0, nullptr);

    for (bool asCopy : {false, true})
        QVERIFY(!project->saveAll(target, QStringLiteral("/out"), asCopy, nullptr));
    QCOMPARE(target.opened, 0);
    QVERIFY(target.files.isEmpty());
    QVERIFY(main.saves.isEmpty() && sprite.saves.isEmpty());
    QCOMPARE(&sprite.archive(), &source);
    QCOMPARE(target.refCount(), 1u);
    project->release();
}

void ProjectTest::saveAll_data()
{
    QTest::addColumn<bool>("asCopy");
    QTest::addColumn<QStringList>("expected"); // name=content below the target's project directory
    QTest::addColumn<QStringList>("saves");    // name|flags
    QTest::newRow("save as") << false
                             << QStringList{"hero.def=<missing>", "hero.spr=new spr", "hero.sfx=new sfx",
                                            "hero.anim=<missing>", "notes.txt=old notes",
                                            "readme.txt=old readme"}
                             << QStringList{"hero.sfx|0", "hero.spr|0"};
    QTest::newRow("copy") << true
                          << QStringList{"hero.def=new def", "hero.spr=new spr", "hero.sfx=old sfx",
                                         "hero.anim=old anim", "notes.txt=old notes", "readme.txt=old readme"}
                          << QStringList{"hero.def|1", "hero.spr|1"};
}

void ProjectTest::saveAll()
{
    QFETCH(bool, asCopy);
    QFETCH(QStringList, expected);
    QFETCH(QStringList, saves);
    const QString root = m_dir.path() + QLatin1Char('/') + QLatin1String(QTest::currentDataTag()) + QLatin1Char('/');
    const QString source = root + QStringLiteral("src/");
    const QString hero = source + QStringLiteral("actors/hero/");
    const QString out = root + QStringLiteral("out");
    for (const char *name : {"hero.def", "hero.spr", "hero.sfx", "hero.anim", "notes.txt", "readme.txt"}) {
        const QString suffix = QFileInfo(QLatin1String(name)).suffix();
        QVERIFY(writeFile(hero + QLatin1String(name), "old " + (suffix == "txt" ? QByteArray(name).chopped(4) : suffix.toLatin1())));
    }

    FileSystemArchive &archive = FileSystemArchive::instance();
    RecordingParent parent(source, archive);
    TestFile main(hero + "hero.def", "new def"), sprite(hero + "hero.spr", "new spr");
    TestFile sound(hero + "hero.sfx", "new sfx"), animation(hero + "hero.anim", "new anim");
    main.modified = sprite.modified = true;
    animation.saveable = false;
    auto *project = new TestProject(&parent, 0, &main, true);
    project->listed = {{1, QStringLiteral("hero.spr")},
                       {2, QStringLiteral("hero.sfx")},
                       {3, QStringLiteral("hero.anim")},
                       {4, QStringLiteral("notes.txt")}};
    int type = Project::Sprites;
    for (TestFile *file : {&sprite, &sound, &animation}) {
        file->addRef();
        project->addFile(file, type++);
    }
    for (TestFile *file : {&main, &sprite, &sound, &animation})
        file->fromFile(archive, file->name, 0, nullptr);
    QStringList extra{QStringLiteral("readme.txt")};

    QVERIFY(project->saveAll(archive, out, asCopy, &extra));

    const QString target = out + QStringLiteral("/actors/hero/");
    for (const QString &line : qAsConst(expected)) {
        const QString name = line.section(QLatin1Char('='), 0, 0);
        QCOMPARE(QString::fromUtf8(readFile(target + name, "<missing>")), line.section(QLatin1Char('='), 1));
    }
    QStringList made;
    for (TestFile *file : {&main, &sprite, &sound, &animation}) {
        for (const QString &save : qAsConst(file->saves)) {
            QVERIFY2(save.startsWith(target), qPrintable(save));
            made << save.mid(target.size());
        }
    }
    made.sort();
    saves.sort();
    QCOMPARE(made, saves);
    QCOMPARE(readFile(hero + "hero.spr"), QByteArray("old spr")); // the sources stay as they were
    QCOMPARE(readFile(hero + "notes.txt"), QByteArray("old notes"));
    project->release();
}

void ProjectTest::saveAllToAnotherArchive_data()
{
    QTest::addColumn<bool>("asCopy");
    QTest::newRow("save as") << false;
    QTest::newRow("copy") << true;
}

void ProjectTest::saveAllToAnotherArchive()
{
    QFETCH(bool, asCopy);
    MemoryArchive source, target;
    source.files.insert(QStringLiteral("/work/a/a.spr"), "old spr");
    source.files.insert(QStringLiteral("/work/a/notes.txt"), "notes");
    RecordingParent parent(QStringLiteral("/work/"), source);
    TestFile main(QStringLiteral("/work/a/a.def")), sprite(QStringLiteral("/work/a/a.spr"), "new spr");
    TestFile animation(QStringLiteral("/work/a/Anim.ANIM"), "anim");
    animation.modified = true;
    auto *project = new TestProject(&parent, 0, &main, true);
    // The list may spell a name differently; the first spelling claims the file.
    project->listed = {{1, QStringLiteral("a.spr")}, {4, QStringLiteral("notes.txt")},
                       {3, QStringLiteral("anim.anim")}, {3, QStringLiteral("ANIM.anim")}};
    for (TestFile *file : {&sprite, &animation}) {
        file->addRef();
        project->addFile(file, Project::Sprites);
    }
    sprite.fromFile(source, sprite.name, 0, nullptr);

    QVERIFY(project->saveAll(target, QStringLiteral("/out"), asCopy, nullptr));
    QCOMPARE(&sprite.archive(), asCopy ? &source : &target);
    QCOMPARE(target.files.value(QStringLiteral("/out/a/notes.txt")), QByteArray("notes"));
    // Unmodified and present, a copy takes the raw bytes; a move writes the model.
    QCOMPARE(target.files.value(QStringLiteral("/out/a/a.spr")), QByteArray(asCopy ? "old spr" : "new spr"));
    QCOMPARE(animation.saves.size(), 1);
    QCOMPARE(animation.saves.at(0).toLower(), QStringLiteral("/out/a/anim.anim|%1").arg(asCopy ? 1 : 0));
    QVERIFY(parent.saved.isEmpty()); // rebinding is the save's own business: no notice
    project->release();
}

QTEST_GUILESS_MAIN(ProjectTest)
#include "tst_project.moc"
