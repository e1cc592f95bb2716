#include "foundation/translator.h"

#include <QCoreApplication>
#include <QSet>
#include <QTranslator>
#include <QtTest>

#include <limits>

using namespace Ovra;

namespace {

OvraTranslator *table()
{
    return static_cast<OvraTranslator *>(ovraTranslator());
}

// Translates two known strings of the library's context and nothing else, so a
// test can tell whether lookups really go through the installed translators.
class MarkingTranslator : public QTranslator
{
public:
    QString translate(const char *context, const char *sourceText, const char *,
                      int) const override
    {
        if (qstrcmp(context, "Ovra::OvraTranslator") != 0)
            return QString();
        if (qstrcmp(sourceText, "Palettes") == 0)
            return QStringLiteral("[X]");
        if (qstrcmp(sourceText, "Add one or more palettes") == 0)
            return QStringLiteral("[T]");
        return QString();
    }
    bool isEmpty() const override { return false; }
};

class PlainTable : public Translator
{
public:
    QString text(uint id) override { return QStringLiteral("t%1").arg(id); }
};

} // namespace

class TranslatorTest : public QObject
{
    Q_OBJECT

private slots:
    void texts_data();
    void texts();
    void everyIdHasText();
    void outOfRange_data();
    void outOfRange();
    void ownTipsAreExactlyTheExpectedIds();
    void verbatimTips_data();
    void verbatimTips();
    void sameInstance();
    void defaultTranslatorFallsBack();
    void installedTranslationApplies();
};

void TranslatorTest::texts_data()
{
    QTest::addColumn<uint>("id");
    QTest::addColumn<QString>("expected");
    QTest::newRow("first") << 0u << "System";
    QTest::newRow("multi-line") << 3u
        << "Do you want to reload the file using the specified encoding?\nThis will make the "
           "editor display characters using this encoding, otherwise characters will remain "
           "unchanged and only saved using this encoding.";
    QTest::newRow("misspelt") << 25u << "Unfold all coded blocks";
    QTest::newRow("palette add") << 36u << "Add";
    QTest::newRow("palette save as") << 40u << "Save as...";
    QTest::newRow("animation add") << 53u << "Add";
    QTest::newRow("contact boxes") << 73u << "Use these Contact boxes in all other instances of this frame";
    QTest::newRow("onion") << 99u << "OnionSkin";
    QTest::newRow("blend add") << 115u << "Add";
    QTest::newRow("layer add") << 128u << "Add";
    QTest::newRow("apostrophe") << 145u << "Switch to the frame's sprite";
    QTest::newRow("sound add") << 161u << "Add";
    QTest::newRow("wave free selection") << 194u << "Free selection";
    QTest::newRow("aligned") << 214u << "Add selected as layers (aligned)";
    QTest::newRow("last") << 217u << "Emulator";
}

void TranslatorTest::texts()
{
    QFETCH(uint, id);
    QFETCH(QString, expected);
    QCOMPARE(table()->text(id), expected);
}

void TranslatorTest::everyIdHasText()
{
    for (uint id = 0; id < OvraTranslator::Count; ++id)
        QVERIFY2(!table()->text(id).isEmpty(), qPrintable(QString::number(id)));
}

void TranslatorTest::outOfRange_data()
{
    QTest::addColumn<uint>("id");
    QTest::newRow("one past") << OvraTranslator::Count;
    QTest::newRow("1000") << 1000u;
    QTest::newRow("max") << std::numeric_limits<uint>::max();
}

void TranslatorTest::outOfRange()
{
    QFETCH(uint, id);
    QVERIFY(table()->text(id).isEmpty());
    QVERIFY(table()->tip(id).isEmpty());
    QVERIFY(table()->detail(id).isEmpty());
}

void TranslatorTest::ownTipsAreExactlyTheExpectedIds()
{
    // Inside 4..173 only these ids lean on their text; everything else in that
    // range has its own sentence, and nothing outside it does.
    QSet<uint> withoutTip = {13, 17, 24, 25, 29, 30, 31, 32, 33, 42, 43, 44, 45, 47, 48, 51,
                             73, 100, 101, 116, 117, 118, 119, 120, 121, 122, 123, 124, 125,
                             126, 127, 133, 134, 139, 147, 150, 155, 160, 169};
    for (uint id = 78; id <= 98; ++id)
        withoutTip.insert(id);
    for (uint id = 104; id <= 114; ++id)
        withoutTip.insert(id);

    QSet<uint> expected;
    for (uint id = 4; id <= 173; ++id)
        if (!withoutTip.contains(id))
            expected.insert(id);
    QCOMPARE(expected.size(), 99);

    QSet<uint> actual;
    for (uint id = 0; id < OvraTranslator::Count; ++id) {
        const QString tip = table()->tip(id);
        QVERIFY2(!tip.isEmpty(), qPrintable(QString::number(id)));
        if (tip != table()->text(id))
            actual.insert(id);
    }
    QCOMPARE(actual, expected);
}

void TranslatorTest::verbatimTips_data()
{
    QTest::addColumn<uint>("id");
    QTest::addColumn<QString>("expected");
    QTest::newRow("4") << 4u << "Show/Hide the code toolbar in all code editors";
    QTest::newRow("5") << 5u << "Place the origin at the center of the workspace";
    QTest::newRow("18") << 18u << "Go to the specifed line";
    QTest::newRow("28") << 28u << "Selects the file encoding";
    QTest::newRow("36") << 36u << "Add one or more palettes";
    QTest::newRow("53") << 53u << "Add a new animation";
    QTest::newRow("70") << 70u << "Remove all Contact boxs of current animation";
    QTest::newRow("99") << 99u << "Enable OnionSkin";
    QTest::newRow("154") << 154u << "Split the RGB channels of the current sprite as separate sprites";
    QTest::newRow("164") << 164u << "Save the sound as WAV...";
    QTest::newRow("173") << 173u << "Import one or more sounds from another opened project...";
    QTest::newRow("fallback 33") << 33u << "Palettes";
    QTest::newRow("fallback 0") << 0u << "System";
    QTest::newRow("fallback 217") << 217u << "Emulator";
}

void TranslatorTest::verbatimTips()
{
    QFETCH(uint, id);
    QFETCH(QString, expected);
    QCOMPARE(table()->tip(id), expected);
}

void TranslatorTest::sameInstance()
{
    Translator *first = ovraTranslator();
    QVERIFY(first != nullptr);
    QCOMPARE(ovraTranslator(), first);
    QVERIFY(dynamic_cast<OvraTranslator *>(first) != nullptr);
}

void TranslatorTest::defaultTranslatorFallsBack()
{
    PlainTable plain;
    QCOMPARE(plain.tip(7), QStringLiteral("t7"));
    QVERIFY(plain.detail(7).isEmpty());
    QVERIFY(ovraTranslator()->detail(36).isEmpty());
}

void TranslatorTest::installedTranslationApplies()
{
    MarkingTranslator marker;
    QVERIFY(QCoreApplication::installTranslator(&marker));
    const QString translatedText = table()->text(33);
    const QString translatedTip = table()->tip(36);
    const QString untouched = table()->text(34);
    QVERIFY(QCoreApplication::removeTranslator(&marker));

    QCOMPARE(translatedText, QStringLiteral("[X]"));
    QCOMPARE(translatedTip, QStringLiteral("[T]"));
    QCOMPARE(untouched, QStringLiteral("Clear"));
    QCOMPARE(table()->text(33), QStringLiteral("Palettes"));
    QCOMPARE(table()->tip(36), QStringLiteral("Add one or more palettes"));
}

QTEST_GUILESS_MAIN(TranslatorTest)
#include "tst_translator.moc"
