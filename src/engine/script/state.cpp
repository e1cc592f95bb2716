#include "engine/script/state.h"

namespace Ovra {
namespace Script {

namespace {

// The text of an error object: Lua errors are strings, but error() takes any value.
QString errorText(lua_State *L, int index)
{
    if (lua_type(L, index) == LUA_TSTRING || lua_type(L, index) == LUA_TNUMBER)
        return QString::fromUtf8(lua_tostring(L, index));
    return QStringLiteral("lua: error: (error object is a %1 value)").arg(QString::fromUtf8(luaL_typename(L, index)));
}

} // namespace

State::State()
    : m_state(luaL_newstate())
    , m_owned(true)
{
}

State::State(lua_State *host)
    : m_state(host)
    , m_owned(false)
{
}

State::~State()
{
    if (m_owned)
        lua_close(m_state);
}

void State::setPrint(std::function<void(const QString &line)> sink)
{
    m_print = std::move(sink);
    lua_pushlightuserdata(m_state, this);
    lua_pushcclosure(m_state, &State::print, 1);
    lua_setglobal(m_state, "print");
}

int State::print(lua_State *L)
{
    auto *state = static_cast<State *>(lua_touserdata(L, lua_upvalueindex(1)));
    const int count = lua_gettop(L);
    QByteArray line;
    for (int i = 1; i <= count; ++i) {
        size_t length = 0;
        const char *text = luaL_tolstring(L, i, &length);
        if (i > 1)
            line += '\t';
        line.append(text, int(length));
        lua_pop(L, 1);
    }
    if (state->m_print)
        state->m_print(QString::fromUtf8(line));
    return 0;
}

void State::openLibraries(Libraries libraries)
{
    struct Library
    {
        State::Library flag;
        const char *name;
        lua_CFunction open;
    };
    static const Library all[] = {
        {BaseLibrary, "_G", luaopen_base},         {CoroutineLibrary, LUA_COLIBNAME, luaopen_coroutine},
        {TableLibrary, LUA_TABLIBNAME, luaopen_table}, {StringLibrary, LUA_STRLIBNAME, luaopen_string},
        {Utf8Library, LUA_UTF8LIBNAME, luaopen_utf8},  {MathLibrary, LUA_MATHLIBNAME, luaopen_math},
        {IoLibrary, LUA_IOLIBNAME, luaopen_io},        {OsLibrary, LUA_OSLIBNAME, luaopen_os},
        {PackageLibrary, LUA_LOADLIBNAME, luaopen_package}, {DebugLibrary, LUA_DBLIBNAME, luaopen_debug},
    };
    for (const Library &library : all) {
        if (libraries.testFlag(library.flag)) {
            luaL_requiref(m_state, library.name, library.open, 1);
            lua_pop(m_state, 1);
        }
    }
}

Table State::globals() const
{
    return Table::globals(m_state);
}

bool State::run(const QString &code, const QString &chunkName, QString *error)
{
    const QByteArray source = code.toUtf8();
    // "=" makes Lua print the name as it is, "script.lua:3:", rather than quoting the code.
    const QByteArray name = '=' + (chunkName.isEmpty() ? QByteArrayLiteral("script") : chunkName.toUtf8());
    int top = lua_gettop(m_state);
    int status = luaL_loadbufferx(m_state, source.constData(), size_t(source.size()), name.constData(), "t");
    if (status == LUA_OK)
        status = lua_pcall(m_state, 0, 0, 0);
    if (status != LUA_OK && error)
        *error = errorText(m_state, -1);
    lua_settop(m_state, top);
    return status == LUA_OK;
}

bool State::pushGlobalFunction(const char *name)
{
    lua_rawgeti(m_state, LUA_REGISTRYINDEX, LUA_RIDX_GLOBALS);
    lua_pushstring(m_state, name);
    lua_rawget(m_state, -2);
    lua_remove(m_state, -2);
    if (lua_isfunction(m_state, -1))
        return true;
    lua_pop(m_state, 1);
    return false;
}

CallResult State::failedCall(int top, const QString &error)
{
    lua_settop(m_state, top);
    CallResult result;
    result.error = error;
    return result;
}

CallResult State::finishCall(int top, int arguments)
{
    CallResult result;
    if (lua_pcall(m_state, arguments, LUA_MULTRET, 0) != LUA_OK)
        return failedCall(top, errorText(m_state, -1));
    result.ok = true;
    for (int index = top + 1; index <= lua_gettop(m_state); ++index) {
        int type = lua_type(m_state, index);
        if (type == LUA_TUSERDATA || type == LUA_TLIGHTUSERDATA || type == LUA_TFUNCTION || type == LUA_TTHREAD) {
            result.values.append(QVariant());
            continue;
        }
        try {
            result.values.append(Detail::toVariant(m_state, index));
        } catch (const Detail::Error &) {
            result.values.append(QVariant());
        }
    }
    lua_settop(m_state, top);
    return result;
}

} // namespace Script
} // namespace Ovra
