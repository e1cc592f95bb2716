#pragma once

#include "foundation/global.h"

#include <QByteArray>
#include <QImage>
#include <QMap>
#include <QPoint>

#include <memory>

namespace Ovra {

class PaletteObject;
struct ImagePainterPrivate;

// The pixel work of the image tools on one layer's picture. The subclasses know the pixel
// size: IndexPainter writes palette indices into indexed pictures, RGBAPainter 32-bit words.
// Every write asks the selection first, and, when protectFirst points at true, index 0 (on a
// true-colour picture the word 0, clear black) is left alone. With no picture, or a picture
// of the other kind, the drawing operations do nothing.
class OVRA_EXPORT ImagePainter
{
public:
    virtual ~ImagePainter();

    virtual void setColor(uint color) = 0;
    // When not empty, writes replace each pixel through the map instead of by the colour.
    virtual void setRemap(const QMap<uint, uint> &remap) = 0;
    // A square of the pen's size with its top-left corner at the point.
    virtual void drawPoint(const QPoint &point);
    // Bresenham's line, a pen square on every step, both ends included.
    virtual void drawLine(const QPoint &from, const QPoint &to);
    // Fills the pixels equal to the one at `start`: the contiguous region (by a column scan
    // that a selection bounds sideways), or every such pixel of the selection.
    virtual void floodFill(const QPoint &start, bool contiguous);
    virtual bool isSelected(int x, int y) const = 0;
    virtual uint pixel(int x, int y) const = 0;
    virtual void setPixel(int x, int y) = 0;

    uint color() const;
    QMap<uint, uint> remap() const;
    PaletteObject *palette() const;
    void setPalette(PaletteObject *palette);
    QImage *image() const;
    void setImage(QImage *image);
    bool *protectFirst() const;
    void setProtectFirst(bool *protectFirst);
    int size() const;
    // Held to 1..128.
    void setSize(int size);
    // One byte a pixel of the picture's width, 0 out and anything else in; null or empty
    // means that every pixel is selected. The mask isn't owned.
    const QByteArray *selection() const;
    void setSelection(const QByteArray *selection);

protected:
    // `depth` is the bits a pixel of the pictures that the subclass paints.
    explicit ImagePainter(int depth);
    // There is a picture of the right kind to paint on.
    bool usable() const;
    bool isProtected(int x, int y) const;
    bool selectionAllows(int x, int y) const;

    const std::unique_ptr<ImagePainterPrivate> d;

private:
    Q_DISABLE_COPY(ImagePainter)
    void fillColumns(const QPoint &start, uint target);
};

} // namespace Ovra
