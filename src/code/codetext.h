#pragma once

#include "foundation/global.h"

#include <QString>

namespace Ovra {

// The text forms of code files on disk, with tab stops every four columns.

// Replaces every tab by the blanks up to the next tab stop.
OVRA_EXPORT QString expandTabs(const QString &text);

// The text as it is written to disk: every LF becomes CR LF, and with `spacesToTabs`
// runs of blanks that reach a tab stop become tabs. A single blank right before a tab
// stop stays a blank.
OVRA_EXPORT QString fileText(const QString &text, bool spacesToTabs);

// The new line of a node whose text changes from `oldLine` to `text`. A trailing
// comment (from `commentMarker` on) always survives. With `preserveFormatting` the words
// of `text` take the places of the old words, so the blanks between the columns stay.
OVRA_EXPORT QString changedLine(const QString &oldLine, const QString &text,
                                const QString &commentMarker, bool preserveFormatting);

} // namespace Ovra
