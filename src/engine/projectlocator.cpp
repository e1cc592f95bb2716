#include "engine/projectlocator.h"

#include "engine/extension.h"
#include "engine/extensionmanager.h"
#include "foundation/archive.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace Ovra {

struct ProjectLocatorPrivate
{
    QString directory;
    std::unique_ptr<ExtensionManager> manager;
};

ProjectLocator::ProjectLocator(const QString &pluginDirectory)
    : d(std::make_unique<ProjectLocatorPrivate>())
{
    d->directory = pluginDirectory.isEmpty() ? defaultPluginDirectory() : pluginDirectory;
    if (!d->directory.isEmpty())
        d->manager = std::make_unique<ExtensionManager>(d->directory);
}

ProjectLocator::~ProjectLocator() = default;

QString ProjectLocator::pluginDirectory() const
{
    return d->directory;
}

QStringList ProjectLocator::defaultPluginDirectories()
{
    const QString bin = QCoreApplication::applicationDirPath();
    return {QDir::cleanPath(bin + QStringLiteral("/../lib/plugins")),
            QDir::cleanPath(bin + QStringLiteral("/../lib/ovra/plugins"))};
}

QString ProjectLocator::defaultPluginDirectory()
{
    for (const QString &place : defaultPluginDirectories()) {
        if (QDir(place).exists())
            return place;
    }
    return QString();
}

QString ProjectLocator::projectFile(const QString &path, QString *error)
{
    QString unused;
    if (!error)
        error = &unused;
    const QFileInfo info(path);
    if (!info.exists()) {
        *error = QStringLiteral("no such file or directory");
        return QString();
    }
    if (!info.isDir())
        return info.absoluteFilePath();
    // A work: the project files in it and in its folders, no deeper (a work's backups and
    // sprite folders can be large; they are not walked).
    const QDir root(info.absoluteFilePath());
    QStringList found;
    QStringList folders{root.path()};
    for (const QFileInfo &folder : root.entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks))
        folders << folder.absoluteFilePath();
    for (const QString &folder : qAsConst(folders)) {
        for (const QFileInfo &file : QDir(folder).entryInfoList(QDir::Files)) {
            // A link to a project elsewhere is no project of this work.
            if (file.isSymLink() && !isInsideDirectory(file.absoluteFilePath(), root.path()))
                continue;
            if (EngineExtension::forProjectFile(file.absoluteFilePath()))
                found << file.absoluteFilePath();
        }
    }
    if (found.size() == 1)
        return found.first();
    found.sort();
    *error = found.isEmpty() ? QStringLiteral("no project file in this directory")
                             : QStringLiteral("more than one project file here: %1").arg(found.join(QStringLiteral(", ")));
    return QString();
}

Project *ProjectLocator::openProject(const QString &path, QString *error) const
{
    QString unused;
    if (!error)
        error = &unused;
    if (!d->manager) {
        *error = QStringLiteral("no engine plug-ins found");
        return nullptr;
    }
    const QString file = projectFile(path, error);
    if (file.isEmpty())
        return nullptr;
    EngineExtension *engine = EngineExtension::forProjectFile(file);
    if (!engine) {
        *error = QStringLiteral("no engine of %1 takes this file as a project").arg(d->directory);
        return nullptr;
    }
    QString reason;
    Project *project = engine->openProject(file, &reason);
    if (!project)
        *error = reason;
    return project;
}

} // namespace Ovra
