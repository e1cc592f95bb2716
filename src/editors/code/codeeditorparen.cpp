#include "editors/code/codeeditor_p.h"

#include "code/codeblockdata.h"
#include "code/codedocument.h"

namespace Ovra {

namespace {

using Parenthesis = CodeBlockData::Parenthesis;

// One parenthesis record: its line and its index among the line's records.
struct ParenPlace
{
    QTextBlock block;
    int index = -1;

    const Parenthesis &record() const { return CodeEditorPrivate::data(block)->parenthesis().at(index); }
    int position() const { return block.position() + record().position; }
};

bool pairs(QChar opening, QChar closing)
{
    switch (opening.unicode()) {
    case '(':
        return closing == QLatin1Char(')');
    case '[':
        return closing == QLatin1Char(']');
    case '{':
        return closing == QLatin1Char('}');
    case '<':
        return closing == QLatin1Char('>');
    default:
        return false;
    }
}

// The partner of the record at `from`, counted by depth through the records of this and
// the following lines (`step` 1) or the earlier ones (`step` -1); index -1 if there is none.
ParenPlace partner(const ParenPlace &from, int step)
{
    int depth = 1;
    const int deeper = step > 0 ? Parenthesis::Opening : Parenthesis::Closing;
    QTextBlock block = from.block;
    int index = from.index + step;
    while (block.isValid()) {
        if (const CodeBlockData *line = CodeEditorPrivate::data(block)) {
            const QVector<Parenthesis> &records = line->parenthesis();
            if (step < 0 && index == -2)
                index = records.size() - 1;
            for (; index >= 0 && index < records.size(); index += step) {
                depth += records.at(index).type == deeper ? 1 : -1;
                if (depth == 0)
                    return {block, index};
            }
        }
        block = step > 0 ? block.next() : block.previous();
        index = step > 0 ? 0 : -2;
    }
    return {};
}

QTextEdit::ExtraSelection selection(QTextDocument *document, int from, int to, const QTextCharFormat &format)
{
    QTextEdit::ExtraSelection result;
    result.cursor = QTextCursor(document);
    result.cursor.setPosition(from);
    result.cursor.setPosition(to, QTextCursor::KeepAnchor);
    result.format = format;
    return result;
}

} // namespace

// A highlight that shows goes at once with the cursor; a new one waits for the cursor to rest.
void CodeEditorPrivate::startParenTimer()
{
    if (!formatting.parenMatching || !q->hasFocus())
        return;
    parenTimer.start(parenSelections.isEmpty() ? 50 : 0);
}

void CodeEditorPrivate::parenTimeout()
{
    QList<QTextEdit::ExtraSelection> selections;
    int result = 0;
    const QTextCursor cursor = q->textCursor();
    const CodeBlockData *line = data(cursor.block());
    if (formatting.parenMatching && !q->isReadOnly() && q->codeDocument() && line) {
        const int column = cursor.positionInBlock();
        const QVector<Parenthesis> &records = line->parenthesis();
        for (int i = 0; i < records.size(); ++i) {
            const Parenthesis &record = records.at(i);
            const bool closing = record.type == Parenthesis::Closing && record.position == column - 1;
            const bool opening = record.type == Parenthesis::Opening && record.position == column;
            if (!closing && !opening)
                continue;
            const ParenPlace here{cursor.block(), i};
            const ParenPlace other = partner(here, opening ? 1 : -1);
            if (other.index < 0)
                continue;
            const ParenPlace &open = opening ? here : other;
            const ParenPlace &close = opening ? other : here;
            QTextDocument *document = q->document();
            const int from = open.position();
            const int to = close.position() + 1;
            if (!pairs(open.record().character, close.record().character)) {
                selections << selection(document, from, to, formatting.parenErrorFormat);
                result = 2;
                continue;
            }
            if (formatting.parenRange)
                selections << selection(document, from, to, formatting.parenRangeFormat);
            selections << selection(document, from, from + 1, formatting.parenFormat)
                       << selection(document, to - 1, to, formatting.parenFormat);
            result = qMax(result, 1);
        }
    }
    parenResult = result;
    if (selections.isEmpty() && parenSelections.isEmpty())
        return;
    parenSelections = selections;
    updateExtraSelections();
}

int CodeEditor::parenthesisMatch() const
{
    return d->parenResult;
}

} // namespace Ovra
