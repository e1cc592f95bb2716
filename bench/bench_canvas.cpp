// The image canvas: composing eight indexed layers pixel by pixel against QPainter's
// composition of the same layers in true colour, and the contiguous flood fill of a large
// picture against a memset of the same bytes and a plain breadth-first fill.
#include "editors/sprite/imagecanvas.h"
#include "editors/sprite/imagelayers.h"
#include "editors/sprite/indexpainter.h"
#include "editors/sprite/rasterlayer.h"
#include "editors/sprite/rgbapainter.h"
#include "image/paletteobject.h"

#include "ratioreporter.h"

#include <QGuiApplication>
#include <QImage>
#include <QRandomGenerator>
#include <QUndoStack>

#include <cstring>
#include <vector>

using namespace Ovra;

namespace {

const int layerSide = 1024;
const int layerCount = 8;
const int fillSide = 2048;

// Opaque colours in 1..199, half-transparent ones above: sprites drawn over each other
// with some glass and shadow in them.
void spritePalette(PaletteObject &palette)
{
    RGBA colors[256];
    QRandomGenerator random(1);
    for (int i = 1; i < 256; ++i)
        colors[i] = RGBA(quint8(random.bounded(256)), quint8(random.bounded(256)), quint8(random.bounded(256)), i < 200 ? 255 : 128);
    palette.fromPalette(colors);
}

// Mostly transparent, with discs of opaque and half-transparent colours.
QImage layerPicture(int seed, const PaletteObject &palette)
{
    QImage image(layerSide, layerSide, QImage::Format_Indexed8);
    QVector<QRgb> table;
    for (int i = 0; i < 256; ++i)
        table << palette.at(uchar(i)).toQRgb();
    image.setColorTable(table);
    image.fill(0);
    QRandomGenerator random{quint32(seed)};
    for (int disc = 0; disc < 40; ++disc) {
        const int cx = random.bounded(layerSide);
        const int cy = random.bounded(layerSide);
        const int radius = 20 + random.bounded(90);
        const uchar index = uchar(1 + random.bounded(255));
        for (int y = qMax(0, cy - radius); y < qMin(layerSide, cy + radius); ++y) {
            uchar *row = image.scanLine(y);
            for (int x = qMax(0, cx - radius); x < qMin(layerSide, cx + radius); ++x) {
                if ((x - cx) * (x - cx) + (y - cy) * (y - cy) < radius * radius)
                    row[x] = index;
            }
        }
    }
    return image;
}

void buildLayers(ImageCanvas &canvas)
{
    spritePalette(*canvas.palette());
    canvas.setImage(layerPicture(0, *canvas.palette()));
    for (int i = 1; i < layerCount; ++i)
        static_cast<RasterLayer *>(canvas.addLayer(0))->setImage(layerPicture(i, *canvas.palette()));
    canvas.undoStack()->clear();
}

void countPixels(benchmark::State &state, double pixels)
{
    state.counters["MP/s"] = benchmark::Counter(double(state.iterations()) * pixels / 1e6, benchmark::Counter::kIsRate);
}

void indexedComposition(benchmark::State &state)
{
    ImageCanvas canvas;
    buildLayers(canvas);
    for (auto _ : state) {
        const QImage composed = canvas.composed();
        benchmark::DoNotOptimize(composed.constBits());
    }
    countPixels(state, double(layerSide) * layerSide);
}

void rgbaComposition(benchmark::State &state)
{
    ImageCanvas canvas;
    buildLayers(canvas);
    canvas.setFormat(1, true);
    for (auto _ : state) {
        const QImage composed = canvas.composed();
        benchmark::DoNotOptimize(composed.constBits());
    }
    countPixels(state, double(layerSide) * layerSide);
}

// Each round fills the whole picture with the other value, so that no copy is timed.
void indexFloodFill(benchmark::State &state)
{
    QImage image(fillSide, fillSide, QImage::Format_Indexed8);
    image.setColorCount(256);
    image.fill(1);
    IndexPainter painter;
    painter.setImage(&image);
    uint color = 2;
    for (auto _ : state) {
        painter.setColor(color);
        painter.floodFill(QPoint(fillSide / 2, fillSide / 2), true);
        color = 3 - color;
    }
    if (image.constScanLine(fillSide - 1)[fillSide - 1] != uchar(3 - color))
        state.SkipWithError("the fill didn't reach the corner");
    countPixels(state, double(fillSide) * fillSide);
}

void rgbaFloodFill(benchmark::State &state)
{
    QImage image(fillSide, fillSide, QImage::Format_ARGB32);
    image.fill(qRgb(1, 1, 1));
    RGBAPainter painter;
    painter.setImage(&image);
    bool red = true;
    for (auto _ : state) {
        painter.setColor(red ? qRgb(255, 0, 0) : qRgb(1, 1, 1));
        painter.floodFill(QPoint(fillSide / 2, fillSide / 2), true);
        red = !red;
    }
    countPixels(state, double(fillSide) * fillSide);
}

void memsetFill(benchmark::State &state)
{
    std::vector<uchar> pixels(size_t(fillSide) * fillSide, 1);
    int value = 2;
    for (auto _ : state) {
        memset(pixels.data(), value, pixels.size());
        benchmark::DoNotOptimize(pixels.data());
        value = 3 - value;
    }
    countPixels(state, double(fillSide) * fillSide);
}

// The textbook fill: a queue of pixel numbers and a look at the four neighbours of each.
void breadthFirstFill(benchmark::State &state)
{
    std::vector<uchar> pixels(size_t(fillSide) * fillSide, 1);
    std::vector<int> queue;
    queue.reserve(pixels.size());
    uchar value = 2;
    for (auto _ : state) {
        const uchar target = uchar(3 - value);
        queue.clear();
        const int start = (fillSide / 2) * fillSide + fillSide / 2;
        pixels[size_t(start)] = value;
        queue.push_back(start);
        for (size_t i = 0; i < queue.size(); ++i) {
            const int at = queue[i];
            const int x = at % fillSide;
            const int neighbours[] = {x > 0 ? at - 1 : -1, x < fillSide - 1 ? at + 1 : -1, at - fillSide, at + fillSide};
            for (const int next : neighbours) {
                if (next >= 0 && next < int(pixels.size()) && pixels[size_t(next)] == target) {
                    pixels[size_t(next)] = value;
                    queue.push_back(next);
                }
            }
        }
        value = target;
    }
    countPixels(state, double(fillSide) * fillSide);
}

} // namespace

BENCHMARK(indexedComposition)->Unit(benchmark::kMillisecond);
BENCHMARK(rgbaComposition)->Unit(benchmark::kMillisecond);
BENCHMARK(indexFloodFill)->Unit(benchmark::kMillisecond);
BENCHMARK(rgbaFloodFill)->Unit(benchmark::kMillisecond);
BENCHMARK(memsetFill)->Unit(benchmark::kMillisecond);
BENCHMARK(breadthFirstFill)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    RatioReporter reporter;
    reporter.addRatio("indexedComposition", "rgbaComposition");
    reporter.addRatio("indexFloodFill", "memsetFill");
    reporter.addRatio("indexFloodFill", "breadthFirstFill");
    reporter.addRatio("rgbaFloodFill", "breadthFirstFill");
    return runWithRatios(argc, argv, reporter);
}
