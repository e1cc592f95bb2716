#pragma once

#include "editors/sprite/commands/imageundocommand.h"

#include <QPainter>

namespace Ovra {

class ImageLayer;

// A layer's new blend mode; keeps the other mode and exchanges it on undo and redo.
class OVRA_EXPORT ImageLayerBlend : public ImageUndoCommand
{
public:
    ImageLayerBlend(ImageCanvas *canvas, ImageLayer *layer, QPainter::CompositionMode old, bool alreadyDone, QUndoCommand *parent = nullptr);
    ~ImageLayerBlend() override;

protected:
    void doRedo() override;
    void doUndo() override;

private:
    void exchange();

    ImageLayer *m_layer;
    QPainter::CompositionMode m_mode;
};

} // namespace Ovra
