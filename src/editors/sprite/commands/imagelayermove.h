#pragma once

#include "editors/sprite/commands/imageundocommand.h"

namespace Ovra {

// A layer moved from one place in the stack to another, as the layer panel's buttons and
// drags do; undo moves it back.
class OVRA_EXPORT ImageLayerMove : public ImageUndoCommand
{
public:
    ImageLayerMove(ImageCanvas *canvas, int from, int to, bool alreadyDone, QUndoCommand *parent = nullptr);
    ~ImageLayerMove() override;

protected:
    void doRedo() override;
    void doUndo() override;

private:
    int m_from;
    int m_to;
};

} // namespace Ovra
