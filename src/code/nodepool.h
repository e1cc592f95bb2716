#pragma once

#include "foundation/global.h"

#include <cstddef>

namespace Ovra {

// Memory for code nodes. Views keep raw node pointers in their model indexes, and an
// index may outlive its node; so node memory is never given back while the program
// runs. A freed block waits in a list of its size for the next node of that size,
// and a pointer can be asked whether it stands for a freed block.
class OVRA_EXPORT NodePool
{
public:
    static void *allocate(std::size_t size);
    // Puts a block taken from allocate() back into the list of its size.
    static void recycle(void *block);
    // True for a block that was recycled and not handed out again.
    static bool isFree(const void *block);
    // Bytes ever handed out as new blocks, header words included.
    static std::size_t totalAllocated();
    // Blocks waiting for reuse.
    static std::size_t freeCount();
};

} // namespace Ovra
