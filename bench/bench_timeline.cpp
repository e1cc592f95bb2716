// The time line playing on a real timer for ten seconds, shown on the offscreen platform,
// while a widget of the same weight (a second time line of six full lanes) repaints at
// every tick. What counts is the tick period: its mean against 1000 / 60 ms, and the
// 99th percentile of its deviation from that. For reference, a plain timer of 16 ms under
// the same load, which runs at 62.5 Hz.
#include "editors/animation/timeline.h"
#include "editors/animation/timelinewidget.h"

#include "ratioreporter.h"
#include "tickperiods.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {


// Blocks of 3 to 9 ticks back to back, as frames of an animation.
class FramesLane : public Ovra::TimeLine
{
public:
    explicit FramesLane(int seed) : m_seed(seed) {}
    QString name() const override { return QStringLiteral("Animation %1").arg(m_seed); }
    bool blockAt(uint tick, uint &length) const override
    {
        uint start = 0;
        for (uint i = 0; start <= tick; ++i) {
            const uint delay = 3 + (i * 7 + uint(m_seed)) % 7;
            if (start == tick) {
                length = delay;
                return true;
            }
            start += delay;
        }
        return false;
    }

private:
    int m_seed;
};

void fill(Ovra::TimeLineWidget &widget)
{
    widget.resize(900, 10);
    for (int i = 0; i < 6; ++i)
        widget.addTimeLine(new FramesLane(i));
}

void report(benchmark::State &state, const char *what, const TickPeriods &periods)
{
    const double off = (periods.mean - IdealTickMs) / IdealTickMs * 100.0;
    state.counters["mean_ms"] = periods.mean;
    state.counters["mean_off_%"] = off;
    state.counters["p99_dev_ms"] = periods.p99;
    state.counters["ticks"] = double(periods.ticks);
    std::printf("%s: %zu ticks, mean period %.4f ms (%+.3f %% against %.4f ms), 99th percentile of the deviation %.3f ms\n",
                what, periods.ticks, periods.mean, off, IdealTickMs, periods.p99);
}

// Runs the event loop for the benchmark's seconds; the timers under test fire in it.
void runLoop(double duration)
{
    QEventLoop loop;
    QTimer::singleShot(int(duration * 1000), &loop, &QEventLoop::quit);
    loop.exec();
}

void timeLinePlaying(benchmark::State &state)
{
    for (auto _ : state) {
        Ovra::TimeLineWidget timeLine, load;
        fill(timeLine);
        fill(load);
        timeLine.show();
        load.show();
        QApplication::processEvents();
        std::vector<qint64> moments;
        moments.reserve(size_t(runSeconds("OVRA_TIMELINE_SECONDS") * 70));
        QElapsedTimer clock;
        clock.start();
        QObject::connect(&timeLine, &Ovra::TimeLineWidget::tickChanged, &load, [&](uint tick) {
            moments.push_back(clock.nsecsElapsed());
            load.setCurrentTick(tick);
            load.repaint();
        });
        timeLine.play();
        runLoop(runSeconds("OVRA_TIMELINE_SECONDS"));
        timeLine.stop();
        // The first moment is play's own report of the tick it starts from.
        moments.erase(moments.begin());
        report(state, "time line", measureTicks(moments));
    }
}

void plainTimer(benchmark::State &state)
{
    for (auto _ : state) {
        Ovra::TimeLineWidget load;
        fill(load);
        load.show();
        QApplication::processEvents();
        std::vector<qint64> moments;
        QElapsedTimer clock;
        clock.start();
        QTimer timer;
        timer.setTimerType(Qt::PreciseTimer);
        uint tick = 0;
        QObject::connect(&timer, &QTimer::timeout, &load, [&] {
            moments.push_back(clock.nsecsElapsed());
            load.setCurrentTick(++tick);
            load.repaint();
        });
        timer.start(16);
        runLoop(runSeconds("OVRA_TIMELINE_SECONDS"));
        timer.stop();
        report(state, "plain 16 ms timer", measureTicks(moments));
    }
}

} // namespace

BENCHMARK(timeLinePlaying)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(plainTimer)->Iterations(1)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    RatioReporter reporter;
    return runWithRatios(argc, argv, reporter);
}
