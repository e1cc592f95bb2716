#pragma once

// A renderer shown as a user sees it: on an OpenGL widget (once its context has started, as
// the widget wants) or on the raster one, at a size, exposed on the screen.
#include "render/glrenderwidget.h"
#include "render/renderwidget.h"

#include <QSignalSpy>
#include <QTest>

#include <memory>

// Null when the window never came up or OpenGL never started on it.
inline std::unique_ptr<QWidget> showRenderer(Ovra::Renderer *renderer, bool openGL, const QSize &size)
{
    if (openGL) {
        auto gl = std::make_unique<Ovra::GLRenderWidget>();
        gl->resize(size);
        QSignalSpy initialized(gl.get(), &Ovra::GLRenderWidget::initialize);
        gl->show();
        if (!QTest::qWaitForWindowExposed(gl.get()) || (initialized.isEmpty() && !initialized.wait(5000)))
            return nullptr;
        gl->setRenderer(renderer);
        return gl;
    }
    auto raster = std::make_unique<Ovra::RenderWidget>();
    raster->resize(size);
    raster->setRenderer(renderer);
    raster->show();
    if (!QTest::qWaitForWindowExposed(raster.get()))
        return nullptr;
    return raster;
}
