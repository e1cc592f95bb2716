// The on-screen render widgets as a user meets them: a GL widget that draws and takes a
// custom shader, the raster widget's input, and the view that picks its back end.
#include "rendertestsupport.h"
#include "testinterface.h"

#include "render/glrenderwidget.h"
#include "render/renderview.h"
#include "render/renderwidget.h"

#include <QOpenGLShaderProgram>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

using namespace Ovra;

namespace {

// Draws the sprite once, full size, at (10, 10).
void drawSprite(PacketRenderer &renderer, QPainter &painter, const Texture *sprite, const Texture *palette)
{
    renderer.glBeginDrawImage(painter);
    Renderer::RenderPacket packet;
    QMatrix4x4 model;
    model.translate(10, 10);
    if (renderer.glRenderPacket(packet, model, sprite, palette)) {
        renderer.glSetBlend(true);
        renderer.glSetBlendFunction(Renderer::SourceAlpha, Renderer::OneMinusSourceAlpha);
        renderer.glDrawImage(packet);
    }
    renderer.glEndDrawImage(painter);
}

const char tintShader[] = "uniform sampler2D image;\nuniform sampler2D palette;\nuniform highp float opacity;\n"
                          "uniform lowp float mask;\nuniform highp vec4 tint;\nvarying mediump vec4 uv;\n"
                          "void main() {\n    gl_FragColor = tint;\n}\n";

} // namespace

class RenderWidgetsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void glWidgetDraws();
    void customPixelShader();
    void rasterWidgetInput();
    void viewFollowsNativePainting();

private:
    RGBA m_colours[256];
    std::unique_ptr<Texture> m_sprite, m_palette;
};

void RenderWidgetsTest::initTestCase()
{
    Texture::setOpenGLEnabled(true);
    for (int i = 0; i < 256; ++i)
        m_colours[i] = RGBA(quint8(i), 30, 200, 255);
    m_colours[7] = RGBA(250, 120, 0, 255);
    QImage image(20, 16, QImage::Format_Indexed8);
    image.setColorCount(256);
    image.fill(7);
    m_sprite.reset(new Texture(image));
    m_palette.reset(new Texture(m_colours));
    QVERIFY(m_sprite->glId() && m_palette->glId());
}

void RenderWidgetsTest::glWidgetDraws()
{
    GLRenderWidget widget;
    widget.resize(80, 60);
    PacketRenderer early;
    widget.setRenderer(&early); // no context yet: dropped
    QVERIFY(widget.renderer() == nullptr);
    QVERIFY(!early.isOpenGL());

    QSignalSpy initialized(&widget, &GLRenderWidget::initialize);
    widget.show();
    QVERIFY(QTest::qWaitForWindowExposed(&widget));
    QTRY_COMPARE(initialized.count(), 1);
    PacketRenderer renderer;
    renderer.background = QColor(0, 0, 80);
    renderer.paint = [&](QPainter &painter) { drawSprite(renderer, painter, m_sprite.get(), m_palette.get()); };
    widget.setRenderer(&renderer);
    QCOMPARE(widget.renderer(), &renderer);
    QVERIFY(renderer.isOpenGL());
    QCOMPARE(renderer.widget(), &widget);
    QCOMPARE(renderer.size, QSize(80, 60));

    const QImage picture = widget.grabFramebuffer();
    picture.save(picturePath(QStringLiteral("render-glwidget.png")));
    QCOMPARE(picture.pixelColor(0, 0), QColor(0, 0, 80));
    QCOMPARE(picture.pixelColor(10, 10), QColor(250, 120, 0));
    QCOMPARE(picture.pixelColor(29, 25), QColor(250, 120, 0));
    QCOMPARE(picture.pixelColor(30, 26), QColor(0, 0, 80));
    widget.setRenderer(nullptr);
    QVERIFY(!renderer.isOpenGL());
    QVERIFY(renderer.renderWidget() == nullptr);
}

void RenderWidgetsTest::customPixelShader()
{
    GLRenderWidget widget;
    widget.resize(80, 60);
    QSignalSpy initialized(&widget, &GLRenderWidget::initialize);
    widget.show();
    QVERIFY(QTest::qWaitForWindowExposed(&widget));
    QTRY_COMPARE(initialized.count(), 1);
    PacketRenderer renderer;
    renderer.paint = [&](QPainter &painter) { drawSprite(renderer, painter, m_sprite.get(), m_palette.get()); };
    widget.setRenderer(&renderer);

    // The listener sets the custom uniform on the program in use, for every draw.
    int calls = 0;
    connect(&widget, &GLRenderWidget::setCustomShaderUniformValues, this, [&](QOpenGLShaderProgram *program) {
        ++calls;
        program->setUniformValue("tint", QVector4D(0.0f, 1.0f, 0.0f, 1.0f));
    });
    widget.setCustomPixelShader(tintShader, nullptr);
    QImage picture = widget.grabFramebuffer();
    picture.save(picturePath(QStringLiteral("render-glwidget-custom.png")));
    QVERIFY(calls >= 1);
    QCOMPARE(picture.pixelColor(15, 15), QColor(0, 255, 0));
    QCOMPARE(picture.pixelColor(0, 0), QColor(Qt::white));

    widget.setCustomPixelShader(nullptr, nullptr);
    picture = widget.grabFramebuffer();
    QCOMPARE(picture.pixelColor(15, 15), QColor(250, 120, 0));
}

void RenderWidgetsTest::rasterWidgetInput()
{
    RenderWidget widget;
    widget.resize(100, 70);
    PacketRenderer renderer;
    bool painted = false;
    renderer.paint = [&](QPainter &painter) {
        painted = true;
        painter.fillRect(QRect(0, 0, 100, 70), Qt::darkCyan);
    };
    widget.setRenderer(&renderer);
    QVERIFY(!renderer.isOpenGL());
    QCOMPARE(renderer.widget(), &widget);
    widget.show();
    QVERIFY(QTest::qWaitForWindowExposed(&widget));
    QTRY_VERIFY(painted);
    QCOMPARE(widget.grab().toImage().pixelColor(50, 50), QColor(Qt::darkCyan));

    renderer.events.clear();
    QMouseEvent move(QEvent::MouseMove, QPointF(30, 40), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&widget, &move); // no button held: tracked all the same
    QTest::mouseClick(&widget, Qt::LeftButton, Qt::NoModifier, QPoint(12, 34));
    QTest::keyClick(&widget, Qt::Key_A);
    QKeyEvent repeat(QEvent::KeyRelease, Qt::Key_B, Qt::NoModifier, QStringLiteral("b"), true);
    QCoreApplication::sendEvent(&widget, &repeat);
    QKeyEvent shift(QEvent::KeyRelease, Qt::Key_Shift, Qt::ShiftModifier, QString(), false);
    QCoreApplication::sendEvent(&widget, &shift);
    QVERIFY(renderer.events.contains(QStringLiteral("move 30,40")));
    QVERIFY(renderer.events.contains(QStringLiteral("press 12,34 1")));
    const QStringList keys = renderer.events.filter(QRegularExpression(QStringLiteral("^(key|text)")));
    QCOMPARE(keys, (QStringList{QStringLiteral("keydown %1").arg(Qt::Key_A), QStringLiteral("keyup %1").arg(Qt::Key_A),
                                QStringLiteral("text a %1").arg(Qt::Key_A), QStringLiteral("text b %1").arg(Qt::Key_B),
                                QStringLiteral("keyup %1").arg(Qt::Key_Shift)}));
}

void RenderWidgetsTest::viewFollowsNativePainting()
{
    TestInterface host;
    host.setOption(QStringLiteral("native_painting"), true);
    RenderView view;
    auto *bar = new QWidget;
    bar->setFixedHeight(10);
    view.setBars({bar});
    PacketRenderer renderer;
    view.setRenderer(&renderer);
    view.resize(120, 90);
    view.selectBackEnd();
    QVERIFY(view.isNative());
    auto *raster = dynamic_cast<RenderWidget *>(view.renderWidget());
    QVERIFY(raster);
    QCOMPARE(renderer.renderWidget(), raster);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QCOMPARE(bar->parentWidget(), &view);
    QVERIFY(raster->geometry().top() >= 10);

    QSignalSpy changed(&view, &RenderView::backEndChanged);
    view.selectBackEnd(); // already the wanted kind: nothing happens
    QCOMPARE(changed.count(), 0);
    QCOMPARE(view.renderWidget(), raster);

    host.setOption(QStringLiteral("native_painting"), QVariant());
    QSignalSpy attached(&view, &RenderView::rendererAttached);
    view.selectBackEnd();
    QCOMPARE(changed.count(), 1);
    QVERIFY(!view.isNative());
    auto *gl = dynamic_cast<GLRenderWidget *>(view.renderWidget());
    QVERIFY(gl);
    // The GL widget takes the renderer once it has its context.
    QTRY_COMPARE(attached.count(), 1);
    QCOMPARE(gl->renderer(), &renderer);
    QVERIFY(renderer.isOpenGL());
    QCOMPARE(bar->parentWidget(), &view);
}

OVRA_GL_TEST_MAIN(RenderWidgetsTest)
#include "tst_renderwidgets.moc"
