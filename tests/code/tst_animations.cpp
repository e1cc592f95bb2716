#include "testengine.h"

#include <QAbstractItemModelTester>
#include <QMimeData>
#include <QSignalSpy>
#include <QtTest>

using namespace Ovra;

namespace {

const char *const FiveAnimations = "; animations of a test character\n"
                                   "<0>\n"
                                   "frame a, 0, 0, 4\n"
                                   "box a 0, 0, 10, 10\n"
                                   "<1>\n"
                                   "; the walk\n"
                                   "frame b, 1, 0, 5\n"
                                   "frame c, 2, 0, 5, loop\n"
                                   "\n"
                                   "<walk>\n"
                                   "frame d, 0, 0, 3\n"
                                   "<20>\n"
                                   "frame e, 0, 0, -1\n"
                                   "<Run>\n"
                                   "frame f, 0, 0, 2\n";

struct Fixture : AnimationsDocument
{
    explicit Fixture(const QString &text) : AnimationsDocument(text) {}
    QStringList ids() const
    {
        QStringList list;
        for (const AnimationCode *animation : animations->animations())
            list << animation->property(QStringLiteral("Identifier")).toString();
        return list;
    }
};

} // namespace

class AnimationsTest : public QObject
{
    Q_OBJECT

private slots:
    void listFollowsTheText();
    void everyMoveIsOneUndoStep();
    void organizeAndDrop();
    void addInsertDuplicateRemove();
    void compare_data();
    void compare();
    void nothingToShowWhileTheCodeChanges();
};

void AnimationsTest::listFollowsTheText()
{
    Fixture f(QString::fromLatin1(FiveAnimations));
    QAbstractItemModelTester tester(f.animations->model(), QAbstractItemModelTester::FailureReportingMode::QtTest);
    QCOMPARE(f.ids(), QStringList({"0", "1", "walk", "20", "Run"}));
    QCOMPARE(f.animations->data(f.animations->index(2), Qt::DisplayRole).toString(), QStringLiteral("Animation walk"));
    QVERIFY(!f.animations->data(f.animations->index(2), Qt::ToolTipRole).isValid());
    QCOMPARE(f.animations->at(5), nullptr);
    QCOMPARE(f.animations->indexOf(f.animations->at(3)), 3);
    // Names are found by their case, numbers by their value.
    QCOMPARE(f.animations->find(0, QStringLiteral("walk")), 2);
    QCOMPARE(f.animations->find(0, QStringLiteral("WALK")), -1);
    QCOMPARE(f.animations->find(0, 20), 3);
    QCOMPARE(f.animations->find(3, 1), -1);

    // A header broken and typed back: the row goes and comes back.
    QSignalSpy removed(f.animations, &QAbstractItemModel::rowsRemoved);
    QSignalSpy inserted(f.animations, &QAbstractItemModel::rowsInserted);
    QTextCursor cursor(f.document.findBlockByNumber(9));
    cursor.insertText(QStringLiteral("x"));
    QCOMPARE(f.ids(), QStringList({"0", "1", "20", "Run"}));
    cursor.deletePreviousChar();
    QCOMPARE(f.ids(), QStringList({"0", "1", "walk", "20", "Run"}));
    QCOMPARE(removed.count(), 1);
    QCOMPARE(inserted.count(), 1);
}

void AnimationsTest::everyMoveIsOneUndoStep()
{
    const QString original = QString::fromLatin1(FiveAnimations);
    const QStringList order({"0", "1", "walk", "20", "Run"});
    for (uint from = 0; from < 5; ++from) {
        for (uint to = 0; to < 5; ++to) {
            Fixture f(original);
            QAbstractItemModelTester tester(f.animations, QAbstractItemModelTester::FailureReportingMode::QtTest);
            QSignalSpy moved(f.animations, &QAbstractItemModel::rowsMoved);
            QSignalSpy inserted(f.animations, &QAbstractItemModel::rowsInserted);
            f.animations->move(from, to);

            QStringList expected = order;
            expected.move(int(from), int(to));
            QCOMPARE(f.ids(), expected);
            // The frames went with their animation.
            const AnimationCode *walk = f.animations->at(uint(expected.indexOf(QStringLiteral("walk"))));
            QCOMPARE(walk->frameCount(), 1u);
            const AnimationCode *second = f.animations->at(uint(expected.indexOf(QStringLiteral("1"))));
            QCOMPARE(second->frameCount(), 2u);
            QCOMPARE(second->loopPoint(), 1u);
            // One row move for the views, no insertion of its own.
            QCOMPARE(moved.count(), from == to ? 0 : 1);
            QCOMPARE(inserted.count(), 0);
            // The list agrees with a fresh parse of the new text.
            Fixture fresh(f.document.toString());
            QCOMPARE(fresh.ids(), expected);

            f.document.undo();
            QCOMPARE(f.document.toString(), original);
            QCOMPARE(f.ids(), order);
            f.document.redo();
            QCOMPARE(f.ids(), expected);
        }
    }
}

void AnimationsTest::organizeAndDrop()
{
    Fixture f(QString::fromLatin1(FiveAnimations));
    QAbstractItemModelTester tester(f.animations, QAbstractItemModelTester::FailureReportingMode::QtTest);
    f.animations->autoOrganize();
    // A number and a name never sort before one another, so the insertion sort leaves
    // "20" behind the names that stood before it.
    QCOMPARE(f.ids(), QStringList({"0", "1", "Run", "walk", "20"}));
    // The whole organization is one undo step.
    f.document.undo();
    QCOMPARE(f.document.toString(), QString::fromLatin1(FiveAnimations));

    std::unique_ptr<QMimeData> data(f.animations->mimeData({f.animations->index(4)}));
    QVERIFY(f.animations->dropMimeData(data.get(), Qt::MoveAction, 0, 0, QModelIndex()));
    QCOMPARE(f.ids(), QStringList({"Run", "0", "1", "walk", "20"}));
}

void AnimationsTest::addInsertDuplicateRemove()
{
    Fixture f(QString::fromLatin1(FiveAnimations));
    QAbstractItemModelTester tester(f.animations, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QCOMPARE(f.animations->newIdentifier(), QVariant(2));

    AnimationCode *added = f.animations->add(QStringLiteral("2"));
    QVERIFY(added);
    QCOMPARE(f.animations->indexOf(added), 5);
    QVERIFY(f.document.toString().endsWith(QStringLiteral("frame f, 0, 0, 2\n<2>\n")));

    AnimationCode *inserted = f.animations->insert(1, QStringLiteral("jump"));
    QCOMPARE(f.animations->indexOf(inserted), 1);
    QCOMPARE(f.ids(), QStringList({"0", "jump", "1", "walk", "20", "Run", "2"}));
    // Past the end an insertion is an addition.
    QCOMPARE(f.animations->indexOf(f.animations->insert(99, QStringLiteral("last"))), 7);

    AnimationCode *copy = f.animations->duplicate(2, QStringLiteral("WALK2"));
    QCOMPARE(f.animations->indexOf(copy), 3);
    QCOMPARE(f.ids(), QStringList({"0", "jump", "1", "WALK2", "walk", "20", "Run", "2", "last"}));
    QCOMPARE(copy->frameCount(), 2u);
    QCOMPARE(copy->code(), QStringLiteral("<WALK2>\n; the walk\nframe b, 1, 0, 5\nframe c, 2, 0, 5, loop"));
    // Without a name the copy keeps the identifier.
    AnimationCode *same = f.animations->duplicate(8, QString());
    QCOMPARE(f.animations->indexOf(same), 9);
    QCOMPARE(f.ids().mid(8), QStringList({"last", "last"}));

    f.animations->remove(0);
    QCOMPARE(f.ids().first(), QStringLiteral("jump"));
    QVERIFY(!f.document.toString().contains(QStringLiteral("box a")));
    f.animations->remove(42);
    QCOMPARE(f.animations->count(), 9u);
}

void AnimationsTest::compare_data()
{
    QTest::addColumn<uint>("a");
    QTest::addColumn<uint>("b");
    QTest::addColumn<int>("result");

    QTest::addRow("numbers") << 0u << 1u << -1;
    QTest::addRow("numbers reversed") << 3u << 1u << 1;
    QTest::addRow("names ignore case") << 4u << 2u << -1;
    QTest::addRow("names reversed") << 2u << 4u << 1;
    QTest::addRow("number before name") << 0u << 2u << 1;
    QTest::addRow("name before number") << 2u << 0u << 1;
    QTest::addRow("equal") << 1u << 1u << 1;
}

void AnimationsTest::compare()
{
    QFETCH(uint, a);
    QFETCH(uint, b);
    QFETCH(int, result);
    Fixture f(QString::fromLatin1(FiveAnimations));
    QCOMPARE(f.animations->compare(a, b), result);
}

void AnimationsTest::nothingToShowWhileTheCodeChanges()
{
    Fixture f(QString::fromLatin1(FiveAnimations));
    f.animations->beginChange();
    for (int row = 0; row < f.animations->rowCount(); ++row)
        QVERIFY(!f.animations->data(f.animations->index(row), Qt::DisplayRole).isValid());
    f.animations->endChange();
    QCOMPARE(f.animations->data(f.animations->index(0), Qt::DisplayRole).toString(), QStringLiteral("Animation 0"));

    QSignalSpy changed(f.animations, &OrganizableObject::changed);
    f.animations->remove(4);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(changed.first().first().toBool(), true);
}

QTEST_MAIN(AnimationsTest)
#include "tst_animations.moc"
