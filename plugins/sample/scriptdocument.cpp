#include "scriptdocument.h"

#include "project/project.h"

#include <QTextBlock>
#include <QTextCursor>

using namespace Ovra;

CodeNode *ScriptParser::parse(const QString &text, const QTextBlock &, CodeNode *, CodeNode *, RootCode *,
                              CodeParserSyntax *syntax)
{
    if (!syntax)
        return nullptr;
    QChar quote;
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (!quote.isNull()) {
            if (c == QLatin1Char('\\'))
                ++i;
            else if (c == quote)
                quote = QChar();
            continue;
        }
        if (c == QLatin1Char('"') || c == QLatin1Char('\'')) {
            quote = c;
        } else if (c == QLatin1Char('-') && text.midRef(i, 2) == QLatin1String("--")) {
            syntax->token(CodeParserSyntax::Comment, i, text.size());
            break;
        } else if (c == QLatin1Char('(') || c == QLatin1Char('[') || c == QLatin1Char('{')) {
            syntax->parenthesis(true, c, i);
        } else if (c == QLatin1Char(')') || c == QLatin1Char(']') || c == QLatin1Char('}')) {
            syntax->parenthesis(false, c, i);
        }
    }
    return nullptr;
}

ScriptDocument::ScriptDocument()
    : CodeDocument(Project::Scripts)
{
    setParser(&m_parser);
}

void ScriptDocument::formatLines(int firstBlock, int lastBlock, bool indentOnly)
{
    if (indentOnly)
        return;
    beginChange();
    for (QTextBlock block = findBlockByNumber(firstBlock); block.isValid() && block.blockNumber() <= lastBlock;
         block = block.next()) {
        const QString text = block.text();
        int end = text.size();
        while (end > 0 && text.at(end - 1).isSpace())
            --end;
        if (end == text.size())
            continue;
        QTextCursor cursor(block);
        cursor.setPosition(block.position() + end);
        cursor.setPosition(block.position() + text.size(), QTextCursor::KeepAnchor);
        cursor.removeSelectedText();
    }
    endChange();
}
