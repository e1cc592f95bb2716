#pragma once

#include "editors/sprite/commands/imageundocommand.h"

namespace Ovra {

class ImageLayer;

// A layer leaving the stack. While deleted the command owns the layer, so that undo can
// put the very same layer back at its place.
class OVRA_EXPORT RasterLayerDel : public ImageUndoCommand
{
public:
    RasterLayerDel(ImageCanvas *canvas, ImageLayer *layer, int place, bool alreadyDone,
                   QUndoCommand *parent = nullptr);
    ~RasterLayerDel() override;

protected:
    void doRedo() override;
    void doUndo() override;

private:
    ImageLayer *m_layer;
    int m_place;
    bool m_owned;
};

} // namespace Ovra
