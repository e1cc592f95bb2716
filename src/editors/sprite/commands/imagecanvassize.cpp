#include "editors/sprite/commands/imagecanvassize.h"

#include "editors/sprite/imagecanvas_p.h"

#include <QCoreApplication>

namespace Ovra {

ImageCanvasSize::ImageCanvasSize(ImageCanvas *canvas, const QSize &old, bool alreadyDone, QUndoCommand *parent)
    : ImageUndoCommand(canvas, alreadyDone, parent)
    , m_size(old)
{
    setText(QCoreApplication::translate("Ovra::ImageCanvas", "Canvas size"));
}

ImageCanvasSize::~ImageCanvasSize() = default;

void ImageCanvasSize::doRedo()
{
    exchange();
}

void ImageCanvasSize::doUndo()
{
    exchange();
}

void ImageCanvasSize::exchange()
{
    ImageCanvasPrivate *d = ImageCanvasPrivate::get(canvas());
    const QSize current = d->size();
    d->storeSize(m_size);
    m_size = current;
}

} // namespace Ovra
