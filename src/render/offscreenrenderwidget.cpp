#include "offscreenrenderwidget.h"

#include "render/glrenderwidget_p.h"
#include "render/qlocalgl_p.h"
#include "render/renderer.h"

#include <QGuiApplication>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions>
#include <QOpenGLPaintDevice>
#include <QPainter>

namespace Ovra {

class OffScreenRenderWidgetPrivate
{
public:
    bool createGL();
    void destroyGL();

    QSize size;
    mutable QImage image;
    Renderer *renderer = nullptr;
    GLRenderWidgetPrivate gl;
    QOpenGLContext *context = nullptr;
    QOffscreenSurface *surface = nullptr;
    QOpenGLPaintDevice *device = nullptr;
    QOpenGLFramebufferObject *fbo = nullptr;
    QObject programOwner;
};

bool OffScreenRenderWidgetPrivate::createGL()
{
    if (!qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        return false;
    QSurfaceFormat format = QSurfaceFormat::defaultFormat();
    format.setSwapBehavior(QSurfaceFormat::SingleBuffer);
    format.setSwapInterval(0);
    format.setVersion(2, 0);
    format.setSamples(0);
    context = new QOpenGLContext;
    context->setFormat(format);
    QOpenGLContext *share = QOpenGLContext::globalShareContext();
    context->setShareContext(share);
    if (share)
        context->setScreen(share->screen());
    if (!QLocalGL::createContext(context))
        return false;
    surface = new QOffscreenSurface;
    surface->setFormat(context->format());
    surface->create();
    if (!surface->isValid() || !context->makeCurrent(surface))
        return false;
    QOpenGLFunctions *f = context->functions();
    gl.gl = f;
    f->glClearColor(1, 1, 1, 1);
    f->glDisable(GL_DEPTH_TEST);
    f->glDisable(GL_STENCIL_TEST);
    if (QOpenGLContext::openGLModuleType() == QOpenGLContext::LibGL)
        f->glHint(GL_PERSPECTIVE_CORRECTION_HINT, GL_NICEST);
    f->glViewport(0, 0, size.width(), size.height());
    device = new QOpenGLPaintDevice(size);
    // The orthographic view of the off-screen widget moves the scene towards the viewer
    // instead of away from it; renderers made for it place their models accordingly.
    gl.setViewSize(size.width(), size.height(), 2000);
    gl.buildPrograms(&programOwner);
    fbo = new QOpenGLFramebufferObject(size, QOpenGLFramebufferObject::CombinedDepthStencil, GL_TEXTURE_2D,
                                       GL_RGB);
    return fbo->isValid();
}

void OffScreenRenderWidgetPrivate::destroyGL()
{
    if (context && surface && surface->isValid())
        context->makeCurrent(surface);
    gl.deletePrograms();
    delete fbo;
    fbo = nullptr;
    delete device;
    device = nullptr;
    if (context)
        context->doneCurrent();
    delete context;
    context = nullptr;
    delete surface;
    surface = nullptr;
    gl.gl = nullptr;
}

OffScreenRenderWidget::OffScreenRenderWidget(bool useOpenGL, QSize size)
    : d(new OffScreenRenderWidgetPrivate)
{
    d->size = size.expandedTo(QSize(1, 1));
    d->image = QImage(d->size, QImage::Format_RGBX8888);
    d->image.fill(Qt::white);
    if (useOpenGL) {
        if (d->createGL())
            m_glState = &d->gl;
        else
            d->destroyGL();
    }
}

OffScreenRenderWidget::~OffScreenRenderWidget()
{
    if (d->renderer)
        d->renderer->attach(nullptr, false);
    d->destroyGL();
}

Renderer *OffScreenRenderWidget::renderer() const
{
    return d->renderer;
}

void OffScreenRenderWidget::setRenderer(Renderer *renderer)
{
    if (d->renderer && d->renderer != renderer)
        d->renderer->attach(nullptr, false);
    d->renderer = renderer;
    d->gl.renderer = renderer;
    if (!renderer)
        return;
    if (d->fbo)
        d->context->makeCurrent(d->surface);
    renderer->attach(this, d->fbo != nullptr);
    renderer->sizeChanged(d->size.width(), d->size.height());
}

void OffScreenRenderWidget::setFocus()
{
}

void OffScreenRenderWidget::update()
{
    const QColor clear = d->renderer ? d->renderer->clearColor() : QColor(Qt::white);
    if (d->fbo) {
        d->context->makeCurrent(d->surface);
        d->fbo->bind();
        d->gl.gl->glClearColor(float(clear.redF()), float(clear.greenF()), float(clear.blueF()), 1.0f);
        d->gl.gl->glClear(GL_COLOR_BUFFER_BIT);
        if (d->renderer) {
            QPainter painter(d->device);
            d->renderer->render(painter);
        }
        return;
    }
    QPainter painter(&d->image);
    painter.fillRect(QRect(QPoint(0, 0), d->size), clear);
    if (d->renderer)
        d->renderer->render(painter);
}

bool OffScreenRenderWidget::isOpenGL() const
{
    return d->fbo != nullptr;
}

QSize OffScreenRenderWidget::size() const
{
    return d->size;
}

QImage OffScreenRenderWidget::output() const
{
    if (!d->fbo)
        return d->image;
    QOpenGLContext *previous = QOpenGLContext::currentContext();
    QSurface *previousSurface = previous ? previous->surface() : nullptr;
    d->context->makeCurrent(d->surface);
    d->fbo->bind();
    // GL rows run from the bottom up; the picture's from the top down.
    d->gl.gl->glPixelStorei(GL_PACK_ALIGNMENT, 4);
    d->gl.gl->glReadPixels(0, 0, d->size.width(), d->size.height(), GL_RGBA, GL_UNSIGNED_BYTE, d->image.bits());
    d->fbo->release();
    if (previous && previous != d->context)
        previous->makeCurrent(previousSurface);
    return d->image.mirrored(false, true);
}

} // namespace Ovra
