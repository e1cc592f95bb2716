// Edits of a code document's text: the change bracket, undo, and the insertions the
// nodes make, which keep the tree current inside a bracket.

#include "code/codedocument.h"

#include "code/codedocument_p.h"
#include "code/codedocumenthelpers_p.h"

namespace Ovra {

void CodeDocument::beginChange()
{
    if (d->changeDepth++ == 0)
        d->cursor.beginEditBlock();
}

void CodeDocument::endChange()
{
    if (d->changeDepth == 0)
        return;
    if (--d->changeDepth == 0)
        d->cursor.endEditBlock();
}

void CodeDocument::undo()
{
    QTextDocument::undo();
}

void CodeDocument::redo()
{
    QTextDocument::redo();
}

bool CodeDocument::isCodeBeingChanged() const
{
    return d->changeDepth > 0;
}

QTextCursor CodeDocument::cursor() const
{
    return d->cursor;
}

void CodeDocument::setCursor(const QTextCursor &cursor)
{
    d->cursor = cursor;
}

void CodeDocument::insertCode(QTextCursor &cursor, const QString &text)
{
    const int start = cursor.selectionStart();
    const QTextBlock after = findBlock(cursor.selectionEnd()).next();
    cursor.insertText(text);
    // Inside a change bracket the parse pass comes only at its end; nodes edited in
    // between need the tree current now, without any painting.
    if (d->changeDepth == 0 || !d->parser || !optionOn(this, "parseCode"))
        return;
    for (QTextBlock block = findBlock(start); block.isValid() && block != after; block = block.next())
        d->unseenNodeChange |= d->parseNode(block, nullptr);
}

void CodeDocument::insert(const QString &text)
{
    d->cursor.movePosition(QTextCursor::End);
    insertCode(d->cursor, text);
}

void CodeDocument::insertOnCursor(const QString &text, QTextCursor cursor)
{
    insertCode(cursor, text);
}

void CodeDocument::insertAfter(CodeNode *node, const QString &text, bool nodeOnly)
{
    QTextCursor cursor(this);
    if (!node) {
        cursor.movePosition(QTextCursor::End);
        insertCode(cursor, text + QLatin1Char('\n'));
        return;
    }
    const QTextBlock block = nodeOnly ? node->block() : findBlockByNumber(node->lastLine());
    if (block.isValid())
        cursor.setPosition(block.position() + block.length() - 1);
    else
        cursor.movePosition(QTextCursor::End);
    insertCode(cursor, QLatin1Char('\n') + text);
}

void CodeDocument::insertBefore(CodeNode *node, const QString &text, bool nodeOnly)
{
    QTextCursor cursor(this);
    if (!node) {
        cursor.movePosition(QTextCursor::Start);
        insertCode(cursor, text + QLatin1Char('\n'));
        return;
    }
    const QTextBlock block = nodeOnly ? node->block() : findBlockByNumber(node->firstLine());
    const QTextBlock before = block.previous();
    if (before.isValid()) {
        cursor.setPosition(before.position() + before.length() - 1);
        insertCode(cursor, QLatin1Char('\n') + text);
    } else {
        cursor.setPosition(block.isValid() ? block.position() : 0);
        insertCode(cursor, text + QLatin1Char('\n'));
    }
}

} // namespace Ovra
