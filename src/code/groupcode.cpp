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
    return listedIndex(m_values, child);
}

CodeNode *GroupCode::childAt(uint index) const
{
    return m_values.value(int(index));
}

void GroupCode::insertChild(CodeNode *child, uint row)
{
    if (child->type() == Value)
        insertListed(m_values, child, row);
}

void GroupCode::removeChild(CodeNode *child)
{
    removeListed(m_values, child);
}

ValueCode *GroupCode::valueByName(const QString &name) const
{
    for (ValueCode *value : m_values) {
        if (value->name() == name)
            return value;
    }
    return nullptr;
}

QVariant GroupCode::value(const QString &name) const
{
    const ValueCode *found = valueByName(name);
    return found ? found->value() : QVariant();
}

void GroupCode::removeValue(uint index)
{
    if (ValueCode *found = valueAt(index))
        found->remove(true);
}

} // namespace Ovra
