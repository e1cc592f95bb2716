// The graphics canvas with a busy scene: 200 indexed 48 x 48 sprites and 100 contact boxes
// (ten of them selected) over a stage picture, with rulers, guides and crosses. A full
// repaint through OpenGL (Mesa's software rasteriser here) against the raster road, and a
// zoom step (rescale and repaint) on each.
//
// The GL half draws off screen on a virtual X server, as bench_render does: Qt's offscreen
// platform has no GL.
#include "graphicstestsupport.h" // the boxes a frame holds, kept in memory
#include "ratioreporter.h"

#include "code/contactboxcode.h"
#include "image/imagedata.h"
#include "render/graphicsrenderer.h"
#include "render/offscreenrenderwidget.h"
#include "render/renderwidget.h"
#include "render/texture.h"

#include <QApplication>
#include <QPainter>
#include <QRandomGenerator>
#include <QTextBlock>

#include <memory>

using namespace Ovra;

namespace {

const int spriteCount = 200;
const int boxCount = 100;
const QSize frameSize(1024, 768);

QImage indexedSprite(int side)
{
    QImage image(side, side, QImage::Format_Indexed8);
    image.setColorCount(256);
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x)
            image.setPixel(x, y, uint((x / 6 + y / 6) % 255 + 1) * ((x + y) % 9 != 0));
    }
    return image;
}

class Sprites : public GraphicsRenderer::SpriteProvider
{
public:
    Sprites()
    {
        QRandomGenerator random(11);
        for (int i = 0; i < spriteCount; ++i) {
            Info info;
            info.position = QPointF(random.bounded(-480, 440), random.bounded(-360, 340));
            info.size = QSizeF(48, 48);
            infos << info;
        }
    }
    uint count() const override { return uint(infos.size()); }
    int colorIndexAt(uint, const QPoint &) const override { return -1; }
    Info &item(uint index) override { return infos[int(index)]; }

    QVector<Info> infos;
};

// Sprites through packets on GL, with the painter on the raster road, as an engine's canvas does.
class Canvas : public GraphicsRenderer
{
public:
    void render(QPainter &painter) override
    {
        GraphicsRenderer::render(painter);
        if (isOpenGL())
            glFinish(); // the frame is done when the rasteriser is
    }

    const Texture *sprite = nullptr;
    const Texture *palette = nullptr;
    QImage picture;
    float depth = -4000; // the off-screen view's depth

protected:
    void renderSprite(QPainter &painter, uint index) override
    {
        painter.drawImage(spriteRect(index), picture);
    }
    void renderOnionSprite(QPainter &, const Sprite *, const QRect &) override {}
    void glRenderSprite(uint index) override
    {
        const QRectF rect = spriteRect(index);
        RenderPacket packet;
        QMatrix4x4 model;
        model.translate(float(rect.x()), float(rect.y()), depth);
        model.scale(float(rect.width() / 48.0), float(rect.height() / 48.0));
        if (!glRenderPacket(packet, model, sprite, palette))
            return;
        glSetBlend(true);
        glSetBlendFunction(SourceAlpha, OneMinusSourceAlpha);
        glDrawImage(packet);
    }
    void glRenderOnionSprite(const Sprite *, const QRect &) override {}
};

// The scene, shared by both roads.
struct Scene
{
    Scene()
    {
        for (int i = 0; i < 256; ++i)
            colours[i] = RGBA(quint8(i), quint8(255 - i), quint8(i * 3), i == 0 ? 0 : 255);
        QImage image = indexedSprite(48);
        QVector<QRgb> table;
        for (const RGBA &c : colours)
            table << c.toQRgb();
        image.setColorTable(table);
        picture = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
        QRandomGenerator random(5);
        for (int i = 0; i < boxCount; ++i) {
            MemoryBoxes &boxes = i % 2 ? attack : collision;
            boxes.append(QRect(random.bounded(-480, 440), random.bounded(-360, 340), random.bounded(8, 60),
                               random.bounded(8, 60)));
        }
    }

    void setUp(Canvas &canvas, const Texture *sprite, const Texture *palette)
    {
        GraphicsRenderer::setOrigin(QPoint(frameSize.width() / 2, frameSize.height() / 2));
        GraphicsRenderer::setBackground(QColor(40, 40, 90), QColor(10, 10, 30), GraphicsRenderer::StageBackground,
                                        QPoint(), QString(), QSize(1280, 720));
        GraphicsRenderer::setCrossHair(GraphicsRenderer::SecondCrossSet, QString(), QString(), QString());
        canvas.sprite = sprite;
        canvas.palette = palette;
        canvas.picture = picture;
        canvas.setSprites(&sprites);
        canvas.setContactBoxes(ContactBoxCode::Attack, &attack);
        canvas.setContactBoxes(ContactBoxCode::Collision, &collision);
        canvas.setVisibility(true, true, true, true, true, true, true);
        canvas.setGuideLines(QPoint(-100, 80));
        // Every fifth attack box selected: shift-clicks on their middles.
        for (uint i = 0; i < attack.count(); i += 5) {
            const QRect r = canvas.boxScreenRect(ContactBoxCode::Attack, i);
            canvas.mousePressed(r.center(), Qt::LeftButton, Qt::ShiftModifier);
            canvas.mouseReleased(r.center(), Qt::LeftButton, Qt::ShiftModifier);
        }
    }

    RGBA colours[256];
    QImage picture;
    Sprites sprites;
    MemoryBoxes attack{ContactBoxCode::Attack};
    MemoryBoxes collision{ContactBoxCode::Collision};
};

bool glAvailable()
{
    static const bool available = [] {
        Texture::setOpenGLEnabled(true);
        OffScreenRenderWidget probe(true, QSize(4, 4));
        return probe.isOpenGL();
    }();
    return available;
}

// What a repaint or a zoom step costs on one road; zooming alternates in and out.
void run(benchmark::State &state, bool openGL, bool zoom)
{
    if (openGL && !glAvailable()) {
        state.SkipWithError("no OpenGL on this platform: run on an X server (CTest uses xvfb-run)");
        return;
    }
    Scene scene;
    std::unique_ptr<Texture> sprite, palette;
    if (openGL) {
        sprite.reset(new Texture(indexedSprite(48)));
        palette.reset(new Texture(scene.colours));
    }
    Canvas canvas;
    std::unique_ptr<OffScreenRenderWidget> offScreen;
    std::unique_ptr<RenderWidget> raster;
    QImage frame(frameSize, QImage::Format_ARGB32_Premultiplied);
    if (openGL) {
        offScreen.reset(new OffScreenRenderWidget(true, frameSize));
        offScreen->setRenderer(&canvas);
    } else {
        raster.reset(new RenderWidget);
        raster->resize(frameSize);
        raster->setRenderer(&canvas);
    }
    scene.setUp(canvas, sprite.get(), palette.get());
    bool in = true;
    for (auto _ : state) {
        if (zoom) {
            // On the off-screen widget the repaint happens inside the zoom call.
            in ? canvas.addZoom() : canvas.subZoom();
            in = !in;
        } else if (openGL) {
            offScreen->update();
        }
        if (raster)
            raster->render(&frame);
    }
    // Both roads must draw the same scene: the share of the view that the sprites change.
    auto frameNow = [&] {
        if (!raster) {
            offScreen->update();
            return offScreen->output().convertToFormat(QImage::Format_RGB32);
        }
        raster->render(&frame);
        return frame.convertToFormat(QImage::Format_RGB32);
    };
    const QImage with = frameNow();
    canvas.setSprites(nullptr);
    const QImage without = frameNow();
    qint64 changed = 0;
    for (int y = 0; y < with.height(); ++y) {
        for (int x = 0; x < with.width(); ++x)
            changed += with.pixel(x, y) != without.pixel(x, y);
    }
    state.counters["spriteShare"] = double(changed) / (double(with.width()) * with.height());
    state.counters["selected"] = canvas.selectedContactBoxes().size();
    if (offScreen)
        offScreen->setRenderer(nullptr);
    if (raster)
        raster->setRenderer(nullptr);
}

void repaintOpenGL(benchmark::State &state) { run(state, true, false); }
void repaintRaster(benchmark::State &state) { run(state, false, false); }
void zoomStepOpenGL(benchmark::State &state) { run(state, true, true); }
void zoomStepRaster(benchmark::State &state) { run(state, false, true); }
BENCHMARK(repaintOpenGL)->Unit(benchmark::kMillisecond);
BENCHMARK(repaintRaster)->Unit(benchmark::kMillisecond);
BENCHMARK(zoomStepOpenGL)->Unit(benchmark::kMillisecond);
BENCHMARK(zoomStepRaster)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QApplication app(argc, argv);
    RatioReporter reporter;
    reporter.addRatio("repaintOpenGL", "repaintRaster");
    reporter.addRatio("zoomStepOpenGL", "zoomStepRaster");
    reporter.addRatio("zoomStepOpenGL", "repaintOpenGL");
    reporter.addRatio("zoomStepRaster", "repaintRaster");
    return runWithRatios(argc, argv, reporter);
}
