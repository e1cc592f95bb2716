// Pixel-art enlargement, the colour octree and animated GIF export, each against a plain
// reference of the same run: nearest-neighbour enlargement of the same sprite, Qt's own
// reduction to 256 colours, and Qt's PNG writer over the same frames.
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

void nearest2x(benchmark::State &state)
{
    const QImage image = sprite(256, 256, 0);
    for (auto _ : state)
        benchmark::DoNotOptimize(resizeImageNearest(image, QSize(512, 512)).constBits());
}

void hq2xFilter(benchmark::State &state)
{
    const QImage image = sprite(256, 256, 0);
    const std::vector<quint32> source = packed(image);
    std::vector<quint32> target(size_t(512) * 512);
    for (auto _ : state) {
        hq2x(source.data(), target.data(), 256, 256, 512 * 4);
        benchmark::DoNotOptimize(target.data());
    }
}

void nearest4x(benchmark::State &state)
{
    const QImage image = sprite(256, 256, 0);
    for (auto _ : state)
        benchmark::DoNotOptimize(resizeImageNearest(image, QSize(1024, 1024)).constBits());
}

// The HQ filter to four times the size, as the resize dialog runs it.
void hqResize4x(benchmark::State &state)
{
    const QImage image = sprite(256, 256, 0);
    RGBA palette[256];
    for (auto _ : state)
        benchmark::DoNotOptimize(resizeImage(image, QSize(1024, 1024), palette, HqNearestFilter).constBits());
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

void gifExport(benchmark::State &state)
{
    const QVector<AnimImageFrame> frames = animation();
    for (auto _ : state) {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        benchmark::DoNotOptimize(saveGIF(&buffer, frames, 1, 1, false, true));
    }
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
BENCHMARK(nearest4x)->Unit(benchmark::kMicrosecond);
BENCHMARK(hqResize4x)->Unit(benchmark::kMillisecond);
BENCHMARK(qtIndexed)->Unit(benchmark::kMicrosecond);
BENCHMARK(octree)->Unit(benchmark::kMicrosecond);
BENCHMARK(octreeNoise)->Unit(benchmark::kMicrosecond);
BENCHMARK(pngFrames)->Unit(benchmark::kMillisecond);
BENCHMARK(gifExport)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv); // the PNG writer is a plug-in of the GUI module
    RatioReporter reporter;
    reporter.addRatio("hq2xFilter", "nearest2x");
    reporter.addRatio("hqResize4x", "nearest4x");
    reporter.addRatio("octree", "qtIndexed");
    reporter.addRatio("octreeNoise", "qtIndexed");
    reporter.addRatio("gifExport", "pngFrames");
    return runWithRatios(argc, argv, reporter);
}
