#include "editors/extraeditor.h"

#include "foundation/interface.h"

namespace Ovra {

ExtraEditor::ExtraEditor()
    : m_interface(Interface::instance())
{
}

void ExtraEditor::release()
{
    deleteLater();
}

void ExtraEditor::activate()
{
    m_active = true;
}

void ExtraEditor::deactivate()
{
    m_active = false;
}

void ExtraEditor::engineSwitched(bool)
{
}

void ExtraEditor::projectSwitched(Project *)
{
}

void ExtraEditor::reconfig()
{
}

void ExtraEditor::retranslate()
{
}

void ExtraEditor::contentsChanged()
{
    emit modified();
}

} // namespace Ovra
