#include "code/codeparser.h"
#include "code/nodepool.h"

#include <QtTest>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

using namespace Ovra;

// The pool that keeps stale model indexes harmless, and the token formats every code
// document paints with.
class NodePoolTest : public QObject
{
    Q_OBJECT

private slots:
    void freedBlocksWaitForTheirSize();
    void releasingTwiceHandsOutOnce();
    void foreignMemoryIsNeverFree();
    void manyAndLargeBlocks();
    void formats();
};

void NodePoolTest::freedBlocksWaitForTheirSize()
{
    const std::size_t before = NodePool::totalAllocated();
    void *small = NodePool::allocate(40);
    void *large = NodePool::allocate(96);
    QVERIFY(NodePool::totalAllocated() > before + 40 + 96);
    QVERIFY(!NodePool::isFree(small));
    QVERIFY(reinterpret_cast<quintptr>(small) % alignof(std::max_align_t) == 0);

    NodePool::recycle(small);
    NodePool::recycle(large);
    QVERIFY(NodePool::isFree(small));
    const std::size_t total = NodePool::totalAllocated();
    // A block of another size doesn't take a waiting one; one of the same size does,
    // without new memory.
    void *other = NodePool::allocate(64);
    QVERIFY(other != small && other != large);
    QCOMPARE(NodePool::allocate(96), large);
    QCOMPARE(NodePool::allocate(40), small);
    QVERIFY(!NodePool::isFree(small));
    // Only the block of the new size took memory (with its header word).
    QVERIFY(NodePool::totalAllocated() - total >= 64);
    QVERIFY(NodePool::totalAllocated() - total < 64 + 2 * alignof(std::max_align_t));
    for (void *block : {small, large, other})
        NodePool::recycle(block);
}

void NodePoolTest::releasingTwiceHandsOutOnce()
{
    void *block = NodePool::allocate(200);
    const std::size_t waiting = NodePool::freeCount();
    NodePool::recycle(block);
    NodePool::recycle(block);
    QCOMPARE(NodePool::freeCount(), waiting + 1);
    QCOMPARE(NodePool::allocate(200), block);
    QVERIFY(NodePool::allocate(200) != block);
    NodePool::recycle(nullptr); // nothing to do
}

void NodePoolTest::foreignMemoryIsNeverFree()
{
    // Roots live inside their documents, not in the pool; asking about them (or about
    // any other memory) must not read a header that isn't there.
    alignas(std::max_align_t) char onStack[64] = {};
    QVERIFY(!NodePool::isFree(onStack + 16));
    std::unique_ptr<char[]> onHeap(new char[64]);
    std::memset(onHeap.get(), 0xFF, 64);
    QVERIFY(!NodePool::isFree(onHeap.get() + 32));
    QVERIFY(!NodePool::isFree(nullptr));
    // A pointer into the middle of a pool block is no block either.
    void *block = NodePool::allocate(64);
    NodePool::recycle(block);
    QVERIFY(NodePool::isFree(block));
    QVERIFY(!NodePool::isFree(static_cast<char *>(block) + 8));
    QCOMPARE(NodePool::allocate(64), block);
}

void NodePoolTest::manyAndLargeBlocks()
{
    // Enough blocks to fill several slabs, and one larger than a slab: all distinct,
    // all writable, all reusable.
    std::vector<void *> blocks;
    for (int i = 0; i < 20000; ++i) {
        void *block = NodePool::allocate(48 + (i % 5) * 16);
        std::memset(block, i & 0xFF, 48);
        blocks.push_back(block);
    }
    void *huge = NodePool::allocate(1 << 20);
    std::memset(huge, 0xAB, 1 << 20);
    blocks.push_back(huge);
    std::vector<void *> sorted = blocks;
    std::sort(sorted.begin(), sorted.end());
    QVERIFY(std::adjacent_find(sorted.begin(), sorted.end()) == sorted.end());
    for (int i = 0; i < 20000; ++i)
        QCOMPARE(int(*static_cast<unsigned char *>(blocks[size_t(i)])), i & 0xFF);
    const std::size_t waiting = NodePool::freeCount();
    for (void *block : blocks)
        NodePool::recycle(block);
    QCOMPARE(NodePool::freeCount(), waiting + blocks.size());
    QVERIFY(NodePool::isFree(huge));
    QCOMPARE(NodePool::allocate(1 << 20), huge);
    NodePool::recycle(huge);
}

void NodePoolTest::formats()
{
    // One fixed-pitch face for every type; types differ in colour, weight and slant.
    const QTextCharFormat comment = CodeParserSyntax::defaultFormat(1);
    QCOMPARE(comment.fontFamily(), QStringLiteral("Courier"));
    QCOMPARE(comment.fontPointSize(), 10.0);
    QVERIFY(comment.fontFixedPitch());
    QCOMPARE(comment.fontStyleHint(), QFont::TypeWriter);
    QVERIFY(comment.fontItalic());
    QCOMPARE(CodeParserSyntax::defaultFormat(4).fontWeight(), 75);
    QCOMPARE(CodeParserSyntax::defaultFormat(9).foreground().color(), QColor(255, 0, 255));
    QCOMPARE(CodeParserSyntax::defaultFormat(-1), QTextCharFormat());

    // The table all documents paint with starts from those, and takes changes.
    QCOMPARE(CodeParserSyntax::format(5), CodeParserSyntax::defaultFormat(5));
    QTextCharFormat keyword;
    keyword.setForeground(QColor(1, 2, 3));
    CodeParserSyntax::setFormat(5, keyword);
    QCOMPARE(CodeParserSyntax::format(5), keyword);
    CodeParserSyntax::setFormat(10, keyword); // no such type: ignored
    QCOMPARE(CodeParserSyntax::format(10), QTextCharFormat());
    CodeParserSyntax::setFormat(5, CodeParserSyntax::defaultFormat(5));
}

QTEST_GUILESS_MAIN(NodePoolTest)
#include "tst_nodepool.moc"
