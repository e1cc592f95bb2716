#pragma once
#include "foundation/global.h"

#include <QPointer>
#include <QWidget>

namespace Ovra {

class PaletteObject;

// The colours of a palette as a grid of 16 x 16 slots. A click selects one slot, Ctrl
// adds or removes one, Shift selects the run from the last clicked slot; dragging a
// slot onto another asks for the colour to move there. The selection is kept in the
// form the colour operations take it: 256 flags.
class OVRA_EXPORT PaletteWidget : public QWidget
{
    Q_OBJECT
public:
    explicit PaletteWidget(QWidget *parent = nullptr);
    ~PaletteWidget() override;

    // The colours shown (null for none); the widget doesn't own them.
    void setPaletteObject(PaletteObject *palette);
    PaletteObject *paletteObject() const;

    // Only the first `count` slots (0 to 256) are shown and can be chosen.
    void setColorCount(int count);
    int colorCount() const { return m_count; }

    // 256 flags, for the selection arguments of PaletteObject.
    const bool *selection() const { return m_selection; }
    bool isSelected(int index) const;
    void setSelected(int index, bool selected);
    void selectOnly(int index);
    void clearSelection();
    int selectedCount() const;
    // The last slot clicked; -1 before the first click.
    int currentIndex() const { return m_current; }

    // The slot under a point of the widget, or -1.
    int indexAt(const QPoint &point) const;
    QRect slotRect(int index) const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    // The colours shown changed.
    void changed();
    void selectionChanged();
    void colorClick(ushort color, Qt::MouseButton button);
    void colorDblClick(ushort color);
    // A click with Ctrl or Shift that changed a selection of several slots.
    void multiColorClick(ushort color, Qt::MouseButton button);
    void colorMoved(int source, int target);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    void clickSlot(int index, Qt::MouseButton button, Qt::KeyboardModifiers modifiers);
    int slotSide() const;
    QPoint gridOrigin() const;

    QPointer<PaletteObject> m_palette;
    bool m_selection[256] = {};
    int m_count = 256;
    int m_current = -1;
    int m_anchor = -1;
    // The slot a press began on, while the button is held, and where a drag now points.
    int m_pressed = -1;
    int m_dropTarget = -1;
    QPoint m_pressPoint;
    bool m_dragging = false;
};

} // namespace Ovra
