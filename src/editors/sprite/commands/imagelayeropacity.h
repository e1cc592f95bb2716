#pragma once

#include "editors/sprite/commands/imageundocommand.h"


namespace Ovra {

class ImageLayer;

// A layer's new opacity; keeps the other value and exchanges it on undo and redo.
class OVRA_EXPORT ImageLayerOpacity : public ImageUndoCommand
{
public:
    ImageLayerOpacity(ImageCanvas *canvas, ImageLayer *layer, double old, bool alreadyDone, QUndoCommand *parent = nullptr);
    ~ImageLayerOpacity() override;

protected:
    void doRedo() override;
    void doUndo() override;

private:
    void exchange();

    ImageLayer *m_layer;
    double m_opacity;
};

} // namespace Ovra
