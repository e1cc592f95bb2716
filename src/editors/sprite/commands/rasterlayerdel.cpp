#include "editors/sprite/commands/rasterlayerdel.h"

#include "editors/sprite/imagecanvas.h"
#include "editors/sprite/imagelayer.h"
#include "editors/sprite/imagelayers.h"

#include <QCoreApplication>

namespace Ovra {

RasterLayerDel::RasterLayerDel(ImageCanvas *canvas, ImageLayer *layer, int place, bool alreadyDone,
                               QUndoCommand *parent)
    : ImageUndoCommand(canvas, alreadyDone, parent)
    , m_layer(layer)
    , m_place(place)
    , m_owned(alreadyDone)
{
    setText(QCoreApplication::translate("Ovra::ImageCanvas", "Delete layer"));
}

RasterLayerDel::~RasterLayerDel()
{
    if (m_owned)
        delete m_layer;
}

void RasterLayerDel::doRedo()
{
    canvas()->layers()->takeLayer(m_place);
    m_owned = true;
}

void RasterLayerDel::doUndo()
{
    canvas()->layers()->insertLayer(m_place, m_layer);
    m_owned = false;
}

} // namespace Ovra
