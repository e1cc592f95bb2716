#include "testengine.h"

#include "projecttestsupport.h"
#include "scriptedanswerer.h"
#include "testinterface.h"

#include "engine/engine.h"
#include "foundation/filesystemarchive.h"
#include "foundation/filewatcher.h"
#include "foundation/textcodecs.h"
#include "project/regexp.h"

#include <QAbstractItemModelTester>
#include <QAbstractTextDocumentLayout>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QRandomGenerator>
#include <QTextLayout>
#include <QTreeView>
#include <QtTest>

using namespace Ovra;

namespace {

const QString Text = QStringLiteral("[Stats]\nspeed = 1000\nweight = 3000\n; comment\n[Shape]\nwidth = 1\n");

QStringList tree(CodeDocument &document)
{
    QStringList lines;
    RootCode *root = document.root();
    for (uint g = 0; g < root->childCount(); ++g) {
        auto *group = static_cast<GroupCode *>(root->childAt(g));
        lines << group->name() + QLatin1Char(':') + QString::number(group->lineNo());
        for (ValueCode *value : group->values())
            lines << QStringLiteral("  ") + value->name() + QLatin1Char(':') + QString::number(value->lineNo());
    }
    return lines;
}

QByteArray readFile(const QString &name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

bool writeFile(const QString &name, const QByteArray &bytes)
{
    QFile file(name);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// The layout a view would run at its next turn of the event loop, run at once.
class TreeView : public QTreeView
{
public:
    using QTreeView::executeDelayedItemsLayout;
};

class Mark : public CodeMark
{
public:
    int line = 0;
    bool gone = false;
    void setLine(int at, const QTextBlock &) override { line = at; }
    void blockRemoved() override { gone = true; }
};

// An engine whose comments start with ";", and a project around a document of it.
class SemicolonEngine : public Engine
{
public:
    SemicolonEngine() : Engine(QStringLiteral("semicolon")) {}
    QString queryString(StringType type, uint) const override
    {
        return type == CommentMarker ? QStringLiteral(";") : QString();
    }
    QString singleFileFilters(int) const override { return QString(); }
    ProjectFile *createFile(int, Project *) override { return nullptr; }
};

class Work : public ParentProject
{
public:
    Work(Archive &archive, Engine *engine) : ParentProject(QStringLiteral("/work/"), archive), m_engine(engine) {}
    Engine *engine() const override { return m_engine; }

protected:
    void allProjectsClosed() override {}

private:
    Engine *m_engine;
};

// The formats a view paints a line with: it lays the line out first, through the
// document's layout, as painting does.
QVector<QTextLayout::FormatRange> shownFormats(const QTextBlock &block)
{
    block.document()->documentLayout()->blockBoundingRect(block);
    return block.layout()->formats();
}

} // namespace

namespace {

// The document in a plain view on screen, as a user sees it.
bool shown(QPlainTextEdit &editor, QTextDocument &document, int height)
{
    editor.setDocument(&document);
    editor.resize(320, height);
    editor.show();
    return QTest::qWaitForWindowExposed(&editor);
}

} // namespace

class CodeDocumentTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QVERIFY(m_user.prompts().isEmpty()); }
    void treeFollowsText();
    void editingALineKeepsItsNode();
    void brokenHeaderGivesValuesAwayUntilRetyped();
    void messagesFollowTheLinesInOrder();
    void bracketKeepsTreeCurrentAndUndoesAtOnce();
    void savesWithCrLfAndTabs();
    void foreignLoadAndBackgroundSave();
    void ownSavesAskNothing_data();
    void ownSavesAskNothing();
    void savedRevisions();
    void marks();
    void searchAndReplace();
    void searchOverLineEnds_data();
    void searchOverLineEnds();
    void searchBackwardsStopsBeforeTheCursor();
    void tabsExpandOnLoad();
    void nodesEditTheirText();
    void linesKnowTheirFormatsParenthesesAndLevels();
    void versionChangeRehighlightsOnce();
    void modelIconsAndGate();
    void parserEdges();
    void viewPaintsTheFormats();
    void editsLayOutOnlyTheirLines_data();
    void editsLayOutOnlyTheirLines();
    void scrollingLeavesTheNextKeyItsLine();
    void linesReachTheParserAsTheyStand_data();
    void linesReachTheParserAsTheyStand();
    void badInputSurvivesASave_data();
    void badInputSurvivesASave();
    void secondBackgroundSaveWaits();
    void viewSurvivesReleasedNodes();
    void changeKeepsCommentAndColumns_data();
    void changeKeepsCommentAndColumns();

private:
    // Only the watcher test expects a question, on its own answerer; any other fails
    // the test it came in.
    ScriptedAnswerer m_user;
};

void CodeDocumentTest::treeFollowsText()
{
    TestDocument document;
    QAbstractItemModelTester tester(document.model(), QAbstractItemModelTester::FailureReportingMode::QtTest);
    document.fromString(Text);
    QCOMPARE(tree(document), QStringList({"Stats:0", "  speed:1", "  weight:2", "Shape:4", "  width:5"}));
    QCOMPARE(document.model()->rowCount(), 2);
    QCOMPARE(document.messages()->count(Message::All), 0u);
    QVERIFY(!document.isModified());
    QCOMPARE(document.codecName(), QStringLiteral("UTF-8"));
    // Comment and blank lines have no node; a header line's state is its group's kind.
    QCOMPARE(document.nodeInBlock(document.findBlockByNumber(3)), nullptr);
    QCOMPARE(document.findBlockByNumber(2).userState(), 1);
}

void CodeDocumentTest::editingALineKeepsItsNode()
{
    TestDocument document;
    document.fromString(Text);
    CodeNode *speed = document.nodeInBlock(document.findBlockByNumber(1));
    const int calls = document.parser.calls;
    document.replaceLine(1, QStringLiteral("speed = 900"));
    QCOMPARE(document.nodeInBlock(document.findBlockByNumber(1)), speed);
    QCOMPARE(static_cast<TestValue *>(speed)->source, QStringLiteral("900"));
    // The edit removed up to the end of its line, so the line after it is read as well;
    // no state changed, so nothing further.
    QCOMPARE(document.parser.calls - calls, 2);
    QVERIFY(document.isModified());
}

void CodeDocumentTest::brokenHeaderGivesValuesAwayUntilRetyped()
{
    TestDocument document;
    QAbstractItemModelTester tester(document.model(), QAbstractItemModelTester::FailureReportingMode::QtTest);
    document.fromString(Text);
    MessageList list(nullptr);
    list.registerMessages(document.messages());
    document.replaceLine(4, QStringLiteral("[Shape"));
    QCOMPARE(tree(document), QStringList({"Stats:0", "  speed:1", "  weight:2", "  width:5"}));
    QCOMPARE(document.messages()->count(Message::Error), 1u);
    const Message error = document.messages()->at(0, Message::Error);
    QCOMPARE(error.text, QStringLiteral("Unknown line"));
    QCOMPARE(error.line, 4u);
    QCOMPARE(list.errorCount(), 1u);
    document.replaceLine(4, QStringLiteral("[Shape]"));
    QCOMPARE(tree(document), QStringList({"Stats:0", "  speed:1", "  weight:2", "Shape:4", "  width:5"}));
    QCOMPARE(document.messages()->count(Message::All), 0u);
    QCOMPARE(list.errorCount(), 0u);
    list.unregisterMessages(document.messages());
}

void CodeDocumentTest::messagesFollowTheLinesInOrder()
{
    // The lines of messages, in the order the list gives them.
    auto linesOf = [](Messages *messages) {
        QList<uint> lines;
        for (uint i = 0; i < messages->count(Message::All); ++i)
            lines << messages->at(i, Message::All).line;
        return lines;
    };
    TestDocument document;
    Messages *messages = document.messages();
    document.fromString(QStringLiteral("[Stats]\nbad\nspeed = 1\nbad\nbad\nweight = 2\n"));
    QCOMPARE(linesOf(messages), QList<uint>({1, 3, 4}));
    QCOMPARE(messages->rowCount(), 3);

    // A message of a line at the end is announced behind those before it.
    QSignalSpy inserted(messages, &QAbstractItemModel::rowsInserted);
    document.replaceLine(5, QStringLiteral("bad"));
    QCOMPARE(inserted.count(), 1);
    QCOMPARE(inserted.at(0).at(1).toInt(), 3);
    QCOMPARE(inserted.at(0).at(2).toInt(), 3);
    // Lines in between and at the start join the list in their place; lines that lose
    // their message leave it.
    document.replaceLine(2, QStringLiteral("bad"));
    document.replaceLine(0, QStringLiteral("bad"));
    QCOMPARE(linesOf(messages), QList<uint>({0, 1, 2, 3, 4, 5}));
    document.replaceLine(3, QStringLiteral("speed = 3"));
    document.replaceLine(0, QStringLiteral("[Stats]"));
    QCOMPARE(linesOf(messages), QList<uint>({1, 2, 4, 5}));
    QCOMPARE(messages->rowCount(), 4);
    QCOMPARE(messages->count(Message::Error), 4u);

    // A long text of which every other line is wrong, loaded and read again.
    QString text = QStringLiteral("[Stats]\n");
    for (int i = 0; i < 500; ++i)
        text += QStringLiteral("bad\nspeed = %1\n").arg(i);
    document.fromString(text);
    QCOMPARE(messages->count(Message::All), 500u);
    QCOMPARE(messages->rowCount(), 500);
    QCOMPARE(messages->at(0, Message::All).line, 1u);
    QCOMPARE(messages->at(499, Message::All).line, 999u);
    document.reparse();
    QCOMPARE(messages->count(Message::Error), 500u);
    QCOMPARE(messages->at(250, Message::All).line, 501u);
    document.fromString(QStringLiteral("[Stats]\n"));
    QCOMPARE(messages->count(Message::All), 0u);
    QCOMPARE(messages->rowCount(), 0);
}

void CodeDocumentTest::bracketKeepsTreeCurrentAndUndoesAtOnce()
{
    TestDocument document;
    document.fromString(Text);
    GroupCode *data = static_cast<GroupCode *>(document.root()->childAt(0));
    document.beginChange();
    document.insertAfter(data->values().last(), QStringLiteral("attack = 5"), true);
    // Inside the bracket the tree already knows the new line.
    QCOMPARE(data->valueCount(), 3u);
    document.insertBefore(data, QStringLiteral("[Header]"), true);
    QCOMPARE(document.root()->childCount(), 3u);
    document.endChange();
    QCOMPARE(tree(document).first(), QStringLiteral("Header:0"));
    QCOMPARE(document.toString(), QStringLiteral("[Header]\n[Stats]\nspeed = 1000\nweight = 3000\nattack = 5\n; comment\n[Shape]\nwidth = 1\n"));
    document.undo();
    QCOMPARE(document.toString(), Text);
    QCOMPARE(tree(document), QStringList({"Stats:0", "  speed:1", "  weight:2", "Shape:4", "  width:5"}));
}

void CodeDocumentTest::savesWithCrLfAndTabs()
{
    QTemporaryDir dir;
    TestDocument document;
    document.fromString(QStringLiteral("a   b\nabc d\n"));
    const QString name = dir.filePath(QStringLiteral("plain.def"));
    QVERIFY(document.toFile(FileSystemArchive::instance(), name, 0, nullptr));
    QCOMPARE(readFile(name), QByteArray("a   b\r\nabc d\r\n"));
    QCOMPARE(document.fileName(), name);
    QCOMPARE(document.title(), QStringLiteral("plain.def"));
    document.setOption(QStringLiteral("save_spaceToTab"), true, false, false);
    QVERIFY(document.toFile(FileSystemArchive::instance(), name, 0, nullptr));
    QCOMPARE(readFile(name), QByteArray("a\tb\r\nabc d\r\n"));

    // Read back: the text decides the codec, and the file name and saved state come back.
    TestDocument loaded;
    QVERIFY(loaded.fromFile(FileSystemArchive::instance(), name, 0, nullptr));
    QCOMPARE(loaded.toString(), QStringLiteral("a\tb\nabc d\n"));
    QCOMPARE(loaded.fileName(), name);
    QVERIFY(!loaded.isModified());
    QVERIFY(!loaded.fromFile(FileSystemArchive::instance(), dir.filePath(QStringLiteral("none")), 0, nullptr));
    QCOMPARE(loaded.toString(), QStringLiteral("a\tb\nabc d\n"));
}

void CodeDocumentTest::foreignLoadAndBackgroundSave()
{
    QTemporaryDir dir;
    const QString source = dir.filePath(QStringLiteral("source.def"));
    QVERIFY(writeFile(source, "[Stats]\r\nx = 1\r\n"));
    TestDocument document;
    QVERIFY(document.fromFile(FileSystemArchive::instance(), source, ProjectFile::Foreign, nullptr));
    QVERIFY(document.fileName().isEmpty());
    QVERIFY(document.isModified());

    const QString target = dir.filePath(QStringLiteral("target.def"));
    QVERIFY(document.toFile(FileSystemArchive::instance(), target, ProjectFile::Asynchronous, nullptr));
    // The name comes back when the background save has finished.
    QVERIFY(document.fileName().isEmpty());
    QTRY_COMPARE(document.fileName(), target);
    QVERIFY(!document.isModified());
    QCOMPARE(readFile(target), QByteArray("[Stats]\r\nx = 1\r\n"));
}

void CodeDocumentTest::ownSavesAskNothing_data()
{
    QTest::addColumn<uint>("flags");
    QTest::newRow("in the foreground") << 0u;
    QTest::newRow("in the background") << uint(ProjectFile::Asynchronous);
}

// A save replaces the file, which the system may tell of more than once, and a background
// save ends after the call: no notification of the document's own write asks the user.
void CodeDocumentTest::ownSavesAskNothing()
{
    QFETCH(uint, flags);
    QTemporaryDir dir;
    const QString name = dir.filePath(QStringLiteral("own.def"));
    QVERIFY(writeFile(name, "[Stats]\r\nx = 1\r\n"));
    ScriptedAnswerer user({QMessageBox::No});
    TestDocument document;
    QVERIFY(document.fromFile(FileSystemArchive::instance(), name, 0, nullptr));
    auto notify = [&name] {
        QVERIFY(QMetaObject::invokeMethod(FileWatcherManager::instance(), "fileChanged", Q_ARG(QString, name)));
    };
    for (const char *value : {"22", "1"}) {
        document.replaceLine(1, QStringLiteral("x = ") + QLatin1String(value));
        QVERIFY(document.toFile(FileSystemArchive::instance(), name, flags, nullptr));
        QTRY_VERIFY(!document.isModified());
        notify();
        notify();
    }
    QCOMPARE(readFile(name), QByteArray("[Stats]\r\nx = 1\r\n"));
    QVERIFY(user.prompts().isEmpty());
    // Another program's change still asks.
    QVERIFY(writeFile(name, "[Stats]\r\nx = 333\r\n"));
    notify();
    QCOMPARE(user.prompts().size(), 1);
    QCOMPARE(user.prompts().first().title, QStringLiteral("File modified"));
}

void CodeDocumentTest::savedRevisions()
{
    QTemporaryDir dir;
    TestDocument document;
    document.fromString(QStringLiteral("one\ntwo\nthree"));
    const int loaded = document.findBlockByNumber(0).revision();
    QCOMPARE(document.findBlockByNumber(2).revision(), loaded);
    document.replaceLine(1, QStringLiteral("TWO"));
    QVERIFY(document.toFile(FileSystemArchive::instance(), dir.filePath(QStringLiteral("r.def")), 0, nullptr));
    // Changed before the save: negative; untouched: the saved state.
    QVERIFY(document.findBlockByNumber(1).revision() < 0);
    const int saved = document.findBlockByNumber(0).revision();
    QVERIFY(saved >= 0);
    QCOMPARE(document.findBlockByNumber(2).revision(), saved);
    // The undo takes the line back to its loaded text: that is a change against the
    // saved file, and must not read as saved.
    document.undo();
    QCOMPARE(document.findBlockByNumber(1).text(), QStringLiteral("two"));
    QVERIFY(document.findBlockByNumber(1).revision() != saved);
    QVERIFY(document.findBlockByNumber(1).revision() >= 0);
    QCOMPARE(document.findBlockByNumber(0).revision(), saved);
    document.replaceLine(2, QStringLiteral("THREE"));
    QVERIFY(document.findBlockByNumber(2).revision() > saved);
}

void CodeDocumentTest::marks()
{
    TestDocument document;
    document.fromString(Text);
    Mark mark, stray;
    QVERIFY(!document.addMark(&mark, 0));
    QVERIFY(!document.addMark(&mark, 100));
    QVERIFY(document.addMark(&mark, 3));
    QCOMPARE(mark.line, 3);
    QCOMPARE(document.marksAt(3), QList<CodeMark *>({&mark}));
    QVERIFY(document.hasMark(&mark));
    QVERIFY(!document.hasMark(&stray));
    document.removeMark(&stray); // on no line: nothing happens
    // Deleting the line tells the mark its block is gone.
    QTextCursor cursor(document.findBlockByNumber(1));
    cursor.movePosition(QTextCursor::NextBlock, QTextCursor::KeepAnchor, 2);
    cursor.removeSelectedText();
    QVERIFY(mark.gone);
}

void CodeDocumentTest::searchAndReplace()
{
    TestDocument document;
    document.fromString(Text);
    RegExp numbers(QStringLiteral("(\\d)000"));
    QList<ProjectFile::SearchResult> all = document.search(numbers, ProjectFile::All);
    QCOMPARE(all.size(), 2);
    QCOMPARE(all.at(1).item, 2u);
    QCOMPARE(all.at(1).start, 9);
    QCOMPARE(all.at(1).captures, QStringList({"3"}));
    QTextCursor cursor(&document);
    cursor.setPosition(document.findBlockByNumber(2).position());
    document.setCursor(cursor);
    QCOMPARE(document.search(numbers, 0).first().item, 2u);
    QCOMPARE(document.search(numbers, ProjectFile::Backwards).first().item, 1u);
    cursor.setPosition(document.findBlockByNumber(4).position());
    document.setCursor(cursor);
    QVERIFY(document.search(numbers, 0).isEmpty());
    QCOMPARE(document.search(numbers, ProjectFile::Wrap).first().item, 1u);

    document.replace(all, QStringLiteral("%1 500"));
    QCOMPARE(document.findBlockByNumber(1).text(), QStringLiteral("speed = 1 500"));
    QCOMPARE(document.findBlockByNumber(2).text(), QStringLiteral("weight = 3 500"));
    document.undo(); // both replacements go at once
    QCOMPARE(document.toString(), Text);
}

void CodeDocumentTest::searchOverLineEnds_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<int>("line");
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("text");

    QTest::addRow("in one line") << "d = 3" << 2 << 0 << "d = 3";
    // A match that ends with the line end covers nothing of the next line.
    QTest::addRow("to the line end") << "b = 2\\n" << 1 << 0 << "b = 2";
    QTest::addRow("into the next line") << "2\\nd =" << 1 << 4 << "b = 2\nd =";
    QTest::addRow("over a whole line") << "1\\n[^\\n]*\\nd" << 0 << 4 << "a = 1\nb = 2\nd";
    QTest::addRow("to the end") << "3\\n\\[E\\]" << 2 << 4 << "d = 3\n[E]";
}

void CodeDocumentTest::searchOverLineEnds()
{
    QFETCH(QString, pattern);
    QFETCH(int, line);
    QFETCH(int, column);
    QFETCH(QString, text);

    TestDocument document;
    document.fromString(QStringLiteral("a = 1\nb = 2\nd = 3\n[E]"));
    RegExp expression(pattern);
    const QList<ProjectFile::SearchResult> results = document.search(expression, ProjectFile::All);
    QCOMPARE(results.size(), 1);
    QCOMPARE(int(results.first().item), line);
    QCOMPARE(results.first().start, column);
    // The line, with the following lines as far as the match covers them.
    QCOMPARE(results.first().text, text);
}

void CodeDocumentTest::searchBackwardsStopsBeforeTheCursor()
{
    TestDocument document;
    document.fromString(QStringLiteral("x1 x2 x3 x4"));
    RegExp expression(QStringLiteral("x\\d"));
    auto foundFrom = [&](int position, uint flags) {
        QTextCursor cursor(&document);
        cursor.setPosition(position);
        document.setCursor(cursor);
        const QList<ProjectFile::SearchResult> results = document.search(expression, flags | ProjectFile::Backwards);
        return results.isEmpty() ? -1 : results.first().start;
    };
    // From the edge: the offset -1 leaves out a match in the last two characters.
    QCOMPARE(foundFrom(0, ProjectFile::FromEnd), 6);
    // From the cursor, a match must start more than three characters before it.
    QCOMPARE(foundFrom(10, 0), 6);
    QCOMPARE(foundFrom(9, 0), 3);
    QCOMPARE(foundFrom(6, 0), 0);
    QCOMPARE(foundFrom(3, 0), -1);
    // Wrapping around starts again from the edge.
    QCOMPARE(foundFrom(2, ProjectFile::Wrap), 6);
}

void CodeDocumentTest::tabsExpandOnLoad()
{
    // Only with the option; then from a string and from a file alike.
    const QString tabbed = QStringLiteral("\tx\r\nabcd\tz");
    TestDocument plain;
    plain.fromString(tabbed);
    QCOMPARE(plain.toString(), QStringLiteral("\tx\nabcd\tz"));
    QTemporaryDir dir;
    const QString name = dir.filePath(QStringLiteral("tabs.def"));
    QVERIFY(writeFile(name, tabbed.toUtf8()));
    TestDocument document;
    document.setOption(QStringLiteral("open_tabToSpace"), true, false, false);
    document.fromString(tabbed);
    QCOMPARE(document.toString(), QStringLiteral("    x\nabcd    z"));
    document.fromString(QString());
    QVERIFY(document.fromFile(FileSystemArchive::instance(), name, 0, nullptr));
    QCOMPARE(document.toString(), QStringLiteral("    x\nabcd    z"));
}

void CodeDocumentTest::nodesEditTheirText()
{
    TestDocument document;
    document.fromString(Text);
    auto *data = static_cast<GroupCode *>(document.root()->childAt(0));
    QCOMPARE(data->code(), QStringLiteral("[Stats]\nspeed = 1000\nweight = 3000\n; comment\n"));
    QCOMPARE(data->values().first()->select().selectedText(), QStringLiteral("speed = 1000") + QChar::ParagraphSeparator);

    data->appendValue(QStringLiteral("guard = 2"));
    QCOMPARE(document.findBlockByNumber(3).text(), QStringLiteral("guard = 2"));
    QCOMPARE(data->valueCount(), 3u);

    // The header line alone goes; its values fall to the header above (none here).
    auto *size = static_cast<GroupCode *>(document.root()->childAt(1));
    CodeNode *width = size->values().first();
    size->remove(false);
    QCOMPARE(document.root()->childCount(), 1u);
    QCOMPARE(width->parent(), data);
    // The whole group, values and all.
    data->remove(true);
    QCOMPARE(document.root()->childCount(), 0u);
    QVERIFY(!document.toString().contains(QStringLiteral("speed")));
}

void CodeDocumentTest::linesKnowTheirFormatsParenthesesAndLevels()
{
    TestDocument document;
    document.fromString(Text + QStringLiteral("pair = (1, 2) ; note\n"));
    QList<uint> levels;
    for (int line = 0; line < 6; ++line)
        levels << static_cast<CodeBlockData *>(document.findBlockByNumber(line).userData())->foldingIndent();
    // The comment in front of [Shape] folds with what stands above it.
    QCOMPARE(levels, QList<uint>({0, 1, 1, 0, 0, 1}));

    const QTextBlock pair = document.findBlockByNumber(6);
    const auto *data = static_cast<CodeBlockData *>(pair.userData());
    QCOMPARE(data->parenthesis().size(), 2);
    QCOMPARE(data->parenthesis().at(1).type, int(CodeBlockData::Parenthesis::Closing));
    QCOMPARE(data->parenthesis().at(1).position, 12);
    QVERIFY(data->isParsed());
    // Key in type 3, comment in type 1, and the rest in no format at all. The line keeps
    // them until it is laid out: loading gives no layout formats.
    QVERIFY(pair.layout()->formats().isEmpty());
    const QVector<QTextLayout::FormatRange> ranges = shownFormats(pair);
    QCOMPARE(ranges.size(), 2);
    QCOMPARE(ranges.at(0).start, 0);
    QCOMPARE(ranges.at(0).format.foreground().color(), QColor(Qt::blue));
    QCOMPARE(ranges.at(1).start, 14);
    QCOMPARE(ranges.at(1).format.foreground().color(), QColor(Qt::gray));
    // A comment line is no content.
    QVERIFY(!static_cast<CodeBlockData *>(document.findBlockByNumber(3).userData())->isParsed());

    // An empty value is a warning, underlined in yellow; the line was laid out before, and
    // its layout takes the new formats.
    const QVector<QTextLayout::FormatRange> before = shownFormats(document.findBlockByNumber(1));
    QVERIFY(!before.isEmpty());
    QCOMPARE(before.first().format.underlineStyle(), QTextCharFormat::NoUnderline);
    document.replaceLine(1, QStringLiteral("speed ="));
    QCOMPARE(document.messages()->count(Message::Warning), 1u);
    const QTextLayout::FormatRange warned = shownFormats(document.findBlockByNumber(1)).first();
    QCOMPARE(warned.format.underlineStyle(), QTextCharFormat::SpellCheckUnderline);
    QCOMPARE(warned.format.underlineColor(), QColor(255, 255, 0));
}

void CodeDocumentTest::versionChangeRehighlightsOnce()
{
    TestDocument document;
    document.fromString(Text);
    const int calls = document.parser.calls;
    document.replaceLine(2, QStringLiteral("version = 2"));
    // The pass stops at the line that changed the version, and the whole document is
    // read once after it.
    QCOMPARE(document.version(), ushort(2));
    QCOMPARE(document.parser.calls - calls, 1 + document.blockCount());
    // The same version again is no change: the edited line and the one after it.
    document.replaceLine(2, QStringLiteral("version = 2"));
    QCOMPARE(document.parser.calls - calls, 1 + document.blockCount() + 2);
}

void CodeDocumentTest::modelIconsAndGate()
{
    TestInterface host;
    TestDocument document;
    document.fromString(QStringLiteral("[Stats]\nspeed = 1000\nname = hero\n"));
    QAbstractItemModel *model = document.model();
    const QModelIndex data = model->index(0, 0);
    auto iconOf = [&](const QModelIndex &index) {
        return host.iconName(model->data(index, Qt::DecorationRole).value<QIcon>());
    };
    QCOMPARE(iconOf(model->index(0, 0, data)), QStringLiteral("code_int"));
    QCOMPARE(iconOf(model->index(1, 0, data)), QStringLiteral("code_string"));
    QVERIFY(model->data(data, Qt::DecorationRole).value<QIcon>().isNull()); // groups have none

    // With the model switched off the tree still follows the text, but shows nothing.
    host.options.insert(QStringLiteral("modelCode"), false);
    QAbstractItemModelTester tester(model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QSignalSpy removed(model, &QAbstractItemModel::rowsRemoved);
    document.reparse();
    QCOMPARE(removed.count(), 1);
    QCOMPARE(model->rowCount(), 0);
    QCOMPARE(document.root()->childCount(), 1u);
    host.options.insert(QStringLiteral("modelCode"), true);
    document.reparse();
    QCOMPARE(model->rowCount(), 1);
}

void CodeDocumentTest::parserEdges()
{
    TestDocument document;
    // An empty document has one line, and it is read.
    document.parser.lastLine = QStringLiteral("untouched");
    document.fromString(QString());
    QCOMPARE(document.parser.lastLine, QString());
    const int calls = document.parser.calls;
    document.setParser(&document.parser); // the same parser: nothing to do
    QCOMPARE(document.parser.calls, calls);
    // Without highlighting the parser gets no syntax: no formats, no messages.
    document.fromString(QStringLiteral("nonsense\n"));
    QCOMPARE(document.messages()->count(Message::Error), 1u);
    document.setSyntaxHighlight(false);
    QCOMPARE(document.messages()->count(Message::Error), 0u);
    QVERIFY(shownFormats(document.findBlockByNumber(0)).isEmpty());
}

// Loading gives no line a layout with formats: a view still paints each line with its
// formats, which the document's layout hands over as it lays the line out.
void CodeDocumentTest::viewPaintsTheFormats()
{
    TestDocument document;
    document.fromString(QStringLiteral("pair = (1, 2) ; note\n"));
    QPlainTextEdit editor;
    QVERIFY(shown(editor, document, 120));
    // Pixels of the key, in the blue of its format.
    const auto bluePixels = [&editor] {
        const QImage shot = editor.viewport()->grab().toImage();
        int count = 0;
        for (int y = 0; y < shot.height(); ++y) {
            for (int x = 0; x < shot.width(); ++x) {
                const QColor colour = shot.pixelColor(x, y);
                count += colour.blue() > 160 && colour.red() < 90 && colour.green() < 90;
            }
        }
        return count;
    };
    QVERIFY(bluePixels() > 0);
    document.setSyntaxHighlight(false);
    QCOMPARE(bluePixels(), 0);
    document.setSyntaxHighlight(true);
    QVERIFY(bluePixels() > 0);
}

void CodeDocumentTest::editsLayOutOnlyTheirLines_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<bool>("wholeView");

    // Lines of the text: "[Stats]", "speed = 1 ; fast", "pair = (1, 2)", "jump = 4".
    QTest::newRow("a key in a line") << 16 << 16 << "2" << false;
    QTest::newRow("a key at a line's end") << 24 << 24 << "0" << false;
    QTest::newRow("a deletion in a line") << 15 << 17 << "" << false;
    QTest::newRow("a line end over a line end") << 20 << 27 << "9\n" << false;
    QTest::newRow("more over a line end") << 20 << 28 << "9\npair" << true;
    QTest::newRow("a new line") << 16 << 16 << "\nx = 1" << true;
    QTest::newRow("lines joined") << 24 << 26 << "" << true;
}

void CodeDocumentTest::editsLayOutOnlyTheirLines()
{
    QFETCH(int, from);
    QFETCH(int, to);
    QFETCH(QString, typed);
    QFETCH(bool, wholeView);

    TestDocument document;
    document.fromString(QStringLiteral("[Stats]\nspeed = 1 ; fast\npair = (1, 2)\njump = 4\n"));
    QPlainTextEdit editor;
    QVERIFY(shown(editor, document, 160));
    // A first key lays out the line with its new formats: the mark that leaves joins the
    // next edit, which is the one measured.
    QTextCursor cursor(&document);
    cursor.setPosition(from);
    cursor.insertText(QStringLiteral(" "));
    cursor.deletePreviousChar();
    QCoreApplication::processEvents();

    QSignalSpy whole(document.documentLayout(), &QAbstractTextDocumentLayout::update);
    QSignalSpy lines(document.documentLayout(), &QAbstractTextDocumentLayout::updateBlock);
    cursor.setPosition(from);
    cursor.setPosition(to, QTextCursor::KeepAnchor);
    cursor.insertText(typed);
    QCoreApplication::processEvents();
    // Every line shows its own text, laid out anew where it changed.
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        const QTextLayout *layout = block.layout();
        QVERIFY(layout->lineCount() > 0);
        int laidOut = 0;
        for (int i = 0; i < layout->lineCount(); ++i)
            laidOut += layout->lineAt(i).textLength();
        QCOMPARE(laidOut, block.length() - 1);
    }
    QCOMPARE(!whole.isEmpty(), wholeView);
    if (!wholeView)
        QVERIFY(!lines.isEmpty());
}

void CodeDocumentTest::scrollingLeavesTheNextKeyItsLine()
{
    // What the layout relies on: an edit block, once begun, has moved the revision on.
    TestDocument plain;
    const int revision = plain.revision();
    QTextCursor open(&plain);
    open.beginEditBlock();
    QVERIFY(plain.revision() != revision);
    open.endEditBlock();

    QStringList lines;
    for (int i = 0; i < 400; ++i)
        lines << QStringLiteral("value%1 = %1").arg(i);
    TestDocument document;
    document.fromString(lines.join(QLatin1Char('\n')));
    QPlainTextEdit editor;
    QVERIFY(shown(editor, document, 160));
    // Scrolled through, every line is laid out once with its formats.
    for (int value = 0; value <= editor.verticalScrollBar()->maximum(); value += 5) {
        editor.verticalScrollBar()->setValue(value);
        editor.viewport()->repaint();
        QCoreApplication::processEvents();
    }
    const int calls = document.parser.calls;
    QTextCursor cursor(document.findBlockByNumber(390));
    cursor.movePosition(QTextCursor::EndOfBlock);
    cursor.insertText(QStringLiteral("1"));
    // The key's line alone, not the lines scrolled past (all 400 of them before).
    QCOMPARE(document.parser.calls - calls, 1);
    QCOMPARE(document.findBlockByNumber(390).text(), QStringLiteral("value390 = 3901"));

    // With an edit block left open across a paint, the record waits for the edit, which is
    // parsed whole.
    editor.verticalScrollBar()->setValue(0);
    QTextCursor held(document.findBlockByNumber(2));
    held.beginEditBlock();
    held.insertText(QStringLiteral("zz"));
    editor.viewport()->repaint();
    QCoreApplication::processEvents();
    held.endEditBlock();
    QCOMPARE(document.findBlockByNumber(2).text(), QStringLiteral("zzvalue2 = 2"));
    QVERIFY(document.nodeInBlock(document.findBlockByNumber(2)));
    QCOMPARE(document.nodeInBlock(document.findBlockByNumber(2))->lineNo(), 2);
}

void CodeDocumentTest::linesReachTheParserAsTheyStand_data()
{
    QTest::addColumn<QString>("text");
    const QString lines = QStringLiteral("[Stats]\nspeed = 1 ; fast\n\npair = (1, 2)\n");
    QTest::newRow("line feeds") << lines;
    QTest::newRow("no line end at the end") << QStringLiteral("[Stats]\nspeed = 1");
    QTest::newRow("carriage returns and line feeds") << QString(lines).replace(QLatin1Char('\n'), QLatin1String("\r\n"));
    QTest::newRow("carriage returns alone") << QString(lines).replace(QLatin1Char('\n'), QLatin1Char('\r'));
    QTest::newRow("mixed, doubled") << QStringLiteral("a\r\n\r\nb\n\rc\r\r\nd\n\n");
    QTest::newRow("paragraph and line separators")
        << QStringLiteral("a = 1\u2029b = 2\u2028c\n");
    QTest::newRow("frame marks and no-break spaces")
        << QStringLiteral("a\ufdd0b\ufdd1\u00a0c\n");
    QTest::newRow("empty") << QString();
    QTest::newRow("only line ends") << QStringLiteral("\n\r\n\r");
}

// Long passes read lines out of one text rather than each from the document: every line
// still reaches the parser exactly as its block holds it.
void CodeDocumentTest::linesReachTheParserAsTheyStand()
{
    QFETCH(QString, text);
    TestDocument document;
    const int before = document.parser.calls;
    document.fromString(text);
    QCOMPARE(document.parser.wrongTexts, 0);
    QVERIFY(document.parser.calls - before >= document.blockCount());
    // A whole pass over the document as it stands, and one after an edit.
    document.reparse();
    QTextCursor(&document).insertText(QStringLiteral("x\n"));
    document.rehighlight();
    QCOMPARE(document.parser.wrongTexts, 0);
    QVERIFY(document.toString().startsWith(QLatin1String("x\n")));
}

void CodeDocumentTest::badInputSurvivesASave_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QByteArray binary(4096, Qt::Uninitialized);
    QRandomGenerator random(99);
    for (char &c : binary)
        c = char(random.bounded(256));
    QTest::newRow("not text at all") << binary;
    QTest::newRow("a line of one megabyte") << QByteArray("[Stats]\nk = ") + QByteArray(1 << 20, 'x') + "\n";
    QTest::newRow("NUL inside") << QByteArray("[Stats]\nk = a\0b\n", 14);
    QTest::newRow("an encoding nobody names") << QByteArray("\x81\x8D\x8F\x90\x9D\n");
}

void CodeDocumentTest::badInputSurvivesASave()
{
    QFETCH(QByteArray, bytes);
    QTemporaryDir dir;
    const QString name = dir.filePath(QStringLiteral("bad.def"));
    QVERIFY(writeFile(name, bytes));
    TestDocument document;
    QVERIFY(document.fromFile(FileSystemArchive::instance(), name, 0, nullptr));
    const QString text = document.toString();
    QVERIFY(document.toFile(FileSystemArchive::instance(), name, 0, nullptr));
    TestDocument again;
    int codec = document.codecId();
    QVERIFY(again.fromFile(FileSystemArchive::instance(), name, 0, nullptr));
    // Read back in the document's own codec, the text is the one that was saved.
    QFile file(name);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QString reread = TextCodecs::stringFromData(file.readAll(), &codec);
    reread.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    QCOMPARE(reread, text);
}

void CodeDocumentTest::secondBackgroundSaveWaits()
{
    ScriptedAnswerer user({QMessageBox::No});
    QTemporaryDir dir;
    TestDocument document;
    document.fromString(QStringLiteral("[Stats]\n") + QStringLiteral("k = 1\n").repeated(20000));
    const QString first = dir.filePath(QStringLiteral("first.def"));
    const QString second = dir.filePath(QStringLiteral("second.def"));
    QVERIFY(document.toFile(FileSystemArchive::instance(), first, ProjectFile::Asynchronous, nullptr));
    // The second save starts only when the first has written everything.
    QVERIFY(document.toFile(FileSystemArchive::instance(), second, ProjectFile::Asynchronous, nullptr));
    const QByteArray expected = QByteArray("[Stats]\r\n") + QByteArray("k = 1\r\n").repeated(20000);
    QTRY_COMPARE(document.fileName(), second);
    QCOMPARE(readFile(first), expected);
    QCOMPARE(readFile(second), expected);

    // The watcher's notices of both writes raise no question. They come in the order of
    // the writes, so a change to another watched file, written after them, asks only
    // once they have all been heard.
    const QString other = dir.filePath(QStringLiteral("other.def"));
    QVERIFY(writeFile(other, "[Stats]\n"));
    TestDocument watching;
    QVERIFY(watching.fromFile(FileSystemArchive::instance(), other, 0, nullptr));
    QFile append(other);
    QVERIFY(append.open(QIODevice::Append)); // one write, one notice
    append.write("k = 2\n");
    append.close();
    const auto asked = [&user](const QString &name) {
        for (const Prompt &prompt : user.prompts()) {
            if (prompt.text.contains(name))
                return true;
        }
        return false;
    };
    QTRY_VERIFY(asked(other));
    QCOMPARE(user.prompts().size(), 1);
}

void CodeDocumentTest::viewSurvivesReleasedNodes()
{
    TestDocument document;
    document.fromString(Text.repeated(20));
    TreeView view;
    view.setModel(document.model());
    view.expandAll();
    view.resize(300, 600);
    view.show();
    view.setCurrentIndex(document.model()->index(3, 0, document.model()->index(3, 0)));
    for (int round = 0; round < 10; ++round) {
        QTextCursor cursor(document.findBlockByNumber(1 + round * 3));
        cursor.movePosition(QTextCursor::NextBlock, QTextCursor::KeepAnchor, 4);
        cursor.removeSelectedText();
        view.expandAll();
        view.executeDelayedItemsLayout();
        view.viewport()->repaint();
    }
    QCOMPARE(view.model()->rowCount(), int(document.root()->childCount()));
}

void CodeDocumentTest::changeKeepsCommentAndColumns_data()
{
    QTest::addColumn<bool>("preserve");
    QTest::addColumn<QString>("line");
    QTest::newRow("with the option") << true << "weight  =  3000 ; strong";
    QTest::newRow("without") << false << "weight = 3000 ; strong";
}

void CodeDocumentTest::changeKeepsCommentAndColumns()
{
    QFETCH(bool, preserve);
    QFETCH(QString, line);
    // The comment marker comes from the engine of the project's parent.
    SemicolonEngine engine;
    MemoryArchive archive;
    Work work(archive, &engine);
    auto *document = new TestDocument;
    document->fromString(QStringLiteral("[Stats]\nspeed  =  1000 ; strong\n"));
    auto *character = new TestProject(&work, 0, document, true);
    document->setOption(QStringLiteral("preserve_code_formatting"), preserve, false, false);
    QCOMPARE(document->commentMarker(), QStringLiteral(";"));
    document->nodeInBlock(document->findBlockByNumber(1))->change(QStringLiteral("weight = 3000"));
    QCOMPARE(document->findBlockByNumber(1).text(), line);
    QCOMPARE(static_cast<TestValue *>(document->nodeInBlock(document->findBlockByNumber(1)))->source,
             QStringLiteral("3000"));
    character->release();
}

QTEST_MAIN(CodeDocumentTest)
#include "tst_codedocument.moc"
