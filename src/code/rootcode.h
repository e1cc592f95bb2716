#pragma once

#include "code/parentcode.h"
#include "foundation/treemodel.h"

#include <QIcon>
#include <QList>

namespace Ovra {

// The root of a parsed code tree and the tree's item model. Model indexes carry raw
// node pointers; a pointer whose node has been released is recognised through the
// node pool and answered with nothing.
class OVRA_EXPORT RootCode : public TreeModel, public ParentCode
{
    Q_OBJECT
public:
    explicit RootCode(short fileType = 0, QObject *parent = nullptr);
    ~RootCode() override;

    // A root ends with its owner, never by release.
    void release() override;
    // Releases every node of the list, from the last to the first, root excepted.
    void destroy();

    ushort version() const { return m_version; }
    short fileType() const { return m_fileType; }
    void setVersion(ushort version, bool notify);
    void setFileType(short fileType, bool notify);

    uint childCount() const override;
    int childIndex(const CodeNode *child) const override;
    CodeNode *childAt(uint index) const override;
    void insertChild(CodeNode *child, uint row) override;
    void removeChild(CodeNode *child) override;
    void beginInsert(const ParentCode *parent, int row) override;
    void endInsert() override;
    void beginRemove(const ParentCode *parent, int row) override;
    void endRemove() override;

    QModelIndex index(int row, int column, const QModelIndex &parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex &index) const override;
    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

    // The node behind an index of this model, or null for the root and stale indexes.
    static CodeNode *nodeFromIndex(const QModelIndex &index);
    // The index of a parent node; invalid for the root.
    QModelIndex indexOf(const ParentCode *node) const;

    // The parent of the rows removed last: lets views find the parent of a node that
    // has already gone.
    static QModelIndex s_lastParent;

signals:
    void versionChanged();
    void typeChanged();

protected:
    void changed(const ParentCode *parent, int row, int column) override;
    // The icon of a node; the document decides.
    virtual QIcon nodeIcon(const CodeNode *node) const;
    // While false the model shows nothing of the tree (a document freezes it during
    // large changes).
    virtual bool isModelShown() const;

private:
    // Each child keeps its row; the rows of the first m_rowsKept children are true. Appends
    // keep them all; an insertion or removal in the middle makes the rest be numbered again
    // when a row is next asked for, so a load never searches and an edit pays once.
    void rowsChangedFrom(int row) { m_rowsKept = qMin(m_rowsKept, row); }

    QList<CodeNode *> m_childs;
    mutable int m_rowsKept = 0;
    ushort m_version = 0;
    short m_fileType = 0;
};

} // namespace Ovra
