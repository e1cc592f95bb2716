#include "glrenderwidget.h"

#include "render/glrenderwidget_p.h"
#include "render/renderer.h"
#include "render/renderinput_p.h"

#include <QFile>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QOpenGLShaderProgram>
#include <QPainter>

namespace Ovra {

namespace {

QByteArray shaderText(const char *name)
{
    QFile file(QStringLiteral(":/ovra_shaders/shaders/") + QLatin1String(name));
    if (!file.open(QIODevice::ReadOnly))
        return QByteArray();
    return file.readAll();
}

const QByteArray &vertexText()
{
    static const QByteArray text = shaderText("vertex.glsl");
    return text;
}

const QByteArray &builtInFragmentText(int set)
{
    static const QByteArray palette = shaderText("palette.glsl");
    static const QByteArray image = shaderText("image.glsl");
    return set == GLRenderWidgetPrivate::PaletteSet ? palette : image;
}

} // namespace

GLRenderWidgetPrivate::~GLRenderWidgetPrivate()
{
    deletePrograms();
}

void GLRenderWidgetPrivate::deletePrograms()
{
    for (auto &set : programs) {
        for (QOpenGLShaderProgram *&program : set) {
            delete program;
            program = nullptr;
        }
    }
    currentProgram = nullptr;
}

void GLRenderWidgetPrivate::buildPrograms(QObject *parent)
{
    static const char *const prefixes[EffectCount] = {"", "#define GRAYSCALE\n", "#define LIGHTER\n",
                                                     "#define DARKER\n"};
    // GLES wants a default float precision in every fragment text; desktop GL ignores it
    // but older drivers reject the line, so it goes in only there.
    const bool gles = QOpenGLContext::openGLModuleType() == QOpenGLContext::LibGLES;
    deletePrograms();
    for (int set = PaletteSet; set <= ImageSet; ++set) {
        const QByteArray &custom = set == PaletteSet ? customPaletteSource : customImageSource;
        const QByteArray &text = custom.isEmpty() ? builtInFragmentText(set) : custom;
        for (int effect = 0; effect < EffectCount; ++effect) {
            QByteArray source = QByteArray(prefixes[effect]) + text;
            if (gles)
                source.prepend("precision mediump float;\n");
            auto *program = new QOpenGLShaderProgram(parent);
            program->addShaderFromSourceCode(QOpenGLShader::Vertex, vertexText());
            program->addShaderFromSourceCode(QOpenGLShader::Fragment, source);
            program->link();
            programs[set][effect] = program;
        }
        QOpenGLShaderProgram *last = programs[set][EffectCount - 1];
        Locations &where = locations[set];
        where.matrix = last->uniformLocation("matrix");
        where.opacity = last->uniformLocation("opacity");
        where.mask = last->uniformLocation("mask");
        where.image = last->uniformLocation("image");
        where.palette = last->uniformLocation("palette");
        where.position = last->attributeLocation("position");
        where.texCoord = last->attributeLocation("texCoord");
    }
}

void GLRenderWidgetPrivate::setViewSize(int width, int height, float depthShift)
{
    QMatrix4x4 orthographic;
    orthographic.ortho(0, width, height, 0, 1000, 10000);
    orthographic.translate(0, 0, depthShift);
    matrices[Renderer::Orthographic] = orthographic;

    QMatrix4x4 perspective;
    perspective.frustum(-width * 0.25f, width * 0.25f, height * 0.25f, -height * 0.25f, 1000, 10000);
    perspective.translate(-width * 0.5f, -height * 0.5f, -2000);
    matrices[Renderer::Perspective] = perspective;
}

void GLRenderWidgetPrivate::resetDrawState()
{
    currentPalette = nullptr;
    currentProgram = nullptr;
}

GLRenderWidget::GLRenderWidget(QWidget *parent)
    : QOpenGLWidget(parent), d(new GLRenderWidgetPrivate)
{
    m_glState = d.get();
    setAutoFillBackground(false);
    setAttribute(Qt::WA_MouseTracking);
    setFocusPolicy(Qt::StrongFocus);
}

GLRenderWidget::~GLRenderWidget()
{
    if (d->renderer)
        d->renderer->attach(nullptr, false);
    // The programs hold GL objects of this widget's context.
    if (context()) {
        makeCurrent();
        d->deletePrograms();
        doneCurrent();
    }
}

Renderer *GLRenderWidget::renderer() const
{
    return d->renderer;
}

void GLRenderWidget::setRenderer(Renderer *renderer)
{
    if (d->renderer && d->renderer != renderer)
        d->renderer->attach(nullptr, false);
    d->renderer = nullptr;
    if (!renderer || !context())
        return;
    makeCurrent();
    d->renderer = renderer;
    d->gl = context()->functions();
    renderer->attach(this, true);
    renderer->sizeChanged(width(), height());
}

void GLRenderWidget::setFocus()
{
    QOpenGLWidget::setFocus();
}

void GLRenderWidget::update()
{
    QOpenGLWidget::update();
}

void GLRenderWidget::setCustomPixelShader(const char *paletteSource, const char *imageSource)
{
    d->customPaletteSource = paletteSource ? QByteArray(paletteSource) : QByteArray();
    d->customImageSource = imageSource ? QByteArray(imageSource) : QByteArray();
    if (!context())
        return; // initializeGL builds them with the new texts
    makeCurrent();
    d->buildPrograms(this);
    QOpenGLWidget::update();
}

void GLRenderWidget::initializeGL()
{
    QOpenGLFunctions *gl = context()->functions();
    d->gl = gl;
    gl->glClearColor(1, 1, 1, 1);
    gl->glDisable(GL_DEPTH_TEST);
    gl->glDisable(GL_STENCIL_TEST);
    if (QOpenGLContext::openGLModuleType() == QOpenGLContext::LibGL)
        gl->glHint(GL_PERSPECTIVE_CORRECTION_HINT, GL_NICEST);
    d->buildPrograms(this);
    emit initialize();
}

void GLRenderWidget::resizeGL(int width, int height)
{
    d->setViewSize(width, height, -2000);
    if (d->renderer)
        d->renderer->sizeChanged(width, height);
}

void GLRenderWidget::paintGL()
{
    if (d->gl && d->renderer) {
        const QColor color = d->renderer->clearColor();
        d->gl->glClearColor(float(color.redF()), float(color.greenF()), float(color.blueF()), 1.0f);
        d->gl->glClear(GL_COLOR_BUFFER_BIT);
    }
    QPainter painter(this);
    if (d->renderer)
        d->renderer->render(painter);
}

void GLRenderWidget::keyPressEvent(QKeyEvent *event)
{
    QOpenGLWidget::keyPressEvent(event);
    RenderInput::keyPressed(d->renderer, event);
}

void GLRenderWidget::keyReleaseEvent(QKeyEvent *event)
{
    QOpenGLWidget::keyReleaseEvent(event);
    RenderInput::keyReleased(d->renderer, event);
}

void GLRenderWidget::mousePressEvent(QMouseEvent *event)
{
    QOpenGLWidget::mousePressEvent(event);
    RenderInput::mousePressed(d->renderer, event);
}

void GLRenderWidget::mouseReleaseEvent(QMouseEvent *event)
{
    QOpenGLWidget::mouseReleaseEvent(event);
    RenderInput::mouseReleased(d->renderer, event);
}

void GLRenderWidget::mouseMoveEvent(QMouseEvent *event)
{
    QOpenGLWidget::mouseMoveEvent(event);
    RenderInput::mouseMoved(d->renderer, event);
}

void GLRenderWidget::wheelEvent(QWheelEvent *event)
{
    QOpenGLWidget::wheelEvent(event);
    RenderInput::wheel(d->renderer, event);
}

} // namespace Ovra
