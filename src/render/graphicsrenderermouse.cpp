// Input on the canvas: the hit test, the cursor, dragging in the three click modes, and
// the keys that act on selected contact boxes.
#include "graphicsrenderer.h"
#include "graphicsrenderer_p.h"

#include <QWidget>
#include <QtMath>

namespace Ovra {

namespace {

const int rulerWidth = 30;

Qt::CursorShape cursorFor(int hit, bool pressed, GraphicsRenderer::ClickMode mode)
{
    switch (hit) {
    case GraphicsRenderer::HitNothing:
        if (mode == GraphicsRenderer::DrawContactBoxMode)
            return Qt::CrossCursor;
        return pressed ? Qt::ClosedHandCursor : Qt::OpenHandCursor;
    case GraphicsRenderer::HitSprite:
        return mode == GraphicsRenderer::CaptureMode ? Qt::CrossCursor : Qt::SizeAllCursor;
    case GraphicsRenderer::HitHorizontalGuide:
    case GraphicsRenderer::HitTopMiddle:
    case GraphicsRenderer::HitBottomMiddle:
        return Qt::SizeVerCursor;
    case GraphicsRenderer::HitVerticalGuide:
    case GraphicsRenderer::HitMiddleLeft:
    case GraphicsRenderer::HitMiddleRight:
        return Qt::SizeHorCursor;
    case GraphicsRenderer::HitTopLeft:
    case GraphicsRenderer::HitBottomRight:
        return Qt::SizeFDiagCursor;
    case GraphicsRenderer::HitTopRight:
    case GraphicsRenderer::HitBottomLeft:
        return Qt::SizeBDiagCursor;
    case GraphicsRenderer::HitMainCross:
    case GraphicsRenderer::HitSecondaryCross:
    case GraphicsRenderer::HitExtraCross:
    case GraphicsRenderer::HitBox:
        return Qt::SizeAllCursor;
    default:
        return Qt::ArrowCursor;
    }
}

QPoint masked(QPoint delta, unsigned char flags)
{
    return QPoint(flags & GraphicsRenderer::DragHorizontal ? delta.x() : 0,
                  flags & GraphicsRenderer::DragVertical ? delta.y() : 0);
}

// A screen delta in world units, and the part of the screen delta that it accounts for:
// zoomed in, a drag moves in whole zoomed pixels and keeps the rest for the next move.
void toWorld(int delta, double scale, int &world, int &consumed)
{
    if (scale == 0.0) {
        world = consumed = 0;
        return;
    }
    world = int(delta / scale);
    consumed = scale > 1.0 ? qRound(world * scale) : delta;
}

} // namespace

int GraphicsRendererPrivate::hitGuides(QPoint point) const
{
    if (!guidesVisible)
        return GraphicsRenderer::HitNothing;
    const int reach = penWidth() / 2 + 2;
    const QPoint at = guideScreenPosition();
    if (qAbs(point.x() - at.x()) <= reach)
        return GraphicsRenderer::HitVerticalGuide;
    if (qAbs(point.y() - at.y()) <= reach)
        return GraphicsRenderer::HitHorizontalGuide;
    return GraphicsRenderer::HitNothing;
}

// Sizers first, then the selection, then the topmost box: collision boxes are drawn over
// attack boxes, and within a type the later over the earlier.
int GraphicsRendererPrivate::hitBoxes(QPoint point, BoxGroup **hitGroup, int *hitIndex) const
{
    if (boxesSelected && !hitGroup) {
        const QRect selection = selectionScreenRect();
        const QVector<QRect> handles = handleRects(selection);
        for (int i = 0; i < handles.size(); ++i) {
            if (handles.at(i).contains(point))
                return GraphicsRenderer::HitTopLeft + i;
        }
        if (selection.contains(point))
            return GraphicsRenderer::HitBox;
    }
    const int order[] = {ContactBoxCode::Collision, ContactBoxCode::Attack};
    for (int type : order) {
        const BoxGroup &group = boxes[type];
        for (int i = group.items.size() - 1; group.visible && i >= 0; --i) {
            if (!boxScreenRect(group.items.at(i)).contains(point))
                continue;
            if (hitGroup)
                *hitGroup = const_cast<BoxGroup *>(&group);
            if (hitIndex)
                *hitIndex = i;
            return GraphicsRenderer::HitBox;
        }
    }
    return GraphicsRenderer::HitNothing;
}

int GraphicsRendererPrivate::hitCrosses(QPoint point) const
{
    for (int cross = 2; cross >= 0; --cross) {
        if (crosses[cross].visible && crossScreenRect(cross).contains(point))
            return GraphicsRenderer::HitMainCross + cross;
    }
    return GraphicsRenderer::HitNothing;
}

int GraphicsRendererPrivate::hitTest(QPoint point)
{
    if (rulersVisible
        && (QRect(0, 0, rulerWidth, viewSize.height()).contains(point)
            || QRect(0, 0, viewSize.width(), rulerWidth).contains(point)))
        return GraphicsRenderer::HitNothing;
    const bool guidesUnder = GraphicsViewState::instance().spriteOverGuides;
    const bool boxesFirst = GraphicsViewState::instance().contactOverCross;
    if (guidesUnder) {
        if (int hit = hitGuides(point))
            return hit;
    }
    if (clickMode == GraphicsRenderer::DrawContactBoxMode)
        return GraphicsRenderer::HitNothing;
    if (boxesFirst) {
        if (int hit = hitBoxes(point))
            return hit;
    }
    if (clickMode != GraphicsRenderer::CaptureMode) {
        if (int hit = hitCrosses(point))
            return hit;
    }
    if (!boxesFirst) {
        if (int hit = hitBoxes(point))
            return hit;
    }
    if (updateSprites()) {
        for (int i = int(sprites->count()) - 1; i >= 0; --i) {
            if (sprites->item(uint(i)).visible && spriteRects.at(i).contains(point)) {
                currentSprite = i;
                return GraphicsRenderer::HitSprite;
            }
        }
    }
    if (!guidesUnder)
        return hitGuides(point);
    return GraphicsRenderer::HitNothing;
}

void GraphicsRendererPrivate::refreshCursor(QPoint point, Qt::KeyboardModifiers modifiers)
{
    QWidget *widget = q->widget();
    if (!widget)
        return;
    if (controlHeld || (modifiers & Qt::ControlModifier)) {
        widget->setCursor(Qt::OpenHandCursor);
        return;
    }
    widget->setCursor(cursorFor(pressed ? pressedItem : hitTest(point), pressed, clickMode));
}

void GraphicsRendererPrivate::selectBoxAt(QPoint point, Qt::KeyboardModifiers modifiers)
{
    BoxGroup *group = nullptr;
    int index = -1;
    hitBoxes(point, &group, &index);
    if (!group) // inside the selection between its boxes: the selection stays
        return;
    GraphicsRenderer::BoxItem &box = group->items[index];
    if (modifiers & Qt::ShiftModifier) {
        box.selected = !box.selected;
    } else if (!box.selected) {
        clearSelection(7777, 7777, -7777, -7777);
        box.selected = true;
    }
}

// Qt grabs the mouse for the widget while a button is held, which is all that the drag
// needs: an explicit grab would outlive a press that the widget never sees released.
void GraphicsRendererPrivate::pressLeft(QPoint point, Qt::KeyboardModifiers modifiers)
{
    pressed = true;
    moved = false;
    pressPoint = lastPoint = point;
    if (clickMode == GraphicsRenderer::DrawContactBoxMode) {
        BoxGroup &group = boxes[currentBoxType];
        GraphicsRenderer::BoxItem box;
        const QPointF base = boxBase(box);
        const double x = scale.x() != 0.0 ? (point.x() - base.x()) / scale.x() : 0.0;
        const double y = scale.y() != 0.0 ? (point.y() - base.y()) / scale.y() : 0.0;
        box.rect = QRectF(qFloor(x), qFloor(y), 0, 0);
        box.selected = true;
        clearSelection(7777, 7777, -7777, -7777);
        currentBox = group.items.size();
        group.items << box;
        q->updateSelectedBoxes();
        pressedItem = GraphicsRenderer::HitBottomRight;
        q->update();
        return;
    }
    pressedItem = hitTest(point);
    if (pressedItem < GraphicsRenderer::HitTopLeft) {
        if (pressedItem == GraphicsRenderer::HitBox)
            selectBoxAt(point, modifiers);
        else if (!(modifiers & Qt::ShiftModifier))
            clearSelection(7777, 7777, -7777, -7777);
        q->updateSelectedBoxes();
        q->update();
    }
    if (clickMode == GraphicsRenderer::CaptureMode && pressedItem == GraphicsRenderer::HitSprite)
        captureColor(point);
}

bool GraphicsRendererPrivate::captureColor(QPoint point)
{
    if (!updateSprites())
        return false;
    for (int i = int(sprites->count()) - 1; i >= 0; --i) {
        const GraphicsRenderer::SpriteProvider::Info &info = sprites->item(uint(i));
        const QRectF &rect = spriteRects.at(i);
        if (!info.visible || !rect.contains(point))
            continue;
        const double sx = scale.x() * info.scaleX;
        const double sy = scale.y() * info.scaleY;
        if (sx == 0.0 || sy == 0.0)
            return false;
        const QPoint pixel(qFloor((point.x() - rect.left()) / sx), qFloor((point.y() - rect.top()) / sy));
        const int index = sprites->colorIndexAt(uint(i), pixel);
        if (index < 0 || index > 255)
            return false;
        emit q->colorCaptured(static_cast<unsigned char>(index));
        return true;
    }
    return false;
}

void GraphicsRendererPrivate::moveSprite(QPoint world, QPoint screen)
{
    if (!sprites || currentSprite < 0 || uint(currentSprite) >= sprites->count())
        return;
    GraphicsRenderer::SpriteProvider::Info &info = sprites->item(uint(currentSprite));
    const QPoint delta = masked(info.flags & GraphicsRenderer::WorldUnits ? world : screen, info.flags);
    if (delta.isNull())
        return;
    const QPointF step(info.scaleX != 0.0 ? delta.x() / info.scaleX : 0.0,
                       info.scaleY != 0.0 ? delta.y() / info.scaleY : 0.0);
    info.position += step;
    const QPoint reported = info.flags & GraphicsRenderer::ReportDelta ? step.toPoint() : info.position.toPoint();
    emit q->itemMoved(GraphicsRenderer::SpriteItem, currentSprite, reported);
}

void GraphicsRendererPrivate::moveCross(int cross, QPoint world)
{
    GraphicsRenderer::Item &item = crosses[cross];
    const QPoint delta = masked(world, item.flags);
    if (delta.isNull())
        return;
    item.position += delta;
    const QPoint reported = item.flags & GraphicsRenderer::ReportDelta ? delta : item.position.toPoint();
    emit q->itemMoved(GraphicsRenderer::ItemType(cross), 0, reported);
}

// Each sizer moves only its own edges of every selected box.
void GraphicsRendererPrivate::resizeBoxes(int handle, QPoint delta)
{
    const int index = handle - GraphicsRenderer::HitTopLeft;
    static const bool moveLeft[8] = {true, false, true, false, true, false, false, false};
    static const bool moveTop[8] = {true, true, false, true, false, false, false, false};
    static const bool moveRight[8] = {false, false, false, true, false, false, true, true};
    static const bool moveBottom[8] = {false, false, false, false, true, true, true, false};
    for (BoxGroup &group : boxes) {
        for (GraphicsRenderer::BoxItem &box : group.items) {
            if (!box.selected)
                continue;
            if (moveLeft[index])
                box.rect.setLeft(box.rect.left() + delta.x());
            if (moveTop[index])
                box.rect.setTop(box.rect.top() + delta.y());
            if (moveRight[index])
                box.rect.setRight(box.rect.right() + delta.x());
            if (moveBottom[index])
                box.rect.setBottom(box.rect.bottom() + delta.y());
        }
    }
    q->updateSelectedBoxes();
}

void GraphicsRendererPrivate::moveItem(int hit, QPoint world, QPoint screen)
{
    switch (hit) {
    case GraphicsRenderer::HitNothing:
        GraphicsViewState::instance().origin += screen;
        break;
    case GraphicsRenderer::HitSprite:
        moveSprite(world, screen);
        break;
    case GraphicsRenderer::HitMainCross:
    case GraphicsRenderer::HitSecondaryCross:
    case GraphicsRenderer::HitExtraCross:
        moveCross(hit - GraphicsRenderer::HitMainCross, world);
        break;
    case GraphicsRenderer::HitHorizontalGuide:
        guideLines.ry() += world.y();
        break;
    case GraphicsRenderer::HitVerticalGuide:
        guideLines.rx() += world.x();
        break;
    default: {
        const QPoint delta = hit == GraphicsRenderer::HitBox ? masked(world, boxFlags) : world;
        if (delta.isNull())
            return;
        if (hit == GraphicsRenderer::HitBox)
            q->moveSelectedContactBoxes(delta);
        else
            resizeBoxes(hit, delta);
        emit q->itemMoved(GraphicsRenderer::ContactBoxes, -1,
                          boxFlags & GraphicsRenderer::ReportDelta ? delta : QPoint());
        break;
    }
    }
    q->update();
}

void GraphicsRendererPrivate::releaseItem()
{
    const unsigned char drag = GraphicsRenderer::DragHorizontal | GraphicsRenderer::DragVertical;
    if (pressedItem == GraphicsRenderer::HitSprite && sprites && currentSprite >= 0
        && uint(currentSprite) < sprites->count()) {
        const GraphicsRenderer::SpriteProvider::Info &info = sprites->item(uint(currentSprite));
        if (info.flags & drag) {
            emit q->itemReleased(GraphicsRenderer::SpriteItem, currentSprite,
                                 info.flags & GraphicsRenderer::ReportDelta ? QPoint() : info.position.toPoint());
        }
    } else if (pressedItem >= GraphicsRenderer::HitMainCross && pressedItem <= GraphicsRenderer::HitExtraCross) {
        const int cross = pressedItem - GraphicsRenderer::HitMainCross;
        const GraphicsRenderer::Item &item = crosses[cross];
        if (item.flags & drag) {
            emit q->itemReleased(GraphicsRenderer::ItemType(cross), 0,
                                 item.flags & GraphicsRenderer::ReportDelta ? QPoint() : item.position.toPoint());
        }
    } else if (pressedItem >= GraphicsRenderer::HitBox && (boxFlags & drag)) {
        emit q->itemReleased(GraphicsRenderer::ContactBoxes, -1, QPoint());
    }
}

void GraphicsRendererPrivate::finishDrawnBox()
{
    BoxGroup &group = boxes[currentBoxType];
    if (currentBox < 0 || currentBox >= group.items.size())
        return;
    const QRect rect = group.items.at(currentBox).rect.normalized().toRect();
    group.items.removeAt(currentBox);
    if (!rect.isEmpty()) {
        q->appendContactBox(ContactBoxCode::BoxType(currentBoxType), rect);
        group.items.last().selected = true;
        q->updateSelectedBoxes();
        emit q->itemReleased(GraphicsRenderer::ContactBoxes, group.items.size() - 1, QPoint());
    }
    currentBox = group.items.size();
    q->updateSelectedBoxes();
    q->update();
}

void GraphicsRenderer::mousePressed(QPoint point, Qt::MouseButton button, Qt::KeyboardModifiers modifiers)
{
    if (button == Qt::LeftButton)
        d->pressLeft(point, modifiers);
    else if (!d->pressed)
        d->pressedItem = d->hitTest(point);
    d->lastMouse = point;
    d->refreshCursor(point, modifiers);
}

void GraphicsRenderer::mouseMoved(QPoint point, Qt::KeyboardModifiers modifiers)
{
    d->lastMouse = point;
    d->refreshCursor(point, modifiers);
    const QPoint origin = GraphicsViewState::instance().origin;
    const QPointF s = d->scale;
    emit cursorChanged(QPoint(s.x() != 0.0 ? int((point.x() - origin.x()) / s.x()) : 0,
                              s.y() != 0.0 ? int((point.y() - origin.y()) / s.y()) : 0));
    if (!d->pressed)
        return;
    if (d->clickMode == CaptureMode) {
        d->captureColor(point);
        return;
    }
    QPoint delta = point - d->lastPoint;
    const int hit = d->pressedItem;
    if (hit == HitMiddleLeft || hit == HitMiddleRight)
        delta.setY(0);
    if (hit == HitTopMiddle || hit == HitBottomMiddle)
        delta.setX(0);
    QPoint world = delta;
    QPoint consumed = delta;
    if ((s.x() != 1.0 || s.y() != 1.0) && hit != HitNothing) {
        toWorld(delta.x(), s.x(), world.rx(), consumed.rx());
        toWorld(delta.y(), s.y(), world.ry(), consumed.ry());
    }
    d->lastPoint += consumed;
    if (world.isNull() && consumed.isNull())
        return;
    d->moved = true;
    d->moveItem(hit, world, consumed);
}

void GraphicsRenderer::mouseReleased(QPoint point, Qt::MouseButton button, Qt::KeyboardModifiers modifiers)
{
    if (button == Qt::RightButton && d->clickMode == DrawContactBoxMode) {
        setPositioningMode();
        emit contactDrawingExit();
        return;
    }
    if (button != Qt::LeftButton || !d->pressed)
        return;
    if (d->clickMode == DrawContactBoxMode) {
        d->pressed = false;
        d->finishDrawnBox();
    } else {
        d->pressed = false;
        if (d->moved)
            d->releaseItem();
    }
    d->refreshCursor(point, modifiers);
}

void GraphicsRenderer::keyPressed(int key, Qt::KeyboardModifiers modifiers)
{
    if (key == Qt::Key_Control) {
        d->controlHeld = true;
        if (QWidget *view = widget())
            view->setCursor(Qt::OpenHandCursor);
        return;
    }
    if ((modifiers & ~Qt::KeypadModifier) != Qt::NoModifier || !d->boxesSelected)
        return;
    switch (key) {
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
        removeSelectedContactBoxes();
        break;
    case Qt::Key_Left:
        moveSelectedContactBoxes(QPoint(-1, 0));
        break;
    case Qt::Key_Right:
        moveSelectedContactBoxes(QPoint(1, 0));
        break;
    case Qt::Key_Up:
        moveSelectedContactBoxes(QPoint(0, -1));
        break;
    case Qt::Key_Down:
        moveSelectedContactBoxes(QPoint(0, 1));
        break;
    default:
        return;
    }
    emit itemReleased(ContactBoxes, -1, QPoint());
    update();
}

void GraphicsRenderer::keyReleased(int key, Qt::KeyboardModifiers modifiers)
{
    if (key != Qt::Key_Control)
        return;
    d->controlHeld = false;
    d->refreshCursor(d->lastMouse, modifiers & ~Qt::ControlModifier);
}

} // namespace Ovra
