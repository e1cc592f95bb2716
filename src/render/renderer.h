#pragma once

#include "foundation/global.h"

#include <QColor>
#include <QMatrix4x4>
#include <QOpenGLFunctions>
#include <QPoint>
#include <QRectF>
#include <QSizeF>
#include <QString>
#include <QVector2D>
#include <QVector4D>
#include <QVector>

#include <memory>

class QPainter;
class QWidget;

namespace Ovra {

class GLRenderWidget;
class GLRenderWidgetPrivate;
class RenderWidgetBase;
class RendererPrivate;
class Texture;

// Something that draws a picture of its own into a render widget and reacts to the input
// the widget forwards. The same renderer can sit on an OpenGL widget, on the raster widget
// or off screen; the gl* helpers work only on the first and the last, and report false on
// the raster one so that the caller draws with the QPainter instead.
class OVRA_EXPORT Renderer : protected QOpenGLFunctions
{
public:
    // One draw call: a textured primitive in its final place on the screen.
    struct RenderPacket
    {
        const Texture *texture = nullptr;
        const Texture *palette = nullptr;
        QVector<QVector2D> vertices;
        QVector<QVector4D> uvs;      // (s, t, 0, q): the shader samples (s / q, t)
        QMatrix4x4 matrix;           // projection included
        float opacity = 1.0f;
        bool masked = true;          // false: every pixel is drawn opaque, index 0 included
        quint8 effect = 0;           // 0 plain, 1 grayscale, 2 lighter, 3 darker
        quint8 primitive = 1;        // 0 triangles, 1 triangle strip, 2 triangle fan
    };

    enum ProjectionMode { Orthographic = 0, Perspective = 1 };
    enum BlendEquation { BlendAdd = 0, BlendReverseSubtract = 1 };
    enum BlendFactor {
        Zero = 0,
        One = 1,
        SourceColor = 2,
        DestinationColor = 3,
        SourceAlpha = 4,
        OneMinusSourceAlpha = 5,
        ConstantColor = 6,
        ConstantAlpha = 7,
    };

    Renderer();
    virtual ~Renderer();

    virtual void keyPressed(int key, Qt::KeyboardModifiers modifiers);
    virtual void keyReleased(int key, Qt::KeyboardModifiers modifiers);
    virtual void keyString(QString text, int key);
    virtual void mousePressed(QPoint position, Qt::MouseButton button, Qt::KeyboardModifiers modifiers);
    virtual void mouseReleased(QPoint position, Qt::MouseButton button, Qt::KeyboardModifiers modifiers);
    virtual void mouseMoved(QPoint position, Qt::KeyboardModifiers modifiers);
    virtual void mouseWheel(int delta);
    virtual void sizeChanged(int width, int height);
    virtual void render(QPainter &painter) = 0;
    virtual QColor clearColor() const;

    void setFocus();
    void update();
    bool isOpenGL() const;
    RenderWidgetBase *renderWidget() const;

    // The name of a drawing back end for the user: the native painter, or the GL module
    // that Qt loaded (desktop OpenGL, or the GLES module that stands in for DirectX).
    static QString name(bool native);

protected:
    void glBeginDrawImage(QPainter &painter);
    void glEndDrawImage(QPainter &painter);
    bool glRenderPacket(RenderPacket &packet, const QMatrix4x4 &model, const Texture *texture,
                        const Texture *palette, unsigned char flip = 0, float topScale = 1.0f,
                        float topAnchor = 0.5f);
    bool glRenderPacketTiled(RenderPacket &packet, QPoint repeat, QSizeF spacing, const QMatrix4x4 &model,
                             const Texture *texture, const Texture *palette, unsigned char flip = 0);
    bool glCullRenderPacket(const RenderPacket &packet, QRectF view);
    void glDrawImage(const RenderPacket &packet);
    void glSetBlend(bool enable);
    void glSetBlendEquation(BlendEquation equation);
    void glSetBlendFunction(BlendFactor source, BlendFactor destination);

    void setProjectionMode(ProjectionMode mode);
    QMatrix4x4 viewProjectionMatrix() const;
    GLRenderWidgetPrivate *glPrivate(GLRenderWidget **glWidget = nullptr) const;
    QWidget *widget() const;

private:
    friend class GLRenderWidget;
    friend class RenderWidget;
    friend class OffScreenRenderWidget;
    // Called by the widgets: null detaches. With openGL the widget's context is current.
    void attach(RenderWidgetBase *widget, bool openGL);
    bool usableTexture(const Texture *texture) const;

    std::unique_ptr<RendererPrivate> d;
    Q_DISABLE_COPY(Renderer)
};

} // namespace Ovra
