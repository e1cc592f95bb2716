#pragma once

#include "render/renderer.h"

namespace Ovra {

// What a graphics workspace asks of any canvas it hosts: the zoom buttons, centring the
// origin and the visibility of the view's parts. The canvas itself decides how it draws.
class OVRA_EXPORT GraphicsRendererBase : public Renderer
{
public:
    GraphicsRendererBase();
    ~GraphicsRendererBase() override;

    virtual float zoomFactor() const = 0;
    virtual void addZoom() = 0;
    virtual void subZoom() = 0;
    virtual void zoomFit() = 0;
    virtual void zoomActual() = 0;
    // Puts the origin in the middle of the view.
    virtual void centralize() = 0;
    virtual void setVisibility(bool mainCross, bool secondaryCross, bool extraCross, bool attackBoxes,
                               bool collisionBoxes, bool rulers, bool guides) = 0;

private:
    Q_DISABLE_COPY(GraphicsRendererBase)
};

} // namespace Ovra
