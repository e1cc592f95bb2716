#include "engine/script/table.h"

namespace Ovra {
namespace Script {

namespace {

int enumerationWrite(lua_State *L)
{
    Detail::pushErrorPrefix(L);
    lua_pushfstring(L, "enumeration %s is read-only", lua_tostring(L, lua_upvalueindex(1)));
    lua_concat(L, 2);
    return lua_error(L);
}

int enumerationNext(lua_State *L)
{
    lua_settop(L, 2);
    if (lua_next(L, 1))
        return 2;
    lua_pushnil(L);
    return 1;
}

// pairs() on an enumeration walks the values that the proxy hides.
int enumerationPairs(lua_State *L)
{
    lua_pushcfunction(L, enumerationNext);
    if (!lua_getmetatable(L, 1))
        return 0;
    lua_getfield(L, -1, "__index");
    lua_remove(L, -2);
    lua_pushnil(L);
    return 3;
}

} // namespace

Table::Table(lua_State *L, int index)
    : m_state(L)
{
    lua_pushvalue(L, index);
    m_reference = luaL_ref(L, LUA_REGISTRYINDEX);
}

Table Table::globals(lua_State *L)
{
    lua_rawgeti(L, LUA_REGISTRYINDEX, LUA_RIDX_GLOBALS);
    Table table(L, -1);
    lua_pop(L, 1);
    return table;
}

Table::Table(const Table &other)
    : m_state(other.m_state)
{
    other.push();
    m_reference = luaL_ref(m_state, LUA_REGISTRYINDEX);
}

Table &Table::operator=(const Table &other)
{
    if (this == &other)
        return *this;
    other.push();
    int reference = luaL_ref(other.m_state, LUA_REGISTRYINDEX);
    luaL_unref(m_state, LUA_REGISTRYINDEX, m_reference);
    m_state = other.m_state;
    m_reference = reference;
    return *this;
}

Table::~Table()
{
    luaL_unref(m_state, LUA_REGISTRYINDEX, m_reference);
}

void Table::push() const
{
    lua_rawgeti(m_state, LUA_REGISTRYINDEX, m_reference);
}

void Table::pushField(const char *name) const
{
    push();
    lua_pushstring(m_state, name);
    lua_rawget(m_state, -2);
    lua_remove(m_state, -2);
}

void Table::assignTop(const char *name)
{
    push();
    lua_pushstring(m_state, name);
    lua_pushvalue(m_state, -3);
    lua_rawset(m_state, -3);
    lua_pop(m_state, 2);
}

bool Table::contains(const char *name) const
{
    pushField(name);
    bool found = !lua_isnil(m_state, -1);
    lua_pop(m_state, 1);
    return found;
}

Table Table::table(const char *name)
{
    pushField(name);
    if (!lua_istable(m_state, -1)) {
        lua_pop(m_state, 1);
        lua_newtable(m_state);
        lua_pushvalue(m_state, -1);
        assignTop(name);
    }
    Table result(m_state, -1);
    lua_pop(m_state, 1);
    return result;
}

Table &Table::enumeration(const char *name, std::initializer_list<EnumValue> values)
{
    lua_State *L = m_state;
    lua_newtable(L); // the proxy scripts see
    lua_createtable(L, 0, 3);
    lua_createtable(L, 0, int(values.size()));
    for (const EnumValue &value : values) {
        lua_pushinteger(L, value.value);
        lua_setfield(L, -2, value.name);
    }
    lua_setfield(L, -2, "__index");
    lua_pushstring(L, name);
    lua_pushcclosure(L, enumerationWrite, 1);
    lua_setfield(L, -2, "__newindex");
    lua_pushcfunction(L, enumerationPairs);
    lua_setfield(L, -2, "__pairs");
    lua_setmetatable(L, -2);
    assignTop(name);
    return *this;
}

} // namespace Script
} // namespace Ovra
