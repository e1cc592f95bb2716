#pragma once

#include "image/imagedata.h"
#include "image/imagescaling.h"

#include <QPainter>
#include <QRect>
#include <QSize>
#include <QString>

#include <memory>

namespace Ovra {

class ImageCanvas;
class PaletteObject;
struct ImageLayerPrivate;

// The blend box of the layer panel: 13 entries, entry 0 the plain "Normal" drawing and every
// other entry i the composition mode numbered i + 11 (Plus up to Exclusion).
enum { BlendEntryCount = 13 };
// The mode of an entry; an entry outside the box draws normally.
OVRA_EXPORT QPainter::CompositionMode blendModeOfEntry(int entry);
// The entry showing the mode, or -1 for a mode the box doesn't offer.
OVRA_EXPORT int blendEntryOfMode(QPainter::CompositionMode mode);
// The translated label of an entry; empty outside the box.
OVRA_EXPORT QString blendEntryLabel(int entry);

// One layer of an image canvas: its name, visibility, blend mode and opacity, and the
// operations that whole-picture edits apply to every layer. The pixel-changing operations
// push their own undo command onto the canvas's stack (under the caller's macro).
class OVRA_EXPORT ImageLayer
{
public:
    explicit ImageLayer(ImageCanvas *canvas);
    virtual ~ImageLayer();

    // A copy of the layer with its name, mode, opacity and visibility.
    virtual ImageLayer *clone() const = 0;
    // Sets up the painter for this layer: its composition mode and opacity.
    virtual void paint(QPainter &painter);
    // Maps every pixel through the canvas's current colours onto the nearest entry of
    // `palette`. A true-colour layer stays as it is.
    virtual void remap(const RGBA (&palette)[256]) = 0;
    virtual void flip(bool horizontal, bool vertical) = 0;
    virtual void rotate(float angle, uint fill) = 0;
    virtual void scale(const QSize &size, ImageResizeFilter filter) = 0;
    // Pads or cuts to `size`, the old picture at `position`; an x below -65535 centres it.
    virtual void resize(const QSize &size, const QPoint &position, uint fill) = 0;
    // Converts to indexed (0) or true colour (1) over the palette.
    virtual void setFormat(int format, PaletteObject *palette) = 0;
    // The box around the layer's content; invalid when there is none.
    virtual QRect contentRect() const = 0;

    ImageCanvas *canvas() const;
    void setCanvas(ImageCanvas *canvas);

    QString name() const;
    void setName(const QString &name);
    bool isVisible() const;
    void setVisible(bool visible);
    QPainter::CompositionMode blendMode() const;
    void setBlendMode(QPainter::CompositionMode mode);
    double opacity() const;
    // Held to 0..1.
    void setOpacity(double opacity);

protected:
    // Copies the name, mode, opacity and visibility of `other`.
    void copyPropertiesFrom(const ImageLayer &other);
    // Tells the canvas (its layer list and its views) that this layer changed, in `area`
    // of the picture or anywhere for a null one.
    void notifyChanged(const QRect &area = QRect());

private:
    Q_DISABLE_COPY(ImageLayer)
    std::unique_ptr<ImageLayerPrivate> d;
};

} // namespace Ovra
