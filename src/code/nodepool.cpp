#include "code/nodepool.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <vector>

namespace Ovra {
namespace {

// Every block starts with one header word: its size in bytes, header included, with
// the lowest bit set while the block waits for reuse. Sizes are multiples of the
// alignment, so that bit is free. The caller gets the memory behind the header.
constexpr std::size_t HeaderSize = alignof(std::max_align_t);
constexpr std::size_t FreeBit = 1;
// Blocks are cut from slabs of this size: a document of many lines makes its nodes
// without a call to malloc each, and a pointer can be told to be ours by its slab.
constexpr std::size_t SlabSize = 256 * 1024;

struct Slab
{
    const char *begin;
    const char *end;
};

struct Pool
{
    std::vector<Slab> slabs; // ordered by address
    char *cursor = nullptr;
    char *limit = nullptr;
    std::vector<std::vector<void *>> freeBySize; // indexed by size / HeaderSize
    std::size_t total = 0;
    std::size_t waiting = 0;
};

// Deliberately never destroyed: nodes released during static destruction still
// find their pool.
Pool &pool()
{
    static Pool *instance = new Pool;
    return *instance;
}

std::size_t &header(const void *block)
{
    return *reinterpret_cast<std::size_t *>(const_cast<char *>(static_cast<const char *>(block)) - HeaderSize);
}

void newSlab(Pool &p, std::size_t atLeast)
{
    const std::size_t size = std::max(SlabSize, atLeast);
    char *memory = static_cast<char *>(std::malloc(size));
    if (!memory)
        throw std::bad_alloc();
    const Slab slab{memory, memory + size};
    const auto at = std::upper_bound(p.slabs.begin(), p.slabs.end(), slab,
                                     [](const Slab &a, const Slab &b) { return a.begin < b.begin; });
    p.slabs.insert(at, slab);
    p.cursor = memory;
    p.limit = memory + size;
}

bool isPoolBlock(const Pool &p, const void *block)
{
    const char *address = static_cast<const char *>(block);
    auto after = std::upper_bound(p.slabs.begin(), p.slabs.end(), address,
                                  [](const char *a, const Slab &slab) { return a < slab.begin; });
    if (after == p.slabs.begin())
        return false;
    const Slab &slab = *(after - 1);
    return address >= slab.begin + HeaderSize && address < slab.end
           && (reinterpret_cast<std::uintptr_t>(address) % HeaderSize) == 0;
}

} // namespace

void *NodePool::allocate(std::size_t size)
{
    Pool &p = pool();
    const std::size_t need = (size + 2 * HeaderSize - 1) / HeaderSize * HeaderSize;
    const std::size_t index = need / HeaderSize;
    if (index < p.freeBySize.size() && !p.freeBySize[index].empty()) {
        void *block = p.freeBySize[index].back();
        p.freeBySize[index].pop_back();
        header(block) = need;
        --p.waiting;
        return block;
    }
    if (std::size_t(p.limit - p.cursor) < need)
        newSlab(p, need);
    void *block = p.cursor + HeaderSize;
    p.cursor += need;
    p.total += need;
    header(block) = need;
    return block;
}

void NodePool::recycle(void *block)
{
    if (!block)
        return;
    Pool &p = pool();
    std::size_t &word = header(block);
    if (word & FreeBit)
        return; // already waiting: a second release must not hand it out twice
    word |= FreeBit;
    const std::size_t index = word / HeaderSize;
    if (index >= p.freeBySize.size())
        p.freeBySize.resize(index + 1);
    p.freeBySize[index].push_back(block);
    ++p.waiting;
}

bool NodePool::isFree(const void *block)
{
    const Pool &p = pool();
    return block && isPoolBlock(p, block) && (header(block) & FreeBit);
}

std::size_t NodePool::totalAllocated()
{
    return pool().total;
}

std::size_t NodePool::freeCount()
{
    return pool().waiting;
}

} // namespace Ovra
