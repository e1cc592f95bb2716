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

void ParentCode::appendValue(const QString &text)
{
    CodeDocument *owner = document();
    if (!owner)
        return;
    const uint count = childCount();
    owner->insertAfter(count ? childAt(count - 1) : this, text, true);
}

} // namespace Ovra
