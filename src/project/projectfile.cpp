#include "project/projectfile.h"

#include "foundation/archive.h"
#include "foundation/interface.h"
#include "project/parentproject.h"
#include "project/project.h"

#include <QMap>

namespace Ovra {

struct ProjectFilePrivate
{
    Project *project = nullptr;
    Archive *archive = nullptr; // counted
    QMap<QString, QVariant> options;
    uint refCount = 1;

    void bind(Archive &to)
    {
        if (archive == &to)
            return;
        to.addRef();
        if (archive)
            archive->release();
        archive = &to;
    }
};

ProjectFile::ProjectFile()
    : d(new ProjectFilePrivate)
{
}

ProjectFile::~ProjectFile()
{
    if (d->archive)
        d->archive->release();
}

void ProjectFile::release()
{
    if (--d->refCount == 0)
        free();
}

void ProjectFile::addRef()
{
    ++d->refCount;
}

uint ProjectFile::refCount() const
{
    return d->refCount;
}

Archive &ProjectFile::archive() const
{
    Q_ASSERT_X(d->archive, "ProjectFile::archive", "the file was never loaded or saved");
    return *d->archive;
}

bool ProjectFile::hasArchive() const
{
    return d->archive != nullptr;
}

Project *ProjectFile::project() const
{
    return d->project;
}

void ProjectFile::setProject(Project *project)
{
    d->project = project;
}

void ProjectFile::bindArchive(Archive &archive)
{
    d->bind(archive);
}

const char *ProjectFile::fileExtension() const
{
    return nullptr;
}

ProjectFile::Capabilities ProjectFile::capabilities() const
{
    return {};
}

bool ProjectFile::canSave() const
{
    return false;
}

bool ProjectFile::isModified() const
{
    return false;
}

void ProjectFile::reset()
{
}

bool ProjectFile::toFile(Archive &archive, const QString &, uint flags, JobStats *)
{
    // Only a save that moves the file to another archive is news for the parent:
    // it rescans its tree at a real change of place, not at every save.
    if ((flags & Foreign) || d->archive == &archive)
        return false;
    d->bind(archive);
    if (d->project && d->project->parentProject())
        d->project->parentProject()->fileSaved(this);
    return false;
}

bool ProjectFile::fromFile(Archive &archive, const QString &, uint flags, JobStats *)
{
    if (!(flags & Foreign))
        d->bind(archive);
    if (d->project && d->project->parentProject())
        d->project->parentProject()->fileOpened(this);
    return false;
}

QString ProjectFile::fileName() const
{
    return QString();
}

QString ProjectFile::displayName() const
{
    return fileName().split(QLatin1Char('/')).constLast();
}

void ProjectFile::beginChange()
{
}

void ProjectFile::endChange()
{
}

void ProjectFile::undo()
{
}

void ProjectFile::redo()
{
}

QVariant ProjectFile::option(const QString &name) const
{
    const QVariant own = d->options.value(name);
    if (own.isValid())
        return own;
    if (d->project)
        return d->project->option(name);
    if (Interface *host = Interface::instance())
        return host->option(name, QVariant());
    return QVariant();
}

QVariant ProjectFile::option(const QString &name, const QVariant &defaultValue) const
{
    const QVariant value = option(name);
    return value.isValid() ? value : defaultValue;
}

void ProjectFile::setOption(const QString &name, const QVariant &value, bool toProject, bool toHost)
{
    if (toProject && d->project) {
        d->project->setOption(name, value, toHost);
        return;
    }
    if (value.isNull())
        d->options.remove(name);
    else
        d->options.insert(name, value);
}

QAbstractItemModel *ProjectFile::model()
{
    return nullptr;
}

bool ProjectFile::fileExists() const
{
    return d->archive && d->archive->fileExists(fileName());
}

bool ProjectFile::isReadOnly() const
{
    const QString name = fileName();
    // A file that was never loaded or saved has no place yet that could refuse it.
    if (name.isEmpty() || !d->archive)
        return false;
    return !d->archive->isWritable(name);
}

} // namespace Ovra
