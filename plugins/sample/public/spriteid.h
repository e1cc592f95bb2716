#pragma once

// How the sample engine names a sprite: a group and a number of 16 bits each. Frames and
// scripts write the pair as QPoint(group, number); a sprite list finds sprites and their
// palettes by one number that packs both, GROUP << 16 | NUMBER (Sprites::find). Header
// only, so that a host can speak of sprites without linking the engine.
#include <QPoint>

namespace SpriteId {

constexpr int MaximumPart = 0xFFFF;

// True when a group or a number fits its 16 bits.
constexpr bool isValidPart(int value)
{
    return value >= 0 && value <= MaximumPart;
}

constexpr bool isValid(int group, int number)
{
    return isValidPart(group) && isValidPart(number);
}

// The packed number. Only the low 16 bits of each part count, as in the files: check the
// parts with isValid() where a larger one would be a mistake.
constexpr uint pack(int group, int number)
{
    return (uint(group) & 0xFFFFu) << 16 | (uint(number) & 0xFFFFu);
}

inline uint pack(const QPoint &identifier)
{
    return pack(identifier.x(), identifier.y());
}

constexpr int group(uint id)
{
    return int(id >> 16);
}

constexpr int number(uint id)
{
    return int(id & 0xFFFFu);
}

inline QPoint unpack(uint id)
{
    return QPoint(group(id), number(id));
}

// True when the pair is the one the number packs; a pair out of range never is.
inline bool matches(const QPoint &identifier, uint id)
{
    return identifier == unpack(id);
}

} // namespace SpriteId
