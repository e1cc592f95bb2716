#pragma once

#include "image/imagedata.h"
#include "render/renderer.h"
#include "render/texture.h"

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QVector>

#include <functional>

// A renderer whose drawing a test writes as a function, with the protected GL helpers open
// to the test and the input it received on record.
class PacketRenderer : public Ovra::Renderer
{
public:
    using Renderer::glBeginDrawImage;
    using Renderer::glCullRenderPacket;
    using Renderer::glDrawImage;
    using Renderer::glEndDrawImage;
    using Renderer::glPrivate;
    using Renderer::glRenderPacket;
    using Renderer::glRenderPacketTiled;
    using Renderer::glSetBlend;
    using Renderer::glSetBlendEquation;
    using Renderer::glSetBlendFunction;
    using Renderer::setProjectionMode;
    using Renderer::viewProjectionMatrix;
    using Renderer::widget;

    void render(QPainter &painter) override
    {
        if (paint)
            paint(painter);
    }
    QColor clearColor() const override { return background; }
    void mousePressed(QPoint position, Qt::MouseButton button, Qt::KeyboardModifiers) override
    {
        events << QStringLiteral("press %1,%2 %3").arg(position.x()).arg(position.y()).arg(int(button));
    }
    void mouseMoved(QPoint position, Qt::KeyboardModifiers) override
    {
        events << QStringLiteral("move %1,%2").arg(position.x()).arg(position.y());
    }
    void keyPressed(int key, Qt::KeyboardModifiers) override { events << QStringLiteral("keydown %1").arg(key); }
    void keyReleased(int key, Qt::KeyboardModifiers) override { events << QStringLiteral("keyup %1").arg(key); }
    void keyString(QString text, int key) override { events << QStringLiteral("text %1 %2").arg(text).arg(key); }
    void mouseWheel(int delta) override { events << QStringLiteral("wheel %1").arg(delta); }
    void sizeChanged(int width, int height) override { size = QSize(width, height); }

    // The GL functions of the widget's context, for the tests that look at GL state.
    QOpenGLFunctions *functions() { return this; }

    std::function<void(QPainter &)> paint;
    QColor background = Qt::white;
    QStringList events;
    QSize size;
};

// How a packet is shaded and blended, as the shaders and the blend settings of a scene do it.
struct Shading
{
    const QImage *image = nullptr;        // the picture: indexed or ARGB32
    const Ovra::RGBA *palette = nullptr;  // for an indexed picture
    QSize textureSize;                    // of the stored rows
    quint8 effect = 0;
    float opacity = 1.0f;
    bool masked = true;
};

// Draws a packet into the picture on the CPU from the rules: the packet's triangles are
// filled at pixel centres, texture coordinates interpolated across each triangle and
// sampled at the nearest texel with repeat; indexed texels look up the palette, and colour
// texels are premultiplied with truncation as they are stored; then the effect, the mask,
// the opacity and the blending of the scene (source alpha for palettes, one for the
// premultiplied images, one minus source alpha below).
void referenceDraw(QImage &target, const Ovra::Renderer::RenderPacket &packet, const Shading &shading);

// The largest difference of one channel between two pictures of one size; -1 if they
// differ in size. Where it is, for the failure message.
int largestDifference(const QImage &a, const QImage &b, QPoint *where = nullptr);

// The path of a picture written next to the test programs, for a person to look at.
QString picturePath(const QString &name);

// An application that shares GL objects between all its contexts, as the hidden texture
// contexts need; Qt has to be told so before the application exists.
#define OVRA_GL_TEST_MAIN(TestClass)                                                                           \
    int main(int argc, char **argv)                                                                            \
    {                                                                                                          \
        QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);                                            \
        QApplication app(argc, argv);                                                                          \
        app.setAttribute(Qt::AA_Use96Dpi, true);                                                               \
        TestClass test;                                                                                        \
        QTEST_SET_MAIN_SOURCE_PATH                                                                             \
        return QTest::qExec(&test, argc, argv);                                                                \
    }
