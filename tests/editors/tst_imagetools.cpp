// The painting and selection tools as a user drives them: the mouse and the keys on a real
// render widget showing the canvas at zoom 4, the results checked against pictures and
// masks worked out here from the rules of each tool.
#include "../render/rendertestsupport.h"

#include "pixelsets.h"
#include "renderwindow.h"

#include "editors/sprite/imagecanvas.h"
#include "editors/sprite/imagelayers.h"
#include "editors/sprite/imagepainter.h"
#include "editors/sprite/imagerenderer.h"
#include "editors/sprite/imagetools.h"
#include "editors/sprite/rasterlayer.h"
#include "image/paletteobject.h"

#include <QCheckBox>
#include <QSlider>
#include <QUndoStack>
#include <QtTest>

using namespace Ovra;

Q_DECLARE_METATYPE(Qt::MouseButton)

namespace {

const QSize pictureSize(40, 30);
const QSize viewSize(240, 200);

// Six blocks of colours 0 to 5, 5 by 4 pixels each, so that one colour comes back in
// places that don't touch.
uchar patternAt(int x, int y)
{
    return uchar((x / 5 + (y / 4) * 3) % 6);
}

Pixels penLine(QPoint a, QPoint b, int size)
{
    return ::penLine(a, b, size, pictureSize);
}

// The first pixels where two pictures differ, for the failure message; empty when equal.
QString differences(const QImage &actual, const QImage &expected)
{
    if (actual.size() != expected.size() || actual.format() != expected.format())
        return QStringLiteral("size or format differ");
    QStringList found;
    for (int y = 0; y < actual.height() && found.size() < 8; ++y) {
        for (int x = 0; x < actual.width() && found.size() < 8; ++x) {
            if (actual.pixel(x, y) != expected.pixel(x, y))
                found << QStringLiteral("(%1,%2) %3 not %4").arg(x).arg(y).arg(actual.pixel(x, y), 0, 16).arg(expected.pixel(x, y), 0, 16);
        }
    }
    return found.join(QStringLiteral("; "));
}

#define COMPARE_PICTURES(actual, expected)                                                                     \
    do {                                                                                                       \
        const QString found = differences(actual, expected);                                                   \
        QVERIFY2(found.isEmpty(), qPrintable(found));                                                          \
    } while (false)

QByteArray maskOf(const Pixels &pixels)
{
    QByteArray mask(pictureSize.width() * pictureSize.height(), '\0');
    for (const QPoint &p : pixels)
        mask[p.y() * pictureSize.width() + p.x()] = '\1';
    return mask;
}

QByteArray boxMask(const QRect &box)
{
    Pixels pixels;
    for (int y = box.top(); y <= box.bottom(); ++y)
        for (int x = box.left(); x <= box.right(); ++x)
            pixels.insert(QPoint(x, y));
    return maskOf(pixels);
}

} // namespace

class ImageToolsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void toolTable();
    void penStroke_data();
    void penStroke();
    void penSizeKeys();
    void eraser_data();
    void eraser();
    void remapPen();
    void paintBucket_data();
    void paintBucket();
    void picker_data();
    void picker();
    void selectionTable_data();
    void selectionTable();
    void moveOnIndexedLayer();

private:
    bool show(bool openGL = false, bool trueColour = false);
    template<class Tool>
    Tool *take();
    QPoint viewOf(QPoint pixel) const;
    // Moves the real pointer and waits until the view reports the pixel.
    void moveTo(QPoint pixel);
    void stroke(const QVector<QPoint> &path, Qt::MouseButton button = Qt::LeftButton,
                Qt::KeyboardModifiers modifiers = {});
    QImage layerImage() const;
    QImage applied(const QImage &base, const Pixels &pixels, uint value) const;

    RGBA m_colors[256];
    std::unique_ptr<PaletteObject> m_palette;
    std::unique_ptr<ImageCanvas> m_canvas;
    std::unique_ptr<ImageRenderer> m_renderer;
    std::unique_ptr<QWidget> m_widget;
    QList<ImageTool *> m_tools;
    QPoint m_cursor;
    bool m_protect = false;
};

void ImageToolsTest::init()
{
    for (int i = 0; i < 256; ++i)
        m_colors[i] = RGBA(quint8(i * 37), quint8(i * 91 + 20), quint8(i * 53 + 40), 255);
    m_colors[0] = RGBA(0, 0, 0, 0);
    m_palette.reset(new PaletteObject(&m_colors));
    m_canvas.reset(new ImageCanvas);
    m_canvas->setPalette(m_palette.get());
    m_renderer.reset(new ImageRenderer);
    m_tools = createImageTools(m_canvas.get());
    m_protect = false;
    connect(m_renderer.get(), &ImageRenderer::cursorChanged, this, [this](QPoint p) { m_cursor = p; });
}

void ImageToolsTest::cleanup()
{
    m_widget.reset();
    qDeleteAll(m_tools);
    m_tools.clear();
    m_renderer.reset();
    m_canvas.reset();
}

bool ImageToolsTest::show(bool openGL, bool trueColour)
{
    QImage picture(pictureSize, QImage::Format_Indexed8);
    QVector<QRgb> table;
    for (const RGBA &c : m_colors)
        table << c.toQRgb();
    picture.setColorTable(table);
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            picture.setPixel(x, y, patternAt(x, y));
    m_canvas->setImage(trueColour ? picture.convertToFormat(QImage::Format_ARGB32) : picture);
    m_canvas->setScale(4);
    m_canvas->painter()->setProtectFirst(&m_protect);
    m_renderer->setCanvas(m_canvas.get());
    m_widget = showRenderer(m_renderer.get(), openGL, viewSize);
    if (!m_widget)
        return false;
    // The pointer may still stand where the last test left it: a move there would bring no
    // event, so it starts from a corner of the view.
    m_cursor = QPoint(-1000, -1000);
    QTest::mouseMove(m_widget.get(), QPoint(1, 1));
    QTest::mouseMove(m_widget.get(), QPoint(3, 3));
    const QPoint corner = m_renderer->pixelAt(QPoint(3, 3));
    return QTest::qWaitFor([&] { return m_cursor == corner; }) && m_canvas->scale() == 4;
}

template<class Tool>
Tool *ImageToolsTest::take()
{
    for (ImageTool *tool : qAsConst(m_tools)) {
        if (auto *found = qobject_cast<Tool *>(tool); found && found->metaObject() == &Tool::staticMetaObject) {
            m_renderer->setTool(found);
            found->activate();
            return found;
        }
    }
    return nullptr;
}

QPoint ImageToolsTest::viewOf(QPoint pixel) const
{
    return m_renderer->viewPoint(pixel).toPoint() + QPoint(2, 2);
}

void ImageToolsTest::moveTo(QPoint pixel)
{
    QTest::mouseMove(m_widget.get(), viewOf(pixel));
    QTRY_COMPARE(m_cursor, pixel);
}

void ImageToolsTest::stroke(const QVector<QPoint> &path, Qt::MouseButton button, Qt::KeyboardModifiers modifiers)
{
    moveTo(path.first());
    QTest::mousePress(m_widget.get(), button, modifiers, viewOf(path.first()));
    for (int i = 1; i < path.size(); ++i)
        moveTo(path.at(i));
    QTest::mouseRelease(m_widget.get(), button, modifiers, viewOf(path.last()));
}

QImage ImageToolsTest::layerImage() const
{
    return static_cast<const RasterLayer *>(m_canvas->layers()->at(0))->image();
}

QImage ImageToolsTest::applied(const QImage &base, const Pixels &pixels, uint value) const
{
    QImage result = base.copy();
    // An index on an indexed picture, a word on a true-colour one.
    for (const QPoint &p : pixels)
        result.setPixel(p, value);
    return result;
}

void ImageToolsTest::toolTable()
{
    const QStringList expected = {
        "CanvasMoveTool ImageTool Move canvas spr_tool_canvasmove",
        "SelMoveTool ImageTool Move selection spr_tool_selmove",
        "RectSelTool ImageTool Rectangle selection spr_tool_rectsel",
        "PenSelTool BasePenTool Free selection spr_tool_freesel",
        "MagicWandTool PickerTool Magic Wand spr_tool_magicwand",
        "PickerTool ImageTool Color picker spr_tool_picker",
        "PenTool BasePenTool Pen spr_tool_pen",
        "EraserTool BasePenTool Eraser spr_tool_eraser",
        "ReplaceTool BasePenTool Remap pen spr_tool_remap_pen",
        "FloodFillTool PickerTool Paint bucket spr_tool_paintbucket",
    };
    QStringList made;
    for (const ImageTool *tool : qAsConst(m_tools)) {
        const auto plain = [](const char *name) { return QString::fromLatin1(name).remove(QStringLiteral("Ovra::")); };
        made << QStringLiteral("%1 %2 %3 %4")
                    .arg(plain(tool->metaObject()->className()), plain(tool->metaObject()->superClass()->className()),
                         tool->label(), QLatin1String(tool->actionName()));
    }
    QCOMPARE(made, expected);
}

void ImageToolsTest::penStroke_data()
{
    QTest::addColumn<bool>("openGL");
    QTest::addColumn<int>("size");
    QTest::newRow("raster size 1") << false << 1;
    QTest::newRow("raster size 3") << false << 3;
    QTest::newRow("gl size 1") << true << 1;
    QTest::newRow("gl size 3") << true << 3;
}

// Press, two moves and a release paint the two lines with the pen square and nothing
// else; one undo brings the picture back.
void ImageToolsTest::penStroke()
{
    QFETCH(bool, openGL);
    QFETCH(int, size);
    QVERIFY(show(openGL));
    auto *pen = take<PenTool>();
    QVERIFY(pen);
    pen->setPenSize(size);
    m_canvas->painter()->setColor(9);
    const QImage before = layerImage();
    const QPoint a(3, 4), b(20, 9), c(12, 25);
    stroke({a, b, c});
    const Pixels expected = penLine(a, b, size) + penLine(b, c, size);
    COMPARE_PICTURES(layerImage(), applied(before, expected, 9));
    QCOMPARE(m_canvas->undoStack()->count(), 1);
    m_canvas->undoStack()->undo();
    COMPARE_PICTURES(layerImage(), before);
}

// "+" and "-" on the view move the size by one between 1 and 128; the slider follows.
void ImageToolsTest::penSizeKeys()
{
    QVERIFY(show());
    auto *pen = take<PenTool>();
    std::unique_ptr<QWidget> bar(pen->createToolBar(nullptr));
    auto *slider = bar->findChild<QSlider *>(QStringLiteral("pen_size"));
    QVERIFY(slider);
    QSignalSpy changed(pen, &BasePenTool::penSizeChanged);
    QTest::keyClick(m_widget.get(), Qt::Key_Minus);
    QCOMPARE(pen->penSize(), 1);
    QCOMPARE(changed.count(), 0);
    for (int i = 0; i < 130; ++i)
        QTest::keyClick(m_widget.get(), Qt::Key_Plus);
    QCOMPARE(pen->penSize(), 128);
    QCOMPARE(changed.count(), 127);
    QCOMPARE(slider->value(), 128);
    QTest::keyClick(m_widget.get(), Qt::Key_Minus);
    QCOMPARE(pen->penSize(), 127);
    QCOMPARE(m_canvas->painter()->size(), 127);
    // The eraser shares the size through the painter.
    QCOMPARE(take<EraserTool>()->penSize(), 127);
}

void ImageToolsTest::eraser_data()
{
    QTest::addColumn<bool>("trueColour");
    QTest::newRow("indexed") << false;
    QTest::newRow("true colour") << true;
}

// Index 0, or the clear word, under the pen; the painter's colour and remap come back after.
void ImageToolsTest::eraser()
{
    QFETCH(bool, trueColour);
    QVERIFY(show(false, trueColour));
    take<EraserTool>()->setPenSize(2);
    m_canvas->painter()->setColor(trueColour ? 0xff112233u : 7u);
    const QImage before = layerImage();
    stroke({QPoint(30, 2), QPoint(5, 20)});
    COMPARE_PICTURES(layerImage(), applied(before, penLine(QPoint(30, 2), QPoint(5, 20), 2), 0));
    QCOMPARE(m_canvas->painter()->color(), trueColour ? 0xff112233u : 7u);
    QCOMPARE(m_canvas->undoStack()->count(), 1);
}

// Only the mapped colours under the pen change; "I" turns the map round and a second
// stroke along the same line takes the first back.
void ImageToolsTest::remapPen()
{
    QVERIFY(show());
    auto *remap = take<ReplaceTool>();
    remap->setPenSize(3);
    const QImage before = layerImage();
    stroke({QPoint(0, 0), QPoint(39, 29)});
    COMPARE_PICTURES(layerImage(), before); // no map: nothing painted
    QCOMPARE(m_canvas->undoStack()->count(), 0);
    m_canvas->painter()->setRemap({{1, 9}, {4, 11}});
    stroke({QPoint(0, 0), QPoint(39, 29)});
    QImage expected = before.copy();
    for (const QPoint &p : penLine(QPoint(0, 0), QPoint(39, 29), 3)) {
        if (before.pixelIndex(p) == 1)
            expected.setPixel(p, 9);
        else if (before.pixelIndex(p) == 4)
            expected.setPixel(p, 11);
    }
    QVERIFY(expected != before);
    COMPARE_PICTURES(layerImage(), expected);
    QTest::keyClick(m_widget.get(), Qt::Key_I);
    QCOMPARE(m_canvas->painter()->remap(), (QMap<uint, uint>{{9, 1}, {11, 4}}));
    stroke({QPoint(0, 0), QPoint(39, 29)});
    COMPARE_PICTURES(layerImage(), before);
    QCOMPARE(m_canvas->undoStack()->count(), 2);
}

void ImageToolsTest::paintBucket_data()
{
    QTest::addColumn<QPoint>("start");
    QTest::addColumn<bool>("contiguous");
    QTest::addColumn<int>("bandLeft"); // a selection of whole columns from here, -1 for none
    QTest::addColumn<bool>("protect");
    QTest::newRow("contiguous") << QPoint(7, 1) << true << -1 << false;
    QTest::newRow("everywhere") << QPoint(7, 1) << false << -1 << false;
    QTest::newRow("contiguous in a band") << QPoint(22, 14) << true << 18 << false;
    QTest::newRow("everywhere in a band") << QPoint(22, 14) << false << 18 << false;
    QTest::newRow("index 0 open") << QPoint(1, 1) << true << -1 << false;
    QTest::newRow("index 0 protected") << QPoint(1, 1) << true << -1 << true;
    QTest::newRow("index 0 protected everywhere") << QPoint(1, 1) << false << -1 << true;
}

void ImageToolsTest::paintBucket()
{
    QFETCH(QPoint, start);
    QFETCH(bool, contiguous);
    QFETCH(int, bandLeft);
    QFETCH(bool, protect);
    QVERIFY(show());
    auto *bucket = take<FloodFillTool>();
    std::unique_ptr<QWidget> bar(bucket->createToolBar(nullptr));
    auto *box = qobject_cast<QCheckBox *>(bar.get());
    QVERIFY(box && box->text() == QStringLiteral("Contiguous") && box->isChecked());
    box->setChecked(contiguous);
    QCOMPARE(bucket->isContiguous(), contiguous);
    m_protect = protect;
    const QRect band(bandLeft, 0, 8, pictureSize.height());
    if (bandLeft >= 0)
        QVERIFY(m_canvas->setSelection(boxMask(band)));
    const auto allowed = [&](QPoint p) { return bandLeft < 0 || band.contains(p); };
    m_canvas->painter()->setColor(200);
    const QImage before = layerImage();
    Pixels expected;
    if (!(protect && before.pixelIndex(start) == 0)) {
        if (contiguous) {
            expected = region(before, start, allowed);
        } else {
            for (int y = 0; y < before.height(); ++y)
                for (int x = 0; x < before.width(); ++x)
                    if (before.pixel(x, y) == before.pixel(start) && allowed(QPoint(x, y)))
                        expected.insert(QPoint(x, y));
        }
    }
    moveTo(start);
    QTest::mouseClick(m_widget.get(), Qt::LeftButton, {}, viewOf(start));
    COMPARE_PICTURES(layerImage(), applied(before, expected, 200));
    QCOMPARE(m_canvas->undoStack()->count(), expected.isEmpty() ? 0 : 1);
}

void ImageToolsTest::picker_data()
{
    QTest::addColumn<bool>("trueColour");
    QTest::newRow("indexed") << false;
    QTest::newRow("true colour") << true;
}

void ImageToolsTest::picker()
{
    QFETCH(bool, trueColour);
    QVERIFY(show(false, trueColour));
    auto *picker = take<PickerTool>();
    qRegisterMetaType<Qt::MouseButton>();
    QSignalSpy picked(picker, &PickerTool::colorPicked);
    const QPoint left(12, 3), right(3, 9);
    moveTo(left);
    QTest::mouseClick(m_widget.get(), Qt::LeftButton, {}, viewOf(left));
    moveTo(right);
    QTest::mouseClick(m_widget.get(), Qt::RightButton, {}, viewOf(right));
    QCOMPARE(picked.count(), 2);
    const auto expected = [&](QPoint p) { return trueColour ? m_colors[patternAt(p.x(), p.y())].toQRgb() : uint(patternAt(p.x(), p.y())); };
    QCOMPARE(picked.at(0).at(0).toUInt(), expected(left));
    QCOMPARE(picked.at(0).at(1).value<Qt::MouseButton>(), Qt::LeftButton);
    QCOMPARE(picked.at(1).at(0).toUInt(), expected(right));
    QCOMPARE(picked.at(1).at(1).value<Qt::MouseButton>(), Qt::RightButton);
    QCOMPARE(m_canvas->undoStack()->count(), 0);
}

void ImageToolsTest::selectionTable_data()
{
    QTest::addColumn<QString>("tool");
    QTest::addColumn<bool>("contiguous");
    QTest::addColumn<int>("button");
    QTest::addColumn<int>("modifier");
    QTest::addColumn<int>("marked");   // what a marked pixel becomes: 1, 0 or -1 for "stays"
    QTest::addColumn<int>("unmarked"); // the same for the others
    struct Row { const char *name; Qt::MouseButton button; Qt::KeyboardModifier modifier; int marked, unmarked; };
    const Row rows[] = {
        {"left", Qt::LeftButton, Qt::NoModifier, 1, 0},      {"left shift", Qt::LeftButton, Qt::ShiftModifier, 1, -1},
        {"left alt", Qt::LeftButton, Qt::AltModifier, 0, -1}, {"right", Qt::RightButton, Qt::NoModifier, 0, 1},
        {"right shift", Qt::RightButton, Qt::ShiftModifier, -1, 1},
        {"right alt", Qt::RightButton, Qt::AltModifier, -1, 0},
    };
    for (const char *tool : {"wand", "wand everywhere", "rect", "pen"}) {
        for (const Row &row : rows) {
            QTest::newRow(qPrintable(QStringLiteral("%1 %2").arg(QLatin1String(tool), QLatin1String(row.name))))
                << QString::fromLatin1(tool) << (QByteArray(tool) != "wand everywhere") << int(row.button)
                << int(row.modifier) << row.marked << row.unmarked;
        }
    }
}

// Each tool marks its region; the mask that results follows the button and modifier.
void ImageToolsTest::selectionTable()
{
    QFETCH(QString, tool);
    QFETCH(bool, contiguous);
    QFETCH(int, button);
    QFETCH(int, modifier);
    QFETCH(int, marked);
    QFETCH(int, unmarked);
    QVERIFY(show());
    const QByteArray first = boxMask(QRect(2, 2, 20, 14));
    QVERIFY(m_canvas->setSelection(first));
    const QImage image = layerImage();
    Pixels region;
    QVector<QPoint> path;
    if (tool.startsWith(QLatin1String("wand"))) {
        take<MagicWandTool>()->setContiguous(contiguous);
        path = {QPoint(7, 5)};
        if (contiguous) {
            region = ::region(image, path.first(), [](QPoint) { return true; });
        } else {
            for (int y = 0; y < image.height(); ++y)
                for (int x = 0; x < image.width(); ++x)
                    if (image.pixelIndex(x, y) == image.pixelIndex(path.first()))
                        region.insert(QPoint(x, y));
        }
    } else if (tool == QLatin1String("rect")) {
        take<RectSelTool>();
        path = {QPoint(30, 25), QPoint(18, 20), QPoint(12, 8)};
        region = Pixels();
        for (int y = 8; y <= 25; ++y)
            for (int x = 12; x <= 30; ++x)
                region.insert(QPoint(x, y));
    } else {
        take<PenSelTool>()->setPenSize(2);
        path = {QPoint(5, 25), QPoint(33, 10), QPoint(36, 28)};
        region = penLine(path.at(0), path.at(1), 2) + penLine(path.at(1), path.at(2), 2);
    }
    stroke(path, Qt::MouseButton(button), Qt::KeyboardModifiers(modifier));
    QByteArray expected(first.size(), '\0');
    for (int i = 0; i < expected.size(); ++i) {
        const bool in = region.contains(QPoint(i % pictureSize.width(), i / pictureSize.width()));
        const int rule = in ? marked : unmarked;
        expected[i] = char(rule < 0 ? first.at(i) : rule);
    }
    // A mask with nothing in is no selection.
    if (!expected.contains('\1'))
        expected.clear();
    QCOMPARE(m_canvas->selection(), expected);
    QCOMPARE(layerImage(), image);
}

// A selection of four pixels dragged five to the right over blue: the opaque ones are
// copied, the clear one leaves the blue, the half-clear one mixes half and half with the
// blue and takes the nearest entry; the hole is index 0 and the mask moves along.
void ImageToolsTest::moveOnIndexedLayer()
{
    m_colors[1] = RGBA(250, 20, 20, 255);
    m_colors[2] = RGBA(20, 20, 250, 255);
    m_colors[3] = RGBA(20, 240, 20, 128);
    m_colors[4] = RGBA(200, 200, 0, 0);
    m_colors[5] = RGBA(20, 130, 135, 191); // near the mixture of 3 over 2
    QVERIFY(show());
    QImage start = layerImage();
    start.fill(2);
    const QRect lifted(10, 10, 2, 2);
    start.setPixel(10, 10, 1);
    start.setPixel(11, 10, 3);
    start.setPixel(10, 11, 4);
    start.setPixel(11, 11, 1);
    static_cast<RasterLayer *>(m_canvas->layers()->at(0))->setImage(start);
    QVERIFY(m_canvas->setSelection(boxMask(lifted)));
    take<SelMoveTool>();
    stroke({QPoint(10, 10), QPoint(13, 11), QPoint(15, 10)});

    const RGBA under = m_colors[2], over = m_colors[3];
    const auto half = [](int u, int o) { return quint8(u + ((o - u) >> 1)); };
    const RGBA mixed(half(under.red, over.red), half(under.green, over.green), half(under.blue, over.blue),
                     half(under.alpha, over.alpha));
    const uchar nearest = m_palette->index(mixed);
    QVERIFY(nearest != 2 && nearest != 3);
    QImage expected = start.copy();
    for (int y = 10; y <= 11; ++y)
        for (int x = 10; x <= 11; ++x)
            expected.setPixel(x, y, 0);
    expected.setPixel(15, 10, 1);
    expected.setPixel(16, 10, nearest);
    expected.setPixel(15, 11, 2);
    expected.setPixel(16, 11, 1);
    COMPARE_PICTURES(layerImage(), expected);
    QCOMPARE(m_canvas->selection(), boxMask(lifted.translated(5, 0)));
    QCOMPARE(m_canvas->undoStack()->count(), 1);
    m_canvas->undoStack()->undo();
    COMPARE_PICTURES(layerImage(), start);
}

OVRA_GL_TEST_MAIN(ImageToolsTest)

#include "tst_imagetools.moc"
