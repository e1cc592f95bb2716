#pragma once

#include "editors/sprite/commands/imageundocommand.h"

namespace Ovra {

// A new format of the canvas, 0 indexed or 1 true colour (the layers convert by commands
// of their own); keeps the other format and exchanges it on undo and redo.
class OVRA_EXPORT ImageCanvasFormat : public ImageUndoCommand
{
public:
    ImageCanvasFormat(ImageCanvas *canvas, int old, bool alreadyDone, QUndoCommand *parent = nullptr);
    ~ImageCanvasFormat() override;

protected:
    void doRedo() override;
    void doUndo() override;

private:
    void exchange();

    int m_format;
};

} // namespace Ovra
