#include "sampleparser.h"

#include "sampleanimationcode.h"
#include "samplecode.h"
#include "samplelanguage.h"

#include "code/rootcode.h"

#include <QVarLengthArray>

#include <algorithm>

using namespace Ovra;
using namespace SampleLanguage;

namespace {

using TokenType = CodeParserSyntax::TokenType;

// One line being read: what the parser was handed, and reports that go nowhere when
// the call only brings the tree up to date.
struct Line
{
    const QString &text;
    const QTextBlock &block;
    CodeNode *oldNode;
    CodeNode *previous;
    RootCode *root;
    CodeParserSyntax *syntax;

    void token(Token type, int start, int end) const
    {
        if (syntax && end > start)
            syntax->token(TokenType(type), start, end);
    }
    void error(const QString &message, int start, int end) const
    {
        if (syntax)
            syntax->error(TokenType(Invalid), message, start, qMax(end, start + 1));
    }
    void warning(Token type, const QString &message, int start, int end) const
    {
        if (syntax)
            syntax->warning(TokenType(type), message, start, qMax(end, start + 1));
    }
    void deprecated(Token type, const QString &message, int start, int end) const
    {
        if (syntax)
            syntax->deprecated(TokenType(type), message, start, qMax(end, start + 1));
    }
    // A node of the class, if the line had one, to be reused.
    template <typename Node>
    Node *old(CodeNode::Type type) const
    {
        return oldNode && oldNode->type() == type ? dynamic_cast<Node *>(oldNode) : nullptr;
    }
    // The nearest node of `type` above the line, passing over those in `pass`.
    CodeNode *above(CodeNode::Type type, int pass) const
    {
        for (CodeNode *node = previous; node; node = node->previous()) {
            if (node->type() == type)
                return node;
            if (!(node->type() & pass))
                return nullptr;
        }
        return nullptr;
    }
};

bool isIdentifierChar(QChar c)
{
    return c.isLetterOrNumber() || c == QLatin1Char('_') || c == QLatin1Char('-') || c == QLatin1Char('.');
}

bool isIdentifier(QStringView word)
{
    if (word.isEmpty())
        return false;
    for (const QChar c : word) {
        if (!isIdentifierChar(c))
            return false;
    }
    return true;
}

Token tokenOf(ValueCode::Type type)
{
    switch (type) {
    case ValueCode::String:
    case ValueCode::File:
    case ValueCode::Date:
        return TextToken;
    case ValueCode::Bool:
    case ValueCode::Keyword:
    case ValueCode::KeywordVector:
        return WordToken;
    default:
        return NumberToken;
    }
}

void reportParentheses(const Line &line, int end)
{
    if (!line.syntax)
        return;
    bool inQuote = false;
    for (int i = 0; i < end; ++i) {
        const QChar c = line.text.at(i);
        if (inQuote && c == QLatin1Char('\\')) {
            ++i;
        } else if (c == QLatin1Char('"')) {
            inQuote = !inQuote;
        } else if (!inQuote) {
            if (c == QLatin1Char('(') || c == QLatin1Char('['))
                line.syntax->parenthesis(true, c, i);
            else if (c == QLatin1Char(')') || c == QLatin1Char(']'))
                line.syntax->parenthesis(false, c, i);
        }
    }
}

CodeNode *readDirective(const Line &line, int start, int end)
{
    int wordEnd = start + 1;
    while (wordEnd < end && line.text.at(wordEnd).isLetter())
        ++wordEnd;
    const QString word = line.text.mid(start + 1, wordEnd - start - 1);
    if (word != QLatin1String("version")) {
        line.error(QStringLiteral("Unknown directive '@%1'").arg(word), start, wordEnd);
        return nullptr;
    }
    line.token(DirectiveToken, start, wordEnd);
    const QString rest = line.text.mid(wordEnd, end - wordEnd);
    const int numberStart = wordEnd + leadingBlanks(rest).size();
    bool ok = false;
    const ushort version = rest.trimmed().toUShort(&ok);
    if (!ok || numberStart == wordEnd) {
        line.error(QStringLiteral("Expected a version number from 0 to 65535"), numberStart, end);
        return nullptr;
    }
    line.token(NumberToken, numberStart, end);
    line.root->setVersion(version, true);
    return nullptr;
}

CodeNode *readHeader(const Line &line, int start, int end)
{
    const QString code = line.text.mid(start, end - start);
    const int close = code.indexOf(QLatin1Char(']'));
    if (close < 0) {
        line.error(QStringLiteral("Unclosed bracket"), start, end);
        return nullptr;
    }
    if (close + 1 < code.size()) {
        line.error(QStringLiteral("Text after the header"), start + close + 1, end);
        return nullptr;
    }
    const QString inner = code.mid(1, close - 1);
    const int colon = inner.indexOf(QLatin1Char(':'));
    const QString kindPart = colon < 0 ? inner : inner.left(colon);
    const QString kindWord = kindPart.trimmed();
    const int kindStart = start + 1 + leadingBlanks(kindPart).size();
    const int kindEnd = kindStart + kindWord.size();
    if (!isKeyWord(kindWord)) {
        line.error(kindWord.isEmpty() ? QStringLiteral("Missing group kind") : QStringLiteral("Bad group kind '%1'").arg(kindWord),
                   kindWord.isEmpty() ? start : kindStart, kindWord.isEmpty() ? start + close + 1 : kindEnd);
        return nullptr;
    }
    const QString namePart = colon < 0 ? QString() : inner.mid(colon + 1);
    const QString groupName = namePart.trimmed();
    line.token(HeaderToken, start, start + 1);
    line.token(HeaderToken, start + close, start + close + 1);
    if (colon >= 0) {
        line.token(Punctuation, start + 1 + colon, start + 2 + colon);
        const int nameStart = start + 2 + colon + leadingBlanks(namePart).size();
        line.token(NameToken, nameStart, nameStart + groupName.size());
    }
    const KindInfo *kind = kindByName(kindWord);
    if (kind) {
        line.token(HeaderToken, kindStart, kindEnd);
    } else {
        line.warning(HeaderToken, QStringLiteral("Unknown group kind '%1': its values are read as text").arg(kindWord),
                     kindStart, kindEnd);
    }
    const uint subType = kind ? kind->kind : OtherGroup;
    if (auto *group = line.old<SampleGroup>(CodeNode::Group); group && group->subType() == subType) {
        group->update(kindWord, groupName);
        return group;
    }
    return new SampleGroup(line.block, line.previous, subType, kindWord, groupName);
}

CodeNode *readValueLine(const Line &line, int start, int end)
{
    const QString code = line.text.mid(start, end - start);
    const int equals = code.indexOf(QLatin1Char('='));
    if (equals < 0) {
        line.error(QStringLiteral("Unknown line: expected a header [Kind: name] or a value key = value"), start, end);
        return nullptr;
    }
    const QString keyPart = code.left(equals);
    const QString key = keyPart.trimmed();
    // The code starts at `start` with no blank, so the key does too.
    const int keyEnd = start + key.size();
    if (!isKeyWord(key)) {
        line.error(key.isEmpty() ? QStringLiteral("Missing key") : QStringLiteral("Bad key '%1'").arg(key), start,
                   key.isEmpty() ? start + equals + 1 : keyEnd);
        return nullptr;
    }
    auto *group = static_cast<GroupCode *>(line.above(CodeNode::Group, CodeNode::Value | CodeNode::Frame | CodeNode::HitBox));
    if (!group) {
        line.error(QStringLiteral("A value outside of any group"), start, keyEnd);
        return nullptr;
    }
    const KeyInfo *info = keyInfo(group->subType(), key);
    if (info && !info->replacement.isEmpty()) {
        line.deprecated(KeyToken, QStringLiteral("'%1' is deprecated: use '%2'").arg(key, info->replacement), start, keyEnd);
    } else if (!info && group->subType() != OtherGroup) {
        line.warning(KeyToken, QStringLiteral("Unknown key '%1' of [%2], read as text").arg(key, kindInfo(group->subType())->name),
                     start, keyEnd);
    } else {
        line.token(KeyToken, start, keyEnd);
    }
    line.token(Punctuation, start + equals, start + equals + 1);
    const ValueCode::Type type = info ? info->type : ValueCode::String;
    const QStringList keywords = info ? info->keywords : QStringList();
    const QString valuePart = code.mid(equals + 1);
    const QString valueText = valuePart.trimmed();
    const int valueStart = start + equals + 1 + leadingBlanks(valuePart).size();
    const ReadResult read = readValue(type, keywords, valueText, valueStart);
    if (!read.ok()) {
        line.error(read.error, read.start, read.end);
        return nullptr;
    }
    line.token(tokenOf(type), valueStart, valueStart + valueText.size());
    if (auto *value = line.old<SampleValue>(CodeNode::Value);
        value && value->valueType() == type && value->keywords() == keywords) {
        value->update(key, valueText, read.value);
        return value;
    }
    return new SampleValue(type, line.block, line.previous, key, keywords, valueText, read.value);
}

CodeNode *readAnimation(const Line &line, int start, int end)
{
    line.token(HeaderToken, start, start + 9);
    const QString rest = line.text.mid(start + 9, end - start - 9);
    const int idStart = start + 9 + leadingBlanks(rest).size();
    int idEnd = idStart;
    while (idEnd < end && !line.text.at(idEnd).isSpace() && line.text.at(idEnd) != QLatin1Char('"'))
        ++idEnd;
    const QString identifier = line.text.mid(idStart, idEnd - idStart);
    if (identifier.isEmpty() || idStart == start + 9) {
        line.error(QStringLiteral("Missing identifier behind 'animation'"), start, end);
        return nullptr;
    }
    if (!isIdentifier(identifier)) {
        line.error(QStringLiteral("Bad identifier '%1'").arg(identifier), idStart, idEnd);
        return nullptr;
    }
    line.token(NameToken, idStart, idEnd);
    QString title;
    int at = idEnd;
    while (at < end && line.text.at(at).isSpace())
        ++at;
    if (at < end) {
        if (line.text.at(at) != QLatin1Char('"')) {
            line.error(QStringLiteral("The name of an animation goes in double quotes"), at, end);
            return nullptr;
        }
        int close = -1;
        title = readQuoted(line.text.left(end), at, &close);
        if (close < 0) {
            line.error(QStringLiteral("Unclosed quote"), at, end);
            return nullptr;
        }
        if (close < end) {
            line.error(QStringLiteral("Text after the name"), close, end);
            return nullptr;
        }
        line.token(TextToken, at, close);
    }
    if (auto *animation = line.old<SampleAnimation>(CodeNode::Animation)) {
        animation->update(identifier, title);
        return animation;
    }
    return new SampleAnimation(line.block, line.previous, identifier, title);
}

// One "name" or "name=value" of a frame line.
// Views into the line being read, which outlives them.
struct Field
{
    QStringView name;
    int nameStart = 0;
    QStringView value;
    int valueStart = 0;
    bool hasValue = false;
};

bool readField(const Line &line, int &at, int end, Field &field)
{
    field.nameStart = at;
    while (at < end && line.text.at(at).isLetter())
        ++at;
    field.name = QStringView(line.text).mid(field.nameStart, at - field.nameStart);
    if (field.name.isEmpty()) {
        line.error(QStringLiteral("Unexpected '%1'").arg(line.text.at(at)), at, at + 1);
        return false;
    }
    // Blanks around '=' are allowed; formatting takes them away.
    int equals = at;
    while (equals < end && line.text.at(equals).isSpace())
        ++equals;
    if (equals < end && line.text.at(equals) == QLatin1Char('=')) {
        field.hasValue = true;
        at = equals + 1;
        while (at < end && line.text.at(at).isSpace())
            ++at;
        field.valueStart = at;
        int depth = 0;
        while (at < end && (depth > 0 || !line.text.at(at).isSpace())) {
            if (line.text.at(at) == QLatin1Char('('))
                ++depth;
            else if (line.text.at(at) == QLatin1Char(')'))
                --depth;
            ++at;
        }
        field.value = QStringView(line.text).mid(field.valueStart, at - field.valueStart);
        if (depth > 0) {
            line.error(QStringLiteral("Unclosed bracket"), field.valueStart, at);
            return false;
        }
        if (field.value.isEmpty()) {
            line.error(QStringLiteral("Missing value of '%1'").arg(field.name), field.nameStart, at);
            return false;
        }
    } else if (at < end && !line.text.at(at).isSpace()) {
        line.error(QStringLiteral("Expected '=' or a blank behind '%1'").arg(field.name), at, at + 1);
        return false;
    }
    return true;
}

// Reads a field's value as `type`; false after reporting the error.
bool fieldValue(const Line &line, const Field &field, ValueCode::Type type, const QStringList &keywords, QVariant *value)
{
    const ReadResult read = readValue(type, keywords, field.value.toString(), field.valueStart);
    if (!read.ok()) {
        line.error(read.error, read.start, read.end);
        return false;
    }
    line.token(tokenOf(type), field.valueStart, field.valueStart + int(field.value.size()));
    *value = read.value;
    return true;
}

// A field of one whole number, or of a pair of them with `count` 2; false after reporting
// the error. The plain spelling of most lines is read here, any other by readValue.
bool fieldIntegers(const Line &line, const Field &field, int count, int *values)
{
    const bool plain = count == 1 ? readPlainInteger(field.value, values) : readPlainIntegers(field.value, values, count);
    if (plain) {
        line.token(NumberToken, field.valueStart, field.valueStart + int(field.value.size()));
        return true;
    }
    QVariant value;
    if (!fieldValue(line, field, count == 1 ? ValueCode::Int : ValueCode::IntVec2, {}, &value))
        return false;
    if (count == 1) {
        values[0] = value.toInt();
    } else {
        values[0] = value.toPoint().x();
        values[1] = value.toPoint().y();
    }
    return true;
}

// The words of a flip or ease field; false after reporting an unknown one.
bool readWords(const Line &line, const Field &field, const QStringList &words, QChar separator, uint *bits)
{
    *bits = 0;
    if (field.value == QLatin1String("none"))
        return true;
    int at = field.valueStart;
    const QString text = field.value.toString();
    const QStringList parts = separator.isNull() ? QStringList() : text.split(separator);
    if (separator.isNull()) {
        for (const QChar c : text) {
            const int bit = words.indexOf(QString(c));
            if (bit < 0) {
                line.error(QStringLiteral("Unknown flip '%1' (expected h, v, hv or none)").arg(c), at, at + 1);
                return false;
            }
            *bits |= 1u << bit;
            ++at;
        }
    } else {
        for (const QString &part : parts) {
            const int bit = words.indexOf(part);
            if (bit < 0) {
                line.error(QStringLiteral("Unknown word '%1' (expected %2 or none)").arg(part, words.join(QStringLiteral(", "))),
                           at, at + part.size());
                return false;
            }
            *bits |= 1u << bit;
            at += part.size() + 1;
        }
    }
    line.token(WordToken, field.valueStart, field.valueStart + int(field.value.size()));
    return true;
}

// The fields of a number or a pair of numbers; any other name is no frame field.
bool applyNumbers(const Line &line, const Field &field, SampleFrameData &data)
{
    const QStringView name = field.name;
    QVariant value;
    if (name == QLatin1String("delay")) {
        if (!fieldIntegers(line, field, 1, &data.delay))
            return false;
    } else if (name == QLatin1String("offset")) {
        int xy[2];
        if (!fieldIntegers(line, field, 2, xy))
            return false;
        data.offset = QPoint(xy[0], xy[1]);
        data.writesDefaults |= data.offset.isNull();
    } else if (name == QLatin1String("scale")) {
        if (!fieldValue(line, field, ValueCode::FloatVec2, {}, &value))
            return false;
        data.scale = value.toPointF();
        data.writesDefaults |= data.scale == QPointF(1.0, 1.0);
    } else if (name == QLatin1String("angle")) {
        if (!fieldValue(line, field, ValueCode::Float, {}, &value))
            return false;
        data.angle = value.toDouble();
        data.writesDefaults |= data.angle == 0.0;
    } else {
        line.error(QStringLiteral("Unknown frame field '%1'").arg(name), field.nameStart, field.nameStart + int(name.size()));
        return false;
    }
    return true;
}

// blend=mode or blend=mode(source, destination).
bool applyBlend(const Line &line, const Field &field, SampleFrameData &data)
{
    const int open = int(field.value.indexOf(QLatin1Char('(')));
    const QString word = (open < 0 ? field.value : field.value.left(open)).toString();
    const int mode = SampleFrameData::blendWords().indexOf(word);
    if (mode < 0) {
        line.error(QStringLiteral("Unknown blend mode '%1' (expected %2)")
                       .arg(word, SampleFrameData::blendWords().join(QStringLiteral(", "))),
                   field.valueStart, field.valueStart + word.size());
        return false;
    }
    line.token(WordToken, field.valueStart, field.valueStart + word.size());
    data.blend = SampleFrameData::defaultBlend();
    data.blend.mode = FrameCode::Blend::Mode(mode);
    if (open >= 0) {
        Field factors = field;
        factors.value = field.value.mid(open);
        factors.valueStart = field.valueStart + open;
        QVariant value;
        if (!fieldValue(line, factors, ValueCode::FloatVec2, {}, &value))
            return false;
        data.blend.source = value.toPointF().x();
        data.blend.destination = value.toPointF().y();
    }
    const FrameCode::Blend plain = SampleFrameData::defaultBlend();
    data.writesDefaults |= mode == 0 && data.blend.source == plain.source && data.blend.destination == plain.destination;
    return true;
}

bool applyIdentifier(const Line &line, const Field &field, SampleFrameData &data)
{
    if (!isIdentifier(field.value)) {
        line.error(QStringLiteral("Bad frame identifier '%1'").arg(field.value), field.valueStart,
                   field.valueStart + int(field.value.size()));
        return false;
    }
    line.token(NameToken, field.valueStart, field.valueStart + int(field.value.size()));
    data.identifier = field.value.toString();
    return true;
}

bool applyField(const Line &line, const Field &field, SampleFrameData &data)
{
    static const QStringList flips{QStringLiteral("h"), QStringLiteral("v")};
    const QStringView name = field.name;
    const bool flag = name == QLatin1String("loop");
    if (flag == field.hasValue) {
        line.error(flag ? QStringLiteral("'loop' takes no value") : QStringLiteral("'%1' needs a value: %1=...").arg(name),
                   field.nameStart, field.nameStart + int(name.size()));
        return false;
    }
    if (name == QLatin1String("wait")) {
        line.deprecated(KeyToken, QStringLiteral("'wait' is deprecated: use 'delay'"), field.nameStart, field.nameStart + 4);
        return fieldIntegers(line, field, 1, &data.delay);
    }
    line.token(KeyToken, field.nameStart, field.nameStart + int(name.size()));
    if (name == QLatin1String("flip")) {
        if (!readWords(line, field, flips, QChar(), &data.flip))
            return false;
        data.writesDefaults |= data.flip == 0;
    } else if (name == QLatin1String("ease")) {
        if (!readWords(line, field, SampleFrameData::easeWords(), QLatin1Char('+'), &data.ease))
            return false;
        data.writesDefaults |= data.ease == 0;
    } else if (name == QLatin1String("blend")) {
        return applyBlend(line, field, data);
    } else if (name == QLatin1String("id")) {
        return applyIdentifier(line, field, data);
    } else if (flag) {
        data.loop = true;
    } else {
        return applyNumbers(line, field, data);
    }
    return true;
}

CodeNode *readFrame(const Line &line, int start, int end)
{
    if (!line.above(CodeNode::Animation, CodeNode::Frame | CodeNode::HitBox)) {
        line.error(QStringLiteral("A frame outside of any animation"), start, start + 5);
        return nullptr;
    }
    line.token(HeaderToken, start, start + 5);
    int at = start + 5;
    while (at < end && line.text.at(at).isSpace())
        ++at;
    if (at >= end || line.text.at(at) != QLatin1Char('(')) {
        line.error(QStringLiteral("Expected the sprite as (GROUP, NUMBER)"), at < end ? at : start, end);
        return nullptr;
    }
    const int close = line.text.indexOf(QLatin1Char(')'), at);
    if (close < 0 || close >= end) {
        line.error(QStringLiteral("Unclosed bracket"), at, end);
        return nullptr;
    }
    Field sprite;
    sprite.value = QStringView(line.text).mid(at, close + 1 - at);
    sprite.valueStart = at;
    int xy[2];
    if (!fieldIntegers(line, sprite, 2, xy))
        return nullptr;
    SampleFrameData data;
    data.sprite = QPoint(xy[0], xy[1]);
    // A frame has few fields: the names seen so far are looked through.
    QVarLengthArray<QStringView, 8> seen;
    at = close + 1;
    while (true) {
        const int blank = at;
        while (at < end && line.text.at(at).isSpace())
            ++at;
        if (at >= end)
            break;
        if (at == blank) {
            line.error(QStringLiteral("Expected a blank"), at, at + 1);
            return nullptr;
        }
        Field field;
        if (!readField(line, at, end, field) || !applyField(line, field, data))
            return nullptr;
        const QStringView name = field.name == QLatin1String("wait") ? QStringView(u"delay") : field.name;
        if (std::find(seen.cbegin(), seen.cend(), name) != seen.cend()) {
            line.warning(KeyToken, QStringLiteral("'%1' given twice: the last one counts").arg(field.name), field.nameStart,
                         field.nameStart + int(field.name.size()));
        }
        seen.append(name);
    }
    if (auto *frame = line.old<SampleFrame>(CodeNode::Frame)) {
        frame->update(data);
        return frame;
    }
    return new SampleFrame(line.block, line.previous, data);
}

CodeNode *readBox(const Line &line, int start, int end, ContactBoxCode::BoxType type)
{
    const int word = SampleBox::word(type).size();
    if (!line.above(CodeNode::Frame, CodeNode::HitBox)) {
        line.error(QStringLiteral("A box without a frame above it"), start, start + word);
        return nullptr;
    }
    line.token(HeaderToken, start, start + word);
    // The line ends in no blank: the list runs from behind the blanks to the end.
    int listStart = start + word;
    while (listStart < end && line.text.at(listStart).isSpace())
        ++listStart;
    if (listStart == start + word) {
        line.error(QStringLiteral("Expected the corners as (X1, Y1, X2, Y2)"), start, end);
        return nullptr;
    }
    int corners[4];
    if (!readPlainIntegers(QStringView(line.text).mid(listStart, end - listStart), corners, 4)) {
        const ReadResult read = readValue(ValueCode::IntVec4, {}, line.text.mid(listStart, end - listStart), listStart);
        if (!read.ok()) {
            line.error(read.error, read.start, read.end);
            return nullptr;
        }
        const QVariantList items = read.value.toList();
        for (int i = 0; i < 4; ++i)
            corners[i] = items.at(i).toInt();
    }
    line.token(NumberToken, listStart, end);
    const QRect rect(QPoint(corners[0], corners[1]), QPoint(corners[2], corners[3]));
    if (auto *box = line.old<SampleBox>(CodeNode::HitBox)) {
        box->update(type, rect);
        return box;
    }
    return new SampleBox(line.block, line.previous, type, rect);
}

CodeNode *readAnimationLine(const Line &line, int start, int end)
{
    int wordEnd = start;
    while (wordEnd < end && line.text.at(wordEnd).isLetter())
        ++wordEnd;
    const QStringView word = QStringView(line.text).mid(start, wordEnd - start);
    const bool separated = wordEnd == end || line.text.at(wordEnd).isSpace();
    if (separated && word == QLatin1String("animation"))
        return readAnimation(line, start, end);
    if (separated && word == QLatin1String("frame"))
        return readFrame(line, start, end);
    if (separated && word == QLatin1String("attack"))
        return readBox(line, start, end, ContactBoxCode::Attack);
    if (separated && word == QLatin1String("body"))
        return readBox(line, start, end, ContactBoxCode::Collision);
    line.error(QStringLiteral("Unknown line: expected animation, frame, attack or body"), start, end);
    return nullptr;
}

} // namespace

CodeNode *SampleParser::parse(const QString &text, const QTextBlock &block, CodeNode *oldNode, CodeNode *previous,
                              RootCode *root, CodeParserSyntax *syntax)
{
    const Line line{text, block, oldNode, previous, root, syntax};
    const int comment = commentStart(text);
    int end = comment < 0 ? text.size() : comment;
    if (comment >= 0)
        line.token(Comment, comment, text.size());
    int start = 0;
    while (start < end && text.at(start).isSpace())
        ++start;
    while (end > start && text.at(end - 1).isSpace())
        --end;
    if (start == end)
        return nullptr;
    reportParentheses(line, end);
    if (text.at(start) == QLatin1Char('@'))
        return readDirective(line, start, end);
    if (m_language == Animations)
        return readAnimationLine(line, start, end);
    if (text.at(start) == QLatin1Char('['))
        return readHeader(line, start, end);
    return readValueLine(line, start, end);
}
