#include "editors/sprite/commands/imagelayername.h"

#include "editors/sprite/imagelayer.h"

#include <QCoreApplication>

namespace Ovra {

ImageLayerName::ImageLayerName(ImageCanvas *canvas, ImageLayer *layer, const QString &old, bool alreadyDone, QUndoCommand *parent)
    : ImageUndoCommand(canvas, alreadyDone, parent)
    , m_layer(layer)
    , m_name(old)
{
    setText(QCoreApplication::translate("Ovra::ImageCanvas", "Rename layer"));
}

ImageLayerName::~ImageLayerName() = default;

void ImageLayerName::doRedo()
{
    exchange();
}

void ImageLayerName::doUndo()
{
    exchange();
}

void ImageLayerName::exchange()
{
    const QString current = m_layer->name();
    m_layer->setName(m_name);
    m_name = current;
}

} // namespace Ovra
