// A scene of sprites drawn off screen through OpenGL, compared pixel by pixel with the same
// scene drawn on the CPU from the shading and blending rules, and with the raster road.
#include "rendertestsupport.h"

#include "render/offscreenrenderwidget.h"

#include <QFutureWatcher>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QSignalSpy>
#include <QtConcurrent>
#include <QtTest>

#include <memory>

using namespace Ovra;

namespace {

const QSize canvas(256, 160);
const QColor background(40, 60, 80);
// The off-screen orthographic view moves models towards the viewer by 2000; a model at
// -4000 lands in the middle of the depth range.
const float sceneDepth = -4000;

void fillPalette(RGBA palette[256], bool swapped)
{
    for (int i = 0; i < 256; ++i)
        palette[i] = RGBA(quint8(i), quint8(255 - i), quint8(i / 2), 255);
    palette[0] = RGBA(255, 0, 255, 0); // the transparent colour: a hole unless unmasked
    palette[1] = swapped ? RGBA(10, 90, 240, 255) : RGBA(220, 40, 30, 255);
    palette[2] = RGBA(30, 200, 60, 255);
    palette[3] = swapped ? RGBA(250, 250, 250, 255) : RGBA(40, 60, 230, 255);
    palette[4] = RGBA(250, 230, 40, 255);
    palette[5] = RGBA(20, 220, 220, 128); // half transparent
    palette[6] = RGBA(100, 100, 100, 255);
}

// Index 0 round the border and in a few holes, five colours inside.
QImage indexedSprite()
{
    QImage image(32, 24, QImage::Format_Indexed8);
    image.setColorCount(256);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const bool hole = x < 2 || y < 2 || x >= 30 || y >= 22 || (x % 7 == 3 && y % 5 == 2);
            image.setPixel(x, y, hole ? 0 : uint((x / 4 + y / 4) % 6 + 1));
        }
    }
    return image;
}

// Horizontal stripes: a trapezoid samples each row whole, whatever its width.
QImage stripedSprite()
{
    QImage image(32, 16, QImage::Format_Indexed8);
    image.setColorCount(256);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, uint((y / 2) % 6 + 1));
    }
    return image;
}

QImage alphaSprite()
{
    QImage image(20, 20, QImage::Format_ARGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, qRgba(x * 12, y * 12, 200 - x * 5, ((x + y) * 7) % 256));
    }
    return image;
}

QImage opaqueTile(QSize size, int seed)
{
    QImage image(size, QImage::Format_ARGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, (x / 4 + y / 4) % 2 ? qRgb(seed, 120, 40 + x * 8) : qRgb(200, seed, y * 20));
    }
    return image;
}

struct Item
{
    const QImage *image = nullptr;
    const Texture *texture = nullptr;
    const Texture *palette = nullptr;
    QPoint at;
    quint8 flip = 0;
    quint8 effect = 0;
    float opacity = 1.0f;
    bool masked = true;
    float topScale = 1.0f;
    QPoint repeat;
    QSizeF spacing;
    bool raster = true; // the raster road draws it the same way
};

Item item(const QImage *image, const Texture *texture, const Texture *palette, QPoint at, quint8 flip = 0,
          quint8 effect = 0, float opacity = 1.0f, bool masked = true)
{
    Item made;
    made.image = image;
    made.texture = texture;
    made.palette = palette;
    made.at = at;
    made.flip = flip;
    made.effect = effect;
    made.opacity = opacity;
    made.masked = masked;
    return made;
}

Item tiled(const QImage *image, const Texture *texture, QPoint at, QPoint repeat, QSizeF spacing)
{
    Item made = item(image, texture, nullptr, at);
    made.repeat = repeat;
    made.spacing = spacing;
    return made;
}

} // namespace

class RenderSceneTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void sceneMatchesReference();
    void rasterRoadMatches();
    void paletteSwapUploadsOnlyThePalette();
    void texturesFromWorkerThreads();
    void cleanupTestCase();

private:
    QVector<Item> scene(bool rasterOnly) const;
    QImage drawGL(const QVector<Item> &items, QImage *reference, int *culled = nullptr);
    QImage drawRaster(const QVector<Item> &items);

    RGBA m_colours[256];
    QImage m_indexed, m_striped, m_alpha, m_tile, m_padded;
    std::unique_ptr<Texture> m_palette, m_indexedTexture, m_stripedTexture, m_alphaTexture, m_tileTexture,
        m_paddedTexture;
    QSize m_paddedStorage;
};

void RenderSceneTest::initTestCase()
{
    Texture::setOpenGLEnabled(true);
    QVERIFY2(Texture::isOpenGLEnabled(), "the hidden GL context of the GUI thread");
    fillPalette(m_colours, false);
    m_indexed = indexedSprite();
    m_striped = stripedSprite();
    m_alpha = alphaSprite();
    m_tile = opaqueTile(QSize(16, 8), 90);
    m_padded = opaqueTile(QSize(20, 10), 230);
    m_palette.reset(new Texture(m_colours));
    m_indexedTexture.reset(new Texture(m_indexed));
    m_stripedTexture.reset(new Texture(m_striped));
    m_alphaTexture.reset(new Texture(m_alpha));
    m_tileTexture.reset(new Texture(m_tile));
    QVERIFY(m_palette->glId() && m_indexedTexture->glId() && m_alphaTexture->glId() && m_tileTexture->glId());
    QCOMPARE(m_indexedTexture->type(), Texture::IndexedType);
    QCOMPARE(m_alphaTexture->type(), Texture::RGBAType);

    // A picture padded to 32 x 16, as for a card without textures of any size: the packets
    // must sample only the part the picture fills. The padding is filled with a colour that
    // shows if it is ever drawn.
    Texture::ImageData data;
    QVERIFY(Texture::dataFromImage(m_padded, data));
    m_paddedStorage = QSize(32, 16);
    QByteArray padded(m_paddedStorage.width() * m_paddedStorage.height() * 4, char(0xF0));
    for (int y = 0; y < data.size.height(); ++y)
        padded.replace(y * 32 * 4, 20 * 4, data.data.mid(y * data.textureSize.width() * 4, 20 * 4));
    data.textureSize = m_paddedStorage;
    data.data = padded;
    m_paddedTexture.reset(new Texture(data));
    QCOMPARE(m_paddedTexture->maximumUV(), QSizeF(0.625, 0.625));
}

QVector<Item> RenderSceneTest::scene(bool rasterOnly) const
{
    const Texture *pal = m_palette.get();
    const Texture *ind = m_indexedTexture.get();
    const Texture *alpha = m_alphaTexture.get();
    QVector<Item> items;
    auto add = [&](const Item &one) { items << one; };
    // The background first: tiles with hardware repeat, with gaps, and from padded storage.
    add(tiled(&m_tile, m_tileTexture.get(), {8, 100}, {3, 1}, {16, 8}));
    add(tiled(&m_tile, m_tileTexture.get(), {80, 100}, {2, 1}, {20, 10}));
    add(tiled(&m_padded, m_paddedTexture.get(), {150, 100}, {1, 1}, {20, 10}));
    add(item(&m_padded, m_paddedTexture.get(), nullptr, {200, 100}, 1));
    for (quint8 effect = 0; effect < 4; ++effect) {
        Item one = item(&m_indexed, ind, pal, {8 + 40 * effect, 8}, 0, effect);
        one.raster = effect == 0;
        add(one);
    }
    add(item(&m_indexed, ind, pal, {168, 8}, 0, 0, 1, false));
    add(item(&m_indexed, ind, pal, {208, 8}, 0, 0, 0.5f));
    for (quint8 flip = 1; flip < 4; ++flip)
        add(item(&m_indexed, ind, pal, {8 + 40 * (flip - 1), 40}, flip));
    for (quint8 effect = 0; effect < 4; ++effect) {
        Item one = item(&m_alpha, alpha, nullptr, {128 + 28 * effect, 40}, 0, effect);
        one.raster = effect == 0;
        add(one);
    }
    add(item(&m_alpha, alpha, nullptr, {8, 72}, 0, 0, 0.6f));
    Item unmasked = item(&m_alpha, alpha, nullptr, {36, 72}, 0, 0, 1, false);
    unmasked.raster = false; // the raster road has no rule for opaque premultiplied colours
    add(unmasked);
    Item floor = item(&m_striped, m_stripedTexture.get(), pal, {80, 72});
    floor.topScale = 1.5f;
    floor.raster = false;
    add(floor);
    add(item(&m_alpha, alpha, nullptr, {30, 98}, 0, 0, 0.8f)); // over the tiles
    add(item(&m_indexed, ind, pal, {240, 130}));               // half outside: drawn
    add(item(&m_indexed, ind, pal, {300, 200}));               // wholly outside: culled
    if (rasterOnly)
        items.erase(std::remove_if(items.begin(), items.end(), [](const Item &i) { return !i.raster; }), items.end());
    return items;
}

QImage RenderSceneTest::drawGL(const QVector<Item> &items, QImage *reference, int *culled)
{
    OffScreenRenderWidget widget(true, canvas);
    if (!widget.isOpenGL())
        return QImage();
    PacketRenderer renderer;
    renderer.background = background;
    widget.setRenderer(&renderer);
    *reference = QImage(canvas, QImage::Format_RGB32);
    reference->fill(background);
    int culledCount = 0;
    renderer.paint = [&](QPainter &painter) {
        renderer.glBeginDrawImage(painter);
        for (const Item &item : items) {
            Renderer::RenderPacket packet;
            QMatrix4x4 model;
            model.translate(item.at.x(), item.at.y(), sceneDepth);
            const bool made = item.repeat.isNull()
                                  ? renderer.glRenderPacket(packet, model, item.texture, item.palette, item.flip,
                                                            item.topScale, 0.5f)
                                  : renderer.glRenderPacketTiled(packet, item.repeat, item.spacing, model,
                                                                 item.texture, item.palette, item.flip);
            QVERIFY(made);
            if (renderer.glCullRenderPacket(packet, QRectF(-1, -1, 2, 2))) {
                ++culledCount;
                continue;
            }
            packet.effect = item.effect;
            packet.opacity = item.opacity;
            packet.masked = item.masked;
            const bool indexed = item.texture->type() == Texture::IndexedType;
            renderer.glSetBlend(true);
            renderer.glSetBlendFunction(indexed ? Renderer::SourceAlpha : Renderer::One,
                                        Renderer::OneMinusSourceAlpha);
            renderer.glDrawImage(packet);
            Shading shading{item.image, m_colours, item.texture == m_paddedTexture.get() ? m_paddedStorage
                                                                                          : item.image->size(),
                            item.effect, item.opacity, item.masked};
            referenceDraw(*reference, packet, shading);
        }
        renderer.glEndDrawImage(painter);
    };
    widget.update();
    if (culled)
        *culled = culledCount;
    return widget.output();
}

QImage RenderSceneTest::drawRaster(const QVector<Item> &items)
{
    OffScreenRenderWidget widget(false, canvas);
    PacketRenderer renderer;
    renderer.background = background;
    widget.setRenderer(&renderer);
    renderer.paint = [&](QPainter &painter) {
        for (const Item &item : items) {
            Renderer::RenderPacket packet;
            QVERIFY(!renderer.glRenderPacket(packet, QMatrix4x4(), item.texture, item.palette));
            QImage picture = *item.image;
            if (picture.format() == QImage::Format_Indexed8) {
                QVector<QRgb> table;
                for (const RGBA &entry : m_colours)
                    table << qRgba(entry.red, entry.green, entry.blue, item.masked ? entry.alpha : 255);
                picture.setColorTable(table);
            }
            picture = picture.convertToFormat(QImage::Format_ARGB32).mirrored(item.flip & 1, item.flip & 2);
            painter.setOpacity(item.opacity);
            const QSizeF step = item.repeat.isNull() ? QSizeF() : item.spacing;
            for (int ty = 0; ty <= item.repeat.y(); ++ty) {
                for (int tx = 0; tx <= item.repeat.x(); ++tx)
                    painter.drawImage(QPointF(item.at.x() + tx * step.width(), item.at.y() + ty * step.height()),
                                      picture);
            }
        }
    };
    widget.update();
    return widget.output();
}

void RenderSceneTest::sceneMatchesReference()
{
    QImage reference;
    int culled = -1;
    const QImage drawn = drawGL(scene(false), &reference, &culled);
    QVERIFY2(!drawn.isNull(), "an OpenGL framebuffer off screen");
    drawn.save(picturePath(QStringLiteral("render-scene-gl.png")));
    reference.save(picturePath(QStringLiteral("render-scene-reference.png")));
    QCOMPARE(culled, 1);
    QPoint where;
    const int difference = largestDifference(drawn, reference, &where);
    QVERIFY2(difference >= 0 && difference <= 1,
             qPrintable(QStringLiteral("%1 at %2,%3").arg(difference).arg(where.x()).arg(where.y())));
    // The scene is really there: a hole of the first sprite shows the background, an opaque
    // pixel its palette colour, and the unmasked sprite shows index 0 as an opaque colour.
    QCOMPARE(drawn.pixelColor(8, 8), background);
    QCOMPARE(drawn.pixelColor(8 + 3, 8 + 3), QColor(220, 40, 30));
    QCOMPARE(drawn.pixelColor(168, 8), QColor(255, 0, 255));
}

void RenderSceneTest::rasterRoadMatches()
{
    const QVector<Item> items = scene(true);
    QImage reference;
    const QImage drawn = drawGL(items, &reference);
    const QImage raster = drawRaster(items);
    raster.save(picturePath(QStringLiteral("render-scene-raster.png")));
    QCOMPARE(raster.size(), canvas);
    QVERIFY(largestDifference(drawn, reference) <= 1);
    // QPainter blends in 8-bit steps of its own and premultiplies with rounding: one more
    // step of difference is its arithmetic, not a different picture.
    QPoint where;
    const int difference = largestDifference(raster, reference, &where);
    QVERIFY2(difference >= 0 && difference <= 2,
             qPrintable(QStringLiteral("%1 at %2,%3").arg(difference).arg(where.x()).arg(where.y())));
}

void RenderSceneTest::paletteSwapUploadsOnlyThePalette()
{
    const quint64 uploads = Texture::uploadCount();
    const quint64 bytes = Texture::uploadedBytes();
    const uint spriteId = m_indexedTexture->glId();
    fillPalette(m_colours, true);
    m_palette->fromPalette(m_colours);
    QCOMPARE(Texture::uploadCount() - uploads, quint64(1));
    QCOMPARE(Texture::uploadedBytes() - bytes, quint64(256 * 4));
    QCOMPARE(m_indexedTexture->glId(), spriteId);

    QImage reference;
    const QImage drawn = drawGL(scene(false), &reference);
    drawn.save(picturePath(QStringLiteral("render-scene-swapped.png")));
    QVERIFY(largestDifference(drawn, reference) <= 1);
    QCOMPARE(drawn.pixelColor(8 + 3, 8 + 3), QColor(10, 90, 240));
    QCOMPARE(Texture::uploadCount() - uploads, quint64(1)); // drawing uploads nothing
    fillPalette(m_colours, false);
    m_palette->fromPalette(m_colours);
}

void RenderSceneTest::texturesFromWorkerThreads()
{
    struct Made
    {
        Texture *sprite;
        Texture *palette;
        bool onWorker;
        bool workerHasContext;
    };
    const QImage image = m_indexed;
    fillPalette(m_colours, false);
    const RGBA *colours = m_colours;
    QThread *gui = QThread::currentThread();
    QFutureWatcher<Made> watcher;
    QSignalSpy finished(&watcher, &QFutureWatcher<Made>::finished);
    watcher.setFuture(QtConcurrent::run([image, colours, gui] {
        auto *sprite = new Texture(image);
        auto *palette = new Texture(colours);
        return Made{sprite, palette, QThread::currentThread() != gui, QOpenGLContext::currentContext() != nullptr};
    }));
    // The worker asks the GUI thread for its surface: the event loop has to run meanwhile.
    QVERIFY(finished.wait(20000));
    const Made made = watcher.result();
    std::unique_ptr<Texture> sprite(made.sprite), palette(made.palette);
    QVERIFY(made.onWorker);
    QVERIFY2(made.workerHasContext, "desktop GL: the worker uploads in a context of its own");
    QVERIFY(sprite->glId() != 0);
    QVERIFY(palette->glId() != 0);

    const Item one = item(&m_indexed, sprite.get(), palette.get(), {100, 60});
    QImage reference;
    const QImage drawn = drawGL({one}, &reference);
    drawn.save(picturePath(QStringLiteral("render-scene-worker.png")));
    QVERIFY(largestDifference(drawn, reference) <= 1);
    QCOMPARE(drawn.pixelColor(100 + 3, 60 + 3), QColor(220, 40, 30));
}

void RenderSceneTest::cleanupTestCase()
{
    // Turning GL off frees every name, of textures made on any thread.
    QVector<uint> names;
    for (Texture *texture : {m_palette.get(), m_indexedTexture.get(), m_alphaTexture.get(), m_tileTexture.get()})
        names << texture->glId();
    Texture::setOpenGLEnabled(false);
    QVERIFY(!Texture::isOpenGLEnabled());
    for (Texture *texture : {m_palette.get(), m_indexedTexture.get(), m_alphaTexture.get(), m_tileTexture.get()})
        QCOMPARE(texture->glId(), 0u);
    QOpenGLContext context;
    context.setShareContext(QOpenGLContext::globalShareContext());
    QVERIFY(context.create());
    QOffscreenSurface surface;
    surface.create();
    QVERIFY(context.makeCurrent(&surface));
    for (uint name : qAsConst(names))
        QVERIFY(!context.functions()->glIsTexture(name));
    context.doneCurrent();
}

OVRA_GL_TEST_MAIN(RenderSceneTest)
#include "tst_renderscene.moc"
