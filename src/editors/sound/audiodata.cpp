#include "audiodata.h"

#include "cache/streamcache.h"
#include "editors/sound/samplechange.h"
#include "editors/sound/sampleinsert.h"
#include "editors/sound/sampleremove.h"

#include <algorithm>

namespace Ovra {

AudioData::AudioData(QObject *parent)
    : QObject(parent)
    , cache(StreamCache::instance(nullptr, StreamCache::Default))
{
}

AudioData::~AudioData()
{
    // The commands give their items back to the cache, so they go first.
    undoStack.clear();
    if (cache)
        cache->release();
}

void AudioData::setSample(const SoundSample &newSample)
{
    undoStack.clear();
    sample = newSample;
    const uint frameBytes = bytesPerFrame();
    // The frame count follows the bytes, whatever a header claimed.
    sample.samples = frameBytes ? quint32(uint(sample.data.size()) / frameBytes) : 0;
    if (frameBytes)
        sample.data.truncate(int(sample.samples * frameBytes));
    selectionStart = selectionEnd = 0;
    currentSample = 0;
    emit sampleReset();
    emit selectionChanged(0, 0);
    emit currentSampleChanged(0);
}

void AudioData::select(uint start, uint end)
{
    const uint n = sample.samples;
    if (n == 0) {
        start = end = 0;
    } else if (start <= end) {
        end = std::min(end, n);
        start = std::min(start, n - 1);
    } else {
        start = std::min(start, n);
        end = std::min(end, n - 1);
    }
    selectionStart = start;
    selectionEnd = end;
    emit selectionChanged(start, end);
}

void AudioData::selection(uint &start, uint &end) const
{
    start = std::min(selectionStart, selectionEnd);
    end = std::max(selectionStart, selectionEnd);
}

QByteArray AudioData::selectedSamples() const
{
    uint start, end;
    selection(start, end);
    if (start == end)
        return QByteArray();
    const uint frameBytes = bytesPerFrame();
    return sample.data.mid(int(start * frameBytes), int((end - start) * frameBytes));
}

bool AudioData::changeSelectedSamples(const QByteArray &bytes)
{
    const uint frameBytes = bytesPerFrame();
    if (frameBytes == 0)
        return false;
    uint start, end;
    selection(start, end);
    const uint offset = start * frameBytes;
    const uint selectedSize = (end - start) * frameBytes;
    if (start != end && bytes.isEmpty()) {
        undoStack.push(new SampleRemove(this, offset, selectedSize));
        return true;
    }
    if (bytes.isEmpty() || uint(bytes.size()) % frameBytes != 0)
        return false;
    if (start == end) {
        undoStack.push(new SampleInsert(this, offset, bytes));
    } else if (uint(bytes.size()) == selectedSize) {
        undoStack.push(new SampleChange(this, offset, bytes));
    } else {
        undoStack.beginMacro(tr("Change samples"));
        undoStack.push(new SampleRemove(this, offset, selectedSize));
        undoStack.push(new SampleInsert(this, offset, bytes));
        undoStack.endMacro();
    }
    return true;
}

void AudioData::setCurrentSample(uint frame)
{
    frame = std::min(frame, sample.samples);
    if (frame == currentSample)
        return;
    currentSample = frame;
    emit currentSampleChanged(frame);
}

void AudioData::replaceBytes(uint offset, uint removeSize, const QByteArray &insert)
{
    const uint frameBytes = bytesPerFrame();
    Q_ASSERT(frameBytes && offset % frameBytes == 0 && removeSize % frameBytes == 0);
    if (removeSize == uint(insert.size()))
        std::copy(insert.cbegin(), insert.cend(), sample.data.begin() + offset);
    else
        sample.data.replace(int(offset), int(removeSize), insert);
    sample.samples = quint32(uint(sample.data.size()) / frameBytes);
    emit framesReplaced(offset / frameBytes, removeSize / frameBytes, uint(insert.size()) / frameBytes);
    keepInRange();
}

void AudioData::keepInRange()
{
    const uint n = sample.samples;
    if (std::max(selectionStart, selectionEnd) > n || (n && std::min(selectionStart, selectionEnd) >= n)
        || (!n && (selectionStart || selectionEnd)))
        select(selectionStart, selectionEnd);
    if (currentSample > n)
        setCurrentSample(n);
}

} // namespace Ovra
