#pragma once

#include "foundation/global.h"

#include <QList>
#include <QPointer>
#include <QWidget>

class QVBoxLayout;

namespace Ovra {

class Renderer;
class RenderWidgetBase;

// The view of a graphic workspace: its bars above one render widget, which is a raster
// RenderWidget when the option "native_painting" is on and a GLRenderWidget otherwise.
// selectBackEnd() rebuilds the view when the option changed; the renderer follows.
class OVRA_EXPORT RenderView : public QWidget
{
    Q_OBJECT

public:
    explicit RenderView(QWidget *parent = nullptr);
    ~RenderView() override;

    // Bars shown above the render widget, in order; the view takes them over.
    void setBars(const QList<QWidget *> &bars);
    void setRenderer(Renderer *renderer);
    Renderer *renderer() const;
    RenderWidgetBase *renderWidget() const;
    bool isNative() const;

    // Reads "native_painting" and puts the wanted kind of widget in place. Nothing happens
    // when the present one already is of that kind.
    void selectBackEnd();

signals:
    // A new render widget is in place; with OpenGL it carries the renderer only once its
    // context is made.
    void backEndChanged();
    void rendererAttached();

private:
    void rebuild(bool native);
    void attachToGL();

    Renderer *m_renderer = nullptr;
    QWidget *m_widget = nullptr;
    QList<QPointer<QWidget>> m_bars;
    bool m_native = false;
};

} // namespace Ovra
