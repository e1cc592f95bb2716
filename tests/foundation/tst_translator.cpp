#include "foundation/translator.h"

#include <QCoreApplication>
#include <QTranslator>
#include <QtTest>

#include <limits>

using namespace Ovra;

namespace {

Translator *table()
{
    return ovraTranslator();
}

// Translates one text and one tip of the library's context and nothing else, so a test
// can tell whether lookups really go through the installed translators.
class MarkingTranslator : public QTranslator
{
public:
    QString translate(const char *context, const char *sourceText, const char *, int) const override
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
    void lookup_data();
    void lookup();
    void defaultTipAndDetail();
    void installedTranslationApplies();
};

void TranslatorTest::lookup_data()
{
    QTest::addColumn<uint>("id");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("tip");
    // Id 0 names the system encoding in the encodings list.
    QTest::newRow("first") << 0u << "System" << "System";
    QTest::newRow("multi-line") << 3u
        << "Do you want to reload the file using the specified encoding?\nThis will make the "
           "editor display characters using this encoding, otherwise characters will remain "
           "unchanged and only saved using this encoding."
        << "Do you want to reload the file using the specified encoding?\nThis will make the "
           "editor display characters using this encoding, otherwise characters will remain "
           "unchanged and only saved using this encoding.";
    QTest::newRow("first own tip") << 4u << "Code toolbar" << "Show/Hide the code toolbar in all code editors";
    QTest::newRow("tip falls back to the text") << 33u << "Palettes" << "Palettes";
    QTest::newRow("own tip") << 36u << "Add" << "Add one or more palettes";
    QTest::newRow("last own tip") << 173u << "Import from another project..."
                                  << "Import one or more sounds from another opened project...";
    QTest::newRow("last") << 217u << "Emulator" << "Emulator";
    QTest::newRow("one past") << OvraTranslator::Count << QString() << QString();
    QTest::newRow("max") << std::numeric_limits<uint>::max() << QString() << QString();
}

void TranslatorTest::lookup()
{
    QFETCH(uint, id);
    QFETCH(QString, text);
    QFETCH(QString, tip);
    QCOMPARE(table()->text(id), text);
    QCOMPARE(table()->tip(id), tip);
    QVERIFY(table()->detail(id).isEmpty());
}

void TranslatorTest::defaultTipAndDetail()
{
    PlainTable plain;
    QCOMPARE(plain.tip(7), QStringLiteral("t7"));
    QVERIFY(plain.detail(7).isEmpty());
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
