#include "code/parentcode.h"

#include "code/codedocument.h"

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

void ParentCode::insertRootChild(CodeNode *node)
{
    // The document knows its root; only a tree without one has to walk to the head.
    ParentCode *root = nullptr;
    if (CodeDocument *owner = node->document()) {
        root = owner->root();
    } else {
        CodeNode *first = node;
        while (first->previous())
            first = first->previous();
        if (first->type() == Root)
            root = static_cast<ParentCode *>(first);
    }
    if (!root)
        return;
    uint row = root->childCount();
    for (CodeNode *after = node->next(); after; after = after->next()) {
        if (after->parent() == root) {
            row = uint(root->childIndex(after));
            break;
        }
    }
    root->insertChild(node, row);
}

void ParentCode::adoptFollowing(Type childType, Type orphanType)
{
    for (CodeNode *node = next(); node; node = node->next()) {
        if (node->type() == Group || node->type() == Animation)
            break;
        if (node->type() == childType)
            insertChild(node, childCount());
        else if (node->type() == orphanType && node->parent())
            node->parent()->removeChild(node);
    }
}

void ParentCode::releaseLines()
{
    // Out of the list first, so that the walks back do not meet this header. The parse
    // pass may have taken it out already; a node keeps its own links for this.
    unlink();
    while (CodeNode *child = childAt(0))
        removeChild(child);
    for (CodeNode *node = next(); node; node = node->next()) {
        if (node->type() == Group || node->type() == Animation)
            break;
        if (node->parent())
            continue;
        if (node->type() == Value)
            node->joinFromBehind(Group, Animation);
        else if (node->type() == Frame)
            node->joinFromBehind(Animation, Group);
    }
}

void ParentCode::appendValue(const QString &text)
{
    CodeDocument *owner = document();
    if (!owner)
        return;
    const uint count = childCount();
    owner->insertAfter(count ? childAt(count - 1) : this, text, true);
}

} // namespace Ovra
