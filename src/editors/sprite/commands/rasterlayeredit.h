#pragma once

#include "editors/sprite/commands/imageundocommand.h"

#include <QImage>

namespace Ovra {

class RasterLayer;

// A change of a layer's pixels (a stroke, a resize, a scaling): keeps the other picture and
// exchanges it with the layer's on each undo and redo.
class OVRA_EXPORT RasterLayerEdit : public ImageUndoCommand
{
public:
    RasterLayerEdit(RasterLayer *layer, const QImage &other, bool alreadyDone, QUndoCommand *parent = nullptr);
    ~RasterLayerEdit() override;

    RasterLayer *layer() const { return m_layer; }

protected:
    void doRedo() override;
    void doUndo() override;

private:
    RasterLayer *m_layer;
    QImage m_image;
};

} // namespace Ovra
