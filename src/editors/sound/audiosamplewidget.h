#pragma once

#include "foundation/global.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QVector>
#include <QWidget>

namespace Ovra {

class AudioData;
class AudioTool;
class AudioWaveform;

// The view of the sound: the waveform, the selection, the play cursor, and the mouse
// tools by number (1 move, 2 zoom, 3 select, 4 move the selection, 5 stretch, 6 gain;
// 7, drawing, has no tool). While a sound plays a 10 ms timer moves the play cursor by
// the time gone since playback began.
class OVRA_EXPORT AudioSampleWidget : public QWidget
{
    Q_OBJECT

public:
    static constexpr int ToolCount = 7;

    explicit AudioSampleWidget(AudioData *data, QWidget *parent = nullptr);
    ~AudioSampleWidget() override;

    AudioData *data() const { return m_data; }
    AudioWaveform *waveform() const { return m_waveform; }
    // Null for the empty slot and for numbers outside 1 to 7.
    AudioTool *tool(int number) const;
    int currentTool() const { return m_currentTool; }
    void setCurrentTool(int number);

    // The cursor runs from `from` at the sound's rate; without a loop it stops at `to`
    // and says so by playbackEnded(), with one it starts over at `from`.
    void startCursor(uint from, uint to, bool loop);
    void pauseCursor();
    void resumeCursor();
    void stopCursor();
    bool isCursorRunning() const { return m_timer.isActive(); }
    int cursorInterval() const { return m_timer.interval(); }

    void zoomIn();
    void zoomOut();
    void zoomFit();
    void zoomActual();
    // Rereads the colours from the host's option "sound_wave".
    void reconfig();

signals:
    void toolChanged(int number);
    void playbackEnded();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void tick();
    AudioTool *activeTool() const { return tool(m_currentTool); }

    AudioData *m_data;
    AudioWaveform *m_waveform;
    QVector<AudioTool *> m_tools; // by number, 0 unused
    int m_currentTool = 3;
    QColor m_wave, m_background, m_selection, m_cursor;
    QTimer m_timer;
    QElapsedTimer m_clock;
    qint64 m_elapsedBefore = 0; // time played before the last pause
    uint m_from = 0, m_to = 0;
    bool m_loop = false;
};

} // namespace Ovra
