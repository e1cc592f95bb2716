#include "code/rootcode.h"

#include "code/namedcode.h"

namespace Ovra {

QModelIndex RootCode::s_lastParent;

RootCode::RootCode(short fileType, QObject *parent)
    : TreeModel(parent)
    , ParentCode(Root, QTextBlock(), nullptr)
    , m_fileType(fileType)
{
}

RootCode::~RootCode()
{
    destroy();
}

void RootCode::release()
{
}

void RootCode::destroy()
{
    CodeNode *last = this;
    while (last->next())
        last = last->next();
    while (last != this) {
        CodeNode *before = last->previous();
        last->release();
        last = before;
    }
}

void RootCode::setVersion(ushort version, bool notify)
{
    if (version == m_version)
        return;
    m_version = version;
    if (notify)
        emit versionChanged();
}

void RootCode::setFileType(short fileType, bool notify)
{
    if (fileType == m_fileType)
        return;
    m_fileType = fileType;
    if (notify)
        emit typeChanged();
}

uint RootCode::childCount() const
{
    return uint(m_childs.size());
}

int RootCode::childIndex(const CodeNode *child) const
{
    if (!child || child->parent() != this)
        return -1;
    int row = keptRow(child);
    if (row < 0 || row >= m_rowsKept) {
        for (int i = m_rowsKept; i < m_childs.size(); ++i)
            keepRow(m_childs.at(i), i);
        m_rowsKept = m_childs.size();
        row = keptRow(child);
    }
    if (row >= 0 && row < m_childs.size() && m_childs.at(row) == child)
        return row;
    return m_childs.indexOf(const_cast<CodeNode *>(child));
}

CodeNode *RootCode::childAt(uint index) const
{
    return index < uint(m_childs.size()) ? m_childs.at(int(index)) : nullptr;
}

void RootCode::insertChild(CodeNode *child, uint row)
{
    if (ParentCode *old = child->parent(); old && old != this)
        old->removeChild(child);
    else if (old == this)
        return;
    const int at = qMin(int(row), m_childs.size());
    beginInsert(this, at);
    m_childs.insert(at, child);
    if (at == m_rowsKept && at + 1 == m_childs.size()) {
        keepRow(child, at);
        ++m_rowsKept;
    } else {
        rowsChangedFrom(at);
    }
    setParentOf(child, this);
    endInsert();
}

void RootCode::removeChild(CodeNode *child)
{
    const int row = childIndex(child);
    if (row < 0)
        return;
    beginRemove(this, row);
    m_childs.removeAt(row);
    rowsChangedFrom(row);
    keepRow(child, -1);
    setParentOf(child, nullptr);
    endRemove();
}

void RootCode::beginInsert(const ParentCode *parent, int row)
{
    if (isModelShown())
        beginInsertItems(indexOf(parent), row, row);
}

void RootCode::endInsert()
{
    if (isModelShown())
        endInsertItems();
}

void RootCode::beginRemove(const ParentCode *parent, int row)
{
    if (!isModelShown())
        return;
    s_lastParent = indexOf(parent);
    beginRemoveItems(s_lastParent, row, row);
}

void RootCode::endRemove()
{
    if (isModelShown())
        endRemoveItems();
}

void RootCode::changed(const ParentCode *parent, int row, int column)
{
    if (isModelShown() && row >= 0)
        itemChanged(index(row, column, indexOf(parent)));
}

QIcon RootCode::nodeIcon(const CodeNode *) const
{
    return QIcon();
}

bool RootCode::isModelShown() const
{
    return true;
}

QModelIndex RootCode::indexOf(const ParentCode *node) const
{
    if (!node || node == static_cast<const ParentCode *>(this))
        return QModelIndex();
    const ParentCode *up = node->parent();
    if (!up)
        return QModelIndex();
    const int row = up->childIndex(node);
    return row < 0 ? QModelIndex() : createIndex(row, 0, const_cast<ParentCode *>(node));
}

CodeNode *RootCode::nodeFromIndex(const QModelIndex &index)
{
    auto *node = static_cast<CodeNode *>(index.internalPointer());
    return index.isValid() && isValid(node) ? node : nullptr;
}

QModelIndex RootCode::index(int row, int column, const QModelIndex &parent) const
{
    if (!isModelShown() || !hasIndex(row, column, parent))
        return QModelIndex();
    const CodeNode *owner = parent.isValid() ? nodeFromIndex(parent) : this;
    const auto *holder = dynamic_cast<const ParentCode *>(owner);
    CodeNode *child = holder ? holder->childAt(uint(row)) : nullptr;
    return child ? createIndex(row, column, child) : QModelIndex();
}

QModelIndex RootCode::parent(const QModelIndex &index) const
{
    if (!index.isValid() || !isModelShown())
        return QModelIndex();
    const auto *node = static_cast<const CodeNode *>(index.internalPointer());
    if (!isValid(node))
        return s_lastParent.isValid() ? s_lastParent : QModelIndex();
    return indexOf(node->parent());
}

int RootCode::rowCount(const QModelIndex &parent) const
{
    if (parent.column() > 0 || !isModelShown())
        return 0;
    const CodeNode *owner = parent.isValid() ? nodeFromIndex(parent) : this;
    const auto *holder = dynamic_cast<const ParentCode *>(owner);
    return holder ? int(holder->childCount()) : 0;
}

QVariant RootCode::data(const QModelIndex &index, int role) const
{
    const CodeNode *node = isModelShown() ? nodeFromIndex(index) : nullptr;
    if (!node)
        return QVariant();
    if (role == Qt::DecorationRole)
        return nodeIcon(node);
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole)
        return QVariant();
    switch (node->type()) {
    case Group:
    case Value:
    case Animation:
        if (const auto *named = dynamic_cast<const NamedCode *>(node))
            return named->displayName();
        return QVariant();
    case Frame: {
        const auto *item = dynamic_cast<const PropertyItem *>(node);
        const QString identifier =
            item ? item->property(QStringLiteral("Identifier")).toString() : QString();
        if (!identifier.isEmpty())
            return tr("Frame - %1").arg(identifier);
        const int row = node->parent() ? node->parent()->childIndex(node) : -1;
        return tr("Frame %1").arg(row + 1);
    }
    default:
        return QVariant();
    }
}

} // namespace Ovra
