#pragma once

#include "render/renderwidgetbase.h"

#include <QImage>
#include <QSize>

#include <memory>

namespace Ovra {

class OffScreenRenderWidgetPrivate;

// Draws a renderer into a picture instead of onto the screen: through OpenGL into a
// framebuffer object, or through a QPainter on an image. update() draws; output() gives the
// picture. When no GL context can be made, the widget takes the image road even if OpenGL
// was asked for (isOpenGL() tells which).
class OVRA_EXPORT OffScreenRenderWidget : public RenderWidgetBase
{
public:
    explicit OffScreenRenderWidget(bool useOpenGL, QSize size = QSize(640, 480));
    ~OffScreenRenderWidget() override;

    Renderer *renderer() const override;
    void setRenderer(Renderer *renderer) override;
    void setFocus() override;
    void update() override;

    bool isOpenGL() const;
    QSize size() const;
    // The picture, Format_RGBX8888; with OpenGL read back from the framebuffer now.
    QImage output() const;

private:
    std::unique_ptr<OffScreenRenderWidgetPrivate> d;
};

} // namespace Ovra
