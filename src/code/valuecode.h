#pragma once

#include "code/codenode.h"
#include "code/namedcode.h"

namespace Ovra {

// One value line of a group: a key with its data.
class OVRA_EXPORT ValueCode : public CodeNode, public NamedCode
{
public:
    enum Type {
        Unknown = 0,
        String = 3,
        Bool = 4,
        File = 5,
        Date = 6,
        Keyword = 7,
        KeywordVector = 8,
        Float = 9,
        FloatVec2 = 10,
        FloatVec3 = 11,
        FloatVec4 = 12,
        FloatVector = 13,
        Int = 14,
        IntVec2 = 15,
        IntVec3 = 16,
        IntVec4 = 17,
    };

    // Finds its group by walking back: behind a value it joins that value's group one
    // place after it, right behind a group it becomes the group's first value, and
    // behind an animation it stays without a group.
    ValueCode(Type type, const QTextBlock &block, CodeNode *previous, const QVariant &value);

    Type valueType() const { return m_type; }
    QVariant rawValue() const { return m_raw; }

private:
    Type m_type;
    QVariant m_raw;
};

} // namespace Ovra
