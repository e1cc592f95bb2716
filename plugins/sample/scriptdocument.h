#pragma once

// A script of a project (Lua). The engine knows no more of the language than its
// comments and brackets, which is what the editor needs to paint and match them.
#include "code/codedocument.h"

class ScriptParser : public Ovra::CodeParser
{
public:
    Ovra::CodeNode *parse(const QString &text, const QTextBlock &block, Ovra::CodeNode *oldNode,
                          Ovra::CodeNode *previous, Ovra::RootCode *root, Ovra::CodeParserSyntax *syntax) override;
};

class ScriptDocument : public Ovra::CodeDocument
{
    Q_OBJECT
public:
    ScriptDocument();

    const char *fileExtension() const override { return "lua"; }
    // Scripts keep the indentation their authors gave them; formatting only drops the
    // blanks at the ends of lines.
    void formatLines(int firstBlock, int lastBlock, bool indentOnly) override;

private:
    ScriptParser m_parser;
};
