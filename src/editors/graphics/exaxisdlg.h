#pragma once

#include "foundation/global.h"

#include <QDialog>
#include <QPoint>

class QLabel;
class QSpinBox;

namespace Ovra {

class GraphicsWorkspace;

// The place of the extra cross, typed in: two spin boxes whose every change moves the
// cross of the workspace at once, so the user sees it go while typing.
class OVRA_EXPORT ExAxisDlg : public QDialog
{
    Q_OBJECT

public:
    explicit ExAxisDlg(GraphicsWorkspace *workspace, QWidget *parent = nullptr);
    ~ExAxisDlg() override;

    QPoint axis() const;
    // Shows the axis without handing it back to the workspace.
    void setAxis(QPoint axis);
    QSpinBox *xBox() const { return m_x; }
    QSpinBox *yBox() const { return m_y; }
    void retranslate();

private:
    void valueChanged();

    GraphicsWorkspace *m_workspace;
    QSpinBox *m_x;
    QSpinBox *m_y;
    QLabel *m_xLabel;
    QLabel *m_yLabel;
};

} // namespace Ovra
