#pragma once

#include <QList>
#include <QObject>
#include <QTimer>

#include <memory>

class QPainter;

namespace Ovra {

class TimeLine;
class TimeLineWidget;
class TimeSource;

// The state of a TimeLineWidget and its two timers. A QObject child of the widget, so
// that its timers' slots run as the widget's own and go with it.
class TimeLinePrivate : public QObject
{
    Q_OBJECT
public:
    enum DragMode { NoDrag = 0, LaneDrag = 1, MarkerDrag = 2 };

    explicit TimeLinePrivate(TimeLineWidget *widget);
    ~TimeLinePrivate() override;

    // Moves the page so that `tick` is on it, if it isn't: pages are whole multiples of
    // the visible width, and start on a multiple of 10.
    void pageTo(uint tick);
    // Stores a new current tick, pages to it and tells.
    void moveTo(uint tick);
    // The tick under x, not below 0.
    uint tickAt(int x) const;
    // The column of the current tick, the whole height.
    bool overMarker(int x) const;
    int laneAt(int y) const;
    int tickX(long tick) const;
    void updateVisibleTicks();

    void paint(QPainter &painter, const QRect &area);
    void paintRuler(QPainter &painter) const;
    void paintLane(QPainter &painter, int index) const;
    void paintBlock(QPainter &painter, int x, int top, uint length) const;
    void paintMarker(QPainter &painter) const;

    TimeLineWidget *const q;
    QList<TimeLine *> timeLines;
    uint ticksPerSecond = 60;
    uint currentTick = 0;
    int framesCounted = 0;
    std::unique_ptr<TimeSource> elapsed;
    QTimer timer;
    float interval = 1000.0f / 60.0f;
    float timeError = 0.0f;
    float currentFPS = 0.0f;
    int elapsedTotal = 0;
    int dragMode = NoDrag;
    int selectedLane = 0;
    bool pressed = false;
    int visibleTicks = 0;
    int firstTick = 0;
    int rulerHeight = 20;
    int lanesLeft = 125;
    int tickWidth = 6;
    int laneHeight = 30;
    int scrollStep = 0;
    QTimer moveTimer;

public slots:
    void timeStep();
    void moveTimeout();
};

} // namespace Ovra
