#pragma once

#include "foundation/global.h"

namespace Ovra {

class GLRenderWidgetPrivate;
class Renderer;

// What every render widget offers to its renderer, whether it draws through OpenGL, through
// a plain QPainter or into an image.
class OVRA_EXPORT RenderWidgetBase
{
public:
    RenderWidgetBase();
    virtual ~RenderWidgetBase();

    virtual Renderer *renderer() const = 0;
    virtual void setRenderer(Renderer *renderer) = 0;
    virtual void setFocus() = 0;
    virtual void update() = 0;

    // The GL state the renderer's helpers draw with; null on the raster road.
    GLRenderWidgetPrivate *glState() const { return m_glState; }

protected:
    GLRenderWidgetPrivate *m_glState = nullptr;

private:
    Q_DISABLE_COPY(RenderWidgetBase)
};

} // namespace Ovra
