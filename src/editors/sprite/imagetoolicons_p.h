#pragma once
#include <QIcon>
#include <QString>

namespace Ovra {

// The drawn picture of a painting or selection tool of the sprite editor, by the name of
// the tool's action ("spr_tool_pen"); null for a name that has none.
QIcon imageToolIcon(const QString &actionName);

} // namespace Ovra
