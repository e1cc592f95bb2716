#include "testengine.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QtTest>

using namespace Ovra;

Q_DECLARE_METATYPE(Ovra::ValueCode::Type)

namespace {

TestValue *valueOn(CodeDocument &document, int line)
{
    return dynamic_cast<TestValue *>(document.nodeInBlock(document.findBlockByNumber(line)));
}

// A value built straight from a variant, with no text behind it.
TestValue *detached(QTextDocument &text, ValueCode::Type type, const QVariant &value)
{
    auto *node = new TestValue(text.firstBlock(), nullptr, QStringLiteral("k"), type, QString());
    node->setValue(value);
    return node;
}

} // namespace

class ValueCodeTest : public QObject
{
    Q_OBJECT

private slots:
    void convertFrom_data();
    void convertFrom();
    void readers();
    void textForms_data();
    void textForms();
    void roundTripThroughTheText_data();
    void roundTripThroughTheText();
    void keywordsAndNames();
    void groupValueOperations();
    void setValueIsSilentValueChangedIsNot();
};

void ValueCodeTest::convertFrom_data()
{
    QTest::addColumn<ValueCode::Type>("type");
    QTest::addColumn<QVariant>("in");
    QTest::addColumn<QVariant>("out");

    QTest::addRow("unknown keeps") << ValueCode::Unknown << QVariant(QRect(1, 2, 3, 4)) << QVariant(QRect(1, 2, 3, 4));
    QTest::addRow("string") << ValueCode::String << QVariant(12) << QVariant(QStringLiteral("12"));
    QTest::addRow("bool") << ValueCode::Bool << QVariant(QStringLiteral("true")) << QVariant(true);
    QTest::addRow("date") << ValueCode::Date << QVariant(QStringLiteral("2026-11-22")) << QVariant(QDate(2026, 11, 22));
    QTest::addRow("keyword") << ValueCode::Keyword << QVariant(QStringLiteral("2")) << QVariant(2u);
    QTest::addRow("float") << ValueCode::Float << QVariant(QStringLiteral("1.5")) << QVariant(1.5);
    QTest::addRow("int") << ValueCode::Int << QVariant(7.9) << QVariant(8);
    QTest::addRow("keyword vector of one") << ValueCode::KeywordVector << QVariant(3) << QVariant(QVariantList{3u});
    QTest::addRow("keyword vector stays") << ValueCode::KeywordVector << QVariant(QVariantList{1, 2})
                                          << QVariant(QVariantList{1, 2});
    QTest::addRow("float vector of one") << ValueCode::FloatVec3 << QVariant(2) << QVariant(QVariantList{2.0});
    // The length of a list is not held to the type.
    QTest::addRow("float vec4 of five") << ValueCode::FloatVec4 << QVariant(QVariantList{1, 2, 3, 4, 5})
                                        << QVariant(QVariantList{1, 2, 3, 4, 5});
    QTest::addRow("int vector of one") << ValueCode::IntVector << QVariant(QStringLiteral("9"))
                                       << QVariant(QVariantList{9});
    QTest::addRow("float vec2 from list") << ValueCode::FloatVec2 << QVariant(QVariantList{1.5})
                                          << QVariant(QPointF(1.5, 0));
    QTest::addRow("float vec2 stays") << ValueCode::FloatVec2 << QVariant(QPointF(3, 4)) << QVariant(QPointF(3, 4));
    QTest::addRow("float vec2 from point") << ValueCode::FloatVec2 << QVariant(QPoint(3, 4)) << QVariant(QPointF(3, 4));
    QTest::addRow("int vec2 from list") << ValueCode::IntVec2 << QVariant(QVariantList{QStringLiteral("5"), 6})
                                        << QVariant(QPoint(5, 6));
    QTest::addRow("int vec2 from pointf") << ValueCode::IntVec2 << QVariant(QPointF(1.4, 2.6)) << QVariant(QPoint(1, 3));
}

void ValueCodeTest::convertFrom()
{
    QFETCH(ValueCode::Type, type);
    QFETCH(QVariant, in);
    QFETCH(QVariant, out);
    QTextDocument text(QStringLiteral("k = 1"));
    std::unique_ptr<TestValue> node(detached(text, ValueCode::Unknown, QVariant()));
    const QVariant converted = node->convertFrom(type, in);
    QCOMPARE(converted, out);
    QCOMPARE(converted.userType(), out.userType());
}

void ValueCodeTest::readers()
{
    QTextDocument text(QStringLiteral("k = 1"));
    std::unique_ptr<TestValue> five(detached(text, ValueCode::Int, 5));
    QCOMPARE(five->asPoint(), QPoint(5, 0));
    QCOMPARE(five->asPointF(), QPointF(5, 0));
    QCOMPARE(five->asIntVector(), QVector<int>({5}));
    QCOMPARE(five->asRealVector(), QVector<double>({5.0}));
    QCOMPARE(five->asVector(), QVariantList({5}));
    QCOMPARE(five->asRect().left(), 5);
    QCOMPARE(five->asSize(), QSize(5, 0));
    QVERIFY(five->asBool());
    QCOMPARE(five->asUInt(), 5u);

    std::unique_ptr<TestValue> three(detached(text, ValueCode::IntVector, QVariantList{10, 20, 30}));
    QRect expected;
    expected.setLeft(10);
    expected.setTop(20);
    expected.setRight(30);
    QCOMPARE(three->asRect(), expected);
    QCOMPARE(three->asRect().bottom(), QRect().bottom());
    QCOMPARE(three->asPoint(), QPoint(10, 20));
    QCOMPARE(three->asIntVector(), QVector<int>({10, 20, 30}));

    std::unique_ptr<TestValue> one(detached(text, ValueCode::FloatVector, QVariantList{2.5}));
    QCOMPARE(one->asPointF(), QPointF(2.5, 0));
    QCOMPARE(one->asRealVector(), QVector<double>({2.5}));

    std::unique_ptr<TestValue> pair(detached(text, ValueCode::IntVec2, QPoint(3, -4)));
    QCOMPARE(pair->asSize(), QSize(3, -4));
    QCOMPARE(pair->asPointF(), QPointF(0, 0)); // a point is no list, and no FloatVec2
    std::unique_ptr<TestValue> real(detached(text, ValueCode::FloatVec2, QPointF(0.5, 1.5)));
    QCOMPARE(real->asPointF(), QPointF(0.5, 1.5));
}

void ValueCodeTest::textForms_data()
{
    QTest::addColumn<ValueCode::Type>("type");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("comma");
    QTest::addColumn<QString>("blank");

    QTest::addRow("float") << ValueCode::Float << QVariant(1.5) << "1.5" << "1.5";
    QTest::addRow("float vec2") << ValueCode::FloatVec2 << QVariant(QPointF(0.1234567, 2)) << "0.123457, 2"
                                << "0.123457 2";
    QTest::addRow("int vec2") << ValueCode::IntVec2 << QVariant(QPoint(-3, 40)) << "-3, 40" << "-3 40";
    QTest::addRow("int vector") << ValueCode::IntVector << QVariant(QVariantList{1, 2, 3}) << "1, 2, 3" << "1 2 3";
    QTest::addRow("bool") << ValueCode::Bool << QVariant(true) << "1" << "1";
    QTest::addRow("bool text stays") << ValueCode::Bool << QVariant(QStringLiteral("yes")) << "yes" << "yes";
    QTest::addRow("date") << ValueCode::Date << QVariant(QDate(2026, 1, 2)) << "2026-01-02" << "2026-01-02";
    QTest::addRow("keyword") << ValueCode::Keyword << QVariant(2u) << "high" << "high";
    // A keyword vector has no text form of its own: the engine writes those lines.
    QTest::addRow("keyword vector") << ValueCode::KeywordVector << QVariant(QVariantList{1u}) << "" << "";
}

void ValueCodeTest::textForms()
{
    QFETCH(ValueCode::Type, type);
    QFETCH(QVariant, value);
    QFETCH(QString, comma);
    QFETCH(QString, blank);

    // asString is for the engine's subclass; the test value writes through it.
    struct Writer : TestValue
    {
        using TestValue::TestValue;
        QString form(Type type, const QVariant &value, QChar separator) const { return asString(type, value, separator); }
    };
    QTextDocument text(QStringLiteral("k = 1"));
    Writer writer(text.firstBlock(), nullptr, QStringLiteral("k"), type, QString());
    QCOMPARE(writer.form(type, value, QLatin1Char(',')), comma);
    QCOMPARE(writer.form(type, value, QChar()), blank);
}

void ValueCodeTest::roundTripThroughTheText_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QVariant>("value");

    QTest::addRow("string") << "name:str = Kenji the Third" << QVariant(QStringLiteral("Kenji of the North"));
    QTest::addRow("bool") << "flag:bool = 0" << QVariant(true);
    QTest::addRow("date") << "made:date = 2020-01-01" << QVariant(QDate(2026, 11, 22));
    QTest::addRow("keyword") << "level:kw = low" << QVariant(3u);
    QTest::addRow("keyword vector") << "levels:kwv = none" << QVariant(QVariantList{2u, 0u, 3u});
    QTest::addRow("float") << "speed:float = 1" << QVariant(-2.75);
    QTest::addRow("float vec2") << "scale:fvec2 = 1, 1" << QVariant(QPointF(0.5, 2.25));
    QTest::addRow("float vec3") << "pos:fvec3 = 0, 0, 0" << QVariant(QVariantList{1.5, -2.0, 3.25});
    QTest::addRow("float vector") << "weights:fvec = 1" << QVariant(QVariantList{0.5, 1.5, 2.5, 3.5, 4.5});
    QTest::addRow("int") << "speed = 1000" << QVariant(-5);
    QTest::addRow("int vec2") << "offset:ivec2 = 0, 0" << QVariant(QPoint(-12, 30));
    QTest::addRow("int vec3") << "rgb:ivec3 = 0, 0, 0" << QVariant(QVariantList{255, 128, 0});
    QTest::addRow("int vector") << "list:ivec = 1" << QVariant(QVariantList{1, 1, 2, 3, 5, 8});
}

void ValueCodeTest::roundTripThroughTheText()
{
    QFETCH(QString, line);
    QFETCH(QVariant, value);

    TestDocument document;
    document.fromString(QStringLiteral("[Stats]\n") + line + QStringLiteral("\nnext = 1\n"));
    TestValue *node = valueOn(document, 1);
    QVERIFY(node);
    const ValueCode::Type type = node->valueType();
    QVERIFY(type != ValueCode::Unknown);
    const QVariant expected = node->convertFrom(type, value);

    // Written back as text, read again by the parser: the same raw value, in the same
    // node, of the same type.
    node->write(value);
    QCOMPARE(valueOn(document, 1), node);
    QCOMPARE(node->valueType(), type);
    QCOMPARE(node->rawValue(), expected);
    QCOMPARE(node->rawValue().userType(), expected.userType());

    // And a fresh parse of the whole text agrees.
    TestDocument fresh;
    fresh.fromString(document.toString());
    QCOMPARE(valueOn(fresh, 1)->rawValue(), expected);
    QCOMPARE(valueOn(fresh, 1)->valueType(), type);
}

void ValueCodeTest::keywordsAndNames()
{
    TestDocument document;
    document.fromString(QStringLiteral("[Stats]\nlevel:kw = high\nspeed = 1\nspeed = 2\n"));
    TestValue *level = valueOn(document, 1);
    QCOMPARE(level->value(), QVariant(QStringLiteral("high")));
    QCOMPARE(level->rawValue(), QVariant(2u));
    auto *data = static_cast<GroupCode *>(document.root()->childAt(0));
    // Two values of one name: the first counts.
    QCOMPARE(data->valueByName(QStringLiteral("speed")), valueOn(document, 2));
    QCOMPARE(data->value(QStringLiteral("speed")), QVariant(1));
    QCOMPARE(data->value(QStringLiteral("level")), QVariant(QStringLiteral("high")));
    QVERIFY(!data->value(QStringLiteral("none")).isValid());
    QCOMPARE(data->valueByName(QStringLiteral("none")), nullptr);
}

void ValueCodeTest::groupValueOperations()
{
    TestDocument document;
    document.fromString(QStringLiteral("[Stats]\na = 1\n; about b\nb = 2\n[Next]\n"));
    auto *data = static_cast<GroupCode *>(document.root()->childAt(0));
    ValueCode *inserted = data->insertValue(1, QStringLiteral("c"), 3);
    QVERIFY(inserted);
    QCOMPARE(inserted->name(), QStringLiteral("c"));
    QCOMPARE(data->valueAt(1), inserted);
    ValueCode *added = data->addValue(QStringLiteral("d"), QStringLiteral("text"));
    QCOMPARE(data->valueAt(3), added);
    // A value owns only its own line: the new one goes in right above b, under the comment.
    QCOMPARE(document.toString(), QStringLiteral("[Stats]\na = 1\n; about b\nc = 3\nb = 2\nd = text\n[Next]\n"));

    data->removeValue(2);
    QCOMPARE(document.toString(), QStringLiteral("[Stats]\na = 1\n; about b\nc = 3\nd = text\n[Next]\n"));
    data->removeValue(9); // past the end: nothing
    QCOMPARE(data->valueCount(), 3u);

    // A group with no document behind it has no lines.
    RootCode loose;
    new TestGroup(QTextBlock(), &loose, QStringLiteral("Loose"));
    QCOMPARE(static_cast<GroupCode *>(loose.childAt(0))->lastLine(), -1);
}

void ValueCodeTest::setValueIsSilentValueChangedIsNot()
{
    TestDocument document;
    document.fromString(QStringLiteral("[Stats]\nspeed = 1\n"));
    RootCode *root = document.root();
    QAbstractItemModelTester tester(root, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QSignalSpy changed(root, &QAbstractItemModel::dataChanged);
    TestValue *speed = valueOn(document, 1);

    speed->setValue(QStringLiteral("5"));
    QCOMPARE(speed->rawValue(), QVariant(5));
    QCOMPARE(changed.count(), 0);
    QCOMPARE(document.findBlockByNumber(1).text(), QStringLiteral("speed = 1")); // the text knows nothing

    // A renamed key is read into the same node, which tells the views.
    QTextCursor cursor(document.findBlockByNumber(1));
    cursor.insertText(QStringLiteral("max"));
    QCOMPARE(valueOn(document, 1), speed);
    QCOMPARE(speed->name(), QStringLiteral("maxspeed"));
    QCOMPARE(changed.count(), 1);
    const QModelIndex index = changed.first().at(0).value<QModelIndex>();
    QCOMPARE(root->data(index).toString(), QStringLiteral("maxspeed"));
}

QTEST_MAIN(ValueCodeTest)
#include "tst_valuecode.moc"
