// Backups of a parent project's projects, into a zip where a plug-in serves the format,
// and their restoring.

#include "project/parentproject.h"

#include "project/parentproject_p.h"
#include "project/project.h"
#include "project/projectfile.h"
#include "engine/extension.h"
#include "engine/extensionmanager.h"
#include "foundation/archive.h"
#include "foundation/filesystemarchive.h"
#include "foundation/filewatcher.h"
#include "foundation/interface.h"
#include "foundation/progress.h"

#include <QDateTime>

namespace Ovra {

namespace {

// "<root>/backup/<date and time>_<name>": the name of a backup made now.
QString backupName(const ParentProjectPrivate &root, const QString &name)
{
    QString base = root.onFileSystem() ? root.path() : root.archive->path();
    if (!base.isEmpty() && !base.endsWith(QLatin1Char('/')))
        base += QLatin1Char('/');
    return base + QLatin1String("backup/")
           + QDateTime::currentDateTime().toString(QStringLiteral("dd.MM.yyyy_h.m.s_ap_")) + name;
}

// The container of a backup: a zip from the extension that serves the format, the
// last one loaded standing, or null.
Archive *openZip(const QString &fileName, QIODevice::OpenMode mode)
{
    ArchiveExtension *zip = nullptr;
    for (Extension *extension : ExtensionManager::list(Extension::Container)) {
        if (QByteArray(extension->format()) == "ZIP")
            zip = static_cast<ArchiveExtension *>(extension);
    }
    return zip ? zip->open(fileName, mode) : nullptr;
}

// Every file below a directory of an archive, with its full name.
QStringList filesBelow(const Archive &archive, QString directory)
{
    if (!directory.endsWith(QLatin1Char('/')))
        directory += QLatin1Char('/');
    QStringList found;
    for (const QString &name : archive.entries(directory, QDir::Files | QDir::Hidden, QDir::Name))
        found << directory + name;
    for (const QString &name : archive.entries(directory, QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden, QDir::Name))
        found << filesBelow(archive, directory + name);
    return found;
}

} // namespace

bool ParentProject::backup(const QString &name, JobStats *stats)
{
    QString target = backupName(*d, name);
    Archive *container = openZip(target + QLatin1String(".zip"), QIODevice::WriteOnly);
    if (!container) {
        container = &FileSystemArchive::instance();
        container->addRef();
    }
    if (stats)
        stats->setMaximum(uint(d->projects.size()));
    const QList<Project *> projects = d->projects.keys();
    for (Project *project : projects) {
        project->saveAll(*container, target, true, nullptr);
        if (stats)
            stats->incrementValue();
    }
    container->release();
    return true;
}

bool ParentProject::restoreBackup(const QString &name, JobStats *stats)
{
    if (d->archive->isReadOnly())
        return false;
    QString source = backupName(*d, QString());
    source = source.left(source.lastIndexOf(QLatin1Char('/')) + 1) + name;

    Archive *container = nullptr;
    if (FileSystemArchive::instance().fileExists(source + QLatin1String(".zip")))
        container = openZip(source + QLatin1String(".zip"), QIODevice::ReadOnly);
    if (!container) {
        container = &FileSystemArchive::instance();
        container->addRef();
    }

    // Our own writes must not raise the question whether to reload.
    const QList<Project *> projects = d->projects.keys();
    auto pause = [&projects](bool paused) {
        for (Project *project : projects) {
            for (ProjectFile *file : project->files()) {
                if (auto *watched = dynamic_cast<FileWatchObject *>(file))
                    watched->pauseWatch(paused);
            }
        }
    };
    pause(true);

    const QStringList files = filesBelow(*container, source);
    if (stats)
        stats->setMaximum(uint(files.size() + projects.size()));
    QString root = basePath();
    if (root.endsWith(QLatin1Char('/')))
        root.chop(1);
    for (const QString &file : files) {
        Ovra::copyFile(*container, file, *d->archive, root + file.mid(source.size()));
        if (stats)
            stats->incrementValue();
    }
    for (Project *project : projects) {
        project->reload();
        if (stats)
            stats->incrementValue();
    }
    pause(false);
    container->release();
    if (Interface *host = Interface::instance())
        host->projectsRestored();
    return true;
}

} // namespace Ovra
