// The packets the renderer's helpers fill, culling, the projection matrices and the GL state
// that the draw helpers keep from repeating, on a real GL context off screen.
#include "rendertestsupport.h"

#include "render/glrenderwidget_p.h"
#include "render/offscreenrenderwidget.h"

#include <QOpenGLContext>
#include <QOpenGLShaderProgram>
#include <QtTest>

#include <memory>

using namespace Ovra;

Q_DECLARE_METATYPE(QVector<QVector2D>)
Q_DECLARE_METATYPE(QVector<QVector4D>)

namespace {

QImage indexed(QSize size)
{
    QImage image(size, QImage::Format_Indexed8);
    image.setColorCount(256);
    image.fill(1);
    return image;
}

QVector4D uv(float s, float t)
{
    return QVector4D(s, t, 0, 1);
}

} // namespace

class RenderPacketsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void quad_data();
    void quad();
    void tiledByHardware_data();
    void tiledByHardware();
    void tiledByTiles();
    void tiledWithoutRepeatIsThePlainPacket();
    void unusableTextures();
    void cull_data();
    void cull();
    void projections();
    void blendStateIsCached();
    void samplersAreSetOnProgramSwitchOnly();
    void malformedPacketsDrawNothing();
    void names();

private:
    std::unique_ptr<OffScreenRenderWidget> m_widget;
    PacketRenderer m_renderer;
    std::unique_ptr<Texture> m_sprite, m_odd, m_palette;
    RGBA m_colours[256];
};

void RenderPacketsTest::initTestCase()
{
    Texture::setOpenGLEnabled(true);
    m_widget.reset(new OffScreenRenderWidget(true, QSize(64, 48)));
    QVERIFY2(m_widget->isOpenGL(), "an OpenGL context off screen");
    m_widget->setRenderer(&m_renderer);
    QVERIFY(m_renderer.isOpenGL());
    QCOMPARE(m_renderer.size, QSize(64, 48));
    for (int i = 0; i < 256; ++i)
        m_colours[i] = RGBA(quint8(i), 0, 0, 255);
    m_sprite.reset(new Texture(indexed(QSize(32, 24))));
    m_odd.reset(new Texture(indexed(QSize(15, 9))));
    m_palette.reset(new Texture(m_colours));
    QVERIFY(m_sprite->glId() && m_odd->glId() && m_palette->glId());
}

void RenderPacketsTest::quad_data()
{
    QTest::addColumn<int>("flip");
    QTest::addColumn<float>("topScale");
    QTest::addColumn<float>("topAnchor");
    QTest::addColumn<QVector<QVector2D>>("vertices");
    QTest::addColumn<QVector<QVector4D>>("uvs");
    const QVector<QVector2D> rect{{0, 0}, {32, 0}, {0, 24}, {32, 24}};
    QTest::newRow("plain") << 0 << 1.0f << 0.5f << rect << QVector<QVector4D>{uv(0, 0), uv(1, 0), uv(0, 1), uv(1, 1)};
    QTest::newRow("mirrored") << 1 << 1.0f << 0.5f << rect
                              << QVector<QVector4D>{uv(1, 0), uv(0, 0), uv(1, 1), uv(0, 1)};
    QTest::newRow("upside down") << 2 << 1.0f << 0.5f << rect
                                 << QVector<QVector4D>{uv(0, 1), uv(1, 1), uv(0, 0), uv(1, 0)};
    QTest::newRow("both") << 3 << 1.0f << 0.5f << rect << QVector<QVector4D>{uv(1, 1), uv(0, 1), uv(1, 0), uv(0, 0)};
    // The top edge grows by 16: half of it to each side, or all to the left.
    QTest::newRow("floor centred") << 0 << 1.5f << 0.5f << QVector<QVector2D>{{-8, 0}, {40, 0}, {0, 24}, {32, 24}}
                                   << QVector<QVector4D>{uv(0, 0), uv(1, 0), uv(0, 1), uv(1, 1)};
    QTest::newRow("floor to the left") << 0 << 1.5f << 1.0f << QVector<QVector2D>{{-16, 0}, {32, 0}, {0, 24}, {32, 24}}
                                       << QVector<QVector4D>{uv(0, 0), uv(1, 0), uv(0, 1), uv(1, 1)};
    QTest::newRow("narrow top") << 0 << 0.5f << 0.0f << QVector<QVector2D>{{0, 0}, {16, 0}, {0, 24}, {32, 24}}
                                << QVector<QVector4D>{uv(0, 0), uv(1, 0), uv(0, 1), uv(1, 1)};
}

void RenderPacketsTest::quad()
{
    QFETCH(int, flip);
    QFETCH(float, topScale);
    QFETCH(float, topAnchor);
    QFETCH(QVector<QVector2D>, vertices);
    QFETCH(QVector<QVector4D>, uvs);
    Renderer::RenderPacket packet;
    packet.opacity = 0.25f;
    packet.masked = false;
    packet.primitive = 0;
    QMatrix4x4 model;
    model.translate(5, 6, -4000);
    QVERIFY(m_renderer.glRenderPacket(packet, model, m_sprite.get(), m_palette.get(), quint8(flip), topScale,
                                      topAnchor));
    QCOMPARE(packet.vertices, vertices);
    QCOMPARE(packet.uvs, uvs);
    QCOMPARE(packet.matrix, m_renderer.viewProjectionMatrix() * model);
    QCOMPARE(packet.texture, m_sprite.get());
    QCOMPARE(packet.palette, m_palette.get());
    QCOMPARE(packet.opacity, 1.0f);
    QVERIFY(packet.masked);
    QCOMPARE(int(packet.primitive), 1);
}

void RenderPacketsTest::tiledByHardware_data()
{
    QTest::addColumn<int>("flip");
    QTest::addColumn<QVector<QVector4D>>("uvs");
    QTest::newRow("plain") << 0 << QVector<QVector4D>{uv(0, 0), uv(3, 0), uv(0, 2), uv(3, 2)};
    QTest::newRow("mirrored") << 1 << QVector<QVector4D>{uv(3, 0), uv(0, 0), uv(3, 2), uv(0, 2)};
    QTest::newRow("upside down") << 2 << QVector<QVector4D>{uv(0, 2), uv(3, 2), uv(0, 0), uv(3, 0)};
}

void RenderPacketsTest::tiledByHardware()
{
    QFETCH(int, flip);
    QFETCH(QVector<QVector4D>, uvs);
    // Mesa repeats textures of any size, so the odd 15 x 9 picture repeats on the card too.
    for (const Texture *texture : {m_sprite.get(), m_odd.get()}) {
        Renderer::RenderPacket packet;
        const QSizeF size(texture->size());
        QVERIFY(m_renderer.glRenderPacketTiled(packet, QPoint(2, 1), size, QMatrix4x4(), texture, nullptr,
                                               quint8(flip)));
        QCOMPARE(int(packet.primitive), 1);
        const float w = float(size.width() * 3), h = float(size.height() * 2);
        QCOMPARE(packet.vertices, (QVector<QVector2D>{{0, 0}, {w, 0}, {0, h}, {w, h}}));
        QCOMPARE(packet.uvs, uvs);
    }
}

void RenderPacketsTest::tiledByTiles()
{
    // Spacing other than the picture's size: one pair of triangles a tile, row by row.
    Renderer::RenderPacket packet;
    QVERIFY(m_renderer.glRenderPacketTiled(packet, QPoint(1, 1), QSizeF(40, 30), QMatrix4x4(), m_sprite.get(),
                                           m_palette.get(), 1));
    QCOMPARE(int(packet.primitive), 0);
    QCOMPARE(packet.vertices.size(), 24);
    QCOMPARE(packet.uvs.size(), 24);
    const QVector<QVector2D> second{{40, 24}, {40, 0}, {72, 0}, {72, 0}, {72, 24}, {40, 24}};
    QCOMPARE(packet.vertices.mid(6, 6), second);
    const QVector<QVector2D> third{{0, 54}, {0, 30}, {32, 30}, {32, 30}, {32, 54}, {0, 54}};
    QCOMPARE(packet.vertices.mid(12, 6), third);
    const QVector<QVector4D> mirrored{uv(1, 1), uv(1, 0), uv(0, 0), uv(0, 0), uv(0, 1), uv(1, 1)};
    QCOMPARE(packet.uvs.mid(18, 6), mirrored);

    // Storage larger than the picture can't repeat on the card either.
    Texture::ImageData data;
    data.size = QSize(20, 10);
    data.textureSize = QSize(32, 16);
    data.depth = 8;
    data.data = QByteArray(32 * 16, char(1));
    Texture padded(data);
    QVERIFY(m_renderer.glRenderPacketTiled(packet, QPoint(1, 0), QSizeF(20, 10), QMatrix4x4(), &padded, nullptr));
    QCOMPARE(int(packet.primitive), 0);
    QCOMPARE(packet.uvs.at(2), uv(0.625f, 0));
    QCOMPARE(packet.vertices.at(8), QVector2D(40, 0));
}

void RenderPacketsTest::tiledWithoutRepeatIsThePlainPacket()
{
    QMatrix4x4 model;
    model.translate(3, 4);
    for (quint8 flip = 0; flip < 4; ++flip) {
        Renderer::RenderPacket tiled, plain;
        QVERIFY(m_renderer.glRenderPacketTiled(tiled, QPoint(0, 0), QSizeF(7, 7), model, m_sprite.get(),
                                               m_palette.get(), flip));
        QVERIFY(m_renderer.glRenderPacket(plain, model, m_sprite.get(), m_palette.get(), flip));
        QCOMPARE(tiled.vertices, plain.vertices);
        QCOMPARE(tiled.uvs, plain.uvs);
        QCOMPARE(tiled.matrix, plain.matrix);
        QCOMPARE(int(tiled.primitive), int(plain.primitive));
    }
}

void RenderPacketsTest::unusableTextures()
{
    Renderer::RenderPacket packet;
    Texture null{QImage()};
    QCOMPARE(null.glId(), 0u);
    QCOMPARE(null.type(), Texture::EmptyType);
    QVERIFY(!m_renderer.glRenderPacket(packet, QMatrix4x4(), &null, nullptr));
    QVERIFY(!m_renderer.glRenderPacket(packet, QMatrix4x4(), nullptr, nullptr));
    QVERIFY(!m_renderer.glRenderPacketTiled(packet, QPoint(1, 1), QSizeF(1, 1), QMatrix4x4(), &null, nullptr));
    // A palette is no picture to draw.
    QVERIFY(!m_renderer.glRenderPacket(packet, QMatrix4x4(), m_palette.get(), nullptr));

    Texture one{indexed(QSize(1, 1))};
    QVERIFY(one.glId() != 0);
    QCOMPARE(one.maximumUV(), QSizeF(1.0, 1.0));
    QVERIFY(m_renderer.glRenderPacket(packet, QMatrix4x4(), &one, m_palette.get()));

    // Data shorter than its sizes claim is turned away before it reaches the card.
    Texture::ImageData shortData;
    shortData.size = shortData.textureSize = QSize(10, 10);
    shortData.depth = 32;
    shortData.data = QByteArray(3, char(1));
    Texture truncated(shortData);
    QCOMPARE(truncated.glId(), 0u);
    QVERIFY(!m_renderer.glRenderPacket(packet, QMatrix4x4(), &truncated, nullptr));

    // The raster road has no packets: the caller draws with the painter.
    OffScreenRenderWidget raster(false, QSize(8, 8));
    PacketRenderer plain;
    raster.setRenderer(&plain);
    QVERIFY(!plain.isOpenGL());
    QVERIFY(!plain.glRenderPacket(packet, QMatrix4x4(), m_sprite.get(), nullptr));
    QCOMPARE(plain.viewProjectionMatrix(), QMatrix4x4());
    QVERIFY(plain.glPrivate() == nullptr);
}

void RenderPacketsTest::cull_data()
{
    QTest::addColumn<QPointF>("at");
    QTest::addColumn<bool>("culled");
    QTest::newRow("inside") << QPointF(10, 10) << false;
    QTest::newRow("over the left edge") << QPointF(-20, 10) << false;
    QTest::newRow("over the bottom edge") << QPointF(10, 40) << false;
    QTest::newRow("left of the view") << QPointF(-40, 10) << true;
    QTest::newRow("right of the view") << QPointF(70, 10) << true;
    QTest::newRow("above the view") << QPointF(10, -30) << true;
    QTest::newRow("below the view") << QPointF(10, 50) << true;
}

void RenderPacketsTest::cull()
{
    QFETCH(QPointF, at);
    QFETCH(bool, culled);
    Renderer::RenderPacket packet;
    QMatrix4x4 model;
    model.translate(float(at.x()), float(at.y()), -4000);
    QVERIFY(m_renderer.glRenderPacket(packet, model, m_sprite.get(), m_palette.get()));
    QCOMPARE(m_renderer.glCullRenderPacket(packet, QRectF(-1, -1, 2, 2)), culled);
    packet.vertices.clear();
    QVERIFY(m_renderer.glCullRenderPacket(packet, QRectF(-1, -1, 2, 2)));
}

void RenderPacketsTest::projections()
{
    // One unit is one pixel, (0, 0) the top-left corner, in both projections.
    const QMatrix4x4 orthographic = m_renderer.viewProjectionMatrix();
    QCOMPARE(orthographic.map(QVector3D(0, 0, -4000)).toVector2D(), QVector2D(-1, 1));
    QCOMPARE(orthographic.map(QVector3D(64, 48, -4000)).toVector2D(), QVector2D(1, -1));
    // Off screen the orthographic view moves the model towards the viewer, so a model at
    // depth 0 falls out of the depth range there.
    QVERIFY(orthographic.map(QVector3D(0, 0, 0)).z() < -1);
    m_renderer.setProjectionMode(Renderer::Perspective);
    const QMatrix4x4 perspective = m_renderer.viewProjectionMatrix();
    m_renderer.setProjectionMode(Renderer::Orthographic);
    QCOMPARE(perspective.map(QVector3D(0, 0, 0)).toVector2D(), QVector2D(-1, 1));
    QCOMPARE(perspective.map(QVector3D(64, 48, 0)).toVector2D(), QVector2D(1, -1));
    QCOMPARE(perspective.map(QVector3D(32, 24, 0)).toVector2D(), QVector2D(0, 0));
    const float depth = perspective.map(QVector3D(0, 0, 0)).z();
    QVERIFY(depth > -1 && depth < 1);
    QCOMPARE(m_renderer.viewProjectionMatrix(), orthographic);
}

void RenderPacketsTest::blendStateIsCached()
{
    QOpenGLFunctions *gl = m_renderer.functions();
    auto source = [gl] {
        GLint value = 0;
        gl->glGetIntegerv(GL_BLEND_SRC_RGB, &value);
        return value;
    };
    m_renderer.glSetBlend(false);
    m_renderer.glSetBlend(true);
    QVERIFY(gl->glIsEnabled(GL_BLEND));
    m_renderer.glSetBlendFunction(Renderer::SourceAlpha, Renderer::OneMinusSourceAlpha);
    QCOMPARE(source(), GLint(GL_SRC_ALPHA));
    // GL changed behind the helper's back: an unchanged setting doesn't reach GL.
    gl->glBlendFunc(GL_ONE, GL_ZERO);
    m_renderer.glSetBlendFunction(Renderer::SourceAlpha, Renderer::OneMinusSourceAlpha);
    QCOMPARE(source(), GLint(GL_ONE));
    m_renderer.glSetBlendFunction(Renderer::DestinationColor, Renderer::Zero);
    QCOMPARE(source(), GLint(GL_DST_COLOR));
    // Turning blending off forgets the factors, so the next setting is issued whatever it is.
    m_renderer.glSetBlend(false);
    QVERIFY(!gl->glIsEnabled(GL_BLEND));
    gl->glBlendFunc(GL_ONE, GL_ZERO);
    m_renderer.glSetBlendFunction(Renderer::DestinationColor, Renderer::Zero);
    QCOMPARE(source(), GLint(GL_DST_COLOR));

    GLint equation = 0;
    m_renderer.glSetBlendEquation(Renderer::BlendReverseSubtract);
    gl->glGetIntegerv(GL_BLEND_EQUATION_RGB, &equation);
    QCOMPARE(equation, GLint(GL_FUNC_REVERSE_SUBTRACT));
    gl->glBlendEquation(GL_FUNC_ADD);
    m_renderer.glSetBlendEquation(Renderer::BlendReverseSubtract);
    gl->glGetIntegerv(GL_BLEND_EQUATION_RGB, &equation);
    QCOMPARE(equation, GLint(GL_FUNC_ADD));
    m_renderer.glSetBlend(false);
}

void RenderPacketsTest::samplersAreSetOnProgramSwitchOnly()
{
    QOpenGLFunctions *gl = m_renderer.functions();
    GLRenderWidgetPrivate *state = m_renderer.glPrivate();
    QVERIFY(state);
    GLint sampler = -1;
    m_renderer.paint = [&](QPainter &painter) {
        m_renderer.glBeginDrawImage(painter);
        Renderer::RenderPacket packet;
        QMatrix4x4 model;
        model.translate(0, 0, -4000);
        QVERIFY(m_renderer.glRenderPacket(packet, model, m_sprite.get(), m_palette.get()));
        m_renderer.glDrawImage(packet);
        QOpenGLShaderProgram *program = state->currentProgram;
        QCOMPARE(program, state->programs[GLRenderWidgetPrivate::PaletteSet][0]);
        QCOMPARE(state->currentPalette, m_palette.get());
        GLint current = 0;
        gl->glGetIntegerv(GL_CURRENT_PROGRAM, &current);
        QCOMPARE(GLuint(current), program->programId());
        // A second packet with the same program leaves the samplers as they are.
        const int imageLocation = state->locations[GLRenderWidgetPrivate::PaletteSet].image;
        gl->glUniform1i(imageLocation, 5);
        m_renderer.glDrawImage(packet);
        gl->glGetUniformiv(program->programId(), imageLocation, &sampler);
        packet.effect = 1; // another program: the samplers are set afresh
        m_renderer.glDrawImage(packet);
        QCOMPARE(state->currentProgram, state->programs[GLRenderWidgetPrivate::PaletteSet][1]);
        m_renderer.glEndDrawImage(painter);
    };
    m_widget->update();
    m_renderer.paint = nullptr;
    QCOMPARE(sampler, 5);
    QVERIFY(state->currentProgram == nullptr);
}

void RenderPacketsTest::malformedPacketsDrawNothing()
{
    m_renderer.background = QColor(10, 20, 30);
    m_renderer.paint = [&](QPainter &painter) {
        m_renderer.glBeginDrawImage(painter);
        Renderer::RenderPacket packet;
        QMatrix4x4 model;
        model.translate(0, 0, -4000);
        QVERIFY(m_renderer.glRenderPacket(packet, model, m_sprite.get(), m_palette.get()));
        packet.primitive = 9;
        m_renderer.glDrawImage(packet);
        packet.primitive = 1;
        packet.uvs.resize(2);
        m_renderer.glDrawImage(packet);
        packet.texture = nullptr;
        m_renderer.glDrawImage(packet);
        m_renderer.glEndDrawImage(painter);
    };
    m_widget->update();
    m_renderer.paint = nullptr;
    const QImage picture = m_widget->output();
    QCOMPARE(picture.size(), QSize(64, 48));
    QCOMPARE(picture.pixelColor(5, 5), QColor(10, 20, 30));
    QCOMPARE(picture.pixelColor(63, 47), QColor(10, 20, 30));
}

void RenderPacketsTest::names()
{
    QCOMPARE(Renderer::name(true), QStringLiteral("Native painter"));
    // The module Qt loaded decides, whether or not a renderer sits on a GL widget.
    const QString expected = QOpenGLContext::openGLModuleType() == QOpenGLContext::LibGL ? QStringLiteral("OpenGL")
                                                                                         : QStringLiteral("DirectX");
    QCOMPARE(Renderer::name(false), expected);
    QCOMPARE(Renderer::name(false), QStringLiteral("OpenGL")); // Mesa's desktop GL under the test server
}

OVRA_GL_TEST_MAIN(RenderPacketsTest)
#include "tst_renderpackets.moc"
