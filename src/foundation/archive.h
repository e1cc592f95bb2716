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

} // namespace Ovra
