#include "foundation/progressivedeleter.h"

#include <QtTest>

using namespace Ovra;

namespace {

QStringList deleted;

class Piece : public ProgressiveDeleter::Object
{
public:
    explicit Piece(const QString &name) : m_name(name) {}
    ~Piece() override { deleted.append(m_name); }

private:
    QString m_name;
};

class Model : public Ovra::Object
{
public:
    explicit Model(const QString &name) : m_name(name) {}
    void release() override { deleted.append(m_name + QStringLiteral(" released")); }

private:
    QString m_name;
};

} // namespace

class ProgressiveDeleterTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { deleted.clear(); }
    void cleanup() { ProgressiveDeleter::deleteAll(); }
    void oneAtATimeInOrder();
    void dependentGoesFirst_data();
    void dependentGoesFirst();
    void modelObjectsAreReleased();
    void restartsAfterRunningDry();
    void deleteAllRespectsDependencies();
    void cycleDoesNotHang();
};

void ProgressiveDeleterTest::oneAtATimeInOrder()
{
    for (const char *name : {"a", "b", "c"})
        ProgressiveDeleter::enqueue(new Piece(QLatin1String(name)));
    QCOMPARE(ProgressiveDeleter::pending(), 3);
    QVERIFY(deleted.isEmpty()); // nothing goes before the event loop runs
    QTRY_COMPARE(ProgressiveDeleter::pending(), 0);
    QCOMPARE(deleted, QStringList({"a", "b", "c"}));
}

void ProgressiveDeleterTest::dependentGoesFirst_data()
{
    QTest::addColumn<bool>("baseQueuedFirst");
    QTest::newRow("base queued first") << true;
    QTest::newRow("dependent queued first") << false;
}

void ProgressiveDeleterTest::dependentGoesFirst()
{
    QFETCH(bool, baseQueuedFirst);
    auto *base = new Piece(QStringLiteral("base"));
    auto *first = new Piece(QStringLiteral("first dependent"));
    auto *second = new Piece(QStringLiteral("second dependent"));
    if (baseQueuedFirst)
        ProgressiveDeleter::enqueue(base);
    ProgressiveDeleter::enqueue(first, base);
    ProgressiveDeleter::enqueue(second, base);
    if (!baseQueuedFirst)
        ProgressiveDeleter::enqueue(base);
    QTRY_COMPARE(ProgressiveDeleter::pending(), 0);
    QCOMPARE(deleted.size(), 3);
    QCOMPARE(deleted.last(), QStringLiteral("base"));
}

void ProgressiveDeleterTest::modelObjectsAreReleased()
{
    Model project(QStringLiteral("project")), image(QStringLiteral("image"));
    ProgressiveDeleter::Object *place = ProgressiveDeleter::enqueue(&project);
    ProgressiveDeleter::enqueue(&image, place);
    QTRY_COMPARE(ProgressiveDeleter::pending(), 0);
    QCOMPARE(deleted, QStringList({"image released", "project released"}));
}

void ProgressiveDeleterTest::restartsAfterRunningDry()
{
    ProgressiveDeleter::enqueue(new Piece(QStringLiteral("early")));
    QTRY_COMPARE(ProgressiveDeleter::pending(), 0);
    QTest::qWait(30); // the timer has found the queue empty and stopped
    ProgressiveDeleter::enqueue(new Piece(QStringLiteral("late")));
    QTRY_COMPARE(deleted, QStringList({"early", "late"}));
}

void ProgressiveDeleterTest::deleteAllRespectsDependencies()
{
    auto *base = new Piece(QStringLiteral("base"));
    ProgressiveDeleter::enqueue(base);
    ProgressiveDeleter::enqueue(new Piece(QStringLiteral("x")), base);
    ProgressiveDeleter::enqueue(new Piece(QStringLiteral("y")));
    ProgressiveDeleter::deleteAll();
    QCOMPARE(ProgressiveDeleter::pending(), 0);
    QCOMPARE(deleted, QStringList({"x", "y", "base"}));
}

void ProgressiveDeleterTest::cycleDoesNotHang()
{
    // A cycle can't be ordered. The timer gives up on it instead of spinning, and the
    // end of the run frees both all the same.
    auto *a = new Piece(QStringLiteral("a"));
    auto *b = new Piece(QStringLiteral("b"));
    ProgressiveDeleter::enqueue(a, b);
    ProgressiveDeleter::enqueue(b, a);
    ProgressiveDeleter::enqueue(new Piece(QStringLiteral("free")));
    QTRY_COMPARE(deleted, QStringList({"free"}));
    QTest::qWait(50);
    QCOMPARE(ProgressiveDeleter::pending(), 2);
    ProgressiveDeleter::deleteAll();
    QCOMPARE(ProgressiveDeleter::pending(), 0);
    QCOMPARE(deleted.size(), 3);
}

QTEST_GUILESS_MAIN(ProgressiveDeleterTest)
#include "tst_progressivedeleter.moc"
