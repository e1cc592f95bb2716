#pragma once

#include "editors/sprite/imagecanvas.h"
#include "editors/sprite/imagelayers.h"
#include "editors/sprite/imagepainter.h"
#include "image/paletteobject.h"

#include <QUndoStack>

namespace Ovra {

class ImageCanvasPrivate
{
public:
    explicit ImageCanvasPrivate(ImageCanvas *canvas);

    static ImageCanvasPrivate *get(ImageCanvas *canvas) { return canvas->d.get(); }

    int format() const { return m_format; }
    QSize size() const { return m_size; }
    // Set the state alone, as the undo commands do, and tell the views.
    void storeFormat(int format);
    void storeSize(const QSize &size);

    // Puts a fresh layer in place and onto the undo stack.
    void insertLayer(int row, ImageLayer *layer);
    // Replaces the layers that take part by their composition.
    bool merge(bool all, const QString &text);
    QImage composedIndexed(const QRect &area) const;
    QImage composedRgba(const QRect &area) const;

    ImageCanvas *const q;
    RGBA ownColors[256] = {};
    PaletteObject ownPalette;
    PaletteObject *palette;
    std::unique_ptr<ImagePainter> painter;
    std::unique_ptr<ImageLayers> layers;
    QUndoStack undoStack;
    QByteArray selection;
    double scale = 1.0;
    QRect changedArea;

private:
    int m_format = 0;
    QSize m_size;
};

} // namespace Ovra
