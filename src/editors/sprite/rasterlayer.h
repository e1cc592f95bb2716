#pragma once

#include "editors/sprite/imagelayer.h"

#include <QImage>

namespace Ovra {

// A layer of pixels: one QImage the size of the canvas, indexed or 32-bit like the canvas.
class OVRA_EXPORT RasterLayer : public ImageLayer
{
public:
    RasterLayer(ImageCanvas *canvas, const QImage &image);
    ~RasterLayer() override;

    ImageLayer *clone() const override;
    void paint(QPainter &painter) override;
    void remap(const RGBA (&palette)[256]) override;
    void flip(bool horizontal, bool vertical) override;
    void rotate(float angle, uint fill) override;
    void scale(const QSize &size, ImageResizeFilter filter) override;
    void resize(const QSize &size, const QPoint &position, uint fill) override;
    void setFormat(int format, PaletteObject *palette) override;
    QRect contentRect() const override;

    const QImage &image() const { return m_image; }
    // The picture that painters work on; after a change call changed().
    QImage *imagePointer() { return &m_image; }
    // Exchanges the picture with `image`, as undo and redo do.
    void swapImage(QImage &image);
    // Replaces the picture without an undo command.
    void setImage(const QImage &image);
    // Tells the views that the pixels changed: those of `area`, or any for a null one.
    void changed(const QRect &area = QRect());

private:
    // Puts `image` in place and pushes the command that brings the old picture back.
    void replaceImage(const QImage &image);

    QImage m_image;
};

} // namespace Ovra
