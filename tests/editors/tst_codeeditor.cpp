// The code editor over real documents of the sample engine, driven by keys and clicks.
#include "definitiondocument.h"

#include "code/codeblockdata.h"
#include "editors/code/codeeditor.h"
#include "foundation/filesystemarchive.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCompleter>
#include <QDir>
#include <QFile>
#include <QPainter>
#include <QScreen>
#include <QScrollBar>
#include <QSignalSpy>
#include <QStringListModel>
#include <QTemporaryDir>
#include <QTextBlock>
#include <QtTest>

using namespace Ovra;

namespace {

// Two groups; a name in brackets nested in the header's, and a list with a bracket of the
// wrong kind at its end, which the language takes for an error.
const char *const definitions =
    "# knight\n"                    // 0
    "@version 1\n"                  // 1
    "\n"                            // 2
    "[Character: knight]\n"         // 3
    "    name = \"Sir Bramble\"\n"  // 4
    "    life = 1000\n"             // 5
    "    walk = (2.4, -2.2)\n"      // 6
    "\n"                            // 7
    "[Move: (punch)]\n"             // 8
    "    damage = 40\n"             // 9
    "    pause = (8, 8)\n"          // 10
    "    reach = (10, -44, 26]\n";  // 11

uint levelOf(const QTextBlock &block)
{
    const auto *data = static_cast<const CodeBlockData *>(block.userData());
    return data ? data->foldingIndent() : 0;
}

QList<int> hiddenLines(const QTextDocument &document)
{
    QList<int> hidden;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        if (!block.isVisible())
            hidden << block.blockNumber();
    }
    return hidden;
}

// The left x of the columns of the side area, found from its width: marks, numbers, fold.
struct AreaColumns
{
    int marks;
    int fold;
    int bar;
};

AreaColumns areaColumns(const CodeEditor &editor)
{
    const int spacing = editor.fontMetrics().lineSpacing();
    const int width = editor.extraArea()->width();
    return {spacing / 2, width - spacing / 2 - 1, width - 1};
}

// The middle of a line in the side area, in its coordinates.
int lineY(CodeEditor &editor, int line)
{
    QTextCursor cursor(editor.document()->findBlockByNumber(line));
    const QRect rect = editor.cursorRect(cursor);
    return editor.viewport()->mapTo(&editor, rect.center()).y() - editor.extraArea()->y();
}

// What the screen shows at a point of a widget. Unlike grab(), which paints the widget
// afresh, this is what its paints so far have left.
QColor shownPixel(QWidget *widget, const QPoint &at)
{
    const QPoint global = widget->mapToGlobal(at);
    return widget->screen()->grabWindow(0, global.x(), global.y(), 1, 1).toImage().pixelColor(0, 0);
}

QString writeFile(const QTemporaryDir &dir, const QString &name, const QByteArray &content)
{
    const QString path = dir.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        return QString();
    return path;
}

// A bookmark of the test: it only remembers where it was put.
class TestMark : public CodeMark
{
public:
    void setLine(int line, const QTextBlock &) override { m_line = line; }
    void blockRemoved() override { m_line = -1; }
    int m_line = -1;
};

QIcon markIcon()
{
    QPixmap pixmap(16, 16);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(QColor(40, 90, 220));
    painter.setPen(Qt::NoPen);
    painter.drawEllipse(QRect(2, 2, 12, 12));
    return QIcon(pixmap);
}

const QByteArray completerXml =
    "<?xml version=\"1.0\"?>\n"
    "<completer>\n"
    "  <model prefix=\"[\"><word value=\"Move\"/><word value=\"Character\"/><word value=\"Cast\"/></model>\n"
    "  <model prefix=\"\"><word value=\"damage\"/><word value=\"defence\"/><word value=\"life\"/></model>\n"
    "</completer>\n";

} // namespace

class CodeEditorTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();

    void foldingHidesHigherLevels();
    void foldBoxClickUnfolds();
    void markColumnClick_data();
    void markColumnClick();
    void parenthesis_data();
    void parenthesis();
    void completionPopup();
    void completerBadFiles_data();
    void completerBadFiles();
    void changeBarsAfterSave();
    void otherViewUpdatesMargin();
    void currentLine_data();
    void currentLine();
    void blockAndLineHighlights();
    void screenFollowsKeys();
    void insertTogglesOverwrite();
    void dragBeyondTheViewScrolls();
    void picture();

private:
    void show();

    std::unique_ptr<DefinitionDocument> m_document;
    std::unique_ptr<CodeEditor> m_editor;
};

void CodeEditorTest::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

void CodeEditorTest::init()
{
    m_document.reset(new DefinitionDocument);
    m_document->fromString(QString::fromLatin1(definitions));
    m_editor.reset(new CodeEditor);
    m_editor->setDocument(m_document.get());
}

void CodeEditorTest::cleanup()
{
    m_editor.reset();
    m_document.reset();
}

void CodeEditorTest::show()
{
    m_editor->resize(420, 300);
    m_editor->show();
    m_editor->activateWindow();
    m_editor->setFocus();
    QVERIFY(QTest::qWaitForWindowExposed(m_editor.get()));
    QTRY_VERIFY(m_editor->hasFocus());
}

void CodeEditorTest::foldingHidesHigherLevels()
{
    show();
    // The language's levels: a group's values stand one level under its header, and the
    // blank line before a header at the header's.
    const QList<int> group{4, 5, 6};
    for (int line = 0; line < 9; ++line)
        QCOMPARE(levelOf(m_document->findBlockByNumber(line)), group.contains(line) ? 1u : 0u);
    const int shown = m_editor->displayedLineCount();
    QCOMPARE(shown, m_document->blockCount());

    const AreaColumns columns = areaColumns(*m_editor);
    QTest::mouseClick(m_editor->extraArea(), Qt::LeftButton, {}, QPoint(columns.fold, lineY(*m_editor, 3)));
    QCOMPARE(hiddenLines(*m_document), group);
    QCOMPARE(m_editor->displayedLineCount(), shown - group.size());
    QVERIFY(static_cast<CodeBlockData *>(m_document->findBlockByNumber(3).userData())->isFolded());

    // A line that opens no fold does nothing.
    QTest::mouseClick(m_editor->extraArea(), Qt::LeftButton, {}, QPoint(columns.fold, lineY(*m_editor, 9)));
    QCOMPARE(hiddenLines(*m_document), group);

    m_editor->toggleBlockVisible(m_document->findBlockByNumber(3));
    QVERIFY(hiddenLines(*m_document).isEmpty());
    QCOMPARE(m_editor->displayedLineCount(), shown);
    QVERIFY(!static_cast<CodeBlockData *>(m_document->findBlockByNumber(3).userData())->isFolded());
}

void CodeEditorTest::foldBoxClickUnfolds()
{
    show();
    m_editor->toggleBlockVisible(m_document->findBlockByNumber(8));
    QCOMPARE(hiddenLines(*m_document), (QList<int>{9, 10, 11, 12}));
    // The "..." box stands behind the header's text.
    QTextCursor end(m_document->findBlockByNumber(8));
    end.movePosition(QTextCursor::EndOfBlock);
    const QRect rect = m_editor->cursorRect(end);
    const QPoint box(rect.right() + m_editor->fontMetrics().horizontalAdvance(QStringLiteral(" ..")), rect.center().y());
    QTest::mouseMove(m_editor->viewport(), box);
    QTRY_COMPARE(m_editor->viewport()->cursor().shape(), Qt::PointingHandCursor);
    QTest::mouseClick(m_editor->viewport(), Qt::LeftButton, {}, box);
    QVERIFY(hiddenLines(*m_document).isEmpty());
}

void CodeEditorTest::markColumnClick_data()
{
    QTest::addColumn<int>("line");
    QTest::newRow("first") << 0;
    QTest::newRow("header") << 3;
    QTest::newRow("last") << 11;
}

void CodeEditorTest::markColumnClick()
{
    QFETCH(int, line);
    show();
    QSignalSpy marks(m_editor.get(), &CodeEditor::markRequested);
    const AreaColumns columns = areaColumns(*m_editor);
    QTest::mouseClick(m_editor->extraArea(), Qt::LeftButton, {}, QPoint(columns.marks, lineY(*m_editor, line)));
    QCOMPARE(marks.count(), 1);
    QCOMPARE(marks.first().first().toInt(), line + 1);
    QVERIFY(hiddenLines(*m_document).isEmpty());
}

void CodeEditorTest::parenthesis_data()
{
    QTest::addColumn<int>("line");
    QTest::addColumn<int>("column");
    QTest::addColumn<int>("result");
    QTest::addColumn<int>("from"); // columns of the pair in the line
    QTest::addColumn<int>("to");
    QTest::newRow("pair, from before the opening") << 6 << 11 << 1 << 11 << 21;
    QTest::newRow("pair, from after the closing") << 6 << 22 << 1 << 11 << 21;
    QTest::newRow("outer of nested, from after") << 8 << 15 << 1 << 0 << 14;
    QTest::newRow("inner of nested, from before") << 8 << 7 << 1 << 7 << 13;
    QTest::newRow("wrong kind, from the opening") << 11 << 12 << 2 << 12 << 24;
    QTest::newRow("wrong kind, from the closing") << 11 << 25 << 2 << 12 << 24;
    QTest::newRow("no bracket") << 5 << 6 << 0 << -1 << -1;
}

void CodeEditorTest::parenthesis()
{
    QFETCH(int, line);
    QFETCH(int, column);
    QFETCH(int, result);
    QFETCH(int, from);
    QFETCH(int, to);
    show();
    const int start = m_document->findBlockByNumber(line).position();
    // The cursor goes by keys: down to the line, then right to the column.
    QTest::keyClick(m_editor.get(), Qt::Key_Home, Qt::ControlModifier);
    for (int i = 0; i < line; ++i)
        QTest::keyClick(m_editor.get(), Qt::Key_Down);
    QTest::keyClick(m_editor.get(), Qt::Key_Home);
    if (m_editor->textCursor().positionInBlock() != 0)
        QTest::keyClick(m_editor.get(), Qt::Key_Home);
    for (int i = 0; i < column; ++i)
        QTest::keyClick(m_editor.get(), Qt::Key_Right);
    QCOMPARE(m_editor->textCursor().position(), start + column);

    const CodeEditor::SyntaxFormatting &formatting = m_editor->syntaxFormatting();
    auto withFormat = [this](const QTextCharFormat &format) {
        QList<QPair<int, int>> spans;
        for (const QTextEdit::ExtraSelection &selection : m_editor->extraSelections()) {
            if (selection.format == format)
                spans << qMakePair(selection.cursor.selectionStart(), selection.cursor.selectionEnd());
        }
        return spans;
    };
    if (result == 0) {
        // Nothing comes, also after a wait longer than the timer's.
        QTest::qWait(120);
        QCOMPARE(m_editor->parenthesisMatch(), 0);
        QVERIFY(withFormat(formatting.parenFormat).isEmpty());
        QVERIFY(withFormat(formatting.parenErrorFormat).isEmpty());
        return;
    }
    QTRY_COMPARE(m_editor->parenthesisMatch(), result);
    if (result == 1) {
        QCOMPARE(withFormat(formatting.parenFormat),
                 (QList<QPair<int, int>>{{start + from, start + from + 1}, {start + to, start + to + 1}}));
        QCOMPARE(withFormat(formatting.parenRangeFormat), (QList<QPair<int, int>>{{start + from, start + to + 1}}));
        QVERIFY(withFormat(formatting.parenErrorFormat).isEmpty());
    } else {
        QCOMPARE(withFormat(formatting.parenErrorFormat), (QList<QPair<int, int>>{{start + from, start + to + 1}}));
        QVERIFY(withFormat(formatting.parenFormat).isEmpty());
    }
    // Moving off the bracket (to the comment in the first line) takes the highlight away.
    QTest::keyClick(m_editor.get(), Qt::Key_Home, Qt::ControlModifier);
    QTRY_COMPARE(m_editor->parenthesisMatch(), 0);
    QVERIFY(withFormat(formatting.parenFormat).isEmpty());
}

void CodeEditorTest::completionPopup()
{
    QTemporaryDir dir;
    const QString path = writeFile(dir, QStringLiteral("completer.xml"), completerXml);
    QVERIFY(!path.isEmpty());
    QVERIFY(m_editor->completerFromFile(path));
    show();
    QCompleter *completer = m_editor->completer();
    QAbstractItemView *popup = completer->popup();

    QTextCursor cursor(m_document->findBlockByNumber(2)); // the empty line
    m_editor->setTextCursor(cursor);
    QTest::keyClicks(m_editor.get(), QStringLiteral("[C"));
    QTRY_VERIFY(popup->isVisible());
    auto *model = qobject_cast<QStringListModel *>(completer->model());
    QVERIFY(model);
    QCOMPARE(model->stringList(), (QStringList{QStringLiteral("Cast"), QStringLiteral("Character"), QStringLiteral("Move")}));
    QCOMPARE(completer->completionPrefix(), QStringLiteral("C"));
    QCOMPARE(completer->completionCount(), 2);
    QTest::keyClicks(m_editor.get(), QStringLiteral("h"));
    QCOMPARE(completer->completionCount(), 1);
    // A separator ends the word and the offer.
    QTest::keyClicks(m_editor.get(), QStringLiteral(":"));
    QTRY_VERIFY(!popup->isVisible());
    QCOMPARE(m_document->findBlockByNumber(2).text(), QStringLiteral("[Ch:"));

    // After a blank, the words without prefix; Return takes the chosen one.
    QTest::keyClick(m_editor.get(), Qt::Key_End);
    QTest::keyClick(m_editor.get(), Qt::Key_Return);
    QTest::keyClicks(m_editor.get(), QStringLiteral("de"));
    QTRY_VERIFY(popup->isVisible());
    QCOMPARE(qobject_cast<QStringListModel *>(completer->model())->stringList().first(), QStringLiteral("damage"));
    QCOMPARE(completer->completionCount(), 1);
    QTest::keyClick(popup, Qt::Key_Return);
    QTRY_VERIFY(!popup->isVisible());
    QCOMPARE(m_document->findBlockByNumber(3).text(), QStringLiteral("defence"));

    // A letter after a point is no word of its own.
    QTest::keyClicks(m_editor.get(), QStringLiteral(" x.d"));
    QVERIFY(!popup->isVisible());
}

void CodeEditorTest::completerBadFiles_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("not xml") << QByteArray("model prefix=\"[\" word value=\"Move\"\n\x01\x02");
    QTest::newRow("cut short") << completerXml.left(completerXml.size() / 2);
    QTest::newRow("unclosed model") << QByteArray("<completer><model prefix=\"x\"><word value=\"xylophone\"/>");
    QTest::newRow("empty") << QByteArray();
}

void CodeEditorTest::completerBadFiles()
{
    QFETCH(QByteArray, content);
    QTemporaryDir dir;
    const QString good = writeFile(dir, QStringLiteral("good.xml"), completerXml);
    const QString bad = writeFile(dir, QStringLiteral("bad.xml"), content);
    QVERIFY(!good.isEmpty());
    QVERIFY(!bad.isEmpty());
    QVERIFY(m_editor->completerFromFile(good));
    QVERIFY(!m_editor->completerFromFile(bad));
    QVERIFY(!m_editor->completerFromFile(dir.filePath(QStringLiteral("missing.xml"))));
    QVERIFY(!m_editor->completerFromFile(dir.path()));
    // The file is only read.
    QFile check(bad);
    QVERIFY(check.open(QIODevice::ReadOnly));
    QCOMPARE(check.readAll(), content);

    // The words from before stay, and the editor goes on typing and completing.
    show();
    m_editor->setTextCursor(QTextCursor(m_document->findBlockByNumber(2)));
    QTest::keyClicks(m_editor.get(), QStringLiteral("[M"));
    QTRY_VERIFY(m_editor->completer()->popup()->isVisible());
    QCOMPARE(m_editor->completer()->currentCompletion(), QStringLiteral("Move"));
    QTest::keyClick(m_editor.get(), Qt::Key_Escape);
    QCOMPARE(m_document->findBlockByNumber(2).text(), QStringLiteral("[M"));
}

void CodeEditorTest::changeBarsAfterSave()
{
    show();
    const AreaColumns columns = areaColumns(*m_editor);
    auto barAt = [&](int line) { return m_editor->extraArea()->grab().toImage().pixelColor(columns.bar, lineY(*m_editor, line)); };
    const QColor unchanged = barAt(5);
    QVERIFY(unchanged != QColor(Qt::red) && unchanged != QColor(Qt::darkGreen));

    m_editor->setTextCursor(QTextCursor(m_document->findBlockByNumber(5)));
    QTest::keyClick(m_editor.get(), Qt::Key_End);
    QTest::keyClicks(m_editor.get(), QStringLiteral("0"));
    QCOMPARE(m_document->findBlockByNumber(5).text(), QStringLiteral("    life = 10000"));
    QCOMPARE(barAt(5), QColor(Qt::red));
    QCOMPARE(barAt(4), unchanged);

    QTemporaryDir dir;
    const QString name = dir.filePath(QStringLiteral("knight.def"));
    QVERIFY(m_document->toFile(FileSystemArchive::instance(), name, 0, nullptr));
    QVERIFY(!m_document->isModified());
    QCOMPARE(barAt(5), QColor(Qt::darkGreen));
    QCOMPARE(barAt(4), unchanged);

    // A new edit of the saved line is unsaved again.
    QTest::keyClicks(m_editor.get(), QStringLiteral("1"));
    QCOMPARE(barAt(5), QColor(Qt::red));

    // Switched off, no bars.
    CodeEditor::SyntaxFormatting formatting = m_editor->syntaxFormatting();
    formatting.changeBars = false;
    m_editor->setSyntaxFormatting(formatting);
    QVERIFY(barAt(5) != QColor(Qt::red));
}

void CodeEditorTest::otherViewUpdatesMargin()
{
    show();
    const int before = m_editor->extraArea()->width();
    QCOMPARE(m_editor->viewport()->x(), before);
    // Another view of the same document adds lines: the line numbers need a digit more.
    QPlainTextEdit other;
    other.setDocument(m_document.get());
    QTextCursor cursor(m_document.get());
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(QString(120, QLatin1Char('\n')));
    QVERIFY(m_document->blockCount() >= 100);
    const int wider = m_editor->extraArea()->width();
    QCOMPARE(wider - before, m_editor->extraArea()->fontMetrics().horizontalAdvance(QLatin1Char('9')));
    QCOMPARE(m_editor->viewport()->x(), wider);

    // And fewer lines make it narrow again.
    cursor.movePosition(QTextCursor::PreviousCharacter, QTextCursor::KeepAnchor, 120);
    cursor.removeSelectedText();
    QCOMPARE(m_editor->extraArea()->width(), before);
}

void CodeEditorTest::currentLine_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("line");
    QTest::newRow("visible, below") << int(CodeEditor::Visible) << 150;
    QTest::newRow("visible, shown") << int(CodeEditor::Visible) << 3;
    QTest::newRow("top, below") << int(CodeEditor::Top) << 150;
    QTest::newRow("middle, below") << int(CodeEditor::Middle) << 150;
    QTest::newRow("top, near the end") << int(CodeEditor::Top) << 199;
}

void CodeEditorTest::currentLine()
{
    QFETCH(int, type);
    QFETCH(int, line);
    QString text;
    for (int i = 0; i < 200; ++i)
        text += QStringLiteral("[Move: m%1]\n").arg(i);
    m_document->fromString(text);
    show();
    m_editor->setCurrentLine(0, CodeEditor::Top);
    QCOMPARE(m_editor->currentLine().scroll, 0);
    QSignalSpy lines(m_editor.get(), &CodeEditor::currentLineChanged);
    m_editor->setCurrentLine(uint(line), CodeEditor::LineType(type));
    QCOMPARE(m_editor->textCursor().blockNumber(), line);
    QCOMPARE(lines.last().first().toInt(), line);
    const int shown = m_editor->viewport()->height() / m_editor->fontMetrics().height();
    const int first = m_editor->currentLine().scroll;
    QVERIFY2(line >= first && line < first + shown, qPrintable(QStringLiteral("%1 in %2").arg(line).arg(first)));
    const int maximum = m_editor->verticalScrollBar()->maximum();
    switch (type) {
    case CodeEditor::Visible:
        QCOMPARE(first, qMax(0, line - shown + 1));
        break;
    case CodeEditor::Top:
        QCOMPARE(first, qMin(line, maximum));
        break;
    default:
        QVERIFY(qAbs(first - (line - shown / 2)) <= 1);
    }
    // From further down, back up: the line comes to the top or the middle, or just into view.
    m_editor->setCurrentLine(190, CodeEditor::Top);
    m_editor->setCurrentLine(40, CodeEditor::LineType(type));
    const int again = m_editor->currentLine().scroll;
    if (type == CodeEditor::Middle)
        QVERIFY(qAbs(again - (40 - shown / 2)) <= 1);
    else
        QCOMPARE(again, 40);

    // The position round trip that a view switch uses.
    const CodeEditor::LinePos position = m_editor->currentLine();
    m_editor->setCurrentLine(0, CodeEditor::Top);
    m_editor->setCurrentLine(position);
    QCOMPARE(m_editor->currentLine().line, position.line);
    QCOMPARE(m_editor->currentLine().scroll, position.scroll);
}

void CodeEditorTest::blockAndLineHighlights()
{
    const QColor range(0, 200, 0);
    CodeEditor::SyntaxFormatting formatting = m_editor->syntaxFormatting();
    formatting.blockRangeColor = range;
    formatting.lineColor = QColor(250, 250, 0);
    m_editor->setSyntaxFormatting(formatting);
    show();
    auto textPixel = [this](int line) {
        const int x = m_editor->viewport()->width() - 3;
        const int y = m_editor->cursorRect(QTextCursor(m_document->findBlockByNumber(line))).center().y();
        return m_editor->viewport()->grab().toImage().pixelColor(x, y);
    };
    // The cursor in a value of the second group: the group is one range, after a pause.
    QTest::mouseClick(m_editor->viewport(), Qt::LeftButton, {},
                      m_editor->cursorRect(QTextCursor(m_document->findBlockByNumber(10))).center());
    QCOMPARE(m_editor->textCursor().blockNumber(), 10);
    QCOMPARE(textPixel(10), formatting.lineColor);
    QTRY_COMPARE(textPixel(9), range);
    QCOMPARE(textPixel(8), range);
    QCOMPARE(textPixel(12), range);
    QVERIFY(textPixel(5) != range);
    QVERIFY(textPixel(7) != range);

    // A header line stands for the group it opens.
    QTest::keyClick(m_editor.get(), Qt::Key_Home, Qt::ControlModifier);
    for (int i = 0; i < 3; ++i)
        QTest::keyClick(m_editor.get(), Qt::Key_Down);
    QTRY_COMPARE(textPixel(5), range);
    QVERIFY(textPixel(9) != range);

    // Hovering a fold handle marks its fold in the side area, after a moment.
    const AreaColumns columns = areaColumns(*m_editor);
    auto foldPixel = [&](int line) { return m_editor->extraArea()->grab().toImage().pixelColor(columns.fold - 6, lineY(*m_editor, line)); };
    const QColor before = foldPixel(10);
    QTest::mouseMove(m_editor->extraArea(), QPoint(columns.fold, lineY(*m_editor, 8)));
    QTRY_VERIFY(foldPixel(10) != before);
    QVERIFY(foldPixel(10).value() < range.value());
    QCOMPARE(foldPixel(2), foldPixel(7));

    // A marked line keeps its mark in the side area when the cursor goes elsewhere.
    auto markPixel = [&](int line) { return m_editor->extraArea()->grab().toImage().pixelColor(columns.marks, lineY(*m_editor, line)); };
    const QColor unmarked = markPixel(5);
    m_editor->markCurrentLine(true);
    QCOMPARE(markPixel(3), m_editor->palette().color(QPalette::Highlight));
    QTest::keyClick(m_editor.get(), Qt::Key_Down);
    QCOMPARE(markPixel(3), m_editor->palette().color(QPalette::Highlight));
    m_editor->markCurrentLine(false);
    QCOMPARE(markPixel(3), unmarked);
}

// Keys repaint only what they change: what the screen shows of the side area and of the
// current line's band must still follow them.
void CodeEditorTest::screenFollowsKeys()
{
    CodeEditor::SyntaxFormatting formatting = m_editor->syntaxFormatting();
    formatting.lineColor = QColor(250, 250, 0);
    // Nothing else repaints the view while the cursor rests.
    formatting.highlightBlocks = false;
    formatting.parenMatching = false;
    m_editor->setSyntaxFormatting(formatting);
    show();
    const AreaColumns columns = areaColumns(*m_editor);
    QWidget *area = m_editor->extraArea();
    auto barShown = [&](int line) { return shownPixel(area, QPoint(columns.bar, lineY(*m_editor, line))); };
    auto bandShown = [&](int line) {
        const int y = m_editor->cursorRect(QTextCursor(m_document->findBlockByNumber(line))).center().y();
        return shownPixel(m_editor->viewport(), QPoint(m_editor->viewport()->width() - 3, y));
    };
    m_editor->setTextCursor(QTextCursor(m_document->findBlockByNumber(5)));
    QTRY_COMPARE(bandShown(5), formatting.lineColor);
    const QColor unchanged = barShown(5);
    QVERIFY(unchanged != QColor(Qt::red));
    QCOMPARE(barShown(4), unchanged);

    // The first key changes the line's bar; the ones after it leave it as it is.
    QTest::keyClick(m_editor.get(), Qt::Key_End);
    QTest::keyClicks(m_editor.get(), QStringLiteral("0"));
    QTRY_COMPARE(barShown(5), QColor(Qt::red));
    QTest::keyClicks(m_editor.get(), QStringLiteral("12"));
    QTest::keyClick(m_editor.get(), Qt::Key_Backspace);
    QCOMPARE(m_document->findBlockByNumber(5).text(), QStringLiteral("    life = 100001"));
    QTRY_COMPARE(m_editor->extraArea()->grab().toImage().pixelColor(columns.bar, lineY(*m_editor, 5)), QColor(Qt::red));
    QCOMPARE(barShown(5), QColor(Qt::red));
    QCOMPARE(barShown(4), unchanged);
    QCOMPARE(barShown(6), unchanged);

    // The band goes with the cursor to the next line and off the one it left; a line typed
    // in there gets its bar too.
    QTest::keyClick(m_editor.get(), Qt::Key_Down);
    QCOMPARE(m_editor->textCursor().blockNumber(), 6);
    QTRY_COMPARE(bandShown(6), formatting.lineColor);
    QTRY_VERIFY(bandShown(5) != formatting.lineColor);
    // So too when the cursor is put elsewhere, and back.
    m_editor->setTextCursor(QTextCursor(m_document->findBlockByNumber(2)));
    QTRY_COMPARE(bandShown(2), formatting.lineColor);
    QTRY_VERIFY(bandShown(6) != formatting.lineColor);
    m_editor->setTextCursor(QTextCursor(m_document->findBlockByNumber(6)));
    QTest::keyClick(m_editor.get(), Qt::Key_End);
    QTRY_COMPARE(bandShown(6), formatting.lineColor);
    QTRY_VERIFY(bandShown(2) != formatting.lineColor);
    QTest::keyClicks(m_editor.get(), QStringLiteral("x"));
    QTRY_COMPARE(barShown(6), QColor(Qt::red));
    QCOMPARE(barShown(7), unchanged);

    // Undone to the saved text, the lines lose their bars on screen as well.
    m_editor->undo();
    m_editor->undo();
    m_editor->undo();
    m_editor->undo();
    m_editor->undo();
    m_editor->undo();
    QTRY_COMPARE(barShown(6), unchanged);
}

void CodeEditorTest::insertTogglesOverwrite()
{
    show();
    m_editor->setTextCursor(QTextCursor(m_document->findBlockByNumber(5)));
    QTest::keyClick(m_editor.get(), Qt::Key_Insert);
    QVERIFY(m_editor->overwriteMode());
    QTest::keyClicks(m_editor.get(), QStringLiteral("  "));
    QCOMPARE(m_document->findBlockByNumber(5).text(), QStringLiteral("    life = 1000"));
    QTest::keyClicks(m_editor.get(), QStringLiteral("  x"));
    QCOMPARE(m_document->findBlockByNumber(5).text(), QStringLiteral("    xife = 1000"));
    QTest::keyClick(m_editor.get(), Qt::Key_Insert);
    QVERIFY(!m_editor->overwriteMode());
    QTest::keyClicks(m_editor.get(), QStringLiteral("y"));
    QCOMPARE(m_document->findBlockByNumber(5).text(), QStringLiteral("    xyife = 1000"));
}

void CodeEditorTest::dragBeyondTheViewScrolls()
{
    QString text;
    for (int i = 0; i < 200; ++i)
        text += QStringLiteral("[Move: m%1]\n").arg(i);
    m_document->fromString(text);
    show();
    m_editor->setCurrentLine(0, CodeEditor::Top);
    QWidget *view = m_editor->viewport();
    const QPoint start = m_editor->cursorRect(QTextCursor(m_document->findBlockByNumber(1))).center();
    const QPoint below(start.x(), view->height() + 30);
    // The screen's pointer waits outside the window, where the drag goes, so that no move
    // of its own comes in between.
    QCursor::setPos(view->mapToGlobal(below));
    QTRY_VERIFY(!view->underMouse());
    QTest::mousePress(view, Qt::LeftButton, {}, start);
    QCOMPARE(view->cursor().shape(), Qt::IBeamCursor);
    // The button held below the bottom edge: the view runs on and the selection with it.
    QMouseEvent move(QEvent::MouseMove, below, view->mapToGlobal(below), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view, &move);
    QTRY_VERIFY(m_editor->verticalScrollBar()->value() > 20);
    QTRY_VERIFY(m_editor->textCursor().blockNumber() > 30);
    QCOMPARE(m_editor->textCursor().anchor(), m_document->findBlockByNumber(1).position());
    QTest::mouseRelease(view, Qt::LeftButton, {}, QPoint(start.x(), view->height() - 2));
    const int stopped = m_editor->verticalScrollBar()->value();
    // Typing hides the mouse pointer over the text; a move brings it back.
    QTest::keyClick(m_editor.get(), Qt::Key_Right);
    QCOMPARE(view->cursor().shape(), Qt::BlankCursor);
    QTest::mouseMove(view, start);
    QTRY_COMPARE(view->cursor().shape(), Qt::IBeamCursor);
    QVERIFY(m_editor->verticalScrollBar()->value() >= stopped);
}

// A picture of the editor with a fold, a pair of brackets and changed lines, to look at.
void CodeEditorTest::picture()
{
    CodeEditor::SyntaxFormatting formatting = m_editor->syntaxFormatting();
    formatting.lineColor = QColor(255, 255, 200);
    m_editor->setSyntaxFormatting(formatting);
    QFont font(QStringLiteral("Monospace"));
    font.setPointSize(10);
    m_editor->setFont(font);
    CodeEditor::setLineMarkIcon(markIcon());
    TestMark mark;
    QVERIFY(m_document->addMark(&mark, 2));
    show();
    const AreaColumns columns = areaColumns(*m_editor);
    QCOMPARE(m_editor->extraArea()->grab().toImage().pixelColor(columns.marks, lineY(*m_editor, 1)), QColor(40, 90, 220));
    m_editor->setTextCursor(QTextCursor(m_document->findBlockByNumber(7)));
    m_editor->markCurrentLine(true);
    m_editor->toggleBlockVisible(m_document->findBlockByNumber(3));
    m_editor->setTextCursor(QTextCursor(m_document->findBlockByNumber(9)));
    QTest::keyClick(m_editor.get(), Qt::Key_End);
    QTest::keyClicks(m_editor.get(), QStringLiteral("0"));
    QTemporaryDir dir;
    QVERIFY(m_document->toFile(FileSystemArchive::instance(), dir.filePath(QStringLiteral("k.def")), 0, nullptr));
    m_editor->setTextCursor(QTextCursor(m_document->findBlockByNumber(10)));
    QTest::keyClick(m_editor.get(), Qt::Key_End);
    QTest::keyClicks(m_editor.get(), QStringLiteral(" "));
    QTest::keyClick(m_editor.get(), Qt::Key_Backspace);
    QTRY_COMPARE(m_editor->parenthesisMatch(), 1);
    const QString path = QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("codeeditor.png"));
    QVERIFY(m_editor->grab().save(path));
    QVERIFY(QFile::exists(path));
    m_document->removeMark(&mark);
    CodeEditor::setLineMarkIcon(QIcon());
}

QTEST_MAIN(CodeEditorTest)
#include "tst_codeeditor.moc"
