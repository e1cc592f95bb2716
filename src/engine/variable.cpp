#include "engine/variable.h"

namespace Ovra {

Variable::Variable(const QString &name, const QVariant &value, Variable *owner)
    : QObject(owner)
    , m_name(name)
    , m_value(value)
    , m_owner(owner)
{
    if (owner)
        owner->m_members.append(this);
}

Variable::~Variable()
{
    emit ending(this);
    // The members end after this, as children of the QObject: they must not reach back.
    for (Variable *member : qAsConst(m_members))
        member->m_owner = nullptr;
    if (m_owner)
        m_owner->m_members.removeOne(this);
}

void Variable::setValue(const QVariant &value)
{
    // Types count: 1 and 1.0 look alike but a watch shows them apart.
    if (value == m_value && value.userType() == m_value.userType())
        return;
    m_value = value;
    emit valueChanged();
}

} // namespace Ovra
