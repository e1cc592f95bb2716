#pragma once

#include "engine/script/function.h"

#include <initializer_list>

namespace Ovra {
namespace Script {

template <class T>
class Usertype;

struct EnumValue
{
    const char *name;
    lua_Integer value;
};

// A handle on a Lua table: the globals, a namespace table, or a usertype's table. It holds
// a reference in the state's registry and must not outlive the state. Names are UTF-8.
// Reads and writes are raw, so no metamethod runs.
class OVRA_EXPORT Table
{
public:
    // References the table at the index of the stack, which stays where it is.
    Table(lua_State *L, int index);
    static Table globals(lua_State *L);
    Table(const Table &other);
    Table &operator=(const Table &other);
    ~Table();

    lua_State *luaState() const { return m_state; }
    void push() const;

    // The sub-table of that name, made empty when there is none (or a non-table is there).
    Table table(const char *name);
    bool contains(const char *name) const;

    // A read-only table of named integers, as scripts see enumerations: Type.Name.
    Table &enumeration(const char *name, std::initializer_list<EnumValue> values);

    // A usertype registered under the name, to which members are then added.
    template <class T>
    Usertype<T> usertype(const char *name);

    template <class F>
    Table &function(const char *name, F function)
    {
        Detail::pushFunction(m_state, std::move(function), name, Detail::CallKind::Function);
        assignTop(name);
        return *this;
    }

    // Sets the field to a converted value: objects given by pointer are shown, not owned.
    // A value of an unregistered type is refused with a warning and nothing is set.
    template <class V>
    Table &set(const char *name, const V &value)
    {
        int top = lua_gettop(m_state);
        try {
            Detail::push<V>(m_state, value);
        } catch (const Detail::Error &error) {
            lua_settop(m_state, top);
            qWarning("%s", error.message.constData());
            return *this;
        }
        assignTop(name);
        return *this;
    }

    // The field converted to V; a default V, and *ok false, when it doesn't convert.
    template <class V>
    V get(const char *name, bool *ok = nullptr) const
    {
        pushField(name);
        V result{};
        bool fits = Detail::check<V>(m_state, -1);
        if (fits) {
            try {
                result = Detail::get<V>(m_state, lua_gettop(m_state));
            } catch (const Detail::Error &) {
                fits = false;
            }
        }
        lua_pop(m_state, 1);
        if (ok)
            *ok = fits;
        return result;
    }

    // Pops the value on top of the stack into the field.
    void assignTop(const char *name);
    // Pushes the field's value.
    void pushField(const char *name) const;

private:
    lua_State *m_state;
    int m_reference;
};

} // namespace Script
} // namespace Ovra
