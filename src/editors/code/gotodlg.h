#pragma once

#include "foundation/global.h"

#include <QDialog>

class QSpinBox;

namespace Ovra {

// "Go to line...": asks for a line number, counted from 1. Any positive number can be
// given; the caller decides what a number past the last line means.
class OVRA_EXPORT GoToDlg : public QDialog
{
    Q_OBJECT
public:
    explicit GoToDlg(int line, QWidget *parent = nullptr);
    ~GoToDlg() override;

    int line() const;
    void setLine(int line);
    QSpinBox *lineBox() const { return m_line; }

private:
    QSpinBox *m_line;
};

} // namespace Ovra
