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

} // namespace Ovra
