// The parse driver of a code document: a pass over the lines an edit touched, and on
// while the states the lines leave change.

#include "code/codedocument.h"

#include "code/codedocument_p.h"
#include "code/codedocumenthelpers_p.h"
#include "code/groupcode.h"

#include <algorithm>
#include <utility>

namespace Ovra {

namespace {

// The state a line leaves for the next: the header it belongs to, or what the line
// before left.
int lineState(const QTextBlock &block, const CodeNode *node)
{
    auto headerState = [](const CodeNode *header) -> int {
        if (header->type() == CodeNode::Animation)
            return 0x40000000;
        return int(static_cast<const GroupCode *>(header)->subType());
    };
    if (node) {
        if (node->type() == CodeNode::Group || node->type() == CodeNode::Animation)
            return headerState(node);
        if (const CodeNode *group = node->previous(CodeNode::Group, -11))
            return headerState(group);
        if (const CodeNode *animation = node->previous(CodeNode::Animation, -11))
            return headerState(animation);
    }
    const QTextBlock before = block.previous();
    return before.isValid() ? before.userState() : -1;
}

} // namespace

void CodeDocumentPrivate::contentsChange(int position, int removed, int added)
{
    if (ignoreContentsChange)
        return;
    const int outerFirst = std::exchange(editFirst, position);
    const int outerLast = std::exchange(editLast, position + qMax(added - 1, 0));
    parsePass(position, removed, added);
    editFirst = outerFirst;
    editLast = outerLast;
}

void CodeDocumentPrivate::parsePass(int position, int removed, int added)
{
    QTextBlock block = document->findBlock(position);
    if (!block.isValid())
        return;
    ++notifyLock;
    const bool outerParsing = parsing;
    parsing = true;
    const bool highlight = document->hasSyntaxHighlight();
    // Lines that contradict each other (two version lines of different numbers) set the
    // file's settings back and forth in every pass. The first whole pass stops at a change
    // of them, as any pass does, for the next to start afresh; a whole pass run for such a
    // change goes on to the end, and when it ends with the settings as it found them, the
    // text has settled and no further pass is asked for.
    const bool runToEnd = wholePassDepth > 1;
    const ushort versionBefore = document->m_root.version();
    const short fileTypeBefore = document->m_root.fileType();

    QTextBlock last = document->findBlock(position + added + (removed > 0 ? 1 : 0));
    if (!last.isValid())
        last = document->lastBlock();
    // Lines are told apart from `last` by identity: a line's position is a search of the
    // document's tree, too dear to ask on every line of a long file.
    bool afterLast = false;

    // The state of a line below a header depends on the run of headers directly behind
    // its node, so after a line that is or was a header, or that gained or lost its node,
    // the pass goes on to the next line with a node other than a header, even where no
    // state changed on the way; so too after nodes changed unseen.
    bool stateChanged = false;
    bool headerBehind = false;
    bool unseen = std::exchange(unseenNodeChange, false);
    // A pass over the whole text reads the lines from the text being loaded, or else from
    // one copy of the document's.
    const PassText outerText = std::exchange(passText, PassText());
    if (block == document->begin() && (wholePass || last == document->lastBlock())) {
        const QString text = loadingText.isNull() ? document->toRawText() : loadingText;
        QTextCursor end(document);
        end.movePosition(QTextCursor::End);
        const int endPosition = end.position();
        passText = PassText{text, 0, std::move(end), endPosition, block, QString()};
    }
    while (block.isValid() && (!afterLast || stateChanged || headerBehind || unseen)) {
        const int before = block.userState();
        const CodeBlockData *data = testBlockData(block);
        const CodeNode *was = data ? data->d->node : nullptr;
        const bool wasHeader = isHeader(was);
        parseLine(block, highlight);
        if (reparsePending || (rehighlightPending && !runToEnd))
            break;
        const QTextBlock following = block.next();
        const CodeBlockData *below = testBlockData(following);
        stateChanged = below ? below->d->stateBefore != block.userState() : block.userState() != before;
        const CodeBlockData *parsed = testBlockData(block);
        const CodeNode *now = parsed ? parsed->d->node : nullptr;
        if (was || now)
            headerBehind = wasHeader || isHeader(now) || !was || !now;
        // Where in the range unseen changes were is not known: only a line behind it ends them.
        if (unseen && afterLast && now && !isHeader(now))
            unseen = false;
        afterLast = afterLast || block == last;
        passText.advance(block, following);
        block = following;
    }
    passText = outerText;
    lineFormats.clear();
    parsing = outerParsing;
    if (rehighlightPending && runToEnd && document->m_root.version() == versionBefore
        && document->m_root.fileType() == fileTypeBefore)
        rehighlightPending = false;

    finishPass(outerParsing);
}

void CodeDocumentPrivate::finishPass(bool outerParsing)
{
    if (reparsePending) {
        reparsePending = false;
        document->reparse();
    } else if (rehighlightPending) {
        if (!outerParsing) {
            rehighlightPending = false;
            freezeModel();
            wholeDocumentPass();
            unfreezeModel();
        }
    } else {
        document->codeUpdated();
    }
    if (--notifyLock == 0)
        notifyUpdate();
}

void CodeDocumentPrivate::wholeDocumentPass()
{
    // One insertion of the whole text, run directly: the edit block makes the repaints
    // of the pass one layout update.
    QTextCursor all(document);
    const bool ignoring = ignoreContentsChange;
    ignoreContentsChange = true;
    ++wholePassDepth;
    all.beginEditBlock();
    const bool outerWholePass = std::exchange(wholePass, true);
    parsePass(all.position(), 0, document->characterCount() - all.position());
    wholePass = outerWholePass;
    if (!wholePass)
        document->markContentsDirty(0, document->characterCount());
    all.endEditBlock();
    --wholePassDepth;
    ignoreContentsChange = ignoring;
}

CodeNode *CodeDocumentPrivate::previousNode(const QTextBlock &block) const
{
    for (QTextBlock above = block.previous(); above.isValid(); above = above.previous()) {
        if (const CodeBlockData *data = testBlockData(above)) {
            if (data->d->node)
                return data->d->node;
        }
    }
    // No line above has a node: implicit nodes right behind the root come first.
    CodeNode *node = &document->m_root;
    while (node->next() && !node->next()->block().isValid())
        node = node->next();
    return node;
}

bool CodeDocumentPrivate::parseNode(const QTextBlock &block, CodeParserSyntax *syntax)
{
    CodeBlockData *data = blockData(block);
    CodeNode *old = data->d->node;
    CodeNode *previous = previousNode(block);
    if (old)
        CodeDocumentPrivate::unlinkNode(old);
    if (!previous || previous == old)
        previous = &document->m_root;
    // A copy of its own: a pass the parser sets off inside its call has a text of its own.
    const QString text = passText.line(block);
    CodeNode *node = parser->parse(text, block, old, previous, &document->m_root, syntax);
    data->d->node = node;
    if (old && node != old) {
        // The old node keeps its links to its neighbours: a header that ends finds the
        // lines that followed it through them.
        old->release();
    } else if (old) {
        CodeDocumentPrivate::relinkNode(old);
    }
    return node != old;
}

namespace {

// The characters that end a line when text is put into a document.
bool endsLine(QChar c)
{
    return c == QLatin1Char('\n') || c == QLatin1Char('\r') || c == QChar::ParagraphSeparator
        || c == QChar(0xFDD0) || c == QChar(0xFDD1);
}

} // namespace

int CodeDocumentPrivate::PassText::lineEnd(const QTextBlock &block) const
{
    // Only while the pass is at this line: its text starts where the one before it ended,
    // and a line end follows it.
    if (at < 0 || block != next)
        return -1;
    const int lineEnd = at + block.length() - 1;
    if (lineEnd > text.size() || (lineEnd < text.size() ? !endsLine(text.at(lineEnd)) : block.next().isValid()))
        return -1;
    return lineEnd;
}

QString CodeDocumentPrivate::PassText::line(const QTextBlock &block)
{
    const int lineEnd = this->lineEnd(block);
    if (lineEnd < 0)
        return block.text();
    const int length = lineEnd - at;
    lineBuffer.resize(length);
    std::copy_n(text.constData() + at, length, lineBuffer.data());
    return lineBuffer;
}

void CodeDocumentPrivate::PassText::advance(const QTextBlock &block, const QTextBlock &following)
{
    // A document changed while the line was parsed no longer matches the text.
    const int lineEnd = this->lineEnd(block);
    if (lineEnd < 0 || end.isNull() || end.position() != endPosition) {
        at = -1;
        return;
    }
    // "\r\n" is one line end; the last line has none.
    const bool pair = lineEnd + 1 < text.size() && text.at(lineEnd) == QLatin1Char('\r') && text.at(lineEnd + 1) == QLatin1Char('\n');
    at = lineEnd + (pair ? 2 : 1);
    next = following;
}

void CodeDocumentPrivate::unlinkNode(CodeNode *node)
{
    node->unlink();
}

void CodeDocumentPrivate::relinkNode(CodeNode *node)
{
    node->linkBack();
}

void CodeDocumentPrivate::parseLine(const QTextBlock &block, bool highlight)
{
    currentBlock = block;
    lineFormats.fill(0, qMax(block.length() - 1, 0));
    if (!parser)
        return;
    currentData = blockData(block);
    int row = removeLineMessages(currentData);
    lineParentheses.clear();
    currentData->d->parsed = false;
    QTextBlock(block).setUserState(0);

    parseNode(block, highlight ? this : nullptr);
    QTextBlock(block).setUserState(lineState(block, currentData->d->node));
    const QTextBlock above = block.previous();
    currentData->d->stateBefore = above.isValid() ? above.userState() : -1;

    if (!pendingMessages.isEmpty()) {
        CodeBlockData *above = nullptr;
        for (QTextBlock up = block.previous(); up.isValid() && !above; up = up.previous()) {
            CodeBlockData *data = testBlockData(up);
            if (data && !data->d->syntaxMessages.isEmpty())
                above = data;
        }
        // A line that had no messages stood in no place of the list: its new ones are
        // announced behind all listed ones.
        if (row < 0)
            row = listedMessages;
        beginInsertRows(QModelIndex(), row, row + pendingMessages.size() - 1);
        listedMessages += pendingMessages.size();
        currentData->d->syntaxMessages.swap(pendingMessages);
        pendingMessages.clear();
        if (above) {
            currentData->d->nextWithMessages = above->d->nextWithMessages;
            above->d->nextWithMessages = currentData;
        } else {
            currentData->d->nextWithMessages = firstMessageBlock;
            firstMessageBlock = currentData;
        }
        endInsertRows();
    }
    currentData->d->parenthesis = sharedParentheses.share(lineParentheses);
    updateFoldingIndent(currentData);
    storeFormats(block, currentData);
    currentData = nullptr;
}

void CodeDocument::reparse()
{
    if (d->parsing) {
        d->reparsePending = true;
        return;
    }
    d->freezeModel();
    for (QTextBlock block = begin(); block.isValid(); block = block.next()) {
        if (CodeBlockData *data = CodeDocumentPrivate::testBlockData(block)) {
            if (CodeNode *node = data->d->node) {
                data->d->node = nullptr;
                node->release();
            }
        }
    }
    ++d->notifyLock;
    d->wholeDocumentPass();
    if (--d->notifyLock == 0)
        d->notifyUpdate();
    d->modelEnabled = optionOn(this, "modelCode");
    d->unfreezeModel();
}

void CodeDocument::rehighlight()
{
    if (d->parsing) {
        d->rehighlightPending = true;
        return;
    }
    d->freezeModel();
    d->wholeDocumentPass();
    d->unfreezeModel();
}

} // namespace Ovra
