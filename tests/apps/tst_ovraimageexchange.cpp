// The tool's picture, GIF and palette commands with files of another program: pictures
// written by Python's imaging library go in, and what the tool writes is read by it.
#include "ovratool.h"
#include "pilimages.h"

#include "engine/extensionmanager.h"
#include "image/gifimage.h"
#include "image/paletteobject.h"

#include <QBuffer>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace Ovra;

namespace {

// Opaque colours, a different one in every pixel of a 13 x 5 picture.
const char *const opaqueRgb = "im = Image.new('RGB', (13, 5))\n"
                              "im.putdata([(x * 19, y * 50, (x * y * 7 + 1) % 256) for y in range(5) for x in range(13)])";
const char *const clearRgba = "im = Image.new('RGBA', (13, 5))\n"
                              "im.putdata([(x * 19, y * 50, 9, 0 if (x + y) % 3 == 0 else 255) for y in range(5) for x in range(13)])";
const char *const indexed = "im = Image.new('P', (13, 5))\n"
                            "im.putpalette([(i * 37 + c * 11) % 256 for i in range(16) for c in range(3)])\n"
                            "im.putdata([(x * 3 + y) % 16 for y in range(5) for x in range(13)])";
const char *const grey = "im = Image.new('L', (13, 5))\nim.putdata([(x * 19 + y * 7) % 256 for y in range(5) for x in range(13)])";
const char *const mono = "im = Image.new('1', (13, 5))\nim.putdata([255 * ((x * y + x) % 2) for y in range(5) for x in range(13)])";

RGBA entryColour(int i)
{
    return RGBA(quint8(i), quint8(255 - i), quint8((i * 7 + 3) % 256), 255);
}

// Colour tables and RIFF palettes read by their layouts, in file order.
QVector<RGB> plainColours(const QByteArray &file, bool riff)
{
    QVector<RGB> colours;
    const int start = riff ? 24 : 0;
    const int step = riff ? 4 : 3;
    for (int at = start; at + 2 < file.size(); at += step)
        colours << RGB(quint8(file.at(at)), quint8(file.at(at + 1)), quint8(file.at(at + 2)));
    return colours;
}

} // namespace

class OvraImageExchangeTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void scaleOpaque_data();
    void scaleOpaque();
    void picturesBothWays_data();
    void picturesBothWays();
    void spritesAsGif();
    void importedWhole();
    void animationGif();
    void palettesBetweenFormats();
    void wording();

private:
    ToolRun run(const QStringList &arguments) const { return runOvra(m_dir.path(), arguments); }
    QString path(const QString &name) const { return m_dir.filePath(name); }
    bool pilWrite(const QString &name, const char *statements, const QString &saveArguments = QString()) const;
    PilImages::Picture pilRead(const QString &name) const;

    QTemporaryDir m_dir;
    std::unique_ptr<ExtensionManager> m_manager;
};

bool OvraImageExchangeTest::pilWrite(const QString &name, const char *statements, const QString &saveArguments) const
{
    QString error;
    if (PilImages::write(path(name), QString::fromLatin1(statements), saveArguments, &error))
        return true;
    qWarning("%s", qPrintable(error));
    return false;
}

PilImages::Picture OvraImageExchangeTest::pilRead(const QString &name) const
{
    PilImages::Picture picture;
    QString error;
    if (!PilImages::read(path(name), &picture, &error))
        qWarning("%s", qPrintable(error));
    return picture;
}

void OvraImageExchangeTest::initTestCase()
{
    QVERIFY(m_dir.isValid());
    QString error;
    QVERIFY2(!PilImages::python(&error).isEmpty(), qPrintable(error));
    m_manager = std::make_unique<ExtensionManager>(QStringLiteral(OVRA_PLUGIN_DIR));
    QVERIFY(copyWork(path(QStringLiteral("work"))));
}

void OvraImageExchangeTest::cleanupTestCase()
{
    m_manager.reset();
}

void OvraImageExchangeTest::scaleOpaque_data()
{
    QTest::addColumn<QString>("input");
    QTest::addColumn<QString>("output");
    QTest::addColumn<int>("factor");
    QTest::newRow("png by 2") << "opaque.png" << "twice.png" << 2;
    QTest::newRow("bmp by 3") << "opaque.bmp" << "thrice.png" << 3;
    QTest::newRow("pcx by 2 into bmp") << "opaque.pcx" << "twice.bmp" << 2;
}

// The nearest filter takes each pixel of the result from the source pixel it lies over:
// opaque true colour keeps every colour and stays opaque.
void OvraImageExchangeTest::scaleOpaque()
{
    QFETCH(QString, input);
    QFETCH(QString, output);
    QFETCH(int, factor);
    QVERIFY(pilWrite(input, opaqueRgb));
    const ToolRun result = run(words("image scale") << input << output << QStringLiteral("--factor")
                                                    << QString::number(factor));
    QCOMPARE(result.err, QString());
    QCOMPARE(result.code, 0);
    const PilImages::Picture source = pilRead(input);
    const PilImages::Picture scaled = pilRead(output);
    QCOMPARE(scaled.mode, QStringLiteral("RGB"));
    QCOMPARE(scaled.pixels.size(), source.pixels.size() * factor);
    for (int y = 0; y < scaled.pixels.height(); ++y) {
        for (int x = 0; x < scaled.pixels.width(); ++x)
            QCOMPARE(scaled.pixels.pixel(x, y), source.pixels.pixel(x / factor, y / factor));
    }
}

void OvraImageExchangeTest::picturesBothWays_data()
{
    QTest::addColumn<QString>("input");
    QTest::addColumn<QString>("statements");
    QTest::addColumn<QString>("saveArguments");
    QTest::addColumn<QStringList>("outputs");

    const QStringList all{QStringLiteral("png"), QStringLiteral("bmp"), QStringLiteral("pcx"), QStringLiteral("gif")};
    QTest::newRow("rgb png") << "rgb.png" << opaqueRgb << "" << all;
    QTest::newRow("rgba png") << "rgba.png" << clearRgba << "" << QStringList{"png", "bmp", "gif"};
    QTest::newRow("indexed bmp") << "p.bmp" << indexed << "" << all;
    QTest::newRow("two-colour bmp") << "mono.bmp" << mono << "" << all;
    QTest::newRow("two-colour png") << "mono.png" << mono << "" << all;
    QTest::newRow("grey pcx") << "grey.pcx" << grey << "" << all;
    QTest::newRow("rgb pcx") << "rgb.pcx" << opaqueRgb << "" << all;
    QTest::newRow("indexed gif, clear 5") << "pt.gif" << indexed << "transparency=5" << QStringList{"png", "gif"};
}

// Every picture through the tool (a scale by 1) into each format, read by the other
// program with the same pixels as its own reading of the input.
void OvraImageExchangeTest::picturesBothWays()
{
    QFETCH(QString, input);
    QFETCH(QString, statements);
    QFETCH(QString, saveArguments);
    QFETCH(QStringList, outputs);
    QVERIFY(pilWrite(input, qPrintable(statements), saveArguments));
    const PilImages::Picture source = pilRead(input);
    QVERIFY(!source.pixels.isNull());
    for (const QString &suffix : outputs) {
        const QString output = QFileInfo(input).completeBaseName() + QStringLiteral("-out.") + suffix;
        const ToolRun result = run(words("image scale") << input << output << QStringLiteral("--factor")
                                                        << QStringLiteral("1"));
        QVERIFY2(result.code == 0, qPrintable(output + QLatin1Char(' ') + result.err));
        QCOMPARE(PilImages::differences(pilRead(output).pixels, source.pixels), 0);
    }
}

// Sprites exported as GIF, single pictures, read by the other program with their
// transparency. A transparent true-colour picture has no place in PCX: refused, nothing
// written.
void OvraImageExchangeTest::spritesAsGif()
{
    const ToolRun pngs = run(words("sprites export work --format png -o pngs"));
    QCOMPARE(pngs.code, 0);
    const ToolRun gifs = run(words("sprites export work --format gif -o gifs"));
    QCOMPARE(gifs.code, 0);
    const QStringList names = QDir(path(QStringLiteral("pngs"))).entryList(QDir::Files);
    QVERIFY(names.size() > 20);
    int clear = 0;
    for (const QString &name : names) {
        const QImage png = pilRead(QStringLiteral("pngs/") + name).pixels;
        const PilImages::Picture gif = pilRead(QStringLiteral("gifs/") + QFileInfo(name).completeBaseName() + ".gif");
        QCOMPARE(gif.transparency, 0);
        QCOMPARE(gif.pixels.size(), png.size());
        // GIF keeps no partial transparency; every pixel clear or opaque comes out as it was.
        for (int y = 0; y < png.height(); ++y) {
            for (int x = 0; x < png.width(); ++x) {
                const QRgb p = png.pixel(x, y);
                if (qAlpha(p) == 255)
                    QCOMPARE(gif.pixels.pixel(x, y), p);
                else if (qAlpha(p) == 0)
                    QCOMPARE(qAlpha(gif.pixels.pixel(x, y)), 0);
                clear += qAlpha(p) == 0;
            }
        }
    }
    QVERIFY(clear > 0);

    QVERIFY(pilWrite(QStringLiteral("clear.png"), clearRgba));
    const ToolRun refused = run(words("image scale clear.png clear.pcx --factor 1"));
    QCOMPARE(refused.code, 3);
    QCOMPARE(lines(refused.err).size(), 1);
    QVERIFY(!QFileInfo::exists(path(QStringLiteral("clear.pcx"))));
}

// Pictures of the other program into the sample engine's sprites and out again as PNG:
// the same pixels, transparency included.
void OvraImageExchangeTest::importedWhole()
{
    const QList<QPair<QString, QString>> pictures{{QStringLiteral("in-clear5.gif"), QStringLiteral("transparency=5")},
                                                  {QStringLiteral("in-p.pcx"), QString()},
                                                  {QStringLiteral("in-mono.png"), QString()},
                                                  {QStringLiteral("in-grey.png"), QString()},
                                                  {QStringLiteral("in-rgba.png"), QString()}};
    const char *const statements[] = {indexed, indexed, mono, grey, clearRgba};
    QStringList arguments = words("sprites import work --group 800");
    for (int i = 0; i < pictures.size(); ++i) {
        QVERIFY(pilWrite(pictures.at(i).first, statements[i], pictures.at(i).second));
        arguments << pictures.at(i).first;
    }
    ToolRun result = run(arguments);
    QVERIFY2(result.code == 0, qPrintable(result.err));
    result = run(words("sprites export work --only 800 -o imported"));
    QVERIFY2(result.code == 0, qPrintable(result.err));
    for (int i = 0; i < pictures.size(); ++i) {
        const PilImages::Picture exported = pilRead(QStringLiteral("imported/knight_800-%1.png").arg(i));
        QCOMPARE(PilImages::differences(exported.pixels, pilRead(pictures.at(i).first).pixels), 0);
    }
}

void OvraImageExchangeTest::animationGif()
{
    const ToolRun result = run(words("gif work 10 -o walk.gif"));
    QCOMPARE(result.code, 0);
    QByteArray out;
    QString error;
    const QString script = QStringLiteral(
        "import sys\nfrom PIL import Image\nim = Image.open(sys.argv[1])\n"
        "for i in range(im.n_frames):\n"
        "    im.seek(i)\n"
        "    print(im.info.get('transparency', -1), im.convert('RGBA').getextrema()[3][0])\n");
    QVERIFY2(PilImages::run(script, {path(QStringLiteral("walk.gif"))}, &out, &error), qPrintable(error));
    const QList<QByteArray> frames = out.trimmed().split('\n');
    QCOMPARE(frames.size(), 6);
    QCOMPARE(frames.first().split(' ').first(), QByteArray("0")); // the transparent index
    for (const QByteArray &frame : frames)
        QCOMPARE(frame.trimmed().split(' ').last(), QByteArray("0")); // clear pixels in every frame

    // The frames draw with the work's one palette: the file holds it once, and our reader
    // and the imaging library see the same pixels in every frame, clear ones included.
    GIFImage gif;
    QFile file(path(QStringLiteral("walk.gif")));
    QVERIFY(gif.load(&file, CodecRules::Complete));
    QVERIFY(!gif.globalColorMap().isEmpty());
    const QString pixels = QStringLiteral(
        "import sys\nfrom PIL import Image\nim = Image.open(sys.argv[1])\n"
        "for i in range(im.n_frames):\n"
        "    im.seek(i)\n"
        "    print(im.convert('RGBA').tobytes().hex())\n");
    QVERIFY2(PilImages::run(pixels, {path(QStringLiteral("walk.gif"))}, &out, &error), qPrintable(error));
    const QList<QByteArray> seen = out.trimmed().split('\n');
    QCOMPARE(seen.size(), gif.images().size());
    int clear = 0;
    for (int i = 0; i < seen.size(); ++i) {
        const GIFImage::SubImage &sub = gif.images().at(i);
        QVERIFY(sub.colorMap.isEmpty());
        // Each frame covers the screen: what the library composes is the frame itself.
        QCOMPARE(sub.image.size(), QSize(gif.width(), gif.height()));
        const QByteArray rgba = QByteArray::fromHex(seen.at(i));
        QCOMPARE(rgba.size(), sub.image.width() * sub.image.height() * 4);
        for (int y = 0; y < sub.image.height(); ++y) {
            for (int x = 0; x < sub.image.width(); ++x) {
                const int index = sub.image.pixelIndex(x, y);
                const char *p = rgba.constData() + (y * sub.image.width() + x) * 4;
                if (index == sub.transparentIndex) {
                    QCOMPARE(int(uchar(p[3])), 0);
                    ++clear;
                    continue;
                }
                QVERIFY(index < gif.globalColorMap().size());
                const RGB colour = gif.globalColorMap().at(index);
                const char expected[] = {char(colour.red), char(colour.green), char(colour.blue), char(255)};
                QCOMPARE(QByteArray(p, 4), QByteArray(expected, 4));
            }
        }
    }
    QVERIFY(clear > 0);
}

// A JASC text palette with LF line ends through every format the tool writes and back:
// every colour in its place.
void OvraImageExchangeTest::palettesBetweenFormats()
{
    QByteArray jasc("JASC-PAL\n0100\n256\n");
    for (int i = 0; i < 256; ++i) {
        const RGBA c = entryColour(i);
        jasc += QByteArray::number(c.red) + ' ' + QByteArray::number(c.green) + ' ' + QByteArray::number(c.blue) + '\n';
    }
    QVERIFY(writeFile(path(QStringLiteral("start.pal")), jasc));
    const QStringList chain{QStringLiteral("start.pal"), QStringLiteral("a.act"), QStringLiteral("b.ase"),
                            QStringLiteral("c.pal"), QStringLiteral("d.gpl"), QStringLiteral("e.act")};
    for (int i = 1; i < chain.size(); ++i) {
        const ToolRun result = run(words("palette convert") << chain.at(i - 1) << chain.at(i));
        QVERIFY2(result.code == 0, qPrintable(result.err));
    }
    for (const QString &name : {QStringLiteral("a.act"), QStringLiteral("c.pal"), QStringLiteral("e.act")}) {
        const QVector<RGB> colours = plainColours(readFile(path(name)), name.endsWith(QLatin1String(".pal")));
        QCOMPARE(colours.size(), 256);
        for (int i = 0; i < 256; ++i)
            QCOMPARE(colours.at(i), entryColour(i).toRGB());
    }
    RGBA table[256];
    PaletteObject palette(&table);
    QFile ase(path(QStringLiteral("b.ase")));
    QVERIFY(ase.open(QIODevice::ReadOnly));
    QVERIFY(palette.fromFile(&ase, "ASE", CodecRules::Complete));
    for (int i = 0; i < 256; ++i)
        QCOMPARE(table[i].toRGB(), entryColour(i).toRGB());
}

void OvraImageExchangeTest::wording()
{
    QVERIFY(pilWrite(QStringLiteral("one.png"), indexed));
    const QString sprites = path(QStringLiteral("work/knight/knight.osp"));
    QCOMPARE(run(words("sprites import work one.png --group 700")).out,
             QStringLiteral("Added 1 sprite to %1 (700, 0).\n").arg(sprites));
    QCOMPARE(run(words("sprites import work one.png one.png --group 700")).out,
             QStringLiteral("Added 2 sprites to %1 (700, 1 to 700, 2).\n").arg(sprites));
    QCOMPARE(run(words("sprites export work --only 700,0 -o single")).out, QStringLiteral("Wrote 1 picture to single.\n"));
    QCOMPARE(run(words("sprites export work --only 700 -o group")).out, QStringLiteral("Wrote 3 pictures to group.\n"));
    const ToolRun taken = run(words("sprites import work one.png --group 700 --start 2"));
    QCOMPARE(taken.code, 2);
    QVERIFY2(taken.err.contains(QLatin1String("has sprite 700, 2 already; give --replace to replace it,")),
             qPrintable(taken.err));
}

QTEST_GUILESS_MAIN(OvraImageExchangeTest)
#include "tst_ovraimageexchange.moc"
