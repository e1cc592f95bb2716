#pragma once

#include "editors/sprite/commands/imageundocommand.h"

#include <QString>

namespace Ovra {

class ImageLayer;

// A layer's new name; keeps the other name and exchanges it on undo and redo.
class OVRA_EXPORT ImageLayerName : public ImageUndoCommand
{
public:
    ImageLayerName(ImageCanvas *canvas, ImageLayer *layer, const QString &old, bool alreadyDone, QUndoCommand *parent = nullptr);
    ~ImageLayerName() override;

protected:
    void doRedo() override;
    void doUndo() override;

private:
    void exchange();

    ImageLayer *m_layer;
    QString m_name;
};

} // namespace Ovra
