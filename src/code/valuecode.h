#pragma once

#include "code/codenode.h"
#include "code/namedcode.h"

namespace Ovra {

// One value line of a group: a key with its data.
class OVRA_EXPORT ValueCode : public CodeNode, public NamedCode
{
public:
    // Finds its group by walking back: behind a value it joins that value's group one
    // place after it, right behind a group it becomes the group's first value, and
    // behind an animation it stays without a group.
    ValueCode(const QTextBlock &block, CodeNode *previous);
};

} // namespace Ovra
