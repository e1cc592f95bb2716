#include "foundation/progressivedeleter.h"

#include <QtTest>

using namespace Ovra;

namespace {

QStringList deleted;

class Piece : public ProgressiveDeleter::Object
{
public:
    explicit Piece(const char *name) : m_name(QLatin1String(name)) {}
    ~Piece() override { deleted.append(m_name); }

private:
    QString m_name;
};

class Model : public Ovra::Object
{
public:
    explicit Model(const char *name) : m_name(QLatin1String(name)) {}
    void release() override { deleted.append(m_name + QStringLiteral(" released")); }

private:
    QString m_name;
};

// Returns after the deleter's next tick, or after the moment it would have come. The
// deleter ticks every 10 ms, so a timer of that interval started after one of its ticks
// is due no earlier than its next one, and timers due together fire in the order they
// were started.
void waitOneTick()
{
    QTimer tick;
    tick.setSingleShot(true);
    tick.setTimerType(Qt::PreciseTimer);
    QSignalSpy timedOut(&tick, &QTimer::timeout);
    tick.start(10);
    QVERIFY(timedOut.wait());
}

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
        ProgressiveDeleter::enqueue(new Piece(name));
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
    auto *base = new Piece("base");
    if (baseQueuedFirst)
        ProgressiveDeleter::enqueue(base);
    ProgressiveDeleter::enqueue(new Piece("first dependent"), base);
    ProgressiveDeleter::enqueue(new Piece("second dependent"), base);
    if (!baseQueuedFirst)
        ProgressiveDeleter::enqueue(base);
    QTRY_COMPARE(ProgressiveDeleter::pending(), 0);
    QCOMPARE(deleted.size(), 3);
    QCOMPARE(deleted.last(), QStringLiteral("base"));
}

void ProgressiveDeleterTest::modelObjectsAreReleased()
{
    Model project("project"), image("image");
    ProgressiveDeleter::Object *place = ProgressiveDeleter::enqueue(&project);
    ProgressiveDeleter::enqueue(&image, place);
    QTRY_COMPARE(ProgressiveDeleter::pending(), 0);
    QCOMPARE(deleted, QStringList({"image released", "project released"}));
}

void ProgressiveDeleterTest::restartsAfterRunningDry()
{
    ProgressiveDeleter::enqueue(new Piece("early"));
    QTRY_COMPARE(ProgressiveDeleter::pending(), 0);
    waitOneTick(); // the tick that finds the queue empty stops the timer
    ProgressiveDeleter::enqueue(new Piece("late"));
    QTRY_COMPARE(deleted, QStringList({"early", "late"}));
}

void ProgressiveDeleterTest::deleteAllRespectsDependencies()
{
    auto *base = new Piece("base");
    ProgressiveDeleter::enqueue(base);
    ProgressiveDeleter::enqueue(new Piece("x"), base);
    ProgressiveDeleter::enqueue(new Piece("y"));
    ProgressiveDeleter::deleteAll();
    QCOMPARE(ProgressiveDeleter::pending(), 0);
    QCOMPARE(deleted, QStringList({"x", "y", "base"}));
}

void ProgressiveDeleterTest::cycleDoesNotHang()
{
    // A cycle can't be ordered. The timer rests instead of spinning on it, and the end
    // of the run frees both all the same.
    auto *a = new Piece("a");
    auto *b = new Piece("b");
    ProgressiveDeleter::enqueue(a, b);
    ProgressiveDeleter::enqueue(b, a);
    ProgressiveDeleter::enqueue(new Piece("free"));
    QTRY_COMPARE(deleted, QStringList({"free"}));
    waitOneTick();
    QCOMPARE(ProgressiveDeleter::pending(), 2);
    // A new object wakes the resting timer and goes past the cycle.
    ProgressiveDeleter::enqueue(new Piece("late"));
    QTRY_COMPARE(deleted, QStringList({"free", "late"}));
    QCOMPARE(ProgressiveDeleter::pending(), 2);
    ProgressiveDeleter::deleteAll();
    QCOMPARE(ProgressiveDeleter::pending(), 0);
    QCOMPARE(deleted.size(), 4);
}

QTEST_GUILESS_MAIN(ProgressiveDeleterTest)
#include "tst_progressivedeleter.moc"
