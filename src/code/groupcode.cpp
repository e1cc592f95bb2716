#include "code/groupcode.h"

#include "code/valuecode.h"

#include <QTextDocument>

namespace Ovra {

GroupCode::GroupCode(const QTextBlock &block, CodeNode *previous, uint subType)
    : ParentCode(Group, block, previous)
    , m_subType(subType)
{
    insertRootChild(this);
    adoptFollowing(Value, Frame);
}

GroupCode::~GroupCode()
{
    releaseLines();
}

int GroupCode::lastLine() const
{
    const QTextDocument *document = block().document();
    if (!document)
        return -1;
    const bool nested = parent() && parent()->type() == Group;
    for (CodeNode *node = next(); node; node = node->next()) {
        if (node->type() == Animation)
            return node->lineNo() - 1;
        if (node->type() == Group) {
            // A group inside a group ends only a group that is itself nested.
            const bool followingNested = node->parent() && node->parent()->type() == Group;
            if (nested || !followingNested)
                return node->lineNo() - 1;
        }
    }
    return document->lineCount();
}

uint GroupCode::childCount() const
{
    return uint(m_values.size());
}

int GroupCode::childIndex(const CodeNode *child) const
{
    for (int i = 0; i < m_values.size(); ++i) {
        if (static_cast<const CodeNode *>(m_values.at(i)) == child)
            return i;
    }
    return -1;
}

CodeNode *GroupCode::childAt(uint index) const
{
    return m_values.value(int(index));
}

void GroupCode::insertChild(CodeNode *child, uint row)
{
    if (child->type() != Value)
        return;
    if (ParentCode *old = child->parent())
        old->removeChild(child);
    const int at = qMin(int(row), m_values.size());
    beginInsert(this, at);
    m_values.insert(at, static_cast<ValueCode *>(child));
    setParentOf(child, this);
    endInsert();
}

void GroupCode::removeChild(CodeNode *child)
{
    const int row = childIndex(child);
    if (row < 0)
        return;
    beginRemove(this, row);
    m_values.removeAt(row);
    setParentOf(child, nullptr);
    endRemove();
}

ValueCode *GroupCode::valueByName(const QString &name) const
{
    for (ValueCode *value : m_values) {
        if (value->name() == name)
            return value;
    }
    return nullptr;
}

} // namespace Ovra
