#pragma once

#include "foundation/global.h"

#include <QUndoCommand>

namespace Ovra {

class ImageCanvas;

// The base of every edit of an image canvas. Most edits are made before their command is
// pushed (a stroke is painted while the mouse moves); such a command is made with
// `alreadyDone`, and its first redo, the one QUndoStack::push calls, only clears that flag.
class OVRA_EXPORT ImageUndoCommand : public QUndoCommand
{
public:
    ImageUndoCommand(ImageCanvas *canvas, bool alreadyDone, QUndoCommand *parent = nullptr);
    ~ImageUndoCommand() override;

    ImageCanvas *canvas() const { return m_canvas; }

    void redo() final;
    void undo() final;

protected:
    virtual void doRedo() = 0;
    virtual void doUndo() = 0;

private:
    Q_DISABLE_COPY(ImageUndoCommand)
    ImageCanvas *m_canvas;
    bool m_skipRedo;
};

} // namespace Ovra
