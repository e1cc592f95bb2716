#include "textedits.h"

#include "definitiondocument.h"

// The definition language: groups, keys with values of every type, lists, comments and
// the lines a person breaks while typing them.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const QStringList lines{
        QStringLiteral("[Character: knight]"), QStringLiteral("[Move: punch]"), QStringLiteral("[Project]"),
        QStringLiteral("    life = 1000"),     QStringLiteral("    walk = (2.4, -2.2)"),
        QStringLiteral("    name = \"Sir # not a comment\""), QStringLiteral("# a comment"),
        QStringLiteral("@version 1"),          QStringLiteral("    damage = 40 # trailing"), QString(),
        QStringLiteral("broken = ("),          QStringLiteral("[Move: kick"),
    };
    return TextEdits::run<DefinitionDocument>(data, size, lines, "[]=(), \":#ab1.-");
}
