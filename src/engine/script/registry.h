#pragma once

#include "foundation/global.h"

#include <lua.hpp>

#include <QByteArray>

#include <typeinfo>

// The untyped core of the binding: the userdata layout, the per-state type registry and
// the error raising. The templates of the other headers only convert types and forward
// here, so that most of the machinery is compiled once, in the library.
namespace Ovra {
namespace Script {
namespace Detail {

struct TypeInfo;

// Every userdata the binding makes starts with this. An object's userdata points at a
// C++ object it doesn't own; a value's userdata holds the object itself, after the box.
struct Box
{
    void *pointer;
    TypeInfo *type;
    bool owned;
};

// Thrown inside bound calls and turned into a Lua error before control returns to Lua,
// so that no C++ exception ever crosses a C frame.
struct Error
{
    QByteArray message;
};

// The three kinds of bound closures differ in how their stack slots are named in errors:
// a method's first slot is "self", a constructor's first slot is the type table.
enum class CallKind { Function = 0, Method = 1, Constructor = 2 };

using Cast = void *(*)(void *);
using Destroy = void (*)(void *);
using Construct = int (*)(lua_State *, int first, int count); // -1: arguments don't fit

// The type's script name, or a readable C++ name when it isn't registered.
OVRA_EXPORT QByteArray typeName(lua_State *L, const std::type_info &type);
// What the value at the index is, for errors: a registered type's script name or Lua's.
OVRA_EXPORT QByteArray describe(lua_State *L, int index);

// Registration, used by Usertype<T>. Registering a type twice returns the first record,
// so members can be added from several places.
OVRA_EXPORT TypeInfo *registerType(lua_State *L, const std::type_info &type, const QByteArray &name,
                                   Destroy destroy);
OVRA_EXPORT void addBase(lua_State *L, TypeInfo *type, const std::type_info &base, Cast cast);
OVRA_EXPORT void addConstructor(TypeInfo *type, Construct construct);
enum class MemberKind { Method, Getter, Setter, Meta };
// Pops the function on top of the stack into the type's member table of that kind.
OVRA_EXPORT void setMember(lua_State *L, TypeInfo *type, MemberKind kind, const char *name);
OVRA_EXPORT const QByteArray &scriptName(const TypeInfo *type);
// Pushes the table scripts see under the type's name: its static functions, its
// enumerations, and a __call that picks a constructor or says there is none.
OVRA_EXPORT void pushTypeTable(lua_State *L, TypeInfo *type);

// The box of one of our userdata at the index, or null for anything else.
OVRA_EXPORT Box *toBox(lua_State *L, int index);
// The object at the index as a pointer to the wanted type, through the registered bases;
// null when the value is nil and nil is allowed. Throws Error for anything else.
OVRA_EXPORT void *toObject(lua_State *L, int index, const std::type_info &wanted, bool allowNil);
// Whether the value at the index converts to the wanted type (nil only when allowed).
OVRA_EXPORT bool isObject(lua_State *L, int index, const std::type_info &wanted, bool allowNil);
// Pushes a non-owning userdata, or nil for null. Where the object's dynamic type is
// registered and derives from the static one, the userdata gets the dynamic type, so a
// script sees a file it was handed as a "ProjectFile" with all members of its real class.
OVRA_EXPORT void pushObject(lua_State *L, void *pointer, const std::type_info &staticType,
                            void *mostDerived, const std::type_info *dynamicType);
// Makes an owning userdata and returns the storage where the caller constructs the value;
// the caller then calls commitValue so that the value is destroyed with the userdata.
OVRA_EXPORT void *newValue(lua_State *L, const std::type_info &type, size_t size, size_t alignment);
OVRA_EXPORT void commitValue(lua_State *L, int index);

// Errors thrown from conversions, naming the argument of the running bound closure.
[[noreturn]] OVRA_EXPORT void argumentError(lua_State *L, int index, const char *expected);
[[noreturn]] OVRA_EXPORT void missingArgument(lua_State *L, int index);
[[noreturn]] OVRA_EXPORT void rangeError(lua_State *L, int index, const char *type);
[[noreturn]] OVRA_EXPORT void noOverload(lua_State *L, int first);
// Checks that the argument is present; a missing argument and nil are told apart.
OVRA_EXPORT void checkPresent(lua_State *L, int index);

// Pushes "lua: error: <chunk>:<line>: " for the innermost script function on the stack.
OVRA_EXPORT void pushErrorPrefix(lua_State *L);

// Runs the invoker of a bound closure, catching every C++ exception and raising it as a
// Lua error once nothing with a destructor is left on the C++ stack.
using Invoker = int (*)(lua_State *L, void *functor, int first);
OVRA_EXPORT int dispatch(lua_State *L, Invoker invoker);
// Pushes a closure calling the invoker with the functor (at the top of the stack, popped)
// and with the name and kind used in errors.
OVRA_EXPORT void pushClosure(lua_State *L, lua_CFunction thunk, const char *name, CallKind kind);
// A userdata holding a functor, destroyed with it.
OVRA_EXPORT void *newFunctor(lua_State *L, size_t size, Destroy destroy);

} // namespace Detail
} // namespace Script
} // namespace Ovra
