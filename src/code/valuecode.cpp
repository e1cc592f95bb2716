#include "code/valuecode.h"

#include "code/parentcode.h"

namespace Ovra {

ValueCode::ValueCode(Type type, const QTextBlock &block, CodeNode *previous, const QVariant &value)
    : CodeNode(Value, block, previous)
    , m_type(type)
    , m_raw(value)
{
    joinFromBehind(Group, Animation);
}

} // namespace Ovra
