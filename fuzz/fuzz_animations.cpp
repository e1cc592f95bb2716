#include "textedits.h"

#include "animationdocument.h"

// The animation language: animations, their frames with fields and flags, the boxes of
// a frame, and half-typed lines of each.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const QStringList lines{
        QStringLiteral("animation 0 \"Idle\""),   QStringLiteral("animation 10"),
        QStringLiteral("    frame (0, 0) delay=8"), QStringLiteral("    frame (10, 1) delay=6 loop"),
        QStringLiteral("    frame (1, 2) offset=(3, -4) flip=h scale=(2, 1) angle=90 blend=add"),
        QStringLiteral("        body (-8, -50, 8, 0)"), QStringLiteral("        hit (0, -40, 20, -30)"),
        QStringLiteral("# a comment"),             QStringLiteral("@version 1"), QString(),
        QStringLiteral("    frame ("),             QStringLiteral("animation"),
    };
    return TextEdits::run<AnimationDocument>(data, size, lines, "()=, \"#adfl1-");
}
