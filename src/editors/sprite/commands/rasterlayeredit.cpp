#include "editors/sprite/commands/rasterlayeredit.h"

#include "editors/sprite/rasterlayer.h"

#include <QCoreApplication>

namespace Ovra {

RasterLayerEdit::RasterLayerEdit(RasterLayer *layer, const QImage &other, bool alreadyDone, QUndoCommand *parent)
    : ImageUndoCommand(layer->canvas(), alreadyDone, parent)
    , m_layer(layer)
    , m_image(other)
{
    setText(QCoreApplication::translate("Ovra::ImageCanvas", "Edit layer"));
}

RasterLayerEdit::~RasterLayerEdit() = default;

void RasterLayerEdit::doRedo()
{
    m_layer->swapImage(m_image);
}

void RasterLayerEdit::doUndo()
{
    m_layer->swapImage(m_image);
}

} // namespace Ovra
