#pragma once

#include "code/codenode.h"

#include <QList>

namespace Ovra {

// A node that can have children. The base keeps none: it only sets or clears a
// child's parent, and passes row announcements up to the root, which makes model
// signals of them.
class OVRA_EXPORT ParentCode : public CodeNode
{
public:
    using CodeNode::CodeNode;

    virtual uint childCount() const;
    virtual int childIndex(const CodeNode *child) const;
    virtual CodeNode *childAt(uint index) const;
    // Takes the child from its old parent first.
    virtual void insertChild(CodeNode *child, uint row);
    virtual void removeChild(CodeNode *child);
    virtual void childChanged(CodeNode *child);
    virtual void beginInsert(const ParentCode *parent, int row);
    virtual void endInsert();
    virtual void beginRemove(const ParentCode *parent, int row);
    virtual void endRemove();

    // Files a new top-level node under the root, at the row that keeps the root's rows in
    // document order: before the first following node that is a child of the root.
    void insertRootChild(CodeNode *node);
    // A new line behind the last child, or behind this node without children.
    void appendValue(const QString &text);

protected:
    // For a header's constructor: takes the following nodes of `childType`, up to the next
    // group or animation, and frees those of `orphanType` on the way from their parents.
    // This is how a header line typed back after an edit takes its children back.
    void adoptFollowing(Type childType, Type orphanType);
    // For a header's destructor: lets go of the children, and lets every line up to the
    // next header find its parent again as if it had just been parsed. Values fall to the
    // group above, frames to the animation above, unless another header stands between.
    // No line is parsed again for this.
    void releaseLines();

    // For parents that keep their children of one type in a list: the row operations,
    // with their announcements to the views.
    template <typename Child>
    int listedIndex(const QList<Child *> &list, const CodeNode *child) const
    {
        for (int i = 0; i < list.size(); ++i) {
            if (static_cast<const CodeNode *>(list.at(i)) == child)
                return i;
        }
        return -1;
    }
    template <typename Child>
    void insertListed(QList<Child *> &list, CodeNode *child, uint row)
    {
        if (ParentCode *old = child->parent())
            old->removeChild(child);
        const int at = qMin(int(row), list.size());
        beginInsert(this, at);
        list.insert(at, static_cast<Child *>(child));
        setParentOf(child, this);
        endInsert();
    }
    template <typename Child>
    void removeListed(QList<Child *> &list, CodeNode *child)
    {
        const int row = listedIndex(list, child);
        if (row < 0)
            return;
        beginRemove(this, row);
        list.removeAt(row);
        setParentOf(child, nullptr);
        endRemove();
    }

    friend class CodeNode;
    static void setParentOf(CodeNode *child, ParentCode *parent) { child->m_parent = parent; }
    static int keptRow(const CodeNode *child) { return child->m_row; }
    static void keepRow(const CodeNode *child, int row) { child->m_row = row; }
};

} // namespace Ovra
