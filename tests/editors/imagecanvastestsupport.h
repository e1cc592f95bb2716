#pragma once

// What the canvas tests share: a snapshot of everything an undo has to bring back, and
// pictures and palettes made from a seed.
#include "editors/sprite/imagecanvas.h"
#include "editors/sprite/imagelayer.h"
#include "editors/sprite/imagelayers.h"
#include "editors/sprite/rasterlayer.h"
#include "image/paletteobject.h"

#include <QRandomGenerator>
#include <QStringList>
#include <QVector>

namespace Ovra::CanvasTest {

// Everything an undo or redo has to bring back, taken from the canvas.
struct LayerState
{
    QString name;
    bool visible;
    int mode;
    double opacity;
    QImage image;

    bool operator==(const LayerState &o) const
    {
        return name == o.name && visible == o.visible && mode == o.mode && opacity == o.opacity && image == o.image;
    }
};

struct Snapshot
{
    int format = 0;
    QSize size;
    QVector<LayerState> layers;

    bool operator==(const Snapshot &o) const { return format == o.format && size == o.size && layers == o.layers; }
    QStringList names() const
    {
        QStringList names;
        for (const LayerState &layer : layers)
            names << layer.name;
        return names;
    }
};

inline Snapshot snapshot(const ImageCanvas &canvas)
{
    Snapshot shot{canvas.format(), canvas.size(), {}};
    for (const ImageLayer *layer : canvas.layers()->layers()) {
        shot.layers.append({layer->name(), layer->isVisible(), int(layer->blendMode()), layer->opacity(),
                            static_cast<const RasterLayer *>(layer)->image()});
    }
    return shot;
}

inline QString describe(const Snapshot &shot)
{
    return QStringLiteral("format %1, %2x%3, layers %4").arg(shot.format).arg(shot.size.width()).arg(shot.size.height())
        .arg(shot.names().join(QLatin1Char(',')));
}

// A palette with transparent, half-transparent and opaque entries, as sprites have them.
inline void fillPalette(PaletteObject &palette, quint32 seed)
{
    QRandomGenerator random(seed);
    RGBA colors[256];
    for (int i = 0; i < 256; ++i) {
        const quint8 alphas[] = {0, 255, 255, 128, 60, 200};
        colors[i] = RGBA(quint8(random.bounded(256)), quint8(random.bounded(256)), quint8(random.bounded(256)),
                         i == 0 ? 0 : alphas[random.bounded(6)]);
    }
    palette.fromPalette(colors);
}

inline QImage indexedPicture(QSize size, const PaletteObject &palette, QRandomGenerator &random, int colours)
{
    QImage image(size, QImage::Format_Indexed8);
    QVector<QRgb> table;
    for (int i = 0; i < 256; ++i)
        table << palette.at(uchar(i)).toQRgb();
    image.setColorTable(table);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            image.scanLine(y)[x] = uchar(random.bounded(colours));
    }
    return image;
}

inline RasterLayer *raster(const ImageCanvas &canvas, int row)
{
    return static_cast<RasterLayer *>(canvas.layers()->at(row));
}

} // namespace Ovra::CanvasTest
