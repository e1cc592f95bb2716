#pragma once

#include "foundation/global.h"
#include "sound/soundsample.h"

#include <QByteArray>
#include <QObject>
#include <QUndoStack>

namespace Ovra {

class StreamCache;

// The sound under edit with what goes with it: the undo history, whose old bytes are
// parked in a stream cache rather than held raw, the selection and the play cursor. Every
// change of the bytes goes through replaceBytes(), so that views can follow the edited
// range instead of rereading the whole sound.
class OVRA_EXPORT AudioData : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(AudioData)

public:
    explicit AudioData(QObject *parent = nullptr);
    ~AudioData() override;

    uint bytesPerFrame() const { return uint(sample.channels) * (sample.bits / 8u); }

    // Replaces the sound; the history and the selection start over.
    void setSample(const SoundSample &newSample);

    // Stored in the order given; the larger bound is held to the frame count and the
    // smaller below it.
    void select(uint start, uint end);
    void selection(uint &start, uint &end) const;
    QByteArray selectedSamples() const;
    // Replaces, removes (with empty bytes) or inserts (at an empty selection) frames as
    // one undoable step. False for bytes that aren't a whole number of frames.
    bool changeSelectedSamples(const QByteArray &bytes);
    void setCurrentSample(uint frame);

    // The one road by which the bytes change (the undo commands use it): `removeSize`
    // bytes at `offset` give way to `insert`. Offsets are whole frames.
    void replaceBytes(uint offset, uint removeSize, const QByteArray &insert);

    StreamCache *cache;
    SoundSample sample;
    QUndoStack undoStack;
    quint32 selectionStart = 0;
    quint32 selectionEnd = 0;
    quint32 currentSample = 0;

signals:
    // Frames from `frame` on changed: `removed` went, `inserted` came.
    void framesReplaced(uint frame, uint removed, uint inserted);
    // A new sound altogether.
    void sampleReset();
    void selectionChanged(uint start, uint end);
    void currentSampleChanged(uint frame);

private:
    void keepInRange();
};

} // namespace Ovra
