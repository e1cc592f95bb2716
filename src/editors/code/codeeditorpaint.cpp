#include "editors/code/codeeditor_p.h"
#include "editors/code/codeeditorextraarea.h"

#include "code/codeblockdata.h"
#include "code/codedocument.h"

#include <QIcon>
#include <QPaintEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>
#include <QTextLayout>
#include <QtMath>

#include <memory>

namespace Ovra {

namespace {

bool inRange(const QVector<CodeEditorPrivate::BlockRange> &ranges, int line)
{
    return !ranges.isEmpty() && line >= ranges.first().first && line <= ranges.first().second;
}

// The few styles that draw tree branches in a way of their own get to draw the handles.
bool styleDrawsHandles(const QStyle *style)
{
    const char *name = style->metaObject()->className();
    return qstrcmp(name, "QGtkStyle") == 0 || qstrcmp(name, "QMacStyle") == 0;
}

} // namespace

// Walks the blocks on screen from the first shown, calling `paint` with each visible one
// and its place, until the clip is passed.
template<typename Paint>
void CodeEditorPrivate::forVisibleBlocks(const QRect &clip, Paint paint) const
{
    const CodeEditor *editor = q;
    QTextBlock block = editor->firstVisibleBlock();
    if (!block.isValid())
        return;
    qreal top = editor->blockBoundingGeometry(block).translated(editor->contentOffset()).top();
    while (block.isValid() && top <= clip.bottom()) {
        const qreal height = block.isVisible() ? editor->blockBoundingRect(block).height() : 0.0;
        if (height > 0 && top + height >= clip.top())
            paint(block, QRectF(0, top, 1, height).toAlignedRect());
        top += height;
        block = block.next();
    }
}

// Under the text: the block range, the marked line, and the current line's band on top.
void CodeEditorPrivate::paintBands(const QRect &clip)
{
    const bool ranges = formatting.highlightBlocks && formatting.blockRangeColor.isValid() && !blockRanges.isEmpty();
    const QTextBlock marked = markedLine.isNull() ? QTextBlock() : markedLine.block();
    const QTextCursor cursor = q->textCursor();
    const bool band = formatting.highlightLine && formatting.lineColor.isValid();
    const QTextBlock current = band ? cursor.block() : QTextBlock();
    if (!ranges && !marked.isValid() && !current.isValid())
        return;
    QPainter painter(q->viewport());
    const int width = q->viewport()->width();
    QColor markColor = q->palette().color(QPalette::Highlight);
    markColor.setAlpha(70);
    forVisibleBlocks(clip, [&](const QTextBlock &block, const QRect &box) {
        const QRect full(0, box.top(), width, box.height());
        if (ranges && inRange(blockRanges, block.blockNumber()))
            painter.fillRect(full, formatting.blockRangeColor);
        if (block == marked)
            painter.fillRect(full, markColor);
        if (block == current)
            paintLineBand(painter, block, cursor.positionInBlock(), box.top());
    });
}

// The band covers the cursor's line of the text from where the line starts to the right
// edge, as tall as the line, its lower edge on a whole pixel.
void CodeEditorPrivate::paintLineBand(QPainter &painter, const QTextBlock &block, int column, int top)
{
    const QTextLayout *layout = block.layout();
    QTextLine line = layout ? layout->lineForTextPosition(column) : QTextLine();
    if (!line.isValid() && layout && layout->lineCount() > 0)
        line = layout->lineAt(layout->lineCount() - 1);
    if (!line.isValid())
        return;
    const qreal left = q->contentOffset().x() + line.x();
    const qreal y = top + line.y();
    const qreal right = q->viewport()->width();
    if (right > left)
        painter.fillRect(QRectF(left, y, right - left, qCeil(y + line.height()) - y), formatting.lineColor);
}

QRect CodeEditorPrivate::foldBoxRect(const QTextBlock &block) const
{
    const QTextLayout *layout = block.layout();
    if (!layout || layout->lineCount() == 0)
        return QRect();
    const QTextLine line = layout->lineAt(layout->lineCount() - 1);
    const QRectF box = q->blockBoundingGeometry(block).translated(q->contentOffset());
    const QFontMetrics metrics = q->fontMetrics();
    const int x = int(box.left() + layout->position().x() + line.naturalTextWidth()) + metrics.horizontalAdvance(QLatin1Char(' '));
    const int width = metrics.horizontalAdvance(QStringLiteral("...")) + 6;
    return QRect(x, int(box.top() + line.y()), width, int(line.height()) - 1);
}

void CodeEditorPrivate::paintFoldBoxes(const QRect &clip)
{
    const QColor frame = q->palette().color(QPalette::Mid);
    const QColor text = q->palette().color(QPalette::Text);
    if (!foldsClosed)
        return;
    std::unique_ptr<QPainter> lazy; // most paints have no folded line
    forVisibleBlocks(clip, [&](const QTextBlock &block, const QRect &) {
        if (!block.next().isValid() || block.next().isVisible() || !isFoldHead(block))
            return;
        const QRect box = foldBoxRect(block);
        if (box.isNull())
            return;
        if (!lazy)
            lazy.reset(new QPainter(q->viewport()));
        QPainter &painter = *lazy;
        painter.setPen(frame);
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(box);
        painter.setPen(text);
        painter.drawText(box, Qt::AlignCenter, QStringLiteral("..."));
    });
}

void CodeEditorPrivate::paintArea(QPaintEvent *event)
{
    QPainter painter(area);
    const Columns c = columns();
    const QColor background = q->palette().color(QPalette::Window);
    painter.fillRect(event->rect(), background);
    if (c.marksWidth) {
QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED
        const QColor column = background.dark(115);
QT_WARNING_POP
        QRect marks(c.marks, event->rect().top(), c.marksWidth, event->rect().height());
        if (q->layoutDirection() == Qt::RightToLeft)
            marks.moveLeft(c.width - c.marks - c.marksWidth);
        painter.fillRect(marks, column);
    }
    painter.setFont(area->font());
    // Only lines painted whole, from side to side, are known to show what they were
    // painted with.
    const QRect clip = event->rect();
    if (clip == area->rect())
        paintedArea.clear();
    const bool plain = event->region().rectCount() == 1;
    forVisibleBlocks(clip, [&](const QTextBlock &block, const QRect &box) {
        paintAreaBlock(painter, c, block, box.top(), box.height());
        if (plain && clip.contains(QRect(0, box.top(), area->width(), box.height())))
            paintedArea.insert(box.top(), areaLine(block, box.height()));
        else
            paintedArea.remove(box.top());
    });
}

CodeEditorPrivate::AreaLine CodeEditorPrivate::areaLine(const QTextBlock &block, int height) const
{
    enum State : uint {
        Current = 1, Marks = 2, Marked = 4, FoldHead = 8, Folded = 16,
        Changed = 32, Saved = 64, Range = 128, Hover = 256
    };
    AreaLine shown;
    shown.line = block.blockNumber();
    shown.height = height;
    uint state = 0;
    if (shown.line == q->textCursor().blockNumber())
        state |= Current;
    const CodeBlockData *lineData = data(block);
    if (lineData && !lineData->marks().isEmpty()) {
        state |= Marks;
        shown.icon = CodeEditor::lineMarkIcon().cacheKey();
    }
    if (!markedLine.isNull() && markedLine.block() == block)
        state |= Marked;
    if (isFoldHead(block))
        state |= block.next().isVisible() ? FoldHead : FoldHead | Folded;
    const CodeDocument *document = q->codeDocument();
    if (document && block.revision() != document->savedRevision())
        state |= block.revision() < 0 ? Changed | Saved : Changed;
    if (inRange(blockRanges, shown.line))
        state |= Range;
    if (inRange(hoverRanges, shown.line))
        state |= Hover;
    shown.state = state;
    return shown;
}

QRect CodeEditorPrivate::wholeLines(const QRect &strip) const
{
    QRect lines = strip;
    forVisibleBlocks(strip, [&](const QTextBlock &, const QRect &box) {
        lines |= QRect(strip.left(), box.top(), strip.width(), box.height());
    });
    return lines;
}

// True when every line in the strip was last painted whole at its place and would be
// painted the same now, and the lines fill the strip.
bool CodeEditorPrivate::areaShows(const QRect &strip) const
{
    if (paintedArea.isEmpty() || !strip.isValid())
        return false;
    int reached = strip.top();
    bool same = true;
    forVisibleBlocks(strip, [&](const QTextBlock &block, const QRect &box) {
        if (!same)
            return;
        const auto painted = paintedArea.constFind(box.top());
        same = box.top() <= reached && painted != paintedArea.constEnd() && *painted == areaLine(block, box.height());
        reached = qMax(reached, box.bottom() + 1);
    });
    return same && reached > strip.bottom();
}

void CodeEditorPrivate::paintAreaBlock(QPainter &painter, const Columns &c, const QTextBlock &block, int top, int height)
{
    const bool mirrored = q->layoutDirection() == Qt::RightToLeft;
    auto place = [&](int x, int width) {
        QRect rect(x, top, width, height);
        if (mirrored)
            rect.moveLeft(c.width - x - width);
        return rect;
    };
    const int line = block.blockNumber();
    const int lineHeight = qMin(height, c.lineSpacing);
    const CodeBlockData *lineData = data(block);

    if (c.foldWidth && (inRange(hoverRanges, line) || inRange(blockRanges, line))) {
QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED
        const QColor range = inRange(hoverRanges, line) ? formatting.blockRangeColor.dark(130) : formatting.blockRangeColor;
QT_WARNING_POP
        painter.fillRect(place(c.fold, c.foldWidth), range);
    }
    if (c.marksWidth) {
        const QRect marks = place(c.marks, c.marksWidth);
        const QRect square(marks.left() + 1, top + 1, c.marksWidth - 2, lineHeight - 2);
        if (lineData && !lineData->marks().isEmpty())
            CodeEditor::lineMarkIcon().paint(&painter, square);
        if (!markedLine.isNull() && markedLine.block() == block) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(q->palette().color(QPalette::Highlight));
            const QPoint mid(square.center());
            const int half = qMax(2, square.height() / 3);
            const QPoint tip = mirrored ? QPoint(mid.x() - half, mid.y()) : QPoint(mid.x() + half, mid.y());
            const int back = mirrored ? mid.x() + half : mid.x() - half;
            painter.drawPolygon(QPolygon({QPoint(back, mid.y() - half), tip, QPoint(back, mid.y() + half)}));
        }
    }
    if (c.numbersWidth) {
        const bool current = line == q->textCursor().blockNumber();
        painter.setPen(q->palette().color(current ? QPalette::Text : QPalette::Dark));
        const QRect numbers = place(c.numbers, c.numbersWidth - 2);
        painter.drawText(QRect(numbers.left(), top, numbers.width(), lineHeight),
                         (mirrored ? Qt::AlignLeft : Qt::AlignRight) | Qt::AlignVCenter, QString::number(line + 1));
    }
    if (formatting.foldingMarkers && isFoldHead(block)) {
        const int side = qMin(16, qMin(c.foldWidth, lineHeight));
        const QRect fold = place(c.fold, c.foldWidth);
        const QRect handle(fold.left() + (fold.width() - side) / 2, top + (lineHeight - side) / 2, side, side);
        paintFoldHandle(painter, handle, !block.next().isVisible());
    }
    const CodeDocument *document = q->codeDocument();
    if (formatting.changeBars && document && block.revision() != document->savedRevision()) {
        const QColor color = block.revision() < 0 ? QColor(Qt::darkGreen) : QColor(Qt::red);
        QPen pen(color, 2);
        pen.setCapStyle(Qt::FlatCap);
        painter.setPen(pen);
        const qreal x = mirrored ? 1.0 : c.width - 1.0;
        painter.drawLine(QLineF(x, top, x, top + height));
    }
}

void CodeEditorPrivate::paintFoldHandle(QPainter &painter, const QRect &rect, bool folded)
{
    if (styleDrawsHandles(q->style())) {
        QStyleOption option;
        option.initFrom(area);
        option.rect = rect;
        option.state = QStyle::State_Item | QStyle::State_Children | (folded ? QStyle::State_None : QStyle::State_Open);
        q->style()->drawPrimitive(QStyle::PE_IndicatorBranch, &option, &painter, area);
        return;
    }
    (folded ? expandIcon : contractIcon).paint(&painter, rect);
}

} // namespace Ovra
