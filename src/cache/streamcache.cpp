#include "cache/streamcache.h"
#include "cache/threadcheck_p.h"

#include "cache/cachebackends.h"
#include "foundation/interface.h"
#include "foundation/utilities.h"

namespace Ovra {
namespace {

uint crcOf(const QByteArray &data)
{
    return CRC32(data.constData(), data.size());
}

} // namespace

// ---- items ----------------------------------------------------------------------------

StreamCache::Item::Item(StreamCache *cache)
    : m_cache(cache)
{
}

void StreamCache::Item::release()
{
    if (m_refCount.deref())
        return;
    {
        CheckedMutexLocker locker(&m_cache->m_mutex);
        m_cache->m_items.removeAll(this);
    }
    delete this;
}

bool StreamCache::Item::setRawData(const QByteArray &data, uint encoding, void *codecData, uint crc)
{
    if (crc == 0 && encoding == 0)
        crc = crcOf(data);
    m_crc = crc;
    m_encoding = encoding;
    m_codecData = codecData;
    m_size = uint(data.size());
    return true;
}

QByteArray StreamCache::Item::data() const
{
    const QByteArray raw = rawData();
    Codec *codec = m_cache->codec();
    if (m_encoding == 0 || !codec)
        return raw;
    QByteArray decoded;
    return codec->decode(m_encoding, m_codecData, raw, decoded) ? decoded : QByteArray();
}

bool StreamCache::Item::setData(const QByteArray &data, uint encoding, void *codecData, uint crc)
{
    if (crc == 0)
        crc = crcOf(data);
    Codec *codec = m_cache->codec();
    if (encoding == 0 || !codec)
        return setRawData(data, 0, codecData, crc);
    QByteArray encoded;
    if (!codec->encode(encoding, codecData, data, encoded))
        return false;
    return setRawData(encoded, encoding, codecData, crc);
}

bool StreamCache::Item::isEqualTo(Item *other) const
{
    return m_cache->isEqual(this, other);
}

bool StreamCache::Item::isEqualTo(const QByteArray &data, uint crc) const
{
    return m_cache->isEqual(this, data, crc);
}

// ---- the cache ------------------------------------------------------------------------

StreamCache *StreamCache::instance(Codec *codec, Type type)
{
    switch (type) {
    case Default: {
        Interface *host = Interface::instance();
        if (host && host->option(QStringLiteral("cache_type"), QVariant()).toInt() < 2)
            return new MemoryCache(codec);
        return new DiskCache(codec);
    }
    case Memory:
        return new MemoryCache(codec);
    case Disk:
        return new DiskCache(codec);
    case File:
        return new FileCache(dynamic_cast<FileCache::FileCodec *>(codec));
    }
    return nullptr;
}

StreamCache::StreamCache(Codec *codec)
    : m_codec(codec)
{
}

StreamCache::~StreamCache()
{
    if (m_codec)
        m_codec->release();
}

void StreamCache::release()
{
    delete this;
}

StreamCache::Item *StreamCache::addItem(const QVariant &init)
{
    Item *item = newItem(init);
    adopt(item);
    return item;
}

void StreamCache::adopt(Item *item)
{
    CheckedMutexLocker locker(&m_mutex);
    m_items.append(item);
}

void StreamCache::clear()
{
    CheckedMutexLocker locker(&m_mutex);
    while (!m_items.isEmpty())
        delete m_items.takeLast();
}

QList<StreamCache::Item *> StreamCache::items() const
{
    CheckedMutexLocker locker(&m_mutex);
    return m_items;
}

StreamCache::Item *StreamCache::find(const QByteArray &data, const Item *except) const
{
    // Linear, with the CRC as the quick refusal: the lists are short.
    const uint crc = crcOf(data);
    for (Item *item : m_items) {
        if (item != except && isEqual(item, data, crc))
            return item;
    }
    return nullptr;
}

bool StreamCache::isEqual(const Item *a, const Item *b) const
{
    if (a == b)
        return true;
    if (!a || !b)
        return false;
    QByteArray dataA;
    QByteArray dataB;
    if (a->m_crc == 0) {
        dataA = a->data();
        a->m_crc = crcOf(dataA);
    }
    if (b->m_crc == 0) {
        dataB = b->data();
        b->m_crc = crcOf(dataB);
    }
    if (a->m_crc != b->m_crc)
        return false;
    // Same CRC and same encoding: the stored bytes tell, without decoding.
    if (dataA.isEmpty() && dataB.isEmpty() && a->m_encoding == b->m_encoding)
        return a->rawData() == b->rawData();
    if (dataA.isEmpty())
        dataA = a->data();
    if (dataB.isEmpty())
        dataB = b->data();
    return !dataB.isEmpty() && dataA == dataB;
}

bool StreamCache::isEqual(const Item *item, const QByteArray &data, uint crc) const
{
    QByteArray bytes;
    bool fetched = false;
    if (item->m_crc == 0) {
        bytes = item->data();
        fetched = true;
        item->m_crc = crcOf(bytes);
    }
    if (item->m_crc != crc)
        return false;
    if (!fetched)
        bytes = item->data();
    return !bytes.isEmpty() && bytes == data;
}

// ---- the handle -----------------------------------------------------------------------

StreamCacheData::~StreamCacheData()
{
    if (m_item)
        m_item->release();
}

void StreamCacheData::release()
{
    if (!m_refCount.deref())
        destroy();
}

bool StreamCacheData::fromData(const QByteArray &data, uint encoding, void *codecData, uint crc)
{
    return m_item->setData(data, encoding, codecData, crc);
}

QByteArray StreamCacheData::toData() const
{
    return m_item->data();
}

bool StreamCacheData::fromRawData(const QByteArray &data, uint encoding, void *codecData, uint crc)
{
    return m_item->setRawData(data, encoding, codecData, crc);
}

QByteArray StreamCacheData::toRawData() const
{
    return m_item->rawData();
}

bool StreamCacheData::isEqualTo(StreamCache::Item *other) const
{
    if (!m_item)
        return !other;
    if (!other)
        return false;
    return m_item->isEqualTo(other);
}

void StreamCacheData::itemSwap(StreamCache::Item *other)
{
    if (other == m_item)
        return;
    // Items never cross caches.
    if (m_item && other && other->cache() != m_item->cache())
        return;
    if (m_item)
        m_item->release();
    m_item = other;
    if (m_item)
        m_item->addRef();
}

void StreamCacheData::reset()
{
    if (m_item)
        m_item->release();
    m_item = nullptr;
}

void StreamCacheData::createItem(StreamCache *cache, const QVariant &init)
{
    if (m_item)
        m_item->release();
    m_item = cache->newItem(init);
    cache->adopt(m_item);
}

} // namespace Ovra
