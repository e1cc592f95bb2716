#pragma once

#include "code/codeparser.h"

// The line reader of the sample engine's two languages. Both share the comment marker
// '#', the version line "@version N" and the list syntax "(a, b)"; definition files
// (.def, .ovp) have group headers and key lines, animation files (.oan) animations,
// frames and boxes. Each line is read on its own: errors, warnings and deprecations go
// to the document's messages with their columns, and a line with an error has no node.
class SampleParser : public Ovra::CodeParser
{
public:
    enum Language { Definitions, Animations };

    explicit SampleParser(Language language) : m_language(language) {}

    Language language() const { return m_language; }

    Ovra::CodeNode *parse(const QString &text, const QTextBlock &block, Ovra::CodeNode *oldNode,
                          Ovra::CodeNode *previous, Ovra::RootCode *root, Ovra::CodeParserSyntax *syntax) override;

private:
    Language m_language;
};
