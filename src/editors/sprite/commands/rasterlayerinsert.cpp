#include "editors/sprite/commands/rasterlayerinsert.h"

#include "editors/sprite/imagecanvas.h"
#include "editors/sprite/imagelayer.h"
#include "editors/sprite/imagelayers.h"

#include <QCoreApplication>

namespace Ovra {

RasterLayerInsert::RasterLayerInsert(ImageCanvas *canvas, ImageLayer *layer, int place, bool alreadyDone,
                                     QUndoCommand *parent)
    : ImageUndoCommand(canvas, alreadyDone, parent)
    , m_layer(layer)
    , m_place(place)
    , m_owned(!alreadyDone)
{
    setText(QCoreApplication::translate("Ovra::ImageCanvas", "Add layer"));
}

RasterLayerInsert::~RasterLayerInsert()
{
    if (m_owned)
        delete m_layer;
}

void RasterLayerInsert::doRedo()
{
    canvas()->layers()->insertLayer(m_place, m_layer);
    m_owned = false;
}

void RasterLayerInsert::doUndo()
{
    canvas()->layers()->takeLayer(m_place);
    m_owned = true;
}

} // namespace Ovra
