#include "testengine.h"

#include "code/codenodefile.h"

#include <QtTest>

using namespace Ovra;

namespace {

// The groups of a document, kept in a list the way an engine's view of its nodes is.
class GroupList : public CodeNodeFile
{
public:
    using CodeNodeFile::CodeNodeFile;
    QList<CodeNode *> nodes;
    int changes = 0;
    bool *ended = nullptr;
    ~GroupList() override
    {
        if (ended)
            *ended = true;
    }
    void insertChild(CodeNode *node, uint index) override { nodes.insert(int(index), node); }
    void removeChild(CodeNode *node) override { nodes.removeAll(node); }
    void childChanged(CodeNode *) override { ++changes; }
    void free() override { delete this; }

    QStringList names() const
    {
        QStringList list;
        for (const CodeNode *node : nodes)
            list << static_cast<const GroupCode *>(node)->name();
        return list;
    }
};

class OwnedDocument : public TestDocument
{
public:
    bool *ended = nullptr;
    ~OwnedDocument() override
    {
        if (ended)
            *ended = true;
    }
};

} // namespace

class CodeNodeFileTest : public QObject
{
    Q_OBJECT

private slots:
    void followsNodesOfItsKind();
    void capabilitiesAndLifetime();
    void documentEndingFirstReleasesItsFiles();
};

void CodeNodeFileTest::followsNodesOfItsKind()
{
    auto *document = new OwnedDocument;
    document->fromString(QStringLiteral("[A]\nx = 1\n[C]\n"));
    auto *groups = new GroupList(document);
    document->registerNodeFile(groups, CodeNode::Group, 1);
    QCOMPARE(document->nodeFile(CodeNode::Group, 1), groups);
    QCOMPARE(document->nodeFile(CodeNode::Group, 2), nullptr);
    QCOMPARE(groups->names(), QStringList({"A", "C"}));

    // A group typed between the two lands between them in the file too.
    QTextCursor cursor(document->findBlockByNumber(2));
    cursor.insertText(QStringLiteral("[B]\n"));
    QCOMPARE(groups->names(), QStringList({"A", "B", "C"}));
    document->replaceLine(0, QStringLiteral("A]"));
    QCOMPARE(groups->names(), QStringList({"B", "C"}));
    groups->release();
    document->release();
}

void CodeNodeFileTest::capabilitiesAndLifetime()
{
    bool documentEnded = false;
    bool fileEnded = false;
    auto *document = new OwnedDocument;
    document->ended = &documentEnded;
    auto *groups = new GroupList(document);
    groups->ended = &fileEnded;
    document->registerNodeFile(groups, CodeNode::Group, 1);
    QCOMPARE(document->refCount(), 2u);
    QCOMPARE(int(document->capabilities()), 12);
    // The document's capabilities without its own bit, and shared while others hold it.
    QCOMPARE(int(groups->capabilities()), 4 | 1);
    QVERIFY(groups->canSave());
    groups->addRef();
    QVERIFY(!groups->canSave());
    groups->release();

    // The owner lets go of the document first: the file keeps it alive.
    document->release();
    QVERIFY(!documentEnded);
    QCOMPARE(int(groups->capabilities()), 4);
    groups->release();
    QVERIFY(fileEnded);
    QVERIFY(documentEnded);
}

void CodeNodeFileTest::documentEndingFirstReleasesItsFiles()
{
    bool fileEnded = false;
    {
        TestDocument document;
        document.fromString(QStringLiteral("[A]\n"));
        auto *groups = new GroupList(&document);
        groups->ended = &fileEnded;
        document.registerNodeFile(groups, CodeNode::Group, 1);
    }
    // The document took its files with it, and they didn't reach back into it.
    QVERIFY(fileEnded);
}

QTEST_MAIN(CodeNodeFileTest)
#include "tst_codenodefile.moc"
