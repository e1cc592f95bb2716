#include "editors/sprite/commands/imagelayeropacity.h"

#include "editors/sprite/imagelayer.h"

#include <QCoreApplication>

namespace Ovra {

ImageLayerOpacity::ImageLayerOpacity(ImageCanvas *canvas, ImageLayer *layer, double old, bool alreadyDone, QUndoCommand *parent)
    : ImageUndoCommand(canvas, alreadyDone, parent)
    , m_layer(layer)
    , m_opacity(old)
{
    setText(QCoreApplication::translate("Ovra::ImageCanvas", "Layer opacity"));
}

ImageLayerOpacity::~ImageLayerOpacity() = default;

void ImageLayerOpacity::doRedo()
{
    exchange();
}

void ImageLayerOpacity::doUndo()
{
    exchange();
}

void ImageLayerOpacity::exchange()
{
    const double current = m_layer->opacity();
    m_layer->setOpacity(m_opacity);
    m_opacity = current;
}

} // namespace Ovra
