#pragma once

// What every command of the tool shares: exit codes, the output streams with --quiet and
// --json, and the parsing of a command's arguments (options before or after them).
#include <QCommandLineParser>
#include <QJsonObject>
#include <QStringList>
#include <QTextStream>

namespace Cli {

enum ExitCode {
    Success = 0,
    Findings = 1,   // the command ran, and found problems (check)
    UsageError = 2, // the command line was wrong
    InputError = 3, // a file couldn't be read, or written
};

// The streams of one run, and how much the user wants to hear.
class Context
{
public:
    Context(QTextStream &out, QTextStream &err) : m_out(out), m_err(err) {}

    QTextStream &out() { return m_out; }
    QTextStream &err() { return m_err; }
    bool quiet = false;
    bool json = false;
    // Where the plug-ins are, when the user said (--plugins).
    QString pluginDirectory;

    // A line of progress or result for people: nothing with --quiet or --json.
    void say(const QString &text);
    // The machine-readable answer of --json, on one line.
    void printJson(const QJsonObject &object);
    // "ovra COMMAND: FILE: REASON" on stderr, and the input error code.
    int inputError(const QString &command, const QString &file, const QString &reason);
    // "ovra COMMAND: TEXT" and a hint at --help on stderr, and the usage error code.
    int usageError(const QString &command, const QString &text);

private:
    QTextStream &m_out;
    QTextStream &m_err;
};

// A command's parser with the options every command has (--help, --quiet, --plugins)
// and, on request, -o/--output and --json.
class Parser
{
public:
    enum Extra { None = 0, Output = 1, Json = 2 };

    // `name` is the command as typed ("sprites export"); `arguments` the synopsis of its
    // arguments ("PROJECT DIRECTORY").
    Parser(const QString &name, const QString &description, const QString &arguments, int extras = None);

    QCommandLineParser &options() { return m_parser; }
    void addOption(const QCommandLineOption &option) { m_parser.addOption(option); }

    // Parses `arguments` (without the program and command names). Returns -1 when the
    // command should go on; else the exit code to end with (help shown, or a usage error
    // reported). Checks the count of positional arguments against min and max (-1: any).
    int parse(Context &context, const QStringList &arguments, int minimum, int maximum);

    QStringList positional() const { return m_parser.positionalArguments(); }
    bool isSet(const QString &name) const { return m_parser.isSet(name); }
    QString value(const QString &name) const { return m_parser.value(name); }
    // The -o value, or empty.
    QString output() const;

    QString name() const { return m_name; }
    QString helpText() const;

private:
    QCommandLineParser m_parser;
    QString m_name;
    QString m_arguments;
    int m_extras;
};

// A number option's value: false (and a usage error said) when it isn't one.
bool number(Context &context, const Parser &parser, const QString &option, double *value);

} // namespace Cli
