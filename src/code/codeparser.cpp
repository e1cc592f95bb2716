#include "code/codeparser.h"

#include <QColor>
#include <QFont>
#include <QVector>

namespace Ovra {
namespace {

QVector<QTextCharFormat> &formats()
{
    static QVector<QTextCharFormat> table = [] {
        QVector<QTextCharFormat> list;
        for (int type = 0; type < CodeParserSyntax::TokenTypeCount; ++type)
            list.append(CodeParserSyntax::defaultFormat(type));
        return list;
    }();
    return table;
}

} // namespace

QTextCharFormat CodeParserSyntax::defaultFormat(int type)
{
    struct Look
    {
        QColor foreground;
        bool italic;
        bool bold;
    };
    static const Look looks[TokenTypeCount] = {
        {Qt::black, true, false},
        {Qt::gray, true, false},
        {Qt::red, false, false},
        {Qt::blue, false, false},
        {Qt::black, false, true},
        {QColor(0, 128, 0), false, true},
        {QColor(255, 128, 0), false, true},
        {QColor(0, 128, 128), false, true},
        {QColor(128, 0, 255), false, false},
        {QColor(255, 0, 255), false, false},
    };
    QTextCharFormat format;
    if (type < 0 || type >= TokenTypeCount)
        return format;
    const Look &look = looks[type];
    format.setFontFamily(QStringLiteral("Courier"));
    format.setFontPointSize(10);
    format.setFontFixedPitch(true);
    format.setFontStyleHint(QFont::TypeWriter);
    format.setFontWeight(look.bold ? 75 : 50);
    format.setFontItalic(look.italic);
    format.setForeground(look.foreground);
    return format;
}

QTextCharFormat CodeParserSyntax::format(int type)
{
    return type >= 0 && type < TokenTypeCount ? formats().at(type) : QTextCharFormat();
}

void CodeParserSyntax::setFormat(int type, const QTextCharFormat &format)
{
    if (type >= 0 && type < TokenTypeCount)
        formats()[type] = format;
}

} // namespace Ovra
