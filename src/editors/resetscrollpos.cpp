#include "editors/resetscrollpos.h"

#include <QScrollBar>
#include <QTreeView>

namespace Ovra {
namespace Private {

ResetScrollPos::ResetScrollPos(QTreeView *view, int position)
    : m_view(view)
    , m_position(position)
{
}

void ResetScrollPos::reset()
{
    if (m_view && m_position != 0)
        m_view->verticalScrollBar()->setValue(m_position);
    deleteLater();
}

} // namespace Private
} // namespace Ovra
