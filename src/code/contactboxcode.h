#pragma once

#include "code/codenode.h"
#include "project/propertyitem.h"

#include <QRect>

namespace Ovra {

class FrameCode;

// One attack or collision box of a frame. The core knows boxes only through these
// interfaces: how they are written is the engine's.
class OVRA_EXPORT ContactBoxCode : public CodeNode, public PropertyItem
{
public:
    enum BoxType { Collision = 0, Attack = 1 };

    ContactBoxCode(const QTextBlock &block, CodeNode *previous) : CodeNode(HitBox, block, previous) {}

    virtual BoxType boxType() const = 0;
    virtual QRect rect() const = 0;
    virtual void setRect(const QRect &rect) = 0;
};

// The boxes of one type of one frame.
class OVRA_EXPORT ContactBoxesCode
{
public:
    virtual ~ContactBoxesCode() = default;

    virtual FrameCode *frame() const = 0;
    virtual ContactBoxCode::BoxType boxType() const = 0;
    virtual uint count() const = 0;
    virtual ContactBoxCode *at(uint index) const = 0;
    virtual ContactBoxCode *append(const QRect &rect) = 0;
    virtual void remove(uint index) = 0;
    virtual void clear() = 0;
};

} // namespace Ovra
