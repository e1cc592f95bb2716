#include "editors/editor.h"
#include "engine/engine.h"
#include "engine/extensionmanager.h"
#include "foundation/filesystemarchive.h"
#include "foundation/interface.h"
#include "foundation/filewatcher.h"
#include "foundation/progress.h"
#include "foundation/prompt.h"

#include "projecttestsupport.h"
#include "testfiles.h"
#include "testinterface.h"
#include "../code/testengine.h"

#include <QAbstractItemModelTester>
#include <QDir>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>

using namespace Ovra;

namespace {

// The tree as text, one node a line, indented by depth: "name[type]" with the type
// a file node answers, "name/" for a directory, "name?" for a dummy.
QStringList shape(const ParentProject &model, const QModelIndex &parent = QModelIndex(), int depth = 0)
{
    QStringList lines;
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        const ParentProject::Path *node = model.itemPath(index);
        QString line = QString(depth * 2, QLatin1Char(' ')) + model.data(index, Qt::DisplayRole).toString();
        if (node->isDirectory())
            line += QLatin1Char('/');
        else if (node->isFile())
            line += QStringLiteral("[%1]").arg(node->fileType());
        else
            line += QLatin1Char('?');
        lines << line << shape(model, index, depth + 1);
    }
    return lines;
}

// A file that reads and writes its bytes on disk and is watched there, as code
// documents are: a change by another hand would raise the reload question.
class WatchedFile : public TestFile, public FileWatchObject
{
public:
    using TestFile::TestFile;
    int reloads = 0;
    int pauses = 0;
    QString watchedFileName() const override { return name; }
    void reloadFile() override { ++reloads; }
    void pauseWatch(bool pause) override
    {
        ++pauses;
        FileWatchObject::pauseWatch(pause);
    }
    bool fromFile(Archive &archive, const QString &source, uint flags, JobStats *stats) override
    {
        fileLoaded(archive, source, flags & Foreign);
        QIODevice *device = archive.openFile(source, QIODevice::ReadOnly);
        if (device) {
            content = device->readAll();
            archive.closeFile(device);
        }
        TestFile::fromFile(archive, source, flags, stats);
        return device != nullptr;
    }
    Capabilities capabilities() const override { return {}; }
};

// Answers the watcher's reload questions, and tells when the watcher has caught up: the
// system reports changes in the order they happen, so once a file of its own, changed by
// another hand, has been asked about, every change before it has had its say.
class WatchingUser
{
public:
    WatchingUser(const QString &sentinel, QMessageBox::StandardButton answer)
        : m_sentinel(sentinel)
    {
        writeFile(sentinel, "0");
        m_sentinel.fromFile(FileSystemArchive::instance(), sentinel, 0, nullptr);
        m_previous = setAnswerer([this, answer](const Prompt &prompt) {
            asked << prompt.text;
            return answer;
        });
    }
    ~WatchingUser() { setAnswerer(m_previous); }

    // Changes the sentinel and waits for its question, which is taken out of `asked`.
    bool catchUp()
    {
        const auto aboutSentinel = [this](const QString &text) { return text.contains(m_sentinel.name); };
        writeFile(m_sentinel.name, QByteArray::number(++m_changes));
        const bool seen = QTest::qWaitFor([&] { return std::any_of(asked.cbegin(), asked.cend(), aboutSentinel); },
                                          10000);
        asked.erase(std::remove_if(asked.begin(), asked.end(), aboutSentinel), asked.end());
        return seen;
    }

    QStringList asked; // the texts of the questions

private:
    WatchedFile m_sentinel;
    Answerer m_previous;
    int m_changes = 0;
};

// Progress as a job counts it; serves as the stats of one operation too.
class RecordingJob : public Job
{
public:
    QString title;
    uint maximum = 0;
    uint value = 0;
    void error(const QString &) override {}
    void setMaximum(uint to) override { maximum = to; }
    void setValue(uint to) override { value = to; }
    void incrementValue() override { ++value; }
    bool wasCancelled() override { return false; }
    void setAsynchronous(bool) override {}
};

class RecordingProgress : public ProgressProvider
{
public:
    std::vector<std::unique_ptr<RecordingJob>> jobs;
    Job *start(const QString &title, int) override
    {
        jobs.emplace_back(new RecordingJob);
        jobs.back()->title = title;
        return jobs.back().get();
    }
};

// A host that records who asks for an editor.
class SavingHost : public TestInterface
{
public:
    QList<QPair<ProjectFile *, int>> editorsAsked;
    FileEditor *editorForFile(ProjectFile *file, int type) override
    {
        editorsAsked.append({file, type});
        return nullptr;
    }
};

// An engine whose games are marked by a file of their own.
class MarkEngine : public Engine
{
public:
    MarkEngine() : Engine(QStringLiteral("marks")) {}
    QString queryString(StringType type, uint) const override
    {
        return type == GameMarkFile ? QStringLiteral("game.mark") : QString();
    }
    QString singleFileFilters(int) const override { return QString(); }
    ProjectFile *createFile(int, Project *) override { return nullptr; }
};

// A parent with an engine that copies through the archive, an icon of its own for type 7,
// and indexes in any column, as a view might keep one.
class Work : public RecordingParent
{
public:
    Work(const QString &root, Archive &archive, Engine *engine = nullptr)
        : RecordingParent(root, archive), m_engine(engine) {}
    Engine *engine() const override { return m_engine; }
    QIcon fileIcon(int fileType) const override { return fileType == 7 ? own : QIcon(); }
    QModelIndex cellAt(int row, int column, void *node) const { return createIndex(row, column, node); }
    QStringList copied;
    QIcon own;

protected:
    bool copyFile(const QString &relativeName, const QString &targetDirectory) override
    {
        copied << relativeName;
        return Ovra::copyFile(archive(), basePath() + relativeName, FileSystemArchive::instance(),
                              targetDirectory + relativeName);
    }

private:
    Engine *m_engine;
};

} // namespace

class ParentProjectTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void treeFollowsTheDisk();
    void addAndRemovePaths();
    void otherArchivesAreNotWatched();
    void projectsEnterTheirFiles();
    void iconsAndRoles_data();
    void iconsAndRoles();
    void backupAndRestore();
    void restoreRefusesAReadOnlyArchive();
    void backupOfNoProject();
    void saveWritesWhatChanged();
    void restoreBringsBackCodeDocuments();
    void saveAsOneProjectOrAGame();

private:
    QTemporaryDir m_dir;
};

void ParentProjectTest::initTestCase()
{
    QVERIFY(m_dir.isValid());
}

void ParentProjectTest::treeFollowsTheDisk()
{
    const QString root = m_dir.filePath(QStringLiteral("disk/"));
    QVERIFY(writeFile(root + QStringLiteral("actors/hero/hero.def")));
    QVERIFY(writeFile(root + QStringLiteral("actors/hero/hero.spr")));
    QVERIFY(writeFile(root + QStringLiteral("actors/readme.txt")));
    QVERIFY(QDir().mkpath(root + QStringLiteral("stages")));

    RecordingParent work(root, FileSystemArchive::instance());
    QAbstractItemModelTester tester(&work, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QCOMPARE(work.basePath(), root);
    QCOMPARE(work.rowCount(), 0);
    // Directories and definition files below chars, listed at once and kept current.
    work.addPath(QStringLiteral("actors"), ParentProject::ListDirectories | ParentProject::ListFiles,
                 {QStringLiteral("*.def"), QStringLiteral("*.txt")});
    QCOMPARE(shape(work), QStringList({"actors/", "  hero/", "    hero.def[0]", "  readme.txt[0]"}));
    QVERIFY(work.itemPath(work.index(0, 0))->isListed() == false);
    QVERIFY(work.itemPath(work.index(0, 0, work.index(0, 0)))->isListed());

    // Created on disk: a directory with a file, and a file that the filters keep out.
    QVERIFY(writeFile(root + QStringLiteral("actors/ryu/ryu.def")));
    QVERIFY(writeFile(root + QStringLiteral("actors/notes.bin")));
    QTRY_COMPARE(shape(work), QStringList({"actors/", "  hero/", "    hero.def[0]", "  readme.txt[0]", "  ryu/",
                                           "    ryu.def[0]"}));
    // Deleted on disk.
    QVERIFY(QFile::remove(root + QStringLiteral("actors/hero/hero.def")));
    QVERIFY(QDir(root + QStringLiteral("actors/ryu")).removeRecursively());
    QTRY_COMPARE(shape(work), QStringList({"actors/", "  hero/", "  readme.txt[0]"}));
    QVERIFY(writeFile(root + QStringLiteral("actors/hero/kfm2.def")));
    QTRY_COMPARE(shape(work), QStringList({"actors/", "  hero/", "    kfm2.def[0]", "  readme.txt[0]"}));

    // Absolute names find their nodes, whatever the case of the root.
    ParentProject::Path *found = work.filePath(root + QStringLiteral("actors/hero/kfm2.def"));
    QVERIFY(found);
    QCOMPARE(found->path(), root + QStringLiteral("actors/hero/kfm2.def"));
    QCOMPARE(work.filePath(root.toUpper() + QStringLiteral("actors/hero")), work.filePath(root + QStringLiteral("actors/hero")));
    QCOMPARE(work.filePath(root + QStringLiteral("actors/none")), nullptr);
    QCOMPARE(work.filePath(QStringLiteral("/elsewhere/actors")), nullptr);
    QCOMPARE(work.rowCount(work.index(0, 0)), 2);
}

void ParentProjectTest::addAndRemovePaths()
{
    MemoryArchive archive;
    Work work(QStringLiteral("/work/"), archive);
    QAbstractItemModelTester tester(&work, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QCOMPARE(work.addPath(QString(), ParentProject::NoListing, {}), nullptr);
    QCOMPARE(work.addPath(QStringLiteral("/"), ParentProject::NoListing, {}), nullptr);
    // Only an empty first and last part are dropped: a middle one becomes a node.
    ParentProject::BasePath *b = work.addPath(QStringLiteral("/a//b/"), ParentProject::NoListing, {});
    QVERIFY(b);
    QCOMPARE(b->path(), QStringLiteral("/work/a//b/"));
    QCOMPARE(shape(work), QStringList({"a/", "  /", "    b/"}));
    // Existing parts are walked, not made again.
    QCOMPARE(work.addPath(QStringLiteral("a//b"), ParentProject::NoListing, {}), b);
    work.addPath(QStringLiteral("a/c"), ParentProject::NoListing, {});
    QCOMPARE(shape(work), QStringList({"a/", "  /", "    b/", "  c/"}));

    work.removePath(QStringLiteral("a//b"));
    QCOMPARE(shape(work), QStringList({"a/", "  /", "  c/"}));
    work.removePath(QStringLiteral("a/none")); // nothing there
    work.removePath(QStringLiteral("a"));
    QCOMPARE(work.rowCount(), 0);
    // A column above 0 has no rows.
    work.addPath(QStringLiteral("x/y"), ParentProject::NoListing, {});
    const QModelIndex x = work.index(0, 0);
    QCOMPARE(work.rowCount(x), 1);
    QCOMPARE(work.rowCount(work.cellAt(0, 1, x.internalPointer())), 0);
    QCOMPARE(work.columnCount(), 1);
}

void ParentProjectTest::otherArchivesAreNotWatched()
{
    MemoryArchive archive;
    archive.files.insert(QStringLiteral("actors/hero.def"), "x");
    RecordingParent work(QString(), archive);
    // A listing type on a container lists nothing: the tree only changes through
    // addPath and removePath.
    work.addPath(QStringLiteral("actors"), ParentProject::ListDirectories | ParentProject::ListFiles, {});
    QCOMPARE(shape(work), QStringList({"actors/"}));
    QCOMPARE(work.filePath(QStringLiteral("actors")), work.itemPath(work.index(0, 0)));
}

void ParentProjectTest::projectsEnterTheirFiles()
{
    MemoryArchive archive;
    auto *work = new RecordingParent(QStringLiteral("/work/"), archive);
    QAbstractItemModelTester tester(work, QAbstractItemModelTester::FailureReportingMode::QtTest);
    work->addPath(QStringLiteral("actors"), ParentProject::NoListing, {});

    auto *kfmMain = new TestFile(QStringLiteral("/work/actors/hero/hero.def"));
    auto *hero = new TestProject(work, 0, kfmMain, true);
    hero->listed = {{0, QStringLiteral("hero.def")}, {1, QStringLiteral("sprites/hero.spr")},
                   {3, QStringLiteral("hero.anim")}, {2, QStringLiteral("../common/battle.sfx")}};
    hero->addToParent();
    QCOMPARE(work->refCount(), 1u);
    QCOMPARE(shape(*work), QStringList({"actors/", "  hero/", "    hero.def[0]", "    sprites/", "      hero.spr[1]",
                                        "    hero.anim[3]", "    ../common/battle.sfx?"}));
    const ParentProject::Path *place = work->projectPath(hero);
    QCOMPARE(place->path(), QStringLiteral("/work/actors/hero/"));
    QCOMPARE(work->projectForFile(work->filePath(QStringLiteral("/work/actors/hero/sprites/hero.spr"))), place);
    QCOMPARE(work->projectForFile(work->filePath(QStringLiteral("/work/actors"))), nullptr);

    // A project whose main file stands in the root has the root as its place.
    auto *rootMain = new TestFile(QStringLiteral("/work/game.def"));
    auto *game = new TestProject(work, 0, rootMain, true);
    game->listed = {{4, QStringLiteral("game.def")}};
    game->addToParent();
    QCOMPARE(work->refCount(), 2u);
    QCOMPARE(shape(*work).last(), QStringLiteral("game.def[4]"));
    QCOMPARE(work->openedProjects().size(), 2);

    // Closing takes the project's rows away; the last one ends the parent.
    hero->release();
    QCOMPARE(shape(*work), QStringList({"actors/", "game.def[4]"}));
    QCOMPARE(work->allClosed, 0);
    game->release();
    QCOMPARE(shape(*work), QStringList({"actors/"}));
    QCOMPARE(work->allClosed, 1);
    QCOMPARE(work->refCount(), 0u);
    delete work;
}

void ParentProjectTest::iconsAndRoles_data()
{
    QTest::addColumn<int>("fileType");
    QTest::addColumn<QString>("icon");

    QTest::addRow("listed") << 0 << "icon_code";
    QTest::addRow("sprites") << 1 << "icon_sprite";
    QTest::addRow("sounds") << 2 << "icon_sound";
    QTest::addRow("animations") << 3 << "icon_animation";
    QTest::addRow("scripts") << 4 << "icon_code";
    QTest::addRow("other") << 9 << "icon_file";
    QTest::addRow("the engine's own") << 7 << "engine";
}

void ParentProjectTest::iconsAndRoles()
{
    QFETCH(int, fileType);
    QFETCH(QString, icon);

    MemoryArchive archive;
    Work work(QStringLiteral("/work/"), archive);
    auto *main = new TestFile(QStringLiteral("/work/x/x.def"));
    auto *project = new TestProject(&work, 0, main, true);
    project->listed = {{fileType, QStringLiteral("file.ext")}};
    project->addToParent();
    const QModelIndex folder = work.index(0, 0);
    const QModelIndex file = work.index(0, 0, folder);
    QCOMPARE(work.data(file, Qt::EditRole).toString(), QStringLiteral("file.ext"));
    QVERIFY(!work.data(file, Qt::ToolTipRole).isValid());
    // With no host, no icons.
    QVERIFY(work.data(file, Qt::DecorationRole).value<QIcon>().isNull());

    TestInterface host;
    setGlobalInterface(&host);
    QPixmap red(4, 4);
    red.fill(Qt::red);
    work.own = QIcon(red);
    const QIcon shown = work.data(file, Qt::DecorationRole).value<QIcon>();
    QCOMPARE(icon == QLatin1String("engine") ? (shown.cacheKey() == work.own.cacheKey() ? QStringLiteral("engine") : QString())
                                             : host.iconName(shown),
             icon);
    QCOMPARE(host.iconName(work.data(folder, Qt::DecorationRole).value<QIcon>()), QStringLiteral("icon_folder"));
    setGlobalInterface(nullptr);
    project->release();
}

void ParentProjectTest::backupAndRestore()
{
    const QString root = m_dir.filePath(QStringLiteral("game/"));
    const QMap<QString, QByteArray> original{
        {QStringLiteral("actors/hero/hero.def"), "[Info]\r\nname = hero\r\n"},
        {QStringLiteral("actors/hero/hero.anim"), "<0>\r\nframe 0, 0, 0, 4\r\n"},
        {QStringLiteral("actors/hero/sprites/hero.spr"), QByteArray("\x00\x01\xff\xfe binary\x00", 13)},
        {QStringLiteral("actors/ryu/ryu.def"), "[Info]\nname = ryu\n"},
        {QStringLiteral("actors/ryu/ryu.rules"), "[Stats]\nspeed = 1000\n"},
    };
    for (auto it = original.cbegin(); it != original.cend(); ++it)
        QVERIFY(writeFile(root + it.key(), it.value()));

    TestInterface host;
    setGlobalInterface(&host);
    WatchingUser user(m_dir.filePath(QStringLiteral("sentinel-backup.txt")), QMessageBox::No);
    auto *work = new RecordingParent(root, FileSystemArchive::instance());
    QList<WatchedFile *> files;
    bool opened = true;
    auto openProject = [&](const QString &folder, const QStringList &names) -> TestProject * {
        auto *main = new WatchedFile(root + folder + names.first());
        auto *project = new TestProject(work, 0, main, true);
        QList<WatchedFile *> own{main};
        project->listed.append({0, names.first()});
        for (const QString &name : names.mid(1)) {
            project->listed.append({1, name});
            auto *file = new WatchedFile(root + folder + name);
            opened = project->addFile(file, 1) && opened;
            own << file;
        }
        for (WatchedFile *file : qAsConst(own))
            opened = file->fromFile(FileSystemArchive::instance(), file->name, 0, nullptr) && opened;
        files << own;
        project->addToParent();
        return project;
    };
    TestProject *hero = openProject(QStringLiteral("actors/hero/"),
                                   {QStringLiteral("hero.def"), QStringLiteral("hero.anim"), QStringLiteral("sprites/hero.spr")});
    TestProject *ryu = openProject(QStringLiteral("actors/ryu/"), {QStringLiteral("ryu.def"), QStringLiteral("ryu.rules")});
    QVERIFY(opened);
    QCOMPARE(work->refCount(), 2u);

    RecordingJob stats;
    QVERIFY(work->backup(QStringLiteral("first"), &stats));
    QCOMPARE(stats.maximum, 2u);
    QCOMPARE(stats.value, 2u);
    const QStringList backups = QDir(root + QStringLiteral("backup")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    QCOMPARE(backups.size(), 1);
    const QString saved = backups.first();
    QVERIFY(QRegularExpression(QStringLiteral("^\\d\\d\\.\\d\\d\\.\\d{4}_\\d+\\.\\d+\\.\\d+_(am|pm)_first$")).match(saved).hasMatch());
    for (auto it = original.cbegin(); it != original.cend(); ++it)
        QCOMPARE(readFile(root + QStringLiteral("backup/") + saved + QLatin1Char('/') + it.key(), "<missing>"), it.value());

    // The working files change and go, as a user's edits would.
    QVERIFY(writeFile(root + QStringLiteral("actors/hero/hero.def"), "broken"));
    QVERIFY(QFile::remove(root + QStringLiteral("actors/hero/hero.anim")));
    QVERIFY(QFile::remove(root + QStringLiteral("actors/hero/sprites/hero.spr")));
    QVERIFY(writeFile(root + QStringLiteral("actors/ryu/ryu.rules"), "[Stats]\nspeed = 1\n"));
    QVERIFY(user.catchUp());
    QCOMPARE(user.asked.size(), 2); // the two that changed; the deleted ones ask nothing
    user.asked.clear();
    for (WatchedFile *file : qAsConst(files))
        file->loads = 0;

    RecordingJob restored;
    QVERIFY(work->restoreBackup(saved, &restored));
    for (auto it = original.cbegin(); it != original.cend(); ++it)
        QCOMPARE(readFile(root + it.key(), "<missing>"), it.value());
    QCOMPARE(restored.maximum, uint(original.size() + 2));
    QCOMPARE(restored.value, restored.maximum);
    // Every file was read again, every watch paused and resumed, and the host told.
    for (WatchedFile *file : qAsConst(files)) {
        QCOMPARE(file->loads, 1);
        QCOMPARE(file->pauses, 2);
    }
    QCOMPARE(files.first()->content, original.value(QStringLiteral("actors/hero/hero.def")));
    QCOMPARE(host.projectsRestoredCalls, 1);
    // No question to reload comes from our own writes, however late their news.
    QVERIFY(user.catchUp());
    QCOMPARE(user.asked, QStringList());

    hero->release();
    ryu->release();
    delete work;
    setGlobalInterface(nullptr);
}

void ParentProjectTest::restoreRefusesAReadOnlyArchive()
{
    MemoryArchive archive;
    archive.readOnly = true;
    archive.files.insert(QStringLiteral("/work/x/x.def"), "kept");
    RecordingParent work(QStringLiteral("/work/"), archive);
    auto *main = new WatchedFile(QStringLiteral("/work/x/x.def"));
    auto *project = new TestProject(&work, 0, main, true);
    project->addToParent();
    RecordingJob stats;
    QVERIFY(!work.restoreBackup(QStringLiteral("anything"), &stats));
    QCOMPARE(main->pauses, 0);
    QCOMPARE(main->loads, 0);
    QCOMPARE(stats.maximum, 0u);
    QCOMPARE(archive.files.value(QStringLiteral("/work/x/x.def")), QByteArray("kept"));
    project->release();
}

void ParentProjectTest::backupOfNoProject()
{
    const QString root = m_dir.filePath(QStringLiteral("empty/"));
    QVERIFY(QDir().mkpath(root));
    RecordingParent work(root, FileSystemArchive::instance());
    QVERIFY(work.backup(QStringLiteral("nothing"), nullptr));
    QVERIFY(!QDir(root + QStringLiteral("backup")).exists()
            || QDir(root + QStringLiteral("backup")).entryList(QDir::Files | QDir::NoDotAndDotDot).isEmpty());
    // A backup that isn't there restores nothing and returns true all the same.
    QVERIFY(work.restoreBackup(QStringLiteral("missing"), nullptr));
}

void ParentProjectTest::restoreBringsBackCodeDocuments()
{
    // Code documents of the test language: watched files with their own reload road.
    const QString root = m_dir.filePath(QStringLiteral("code/"));
    const QByteArray definition = "[Info]\r\nname = hero\r\n<walk>\r\nframe a, 0, 0, 4\r\n";
    const QByteArray states = "[Stats]\r\nspeed = 1000\r\n";
    QVERIFY(writeFile(root + QStringLiteral("hero/hero.def"), definition));
    QVERIFY(writeFile(root + QStringLiteral("hero/hero.rules"), states));
    WatchingUser user(m_dir.filePath(QStringLiteral("sentinel-code.txt")), QMessageBox::Yes);
    RecordingParent work(root, FileSystemArchive::instance());
    auto *main = new TestDocument;
    auto *project = new TestProject(&work, 0, main, true);
    auto *rules = new TestDocument;
    QVERIFY(project->addFile(rules, 4));
    QVERIFY(main->fromFile(FileSystemArchive::instance(), root + QStringLiteral("hero/hero.def"), 0, nullptr));
    QVERIFY(rules->fromFile(FileSystemArchive::instance(), root + QStringLiteral("hero/hero.rules"), 0, nullptr));
    project->listed = {{0, QStringLiteral("hero.def")}, {4, QStringLiteral("hero.rules")}};
    project->addToParent();

    QVERIFY(work.backup(QStringLiteral("code"), nullptr));
    const QString saved = QDir(root + QStringLiteral("backup")).entryList(QDir::Dirs | QDir::NoDotAndDotDot).value(0);
    QVERIFY(!saved.isEmpty());

    // Edited and saved in the editor, and the other file deleted by hand.
    QTextCursor cursor(rules->findBlockByNumber(1));
    cursor.insertText(QStringLiteral("max"));
    QVERIFY(rules->toFile(FileSystemArchive::instance(), rules->fileName(), 0, nullptr));
    QVERIFY(QFile::remove(root + QStringLiteral("hero/hero.def")));
    QVERIFY(user.catchUp());
    user.asked.clear();

    QVERIFY(work.restoreBackup(saved, nullptr));
    QCOMPARE(readFile(root + QStringLiteral("hero/hero.def"), "<missing>"), definition);
    QCOMPARE(readFile(root + QStringLiteral("hero/hero.rules"), "<missing>"), states);
    // The documents read their files again: text, tree and saved state as restored.
    QCOMPARE(rules->toString(), QStringLiteral("[Stats]\nspeed = 1000\n"));
    QCOMPARE(main->root()->childCount(), 2u);
    QVERIFY(!rules->isModified());
    QVERIFY(user.catchUp());
    QCOMPARE(user.asked, QStringList());
    project->release();
}

void ParentProjectTest::saveWritesWhatChanged()
{
    const QString root = m_dir.filePath(QStringLiteral("saving/"));
    QVERIFY(writeFile(root + QStringLiteral("p/p.def"), "main"));
    QVERIFY(writeFile(root + QStringLiteral("p/a.rules"), "old a"));
    SavingHost host;
    setGlobalInterface(&host);
    RecordingParent work(root, FileSystemArchive::instance());
    auto *main = new TestFile(root + QStringLiteral("p/p.def"), "main");
    auto *project = new TestProject(&work, 0, main, true);
    auto *changed = new TestFile(root + QStringLiteral("p/a.rules"), "new a");
    auto *unchanged = new TestFile(root + QStringLiteral("p/b.rules"), "b");
    auto *lost = new TestFile(root + QStringLiteral("p/gone/c.rules"), "c");
    for (TestFile *file : {changed, unchanged, lost}) {
        QVERIFY(project->addFile(file, 4));
    }
    for (TestFile *file : {main, changed, unchanged, lost})
        file->fromFile(FileSystemArchive::instance(), file->name, 0, nullptr);
    project->addToParent();
    changed->modified = true;
    lost->modified = true;

    RecordingProgress progress;
    work.save(&progress);
    // Only the modified file that has its place is written, in the foreground.
    QCOMPARE(changed->saves, QStringList({root + QStringLiteral("p/a.rules|0")}));
    QCOMPARE(readFile(root + QStringLiteral("p/a.rules"), "<missing>"), QByteArray("new a"));
    QVERIFY(unchanged->saves.isEmpty());
    QVERIFY(main->saves.isEmpty());
    // The one whose file is gone goes to its editor's "save as", by its lowest type.
    QVERIFY(lost->saves.isEmpty());
    QCOMPARE(host.editorsAsked.size(), 1);
    QCOMPARE(host.editorsAsked.first().first, lost);
    QCOMPARE(host.editorsAsked.first().second, 4);
    QCOMPARE(progress.jobs.size(), size_t(1));
    QCOMPARE(progress.jobs.front()->maximum, 1u);
    QCOMPARE(progress.jobs.front()->value, 1u);
    project->release();
    setGlobalInterface(nullptr);
}

void ParentProjectTest::saveAsOneProjectOrAGame()
{
    const QString root = m_dir.filePath(QStringLiteral("alone/"));
    QVERIFY(writeFile(root + QStringLiteral("hero/hero.def"), "main"));
    QVERIFY(writeFile(root + QStringLiteral("hero/hero.rules"), "states"));
    MarkEngine engine;
    Work work(root, FileSystemArchive::instance(), &engine);
    QVERIFY(!work.isGame());
    auto *main = new TestFile(root + QStringLiteral("hero/hero.def"), "main");
    auto *project = new TestProject(&work, 0, main, true);
    project->listed = {{0, QStringLiteral("hero.def")}, {4, QStringLiteral("hero.rules")}};
    main->fromFile(FileSystemArchive::instance(), main->name, 0, nullptr);
    project->addToParent();

    // One stand-alone project: its files go with the new main file.
    const QString target = m_dir.filePath(QStringLiteral("copy/kfm2.def"));
    QVERIFY(QDir().mkpath(m_dir.filePath(QStringLiteral("copy"))));
    QVERIFY(work.saveAs(target, nullptr));
    QCOMPARE(readFile(target, "<missing>"), QByteArray("main"));
    QCOMPARE(readFile(m_dir.filePath(QStringLiteral("copy/hero/hero.rules"))), QByteArray("states"));
    QCOMPARE(work.basePath(), m_dir.filePath(QStringLiteral("copy/")));
    QVERIFY(work.copied.isEmpty());
    project->release();

    // A game: every file of the tree is copied by the engine's operation.
    const QString game = m_dir.filePath(QStringLiteral("game2/"));
    QVERIFY(writeFile(game + QStringLiteral("game.mark"), "mark"));
    QVERIFY(writeFile(game + QStringLiteral("actors/a.def"), "a"));
    QVERIFY(writeFile(game + QStringLiteral("actors/b.def"), "b"));
    Work whole(game, FileSystemArchive::instance(), &engine);
    QVERIFY(whole.isGame());
    whole.addPath(QStringLiteral("actors"), ParentProject::ListFiles, {});
    RecordingJob stats;
    const QString copy = m_dir.filePath(QStringLiteral("game2copy/"));
    QVERIFY(whole.saveAs(copy, &stats));
    QCOMPARE(whole.copied, QStringList({"actors/a.def", "actors/b.def"}));
    QCOMPARE(readFile(copy + QStringLiteral("actors/b.def"), "<missing>"), QByteArray("b"));
    QCOMPARE(stats.maximum, 2u);
    QCOMPARE(stats.value, 2u);
}

QTEST_MAIN(ParentProjectTest)
#include "tst_parentproject.moc"
