#pragma once

#include "foundation/global.h"

#include <QObject>
#include <QPoint>

class QKeyEvent;

namespace Ovra {

class AudioData;
class AudioWaveform;

// A mouse tool of the sound view. The view hands each event over with the frame under the
// mouse and the point in its own coordinates; the tool works on the sound and the zoom.
class OVRA_EXPORT AudioTool : public QObject
{
    Q_OBJECT

public:
    AudioTool(AudioData *sound, AudioWaveform *waveform, QObject *parent = nullptr);

    virtual void mousePress(uint frame, const QPoint &pos);
    // The cursor the view shows over the sound.
    virtual Qt::CursorShape mouseMove(uint frame, const QPoint &pos);
    virtual void mouseRelease(uint frame, const QPoint &pos);
    virtual void key(QKeyEvent *event);
    // A range of frames the view outlines while the tool drags; false for none.
    virtual bool preview(uint &start, uint &end) const;

    bool isPressed() const { return m_pressed; }

protected:
    AudioData *m_sound;
    AudioWaveform *m_waveform;
    bool m_pressed = false;
};

// Drags the view sideways.
class OVRA_EXPORT MoveTool : public AudioTool
{
    Q_OBJECT
public:
    using AudioTool::AudioTool;
    void mousePress(uint frame, const QPoint &pos) override;
    Qt::CursorShape mouseMove(uint frame, const QPoint &pos) override;
    void mouseRelease(uint frame, const QPoint &pos) override;

private:
    QPoint m_pressPos;
    uint m_pressFirst = 0;
};

// Press sets both ends of the selection, a drag moves its end.
class OVRA_EXPORT SelectionTool : public AudioTool
{
    Q_OBJECT
public:
    using AudioTool::AudioTool;
    void mousePress(uint frame, const QPoint &pos) override;
    Qt::CursorShape mouseMove(uint frame, const QPoint &pos) override;
    void mouseRelease(uint frame, const QPoint &pos) override;

protected:
    uint m_pressFrame = 0;
};

// Selects a range with a drag and zooms the view onto it, leaving the selection as it was.
class OVRA_EXPORT ZoomTool : public SelectionTool
{
    Q_OBJECT
public:
    using SelectionTool::SelectionTool;
    void mousePress(uint frame, const QPoint &pos) override;
    void mouseRelease(uint frame, const QPoint &pos) override;

private:
    uint m_oldStart = 0, m_oldEnd = 0;
};

// Drags the selected frames to another place in one undoable step.
class OVRA_EXPORT SelectionMoveTool : public SelectionTool
{
    Q_OBJECT
public:
    using SelectionTool::SelectionTool;
    void mousePress(uint frame, const QPoint &pos) override;
    Qt::CursorShape mouseMove(uint frame, const QPoint &pos) override;
    void mouseRelease(uint frame, const QPoint &pos) override;
    bool preview(uint &start, uint &end) const override;

private:
    uint m_start = 0, m_end = 0;
    long long m_shift = 0;
};

// Stretches or squeezes the selection in time by resampling it.
class OVRA_EXPORT HResizeTool : public AudioTool
{
    Q_OBJECT
public:
    using AudioTool::AudioTool;
    void mousePress(uint frame, const QPoint &pos) override;
    Qt::CursorShape mouseMove(uint frame, const QPoint &pos) override;
    void mouseRelease(uint frame, const QPoint &pos) override;
    bool preview(uint &start, uint &end) const override;

private:
    uint newLength(uint frame) const;
    uint m_pressFrame = 0, m_start = 0, m_end = 0, m_mouse = 0;
};

// Makes the selection louder or quieter by a vertical drag.
class OVRA_EXPORT VResizeTool : public AudioTool
{
    Q_OBJECT
public:
    using AudioTool::AudioTool;
    void mousePress(uint frame, const QPoint &pos) override;
    Qt::CursorShape mouseMove(uint frame, const QPoint &pos) override;
    void mouseRelease(uint frame, const QPoint &pos) override;
    // The gain of a drag from the press point to `pos`: half the view's height up doubles.
    double gainAt(const QPoint &pos) const;

private:
    QPoint m_pressPos;
};

} // namespace Ovra
