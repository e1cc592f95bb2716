#include "code/namedcode.h"
#include "code/rootcode.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QtTest>

using namespace Ovra;

namespace {

// A header with a list of children, as engines' groups and animations have.
class Header : public ParentCode, public NamedCode
{
public:
    Header(Type type, CodeNode *previous, const QString &name)
        : ParentCode(type, QTextBlock(), previous), m_name(name) {}
    ~Header() override
    {
        while (!m_children.isEmpty())
            removeChild(m_children.last());
    }
    QString name() const override { return m_name; }
    void setName(const QString &name) override { m_name = name; }
    uint childCount() const override { return uint(m_children.size()); }
    int childIndex(const CodeNode *child) const override { return m_children.indexOf(const_cast<CodeNode *>(child)); }
    CodeNode *childAt(uint index) const override { return m_children.value(int(index)); }
    void insertChild(CodeNode *child, uint row) override
    {
        if (ParentCode *old = child->parent())
            old->removeChild(child);
        beginInsert(this, int(row));
        m_children.insert(int(row), child);
        setParentOf(child, this);
        endInsert();
    }
    void removeChild(CodeNode *child) override
    {
        const int row = m_children.indexOf(child);
        if (row < 0)
            return;
        beginRemove(this, row);
        m_children.removeAt(row);
        setParentOf(child, nullptr);
        endRemove();
    }

private:
    QString m_name;
    QList<CodeNode *> m_children;
};

class Frame : public CodeNode, public PropertyItem
{
public:
    Frame(CodeNode *previous, const QString &identifier)
        : CodeNode(CodeNode::Frame, QTextBlock(), previous), m_identifier(identifier) {}
    QStringList propertyNames() const override { return {QStringLiteral("Identifier")}; }
    QVariant property(const QString &) const override { return m_identifier; }
    void setProperty(const QString &, const QVariant &) override {}

private:
    QString m_identifier;
};

} // namespace

class RootCodeTest : public QObject
{
    Q_OBJECT

private slots:
    void treeModel();
    void staleIndexes();
    void versionAndType();
};

void RootCodeTest::treeModel()
{
    RootCode root;
    QAbstractItemModelTester tester(&root, QAbstractItemModelTester::FailureReportingMode::QtTest);
    auto *stand = new Header(CodeNode::Animation, &root, QStringLiteral("stand"));
    stand->insertRootChild(stand);
    auto *first = new Frame(stand, QString());
    auto *second = new Frame(first, QStringLiteral("blink"));
    stand->insertChild(first, 0);
    stand->insertChild(second, 1);

    QCOMPARE(root.rowCount(), 1);
    const QModelIndex standIndex = root.index(0, 0);
    QCOMPARE(root.data(standIndex).toString(), QStringLiteral("stand"));
    QCOMPARE(root.rowCount(standIndex), 2);
    QCOMPARE(root.data(root.index(0, 0, standIndex)).toString(), QStringLiteral("Frame 1"));
    QCOMPARE(root.data(root.index(1, 0, standIndex), Qt::ToolTipRole).toString(), QStringLiteral("Frame - blink"));
    QCOMPARE(root.parent(root.index(1, 0, standIndex)), standIndex);
    QCOMPARE(RootCode::nodeFromIndex(root.index(1, 0, standIndex)), second);
    QVERIFY(!root.index(2, 0, standIndex).isValid());

    // A value changing reaches the views as a change of its row.
    QSignalSpy changed(&root, &QAbstractItemModel::dataChanged);
    stand->childChanged(first); // passes up without a signal
    QCOMPARE(changed.count(), 0);
    first->release();
    QCOMPARE(root.rowCount(standIndex), 1);
    QCOMPARE(root.data(root.index(0, 0, standIndex)).toString(), QStringLiteral("Frame - blink"));
    // Releasing the header hands nothing on here: its frames lose their parent.
    stand->release();
    QCOMPARE(root.rowCount(), 0);
    QCOMPARE(second->parent(), nullptr);
    root.destroy();
    QCOMPARE(root.next(), nullptr);
}

void RootCodeTest::staleIndexes()
{
    RootCode root;
    auto *group = new Header(CodeNode::Group, &root, QStringLiteral("Data"));
    group->insertRootChild(group);
    auto *value = new Frame(group, QStringLiteral("x"));
    group->insertChild(value, 0);
    const QModelIndex groupIndex = root.index(0, 0);
    const QModelIndex stale = root.index(0, 0, groupIndex);
    value->release();
    // The index outlived its node: no data, no children, and the parent of the rows
    // removed last.
    QVERIFY(!root.data(stale).isValid());
    QCOMPARE(root.rowCount(stale), 0);
    QCOMPARE(root.parent(stale), groupIndex);
    QCOMPARE(RootCode::nodeFromIndex(stale), nullptr);
}

void RootCodeTest::versionAndType()
{
    RootCode root(3);
    QSignalSpy version(&root, &RootCode::versionChanged);
    QSignalSpy type(&root, &RootCode::typeChanged);
    root.setVersion(2, false);
    root.setVersion(2, true); // no change, no signal
    root.setVersion(5, true);
    root.setFileType(3, true);
    root.setFileType(4, true);
    QCOMPARE(root.version(), ushort(5));
    QCOMPARE(root.fileType(), short(4));
    QCOMPARE(version.count(), 1);
    QCOMPARE(type.count(), 1);
}

QTEST_GUILESS_MAIN(RootCodeTest)
#include "tst_rootcode.moc"
