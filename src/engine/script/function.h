#pragma once

#include "engine/script/stack.h"

#include <QStringBuilder>

#include <functional>
#include <tuple>
#include <utility>

// C++ callables as Lua functions: function pointers, member function pointers (const or
// not; the object is the first Lua argument) and lambdas. Arguments are converted left to
// right and checked; results are pushed as stack.h describes, void as no result.
namespace Ovra {
namespace Script {
namespace Detail {

template <class R, class... A>
struct Signature
{
};

template <class F>
struct CallOperator;
template <class R, class C, class... A>
struct CallOperator<R (C::*)(A...)>
{
    using Type = Signature<R, A...>;
};
template <class R, class C, class... A>
struct CallOperator<R (C::*)(A...) const>
{
    using Type = Signature<R, A...>;
};

// Lambdas and other function objects go through their call operator.
template <class F>
struct Traits : CallOperator<decltype(&F::operator())>
{
};
template <class R, class... A>
struct Traits<R (*)(A...)>
{
    using Type = Signature<R, A...>;
};
template <class R, class... A>
struct Traits<R (*)(A...) noexcept>
{
    using Type = Signature<R, A...>;
};
template <class R, class C, class... A>
struct Traits<R (C::*)(A...)>
{
    using Type = Signature<R, C &, A...>;
};
template <class R, class C, class... A>
struct Traits<R (C::*)(A...) const>
{
    using Type = Signature<R, const C &, A...>;
};
template <class R, class C, class... A>
struct Traits<R (C::*)(A...) noexcept>
{
    using Type = Signature<R, C &, A...>;
};
template <class R, class C, class... A>
struct Traits<R (C::*)(A...) const noexcept>
{
    using Type = Signature<R, const C &, A...>;
};

// One parameter: a usertype taken by reference or by value is held as a checked pointer
// (nil refused), everything else as the converted value. A class taken by non-const
// reference is always a userdata, even one with a built-in conversion such as
// QStringList: the change must land in the script's object, not in a temporary copy.
template <class A>
struct Arg
{
    using T = Bare<A>;
    static constexpr bool mutableReference =
        std::is_lvalue_reference_v<A> && !std::is_const_v<std::remove_reference_t<A>> && std::is_class_v<T>;
    static constexpr bool object = (!isObjectPointer<T> && !Stack<T>::builtin) || mutableReference;
    using Holder = std::conditional_t<object, T *, T>;

    static bool check(lua_State *L, int index)
    {
        if constexpr (object)
            return isObject(L, index, typeid(T), false);
        else
            return Detail::check<T>(L, index);
    }
    static Holder get(lua_State *L, int index)
    {
        if constexpr (object)
            return &toReference<T>(L, index);
        else
            return Detail::get<T>(L, index);
    }
    static decltype(auto) pass(Holder &held)
    {
        if constexpr (object)
            return (*held);
        else if constexpr (std::is_rvalue_reference_v<A>)
            return std::move(held);
        else
            return (held);
    }
};

// A result: objects returned by pointer or by non-const reference are shown, not copied;
// usertypes returned by value or const reference are copied into the userdata.
template <class R, class V>
void pushResult(lua_State *L, V &&value)
{
    using T = Bare<R>;
    if constexpr (isObjectPointer<T>)
        pushPointer(L, value);
    else if constexpr (Stack<T>::builtin)
        Stack<T>::push(L, value);
    else if constexpr (std::is_lvalue_reference_v<R> && !std::is_const_v<std::remove_reference_t<R>>)
        pushPointer(L, &value);
    else if constexpr (std::is_copy_constructible_v<T> || (!std::is_reference_v<R> && std::is_move_constructible_v<T>))
        pushValue<T>(L, std::forward<V>(value));
    else
        pushPointer(L, &value);
}

template <class T>
struct IsStringBuilder : std::false_type
{
};
template <class A, class B>
struct IsStringBuilder<QStringBuilder<A, B>> : std::true_type
{
};

template <class F, class R, class... A, size_t... I>
int call(lua_State *L, F &function, int first, std::index_sequence<I...>)
{
    // With the project's string builder, "a + b" is a proxy holding its parts by reference,
    // and a lambda returning it hands out references to its own temporaries.
    static_assert(!IsStringBuilder<std::decay_t<R>>::value,
                  "a bound function returns a string built with '+': give it the result type QString");
    // Braced initialisation converts the arguments in order, so the first bad one is named.
    [[maybe_unused]] std::tuple<typename Arg<A>::Holder...> held{Arg<A>::get(L, first + int(I))...};
    if constexpr (std::is_void_v<R>) {
        std::invoke(function, Arg<A>::pass(std::get<I>(held))...);
        return 0;
    } else {
        pushResult<R>(L, std::invoke(function, Arg<A>::pass(std::get<I>(held))...));
        return 1;
    }
}

template <class F, class R, class... A>
int callWith(lua_State *L, F &function, int first, Signature<R, A...>)
{
    return call<F, R, A...>(L, function, first, std::index_sequence_for<A...>());
}

template <class R, class... A, size_t... I>
bool matches([[maybe_unused]] lua_State *L, [[maybe_unused]] int first, int count, Signature<R, A...>,
             std::index_sequence<I...>)
{
    return count == int(sizeof...(A)) && (Arg<A>::check(L, first + int(I)) && ...);
}

template <class F>
struct Invoke
{
    static int run(lua_State *L, void *functor, int first)
    {
        return callWith(L, *static_cast<F *>(functor), first, typename Traits<F>::Type());
    }
};

template <class... F>
struct Overloads
{
    std::tuple<F...> functions;
};

template <class... F>
struct Invoke<Overloads<F...>>
{
    template <size_t I>
    static bool tryOne(lua_State *L, Overloads<F...> &overloads, int first, int count, int *results)
    {
        using Function = std::tuple_element_t<I, std::tuple<F...>>;
        using Sig = typename Traits<Function>::Type;
        if (!matchesSignature(L, first, count, Sig()))
            return false;
        *results = callWith(L, std::get<I>(overloads.functions), first, Sig());
        return true;
    }
    template <class R, class... A>
    static bool matchesSignature(lua_State *L, int first, int count, Signature<R, A...> signature)
    {
        return matches(L, first, count, signature, std::index_sequence_for<A...>());
    }
    template <size_t... I>
    static int runAll(lua_State *L, Overloads<F...> &overloads, int first, std::index_sequence<I...>)
    {
        int count = lua_gettop(L) - first + 1;
        int results = 0;
        if (!(tryOne<I>(L, overloads, first, count, &results) || ...))
            noOverload(L, first);
        return results;
    }
    static int run(lua_State *L, void *functor, int first)
    {
        return runAll(L, *static_cast<Overloads<F...> *>(functor), first, std::index_sequence_for<F...>());
    }
};

template <class F>
int thunk(lua_State *L)
{
    return dispatch(L, &Invoke<F>::run);
}

template <class F>
void destroyFunctor(void *functor)
{
    static_cast<F *>(functor)->~F();
}

template <class F>
void pushFunction(lua_State *L, F function, const char *name, CallKind kind)
{
    using Function = std::decay_t<F>;
    static_assert(alignof(Function) <= alignof(std::max_align_t), "over-aligned function object");
    void *storage =
        newFunctor(L, sizeof(Function), std::is_trivially_destructible_v<Function> ? nullptr : &destroyFunctor<Function>);
    new (storage) Function(std::move(function));
    pushClosure(L, &thunk<Function>, name, kind);
}

template <class T, class... A, size_t... I>
int constructWith(lua_State *L, int first, std::index_sequence<I...>)
{
    if (!(Arg<A>::check(L, first + int(I)) && ...))
        return -1;
    [[maybe_unused]] std::tuple<typename Arg<A>::Holder...> held{Arg<A>::get(L, first + int(I))...};
    void *storage = newValue(L, typeid(T), sizeof(T), alignof(T));
    if constexpr (std::is_aggregate_v<T>)
        new (storage) T{Arg<A>::pass(std::get<I>(held))...};
    else
        new (storage) T(Arg<A>::pass(std::get<I>(held))...);
    commitValue(L, -1);
    return 1;
}

template <class T, class... A>
int construct(lua_State *L, int first, int count)
{
    if (count != int(sizeof...(A)))
        return -1;
    return constructWith<T, A...>(L, first, std::index_sequence_for<A...>());
}

} // namespace Detail

// Several callables under one name; the first whose parameters fit the arguments (by
// count and type) is called, e.g. function("at", overload(atIndex, atName)).
template <class... F>
Detail::Overloads<std::decay_t<F>...> overload(F &&...functions)
{
    return {std::tuple<std::decay_t<F>...>(std::forward<F>(functions)...)};
}

} // namespace Script
} // namespace Ovra
