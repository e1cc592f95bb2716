#include "foundation/filewatcher.h"

#include "foundation/filesystemarchive.h"
#include "memoryarchive.h"
#include "scriptedanswerer.h"
#include "testinterface.h"

#include <QtTest>

#include <cstdio>

using namespace Ovra;

namespace {

// The manager reports every notification on the debug stream; counting those lines
// tells a test that the watcher has spoken, so it can then check that nobody was asked.
QStringList debugLines;
QtMessageHandler previousHandler = nullptr;

void recordDebugLine(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type == QtDebugMsg)
        debugLines.append(message);
    previousHandler(type, context, message);
}

int notifications(const QString &path)
{
    int count = 0;
    for (const QString &line : qAsConst(debugLines))
        count += line.startsWith(QLatin1String("File modified:")) && line.contains(path);
    return count;
}

void writeFile(const QString &name, const QByteArray &data)
{
    QFile file(name);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    QCOMPARE(file.write(data), data.size());
}

FileWatcherManager &manager()
{
    return *FileWatcherManager::instance();
}

// A document as the library's files use the mix-in: it announces each read and write,
// and a reload is a fresh read.
class Document : public FileWatchObject
{
public:
    QString name;
    QByteArray contents;
    int reloads = 0;

    QString watchedFileName() const override { return name; }
    void reloadFile() override
    {
        ++reloads;
        load(name);
    }

    void load(const QString &fileName, Archive &archive = FileSystemArchive::instance(), bool isCopy = false)
    {
        fileLoaded(archive, fileName, isCopy);
        if (!isCopy)
            name = fileName;
        if (QIODevice *device = archive.openFile(fileName, QIODevice::ReadOnly)) {
            contents = device->readAll();
            archive.closeFile(device);
        }
    }
    void announceSave(const QString &fileName, Archive &archive = FileSystemArchive::instance(), bool isCopy = false)
    {
        fileSaved(archive, fileName, isCopy);
        if (!isCopy)
            name = fileName;
    }
    // Writes through the archive, which replaces an existing file by renaming.
    void save(const QByteArray &data)
    {
        announceSave(name);
        contents = data;
        Archive &archive = FileSystemArchive::instance();
        QIODevice *device = archive.openFile(name, QIODevice::WriteOnly);
        QVERIFY(device);
        device->write(data);
        archive.closeFile(device);
    }
};

// Installs an answerer function for one test.
struct AnswererScope
{
    explicit AnswererScope(Answerer answerer) : previous(setAnswerer(std::move(answerer))) {}
    ~AnswererScope() { setAnswerer(previous); }
    Answerer previous;
};

const int Timeout = 10000; // the polling fallback of the watcher is slow

} // namespace

// Exactly `count` questions, also once every notification of the changes so far is in.
#define EXPECT_PROMPTS(user, count)                                                   \
    do {                                                                              \
        QTRY_COMPARE_WITH_TIMEOUT((user).prompts().size(), count, Timeout);           \
        settle();                                                                     \
        QCOMPARE((user).prompts().size(), count);                                     \
    } while (false)

class FileWatcherTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { previousHandler = qInstallMessageHandler(recordDebugLine); }
    void cleanupTestCase() { qInstallMessageHandler(previousHandler); }
    void init()
    {
        QVERIFY(m_dir.isValid());
        m_path = m_dir.filePath(QStringLiteral("%1.txt").arg(++m_file));
        writeFile(m_path, "original");
    }
    void cleanup() { QVERIFY(!FileWatcherManager::instance()); }

    void managerLivesWithObjects();
    void registration();
    void outsideChangeAsksButOwnSaveDoesNot_data();
    void outsideChangeAsksButOwnSaveDoesNot();
    void twoDocumentsOnOnePath();
    void lateNewsAsksOnlyWhoHasNotReadIt();
    void deletedFileDoesNotAsk();
    void optionDisablesQuestion();
    void replacedByRenameStaysWatched();
    void changesDuringQuestion();
    void lastObjectGoesDuringQuestion();

private:
    // Returns once the watcher has reported a change to a file of its own, made after
    // everything before. The system reports changes in the order they happened, so every
    // notification of an earlier change has been handled by then.
    void settle()
    {
        const QString sentinel = m_dir.filePath(QStringLiteral("sentinel.txt"));
        writeFile(sentinel, "before");
        Document watching;
        watching.load(sentinel);
        const int before = notifications(sentinel);
        writeFile(sentinel, "after");
        watching.load(sentinel); // read as it now stands: its notification asks nothing
        QTRY_VERIFY_WITH_TIMEOUT(notifications(sentinel) > before, Timeout);
    }

    // Makes `change` and returns once the watcher has reported it.
    template<typename Change>
    void changeAndSettle(const QString &path, Change change)
    {
        const int before = notifications(path);
        change();
        settle();
        QVERIFY(notifications(path) > before);
    }

    QTemporaryDir m_dir;
    QString m_path;
    int m_file = 0;
};

void FileWatcherTest::managerLivesWithObjects()
{
    const QString other = m_dir.filePath(QStringLiteral("other.txt"));
    writeFile(other, "x");
    QVERIFY(!FileWatcherManager::instance());
    auto *first = new Document;
    FileWatcherManager *created = FileWatcherManager::instance();
    QVERIFY(created);
    first->load(m_path);
    first->pauseWatch(true);
    {
        Document copy(*first);
        QCOMPARE(manager().objectCount(), 2);
        QCOMPARE(copy.paused(), 0);
        QCOMPARE(manager().objects(m_path), QList<FileWatchObject *>({first}));
    }
    {
        Document second;
        second.load(other);
        QCOMPARE(manager().watchedPaths().size(), 2);
        delete first;
        QCOMPARE(FileWatcherManager::instance(), created);
        QCOMPARE(manager().objectCount(), 1);
        QCOMPARE(manager().watchedPaths(), QStringList({other}));
        QVERIFY(manager().objects(m_path).isEmpty());
    }
    QVERIFY(!FileWatcherManager::instance());
}

void FileWatcherTest::registration()
{
    const QString other = m_dir.filePath(QStringLiteral("registration.txt"));
    writeFile(other, "x");
    using Objects = QList<FileWatchObject *>;
    Document doc;
    doc.load(m_path);
    QCOMPARE(manager().objects(m_path), Objects({&doc}));
    QCOMPARE(doc.paused(), 0);
    doc.load(other);
    QVERIFY(manager().objects(m_path).isEmpty());
    QCOMPARE(manager().watchedPaths(), QStringList({other}));

    // Saving to the file it already watches changes nothing but the pause.
    doc.announceSave(other);
    QCOMPARE(manager().objects(other), Objects({&doc}));
    QCOMPARE(doc.paused(), 1);
    doc.pauseWatch(false);

    // Copies and other archives leave registration and pause alone.
    MemoryArchive memory;
    doc.announceSave(m_path, FileSystemArchive::instance(), true);
    doc.load(m_path, FileSystemArchive::instance(), true);
    QCOMPARE(manager().objects(other), Objects({&doc}));
    QVERIFY(manager().objects(m_path).isEmpty());
    QCOMPARE(doc.paused(), 0);
    Document inMemory;
    inMemory.load(m_path, memory);
    inMemory.announceSave(m_path, memory);
    QVERIFY(manager().objects(m_path).isEmpty());
    QCOMPARE(manager().watchedPaths(), QStringList({other}));
    QCOMPARE(inMemory.paused(), 0);

    // A nameless save stays on record, a nameless load does not.
    doc.announceSave(QString());
    QCOMPARE(manager().objects(QString()), Objects({&doc}));
    QVERIFY(manager().watchedPaths().isEmpty());
    doc.load(QString());
    QVERIFY(manager().objects(QString()).isEmpty());

    // A document that went through another archive is on record under two paths;
    // going away clears both, so no change can reach it afterwards.
    {
        Document wanderer;
        wanderer.load(m_path);
        wanderer.load(QStringLiteral("in/memory"), memory);
        wanderer.load(other);
        QCOMPARE(manager().objects(m_path), Objects({&wanderer}));
        QCOMPARE(manager().objects(other), Objects({&wanderer}));
    }
    QVERIFY(manager().objects(m_path).isEmpty());
    QVERIFY(manager().objects(other).isEmpty());
    QVERIFY(manager().watchedPaths().isEmpty());
}

void FileWatcherTest::outsideChangeAsksButOwnSaveDoesNot_data()
{
    QTest::addColumn<bool>("reload");
    QTest::newRow("yes") << true;
    QTest::newRow("no") << false;
}

void FileWatcherTest::outsideChangeAsksButOwnSaveDoesNot()
{
    QFETCH(bool, reload);
    ScriptedAnswerer user({reload ? QMessageBox::Yes : QMessageBox::No});
    Document doc;
    doc.load(m_path);
    changeAndSettle(m_path, [&] { doc.save("saved by the document"); });
    QVERIFY(user.prompts().isEmpty());
    QCOMPARE(doc.paused(), 0);
    QVERIFY(manager().watchedPaths().contains(m_path));

    writeFile(m_path, "changed outside");
    EXPECT_PROMPTS(user, 1);
    const Prompt &prompt = user.prompts().first();
    QCOMPARE(prompt.icon, QMessageBox::Question);
    QCOMPARE(prompt.title, QStringLiteral("File modified"));
    QVERIFY(prompt.text.contains(QStringLiteral("'%1'").arg(m_path)));
    QCOMPARE(prompt.buttons, QMessageBox::Yes | QMessageBox::No);
    QCOMPARE(prompt.defaultButton, QMessageBox::No);
    QVERIFY(!prompt.parent);
    QCOMPARE(doc.reloads, reload ? 1 : 0);
    QCOMPARE(doc.contents, reload ? "changed outside" : "saved by the document");
}

void FileWatcherTest::twoDocumentsOnOnePath()
{
    ScriptedAnswerer user({QMessageBox::Yes, QMessageBox::Yes});
    Document a, b;
    a.load(m_path);
    b.load(m_path);
    writeFile(m_path, "changed outside");
    EXPECT_PROMPTS(user, 1);
    QCOMPARE(a.reloads, 1);
    QCOMPARE(b.reloads, 1);
    QCOMPARE(b.contents, "changed outside");

    // One instance saving is an outside change for the other one only.
    a.save("saved by a");
    EXPECT_PROMPTS(user, 2);
    QCOMPARE(a.reloads, 1);
    QCOMPARE(b.reloads, 2);
    QCOMPARE(b.contents, "saved by a");
    QCOMPARE(a.paused(), 0);
    QCOMPARE(manager().objects(m_path).size(), 2);
    QVERIFY(manager().watchedPaths().contains(m_path));
}

void FileWatcherTest::lateNewsAsksOnlyWhoHasNotReadIt()
{
    ScriptedAnswerer user({QMessageBox::Yes});
    Document a, b;
    a.load(m_path);
    b.load(m_path);
    // The file changes, and one instance reads it again before the notification comes
    // (as a restore does): only the other one has something to reload.
    writeFile(m_path, "changed outside, longer than before");
    a.load(m_path);
    EXPECT_PROMPTS(user, 1);
    QCOMPARE(a.reloads, 0);
    QCOMPARE(b.reloads, 1);
    QCOMPARE(b.contents, QByteArray("changed outside, longer than before"));

    // When every instance has read it, nobody is asked.
    changeAndSettle(m_path, [&] {
        writeFile(m_path, "once more");
        a.load(m_path);
        b.load(m_path);
    });
    QCOMPARE(user.prompts().size(), 1);
}

void FileWatcherTest::deletedFileDoesNotAsk()
{
    ScriptedAnswerer user;
    Document doc;
    doc.load(m_path);
    changeAndSettle(m_path, [&] { QVERIFY(QFile::remove(m_path)); });
    QVERIFY(user.prompts().isEmpty());
    QCOMPARE(manager().objects(m_path), QList<FileWatchObject *>({&doc}));
    QVERIFY(!manager().watchedPaths().contains(m_path));

    // The file coming back is watched again from its next read.
    writeFile(m_path, "back");
    doc.load(m_path);
    QVERIFY(manager().watchedPaths().contains(m_path));
}

void FileWatcherTest::optionDisablesQuestion()
{
    TestInterface host;
    host.options.insert(QStringLiteral("enable_file_watcher"), false);
    ScriptedAnswerer user({QMessageBox::Yes});
    Document doc;
    doc.load(m_path);
    changeAndSettle(m_path, [&] { writeFile(m_path, "changed outside"); });
    QVERIFY(user.prompts().isEmpty());
    QCOMPARE(doc.reloads, 0);

    host.options.insert(QStringLiteral("enable_file_watcher"), true);
    writeFile(m_path, "changed again");
    QTRY_COMPARE_WITH_TIMEOUT(user.prompts().size(), 1, Timeout);
    QCOMPARE(doc.reloads, 1);
}

void FileWatcherTest::replacedByRenameStaysWatched()
{
    ScriptedAnswerer user({QMessageBox::No, QMessageBox::Yes});
    Document doc;
    doc.load(m_path);
    const QString replacement = m_path + QStringLiteral(".new");
    writeFile(replacement, "replacement");
    QCOMPARE(std::rename(QFile::encodeName(replacement).constData(), QFile::encodeName(m_path).constData()), 0);
    EXPECT_PROMPTS(user, 1);
    QCOMPARE(doc.reloads, 0);
    QVERIFY(manager().watchedPaths().contains(m_path));

    writeFile(m_path, "changed after the replacement");
    QTRY_COMPARE_WITH_TIMEOUT(user.prompts().size(), 2, Timeout);
    QCOMPARE(doc.reloads, 1);
    QCOMPARE(doc.contents, "changed after the replacement");
}

void FileWatcherTest::changesDuringQuestion()
{
    // While the question is open the file changes again and one document goes away:
    // the second change asks nothing, and only the survivor is reloaded.
    Document survivor;
    auto *leaving = new Document;
    survivor.load(m_path);
    leaving->load(m_path);
    int asked = 0;
    bool secondChangeSeen = false;
    {
        AnswererScope scope([&](const Prompt &) {
            if (++asked > 1)
                return QMessageBox::No; // a question inside the question: fail, don't recurse
            const int before = notifications(m_path);
            writeFile(m_path, "second change");
            QDeadlineTimer deadline(Timeout);
            while (notifications(m_path) == before && !deadline.hasExpired())
                QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
            secondChangeSeen = notifications(m_path) > before;
            delete leaving;
            leaving = nullptr;
            return QMessageBox::Yes;
        });
        writeFile(m_path, "first change");
        QTRY_COMPARE_WITH_TIMEOUT(asked, 1, Timeout);
        settle();
    }
    QCOMPARE(asked, 1);
    QVERIFY(secondChangeSeen);
    QCOMPARE(survivor.reloads, 1);
    QCOMPARE(survivor.contents, "second change");
    QCOMPARE(manager().objects(m_path), QList<FileWatchObject *>({&survivor}));
}

void FileWatcherTest::lastObjectGoesDuringQuestion()
{
    // The manager is on the stack while it asks; it goes once the question returns.
    auto *last = new Document;
    last->load(m_path);
    QPointer<FileWatcherManager> ending = FileWatcherManager::instance();
    int asked = 0;
    AnswererScope scope([&](const Prompt &) {
        ++asked;
        delete last;
        return QMessageBox::Yes;
    });
    writeFile(m_path, "changed outside");
    QTRY_COMPARE_WITH_TIMEOUT(asked, 1, Timeout);
    QVERIFY(!FileWatcherManager::instance());
    QTRY_VERIFY(ending.isNull());
}

QTEST_GUILESS_MAIN(FileWatcherTest)

#include "tst_filewatcher.moc"
