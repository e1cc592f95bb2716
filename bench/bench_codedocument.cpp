// Parsing cost of code documents with the test engine's parser: a whole load against
// the plain text document, and one keystroke against a load, at two document sizes.
#include "testengine.h"

#include "ratioreporter.h"

#include <QApplication>
#include <QPlainTextDocumentLayout>

namespace {

// The first line is the widest, as some line always is in a real file: the plain-text
// layout scans every line for the widest only when the widest one shrinks.
QString definitionText(int lines)
{
    QString text;
    text.reserve(lines * 16);
    text += QStringLiteral("; %1\n").arg(QString(100, QLatin1Char('=')));
    for (int i = 1; i < lines; ++i) {
        if (i % 20 == 0)
            text += QStringLiteral("[Group%1]\n").arg(i / 20);
        else if (i % 7 == 0)
            text += QStringLiteral("; remark %1\n").arg(i);
        else
            text += QStringLiteral("key%1 = %2\n").arg(i % 20).arg(i);
    }
    return text;
}

void plainLoad(benchmark::State &state)
{
    const QString text = definitionText(int(state.range(0)));
    for (auto _ : state) {
        QTextDocument document;
        document.setDocumentLayout(new QPlainTextDocumentLayout(&document));
        document.setPlainText(text);
        benchmark::DoNotOptimize(document.blockCount());
    }
}

void parsedLoad(benchmark::State &state)
{
    const QString text = definitionText(int(state.range(0)));
    for (auto _ : state) {
        TestDocument document;
        document.fromString(text);
        benchmark::DoNotOptimize(document.root()->childCount());
    }
}

// One character typed into a value in the middle of the document, and taken back.
void keystroke(benchmark::State &state)
{
    const int lines = int(state.range(0));
    TestDocument document;
    document.fromString(definitionText(lines));
    document.documentLayout()->blockBoundingRect(document.firstBlock());
    const QTextBlock middle = document.findBlockByNumber(lines / 2 + 1);
    for (auto _ : state) {
        QTextCursor cursor(document.findBlockByNumber(middle.blockNumber()));
        cursor.movePosition(QTextCursor::EndOfBlock);
        cursor.insertText(QStringLiteral("7"));
        cursor.deletePreviousChar();
    }
    // Two edits per iteration.
    state.counters["edits"] = benchmark::Counter(2, benchmark::Counter::kIsIterationInvariant);
}

// The same keystroke in a document without a parser: what the text itself costs.
void plainKeystroke(benchmark::State &state)
{
    const int lines = int(state.range(0));
    QTextDocument document;
    document.setDocumentLayout(new QPlainTextDocumentLayout(&document));
    document.setPlainText(definitionText(lines));
    document.documentLayout()->blockBoundingRect(document.firstBlock());
    for (auto _ : state) {
        QTextCursor cursor(document.findBlockByNumber(lines / 2 + 1));
        cursor.movePosition(QTextCursor::EndOfBlock);
        cursor.insertText(QStringLiteral("7"));
        cursor.deletePreviousChar();
    }
}

} // namespace

BENCHMARK(plainKeystroke)->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond);
BENCHMARK(plainLoad)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(8);
BENCHMARK(parsedLoad)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(8);
BENCHMARK(keystroke)->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond);

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv); // text layout needs the font database
    RatioReporter reporter;
    reporter.addRatio("parsedLoad/100000/iterations:8", "plainLoad/100000/iterations:8");
    reporter.addRatio("keystroke/100000", "parsedLoad/100000/iterations:8");
    reporter.addRatio("keystroke/100000", "keystroke/10000");
    reporter.addRatio("plainKeystroke/100000", "plainKeystroke/10000");
    reporter.addRatio("keystroke/100000", "plainKeystroke/100000");
    return runWithRatios(argc, argv, reporter);
}
