// The canvas's state: shared look, items and their places on the view, contact boxes and
// the click modes. Painting, zoom and input live in graphicsrenderer{paint,zoom,mouse}.cpp.
#include "graphicsrenderer.h"
#include "graphicsrenderer_p.h"

#include "image/sprite.h"

#include <QFile>
#include <QLinearGradient>
#include <QtMath>

namespace Ovra {

namespace {

// Anchors can chain (a sprite on a cross on a sprite); a loop among them ends here.
const int maximumAnchorDepth = 8;

bool sameLevel(const QPointF &a, const QPointF &b)
{
    return qAbs(a.x() - b.x()) <= 1e-12 && qAbs(a.y() - b.y()) <= 1e-12;
}

QPixmap pictureOrNull(const QString &file)
{
    return QFile::exists(file) ? QPixmap(file) : QPixmap();
}

} // namespace

GraphicsViewState &GraphicsViewState::instance()
{
    static GraphicsViewState state;
    return state;
}

const QBrush &GraphicsViewState::gradientFor(int height)
{
    if (height != gradientHeight) {
        QLinearGradient gradient(0, 0, 0, height);
        gradient.setColorAt(0, start);
        gradient.setColorAt(1, end);
        this->gradient = QBrush(gradient);
        gradientHeight = height;
    }
    return this->gradient;
}

GraphicsRenderer::SpriteProvider::~SpriteProvider() = default;

GraphicsRendererPrivate::GraphicsRendererPrivate(GraphicsRenderer *q)
    : q(q)
{
}

QPointF GraphicsRendererPrivate::anchorPoint(unsigned char flags, uint parent, int depth) const
{
    switch (flags & GraphicsRenderer::AnchorMask) {
    case GraphicsRenderer::AnchorView:
        return QPointF();
    case GraphicsRenderer::AnchorCross:
        if (depth < maximumAnchorDepth && parent < 3)
            return crossScreenPosition(int(parent), depth + 1);
        break;
    case GraphicsRenderer::AnchorSprite:
        if (depth < maximumAnchorDepth && sprites && parent < sprites->count())
            return spriteScreenPosition(parent, depth + 1);
        break;
    default:
        break;
    }
    return QPointF(GraphicsViewState::instance().origin);
}

QPointF GraphicsRendererPrivate::mapItem(unsigned char flags, uint parent, QPointF position, QPointF extraScale,
                                         int depth) const
{
    QPointF p(position.x() * extraScale.x(), position.y() * extraScale.y());
    if (flags & GraphicsRenderer::WorldUnits)
        p = QPointF(p.x() * scale.x(), p.y() * scale.y());
    return anchorPoint(flags, parent, depth) + p;
}

QPointF GraphicsRendererPrivate::crossScreenPosition(int cross, int depth) const
{
    const GraphicsRenderer::Item &item = crosses[cross];
    return mapItem(item.flags | GraphicsRenderer::WorldUnits, item.parent, item.position, QPointF(1, 1), depth);
}

// A sprite's position is given in its own scaled units, so that dragging it by a world
// delta divided by its scale keeps it under the mouse.
QPointF GraphicsRendererPrivate::spriteScreenPosition(uint index, int depth) const
{
    const GraphicsRenderer::SpriteProvider::Info &info = sprites->item(index);
    return mapItem(info.flags, info.parent, info.position, QPointF(info.scaleX, info.scaleY), depth);
}

QPointF GraphicsRendererPrivate::boxBase(const GraphicsRenderer::BoxItem &box) const
{
    return mapItem(boxFlags & ~GraphicsRenderer::WorldUnits, boxParent, box.position, QPointF(1, 1));
}

QRect GraphicsRendererPrivate::boxScreenRect(const GraphicsRenderer::BoxItem &box) const
{
    const QPointF base = boxBase(box);
    const QRectF r = box.rect.normalized();
    const int left = qFloor(base.x() + r.left() * scale.x());
    const int top = qFloor(base.y() + r.top() * scale.y());
    const int right = qFloor(base.x() + r.right() * scale.x());
    const int bottom = qFloor(base.y() + r.bottom() * scale.y());
    return QRect(left, top, right - left, bottom - top);
}

QRect GraphicsRendererPrivate::selectionScreenRect() const
{
    QRect united(7777, 7777, -7777, -7777);
    for (const BoxGroup &group : boxes) {
        for (const GraphicsRenderer::BoxItem &box : group.items) {
            if (box.selected)
                unite(united, boxScreenRect(box));
        }
    }
    return united;
}

QRect GraphicsRendererPrivate::crossScreenRect(int cross) const
{
    const QPixmap &picture = GraphicsViewState::instance().crosses[cross];
    if (picture.isNull())
        return QRect();
    const int n = penWidth();
    const QPointF centre = crossScreenPosition(cross);
    const QSize size = picture.size() * n;
    return QRect(qRound(centre.x()) - size.width() / 2, qRound(centre.y()) - size.height() / 2, size.width(),
                 size.height());
}

int GraphicsRendererPrivate::penWidth() const
{
    return zoomFactor > 1.0f ? qRound(zoomFactor) : 1;
}

bool GraphicsRendererPrivate::updateSprites()
{
    if (!sprites) {
        spriteRects.clear();
        return false;
    }
    const uint count = sprites->count();
    spriteRects.resize(int(count));
    for (uint i = 0; i < count; ++i) {
        const GraphicsRenderer::SpriteProvider::Info &info = sprites->item(i);
        const QPointF at = spriteScreenPosition(i);
        const double sx = scale.x() * info.scaleX;
        const double sy = scale.y() * info.scaleY;
        spriteRects[int(i)] = QRectF(at.x() - info.offset.x() * sx, at.y() - info.offset.y() * sy,
                                     info.size.width() * sx, info.size.height() * sy);
    }
    return true;
}

// Unlike QRect::united this takes an inverted rectangle as "nothing yet".
void GraphicsRendererPrivate::unite(QRect &target, const QRect &rect) const
{
    if (target.width() < 0 || target.height() < 0) {
        target = rect;
        return;
    }
    const int left = qMin(target.left(), rect.left());
    const int top = qMin(target.top(), rect.top());
    const int right = qMax(target.x() + target.width(), rect.x() + rect.width());
    const int bottom = qMax(target.y() + target.height(), rect.y() + rect.height());
    target = QRect(left, top, right - left, bottom - top);
}

QPoint GraphicsRendererPrivate::guideScreenPosition() const
{
    const QPoint origin = GraphicsViewState::instance().origin;
    return QPoint(int(guideLines.x() * scale.x()) + origin.x() - 1, int(guideLines.y() * scale.y()) + origin.y() - 1);
}

QRect GraphicsRendererPrivate::onionScreenRect() const
{
    if (!onionSprite)
        return QRect();
    const GraphicsRenderer::Item &main = crosses[0];
    const QPointF place = mapItem(main.flags | GraphicsRenderer::WorldUnits, main.parent, QPointF(onionPosition),
                                  QPointF(1, 1));
    const QPoint axis = onionSprite->axis();
    const QSize size = onionSprite->imageProperties().size();
    return QRect(qFloor(place.x() - axis.x() * scale.x()), qFloor(place.y() - axis.y() * scale.y()),
                 int(size.width() * scale.x()), int(size.height() * scale.y()));
}

void GraphicsRendererPrivate::clearSelection(int x, int y, int width, int height)
{
    for (BoxGroup &group : boxes) {
        for (GraphicsRenderer::BoxItem &box : group.items)
            box.selected = false;
    }
    boxesSelected = false;
    selectionRect = QRect(x, y, width, height);
}

// A box that the user is still drawing has no code yet; leaving the mode drops it.
void GraphicsRendererPrivate::dropOpenBox()
{
    if (clickMode != GraphicsRenderer::DrawContactBoxMode || !pressed)
        return;
    BoxGroup &group = boxes[currentBoxType];
    if (currentBox >= 0 && currentBox < group.items.size() && !group.items.at(currentBox).code)
        group.items.removeAt(currentBox);
    pressed = false;
    q->updateSelectedBoxes();
}

GraphicsRenderer::GraphicsRenderer(QObject *parent)
    : QObject(parent)
    , d(new GraphicsRendererPrivate(this))
{
}

GraphicsRenderer::~GraphicsRenderer() = default;

QPoint GraphicsRenderer::origin()
{
    return GraphicsViewState::instance().origin;
}

void GraphicsRenderer::setOrigin(QPoint origin)
{
    GraphicsViewState::instance().origin = origin;
}

void GraphicsRenderer::centralize()
{
    GraphicsViewState::instance().origin = d->viewCenter;
}

void GraphicsRenderer::setPriority(bool spriteOverGuides, bool contactOverCross)
{
    GraphicsViewState &state = GraphicsViewState::instance();
    state.spriteOverGuides = spriteOverGuides;
    state.contactOverCross = contactOverCross;
}

bool GraphicsRenderer::spriteOverGuides()
{
    return GraphicsViewState::instance().spriteOverGuides;
}

bool GraphicsRenderer::contactOverCross()
{
    return GraphicsViewState::instance().contactOverCross;
}

void GraphicsRenderer::setVisibility(bool mainCross, bool secondaryCross, bool extraCross, bool attackBoxes,
                                     bool collisionBoxes, bool rulers, bool guides)
{
    const bool changed = d->crosses[0].visible != mainCross || d->crosses[1].visible != secondaryCross
        || d->crosses[2].visible != extraCross || d->boxes[ContactBoxCode::Attack].visible != attackBoxes
        || d->boxes[ContactBoxCode::Collision].visible != collisionBoxes || d->rulersVisible != rulers
        || d->guidesVisible != guides;
    if (!changed)
        return;
    d->crosses[0].visible = mainCross;
    d->crosses[1].visible = secondaryCross;
    d->crosses[2].visible = extraCross;
    d->boxes[ContactBoxCode::Attack].visible = attackBoxes;
    d->boxes[ContactBoxCode::Collision].visible = collisionBoxes;
    d->rulersVisible = rulers;
    d->guidesVisible = guides;
    update();
}

bool GraphicsRenderer::rulersVisible() const
{
    return d->rulersVisible;
}

bool GraphicsRenderer::guidesVisible() const
{
    return d->guidesVisible;
}

QPoint GraphicsRenderer::guideLines() const
{
    return d->guideLines;
}

void GraphicsRenderer::setGuideLines(QPoint guides)
{
    if (d->guideLines == guides)
        return;
    d->guideLines = guides;
    update();
}

QSize GraphicsRenderer::viewSize() const
{
    return d->viewSize;
}

void GraphicsRenderer::setBackground(QColor start, QColor end, BackgroundType type, QPoint offset,
                                     const QString &file, QSize gameSize)
{
    GraphicsViewState &state = GraphicsViewState::instance();
    state.start = start;
    state.end = end;
    state.gradientHeight = -1;
    if (type == StageBackground) {
        // The stage pictures are drawn for the common game widths; their offsets put the
        // stage's floor line and middle on the origin.
        struct Stage { int width; const char *name; QPoint offset; };
        static const Stage stages[] = {{1920, ":/ovra_icons/icons/1080p.png", QPoint(-958, -936)},
                                       {1280, ":/ovra_icons/icons/720p.png", QPoint(-638, -623)},
                                       {640, ":/ovra_icons/icons/480p.png", QPoint(-424, -415)},
                                       {0, ":/ovra_icons/icons/240p.png", QPoint(-212, -207)}};
        for (const Stage &stage : stages) {
            if (gameSize.width() >= stage.width) {
                state.background = QPixmap(QString::fromLatin1(stage.name));
                state.backgroundOffset = stage.offset;
                return;
            }
        }
    }
    state.background = type == FileBackground ? pictureOrNull(file) : QPixmap();
    state.backgroundOffset = type == FileBackground ? offset : QPoint();
}

QPixmap GraphicsRenderer::backgroundPicture()
{
    return GraphicsViewState::instance().background;
}

QPoint GraphicsRenderer::backgroundOffset()
{
    return GraphicsViewState::instance().backgroundOffset;
}

void GraphicsRenderer::setCrossHair(CrossHairType type, const QString &main, const QString &secondary,
                                    const QString &extra)
{
    GraphicsViewState &state = GraphicsViewState::instance();
    const QString builtIn = QStringLiteral(":/ovra_icons/icons/");
    if (type == FileCrosses) {
        // A picture that went missing falls back to the built-in one, so that the user never
        // loses sight of the main and secondary crosses; the extra cross has none.
        state.crosses[0] = QFile::exists(main) ? QPixmap(main) : QPixmap(builtIn + QStringLiteral("sff.png"));
        state.crosses[1] =
            QFile::exists(secondary) ? QPixmap(secondary) : QPixmap(builtIn + QStringLiteral("air.png"));
        state.crosses[2] = pictureOrNull(extra);
        return;
    }
    const QStringList names = type == FirstCrossSet
        ? QStringList{QStringLiteral("sff.png"), QStringLiteral("air.png"), QStringLiteral("extra.png")}
        : QStringList{QStringLiteral("cruz.png"), QStringLiteral("cruz2.png"), QStringLiteral("cruz3.png")};
    for (int i = 0; i < 3; ++i)
        state.crosses[i] = QPixmap(builtIn + names.at(i));
}

QPixmap GraphicsRenderer::crossPicture(int cross)
{
    return cross >= 0 && cross < 3 ? GraphicsViewState::instance().crosses[cross] : QPixmap();
}

void GraphicsRenderer::setupContactBoxes(QColor attack, QColor collision, float opacity)
{
    GraphicsViewState &state = GraphicsViewState::instance();
    state.attackColor = attack;
    state.collisionColor = collision;
    state.boxOpacity = opacity;
}

void GraphicsRenderer::setOnionSkin(bool enabled, OnionEffect effect, float opacity)
{
    if (d->onionEnabled == enabled && d->onionEffect == effect && qFuzzyCompare(d->onionOpacity, opacity))
        return;
    d->onionEnabled = enabled;
    d->onionEffect = effect;
    d->onionOpacity = opacity;
    update();
}

void GraphicsRenderer::setOnionSkinSprite(const Sprite *sprite, QPoint position)
{
    if (d->onionSprite == sprite && d->onionPosition == position)
        return;
    d->onionSprite = sprite;
    d->onionPosition = position;
    update();
}

GraphicsRenderer::OnionEffect GraphicsRenderer::onionEffect() const
{
    return d->onionEffect;
}

float GraphicsRenderer::onionOpacity() const
{
    return d->onionOpacity;
}

void GraphicsRenderer::setSprites(SpriteProvider *sprites)
{
    if (d->sprites == sprites)
        return;
    d->sprites = sprites;
    d->currentSprite = -1;
    d->updateSprites();
    update();
}

GraphicsRenderer::SpriteProvider *GraphicsRenderer::spriteProvider() const
{
    return d->sprites;
}

int GraphicsRenderer::indexOfItem(ItemType type, void *item) const
{
    switch (type) {
    case MainCross:
    case SecondaryCross:
    case ExtraCross:
        return item == &d->crosses[type] ? 0 : -1;
    case SpriteItem:
        for (uint i = 0; d->sprites && i < d->sprites->count(); ++i) {
            if (&d->sprites->item(i) == item)
                return int(i);
        }
        return -1;
    case ContactBoxes:
        for (const BoxGroup &group : d->boxes) {
            for (int i = 0; i < group.items.size(); ++i) {
                if (group.items.at(i).code == item)
                    return i;
            }
        }
        return -1;
    }
    return -1;
}

QPointF GraphicsRenderer::itemPosition(ItemType type, uint index) const
{
    if (type <= ExtraCross)
        return d->crosses[type].position;
    if (type == SpriteItem && d->sprites && index < d->sprites->count())
        return d->sprites->item(index).position;
    return QPointF(0, 0);
}

void GraphicsRenderer::setItemPosition(ItemType type, QPointF position, uint index, bool update)
{
    QPointF *target = nullptr;
    if (type <= ExtraCross)
        target = &d->crosses[type].position;
    else if (type == SpriteItem && d->sprites && index < d->sprites->count())
        target = &d->sprites->item(index).position;
    if (!target || sameLevel(*target, position))
        return;
    *target = position;
    if (update)
        this->update();
}

void GraphicsRenderer::setItemPositionMode(ItemType type, unsigned char flags, uint parent, uint index)
{
    unsigned char *targetFlags = nullptr;
    quint16 *targetParent = nullptr;
    if (type <= ExtraCross) {
        flags |= WorldUnits;
        targetFlags = &d->crosses[type].flags;
        targetParent = &d->crosses[type].parent;
    } else if (type == SpriteItem && d->sprites && index < d->sprites->count()) {
        targetFlags = &d->sprites->item(index).flags;
        targetParent = &d->sprites->item(index).parent;
    } else if (type == ContactBoxes) {
        flags &= ~WorldUnits;
        targetFlags = &d->boxFlags;
        targetParent = &d->boxParent;
    }
    if (!targetFlags || (*targetFlags == flags && *targetParent == parent))
        return;
    *targetFlags = flags;
    *targetParent = quint16(parent);
    update();
}

unsigned char GraphicsRenderer::itemPositionMode(ItemType type, uint index) const
{
    if (type <= ExtraCross)
        return d->crosses[type].flags;
    if (type == SpriteItem && d->sprites && index < d->sprites->count())
        return d->sprites->item(index).flags;
    return type == ContactBoxes ? d->boxFlags : 0;
}

QPointF GraphicsRenderer::itemScreenPosition(ItemType type, uint index) const
{
    if (type <= ExtraCross)
        return d->crossScreenPosition(type);
    if (type == SpriteItem && d->sprites && index < d->sprites->count())
        return d->spriteScreenPosition(index);
    if (type == ContactBoxes)
        return d->anchorPoint(d->boxFlags, d->boxParent);
    return QPointF();
}

QRectF GraphicsRenderer::spriteRect(uint index) const
{
    return int(index) < d->spriteRects.size() ? d->spriteRects.at(int(index)) : QRectF();
}

int GraphicsRenderer::hitTest(QPoint point)
{
    return d->hitTest(point);
}

QColor GraphicsRenderer::clearColor() const
{
    return GraphicsViewState::instance().start;
}

void GraphicsRenderer::sizeChanged(int width, int height)
{
    d->viewSize = QSize(width, height);
    d->viewCenter = QPoint(width / 2, height / 2);
    GraphicsViewState::instance().gradientFor(height);
}

} // namespace Ovra
