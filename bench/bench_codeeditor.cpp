// A keystroke in a shown code editor, through the event loop and with its repaint: in the
// middle of a sample-engine definition file, against the same keystroke in a plain text
// editor holding the same text, and at two file sizes. Two more runs part the cost: a
// plain editor on the parsed document, and the code editor on unparsed text.
#include "definitiondocument.h"

#include "editors/code/codeeditor.h"

#include "ratioreporter.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPlainTextDocumentLayout>
#include <QPlainTextEdit>
#include <QTextBlock>

#include <memory>

namespace {

// Groups of twenty lines with a list value and a remark here and there; the first line
// is the widest, as some line always is in a real file.
QString definitionText(int lines)
{
    QString text;
    text.reserve(lines * 20);
    text += QStringLiteral("# %1\n").arg(QString(100, QLatin1Char('=')));
    for (int i = 1; i < lines; ++i) {
        if (i % 20 == 1)
            text += QStringLiteral("[Move: move%1]\n").arg(i / 20);
        else if (i % 7 == 0)
            text += QStringLiteral("    # remark %1\n").arg(i);
        else if (i % 5 == 0)
            text += QStringLiteral("    reach = (%1, -44, 26, -32)\n").arg(i % 90);
        else
            text += QStringLiteral("    damage = %1\n").arg(i);
    }
    return text;
}

void sendKey(QWidget *widget, int key, const QString &text)
{
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
    QApplication::sendEvent(widget, &press);
    QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier, text);
    QApplication::sendEvent(widget, &release);
    // The repaints the key asked for happen here.
    QApplication::processEvents();
}

// Shows the editor with the cursor at the end of a value line in the middle of the text.
void prepare(QPlainTextEdit &editor, int lines)
{
    editor.resize(900, 700);
    editor.show();
    QApplication::processEvents();
    int line = lines / 2;
    while (!editor.document()->findBlockByNumber(line).text().contains(QLatin1String("damage")))
        ++line;
    QTextCursor cursor(editor.document()->findBlockByNumber(line));
    cursor.movePosition(QTextCursor::EndOfBlock);
    editor.setTextCursor(cursor);
    editor.centerCursor();
    editor.setFocus();
    editor.repaint();
    QApplication::processEvents();
}

// Counts the paints of the editor's widgets and the pixels they cover: a keystroke that
// repaints a line differs from one that repaints the view.
struct PaintCounter : QObject
{
    int count = 0;
    qint64 pixels = 0;
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint) {
            ++count;
            const QRect rect = static_cast<QPaintEvent *>(event)->rect();
            pixels += qint64(rect.width()) * rect.height();
        }
        return false;
    }
};

void typeAndTakeBack(benchmark::State &state, QPlainTextEdit &editor)
{
    PaintCounter counter;
    for (QWidget *child : editor.findChildren<QWidget *>())
        child->installEventFilter(&counter);
    QApplication::processEvents();
    counter.count = 0;
    counter.pixels = 0;
    for (auto _ : state) {
        sendKey(&editor, Qt::Key_7, QStringLiteral("7"));
        sendKey(&editor, Qt::Key_Backspace, QString());
    }
    state.counters["paints"] = benchmark::Counter(double(counter.count) / double(state.iterations()));
    state.counters["pixels"] = benchmark::Counter(double(counter.pixels) / double(state.iterations()));
    // Two keys per iteration.
    state.counters["keys"] = benchmark::Counter(2, benchmark::Counter::kIsIterationInvariant);
}

void editorKeystroke(benchmark::State &state)
{
    const int lines = int(state.range(0));
    DefinitionDocument document;
    document.fromString(definitionText(lines));
    Ovra::CodeEditor editor;
    editor.setDocument(&document);
    prepare(editor, lines);
    typeAndTakeBack(state, editor);
    editor.setDocument(nullptr);
}

void plainKeystroke(benchmark::State &state)
{
    const int lines = int(state.range(0));
    QPlainTextEdit editor;
    auto *document = new QTextDocument(&editor);
    document->setDocumentLayout(new QPlainTextDocumentLayout(document));
    document->setPlainText(definitionText(lines));
    editor.setDocument(document);
    prepare(editor, lines);
    typeAndTakeBack(state, editor);
}

// A plain editor on the parsed document: what the document's own work costs.
void plainOnParsed(benchmark::State &state)
{
    const int lines = int(state.range(0));
    DefinitionDocument document;
    document.fromString(definitionText(lines));
    QPlainTextEdit editor;
    editor.setDocument(&document);
    prepare(editor, lines);
    typeAndTakeBack(state, editor);
    editor.setDocument(nullptr);
}

// The editor on unparsed text: what the editor itself adds to a plain one.
void editorPlain(benchmark::State &state)
{
    const int lines = int(state.range(0));
    Ovra::CodeEditor editor;
    auto *document = new QTextDocument(&editor);
    document->setDocumentLayout(new QPlainTextDocumentLayout(document));
    document->setPlainText(definitionText(lines));
    QPlainTextEdit &base = editor;
    base.setDocument(document);
    prepare(editor, lines);
    typeAndTakeBack(state, editor);
}

} // namespace

BENCHMARK(plainOnParsed)->Arg(100000)->Unit(benchmark::kMicrosecond)->Iterations(2000);
BENCHMARK(editorPlain)->Arg(100000)->Unit(benchmark::kMicrosecond)->Iterations(2000);
BENCHMARK(plainKeystroke)->Arg(100000)->Unit(benchmark::kMicrosecond)->Iterations(2000);
BENCHMARK(editorKeystroke)->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond)->Iterations(2000);

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    RatioReporter reporter;
    reporter.addRatio("editorKeystroke/100000/iterations:2000", "plainKeystroke/100000/iterations:2000");
    reporter.addRatio("editorKeystroke/100000/iterations:2000", "editorKeystroke/10000/iterations:2000");
    reporter.addRatio("editorPlain/100000/iterations:2000", "plainKeystroke/100000/iterations:2000");
    reporter.addRatio("plainOnParsed/100000/iterations:2000", "plainKeystroke/100000/iterations:2000");
    reporter.addRatio("editorKeystroke/100000/iterations:2000", "plainOnParsed/100000/iterations:2000");
    return runWithRatios(argc, argv, reporter);
}
