#pragma once

class QKeyEvent;
class QMouseEvent;
class QWheelEvent;

namespace Ovra {

class Renderer;

// The input every render widget hands on to its renderer, after its own base class has
// had the event. A null renderer gets nothing.
namespace RenderInput {
void keyPressed(Renderer *renderer, QKeyEvent *event);
// Gives keyReleased unless the release is an auto-repeat; then keyString whenever the event
// carries text.
void keyReleased(Renderer *renderer, QKeyEvent *event);
void mousePressed(Renderer *renderer, QMouseEvent *event);
void mouseReleased(Renderer *renderer, QMouseEvent *event);
void mouseMoved(Renderer *renderer, QMouseEvent *event);
void wheel(Renderer *renderer, QWheelEvent *event);
} // namespace RenderInput

} // namespace Ovra
