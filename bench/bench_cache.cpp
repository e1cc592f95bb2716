// The cache back ends against the plain work they are made of: growing the first of a
// thousand disk blocks against copying the same tail with a plain file, and a memory
// block's set and get against compressing and uncompressing the same bytes alone.
#include "cache/cachebackends.h"

#include "ratioreporter.h"

#include <QCoreApplication>
#include <QRandomGenerator>
#include <QTemporaryFile>

#include <cmath>
#include <cstring>

#include <vector>

using namespace Ovra;

namespace {

constexpr int Blocks = 1000;
constexpr int BlockSize = 64 * 1024;

QByteArray noise(int size, quint32 seed)
{
    QRandomGenerator random(seed);
    QByteArray bytes(size, '\0');
    for (int i = 0; i + 4 <= size; i += 4) {
        const quint32 word = random.generate();
        memcpy(bytes.data() + i, &word, 4);
    }
    return bytes;
}

// Growing the first block by one byte and shrinking it back: two moves of the tail of
// 999 blocks (some 64 MB).
void diskGrowFirst(benchmark::State &state)
{
    DiskCache cache(nullptr);
    std::vector<StreamCache::Item *> items;
    const QByteArray block = noise(BlockSize, 1);
    for (int i = 0; i < Blocks; ++i) {
        items.push_back(cache.addItem());
        items.back()->setRawData(block, 1, nullptr, 0); // encoded: stored as they are
    }
    const QByteArray grown = block + 'x';
    for (auto _ : state) {
        items.front()->setRawData(grown, 1, nullptr, 0);
        items.front()->setRawData(block, 1, nullptr, 0);
    }
    cache.clear();
}

// The same two moves of the same tail through a plain file and a buffer of the same size.
void fileCopyTail(benchmark::State &state)
{
    QTemporaryFile file;
    file.open();
    const QByteArray block = noise(BlockSize, 1);
    for (int i = 0; i < Blocks; ++i)
        file.write(block);
    file.write("x");
    file.flush();
    std::vector<char> buffer(32768);
    const qint64 tail = qint64(Blocks - 1) * BlockSize;
    auto move = [&](qint64 from, qint64 to) {
        if (to > from) {
            for (qint64 end = from + tail; end > from;) {
                const qint64 start = qMax(end - qint64(buffer.size()), from);
                file.seek(start);
                file.read(buffer.data(), end - start);
                file.seek(start + (to - from));
                file.write(buffer.data(), end - start);
                end = start;
            }
        } else {
            for (qint64 at = from; at < from + tail;) {
                const qint64 count = qMin(qint64(buffer.size()), from + tail - at);
                file.seek(at);
                file.read(buffer.data(), count);
                file.seek(at - (from - to));
                file.write(buffer.data(), count);
                at += count;
            }
        }
        file.flush();
    };
    for (auto _ : state) {
        move(BlockSize, BlockSize + 1);
        move(BlockSize + 1, BlockSize);
    }
}

// A megabyte of sound-like bytes: compressible, not trivially.
QByteArray soundMegabyte()
{
    QByteArray bytes(1 << 20, '\0');
    for (int i = 0; i < bytes.size(); i += 2) {
        const qint16 value = qint16(8000 * std::sin(i * 0.01) + (i % 7) * 3);
        memcpy(bytes.data() + i, &value, 2);
    }
    return bytes;
}

void memorySetGet(benchmark::State &state)
{
    MemoryCache cache(nullptr);
    StreamCache::Item *item = cache.addItem();
    const QByteArray bytes = soundMegabyte();
    for (auto _ : state) {
        item->setData(bytes);
        benchmark::DoNotOptimize(item->data().size());
    }
    cache.clear();
    state.SetBytesProcessed(state.iterations() * bytes.size());
}

void compressAlone(benchmark::State &state)
{
    const QByteArray bytes = soundMegabyte();
    for (auto _ : state)
        benchmark::DoNotOptimize(qUncompress(qCompress(bytes, -1)).size());
    state.SetBytesProcessed(state.iterations() * bytes.size());
}

} // namespace

BENCHMARK(fileCopyTail)->Unit(benchmark::kMillisecond);
BENCHMARK(diskGrowFirst)->Unit(benchmark::kMillisecond);
BENCHMARK(compressAlone)->Unit(benchmark::kMillisecond);
BENCHMARK(memorySetGet)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    RatioReporter reporter;
    reporter.addRatio("diskGrowFirst", "fileCopyTail");
    reporter.addRatio("memorySetGet", "compressAlone");
    return runWithRatios(argc, argv, reporter);
}
