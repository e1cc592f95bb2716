#include "ziparchive.h"

#include <QBuffer>
#include <QDir>
#include <QFileInfo>
#include <QSet>

#include <zip.h>

#include <cstdlib>
#include <cstring>
#include <limits>

ZipArchive::ZipArchive(zip *archive, const QString &fileName, const QString &prefix, bool writable)
    : m_zip(archive)
    , m_fileName(fileName)
    , m_prefix(prefix)
    , m_writable(writable)
{
    scan();
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
    return relative.isEmpty() ? relative : QDir::cleanPath(relative);
}

namespace {

// The Unix mode sits in the upper half of an entry's external attributes.
constexpr zip_uint32_t fileTypeMask = 0170000;
constexpr zip_uint32_t symbolicLinkType = 0120000;

qint64 clampedSize(zip_uint64_t size)
{
    return size > zip_uint64_t(std::numeric_limits<qint64>::max()) ? std::numeric_limits<qint64>::max() : qint64(size);
}

} // namespace

void ZipArchive::scan()
{
    m_stored.clear();
    m_names.clear();
    m_index.clear();
    QSet<QString> directories;
    const zip_int64_t count = m_zip ? zip_get_num_entries(m_zip, 0) : 0;
    for (zip_int64_t i = 0; i < count; ++i) {
        const char *raw = zip_get_name(m_zip, zip_uint64_t(i), 0);
        if (!raw)
            continue; // deleted since the last write
        Entry entry;
        entry.name = QString::fromUtf8(raw);
        entry.directory = entry.name.endsWith(QLatin1Char('/'));
        zip_stat_t stat;
        zip_stat_init(&stat);
        if (zip_stat_index(m_zip, zip_uint64_t(i), 0, &stat) == 0) {
            if (stat.valid & ZIP_STAT_SIZE)
                entry.size = clampedSize(stat.size);
            if (stat.valid & ZIP_STAT_COMP_SIZE)
                entry.storedSize = clampedSize(stat.comp_size);
        }
        zip_uint8_t system = 0;
        zip_uint32_t attributes = 0;
        if (zip_file_get_external_attributes(m_zip, zip_uint64_t(i), 0, &system, &attributes) == 0
            && system == ZIP_OPSYS_UNIX)
            entry.link = ((attributes >> 16) & fileTypeMask) == symbolicLinkType;
        m_stored << entry;
        if (entry.link || !Ovra::entryNameProblem(entry.name).isEmpty())
            continue;
        const QString cleaned = QDir::cleanPath(entry.name);
        if (entry.directory) {
            if (!directories.contains(cleaned)) {
                directories.insert(cleaned);
                m_names << cleaned + QLatin1Char('/');
            }
        } else if (!m_index.contains(cleaned)) {
            m_index.insert(cleaned, i);
            m_names << cleaned;
        }
    }
}

qint64 ZipArchive::indexOf(const QString &innerName) const
{
    return m_index.value(innerName, -1);
}

QString ZipArchive::absoluteFilePath(const QString &name) const
{
    return QFileInfo(name).path();
}

QStringList ZipArchive::names() const
{
    return m_names;
}

QList<Ovra::StoredEntries::Entry> ZipArchive::storedEntries() const
{
    return m_stored;
}

QStringList ZipArchive::entries(const QString &directory, const QStringList &nameFilters, QDir::Filters filters,
                                QDir::SortFlags) const
{
    QString below = inner(directory);
    if (!below.isEmpty() && !below.endsWith(QLatin1Char('/')))
        below += QLatin1Char('/');
    QStringList found;
    for (const QString &entry : m_names) {
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
    if (mode & QIODevice::WriteOnly) {
        const QString entry = inner(name);
        if (!m_writable || !Ovra::entryNameProblem(entry).isEmpty())
            return nullptr;
        auto *buffer = new QBuffer;
        buffer->open(QIODevice::WriteOnly);
        m_writes.insert(buffer, entry);
        return buffer;
    }
    const qint64 index = indexOf(inner(name));
    zip_stat_t stat;
    zip_stat_init(&stat);
    if (index < 0 || zip_stat_index(m_zip, zip_uint64_t(index), 0, &stat) != 0 || !(stat.valid & ZIP_STAT_SIZE)
        || stat.size > zip_uint64_t(std::numeric_limits<int>::max() / 2))
        return nullptr;
    zip_file *file = zip_fopen_index(m_zip, zip_uint64_t(index), 0);
    if (!file)
        return nullptr;
    // The size the zip declares is all that is taken: an entry that inflates past it is
    // damaged or made to fill the memory, and is refused.
    const qint64 declared = qint64(stat.size);
    QByteArray data;
    char chunk[4096];
    zip_int64_t read = 0;
    while ((read = zip_fread(file, chunk, sizeof chunk)) > 0 && data.size() <= declared)
        data.append(chunk, int(read));
    const bool whole = read == 0 && data.size() == declared;
    zip_fclose(file);
    if (!whole)
        return nullptr;
    auto *buffer = new QBuffer;
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
        scan();
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
    const qint64 index = indexOf(inner(name));
    const bool removed = m_zip && m_writable && index >= 0 && zip_delete(m_zip, zip_uint64_t(index)) == 0;
    if (removed)
        scan();
    return removed;
}

bool ZipArchive::renameFile(const QString &oldName, const QString &newName)
{
    const qint64 index = indexOf(inner(oldName));
    const QString target = inner(newName);
    const bool renamed = m_zip && m_writable && index >= 0 && Ovra::entryNameProblem(target).isEmpty()
                         && zip_file_rename(m_zip, zip_uint64_t(index), target.toUtf8().constData(), 0) == 0;
    if (renamed)
        scan();
    return renamed;
}

bool ZipArchive::fileExists(const QString &name) const
{
    return indexOf(inner(name)) >= 0;
}

bool ZipArchive::directoryExists(const QString &name) const
{
    QString below = inner(name);
    if (!below.endsWith(QLatin1Char('/')))
        below += QLatin1Char('/');
    for (const QString &entry : m_names) {
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
    scan();
}

void ZipArchive::free()
{
    if (m_zip && zip_close(m_zip) != 0)
        zip_discard(m_zip);
    delete this;
}
