// The command-line tool: batch work on the projects and files of the engines' content.
// "ovra COMMAND --help" tells each command; commands.h lists them.
#include "commands.h"
#include "terminal.h"

#include "foundation/utilities.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>

#include <unistd.h>

namespace Commands {

const QList<Command> &all()
{
    static const QList<Command> list{
        {"info", "Show a project's files and counts", info},
        {"check", "Parse definition files and print every message", check},
        {"gif", "Export an animation as an animated GIF", gif},
        {"sprites export", "Write a project's sprites as pictures", spritesExport},
        {"sprites import", "Add pictures to a project's sprites", spritesImport},
        {"palette convert", "Convert a palette between file formats", paletteConvert},
        {"image scale", "Scale a picture with one of the filters", imageScale},
        {"image rotate", "Rotate a picture", imageRotate},
        {"sound convert", "Convert a sound between formats, rates and depths", soundConvert},
        {"sound play", "Play a sound file", soundPlay},
        {"backup", "Take a backup of a project's work", backup},
        {"restore", "Bring a backup back over the working files", restore},
        {"backups", "List the backups of a project's work", backups},
        {"run", "Run a Lua script on a project", run},
    };
    return list;
}

} // namespace Commands

namespace {

void printCommands(QTextStream &out)
{
    out << "Usage: ovra COMMAND [options] [arguments]\n\n"
           "Batch work on the projects and files of 2D game content.\n\nCommands:\n";
    for (const Commands::Command &command : Commands::all())
        out << QStringLiteral("  %1%2\n").arg(QLatin1String(command.name), -18).arg(QLatin1String(command.summary));
    out << "\nRun 'ovra COMMAND --help' for a command's options.\n";
}

} // namespace

int main(int argc, char *argv[])
{
    // The tool never shows a window; text layout only needs the fonts.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // Qt wants a private runtime directory and warns on every run without one (in
    // containers and CI); a directory of our own keeps stderr for the tool's messages.
    if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR")) {
        const QString runtime = QDir::tempPath() + QStringLiteral("/ovra-runtime-%1").arg(getuid());
        if (QDir().mkpath(runtime) && QFile::setPermissions(runtime, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner))
            qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime));
    }
    QGuiApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("ovra"));
    QCoreApplication::setApplicationVersion(QString::fromLatin1(Ovra::version()));

    QTextStream out(stdout);
    QTextStream err(stderr);
    Cli::Context context(out, err);
    Terminal::installAnswerer(&err);

    QStringList arguments = app.arguments().mid(1);
    if (arguments.isEmpty() || arguments.first() == QLatin1String("--help") || arguments.first() == QLatin1String("-h")) {
        printCommands(out);
        return arguments.isEmpty() ? Cli::UsageError : Cli::Success;
    }
    if (arguments.first() == QLatin1String("--version")) {
        out << "ovra " << Ovra::version() << '\n';
        return Cli::Success;
    }
    // A command is a word, or a group and a word.
    for (const Commands::Command &command : Commands::all()) {
        const QStringList words = QString::fromLatin1(command.name).split(QLatin1Char(' '));
        if (arguments.mid(0, words.size()) == words)
            return command.run(context, arguments.mid(words.size()));
    }
    bool group = false;
    for (const Commands::Command &command : Commands::all())
        group = group || QString::fromLatin1(command.name).startsWith(arguments.first() + QLatin1Char(' '));
    err << "ovra: '" << arguments.mid(0, group ? 2 : 1).join(QLatin1Char(' ')) << "' is no command. See 'ovra --help'.\n";
    return Cli::UsageError;
}
