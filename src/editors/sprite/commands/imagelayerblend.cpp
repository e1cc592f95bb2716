#include "editors/sprite/commands/imagelayerblend.h"

#include "editors/sprite/imagelayer.h"

#include <QCoreApplication>

namespace Ovra {

ImageLayerBlend::ImageLayerBlend(ImageCanvas *canvas, ImageLayer *layer, QPainter::CompositionMode old, bool alreadyDone, QUndoCommand *parent)
    : ImageUndoCommand(canvas, alreadyDone, parent)
    , m_layer(layer)
    , m_mode(old)
{
    setText(QCoreApplication::translate("Ovra::ImageCanvas", "Layer blending"));
}

ImageLayerBlend::~ImageLayerBlend() = default;

void ImageLayerBlend::doRedo()
{
    exchange();
}

void ImageLayerBlend::doUndo()
{
    exchange();
}

void ImageLayerBlend::exchange()
{
    const QPainter::CompositionMode current = m_layer->blendMode();
    m_layer->setBlendMode(m_mode);
    m_mode = current;
}

} // namespace Ovra
