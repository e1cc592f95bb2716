#pragma once

#include "editors/sprite/imagetool.h"

#include <QByteArray>
#include <QImage>
#include <QMap>
#include <QPoint>
#include <QRect>

#include <memory>

namespace Ovra {

class LayerStroke;
class PaintStroke;

// Drags the view about; the picture stays as it is.
class OVRA_EXPORT CanvasMoveTool : public ImageTool
{
    Q_OBJECT
public:
    explicit CanvasMoveTool(ImageCanvas *canvas, QObject *parent = nullptr);
    QString label() const override;
    const char *actionName() const override;
    bool dragsView() const override;
};

// Lifts the selected pixels of the current layer and lays them down where the mouse lets
// go, the selection travelling with them. On an indexed layer each moved pixel goes by the
// alpha of its colour: none passes over, full copies, and anything between is mixed half
// and half with the pixel under it and takes the nearest palette entry.
class OVRA_EXPORT SelMoveTool : public ImageTool
{
    Q_OBJECT
public:
    explicit SelMoveTool(ImageCanvas *canvas, QObject *parent = nullptr);
    ~SelMoveTool() override;
    QString label() const override;
    const char *actionName() const override;

    void mousePress(const QPoint &pixel, Qt::MouseButton button, Qt::KeyboardModifiers modifiers) override;
    void mouseRelease(const QPoint &pixel, Qt::MouseButton button, Qt::KeyboardModifiers modifiers) override;
    void mouseMove(const QPoint &pixel, Qt::KeyboardModifiers modifiers) override;
    void canvasChanged() override;
    // Lays a lifted selection down at the place it was dragged to, as one undo step.
    void apply() override;

private:
    void showAt(const QPoint &offset);

    std::unique_ptr<LayerStroke> m_stroke;
    QImage m_lifted;    // the layer without the selected pixels
    QImage m_floating;  // the selected pixels alone, the rest clear
    QByteArray m_mask;  // the selection when it was lifted
    QPoint m_grab;
    QPoint m_offset;
};

// Selects the box between the press and the release, pixels at both corners included.
// The buttons and the modifiers combine it with the selection as the magic wand does.
class OVRA_EXPORT RectSelTool : public ImageTool
{
    Q_OBJECT
public:
    explicit RectSelTool(ImageCanvas *canvas, QObject *parent = nullptr);
    QString label() const override;
    const char *actionName() const override;

    void mousePress(const QPoint &pixel, Qt::MouseButton button, Qt::KeyboardModifiers modifiers) override;
    void mouseRelease(const QPoint &pixel, Qt::MouseButton button, Qt::KeyboardModifiers modifiers) override;
    void mouseMove(const QPoint &pixel, Qt::KeyboardModifiers modifiers) override;
    void paintOverlay(QPainter &painter, int x, int y, double scale) override;
    void canvasChanged() override;

private:
    QRect dragged() const;

    bool m_dragging = false;
    QPoint m_anchor;
};

// The tools that draw with the pen square: its size (1 to 128, shared by all of them
// through the canvas's painter), the "+" and "-" keys, the size slider and the square
// under the mouse. A stroke runs from the press to the release of one button.
class OVRA_EXPORT BasePenTool : public ImageTool
{
    Q_OBJECT
public:
    explicit BasePenTool(ImageCanvas *canvas, QObject *parent = nullptr);
    ~BasePenTool() override;

    int penSize() const;
    void setPenSize(int size);

    bool keyPress(int key) override;
    void mousePress(const QPoint &pixel, Qt::MouseButton button, Qt::KeyboardModifiers modifiers) override;
    void mouseRelease(const QPoint &pixel, Qt::MouseButton button, Qt::KeyboardModifiers modifiers) override;
    void mouseMove(const QPoint &pixel, Qt::KeyboardModifiers modifiers) override;
    void paintOverlay(QPainter &painter, int x, int y, double scale) override;
    QWidget *createToolBar(QWidget *parent) override;
    void deactivate() override;
    void canvasChanged() override;

signals:
    void penSizeChanged(int size);

protected:
    bool isStroking() const { return m_stroking; }
    // False when the press starts no stroke (a button the tool doesn't use, no layer).
    virtual bool startStroke(const QPoint &pixel) = 0;
    // By default a stroke paints on the current layer through paintStroke(), begun by
    // startStroke, and ends as one undo step named after the tool.
    virtual void strokeTo(const QPoint &from, const QPoint &to);
    virtual void finishStroke();
    // The stroke is dropped and what it did is taken back.
    virtual void cancelStroke();
    PaintStroke &paintStroke();

private:
    void cancel();

    bool m_stroking = false;
    QPoint m_last;
    std::unique_ptr<PaintStroke> m_paint;
};

// Draws the selection with the pen: the pixels the stroke covers are combined with the
// selection by the buttons and modifiers of the magic wand.
class OVRA_EXPORT PenSelTool : public BasePenTool
{
    Q_OBJECT
public:
    explicit PenSelTool(ImageCanvas *canvas, QObject *parent = nullptr);
    QString label() const override;
    const char *actionName() const override;
    void paintOverlay(QPainter &painter, int x, int y, double scale) override;

protected:
    bool startStroke(const QPoint &pixel) override;
    void strokeTo(const QPoint &from, const QPoint &to) override;
    void finishStroke() override;
    void cancelStroke() override;

private:
    QImage m_marks; // one byte a pixel: 1 where the stroke went
};

// Picks the colour of the current layer under the mouse: the left button for the
// foreground, the right one for the background.
class OVRA_EXPORT PickerTool : public ImageTool
{
    Q_OBJECT
public:
    explicit PickerTool(ImageCanvas *canvas, QObject *parent = nullptr);
    QString label() const override;
    const char *actionName() const override;
    void mousePress(const QPoint &pixel, Qt::MouseButton button, Qt::KeyboardModifiers modifiers) override;
    // A cross of four bars around the pixel, black over a white shadow.
    void paintOverlay(QPainter &painter, int x, int y, double scale) override;

signals:
    // An index on an indexed canvas, a 32-bit ARGB word on a true-colour one.
    void colorPicked(uint color, Qt::MouseButton button);
};

// Selects the pixels that a fill at the mouse would reach, with the "Contiguous" box.
class OVRA_EXPORT MagicWandTool : public PickerTool
{
    Q_OBJECT
public:
    explicit MagicWandTool(ImageCanvas *canvas, QObject *parent = nullptr);
    QString label() const override;
    const char *actionName() const override;
    void mousePress(const QPoint &pixel, Qt::MouseButton button, Qt::KeyboardModifiers modifiers) override;
    QWidget *createToolBar(QWidget *parent) override;

    bool isContiguous() const { return m_contiguous; }
    void setContiguous(bool contiguous);

signals:
    void contiguousChanged(bool contiguous);

private:
    bool m_contiguous = true;
};

// Paints with the painter's colour.
class OVRA_EXPORT PenTool : public BasePenTool
{
    Q_OBJECT
public:
    explicit PenTool(ImageCanvas *canvas, QObject *parent = nullptr);
    ~PenTool() override;
    QString label() const override;
    const char *actionName() const override;

protected:
    bool startStroke(const QPoint &pixel) override;
};

// Paints index 0 on an indexed layer and clear pixels on a true-colour one.
class OVRA_EXPORT EraserTool : public BasePenTool
{
    Q_OBJECT
public:
    explicit EraserTool(ImageCanvas *canvas, QObject *parent = nullptr);
    ~EraserTool() override;
    QString label() const override;
    const char *actionName() const override;

protected:
    bool startStroke(const QPoint &pixel) override;
};

// Paints through the painter's remap: only the pixels of mapped colours change. With no
// remap set it paints nothing. The key "I" turns the map of an indexed canvas round, so
// that the pen can take back what it did.
class OVRA_EXPORT ReplaceTool : public BasePenTool
{
    Q_OBJECT
public:
    explicit ReplaceTool(ImageCanvas *canvas, QObject *parent = nullptr);
    ~ReplaceTool() override;
    QString label() const override;
    const char *actionName() const override;
    bool keyPress(int key) override;

protected:
    bool startStroke(const QPoint &pixel) override;
};

// Fills the region under the mouse with the painter's colour, with the "Contiguous" box.
// A fill that starts on index 0 while index 0 is protected does nothing.
class OVRA_EXPORT FloodFillTool : public PickerTool
{
    Q_OBJECT
public:
    explicit FloodFillTool(ImageCanvas *canvas, QObject *parent = nullptr);
    ~FloodFillTool() override;
    QString label() const override;
    const char *actionName() const override;
    void mousePress(const QPoint &pixel, Qt::MouseButton button, Qt::KeyboardModifiers modifiers) override;
    QWidget *createToolBar(QWidget *parent) override;

    bool isContiguous() const { return m_contiguous; }
    void setContiguous(bool contiguous);

signals:
    void contiguousChanged(bool contiguous);

private:
    bool m_contiguous = true;
};

} // namespace Ovra
