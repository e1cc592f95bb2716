// The highlighting of a code document: the formats of each line as the parser reports its
// tokens, parentheses, links, and the folding level of each line.

#include "code/codedocument.h"

#include "code/codedocument_p.h"
#include "code/codedocumenthelpers_p.h"

#include <QPlainTextDocumentLayout>
#include <QTextCursor>
#include <QTextLayout>

#include <algorithm>
#include <utility>

namespace Ovra {

void CodeDocumentPrivate::token(TokenType type, int start, int end)
{
    if (type != Comment && currentData)
        currentData->d->parsed = true;
    paintColumns(start, end, tokenFormatIndex(type));
}

int CodeDocumentPrivate::tokenFormatIndex(TokenType type)
{
    const QTextCharFormat format = CodeParserSyntax::format(type);
    if (type < 0 || type >= TokenTypeCount)
        return formatIndex(format);
    // A token type's format may change at any time: the cached one is compared, which
    // costs little while it is the same (they share their data).
    TokenFormat &cached = tokenFormats[type];
    if (cached.index < 0 || !(cached.format == format))
        cached = TokenFormat{format, formatIndex(format)};
    return cached.index;
}

void CodeDocumentPrivate::paintColumns(int start, int end, int format)
{
    start = qMax(start, 0);
    end = qMin(end, lineFormats.size());
    // A document with that many formats paints no new ones.
    if (start >= end || format < 0)
        return;
    std::fill(lineFormats.begin() + start, lineFormats.begin() + end, quint16(format));
}

void CodeDocumentPrivate::parenthesis(bool opening, QChar character, int position)
{
    if (currentData)
        lineParentheses.append(
            CodeBlockData::Parenthesis{opening ? CodeBlockData::Parenthesis::Opening
                                               : CodeBlockData::Parenthesis::Closing,
                                       character, position});
}

void CodeDocumentPrivate::link(CodeLink *link)
{
    if (currentData)
        currentData->d->madeExtras().links.append(link);
    else
        delete link;
}

void CodeDocumentPrivate::updateFoldingIndent(CodeBlockData *data)
{
    const QTextBlock block = data->d->block;
    CodeNode *node = data->d->node;
    CodeNode *previous = node ? node->previous() : previousNode(block);
    if (previous == &document->m_root)
        previous = nullptr;
    QTextBlock from = previous && previous->block().isValid() ? previous->block() : block.previous();
    const CodeBlockData *fromData = from.isValid() ? testBlockData(from) : nullptr;
    int level = previous && fromData ? int(fromData->d->foldingIndent) : 0;
    const CodeBlockData *before = block.previous().isValid() ? testBlockData(block.previous()) : nullptr;
    if (before && isHeader(before->d->node))
        ++level;
    if (isHeader(node)) {
        auto realParent = [this](const CodeNode *of) -> const CodeNode * {
            const CodeNode *up = of->parent();
            while (up && up != &document->m_root && !up->block().isValid())
                up = up->parent();
            return up ? up : &document->m_root;
        };
        const CodeNode *header = node->previous();
        while (header && !(isHeader(header) && header->block().isValid()))
            header = header->previous();
        const CodeNode *parent = realParent(node);
        if (header && header != parent) {
            --level;
            for (const CodeNode *up = realParent(header); up != parent && up != &document->m_root;
                 up = realParent(up))
                --level;
        }
    }
    data->d->foldingIndent = uint(qMax(level, 0));
    // Lines without a node right above take this level: comments in front of a header
    // fold with what stands above them.
    for (QTextBlock up = block.previous(); up.isValid(); up = up.previous()) {
        CodeBlockData *upData = testBlockData(up);
        if (upData && upData->d->node)
            break;
        blockData(up)->d->foldingIndent = data->d->foldingIndent;
    }
}

void CodeDocumentPrivate::storeFormats(const QTextBlock &block, CodeBlockData *data)
{
    // The buffer lives on from line to line: most lines allocate nothing here.
    FormatRuns &runs = lineRuns;
    runs.clear();
    const int columns = lineFormats.size();
    // Runs of one format; equal formats have one index, and the plain one is 0.
    for (int column = 0; column < columns;) {
        const quint16 format = lineFormats.at(column);
        int end = column + 1;
        while (end < columns && lineFormats.at(end) == format)
            ++end;
        if (format != 0)
            runs.append(FormatRun{column, end - column, format});
        column = end;
    }
    CodeBlockDataPrivate *part = data->d;
    if (runs == part->formats)
        return;
    part->formats = sharedRuns.share(runs);
    part->formatsPending = true;
    // A line not laid out yet gets its formats when it is; one that is must be laid out
    // again. A pass over the whole text marks it all at once when it ends.
    if (!part->laidOut || wholePass)
        return;
    // The edit's own lines are laid out again anyway, and get their formats then; a mark of
    // a whole line would only widen the change the layout sees to the line below.
    const int start = block.position();
    if (editFirst >= 0 && start <= editLast && start + block.length() > editFirst)
        return;
    // Repainting is no change of the text: the pass must not hear of it.
    const bool ignoring = ignoreContentsChange;
    ignoreContentsChange = true;
    document->markContentsDirty(block.position(), block.length());
    ignoreContentsChange = ignoring;
}

int CodeDocumentPrivate::formatIndex(const QTextCharFormat &format)
{
    if (formatTable.isEmpty())
        formatTable.append(QTextCharFormat()); // the plain format is 0
    for (int i = formatTable.size() - 1; i >= 0; --i) {
        if (formatTable.at(i) == format)
            return i;
    }
    // Columns hold the index in 16 bits.
    if (formatTable.size() == 0xFFFF)
        return -1;
    formatTable.append(format);
    return formatTable.size() - 1;
}

QVector<QTextLayout::FormatRange> CodeDocumentPrivate::formatRanges(const QTextBlock &block,
                                                                      const FormatRuns &runs) const
{
    QVector<QTextLayout::FormatRange> ranges;
    ranges.reserve(runs.size());
    for (const FormatRun &run : runs)
        ranges.append(QTextLayout::FormatRange{run.start, run.length, formatTable.value(run.format)});
    // Text being composed by an input method stays where it is: ranges behind it move on.
    const QTextLayout *layout = block.layout();
    const int preeditLength = layout->preeditAreaText().size();
    const int preeditAt = preeditLength > 0 ? layout->preeditAreaPosition() : -1;
    if (preeditAt >= 0) {
        for (QTextLayout::FormatRange &range : ranges) {
            if (range.start >= preeditAt)
                range.start += preeditLength;
            else if (range.start + range.length > preeditAt)
                range.length += preeditLength;
        }
    }
    return ranges;
}

bool CodeDocumentPrivate::handFormats(const QTextBlock &block)
{
    CodeBlockData *data = testBlockData(block);
    if (!data)
        return false;
    CodeBlockDataPrivate *part = data->d;
    part->laidOut = true;
    if (!part->formatsPending)
        return false;
    part->formatsPending = false;
    QTextLayout *layout = block.layout();
    if (part->formats.isEmpty() && layout->formats().isEmpty())
        return false;
    // This drops the layout's lines: the line is laid out anew, with its formats.
    layout->setFormats(formatRanges(block, part->formats));
    return true;
}

namespace {

class CodeDocumentLayout : public QPlainTextDocumentLayout
{
public:
    CodeDocumentLayout(QTextDocument *document, CodeDocumentPrivate *owner)
        : QPlainTextDocumentLayout(document)
        , m_owner(owner)
    {
    }

    QRectF blockBoundingRect(const QTextBlock &block) const override
    {
        if (m_held.isValid() && block == m_held) {
            // Asked once, for the size before the layout: the line's lines are gone with
            // its old formats, and asking the base would lay it out twice.
            m_held = QTextBlock();
            return m_heldRect;
        }
        if (m_owner && block.isValid() && m_owner->handFormats(block))
            noteMark(block.position());
        return QPlainTextDocumentLayout::blockBoundingRect(block);
    }

    // A line laid out with new formats is marked dirty whole, separator included, and the
    // mark joins the next edit: a keystroke then reaches the layout as the line's length
    // removed and as much added. The base counts removed plus added from the line's
    // start, ends up in the next line, and repaints everything on screen. With the line
    // count unchanged, new text that lies in one line (a separator at most at its end)
    // changed that line, and when it reaches the separator, the next one too: any removed
    // line end was put back by it. Only those lines are laid out again.
    void documentChanged(int from, int removed, int added) override
    {
        const QTextDocument *text = document();
        m_reportedRevision = text->revision();
        if (m_flushing)
            return; // the lines marked were laid out with their formats already
        const int blocks = text->blockCount();
        if (blocks == m_blockCount && from >= 0) {
            const QTextBlock line = text->findBlock(from);
            const int end = line.position() + line.length();
            if (line.isValid() && from + added <= end && isSettled(line)) {
                const QTextBlock next = line.next();
                const bool nextToo = from + added == end && next.isValid();
                if (!nextToo || isSettled(next)) {
                    layOutAgain(line);
                    if (nextToo)
                        layOutAgain(next);
                    return;
                }
            }
        }
        QPlainTextDocumentLayout::documentChanged(from, removed, added);
        m_blockCount = blocks;
    }

    // One line, laid out once with the formats it has now: the size it had is taken before
    // they drop its lines.
    void layOutAgain(const QTextBlock &block)
    {
        keepShaped(block);
        const QRectF before = QPlainTextDocumentLayout::blockBoundingRect(block);
        if (m_owner && m_owner->handFormats(block)) {
            m_held = block;
            m_heldRect = before;
        }
        QPlainTextDocumentLayout::documentChanged(block.position(), 0, 1);
        m_held = QTextBlock();
    }

    // The line being typed in keeps its shaped text from its layout to its paint and on to
    // the next key, and so do the lines next to it, whose edges a repaint of the line
    // touches when lines are not a whole number of pixels high. Other lines drop theirs once
    // painted: a long file can't keep it for every line.
    void keepShaped(const QTextBlock &block)
    {
        const QTextBlock lines[ShapedLines] = {block.previous(), block, block.next()};
        bool same = true;
        for (int i = 0; i < ShapedLines && same; ++i)
            same = m_shaped[i].isNull() ? !lines[i].isValid() : m_shaped[i].block() == lines[i];
        if (same)
            return;
        for (QTextCursor &kept : m_shaped) {
            const QTextBlock old = kept.isNull() ? QTextBlock() : kept.block();
            if (old.isValid() && std::find(lines, lines + ShapedLines, old) == lines + ShapedLines)
                old.layout()->setCacheEnabled(false);
        }
        for (int i = 0; i < ShapedLines; ++i) {
            m_shaped[i] = lines[i].isValid() ? QTextCursor(lines[i]) : QTextCursor();
            if (lines[i].isValid())
                lines[i].layout()->setCacheEnabled(true);
        }
    }

    // Handing a line its formats as it is first laid out (shown, scrolled to) records a
    // change of the document that Qt reports only with the next edit, and then as part of
    // it: the first key after scrolling would parse every line scrolled past again. So once
    // the paint is over, the record is reported on its own, and taken as what it is.
    void noteMark(int position) const
    {
        m_markFrom = m_markFrom < 0 ? position : qMin(m_markFrom, position);
        if (m_flushQueued)
            return;
        m_flushQueued = true;
        auto *self = const_cast<CodeDocumentLayout *>(this);
        QMetaObject::invokeMethod(self, [self] { self->flushMarks(); }, Qt::QueuedConnection);
    }

    void flushMarks()
    {
        m_flushQueued = false;
        const int from = std::exchange(m_markFrom, -1);
        QTextDocument *text = document();
        // An edit block begun since the document last reported (it counts a revision as
        // one begins) holds an edit still to be reported: the record goes with it then.
        if (from < 0 || !m_owner || text->revision() != m_reportedRevision)
            return;
        m_flushing = true;
        text->markContentsDirty(qMin(from, text->characterCount() - 1), 0);
        m_flushing = false;
    }

    // Shown or hidden as its lines say: a change of that is the base's to handle.
    static bool isSettled(const QTextBlock &block) { return block.isVisible() == (block.lineCount() > 0); }

    void forgetOwner() { m_owner = nullptr; }

private:
    CodeDocumentPrivate *m_owner;
    int m_blockCount = -1;
    int m_reportedRevision = -1;
    mutable int m_markFrom = -1;
    mutable bool m_flushQueued = false;
    bool m_flushing = false;
    mutable QTextBlock m_held;
    static constexpr int ShapedLines = 3;
    QTextCursor m_shaped[ShapedLines];
    QRectF m_heldRect;
};

} // namespace

QAbstractTextDocumentLayout *makeCodeDocumentLayout(QTextDocument *document, CodeDocumentPrivate *owner)
{
    return new CodeDocumentLayout(document, owner);
}

void forgetCodeDocumentLayoutOwner(QAbstractTextDocumentLayout *layout)
{
    if (auto *own = dynamic_cast<CodeDocumentLayout *>(layout))
        own->forgetOwner();
}

bool CodeDocument::hasSyntaxHighlight() const
{
    return optionOn(this, "highlightCode");
}

void CodeDocument::setSyntaxHighlight(bool enabled)
{
    if (enabled == hasSyntaxHighlight())
        return;
    setOption(QStringLiteral("highlightCode"), enabled, false, false);
    reparse();
}

void CodeDocument::setSyntaxFormat(CodeParserSyntax::TokenType type, const QTextCharFormat &format)
{
    CodeParserSyntax::setFormat(type, format);
}

} // namespace Ovra
