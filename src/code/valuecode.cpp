#include "code/valuecode.h"

#include "code/parentcode.h"

namespace Ovra {

ValueCode::ValueCode(Type type, const QTextBlock &block, CodeNode *previous, const QVariant &value)
    : CodeNode(Value, block, previous)
    , m_type(type)
    , m_raw(value)
{
    for (CodeNode *node = previous; node; node = node->previous()) {
        if (node->type() == Value) {
            if (ParentCode *group = node->parent())
                group->insertChild(this, uint(group->childIndex(node) + 1));
            return;
        }
        if (node->type() == Group) {
            static_cast<ParentCode *>(node)->insertChild(this, 0);
            return;
        }
        if (node->type() == Animation)
            return;
    }
}

} // namespace Ovra
