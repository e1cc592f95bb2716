// The model's script classes on the sample engine compiled in (no plug-in, so no zip
// container): bad calls are Lua errors with a message, and script edits of code nodes
// are the same text edits, with the same undo, as edits made through the model.
#include "sampleengine.h"

#include "code/animationcode.h"
#include "code/animations.h"
#include "code/codedocument.h"
#include "code/framecode.h"
#include "code/groupcode.h"
#include "engine/script/script.h"
#include "engine/script/scriptclasses.h"
#include "foundation/filesystemarchive.h"
#include "project/project.h"
#include "testfiles.h"

#include <QTemporaryDir>
#include <QtTest>

#include <functional>
#include <memory>

using namespace Ovra;

using ModelEdit = std::function<void(ProjectFile *)>;
Q_DECLARE_METATYPE(ModelEdit)

class ScriptClassesTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void badCalls_data();
    void badCalls();
    void archiveFallsBackToTheFileSystem();
    void editsUndoLikeModelEdits_data();
    void editsUndoLikeModelEdits();

private:
    QString errorOf(const QString &code);
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<SampleEngineExtension> m_engine;
    Project *m_project = nullptr;
    std::unique_ptr<Script::State> m_state;
};

void ScriptClassesTest::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(copyTree(QStringLiteral(OVRA_EXAMPLES_DIR "/sample"), m_dir->path()));
    m_engine = std::make_unique<SampleEngineExtension>();
    QString error;
    m_project = m_engine->openProject(m_dir->filePath(QStringLiteral("knight/knight.ovp")), &error);
    QVERIFY2(m_project, qPrintable(error));
    m_state = std::make_unique<Script::State>();
    m_state->openLibraries(Script::State::SafeLibraries);
    Script::Table globals = m_state->globals();
    registerScriptClasses(globals);
    globals.set("project", m_project);
}

void ScriptClassesTest::cleanup()
{
    m_state.reset();
    if (m_project)
        m_project->release();
    m_project = nullptr;
    m_engine.reset();
    m_dir.reset();
}

QString ScriptClassesTest::errorOf(const QString &code)
{
    QString error;
    if (m_state->run(code, QStringLiteral("bad.lua"), &error))
        return QStringLiteral("(no error)");
    return error;
}

void ScriptClassesTest::badCalls_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("message");
    const QString sprites = QStringLiteral("local sprites = project:fileByType(1):asSprites()\n");
    const QString frame = QStringLiteral("local frame = project:fileByType(3):asAnimations():at(0):frameAt(0)\n");
    // The binding's own errors, as the model's classes raise them: a self of another
    // class, numbers out of a member's range.
    QTest::newRow("self of another class") << sprites + QStringLiteral("sprites.at(project, 0)")
                                           << QStringLiteral("bad self to 'Sprites.at' (expected Sprites, got Project)");
    QTest::newRow("frame as a group") << frame + QStringLiteral("project:fileByType(5):asSourceCode().root:childAt(0).valueAt(frame, 0)")
                                      << QStringLiteral("bad self to 'GroupCode.valueAt' (expected GroupCode, got ");
    QTest::newRow("negative unsigned") << frame + QStringLiteral("frame:flipFlags(-1)")
                                       << QStringLiteral("AnimationFrameCode.flipFlags");
    QTest::newRow("colour out of range") << QStringLiteral("local c = RGBA(1, 2, 3, 4); c.alpha = 300")
                                         << QStringLiteral("RGBA.alpha");
}

void ScriptClassesTest::badCalls()
{
    QFETCH(QString, code);
    QFETCH(QString, message);
    const QString error = errorOf(code);
    QVERIFY2(error.startsWith(QLatin1String("lua: error: ")) || error.contains(QLatin1String("bad.lua:")), qPrintable(error));
    QVERIFY2(error.contains(message), qPrintable(error));
    // The state goes on working after an error.
    QCOMPARE(errorOf(QStringLiteral("assert(project.name == 'Knight')")), QStringLiteral("(no error)"));
}

void ScriptClassesTest::archiveFallsBackToTheFileSystem()
{
    Script::Table globals = m_state->globals();
    QVERIFY(m_state->run(QStringLiteral("zip = Archive.instance('a.zip', 1)")));
    bool ok = false;
    Archive *archive = globals.get<Archive *>("zip", &ok);
    QVERIFY(ok);
    QCOMPARE(archive, static_cast<Archive *>(&FileSystemArchive::instance()));
}

void ScriptClassesTest::editsUndoLikeModelEdits_data()
{
    QTest::addColumn<int>("fileType");
    QTest::addColumn<QString>("script");
    QTest::addColumn<ModelEdit>("edit");
    const auto group = [](ProjectFile *file, uint row) {
        return static_cast<GroupCode *>(static_cast<CodeDocument *>(file)->root()->childAt(row));
    };
    const auto frame = [](ProjectFile *file, uint row) { return static_cast<Animations *>(file)->at(0)->frameAt(row); };
    QTest::newRow("a value through its group")
        << 5 << QStringLiteral("project:fileByType(5):asSourceCode().root:childAt(0):insertValue(2, 'motto', 'Onwards')")
        << ModelEdit([=](ProjectFile *file) { group(file, 0)->insertValue(2, QStringLiteral("motto"), QStringLiteral("Onwards")); });
    QTest::newRow("a value removed through its group")
        << 5 << QStringLiteral("project:fileByType(5):asSourceCode().root:childAt(1):removeValueAt(0)")
        << ModelEdit([=](ProjectFile *file) { group(file, 1)->removeValue(0); });
    QTest::newRow("a frame's delay")
        << 3 << QStringLiteral("project:fileByType(3):asAnimations():at(0):frameAt(1):delay(12)")
        << ModelEdit([=](ProjectFile *file) { frame(file, 1)->setDelay(12); });
    QTest::newRow("a box")
        << 3 << QStringLiteral("project:fileByType(3):asAnimations():at(0):frameAt(2):collisionBoxes():at(0):rect({x = 1, y = 2, width = 3, height = 4})")
        << ModelEdit([=](ProjectFile *file) {
               frame(file, 2)->contactBoxes(ContactBoxCode::Collision)->at(0)->setRect(QRect(1, 2, 3, 4));
           });
}

void ScriptClassesTest::editsUndoLikeModelEdits()
{
    QFETCH(int, fileType);
    QFETCH(QString, script);
    QFETCH(ModelEdit, edit);
    ProjectFile *file = m_project->file(fileType);
    CodeDocument *document = dynamic_cast<CodeDocument *>(file);
    if (!document)
        document = dynamic_cast<CodeNodeFile *>(file)->document();
    QVERIFY(document);
    const QString before = document->toPlainText();

    QString error;
    QVERIFY2(m_state->run(script, QStringLiteral("edit.lua"), &error), qPrintable(error));
    const QString scripted = document->toPlainText();
    QVERIFY(scripted != before);
    document->undo();
    QCOMPARE(document->toPlainText(), before);

    // The same edit through the model, as an editor makes it, gives the same text.
    edit(file);
    QCOMPARE(document->toPlainText(), scripted);
    document->undo();
    QCOMPARE(document->toPlainText(), before);
    document->redo();
    QCOMPARE(document->toPlainText(), scripted);
}

QTEST_MAIN(ScriptClassesTest)
#include "tst_scriptclasses.moc"
