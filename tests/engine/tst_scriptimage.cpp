#include "engine/script/script.h"
#include "scripttest.h"
#include "engine/script/scriptimage.h"
#include "image/imagecodecs.h"

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace Ovra;
using namespace Ovra::Script;

// The image usertype alone, in a state of its own, as scripts use it on sprite pictures.
class ScriptImageTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<State> m_state;

    // A 4x3 indexed picture with a red, green, blue, white table and index = x.
    static QImage indexedPicture()
    {
        QImage image(4, 3, QImage::Format_Indexed8);
        image.setColorTable({qRgb(255, 0, 0), qRgb(0, 255, 0), qRgb(0, 0, 255), qRgb(255, 255, 255)});
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 4; ++x)
                image.setPixel(x, y, uint(x));
        return image;
    }

private slots:
    void init()
    {
        m_state = std::make_unique<State>();
        m_state->openLibraries(State::SafeLibraries);
        Table globals = m_state->globals();
        registerImageClass(globals);
        globals.set("indexed", indexedPicture());
        QImage argb(2, 2, QImage::Format_ARGB32);
        argb.fill(0x80112233);
        globals.set("argb", argb);
    }
    void cleanup() { m_state.reset(); }

    void reads_data()
    {
        QTest::addColumn<QString>("expression");
        QTest::addColumn<QVariant>("expected");
        QTest::newRow("width and height") << "indexed.width * 10 + indexed.height" << QVariant(43);
        QTest::newRow("size") << "indexed.size.width * 10 + indexed.size.height" << QVariant(43);
        QTest::newRow("format") << "argb.format" << QVariant(int(QImage::Format_ARGB32));
        QTest::newRow("format names") << "indexed.format == Image.Format.Indexed8" << QVariant(true);
        QTest::newRow("colour count") << "indexed.colorCount" << QVariant(4);
        QTest::newRow("null") << "Image().isNull and not indexed.isNull" << QVariant(true);
        QTest::newRow("text") << "tostring(indexed)" << QVariant(QStringLiteral("Image(4x3, Indexed8)"));
        QTest::newRow("index as pixel") << "indexed:pixel(2, 1)" << QVariant(2LL);
        QTest::newRow("index") << "indexed:pixelIndex(3, 2)" << QVariant(3LL);
        QTest::newRow("half transparent") << "argb:pixel(0, 0)" << QVariant(0x80112233LL);
        QTest::newRow("colour") << "indexed:color(1)" << QVariant(qint64(qRgb(0, 255, 0)));
        QTest::newRow("table") << "indexed:colorTable()[3]" << QVariant(qint64(qRgb(0, 0, 255)));
        QTest::newRow("no table") << "#argb:colorTable()" << QVariant(0);
        QTest::newRow("set index") << "(function() indexed:setPixel(0, 0, 3) return indexed:pixel(0, 0) end)()"
                                   << QVariant(3LL);
    }
    void reads()
    {
        QFETCH(QString, expression);
        QFETCH(QVariant, expected);
        QVariant result = scriptResult(*m_state, expression);
        QVERIFY2(result.convert(expected.userType()) && result == expected,
                 qPrintable(result.toString() + QStringLiteral(" for ") + expression));
    }

    // Changes land in the script's copy of the picture, and read back from it.
    void writes()
    {
        QVERIFY(m_state->run(QStringLiteral("argb:setPixel(0, 1, 0xFFABCDEF)\n"
                                            "indexed:setColorTable({0xFF000000, 0xFFFFFFFF})\n"
                                            "indexed:setColor(5, 0x80102030)")));
        QCOMPARE(m_state->globals().get<QImage>("argb").pixel(0, 1), 0xffabcdefu);
        // Setting past the end grows the table; the entries between are transparent black.
        QCOMPARE(m_state->globals().get<QImage>("indexed").colorTable(),
                 (QVector<QRgb>{0xff000000, 0xffffffff, 0, 0, 0, 0x80102030}));
    }

    void copyScaleConvertFill()
    {
        QVERIFY(m_state->run(QStringLiteral("part = indexed:copy(1, 1, 2, 2)\n"
                                            "big = indexed:scaled(8, 6)\n"
                                            "rgb = indexed:convertToFormat(Image.Format.RGB32)\n"
                                            "made = Image(3, 2, Image.Format.Indexed8)\n"
                                            "made:fill(7)\n"
                                            "copied = Image(made)\n"
                                            "copied:setPixel(0, 0, 1)")));
        Table globals = m_state->globals();
        QImage part = globals.get<QImage>("part");
        QCOMPARE(part.size(), QSize(2, 2));
        QCOMPARE(part.pixelIndex(0, 0), 1);
        QCOMPARE(part.pixelIndex(1, 1), 2);
        QCOMPARE(part.colorCount(), 4);
        // Nearest neighbour: each pixel doubled, no new values.
        QImage big = globals.get<QImage>("big");
        QCOMPARE(big.size(), QSize(8, 6));
        QCOMPARE(big.format(), QImage::Format_Indexed8);
        QCOMPARE(big.pixelIndex(5, 4), 2);
        QCOMPARE(big.pixelIndex(6, 0), 3);
        QImage rgb = globals.get<QImage>("rgb");
        QCOMPARE(rgb.format(), QImage::Format_RGB32);
        QCOMPARE(rgb.pixel(2, 0), qRgb(0, 0, 255));
        // A new indexed picture has a full table, so every index can be set.
        QImage made = globals.get<QImage>("made");
        QCOMPARE(made.colorCount(), 256);
        QCOMPARE(made.pixelIndex(2, 1), 7);
        QCOMPARE(made.color(7), qRgb(7, 7, 7));
        // A copy is a value of its own.
        QCOMPARE(globals.get<QImage>("copied").pixelIndex(0, 0), 1);
        QCOMPARE(made.pixelIndex(0, 0), 7);
        QCOMPARE(scriptResult(*m_state, QStringLiteral("Image(2, 2).format == Image.Format.ARGB32 and Image(2, 2):pixel(1, 1) == 0"))
                     .toBool(),
                 true);
        QCOMPARE(scriptResult(*m_state, QStringLiteral("indexed == Image(indexed)")).toBool(), true);
        QCOMPARE(scriptResult(*m_state, QStringLiteral("indexed == argb")).toBool(), false);
    }

    void saveAndLoad_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("create");
        QTest::newRow("indexed png") << "picture.png" << "indexed";
        QTest::newRow("indexed pcx") << "picture.pcx" << "indexed";
        QTest::newRow("true colour bmp") << "picture.bmp" << "indexed:convertToFormat(Image.Format.RGB32)";
    }
    void saveAndLoad()
    {
        QFETCH(QString, name);
        QFETCH(QString, create);
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const QString path = dir.filePath(name);
        m_state->globals().set("path", path);
        QString error;
        QVERIFY2(m_state->run(QStringLiteral("local picture = %1\npicture:save(path)\n"
                                             "loaded = Image.load(path)\n"
                                             "again = Image()\nagain:load(path)")
                                  .arg(create),
                              QStringLiteral("test.lua"), &error),
                 qPrintable(error));
        // What the script wrote is what the library's codec writes for the same picture.
        QImage expected = m_state->globals().get<QImage>("loaded");
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray written = file.readAll();
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        const QByteArray format = QFileInfo(path).suffix().toUpper().toLatin1();
        const QImage source = create == QLatin1String("indexed")
                                  ? indexedPicture()
                                  : indexedPicture().convertToFormat(QImage::Format_RGB32);
        QVERIFY(saveImage(&buffer, format.constData(), source));
        QCOMPARE(written, buffer.data());
        QCOMPARE(expected.size(), QSize(4, 3));
        QCOMPARE(expected.pixel(3, 1), qRgb(255, 255, 255));
        QCOMPARE(m_state->globals().get<QImage>("again"), expected);
    }

    void saveFailureKeepsFile()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("keep.unknownformat"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("precious");
        file.close();
        m_state->globals().set("path", path);
        QVERIFY(scriptError(*m_state, QStringLiteral("indexed:save(path)")).contains(QLatin1String("cannot save")));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray("precious"));
        // A null image writes nothing either.
        QVERIFY(scriptError(*m_state, QStringLiteral("Image():save(path)")).contains(QLatin1String("the image is null")));
    }

    void loadFailures_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("message");
        QTest::newRow("missing file") << QByteArray() << "absent.png" << "cannot open";
        QTest::newRow("truncated png") << QByteArray("\x89PNG\r\n\x1a\n\0\0", 10) << "short.png" << "not a readable PNG image";
        QTest::newRow("no suffix") << QByteArray("x") << "plain" << "no suffix";
    }
    void loadFailures()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, name);
        QFETCH(QString, message);
        QTemporaryDir dir;
        const QString path = dir.filePath(name);
        if (!bytes.isEmpty()) {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(bytes);
        }
        m_state->globals().set("path", path);
        const QString error = scriptError(*m_state, QStringLiteral("Image.load(path)"));
        QVERIFY2(error.startsWith(QLatin1String("lua: error: test.lua:1: ")) && error.contains(message), qPrintable(error));
        // The member form leaves the image as it was.
        QVERIFY(scriptError(*m_state, QStringLiteral("indexed:load(path)")).contains(message));
        QCOMPARE(m_state->globals().get<QImage>("indexed"), indexedPicture());
    }

    void errors_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("message");
        QTest::newRow("pixel outside") << "indexed:pixel(4, 0)" << "pixel (4, 0) outside the 4x3 image";
        QTest::newRow("negative pixel") << "argb:setPixel(-1, 0, 0)" << "pixel (-1, 0) outside the 2x2 image";
        QTest::newRow("index past the table") << "indexed:setPixel(0, 0, 4)" << "colour index 4 outside the table of 4";
        QTest::newRow("colour too large") << "argb:setPixel(0, 0, 0x100000000)" << "not a 32-bit";
        QTest::newRow("pixelIndex of true colour") << "argb:pixelIndex(0, 0)" << "not an indexed image";
        QTest::newRow("colour of no table") << "argb:color(0)" << "colour index 0 outside the table of 0";
        QTest::newRow("setColor past 255") << "indexed:setColor(256, 0)" << "colour index 256 outside 0 to 255";
        QTest::newRow("table too long") << "local t = {} for i = 1, 257 do t[i] = 0 end indexed:setColorTable(t)"
                                        << "at most 256 colours";
        QTest::newRow("copy outside") << "indexed:copy(2, 0, 3, 1)" << "rectangle (2, 0, 3, 1) outside the 4x3 image";
        QTest::newRow("copy empty") << "indexed:copy(0, 0, 0, 1)" << "outside";
        QTest::newRow("scaled to zero") << "indexed:scaled(0, 5)" << "bad image size 0x5";
        QTest::newRow("scaled huge") << "indexed:scaled(100000, 5)" << "bad image size";
        QTest::newRow("bad format") << "indexed:convertToFormat(1)" << "unsupported image format 1";
        QTest::newRow("constructor format") << "Image(2, 2, 99)" << "unsupported image format 99";
        QTest::newRow("constructor size") << "Image(-2, 2)" << "bad image size -2x2";
        QTest::newRow("scale a null image") << "Image():scaled(2, 2)" << "the image is null";
        QTest::newRow("fill a null image") << "Image():fill(0)" << "the image is null";
    }
    void errors()
    {
        QFETCH(QString, code);
        QFETCH(QString, message);
        const QString error = scriptError(*m_state, code);
        QVERIFY2(error.startsWith(QLatin1String("lua: error: ")) && error.contains(message), qPrintable(error));
        // The pictures are untouched, and the state goes on.
        QCOMPARE(m_state->globals().get<QImage>("indexed"), indexedPicture());
        QCOMPARE(scriptResult(*m_state, QStringLiteral("indexed.width")).toInt(), 4);
    }
};

QTEST_GUILESS_MAIN(ScriptImageTest)
#include "tst_scriptimage.moc"
