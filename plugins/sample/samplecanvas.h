#pragma once

// The animation canvas of the sample engine: the sprites of a sprite container drawn the
// way the engine shows a frame (flips, scale, angle and blend), on OpenGL or with the
// painter. Indexed sprites go to the card as indices with their palette beside them, so
// that a palette edit costs one small upload and never a new sprite texture.
#include "code/framecode.h"
#include "render/graphicsrenderer.h"

#include <QList>
#include <QPointer>
#include <QVector>

#include <memory>

namespace Ovra {
class Sprite;
class Sprites;
} // namespace Ovra

class SampleCanvasCache;

// The sprites of the frames shown: each frame's sprite stands with its axis on the
// frame's offset from the origin, mirrored about the axis when the frame is flipped.
class SampleFrameSprites : public Ovra::GraphicsRenderer::SpriteProvider
{
public:
    struct Shown
    {
        const Ovra::Sprite *sprite = nullptr;
        quint8 flip = 0;
        double angle = 0.0; // degrees, counter-clockwise on screen
        Ovra::FrameCode::Blend blend;
        Info info;
    };

    // Replaces what is shown by the frames; a frame without a sprite shows nothing.
    void setFrames(const QList<Ovra::FrameCode *> &frames);
    void clear() { m_shown.clear(); }
    const Shown &shown(uint index) const { return m_shown.at(int(index)); }

    uint count() const override { return uint(m_shown.size()); }
    int colorIndexAt(uint index, const QPoint &pixel) const override;
    Info &item(uint index) override { return m_shown[int(index)].info; }

private:
    QVector<Shown> m_shown;
};

class SampleCanvas : public Ovra::GraphicsRenderer
{
    Q_OBJECT

public:
    explicit SampleCanvas(QObject *parent = nullptr);
    ~SampleCanvas() override;

    // The container whose sprites are drawn; its textures are dropped when sprites come,
    // go or move, and checked again (pixels and palette) when one changes.
    void setContainer(Ovra::Sprites *container);
    Ovra::Sprites *container() const;

    // Shows the frame's sprite and its attack and collision boxes; null shows nothing.
    void showFrame(Ovra::FrameCode *frame);
    // Several frames at once, each at its own offset; their boxes aren't shown.
    void showFrames(const QList<Ovra::FrameCode *> &frames);
    SampleFrameSprites &frameSprites();

    // How many sprites have textures (or pictures, on the raster road) ready now.
    int cachedSprites() const;

    void render(QPainter &painter) override;

protected:
    void renderSprite(QPainter &painter, uint index) override;
    void renderOnionSprite(QPainter &painter, const Ovra::Sprite *sprite, const QRect &rect) override;
    void glRenderSprite(uint index) override;
    void glRenderOnionSprite(const Ovra::Sprite *sprite, const QRect &rect) override;

private:
    void containerChanged();
    void containerRebuilt();
    // The packet of a picture in the rectangle, turned about the axis point.
    void glDraw(const Ovra::Sprite *sprite, const QRectF &rect, quint8 flip, double angle, QPointF axis,
                const Ovra::FrameCode::Blend &blend, quint8 effect, float opacity);
    void paint(QPainter &painter, const Ovra::Sprite *sprite, const QRectF &rect, quint8 flip, double angle,
               QPointF axis, const Ovra::FrameCode::Blend &blend, quint8 effect, float opacity);

    SampleFrameSprites m_sprites;
    std::unique_ptr<SampleCanvasCache> m_cache;
    QPointer<Ovra::Sprites> m_container;
    QList<QMetaObject::Connection> m_connections;
};
