#include "code/nodepool.h"

#include <QList>
#include <QMap>
#include <QSet>

#include <cstdlib>
#include <new>

namespace Ovra {
namespace {

// Each block starts with one header word that holds its total size; the caller gets
// the memory behind it, aligned as malloc aligns.
constexpr std::size_t HeaderSize = alignof(std::max_align_t);

struct Pool
{
    QMap<std::size_t, QList<void *>> freeBySize;
    QSet<const void *> free; // the same blocks, for a quick look-up
    std::size_t total = 0;
};

// Deliberately never destroyed: nodes released during static destruction still
// find their pool.
Pool &pool()
{
    static Pool *instance = new Pool;
    return *instance;
}

std::size_t &header(void *block)
{
    return *reinterpret_cast<std::size_t *>(static_cast<char *>(block) - HeaderSize);
}

} // namespace

void *NodePool::allocate(std::size_t size)
{
    Pool &p = pool();
    const std::size_t need = size + HeaderSize;
    auto it = p.freeBySize.find(need);
    if (it != p.freeBySize.end() && !it->isEmpty()) {
        void *block = it->takeLast();
        p.free.remove(block);
        return block;
    }
    char *memory = static_cast<char *>(std::malloc(need));
    if (!memory)
        throw std::bad_alloc();
    p.total += need;
    void *block = memory + HeaderSize;
    header(block) = need;
    return block;
}

void NodePool::recycle(void *block)
{
    if (!block)
        return;
    Pool &p = pool();
    if (p.free.contains(block))
        return; // already waiting: a second release must not hand it out twice
    p.freeBySize[header(block)].append(block);
    p.free.insert(block);
}

bool NodePool::isFree(const void *block)
{
    return pool().free.contains(block);
}

std::size_t NodePool::totalAllocated()
{
    return pool().total;
}

std::size_t NodePool::freeCount()
{
    return std::size_t(pool().free.size());
}

} // namespace Ovra
