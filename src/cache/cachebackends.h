#pragma once

#include "cache/streamcache.h"

#include <QFuture>
#include <QObject>
#include <QReadWriteLock>
#include <QTemporaryFile>

namespace Ovra {

// Back ends that keep plain blocks zlib-compressed; encoded blocks are taken to be
// compact already and are kept as they are.
class OVRA_EXPORT PackedCache : public StreamCache
{
public:
    using StreamCache::StreamCache;

    class OVRA_EXPORT Item : public StreamCache::Item
    {
    public:
        using StreamCache::Item::Item;
        QByteArray rawData() const override;
        bool setRawData(const QByteArray &data, uint encoding, void *codecData, uint crc) override;

        virtual QByteArray packedData() const = 0;
        virtual bool setPackedData(const QByteArray &packed) = 0;
    };
};

// Blocks in memory.
class OVRA_EXPORT MemoryCache : public PackedCache
{
public:
    using PackedCache::PackedCache;
    Type type() const override { return Memory; }

    class OVRA_EXPORT Item : public PackedCache::Item
    {
    public:
        using PackedCache::Item::Item;
        QByteArray packedData() const override { return m_packed; }
        bool setPackedData(const QByteArray &packed) override;

    private:
        QByteArray m_packed;
    };

protected:
    StreamCache::Item *newItem(const QVariant &init) override;
};

// Blocks end to end in one temporary file. A block that changes size moves everything
// behind it, through one fixed 32 KiB buffer; the bytes of deleted blocks stay until the
// cache ends. Any thread may read or write: many readers or one writer at a time.
class OVRA_EXPORT DiskCache : public QObject, public PackedCache
{
    Q_OBJECT

public:
    explicit DiskCache(Codec *codec);
    ~DiskCache() override;
    Type type() const override { return Disk; }
    // Bytes in use in the file.
    qint64 fileSize() const { return m_fileSize; }
    QString fileName() const { return m_file.fileName(); }

protected:
    StreamCache::Item *newItem(const QVariant &init) override;

private:
    friend class DiskItem;
    QTemporaryFile m_file;
    mutable QReadWriteLock m_lock;
    char *m_buffer;
    qint64 m_fileSize = 0;
};

class OVRA_EXPORT DiskItem : public PackedCache::Item
{
public:
    explicit DiskItem(DiskCache *cache);
    // Under the cache's lock as a whole, so that a reader on another thread never sees
    // the encoding of one version with the bytes of another.
    QByteArray rawData() const override;
    bool setRawData(const QByteArray &data, uint encoding, void *codecData, uint crc) override;
    QByteArray packedData() const override;
    bool setPackedData(const QByteArray &packed) override;

    qint64 offset() const { return m_offset; }
    quint32 packedSize() const { return m_packedSize; }

private:
    DiskCache *disk() const { return static_cast<DiskCache *>(cache()); }
    // These need the lock: for reading, and for writing. The second answers by how much
    // the bytes in use grew, to be added once the lock is released.
    QByteArray readPacked() const;
    qint64 writePacked(const QByteArray &packed);

    qint64 m_offset = -1; // -1: nothing stored
    quint32 m_packedSize = 0;
};

// A file of its own for each item, named by the caller; its suffix tells the encoding
// through the cache's FileCodec. Plain bytes (encoding 0) are refused.
class OVRA_EXPORT FileCache : public StreamCache
{
public:
    class OVRA_EXPORT FileCodec : public Codec
    {
    public:
        virtual uint encodingFromSuffix(const QString &suffix) = 0;
    };

    struct ItemInfo
    {
        QString fileName;
        void *codecData = nullptr;
    };

    class OVRA_EXPORT Item : public StreamCache::Item
    {
    public:
        Item(FileCache *cache, const ItemInfo &info);
        QString fileName() const { return m_fileName; }
        bool isValid() const { return size() > 0; }
        void remove();
        // Takes the new name whether or not the file could be renamed.
        void rename(const QString &fileName);
        QByteArray rawData() const override;
        bool setRawData(const QByteArray &data, uint encoding, void *codecData, uint crc) override;

    private:
        QString m_fileName;
    };

    explicit FileCache(FileCodec *codec);
    Type type() const override { return File; }
    FileCodec *codec() const { return static_cast<FileCodec *>(m_codec); }

protected:
    StreamCache::Item *newItem(const QVariant &init) override;
};

// Slices of one large file, each read on the global thread pool into an item of another
// cache (the target, which this cache owns). A slice read before its load has ended is
// read from the file directly, so nobody waits for the pool.
class OVRA_EXPORT AsyncFileCache : public QObject, public StreamCache
{
    Q_OBJECT

public:
    class OVRA_EXPORT Item : public StreamCache::Item
    {
    public:
        struct Info
        {
            qint64 offset = 0;
            quint32 size = 0;
            quint32 reserved1 = 0;
            quint32 crc = 0;
            quint32 encoding = 0;
            void *codecData = nullptr;
            quint32 reserved2 = 0;
        };

        Item(AsyncFileCache *cache, const Info &info);
        Item(AsyncFileCache *cache, StreamCache::Item *target);
        ~Item() override;

        QByteArray rawData() const override;
        bool setRawData(const QByteArray &data, uint encoding, void *codecData, uint crc) override;
        void waitForDataReady() const;
        bool isLoaded() const { return m_item.loadAcquire() != nullptr; }
        StreamCache::Item *item() const { return m_item.loadAcquire(); }

    protected:
        void setItem(StreamCache::Item *item);

    private:
        friend class AsyncFileCache;
        static void load(AsyncFileCache *cache, Item *item);

        QAtomicPointer<StreamCache::Item> m_item;
        qint64 m_offset = 0;
        quint32 m_sliceSize = 0; // fixed at construction: the worker and early readers use it
        QFuture<void> m_future;
    };

    AsyncFileCache(StreamCache *target, const QString &fileName);
    ~AsyncFileCache() override;
    Type type() const override { return m_target->type(); }
    StreamCache *target() const { return m_target; }
    QString fileName() const { return m_fileName; }
    void setFileName(const QString &fileName) { m_fileName = fileName; }

    Item *addAsyncItem(const Item::Info &info);

signals:
    // From the worker thread, after each load.
    void itemLoaded(const Ovra::AsyncFileCache::Item *item);

protected:
    StreamCache::Item *newItem(const QVariant &init) override;

private:
    StreamCache *m_target;
    QString m_fileName;
};

} // namespace Ovra

Q_DECLARE_METATYPE(Ovra::FileCache::ItemInfo)
Q_DECLARE_METATYPE(Ovra::AsyncFileCache::Item::Info)
