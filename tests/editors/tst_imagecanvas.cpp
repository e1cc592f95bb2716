#include "editors/sprite/commands/rasterlayeredit.h"
#include "editors/sprite/imagepainter.h"
#include "editors/sprite/indexpainter.h"
#include "editors/sprite/rgbapainter.h"

#include "imagecanvastestsupport.h"

#include <QSignalSpy>
#include <QUndoStack>
#include <QtTest>

#include <cmath>

using namespace Ovra;
using namespace CanvasTest;

namespace {

// The composition of an indexed canvas computed the plain way: the colours of each pixel
// from the top, transparent ones left out, down to the first opaque one; an opaque top
// pixel keeps its index, anything else is mixed bottom up by halves and looked up.
uchar referencePixel(const QVector<QImage> &topFirst, const PaletteObject &palette, int x, int y)
{
    QVector<uchar> indices;
    for (const QImage &image : topFirst) {
        const uchar index = image.constScanLine(y)[x];
        if (palette.at(index).alpha == 0)
            continue;
        indices << index;
        if (palette.at(index).alpha == 255)
            break;
    }
    if (indices.isEmpty())
        return 0;
    if (indices.size() == 1 && palette.at(indices.first()).alpha == 255)
        return indices.first();
    const auto half = [](int low, int high) {
        const int difference = high - low;
        return low + (difference >= 0 ? difference / 2 : -((-difference + 1) / 2));
    };
    const RGBA bottom = palette.at(indices.last());
    int channels[4] = {bottom.red, bottom.green, bottom.blue, bottom.alpha};
    for (int i = indices.size() - 2; i >= 0; --i) {
        const RGBA above = palette.at(indices.at(i));
        const int aboveChannels[4] = {above.red, above.green, above.blue, above.alpha};
        for (int c = 0; c < 4; ++c)
            channels[c] = half(channels[c], aboveChannels[c]);
    }
    return palette.index(RGBA(quint8(channels[0]), quint8(channels[1]), quint8(channels[2]), quint8(channels[3])));
}

} // namespace

class ImageCanvasTest : public QObject
{
    Q_OBJECT

private slots:
    void blendBox_data();
    void blendBox();
    void blendBoxOutsideTheBox();
    void zoom_data();
    void zoom();
    void namesOfNewLayers();
    void firstRedoFlag();
    void setFormatWithoutUndo();
    void setFormatUndoable();
    void resizeToSameSizePushesNothing();
    void resizeCentres_data();
    void resizeCentres();
    void cropReportsOffset();
    void cropWithNothingToCut();
    void rotateAndScaleFollowTheImageFunctions();
    void macroTexts_data();
    void macroTexts();
    void indexedCompositionMatchesReference_data();
    void indexedCompositionMatchesReference();
    void rgbaCompositionUsesModes();
    void partsComposeAsTheWhole_data();
    void partsComposeAsTheWhole();
    void changedAreaOnlyWhileTold();
    void mergeVisibleKeepsHidden();
    void mergeAllDropsHidden();
    void remapFollowsNewPalette();
    void selectionMask();
    void badInputIsRefused();
};

void ImageCanvasTest::blendBox_data()
{
    QTest::addColumn<int>("entry");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("label");
    QTest::newRow("normal") << 0 << int(QPainter::CompositionMode_SourceOver) << "Normal";
    QTest::newRow("add") << 1 << int(QPainter::CompositionMode_Plus) << "Add";
    QTest::newRow("multiply") << 2 << int(QPainter::CompositionMode_Multiply) << "Multiply";
    QTest::newRow("overlay is 15") << 4 << 15 << "Overlay";
    QTest::newRow("color dodge") << 7 << int(QPainter::CompositionMode_ColorDodge) << "Color Dodge";
    QTest::newRow("soft light") << 10 << int(QPainter::CompositionMode_SoftLight) << "Soft Light";
    QTest::newRow("exclusion, the last") << 12 << int(QPainter::CompositionMode_Exclusion) << "Exclusion";
}

void ImageCanvasTest::blendBox()
{
    QFETCH(int, entry);
    QFETCH(int, mode);
    QFETCH(QString, label);
    QCOMPARE(int(blendModeOfEntry(entry)), mode);
    QCOMPARE(blendEntryOfMode(QPainter::CompositionMode(mode)), entry);
    QCOMPARE(blendEntryLabel(entry), label);
}

void ImageCanvasTest::blendBoxOutsideTheBox()
{
    QCOMPARE(int(BlendEntryCount), 13);
    QCOMPARE(blendModeOfEntry(13), QPainter::CompositionMode_SourceOver);
    QCOMPARE(blendModeOfEntry(-1), QPainter::CompositionMode_SourceOver);
    QCOMPARE(blendEntryOfMode(QPainter::CompositionMode_Xor), -1);
    QCOMPARE(blendEntryOfMode(QPainter::CompositionMode_Source), -1);
    QVERIFY(blendEntryLabel(13).isEmpty());
}

void ImageCanvasTest::zoom_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<double>("asked");
    QTest::addColumn<double>("scale");
    QTest::newRow("100 stays at 32") << QSize(64, 64) << 100.0 << 32.0;
    QTest::newRow("tiny picture at 100") << QSize(1, 1) << 100.0 << 32.0;
    QTest::newRow("tiny picture at 1") << QSize(2, 2) << 1.0 << 25.0;
    QTest::newRow("tiny picture at 20") << QSize(2, 2) << 20.0 << 25.0;
    QTest::newRow("the shorter side decides") << QSize(200, 10) << 1.0 << 5.0;
    QTest::newRow("just 50 pixels") << QSize(50, 300) << 1.0 << 1.0;
    QTest::newRow("one pixel short of 50") << QSize(49, 300) << 1.0 << 50.0 / 49.0;
    QTest::newRow("reduced below 50") << QSize(400, 400) << 0.1 << 0.125;
    QTest::newRow("a plain zoom") << QSize(100, 80) << 3.0 << 3.0;
}

void ImageCanvasTest::zoom()
{
    QFETCH(QSize, size);
    QFETCH(double, asked);
    QFETCH(double, scale);
    ImageCanvas canvas;
    canvas.setImage(QImage(size, QImage::Format_ARGB32));
    canvas.setScale(asked);
    QCOMPARE(canvas.scale(), scale);
}

void ImageCanvasTest::namesOfNewLayers()
{
    ImageCanvas canvas;
    canvas.setImage(QImage(8, 8, QImage::Format_ARGB32));
    QCOMPARE(canvas.layers()->at(0)->name(), QStringLiteral("Layer 1"));
    QVERIFY(canvas.addLayer(0));
    QCOMPARE(canvas.layers()->at(0)->name(), QStringLiteral("Layer 2"));
    canvas.setLayerOpacity(1, 0.25);
    canvas.setLayerBlendMode(1, QPainter::CompositionMode_Screen);
    ImageLayer *copy = canvas.duplicateLayer(1);
    QVERIFY(copy);
    QCOMPARE(canvas.layers()->indexOf(copy), 1);
    QCOMPARE(copy->name(), QStringLiteral("Layer 1 copy"));
    QCOMPARE(copy->opacity(), 0.25);
    QCOMPARE(copy->blendMode(), QPainter::CompositionMode_Screen);
    QCOMPARE(static_cast<RasterLayer *>(copy)->image(), raster(canvas, 2)->image());
}

void ImageCanvasTest::firstRedoFlag()
{
    ImageCanvas canvas;
    QImage picture(4, 4, QImage::Format_ARGB32);
    picture.fill(qRgb(1, 2, 3));
    canvas.setImage(picture);
    RasterLayer *layer = raster(canvas, 0);
    QImage other(4, 4, QImage::Format_ARGB32);
    other.fill(qRgb(9, 9, 9));
    // Made after the change: the push leaves the layer alone.
    canvas.undoStack()->push(new RasterLayerEdit(layer, other, true));
    QCOMPARE(layer->image(), picture);
    canvas.undoStack()->undo();
    QCOMPARE(layer->image(), other);
    canvas.undoStack()->redo();
    QCOMPARE(layer->image(), picture);
    // Made before the change: the push makes it.
    canvas.undoStack()->push(new RasterLayerEdit(layer, other, false));
    QCOMPARE(layer->image(), other);
    canvas.undoStack()->undo();
    QCOMPARE(layer->image(), picture);
}

void ImageCanvasTest::setFormatWithoutUndo()
{
    ImageCanvas canvas;
    QRandomGenerator random(3);
    canvas.setImage(indexedPicture(QSize(6, 5), *canvas.palette(), random, 8));
    QVERIFY(dynamic_cast<IndexPainter *>(canvas.painter()));
    const QImage before = raster(canvas, 0)->image();
    QSignalSpy painterChanged(&canvas, &ImageCanvas::painterChanged);
    canvas.setFormat(1, false);
    QCOMPARE(canvas.format(), 1);
    QVERIFY(dynamic_cast<RGBAPainter *>(canvas.painter()));
    QCOMPARE(painterChanged.count(), 1);
    QCOMPARE(raster(canvas, 0)->image(), before);
    QCOMPARE(canvas.undoStack()->count(), 0);
    // The same format again keeps the painter.
    canvas.setFormat(1, false);
    QCOMPARE(painterChanged.count(), 1);
}

void ImageCanvasTest::setFormatUndoable()
{
    ImageCanvas canvas;
    fillPalette(*canvas.palette(), 11);
    QRandomGenerator random(4);
    canvas.setImage(indexedPicture(QSize(7, 3), *canvas.palette(), random, 256));
    const QImage before = raster(canvas, 0)->image();
    canvas.setFormat(1, true);
    const QImage converted = raster(canvas, 0)->image();
    QCOMPARE(converted.format(), QImage::Format_ARGB32);
    for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < 7; ++x)
            QCOMPARE(converted.pixel(x, y), canvas.palette()->at(before.constScanLine(y)[x]).toQRgb());
    }
    QCOMPARE(canvas.undoStack()->count(), 1);
    canvas.undoStack()->undo();
    QCOMPARE(canvas.format(), 0);
    QVERIFY(dynamic_cast<IndexPainter *>(canvas.painter()));
    QCOMPARE(raster(canvas, 0)->image(), before);
    canvas.undoStack()->redo();
    QCOMPARE(canvas.format(), 1);
    QVERIFY(dynamic_cast<RGBAPainter *>(canvas.painter()));
    QCOMPARE(raster(canvas, 0)->image(), converted);
}

void ImageCanvasTest::resizeToSameSizePushesNothing()
{
    ImageCanvas canvas;
    canvas.setImage(QImage(9, 4, QImage::Format_ARGB32));
    raster(canvas, 0)->resize(QSize(9, 4), QPoint(3, 3), 0xFFFFFFFF);
    QCOMPARE(canvas.undoStack()->count(), 0);
    canvas.setSize(QSize(9, 4), QPoint(0, 0), 0);
    QCOMPARE(canvas.undoStack()->count(), 0);
}

void ImageCanvasTest::resizeCentres_data()
{
    QTest::addColumn<bool>("indexed");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QPoint>("position");
    QTest::addColumn<QPoint>("placed");
    QTest::newRow("centred, larger") << false << QSize(9, 8) << QPoint(-65536, 0) << QPoint(2, 2);
    QTest::newRow("centred, odd difference rounds down") << true << QSize(8, 7) << QPoint(-65536, 99) << QPoint(1, 1);
    QTest::newRow("centred, smaller, shifts round down") << true << QSize(2, 2) << QPoint(-70000, 0) << QPoint(-2, -1);
    QTest::newRow("-65535 is a place") << false << QSize(9, 8) << QPoint(-65535, 1) << QPoint(-65535, 1);
    QTest::newRow("at a place") << true << QSize(6, 6) << QPoint(1, -1) << QPoint(1, -1);
}

void ImageCanvasTest::resizeCentres()
{
    QFETCH(bool, indexed);
    QFETCH(QSize, size);
    QFETCH(QPoint, position);
    QFETCH(QPoint, placed);
    ImageCanvas canvas;
    QImage picture(5, 4, indexed ? QImage::Format_Indexed8 : QImage::Format_ARGB32);
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 5; ++x) {
            if (indexed)
                picture.scanLine(y)[x] = uchar(1 + y * 5 + x);
            else
                picture.setPixel(x, y, qRgba(x, y, 7, 255));
        }
    }
    canvas.setImage(picture);
    const uint fill = indexed ? 0x1234569Au : 0x80102030u;
    raster(canvas, 0)->resize(size, position, fill);
    QCOMPARE(canvas.undoStack()->count(), 1);
    const QImage result = raster(canvas, 0)->image();
    QCOMPARE(result.size(), size);
    QCOMPARE(result.format(), picture.format());
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const QPoint from = QPoint(x, y) - placed;
            const bool inside = picture.rect().contains(from);
            const uint expected = inside ? (indexed ? picture.constScanLine(from.y())[from.x()] : picture.pixel(from))
                                         : (indexed ? 0x9Au : fill);
            const uint actual = indexed ? result.constScanLine(y)[x] : result.pixel(x, y);
            QCOMPARE(actual, expected);
        }
    }
    canvas.undoStack()->undo();
    QCOMPARE(raster(canvas, 0)->image(), picture);
}

void ImageCanvasTest::cropReportsOffset()
{
    ImageCanvas canvas;
    QImage picture(20, 16, QImage::Format_ARGB32);
    picture.fill(0);
    picture.setPixel(5, 4, qRgba(1, 1, 1, 255));
    canvas.setImage(picture);
    RasterLayer *second = static_cast<RasterLayer *>(canvas.addLayer(0));
    QImage upper = second->image();
    upper.setPixel(12, 9, qRgba(200, 0, 0, 100));
    second->setImage(upper);
    const Snapshot before = snapshot(canvas);
    QSignalSpy sized(&canvas, &ImageCanvas::sizeChanged);
    QPoint offset(-1, -1);
    QVERIFY(canvas.crop(&offset));
    QCOMPARE(offset, QPoint(5, 4));
    QCOMPARE(canvas.size(), QSize(8, 6));
    QCOMPARE(sized.count(), 1);
    QCOMPARE(raster(canvas, 1)->image().pixel(0, 0), qRgba(1, 1, 1, 255));
    QCOMPARE(raster(canvas, 0)->image().pixel(7, 5), qRgba(200, 0, 0, 100));
    QCOMPARE(raster(canvas, 0)->image().size(), QSize(8, 6));
    canvas.undoStack()->undo();
    QVERIFY(snapshot(canvas) == before);
}

void ImageCanvasTest::cropWithNothingToCut()
{
    ImageCanvas canvas;
    QImage empty(6, 6, QImage::Format_ARGB32);
    empty.fill(0);
    canvas.setImage(empty);
    QPoint offset(7, 7);
    QVERIFY(!canvas.crop(&offset));
    QCOMPARE(offset, QPoint(7, 7));
    QImage full(6, 6, QImage::Format_ARGB32);
    full.fill(qRgb(3, 3, 3));
    canvas.setImage(full);
    QVERIFY(!canvas.crop(&offset));
    QCOMPARE(canvas.undoStack()->count(), 0);
    QCOMPARE(canvas.size(), QSize(6, 6));
}

void ImageCanvasTest::rotateAndScaleFollowTheImageFunctions()
{
    ImageCanvas canvas;
    fillPalette(*canvas.palette(), 21);
    QRandomGenerator random(21);
    const QImage picture = indexedPicture(QSize(7, 4), *canvas.palette(), random, 256);
    canvas.setImage(picture);
    canvas.rotate(float(M_PI / 2), 3);
    const QImage rotated = rotateImage(picture, float(M_PI / 2), 3);
    QCOMPARE(canvas.size(), rotated.size());
    QCOMPARE(raster(canvas, 0)->image(), rotated);
    canvas.undoStack()->undo();
    QCOMPARE(canvas.size(), QSize(7, 4));
    QCOMPARE(raster(canvas, 0)->image(), picture);
    canvas.resize(QSize(14, 10), NearestNeighborFilter);
    QImage scaled = resizeImageNearest(picture, QSize(14, 10));
    scaled.setColorTable(picture.colorTable());
    QCOMPARE(canvas.size(), QSize(14, 10));
    QCOMPARE(raster(canvas, 0)->image(), scaled);
}

void ImageCanvasTest::macroTexts_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("crop") << "crop";
    QTest::newRow("flip") << "flip";
    QTest::newRow("resize") << "resize";
    QTest::newRow("rotate") << "rotate";
    QTest::newRow("setFormat") << "setFormat";
    QTest::newRow("setSize") << "setSize";
    QTest::newRow("mergeAll") << "mergeAll";
    QTest::newRow("mergeVisible") << "mergeVisible";
}

void ImageCanvasTest::macroTexts()
{
    QFETCH(QString, text);
    ImageCanvas canvas;
    QImage picture(10, 6, QImage::Format_ARGB32);
    picture.fill(0);
    picture.setPixel(3, 2, qRgb(50, 60, 70));
    canvas.setImage(picture);
    canvas.addLayer(0);
    const int before = canvas.undoStack()->count();
    if (text == QLatin1String("crop"))
        QVERIFY(canvas.crop(nullptr));
    else if (text == QLatin1String("flip"))
        canvas.flip(true, false);
    else if (text == QLatin1String("resize"))
        canvas.resize(QSize(20, 12), NearestNeighborFilter);
    else if (text == QLatin1String("rotate"))
        canvas.rotate(float(M_PI / 2), 0);
    else if (text == QLatin1String("setFormat"))
        canvas.setFormat(0, true);
    else if (text == QLatin1String("setSize"))
        canvas.setSize(QSize(12, 12), QPoint(-65536, 0), 0);
    else if (text == QLatin1String("mergeAll"))
        QVERIFY(canvas.mergeAll());
    else
        QVERIFY(canvas.mergeVisible());
    QCOMPARE(canvas.undoStack()->count(), before + 1);
    QCOMPARE(canvas.undoStack()->text(before), text);
    for (const ImageLayer *layer : canvas.layers()->layers())
        QCOMPARE(static_cast<const RasterLayer *>(layer)->image().size(), canvas.size());
}

void ImageCanvasTest::indexedCompositionMatchesReference_data()
{
    QTest::addColumn<quint32>("seed");
    QTest::addColumn<int>("layers");
    for (quint32 seed = 1; seed <= 6; ++seed)
        QTest::addRow("seed %u", seed) << seed << int(1 + seed % 5);
}

void ImageCanvasTest::indexedCompositionMatchesReference()
{
    QFETCH(quint32, seed);
    QFETCH(int, layers);
    ImageCanvas canvas;
    fillPalette(*canvas.palette(), seed);
    QRandomGenerator random(seed * 7);
    const QSize size(23, 17);
    canvas.setImage(indexedPicture(size, *canvas.palette(), random, 256));
    for (int i = 1; i < layers; ++i) {
        auto *layer = static_cast<RasterLayer *>(canvas.addLayer(0));
        layer->setImage(indexedPicture(size, *canvas.palette(), random, 256));
        // Modes and opacity have no say in an indexed composition.
        layer->setBlendMode(blendModeOfEntry(random.bounded(13)));
        layer->setOpacity(random.bounded(1.0));
        layer->setVisible(random.bounded(4) != 0);
    }
    QVector<QImage> topFirst;
    for (const ImageLayer *layer : canvas.layers()->layers()) {
        if (layer->isVisible())
            topFirst << static_cast<const RasterLayer *>(layer)->image();
    }
    const QImage composed = canvas.composed();
    QCOMPARE(composed.format(), QImage::Format_Indexed8);
    QCOMPARE(composed.size(), size);
    QCOMPARE(composed.color(5), canvas.palette()->at(5).toQRgb());
    int mixed = 0;
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const uchar expected = referencePixel(topFirst, *canvas.palette(), x, y);
            if (composed.constScanLine(y)[x] != expected)
                QFAIL(qPrintable(QStringLiteral("pixel %1,%2: %3, not %4").arg(x).arg(y).arg(composed.constScanLine(y)[x]).arg(expected)));
            const uchar top = topFirst.isEmpty() ? 0 : topFirst.first().constScanLine(y)[x];
            mixed += canvas.palette()->at(top).alpha % 255 != 0;
        }
    }
    if (!topFirst.isEmpty())
        QVERIFY2(mixed > 0, "the pictures should have mixed pixels to compare");
}

void ImageCanvasTest::rgbaCompositionUsesModes()
{
    ImageCanvas canvas;
    QImage bottom(3, 1, QImage::Format_ARGB32);
    bottom.fill(qRgb(200, 100, 50));
    canvas.setImage(bottom);
    auto *top = static_cast<RasterLayer *>(canvas.addLayer(0));
    QImage picture = top->image();
    picture.setPixel(0, 0, qRgb(128, 255, 0));
    picture.setPixel(1, 0, qRgb(10, 20, 30));
    top->setImage(picture);
    canvas.setLayerBlendMode(0, blendModeOfEntry(2));
    QImage composed = canvas.composed();
    QCOMPARE(composed.format(), QImage::Format_ARGB32);
    const auto near = [](QRgb actual, int r, int g, int b) {
        return qAbs(qRed(actual) - r) <= 1 && qAbs(qGreen(actual) - g) <= 1 && qAbs(qBlue(actual) - b) <= 1;
    };
    QVERIFY(near(composed.pixel(0, 0), 100, 100, 0));
    QVERIFY(near(composed.pixel(2, 0), 200, 100, 50));
    canvas.setLayerBlendMode(0, QPainter::CompositionMode_SourceOver);
    canvas.setLayerOpacity(0, 0.5);
    composed = canvas.composed();
    QVERIFY(near(composed.pixel(1, 0), 105, 60, 40));
    canvas.layers()->at(0)->setVisible(false);
    QVERIFY(near(canvas.composed().pixel(1, 0), 200, 100, 50));
}

void ImageCanvasTest::partsComposeAsTheWhole_data()
{
    QTest::addColumn<bool>("trueColour");
    QTest::addColumn<QRect>("area");
    QTest::addColumn<QRect>("expected");
    for (bool trueColour : {false, true}) {
        const char *kind = trueColour ? "true colour" : "indexed";
        QTest::addRow("%s inside", kind) << trueColour << QRect(3, 2, 9, 7) << QRect(3, 2, 9, 7);
        QTest::addRow("%s one pixel", kind) << trueColour << QRect(22, 16, 1, 1) << QRect(22, 16, 1, 1);
        QTest::addRow("%s over the edge", kind) << trueColour << QRect(-4, 10, 12, 20) << QRect(0, 10, 8, 7);
        QTest::addRow("%s outside", kind) << trueColour << QRect(30, 30, 4, 4) << QRect();
    }
}

// A part composes to the same pixels as that part of the whole, held to the canvas.
void ImageCanvasTest::partsComposeAsTheWhole()
{
    QFETCH(bool, trueColour);
    QFETCH(QRect, area);
    QFETCH(QRect, expected);
    ImageCanvas canvas;
    fillPalette(*canvas.palette(), 3);
    QRandomGenerator random(21);
    const QSize size(23, 17);
    for (int i = 0; i < 3; ++i) {
        const QImage picture = indexedPicture(size, *canvas.palette(), random, 256);
        if (i == 0) {
            canvas.setImage(trueColour ? picture.convertToFormat(QImage::Format_ARGB32) : picture);
        } else {
            auto *layer = static_cast<RasterLayer *>(canvas.addLayer(0));
            layer->setImage(trueColour ? picture.convertToFormat(QImage::Format_ARGB32) : picture);
            canvas.setLayerOpacity(0, 0.6);
        }
    }
    const QImage part = canvas.composed(area);
    QCOMPARE(part.isNull(), expected.isNull());
    if (!expected.isNull())
        QCOMPARE(part, canvas.composed().copy(expected));
}

// The changed area is told with the signal of a layer's change, and forgotten after it.
void ImageCanvasTest::changedAreaOnlyWhileTold()
{
    ImageCanvas canvas;
    canvas.setImage(QImage(8, 8, QImage::Format_ARGB32));
    auto *layer = static_cast<RasterLayer *>(canvas.layers()->at(0));
    QList<QRect> told;
    connect(&canvas, &ImageCanvas::changed, this, [&] { told << canvas.changedArea(); });
    layer->changed(QRect(2, 3, 4, 1));
    layer->changed();
    canvas.setLayerOpacity(0, 0.5);
    QCOMPARE(told, QList<QRect>({QRect(2, 3, 4, 1), QRect(), QRect()}));
    QCOMPARE(canvas.changedArea(), QRect());
}

void ImageCanvasTest::mergeVisibleKeepsHidden()
{
    ImageCanvas canvas;
    fillPalette(*canvas.palette(), 5);
    QRandomGenerator random(9);
    canvas.setImage(indexedPicture(QSize(8, 8), *canvas.palette(), random, 256));
    for (int i = 0; i < 3; ++i)
        static_cast<RasterLayer *>(canvas.addLayer(0))->setImage(indexedPicture(QSize(8, 8), *canvas.palette(), random, 256));
    // Rows: Layer 4 (hidden), Layer 3, Layer 2 (hidden), Layer 1.
    canvas.layers()->at(0)->setVisible(false);
    canvas.layers()->at(2)->setVisible(false);
    const QImage expected = canvas.composed();
    const Snapshot before = snapshot(canvas);
    QVERIFY(canvas.mergeVisible());
    QCOMPARE(snapshot(canvas).names(), QStringList({"Layer 4", "Layer 3", "Layer 2"}));
    QCOMPARE(raster(canvas, 1)->image(), expected);
    QVERIFY(!canvas.layers()->at(0)->isVisible());
    QVERIFY(!canvas.layers()->at(2)->isVisible());
    canvas.undoStack()->undo();
    QVERIFY(snapshot(canvas) == before);
    canvas.undoStack()->redo();
    QCOMPARE(raster(canvas, 1)->image(), expected);
}

void ImageCanvasTest::mergeAllDropsHidden()
{
    ImageCanvas canvas;
    QImage picture(5, 5, QImage::Format_ARGB32);
    picture.fill(qRgba(0, 0, 255, 255));
    canvas.setImage(picture);
    canvas.addLayer(0);
    canvas.addLayer(0);
    canvas.layers()->at(0)->setVisible(false);
    canvas.renameLayer(1, QStringLiteral("middle"));
    QVERIFY(canvas.mergeAll());
    QCOMPARE(canvas.layers()->count(), 1);
    QCOMPARE(canvas.layers()->at(0)->name(), QStringLiteral("middle"));
    QCOMPARE(raster(canvas, 0)->image().pixel(2, 2), qRgba(0, 0, 255, 255));
    for (int i = 0; i < 3; ++i)
        canvas.layers()->at(0)->setVisible(false);
    QVERIFY(!canvas.mergeAll());
    QVERIFY(!canvas.mergeVisible());
}

void ImageCanvasTest::remapFollowsNewPalette()
{
    ImageCanvas canvas;
    RGBA colors[256];
    RGBA reversed[256];
    for (int i = 0; i < 256; ++i) {
        colors[i] = RGBA(quint8(i), quint8(255 - i), quint8(i / 2), 255);
        reversed[255 - i] = colors[i];
    }
    canvas.palette()->fromPalette(colors);
    QRandomGenerator random(2);
    const QImage picture = indexedPicture(QSize(9, 9), *canvas.palette(), random, 256);
    canvas.setImage(picture);
    canvas.remap(reversed);
    const QImage result = raster(canvas, 0)->image();
    for (int y = 0; y < 9; ++y) {
        for (int x = 0; x < 9; ++x)
            QCOMPARE(int(result.constScanLine(y)[x]), 255 - picture.constScanLine(y)[x]);
    }
    QCOMPARE(result.color(0), reversed[0].toQRgb());
    canvas.undoStack()->undo();
    QCOMPARE(raster(canvas, 0)->image(), picture);
}

void ImageCanvasTest::selectionMask()
{
    ImageCanvas canvas;
    canvas.setImage(QImage(4, 3, QImage::Format_ARGB32));
    QVERIFY(canvas.isSelected(3, 2));
    QVERIFY(!canvas.isSelected(4, 0));
    QSignalSpy changed(&canvas, &ImageCanvas::selectionChanged);
    QByteArray mask(12, 0);
    mask[1 * 4 + 2] = 1;
    QVERIFY(canvas.setSelection(mask));
    QCOMPARE(changed.count(), 1);
    QVERIFY(canvas.isSelected(2, 1));
    QVERIFY(!canvas.isSelected(1, 2));
    QVERIFY(!canvas.setSelection(QByteArray(11, 1)));
    QCOMPARE(canvas.selection(), mask);
    // The painter asks the same mask.
    QVERIFY(canvas.painter()->selection());
    QCOMPARE(*canvas.painter()->selection(), mask);
    canvas.setSize(QSize(5, 5), QPoint(0, 0), 0);
    QVERIFY(!canvas.hasSelection());
}

void ImageCanvasTest::badInputIsRefused()
{
    ImageCanvas canvas;
    QVERIFY(!canvas.addLayer(0));
    QVERIFY(!canvas.crop(nullptr));
    canvas.flip(true, true);
    canvas.rotate(1.0f, 0);
    QVERIFY(!canvas.mergeAll());
    QCOMPARE(canvas.composed().isNull(), true);
    canvas.setImage(QImage());
    QCOMPARE(canvas.layers()->count(), 0);
    canvas.setImage(QImage(3, 3, QImage::Format_RGB32));
    QCOMPARE(canvas.format(), 1);
    QCOMPARE(raster(canvas, 0)->image().format(), QImage::Format_ARGB32);
    QVERIFY(!canvas.addLayer(2));
    QVERIFY(!canvas.addLayer(-1));
    QVERIFY(!canvas.duplicateLayer(1));
    QVERIFY(!canvas.deleteLayer(1));
    QVERIFY(!canvas.moveLayer(0, 1));
    QVERIFY(!canvas.renameLayer(5, QStringLiteral("x")));
    QVERIFY(!canvas.setLayerOpacity(-1, 0.5));
    QCOMPARE(canvas.undoStack()->count(), 0);
    canvas.setSize(QSize(0, 4), QPoint(), 0);
    canvas.resize(QSize(-1, 4), BilinearFilter);
    canvas.resize(QSize(6, 6), ImageResizeFilter(9));
    QCOMPARE(raster(canvas, 0)->image().size(), QSize(3, 3));
    QVERIFY(canvas.setLayerOpacity(0, 7.0));
    QCOMPARE(canvas.layers()->at(0)->opacity(), 1.0);
}

QTEST_GUILESS_MAIN(ImageCanvasTest)

#include "tst_imagecanvas.moc"
