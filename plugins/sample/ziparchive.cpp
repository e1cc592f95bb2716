#include "ziparchive.h"

#include <QBuffer>
#include <QDir>
#include <QFileInfo>

#include <zip.h>

#include <cstdlib>
#include <cstring>

ZipArchive::ZipArchive(zip *archive, const QString &fileName, const QString &prefix, bool writable)
    : m_zip(archive)
    , m_fileName(fileName)
    , m_prefix(prefix)
    , m_writable(writable)
{
}

ZipArchive *ZipArchive::open(const QString &fileName, QIODevice::OpenMode mode)
{
    const bool writing = mode & QIODevice::WriteOnly;
    if (writing)
        QDir().mkpath(QFileInfo(fileName).absolutePath());
    int error = 0;
    zip *archive = zip_open(QFile::encodeName(fileName).constData(), writing ? ZIP_CREATE : ZIP_RDONLY, &error);
    if (!archive)
        return nullptr;
    QString prefix = fileName;
    if (prefix.endsWith(QLatin1String(".zip"), Qt::CaseInsensitive))
        prefix.chop(4);
    return new ZipArchive(archive, fileName, prefix + QLatin1Char('/'), writing);
}

QString ZipArchive::inner(const QString &name) const
{
    // The archive's own directory, with or without its slash, is the root of the entries.
    if (name + QLatin1Char('/') == m_prefix)
        return QString();
    QString relative = name.startsWith(m_prefix) ? name.mid(m_prefix.size()) : name;
    while (relative.startsWith(QLatin1Char('/')))
        relative.remove(0, 1);
    return relative;
}

QString ZipArchive::absoluteFilePath(const QString &name) const
{
    return QFileInfo(name).path();
}

QStringList ZipArchive::names() const
{
    QStringList list;
    const zip_int64_t count = m_zip ? zip_get_num_entries(m_zip, 0) : 0;
    for (zip_int64_t i = 0; i < count; ++i) {
        if (const char *entry = zip_get_name(m_zip, zip_uint64_t(i), 0))
            list << QString::fromUtf8(entry);
    }
    return list;
}

QStringList ZipArchive::entries(const QString &directory, const QStringList &nameFilters, QDir::Filters filters,
                                QDir::SortFlags) const
{
    QString below = inner(directory);
    if (!below.isEmpty() && !below.endsWith(QLatin1Char('/')))
        below += QLatin1Char('/');
    QStringList found;
    for (const QString &entry : names()) {
        if (!entry.startsWith(below))
            continue;
        const QString rest = entry.mid(below.size());
        const int slash = rest.indexOf(QLatin1Char('/'));
        const bool directoryEntry = slash >= 0;
        const QString part = directoryEntry ? rest.left(slash) : rest;
        if (part.isEmpty() || found.contains(part))
            continue;
        if (directoryEntry && !(filters & QDir::Dirs))
            continue;
        if (!directoryEntry && !(filters & QDir::Files))
            continue;
        if (!directoryEntry && !nameFilters.isEmpty() && !QDir::match(nameFilters, part))
            continue;
        found << part;
    }
    found.sort();
    return found;
}

QIODevice *ZipArchive::openFile(const QString &name, QIODevice::OpenMode mode)
{
    auto *buffer = new QBuffer;
    if (mode & QIODevice::WriteOnly) {
        if (!m_writable) {
            delete buffer;
            return nullptr;
        }
        buffer->open(QIODevice::WriteOnly);
        m_writes.insert(buffer, inner(name));
        return buffer;
    }
    zip_file *file = m_zip ? zip_fopen(m_zip, inner(name).toUtf8().constData(), 0) : nullptr;
    if (!file) {
        delete buffer;
        return nullptr;
    }
    QByteArray data;
    char chunk[4096];
    zip_int64_t read = 0;
    while ((read = zip_fread(file, chunk, sizeof chunk)) > 0)
        data.append(chunk, int(read));
    zip_fclose(file);
    buffer->setData(data);
    buffer->open(QIODevice::ReadOnly);
    return buffer;
}

void ZipArchive::closeFile(QIODevice *device)
{
    const auto it = m_writes.find(device);
    if (it != m_writes.end() && m_zip) {
        const QByteArray data = static_cast<QBuffer *>(device)->data();
        // libzip reads the source when the archive is closed: it gets its own copy.
        void *copy = std::malloc(size_t(qMax(data.size(), 1)));
        std::memcpy(copy, data.constData(), size_t(data.size()));
        zip_source_t *source = zip_source_buffer(m_zip, copy, zip_uint64_t(data.size()), 1);
        if (!source || zip_file_add(m_zip, it.value().toUtf8().constData(), source, ZIP_FL_OVERWRITE) < 0) {
            if (source)
                zip_source_free(source);
            else
                std::free(copy);
        }
    }
    m_writes.remove(device);
    delete device;
}

void ZipArchive::discardFile(QIODevice *device)
{
    m_writes.remove(device);
    delete device;
}

bool ZipArchive::removeFile(const QString &name)
{
    if (!m_zip)
        return false;
    const zip_int64_t index = zip_name_locate(m_zip, inner(name).toUtf8().constData(), 0);
    return m_writable && index >= 0 && zip_delete(m_zip, zip_uint64_t(index)) == 0;
}

bool ZipArchive::renameFile(const QString &oldName, const QString &newName)
{
    if (!m_zip)
        return false;
    const zip_int64_t index = zip_name_locate(m_zip, inner(oldName).toUtf8().constData(), 0);
    return m_writable && index >= 0
           && zip_file_rename(m_zip, zip_uint64_t(index), inner(newName).toUtf8().constData(), 0) == 0;
}

bool ZipArchive::fileExists(const QString &name) const
{
    return m_zip && zip_name_locate(m_zip, inner(name).toUtf8().constData(), 0) >= 0;
}

bool ZipArchive::directoryExists(const QString &name) const
{
    QString below = inner(name);
    if (!below.endsWith(QLatin1Char('/')))
        below += QLatin1Char('/');
    for (const QString &entry : names()) {
        if (entry.startsWith(below))
            return true;
    }
    return false;
}

void ZipArchive::flush()
{
    if (!m_writable || !m_zip)
        return;
    // libzip writes only when an archive is closed: close it, and open the result again.
    if (zip_close(m_zip) != 0)
        zip_discard(m_zip);
    int error = 0;
    m_zip = zip_open(QFile::encodeName(m_fileName).constData(), ZIP_CREATE, &error);
    if (!m_zip)
        m_writable = false; // gone meanwhile: nothing more can be read or written
}

void ZipArchive::free()
{
    if (m_zip && zip_close(m_zip) != 0)
        zip_discard(m_zip);
    delete this;
}
