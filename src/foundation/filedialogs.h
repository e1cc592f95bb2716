#pragma once

#include "foundation/global.h"

#include <QString>
#include <QStringList>

class QWidget;

namespace Ovra {

// File choosers that follow the user's settings. They need an installed Interface.

// Uses the system's own dialog only when the option "use_native_open" is set.
OVRA_EXPORT QString getOpenFileName(QWidget *parent, const QString &title, const QString &directory,
                                    const QString &filter);
// As above; with "sort_file_names" set the names come back sorted.
OVRA_EXPORT QStringList getOpenFileNames(QWidget *parent, const QString &title,
                                         const QString &directory, const QString &filter);
// Saving always uses the default dialog: the native-dialog option is for opening only.
OVRA_EXPORT QString getSaveFileName(QWidget *parent, const QString &title, const QString &directory,
                                    const QString &filter);
OVRA_EXPORT QString getExistingDirectory(QWidget *parent, const QString &title,
                                         const QString &directory);

} // namespace Ovra
