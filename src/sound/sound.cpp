#include "sound/sound.h"

namespace Ovra {

Sound::~Sound() = default;

QStringList Sound::propertyNames() const
{
    return {QStringLiteral("Identifier")};
}

double Sound::duration() const
{
    const SampleInfo shape = info();
    return shape.frequency == 0 ? 0 : double(shape.samples) / shape.frequency;
}

} // namespace Ovra
