#pragma once

#include "cache/streamcache.h"
#include "foundation/global.h"

#include <QUndoCommand>

namespace Ovra {

class AudioData;

// Takes frames out of the sound, parking them in a cache item until undo puts them back.
class OVRA_EXPORT SampleRemove : public QUndoCommand
{
public:
    SampleRemove(AudioData *sound, uint offset, uint size, QUndoCommand *parent = nullptr);
    ~SampleRemove() override;

    void redo() override;
    void undo() override;

    AudioData *sound;
    uint offset;
    uint size;
    uint frames;
    StreamCache::Item *item;
};

} // namespace Ovra
