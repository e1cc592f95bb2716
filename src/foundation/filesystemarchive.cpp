#include "foundation/filesystemarchive.h"

#include "foundation/file.h"

#include <QFileInfo>

namespace Ovra {

FileSystemArchive &FileSystemArchive::instance()
{
    static FileSystemArchive archive;
    return archive;
}

QString FileSystemArchive::name() const
{
    return QString();
}

QString FileSystemArchive::path() const
{
    return QString();
}

QString FileSystemArchive::absoluteFilePath(const QString &name) const
{
    return name.isEmpty() ? QString() : QFileInfo(name).absolutePath();
}

QString FileSystemArchive::absoluteFileName(const QString &name) const
{
    return name.isEmpty() ? QString() : QFileInfo(name).absoluteFilePath();
}

QStringList FileSystemArchive::entries(const QString &directory, const QStringList &nameFilters,
                                       QDir::Filters filters, QDir::SortFlags sort) const
{
    return QDir(directory).entryList(nameFilters,
                                     filters | QDir::NoSymLinks | QDir::NoDot | QDir::NoDotDot, sort);
}

QIODevice *FileSystemArchive::openFile(const QString &name, QIODevice::OpenMode mode)
{
    if (mode & QIODevice::WriteOnly) {
        const QString directory = QFileInfo(name).absolutePath();
        if (!QDir(directory).exists())
            QDir().mkpath(directory);
    } else if (!QFile::exists(name)) {
        return nullptr;
    }
    auto *file = new File(name);
    if (!file->open(mode)) {
        delete file;
        return nullptr;
    }
    return file;
}

void FileSystemArchive::closeFile(QIODevice *device)
{
    if (auto *file = qobject_cast<QFileDevice *>(device))
        file->flush();
    delete device; // the replacement happens in File's destructor
}

void FileSystemArchive::discardFile(QIODevice *device)
{
    if (auto *file = qobject_cast<File *>(device))
        file->discard();
    delete device;
}

bool FileSystemArchive::removeFile(const QString &name)
{
    return QFile::remove(name);
}

bool FileSystemArchive::renameFile(const QString &oldName, const QString &newName)
{
    return QFile::rename(oldName, newName);
}

void FileSystemArchive::flush()
{
}

bool FileSystemArchive::isReadOnly() const
{
    return false;
}

bool FileSystemArchive::isWritable(const QString &name) const
{
    const QFileInfo info(name);
    return !info.exists() || info.isWritable();
}

bool FileSystemArchive::fileExists(const QString &name) const
{
    return QFile::exists(name);
}

bool FileSystemArchive::directoryExists(const QString &name) const
{
    return QDir(name).exists();
}

void FileSystemArchive::free()
{
    // The file system outlives every holder: a count of zero changes nothing.
}

} // namespace Ovra
