// Zoom: the two rows of factors, the wheel, the rescale about a fixed point and the fit.
#include "graphicsrenderer.h"
#include "graphicsrenderer_p.h"

#include <QtMath>

namespace Ovra {

namespace {

// Row 0 in fine steps, row 1 in whole factors. A level of 16 is one past a row: it reads
// the first value of row 1, or for row 1 the 0.0 behind the table. The level limit has
// always been 16, and the views keep it.
const float zoomTable[33] = {0.25f, 0.5f, 0.75f, 1.0f, 1.5f, 2.0f, 2.25f, 2.5f, 2.75f, 3.0f, 3.5f,
                             4.0f,  4.5f, 5.0f,  5.5f, 6.0f, //
                             0.25f, 0.5f, 1.0f,  2.0f, 3.0f, 4.0f, 5.0f, 6.0f, 7.0f, 8.0f, 9.0f,
                             10.0f, 11.0f, 12.0f, 13.0f, 14.0f, //
                             0.0f};

// The wheel stops at level 9; the buttons go further.
const int wheelLimit = 9;
const int rulerWidth = 30;

float tableValue(unsigned char level)
{
    return zoomTable[GraphicsViewState::instance().zoomTable * 16 + level];
}

bool scaleChanged(const QPointF &a, const QPointF &b)
{
    return qAbs(a.x() - b.x()) > 1e-12 || qAbs(a.y() - b.y()) > 1e-12;
}

// The offset of a point from the fixed point, carried from the old scale to the new one.
// An axis whose old scale was 0 (level 16 of the coarse row) has lost its offsets: the
// point stays where it is rather than going to infinity.
double rescaled(double value, double fixed, double previous, double scale)
{
    if (previous == 0.0)
        return value;
    return fixed + (value - fixed) / previous * scale;
}

} // namespace

void GraphicsRendererPrivate::applyLevel(unsigned char level)
{
    zoomLevel = level;
    zoomFactor = tableValue(level);
    scale = QPointF(zoomScale.x() * zoomFactor, zoomScale.y() * zoomFactor);
}

void GraphicsRendererPrivate::rescale()
{
    GraphicsViewState &state = GraphicsViewState::instance();
    const QPointF fixed = state.zoomMode == GraphicsRenderer::ZoomAroundCenter ? QPointF(viewCenter)
                                                                                : QPointF(state.origin);
    QPoint &origin = state.origin;
    if (previousScale.x() != 0.0)
        origin.setX(int(fixed.x()) + int(int((origin.x() - fixed.x()) / previousScale.x()) * scale.x()));
    if (previousScale.y() != 0.0)
        origin.setY(int(fixed.y()) + int(int((origin.y() - fixed.y()) / previousScale.y()) * scale.y()));

    auto move = [&](QPointF &p) {
        p = QPointF(rescaled(p.x(), fixed.x(), previousScale.x(), scale.x()),
                    rescaled(p.y(), fixed.y(), previousScale.y(), scale.y()));
    };
    for (GraphicsRenderer::Item &cross : crosses) {
        if ((cross.flags & GraphicsRenderer::AnchorMask) == GraphicsRenderer::AnchorView)
            move(cross.position);
    }
    for (uint i = 0; sprites && i < sprites->count(); ++i) {
        GraphicsRenderer::SpriteProvider::Info &info = sprites->item(i);
        if ((info.flags & GraphicsRenderer::AnchorMask) == GraphicsRenderer::AnchorView)
            move(info.position);
    }
    if ((boxFlags & GraphicsRenderer::AnchorMask) == GraphicsRenderer::AnchorView) {
        for (BoxGroup &group : boxes) {
            for (GraphicsRenderer::BoxItem &box : group.items)
                move(box.position);
        }
    }
}

void GraphicsRenderer::setZoomLevel(unsigned char level)
{
    if (level == 255) // subZoom at level 0
        level = 0;
    else if (level > 16)
        level = 16;
    d->applyLevel(level);
    if (!scaleChanged(d->scale, d->previousScale))
        return;
    d->rescale();
    d->previousScale = d->scale;
    update();
}

unsigned char GraphicsRenderer::zoomLevel() const
{
    return d->zoomLevel;
}

float GraphicsRenderer::zoomFactor() const
{
    return d->zoomFactor;
}

QPointF GraphicsRenderer::scale() const
{
    return d->scale;
}

void GraphicsRenderer::addZoom()
{
    setZoomLevel(static_cast<unsigned char>(d->zoomLevel + 1));
}

void GraphicsRenderer::subZoom()
{
    setZoomLevel(static_cast<unsigned char>(d->zoomLevel - 1));
}

void GraphicsRenderer::zoomActual()
{
    setZoomLevel(GraphicsViewState::instance().zoomTable == 0 ? 3 : 2);
}

void GraphicsRenderer::setZoomMode(ZoomMode mode)
{
    GraphicsViewState::instance().zoomMode = int(mode) <= 0 ? ZoomAroundOrigin : ZoomAroundCenter;
}

GraphicsRenderer::ZoomMode GraphicsRenderer::zoomMode()
{
    return GraphicsViewState::instance().zoomMode;
}

void GraphicsRenderer::setZoomTable(unsigned char table)
{
    GraphicsViewState::instance().zoomTable = table == 0 ? 0 : 1;
}

unsigned char GraphicsRenderer::zoomTable()
{
    return GraphicsViewState::instance().zoomTable;
}

void GraphicsRenderer::setZoomScale(QPointF zoomScale)
{
    if (!scaleChanged(d->zoomScale, zoomScale))
        return;
    d->zoomScale = zoomScale;
    setZoomLevel(d->zoomLevel);
}

QPointF GraphicsRenderer::zoomScale() const
{
    return d->zoomScale;
}

void GraphicsRenderer::mouseWheel(int delta)
{
    const int level = d->zoomLevel + delta / 120;
    setZoomLevel(static_cast<unsigned char>(qBound(0, level, wheelLimit)));
}

void GraphicsRenderer::zoomFit()
{
    // Everything that can be seen, in view pixels, starting from a box that any union replaces.
    double left = 7777777, top = 7777777, right = -7777777, bottom = -7777777;
    auto join = [&](const QRectF &r) {
        left = qMin(left, r.left());
        top = qMin(top, r.top());
        right = qMax(right, r.right());
        bottom = qMax(bottom, r.bottom());
    };
    if (d->onionEnabled && d->onionSprite)
        join(QRectF(d->onionScreenRect()));
    if (d->updateSprites()) {
        for (uint i = 0; i < d->sprites->count(); ++i) {
            if (d->sprites->item(i).visible)
                join(d->spriteRects.at(int(i)));
        }
    }
    for (const BoxGroup &group : d->boxes) {
        for (const BoxItem &box : group.items) {
            if (group.visible)
                join(QRectF(d->boxScreenRect(box)));
        }
    }
    // Nothing to fit: the inverted box stands, and so do the level and the view.
    if (right < left || bottom < top)
        return;

    const double targetWidth = d->viewSize.width() - rulerWidth;
    const double targetHeight = d->viewSize.height() - rulerWidth;
    const double width = right - left;
    const double height = bottom - top;
    double ratio = 0;
    if (targetHeight - height >= targetWidth - width)
        ratio = width > 0 ? targetWidth / width : (height > 0 ? targetHeight / height : 0);
    else
        ratio = height > 0 ? targetHeight / height : (width > 0 ? targetWidth / width : 0);
    const double wanted = d->zoomFactor * ratio * d->zoomScale.x();

    int level = -1;
    double nearest = 0;
    for (int i = 0; i < 16; ++i) {
        const double below = wanted - tableValue(static_cast<unsigned char>(i));
        if (below > 0 && (level < 0 || below < nearest)) {
            level = i;
            nearest = below;
        }
    }

    GraphicsViewState &state = GraphicsViewState::instance();
    const ZoomMode mode = state.zoomMode;
    state.zoomMode = ZoomAroundCenter;
    state.origin.rx() -= int(left + (-rulerWidth - (targetWidth - width) / 2));
    state.origin.ry() -= int(top + (-rulerWidth - (targetHeight - height) / 2));
    d->applyLevel(level < 0 ? d->zoomLevel : static_cast<unsigned char>(level));
    if (scaleChanged(d->scale, d->previousScale)) {
        d->rescale();
        d->previousScale = d->scale;
    }
    state.zoomMode = mode;
    update();
}

} // namespace Ovra
