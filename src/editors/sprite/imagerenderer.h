#pragma once
#include "render/graphicsrendererbase.h"
#include <QObject>
#include <QPointF>
#include <memory>

namespace Ovra {

class ImageCanvas;
class ImageRendererPrivate;
class ImageTool;

// The view of the sprite painter: the composed layers of a canvas at the canvas's zoom,
// the outline of the selection and the active tool's marks, on OpenGL or with the
// painter. The mouse and the keys go to the active tool in picture pixels; the middle
// button and the wheel move and zoom the view. Until the user zooms, a picture comes up at
// the largest whole zoom (up to 8) that fits the view.
class OVRA_EXPORT ImageRenderer : public QObject, public GraphicsRendererBase
{
    Q_OBJECT
public:
    explicit ImageRenderer(QObject *parent = nullptr);
    ~ImageRenderer() override;

    void setCanvas(ImageCanvas *canvas);
    ImageCanvas *canvas() const;
    // The tool that takes the input (not owned); null takes none.
    void setTool(ImageTool *tool);
    ImageTool *tool() const;
    // Where the picture's top-left corner stands on the view.
    QPointF offset() const;
    void setOffset(const QPointF &offset);
    // The picture pixel under a view point, and the view point of a pixel's corner.
    QPoint pixelAt(const QPoint &viewPoint) const;
    QPointF viewPoint(const QPoint &pixel) const;
    // The picture drawn with every layer as it is saved, not as it is shown (the "view
    // original" toggle of the editor).
    void setShowOriginal(bool original);

    // GraphicsRendererBase
    float zoomFactor() const override;
    void addZoom() override;
    void subZoom() override;
    void zoomFit() override;
    void zoomActual() override;
    void centralize() override;
    void setVisibility(bool mainCross, bool secondaryCross, bool extraCross, bool attackBoxes, bool collisionBoxes,
                       bool rulers, bool guides) override;

    // Renderer
    void keyPressed(int key, Qt::KeyboardModifiers modifiers) override;
    void keyReleased(int key, Qt::KeyboardModifiers modifiers) override;
    void mousePressed(QPoint point, Qt::MouseButton button, Qt::KeyboardModifiers modifiers) override;
    void mouseReleased(QPoint point, Qt::MouseButton button, Qt::KeyboardModifiers modifiers) override;
    void mouseMoved(QPoint point, Qt::KeyboardModifiers modifiers) override;
    void mouseWheel(int delta) override;
    void sizeChanged(int width, int height) override;
    void render(QPainter &painter) override;
    QColor clearColor() const override;

signals:
    // The picture pixel under the mouse.
    void cursorChanged(QPoint pixel);

private:
    std::unique_ptr<ImageRendererPrivate> d;
};

} // namespace Ovra
