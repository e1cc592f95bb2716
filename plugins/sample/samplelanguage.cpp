#include "samplelanguage.h"

#include <QDate>
#include <QLocale>
#include <QPoint>
#include <QPointF>
#include <QRect>
#include <QSize>

#include <cmath>

using Ovra::ValueCode;

namespace SampleLanguage {

namespace {

KeyInfo key(const char *name, ValueCode::Type type, const char *keywords = nullptr, const char *replacement = nullptr)
{
    KeyInfo info;
    info.key = QLatin1String(name);
    info.type = type;
    if (keywords)
        info.keywords = QString::fromLatin1(keywords).split(QLatin1Char(','));
    if (replacement)
        info.replacement = QLatin1String(replacement);
    return info;
}

KindInfo kindEntry(GroupKind groupKind, const char *name, const QList<KeyInfo> &keys,
                   ValueCode::Type anyKeyType = ValueCode::Unknown)
{
    KindInfo info;
    info.kind = groupKind;
    info.name = QLatin1String(name);
    info.keys = keys;
    info.anyKeyType = anyKeyType;
    return info;
}

QList<KeyInfo> characterKeys()
{
    return {key("name", ValueCode::String),
            key("portrait", ValueCode::File),
            key("debut", ValueCode::Date),
            key("life", ValueCode::Int),
            key("health", ValueCode::Int, nullptr, "life"),
            key("power", ValueCode::Int),
            key("defence", ValueCode::Int),
            key("gravity", ValueCode::Float),
            key("walk", ValueCode::FloatVec2),
            key("jump", ValueCode::FloatVec3),
            key("tint", ValueCode::FloatVec4),
            key("size", ValueCode::IntVec2),
            key("colour", ValueCode::IntVec3),
            key("bounds", ValueCode::IntVec4),
            key("palettes", ValueCode::IntVector),
            key("flying", ValueCode::Bool),
            key("stance", ValueCode::Keyword, "upright,crouched,floating"),
            key("traits", ValueCode::KeywordVector, "heavy,agile,armoured,ranged")};
}

QList<KeyInfo> moveKeys()
{
    return {key("command", ValueCode::String),
            key("animation", ValueCode::Int),
            key("anim", ValueCode::Int, nullptr, "animation"),
            key("damage", ValueCode::Int),
            key("cost", ValueCode::Int),
            key("state", ValueCode::Keyword, "ground,crouch,air"),
            key("flags", ValueCode::KeywordVector, "low,high,unblockable,projectile,grab"),
            key("knockback", ValueCode::FloatVec2),
            key("reach", ValueCode::IntVec4),
            key("pause", ValueCode::IntVec2),
            key("timings", ValueCode::IntVector),
            key("scaling", ValueCode::FloatVector),
            key("sound", ValueCode::String),
            key("juggle", ValueCode::Bool)};
}

QList<KeyInfo> stageKeys()
{
    return {key("title", ValueCode::String),
            key("music", ValueCode::File),
            key("backdrop", ValueCode::File),
            key("opened", ValueCode::Date),
            key("night", ValueCode::Bool),
            key("weather", ValueCode::Keyword, "clear,rain,snow,fog"),
            key("floor", ValueCode::Int),
            key("limits", ValueCode::IntVec2),
            key("camera", ValueCode::FloatVec2),
            key("ambient", ValueCode::IntVec3),
            key("fog", ValueCode::FloatVec4),
            key("parallax", ValueCode::FloatVector),
            key("zoom", ValueCode::Float)};
}

// The kinds in the order of their sub-types; the sounds' keys are names of any kind.
QList<KindInfo> buildKinds()
{
    return {kindEntry(ProjectGroup, "Project",
                      {key("name", ValueCode::String), key("version", ValueCode::String),
                       key("author", ValueCode::String), key("created", ValueCode::Date)}),
            kindEntry(FilesGroup, "Files",
                      {key("definitions", ValueCode::File), key("sprites", ValueCode::File),
                       key("sounds", ValueCode::File), key("animations", ValueCode::File),
                       key("scripts", ValueCode::File)}),
            kindEntry(CharacterGroup, "Character", characterKeys()),
            kindEntry(MoveGroup, "Move", moveKeys()),
            kindEntry(SoundsGroup, "Sounds", {}, ValueCode::IntVec2),
            kindEntry(StageGroup, "Stage", stageKeys())};
}

// The number of items of a vector type, or -1 for any number.
int vectorLength(ValueCode::Type type)
{
    switch (type) {
    case ValueCode::FloatVec2:
    case ValueCode::IntVec2:
        return 2;
    case ValueCode::FloatVec3:
    case ValueCode::IntVec3:
        return 3;
    case ValueCode::FloatVec4:
    case ValueCode::IntVec4:
        return 4;
    default:
        return -1;
    }
}

bool isVector(ValueCode::Type type)
{
    return type == ValueCode::KeywordVector || (type >= ValueCode::FloatVec2 && type <= ValueCode::FloatVector)
        || (type >= ValueCode::IntVec2 && type <= ValueCode::IntVector);
}

bool isRealType(ValueCode::Type type)
{
    return type >= ValueCode::Float && type <= ValueCode::FloatVector;
}

ReadResult failure(const QString &message, int start, int end)
{
    ReadResult result;
    result.error = message;
    result.start = start;
    result.end = qMax(end, start + 1);
    return result;
}

// One number or keyword of a value; `column` is its place in the line.
ReadResult readItem(ValueCode::Type type, const QStringList &keywords, const QString &item, int column)
{
    ReadResult result;
    const int end = column + item.size();
    if (type == ValueCode::Keyword || type == ValueCode::KeywordVector) {
        for (int i = 0; i < keywords.size(); ++i) {
            if (keywords.at(i).compare(item, Qt::CaseInsensitive) == 0) {
                result.value = uint(i);
                return result;
            }
        }
        return failure(QStringLiteral("Unknown keyword '%1' (expected one of: %2)").arg(item, keywords.join(QStringLiteral(", "))),
                       column, end);
    }
    bool ok = false;
    if (isRealType(type)) {
        const double value = item.toDouble(&ok);
        if (!ok || !std::isfinite(value))
            return failure(QStringLiteral("Bad number '%1'").arg(item), column, end);
        result.value = value;
    } else {
        const int value = item.toInt(&ok);
        if (!ok)
            return failure(QStringLiteral("Bad whole number '%1'").arg(item), column, end);
        result.value = value;
    }
    return result;
}

ReadResult readList(ValueCode::Type type, const QStringList &keywords, const QString &text, int column)
{
    if (!text.startsWith(QLatin1Char('(')))
        return failure(QStringLiteral("A list is written in parentheses: (a, b)"), column, column + text.size());
    if (!text.endsWith(QLatin1Char(')')) || text.size() < 2)
        return failure(QStringLiteral("Unclosed bracket"), column, column + text.size());
    const QString inner = text.mid(1, text.size() - 2);
    QVariantList items;
    if (!inner.trimmed().isEmpty()) {
        int at = 0;
        const QStringList parts = inner.split(QLatin1Char(','));
        for (const QString &part : parts) {
            const int lead = leadingBlanks(part).size();
            const QString item = part.trimmed();
            const int itemColumn = column + 1 + at + lead;
            if (item.isEmpty())
                return failure(QStringLiteral("Empty item in the list"), column + 1 + at, column + 1 + at + part.size());
            const ReadResult one = readItem(type, keywords, item, itemColumn);
            if (!one.ok())
                return one;
            items << one.value;
            at += part.size() + 1;
        }
    }
    const int length = vectorLength(type);
    if (length >= 0 && items.size() != length)
        return failure(QStringLiteral("Expected %1 items, found %2").arg(length).arg(items.size()), column,
                       column + text.size());
    ReadResult result;
    if (type == ValueCode::IntVec2)
        result.value = QPoint(items.at(0).toInt(), items.at(1).toInt());
    else if (type == ValueCode::FloatVec2)
        result.value = QPointF(items.at(0).toDouble(), items.at(1).toDouble());
    else
        result.value = items;
    return result;
}

// The items of a vector value in any of the forms callers hand in.
QVariantList listOf(const QVariant &value)
{
    switch (value.userType()) {
    case QMetaType::QPoint:
        return {value.toPoint().x(), value.toPoint().y()};
    case QMetaType::QPointF:
        return {value.toPointF().x(), value.toPointF().y()};
    case QMetaType::QSize:
        return {value.toSize().width(), value.toSize().height()};
    case QMetaType::QRect: {
        const QRect rect = value.toRect();
        return {rect.left(), rect.top(), rect.right(), rect.bottom()};
    }
    case QMetaType::QStringList: {
        QVariantList list;
        for (const QString &word : value.toStringList())
            list << word;
        return list;
    }
    default:
        break;
    }
    if (value.canConvert<QVariantList>() && value.userType() != QMetaType::QString)
        return value.toList();
    return {value};
}

QString keywordText(const QStringList &keywords, const QVariant &value)
{
    if (value.userType() == QMetaType::QString)
        return value.toString();
    return keywords.value(int(value.toUInt()));
}

} // namespace

const QList<KindInfo> &kinds()
{
    static const QList<KindInfo> list = buildKinds();
    return list;
}

const KindInfo *kindByName(const QString &name)
{
    for (const KindInfo &kind : kinds()) {
        if (kind.name == name)
            return &kind;
    }
    return nullptr;
}

const KindInfo *kindInfo(uint subType)
{
    for (const KindInfo &kind : kinds()) {
        if (kind.kind == subType)
            return &kind;
    }
    return nullptr;
}

const KeyInfo *keyInfo(uint subType, const QString &key)
{
    const KindInfo *kind = kindInfo(subType);
    if (!kind)
        return nullptr;
    for (const KeyInfo &info : kind->keys) {
        if (info.key == key)
            return &info;
    }
    if (kind->anyKeyType == ValueCode::Unknown)
        return nullptr;
    // Keys of such a kind are names of their own: one entry per type is enough.
    static KeyInfo any;
    any.type = kind->anyKeyType;
    return &any;
}

ReadResult readValue(ValueCode::Type type, const QStringList &keywords, const QString &text, int column)
{
    ReadResult result;
    const int end = column + text.size();
    switch (type) {
    case ValueCode::String:
    case ValueCode::File:
        if (text.startsWith(QLatin1Char('"'))) {
            int close = -1;
            const QString inner = readQuoted(text, 0, &close);
            if (close < 0)
                return failure(QStringLiteral("Unclosed quote"), column, end);
            if (close < text.size())
                return failure(QStringLiteral("Text after the closing quote"), column + close, end);
            result.value = inner;
        } else {
            result.value = text;
        }
        return result;
    case ValueCode::Bool:
        if (text == QLatin1String("yes") || text == QLatin1String("true"))
            result.value = true;
        else if (text == QLatin1String("no") || text == QLatin1String("false"))
            result.value = false;
        else
            return failure(QStringLiteral("Expected yes or no"), column, end);
        return result;
    case ValueCode::Date: {
        const QDate date = QDate::fromString(text, QStringLiteral("yyyy-MM-dd"));
        if (!date.isValid())
            return failure(QStringLiteral("Bad date '%1', expected YYYY-MM-DD").arg(text), column, end);
        result.value = date;
        return result;
    }
    case ValueCode::Keyword:
    case ValueCode::Float:
    case ValueCode::Int:
        if (text.isEmpty())
            return failure(QStringLiteral("Missing value"), column, end);
        return readItem(type, keywords, text, column);
    default:
        if (isVector(type))
            return readList(type, keywords, text, column);
        result.value = text;
        return result;
    }
}

bool readPlainInteger(QStringView text, int *value)
{
    const bool negative = !text.isEmpty() && text.front() == QLatin1Char('-');
    const QStringView digits = negative ? text.mid(1) : text;
    // Nine digits never overflow an int.
    if (digits.isEmpty() || digits.size() > 9)
        return false;
    int number = 0;
    for (const QChar c : digits) {
        const ushort code = c.unicode();
        if (code < '0' || code > '9')
            return false;
        number = number * 10 + int(code - '0');
    }
    *value = negative ? -number : number;
    return true;
}

bool readPlainIntegers(QStringView text, int *values, int count)
{
    if (count < 1 || text.size() < 2 || text.front() != QLatin1Char('(') || text.back() != QLatin1Char(')'))
        return false;
    auto blank = [](QChar c) { return c == QLatin1Char(' ') || c == QLatin1Char('\t'); };
    const int end = int(text.size()) - 1;
    int at = 1;
    for (int n = 0; n < count; ++n) {
        // The last item runs to the bracket; a comma in it fails it as no digit.
        int itemEnd = n + 1 < count ? int(text.indexOf(QLatin1Char(','), at)) : end;
        if (itemEnd < 0 || itemEnd > end)
            return false;
        int first = at, last = itemEnd;
        while (first < last && blank(text.at(first)))
            ++first;
        while (last > first && blank(text.at(last - 1)))
            --last;
        if (!readPlainInteger(text.mid(first, last - first), values + n))
            return false;
        at = itemEnd + 1;
    }
    return true;
}

QString number(double value)
{
    return QString::number(value, 'g', QLocale::FloatingPointShortest);
}

QString quoted(const QString &text)
{
    const bool plain = !text.isEmpty() && !text.at(0).isSpace() && !text.at(text.size() - 1).isSpace()
        && !text.contains(QLatin1Char('#')) && !text.startsWith(QLatin1Char('"'));
    if (plain)
        return text;
    QString escaped = text;
    escaped.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
    escaped.replace(QLatin1Char('"'), QLatin1String("\\\""));
    return QLatin1Char('"') + escaped + QLatin1Char('"');
}

QString writeValue(ValueCode::Type type, const QStringList &keywords, const QVariant &value)
{
    switch (type) {
    case ValueCode::String:
    case ValueCode::File:
        return quoted(value.toString());
    case ValueCode::Bool:
        if (value.userType() == QMetaType::QString)
            return value.toString();
        return value.toBool() ? QStringLiteral("yes") : QStringLiteral("no");
    case ValueCode::Date:
        if (value.userType() == QMetaType::QString)
            return value.toString();
        return value.toDate().toString(QStringLiteral("yyyy-MM-dd"));
    case ValueCode::Keyword:
        return keywordText(keywords, value);
    case ValueCode::Float:
        if (value.userType() == QMetaType::QString)
            return value.toString();
        return number(value.toDouble());
    case ValueCode::Int:
        return value.toString();
    default:
        break;
    }
    if (!isVector(type))
        return value.toString();
    if (value.userType() == QMetaType::QString)
        return normalList(value.toString());
    QStringList items;
    for (const QVariant &item : listOf(value)) {
        if (type == ValueCode::KeywordVector)
            items << keywordText(keywords, item);
        else if (isRealType(type) && item.userType() != QMetaType::QString)
            items << number(item.toDouble());
        else
            items << item.toString();
    }
    return QLatin1Char('(') + items.join(QStringLiteral(", ")) + QLatin1Char(')');
}

int commentStart(const QString &line)
{
    bool inQuote = false;
    for (int i = 0; i < line.size(); ++i) {
        const QChar c = line.at(i);
        if (inQuote && c == QLatin1Char('\\'))
            ++i;
        else if (c == QLatin1Char('"'))
            inQuote = !inQuote;
        else if (!inQuote && c == commentMarker())
            return i;
    }
    return -1;
}

QString leadingBlanks(const QString &line)
{
    int i = 0;
    while (i < line.size() && line.at(i).isSpace())
        ++i;
    return line.left(i);
}

QString indent(int level)
{
    return QString(qMax(0, level) * IndentWidth, QLatin1Char(' '));
}

bool isKeyWord(const QString &word)
{
    if (word.isEmpty() || !(word.at(0).isLetter() || word.at(0) == QLatin1Char('_')))
        return false;
    for (const QChar c : word) {
        if (!c.isLetterOrNumber() && c != QLatin1Char('_') && c != QLatin1Char('.'))
            return false;
    }
    return true;
}

QString readQuoted(const QString &line, int at, int *end)
{
    QString text;
    for (int i = at + 1; i < line.size(); ++i) {
        const QChar c = line.at(i);
        if (c == QLatin1Char('\\') && i + 1 < line.size()) {
            text += line.at(++i);
        } else if (c == QLatin1Char('"')) {
            *end = i + 1;
            return text;
        } else {
            text += c;
        }
    }
    *end = -1;
    return text;
}

QString normalList(const QString &text)
{
    const QString trimmed = text.trimmed();
    if (!trimmed.startsWith(QLatin1Char('(')) || !trimmed.endsWith(QLatin1Char(')')) || trimmed.size() < 2)
        return trimmed;
    QStringList items = trimmed.mid(1, trimmed.size() - 2).split(QLatin1Char(','));
    for (QString &item : items)
        item = item.trimmed();
    if (items.size() == 1 && items.at(0).isEmpty())
        return QStringLiteral("()");
    return QLatin1Char('(') + items.join(QStringLiteral(", ")) + QLatin1Char(')');
}

} // namespace SampleLanguage
