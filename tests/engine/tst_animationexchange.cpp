#include "animationexchange.h"
#include "testengine.h"

#include <QAbstractItemModelTester>
#include <QBuffer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

using namespace Ovra;

namespace {

// Every property a frame has, in two animations with frames and one without.
const char *const Source = "<0>\n"
                           "frame 3, 10, -20, 4, H, #start\n"
                           "box a 0, 0, 10, 12\n"
                           "box a -5, -5, 5, 5\n"
                           "box c 1, 2, 30, 40\n"
                           "frame 7, 0, 0, -1, V, loop, scale=2:0.5, angle=45, blend=1:0.5:1, interp=3\n"
                           "<walk>\n"
                           "frame hero, 1, 2, 5, H, V, blend=6:0.25:0.75\n"
                           "frame hero2, 0, 0, 6, angle=-12.5\n"
                           "box c 0, 0, 1, 1\n"
                           "<12>\n";

// The test language with a template that already brings two frames.
class FramedAnimations : public TestAnimations
{
public:
    using TestAnimations::TestAnimations;
    QString animationTemplate() const override { return QStringLiteral("<%1>\nframe 0, 0, 0, 1\nframe 0, 0, 0, 1\n"); }
};

struct Fixture
{
    explicit Fixture(const QString &text = QString(), bool framed = false)
    {
        document.fromString(text);
        animations = framed ? new FramedAnimations(&document) : new TestAnimations(&document);
    }
    ~Fixture() { animations->release(); }

    QStringList ids() const
    {
        QStringList list;
        for (const AnimationCode *animation : animations->animations())
            list << animation->property(QStringLiteral("Identifier")).toString();
        return list;
    }

    TestDocument document;
    TestAnimations *animations = nullptr;
};

QString boxes(const ContactBoxesCode *list)
{
    QString text;
    for (uint i = 0; i < list->count(); ++i) {
        const QRect r = list->at(i)->rect();
        text += QStringLiteral("[%1,%2,%3,%4]").arg(r.left()).arg(r.top()).arg(r.right()).arg(r.bottom());
    }
    return text;
}

// All that the library's interfaces tell of a frame, in one line.
QString describe(const FrameCode *f)
{
    const FrameCode::Blend b = f->blend();
    return QStringLiteral("sprite=%1 offset=%2,%3 delay=%4 flip=%5 scale=%6,%7 angle=%8 blend=%9/%10/%11 interp=%12 "
                          "loop=%13 id=%14 attack=%15 collision=%16")
        .arg(f->spriteId().toString()).arg(f->offsetX()).arg(f->offsetY()).arg(f->delay()).arg(f->flipFlags())
        .arg(f->scaleX()).arg(f->scaleY()).arg(f->angle()).arg(int(b.mode)).arg(b.source).arg(b.destination)
        .arg(f->interpolation()).arg(int(f->isLoopPoint())).arg(f->identifier())
        .arg(boxes(f->contactBoxes(ContactBoxCode::Attack)), boxes(f->contactBoxes(ContactBoxCode::Collision)));
}

QStringList describe(const AnimationCode *animation)
{
    QStringList lines{QStringLiteral("animation %1 \"%2\"").arg(animation->property(QStringLiteral("Identifier")).toString(),
                                                                animation->name())};
    for (const FrameCode *frame : animation->frames())
        lines << describe(frame);
    return lines;
}

QByteArray exported(Animations &animations, const QList<uint> &rows)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    AnimationExchangeExporter exporter;
    if (!exporter.exportAnimations(animations, rows, &buffer))
        return QByteArray();
    return bytes;
}

bool imported(const QByteArray &bytes, Animations &animations, AnimationImporterExtension::ImportConflict conflict,
              QStringList *identifiers, QString *error = nullptr)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    AnimationExchangeImporter importer;
    const bool ok = importer.importAnimations(&buffer, animations, std::move(conflict), identifiers);
    if (error)
        *error = importer.errorString();
    return ok;
}

QByteArray json(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

QByteArray file(const QJsonArray &animations, const QJsonValue &version = 1)
{
    return json({{"format", "ovra-animations"}, {"version", version}, {"animations", animations}});
}

QJsonObject animation(const QJsonValue &identifier, const QJsonArray &frames = {})
{
    return QJsonObject{{"identifier", identifier}, {"frames", frames}};
}

// A good frame with one member replaced (or taken out, for an undefined value).
QJsonObject frame(const QString &key = QString(), const QJsonValue &value = QJsonValue::Undefined)
{
    QJsonObject object{{"sprite", 1}, {"delay", 2}, {"offset", QJsonArray{3, 4}}};
    if (value.isUndefined())
        object.remove(key);
    else
        object.insert(key, value);
    return object;
}

} // namespace

class AnimationExchangeTest : public QObject
{
    Q_OBJECT

private slots:
    void roundTrip_data();
    void roundTrip();
    void nameClash_data();
    void nameClash();
    void oneUndoStep();
    void defaultsAndTemplateFrames();
    void badInput_data();
    void badInput();
    void pinnedLayout();
};

void AnimationExchangeTest::roundTrip_data()
{
    QTest::addColumn<QList<uint>>("rows");
    QTest::addColumn<QStringList>("ids");
    QTest::newRow("all") << QList<uint>{0, 1, 2} << QStringList{"0", "walk", "12"};
    QTest::newRow("one") << QList<uint>{1} << QStringList{"walk"};
    QTest::newRow("reordered") << QList<uint>{2, 0} << QStringList{"12", "0"};
    QTest::newRow("none") << QList<uint>{} << QStringList{};
}

void AnimationExchangeTest::roundTrip()
{
    QFETCH(QList<uint>, rows);
    QFETCH(QStringList, ids);
    Fixture source(QString::fromLatin1(Source));
    QCOMPARE(source.ids(), QStringList({"0", "walk", "12"}));
    // The reading side is checked against the text, so that a blind comparison can't pass.
    QCOMPARE(describe(source.animations->at(0)->frameAt(1)),
             QStringLiteral("sprite=7 offset=0,0 delay=-1 flip=2 scale=2,0.5 angle=45 blend=1/0.5/1 interp=3 loop=1 id= "
                            "attack= collision="));
    QCOMPARE(describe(source.animations->at(0)->frameAt(0)),
             QStringLiteral("sprite=3 offset=10,-20 delay=4 flip=1 scale=1,1 angle=0 blend=0/0/0 interp=0 loop=0 id=start "
                            "attack=[0,0,10,12][-5,-5,5,5] collision=[1,2,30,40]"));

    const QByteArray bytes = exported(*source.animations, rows);
    QVERIFY(!bytes.isEmpty());
    Fixture target;
    QAbstractItemModelTester tester(target.animations, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QSignalSpy inserted(target.animations, &QAbstractItemModel::rowsInserted);
    QStringList identifiers;
    QVERIFY(imported(bytes, *target.animations, nullptr, &identifiers));
    QCOMPARE(identifiers, ids);
    QCOMPARE(target.ids(), ids);
    QCOMPARE(inserted.count(), ids.size());
    QList<uint> all;
    for (int i = 0; i < rows.size(); ++i) {
        QCOMPARE(describe(target.animations->at(uint(i))), describe(source.animations->at(rows.at(i))));
        all << uint(i);
    }
    QCOMPARE(exported(*target.animations, all), bytes);
}

void AnimationExchangeTest::nameClash_data()
{
    QTest::addColumn<QList<uint>>("rows");
    QTest::addColumn<int>("answer"); // -1: no function at all
    QTest::addColumn<QStringList>("asked");
    QTest::addColumn<QStringList>("ids");
    QTest::addColumn<QStringList>("imported");
    QTest::addColumn<QString>("walkSprite");

    QTest::newRow("replace") << QList<uint>{2, 1} << 1 << QStringList{"walk"} << QStringList{"walk", "0", "12"}
                             << QStringList{"12", "walk"} << "hero";
    QTest::newRow("skip") << QList<uint>{2, 1} << 0 << QStringList{"walk"} << QStringList{"walk", "0", "12"}
                          << QStringList{"12"} << "old";
    QTest::newRow("no function skips") << QList<uint>{1} << -1 << QStringList{} << QStringList{"walk", "0"}
                                       << QStringList{} << "old";
    // The same animation twice in one file: the second clashes with the first.
    QTest::newRow("twice in the file") << QList<uint>{1, 1} << 1 << QStringList{"walk", "walk"}
                                       << QStringList{"walk", "0"} << QStringList{"walk", "walk"} << "hero";
}

void AnimationExchangeTest::nameClash()
{
    QFETCH(QList<uint>, rows);
    QFETCH(int, answer);
    QFETCH(QStringList, asked);
    QFETCH(QStringList, ids);
    QFETCH(QStringList, imported);
    QFETCH(QString, walkSprite);

    Fixture source(QString::fromLatin1(Source));
    // "walk" clashes; "0" is there too but not in every file.
    Fixture target(QStringLiteral("<walk>\nframe old, 9, 9, 9\n<0>\nframe kept, 0, 0, 1\n"));
    QStringList questions;
    AnimationImporterExtension::ImportConflict conflict;
    if (answer >= 0) {
        conflict = [&](const QString &identifier) {
            questions << identifier;
            return answer == 1;
        };
    }
    QStringList identifiers;
    QVERIFY(::imported(exported(*source.animations, rows), *target.animations, conflict, &identifiers));
    QCOMPARE(questions, asked);
    QCOMPARE(identifiers, imported);
    QCOMPARE(target.ids(), ids);
    const AnimationCode *walk = target.animations->at(0);
    QCOMPARE(walk->frameAt(0)->spriteId().toString(), walkSprite);
    QCOMPARE(walk->frameCount(), walkSprite == QLatin1String("old") ? 1u : 2u);
    QCOMPARE(target.animations->at(1)->frameAt(0)->spriteId().toString(), QStringLiteral("kept"));
}

void AnimationExchangeTest::oneUndoStep()
{
    Fixture source(QString::fromLatin1(Source));
    const QString before = QStringLiteral("<walk>\nframe old, 9, 9, 9\n<99>\n");
    Fixture target(before);
    QVERIFY(imported(exported(*source.animations, {0, 1, 2}), *target.animations, [](const QString &) { return true; },
                     nullptr));
    QCOMPARE(target.ids(), QStringList({"walk", "99", "0", "12"}));
    target.document.undo();
    QCOMPARE(target.document.toString(), before);
    QCOMPARE(target.ids(), QStringList({"walk", "99"}));
    QCOMPARE(target.animations->at(0)->frameAt(0)->spriteId().toString(), QStringLiteral("old"));
}

void AnimationExchangeTest::defaultsAndTemplateFrames()
{
    // A numeric identifier, a frame with nothing but what it must have, and one with
    // three frames: the template's two frames are used and a third is added; for the
    // first, the template's surplus frame goes.
    const QByteArray bytes = file({animation(42, {QJsonObject{{"sprite", 5}, {"delay", 3}}}),
                                   animation("run", {frame(), frame("loop", true), frame("flip", "both")})});
    for (const bool framed : {false, true}) {
        Fixture target(QString(), framed);
        QStringList identifiers;
        QVERIFY(imported(bytes, *target.animations, nullptr, &identifiers));
        QCOMPARE(identifiers, QStringList({"42", "run"}));
        QCOMPARE(target.animations->at(0)->frameCount(), 1u);
        QCOMPARE(describe(target.animations->at(0)->frameAt(0)),
                 QStringLiteral("sprite=5 offset=0,0 delay=3 flip=0 scale=1,1 angle=0 blend=0/0/0 interp=0 loop=0 id= "
                                "attack= collision="));
        const AnimationCode *run = target.animations->at(1);
        QCOMPARE(run->frameCount(), 3u);
        QCOMPARE(describe(run->frameAt(0)), describe(run->frameAt(1)).replace(QLatin1String("loop=1"), QLatin1String("loop=0")));
        QCOMPARE(run->loopPoint(), 1u);
        QCOMPARE(run->frameAt(2)->flipFlags(), quint8(FrameCode::Both));
        QCOMPARE(run->frameAt(2)->offset(), QPoint(3, 4));
    }
}

void AnimationExchangeTest::badInput_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("message");
    const QJsonArray good{animation("a", {frame()})};
    const QByteArray valid = file(good);

    QTest::newRow("empty") << QByteArray() << "Not a JSON document";
    QTest::newRow("not JSON") << QByteArray("hello, animations") << "Not a JSON document";
    QTest::newRow("cut short") << valid.left(valid.size() / 2) << "Not a JSON document";
    QTest::newRow("a list") << QByteArray("[1, 2]") << "not a JSON object";
    QTest::newRow("another format") << json({{"format", "pictures"}, {"version", 1}, {"animations", good}}) << "\"format\" must be";
    QTest::newRow("no format") << json({{"version", 1}, {"animations", good}}) << "\"format\" must be";
    QTest::newRow("newer version") << file(good, 2) << "only version 1";
    QTest::newRow("version 0") << file(good, 0) << "\"version\" must be";
    QTest::newRow("version as text") << file(good, "1") << "\"version\" must be";
    QTest::newRow("animations not a list") << json({{"format", "ovra-animations"}, {"version", 1}, {"animations", 3}})
                                           << "\"animations\" must be a list";
    QTest::newRow("animation not an object") << file({animation("a"), "b"}) << "Animation 2: not a JSON object";
    QTest::newRow("no identifier") << file({QJsonObject{{"frames", QJsonArray{}}}}) << "Animation 1: \"identifier\"";
    QTest::newRow("empty identifier") << file({animation("")}) << "Animation 1: \"identifier\"";
    QTest::newRow("identifier of two lines") << file({animation("a>\nframe 1, 2, 3, 4\n<b")}) << "Animation 1: \"identifier\"";
    QTest::newRow("fractional identifier") << file({animation(1.5)}) << "Animation 1: \"identifier\"";
    QTest::newRow("name not a text") << file({QJsonObject{{"identifier", "a"}, {"name", 5}}}) << "\"name\"";
    QTest::newRow("frames not a list") << file({QJsonObject{{"identifier", "a"}, {"frames", "many"}}}) << "\"frames\"";
    QTest::newRow("frame not an object") << file({animation("a", {5})}) << "frame 1: not a JSON object";
    QTest::newRow("no sprite") << file({animation("a", {frame("sprite")})}) << "\"sprite\"";
    QTest::newRow("sprite of three") << file({animation("a", {frame("sprite", QJsonArray{1, 2, 3})})}) << "\"sprite\"";
    QTest::newRow("sprite an object") << file({animation("a", {frame("sprite", QJsonObject{})})}) << "\"sprite\"";
    QTest::newRow("no delay") << file({animation("a", {frame("delay")})}) << "\"delay\"";
    QTest::newRow("fractional delay") << file({animation("a", {frame("delay", 1.5)})}) << "\"delay\"";
    QTest::newRow("offset of three") << file({animation("a", {frame("offset", QJsonArray{1, 2, 3})})}) << "\"offset\"";
    QTest::newRow("offset as text") << file({animation("a", {frame("offset", "1,2")})}) << "\"offset\"";
    QTest::newRow("offset far away") << file({animation("a", {frame("offset", QJsonArray{1e9, 0})})}) << "\"offset\"";
    QTest::newRow("unknown flip") << file({animation("a", {frame("flip", "sideways")})}) << "\"flip\"";
    QTest::newRow("huge scale") << file({animation("a", {frame("scale", QJsonArray{1e9, 1})})}) << "\"scale\"";
    QTest::newRow("angle as text") << file({animation("a", {frame("angle", "45")})}) << "\"angle\"";
    QTest::newRow("blend not an object") << file({animation("a", {frame("blend", "addition")})}) << "\"blend\" must be";
    QTest::newRow("unknown blend") << file({animation("a", {frame("blend", QJsonObject{{"mode", "mix"}})})}) << "\"blend\" must be";
    QTest::newRow("blend factor text") << file({animation("a", {frame("blend", QJsonObject{{"mode", "dodge"}, {"source", "1"}})})})
                                       << "factors of \"blend\"";
    QTest::newRow("negative interpolation") << file({animation("a", {frame("interpolation", -1)})}) << "\"interpolation\"";
    QTest::newRow("loop as text") << file({animation("a", {frame("loop", "yes")})}) << "\"loop\"";
    QTest::newRow("frame identifier null") << file({animation("a", {frame("identifier", QJsonValue::Null)})}) << "frame 1: \"identifier\"";
    QTest::newRow("box of three") << file({animation("a", {frame("attack", QJsonArray{QJsonArray{1, 2, 3}})})}) << "a box of \"attack\"";
    QTest::newRow("box turned over") << file({animation("a", {frame("collision", QJsonArray{QJsonArray{5, 0, 1, 4}})})}) << "a box of \"collision\"";
    QTest::newRow("boxes not a list") << file({animation("a", {frame("collision", 4)})}) << "\"collision\" must be a list";

    QJsonArray boxes;
    for (int i = 0; i <= AnimationExchange::MaxBoxes; ++i)
        boxes.append(QJsonArray{0, 0, i, i});
    QTest::newRow("too many boxes") << file({animation("a", {frame("attack", boxes)})}) << "\"attack\" must be a list";
    QJsonArray frames;
    for (int i = 0; i <= AnimationExchange::MaxFramesPerAnimation; ++i)
        frames.append(frame());
    QTest::newRow("too many frames") << file({animation("a", frames)}) << "too many frames";
    QJsonArray many;
    for (int i = 0; i <= AnimationExchange::MaxAnimations; ++i)
        many.append(animation(i));
    QTest::newRow("too many animations") << file(many) << "more than the 10000";
    // Good JSON but for its size: spaces after the end.
    QTest::newRow("too large") << valid + QByteArray(int(AnimationExchange::MaxFileSize) + 1 - valid.size(), ' ') << "larger than";

    // Everything is read before anything is written: a fault in the last animation.
    QTest::newRow("fault at the end") << file({animation("a", {frame()}), animation("b", {frame()}),
                                               animation("c", {frame("delay", "long")})}) << "Animation 3, frame 1: \"delay\"";
    // Good JSON that the language can't hold (the ';' starts a comment): the first
    // animation is written already and is taken back.
    QTest::newRow("refused by the language") << file({animation("a", {frame()}), animation("x;y", {frame()})}) << "could not be written";
}

void AnimationExchangeTest::badInput()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, message);
    const QString before = QStringLiteral("<walk>\nframe old, 9, 9, 9\n");
    Fixture target(before);
    bool asked = false;
    QStringList identifiers{QStringLiteral("stale")};
    QString error;
    QVERIFY(!imported(bytes, *target.animations, [&](const QString &) { return asked = true; }, &identifiers, &error));
    QVERIFY2(error.contains(message), qPrintable(error));
    QVERIFY(identifiers.isEmpty());
    QVERIFY(!asked);
    QCOMPARE(target.document.toString(), before);
    QCOMPARE(target.ids(), QStringList({"walk"}));
}

void AnimationExchangeTest::pinnedLayout()
{
    Fixture source(QStringLiteral("<7>\nframe 2, 1, -1, 3, H\nbox c 0, 0, 4, 8\n"));
    const QByteArray expected = "{\n"
                                "    \"animations\": [\n"
                                "        {\n"
                                "            \"frames\": [\n"
                                "                {\n"
                                "                    \"collision\": [\n"
                                "                        [\n"
                                "                            0,\n"
                                "                            0,\n"
                                "                            4,\n"
                                "                            8\n"
                                "                        ]\n"
                                "                    ],\n"
                                "                    \"delay\": 3,\n"
                                "                    \"flip\": \"horizontal\",\n"
                                "                    \"offset\": [\n"
                                "                        1,\n"
                                "                        -1\n"
                                "                    ],\n"
                                "                    \"sprite\": \"2\"\n"
                                "                }\n"
                                "            ],\n"
                                "            \"identifier\": \"7\",\n"
                                "            \"name\": \"Animation 7\"\n"
                                "        }\n"
                                "    ],\n"
                                "    \"format\": \"ovra-animations\",\n"
                                "    \"version\": 1\n"
                                "}\n";
    QCOMPARE(exported(*source.animations, {0}), expected);

    // A row that doesn't exist writes nothing.
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    AnimationExchangeExporter exporter;
    QVERIFY(!exporter.exportAnimations(*source.animations, {0, 1}, &buffer));
    QVERIFY(bytes.isEmpty());
    QVERIFY(!exporter.errorString().isEmpty());
}

QTEST_MAIN(AnimationExchangeTest)
#include "tst_animationexchange.moc"
