// The time line as a person uses it, and its clock driven by a clock the test holds.
#include "testinterface.h"

#include "editors/animation/timeline.h"
#include "editors/animation/timelinewidget.h"
#include "editors/animation/timesource.h"

#include <QElapsedTimer>
#include <QMap>
#include <QSignalSpy>
#include <QTimer>
#include <QWindow>
#include <QtTest>

#include <cmath>
#include <memory>

using namespace Ovra;

namespace {

// Hands the widget the milliseconds the test sets, and counts its starts.
class TestClock : public TimeSource
{
public:
    void start() override { ++starts; }
    qint64 restart() override { return next; }

    qint64 next = 16;
    int starts = 0;
};

// Blocks at fixed ticks; counts the lanes that went.
class TestLane : public TimeLine
{
public:
    TestLane(const QString &name, QMap<uint, uint> blocks, int *gone = nullptr)
        : m_name(name), m_blocks(std::move(blocks)), m_gone(gone) {}
    ~TestLane() override
    {
        if (m_gone)
            ++*m_gone;
    }
    QString name() const override { return m_name; }
    bool blockAt(uint tick, uint &length) const override
    {
        const auto found = m_blocks.constFind(tick);
        if (found == m_blocks.constEnd())
            return false;
        length = found.value();
        return true;
    }

private:
    QString m_name;
    QMap<uint, uint> m_blocks;
    int *m_gone;
};

constexpr int LanesLeft = 125;
constexpr int TickWidth = 6;
constexpr int LaneHeight = 30;
constexpr int RulerHeight = 20;

QObject *privateOf(TimeLineWidget &widget)
{
    return widget.findChild<QObject *>(QStringLiteral("timeLinePrivate"));
}

QTimer *timerOf(TimeLineWidget &widget, const char *name)
{
    return widget.findChild<QTimer *>(QLatin1String(name));
}

// One tick of the timer, without waiting for it.
void step(TimeLineWidget &widget)
{
    QVERIFY(QMetaObject::invokeMethod(privateOf(widget), "timeStep", Qt::DirectConnection));
}

// The middle of the column of a tick on the page.
int xOf(const TimeLineWidget &widget, uint tick)
{
    return LanesLeft + (int(tick) - widget.firstTick()) * TickWidth + TickWidth / 2;
}

// A widget that shows `ticks` ticks beside the lane names, with a clock of the test's,
// in a window with room around it for the mouse to leave it.
struct Fixture
{
    explicit Fixture(int ticks = 50, int lanes = 0)
    {
        widget.resize(LanesLeft + ticks * TickWidth, 100);
        clock = new TestClock;
        widget.setTimeSource(clock);
        for (int i = 0; i < lanes; ++i)
            widget.addTimeLine(new TestLane(QStringLiteral("Lane %1").arg(i), {{uint(i * 3), 4u}}));
    }
    bool show()
    {
        host.resize(widget.width() + 2 * Margin, widget.height() + 2 * Margin);
        widget.setParent(&host);
        widget.move(Margin, Margin);
        host.show();
        return QTest::qWaitForWindowExposed(&host);
    }
    QWindow *window() { return host.windowHandle(); }
    // A point of the widget in the window.
    QPoint at(int x, int y) const { return QPoint(x + Margin, y + Margin); }

    static constexpr int Margin = 120;
    QWidget host;
    TimeLineWidget widget;
    TestClock *clock;
};

} // namespace

class TimeLineTest : public QObject
{
    Q_OBJECT

private slots:
    void startsStopped();
    void ticksPerSecondIsALabel();
    void lanesSetTheHeight_data();
    void lanesSetTheHeight();
    void lateTicksShortenTheNext_data();
    void lateTicksShortenTheNext();
    void periodsAverageTheIdeal();
    void aLongStallCatchesUpASecondAtMost();
    void fpsStaysSixtyForTheFirstSecond();
    void playAndStop();
    void setCurrentTickTells_data();
    void setCurrentTickTells();
    void pages_data();
    void pages();
    void keysOnlyWhenStopped();
    void clicksSelectLanesAndTicks();
    void markerDragScrollsPastTheEdges();
    void markerShowsTheResizeCursor();
    void paintsBlocksAndMarker();
    void realClockKeepsTheFractions();
};

void TimeLineTest::startsStopped()
{
    TimeLineWidget widget;
    QCOMPARE(widget.currentTick(), 0u);
    QCOMPARE(widget.currentFPS(), 0.0f);
    QVERIFY(!widget.isPlaying());
    QCOMPARE(widget.selectedLane(), 0);
    QTimer *ticks = timerOf(widget, "tickTimer");
    QTimer *move = timerOf(widget, "moveTimer");
    QVERIFY(ticks && move);
    QVERIFY(!ticks->isSingleShot());
    QCOMPARE(ticks->interval(), 16);
    QVERIFY(!move->isSingleShot());
    QCOMPARE(move->interval(), 250);
}

// The timer keeps 60 a second whatever the label says.
void TimeLineTest::ticksPerSecondIsALabel()
{
    Fixture f;
    QCOMPARE(f.widget.ticksPerSecond(), 60u);
    f.widget.setTicksPerSecond(25);
    QCOMPARE(f.widget.ticksPerSecond(), 25u);
    f.widget.play();
    QCOMPARE(timerOf(f.widget, "tickTimer")->interval(), 16);
    f.clock->next = 17;
    step(f.widget);
    QCOMPARE(timerOf(f.widget, "tickTimer")->interval(), 16);
    f.widget.stop();
}

void TimeLineTest::lanesSetTheHeight_data()
{
    QTest::addColumn<bool>("host");
    QTest::addColumn<int>("scale");
    QTest::addColumn<int>("lanes");
    QTest::addColumn<int>("height");
    QTest::newRow("no host, one lane") << false << 1 << 1 << 20 + 30;
    QTest::newRow("no host, three lanes") << false << 1 << 3 << 20 + 90;
    QTest::newRow("host at 100 %") << true << 1 << 2 << 20 + 60;
    QTest::newRow("host at 200 %: only the ruler grows") << true << 2 << 2 << 40 + 60;
}

void TimeLineTest::lanesSetTheHeight()
{
    QFETCH(bool, host);
    QFETCH(int, scale);
    QFETCH(int, lanes);
    QFETCH(int, height);
    std::unique_ptr<TestInterface> interface(host ? new TestInterface : nullptr);
    if (interface)
        interface->scaleNumerator = scale;
    int gone = 0;
    {
        TimeLineWidget widget;
        for (int i = 0; i < lanes; ++i)
            widget.addTimeLine(new TestLane(QString::number(i), {}, &gone));
        widget.addTimeLine(nullptr);
        QCOMPARE(widget.timeLineCount(), lanes);
        QCOMPARE(widget.height(), height);
        widget.clearTimeLines();
        QCOMPARE(gone, lanes);
        QCOMPARE(widget.timeLineCount(), 0);
        // Emptied, the widget keeps its height until a lane comes again.
        QCOMPARE(widget.height(), height);
        widget.addTimeLine(new TestLane(QStringLiteral("again"), {}, &gone));
        QCOMPARE(widget.height(), height - (lanes - 1) * LaneHeight);
    }
    // The last lane went with the widget.
    QCOMPARE(gone, lanes + 1);
}

void TimeLineTest::lateTicksShortenTheNext_data()
{
    QTest::addColumn<QVector<int>>("periods");
    QTest::addColumn<QVector<int>>("intervals");
    // What each tick measured, and the interval the timer gets for the next one. After k
    // ticks the next interval is 1000 / 60 * (k + 1) less the time measured, truncated.
    // Every third value of that is a whole number, which the float arithmetic may put
    // either side of: those are not compared (-1).
    QTest::newRow("on time") << QVector<int>{16, 17, 17, 16} << QVector<int>{17, -1, 16, 17};
    QTest::newRow("early") << QVector<int>{10} << QVector<int>{23};
    QTest::newRow("late") << QVector<int>{30} << QVector<int>{3};
    QTest::newRow("very late: 0, not below") << QVector<int>{50, 0, 0, 16} << QVector<int>{0, -1, 16, 17};
    QTest::newRow("very late, long after: still 0") << QVector<int>{90, 0, 0, 0} << QVector<int>{0, 0, 0, 0};
    QTest::newRow("late, then on time") << QVector<int>{20, 13, 16} << QVector<int>{13, -1, 17};
}

void TimeLineTest::lateTicksShortenTheNext()
{
    QFETCH(QVector<int>, periods);
    QFETCH(QVector<int>, intervals);
    Fixture f;
    f.widget.play();
    QCOMPARE(f.clock->starts, 1);
    QTimer *timer = timerOf(f.widget, "tickTimer");
    for (int i = 0; i < periods.size(); ++i) {
        f.clock->next = periods.at(i);
        step(f.widget);
        if (intervals.at(i) >= 0)
            QCOMPARE(timer->interval(), intervals.at(i));
        QVERIFY(timer->interval() >= 0);
        QVERIFY(timer->isActive());
    }
    QCOMPARE(f.widget.currentTick(), uint(periods.size()));
    f.widget.stop();
}

// An event loop that fires each timer up to 3 ms late: over many ticks the feedback keeps
// the mean period at 1000 / 60 ms, where the plain interval alone would run at 62.5 Hz.
void TimeLineTest::periodsAverageTheIdeal()
{
    Fixture f;
    f.widget.play();
    QTimer *timer = timerOf(f.widget, "tickTimer");
    const int ticks = 3000;
    qint64 total = 0;
    uint lateness = 7;
    for (int i = 0; i < ticks; ++i) {
        lateness = lateness * 1103515245u + 12345u;
        const qint64 period = timer->interval() + (lateness >> 16) % 4;
        f.clock->next = period;
        total += period;
        step(f.widget);
    }
    const double ideal = ticks * 1000.0 / 60.0;
    // The error still owed is under one period plus the lateness of one tick.
    QVERIFY2(std::abs(double(total) - ideal) < 20.0, qPrintable(QString::number(double(total) - ideal)));
    QVERIFY(std::abs(f.widget.currentFPS() - 60.0f) < 1.0f);
    f.widget.stop();
}

void TimeLineTest::aLongStallCatchesUpASecondAtMost()
{
    Fixture f;
    f.widget.play();
    QTimer *timer = timerOf(f.widget, "tickTimer");
    f.clock->next = 5000;
    step(f.widget);
    QCOMPARE(timer->interval(), 0);
    // Ticks that come at once now, until the debt is paid.
    f.clock->next = 0;
    int atOnce = 0;
    while (timer->interval() == 0 && atOnce < 1000) {
        step(f.widget);
        ++atOnce;
    }
    QVERIFY2(atOnce >= 58 && atOnce <= 61, qPrintable(QString::number(atOnce)));
    f.widget.stop();
}

void TimeLineTest::fpsStaysSixtyForTheFirstSecond()
{
    Fixture f;
    QCOMPARE(f.widget.currentFPS(), 0.0f);
    f.widget.play();
    f.clock->next = 20;
    for (int i = 1; i < 50; ++i) {
        step(f.widget);
        QCOMPARE(f.widget.currentFPS(), 60.0f);
    }
    // The 50th tick ends the first second: 50 ticks in 1000 ms.
    step(f.widget);
    QCOMPARE(f.widget.currentFPS(), 50.0f);
    f.clock->next = 8;
    for (int i = 0; i < 124; ++i)
        step(f.widget);
    QCOMPARE(f.widget.currentFPS(), 50.0f);
    step(f.widget);
    QCOMPARE(f.widget.currentFPS(), 125.0f);
    // A new play measures afresh.
    f.widget.stop();
    f.widget.play();
    QCOMPARE(f.widget.currentFPS(), 60.0f);
    f.clock->next = 16;
    for (int i = 0; i < 62; ++i)
        step(f.widget);
    QCOMPARE(f.widget.currentFPS(), 60.0f);
    step(f.widget);
    QCOMPARE(f.widget.currentFPS(), float(63 * 1000.0 / 1008));
    f.widget.stop();
}

void TimeLineTest::playAndStop()
{
    Fixture f;
    f.widget.setCurrentTick(5);
    QSignalSpy ticks(&f.widget, &TimeLineWidget::tickChanged);
    f.widget.play();
    QVERIFY(f.widget.isPlaying());
    // Play tells the tick it starts from.
    QCOMPARE(ticks.count(), 1);
    QCOMPARE(ticks.takeFirst().at(0).toUInt(), 5u);
    // The real timer ticks on.
    f.clock->next = 16;
    QVERIFY(ticks.wait(2000));
    QCOMPARE(ticks.takeFirst().at(0).toUInt(), 6u);
    f.widget.stop();
    QVERIFY(!f.widget.isPlaying());
    // Stopped, the timer's signal no longer reaches the tick.
    const uint at = f.widget.currentTick();
    QVERIFY(QMetaObject::invokeMethod(timerOf(f.widget, "tickTimer"), "timeout", Qt::DirectConnection));
    QCOMPARE(f.widget.currentTick(), at);
    // Playing twice connects once.
    f.widget.play();
    f.widget.play();
    ticks.clear();
    QVERIFY(QMetaObject::invokeMethod(timerOf(f.widget, "tickTimer"), "timeout", Qt::DirectConnection));
    QCOMPARE(ticks.count(), 1);
    QCOMPARE(f.widget.currentTick(), at + 1);
    f.widget.stop();
}

void TimeLineTest::setCurrentTickTells_data()
{
    QTest::addColumn<uint>("tick");
    QTest::addColumn<bool>("force");
    QTest::addColumn<bool>("tells");
    QTest::newRow("same tick") << 7u << false << false;
    QTest::newRow("same tick, forced") << 7u << true << true;
    QTest::newRow("another") << 8u << false << true;
    QTest::newRow("back to 0") << 0u << false << true;
    QTest::newRow("the last tick") << 0xffffffffu << false << true;
}

void TimeLineTest::setCurrentTickTells()
{
    QFETCH(uint, tick);
    QFETCH(bool, force);
    QFETCH(bool, tells);
    Fixture f;
    f.widget.setCurrentTick(7);
    QSignalSpy spy(&f.widget, &TimeLineWidget::tickChanged);
    f.widget.setCurrentTick(tick, force);
    QCOMPARE(spy.count(), tells ? 1 : 0);
    if (tells)
        QCOMPARE(spy.at(0).at(0).toUInt(), tick);
    QCOMPARE(f.widget.currentTick(), tick);
    // On the page, where the page can reach.
    if (tick < 0x7fffffffu)
        QVERIFY(f.widget.firstTick() <= qint64(tick) && qint64(tick) < qint64(f.widget.firstTick()) + 50 + 10);
}

void TimeLineTest::pages_data()
{
    QTest::addColumn<int>("visible");
    QTest::addColumn<QVector<uint>>("ticks");
    QTest::addColumn<QVector<int>>("firstTicks");
    QTest::newRow("50 a page") << 50 << QVector<uint>{49, 50, 99, 130, 75, 10} << QVector<int>{0, 50, 50, 100, 50, 0};
    // Page starts are whole pages, then rounded down to tens.
    QTest::newRow("37 a page") << 37 << QVector<uint>{36, 37, 80, 111} << QVector<int>{0, 30, 70, 110};
    QTest::newRow("fewer than ten") << 4 << QVector<uint>{3, 4, 9, 13} << QVector<int>{0, 0, 0, 10};
    QTest::newRow("no room for a tick") << 0 << QVector<uint>{0, 57, 58} << QVector<int>{0, 50, 50};
    QTest::newRow("far out") << 60 << QVector<uint>{0xffffffffu, 0} << QVector<int>{2147483640, 0};
}

void TimeLineTest::pages()
{
    QFETCH(int, visible);
    QFETCH(QVector<uint>, ticks);
    QFETCH(QVector<int>, firstTicks);
    Fixture f(visible);
    QCOMPARE(f.widget.visibleTicks(), visible);
    for (int i = 0; i < ticks.size(); ++i) {
        f.widget.setCurrentTick(ticks.at(i));
        QCOMPARE(f.widget.firstTick(), firstTicks.at(i));
    }
    // Playing pages too: from the last tick of a page to the next page.
    if (visible >= 10) {
        f.widget.setCurrentTick(uint(visible - 1));
        QCOMPARE(f.widget.firstTick(), 0);
        f.widget.play();
        step(f.widget);
        QCOMPARE(f.widget.currentTick(), uint(visible));
        QCOMPARE(f.widget.firstTick(), visible / 10 * 10);
        f.widget.stop();
    }
}

void TimeLineTest::keysOnlyWhenStopped()
{
    Fixture f;
    QVERIFY(f.show());
    QSignalSpy spy(&f.widget, &TimeLineWidget::tickChanged);
    QTest::keyClick(&f.widget, Qt::Key_Left);
    QCOMPARE(f.widget.currentTick(), 0u);
    QCOMPARE(spy.count(), 0);
    QTest::keyClick(&f.widget, Qt::Key_Right);
    QTest::keyClick(&f.widget, Qt::Key_Right);
    QTest::keyClick(&f.widget, Qt::Key_Right);
    QTest::keyClick(&f.widget, Qt::Key_Left);
    QCOMPARE(f.widget.currentTick(), 2u);
    QCOMPARE(spy.count(), 4);
    // Right over the page's edge turns the page.
    f.widget.setCurrentTick(49);
    QTest::keyClick(&f.widget, Qt::Key_Right);
    QCOMPARE(f.widget.firstTick(), 50);

    f.widget.play();
    spy.clear();
    QTest::keyClick(&f.widget, Qt::Key_Left);
    QTest::keyClick(&f.widget, Qt::Key_Right);
    QCOMPARE(f.widget.currentTick(), 50u);
    QCOMPARE(spy.count(), 0);
    f.widget.stop();
}

void TimeLineTest::clicksSelectLanesAndTicks()
{
    Fixture f(50, 3);
    QVERIFY(f.show());
    QSignalSpy spy(&f.widget, &TimeLineWidget::tickChanged);
    const int lane2 = RulerHeight + 2 * LaneHeight + 5;
    QTest::mouseClick(f.window(), Qt::LeftButton, {}, f.at(xOf(f.widget, 12), lane2));
    QCOMPARE(f.widget.selectedLane(), 2);
    QCOMPARE(f.widget.currentTick(), 12u);
    QCOMPARE(spy.count(), 1);
    // Pressed on one tick and let go on another: the tick where the button came up.
    QTest::mousePress(f.window(), Qt::LeftButton, {}, f.at(xOf(f.widget, 20), RulerHeight + 5));
    QCOMPARE(f.widget.selectedLane(), 0);
    QTest::mouseMove(f.window(), f.at(xOf(f.widget, 30), RulerHeight + 5));
    QCOMPARE(f.widget.currentTick(), 12u);
    QTest::mouseRelease(f.window(), Qt::LeftButton, {}, f.at(xOf(f.widget, 30), RulerHeight + 5));
    QCOMPARE(f.widget.currentTick(), 30u);
    // On the ruler no lane changes; the tick does.
    QTest::mouseClick(f.window(), Qt::LeftButton, {}, f.at(xOf(f.widget, 3), 5));
    QCOMPARE(f.widget.selectedLane(), 0);
    QCOMPARE(f.widget.currentTick(), 3u);
    // On the names, nothing.
    spy.clear();
    QTest::mouseClick(f.window(), Qt::LeftButton, {}, f.at(40, RulerHeight + LaneHeight + 5));
    QCOMPARE(f.widget.selectedLane(), 0);
    QCOMPARE(spy.count(), 0);
    // Playing, clicks do nothing.
    f.widget.play();
    const uint playing = f.widget.currentTick();
    QTest::mouseClick(f.window(), Qt::LeftButton, {}, f.at(xOf(f.widget, 40), RulerHeight + LaneHeight + 5));
    QCOMPARE(f.widget.selectedLane(), 0);
    QCOMPARE(f.widget.currentTick(), playing);
    f.widget.stop();
}

void TimeLineTest::markerDragScrollsPastTheEdges()
{
    Fixture f(50, 1);
    QVERIFY(f.show());
    QTimer *move = timerOf(f.widget, "moveTimer");
    f.widget.setCurrentTick(10);
    const int y = RulerHeight + 10;
    QTest::mousePress(f.window(), Qt::LeftButton, {}, f.at(xOf(f.widget, 10), y));
    QTest::mouseMove(f.window(), f.at(xOf(f.widget, 25), y));
    QCOMPARE(f.widget.currentTick(), 25u);
    QVERIFY(!move->isActive());
    // Three ticks past the right edge: the page scrolls three ticks each time.
    QSignalSpy spy(&f.widget, &TimeLineWidget::tickChanged);
    QTest::mouseMove(f.window(), f.at(xOf(f.widget, 52), y));
    QVERIFY(move->isActive());
    QCOMPARE(f.widget.currentTick(), 25u);
    QVERIFY(spy.wait(2000));
    QCOMPARE(f.widget.firstTick(), 3);
    QCOMPARE(f.widget.currentTick(), 28u);
    QVERIFY(QMetaObject::invokeMethod(privateOf(f.widget), "moveTimeout", Qt::DirectConnection));
    QCOMPARE(f.widget.firstTick(), 6);
    QCOMPARE(f.widget.currentTick(), 31u);
    // Back inside, the scrolling stops and the marker follows the mouse.
    QTest::mouseMove(f.window(), f.at(xOf(f.widget, 40), y));
    QVERIFY(!move->isActive());
    QCOMPARE(f.widget.currentTick(), 40u);
    // Out on the left, two ticks past the edge.
    QTest::mouseMove(f.window(), f.at(LanesLeft - 2 * TickWidth - 1, y));
    QVERIFY(move->isActive());
    for (int i = 0; i < 4; ++i)
        QVERIFY(QMetaObject::invokeMethod(privateOf(f.widget), "moveTimeout", Qt::DirectConnection));
    // The page stops at 0; the tick goes on until it does too.
    QCOMPARE(f.widget.firstTick(), 0);
    QCOMPARE(f.widget.currentTick(), 32u);
    // Letting go stops it all.
    QTest::mouseRelease(f.window(), Qt::LeftButton, {}, f.at(LanesLeft - 2 * TickWidth - 1, y));
    QVERIFY(!move->isActive());
    QCOMPARE(f.widget.currentTick(), 32u);

    // At tick 0, dragging left stays at 0 without scrolling.
    f.widget.setCurrentTick(0);
    QTest::mousePress(f.window(), Qt::LeftButton, {}, f.at(xOf(f.widget, 0), y));
    QTest::mouseMove(f.window(), f.at(10, y));
    QVERIFY(!move->isActive());
    QCOMPARE(f.widget.currentTick(), 0u);
    QTest::mouseRelease(f.window(), Qt::LeftButton, {}, f.at(10, y));

    // Playing, the marker can't be taken.
    f.widget.setCurrentTick(5);
    f.widget.play();
    QTest::mousePress(f.window(), Qt::LeftButton, {}, f.at(xOf(f.widget, 5), y));
    QTest::mouseMove(f.window(), f.at(xOf(f.widget, 60), y));
    QVERIFY(!move->isActive());
    QTest::mouseRelease(f.window(), Qt::LeftButton, {}, f.at(xOf(f.widget, 60), y));
    QCOMPARE(f.widget.currentTick(), 5u);
    f.widget.stop();
}

void TimeLineTest::markerShowsTheResizeCursor()
{
    Fixture f(50, 1);
    QVERIFY(f.show());
    f.widget.setCurrentTick(8);
    QTest::mouseMove(f.window(), f.at(xOf(f.widget, 8), RulerHeight + 12));
    QCOMPARE(f.widget.cursor().shape(), Qt::SizeHorCursor);
    QTest::mouseMove(f.window(), f.at(xOf(f.widget, 9), RulerHeight + 12));
    QCOMPARE(f.widget.cursor().shape(), Qt::ArrowCursor);
    QTest::mouseMove(f.window(), f.at(xOf(f.widget, 8), 3));
    QCOMPARE(f.widget.cursor().shape(), Qt::SizeHorCursor);
}

void TimeLineTest::paintsBlocksAndMarker()
{
    Fixture f(40);
    QPalette palette = f.widget.palette();
    palette.setColor(QPalette::Base, QColor(255, 255, 255));
    palette.setColor(QPalette::AlternateBase, QColor(240, 240, 240));
    palette.setColor(QPalette::Highlight, QColor(0, 0, 200));
    f.widget.setPalette(palette);
    // A block at 2 of four ticks, an instant at 9, one held for ever from 20.
    f.widget.addTimeLine(new TestLane(QStringLiteral("Frames"), {{2u, 4u}, {9u, 0u}, {20u, 0xffffffffu}}));
    f.widget.setCurrentTick(30);
    const QImage image = f.widget.grab().toImage();
    const int y = RulerHeight + LaneHeight / 2;
    auto at = [&](uint tick) { return image.pixelColor(xOf(f.widget, tick), y); };
    const QColor highlight(0, 0, 200);
    QCOMPARE(at(2), highlight);
    QCOMPARE(at(9), highlight);
    QCOMPARE(at(20), highlight);
    // Behind the start, the body: lighter than the cell, tinted blue.
    for (uint tick : {3u, 5u, 21u, 29u, 39u}) {
        const QColor body = at(tick);
        QVERIFY2(body != highlight && body.blue() > body.red() + 20, qPrintable(QString::number(tick)));
    }
    // No block: the lane's own colour.
    QVERIFY(image.save(QCoreApplication::applicationDirPath() + QStringLiteral("/timelinewidget.png")));
    // No block: the lane's own colour, the white base tinted with the highlight as the
    // lane is the one selected.
    for (uint tick : {0u, 1u, 6u, 8u, 10u, 19u}) {
        const QColor empty = at(tick);
        QVERIFY2(std::abs(empty.red() - 209) <= 1 && std::abs(empty.green() - 209) <= 1 && std::abs(empty.blue() - 245) <= 1,
                 qPrintable(QString::number(tick)));
    }
    // The marker runs through ruler and lane.
    QVERIFY(at(30) != at(29));
    QVERIFY(image.pixelColor(xOf(f.widget, 30), 2) != image.pixelColor(xOf(f.widget, 31), 2));

    // A page further on, the held block still runs through it.
    f.widget.setCurrentTick(45);
    QCOMPARE(f.widget.firstTick(), 40);
    const QImage later = f.widget.grab().toImage();
    QVERIFY(later.pixelColor(xOf(f.widget, 41), y).blue() > later.pixelColor(xOf(f.widget, 41), y).red() + 20);
}

// The readings of the real clock add up to the time that passed: restarting a timer for
// each would drop the part of a millisecond of every reading, and read 0 a thousand times
// a millisecond apart from nothing.
void TimeLineTest::realClockKeepsTheFractions()
{
    ElapsedTimeSource source;
    QCOMPARE(source.restart(), qint64(0)); // never started: no time
    // Started around the source's start, so that however the test is held up, the time
    // the source saw lies between what the two saw.
    QElapsedTimer outer, inner;
    outer.start();
    source.start();
    inner.start();
    qint64 sum = 0;
    qint64 before = 0;
    int readings = 0;
    while (before < 30 || readings < 1000) {
        before = inner.elapsed();
        const qint64 ms = source.restart();
        QVERIFY(ms >= 0);
        sum += ms;
        ++readings;
    }
    const qint64 after = outer.elapsed();
    QVERIFY2(sum >= before - 1 && sum <= after, qPrintable(QStringLiteral("%1 in %2 to %3").arg(sum).arg(before).arg(after)));
}

QTEST_MAIN(TimeLineTest)
#include "tst_timeline.moc"
