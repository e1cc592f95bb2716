#include "image/imagedata.h"
#include "image/sprite.h"
#include "imagetestbytes.h"

#include <QBuffer>
#include <QtTest>

using namespace Ovra;
using ImageTestBytes::pcxHeader;
using ImageTestBytes::savedByName;

namespace {

ImageInfo infoOf(QByteArray bytes, const char *format)
{
    QBuffer buffer(&bytes);
    return imageInfoFromFile(&buffer, format);
}

QByteArray gifHeader(const char *version, int width, int height, int flags)
{
    QByteArray header(version);
    header.append(char(width & 0xFF)).append(char(width >> 8)).append(char(height & 0xFF)).append(char(height >> 8));
    header.append(char(flags)).append('\0').append('\0');
    return header;
}

QImage indexedImage(int width, int height, const QVector<QRgb> &table, const QVector<int> &pixels)
{
    QImage image(width, height, QImage::Format_Indexed8);
    image.setColorTable(table);
    // Written straight into the rows: an index may stand past the table.
    for (int i = 0; i < pixels.size(); ++i)
        image.scanLine(i / width)[i % width] = uchar(pixels.at(i));
    return image;
}

// A sprite that only holds a picture, for the canvas operation of the base class.
class Picture : public Sprite
{
public:
    explicit Picture(const QImage &image) : m_image(image) {}
    QVariant property(const QString &) const override { return QVariant(); }
    void setProperty(const QString &, const QVariant &) override {}
    uint index() const override { return 0; }
    Sprites *parent() const override { return nullptr; }
    Sprite *duplicate() override { return nullptr; }
    void crop() override {}
    void splitRGB() override {}
    bool isEmpty() const override { return m_image.isNull(); }
    QPoint axis() const override { return QPoint(); }
    void setAxis(const QPoint &) override {}
    QImage image() const override { return m_image; }
    ImageInfo imageProperties() const override { return ImageInfo(); }
    bool imageIsShared() const override { return false; }
    using Sprite::setImage;
    void setImage(const QImage &, bool, PaletteMode, Palette *, Archive::ShareMode) override {}
    void setImage(const QImage &image, bool) override { m_image = image; }
    Palette *palette() const override { return nullptr; }
    void setPalette(Palette *) override {}
    QVariant identifier() const override { return QVariant(); }
    void setIdentifier(const QVariant &) override {}
    ~Picture() override = default;

private:
    QImage m_image;
};

} // namespace

class ImageDataTest : public QObject
{
    Q_OBJECT

private slots:
    void colourRecords();
    void filters();
    void infoFromHeaders_data();
    void infoFromHeaders();
    void cropRectangles_data();
    void cropRectangles();
    void cropping();
    void adaptingToAPalette();
    void alignedOnACanvas();
};

void ImageDataTest::colourRecords()
{
    // A colour without alpha becomes an opaque entry; taking one in keeps the entry's alpha.
    const RGBA colour(qRgba(10, 20, 30, 40));
    QCOMPARE(RGBA(colour.toRGB()), RGBA(10, 20, 30, 255));
    RGBA target(1, 2, 3, 4);
    target.fromRGB(RGB(7, 8, 9));
    QCOMPARE(target.toQRgb(), qRgba(7, 8, 9, 4));
}

void ImageDataTest::filters()
{
    QCOMPARE(QByteArray(imageFileExtension(AllImageWildcards)), QByteArray(" (*.pcx *.png *.gif *.bmp);;"));
    QCOMPARE(QByteArray(imageFileExtension(PaletteWriteFilters)), QByteArray("Adobe Color Table (*.act)"));
    QCOMPARE(imageFileExtension(ImageExtensionType(6)), nullptr);
}

void ImageDataTest::infoFromHeaders_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("format");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("result");

    QImage indexed(21, 13, QImage::Format_Indexed8);
    indexed.setColorCount(256);
    indexed.fill(1);
    QImage rgb(17, 9, QImage::Format_RGB32);
    rgb.fill(Qt::red);
    QImage argb(5, 300, QImage::Format_ARGB32);
    argb.fill(Qt::transparent);
    QImage grey(4, 4, QImage::Format_Grayscale8);
    grey.fill(3);

    auto add = [](const char *name, const QByteArray &bytes, const char *format, QSize size, QImage::Format result) {
        QTest::newRow(name) << bytes << QByteArray(format) << size << int(result);
    };
    // Nothing read: no size, and the default format.
    const QImage::Format none = QImage::Format_Indexed8;
    add("bmp indexed", savedByName(indexed, "BMP"), "BMP", QSize(21, 13), QImage::Format_Indexed8);
    add("bmp true colour", savedByName(rgb, "BMP"), "BMP", QSize(17, 9), QImage::Format_RGB32);
    QByteArray topDown = savedByName(rgb, "BMP");
    const qint32 negative = -9;
    topDown.replace(22, 4, QByteArray(reinterpret_cast<const char *>(&negative), 4));
    add("bmp top-down", topDown, "BMP", QSize(17, 9), QImage::Format_RGB32);
    add("png palette", savedByName(indexed, "PNG"), "PNG", QSize(21, 13), QImage::Format_Indexed8);
    add("png rgb", savedByName(rgb, "PNG"), "PNG", QSize(17, 9), QImage::Format_RGB32);
    add("png alpha", savedByName(argb, "PNG"), "PNG", QSize(5, 300), QImage::Format_ARGB32);
    add("png grey", savedByName(grey, "PNG"), "PNG", QSize(4, 4), QImage::Format_Indexed8);
    // The name is compared exactly: callers use fileExtension(), which gives capitals.
    add("png lower case", savedByName(rgb, "PNG"), "png", QSize(0, 0), none);
    add("png wrong signature", QByteArray("\x89PNX\r\n\x1a\n0000IHDR"), "PNG", QSize(0, 0), none);
    add("pcx 8 bits", pcxHeader(0, 0, 63, 31, 8, 1, 0), "PCX", QSize(64, 32), QImage::Format_Indexed8);
    add("pcx 24 bits", pcxHeader(10, 20, 19, 29, 8, 3, 0), "PCX", QSize(10, 10), QImage::Format_RGB32);
    add("pcx 16 colours", pcxHeader(0, 0, 7, 7, 1, 4, 0), "PCX", QSize(8, 8), QImage::Format_Invalid);
    add("gif 256 colours", gifHeader("GIF89a", 320, 240, 0xF7), "GIF", QSize(320, 240), QImage::Format_Indexed8);
    add("gif 32 colours", gifHeader("GIF87a", 2, 3, 0x84), "GIF", QSize(2, 3), QImage::Format_Indexed8);
    // A table of 4 entries loads as indexed, but the header reports no format.
    add("gif 4 colours", gifHeader("GIF89a", 2, 3, 0x81), "GIF", QSize(2, 3), QImage::Format_Invalid);
    add("not a gif", gifHeader("GIF90a", 2, 3, 0xF7), "GIF", QSize(0, 0), none);
    add("truncated bmp", QByteArray("BM1234"), "BMP", QSize(0, 0), none);
    add("unknown format", savedByName(rgb, "PNG"), "TGA", QSize(0, 0), none);
}

void ImageDataTest::infoFromHeaders()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, format);
    QFETCH(QSize, size);
    QFETCH(int, result);
    const ImageInfo info = infoOf(bytes, format.constData());
    QCOMPARE(info.size(), size);
    QCOMPARE(int(info.format), result);
}

void ImageDataTest::cropRectangles_data()
{
    QTest::addColumn<QImage>("image");
    QTest::addColumn<int>("margin");
    QTest::addColumn<QRect>("rect");

    const QVector<QRgb> clear{qRgba(0, 0, 0, 0), qRgb(255, 0, 0), qRgb(0, 255, 0)};
    const QVector<QRgb> opaque{qRgb(9, 9, 9), qRgb(255, 0, 0)};
    // 5 x 4, content at (1,1) and (3,2).
    const QVector<int> two{0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0};
    QTest::addRow("indexed with a clear entry") << indexedImage(5, 4, clear, two) << 0 << QRect(QPoint(1, 1), QPoint(3, 2));
    QTest::addRow("indexed, top-left is background") << indexedImage(5, 4, opaque, two) << 0
                                                     << QRect(QPoint(1, 1), QPoint(3, 2));
    // An index past the table is content.
    const QVector<int> stray{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 7};
    QTest::addRow("index past the table") << indexedImage(5, 4, clear, stray) << 0 << QRect(QPoint(4, 3), QPoint(4, 3));
    QImage rgb(6, 3, QImage::Format_RGB32);
    rgb.fill(qRgb(1, 2, 3));
    rgb.setPixel(2, 1, qRgb(1, 2, 4));
    QTest::addRow("rgb background") << rgb << 0 << QRect(QPoint(2, 1), QPoint(2, 1));
    QTest::addRow("premultiplied background") << rgb.convertToFormat(QImage::Format_ARGB32_Premultiplied) << 0
                                              << QRect(QPoint(2, 1), QPoint(2, 1));
    QImage argb(6, 3, QImage::Format_ARGB32);
    argb.fill(qRgba(50, 50, 50, 0));
    argb.setPixel(4, 0, qRgba(0, 0, 0, 1));
    argb.setPixel(1, 2, qRgba(0, 0, 0, 255));
    QTest::addRow("argb alpha") << argb << 0 << QRect(QPoint(1, 0), QPoint(4, 2));
    // The bottom edge is held to the width, not the height.
    QImage wide(40, 4, QImage::Format_ARGB32);
    wide.fill(Qt::transparent);
    wide.setPixel(20, 2, qRgba(1, 1, 1, 255));
    QTest::addRow("margin on a wide image") << wide << 5 << QRect(QPoint(15, 0), QPoint(25, 7));
    QImage empty(4, 4, QImage::Format_ARGB32);
    empty.fill(Qt::transparent);
    QTest::addRow("no content") << empty << 0 << QRect(QPoint(100000, 100000), QPoint(0, 0));
    QTest::addRow("null") << QImage() << 0 << QRect();
    QImage grey(4, 4, QImage::Format_Grayscale8);
    grey.fill(0);
    QTest::addRow("other format") << grey << 0 << QRect();
}

void ImageDataTest::cropRectangles()
{
    QFETCH(QImage, image);
    QFETCH(int, margin);
    QFETCH(QRect, rect);
    QCOMPARE(cropImageRect(image, margin), rect);
}

void ImageDataTest::cropping()
{
    const QVector<QRgb> clear{qRgba(0, 0, 0, 0), qRgb(255, 0, 0)};
    QImage image = indexedImage(5, 4, clear, {0, 0, 0, 0, 0, 0, 1, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0});
    QPoint offset(-1, -1);
    QVERIFY(cropImage(image, &offset, 0));
    QCOMPARE(offset, QPoint(1, 1));
    QCOMPARE(image.size(), QSize(2, 2));
    QCOMPARE(image.pixelIndex(1, 1), 1);
    QCOMPARE(image.colorTable(), clear);

    // Content out to every edge: nothing to cut, offset untouched.
    QImage full = indexedImage(3, 2, clear, {1, 0, 1, 0, 1, 1});
    offset = QPoint(-1, -1);
    QVERIFY(!cropImage(full, &offset, 0));
    QCOMPARE(offset, QPoint(-1, -1));
    QCOMPARE(full.size(), QSize(3, 2));
    // Nothing at all: false as well.
    QImage none(4, 4, QImage::Format_ARGB32);
    none.fill(Qt::transparent);
    QVERIFY(!cropImage(none, nullptr, 0));
    QCOMPARE(none.size(), QSize(4, 4));
}

void ImageDataTest::adaptingToAPalette()
{
    RGBA palette[256];
    for (int i = 0; i < 256; ++i)
        palette[i] = RGBA(quint8(i), quint8(i), quint8(i), 255);
    palette[0] = RGBA(0, 0, 0, 0);
    palette[7] = RGBA(255, 0, 0, 255);
    palette[8] = RGBA(255, 0, 0, 255); // the same colour again: the lower index wins

    QImage picture(4, 1, QImage::Format_ARGB32);
    picture.setPixel(0, 0, qRgba(255, 0, 0, 255));
    picture.setPixel(1, 0, qRgba(12, 200, 90, 0)); // fully transparent: the first lowest alpha
    picture.setPixel(2, 0, qRgba(100, 100, 100, 255));
    picture.setPixel(3, 0, qRgba(3, 3, 3, 255)); // opaque and nearly black: keeps off entry 0
    adaptImageToPalette(picture, palette);
    QCOMPARE(picture.format(), QImage::Format_Indexed8);
    QCOMPARE(picture.pixelIndex(0, 0), 7);
    QCOMPARE(picture.pixelIndex(1, 0), 0);
    QCOMPARE(picture.pixelIndex(2, 0), 100);
    QCOMPARE(picture.pixelIndex(3, 0), 3);
    // A source with transparency keeps the palette's alphas.
    QCOMPARE(qAlpha(picture.color(0)), 0);

    // An opaque source gets an opaque table, and goes to the one opaque entry.
    RGBA mostlyClear[256];
    for (int i = 0; i < 256; ++i)
        mostlyClear[i] = RGBA(quint8(i), 0, 0, 0);
    mostlyClear[200] = RGBA(0, 0, 255, 255);
    QImage rgb(4, 1, QImage::Format_RGB32);
    rgb.setPixel(0, 0, qRgb(10, 0, 200));
    rgb.setPixel(1, 0, qRgb(100, 100, 255));
    rgb.setPixel(2, 0, qRgb(150, 0, 100));
    // Unless the colour is farther from it than the alpha term: then a clear entry wins.
    rgb.setPixel(3, 0, qRgb(255, 0, 0));
    adaptImageToPalette(rgb, mostlyClear);
    for (int x = 0; x < 3; ++x)
        QCOMPARE(rgb.pixelIndex(x, 0), 200);
    QCOMPARE(rgb.pixelIndex(3, 0), 255);
    QCOMPARE(qAlpha(rgb.color(0)), 255);

    // An indexed source is read through its own colour table.
    QImage indexed = indexedImage(2, 1, {qRgb(200, 200, 200), qRgb(255, 0, 0)}, {1, 0});
    adaptImageToPalette(indexed, palette);
    QCOMPARE(indexed.pixelIndex(0, 0), 7);
    QCOMPARE(indexed.pixelIndex(1, 0), 200);
}

void ImageDataTest::alignedOnACanvas()
{
    QImage image = indexedImage(3, 2, {qRgb(0, 0, 0), qRgb(9, 9, 9), qRgb(8, 8, 8)}, {1, 2, 1, 2, 1, 2});
    const Picture sprite(image);
    QCOMPARE(sprite.propertyNames(), QStringList({"Identifier"}));
    // The picture's point (1, 1) goes onto the canvas point (4, 3).
    const QImage canvas = sprite.aligned(QPoint(1, 1), QPoint(4, 3), QPoint(5, 2));
    QCOMPARE(canvas.size(), QSize(9, 5));
    QCOMPARE(canvas.format(), QImage::Format_Indexed8);
    QCOMPARE(canvas.colorTable(), image.colorTable());
    QCOMPARE(canvas.pixelIndex(3, 2), 1);
    QCOMPARE(canvas.pixelIndex(5, 3), 2);
    QCOMPARE(canvas.pixelIndex(0, 0), 0);
    QCOMPARE(canvas.pixelIndex(6, 3), 0);
    QVERIFY(Picture(QImage()).aligned(QPoint(), QPoint(1, 1), QPoint(1, 1)).isNull());

    QImage colour(2, 2, QImage::Format_ARGB32);
    colour.fill(qRgba(1, 2, 3, 4));
    const QImage onCanvas = Picture(colour).aligned(QPoint(0, 0), QPoint(1, 1), QPoint(2, 2));
    QCOMPARE(onCanvas.pixel(2, 2), qRgba(1, 2, 3, 4));
    QCOMPARE(onCanvas.pixel(0, 0), 0u);
}

QTEST_MAIN(ImageDataTest)
#include "tst_imagedata.moc"
