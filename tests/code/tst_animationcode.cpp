#include "testengine.h"

#include <QAbstractItemModelTester>
#include <QtTest>

using namespace Ovra;

namespace {

TestAnimation *animation(CodeDocument &document, int row)
{
    return dynamic_cast<TestAnimation *>(document.root()->childAt(uint(row)));
}

// The sprite field of every frame, as "animation: sprites" per root row.
QStringList frameLists(CodeDocument &document)
{
    QStringList lists;
    RootCode *root = document.root();
    for (uint row = 0; row < root->childCount(); ++row) {
        const auto *header = dynamic_cast<const AnimationCode *>(root->childAt(row));
        if (!header)
            continue;
        QStringList sprites;
        for (const FrameCode *frame : header->frames())
            sprites << frame->spriteId().toString();
        lists << static_cast<const TestAnimation *>(header)->id + QLatin1String(": ") + sprites.join(QLatin1Char(' '));
    }
    return lists;
}

QStringList orphanFrames(CodeDocument &document)
{
    QStringList sprites;
    for (CodeNode *node = document.root()->next(); node; node = node->next()) {
        if (node->type() == CodeNode::Frame && !node->parent())
            sprites << static_cast<FrameCode *>(node)->spriteId().toString();
    }
    return sprites;
}

const char *const twoAnimations = "<walk>\n"
                                  "frame a, 0, 0, 4\n"
                                  "; a note\n"
                                  "frame b, 1, 2, 5, H\n"
                                  "<run>\n"
                                  "frame c, 0, 0, 3, loop\n"
                                  "frame d, 0, 0, -1, #land\n";

} // namespace

class AnimationCodeTest : public QObject
{
    Q_OBJECT

private slots:
    void framesFollowTheirHeader_data();
    void framesFollowTheirHeader();
    void groupsAndAnimationsShareNoLines();
    void lines();
    void frameOperations();
    void codeAndSetCode();
    void contactBoxes();
};

void AnimationCodeTest::framesFollowTheirHeader_data()
{
    QTest::addColumn<int>("line");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("lists");
    QTest::addColumn<QStringList>("orphans");

    QTest::addRow("unchanged") << 0 << "<walk>" << QStringList({"walk: a b", "run: c d"}) << QStringList();
    // A broken second header hands its frames to the first.
    QTest::addRow("second header broken") << 4 << "<run" << QStringList({"walk: a b c d"}) << QStringList();
    // With no header above, the frames stay in the list without an animation.
    QTest::addRow("first header broken") << 0 << "walk>" << QStringList({"run: c d"}) << QStringList({"a", "b"});
    // A header typed between frames takes the frames below it.
    QTest::addRow("header between frames") << 2 << "<jump>" << QStringList({"walk: a", "jump: b", "run: c d"})
                                           << QStringList();
    // A group between frames frees the frames below it.
    QTest::addRow("group between frames") << 2 << "[Stats]" << QStringList({"walk: a", "run: c d"})
                                          << QStringList({"b"});
    QTest::addRow("frame broken") << 3 << "frme b" << QStringList({"walk: a", "run: c d"}) << QStringList();
    // A frame line typed on the comment joins its animation at its place.
    QTest::addRow("comment becomes a frame") << 2 << "frame x, 0, 0, 1"
                                             << QStringList({"walk: a x b", "run: c d"}) << QStringList();
}

void AnimationCodeTest::framesFollowTheirHeader()
{
    QFETCH(int, line);
    QFETCH(QString, text);
    QFETCH(QStringList, lists);
    QFETCH(QStringList, orphans);

    // Frames are shown by their place ("Frame 2"), so the names of the rows behind an
    // inserted frame change; a model tester would take that for a fault. The row
    // announcements are checked by hand instead.
    TestDocument document;
    document.fromString(QString::fromLatin1(twoAnimations));
    RootCode *root = document.root();
    int rows = 0;
    // A row counts with the rows below it: a header that goes takes its frames along.
    auto subtree = [root](const QModelIndex &parent, int first, int last) {
        int count = 0;
        for (int row = first; row <= last; ++row)
            count += 1 + root->rowCount(root->index(row, 0, parent));
        return count;
    };
    connect(root, &QAbstractItemModel::rowsInserted, this,
            [&](const QModelIndex &parent, int first, int last) { rows += subtree(parent, first, last); });
    connect(root, &QAbstractItemModel::rowsAboutToBeRemoved, this,
            [&](const QModelIndex &parent, int first, int last) { rows -= subtree(parent, first, last); });
    auto allRows = [root] {
        int count = 0;
        for (int row = 0; row < root->rowCount(); ++row) {
            const QModelIndex header = root->index(row, 0);
            count += 1 + root->rowCount(header);
            for (int child = 0; child < root->rowCount(header); ++child) {
                if (root->parent(root->index(child, 0, header)) != header)
                    return -1;
            }
        }
        return count;
    };
    const int before = allRows();
    document.replaceLine(line, text);
    QCOMPARE(frameLists(document), lists);
    QCOMPARE(orphanFrames(document), orphans);
    QCOMPARE(allRows(), before + rows);

    // Typing the old line back restores the whole tree.
    document.undo();
    QCOMPARE(frameLists(document), QStringList({"walk: a b", "run: c d"}));
    QVERIFY(orphanFrames(document).isEmpty());
}

void AnimationCodeTest::groupsAndAnimationsShareNoLines()
{
    TestDocument document;
    QAbstractItemModelTester tester(document.root(), QAbstractItemModelTester::FailureReportingMode::QtTest);
    document.fromString(QStringLiteral("[Stats]\na = 1\nb = 2\nframe x, 0, 0, 1\n<walk>\nc = 3\nframe y, 0, 0, 1\n"));
    auto *data = dynamic_cast<GroupCode *>(document.root()->childAt(0));
    QVERIFY(data);
    QCOMPARE(data->valueCount(), 2u);
    QCOMPARE(orphanFrames(document), QStringList({"x"}));
    QCOMPARE(frameLists(document), QStringList({"walk: y"}));
    QCOMPARE(document.nodeInBlock(document.findBlockByNumber(5))->parent(), nullptr);

    // Without the animation header the value below joins the group, and the frames have
    // no animation left.
    document.replaceLine(4, QStringLiteral("; gone"));
    QCOMPARE(data->valueCount(), 3u);
    QCOMPARE(data->valueAt(2)->name(), QStringLiteral("c"));
    QCOMPARE(orphanFrames(document), QStringList({"x", "y"}));

    // An animation typed between two values takes the lower one from the group.
    document.replaceLine(2, QStringLiteral("<run>"));
    QCOMPARE(data->valueCount(), 1u);
    QCOMPARE(frameLists(document), QStringList({"run: x y"}));
}

void AnimationCodeTest::lines()
{
    TestDocument document;
    document.fromString(QString::fromLatin1(twoAnimations));
    TestAnimation *walk = animation(document, 0);
    TestAnimation *run = animation(document, 1);
    QVERIFY(walk && run);
    QCOMPARE(walk->lastLine(), 3);
    QCOMPARE(run->lastLine(), document.lineCount());
    // The comment between the frames belongs to the second frame.
    QCOMPARE(walk->frameAt(0)->firstLine(), 1);
    QCOMPARE(walk->frameAt(1)->firstLine(), 2);
    QCOMPARE(walk->frameAt(1)->lineNo(), 3);
    QCOMPARE(run->frameAt(0)->firstLine(), 5);
    QCOMPARE(walk->frameAt(1)->selectAll().selectedText(),
             QStringLiteral("; a note\u2029frame b, 1, 2, 5, H\u2029"));
}

void AnimationCodeTest::frameOperations()
{
    TestDocument document;
    document.fromString(QString::fromLatin1(twoAnimations));
    TestAnimation *walk = animation(document, 0);
    TestAnimation *run = animation(document, 1);
    QCOMPARE(walk->frameAt(2), nullptr);
    QCOMPARE(walk->indexOfFrame(run->frameAt(0)), -1);
    QCOMPARE(run->frameAt(1)->index(), 1);
    FrameCode *b = walk->frameAt(1);
    QCOMPARE(b->offset(), QPoint(1, 2));
    QCOMPARE(b->contactBoxes(ContactBoxCode::Collision)->boxType(), ContactBoxCode::Collision);
    QCOMPARE(walk->propertyNames(), QStringList({"DisplayName", "Name", "Identifier"}));

    // A property writes the line; the node is kept, reads the new text, and the change
    // is one step back.
    b->setProperty(QStringLiteral("Offset"), QPoint(-3, 7));
    QCOMPARE(document.findBlockByNumber(3).text(), QStringLiteral("frame b, -3, 7, 5, H"));
    QCOMPARE(walk->frameAt(1), b);
    QCOMPARE(b->property(QStringLiteral("Offset")), QVariant(QPoint(-3, 7)));
    document.undo();
    QCOMPARE(document.toString(), QString::fromLatin1(twoAnimations));

    // New frame lines join the animation at their place.
    FrameCode *added = walk->insertFrame(1);
    QVERIFY(added);
    QCOMPARE(walk->frameAt(1), added);
    FrameCode *appended = walk->addFrame();
    QCOMPARE(walk->frameAt(3), appended);
    QCOMPARE(walk->frameCount(), 4u);
    QCOMPARE(run->frameCount(), 2u);

    walk->removeFrame(0);
    QCOMPARE(walk->frameCount(), 3u);
    QCOMPARE(document.findBlockByNumber(1).text(), QStringLiteral("frame 0, 0, 0, 1"));
    walk->removeFrame(7); // past the end: nothing
    QCOMPARE(walk->frameCount(), 3u);
}

void AnimationCodeTest::codeAndSetCode()
{
    TestDocument document;
    document.fromString(QString::fromLatin1(twoAnimations));
    TestAnimation *walk = animation(document, 0);
    QCOMPARE(walk->code(), QStringLiteral("<walk>\nframe a, 0, 0, 4\n; a note\nframe b, 1, 2, 5, H"));

    walk->setCode(QStringLiteral("  <stand>\nframe s, 0, 0, 10\n"));
    QCOMPARE(document.toString(), QStringLiteral("<stand>\nframe s, 0, 0, 10\n\n<run>\nframe c, 0, 0, 3, loop\n"
                                                 "frame d, 0, 0, -1, #land\n"));
    QCOMPARE(frameLists(document), QStringList({"stand: s", "run: c d"}));
}

void AnimationCodeTest::contactBoxes()
{
    TestDocument document;
    document.fromString(QString::fromLatin1(twoAnimations));
    FrameCode *frame = animation(document, 1)->frameAt(0);
    ContactBoxesCode *attack = frame->contactBoxes(ContactBoxCode::Attack);
    ContactBoxesCode *collision = frame->contactBoxes(ContactBoxCode::Collision);
    ContactBoxCode *hit = attack->append(QRect(QPoint(0, 0), QPoint(10, 20)));
    ContactBoxCode *body = collision->append(QRect(QPoint(-5, -5), QPoint(5, 5)));
    attack->append(QRect(QPoint(1, 1), QPoint(2, 2)));
    QVERIFY(hit && body);
    QCOMPARE(attack->count(), 2u);
    QCOMPARE(collision->count(), 1u);
    QCOMPARE(hit->type(), CodeNode::HitBox);
    QCOMPARE(document.toString(), QStringLiteral("<walk>\nframe a, 0, 0, 4\n; a note\nframe b, 1, 2, 5, H\n<run>\n"
                                                 "frame c, 0, 0, 3, loop\nbox a 0, 0, 10, 20\nbox c -5, -5, 5, 5\n"
                                                 "box a 1, 1, 2, 2\nframe d, 0, 0, -1, #land\n"));
    // Boxes are no frames: the animation still has two.
    QCOMPARE(animation(document, 1)->frameCount(), 2u);

    body->setRect(QRect(QPoint(0, 0), QPoint(3, 4)));
    QCOMPARE(collision->at(0)->rect(), QRect(QPoint(0, 0), QPoint(3, 4)));
    attack->remove(1);
    QCOMPARE(attack->count(), 1u);
    attack->clear();
    QCOMPARE(attack->count(), 0u);
    QCOMPARE(collision->count(), 1u);
    // The whole clearing is one step back.
    document.undo();
    QCOMPARE(attack->count(), 1u);
}

QTEST_MAIN(AnimationCodeTest)
#include "tst_animationcode.moc"
