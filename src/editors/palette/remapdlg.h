#pragma once
#include "foundation/global.h"

#include <QDialog>

class QPushButton;
class QSpinBox;

namespace Ovra {

class PaletteRemapWidget;

// The remap tool: a table of slot pairs that the sprite painter's remap pen paints
// through. Pairs come from the two boxes, or from clicks on the palette (left for the
// source, right for the target) while the tool is open.
class OVRA_EXPORT RemapDlg : public QDialog
{
    Q_OBJECT
public:
    explicit RemapDlg(QWidget *parent = nullptr);

    PaletteRemapWidget *remapWidget() const { return m_remap; }
    void retranslate();

public slots:
    void setSource(int index);
    void setTarget(int index);
    // Adds the pair of the two boxes.
    void addPair();

private:
    PaletteRemapWidget *m_remap;
    QSpinBox *m_source;
    QSpinBox *m_target;
    QPushButton *m_add;
    QPushButton *m_delete;
    QPushButton *m_clear;
    QPushButton *m_close;
};

} // namespace Ovra
