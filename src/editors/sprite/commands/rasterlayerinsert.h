#pragma once

#include "editors/sprite/commands/imageundocommand.h"

namespace Ovra {

class ImageLayer;

// A layer coming into the stack at a place. While the insertion is undone the command owns
// the layer, and deletes it if it goes away in that state.
class OVRA_EXPORT RasterLayerInsert : public ImageUndoCommand
{
public:
    RasterLayerInsert(ImageCanvas *canvas, ImageLayer *layer, int place, bool alreadyDone,
                      QUndoCommand *parent = nullptr);
    ~RasterLayerInsert() override;

protected:
    void doRedo() override;
    void doUndo() override;

private:
    ImageLayer *m_layer;
    int m_place;
    bool m_owned;
};

} // namespace Ovra
