#include "code/parentcode.h"

namespace Ovra {

uint ParentCode::childCount() const
{
    return 0;
}

int ParentCode::childIndex(const CodeNode *) const
{
    return -1;
}

CodeNode *ParentCode::childAt(uint) const
{
    return nullptr;
}

void ParentCode::insertChild(CodeNode *child, uint)
{
    if (ParentCode *old = child->parent(); old && old != this)
        old->removeChild(child);
    setParentOf(child, this);
}

void ParentCode::removeChild(CodeNode *child)
{
    if (child->parent() == this)
        setParentOf(child, nullptr);
}

void ParentCode::childChanged(CodeNode *child)
{
    if (ParentCode *up = parent())
        up->childChanged(child);
}

void ParentCode::beginInsert(const ParentCode *parent, int row)
{
    if (ParentCode *up = this->parent())
        up->beginInsert(parent, row);
}

void ParentCode::endInsert()
{
    if (ParentCode *up = parent())
        up->endInsert();
}

void ParentCode::beginRemove(const ParentCode *parent, int row)
{
    if (ParentCode *up = this->parent())
        up->beginRemove(parent, row);
}

void ParentCode::endRemove()
{
    if (ParentCode *up = parent())
        up->endRemove();
}

} // namespace Ovra
