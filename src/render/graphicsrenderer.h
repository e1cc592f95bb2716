#pragma once

#include "code/contactboxcode.h"
#include "render/graphicsrendererbase.h"

#include <QObject>
#include <QPointF>
#include <QRect>
#include <QSize>

#include <memory>

class QPixmap;

namespace Ovra {

class GraphicsRendererPrivate;
class Sprite;

// The canvas of the animation view: a background, guides, an onion-skin frame, sprites,
// three crosses, attack and collision boxes and rulers, each of which the user can pan,
// zoom or drag. How one sprite is drawn is the engine's: a concrete subclass supplies the
// four sprite operations. The look and the origin are shared by every canvas of the
// process, so that all views look alike and a new view starts where the last one was left.
class OVRA_EXPORT GraphicsRenderer : public QObject, public GraphicsRendererBase
{
    Q_OBJECT

public:
    enum ItemType { MainCross = 0, SecondaryCross = 1, ExtraCross = 2, SpriteItem = 3, ContactBoxes = 4 };
    Q_ENUM(ItemType)

    // The position flags of an item, one byte. The anchor (bits 0-1) says what the
    // position is relative to; `parent` names the cross or the sprite for anchors 2 and 3.
    enum PositionFlag : unsigned char {
        AnchorView = 0,
        AnchorOrigin = 1,
        AnchorCross = 2,
        AnchorSprite = 3,
        AnchorMask = 3,
        DragHorizontal = 4,
        DragVertical = 8,
        WorldUnits = 16,   // multiplied by the scale when drawn
        ReportDelta = 32,  // itemMoved gives the last move, itemReleased (0, 0)
    };

    enum ClickMode { PositioningMode = 0, DrawContactBoxMode = 1, CaptureMode = 2 };
    enum ZoomMode { ZoomAroundOrigin = 0, ZoomAroundCenter = 1 };
    enum BackgroundType { GradientBackground = 0, StageBackground = 1, FileBackground = 2 };
    enum CrossHairType { FirstCrossSet = 0, SecondCrossSet = 1, FileCrosses = 2 };
    // How the onion-skin frame is tinted; the values are the shader effects of a packet.
    enum OnionEffect { OnionPlain = 0, OnionGrayscale = 1, OnionLighter = 2, OnionDarker = 3 };

    // Hit codes of a view point, for the mouse and the cursor.
    enum HitCode {
        HitNothing = 0,
        HitSprite = 1,
        HitMainCross = 2,
        HitSecondaryCross = 3,
        HitExtraCross = 4,
        HitHorizontalGuide = 5,
        HitVerticalGuide = 6,
        HitBox = 7,
        HitTopLeft = 8,
        HitTopMiddle = 9,
        HitMiddleLeft = 10,
        HitTopRight = 11,
        HitBottomLeft = 12,
        HitBottomMiddle = 13,
        HitBottomRight = 14,
        HitMiddleRight = 15,
    };

    struct Item
    {
        bool visible = true;
        unsigned char flags = AnchorOrigin | DragHorizontal | DragVertical;
        quint16 parent = 0;
        QPointF position;
    };

    // One contact box: its rectangle in world units, its own place in view pixels (used
    // while the group is anchored to the view) and whether it is selected.
    struct BoxItem
    {
        ContactBoxCode *code = nullptr;
        QPointF position;
        QRectF rect;
        bool selected = false;
    };

    // The sprites the canvas shows, kept by the engine's list of drawn sprites.
    class OVRA_EXPORT SpriteProvider
    {
    public:
        struct Info
        {
            bool visible = true;
            unsigned char flags = AnchorOrigin | WorldUnits;
            quint16 parent = 0;
            QPointF position; // where the sprite's offset point stands
            QPointF offset;   // the point of the picture that stands on the position
            QSizeF size;
            double scaleX = 1.0;
            double scaleY = 1.0;
        };

        virtual ~SpriteProvider();
        virtual uint count() const = 0;
        // The palette index of the sprite's pixel at `pixel` (picture coordinates), or -1
        // where there is none: outside, or a true-colour picture.
        virtual int colorIndexAt(uint index, const QPoint &pixel) const = 0;
        virtual Info &item(uint index) = 0;
    };

    explicit GraphicsRenderer(QObject *parent = nullptr);
    ~GraphicsRenderer() override;

    // Zoom.
    void setZoomLevel(unsigned char level);
    unsigned char zoomLevel() const;
    float zoomFactor() const override;
    QPointF scale() const;
    void addZoom() override;
    void subZoom() override;
    void zoomActual() override;
    void zoomFit() override;
    static void setZoomMode(ZoomMode mode);
    static ZoomMode zoomMode();
    // 0 selects the fine row of zoom factors; any other value the row of whole factors.
    static void setZoomTable(unsigned char table);
    static unsigned char zoomTable();
    // A pixel ratio that isn't square: scale is this times the zoom factor.
    void setZoomScale(QPointF zoomScale);
    QPointF zoomScale() const;

    // View.
    static QPoint origin();
    static void setOrigin(QPoint origin);
    void centralize() override;
    static void setPriority(bool spriteOverGuides, bool contactOverCross);
    void setVisibility(bool mainCross, bool secondaryCross, bool extraCross, bool attackBoxes, bool collisionBoxes,
                       bool rulers, bool guides) override;
    bool rulersVisible() const;
    bool guidesVisible() const;
    QPoint guideLines() const;
    void setGuideLines(QPoint guides);
    QSize viewSize() const;

    // Look, shared by all canvases.
    static void setBackground(QColor start, QColor end, BackgroundType type, QPoint offset, const QString &file,
                              QSize gameSize);
    static QPixmap backgroundPicture();
    static QPoint backgroundOffset();
    static void setCrossHair(CrossHairType type, const QString &main, const QString &secondary,
                             const QString &extra);
    static QPixmap crossPicture(int cross);
    static void setupContactBoxes(QColor attack, QColor collision, float opacity);
    void setOnionSkin(bool enabled, OnionEffect effect, float opacity);
    void setOnionSkinSprite(const Sprite *sprite, QPoint position);

    // Items.
    void setSprites(SpriteProvider *sprites);
    SpriteProvider *spriteProvider() const;
    // The index of the cross, sprite info or box code `item`, or -1.
    int indexOfItem(ItemType type, void *item) const;
    QPointF itemPosition(ItemType type, uint index = 0) const;
    void setItemPosition(ItemType type, QPointF position, uint index = 0, bool update = true);
    void setItemPositionMode(ItemType type, unsigned char flags, uint parent = 0, uint index = 0);
    unsigned char itemPositionMode(ItemType type, uint index = 0) const;
    // Where the item's position point is on the view now.
    QPointF itemScreenPosition(ItemType type, uint index = 0) const;
    // The sprite's rectangle on the view as the last paint or hit test found it.
    QRectF spriteRect(uint index) const;
    int hitTest(QPoint point);

    // Contact boxes.
    void setContactBoxes(ContactBoxCode::BoxType type, ContactBoxesCode *boxes);
    const QList<BoxItem> &boxes(ContactBoxCode::BoxType type) const;
    ContactBoxCode *appendContactBox(ContactBoxCode::BoxType type, QRect rect);
    QList<ContactBoxCode *> selectedContactBoxes() const;
    void deselectContactBoxes();
    void removeSelectedContactBoxes();
    void moveSelectedContactBoxes(QPoint delta);
    void updateSelectedBoxes();
    QRect boxesSelectionRect() const;
    QRect boxScreenRect(ContactBoxCode::BoxType type, uint index) const;

    // Modes.
    ClickMode clickMode() const;
    void setPositioningMode();
    void setDrawContactBoxMode(ContactBoxCode::BoxType type);
    void setCaptureMode();

    // Renderer.
    void keyPressed(int key, Qt::KeyboardModifiers modifiers) override;
    void keyReleased(int key, Qt::KeyboardModifiers modifiers) override;
    void mousePressed(QPoint point, Qt::MouseButton button, Qt::KeyboardModifiers modifiers) override;
    void mouseReleased(QPoint point, Qt::MouseButton button, Qt::KeyboardModifiers modifiers) override;
    void mouseMoved(QPoint point, Qt::KeyboardModifiers modifiers) override;
    void mouseWheel(int delta) override;
    void sizeChanged(int width, int height) override;
    void render(QPainter &painter) override;
    QColor clearColor() const override;

signals:
    void itemMoved(Ovra::GraphicsRenderer::ItemType type, int index, QPoint position);
    void itemReleased(Ovra::GraphicsRenderer::ItemType type, int index, QPoint position);
    // The world position under the mouse.
    void cursorChanged(QPoint position);
    void colorCaptured(unsigned char index);
    void contactDrawingExit();

protected:
    static bool spriteOverGuides();
    static bool contactOverCross();
    OnionEffect onionEffect() const;
    float onionOpacity() const;

    // The sprite of the provider, drawn into its spriteRect.
    virtual void renderSprite(QPainter &painter, uint index) = 0;
    virtual void renderOnionSprite(QPainter &painter, const Sprite *sprite, const QRect &rect) = 0;
    // The same on OpenGL, between glBeginDrawImage and glEndDrawImage.
    virtual void glRenderSprite(uint index) = 0;
    virtual void glRenderOnionSprite(const Sprite *sprite, const QRect &rect) = 0;

private:
    friend class GraphicsRendererPrivate;
    std::unique_ptr<GraphicsRendererPrivate> d;
};

} // namespace Ovra

Q_DECLARE_METATYPE(Ovra::GraphicsRenderer::ItemType)
