// The sample engine's definition and animation languages, through real documents and
// real edits: what the parser reports, what the nodes write, and that the text read
// again gives the same model.
#include "animationdocument.h"
#include "definitiondocument.h"
#include "sampleanimationcode.h"
#include "samplecode.h"
#include "samplelanguage.h"
#include "sampleparser.h"
#include "held.h"

#include "code/codeblockdata.h"
#include "foundation/messages.h"

#include <QAbstractItemModelTester>
#include <QDate>
#include <QDir>
#include <QSignalSpy>
#include <QTextBlock>
#include <QXmlStreamReader>
#include <QtTest>

#include <functional>

using namespace Ovra;

namespace {

// Collects what the parser reports about one line.
struct Recorder : CodeParserSyntax
{
    struct Report
    {
        int kind; // 0 error, 1 deprecation, 2 warning
        QString text;
        int start;
        int end;
    };
    QList<Report> reports;
    QList<QPair<bool, int>> parentheses;
    int tokens = 0;

    void token(TokenType, int, int) override { ++tokens; }
    void error(TokenType, const QString &text, int start, int end) override { reports << Report{0, text, start, end}; }
    void deprecated(TokenType, const QString &text, int start, int end) override { reports << Report{1, text, start, end}; }
    void warning(TokenType, const QString &text, int start, int end) override { reports << Report{2, text, start, end}; }
    void parenthesis(bool opening, QChar, int position) override { parentheses << qMakePair(opening, position); }
    void link(CodeLink *link) override { delete link; }
};

// Parses one line as if it stood at the end of `document`, behind its last node, and
// takes the node away again: the line's reports are what is left.
Recorder parseAtEnd(CodeDocument *document, const QString &line)
{
    Recorder recorder;
    CodeNode *previous = document->root();
    while (previous->next())
        previous = previous->next();
    CodeNode *node = document->parser()->parse(line, document->lastBlock(), nullptr, previous, document->root(), &recorder);
    if (node)
        node->release();
    return recorder;
}

Held<CodeDocument> newDocument(bool animation)
{
    return Held<CodeDocument>(animation ? static_cast<CodeDocument *>(new AnimationDocument) : new DefinitionDocument);
}

GroupCode *groupAt(CodeDocument *document, int row)
{
    return static_cast<GroupCode *>(document->root()->childAt(uint(row)));
}

QString lineOf(const CodeDocument &document, int line)
{
    return document.findBlockByNumber(line).text();
}

// The model of a definition file as a comparable text: groups, keys, types and values.
QString modelOf(CodeDocument *document)
{
    QStringList out;
    for (uint g = 0; g < document->root()->childCount(); ++g) {
        const GroupCode *group = groupAt(document, int(g));
        out << QStringLiteral("[%1 %2]").arg(group->subType()).arg(group->displayName());
        for (const ValueCode *value : group->values()) {
            out << QStringLiteral("%1:%2=%3").arg(value->name()).arg(value->valueType())
                       .arg(SampleLanguage::writeValue(value->valueType(), value->keywords(), value->rawValue()));
        }
    }
    return out.join(QLatin1Char('\n'));
}

QList<SampleFrameData> framesOf(AnimationDocument *document)
{
    QList<SampleFrameData> frames;
    for (CodeNode *node = document->root()->next(); node; node = node->next()) {
        if (node->type() == CodeNode::Frame)
            frames << static_cast<SampleFrame *>(node)->data();
    }
    return frames;
}

// Either kind of document's model as a comparable text.
QString modelText(CodeDocument *document)
{
    auto *animations = dynamic_cast<AnimationDocument *>(document);
    if (!animations)
        return modelOf(document);
    QString text;
    for (const SampleFrameData &frame : framesOf(animations))
        text += frame.text() + QLatin1Char('\n');
    return text;
}

const char *const Walk = "@version 2\n"
                         "# the hero's walk\n"
                         "animation 10 \"Walk\"\n"
                         "    frame (10, 0) delay=6\n"
                         "        attack (0, -40, 20, -20)\n"
                         "        body (-10, -60, 10, 0)\n"
                         "    frame (10, 1) delay=6 offset=(2, 0) loop\n"
                         "animation 11\n"
                         "    frame (11, 0) delay=-1\n";

} // namespace

using FrameEdits = std::function<void(SampleFrame *)>;
Q_DECLARE_METATYPE(FrameEdits)

class SampleLanguageTest : public QObject
{
    Q_OBJECT

private slots:
    void valuesReadAndWrittenBack_data();
    void valuesReadAndWrittenBack();
    void reports_data();
    void reports();
    void plainIntegersAgreeWithReadValue_data();
    void plainIntegersAgreeWithReadValue();
    void spellingsOfNumbersInFramesAndBoxes_data();
    void spellingsOfNumbersInFramesAndBoxes();
    void versionLineAndGroups();
    void contradictingVersionLinesSettle();
    void editValuesThroughGroups();
    void frameEdits_data();
    void frameEdits();
    void boxesFollowTheirFrame();
    void framesInsertedAndAdded();
    void animationsList();
    void formatLines_data();
    void formatLines();
    void optimize();
    void garbageNeverCrashes();
    void completerAndSnippets();
};

void SampleLanguageTest::valuesReadAndWrittenBack_data()
{
    QTest::addColumn<QString>("header");
    QTest::addColumn<QString>("line");
    QTest::addColumn<int>("type");
    QTest::addColumn<QVariant>("raw");

    const QString hero = QStringLiteral("[Character: hero]");
    QTest::newRow("String") << hero << "name = Hero of the north" << int(ValueCode::String) << QVariant(QStringLiteral("Hero of the north"));
    QTest::newRow("String quoted") << hero << "name = \"A # \\\"B\\\"\"" << int(ValueCode::String) << QVariant(QStringLiteral("A # \"B\""));
    QTest::newRow("Bool") << hero << "flying = yes" << int(ValueCode::Bool) << QVariant(true);
    QTest::newRow("File") << hero << "portrait = art/hero face.png" << int(ValueCode::File) << QVariant(QStringLiteral("art/hero face.png"));
    QTest::newRow("Date") << hero << "debut = 2021-03-04" << int(ValueCode::Date) << QVariant(QDate(2021, 3, 4));
    QTest::newRow("Keyword") << hero << "stance = crouched" << int(ValueCode::Keyword) << QVariant(1u);
    QTest::newRow("KeywordVector") << hero << "traits = (agile, ranged)" << int(ValueCode::KeywordVector) << QVariant(QVariantList{1u, 3u});
    QTest::newRow("Float") << hero << "gravity = 0.45" << int(ValueCode::Float) << QVariant(0.45);
    QTest::newRow("FloatVec2") << hero << "walk = (2.5, -1.5)" << int(ValueCode::FloatVec2) << QVariant(QPointF(2.5, -1.5));
    QTest::newRow("FloatVec3") << hero << "jump = (-8, 3, -2.5)" << int(ValueCode::FloatVec3) << QVariant(QVariantList{-8.0, 3.0, -2.5});
    QTest::newRow("FloatVec4") << hero << "tint = (1, 0.5, 0.25, 1)" << int(ValueCode::FloatVec4) << QVariant(QVariantList{1.0, 0.5, 0.25, 1.0});
    QTest::newRow("FloatVector") << "[Stage: harbour]" << "parallax = (0.25, 0.5, 1)" << int(ValueCode::FloatVector) << QVariant(QVariantList{0.25, 0.5, 1.0});
    QTest::newRow("FloatVector empty") << "[Stage: harbour]" << "parallax = ()" << int(ValueCode::FloatVector) << QVariant(QVariantList());
    QTest::newRow("Int") << hero << "life = -1000" << int(ValueCode::Int) << QVariant(-1000);
    QTest::newRow("IntVec2") << "[Sounds]" << "punch = (1, 4)" << int(ValueCode::IntVec2) << QVariant(QPoint(1, 4));
    QTest::newRow("IntVec3") << hero << "colour = (255, 128, 0)" << int(ValueCode::IntVec3) << QVariant(QVariantList{255, 128, 0});
    QTest::newRow("IntVec4") << "[Move: punch]" << "reach = (0, -40, 35, -20)" << int(ValueCode::IntVec4) << QVariant(QVariantList{0, -40, 35, -20});
    QTest::newRow("IntVector") << "[Move: punch]" << "timings = (3, 2, 8)" << int(ValueCode::IntVector) << QVariant(QVariantList{3, 2, 8});
}

void SampleLanguageTest::valuesReadAndWrittenBack()
{
    QFETCH(QString, header);
    QFETCH(QString, line);
    QFETCH(int, type);
    QFETCH(QVariant, raw);

    const QString text = header + QStringLiteral("\n    ") + line + QLatin1Char('\n');
    DefinitionDocument document;
    document.fromString(text);
    QCOMPARE(document.fileMessages()->count(Message::All), 0u);
    GroupCode *group = groupAt(&document, 0);
    QVERIFY(group);
    QCOMPARE(group->valueCount(), 1u);
    auto *value = static_cast<SampleValue *>(group->valueAt(0));
    QCOMPARE(int(value->valueType()), type);
    QCOMPARE(value->rawValue(), raw);

    // Written back from the value alone, the line comes out as it was.
    value->write(value->rawValue());
    QCOMPARE(document.toString(), text);
    // And as a new line through the group, from the variant of its type.
    ValueCode *added = group->addValue(value->name(), raw);
    QVERIFY(added);
    QCOMPARE(lineOf(document, 2), QStringLiteral("    ") + line);
    QCOMPARE(int(added->valueType()), type);
    QCOMPARE(added->rawValue(), raw);
}

void SampleLanguageTest::reports_data()
{
    QTest::addColumn<bool>("animation");
    QTest::addColumn<QString>("line");
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("end");
    QTest::addColumn<QString>("words");

    QTest::newRow("bad whole number") << false << "    damage = 1x" << 0 << 13 << 15 << "Bad whole number";
    QTest::newRow("bad float") << false << "    knockback = (1.5, x)" << 0 << 22 << 23 << "Bad number";
    QTest::newRow("wrong vector length") << false << "    reach = (1, 2, 3)" << 0 << 12 << 21 << "Expected 4 items, found 3";
    QTest::newRow("list without brackets") << false << "    pause = 1, 2" << 0 << 12 << 16 << "parentheses";
    QTest::newRow("unclosed bracket") << false << "    pause = (1, 2" << 0 << 12 << 17 << "Unclosed bracket";
    QTest::newRow("unknown keyword") << false << "    state = flying" << 0 << 12 << 18 << "Unknown keyword 'flying'";
    QTest::newRow("unknown keyword in list") << false << "    flags = (low, sideways)" << 0 << 18 << 26 << "Unknown keyword 'sideways'";
    QTest::newRow("not a bool") << false << "    juggle = maybe" << 0 << 13 << 18 << "yes or no";
    QTest::newRow("unclosed quote") << false << "    command = \"abc # not a comment" << 0 << 14 << 34 << "Unclosed quote";
    QTest::newRow("text after quote") << false << "    command = \"abc\" x" << 0 << 19 << 21 << "after the closing quote";
    QTest::newRow("unknown line") << false << "    zzz" << 0 << 4 << 7 << "Unknown line";
    QTest::newRow("bad key") << false << "    9lives = 3" << 0 << 4 << 10 << "Bad key";
    QTest::newRow("unclosed header") << false << "[Move: kick" << 0 << 0 << 11 << "Unclosed bracket";
    QTest::newRow("text after header") << false << "[Move: kick] x" << 0 << 12 << 14 << "Text after the header";
    QTest::newRow("unknown directive") << false << "@colour 5" << 0 << 0 << 7 << "Unknown directive";
    QTest::newRow("bad version") << false << "@version two" << 0 << 9 << 12 << "version number";
    QTest::newRow("deprecated key") << false << "    anim = 5" << 1 << 4 << 8 << "'anim' is deprecated: use 'animation'";
    QTest::newRow("unknown key") << false << "    speed = 5 # fast" << 2 << 4 << 9 << "Unknown key 'speed'";
    QTest::newRow("unknown kind") << false << "[Wizard: x]" << 2 << 1 << 7 << "Unknown group kind 'Wizard'";
    QTest::newRow("bad delay") << true << "    frame (0, 0) delay=x" << 0 << 23 << 24 << "Bad whole number";
    QTest::newRow("unknown field") << true << "    frame (0, 0) spin=4" << 0 << 17 << 21 << "Unknown frame field 'spin'";
    QTest::newRow("sprite without brackets") << true << "    frame 0, 0" << 0 << 10 << 14 << "(GROUP, NUMBER)";
    QTest::newRow("unclosed sprite") << true << "    frame (0, 0" << 0 << 10 << 15 << "Unclosed bracket";
    QTest::newRow("unclosed offset") << true << "    frame (0, 0) offset=(1, 2" << 0 << 24 << 29 << "Unclosed bracket";
    QTest::newRow("sprite of three") << true << "    frame (0, 0, 1)" << 0 << 10 << 19 << "Expected 2 items";
    QTest::newRow("unknown blend") << true << "    frame (0, 0) blend=glow" << 0 << 23 << 27 << "Unknown blend mode";
    QTest::newRow("unknown flip") << true << "    frame (0, 0) flip=x" << 0 << 22 << 23 << "Unknown flip";
    QTest::newRow("unknown ease") << true << "    frame (0, 0) ease=offset+spin" << 0 << 29 << 33 << "Unknown word 'spin'";
    QTest::newRow("loop with value") << true << "    frame (0, 0) loop=1" << 0 << 17 << 21 << "no value";
    QTest::newRow("short box") << true << "        attack (1, 2, 3)" << 0 << 15 << 24 << "Expected 4 items";
    QTest::newRow("box number too big") << true << "        body (1, 2, 3, 12345678901)" << 0 << 23 << 34 << "Bad whole number '12345678901'";
    QTest::newRow("box of five") << true << "        body (1, 2, 3, 4, 5)" << 0 << 13 << 28 << "Expected 4 items, found 5";
    QTest::newRow("box empty item") << true << "        body (1, , 3, 4)" << 0 << 16 << 17 << "Empty item";
    QTest::newRow("sprite number too big") << true << "    frame (9999999999, 0)" << 0 << 11 << 21 << "Bad whole number";
    QTest::newRow("delay too big") << true << "    frame (0, 0) delay=2147483648" << 0 << 23 << 33 << "Bad whole number";
    QTest::newRow("offset of one") << true << "    frame (0, 0) offset=(1)" << 0 << 24 << 27 << "Expected 2 items, found 1";
    QTest::newRow("no identifier") << true << "animation" << 0 << 0 << 9 << "Missing identifier";
    QTest::newRow("unclosed name") << true << "animation 3 \"Walk" << 0 << 12 << 17 << "Unclosed quote";
    QTest::newRow("unquoted name") << true << "animation 3 Walk" << 0 << 12 << 16 << "double quotes";
    QTest::newRow("unknown line in animations") << true << "jump (1, 2)" << 0 << 0 << 11 << "Unknown line";
    QTest::newRow("header of definitions") << true << "[Move: punch]" << 0 << 0 << 13 << "Unknown line";
    QTest::newRow("deprecated wait") << true << "    frame (0, 0) wait=4" << 1 << 17 << 21 << "'wait' is deprecated: use 'delay'";
    QTest::newRow("field twice") << true << "    frame (0, 0) delay=4 delay=5" << 2 << 25 << 30 << "given twice";
}

void SampleLanguageTest::reports()
{
    QFETCH(bool, animation);
    QFETCH(QString, line);
    QFETCH(int, kind);
    QFETCH(int, start);
    QFETCH(int, end);
    QFETCH(QString, words);

    const QString before = animation ? QStringLiteral("animation 1\n    frame (0, 0) delay=1\n") : QStringLiteral("[Move: punch]\n");
    Held<CodeDocument> document = newDocument(animation);
    document->fromString(before);
    const Recorder recorder = parseAtEnd(document.get(), line);
    QCOMPARE(recorder.reports.size(), 1);
    QCOMPARE(recorder.reports.at(0).kind, kind);
    QVERIFY2(recorder.reports.at(0).text.contains(words), qPrintable(recorder.reports.at(0).text));
    QCOMPARE(recorder.reports.at(0).start, start);
    QCOMPARE(recorder.reports.at(0).end, end);

    // The same line in a document: its message counted by type, and only warnings and
    // deprecations leave a node: a line in error adds nothing.
    document->fromString(before + line + QLatin1Char('\n'));
    QCOMPARE(document->fileMessages()->count(kind == 0 ? Message::Error : Message::Warning), 1u);
    int nodes = 0;
    for (CodeNode *node = document->root()->next(); node; node = node->next())
        ++nodes;
    QCOMPARE(nodes, (animation ? 2 : 1) + (kind == 0 ? 0 : 1));
}

void SampleLanguageTest::plainIntegersAgreeWithReadValue_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("count");
    QTest::addColumn<bool>("plain");

    QTest::newRow("one") << "7" << 1 << true;
    QTest::newRow("negative") << "-40" << 1 << true;
    QTest::newRow("minus zero") << "-0" << 1 << true;
    QTest::newRow("leading zeros") << "007" << 1 << true;
    QTest::newRow("nine digits") << "999999999" << 1 << true;
    QTest::newRow("ten digits") << "1000000000" << 1 << false;
    QTest::newRow("past int") << "2147483648" << 1 << false;
    QTest::newRow("plus") << "+3" << 1 << false;
    QTest::newRow("unicode minus") << QString(QChar(0x2212)) + QLatin1Char('3') << 1 << false;
    QTest::newRow("arabic digit") << QString(QChar(0x0663)) << 1 << false;
    QTest::newRow("blank around") << " 3 " << 1 << false;
    QTest::newRow("lone minus") << "-" << 1 << false;
    QTest::newRow("empty") << "" << 1 << false;
    QTest::newRow("letter") << "3x" << 1 << false;
    QTest::newRow("hex") << "0x10" << 1 << false;
    QTest::newRow("pair") << "(1, -2)" << 2 << true;
    QTest::newRow("pair tight") << "(1,-2)" << 2 << true;
    QTest::newRow("pair wide") << "(  1 ,\t-2\t)" << 2 << true;
    QTest::newRow("pair of one") << "(1)" << 2 << false;
    QTest::newRow("pair of three") << "(1, 2, 3)" << 2 << false;
    QTest::newRow("pair empty item") << "(1, )" << 2 << false;
    QTest::newRow("pair empty") << "()" << 2 << false;
    QTest::newRow("pair open") << "(1, 2" << 2 << false;
    QTest::newRow("pair bare") << "1, 2" << 2 << false;
    QTest::newRow("pair other blank") << QStringLiteral("(1,") + QChar(0x00A0) + QStringLiteral("2)") << 2 << false;
    QTest::newRow("pair float") << "(1.5, 2)" << 2 << false;
    QTest::newRow("corners") << "(-10, -40, 10, 0)" << 4 << true;
    QTest::newRow("corners of three") << "(1, 2, 3)" << 4 << false;
    QTest::newRow("corners of five") << "(1, 2, 3, 4, 5)" << 4 << false;
    QTest::newRow("corners big") << "(1, 2, 3, 12345678901)" << 4 << false;
    QTest::newRow("corners nested") << "(1, (2), 3, 4)" << 4 << false;
    QTest::newRow("bracket alone") << "(" << 4 << false;
}

// The plain readers take a part of what readValue reads, to the same numbers; what they
// leave, readValue reads or refuses on its own.
void SampleLanguageTest::plainIntegersAgreeWithReadValue()
{
    QFETCH(QString, text);
    QFETCH(int, count);
    QFETCH(bool, plain);

    int values[4] = {};
    const bool read = count == 1 ? SampleLanguage::readPlainInteger(text, values)
                                 : SampleLanguage::readPlainIntegers(text, values, count);
    QCOMPARE(read, plain);
    if (!read)
        return;
    const ValueCode::Type type = count == 1 ? ValueCode::Int : count == 2 ? ValueCode::IntVec2 : ValueCode::IntVec4;
    const SampleLanguage::ReadResult full = SampleLanguage::readValue(type, {}, text, 0);
    QVERIFY2(full.ok(), qPrintable(full.error));
    QVariantList numbers;
    if (count == 1)
        numbers << full.value;
    else if (count == 2)
        numbers << full.value.toPoint().x() << full.value.toPoint().y();
    else
        numbers = full.value.toList();
    QCOMPARE(numbers.size(), count);
    for (int i = 0; i < count; ++i)
        QCOMPARE(values[i], numbers.at(i).toInt());
}

void SampleLanguageTest::spellingsOfNumbersInFramesAndBoxes_data()
{
    QTest::addColumn<QString>("frame");
    QTest::addColumn<QString>("box");

    QTest::newRow("tight") << "frame (3,4) delay=5 offset=(-1,2)" << "attack (1,-2,30,40)";
    QTest::newRow("wide") << "frame ( 3 , 4 )\tdelay=5  offset=( -1,\t2 )" << "attack  ( 1 , -2 , 30 , 40 )";
    QTest::newRow("plus signs") << "frame (+3, +4) delay=+5 offset=(-1, +2)" << "attack (+1, -2, +30, 40)";
    QTest::newRow("leading zeros") << "frame (03, 004) delay=05 offset=(-01, 2)" << "attack (01, -02, 30, 040)";
    QTest::newRow("other blanks") << QStringLiteral("frame (3,") + QChar(0x2003) + QStringLiteral("4) delay=5 offset=(-1, 2)")
                                  << QStringLiteral("attack (1,") + QChar(0x00A0) + QStringLiteral("-2, 30, 40)");
}

// Numbers of frames and boxes in any spelling readValue takes give the nodes of their
// regular spelling, and count the same tokens.
void SampleLanguageTest::spellingsOfNumbersInFramesAndBoxes()
{
    QFETCH(QString, frame);
    QFETCH(QString, box);

    auto load = [](const QString &frameLine, const QString &boxLine, SampleFrameData *data, QRect *rect) {
        auto *document = new AnimationDocument;
        auto *animations = new SampleAnimations(document);
        document->fromString(QStringLiteral("animation 1\n    ") + frameLine + QStringLiteral("\n        ") + boxLine
                             + QLatin1Char('\n'));
        const uint errors = document->fileMessages()->count(Message::Error);
        auto *sample = animations->count() == 1 && animations->at(0)->frameCount() == 1
            ? static_cast<SampleFrame *>(animations->at(0)->frameAt(0))
            : nullptr;
        ContactBoxesCode *attacks = sample ? sample->contactBoxes(ContactBoxCode::Attack) : nullptr;
        if (sample)
            *data = sample->data();
        const bool oneBox = attacks && attacks->count() == 1;
        if (oneBox)
            *rect = attacks->at(0)->rect();
        animations->release();
        return errors == 0 && oneBox;
    };
    SampleFrameData regular, spelt;
    QRect regularRect, speltRect;
    QVERIFY(load(QStringLiteral("frame (3, 4) delay=5 offset=(-1, 2)"), QStringLiteral("attack (1, -2, 30, 40)"),
                 &regular, &regularRect));
    QVERIFY(load(frame, box, &spelt, &speltRect));
    QCOMPARE(spelt.sprite, QPoint(3, 4));
    QCOMPARE(spelt.delay, 5);
    QCOMPARE(spelt.offset, QPoint(-1, 2));
    QCOMPARE(spelt.text(), regular.text());
    QCOMPARE(speltRect, QRect(QPoint(1, -2), QPoint(30, 40)));
    QCOMPARE(speltRect, regularRect);

    // The parser paints as many tokens either way.
    Held<CodeDocument> document = newDocument(true);
    document->fromString(QStringLiteral("animation 1\n    frame (0, 0) delay=1\n"));
    const int tokens = parseAtEnd(document.get(), QStringLiteral("    ") + frame).tokens;
    QCOMPARE(tokens, parseAtEnd(document.get(), QStringLiteral("    frame (3, 4) delay=5 offset=(-1, 2)")).tokens);
    QCOMPARE(parseAtEnd(document.get(), QStringLiteral("        ") + box).tokens,
             parseAtEnd(document.get(), QStringLiteral("        attack (1, -2, 30, 40)")).tokens);
}

void SampleLanguageTest::versionLineAndGroups()
{
    DefinitionDocument document;
    QSignalSpy versions(document.root(), &RootCode::versionChanged);
    document.fromString(QStringLiteral("@version 3   # this file's syntax\n"
                                       "[Move: punch] # jab\n"
                                       "    damage = 40\n"
                                       "[Sounds]\n"
                                       "    swing = (1, 0)\n"
                                       "[Wizard: merlin]\n"
                                       "    spells = (fire, ice)\n"));
    QCOMPARE(document.version(), ushort(3));
    QCOMPARE(versions.count(), 1);
    QCOMPARE(document.root()->childCount(), 3u);
    QCOMPARE(groupAt(&document, 0)->subType(), uint(SampleLanguage::MoveGroup));
    QCOMPARE(groupAt(&document, 0)->name(), QStringLiteral("punch"));
    QCOMPARE(groupAt(&document, 0)->displayName(), QStringLiteral("Move: punch"));
    QCOMPARE(groupAt(&document, 1)->subType(), uint(SampleLanguage::SoundsGroup));
    QCOMPARE(groupAt(&document, 1)->name(), QStringLiteral("Sounds"));
    QCOMPARE(groupAt(&document, 2)->subType(), uint(SampleLanguage::OtherGroup));
    // An unknown kind warns once, at its header; its values are text.
    QCOMPARE(groupAt(&document, 2)->valueAt(0)->valueType(), ValueCode::String);
    QCOMPARE(document.fileMessages()->count(Message::Warning), 1u);

    // Parentheses are recorded for matching, outside quotes only.
    Recorder recorder = parseAtEnd(&document, QStringLiteral("    spells = (a, \"(b\")"));
    QCOMPARE(recorder.parentheses, (QList<QPair<bool, int>>{{true, 13}, {false, 21}}));
    QVERIFY(recorder.tokens > 0);

    // The kind of a header decides the types of the lines below it: changing it reads them again.
    QTextCursor cursor(document.findBlockByNumber(3));
    cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
    cursor.insertText(QStringLiteral("[Character: swing]"));
    QCOMPARE(groupAt(&document, 1)->subType(), uint(SampleLanguage::CharacterGroup));
    QCOMPARE(groupAt(&document, 1)->valueCount(), 1u);
    QCOMPARE(groupAt(&document, 1)->valueAt(0)->valueType(), ValueCode::String);
    QCOMPARE(document.fileMessages()->count(Message::Warning), 2u); // "swing" is no key of a character

    // The version line edited: the new number, once.
    cursor = QTextCursor(document.findBlockByNumber(0));
    cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
    cursor.insertText(QStringLiteral("@version 4 # this file's syntax"));
    QCOMPARE(document.version(), ushort(4));
    QCOMPARE(versions.count(), 2);

    // A value with no group above it is an error and no node.
    DefinitionDocument loose;
    loose.fromString(QStringLiteral("damage = 4\n"));
    QCOMPARE(loose.root()->next(), nullptr);
    QCOMPARE(loose.fileMessages()->count(Message::Error), 1u);
}

void SampleLanguageTest::contradictingVersionLinesSettle()
{
    // Two version lines of different numbers set the version back and forth in every pass
    // over the text (once a stack overflow on loading); the document settles on the last.
    const QString text = QStringLiteral("@version 1\n[Character: knight]\n    life = 10\n"
                                        "@version 2\n[Move: punch]\n    damage = 4\n");
    DefinitionDocument document;
    document.fromString(text);
    QCOMPARE(document.version(), ushort(2));
    QCOMPARE(document.root()->childCount(), 2u);
    QCOMPARE(groupAt(&document, 1)->valueAt(0)->value().toInt(), 4);

    // The first line edited: the last line still decides.
    QTextCursor cursor(document.findBlockByNumber(0));
    cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
    cursor.insertText(QStringLiteral("@version 3"));
    QCOMPARE(document.version(), ushort(2));
    QCOMPARE(document.root()->childCount(), 2u);
    QCOMPARE(document.toString().count(QStringLiteral("@version")), 2);
}

void SampleLanguageTest::editValuesThroughGroups()
{
    const QString original = QStringLiteral("[Character: hero]\n"
                                            "    name = Hero # shown in menus\n"
                                            "    life = 900\n");
    DefinitionDocument document;
    document.fromString(original);
    QAbstractItemModelTester tester(document.model(), QAbstractItemModelTester::FailureReportingMode::QtTest);
    GroupCode *group = groupAt(&document, 0);

    ValueCode *gravity = group->addValue(QStringLiteral("gravity"), 0.5);
    QVERIFY(gravity);
    QCOMPARE(gravity->valueType(), ValueCode::Float);
    ValueCode *traits = group->insertValue(1, QStringLiteral("traits"), QStringList{QStringLiteral("heavy"), QStringLiteral("agile")});
    QVERIFY(traits);
    QCOMPARE(traits->rawValue(), QVariant(QVariantList{0u, 1u}));
    ValueCode *odd = group->insertValue(0, QStringLiteral("motto"), QStringLiteral(" never # yield "));
    QCOMPARE(odd->valueType(), ValueCode::String); // unknown key: text, and a warning
    QCOMPARE(odd->rawValue().toString(), QStringLiteral(" never # yield "));
    // A value that can't be written as its type gives no node.
    QCOMPARE(group->addValue(QStringLiteral("stance"), QStringLiteral("sideways")), nullptr);
    const QString edited = QStringLiteral("[Character: hero]\n"
                                          "    motto = \" never # yield \"\n"
                                          "    name = Hero # shown in menus\n"
                                          "    traits = (heavy, agile)\n"
                                          "    life = 900\n"
                                          "    gravity = 0.5\n"
                                          "    stance = sideways\n");
    QCOMPARE(document.toString(), edited);
    QCOMPARE(group->valueCount(), 5u);

    // Renamed and rewritten: indentation and the trailing comment stay.
    static_cast<SampleValue *>(group->valueByName(QStringLiteral("name")))->write(QStringLiteral("Hero of the north"));
    group->valueByName(QStringLiteral("life"))->setProperty(QStringLiteral("Name"), QStringLiteral("health"));
    group->setName(QStringLiteral("champion"));
    QCOMPARE(lineOf(document, 0), QStringLiteral("[Character: champion]"));
    QCOMPARE(lineOf(document, 2), QStringLiteral("    name = Hero of the north # shown in menus"));
    QCOMPARE(lineOf(document, 4), QStringLiteral("    health = 900"));
    QCOMPARE(group->valueAt(3)->name(), QStringLiteral("health"));
    QCOMPARE(group->name(), QStringLiteral("champion"));

    // The text read anew gives the same model.
    DefinitionDocument again;
    again.fromString(document.toString());
    QCOMPARE(modelOf(&again), modelOf(&document));
    QCOMPARE(again.fileMessages()->count(Message::Warning), 2u); // motto unknown, health deprecated

    // Every edit is undone, one by one, back to the text as loaded.
    for (int i = 0; i < 8 && document.toString() != original; ++i)
        document.undo();
    QCOMPARE(document.toString(), original);
    QCOMPARE(groupAt(&document, 0)->valueCount(), 2u);
    QCOMPARE(groupAt(&document, 0)->name(), QStringLiteral("hero"));
}

void SampleLanguageTest::frameEdits_data()
{
    QTest::addColumn<FrameEdits>("edits");
    QTest::addColumn<QVariantMap>("properties");
    QTest::addColumn<int>("steps");
    QTest::addColumn<QString>("line");

    const auto row = [](const char *name, int steps, const char *line, const FrameEdits &edits) {
        QTest::newRow(name) << edits << QVariantMap() << steps << QString::fromLatin1(line);
    };
    row("offset by parts, sprite as a point", 3, "frame (9, 1) delay=4 offset=(5, -3)", [](SampleFrame *frame) {
        frame->setOffsetX(5);
        frame->setOffsetY(-3);
        frame->setSpriteId(QPoint(9, 1));
    });
    row("sprite as a list's number, for ever", 2, "frame (3, 7) delay=-1", [](SampleFrame *frame) {
        frame->setSpriteId((3u << 16) | 7u);
        frame->setDelay(-1);
    });
    row("scale by parts, angle, vertical flip", 4, "frame (1, 2) delay=4 flip=v scale=(2, 0.5) angle=45.5",
        [](SampleFrame *frame) {
            frame->setScaleX(2.0);
            frame->setScaleY(0.5);
            frame->setAngle(45.5);
            frame->setFlipFlags(2);
        });
    row("whole scale, both flips, ease, loop, identifier", 5,
        "frame (1, 2) delay=4 flip=hv scale=(1.5, 2.5) ease=offset+angle loop id=start", [](SampleFrame *frame) {
            frame->setScale(QPointF(1.5, 2.5));
            frame->setFlipFlags(7);
            frame->setInterpolation(5);
            frame->setLoopPoint(true);
            frame->setIdentifier(QStringLiteral(" start "));
        });
    row("blend factors without a mode", 1, "frame (1, 2) delay=4 blend=none(0.5, 1)",
        [](SampleFrame *frame) { frame->setBlendSource(0.5); });
    row("blend by parts", 2, "frame (1, 2) delay=4 blend=add(1, 0.25)", [](SampleFrame *frame) {
        frame->setBlendMode(FrameCode::Blend::Addition);
        frame->setBlendDestination(0.25);
    });
    row("whole blend", 1, "frame (1, 2) delay=4 blend=opacity(0.5, 0.75)", [](SampleFrame *frame) {
        FrameCode::Blend blend;
        blend.mode = FrameCode::Blend::Opacity;
        blend.source = 0.5;
        blend.destination = 0.75;
        frame->setBlend(blend);
    });
    const QVariantMap properties{{"Offset", QPoint(3, 4)}, {"Delay", 9}, {"Flip", 1u}, {"Scale", QPointF(2, 2)},
                                 {"Angle", -90.0}, {"LoopPoint", true}, {"Identifier", "hit"}};
    QTest::newRow("properties") << FrameEdits([](SampleFrame *) {}) << properties << 7
                                << "frame (1, 2) delay=9 offset=(3, 4) flip=h scale=(2, 2) angle=-90 loop id=hit";
}

void SampleLanguageTest::frameEdits()
{
    QFETCH(FrameEdits, edits);
    QFETCH(QVariantMap, properties);
    QFETCH(int, steps);
    QFETCH(QString, line);

    auto *document = new AnimationDocument;
    auto *animations = new SampleAnimations(document);
    const QString original = QStringLiteral("animation 7 \"Walk\"\n    frame (1, 2) delay=4 # first\n");
    document->fromString(original);
    auto *frame = static_cast<SampleFrame *>(animations->at(0)->frameAt(0));
    edits(frame);
    for (auto it = properties.cbegin(); it != properties.cend(); ++it) {
        QVERIFY(frame->propertyNames().contains(it.key()));
        frame->setProperty(it.key(), it.value());
        QCOMPARE(frame->property(it.key()), it.value());
    }
    QCOMPARE(lineOf(*document, 1), QStringLiteral("    ") + line + QStringLiteral(" # first"));
    QCOMPARE(document->fileMessages()->count(Message::All), 0u);
    // The node was kept and holds what the text says; the text read anew says the same.
    QCOMPARE(animations->at(0)->frameAt(0), frame);
    auto *again = new AnimationDocument;
    again->fromString(document->toString());
    QCOMPARE(framesOf(again), framesOf(document));
    again->release();
    // Each edit is one step.
    for (int i = 0; i < steps; ++i) {
        QVERIFY(document->toString() != original);
        document->undo();
    }
    QCOMPARE(document->toString(), original);
    animations->release();
}

void SampleLanguageTest::boxesFollowTheirFrame()
{
    auto *document = new AnimationDocument;
    auto *animations = new SampleAnimations(document);
    document->fromString(QString::fromLatin1(Walk));
    auto *first = static_cast<SampleFrame *>(animations->at(0)->frameAt(0));
    auto *second = static_cast<SampleFrame *>(animations->at(0)->frameAt(1));
    ContactBoxesCode *attacks = first->contactBoxes(ContactBoxCode::Attack);
    ContactBoxesCode *bodies = first->contactBoxes(ContactBoxCode::Collision);
    QCOMPARE(attacks->count(), 1u);
    QCOMPARE(bodies->count(), 1u);
    QCOMPARE(attacks->at(0)->rect(), QRect(QPoint(0, -40), QPoint(20, -20)));

    // Appended behind the frame's last box, of either kind; the second frame gets none.
    ContactBoxCode *box = attacks->append(QRect(QPoint(5, -30), QPoint(25, -10)));
    QVERIFY(box);
    QCOMPARE(lineOf(*document, 6), QStringLiteral("        attack (5, -30, 25, -10)"));
    QCOMPARE(attacks->count(), 2u);
    QCOMPARE(second->contactBoxes(ContactBoxCode::Attack)->count(), 0u);
    box->setRect(QRect(QPoint(1, 2), QPoint(3, 4)));
    QCOMPARE(lineOf(*document, 6), QStringLiteral("        attack (1, 2, 3, 4)"));
    QCOMPARE(attacks->at(1)->rect(), QRect(QPoint(1, 2), QPoint(3, 4)));
    ContactBoxCode *added = second->contactBoxes(ContactBoxCode::Collision)->append(QRect(0, 0, 10, 10));
    QCOMPARE(lineOf(*document, 8), QStringLiteral("        body (0, 0, 9, 9)"));
    QCOMPARE(added->property(QStringLiteral("Rect")).toRect(), QRect(0, 0, 10, 10));

    // A frame's lines are its own and its boxes: removing it takes them along.
    QCOMPARE(second->firstLine(), 7);
    QCOMPARE(second->lastLine(), 8);
    attacks->remove(0);
    QCOMPARE(attacks->count(), 1u);
    QCOMPARE(lineOf(*document, 4), QStringLiteral("        body (-10, -60, 10, 0)"));
    first->contactBoxes(ContactBoxCode::Collision)->clear();
    QCOMPARE(bodies->count(), 0u);
    QCOMPARE(attacks->count(), 1u);
    animations->at(0)->removeFrame(1);
    QCOMPARE(animations->at(0)->frameCount(), 1u);
    QCOMPARE(document->toString(), QStringLiteral("@version 2\n# the hero's walk\nanimation 10 \"Walk\"\n"
                                                  "    frame (10, 0) delay=6\n        attack (1, 2, 3, 4)\n"
                                                  "animation 11\n    frame (11, 0) delay=-1\n"));
    // Clearing was one step, as was the frame's removal.
    document->undo();
    document->undo();
    QCOMPARE(bodies->count(), 1u);
    QCOMPARE(attacks->count(), 1u);
    QCOMPARE(lineOf(*document, 4), QStringLiteral("        body (-10, -60, 10, 0)"));
    animations->release();
}

void SampleLanguageTest::framesInsertedAndAdded()
{
    auto *document = new AnimationDocument;
    auto *animations = new SampleAnimations(document);
    document->fromString(QString::fromLatin1(Walk));
    AnimationCode *walk = animations->at(0);
    QCOMPARE(walk->loopPoint(), 1u);
    FrameCode *inserted = walk->insertFrame(1);
    QVERIFY(inserted);
    QCOMPARE(walk->frameAt(1), inserted);
    QCOMPARE(lineOf(*document, 6), QStringLiteral("    frame (0, 0) delay=1"));
    // The boxes stayed with the frame above.
    QCOMPARE(walk->frameAt(0)->contactBoxes(ContactBoxCode::Attack)->count(), 1u);
    QCOMPARE(walk->loopPoint(), 2u);
    FrameCode *added = walk->addFrame();
    QCOMPARE(walk->frameAt(3), added);
    QCOMPARE(lineOf(*document, 8), QStringLiteral("    frame (0, 0) delay=1"));
    QCOMPARE(lineOf(*document, 9), QStringLiteral("animation 11"));
    FrameCode *first = walk->insertFrame(0);
    QCOMPARE(walk->frameAt(0), first);
    QCOMPARE(lineOf(*document, 3), QStringLiteral("    frame (0, 0) delay=1"));

    // An animation without frames gets its first below its header.
    AnimationCode *empty = animations->add(QStringLiteral("12"));
    QCOMPARE(empty->frameCount(), 0u);
    QVERIFY(empty->addFrame());
    QVERIFY(document->toString().endsWith(QStringLiteral("(11, 0) delay=-1\nanimation 12\n    frame (0, 0) delay=1\n")));
    animations->release();
}

void SampleLanguageTest::animationsList()
{
    auto *document = new AnimationDocument;
    auto *animations = new SampleAnimations(document);
    QCOMPARE(document->refCount(), 1u); // the list holds the one reference
    document->fromString(QString::fromLatin1(Walk));
    QAbstractItemModelTester tester(animations, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QCOMPARE(animations->count(), 2u);
    QCOMPARE(animations->data(animations->index(0), Qt::DisplayRole).toString(), QStringLiteral("10 Walk"));
    QCOMPARE(animations->data(animations->index(1), Qt::DisplayRole).toString(), QStringLiteral("Animation 11"));
    QCOMPARE(animations->newIdentifier(), QVariant(0));

    QSignalSpy changed(animations, &QAbstractItemModel::dataChanged);
    static_cast<SampleAnimation *>(animations->at(1))->setName(QStringLiteral("Stand \"still\""));
    QCOMPARE(lineOf(*document, 7), QStringLiteral("animation 11 \"Stand \\\"still\\\"\""));
    QCOMPARE(animations->at(1)->name(), QStringLiteral("Stand \"still\""));
    QVERIFY(changed.count() >= 1);

    AnimationCode *added = animations->add(animations->newIdentifier().toString());
    QCOMPARE(animations->count(), 3u);
    QCOMPARE(added->property(QStringLiteral("Identifier")).toString(), QStringLiteral("0"));
    AnimationCode *copy = animations->duplicate(0, QStringLiteral("20"));
    QCOMPARE(animations->count(), 4u);
    QCOMPARE(copy->property(QStringLiteral("Identifier")).toString(), QStringLiteral("20"));
    QCOMPARE(copy->frameCount(), 2u);
    QCOMPARE(copy->frameAt(0)->contactBoxes(ContactBoxCode::Collision)->count(), 1u);
    QCOMPARE(copy->name(), QStringLiteral("Walk"));
    QCOMPARE(animations->find(0, 20), 1);
    animations->remove(0);
    QCOMPARE(animations->count(), 3u);
    QCOMPARE(animations->find(0, 10), -1);
    QCOMPARE(document->toString().count(QStringLiteral("(10, 1)")), 1);
    QVERIFY(document->toString().contains(QStringLiteral("animation 20 \"Walk\"\n    frame (10, 0) delay=6\n")));
    document->undo();
    QCOMPARE(animations->count(), 4u);
    QCOMPARE(animations->find(0, 10), 0);
    animations->release();
}

void SampleLanguageTest::formatLines_data()
{
    QTest::addColumn<bool>("animation");
    QTest::addColumn<bool>("indentOnly");
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");

    const QString definitions = QStringLiteral("@version   2\n"
                                               "  [ Move :  punch ]   # a jab\n"
                                               "damage=40   # hard\n"
                                               "\t   # the reach\n"
                                               "        reach   =( 0,-40 ,  35, -20 )\n"
                                               "   \n"
                                               "   command =  a  b\n"
                                               "bogus line  here\n");
    QTest::newRow("definitions indent") << false << true << definitions
                                        << QStringLiteral("@version   2\n"
                                                          "[ Move :  punch ]   # a jab\n"
                                                          "    damage=40   # hard\n"
                                                          "    # the reach\n"
                                                          "    reach   =( 0,-40 ,  35, -20 )\n"
                                                          "\n"
                                                          "    command =  a  b\n"
                                                          "    bogus line  here\n");
    QTest::newRow("definitions format") << false << false << definitions
                                        << QStringLiteral("@version 2\n"
                                                          "[Move: punch] # a jab\n"
                                                          "    damage = 40 # hard\n"
                                                          "    # the reach\n"
                                                          "    reach = (0, -40, 35, -20)\n"
                                                          "\n"
                                                          "    command = a  b\n"
                                                          "    bogus line  here\n");
    const QString anims = QStringLiteral("animation   5    \"Run  fast\"\n"
                                         "frame ( 1,2 )   delay = 3 offset=( 4 ,5)  loop # go\n"
                                         "attack(1,2,3,4)\n"
                                         "  body   (0, 0,1 ,1)\n"
                                         "# next\n"
                                         "          frame (1, 3) delay=3 blend=add( 1,0.5 )\n");
    QTest::newRow("animations indent") << true << true << anims
                                       << QStringLiteral("animation   5    \"Run  fast\"\n"
                                                         "    frame ( 1,2 )   delay = 3 offset=( 4 ,5)  loop # go\n"
                                                         "        attack(1,2,3,4)\n"
                                                         "        body   (0, 0,1 ,1)\n"
                                                         "    # next\n"
                                                         "    frame (1, 3) delay=3 blend=add( 1,0.5 )\n");
    QTest::newRow("animations format") << true << false << anims
                                       << QStringLiteral("animation 5 \"Run  fast\"\n"
                                                         "    frame (1, 2) delay=3 offset=(4, 5) loop # go\n"
                                                         "        attack(1,2,3,4)\n"
                                                         "        body (0, 0, 1, 1)\n"
                                                         "    # next\n"
                                                         "    frame (1, 3) delay=3 blend=add(1, 0.5)\n");
    // Text in its regular form already reads cleanly, and formatting leaves it alone.
    const QString regular = QStringLiteral("@version 1\n[Project]\n    name = Harbour Brawl\n    created = 2024-05-01\n"
                                           "[Files]\n    sprites = chars/hero.ssc\n[Character: hero]\n"
                                           "    name = Hero of the north # shown in menus\n    walk = (2.5, -2)\n"
                                           "    traits = (agile, ranged)\n[Move: jab]\n    command = \"x, x\"\n"
                                           "    reach = (0, -40, 35, -20)\n[Sounds]\n    swing = (1, 0)\n");
    QTest::newRow("regular definitions") << false << false << regular << regular;
    const QString regularAnimations = QStringLiteral(
        "@version 1\n# the hero's walk\nanimation 10 \"Walk\"\n    frame (10, 0) delay=6\n"
        "        attack (0, -40, 20, -20)\n        body (-10, -60, 10, 0)\n"
        "    frame (10, 1) delay=6 offset=(2, 0) flip=h blend=add(1, 0.5) ease=offset loop id=step\n"
        "animation 11\n    frame (11, 0) delay=-1\n");
    QTest::newRow("regular animations") << true << false << regularAnimations << regularAnimations;
}

void SampleLanguageTest::formatLines()
{
    QFETCH(bool, animation);
    QFETCH(bool, indentOnly);
    QFETCH(QString, before);
    QFETCH(QString, after);

    Held<CodeDocument> document = newDocument(animation);
    document->fromString(before);
    const uint errors = document->fileMessages()->count(Message::Error);
    if (before == after)
        QCOMPARE(document->fileMessages()->count(Message::All), 0u);
    const QString model = modelText(document.get());
    document->formatLines(0, document->blockCount() - 1, indentOnly);
    QCOMPARE(document->toString(), after);
    // Nothing means anything else: the same nodes, the same errors.
    QCOMPARE(document->fileMessages()->count(Message::Error), errors);
    QCOMPARE(modelText(document.get()), model);
    // Formatting twice changes nothing more, and one undo takes the whole of it back.
    document->formatLines(0, document->blockCount() - 1, indentOnly);
    QCOMPARE(document->toString(), after);
    document->undo();
    QCOMPARE(document->toString(), before);
}

void SampleLanguageTest::optimize()
{
    auto *document = new AnimationDocument;
    auto *animations = new SampleAnimations(document);
    const QString before = QStringLiteral("\n\n@version 1\n\n\n"
                                          "animation 1\n"
                                          "    frame (1, 0) delay=3 offset=(0, 0)\n"
                                          "    frame (1, 0) delay=4\n"
                                          "    frame (1, 0) delay=5 angle=0\n"
                                          "    frame (1, 1) delay=2 scale=(1, 1) flip=none\n"
                                          "\n\n\n"
                                          "animation 2\n"
                                          "    frame (2, 0) delay=2\n"
                                          "    frame (2, 0) delay=2 loop\n"
                                          "    frame (2, 0) delay=2 id=end\n"
                                          "    frame (3, 0) delay=2\n"
                                          "        attack (0, 0, 1, 1)\n"
                                          "    frame (3, 0) delay=2\n"
                                          "    frame (4, 0) delay=-1\n"
                                          "    frame (4, 0) delay=-1\n"
                                          "\n\n");
    document->fromString(before);
    QAbstractItemModelTester tester(animations, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QCOMPARE(animations->optimize(), 9);
    QCOMPARE(document->toString(), QStringLiteral("@version 1\n"
                                                  "\n"
                                                  "animation 1\n"
                                                  "    frame (1, 0) delay=12\n"
                                                  "    frame (1, 1) delay=2\n"
                                                  "\n"
                                                  "animation 2\n"
                                                  "    frame (2, 0) delay=2\n"
                                                  "    frame (2, 0) delay=2 loop\n"
                                                  "    frame (2, 0) delay=2 id=end\n"
                                                  "    frame (3, 0) delay=2\n"
                                                  "        attack (0, 0, 1, 1)\n"
                                                  "    frame (3, 0) delay=2\n"
                                                  "    frame (4, 0) delay=-1\n"
                                                  "    frame (4, 0) delay=-1\n"));
    QCOMPARE(animations->count(), 2u);
    QCOMPARE(animations->at(0)->frameCount(), 2u);
    // Nothing left to clean; one undo takes the whole cleaning back.
    QCOMPARE(animations->optimize(), 0);
    document->undo();
    QCOMPARE(document->toString(), before);
    QCOMPARE(animations->at(0)->frameCount(), 4u);
    animations->release();
}

void SampleLanguageTest::garbageNeverCrashes()
{
    // Lines of every kind, broken in every place, and some bytes that aren't text.
    QStringList lines{QStringLiteral("[Move: punch]"), QStringLiteral("    reach = (0, -40, 35, -20)"),
                      QStringLiteral("animation 3 \"Walk\""), QStringLiteral("    frame (1, 2) delay=4 blend=add(1, 0.5) loop"),
                      QStringLiteral("        attack (1, 2, 3, 4)"), QStringLiteral("@version 7"),
                      QStringLiteral("    name = \"a # b\"")};
    QString garbage;
    quint32 seed = 12345;
    for (int i = 0; i < 400; ++i) {
        seed = seed * 1103515245u + 12345u;
        QString line = lines.at(int(seed >> 16) % lines.size());
        seed = seed * 1103515245u + 12345u;
        const int cut = int(seed >> 16) % (line.size() + 1);
        seed = seed * 1103515245u + 12345u;
        const QChar noise(ushort(seed >> 16) % 0x3000 + 1);
        line = line.left(cut) + noise + line.mid(cut + (i % 3));
        garbage += line + QLatin1Char('\n');
    }
    garbage += QStringLiteral("((((\n))))\n[\n]\n=\n\"\n@\n@version\n@version 99999\nframe\nattack\n\\\n");
    for (int kind = 0; kind < 2; ++kind) {
        Held<CodeDocument> document = newDocument(kind);
        document->fromString(garbage);
        QVERIFY(document->fileMessages()->count(Message::Error) > 10);
        document->formatLines(0, document->blockCount() - 1, false);
    }
}

void SampleLanguageTest::completerAndSnippets()
{
    const QDir data(QStringLiteral(SAMPLEDATADIR));
    QFile completer(data.filePath(QStringLiteral("completer.xml")));
    QVERIFY(completer.open(QIODevice::ReadOnly));
    QXmlStreamReader reader(&completer);
    reader.setNamespaceProcessing(false);
    QMap<QString, QStringList> models;
    QString prefix;
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isStartElement() && reader.name() == QLatin1String("model"))
            prefix = reader.attributes().value(QStringLiteral("prefix")).toString();
        else if (reader.isStartElement() && reader.name() == QLatin1String("word"))
            models[prefix] << reader.attributes().value(QStringLiteral("value")).toString();
    }
    QVERIFY2(!reader.hasError(), qPrintable(reader.errorString()));
    // Every group kind and every key of the table is offered.
    QVERIFY(models.value(QStringLiteral("[")).contains(QStringLiteral("Move")));
    for (const SampleLanguage::KindInfo &kind : SampleLanguage::kinds()) {
        QVERIFY2(models.value(QStringLiteral("[")).contains(kind.name), qPrintable(kind.name));
        // Deprecated keys are read, but not offered.
        for (const SampleLanguage::KeyInfo &key : kind.keys) {
            bool found = false;
            for (const QStringList &words : qAsConst(models))
                found |= words.contains(key.key);
            QVERIFY2(found == key.replacement.isEmpty(), qPrintable(key.key));
        }
    }

    const QStringList snippets = QDir(data.filePath(QStringLiteral("snippets"))).entryList({QStringLiteral("*.xml")});
    QVERIFY(snippets.size() >= 3 && snippets.size() <= 5);
    for (const QString &name : snippets) {
        QFile file(data.filePath(QStringLiteral("snippets/") + name));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        QVERIFY2(bytes.startsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<snippet>\r\n\r\n"), qPrintable(name));
        QVERIFY2(bytes.endsWith("\t</code>\r\n\r\n</snippet>"), qPrintable(name));
        QXmlStreamReader snippet(bytes);
        snippet.setNamespaceProcessing(false);
        QMap<QString, QString> fill;
        QString code;
        while (!snippet.atEnd()) {
            if (snippet.readNext() != QXmlStreamReader::StartElement)
                continue;
            if (snippet.name() == QLatin1String("field")) {
                const QXmlStreamAttributes attributes = snippet.attributes();
                const QString type = attributes.value(QStringLiteral("type")).toString();
                QVERIFY(QStringList({QStringLiteral("string"), QStringLiteral("int"), QStringLiteral("float"),
                                     QStringLiteral("items")}).contains(type));
                QVERIFY(!attributes.value(QStringLiteral("title")).isEmpty());
                // A value of the field's type, as a user would fill it in.
                QString value = type == QLatin1String("int") ? QStringLiteral("12")
                    : type == QLatin1String("float") ? QStringLiteral("1.5") : QStringLiteral("jab");
                if (type == QLatin1String("items"))
                    value = attributes.value(QStringLiteral("value")).toString().section(QLatin1Char('|'), 0, 0);
                fill.insert(attributes.value(QStringLiteral("name")).toString(), value);
            } else if (snippet.name() == QLatin1String("code")) {
                code = snippet.readElementText();
            }
        }
        QVERIFY2(!snippet.hasError(), qPrintable(name + snippet.errorString()));
        QVERIFY2(code.contains(QStringLiteral("CURSOR")), qPrintable(name));
        QVERIFY(!fill.isEmpty());
        for (auto it = fill.cbegin(); it != fill.cend(); ++it)
            code.replace(it.key(), it.value());
        code.remove(QStringLiteral("CURSOR"));
        const bool animation = code.trimmed().startsWith(QLatin1String("animation"));
        Held<CodeDocument> document = newDocument(animation);
        document->fromString(code);
        QVERIFY2(document->fileMessages()->count(Message::All) == 0, qPrintable(name + QLatin1Char('\n') + code));
        QVERIFY(document->root()->childCount() > 0);
    }
}

QTEST_MAIN(SampleLanguageTest)
#include "tst_samplelanguage.moc"
