#pragma once

#include "code/contactboxcode.h"
#include "code/parentcode.h"

#include <QPointF>

namespace Ovra {

class Sprite;

// One frame of an animation. The core fixes what editors and renderers ask of a frame;
// the engine's subclass reads and writes it in the engine's own syntax.
class OVRA_EXPORT FrameCode : public ParentCode, public PropertyItem
{
public:
    struct Blend
    {
        enum Mode { None = 0, Addition = 1, Subtraction = 2, Overlay = 3, HardLight = 4, Dodge = 5, Opacity = 6 };

        Mode mode = None;
        double source = 0.0;
        double destination = 0.0;
    };

    enum Flip { None = 0, Horizontal = 1, Vertical = 2, Both = 3 };

    // Joins the animation above it. The frame owns its two box lists.
    FrameCode(const QTextBlock &block, CodeNode *previous, ContactBoxesCode *attackBoxes,
              ContactBoxesCode *collisionBoxes);
    ~FrameCode() override;

    // A frame after the first owns the lines from the one behind the frame before it,
    // so that lines between two frames travel with the second.
    int firstLine() const override;

    // The place in the animation, or -1.
    int index() const;
    // The attack boxes when bit 0 of the type is set, else the collision boxes.
    ContactBoxesCode *contactBoxes(ContactBoxCode::BoxType type) const;
    QPoint offset() const { return QPoint(offsetX(), offsetY()); }

    QStringList propertyNames() const override;

    virtual Sprite *sprite() const = 0;
    // The engine's reference to the sprite, as written in the text.
    virtual QVariant spriteId() const = 0;
    virtual int offsetX() const = 0;
    virtual void setOffsetX(int x) = 0;
    virtual int offsetY() const = 0;
    virtual void setOffsetY(int y) = 0;
    virtual void setSpriteId(const QVariant &id) = 0;
    virtual QString identifier() const = 0;
    virtual void setIdentifier(const QString &identifier) = 0;
    // In ticks; negative means for ever.
    virtual int delay() const = 0;
    virtual void setDelay(int ticks) = 0;
    virtual double scaleX() const = 0;
    virtual void setScaleX(double scale) = 0;
    virtual double scaleY() const = 0;
    virtual void setScaleY(double scale) = 0;
    virtual QPointF scale() const = 0;
    virtual void setScale(const QPointF &scale) = 0;
    // In degrees.
    virtual double angle() const = 0;
    virtual void setAngle(double degrees) = 0;
    virtual bool isLoopPoint() const = 0;
    virtual quint8 flipFlags() const = 0;
    virtual void setFlipFlags(uint flags) = 0;
    virtual Blend::Mode blendMode() const = 0;
    virtual void setBlendMode(Blend::Mode mode) = 0;
    virtual double blendSource() const = 0;
    virtual void setBlendSource(double factor) = 0;
    virtual double blendDestination() const = 0;
    virtual void setBlendDestination(double factor) = 0;
    virtual Blend blend() const = 0;
    virtual void setBlend(const Blend &blend) = 0;
    virtual void setLoopPoint(bool loop) = 0;
    // Engine-defined bits for what is interpolated towards the next frame.
    virtual uint interpolation() const = 0;
    virtual void setInterpolation(uint flags) = 0;

private:
    ContactBoxesCode *m_attackBoxes;
    ContactBoxesCode *m_collisionBoxes;
};

} // namespace Ovra
