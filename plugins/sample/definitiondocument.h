#pragma once

// A definition file of the sample engine (".def"), or its project file (".ovp"): group
// headers "[Kind: name]" with "key = value" lines whose types come from the language's
// key table. The document owns its parser.
#include "code/codedocument.h"

#include <memory>

class SampleParser;

class DefinitionDocument : public Ovra::CodeDocument
{
    Q_OBJECT
public:
    explicit DefinitionDocument(short fileType = 0);
    ~DefinitionDocument() override;

    // Values one level under their group; with `indentOnly` false also "key = value",
    // lists as "(a, b)" and headers as "[Kind: name]".
    void formatLines(int firstBlock, int lastBlock, bool indentOnly) override;
    const char *fileExtension() const override { return "def"; }

private:
    std::unique_ptr<SampleParser> m_parser;
};
