#pragma once

// The sample work, written by code: a game mark and one project of a knight, with its
// sprites, palettes, animations, sounds, definitions and a script. Every run writes the
// same bytes. Larger works of generated items serve the load benchmark.
#include <QString>

namespace SampleWork {

// Writes the work into `directory` (made if needed); false with the reason in `error`.
bool write(const QString &directory, QString *error);

struct Size
{
    int sprites = 0;
    int animations = 0;
    int sounds = 0;
};

// A work of one project "bulk/bulk.ovp" with that many generated items.
bool writeLarge(const QString &directory, const Size &size, QString *error);

// The animations of a large work: `animations` of 10 frames each (25 lines an animation),
// showing sprites of `sprites` in groups of 10.
QString largeAnimationText(int animations, int sprites);

// The project file of the work that write() makes, relative to its directory.
QString projectFile();

} // namespace SampleWork
