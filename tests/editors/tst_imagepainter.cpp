#include "editors/sprite/imagepainter.h"
#include "editors/sprite/indexpainter.h"
#include "editors/sprite/rgbapainter.h"
#include "image/paletteobject.h"

#include <QRandomGenerator>
#include <QSet>
#include <QtTest>

#include <cmath>
#include <functional>
#include <memory>

using namespace Ovra;

namespace {

using PointSet = QSet<QPair<int, int>>;

QImage blankIndexed(int width, int height, uchar value = 0)
{
    QImage image(width, height, QImage::Format_Indexed8);
    image.setColorCount(256);
    image.fill(value);
    return image;
}

// The points where the painter wrote, found by painting on a blank picture.
PointSet written(const QImage &image, uint blank)
{
    PointSet points;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const uint value = image.depth() == 8 ? image.constScanLine(y)[x] : image.pixel(x, y);
            if (value != blank)
                points.insert({x, y});
        }
    }
    return points;
}

PointSet changedPoints(const QImage &before, const QImage &after)
{
    PointSet points;
    for (int y = 0; y < before.height(); ++y) {
        for (int x = 0; x < before.width(); ++x) {
            const bool differs = before.depth() == 8 ? before.constScanLine(y)[x] != after.constScanLine(y)[x]
                                                     : before.pixel(x, y) != after.pixel(x, y);
            if (differs)
                points.insert({x, y});
        }
    }
    return points;
}

// The contiguous fill told the plain way, as a breadth-first search: from the start, a
// pixel joins through its column when it has the target value and isn't protected, and
// from the side only when it also is selected. With the start itself protected nothing
// is filled.
PointSet referenceFill(const std::function<uint(int, int)> &pixel, const std::function<bool(int, int)> &selected,
                       QSize size, QPoint start, bool protect)
{
    PointSet filled;
    const uint target = pixel(start.x(), start.y());
    const auto isProtected = [&](int x, int y) { return protect && pixel(x, y) < 1; };
    if (isProtected(start.x(), start.y()))
        return filled;
    QVector<QPoint> queue{start};
    filled.insert({start.x(), start.y()});
    for (int i = 0; i < queue.size(); ++i) {
        const QPoint p = queue.at(i);
        const QPoint column[] = {{p.x(), p.y() - 1}, {p.x(), p.y() + 1}};
        const QPoint side[] = {{p.x() - 1, p.y()}, {p.x() + 1, p.y()}};
        for (const QPoint &next : column) {
            if (next.y() >= 0 && next.y() < size.height() && !filled.contains({next.x(), next.y()})
                && pixel(next.x(), next.y()) == target && !isProtected(next.x(), next.y())) {
                filled.insert({next.x(), next.y()});
                queue << next;
            }
        }
        for (const QPoint &next : side) {
            if (next.x() >= 0 && next.x() < size.width() && !filled.contains({next.x(), next.y()})
                && pixel(next.x(), next.y()) == target && selected(next.x(), next.y())) {
                filled.insert({next.x(), next.y()});
                queue << next;
            }
        }
    }
    return filled;
}

// Blobs of a few values, so that the regions have holes and narrow passages.
QImage patchyIndexed(QSize size, QRandomGenerator &random)
{
    QImage image = blankIndexed(size.width(), size.height());
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            image.scanLine(y)[x] = uchar(random.bounded(10) < 6 ? 1 : random.bounded(3));
    }
    return image;
}

QByteArray patchySelection(QSize size, QRandomGenerator &random)
{
    QByteArray mask(size.width() * size.height(), 1);
    // A few unselected boxes and a stray unselected pixel here and there.
    for (int box = 0; box < 3; ++box) {
        const QRect r(random.bounded(size.width()), random.bounded(size.height()), 1 + random.bounded(6), 1 + random.bounded(size.height()));
        for (int y = r.top(); y <= r.bottom() && y < size.height(); ++y) {
            for (int x = r.left(); x <= r.right() && x < size.width(); ++x)
                mask[y * size.width() + x] = 0;
        }
    }
    for (int i = 0; i < size.width(); ++i)
        mask[random.bounded(mask.size())] = 0;
    return mask;
}

} // namespace

class ImagePainterTest : public QObject
{
    Q_OBJECT

private slots:
    void defaults();
    void drawPointPen_data();
    void drawPointPen();
    void drawPointHonoursSelectionAndProtection();
    void drawLineSteps_data();
    void drawLineSteps();
    void drawLineProperties();
    void drawLineFarOutsideEnds();
    void contiguousFillMatchesReference_data();
    void contiguousFillMatchesReference();
    void contiguousFillOnTrueColour();
    void fillOfTheColourItselfDoesNothing();
    void nonContiguousFill();
    void remapReplacesMappedColoursOnly();
    void remapFillThatCannotChangeEnds();
    void rgbaRemapByNearestIndex();
    void wrongOrMissingPicture();
};

void ImagePainterTest::defaults()
{
    IndexPainter index;
    RGBAPainter rgba;
    QCOMPARE(index.color(), 255u);
    QCOMPARE(rgba.color(), 255u);
    QCOMPARE(index.size(), 1);
    index.setColor(0x1234u);
    QCOMPARE(index.color(), 0x34u);
    rgba.setColor(0x80123456u);
    QCOMPARE(rgba.color(), 0x80123456u);
    index.setSize(0);
    QCOMPARE(index.size(), 1);
    index.setSize(500);
    QCOMPARE(index.size(), 128);
}

void ImagePainterTest::drawPointPen_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<QPoint>("point");
    QTest::addColumn<int>("count");
    QTest::newRow("one pixel") << 1 << QPoint(3, 3) << 1;
    QTest::newRow("square of three") << 3 << QPoint(2, 2) << 9;
    QTest::newRow("cut at the right and bottom") << 4 << QPoint(6, 7) << 2 * 1;
    QTest::newRow("cut at the left and top") << 3 << QPoint(-1, -2) << 2 * 1;
    QTest::newRow("wholly outside") << 2 << QPoint(-5, 3) << 0;
}

void ImagePainterTest::drawPointPen()
{
    QFETCH(int, size);
    QFETCH(QPoint, point);
    QFETCH(int, count);
    QImage image = blankIndexed(8, 8);
    IndexPainter painter;
    painter.setImage(&image);
    painter.setColor(7);
    painter.setSize(size);
    painter.drawPoint(point);
    const PointSet points = written(image, 0);
    QCOMPARE(points.size(), count);
    for (const auto &p : points) {
        QVERIFY(p.first >= point.x() && p.first < point.x() + size);
        QVERIFY(p.second >= point.y() && p.second < point.y() + size);
        QCOMPARE(image.constScanLine(p.second)[p.first], uchar(7));
    }
}

void ImagePainterTest::drawPointHonoursSelectionAndProtection()
{
    QImage image = blankIndexed(4, 4, 3);
    image.scanLine(1)[1] = 0;
    QByteArray mask(16, 1);
    mask[2 * 4 + 2] = 0;
    bool protect = true;
    IndexPainter painter;
    painter.setImage(&image);
    painter.setSelection(&mask);
    painter.setProtectFirst(&protect);
    painter.setColor(9);
    painter.setSize(4);
    painter.drawPoint(QPoint(0, 0));
    QCOMPARE(image.constScanLine(1)[1], uchar(0));
    QCOMPARE(image.constScanLine(2)[2], uchar(3));
    QCOMPARE(written(image, 9).size(), 2);
    // Protection is read through the pointer each time.
    protect = false;
    painter.drawPoint(QPoint(0, 0));
    QCOMPARE(image.constScanLine(1)[1], uchar(9));
    QCOMPARE(image.constScanLine(2)[2], uchar(3));
}

void ImagePainterTest::drawLineSteps_data()
{
    // Worked by hand from the rule: the error of the short axis starts at half its own
    // difference and the short axis steps when it reaches the long difference.
    QTest::addColumn<QPoint>("from");
    QTest::addColumn<QPoint>("to");
    QTest::addColumn<QVector<QPoint>>("points");
    QTest::newRow("flat") << QPoint(0, 0) << QPoint(4, 1)
                          << QVector<QPoint>{{0, 0}, {1, 0}, {2, 0}, {3, 0}, {4, 1}};
    QTest::newRow("steep") << QPoint(0, 0) << QPoint(1, 3) << QVector<QPoint>{{0, 0}, {0, 1}, {0, 2}, {1, 3}};
    QTest::newRow("two short steps") << QPoint(0, 0) << QPoint(5, 2)
                                     << QVector<QPoint>{{0, 0}, {1, 0}, {2, 1}, {3, 1}, {4, 1}, {5, 2}};
    QTest::newRow("backwards") << QPoint(5, 2) << QPoint(0, 0)
                               << QVector<QPoint>{{5, 2}, {4, 2}, {3, 1}, {2, 1}, {1, 1}, {0, 0}};
    QTest::newRow("diagonal") << QPoint(3, 0) << QPoint(0, 3) << QVector<QPoint>{{3, 0}, {2, 1}, {1, 2}, {0, 3}};
    QTest::newRow("a point") << QPoint(2, 2) << QPoint(2, 2) << QVector<QPoint>{{2, 2}};
}

void ImagePainterTest::drawLineSteps()
{
    QFETCH(QPoint, from);
    QFETCH(QPoint, to);
    QFETCH(QVector<QPoint>, points);
    QImage image = blankIndexed(8, 8);
    IndexPainter painter;
    painter.setImage(&image);
    painter.drawLine(from, to);
    PointSet expected;
    for (const QPoint &p : points)
        expected.insert({p.x(), p.y()});
    QCOMPARE(written(image, 0), expected);
}

void ImagePainterTest::drawLineProperties()
{
    // Any line: one pixel a step of the long axis, both ends, no gaps, and never further than
    // a pixel from the true line.
    QRandomGenerator random(17);
    for (int i = 0; i < 300; ++i) {
        const QPoint from(random.bounded(40), random.bounded(40));
        const QPoint to(random.bounded(40), random.bounded(40));
        QImage image = blankIndexed(40, 40);
        IndexPainter painter;
        painter.setImage(&image);
        painter.drawLine(from, to);
        const PointSet points = written(image, 0);
        const int dx = qAbs(to.x() - from.x());
        const int dy = qAbs(to.y() - from.y());
        QCOMPARE(points.size(), qMax(dx, dy) + 1);
        QVERIFY(points.contains({from.x(), from.y()}));
        QVERIFY(points.contains({to.x(), to.y()}));
        const double length = std::hypot(double(dx), double(dy));
        for (const auto &p : points) {
            if (length > 0) {
                const double cross = double(to.x() - from.x()) * (p.second - from.y()) - double(to.y() - from.y()) * (p.first - from.x());
                QVERIFY(std::abs(cross) / length <= 1.0);
            }
            if (p != qMakePair(from.x(), from.y())) {
                bool touches = false;
                for (int ny = -1; ny <= 1 && !touches; ++ny) {
                    for (int nx = -1; nx <= 1 && !touches; ++nx)
                        touches = (nx || ny) && points.contains({p.first + nx, p.second + ny});
                }
                QVERIFY(touches);
            }
        }
    }
}

void ImagePainterTest::drawLineFarOutsideEnds()
{
    QImage image = blankIndexed(10, 10);
    IndexPainter painter;
    painter.setImage(&image);
    // A line from far away through the picture still crosses it, and ends.
    painter.drawLine(QPoint(-2000000000, 5), QPoint(2000000000, 5));
    QCOMPARE(written(image, 0).size(), 10);
}

void ImagePainterTest::contiguousFillMatchesReference_data()
{
    QTest::addColumn<quint32>("seed");
    QTest::addColumn<bool>("withSelection");
    QTest::addColumn<bool>("protect");
    for (quint32 seed = 1; seed <= 12; ++seed)
        QTest::addRow("seed %u", seed) << seed << (seed % 3 != 0) << (seed % 2 == 0);
}

void ImagePainterTest::contiguousFillMatchesReference()
{
    QFETCH(quint32, seed);
    QFETCH(bool, withSelection);
    QFETCH(bool, protect);
    QRandomGenerator random(seed);
    const QSize size(31, 23);
    for (int round = 0; round < 20; ++round) {
        QImage image = patchyIndexed(size, random);
        const QImage original = image;
        const QByteArray mask = withSelection ? patchySelection(size, random) : QByteArray();
        const QPoint start(random.bounded(size.width()), random.bounded(size.height()));
        IndexPainter painter;
        painter.setImage(&image);
        painter.setSelection(&mask);
        painter.setProtectFirst(&protect);
        painter.setColor(200);
        painter.floodFill(start, true);
        const auto pixel = [&](int x, int y) { return uint(original.constScanLine(y)[x]); };
        const auto selected = [&](int x, int y) { return mask.isEmpty() || mask.at(y * size.width() + x) != 0; };
        const PointSet expected = referenceFill(pixel, selected, size, start, protect);
        const PointSet filled = changedPoints(original, image);
        QCOMPARE(filled, expected);
        for (const auto &p : filled)
            QCOMPARE(image.constScanLine(p.second)[p.first], uchar(200));
    }
}

void ImagePainterTest::contiguousFillOnTrueColour()
{
    QRandomGenerator random(44);
    const QRgb colours[] = {qRgb(1, 2, 3), qRgba(0, 0, 0, 0), qRgb(9, 9, 9)};
    QImage image(17, 13, QImage::Format_ARGB32);
    for (int y = 0; y < 13; ++y) {
        for (int x = 0; x < 17; ++x)
            image.setPixel(x, y, colours[random.bounded(10) < 7 ? 0 : random.bounded(3)]);
    }
    const QByteArray mask = patchySelection(image.size(), random);
    int filledInAll = 0;
    for (int round = 0; round < 8; ++round) {
        QImage copy = image;
        const QPoint start(random.bounded(17), random.bounded(13));
        RGBAPainter painter;
        painter.setImage(&copy);
        painter.setSelection(&mask);
        painter.setColor(qRgb(250, 0, 0));
        painter.floodFill(start, true);
        const auto pixel = [&](int x, int y) { return uint(image.pixel(x, y)); };
        const auto selected = [&](int x, int y) { return mask.at(y * 17 + x) != 0; };
        const PointSet expected = referenceFill(pixel, selected, image.size(), start, false);
        QCOMPARE(changedPoints(image, copy), expected);
        filledInAll += expected.size();
    }
    QVERIFY(filledInAll > 20);
}

void ImagePainterTest::fillOfTheColourItselfDoesNothing()
{
    QImage image = blankIndexed(5, 5, 4);
    const QImage original = image;
    IndexPainter painter;
    painter.setImage(&image);
    painter.setColor(4);
    painter.floodFill(QPoint(2, 2), true);
    painter.floodFill(QPoint(2, 2), false);
    QCOMPARE(image, original);
    painter.setColor(5);
    painter.floodFill(QPoint(7, 2), true);
    QCOMPARE(image, original);
}

void ImagePainterTest::nonContiguousFill()
{
    QRandomGenerator random(8);
    QImage image = patchyIndexed(QSize(12, 9), random);
    const QImage original = image;
    const QByteArray mask = patchySelection(image.size(), random);
    IndexPainter painter;
    painter.setImage(&image);
    painter.setSelection(&mask);
    painter.setColor(77);
    const uchar target = original.constScanLine(4)[6];
    painter.floodFill(QPoint(6, 4), false);
    for (int y = 0; y < 9; ++y) {
        for (int x = 0; x < 12; ++x) {
            const bool hit = original.constScanLine(y)[x] == target && mask.at(y * 12 + x);
            QCOMPARE(image.constScanLine(y)[x], hit ? uchar(77) : original.constScanLine(y)[x]);
        }
    }
}

void ImagePainterTest::remapReplacesMappedColoursOnly()
{
    QImage image = blankIndexed(6, 1);
    for (int x = 0; x < 6; ++x)
        image.scanLine(0)[x] = uchar(x);
    IndexPainter painter;
    painter.setImage(&image);
    painter.setRemap({{2, 12}, {4, 14}});
    painter.drawLine(QPoint(0, 0), QPoint(5, 0));
    const uchar expected[] = {0, 1, 12, 3, 14, 5};
    for (int x = 0; x < 6; ++x)
        QCOMPARE(image.constScanLine(0)[x], expected[x]);
    QCOMPARE(painter.remap().size(), 2);
}

void ImagePainterTest::remapFillThatCannotChangeEnds()
{
    // Index 1 has no entry in the map: writing leaves it, and the fill must still end.
    QImage image = blankIndexed(30, 30, 1);
    const QImage original = image;
    IndexPainter painter;
    painter.setImage(&image);
    painter.setRemap({{2, 3}});
    painter.setColor(9);
    painter.floodFill(QPoint(15, 15), true);
    QCOMPARE(image, original);
}

void ImagePainterTest::rgbaRemapByNearestIndex()
{
    RGBA colors[256];
    for (int i = 0; i < 256; ++i)
        colors[i] = RGBA(quint8(i), quint8(i), quint8(i), 255);
    PaletteObject palette(&colors);
    QImage image(3, 1, QImage::Format_ARGB32);
    image.setPixel(0, 0, qRgb(10, 10, 11)); // nearest entry 10
    image.setPixel(1, 0, qRgb(50, 50, 50));
    image.setPixel(2, 0, qRgb(9, 10, 10)); // nearest entry 10 too
    RGBAPainter painter;
    painter.setImage(&image);
    painter.setRemap({{10, qRgb(255, 0, 0)}});
    painter.drawLine(QPoint(0, 0), QPoint(2, 0));
    QCOMPARE(image.pixel(0, 0), qRgb(10, 10, 11)); // no palette, no look-up
    painter.setPalette(&palette);
    painter.drawLine(QPoint(0, 0), QPoint(2, 0));
    QCOMPARE(image.pixel(0, 0), qRgb(255, 0, 0));
    QCOMPARE(image.pixel(1, 0), qRgb(50, 50, 50));
    QCOMPARE(image.pixel(2, 0), qRgb(255, 0, 0));
}

void ImagePainterTest::wrongOrMissingPicture()
{
    IndexPainter index;
    RGBAPainter rgba;
    // No picture at all.
    index.drawLine(QPoint(0, 0), QPoint(5, 5));
    index.floodFill(QPoint(0, 0), true);
    QCOMPARE(index.pixel(0, 0), 0u);
    index.setPixel(0, 0);
    // A picture of the other kind is left as it is.
    QImage wide(4, 4, QImage::Format_ARGB32);
    wide.fill(qRgb(1, 1, 1));
    const QImage wideCopy = wide;
    index.setImage(&wide);
    index.drawLine(QPoint(0, 0), QPoint(3, 3));
    index.floodFill(QPoint(1, 1), true);
    QCOMPARE(wide, wideCopy);
    QImage narrow = blankIndexed(4, 4, 2);
    const QImage narrowCopy = narrow;
    rgba.setImage(&narrow);
    rgba.drawPoint(QPoint(1, 1));
    rgba.floodFill(QPoint(1, 1), false);
    QCOMPARE(narrow, narrowCopy);
    // A mask too short for the picture selects nothing past its end.
    QImage image = blankIndexed(4, 4);
    const QByteArray shortMask(6, 1);
    index.setImage(&image);
    index.setSelection(&shortMask);
    index.setColor(3);
    index.floodFill(QPoint(0, 0), false);
    QCOMPARE(written(image, 0).size(), 6);
}

QTEST_GUILESS_MAIN(ImagePainterTest)

#include "tst_imagepainter.moc"
