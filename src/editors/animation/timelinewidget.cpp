#include "editors/animation/timelinewidget.h"
#include "editors/animation/timelinewidget_p.h"

#include "editors/animation/timeline.h"
#include "editors/animation/timesource.h"
#include "foundation/interface.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <climits>

namespace Ovra {

namespace {

// However long the clock stood still (a debugger, a suspended machine), the timer
// catches up at most a second of ticks at full speed, not hours of them.
constexpr float LargestDebt = -1000.0f;

// The largest first tick, a multiple of 10 like every page start.
constexpr qint64 LastPage = INT_MAX - INT_MAX % 10;

} // namespace

TimeLinePrivate::TimeLinePrivate(TimeLineWidget *widget)
    : QObject(widget)
    , q(widget)
    , elapsed(new ElapsedTimeSource)
    , timer(this)
    , moveTimer(this)
{
    setObjectName(QStringLiteral("timeLinePrivate"));
    timer.setObjectName(QStringLiteral("tickTimer"));
    timer.setSingleShot(false);
    // Coarse timers may be off by 5 %; the feedback of timeStep corrects either kind,
    // but a precise one leaves it less to correct.
    timer.setTimerType(Qt::PreciseTimer);
    timer.setInterval(int(interval));
    moveTimer.setObjectName(QStringLiteral("moveTimer"));
    moveTimer.setSingleShot(false);
    moveTimer.setInterval(250);
    connect(&moveTimer, &QTimer::timeout, this, &TimeLinePrivate::moveTimeout);
}

TimeLinePrivate::~TimeLinePrivate()
{
    qDeleteAll(timeLines);
}

void TimeLinePrivate::pageTo(uint tick)
{
    // A widget resized before it shows hears of it only when it shows.
    updateVisibleTicks();
    const qint64 at = qint64(tick);
    if (at >= firstTick && at < qint64(firstTick) + visibleTicks)
        return;
    // A widget too narrow for a single tick still pages, one tick a page.
    const qint64 page = std::max(visibleTicks, 1);
    qint64 first = at / page * page;
    first -= first % 10;
    firstTick = int(std::min(first, LastPage));
}

void TimeLinePrivate::moveTo(uint tick)
{
    currentTick = tick;
    pageTo(tick);
    emit q->tickChanged(tick);
}

uint TimeLinePrivate::tickAt(int x) const
{
    const qint64 tick = qint64(x - lanesLeft) / tickWidth + firstTick;
    return uint(std::max<qint64>(0, tick));
}

int TimeLinePrivate::tickX(long tick) const
{
    const qint64 x = qint64(lanesLeft) + (qint64(tick) - firstTick) * tickWidth;
    return int(std::clamp<qint64>(x, INT_MIN / 2, INT_MAX / 2));
}

bool TimeLinePrivate::overMarker(int x) const
{
    const int left = tickX(long(currentTick));
    return x >= left && x < left + tickWidth && left >= lanesLeft;
}

int TimeLinePrivate::laneAt(int y) const
{
    if (y < rulerHeight)
        return -1;
    const int lane = (y - rulerHeight) / laneHeight;
    return lane < timeLines.size() ? lane : -1;
}

void TimeLinePrivate::updateVisibleTicks()
{
    visibleTicks = std::max(0, (q->width() - lanesLeft) / tickWidth);
}

void TimeLinePrivate::timeStep()
{
    const uint tick = currentTick + 1;
    if (tick != currentTick)
        moveTo(tick);
    q->update();

    // What the next period owes is what this one was short of, so that the periods
    // average 1000 / 60 ms whatever the event loop's whole milliseconds do.
    const float owed = interval + timeError;
    const qint64 ms = elapsed->restart();
    timeError = std::max(owed - float(ms), LargestDebt);
    const int next = std::max(0, int(timeError + interval));

    elapsedTotal += int(std::min<qint64>(ms, INT_MAX / 2));
    ++framesCounted;
    if (elapsedTotal >= 1000) {
        currentFPS = float(framesCounted * 1000.0 / elapsedTotal);
        elapsedTotal = 0;
        framesCounted = 0;
    }
    timer.stop();
    timer.start(next);
}

void TimeLinePrivate::moveTimeout()
{
    firstTick = int(std::clamp<qint64>(qint64(firstTick) + scrollStep, 0, LastPage));
    const uint tick = uint(std::clamp<qint64>(qint64(currentTick) + scrollStep, 0, UINT_MAX));
    if (tick != currentTick)
        moveTo(tick);
    q->update();
}

TimeLineWidget::TimeLineWidget(QWidget *parent)
    : QWidget(parent)
    , d(new TimeLinePrivate(this))
{
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAutoFillBackground(false);
    setAttribute(Qt::WA_OpaquePaintEvent);
    d->updateVisibleTicks();
}

TimeLineWidget::~TimeLineWidget()
{
    stop();
}

void TimeLineWidget::addTimeLine(TimeLine *timeLine)
{
    if (!timeLine)
        return;
    Interface *host = Interface::instance();
    d->rulerHeight = std::max(0, host ? host->scaleToDPI(20) : 20);
    d->timeLines.append(timeLine);
    setFixedHeight(d->rulerHeight + d->timeLines.size() * d->laneHeight);
    update();
}

void TimeLineWidget::clearTimeLines()
{
    qDeleteAll(d->timeLines);
    d->timeLines.clear();
    update();
}

int TimeLineWidget::timeLineCount() const
{
    return d->timeLines.size();
}

int TimeLineWidget::selectedLane() const
{
    return d->selectedLane;
}

float TimeLineWidget::currentFPS() const
{
    return d->currentFPS;
}

uint TimeLineWidget::currentTick() const
{
    return d->currentTick;
}

void TimeLineWidget::setCurrentTick(uint tick, bool force)
{
    if (tick != d->currentTick || force)
        d->moveTo(tick);
    update();
}

int TimeLineWidget::firstTick() const
{
    return d->firstTick;
}

int TimeLineWidget::visibleTicks() const
{
    d->updateVisibleTicks();
    return d->visibleTicks;
}

bool TimeLineWidget::isPlaying() const
{
    return d->timer.isActive();
}

void TimeLineWidget::play()
{
    connect(&d->timer, &QTimer::timeout, d, &TimeLinePrivate::timeStep, Qt::UniqueConnection);
    d->timeError = 0.0f;
    d->currentFPS = 60.0f;
    d->elapsedTotal = 0;
    d->framesCounted = 0;
    d->elapsed->start();
    // A fresh start owes nothing: the first period is the ideal one, whatever the
    // last run left in the timer.
    d->timer.start(int(d->interval));
    emit tickChanged(d->currentTick);
}

void TimeLineWidget::stop()
{
    disconnect(&d->timer, &QTimer::timeout, d, &TimeLinePrivate::timeStep);
    d->timer.stop();
}

uint TimeLineWidget::ticksPerSecond() const
{
    return d->ticksPerSecond;
}

void TimeLineWidget::setTicksPerSecond(uint ticksPerSecond)
{
    d->ticksPerSecond = ticksPerSecond;
    update();
}

void TimeLineWidget::setTimeSource(TimeSource *source)
{
    d->elapsed.reset(source ? source : new ElapsedTimeSource);
    if (isPlaying())
        d->elapsed->start();
}

QSize TimeLineWidget::sizeHint() const
{
    return QSize(d->lanesLeft + 100 * d->tickWidth, d->rulerHeight + std::max(1, d->timeLines.size()) * d->laneHeight);
}

void TimeLineWidget::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    d->paint(painter, rect());
}

void TimeLineWidget::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    d->updateVisibleTicks();
}

void TimeLineWidget::keyPressEvent(QKeyEvent *event)
{
    if (isPlaying() || (event->key() != Qt::Key_Left && event->key() != Qt::Key_Right)) {
        QWidget::keyPressEvent(event);
        return;
    }
    if (event->key() == Qt::Key_Left && d->currentTick > 0)
        setCurrentTick(d->currentTick - 1);
    else if (event->key() == Qt::Key_Right && d->currentTick < UINT_MAX)
        setCurrentTick(d->currentTick + 1);
    event->accept();
}

void TimeLineWidget::mousePressEvent(QMouseEvent *event)
{
    if (isPlaying() || event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    d->pressed = true;
    const QPoint at = event->pos();
    if (d->overMarker(at.x())) {
        d->dragMode = TimeLinePrivate::MarkerDrag;
    } else if (at.x() >= d->lanesLeft) {
        const int lane = d->laneAt(at.y());
        if (lane >= 0)
            d->selectedLane = lane;
        d->dragMode = TimeLinePrivate::LaneDrag;
        update();
    } else {
        d->dragMode = TimeLinePrivate::NoDrag;
    }
}

void TimeLineWidget::mouseMoveEvent(QMouseEvent *event)
{
    if (isPlaying())
        return;
    const int x = event->pos().x();
    d->updateVisibleTicks();
    if (event->buttons() == Qt::NoButton) {
        if (d->overMarker(x))
            setCursor(Qt::SizeHorCursor);
        else
            unsetCursor();
        return;
    }
    if (d->dragMode != TimeLinePrivate::MarkerDrag)
        return;
    const qint64 tick = d->tickAt(x);
    const qint64 lastVisible = qint64(d->firstTick) + d->visibleTicks - 1;
    if (tick >= d->firstTick && tick <= lastVisible) {
        d->moveTimer.stop();
        setCurrentTick(uint(tick));
        return;
    }
    // Past an edge the page scrolls on its own, faster the further out the mouse is.
    d->scrollStep = int(std::clamp<qint64>(tick < d->firstTick ? tick - d->firstTick : tick - lastVisible,
                                           INT_MIN / 2, INT_MAX / 2));
    if (!d->moveTimer.isActive())
        d->moveTimer.start();
}

void TimeLineWidget::mouseReleaseEvent(QMouseEvent *event)
{
    if (d->dragMode == TimeLinePrivate::LaneDrag && !isPlaying())
        setCurrentTick(d->tickAt(event->pos().x()));
    d->moveTimer.stop();
    d->dragMode = TimeLinePrivate::NoDrag;
    d->pressed = false;
}

} // namespace Ovra
