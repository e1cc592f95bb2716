#include "image/gifimage.h"
#include "imagetestbytes.h"

#include <QBuffer>
#include <QImageReader>
#include <QtTest>

#include <gif_lib.h>

using namespace Ovra;
using ImageTestBytes::loadByName;
using ImageTestBytes::savedByName;

namespace {

// ---- an independent reading of the bytes, through giflib's own slurp -----------------

struct Slurped
{
    int width = 0;
    int height = 0;
    int background = 0;
    int resolution = 0;
    QVector<RGB> global;
    bool loops = false;
    struct Frame
    {
        int left, top, width, height;
        QVector<RGB> local;
        QByteArray pixels;
        int delay = -1;       // -1 without a graphics control block
        int transparent = -1;
        int disposal = 0;
    };
    QVector<Frame> frames;
};

int readBuffer(GifFileType *gif, GifByteType *bytes, int count)
{
    auto *buffer = static_cast<QBuffer *>(gif->UserData);
    return int(buffer->read(reinterpret_cast<char *>(bytes), count));
}

QVector<RGB> colorsOf(const ColorMapObject *map)
{
    QVector<RGB> colors;
    for (int i = 0; map && i < map->ColorCount; ++i)
        colors.append(RGB(map->Colors[i].Red, map->Colors[i].Green, map->Colors[i].Blue));
    return colors;
}

bool slurp(QByteArray bytes, Slurped &out)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    int error = 0;
    GifFileType *gif = DGifOpen(&buffer, readBuffer, &error);
    if (!gif)
        return false;
    const bool ok = DGifSlurp(gif) == GIF_OK;
    out.width = gif->SWidth;
    out.height = gif->SHeight;
    out.background = gif->SBackGroundColor;
    out.resolution = gif->SColorResolution;
    out.global = colorsOf(gif->SColorMap);
    for (int i = 0; ok && i < gif->ImageCount; ++i) {
        const SavedImage &saved = gif->SavedImages[i];
        Slurped::Frame frame{saved.ImageDesc.Left, saved.ImageDesc.Top, saved.ImageDesc.Width,
                             saved.ImageDesc.Height, colorsOf(saved.ImageDesc.ColorMap), QByteArray()};
        frame.pixels = QByteArray(reinterpret_cast<const char *>(saved.RasterBits), frame.width * frame.height);
        for (int k = 0; k < saved.ExtensionBlockCount; ++k) {
            const ExtensionBlock &block = saved.ExtensionBlocks[k];
            if (block.Function == APPLICATION_EXT_FUNC_CODE && block.ByteCount >= 11
                && memcmp(block.Bytes, "NETSCAPE2.0", 11) == 0)
                out.loops = true;
        }
        GraphicsControlBlock control;
        if (DGifSavedExtensionToGCB(gif, i, &control) == GIF_OK) {
            frame.delay = control.DelayTime;
            frame.transparent = control.TransparentColor;
            frame.disposal = control.DisposalMode;
        }
        out.frames.append(frame);
    }
    DGifCloseFile(gif, &error);
    return ok;
}

QByteArray pixelsOf(const QImage &image)
{
    QByteArray pixels;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            pixels.append(char(image.pixelIndex(x, y)));
    }
    return pixels;
}

QImage indexedPicture(int width, int height, int colours, int seed)
{
    QImage image(width, height, QImage::Format_Indexed8);
    QVector<QRgb> table;
    for (int i = 0; i < colours; ++i)
        table << qRgb(i * 37 % 256, i * 91 % 256, i * 53 % 256);
    image.setColorTable(table);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, uint((x * 3 + y * 5 + seed) % colours));
    }
    return image;
}

QImage noisePicture(int seed)
{
    QImage image = indexedPicture(64, 64, 16, 0);
    QRandomGenerator random{quint32(seed)};
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x)
            image.setPixel(x, y, random.bounded(16u));
    }
    return image;
}

QByteArray saved(const GIFImage &gif)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    return gif.save(&buffer) ? bytes : QByteArray();
}

QByteArray exported(const QVector<AnimImageFrame> &frames, float scale = 1, float velocity = 1, bool shared = false,
                    bool loop = true)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    return saveGIF(&buffer, frames, scale, velocity, shared, loop) ? bytes : QByteArray();
}

QVector<RGB> mapOf(const QImage &image)
{
    QVector<RGB> map;
    for (QRgb entry : image.colorTable())
        map.append(RGB(entry));
    return map;
}

// A true-colour figure: a ring of a few colours on a transparent ground.
QImage ring(int size, QRgb colour)
{
    QImage image(size, size, QImage::Format_ARGB32);
    image.fill(0);
    const int c = size / 2;
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            const int d = (x - c) * (x - c) + (y - c) * (y - c);
            if (d < c * c && d > c * c / 4)
                image.setPixel(x, y, (x + y) % 3 ? colour : qRgb(250, 250, 250));
        }
    }
    return image;
}

bool loadInto(GIFImage &gif, QByteArray bytes)
{
    QBuffer buffer(&bytes);
    return gif.load(&buffer);
}

// Exposes the octree's steps to the tests.
class OpenQuantizer : public ColorQuantizer
{
public:
    using ColorQuantizer::ColorQuantizer;
    using ColorQuantizer::addColor;
    using ColorQuantizer::reduceTree;
};

} // namespace

class GifImageTest : public QObject
{
    Q_OBJECT

private slots:
    void subImagesRoundTrip();
    void independentReadersAgree();
    void delayFractionsCarryOver();
    void singlePicture();
    void twoColourFiles();
    void refusals();
    void damagedFiles_data();
    void damagedFiles();

    void exportAlignsAxesAndScales();
    void exportDelays_data();
    void exportDelays();
    void exportOfTrueColourFrames();
    void exportAlphaThreshold();
    void exportOfIndexedFrames_data();
    void exportOfIndexedFrames();

    void quantizerKeepsFewColoursExactly();
    void quantizerReducesToItsLimit();
    void quantizerFoldsTheNewestDeepestNode();

    void loadAndSaveImageByName();
};

void GifImageTest::subImagesRoundTrip()
{
    GIFImage gif(40, 30, true);
    gif.globalColorMap() = mapOf(indexedPicture(1, 1, 16, 0));
    const GIFImage::SubImage first{indexedPicture(40, 30, 16, 1), {}, 0, 0, 3, 10};
    const QImage small = indexedPicture(7, 5, 4, 2);
    const GIFImage::SubImage second{small, mapOf(small), 11, 9, -1, 25};
    gif.images() << first << second;
    const QByteArray bytes = saved(gif);
    QVERIFY(bytes.startsWith("GIF89a"));

    GIFImage back;
    QVERIFY(loadInto(back, bytes));
    QVERIFY(back.canLoop());
    QCOMPARE(QSize(back.width(), back.height()), QSize(40, 30));
    QCOMPARE(back.globalColorMap(), gif.globalColorMap());
    QCOMPARE(back.images().size(), 2);
    const GIFImage::SubImage a = back.images().at(0);
    const GIFImage::SubImage b = back.images().at(1);
    QCOMPARE(a.image.format(), QImage::Format_Indexed8);
    QCOMPARE(pixelsOf(a.image), pixelsOf(first.image));
    QCOMPARE(a.transparentIndex, qint16(3));
    QVERIFY(a.colorMap.isEmpty());
    QCOMPARE(pixelsOf(b.image), pixelsOf(second.image));
    QCOMPARE(b.colorMap, second.colorMap);
    QCOMPARE(QPoint(b.left, b.top), QPoint(11, 9));
    QCOMPARE(b.transparentIndex, qint16(-1));
    QCOMPARE(b.delay, 0.f); // delays are written, not read
}

void GifImageTest::independentReadersAgree()
{
    QVector<AnimImageFrame> frames;
    for (int i = 0; i < 4; ++i) {
        QImage picture = indexedPicture(12, 10, 8, i);
        picture.setColor(0, picture.color(0) & 0x00FFFFFF); // index 0 transparent, as sprites have it
        frames << AnimImageFrame{picture, 6, 9, 6 * (i + 1)};
    }
    const QByteArray bytes = exported(frames);
    Slurped file;
    QVERIFY(slurp(bytes, file));
    QVERIFY(file.loops);
    QCOMPARE(file.frames.size(), 4);
    int total = 0;
    for (int i = 0; i < 4; ++i) {
        const Slurped::Frame &frame = file.frames.at(i);
        QCOMPARE(frame.pixels, pixelsOf(frames.at(i).image));
        QCOMPARE(frame.local, mapOf(frames.at(i).image));
        QCOMPARE(frame.transparent, 0);
        QCOMPARE(frame.disposal, int(DISPOSE_BACKGROUND));
        total += frame.delay;
    }
    QCOMPARE(total, 10 + 20 + 30 + 40);

    // Qt's own reader sees the same animation.
    QBuffer buffer;
    buffer.setData(bytes);
    QImageReader reader(&buffer, "gif");
    QCOMPARE(reader.imageCount(), 4);
    QCOMPARE(reader.loopCount(), -1);
    const QImage seen = reader.read().convertToFormat(QImage::Format_ARGB32);
    QCOMPARE(reader.nextImageDelay(), 100);
    const QImage expected = frames.first().image.convertToFormat(QImage::Format_ARGB32);
    QCOMPARE(seen.size(), expected.size());
    for (int y = 0; y < 10; ++y) {
        for (int x = 0; x < 12; ++x) {
            const QRgb want = expected.pixel(x, y);
            if (qAlpha(want) == 0)
                QCOMPARE(qAlpha(seen.pixel(x, y)), 0);
            else
                QCOMPARE(seen.pixel(x, y), want);
        }
    }
}

void GifImageTest::delayFractionsCarryOver()
{
    GIFImage gif(4, 4, false);
    gif.globalColorMap() = mapOf(indexedPicture(1, 1, 4, 0));
    for (int i = 0; i < 6; ++i)
        gif.images() << GIFImage::SubImage{indexedPicture(4, 4, 4, i), {}, 0, 0, -1, 100.f / 6};
    Slurped file;
    QVERIFY(slurp(saved(gif), file));
    QVERIFY(!file.loops);
    // Each delay is a whole hundredth, and at every frame the time so far is less than
    // one hundredth off the true time (dropping fractions would lose 4 in 100).
    QCOMPARE(file.frames.size(), 6);
    int sum = 0;
    for (int k = 0; k < 6; ++k) {
        const int delay = file.frames.at(k).delay;
        QVERIFY2(delay == 16 || delay == 17, qPrintable(QString::number(delay)));
        sum += delay;
        QVERIFY(qAbs(sum - (k + 1) * 100.0 / 6) <= 1.0);
    }
}

void GifImageTest::singlePicture()
{
    // One picture on a larger screen, five colours in the global map.
    const QImage picture = indexedPicture(9, 6, 5, 1);
    GIFImage gif(50, 40, false);
    gif.globalColorMap() = mapOf(picture);
    gif.images() << GIFImage::SubImage{picture, {}, 3, 0, 2, 0};
    const QByteArray bytes = saved(gif);
    Slurped file;
    QVERIFY(slurp(bytes, file));
    QCOMPARE(file.width, 50);
    QCOMPARE(file.frames.first().delay, -1); // one picture: no control block
    QCOMPARE(file.frames.first().pixels, pixelsOf(picture));
    // The map is padded to a power of two with black.
    QCOMPARE(file.global.size(), 8);
    QCOMPARE(file.global.mid(0, 5), mapOf(picture));
    QCOMPARE(file.global.at(7), RGB(0, 0, 0));
    // Its transparency travels as the screen's background.
    QCOMPARE(file.background, 2);

    // Read back, the file takes the picture's size.
    GIFImage back;
    QVERIFY(loadInto(back, bytes));
    QCOMPARE(QSize(back.width(), back.height()), QSize(9, 6));
    QCOMPARE(back.images().first().transparentIndex, qint16(2));

    // Without a global map there is no background to tell it.
    gif.globalColorMap().clear();
    gif.images().first().colorMap = mapOf(picture);
    QVERIFY(loadInto(back, saved(gif)));
    QCOMPARE(back.images().first().transparentIndex, qint16(-1));
}

void GifImageTest::twoColourFiles()
{
    QImage mono(13, 3, QImage::Format_Mono);
    mono.setColorTable({qRgb(0, 0, 0), qRgb(255, 255, 255)});
    for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < 13; ++x)
            mono.setPixel(x, y, uint((x + y) % 3 == 0));
    }
    GIFImage gif(13, 3, false);
    gif.globalColorMap() = mapOf(mono);
    gif.images() << GIFImage::SubImage{mono, {}, 0, 0, -1, 0};
    const QByteArray bytes = saved(gif);
    Slurped file;
    QVERIFY(slurp(bytes, file));
    QCOMPARE(file.resolution, 1);
    QCOMPARE(file.frames.first().pixels, pixelsOf(mono));
    GIFImage back;
    QVERIFY(loadInto(back, bytes));
    QCOMPARE(back.images().first().image.format(), QImage::Format_Mono);
    QCOMPARE(pixelsOf(back.images().first().image), pixelsOf(mono));
}

void GifImageTest::refusals()
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    QVERIFY(!GIFImage(4, 4, false).save(&buffer)); // no pictures
    QVERIFY(bytes.isEmpty());
    GIFImage gif;
    QVERIFY(!gif.load(nullptr));
    QFile missing(QStringLiteral("/nonexistent/dir/a.gif"));
    QVERIFY(!gif.load(&missing));
    GIFImage one(2, 2, false);
    one.images() << GIFImage::SubImage{indexedPicture(2, 2, 2, 0), {}, 0, 0, -1, 0};
    QVERIFY(!one.save(&missing));
    // The exporter: no frames, no device, no picture to show.
    buffer.open(QIODevice::WriteOnly);
    QVERIFY(!saveGIF(&buffer, {}, 1, 1, false, true));
    QVERIFY(!saveGIF(nullptr, {{indexedPicture(2, 2, 2, 0), 0, 0, 1}}, 1, 1, false, true));
    QVERIFY(!saveGIF(&buffer, {{QImage(), 0, 0, 1}}, 1, 1, false, true));
}

void GifImageTest::damagedFiles_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("picturesKept");
    GIFImage gif(64, 64, true);
    gif.globalColorMap() = mapOf(indexedPicture(1, 1, 16, 0));
    for (int i = 0; i < 3; ++i)
        gif.images() << GIFImage::SubImage{noisePicture(i), {}, 0, 0, -1, 5};
    const QByteArray whole = saved(gif);
    QTest::addRow("empty") << QByteArray() << 0;
    QTest::addRow("wrong magic") << QByteArray("PNG89a") + whole.mid(6) << 0;
    QTest::addRow("header only") << whole.left(13) << 0;
    QTest::addRow("no trailer") << whole.left(whole.size() - 1) << 3;
    QTest::addRow("cut in the last picture") << whole.left(whole.size() - 30) << 3;
    QByteArray noise(500, '\0');
    QRandomGenerator random(11);
    for (char &byte : noise)
        byte = char(random.bounded(256));
    QTest::addRow("noise after the header") << whole.left(13) + noise << -1;
    // A picture descriptor of 65535 x 65535 pixels with a few bytes of data behind it is
    // refused before its pixels are allocated.
    QTest::addRow("huge picture") << QByteArray("GIF89a") + QByteArray::fromHex("0100010080000000000000ffffff")
                                         + QByteArray::fromHex("2c00000000ffffffff00") + QByteArray::fromHex("0202440100")
                                         + ";"
                                  << 0;
}

void GifImageTest::damagedFiles()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, picturesKept);
    GIFImage gif;
    QVERIFY(!loadInto(gif, bytes));
    if (picturesKept >= 0)
        QCOMPARE(gif.images().size(), picturesKept);
    if (picturesKept == 3) {
        // What the file still had is there; below the cut the picture is transparent.
        const QByteArray last = pixelsOf(gif.images().last().image);
        const QByteArray original = pixelsOf(noisePicture(2));
        QCOMPARE(last.size(), original.size());
        QCOMPARE(last.left(64 * 32), original.left(64 * 32));
        QVERIFY(last.endsWith(QByteArray(64, '\0')) || last == original);
    }
}

void GifImageTest::exportAlignsAxesAndScales()
{
    // Two frames whose axes lie at different places of their pictures.
    QImage a = indexedPicture(10, 8, 4, 0);
    QImage b = indexedPicture(6, 12, 4, 1);
    b.setColorTable(a.colorTable());
    const QVector<AnimImageFrame> frames = {{a, 5, 8, 6}, {QImage(), 0, 0, 60}, {b, 1, 10, 6}};
    for (float scale : {1.f, 2.f, 0.f, -3.f}) {
        Slurped file;
        QVERIFY(slurp(exported(frames, scale), file));
        const int s = scale <= 0 ? 1 : int(scale);
        // Left of the axis at most 5, right of it at most 5; above it 10, below it 2.
        QCOMPARE(QSize(file.width, file.height), QSize(10, 12) * s);
        QCOMPARE(file.frames.size(), 2);
        const Slurped::Frame &first = file.frames.at(0);
        const Slurped::Frame &second = file.frames.at(1);
        QCOMPARE(QRect(first.left, first.top, first.width, first.height), QRect(0, 2 * s, 10 * s, 8 * s));
        QCOMPARE(QRect(second.left, second.top, second.width, second.height), QRect(4 * s, 0, 6 * s, 12 * s));
        if (s == 2) {
            QByteArray doubled;
            for (int y = 0; y < 16; ++y) {
                for (int x = 0; x < 20; ++x)
                    doubled.append(char(a.pixelIndex(x / 2, y / 2)));
            }
            QCOMPARE(first.pixels, doubled);
        }
    }
}

void GifImageTest::exportDelays_data()
{
    QTest::addColumn<QVector<int>>("ticks");
    QTest::addColumn<float>("velocity");
    QTest::addColumn<int>("total");
    QTest::addRow("sixtieths") << QVector<int>{10, 10, 10, 10, 10, 10} << 1.f << 100;
    QTest::addRow("odd ticks") << QVector<int>{7, 13, 1, 59} << 1.f << 133;
    QTest::addRow("double speed") << QVector<int>{6, 6, 6, 6} << 2.f << 20;
    QTest::addRow("half speed") << QVector<int>{5, 5, 5} << 0.5f << 50;
}

void GifImageTest::exportDelays()
{
    QFETCH(QVector<int>, ticks);
    QFETCH(float, velocity);
    QFETCH(int, total);
    QVector<AnimImageFrame> frames;
    for (int i = 0; i < ticks.size(); ++i)
        frames << AnimImageFrame{indexedPicture(4, 4, 4, i), 0, 0, ticks.at(i)};
    Slurped file;
    QVERIFY(slurp(exported(frames, 1, velocity), file));
    int sum = 0;
    for (const Slurped::Frame &frame : qAsConst(file.frames))
        sum += frame.delay;
    QVERIFY(qAbs(sum - total) <= 1);
}

void GifImageTest::exportOfTrueColourFrames()
{
    const QVector<AnimImageFrame> frames = {{ring(16, qRgb(200, 30, 30)), 8, 8, 6},
                                            {ring(16, qRgb(30, 200, 30)), 8, 8, 6},
                                            {ring(16, qRgb(30, 30, 200)), 8, 8, 6}};
    Slurped file;
    QVERIFY(slurp(exported(frames), file));
    QCOMPARE(file.global.size(), 256);
    QCOMPARE(file.frames.size(), 3);
    for (int i = 0; i < 3; ++i) {
        const Slurped::Frame &frame = file.frames.at(i);
        QVERIFY(frame.local.isEmpty());
        QCOMPARE(frame.transparent, 0);
        const QImage &picture = frames.at(i).image;
        for (int y = 0; y < 16; ++y) {
            for (int x = 0; x < 16; ++x) {
                const int index = uchar(frame.pixels.at(y * 16 + x));
                const QRgb want = picture.pixel(x, y);
                // Four colours in all: each is found exactly, transparent ones at index 0.
                QCOMPARE(index == 0, qAlpha(want) == 0);
                if (index != 0)
                    QCOMPARE(file.global.at(index), RGB(want));
            }
        }
    }
}

void GifImageTest::exportAlphaThreshold()
{
    QImage picture(3, 1, QImage::Format_ARGB32);
    picture.setPixel(0, 0, qRgba(90, 90, 90, 127));
    picture.setPixel(1, 0, qRgba(90, 90, 90, 128));
    picture.setPixel(2, 0, qRgba(10, 20, 30, 255));
    // Once as the only kind of frame, once beside an indexed frame (a palette of its own).
    for (bool mixed : {false, true}) {
        QVector<AnimImageFrame> frames = {{picture, 0, 0, 6}};
        if (mixed)
            frames << AnimImageFrame{indexedPicture(3, 1, 4, 0), 0, 0, 6};
        Slurped file;
        QVERIFY(slurp(exported(frames), file));
        const QByteArray pixels = file.frames.first().pixels;
        QCOMPARE(int(pixels.at(0)), 0);
        QVERIFY(pixels.at(1) != 0);
        QVERIFY(pixels.at(2) != 0);
        const QVector<RGB> map = mixed ? file.frames.first().local : file.global;
        QCOMPARE(map.at(uchar(pixels.at(2))), RGB(10, 20, 30));
    }
}

void GifImageTest::exportOfIndexedFrames_data()
{
    QTest::addColumn<bool>("shared");
    QTest::addRow("a palette for each frame") << false;
    QTest::addRow("one shared palette") << true;
}

void GifImageTest::exportOfIndexedFrames()
{
    QFETCH(bool, shared);
    QImage first = indexedPicture(8, 8, 16, 0);
    first.setColor(0, first.color(0) & 0x00FFFFFF);
    const QImage second = indexedPicture(8, 8, 16, 3); // all opaque
    const QVector<AnimImageFrame> frames = {{first, 0, 0, 6}, {second, 0, 0, 6}, {ring(8, qRgb(1, 2, 3)), 0, 0, 6}};
    Slurped file;
    QVERIFY(slurp(exported(frames, 1, 1, shared), file));
    QCOMPARE(file.frames.size(), 3);
    QCOMPARE(file.frames.at(0).pixels, pixelsOf(first));
    QCOMPARE(file.frames.at(1).pixels, pixelsOf(second));
    if (shared) {
        QCOMPARE(file.global, mapOf(first));
        for (const Slurped::Frame &frame : qAsConst(file.frames)) {
            QVERIFY(frame.local.isEmpty());
            QCOMPARE(frame.transparent, 0);
        }
        // The true-colour frame is mapped onto the shared colours.
        QVERIFY(file.frames.at(2).pixels.count(char(0)) > 0);
    } else {
        QCOMPARE(file.frames.at(0).local, mapOf(first));
        QCOMPARE(file.frames.at(1).local, mapOf(second));
        QCOMPARE(file.frames.at(1).transparent, -1); // its table is all opaque
        // The true-colour frame found a palette of its own: index 0 transparent.
        QCOMPARE(file.frames.at(2).local.size(), 256);
        QCOMPARE(file.frames.at(2).transparent, 0);
        const int index = uchar(file.frames.at(2).pixels.at(8 * 1 + 4));
        QCOMPARE(file.frames.at(2).local.at(index), RGB(1, 2, 3));
    }
}

void GifImageTest::quantizerKeepsFewColoursExactly()
{
    // 255 colours, one of them transparent: all found as they are, the last entry empty.
    QImage picture(64, 4, QImage::Format_ARGB32);
    QSet<QRgb> colours;
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 64; ++x) {
            const QRgb colour = qRgba(x * 4, y * 60, 255 - x * 3, y == 3 ? 0 : 255);
            picture.setPixel(x, y, x == 63 && y == 3 ? picture.pixel(62, 3) : colour);
            colours.insert(picture.pixel(x, y));
        }
    }
    QCOMPARE(colours.size(), 255);
    ColorQuantizer quantizer(255, 8);
    QVERIFY(quantizer.processImage(picture));
    QCOMPARE(quantizer.colorCount(), 255);
    RGBA table[256];
    quantizer.getColorTable(table);
    QSet<QRgb> found;
    for (int i = 0; i < 255; ++i)
        found.insert(table[i].toQRgb());
    QCOMPARE(found, colours);
    QCOMPARE(table[255], RGBA());
}

void GifImageTest::quantizerReducesToItsLimit()
{
    QImage noise(128, 128, QImage::Format_RGB32);
    QRandomGenerator random(3);
    for (int y = 0; y < 128; ++y) {
        for (int x = 0; x < 128; ++x)
            noise.setPixel(x, y, random.generate() | 0xFF000000);
    }
    for (int limit : {255, 16, 1}) {
        ColorQuantizer quantizer(limit, 8);
        quantizer.processImage(noise);
        QVERIFY(quantizer.colorCount() <= limit);
        QVERIFY(quantizer.colorCount() > 0);
        // Feeding more keeps the limit.
        quantizer.processImage(noise.mirrored());
        QVERIFY(quantizer.colorCount() <= limit);
    }
    // One colour with one leaf: its exact value, whatever the depth.
    ColorQuantizer one(1, 3);
    QImage flat(5, 5, QImage::Format_ARGB32);
    flat.fill(qRgba(17, 99, 203, 255));
    one.processImage(flat);
    RGBA table[256];
    one.getColorTable(table);
    QCOMPARE(table[0], RGBA(17, 99, 203, 255));
}

void GifImageTest::quantizerFoldsTheNewestDeepestNode()
{
    // Depth 2: 0x00 and 0x40 share their node of level 1 (child 0), 0xC0 has its own
    // (child 4), made last.
    OpenQuantizer tree(8, 2);
    OctreeNode *reducible[8] = {};
    int leaves = 0;
    OctreeNode *root = nullptr;
    for (uchar red : {0x00, 0x40, 0xC0})
        tree.addColor(root, red, 0, 0, 255, 2, 0, leaves, reducible);
    QCOMPARE(leaves, 3);
    // The newest node of level 1 is the one over 0xC0: folding it changes nothing but its
    // level; the next fold takes the node over 0x00 and 0x40 and averages them.
    tree.reduceTree(2, leaves, reducible);
    QCOMPARE(leaves, 3);
    tree.reduceTree(2, leaves, reducible);
    QCOMPARE(leaves, 2);
    QVERIFY(root->children[0]->isLeaf);
    QCOMPARE(root->children[0]->pixelCount, 2);
    QCOMPARE(root->children[0]->redSum, qint64(0x40));
    // No inner node below the root is left: the root comes next.
    tree.reduceTree(2, leaves, reducible);
    QCOMPARE(leaves, 1);
    QVERIFY(root->isLeaf);
    QCOMPARE(root->pixelCount, 3);
    delete root; // its children went with the folds
}

void GifImageTest::loadAndSaveImageByName()
{
    // An indexed picture with a transparent entry: its table comes back padded, with the
    // transparent entry still transparent.
    QImage picture = indexedPicture(9, 7, 12, 4);
    picture.setColor(5, picture.color(5) & 0x00FFFFFF);
    QImage back;
    QVERIFY(loadByName(savedByName(picture, "GIF"), "GIF", back));
    QCOMPARE(back.format(), QImage::Format_Indexed8);
    QCOMPARE(pixelsOf(back), pixelsOf(picture));
    QCOMPARE(back.colorTable().mid(0, 12), picture.colorTable());
    QCOMPARE(back.colorTable().size(), 16);

    // Of an animation the first picture alone.
    QVector<AnimImageFrame> frames;
    for (int i = 0; i < 3; ++i)
        frames << AnimImageFrame{indexedPicture(5, 5, 4, i), 0, 0, 6};
    QVERIFY(loadByName(exported(frames), "GIF", back));
    QCOMPARE(pixelsOf(back), pixelsOf(frames.first().image));

    // A true-colour picture is given its colours on the way.
    const QImage figure = ring(12, qRgb(10, 120, 240));
    QVERIFY(loadByName(savedByName(figure, "GIF"), "GIF", back));
    QCOMPARE(back.convertToFormat(QImage::Format_ARGB32), figure);

    // A file that isn't one leaves the picture as it was.
    QImage kept = picture;
    QVERIFY(loadByName("GIF89a but no more", "GIF", kept));
    QCOMPARE(kept, picture);
}

QTEST_MAIN(GifImageTest)
#include "tst_gifimage.moc"
