#include "editors/sprite/commands/imageundocommand.h"

namespace Ovra {

ImageUndoCommand::ImageUndoCommand(ImageCanvas *canvas, bool alreadyDone, QUndoCommand *parent)
    : QUndoCommand(parent)
    , m_canvas(canvas)
    , m_skipRedo(alreadyDone)
{
}

ImageUndoCommand::~ImageUndoCommand() = default;

void ImageUndoCommand::redo()
{
    if (m_skipRedo) {
        m_skipRedo = false;
        return;
    }
    doRedo();
}

void ImageUndoCommand::undo()
{
    doUndo();
}

} // namespace Ovra
