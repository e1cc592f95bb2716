#pragma once
#include "foundation/global.h"
#include <QObject>
#include <QPoint>

class QPainter;
class QWidget;

namespace Ovra {

class ImageCanvas;

// One tool of the sprite painter: it turns the mouse and the keys on the canvas into
// painter calls and undoable edits. Points are in picture pixels; the renderer converts.
class OVRA_EXPORT ImageTool : public QObject
{
    Q_OBJECT
public:
    explicit ImageTool(ImageCanvas *canvas, QObject *parent = nullptr);
    ~ImageTool() override;

    ImageCanvas *canvas() const { return m_canvas; }
    bool isActive() const { return m_active; }
    // The label of the tool ("Pen") and its action's name ("spr_tool_pen").
    virtual QString label() const = 0;
    virtual const char *actionName() const = 0;

    // The tool is taken up, put down, or the canvas changed under it.
    virtual void activate();
    virtual void deactivate();
    virtual void canvasChanged();
    // True when the tool used the key.
    virtual bool keyPress(int key);
    virtual void mousePress(const QPoint &pixel, Qt::MouseButton button, Qt::KeyboardModifiers modifiers);
    virtual void mouseRelease(const QPoint &pixel, Qt::MouseButton button, Qt::KeyboardModifiers modifiers);
    virtual void mouseMove(const QPoint &pixel, Qt::KeyboardModifiers modifiers);
    // Draws the tool's marks over the view: the pixel under the mouse is (x, y) on the
    // view's painter, a picture pixel `scale` view pixels wide.
    virtual void paintOverlay(QPainter &painter, int x, int y, double scale);
    virtual void keyRelease(int key);
    // The tool's own controls (the pen size, "Contiguous") for the editor's tool bar, or
    // null; the caller owns the widget.
    virtual QWidget *createToolBar(QWidget *parent);
    // Lays down what the tool holds (a moved selection).
    virtual void apply();
    // True for a tool whose left-button drag moves the view rather than the picture: the
    // view then pans by the mouse's own motion in view pixels.
    virtual bool dragsView() const;

signals:
    // The view must be drawn again (the overlay or the picture changed).
    void updateRequested();

protected:
    Qt::MouseButton button() const { return m_button; }
    Qt::KeyboardModifiers modifiers() const { return m_modifiers; }
    QPoint position() const { return m_position; }
    void setGesture(Qt::MouseButton button, Qt::KeyboardModifiers modifiers, const QPoint &position);

private:
    ImageCanvas *m_canvas;
    bool m_active = false;
    Qt::MouseButton m_button = Qt::NoButton;
    Qt::KeyboardModifiers m_modifiers;
    QPoint m_position;
};

// The tools by their place in the editor's tool bar, made for a canvas; the caller owns
// them. CanvasMoveTool, SelMoveTool, RectSelTool, PenSelTool, MagicWandTool, PickerTool,
// PenTool, EraserTool, ReplaceTool, FloodFillTool.
OVRA_EXPORT QList<ImageTool *> createImageTools(ImageCanvas *canvas, QObject *parent = nullptr);

} // namespace Ovra
