#include "image/pcxpng.h"
#include "imagetestbytes.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QRandomGenerator>
#include <QtTest>

using namespace Ovra;
using ImageTestBytes::bytes;
using ImageTestBytes::pcxHeader;

namespace {

// The 256 colours of a palette block: entry i is (i, 255 - i, i).
QByteArray paletteBlock()
{
    QByteArray block(1, char(0x0C));
    for (int i = 0; i < 256; ++i)
        block.append(char(i)).append(char(255 - i)).append(char(i));
    return block;
}

bool load(QByteArray bytes, QImage &image, bool *hasPalette = nullptr)
{
    QBuffer buffer(&bytes);
    return loadPCX(image, &buffer, hasPalette);
}

QByteArray save(const QImage &image)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    return savePCX(image, &buffer) ? bytes : QByteArray("<failed>");
}

QImage noise(int width, int height, QImage::Format format, quint32 seed)
{
    QRandomGenerator random(seed);
    QImage image(width, height, format);
    if (format == QImage::Format_Indexed8) {
        QVector<QRgb> table;
        for (int i = 0; i < 256; ++i)
            table << qRgb(i, (i * 7) & 0xFF, 255 - i);
        image.setColorTable(table);
    }
    for (int y = 0; y < height; ++y) {
        uchar *row = image.scanLine(y);
        for (int x = 0; x < image.bytesPerLine(); ++x)
            row[x] = uchar(random.bounded(8) < 5 ? 0xC5 : random.bounded(256)); // runs and high bytes
    }
    return image;
}

} // namespace

class PcxPngTest : public QObject
{
    Q_OBJECT

private slots:
    void roundTrip_data();
    void roundTrip();
    void writtenBytes();
    void decodedFiles_data();
    void decodedFiles();
    void refusedFiles_data();
    void refusedFiles();
    void fuzzFindings_data();
    void fuzzFindings();
    void oddPlanesStayInTheirRows();
    void png();
};

void PcxPngTest::roundTrip_data()
{
    QTest::addColumn<QImage>("image");
    QTest::addRow("indexed") << noise(37, 11, QImage::Format_Indexed8, 1);
    QTest::addRow("indexed 1x1") << noise(1, 1, QImage::Format_Indexed8, 2);
    QTest::addRow("rgb") << noise(23, 9, QImage::Format_RGB32, 3);
    QTest::addRow("argb") << noise(64, 5, QImage::Format_ARGB32, 4);
    QTest::addRow("wide") << noise(700, 2, QImage::Format_Indexed8, 5);
}

void PcxPngTest::roundTrip()
{
    QFETCH(QImage, image);
    const QByteArray bytes = save(image);
    QImage back;
    bool hasPalette = image.format() != QImage::Format_Indexed8;
    QVERIFY(load(bytes, back, &hasPalette));
    QCOMPARE(hasPalette, image.format() == QImage::Format_Indexed8);
    QCOMPARE(back, image);
}

void PcxPngTest::writtenBytes()
{
    // A lone high byte takes two bytes; a pair makes a run; runs stop at the line end.
    QImage image(3, 2, QImage::Format_Indexed8);
    image.setColorTable({qRgba(1, 2, 3, 0), qRgb(4, 5, 6)});
    const uchar pixels[2][3] = {{0xC8, 7, 7}, {7, 1, 0}};
    for (int y = 0; y < 2; ++y)
        memcpy(image.scanLine(y), pixels[y], 3);
    const QByteArray bytes = save(image);
    QCOMPARE(bytes.size(), 128 + 7 + 769);
    QCOMPARE(bytes.left(4).toHex(), QByteArray("0a050108"));
    QCOMPARE(bytes.mid(8, 4).toHex(), QByteArray("02000100")); // xMax 2, yMax 1
    QCOMPARE(int(bytes.at(65)), 1);
    QCOMPARE(bytes.mid(66, 4).toHex(), QByteArray("03000100")); // bytes per line 3, palette info 1
    QCOMPARE(bytes.mid(128, 7).toHex(' '), QByteArray("c1 c8 c2 07 07 01 00"));
    // The table without alpha, padded to 256 entries of zero.
    QCOMPARE(bytes.mid(128 + 7, 7).toHex(' '), QByteArray("0c 01 02 03 04 05 06"));
    QCOMPARE(bytes.right(3), QByteArray(3, '\0'));
    QImage back;
    QVERIFY(load(bytes, back));
    QCOMPARE(qAlpha(back.color(0)), 255); // transparency doesn't travel in PCX
}

void PcxPngTest::decodedFiles_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<bool>("hasPalette");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QPoint>("at");
    QTest::addColumn<QRgb>("colour");

    // xMin 5 and xMax 14: ten wide, the offset forgotten. Lines of 12 bytes: the two
    // behind the width are read and dropped.
    QByteArray wide = pcxHeader(5, 0, 14, 1, 8, 1, 12);
    for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 12; ++x)
            wide.append(char(x < 10 ? x + y * 10 : 0x33));
    }
    QTest::addRow("offset and wide lines") << wide + paletteBlock() << true << QSize(10, 2) << QPoint(9, 1)
                                           << qRgb(19, 236, 19);
    // 2 x 2 in three planes, all by one run of 12 that crosses every line and plane.
    QTest::addRow("run over lines and planes") << pcxHeader(0, 0, 1, 1, 8, 3, 2) + bytes({0xCC, 0x40}) << false
                                               << QSize(2, 2) << QPoint(1, 1) << qRgb(0x40, 0x40, 0x40);
    // Without a palette block the header's 16 colours stand, the rest black.
    QTest::addRow("sixteen colours") << pcxHeader(0, 0, 1, 0, 8, 1, 2) + bytes({3, 15}) << false << QSize(2, 1)
                                     << QPoint(1, 0) << qRgb(15, 30, 45);
    // Stray bytes between the pixels and the block: the skip lands one byte behind the
    // mark, reads the first palette byte as the mark, and falls back to the header.
    QTest::addRow("stray bytes before the block")
        << pcxHeader(0, 0, 0, 0, 8, 1, 1) + bytes({1}) + "stray" + paletteBlock() << false << QSize(1, 1) << QPoint(0, 0)
        << qRgb(1, 2, 3);
    // A block cut short is no block: the header's colours stand.
    QTest::addRow("block cut short") << pcxHeader(0, 0, 0, 0, 8, 1, 1) + bytes({5}) + paletteBlock().left(400) << false
                                     << QSize(1, 1) << QPoint(0, 0) << qRgb(5, 10, 15);
}

void PcxPngTest::decodedFiles()
{
    QFETCH(QByteArray, file);
    QFETCH(bool, hasPalette);
    QFETCH(QSize, size);
    QFETCH(QPoint, at);
    QFETCH(QRgb, colour);
    QImage image(3, 3, QImage::Format_RGB32);
    bool found = !hasPalette;
    QVERIFY(load(file, image, &found));
    QCOMPARE(found, hasPalette);
    QCOMPARE(image.size(), size);
    QCOMPARE(image.pixel(at), colour);
    if (image.format() == QImage::Format_Indexed8) {
        QCOMPARE(image.colorCount(), 256);
        QCOMPARE(image.color(255), hasPalette ? qRgb(255, 0, 255) : qRgb(0, 0, 0));
    } else {
        QCOMPARE(image.format(), QImage::Format_RGB32);
    }
}

void PcxPngTest::refusedFiles_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<bool>("given"); // a picture is handed in
    QTest::addColumn<bool>("cleared");
    // A header that doesn't read leaves the picture as it was.
    QTest::addRow("wrong manufacturer") << pcxHeader(0, 0, 1, 1, 8, 1, 2, 11) + QByteArray(4, 1) << true << false;
    QTest::addRow("version 3") << pcxHeader(0, 0, 1, 1, 8, 1, 2, 10, 3) + QByteArray(4, 1) << true << false;
    QTest::addRow("16 colours in one plane") << pcxHeader(0, 0, 1, 1, 4, 1, 1) + QByteArray(4, 1) << true << false;
    QTest::addRow("short header") << pcxHeader(0, 0, 1, 1, 8, 1, 2).left(60) << true << false;
    // Pixels that end before the last row leave a null picture.
    QTest::addRow("ends before the last row") << pcxHeader(0, 0, 3, 3, 8, 1, 4) + QByteArray(6, 2) << true << true;
    QTest::addRow("count byte at the very end") << pcxHeader(0, 0, 1, 0, 8, 1, 2) + bytes({0xC2}) << true << true;
    // A header that asks for a picture of 1.6 GB with ten bytes behind it: refused as a
    // file cut short, without the picture being made.
    QTest::addRow("huge") << pcxHeader(0, 0, 39999, 39999, 8, 1, 40000) + QByteArray(10, char(0xFF)) << true << true;
    QTest::addRow("empty width, no picture given") << pcxHeader(5, 0, 3, 0, 8, 1, 0) << false << true;
    // No size of its own, and true colour: the indexed picture given can't take its
    // pixels, which are swapped four bytes at a time (this wrote past every row).
    QTest::addRow("no size, picture of another format")
        << pcxHeader(0xF5F8, 0, 3, 1, 8, 3, 2) + QByteArray(24, 0x11) << true << false;
}

void PcxPngTest::refusedFiles()
{
    QFETCH(QByteArray, file);
    QFETCH(bool, given);
    QFETCH(bool, cleared);
    QImage image;
    if (given) {
        image = QImage(2, 2, QImage::Format_Indexed8);
        image.setColorTable({qRgb(1, 2, 3), qRgb(4, 5, 6)});
        image.fill(1);
    }
    const QImage before = image;
    QVERIFY(!load(file, image));
    QCOMPARE(image, cleared ? QImage() : before);
}

// The files our fuzzer once crashed on (scripts/fuzz runs them first each time): refused,
// with the sanitizers of this test's build watching every read.
void PcxPngTest::fuzzFindings_data()
{
    ImageTestBytes::addFuzzFindings(QStringLiteral(FUZZREGRESSIONDIR "/pcx"));
}

void PcxPngTest::fuzzFindings()
{
    QFETCH(QString, file);
    QFile device(file);
    QVERIFY(device.open(QIODevice::ReadOnly));
    QImage image(4, 4, QImage::Format_Indexed8);
    bool hasPalette = false;
    QVERIFY(!loadPCX(image, &device, &hasPalette));
    // Read into no picture, as the codecs by name read: none is made.
    QImage none;
    QVERIFY(device.seek(0));
    QVERIFY(!loadPCX(none, &device, nullptr));
    QVERIFY(none.isNull());
}

void PcxPngTest::oddPlanesStayInTheirRows()
{
    // Depth 8 from two planes of 4 bits, and depth 5 from five planes of 1 bit: the
    // planes step past the bytes of an indexed pixel and must stay in their rows.
    for (const auto &[bits, planes] : {std::pair<int, int>{4, 2}, std::pair<int, int>{1, 5}}) {
        QByteArray file = pcxHeader(0, 0, 39, 3, bits, planes, 40);
        for (int i = 0; i < 4 * planes; ++i)
            file.append(char(0xE8)).append(char(0x11)); // runs of 40
        QImage image;
        QVERIFY(load(file, image));
        QCOMPARE(image.size(), QSize(40, 4));
        QCOMPARE(image.format(), QImage::Format_Indexed8);
    }
}

void PcxPngTest::png()
{
    QImage image(5, 3, QImage::Format_Indexed8);
    image.setColorTable({qRgba(0, 0, 0, 0), qRgba(255, 0, 0, 128), qRgb(0, 255, 0)});
    image.fill(1);
    image.setPixel(4, 2, 2);
    QByteArray bytes;
    QBuffer closed(&bytes);
    QVERIFY(savePNG(image, &closed));
    QImage back;
    QBuffer reading(&bytes);
    QVERIFY(loadPNG(back, &reading));
    QCOMPARE(back.format(), QImage::Format_Indexed8);
    QCOMPARE(back.color(1), qRgba(255, 0, 0, 128)); // the table keeps its alpha
    QCOMPARE(back.pixelIndex(4, 2), 2);
    // Garbage loads as nothing, and the answer is still true: the caller looks.
    QByteArray garbage("not a png at all");
    QBuffer junk(&garbage);
    QImage none;
    QVERIFY(loadPNG(none, &junk));
    QVERIFY(none.isNull());
    // A device that can't be opened: false both ways.
    QFile nowhere(QStringLiteral("/nonexistent/dir/x.png"));
    QVERIFY(!savePNG(image, &nowhere));
    QVERIFY(!loadPNG(none, &nowhere));
}

QTEST_MAIN(PcxPngTest)
#include "tst_pcxpng.moc"
