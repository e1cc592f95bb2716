#include "editors/sprite/imagetool.h"

#include "editors/sprite/imagetools.h"

namespace Ovra {

ImageTool::ImageTool(ImageCanvas *canvas, QObject *parent)
    : QObject(parent)
    , m_canvas(canvas)
{
}

ImageTool::~ImageTool() = default;

void ImageTool::activate()
{
    m_active = true;
}

void ImageTool::deactivate()
{
    // Whatever the tool still holds goes down before another tool takes over the picture.
    apply();
    m_active = false;
    m_button = Qt::NoButton;
}

void ImageTool::canvasChanged()
{
    m_button = Qt::NoButton;
}

bool ImageTool::keyPress(int)
{
    return false;
}

void ImageTool::mousePress(const QPoint &pixel, Qt::MouseButton button, Qt::KeyboardModifiers modifiers)
{
    setGesture(button, modifiers, pixel);
}

void ImageTool::mouseRelease(const QPoint &pixel, Qt::MouseButton button, Qt::KeyboardModifiers modifiers)
{
    if (button == m_button)
        m_button = Qt::NoButton;
    m_modifiers = modifiers;
    m_position = pixel;
}

void ImageTool::mouseMove(const QPoint &pixel, Qt::KeyboardModifiers)
{
    // The modifiers of a gesture are those of its press; a key let go on the way changes
    // nothing of what the gesture does.
    m_position = pixel;
}

void ImageTool::paintOverlay(QPainter &, int, int, double) {}

void ImageTool::keyRelease(int) {}

QWidget *ImageTool::createToolBar(QWidget *)
{
    return nullptr;
}

void ImageTool::apply() {}

bool ImageTool::dragsView() const
{
    return false;
}

void ImageTool::setGesture(Qt::MouseButton button, Qt::KeyboardModifiers modifiers, const QPoint &position)
{
    m_button = button;
    m_modifiers = modifiers;
    m_position = position;
}

QList<ImageTool *> createImageTools(ImageCanvas *canvas, QObject *parent)
{
    return {new CanvasMoveTool(canvas, parent), new SelMoveTool(canvas, parent),  new RectSelTool(canvas, parent),
            new PenSelTool(canvas, parent),     new MagicWandTool(canvas, parent), new PickerTool(canvas, parent),
            new PenTool(canvas, parent),        new EraserTool(canvas, parent),   new ReplaceTool(canvas, parent),
            new FloodFillTool(canvas, parent)};
}

} // namespace Ovra
