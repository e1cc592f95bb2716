#include "cache/cachebackends.h"
#include "foundation/utilities.h"

#include "testinterface.h"

#include <QtTest>

#include <memory>

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

// An item described by a word and its bytes: "plain" stored as they are, "flip" through
// the codec's encoding 7, "raw" already flipped in encoding 7 (its CRC waits for a
// comparison), "broken" in encoding 9, which doesn't decode; "" is an item never written.
StreamCache::Item *itemOf(StreamCache *cache, const QString &description)
{
    StreamCache::Item *item = cache->addItem();
    const QString kind = description.section(QLatin1Char(':'), 0, 0);
    const QByteArray bytes = description.section(QLatin1Char(':'), 1).toUtf8();
    if (kind == QLatin1String("plain"))
        item->setData(bytes);
    else if (kind == QLatin1String("flip"))
        item->setData(bytes, 7);
    else if (kind == QLatin1String("raw"))
        item->setRawData(FlipCodec::flipped(bytes), 7, nullptr, 0);
    else if (kind == QLatin1String("broken"))
        item->setRawData(bytes, 9, nullptr, 0);
    return item;
}

} // namespace

class StreamCacheTest : public QObject
{
    Q_OBJECT

private slots:
    void instanceByType_data();
    void instanceByType();
    void theCacheOwnsItsCodec();
    void referencesAndClear();
    void crcOfPlainAndEncodedBytes();
    void dataThroughTheCodec();
    void equality_data();
    void equality();
    void comparisonWithBytes();
    void findSharesNothingByItself();
    void handles();
    void handlesShareOnlyWithinOneCache();
};

void StreamCacheTest::instanceByType_data()
{
    QTest::addColumn<bool>("withHost");
    QTest::addColumn<QVariant>("option");
    QTest::addColumn<int>("asked");
    QTest::addColumn<int>("type");
    const int byOption = StreamCache::Default;
    QTest::addRow("no host") << false << QVariant() << byOption << int(StreamCache::Disk);
    QTest::addRow("no option") << true << QVariant() << byOption << int(StreamCache::Memory);
    QTest::addRow("1") << true << QVariant(1) << byOption << int(StreamCache::Memory);
    QTest::addRow("2") << true << QVariant(2) << byOption << int(StreamCache::Disk);
    QTest::addRow("5") << true << QVariant(5) << byOption << int(StreamCache::Disk);
    QTest::addRow("text 3") << true << QVariant(QStringLiteral("3")) << byOption << int(StreamCache::Disk);
    QTest::addRow("memory asked") << true << QVariant(2) << int(StreamCache::Memory) << int(StreamCache::Memory);
    QTest::addRow("disk asked") << true << QVariant(1) << int(StreamCache::Disk) << int(StreamCache::Disk);
    QTest::addRow("file asked") << false << QVariant() << int(StreamCache::File) << int(StreamCache::File);
    QTest::addRow("unknown") << false << QVariant() << 4 << -1;
}

void StreamCacheTest::instanceByType()
{
    QFETCH(bool, withHost);
    QFETCH(QVariant, option);
    QFETCH(int, asked);
    QFETCH(int, type);
    std::unique_ptr<TestInterface> host(withHost ? new TestInterface : nullptr);
    if (option.isValid())
        host->options.insert(QStringLiteral("cache_type"), option);
    StreamCache *cache = StreamCache::instance(nullptr, StreamCache::Type(asked));
    QCOMPARE(cache ? int(cache->type()) : -1, type);
    if (cache)
        cache->release();
}

void StreamCacheTest::theCacheOwnsItsCodec()
{
    int released = 0;
    StreamCache *cache = StreamCache::instance(new FlipCodec(&released), StreamCache::Memory);
    QCOMPARE(released, 0);
    cache->release();
    QCOMPARE(released, 1);
    // A file cache only takes a file codec; another kind leaves it without one.
    auto *codec = new FlipCodec(&released);
    StreamCache *files = StreamCache::instance(codec, StreamCache::File);
    QVERIFY(!files->codec());
    files->release();
    QCOMPARE(released, 1);
    codec->release();
}

void StreamCacheTest::referencesAndClear()
{
    for (StreamCache::Type type : {StreamCache::Memory, StreamCache::Disk}) {
        StreamCache *cache = StreamCache::instance(nullptr, type);
        StreamCache::Item *item = cache->addItem();
        QCOMPARE(item->refCount(), 1);
        QCOMPARE(cache->items(), QList<StreamCache::Item *>({item}));
        item->addRef();
        cache->removeItem(item);
        QCOMPARE(cache->items().size(), 1);
        item->release();
        QVERIFY(cache->items().isEmpty());
        // Clearing deletes whatever the references.
        StreamCache::Item *held = cache->addItem();
        held->addRef();
        held->addRef();
        cache->addItem()->setData("bytes");
        cache->clear();
        QVERIFY(cache->items().isEmpty());
        cache->release();
    }
}

void StreamCacheTest::crcOfPlainAndEncodedBytes()
{
    StreamCache *cache = StreamCache::instance(new FlipCodec, StreamCache::Memory);
    StreamCache::Item *plain = itemOf(cache, QStringLiteral("plain:plain bytes"));
    QCOMPARE(plain->crc(), crcOf("plain bytes"));
    QCOMPARE(plain->size(), 11u);
    // Encoded bytes can't give the CRC of what they decode to: it waits for a comparison.
    StreamCache::Item *encoded = itemOf(cache, QStringLiteral("raw:plain bytes"));
    QCOMPARE(encoded->crc(), 0u);
    QVERIFY(encoded->isEqualTo(plain));
    QCOMPARE(encoded->crc(), crcOf("plain bytes"));
    cache->clear();
    cache->release();
}

void StreamCacheTest::dataThroughTheCodec()
{
    StreamCache *cache = StreamCache::instance(new FlipCodec, StreamCache::Memory);
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

void StreamCacheTest::equality_data()
{
    QTest::addColumn<QString>("a");
    QTest::addColumn<QString>("b");
    QTest::addColumn<bool>("equal");
    QTest::addColumn<int>("decodes"); // -1: any number
    QTest::newRow("same bytes") << "plain:one block" << "plain:one block" << true << 0;
    QTest::newRow("other bytes") << "plain:one block" << "plain:another block" << false << 0;
    QTest::newRow("other encodings, same bytes") << "plain:same sound" << "flip:same sound" << true << -1;
    // Same encoding and CRC: the stored bytes are compared without decoding.
    QTest::newRow("same encoding and CRC") << "flip:same sound" << "flip:same sound" << true << 0;
    QTest::newRow("encoded, CRC unknown") << "raw:same sound" << "plain:same sound" << true << -1;
    QTest::newRow("two never written") << "" << "" << true << 0;
    // An item against itself: equal without touching its bytes.
    QTest::newRow("itself") << "raw:x" << "itself" << true << 0;
    // A block that fails to decode equals nothing, not even an empty one.
    QTest::newRow("failed decode against empty") << "broken:zz" << "" << false << -1;
}

void StreamCacheTest::equality()
{
    QFETCH(QString, a);
    QFETCH(QString, b);
    QFETCH(bool, equal);
    QFETCH(int, decodes);
    auto *codec = new FlipCodec;
    StreamCache *cache = StreamCache::instance(codec, StreamCache::Memory);
    StreamCache::Item *first = itemOf(cache, a);
    StreamCache::Item *second = b == QLatin1String("itself") ? first : itemOf(cache, b);
    codec->decodes = 0;
    QCOMPARE(first->isEqualTo(second), equal);
    QCOMPARE(cache->isEqual(second, first), equal);
    if (decodes >= 0)
        QCOMPARE(codec->decodes, decodes);
    cache->clear();
    cache->release();
}

void StreamCacheTest::comparisonWithBytes()
{
    StreamCache *cache = StreamCache::instance(new FlipCodec, StreamCache::Memory);
    StreamCache::Item *item = itemOf(cache, QStringLiteral("flip:sample"));
    QVERIFY(item->isEqualTo("sample", crcOf("sample")));
    QVERIFY(!item->isEqualTo("sample", crcOf("sample") + 1)); // the CRC refuses first
    QVERIFY(!item->isEqualTo("simple", crcOf("simple")));
    QVERIFY(!cache->addItem()->isEqualTo(QByteArray(), 0));
    cache->clear();
    cache->release();
}

void StreamCacheTest::findSharesNothingByItself()
{
    StreamCache *cache = StreamCache::instance(new FlipCodec, StreamCache::Disk);
    cache->addItem();
    StreamCache::Item *first = itemOf(cache, QStringLiteral("flip:shared"));
    StreamCache::Item *second = itemOf(cache, QStringLiteral("plain:shared"));
    QCOMPARE(cache->find("shared"), first);
    QCOMPARE(first->refCount(), 1);
    QCOMPARE(cache->find("shared", first), second);
    QCOMPARE(cache->find("unknown"), nullptr);
    QCOMPARE(cache->find(QByteArray()), nullptr); // empty items never match
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
