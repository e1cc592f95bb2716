#include "project/parentproject.h"

#include "foundation/archive.h"

namespace Ovra {

struct ParentProjectPrivate
{
    QString basePath;
    Archive *archive = nullptr; // counted
    uint refCount = 0;
    QList<Project *> projects;
};

ParentProject::ParentProject(const QString &basePath, Archive &archive)
    : d(new ParentProjectPrivate)
{
    d->basePath = basePath;
    d->archive = &archive;
    archive.addRef();
}

ParentProject::~ParentProject()
{
    d->archive->release();
}

Archive &ParentProject::archive() const
{
    return *d->archive;
}

QString ParentProject::basePath() const
{
    return d->basePath;
}

uint ParentProject::refCount() const
{
    return d->refCount;
}

QList<Project *> ParentProject::openedProjects() const
{
    return d->projects;
}

void ParentProject::addRef(Project *project)
{
    ++d->refCount;
    d->projects.append(project);
}

void ParentProject::removeProject(Project *project)
{
    if (!d->projects.removeOne(project))
        return;
    if (--d->refCount == 0)
        allProjectsClosed();
}

Engine *ParentProject::engine() const
{
    return nullptr;
}

void ParentProject::fileAdded(ProjectFile *)
{
}

void ParentProject::fileOpened(ProjectFile *)
{
}

void ParentProject::fileClosed(ProjectFile *)
{
}

void ParentProject::fileSaved(ProjectFile *)
{
}

} // namespace Ovra
