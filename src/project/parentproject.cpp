#include "project/parentproject.h"

#include "project/parentproject_p.h"
#include "project/project.h"
#include "engine/engine.h"
#include "foundation/archive.h"
#include "foundation/interface.h"

#include <QProcess>

namespace Ovra {

// ---- the parent project ----------------------------------------------------------------

ParentProject::ParentProject(const QString &basePath, Archive &archive)
    : d(new ParentProjectPrivate(this, basePath, archive))
{
}

ParentProject::~ParentProject() = default;

Archive &ParentProject::archive() const
{
    return *d->archive;
}

QString ParentProject::basePath() const
{
    return d->path();
}

uint ParentProject::refCount() const
{
    return d->refCount;
}

QList<Project *> ParentProject::openedProjects() const
{
    return d->projects.keys();
}

bool ParentProject::isGame() const
{
    const Engine *owner = engine();
    const QString mark = owner ? owner->queryString(Engine::GameMarkFile, 0) : QString();
    return !mark.isEmpty() && d->archive->fileExists(basePath() + mark);
}

ParentProject::BasePath *ParentProject::addPath(const QString &path, PathType type, const QStringList &filters)
{
    const QStringList parts = pathParts(path);
    if (parts.isEmpty())
        return nullptr;
    BasePath *node = d.get();
    for (const QString &part : qAsConst(parts)) {
        BasePath *next = node->child(part);
        if (!next) {
            next = new DirectoryPath(node, part, type, filters);
            node->addChild(next);
        }
        node = next;
    }
    return node;
}

void ParentProject::removePath(const QString &path)
{
    BasePath *node = d->relativePath(path);
    if (node && node != d.get())
        node->removeChild(node->parent(), node->parent()->rowOf(node));
}

ParentProject::Path *ParentProject::filePath(const QString &name) const
{
    const QString root = basePath();
    if (!name.startsWith(root, Qt::CaseInsensitive))
        return nullptr;
    return d->relativePath(name.mid(root.size()));
}

const ParentProject::Path *ParentProject::projectForFile(const Path *path) const
{
    for (const BasePath *node = base(path); node; node = node->parent()) {
        for (auto it = d->projects.cbegin(); it != d->projects.cend(); ++it) {
            if (it.value() == node)
                return node;
        }
    }
    return nullptr;
}

ParentProject::Path *ParentProject::itemPath(const QModelIndex &index) const
{
    return index.isValid() ? static_cast<Path *>(index.internalPointer()) : nullptr;
}

const ParentProject::Path *ParentProject::projectPath(Project *project) const
{
    return d->projects.value(project);
}

void ParentProject::addRef(Project *project)
{
    ++d->refCount;
    BasePath *node = d.get();
    const QString relative = project->basePath();
    if (!project->fileName().isEmpty() && !relative.isEmpty()) {
        if (BasePath *own = addPath(relative, NoListing, QStringList()))
            node = own;
    }
    d->projects.insert(project, node);
    enterFiles(project, node);
}

void ParentProject::enterFiles(Project *project, BasePath *node)
{
    QList<PathEntry *> entries;
    project->fileList(entries);
    for (const PathEntry *entry : qAsConst(entries)) {
        const QString name = entry->name;
        if (name.isEmpty())
            continue;
        Path *entered = nullptr;
        if (name.startsWith(QLatin1String("../")) || name.startsWith(QLatin1Char('/'))) {
            // Outside the project's directory: a node with no place in the tree.
            entered = node->child(name);
            if (!entered) {
                entered = new DummyPath(node, name);
                node->addChild(entered);
            }
        } else {
            QStringList parts = name.split(QLatin1Char('/'));
            const QString last = parts.takeLast();
            BasePath *folder = node;
            for (const QString &part : qAsConst(parts)) {
                BasePath *next = folder->child(part);
                if (!next) {
                    next = new DirectoryPath(folder, part, NoListing, QStringList());
                    folder->addChild(next);
                }
                folder = next;
            }
            BasePath *file = folder->child(last);
            if (auto *listed = dynamic_cast<FilePath *>(file)) {
                // A file the listing found already: it now shows as the project's.
                listed->setFileType(entry->type);
                const QModelIndex index = indexOf(listed);
                emit dataChanged(index, index);
            } else if (!file) {
                file = new FilePath(folder, last, entry->type);
                folder->addChild(file);
            }
            entered = file;
        }
        if (node == d.get() && entered)
            d->rootEntries[project].append(entered);
    }
    qDeleteAll(entries);
}

void ParentProject::removeProject(Project *project)
{
    const auto found = d->projects.find(project);
    if (found == d->projects.end())
        return;
    const Path *node = found.value();
    d->projects.erase(found);
    // Its rows go: its own node, or at the root the nodes entered for it.
    QList<const Path *> rows = d->rootEntries.take(project);
    if (node != d.get())
        rows = {node};
    for (const Path *row : qAsConst(rows)) {
        if (d->contains(row) && !d->holdsProject(row) && !row->isListed()) {
            BasePath *parent = base(row)->parent();
            parent->removeChild(parent, parent->rowOf(row));
        }
    }
    if (--d->refCount == 0)
        allProjectsClosed();
}

Engine *ParentProject::engine() const
{
    return nullptr;
}

QString ParentProject::outputString(QProcess *process)
{
    return QString(process->readAllStandardOutput());
}

QIcon ParentProject::fileIcon(int) const
{
    return QIcon();
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

bool ParentProject::copyFile(const QString &, const QString &)
{
    return false;
}

// ---- the item model --------------------------------------------------------------------

QModelIndex ParentProject::indexOf(const Path *path) const
{
    if (!path || path == d.get())
        return QModelIndex();
    const BasePath *parent = base(path)->parent();
    return createIndex(parent->rowOf(path), 0, const_cast<Path *>(path));
}

QModelIndex ParentProject::index(int row, int column, const QModelIndex &parent) const
{
    if (!hasIndex(row, column, parent))
        return QModelIndex();
    const BasePath *owner = parent.isValid() ? base(itemPath(parent)) : d.get();
    return createIndex(row, column, owner->children().at(row));
}

QModelIndex ParentProject::parent(const QModelIndex &index) const
{
    const Path *node = itemPath(index);
    if (!node)
        return QModelIndex();
    return indexOf(base(node)->parent());
}

int ParentProject::rowCount(const QModelIndex &parent) const
{
    if (parent.column() > 0)
        return 0;
    const BasePath *owner = parent.isValid() ? base(itemPath(parent)) : d.get();
    return owner->children().size();
}

QVariant ParentProject::data(const QModelIndex &index, int role) const
{
    const Path *node = itemPath(index);
    if (!node)
        return QVariant();
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return node->name();
    case Qt::DecorationRole: {
        Interface *host = Interface::instance();
        if (!host)
            return QIcon();
        if (!node->isFile())
            return host->icon(QStringLiteral("icon_folder"));
        const QIcon own = fileIcon(node->fileType());
        if (!own.isNull())
            return own;
        switch (node->fileType()) {
        case 0:
        case 4: return host->icon(QStringLiteral("icon_code"));
        case 1: return host->icon(QStringLiteral("icon_sprite"));
        case 2: return host->icon(QStringLiteral("icon_sound"));
        case 3: return host->icon(QStringLiteral("icon_animation"));
        default: return host->icon(QStringLiteral("icon_file"));
        }
    }
    default:
        return QVariant();
    }
}

} // namespace Ovra
