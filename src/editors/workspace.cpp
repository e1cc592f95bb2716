#include "editors/workspace.h"

namespace Ovra {

Workspace::Workspace(Interface *interface, QWidget *parent)
    : QWidget(parent)
    , m_interface(interface)
{
}

Workspace::~Workspace() = default;

} // namespace Ovra
