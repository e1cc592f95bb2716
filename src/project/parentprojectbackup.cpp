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
#include <QDirIterator>
#include <QFileInfo>
#include <QSet>
#include <QStorageInfo>

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

// The extension that serves zips, the last one loaded standing, or null.
ArchiveExtension *zipExtension()
{
    ArchiveExtension *zip = nullptr;
    for (Extension *extension : ExtensionManager::list(Extension::Container)) {
        if (QByteArray(extension->format()) == "ZIP")
            zip = static_cast<ArchiveExtension *>(extension);
    }
    return zip;
}

// The container of a backup: a zip from the extension that serves the format, or null.
Archive *openZip(const QString &fileName, QIODevice::OpenMode mode)
{
    ArchiveExtension *zip = zipExtension();
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

// A backup comes back only whole, and only when nothing of it can land outside the work
// or fill its disk: every entry is judged before the first byte is written.
//
// The bound on inflation: deflate packs at most about 1030 to 1, and only runs of one
// byte. A work's files are text (definitions, scripts: some 3 to 10 to 1 packed) and
// pictures and sounds their own codecs packed already (close to 1 to 1), so a backup that
// inflates more than 200 times its stored size was made to fill a disk, not taken of a
// work. Backups below 1 MiB inflated can't hurt any disk; there a few blank files may
// pack far better, and the ratio isn't looked at.
constexpr qint64 maximumInflation = 200;
constexpr qint64 inflationFloor = qint64(1) << 20;

struct BackupCheck
{
    QString refusal;
    qint64 size = 0;       // the bytes that would be written
    qint64 storedSize = 0; // the bytes they take in the container
    bool packed = false;   // the container tells the stored sizes
};

// The entries of a container that tells how it stores them (a zip).
void checkStoredEntries(const StoredEntries &container, BackupCheck &check)
{
    check.packed = true;
    QSet<QString> seen;
    for (const StoredEntries::Entry &entry : container.storedEntries()) {
        const QString problem = entryNameProblem(entry.name);
        if (entry.link)
            check.refusal = QStringLiteral("The entry '%1' is a symbolic link").arg(entry.name);
        else if (!problem.isEmpty())
            check.refusal = QStringLiteral("The entry '%1' %2").arg(entry.name, problem);
        else if (!entry.directory && seen.contains(QDir::cleanPath(entry.name)))
            check.refusal = QStringLiteral("The entry '%1' is stored twice").arg(entry.name);
        if (!check.refusal.isEmpty())
            return;
        seen.insert(QDir::cleanPath(entry.name));
        check.size += entry.size;
        check.storedSize += entry.storedSize;
    }
}

// A backup kept as a folder: links in it are never copied, and none may lead out of it.
void checkFolder(const QString &source, BackupCheck &check)
{
    QDirIterator it(source, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        const QFileInfo info = it.fileInfo();
        const QString name = QDir(source).relativeFilePath(info.filePath());
        if (info.isSymLink() && !isInsideDirectory(info.filePath(), source)) {
            check.refusal = QStringLiteral("The entry '%1' is a symbolic link to a place outside the backup").arg(name);
            return;
        }
        if (!info.isSymLink() && info.isFile())
            check.size += info.size();
    }
}

BackupCheck checkBackup(const Archive &container, const QString &source, const QStringList &files, const QString &root)
{
    BackupCheck check;
    if (const auto *stored = dynamic_cast<const StoredEntries *>(&container))
        checkStoredEntries(*stored, check);
    else
        checkFolder(source, check);
    for (int i = 0; check.refusal.isEmpty() && i < files.size(); ++i) {
        const QString relative = files.at(i).mid(source.size() + 1);
        if (!isInsideDirectory(root + QLatin1Char('/') + relative, root))
            check.refusal = QStringLiteral("The entry '%1' would be written through a symbolic link that leads out of the work").arg(relative);
    }
    if (!check.refusal.isEmpty())
        return check;
    const QStorageInfo disk(root);
    if (disk.isValid() && check.size > disk.bytesAvailable()) {
        check.refusal = QStringLiteral("The backup inflates to %1 bytes, more than the %2 bytes free on the disk")
                            .arg(check.size)
                            .arg(disk.bytesAvailable());
    } else if (check.packed && check.size > inflationFloor && check.size / maximumInflation > check.storedSize) {
        check.refusal = QStringLiteral("The backup inflates to %1 bytes from %2: no backup of a work packs that well")
                            .arg(check.size)
                            .arg(check.storedSize);
    }
    return check;
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
    if (FileSystemArchive::instance().fileExists(source + QLatin1String(".zip"))) {
        container = openZip(source + QLatin1String(".zip"), QIODevice::ReadOnly);
        // A zip that the zip extension can't read is damaged, not missing.
        if (!container && zipExtension()) {
            if (stats)
                stats->error(QStringLiteral("The backup '%1' can't be read as a zip").arg(name));
            return false;
        }
    }
    if (!container) {
        container = &FileSystemArchive::instance();
        container->addRef();
    }
    QString root = basePath();
    if (root.endsWith(QLatin1Char('/')))
        root.chop(1);
    const QStringList files = filesBelow(*container, source);
    const BackupCheck check = checkBackup(*container, source, files, root);
    if (!check.refusal.isEmpty()) {
        container->release();
        if (stats)
            stats->error(check.refusal);
        return false;
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

    if (stats)
        stats->setMaximum(uint(files.size() + projects.size()));
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
