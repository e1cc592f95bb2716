#include "sampleinsert.h"

#include "editors/sound/audiodata.h"

namespace Ovra {

SampleInsert::SampleInsert(AudioData *sound, uint offset, const QByteArray &bytes, QUndoCommand *parent)
    : QUndoCommand(QObject::tr("Insert samples"), parent)
    , sound(sound)
    , offset(offset)
    , size(uint(bytes.size()))
    , frames(sound->bytesPerFrame() ? size / sound->bytesPerFrame() : 0)
    , item(sound->cache->addItem(QVariant()))
{
    item->setRawData(bytes, 0, nullptr, 0);
}

SampleInsert::~SampleInsert()
{
    item->release();
}

void SampleInsert::redo()
{
    sound->replaceBytes(offset, 0, item->rawData());
}

void SampleInsert::undo()
{
    sound->replaceBytes(offset, size, QByteArray());
}

} // namespace Ovra
