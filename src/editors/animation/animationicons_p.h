#pragma once
#include <QIcon>
#include <QString>

namespace Ovra {

// The drawn picture of an action of the animation editor's panel, by its name; null for
// a name that has none.
QIcon animationActionIcon(const QString &name);

} // namespace Ovra
