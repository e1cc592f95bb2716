// Marks on the lines of a code document.

#include "code/codedocument.h"

#include "code/codedocument_p.h"

#include <QAbstractTextDocumentLayout>

namespace Ovra {

bool CodeDocument::addMark(CodeMark *mark, int line)
{
    if (line < 1)
        return false;
    const QTextBlock block = findBlockByNumber(line - 1);
    if (!block.isValid())
        return false;
    d->blockData(block)->d->madeExtras().marks.append(mark);
    mark->setLine(line, block);
    documentLayout()->update();
    return true;
}

void CodeDocument::removeMark(CodeMark *mark)
{
    bool removed = false;
    for (QTextBlock block = begin(); block.isValid(); block = block.next()) {
        if (CodeBlockData *data = CodeDocumentPrivate::testBlockData(block); data && data->d->extras)
            removed |= data->d->extras->marks.removeAll(mark) > 0;
    }
    if (removed)
        documentLayout()->update();
}

void CodeDocument::updateMark(CodeMark *mark)
{
    for (QTextBlock block = begin(); block.isValid(); block = block.next()) {
        const CodeBlockData *data = CodeDocumentPrivate::testBlockData(block);
        if (data && data->d->hasMark(mark)) {
            mark->setLine(block.blockNumber() + 1, block);
            documentLayout()->update();
            return;
        }
    }
}

bool CodeDocument::hasMark(CodeMark *mark) const
{
    for (QTextBlock block = begin(); block.isValid(); block = block.next()) {
        const CodeBlockData *data = CodeDocumentPrivate::testBlockData(block);
        if (data && data->d->hasMark(mark))
            return true;
    }
    return false;
}

QList<CodeMark *> CodeDocument::marksAt(int line) const
{
    if (line < 1)
        return {};
    const CodeBlockData *data = CodeDocumentPrivate::testBlockData(findBlockByNumber(line - 1));
    return data ? data->marks() : QList<CodeMark *>();
}

} // namespace Ovra
