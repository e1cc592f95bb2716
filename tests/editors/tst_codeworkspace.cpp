// The code workspace and the code file editor on real widgets, over documents of the
// sample engine opened through its plug-in, driven with keys and clicks as a person would.
#include "code/codedocument.h"
#include "code/codenode.h"
#include "editors/code/codeeditor.h"
#include "editors/code/codefileeditor.h"
#include "editors/code/codeworkspace.h"
#include "editors/code/gotodlg.h"
#include "editors/code/snippetmanager.h"
#include "engine/engine.h"
#include "engine/extension.h"
#include "engine/extensionmanager.h"
#include "foundation/filesystemarchive.h"
#include "foundation/messages.h"
#include "foundation/textcodecs.h"
#include "project/project.h"
#include "project/regexp.h"

#include "held.h"
#include "modalanswer.h"
#include "scriptedanswerer.h"
#include "testfiles.h"
#include "testinterface.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QMenu>
#include <QScrollBar>
#include <QSpinBox>
#include <QStackedWidget>
#include <QTemporaryDir>
#include <QTextBlock>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>
#include <QTreeView>
#include <QtTest>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <memory>

using namespace Ovra;

namespace {

const int Definitions = 5; // the sample engine's definition files


// The build tree (where the programs, the plug-ins and the engine's data go) and the
// source tree, found from where the test runs and from its data directory.
QString buildDir()
{
    return QDir::cleanPath(QCoreApplication::applicationDirPath() + QStringLiteral("/.."));
}

QString sourceDir()
{
    return QDir::cleanPath(QStringLiteral(TESTDATADIR "/../../.."));
}

class DefinitionsEditor : public CodeFileEditor
{
public:
    explicit DefinitionsEditor(CodeWorkspace *workspace) : CodeFileEditor(workspace, "definitions") {}
    QAction *action() const override
    {
        return Interface::instance()->editorAction(QStringLiteral("editor_definitions"), ovraTranslator(), 17);
    }
    int fileType() const override { return Definitions; }
};

// A socket on disk: it exists, yet no file can be read from it.
bool makeSocketFile(const QString &path)
{
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray name = QFile::encodeName(path);
    if (fd < 0 || size_t(name.size()) >= sizeof(address.sun_path))
        return false;
    qstrncpy(address.sun_path, name.constData(), sizeof(address.sun_path));
    const bool bound = ::bind(fd, reinterpret_cast<sockaddr *>(&address), sizeof(address)) == 0;
    ::close(fd);
    return bound;
}

// Types a line and its line end, as the user does.
void typeLine(QWidget *editor, const QString &text)
{
    QTest::keyClicks(editor, text);
    QTest::keyClick(editor, Qt::Key_Return);
}

QString lines(const QStringList &text)
{
    return text.join(QLatin1Char('\n'));
}

} // namespace

class CodeWorkspaceTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void actions_data();
    void actions();
    void encodingMenuAndTreeRequest();
    void emptyAndShownPages();
    void comment_data();
    void comment();
    void documentsKeepTheirPlace();
    void goToLine_data();
    void goToLine();
    void errorNavigation();
    void messageBoxMovesTheCursor();
    void encodingSwitch_data();
    void encodingSwitch();
    void treeActionsEditTheText();
    void treeFollowsTheCursor();
    void formatAndIndent_data();
    void formatAndIndent();
    void snippets();
    void statusTexts();
    void findAndReplace();
    void discardQuestion_data();
    void discardQuestion();
    void openOutsideTheProject_data();
    void openOutsideTheProject();
    void failedOpenAddsNothing();
    void saveAsOutsideTheProject();
    void failedSaveLandsInSaveAs();
    void saveErrorIsReported();
    void saveAsUtf8();
    void screenshot();

private:
    CodeDocument *definitions() const;
    // A sample-engine document of the project with this text, shown in the workspace.
    CodeDocument *show(const QString &text);
    void click(const char *action);
    void moveTo(int line, int column);

    std::unique_ptr<ExtensionManager> m_manager;
    EngineExtension *m_extension = nullptr;
    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_root;
    std::unique_ptr<TestInterface> m_host;
    // Answers what a test doesn't script (the file watcher seeing the test's own writes)
    // with the escape answer, so that no box ever waits for a person.
    std::unique_ptr<ScriptedAnswerer> m_nobody;
    Held<Project> m_project;
    std::unique_ptr<CodeWorkspace> m_workspace;
    std::unique_ptr<DefinitionsEditor> m_editor;
};

void CodeWorkspaceTest::initTestCase()
{
    m_manager = std::make_unique<ExtensionManager>(buildDir() + QStringLiteral("/lib/plugins"));
    m_extension = EngineExtension::forProjectFile(QStringLiteral("any.ovp"));
    QVERIFY(m_extension);
}

void CodeWorkspaceTest::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_root = m_dir->filePath(QStringLiteral("work"));
    QVERIFY(copyTree(sourceDir() + QStringLiteral("/examples/sample"), m_root));
    m_host = std::make_unique<TestInterface>();
    m_nobody = std::make_unique<ScriptedAnswerer>();
    m_host->install = buildDir();
    m_host->engineInUse = m_extension->engine();
    QString error;
    m_project.reset(m_extension->openProject(m_root + QStringLiteral("/knight/knight.ovp"), &error));
    QVERIFY2(m_project, qPrintable(error));
    m_host->projectInUse = m_project.get();
    m_workspace = std::make_unique<CodeWorkspace>(m_host.get());
    m_host->main = m_workspace.get();
    m_editor = std::make_unique<DefinitionsEditor>(m_workspace.get());
    m_workspace->resize(900, 600);
    m_workspace->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_workspace.get()));
}

void CodeWorkspaceTest::cleanup()
{
    m_editor.reset();
    m_workspace.reset();
    m_project.reset();
    m_nobody.reset();
    m_host.reset();
    m_dir.reset();
}

CodeDocument *CodeWorkspaceTest::definitions() const
{
    return dynamic_cast<CodeDocument *>(m_project->file(Definitions));
}

CodeDocument *CodeWorkspaceTest::show(const QString &text)
{
    CodeDocument *document = definitions();
    if (!document)
        return nullptr;
    if (!text.isNull())
        document->fromString(text);
    m_editor->setCurrentFile(document);
    m_host->activateEditor(m_editor.get());
    return document;
}

void CodeWorkspaceTest::click(const char *name)
{
    QAction *action = m_host->action(name);
    QVERIFY2(action, name);
    QWidget *button = m_workspace->toolBar()->widgetForAction(action);
    QVERIFY2(button && button->isVisible(), name);
    QTest::mouseClick(button, Qt::LeftButton);
}

// As the user goes there: to the start, down, and along the line.
void CodeWorkspaceTest::moveTo(int line, int column)
{
    CodeEditor *editor = m_workspace->editor();
    QTest::keyClick(editor, Qt::Key_Home, Qt::ControlModifier);
    for (int i = 0; i < line; ++i)
        QTest::keyClick(editor, Qt::Key_Down);
    for (int i = 0; i < column; ++i)
        QTest::keyClick(editor, Qt::Key_Right);
}

void CodeWorkspaceTest::actions_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("tip"); // the label itself where none is given
    QTest::newRow("bar") << "view_code_bar" << "Code toolbar" << "Show/Hide the code toolbar in all code editors";
    QTest::newRow("insert") << "code_snippet_insert" << "Insert code snippet" << "Insert the current code snippet";
    QTest::newRow("new") << "code_snippet_new" << "New code snippet" << "Create a new code snippet";
    QTest::newRow("edit") << "code_snippet_edit" << "Edit code snippet" << "Edit the current code snippet";
    QTest::newRow("goto") << "code_goto" << "Go to line..." << "Go to the specifed line";
    QTest::newRow("prev error") << "code_prev_error" << "Previous syntax error" << "Go to the previous syntax error";
    QTest::newRow("next error") << "code_next_error" << "Next syntax error" << "Go to the next syntax error";
    QTest::newRow("prev depr") << "code_prev_deprecation" << "Previous deprecation" << "Go to the previous deprecation";
    QTest::newRow("next depr") << "code_next_deprecation" << "Next deprecation" << "Go to the next deprecation";
    QTest::newRow("comment") << "code_comment" << "Comment/Uncomment selection" << "Comment/Uncomment all selected lines";
    QTest::newRow("fold") << "code_fold_all" << "Fold all code blocks" << "";
    QTest::newRow("unfold") << "code_unfold_all" << "Unfold all coded blocks" << "";
    QTest::newRow("indent") << "code_auto_indent" << "Auto-indent selection" << "Auto-indent selected lines";
    QTest::newRow("format") << "code_auto_format" << "Auto-format selection" << "Auto-format selected lines";
}

void CodeWorkspaceTest::actions()
{
    QFETCH(QString, name);
    QFETCH(QString, label);
    QFETCH(QString, tip);
    QAction *action = m_host->action(qPrintable(name));
    QVERIFY(action);
    QCOMPARE(action->text(), label);
    QCOMPARE(action->toolTip(), tip.isEmpty() ? label : tip);
    QCOMPARE(m_host->actionScopes.value(name), QStringLiteral("code/0"));
    QCOMPARE(action->isCheckable(), name == QLatin1String("view_code_bar"));
    if (name != QLatin1String("view_code_bar"))
        return;
    // The bar's own switch: it hides the bar and the host keeps the choice.
    QVERIFY(action->isChecked());
    QVERIFY(!m_workspace->toolBar()->isHidden());
    action->trigger();
    QVERIFY(m_workspace->toolBar()->isHidden());
    QCOMPARE(m_host->options.value(QStringLiteral("show_code_bar")), QVariant(false));
    // A workspace made later starts as the user left it.
    CodeWorkspace later(m_host.get());
    later.show();
    QVERIFY(later.toolBar()->isHidden());
    QVERIFY(!m_host->action("view_code_bar")->isChecked());
}

void CodeWorkspaceTest::encodingMenuAndTreeRequest()
{
    // A new workspace fills the menu when the user first opens it, with the codec of the
    // file shown checked.
    CodeWorkspace fresh(m_host.get());
    fresh.show();
    auto *button = qobject_cast<QToolButton *>(fresh.toolBar()->widgetForAction(fresh.toolBar()->actions().last()));
    QVERIFY(button && button->menu());
    QVERIFY(button->menu()->isEmpty());
    button->menu()->popup(button->mapToGlobal(QPoint(0, button->height())));
    QCOMPARE(button->menu()->actions().size(), TextCodecs::count());
    button->menu()->close();

    QMenu *menu = m_workspace->encodingMenu();
    QCOMPARE(menu->actions().size(), TextCodecs::count());
    for (int i = 0; i < TextCodecs::count(); ++i) {
        QCOMPARE(menu->actions().at(i)->objectName(), QString::number(i));
        QCOMPARE(menu->actions().at(i)->text(), TextCodecs::name(i));
    }
    QCOMPARE(menu->title(), QStringLiteral("Encoding"));
    QCOMPARE(menu->toolTip(), QStringLiteral("Selects the file encoding"));
    show(QString());
    QCOMPARE(menu->title(), QStringLiteral("Encoding: %1").arg(definitions()->codecName()));
    // The tree is asked of the host as a control that reports the chosen item.
    const int at = m_host->controlRequests.indexOf({QStringLiteral("definitions_tree"),
                                                    QVariant::fromValue(static_cast<QObject *>(m_editor.get()))});
    QVERIFY(at >= 0);
    QCOMPARE(m_host->selectorSlots.value(QStringLiteral("definitions_tree")), QByteArray("1selectedItem(QModelIndex)"));
}

void CodeWorkspaceTest::emptyAndShownPages()
{
    auto *empty = m_workspace->findChild<QLabel *>(QStringLiteral("code_no_document"));
    QVERIFY(empty);
    QVERIFY(empty->isVisible());
    QCOMPARE(empty->text(), QStringLiteral("No document."));
    QVERIFY(!m_workspace->editor()->isVisible());
    CodeDocument *document = show(QString());
    QCOMPARE(m_workspace->document(), document);
    QVERIFY(m_workspace->editor()->isVisible());
    QVERIFY(!empty->isVisible());
    QVERIFY(m_editor->tree()->isVisible());
    QVERIFY(m_editor->tree()->width() > 100);
    QCOMPARE(m_host->workspaces.last(), m_workspace.get());
    // The actions do nothing on the empty page.
    m_editor->setCurrentFile(nullptr);
    QVERIFY(empty->isVisible());
    m_workspace->comment();
    m_workspace->autoFormat();
    m_workspace->nextError();
    QCOMPARE(document->toString(), definitions()->toString());
}

void CodeWorkspaceTest::comment_data()
{
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("count");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("plain first line comments all")
        << 1 << 3
        << QStringList{"[Character: knight]", "#    life = 1000", "##    power = 3000", "#    defence = 100", "##    walk = (1, 2)"};
    QTest::newRow("commented first line uncomments only comments")
        << 2 << 3
        << QStringList{"[Character: knight]", "    life = 1000", "    power = 3000", "    defence = 100", "#    walk = (1, 2)"};
    QTest::newRow("one character at a time")
        << 4 << 1
        << QStringList{"[Character: knight]", "    life = 1000", "#    power = 3000", "    defence = 100", "#    walk = (1, 2)"};
}

void CodeWorkspaceTest::comment()
{
    QFETCH(int, first);
    QFETCH(int, count);
    QFETCH(QStringList, expected);
    const QString original =
        lines({"[Character: knight]", "    life = 1000", "#    power = 3000", "    defence = 100", "##    walk = (1, 2)"});
    CodeDocument *document = show(original);
    QCOMPARE(document->commentMarker(), QStringLiteral("#"));
    CodeEditor *editor = m_workspace->editor();
    moveTo(first, 2);
    for (int i = 1; i < count; ++i)
        QTest::keyClick(editor, Qt::Key_Down, Qt::ShiftModifier);
    click("code_comment");
    QCOMPARE(document->toString(), lines(expected));
    // The selection still holds the same lines.
    const QTextCursor cursor = editor->textCursor();
    QCOMPARE(document->findBlock(cursor.selectionStart()).blockNumber(), first);
    QCOMPARE(document->findBlock(cursor.selectionEnd()).blockNumber(), first + count - 1);
    // One step of undo takes it all back.
    QTest::keyClick(editor, Qt::Key_Z, Qt::ControlModifier);
    QCOMPARE(document->toString(), original);
}

void CodeWorkspaceTest::documentsKeepTheirPlace()
{
    QStringList text{QStringLiteral("[Character: knight]")};
    for (int i = 0; i < 300; ++i)
        text << QStringLiteral("    life = %1").arg(i);
    CodeDocument *first = show(lines(text));
    Held<ProjectFile> otherFile(m_extension->engine()->createFile(Definitions, m_project.get()));
    auto *second = dynamic_cast<CodeDocument *>(otherFile.get());
    QVERIFY(second);
    second->fromString(lines(text.mid(0, 200)));
    CodeEditor *editor = m_workspace->editor();

    moveTo(150, 6);
    const CodeEditor::LinePos firstPlace = editor->currentLine();
    QCOMPARE(firstPlace.line, 150);
    QCOMPARE(firstPlace.column, 6);
    QVERIFY(firstPlace.scroll > 0);
    m_editor->setCurrentFile(second);
    QCOMPARE(m_workspace->document(), second);
    QCOMPARE(editor->currentLine().line, 0); // a document never shown starts at the top
    moveTo(60, 3);
    const CodeEditor::LinePos secondPlace = editor->currentLine();
    QVERIFY(secondPlace.scroll > 0 && secondPlace.scroll != firstPlace.scroll);

    for (int round = 0; round < 2; ++round) {
        m_editor->setCurrentFile(first);
        QCOMPARE(editor->currentLine().line, firstPlace.line);
        QCOMPARE(editor->currentLine().column, firstPlace.column);
        QCOMPARE(editor->currentLine().scroll, firstPlace.scroll);
        m_editor->setCurrentFile(second);
        QCOMPARE(editor->currentLine().line, secondPlace.line);
        QCOMPARE(editor->currentLine().column, secondPlace.column);
        QCOMPARE(editor->currentLine().scroll, secondPlace.scroll);
    }
    m_editor->setCurrentFile(first);
}

void CodeWorkspaceTest::goToLine_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<int>("answer"); // 0: no question
    QTest::addColumn<int>("line");   // -1: the last line
    QTest::newRow("inside") << "20" << 0 << 19;
    QTest::newRow("past the end, yes") << "500" << int(QMessageBox::Yes) << -1;
    QTest::newRow("past the end, no") << "500" << int(QMessageBox::No) << 9;
}

void CodeWorkspaceTest::goToLine()
{
    QFETCH(QString, typed);
    QFETCH(int, answer);
    QFETCH(int, line);
    CodeDocument *document = show(QString());
    moveTo(9, 4);
    ScriptedAnswerer user;
    if (answer)
        user.push(QMessageBox::StandardButton(answer));
    int offered = 0;
    whenShown<GoToDlg>([&offered, typed](GoToDlg *dialog) {
        offered = dialog->line();
        QTest::keyClick(dialog->lineBox(), Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(dialog->lineBox(), typed);
        QTest::keyClick(dialog->lineBox(), Qt::Key_Return);
    });
    click("code_goto");
    QCOMPARE(offered, 10);
    QCOMPARE(user.prompts().size(), answer ? 1 : 0);
    if (answer) {
        QCOMPARE(user.prompts().first().title, QStringLiteral("Go to line..."));
        QCOMPARE(user.prompts().first().text, QStringLiteral("Invalid line! Do you want go to the last line?"));
        QCOMPARE(user.prompts().first().defaultButton, QMessageBox::Yes);
    }
    const QTextCursor cursor = m_workspace->editor()->textCursor();
    QCOMPARE(cursor.blockNumber(), line < 0 ? document->blockCount() - 1 : line);
    if (answer == QMessageBox::No)
        QCOMPARE(cursor.positionInBlock(), 4);
}

namespace {

const QString errorText = lines({"[Character: knight]", "    life = 1000", "%%%", "    power = 3000",
                                 "    walk = (1", "    defence = 100", "###"});

// Where the parser put its errors, in document order.
QList<QPoint> errorPlaces(const CodeDocument *document)
{
    QList<QPoint> places;
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
        const auto *data = dynamic_cast<const CodeBlockData *>(block.userData());
        QList<int> starts;
        for (const CodeBlockData::SyntaxMessage &message : data ? data->syntaxMessages() : QVector<CodeBlockData::SyntaxMessage>())
            if (message.kind == CodeBlockData::SyntaxMessage::Error)
                starts << message.start;
        std::sort(starts.begin(), starts.end());
        for (int start : qAsConst(starts))
            places << QPoint(start, block.blockNumber());
    }
    return places;
}

QPoint cursorPlace(const CodeEditor *editor)
{
    return QPoint(editor->textCursor().positionInBlock(), editor->textCursor().blockNumber());
}

} // namespace

void CodeWorkspaceTest::errorNavigation()
{
    CodeDocument *document = show(errorText);
    const QList<QPoint> errors = errorPlaces(document);
    QVERIFY2(errors.size() >= 2, "the sample parser reports the bad lines");
    CodeEditor *editor = m_workspace->editor();
    moveTo(0, 0);
    click("code_next_error");
    QCOMPARE(cursorPlace(editor), errors.first());
    // A message at the cursor's own column is the one found: the cursor stays on it.
    click("code_next_error");
    QCOMPARE(cursorPlace(editor), errors.first());
    for (int i = 1; i < errors.size(); ++i) {
        moveTo(errors.at(i - 1).y(), errors.at(i - 1).x() + 1);
        click("code_next_error");
        QCOMPARE(cursorPlace(editor), errors.at(i));
    }
    moveTo(errors.last().y(), errors.last().x() + 1); // none further: the cursor stays
    click("code_next_error");
    QCOMPARE(cursorPlace(editor), QPoint(errors.last().x() + 1, errors.last().y()));
    for (int i = errors.size() - 2; i >= 0; --i) {
        // Just before the later error: the column before it, or the end of the line above.
        const QPoint later = errors.at(i + 1);
        if (later.x() > 0)
            moveTo(later.y(), later.x() - 1);
        else
            moveTo(later.y() - 1, document->findBlockByNumber(later.y() - 1).length() - 1);
        click("code_prev_error");
        QCOMPARE(cursorPlace(editor), errors.at(i));
    }
    // The sample language knows no deprecations: those buttons leave the cursor.
    click("code_next_deprecation");
    click("code_prev_deprecation");
    QCOMPARE(cursorPlace(editor), errors.first());
}

void CodeWorkspaceTest::messageBoxMovesTheCursor()
{
    CodeDocument *document = show(errorText);
    auto *messages = qobject_cast<Messages *>(document->fileMessages());
    QVERIFY(messages);
    QComboBox *box = m_workspace->messageBox();
    QVERIFY(box->isVisible());
    QCOMPARE(box->count(), int(messages->count(Message::All)));
    QVERIFY(box->count() >= 2);
    QCOMPARE(box->itemText(1), messages->at(1, Message::All).text);
    CodeEditor *editor = m_workspace->editor();
    moveTo(1, 0);
    box->setFocus();
    QTest::keyClick(box, Qt::Key_Down);
    QCOMPARE(box->currentIndex(), 1);
    const Message second = messages->at(1, Message::All);
    QCOMPARE(cursorPlace(editor), QPoint(int(second.column), int(second.line)));
    QTest::keyClick(box, Qt::Key_Up);
    const Message first = messages->at(0, Message::All);
    QCOMPARE(cursorPlace(editor), QPoint(int(first.column), int(first.line)));
    // Without a document the box is empty.
    m_editor->setCurrentFile(nullptr);
    QCOMPARE(box->count(), 0);
}

void CodeWorkspaceTest::encodingSwitch_data()
{
    QTest::addColumn<bool>("reload");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QByteArray>("saved");
    QTest::newRow("yes reloads") << true << QStringLiteral("Caf\u00c3\u00a9") << QByteArray("Caf\xc3\xa9");
    QTest::newRow("no keeps the text") << false << QStringLiteral("Caf\u00e9") << QByteArray("Caf\xe9");
}

void CodeWorkspaceTest::encodingSwitch()
{
    QFETCH(bool, reload);
    QFETCH(QString, shown);
    QFETCH(QByteArray, saved);
    const QString path = m_root + QStringLiteral("/knight/knight.def");
    CodeDocument *document = definitions();
    document->pauseWatch(true); // the file is changed here, not by someone else
    QVERIFY(writeFile(path, "[Character: knight]\r\n    name = \"Caf\xc3\xa9 au lait\"\r\n"));
    QVERIFY(document->fromFile(FileSystemArchive::instance(), path, 0, nullptr));
    document->pauseWatch(false);
    document->setCodecId(TextCodecs::index("UTF-8")); // short texts are hard to guess
    document->reloadFile();
    show(QString());
    QVERIFY(document->toString().contains(QStringLiteral("Caf\u00e9")));
    const int latin1 = TextCodecs::index("ISO-8859-1");
    QVERIFY(latin1 > 0);
    ScriptedAnswerer user({reload ? QMessageBox::Yes : QMessageBox::No});
    QAction *choice = m_workspace->encodingMenu()->findChild<QAction *>(QString::number(latin1));
    QVERIFY(choice);
    choice->trigger();
    QCOMPARE(user.prompts().size(), 1);
    QCOMPARE(user.prompts().first().title, QStringLiteral("Reload"));
    QVERIFY(user.prompts().first().text.startsWith(QStringLiteral("Do you want to reload the file using the specified encoding?\n")));
    QCOMPARE(user.prompts().first().defaultButton, QMessageBox::Yes);
    QCOMPARE(document->codecId(), latin1);
    QCOMPARE(m_workspace->encodingMenu()->title(), QStringLiteral("Encoding: ISO-8859-1"));
    QVERIFY(choice->isChecked());
    QVERIFY2(document->toString().contains(shown), qPrintable(document->toString()));
    // The next save writes the text in the chosen encoding.
    moveTo(0, 0);
    typeLine(m_workspace->editor(), QStringLiteral("# x"));
    m_editor->save();
    QTRY_VERIFY(readFile(path).startsWith("# x\r\n"));
    QVERIFY(readFile(path).contains(saved + " au lait"));
}

namespace {

// The top-level row of the tree whose text contains `text`.
QModelIndex rowWith(QTreeView *tree, const QString &text)
{
    QAbstractItemModel *model = tree->model();
    for (int row = 0; model && row < model->rowCount(); ++row) {
        const QModelIndex index = model->index(row, 0);
        if (index.data().toString().contains(text))
            return index;
    }
    return QModelIndex();
}

void clickRow(QTreeView *tree, const QModelIndex &index)
{
    QVERIFY(index.isValid());
    tree->scrollTo(index);
    QTRY_VERIFY(tree->visualRect(index).isValid());
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, Qt::NoModifier, tree->visualRect(index).center());
    QCOMPARE(tree->currentIndex(), index);
}

void triggerTreeAction(QTreeView *tree, const QString &name)
{
    for (QAction *action : tree->actions()) {
        if (action->objectName() == name) {
            action->trigger();
            return;
        }
    }
    QFAIL(qPrintable(QStringLiteral("no tree action ") + name));
}

} // namespace

void CodeWorkspaceTest::treeActionsEditTheText()
{
    CodeDocument *document = show(QString());
    QTreeView *tree = m_editor->tree();
    QVERIFY(tree->isVisible());
    QCOMPARE(tree->model(), document->model());
    QCOMPARE(tree->contextMenuPolicy(), Qt::ActionsContextMenu);
    QStringList texts;
    for (QAction *action : tree->actions())
        texts << action->text();
    QCOMPARE(texts, QStringList({"Copy", "Paste after", "Paste before", "Remove"}));

    // A click on a node puts the cursor on its line.
    clickRow(tree, rowWith(tree, QStringLiteral("leap")));
    const int leapLine = document->find(QStringLiteral("[Move: leap]")).blockNumber();
    QCOMPARE(m_workspace->editor()->textCursor().blockNumber(), leapLine);
    triggerTreeAction(tree, QStringLiteral("copy"));
    const QString copied = QApplication::clipboard()->text();
    QVERIFY(copied.startsWith(QStringLiteral("[Move: leap]")));
    QVERIFY(copied.contains(QStringLiteral("sound = jump")));

    QString group = copied;
    group.replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
    group = group.trimmed();
    triggerTreeAction(tree, QStringLiteral("paste_after"));
    QCOMPARE(document->toString().count(QStringLiteral("[Move: leap]")), 2);
    QCOMPARE(document->toString().count(group), 2);
    // The copy follows the group's last line.
    QTextBlock next = document->find(QStringLiteral("sound = jump")).block().next();
    while (next.isValid() && next.text().trimmed().isEmpty())
        next = next.next();
    QCOMPARE(next.text(), QStringLiteral("[Move: leap]"));

    clickRow(tree, rowWith(tree, QStringLiteral("Sounds")));
    triggerTreeAction(tree, QStringLiteral("paste_before"));
    QCOMPARE(document->toString().count(group), 3);
    const QString text = document->toString();
    QVERIFY(text.lastIndexOf(group) + group.size() < text.indexOf(QStringLiteral("[Sounds: knight]")));
    QVERIFY(text.lastIndexOf(group) > text.indexOf(QStringLiteral("sound = jump"), text.indexOf(group) + group.size()));

    clickRow(tree, rowWith(tree, QStringLiteral("Sounds")));
    triggerTreeAction(tree, QStringLiteral("remove"));
    QVERIFY(!document->toString().contains(QStringLiteral("[Sounds:")));
    QVERIFY(!document->toString().contains(QStringLiteral("swing = (1, 0)")));
    QVERIFY(document->isModified());
}

void CodeWorkspaceTest::treeFollowsTheCursor()
{
    CodeDocument *document = show(QString());
    QTreeView *tree = m_editor->tree();
    const int damage = document->find(QStringLiteral("damage = 40")).blockNumber();
    moveTo(damage, 0);
    QVERIFY(!tree->currentIndex().isValid()); // off by default
    m_host->options.insert(QStringLiteral("auto_expand_tree"), true);
    moveTo(damage, 2);
    const QModelIndex current = tree->currentIndex();
    QVERIFY(current.isValid());
    QCOMPARE(document->nodeFromIndex(current)->lineNo(), damage);
    QVERIFY(tree->isExpanded(current.parent()));
    QVERIFY(current.parent().data().toString().contains(QStringLiteral("punch")));
    // A blank line follows to the node before it.
    const int blank = document->find(QStringLiteral("[Move: leap]")).blockNumber() - 1;
    QVERIFY(document->findBlockByNumber(blank).text().isEmpty());
    moveTo(blank, 0);
    QCOMPARE(document->nodeFromIndex(tree->currentIndex())->lineNo(), blank - 1);
}

void CodeWorkspaceTest::formatAndIndent_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<QString>("expected");
    QTest::newRow("indent") << "code_auto_indent"
                            << lines({"[Character: knight]", "    life=1000", "    power   =   3000", "walk=(1,2)"});
    QTest::newRow("format") << "code_auto_format"
                            << lines({"[Character: knight]", "    life = 1000", "    power = 3000", "walk=(1,2)"});
}

void CodeWorkspaceTest::formatAndIndent()
{
    QFETCH(QString, action);
    QFETCH(QString, expected);
    CodeDocument *document = show(lines({"[Character: knight]", "life=1000", "  power   =   3000", "walk=(1,2)"}));
    CodeEditor *editor = m_workspace->editor();
    // Lines 0 to 2 selected; the last line stays as it is.
    moveTo(0, 0);
    QTest::keyClick(editor, Qt::Key_Down, Qt::ShiftModifier);
    QTest::keyClick(editor, Qt::Key_Down, Qt::ShiftModifier);
    click(qPrintable(action));
    QCOMPARE(document->toString(), expected);
    QVERIFY(!editor->textCursor().hasSelection());
    // A read-only view changes nothing.
    editor->setReadOnly(true);
    document->fromString(lines({"[Character: knight]", "life=1000"}));
    QTest::keyClick(editor, Qt::Key_A, Qt::ControlModifier);
    click(qPrintable(action));
    click("code_comment");
    QCOMPARE(document->toString(), lines({"[Character: knight]", "life=1000"}));
}

void CodeWorkspaceTest::snippets()
{
    // The engine's own snippets, from its installed data.
    m_editor->engineSwitched(true);
    SnippetManager *snippets = m_workspace->snippets();
    QCOMPARE(snippets->directory(), buildDir() + QStringLiteral("/engines/sample/snippets"));
    QCOMPARE(m_workspace->snippetBox()->count(), 4);
    QStringList names;
    for (int row = 0; row < snippets->count(); ++row)
        names << snippets->name(row);
    QCOMPARE(names, QStringList({"Character header", "New animation", "New move", "New stage"}));

    // Filled code goes in at the cursor, which ends where CURSOR stood.
    CodeDocument *document = show(lines({"[Character: knight]", "    life = 1000", ""}));
    CodeEditor *editor = m_workspace->editor();
    moveTo(2, 0);
    m_workspace->insertSnippet(QStringLiteral("[Move: kick]\n    damage = CURSOR\n    state = air"));
    QCOMPARE(cursorPlace(editor), QPoint(13, 3));
    QTest::keyClicks(editor, QStringLiteral("30"));
    QCOMPARE(document->toString(),
             lines({"[Character: knight]", "    life = 1000", "[Move: kick]", "    damage = 30", "    state = air"}));

    // A snippet whose form can't be filled puts nothing in.
    QTemporaryDir install;
    QVERIFY(writeFile(install.filePath(QStringLiteral("engines/sample/snippets/Broken.xml")), "<snippet><field name="));
    m_host->install = install.path();
    m_editor->engineSwitched(true);
    QCOMPARE(m_workspace->snippetBox()->count(), 1);
    QCOMPARE(m_workspace->snippetBox()->currentIndex(), 0);
    const QString before = document->toString();
    const QPoint place = cursorPlace(editor);
    ScriptedAnswerer user({QMessageBox::Ok});
    click("code_snippet_insert");
    QCOMPARE(document->toString(), before);
    QCOMPARE(cursorPlace(editor), place);
    // Without an engine there are no snippets.
    m_host->engineInUse = nullptr;
    m_editor->engineSwitched(false);
    QCOMPARE(m_workspace->snippetBox()->count(), 0);
}

void CodeWorkspaceTest::statusTexts()
{
    show(lines({"[Character: knight]", "    life = 1000", "    power = 3000"}));
    moveTo(2, 3);
    QCOMPARE(m_host->statusTexts.value(0), QStringLiteral("Line: 3, Column: 4, Line count: 3"));
    QCOMPARE(m_host->statusTexts.value(1), QStringLiteral("Syntax error count: 0"));
    CodeDocument *document = show(errorText);
    moveTo(1, 0);
    const uint errors = qobject_cast<Messages *>(document->fileMessages())->count(Message::Error);
    QVERIFY(errors >= 2);
    QCOMPARE(m_host->statusTexts.value(1), QStringLiteral("Syntax error count: %1").arg(errors));
    // An editor that isn't active no longer follows the cursor.
    m_editor->deactivate();
    moveTo(4, 0);
    QCOMPARE(m_host->statusTexts.value(0), QStringLiteral("Line: 2, Column: 1, Line count: 7"));
}

void CodeWorkspaceTest::findAndReplace()
{
    CodeDocument *document = show(QString());
    moveTo(0, 0);
    RegExp damage(QRegularExpression(QStringLiteral("damage = (\\d+)")));
    QVERIFY(m_editor->find(damage, 0));
    QCOMPARE(m_workspace->editor()->textCursor().selectedText(), QStringLiteral("damage = 40"));
    QCOMPARE(m_editor->replace(damage, QStringLiteral("harm = %1"), 0), 1);
    QVERIFY(document->toString().contains(QStringLiteral("harm = 40")));
    // The next match is selected for the next replacement.
    QCOMPARE(m_workspace->editor()->textCursor().selectedText(), QStringLiteral("damage = 0"));
    RegExp missing(QRegularExpression(QStringLiteral("nowhere to be found")));
    QVERIFY(!m_editor->find(missing, ProjectFile::Wrap));
    QCOMPARE(m_editor->replace(damage, QStringLiteral("hurt = %1"), ProjectFile::All), 1);
    QVERIFY(!document->toString().contains(QStringLiteral("damage")));
    QVERIFY(document->toString().contains(QStringLiteral("hurt = 0")));
}

void CodeWorkspaceTest::discardQuestion_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<bool>("discards");
    QTest::newRow("yes") << int(QMessageBox::Yes) << true;
    QTest::newRow("no") << int(QMessageBox::No) << false;
}

void CodeWorkspaceTest::discardQuestion()
{
    QFETCH(int, answer);
    QFETCH(bool, discards);
    CodeDocument *document = show(QString());
    ScriptedAnswerer user({QMessageBox::StandardButton(answer)});
    QVERIFY(m_editor->canDiscard(static_cast<const ProjectFile *>(document))); // unchanged: no question
    QVERIFY(user.prompts().isEmpty());
    QSignalSpy modified(m_editor.get(), &FileEditor::modified);
    moveTo(1, 0);
    QTest::keyClicks(m_workspace->editor(), QStringLiteral("x"));
    QVERIFY(m_editor->isModified());
    QCOMPARE(modified.count(), 1);
    QCOMPARE(m_editor->canDiscard(static_cast<const ProjectFile *>(document)), discards);
    QCOMPARE(user.prompts().size(), 1);
    QCOMPARE(user.prompts().first().title, QStringLiteral("Discard changes?"));
    QCOMPARE(user.prompts().first().text, QStringLiteral("Do you want to discard the changes made in definitions?"));
    QCOMPARE(user.prompts().first().defaultButton, QMessageBox::No);
}

void CodeWorkspaceTest::openOutsideTheProject_data()
{
    QTest::addColumn<int>("answer");
    QTest::newRow("as a copy") << int(QMessageBox::Yes);
    QTest::newRow("under its name") << int(QMessageBox::No);
}

void CodeWorkspaceTest::openOutsideTheProject()
{
    QFETCH(int, answer);
    show(QString());
    const QString outside = m_dir->filePath(QStringLiteral("outside.def"));
    QVERIFY(writeFile(outside, "[Move: kick]\r\n    damage = 12\r\n"));
    const int before = m_project->filesByType(Definitions).size();
    ScriptedAnswerer user({QMessageBox::StandardButton(answer)});
    answerFileDialog(outside);
    m_editor->open();
    QCOMPARE(user.prompts().size(), 1);
    QCOMPARE(user.prompts().first().title, QStringLiteral("External file!"));
    QVERIFY(user.prompts().first().text.contains(QStringLiteral("Do you want to load it as copy?")));
    const QList<ProjectFile *> &files = m_project->filesByType(Definitions);
    QCOMPARE(files.size(), before + 1);
    auto *opened = dynamic_cast<CodeDocument *>(files.last());
    QVERIFY(opened);
    QCOMPARE(opened->toString(), QStringLiteral("[Move: kick]\n    damage = 12\n"));
    const bool copy = answer == QMessageBox::Yes;
    QCOMPARE(opened->fileName(), copy ? QString() : outside);
    QCOMPARE(opened->isModified(), copy);
    QCOMPARE(readFile(outside), QByteArray("[Move: kick]\r\n    damage = 12\r\n"));
}

void CodeWorkspaceTest::failedOpenAddsNothing()
{
    show(QString());
    const QString unreadable = m_root + QStringLiteral("/knight/socket.def");
    QVERIFY(makeSocketFile(unreadable));
    const int before = m_project->filesByType(Definitions).size();
    ScriptedAnswerer user;
    answerFileDialog(unreadable);
    m_editor->open();
    QCOMPARE(m_project->filesByType(Definitions).size(), before);
    QVERIFY(user.prompts().isEmpty()); // inside the project: nothing to ask
    QCOMPARE(m_workspace->document(), definitions());
}

void CodeWorkspaceTest::saveAsOutsideTheProject()
{
    CodeDocument *document = show(QString());
    const QString own = document->fileName();
    moveTo(0, 0);
    typeLine(m_workspace->editor(), QStringLiteral("# copied"));
    const QString copy = m_dir->filePath(QStringLiteral("copy.def"));
    ScriptedAnswerer user({QMessageBox::Yes});
    answerFileDialog(copy);
    m_editor->saveAs();
    QCOMPARE(user.prompts().size(), 1);
    QCOMPARE(user.prompts().first().title, QStringLiteral("External file!"));
    QVERIFY(user.prompts().first().text.contains(QStringLiteral("Do you want to save it as copy?")));
    QVERIFY(readFile(copy).startsWith("# copied\r\n# The knight"));
    // A copy keeps the document's own name, and its changes unsaved there.
    QCOMPARE(document->fileName(), own);
    QVERIFY(document->isModified());
    QVERIFY(!readFile(own).startsWith("# copied"));
}

void CodeWorkspaceTest::failedSaveLandsInSaveAs()
{
    CodeDocument *document = show(QString());
    moveTo(0, 0);
    typeLine(m_workspace->editor(), QStringLiteral("# rescued"));
    // Where the file was stands a folder now: the save can't write it, and asks for a
    // new place.
    const QString own = document->fileName();
    document->pauseWatch(true);
    QVERIFY(QFile::remove(own));
    QVERIFY(QDir().mkpath(own));
    const QString rescue = m_dir->filePath(QStringLiteral("rescued.def"));
    ScriptedAnswerer user({QMessageBox::No});
    answerFileDialog(rescue);
    m_editor->save();
    QCOMPARE(user.prompts().size(), 1);
    QCOMPARE(user.prompts().first().title, QStringLiteral("External file!"));
    QTRY_VERIFY(!document->isModified());
    QVERIFY(readFile(rescue).startsWith("# rescued\r\n# The knight"));
    QCOMPARE(document->fileName(), rescue);
    QVERIFY(QFileInfo(own).isDir());
}

void CodeWorkspaceTest::saveErrorIsReported()
{
    CodeDocument *document = show(QString());
    const QString own = document->fileName();
    moveTo(0, 0);
    typeLine(m_workspace->editor(), QStringLiteral("# lost?"));
    // Below a plain file no folder can be made, so nothing can be written there.
    QVERIFY(writeFile(m_dir->filePath(QStringLiteral("plain"))));
    const QString nowhere = m_dir->filePath(QStringLiteral("plain/x.def"));
    ScriptedAnswerer user({QMessageBox::No, QMessageBox::Ok});
    answerFileDialog(nowhere);
    m_editor->saveAs();
    QCOMPARE(user.prompts().size(), 2);
    QCOMPARE(user.prompts().at(1).title, QStringLiteral("Save file error!"));
    QCOMPARE(user.prompts().at(1).text, QStringLiteral("An error has occurred while trying to save the file!"));
    QCOMPARE(user.prompts().at(1).icon, QMessageBox::Critical);
    QVERIFY(!QFile::exists(nowhere));
    // Nothing is lost: the text and its own file are as they were.
    QVERIFY(document->isModified());
    QCOMPARE(document->fileName(), own);
    QVERIFY(document->toString().startsWith(QStringLiteral("# lost?\n")));
    QVERIFY(readFile(own).startsWith("# The knight"));
}

void CodeWorkspaceTest::saveAsUtf8()
{
    const QString path = m_root + QStringLiteral("/knight/knight.def");
    CodeDocument *document = definitions();
    document->pauseWatch(true);
    QVERIFY(writeFile(path, "[Character: knight]\r\n    name = \"Caf\xe9\"\r\n"));
    QVERIFY(document->fromFile(FileSystemArchive::instance(), path, 0, nullptr));
    document->pauseWatch(false);
    document->setCodecId(TextCodecs::index("ISO-8859-1"));
    document->reloadFile();
    QVERIFY(document->toString().contains(QStringLiteral("Caf\u00e9")));
    show(QString());
    QVERIFY(!document->isModified());
    m_editor->saveAsUTF8();
    QCOMPARE(document->codecName(), QStringLiteral("UTF-8"));
    QTRY_COMPARE(readFile(path), QByteArray("[Character: knight]\r\n    name = \"Caf\xc3\xa9\"\r\n"));
}

// The whole view as a person sees it, written beside the test for a look.
void CodeWorkspaceTest::screenshot()
{
    m_editor->engineSwitched(true);
    CodeDocument *document = show(QString());
    m_host->options.insert(QStringLiteral("auto_expand_tree"), true);
    CodeEditor *editor = m_workspace->editor();
    // A folded group, an edited line with an error in it, and the cursor at a parenthesis.
    editor->toggleBlockVisible(document->find(QStringLiteral("[Move: punch]")).block());
    moveTo(document->find(QStringLiteral("life = 1000")).blockNumber(), 15);
    QTest::keyClicks(editor, QStringLiteral(" %%"));
    const QTextCursor walk = document->find(QStringLiteral("walk = ("));
    moveTo(walk.blockNumber(), walk.positionInBlock() - 1);
    QVERIFY(m_workspace->messageBox()->count() >= 1);
    QVERIFY(m_editor->tree()->currentIndex().isValid());
    // The parenthesis beside the cursor shows its partner once the editor has the focus.
    m_workspace->activateWindow();
    editor->setFocus();
    QTRY_COMPARE(editor->parenthesisMatch(), 1);
    const QImage image = m_workspace->grab().toImage();
    QCOMPARE(image.size(), QSize(900, 600));
    const QString path = QCoreApplication::applicationDirPath() + QStringLiteral("/codeworkspace.png");
    QVERIFY(image.save(path));
    qInfo("screenshot: %s", qPrintable(path));
}

QTEST_MAIN(CodeWorkspaceTest)
#include "tst_codeworkspace.moc"
