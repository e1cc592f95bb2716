#include "cache/cachebackends.h"
#include "cache/threadcheck_p.h"

#include <QFile>
#include <QFileInfo>
#include <QThread>
#include <QtConcurrent/QtConcurrentRun>

namespace Ovra {

// ---- packed blocks ----------------------------------------------------------------------

QByteArray PackedCache::Item::rawData() const
{
    const QByteArray packed = packedData();
    if (encoding() != 0 || packed.isEmpty())
        return packed;
    return qUncompress(packed);
}

bool PackedCache::Item::setRawData(const QByteArray &data, uint encoding, void *codecData, uint crc)
{
    // An empty block takes no room at all, compressed or not.
    const QByteArray packed = encoding == 0 && !data.isEmpty() ? qCompress(data, -1) : data;
    StreamCache::Item::setRawData(data, encoding, codecData, crc);
    return setPackedData(packed);
}

bool MemoryCache::Item::setPackedData(const QByteArray &packed)
{
    m_packed = packed;
    return true;
}

StreamCache::Item *MemoryCache::newItem(const QVariant &)
{
    return new Item(this);
}

// ---- one temporary file -----------------------------------------------------------------

namespace {
constexpr qint64 MoveBuffer = 32768;
}

DiskCache::DiskCache(Codec *codec)
    : PackedCache(codec)
    , m_buffer(new char[MoveBuffer])
{
    m_file.open();
}

DiskCache::~DiskCache()
{
    delete[] m_buffer;
}

StreamCache::Item *DiskCache::newItem(const QVariant &)
{
    return new DiskItem(this);
}

DiskItem::DiskItem(DiskCache *cache)
    : PackedCache::Item(cache)
{
}

QByteArray DiskItem::rawData() const
{
    uint encoding = 0;
    QByteArray packed;
    {
        CheckedReadLocker locker(&disk()->m_lock);
        encoding = m_encoding;
        packed = readPacked();
    }
    return encoding != 0 || packed.isEmpty() ? packed : qUncompress(packed);
}

bool DiskItem::setRawData(const QByteArray &data, uint encoding, void *codecData, uint crc)
{
    const QByteArray packed = encoding == 0 && !data.isEmpty() ? qCompress(data, -1) : data;
    DiskCache *d = disk();
    CheckedWriteLocker locker(&d->m_lock);
    StreamCache::Item::setRawData(data, encoding, codecData, crc);
    const qint64 delta = writePacked(packed);
    locker.unlock();
    d->m_fileSize += delta;
    return true;
}

QByteArray DiskItem::packedData() const
{
    CheckedReadLocker locker(&disk()->m_lock);
    return readPacked();
}

bool DiskItem::setPackedData(const QByteArray &packed)
{
    DiskCache *d = disk();
    CheckedWriteLocker locker(&d->m_lock);
    const qint64 delta = writePacked(packed);
    locker.unlock();
    d->m_fileSize += delta;
    return true;
}

QByteArray DiskItem::readPacked() const
{
    DiskCache *d = disk();
    if (m_offset < 0)
        return QByteArray();
    // Other threads read through a file of their own, so that no two share a position.
    if (QThread::currentThread() == d->thread()) {
        d->m_file.seek(m_offset);
        return d->m_file.read(m_packedSize);
    }
    QFile file(d->m_file.fileName());
    if (!file.open(QIODevice::ReadOnly) || !file.seek(m_offset))
        return QByteArray();
    return file.read(m_packedSize);
}

qint64 DiskItem::writePacked(const QByteArray &packed)
{
    DiskCache *d = disk();
    QFile &file = d->m_file;
    const qint64 delta = qint64(packed.size()) - qint64(m_packedSize);
    if (m_offset >= 0 && delta != 0) {
        const qint64 blockEnd = m_offset + m_packedSize;
        if (delta < 0) {
            // Shrinking: the tail moves down, front piece first.
            for (qint64 from = blockEnd; from < d->m_fileSize;) {
                const qint64 count = qMin(MoveBuffer, d->m_fileSize - from);
                file.seek(from);
                file.read(d->m_buffer, count);
                file.seek(from + delta);
                file.write(d->m_buffer, count);
                from += count;
            }
        } else {
            // Growing: the tail moves up, back piece first, so nothing is overwritten unread.
            for (qint64 end = d->m_fileSize; end > blockEnd;) {
                const qint64 start = qMax(end - MoveBuffer, blockEnd);
                file.seek(start);
                file.read(d->m_buffer, end - start);
                file.seek(start + delta);
                file.write(d->m_buffer, end - start);
                end = start;
            }
        }
        file.flush();
        CheckedMutexLocker items(&d->m_mutex);
        for (StreamCache::Item *item : qAsConst(d->m_items)) {
            auto *other = static_cast<DiskItem *>(item);
            if (other->m_offset > m_offset)
                other->m_offset += delta;
        }
    }
    m_packedSize = quint32(packed.size());
    if (m_packedSize == 0) {
        m_offset = -1;
    } else {
        if (m_offset < 0)
            m_offset = d->m_fileSize;
        file.seek(m_offset);
        file.write(packed);
        file.flush();
    }
    return delta;
}

// ---- a file for each item -----------------------------------------------------------------

FileCache::FileCache(FileCodec *codec)
    : StreamCache(codec)
{
    qRegisterMetaType<ItemInfo>("Ovra::FileCache::ItemInfo");
}

StreamCache::Item *FileCache::newItem(const QVariant &init)
{
    return new Item(this, init.canConvert<ItemInfo>() ? init.value<ItemInfo>() : ItemInfo());
}

FileCache::Item::Item(FileCache *cache, const ItemInfo &info)
    : StreamCache::Item(cache)
    , m_fileName(info.fileName)
{
    FileCodec *codec = cache->codec();
    const QFileInfo file(m_fileName);
    StreamCache::Item::setRawData(QByteArray(), codec ? codec->encodingFromSuffix(file.suffix()) : 0, info.codecData,
                                  0);
    m_size = uint(file.size());
}

void FileCache::Item::remove()
{
    QFile::remove(m_fileName);
}

void FileCache::Item::rename(const QString &fileName)
{
    QFile::rename(m_fileName, fileName);
    m_fileName = fileName;
}

QByteArray FileCache::Item::rawData() const
{
    QFile file(m_fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool FileCache::Item::setRawData(const QByteArray &data, uint encoding, void *codecData, uint crc)
{
    // A file always has a format.
    if (encoding == 0)
        return false;
    if (encoding != m_encoding)
        QFile::remove(m_fileName);
    StreamCache::Item::setRawData(data, encoding, codecData, crc);
    QFile file(m_fileName);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    file.write(data);
    return true;
}

// ---- slices loaded in the background ------------------------------------------------------

AsyncFileCache::AsyncFileCache(StreamCache *target, const QString &fileName)
    : StreamCache(nullptr)
    , m_target(target)
    , m_fileName(fileName)
{
    qRegisterMetaType<Item::Info>("Ovra::AsyncFileCache::Item::Info");
    qRegisterMetaType<const Ovra::AsyncFileCache::Item *>("const Ovra::AsyncFileCache::Item*");
}

AsyncFileCache::~AsyncFileCache()
{
    clear();
    m_target->clear();
    m_target->release();
}

AsyncFileCache::Item *AsyncFileCache::addAsyncItem(const Item::Info &info)
{
    return static_cast<Item *>(addItem(QVariant::fromValue(info)));
}

StreamCache::Item *AsyncFileCache::newItem(const QVariant &init)
{
    if (init.isNull() || !init.canConvert<Item::Info>())
        return new Item(this, m_target->addItem(QVariant()));
    return new Item(this, init.value<Item::Info>());
}

AsyncFileCache::Item::Item(AsyncFileCache *cache, const Info &info)
    : StreamCache::Item(cache)
    , m_offset(info.offset)
    , m_sliceSize(info.size)
{
    StreamCache::Item::setRawData(QByteArray(), info.encoding, info.codecData, info.crc);
    m_size = info.size;
    threadCheckRelease(this); // what the worker reads is set by now
    m_future = QtConcurrent::run(QThreadPool::globalInstance(), &Item::load, cache, this);
}

AsyncFileCache::Item::Item(AsyncFileCache *cache, StreamCache::Item *target)
    : StreamCache::Item(cache)
{
    setItem(target);
}

AsyncFileCache::Item::~Item()
{
    waitForDataReady();
    if (StreamCache::Item *target = m_item.loadAcquire())
        target->release();
}

void AsyncFileCache::Item::setItem(StreamCache::Item *item)
{
    StreamCache::Item::setRawData(QByteArray(), item->encoding(), item->codecData(), item->crc());
    m_size = item->size();
    m_item.storeRelease(item);
}

void AsyncFileCache::Item::load(AsyncFileCache *cache, Item *item)
{
    threadCheckAcquire(item);
    QByteArray bytes;
    QFile file(cache->m_fileName);
    if (file.open(QIODevice::ReadOnly)) {
        // A file shorter than the slice leaves the slice's end zero.
        bytes = QByteArray(int(item->m_sliceSize), '\0');
        if (file.seek(item->m_offset))
            file.read(bytes.data(), bytes.size());
        file.close();
    }
    StreamCache::Item *target = cache->m_target->addItem(QVariant());
    target->setRawData(bytes, item->m_encoding, item->m_codecData, item->m_crc);
    item->setItem(target);
    emit cache->itemLoaded(item);
    threadCheckRelease(item); // all of the load, signal included, comes before its waiters
}

QByteArray AsyncFileCache::Item::rawData() const
{
    if (StreamCache::Item *target = m_item.loadAcquire())
        return target->rawData();
    // Not loaded yet: read the slice directly rather than wait for the pool.
    QFile file(static_cast<AsyncFileCache *>(m_cache)->m_fileName);
    if (!file.open(QIODevice::ReadOnly) || !file.seek(m_offset))
        return QByteArray();
    return file.read(m_sliceSize);
}

bool AsyncFileCache::Item::setRawData(const QByteArray &data, uint encoding, void *codecData, uint crc)
{
    waitForDataReady();
    StreamCache::Item::setRawData(data, encoding, codecData, crc);
    return m_item.loadAcquire()->setRawData(data, encoding, codecData, crc);
}

void AsyncFileCache::Item::waitForDataReady() const
{
    const_cast<QFuture<void> &>(m_future).waitForFinished();
    threadCheckAcquire(this);
}

} // namespace Ovra
