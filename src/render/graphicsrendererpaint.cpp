// Painting the canvas, back to front: background, guides, onion skin and sprites, crosses,
// contact boxes with their sizers, rulers. Sprites are the engine's and go through GL when
// the canvas is on OpenGL; everything else is drawn with the QPainter on both roads.
#include "graphicsrenderer.h"
#include "graphicsrenderer_p.h"

#include <QPainter>
#include <QtMath>

namespace Ovra {

namespace {

const int rulerWidth = 30;

} // namespace

QVector<QRect> GraphicsRendererPrivate::handleRects(const QRect &selection)
{
    const int half = 3;
    const int left = selection.left();
    const int top = selection.top();
    const int right = selection.x() + selection.width();
    const int bottom = selection.y() + selection.height();
    const int middleX = (left + right) / 2;
    const int middleY = (top + bottom) / 2;
    const QPoint centres[8] = {{left, top},    {middleX, top},    {left, middleY},  {right, top},
                               {left, bottom}, {middleX, bottom}, {right, bottom}, {right, middleY}};
    QVector<QRect> handles;
    for (const QPoint &centre : centres)
        handles << QRect(centre.x() - half, centre.y() - half, 2 * half + 1, 2 * half + 1);
    return handles;
}

void GraphicsRenderer::render(QPainter &painter)
{
    d->renderBackground(painter, true);
    if (spriteOverGuides())
        d->renderGuides(painter);
    glBeginDrawImage(painter);
    d->renderOnionSkin(painter);
    d->renderSprites(painter);
    glEndDrawImage(painter);
    if (contactOverCross())
        d->renderCross(painter);
    const GraphicsViewState &state = GraphicsViewState::instance();
    d->renderContactBoxes(painter, ContactBoxCode::Attack, state.attackColor, state.attackColor);
    d->renderContactBoxes(painter, ContactBoxCode::Collision, state.collisionColor, state.collisionColor);
    d->renderContactBoxSizers(painter);
    if (!contactOverCross())
        d->renderCross(painter);
    if (!spriteOverGuides())
        d->renderGuides(painter);
    d->renderRulers(painter);
}

void GraphicsRendererPrivate::renderBackground(QPainter &painter, bool withPicture)
{
    GraphicsViewState &state = GraphicsViewState::instance();
    painter.fillRect(QRect(QPoint(0, 0), viewSize), state.gradientFor(viewSize.height()));
    if (!withPicture || state.background.isNull())
        return;
    const QRect place(int(state.origin.x() + state.backgroundOffset.x() * scale.x()),
                      int(state.origin.y() + state.backgroundOffset.y() * scale.y()),
                      int(state.background.width() * scale.x()), int(state.background.height() * scale.y()));
    painter.drawPixmap(place, state.background);
}

void GraphicsRendererPrivate::renderGuides(QPainter &painter)
{
    if (!guidesVisible)
        return;
    // Lines of the pen's width centred on the guide, filled as rectangles: the GL paint
    // engine rasterises aliased lines a pixel off the raster one, and the guides must
    // stand on the same pixel on both roads.
    const QColor cyan(0, 255, 255, 255);
    const int n = penWidth();
    const QPoint at = guideScreenPosition();
    painter.fillRect(QRect(at.x() - n / 2, 0, n, viewSize.height()), cyan);
    painter.fillRect(QRect(0, at.y() - n / 2, viewSize.width(), n), cyan);
}

void GraphicsRendererPrivate::renderOnionSkin(QPainter &painter)
{
    if (!onionEnabled || !onionSprite)
        return;
    const QRect rect = onionScreenRect();
    if (q->isOpenGL())
        q->glRenderOnionSprite(onionSprite, rect);
    else
        q->renderOnionSprite(painter, onionSprite, rect);
}

void GraphicsRendererPrivate::renderSprites(QPainter &painter)
{
    if (!updateSprites())
        return;
    const bool openGL = q->isOpenGL();
    for (uint i = 0; i < sprites->count(); ++i) {
        if (!sprites->item(i).visible)
            continue;
        if (openGL)
            q->glRenderSprite(i);
        else
            q->renderSprite(painter, i);
    }
}

// Cross pictures grow by whole multiples only, without smoothing, so that they stay sharp.
void GraphicsRendererPrivate::renderCross(QPainter &painter)
{
    const bool smooth = painter.testRenderHint(QPainter::SmoothPixmapTransform);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    for (int i = 0; i < 3; ++i) {
        const QPixmap &picture = GraphicsViewState::instance().crosses[i];
        if (crosses[i].visible && !picture.isNull())
            painter.drawPixmap(crossScreenRect(i), picture);
    }
    painter.setRenderHint(QPainter::SmoothPixmapTransform, smooth);
}

void GraphicsRendererPrivate::renderContactBoxes(QPainter &painter, int type, const QColor &lineColor,
                                                 const QColor &fillColor)
{
    const BoxGroup &group = boxes[type];
    if (!group.visible)
        return;
    const int n = penWidth();
    const float opacity = GraphicsViewState::instance().boxOpacity;
    for (const GraphicsRenderer::BoxItem &box : group.items) {
        const QRect r = boxScreenRect(box);
        if (box.selected) {
            painter.fillRect(r, QBrush(lineColor, type == ContactBoxCode::Attack ? Qt::FDiagPattern
                                                                                  : Qt::BDiagPattern));
        }
        painter.setOpacity(opacity / 2.0);
        painter.fillRect(r.adjusted(n, n, -n, -n), fillColor);
        painter.setOpacity(1.0);
        painter.fillRect(QRect(r.x(), r.y(), r.width(), n), lineColor);
        painter.fillRect(QRect(r.x(), r.y() + r.height() - n, r.width(), n), lineColor);
        painter.fillRect(QRect(r.x(), r.y(), n, r.height()), lineColor);
        painter.fillRect(QRect(r.x() + r.width() - n, r.y(), n, r.height()), lineColor);
    }
}

void GraphicsRendererPrivate::renderContactBoxSizers(QPainter &painter)
{
    if (clickMode == GraphicsRenderer::DrawContactBoxMode || !boxesSelected)
        return;
    // A grey outline of one pixel round a white face, filled rather than stroked so that
    // both roads put it on the same pixels.
    for (const QRect &handle : handleRects(selectionScreenRect())) {
        painter.fillRect(handle, Qt::gray);
        painter.fillRect(handle.adjusted(1, 1, -1, -1), Qt::white);
    }
}

void GraphicsRendererPrivate::renderRulers(QPainter &painter)
{
    if (!rulersVisible)
        return;
    GraphicsViewState &state = GraphicsViewState::instance();
    const QBrush &gradient = state.gradientFor(viewSize.height());
    painter.fillRect(QRect(0, 0, rulerWidth, viewSize.height()), gradient);
    painter.fillRect(QRect(0, 0, viewSize.width(), rulerWidth), gradient);
    // The band the ticks stand on, a shade off the gradient's top so that it reads as a scale.
    const QColor band = state.start.darker(125);
    painter.fillRect(QRect(10, 10, 10, viewSize.height()), band);
    painter.fillRect(QRect(20, 10, viewSize.width() - 10, 10), band);
    const QColor ink(255 - state.start.red(), 255 - state.start.green(), 255 - state.start.blue());
    painter.setPen(QPen(ink, 1));
    QFont font = painter.font();
    font.setPixelSize(8);
    painter.setFont(font);
    renderRulerTicks(painter, Qt::Horizontal);
    renderRulerTicks(painter, Qt::Vertical);
}

// A tick every 10 pixels or so, in whole world units; every fifth is long and labelled.
void GraphicsRendererPrivate::renderRulerTicks(QPainter &painter, Qt::Orientation orientation)
{
    const bool horizontal = orientation == Qt::Horizontal;
    const double s = horizontal ? scale.x() : scale.y();
    if (s <= 0)
        return; // level 16 of the coarse row: no scale to measure with
    const int step = qMax(1, int(10.0 / s));
    const int pixels = qMax(1, int(step * s));
    const int origin = horizontal ? GraphicsViewState::instance().origin.x() : GraphicsViewState::instance().origin.y();
    const int end = horizontal ? viewSize.width() : viewSize.height();
    int first = (origin - rulerWidth) % pixels;
    if (first < 0)
        first += pixels;
    for (int at = first + rulerWidth; at < end; at += pixels) {
        const int tick = (at - origin) / pixels;
        const bool major = tick % 5 == 0;
        const int from = major ? 12 : 22;
        if (horizontal)
            painter.drawLine(at, from, at, rulerWidth - 1);
        else
            painter.drawLine(from, at, rulerWidth - 1, at);
        if (!major)
            continue;
        const QString text = QString::number(tick * step);
        const int half = 5 * pixels;
        if (horizontal) {
            painter.drawText(QRect(at - half, 0, 2 * half, 11), Qt::AlignCenter, text);
        } else {
            painter.save();
            painter.translate(0, at);
            painter.rotate(-90);
            painter.drawText(QRect(-half, 0, 2 * half, 11), Qt::AlignCenter, text);
            painter.restore();
        }
    }
}

} // namespace Ovra
