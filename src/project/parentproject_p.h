#pragma once

// Private to the parent project: the root of its tree, which holds all its state, and
// the helpers its parts share to walk the tree.

#include "project/parentproject.h"
#include "foundation/filesystemarchive.h"

#include <QFileSystemWatcher>
#include <QMap>

namespace Ovra {

// The root of the tree, and all the state of the parent project.
struct ParentProjectPrivate : public QObject, public ParentProject::DirectoryPath
{
    ParentProjectPrivate(ParentProject *owner, const QString &basePath, Archive &archive);
    ~ParentProjectPrivate() override;

    bool onFileSystem() const { return archive == &FileSystemArchive::instance(); }
    // Rows of nodes in the tree are announced; a node being built lists its directory
    // before it has a row, silently.
    void insertChild(BasePath *into, int row, Path *child) override;
    void removeChild(BasePath *from, int row) override;
    bool isAttached(const BasePath *node) const;
    // The node of a path relative to the root, or null.
    BasePath *relativePath(const QString &path) const;
    bool contains(const ParentProject::Path *node) const;
    // The node, or a node below it, is where an open project stands.
    bool holdsProject(const ParentProject::Path *node) const;
    void directoryChanged(const QString &path);

    QStringList baseParts;
    Archive *archive;
    uint refCount = 0;
    ParentProject *model;
    QMap<Project *, const ParentProject::Path *> projects;
    // The file and dummy nodes entered for a project that stands at the root.
    QMap<Project *, QList<const ParentProject::Path *>> rootEntries;
    QFileSystemWatcher watcher;
};

inline ParentProject::BasePath *base(ParentProject::Path *path)
{
    return static_cast<ParentProject::BasePath *>(path);
}

inline const ParentProject::BasePath *base(const ParentProject::Path *path)
{
    return static_cast<const ParentProject::BasePath *>(path);
}

inline ParentProjectPrivate *rootOf(const ParentProject::BasePath *node)
{
    while (node->parent())
        node = node->parent();
    return static_cast<ParentProjectPrivate *>(const_cast<ParentProject::BasePath *>(node));
}

// The node is `top` or lies below it.
inline bool within(const ParentProject::Path *node, const ParentProject::Path *top)
{
    for (const ParentProject::BasePath *up = base(node); up; up = up->parent()) {
        if (up == top)
            return true;
    }
    return false;
}

// The parts of a path below the root; only an empty first and last part are dropped,
// so "a//b" has an empty part in the middle, as the tree has a node for it.
inline QStringList pathParts(const QString &path)
{
    QStringList parts = path.split(QLatin1Char('/'));
    if (!parts.isEmpty() && parts.first().isEmpty())
        parts.removeFirst();
    if (!parts.isEmpty() && parts.last().isEmpty())
        parts.removeLast();
    return parts;
}

inline QString withoutTrailingSlash(QString path)
{
    while (path.size() > 1 && path.endsWith(QLatin1Char('/')))
        path.chop(1);
    return path;
}

} // namespace Ovra
