#pragma once

#include "image/imagedata.h"

#include <QColor>
#include <QObject>

class QIODevice;

namespace Ovra {

// The colour effects of the palette editor.
enum RGBPaletteEffect {
    SwapRedBlue = 1,
    SwapGreenBlue = 2,
    SwapRedGreen = 3,
    SwapBlueGreen = 4,
    SwapGreenRed = 5,
    SwapBlueRed = 6,
    Lighter = 7,
    Darker = 8,
    GrayScale = 9,
    Warm = 10,
    Cool = 11,
    Contrast = 12,
    MuchLighter = 13,
    MuchDarker = 14,
};

// The operations of a 256-colour palette over a table that someone else owns: an
// engine's palette, an editor's, a texture's. Every change comes between changing() and
// changed(). A selection is 256 flags; null means every entry.
class OVRA_EXPORT PaletteObject : public QObject
{
    Q_OBJECT

public:
    explicit PaletteObject(RGBA (*palette)[256]);
    PaletteObject &operator=(RGBA (*palette)[256]);

    RGBA (&palette() const)[256] { return *m_palette; }
    RGBA operator[](unsigned char index) const { return (*m_palette)[index]; }
    RGBA at(unsigned char index) const { return (*m_palette)[index]; }
    QColor colorAt(unsigned char index) const;

    void fromPalette(const RGBA *colors);
    // Copies out, without signals.
    void toPalette(RGBA (&colors)[256]) const;
    // Clears the table, without signals.
    void empty();

    void setColor(unsigned char index, const RGBA &color);
    void setColor(const bool *selection, const RGBA &color);
    // Adds to each channel, held to 0..255.
    void addRGB(const bool *selection, short red, short green, short blue);
    // Turns hue and saturation; the entries become opaque.
    void addHueSaturation(const bool *selection, short hue, short saturation);
    void applyEffect(RGBPaletteEffect effect, const bool *selection);
    // From `first` on the first selected entry to `last` on the last.
    void gradient(const bool *selection, const RGBA &first, const RGBA &last);
    // lastIndex - firstIndex entries from entry 0 on: the indices give the count only.
    void gradient(unsigned char firstIndex, const RGBA &first, unsigned char lastIndex, const RGBA &last);
    // Each colour the table lacks goes to the next place from the end.
    void addColors(const RGBA *colors);
    // The earlier of two equal entries becomes `color` (opaque); entry 0 takes no part.
    void clearDuplicated(const RGB &color);
    // A chain of nearest neighbours from entry 0 on.
    void sortByTones();
    // Reverses the selected entries; with exchangeAlpha the alphas of 0 and 255 too.
    void switchColors(const bool *selection, bool exchangeAlpha);
    // The nearest entry.
    unsigned char index(const RGBA &color) const;

    // Reads a palette file by format name or by its first bytes; index 0 ends
    // transparent. On failure the palette stays as it was.
    bool fromFile(QIODevice *device, const char *format);
    // The same by the given rules. Complete: colour tables and RIFF palettes in index
    // order, as other programs keep them; RIFF palettes with every entry the file holds,
    // swatch exchange files with any number of groups and blocks, JASC text with LF or
    // CRLF line ends and as many entries as its count line says.
    bool fromFile(QIODevice *device, const char *format, CodecRules rules);
    // Writes "ACT" itself, everything else through palette-saving extensions.
    bool toFile(QIODevice *device, const char *format);
    // Complete: "ACT" in index order, and "PAL" (RIFF), "JASC" (text) and "ASE" as well.
    bool toFile(QIODevice *device, const char *format, CodecRules rules);

signals:
    void changing();
    void changed();

private:
    RGBA (*m_palette)[256];
};

} // namespace Ovra
