#pragma once

// The way a host gets from what a user names to an open project: the engine plug-ins of
// one directory loaded, the project file a path means found, and that project opened
// through the engine that takes it.
#include "foundation/global.h"

#include <QString>
#include <QStringList>

#include <memory>

namespace Ovra {

class Project;
struct ProjectLocatorPrivate;

class OVRA_EXPORT ProjectLocator
{
public:
    // Loads the plug-ins of `pluginDirectory`; an empty one means the first of the default
    // places that exists, and none at all when none does. They stay loaded, for every
    // user of ExtensionManager::list(), while the locator lives. Like ExtensionManager,
    // whose extensions are the program's, one locator at a time.
    explicit ProjectLocator(const QString &pluginDirectory = QString());
    ~ProjectLocator();
    Q_DISABLE_COPY(ProjectLocator)

    // The directory whose plug-ins were loaded, as given; empty when there was none.
    QString pluginDirectory() const;

    // Where plug-ins are looked for by default, in order: ../lib/plugins, the place in a
    // build, and ../lib/ovra/plugins, the place in an installation, both relative to the
    // program's directory. Cleaned absolute paths; they need not exist.
    static QStringList defaultPluginDirectories();
    // The first of those that exists, or empty.
    static QString defaultPluginDirectory();

    // The project file a path means: the file itself, or the one project file of a loaded
    // engine in a directory or right below it. Empty with the reason when there is none
    // ("no such file or directory", "no project file in this directory") or more than one
    // ("more than one project file here: A, B", sorted).
    static QString projectFile(const QString &path, QString *error);

    // The project of the path, loaded and entered into its work; null with the reason. The
    // caller releases it (Project::release) before the locator ends.
    Project *openProject(const QString &path, QString *error) const;

private:
    std::unique_ptr<ProjectLocatorPrivate> d;
};

} // namespace Ovra
