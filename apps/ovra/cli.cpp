#include "cli.h"

#include <QJsonDocument>

namespace Cli {

void Context::say(const QString &text)
{
    if (!quiet && !json)
        m_out << text << '\n';
}

void Context::printJson(const QJsonObject &object)
{
    m_out << QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)) << '\n';
}

int Context::inputError(const QString &command, const QString &file, const QString &reason)
{
    m_err << "ovra " << command << ": " << file << ": " << reason << '\n';
    return InputError;
}

int Context::usageError(const QString &command, const QString &text)
{
    m_err << "ovra " << command << ": " << text << '\n'
          << "Try 'ovra " << command << " --help'.\n";
    return UsageError;
}

Parser::Parser(const QString &name, const QString &description, const QString &arguments, int extras)
    : m_name(name)
    , m_arguments(arguments)
    , m_extras(extras)
{
    m_parser.setApplicationDescription(description);
    m_parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    m_parser.addOption({{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this help.")});
    m_parser.addOption({{QStringLiteral("q"), QStringLiteral("quiet")}, QStringLiteral("Say nothing but errors.")});
    m_parser.addOption({QStringLiteral("plugins"), QStringLiteral("Load the engines' plug-ins from DIR."), QStringLiteral("DIR")});
    if (extras & Output)
        m_parser.addOption({{QStringLiteral("o"), QStringLiteral("output")}, QStringLiteral("Write the result to FILE."), QStringLiteral("FILE")});
    if (extras & Json)
        m_parser.addOption({QStringLiteral("json"), QStringLiteral("Answer in JSON, on one line, for programs.")});
}

QString Parser::helpText() const
{
    // Qt's own text starts with a usage line of the program's path; ours names the command.
    QString text = m_parser.helpText();
    const int lineEnd = text.indexOf(QLatin1Char('\n'));
    const QString usage = QStringLiteral("Usage: ovra %1 [options]%2").arg(m_name, m_arguments.isEmpty() ? QString() : QLatin1Char(' ') + m_arguments);
    return usage + (lineEnd < 0 ? QString() : text.mid(lineEnd));
}

int Parser::parse(Context &context, const QStringList &arguments, int minimum, int maximum)
{
    if (!m_parser.parse(QStringList{QStringLiteral("ovra")} + arguments))
        return context.usageError(m_name, m_parser.errorText());
    if (m_parser.isSet(QStringLiteral("help"))) {
        context.out() << helpText();
        return Success;
    }
    context.quiet = m_parser.isSet(QStringLiteral("quiet"));
    context.json = (m_extras & Json) && m_parser.isSet(QStringLiteral("json"));
    if (m_parser.isSet(QStringLiteral("plugins")))
        context.pluginDirectory = m_parser.value(QStringLiteral("plugins"));
    const int count = m_parser.positionalArguments().size();
    if (count < minimum)
        return context.usageError(m_name, QStringLiteral("missing arguments: %1").arg(m_arguments));
    if (maximum >= 0 && count > maximum)
        return context.usageError(m_name, QStringLiteral("too many arguments: '%1'").arg(m_parser.positionalArguments().at(maximum)));
    if ((m_extras & Output) && m_parser.isSet(QStringLiteral("output")) && output().isEmpty())
        return context.usageError(m_name, QStringLiteral("-o needs a file name"));
    return -1;
}

QString Parser::output() const
{
    return (m_extras & Output) ? m_parser.value(QStringLiteral("output")) : QString();
}

bool number(Context &context, const Parser &parser, const QString &option, double *value)
{
    bool ok = false;
    const double read = parser.value(option).toDouble(&ok);
    if (!ok) {
        context.usageError(parser.name(), QStringLiteral("--%1 takes a number, not '%2'").arg(option, parser.value(option)));
        return false;
    }
    *value = read;
    return true;
}

} // namespace Cli
