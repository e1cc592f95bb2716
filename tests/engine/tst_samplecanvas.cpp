// The sample engine's canvas on the real GL and raster widgets, with the knight of the
// example work opened through the plug-in: sprites where their frames put them, mirrored,
// turned and blended, the onion frame at its opacity, a palette edit that costs one
// upload, and the whole view written as a picture for a person to look at.
#include "animationdocument.h"
#include "samplecanvas.h"

#include "code/animationcode.h"
#include "code/animations.h"
#include "code/contactboxcode.h"
#include "code/framecode.h"
#include "engine/extension.h"
#include "engine/extensionmanager.h"
#include "image/sprite.h"
#include "project/project.h"
#include "render/glrenderwidget.h"
#include "render/offscreenrenderwidget.h"
#include "render/renderwidget.h"
#include "render/texture.h"
#include "held.h"
#include "renderwindow.h"
#include "testfiles.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace Ovra;

namespace {

const QSize viewSize(400, 300);
const QPoint origin(200, 200);

// An animation file of frames written by the test, over the work's sprites.
struct Frames
{
    explicit Frames(Sprites *sprites) : animations(new SampleAnimations(document)) { document->setSprites(sprites); }
    ~Frames() { animations->release(); }
    FrameCode *frame(const QString &line)
    {
        document->fromString(QStringLiteral("animation 1\n    frame ") + line + QLatin1Char('\n'));
        return animations->count() == 1 ? animations->at(0)->frameAt(0) : nullptr;
    }
    AnimationDocument *document = new AnimationDocument;
    SampleAnimations *animations;
};

// The sprite's picture in its colours, as a person would see it.
QImage colouredPicture(const Sprite *sprite)
{
    QImage image = sprite->image();
    if (image.format() == QImage::Format_Indexed8 && sprite->palette()) {
        RGBA table[256];
        if (sprite->palette()->colorTable(table)) {
            QVector<QRgb> colours;
            for (const RGBA &entry : table)
                colours << entry.toQRgb();
            image.setColorTable(colours);
        }
    }
    return image.convertToFormat(QImage::Format_ARGB32);
}

bool near(QRgb a, QRgb b, int tolerance)
{
    return qAbs(qRed(a) - qRed(b)) <= tolerance && qAbs(qGreen(a) - qGreen(b)) <= tolerance
        && qAbs(qBlue(a) - qBlue(b)) <= tolerance;
}

// Every opaque pixel of the picture against the view at the middle of where it shows;
// `expected` turns the picture's colour and the background's into the colour wanted.
// The number of pixels that differ, and the first of them in `where`.
int mismatches(const QImage &view, const QImage &picture, const QRectF &rect, quint8 flip, const QImage &background,
               const std::function<QRgb(QRgb, QRgb)> &expected, QString *where)
{
    const double zx = rect.width() / picture.width();
    const double zy = rect.height() / picture.height();
    int count = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const QRgb colour = picture.pixel(x, y);
            if (qAlpha(colour) != 255)
                continue;
            const int fx = flip & FrameCode::Horizontal ? picture.width() - 1 - x : x;
            const int fy = flip & FrameCode::Vertical ? picture.height() - 1 - y : y;
            const QPoint at(int(std::floor(rect.x() + (fx + 0.5) * zx)), int(std::floor(rect.y() + (fy + 0.5) * zy)));
            if (!view.valid(at))
                continue;
            const QRgb wanted = expected(colour, background.pixel(at));
            if (!near(view.pixel(at), wanted, 3)) {
                if (count++ == 0 && where) {
                    *where = QStringLiteral("picture %1,%2 at %3,%4: %5 instead of %6")
                                 .arg(x).arg(y).arg(at.x()).arg(at.y())
                                 .arg(view.pixel(at), 8, 16).arg(wanted, 8, 16);
                }
            }
        }
    }
    return count;
}

QRgb plain(QRgb colour, QRgb)
{
    return colour;
}

int channel(double value)
{
    return qBound(0, int(std::lround(value)), 255);
}

// The largest difference of one channel inside `area`.
int largestDifference(const QImage &a, const QImage &b, const QRect &area)
{
    int largest = 0;
    const QRect inside = area & a.rect() & b.rect();
    for (int y = inside.top(); y <= inside.bottom(); ++y) {
        for (int x = inside.left(); x <= inside.right(); ++x) {
            const QRgb p = a.pixel(x, y), q = b.pixel(x, y);
            largest = qMax(largest, qMax(qAbs(qRed(p) - qRed(q)), qMax(qAbs(qGreen(p) - qGreen(q)),
                                                                       qAbs(qBlue(p) - qBlue(q)))));
        }
    }
    return largest;
}

} // namespace

class SampleCanvasTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();
    void spritesAtTheirPlace_data();
    void spritesAtTheirPlace();
    void turnedHalfwayIsMirroredBoth_data() { onBothRoads(); }
    void turnedHalfwayIsMirroredBoth();
    void blends_data();
    void blends();
    void onionAtItsOpacity_data();
    void onionAtItsOpacity();
    void glAndRasterAgree();
    void offScreenViews();
    void paletteEditIsOneUpload_data() { onBothRoads(); }
    void paletteEditIsOneUpload();
    void containerChangesDropTextures();
    void framesWithoutPictures();
    void screenshot_data();
    void screenshot();

private:
    void addBackEnds();
    void onBothRoads();
    // The canvas on the back end of the row, shown; false after a failure.
    bool show(bool openGL);
    QImage grab();
    // The view with nothing but the background, for the colours under the sprites.
    QImage background();
    Sprite *spriteOf(int group, int number) const;

    std::unique_ptr<ExtensionManager> m_manager;
    std::unique_ptr<QTemporaryDir> m_dir;
    Held<Project> m_project;
    Sprites *m_sprites = nullptr;
    Animations *m_animations = nullptr;
    std::unique_ptr<SampleCanvas> m_canvas;
    std::unique_ptr<QWidget> m_widget;
    bool m_openGL = false;
};

void SampleCanvasTest::initTestCase()
{
    Texture::setOpenGLEnabled(true);
    m_manager = std::make_unique<ExtensionManager>(QStringLiteral(OVRA_PLUGIN_DIR));
    EngineExtension *extension = EngineExtension::forProjectFile(QStringLiteral("any.ovp"));
    QVERIFY(extension);
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(copyTree(QStringLiteral(OVRA_EXAMPLES_DIR "/sample"), m_dir->filePath(QStringLiteral("work"))));
    QString error;
    m_project.reset(extension->openProject(m_dir->filePath(QStringLiteral("work/knight/knight.ovp")), &error));
    QVERIFY2(m_project, qPrintable(error));
    m_sprites = dynamic_cast<Sprites *>(m_project->file(Project::Sprites));
    m_animations = dynamic_cast<Animations *>(m_project->file(Project::Animations));
    QVERIFY(m_sprites && m_animations);
    // A true-colour sprite beside the indexed ones of the work, for the image shader.
    QImage picture(12, 20, QImage::Format_ARGB32);
    picture.fill(Qt::transparent);
    for (int y = 2; y < 20; ++y) {
        for (int x = 0; x < 12; ++x)
            picture.setPixel(x, y, qRgba(40 + x * 15, 200 - y * 8, 90, 255));
    }
    Sprite *added = m_sprites->add(QPoint(900, 0), picture, Archive::NoShare);
    QVERIFY(added);
    added->setAxis(QPoint(3, 19));
}

void SampleCanvasTest::init()
{
    GraphicsRenderer::setOrigin(origin);
    GraphicsRenderer::setZoomMode(GraphicsRenderer::ZoomAroundOrigin);
    GraphicsRenderer::setZoomTable(0);
    GraphicsRenderer::setPriority(false, false);
    GraphicsRenderer::setBackground(QColor(70, 90, 120), QColor(20, 30, 50), GraphicsRenderer::GradientBackground,
                                    QPoint(), QString(), QSize(320, 240));
    GraphicsRenderer::setCrossHair(GraphicsRenderer::FirstCrossSet, QString(), QString(), QString());
    GraphicsRenderer::setupContactBoxes(QColor(230, 30, 30), QColor(30, 90, 230), 0.6f);
    m_canvas = std::make_unique<SampleCanvas>();
    m_canvas->setContainer(m_sprites);
    // Only the sprites, unless a test asks for more.
    m_canvas->setVisibility(false, false, false, false, false, false, false);
}

void SampleCanvasTest::cleanup()
{
    if (auto *base = dynamic_cast<RenderWidgetBase *>(m_widget.get()))
        base->setRenderer(nullptr);
    m_widget.reset();
    m_canvas.reset();
}

void SampleCanvasTest::cleanupTestCase()
{
    m_project.reset();
    m_manager.reset();
}

void SampleCanvasTest::addBackEnds()
{
    QTest::addColumn<bool>("openGL");
}

// A row on each road, the values behind the road's column.
template<typename... Values>
void bothRoads(const char *name, const Values &...values)
{
    for (bool openGL : {true, false}) {
        QTestData &row = QTest::newRow(qPrintable(QStringLiteral("%1 %2").arg(
            openGL ? QStringLiteral("gl") : QStringLiteral("raster"), QLatin1String(name))));
        (row << openGL << ... << values);
    }
}

void SampleCanvasTest::onBothRoads()
{
    addBackEnds();
    bothRoads("");
}

bool SampleCanvasTest::show(bool openGL)
{
    m_openGL = openGL;
    m_widget = showRenderer(m_canvas.get(), openGL, viewSize);
    return m_widget && m_canvas->isOpenGL() == openGL && m_canvas->viewSize() == viewSize;
}

QImage SampleCanvasTest::grab()
{
    const QImage picture = m_openGL ? static_cast<GLRenderWidget *>(m_widget.get())->grabFramebuffer()
                                    : m_widget->grab().toImage();
    return picture.convertToFormat(QImage::Format_RGB32);
}

QImage SampleCanvasTest::background()
{
    const uint count = m_canvas->frameSprites().count();
    QVector<bool> visible;
    for (uint i = 0; i < count; ++i) {
        visible << m_canvas->frameSprites().item(i).visible;
        m_canvas->frameSprites().item(i).visible = false;
    }
    m_canvas->setOnionSkin(false, GraphicsRenderer::OnionPlain, 1.0f);
    const QImage picture = grab();
    for (uint i = 0; i < count; ++i)
        m_canvas->frameSprites().item(i).visible = visible.at(int(i));
    return picture;
}

Sprite *SampleCanvasTest::spriteOf(int group, int number) const
{
    const int index = m_sprites->find(0, (uint(group) << 16) | uint(number));
    return index < 0 ? nullptr : m_sprites->at(uint(index));
}

void SampleCanvasTest::spritesAtTheirPlace_data()
{
    addBackEnds();
    QTest::addColumn<QString>("frame");
    QTest::addColumn<int>("zoomLevel");
    QTest::addColumn<int>("flip");
    QTest::addColumn<QSizeF>("scale");
    bothRoads("indexed", QStringLiteral("(10, 0)"), 3, 0, QSizeF(1, 1));
    bothRoads("indexed, offset, zoomed", QStringLiteral("(10, 2) offset=(-20, 5)"), 5, 0, QSizeF(1, 1));
    bothRoads("mirrored", QStringLiteral("(10, 2) flip=h"), 3, 1, QSizeF(1, 1));
    bothRoads("upside down", QStringLiteral("(10, 2) flip=v"), 3, 2, QSizeF(1, 1));
    bothRoads("both ways", QStringLiteral("(10, 2) flip=hv"), 3, 3, QSizeF(1, 1));
    bothRoads("scaled", QStringLiteral("(10, 2) scale=(2, 3)"), 3, 0, QSizeF(2, 3));
    bothRoads("negative scale mirrors", QStringLiteral("(10, 2) scale=(-2, 1)"), 3, 1, QSizeF(2, 1));
    bothRoads("true colour", QStringLiteral("(900, 0) offset=(10, -10)"), 3, 0, QSizeF(1, 1));
    bothRoads("true colour mirrored", QStringLiteral("(900, 0) flip=h"), 5, 1, QSizeF(1, 1));
}

void SampleCanvasTest::spritesAtTheirPlace()
{
    QFETCH(bool, openGL);
    QFETCH(QString, frame);
    QFETCH(int, zoomLevel);
    QFETCH(int, flip);
    QFETCH(QSizeF, scale);
    Frames frames(m_sprites);
    FrameCode *code = frames.frame(frame + QStringLiteral(" delay=1"));
    QVERIFY(code);
    const Sprite *sprite = code->sprite();
    QVERIFY(sprite);
    m_canvas->showFrame(code);
    QCOMPARE(m_canvas->frameSprites().count(), 1u);
    QVERIFY(show(openGL));
    m_canvas->setZoomLevel(uchar(zoomLevel));
    const QImage empty = background();
    const QImage view = grab();

    // The axis stands on the frame's offset, the picture mirrored about it.
    const double zoom = m_canvas->zoomFactor();
    const QSize size = sprite->imageProperties().size();
    const QPoint axis = sprite->axis();
    const double ax = flip & 1 ? size.width() - axis.x() : axis.x();
    const double ay = flip & 2 ? size.height() - axis.y() : axis.y();
    const QRectF expected(origin.x() + (code->offsetX() - ax * scale.width()) * zoom,
                          origin.y() + (code->offsetY() - ay * scale.height()) * zoom,
                          size.width() * scale.width() * zoom, size.height() * scale.height() * zoom);
    QCOMPARE(m_canvas->spriteRect(0), expected);
    QString where;
    QVERIFY2(mismatches(view, colouredPicture(sprite), expected, quint8(flip), empty, plain, &where) == 0,
             qPrintable(where));
    // Around the picture the background shows, untouched.
    const QRect outside = expected.toAlignedRect().adjusted(-3, -3, 3, 3);
    for (const QPoint &corner : {outside.topLeft(), outside.bottomRight()})
        QVERIFY(near(view.pixel(corner), empty.pixel(corner), 2));
}

// Turning a picture half a turn about its axis puts every pixel where mirroring it both
// ways does.
void SampleCanvasTest::turnedHalfwayIsMirroredBoth()
{
    QFETCH(bool, openGL);
    Frames mirrored(m_sprites), turned(m_sprites);
    QVERIFY(show(openGL));
    m_canvas->showFrame(mirrored.frame(QStringLiteral("(10, 3) delay=1 offset=(5, -10) flip=hv")));
    const QImage first = grab();
    const QRect area = m_canvas->spriteRect(0).toAlignedRect().adjusted(-2, -2, 2, 2);
    m_canvas->showFrame(turned.frame(QStringLiteral("(10, 3) delay=1 offset=(5, -10) angle=180")));
    const QImage second = grab();
    QVERIFY(first != background());
    QVERIFY2(largestDifference(first, second, area) <= 2, "half a turn differs from the mirror image");
    // A quarter turn doesn't look like either.
    Frames quarter(m_sprites);
    m_canvas->showFrame(quarter.frame(QStringLiteral("(10, 3) delay=1 offset=(5, -10) angle=90")));
    QVERIFY(largestDifference(first, grab(), area) > 20);
}

void SampleCanvasTest::blends_data()
{
    addBackEnds();
    QTest::addColumn<QString>("blend");
    bothRoads("none", QStringLiteral("none"));
    bothRoads("opacity", QStringLiteral("opacity(0.4, 0)"));
    bothRoads("add", QStringLiteral("add"));
    bothRoads("add, destination halved", QStringLiteral("add(0.5, 0.5)"));
    bothRoads("subtract", QStringLiteral("subtract"));
    bothRoads("subtract, source halved", QStringLiteral("subtract(0.5, 1)"));
}

void SampleCanvasTest::blends()
{
    QFETCH(bool, openGL);
    QFETCH(QString, blend);
    Frames frames(m_sprites);
    FrameCode *frame = frames.frame(QStringLiteral("(10, 1) delay=1 blend=") + blend);
    QVERIFY(frame);
    const FrameCode::Blend mode = frame->blend();
    const double s = mode.source, d = mode.destination;
    auto expected = [&](QRgb c, QRgb b) {
        auto mix = [&](int source, int destination) {
            switch (mode.mode) {
            case FrameCode::Blend::Opacity:
                return channel(source * s + destination * (1 - s));
            case FrameCode::Blend::Addition:
                return channel(source * s + destination * d);
            case FrameCode::Blend::Subtraction:
                return channel(destination * d - source * s);
            default:
                return source;
            }
        };
        return qRgb(mix(qRed(c), qRed(b)), mix(qGreen(c), qGreen(b)), mix(qBlue(c), qBlue(b)));
    };
    m_canvas->showFrame(frame);
    QVERIFY(show(openGL));
    const QImage empty = background();
    QString where;
    QVERIFY2(mismatches(grab(), colouredPicture(frame->sprite()), m_canvas->spriteRect(0), 0, empty, expected, &where)
                 == 0,
             qPrintable(where));
}

void SampleCanvasTest::onionAtItsOpacity_data()
{
    addBackEnds();
    QTest::addColumn<int>("effect");
    QTest::addColumn<float>("opacity");
    bothRoads("plain, half", int(GraphicsRenderer::OnionPlain), 0.5f);
    bothRoads("plain, a quarter", int(GraphicsRenderer::OnionPlain), 0.25f);
    bothRoads("grey", int(GraphicsRenderer::OnionGrayscale), 0.6f);
    bothRoads("lighter", int(GraphicsRenderer::OnionLighter), 0.5f);
    bothRoads("darker", int(GraphicsRenderer::OnionDarker), 0.8f);
}

void SampleCanvasTest::onionAtItsOpacity()
{
    QFETCH(bool, openGL);
    QFETCH(int, effect);
    QFETCH(float, opacity);
    const Sprite *onion = spriteOf(10, 4);
    QVERIFY(onion);
    QVERIFY(show(openGL));
    const QImage empty = background();
    m_canvas->setOnionSkin(true, GraphicsRenderer::OnionEffect(effect), opacity);
    m_canvas->setOnionSkinSprite(onion, QPoint(-40, 10));
    const QImage view = grab();
    const QPoint axis = onion->axis();
    const QSize size = onion->imageProperties().size();
    const QRectF rect(origin.x() - 40 - axis.x(), origin.y() + 10 - axis.y(), size.width(), size.height());
    auto expected = [&](QRgb c, QRgb b) {
        int r = qRed(c), g = qGreen(c), bl = qBlue(c);
        if (effect == GraphicsRenderer::OnionGrayscale) {
            g = bl = r;
        } else if (effect != GraphicsRenderer::OnionPlain) {
            const int shift = effect == GraphicsRenderer::OnionLighter ? 128 : -128;
            r = qBound(0, r + shift, 255), g = qBound(0, g + shift, 255), bl = qBound(0, bl + shift, 255);
        }
        return qRgb(channel(r * opacity + qRed(b) * (1 - opacity)), channel(g * opacity + qGreen(b) * (1 - opacity)),
                    channel(bl * opacity + qBlue(b) * (1 - opacity)));
    };
    QString where;
    QVERIFY2(mismatches(view, colouredPicture(onion), rect, 0, empty, expected, &where) == 0, qPrintable(where));
}

// Where both roads draw the same things, they draw them alike.
void SampleCanvasTest::glAndRasterAgree()
{
    Frames frames[2] = {Frames(m_sprites), Frames(m_sprites)};
    QImage pictures[2];
    for (bool openGL : {true, false}) {
        cleanup();
        init();
        m_canvas->showFrames({frames[openGL].frame(QStringLiteral("(200, 2) delay=1 offset=(-30, 0)"))});
        m_canvas->setOnionSkin(true, GraphicsRenderer::OnionPlain, 0.5f);
        m_canvas->setOnionSkinSprite(spriteOf(10, 0), QPoint(40, 0));
        QVERIFY(show(openGL));
        pictures[openGL] = grab();
    }
    const QRect area = m_canvas->spriteRect(0).toAlignedRect().united(QRect(180, 100, 120, 110));
    QVERIFY(largestDifference(pictures[1], pictures[0], area) <= 3);
}

// Off screen (as pictures are made for export) the GL view looks from the other side of
// the scene; the sprites must show there too, as on the raster road.
void SampleCanvasTest::offScreenViews()
{
    Frames frames(m_sprites);
    FrameCode *frame = frames.frame(QStringLiteral("(10, 1) delay=1 flip=h"));
    QVERIFY(frame);
    m_canvas->showFrame(frame);
    QImage pictures[2];
    for (bool openGL : {true, false}) {
        OffScreenRenderWidget view(openGL, viewSize);
        view.setRenderer(m_canvas.get());
        QCOMPARE(m_canvas->isOpenGL(), openGL);
        view.update();
        pictures[openGL] = view.output().convertToFormat(QImage::Format_RGB32);
        m_canvas->frameSprites().item(0).visible = false;
        view.update();
        const QImage empty = view.output().convertToFormat(QImage::Format_RGB32);
        m_canvas->frameSprites().item(0).visible = true;
        QString where;
        QVERIFY2(mismatches(pictures[openGL], colouredPicture(frame->sprite()), m_canvas->spriteRect(0),
                            FrameCode::Horizontal, empty, plain, &where) == 0,
                 qPrintable(where));
        view.setRenderer(nullptr);
    }
    QVERIFY(largestDifference(pictures[0], pictures[1], m_canvas->spriteRect(0).toAlignedRect()) <= 3);
}

void SampleCanvasTest::paletteEditIsOneUpload()
{
    QFETCH(bool, openGL);
    Frames frames(m_sprites);
    FrameCode *frame = frames.frame(QStringLiteral("(10, 5) delay=1"));
    QVERIFY(frame && frame->sprite() && frame->sprite()->palette());
    m_canvas->showFrame(frame);
    QVERIFY(show(openGL));
    const QImage empty = background();
    const QImage before = grab();
    QCOMPARE(mismatches(before, colouredPicture(frame->sprite()), m_canvas->spriteRect(0), 0, empty, plain, nullptr),
             0);
    const quint64 uploads = Texture::uploadCount();

    Palette *palette = frame->sprite()->palette();
    RGBA table[256];
    QVERIFY(palette->colorTable(table));
    for (int i = 1; i < 256; ++i)
    {
        const QRgb was = table[i].toQRgb();
        table[i] = RGBA(qRgba(255 - qRed(was), 255 - qGreen(was), 255 - qBlue(was), qAlpha(was)));
    }
    palette->setColorTable(table, Archive::NoShare);
    const QImage after = grab();
    QString where;
    QVERIFY2(mismatches(after, colouredPicture(frame->sprite()), m_canvas->spriteRect(0), 0, empty, plain, &where) == 0,
             qPrintable(where));
    QVERIFY(after != before);
    // The sprite's indices stay on the card; only the palette goes up again.
    QCOMPARE(Texture::uploadCount() - uploads, openGL ? 1u : 0u);
    m_sprites->undo();
    QCOMPARE(grab(), before);
}

void SampleCanvasTest::containerChangesDropTextures()
{
    Frames frames(m_sprites);
    FrameCode *frame = frames.frame(QStringLiteral("(10, 0) delay=1"));
    QVERIFY(frame);
    m_canvas->showFrame(frame);
    QVERIFY(show(true));
    const QImage shown = grab();
    QCOMPARE(m_canvas->cachedSprites(), 1);
    // Another sprite going drops what the card holds; the next paint brings it back.
    const int last = int(m_sprites->count()) - 1;
    QImage small(4, 4, QImage::Format_ARGB32);
    small.fill(Qt::red);
    QVERIFY(m_sprites->insert(uint(last + 1), QPoint(901, 0), small, Archive::NoShare));
    QCOMPARE(m_canvas->cachedSprites(), 0);
    QCOMPARE(grab(), shown);
    QCOMPARE(m_canvas->cachedSprites(), 1);
    m_sprites->undo();
    // The shown sprite itself going leaves the view empty, without a dangling picture.
    const quint64 uploads = Texture::uploadCount();
    m_sprites->remove(uint(m_sprites->find(0, 10u << 16)));
    QVERIFY(!m_canvas->frameSprites().item(0).visible);
    QCOMPARE(grab(), background());
    QCOMPARE(Texture::uploadCount(), uploads);
    m_sprites->undo();
}

// Frames whose sprites the container hasn't: nothing to draw, nothing drawn.
void SampleCanvasTest::framesWithoutPictures()
{
    Frames frames(m_sprites);
    FrameCode *missing = frames.frame(QStringLiteral("(777, 7) delay=1"));
    QVERIFY(missing && !missing->sprite());
    m_canvas->showFrame(missing);
    QCOMPARE(m_canvas->frameSprites().count(), 0u);
    m_canvas->showFrame(nullptr);
    QVERIFY(show(true));
    const QImage empty = grab();
    m_canvas->showFrames({nullptr, missing});
    QCOMPARE(grab(), empty);
    QCOMPARE(m_canvas->frameSprites().colorIndexAt(3, QPoint()), -1);
}

void SampleCanvasTest::screenshot_data()
{
    addBackEnds();
    QTest::addColumn<QString>("file");
    QTest::newRow("gl") << true << QStringLiteral("samplecanvas-gl.png");
    QTest::newRow("raster") << false << QStringLiteral("samplecanvas-raster.png");
}

// The knight's punch as the animation view shows it: a picture behind, the onion frame of
// a walk, the frame's sprite with its boxes, one selected, crosses, guides and rulers.
void SampleCanvasTest::screenshot()
{
    QFETCH(bool, openGL);
    QFETCH(QString, file);
    QImage stage(260, 140, QImage::Format_RGB32);
    for (int y = 0; y < stage.height(); ++y) {
        for (int x = 0; x < stage.width(); ++x)
            stage.setPixel(x, y, y > 110 ? qRgb(90, 70, 40) : qRgb(120 + y / 2, 160 + y / 2, 210 - (x / 20) * 4));
    }
    const QString stageFile = m_dir->filePath(QStringLiteral("stage.png"));
    QVERIFY(stage.save(stageFile));
    GraphicsRenderer::setBackground(QColor(70, 90, 120), QColor(20, 30, 50), GraphicsRenderer::FileBackground,
                                    QPoint(-130, -110), stageFile, QSize(320, 240));
    AnimationCode *punch = m_animations->at(uint(m_animations->find(0, 200)));
    FrameCode *frame = punch->frameAt(2);
    m_canvas->showFrame(frame);
    m_canvas->setVisibility(true, true, true, true, true, true, true);
    m_canvas->setGuideLines(QPoint(30, -60));
    m_canvas->setItemPosition(GraphicsRenderer::SecondaryCross, QPointF(-60, -70));
    m_canvas->setItemPosition(GraphicsRenderer::ExtraCross, QPointF(70, -20));
    m_canvas->setOnionSkin(true, GraphicsRenderer::OnionGrayscale, 0.45f);
    m_canvas->setOnionSkinSprite(spriteOf(10, 3), QPoint(-45, 0));
    QVERIFY(show(openGL));
    m_canvas->setZoomLevel(5);

    // Selecting the attack box as a person does: a click inside it.
    const QRect attack = m_canvas->boxScreenRect(ContactBoxCode::Attack, 0);
    QTest::mouseClick(m_widget.get(), Qt::LeftButton, Qt::NoModifier, attack.center());
    QCOMPARE(m_canvas->selectedContactBoxes().size(), 1);
    QCOMPARE(m_canvas->selectedContactBoxes().first()->boxType(), ContactBoxCode::Attack);
    const QImage picture = grab();
    QVERIFY(picture.save(QCoreApplication::applicationDirPath() + QLatin1Char('/') + file));

    // The boxes' edges in their colours, the selected one hatched in its full colour, the
    // sprite's colours where no box covers them.
    const QRect body = m_canvas->boxScreenRect(ContactBoxCode::Collision, 0);
    QVERIFY(near(picture.pixel(body.left(), body.center().y()), qRgb(30, 90, 230), 3));
    int hatched = 0;
    for (int y = attack.top() + 3; y < attack.bottom() - 3; ++y)
        hatched += near(picture.pixel(attack.center().x(), y), qRgb(230, 30, 30), 3) ? 1 : 0;
    QVERIFY(hatched > 0);
    const QImage sprite = colouredPicture(frame->sprite());
    const QRectF rect = m_canvas->spriteRect(0);
    int matched = 0, opaque = 0;
    for (int y = 0; y < sprite.height(); ++y) {
        const int sy = int(rect.y() + (y + 0.5) * 2);
        for (int x = 0; x < sprite.width(); ++x) {
            const QPoint at(int(rect.x() + (x + 0.5) * 2), sy);
            if (qAlpha(sprite.pixel(x, y)) != 255 || body.adjusted(-1, -1, 1, 1).contains(at)
                || attack.adjusted(-1, -1, 1, 1).contains(at))
                continue;
            ++opaque;
            matched += near(picture.pixel(at), sprite.pixel(x, y), 3) ? 1 : 0;
        }
    }
    // Crosses and guides may lie over a few pixels of the sprite.
    QVERIFY(opaque > 0);
    QVERIFY2(matched >= opaque * 9 / 10, qPrintable(QStringLiteral("%1 of %2").arg(matched).arg(opaque)));
    // The stage picture behind, at twice its size from the origin.
    QVERIFY(near(picture.pixel(origin.x() - 260 + 201, origin.y() - 220 + 81), stage.pixel(100, 40), 3));
    // The rulers' strips along the top and the left.
    QVERIFY(picture.pixel(5, 150) != picture.pixel(40, 150));
}

int main(int argc, char **argv)
{
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QApplication app(argc, argv);
    app.setAttribute(Qt::AA_Use96Dpi, true);
    SampleCanvasTest test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_samplecanvas.moc"
