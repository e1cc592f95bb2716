#include "sampleremove.h"

#include "editors/sound/audiodata.h"

namespace Ovra {

SampleRemove::SampleRemove(AudioData *sound, uint offset, uint size, QUndoCommand *parent)
    : QUndoCommand(QObject::tr("Remove samples"), parent)
    , sound(sound)
    , offset(offset)
    , size(size)
    , frames(sound->bytesPerFrame() ? size / sound->bytesPerFrame() : 0)
    , item(sound->cache->addItem(QVariant()))
{
}

SampleRemove::~SampleRemove()
{
    item->release();
}

void SampleRemove::redo()
{
    item->setRawData(sound->sample.data.mid(int(offset), int(size)), 0, nullptr, 0);
    sound->replaceBytes(offset, size, QByteArray());
}

void SampleRemove::undo()
{
    sound->replaceBytes(offset, 0, item->rawData());
    // The bytes are back in the sound; the cache needn't hold them meanwhile.
    item->setRawData(QByteArray(), 0, nullptr, 0);
}

} // namespace Ovra
