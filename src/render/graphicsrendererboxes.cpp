// Contact boxes on the canvas and the click modes that draw them.
#include "graphicsrenderer.h"
#include "graphicsrenderer_p.h"

namespace Ovra {

namespace {

bool validType(ContactBoxCode::BoxType type)
{
    return int(type) >= 0 && int(type) < 8;
}

} // namespace

void GraphicsRenderer::setContactBoxes(ContactBoxCode::BoxType type, ContactBoxesCode *boxes)
{
    if (!validType(type))
        return;
    BoxGroup &group = d->boxes[type];
    // The owner sets the boxes again after every edit it writes back: the same container
    // with as many boxes keeps what the user selected.
    const bool keepSelection = group.code == boxes && boxes && int(boxes->count()) == group.items.size();
    QList<BoxItem> items;
    for (uint i = 0; boxes && i < boxes->count(); ++i) {
        BoxItem item;
        item.code = boxes->at(i);
        if (item.code)
            item.rect = QRectF(item.code->rect());
        item.selected = keepSelection && group.items.at(int(i)).selected;
        items << item;
    }
    group.code = boxes;
    group.items = items;
    updateSelectedBoxes();
    update();
}

const QList<GraphicsRenderer::BoxItem> &GraphicsRenderer::boxes(ContactBoxCode::BoxType type) const
{
    static const QList<BoxItem> none;
    return validType(type) ? d->boxes[type].items : none;
}

ContactBoxCode *GraphicsRenderer::appendContactBox(ContactBoxCode::BoxType type, QRect rect)
{
    if (!validType(type))
        return nullptr;
    BoxGroup &group = d->boxes[type];
    BoxItem item;
    item.code = group.code ? group.code->append(rect) : nullptr;
    item.rect = QRectF(rect);
    group.items << item;
    update();
    return item.code;
}

QList<ContactBoxCode *> GraphicsRenderer::selectedContactBoxes() const
{
    QList<ContactBoxCode *> selected;
    for (const BoxGroup &group : d->boxes) {
        for (const BoxItem &box : group.items) {
            if (box.selected && box.code)
                selected << box.code;
        }
    }
    return selected;
}

void GraphicsRenderer::deselectContactBoxes()
{
    if (!d->boxesSelected)
        return;
    d->clearSelection(7777, 7777, -7777, -7777);
    update();
}

// The boxes leave their frame's container too: after that the owner couldn't tell which.
void GraphicsRenderer::removeSelectedContactBoxes()
{
    bool removed = false;
    for (BoxGroup &group : d->boxes) {
        for (int i = group.items.size() - 1; i >= 0; --i) {
            if (!group.items.at(i).selected)
                continue;
            ContactBoxCode *code = group.items.at(i).code;
            for (uint c = 0; code && group.code && c < group.code->count(); ++c) {
                if (group.code->at(c) == code) {
                    group.code->remove(c);
                    break;
                }
            }
            group.items.removeAt(i);
            removed = true;
        }
    }
    if (!removed)
        return;
    updateSelectedBoxes();
    update();
}

void GraphicsRenderer::moveSelectedContactBoxes(QPoint delta)
{
    if (!d->boxesSelected || delta.isNull())
        return;
    for (BoxGroup &group : d->boxes) {
        for (BoxItem &box : group.items) {
            if (box.selected)
                box.rect.translate(delta);
        }
    }
    updateSelectedBoxes();
    update();
}

void GraphicsRenderer::updateSelectedBoxes()
{
    QRect united(7777, 7777, -7777, -7777);
    QRect all(7777, 7777, -7777, -7777);
    bool any = false;
    for (const BoxGroup &group : d->boxes) {
        for (const BoxItem &box : group.items) {
            d->unite(all, box.rect.normalized().toRect());
            if (box.selected) {
                d->unite(united, box.rect.normalized().toRect());
                any = true;
            }
        }
    }
    d->boxesSelected = any;
    d->selectionRect = united;
    d->boxesRect = all;
}

QRect GraphicsRenderer::boxesSelectionRect() const
{
    return d->selectionRect;
}

QRect GraphicsRenderer::boxScreenRect(ContactBoxCode::BoxType type, uint index) const
{
    if (!validType(type) || int(index) >= d->boxes[type].items.size())
        return QRect();
    return d->boxScreenRect(d->boxes[type].items.at(int(index)));
}

GraphicsRenderer::ClickMode GraphicsRenderer::clickMode() const
{
    return d->clickMode;
}

void GraphicsRenderer::setPositioningMode()
{
    if (d->clickMode == PositioningMode)
        return;
    d->dropOpenBox();
    d->clickMode = PositioningMode;
    update();
}

void GraphicsRenderer::setDrawContactBoxMode(ContactBoxCode::BoxType type)
{
    if (!validType(type))
        return;
    d->dropOpenBox();
    d->clickMode = DrawContactBoxMode;
    d->currentBoxType = type;
    d->currentBox = d->boxes[type].items.size();
    d->clearSelection(4444, 4444, -8888, -8888);
    update();
}

void GraphicsRenderer::setCaptureMode()
{
    d->dropOpenBox();
    d->clickMode = CaptureMode;
    d->clearSelection(4444, 4444, -8888, -8888);
    update();
}

} // namespace Ovra
