#pragma once

#include "editors/sprite/imagepainter.h"

namespace Ovra {

// The painter of indexed pictures: colours and pixels are palette indices, one byte each.
class OVRA_EXPORT IndexPainter : public ImagePainter
{
public:
    IndexPainter();
    ~IndexPainter() override;

    void setColor(uint color) override;
    void setRemap(const QMap<uint, uint> &remap) override;
    bool isSelected(int x, int y) const override;
    uint pixel(int x, int y) const override;
    void setPixel(int x, int y) override;
};

} // namespace Ovra
