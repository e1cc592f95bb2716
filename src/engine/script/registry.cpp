#include "engine/script/registry.h"

#include <cxxabi.h>

#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <typeindex>
#include <unordered_map>
#include <vector>

namespace Ovra {
namespace Script {
namespace Detail {

struct TypeInfo
{
    struct Base
    {
        TypeInfo *type;
        Cast cast;
    };

    QByteArray name;               // empty until the type is registered
    std::vector<Base> bases;
    std::vector<Construct> constructors;
    Destroy destroy = nullptr;
    int metatable = LUA_NOREF;
    int members[3] = {LUA_NOREF, LUA_NOREF, LUA_NOREF}; // methods, getters, setters
    int typeTable = LUA_NOREF;
};

namespace {

// Joins the parts of a message; QStringBuilder can't take plain C strings here.
template <class... Parts>
QByteArray join(const Parts &...parts)
{
    QByteArray result;
    ((result += parts), ...);
    return result;
}

// Addresses used as unique keys in the Lua registry and in our metatables.
char registryKey;
char markerKey;
char functorMetaKey;

// The types known to one Lua state. It lives in a userdata of the state's registry, so it
// is destroyed when the state is closed, whoever owns the state.
struct Registry
{
    std::unordered_map<std::type_index, std::unique_ptr<TypeInfo>> types;
};

int collectRegistry(lua_State *L)
{
    auto **registry = static_cast<Registry **>(lua_touserdata(L, 1));
    delete *registry;
    *registry = nullptr;
    return 0;
}

Registry *registry(lua_State *L)
{
    if (lua_rawgetp(L, LUA_REGISTRYINDEX, &registryKey) == LUA_TUSERDATA) {
        auto *registry = *static_cast<Registry **>(lua_touserdata(L, -1));
        lua_pop(L, 1);
        return registry;
    }
    lua_pop(L, 1);
    auto **slot = static_cast<Registry **>(lua_newuserdata(L, sizeof(Registry *)));
    *slot = new Registry;
    lua_createtable(L, 0, 1);
    lua_pushcfunction(L, collectRegistry);
    lua_setfield(L, -2, "__gc");
    lua_setmetatable(L, -2);
    lua_rawsetp(L, LUA_REGISTRYINDEX, &registryKey);
    return *slot;
}

TypeInfo *lookup(lua_State *L, const std::type_info &type, bool create)
{
    auto &types = registry(L)->types;
    auto it = types.find(std::type_index(type));
    if (it != types.end())
        return it->second.get();
    if (!create)
        return nullptr;
    auto *info = new TypeInfo;
    types.emplace(std::type_index(type), std::unique_ptr<TypeInfo>(info));
    return info;
}

// Depth first through the registered bases; null when the wanted type isn't among them.
void *castTo(const TypeInfo *from, void *pointer, const TypeInfo *to)
{
    if (from == to)
        return pointer;
    for (const TypeInfo::Base &base : from->bases) {
        if (void *result = castTo(base.type, base.cast(pointer), to))
            return result;
    }
    return nullptr;
}

// Lua errors raised from the handlers below, which hold no C++ objects, so the long
// jump of lua_error skips no destructor.
[[noreturn]] void raise(lua_State *L, const char *format, ...)
{
    pushErrorPrefix(L);
    va_list arguments;
    va_start(arguments, format);
    lua_pushvfstring(L, format, arguments);
    va_end(arguments);
    lua_concat(L, 2);
    lua_error(L);
    std::abort(); // lua_error doesn't return
}

// Pushes the member of that kind found in the type or its bases; false (nothing pushed)
// when there is none. The key is at index 2, as in __index and __newindex.
bool findMember(lua_State *L, const TypeInfo *type, int kind)
{
    if (type->members[kind] != LUA_NOREF) {
        lua_rawgeti(L, LUA_REGISTRYINDEX, type->members[kind]);
        lua_pushvalue(L, 2);
        if (lua_rawget(L, -2) != LUA_TNIL) {
            lua_remove(L, -2);
            return true;
        }
        lua_pop(L, 2);
    }
    for (const TypeInfo::Base &base : type->bases) {
        if (findMember(L, base.type, kind))
            return true;
    }
    return false;
}

enum { Methods = 0, Getters = 1, Setters = 2 };

// Reading a member that doesn't exist is an error rather than nil: a misspelt name in a
// script then fails where it is written, not later as "attempt to call a nil value".
int indexHandler(lua_State *L)
{
    Box *box = toBox(L, 1);
    if (!box || lua_type(L, 2) != LUA_TSTRING)
        raise(L, "%s can't be indexed with a %s", box ? scriptName(box->type).constData() : "value",
              luaL_typename(L, 2));
    if (findMember(L, box->type, Getters)) {
        lua_pushvalue(L, 1);
        lua_call(L, 1, 1);
        return 1;
    }
    if (findMember(L, box->type, Methods))
        return 1;
    raise(L, "%s has no member '%s'", scriptName(box->type).constData(), lua_tostring(L, 2));
}

int newIndexHandler(lua_State *L)
{
    Box *box = toBox(L, 1);
    if (!box || lua_type(L, 2) != LUA_TSTRING)
        raise(L, "%s can't be indexed with a %s", box ? scriptName(box->type).constData() : "value",
              luaL_typename(L, 2));
    if (findMember(L, box->type, Setters)) {
        lua_pushvalue(L, 1);
        lua_pushvalue(L, 3);
        lua_call(L, 2, 0);
        return 0;
    }
    if (findMember(L, box->type, Getters) || findMember(L, box->type, Methods))
        raise(L, "member '%s' of %s is read-only", lua_tostring(L, 2), scriptName(box->type).constData());
    raise(L, "%s has no member '%s'", scriptName(box->type).constData(), lua_tostring(L, 2));
}

int gcHandler(lua_State *L)
{
    Box *box = toBox(L, 1);
    if (box && box->owned && box->type->destroy) {
        box->owned = false;
        box->type->destroy(box->pointer);
    }
    return 0;
}

// Two userdata are equal when they show the same object, even through different bases.
int eqHandler(lua_State *L)
{
    Box *a = toBox(L, 1);
    Box *b = toBox(L, 2);
    bool equal = a && b
        && (castTo(a->type, a->pointer, b->type) == b->pointer
            || castTo(b->type, b->pointer, a->type) == a->pointer);
    lua_pushboolean(L, equal);
    return 1;
}

int toStringHandler(lua_State *L)
{
    Box *box = toBox(L, 1);
    lua_pushfstring(L, "%s: %p", box ? scriptName(box->type).constData() : "?", box ? box->pointer : nullptr);
    return 1;
}

int constructInvoker(lua_State *L, void *functor, int first)
{
    auto *type = static_cast<TypeInfo *>(functor);
    int count = lua_gettop(L) - first + 1;
    if (type->constructors.empty()) {
        pushErrorPrefix(L);
        QByteArray message = lua_tostring(L, -1);
        lua_pop(L, 1);
        throw Error{join(message, type->name, " has no constructor: scripts receive objects of this type")};
    }
    for (Construct construct : type->constructors) {
        int results = construct(L, first, count);
        if (results >= 0)
            return results;
    }
    pushErrorPrefix(L);
    QByteArray message = lua_tostring(L, -1);
    lua_pop(L, 1);
    message += join("no constructor of ", type->name, " takes (");
    for (int index = first; index < first + count; ++index)
        message += join(index > first ? ", " : "", describe(L, index));
    throw Error{join(message, ")")};
}

int constructHandler(lua_State *L)
{
    return dispatch(L, constructInvoker);
}

int collectFunctor(lua_State *L)
{
    auto *destroy = static_cast<Destroy *>(lua_touserdata(L, 1));
    if (destroy && *destroy) {
        Destroy function = *destroy;
        *destroy = nullptr;
        function(reinterpret_cast<char *>(destroy) + sizeof(std::max_align_t));
    }
    return 0;
}

constexpr size_t roundUp(size_t size, size_t alignment)
{
    return (size + alignment - 1) / alignment * alignment;
}

} // namespace

QByteArray typeName(lua_State *L, const std::type_info &type)
{
    if (TypeInfo *info = lookup(L, type, false); info && !info->name.isEmpty())
        return info->name;
    int status = 0;
    char *demangled = abi::__cxa_demangle(type.name(), nullptr, nullptr, &status);
    QByteArray name = status == 0 && demangled ? QByteArray(demangled) : QByteArray(type.name());
    std::free(demangled);
    return name;
}

QByteArray describe(lua_State *L, int index)
{
    if (Box *box = toBox(L, index))
        return box->type->name;
    if (lua_isnone(L, index))
        return QByteArrayLiteral("no value");
    return luaL_typename(L, index);
}

const QByteArray &scriptName(const TypeInfo *type)
{
    return type->name;
}

TypeInfo *registerType(lua_State *L, const std::type_info &type, const QByteArray &name, Destroy destroy)
{
    TypeInfo *info = lookup(L, type, true);
    if (info->name.isEmpty())
        info->name = name;
    if (destroy)
        info->destroy = destroy;
    if (info->metatable != LUA_NOREF)
        return info;

    lua_createtable(L, 0, 8);
    lua_pushstring(L, info->name.constData());
    lua_setfield(L, -2, "__name");
    lua_pushlightuserdata(L, info);
    lua_rawsetp(L, -2, &markerKey);
    const luaL_Reg handlers[] = {
        {"__index", indexHandler}, {"__newindex", newIndexHandler}, {"__gc", gcHandler},
        {"__eq", eqHandler},       {"__tostring", toStringHandler}, {nullptr, nullptr}};
    luaL_setfuncs(L, handlers, 0);
    info->metatable = luaL_ref(L, LUA_REGISTRYINDEX);
    for (int &members : info->members) {
        lua_newtable(L);
        members = luaL_ref(L, LUA_REGISTRYINDEX);
    }
    return info;
}

void addBase(lua_State *L, TypeInfo *type, const std::type_info &base, Cast cast)
{
    type->bases.push_back({lookup(L, base, true), cast});
}

void addConstructor(TypeInfo *type, Construct construct)
{
    type->constructors.push_back(construct);
}

void setMember(lua_State *L, TypeInfo *type, MemberKind kind, const char *name)
{
    int table = kind == MemberKind::Meta ? type->metatable
        : kind == MemberKind::Method     ? type->members[Methods]
        : kind == MemberKind::Getter     ? type->members[Getters]
                                         : type->members[Setters];
    lua_rawgeti(L, LUA_REGISTRYINDEX, table);
    lua_insert(L, -2);
    lua_setfield(L, -2, name);
    lua_pop(L, 1);
}

void pushTypeTable(lua_State *L, TypeInfo *type)
{
    if (type->typeTable != LUA_NOREF) {
        lua_rawgeti(L, LUA_REGISTRYINDEX, type->typeTable);
        return;
    }
    lua_newtable(L);
    lua_createtable(L, 0, 1);
    lua_pushlightuserdata(L, type);
    lua_pushstring(L, type->name.constData());
    lua_pushinteger(L, int(CallKind::Constructor));
    lua_pushcclosure(L, constructHandler, 3);
    lua_setfield(L, -2, "__call");
    lua_setmetatable(L, -2);
    lua_pushvalue(L, -1);
    type->typeTable = luaL_ref(L, LUA_REGISTRYINDEX);
}

Box *toBox(lua_State *L, int index)
{
    void *data = lua_touserdata(L, index);
    if (!data || lua_islightuserdata(L, index) || !lua_getmetatable(L, index))
        return nullptr;
    bool ours = lua_rawgetp(L, -1, &markerKey) == LUA_TLIGHTUSERDATA;
    lua_pop(L, 2);
    return ours ? static_cast<Box *>(data) : nullptr;
}

void *toObject(lua_State *L, int index, const std::type_info &wanted, bool allowNil)
{
    checkPresent(L, index);
    if (lua_isnil(L, index)) {
        if (allowNil)
            return nullptr;
        argumentError(L, index, typeName(L, wanted).constData());
    }
    Box *box = toBox(L, index);
    void *result = box ? castTo(box->type, box->pointer, lookup(L, wanted, true)) : nullptr;
    if (!result)
        argumentError(L, index, typeName(L, wanted).constData());
    return result;
}

bool isObject(lua_State *L, int index, const std::type_info &wanted, bool allowNil)
{
    if (lua_isnoneornil(L, index))
        return allowNil && !lua_isnone(L, index);
    Box *box = toBox(L, index);
    return box && castTo(box->type, box->pointer, lookup(L, wanted, true));
}

[[noreturn]] static void notRegistered(lua_State *L, const std::type_info &type)
{
    throw Error{join("lua: error: ", typeName(L, type), " is not a registered script type")};
}

void pushObject(lua_State *L, void *pointer, const std::type_info &staticType, void *mostDerived,
                const std::type_info *dynamicType)
{
    if (!pointer) {
        lua_pushnil(L);
        return;
    }
    // The static type needn't be registered itself when the dynamic one is and names it
    // as a base: a QObject* result that is a registered class still arrives as that class.
    TypeInfo *type = lookup(L, staticType, false);
    if (type && dynamicType && *dynamicType != staticType) {
        TypeInfo *dynamic = lookup(L, *dynamicType, false);
        if (dynamic && dynamic->metatable != LUA_NOREF && castTo(dynamic, mostDerived, type) == pointer) {
            type = dynamic;
            pointer = mostDerived;
        }
    }
    if (!type || type->metatable == LUA_NOREF)
        notRegistered(L, staticType);
    auto *box = static_cast<Box *>(lua_newuserdata(L, sizeof(Box)));
    *box = Box{pointer, type, false};
    lua_rawgeti(L, LUA_REGISTRYINDEX, type->metatable);
    lua_setmetatable(L, -2);
}

void *newValue(lua_State *L, const std::type_info &type, size_t size, size_t alignment)
{
    TypeInfo *info = lookup(L, type, false);
    if (!info || info->metatable == LUA_NOREF || !info->destroy)
        notRegistered(L, type);
    size_t offset = roundUp(sizeof(Box), alignment);
    auto *data = static_cast<char *>(lua_newuserdata(L, offset + size));
    auto *box = reinterpret_cast<Box *>(data);
    *box = Box{data + offset, info, false};
    lua_rawgeti(L, LUA_REGISTRYINDEX, info->metatable);
    lua_setmetatable(L, -2);
    return data + offset;
}

void commitValue(lua_State *L, int index)
{
    if (Box *box = toBox(L, index))
        box->owned = true;
}

void pushErrorPrefix(lua_State *L)
{
    lua_Debug record;
    for (int level = 0; lua_getstack(L, level, &record); ++level) {
        lua_getinfo(L, "Sl", &record);
        if (record.currentline > 0) {
            lua_pushfstring(L, "lua: error: %s:%d: ", record.short_src, record.currentline);
            return;
        }
    }
    lua_pushliteral(L, "lua: error: ");
}

static QByteArray callPrefix(lua_State *L)
{
    pushErrorPrefix(L);
    QByteArray prefix = lua_tostring(L, -1);
    lua_pop(L, 1);
    return prefix;
}

// The name and kind of the bound closure that is running, read through the debug
// interface: these helpers may also be reached from C++ outside any closure, where the
// pseudo-indices of upvalues would point nowhere.
static CallKind currentCall(lua_State *L, QByteArray *name)
{
    *name = QByteArrayLiteral("?");
    CallKind kind = CallKind::Function;
    lua_Debug record;
    if (!lua_getstack(L, 0, &record) || !lua_getinfo(L, "f", &record))
        return kind;
    if (lua_iscfunction(L, -1)) {
        if (lua_getupvalue(L, -1, 2)) {
            if (lua_type(L, -1) == LUA_TSTRING)
                *name = lua_tostring(L, -1);
            lua_pop(L, 1);
        }
        if (lua_getupvalue(L, -1, 3)) {
            if (lua_isinteger(L, -1))
                kind = CallKind(lua_tointeger(L, -1));
            lua_pop(L, 1);
        }
    }
    lua_pop(L, 1);
    return kind;
}

static QByteArray functionName(lua_State *L)
{
    QByteArray name;
    currentCall(L, &name);
    return name;
}

// Names the slot as the script writer sees it: a method's self isn't counted.
static QByteArray slotName(lua_State *L, int index)
{
    QByteArray name;
    CallKind kind = currentCall(L, &name);
    if (kind == CallKind::Method && index == 1)
        return QByteArrayLiteral("self");
    int shown = kind == CallKind::Function ? index : index - 1;
    return join("argument #", QByteArray::number(shown));
}

void argumentError(lua_State *L, int index, const char *expected)
{
    throw Error{join(callPrefix(L), "bad ", slotName(L, index), " to '", functionName(L), "' (expected ", expected,
                     ", got ", describe(L, index), ")")};
}

void missingArgument(lua_State *L, int index)
{
    throw Error{join(callPrefix(L), "missing ", slotName(L, index), " to '", functionName(L), "'")};
}

void rangeError(lua_State *L, int index, const char *type)
{
    throw Error{join(callPrefix(L), "bad ", slotName(L, index), " to '", functionName(L), "' (number out of ", type,
                     " range)")};
}

void noOverload(lua_State *L, int first)
{
    QByteArray message = join(callPrefix(L), "no overload of '", functionName(L), "' takes (");
    for (int index = first; index <= lua_gettop(L); ++index)
        message += join(index > first ? ", " : "", describe(L, index));
    throw Error{join(message, ")")};
}

void checkPresent(lua_State *L, int index)
{
    if (lua_isnone(L, index))
        missingArgument(L, index);
}

int dispatch(lua_State *L, Invoker invoker)
{
    void *functor = lua_touserdata(L, lua_upvalueindex(1));
    if (!lua_islightuserdata(L, lua_upvalueindex(1)))
        functor = static_cast<char *>(functor) + sizeof(std::max_align_t);
    auto kind = CallKind(lua_tointeger(L, lua_upvalueindex(3)));
    int first = kind == CallKind::Constructor ? 2 : 1;
    int results = -1;
    {
        QByteArray message;
        try {
            // A method may take its object as T*, which would let nil through as null.
            if (kind == CallKind::Method && lua_isnoneornil(L, 1)) {
                QByteArray name = functionName(L);
                argumentError(L, 1, name.left(name.lastIndexOf('.')).constData());
            }
            results = invoker(L, functor, first);
        } catch (const Error &error) {
            message = error.message;
        } catch (const std::exception &exception) {
            message = join(callPrefix(L), functionName(L), ": ", exception.what());
        } catch (...) {
            message = join(callPrefix(L), functionName(L), ": unknown C++ exception");
        }
        if (results < 0)
            lua_pushlstring(L, message.constData(), size_t(message.size()));
    }
    if (results < 0)
        return lua_error(L);
    return results;
}

void pushClosure(lua_State *L, lua_CFunction thunk, const char *name, CallKind kind)
{
    lua_pushstring(L, name);
    lua_pushinteger(L, int(kind));
    lua_pushcclosure(L, thunk, 3);
}

void *newFunctor(lua_State *L, size_t size, Destroy destroy)
{
    static_assert(sizeof(Destroy) <= sizeof(std::max_align_t), "functor header");
    auto *data = static_cast<char *>(lua_newuserdata(L, sizeof(std::max_align_t) + size));
    *reinterpret_cast<Destroy *>(data) = destroy;
    if (lua_rawgetp(L, LUA_REGISTRYINDEX, &functorMetaKey) != LUA_TTABLE) {
        lua_pop(L, 1);
        lua_createtable(L, 0, 1);
        lua_pushcfunction(L, collectFunctor);
        lua_setfield(L, -2, "__gc");
        lua_pushvalue(L, -1);
        lua_rawsetp(L, LUA_REGISTRYINDEX, &functorMetaKey);
    }
    lua_setmetatable(L, -2);
    return data + sizeof(std::max_align_t);
}

} // namespace Detail
} // namespace Script
} // namespace Ovra
