// The time line playing on a real timer for ten seconds, shown on the offscreen platform,
// while a widget of the same weight (a second time line of six full lanes) repaints at
// every tick. What counts is the tick period: its mean against 1000 / 60 ms, and the
// 99th percentile of its deviation from that. For reference, a plain timer of 16 ms under
// the same load, which runs at 62.5 Hz.
#include "editors/animation/timeline.h"
#include "editors/animation/timelinewidget.h"

#include "ratioreporter.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

constexpr double Ideal = 1000.0 / 60.0;

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

double seconds()
{
    return qEnvironmentVariableIsSet("OVRA_TIMELINE_SECONDS") ? qEnvironmentVariable("OVRA_TIMELINE_SECONDS").toDouble()
                                                                : 10.0;
}

struct Periods
{
    double mean = 0.0;
    double p99 = 0.0;
    size_t ticks = 0;
};

// From the moments of the ticks, in nanoseconds.
Periods measure(const std::vector<qint64> &moments)
{
    Periods result;
    if (moments.size() < 2)
        return result;
    result.ticks = moments.size() - 1;
    result.mean = double(moments.back() - moments.front()) / 1e6 / double(result.ticks);
    std::vector<double> deviations;
    deviations.reserve(result.ticks);
    for (size_t i = 1; i < moments.size(); ++i)
        deviations.push_back(std::abs(double(moments[i] - moments[i - 1]) / 1e6 - Ideal));
    std::sort(deviations.begin(), deviations.end());
    result.p99 = deviations[std::min(deviations.size() - 1, size_t(double(deviations.size()) * 0.99))];
    return result;
}

void report(benchmark::State &state, const char *what, const Periods &periods)
{
    const double off = (periods.mean - Ideal) / Ideal * 100.0;
    state.counters["mean_ms"] = periods.mean;
    state.counters["mean_off_%"] = off;
    state.counters["p99_dev_ms"] = periods.p99;
    state.counters["ticks"] = double(periods.ticks);
    std::printf("%s: %zu ticks, mean period %.4f ms (%+.3f %% against %.4f ms), 99th percentile of the deviation %.3f ms\n",
                what, periods.ticks, periods.mean, off, Ideal, periods.p99);
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
        moments.reserve(size_t(seconds() * 70));
        QElapsedTimer clock;
        clock.start();
        QObject::connect(&timeLine, &Ovra::TimeLineWidget::tickChanged, &load, [&](uint tick) {
            moments.push_back(clock.nsecsElapsed());
            load.setCurrentTick(tick);
            load.repaint();
        });
        timeLine.play();
        runLoop(seconds());
        timeLine.stop();
        // The first moment is play's own report of the tick it starts from.
        moments.erase(moments.begin());
        report(state, "time line", measure(moments));
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
        runLoop(seconds());
        timer.stop();
        report(state, "plain 16 ms timer", measure(moments));
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
