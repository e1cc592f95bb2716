#include "cache/cachebackends.h"

#include "testfiles.h"

#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QThread>
#include <QtConcurrent/QtConcurrentRun>
#include <QtTest>

#include <atomic>
#include <future>
#include <map>
#include <thread>

using namespace Ovra;

namespace {

QByteArray noise(QRandomGenerator &random, int size)
{
    QByteArray bytes(size, '\0');
    for (char &byte : bytes)
        byte = char(random.bounded(256));
    return bytes;
}

// Encodings by suffix: ".sfx" is 3, anything else 5; the bytes are kept as they are.
class SuffixCodec : public FileCache::FileCodec
{
public:
    void release() override { delete this; }
    bool decode(uint, void *, const QByteArray &encoded, QByteArray &decoded) override
    {
        decoded = encoded;
        return true;
    }
    bool encode(uint, void *, const QByteArray &decoded, QByteArray &encoded) override
    {
        encoded = decoded;
        return true;
    }
    uint encodingFromSuffix(const QString &suffix) override { return suffix == QLatin1String("sfx") ? 3 : 5; }
};

DiskItem *diskItem(StreamCache::Item *item)
{
    return static_cast<DiskItem *>(item);
}

// Every live block lies inside the file, and no two overlap.
bool blocksAreDisjoint(DiskCache *cache)
{
    std::map<qint64, qint64> blocks;
    for (StreamCache::Item *item : cache->items()) {
        const DiskItem *disk = diskItem(item);
        if (disk->offset() < 0)
            continue;
        if (disk->offset() + disk->packedSize() > cache->fileSize())
            return false;
        blocks[disk->offset()] = disk->offset() + disk->packedSize();
    }
    qint64 end = 0;
    for (const auto &block : blocks) {
        if (block.first < end)
            return false;
        end = block.second;
    }
    return true;
}

FileCache::Item *fileItem(StreamCache *cache, const QString &name, void *codecData = nullptr)
{
    return static_cast<FileCache::Item *>(cache->addItem(QVariant::fromValue(FileCache::ItemInfo{name, codecData})));
}

AsyncFileCache::Item *slice(AsyncFileCache *cache, qint64 offset, quint32 size)
{
    AsyncFileCache::Item::Info info;
    info.offset = offset;
    info.size = size;
    return cache->addAsyncItem(info);
}

} // namespace

class CacheBackendsTest : public QObject
{
    Q_OBJECT

private slots:
    void plainBlocksAreCompressed_data();
    void plainBlocksAreCompressed();
    void diskBlocksAppendAndFree();
    void diskBlocksGrowAndShrink_data();
    void diskBlocksGrowAndShrink();
    void diskModel_data();
    void diskModel();
    void diskReadersDuringMoves();
    void fileItems();
    void asyncItemsLoadInTheBackground();
    void asyncItemsOfAnUnreadableFile();
    void asyncItemsReadBeforeTheirLoad();
    void asyncItemsWrappingTargetItems();
};

void CacheBackendsTest::plainBlocksAreCompressed_data()
{
    QTest::addColumn<int>("type");
    QTest::addRow("memory") << int(StreamCache::Memory);
    QTest::addRow("disk") << int(StreamCache::Disk);
}

void CacheBackendsTest::plainBlocksAreCompressed()
{
    QFETCH(int, type);
    StreamCache *cache = StreamCache::instance(nullptr, StreamCache::Type(type));
    auto *item = static_cast<PackedCache::Item *>(cache->addItem());
    const QByteArray silence(100000, '\0');
    QVERIFY(item->setData(silence));
    QCOMPARE(item->size(), 100000u);
    QCOMPARE(item->packedData(), qCompress(silence, -1));
    QCOMPARE(item->data(), silence);
    // Encoded bytes are kept as they come.
    QVERIFY(item->setRawData(silence, 4, nullptr, 0));
    QCOMPARE(item->packedData().size(), 100000);
    QCOMPARE(item->rawData(), silence);
    cache->clear();
    cache->release();
}

void CacheBackendsTest::diskBlocksAppendAndFree()
{
    DiskCache cache(nullptr);
    QRandomGenerator random(1);
    StreamCache::Item *a = cache.addItem();
    StreamCache::Item *b = cache.addItem();
    StreamCache::Item *c = cache.addItem();
    QCOMPARE(diskItem(a)->offset(), -1);
    const QByteArray bytesA = noise(random, 3000);
    const QByteArray bytesB = noise(random, 5000);
    const QByteArray bytesC = noise(random, 700);
    // Each first store appends at the end.
    a->setData(bytesA);
    b->setData(bytesB);
    c->setData(bytesC);
    const qint64 sizeA = diskItem(a)->packedSize();
    const qint64 sizeB = diskItem(b)->packedSize();
    const qint64 sizeC = diskItem(c)->packedSize();
    QCOMPARE(diskItem(a)->offset(), 0);
    QCOMPARE(diskItem(b)->offset(), sizeA);
    QCOMPARE(cache.fileSize(), sizeA + sizeB + sizeC);
    // Emptying the middle block frees its slice: the tail slides down behind it.
    b->setData(QByteArray());
    QCOMPARE(diskItem(b)->offset(), -1);
    QCOMPARE(cache.fileSize(), sizeA + sizeC);
    QCOMPARE(diskItem(c)->offset(), sizeA);
    QCOMPARE(a->data(), bytesA);
    QCOMPARE(c->data(), bytesC);
    QVERIFY(b->data().isEmpty());
    // Stored again, it goes to the end.
    b->setData(bytesB);
    QCOMPARE(diskItem(b)->offset(), sizeA + sizeC);
    QCOMPARE(b->data(), bytesB);
    // A deleted item's bytes stay in the file.
    a->release();
    QCOMPARE(cache.fileSize(), sizeA + sizeB + sizeC);
    QCOMPARE(c->data(), bytesC);
    cache.clear();
}

void CacheBackendsTest::diskBlocksGrowAndShrink_data()
{
    QTest::addColumn<int>("tail");
    QTest::addRow("short tail") << 5000;
    QTest::addRow("tail over one buffer") << 100000;
    QTest::addRow("tail of exactly two buffers") << 65536;
}

void CacheBackendsTest::diskBlocksGrowAndShrink()
{
    QFETCH(int, tail);
    DiskCache cache(nullptr);
    QRandomGenerator random{quint32(tail)};
    StreamCache::Item *first = cache.addItem();
    StreamCache::Item *second = cache.addItem();
    StreamCache::Item *third = cache.addItem();
    // Encoded, so that the stored sizes are exactly the lengths given.
    const QByteArray secondBytes = noise(random, tail / 2);
    const QByteArray thirdBytes = noise(random, tail - tail / 2);
    first->setRawData(noise(random, 1000), 1, nullptr, 0);
    second->setRawData(secondBytes, 1, nullptr, 0);
    third->setRawData(thirdBytes, 1, nullptr, 0);
    for (int size : {1000 + 40000, 1000 + 7, 3, 1000 + 32768, 50}) {
        const QByteArray firstBytes = noise(random, size);
        first->setRawData(firstBytes, 1, nullptr, 0);
        QCOMPARE(first->rawData(), firstBytes);
        QCOMPARE(second->rawData(), secondBytes);
        QCOMPARE(third->rawData(), thirdBytes);
        QCOMPARE(diskItem(second)->offset(), qint64(size));
        QCOMPARE(cache.fileSize(), qint64(size + tail));
    }
    cache.clear();
}

void CacheBackendsTest::diskModel_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed : {1u, 2u, 3u})
        QTest::addRow("seed %u", seed) << seed;
}

void CacheBackendsTest::diskModel()
{
    // Thousands of random steps against a model of the bytes of every live item.
    QFETCH(quint32, seed);
    QRandomGenerator random(seed);
    DiskCache cache(nullptr);
    QVector<StreamCache::Item *> live;
    QMap<StreamCache::Item *, QByteArray> model;
    auto bytesOfSize = [&](int size) {
        // Half incompressible, half compressible, so that stored sizes vary both ways.
        return random.bounded(2) ? noise(random, size) : QByteArray(size, char('a' + random.bounded(3)));
    };
    for (int step = 0; step < 3000; ++step) {
        const int action = random.bounded(100);
        if (action < 15 || live.isEmpty()) {
            StreamCache::Item *item = cache.addItem();
            live << item;
            model[item] = QByteArray();
        } else {
            StreamCache::Item *item = live.at(random.bounded(live.size()));
            if (action < 55) {
                model[item] = bytesOfSize(random.bounded(40000));
            } else if (action < 70) {
                model[item] = model[item] + bytesOfSize(1 + random.bounded(3000)); // grow
            } else if (action < 80) {
                model[item] = model[item].left(random.bounded(model[item].size() + 1)); // shrink
            } else if (action < 88) {
                model[item] = QByteArray(); // empty
            } else if (action < 99) {
                live.removeOne(item);
                model.remove(item);
                item->release();
                continue;
            } else {
                cache.clear();
                live.clear();
                model.clear();
                continue;
            }
            QVERIFY(item->setData(model[item]));
        }
        for (StreamCache::Item *item : qAsConst(live)) {
            if (item->data() != model[item])
                QFAIL(qPrintable(QStringLiteral("step %1: an item's bytes differ").arg(step)));
        }
        QVERIFY2(blocksAreDisjoint(&cache), qPrintable(QString::number(step)));
    }
    cache.clear();
}

void CacheBackendsTest::diskReadersDuringMoves()
{
    // Three readers on their own threads while this thread resizes blocks: every read
    // gives one of the two versions of a block, never a mix or a block moved underneath.
    DiskCache cache(nullptr);
    QRandomGenerator random(7);
    struct Block
    {
        StreamCache::Item *item;
        QByteArray small;
        QByteArray large;
    };
    QVector<Block> blocks;
    for (int i = 0; i < 6; ++i) {
        Block block{cache.addItem(), noise(random, 2000 + i * 10), noise(random, 50000 + i * 1000)};
        block.item->setRawData(block.small, 1, nullptr, 0);
        blocks << block;
    }
    std::atomic<bool> done{false};
    std::atomic<int> reads{0};
    std::atomic<int> wrong{0};
    std::vector<std::thread> readers;
    for (int r = 0; r < 3; ++r) {
        readers.emplace_back([&, r] {
            for (int i = r; !done.load(); ++i) {
                const Block &block = blocks.at(i % blocks.size());
                const QByteArray bytes = block.item->rawData();
                if (bytes != block.small && bytes != block.large)
                    ++wrong;
                ++reads;
            }
        });
    }
    for (int round = 0; round < 300; ++round) {
        const Block &block = blocks.at(round % blocks.size());
        block.item->setRawData(round % 2 ? block.small : block.large, 1, nullptr, 0);
    }
    // Let the readers see the last state too.
    while (reads.load() < 300)
        QThread::yieldCurrentThread();
    done = true;
    for (std::thread &reader : readers)
        reader.join();
    QCOMPARE(wrong.load(), 0);
    cache.clear();
}

void CacheBackendsTest::fileItems()
{
    QTemporaryDir directory;
    const QString name = directory.filePath(QStringLiteral("voice.sfx"));
    QVERIFY(writeFile(name, "RIFFdata"));
    StreamCache *cache = StreamCache::instance(new SuffixCodec, StreamCache::File);
    int marker = 0;
    FileCache::Item *item = fileItem(cache, name, &marker);
    QCOMPARE(item->encoding(), 3u);
    QCOMPARE(item->codecData(), &marker);
    QCOMPARE(item->size(), 8u); // from the file, which isn't read
    QVERIFY(item->isValid());
    QCOMPARE(item->data(), QByteArray("RIFFdata"));
    QVERIFY(item->setData("new bytes", 3));
    QCOMPARE(readFile(name), QByteArray("new bytes"));
    item->rename(directory.filePath(QStringLiteral("moved.sfx")));
    QCOMPARE(readFile(directory.filePath(QStringLiteral("moved.sfx"))), QByteArray("new bytes"));
    // A failed rename takes the name all the same.
    item->rename(directory.filePath(QStringLiteral("nowhere/else.sfx")));
    QCOMPARE(item->fileName(), directory.filePath(QStringLiteral("nowhere/else.sfx")));
    QVERIFY(item->rawData().isEmpty());

    // A file always has a format: plain bytes are refused, and another encoding deletes
    // the file first (here it is written again at once).
    const QString fresh = directory.filePath(QStringLiteral("a.sfx"));
    FileCache::Item *coded = fileItem(cache, fresh);
    QVERIFY(!coded->setRawData("plain", 0, nullptr, 0));
    QVERIFY(!QFile::exists(fresh));
    QVERIFY(coded->setRawData("coded", 3, nullptr, 0));
    QVERIFY(coded->setRawData("other", 4, nullptr, 0));
    QCOMPARE(readFile(fresh), QByteArray("other"));
    coded->remove();
    QVERIFY(!QFile::exists(fresh));

    // Of a missing file: nothing, and no size; of a value that isn't an item info, no name.
    FileCache::Item *missing = fileItem(cache, directory.filePath(QStringLiteral("none.wav")));
    QCOMPARE(missing->encoding(), 5u);
    QVERIFY(!missing->isValid());
    QVERIFY(missing->rawData().isEmpty());
    QVERIFY(static_cast<FileCache::Item *>(cache->addItem(QVariant(42)))->fileName().isEmpty());
    cache->clear();
    cache->release();
}

void CacheBackendsTest::asyncItemsLoadInTheBackground()
{
    // 10,000 slices of one file: adding them returns at once, and every one ends loaded
    // with its own bytes.
    QTemporaryDir directory;
    const QString name = directory.filePath(QStringLiteral("archive.bin"));
    QRandomGenerator random(11);
    const QByteArray contents = noise(random, 10000 * 37);
    QVERIFY(writeFile(name, contents));
    auto *cache = new AsyncFileCache(StreamCache::instance(nullptr, StreamCache::Memory), name);
    QCOMPARE(cache->type(), StreamCache::Memory);
    std::atomic<int> loaded{0};
    QObject::connect(cache, &AsyncFileCache::itemLoaded, cache, [&loaded] { ++loaded; }, Qt::DirectConnection);
    QVector<AsyncFileCache::Item *> items;
    for (int i = 0; i < 10000; ++i)
        items << slice(cache, qint64(i) * 37, 37);
    for (int i = 0; i < 10000; ++i) {
        AsyncFileCache::Item *item = items.at(i);
        item->waitForDataReady();
        QVERIFY(item->isLoaded());
        QCOMPARE(item->size(), 37u);
        QCOMPARE(item->data(), contents.mid(i * 37, 37));
        QCOMPARE(item->crc(), item->item()->crc());
    }
    QThreadPool::globalInstance()->waitForDone();
    QCOMPARE(loaded.load(), 10000);
    QCOMPARE(cache->target()->items().size(), 10000);
    // A slice past the file's end is read as far as it goes and zero after.
    AsyncFileCache::Item *tail = slice(cache, contents.size() - 10, 20);
    tail->waitForDataReady();
    QCOMPARE(tail->data(), contents.right(10) + QByteArray(10, '\0'));
    cache->release();
}

void CacheBackendsTest::asyncItemsOfAnUnreadableFile()
{
    auto *cache = new AsyncFileCache(StreamCache::instance(nullptr, StreamCache::Memory),
                                     QStringLiteral("/nonexistent/dir/archive.bin"));
    std::atomic<int> loaded{0};
    QObject::connect(cache, &AsyncFileCache::itemLoaded, cache, [&loaded] { ++loaded; }, Qt::DirectConnection);
    AsyncFileCache::Item *item = slice(cache, 100, 50);
    item->waitForDataReady();
    QVERIFY(item->isLoaded());
    QCOMPARE(item->size(), 0u);
    QVERIFY(item->data().isEmpty());
    QThreadPool::globalInstance()->waitForDone();
    QCOMPARE(loaded.load(), 1);
    cache->release();
}

void CacheBackendsTest::asyncItemsReadBeforeTheirLoad()
{
    // With the pool kept busy, a slice is read straight from the file.
    QTemporaryDir directory;
    const QString name = directory.filePath(QStringLiteral("archive.bin"));
    QVERIFY(writeFile(name, "0123456789abcdef"));
    QThreadPool *pool = QThreadPool::globalInstance();
    // Each task holds its own share of the gate, so nothing of this function's stack is
    // read on the pool's threads.
    std::promise<void> gate;
    const std::shared_future<void> opened = gate.get_future().share();
    for (int i = 0; i < pool->maxThreadCount(); ++i)
        QtConcurrent::run(pool, [opened] { opened.wait(); });
    auto *cache = new AsyncFileCache(StreamCache::instance(nullptr, StreamCache::Memory), name);
    AsyncFileCache::Item *item = slice(cache, 4, 6);
    QVERIFY(!item->isLoaded());
    QCOMPARE(item->rawData(), QByteArray("456789"));
    gate.set_value();
    item->waitForDataReady();
    QVERIFY(item->isLoaded());
    QCOMPARE(item->rawData(), QByteArray("456789"));
    // Setting bytes waits for the load, then goes to the target item.
    QVERIFY(item->setData("changed"));
    QCOMPARE(item->item()->data(), QByteArray("changed"));
    pool->waitForDone();
    cache->release();
}

void CacheBackendsTest::asyncItemsWrappingTargetItems()
{
    auto *cache = new AsyncFileCache(StreamCache::instance(nullptr, StreamCache::Disk), QString());
    QCOMPARE(cache->type(), StreamCache::Disk);
    auto *item = static_cast<AsyncFileCache::Item *>(cache->addItem());
    QVERIFY(item->isLoaded());
    QCOMPARE(cache->target()->items().size(), 1);
    QVERIFY(item->setData("kept on disk"));
    QCOMPARE(item->item()->data(), QByteArray("kept on disk"));
    item->release();
    QVERIFY(cache->target()->items().isEmpty());
    cache->release();
}

QTEST_MAIN(CacheBackendsTest)
#include "tst_cachebackends.moc"
