#include "code/groupcode.h"
#include "code/rootcode.h"
#include "code/valuecode.h"

#include <QAbstractItemModelTester>
#include <QTextDocument>
#include <QtTest>

using namespace Ovra;

namespace {

class Group : public GroupCode
{
public:
    Group(const QTextBlock &block, CodeNode *previous) : GroupCode(block, previous, 1) {}
    QString name() const override { return block().text(); }
    void setName(const QString &) override {}
    // Over a plain text document there is no code document to write into.
    ValueCode *insertValue(uint, const QString &, const QVariant &) override { return nullptr; }
    ValueCode *addValue(const QString &, const QVariant &) override { return nullptr; }
};

class Value : public ValueCode
{
public:
    Value(const QTextBlock &block, CodeNode *previous) : ValueCode(String, block, previous, QVariant()) {}
    QString name() const override { return block().text().section(QLatin1Char(' '), 0, 0); }
    void setName(const QString &) override {}
    QStringList keywords() const override { return {}; }
    QString keyword(uint) const override { return QString(); }
};

QStringList names(const GroupCode *group)
{
    QStringList list;
    for (const ValueCode *value : group->values())
        list << value->name();
    return list;
}

QStringList rootRows(const RootCode &root)
{
    QStringList rows;
    for (int row = 0; row < root.rowCount(); ++row)
        rows << root.data(root.index(row, 0)).toString();
    return rows;
}

} // namespace

class GroupCodeTest : public QObject
{
    Q_OBJECT

private slots:
    void headerBrokenAndTypedBack();
    void valuesBehindAnAnimationStayAlone();
    void lastLine();
};

void GroupCodeTest::headerBrokenAndTypedBack()
{
    QTextDocument text(QStringLiteral("[Stats]\na = 1\nb = 2\n[Shape]\nc = 3"));
    auto line = [&](int n) { return text.findBlockByNumber(n); };
    RootCode root;
    QAbstractItemModelTester tester(&root, QAbstractItemModelTester::FailureReportingMode::QtTest);
    auto *data = new Group(line(0), &root);
    auto *a = new Value(line(1), data);
    auto *b = new Value(line(2), a);
    auto *size = new Group(line(3), b);
    auto *c = new Value(line(4), size);
    QCOMPARE(names(data), QStringList({"a", "b"}));
    QCOMPARE(names(size), QStringList({"c"}));
    QCOMPARE(rootRows(root), QStringList({"[Stats]", "[Shape]"}));
    QCOMPARE(root.data(root.index(1, 0, root.index(0, 0))).toString(), QStringLiteral("b"));
    // Only headers are crossed: from a value behind a value no group is found.
    QCOMPARE(b->previous(CodeNode::Group, -11), nullptr);
    QCOMPARE(a->previous(CodeNode::Group, -11), data);

    // The first header's line stops reading as one: its values have no group above to
    // go to, and stay in the list without a parent.
    data->release();
    QCOMPARE(a->parent(), nullptr);
    QCOMPARE(b->parent(), nullptr);
    QCOMPARE(a->previous(), &root);
    QCOMPARE(rootRows(root), QStringList({"[Shape]"}));
    // Typed back, the new header takes them back in order, and its row comes first.
    data = new Group(line(0), &root);
    QCOMPARE(names(data), QStringList({"a", "b"}));
    QCOMPARE(rootRows(root), QStringList({"[Stats]", "[Shape]"}));
    // The second header goes: its value falls to the header above, at the end.
    size->release();
    QCOMPARE(names(data), QStringList({"a", "b", "c"}));
    QCOMPARE(c->parent(), data);
    root.destroy();
    QCOMPARE(root.rowCount(), 0);
}

void GroupCodeTest::valuesBehindAnAnimationStayAlone()
{
    RootCode root;
    auto *group = new Group(QTextBlock(), &root);
    auto *animation = new ParentCode(CodeNode::Animation, QTextBlock(), group);
    auto *frame = new CodeNode(CodeNode::Frame, QTextBlock(), animation);
    animation->insertChild(frame, 0);
    auto *loose = new Value(QTextBlock(), frame);
    QCOMPARE(loose->parent(), nullptr);
    QCOMPARE(group->valueCount(), 0u);
    // A header typed in front of the frame takes the frame from its animation and
    // leaves it without a parent; values behind it in the walk are adopted.
    auto *header = new Group(QTextBlock(), animation);
    QCOMPARE(frame->parent(), nullptr);
    QCOMPARE(header->values(), QList<ValueCode *>({loose}));
    root.destroy();
}

void GroupCodeTest::lastLine()
{
    QTextDocument text(QStringLiteral("[A]\nx = 1\n[B]\ny = 2\n\n"));
    RootCode root;
    auto *first = new Group(text.findBlockByNumber(0), &root);
    auto *x = new Value(text.findBlockByNumber(1), first);
    auto *second = new Group(text.findBlockByNumber(2), x);
    new Value(text.findBlockByNumber(3), second);
    QCOMPARE(first->lastLine(), 1);
    QCOMPARE(second->lastLine(), text.lineCount());
    auto *detached = new Group(QTextBlock(), &root);
    QCOMPARE(detached->lastLine(), -1); // no document
    root.destroy();
}

QTEST_GUILESS_MAIN(GroupCodeTest)
#include "tst_groupcode.moc"
