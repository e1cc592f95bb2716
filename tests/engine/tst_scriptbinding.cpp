#include "engine/script/script.h"
#include "scripttest.h"

#include <QPointer>
#include <QTest>

#include <algorithm>
#include <memory>
#include <stdexcept>

using namespace Ovra::Script;

namespace {

enum class Shade { Dark = 1, Light = 2 };
enum Side { Left = 0x1, Right = 0x2, Top = 0x4 };
Q_DECLARE_FLAGS(Sides, Side)

// A plain record, held by value in its userdata.
struct Color
{
    int red = 0;
    int green = 0;
    int blue = 0;
};

// Counts its live copies, to see that value userdata destroy what they own.
struct Tracked
{
    static int alive;
    Tracked() { ++alive; }
    Tracked(const Tracked &) { ++alive; }
    ~Tracked() { --alive; }
    int value = 7;
};
int Tracked::alive = 0;

class Shape
{
public:
    virtual ~Shape() = default;
    QString name() const { return m_name; }
    void setName(const QString &name) { m_name = name; }
    virtual int corners() const { return 0; }
    int scaled(int factor, int offset) const { return corners() * factor + offset; }

private:
    QString m_name;
};

// QObject first, so the Shape part of a Node is at another address than the Node.
class Node : public QObject, public Shape
{
public:
    int corners() const override { return 4; }
    Node *parentNode() const { return dynamic_cast<Node *>(parent()); }
    Node *addChild(const QString &name)
    {
        auto *child = new Node;
        child->setParent(this);
        child->setName(name);
        m_children.append(child);
        return child;
    }
    QList<Node *> children() const { return m_children; }
    Color color() const { return m_color; }
    void setColor(const Color &color) { m_color = color; }
    Shade shade() const { return m_shade; }
    void setShade(Shade shade) { m_shade = shade; }
    int sum(int a, int b, int c, int d) { return a + b + c + d; }
    void fail() { throw std::runtime_error("broken on purpose"); }

private:
    QList<Node *> m_children;
    Color m_color;
    Shade m_shade = Shade::Dark;
};

class Other
{
public:
    int value() const { return 3; }
};

// Which Shape a bound function was given, to check pointer adjustment through bases.
const Shape *lastShape = nullptr;

void registerTypes(Table &table)
{
    table.usertype<Shape>("Shape")
        .property("name", &Shape::name, &Shape::setName)
        .property("corners", &Shape::corners)
        .function("scaled", &Shape::scaled);
    table.usertype<Node>("Node")
        .base<QObject>()
        .base<Shape>()
        .property("parent", &Node::parentNode)
        .property("children", &Node::children)
        .property("color", &Node::color, &Node::setColor)
        .property("shade", &Node::shade, &Node::setShade)
        .function("addChild", &Node::addChild)
        .function("sum", &Node::sum)
        .function("sumTwo", [](Node *self, int a, int b) { return self->sum(a, b, 0, 0); })
        .function("fail", &Node::fail)
        .function("label", overload([](const Node &self) { return self.name(); },
                                    [](const Node &self, const QString &prefix) -> QString { return prefix + self.name(); }))
        .enumeration("Shade", {{"Dark", 1}, {"Light", 2}});
    table.usertype<Other>("Other").function("value", &Other::value);
    table.usertype<Color>("Color")
        .constructor<>()
        .constructor<int, int, int>()
        .constructor<const Color &>()
        .field("red", &Color::red)
        .field("r", &Color::red)
        .field("green", &Color::green)
        .field("blue", &Color::blue)
        .staticFunction("grey", [](int level) { return Color{level, level, level}; })
        .metaFunction("__tostring", [](const Color &c) {
            return QStringLiteral("Color(%1, %2, %3)").arg(c.red).arg(c.green).arg(c.blue);
        });
    table.usertype<Tracked>("Tracked").constructor<>().field("value", &Tracked::value);
    table.usertype<Sides>("Sides")
        .constructor<>()
        .metaFunction("__bor", [](Sides a, Sides b) { return a | b; });
    // A type with a built-in conversion can be a usertype too; a QStringList& self then
    // reaches the script's own list.
    table.usertype<QStringList>("StringList")
        .constructor<>()
        .property("count", [](const QStringList &list) { return list.size(); })
        .function("append", [](QStringList &list, const QString &text) { list.append(text); })
        .function("join", [](const QStringList &list, const QString &separator) { return list.join(separator); });
    table.enumeration("Side", {{"Left", Left}, {"Right", Right}, {"Top", Top}});
    table.function("describe", [](const Shape *shape) {
        lastShape = shape;
        return shape ? shape->name() : QStringLiteral("none");
    });
    table.function("cornersOf", [](const Shape &shape) {
        lastShape = &shape;
        return shape.corners();
    });
    table.function("hasTop", [](Sides sides) { return sides.testFlag(Top); });
}

} // namespace

class ScriptBindingTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<State> m_state;
    std::unique_ptr<Node> m_node;
    Other m_other;

    // Runs the code; on failure the test fails with the script's error.
    bool run(const QString &code)
    {
        QString error;
        bool ok = m_state->run(code, QStringLiteral("test.lua"), &error);
        if (!ok)
            qWarning("%s", qPrintable(error));
        return ok;
    }

private slots:
    void init()
    {
        m_state = std::make_unique<State>();
        m_state->openLibraries(State::SafeLibraries);
        Table globals = m_state->globals();
        registerTypes(globals);
        m_node = std::make_unique<Node>();
        m_node->setName(QStringLiteral("root"));
        globals.set("node", m_node.get());
        globals.set("other", &m_other);
        lastShape = nullptr;
    }
    void cleanup()
    {
        m_state.reset();
        m_node.reset();
    }

    // print() joins its arguments as Lua shows them, with tabs, into one line for the host.
    void printGoesToTheHost()
    {
        QStringList lines;
        m_state->setPrint([&lines](const QString &line) { lines << line; });
        QVERIFY(run(QStringLiteral("print('ä', 2, 2.5, nil, true) print() "
                                   "print(setmetatable({}, {__tostring = function() return 'shown' end}))")));
        QCOMPARE(lines, (QStringList{QStringLiteral("ä\t2\t2.5\tnil\ttrue"), QString(), QStringLiteral("shown")}));
        // A value Lua can't show is an error of the script, not of the host.
        QVERIFY(!run(QStringLiteral("print(setmetatable({}, {__tostring = function() return {} end}))")));
        QCOMPARE(lines.size(), 3);
    }

    void properties()
    {
        QCOMPARE(scriptResult(*m_state, QStringLiteral("node.name")), QVariant(QStringLiteral("root")));
        // A property of the base, reached and written through the derived type.
        QVERIFY(run(QStringLiteral("node.name = 'ä tree'")));
        QCOMPARE(m_node->name(), QStringLiteral("ä tree"));
        QCOMPARE(scriptResult(*m_state, QStringLiteral("node.corners")), QVariant(4));
        QVERIFY(run(QStringLiteral("node.shade = Node.Shade.Light")));
        QCOMPARE(m_node->shade(), Shade::Light);
        QCOMPARE(scriptResult(*m_state, QStringLiteral("node.shade")), QVariant(2));
    }

    void functions_data()
    {
        QTest::addColumn<QString>("expression");
        QTest::addColumn<QVariant>("expected");
        QTest::newRow("const member of a base") << "node:scaled(3, 1)" << QVariant(13);
        QTest::newRow("four arguments") << "node:sum(1, 2, 3, 4)" << QVariant(10);
        QTest::newRow("lambda with defaults") << "node:sumTwo(5, 6)" << QVariant(11);
        QTest::newRow("overload by count") << "node:label()" << QVariant(QStringLiteral("root"));
        QTest::newRow("overload by type") << "node:label('> ')" << QVariant(QStringLiteral("> root"));
        QTest::newRow("object result") << "node:addChild('leaf').name" << QVariant(QStringLiteral("leaf"));
        QTest::newRow("object back to C++") << "node:addChild('x').parent == node" << QVariant(true);
        QTest::newRow("null is nil") << "node.parent == nil" << QVariant(true);
        QTest::newRow("nil is null") << "describe(nil)" << QVariant(QStringLiteral("none"));
        QTest::newRow("static function") << "Color.grey(9).green" << QVariant(9);
        QTest::newRow("metamethod") << "tostring(Color(1, 2, 3))" << QVariant(QStringLiteral("Color(1, 2, 3)"));
        QTest::newRow("integral float as integer") << "node:scaled(2.0, 0)" << QVariant(8);
        QTest::newRow("enumeration") << "Side.Right" << QVariant(2);
        QTest::newRow("enumeration of a type") << "Node.Shade.Dark" << QVariant(1);
        QTest::newRow("no such enumerator") << "Side.Missing" << QVariant();
        QTest::newRow("enumerators listed")
            << "(function() local n = 0 for k, v in pairs(Side) do n = n + v end return n end)()" << QVariant(7);
        // Flags as integers combine with Lua's own operator, or through a flags value.
        QTest::newRow("flags as integers") << "hasTop(Side.Left | Side.Top)" << QVariant(true);
        QTest::newRow("flags value") << "hasTop(Sides() | Side.Right)" << QVariant(false);
        QTest::newRow("flags value back") << "Sides() | Side.Right | Side.Top" << QVariant(6);
    }
    void functions()
    {
        QFETCH(QString, expression);
        QFETCH(QVariant, expected);
        QCOMPARE(scriptResult(*m_state, expression), expected);
    }

    // The Shape inside a Node is at another address; the binding must hand over that one.
    void multipleInheritance()
    {
        QVERIFY(static_cast<void *>(static_cast<Shape *>(m_node.get())) != static_cast<void *>(m_node.get()));
        QCOMPARE(scriptResult(*m_state, QStringLiteral("describe(node)")), QVariant(QStringLiteral("root")));
        QCOMPARE(lastShape, static_cast<const Shape *>(m_node.get()));
        QCOMPARE(scriptResult(*m_state, QStringLiteral("cornersOf(node)")), QVariant(4));
        QCOMPARE(lastShape, static_cast<const Shape *>(m_node.get()));
        // A Node handed over as a Shape* shows as a Node, with all its members.
        m_state->globals().set("shape", static_cast<Shape *>(m_node.get()));
        QCOMPARE(scriptResult(*m_state, QStringLiteral("shape:sum(1, 1, 1, 1)")), QVariant(4));
        QCOMPARE(scriptResult(*m_state, QStringLiteral("shape == node")), QVariant(true));
        QCOMPARE(scriptResult(*m_state, QStringLiteral("shape == other")), QVariant(false));
        // Through a base that isn't registered itself, as long as the class names it.
        m_state->globals().function("asObject", [this]() -> QObject * { return m_node.get(); });
        QCOMPARE(scriptResult(*m_state, QStringLiteral("asObject() == node")), QVariant(true));
        QObject stranger;
        m_state->globals().function("stranger", [&stranger]() -> QObject * { return &stranger; });
        QVERIFY(scriptError(*m_state, QStringLiteral("stranger()")).contains(QLatin1String("QObject is not a registered script type")));
        // A plain Shape has no Node members.
        Shape plain;
        m_state->globals().set("plain", &plain);
        QVERIFY(scriptError(*m_state, QStringLiteral("return plain.children")).contains(QLatin1String("Shape has no member 'children'")));
    }

    void values()
    {
        QVERIFY(run(QStringLiteral("c = Color(1, 2, 3)\n"
                                   "assert(c.red == 1 and c.r == 1 and c.green == 2 and c.blue == 3)\n"
                                   "c.r = 10\n"
                                   "assert(c.red == 10)\n"
                                   "d = Color(c)\n"
                                   "d.red = 20\n"
                                   "assert(c.red == 10 and d.red == 20)\n"
                                   "e = Color()\n"
                                   "assert(e.red == 0 and e.blue == 0)\n"
                                   "node.color = d\n")));
        QCOMPARE(m_node->color().red, 20);
        QCOMPARE(m_node->color().green, 2);
        // A value read from an object is a copy: changing it leaves the object alone.
        QVERIFY(run(QStringLiteral("local copy = node.color\ncopy.red = 99\nassert(node.color.red == 20)")));
        QCOMPARE(m_node->color().red, 20);
    }

    void builtinAsUsertype()
    {
        QVERIFY(run(QStringLiteral("list = StringList()\nlist:append('a')\nlist:append('b')")));
        QCOMPARE(scriptResult(*m_state, QStringLiteral("list.count")), QVariant(2));
        QCOMPARE(scriptResult(*m_state, QStringLiteral("list:join('+')")), QVariant(QStringLiteral("a+b")));
        // Taken where a QStringList is wanted, and given back as a plain sequence.
        m_state->globals().function("reversed", [](QStringList list) {
            std::reverse(list.begin(), list.end());
            return list;
        });
        QCOMPARE(scriptResult(*m_state, QStringLiteral("reversed(list)[1]")), QVariant(QStringLiteral("b")));
        QCOMPARE(scriptResult(*m_state, QStringLiteral("reversed({'x', 'y'})[1]")), QVariant(QStringLiteral("y")));
        QVERIFY(scriptError(*m_state, QStringLiteral("local f = list.append\nf({}, 'x')"))
                    .startsWith(QLatin1String("lua: error: test.lua:2: bad self to 'StringList.append' (expected "
                                              "StringList, got table)")));
    }

    void valueLifetime()
    {
        QCOMPARE(Tracked::alive, 0);
        QVERIFY(run(QStringLiteral("local t = Tracked()\nt.value = 3\nkept = Tracked()")));
        QVERIFY(run(QStringLiteral("collectgarbage()\ncollectgarbage()")));
        QCOMPARE(Tracked::alive, 1);
        m_state.reset();
        QCOMPARE(Tracked::alive, 0);
    }

    // Userdata of objects don't own them: closing the state leaves them alive.
    void objectLifetime()
    {
        QPointer<QObject> child = m_node->addChild(QStringLiteral("kept"));
        QVERIFY(run(QStringLiteral("local c = node.children[1]\nc = nil\ncollectgarbage()")));
        m_state.reset();
        QVERIFY(child);
        QCOMPARE(m_node->children().size(), 1);
    }

    void conversions_data()
    {
        QTest::addColumn<QString>("expression");
        QTest::addColumn<QVariant>("expected");
        QTest::newRow("bool") << "echoBool(true)" << QVariant(true);
        QTest::newRow("int8 low end") << "echoInt8(-128)" << QVariant(-128);
        QTest::newRow("uint16 high end") << "echoUInt16(65535)" << QVariant(65535);
        QTest::newRow("int64") << "echoInt64(math.maxinteger)" << QVariant(qlonglong(std::numeric_limits<qint64>::max()));
        QTest::newRow("float") << "echoFloat(0.5)" << QVariant(0.5);
        QTest::newRow("double") << "echoDouble(-1.25)" << QVariant(-1.25);
        QTest::newRow("string UTF-8") << "echoString('grün') == 'grün'" << QVariant(true);
        QTest::newRow("bytes with zero") << "#echoBytes('a\\0b')" << QVariant(3);
        QTest::newRow("variant nil") << "echoVariant(nil) == nil" << QVariant(true);
        QTest::newRow("variant number") << "echoVariant(2.5)" << QVariant(2.5);
        QTest::newRow("variant list") << "echoVariant({1, 'two', true})[2]" << QVariant(QStringLiteral("two"));
        QTest::newRow("variant map") << "echoVariant({a = 1, b = {2, 3}}).b[2]" << QVariant(3);
        QTest::newRow("point") << "echoPoint({x = 3, y = -4}).y" << QVariant(-4);
        QTest::newRow("point float") << "echoPointF({x = 0.5, y = 1}).x" << QVariant(0.5);
        QTest::newRow("size") << "echoSize({width = 8, height = 9}).height" << QVariant(9);
        QTest::newRow("rect") << "echoRect({x = 1, y = 2, width = 3, height = 4}).width" << QVariant(3);
        QTest::newRow("string list") << "table.concat(echoStrings({'a', 'b', 'c'}), '-')" << QVariant(QStringLiteral("a-b-c"));
        QTest::newRow("empty list") << "#echoStrings({})" << QVariant(0);
        QTest::newRow("vector of ints") << "echoInts({5, 6, 7})[3]" << QVariant(7);
        QTest::newRow("list of objects") << "echoNodes({node, node})[2] == node" << QVariant(true);
        QTest::newRow("enum") << "echoShade(Node.Shade.Light)" << QVariant(2);
        QTest::newRow("value list") << "echoColors({Color(1, 1, 1), Color(4, 5, 6)})[2].blue" << QVariant(6);
        QTest::newRow("variant of a point") << "variantType({x = 3, y = 4})" << QVariant(QStringLiteral("QPoint"));
        QTest::newRow("variant of a real point") << "variantType({x = 0.5, y = 4})" << QVariant(QStringLiteral("QPointF"));
        QTest::newRow("variant of a size") << "variantType({width = 2, height = 3})" << QVariant(QStringLiteral("QSize"));
        QTest::newRow("variant of a rectangle") << "variantType({x = 1, y = 2, width = 3, height = 4})"
                                                << QVariant(QStringLiteral("QRect"));
        QTest::newRow("variant of more keys") << "variantType({x = 1, y = 2, z = 3})" << QVariant(QStringLiteral("QVariantMap"));
        QTest::newRow("variant of a text point") << "variantType({x = 'a', y = 2})" << QVariant(QStringLiteral("QVariantMap"));
        QTest::newRow("point through a variant") << "echoVariant({x = -3, y = 7}).y" << QVariant(7);
    }
    void conversions()
    {
        QFETCH(QString, expression);
        QFETCH(QVariant, expected);
        Table globals = m_state->globals();
        globals.function("echoBool", [](bool v) { return v; })
            .function("echoInt8", [](qint8 v) { return v; })
            .function("echoUInt16", [](quint16 v) { return v; })
            .function("echoInt64", [](qint64 v) { return v; })
            .function("echoFloat", [](float v) { return v; })
            .function("echoDouble", [](double v) { return v; })
            .function("echoString", [](const QString &v) { return v; })
            .function("echoBytes", [](const QByteArray &v) { return v; })
            .function("echoVariant", [](const QVariant &v) { return v; })
            .function("echoPoint", [](QPoint v) { return v; })
            .function("echoPointF", [](const QPointF &v) { return v; })
            .function("echoSize", [](QSize v) { return v; })
            .function("echoRect", [](const QRect &v) { return v; })
            .function("echoStrings", [](const QStringList &v) { return v; })
            .function("echoInts", [](const QVector<int> &v) { return v; })
            .function("echoNodes", [](const QList<Node *> &v) { return v; })
            .function("echoShade", [](Shade v) { return v; })
            .function("echoColors", [](const QVector<Color> &v) { return v; })
            .function("variantType", [](const QVariant &v) { return QString::fromLatin1(v.typeName()); });
        QCOMPARE(scriptResult(*m_state, expression), expected);
    }

    void errors_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("message");
        QTest::newRow("self is a number") << "local f = node.scaled\nf(5, 1, 2)"
                                          << "bad self to 'Shape.scaled' (expected Shape, got number)";
        QTest::newRow("self is nil") << "local f = node.scaled\nf(nil, 1, 2)"
                                     << "bad self to 'Shape.scaled' (expected Shape, got nil)";
        QTest::newRow("self of another type") << "local f = node.scaled\nf(other, 1, 2)"
                                              << "bad self to 'Shape.scaled' (expected Shape, got Other)";
        QTest::newRow("nil self of a pointer lambda") << "local f = node.sumTwo\nf(nil, 1, 2)"
                                                      << "bad self to 'Node.sumTwo' (expected Node, got nil)";
        QTest::newRow("self of a base type") << "local f = node.sum\nf(Color(), 1, 2, 3, 4)"
                                             << "bad self to 'Node.sum' (expected Node, got Color)";
        QTest::newRow("wrong argument type") << "node:scaled('x', 1)"
                                             << "bad argument #1 to 'Shape.scaled' (expected integer, got string)";
        QTest::newRow("fraction for integer") << "node:scaled(1.5, 1)" << "bad argument #1 to 'Shape.scaled' (expected integer";
        QTest::newRow("missing argument") << "node:scaled(1)" << "missing argument #2 to 'Shape.scaled'";
        QTest::newRow("nil for an object") << "cornersOf(nil)" << "bad argument #1 to 'cornersOf' (expected Shape, got nil)";
        QTest::newRow("wrong object") << "cornersOf(other)" << "bad argument #1 to 'cornersOf' (expected Shape, got Other)";
        QTest::newRow("string for a table") << "hasTop('x')" << "bad argument #1 to 'hasTop'";
        QTest::newRow("integer out of range") << "node:scaled(1 << 40, 0)" << "number out of integer range";
        QTest::newRow("unknown member") << "local x = node.nothing" << "Node has no member 'nothing'";
        QTest::newRow("indexing with a number") << "local x = node[1]" << "Node can't be indexed with a number";
        QTest::newRow("calling an unknown member") << "node:nothing()" << "Node has no member 'nothing'";
        QTest::newRow("read-only property") << "node.corners = 3" << "member 'corners' of Node is read-only";
        QTest::newRow("assigning a function member") << "node.sum = 3" << "member 'sum' of Node is read-only";
        QTest::newRow("writing an unknown member") << "node.extra = 1" << "Node has no member 'extra'";
        QTest::newRow("setter argument") << "node.name = {}" << "bad argument #1 to 'Shape.name' (expected string, got table)";
        QTest::newRow("no constructor") << "Node()" << "Node has no constructor";
        QTest::newRow("no fitting constructor") << "Color('red')" << "no constructor of Color takes (string)";
        QTest::newRow("no fitting overload") << "node:label(1, 2)" << "no overload of 'Node.label' takes (Node, number, number)";
        QTest::newRow("C++ exception") << "node:fail()" << "Node.fail: broken on purpose";
        QTest::newRow("enumeration is read-only") << "Side.Bottom = 8" << "enumeration Side is read-only";
    }
    void errors()
    {
        QFETCH(QString, code);
        QFETCH(QString, message);
        QString error = scriptError(*m_state, code);
        QVERIFY2(error.startsWith(QLatin1String("lua: error: ")), qPrintable(error));
        QVERIFY2(error.contains(message), qPrintable(error));
        // The state stays usable after an error.
        QCOMPARE(scriptResult(*m_state, QStringLiteral("node.name")), QVariant(QStringLiteral("root")));
    }

    void errorLocations_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("start");
        QTest::newRow("syntax") << "local a = 1\nlocal = 2" << "test.lua:2:";
        QTest::newRow("script error") << "\n\nerror('stop')" << "test.lua:3: stop";
        QTest::newRow("binding error") << "local a = 1\nlocal b = 2\nnode:scaled()" << "lua: error: test.lua:3: missing";
        QTest::newRow("getter error") << "\nlocal x = node.missing" << "lua: error: test.lua:2: Node has no member";
        QTest::newRow("error object") << "error({})" << "lua: error: (error object is a table value)";
    }
    void errorLocations()
    {
        QFETCH(QString, code);
        QFETCH(QString, start);
        QString error = scriptError(*m_state, code);
        QVERIFY2(error.startsWith(start), qPrintable(error));
    }

    void callIntoScript()
    {
        QVERIFY(run(QStringLiteral("function rename(n, name, times)\n"
                                   "  n.name = name:rep(times)\n"
                                   "  return n.name, #n.name, n\n"
                                   "end\n"
                                   "function broken() error('nope') end")));
        CallResult call = m_state->call("rename", m_node.get(), QStringLiteral("ab"), 2);
        QVERIFY2(call.ok, qPrintable(call.error));
        QCOMPARE(m_node->name(), QStringLiteral("abab"));
        QCOMPARE(call.values, QVariantList({QStringLiteral("abab"), 4, QVariant()}));

        call = m_state->call("broken");
        QVERIFY(!call.ok);
        QVERIFY2(call.error.startsWith(QLatin1String("test.lua:5: nope")), qPrintable(call.error));
        call = m_state->call("missing");
        QVERIFY(!call.ok);
        QVERIFY(call.error.startsWith(QLatin1String("lua: error: ")));
        // An argument of a type the state doesn't know is refused before the call.
        struct Unknown
        {
        } unknown;
        call = m_state->call("rename", &unknown);
        QVERIFY(!call.ok);
        QVERIFY2(call.error.contains(QLatin1String("is not a registered script type")), qPrintable(call.error));
        QCOMPARE(lua_gettop(m_state->luaState()), 0);
    }

    void tables()
    {
        Table globals = m_state->globals();
        Table space = globals.table("game");
        space.set("level", 3).set("title", QStringLiteral("Über")).set("owner", m_node.get());
        space.usertype<Other>("Thing").function("value", &Other::value);
        QVERIFY(globals.table("game").contains("level"));
        QCOMPARE(scriptResult(*m_state, QStringLiteral("game.level + #game.title")), QVariant(8));
        QCOMPARE(scriptResult(*m_state, QStringLiteral("game.owner == node")), QVariant(true));
        bool ok = true;
        QCOMPARE(space.get<QString>("level", &ok), QString());
        QVERIFY(!ok);
        QCOMPARE(space.get<Node *>("owner", &ok), m_node.get());
        QVERIFY(ok);
        QCOMPARE(space.get<Shape *>("owner", &ok), static_cast<Shape *>(m_node.get()));
        QCOMPARE(space.get<Other *>("owner", &ok), static_cast<Other *>(nullptr));
        QVERIFY(!ok);
        QCOMPARE(lua_gettop(m_state->luaState()), 0);
    }

    // A host's state is borrowed: registering and running work, closing is the host's.
    void hostState()
    {
        lua_State *host = luaL_newstate();
        {
            State state(host);
            state.openLibraries(State::BaseLibrary);
            Table globals = state.globals();
            registerTypes(globals);
            globals.set("node", m_node.get());
            QVERIFY(state.run(QStringLiteral("node.name = 'host'")));
        }
        QCOMPARE(m_node->name(), QStringLiteral("host"));
        QCOMPARE(lua_getglobal(host, "node"), LUA_TUSERDATA);
        lua_close(host);
    }
};

QTEST_GUILESS_MAIN(ScriptBindingTest)
#include "tst_scriptbinding.moc"
