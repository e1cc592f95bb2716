#pragma once

#include "foundation/global.h"

#include <QWidget>

namespace Ovra {

class TimeLine;
class TimeLinePrivate;
class TimeSource;

// The strip under the animation view that owns the clock of playback: a tick counter
// driven by a self-correcting timer at 60 ticks a second, a ruler of ticks that pages
// along with the current tick, and one lane for each TimeLine. Playing, the widget only
// counts; stopped, the keys and the mouse move the current tick and select lanes.
class OVRA_EXPORT TimeLineWidget : public QWidget
{
    Q_OBJECT
public:
    explicit TimeLineWidget(QWidget *parent = nullptr);
    ~TimeLineWidget() override;

    // The widget owns its lanes: they go with clearTimeLines or with the widget.
    void addTimeLine(TimeLine *timeLine);
    void clearTimeLines();
    int timeLineCount() const;
    // The lane last pressed on, 0 at first.
    int selectedLane() const;

    // Ticks a second as measured over the last second of play; 60 until the first
    // second has passed.
    float currentFPS() const;
    uint currentTick() const;
    // Makes `tick` current; the same tick again only repaints unless `force` is set.
    void setCurrentTick(uint tick, bool force = false);
    // The first tick on the left of the ruler.
    int firstTick() const;
    // How many ticks fit beside the lane names.
    int visibleTicks() const;

    bool isPlaying() const;
    void play();
    void stop();

    // Only a label for the ruler: the timer keeps 60 ticks a second whatever this says.
    uint ticksPerSecond() const;
    void setTicksPerSecond(uint ticksPerSecond);

    // Replaces the clock that measures the ticks (null: the real one). The widget owns it.
    void setTimeSource(TimeSource *source);

    QSize sizeHint() const override;

signals:
    void tickChanged(uint tick);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    friend class TimeLinePrivate;
    TimeLinePrivate *const d;
};

} // namespace Ovra
