#pragma once

#include "cache/streamcache.h"
#include "foundation/global.h"

#include <QByteArray>
#include <QUndoCommand>

namespace Ovra {

class AudioData;


// Overwrites bytes of the sound in place. Redo and undo are one and the same swap: what
// stands in the sound goes to the cache item and the item's bytes go in, so only the
// changed range is ever kept.
class OVRA_EXPORT SampleChange : public QUndoCommand
{
public:
    SampleChange(AudioData *sound, uint offset, const QByteArray &bytes, QUndoCommand *parent = nullptr);
    ~SampleChange() override;

    void redo() override;
    void undo() override;

    AudioData *sound;
    uint offset;
    uint size;
    StreamCache::Item *item;

private:
    void swap();
};

} // namespace Ovra
