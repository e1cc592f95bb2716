#include "foundation/file.h"

#include "scriptedanswerer.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace Ovra;

namespace {

bool writeFile(const QString &name, const QByteArray &data)
{
    QFile file(name);
    return file.open(QIODevice::WriteOnly) && file.write(data) == data.size();
}

QByteArray readFile(const QString &name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

// Stands in for the disk: refuses chosen steps a number of times (a file held open by
// another program), records the pauses, and doesn't really sleep.
class HeldFile : public File::Operations
{
public:
    int refuseRemoveOf = 0; // how many more removals of `held` fail; -1 for ever
    int refuseRename = 0;
    QString held;
    QList<unsigned long> pauses;
    int removeAttempts = 0;
    int renameAttempts = 0;

    bool remove(const QString &name) override
    {
        if (name == held) {
            ++removeAttempts;
            if (refuseRemoveOf != 0) {
                if (refuseRemoveOf > 0)
                    --refuseRemoveOf;
                return false;
            }
        }
        return File::Operations::remove(name);
    }
    bool rename(const QString &oldName, const QString &newName) override
    {
        ++renameAttempts;
        if (refuseRename != 0) {
            if (refuseRename > 0)
                --refuseRename;
            return false;
        }
        return File::Operations::rename(oldName, newName);
    }
    void sleep(unsigned long milliseconds) override { pauses.append(milliseconds); }
};

// Installs the stand-in for one test.
struct OperationsScope
{
    explicit OperationsScope(File::Operations *operations) { File::setOperations(operations); }
    ~OperationsScope() { File::setOperations(nullptr); }
};

const QString ReplaceText = QStringLiteral(
    "Can't replace contents of file '%1'. Do you want to try again?\nObs.: You can delete the file "
    "and rename the temporary one manually. Seems that something is preventing the file to be replaced.");
const QString RenameText = QStringLiteral(
    "Can't rename temporary file to '%1'. Do you want to try again?\nObs.: You can rename it manually. "
    "Seems that something is preventing the file to be renamed.");
const QString RemoveText = QStringLiteral(
    "Can't remove temporary file to '%1'. Do you want to try again?\nObs.: You can remove it "
    "manually. Seems that something is preventing the file to be removed.");

} // namespace

class FileTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void replacesThroughTemporary();
    void readWriteStartsFromOldContent();
    void discard_data();
    void discard();
    void failedOpenTouchesNothing();
    void heldTargetAsksEveryTenAttempts();
    void heldTargetNoKeepsOldFile();
    void renameRefusedNoKeepsTemporary();
    void discardRefusedNoKeepsTemporary();
    void realRefusalRecoversAfterYes();

private:
    QStringList filesInRoot() const { return QDir(m_root).entryList(QDir::Files, QDir::Name); }
    QString temporaryOf(const QString &name) const;

    QTemporaryDir m_dir;
    QString m_root;
    QString m_name;
};

void FileTest::init()
{
    m_root = m_dir.path() + QLatin1Char('/') + QString::fromLatin1(QTest::currentTestFunction())
             + QLatin1Char('/') + QString::fromLatin1(QTest::currentDataTag()) + QLatin1Char('/');
    QVERIFY(QDir().mkpath(m_root));
    m_name = m_root + QStringLiteral("a.def");
}

QString FileTest::temporaryOf(const QString &name) const
{
    const QString base = QFileInfo(name).fileName();
    for (const QString &entry : filesInRoot()) {
        if (entry.size() == base.size() + 6 && entry.startsWith(base))
            return m_root + entry;
    }
    return QString();
}

void FileTest::replacesThroughTemporary()
{
    QVERIFY(writeFile(m_name, "old content"));
    {
        File file(m_name);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(file.isReplacing());
        QCOMPARE(file.targetName(), m_name);
        QVERIFY(file.fileName().startsWith(m_name));
        QCOMPARE(file.fileName().size(), m_name.size() + 6);
        QVERIFY(QRegularExpression(QStringLiteral("^[A-Za-z0-9]{6}$"))
                    .match(file.fileName().mid(m_name.size())).hasMatch());
        file.write("new");
        file.flush();
        // Until the device closes, the real file keeps its old bytes.
        QCOMPARE(readFile(m_name), QByteArray("old content"));
        QCOMPARE(readFile(file.fileName()), QByteArray("new"));
    }
    QCOMPARE(readFile(m_name), QByteArray("new"));
    QCOMPARE(filesInRoot(), QStringList({"a.def"}));
}

void FileTest::readWriteStartsFromOldContent()
{
    QVERIFY(writeFile(m_name, "0123456789"));
    {
        File file(m_name);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QCOMPARE(file.readAll(), QByteArray("0123456789"));
        QVERIFY(file.seek(2));
        file.write("ab");
    }
    QCOMPARE(readFile(m_name), QByteArray("01ab456789"));
}

void FileTest::discard_data()
{
    QTest::addColumn<bool>("existing");
    QTest::addColumn<int>("mode");
    QTest::addColumn<bool>("replacing");
    QTest::newRow("replacing a file") << true << int(QIODevice::WriteOnly) << true;
    // A new file is written under its own name, and discarding it removes it.
    QTest::newRow("new file") << false << int(QIODevice::WriteOnly) << false;
    // A device that only read must never take the user's file with it.
    QTest::newRow("reading") << true << int(QIODevice::ReadOnly) << false;
}

void FileTest::discard()
{
    QFETCH(bool, existing);
    QFETCH(int, mode);
    QFETCH(bool, replacing);
    if (existing)
        QVERIFY(writeFile(m_name, "keep me"));
    {
        File file(m_name);
        QVERIFY(file.open(QIODevice::OpenMode(mode)));
        QCOMPARE(file.isReplacing(), replacing);
        if (mode & QIODevice::WriteOnly)
            file.write("unwanted");
        file.discard();
    }
    QCOMPARE(filesInRoot(), existing ? QStringList({"a.def"}) : QStringList());
    if (existing)
        QCOMPARE(readFile(m_name), QByteArray("keep me"));
}

void FileTest::failedOpenTouchesNothing()
{
    // A directory can't be held open for writing: the open fails after the temporary
    // was made, and everything must be as before.
    const QString name = m_root + QStringLiteral("folder.def");
    QVERIFY(QDir().mkpath(name));
    QVERIFY(writeFile(name + QStringLiteral("/inside.txt"), "inside"));
    {
        File file(name);
        QVERIFY(!file.open(QIODevice::WriteOnly));
        QVERIFY(!file.isReplacing());
    }
    QVERIFY(filesInRoot().isEmpty());
    QCOMPARE(readFile(name + QStringLiteral("/inside.txt")), QByteArray("inside"));
}

void FileTest::heldTargetAsksEveryTenAttempts()
{
    QVERIFY(writeFile(m_name, "old"));
    HeldFile disk;
    disk.held = m_name;
    disk.refuseRemoveOf = 25; // two questions, then the other program lets go
    OperationsScope scope(&disk);
    ScriptedAnswerer user({QMessageBox::Yes, QMessageBox::Yes});
    {
        File file(m_name);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("new");
    }
    QCOMPARE(user.prompts().size(), 2);
    QCOMPARE(user.pending(), 0);
    const Prompt &prompt = user.prompts().first();
    QCOMPARE(prompt.title, QStringLiteral("File error!"));
    QCOMPARE(prompt.text, ReplaceText.arg(m_name));
    QCOMPARE(prompt.buttons, QMessageBox::Yes | QMessageBox::No);
    QCOMPARE(disk.removeAttempts, 26);
    // 25 pauses of 200 ms between attempts, then the 20 ms before the handle closes.
    QCOMPARE(disk.pauses.count(200), 25);
    QCOMPARE(disk.pauses.last(), 20ul);
    QCOMPARE(readFile(m_name), QByteArray("new"));
    QCOMPARE(filesInRoot(), QStringList({"a.def"}));
}

void FileTest::heldTargetNoKeepsOldFile()
{
    QVERIFY(writeFile(m_name, "the old file"));
    HeldFile disk;
    disk.held = m_name;
    disk.refuseRemoveOf = -1;
    OperationsScope scope(&disk);
    ScriptedAnswerer user({QMessageBox::No});
    {
        File file(m_name);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("the new file");
    }
    QCOMPARE(user.prompts().size(), 1);
    QCOMPARE(disk.removeAttempts, 10);
    QCOMPARE(readFile(m_name), QByteArray("the old file"));
    QCOMPARE(filesInRoot(), QStringList({"a.def"}));
}

void FileTest::renameRefusedNoKeepsTemporary()
{
    QVERIFY(writeFile(m_name, "old"));
    HeldFile disk;
    disk.refuseRename = -1;
    OperationsScope scope(&disk);
    ScriptedAnswerer user({QMessageBox::Yes, QMessageBox::No});
    QString temporary;
    {
        File file(m_name);
        QVERIFY(file.open(QIODevice::WriteOnly));
        temporary = file.fileName();
        file.write("written data");
    }
    QCOMPARE(user.prompts().size(), 2);
    QCOMPARE(user.prompts().at(1).title, QStringLiteral("File rename error!"));
    QCOMPARE(user.prompts().at(1).text, RenameText.arg(m_name));
    QCOMPARE(disk.renameAttempts, 20);
    // The old file is gone by then; what the user wrote waits under the temporary name.
    QVERIFY(!QFile::exists(m_name));
    QCOMPARE(readFile(temporary), QByteArray("written data"));
}

void FileTest::discardRefusedNoKeepsTemporary()
{
    QVERIFY(writeFile(m_name, "old"));
    HeldFile disk;
    OperationsScope scope(&disk);
    ScriptedAnswerer user({QMessageBox::No});
    File file(m_name);
    QVERIFY(file.open(QIODevice::WriteOnly));
    const QString temporary = file.fileName();
    disk.held = temporary;
    disk.refuseRemoveOf = -1;
    file.write("x");
    file.discard();
    QVERIFY(!file.isReplacing());
    QCOMPARE(user.prompts().size(), 1);
    QCOMPARE(user.prompts().first().title, QStringLiteral("File remove error!"));
    QCOMPARE(user.prompts().first().text, RemoveText.arg(temporary));
    QVERIFY(QFile::exists(temporary));
    QCOMPARE(readFile(m_name), QByteArray("old"));
}

void FileTest::realRefusalRecoversAfterYes()
{
    // The system itself refuses: another program put a non-empty directory where the
    // file was. The user clears it away and answers Yes, and the save goes through.
    QVERIFY(writeFile(m_name, "old"));
    HeldFile disk; // real removal and renaming, no real waiting
    OperationsScope scope(&disk);
    int questions = 0;
    const Answerer previous = setAnswerer([&](const Prompt &prompt) {
        ++questions;
        if (prompt.title != QLatin1String("File error!"))
            return QMessageBox::No;
        QDir(m_name).removeRecursively();
        return QMessageBox::Yes;
    });
    {
        File file(m_name);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("saved after all");
        QVERIFY(QFile::remove(m_name));
        QVERIFY(QDir().mkpath(m_name + QStringLiteral("/blocker")));
    }
    setAnswerer(previous);
    QCOMPARE(questions, 1);
    QCOMPARE(readFile(m_name), QByteArray("saved after all"));
    QCOMPARE(filesInRoot(), QStringList({"a.def"}));
}

QTEST_GUILESS_MAIN(FileTest)
#include "tst_file.moc"
