// The highlighting of a code document: the formats of each line as the parser reports its
// tokens, parentheses, links, and the folding level of each line.

#include "code/codedocument.h"

#include "code/codedocument_p.h"
#include "code/codedocumenthelpers_p.h"

#include <QTextLayout>

namespace Ovra {

void CodeDocumentPrivate::token(TokenType type, int start, int end)
{
    if (type != Comment && currentData)
        currentData->d->parsed = true;
    paintColumns(start, end, CodeParserSyntax::format(type));
}

void CodeDocumentPrivate::paintColumns(int start, int end, const QTextCharFormat &format)
{
    start = qMax(start, 0);
    end = qMin(end, lineFormats.size());
    if (start >= end)
        return;
    if (lineFormatTable.size() == 1 || !(lineFormatTable.last() == format)) {
        if (lineFormatTable.size() == 0xFFFF)
            return; // a line with that many formats keeps the ones it has
        lineFormatTable.append(format);
    }
    std::fill(lineFormats.begin() + start, lineFormats.begin() + end, quint16(lineFormatTable.size() - 1));
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
    // Both buffers live on from line to line: most lines allocate nothing here.
    FormatRuns &runs = lineRuns;
    runs.clear();
    const QTextCharFormat plain;
    const int columns = lineFormats.size();
    // The line's formats by their index in the document's table, looked up once a line.
    QVector<int> &tableIndex = lineTableIndex;
    tableIndex.fill(-1, lineFormatTable.size());
    for (int column = 0; column < columns;) {
        const QTextCharFormat &format = lineFormatTable.at(lineFormats.at(column));
        // Runs of one index, joined where two indexes hold equal formats.
        quint16 index = lineFormats.at(column);
        const quint16 first = index;
        int end = column + 1;
        for (; end < columns; ++end) {
            const quint16 next = lineFormats.at(end);
            if (next != index) {
                if (!(lineFormatTable.at(next) == format))
                    break;
                index = next;
            }
        }
        if (format != plain) {
            int &shared = tableIndex[first];
            if (shared < 0)
                shared = formatIndex(format);
            runs.append(FormatRun{column, end - column, shared});
        }
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
    // Repainting is no change of the text: the pass must not hear of it.
    const bool ignoring = ignoreContentsChange;
    ignoreContentsChange = true;
    document->markContentsDirty(block.position(), block.length());
    ignoreContentsChange = ignoring;
}

int CodeDocumentPrivate::formatIndex(const QTextCharFormat &format)
{
    for (int i = formatTable.size() - 1; i >= 0; --i) {
        if (formatTable.at(i) == format)
            return i;
    }
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

void CodeDocumentPrivate::handFormats(const QTextBlock &block)
{
    CodeBlockData *data = testBlockData(block);
    if (!data)
        return;
    CodeBlockDataPrivate *part = data->d;
    part->laidOut = true;
    if (!part->formatsPending)
        return;
    part->formatsPending = false;
    QTextLayout *layout = block.layout();
    if (part->formats.isEmpty() && layout->formats().isEmpty())
        return;
    // This drops the layout's lines: the line is laid out anew, with its formats.
    layout->setFormats(formatRanges(block, part->formats));
}

CodeDocumentLayout::CodeDocumentLayout(QTextDocument *document, CodeDocumentPrivate *owner)
    : QPlainTextDocumentLayout(document)
    , m_owner(owner)
{
}

QRectF CodeDocumentLayout::blockBoundingRect(const QTextBlock &block) const
{
    if (block.isValid())
        m_owner->handFormats(block);
    return QPlainTextDocumentLayout::blockBoundingRect(block);
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
