#include "code/framecode.h"

namespace Ovra {

FrameCode::FrameCode(const QTextBlock &block, CodeNode *previous, ContactBoxesCode *attackBoxes,
                     ContactBoxesCode *collisionBoxes)
    : ParentCode(Frame, block, previous)
    , m_attackBoxes(attackBoxes)
    , m_collisionBoxes(collisionBoxes)
{
    joinFromBehind(Animation, Group);
}

FrameCode::~FrameCode()
{
    delete m_attackBoxes;
    delete m_collisionBoxes;
}

int FrameCode::firstLine() const
{
    const ParentCode *animation = parent();
    const int row = animation ? animation->childIndex(this) : -1;
    if (row > 0)
        return animation->childAt(uint(row - 1))->lineNo() + 1;
    return lineNo();
}

int FrameCode::index() const
{
    return parent() ? parent()->childIndex(this) : -1;
}

ContactBoxesCode *FrameCode::contactBoxes(ContactBoxCode::BoxType type) const
{
    return (type & 1) ? m_attackBoxes : m_collisionBoxes;
}

QStringList FrameCode::propertyNames() const
{
    return {QStringLiteral("Identifier"), QStringLiteral("Offset"),   QStringLiteral("Delay"),
            QStringLiteral("Scale"),      QStringLiteral("Angle"),    QStringLiteral("Flip"),
            QStringLiteral("LoopPoint")};
}

} // namespace Ovra
