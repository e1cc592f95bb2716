#include "sampleformat.h"

#include "sampleanimationcode.h"
#include "samplecode.h"
#include "samplelanguage.h"

#include "code/codedocument.h"

#include <QTextBlock>
#include <QVector>

using namespace Ovra;
using namespace SampleLanguage;

namespace SampleFormat {

namespace {

// A line's level is decided by the text alone, so that lines with errors are indented
// too. Comment lines take the level of the code below them.
enum : int { KeepIndent = -1, FromBelow = -2 };

int levelOfCode(const QString &code, SampleParser::Language language, bool afterHeader)
{
    if (code.startsWith(QLatin1Char('@')))
        return 0;
    if (language == SampleParser::Definitions) {
        if (code.startsWith(QLatin1Char('[')))
            return 0;
        return afterHeader ? 1 : 0;
    }
    int letters = 0;
    while (letters < code.size() && code.at(letters).isLetter())
        ++letters;
    const QString word = code.left(letters);
    if (word == QLatin1String("animation"))
        return 0;
    if (word == QLatin1String("frame"))
        return 1;
    if (word == QLatin1String("attack") || word == QLatin1String("body"))
        return 2;
    return KeepIndent;
}

QVector<int> levels(const CodeDocument *document, SampleParser::Language language)
{
    QVector<int> result;
    bool afterHeader = false;
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
        const QString text = block.text();
        const int comment = commentStart(text);
        const QString code = (comment < 0 ? text : text.left(comment)).trimmed();
        if (code.isEmpty()) {
            result << FromBelow;
            continue;
        }
        afterHeader |= code.startsWith(QLatin1Char('['));
        result << levelOfCode(code, language, afterHeader);
    }
    int below = 0;
    for (int i = result.size() - 1; i >= 0; --i) {
        if (result.at(i) == FromBelow)
            result[i] = below;
        else if (result.at(i) >= 0)
            below = result.at(i);
    }
    return result;
}

// The code of a line in its regular spacing; lines without a node keep their words
// where a change could alter what they say.
QString formattedCode(const QString &code, const CodeNode *node, SampleParser::Language language)
{
    if (code.startsWith(QLatin1Char('@')))
        return normalFields(code);
    if (!node) {
        if (language == SampleParser::Definitions && !code.startsWith(QLatin1Char('['))) {
            const int equals = code.indexOf(QLatin1Char('='));
            if (equals > 0 && commentStart(code.left(equals)) < 0 && !code.left(equals).contains(QLatin1Char('"')))
                return code.left(equals).trimmed() + QStringLiteral(" = ") + code.mid(equals + 1).trimmed();
        }
        return code;
    }
    switch (node->type()) {
    case CodeNode::Group:
        return QLatin1Char('[') + static_cast<const SampleGroup *>(node)->displayName() + QLatin1Char(']');
    case CodeNode::Value: {
        const auto *value = static_cast<const SampleValue *>(node);
        const bool list = value->valueType() == ValueCode::KeywordVector || !ValueCode::isScalar(value->valueType());
        return value->name() + QStringLiteral(" = ") + (list ? normalList(value->text()) : value->text());
    }
    case CodeNode::Animation: {
        const auto *animation = static_cast<const SampleAnimation *>(node);
        return SampleAnimation::headerText(animation->identifier(), animation->name());
    }
    case CodeNode::Frame:
    case CodeNode::HitBox:
        return normalFields(code);
    default:
        return code;
    }
}

} // namespace

QString normalFields(const QString &code)
{
    QString out;
    const int size = code.size();
    for (int i = 0; i < size;) {
        const QChar c = code.at(i);
        if (c.isSpace()) {
            while (i < size && code.at(i).isSpace())
                ++i;
            if (i < size && code.at(i) != QLatin1Char('=') && !out.endsWith(QLatin1Char('=')) && !out.isEmpty())
                out += QLatin1Char(' ');
        } else if (c == QLatin1Char('(')) {
            const int close = code.indexOf(QLatin1Char(')'), i);
            if (close < 0) {
                out += code.midRef(i);
                break;
            }
            out += normalList(code.mid(i, close + 1 - i));
            i = close + 1;
        } else {
            out += c;
            ++i;
        }
    }
    return out;
}

void formatLines(CodeDocument *document, SampleParser::Language language, int firstBlock, int lastBlock,
                 bool indentOnly)
{
    const QVector<int> level = levels(document, language);
    firstBlock = qMax(0, firstBlock);
    lastBlock = qMin(lastBlock, document->blockCount() - 1);
    bool open = false;
    for (int number = firstBlock; number <= lastBlock; ++number) {
        const QTextBlock block = document->findBlockByNumber(number);
        const QString text = block.text();
        const int comment = commentStart(text);
        const QString code = (comment < 0 ? text : text.left(comment)).trimmed();
        const QString commentText = comment < 0 ? QString() : text.mid(comment);
        QString line;
        if (code.isEmpty() && commentText.isEmpty()) {
            line = QString();
        } else {
            const int lineLevel = level.value(number, KeepIndent);
            line = lineLevel == KeepIndent ? leadingBlanks(text) : indent(lineLevel);
            if (indentOnly) {
                line += text.mid(leadingBlanks(text).size());
            } else {
                line += formattedCode(code, document->nodeInBlock(block), language);
                if (!commentText.isEmpty())
                    line += (code.isEmpty() ? QString() : QStringLiteral(" ")) + commentText;
            }
        }
        if (line == text)
            continue;
        if (!open) {
            document->beginChange();
            open = true;
        }
        QTextCursor cursor(block);
        cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
        document->insertOnCursor(line, cursor);
    }
    if (open)
        document->endChange();
}

} // namespace SampleFormat
