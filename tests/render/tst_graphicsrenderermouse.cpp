// The graphics canvas as a user meets it, on the real OpenGL widget and on the raster one:
// dragging crosses, sprites, boxes and their sizers, drawing boxes, capturing colours,
// the box keys, and a picture of a whole scene through each road.
#define QTEST_QPA_MOUSE_HANDLING // moves carry the held button, as the window system sends them
#include "graphicstestsupport.h"
#include "renderwindow.h"
#include "rendertestsupport.h"

#include "render/glrenderwidget.h"
#include "render/renderwidget.h"

#include <QSignalSpy>
#include <QtTest>

using namespace Ovra;

namespace {

const QSize viewSize(320, 240);
const QPoint origin(150, 120);

struct Signal
{
    int type;
    int index;
    QPoint position;
};

Signal signalAt(const QSignalSpy &spy, int i)
{
    const QList<QVariant> &arguments = spy.at(i < 0 ? spy.count() + i : i);
    return {int(arguments.at(0).value<GraphicsRenderer::ItemType>()), arguments.at(1).toInt(),
            arguments.at(2).toPoint()};
}

void drag(QWidget *widget, QPoint from, const QVector<QPoint> &through, Qt::KeyboardModifiers modifiers = {})
{
    QTest::mousePress(widget, Qt::LeftButton, modifiers, from);
    for (const QPoint &point : through)
        QTest::mouseMove(widget, point);
    QTest::mouseRelease(widget, Qt::LeftButton, modifiers, through.isEmpty() ? from : through.last());
}

} // namespace

class GraphicsRendererMouseTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void dragCross_data();
    void dragCross();
    void dragCrossByDelta_data();
    void dragCrossByDelta();
    void dragSprite_data();
    void dragSprite();
    void dragAnchoredSprite_data();
    void dragAnchoredSprite();
    void dragBoxAndSizer_data();
    void dragBoxAndSizer();
    void sizerCursors_data();
    void sizerCursors();
    void drawBoxes_data();
    void drawBoxes();
    void captureColour_data();
    void captureColour();
    void boxKeys_data();
    void boxKeys();
    void panAndGuides_data();
    void panAndGuides();
    void sceneScreenshot_data();
    void sceneScreenshot();

private:
    void addBackEnds();
    // The canvas on the back end of the row, shown; the widget or null after a failure.
    QWidget *show();

    std::unique_ptr<TestCanvas> m_canvas;
    std::unique_ptr<QWidget> m_widget;
};

void GraphicsRendererMouseTest::initTestCase()
{
    Texture::setOpenGLEnabled(true);
}

void GraphicsRendererMouseTest::init()
{
    GraphicsRenderer::setOrigin(origin);
    GraphicsRenderer::setZoomMode(GraphicsRenderer::ZoomAroundOrigin);
    GraphicsRenderer::setZoomTable(0);
    GraphicsRenderer::setPriority(false, false);
    GraphicsRenderer::setCrossHair(GraphicsRenderer::SecondCrossSet, QString(), QString(), QString());
    GraphicsRenderer::setBackground(QColor(40, 40, 90), QColor(10, 10, 30), GraphicsRenderer::GradientBackground,
                                    QPoint(), QString(), QSize(320, 240));
    GraphicsRenderer::setupContactBoxes(QColor(255, 0, 0), QColor(0, 0, 255), 1.0f);
    m_canvas.reset(new TestCanvas);
}

void GraphicsRendererMouseTest::cleanup()
{
    if (auto *base = dynamic_cast<RenderWidgetBase *>(m_widget.get()))
        base->setRenderer(nullptr);
    m_widget.reset();
    m_canvas.reset();
}

void GraphicsRendererMouseTest::addBackEnds()
{
    QTest::addColumn<bool>("openGL");
}

QWidget *GraphicsRendererMouseTest::show()
{
    QFETCH(bool, openGL);
    m_canvas->prepareTextures();
    m_widget = showRenderer(m_canvas.get(), openGL, viewSize);
    const bool shown = m_widget && m_canvas->isOpenGL() == openGL && m_canvas->viewSize() == viewSize;
    return shown ? m_widget.get() : nullptr;
}

#define BACK_END_ROWS(...)                                                                                     \
    QTest::newRow("gl " __VA_ARGS__) << true;                                                                  \
    QTest::newRow("raster " __VA_ARGS__) << false

void GraphicsRendererMouseTest::dragCross_data()
{
    addBackEnds();
    QTest::addColumn<int>("level");
    QTest::addColumn<QPoint>("to");
    QTest::addColumn<QPoint>("position");
    QTest::newRow("gl, actual size") << true << 3 << QPoint(170, 110) << QPoint(20, -10);
    QTest::newRow("raster, actual size") << false << 3 << QPoint(170, 110) << QPoint(20, -10);
    // Zoom 2: (21, -11) pixels are 10.5 and -5.5 world units, truncated.
    QTest::newRow("gl, zoom 2") << true << 5 << QPoint(171, 109) << QPoint(10, -5);
    QTest::newRow("raster, zoom 2") << false << 5 << QPoint(171, 109) << QPoint(10, -5);
    // Zoom 0.5: each pixel is two world units.
    QTest::newRow("raster, zoom 0.5") << false << 1 << QPoint(153, 118) << QPoint(6, -4);
}

void GraphicsRendererMouseTest::dragCross()
{
    QFETCH(int, level);
    QFETCH(QPoint, to);
    QFETCH(QPoint, position);
    m_canvas->setZoomLevel(static_cast<unsigned char>(level));
    m_canvas->setVisibility(true, false, false, true, true, false, false); // all three stand on the origin
    QWidget *widget = show();
    QVERIFY(widget);
    QSignalSpy moved(m_canvas.get(), &GraphicsRenderer::itemMoved);
    QSignalSpy released(m_canvas.get(), &GraphicsRenderer::itemReleased);
    QTest::mousePress(widget, Qt::LeftButton, Qt::NoModifier, origin);
    QTest::mouseMove(widget, (origin + to) / 2);
    QTest::mouseMove(widget, to);
    QCOMPARE(widget->cursor().shape(), Qt::SizeAllCursor);
    QTest::mouseRelease(widget, Qt::LeftButton, Qt::NoModifier, to);
    QCOMPARE(m_canvas->itemPosition(GraphicsRenderer::MainCross), QPointF(position));
    QVERIFY(moved.count() >= 1);
    QCOMPARE(signalAt(moved, -1).type, int(GraphicsRenderer::MainCross));
    QCOMPARE(signalAt(moved, -1).position, position);
    QCOMPARE(released.count(), 1);
    QCOMPARE(signalAt(released, 0).type, int(GraphicsRenderer::MainCross));
    QCOMPARE(signalAt(released, 0).position, position);
    // A click without a move releases nothing.
    QTest::mouseClick(widget, Qt::LeftButton, Qt::NoModifier, to);
    QCOMPARE(released.count(), 1);
}

void GraphicsRendererMouseTest::dragCrossByDelta_data()
{
    addBackEnds();
    BACK_END_ROWS("");
}

// With bit 5 the cross reports the delta of each move, and (0, 0) on release; with only the
// horizontal drag bit it keeps its height.
void GraphicsRendererMouseTest::dragCrossByDelta()
{
    m_canvas->setItemPosition(GraphicsRenderer::SecondaryCross, QPointF(50, 0));
    m_canvas->setItemPositionMode(GraphicsRenderer::SecondaryCross,
                                  GraphicsRenderer::AnchorOrigin | GraphicsRenderer::DragHorizontal
                                      | GraphicsRenderer::ReportDelta);
    QWidget *widget = show();
    QVERIFY(widget);
    QSignalSpy moved(m_canvas.get(), &GraphicsRenderer::itemMoved);
    QSignalSpy released(m_canvas.get(), &GraphicsRenderer::itemReleased);
    drag(widget, QPoint(200, 120), {QPoint(204, 125), QPoint(211, 140)});
    QCOMPARE(m_canvas->itemPosition(GraphicsRenderer::SecondaryCross), QPointF(61, 0));
    QCOMPARE(moved.count(), 2);
    QCOMPARE(signalAt(moved, 0).type, int(GraphicsRenderer::SecondaryCross));
    QCOMPARE(signalAt(moved, 0).position, QPoint(4, 0));
    QCOMPARE(signalAt(moved, 1).position, QPoint(7, 0));
    QCOMPARE(released.count(), 1);
    QCOMPARE(signalAt(released, 0).position, QPoint(0, 0));
}

void GraphicsRendererMouseTest::dragSprite_data()
{
    addBackEnds();
    QTest::addColumn<int>("flags");
    QTest::addColumn<double>("spriteScale");
    QTest::addColumn<QPointF>("position");
    using G = GraphicsRenderer;
    const int both = G::AnchorOrigin | G::WorldUnits | G::DragHorizontal | G::DragVertical;
    const int across = G::AnchorOrigin | G::WorldUnits | G::DragHorizontal;
    const int fixed = G::AnchorOrigin | G::WorldUnits;
    QTest::newRow("gl") << true << both << 1.0 << QPointF(25, 20);
    QTest::newRow("raster") << false << both << 1.0 << QPointF(25, 20);
    QTest::newRow("gl, across only") << true << across << 1.0 << QPointF(25, 10);
    QTest::newRow("raster, across only") << false << across << 1.0 << QPointF(25, 10);
    // The world delta is divided by the sprite's own scale.
    QTest::newRow("raster, sprite scale 2") << false << both << 2.0 << QPointF(22.5, 15);
    QTest::newRow("raster, fixed") << false << fixed << 1.0 << QPointF(20, 10);
    QTest::newRow("gl, by delta") << true << (both | G::ReportDelta) << 1.0 << QPointF(25, 20);
}

void GraphicsRendererMouseTest::dragSprite()
{
    QFETCH(int, flags);
    QFETCH(double, spriteScale);
    QFETCH(QPointF, position);
    TestSprites sprites;
    sprites.add(QPointF(20, 10), QSizeF(30, 30), Qt::green, 1);
    sprites.infos[0].scaleX = sprites.infos[0].scaleY = spriteScale;
    sprites.add(QPointF(-100, -100), QSizeF(50, 50), Qt::yellow, 4);
    m_canvas->setSprites(&sprites);
    m_canvas->setItemPositionMode(GraphicsRenderer::SpriteItem, static_cast<unsigned char>(flags), 0, 0);
    m_canvas->setVisibility(false, false, false, true, true, false, false);
    QWidget *widget = show();
    QVERIFY(widget);
    QSignalSpy moved(m_canvas.get(), &GraphicsRenderer::itemMoved);
    QSignalSpy released(m_canvas.get(), &GraphicsRenderer::itemReleased);
    // Sprite 0 on screen from (170, 130), or from (190, 140) at twice its size.
    drag(widget, QPoint(195, 145), {QPoint(200, 155)});
    QCOMPARE(sprites.infos[0].position, position);
    QCOMPARE(sprites.infos[1].position, QPointF(-100, -100));
    const bool dragged = flags & GraphicsRenderer::DragHorizontal;
    QCOMPARE(moved.count(), dragged ? 1 : 0);
    QCOMPARE(released.count(), dragged ? 1 : 0);
    if (dragged) {
        QCOMPARE(signalAt(moved, 0).type, int(GraphicsRenderer::SpriteItem));
        QCOMPARE(signalAt(moved, 0).index, 0);
        QCOMPARE(signalAt(released, 0).index, 0);
        const bool byDelta = flags & GraphicsRenderer::ReportDelta;
        QCOMPARE(signalAt(moved, 0).position, byDelta ? QPoint(5, 10) : position.toPoint());
        QCOMPARE(signalAt(released, 0).position, byDelta ? QPoint() : position.toPoint());
    }
}

void GraphicsRendererMouseTest::dragAnchoredSprite_data()
{
    addBackEnds();
    BACK_END_ROWS("");
}

// A sprite on the secondary cross follows it; a second sprite on that sprite follows both.
void GraphicsRendererMouseTest::dragAnchoredSprite()
{
    TestSprites sprites;
    sprites.add(QPointF(10, 10), QSizeF(20, 20), Qt::green, 1);
    sprites.add(QPointF(30, 0), QSizeF(10, 10), Qt::magenta, 2);
    m_canvas->setSprites(&sprites);
    m_canvas->setItemPosition(GraphicsRenderer::SecondaryCross, QPointF(-100, -80));
    m_canvas->setItemPositionMode(GraphicsRenderer::SpriteItem, GraphicsRenderer::AnchorCross | 0x1c, 1, 0);
    m_canvas->setItemPositionMode(GraphicsRenderer::SpriteItem, GraphicsRenderer::AnchorSprite | 0x1c, 0, 1);
    QWidget *widget = show();
    QVERIFY(widget);
    QCOMPARE(m_canvas->itemScreenPosition(GraphicsRenderer::SpriteItem, 1), QPointF(90, 50));
    drag(widget, QPoint(50, 40), {QPoint(70, 45)}); // the secondary cross
    QCOMPARE(m_canvas->itemPosition(GraphicsRenderer::SecondaryCross), QPointF(-80, -75));
    QCOMPARE(m_canvas->itemScreenPosition(GraphicsRenderer::SpriteItem, 0), QPointF(80, 55));
    QCOMPARE(m_canvas->itemScreenPosition(GraphicsRenderer::SpriteItem, 1), QPointF(110, 55));
    QSignalSpy released(m_canvas.get(), &GraphicsRenderer::itemReleased);
    drag(widget, QPoint(85, 60), {QPoint(95, 58)}); // sprite 0, relative to the cross
    QCOMPARE(sprites.infos[0].position, QPointF(20, 8));
    QCOMPARE(m_canvas->itemScreenPosition(GraphicsRenderer::SpriteItem, 1), QPointF(120, 53));
    QCOMPARE(signalAt(released, 0).position, QPoint(20, 8));
}

void GraphicsRendererMouseTest::dragBoxAndSizer_data()
{
    addBackEnds();
    BACK_END_ROWS("");
}

void GraphicsRendererMouseTest::dragBoxAndSizer()
{
    MemoryBoxes attack(ContactBoxCode::Attack);
    attack.append(QRect(-20, -60, 40, 20)); // on screen (130..170, 60..80)
    m_canvas->setContactBoxes(ContactBoxCode::Attack, &attack);
    QWidget *widget = show();
    QVERIFY(widget);
    QSignalSpy released(m_canvas.get(), &GraphicsRenderer::itemReleased);
    drag(widget, QPoint(150, 70), {QPoint(155, 66), QPoint(160, 62)});
    QCOMPARE(m_canvas->boxes(ContactBoxCode::Attack).at(0).rect, QRectF(-10, -68, 40, 20));
    QCOMPARE(m_canvas->boxesSelectionRect(), QRect(-10, -68, 40, 20));
    QCOMPARE(released.count(), 1);
    QCOMPARE(signalAt(released, 0).type, int(GraphicsRenderer::ContactBoxes));
    QCOMPARE(signalAt(released, 0).index, -1);
    // The bottom-right sizer at (180, 72) grows the box; the bottom-middle one only its height.
    QTest::mouseMove(widget, QPoint(180, 72));
    QCOMPARE(widget->cursor().shape(), Qt::SizeFDiagCursor);
    drag(widget, QPoint(180, 72), {QPoint(190, 80)});
    QCOMPARE(m_canvas->boxes(ContactBoxCode::Attack).at(0).rect, QRectF(-10, -68, 50, 28));
    drag(widget, QPoint(165, 80), {QPoint(175, 85)});
    QCOMPARE(m_canvas->boxes(ContactBoxCode::Attack).at(0).rect, QRectF(-10, -68, 50, 33));
    QCOMPARE(released.count(), 3);
    // A click beside deselects; then the sizers are gone.
    QTest::mouseClick(widget, Qt::LeftButton, Qt::NoModifier, QPoint(280, 200));
    QVERIFY(m_canvas->selectedContactBoxes().isEmpty());
    QCOMPARE(m_canvas->hitTest(QPoint(190, 85)), int(GraphicsRenderer::HitNothing));
}

void GraphicsRendererMouseTest::sizerCursors_data()
{
    addBackEnds();
    QTest::addColumn<QPoint>("point");
    QTest::addColumn<int>("shape");
    // The selected box covers (130..170, 60..80).
    const QPoint points[8] = {{130, 60}, {150, 60}, {130, 70}, {170, 60}, {130, 80}, {150, 80}, {170, 80}, {170, 70}};
    const Qt::CursorShape shapes[8] = {Qt::SizeFDiagCursor, Qt::SizeVerCursor, Qt::SizeHorCursor, Qt::SizeBDiagCursor,
                                       Qt::SizeBDiagCursor, Qt::SizeVerCursor, Qt::SizeFDiagCursor, Qt::SizeHorCursor};
    const char *names[8] = {"top left",    "top middle",    "middle left",  "top right",
                            "bottom left", "bottom middle", "bottom right", "middle right"};
    for (int i = 0; i < 8; ++i)
        QTest::newRow(names[i]) << false << points[i] << int(shapes[i]);
    QTest::newRow("inside") << false << QPoint(145, 66) << int(Qt::SizeAllCursor);
    QTest::newRow("gl, bottom right") << true << QPoint(170, 80) << int(Qt::SizeFDiagCursor);
}

void GraphicsRendererMouseTest::sizerCursors()
{
    QFETCH(QPoint, point);
    QFETCH(int, shape);
    MemoryBoxes attack(ContactBoxCode::Attack);
    attack.append(QRect(-20, -60, 40, 20));
    m_canvas->setContactBoxes(ContactBoxCode::Attack, &attack);
    QWidget *widget = show();
    QVERIFY(widget);
    QTest::mouseClick(widget, Qt::LeftButton, Qt::NoModifier, QPoint(150, 70));
    QTest::mouseMove(widget, point);
    QCOMPARE(int(widget->cursor().shape()), shape);
    QVERIFY(m_canvas->hitTest(point) >= GraphicsRenderer::HitBox);
}

void GraphicsRendererMouseTest::drawBoxes_data()
{
    addBackEnds();
    BACK_END_ROWS("");
}

void GraphicsRendererMouseTest::drawBoxes()
{
    MemoryBoxes collision(ContactBoxCode::Collision);
    m_canvas->setContactBoxes(ContactBoxCode::Collision, &collision);
    m_canvas->setZoomLevel(5); // zoom 2: a box snaps to whole world units
    QWidget *widget = show();
    QVERIFY(widget);
    QSignalSpy exits(m_canvas.get(), &GraphicsRenderer::contactDrawingExit);
    m_canvas->setDrawContactBoxMode(ContactBoxCode::Collision);
    QTest::mouseMove(widget, QPoint(101, 81));
    QCOMPARE(widget->cursor().shape(), Qt::CrossCursor);
    drag(widget, QPoint(101, 81), {QPoint(121, 95), QPoint(141, 101)});
    QCOMPARE(collision.count(), 1u);
    QCOMPARE(collision.at(0)->rect(), QRect(-25, -20, 20, 10));
    QCOMPARE(m_canvas->boxes(ContactBoxCode::Collision).size(), 1);
    QCOMPARE(m_canvas->boxes(ContactBoxCode::Collision).at(0).code, collision.at(0));
    // A click alone opens a box of no size, which goes again.
    QTest::mouseClick(widget, Qt::LeftButton, Qt::NoModifier, QPoint(200, 150));
    QCOMPARE(collision.count(), 1u);
    QCOMPARE(m_canvas->boxes(ContactBoxCode::Collision).size(), 1);
    // Drawn up and to the left, the box is the same rectangle the right way round.
    drag(widget, QPoint(241, 201), {QPoint(221, 191)});
    QCOMPARE(collision.count(), 2u);
    QCOMPARE(collision.at(1)->rect(), QRect(35, 35, 10, 5));
    QCOMPARE(m_canvas->clickMode(), GraphicsRenderer::DrawContactBoxMode);
    QTest::mouseClick(widget, Qt::RightButton, Qt::NoModifier, QPoint(200, 150));
    QCOMPARE(exits.count(), 1);
    QCOMPARE(m_canvas->clickMode(), GraphicsRenderer::PositioningMode);
    QCOMPARE(collision.count(), 2u);
}

void GraphicsRendererMouseTest::captureColour_data()
{
    addBackEnds();
    BACK_END_ROWS("");
}

void GraphicsRendererMouseTest::captureColour()
{
    TestSprites sprites;
    sprites.add(QPointF(0, 0), QSizeF(40, 20), Qt::green, 17); // (150..190, 120..140); right half 18
    m_canvas->setSprites(&sprites);
    QWidget *widget = show();
    QVERIFY(widget);
    m_canvas->setCaptureMode();
    QSignalSpy captured(m_canvas.get(), &GraphicsRenderer::colorCaptured);
    QTest::mouseMove(widget, QPoint(160, 130)); // over the main cross: skipped when capturing
    QCOMPARE(widget->cursor().shape(), Qt::CrossCursor);
    drag(widget, QPoint(160, 130), {QPoint(185, 130), QPoint(250, 200)});
    QCOMPARE(captured.count(), 2);
    QCOMPARE(captured.at(0).at(0).toInt(), 17);
    QCOMPARE(captured.at(1).at(0).toInt(), 18);
    QCOMPARE(sprites.infos[0].position, QPointF(0, 0)); // nothing moved
    QCOMPARE(m_canvas->itemPosition(GraphicsRenderer::MainCross), QPointF(0, 0));
}

void GraphicsRendererMouseTest::boxKeys_data()
{
    addBackEnds();
    BACK_END_ROWS("");
}

void GraphicsRendererMouseTest::boxKeys()
{
    MemoryBoxes attack(ContactBoxCode::Attack), collision(ContactBoxCode::Collision);
    attack.append(QRect(20, 20, 10, 10));     // (170..180, 140..150)
    collision.append(QRect(-40, 20, 10, 10)); // (110..120, 140..150)
    m_canvas->setContactBoxes(ContactBoxCode::Attack, &attack);
    m_canvas->setContactBoxes(ContactBoxCode::Collision, &collision);
    QWidget *widget = show();
    QVERIFY(widget);
    QSignalSpy released(m_canvas.get(), &GraphicsRenderer::itemReleased);
    QTest::mouseClick(widget, Qt::LeftButton, Qt::NoModifier, QPoint(175, 145));
    QTest::mouseClick(widget, Qt::LeftButton, Qt::ShiftModifier, QPoint(115, 145));
    QCOMPARE(m_canvas->selectedContactBoxes().size(), 2);
    QTest::keyClick(widget, Qt::Key_Right);
    QTest::keyClick(widget, Qt::Key_Up);
    QCOMPARE(m_canvas->boxes(ContactBoxCode::Attack).at(0).rect, QRectF(21, 19, 10, 10));
    QCOMPARE(m_canvas->boxes(ContactBoxCode::Collision).at(0).rect, QRectF(-39, 19, 10, 10));
    QCOMPARE(released.count(), 2);
    // Shift flips a box out of the selection again; Delete takes the rest away.
    QTest::mouseClick(widget, Qt::LeftButton, Qt::ShiftModifier, QPoint(116, 144));
    QCOMPARE(m_canvas->selectedContactBoxes(), QList<ContactBoxCode *>{attack.at(0)});
    QTest::keyClick(widget, Qt::Key_Delete);
    QCOMPARE(attack.count(), 0u);
    QCOMPARE(collision.count(), 1u);
    QCOMPARE(released.count(), 3);
    QCOMPARE(signalAt(released, -1).position, QPoint());
}

void GraphicsRendererMouseTest::panAndGuides_data()
{
    addBackEnds();
    BACK_END_ROWS("");
}

// An empty spot or the rulers pan the view; the guides are dragged in world units; the
// Control key shows the open hand over anything.
void GraphicsRendererMouseTest::panAndGuides()
{
    m_canvas->setVisibility(true, true, true, true, true, true, true);
    m_canvas->setGuideLines(QPoint(-50, 30)); // at zoom 2: x 49, y 179
    m_canvas->setZoomLevel(5);
    QWidget *widget = show();
    QVERIFY(widget);
    QSignalSpy cursor(m_canvas.get(), &GraphicsRenderer::cursorChanged);
    QTest::mouseMove(widget, QPoint(250, 60));
    QCOMPARE(cursor.last().at(0).toPoint(), QPoint(50, -30));
    QCOMPARE(widget->cursor().shape(), Qt::OpenHandCursor);
    drag(widget, QPoint(250, 60), {QPoint(240, 70)});
    QCOMPARE(GraphicsRenderer::origin(), QPoint(140, 130));
    drag(widget, QPoint(300, 10), {QPoint(310, 5)}); // the top ruler pans too
    QCOMPARE(GraphicsRenderer::origin(), QPoint(150, 125)); // guides now at x 49, y 184
    QCOMPARE(m_canvas->hitTest(QPoint(49, 100)), int(GraphicsRenderer::HitVerticalGuide));
    QTest::mouseMove(widget, QPoint(49, 100));
    QCOMPARE(widget->cursor().shape(), Qt::SizeHorCursor);
    drag(widget, QPoint(49, 100), {QPoint(69, 110)}); // zoom 2: 10 world units across
    QCOMPARE(m_canvas->guideLines(), QPoint(-40, 30));
    QCOMPARE(m_canvas->hitTest(QPoint(120, 184)), int(GraphicsRenderer::HitHorizontalGuide));
    drag(widget, QPoint(120, 184), {QPoint(120, 164)});
    QCOMPARE(m_canvas->guideLines(), QPoint(-40, 20));
    QTest::keyPress(widget, Qt::Key_Control);
    QCOMPARE(widget->cursor().shape(), Qt::OpenHandCursor);
    QTest::keyRelease(widget, Qt::Key_Control);
    QCOMPARE(widget->cursor().shape(), Qt::SizeVerCursor);
}

void GraphicsRendererMouseTest::sceneScreenshot_data()
{
    addBackEnds();
    QTest::addColumn<QString>("file");
    QTest::newRow("gl") << true << "graphics-gl.png";
    QTest::newRow("raster") << false << "graphics-raster.png";
}

// The scene with everything in it. The stage picture of a 320-wide game covers the view;
// the rulers, an orange sprite with a grey onion frame beside it, a blue sprite, a selected
// attack box over the orange sprite with its sizers, a collision box, the three crosses and
// both guides are drawn over it.
void GraphicsRendererMouseTest::sceneScreenshot()
{
    QFETCH(QString, file);
    GraphicsRenderer::setBackground(QColor(40, 40, 90), QColor(10, 10, 30), GraphicsRenderer::StageBackground,
                                    QPoint(), QString(), QSize(320, 240));
    GraphicsRenderer::setOrigin(QPoint(160, 200));
    TestSprites sprites;
    sprites.add(QPointF(0, 0), QSizeF(40, 50), QColor(230, 160, 40), 1, QPointF(20, 50)); // (140..180, 150..200)
    sprites.add(QPointF(50, -120), QSizeF(30, 30), QColor(30, 60, 230), 2);             // (210..240, 80..110)
    m_canvas->setSprites(&sprites);
    TestSprite onion(QSize(40, 50), QPoint(20, 50));
    m_canvas->setOnionSkinSprite(&onion, QPoint(-70, 0)); // (70..110, 150..200)
    m_canvas->setOnionSkin(true, GraphicsRenderer::OnionPlain, 0.5f);
    MemoryBoxes attack(ContactBoxCode::Attack), collision(ContactBoxCode::Collision);
    attack.append(QRect(-15, -45, 30, 20));  // (145..175, 155..175)
    collision.append(QRect(60, -40, 40, 30)); // (220..260, 160..190)
    m_canvas->setContactBoxes(ContactBoxCode::Attack, &attack);
    m_canvas->setContactBoxes(ContactBoxCode::Collision, &collision);
    m_canvas->setItemPosition(GraphicsRenderer::SecondaryCross, QPointF(-110, -150));
    m_canvas->setItemPosition(GraphicsRenderer::ExtraCross, QPointF(110, -150));
    m_canvas->setGuideLines(QPoint(-120, -30)); // x 39, y 169
    m_canvas->setVisibility(true, true, true, true, true, true, true);
    QWidget *widget = show();
    QVERIFY(widget);
    QTest::mouseClick(widget, Qt::LeftButton, Qt::NoModifier, QPoint(150, 170)); // selects the attack box
    QCOMPARE(m_canvas->selectedContactBoxes().size(), 1);

    QFETCH(bool, openGL);
    const QImage picture = openGL ? static_cast<GLRenderWidget *>(widget)->grabFramebuffer()
                                  : widget->grab().toImage();
    QVERIFY(picture.save(picturePath(file)));
    const QImage shot = picture.convertToFormat(QImage::Format_RGB32);
    QCOMPARE(shot.size(), viewSize);
    QCOMPARE(shot.pixelColor(142, 195), QColor(230, 160, 40)); // orange sprite below the box
    QCOMPARE(shot.pixelColor(225, 95), QColor(30, 60, 230));  // blue sprite
    QCOMPARE(shot.pixelColor(39, 100), QColor(0, 255, 255));  // vertical guide
    QCOMPARE(shot.pixelColor(300, 169), QColor(0, 255, 255)); // horizontal guide
    QCOMPARE(shot.pixelColor(152, 155), QColor(255, 0, 0));   // top edge of the attack box
    QCOMPARE(shot.pixelColor(240, 189), QColor(0, 0, 255));   // bottom edge of the collision box
    QCOMPARE(shot.pixelColor(145, 155), QColor(Qt::white));   // a sizer's face
    // The stage picture lies at its offset from the origin, (160 - 212, 200 - 207), at
    // full size; the onion frame shows half of its grey over it, the collision box half of
    // its blue.
    const QImage stage = QImage(QStringLiteral(":/ovra_icons/icons/240p.png")).convertToFormat(QImage::Format_RGB32);
    const QPoint stageOffset(-52, -7);
    QCOMPARE(shot.pixelColor(300, 60), stage.pixelColor(QPoint(300, 60) - stageOffset));
    QCOMPARE(shot.pixelColor(120, 220), stage.pixelColor(QPoint(120, 220) - stageOffset));
    auto blended = [&](QPoint at, QColor over) {
        const QColor under = stage.pixelColor(at - stageOffset);
        const QColor seen = shot.pixelColor(at);
        const int channels[3][2] = {{seen.red(), (under.red() + over.red()) / 2},
                                    {seen.green(), (under.green() + over.green()) / 2},
                                    {seen.blue(), (under.blue() + over.blue()) / 2}};
        for (const auto &channel : channels) {
            if (qAbs(channel[0] - channel[1]) > 2)
                return false;
        }
        return true;
    };
    QVERIFY(blended(QPoint(90, 185), QColor(120, 120, 120)));
    QVERIFY(blended(QPoint(240, 175), QColor(0, 0, 255)));
    // The rulers: the gradient near its top, then the band the ticks stand on.
    const QColor corner = shot.pixelColor(2, 2);
    QVERIFY(qAbs(corner.red() - 40) <= 1 && qAbs(corner.blue() - 90) <= 1);
    QCOMPARE(shot.pixelColor(15, 120), QColor(40, 40, 90).darker(125));

    // Both roads draw the same picture; only the rulers' lettering is antialiased differently.
    static QImage glShot;
    const QImage view = shot.copy(30, 30, viewSize.width() - 30, viewSize.height() - 30);
    if (openGL) {
        glShot = view;
        return;
    }
    QVERIFY(!glShot.isNull());
    QPoint where;
    const int difference = largestDifference(glShot, view, &where);
    QVERIFY2(difference <= 3, qPrintable(QStringLiteral("%1 at %2, %3").arg(difference).arg(where.x()).arg(where.y())));
}

OVRA_GL_TEST_MAIN(GraphicsRendererMouseTest)
#include "tst_graphicsrenderermouse.moc"
