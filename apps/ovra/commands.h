#pragma once

// The tool's commands. Each takes the arguments behind its name and returns the exit code.
#include "cli.h"

namespace Commands {

using Function = int (*)(Cli::Context &context, const QStringList &arguments);

struct Command
{
    const char *name;    // one word, or a group and a word ("sprites export")
    const char *summary; // one line for the list of commands
    Function run;
};

// Every command, in the order of the list that "ovra --help" shows.
const QList<Command> &all();

// Projects (commands_project.cpp).
int info(Cli::Context &context, const QStringList &arguments);
int check(Cli::Context &context, const QStringList &arguments);
int backup(Cli::Context &context, const QStringList &arguments);
int restore(Cli::Context &context, const QStringList &arguments);
int backups(Cli::Context &context, const QStringList &arguments);

// Pictures, animations and sounds (commands_media.cpp).
int gif(Cli::Context &context, const QStringList &arguments);
int spritesExport(Cli::Context &context, const QStringList &arguments);
int spritesImport(Cli::Context &context, const QStringList &arguments);
int paletteConvert(Cli::Context &context, const QStringList &arguments);
int imageScale(Cli::Context &context, const QStringList &arguments);
int imageRotate(Cli::Context &context, const QStringList &arguments);
int soundConvert(Cli::Context &context, const QStringList &arguments);
int soundPlay(Cli::Context &context, const QStringList &arguments);

// Scripts (commands_run.cpp).
int run(Cli::Context &context, const QStringList &arguments);

} // namespace Commands
