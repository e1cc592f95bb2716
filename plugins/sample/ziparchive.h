#pragma once

// Containers of the "ZIP" format over libzip: backups of projects, and projects kept in a
// zip. The archive stands for the directory its file name names without ".zip", so names
// below that directory are entries of the zip. Written entries reach the file when the
// archive ends or is flushed.
//
// Zips come from strangers: an entry whose name would land outside the archive's root
// (absolute, a drive letter, a backslash, climbing out with "..") or that is a symbolic
// link is never listed, opened or created. storedEntries() still shows them all, so that
// a restore can refuse the whole zip before it writes anything.
#include "engine/extension.h"
#include "foundation/archive.h"

#include <QHash>
#include <QMap>

struct zip;

class ZipArchive : public Ovra::Archive, public Ovra::StoredEntries
{
public:
    // Null when the file can't be opened (or, for writing, created).
    static ZipArchive *open(const QString &fileName, QIODevice::OpenMode mode);

    QString name() const override { return QStringLiteral("zip"); }
    QString path() const override { return m_prefix; }
    QString absoluteFilePath(const QString &name) const override;
    QString absoluteFileName(const QString &name) const override { return name; }
    QStringList entries(const QString &directory, const QStringList &nameFilters, QDir::Filters filters,
                        QDir::SortFlags sort) const override;
    QIODevice *openFile(const QString &name, QIODevice::OpenMode mode) override;
    void closeFile(QIODevice *device) override;
    void discardFile(QIODevice *device) override;
    bool removeFile(const QString &name) override;
    bool renameFile(const QString &oldName, const QString &newName) override;
    // Writes what was added or changed so far, and goes on with the written file.
    void flush() override;
    bool isReadOnly() const override { return !m_writable; }
    bool isWritable(const QString &) const override { return m_writable; }
    bool fileExists(const QString &name) const override;
    bool directoryExists(const QString &name) const override;

    // The names of the entries that can be taken out, cleaned of "." and doubled slashes,
    // in the order of the zip; the first of two entries of one name stands for both.
    QStringList names() const;
    QList<Entry> storedEntries() const override;

protected:
    // Writes the zip out.
    void free() override;

private:
    ZipArchive(zip *archive, const QString &fileName, const QString &prefix, bool writable);
    QString inner(const QString &name) const;
    // Reads the list of entries anew, after the zip was opened or changed.
    void scan();
    // The zip's index of an entry that can be taken out, or -1.
    qint64 indexOf(const QString &innerName) const;

    zip *m_zip;
    QList<Entry> m_stored;
    QStringList m_names;
    QHash<QString, qint64> m_index;
    QString m_fileName;
    QString m_prefix;
    bool m_writable;
    QMap<QIODevice *, QString> m_writes;
};

class ZipExtension : public Ovra::ArchiveExtension
{
public:
    const char *format() const override { return "ZIP"; }
    const char *name() const override { return "zip"; }
    Ovra::Archive *open(const QString &fileName, QIODevice::OpenMode mode) override
    {
        return ZipArchive::open(fileName, mode);
    }
};
