#include "code/namedcode.h"
#include "code/parentcode.h"

#include <QTextDocument>
#include <QtTest>

using namespace Ovra;

namespace {

// A parent that records what its children report.
class Recorder : public ParentCode
{
public:
    using ParentCode::ParentCode;
    QList<CodeNode *> changedChildren;
    QList<int> changedRows;
    void childChanged(CodeNode *child) override { changedChildren.append(child); }
    int childIndex(const CodeNode *) const override { return 7; }

protected:
    void changed(const ParentCode *, int row, int) override { changedRows.append(row); }
};

class Leaf : public CodeNode
{
public:
    using CodeNode::CodeNode;
    void report(const QVariant &value) { valueChanged(value); }
};

class Named : public NamedCode
{
public:
    QString stored;
    QString name() const override { return stored; }
    void setName(const QString &name) override { stored = name; }
};

QList<CodeNode *> chain(CodeNode *first)
{
    QList<CodeNode *> nodes;
    for (CodeNode *node = first; node; node = node->next())
        nodes.append(node);
    return nodes;
}

} // namespace

class CodeNodeTest : public QObject
{
    Q_OBJECT

private slots:
    void linksInDocumentOrder();
    void walksStopAtMasks_data();
    void walksStopAtMasks();
    void implicitNodeTakesTheNextLine();
    void releasedNodeIsInvalid();
    void parentsPassChangesUp();
    void namedProperties();
};

void CodeNodeTest::linksInDocumentOrder()
{
    QTextDocument text(QStringLiteral("a\nb\nc"));
    ParentCode root(CodeNode::Root, QTextBlock(), nullptr);
    auto *a = new Leaf(CodeNode::Value, text.findBlockByNumber(0), &root);
    auto *c = new Leaf(CodeNode::Value, text.findBlockByNumber(2), a);
    // Built behind `a`, so it goes between a and c.
    auto *b = new Leaf(CodeNode::Value, text.findBlockByNumber(1), a);
    QCOMPARE(chain(&root), QList<CodeNode *>({&root, a, b, c}));
    QCOMPARE(c->previous(), b);
    b->release();
    QCOMPARE(chain(&root), QList<CodeNode *>({&root, a, c}));
    QCOMPARE(c->previous(), a);
    c->release();
    QCOMPARE(a->next(), nullptr);
    a->release();
    QCOMPARE(root.next(), nullptr);
}

void CodeNodeTest::walksStopAtMasks_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("stopMask");
    QTest::addColumn<int>("expected"); // index into the chain, -1 for null
    // The chain: root, group, value, animation, frame, value (the one walking back).
    QTest::newRow("nearest group") << int(CodeNode::Group) << 0 << 1;
    QTest::newRow("headers only: another type stops") << int(CodeNode::Group) << -11 << -1;
    QTest::newRow("the animation crosses the frame") << int(CodeNode::Animation) << int(CodeNode::Value) << 3;
    QTest::newRow("a group behind the animation") << int(CodeNode::Group) << int(CodeNode::Animation) << -1;
    QTest::newRow("nothing of the type") << int(CodeNode::HitBox) << 0 << -1;
}

void CodeNodeTest::walksStopAtMasks()
{
    QFETCH(int, type);
    QFETCH(int, stopMask);
    QFETCH(int, expected);
    ParentCode root(CodeNode::Root, QTextBlock(), nullptr);
    QList<CodeNode *> nodes{&root};
    for (CodeNode::Type t : {CodeNode::Group, CodeNode::Value, CodeNode::Animation, CodeNode::Frame, CodeNode::Value})
        nodes.append(new Leaf(t, QTextBlock(), nodes.last()));
    CodeNode *found = nodes.last()->previous(CodeNode::Type(type), stopMask);
    QCOMPARE(found, expected < 0 ? nullptr : nodes.at(expected));
    // The same walk forwards from the root, with the mask of the types passed over.
    if (expected > 0 && stopMask == 0)
        QCOMPARE(root.next(CodeNode::Type(type), 0), nodes.at(expected));
    for (int i = nodes.size() - 1; i > 0; --i)
        nodes.at(i)->release();
}

void CodeNodeTest::implicitNodeTakesTheNextLine()
{
    QTextDocument text(QStringLiteral("zero\none\ntwo"));
    ParentCode root(CodeNode::Root, QTextBlock(), nullptr);
    auto *implicit = new Leaf(CodeNode::Frame, QTextBlock(), &root);
    QCOMPARE(implicit->lineNo(), -1);
    auto *real = new Leaf(CodeNode::Frame, text.findBlockByNumber(2), implicit);
    QCOMPARE(implicit->lineNo(), 2);
    QCOMPARE(implicit->firstLine(), 2);
    QCOMPARE(real->lastLine(), 2);
    real->release();
    implicit->release();
}

void CodeNodeTest::releasedNodeIsInvalid()
{
    ParentCode root(CodeNode::Root, QTextBlock(), nullptr);
    QVERIFY(!CodeNode::isValid(nullptr));
    QVERIFY(CodeNode::isValid(&root)); // not from the pool
    auto *node = new Leaf(CodeNode::Value, QTextBlock(), &root);
    QVERIFY(CodeNode::isValid(node));
    const CodeNode *stale = node;
    node->release();
    // A view's stale index can still be asked, and the answer is no.
    QVERIFY(!CodeNode::isValid(stale));
    // The memory serves the next node of the same class.
    auto *again = new Leaf(CodeNode::Value, QTextBlock(), &root);
    QCOMPARE(static_cast<const CodeNode *>(again), stale);
    QVERIFY(CodeNode::isValid(again));
    again->release();
}

void CodeNodeTest::parentsPassChangesUp()
{
    Recorder top(CodeNode::Root, QTextBlock(), nullptr);
    auto *middle = new ParentCode(CodeNode::Group, QTextBlock(), &top);
    auto *leaf = new Leaf(CodeNode::Value, QTextBlock(), middle);
    top.insertChild(middle, 0);
    middle->insertChild(leaf, 0);
    QCOMPARE(leaf->parent(), middle);
    QCOMPARE(leaf->parent(CodeNode::Root, 0), &top);
    QCOMPARE(leaf->parent(CodeNode::Root, CodeNode::Group), nullptr);

    leaf->report(5);
    // The group keeps no list: it passes the child and the change on to the top.
    QCOMPARE(top.changedChildren, QList<CodeNode *>({leaf}));
    QCOMPARE(top.changedRows, QList<int>({-1}));

    // Moving to another parent takes the child from the old one.
    top.insertChild(leaf, 0);
    QCOMPARE(leaf->parent(), &top);
    middle->removeChild(leaf); // not its child any more: nothing changes
    QCOMPARE(leaf->parent(), &top);
    top.removeChild(leaf);
    QCOMPARE(leaf->parent(), nullptr);
    leaf->release();
    middle->release();
}

void CodeNodeTest::namedProperties()
{
    // The display name is the name, and only the name can be set.
    Named named;
    named.setName(QStringLiteral("stand"));
    QCOMPARE(named.property(QStringLiteral("DisplayName")).toString(), QStringLiteral("stand"));
    QVERIFY(!named.property(QStringLiteral("Identifier")).isValid());
    named.setProperty(QStringLiteral("DisplayName"), QStringLiteral("ignored"));
    named.setProperty(QStringLiteral("Name"), 42);
    QCOMPARE(named.property(QStringLiteral("Name")).toString(), QStringLiteral("42"));
}

QTEST_GUILESS_MAIN(CodeNodeTest)
#include "tst_codenode.moc"
