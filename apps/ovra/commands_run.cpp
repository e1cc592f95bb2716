// Runs a Lua script over the model: the library's classes, the engines' own, and a
// project opened for it. Scripts do batch work the tool has no command for.
#include "commands.h"
#include "enginehost.h"

#include "engine/script/script.h"
#include "engine/script/scriptclasses.h"
#include "project/project.h"

#include <QFile>

using namespace Ovra;

namespace {

const QString command = QStringLiteral("run");

// The text of an error as a user reads it: the binding's "lua: error: " prefix goes, the
// chunk name and line stay ("script.lua:12: bad argument ...").
QString errorText(lua_State *L)
{
    QString text;
    if (lua_type(L, -1) == LUA_TSTRING || lua_type(L, -1) == LUA_TNUMBER)
        text = QString::fromUtf8(lua_tostring(L, -1));
    else
        text = QStringLiteral("error object is a %1 value").arg(QString::fromUtf8(luaL_typename(L, -1)));
    const QLatin1String prefix("lua: error: ");
    if (text.startsWith(prefix))
        text.remove(0, prefix.size());
    return text;
}

// A first line "#!..." lets a script run as a program; Lua would take it for code. It
// becomes a comment, so the line numbers stay.
QByteArray withoutShebang(QByteArray source)
{
    if (source.startsWith("#!"))
        source.replace(0, 2, "--");
    return source;
}

} // namespace

namespace Commands {

int run(Cli::Context &context, const QStringList &arguments)
{
    // What stands behind "--" belongs to the script, even when it looks like an option.
    const int separator = arguments.indexOf(QStringLiteral("--"));
    const QStringList own = separator < 0 ? arguments : QStringList(arguments.mid(0, separator));
    const QStringList scriptArguments = separator < 0 ? QStringList() : QStringList(arguments.mid(separator + 1));

    Cli::Parser parser(command,
                       QStringLiteral("Run a Lua script with the model's classes. The project, if given, is the global "
                                      "'project'; the arguments after '--' are 'arg' and '...'. The tool saves nothing: the "
                                      "script writes the files it changed (file:toFile). Libraries: base, coroutine, table, "
                                      "string, utf8, math, io and os."),
                       QStringLiteral("SCRIPT.lua [PROJECT] [-- ARGS]"));
    const int parsed = parser.parse(context, own, 1, 2);
    if (parsed >= 0)
        return parsed;
    const QString scriptName = parser.positional().at(0);

    QFile file(scriptName);
    if (!file.open(QIODevice::ReadOnly))
        return context.inputError(command, scriptName, file.errorString());
    const QByteArray source = withoutShebang(file.readAll());
    file.close();

    EngineHost host(context.pluginDirectory);
    ProjectPointer project;
    if (parser.positional().size() > 1) {
        QString error;
        project = host.openProject(parser.positional().at(1), &error);
        if (!project)
            return context.inputError(command, parser.positional().at(1), error);
    }

    // io and os beside the safe set: a tool's script reads lists, writes reports and
    // looks at the environment. Loading native modules (package) and the debug library
    // stay out.
    Script::State state;
    state.openLibraries(Script::State::SafeLibraries | Script::State::IoLibrary | Script::State::OsLibrary);
    Script::Table globals = state.globals();
    registerScriptClasses(globals);
    // Every engine that a plug-in brought adds its script types, so that a script without
    // a project reaches them as well.
    registerEngineScriptClasses(state);
    if (project)
        globals.set("project", static_cast<Project *>(project.get()));
    globals.set("arg", scriptArguments);
    // print() writes to the tool's own output stream, flushed at once, so that its lines
    // and those of io.write (straight to stdout) come out in the order the script made them.
    QTextStream &out = context.out();
    state.setPrint([&out](const QString &line) {
        out << line << '\n';
        out.flush();
    });

    lua_State *L = state.luaState();

    // "=" makes Lua name the chunk as given: "script.lua:12:" in every message.
    const QByteArray chunk = '=' + scriptName.toUtf8();
    int status = luaL_loadbufferx(L, source.constData(), size_t(source.size()), chunk.constData(), "t");
    if (status == LUA_OK) {
        for (const QString &argument : scriptArguments)
            lua_pushstring(L, argument.toUtf8().constData());
        status = lua_pcall(L, scriptArguments.size(), 0, 0);
    }
    context.out().flush();
    if (status != LUA_OK) {
        context.err() << "ovra run: " << errorText(L) << '\n';
        return Cli::Findings;
    }
    return Cli::Success;
}

} // namespace Commands
