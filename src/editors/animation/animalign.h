#pragma once

#include "foundation/global.h"

#include <QDialog>
#include <QList>

class QComboBox;
class QListWidget;
class QSpinBox;

namespace Ovra {

class Animations;

// The alignment tool: moves the axis or the contact boxes of every frame of the chosen
// animations by one pair of values, as one undo step.
class OVRA_EXPORT AnimAlign : public QDialog
{
    Q_OBJECT
public:
    enum Operation {
        OffsetAxis = 0,
        OffsetBoxes = 1,
        ScaleBoxes = 2,
        ResizeTopLeft = 3,
        ResizeBottomRight = 4
    };
    Q_ENUM(Operation)

    // Lists the animations of the file; the caller keeps the file alive meanwhile.
    explicit AnimAlign(Animations *animations, QWidget *parent = nullptr);
    ~AnimAlign() override;

    // Runs `operation` over all frames of the animations of `rows`, with `x` and `y` as
    // the distance, the growth or the percentage; rows that don't exist are passed over.
    // The resize operations grow the box for positive values at either corner; the
    // scale works in whole numbers and truncates.
    static void apply(Animations *animations, const QList<int> &rows, Operation operation, int x, int y);

    QList<int> selectedRows() const;
    void setSelected(int row, bool selected);
    Operation operation() const;
    void setOperation(Operation operation);
    int xValue() const;
    int yValue() const;
    void setValues(int x, int y);

public slots:
    void selectAll();
    void invertSelection();
    void clearSelection();
    // Applies the chosen operation to the chosen animations.
    void applyChosen();

signals:
    void applied();

private:
    Animations *m_animations;
    QListWidget *m_list;
    QComboBox *m_operation;
    QSpinBox *m_x;
    QSpinBox *m_y;
};

} // namespace Ovra
