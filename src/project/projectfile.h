#pragma once

#include "foundation/object.h"

#include <QFlags>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>

class QAbstractItemModel;

namespace Ovra {

class Archive;
class JobStats;
class Messages;
class Project;
class RegExp;
struct ProjectFilePrivate;

// One file of a project: a model object that reads and writes itself through an
// Archive, may be held from several places at once, and takes part in undo, search
// and the option look-up. Every concrete file class derives from it.
class OVRA_EXPORT ProjectFile : public Object
{
public:
    enum Capability {
        SharedDocument = 1, // a view of a document that others hold too
        AsynchronousSave = 4,
        CodeDocumentFile = 8,
    };
    Q_DECLARE_FLAGS(Capabilities, Capability)

    // Flags of fromFile and toFile.
    enum TransferFlag {
        Foreign = 1,      // a backup or a copy: the file stays bound to its archive
        Asynchronous = 2, // finish on a worker thread, where the file can
        Internal = 0x8000,
    };

    // Flags of search.
    enum SearchFlag {
        Backwards = 1,
        Wrap = 2,
        FromEnd = 4, // start at the extreme end instead of the current position
        All = 8,
    };

    struct SearchResult
    {
        uint reserved = 0;
        uint item = 0;   // the hit's index inside the file
        int start = 0;   // of the whole match
        int length = 0;
        QString text;    // the string that was searched
        QStringList captures; // index 0 is the whole match
    };

    ProjectFile();
    ProjectFile(const ProjectFile &) = delete;
    ProjectFile &operator=(const ProjectFile &) = delete;

    void release() override;
    ~ProjectFile() override;

    // Must not be called before the file was loaded or saved once.
    virtual Archive &archive() const;
    virtual Project *project() const;
    virtual const char *fileExtension() const;
    virtual Capabilities capabilities() const;
    virtual bool canSave() const;
    virtual bool isModified() const;
    virtual bool isEmpty() const = 0;
    virtual void reset();
    // Subclasses call these at the end of their own load and save.
    virtual bool toFile(Archive &archive, const QString &name, uint flags, JobStats *stats);
    virtual bool fromFile(Archive &archive, const QString &name, uint flags, JobStats *stats);
    virtual QString fileName() const;
    virtual QString displayName() const;
    virtual void beginChange();
    virtual void endChange();
    virtual void undo();
    virtual void redo();
    virtual QList<SearchResult> search(RegExp &expression, uint flags) = 0;
    virtual void replace(QList<SearchResult> &results, const QString &replacement) = 0;
    virtual QVariant option(const QString &name, const QVariant &defaultValue) const;
    virtual QVariant option(const QString &name) const;
    virtual void setOption(const QString &name, const QVariant &value, bool toProject, bool toHost);
    virtual void free() = 0;
    virtual QAbstractItemModel *model();
    virtual Messages *fileMessages() const = 0;

    void addRef();
    uint refCount() const;
    Messages *messages() const { return fileMessages(); }
    bool fileExists() const;
    bool isReadOnly() const;
    bool hasArchive() const;

private:
    friend class Project;
    void setProject(Project *project);
    void bindArchive(Archive &archive);

    std::unique_ptr<ProjectFilePrivate> d;
};

} // namespace Ovra

Q_DECLARE_OPERATORS_FOR_FLAGS(Ovra::ProjectFile::Capabilities)
