#pragma once

#include "engine/extension.h"

#include <QList>
#include <QString>

namespace Ovra {

class ExtensionManager;

// The one entry point of a plug-in, exported unmangled:
//     extern "C" Q_DECL_EXPORT void registerExtension(Ovra::ExtensionManager *manager)
// It calls ExtensionManager::add() once for each of its extensions.
using RegisterExtensionFunction = void (*)(ExtensionManager *);

// Loads the plug-ins of a directory and keeps the extensions they register, by kind.
// Extensions and libraries stay until the manager ends.
class OVRA_EXPORT ExtensionManager
{
public:
    explicit ExtensionManager(const QString &directory);
    ~ExtensionManager();
    ExtensionManager(const ExtensionManager &) = delete;
    ExtensionManager &operator=(const ExtensionManager &) = delete;

    // Adds an extension unless one of its kind serves the very same format string
    // (the name string for kind 16): the same registration twice is dropped, silently.
    static void add(Extension *extension);
    static QList<Extension *> &list(Extension::Type type);

    // The file names the manager tries as plug-ins.
    static QString nameFilter();
};

} // namespace Ovra
