#pragma once

// The words and the value syntax shared by the sample engine's two text languages: the
// table of group kinds and keys that gives every value its type, and the reading and
// writing of one value's text. FORMATS.md describes both languages.
#include "code/valuecode.h"

#include <QStringList>
#include <QStringView>
#include <QVariant>

namespace SampleLanguage {

// The comment marker of both languages; a '#' inside double quotes is text.
inline QChar commentMarker() { return QLatin1Char('#'); }
// Lines are indented by this many blanks per level.
constexpr int IndentWidth = 4;

// The kinds of group, as the groups' subType.
enum GroupKind : uint {
    ProjectGroup = 1,
    FilesGroup = 2,
    CharacterGroup = 3,
    MoveGroup = 4,
    SoundsGroup = 5,
    StageGroup = 6,
    // A kind the table doesn't know: its values are read as text.
    OtherGroup = 15,
};

// Token types, as the highlighter paints them.
enum Token {
    Punctuation = 0,
    Comment = 1,
    Invalid = 2,
    KeyToken = 3,
    HeaderToken = 4,
    NameToken = 5,
    WordToken = 6,
    DirectiveToken = 7,
    NumberToken = 8,
    TextToken = 9,
};

struct KeyInfo
{
    QString key;
    Ovra::ValueCode::Type type = Ovra::ValueCode::String;
    QStringList keywords;
    // Not empty for a deprecated key: the key that replaces it.
    QString replacement;
};

struct KindInfo
{
    GroupKind kind = OtherGroup;
    QString name;
    QList<KeyInfo> keys;
    // Any key of the kind has this type (for lists of names such as sounds); Unknown
    // where only the listed keys are known.
    Ovra::ValueCode::Type anyKeyType = Ovra::ValueCode::Unknown;
};

const QList<KindInfo> &kinds();
// The kind of a header word (exact case), or null.
const KindInfo *kindByName(const QString &name);
const KindInfo *kindInfo(uint subType);
// The key of a kind; null where the kind doesn't know it. A kind with anyKeyType gives
// an entry of that type for every key.
const KeyInfo *keyInfo(uint subType, const QString &key);

// What reading a value gave: the value in the form of its type, or an error with the
// columns it covers (relative to the line).
struct ReadResult
{
    QVariant value;
    QString error;
    int start = 0;
    int end = 0;
    bool ok() const { return error.isEmpty(); }
};

// Reads the text of a value of `type`; `column` is where `text` starts in its line.
// `text` carries no comment and no surrounding blanks.
ReadResult readValue(Ovra::ValueCode::Type type, const QStringList &keywords, const QString &text, int column);
// Whole numbers in their plainest spelling, read without allocating anything: a long
// file has one or two lists of them on most lines. An optional '-' and at most nine ASCII
// digits; a list is "(" items ")" with exactly `count` items between commas, blanks and
// tabs around them. Anything else gives false, and readValue, which reads every
// spelling, has the last word: where these succeed it gives the same numbers.
bool readPlainInteger(QStringView text, int *value);
bool readPlainIntegers(QStringView text, int *values, int count);
// The text a value of `type` is written as; keywords may be given as numbers or words.
QString writeValue(Ovra::ValueCode::Type type, const QStringList &keywords, const QVariant &value);
// A number as the languages write it: shortest form that reads back the same.
QString number(double value);
// Text in double quotes where it needs them (empty, blanks at an end, a '#' or a quote).
QString quoted(const QString &text);

// The column of the comment of a line (outside double quotes), or -1.
int commentStart(const QString &line);
// The blanks at the start of a line.
QString leadingBlanks(const QString &line);
QString indent(int level);
// A key: a letter or '_', then letters, digits, '_' or '.'.
bool isKeyWord(const QString &word);
// Reads a quoted text starting at `at` (on the quote); `end` gets the column behind the
// closing quote, or -1 if it is missing.
QString readQuoted(const QString &line, int at, int *end);
// A list "(a, b, c)" with its spacing made regular; other text as it is.
QString normalList(const QString &text);

} // namespace SampleLanguage
