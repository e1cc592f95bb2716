#pragma once

#include "foundation/object.h"

#include <QAtomicInt>
#include <QByteArray>
#include <QList>
#include <QMutex>
#include <QVariant>

namespace Ovra {

// Keeps blocks of bytes out of the way of the editors (undo data of sounds, an engine's
// file data read through its own codec). Each block lives in an Item that knows its size,
// its CRC and its encoding; where the bytes lie is the back end's business. Two items are
// equal when their decoded bytes are, and the CRC is the quick refusal before any byte is
// compared. Items must be released (or cleared) while their cache lives.
class OVRA_EXPORT StreamCache : public Object
{
public:
    enum Type {
        Default = 0, // chosen by the host's "cache_type" option; only an argument of instance()
        Memory = 1,
        Disk = 2,
        File = 3,
    };

    // Turns an engine's encoded bytes into plain ones and back. The numbers of the
    // encodings are the engine's own; 0 always means plain bytes.
    class OVRA_EXPORT Codec
    {
    public:
        virtual void release() = 0;
        virtual ~Codec() = default;
        virtual bool decode(uint encoding, void *codecData, const QByteArray &encoded, QByteArray &decoded) = 0;
        virtual bool encode(uint encoding, void *codecData, const QByteArray &decoded, QByteArray &encoded) = 0;
    };

    class OVRA_EXPORT Item : public Object
    {
    public:
        explicit Item(StreamCache *cache);

        void addRef() { m_refCount.ref(); }
        // At the last reference the item leaves its cache and ends.
        void release() override;
        ~Item() override = default;

        // The stored bytes as they are, in their encoding.
        virtual QByteArray rawData() const = 0;
        // Stores bytes as they are. A CRC of 0 is computed when the bytes are plain; of
        // encoded bytes it can't be, and stays 0 until a comparison decodes them.
        virtual bool setRawData(const QByteArray &data, uint encoding, void *codecData, uint crc);

        // The decoded bytes; empty when the codec fails.
        QByteArray data() const;
        // Stores decoded bytes, encoded through the cache's codec when `encoding` isn't 0
        // (without a codec they are kept plain, as encoding 0). False, and nothing
        // changed, when the codec fails.
        bool setData(const QByteArray &data, uint encoding = 0, void *codecData = nullptr, uint crc = 0);

        bool isEqualTo(Item *other) const;
        bool isEqualTo(const QByteArray &data, uint crc) const;

        uint size() const { return m_size; }
        uint crc() const { return m_crc; }
        int refCount() const { return m_refCount.loadRelaxed(); }
        uint encoding() const { return m_encoding; }
        void *codecData() const { return m_codecData; }
        StreamCache *cache() const { return m_cache; }

    protected:
        friend class StreamCache;
        uint m_size = 0;
        mutable uint m_crc = 0; // filled lazily by comparisons
        QAtomicInt m_refCount = 1;
        uint m_encoding = 0;
        void *m_codecData = nullptr;
        StreamCache *m_cache;
    };

    // A new cache of the type; each call makes one. Null for an unknown type.
    static StreamCache *instance(Codec *codec, Type type = Default);

    explicit StreamCache(Codec *codec);
    // Only the codec goes with the cache: clear() or release the items before.
    ~StreamCache() override;
    void release() override;
    virtual Type type() const = 0;
    Codec *codec() const { return m_codec; }

    // A new item with one reference. What `init` means is the back end's business; an
    // empty one is a new empty item.
    Item *addItem(const QVariant &init = QVariant());
    void removeItem(Item *item) { item->release(); }
    // Deletes every item, whatever its references.
    void clear();
    QList<Item *> items() const;

    // The first item (but `except`) holding the same bytes, without a new reference; a
    // caller that wants to share it swaps it into its handle.
    Item *find(const QByteArray &data, const Item *except = nullptr) const;
    bool isEqual(const Item *a, const Item *b) const;
    // `crc` is the CRC of `data`, given by the caller.
    bool isEqual(const Item *item, const QByteArray &data, uint crc) const;

protected:
    virtual Item *newItem(const QVariant &init) = 0;
    // Puts a made item on the list, under the lock.
    void adopt(Item *item);

    Codec *m_codec;
    QList<Item *> m_items;
    mutable QMutex m_mutex;

    friend struct StreamCacheData;
};

// The handle by which a model object holds exactly one cached block, counted by
// references of its own.
struct OVRA_EXPORT StreamCacheData : public Object
{
    StreamCacheData() = default;
    StreamCacheData(const StreamCacheData &) = delete;
    StreamCacheData &operator=(const StreamCacheData &) = delete;
    ~StreamCacheData() override;

    void addRef() { m_refCount.ref(); }
    // At the last reference destroy() decides how the object ends.
    void release() override;

    bool fromData(const QByteArray &data, uint encoding = 0, void *codecData = nullptr, uint crc = 0);
    QByteArray toData() const;
    bool fromRawData(const QByteArray &data, uint encoding, void *codecData, uint crc);
    QByteArray toRawData() const;

    // These need an item.
    uint crc() const { return m_item->crc(); }
    uint encoding() const { return m_item->encoding(); }
    void *codecData() const { return m_item->codecData(); }
    StreamCache *cache() const { return m_item->cache(); }

    bool isEmpty() const { return !m_item || m_item->size() == 0; }
    bool isEqualTo(StreamCache::Item *other) const;
    bool isEqualToData(const QByteArray &data, uint crc) const { return m_item->isEqualTo(data, crc); }

    StreamCache::Item *item() const { return m_item; }
    // Shares another item of the same cache; an item of another cache is refused.
    void itemSwap(StreamCache::Item *other);
    void reset();

protected:
    void createItem(StreamCache *cache, const QVariant &init = QVariant());
    // How the object ends when its last reference goes.
    virtual void destroy() = 0;

    StreamCache::Item *m_item = nullptr;
    QAtomicInt m_refCount = 1;
};

} // namespace Ovra
