#include "foundation/treemodel.h"

namespace Ovra {

int TreeModel::columnCount(const QModelIndex &) const
{
    return 1;
}

} // namespace Ovra
