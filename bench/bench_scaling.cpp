// Pixel-art enlargement, the colour octree and animated GIF export, each against a plain
// reference of the same run: nearest-neighbour enlargement of the same sprite, Qt's own
// reduction to 256 colours, and Qt's PNG writer over the same frames. The exports tell
// the sizes of their files too, by both sets of rules.
#include "image/gifimage.h"
#include "image/hqx_p.h"
#include "image/imagescaling.h"

#include "ratioreporter.h"

#include <QBuffer>
#include <QGuiApplication>
#include <QImage>
#include <QRandomGenerator>

#include <vector>

using namespace Ovra;

namespace {

// A true-colour sprite: a shaded disc with an outline and some highlights on a
// transparent ground, the kind of picture the pixel-art filters are for.
QImage sprite(int width, int height, int phase)
{
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(0);
    const int cx = width / 2 + phase % 7;
    const int cy = height / 2;
    const int radius = qMin(width, height) / 3;
    for (int y = 0; y < height; ++y) {
        auto *row = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < width; ++x) {
            const int d = (x - cx) * (x - cx) + (y - cy) * (y - cy);
            if (d > radius * radius)
                continue;
            if (d > (radius - 2) * (radius - 2)) {
                row[x] = qRgb(20, 10, 30);
                continue;
            }
            const int shade = 4 * ((x - cx + y - cy + 2 * radius) * 8 / (4 * radius));
            row[x] = qRgb(qBound(0, 90 + shade * 6 + phase, 255), qBound(0, 40 + shade * 3, 255), 160 - shade);
        }
    }
    return image;
}

std::vector<quint32> packed(const QImage &image)
{
    std::vector<quint32> pixels(size_t(image.width()) * size_t(image.height()));
    for (int y = 0; y < image.height(); ++y)
        memcpy(pixels.data() + size_t(y) * size_t(image.width()), image.constScanLine(y), size_t(image.width()) * 4);
    return pixels;
}

// The worst case of the hq filters: few colours at random, so that no pixel lies amid its
// own kind and every one goes through the rules.
QImage confetti(int width, int height)
{
    const QRgb colours[] = {qRgb(20, 10, 30), qRgb(200, 120, 40), qRgb(90, 160, 220), qRgba(255, 255, 255, 0)};
    QImage image(width, height, QImage::Format_ARGB32);
    QRandomGenerator random(5);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, colours[random.bounded(4)]);
    }
    return image;
}

// Megapixels written a second, the figure the enlargements are compared by.
void countPixels(benchmark::State &state, int scale)
{
    const double pixels = 256.0 * 256.0 * scale * scale;
    state.counters["MP/s"] = benchmark::Counter(double(state.iterations()) * pixels / 1e6, benchmark::Counter::kIsRate);
}

void nearest(benchmark::State &state, int scale)
{
    const QImage image = sprite(256, 256, 0);
    for (auto _ : state)
        benchmark::DoNotOptimize(resizeImageNearest(image, QSize(256 * scale, 256 * scale)).constBits());
    countPixels(state, scale);
}

// The filter alone, from packed pixels into a buffer made once.
void hq(benchmark::State &state, int scale, const QImage &image)
{
    const std::vector<quint32> source = packed(image);
    std::vector<quint32> target(size_t(256 * scale) * size_t(256 * scale));
    auto *filter = scale == 2 ? hq2x : scale == 3 ? hq3x : hq4x;
    for (auto _ : state) {
        filter(source.data(), target.data(), 256, 256, 256 * scale * 4);
        benchmark::DoNotOptimize(target.data());
    }
    countPixels(state, scale);
}

void nearest2x(benchmark::State &state)
{
    nearest(state, 2);
}

void nearest3x(benchmark::State &state)
{
    nearest(state, 3);
}

void nearest4x(benchmark::State &state)
{
    nearest(state, 4);
}

void hq2xFilter(benchmark::State &state)
{
    hq(state, 2, sprite(256, 256, 0));
}

void hq3xFilter(benchmark::State &state)
{
    hq(state, 3, sprite(256, 256, 0));
}

void hq4xFilter(benchmark::State &state)
{
    hq(state, 4, sprite(256, 256, 0));
}

void hq3xConfetti(benchmark::State &state)
{
    hq(state, 3, confetti(256, 256));
}

void hq4xConfetti(benchmark::State &state)
{
    hq(state, 4, confetti(256, 256));
}

// The HQ filter to four times the size, as the resize dialog runs it.
void hqResize4x(benchmark::State &state)
{
    const QImage image = sprite(256, 256, 0);
    RGBA palette[256];
    for (auto _ : state)
        benchmark::DoNotOptimize(resizeImage(image, QSize(1024, 1024), palette, HqNearestFilter).constBits());
    countPixels(state, 4);
}

void octree(benchmark::State &state)
{
    const QImage image = sprite(320, 240, 3);
    for (auto _ : state) {
        ColorQuantizer quantizer(255, 8);
        quantizer.processImage(image);
        RGBA table[256];
        quantizer.getColorTable(table);
        benchmark::DoNotOptimize(table);
    }
    state.SetItemsProcessed(state.iterations() * 320 * 240);
}

// A noisy picture leaves the octree no runs of one colour to skip through.
void octreeNoise(benchmark::State &state)
{
    QImage image(320, 240, QImage::Format_ARGB32);
    QRandomGenerator random(9);
    for (int y = 0; y < 240; ++y) {
        for (int x = 0; x < 320; ++x)
            image.setPixel(x, y, random.generate() | 0xFF000000);
    }
    for (auto _ : state) {
        ColorQuantizer quantizer(255, 8);
        quantizer.processImage(image);
        benchmark::DoNotOptimize(quantizer.colorCount());
    }
    state.SetItemsProcessed(state.iterations() * 320 * 240);
}

void qtIndexed(benchmark::State &state)
{
    const QImage image = sprite(320, 240, 3);
    for (auto _ : state)
        benchmark::DoNotOptimize(image.convertToFormat(QImage::Format_Indexed8).constBits());
    state.SetItemsProcessed(state.iterations() * 320 * 240);
}

QVector<AnimImageFrame> animation()
{
    QVector<AnimImageFrame> frames;
    for (int i = 0; i < 60; ++i)
        frames << AnimImageFrame{sprite(320, 240, i), 160, 200, 4};
    return frames;
}

// The same frames drawn with one palette of 256 entries, as a work's sprites are: the
// usual export, every frame indexed over the same table.
QVector<AnimImageFrame> indexedAnimation()
{
    QVector<AnimImageFrame> frames = animation();
    QVector<QRgb> table = frames.first().image.convertToFormat(QImage::Format_Indexed8).colorTable();
    for (int i = table.size(); i < 256; ++i)
        table << qRgb(i, 255 - i, i / 2); // the rest of the palette, unused by these frames
    for (AnimImageFrame &frame : frames)
        frame.image = frame.image.convertToFormat(QImage::Format_Indexed8, table);
    return frames;
}

// Each export also tells the size of the file it makes.
void exportFrames(benchmark::State &state, const QVector<AnimImageFrame> &frames, CodecRules rules)
{
    qint64 size = 0;
    for (auto _ : state) {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        benchmark::DoNotOptimize(saveGIF(&buffer, frames, 1, 1, false, true, rules));
        size = bytes.size();
    }
    state.counters["bytes"] = double(size);
}

void gifExport(benchmark::State &state)
{
    exportFrames(state, animation(), CodecRules::Designed);
}

void gifExportComplete(benchmark::State &state)
{
    exportFrames(state, animation(), CodecRules::Complete);
}

void gifExportIndexed(benchmark::State &state)
{
    exportFrames(state, indexedAnimation(), CodecRules::Designed);
}

void gifExportIndexedComplete(benchmark::State &state)
{
    exportFrames(state, indexedAnimation(), CodecRules::Complete);
}

void pngFrames(benchmark::State &state)
{
    const QVector<AnimImageFrame> frames = animation();
    for (auto _ : state) {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        for (const AnimImageFrame &frame : frames)
            frame.image.save(&buffer, "PNG");
        benchmark::DoNotOptimize(bytes.constData());
    }
}

} // namespace

BENCHMARK(nearest2x)->Unit(benchmark::kMicrosecond);
BENCHMARK(hq2xFilter)->Unit(benchmark::kMicrosecond);
BENCHMARK(nearest3x)->Unit(benchmark::kMicrosecond);
BENCHMARK(hq3xFilter)->Unit(benchmark::kMicrosecond);
BENCHMARK(nearest4x)->Unit(benchmark::kMicrosecond);
BENCHMARK(hq4xFilter)->Unit(benchmark::kMicrosecond);
BENCHMARK(hq3xConfetti)->Unit(benchmark::kMicrosecond);
BENCHMARK(hq4xConfetti)->Unit(benchmark::kMicrosecond);
BENCHMARK(hqResize4x)->Unit(benchmark::kMillisecond);
BENCHMARK(qtIndexed)->Unit(benchmark::kMicrosecond);
BENCHMARK(octree)->Unit(benchmark::kMicrosecond);
BENCHMARK(octreeNoise)->Unit(benchmark::kMicrosecond);
BENCHMARK(pngFrames)->Unit(benchmark::kMillisecond);
BENCHMARK(gifExport)->Unit(benchmark::kMillisecond);
BENCHMARK(gifExportComplete)->Unit(benchmark::kMillisecond);
BENCHMARK(gifExportIndexed)->Unit(benchmark::kMillisecond);
BENCHMARK(gifExportIndexedComplete)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv); // the PNG writer is a plug-in of the GUI module
    RatioReporter reporter;
    reporter.addRatio("hq2xFilter", "nearest2x");
    reporter.addRatio("hq3xFilter", "nearest3x");
    reporter.addRatio("hq4xFilter", "nearest4x");
    reporter.addRatio("hq3xConfetti", "nearest3x");
    reporter.addRatio("hq4xConfetti", "nearest4x");
    reporter.addRatio("hqResize4x", "nearest4x");
    reporter.addRatio("octree", "qtIndexed");
    reporter.addRatio("octreeNoise", "qtIndexed");
    reporter.addRatio("gifExport", "pngFrames");
    reporter.addRatio("gifExportComplete", "gifExport");
    reporter.addRatio("gifExportIndexedComplete", "gifExportIndexed");
    return runWithRatios(argc, argv, reporter);
}
