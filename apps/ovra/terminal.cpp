#include "terminal.h"

#include <QTextStream>

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace Terminal {

bool isInteractive()
{
    return isatty(STDIN_FILENO) && isatty(STDERR_FILENO);
}

bool stderrIsTerminal()
{
    return isatty(STDERR_FILENO);
}

QMessageBox::StandardButton safeAnswer(const Ovra::Prompt &prompt)
{
    for (auto button : {QMessageBox::No, QMessageBox::NoToAll, QMessageBox::Cancel, QMessageBox::Abort,
                        QMessageBox::Close, QMessageBox::Ok}) {
        if (prompt.buttons & button)
            return button;
    }
    return QMessageBox::NoButton;
}

QuietStderr::QuietStderr()
{
    std::fflush(stderr);
    const int nothing = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nothing < 0)
        return;
    m_saved = dup(STDERR_FILENO);
    if (m_saved >= 0)
        dup2(nothing, STDERR_FILENO);
    close(nothing);
}

QuietStderr::~QuietStderr()
{
    if (m_saved < 0)
        return;
    std::fflush(stderr);
    dup2(m_saved, STDERR_FILENO);
    close(m_saved);
}

namespace {

struct Choice
{
    QMessageBox::StandardButton button;
    const char *word;
};

const Choice choices[] = {
    {QMessageBox::Yes, "yes"},       {QMessageBox::No, "no"},          {QMessageBox::YesToAll, "all"},
    {QMessageBox::NoToAll, "none"},  {QMessageBox::Ok, "ok"},          {QMessageBox::Cancel, "cancel"},
    {QMessageBox::Save, "save"},     {QMessageBox::Discard, "discard"}, {QMessageBox::Retry, "retry"},
    {QMessageBox::Ignore, "ignore"}, {QMessageBox::Abort, "abort"},    {QMessageBox::Close, "close"},
};

QMessageBox::StandardButton askAtTerminal(const Ovra::Prompt &prompt)
{
    QStringList words;
    for (const Choice &choice : choices) {
        if (prompt.buttons & choice.button)
            words << QLatin1String(choice.word);
    }
    if (words.size() <= 1) { // a notice: nothing to choose
        std::fprintf(stderr, "%s: %s\n", qUtf8Printable(prompt.title), qUtf8Printable(prompt.text));
        return words.isEmpty() ? QMessageBox::NoButton : safeAnswer(prompt);
    }
    for (;;) {
        std::fprintf(stderr, "%s: %s [%s] ", qUtf8Printable(prompt.title), qUtf8Printable(prompt.text),
                     qUtf8Printable(words.join(QLatin1Char('/'))));
        std::fflush(stderr);
        char line[256];
        if (!std::fgets(line, sizeof line, stdin))
            return safeAnswer(prompt); // the terminal went away
        const QString answer = QString::fromLocal8Bit(line).trimmed().toLower();
        for (const Choice &choice : choices) {
            const QString word = QLatin1String(choice.word);
            if ((prompt.buttons & choice.button) && !answer.isEmpty() && word.startsWith(answer))
                return choice.button;
        }
    }
}

} // namespace

void installAnswerer(QTextStream *err)
{
    Ovra::setAnswerer([err](const Ovra::Prompt &prompt) {
        if (isInteractive())
            return askAtTerminal(prompt);
        const QMessageBox::StandardButton answer = safeAnswer(prompt);
        if (err) {
            QString word;
            for (const Choice &choice : choices) {
                if (choice.button == answer)
                    word = QLatin1String(choice.word);
            }
            *err << "ovra: " << prompt.title << ": " << prompt.text;
            if (!word.isEmpty())
                *err << " (answered " << word << ": nobody at a terminal)";
            *err << '\n';
            err->flush();
        }
        return answer;
    });
}

ProgressJob::ProgressJob(const QString &title, bool visible)
    : m_title(title)
    , m_visible(visible)
{
}

ProgressJob::~ProgressJob()
{
    if (m_visible && m_drawn >= 0)
        std::fputc('\n', stderr);
}

void ProgressJob::error(const QString &text)
{
    m_errors << text;
}

void ProgressJob::setMaximum(uint maximum)
{
    m_maximum = maximum;
    draw();
}

void ProgressJob::setValue(uint value)
{
    m_value = value;
    draw();
}

void ProgressJob::incrementValue()
{
    ++m_value;
    draw();
}

void ProgressJob::draw()
{
    if (!m_visible)
        return;
    const int width = 30;
    const int filled = m_maximum ? int(qMin<quint64>(m_value, m_maximum) * width / m_maximum) : 0;
    if (filled == m_drawn && m_value != m_maximum)
        return; // redrawing costs more than the work of a step
    m_drawn = filled;
    std::fprintf(stderr, "\r%s [%s%s] %u/%u", qUtf8Printable(m_title), QByteArray(filled, '#').constData(),
                 QByteArray(width - filled, ' ').constData(), m_value, m_maximum);
    std::fflush(stderr);
}

Progress::~Progress() = default;

Ovra::Job *Progress::start(const QString &title, int)
{
    m_jobs.push_back(std::make_unique<ProgressJob>(title, m_visible));
    return m_jobs.back().get();
}

} // namespace Terminal
