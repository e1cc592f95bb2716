#include "project/organizable.h"

#include <QAbstractItemModelTester>
#include <QMimeData>
#include <QSignalSpy>
#include <QtTest>

using namespace Ovra;

namespace {

// A list of words with the moves of a file: each move is one row move for the views,
// and the change brackets are counted.
class Words : public OrganizableObject
{
public:
    explicit Words(const QString &words) : items(words.split(QLatin1Char(' '))) {}

    int rowCount(const QModelIndex &parent = QModelIndex()) const override { return parent.isValid() ? 0 : items.size(); }
    QVariant data(const QModelIndex &index, int role) const override
    {
        return role == Qt::DisplayRole && index.isValid() ? items.value(index.row()) : QVariant();
    }
    void move(uint from, uint to) override
    {
        ++moves;
        sawDrag |= isMoveFromDrag();
        beginMoveRows(QModelIndex(), int(from), int(from), QModelIndex(), int(to > from ? to + 1 : to));
        items.move(int(from), int(to));
        endMoveRows();
    }
    // Numbers by value, before words; letters by the first one only, so that equal
    // keys show whether the sort is stable.
    int compare(uint a, uint b) override
    {
        bool aNumber = false;
        bool bNumber = false;
        const int x = items.at(int(a)).toInt(&aNumber);
        const int y = items.at(int(b)).toInt(&bNumber);
        if (aNumber && bNumber)
            return x < y ? -1 : 1;
        if (aNumber != bNumber)
            return aNumber ? -1 : 1;
        return items.at(int(a)).at(0) < items.at(int(b)).at(0) ? -1 : 1;
    }
    void beginChange() override { ++depth; }
    void endChange() override
    {
        --depth;
        ++brackets;
    }
    QString text() const { return items.join(QLatin1Char(' ')); }

    QStringList items;
    int moves = 0;
    int depth = 0;
    int brackets = 0;
    bool sawDrag = false;
};

QList<uint> rows(std::initializer_list<uint> list)
{
    return QList<uint>(list);
}

} // namespace

class OrganizableTest : public QObject
{
    Q_OBJECT

private slots:
    void flagsAndActions();
    void buttonMoves_data();
    void buttonMoves();
    void autoOrganizeIsStable();
    void dropMovesRows_data();
    void dropMovesRows();
    void dropRefusesWhatIsNotAMoveOfItsRows();
};

void OrganizableTest::flagsAndActions()
{
    Words words(QStringLiteral("a b c"));
    QAbstractItemModelTester tester(&words, QAbstractItemModelTester::FailureReportingMode::QtTest);
    const Qt::ItemFlags row = words.flags(words.index(1));
    QCOMPARE(row, Qt::ItemIsSelectable | Qt::ItemIsDragEnabled | Qt::ItemIsEnabled | Qt::ItemNeverHasChildren);
    QCOMPARE(words.flags(QModelIndex()), Qt::ItemIsDropEnabled);
    QCOMPARE(words.supportedDropActions(), Qt::MoveAction);
    QCOMPARE(words.mimeTypes(), QStringList({OrganizableListModel::RowsMimeType}));
}

void OrganizableTest::buttonMoves_data()
{
    QTest::addColumn<QList<uint>>("selected");
    QTest::addColumn<uint>("target");
    QTest::addColumn<bool>("up");
    QTest::addColumn<QString>("after");
    QTest::addColumn<uint>("first");
    QTest::addColumn<int>("moves");

    QTest::addRow("one up") << rows({2}) << 1u << true << "a c b d e f" << 1u << 1;
    QTest::addRow("block to top") << rows({3, 1, 4}) << 0u << true << "b d e a c f" << 0u << 3;
    QTest::addRow("already there") << rows({0, 1}) << 0u << true << "a b c d e f" << 0u << 0;
    QTest::addRow("one down") << rows({1}) << 2u << false << "a c b d e f" << 2u << 1;
    QTest::addRow("block to bottom") << rows({0, 2}) << 5u << false << "b d e f a c" << 4u << 2;
    QTest::addRow("gap closes down") << rows({1, 3}) << 4u << false << "a c e b d f" << 3u << 2;
    QTest::addRow("nothing selected") << rows({}) << 3u << false << "a b c d e f" << 3u << 0;
}

void OrganizableTest::buttonMoves()
{
    QFETCH(QList<uint>, selected);
    QFETCH(uint, target);
    QFETCH(bool, up);
    QFETCH(QString, after);
    QFETCH(uint, first);
    QFETCH(int, moves);

    Words words(QStringLiteral("a b c d e f"));
    QAbstractItemModelTester tester(&words, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QSignalSpy modified(&words, &OrganizableObject::modified);
    const uint block = up ? words.moveRowsUp(selected, target) : words.moveRowsDown(selected, target);
    QCOMPARE(words.text(), after);
    QCOMPARE(block, first);
    QCOMPARE(words.moves, moves);
    QCOMPARE(words.depth, 0);
    // One change for the whole block, announced once; an empty selection does nothing.
    QCOMPARE(words.brackets, selected.isEmpty() ? 0 : 1);
    QCOMPARE(modified.count(), selected.isEmpty() ? 0 : 1);
}

void OrganizableTest::autoOrganizeIsStable()
{
    Words words(QStringLiteral("b2 10 a1 b1 2 a2 c 1"));
    QAbstractItemModelTester tester(&words, QAbstractItemModelTester::FailureReportingMode::QtTest);
    words.autoOrganize();
    // Numbers first by value; words by their first letter, equal ones in their old order.
    QCOMPARE(words.text(), QStringLiteral("1 2 10 a1 a2 b2 b1 c"));
    QCOMPARE(words.brackets, 1);
    words.autoOrganize();
    QCOMPARE(words.text(), QStringLiteral("1 2 10 a1 a2 b2 b1 c"));
}

void OrganizableTest::dropMovesRows_data()
{
    QTest::addColumn<QList<int>>("dragged");
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("after");

    QTest::addRow("up between rows") << QList<int>{3} << 1 << "a d b c e";
    QTest::addRow("several up") << QList<int>{4, 2} << 0 << "c e a b d";
    QTest::addRow("down") << QList<int>{0} << 2 << "b c a d e";
    QTest::addRow("past the end goes last") << QList<int>{1} << 5 << "a c d e b";
    // No row (a drop on the empty area) counts as row 0.
    QTest::addRow("no row") << QList<int>{2} << -1 << "c a b d e";
}

void OrganizableTest::dropMovesRows()
{
    QFETCH(QList<int>, dragged);
    QFETCH(int, row);
    QFETCH(QString, after);

    Words words(QStringLiteral("a b c d e"));
    QAbstractItemModelTester tester(&words, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QModelIndexList indexes;
    for (int r : dragged)
        indexes << words.index(r);
    std::unique_ptr<QMimeData> data(words.mimeData(indexes));
    QVERIFY(words.dropMimeData(data.get(), Qt::MoveAction, row, 0, QModelIndex()));
    QCOMPARE(words.text(), after);
    QVERIFY(words.sawDrag);
    QVERIFY(!words.isMoveFromDrag());
    QCOMPARE(words.brackets, 1);
}

void OrganizableTest::dropRefusesWhatIsNotAMoveOfItsRows()
{
    Words words(QStringLiteral("a b c"));
    std::unique_ptr<QMimeData> data(words.mimeData({words.index(2)}));
    QVERIFY(!words.dropMimeData(data.get(), Qt::CopyAction, 0, 0, QModelIndex()));
    QVERIFY(!words.dropMimeData(nullptr, Qt::MoveAction, 0, 0, QModelIndex()));
    QMimeData text;
    text.setText(QStringLiteral("a"));
    QVERIFY(!words.dropMimeData(&text, Qt::MoveAction, 0, 0, QModelIndex()));
    // Rows that aren't there, and bytes that don't read: nothing moves.
    QMimeData stray;
    QByteArray bytes;
    {
        QDataStream stream(&bytes, QIODevice::WriteOnly);
        stream << QList<quint32>{7, 9};
    }
    stray.setData(OrganizableListModel::RowsMimeType, bytes);
    QVERIFY(!words.dropMimeData(&stray, Qt::MoveAction, 0, 0, QModelIndex()));
    QMimeData broken;
    broken.setData(OrganizableListModel::RowsMimeType, QByteArray("\xff\xff", 2));
    QVERIFY(!words.dropMimeData(&broken, Qt::MoveAction, 0, 0, QModelIndex()));
    QCOMPARE(words.text(), QStringLiteral("a b c"));
    QCOMPARE(words.moves, 0);
}

QTEST_MAIN(OrganizableTest)
#include "tst_organizable.moc"
