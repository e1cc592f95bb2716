#pragma once

#include "foundation/global.h"

#include <QList>
#include <QString>
#include <QTextBlock>
#include <QTextBlockUserData>
#include <QVector>

namespace Ovra {

class CodeDocumentPrivate;
class CodeNode;

// Something shown beside a line (a bookmark, a breakpoint), kept by whoever made it.
// The document tells it where it stands and when its line goes.
class OVRA_EXPORT CodeMark
{
public:
    virtual ~CodeMark() = default;
    virtual void setLine(int line, const QTextBlock &block) = 0;
    virtual void blockRemoved() = 0;
};

// A reference from a span of a line to somewhere else, found by the parser; the line
// owns it.
class OVRA_EXPORT CodeLink
{
public:
    virtual ~CodeLink() = default;
};

struct CodeBlockDataPrivate;

// What the document keeps about one line: its node, its messages, parentheses,
// folding level and marks.
class OVRA_EXPORT CodeBlockData : public QTextBlockUserData
{
public:
    struct SyntaxMessage
    {
        enum Kind { Error = 0, Deprecation = 1, Warning = 2, Other = 3 };
        int kind = Error;
        int start = 0;
        int end = 0;
        QString text;
    };

    struct Parenthesis
    {
        enum Type { Opening = 0, Closing = 1 };
        int type = Opening;
        QChar character;
        int position = -1;
    };

    ~CodeBlockData() override;

    CodeNode *node() const;
    bool isFolded() const;
    void setFolded(bool folded);
    // The parser reported something in the line besides comments.
    bool isParsed() const;
    uint foldingIndent() const;
    QTextBlock block() const;
    const QList<CodeMark *> &marks() const;
    const QList<CodeLink *> &links() const;
    const QVector<SyntaxMessage> &syntaxMessages() const;
    const QVector<Parenthesis> &parenthesis() const;

private:
    friend class CodeDocument;
    friend class CodeDocumentPrivate;
    friend class CodeBlockDataInOne;
    // Made by the document only, with the private part in the same allocation.
    explicit CodeBlockData(CodeBlockDataPrivate *data);
    CodeBlockDataPrivate *const d;
};

} // namespace Ovra
