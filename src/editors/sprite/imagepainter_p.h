#pragma once

#include "editors/sprite/imagepainter.h"

namespace Ovra {

struct ImagePainterPrivate
{
    int depth = 8;
    QMap<uint, uint> remap;
    PaletteObject *palette = nullptr;
    QImage *image = nullptr;
    uint color = 255;
    bool *protectFirst = nullptr;
    int size = 1;
    const QByteArray *selection = nullptr;
};

} // namespace Ovra
