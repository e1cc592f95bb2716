#pragma once
#include <QIcon>
#include <QString>

namespace Ovra {

// The drawn picture of a button of the palette editor's bar, by the name of its action
// ("pal_add"); null for a name that has none.
QIcon paletteActionIcon(const QString &actionName);

} // namespace Ovra
