#pragma once

// A small definition language for testing code documents through real edits:
//   [Name]        a group (subtype 1)
//   key = value   a value of the group above
//   ; text        a comment, also at the end of a line
// Anything else is an error of its line.

#include "code/codedocument.h"
#include "code/groupcode.h"
#include "code/valuecode.h"

#include <QTextBlock>

class TestGroup : public Ovra::GroupCode
{
public:
    TestGroup(const QTextBlock &block, Ovra::CodeNode *previous, const QString &name)
        : GroupCode(block, previous, 1), m_name(name) {}
    QString name() const override { return m_name; }
    void setName(const QString &name) override { m_name = name; }

private:
    QString m_name;
};

class TestValue : public Ovra::ValueCode
{
public:
    TestValue(const QTextBlock &block, Ovra::CodeNode *previous, const QString &key, const QString &value)
        : ValueCode(typeOf(value), block, previous, value), key(key), value(value) {}
    static Type typeOf(const QString &value)
    {
        bool number = false;
        value.toInt(&number);
        return number ? Int : String;
    }
    QString name() const override { return key; }
    void setName(const QString &name) override { key = name; }
    QString key;
    QString value;
};

class TestParser : public Ovra::CodeParser
{
public:
    int calls = 0;
    QString lastLine;

    Ovra::CodeNode *parse(const QString &line, const QTextBlock &block, Ovra::CodeNode *oldNode,
                          Ovra::CodeNode *previous, Ovra::RootCode *root, Ovra::CodeParserSyntax *syntax) override
    {
        ++calls;
        lastLine = line;
        if (syntax) {
            for (int i = 0; i < line.size(); ++i) {
                if (line.at(i) == QLatin1Char('(') || line.at(i) == QLatin1Char(')'))
                    syntax->parenthesis(line.at(i) == QLatin1Char('('), line.at(i), i);
            }
        }
        const int comment = line.indexOf(QLatin1Char(';'));
        const QString code = (comment < 0 ? line : line.left(comment)).trimmed();
        if (syntax && comment >= 0)
            syntax->token(Ovra::CodeParserSyntax::Comment, comment, line.size());
        if (code.isEmpty())
            return nullptr;
        if (code.startsWith(QLatin1Char('[')) && code.endsWith(QLatin1Char(']'))) {
            const QString name = code.mid(1, code.size() - 2);
            if (syntax)
                syntax->token(Ovra::CodeParserSyntax::TokenType(4), 0, line.indexOf(QLatin1Char(']')) + 1);
            if (oldNode && oldNode->type() == Ovra::CodeNode::Group) {
                static_cast<TestGroup *>(oldNode)->setName(name);
                return oldNode;
            }
            return new TestGroup(block, previous, name);
        }
        const int equals = code.indexOf(QLatin1Char('='));
        if (equals > 0) {
            const QString key = code.left(equals).trimmed();
            const QString value = code.mid(equals + 1).trimmed();
            // A version line concerns the whole file.
            if (key == QLatin1String("version"))
                root->setVersion(value.toUShort(), true);
            if (syntax)
                syntax->token(Ovra::CodeParserSyntax::TokenType(3), 0, line.indexOf(QLatin1Char('=')));
            if (value.isEmpty() && syntax)
                syntax->warning(Ovra::CodeParserSyntax::TokenType(3), QStringLiteral("Empty value"), 0, equals);
            if (oldNode && oldNode->type() == Ovra::CodeNode::Value) {
                auto *old = static_cast<TestValue *>(oldNode);
                old->key = key;
                old->value = value;
                return old;
            }
            return new TestValue(block, previous, key, value);
        }
        if (syntax)
            syntax->error(Ovra::CodeParserSyntax::TokenType(2), QStringLiteral("Unknown line"), 0, line.size());
        return nullptr;
    }
};

class TestDocument : public Ovra::CodeDocument
{
public:
    TestDocument() : CodeDocument(0) { setParser(&parser); }
    ~TestDocument() override { setParser(nullptr); }
    void formatLines(int, int, bool) override {}
    TestParser parser;
};
