#include "editors/code/codeeditor.h"
#include "editors/code/codeeditor_p.h"
#include "editors/code/codeeditorextraarea.h"

#include "code/codeblockdata.h"
#include "code/codedocument.h"
#include "foundation/interface.h"

#include <QCompleter>
#include <QIcon>
#include <QPainter>
#include <QScreen>
#include <QtMath>
#include <QScrollBar>
#include <QStringListModel>
#include <QTextBlock>

namespace Ovra {

namespace {

QIcon &markIconStore()
{
    static QIcon icon;
    return icon;
}

int digitCount(int number)
{
    int digits = 1;
    while (number >= 10) {
        number /= 10;
        ++digits;
    }
    return digits;
}

} // namespace

CodeEditorPrivate::CodeEditorPrivate(CodeEditor *editor)
    : QObject(editor)
    , q(editor)
    , contractIcon(QStringLiteral(":/ovra_icons/icons/contract.png"))
    , expandIcon(QStringLiteral(":/ovra_icons/icons/expand.png"))
{
    parenTimer.setSingleShot(true);
    blockTimer.setSingleShot(true);
    blockTimer.setInterval(100);
    connect(&parenTimer, &QTimer::timeout, this, &CodeEditorPrivate::parenTimeout);
    connect(&blockTimer, &QTimer::timeout, this, &CodeEditorPrivate::blockTimeout);
}

CodeEditorPrivate::~CodeEditorPrivate() = default;

CodeBlockData *CodeEditorPrivate::data(const QTextBlock &block)
{
    return block.isValid() ? static_cast<CodeBlockData *>(block.userData()) : nullptr;
}

uint CodeEditorPrivate::level(const QTextBlock &block)
{
    const CodeBlockData *line = data(block);
    return line ? line->foldingIndent() : 0;
}

bool CodeEditorPrivate::isFoldHead(const QTextBlock &block)
{
    const QTextBlock next = block.next();
    return next.isValid() && level(next) > level(block);
}

// Marks stand at the outer edge, then the numbers, then the fold handles next to the text;
// the change bar takes the last pixels of the fold column.
CodeEditorPrivate::Columns CodeEditorPrivate::columns() const
{
    Columns c;
    const int spacing = q->fontMetrics().lineSpacing();
    c.lineSpacing = spacing;
    if (formatting.lineMarks)
        c.marksWidth = spacing;
    if (formatting.lineNumbers) {
        const QFontMetrics metrics(area ? area->font() : q->font());
        c.numbersWidth = metrics.horizontalAdvance(QLatin1Char('9')) * qMax(digits, 1) + 4;
    }
    if (formatting.foldingMarkers || formatting.changeBars)
        c.foldWidth = formatting.foldingMarkers ? spacing : 4;
    c.marks = 0;
    c.numbers = c.marksWidth;
    c.fold = c.numbers + c.numbersWidth;
    c.width = c.fold + c.foldWidth;
    return c;
}

int CodeEditorPrivate::marginWidth() const
{
    return columns().width;
}

// Called on every change of the line count, so it does nothing unless the count of
// digits has changed: keystrokes must not resize the margin.
void CodeEditorPrivate::updateMargins(bool force)
{
    const int count = digitCount(q->document() ? q->document()->blockCount() : 1);
    if (!force && count == digits)
        return;
    digits = count;
    const int width = marginWidth();
    if (q->layoutDirection() == Qt::RightToLeft)
        q->setViewportMargins(0, 0, width, 0);
    else
        q->setViewportMargins(width, 0, 0, 0);
    const QRect contents = q->contentsRect();
    const int x = q->layoutDirection() == Qt::RightToLeft ? contents.right() - width + 1 : contents.left();
    area->setGeometry(QRect(x, contents.top(), width, contents.height()));
    area->update();
}

void CodeEditorPrivate::blockCountChanged(int)
{
    updateMargins(false);
    area->update();
}

// The area follows the text's repaints, but a strip whose lines it shows as they are (a
// keystroke within a line, the cursor's blink) is left alone.
void CodeEditorPrivate::updateRequest(const QRect &rect, int dy)
{
    if (dy) {
        paintedArea.clear();
        area->scroll(0, dy);
        return;
    }
    const QRect strip(0, rect.y(), area->width(), rect.height());
    if (areaShows(strip))
        return;
    // The lines the strip touches are painted whole, so that the area knows them after.
    area->update(wholeLines(strip));
}

void CodeEditorPrivate::cursorMoved()
{
    const QTextCursor cursor = q->textCursor();
    const int line = cursor.blockNumber();
    emit q->currentLineChanged(line);
    emit q->cursorChanged(QPoint(cursor.positionInBlock(), line));
    if (formatting.highlightBlocks) {
        blockForRanges = line;
        blockTimer.start();
    }
    startParenTimer();
    // Within its line the band has nothing to redo.
    if (line != highlightedLine) {
        updateLineBand();
        area->update();
    }
}

// The parenthesis selections; the current line's band below them is painted with the
// other bands, which spares the text's paint the work of a selection as wide as the view.
void CodeEditorPrivate::updateExtraSelections()
{
    updateLineBand();
    q->setExtraSelections(parenSelections);
}

void CodeEditorPrivate::updateLineBand()
{
    const bool shown = formatting.highlightLine && formatting.lineColor.isValid();
    const QTextCursor cursor = q->textCursor();
    const int line = shown ? cursor.blockNumber() : -1;
    if (line == highlightedLine && bandLine.isNull() != shown && (!shown || bandLine.block() == cursor.block()))
        return;
    if (!bandLine.isNull() && bandLine.document() == q->document())
        updateLine(bandLine.block());
    bandLine = shown ? QTextCursor(cursor.block()) : QTextCursor();
    highlightedLine = line;
    if (shown)
        updateLine(cursor.block());
}

void CodeEditorPrivate::updateLine(const QTextBlock &block)
{
    if (!block.isValid() || !block.isVisible())
        return;
    const QRectF box = q->blockBoundingGeometry(block).translated(q->contentOffset());
    q->viewport()->update(QRect(0, qFloor(box.top()), q->viewport()->width(), qCeil(box.height()) + 1));
}

QTextBlock CodeEditorPrivate::blockAtY(int y) const
{
    QTextBlock block = q->firstVisibleBlock();
    const QPointF offset = q->contentOffset();
    while (block.isValid()) {
        if (block.isVisible()) {
            const QRectF box = q->blockBoundingGeometry(block).translated(offset);
            if (y < box.top())
                return QTextBlock();
            if (y < box.bottom())
                return block;
        }
        block = block.next();
    }
    return QTextBlock();
}

CodeEditor::CodeEditor(QWidget *parent)
    : QPlainTextEdit(parent)
    , d(new CodeEditorPrivate(this))
{
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setFrameStyle(0);
    setLineWrapMode(QPlainTextEdit::NoWrap);
    viewport()->setMouseTracking(true);
    d->area = new CodeEditorExtraArea(this);

    SyntaxFormatting &f = d->formatting;
    f.parenFormat.setForeground(QColor(Qt::red));
    f.parenErrorFormat.setBackground(QColor(Qt::magenta));
QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED
    f.parenRangeFormat.setBackground(QColor(Qt::magenta).light(190));
    f.blockRangeColor = palette().color(QPalette::Current, QPalette::Base).dark(106);
QT_WARNING_POP
    f.lineColor = palette().brush(QPalette::ColorGroup(4), QPalette::ColorRole(9)).color();

    d->completer = new QCompleter(d);
    d->completer->setWidget(this);
    d->completer->setModelSorting(QCompleter::CaseInsensitivelySortedModel);
    d->completer->setCaseSensitivity(Qt::CaseInsensitive);
    d->completer->setCompletionMode(QCompleter::PopupCompletion);
    d->completer->setWrapAround(false);
    connect(d->completer, QOverload<const QString &>::of(&QCompleter::activated), d,
            &CodeEditorPrivate::insertCompletion);

    connect(this, &QPlainTextEdit::cursorPositionChanged, d, &CodeEditorPrivate::cursorMoved);
    connect(this, &QPlainTextEdit::blockCountChanged, d, &CodeEditorPrivate::blockCountChanged);
    connect(this, &QPlainTextEdit::updateRequest, d, &CodeEditorPrivate::updateRequest);
    d->updateMargins(true);
}

CodeEditor::~CodeEditor() = default;

CodeDocument *CodeEditor::codeDocument() const
{
    return qobject_cast<CodeDocument *>(document());
}

void CodeEditor::setDocument(CodeDocument *document)
{
    d->blockRanges.clear();
    d->hoverRanges.clear();
    d->parenSelections.clear();
    d->parenResult = 0;
    d->foldsClosed = false;
    d->markedLine = QTextCursor();
    d->bandLine = QTextCursor();
    d->paintedArea.clear();
    d->hoveredFoldLine = d->pendingFoldLine = -1;
    // Without a document the base class makes an empty one of its own.
    QPlainTextEdit::setDocument(document);
    d->updateMargins(true);
    d->updateExtraSelections();
    d->area->update();
}

void CodeEditor::setFont(const QFont &font)
{
    QFont fixed(font);
    fixed.setFixedPitch(true);
    if (fixed.styleHint() != QFont::TypeWriter)
        fixed.setStyleHint(QFont::TypeWriter, QFont::PreferDefault);
    QPlainTextEdit::setFont(fixed);
    d->area->setFont(fixed);

    // Tab stops of four blanks, scaled by the screen's density as the host's main window
    // sees it.
    const QWidget *host = Interface::instance() ? Interface::instance()->mainWidget() : nullptr;
    const QScreen *screen = host && host->screen() ? host->screen() : this->screen();
    const qreal dpi = screen ? screen->logicalDotsPerInch() : 96.0;
    const qreal blank = QFontMetricsF(fixed).horizontalAdvance(QLatin1Char(' '));
    setTabStopDistance(int((dpi / 96.0) * blank * 4.0));
    d->updateMargins(true);
}

const CodeEditor::SyntaxFormatting &CodeEditor::syntaxFormatting() const
{
    return d->formatting;
}

void CodeEditor::setSyntaxFormatting(const SyntaxFormatting &formatting)
{
    d->formatting = formatting;
    if (!formatting.highlightBlocks)
        d->blockRanges.clear();
    if (!formatting.parenMatching)
        d->parenSelections.clear();
    d->updateMargins(true);
    d->updateExtraSelections();
    viewport()->update();
    d->area->update();
}

bool CodeEditor::completerFromFile(const QString &fileName)
{
    return d->loadCompleter(fileName);
}

QCompleter *CodeEditor::completer() const
{
    return d->completer;
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
    cursor.setPosition(block.position() + qBound(0, position.column, block.length() - 1));
    setTextCursor(cursor);
    verticalScrollBar()->setValue(position.scroll);
}

// For the top or the middle, the cursor goes first to a line a screen (or half of one)
// further on, which scrolls the view so far, and then to the line itself, which then
// stands at the top (or in the middle). Otherwise the view moves only as far as needed.
void CodeEditor::setCurrentLine(uint line, LineType type)
{
    const QTextBlock block = document()->findBlockByNumber(int(line));
    if (!block.isValid())
        return;
    const int height = qMax(1, fontMetrics().height());
    const int shown = qMax(1, viewport()->height() / height);
    QScrollBar *bar = verticalScrollBar();
    const int first = bar->value();
    const int target = block.firstLineNumber();
    if (type == Visible) {
        if (target >= first + shown)
            bar->setValue(target - shown + 1);
        else if (target < first)
            bar->setValue(target);
    } else if (target < first || target >= first + shown) {
        int step = int(line);
        if (target >= first)
            step = int(line) + (type == Top ? shown - 1 : shown / 2);
        else if (type == Middle)
            step = int(line) - shown / 2;
        step = qBound(0, step, document()->blockCount() - 1);
        setTextCursor(QTextCursor(document()->findBlockByNumber(step)));
    }
    setTextCursor(QTextCursor(block));
}

int CodeEditor::displayedLineCount() const
{
    int count = 0;
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
        if (block.isVisible())
            ++count;
    }
    return count;
}

// Marks the cursor's line as the one of interest (a stop, a found place) until it is
// unmarked; the mark follows the line through edits.
void CodeEditor::markCurrentLine(bool mark)
{
    if (mark) {
        d->markedLine = QTextCursor(textCursor().block());
    } else {
        d->markedLine = QTextCursor();
    }
    d->area->update();
    viewport()->update();
}

void CodeEditor::updateBlockHighlight()
{
    d->blockForRanges = textCursor().blockNumber();
    d->blockTimeout();
}

QWidget *CodeEditor::extraArea() const
{
    return d->area;
}

void CodeEditor::setLineMarkIcon(const QIcon &icon)
{
    markIconStore() = icon;
}

QIcon CodeEditor::lineMarkIcon()
{
    return markIconStore();
}

bool CodeEditor::event(QEvent *event)
{
    if (event->type() == QEvent::LayoutDirectionChange)
        d->updateMargins(true);
    return QPlainTextEdit::event(event);
}

void CodeEditor::keyPressEvent(QKeyEvent *event)
{
    if (d->keyBeforeBase(event))
        return;
    QPlainTextEdit::keyPressEvent(event);
    d->keyAfterBase(event);
}

void CodeEditor::paintEvent(QPaintEvent *event)
{
    d->paintBands(event->rect());
    QPlainTextEdit::paintEvent(event);
    d->paintFoldBoxes(event->rect());
}

void CodeEditor::resizeEvent(QResizeEvent *event)
{
    QPlainTextEdit::resizeEvent(event);
    d->updateMargins(true);
}

void CodeEditor::mousePressEvent(QMouseEvent *event)
{
    if (d->textMousePress(event))
        return;
    QPlainTextEdit::mousePressEvent(event);
}

void CodeEditor::mouseMoveEvent(QMouseEvent *event)
{
    d->textMouseMove(event);
    QPlainTextEdit::mouseMoveEvent(event);
    d->dragMove(event);
}

void CodeEditor::mouseReleaseEvent(QMouseEvent *event)
{
    d->dragTimer.stop();
    QPlainTextEdit::mouseReleaseEvent(event);
}

void CodeEditor::timerEvent(QTimerEvent *event)
{
    if (event->timerId() == d->dragTimer.timerId())
        d->dragTimeout();
    else if (event->timerId() == d->foldHoverTimer.timerId())
        d->foldHoverTimeout();
    else
        QPlainTextEdit::timerEvent(event);
}

void CodeEditor::focusInEvent(QFocusEvent *event)
{
    QPlainTextEdit::focusInEvent(event);
    d->startParenTimer();
}

void CodeEditor::changeEvent(QEvent *event)
{
    QPlainTextEdit::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        d->updateMargins(true);
}

} // namespace Ovra
