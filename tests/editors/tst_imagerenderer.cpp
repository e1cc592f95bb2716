// The view of the sprite painter on the OpenGL and the raster widget: where the picture
// stands, what a user sees of it (the pixels, the checker board under clear ones, the
// selection outline, the pen's square), and the middle button, the wheel and the canvas
// mover moving the view.
#include "../render/rendertestsupport.h"

#include "renderwindow.h"

#include "editors/sprite/imagecanvas.h"
#include "editors/sprite/imagelayer.h"
#include "editors/sprite/imagelayers.h"
#include "editors/sprite/imagepainter.h"
#include "editors/sprite/imagerenderer.h"
#include "editors/sprite/imagetools.h"
#include "editors/sprite/rasterlayer.h"
#include "image/paletteobject.h"

#include <QUndoStack>
#include <QWheelEvent>
#include <QtTest>

using namespace Ovra;

namespace {

const QSize pictureSize(40, 30);
const QSize viewSize(240, 200);
const QColor lightSquare(250, 250, 250);
const QColor darkSquare(204, 204, 204);

// Bottom: rows of colours 1 to 6 with a clear hole in the middle. Top: a disc of colour 7
// and a band of the half-clear colour 8.
QImage layerPicture(const QVector<QRgb> &table, bool top)
{
    QImage picture(pictureSize, QImage::Format_Indexed8);
    picture.setColorTable(table);
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            int index = 0;
            if (!top)
                index = QRect(14, 10, 12, 8).contains(x, y) ? 0 : 1 + (y / 5) % 6;
            else if ((x - 28) * (x - 28) + (y - 12) * (y - 12) < 40)
                index = 7;
            else if (x >= 4 && x < 12)
                index = 8;
            picture.setPixel(x, y, uint(index));
        }
    }
    return picture;
}

} // namespace

class ImageRendererTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void backEnds_data();
    void strokeRedrawsItsPart_data() { backEnds_data(); }
    void strokeRedrawsItsPart();
    void placeAndPixels();
    void placeAndPixels_data() { backEnds_data(); }
    void panAndZoom();
    void panAndZoom_data() { backEnds_data(); }
    void showOriginal();
    void screenshot();

private:
    bool show(bool openGL, QSize size = viewSize);
    QImage grab() const;
    QColor shown(const QImage &shot, QPoint pixel, QPoint inside = QPoint(2, 2)) const;
    void wheel(QPoint at, int delta);

    RGBA m_colors[256];
    std::unique_ptr<PaletteObject> m_palette;
    std::unique_ptr<ImageCanvas> m_canvas;
    std::unique_ptr<ImageRenderer> m_renderer;
    std::unique_ptr<QWidget> m_widget;
    QList<ImageTool *> m_tools;
    QPoint m_cursor;
};

void ImageRendererTest::initTestCase()
{
    for (int i = 0; i < 256; ++i)
        m_colors[i] = RGBA(quint8(30 + i * 29), quint8(200 - i * 23), quint8(60 + i * 47), 255);
    m_colors[0] = RGBA(0, 0, 0, 0);
    m_colors[7] = RGBA(240, 200, 30, 255);
    m_colors[8] = RGBA(30, 60, 240, 128);
}

void ImageRendererTest::init()
{
    m_palette.reset(new PaletteObject(&m_colors));
    m_canvas.reset(new ImageCanvas);
    m_canvas->setPalette(m_palette.get());
    QVector<QRgb> table;
    for (const RGBA &c : m_colors)
        table << c.toQRgb();
    m_canvas->setImage(layerPicture(table, false));
    ImageLayer *top = m_canvas->addLayer(0);
    static_cast<RasterLayer *>(top)->setImage(layerPicture(table, true));
    m_canvas->setScale(4);
    m_renderer.reset(new ImageRenderer);
    m_renderer->setCanvas(m_canvas.get());
    m_tools = createImageTools(m_canvas.get());
    connect(m_renderer.get(), &ImageRenderer::cursorChanged, this, [this](QPoint p) { m_cursor = p; });
}

void ImageRendererTest::cleanup()
{
    m_widget.reset();
    qDeleteAll(m_tools);
    m_tools.clear();
    m_renderer.reset();
    m_canvas.reset();
}

void ImageRendererTest::backEnds_data()
{
    QTest::addColumn<bool>("openGL");
    QTest::newRow("gl") << true;
    QTest::newRow("raster") << false;
}

bool ImageRendererTest::show(bool openGL, QSize size)
{
    m_widget = showRenderer(m_renderer.get(), openGL, size);
    if (!m_widget)
        return false;
    // The pointer may still stand where the last test left it, where a move brings no
    // event: it starts from a corner of the view.
    m_cursor = QPoint(-1000, -1000);
    QTest::mouseMove(m_widget.get(), QPoint(1, 1));
    QTest::mouseMove(m_widget.get(), QPoint(3, 3));
    const QPoint corner = m_renderer->pixelAt(QPoint(3, 3));
    return QTest::qWaitFor([&] { return m_cursor == corner; });
}

QImage ImageRendererTest::grab() const
{
    if (auto *gl = qobject_cast<GLRenderWidget *>(m_widget.get()))
        return gl->grabFramebuffer().convertToFormat(QImage::Format_RGB32);
    return m_widget->grab().toImage().convertToFormat(QImage::Format_RGB32);
}

QColor ImageRendererTest::shown(const QImage &shot, QPoint pixel, QPoint inside) const
{
    return shot.pixelColor(m_renderer->viewPoint(pixel).toPoint() + inside);
}

void ImageRendererTest::wheel(QPoint at, int delta)
{
    QWheelEvent event(at, m_widget->mapToGlobal(at), QPoint(), QPoint(0, delta), Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(m_widget.get(), &event);
}

// The picture stands in the middle at zoom 4; opaque pixels show their colour, clear ones
// the checker board, the outside the view's own colour; the outline runs along the edge
// of the selection and the pen's square stands one view pixel outside its pixels.
void ImageRendererTest::placeAndPixels()
{
    QFETCH(bool, openGL);
    QVERIFY(m_canvas->setSelection([] {
        QByteArray mask(pictureSize.width() * pictureSize.height(), '\0');
        for (int y = 3; y < 9; ++y)
            for (int x = 20; x < 36; ++x)
                mask[y * pictureSize.width() + x] = 1;
        return mask;
    }()));
    m_renderer->setTool(m_tools.at(6)); // the pen
    m_canvas->painter()->setSize(2);
    QVERIFY(show(openGL));
    QCOMPARE(m_renderer->offset(), QPointF(40, 40));
    QTest::mouseMove(m_widget.get(), QPoint(40 + 4 * 30 + 1, 40 + 4 * 24 + 3));
    QTRY_COMPARE(m_cursor, QPoint(30, 24));
    QCOMPARE(m_renderer->pixelAt(QPoint(39, 39)), QPoint(-1, -1));
    QTRY_VERIFY(shown(grab(), QPoint(30, 24), QPoint(-1, 2)) == QColor(Qt::black));

    const QImage shot = grab();
    QCOMPARE(shown(shot, QPoint(0, 0)), QColor(m_colors[1].toQRgb()));         // bottom layer
    QCOMPARE(shown(shot, QPoint(28, 12)), QColor(m_colors[7].toQRgb()));       // top layer
    QCOMPARE(shot.pixelColor(10, 10), m_renderer->clearColor());               // outside
    // Clear pixels show the board: one light and one dark square on the two sides of a line.
    const QColor a = shown(shot, QPoint(16, 12), QPoint(1, 1));
    const QColor b = shown(shot, QPoint(18, 12), QPoint(1, 1));
    QVERIFY(a == lightSquare || a == darkSquare);
    QVERIFY(b == lightSquare || b == darkSquare);
    QVERIFY(a != b);
    // Half-clear blue over colour 1: the canvas mixes them into the nearest entry, opaque here.
    const RGBA mixed = m_colors[m_canvas->composed().pixelIndex(6, 0)];
    QCOMPARE(mixed.alpha, quint8(255));
    QVERIFY(mixed != m_colors[1]);
    QCOMPARE(shown(shot, QPoint(6, 0)), QColor(mixed.toQRgb()));
    // The outline: the top edge of the selection at view row 40 + 12, the left at column 120.
    for (const QPoint p : {QPoint(40 + 80 + 5, 40 + 12), QPoint(40 + 80, 40 + 20)}) {
        const QColor edge = shot.pixelColor(p);
        QVERIFY2(edge == Qt::black || edge == Qt::white, qPrintable(edge.name()));
    }
    QCOMPARE(shown(shot, QPoint(25, 5)), QColor(m_colors[2].toQRgb()));       // inside: untouched
    // The pen square: 2 pixels of 4 view pixels plus 2, black, with white outside it.
    const QPoint corner = m_renderer->viewPoint(QPoint(30, 24)).toPoint();
    QCOMPARE(shot.pixelColor(corner + QPoint(-1, 3)), QColor(Qt::black));
    QCOMPARE(shot.pixelColor(corner + QPoint(8, 3)), QColor(Qt::black));
    QCOMPARE(shot.pixelColor(corner + QPoint(-2, 3)), QColor(Qt::white));
    QCOMPARE(shot.pixelColor(corner + QPoint(3, 3)), QColor(m_colors[5].toQRgb()));
}

// The middle button drags the view; the wheel zooms about the mouse; the canvas mover drags
// the view with the left button; fit and actual size keep to the canvas's bounds.
// A change told with its area is drawn from that part alone: the view shows what a full
// composition shows.
void ImageRendererTest::strokeRedrawsItsPart()
{
    QFETCH(bool, openGL);
    QVERIFY(show(openGL));
    auto *top = static_cast<RasterLayer *>(m_canvas->layers()->at(0));
    const QRect area(10, 6, 5, 3);
    top->imagePointer()->fill(4);
    top->changed(area); // the rest of the fill isn't told: it stays as it was on the view
    const QImage part = grab();
    QCOMPARE(shown(part, QPoint(12, 7)), QColor(m_colors[4].toQRgb()));
    top->changed();
    QTRY_COMPARE(shown(grab(), QPoint(2, 20)), QColor(m_colors[4].toQRgb()));
    QVERIFY(shown(part, QPoint(2, 20)) != QColor(m_colors[4].toQRgb()));
    const QImage whole = grab();
    for (const QPoint &inside : {QPoint(10, 6), QPoint(14, 8), QPoint(12, 7)})
        QCOMPARE(shown(part, inside), shown(whole, inside));
}

void ImageRendererTest::panAndZoom()
{
    QFETCH(bool, openGL);
    m_renderer->setTool(m_tools.at(6));
    QVERIFY(show(openGL));
    const QImage before = static_cast<const RasterLayer *>(m_canvas->layers()->at(0))->image();
    QTest::mouseMove(m_widget.get(), QPoint(100, 100));
    QTRY_COMPARE(m_cursor, QPoint(15, 15));
    QTest::mousePress(m_widget.get(), Qt::MiddleButton, {}, QPoint(100, 100));
    QTest::mouseMove(m_widget.get(), QPoint(110, 93));
    QTRY_COMPARE(m_renderer->offset(), QPointF(50, 33));
    QTest::mouseRelease(m_widget.get(), Qt::MiddleButton, {}, QPoint(110, 93));
    QCOMPARE(static_cast<const RasterLayer *>(m_canvas->layers()->at(0))->image(), before);
    QCOMPARE(m_canvas->undoStack()->count(), 1); // only the layer added in init

    const QPoint pixel = m_renderer->pixelAt(QPoint(110, 93));
    wheel(QPoint(110, 93), 120);
    QCOMPARE(m_canvas->scale(), 6.0);
    QCOMPARE(m_renderer->pixelAt(QPoint(110, 93)), pixel);
    wheel(QPoint(110, 93), -120);
    wheel(QPoint(110, 93), -120);
    QCOMPARE(m_canvas->scale(), 3.0);

    m_renderer->setTool(m_tools.at(0)); // the canvas mover
    const QPointF offset = m_renderer->offset();
    QTest::mousePress(m_widget.get(), Qt::LeftButton, {}, QPoint(110, 93));
    QTest::mouseMove(m_widget.get(), QPoint(90, 103));
    QTRY_COMPARE(m_renderer->offset(), offset + QPointF(-20, 10));
    QTest::mouseRelease(m_widget.get(), Qt::LeftButton, {}, QPoint(90, 103));

    m_renderer->zoomFit();
    QCOMPARE(m_canvas->scale(), 6.0); // 240 / 40 and 200 / 30: the smaller
    QCOMPARE(m_renderer->offset(), QPointF(0, 10));
    m_renderer->zoomActual();
    QCOMPARE(m_canvas->scale(), 50.0 / 30); // fewer than 50 pixels on the short side aren't shown
    m_renderer->addZoom();
    QCOMPARE(m_renderer->zoomFactor(), 2.0f);
}

// The original view shows the hidden layers too, and no selection or tool marks.
void ImageRendererTest::showOriginal()
{
    m_canvas->layers()->at(0)->setVisible(false);
    QVERIFY(show(false));
    const QPoint disc(28, 12);
    QCOMPARE(shown(grab(), disc), QColor(m_colors[3].toQRgb()));
    const int steps = m_canvas->undoStack()->count();
    m_renderer->setShowOriginal(true);
    QTRY_COMPARE(shown(grab(), disc), QColor(m_colors[7].toQRgb()));
    QVERIFY(!m_canvas->layers()->at(0)->isVisible());
    QCOMPARE(m_canvas->undoStack()->count(), steps);
}

// A layered indexed picture with a selection made by the magic wand and the pen's square,
// at zoom 8, written as imagerenderer.png next to the program.
void ImageRendererTest::screenshot()
{
    m_canvas->setScale(8);
    QVERIFY(show(true, QSize(400, 300)));
    m_renderer->setTool(m_tools.at(4)); // the wand, on the top layer
    m_canvas->painter()->setImage(static_cast<RasterLayer *>(m_canvas->layers()->at(0))->imagePointer());
    const QPoint onDisc = m_renderer->viewPoint(QPoint(28, 12)).toPoint() + QPoint(2, 2);
    QTest::mouseMove(m_widget.get(), onDisc);
    QTRY_COMPARE(m_cursor, QPoint(28, 12));
    QTest::mouseClick(m_widget.get(), Qt::LeftButton, {}, onDisc);
    QVERIFY(m_canvas->hasSelection());
    m_renderer->setTool(m_tools.at(6));
    m_canvas->painter()->setSize(3);
    const QPoint at = m_renderer->viewPoint(QPoint(8, 22)).toPoint() + QPoint(2, 2);
    QTest::mouseMove(m_widget.get(), at);
    QTRY_COMPARE(m_cursor, QPoint(8, 22));
    QTRY_COMPARE(grab().pixelColor(m_renderer->viewPoint(QPoint(8, 22)).toPoint() - QPoint(1, -2)),
                 QColor(Qt::black));
    const QImage shot = static_cast<GLRenderWidget *>(m_widget.get())->grabFramebuffer();
    QVERIFY(shot.save(picturePath(QStringLiteral("imagerenderer.png"))));
    // The outline stands on the disc's edge: left of its leftmost column.
    const QPoint edge = m_renderer->viewPoint(QPoint(22, 12)).toPoint();
    const QColor mark = shot.pixelColor(edge + QPoint(0, 2));
    QVERIFY2(mark == Qt::black || mark == Qt::white, qPrintable(mark.name()));
}

OVRA_GL_TEST_MAIN(ImageRendererTest)

#include "tst_imagerenderer.moc"
