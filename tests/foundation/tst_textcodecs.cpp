#include "foundation/textcodecs.h"

#include <QTextCodec>
#include <QTranslator>
#include <QtTest>

using namespace Ovra;

namespace {

const QString French = QStringLiteral(
    "Le cœur déçu mais l'âme plutôt naïve, Louÿs rêva de crapaüter en canoë au delà des îles, "
    "près du mälström où brûlent les novæ. L'été, à côté de la forêt, où les élèves étudièrent.");
const QString German = QStringLiteral(
    "Falsches Üben von Xylophonmusik quält jeden größeren Zwerg. Die Straße führt über die "
    "Brücke zum Märchenschloss, wo Bären und Füchse gemütlich frühstücken.");
const QString Japanese = QStringLiteral(
    "いろはにほへと ちりぬるを わかよたれそ つねならむ うゐのおくやま けふこえて あさきゆめみし "
    "ゑひもせす。今日は良い天気ですね。この文章は文字コードの判定を試すための日本語の文です。");

QByteArray encoded(const char *codec, const QString &text)
{
    return QTextCodec::codecForName(codec)->fromUnicode(text);
}

// Translates the name of the system codec, as a user's language would.
class GermanTable : public QTranslator
{
public:
    QString translate(const char *context, const char *source, const char *, int) const override
    {
        return qstrcmp(context, "Ovra::OvraTranslator") == 0 && qstrcmp(source, "System") == 0
                   ? QStringLiteral("Systemeigen")
                   : QString();
    }
    bool isEmpty() const override { return false; }
};

} // namespace

class TextCodecsTest : public QObject
{
    Q_OBJECT

private slots:
    void detection_data();
    void detection();
    void names();
    void translatedSystemName();
    void fixedIndexRoundTrip_data();
    void fixedIndexRoundTrip();
    void defaultCodecIsTriedLast();
    void badIndexesDoNotCrash();
};

void TextCodecsTest::detection_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("codec"); // the codec detection must pick, by Qt's name
    QTest::newRow("empty: UTF-8") << QByteArray() << QString() << QByteArray("UTF-8");
    QTest::newRow("ASCII") << QByteArray("[Stats]\r\nspeed = 1000\r\n") << "[Stats]\r\nspeed = 1000\r\n"
                           << QByteArray();
    QTest::newRow("UTF-8") << French.toUtf8() << French << QByteArray("UTF-8");
    QTest::newRow("UTF-16LE, byte order mark") << encoded("UTF-16LE", QChar(0xFEFF) + German)
                                               << QString(QChar(0xFEFF) + German) << QByteArray("UTF-16LE");
    QTest::newRow("UTF-16BE, byte order mark") << encoded("UTF-16BE", QChar(0xFEFF) + German)
                                               << QString(QChar(0xFEFF) + German) << QByteArray("UTF-16BE");
    QTest::newRow("Latin-1 German") << encoded("ISO-8859-1", German) << German << QByteArray("ISO-8859-1");
    const QString quoted = QStringLiteral("„Größe“ – 20 € für die Brücke… ") + German;
    QTest::newRow("Windows-1252 quotes and euro") << encoded("windows-1252", quoted) << quoted << QByteArray("windows-1252");
    // Without a byte order mark the detector has to recognise UTF-16 by its zero bytes.
    QTest::newRow("UTF-16LE, no byte order mark") << encoded("UTF-16LE", German) << German << QByteArray("UTF-16LE");
    QTest::newRow("Shift-JIS") << encoded("Shift_JIS", Japanese) << Japanese << QByteArray("Shift_JIS");
    QTest::newRow("EUC-JP") << encoded("EUC-JP", Japanese) << Japanese << QByteArray("EUC-JP");
}

void TextCodecsTest::detection()
{
    QFETCH(QByteArray, data);
    QFETCH(QString, text);
    QFETCH(QByteArray, codec);
    QTextCodec *detected = TextCodecs::get(data);
    QVERIFY(detected);
    if (!codec.isEmpty())
        QCOMPARE(detected->name(), codec);
    int index = -1;
    const QString decoded = TextCodecs::stringFromData(data, &index);
    // The text comes back whole, however the encoding was found.
    QCOMPARE(decoded.startsWith(QChar(0xFEFF)) ? decoded.mid(1) : decoded,
             text.startsWith(QChar(0xFEFF)) ? text.mid(1) : text);
    QCOMPARE(index, TextCodecs::index(detected->name().constData()));
}

void TextCodecsTest::names()
{
    QCOMPARE(TextCodecs::name(0), QStringLiteral("System"));
    QCOMPARE(TextCodecs::index("System"), 0);
    QCOMPARE(TextCodecs::index("no such codec"), 0);
    QVERIFY(TextCodecs::count() > 10);
    for (const char *name : {"UTF-8", "ISO-8859-1", "Shift_JIS"}) {
        const int index = TextCodecs::index(name);
        QVERIFY2(index > 0, name);
        QCOMPARE(TextCodecs::name(index), QLatin1String(name));
    }
    for (int index = 1; index < TextCodecs::count(); ++index)
        QVERIFY(TextCodecs::name(index) != QLatin1String("System"));
}

void TextCodecsTest::translatedSystemName()
{
    GermanTable table;
    QVERIFY(QCoreApplication::installTranslator(&table));
    const QString translated = TextCodecs::name(0);
    const int index = TextCodecs::index("Systemeigen");
    QCoreApplication::removeTranslator(&table);
    QCOMPARE(translated, QStringLiteral("Systemeigen"));
    QCOMPARE(index, 0);
}

void TextCodecsTest::fixedIndexRoundTrip_data()
{
    QTest::addColumn<QByteArray>("codec");
    QTest::addColumn<QString>("text");
    QTest::newRow("UTF-8") << QByteArray("UTF-8") << Japanese;
    QTest::newRow("Latin-1") << QByteArray("ISO-8859-1") << German;
    QTest::newRow("Shift_JIS") << QByteArray("Shift_JIS") << Japanese;
}

void TextCodecsTest::fixedIndexRoundTrip()
{
    QFETCH(QByteArray, codec);
    QFETCH(QString, text);
    const int index = TextCodecs::index(codec.constData());
    const QByteArray data = TextCodecs::stringToData(text, index);
    QCOMPARE(data, encoded(codec.constData(), text));
    int used = index;
    QCOMPARE(TextCodecs::stringFromData(data, &used), text);
    QCOMPARE(used, index);
}

void TextCodecsTest::defaultCodecIsTriedLast()
{
    // Bytes that no byte order mark explains, that the detector gives no name for (it
    // answers an empty name for these), and that aren't valid UTF-8: only then does the
    // default codec decide, ahead of the locale's.
    const QByteArray data("\x81\x8D\x8F\x90\x9D", 5);
    const int koi8 = TextCodecs::index("KOI8-R");
    QVERIFY(koi8 > 0);
    QCOMPARE(TextCodecs::get(data), QTextCodec::codecForLocale());
    TextCodecs::setDefaultCodec(koi8);
    QCOMPARE(TextCodecs::defaultCodec(), koi8);
    QCOMPARE(TextCodecs::get(data)->name(), QByteArray("KOI8-R"));
    int used = -1;
    QCOMPARE(TextCodecs::stringFromData(data, &used), QTextCodec::codecForName("KOI8-R")->toUnicode(data));
    QCOMPARE(used, koi8);
    // Detected text is not overruled by the default.
    QCOMPARE(TextCodecs::get(German.toUtf8())->name(), QByteArray("UTF-8"));
    TextCodecs::setDefaultCodec(0);
}

void TextCodecsTest::badIndexesDoNotCrash()
{
    int index = TextCodecs::count() + 50;
    QCOMPARE(TextCodecs::stringFromData("abc", &index), QStringLiteral("abc"));
    QCOMPARE(index, TextCodecs::index(QTextCodec::codecForLocale()->name().constData()));
    QCOMPARE(TextCodecs::stringToData(QStringLiteral("abc"), -7), QByteArray("abc"));
    QVERIFY(TextCodecs::name(-1).isEmpty());
    QVERIFY(TextCodecs::name(TextCodecs::count()).isEmpty());
}

QTEST_GUILESS_MAIN(TextCodecsTest)
#include "tst_textcodecs.moc"
