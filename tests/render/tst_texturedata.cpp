// Pictures made ready for the card, without any GL: padding to powers of two, premultiplied
// colour, the RGB path, and what textures hold while GL is off.
#include "image/imagedata.h"
#include "render/texture.h"

#include <QtTest>

using namespace Ovra;

class TextureDataTest : public QObject
{
    Q_OBJECT

private slots:
    void paddedToPowersOfTwo_data();
    void paddedToPowersOfTwo();
    void nullPicture();
    void premultipliedColour_data();
    void premultipliedColour();
    void premultipliedPicture();
    void rgbRows();
    void indexedRows();
    void texturesWithoutGL();
    // Last: turning GL off stops the padding for the rest of the process.
    void noPaddingOnTheRasterRoad();
};

void TextureDataTest::paddedToPowersOfTwo_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QSize>("stored");
    QTest::addColumn<QSizeF>("maximumUV");
    QTest::newRow("100 x 50") << QSize(100, 50) << QSize(128, 64) << QSizeF(0.78125, 0.78125);
    QTest::newRow("64 x 64 stays") << QSize(64, 64) << QSize(64, 64) << QSizeF(1, 1);
    QTest::newRow("1 x 1") << QSize(1, 1) << QSize(1, 1) << QSizeF(1, 1);
    QTest::newRow("65 x 3") << QSize(65, 3) << QSize(128, 4) << QSizeF(65.0 / 128, 0.75);
}

void TextureDataTest::paddedToPowersOfTwo()
{
    QFETCH(QSize, size);
    QFETCH(QSize, stored);
    QFETCH(QSizeF, maximumUV);
    // No GL context has told yet that the card takes any size: pad.
    QImage image(size, QImage::Format_Indexed8);
    image.setColorCount(256);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, uint((x * 7 + y) % 256));
    }
    Texture::ImageData data;
    QVERIFY(Texture::dataFromImage(image, data));
    QCOMPARE(data.size, size);
    QCOMPARE(data.textureSize, stored);
    QCOMPARE(data.depth, 8);
    QCOMPARE(data.data.size(), stored.width() * stored.height());
    const int last = size.height() - 1;
    QCOMPARE(quint8(data.data.at(last * stored.width() + size.width() - 1)), quint8(image.pixelIndex(size.width() - 1, last)));

    const Texture texture(data);
    QCOMPARE(texture.size(), size);
    QCOMPARE(texture.maximumUV(), maximumUV);
    QCOMPARE(texture.type(), Texture::IndexedType);
    QCOMPARE(texture.glId(), 0u); // GL is off
}

void TextureDataTest::nullPicture()
{
    Texture::ImageData data;
    data.data = QByteArray("left over");
    QVERIFY(!Texture::dataFromImage(QImage(), data));
    QVERIFY(data.data.isEmpty());
    QCOMPARE(data.depth, 0);
    const Texture texture{QImage()};
    QCOMPARE(texture.type(), Texture::EmptyType);
    QCOMPARE(texture.glId(), 0u);
    QVERIFY(!texture.isValid());
    QCOMPARE(texture.size(), QSize());
}

void TextureDataTest::premultipliedColour_data()
{
    QTest::addColumn<QImage::Format>("format");
    QTest::addColumn<uint>("pixel");
    QTest::addColumn<QByteArray>("stored");
    // Each colour times alpha over 255, truncated: 200 * 128 / 255 is 100.39.
    QTest::newRow("half") << QImage::Format_ARGB32 << 0x80c86432u << QByteArray("\x64\x32\x19\x80", 4);
    QTest::newRow("clear") << QImage::Format_ARGB32 << 0x00ffffffu << QByteArray("\x00\x00\x00\x00", 4);
    QTest::newRow("opaque") << QImage::Format_ARGB32 << 0xff102030u << QByteArray("\x10\x20\x30\xff", 4);
    QTest::newRow("no alpha") << QImage::Format_RGB32 << 0xff405060u << QByteArray("\x40\x50\x60\xff", 4);
}

void TextureDataTest::premultipliedColour()
{
    QFETCH(QImage::Format, format);
    QFETCH(uint, pixel);
    QFETCH(QByteArray, stored);
    QImage image(2, 1, format);
    image.fill(pixel);
    Texture::ImageData data;
    QVERIFY(Texture::dataFromImage(image, data));
    QCOMPARE(data.depth, 32);
    QCOMPARE(data.textureSize, QSize(2, 1));
    QCOMPARE(data.data, stored + stored);
    QCOMPARE(Texture(data).type(), Texture::RGBAType);
}

void TextureDataTest::premultipliedPicture()
{
    // A premultiplied picture is brought back to plain colour first, not multiplied twice.
    QImage image(1, 1, QImage::Format_ARGB32_Premultiplied);
    image.fill(0x80643219u);
    const QRgb plain = image.convertToFormat(QImage::Format_ARGB32).pixel(0, 0);
    Texture::ImageData data;
    QVERIFY(Texture::dataFromImage(image, data));
    QCOMPARE(quint8(data.data.at(0)), quint8(qRed(plain) * 128 / 255));
    QCOMPARE(quint8(data.data.at(2)), quint8(qBlue(plain) * 128 / 255));
    QVERIFY(qAbs(int(quint8(data.data.at(0))) - 0x64) <= 1);
}

void TextureDataTest::rgbRows()
{
    // Under 24 bits a pixel the picture becomes RGB888 first: three bytes a pixel.
    QImage image(3, 2, QImage::Format_RGB16);
    image.fill(QColor(255, 0, 255));
    image.setPixel(2, 1, qRgb(0, 255, 0));
    Texture::ImageData data;
    QVERIFY(Texture::dataFromImage(image, data));
    QCOMPARE(data.depth, 24);
    QCOMPARE(data.textureSize, QSize(4, 2));
    QCOMPARE(data.data.size(), 4 * 2 * 3);
    QCOMPARE(data.data.mid(0, 3), QByteArray("\xff\x00\xff", 3));
    QCOMPARE(data.data.mid((4 + 2) * 3, 3), QByteArray("\x00\xff\x00", 3));
    QCOMPARE(Texture(data).type(), Texture::RGBType);

    QImage rgb(4, 1, QImage::Format_RGB888);
    rgb.fill(QColor(1, 2, 3));
    QVERIFY(Texture::dataFromImage(rgb, data));
    QCOMPARE(data.data, QByteArray("\x01\x02\x03\x01\x02\x03\x01\x02\x03\x01\x02\x03", 12));
}

void TextureDataTest::indexedRows()
{
    // A one-bit picture is read as indices too.
    QImage mono(3, 1, QImage::Format_Mono);
    mono.setColorCount(2);
    mono.setColor(0, qRgb(0, 0, 0));
    mono.setColor(1, qRgb(255, 255, 255));
    mono.setPixel(0, 0, 1);
    mono.setPixel(1, 0, 0);
    mono.setPixel(2, 0, 1);
    Texture::ImageData data;
    QVERIFY(Texture::dataFromImage(mono, data));
    QCOMPARE(data.depth, 8);
    QCOMPARE(data.data.left(3), QByteArray("\x01\x00\x01", 3));
}

void TextureDataTest::texturesWithoutGL()
{
    QVERIFY(!Texture::isOpenGLEnabled());
    RGBA colours[256];
    Texture palette(colours);
    QCOMPARE(palette.type(), Texture::PaletteType);
    QCOMPARE(palette.size(), QSize(256, 1));
    QCOMPARE(palette.glId(), 0u);
    palette.fromPalette(nullptr);
    QCOMPARE(palette.type(), Texture::EmptyType);

    QImage image(5, 4, QImage::Format_ARGB32);
    image.fill(Qt::red);
    Texture sprite(image);
    Texture empty;
    sprite.swap(empty);
    QCOMPARE(sprite.type(), Texture::EmptyType);
    QCOMPARE(empty.size(), QSize(5, 4));
    QCOMPARE(empty.type(), Texture::RGBAType);
    empty.reset();
    QCOMPARE(empty.type(), Texture::EmptyType);
    QCOMPARE(empty.size(), QSize());
    QCOMPARE(Texture::uploadCount(), quint64(0));
}

void TextureDataTest::noPaddingOnTheRasterRoad()
{
    Texture::setOpenGLEnabled(false);
    QImage image(100, 50, QImage::Format_ARGB32);
    image.fill(Qt::blue);
    Texture::ImageData data;
    QVERIFY(Texture::dataFromImage(image, data));
    QCOMPARE(data.textureSize, QSize(100, 50));
    QCOMPARE(Texture(data).maximumUV(), QSizeF(1, 1));
}

QTEST_MAIN(TextureDataTest)
#include "tst_texturedata.moc"
