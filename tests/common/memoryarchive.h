#pragma once

#include "foundation/archive.h"

#include <QBuffer>
#include <QFileInfo>
#include <QMap>

// An archive that keeps its files in memory: a container that is not the file system,
// with writes that can be refused and a record of how it ended.
class MemoryArchive : public Ovra::Archive
{
public:
    QMap<QString, QByteArray> files;
    int freed = 0;
    int flushes = 0;
    int opened = 0;
    bool readOnly = false;
    QStringList locked; // names that may not be written

    QString name() const override { return QStringLiteral("memory"); }
    QString path() const override { return QStringLiteral("mem:"); }
    QString absoluteFilePath(const QString &name) const override { return QFileInfo(name).path(); }
    QString absoluteFileName(const QString &name) const override { return name; }
    QStringList entries(const QString &, const QStringList &, QDir::Filters, QDir::SortFlags) const override
    {
        return files.keys();
    }
    QIODevice *openFile(const QString &name, QIODevice::OpenMode mode) override
    {
        ++opened;
        if ((mode & QIODevice::WriteOnly) && !isWritable(name))
            return nullptr;
        if (!(mode & QIODevice::WriteOnly) && !files.contains(name))
            return nullptr;
        auto *buffer = new QBuffer;
        buffer->setObjectName(name);
        if (!(mode & QIODevice::WriteOnly) || (mode & QIODevice::ReadOnly))
            buffer->setData(files.value(name));
        buffer->open(mode);
        return buffer;
    }
    void closeFile(QIODevice *device) override
    {
        auto *buffer = static_cast<QBuffer *>(device);
        if (buffer->openMode() & QIODevice::WriteOnly)
            files.insert(buffer->objectName(), buffer->data());
        delete buffer;
    }
    void discardFile(QIODevice *device) override { delete device; }
    bool removeFile(const QString &name) override { return files.remove(name) > 0; }
    bool renameFile(const QString &oldName, const QString &newName) override
    {
        if (!files.contains(oldName) || files.contains(newName))
            return false;
        files.insert(newName, files.take(oldName));
        return true;
    }
    void flush() override { ++flushes; }
    bool isReadOnly() const override { return readOnly; }
    bool isWritable(const QString &name) const override { return !readOnly && !locked.contains(name); }
    bool fileExists(const QString &name) const override { return files.contains(name); }
    bool directoryExists(const QString &) const override { return false; }

protected:
    void free() override { ++freed; }
};
