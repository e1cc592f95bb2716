#pragma once

// The nodes of the sample engine's definition language: a group header
// "[Kind: name]" and a value line "key = value". Every edit rewrites text; the parse
// brings the node up to date.
#include "code/groupcode.h"
#include "code/valuecode.h"

#include <QStringList>

namespace SampleCode {

// Replaces the code of a node's line, keeping its indentation and its trailing comment.
// The comment is kept here rather than by CodeNode::change, which only knows the marker
// when the document belongs to a project, and would also take a '#' inside quotes for one.
void rewriteLine(Ovra::CodeNode *node, const QString &code);

} // namespace SampleCode

class SampleGroup : public Ovra::GroupCode
{
public:
    // `kindWord` is the kind as written in the header, `groupName` the part after the colon.
    SampleGroup(const QTextBlock &block, Ovra::CodeNode *previous, uint subType, const QString &kindWord,
                const QString &groupName);

    // The header's text for a kind and a name.
    static QString headerText(const QString &kindWord, const QString &groupName);

    QString kindWord() const { return m_kind; }
    // The name after the colon, or the kind where there is none.
    QString name() const override;
    // "Kind: name", or the kind alone.
    QString displayName() const override;
    void setName(const QString &name) override;

    // The value's type from the language's key table (String for a key it doesn't know);
    // the line is indented under the header.
    Ovra::ValueCode *insertValue(uint index, const QString &name, const QVariant &value) override;
    Ovra::ValueCode *addValue(const QString &name, const QVariant &value) override;

    // From the parser: the header was read again with another name.
    void update(const QString &kindWord, const QString &groupName);

private:
    QString m_kind;
    QString m_name;
};

class SampleValue : public Ovra::ValueCode
{
public:
    SampleValue(Type type, const QTextBlock &block, Ovra::CodeNode *previous, const QString &key,
                const QStringList &keywords, const QString &text, const QVariant &value);

    // The line of a value as the language writes it, without indentation.
    static QString lineText(const QString &key, Type type, const QStringList &keywords, const QVariant &value);

    QString name() const override { return m_key; }
    // Writes the line with the new key and the value's text as it stands.
    void setName(const QString &name) override;
    QStringList keywords() const override { return m_keywords; }
    QString keyword(uint index) const override { return m_keywords.value(int(index)); }

    // The value's text as the line has it.
    QString text() const { return m_text; }
    // Rewrites the line with a new value; the parse brings it back.
    void write(const QVariant &value);

    // From the parser, for a line read again into this node.
    void update(const QString &key, const QString &text, const QVariant &value);

private:
    QString m_key;
    QStringList m_keywords;
    QString m_text;
};
