#pragma once

#include "editors/code/codeeditor.h"

#include <QBasicTimer>
#include <QHash>
#include <QIcon>
#include <QMap>
#include <QObject>
#include <QPair>
#include <QPointer>
#include <QTextBlock>
#include <QTextCursor>
#include <QTimer>
#include <QVector>

class QCompleter;
class QMouseEvent;
class QPainter;
class QStringListModel;

namespace Ovra {

class CodeBlockData;
class CodeEditorExtraArea;

// The editor's state: formatting, completion, folding, block ranges and its timers.
class CodeEditorPrivate : public QObject
{
    Q_OBJECT
public:
    // A run of lines around the cursor, by block number: the head and the last line.
    using BlockRange = QPair<int, int>;

    // The columns of the side area, in the order they stand from the text outwards
    // reversed: marks first, then numbers, then the fold handles, then the change bar.
    struct Columns
    {
        int marks = 0;
        int marksWidth = 0;
        int numbers = 0;
        int numbersWidth = 0;
        int fold = 0;
        int foldWidth = 0;
        int width = 0;
        int lineSpacing = 0;
    };

    // What the side area shows beside one line, as it was painted at some height: a strip
    // whose lines would be painted as they are needs no paint.
    struct AreaLine
    {
        int line = -1;
        int height = 0;
        uint state = 0;
        qint64 icon = 0;
        bool operator==(const AreaLine &other) const
        {
            return line == other.line && height == other.height && state == other.state && icon == other.icon;
        }
    };

    explicit CodeEditorPrivate(CodeEditor *editor);
    ~CodeEditorPrivate() override;

    // Line data and levels; a line without data stands at level 0.
    static CodeBlockData *data(const QTextBlock &block);
    static uint level(const QTextBlock &block);
    static bool isFoldHead(const QTextBlock &block);

    // Margin (codeeditor.cpp)
    Columns columns() const;
    int marginWidth() const;
    void updateMargins(bool force);
    void blockCountChanged(int count);
    void updateRequest(const QRect &rect, int dy);
    void cursorMoved();
    void updateExtraSelections();
    void updateLineBand();
    void updateLine(const QTextBlock &block);
    QTextBlock blockAtY(int y) const;

    // Painting (codeeditorpaint.cpp)
    template<typename Paint>
    void forVisibleBlocks(const QRect &clip, Paint paint) const;
    // The strip grown to the whole lines it touches.
    QRect wholeLines(const QRect &strip) const;
    void paintArea(QPaintEvent *event);
    void paintBands(const QRect &clip);
    void paintLineBand(QPainter &painter, const QTextBlock &block, int column, int top);
    AreaLine areaLine(const QTextBlock &block, int height) const;
    bool areaShows(const QRect &strip) const;
    void paintFoldBoxes(const QRect &clip);
    QRect foldBoxRect(const QTextBlock &block) const;
    void paintAreaBlock(QPainter &painter, const Columns &c, const QTextBlock &block, int top, int height);
    void paintFoldHandle(QPainter &painter, const QRect &rect, bool folded);

    // Folding and block ranges (codeeditorfolding.cpp)
    QVector<BlockRange> blockRangesAt(int blockNumber) const;
    void blockTimeout();
    void areaMouseMove(QMouseEvent *event);
    void areaMousePress(QMouseEvent *event);
    void areaLeave();
    void foldHoverTimeout();
    bool textMouseMove(QMouseEvent *event);
    bool textMousePress(QMouseEvent *event);

    // Parenthesis matching (codeeditorparen.cpp)
    void startParenTimer();
    void parenTimeout();

    // Completion (codeeditorcompletion.cpp)
    bool loadCompleter(const QString &fileName);
    bool keyBeforeBase(QKeyEvent *event);
    void keyAfterBase(QKeyEvent *event);
    void insertCompletion(const QString &completion);

    // Drag scroll (codeeditorfolding.cpp)
    void dragMove(QMouseEvent *event);
    void dragTimeout();

    CodeEditor *q;
    QCompleter *completer = nullptr;
    QMap<QString, QStringListModel *> models;
    CodeEditor::SyntaxFormatting formatting;
    QVector<BlockRange> blockRanges;   // of the cursor's block, innermost first
    QVector<BlockRange> hoverRanges;   // of the hovered fold handle
    QTimer parenTimer;
    QTimer blockTimer;
    int hoveredFoldLine = -1;
    int pendingFoldLine = -1;
    QBasicTimer dragTimer;
    QBasicTimer foldHoverTimer;
    CodeEditorExtraArea *area = nullptr;
    QIcon contractIcon;
    QIcon expandIcon;

    int blockForRanges = -1;           // the cursor's block when the block timer started
    bool foldsClosed = false;          // a fold has been closed since the document came
    int highlightedLine = -1;          // of the current line's band; -1 for none
    QTextCursor bandLine;              // in the line the band was last painted for
    QHash<int, AreaLine> paintedArea;  // what the area shows, by the top of each line
    int digits = 0;                    // of the line count, as the margin was last sized
    QList<QTextEdit::ExtraSelection> parenSelections;
    int parenResult = 0;               // of the last match: 0 none, 1 a pair, 2 a mismatch
    QTextCursor markedLine;            // the line markCurrentLine marked; null for none
    QPoint dragPoint;                  // the last mouse place of a drag beyond the view
    int dragDistance = 0;
};

} // namespace Ovra
