#include "code/codenode.h"

#include "code/nodepool.h"
#include "code/parentcode.h"

namespace Ovra {

void *CodeNode::operator new(std::size_t size)
{
    return NodePool::allocate(size);
}

void CodeNode::operator delete(void *block)
{
    NodePool::recycle(block);
}

CodeNode::CodeNode(Type type, const QTextBlock &block, CodeNode *previous)
    : m_block(block)
    , m_type(type)
{
    if (!previous)
        return;
    m_previous = previous;
    m_next = previous->m_next;
    previous->m_next = this;
    if (m_next)
        m_next->m_previous = this;
}

void CodeNode::release()
{
    delete this;
}

CodeNode::~CodeNode()
{
    if (m_parent)
        m_parent->removeChild(this);
    unlink();
    clearLinks();
}

void CodeNode::unlink()
{
    if (m_previous && m_previous->m_next == this)
        m_previous->m_next = m_next;
    if (m_next && m_next->m_previous == this)
        m_next->m_previous = m_previous;
}

void CodeNode::linkBack()
{
    if (m_previous)
        m_previous->m_next = this;
    if (m_next)
        m_next->m_previous = this;
}

void CodeNode::clearLinks()
{
    m_previous = m_next = nullptr;
}

int CodeNode::firstLine() const
{
    return lineNo();
}

int CodeNode::lastLine() const
{
    return lineNo();
}

CodeDocument *CodeNode::document() const
{
    return m_parent ? m_parent->document() : nullptr;
}

void CodeNode::remove(bool)
{
}

namespace {

// The first node of `type` along `step`, or null where a node of `stopMask` comes first.
CodeNode *walk(CodeNode *node, CodeNode *(CodeNode::*step)() const, CodeNode::Type type, int stopMask)
{
    for (; node; node = (node->*step)()) {
        if (node->type() == type)
            return node;
        if (node->type() & stopMask)
            return nullptr;
    }
    return nullptr;
}

} // namespace

CodeNode *CodeNode::next(Type type, int stopMask) const
{
    return walk(m_next, &CodeNode::next, type, stopMask);
}

CodeNode *CodeNode::previous(Type type, int stopMask) const
{
    return walk(m_previous, &CodeNode::previous, type, stopMask);
}

ParentCode *CodeNode::parent(Type type, int stopMask) const
{
    for (ParentCode *node = m_parent; node; node = node->parent()) {
        if (node->type() == type)
            return node;
        if (node->type() & stopMask)
            return nullptr;
    }
    return nullptr;
}

int CodeNode::lineNo() const
{
    for (const CodeNode *node = this; node; node = node->m_next) {
        if (node->m_block.isValid())
            return node->m_block.blockNumber();
    }
    return -1;
}

bool CodeNode::isValid(const CodeNode *node)
{
    return node && !NodePool::isFree(node);
}

void CodeNode::valueChanged(const QVariant &)
{
    if (!m_parent)
        return;
    m_parent->childChanged(this);
    changed(m_parent, m_parent->childIndex(this), 0);
}

void CodeNode::changed(const ParentCode *parent, int row, int column)
{
    // Passes up until the root turns it into a model signal.
    if (m_parent)
        m_parent->changed(parent, row, column);
}

} // namespace Ovra
