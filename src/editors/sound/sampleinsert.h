#pragma once

#include "cache/streamcache.h"
#include "foundation/global.h"

#include <QByteArray>
#include <QUndoCommand>

namespace Ovra {

class AudioData;

// Puts frames into the sound at a byte offset; undo takes them out again. The inserted
// bytes wait in a cache item for the next redo.
class OVRA_EXPORT SampleInsert : public QUndoCommand
{
public:
    SampleInsert(AudioData *sound, uint offset, const QByteArray &bytes, QUndoCommand *parent = nullptr);
    ~SampleInsert() override;

    void redo() override;
    void undo() override;

    AudioData *sound;
    uint offset;
    uint size;
    uint frames;
    StreamCache::Item *item;
};

} // namespace Ovra
