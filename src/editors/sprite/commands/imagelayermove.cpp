#include "editors/sprite/commands/imagelayermove.h"

#include "editors/sprite/imagecanvas.h"
#include "editors/sprite/imagelayers.h"

#include <QCoreApplication>

namespace Ovra {

ImageLayerMove::ImageLayerMove(ImageCanvas *canvas, int from, int to, bool alreadyDone, QUndoCommand *parent)
    : ImageUndoCommand(canvas, alreadyDone, parent)
    , m_from(from)
    , m_to(to)
{
    setText(QCoreApplication::translate("Ovra::ImageCanvas", "Move layer"));
}

ImageLayerMove::~ImageLayerMove() = default;

void ImageLayerMove::doRedo()
{
    canvas()->layers()->moveLayer(m_from, m_to);
}

void ImageLayerMove::doUndo()
{
    canvas()->layers()->moveLayer(m_to, m_from);
}

} // namespace Ovra
