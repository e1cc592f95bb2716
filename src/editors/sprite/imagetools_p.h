#pragma once

// What the image tools share: the layer they work on, a stroke that becomes one undo step,
// the combination of a marked region with the selection, and the marks they draw.
#include "editors/sprite/imagecanvas.h"

#include <QByteArray>
#include <QImage>
#include <QMap>
#include <QString>

class QCheckBox;
class QPainter;
class QWidget;

namespace Ovra {

class RasterLayer;

// The layer the tools work on: the one whose picture the canvas's painter holds. Without
// one, the top layer, and the painter is pointed at it. Null on a canvas without layers.
RasterLayer *currentLayer(ImageCanvas *canvas);

// An edit of the current layer's picture from its beginning to its end, pushed as one undo
// step when anything changed.
class LayerStroke
{
public:
    explicit LayerStroke(ImageCanvas *canvas);

    // False when there is no layer to work on.
    bool begin();
    bool isOpen() const { return m_layer != nullptr; }
    RasterLayer *layer() const { return m_layer; }
    const QImage &before() const { return m_before; }
    // Tells the views that the pixels changed: those of `area`, or any for a null one.
    void touched(const QRect &area = QRect());
    // Pushes the step named `text` if the picture differs from the one at the beginning.
    void commit(const QString &text);
    // Puts the picture of the beginning back.
    void cancel();

private:
    // The layer still belongs to the canvas (a new sprite may have replaced it).
    bool layerAlive() const;

    ImageCanvas *m_canvas;
    RasterLayer *m_layer = nullptr;
    QImage m_before;
};

// A pen stroke through the canvas's painter, with a colour and a remap of its own for the
// time of the stroke; the painter gets its own back at the end.
class PaintStroke
{
public:
    explicit PaintStroke(ImageCanvas *canvas);

    bool begin(uint color, const QMap<uint, uint> &remap);
    void lineTo(const QPoint &from, const QPoint &to);
    void finish(const QString &text);
    void cancel();

private:
    void restorePainter();

    ImageCanvas *m_canvas;
    LayerStroke m_stroke;
    uint m_savedColor = 0;
    QMap<uint, uint> m_savedRemap;
};

// The selection a selection tool leaves after marking `marked` (one byte a pixel, non-zero
// in the region), by the gesture's button and modifiers:
//   left: in 1, out 0; left+Shift: in 1, out stays; left+Alt: in 0, out stays;
//   right: in 0, out 1; right+Shift: in stays, out 1; right+Alt: in stays, out 0.
// Shift is looked at before Alt. "Stays" keeps the canvas's mask; a canvas without a
// selection shows no outline, so there nothing counts as marked yet. A result with no
// pixel in becomes no selection.
void combineSelection(ImageCanvas *canvas, const QByteArray &marked, Qt::MouseButton button,
                      Qt::KeyboardModifiers modifiers);

// The marks under the mouse.
void drawPickerCross(QPainter &painter, int x, int y, double scale);
void drawPenSquare(QPainter &painter, int x, int y, double scale, int size);

// The "Contiguous" check box of the fill tools' bars.
QCheckBox *contiguousBox(bool checked, QWidget *parent);

} // namespace Ovra
