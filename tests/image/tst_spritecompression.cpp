#include "image/spritecompression.h"
#include "image/spritecompression_p.h"
#include "imagetestbytes.h"

#include <QBuffer>
#include <QImage>
#include <QRandomGenerator>
#include <QtTest>

#include "decodepaths.h"

using namespace Ovra;
using ImageTestBytes::bytes;

namespace {

using Pattern = std::function<uchar(int x, int y)>;
using Loader = bool (*)(QImage &, QIODevice *);

enum Encoder { Lz5Runs, Lz5Copies, Lz5Exhaustive, Rle8 };
const Loader loaders[] = {loadLZ5, loadRLE5, loadRLE8};

QImage indexed(int width, int height, const Pattern &pixel)
{
    QImage image(width, height, QImage::Format_Indexed8);
    QVector<QRgb> colours;
    for (int i = 0; i < 256; ++i)
        colours << qRgb(i, 255 - i, i / 2);
    image.setColorTable(colours);
    for (int y = 0; y < height; ++y) {
        uchar *row = image.scanLine(y);
        for (int x = 0; x < width; ++x)
            row[x] = pixel(x, y);
        // Padding bytes hold junk, as they may in any image: it must not matter.
        for (int x = width; x < image.bytesPerLine(); ++x)
            row[x] = 0xEE;
    }
    return image;
}

QImage row(const QByteArray &pixels)
{
    return indexed(pixels.size(), 1, [&](int x, int) { return uchar(pixels.at(x)); });
}

QByteArray encoded(const QImage &image, Encoder encoder)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    const bool ok = encoder == Rle8            ? saveRLE8(image, &buffer)
                    : encoder == Lz5Exhaustive ? saveLZ5Exhaustive(image, &buffer)
                                               : saveLZ5(image, &buffer, encoder == Lz5Copies);
    return ok ? bytes : QByteArray("<failed>");
}

bool samePixels(const QImage &a, const QImage &b)
{
    if (a.size() != b.size())
        return false;
    const int rowBytes = a.width() * a.depth() / 8;
    for (int y = 0; y < a.height(); ++y) {
        if (memcmp(a.constScanLine(y), b.constScanLine(y), size_t(rowBytes)) != 0)
            return false;
    }
    return true;
}

// Decodes `stream` into a fresh image of the size given, all of whose bytes start as `fill`.
QImage decoded(Loader load, const QByteArray &stream, int width, int height,
               QImage::Format format = QImage::Format_Indexed8, bool *result = nullptr, uchar fill = 0xAA)
{
    QImage image(width, height, format);
    if (format == QImage::Format_Indexed8)
        image.setColorCount(256);
    memset(image.bits(), fill, size_t(image.sizeInBytes()));
    QByteArray data = stream;
    QBuffer buffer(&data);
    const bool ok = load(image, &buffer);
    if (result)
        *result = ok;
    return image;
}

QString pathsDisagree(const QByteArray &stream, int width, int height, QImage::Format format = QImage::Format_Indexed8)
{
    return pathsDisagree(loadRLE8Using, stream, width, height, format);
}

// Pixels an RLE8 stream stands for, to size pictures around its end.
int rle8Length(const QByteArray &stream)
{
    int length = 0;
    for (int i = 0; i < stream.size(); ++i) {
        const uchar byte = uchar(stream.at(i));
        if ((byte & 0xC0) == 0x40) {
            length += byte & 0x3F;
            ++i;
        } else {
            ++length;
        }
    }
    return length;
}

void addPatterns()
{
    QTest::addColumn<QImage>("image");
    QRandomGenerator random(7);
    auto noise = [&random](int, int) { return uchar(random.bounded(32)); };
    QTest::addRow("noise") << indexed(37, 29, noise);
    QTest::addRow("flat") << indexed(40, 30, [](int, int) { return uchar(5); });
    QTest::addRow("gradient") << indexed(64, 16, [](int x, int y) { return uchar((x / 3 + y) % 32); });
    QTest::addRow("dithered") << indexed(33, 33, [](int x, int y) { return uchar(((x ^ y) & 1) ? 3 : 17); });
    QTest::addRow("repeating tile") << indexed(50, 50, [](int x, int y) { return uchar((x % 7) * 3 + (y % 5)); });
    QTest::addRow("1x1") << indexed(1, 1, [](int, int) { return uchar(9); });
    QTest::addRow("1xN") << indexed(1, 77, [](int, int y) { return uchar(y % 4); });
    QTest::addRow("Nx1") << indexed(301, 1, [](int x, int) { return uchar(x % 11 == 0 ? 1 : 2); });
    QTest::addRow("wide") << indexed(1500, 3, [&random](int x, int) { return uchar(x < 700 ? 4 : random.bounded(32)); });
    QTest::addRow("padded rows") << indexed(13, 9, [](int x, int y) { return uchar((x * y) % 32); });
    QTest::addRow("long runs and rare changes")
        << indexed(600, 2, [](int x, int) { return uchar(x % 97 == 0 ? 1 : 0); });
    // Groups of short copies whose fourth distance is spread over the group, with long
    // copies between them that don't count.
    QTest::addRow("far short copies") << indexed(200, 1, [](int x, int) { return uchar((x * 7 + x / 5) % 32); });
}

} // namespace

class SpriteCompressionTest : public QObject
{
    Q_OBJECT

private slots:
    void roundTrip_data() { addPatterns(); }
    void roundTrip();
    void fastSearchWritesTheExhaustiveBytes_data() { addPatterns(); }
    void fastSearchWritesTheExhaustiveBytes();
    void rle8TrueColour();
    void streamBytes_data();
    void streamBytes();
    void lz5ShortCopyGroups();
    void rle5Streams();
    void noRle5Encoder();
    void hostileStreams_data();
    void hostileStreams();
    void streamsEndingEarly_data();
    void streamsEndingEarly();
    void randomStreamsStayInTheirBuffers();
    void closedAndUnopenableDevices();
    void bytesBehindTheStreamStay();
    void rle8PathsAgree_data();
    void rle8PathsAgree();
    void rle8PathsAgreeOnRandomStreams();
};

void SpriteCompressionTest::roundTrip()
{
    QFETCH(QImage, image);
    const std::pair<Encoder, Loader> codecs[] = {{Lz5Runs, loadLZ5}, {Lz5Copies, loadLZ5}, {Rle8, loadRLE8}};
    for (const auto &[encoder, loader] : codecs) {
        bool ok = false;
        const QImage back = decoded(loader, encoded(image, encoder), image.width(), image.height(),
                                    QImage::Format_Indexed8, &ok);
        QVERIFY2(ok, qPrintable(QString::number(encoder)));
        QVERIFY2(samePixels(image, back), qPrintable(QString::number(encoder)));
    }
}

void SpriteCompressionTest::fastSearchWritesTheExhaustiveBytes()
{
    QFETCH(QImage, image);
    QCOMPARE(encoded(image, Lz5Copies).toHex(), encoded(image, Lz5Exhaustive).toHex());
    // Also over pictures made of repeated pieces, where far and near matches compete.
    QRandomGenerator random(11);
    for (int round = 0; round < 20; ++round) {
        QVector<uchar> pieces;
        for (int i = 0; i < 40; ++i)
            pieces << uchar(random.bounded(4 + round));
        const QImage tiled = indexed(90 + round * 7, 12, [&](int x, int y) {
            const int at = x + y * 13;
            return uchar(random.bounded(10) == 0 ? random.bounded(32) : pieces.at((at / (1 + round % 5)) % pieces.size()));
        });
        QCOMPARE(encoded(tiled, Lz5Copies).toHex(), encoded(tiled, Lz5Exhaustive).toHex());
    }
    // And over runs of every length that matters inside flat areas: short ones, ones about
    // the longest copy, and ones that reach the end of the picture.
    const int lengths[] = {1, 2, 3, 6, 7, 8, 9, 30, 256, 257, 258, 259, 300};
    for (int round = 0; round < 24; ++round) {
        QByteArray runs;
        while (runs.size() < 2400) {
            const int length = lengths[random.bounded(int(std::size(lengths)))];
            runs.append(QByteArray(length, char(random.bounded(2 + round % 4))));
        }
        const QImage flat = indexed(120, 20, [&](int x, int y) { return uchar(runs.at(y * 120 + x)); });
        QCOMPARE(encoded(flat, Lz5Copies).toHex(), encoded(flat, Lz5Exhaustive).toHex());
    }
}

void SpriteCompressionTest::rle8TrueColour()
{
    QImage image(19, 7, QImage::Format_ARGB32);
    for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 19; ++x)
            image.setPixel(x, y, x < 10 ? qRgba(0x40, 0x41, 0x42, 0xFF) : qRgba(x * 9, y * 30, 7, x * 13));
    bool ok = false;
    QVERIFY(samePixels(image, decoded(loadRLE8, encoded(image, Rle8), 19, 7, QImage::Format_ARGB32, &ok)));
    QVERIFY(ok);
    // RGB32 is written four bytes a pixel and read three: it doesn't come back.
    const QImage rgb = image.convertToFormat(QImage::Format_RGB32);
    QVERIFY(!samePixels(rgb, decoded(loadRLE8, encoded(rgb, Rle8), 19, 7, QImage::Format_RGB32)));
}

void SpriteCompressionTest::streamBytes_data()
{
    QTest::addColumn<int>("encoder");
    QTest::addColumn<QByteArray>("pixels");
    QTest::addColumn<QByteArray>("stream");

    // One colour: long runs of 263 and a last shorter one, never a copy.
    QTest::addRow("lz5 one colour") << int(Lz5Copies) << QByteArray(600, 6)
                                    << bytes({0x00, 0x06, 0xFF, 0x06, 0xFF, 0x06, 74 - 8});
    // A run of exactly 8 that finds no match behind its first 7: a long run of 8.
    QTest::addRow("lz5 run of eight") << int(Lz5Copies) << QByteArray(8, 5) + bytes({1}) << bytes({0x00, 0x05, 0x00, 0x21});
    // A run of 7 followed by a match: a short run, then the copy (a group of two short
    // copies, each with its distance byte and no top bits).
    QTest::addRow("lz5 seven then a match") << int(Lz5Copies) << bytes({1, 2, 1, 2, 5, 5, 5, 5, 5, 5, 5, 1, 2, 1, 2})
                                            << bytes({0x14, 0x21, 0x22, 0x01, 0x01, 0x05 | (7 << 5), 0x03, 0x0A});
    // Without copies the control bytes are written all the same, all zero.
    QTest::addRow("lz5 runs only") << int(Lz5Runs) << bytes({0, 1, 2}) << bytes({0x00, 0x20, 0x21, 0x22});
    QTest::addRow("rle8 run of 100") << int(Rle8) << QByteArray(100, char(0x09)) << bytes({0x7F, 0x09, 0x65, 0x09});
    QTest::addRow("rle8 lone 0x41") << int(Rle8) << bytes({0x41}) << bytes({0x41, 0x41});
    QTest::addRow("rle8 lone 0x3F") << int(Rle8) << bytes({0x3F}) << bytes({0x3F});
    QTest::addRow("rle8 lone 0xC1 and 0x81") << int(Rle8) << bytes({0xC1, 0x81}) << bytes({0xC1, 0x81});
    QTest::addRow("rle8 pair") << int(Rle8) << bytes({0x00, 0x00, 0x07}) << bytes({0x42, 0x00, 0x07});
}

void SpriteCompressionTest::streamBytes()
{
    QFETCH(int, encoder);
    QFETCH(QByteArray, pixels);
    QFETCH(QByteArray, stream);
    const QImage image = row(pixels);
    QCOMPARE(encoded(image, Encoder(encoder)).toHex(' '), stream.toHex(' '));
    QVERIFY(samePixels(image, decoded(encoder == Rle8 ? loadRLE8 : loadLZ5, stream, pixels.size(), 1)));
}

void SpriteCompressionTest::lz5ShortCopyGroups()
{
    // Two runs, then four short copies of 2 from 2 back: the fourth has no distance
    // byte, its distance less one (1) stands in the top bits of its first byte.
    const QByteArray stream = bytes({0x3C, 0x21, 0x22, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x41});
    bool ok = false;
    const QImage image = decoded(loadLZ5, stream, 10, 1, QImage::Format_Indexed8, &ok);
    QVERIFY(ok);
    QCOMPARE(QByteArray(reinterpret_cast<const char *>(image.constScanLine(0)), 10), bytes({1, 2, 1, 2, 1, 2, 1, 2, 1, 2}));
}

void SpriteCompressionTest::rle5Streams()
{
    // 5 of colour 3 with its colour byte, then 2 of 7 and 8 of 1; then one pixel of the
    // free colour 0 without a colour byte.
    const QByteArray stream = bytes({4, 0x82, 0x03, 0x27, 0xE1, 0x00, 0x00});
    const QByteArray expected = QByteArray(5, 3) + QByteArray(2, 7) + QByteArray(8, 1) + QByteArray(1, 0);
    bool ok = false;
    const QImage square = decoded(loadRLE5, stream, 4, 4, QImage::Format_Indexed8, &ok);
    QVERIFY(ok);
    QCOMPARE(QByteArray(reinterpret_cast<const char *>(square.constBits()), 16), expected);
    // Rows with padding: the padding is jumped over and keeps its bytes.
    const QImage padded = decoded(loadRLE5, stream, 5, 3, QImage::Format_Indexed8, &ok);
    QVERIFY(ok);
    QCOMPARE(padded.bytesPerLine(), 8);
    for (int y = 0; y < 3; ++y) {
        QCOMPARE(QByteArray(reinterpret_cast<const char *>(padded.constScanLine(y)), 5), expected.mid(y * 5, 5));
        QCOMPARE(QByteArray(reinterpret_cast<const char *>(padded.constScanLine(y)) + 5, 3), QByteArray(3, char(0xAA)));
    }
    // A stream that ends between groups before the image is full: true, the rest kept.
    const QImage big = decoded(loadRLE5, stream, 10, 10, QImage::Format_Indexed8, &ok);
    QVERIFY(ok);
    QCOMPARE(uchar(big.constScanLine(1)[5]), uchar(0));
    QCOMPARE(uchar(big.constScanLine(1)[6]), uchar(0xAA));
}

void SpriteCompressionTest::noRle5Encoder()
{
    for (const QImage &image : {indexed(4, 4, [](int, int) { return uchar(1); }), QImage()}) {
        QByteArray data;
        QBuffer buffer(&data);
        QVERIFY(!saveRLE5(image, &buffer));
        QVERIFY(!buffer.isOpen());
        QVERIFY(data.isEmpty());
    }
}

void SpriteCompressionTest::hostileStreams_data()
{
    QTest::addColumn<int>("codec");
    QTest::addColumn<QByteArray>("stream");
    QTest::addColumn<bool>("result");

    // A copy from before the start of the output.
    QTest::addRow("lz5 distance before the start") << 0 << bytes({0x01, 0x01, 0x04}) << false;
    QTest::addRow("lz5 long distance before the start") << 0 << bytes({0x02, 0x21, 0xC0, 0xFF, 0x10}) << false;
    // Streams that end inside a packet.
    QTest::addRow("lz5 truncated long run") << 0 << bytes({0x00, 0x00}) << false;
    QTest::addRow("lz5 truncated copy") << 0 << bytes({0x02, 0x21, 0x00, 0x00}) << false;
    QTest::addRow("lz5 control byte alone") << 0 << bytes({0xFF}) << false;
    QTest::addRow("rle5 truncated group") << 1 << bytes({0x03, 0x85}) << false;
    QTest::addRow("rle8 truncated run") << 2 << bytes({0x7F}) << false;
    // Endless zero-length runs end with the device.
    QTest::addRow("rle8 zero runs") << 2 << QByteArray(20000, char(0x40)) << true;
    // An empty stream is a stream that ends between packets.
    QTest::addRow("lz5 empty") << 0 << QByteArray() << true;
}

void SpriteCompressionTest::hostileStreams()
{
    QFETCH(int, codec);
    QFETCH(QByteArray, stream);
    QFETCH(bool, result);
    bool ok = !result;
    const QImage image = decoded(loaders[codec], stream, 6, 5, QImage::Format_Indexed8, &ok);
    QCOMPARE(ok, result);
    QCOMPARE(image.size(), QSize(6, 5));
    QCOMPARE(image.format(), QImage::Format_Indexed8);
}

void SpriteCompressionTest::streamsEndingEarly_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addRow("rows without padding") << 8 << 4;
    QTest::addRow("padded rows") << 13 << 4;
    QTest::addRow("large, rows without padding") << 400 << 30;
    QTest::addRow("large, padded rows") << 401 << 30;
}

void SpriteCompressionTest::streamsEndingEarly()
{
    // Half an image's stream: LZ5 leaves the rest transparent, RLE8 leaves it as it was,
    // whichever way the rows lie in memory.
    QFETCH(int, width);
    QFETCH(int, height);
    const QImage image = indexed(width, height, [](int x, int y) { return uchar(1 + (x / 5 + y) % 30); });
    const QImage top = image.copy(0, 0, width, height / 2);
    bool ok = false;
    const QImage fromLz5 = decoded(loadLZ5, encoded(top, Lz5Copies), width, height, QImage::Format_Indexed8, &ok);
    QVERIFY(ok);
    const QImage fromRle8 = decoded(loadRLE8, encoded(top, Rle8), width, height, QImage::Format_Indexed8, &ok);
    QVERIFY(ok);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const bool reached = y < height / 2;
            QCOMPARE(fromLz5.pixelIndex(x, y), reached ? image.pixelIndex(x, y) : 0);
            QCOMPARE(fromRle8.pixelIndex(x, y), reached ? image.pixelIndex(x, y) : 0xAA);
        }
    }
}

void SpriteCompressionTest::randomStreamsStayInTheirBuffers()
{
    // Random bytes into every decoder, for images of odd sizes and formats: whatever the
    // result, nothing is written outside the image (the sanitizer build watches).
    QRandomGenerator random(2026);
    const QImage::Format formats[] = {QImage::Format_Indexed8, QImage::Format_RGB32, QImage::Format_ARGB32,
                                      QImage::Format_Grayscale8};
    for (int round = 0; round < 3000; ++round) {
        QByteArray stream(random.bounded(300), '\0');
        for (char &byte : stream)
            byte = char(random.bounded(256));
        const int width = 1 + random.bounded(40);
        const int height = 1 + random.bounded(20);
        const QImage::Format format = formats[random.bounded(4)];
        const QImage image = decoded(loaders[round % 3], stream, width, height, format);
        QCOMPARE(image.size(), QSize(width, height));
        QCOMPARE(image.format(), format);
    }
}

void SpriteCompressionTest::closedAndUnopenableDevices()
{
    const QImage image = indexed(8, 8, [](int x, int) { return uchar(x); });
    // A closed buffer is opened by the codec.
    QByteArray data;
    QBuffer closed(&data);
    QVERIFY(saveLZ5(image, &closed, true));
    QVERIFY(closed.isOpen());
    closed.close();
    QImage back(8, 8, QImage::Format_Indexed8);
    QVERIFY(loadLZ5(back, &closed));
    QVERIFY(samePixels(image, back));
    // A file that can't be opened: false, and nothing touched.
    QFile missing(QStringLiteral("/nonexistent/dir/sprite.lz5"));
    QImage untouched(8, 8, QImage::Format_Indexed8);
    untouched.fill(3);
    for (Loader load : loaders)
        QVERIFY(!load(untouched, &missing));
    QVERIFY(!saveLZ5(image, &missing, false));
    QVERIFY(!saveRLE8(image, &missing));
    QCOMPARE(untouched.pixelIndex(5, 5), 3);
    // An empty image writes nothing, not even a control byte.
    QCOMPARE(encoded(QImage(), Lz5Copies), QByteArray());
}

void SpriteCompressionTest::bytesBehindTheStreamStay()
{
    // The container's next record follows the pixels: the loaders leave it unread.
    const QImage image = indexed(9, 4, [](int x, int y) { return uchar((x + y) % 5); });
    const QByteArray streams[] = {encoded(image, Lz5Copies),
                                  bytes({3, 0x80, 2, 3, 0x81, 4, 0x25, 3, 0x80, 1, 0, 0x80, 2, 7, 0x81, 1, 0x30, 10, 0x00}),
                                  encoded(image, Rle8)};
    for (int codec = 0; codec < 3; ++codec) {
        QByteArray data = streams[codec] + QByteArray("NEXT");
        QBuffer buffer(&data);
        buffer.open(QIODevice::ReadOnly);
        QImage target(9, 4, QImage::Format_Indexed8);
        QVERIFY(loaders[codec](target, &buffer));
        QCOMPARE(buffer.readAll(), QByteArray("NEXT"));
    }
}

void SpriteCompressionTest::rle8PathsAgree_data()
{
    QTest::addColumn<QByteArray>("stream");
    // Stretches of 1 to 70 marked bytes between literals: every parity of stretch and
    // every place of it against the 64-byte blocks.
    QByteArray chains;
    for (int length = 1; length <= 70; ++length) {
        chains.append(char(0x11));
        for (int k = 0; k < length; ++k)
            chains.append(char(0x40 + (k * 7 + length) % 64));
    }
    QTest::addRow("chains of marked bytes") << chains;
    // A run after 0 to 80 literals: its value byte falls on every byte of a block, the
    // first of the next block included.
    QByteArray straddling;
    for (int literals = 0; literals <= 80; ++literals) {
        straddling.append(QByteArray(literals, char(0x85)));
        straddling.append(char(0x40 | (literals % 64))).append(char(0x41 + literals % 3));
    }
    QTest::addRow("runs straddling blocks") << straddling;
    // Runs of count 0, whose value byte may itself be marked, between single literals:
    // blocks that write less than 64 bytes.
    QByteArray zeros;
    for (int i = 0; i < 400; ++i)
        zeros.append(char(0x40)).append(char(i % 3 == 0 ? 0x7F : 0x40 + i % 64)).append(char(i % 5 == 0 ? 0x3F : 0xC0));
    QTest::addRow("runs of count 0") << zeros;
    QTest::addRow("literals only") << QByteArray(700, char(0x9C));
    // Blocks of the longest runs: thousands of bytes out of 64 in.
    QByteArray longRuns;
    for (int i = 0; i < 120; ++i)
        longRuns.append(char(0x7F)).append(char(i % 2 ? 0x7F : 0x40)).append(char(0x7E)).append(char(0x05));
    QTest::addRow("longest runs") << longRuns;
    // One long stretch of marked bytes across many blocks.
    QByteArray stretch(1000, '\0');
    for (int i = 0; i < stretch.size(); ++i)
        stretch[i] = char(0x40 + (i * 13) % 64);
    QTest::addRow("one stretch of marked bytes") << stretch;
    // Runs of about eight bytes, the longest that share a store with their neighbours, after
    // 0 to 62 literals: long and short ones in every eighth of a block, and blocks of more
    // than 48 items with a long run among them.
    QByteArray aboutEight;
    const int counts[] = {7, 8, 9, 1, 16, 17, 63, 2, 0};
    for (int i = 0; i < 500; ++i) {
        aboutEight.append(QByteArray((i * 7) % 63, char(0x80 + i % 64)));
        aboutEight.append(char(0x40 | counts[i % 9])).append(char(i));
    }
    QTest::addRow("runs about eight long") << aboutEight;
    // A textured picture's stream: bands a few pixels wide with noise, 30 to 50 items a block.
    QRandomGenerator random(9);
    const QImage textured = indexed(300, 20, [&](int x, int y) {
        return uchar(1 + (x / 5 + y) % 20 + (random.bounded(6) == 0 ? random.bounded(5) : 0));
    });
    QTest::addRow("textured picture") << encoded(textured, Rle8);
}

void SpriteCompressionTest::rle8PathsAgree()
{
    // Each stream cut at every length near its end, so that it ends anywhere, inside a run
    // too; into pictures whose end falls anywhere near the stream's end, with rows without
    // padding (indexed and four-byte pixels) and with padding.
    QFETCH(QByteArray, stream);
    for (int cut = std::max(0, int(stream.size()) - 140); cut <= stream.size(); ++cut) {
        const QByteArray part = stream.left(cut);
        const int length = rle8Length(part);
        for (int n = std::max(4, length - 200) & ~3; n <= length + 200; n += 4 * (1 + cut % 3)) {
            const QString flat = pathsDisagree(part, n, 1);
            QVERIFY2(flat.isEmpty(), qPrintable(flat));
            const QString wide = pathsDisagree(part, n / 4, 1, QImage::Format_ARGB32);
            QVERIFY2(wide.isEmpty(), qPrintable(wide));
        }
    }
    for (const auto &[width, format] : {std::pair{13, QImage::Format_Indexed8}, {7, QImage::Format_RGB32}}) {
        const QString padded = pathsDisagree(stream, width, int(stream.size()) / width, format);
        QVERIFY2(padded.isEmpty(), qPrintable(padded));
    }
}

void SpriteCompressionTest::rle8PathsAgreeOnRandomStreams()
{
    // Random streams with few to many marked bytes and short to long counts, the bytes
    // behind them left for the container, into pictures of every size about their length.
    QRandomGenerator random(64);
    for (int round = 0; round < 600; ++round) {
        const int marked = 1 + round % 9; // out of 10
        const int countMask = round % 4 == 0 ? 0x3F : 0x07;
        QByteArray stream(64 + random.bounded(900), '\0');
        for (char &byte : stream) {
            const bool mark = random.bounded(10) < marked;
            const int value = random.bounded(256);
            byte = char(mark ? 0x40 | (value & countMask) : ((value & 0xC0) == 0x40 ? value ^ 0x40 : value));
        }
        const int length = rle8Length(stream);
        const int n = 4 * std::max(1, (length + int(random.bounded(257)) - 128) / 4);
        const QString flat = pathsDisagree(stream, n, 1);
        QVERIFY2(flat.isEmpty(), qPrintable(flat));
        const QString square = pathsDisagree(stream, 16, std::max(1, n / 16), QImage::Format_ARGB32);
        QVERIFY2(square.isEmpty(), qPrintable(square));
    }
    // And the fast path on a whole picture's stream against the picture itself.
    const QImage image = indexed(512, 64, [](int x, int y) { return uchar((x / 3 + y) % 7 == 0 ? 0x41 : (x * y) % 97); });
    bool ok = false;
    QVERIFY(samePixels(image, decoded(loadRLE8, encoded(image, Rle8), 512, 64, QImage::Format_Indexed8, &ok)));
    QVERIFY(ok);
}

QTEST_MAIN(SpriteCompressionTest)
#include "tst_spritecompression.moc"
