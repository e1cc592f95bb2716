#include "foundation/filesystemarchive.h"
#include "foundation/interface.h"

#include "projecttestsupport.h"
#include "testinterface.h"

#include <QAbstractItemModelTester>
#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace Ovra;

namespace {

bool writeFile(const QString &name, const QByteArray &data = QByteArray("x"))
{
    QDir().mkpath(QFileInfo(name).absolutePath());
    QFile file(name);
    return file.open(QIODevice::WriteOnly) && file.write(data) == data.size();
}

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

class ColumnWork : public RecordingParent
{
public:
    using RecordingParent::RecordingParent;
    // An index in another column than the model hands out, as a view might keep one.
    QModelIndex cellAt(int row, int column, void *node) const { return createIndex(row, column, node); }
};

class IconWork : public RecordingParent
{
public:
    using RecordingParent::RecordingParent;
    QIcon own;
    QIcon fileIcon(int fileType) const override { return fileType == 7 ? own : QIcon(); }
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
    QVERIFY(writeFile(root + QStringLiteral("chars/kfm/kfm.def")));
    QVERIFY(writeFile(root + QStringLiteral("chars/kfm/kfm.sff")));
    QVERIFY(writeFile(root + QStringLiteral("chars/readme.txt")));
    QVERIFY(QDir().mkpath(root + QStringLiteral("stages")));

    RecordingParent work(root, FileSystemArchive::instance());
    QAbstractItemModelTester tester(&work, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QCOMPARE(work.basePath(), root);
    QCOMPARE(work.rowCount(), 0);
    // Directories and definition files below chars, listed at once and kept current.
    work.addPath(QStringLiteral("chars"), ParentProject::ListDirectories | ParentProject::ListFiles,
                 {QStringLiteral("*.def"), QStringLiteral("*.txt")});
    QCOMPARE(shape(work), QStringList({"chars/", "  kfm/", "    kfm.def[0]", "  readme.txt[0]"}));
    QVERIFY(work.itemPath(work.index(0, 0))->isListed() == false);
    QVERIFY(work.itemPath(work.index(0, 0, work.index(0, 0)))->isListed());

    // Created on disk: a directory with a file, and a file that the filters keep out.
    QVERIFY(writeFile(root + QStringLiteral("chars/ryu/ryu.def")));
    QVERIFY(writeFile(root + QStringLiteral("chars/notes.bin")));
    QTRY_COMPARE(shape(work), QStringList({"chars/", "  kfm/", "    kfm.def[0]", "  readme.txt[0]", "  ryu/",
                                           "    ryu.def[0]"}));
    // Deleted on disk.
    QVERIFY(QFile::remove(root + QStringLiteral("chars/kfm/kfm.def")));
    QVERIFY(QDir(root + QStringLiteral("chars/ryu")).removeRecursively());
    QTRY_COMPARE(shape(work), QStringList({"chars/", "  kfm/", "  readme.txt[0]"}));
    QVERIFY(writeFile(root + QStringLiteral("chars/kfm/kfm2.def")));
    QTRY_COMPARE(shape(work), QStringList({"chars/", "  kfm/", "    kfm2.def[0]", "  readme.txt[0]"}));

    // Absolute names find their nodes, whatever the case of the root.
    ParentProject::Path *found = work.filePath(root + QStringLiteral("chars/kfm/kfm2.def"));
    QVERIFY(found);
    QCOMPARE(found->path(), root + QStringLiteral("chars/kfm/kfm2.def"));
    QCOMPARE(work.filePath(root.toUpper() + QStringLiteral("chars/kfm")), work.filePath(root + QStringLiteral("chars/kfm")));
    QCOMPARE(work.filePath(root + QStringLiteral("chars/none")), nullptr);
    QCOMPARE(work.filePath(QStringLiteral("/elsewhere/chars")), nullptr);
    QCOMPARE(work.rowCount(work.index(0, 0)), 2);
}

void ParentProjectTest::addAndRemovePaths()
{
    MemoryArchive archive;
    ColumnWork work(QStringLiteral("/work/"), archive);
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
    archive.files.insert(QStringLiteral("chars/kfm.def"), "x");
    RecordingParent work(QString(), archive);
    // A listing type on a container lists nothing: the tree only changes through
    // addPath and removePath.
    work.addPath(QStringLiteral("chars"), ParentProject::ListDirectories | ParentProject::ListFiles, {});
    QCOMPARE(shape(work), QStringList({"chars/"}));
    QCOMPARE(work.filePath(QStringLiteral("chars")), work.itemPath(work.index(0, 0)));
}

void ParentProjectTest::projectsEnterTheirFiles()
{
    MemoryArchive archive;
    auto *work = new RecordingParent(QStringLiteral("/work/"), archive);
    QAbstractItemModelTester tester(work, QAbstractItemModelTester::FailureReportingMode::QtTest);
    work->addPath(QStringLiteral("chars"), ParentProject::NoListing, {});

    auto *kfmMain = new TestFile(QStringLiteral("/work/chars/kfm/kfm.def"));
    auto *kfm = new TestProject(work, 0, kfmMain, true);
    kfm->listed = {{0, QStringLiteral("kfm.def")}, {1, QStringLiteral("sprites/kfm.sff")},
                   {3, QStringLiteral("kfm.air")}, {2, QStringLiteral("../common/fight.snd")}};
    kfm->addToParent();
    QCOMPARE(work->refCount(), 1u);
    QCOMPARE(shape(*work), QStringList({"chars/", "  kfm/", "    kfm.def[0]", "    sprites/", "      kfm.sff[1]",
                                        "    kfm.air[3]", "    ../common/fight.snd?"}));
    const ParentProject::Path *place = work->projectPath(kfm);
    QCOMPARE(place->path(), QStringLiteral("/work/chars/kfm/"));
    QCOMPARE(work->projectForFile(work->filePath(QStringLiteral("/work/chars/kfm/sprites/kfm.sff"))), place);
    QCOMPARE(work->projectForFile(work->filePath(QStringLiteral("/work/chars"))), nullptr);

    // A project whose main file stands in the root has the root as its place.
    auto *rootMain = new TestFile(QStringLiteral("/work/game.def"));
    auto *game = new TestProject(work, 0, rootMain, true);
    game->listed = {{4, QStringLiteral("game.def")}};
    game->addToParent();
    QCOMPARE(work->refCount(), 2u);
    QCOMPARE(shape(*work).last(), QStringLiteral("game.def[4]"));
    QCOMPARE(work->openedProjects().size(), 2);

    // Closing takes the project's rows away; the last one ends the parent.
    kfm->release();
    QCOMPARE(shape(*work), QStringList({"chars/", "game.def[4]"}));
    QCOMPARE(work->allClosed, 0);
    game->release();
    QCOMPARE(shape(*work), QStringList({"chars/"}));
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
    IconWork work(QStringLiteral("/work/"), archive);
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

QTEST_MAIN(ParentProjectTest)
#include "tst_parentproject.moc"
