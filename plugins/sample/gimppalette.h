#pragma once

// Palettes in the text format of the GNU Image Manipulation Program (".gpl"): a
// "GIMP Palette" line, optional "Name:" and "Columns:" lines, "#" comments, then one
// colour a line as three decimal numbers and an optional name.
#include "engine/extension.h"

class GimpPaletteLoader : public Ovra::PaletteLoaderExtension
{
public:
    const char *format() const override { return "GPL"; }
    const char *name() const override { return "GIMP palette"; }
    // The colours read, opaque, from entry 0 on (at most 256); false for a file of
    // another kind or a colour line that isn't three numbers of 0 to 255.
    bool load(QIODevice *device, Ovra::RGBA (&palette)[256]) override;
};

class GimpPaletteSaver : public Ovra::PaletteSaverExtension
{
public:
    const char *format() const override { return "GPL"; }
    const char *name() const override { return "GIMP palette"; }
    // All 256 entries, 16 to a row in the program's swatch view.
    bool save(QIODevice *device, const Ovra::RGBA (&palette)[256]) override;
};
