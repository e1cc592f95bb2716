#include "editors/sprite/imagecanvas.h"

#include "editors/sprite/commands/imagecanvasformat.h"
#include "editors/sprite/commands/imagecanvassize.h"
#include "editors/sprite/commands/imagelayerblend.h"
#include "editors/sprite/commands/imagelayermove.h"
#include "editors/sprite/commands/imagelayername.h"
#include "editors/sprite/commands/imagelayeropacity.h"
#include "editors/sprite/commands/rasterlayerdel.h"
#include "editors/sprite/commands/rasterlayerinsert.h"
#include "editors/sprite/imagecanvas_p.h"
#include "editors/sprite/indexpainter.h"
#include "editors/sprite/rasterlayer.h"
#include "editors/sprite/rgbapainter.h"

namespace Ovra {

namespace {

// The fewest pixels that the shorter side of the picture keeps on screen, and the largest zoom.
const double leastShownSide = 50.0;
const double largestScale = 32.0;

} // namespace

ImageCanvasPrivate::ImageCanvasPrivate(ImageCanvas *canvas)
    : q(canvas)
    , ownPalette(&ownColors)
    , palette(&ownPalette)
    , layers(new ImageLayers(canvas))
{
}

void ImageCanvasPrivate::storeFormat(int format)
{
    if (format != m_format || !painter) {
        std::unique_ptr<ImagePainter> made;
        if (format == 1)
            made.reset(new RGBAPainter);
        else
            made.reset(new IndexPainter);
        made->setPalette(palette);
        made->setSelection(&selection);
        if (painter) {
            // What the tools set up stays: the picture (painted only if it has the new
            // kind of pixels), the pen and the protection of index 0.
            made->setImage(painter->image());
            made->setSize(painter->size());
            made->setProtectFirst(painter->protectFirst());
        }
        painter = std::move(made);
        emit q->painterChanged();
    }
    if (format == m_format)
        return;
    m_format = format;
    emit q->formatChanged(format);
    emit q->changed();
}

void ImageCanvasPrivate::storeSize(const QSize &size)
{
    if (size == m_size)
        return;
    m_size = size;
    // A mask of the old size would select the wrong pixels.
    if (!selection.isEmpty()) {
        selection.clear();
        emit q->selectionChanged();
    }
    emit q->sizeChanged(size);
    emit q->changed();
}

void ImageCanvasPrivate::insertLayer(int row, ImageLayer *layer)
{
    layers->insertLayer(row, layer);
    undoStack.push(new RasterLayerInsert(q, layer, row, true));
}

ImageCanvas::ImageCanvas(QObject *parent)
    : QObject(parent)
    , d(new ImageCanvasPrivate(this))
{
    d->storeFormat(0);
}

ImageCanvas::~ImageCanvas()
{
    // Commands own the layers they took out; the stack goes before the layers it refers to.
    d->undoStack.clear();
    d->layers.reset();
}

PaletteObject *ImageCanvas::palette() const
{
    return d->palette;
}

void ImageCanvas::setPalette(PaletteObject *palette)
{
    PaletteObject *shown = palette ? palette : &d->ownPalette;
    if (shown == d->palette)
        return;
    d->palette = shown;
    d->painter->setPalette(shown);
    emit changed();
}

ImagePainter *ImageCanvas::painter() const
{
    return d->painter.get();
}

ImageLayers *ImageCanvas::layers() const
{
    return d->layers.get();
}

int ImageCanvas::format() const
{
    return d->format();
}

QSize ImageCanvas::size() const
{
    return d->size();
}

QUndoStack *ImageCanvas::undoStack() const
{
    return &d->undoStack;
}

void ImageCanvas::setImage(const QImage &image)
{
    clear();
    if (image.isNull())
        return;
    const bool indexed = image.format() == QImage::Format_Indexed8;
    d->storeFormat(indexed ? 0 : 1);
    d->storeSize(image.size());
    auto *layer = new RasterLayer(this, indexed ? image : image.convertToFormat(QImage::Format_ARGB32));
    layer->setName(tr("Layer %1").arg(1));
    d->layers->insertLayer(0, layer);
}

void ImageCanvas::clear()
{
    d->undoStack.clear();
    d->layers->clear();
    clearSelection();
    d->storeSize(QSize());
}

double ImageCanvas::scale() const
{
    return d->scale;
}

void ImageCanvas::setScale(double scale)
{
    const double shorter = qMin(d->size().width(), d->size().height());
    if (shorter > 0 && shorter * scale < leastShownSide)
        scale = leastShownSide / shorter;
    else if (scale > largestScale)
        scale = largestScale;
    if (scale == d->scale)
        return;
    d->scale = scale;
    emit scaleChanged(scale);
}

const QByteArray &ImageCanvas::selection() const
{
    return d->selection;
}

bool ImageCanvas::hasSelection() const
{
    return !d->selection.isEmpty();
}

bool ImageCanvas::setSelection(const QByteArray &mask)
{
    if (!mask.isEmpty() && qint64(mask.size()) != qint64(d->size().width()) * d->size().height())
        return false;
    if (mask == d->selection)
        return true;
    d->selection = mask;
    emit selectionChanged();
    return true;
}

void ImageCanvas::clearSelection()
{
    setSelection(QByteArray());
}

bool ImageCanvas::isSelected(int x, int y) const
{
    if (x < 0 || y < 0 || x >= d->size().width() || y >= d->size().height())
        return false;
    return d->selection.isEmpty() || d->selection.at(y * d->size().width() + x) != 0;
}

ImageLayer *ImageCanvas::addLayer(int row)
{
    if (row < 0 || row > d->layers->count() || d->size().isEmpty())
        return nullptr;
    QImage image;
    if (d->format() == 1) {
        image = QImage(d->size(), QImage::Format_ARGB32);
        image.fill(0);
    } else {
        image = QImage(d->size(), QImage::Format_Indexed8);
        QVector<QRgb> table(256);
        for (int i = 0; i < 256; ++i)
            table[i] = d->palette->at(uchar(i)).toQRgb();
        image.setColorTable(table);
        image.fill(0);
    }
    if (image.isNull())
        return nullptr;
    auto *layer = new RasterLayer(this, image);
    layer->setName(tr("Layer %1").arg(d->layers->count() + 1));
    d->insertLayer(row, layer);
    return layer;
}

ImageLayer *ImageCanvas::duplicateLayer(int row)
{
    const ImageLayer *original = d->layers->at(row);
    if (!original)
        return nullptr;
    ImageLayer *copy = original->clone();
    copy->setCanvas(this);
    copy->setName(tr("%1 copy").arg(original->name()));
    d->insertLayer(row, copy);
    return copy;
}

bool ImageCanvas::deleteLayer(int row)
{
    ImageLayer *layer = d->layers->takeLayer(row);
    if (!layer)
        return false;
    d->undoStack.push(new RasterLayerDel(this, layer, row, true));
    return true;
}

bool ImageCanvas::moveLayer(int from, int to)
{
    if (!d->layers->moveLayer(from, to))
        return false;
    d->undoStack.push(new ImageLayerMove(this, from, to, true));
    return true;
}

bool ImageCanvas::renameLayer(int row, const QString &name)
{
    ImageLayer *layer = d->layers->at(row);
    if (!layer)
        return false;
    if (layer->name() == name)
        return true;
    const QString old = layer->name();
    layer->setName(name);
    d->undoStack.push(new ImageLayerName(this, layer, old, true));
    return true;
}

bool ImageCanvas::setLayerOpacity(int row, double opacity)
{
    ImageLayer *layer = d->layers->at(row);
    if (!layer)
        return false;
    const double old = layer->opacity();
    layer->setOpacity(opacity);
    if (layer->opacity() != old)
        d->undoStack.push(new ImageLayerOpacity(this, layer, old, true));
    return true;
}

bool ImageCanvas::setLayerBlendMode(int row, QPainter::CompositionMode mode)
{
    ImageLayer *layer = d->layers->at(row);
    if (!layer)
        return false;
    const QPainter::CompositionMode old = layer->blendMode();
    if (old == mode)
        return true;
    layer->setBlendMode(mode);
    d->undoStack.push(new ImageLayerBlend(this, layer, old, true));
    return true;
}

void ImageCanvas::setFormat(int format, bool undoable)
{
    if (undoable) {
        d->undoStack.beginMacro(QStringLiteral("setFormat"));
        d->undoStack.push(new ImageCanvasFormat(this, d->format(), true));
    }
    d->storeFormat(format);
    if (undoable) {
        for (ImageLayer *layer : d->layers->layers())
            layer->setFormat(format, d->palette);
        d->undoStack.endMacro();
    }
}

void ImageCanvas::remap(const RGBA (&palette)[256])
{
    if (d->format() == 1 || d->layers->count() == 0)
        return;
    d->undoStack.beginMacro(tr("Remap"));
    for (ImageLayer *layer : d->layers->layers())
        layer->remap(palette);
    d->undoStack.endMacro();
}

void ImageCanvas::setSize(const QSize &size, const QPoint &position, uint fill)
{
    if (size == d->size() || size.isEmpty())
        return;
    d->undoStack.beginMacro(QStringLiteral("setSize"));
    for (ImageLayer *layer : d->layers->layers())
        layer->resize(size, position, fill);
    d->undoStack.push(new ImageCanvasSize(this, d->size(), true));
    d->storeSize(size);
    d->undoStack.endMacro();
}

void ImageCanvas::resize(const QSize &size, ImageResizeFilter filter)
{
    // A filter that doesn't exist would scale no layer and leave them off the canvas size.
    if (size == d->size() || size.isEmpty() || !imageResizeFilterName(filter))
        return;
    d->undoStack.beginMacro(QStringLiteral("resize"));
    for (ImageLayer *layer : d->layers->layers())
        layer->scale(size, filter);
    d->undoStack.push(new ImageCanvasSize(this, d->size(), true));
    d->storeSize(size);
    d->undoStack.endMacro();
}

bool ImageCanvas::crop(QPoint *offset)
{
    int left = 999999;
    int top = 999999;
    int right = -999999;
    int bottom = -999999;
    for (const ImageLayer *layer : d->layers->layers()) {
        const QRect content = layer->contentRect();
        if (!content.isValid())
            continue;
        left = qMin(left, content.left());
        top = qMin(top, content.top());
        right = qMax(right, content.right());
        bottom = qMax(bottom, content.bottom());
    }
    const QRect box(QPoint(left, top), QPoint(right, bottom));
    if (!box.isValid() || box == QRect(QPoint(0, 0), d->size()))
        return false;
    d->undoStack.beginMacro(QStringLiteral("crop"));
    for (ImageLayer *layer : d->layers->layers())
        layer->resize(box.size(), -box.topLeft(), 0);
    d->undoStack.push(new ImageCanvasSize(this, d->size(), true));
    d->storeSize(box.size());
    d->undoStack.endMacro();
    if (offset)
        *offset = box.topLeft();
    return true;
}

void ImageCanvas::flip(bool horizontal, bool vertical)
{
    if ((!horizontal && !vertical) || d->layers->count() == 0)
        return;
    d->undoStack.beginMacro(QStringLiteral("flip"));
    for (ImageLayer *layer : d->layers->layers())
        layer->flip(horizontal, vertical);
    d->undoStack.endMacro();
}

void ImageCanvas::rotate(float angle, uint fill)
{
    if (d->layers->count() == 0)
        return;
    d->undoStack.beginMacro(QStringLiteral("rotate"));
    QSize largest;
    for (ImageLayer *layer : d->layers->layers()) {
        layer->rotate(angle, fill);
        if (const auto *raster = dynamic_cast<const RasterLayer *>(layer))
            largest = largest.expandedTo(raster->image().size());
    }
    if (largest.isValid() && largest != d->size()) {
        d->undoStack.push(new ImageCanvasSize(this, d->size(), true));
        d->storeSize(largest);
    }
    d->undoStack.endMacro();
}

bool ImageCanvas::mergeVisible()
{
    return d->merge(false, QStringLiteral("mergeVisible"));
}

bool ImageCanvas::mergeAll()
{
    return d->merge(true, QStringLiteral("mergeAll"));
}

bool ImageCanvasPrivate::merge(bool all, const QString &text)
{
    int top = -1;
    for (int row = 0; row < layers->count() && top < 0; ++row) {
        if (layers->at(row)->isVisible())
            top = row;
    }
    if (top < 0)
        return false;
    const QString name = layers->at(top)->name();
    const QImage image = q->composed();
    undoStack.beginMacro(text);
    for (int row = layers->count() - 1; row >= 0; --row) {
        if (!all && !layers->at(row)->isVisible())
            continue;
        ImageLayer *layer = layers->takeLayer(row);
        undoStack.push(new RasterLayerDel(q, layer, row, true));
    }
    // Only hidden layers stood above the top visible one, and they stay where they were.
    const int place = all ? 0 : top;
    auto *merged = new RasterLayer(q, image);
    merged->setName(name);
    insertLayer(place, merged);
    undoStack.endMacro();
    return true;
}

QImage ImageCanvas::composed() const
{
    return composed(QRect(QPoint(), d->size()));
}

QImage ImageCanvas::composed(const QRect &area) const
{
    const QRect whole(QPoint(), d->size());
    const QRect part = whole.isEmpty() ? QRect() : area & whole;
    if (part.isEmpty())
        return QImage();
    return d->format() == 1 ? d->composedRgba(part) : d->composedIndexed(part);
}

void ImageCanvas::layerChanged(ImageLayer *layer, const QRect &area)
{
    d->layers->layerChanged(layer);
    d->changedArea = area;
    emit changed();
    d->changedArea = QRect();
}

QRect ImageCanvas::changedArea() const
{
    return d->changedArea;
}

} // namespace Ovra
