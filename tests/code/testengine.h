#pragma once

// A small definition language for testing code documents through real edits:
//   [Name]        a group (subtype 1)
//   key = value   a value of the group above; key:type = value gives it a type
//                 (the words of TestValue::typeWords())
//   ; text        a comment, also at the end of a line
//   <id>          an animation
//   frame S, X, Y, D[, word...]
//                 a frame of the animation above: sprite, offset, delay; the words
//                 H and V flip it, loop makes it the loop point, #name names it
//   box a X1, Y1, X2, Y2 / box c ...
//                 an attack or collision box of the frame above
// Anything else is an error of its line.

#include "code/animationcode.h"
#include "code/animations.h"
#include "code/codedocument.h"
#include "code/framecode.h"
#include "code/groupcode.h"
#include "code/valuecode.h"

#include <QDate>
#include <QMap>
#include <QStringList>
#include <QTextBlock>

class TestGroup : public Ovra::GroupCode
{
public:
    TestGroup(const QTextBlock &block, Ovra::CodeNode *previous, const QString &name)
        : GroupCode(block, previous, 1), m_name(name) {}
    QString name() const override { return m_name; }
    void setName(const QString &name) override { change(QStringLiteral("[%1]").arg(name)); }

    Ovra::ValueCode *insertValue(uint index, const QString &name, const QVariant &value) override
    {
        const QString text = name + QStringLiteral(" = ") + value.toString();
        if (index < valueCount()) {
            document()->insertBefore(valueAt(index), text, false);
            return valueAt(index);
        }
        appendValue(text);
        return valueCount() ? valueAt(valueCount() - 1) : nullptr;
    }
    Ovra::ValueCode *addValue(const QString &name, const QVariant &value) override
    {
        return insertValue(valueCount(), name, value);
    }

    // The parser keeps the node when only the name changed.
    void rename(const QString &name) { m_name = name; }

private:
    QString m_name;
};

// A value line "key = text", or "key:type = text" with one of the type words below.
// Without a type, a whole number is an Int and anything else a String. Vectors are
// written with commas; keywords are the words of keywords().
class TestValue : public Ovra::ValueCode
{
public:
    TestValue(const QTextBlock &block, Ovra::CodeNode *previous, const QString &key, Type type, const QString &text)
        : ValueCode(type, block, previous, read(type, text)), key(key), source(text) {}

    static const QMap<QString, Type> &typeWords()
    {
        static const QMap<QString, Type> words{
            {QStringLiteral("str"), String},        {QStringLiteral("bool"), Bool},
            {QStringLiteral("file"), File},         {QStringLiteral("date"), Date},
            {QStringLiteral("kw"), Keyword},        {QStringLiteral("kwv"), KeywordVector},
            {QStringLiteral("float"), Float},       {QStringLiteral("fvec2"), FloatVec2},
            {QStringLiteral("fvec3"), FloatVec3},   {QStringLiteral("fvec4"), FloatVec4},
            {QStringLiteral("fvec"), FloatVector},  {QStringLiteral("int"), Int},
            {QStringLiteral("ivec2"), IntVec2},     {QStringLiteral("ivec3"), IntVec3},
            {QStringLiteral("ivec4"), IntVec4},     {QStringLiteral("ivec"), IntVector},
        };
        return words;
    }
    static QStringList testKeywords()
    {
        return {QStringLiteral("none"), QStringLiteral("low"), QStringLiteral("high"), QStringLiteral("max")};
    }
    static Type untypedType(const QString &text)
    {
        bool number = false;
        text.toInt(&number);
        return number ? Int : String;
    }
    // The text of a value as the language reads it, into the variant the node is made of.
    static QVariant read(Type type, const QString &text)
    {
        QVariantList items;
        for (const QString &item : text.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
            const QString word = item.trimmed();
            const int keyword = testKeywords().indexOf(word);
            if (type == KeywordVector)
                items << (keyword < 0 ? QVariant() : QVariant(uint(keyword)));
            else
                items << word;
        }
        switch (type) {
        case Bool:
            return text == QLatin1String("1") || text == QLatin1String("true");
        case Date:
            return QDate::fromString(text, Qt::ISODate);
        case Keyword:
            return uint(qMax(0, testKeywords().indexOf(text)));
        case Float:
            return text.toDouble();
        case Int:
            return text.toInt();
        case KeywordVector:
        case FloatVec2:
        case FloatVec3:
        case FloatVec4:
        case FloatVector:
        case IntVec2:
        case IntVec3:
        case IntVec4:
        case IntVector: {
            const bool real = type >= FloatVec2 && type <= FloatVector;
            if (type != KeywordVector) {
                for (QVariant &item : items)
                    item = real ? QVariant(item.toString().toDouble()) : QVariant(item.toString().toInt());
            }
            return items;
        }
        default:
            return text;
        }
    }

    QString name() const override { return key; }
    void setName(const QString &name) override { key = name; write(rawValue()); }
    QStringList keywords() const override { return testKeywords(); }
    QString keyword(uint index) const override { return testKeywords().value(int(index)); }

    // The text the language writes for a value of this node's type.
    QString text(const QVariant &data) const
    {
        if (valueType() == KeywordVector && data.userType() == QMetaType::QVariantList) {
            QStringList words;
            for (const QVariant &item : data.toList())
                words << keyword(item.toUInt());
            return words.join(QStringLiteral(", "));
        }
        return asString(valueType(), convertFrom(valueType(), data), QLatin1Char(','));
    }
    // Rewrites the line; the parse brings the value back.
    void write(const QVariant &data)
    {
        const QString word = typeWords().key(valueType());
        const QString typed = word.isEmpty() || untypedType(text(data)) == valueType() ? key : key + QLatin1Char(':') + word;
        change(typed + QStringLiteral(" = ") + text(data));
    }
    // From the parser, for a line read again into this node.
    void update(const QString &newKey, const QString &newText)
    {
        const bool renamed = newKey != key;
        key = newKey;
        source = newText;
        if (renamed)
            valueChanged(read(valueType(), newText));
        else
            setValue(read(valueType(), newText));
    }

    QString key;
    QString source; // the value's text as the line has it
};

// "box a X1, Y1, X2, Y2" (attack) or "box c ..." (collision): a box of the frame above,
// with the boxes between them.
class TestBox : public Ovra::ContactBoxCode
{
public:
    TestBox(const QTextBlock &block, Ovra::CodeNode *previous, BoxType type, const QRect &rect)
        : ContactBoxCode(block, previous), type(type), box(rect) {}

    static QString text(BoxType type, const QRect &rect)
    {
        return QStringLiteral("box %1 %2, %3, %4, %5")
            .arg(type == Attack ? QLatin1Char('a') : QLatin1Char('c'))
            .arg(rect.left()).arg(rect.top()).arg(rect.right()).arg(rect.bottom());
    }

    BoxType boxType() const override { return type; }
    QRect rect() const override { return box; }
    void setRect(const QRect &rect) override { change(text(type, rect)); }
    QStringList propertyNames() const override { return {QStringLiteral("Rect")}; }
    QVariant property(const QString &name) const override
    {
        return name == QLatin1String("Rect") ? QVariant(box) : QVariant();
    }
    void setProperty(const QString &name, const QVariant &value) override
    {
        if (name == QLatin1String("Rect"))
            setRect(value.toRect());
    }

    BoxType type;
    QRect box;
};

// The boxes of one type of a frame: the box lines right below it, found anew on each
// call, so that nothing points at a line that went.
class TestBoxes : public Ovra::ContactBoxesCode
{
public:
    explicit TestBoxes(Ovra::ContactBoxCode::BoxType type) : m_type(type) {}
    Ovra::FrameCode *frame() const override { return m_frame; }
    void setFrame(Ovra::FrameCode *frame) { m_frame = frame; }
    Ovra::ContactBoxCode::BoxType boxType() const override { return m_type; }
    QList<Ovra::ContactBoxCode *> boxes() const
    {
        QList<Ovra::ContactBoxCode *> list;
        for (Ovra::CodeNode *node = m_frame->next(); node && node->type() == Ovra::CodeNode::HitBox; node = node->next()) {
            auto *box = static_cast<Ovra::ContactBoxCode *>(node);
            if (box->boxType() == m_type)
                list << box;
        }
        return list;
    }
    uint count() const override { return uint(boxes().size()); }
    Ovra::ContactBoxCode *at(uint index) const override { return boxes().value(int(index)); }
    Ovra::ContactBoxCode *append(const QRect &rect) override
    {
        Ovra::CodeNode *last = m_frame;
        while (last->next() && last->next()->type() == Ovra::CodeNode::HitBox)
            last = last->next();
        m_frame->document()->insertAfter(last, TestBox::text(m_type, rect), true);
        return count() ? at(count() - 1) : nullptr;
    }
    void remove(uint index) override
    {
        if (Ovra::ContactBoxCode *box = at(index))
            box->remove(false);
    }
    void clear() override
    {
        m_frame->document()->beginChange();
        while (count())
            remove(0);
        m_frame->document()->endChange();
    }

private:
    Ovra::ContactBoxCode::BoxType m_type;
    Ovra::FrameCode *m_frame = nullptr;
};

class TestFrame : public Ovra::FrameCode
{
public:
    TestFrame(const QTextBlock &block, Ovra::CodeNode *previous, const QStringList &fields)
        : FrameCode(block, previous, new TestBoxes(Ovra::ContactBoxCode::Attack),
                    new TestBoxes(Ovra::ContactBoxCode::Collision))
        , fields(fields)
    {
        static_cast<TestBoxes *>(contactBoxes(Ovra::ContactBoxCode::Attack))->setFrame(this);
        static_cast<TestBoxes *>(contactBoxes(Ovra::ContactBoxCode::Collision))->setFrame(this);
    }

    QString field(int i) const { return fields.value(i).trimmed(); }
    void write(const QStringList &next) { change(QStringLiteral("frame ") + next.join(QStringLiteral(", "))); }
    void setField(int i, const QString &text)
    {
        QStringList next = fields;
        while (next.size() <= i)
            next << QStringLiteral("0");
        next[i] = text;
        write(next);
    }
    // The words behind the four fields: H, V, loop, #name, and tagged words tag=value.
    QStringList words() const { return fields.mid(4); }
    bool hasWord(const QString &word) const { return words().contains(word); }
    QString tagged(const QString &tag) const
    {
        for (const QString &word : words()) {
            if (word.startsWith(tag + QLatin1Char('=')))
                return word.mid(tag.size() + 1);
        }
        return QString();
    }
    // Writes the line once with the words changed: `drop` says which words go, `add`
    // what comes in.
    template <typename Drop>
    void rewrite(Drop drop, const QStringList &add)
    {
        QStringList next = fields.mid(0, 4);
        while (next.size() < 4)
            next << QStringLiteral("0");
        for (const QString &word : words()) {
            if (!drop(word))
                next << word;
        }
        write(next + add);
    }
    void setWord(const QString &word, bool on)
    {
        rewrite([&](const QString &w) { return w == word; }, on ? QStringList{word} : QStringList());
    }
    void setTagged(const QString &tag, const QString &value)
    {
        rewrite([&](const QString &w) { return w.startsWith(tag + QLatin1Char('=')); },
                value.isEmpty() ? QStringList() : QStringList{tag + QLatin1Char('=') + value});
    }

    QVariant property(const QString &name) const override
    {
        const QVariantList values{identifier(), offset(), delay(), scale(), angle(), uint(flipFlags()), isLoopPoint()};
        return values.value(propertyNames().indexOf(name));
    }
    void setProperty(const QString &name, const QVariant &value) override
    {
        switch (propertyNames().indexOf(name)) {
        case 0: setIdentifier(value.toString()); break;
        case 1: {
            QStringList next = fields;
            while (next.size() < 4)
                next << QStringLiteral("0");
            next[1] = QString::number(value.toPoint().x());
            next[2] = QString::number(value.toPoint().y());
            write(next);
            break;
        }
        case 2: setDelay(value.toInt()); break;
        case 3: setScale(value.toPointF()); break;
        case 4: setAngle(value.toDouble()); break;
        case 5: setFlipFlags(value.toUInt()); break;
        case 6: setLoopPoint(value.toBool()); break;
        default: break;
        }
    }

    Ovra::Sprite *sprite() const override { return nullptr; } // sprites come with the image code
    QVariant spriteId() const override { return field(0); }
    int offsetX() const override { return field(1).toInt(); }
    void setOffsetX(int x) override { setField(1, QString::number(x)); }
    int offsetY() const override { return field(2).toInt(); }
    void setOffsetY(int y) override { setField(2, QString::number(y)); }
    void setSpriteId(const QVariant &id) override { setField(0, id.toString()); }
    QString identifier() const override
    {
        for (const QString &word : words()) {
            if (word.startsWith(QLatin1Char('#')))
                return word.mid(1);
        }
        return QString();
    }
    void setIdentifier(const QString &identifier) override
    {
        rewrite([](const QString &w) { return w.startsWith(QLatin1Char('#')); },
                identifier.isEmpty() ? QStringList() : QStringList{QLatin1Char('#') + identifier});
    }
    int delay() const override { return field(3).toInt(); }
    void setDelay(int ticks) override { setField(3, QString::number(ticks)); }
    // scale=X:Y, 1:1 when not written
    QPointF scale() const override
    {
        const QString text = tagged(QStringLiteral("scale"));
        if (text.isEmpty())
            return QPointF(1.0, 1.0);
        return QPointF(text.section(QLatin1Char(':'), 0, 0).toDouble(), text.section(QLatin1Char(':'), 1, 1).toDouble());
    }
    void setScale(const QPointF &scale) override
    {
        const bool plain = scale == QPointF(1.0, 1.0);
        setTagged(QStringLiteral("scale"), plain ? QString() : QStringLiteral("%1:%2").arg(scale.x()).arg(scale.y()));
    }
    double scaleX() const override { return scale().x(); }
    void setScaleX(double x) override { setScale(QPointF(x, scaleY())); }
    double scaleY() const override { return scale().y(); }
    void setScaleY(double y) override { setScale(QPointF(scaleX(), y)); }
    double angle() const override { return tagged(QStringLiteral("angle")).toDouble(); }
    void setAngle(double degrees) override
    {
        setTagged(QStringLiteral("angle"), qFuzzyIsNull(degrees) ? QString() : QString::number(degrees));
    }
    bool isLoopPoint() const override { return hasWord(QStringLiteral("loop")); }
    quint8 flipFlags() const override
    {
        return quint8((hasWord(QStringLiteral("H")) ? Horizontal : None) | (hasWord(QStringLiteral("V")) ? Vertical : None));
    }
    void setFlipFlags(uint flags) override
    {
        QStringList add;
        if (flags & Horizontal)
            add << QStringLiteral("H");
        if (flags & Vertical)
            add << QStringLiteral("V");
        rewrite([](const QString &w) { return w == QLatin1String("H") || w == QLatin1String("V"); }, add);
    }
    // blend=MODE:SOURCE:DESTINATION with the mode as its number
    Blend blend() const override
    {
        const QStringList parts = tagged(QStringLiteral("blend")).split(QLatin1Char(':'));
        Blend result;
        if (parts.size() == 3) {
            result.mode = Blend::Mode(qBound(0, parts.at(0).toInt(), 6));
            result.source = parts.at(1).toDouble();
            result.destination = parts.at(2).toDouble();
        }
        return result;
    }
    void setBlend(const Blend &blend) override
    {
        setTagged(QStringLiteral("blend"), blend.mode == Blend::None ? QString()
                                           : QStringLiteral("%1:%2:%3").arg(int(blend.mode)).arg(blend.source).arg(blend.destination));
    }
    Blend::Mode blendMode() const override { return blend().mode; }
    void setBlendMode(Blend::Mode mode) override
    {
        Blend next = blend();
        next.mode = mode;
        setBlend(next);
    }
    double blendSource() const override { return blend().source; }
    void setBlendSource(double factor) override
    {
        Blend next = blend();
        next.source = factor;
        setBlend(next);
    }
    double blendDestination() const override { return blend().destination; }
    void setBlendDestination(double factor) override
    {
        Blend next = blend();
        next.destination = factor;
        setBlend(next);
    }
    void setLoopPoint(bool loop) override { setWord(QStringLiteral("loop"), loop); }
    uint interpolation() const override { return tagged(QStringLiteral("interp")).toUInt(); }
    void setInterpolation(uint flags) override
    {
        setTagged(QStringLiteral("interp"), flags ? QString::number(flags) : QString());
    }

    QStringList fields;
};

class TestAnimation : public Ovra::AnimationCode
{
public:
    TestAnimation(const QTextBlock &block, Ovra::CodeNode *previous, const QString &id)
        : AnimationCode(block, previous), id(id) {}

    QString name() const override { return QStringLiteral("Animation ") + id; }
    void setName(const QString &name) override { change(QStringLiteral("<%1>").arg(name)); }
    QVariant property(const QString &name) const override
    {
        if (name == QLatin1String("Identifier"))
            return id;
        return AnimationCode::property(name);
    }

    uint loopPoint() const override
    {
        for (uint i = 0; i < frameCount(); ++i) {
            if (frameAt(i)->isLoopPoint())
                return i;
        }
        return 0;
    }
    Ovra::FrameCode *insertFrame(uint index) override
    {
        const QString text = QStringLiteral("frame 0, 0, 0, 1");
        if (index < frameCount())
            document()->insertBefore(frameAt(index), text, false);
        else
            document()->insertAfter(frameCount() ? static_cast<CodeNode *>(frameAt(frameCount() - 1)) : this, text, true);
        return frameAt(qMin(index, frameCount() - 1));
    }
    Ovra::FrameCode *addFrame() override { return insertFrame(frameCount()); }

    QString id;
};

class TestAnimations : public Ovra::Animations
{
public:
    explicit TestAnimations(Ovra::CodeDocument *document) : Animations(document)
    {
        document->registerNodeFile(this, Ovra::CodeNode::Animation, 0);
    }
    QVariant newIdentifier() const override
    {
        int id = 0;
        while (find(0, id) >= 0)
            ++id;
        return id;
    }
    QString animationTemplate() const override { return QStringLiteral("<%1>\n"); }
    void free() override { delete this; }
};

class TestParser : public Ovra::CodeParser
{
public:
    int calls = 0;
    QString lastLine;
    // Lines handed over with a text other than their block's.
    int wrongTexts = 0;

    Ovra::CodeNode *parse(const QString &line, const QTextBlock &block, Ovra::CodeNode *oldNode,
                          Ovra::CodeNode *previous, Ovra::RootCode *root, Ovra::CodeParserSyntax *syntax) override
    {
        ++calls;
        lastLine = line;
        wrongTexts += line != block.text();
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
                static_cast<TestGroup *>(oldNode)->rename(name);
                return oldNode;
            }
            return new TestGroup(block, previous, name);
        }
        if (code.startsWith(QLatin1Char('<')) && code.endsWith(QLatin1Char('>'))) {
            const QString id = code.mid(1, code.size() - 2);
            if (oldNode && oldNode->type() == Ovra::CodeNode::Animation) {
                static_cast<TestAnimation *>(oldNode)->id = id;
                return oldNode;
            }
            return new TestAnimation(block, previous, id);
        }
        if (code.startsWith(QLatin1String("box a ")) || code.startsWith(QLatin1String("box c "))) {
            const QStringList corners = code.mid(6).split(QLatin1Char(','));
            const QRect rect(QPoint(corners.value(0).trimmed().toInt(), corners.value(1).trimmed().toInt()),
                             QPoint(corners.value(2).trimmed().toInt(), corners.value(3).trimmed().toInt()));
            const auto type = code.at(4) == QLatin1Char('a') ? Ovra::ContactBoxCode::Attack : Ovra::ContactBoxCode::Collision;
            if (oldNode && oldNode->type() == Ovra::CodeNode::HitBox) {
                auto *box = static_cast<TestBox *>(oldNode);
                box->type = type;
                box->box = rect;
                return box;
            }
            return new TestBox(block, previous, type, rect);
        }
        if (code.startsWith(QLatin1String("frame "))) {
            QStringList fields = code.mid(6).split(QLatin1Char(','));
            for (QString &field : fields)
                field = field.trimmed();
            if (oldNode && oldNode->type() == Ovra::CodeNode::Frame) {
                static_cast<TestFrame *>(oldNode)->fields = fields;
                return oldNode;
            }
            return new TestFrame(block, previous, fields);
        }
        const int equals = code.indexOf(QLatin1Char('='));
        if (equals > 0) {
            QString key = code.left(equals).trimmed();
            const QString value = code.mid(equals + 1).trimmed();
            Ovra::ValueCode::Type type = TestValue::untypedType(value);
            const int colon = key.indexOf(QLatin1Char(':'));
            if (colon > 0) {
                const auto found = TestValue::typeWords().constFind(key.mid(colon + 1));
                if (found == TestValue::typeWords().constEnd()) {
                    if (syntax)
                        syntax->error(Ovra::CodeParserSyntax::TokenType(2), QStringLiteral("Unknown type"), colon, equals);
                    return nullptr;
                }
                type = *found;
                key = key.left(colon);
            }
            // A version line concerns the whole file.
            if (key == QLatin1String("version"))
                root->setVersion(value.toUShort(), true);
            if (syntax)
                syntax->token(Ovra::CodeParserSyntax::TokenType(3), 0, line.indexOf(QLatin1Char('=')));
            if (value.isEmpty() && syntax)
                syntax->warning(Ovra::CodeParserSyntax::TokenType(3), QStringLiteral("Empty value"), 0, equals);
            if (oldNode && oldNode->type() == Ovra::CodeNode::Value
                && static_cast<TestValue *>(oldNode)->valueType() == type) {
                static_cast<TestValue *>(oldNode)->update(key, value);
                return oldNode;
            }
            return new TestValue(block, previous, key, type, value);
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
    void formatLines(int, int, bool) override {}
    // Types `text` over the whole of line `line`, as one edit.
    void replaceLine(int line, const QString &text)
    {
        QTextCursor cursor(findBlockByNumber(line));
        cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
        cursor.insertText(text);
    }
    TestParser parser;
};

// A document of the language with its list of animations, torn down in the right order.
struct AnimationsDocument
{
    explicit AnimationsDocument(const QString &text)
    {
        document.fromString(text);
        animations = new TestAnimations(&document);
    }
    ~AnimationsDocument() { animations->release(); }
    TestDocument document;
    TestAnimations *animations = nullptr;
};
