#include "renderwidget.h"

#include "render/renderer.h"
#include "render/renderinput_p.h"

#include <QPainter>
#include <QResizeEvent>

namespace Ovra {

RenderWidget::RenderWidget(QWidget *parent)
    : QWidget(parent)
{
    setAutoFillBackground(false);
    setAttribute(Qt::WA_MouseTracking);
    setFocusPolicy(Qt::StrongFocus);
}

RenderWidget::~RenderWidget()
{
    if (m_renderer)
        m_renderer->attach(nullptr, false);
}

Renderer *RenderWidget::renderer() const
{
    return m_renderer;
}

void RenderWidget::setRenderer(Renderer *renderer)
{
    if (m_renderer && m_renderer != renderer)
        m_renderer->attach(nullptr, false);
    m_renderer = renderer;
    if (!renderer)
        return;
    renderer->attach(this, false);
    renderer->sizeChanged(width(), height());
}

void RenderWidget::setFocus()
{
    QWidget::setFocus();
}

void RenderWidget::update()
{
    QWidget::update();
}

void RenderWidget::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    if (m_renderer)
        m_renderer->render(painter);
}

void RenderWidget::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    if (m_renderer)
        m_renderer->sizeChanged(event->size().width(), event->size().height());
}

void RenderWidget::keyPressEvent(QKeyEvent *event)
{
    QWidget::keyPressEvent(event);
    RenderInput::keyPressed(m_renderer, event);
}

void RenderWidget::keyReleaseEvent(QKeyEvent *event)
{
    QWidget::keyReleaseEvent(event);
    RenderInput::keyReleased(m_renderer, event);
}

void RenderWidget::mousePressEvent(QMouseEvent *event)
{
    QWidget::mousePressEvent(event);
    RenderInput::mousePressed(m_renderer, event);
}

void RenderWidget::mouseReleaseEvent(QMouseEvent *event)
{
    QWidget::mouseReleaseEvent(event);
    RenderInput::mouseReleased(m_renderer, event);
}

void RenderWidget::mouseMoveEvent(QMouseEvent *event)
{
    QWidget::mouseMoveEvent(event);
    RenderInput::mouseMoved(m_renderer, event);
}

void RenderWidget::wheelEvent(QWheelEvent *event)
{
    QWidget::wheelEvent(event);
    RenderInput::wheel(m_renderer, event);
}

} // namespace Ovra
