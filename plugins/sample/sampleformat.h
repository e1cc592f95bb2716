#pragma once

// Indenting and formatting of the sample engine's languages, for the documents'
// formatLines: values under their group, frames under their animation, boxes under
// their frame, and regular spacing that never changes what a line means.
#include "sampleparser.h"

#include <QString>

namespace Ovra {
class CodeDocument;
class CodeNode;
} // namespace Ovra

namespace SampleFormat {

// Blanks collapsed, none around '=' and inside parentheses, one behind each comma.
QString normalFields(const QString &code);
// Re-indents (and with `indentOnly` false also formats) the blocks from `firstBlock` to
// `lastBlock`, as one undo step; only lines that change are touched.
void formatLines(Ovra::CodeDocument *document, SampleParser::Language language, int firstBlock, int lastBlock,
                 bool indentOnly);

} // namespace SampleFormat
