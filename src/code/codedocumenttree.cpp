// The node tree of a code document: the root inside it, the model of the tree and the
// node files that show its top-level nodes by kind.

#include "code/codedocument.h"

#include "code/codedocument_p.h"
#include "code/codenodefile.h"
#include "code/groupcode.h"
#include "code/valuecode.h"
#include "foundation/interface.h"

namespace Ovra {

CodeDocumentRoot::CodeDocumentRoot(CodeDocument *document, short fileType)
    : RootCode(fileType)
    , m_document(document)
{
}

void CodeDocumentRoot::insertChild(CodeNode *child, uint row)
{
    RootCode::insertChild(child, row);
    m_document->insertChild(child, row);
}

void CodeDocumentRoot::removeChild(CodeNode *child)
{
    if (childIndex(child) < 0)
        return;
    m_document->removeChild(child);
    RootCode::removeChild(child);
}

void CodeDocumentRoot::childChanged(CodeNode *child)
{
    m_document->childChanged(child);
}

QIcon CodeDocumentRoot::nodeIcon(const CodeNode *node) const
{
    return m_document->nodeIcon(node);
}

bool CodeDocumentRoot::isModelShown() const
{
    const CodeDocumentPrivate *d = m_document->d;
    return d && d->modelEnabled && d->modelFreeze == 0;
}

void CodeDocumentPrivate::freezeModel()
{
    RootCode &root = document->m_root;
    if (modelFreeze == 0 && modelEnabled && publishedRows > 0) {
        root.beginRemoveItems(QModelIndex(), 0, publishedRows - 1);
        ++modelFreeze;
        publishedRows = 0;
        root.endRemoveItems();
    } else {
        ++modelFreeze;
    }
}

void CodeDocumentPrivate::unfreezeModel()
{
    RootCode &root = document->m_root;
    const int rows = int(root.childCount());
    if (modelFreeze == 1 && modelEnabled && rows > 0) {
        root.beginInsertItems(QModelIndex(), 0, rows - 1);
        --modelFreeze;
        publishedRows = rows;
        root.endInsertItems();
    } else {
        --modelFreeze;
        if (modelFreeze == 0 && modelEnabled)
            publishedRows = rows;
    }
}

QAbstractItemModel *CodeDocument::model()
{
    return &m_root;
}

RootCode *CodeDocument::root()
{
    return &m_root;
}

CodeNode *CodeDocument::nodeFromIndex(const QModelIndex &index) const
{
    return RootCode::nodeFromIndex(index);
}

// From the root down, each level's children from the last: the node on the line, or the
// nearest one before it, and into it when it holds children of its own.
QModelIndex CodeDocument::indexInLine(int line)
{
    QAbstractItemModel *model = this->model();
    const ParentCode *parent = root();
    QModelIndex parentIndex;
    QModelIndex found;
    while (parent) {
        const ParentCode *inner = nullptr;
        for (int row = int(parent->childCount()) - 1; row >= 0; --row) {
            CodeNode *child = parent->childAt(uint(row));
            const int at = child ? child->lineNo() : -1;
            if (at < 0 || at > line)
                continue;
            const QModelIndex index = model->index(row, 0, parentIndex);
            if (!index.isValid())
                return found;
            found = index;
            const auto *group = dynamic_cast<const ParentCode *>(child);
            if (at != line && group && group->childCount() > 0) {
                inner = group;
                parentIndex = index;
            }
            break;
        }
        parent = inner;
    }
    return found;
}

int CodeDocument::lineNo(const QModelIndex &index) const
{
    const CodeNode *node = nodeFromIndex(index);
    return CodeNode::isValid(node) ? node->lineNo() : -1;
}

CodeNode *CodeDocument::nodeInBlock(const QTextBlock &block) const
{
    const CodeBlockData *data = CodeDocumentPrivate::testBlockData(block);
    return data ? data->d->node : nullptr;
}

namespace {

uint nodeFileKey(int type, uint subType)
{
    return subType << 12 | uint(type);
}

uint nodeFileKey(const CodeNode *node)
{
    const uint subType = node->type() == CodeNode::Group ? static_cast<const GroupCode *>(node)->subType() : 0;
    return nodeFileKey(node->type(), subType);
}

} // namespace

QList<CodeNodeFile *> CodeDocumentPrivate::distinctNodeFiles() const
{
    QList<CodeNodeFile *> files;
    for (CodeNodeFile *file : nodeFiles) {
        if (!files.contains(file))
            files.append(file);
    }
    return files;
}

void CodeDocument::registerNodeFile(CodeNodeFile *file, int type, uint subType)
{
    const uint key = nodeFileKey(type, subType);
    d->nodeFiles.insert(key, file);
    addRef();
    uint index = 0;
    for (CodeNode *node = m_root.next(); node; node = node->next()) {
        if (nodeFileKey(node) == key)
            file->insertChild(node, index++);
    }
}

CodeNodeFile *CodeDocument::nodeFile(int type, uint subType) const
{
    return d->nodeFiles.value(nodeFileKey(type, subType));
}

bool CodeDocument::unregisterNodeFile(CodeNodeFile *file)
{
    bool had = false;
    for (auto it = d->nodeFiles.begin(); it != d->nodeFiles.end();) {
        if (it.value() == file) {
            it = d->nodeFiles.erase(it);
            had = true;
        } else {
            ++it;
        }
    }
    return had;
}

QIcon CodeDocument::nodeIcon(const CodeNode *node) const
{
    Interface *host = Interface::instance();
    const auto *value = node && node->type() == CodeNode::Value ? dynamic_cast<const ValueCode *>(node) : nullptr;
    if (!host || !value)
        return QIcon();
    switch (value->valueType()) {
    case ValueCode::String: return host->icon(QStringLiteral("code_string"));
    case ValueCode::Bool: return host->icon(QStringLiteral("code_bool"));
    case ValueCode::File: return host->icon(QStringLiteral("code_file"));
    case ValueCode::Date: return host->icon(QStringLiteral("code_date"));
    case ValueCode::Keyword:
    case ValueCode::KeywordVector: return host->icon(QStringLiteral("code_keyword"));
    case ValueCode::Float:
    case ValueCode::FloatVec2:
    case ValueCode::FloatVec3:
    case ValueCode::FloatVec4:
    case ValueCode::FloatVector: return host->icon(QStringLiteral("code_float"));
    case ValueCode::Int:
    case ValueCode::IntVec2:
    case ValueCode::IntVec3:
    case ValueCode::IntVec4: return host->icon(QStringLiteral("code_int"));
    default: return QIcon();
    }
}

void CodeDocument::insertChild(CodeNode *node, uint row)
{
    const uint key = nodeFileKey(node);
    // Its place in the file: the root rows before it that hold nodes of its kind.
    uint index = 0;
    const bool appended = row + 1 == m_root.childCount() && m_root.childAt(row) == node;
    if (appended && d->rootRowsCounted == row) {
        index = d->rootNodesByKind.value(key);
    } else {
        d->rootNodesByKind.clear();
        for (uint i = 0; i < row && i < m_root.childCount(); ++i) {
            const CodeNode *before = m_root.childAt(i);
            if (before != node)
                ++d->rootNodesByKind[nodeFileKey(before)];
        }
        index = d->rootNodesByKind.value(key);
    }
    if (appended) {
        ++d->rootNodesByKind[key];
        d->rootRowsCounted = row + 1;
    } else {
        d->rootRowsCounted = UINT_MAX;
    }
    if (CodeNodeFile *file = d->nodeFiles.value(key))
        file->insertChild(node, index);
}

void CodeDocument::removeChild(CodeNode *node)
{
    d->rootRowsCounted = UINT_MAX;
    // A node leaves the root while it ends, when only its type can still be read: every
    // file of its type hears of it, and only the one that holds it acts.
    for (auto it = d->nodeFiles.cbegin(); it != d->nodeFiles.cend(); ++it) {
        if ((it.key() & 0xFFF) == uint(node->type()))
            it.value()->removeChild(node);
    }
}

void CodeDocument::childChanged(CodeNode *node)
{
    // A change deep in the tree belongs to the file of its top-level node.
    const CodeNode *top = node;
    while (top->parent() && top->parent() != &m_root)
        top = top->parent();
    if (CodeNodeFile *file = d->nodeFiles.value(nodeFileKey(top)))
        file->childChanged(node);
}

} // namespace Ovra
