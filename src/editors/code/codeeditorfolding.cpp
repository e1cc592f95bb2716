#include "editors/code/codeeditor_p.h"
#include "editors/code/codeeditorextraarea.h"

#include "code/codeblockdata.h"

#include <QMouseEvent>
#include <QScrollBar>

namespace Ovra {

namespace {

// The last line of the fold that `head` opens: the lines after it of a higher level.
QTextBlock foldEnd(const QTextBlock &head)
{
    const uint level = CodeEditorPrivate::level(head);
    QTextBlock last = head;
    for (QTextBlock block = head.next(); block.isValid() && CodeEditorPrivate::level(block) > level; block = block.next())
        last = block;
    return last;
}

} // namespace

// Whether a fold is open is read from its first line: hidden means folded. Opening a fold
// opens the folds inside it too, as all its lines are shown again.
void CodeEditor::toggleBlockVisible(const QTextBlock &block)
{
    if (!block.isValid() || block.document() != document() || !CodeEditorPrivate::isFoldHead(block))
        return;
    const bool show = !block.next().isVisible();
    const QTextBlock last = foldEnd(block);
    for (QTextBlock line = block.next(); line.isValid(); line = line.next()) {
        line.setVisible(show);
        if (CodeBlockData *lineData = CodeEditorPrivate::data(line); lineData && show)
            lineData->setFolded(false);
        if (line == last)
            break;
    }
    if (CodeBlockData *head = CodeEditorPrivate::data(block))
        head->setFolded(!show);
    d->foldsClosed = d->foldsClosed || !show;
    const int cursorLine = textCursor().blockNumber();
    if (!show && cursorLine > block.blockNumber() && cursorLine <= last.blockNumber()) {
        QTextCursor cursor(block);
        cursor.movePosition(QTextCursor::EndOfBlock);
        setTextCursor(cursor);
    }
    document()->markContentsDirty(block.position(), last.position() + last.length() - block.position());
    viewport()->update();
    d->area->update();
}

// From the cursor's block outwards: each range runs from the nearest line above of a
// lower level down to the last line of at least the level it started from.
QVector<CodeEditorPrivate::BlockRange> CodeEditorPrivate::blockRangesAt(int blockNumber) const
{
    QVector<BlockRange> ranges;
    QTextBlock current = q->document()->findBlockByNumber(blockNumber);
    if (!current.isValid())
        return ranges;
    if (isFoldHead(current))
        current = current.next();
    uint wanted = level(current);
    while (wanted > 0) {
        QTextBlock up = current.previous();
        while (up.isValid() && level(up) >= wanted)
            up = up.previous();
        if (!up.isValid())
            break;
        QTextBlock down = current;
        for (QTextBlock next = down.next(); next.isValid() && level(next) >= wanted; next = next.next())
            down = next;
        ranges << BlockRange(up.blockNumber(), down.blockNumber());
        current = up;
        wanted = level(up);
    }
    return ranges;
}

void CodeEditorPrivate::blockTimeout()
{
    const QVector<BlockRange> ranges = formatting.highlightBlocks ? blockRangesAt(blockForRanges) : QVector<BlockRange>();
    if (ranges == blockRanges)
        return;
    blockRanges = ranges;
    q->viewport()->update();
    area->update();
}

void CodeEditorPrivate::areaMousePress(QMouseEvent *event)
{
    event->accept();
    if (event->button() != Qt::LeftButton)
        return;
    const QTextBlock block = blockAtY(event->pos().y());
    if (!block.isValid())
        return;
    const Columns c = columns();
    const int x = q->layoutDirection() == Qt::RightToLeft ? c.width - 1 - event->pos().x() : event->pos().x();
    if (formatting.foldingMarkers && x >= c.fold && x < c.fold + c.foldWidth) {
        q->toggleBlockVisible(block);
    } else if (c.marksWidth && x >= c.marks && x < c.marks + c.marksWidth) {
        emit q->markRequested(block.blockNumber() + 1);
    }
}

void CodeEditorPrivate::areaMouseMove(QMouseEvent *event)
{
    const Columns c = columns();
    const int x = q->layoutDirection() == Qt::RightToLeft ? c.width - 1 - event->pos().x() : event->pos().x();
    const QTextBlock block = blockAtY(event->pos().y());
    const bool onHandle = formatting.foldingMarkers && x >= c.fold && x < c.fold + c.foldWidth && isFoldHead(block);
    if (onHandle) {
        pendingFoldLine = block.blockNumber();
        if (pendingFoldLine != hoveredFoldLine)
            foldHoverTimer.start(40, q);
        return;
    }
    areaLeave();
}

void CodeEditorPrivate::areaLeave()
{
    foldHoverTimer.stop();
    pendingFoldLine = -1;
    if (hoveredFoldLine < 0 && hoverRanges.isEmpty())
        return;
    hoveredFoldLine = -1;
    hoverRanges.clear();
    area->update();
}

void CodeEditorPrivate::foldHoverTimeout()
{
    foldHoverTimer.stop();
    const QTextBlock head = q->document()->findBlockByNumber(pendingFoldLine);
    if (!isFoldHead(head))
        return;
    hoveredFoldLine = pendingFoldLine;
    hoverRanges = {BlockRange(hoveredFoldLine, foldEnd(head).blockNumber())};
    area->update();
}

// The mouse over the text: a pointing hand over the box of a folded line, which a left
// press opens again.
bool CodeEditorPrivate::textMouseMove(QMouseEvent *event)
{
    const QTextBlock block = blockAtY(event->pos().y());
    const bool onBox = block.isValid() && isFoldHead(block) && !block.next().isVisible()
        && foldBoxRect(block).contains(event->pos());
    q->viewport()->setCursor(onBox ? Qt::PointingHandCursor : Qt::IBeamCursor);
    return onBox;
}

bool CodeEditorPrivate::textMousePress(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return false;
    const QTextBlock block = blockAtY(event->pos().y());
    if (!block.isValid() || !isFoldHead(block) || block.next().isVisible() || !foldBoxRect(block).contains(event->pos()))
        return false;
    q->toggleBlockVisible(block);
    event->accept();
    return true;
}

// Selecting with the mouse beyond the top or bottom edge scrolls, the faster the further
// out the mouse stands.
void CodeEditorPrivate::dragMove(QMouseEvent *event)
{
    if (!(event->buttons() & Qt::LeftButton)) {
        dragTimer.stop();
        return;
    }
    const int y = event->pos().y();
    const int height = q->viewport()->height();
    const int beyond = y < 0 ? -y : (y > height ? y - height : 0);
    if (beyond == 0) {
        dragTimer.stop();
        return;
    }
    dragPoint = event->pos();
    dragDistance = qMax(7, beyond);
    if (!dragTimer.isActive())
        dragTimer.start(4900 / (dragDistance * dragDistance), q);
}

void CodeEditorPrivate::dragTimeout()
{
    QScrollBar *bar = q->verticalScrollBar();
    bar->triggerAction(dragPoint.y() < 0 ? QAbstractSlider::SliderSingleStepSub : QAbstractSlider::SliderSingleStepAdd);
    QMouseEvent move(QEvent::MouseMove, dragPoint, q->viewport()->mapToGlobal(dragPoint), Qt::NoButton, Qt::LeftButton,
                     Qt::NoModifier);
    q->QPlainTextEdit::mouseMoveEvent(&move);
    dragTimer.start(4900 / (dragDistance * dragDistance), q);
}

} // namespace Ovra
