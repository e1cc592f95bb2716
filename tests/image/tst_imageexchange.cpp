// Pictures, GIFs and palettes by the complete rules, held against another program's
// codec (Python's imaging library) and against the files' published layouts.
#include "image/gifimage.h"
#include "image/imagecodecs.h"
#include "image/paletteobject.h"
#include "imagetestbytes.h"
#include "pilimages.h"

#include <QBuffer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <cstring>

using namespace Ovra;

namespace {

// A colour for every entry that tells it from all others, rgb only.
RGBA entryColour(int i)
{
    return RGBA(quint8(i), quint8(255 - i), quint8((i * 7 + 3) % 256), 255);
}

QImage indexedPicture(int colours, int clearEntry)
{
    QImage picture(9, 6, QImage::Format_Indexed8);
    QVector<QRgb> table;
    for (int i = 0; i < colours; ++i)
        table << (i == clearEntry ? entryColour(i).toQRgb() & 0x00FFFFFF : entryColour(i).toQRgb());
    picture.setColorTable(table);
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            picture.setPixel(x, y, uint((x * 5 + y * 3) % colours));
    }
    return picture;
}

// Two colours, the second clear, one bit a pixel.
QImage monochromePicture()
{
    QImage picture(10, 3, QImage::Format_Mono);
    picture.setColorTable({entryColour(40).toQRgb(), entryColour(90).toQRgb() & 0x00FFFFFF});
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            picture.setPixel(x, y, uint((x + y * y) % 3 == 0));
    }
    return picture;
}

QImage trueColourPicture(bool clearPixels)
{
    QImage picture(11, 7, QImage::Format_ARGB32);
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const bool clear = clearPixels && (x + y) % 4 == 0;
            picture.setPixel(x, y, clear ? qRgba(0, 0, 0, 0) : qRgb(x * 20, y * 30, (x * y) % 256));
        }
    }
    return clearPixels ? picture : picture.convertToFormat(QImage::Format_RGB32);
}

bool saveFile(const QString &fileName, const char *format, const QImage &picture)
{
    QFile file(fileName);
    return file.open(QIODevice::WriteOnly) && saveImage(&file, format, picture, CodecRules::Complete);
}

bool loadFile(const QString &fileName, const char *format, QImage &picture, CodecRules rules = CodecRules::Complete)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) && loadImage(&file, format, picture, rules);
}

// A GIF of 4 colours and 4 x 2 pixels whose header gives colour resolution 0, with the
// LZW stream written by hand: 3-bit codes, a clear code before every two pixels so
// that the code size never grows.
QByteArray resolutionZeroGif(const QByteArray &pixels)
{
    QByteArray gif("GIF89a");
    gif += ImageTestBytes::bytes({4, 0, 2, 0, 0x81, 0, 0}); // global table of 4, resolution bits 0
    for (int i = 0; i < 4; ++i)
        gif += ImageTestBytes::bytes({entryColour(i).red, entryColour(i).green, entryColour(i).blue});
    gif += ImageTestBytes::bytes({0x2C, 0, 0, 0, 0, 4, 0, 2, 0, 0, 2}); // descriptor, code size 2
    QVector<int> codes;
    for (int i = 0; i < pixels.size(); ++i) {
        if (i % 2 == 0)
            codes << 4;
        codes << pixels.at(i);
    }
    codes << 5;
    QByteArray data;
    quint32 bits = 0;
    int count = 0;
    for (int code : codes) {
        bits |= quint32(code) << count;
        for (count += 3; count >= 8; count -= 8, bits >>= 8)
            data.append(char(bits & 0xFF));
    }
    if (count > 0)
        data.append(char(bits & 0xFF));
    gif += char(data.size()) + data + char(0) + char(0x3B);
    return gif;
}

QByteArray littleWord(quint32 value, int size)
{
    QByteArray bytes;
    for (int i = 0; i < size; ++i)
        bytes.append(char((value >> (8 * i)) & 0xFF));
    return bytes;
}

QByteArray bigWord(quint32 value, int size)
{
    QByteArray bytes = littleWord(value, size);
    std::reverse(bytes.begin(), bytes.end());
    return bytes;
}

QByteArray riffPalette(int count)
{
    QByteArray entries;
    for (int i = 0; i < count; ++i)
        entries += ImageTestBytes::bytes({entryColour(i).red, entryColour(i).green, entryColour(i).blue, 0});
    const QByteArray data = littleWord(0x0300, 2) + littleWord(quint32(count), 2) + entries;
    const QByteArray body = QByteArray("PAL data") + littleWord(quint32(data.size()), 4) + data;
    return "RIFF" + littleWord(quint32(body.size()), 4) + body;
}

QByteArray aseBlock(int type, const QByteArray &body)
{
    return bigWord(quint32(type), 2) + bigWord(quint32(body.size()), 4) + body;
}

QByteArray aseName(const char *name)
{
    QByteArray bytes = bigWord(quint32(strlen(name) + 1), 2);
    for (const char *c = name; *c; ++c)
        bytes += bigWord(quint32(*c), 2);
    return bytes + bigWord(0, 2);
}

QByteArray aseColour(int i)
{
    QByteArray body = aseName("c") + "RGB ";
    for (quint8 channel : {entryColour(i).red, entryColour(i).green, entryColour(i).blue}) {
        const float value = channel / 255.0f;
        quint32 word = 0;
        memcpy(&word, &value, 4);
        body += bigWord(word, 4);
    }
    return aseBlock(1, body + bigWord(2, 2));
}

// Two groups of three colours each, a block of a kind unknown here between them.
QByteArray asePalette()
{
    QByteArray blocks = aseBlock(0xC001, aseName("first"));
    for (int i = 0; i < 3; ++i)
        blocks += aseColour(i);
    blocks += aseBlock(0xC002, QByteArray()) + aseBlock(0x7777, QByteArray(10, 'x'));
    blocks += aseBlock(0xC001, aseName("second"));
    for (int i = 3; i < 6; ++i)
        blocks += aseColour(i);
    blocks += aseBlock(0xC002, QByteArray());
    return "ASEF" + bigWord(1, 2) + bigWord(0, 2) + bigWord(11, 4) + blocks;
}

QByteArray jascPalette(int count, int lines, const char *end)
{
    QByteArray text = "JASC-PAL" + QByteArray(end) + "0100" + end + QByteArray::number(count) + end;
    for (int i = 0; i < lines; ++i) {
        const RGBA c = entryColour(i);
        text += QByteArray::number(c.red) + ' ' + QByteArray::number(c.green) + ' ' + QByteArray::number(c.blue) + end;
    }
    return text;
}

// Our palette files read back by their published layouts: the colours, in file order.
QVector<RGBA> parsedPalette(const QByteArray &file, const QByteArray &format, QString *problem)
{
    QVector<RGBA> colours;
    auto u8 = [&file](int at) { return quint8(file.at(at)); };
    auto le = [&](int at, int size) { quint32 v = 0; for (int i = size - 1; i >= 0; --i) v = (v << 8) | u8(at + i); return v; };
    auto be = [&](int at, int size) { quint32 v = 0; for (int i = 0; i < size; ++i) v = (v << 8) | u8(at + i); return v; };
    if (format == "ACT") {
        if (file.size() != 768)
            *problem = QStringLiteral("%1 bytes").arg(file.size());
        for (int i = 0; i + 2 < file.size(); i += 3)
            colours << RGBA(u8(i), u8(i + 1), u8(i + 2), 255);
    } else if (format == "PAL") {
        const int count = int(le(22, 2));
        if (!file.startsWith("RIFF") || file.mid(8, 8) != "PAL data" || le(4, 4) != quint32(file.size() - 8)
            || le(16, 4) != quint32(4 + 4 * count) || le(20, 2) != 0x0300 || file.size() != 24 + 4 * count)
            *problem = QStringLiteral("RIFF sizes or names");
        for (int i = 0; i < count; ++i)
            colours << RGBA(u8(24 + 4 * i), u8(25 + 4 * i), u8(26 + 4 * i), 255);
    } else if (format == "JASC") {
        const QList<QByteArray> lines = file.split('\n');
        if (!file.endsWith("\r\n") || file.count("\r\n") != file.count('\n') || lines.at(2) != "256\r")
            *problem = QStringLiteral("line ends or count");
        for (int i = 3; i < lines.size() && !lines.at(i).isEmpty(); ++i) {
            const QList<QByteArray> n = lines.at(i).trimmed().split(' ');
            colours << RGBA(quint8(n.value(0).toInt()), quint8(n.value(1).toInt()), quint8(n.value(2).toInt()), 255);
        }
    } else if (format == "ASE") {
        int at = 12;
        for (quint32 b = 0; b < be(8, 4) && at + 6 <= file.size(); ++b) {
            const quint32 type = be(at, 2);
            const int length = int(be(at + 2, 4));
            const int body = at + 6;
            const int model = body + 2 + 2 * int(be(body, 2));
            if (type == 1 && file.mid(model, 4) == "RGB ") {
                quint8 c[3];
                for (int k = 0; k < 3; ++k) {
                    const quint32 word = be(model + 4 + 4 * k, 4);
                    float value = 0;
                    memcpy(&value, &word, 4);
                    c[k] = quint8(qRound(value * 255));
                }
                colours << RGBA(c[0], c[1], c[2], 255);
            }
            at = body + length;
        }
        if (at != file.size() || file.left(8) != QByteArray("ASEF\0\1\0\0", 8))
            *problem = QStringLiteral("ASE blocks don't end with the file");
    }
    return colours;
}

// A frame of 9 x 6 pixels over `table`, of the indices below `used` and `used - 1` in its
// last pixel, so that the last one used is known; `shift` tells frames apart.
QImage animationFrame(const QVector<QRgb> &table, int used, int shift)
{
    QImage picture(9, 6, QImage::Format_Indexed8);
    picture.setColorTable(table);
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            picture.setPixel(x, y, uint((x * 5 + y * 3 + shift) % used));
    }
    picture.setPixel(8, 5, uint(used - 1));
    return picture;
}

// 256 colours told apart from `first` on, entry `clear` clear (-1: none).
QVector<QRgb> animationTable(int first, int clear)
{
    QVector<QRgb> table;
    for (int i = 0; i < 256; ++i) {
        const QRgb colour = entryColour((first + i) % 256).toQRgb();
        table << (i == clear ? colour & 0x00FFFFFF : colour);
    }
    return table;
}

// Every frame of an animation as the imaging library composes it.
bool pilFrames(const QString &fileName, QVector<QImage> *frames, QString *error)
{
    static const QString script = QStringLiteral(
        "import sys\n"
        "from PIL import Image\n"
        "im = Image.open(sys.argv[1])\n"
        "for i in range(im.n_frames):\n"
        "    im.seek(i)\n"
        "    frame = im.convert('RGBA')\n"
        "    sys.stdout.buffer.write(b'%d %d\\n' % frame.size)\n"
        "    sys.stdout.buffer.write(frame.tobytes())\n");
    QByteArray out;
    if (!PilImages::run(script, {fileName}, &out, error))
        return false;
    for (int at = 0; at < out.size();) {
        const int end = out.indexOf('\n', at);
        const QList<QByteArray> size = out.mid(at, end - at).split(' ');
        const int width = size.value(0).toInt();
        const int height = size.value(1).toInt();
        if (end < 0 || size.size() != 2 || out.size() < end + 1 + width * height * 4) {
            *error = QStringLiteral("python: no frame at byte %1").arg(at);
            return false;
        }
        QImage frame(width, height, QImage::Format_ARGB32);
        const auto *p = reinterpret_cast<const uchar *>(out.constData()) + end + 1;
        for (int i = 0; i < width * height; ++i, p += 4)
            frame.setPixel(i % width, i / width, qRgba(p[0], p[1], p[2], p[3]));
        *frames << frame;
        at = end + 1 + width * height * 4;
    }
    return true;
}

// A sub-image as our reader gives it, in colours: its own table, or the global one.
QImage subImageColours(const GIFImage &gif, const GIFImage::SubImage &sub)
{
    const QVector<RGB> &colours = sub.colorMap.isEmpty() ? gif.globalColorMap() : sub.colorMap;
    QImage picture(sub.image.size(), QImage::Format_ARGB32);
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const int index = sub.image.pixelIndex(x, y);
            const RGB colour = colours.value(index);
            picture.setPixel(x, y, qRgba(colour.red, colour.green, colour.blue, index == sub.transparentIndex ? 0 : 255));
        }
    }
    return picture;
}

} // namespace

class ImageExchangeTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void oursReadByPil_data();
    void oursReadByPil();
    void pilsReadByUs_data();
    void pilsReadByUs();
    void headerResolutionZero();
    void animationColourTables_data();
    void animationColourTables();
    void paletteFilesRead_data();
    void paletteFilesRead();
    void paletteFilesWritten_data();
    void paletteFilesWritten();
    void badPaletteFiles_data();
    void badPaletteFiles();

private:
    QString path(const QString &name) const { return m_dir.filePath(name); }
    QTemporaryDir m_dir;
};

void ImageExchangeTest::initTestCase()
{
    QVERIFY(m_dir.isValid());
    QString error;
    QVERIFY2(!PilImages::python(&error).isEmpty(), qPrintable(error));
}

void ImageExchangeTest::oursReadByPil_data()
{
    QTest::addColumn<QImage>("picture");
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<int>("transparency"); // the index the other reader should find, -1 none

    QTest::newRow("gif, clear entry 0") << indexedPicture(5, 0) << "gif" << 0;
    QTest::newRow("gif, clear entry 3") << indexedPicture(6, 3) << "gif" << 3;
    QImage twoClear = indexedPicture(6, 1);
    twoClear.setColor(4, twoClear.color(4) & 0x00FFFFFF);
    QTest::newRow("gif, clear entries 1 and 4") << twoClear << "gif" << 1;
    QTest::newRow("gif, opaque") << indexedPicture(5, -1) << "gif" << -1;
    QTest::newRow("gif, 256 colours") << indexedPicture(256, 0) << "gif" << 0;
    QTest::newRow("gif, monochrome") << monochromePicture() << "gif" << 1;
    QTest::newRow("gif, true colour with clear pixels") << trueColourPicture(true) << "gif" << 0;
    QTest::newRow("gif, opaque true colour") << trueColourPicture(false) << "gif" << 0;
    // A bitmap keeps the alpha that a plain 24-bit one would drop.
    QTest::newRow("bmp, true colour with clear pixels") << trueColourPicture(true) << "bmp" << -1;
}

void ImageExchangeTest::oursReadByPil()
{
    QFETCH(QImage, picture);
    QFETCH(QString, suffix);
    QFETCH(int, transparency);
    const QString fileName = path(QStringLiteral("ours.") + suffix);
    QVERIFY(saveFile(fileName, suffix.toUpper().toLatin1().constData(), picture));
    PilImages::Picture seen;
    QString error;
    QVERIFY2(PilImages::read(fileName, &seen, &error), qPrintable(error));
    QCOMPARE(seen.transparency, transparency);
    QCOMPARE(PilImages::differences(seen.pixels, picture), 0);
}

void ImageExchangeTest::pilsReadByUs_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QString>("statements");
    QTest::addColumn<QString>("saveArguments");

    const QString indexed = QStringLiteral(
        "im = Image.new('P', (13, 5))\n"
        "im.putpalette([(i * 37 + c * 11) % 256 for i in range(%1) for c in range(3)])\n"
        "im.putdata([(x * 3 + y) % %1 for y in range(5) for x in range(13)])");
    const QString grey = QStringLiteral("im = Image.new('L', (13, 5))\nim.putdata([(x * 19 + y * 7) % 256 for y in range(5) for x in range(13)])");
    const QString mono = QStringLiteral("im = Image.new('1', (13, 5))\nim.putdata([255 * ((x * y + x) % 2) for y in range(5) for x in range(13)])");

    QTest::newRow("gif, 16 colours") << "p16.gif" << indexed.arg(16) << "";
    QTest::newRow("gif, 4 colours") << "p4.gif" << indexed.arg(4) << "";
    QTest::newRow("gif, 3 colours, clear 2") << "p3.gif" << indexed.arg(3) << "transparency=2";
    QTest::newRow("gif, 200 colours, interlaced") << "p200.gif" << indexed.arg(200) << "interlace=True";
    QTest::newRow("gif, two colours") << "mono.gif" << mono << "";
    QTest::newRow("gif, grey") << "grey.gif" << grey << "";
    // Monochrome pictures by the library underneath come in indexed, every pixel kept.
    QTest::newRow("png, two colours") << "mono.png" << mono << "";
}

void ImageExchangeTest::pilsReadByUs()
{
    QFETCH(QString, fileName);
    QFETCH(QString, statements);
    QFETCH(QString, saveArguments);
    QString error;
    QVERIFY2(PilImages::write(path(fileName), statements, saveArguments, &error), qPrintable(error));
    PilImages::Picture expected;
    QVERIFY2(PilImages::read(path(fileName), &expected, &error), qPrintable(error));

    QImage picture;
    QVERIFY(loadFile(path(fileName), QFileInfo(fileName).suffix().toUpper().toLatin1().constData(), picture));
    QCOMPARE(picture.format(), QImage::Format_Indexed8);
    QCOMPARE(PilImages::differences(picture, expected.pixels), 0);
}

void ImageExchangeTest::headerResolutionZero()
{
    const QByteArray pixels = ImageTestBytes::bytes({0, 1, 2, 3, 3, 2, 1, 0});
    QBuffer buffer;
    buffer.setData(resolutionZeroGif(pixels));
    QVERIFY(buffer.open(QIODevice::ReadOnly));
    QImage picture;
    QVERIFY(loadImage(&buffer, "GIF", picture, CodecRules::Complete));
    QCOMPARE(picture.format(), QImage::Format_Indexed8);
    QCOMPARE(picture.size(), QSize(4, 2));
    for (int i = 0; i < pixels.size(); ++i) {
        QCOMPARE(picture.pixelIndex(i % 4, i / 4), int(pixels.at(i)));
        QCOMPARE(picture.pixel(i % 4, i / 4), entryColour(pixels.at(i)).toQRgb());
    }
    // The designed reader keeps taking such a header for a two-colour picture.
    buffer.seek(0);
    QImage designed;
    loadImage(&buffer, "GIF", designed, CodecRules::Designed);
    QCOMPARE(designed.format(), QImage::Format_Mono);
}

void ImageExchangeTest::animationColourTables_data()
{
    QTest::addColumn<QVector<QImage>>("pictures");
    QTest::addColumn<int>("globalEntries"); // as the file holds them; -1: some, fewer than 256
    QTest::addColumn<QVector<int>>("localEntries");

    const QVector<QRgb> a = animationTable(0, 0);
    const QVector<QRgb> b = animationTable(100, 0);
    // Ten entries used: the table ends there, and the file holds sixteen.
    QTest::newRow("one palette") << QVector<QImage>{animationFrame(a, 10, 0), animationFrame(a, 10, 1),
                                                    animationFrame(a, 10, 2)}
                                 << 16 << QVector<int>{0, 0, 0};
    QTest::newRow("a frame of its own colours")
        << QVector<QImage>{animationFrame(a, 10, 0), animationFrame(b, 20, 1), animationFrame(a, 10, 2)} << 16
        << QVector<int>{0, 32, 0};
    QTest::newRow("each frame its own colours") << QVector<QImage>{animationFrame(a, 10, 0), animationFrame(b, 20, 1)}
                                                << 0 << QVector<int>{16, 32};
    // The clear entry stays in the table although no pixel shows it.
    const QVector<QRgb> clearAt40 = animationTable(0, 40);
    QTest::newRow("clear entry past the pixels")
        << QVector<QImage>{animationFrame(clearAt40, 10, 0), animationFrame(clearAt40, 10, 3)} << 64
        << QVector<int>{0, 0};
    QTest::newRow("every entry used") << QVector<QImage>{animationFrame(a, 256, 0), animationFrame(a, 256, 7)} << 256
                                      << QVector<int>{0, 0};
    // A single picture keeps its whole table, where it is: a palette taken out and back.
    QTest::newRow("single picture") << QVector<QImage>{animationFrame(a, 10, 0)} << 0 << QVector<int>{256};
    const QImage trueColour = trueColourPicture(true);
    QTest::newRow("true colour") << QVector<QImage>{trueColour, trueColour.mirrored(true, false)} << -1
                                 << QVector<int>{0, 0};
}

// Animations by the complete rules hold each palette once, as short as their pixels allow,
// and show the same pixels as the designed writer's local tables: by our reader and by the
// imaging library, transparency included.
void ImageExchangeTest::animationColourTables()
{
    QFETCH(QVector<QImage>, pictures);
    QFETCH(int, globalEntries);
    QFETCH(QVector<int>, localEntries);
    QVector<AnimImageFrame> frames;
    for (const QImage &picture : pictures)
        frames << AnimImageFrame{picture, 4, 3, 6};
    QByteArray designed;
    QBuffer designedBuffer(&designed);
    QVERIFY(saveGIF(&designedBuffer, frames, 1, 1, false, true));
    const QString fileName = path(QStringLiteral("animation.gif"));
    QFile file(fileName);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(saveGIF(&file, frames, 1, 1, false, true, CodecRules::Complete));
    file.close();
    if (pictures.size() > 1)
        QVERIFY2(file.size() < designed.size(), qPrintable(QStringLiteral("%1 bytes").arg(file.size())));

    GIFImage gif;
    QVERIFY(gif.load(&file, CodecRules::Complete));
    QCOMPARE(gif.images().size(), pictures.size());
    if (globalEntries >= 0)
        QCOMPARE(gif.globalColorMap().size(), globalEntries);
    else
        QVERIFY(!gif.globalColorMap().isEmpty() && gif.globalColorMap().size() < 256);
    QVector<QImage> pil;
    QString error;
    QVERIFY2(pilFrames(fileName, &pil, &error), qPrintable(error));
    QCOMPARE(pil.size(), pictures.size());
    for (int i = 0; i < pictures.size(); ++i) {
        const GIFImage::SubImage &sub = gif.images().at(i);
        QCOMPARE(sub.colorMap.size(), localEntries.at(i));
        QCOMPARE(PilImages::differences(subImageColours(gif, sub), pictures.at(i)), 0);
        QCOMPARE(PilImages::differences(pil.at(i), pictures.at(i)), 0);
    }
}

void ImageExchangeTest::paletteFilesRead_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("format");
    QTest::addColumn<int>("count");       // entries 0..count-1 are entryColour(i)
    QTest::addColumn<int>("clearEntry");  // besides entry 0, -1 for none

    QByteArray act;
    for (int i = 0; i < 256; ++i)
        act += ImageTestBytes::bytes({entryColour(i).red, entryColour(i).green, entryColour(i).blue});
    QTest::newRow("riff, 256 colours") << riffPalette(256) << "PAL" << 256 << -1;
    QTest::newRow("riff, 16 colours") << riffPalette(16) << "PAL" << 16 << -1;
    QTest::newRow("ase, two groups and an unknown block") << asePalette() << "ASE" << 6 << -1;
    QTest::newRow("jasc, LF") << jascPalette(256, 256, "\n") << "PAL" << 256 << -1;
    QTest::newRow("jasc, CRLF, count below the lines") << jascPalette(3, 5, "\r\n") << "PAL" << 3 << -1;
    QTest::newRow("act") << act << "ACT" << 256 << -1;
    QTest::newRow("act with a transparent index") << act + bigWord(256, 2) + bigWord(9, 2) << "ACT" << 256 << 9;
}

void ImageExchangeTest::paletteFilesRead()
{
    QFETCH(QByteArray, file);
    QFETCH(QString, format);
    QFETCH(int, count);
    QFETCH(int, clearEntry);
    RGBA table[256];
    for (RGBA &entry : table)
        entry = RGBA(1, 2, 3, 4);
    PaletteObject palette(&table);
    QBuffer buffer(&file);
    QVERIFY(buffer.open(QIODevice::ReadOnly));
    QVERIFY(palette.fromFile(&buffer, format.toLatin1().constData(), CodecRules::Complete));
    for (int i = 0; i < count; ++i) {
        const RGBA expected = entryColour(i);
        QCOMPARE(table[i].toRGB(), expected.toRGB());
        QCOMPARE(int(table[i].alpha), i == 0 || i == clearEntry ? 0 : 255);
    }
    for (int i = count; i < 256; ++i)
        QVERIFY2(table[i].toRGB() != entryColour(i).toRGB() || i == 0, qPrintable(QString::number(i)));
}

void ImageExchangeTest::paletteFilesWritten_data()
{
    QTest::addColumn<QByteArray>("format");
    QTest::newRow("act") << QByteArray("ACT");
    QTest::newRow("riff") << QByteArray("PAL");
    QTest::newRow("jasc") << QByteArray("JASC");
    QTest::newRow("ase") << QByteArray("ASE");
}

void ImageExchangeTest::paletteFilesWritten()
{
    QFETCH(QByteArray, format);
    RGBA table[256];
    for (int i = 0; i < 256; ++i)
        table[i] = entryColour(i);
    PaletteObject palette(&table);
    QBuffer buffer;
    QVERIFY(buffer.open(QIODevice::WriteOnly));
    QVERIFY(palette.toFile(&buffer, format.constData(), CodecRules::Complete));
    QString problem;
    const QVector<RGBA> colours = parsedPalette(buffer.data(), format, &problem);
    QVERIFY2(problem.isEmpty(), qPrintable(problem));
    QCOMPARE(colours.size(), 256);
    for (int i = 0; i < 256; ++i)
        QCOMPARE(colours.at(i).toRGB(), table[i].toRGB());

    // And back through our own reader, whole and in order.
    RGBA back[256];
    PaletteObject reader(&back);
    buffer.close();
    QVERIFY(buffer.open(QIODevice::ReadOnly));
    QVERIFY(reader.fromFile(&buffer, format == "JASC" ? "PAL" : format.constData(), CodecRules::Complete));
    for (int i = 0; i < 256; ++i)
        QCOMPARE(back[i].toRGB(), table[i].toRGB());
}

void ImageExchangeTest::badPaletteFiles_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("format");
    QTest::newRow("riff cut inside its entries") << riffPalette(256).left(500) << "PAL";
    QTest::newRow("riff without a data chunk") << riffPalette(4).left(16) << "PAL";
    QTest::newRow("ase block past the end") << asePalette().left(60) << "ASE";
    QTest::newRow("ase of another version") << asePalette().replace(4, 2, bigWord(2, 2)) << "ASE";
    QTest::newRow("jasc count not a number") << QByteArray("JASC-PAL\n0100\nmany\n1 2 3\n") << "PAL";
    QTest::newRow("jasc without a count") << QByteArray("JASC-PAL\r\n0100\r\n") << "PAL";
    QTest::newRow("act cut short") << QByteArray(700, '\x10') << "ACT";
}

void ImageExchangeTest::badPaletteFiles()
{
    QFETCH(QByteArray, file);
    QFETCH(QString, format);
    RGBA table[256];
    for (int i = 0; i < 256; ++i)
        table[i] = entryColour(i);
    PaletteObject palette(&table);
    QSignalSpy changing(&palette, &PaletteObject::changing);
    QBuffer buffer(&file);
    QVERIFY(buffer.open(QIODevice::ReadOnly));
    QVERIFY(!palette.fromFile(&buffer, format.toLatin1().constData(), CodecRules::Complete));
    QCOMPARE(changing.count(), 0);
    for (int i = 0; i < 256; ++i)
        QCOMPARE(table[i], entryColour(i));
}

QTEST_GUILESS_MAIN(ImageExchangeTest)
#include "tst_imageexchange.moc"
