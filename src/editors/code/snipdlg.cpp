#include "editors/code/snipdlg.h"

// A first cut: the dialog's frame. The form, the field list and the buttons come next.

namespace Ovra {

SnipDlg::SnipDlg(const QString &, QWidget *parent)
    : QDialog(parent)
{
    setWindowTitle(tr("Code snippet editor"));
}

SnipDlg::~SnipDlg() = default;

} // namespace Ovra
