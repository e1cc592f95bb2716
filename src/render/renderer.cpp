#include "renderer.h"

#include "render/glrenderwidget.h"
#include "render/glrenderwidget_p.h"
#include "render/renderwidgetbase.h"
#include "render/texture.h"

#include <QCoreApplication>
#include <QOpenGLContext>
#include <QOpenGLShaderProgram>
#include <QPainter>

#include <atomic>

namespace Ovra {

class RendererPrivate
{
public:
    RenderWidgetBase *widget = nullptr;
    bool isOpenGL = false;
    uint currentPaletteId = 0; // a palette re-uploaded mid-frame gets a new name
};

namespace {

const GLenum blendFactors[] = {GL_ZERO,      GL_ONE,           GL_SRC_COLOR,       GL_DST_COLOR,
                               GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_CONSTANT_COLOR, GL_CONSTANT_ALPHA};

// Whether the card repeats textures of any size; asked once, by the first tiled packet.
std::atomic<int> npotRepeat{-1};

struct FlippedUV
{
    float left, right, top, bottom;
};

FlippedUV flippedUV(QSizeF maximum, unsigned char flip)
{
    const float w = float(maximum.width());
    const float h = float(maximum.height());
    return {flip & 1 ? w : 0.0f, flip & 1 ? 0.0f : w, flip & 2 ? h : 0.0f, flip & 2 ? 0.0f : h};
}

void setQuadUVs(Renderer::RenderPacket &packet, const FlippedUV &uv)
{
    packet.uvs = {QVector4D(uv.left, uv.top, 0, 1), QVector4D(uv.right, uv.top, 0, 1),
                  QVector4D(uv.left, uv.bottom, 0, 1), QVector4D(uv.right, uv.bottom, 0, 1)};
}

} // namespace

Renderer::Renderer()
    : d(new RendererPrivate)
{
}

Renderer::~Renderer()
{
    if (d->widget && d->widget->renderer() == this)
        d->widget->setRenderer(nullptr);
}

void Renderer::keyPressed(int, Qt::KeyboardModifiers) {}
void Renderer::keyReleased(int, Qt::KeyboardModifiers) {}
void Renderer::keyString(QString, int) {}
void Renderer::mousePressed(QPoint, Qt::MouseButton, Qt::KeyboardModifiers) {}
void Renderer::mouseReleased(QPoint, Qt::MouseButton, Qt::KeyboardModifiers) {}
void Renderer::mouseMoved(QPoint, Qt::KeyboardModifiers) {}
void Renderer::mouseWheel(int) {}
void Renderer::sizeChanged(int, int) {}

QColor Renderer::clearColor() const
{
    return QColor(Qt::white);
}

void Renderer::setFocus()
{
    if (d->widget)
        d->widget->setFocus();
}

void Renderer::update()
{
    if (d->widget)
        d->widget->update();
}

bool Renderer::isOpenGL() const
{
    return d->isOpenGL;
}

RenderWidgetBase *Renderer::renderWidget() const
{
    return d->widget;
}

QString Renderer::name(bool native)
{
    if (native)
        return QCoreApplication::translate("Ovra::Renderer", "Native painter");
    return QOpenGLContext::openGLModuleType() == QOpenGLContext::LibGLES ? QStringLiteral("DirectX")
                                                                          : QStringLiteral("OpenGL");
}

void Renderer::attach(RenderWidgetBase *widget, bool openGL)
{
    d->widget = widget;
    d->isOpenGL = widget && openGL && widget->glState();
    if (d->isOpenGL)
        initializeOpenGLFunctions();
}

GLRenderWidgetPrivate *Renderer::glPrivate(GLRenderWidget **glWidget) const
{
    if (glWidget)
        *glWidget = dynamic_cast<GLRenderWidget *>(d->widget);
    return d->isOpenGL && d->widget ? d->widget->glState() : nullptr;
}

QWidget *Renderer::widget() const
{
    return dynamic_cast<QWidget *>(d->widget);
}

void Renderer::setProjectionMode(ProjectionMode mode)
{
    if (GLRenderWidgetPrivate *gl = glPrivate())
        gl->projection = mode == Perspective ? Perspective : Orthographic;
}

QMatrix4x4 Renderer::viewProjectionMatrix() const
{
    const GLRenderWidgetPrivate *gl = glPrivate();
    return gl ? gl->matrices[gl->projection] : QMatrix4x4();
}

void Renderer::glBeginDrawImage(QPainter &painter)
{
    if (GLRenderWidgetPrivate *gl = glPrivate()) {
        gl->resetDrawState();
        // The painter leaves blending off but its blend function unknown: forget the cache
        // so that the first setting of the frame reaches GL.
        gl->blend = false;
        gl->blendEquation = 0;
        gl->blendSource = gl->blendDestination = -1;
        d->currentPaletteId = 0;
    }
    painter.beginNativePainting();
}

void Renderer::glEndDrawImage(QPainter &painter)
{
    if (GLRenderWidgetPrivate *gl = glPrivate()) {
        glActiveTexture(GL_TEXTURE1);
        glBindTexture(GL_TEXTURE_2D, 0);
        glActiveTexture(GL_TEXTURE0);
        glBindTexture(GL_TEXTURE_2D, 0);
        glSetBlend(false);
        glBlendEquation(GL_FUNC_ADD);
        glSetBlendFunction(SourceAlpha, OneMinusSourceAlpha);
        if (gl->currentProgram)
            gl->currentProgram->release();
        gl->resetDrawState();
    }
    painter.endNativePainting();
}

bool Renderer::usableTexture(const Texture *texture) const
{
    return glPrivate() && texture && texture->glId() && texture->type() >= Texture::IndexedType;
}

bool Renderer::glRenderPacket(RenderPacket &packet, const QMatrix4x4 &model, const Texture *texture,
                              const Texture *palette, unsigned char flip, float topScale, float topAnchor)
{
    if (!usableTexture(texture))
        return false;
    packet.matrix = viewProjectionMatrix() * model;
    packet.texture = texture;
    packet.palette = palette;
    packet.opacity = 1.0f;
    packet.masked = true;
    packet.primitive = 1;
    setQuadUVs(packet, flippedUV(texture->maximumUV(), flip));

    const float w = texture->width();
    const float h = texture->height();
    float left = 0;
    float right = w;
    if (topScale != 1.0f) {
        // Only the top edge grows: a floor seen in perspective. topAnchor is the share of
        // the growth that goes to the left.
        const float growth = w * topScale - w;
        right = (1 - topAnchor) * growth + w;
        left = 0 - growth * topAnchor;
    }
    packet.vertices = {QVector2D(left, 0), QVector2D(right, 0), QVector2D(0, h), QVector2D(w, h)};
    return true;
}

bool Renderer::glRenderPacketTiled(RenderPacket &packet, QPoint repeat, QSizeF spacing, const QMatrix4x4 &model,
                                   const Texture *texture, const Texture *palette, unsigned char flip)
{
    if (repeat.isNull())
        return glRenderPacket(packet, model, texture, palette, flip, 1.0f, 0.5f);
    if (!usableTexture(texture) || repeat.x() < 0 || repeat.y() < 0)
        return false;
    const int tilesX = repeat.x() + 1;
    const int tilesY = repeat.y() + 1;
    packet.matrix = viewProjectionMatrix() * model;
    packet.texture = texture;
    packet.palette = palette;
    packet.opacity = 1.0f;
    packet.masked = true;

    const QSize picture = texture->size();
    if (npotRepeat < 0)
        npotRepeat = hasOpenGLFeature(NPOTTextures) ? 1 : 0;
    const bool hardwareRepeat = spacing == QSizeF(picture) && texture->maximumUV() == QSizeF(1.0, 1.0)
                                && (npotRepeat == 1 || (picture.width() % 2 == 0 && picture.height() % 2 == 0));
    if (hardwareRepeat) {
        packet.primitive = 1;
        setQuadUVs(packet, flippedUV(QSizeF(tilesX, tilesY), flip));
        const float right = float(spacing.width() * tilesX);
        const float bottom = float(spacing.height() * tilesY);
        packet.vertices = {QVector2D(0, 0), QVector2D(right, 0), QVector2D(0, bottom), QVector2D(right, bottom)};
        return true;
    }

    packet.primitive = 0;
    const FlippedUV uv = flippedUV(texture->maximumUV(), flip);
    const float w = picture.width();
    const float h = picture.height();
    packet.vertices.clear();
    packet.uvs.clear();
    packet.vertices.reserve(tilesX * tilesY * 6);
    packet.uvs.reserve(tilesX * tilesY * 6);
    for (int ty = 0; ty < tilesY; ++ty) {
        const float y = float(ty * spacing.height());
        for (int tx = 0; tx < tilesX; ++tx) {
            const float x = float(tx * spacing.width());
            packet.vertices << QVector2D(x, y + h) << QVector2D(x, y) << QVector2D(x + w, y)
                            << QVector2D(x + w, y) << QVector2D(x + w, y + h) << QVector2D(x, y + h);
            packet.uvs << QVector4D(uv.left, uv.bottom, 0, 1) << QVector4D(uv.left, uv.top, 0, 1)
                       << QVector4D(uv.right, uv.top, 0, 1) << QVector4D(uv.right, uv.top, 0, 1)
                       << QVector4D(uv.right, uv.bottom, 0, 1) << QVector4D(uv.left, uv.bottom, 0, 1);
        }
    }
    return true;
}

bool Renderer::glCullRenderPacket(const RenderPacket &packet, QRectF view)
{
    if (packet.vertices.isEmpty())
        return true; // nothing to see anywhere
    float left = 999999.0f, top = 999999.0f, right = -999999.0f, bottom = -999999.0f;
    for (const QVector2D &v : packet.vertices) {
        left = qMin(left, v.x());
        right = qMax(right, v.x());
        top = qMin(top, v.y());
        bottom = qMax(bottom, v.y());
    }
    const QPointF a = packet.matrix.map(QPointF(left, top));
    const QPointF b = packet.matrix.map(QPointF(right, bottom));
    // The corners land in normalised device space, where y grows upwards.
    const QRectF box = QRectF(QPointF(a.x(), -a.y()), QPointF(b.x(), -b.y())).normalized();
    return !box.intersects(view);
}

void Renderer::glDrawImage(const RenderPacket &packet)
{
    GLRenderWidget *glWidget = nullptr;
    GLRenderWidgetPrivate *gl = glPrivate(&glWidget);
    const Texture *texture = packet.texture;
    if (!gl || !texture)
        return;
    static const GLenum modes[] = {GL_TRIANGLES, GL_TRIANGLE_STRIP, GL_TRIANGLE_FAN};
    if (packet.primitive > 2 || packet.vertices.isEmpty() || packet.uvs.size() < packet.vertices.size())
        return; // a malformed packet draws nothing rather than reading past its arrays
    const int set = texture->type() == Texture::IndexedType ? GLRenderWidgetPrivate::PaletteSet
                                                             : GLRenderWidgetPrivate::ImageSet;
    QOpenGLShaderProgram *program = gl->programs[set][packet.effect < 4 ? packet.effect : 0];
    if (!program)
        return;
    const GLRenderWidgetPrivate::Locations &where = gl->locations[set];
    if (program != gl->currentProgram) {
        gl->currentProgram = program;
        program->bind();
        program->setUniformValue(where.image, 0);
        if (packet.palette || set == GLRenderWidgetPrivate::PaletteSet)
            program->setUniformValue(where.palette, 1);
    }
    glBindTexture(GL_TEXTURE_2D, texture->glId());
    if (packet.palette && (packet.palette != gl->currentPalette || packet.palette->glId() != d->currentPaletteId)) {
        gl->currentPalette = packet.palette;
        d->currentPaletteId = packet.palette->glId();
        if (packet.palette->glId()) {
            glActiveTexture(GL_TEXTURE1);
            glBindTexture(GL_TEXTURE_2D, packet.palette->glId());
            glActiveTexture(GL_TEXTURE0);
        }
    }
    program->setUniformValue(where.mask, packet.masked ? 1.0f : 0.0f);
    program->setUniformValue(where.opacity, packet.opacity);
    program->setUniformValue(where.matrix, packet.matrix);
    if (glWidget)
        emit glWidget->setCustomShaderUniformValues(program);

    program->enableAttributeArray(where.position);
    program->enableAttributeArray(where.texCoord);
    program->setAttributeArray(where.position, GL_FLOAT, packet.vertices.constData(), 2);
    program->setAttributeArray(where.texCoord, GL_FLOAT, packet.uvs.constData(), 4);
    glDrawArrays(modes[packet.primitive], 0, packet.vertices.size());
    program->disableAttributeArray(where.position);
    program->disableAttributeArray(where.texCoord);
}

void Renderer::glSetBlend(bool enable)
{
    GLRenderWidgetPrivate *gl = glPrivate();
    if (!gl || gl->blend == enable)
        return;
    gl->blend = enable;
    if (enable) {
        glEnable(GL_BLEND);
        return;
    }
    glDisable(GL_BLEND);
    // Whoever turns blending on next sets its equation and factors anew.
    gl->blendEquation = 0;
    gl->blendSource = gl->blendDestination = -1;
}

void Renderer::glSetBlendEquation(BlendEquation equation)
{
    GLRenderWidgetPrivate *gl = glPrivate();
    if (!gl || gl->blendEquation == int(equation))
        return;
    gl->blendEquation = int(equation);
    glBlendEquation(equation == BlendReverseSubtract ? GL_FUNC_REVERSE_SUBTRACT : GL_FUNC_ADD);
}

void Renderer::glSetBlendFunction(BlendFactor source, BlendFactor destination)
{
    GLRenderWidgetPrivate *gl = glPrivate();
    const int count = int(sizeof(blendFactors) / sizeof(blendFactors[0]));
    if (!gl || int(source) < 0 || int(source) >= count || int(destination) < 0 || int(destination) >= count)
        return;
    if (gl->blendSource == int(source) && gl->blendDestination == int(destination))
        return;
    gl->blendSource = int(source);
    gl->blendDestination = int(destination);
    glBlendFunc(blendFactors[source], blendFactors[destination]);
}

} // namespace Ovra
