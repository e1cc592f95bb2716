#pragma once

#include "foundation/global.h"

#include <QImage>
#include <QPoint>
#include <QRect>
#include <QRgb>
#include <QSize>

class QIODevice;

namespace Ovra {

struct RGB;

// One palette entry. A palette travels through the system as 256 of them.
struct OVRA_EXPORT RGBA
{
    quint8 red = 0;
    quint8 green = 0;
    quint8 blue = 0;
    quint8 alpha = 0;

    RGBA() = default;
    // From a QRgb word.
    explicit RGBA(uint argb)
        : red(quint8(qRed(argb))), green(quint8(qGreen(argb))), blue(quint8(qBlue(argb))), alpha(quint8(qAlpha(argb)))
    {
    }
    RGBA(const RGB &rgb);
    RGBA(quint8 r, quint8 g, quint8 b, quint8 a) : red(r), green(g), blue(b), alpha(a) {}

    void fromRGB(const RGB &rgb);
    RGB toRGB() const;
    QRgb toQRgb() const { return qRgba(red, green, blue, alpha); }
    bool operator==(const RGBA &other) const
    {
        return red == other.red && green == other.green && blue == other.blue && alpha == other.alpha;
    }
    bool operator!=(const RGBA &other) const { return !(*this == other); }
};

// A colour without alpha: the element of GIF colour maps.
struct OVRA_EXPORT RGB
{
    quint8 red = 0;
    quint8 green = 0;
    quint8 blue = 0;

    RGB() = default;
    explicit RGB(uint rgb) : red(quint8(qRed(rgb))), green(quint8(qGreen(rgb))), blue(quint8(qBlue(rgb))) {}
    RGB(quint8 r, quint8 g, quint8 b) : red(r), green(g), blue(b) {}

    QRgb toQRgb() const { return qRgb(red, green, blue); }
    bool operator==(const RGB &other) const { return red == other.red && green == other.green && blue == other.blue; }
    bool operator!=(const RGB &other) const { return !(*this == other); }
};

static_assert(sizeof(RGBA) == 4, "a palette is 256 entries of four bytes");
static_assert(sizeof(RGB) == 3, "a colour map is entries of three bytes");

// What an image file tells about its picture without decoding it.
struct OVRA_EXPORT ImageInfo
{
    quint16 width = 0;
    quint16 height = 0;
    QImage::Format format = QImage::Format_Indexed8;

    QSize size() const { return QSize(width, height); }
};

// The format an image file of that many bits a pixel loads into: 5 and 8 indexed, 24
// RGB32, 32 ARGB32, anything else invalid.
OVRA_EXPORT QImage::Format formatOfDepth(int depth);

// File-dialog filters of images and palettes.
enum ImageExtensionType {
    AllImageWildcards = 0,   // the patterns behind a label for all image formats
    ImageFiltersPcxFirst = 1,
    ImageFiltersPngFirst = 2,
    AllPaletteWildcards = 3, // the same for all palette formats
    PaletteReadFilters = 4,
    PaletteWriteFilters = 5,
};

// The filter text, or null past the table.
OVRA_EXPORT const char *imageFileExtension(ImageExtensionType type);

// The size and coming format of an image file, from its header alone. The format name
// ("BMP", "PNG", "PCX", "GIF", as fileExtension() gives it) decides; anything else, or an
// unreadable device, gives the default.
OVRA_EXPORT ImageInfo imageInfoFromFile(QIODevice *device, const char *format);

// The smallest rectangle around the picture's content, grown by `margin`; invalid when
// there is no content, default for a null image or another format than indexed or 32-bit.
OVRA_EXPORT QRect cropImageRect(const QImage &image, int margin);
// Crops the picture to its content; false (and nothing changed) when there is nothing to
// cut away. The top-left corner of what stays goes to `offset`.
OVRA_EXPORT bool cropImage(QImage &image, QPoint *offset, int margin);
// Turns any picture into an indexed one over the palette, each pixel to its nearest entry.
OVRA_EXPORT void adaptImageToPalette(QImage &image, const RGBA palette[256]);

} // namespace Ovra
