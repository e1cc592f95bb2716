#pragma once

#include "image/imagedata.h"
#include "image/imagescaling.h"

#include <QObject>
#include <QPainter>
#include <QSize>

#include <memory>

class QUndoStack;

namespace Ovra {

class ImageCanvasPrivate;
class ImageLayer;
class ImageLayers;
class ImagePainter;
class PaletteObject;

// The editable picture behind the sprite editor: a size, a format (0 indexed, 1 true
// colour), the palette it is shown with, a selection mask, a stack of layers and the undo
// stack that every edit goes onto. Operations over all layers stand under one macro each,
// so that one undo takes the whole of them back.
class OVRA_EXPORT ImageCanvas : public QObject
{
    Q_OBJECT
public:
    explicit ImageCanvas(QObject *parent = nullptr);
    ~ImageCanvas() override;

    // The palette of the picture; by default a table of the canvas's own, all zero.
    PaletteObject *palette() const;
    // Shows the picture with another palette (not owned); null goes back to the own table.
    void setPalette(PaletteObject *palette);
    // The painter for the current format, owned by the canvas and replaced with the format.
    ImagePainter *painter() const;
    ImageLayers *layers() const;
    int format() const;
    QSize size() const;
    QUndoStack *undoStack() const;

    // Starts over with one layer holding the picture and no history: indexed pictures make
    // an indexed canvas, any other a true-colour one. A null picture leaves no layers.
    void setImage(const QImage &image);
    // No layers, no size, no history.
    void clear();

    double scale() const;
    // The zoom, bounded above by 32 and below by what keeps 50 pixels of the shorter side.
    void setScale(double scale);

    // One byte a pixel, the canvas's width a row, 0 out and anything else in; empty means
    // that every pixel is selected.
    const QByteArray &selection() const;
    bool hasSelection() const;
    // False (and nothing changed) unless the mask is empty or has a byte for every pixel.
    bool setSelection(const QByteArray &mask);
    void clearSelection();
    bool isSelected(int x, int y) const;

    // Undoable edits of the layer stack; a row out of range gives null or false.
    ImageLayer *addLayer(int row = 0);
    ImageLayer *duplicateLayer(int row);
    bool deleteLayer(int row);
    bool moveLayer(int from, int to);
    bool renameLayer(int row, const QString &name);
    bool setLayerOpacity(int row, double opacity);
    bool setLayerBlendMode(int row, QPainter::CompositionMode mode);

    // 0 indexed, 1 true colour. Undoable, it converts every layer; otherwise only the
    // format and the painter change.
    void setFormat(int format, bool undoable);
    // Moves every pixel of an indexed canvas from the current colours to the nearest entry
    // of `palette`; the caller then shows the canvas with that palette.
    void remap(const RGBA (&palette)[256]);
    // A new canvas size: each layer padded with `fill` or cut, the old picture at
    // `position` (an x below -65535 centres it).
    void setSize(const QSize &size, const QPoint &position, uint fill);
    // Scales every layer to the size.
    void resize(const QSize &size, ImageResizeFilter filter);
    // Cuts the canvas to the box around the content of all layers. False when there is
    // nothing to cut; otherwise `offset` gets the box's top-left corner.
    bool crop(QPoint *offset);
    void flip(bool horizontal, bool vertical);
    void rotate(float angle, uint fill);
    // Replace the visible layers (and the hidden ones, by mergeAll) by one layer of their
    // composition, named after the top layer that took part. False with no visible layer.
    bool mergeVisible();
    bool mergeAll();

    // The visible layers drawn together: an indexed picture over the palette on an indexed
    // canvas, an ARGB32 picture on a true-colour one.
    QImage composed() const;
    // The same for one part of the picture (the part inside the canvas), at its place.
    QImage composed(const QRect &area) const;

    // Called by layers when their name, visibility, mode or pixels change; `area` is the
    // part of the picture the change touched, null when it may be all of it.
    void layerChanged(ImageLayer *layer, const QRect &area = QRect());
    // While `changed` is being told: the part of the picture that changed, or a null
    // rectangle when it may be all of it. Null at any other time.
    QRect changedArea() const;

signals:
    void changed();
    void sizeChanged(const QSize &size);
    void formatChanged(int format);
    void scaleChanged(double scale);
    void painterChanged();
    void selectionChanged();

private:
    friend class ImageCanvasPrivate;
    std::unique_ptr<ImageCanvasPrivate> d;
};

} // namespace Ovra
