#pragma once

#include "editors/sprite/imagepainter.h"

namespace Ovra {

// The painter of true-colour pictures: colours and pixels are 32-bit ARGB words. Its remap
// is keyed by the palette index nearest to a pixel's colour and gives the new word.
class OVRA_EXPORT RGBAPainter : public ImagePainter
{
public:
    RGBAPainter();
    ~RGBAPainter() override;

    void setColor(uint color) override;
    void setRemap(const QMap<uint, uint> &remap) override;
    bool isSelected(int x, int y) const override;
    uint pixel(int x, int y) const override;
    void setPixel(int x, int y) override;
};

} // namespace Ovra
