#pragma once

// The shape of the text-language fuzz targets: the input is a document's text, a zero
// byte, and a script of edits. The text is loaded, the edits run one by one as a person
// would make them (keystrokes, new lines, deletions, undo, redo, node edits), and after
// each one the tree the document keeps up to date must be the one a fresh parse of its
// text builds. A difference aborts, and the sanitizers watch the memory all along.
#include "code/codedocument.h"
#include "code/codenode.h"
#include "code/namedcode.h"
#include "code/rootcode.h"
#include "foundation/messages.h"
#include "../tests/code/treeshape.h"

#include <QGuiApplication>
#include <QTextBlock>
#include <QTextCursor>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace TextEdits {

// The documents need an application for their text layout; it lives for the whole run.
inline void startApplication()
{
    static int argc = 1;
    static char name[] = "fuzz";
    static char *argv[] = {name, nullptr};
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static QGuiApplication application(argc, argv);
}

// The tree as text, as the property test compares it.
inline QStringList shape(Ovra::CodeDocument &document)
{
    return codeTreeShape(document);
}

// Reads the edit script a byte at a time; zero once it is used up.
struct Script
{
    const uint8_t *data;
    size_t size;
    size_t at = 0;
    bool done() const { return at >= size; }
    int next(int bound) { return bound <= 0 || done() ? 0 : data[at++] % bound; }
};

template <typename Document>
int run(const uint8_t *data, size_t size, const QStringList &vocabulary, const char *keys)
{
    startApplication();
    size_t split = 0;
    while (split < size && data[split] != 0)
        ++split;
    Document document;
    document.fromString(QString::fromUtf8(reinterpret_cast<const char *>(data), int(split)));
    Script script{data + qMin(split + 1, size), size - qMin(split + 1, size)};
    const int keyCount = int(qstrlen(keys));
    // A bounded number of edits keeps one input fast; the corpus grows the rest.
    for (int step = 0; step < 24 && !script.done(); ++step) {
        QTextCursor cursor(document.findBlockByNumber(script.next(document.blockCount())));
        const QString line = vocabulary.at(script.next(vocabulary.size()));
        switch (script.next(7)) {
        case 0:
            cursor.insertText(line + QLatin1Char('\n'));
            break;
        case 1:
            cursor.movePosition(QTextCursor::Right, QTextCursor::MoveAnchor, script.next(cursor.block().length()));
            cursor.insertText(QString(QChar(keys[script.next(keyCount)])));
            break;
        case 2:
            cursor.movePosition(QTextCursor::NextBlock, QTextCursor::KeepAnchor, 1 + script.next(3));
            cursor.removeSelectedText();
            break;
        case 3:
            cursor.movePosition(QTextCursor::Right, QTextCursor::MoveAnchor, script.next(cursor.block().length()));
            cursor.deleteChar();
            break;
        case 4:
            document.undo();
            break;
        case 5:
            document.redo();
            break;
        default: {
            document.beginChange();
            Ovra::CodeNode *node = document.nodeInBlock(document.findBlockByNumber(script.next(document.blockCount())));
            if (!node)
                document.insertBefore(nullptr, line, true);
            else if (script.next(2))
                document.insertAfter(node, line, true);
            else
                node->remove(false);
            document.endChange();
            break;
        }
        }
        Document fresh;
        fresh.fromString(document.toString());
        if (shape(document) != shape(fresh)) {
            std::fprintf(stderr, "the tree after edit %d differs from a fresh parse\n", step);
            std::abort();
        }
    }
    return 0;
}

} // namespace TextEdits
