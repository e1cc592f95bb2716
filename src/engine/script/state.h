#pragma once

#include "engine/script/usertype.h"

#include <QVariantList>

#include <functional>

namespace Ovra {
namespace Script {

// What a call into a script function gave.
struct CallResult
{
    bool ok = false;
    QString error;
    // The results that convert to QVariant; userdata and functions arrive invalid.
    QVariantList values;
};

// A Lua state: one of its own, or the host's, which it then only borrows. Scripts run on
// the thread of the state, the GUI thread, since every member acts on model objects.
class OVRA_EXPORT State
{
public:
    enum Library {
        BaseLibrary = 0x1,
        CoroutineLibrary = 0x2,
        TableLibrary = 0x4,
        StringLibrary = 0x8,
        Utf8Library = 0x10,
        MathLibrary = 0x20,
        IoLibrary = 0x40,
        OsLibrary = 0x80,
        PackageLibrary = 0x100,
        DebugLibrary = 0x200,
        // What a script needs for computing without reaching files and programs.
        SafeLibraries = 0x3f,
        AllLibraries = 0x3ff,
    };
    Q_DECLARE_FLAGS(Libraries, Library)

    // A new state without any library.
    State();
    // Borrows the host's state, which outlives this object and is closed by the host.
    explicit State(lua_State *host);
    ~State();
    Q_DISABLE_COPY(State)

    lua_State *luaState() const { return m_state; }
    void openLibraries(Libraries libraries = AllLibraries);
    Table globals() const;

    // Sends each line that print() writes (its arguments as Lua shows them, tab-separated,
    // without the line end) to `sink` instead of the process's standard output. The state
    // keeps the sink.
    void setPrint(std::function<void(const QString &line)> sink);

    // Runs the code as a chunk of that name; errors read "name:line: message".
    bool run(const QString &code, const QString &chunkName = QString(), QString *error = nullptr);

    // Calls the global function with the arguments, converted as for bound functions.
    template <class... A>
    CallResult call(const char *function, const A &...arguments)
    {
        int top = lua_gettop(m_state);
        if (!pushGlobalFunction(function))
            return failedCall(top, QStringLiteral("lua: error: no function named ") + QString::fromUtf8(function));
        try {
            (Detail::push<A>(m_state, arguments), ...);
        } catch (const Detail::Error &error) {
            return failedCall(top, QString::fromUtf8(error.message));
        }
        return finishCall(top, int(sizeof...(A)));
    }

private:
    bool pushGlobalFunction(const char *name);
    CallResult failedCall(int top, const QString &error);
    CallResult finishCall(int top, int arguments);

    static int print(lua_State *L);

    lua_State *m_state;
    bool m_owned;
    std::function<void(const QString &)> m_print;
};

} // namespace Script
} // namespace Ovra

Q_DECLARE_OPERATORS_FOR_FLAGS(Ovra::Script::State::Libraries)
