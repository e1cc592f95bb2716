#pragma once

#include "editors/sprite/commands/imageundocommand.h"

#include <QSize>

namespace Ovra {

// A new size of the canvas (the layers change by commands of their own); keeps the other
// size and exchanges it on undo and redo.
class OVRA_EXPORT ImageCanvasSize : public ImageUndoCommand
{
public:
    ImageCanvasSize(ImageCanvas *canvas, const QSize &old, bool alreadyDone, QUndoCommand *parent = nullptr);
    ~ImageCanvasSize() override;

protected:
    void doRedo() override;
    void doUndo() override;

private:
    void exchange();

    QSize m_size;
};

} // namespace Ovra
