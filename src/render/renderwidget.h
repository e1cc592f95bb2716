#pragma once

#include "render/renderwidgetbase.h"

#include <QWidget>

namespace Ovra {

// Shows a renderer through a plain QPainter: the raster road, for machines without a usable
// OpenGL or for users who ask for native painting. Clearing is up to the renderer here.
class OVRA_EXPORT RenderWidget : public QWidget, public RenderWidgetBase
{
    Q_OBJECT

public:
    explicit RenderWidget(QWidget *parent = nullptr);
    ~RenderWidget() override;

    Renderer *renderer() const override;
    void setRenderer(Renderer *renderer) override;
    void setFocus() override;
    void update() override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    Renderer *m_renderer = nullptr;
};

} // namespace Ovra
