#include "editors/code/codeeditor.h"
#include "editors/code/codeeditor_p.h"

#include "code/codedocument.h"

#include <QCompleter>
#include <QScrollBar>
#include <QTextBlock>

// A first cut: the document, the cursor's place and the signals. Folding, the side area,
// block highlight, parenthesis matching and completion come with the full editor.

namespace Ovra {

CodeEditorPrivate::CodeEditorPrivate(CodeEditor *editor)
    : QObject(editor)
    , q(editor)
{
}

CodeEditor::CodeEditor(QWidget *parent)
    : QPlainTextEdit(parent)
    , d(new CodeEditorPrivate(this))
{
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setFrameStyle(0);
    connect(this, &QPlainTextEdit::cursorPositionChanged, this, [this] {
        const QTextCursor cursor = textCursor();
        emit currentLineChanged(cursor.blockNumber());
        emit cursorChanged(QPoint(cursor.positionInBlock(), cursor.blockNumber()));
    });
}

CodeEditor::~CodeEditor() = default;

CodeDocument *CodeEditor::codeDocument() const
{
    return qobject_cast<CodeDocument *>(document());
}

void CodeEditor::setDocument(CodeDocument *document)
{
    QPlainTextEdit::setDocument(document);
}

void CodeEditor::setFont(const QFont &font)
{
    QPlainTextEdit::setFont(font);
}

const CodeEditor::SyntaxFormatting &CodeEditor::syntaxFormatting() const
{
    return d->formatting;
}

void CodeEditor::setSyntaxFormatting(const SyntaxFormatting &formatting)
{
    d->formatting = formatting;
    viewport()->update();
}

bool CodeEditor::completerFromFile(const QString &)
{
    return false;
}

QCompleter *CodeEditor::completer() const
{
    return nullptr;
}

CodeEditor::LinePos CodeEditor::currentLine() const
{
    const QTextCursor cursor = textCursor();
    return {cursor.blockNumber(), cursor.positionInBlock(), verticalScrollBar()->value()};
}

void CodeEditor::setCurrentLine(const LinePos &position)
{
    QTextBlock block = document()->findBlockByNumber(position.line);
    if (!block.isValid())
        return;
    QTextCursor cursor(block);
    cursor.setPosition(block.position() + qMin(position.column, block.length() - 1));
    setTextCursor(cursor);
    verticalScrollBar()->setValue(position.scroll);
}

void CodeEditor::setCurrentLine(uint line, LineType)
{
    const QTextBlock block = document()->findBlockByNumber(int(line));
    if (!block.isValid())
        return;
    setTextCursor(QTextCursor(block));
    ensureCursorVisible();
}

int CodeEditor::displayedLineCount() const
{
    return document()->blockCount();
}

void CodeEditor::markCurrentLine(bool)
{
}

void CodeEditor::toggleBlockVisible(const QTextBlock &)
{
}

void CodeEditor::updateBlockHighlight()
{
}

void CodeEditor::setLineMarkIcon(const QIcon &)
{
}

bool CodeEditor::event(QEvent *event)
{
    return QPlainTextEdit::event(event);
}

void CodeEditor::keyPressEvent(QKeyEvent *event)
{
    QPlainTextEdit::keyPressEvent(event);
}

void CodeEditor::paintEvent(QPaintEvent *event)
{
    QPlainTextEdit::paintEvent(event);
}

void CodeEditor::resizeEvent(QResizeEvent *event)
{
    QPlainTextEdit::resizeEvent(event);
}

void CodeEditor::mousePressEvent(QMouseEvent *event)
{
    QPlainTextEdit::mousePressEvent(event);
}

void CodeEditor::mouseMoveEvent(QMouseEvent *event)
{
    QPlainTextEdit::mouseMoveEvent(event);
}

void CodeEditor::mouseReleaseEvent(QMouseEvent *event)
{
    QPlainTextEdit::mouseReleaseEvent(event);
}

void CodeEditor::timerEvent(QTimerEvent *event)
{
    QPlainTextEdit::timerEvent(event);
}

void CodeEditor::focusInEvent(QFocusEvent *event)
{
    QPlainTextEdit::focusInEvent(event);
}

void CodeEditor::changeEvent(QEvent *event)
{
    QPlainTextEdit::changeEvent(event);
}

} // namespace Ovra
