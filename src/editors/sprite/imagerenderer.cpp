#include "editors/sprite/imagerenderer.h"

#include "editors/sprite/imagecanvas.h"
#include "editors/sprite/imagelayer.h"
#include "editors/sprite/imagelayers.h"
#include "editors/sprite/imagerenderer_p.h"
#include "editors/sprite/imagetool.h"

#include <QPainter>
#include <QSignalBlocker>
#include <QtMath>

#include <cstring>
#include <iterator>

namespace Ovra {

namespace {

// The zoom steps of the wheel and the buttons; the canvas bounds them further.
const double zoomSteps[] = {0.125, 0.25, 0.5, 1, 2, 3, 4, 6, 8, 12, 16, 24, 32};
// Squares of the checker board under clear pixels, in view pixels.
const int checkerSquare = 8;
const int antsInterval = 120;

QBrush checkerBrush()
{
    static const QPixmap tile = [] {
        QPixmap pixmap(checkerSquare * 2, checkerSquare * 2);
        pixmap.fill(QColor(204, 204, 204));
        QPainter painter(&pixmap);
        painter.fillRect(0, 0, checkerSquare, checkerSquare, QColor(250, 250, 250));
        painter.fillRect(checkerSquare, checkerSquare, checkerSquare, checkerSquare, QColor(250, 250, 250));
        return pixmap;
    }();
    return QBrush(tile);
}

// The runs of edges of a mask: along each row the top and bottom edges, along each column
// the left and right ones, where a selected pixel meets an unselected one or the border.
void addRuns(QVector<SelectionEdge> &edges, const QByteArray &mask, const QSize &size, bool rows)
{
    const int outer = rows ? size.height() : size.width();
    const int inner = rows ? size.width() : size.height();
    const auto selected = [&](int a, int b) {
        if (a < 0 || b < 0 || a >= outer || b >= inner)
            return false;
        return mask.at(rows ? a * size.width() + b : b * size.width() + a) != 0;
    };
    for (int a = 0; a < outer; ++a) {
        for (const int side : {-1, 1}) {
            const int line = side < 0 ? a : a + 1;
            int start = -1;
            for (int b = 0; b <= inner; ++b) {
                const bool edge = b < inner && selected(a, b) && !selected(a + side, b);
                if (edge && start < 0)
                    start = b;
                if (!edge && start >= 0) {
                    edges.append({rows ? QLine(start, line, b, line) : QLine(line, start, line, b), side > 0});
                    start = -1;
                }
            }
        }
    }
}

// One edge on the view, one view pixel thick, inside the selected pixels: white, with black
// dashes of four pixels laid out by the view position and the phase, so that they run on
// from one edge to the next and march as the phase moves.
void paintEdge(QPainter &painter, const SelectionEdge &edge, const QPointF &offset, double scale, int phase)
{
    const QPoint from = (offset + QPointF(edge.line.p1()) * scale).toPoint();
    const QPoint to = (offset + QPointF(edge.line.p2()) * scale).toPoint();
    const bool horizontal = from.y() == to.y();
    const int across = (horizontal ? from.y() : from.x()) - (edge.after ? 1 : 0);
    const int first = horizontal ? from.x() : from.y();
    const int last = horizontal ? to.x() : to.y();
    const auto run = [&](int begin, int end) {
        return horizontal ? QRect(begin, across, end - begin, 1) : QRect(across, begin, 1, end - begin);
    };
    painter.fillRect(run(first, last), Qt::white);
    for (int at = first; at < last;) {
        const int place = ((at + across - phase) % 8 + 8) % 8;
        const int end = qMin(last, at + (place < 4 ? 4 - place : 8 - place));
        if (place < 4)
            painter.fillRect(run(at, end), Qt::black);
        at = end;
    }
}

} // namespace

ImageRendererPrivate::ImageRendererPrivate(ImageRenderer *renderer)
    : q(renderer)
{
    ants.setInterval(antsInterval);
}

const QImage &ImageRendererPrivate::shownPicture()
{
    if (shownDirty) {
        shownDirty = false;
        staleArea = QRect();
        const QImage picture = showOriginal ? composedOriginal() : canvas->composed();
        shown = picture.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    } else if (!staleArea.isEmpty()) {
        const QImage part = canvas->composed(staleArea).convertToFormat(QImage::Format_ARGB32_Premultiplied);
        const int bytes = part.width() * 4;
        for (int y = 0; y < part.height(); ++y)
            memcpy(shown.scanLine(staleArea.top() + y) + staleArea.left() * 4, part.constScanLine(y), size_t(bytes));
        staleArea = QRect();
    }
    return shown;
}

QImage ImageRendererPrivate::composedOriginal() const
{
    // The canvas composes the visible layers only: the hidden ones are shown for the time
    // of the composition, with the canvas and its list quiet so that nothing records it.
    const QSignalBlocker canvasQuiet(canvas.data());
    const QSignalBlocker listQuiet(canvas->layers());
    QList<ImageLayer *> hidden;
    for (ImageLayer *layer : canvas->layers()->layers()) {
        if (!layer->isVisible()) {
            hidden.append(layer);
            layer->setVisible(true);
        }
    }
    const QImage picture = canvas->composed();
    for (ImageLayer *layer : hidden)
        layer->setVisible(false);
    return picture;
}

const QVector<SelectionEdge> &ImageRendererPrivate::outline()
{
    if (edgesDirty) {
        edgesDirty = false;
        edges.clear();
        const QByteArray &mask = canvas->selection();
        const QSize size = canvas->size();
        if (!mask.isEmpty() && mask.size() == size.width() * size.height()) {
            addRuns(edges, mask, size, true);
            addRuns(edges, mask, size, false);
        }
    }
    return edges;
}

double ImageRendererPrivate::scale() const
{
    return canvas ? canvas->scale() : 1.0;
}

double ImageRendererPrivate::nextScale(bool larger) const
{
    const double present = scale();
    if (larger) {
        for (const double step : zoomSteps) {
            if (step > present * 1.0001)
                return step;
        }
        return zoomSteps[std::size(zoomSteps) - 1];
    }
    for (int i = int(std::size(zoomSteps)) - 1; i >= 0; --i) {
        if (zoomSteps[i] < present * 0.9999)
            return zoomSteps[i];
    }
    return zoomSteps[0];
}

void ImageRendererPrivate::zoomAbout(double wanted, const QPointF &anchor)
{
    if (!canvas)
        return;
    userZoomed = true;
    const double before = scale();
    const QPointF point = (anchor - offset) / before;
    zooming = true;
    canvas->setScale(wanted);
    zooming = false;
    lastScale = scale();
    offset = anchor - point * lastScale;
    q->update();
}

void ImageRendererPrivate::connectCanvas()
{
    for (const QMetaObject::Connection &connection : qAsConst(canvasConnections))
        QObject::disconnect(connection);
    canvasConnections.clear();
    if (!canvas)
        return;
    ImageCanvas *c = canvas.data();
    canvasConnections << QObject::connect(c, &ImageCanvas::changed, q, [this] { canvasChanged(); })
                      << QObject::connect(c, &ImageCanvas::sizeChanged, q, [this] {
                             placed = false;
                             edgesDirty = true;
                             q->centralize();
                         })
                      << QObject::connect(c, &ImageCanvas::selectionChanged, q, [this] { selectionChanged(); })
                      << QObject::connect(c, &ImageCanvas::scaleChanged, q, [this](double s) { scaleChanged(s); });
}

void ImageRendererPrivate::canvasChanged()
{
    const QRect area = canvas ? canvas->changedArea() : QRect();
    if (area.isNull() || showOriginal || shown.size() != canvas->size())
        shownDirty = true;
    else if (!shownDirty)
        staleArea |= area & QRect(QPoint(), canvas->size());
    q->update();
}

void ImageRendererPrivate::selectionChanged()
{
    edgesDirty = true;
    if (canvas && canvas->hasSelection())
        ants.start();
    else
        ants.stop();
    q->update();
}

// A zoom set from outside (the editor's buttons) keeps the middle of the view in place.
void ImageRendererPrivate::fitWholeZoom()
{
    if (userZoomed || !canvas || canvas->size().isEmpty() || viewSize.isEmpty())
        return;
    const QSize size = canvas->size();
    const int whole = qBound(1, qMin(viewSize.width() / size.width(), viewSize.height() / size.height()), 8);
    zooming = true;
    canvas->setScale(whole);
    zooming = false;
    lastScale = scale();
}

void ImageRendererPrivate::scaleChanged(double present)
{
    if (zooming)
        return;
    userZoomed = true;
    const QPointF middle(viewSize.width() / 2.0, viewSize.height() / 2.0);
    offset = middle - (middle - offset) / lastScale * present;
    lastScale = present;
    q->update();
}

void ImageRendererPrivate::tick()
{
    antsPhase = (antsPhase + 1) % 8;
    q->update();
}

ImageRenderer::ImageRenderer(QObject *parent)
    : QObject(parent)
    , d(new ImageRendererPrivate(this))
{
    connect(&d->ants, &QTimer::timeout, this, [this] { d->tick(); });
}

ImageRenderer::~ImageRenderer() = default;

void ImageRenderer::setCanvas(ImageCanvas *canvas)
{
    if (canvas == d->canvas)
        return;
    d->canvas = canvas;
    d->connectCanvas();
    d->lastScale = d->scale();
    // A canvas that comes with a zoom of its own keeps it.
    d->userZoomed = canvas && canvas->scale() != 1.0;
    d->placed = false;
    d->shownDirty = true;
    d->selectionChanged();
    centralize();
}

ImageCanvas *ImageRenderer::canvas() const
{
    return d->canvas;
}

void ImageRenderer::setTool(ImageTool *tool)
{
    if (tool == d->tool)
        return;
    QObject::disconnect(d->toolConnection);
    d->tool = tool;
    d->panning = false;
    if (tool)
        d->toolConnection = connect(tool, &ImageTool::updateRequested, this, [this] { update(); });
    update();
}

ImageTool *ImageRenderer::tool() const
{
    return d->tool;
}

QPointF ImageRenderer::offset() const
{
    return d->offset;
}

void ImageRenderer::setOffset(const QPointF &offset)
{
    d->placed = true;
    if (offset == d->offset)
        return;
    d->offset = offset;
    update();
}

QPoint ImageRenderer::pixelAt(const QPoint &viewPoint) const
{
    const double scale = d->scale();
    return QPoint(qFloor((viewPoint.x() - d->offset.x()) / scale), qFloor((viewPoint.y() - d->offset.y()) / scale));
}

QPointF ImageRenderer::viewPoint(const QPoint &pixel) const
{
    return d->offset + QPointF(pixel) * d->scale();
}

void ImageRenderer::setShowOriginal(bool original)
{
    if (original == d->showOriginal)
        return;
    d->showOriginal = original;
    d->shownDirty = true;
    update();
}

float ImageRenderer::zoomFactor() const
{
    return float(d->scale());
}

void ImageRenderer::addZoom()
{
    d->zoomAbout(d->nextScale(true), QPointF(d->viewSize.width() / 2.0, d->viewSize.height() / 2.0));
}

void ImageRenderer::subZoom()
{
    d->zoomAbout(d->nextScale(false), QPointF(d->viewSize.width() / 2.0, d->viewSize.height() / 2.0));
}

void ImageRenderer::zoomFit()
{
    if (!d->canvas || d->canvas->size().isEmpty() || d->viewSize.isEmpty())
        return;
    const QSize size = d->canvas->size();
    const double fit = qMin(double(d->viewSize.width()) / size.width(), double(d->viewSize.height()) / size.height());
    d->userZoomed = true;
    d->zooming = true;
    d->canvas->setScale(fit);
    d->zooming = false;
    d->lastScale = d->scale();
    centralize();
}

void ImageRenderer::zoomActual()
{
    if (!d->canvas)
        return;
    d->userZoomed = true;
    d->zooming = true;
    d->canvas->setScale(1.0);
    d->zooming = false;
    d->lastScale = d->scale();
    centralize();
}

void ImageRenderer::centralize()
{
    d->fitWholeZoom();
    const QSizeF picture = d->canvas ? QSizeF(d->canvas->size()) * d->scale() : QSizeF();
    // Whole view pixels, so that every picture pixel covers the same number of them.
    d->offset = QPointF(qFloor((d->viewSize.width() - picture.width()) / 2),
                        qFloor((d->viewSize.height() - picture.height()) / 2));
    d->placed = !d->viewSize.isEmpty();
    update();
}

void ImageRenderer::setVisibility(bool, bool, bool, bool, bool, bool, bool)
{
    // A picture has no crosses, boxes, rulers or guides: the workspace's switches don't
    // concern this view.
}

void ImageRenderer::keyPressed(int key, Qt::KeyboardModifiers)
{
    if (d->tool && d->tool->keyPress(key))
        update();
}

void ImageRenderer::keyReleased(int key, Qt::KeyboardModifiers)
{
    if (d->tool)
        d->tool->keyRelease(key);
}

void ImageRenderer::mousePressed(QPoint point, Qt::MouseButton button, Qt::KeyboardModifiers modifiers)
{
    setFocus();
    d->mouse = point;
    d->mouseKnown = true;
    if (d->panning)
        return;
    if (button == Qt::MiddleButton || (button == Qt::LeftButton && d->tool && d->tool->dragsView())) {
        d->panning = true;
        d->panButton = button;
        d->panFrom = point;
        return;
    }
    if (d->tool && d->canvas)
        d->tool->mousePress(pixelAt(point), button, modifiers);
    update();
}

void ImageRenderer::mouseReleased(QPoint point, Qt::MouseButton button, Qt::KeyboardModifiers modifiers)
{
    d->mouse = point;
    if (d->panning) {
        if (button == d->panButton)
            d->panning = false;
        return;
    }
    if (d->tool && d->canvas)
        d->tool->mouseRelease(pixelAt(point), button, modifiers);
    update();
}

void ImageRenderer::mouseMoved(QPoint point, Qt::KeyboardModifiers modifiers)
{
    d->mouse = point;
    d->mouseKnown = true;
    if (d->panning) {
        d->offset += point - d->panFrom;
        d->panFrom = point;
        d->placed = true;
        update();
        return;
    }
    const QPoint pixel = pixelAt(point);
    if (pixel != d->lastPixel) {
        d->lastPixel = pixel;
        emit cursorChanged(pixel);
    }
    if (d->tool && d->canvas)
        d->tool->mouseMove(pixel, modifiers);
    update();
}

void ImageRenderer::mouseWheel(int delta)
{
    if (delta == 0 || !d->canvas)
        return;
    const QPointF anchor = d->mouseKnown ? QPointF(d->mouse) : QPointF(d->viewSize.width() / 2.0, d->viewSize.height() / 2.0);
    d->zoomAbout(d->nextScale(delta > 0), anchor);
}

void ImageRenderer::sizeChanged(int width, int height)
{
    const QSize old = d->viewSize;
    d->viewSize = QSize(width, height);
    if (!d->placed) {
        centralize();
        return;
    }
    // The middle of the picture stays in the middle of the view.
    d->offset += QPointF(width - old.width(), height - old.height()) / 2;
    update();
}

void ImageRenderer::render(QPainter &painter)
{
    painter.fillRect(QRect(QPoint(), d->viewSize), clearColor());
    if (!d->canvas || d->canvas->size().isEmpty() || d->canvas->layers()->count() == 0)
        return;
    const double scale = d->scale();
    const QRectF picture(d->offset, QSizeF(d->canvas->size()) * scale);
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setBrushOrigin(d->offset);
    painter.fillRect(picture, checkerBrush());
    painter.drawImage(picture, d->shownPicture());
    if (!d->showOriginal) {
        for (const SelectionEdge &edge : d->outline())
            paintEdge(painter, edge, d->offset, scale, d->antsPhase);
        if (d->tool && d->mouseKnown && !d->panning) {
            const QPointF corner = viewPoint(pixelAt(d->mouse));
            d->tool->paintOverlay(painter, qRound(corner.x()), qRound(corner.y()), scale);
        }
    }
    painter.restore();
}

QColor ImageRenderer::clearColor() const
{
    return QColor(72, 72, 78);
}

} // namespace Ovra
