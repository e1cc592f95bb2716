#pragma once

#include "foundation/object.h"

#include <QTextBlock>
#include <QTextCursor>
#include <QVariant>

namespace Ovra {

class CodeDocument;
class ParentCode;

// One parsed line of a code document. Nodes hang in two structures at once: a doubly
// linked list in document order, which all position-dependent work walks, and a tree
// of parents and children, which models and scripts see. A node never edits the text
// by itself except through change(), remove() and the document's insert operations;
// the tree follows the text by parsing.
//
// Node memory comes from NodePool and is never given back during the run, so that a
// model index that outlives its node can be recognised with isValid().
class OVRA_EXPORT CodeNode : public Object
{
public:
    // Bit values, so that a mask of types can stop a walk.
    enum Type { Root = 1, Group = 2, Value = 4, Animation = 8, Frame = 16, HitBox = 32 };

    static void *operator new(std::size_t size);
    static void operator delete(void *block);

    // Links the node in directly behind `previous`; only a root passes null.
    CodeNode(Type type, const QTextBlock &block, CodeNode *previous);
    CodeNode(const CodeNode &) = delete;
    CodeNode &operator=(const CodeNode &) = delete;

    // Ends the node; its memory waits in the pool for the next node of its size.
    void release() override;
    ~CodeNode() override;
    virtual int firstLine() const;
    virtual int lastLine() const;
    virtual CodeDocument *document() const;
    virtual void remove(bool all);

    Type type() const { return m_type; }
    QTextBlock block() const { return m_block; }
    ParentCode *parent() const { return m_parent; }
    CodeNode *next() const { return m_next; }
    CodeNode *previous() const { return m_previous; }

    // The first node of `type` along the list (or up the parents); a node on the way
    // whose type is in `stopMask` ends the walk with null.
    CodeNode *next(Type type, int stopMask) const;
    CodeNode *previous(Type type, int stopMask) const;
    ParentCode *parent(Type type, int stopMask) const;

    // The line of the node; an implicit node (one without a line of its own) answers
    // the line of the first following node that has one, or -1.
    int lineNo() const;

    // False for null and for a node that has been released.
    static bool isValid(const CodeNode *node);

    // The node's line with its line end, and everything from firstLine() to lastLine().
    QTextCursor select() const;
    QTextCursor selectAll() const;
    // The text of selectAll().
    QString code() const;
    // Replaces the node's line; a trailing comment survives, and with the option
    // "preserve_code_formatting" the columns of the old line too.
    void change(const QString &text);

protected:
    virtual void valueChanged(const QVariant &value);
    virtual void changed(const ParentCode *parent, int row, int column);

    void setBlock(const QTextBlock &block) { m_block = block; }
    // For a child's constructor: walks back from the node before it. Behind a node of its
    // own type it joins that node's parent one place after it (or stays alone if that one
    // has none); right behind a `headerType` node it becomes its first child; a
    // `stopType` node leaves it without a parent. Other nodes are passed over.
    void joinFromBehind(Type headerType, Type stopType);

private:
    friend class ParentCode;
    friend class CodeDocumentPrivate;
    // Takes the node out of the document-order list; it keeps its own links, so that
    // linkBack() can put it where it was.
    void unlink();
    void linkBack();
    void clearLinks();

    QTextBlock m_block;
    ParentCode *m_parent = nullptr;
    CodeNode *m_previous = nullptr;
    CodeNode *m_next = nullptr;
    Type m_type;
    // The node's row under its parent as the parent last numbered it; a parent that keeps
    // rows this way tells whether it is still true (it sits in the padding after m_type).
    mutable int m_row = -1;
};

} // namespace Ovra
