#pragma once

#include "render/renderwidgetbase.h"

#include <QOpenGLWidget>

#include <memory>

class QOpenGLShaderProgram;

namespace Ovra {

class GLRenderWidgetPrivate;

// Shows a renderer through OpenGL. A renderer can be attached once the widget has its
// context, that is after the signal initialize(); before that setRenderer drops it.
class OVRA_EXPORT GLRenderWidget : public QOpenGLWidget, public RenderWidgetBase
{
    Q_OBJECT

public:
    explicit GLRenderWidget(QWidget *parent = nullptr);
    ~GLRenderWidget() override;

    Renderer *renderer() const override;
    void setRenderer(Renderer *renderer) override;
    void setFocus() override;
    void update() override;

    // Replaces the fragment texts of the palette set and of the image set, and rebuilds
    // both sets; a null text gives back the built-in one. The four effects are still made
    // by the prefixes, so a custom text can honour GRAYSCALE, LIGHTER and DARKER too.
    void setCustomPixelShader(const char *paletteSource, const char *imageSource);

signals:
    // Sent at the end of initializeGL: from then on a renderer can be attached.
    void initialize();
    // Sent for each draw right after the standard uniforms are set, so that a listener can
    // set the uniforms of its custom shader on the program in use.
    void setCustomShaderUniformValues(QOpenGLShaderProgram *program);

protected:
    void initializeGL() override;
    void resizeGL(int width, int height) override;
    void paintGL() override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    friend class Renderer;
    std::unique_ptr<GLRenderWidgetPrivate> d;
};

} // namespace Ovra
