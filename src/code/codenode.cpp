#include "code/codenode.h"

#include "code/codedocument.h"
#include "code/codetext.h"
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
    // Out of the tree while the node is still whole: views and node files that read
    // the row as it goes find every operation of the node's own class. (The destructor
    // does the same for a node deleted directly, when only the base is left.)
    if (m_parent)
        m_parent->removeChild(this);
    delete this;
}

void CodeNode::joinFromBehind(Type headerType, Type stopType)
{
    for (CodeNode *node = m_previous; node; node = node->m_previous) {
        if (node->type() == type()) {
            if (ParentCode *parent = node->parent())
                parent->insertChild(this, uint(parent->childIndex(node) + 1));
            return;
        }
        if (node->type() == headerType) {
            static_cast<ParentCode *>(node)->insertChild(this, 0);
            return;
        }
        if (node->type() == stopType)
            return;
    }
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
    if (m_block.isValid())
        return dynamic_cast<CodeDocument *>(const_cast<QTextDocument *>(m_block.document()));
    return m_parent ? m_parent->document() : nullptr;
}

namespace {

// Up to the end of `block` with its line end; the last line has none to take.
void selectTo(QTextCursor &cursor, const QTextBlock &block)
{
    const int end = block.position() + block.length();
    cursor.setPosition(qMin(end, block.document()->characterCount() - 1), QTextCursor::KeepAnchor);
}

} // namespace

QTextCursor CodeNode::select() const
{
    if (!m_block.isValid())
        return QTextCursor();
    QTextCursor cursor(m_block);
    selectTo(cursor, m_block);
    return cursor;
}

QTextCursor CodeNode::selectAll() const
{
    const QTextDocument *text = m_block.isValid() ? m_block.document() : nullptr;
    const CodeDocument *owner = document();
    if (!text && owner)
        text = owner;
    if (!text)
        return QTextCursor();
    const QTextBlock first = text->findBlockByNumber(firstLine());
    if (!first.isValid())
        return QTextCursor();
    QTextCursor cursor(first);
    const QTextBlock last = text->findBlockByNumber(lastLine());
    if (last.isValid())
        selectTo(cursor, last);
    else
        cursor.setPosition(text->characterCount() - 1, QTextCursor::KeepAnchor);
    return cursor;
}

QString CodeNode::code() const
{
    return selectAll().selectedText().replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
}

void CodeNode::change(const QString &text)
{
    CodeDocument *owner = document();
    if (!owner || !m_block.isValid())
        return;
    QTextCursor cursor(m_block);
    cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
    const bool preserve = owner->option(QStringLiteral("preserve_code_formatting"), false).toBool();
    owner->insertOnCursor(changedLine(m_block.text(), text, owner->commentMarker(), preserve), cursor);
}

void CodeNode::remove(bool all)
{
    QTextCursor cursor = all ? selectAll() : select();
    if (CodeDocument *owner = document(); owner && !cursor.isNull()) {
        owner->insertOnCursor(QString(), cursor);
        return;
    }
    // Without a document there is no text to edit: the node goes, with its children
    // first if all of it should go.
    if (all) {
        if (auto *self = dynamic_cast<ParentCode *>(this)) {
            while (CodeNode *child = self->childAt(0))
                child->remove(true);
        }
    }
    release();
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
