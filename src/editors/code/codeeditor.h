#pragma once

#include "foundation/global.h"

#include <QColor>
#include <QPlainTextEdit>
#include <QTextCharFormat>

class QCompleter;
class QIcon;

namespace Ovra {

class CodeDocument;
class CodeEditorExtraArea;
class CodeEditorPrivate;

// The text widget of the code views: a plain text editor with a side area for line numbers,
// marks and fold handles, folding by the lines' levels, highlighting of the current line
// and of the block around the cursor, parenthesis matching and word completion. It knows
// no language: what it shows comes from the document's line data.
class OVRA_EXPORT CodeEditor : public QPlainTextEdit
{
    Q_OBJECT
public:
    struct SyntaxFormatting
    {
        bool changeBars = true;
        bool lineNumbers = true;
        bool lineMarks = true;
        bool foldingMarkers = true;
        bool highlightLine = true;
        bool highlightBlocks = true;
        bool parenMatching = true;
        QColor lineColor;
        QColor blockRangeColor;
        QTextCharFormat parenFormat;
        QTextCharFormat parenErrorFormat;
        QTextCharFormat parenRangeFormat;
        bool parenRange = true;
    };

    // A place in the text and the first line shown.
    struct LinePos
    {
        int line = 0;
        int column = 0;
        int scroll = 0;
    };

    // Where setCurrentLine puts the line: only as far as needed to see it, at the top
    // of the view, or in its middle.
    enum LineType { Visible = 0, Top = 1, Middle = 2 };

    explicit CodeEditor(QWidget *parent = nullptr);
    ~CodeEditor() override;

    CodeDocument *codeDocument() const;
    void setDocument(CodeDocument *document);
    void setFont(const QFont &font);

    const SyntaxFormatting &syntaxFormatting() const;
    void setSyntaxFormatting(const SyntaxFormatting &formatting);
    // Reads the completion words of "completer.xml"; false for a file that can't be read
    // or isn't well formed, and the words before stay.
    bool completerFromFile(const QString &fileName);
    QCompleter *completer() const;

    LinePos currentLine() const;
    void setCurrentLine(const LinePos &position);
    void setCurrentLine(uint line, LineType type);
    // Lines not hidden by folding.
    int displayedLineCount() const;
    void markCurrentLine(bool mark);
    void toggleBlockVisible(const QTextBlock &block);
    void updateBlockHighlight();
    // The parenthesis match at the cursor as last found: 0 none, 1 a pair, 2 a pair of
    // different kinds.
    int parenthesisMatch() const;
    // The side area of line marks, numbers, fold handles and change bars.
    QWidget *extraArea() const;

    // The icon of a line mark, for all editors.
    static void setLineMarkIcon(const QIcon &icon);
    static QIcon lineMarkIcon();

signals:
    void currentLineChanged(int line);
    void cursorChanged(QPoint position);
    // A click in the marks column; the line counts from 1.
    void markRequested(int line);

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void timerEvent(QTimerEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    friend class CodeEditorPrivate;
    friend class CodeEditorExtraArea;
    CodeEditorPrivate *const d;
};

} // namespace Ovra
