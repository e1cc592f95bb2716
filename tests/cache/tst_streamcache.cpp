#include "cache/cachebackends.h"
#include "foundation/utilities.h"

#include "testinterface.h"

#include <QtTest>

using namespace Ovra;

namespace {

uint crcOf(const QByteArray &data)
{
    return CRC32(data.constData(), data.size());
}

// Encoding 7 turns every byte over; encoding 9 fails both ways; the counts tell what was
// decoded.
class FlipCodec : public StreamCache::Codec
{
public:
    explicit FlipCodec(int *released = nullptr) : m_released(released) {}
    void release() override
    {
        if (m_released)
            ++*m_released;
        delete this;
    }
    bool decode(uint encoding, void *, const QByteArray &encoded, QByteArray &decoded) override
    {
        ++decodes;
        if (encoding != 7)
            return false;
        decoded = flipped(encoded);
        return true;
    }
    bool encode(uint encoding, void *, const QByteArray &decoded, QByteArray &encoded) override
    {
        if (encoding != 7)
            return false;
        encoded = flipped(decoded);
        return true;
    }
    static QByteArray flipped(QByteArray bytes)
    {
        for (char &byte : bytes)
            byte = char(~byte);
        return bytes;
    }
    int decodes = 0;

private:
    int *m_released;
};

// A model object holding one block; it counts how it ended.
struct Holder : StreamCacheData
{
    explicit Holder(int *ended) : m_ended(ended) {}
    using StreamCacheData::createItem;
    void destroy() override
    {
        ++*m_ended;
        delete this;
    }
    int *m_ended;
};

} // namespace

class StreamCacheTest : public QObject
{
    Q_OBJECT

private slots:
    void instanceByType_data();
    void instanceByType();
    void instanceWithoutHost();
    void theCacheOwnsItsCodec();
    void newItemsAndReferences();
    void clearDeletesWhateverTheReferences();
    void crcOfPlainAndEncodedBytes();
    void dataThroughTheCodec();
    void comparisons();
    void comparisonsOfEncodedItems();
    void comparisonWithBytes();
    void findSharesNothingByItself();
    void handles();
    void handlesShareOnlyWithinOneCache();
};

void StreamCacheTest::instanceByType_data()
{
    QTest::addColumn<QVariant>("option");
    QTest::addColumn<int>("type");
    QTest::addRow("no option") << QVariant() << int(StreamCache::Memory);
    QTest::addRow("1") << QVariant(1) << int(StreamCache::Memory);
    QTest::addRow("2") << QVariant(2) << int(StreamCache::Disk);
    QTest::addRow("5") << QVariant(5) << int(StreamCache::Disk);
    QTest::addRow("text 3") << QVariant(QStringLiteral("3")) << int(StreamCache::Disk);
}

void StreamCacheTest::instanceByType()
{
    QFETCH(QVariant, option);
    QFETCH(int, type);
    TestInterface host;
    if (option.isValid())
        host.options.insert(QStringLiteral("cache_type"), option);
    StreamCache *cache = StreamCache::instance(nullptr, StreamCache::Default);
    QVERIFY(cache);
    QCOMPARE(int(cache->type()), type);
    cache->release();
}

void StreamCacheTest::instanceWithoutHost()
{
    StreamCache *cache = StreamCache::instance(nullptr);
    QCOMPARE(cache->type(), StreamCache::Disk);
    cache->release();
    for (StreamCache::Type type : {StreamCache::Memory, StreamCache::Disk, StreamCache::File}) {
        StreamCache *made = StreamCache::instance(nullptr, type);
        QCOMPARE(made->type(), type);
        made->release();
    }
    QVERIFY(!StreamCache::instance(nullptr, StreamCache::Type(4)));
    // A file cache only takes a file codec; another kind leaves it without one.
    auto *codec = new FlipCodec;
    StreamCache *files = StreamCache::instance(codec, StreamCache::File);
    QVERIFY(!files->codec());
    files->release();
    codec->release();
}

void StreamCacheTest::theCacheOwnsItsCodec()
{
    int released = 0;
    StreamCache *cache = StreamCache::instance(new FlipCodec(&released), StreamCache::Memory);
    QCOMPARE(released, 0);
    cache->release();
    QCOMPARE(released, 1);
}

void StreamCacheTest::newItemsAndReferences()
{
    StreamCache *cache = StreamCache::instance(nullptr, StreamCache::Memory);
    StreamCache::Item *item = cache->addItem();
    QCOMPARE(item->size(), 0u);
    QCOMPARE(item->crc(), 0u);
    QCOMPARE(item->encoding(), 0u);
    QCOMPARE(item->codecData(), nullptr);
    QCOMPARE(item->refCount(), 1);
    QCOMPARE(item->cache(), cache);
    QCOMPARE(cache->items(), QList<StreamCache::Item *>({item}));
    item->addRef();
    cache->removeItem(item);
    QCOMPARE(cache->items().size(), 1);
    item->release();
    QVERIFY(cache->items().isEmpty());
    cache->release();
}

void StreamCacheTest::clearDeletesWhateverTheReferences()
{
    for (StreamCache::Type type : {StreamCache::Memory, StreamCache::Disk}) {
        StreamCache *cache = StreamCache::instance(nullptr, type);
        StreamCache::Item *a = cache->addItem();
        a->addRef();
        a->addRef();
        cache->addItem()->setData("bytes");
        cache->clear();
        QVERIFY(cache->items().isEmpty());
        cache->release();
    }
}

void StreamCacheTest::crcOfPlainAndEncodedBytes()
{
    StreamCache *cache = StreamCache::instance(new FlipCodec, StreamCache::Memory);
    StreamCache::Item *plain = cache->addItem();
    QVERIFY(plain->setRawData("plain bytes", 0, nullptr, 0));
    QCOMPARE(plain->crc(), crcOf("plain bytes"));
    QCOMPARE(plain->size(), 11u);
    // Encoded bytes can't give the CRC of what they decode to: it waits for a comparison.
    StreamCache::Item *encoded = cache->addItem();
    QVERIFY(encoded->setRawData(FlipCodec::flipped("plain bytes"), 7, nullptr, 0));
    QCOMPARE(encoded->crc(), 0u);
    QVERIFY(encoded->isEqualTo(plain));
    QCOMPARE(encoded->crc(), crcOf("plain bytes"));
    cache->clear();
    cache->release();
}

void StreamCacheTest::dataThroughTheCodec()
{
    auto *codec = new FlipCodec;
    StreamCache *cache = StreamCache::instance(codec, StreamCache::Memory);
    StreamCache::Item *item = cache->addItem();
    int marker = 0;
    QVERIFY(item->setData("sound", 7, &marker));
    QCOMPARE(item->encoding(), 7u);
    QCOMPARE(item->codecData(), &marker);
    QCOMPARE(item->rawData(), FlipCodec::flipped("sound"));
    QCOMPARE(item->data(), QByteArray("sound"));
    QCOMPARE(item->crc(), crcOf("sound"));
    // A failing encode changes nothing.
    QVERIFY(!item->setData("other", 9));
    QCOMPARE(item->data(), QByteArray("sound"));
    QCOMPARE(item->encoding(), 7u);
    // A failing decode reads as nothing.
    QVERIFY(item->setRawData("x", 9, nullptr, 0));
    QVERIFY(item->data().isEmpty());
    cache->clear();
    cache->release();

    // Without a codec an encoding is dropped: the bytes are kept plain.
    StreamCache *plain = StreamCache::instance(nullptr, StreamCache::Memory);
    StreamCache::Item *kept = plain->addItem();
    QVERIFY(kept->setData("sound", 7));
    QCOMPARE(kept->encoding(), 0u);
    QCOMPARE(kept->rawData(), QByteArray("sound"));
    plain->clear();
    plain->release();
}

void StreamCacheTest::comparisons()
{
    auto *codec = new FlipCodec;
    StreamCache *cache = StreamCache::instance(codec, StreamCache::Memory);
    StreamCache::Item *a = cache->addItem();
    StreamCache::Item *b = cache->addItem();
    StreamCache::Item *c = cache->addItem();
    a->setData("one block");
    b->setData("one block");
    c->setData("another block");
    QVERIFY(cache->isEqual(a, b));
    QVERIFY(a->isEqualTo(b));
    QVERIFY(!a->isEqualTo(c));
    // An item against itself: true without touching its bytes.
    StreamCache::Item *encoded = cache->addItem();
    encoded->setRawData(FlipCodec::flipped("x"), 7, nullptr, 0);
    codec->decodes = 0;
    QVERIFY(encoded->isEqualTo(encoded));
    QCOMPARE(codec->decodes, 0);
    QCOMPARE(encoded->crc(), 0u);
    // Two empty items of the same encoding are equal.
    QVERIFY(cache->addItem()->isEqualTo(cache->addItem()));
    cache->clear();
    cache->release();
}

void StreamCacheTest::comparisonsOfEncodedItems()
{
    auto *codec = new FlipCodec;
    StreamCache *cache = StreamCache::instance(codec, StreamCache::Memory);
    StreamCache::Item *plain = cache->addItem();
    StreamCache::Item *flipped = cache->addItem();
    plain->setData("same sound");
    flipped->setData("same sound", 7);
    // Different encodings, same decoded bytes.
    QVERIFY(plain->isEqualTo(flipped));
    // Same encoding and CRC: the stored bytes are compared without decoding.
    StreamCache::Item *twin = cache->addItem();
    twin->setData("same sound", 7);
    codec->decodes = 0;
    QVERIFY(flipped->isEqualTo(twin));
    QCOMPARE(codec->decodes, 0);
    // Two items of different encodings that both decode to nothing are not equal.
    StreamCache::Item *broken = cache->addItem();
    StreamCache::Item *empty = cache->addItem();
    broken->setRawData("zz", 9, nullptr, 0);
    QVERIFY(!broken->isEqualTo(empty));
    cache->clear();
    cache->release();
}

void StreamCacheTest::comparisonWithBytes()
{
    StreamCache *cache = StreamCache::instance(new FlipCodec, StreamCache::Memory);
    StreamCache::Item *item = cache->addItem();
    item->setData("sample", 7);
    QVERIFY(item->isEqualTo("sample", crcOf("sample")));
    QVERIFY(!item->isEqualTo("sample", crcOf("sample") + 1)); // the CRC refuses first
    QVERIFY(!item->isEqualTo("simple", crcOf("simple")));
    StreamCache::Item *empty = cache->addItem();
    QVERIFY(!empty->isEqualTo(QByteArray(), 0));
    cache->clear();
    cache->release();
}

void StreamCacheTest::findSharesNothingByItself()
{
    StreamCache *cache = StreamCache::instance(new FlipCodec, StreamCache::Disk);
    StreamCache::Item *empty = cache->addItem();
    StreamCache::Item *first = cache->addItem();
    StreamCache::Item *second = cache->addItem();
    first->setData("shared", 7);
    second->setData("shared");
    QCOMPARE(cache->find("shared"), first);
    QCOMPARE(first->refCount(), 1);
    QCOMPARE(cache->find("shared", first), second);
    QCOMPARE(cache->find("unknown"), nullptr);
    QCOMPARE(cache->find(QByteArray()), nullptr); // empty items never match
    Q_UNUSED(empty)
    // addItem always makes a new item.
    QCOMPARE(cache->items().size(), 3);
    cache->clear();
    cache->release();
}

void StreamCacheTest::handles()
{
    StreamCache *cache = StreamCache::instance(nullptr, StreamCache::Memory);
    int ended = 0;
    auto *holder = new Holder(&ended);
    QVERIFY(holder->isEmpty());
    QVERIFY(holder->isEqualTo(nullptr));
    holder->createItem(cache);
    QVERIFY(holder->isEmpty());
    QVERIFY(!holder->isEqualTo(nullptr));
    QVERIFY(holder->fromData("held bytes"));
    QVERIFY(!holder->isEmpty());
    QCOMPARE(holder->toData(), QByteArray("held bytes"));
    QCOMPARE(holder->crc(), crcOf("held bytes"));
    QCOMPARE(holder->cache(), cache);
    QVERIFY(holder->isEqualToData("held bytes", crcOf("held bytes")));
    QVERIFY(holder->fromRawData("raw", 0, nullptr, 0));
    QCOMPARE(holder->toRawData(), QByteArray("raw"));
    // A second holder comes to share the first one's item.
    auto *other = new Holder(&ended);
    other->createItem(cache);
    QCOMPARE(cache->items().size(), 2);
    other->itemSwap(holder->item());
    QCOMPARE(other->item(), holder->item());
    QCOMPARE(holder->item()->refCount(), 2);
    QCOMPARE(cache->items().size(), 1);
    QVERIFY(other->isEqualTo(holder->item()));
    holder->addRef();
    holder->release();
    QCOMPARE(ended, 0);
    holder->release();
    QCOMPARE(ended, 1);
    QCOMPARE(other->item()->refCount(), 1);
    other->reset();
    QVERIFY(cache->items().isEmpty());
    QVERIFY(!other->item());
    other->release();
    QCOMPARE(ended, 2);
    cache->release();
}

void StreamCacheTest::handlesShareOnlyWithinOneCache()
{
    StreamCache *first = StreamCache::instance(nullptr, StreamCache::Memory);
    StreamCache *second = StreamCache::instance(nullptr, StreamCache::Memory);
    int ended = 0;
    auto *holder = new Holder(&ended);
    holder->createItem(first);
    StreamCache::Item *own = holder->item();
    StreamCache::Item *foreign = second->addItem();
    holder->itemSwap(foreign);
    QCOMPARE(holder->item(), own);
    QCOMPARE(foreign->refCount(), 1);
    holder->itemSwap(own); // the present item: nothing
    QCOMPARE(own->refCount(), 1);
    holder->release();
    foreign->release();
    first->release();
    second->release();
}

QTEST_MAIN(StreamCacheTest)
#include "tst_streamcache.moc"
