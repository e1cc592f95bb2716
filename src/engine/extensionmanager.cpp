#include "engine/extensionmanager.h"

#include <QDir>
#include <QLibrary>

namespace Ovra {
namespace {

// A loaded plug-in. Unloading happens when the manager ends, after its extensions went.
class PluginLibrary : public QLibrary
{
public:
    explicit PluginLibrary(const QString &fileName) : QLibrary(fileName) {}
};

QList<Extension *> *extensionLists()
{
    static QList<Extension *> lists[Extension::TypeCount];
    return lists;
}

QList<PluginLibrary *> &libraries()
{
    static QList<PluginLibrary *> loaded;
    return loaded;
}

// The part of a plug-in's name before the suffix; this build adds nothing.
const char PluginSuffix[] = "";
#if defined(Q_OS_WIN)
const char LibraryExtension[] = "dll";
#elif defined(Q_OS_MACOS)
const char LibraryExtension[] = "dylib";
#else
const char LibraryExtension[] = "so";
#endif

} // namespace

QString ExtensionManager::nameFilter()
{
    return QStringLiteral("*%1.%2").arg(QLatin1String(PluginSuffix), QLatin1String(LibraryExtension));
}

ExtensionManager::ExtensionManager(const QString &directory)
{
    const QStringList names =
        QDir(directory).entryList({nameFilter()}, QDir::Files | QDir::NoDot | QDir::NoDotDot);
    for (const QString &name : names) {
        auto *library = new PluginLibrary(directory + QLatin1Char('/') + name);
        // A file that doesn't load, or loads without the entry point, is no plug-in.
        auto registerExtension =
            reinterpret_cast<RegisterExtensionFunction>(library->resolve("registerExtension"));
        if (!registerExtension) {
            delete library;
            continue;
        }
        registerExtension(this);
        libraries().append(library);
    }
}

ExtensionManager::~ExtensionManager()
{
    // Extensions first, newest first: their code lives in the libraries.
    QList<Extension *> *lists = extensionLists();
    for (int type = 0; type < Extension::TypeCount; ++type) {
        QList<Extension *> &list = lists[type];
        while (!list.isEmpty())
            delete list.takeLast();
    }
    QList<PluginLibrary *> &loaded = libraries();
    while (!loaded.isEmpty()) {
        PluginLibrary *library = loaded.takeLast();
        library->unload();
        delete library;
    }
}

void ExtensionManager::add(Extension *extension)
{
    const Extension::Type type = extension->type();
    if (type < 0 || type >= Extension::TypeCount)
        return;
    QList<Extension *> &list = extensionLists()[type];
    // Pointers, not texts, are compared: this only catches one registration made twice.
    for (const Extension *present : qAsConst(list)) {
        const bool same = type == Extension::Named ? present->name() == extension->name()
                                                   : present->format() == extension->format();
        if (same)
            return;
    }
    list.append(extension);
}

QList<Extension *> &ExtensionManager::list(Extension::Type type)
{
    static QList<Extension *> none;
    if (type < 0 || type >= Extension::TypeCount) {
        none.clear();
        return none;
    }
    return extensionLists()[type];
}

} // namespace Ovra
