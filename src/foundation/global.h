#pragma once

#include <QtCore/qglobal.h>

#if defined(OVRA_LIBRARY)
#  define OVRA_EXPORT Q_DECL_EXPORT
#else
#  define OVRA_EXPORT Q_DECL_IMPORT
#endif

namespace Ovra {

// The library's version as "major.minor.patch".
OVRA_EXPORT const char *version();

// Which rules a codec follows. The library's file functions keep, by default, the reading and
// writing rules that existing works and tests depend on, odd ones included (a WAV found by a
// byte search, an Ogg stream without its end when the length isn't a whole block, a palette
// that drops an entry). Our own programs ask for Complete: every value written and read back
// whole, in the layout that other programs expect.
enum class CodecRules {
    Designed,
    Complete,
};

} // namespace Ovra
