#pragma once

#include "image/imagedata.h"

#include <QImage>
#include <QSize>

namespace Ovra {

// The filters of the resize dialog. The pixel-art ones enlarge by their own factor of 2,
// 3 or 4 and then go the rest of the way by the plain filter named after the plus.
enum ImageResizeFilter {
    NearestNeighborFilter = 0,
    BilinearFilter = 1,
    EpxNearestFilter = 2,
    EpxBilinearFilter = 3,
    HqNearestFilter = 4,
    HqBilinearFilter = 5,
};

// The label the resize dialog shows for the filter; null for a value out of range.
OVRA_EXPORT const char *imageResizeFilterName(ImageResizeFilter filter);

// Scales the picture to exactly `size`. An indexed picture comes back indexed over
// `palette`. An unknown filter, an empty size or a null picture give a null image. The
// HQ filters enlarge by hq2x up to a factor of 2, hq3x up to 3 and hq4x above.
OVRA_EXPORT QImage resizeImage(QImage image, QSize size, RGBA (&palette)[256], ImageResizeFilter filter);
// Copies pixels by 16.16 fixed-point steps. The colour table is left to the caller.
OVRA_EXPORT QImage resizeImageNearest(QImage image, QSize size);
// Weighs the four nearest pixels; an indexed result takes the nearest palette entry.
// The colour table is left to the caller.
OVRA_EXPORT QImage resizeImageBilinear(QImage image, QSize size, RGBA (&palette)[256]);
// Turns the picture by `angle` radians around its top-left corner into a picture just
// large enough, without filtering. Places no pixel reaches get `fill`: an index in an
// indexed picture, a colour in a 32-bit one.
OVRA_EXPORT QImage rotateImage(QImage image, float angle, uint fill);

// The EPX enlargements by 2 (Scale2x) and 3 (Scale3x), for indexed pictures (comparing
// indices, keeping the colour table) and 32-bit ones (comparing whole pixels). Other
// formats give a null image.
OVRA_EXPORT QImage scaleEpx2x(const QImage &image);
OVRA_EXPORT QImage scaleEpx3x(const QImage &image);

} // namespace Ovra
