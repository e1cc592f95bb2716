#include "engine/extension.h"
#include "engine/extensionmanager.h"
#include "image/imagecodecs.h"
#include "imagetestbytes.h"

#include <QBuffer>
#include <QtTest>

using namespace Ovra;
using ImageTestBytes::loadByName;
using ImageTestBytes::savedByName;

namespace {

// An image format of a plug-in: a width, a height and one grey byte for all pixels.
class FlatLoader : public ImageLoaderExtension
{
public:
    const char *format() const override { return "FLAT"; }
    const char *name() const override { return "flat"; }
    bool load(QIODevice *device, QImage &image) override
    {
        const QByteArray bytes = device->read(3);
        if (bytes.size() != 3)
            return false;
        image = QImage(uchar(bytes[0]), uchar(bytes[1]), QImage::Format_Indexed8);
        image.setColorTable({qRgb(uchar(bytes[2]), uchar(bytes[2]), uchar(bytes[2]))});
        image.fill(0);
        return true;
    }
};

class FlatSaver : public ImageSaverExtension
{
public:
    const char *format() const override { return "FLAT"; }
    const char *name() const override { return "flat"; }
    bool save(QIODevice *device, const QImage &image) override
    {
        const char bytes[3] = {char(image.width()), char(image.height()), char(qRed(image.pixel(0, 0)))};
        return device->write(bytes, 3) == 3;
    }
};

} // namespace

class ImageCodecsTest : public QObject
{
    Q_OBJECT

private slots:
    void builtInFormats_data();
    void builtInFormats();
    void rowPaddingIsCleared();
    void extensionsServeOtherNames();
    void refusals();
};

void ImageCodecsTest::builtInFormats_data()
{
    QTest::addColumn<QByteArray>("format");
    QTest::addColumn<int>("qformat");
    QTest::addRow("png indexed") << QByteArray("PNG") << int(QImage::Format_Indexed8);
    QTest::addRow("png argb") << QByteArray("PNG") << int(QImage::Format_ARGB32);
    QTest::addRow("bmp indexed") << QByteArray("BMP") << int(QImage::Format_Indexed8);
    QTest::addRow("bmp rgb") << QByteArray("BMP") << int(QImage::Format_RGB32);
    QTest::addRow("pcx indexed") << QByteArray("PCX") << int(QImage::Format_Indexed8);
    QTest::addRow("pcx argb") << QByteArray("PCX") << int(QImage::Format_ARGB32);
}

void ImageCodecsTest::builtInFormats()
{
    QFETCH(QByteArray, format);
    QFETCH(int, qformat);
    QImage image(7, 5, QImage::Format(qformat));
    const bool indexed = image.format() == QImage::Format_Indexed8;
    if (indexed)
        image.setColorTable({qRgb(1, 2, 3), qRgb(200, 100, 50), qRgb(9, 9, 9)});
    for (int y = 0; y < 5; ++y) {
        for (int x = 0; x < 7; ++x)
            image.setPixel(x, y, indexed ? uint((x + y) % 3) : qRgba(x * 30, y * 40, 7, 255));
    }
    const QByteArray bytes = savedByName(image, format.constData());
    QVERIFY(!bytes.isEmpty());
    QImage back;
    QVERIFY(loadByName(bytes, format.constData(), back));
    QCOMPARE(back.size(), image.size());
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 7; ++x)
            QCOMPARE(back.pixel(x, y) & 0xFFFFFF, image.pixel(x, y) & 0xFFFFFF);
}

void ImageCodecsTest::rowPaddingIsCleared()
{
    // 3 pixels a row of an indexed BMP: one byte of padding, which must read as 0, so that
    // two equal pictures are equal byte by byte.
    QImage image(3, 2, QImage::Format_Indexed8);
    image.setColorTable({qRgb(0, 0, 0), qRgb(255, 255, 255)});
    image.fill(1);
    QImage back;
    QVERIFY(loadByName(savedByName(image, "BMP"), "BMP", back));
    QCOMPARE(back.bytesPerLine(), 4);
    for (int y = 0; y < 2; ++y)
        QCOMPARE(int(back.constScanLine(y)[3]), 0);
}

void ImageCodecsTest::extensionsServeOtherNames()
{
    QImage image(4, 3, QImage::Format_Indexed8);
    image.setColorTable({qRgb(77, 77, 77)});
    image.fill(0);
    QVERIFY(savedByName(image, "FLAT").isEmpty()); // nobody serves the name yet
    FlatLoader loader;
    FlatSaver saver;
    ExtensionManager::add(&loader);
    ExtensionManager::add(&saver);
    const QByteArray bytes = savedByName(image, "FLAT");
    QCOMPARE(bytes, QByteArray("\x04\x03\x4d", 3));
    QImage back;
    QVERIFY(loadByName(bytes, "FLAT", back));
    QCOMPARE(back.size(), QSize(4, 3));
    QCOMPARE(back.pixel(2, 2), qRgb(77, 77, 77));
    ExtensionManager::list(Extension::ImageLoader).removeAll(&loader);
    ExtensionManager::list(Extension::ImageSaver).removeAll(&saver);
}

void ImageCodecsTest::refusals()
{
    QVERIFY(savedByName(QImage(), "PNG").isEmpty());
    QImage image(2, 2, QImage::Format_RGB32);
    image.fill(Qt::red);
    QBuffer closed;
    QVERIFY(!saveImage(&closed, "PNG", image));
    QImage none;
    QVERIFY(!loadImage(&closed, "PNG", none));
    QVERIFY(!loadByName("garbage", "PNG", none));
    QVERIFY(!loadByName("garbage", "XYZ", none));
    QVERIFY(none.isNull());
}

QTEST_MAIN(ImageCodecsTest)
#include "tst_imagecodecs.moc"
