#pragma once

#include "foundation/object.h"

#include <QDir>
#include <QIODevice>
#include <QString>
#include <QStringList>

namespace Ovra {

// Storage of a project: the plain file system or a container that an extension
// provides. All file access of projects goes through it.
//
// Note the names: absoluteFilePath() is the directory that holds a name and
// absoluteFileName() the complete name; every caller relies on that.
class OVRA_EXPORT Archive : public Object
{
public:
    enum OpenFlag { ReadOnly = 1, WriteOnly = 2, ReadWrite = 3 };
    enum ShareMode { NoShare = 0, Share = 1, AskToShare = 2 };

    Archive() = default;
    Archive(const Archive &other) = default;
    Archive &operator=(const Archive &other) = default;

    void release() override;
    ~Archive() override = default;

    virtual QString name() const = 0;
    virtual QString path() const = 0;
    virtual QString absoluteFilePath(const QString &name) const = 0;
    virtual QString absoluteFileName(const QString &name) const = 0;
    virtual QStringList entries(const QString &directory, const QStringList &nameFilters,
                                QDir::Filters filters, QDir::SortFlags sort) const = 0;
    // The device must be given back with closeFile() or discardFile(). Null on failure.
    virtual QIODevice *openFile(const QString &name, QIODevice::OpenMode mode) = 0;
    virtual void closeFile(QIODevice *device) = 0;
    virtual void discardFile(QIODevice *device) = 0;
    virtual bool removeFile(const QString &name) = 0;
    virtual bool renameFile(const QString &oldName, const QString &newName) = 0;
    virtual void flush() = 0;
    virtual bool isReadOnly() const = 0;
    virtual bool isWritable(const QString &name) const = 0;
    virtual bool fileExists(const QString &name) const = 0;
    virtual bool directoryExists(const QString &name) const = 0;

    // Counts a reference. Not thread-safe: all holders live on the GUI thread.
    void addRef() { ++m_refCount; }
    uint refCount() const { return m_refCount; }

    QStringList entries(const QString &directory, QDir::Filters filters,
                        QDir::SortFlags sort = QDir::NoSort) const
    {
        return entries(directory, QStringList(), filters, sort);
    }

protected:
    // Called by release() when the count reaches zero; decides how the object ends.
    virtual void free() = 0;

private:
    uint m_refCount = 1;
};

// Copies one file between archives in 128 KiB blocks. Refuses equal names outright,
// whichever the archives are, so that a file is never copied onto itself.
OVRA_EXPORT bool copyFile(Archive &from, const QString &fromName, Archive &to, const QString &toName);

// Finds the real spelling of `relative` below `base` (which ends with "/"), part by
// part and without regard to case; parts that match nothing are kept as written.
OVRA_EXPORT QString fixFileCase(const QString &base, Archive &archive, const QString &relative);

// `path` relative to the directory `base`, with "../" for each level to climb.
OVRA_EXPORT QString absolutePathToRelative(const QString &path, const QString &base);

// Why a name stored in a container (a zip, a backup) can't stand for a place below the
// container's root, or empty when it can. Refused are names that, cleaned of "." and
// doubled slashes, are empty, absolute, hold a drive letter or a backslash (both mean
// another root on some systems), or climb out with "..".
OVRA_EXPORT QString entryNameProblem(const QString &name);

// Whether `path` lies in `directory` or below it once "..", symbolic links and the
// current directory are resolved. A path that doesn't exist yet is judged by the
// deepest folder above it that does; a link that leads nowhere is never inside.
OVRA_EXPORT bool isInsideDirectory(const QString &path, const QString &directory);

// What a container knows of its entries as they are stored, refused ones included, so
// that a caller can judge the whole container before it takes anything out of it.
class OVRA_EXPORT StoredEntries
{
public:
    struct Entry
    {
        QString name;          // as stored
        qint64 size = 0;       // once inflated
        qint64 storedSize = 0; // as it lies in the container
        bool link = false;     // a symbolic link
        bool directory = false;
    };

    virtual ~StoredEntries();
    virtual QList<Entry> storedEntries() const = 0;
};

} // namespace Ovra
