#include "editors/sprite/imagelayer.h"

#include "editors/sprite/imagecanvas.h"

#include <QCoreApplication>

namespace Ovra {

struct ImageLayerPrivate
{
    ImageCanvas *canvas = nullptr;
    QString name;
    bool visible = true;
    QPainter::CompositionMode blendMode = QPainter::CompositionMode_SourceOver;
    double opacity = 1.0;
};

namespace {

// Past "Normal", the box lists Qt's modes in their own order, Plus (12) to Exclusion (23).
const int firstModeAfterNormal = 11;

const char *const blendLabels[BlendEntryCount] = {
    QT_TRANSLATE_NOOP("Ovra::ImageLayer", "Normal"),
    QT_TRANSLATE_NOOP("Ovra::ImageLayer", "Add"),
    QT_TRANSLATE_NOOP("Ovra::ImageLayer", "Multiply"),
    QT_TRANSLATE_NOOP("Ovra::ImageLayer", "Screen"),
    QT_TRANSLATE_NOOP("Ovra::ImageLayer", "Overlay"),
    QT_TRANSLATE_NOOP("Ovra::ImageLayer", "Darken"),
    QT_TRANSLATE_NOOP("Ovra::ImageLayer", "Lighten"),
    QT_TRANSLATE_NOOP("Ovra::ImageLayer", "Color Dodge"),
    QT_TRANSLATE_NOOP("Ovra::ImageLayer", "Color Burn"),
    QT_TRANSLATE_NOOP("Ovra::ImageLayer", "Hard Light"),
    QT_TRANSLATE_NOOP("Ovra::ImageLayer", "Soft Light"),
    QT_TRANSLATE_NOOP("Ovra::ImageLayer", "Difference"),
    QT_TRANSLATE_NOOP("Ovra::ImageLayer", "Exclusion"),
};

} // namespace

QPainter::CompositionMode blendModeOfEntry(int entry)
{
    if (entry <= 0 || entry >= BlendEntryCount)
        return QPainter::CompositionMode_SourceOver;
    return QPainter::CompositionMode(entry + firstModeAfterNormal);
}

int blendEntryOfMode(QPainter::CompositionMode mode)
{
    if (mode == QPainter::CompositionMode_SourceOver)
        return 0;
    const int entry = int(mode) - firstModeAfterNormal;
    return entry > 0 && entry < BlendEntryCount ? entry : -1;
}

QString blendEntryLabel(int entry)
{
    if (entry < 0 || entry >= BlendEntryCount)
        return QString();
    return QCoreApplication::translate("Ovra::ImageLayer", blendLabels[entry]);
}

ImageLayer::ImageLayer(ImageCanvas *canvas)
    : d(new ImageLayerPrivate)
{
    d->canvas = canvas;
}

ImageLayer::~ImageLayer() = default;

void ImageLayer::paint(QPainter &painter)
{
    painter.setCompositionMode(d->blendMode);
    painter.setOpacity(d->opacity);
}

ImageCanvas *ImageLayer::canvas() const
{
    return d->canvas;
}

void ImageLayer::setCanvas(ImageCanvas *canvas)
{
    d->canvas = canvas;
}

QString ImageLayer::name() const
{
    return d->name;
}

void ImageLayer::setName(const QString &name)
{
    if (d->name == name)
        return;
    d->name = name;
    notifyChanged();
}

bool ImageLayer::isVisible() const
{
    return d->visible;
}

void ImageLayer::setVisible(bool visible)
{
    if (d->visible == visible)
        return;
    d->visible = visible;
    notifyChanged();
}

QPainter::CompositionMode ImageLayer::blendMode() const
{
    return d->blendMode;
}

void ImageLayer::setBlendMode(QPainter::CompositionMode mode)
{
    if (d->blendMode == mode)
        return;
    d->blendMode = mode;
    notifyChanged();
}

double ImageLayer::opacity() const
{
    return d->opacity;
}

void ImageLayer::setOpacity(double opacity)
{
    opacity = qBound(0.0, opacity, 1.0);
    if (d->opacity == opacity)
        return;
    d->opacity = opacity;
    notifyChanged();
}

void ImageLayer::copyPropertiesFrom(const ImageLayer &other)
{
    d->name = other.d->name;
    d->visible = other.d->visible;
    d->blendMode = other.d->blendMode;
    d->opacity = other.d->opacity;
}

void ImageLayer::notifyChanged(const QRect &area)
{
    if (d->canvas)
        d->canvas->layerChanged(this, area);
}

} // namespace Ovra
