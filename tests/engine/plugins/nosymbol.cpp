// A library that looks like a plug-in but has no entry point.
#include <QtGlobal>

extern "C" Q_DECL_EXPORT int notTheEntryPoint()
{
    return 42;
}
