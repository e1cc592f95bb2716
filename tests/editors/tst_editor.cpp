#include "editors/editor.h"
#include "editors/resetscrollpos.h"
#include "engine/engine.h"
#include "foundation/filesystemarchive.h"
#include "foundation/progress.h"
#include "foundation/prompt.h"

#include "projecttestsupport.h"
#include "scriptedanswerer.h"
#include "testinterface.h"

#include <QAction>
#include <QApplication>
#include <QFileDialog>
#include <QPointer>
#include <QScrollBar>
#include <QStandardItemModel>
#include <QTreeView>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

using namespace Ovra;

namespace {

class StatesEngine : public Engine
{
public:
    StatesEngine() : Engine(QStringLiteral("states")) {}
    QString queryString(StringType, uint) const override { return QString(); }
    QString singleFileFilters(int type) const override { return type == 4 ? QStringLiteral("States (*.rules *.steps)") : QString(); }
    ProjectFile *createFile(int, Project *) override { return new TestFile; }
};

class EngineWork : public RecordingParent
{
public:
    EngineWork(const QString &root, Archive &archive, Engine *engine) : RecordingParent(root, archive), m_engine(engine) {}
    Engine *engine() const override { return m_engine; }

private:
    Engine *m_engine;
};

class Host : public TestInterface
{
public:
    Project *project = nullptr;
    QList<Editor *> activated;
    Project *currentProject() override { return project; }
    void activateEditor(Editor *editor) override
    {
        activated << editor;
        editor->activate();
    }
};

class StatesEditor : public FileEditor
{
public:
    StatesEditor() : m_action(QStringLiteral("States"), nullptr) {}
    QAction *action() const override { return const_cast<QAction *>(&m_action); }
    const char *name() const override { return "states"; }
    QWidget *widget() override { return nullptr; }
    void engineSwitched(bool) override {}
    void saveState() override {}
    void restoreState() override {}
    int fileType() const override { return 4; }
    void cut() override {}
    void copy() override {}
    void paste() override {}

private:
    QAction m_action;
};

// A file whose saves succeed.
class SavingFile : public TestFile
{
public:
    using TestFile::TestFile;
    bool toFile(Archive &archive, const QString &target, uint flags, JobStats *stats) override
    {
        TestFile::toFile(archive, target, flags, stats);
        return true;
    }
};


// Answers the next file dialog with `name` as soon as its own event loop runs, as a user
// typing it would.
void answerFileDialog(const QString &name)
{
    QTimer::singleShot(0, [name] {
        auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        QVERIFY(dialog);
        dialog->selectFile(name);
        QMetaObject::invokeMethod(dialog, "accept");
    });
}

} // namespace

class EditorTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void activation();
    void canDiscardAsksOnlyForModifiedFiles();
    void saveDoesNothingForAnUnmodifiedFile();
    void failedSaveGoesToSaveAs();
    void saveFileAsAddsTheExtensionAndWarnsOutside_data();
    void saveFileAsAddsTheExtensionAndWarnsOutside();
    void resetScrollPosPutsTheViewBack();

private:
    std::unique_ptr<Host> m_host;
    std::unique_ptr<QTemporaryDir> m_dir;
    StatesEngine m_engine;
    std::unique_ptr<EngineWork> m_work;
    TestProject *m_project = nullptr;
};

void EditorTest::init()
{
    m_host.reset(new Host);
    setGlobalInterface(m_host.get());
    m_dir.reset(new QTemporaryDir);
    m_work.reset(new EngineWork(m_dir->path() + QLatin1Char('/'), FileSystemArchive::instance(), &m_engine));
    auto *main = new TestFile(m_dir->filePath(QStringLiteral("actors/hero/hero.def")));
    m_project = new TestProject(m_work.get(), 0, main, true);
    m_host->project = m_project;
}

void EditorTest::cleanup()
{
    m_project->release();
    m_work.reset();
    setGlobalInterface(nullptr);
    m_host.reset();
}

void EditorTest::activation()
{
    StatesEditor editor;
    QSignalSpy shown(&editor, &Editor::visible);
    QSignalSpy writable(&editor, &Editor::writable);
    editor.setVisible(true);
    editor.setWritable(false);
    QCOMPARE(shown.count(), 1);
    QCOMPARE(writable.first().first().toBool(), false);
    editor.switchToThis();
    QCOMPARE(m_host->activated, QList<Editor *>({&editor}));
    QVERIFY(editor.isActive());
    editor.switchToThis(); // already active: the host isn't asked again
    QCOMPARE(m_host->activated.size(), 1);
    editor.deactivate();
    QVERIFY(!editor.isActive());
}

void EditorTest::canDiscardAsksOnlyForModifiedFiles()
{
    StatesEditor editor;
    ScriptedAnswerer user({QMessageBox::No, QMessageBox::Yes, QMessageBox::Yes, QMessageBox::No});
    QVERIFY(editor.canDiscard(static_cast<const ProjectFile *>(nullptr)));
    TestFile plain;
    QVERIFY(editor.canDiscard(&plain));
    QVERIFY(user.prompts().isEmpty());

    plain.modified = true;
    QVERIFY(!editor.canDiscard(&plain));
    QVERIFY(editor.canDiscard(&plain));
    const Prompt &question = user.prompts().first();
    QCOMPARE(question.title, QStringLiteral("Discard changes?"));
    // The editor's name, not the file's.
    QCOMPARE(question.text, QStringLiteral("Do you want to discard the changes made in states?"));
    QCOMPARE(question.defaultButton, QMessageBox::No);

    // Every modified file of the type is asked, even after a first no.
    auto *a = new TestFile(QStringLiteral("a.rules"));
    auto *b = new TestFile(QStringLiteral("b.rules"));
    a->modified = b->modified = true;
    QVERIFY(m_project->addFile(a, 4));
    QVERIFY(m_project->addFile(b, 4));
    QVERIFY(!editor.canDiscard(static_cast<Project *>(nullptr)));
    QCOMPARE(user.prompts().size(), 4);
}

void EditorTest::saveDoesNothingForAnUnmodifiedFile()
{
    StatesEditor editor;
    SavingFile file(m_dir->filePath(QStringLiteral("x.rules")));
    editor.setCurrentFile(&file);
    editor.save();
    QVERIFY(file.saves.isEmpty());
    // A modified file is saved in its place; the editor says so.
    QSignalSpy modified(&editor, &FileEditor::modified);
    file.modified = true;
    file.fromFile(FileSystemArchive::instance(), file.name, 0, nullptr); // binds it to the disk
    editor.save();
    QCOMPARE(file.saves, QStringList({m_dir->filePath(QStringLiteral("x.rules")) + QStringLiteral("|0")}));
    QCOMPARE(modified.count(), 1);
}

void EditorTest::failedSaveGoesToSaveAs()
{
    StatesEditor editor;
    auto *file = new TestFile(m_dir->filePath(QStringLiteral("actors/hero/y.rules")), "y"); // its saves fail
    QVERIFY(m_project->addFile(file, 4));
    file->modified = true;
    editor.setCurrentFile(file);
    ScriptedAnswerer user({QMessageBox::Ok});
    QVERIFY(QDir().mkpath(m_dir->filePath(QStringLiteral("actors/hero"))));
    answerFileDialog(m_dir->filePath(QStringLiteral("actors/hero/z")));
    editor.save();
    // Never written, it has no place: straight to a name from the user, where the save
    // fails too, and the user is told.
    QCOMPARE(file->saves, QStringList({m_dir->filePath(QStringLiteral("actors/hero/z.rules|0"))}));
    QCOMPARE(user.prompts().size(), 1);
    QCOMPARE(user.prompts().first().title, QStringLiteral("Save file error!"));
    QCOMPARE(user.prompts().first().icon, QMessageBox::Critical);
}

void EditorTest::saveFileAsAddsTheExtensionAndWarnsOutside_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<bool>("outside");
    QTest::addColumn<QString>("saved");

    QTest::addRow("no extension") << "actors/hero/new" << false << "actors/hero/new.rules";
    QTest::addRow("second extension") << "actors/hero/new.steps" << false << "actors/hero/new.steps";
    QTest::addRow("outside the project") << "elsewhere.rules" << true << "elsewhere.rules";
}

void EditorTest::saveFileAsAddsTheExtensionAndWarnsOutside()
{
    QFETCH(QString, typed);
    QFETCH(bool, outside);
    QFETCH(QString, saved);

    QVERIFY(QDir().mkpath(m_dir->filePath(QStringLiteral("actors/hero"))));
    StatesEditor editor;
    auto *file = new SavingFile(QString(), "content");
    QVERIFY(m_project->addFile(file, 4));
    ScriptedAnswerer user({QMessageBox::Yes});
    QSignalSpy modified(&editor, &FileEditor::modified);
    answerFileDialog(m_dir->filePath(typed));
    FileEditor::saveFileAs(file, &editor, m_host.get());
    // Outside the project the user is warned, and yes saves a copy.
    QCOMPARE(user.prompts().size(), outside ? 1 : 0);
    if (outside)
        QCOMPARE(user.prompts().first().title, QStringLiteral("External file!"));
    QCOMPARE(file->saves, QStringList({m_dir->filePath(saved) + (outside ? QStringLiteral("|1") : QStringLiteral("|0"))}));
    QCOMPARE(modified.count(), 1);
    QCOMPARE(m_project->option(QStringLiteral("states_path")).toString(), QFileInfo(m_dir->filePath(saved)).absolutePath());
}

void EditorTest::resetScrollPosPutsTheViewBack()
{
    QStandardItemModel model;
    for (int row = 0; row < 300; ++row)
        model.appendRow(new QStandardItem(QString::number(row)));
    QTreeView view;
    view.setModel(&model);
    view.resize(200, 120);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QScrollBar *bar = view.verticalScrollBar();
    QVERIFY(bar->maximum() > 40);
    bar->setValue(40);

    // Made before a reset, run after it: the view is back where it was.
    QPointer<QObject> restorer = new Private::ResetScrollPos(&view, bar->value());
    model.setRowCount(0);
    for (int row = 0; row < 300; ++row)
        model.appendRow(new QStandardItem(QString::number(row)));
    QMetaObject::invokeMethod(restorer, "reset", Qt::QueuedConnection);
    QTRY_COMPARE(bar->value(), 40);
    QTRY_VERIFY(restorer.isNull());

    // A view gone meanwhile is left alone, and the restorer still ends.
    auto *gone = new QTreeView;
    restorer = new Private::ResetScrollPos(gone, 12);
    delete gone;
    QMetaObject::invokeMethod(restorer, "reset", Qt::QueuedConnection);
    QTRY_VERIFY(restorer.isNull());
}

QTEST_MAIN(EditorTest)
#include "tst_editor.moc"
