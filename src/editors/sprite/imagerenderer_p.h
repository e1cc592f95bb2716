#pragma once

#include "editors/sprite/imagecanvas.h"
#include "editors/sprite/imagerenderer.h"
#include "editors/sprite/imagetool.h"

#include <QImage>
#include <QLine>
#include <QList>
#include <QPointer>
#include <QSize>
#include <QTimer>
#include <QVector>

namespace Ovra {

// An edge of the selection in picture pixels; `after` when the selected pixels lie before
// the line (a bottom or a right edge).
struct SelectionEdge
{
    QLine line;
    bool after = false;
};

class ImageRendererPrivate
{
public:
    explicit ImageRendererPrivate(ImageRenderer *renderer);

    // The picture as it is shown, composed again after a change of the canvas.
    const QImage &shownPicture();
    // The edges between selected and unselected pixels (and the picture's border around
    // selected ones), in picture pixels, each row's and column's runs joined.
    const QVector<SelectionEdge> &outline();
    // Every layer drawn, the hidden ones too, as the saved picture has them.
    QImage composedOriginal() const;

    // Zooms to `scale` (bounded by the canvas) keeping the picture point under `anchor`.
    void zoomAbout(double scale, const QPointF &anchor);
    // The zoom step above or below the present zoom.
    double nextScale(bool larger) const;
    double scale() const;
    void connectCanvas();
    void canvasChanged();
    void selectionChanged();
    void scaleChanged(double scale);
    void tick();

    ImageRenderer *const q;
    QPointer<ImageCanvas> canvas;
    QPointer<ImageTool> tool;
    QList<QMetaObject::Connection> canvasConnections;
    QMetaObject::Connection toolConnection;
    QPointF offset;
    QSize viewSize;
    bool placed = false;       // the offset was set for this picture
    bool zooming = false;      // a zoom of ours moves the offset itself
    void fitWholeZoom();
    double lastScale = 1.0;
    // Until the user picks a zoom, each picture placed in the view gets the largest whole
    // zoom, up to 8, at which it fits.
    bool userZoomed = false;
    bool showOriginal = false;
    QImage shown;
    bool shownDirty = true;
    // A part of `shown` to compose again (a stroke's few pixels), when not all of it is.
    QRect staleArea;
    QVector<SelectionEdge> edges;
    bool edgesDirty = true;
    QPoint mouse;
    bool mouseKnown = false;
    QPoint lastPixel = QPoint(-1, -1);
    bool panning = false;
    Qt::MouseButton panButton = Qt::NoButton;
    QPoint panFrom;
    QTimer ants;
    int antsPhase = 0;
};

} // namespace Ovra
