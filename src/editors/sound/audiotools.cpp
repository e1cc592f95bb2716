// The tools that edit the sound: moving the selected block, stretching it in time and
// changing its loudness.
#include "audiotool.h"

#include "editors/sound/audiodata.h"
#include "editors/sound/audiowaveform.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>

namespace Ovra {

void SelectionMoveTool::mousePress(uint frame, const QPoint &pos)
{
    m_sound->selection(m_start, m_end);
    // Only a press on the selected block drags it; elsewhere the tool selects.
    if (m_start == m_end || frame < m_start || frame > m_end) {
        m_start = m_end = 0;
        SelectionTool::mousePress(frame, pos);
        return;
    }
    AudioTool::mousePress(frame, pos);
    m_pressFrame = frame;
    m_shift = 0;
}

Qt::CursorShape SelectionMoveTool::mouseMove(uint frame, const QPoint &pos)
{
    if (m_pressed && m_start == m_end)
        return SelectionTool::mouseMove(frame, pos);
    if (m_pressed)
        m_shift = (long long)frame - m_pressFrame;
    return m_pressed ? Qt::ClosedHandCursor : Qt::SizeAllCursor;
}

bool SelectionMoveTool::preview(uint &start, uint &end) const
{
    if (!m_pressed || m_start == m_end)
        return false;
    const long long to = std::max(0LL, (long long)m_start + m_shift);
    start = uint(to);
    end = uint(to + (m_end - m_start));
    return true;
}

void SelectionMoveTool::mouseRelease(uint frame, const QPoint &pos)
{
    if (!m_pressed)
        return;
    if (m_start == m_end) {
        SelectionTool::mouseRelease(frame, pos);
        return;
    }
    AudioTool::mouseRelease(frame, pos);
    const long long shift = (long long)frame - m_pressFrame;
    if (shift == 0)
        return;
    const uint length = m_end - m_start;
    const QByteArray block = m_sound->selectedSamples();
    const uint remaining = m_sound->sample.samples - length;
    if (remaining == 0)
        return;
    // An empty selection can't stand past the last frame, so neither can the new place.
    const uint to = uint(std::clamp((long long)m_start + shift, 0LL, (long long)remaining - 1));
    if (to == m_start)
        return;
    m_sound->undoStack.beginMacro(QCoreApplication::translate("Ovra::AudioTool", "Move samples"));
    m_sound->changeSelectedSamples(QByteArray());
    m_sound->select(to, to);
    m_sound->changeSelectedSamples(block);
    m_sound->undoStack.endMacro();
    m_sound->select(to, to + length);
}

uint HResizeTool::newLength(uint frame) const
{
    const long long n = (long long)(m_end - m_start) + frame - m_pressFrame;
    return uint(std::max(0LL, n));
}

void HResizeTool::mousePress(uint frame, const QPoint &pos)
{
    m_sound->selection(m_start, m_end);
    if (m_start == m_end)
        return;
    AudioTool::mousePress(frame, pos);
    m_pressFrame = m_mouse = frame;
}

Qt::CursorShape HResizeTool::mouseMove(uint frame, const QPoint &)
{
    if (m_pressed)
        m_mouse = frame;
    return Qt::SizeHorCursor;
}

bool HResizeTool::preview(uint &start, uint &end) const
{
    if (!m_pressed)
        return false;
    start = m_start;
    end = m_start + newLength(m_mouse);
    return true;
}

void HResizeTool::mouseRelease(uint frame, const QPoint &pos)
{
    if (!m_pressed)
        return;
    AudioTool::mouseRelease(frame, pos);
    const uint n = newLength(frame);
    const uint length = m_end - m_start;
    if (n == length)
        return;
    m_sound->select(m_start, m_end);
    if (n == 0) {
        m_sound->changeSelectedSamples(QByteArray());
        m_sound->select(m_start, m_start);
        return;
    }
    SoundSample copy = m_sound->sample;
    copy.data = m_sound->selectedSamples();
    copy.samples = length;
    SampleInfo target = copy;
    target.frequency = quint32(std::trunc(double(n) * copy.frequency / length + 0.5));
    // A stretch past what the converter takes leaves the sound as it is.
    if (!resampleSound(copy, target))
        return;
    const uint frameBytes = m_sound->bytesPerFrame();
    const uint produced = uint(copy.data.size()) / frameBytes;
    // The converter's count may miss by a frame or two: cut, or pad with silence (128
    // for unsigned 8-bit values, 0 for the others).
    copy.data.resize(int(n * frameBytes));
    if (produced < n)
        std::fill(copy.data.begin() + int(produced * frameBytes), copy.data.end(), char(copy.bits == 8 ? 128 : 0));
    m_sound->changeSelectedSamples(copy.data);
    m_sound->select(m_start, m_start + n);
}

double VResizeTool::gainAt(const QPoint &pos) const
{
    const double half = std::max(1, m_waveform->viewSize().height() / 2);
    return std::max(0.0, (m_pressPos.y() - pos.y()) / half + 1.0);
}

void VResizeTool::mousePress(uint frame, const QPoint &pos)
{
    uint start, end;
    m_sound->selection(start, end);
    if (start == end)
        return;
    AudioTool::mousePress(frame, pos);
    m_pressPos = pos;
}

Qt::CursorShape VResizeTool::mouseMove(uint, const QPoint &)
{
    return Qt::SizeVerCursor;
}

void VResizeTool::mouseRelease(uint frame, const QPoint &pos)
{
    if (!m_pressed)
        return;
    AudioTool::mouseRelease(frame, pos);
    const float gain = float(gainAt(pos));
    if (gain == 1.0f)
        return;
    QByteArray bytes = m_sound->selectedSamples();
    const int step = m_sound->sample.bits / 8;
    const QByteArray in = bytes;
    for (int i = 0; i + step <= bytes.size(); i += step)
        scaleSample(bytes.data() + i, in.constData() + i, gain, m_sound->sample.bits);
    m_sound->changeSelectedSamples(bytes);
}

} // namespace Ovra
