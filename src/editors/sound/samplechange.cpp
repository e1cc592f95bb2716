#include "samplechange.h"

#include "editors/sound/audiodata.h"

namespace Ovra {

SampleChange::SampleChange(AudioData *sound, uint offset, const QByteArray &bytes, QUndoCommand *parent)
    : QUndoCommand(QObject::tr("Change samples"), parent)
    , sound(sound)
    , offset(offset)
    , size(uint(bytes.size()))
    , item(sound->cache->addItem(QVariant()))
{
    item->setRawData(bytes, 0, nullptr, 0);
}

SampleChange::~SampleChange()
{
    item->release();
}

void SampleChange::redo()
{
    swap();
}

void SampleChange::undo()
{
    swap();
}

void SampleChange::swap()
{
    const QByteArray present = sound->sample.data.mid(int(offset), int(size));
    const QByteArray parked = item->rawData();
    item->setRawData(present, 0, nullptr, 0);
    sound->replaceBytes(offset, size, parked);
}

} // namespace Ovra
