#pragma once

#include "foundation/global.h"

#include <QChar>
#include <QString>
#include <QTextCharFormat>

class QTextBlock;

namespace Ovra {

class CodeLink;
class CodeNode;
class RootCode;

// Where a parser reports what it sees in a line: the painting of its tokens, its
// messages, its parentheses and links. Columns count from 0; `end` is exclusive.
class OVRA_EXPORT CodeParserSyntax
{
public:
    // Ten token types index one table of formats shared by all documents. Only the
    // comment has a meaning of its own: it alone doesn't make a line count as content.
    // What the other numbers stand for is the parser's business.
    enum TokenType {
        Comment = 1,
        TokenTypeCount = 10
    };

    virtual void token(TokenType type, int start, int end) = 0;
    virtual void error(TokenType type, const QString &text, int start, int end) = 0;
    virtual void deprecated(TokenType type, const QString &text, int start, int end) = 0;
    virtual void warning(TokenType type, const QString &text, int start, int end) = 0;
    virtual void parenthesis(bool opening, QChar character, int position) = 0;
    // The line takes the link over.
    virtual void link(CodeLink *link) = 0;
    virtual ~CodeParserSyntax() = default;

    // The format of a token type, as all documents paint it.
    static QTextCharFormat format(int type);
    // Changes the format of a token type for all documents; engines may do so at start.
    static void setFormat(int type, const QTextCharFormat &format);
    // The format a token type has before anyone changes it.
    static QTextCharFormat defaultFormat(int type);
};

// An engine's reader of one line of its language.
class OVRA_EXPORT CodeParser
{
public:
    virtual ~CodeParser() = default;

    // Reads `text` (the line without its end) of `block`. `oldNode` is the line's node
    // so far, already out of the document-order list; `previous` is the node a new one
    // must follow, never null. `syntax` is null when the call only brings the tree up
    // to date. Returns `oldNode` to keep it, a new node, or null for a line without one.
    virtual CodeNode *parse(const QString &text, const QTextBlock &block, CodeNode *oldNode,
                            CodeNode *previous, RootCode *root, CodeParserSyntax *syntax) = 0;
};

} // namespace Ovra
