#include "renderwidgetbase.h"

#include "render/renderer.h"
#include "render/renderinput_p.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>

namespace Ovra {

RenderWidgetBase::RenderWidgetBase() = default;

RenderWidgetBase::~RenderWidgetBase() = default;

namespace RenderInput {

void keyPressed(Renderer *renderer, QKeyEvent *event)
{
    if (renderer)
        renderer->keyPressed(event->key(), event->modifiers());
}

void keyReleased(Renderer *renderer, QKeyEvent *event)
{
    if (!renderer)
        return;
    if (!event->isAutoRepeat())
        renderer->keyReleased(event->key(), event->modifiers());
    if (!event->text().isEmpty())
        renderer->keyString(event->text(), event->key());
}

void mousePressed(Renderer *renderer, QMouseEvent *event)
{
    if (renderer)
        renderer->mousePressed(event->pos(), event->button(), event->modifiers());
}

void mouseReleased(Renderer *renderer, QMouseEvent *event)
{
    if (renderer)
        renderer->mouseReleased(event->pos(), event->button(), event->modifiers());
}

void mouseMoved(Renderer *renderer, QMouseEvent *event)
{
    if (renderer)
        renderer->mouseMoved(event->pos(), event->modifiers());
}

void wheel(Renderer *renderer, QWheelEvent *event)
{
    if (renderer)
        renderer->mouseWheel(event->angleDelta().y());
}

} // namespace RenderInput

} // namespace Ovra
