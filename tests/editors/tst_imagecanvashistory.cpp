// The layer list under Qt's model tester, and random runs of canvas edits with undo and
// redo, each state compared with the snapshot taken when it was first reached.
#include "editors/sprite/commands/rasterlayeredit.h"
#include "editors/sprite/imagepainter.h"

#include "imagecanvastestsupport.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QUndoStack>
#include <QtTest>

#include <cmath>

using namespace Ovra;
using namespace CanvasTest;

class ImageCanvasHistoryTest : public QObject
{
    Q_OBJECT

private slots:
    void layersModelUnderTester();
    void randomCommandsUndoAndRedo_data();
    void randomCommandsUndoAndRedo();
};

void ImageCanvasHistoryTest::layersModelUnderTester()
{
    ImageCanvas canvas;
    canvas.setImage(QImage(4, 4, QImage::Format_ARGB32));
    ImageLayers *model = canvas.layers();
    QAbstractItemModelTester tester(model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    QSignalSpy moved(model, &QAbstractItemModel::rowsMoved);
    QSignalSpy dataChanged(model, &QAbstractItemModel::dataChanged);
    canvas.addLayer(0);
    canvas.addLayer(1);
    canvas.addLayer(3);
    QCOMPARE(model->rowCount(), 4);
    QVERIFY(canvas.moveLayer(0, 3));
    QVERIFY(canvas.moveLayer(2, 1));
    QCOMPARE(moved.count(), 2);
    QVERIFY(model->setData(model->index(1), QStringLiteral("sky"), Qt::EditRole));
    QCOMPARE(model->data(model->index(1), Qt::DisplayRole).toString(), QStringLiteral("sky"));
    QVERIFY(dataChanged.count() > 0);
    QCOMPARE(model->data(model->index(1), 10).toInt(), int(Qt::Checked));
    QVERIFY(model->setData(model->index(1), Qt::Unchecked, Qt::CheckStateRole));
    QVERIFY(!canvas.layers()->at(1)->isVisible());
    QCOMPARE(model->data(model->index(1), Qt::CheckStateRole).toInt(), int(Qt::Unchecked));
    QVERIFY(model->flags(model->index(1)) & Qt::ItemIsEditable);
    QVERIFY(model->flags(model->index(1)) & Qt::ItemIsUserCheckable);
    QVERIFY(canvas.deleteLayer(2));
    QVERIFY(canvas.duplicateLayer(0));
    // Every step back and forth again under the tester.
    while (canvas.undoStack()->canUndo())
        canvas.undoStack()->undo();
    QCOMPARE(model->rowCount(), 1);
    while (canvas.undoStack()->canRedo())
        canvas.undoStack()->redo();
    QCOMPARE(model->rowCount(), 4);
    QCOMPARE(model->data(model->index(2), Qt::DisplayRole).toString(), QStringLiteral("sky"));
    QVERIFY(canvas.mergeAll());
    QCOMPARE(model->rowCount(), 1);
    canvas.clear();
    QCOMPARE(model->rowCount(), 0);
    QVERIFY(!model->data(model->index(0), Qt::DisplayRole).isValid());
}

void ImageCanvasHistoryTest::randomCommandsUndoAndRedo_data()
{
    QTest::addColumn<quint32>("seed");
    QTest::addColumn<bool>("indexed");
    for (quint32 seed = 1; seed <= 8; ++seed)
        QTest::addRow("seed %u", seed) << seed << (seed % 2 == 1);
}

namespace {

// The canvas edits the random run picks from, each checking what it can of its own result
// in `expected` (which starts as the state before it).
struct Runner
{
    ImageCanvas &canvas;
    QRandomGenerator &random;

    int row() { return canvas.layers()->count() ? random.bounded(canvas.layers()->count()) : 0; }

    void stroke(Snapshot &expected)
    {
        if (!canvas.layers()->count())
            return;
        const int at = row();
        auto *layer = raster(canvas, at);
        const QImage before = layer->image();
        ImagePainter *painter = canvas.painter();
        painter->setImage(layer->imagePointer());
        painter->setColor(canvas.format() == 1 ? random.generate() : random.bounded(256));
        painter->setSize(1 + random.bounded(3));
        const QSize size = canvas.size();
        painter->drawLine(QPoint(random.bounded(size.width()), random.bounded(size.height())),
                          QPoint(random.bounded(size.width()), random.bounded(size.height())));
        painter->setImage(nullptr);
        if (layer->image() != before)
            canvas.undoStack()->push(new RasterLayerEdit(layer, before, true));
        expected.layers[at].image = layer->image();
    }

    void step(int choice, Snapshot &expected)
    {
        const int count = canvas.layers()->count();
        QVector<LayerState> &layers = expected.layers;
        const int at = row();
        switch (choice) {
        case 0: {
            const int place = random.bounded(count + 1);
            if (canvas.addLayer(place)) {
                layers.insert(place, {QStringLiteral("Layer %1").arg(count + 1), true,
                                      int(QPainter::CompositionMode_SourceOver), 1.0, raster(canvas, place)->image()});
            }
            break;
        }
        case 1:
            if (count > 1 && canvas.deleteLayer(at))
                layers.remove(at);
            break;
        case 2:
            if (count) {
                layers[at].name = QStringLiteral("n%1").arg(random.bounded(3));
                canvas.renameLayer(at, layers[at].name);
            }
            break;
        case 3:
            if (count) {
                layers[at].opacity = random.bounded(3) * 0.5;
                canvas.setLayerOpacity(at, layers[at].opacity);
            }
            break;
        case 4:
            if (count) {
                layers[at].mode = int(blendModeOfEntry(random.bounded(13)));
                canvas.setLayerBlendMode(at, QPainter::CompositionMode(layers[at].mode));
            }
            break;
        case 5: {
            const int to = row();
            if (count > 1 && canvas.moveLayer(at, to))
                layers.move(at, to);
            break;
        }
        case 6:
            stroke(expected);
            break;
        case 7: {
            const bool horizontal = random.bounded(2);
            canvas.flip(horizontal, !horizontal);
            for (LayerState &layer : layers)
                layer.image = layer.image.mirrored(horizontal, !horizontal);
            break;
        }
        default:
            wholePicture(choice, expected);
        }
    }

    void wholePicture(int choice, Snapshot &expected)
    {
        switch (choice) {
        case 8: {
            const QSize size(4 + random.bounded(12), 4 + random.bounded(12));
            canvas.setSize(size, QPoint(-65536, 0), random.bounded(256));
            expected.size = size;
            break;
        }
        case 9:
            if (canvas.crop(nullptr))
                expected.size = canvas.size();
            break;
        case 10:
            canvas.rotate(float(M_PI / 2), 0);
            expected.size = canvas.size();
            break;
        case 11: {
            const int format = random.bounded(2);
            canvas.setFormat(format, true);
            expected.format = format;
            break;
        }
        case 12: {
            const QSize size(3 + random.bounded(14), 3 + random.bounded(14));
            canvas.resize(size, ImageResizeFilter(random.bounded(2)));
            expected.size = size;
            break;
        }
        case 13:
            if (random.bounded(2) ? canvas.mergeVisible() : canvas.mergeAll())
                expected = snapshot(canvas);
            break;
        }
        // The pixels of the whole-picture edits are the business of their own tests; here
        // each must leave every layer on the canvas's size and format.
        const Snapshot now = snapshot(canvas);
        QCOMPARE(now.names(), expected.names());
        for (int i = 0; i < now.layers.size(); ++i) {
            expected.layers[i].image = now.layers.at(i).image;
            QCOMPARE(now.layers.at(i).image.size(), canvas.size());
            QCOMPARE(now.layers.at(i).image.format() == QImage::Format_Indexed8, canvas.format() == 0);
        }
    }
};

} // namespace

void ImageCanvasHistoryTest::randomCommandsUndoAndRedo()
{
    QFETCH(quint32, seed);
    QFETCH(bool, indexed);
    ImageCanvas canvas;
    fillPalette(*canvas.palette(), seed);
    QRandomGenerator random(seed);
    if (indexed) {
        canvas.setImage(indexedPicture(QSize(12, 9), *canvas.palette(), random, 256));
    } else {
        QImage picture(12, 9, QImage::Format_ARGB32);
        picture.fill(0);
        picture.setPixel(4, 3, qRgba(9, 8, 7, 255));
        canvas.setImage(picture);
    }
    QUndoStack *stack = canvas.undoStack();
    QVector<Snapshot> history{snapshot(canvas)};
    int undos = 0;
    int redos = 0;
    int edits = 0;
    for (int i = 0; i < 300; ++i) {
        const int choice = random.bounded(18);
        const int index = stack->index();
        if (choice >= 14 && stack->canUndo()) {
            // A few steps back, then some of them forward again, before the next edit
            // throws the rest away.
            const int back = 1 + random.bounded(3);
            for (int k = 0; k < back && stack->canUndo(); ++k) {
                stack->undo();
                ++undos;
                QVERIFY2(snapshot(canvas) == history.at(stack->index()), qPrintable(QStringLiteral("undo at step %1").arg(i)));
            }
            const int forward = random.bounded(back + 1);
            for (int k = 0; k < forward && stack->canRedo(); ++k) {
                stack->redo();
                ++redos;
                QVERIFY2(snapshot(canvas) == history.at(stack->index()), qPrintable(QStringLiteral("redo at step %1").arg(i)));
            }
            continue;
        }
        Snapshot expected = history.at(index);
        Runner{canvas, random}.step(choice % 14, expected);
        if (QTest::currentTestFailed())
            return;
        const Snapshot now = snapshot(canvas);
        QVERIFY2(now == expected, qPrintable(QStringLiteral("step %1, edit %2: %3, expected %4")
                                                 .arg(i).arg(choice % 14).arg(describe(now), describe(expected))));
        if (stack->index() != index) {
            QCOMPARE(stack->index(), index + 1);
            history.resize(index + 1);
            history.append(now);
            ++edits;
        }
        QCOMPARE(stack->count(), history.size() - 1);
    }
    // The run has to have exercised the stack, or it proves nothing.
    QVERIFY2(edits > 100 && undos > 20 && redos > 10, qPrintable(QStringLiteral("%1 edits, %2 undos, %3 redos").arg(edits).arg(undos).arg(redos)));
    // All the way back to the start and forward to the end.
    while (stack->canUndo())
        stack->undo();
    QVERIFY(snapshot(canvas) == history.first());
    while (stack->canRedo())
        stack->redo();
    QVERIFY(snapshot(canvas) == history.at(stack->index()));
}

QTEST_GUILESS_MAIN(ImageCanvasHistoryTest)

#include "tst_imagecanvashistory.moc"
