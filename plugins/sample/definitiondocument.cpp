#include "definitiondocument.h"

#include "sampleformat.h"
#include "sampleparser.h"

DefinitionDocument::DefinitionDocument(short fileType)
    : CodeDocument(fileType)
    , m_parser(new SampleParser(SampleParser::Definitions))
{
    setParser(m_parser.get());
}

// The base's destructor drops the tree and forgets the parser before it clears the
// text, so the parser may go first.
DefinitionDocument::~DefinitionDocument() = default;

void DefinitionDocument::formatLines(int firstBlock, int lastBlock, bool indentOnly)
{
    SampleFormat::formatLines(this, SampleParser::Definitions, firstBlock, lastBlock, indentOnly);
}
