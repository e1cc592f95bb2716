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

} // namespace Ovra
