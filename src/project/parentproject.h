#pragma once

#include "foundation/treemodel.h"

#include <QIcon>
#include <QList>
#include <QString>
#include <QStringList>

#include <memory>

class QProcess;

namespace Ovra {

class Archive;
class Engine;
class JobStats;
class ProgressProvider;
class Project;
class ProjectFile;
struct ParentProjectPrivate;

// The open root of one piece of work: the game or package that holds projects. It
// owns the archive, shows the directory tree of the work as an item model and keeps
// it current as files come and go, counts the projects open in it, and saves, backs up
// and restores them together. The engine's subclass adds the project formats and
// decides how the object ends once the last project has closed.
class OVRA_EXPORT ParentProject : public TreeModel
{
    Q_OBJECT

public:
    // What a directory node lists of its directory on disk.
    enum PathTypeFlag { NoListing = 0, ListDirectories = 1, ListFiles = 2 };
    Q_DECLARE_FLAGS(PathType, PathTypeFlag)

    class BasePath;

    // A node of the tree. Model indexes point at nodes.
    class OVRA_EXPORT Path
    {
    public:
        Path() = default;
        Path(const Path &) = delete;
        Path &operator=(const Path &) = delete;
        virtual ~Path();
        // The parent's path and this name, with a "/" behind a directory.
        virtual QString path() const = 0;
        virtual QString name() const = 0;
        virtual bool isDirectory() const = 0;
        // The node comes from a directory listing, not from a project.
        virtual bool isListed() const = 0;
        virtual bool isFile() const = 0;
        // 0 for a listed node, else -1; a file node has its own type.
        virtual int fileType() const;
        virtual ParentProject *parentProject() const;
        // Rows go in and out through the root, which tells the views.
        virtual void insertChild(BasePath *into, int row, Path *child);
        virtual void removeChild(BasePath *from, int row);
    };

    class OVRA_EXPORT BasePath : public Path
    {
    public:
        BasePath(BasePath *parent, const QString &name);
        // Ends the children too.
        ~BasePath() override;

        QString path() const override;
        QString name() const override;
        ParentProject *parentProject() const override;
        void insertChild(BasePath *into, int row, Path *child) override;
        void removeChild(BasePath *from, int row) override;

        BasePath *parent() const { return m_parent; }
        const QList<Path *> &children() const { return m_children; }
        // The child of that name, or null.
        BasePath *child(const QString &name) const;
        int rowOf(const Path *child) const;

    protected:
        friend class ParentProject;
        friend struct ParentProjectPrivate;
        // Appends a child: with the views told once the node is in the tree.
        void addChild(Path *child);

        QList<Path *> m_children;
        BasePath *m_parent;
        QString m_name;
    };

    class OVRA_EXPORT DirectoryPath : public BasePath
    {
    public:
        // A listing node watches its directory and lists it at once (on the file
        // system only: other archives change through addPath and removePath alone).
        DirectoryPath(BasePath *parent, const QString &name, PathType type, const QStringList &filters);
        ~DirectoryPath() override;

        bool isDirectory() const override;
        bool isListed() const override;
        bool isFile() const override;

        PathType type() const { return m_type; }
        QStringList nameFilters() const { return m_filters; }
        // Brings the children in line with the directory on disk.
        void refresh();

    protected:
        friend class ParentProject;
        friend struct ParentProjectPrivate;
        void startWatching();

        PathType m_type;
        QStringList m_filters;
    };

    class OVRA_EXPORT FilePath : public BasePath
    {
    public:
        FilePath(BasePath *parent, const QString &name, int fileType);
        bool isDirectory() const override;
        bool isListed() const override;
        bool isFile() const override;
        int fileType() const override;
        void setFileType(int fileType) { m_fileType = fileType; }

    private:
        int m_fileType;
    };

    // A project file with no place in the directory tree (one outside it).
    class OVRA_EXPORT DummyPath : public BasePath
    {
    public:
        using BasePath::BasePath;
        bool isDirectory() const override;
        bool isListed() const override;
        bool isFile() const override;
    };

    ParentProject(const QString &basePath, Archive &archive);
    ~ParentProject() override;

    Archive &archive() const;
    QString basePath() const;
    uint refCount() const;
    QList<Project *> openedProjects() const;
    // The work is a game when the engine's game-mark file stands in its root.
    bool isGame() const;

    // Makes sure the nodes of a path below the root exist, created as directories of
    // that type; returns the last one. An empty first and last part are dropped.
    BasePath *addPath(const QString &path, PathType type, const QStringList &filters);
    void removePath(const QString &path);
    // The node of an absolute name below the root, or null.
    Path *filePath(const QString &name) const;
    // The node of the project that the node belongs to, or null.
    const Path *projectForFile(const Path *path) const;
    // The node behind an index of this model.
    Path *itemPath(const QModelIndex &index) const;
    // The node of an open project.
    const Path *projectPath(Project *project) const;
    // The index of a node of the tree, for the views; invalid for the root and for null.
    QModelIndex indexOf(const Path *path) const;

    // Counts an open project and enters it and its files into the tree;
    // Project::addToParent calls it.
    void addRef(Project *project);
    // Forgets a closing project; the last one ends the parent through allProjectsClosed.
    void removeProject(Project *project);

    // The engine the work belongs to; the engine's subclass tells.
    virtual Engine *engine() const;
    // What a run of the engine wrote to its standard output.
    virtual QString outputString(QProcess *process);
    virtual QIcon fileIcon(int fileType) const;

    virtual void fileAdded(ProjectFile *file);
    virtual void fileOpened(ProjectFile *file);
    virtual void fileClosed(ProjectFile *file);
    virtual void fileSaved(ProjectFile *file);

    // Saves every modified file of every project; a file that can't be written in its
    // place goes to its editor's "save as".
    void save(ProgressProvider *progress);
    // A copy of the work under another directory (or, for one stand-alone project, its
    // main file under another name).
    bool saveAs(const QString &path, JobStats *stats);
    // A snapshot of all open projects under "backup/" in the root, as a zip when an
    // extension serves "ZIP", else as a directory.
    bool backup(const QString &name, JobStats *stats);
    // Brings a backup back over the working files. False on a read-only archive, and for
    // a backup refused whole before anything is written (a zip that can't be read, an
    // entry that would land outside the work or is a link leading out, one name stored
    // twice, more bytes than the disk has free or than any work packs into a zip): the
    // reason, naming the entry, goes to `stats` as an error.
    bool restoreBackup(const QString &name, JobStats *stats);

    // TreeModel
    QModelIndex index(int row, int column, const QModelIndex &parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex &index) const override;
    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;

protected:
    // Copies one file of the work into another directory, under the same relative name.
    virtual bool copyFile(const QString &relativeName, const QString &targetDirectory);
    virtual void allProjectsClosed() = 0;

private:
    friend struct ParentProjectPrivate;
    void enterFiles(Project *project, BasePath *node);

    std::unique_ptr<ParentProjectPrivate> d;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(ParentProject::PathType)

} // namespace Ovra
