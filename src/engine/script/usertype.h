#pragma once

#include "engine/script/table.h"

// A C++ class as scripts see it. Registration reads like the class's script interface:
//
//     globals.usertype<Sprites>("Sprites")
//         .base<ProjectFile>()
//         .property("count", &Sprites::count)
//         .property("selected", &Sprites::selected, &Sprites::setSelected)
//         .function("at", &Sprites::at);
//
// Objects are owned by C++: a userdata shows an object without owning it, and a script
// must not keep one after the object is gone (the model's objects are parented or
// reference counted by the library, which alone decides when they die). Values (a
// userdata made by a constructor or for a value returned by copy) own their copy.
//
// Members are found in the type, then in its bases in the order they were declared. A
// read of a name that is no member raises an error (it doesn't give nil), as does a write
// to a member without a setter. Calling the type's table makes a value through the first
// constructor whose parameters fit; a type without constructors can't be made by scripts.
namespace Ovra {
namespace Script {

class OVRA_EXPORT UsertypeBase
{
public:
    // The table scripts see under the type's name: static functions and enumerations.
    Table &table() { return m_table; }
    const QByteArray &name() const { return m_name; }

protected:
    UsertypeBase(const Table &parent, const char *name, const std::type_info &type, Detail::Destroy destroy);
    // "Type.member", as errors name the member.
    QByteArray qualified(const char *member) const;
    // Pops the function on top of the stack into the members of that kind.
    void addMember(Detail::MemberKind kind, const char *name);
    void addStatic(const char *name);
    void addEnumeration(const char *name, std::initializer_list<EnumValue> values);

    lua_State *m_state;
    Detail::TypeInfo *m_type;
    Table m_table;
    QByteArray m_name;
};

template <class T>
class Usertype : public UsertypeBase
{
public:
    Usertype(const Table &parent, const char *name)
        : UsertypeBase(parent, name, typeid(T), destroyer())
    {
    }

    // Members of B are found through T, and a T is accepted where a B is wanted.
    template <class B>
    Usertype &base()
    {
        static_assert(std::is_base_of_v<B, T>, "not a base");
        Detail::addBase(m_state, m_type, typeid(B), [](void *object) -> void * {
            return static_cast<B *>(static_cast<T *>(object));
        });
        return *this;
    }

    // A read-only property: a getter member, or a callable taking the object.
    template <class G>
    Usertype &property(const char *name, G getter)
    {
        Detail::pushFunction(m_state, std::move(getter), qualified(name).constData(), Detail::CallKind::Method);
        addMember(Detail::MemberKind::Getter, name);
        return *this;
    }

    template <class G, class S>
    Usertype &property(const char *name, G getter, S setter)
    {
        property(name, std::move(getter));
        Detail::pushFunction(m_state, std::move(setter), qualified(name).constData(), Detail::CallKind::Method);
        addMember(Detail::MemberKind::Setter, name);
        return *this;
    }

    // A data member read and written in place; register it twice for two names.
    template <class M>
    Usertype &field(const char *name, M T::*member)
    {
        return property(
            name, [member](const T &self) -> const M & { return self.*member; },
            [member](T &self, const M &value) { self.*member = value; });
    }

    // A member function, or a callable whose first parameter is the object (T& or T*);
    // properties that take arguments are functions too: archive:absoluteFilePath("x").
    template <class F>
    Usertype &function(const char *name, F function)
    {
        Detail::pushFunction(m_state, std::move(function), qualified(name).constData(), Detail::CallKind::Method);
        addMember(Detail::MemberKind::Method, name);
        return *this;
    }

    // A function of the type's table, called without an object: Type.name(...).
    template <class F>
    Usertype &staticFunction(const char *name, F function)
    {
        Detail::pushFunction(m_state, std::move(function), qualified(name).constData(), Detail::CallKind::Function);
        addStatic(name);
        return *this;
    }

    // An operator or other metamethod of the userdata ("__bor", "__add", "__len", ...).
    template <class F>
    Usertype &metaFunction(const char *name, F function)
    {
        Detail::pushFunction(m_state, std::move(function), qualified(name).constData(), Detail::CallKind::Function);
        addMember(Detail::MemberKind::Meta, name);
        return *this;
    }

    // A constructor overload, T(A...) or T{A...} for a plain record.
    template <class... A>
    Usertype &constructor()
    {
        Detail::addConstructor(m_type, &Detail::construct<T, A...>);
        return *this;
    }

    Usertype &enumeration(const char *name, std::initializer_list<EnumValue> values)
    {
        addEnumeration(name, values);
        return *this;
    }

private:
    static Detail::Destroy destroyer()
    {
        if constexpr (std::is_destructible_v<T>)
            return [](void *object) { static_cast<T *>(object)->~T(); };
        else
            return nullptr;
    }
};

template <class T>
Usertype<T> Table::usertype(const char *name)
{
    return Usertype<T>(*this, name);
}

} // namespace Script
} // namespace Ovra
