// Saving a parent project: the changed files of its projects, or all of it to a new place.

#include "project/parentproject.h"

#include "project/parentproject_p.h"
#include "project/project.h"
#include "project/projectfile.h"
#include "editors/editor.h"
#include "foundation/archive.h"
#include "foundation/filesystemarchive.h"
#include "foundation/interface.h"
#include "foundation/progress.h"

namespace Ovra {

void ParentProject::save(ProgressProvider *progress)
{
    Job *main = progress ? progress->start(tr("Saving..."), 0) : nullptr;
    if (main)
        main->setMaximum(uint(d->projects.size()));
    const QList<Project *> projects = d->projects.keys();
    for (Project *project : projects) {
        for (ProjectFile *file : project->files()) {
            if (!file->isModified() || !file->canSave())
                continue;
            if (file->hasArchive() && file->fileExists() && file->archive().isWritable(file->fileName())) {
                Archive &archive = file->archive();
                uint flags = 0;
                Job *job = nullptr;
                if ((file->capabilities() & ProjectFile::AsynchronousSave) && progress) {
                    flags = ProjectFile::Asynchronous;
                    job = progress->start(tr("Saving") + QLatin1Char(' ') + file->displayName(), 0);
                    if (job)
                        job->setAsynchronous(true);
                }
                file->toFile(archive, file->fileName(), flags, job);
            } else if (Interface *host = Interface::instance()) {
                // No place to write it: the user picks one through the file's editor.
                const Project::FileTypes types = project->fileID(file);
                int type = -1;
                for (int bit = 0; bit < 32 && type < 0; ++bit) {
                    if (types & (1u << bit))
                        type = bit;
                }
                if (FileEditor *editor = host->editorForFile(file, type))
                    FileEditor::saveFileAs(file, editor, host);
            }
        }
        if (main)
            main->incrementValue();
    }
}

bool ParentProject::saveAs(const QString &path, JobStats *stats)
{
    FileSystemArchive &disk = FileSystemArchive::instance();
    if (d->projects.size() == 1 && !isGame()) {
        // One stand-alone project: its files go next to the new main file.
        Project *project = d->projects.firstKey();
        const QString directory = disk.absoluteFilePath(path);
        if (stats)
            stats->setMaximum(1);
        project->saveAll(disk, directory + QLatin1Char('/'), false, nullptr);
        if (ProjectFile *main = project->mainFile())
            main->toFile(disk, path, 0, nullptr);
        // The tree now stands on the new directory.
        while (!d->m_children.isEmpty())
            d->removeChild(d.get(), d->m_children.size() - 1);
        d->rootEntries.clear();
        d->m_name = withoutTrailingSlash(directory);
        d->baseParts = directory.split(QLatin1Char('/'), Qt::SkipEmptyParts);
        BasePath *node = d.get();
        const QString relative = project->basePath();
        if (!relative.isEmpty())
            node = addPath(relative, NoListing, QStringList());
        d->projects[project] = node ? node : d.get();
        enterFiles(project, node ? node : d.get());
        if (stats)
            stats->incrementValue();
        return true;
    }
    // A whole game: every file below the root, then the projects' own saves.
    QString target = path;
    if (!target.endsWith(QLatin1Char('/')))
        target += QLatin1Char('/');
    QStringList names;
    QList<const BasePath *> open{d.get()};
    while (!open.isEmpty()) {
        const BasePath *node = open.takeFirst();
        for (const Path *child : node->children()) {
            if (child->isFile())
                names << child->path().mid(basePath().size());
            open << base(child);
        }
    }
    if (stats)
        stats->setMaximum(uint(names.size() + d->projects.size()));
    for (const QString &name : qAsConst(names)) {
        copyFile(name, target);
        if (stats)
            stats->incrementValue();
    }
    const QList<Project *> projects = d->projects.keys();
    for (Project *project : projects) {
        project->saveAll(disk, target, false, nullptr);
        if (stats)
            stats->incrementValue();
    }
    return true;
}

} // namespace Ovra
