#include "engine/script/usertype.h"

namespace Ovra {
namespace Script {

static Table typeTable(lua_State *L, Detail::TypeInfo *type)
{
    Detail::pushTypeTable(L, type);
    Table table(L, -1);
    lua_pop(L, 1);
    return table;
}

UsertypeBase::UsertypeBase(const Table &parent, const char *name, const std::type_info &type,
                           Detail::Destroy destroy)
    : m_state(parent.luaState())
    , m_type(Detail::registerType(parent.luaState(), type, name, destroy))
    , m_table(typeTable(parent.luaState(), m_type))
    , m_name(name)
{
    m_table.push();
    const_cast<Table &>(parent).assignTop(name);
}

QByteArray UsertypeBase::qualified(const char *member) const
{
    return m_name + '.' + member;
}

void UsertypeBase::addMember(Detail::MemberKind kind, const char *name)
{
    Detail::setMember(m_state, m_type, kind, name);
}

void UsertypeBase::addStatic(const char *name)
{
    m_table.assignTop(name);
}

void UsertypeBase::addEnumeration(const char *name, std::initializer_list<EnumValue> values)
{
    m_table.enumeration(name, values);
}

} // namespace Script
} // namespace Ovra
