#pragma once

#include "foundation/archive.h"

namespace Ovra {

// The plain file system, as one process-wide archive that never ends.
class OVRA_EXPORT FileSystemArchive : public Archive
{
public:
    static FileSystemArchive &instance();

    QString name() const override;
    QString path() const override;
    QString absoluteFilePath(const QString &name) const override;
    QString absoluteFileName(const QString &name) const override;
    QStringList entries(const QString &directory, const QStringList &nameFilters,
                        QDir::Filters filters, QDir::SortFlags sort) const override;
    using Archive::entries;
    QIODevice *openFile(const QString &name, QIODevice::OpenMode mode) override;
    void closeFile(QIODevice *device) override;
    void discardFile(QIODevice *device) override;
    bool removeFile(const QString &name) override;
    bool renameFile(const QString &oldName, const QString &newName) override;
    void flush() override;
    bool isReadOnly() const override;
    bool isWritable(const QString &name) const override;
    bool fileExists(const QString &name) const override;
    bool directoryExists(const QString &name) const override;

protected:
    void free() override;

private:
    FileSystemArchive() = default;
    Q_DISABLE_COPY(FileSystemArchive)
};

} // namespace Ovra
