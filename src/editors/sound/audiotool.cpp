#include "audiotool.h"

#include "editors/sound/audiodata.h"
#include "editors/sound/audiowaveform.h"

#include <algorithm>
#include <cmath>

namespace Ovra {

AudioTool::AudioTool(AudioData *sound, AudioWaveform *waveform, QObject *parent)
    : QObject(parent)
    , m_sound(sound)
    , m_waveform(waveform)
{
}

void AudioTool::mousePress(uint, const QPoint &)
{
    m_pressed = true;
}

Qt::CursorShape AudioTool::mouseMove(uint, const QPoint &)
{
    return Qt::ArrowCursor;
}

void AudioTool::mouseRelease(uint, const QPoint &)
{
    m_pressed = false;
}

void AudioTool::key(QKeyEvent *)
{
}

bool AudioTool::preview(uint &, uint &) const
{
    return false;
}

void MoveTool::mousePress(uint frame, const QPoint &pos)
{
    AudioTool::mousePress(frame, pos);
    m_pressPos = pos;
    m_pressFirst = m_waveform->firstFrame();
}

Qt::CursorShape MoveTool::mouseMove(uint, const QPoint &pos)
{
    if (!m_pressed)
        return Qt::OpenHandCursor;
    const double shift = std::floor((pos.x() - m_pressPos.x()) * m_waveform->framesPerPixel() + 0.5);
    m_waveform->setFirstFrame(uint(std::max(0.0, double(m_pressFirst) - shift)));
    return Qt::ClosedHandCursor;
}

void MoveTool::mouseRelease(uint frame, const QPoint &pos)
{
    mouseMove(frame, pos);
    AudioTool::mouseRelease(frame, pos);
}

void SelectionTool::mousePress(uint frame, const QPoint &pos)
{
    AudioTool::mousePress(frame, pos);
    m_pressFrame = frame;
    m_sound->select(frame, frame);
}

Qt::CursorShape SelectionTool::mouseMove(uint frame, const QPoint &)
{
    if (m_pressed)
        m_sound->select(m_pressFrame, frame);
    return Qt::IBeamCursor;
}

void SelectionTool::mouseRelease(uint frame, const QPoint &pos)
{
    if (m_pressed)
        m_sound->select(m_pressFrame, frame);
    AudioTool::mouseRelease(frame, pos);
}

void ZoomTool::mousePress(uint frame, const QPoint &pos)
{
    m_oldStart = m_sound->selectionStart;
    m_oldEnd = m_sound->selectionEnd;
    SelectionTool::mousePress(frame, pos);
}

void ZoomTool::mouseRelease(uint frame, const QPoint &pos)
{
    if (!m_pressed)
        return;
    SelectionTool::mouseRelease(frame, pos);
    uint start, end;
    m_sound->selection(start, end);
    if (end > start && m_waveform->viewSize().width() > 0) {
        m_waveform->setFirstFrame(start);
        m_waveform->setHScale(double(m_waveform->viewSize().width()) / (end - start));
    }
    m_sound->select(m_oldStart, m_oldEnd);
}

} // namespace Ovra
