#include "project/parentproject.h"

#include "editors/editor.h"
#include "engine/engine.h"
#include "engine/extension.h"
#include "engine/extensionmanager.h"
#include "foundation/filewatcher.h"
#include "foundation/progress.h"
#include "project/projectfile.h"
#include "foundation/archive.h"
#include "foundation/filesystemarchive.h"
#include "foundation/interface.h"
#include "project/project.h"

#include <QDateTime>
#include <QFileSystemWatcher>
#include <QMap>
#include <QProcess>

#include <algorithm>

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

namespace {

using Path = ParentProject::Path;
using BasePath = ParentProject::BasePath;

BasePath *base(Path *path)
{
    return static_cast<BasePath *>(path);
}

const BasePath *base(const Path *path)
{
    return static_cast<const BasePath *>(path);
}

ParentProjectPrivate *rootOf(const BasePath *node)
{
    while (node->parent())
        node = node->parent();
    return static_cast<ParentProjectPrivate *>(const_cast<BasePath *>(node));
}

// The node is `top` or lies below it.
bool within(const Path *node, const Path *top)
{
    for (const BasePath *up = base(node); up; up = up->parent()) {
        if (up == top)
            return true;
    }
    return false;
}

// The parts of a path below the root; only an empty first and last part are dropped,
// so "a//b" has an empty part in the middle, as the tree has a node for it.
QStringList pathParts(const QString &path)
{
    QStringList parts = path.split(QLatin1Char('/'));
    if (!parts.isEmpty() && parts.first().isEmpty())
        parts.removeFirst();
    if (!parts.isEmpty() && parts.last().isEmpty())
        parts.removeLast();
    return parts;
}

QString withoutTrailingSlash(QString path)
{
    while (path.size() > 1 && path.endsWith(QLatin1Char('/')))
        path.chop(1);
    return path;
}

} // namespace

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

// ---- saving, backups -------------------------------------------------------------------

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
