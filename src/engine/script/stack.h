#pragma once

#include "engine/script/registry.h"

#include <QFlags>
#include <QList>
#include <QPoint>
#include <QPointF>
#include <QRect>
#include <QSize>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>

#include <limits>
#include <new>
#include <type_traits>
#include <typeinfo>
#include <utility>

// Conversions between C++ values and the Lua stack.
//
// Built-in conversions: bool; every integer width (checked against its range; an unsigned
// 64-bit value above the signed range arrives negative, as Lua has only signed integers);
// float and double; enumerations and QFlags as integers; QString (UTF-8) and QByteArray
// as strings; QVariant as nil, boolean, number, string or table; QStringList, QList<T> and
// QVector<T> as sequences; QPoint and QPointF as {x = , y = }, QSize as
// {width = , height = }, QRect as {x = , y = , width = , height = }.
//
// Every other class is a registered usertype: a T* travels as a userdata pointing at the
// object, which it doesn't own (nil for null), and a T by value as a userdata holding a
// copy. Arguments are checked strictly: a string is no number and a number no string.
namespace Ovra {
namespace Script {

// Specialised for the built-in conversions; the primary template stands for usertypes.
template <class T, class Enable = void>
struct Stack
{
    static constexpr bool builtin = false;
};

namespace Detail {

template <class T>
using Bare = std::remove_cv_t<std::remove_reference_t<T>>;
template <class T>
constexpr bool isObjectPointer = std::is_pointer_v<T> && std::is_class_v<std::remove_pointer_t<T>>;

template <class T> void push(lua_State *L, const T &value);
template <class T> bool check(lua_State *L, int index);
template <class T> T get(lua_State *L, int index);

template <class T>
void pushPointer(lua_State *L, T *pointer)
{
    using Plain = std::remove_cv_t<T>;
    auto *object = const_cast<Plain *>(pointer);
    if constexpr (std::is_polymorphic_v<Plain>) {
        if (object) {
            pushObject(L, object, typeid(Plain), dynamic_cast<void *>(object), &typeid(*object));
            return;
        }
    }
    pushObject(L, object, typeid(Plain), object, nullptr);
}

// A copy of the value in a userdata of its own.
template <class T, class V>
void pushValue(lua_State *L, V &&value)
{
    static_assert(alignof(T) <= alignof(std::max_align_t), "over-aligned script value");
    void *storage = newValue(L, typeid(T), sizeof(T), alignof(T));
    new (storage) T(std::forward<V>(value));
    commitValue(L, -1);
}

template <class T>
T &toReference(lua_State *L, int index)
{
    return *static_cast<T *>(toObject(L, index, typeid(T), false));
}

OVRA_EXPORT lua_Integer toInteger(lua_State *L, int index);
OVRA_EXPORT bool isInteger(lua_State *L, int index);
OVRA_EXPORT void pushVariant(lua_State *L, const QVariant &value);
OVRA_EXPORT QVariant toVariant(lua_State *L, int index);
// Whether the value at the index can be read as a sequence, and its length.
OVRA_EXPORT bool isSequence(lua_State *L, int index);

template <class T>
bool inRange(lua_Integer value)
{
    if constexpr (std::is_unsigned_v<T>) {
        if (value < 0)
            return false;
        if constexpr (sizeof(T) < sizeof(lua_Integer))
            return value <= lua_Integer(std::numeric_limits<T>::max());
        return true;
    } else if constexpr (sizeof(T) < sizeof(lua_Integer)) {
        return value >= lua_Integer(std::numeric_limits<T>::min()) && value <= lua_Integer(std::numeric_limits<T>::max());
    }
    return true;
}

} // namespace Detail

template <>
struct Stack<bool>
{
    static constexpr bool builtin = true;
    static bool check(lua_State *L, int index) { return lua_type(L, index) == LUA_TBOOLEAN; }
    static bool get(lua_State *L, int index)
    {
        Detail::checkPresent(L, index);
        if (!check(L, index))
            Detail::argumentError(L, index, "boolean");
        return lua_toboolean(L, index);
    }
    static void push(lua_State *L, bool value) { lua_pushboolean(L, value); }
};

template <class T>
struct Stack<T, std::enable_if_t<std::is_integral_v<T> && !std::is_same_v<T, bool>>>
{
    static constexpr bool builtin = true;
    static bool check(lua_State *L, int index)
    {
        return Detail::isInteger(L, index) && Detail::inRange<T>(lua_tointeger(L, index));
    }
    static T get(lua_State *L, int index)
    {
        lua_Integer value = Detail::toInteger(L, index);
        if (!Detail::inRange<T>(value))
            Detail::rangeError(L, index, std::is_unsigned_v<T> ? "unsigned" : "integer");
        return T(value);
    }
    static void push(lua_State *L, T value) { lua_pushinteger(L, lua_Integer(value)); }
};

template <class T>
struct Stack<T, std::enable_if_t<std::is_floating_point_v<T>>>
{
    static constexpr bool builtin = true;
    static bool check(lua_State *L, int index) { return lua_type(L, index) == LUA_TNUMBER; }
    static T get(lua_State *L, int index)
    {
        Detail::checkPresent(L, index);
        if (!check(L, index))
            Detail::argumentError(L, index, "number");
        return T(lua_tonumber(L, index));
    }
    static void push(lua_State *L, T value) { lua_pushnumber(L, lua_Number(value)); }
};

template <class T>
struct Stack<T, std::enable_if_t<std::is_enum_v<T>>>
{
    static constexpr bool builtin = true;
    using Integer = Stack<std::underlying_type_t<T>>;
    static bool check(lua_State *L, int index) { return Integer::check(L, index); }
    static T get(lua_State *L, int index) { return T(Integer::get(L, index)); }
    static void push(lua_State *L, T value) { Integer::push(L, std::underlying_type_t<T>(value)); }
};

// Flags are integers, so Lua's own | combines them; a registered usertype of the flags
// type (one with a constructor and a "__bor" operator) is accepted as well.
template <class E>
struct Stack<QFlags<E>>
{
    static constexpr bool builtin = true;
    static bool check(lua_State *L, int index)
    {
        return Detail::isInteger(L, index) || Detail::isObject(L, index, typeid(QFlags<E>), false);
    }
    static QFlags<E> get(lua_State *L, int index)
    {
        if (Detail::isObject(L, index, typeid(QFlags<E>), false))
            return Detail::toReference<QFlags<E>>(L, index);
        return QFlags<E>(int(Detail::toInteger(L, index)));
    }
    static void push(lua_State *L, QFlags<E> value) { lua_pushinteger(L, lua_Integer(int(value))); }
};

template <>
struct Stack<QString>
{
    static constexpr bool builtin = true;
    static bool check(lua_State *L, int index) { return lua_type(L, index) == LUA_TSTRING; }
    OVRA_EXPORT static QString get(lua_State *L, int index);
    OVRA_EXPORT static void push(lua_State *L, const QString &value);
};

// What a lambda returns when it joins strings with + under QT_USE_QSTRINGBUILDER.
template <class A, class B>
struct Stack<QStringBuilder<A, B>>
{
    static constexpr bool builtin = true;
    using Result = typename QConcatenable<QStringBuilder<A, B>>::ConvertTo;
    static void push(lua_State *L, const QStringBuilder<A, B> &value) { Stack<Result>::push(L, Result(value)); }
};

template <>
struct Stack<QByteArray>
{
    static constexpr bool builtin = true;
    static bool check(lua_State *L, int index) { return lua_type(L, index) == LUA_TSTRING; }
    OVRA_EXPORT static QByteArray get(lua_State *L, int index);
    OVRA_EXPORT static void push(lua_State *L, const QByteArray &value);
};

template <>
struct Stack<QVariant>
{
    static constexpr bool builtin = true;
    OVRA_EXPORT static bool check(lua_State *L, int index);
    static QVariant get(lua_State *L, int index)
    {
        Detail::checkPresent(L, index);
        return Detail::toVariant(L, index);
    }
    static void push(lua_State *L, const QVariant &value) { Detail::pushVariant(L, value); }
};

// A table of strings; a registered "StringList" usertype is accepted as well.
template <>
struct Stack<QStringList>
{
    static constexpr bool builtin = true;
    OVRA_EXPORT static bool check(lua_State *L, int index);
    OVRA_EXPORT static QStringList get(lua_State *L, int index);
    OVRA_EXPORT static void push(lua_State *L, const QStringList &value);
};

#define OVRA_SCRIPT_TABLE_TYPE(Type)                                                                                   \
    template <>                                                                                                        \
    struct Stack<Type>                                                                                                 \
    {                                                                                                                  \
        static constexpr bool builtin = true;                                                                          \
        OVRA_EXPORT static bool check(lua_State *L, int index);                                                        \
        OVRA_EXPORT static Type get(lua_State *L, int index);                                                          \
        OVRA_EXPORT static void push(lua_State *L, const Type &value);                                                 \
    };
OVRA_SCRIPT_TABLE_TYPE(QPoint)
OVRA_SCRIPT_TABLE_TYPE(QPointF)
OVRA_SCRIPT_TABLE_TYPE(QSize)
OVRA_SCRIPT_TABLE_TYPE(QRect)
#undef OVRA_SCRIPT_TABLE_TYPE

// Sequences, of any element type the binding converts (objects, values or built-ins).
template <class Container>
struct SequenceStack
{
    static constexpr bool builtin = true;
    using Element = typename Container::value_type;
    static bool check(lua_State *L, int index)
    {
        if (!Detail::isSequence(L, index))
            return false;
        lua_Integer count = lua_Integer(lua_rawlen(L, index));
        for (lua_Integer i = 1; i <= count; ++i) {
            lua_rawgeti(L, index, i);
            bool fits = Detail::check<Element>(L, -1);
            lua_pop(L, 1);
            if (!fits)
                return false;
        }
        return true;
    }
    static Container get(lua_State *L, int index)
    {
        Detail::checkPresent(L, index);
        index = lua_absindex(L, index);
        if (!check(L, index))
            Detail::argumentError(L, index, "sequence");
        Container result;
        lua_Integer count = lua_Integer(lua_rawlen(L, index));
        result.reserve(int(count));
        for (lua_Integer i = 1; i <= count; ++i) {
            lua_rawgeti(L, index, i);
            result.append(Detail::get<Element>(L, lua_gettop(L)));
            lua_pop(L, 1);
        }
        return result;
    }
    static void push(lua_State *L, const Container &value)
    {
        lua_createtable(L, value.size(), 0);
        lua_Integer i = 0;
        for (const Element &element : value) {
            Detail::push<Element>(L, element);
            lua_rawseti(L, -2, ++i);
        }
    }
};

template <class T>
struct Stack<QList<T>> : SequenceStack<QList<T>>
{
};
template <class T>
struct Stack<QVector<T>> : SequenceStack<QVector<T>>
{
};

namespace Detail {

template <class T>
void push(lua_State *L, const T &value)
{
    if constexpr (isObjectPointer<T>)
        pushPointer(L, value);
    else if constexpr (Stack<T>::builtin)
        Stack<T>::push(L, value);
    else
        pushValue<T>(L, value);
}

template <class T>
bool check(lua_State *L, int index)
{
    if constexpr (isObjectPointer<T>)
        return isObject(L, index, typeid(std::remove_cv_t<std::remove_pointer_t<T>>), true);
    else if constexpr (Stack<T>::builtin)
        return Stack<T>::check(L, index);
    else
        return isObject(L, index, typeid(T), false);
}

template <class T>
T get(lua_State *L, int index)
{
    if constexpr (isObjectPointer<T>) {
        using Object = std::remove_pointer_t<T>;
        return static_cast<Object *>(toObject(L, index, typeid(std::remove_cv_t<Object>), true));
    } else if constexpr (Stack<T>::builtin) {
        return Stack<T>::get(L, index);
    } else {
        return toReference<T>(L, index);
    }
}

} // namespace Detail
} // namespace Script
} // namespace Ovra
