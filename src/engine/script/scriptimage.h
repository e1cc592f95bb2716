#pragma once

#include "engine/script/table.h"

namespace Ovra {

// Registers "Image", a QImage as scripts read and change sprites with it: size and
// format, pixels and the colour table, copies, nearest-neighbour scaling, conversion, and
// loading and saving through the library's image codecs. Images are values: a sprite's
// image handed to a script is a copy, written back with `sprite.image = picture`.
// Coordinates, indices and formats are checked; a bad one raises a Lua error.
OVRA_EXPORT void registerImageClass(Script::Table &table);

} // namespace Ovra
