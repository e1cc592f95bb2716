// Sprite pixel streams and whole-file codecs against plain references of the same run:
// decoding against copying the pixels (of a textured and of a flat-shaded sprite), the match search against runs alone, PCX against
// Qt's PNG reader.
#include "image/pcxpng.h"
#include "image/spritecompression.h"
#include "image/spritecompression_p.h"

#include "ratioreporter.h"

#include <QBuffer>
#include <QGuiApplication>
#include <QImage>
#include <QRandomGenerator>

#include <cstring>

namespace {

// A sprite as engines have them: a transparent background around a figure of shaded
// areas with some noise, in 32 colours.
QImage sprite(int size, quint32 seed)
{
    QRandomGenerator random(seed);
    QImage image(size, size, QImage::Format_Indexed8);
    QVector<QRgb> table;
    for (int i = 0; i < 256; ++i)
        table << qRgb(i * 8 % 256, i * 5 % 256, i * 3 % 256);
    image.setColorTable(table);
    const int centre = size / 2;
    for (int y = 0; y < size; ++y) {
        uchar *row = image.scanLine(y);
        for (int x = 0; x < size; ++x) {
            const int dx = x - centre;
            const int dy = y - centre;
            const bool inside = dx * dx + dy * dy * 2 < centre * centre;
            row[x] = inside ? uchar(1 + ((x / 6 + y / 9) % 24) + (random.bounded(8) == 0 ? random.bounded(7) : 0)) : 0;
        }
    }
    return image;
}

// A cel-shaded sprite: the same figure in flat bands of colour with a dark outline and no
// texture, as much hand-drawn art is.
QImage celSprite(int size)
{
    QImage image(size, size, QImage::Format_Indexed8);
    image.setColorCount(256);
    const int centre = size / 2;
    for (int y = 0; y < size; ++y) {
        uchar *row = image.scanLine(y);
        for (int x = 0; x < size; ++x) {
            const int dx = x - centre;
            const int dy = y - centre;
            const int d = dx * dx + dy * dy * 2;
            const int edge = centre * centre;
            row[x] = d >= edge ? 0 : d > edge - 4 * centre ? 1 : uchar(2 + ((x + y) / 96) % 6);
        }
    }
    return image;
}

QImage noise(int size)
{
    QRandomGenerator random(5);
    QImage image(size, size, QImage::Format_Indexed8);
    image.setColorCount(256);
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x)
            image.scanLine(y)[x] = uchar(random.bounded(32));
    return image;
}

QByteArray encoded(const QImage &image, bool (*save)(const QImage &, QIODevice *))
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    save(image, &buffer);
    return bytes;
}

void memcpyPixels(benchmark::State &state)
{
    const QImage source = sprite(1024, 1);
    QImage target(1024, 1024, QImage::Format_Indexed8);
    for (auto _ : state) {
        memcpy(target.bits(), source.constBits(), size_t(source.sizeInBytes()));
        benchmark::DoNotOptimize(target.bits());
    }
    state.SetBytesProcessed(state.iterations() * source.sizeInBytes());
}

void decode(benchmark::State &state, bool (*load)(QImage &, QIODevice *), QByteArray stream)
{
    QImage target(1024, 1024, QImage::Format_Indexed8);
    for (auto _ : state) {
        QBuffer buffer(&stream);
        buffer.open(QIODevice::ReadOnly);
        benchmark::DoNotOptimize(load(target, &buffer));
    }
    state.SetBytesProcessed(state.iterations() * target.sizeInBytes());
}

void rle8Decode(benchmark::State &state)
{
    decode(state, Ovra::loadRLE8, encoded(sprite(1024, 1), Ovra::saveRLE8));
}

void lz5Decode(benchmark::State &state)
{
    decode(state, Ovra::loadLZ5,
           encoded(sprite(1024, 1), [](const QImage &image, QIODevice *device) { return Ovra::saveLZ5(image, device, true); }));
}

void rle8DecodeCel(benchmark::State &state)
{
    decode(state, Ovra::loadRLE8, encoded(celSprite(1024), Ovra::saveRLE8));
}

void lz5DecodeCel(benchmark::State &state)
{
    decode(state, Ovra::loadLZ5,
           encoded(celSprite(1024), [](const QImage &image, QIODevice *device) { return Ovra::saveLZ5(image, device, true); }));
}

// Encoding a sprite: state.range(0) is the side, state.range(1) the kind of picture.
enum Picture { Textured, Flat, Noise };

QImage picture(int kind, int size)
{
    return kind == Textured ? sprite(size, 1) : kind == Flat ? celSprite(size) : noise(size);
}

void encode(benchmark::State &state, bool (*save)(const QImage &, QIODevice *))
{
    const int size = int(state.range(0));
    const QImage image = picture(int(state.range(1)), size);
    for (auto _ : state)
        benchmark::DoNotOptimize(encoded(image, save));
    state.SetBytesProcessed(state.iterations() * size * size);
}

void lz5EncodeRuns(benchmark::State &state)
{
    encode(state, [](const QImage &image, QIODevice *device) { return Ovra::saveLZ5(image, device, false); });
}

void lz5EncodeSearch(benchmark::State &state)
{
    encode(state, [](const QImage &image, QIODevice *device) { return Ovra::saveLZ5(image, device, true); });
}

void lz5EncodeExhaustive(benchmark::State &state)
{
    encode(state, Ovra::saveLZ5Exhaustive);
}

void encodedPictures(benchmark::internal::Benchmark *benchmark)
{
    benchmark->ArgNames({"side", "picture"});
    for (int kind : {Textured, Flat, Noise})
        for (int side : {256, 1024})
            benchmark->Args({side, kind});
}

void fileLoad(benchmark::State &state, bool pcx)
{
    const QImage image = sprite(512, 3);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    pcx ? Ovra::savePCX(image, &buffer) : image.save(&buffer, "PNG");
    for (auto _ : state) {
        QBuffer reading(&bytes);
        reading.open(QIODevice::ReadOnly);
        QImage loaded;
        if (pcx)
            Ovra::loadPCX(loaded, &reading, nullptr);
        else
            loaded.load(&reading, "PNG");
        benchmark::DoNotOptimize(loaded.constBits());
    }
}

void pcxLoad(benchmark::State &state)
{
    fileLoad(state, true);
}

void pngLoad(benchmark::State &state)
{
    fileLoad(state, false);
}

} // namespace

BENCHMARK(memcpyPixels)->Unit(benchmark::kMicrosecond);
BENCHMARK(rle8Decode)->Unit(benchmark::kMicrosecond);
BENCHMARK(lz5Decode)->Unit(benchmark::kMicrosecond);
BENCHMARK(rle8DecodeCel)->Unit(benchmark::kMicrosecond);
BENCHMARK(lz5DecodeCel)->Unit(benchmark::kMicrosecond);
BENCHMARK(lz5EncodeRuns)->Unit(benchmark::kMillisecond)->Apply(encodedPictures);
BENCHMARK(lz5EncodeSearch)->Unit(benchmark::kMillisecond)->Apply(encodedPictures);
// The plain search is the reference the fast one must equal; one small picture of each kind
// is enough to tell its pace.
BENCHMARK(lz5EncodeExhaustive)->Unit(benchmark::kMillisecond)->Iterations(2)
    ->ArgNames({"side", "picture"})->Args({256, Textured})->Args({256, Flat})->Args({256, Noise});
BENCHMARK(pngLoad)->Unit(benchmark::kMicrosecond);
BENCHMARK(pcxLoad)->Unit(benchmark::kMicrosecond);

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv); // the PNG reader is a plug-in of the GUI module
    RatioReporter reporter;
    reporter.addRatio("rle8Decode", "memcpyPixels");
    reporter.addRatio("lz5Decode", "memcpyPixels");
    reporter.addRatio("rle8DecodeCel", "memcpyPixels");
    reporter.addRatio("lz5DecodeCel", "memcpyPixels");
    for (const char *picture : {"0", "1", "2"}) {
        for (const char *side : {"256", "1024"}) {
            const std::string args = std::string("/side:") + side + "/picture:" + picture;
            reporter.addRatio("lz5EncodeSearch" + args, "lz5EncodeRuns" + args);
        }
        const std::string small = std::string("/side:256/picture:") + picture;
        reporter.addRatio("lz5EncodeSearch" + small, "lz5EncodeExhaustive" + small + "/iterations:2");
    }
    reporter.addRatio("pcxLoad", "pngLoad");
    return runWithRatios(argc, argv, reporter);
}
