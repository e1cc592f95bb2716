#include "renderview.h"

#include "foundation/interface.h"
#include "render/glrenderwidget.h"
#include "render/renderer.h"
#include "render/renderwidget.h"

#include <QVBoxLayout>

namespace Ovra {

namespace {

bool nativePaintingOption()
{
    Interface *host = Interface::instance();
    return host && host->option(QStringLiteral("native_painting"), QVariant()).toBool();
}

RenderWidgetBase *baseOf(QWidget *widget)
{
    return dynamic_cast<RenderWidgetBase *>(widget);
}

} // namespace

RenderView::RenderView(QWidget *parent)
    : QWidget(parent)
{
}

RenderView::~RenderView()
{
    if (RenderWidgetBase *base = baseOf(m_widget))
        base->setRenderer(nullptr);
}

void RenderView::setBars(const QList<QWidget *> &bars)
{
    m_bars.clear();
    for (QWidget *bar : bars)
        m_bars << bar;
    if (m_widget)
        rebuild(m_native);
}

void RenderView::setRenderer(Renderer *renderer)
{
    m_renderer = renderer;
    RenderWidgetBase *base = baseOf(m_widget);
    if (!base)
        return;
    base->setRenderer(renderer);
    if (renderer && base->renderer() == renderer)
        emit rendererAttached();
}

Renderer *RenderView::renderer() const
{
    return m_renderer;
}

RenderWidgetBase *RenderView::renderWidget() const
{
    return baseOf(m_widget);
}

bool RenderView::isNative() const
{
    return m_widget && m_native;
}

void RenderView::selectBackEnd()
{
    const bool native = nativePaintingOption();
    if (m_widget && native == m_native)
        return;
    rebuild(native);
}

void RenderView::rebuild(bool native)
{
    if (RenderWidgetBase *base = baseOf(m_widget))
        base->setRenderer(nullptr);
    delete m_widget;
    m_widget = nullptr;
    delete layout();
    m_native = native;

    auto *box = new QVBoxLayout(this);
    box->setContentsMargins(0, 0, 0, 0);
    box->setSpacing(0);
    for (const QPointer<QWidget> &bar : qAsConst(m_bars)) {
        if (bar)
            box->addWidget(bar);
    }
    if (native) {
        auto *widget = new RenderWidget(this);
        m_widget = widget;
        box->addWidget(widget, 1);
        setRenderer(m_renderer);
    } else {
        auto *widget = new GLRenderWidget(this);
        m_widget = widget;
        box->addWidget(widget, 1);
        connect(widget, &GLRenderWidget::initialize, this, &RenderView::attachToGL);
    }
    emit backEndChanged();
}

void RenderView::attachToGL()
{
    if (sender() == m_widget)
        setRenderer(m_renderer);
}

} // namespace Ovra
