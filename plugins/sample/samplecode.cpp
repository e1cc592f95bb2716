#include "samplecode.h"

#include "samplelanguage.h"

#include "code/codedocument.h"

#include <QTextBlock>
#include <QTextCursor>

using namespace Ovra;

namespace SampleCode {

void rewriteLine(CodeNode *node, const QString &code)
{
    CodeDocument *document = node->document();
    const QTextBlock block = node->block();
    if (!document || !block.isValid())
        return;
    const QString old = block.text();
    const int comment = SampleLanguage::commentStart(old);
    QString line = SampleLanguage::leadingBlanks(old) + code;
    if (comment >= 0)
        line += QLatin1Char(' ') + old.mid(comment);
    if (line == old)
        return;
    QTextCursor cursor(block);
    cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
    document->insertOnCursor(line, cursor);
}

} // namespace SampleCode

SampleGroup::SampleGroup(const QTextBlock &block, CodeNode *previous, uint subType, const QString &kindWord,
                         const QString &groupName)
    : GroupCode(block, previous, subType)
    , m_kind(kindWord)
    , m_name(groupName)
{
}

QString SampleGroup::headerText(const QString &kindWord, const QString &groupName)
{
    if (groupName.isEmpty())
        return QLatin1Char('[') + kindWord + QLatin1Char(']');
    return QLatin1Char('[') + kindWord + QStringLiteral(": ") + groupName + QLatin1Char(']');
}

QString SampleGroup::name() const
{
    return m_name.isEmpty() ? m_kind : m_name;
}

QString SampleGroup::displayName() const
{
    return m_name.isEmpty() ? m_kind : m_kind + QStringLiteral(": ") + m_name;
}

void SampleGroup::setName(const QString &name)
{
    SampleCode::rewriteLine(this, headerText(m_kind, name.trimmed()));
}

ValueCode *SampleGroup::insertValue(uint index, const QString &name, const QVariant &value)
{
    CodeDocument *owner = document();
    if (!owner)
        return nullptr;
    const SampleLanguage::KeyInfo *info = SampleLanguage::keyInfo(subType(), name);
    const ValueCode::Type type = info ? info->type : ValueCode::String;
    const QStringList keywords = info ? info->keywords : QStringList();
    const QString text = SampleLanguage::indent(1) + SampleValue::lineText(name, type, keywords, value);
    const uint before = valueCount();
    const uint row = qMin(index, before);
    if (row < before)
        owner->insertBefore(valueAt(row), text, true);
    else
        appendValue(text);
    // A value that doesn't read (a word that isn't a keyword, say) leaves an error line.
    return valueCount() > before ? valueAt(row) : nullptr;
}

ValueCode *SampleGroup::addValue(const QString &name, const QVariant &value)
{
    return insertValue(valueCount(), name, value);
}

void SampleGroup::update(const QString &kindWord, const QString &groupName)
{
    if (kindWord == m_kind && groupName == m_name)
        return;
    m_kind = kindWord;
    m_name = groupName;
    valueChanged(displayName());
}

SampleValue::SampleValue(Type type, const QTextBlock &block, CodeNode *previous, const QString &key,
                         const QStringList &keywords, const QString &text, const QVariant &value)
    : ValueCode(type, block, previous, value)
    , m_key(key)
    , m_keywords(keywords)
    , m_text(text)
{
}

QString SampleValue::lineText(const QString &key, Type type, const QStringList &keywords, const QVariant &value)
{
    return key + QStringLiteral(" = ") + SampleLanguage::writeValue(type, keywords, value);
}

void SampleValue::setName(const QString &name)
{
    SampleCode::rewriteLine(this, name.trimmed() + QStringLiteral(" = ") + m_text);
}

void SampleValue::write(const QVariant &value)
{
    SampleCode::rewriteLine(this, lineText(m_key, valueType(), m_keywords, value));
}

void SampleValue::update(const QString &key, const QString &text, const QVariant &value)
{
    const bool changedValue = convertFrom(valueType(), value) != rawValue();
    if (key == m_key && !changedValue) {
        m_text = text;
        return;
    }
    m_key = key;
    m_text = text;
    valueChanged(value);
}
