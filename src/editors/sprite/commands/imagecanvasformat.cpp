#include "editors/sprite/commands/imagecanvasformat.h"

#include "editors/sprite/imagecanvas_p.h"

#include <QCoreApplication>

namespace Ovra {

ImageCanvasFormat::ImageCanvasFormat(ImageCanvas *canvas, int old, bool alreadyDone, QUndoCommand *parent)
    : ImageUndoCommand(canvas, alreadyDone, parent)
    , m_format(old)
{
    setText(QCoreApplication::translate("Ovra::ImageCanvas", "Canvas format"));
}

ImageCanvasFormat::~ImageCanvasFormat() = default;

void ImageCanvasFormat::doRedo()
{
    exchange();
}

void ImageCanvasFormat::doUndo()
{
    exchange();
}

void ImageCanvasFormat::exchange()
{
    ImageCanvasPrivate *d = ImageCanvasPrivate::get(canvas());
    const int current = d->format();
    d->storeFormat(m_format);
    m_format = current;
}

} // namespace Ovra
