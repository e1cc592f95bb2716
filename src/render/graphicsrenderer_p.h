#pragma once

#include "render/graphicsrenderer.h"

#include <QBrush>
#include <QColor>
#include <QObject>
#include <QPixmap>
#include <QVector>

namespace Ovra {

// What every canvas of the process shares: origin, zoom choice, draw order and the look.
struct GraphicsViewState
{
    QPoint origin;
    GraphicsRenderer::ZoomMode zoomMode = GraphicsRenderer::ZoomAroundOrigin;
    unsigned char zoomTable = 0;
    bool spriteOverGuides = false;
    bool contactOverCross = false;
    QPixmap crosses[3];
    QBrush gradient;
    int gradientHeight = -1;
    QColor start = Qt::white;
    QColor end = Qt::white;
    QPixmap background;
    QPoint backgroundOffset;
    QColor attackColor = Qt::red;
    QColor collisionColor = Qt::blue;
    float boxOpacity = 1.0f;

    static GraphicsViewState &instance();
    // The gradient for a view of that height, rebuilt only when it or the colours change.
    const QBrush &gradientFor(int height);
};

// The boxes of one type: drawn, hit and dragged together as one group.
struct BoxGroup
{
    QList<GraphicsRenderer::BoxItem> items;
    bool visible = true;
    ContactBoxesCode *code = nullptr;
};

class GraphicsRendererPrivate : public QObject
{
public:
    explicit GraphicsRendererPrivate(GraphicsRenderer *q);

    // Geometry (graphicsrenderer.cpp).
    QPointF anchorPoint(unsigned char flags, uint parent, int depth = 0) const;
    QPointF mapItem(unsigned char flags, uint parent, QPointF position, QPointF extraScale, int depth = 0) const;
    QPointF crossScreenPosition(int cross, int depth = 0) const;
    QPointF spriteScreenPosition(uint index, int depth = 0) const;
    QPointF boxBase(const GraphicsRenderer::BoxItem &box) const;
    QRect boxScreenRect(const GraphicsRenderer::BoxItem &box) const;
    QRect selectionScreenRect() const;
    QRect crossScreenRect(int cross) const;
    int penWidth() const;
    bool updateSprites();
    void unite(QRect &target, const QRect &rect) const;
    QPoint guideScreenPosition() const;
    QRect onionScreenRect() const;

    // Zoom (graphicsrendererzoom.cpp).
    void rescale();
    void applyLevel(unsigned char level);

    // Painting (graphicsrendererpaint.cpp).
    void renderBackground(QPainter &painter, bool withPicture);
    void renderGuides(QPainter &painter);
    void renderOnionSkin(QPainter &painter);
    void renderSprites(QPainter &painter);
    void renderCross(QPainter &painter);
    void renderContactBoxes(QPainter &painter, int type, const QColor &lineColor, const QColor &fillColor);
    void renderContactBoxSizers(QPainter &painter);
    // The eight sizers of a selection: corners and edge middles, in the order of their hit codes.
    static QVector<QRect> handleRects(const QRect &selection);
    void renderRulers(QPainter &painter);
    void renderRulerTicks(QPainter &painter, Qt::Orientation orientation);

    // Mouse and keys (graphicsrenderermouse.cpp).
    int hitTest(QPoint point);
    int hitGuides(QPoint point) const;
    int hitBoxes(QPoint point, BoxGroup **group = nullptr, int *index = nullptr) const;
    int hitCrosses(QPoint point) const;
    void refreshCursor(QPoint point, Qt::KeyboardModifiers modifiers);
    void pressLeft(QPoint point, Qt::KeyboardModifiers modifiers);
    void selectBoxAt(QPoint point, Qt::KeyboardModifiers modifiers);
    void moveItem(int hit, QPoint delta, QPoint screenDelta);
    void moveSprite(QPoint world, QPoint screen);
    void moveCross(int cross, QPoint delta);
    void resizeBoxes(int handle, QPoint delta);
    void releaseItem();
    void finishDrawnBox();
    bool captureColor(QPoint point);
    void clearSelection(int x, int y, int width, int height);
    void dropOpenBox();

    GraphicsRenderer *q;
    QSize viewSize;
    QPoint viewCenter;
    unsigned char zoomLevel = 3;
    float zoomFactor = 1.0f;
    QPointF scale = QPointF(1.0, 1.0);
    QPointF previousScale = QPointF(1.0, 1.0);
    QPointF zoomScale = QPointF(1.0, 1.0);
    bool guidesVisible = false;
    QPoint guideLines;
    GraphicsRenderer::OnionEffect onionEffect = GraphicsRenderer::OnionPlain;
    float onionOpacity = 0.0f;
    bool onionEnabled = false;
    const Sprite *onionSprite = nullptr;
    QPoint onionPosition;
    bool rulersVisible = false;
    GraphicsRenderer::Item crosses[3];
    BoxGroup boxes[8];
    QRect boxesRect;
    QRect selectionRect = QRect(7777, 7777, -7777, -7777);
    bool boxesSelected = false;
    unsigned char boxFlags = GraphicsRenderer::AnchorCross | GraphicsRenderer::DragHorizontal
        | GraphicsRenderer::DragVertical;
    quint16 boxParent = 0;
    GraphicsRenderer::SpriteProvider *sprites = nullptr;
    QVector<QRectF> spriteRects;
    GraphicsRenderer::ClickMode clickMode = GraphicsRenderer::PositioningMode;
    bool pressed = false;
    bool moved = false;
    QPoint pressPoint;
    QPoint lastPoint;
    QPoint lastMouse;
    QPoint lastDelta;
    int pressedItem = 0;
    int currentBox = -1;
    int currentBoxType = 0;
    int currentSprite = -1;
    bool controlHeld = false;
};

} // namespace Ovra
