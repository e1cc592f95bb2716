// The directory tree of a parent project: its nodes, the listing of directories and
// the watching that keeps the listing current.

#include "project/parentproject.h"

#include "project/parentproject_p.h"
#include "foundation/archive.h"

#include <algorithm>

namespace Ovra {

// ---- nodes -----------------------------------------------------------------------------

ParentProject::Path::~Path() = default;

int ParentProject::Path::fileType() const
{
    return isListed() ? 0 : -1;
}

ParentProject *ParentProject::Path::parentProject() const
{
    return nullptr;
}

void ParentProject::Path::insertChild(BasePath *, int, Path *)
{
}

void ParentProject::Path::removeChild(BasePath *, int)
{
}

ParentProject::BasePath::BasePath(BasePath *parent, const QString &name)
    : m_parent(parent)
    , m_name(name)
{
}

ParentProject::BasePath::~BasePath()
{
    qDeleteAll(m_children);
}

QString ParentProject::BasePath::path() const
{
    QString result = m_parent ? m_parent->path() : QString();
    result += m_name;
    // Every directory below the root ends with "/", even one with an empty name; the
    // root does unless it is empty (an archive's relative root) or "/" itself.
    if (isDirectory() && (m_parent || (!result.isEmpty() && !result.endsWith(QLatin1Char('/')))))
        result += QLatin1Char('/');
    return result;
}

QString ParentProject::BasePath::name() const
{
    return m_name;
}

ParentProject *ParentProject::BasePath::parentProject() const
{
    return rootOf(this)->model;
}

void ParentProject::BasePath::insertChild(BasePath *into, int row, Path *child)
{
    if (m_parent)
        m_parent->insertChild(into, row, child);
}

void ParentProject::BasePath::removeChild(BasePath *from, int row)
{
    if (m_parent)
        m_parent->removeChild(from, row);
}

ParentProject::BasePath *ParentProject::BasePath::child(const QString &name) const
{
    for (Path *node : m_children) {
        if (node->name() == name)
            return base(node);
    }
    return nullptr;
}

int ParentProject::BasePath::rowOf(const Path *child) const
{
    for (int row = 0; row < m_children.size(); ++row) {
        if (m_children.at(row) == child)
            return row;
    }
    return -1;
}

void ParentProject::BasePath::addChild(Path *child)
{
    insertChild(this, m_children.size(), child);
}

ParentProject::DirectoryPath::DirectoryPath(BasePath *parent, const QString &name, PathType type,
                                            const QStringList &filters)
    : BasePath(parent, name)
    , m_type(type)
    , m_filters(filters)
{
    // The root starts to watch once the whole parent project stands.
    if (parent)
        startWatching();
}

ParentProject::DirectoryPath::~DirectoryPath()
{
    // Children first, while the way to the root still holds.
    qDeleteAll(m_children);
    m_children.clear();
    if (m_type != NoListing && m_parent) {
        ParentProjectPrivate *root = rootOf(this);
        if (root->onFileSystem())
            root->watcher.removePath(path());
    }
}

void ParentProject::DirectoryPath::startWatching()
{
    if (m_type == NoListing)
        return;
    ParentProjectPrivate *root = rootOf(this);
    if (!root->onFileSystem())
        return;
    if (!path().isEmpty())
        root->watcher.addPath(path());
    refresh();
}

bool ParentProject::DirectoryPath::isDirectory() const
{
    return true;
}

bool ParentProject::DirectoryPath::isListed() const
{
    const auto *directory = dynamic_cast<const DirectoryPath *>(m_parent);
    return directory && (directory->m_type & ListDirectories);
}

bool ParentProject::DirectoryPath::isFile() const
{
    return false;
}

void ParentProject::DirectoryPath::refresh()
{
    ParentProjectPrivate *root = rootOf(this);
    const Archive &archive = *root->archive;
    const QString directory = path();
    QStringList listed;
    if (m_type & ListDirectories) {
        // Directories, readable ones, no links, neither "." nor "..".
        const QStringList names = archive.entries(directory, QStringList(), QDir::Filters(0x6019), QDir::Name);
        for (const QString &name : names) {
            listed << name;
            if (!child(name))
                addChild(new DirectoryPath(this, name, m_type, m_filters));
        }
    }
    if (m_type & ListFiles) {
        const QStringList names = archive.entries(directory, m_filters, QDir::Files, QDir::Name);
        for (const QString &name : names) {
            listed << name;
            if (!child(name))
                addChild(new FilePath(this, name, 0));
        }
    }
    // Only what a listing brought goes with the listing; the nodes of open projects
    // stay until their projects close.
    for (int row = m_children.size() - 1; row >= 0; --row) {
        const Path *node = m_children.at(row);
        if (!listed.contains(node->name()) && node->isListed() && !root->holdsProject(node))
            removeChild(this, row);
    }
}

ParentProject::FilePath::FilePath(BasePath *parent, const QString &name, int fileType)
    : BasePath(parent, name)
    , m_fileType(fileType)
{
}

bool ParentProject::FilePath::isDirectory() const
{
    return false;
}

bool ParentProject::FilePath::isListed() const
{
    return m_fileType == 0;
}

bool ParentProject::FilePath::isFile() const
{
    return true;
}

int ParentProject::FilePath::fileType() const
{
    return m_fileType;
}

bool ParentProject::DummyPath::isDirectory() const
{
    return false;
}

bool ParentProject::DummyPath::isListed() const
{
    const auto *directory = dynamic_cast<const DirectoryPath *>(m_parent);
    return directory && (directory->type() & ListFiles);
}

bool ParentProject::DummyPath::isFile() const
{
    return false;
}

// ---- the root --------------------------------------------------------------------------

ParentProjectPrivate::ParentProjectPrivate(ParentProject *owner, const QString &basePath, Archive &archive)
    : ParentProject::DirectoryPath(nullptr, withoutTrailingSlash(basePath), ParentProject::NoListing, QStringList())
    , baseParts(basePath.split(QLatin1Char('/'), Qt::SkipEmptyParts))
    , archive(&archive)
    , model(owner)
{
    archive.addRef();
    connect(&watcher, &QFileSystemWatcher::directoryChanged, this,
            [this](const QString &path) { directoryChanged(path); });
}

ParentProjectPrivate::~ParentProjectPrivate()
{
    // The nodes stop watching while the watcher is still there.
    qDeleteAll(m_children);
    m_children.clear();
    archive->release();
}

ParentProject::BasePath *ParentProjectPrivate::relativePath(const QString &path) const
{
    auto *node = const_cast<ParentProjectPrivate *>(this);
    BasePath *current = node;
    for (const QString &part : pathParts(path)) {
        current = current->child(part);
        if (!current)
            return nullptr;
    }
    return current;
}

bool ParentProjectPrivate::contains(const ParentProject::Path *node) const
{
    QList<const BasePath *> open{this};
    while (!open.isEmpty()) {
        const BasePath *current = open.takeLast();
        if (current == node)
            return true;
        for (const Path *child : current->children())
            open << base(child);
    }
    return false;
}

bool ParentProjectPrivate::holdsProject(const ParentProject::Path *node) const
{
    for (const Path *place : projects) {
        if (within(place, node))
            return true;
    }
    return false;
}

bool ParentProjectPrivate::isAttached(const BasePath *node) const
{
    for (; node->parent(); node = node->parent()) {
        if (node->parent()->rowOf(node) < 0)
            return false;
    }
    return node == this;
}

void ParentProjectPrivate::insertChild(BasePath *into, int row, Path *child)
{
    const bool announce = isAttached(into);
    if (announce)
        model->beginInsertItems(model->indexOf(into), row, row);
    into->m_children.insert(row, child);
    if (announce)
        model->endInsertItems();
}

void ParentProjectPrivate::removeChild(BasePath *from, int row)
{
    Path *child = from->m_children.value(row);
    if (!child)
        return;
    // An open project whose place goes stands at the root from now on.
    for (auto it = projects.begin(); it != projects.end(); ++it) {
        if (within(it.value(), child))
            it.value() = this;
    }
    for (QList<const Path *> &entries : rootEntries)
        entries.erase(std::remove_if(entries.begin(), entries.end(),
                                     [child](const Path *entry) { return within(entry, child); }),
                      entries.end());
    const bool announce = isAttached(from);
    if (announce)
        model->beginRemoveItems(model->indexOf(from), row, row);
    from->m_children.removeAt(row);
    delete child;
    if (announce)
        model->endRemoveItems();
}

void ParentProjectPrivate::directoryChanged(const QString &path)
{
    if (auto *directory = dynamic_cast<ParentProject::DirectoryPath *>(model->filePath(path)))
        directory->refresh();
}

} // namespace Ovra
