// Drawing 2,000 indexed 64 x 64 sprites a frame through OpenGL (Mesa's software rasteriser
// here) against the same scene through QPainter on the raster widget; and a palette swap
// against uploading a 512 x 512 indexed sprite again, the cost it saves.
//
// The GL half draws off screen, into a framebuffer object on a QOffscreenSurface, but Qt's
// offscreen platform has no GL at all: CTest runs this program on a virtual X server.
#include "ratioreporter.h"

#include "image/imagedata.h"
#include "render/offscreenrenderwidget.h"
#include "render/renderer.h"
#include "render/renderwidget.h"
#include "render/texture.h"

#include <QApplication>
#include <QPainter>
#include <QRandomGenerator>

#include <memory>

using namespace Ovra;

namespace {

const int spriteCount = 2000;
const QSize frameSize(1024, 768);

QImage indexedSprite(int side, int seed)
{
    QImage image(side, side, QImage::Format_Indexed8);
    image.setColorCount(256);
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x)
            image.setPixel(x, y, uint((x / 8 + y / 8 + seed) % 255 + 1) * ((x + y) % 11 != 0));
    }
    return image;
}

void fillPalette(RGBA colours[256], int shift)
{
    for (int i = 0; i < 256; ++i)
        colours[i] = RGBA(quint8(i + shift), quint8(255 - i), quint8(i * 3 + shift), i == 0 ? 0 : 255);
}

QVector<QPoint> positions()
{
    QRandomGenerator random(7);
    QVector<QPoint> at;
    for (int i = 0; i < spriteCount; ++i)
        at << QPoint(random.bounded(frameSize.width() - 64), random.bounded(frameSize.height() - 64));
    return at;
}

// Draws the scene as a graphics view does: through packets on GL, with the painter elsewhere.
class SceneRenderer : public Renderer
{
public:
    void render(QPainter &painter) override
    {
        if (isOpenGL()) {
            glBeginDrawImage(painter);
            glSetBlend(true);
            glSetBlendFunction(SourceAlpha, OneMinusSourceAlpha);
            for (const QPoint &at : qAsConst(points)) {
                RenderPacket packet;
                QMatrix4x4 model;
                model.translate(at.x(), at.y(), -4000); // the off-screen view's depth
                if (glRenderPacket(packet, model, sprite, palette))
                    glDrawImage(packet);
            }
            glEndDrawImage(painter);
            glFinish(); // the frame is done when the rasteriser is
            return;
        }
        painter.fillRect(QRect(QPoint(0, 0), frameSize), Qt::white);
        for (const QPoint &at : qAsConst(points))
            painter.drawImage(at, picture);
    }

    const Texture *sprite = nullptr;
    const Texture *palette = nullptr;
    QImage picture; // the sprite in its palette's colours, made once, as the raster road caches it
    QVector<QPoint> points = positions();
};

// The share of the frame that isn't background: both roads must draw the same scene.
double coveredShare(const QImage &frame)
{
    const QImage rgb = frame.convertToFormat(QImage::Format_RGB32);
    qint64 covered = 0;
    for (int y = 0; y < rgb.height(); ++y) {
        const QRgb *row = reinterpret_cast<const QRgb *>(rgb.constScanLine(y));
        for (int x = 0; x < rgb.width(); ++x)
            covered += (row[x] & 0xffffff) != 0xffffff;
    }
    return double(covered) / (double(rgb.width()) * rgb.height());
}

bool glAvailable()
{
    static const bool available = [] {
        Texture::setOpenGLEnabled(true);
        OffScreenRenderWidget probe(true, QSize(4, 4));
        return probe.isOpenGL();
    }();
    return available;
}

void spritesOpenGL(benchmark::State &state)
{
    if (!glAvailable()) {
        state.SkipWithError("no OpenGL on this platform: run on an X server (CTest uses xvfb-run)");
        return;
    }
    RGBA colours[256];
    fillPalette(colours, 0);
    Texture sprite(indexedSprite(64, 3));
    Texture palette(colours);
    OffScreenRenderWidget widget(true, frameSize);
    SceneRenderer renderer;
    renderer.sprite = &sprite;
    renderer.palette = &palette;
    widget.setRenderer(&renderer);
    for (auto _ : state)
        widget.update();
    state.SetItemsProcessed(state.iterations() * spriteCount);
    state.counters["covered"] = coveredShare(widget.output());
}
BENCHMARK(spritesOpenGL)->Unit(benchmark::kMillisecond);

void spritesRaster(benchmark::State &state)
{
    RGBA colours[256];
    fillPalette(colours, 0);
    QImage picture = indexedSprite(64, 3);
    QVector<QRgb> table;
    for (const RGBA &c : colours)
        table << c.toQRgb();
    picture.setColorTable(table);
    RenderWidget widget;
    widget.resize(frameSize);
    SceneRenderer renderer;
    renderer.picture = picture.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    widget.setRenderer(&renderer);
    QImage frame(frameSize, QImage::Format_ARGB32_Premultiplied);
    for (auto _ : state)
        widget.render(&frame);
    state.SetItemsProcessed(state.iterations() * spriteCount);
    state.counters["covered"] = coveredShare(frame);
}
BENCHMARK(spritesRaster)->Unit(benchmark::kMillisecond);

void paletteSwap(benchmark::State &state)
{
    if (!glAvailable()) {
        state.SkipWithError("no OpenGL on this platform: run on an X server (CTest uses xvfb-run)");
        return;
    }
    RGBA first[256], second[256];
    fillPalette(first, 0);
    fillPalette(second, 40);
    Texture palette(first);
    bool flip = false;
    for (auto _ : state) {
        palette.fromPalette(flip ? first : second);
        flip = !flip;
    }
}
BENCHMARK(paletteSwap)->Unit(benchmark::kMicrosecond);

void spriteUpload512(benchmark::State &state)
{
    if (!glAvailable()) {
        state.SkipWithError("no OpenGL on this platform: run on an X server (CTest uses xvfb-run)");
        return;
    }
    const QImage image = indexedSprite(512, 5);
    Texture sprite;
    for (auto _ : state)
        sprite.fromImage(image);
}
BENCHMARK(spriteUpload512)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QApplication app(argc, argv);
    RatioReporter reporter;
    reporter.addRatio("spritesOpenGL", "spritesRaster");
    reporter.addRatio("paletteSwap", "spriteUpload512");
    return runWithRatios(argc, argv, reporter);
}
