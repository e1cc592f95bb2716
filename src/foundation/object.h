#pragma once

#include "foundation/global.h"

namespace Ovra {

// Root of the reference-counted model classes. Users never delete a model object;
// they release their reference and the class decides how it ends.
class OVRA_EXPORT Object
{
public:
    virtual void release() = 0;
    virtual ~Object() = default;
};

} // namespace Ovra
