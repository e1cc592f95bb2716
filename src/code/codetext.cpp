#include "code/codetext.h"

namespace Ovra {
namespace {
constexpr int TabWidth = 4;
}

QString expandTabs(const QString &text)
{
    QString result;
    result.reserve(text.size());
    int column = 0;
    for (const QChar c : text) {
        if (c == QLatin1Char('\t')) {
            const int blanks = TabWidth - column % TabWidth;
            result.append(QString(blanks, QLatin1Char(' ')));
            column += blanks;
        } else {
            result.append(c);
            column = (c == QLatin1Char('\r') || c == QLatin1Char('\n')) ? 0 : column + 1;
        }
    }
    return result;
}

QString fileText(const QString &text, bool spacesToTabs)
{
    QString lines = text;
    lines.replace(QLatin1Char('\n'), QLatin1String("\r\n"));
    if (!spacesToTabs)
        return lines;

    QString result;
    result.reserve(lines.size());
    int column = 0;
    for (int i = 0; i < lines.size(); ++i) {
        const QChar c = lines.at(i);
        if (c == QLatin1Char(' ')) {
            const int toStop = TabWidth - column % TabWidth;
            int run = 0;
            if (toStop > 1) {
                while (run < TabWidth && i + run < lines.size() && lines.at(i + run) == QLatin1Char(' '))
                    ++run;
            }
            if (toStop > 1 && run >= toStop) {
                result.append(QLatin1Char('\t'));
                i += toStop - 1;
                column += toStop;
            } else {
                result.append(c);
                ++column;
            }
        } else {
            result.append(c);
            if (c == QLatin1Char('\t'))
                column += TabWidth - column % TabWidth;
            else if (c == QLatin1Char('\r') || c == QLatin1Char('\n'))
                column = 0;
            else
                ++column;
        }
    }
    return result;
}

namespace {

int skipBlanks(const QString &text, int at)
{
    while (at < text.size() && text.at(at).isSpace())
        ++at;
    return at;
}

int skipWord(const QString &text, int at)
{
    while (at < text.size() && !text.at(at).isSpace())
        ++at;
    return at;
}

// The old line's layout filled with the new words.
QString mergedLine(const QString &oldLine, const QString &text, const QString &marker)
{
    QString result;
    int old = 0;
    int fresh = 0;
    while (old < oldLine.size()) {
        const QChar c = oldLine.at(old);
        if (c.isSpace()) {
            const int end = skipBlanks(oldLine, old);
            result += oldLine.midRef(old, end - old);
            old = end;
            fresh = skipBlanks(text, fresh);
        } else if (!marker.isEmpty() && oldLine.midRef(old).startsWith(marker)) {
            result += text.midRef(fresh);
            result += oldLine.midRef(old);
            return result;
        } else {
            old = skipWord(oldLine, old);
            fresh = skipBlanks(text, fresh);
            const int end = skipWord(text, fresh);
            result += text.midRef(fresh, end - fresh);
            fresh = end;
        }
    }
    // More new words than the old line had places for: they go behind, not lost.
    const QStringRef rest = text.midRef(skipBlanks(text, fresh));
    if (!rest.isEmpty()) {
        if (!result.isEmpty() && !result.at(result.size() - 1).isSpace())
            result += QLatin1Char(' ');
        result += rest;
    }
    return result;
}

} // namespace

QString changedLine(const QString &oldLine, const QString &text, const QString &marker,
                    bool preserveFormatting)
{
    QString result = preserveFormatting ? mergedLine(oldLine, text, marker) : QString();
    if (!result.isEmpty())
        return result;
    result = text;
    const int comment = marker.isEmpty() ? -1 : oldLine.indexOf(marker);
    if (comment >= 0)
        result += QLatin1Char(' ') + oldLine.midRef(comment);
    return result;
}

} // namespace Ovra
