#pragma once

#include <QIcon>

namespace Ovra {

// Plain pictures of the view actions, drawn here, for a host that keeps none of its own
// for them: a row of words would not fit above the view. Null for an unknown name.
QIcon viewActionIcon(const QString &name);

} // namespace Ovra
