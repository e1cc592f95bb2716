#pragma once

#include "foundation/global.h"

#include <QDialog>

namespace Ovra {

// "Code snippet editor": makes and changes a snippet file (its fields and code), previews
// the filled code, and exports the titles for translation.
class OVRA_EXPORT SnipDlg : public QDialog
{
    Q_OBJECT
public:
    // An empty name starts a new snippet.
    explicit SnipDlg(const QString &fileName, QWidget *parent = nullptr);
    ~SnipDlg() override;
};

} // namespace Ovra
