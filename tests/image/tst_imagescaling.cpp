#include "image/hqx_p.h"
#include "image/imagescaling.h"
#include "image/paletteobject.h"

#include <QtTest>

#include <cmath>

using namespace Ovra;

namespace {

QImage indexed(int width, int height, const QVector<int> &pixels)
{
    QImage image(width, height, QImage::Format_Indexed8);
    QVector<QRgb> table;
    for (int i = 0; i < 16; ++i)
        table << qRgb(i * 16, 255 - i * 16, (i * 80) % 256);
    image.setColorTable(table);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, uint(pixels.at(y * width + x)));
    }
    return image;
}

QVector<int> indicesOf(const QImage &image)
{
    QVector<int> pixels;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            pixels << image.pixelIndex(x, y);
    }
    return pixels;
}

QImage pattern(int width, int height, QImage::Format format)
{
    QVector<int> pixels;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            pixels << ((x / 2 + y) % 5 == 0 ? 3 : (x * y) % 7);
    }
    const QImage image = indexed(width, height, pixels);
    return format == QImage::Format_Indexed8 ? image : image.convertToFormat(format);
}

struct Palette
{
    RGBA entries[256];
    Palette()
    {
        for (int i = 0; i < 256; ++i)
            entries[i] = i < 16 ? RGBA(quint8(i * 16), quint8(255 - i * 16), quint8((i * 80) % 256), 255)
                                : RGBA(0, 0, 0, 255);
    }
};

const quint32 light = 0xFFE0E0E0;
const quint32 dark = 0xFF202020;

// Channel by channel, alpha too: (a * x + b * y) >> shift, as the filters weigh.
quint32 weigh(quint32 x, int a, quint32 y, int b, int shift)
{
    quint32 result = 0;
    for (int channel = 0; channel < 32; channel += 8)
        result |= quint32((int((x >> channel) & 0xFF) * a + int((y >> channel) & 0xFF) * b) >> shift) << channel;
    return result;
}

// hq2x over a picture given as rows of pixels; the result as rows too.
QVector<QVector<quint32>> hq2xOf(const QVector<QVector<quint32>> &rows)
{
    const int height = rows.size();
    const int width = rows.first().size();
    QVector<quint32> source;
    for (const auto &row : rows)
        source += row;
    QVector<quint32> target(width * 2 * height * 2);
    hq2x(source.constData(), target.data(), width, height, width * 2 * 4);
    QVector<QVector<quint32>> result;
    for (int y = 0; y < height * 2; ++y)
        result << target.mid(y * width * 2, width * 2);
    return result;
}

QVector<QVector<quint32>> pictureOf(int width, int height, const std::function<quint32(int, int)> &pixel)
{
    QVector<QVector<quint32>> rows;
    for (int y = 0; y < height; ++y) {
        rows << QVector<quint32>();
        for (int x = 0; x < width; ++x)
            rows.last() << pixel(x, y);
    }
    return rows;
}

QVector<QVector<quint32>> turned(const QVector<QVector<quint32>> &rows)
{
    // A quarter turn clockwise.
    const int height = rows.size();
    const int width = rows.first().size();
    return pictureOf(height, width, [&](int x, int y) { return rows.at(height - 1 - x).at(y); });
}

} // namespace

class ImageScalingTest : public QObject
{
    Q_OBJECT

private slots:
    void everyFilterGivesTheExactSize_data();
    void everyFilterGivesTheExactSize();
    void unknownFilterAndEmptyInput();
    void nearestSteps();
    void bilinear();
    void epxRules_data();
    void epxRules();
    void epx32BitComparesWholePixels();
    void epxPassesByFactor_data();
    void epxPassesByFactor();
    void hq2xKeepsFlatAreas();
    void hq2xSoftensASinglePixel();
    void hq2xSmoothsADiagonal();
    void hq2xSoftensACheckerboard();
    void hq2xFollowsAnEdgeOfTwoSteps();
    void hq2xTreatsEveryDirectionAlike();
    void hqFiltersKeepIndexedPictures_data();
    void hqFiltersKeepIndexedPictures();
    void rotationByZeroIsTheSamePicture();
    void rotationKeepsIndicesAndFills();
};

void ImageScalingTest::everyFilterGivesTheExactSize_data()
{
    QTest::addColumn<int>("filter");
    QTest::addColumn<QImage>("image");
    QTest::addColumn<QSize>("size");
    const struct
    {
        const char *name;
        QSize from;
        QSize to;
    } cases[] = {{"1x1 up", {1, 1}, {7, 5}},     {"1x1 same", {1, 1}, {1, 1}},     {"1xN", {1, 9}, {3, 20}},
                 {"Nx1 down", {12, 1}, {5, 1}},  {"non-square", {13, 7}, {29, 40}}, {"halved", {40, 30}, {20, 15}},
                 {"large", {300, 200}, {1000, 77}}, {"5x", {6, 4}, {30, 20}}};
    for (int filter = 0; filter < 6; ++filter) {
        for (const auto &c : cases) {
            for (QImage::Format format : {QImage::Format_Indexed8, QImage::Format_ARGB32}) {
                QTest::addRow("filter %d, %s, %s", filter, c.name, format == QImage::Format_Indexed8 ? "indexed" : "argb")
                    << filter << pattern(c.from.width(), c.from.height(), format) << c.to;
            }
        }
    }
}

void ImageScalingTest::everyFilterGivesTheExactSize()
{
    QFETCH(int, filter);
    QFETCH(QImage, image);
    QFETCH(QSize, size);
    Palette palette;
    const QImage result = resizeImage(image, size, palette.entries, ImageResizeFilter(filter));
    QCOMPARE(result.size(), size);
    QCOMPARE(result.format(), image.format());
}

void ImageScalingTest::unknownFilterAndEmptyInput()
{
    Palette palette;
    const QImage image = pattern(4, 4, QImage::Format_Indexed8);
    QVERIFY(resizeImage(image, QSize(8, 8), palette.entries, ImageResizeFilter(6)).isNull());
    QVERIFY(resizeImage(image, QSize(8, 8), palette.entries, ImageResizeFilter(-1)).isNull());
    QVERIFY(resizeImage(QImage(), QSize(8, 8), palette.entries, NearestNeighborFilter).isNull());
    QVERIFY(resizeImage(image, QSize(0, 8), palette.entries, BilinearFilter).isNull());
    QVERIFY(resizeImageNearest(image, QSize(5, -1)).isNull());
    QVERIFY(rotateImage(QImage(), 1, 0).isNull());
    QVERIFY(scaleEpx2x(QImage(2, 2, QImage::Format_RGB888)).isNull());
    QCOMPARE(imageResizeFilterName(HqBilinearFilter), "HQ + Bilinear");
    QCOMPARE(imageResizeFilterName(ImageResizeFilter(6)), nullptr);
}

void ImageScalingTest::nearestSteps()
{
    // 3 to 5 columns: steps of 39322/65536 reach columns 0 0 1 1 2; 2 to 3 rows: 0 0 1.
    const QImage source = indexed(3, 2, {1, 2, 3, 4, 5, 6});
    QCOMPARE(indicesOf(resizeImageNearest(source, QSize(5, 3))),
             QVector<int>({1, 1, 2, 2, 3, 1, 1, 2, 2, 3, 4, 4, 5, 5, 6}));
    // Halving takes every other pixel from the first; the step's extra 1 doesn't shift it.
    QCOMPARE(indicesOf(resizeImageNearest(indexed(4, 1, {7, 8, 9, 10}), QSize(2, 1))), QVector<int>({7, 9}));
    // A wide enlargement of one pixel never reads past it.
    QCOMPARE(indicesOf(resizeImageNearest(indexed(1, 1, {9}), QSize(400, 1))), QVector<int>(400, 9));
    // The colour table is the caller's business.
    QVERIFY(resizeImageNearest(source, QSize(3, 3)).colorTable().isEmpty());

    QImage argb(2, 1, QImage::Format_ARGB32);
    argb.setPixel(0, 0, qRgba(1, 2, 3, 4));
    argb.setPixel(1, 0, qRgba(5, 6, 7, 8));
    const QImage wide = resizeImageNearest(argb, QSize(4, 2));
    QCOMPARE(wide.format(), QImage::Format_ARGB32);
    QCOMPARE(wide.pixel(1, 1), qRgba(1, 2, 3, 4));
    QCOMPARE(wide.pixel(2, 0), qRgba(5, 6, 7, 8));
}

void ImageScalingTest::bilinear()
{
    QImage source(2, 1, QImage::Format_ARGB32);
    source.setPixel(0, 0, qRgba(0, 100, 201, 255));
    source.setPixel(1, 0, qRgba(100, 1, 50, 255));
    Palette palette;
    const QImage result = resizeImageBilinear(source, QSize(4, 1), palette.entries);
    QCOMPARE(result.format(), QImage::Format_ARGB32);
    QCOMPARE(result.pixel(0, 0), qRgba(0, 100, 201, 255));
    // Halfway: each channel truncated, 50.5 to 50 and 125.5 to 125.
    QCOMPARE(result.pixel(1, 0), qRgba(50, 50, 125, 255));
    // Past the last column the last pixel stands alone.
    QCOMPARE(result.pixel(2, 0), qRgba(100, 1, 50, 255));
    QCOMPARE(result.pixel(3, 0), qRgba(100, 1, 50, 255));

    // Vertically too, alpha included.
    QImage column(1, 2, QImage::Format_ARGB32);
    column.setPixel(0, 0, qRgba(0, 0, 0, 0));
    column.setPixel(0, 1, qRgba(200, 100, 50, 255));
    const QImage tall = resizeImageBilinear(column, QSize(1, 4), palette.entries);
    QCOMPARE(tall.pixel(0, 1), qRgba(100, 50, 25, 127));

    // Over a palette: entries 1 (16, 239, 80) and 3 (48, 207, 240) blend nearest to entry 2.
    const QImage blended = resizeImageBilinear(indexed(2, 1, {1, 3}), QSize(4, 1), palette.entries);
    QCOMPARE(blended.format(), QImage::Format_Indexed8);
    QCOMPARE(indicesOf(blended), QVector<int>({1, 2, 3, 3}));
}

void ImageScalingTest::epxRules_data()
{
    QTest::addColumn<QImage>("source");
    QTest::addColumn<int>("factor");
    QTest::addColumn<QVector<int>>("expected");
    // Only the corner pixel, where the same colour meets above and at its left, is cut.
    QTest::addRow("2x corner") << indexed(2, 2, {1, 2, 2, 2}) << 2
                               << QVector<int>{1, 1, 2, 2, 1, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2};
    // Above and below alike, or left and right: the four results are the pixel itself.
    QTest::addRow("2x cross") << indexed(3, 3, {0, 5, 0, 5, 1, 5, 0, 5, 0}) << 2
                              << QVector<int>{0, 0, 5, 5, 0, 0, 0, 5, 5, 5, 5, 0, 5, 5, 1, 1, 5, 5,
                                              5, 5, 1, 1, 5, 5, 0, 5, 5, 5, 5, 0, 0, 0, 5, 5, 0, 0};
    // Outside the picture a neighbour is the pixel itself: the top-right neighbour of the
    // corner is not the pixel beside it, and the right edge of the block stays 1.
    QVector<int> corner3x(36, 2);
    for (int i : {0, 1, 2, 6, 7, 8, 12, 13})
        corner3x[i] = 1;
    QTest::addRow("3x corner") << indexed(2, 2, {1, 2, 2, 2}) << 3 << corner3x;
}

void ImageScalingTest::epxRules()
{
    QFETCH(QImage, source);
    QFETCH(int, factor);
    QFETCH(QVector<int>, expected);
    const QImage result = factor == 2 ? scaleEpx2x(source) : scaleEpx3x(source);
    QCOMPARE(result.size(), source.size() * factor);
    QCOMPARE(indicesOf(result), expected);
    QCOMPARE(result.colorTable(), source.colorTable());
}

void ImageScalingTest::epx32BitComparesWholePixels()
{
    // Colours that share red, green and blue but not alpha are different pixels.
    QImage source(2, 2, QImage::Format_ARGB32);
    source.setPixel(0, 0, qRgba(10, 10, 10, 255));
    source.setPixel(1, 0, qRgba(10, 10, 10, 128));
    source.setPixel(0, 1, qRgba(10, 10, 10, 128));
    source.setPixel(1, 1, qRgba(10, 10, 10, 128));
    const QImage result = scaleEpx2x(source);
    QCOMPARE(result.format(), QImage::Format_ARGB32);
    QCOMPARE(result.pixel(0, 0), qRgba(10, 10, 10, 255));
    QCOMPARE(result.pixel(1, 1), qRgba(10, 10, 10, 128));
    QCOMPARE(result.pixel(1, 0), qRgba(10, 10, 10, 255));
}

void ImageScalingTest::epxPassesByFactor_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("passes"); // 2: one 2x pass; 3: one 3x pass; 4: two 2x passes
    QTest::addColumn<bool>("exact");
    QTest::addRow("exactly 2x") << QSize(14, 10) << 2 << true;
    QTest::addRow("1.5x") << QSize(10, 8) << 2 << false;
    QTest::addRow("halved") << QSize(3, 3) << 2 << false;
    QTest::addRow("exactly 3x") << QSize(21, 15) << 3 << true;
    QTest::addRow("wider than tall") << QSize(20, 5) << 3 << false;
    QTest::addRow("exactly 4x") << QSize(28, 20) << 4 << true;
    QTest::addRow("5x") << QSize(35, 25) << 4 << false;
}

void ImageScalingTest::epxPassesByFactor()
{
    QFETCH(QSize, size);
    QFETCH(int, passes);
    QFETCH(bool, exact);
    const QImage source = pattern(7, 5, QImage::Format_Indexed8);
    const QImage enlarged =
        passes == 2 ? scaleEpx2x(source) : passes == 3 ? scaleEpx3x(source) : scaleEpx2x(scaleEpx2x(source));
    QCOMPARE(enlarged.size() == size, exact);
    Palette palette;
    const QImage nearest = resizeImage(source, size, palette.entries, EpxNearestFilter);
    QCOMPARE(indicesOf(nearest), indicesOf(exact ? enlarged : resizeImageNearest(enlarged, size)));
    const QImage bilinear = resizeImage(source, size, palette.entries, EpxBilinearFilter);
    QCOMPARE(indicesOf(bilinear), indicesOf(exact ? enlarged : resizeImageBilinear(enlarged, size, palette.entries)));
}

void ImageScalingTest::hq2xKeepsFlatAreas()
{
    const auto flat = hq2xOf(pictureOf(3, 4, [](int, int) { return 0x80406080u; }));
    QCOMPARE(flat, pictureOf(6, 8, [](int, int) { return 0x80406080u; }));
    // Colours too near to tell apart are no edge: the quarters beside the seam blend
    // with both sides, (2E + S + T) / 4, the outer quarters keep their own colour.
    const auto result = hq2xOf(pictureOf(5, 3, [](int x, int) { return x < 2 ? 0xFF808080u : 0xFF828282u; }));
    for (int y = 0; y < 6; ++y) {
        QCOMPARE(result.at(y).at(3), 0xFF808080u);
        QCOMPARE(result.at(y).at(4), 0xFF818181u);
        QCOMPARE(result.at(y).at(0), 0xFF808080u);
        QCOMPARE(result.at(y).at(9), 0xFF828282u);
    }
}

void ImageScalingTest::hq2xSoftensASinglePixel()
{
    const auto result = hq2xOf(pictureOf(5, 5, [](int x, int y) { return x == 2 && y == 2 ? light : dark; }));
    // The dot keeps fourteen sixteenths of itself in each of its four pixels.
    const quint32 dot = weigh(light, 14, dark, 2, 4);
    for (int y = 0; y < 10; ++y) {
        for (int x = 0; x < 10; ++x) {
            const bool inside = (x == 4 || x == 5) && (y == 4 || y == 5);
            QCOMPARE(result.at(y).at(x), inside ? dot : dark);
        }
    }
}

void ImageScalingTest::hq2xSmoothsADiagonal()
{
    // Light above the diagonal, dark on and below it: the steps fill with half tones.
    const auto result = hq2xOf(pictureOf(8, 8, [](int x, int y) { return x > y ? light : dark; }));
    const quint32 half = weigh(light, 2, dark, 2, 2);
    for (int k = 1; k < 6; ++k) {
        // The dark pixel on the diagonal: its top-right quarter.
        QCOMPARE(result.at(2 * k).at(2 * k + 1), half);
        QCOMPARE(result.at(2 * k).at(2 * k), dark);
        QCOMPARE(result.at(2 * k + 1).at(2 * k + 1), dark);
        // The light pixel beside it: its bottom-left quarter.
        QCOMPARE(result.at(2 * k + 1).at(2 * k + 2), half);
        QCOMPARE(result.at(2 * k).at(2 * k + 2), light);
        QCOMPARE(result.at(2 * k + 1).at(2 * k + 3), light);
    }
}

void ImageScalingTest::hq2xSoftensACheckerboard()
{
    const auto result = hq2xOf(pictureOf(6, 6, [](int x, int y) { return (x + y) % 2 ? light : dark; }));
    // Inside, each pixel keeps six eighths of itself in all four quarters.
    for (int y = 2; y < 10; ++y) {
        for (int x = 2; x < 10; ++x) {
            const bool isLight = ((x / 2) + (y / 2)) % 2;
            QCOMPARE(result.at(y).at(x), isLight ? weigh(light, 6, dark, 2, 3) : weigh(dark, 6, light, 2, 3));
        }
    }
}

void ImageScalingTest::hq2xFollowsAnEdgeOfTwoSteps()
{
    // A dark pixel under a light row that turns down at its left: the edge runs through the
    // top-left quarter, which leans strongly to the light side, and the top-right leans a
    // little.
    const auto rows = pictureOf(5, 5, [](int x, int y) { return y < 1 || (y == 1 && x < 2) ? light : dark; });
    const auto result = hq2xOf(rows);
    // The pixel at (2, 1): light above, above-right and left; dark elsewhere.
    QCOMPARE(result.at(2).at(4), weigh(dark, 2, light, 6, 3));
    QCOMPARE(result.at(2).at(5), weigh(dark, 6, light, 2, 3));
    QCOMPARE(result.at(3).at(4), dark);
    QCOMPARE(result.at(3).at(5), dark);
}

void ImageScalingTest::hq2xTreatsEveryDirectionAlike()
{
    // Random pictures of four colours: turning the picture and enlarging it gives the
    // enlargement turned.
    QRandomGenerator random(17);
    const quint32 colours[] = {light, dark, 0xFF20C020, 0x80E02020};
    for (int round = 0; round < 20; ++round) {
        const int width = 1 + random.bounded(9);
        const int height = 1 + random.bounded(9);
        const auto picture = pictureOf(width, height, [&](int, int) { return colours[random.bounded(4)]; });
        QCOMPARE(hq2xOf(turned(picture)), turned(hq2xOf(picture)));
    }
}

void ImageScalingTest::hqFiltersKeepIndexedPictures_data()
{
    QTest::addColumn<int>("filter");
    QTest::addColumn<QSize>("size");
    // From 9 x 6: hq2x, hq3x and hq4x exactly, and each of them followed by a plain filter.
    const QSize sizes[] = {{18, 12}, {27, 18}, {36, 24}, {13, 7}, {20, 17}, {40, 30}};
    for (ImageResizeFilter filter : {HqNearestFilter, HqBilinearFilter}) {
        for (QSize size : sizes)
            QTest::addRow("filter %d to %dx%d", int(filter), size.width(), size.height()) << int(filter) << size;
    }
}

void ImageScalingTest::hqFiltersKeepIndexedPictures()
{
    QFETCH(int, filter);
    QFETCH(QSize, size);
    Palette palette;
    const QImage source = pattern(9, 6, QImage::Format_Indexed8);
    const QImage result = resizeImage(source, size, palette.entries, ImageResizeFilter(filter));
    QCOMPARE(result.size(), size);
    QCOMPARE(result.format(), QImage::Format_Indexed8);
    QVector<QRgb> table;
    for (const RGBA &entry : palette.entries)
        table << entry.toQRgb();
    QCOMPARE(result.colorTable(), table);

    // The same picture in colour takes the same road; its pixels, matched against the
    // palette, are the indices of the indexed result.
    const QImage colour = resizeImage(pattern(9, 6, QImage::Format_ARGB32), size, palette.entries,
                                      ImageResizeFilter(filter));
    const bool exact = size.width() % 9 == 0 && size.height() == size.width() / 9 * 6;
    if (exact || filter == HqNearestFilter) {
        const PaletteObject nearest(&palette.entries);
        QVector<int> expected;
        for (int y = 0; y < size.height(); ++y) {
            for (int x = 0; x < size.width(); ++x)
                expected << nearest.index(RGBA(colour.pixel(x, y)));
        }
        QCOMPARE(indicesOf(result), expected);
    }

    // A flat picture stays flat, whatever the factor.
    QImage flat(4, 4, QImage::Format_Indexed8);
    flat.setColorTable({qRgb(0, 0, 0), qRgb(255, 255, 255)});
    flat.fill(5);
    const QImage enlarged = resizeImage(flat, size / 2, palette.entries, ImageResizeFilter(filter));
    QCOMPARE(indicesOf(enlarged), QVector<int>(enlarged.width() * enlarged.height(), 5));
}

void ImageScalingTest::rotationByZeroIsTheSamePicture()
{
    for (QImage::Format format : {QImage::Format_Indexed8, QImage::Format_ARGB32, QImage::Format_RGB32}) {
        const QImage source = pattern(9, 4, format);
        QCOMPARE(rotateImage(source, 0, 0), source);
    }
}

void ImageScalingTest::rotationKeepsIndicesAndFills()
{
    const QImage source = pattern(12, 7, QImage::Format_Indexed8);
    const QVector<int> before = indicesOf(source);
    const QImage turned = rotateImage(source, float(M_PI / 6), 15);
    QVERIFY(turned.width() > 12 && turned.height() > 7);
    QCOMPARE(turned.format(), QImage::Format_Indexed8);
    const QVector<int> after = indicesOf(turned);
    // Every index came from the picture or is the fill; the corners lie outside it.
    for (int index : after)
        QVERIFY(index == 15 || before.contains(index));
    QCOMPARE(turned.pixelIndex(turned.width() - 1, 0), 15);
    QVERIFY(after.count(15) < after.size());

    // In a 32-bit picture the fill is a colour.
    const QImage argb = rotateImage(pattern(12, 7, QImage::Format_ARGB32), float(M_PI / 6), qRgba(1, 2, 3, 4));
    QCOMPARE(argb.size(), turned.size());
    QCOMPARE(argb.pixel(argb.width() - 1, 0), qRgba(1, 2, 3, 4));

    // A quarter turn swaps the sides.
    const QImage quarter = rotateImage(pattern(12, 7, QImage::Format_Indexed8), float(M_PI / 2), 0);
    QCOMPARE(quarter.size(), QSize(7, 12));
}

QTEST_MAIN(ImageScalingTest)
#include "tst_imagescaling.moc"
