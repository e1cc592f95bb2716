// The graphics canvas's rules without a screen: zoom rows and limits, the rescale about
// its fixed point, the fit, backgrounds and crosses, anchors, hit codes and repaints.
// Repaints are counted on the off-screen raster widget, which draws at once on update().
#include "graphicstestsupport.h"

#include "render/offscreenrenderwidget.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace Ovra;

Q_DECLARE_METATYPE(GraphicsRenderer::BackgroundType)
Q_DECLARE_METATYPE(GraphicsRenderer::CrossHairType)

namespace {

const QSize viewSize(400, 300);

QImage resourceImage(const QString &name)
{
    return QImage(QStringLiteral(":/ovra_icons/icons/") + name).convertToFormat(QImage::Format_ARGB32);
}

QImage pictureOf(const QPixmap &pixmap)
{
    return pixmap.toImage().convertToFormat(QImage::Format_ARGB32);
}

} // namespace

class GraphicsRendererTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void zoomRows_data();
    void zoomRows();
    void zoomButtonsAndWheel_data();
    void zoomButtonsAndWheel();
    void sameLevelDoesNotRepaint();
    void zoomScaleRerunsLevel();
    void zoomActualPerRow();
    void rescaleKeepsFixedPoint_data();
    void rescaleKeepsFixedPoint();
    void zoomFitPicksLevel_data();
    void zoomFitPicksLevel();
    void zoomFitWithNothingToFit();
    void zoomFitTakesTheOnionFrame();
    void zoomFitWithNoSmallerValue();
    void backgroundByGameSize_data();
    void backgroundByGameSize();
    void crossPictures_data();
    void crossPictures();
    void anchors_data();
    void anchors();
    void anchorLoopEnds();
    void itemPositions();
    void hitCodes_data();
    void hitCodes();
    void clickModes();
    void boxKeys();
    void boxContainerFollows();
    void renderOrder_data();
    void renderOrder();
    void boxHatches();

private:
    void makeHitScene(TestCanvas &canvas, TestSprites &sprites, MemoryBoxes &attack, MemoryBoxes &collision);
    std::unique_ptr<OffScreenRenderWidget> m_widget;
};

void GraphicsRendererTest::init()
{
    GraphicsRenderer::setOrigin(QPoint(200, 150));
    GraphicsRenderer::setZoomMode(GraphicsRenderer::ZoomAroundOrigin);
    GraphicsRenderer::setZoomTable(0);
    GraphicsRenderer::setPriority(false, false);
    GraphicsRenderer::setCrossHair(GraphicsRenderer::FirstCrossSet, QString(), QString(), QString());
    GraphicsRenderer::setBackground(Qt::white, Qt::lightGray, GraphicsRenderer::GradientBackground, QPoint(),
                                    QString(), QSize(320, 240));
    m_widget.reset(new OffScreenRenderWidget(false, viewSize));
}

void GraphicsRendererTest::zoomRows_data()
{
    QTest::addColumn<int>("table");
    QTest::addColumn<int>("level");
    QTest::addColumn<float>("factor");
    QTest::addColumn<int>("storedLevel");
    QTest::newRow("fine, first") << 0 << 0 << 0.25f << 0;
    QTest::newRow("fine, actual size") << 0 << 3 << 1.0f << 3;
    QTest::newRow("fine, 2.25") << 0 << 6 << 2.25f << 6;
    QTest::newRow("fine, last") << 0 << 15 << 6.0f << 15;
    QTest::newRow("fine, 16 reads the coarse row") << 0 << 16 << 0.25f << 16;
    QTest::newRow("fine, above 16 is 16") << 0 << 200 << 0.25f << 16;
    QTest::newRow("coarse, actual size") << 1 << 2 << 1.0f << 2;
    QTest::newRow("coarse, 9") << 1 << 10 << 9.0f << 10;
    QTest::newRow("coarse, last") << 1 << 15 << 14.0f << 15;
    QTest::newRow("coarse, 16 reads the 0 behind") << 1 << 16 << 0.0f << 16;
    QTest::newRow("any other table is coarse") << 7 << 3 << 2.0f << 3;
    QTest::newRow("255 is 0") << 0 << 255 << 0.25f << 0;
}

void GraphicsRendererTest::zoomRows()
{
    QFETCH(int, table);
    QFETCH(int, level);
    QFETCH(float, factor);
    QFETCH(int, storedLevel);
    GraphicsRenderer::setZoomTable(static_cast<unsigned char>(table));
    TestCanvas canvas;
    canvas.setZoomLevel(static_cast<unsigned char>(level));
    QCOMPARE(int(canvas.zoomLevel()), storedLevel);
    QCOMPARE(canvas.zoomFactor(), factor);
    QCOMPARE(canvas.scale(), QPointF(factor, factor));
    // Every level of either row leaves a usable view: painting at scale 0 mustn't fault.
    m_widget->setRenderer(&canvas);
    canvas.setVisibility(true, true, true, true, true, true, true);
    m_widget->update();
    QVERIFY(!m_widget->output().isNull());
    m_widget->setRenderer(nullptr);
}

void GraphicsRendererTest::zoomButtonsAndWheel_data()
{
    QTest::addColumn<int>("start");
    QTest::addColumn<QString>("action");
    QTest::addColumn<int>("level");
    QTest::newRow("sub at 0 stays") << 0 << "sub" << 0;
    QTest::newRow("add from 15 reaches 16") << 15 << "add" << 16;
    QTest::newRow("add at 16 stays") << 16 << "add" << 16;
    QTest::newRow("wheel up one") << 3 << "120" << 4;
    QTest::newRow("wheel down two") << 3 << "-240" << 1;
    QTest::newRow("wheel truncates") << 3 << "119" << 3;
    QTest::newRow("wheel stops at 9") << 8 << "360" << 9;
    QTest::newRow("wheel stops at 0") << 1 << "-480" << 0;
    QTest::newRow("wheel from 16 pins to 9") << 16 << "120" << 9;
    QTest::newRow("wheel down from 16 pins to 9") << 16 << "-120" << 9;
}

void GraphicsRendererTest::zoomButtonsAndWheel()
{
    QFETCH(int, start);
    QFETCH(QString, action);
    QFETCH(int, level);
    TestCanvas canvas;
    canvas.setZoomLevel(static_cast<unsigned char>(start));
    if (action == QLatin1String("sub"))
        canvas.subZoom();
    else if (action == QLatin1String("add"))
        canvas.addZoom();
    else
        canvas.mouseWheel(action.toInt());
    QCOMPARE(int(canvas.zoomLevel()), level);
}

void GraphicsRendererTest::sameLevelDoesNotRepaint()
{
    TestCanvas canvas;
    m_widget->setRenderer(&canvas);
    canvas.setZoomLevel(3);
    QCOMPARE(canvas.renders, 0);
    canvas.setZoomLevel(4);
    QCOMPARE(canvas.renders, 1);
    canvas.setZoomLevel(4);
    canvas.setGuideLines(QPoint());
    canvas.setVisibility(true, true, true, true, true, false, false);
    QCOMPARE(canvas.renders, 1);
    canvas.setGuideLines(QPoint(1, 0));
    QCOMPARE(canvas.renders, 2);
    m_widget->setRenderer(nullptr);
}

void GraphicsRendererTest::zoomScaleRerunsLevel()
{
    TestCanvas canvas;
    m_widget->setRenderer(&canvas);
    canvas.setZoomScale(QPointF(2.0, 1.0));
    QCOMPARE(int(canvas.zoomLevel()), 3);
    QCOMPARE(canvas.scale(), QPointF(2.0, 1.0));
    QCOMPARE(canvas.renders, 1);
    canvas.setZoomScale(QPointF(2.0, 1.0)); // no change, no repaint
    QCOMPARE(canvas.renders, 1);
    canvas.addZoom();
    QCOMPARE(canvas.scale(), QPointF(3.0, 1.5));
    m_widget->setRenderer(nullptr);
}

void GraphicsRendererTest::zoomActualPerRow()
{
    TestCanvas canvas;
    canvas.setZoomLevel(9);
    canvas.zoomActual();
    QCOMPARE(int(canvas.zoomLevel()), 3);
    GraphicsRenderer::setZoomTable(1);
    canvas.setZoomLevel(9);
    canvas.zoomActual();
    QCOMPARE(int(canvas.zoomLevel()), 2);
    QCOMPARE(canvas.zoomFactor(), 1.0f);
}

void GraphicsRendererTest::rescaleKeepsFixedPoint_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QPoint>("origin");
    QTest::addColumn<QPointF>("crossAfter");
    QTest::addColumn<QRect>("boxAfter");
    // From 1.0 to 2.0 with the origin at (100, 50), a view-anchored cross at (300, 150) and
    // view-anchored boxes, whose own place starts at (0, 0), with a box at (10, 10, 5, 5).
    QTest::newRow("about the origin") << 0 << QPoint(100, 50) << QPointF(500, 250) << QRect(-80, -30, 10, 10);
    QTest::newRow("about the centre") << 1 << QPoint(0, -50) << QPointF(400, 150) << QRect(-180, -130, 10, 10);
    QTest::newRow("other modes clamp to the centre") << 5 << QPoint(0, -50) << QPointF(400, 150)
                                                     << QRect(-180, -130, 10, 10);
}

void GraphicsRendererTest::rescaleKeepsFixedPoint()
{
    QFETCH(int, mode);
    QFETCH(QPoint, origin);
    QFETCH(QPointF, crossAfter);
    QFETCH(QRect, boxAfter);
    GraphicsRenderer::setZoomMode(GraphicsRenderer::ZoomMode(mode));
    GraphicsRenderer::setOrigin(QPoint(100, 50));
    TestCanvas canvas;
    MemoryBoxes attack(ContactBoxCode::Attack);
    attack.append(QRect(10, 10, 5, 5));
    canvas.setContactBoxes(ContactBoxCode::Attack, &attack);
    canvas.setItemPositionMode(GraphicsRenderer::ContactBoxes, GraphicsRenderer::AnchorView);
    QCOMPARE(canvas.boxScreenRect(ContactBoxCode::Attack, 0), QRect(10, 10, 5, 5));
    m_widget->setRenderer(&canvas); // a 400 x 300 view: centre (200, 150)
    canvas.setItemPositionMode(GraphicsRenderer::SecondaryCross, GraphicsRenderer::AnchorView);
    canvas.setItemPosition(GraphicsRenderer::SecondaryCross, QPointF(300, 150));
    canvas.setZoomLevel(5);
    QCOMPARE(GraphicsRenderer::origin(), origin);
    QCOMPARE(canvas.itemPosition(GraphicsRenderer::SecondaryCross), crossAfter);
    QCOMPARE(canvas.boxScreenRect(ContactBoxCode::Attack, 0), boxAfter);
    // And back: the origin returns to where it was, whole pixels being kept.
    canvas.setZoomLevel(3);
    QCOMPARE(GraphicsRenderer::origin(), QPoint(100, 50));
    QCOMPARE(canvas.itemPosition(GraphicsRenderer::SecondaryCross), QPointF(300, 150));
    QCOMPARE(canvas.boxScreenRect(ContactBoxCode::Attack, 0), QRect(10, 10, 5, 5));
    m_widget->setRenderer(nullptr);
}

void GraphicsRendererTest::zoomFitPicksLevel_data()
{
    QTest::addColumn<QSizeF>("spriteSize");
    QTest::addColumn<int>("level");
    QTest::addColumn<QPoint>("origin");
    // View 430 x 330, target 400 x 300, origin (0, 0), sprite at the origin, centre (215, 165).
    // Wide: the height has more slack, ratio 400 / 200 = 2, the largest value below is 1.5.
    // Origin: (130, 155) centred, then 215 + trunc(-85 * 1.5), 165 + trunc(-10 * 1.5).
    QTest::newRow("wide, by the width") << QSizeF(200, 50) << 4 << QPoint(88, 150);
    // Tall: the width has more slack, ratio 300 / 60 = 5, below it 4.5. Origin (180, 150)
    // centred, then 215 + trunc(-35 * 4.5), 165 + trunc(-15 * 4.5). The rule weighs slack
    // in pixels, not ratios, so this sprite ends wider than the view: kept as it is.
    QTest::newRow("tall, by the height") << QSizeF(100, 60) << 12 << QPoint(58, 98);
}

void GraphicsRendererTest::zoomFitPicksLevel()
{
    QFETCH(QSizeF, spriteSize);
    QFETCH(int, level);
    QFETCH(QPoint, origin);
    GraphicsRenderer::setOrigin(QPoint(0, 0));
    OffScreenRenderWidget widget(false, QSize(430, 330));
    TestCanvas canvas;
    TestSprites sprites;
    sprites.add(QPointF(0, 0), spriteSize, Qt::red, 1);
    canvas.setSprites(&sprites);
    widget.setRenderer(&canvas);
    canvas.zoomFit();
    QCOMPARE(int(canvas.zoomLevel()), level);
    QCOMPARE(GraphicsRenderer::zoomMode(), GraphicsRenderer::ZoomAroundOrigin);
    QCOMPARE(GraphicsRenderer::origin(), origin);
}

void GraphicsRendererTest::zoomFitWithNothingToFit()
{
    TestCanvas canvas;
    m_widget->setRenderer(&canvas);
    canvas.setZoomLevel(7);
    canvas.zoomFit();
    QCOMPARE(int(canvas.zoomLevel()), 7);
    QCOMPARE(GraphicsRenderer::origin(), QPoint(200, 150));
    // Hidden boxes don't count either.
    MemoryBoxes attack(ContactBoxCode::Attack);
    attack.append(QRect(0, 0, 10, 10));
    canvas.setContactBoxes(ContactBoxCode::Attack, &attack);
    canvas.setVisibility(true, true, true, false, true, false, false);
    canvas.zoomFit();
    QCOMPARE(int(canvas.zoomLevel()), 7);
    canvas.setVisibility(true, true, true, true, true, false, false);
    canvas.zoomFit();
    QVERIFY(canvas.zoomLevel() != 7);
    m_widget->setRenderer(nullptr);
}

// The onion frame counts only while it is on; placed like the wide sprite above, it gives
// the same level and origin.
void GraphicsRendererTest::zoomFitTakesTheOnionFrame()
{
    GraphicsRenderer::setOrigin(QPoint(0, 0));
    OffScreenRenderWidget widget(false, QSize(430, 330));
    TestCanvas canvas;
    TestSprite onion(QSize(200, 50), QPoint(0, 0));
    canvas.setOnionSkinSprite(&onion, QPoint(0, 0));
    widget.setRenderer(&canvas);
    canvas.zoomFit();
    QCOMPARE(int(canvas.zoomLevel()), 3);
    QCOMPARE(GraphicsRenderer::origin(), QPoint(0, 0));
    canvas.setOnionSkin(true, GraphicsRenderer::OnionGrayscale, 0.25f);
    QCOMPARE(canvas.onionEffect(), GraphicsRenderer::OnionGrayscale);
    QCOMPARE(canvas.onionOpacity(), 0.25f);
    canvas.zoomFit();
    QCOMPARE(int(canvas.zoomLevel()), 4);
    QCOMPARE(GraphicsRenderer::origin(), QPoint(88, 150));
}

void GraphicsRendererTest::zoomFitWithNoSmallerValue()
{
    TestCanvas canvas;
    TestSprites sprites;
    sprites.add(QPointF(0, 0), QSizeF(40000, 40000), Qt::red, 1);
    canvas.setSprites(&sprites);
    m_widget->setRenderer(&canvas);
    canvas.setZoomLevel(5);
    canvas.zoomFit(); // wanted 2 * 270 / 80000: nothing in the row is below
    QCOMPARE(int(canvas.zoomLevel()), 5);
    m_widget->setRenderer(nullptr);
}

void GraphicsRendererTest::backgroundByGameSize_data()
{
    QTest::addColumn<GraphicsRenderer::BackgroundType>("type");
    QTest::addColumn<int>("width");
    QTest::addColumn<QString>("picture");
    QTest::addColumn<QPoint>("offset");
    const QPoint given(5, -6);
    using G = GraphicsRenderer;
    QTest::newRow("no game: 240p") << G::StageBackground << 320 << "240p.png" << QPoint(-212, -207);
    QTest::newRow("639 is still 240p") << G::StageBackground << 639 << "240p.png" << QPoint(-212, -207);
    QTest::newRow("640: 480p") << G::StageBackground << 640 << "480p.png" << QPoint(-424, -415);
    QTest::newRow("1279: 480p") << G::StageBackground << 1279 << "480p.png" << QPoint(-424, -415);
    QTest::newRow("1280: 720p") << G::StageBackground << 1280 << "720p.png" << QPoint(-638, -623);
    QTest::newRow("1920: 1080p") << G::StageBackground << 1920 << "1080p.png" << QPoint(-958, -936);
    QTest::newRow("4000: 1080p") << G::StageBackground << 4000 << "1080p.png" << QPoint(-958, -936);
    QTest::newRow("gradient only") << G::GradientBackground << 640 << QString() << QPoint();
    QTest::newRow("file") << G::FileBackground << 640 << "file" << given;
    QTest::newRow("missing file") << G::FileBackground << 640 << "missing" << QPoint();
}

void GraphicsRendererTest::backgroundByGameSize()
{
    QFETCH(GraphicsRenderer::BackgroundType, type);
    QFETCH(int, width);
    QFETCH(QString, picture);
    QFETCH(QPoint, offset);
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("stage.png"));
    QImage own(12, 7, QImage::Format_ARGB32);
    own.fill(QColor(10, 200, 30));
    QVERIFY(own.save(file));
    const QString given = picture == QLatin1String("file") ? file : dir.filePath(QStringLiteral("nothing.png"));
    GraphicsRenderer::setBackground(Qt::white, Qt::black, type, QPoint(5, -6), given, QSize(width, 240));
    const QPixmap background = GraphicsRenderer::backgroundPicture();
    if (picture.isEmpty() || picture == QLatin1String("missing")) {
        QVERIFY(background.isNull());
        return;
    }
    const QImage expected = picture == QLatin1String("file") ? own : resourceImage(picture);
    QVERIFY(!expected.isNull());
    QCOMPARE(pictureOf(background), expected);
    QCOMPARE(GraphicsRenderer::backgroundOffset(), offset);
}

void GraphicsRendererTest::crossPictures_data()
{
    QTest::addColumn<GraphicsRenderer::CrossHairType>("type");
    QTest::addColumn<bool>("filesExist");
    QTest::addColumn<QStringList>("expected"); // "own" for the file given
    using G = GraphicsRenderer;
    QTest::newRow("first set") << G::FirstCrossSet << true << QStringList{"sff.png", "air.png", "extra.png"};
    QTest::newRow("second set") << G::SecondCrossSet << true << QStringList{"cruz.png", "cruz2.png", "cruz3.png"};
    QTest::newRow("own pictures") << G::FileCrosses << true << QStringList{"own", "own", "own"};
    QTest::newRow("missing files fall back") << G::FileCrosses << false << QStringList{"sff.png", "air.png", ""};
}

void GraphicsRendererTest::crossPictures()
{
    QFETCH(GraphicsRenderer::CrossHairType, type);
    QFETCH(bool, filesExist);
    QFETCH(QStringList, expected);
    QTemporaryDir dir;
    QStringList files;
    QImage own(9, 9, QImage::Format_ARGB32);
    own.fill(QColor(250, 0, 250));
    for (int i = 0; i < 3; ++i) {
        files << dir.filePath(QStringLiteral("cross%1.png").arg(i));
        if (filesExist)
            QVERIFY(own.save(files.last()));
    }
    GraphicsRenderer::setCrossHair(type, files.at(0), files.at(1), files.at(2));
    for (int i = 0; i < 3; ++i) {
        const QPixmap picture = GraphicsRenderer::crossPicture(i);
        if (expected.at(i).isEmpty())
            QVERIFY(picture.isNull());
        else
            QCOMPARE(pictureOf(picture), expected.at(i) == QLatin1String("own") ? own : resourceImage(expected.at(i)));
    }
}

void GraphicsRendererTest::anchors_data()
{
    QTest::addColumn<int>("flags");
    QTest::addColumn<int>("parent");
    QTest::addColumn<double>("spriteScale");
    QTest::addColumn<QPointF>("screen");
    // Zoom 2, origin (200, 150), main cross at world (10, 5): on screen (220, 160); sprite 0
    // at world (20, -10) from the origin: (240, 130). Sprite 1 stands at (50, 60).
    using G = GraphicsRenderer;
    QTest::newRow("view pixels") << int(G::AnchorView) << 0 << 1.0 << QPointF(50, 60);
    QTest::newRow("view, world units") << int(G::AnchorView | G::WorldUnits) << 0 << 1.0 << QPointF(100, 120);
    QTest::newRow("origin") << int(G::AnchorOrigin | G::WorldUnits) << 0 << 1.0 << QPointF(300, 270);
    QTest::newRow("main cross") << int(G::AnchorCross | G::WorldUnits) << 0 << 1.0 << QPointF(320, 280);
    QTest::newRow("sprite 0") << int(G::AnchorSprite | G::WorldUnits) << 0 << 1.0 << QPointF(340, 250);
    QTest::newRow("sprite 0, scaled") << int(G::AnchorSprite | G::WorldUnits) << 0 << 0.5 << QPointF(290, 190);
    QTest::newRow("no such cross: origin") << int(G::AnchorCross | G::WorldUnits) << 9 << 1.0 << QPointF(300, 270);
}

void GraphicsRendererTest::anchors()
{
    QFETCH(int, flags);
    QFETCH(int, parent);
    QFETCH(double, spriteScale);
    QFETCH(QPointF, screen);
    TestCanvas canvas;
    TestSprites sprites;
    sprites.add(QPointF(20, -10), QSizeF(10, 10), Qt::red, 1);
    sprites.add(QPointF(50, 60), QSizeF(10, 10), Qt::blue, 2);
    sprites.infos[1].scaleX = sprites.infos[1].scaleY = spriteScale;
    canvas.setSprites(&sprites);
    canvas.setZoomLevel(5);
    canvas.setItemPosition(GraphicsRenderer::MainCross, QPointF(10, 5));
    canvas.setItemPositionMode(GraphicsRenderer::SpriteItem, static_cast<unsigned char>(flags), uint(parent), 1);
    QCOMPARE(canvas.itemScreenPosition(GraphicsRenderer::SpriteItem, 1), screen);
    QCOMPARE(canvas.itemPositionMode(GraphicsRenderer::SpriteItem, 1), static_cast<unsigned char>(flags));
    // Crosses always keep world units; the box group never has them.
    canvas.setItemPositionMode(GraphicsRenderer::ExtraCross, GraphicsRenderer::AnchorOrigin);
    QCOMPARE(int(canvas.itemPositionMode(GraphicsRenderer::ExtraCross)),
             int(GraphicsRenderer::AnchorOrigin | GraphicsRenderer::WorldUnits));
    canvas.setItemPositionMode(GraphicsRenderer::ContactBoxes, 0xff, 1);
    QCOMPARE(int(canvas.itemPositionMode(GraphicsRenderer::ContactBoxes)), 0xff & ~GraphicsRenderer::WorldUnits);
}

void GraphicsRendererTest::anchorLoopEnds()
{
    TestCanvas canvas;
    TestSprites sprites;
    sprites.add(QPointF(1, 1), QSizeF(10, 10), Qt::red, 1);
    canvas.setSprites(&sprites);
    canvas.setItemPositionMode(GraphicsRenderer::SpriteItem, GraphicsRenderer::AnchorSprite, 0, 0);
    canvas.setItemPositionMode(GraphicsRenderer::MainCross, GraphicsRenderer::AnchorCross, 0);
    const QPointF sprite = canvas.itemScreenPosition(GraphicsRenderer::SpriteItem, 0);
    const QPointF cross = canvas.itemScreenPosition(GraphicsRenderer::MainCross);
    QVERIFY(qIsFinite(sprite.x()) && qIsFinite(cross.x()));
    m_widget->setRenderer(&canvas);
    m_widget->update(); // and it paints
    QCOMPARE(canvas.renders, 1);
    m_widget->setRenderer(nullptr);
}

void GraphicsRendererTest::itemPositions()
{
    TestCanvas canvas;
    TestSprites sprites;
    sprites.add(QPointF(3, 4), QSizeF(10, 10), Qt::red, 1);
    canvas.setSprites(&sprites);
    m_widget->setRenderer(&canvas);
    canvas.setItemPosition(GraphicsRenderer::SpriteItem, QPointF(3, 4 + 1e-13), 0);
    QCOMPARE(canvas.renders, 0);
    canvas.setItemPosition(GraphicsRenderer::SpriteItem, QPointF(3, 5), 0, false);
    QCOMPARE(canvas.renders, 0);
    QCOMPARE(sprites.infos[0].position, QPointF(3, 5));
    canvas.setItemPosition(GraphicsRenderer::SecondaryCross, QPointF(-7, 2));
    QCOMPARE(canvas.renders, 1);
    QCOMPARE(canvas.itemPosition(GraphicsRenderer::SecondaryCross), QPointF(-7, 2));
    canvas.setItemPosition(GraphicsRenderer::ContactBoxes, QPointF(5, 5));
    QCOMPARE(canvas.itemPosition(GraphicsRenderer::ContactBoxes), QPointF(0, 0));
    QCOMPARE(canvas.itemPosition(GraphicsRenderer::SpriteItem, 9), QPointF(0, 0));
    QCOMPARE(canvas.renders, 1);
    QCOMPARE(canvas.indexOfItem(GraphicsRenderer::SpriteItem, &sprites.infos[0]), 0);
    QCOMPARE(canvas.indexOfItem(GraphicsRenderer::SpriteItem, &canvas), -1);
    m_widget->setRenderer(nullptr);
}

// View 400 x 300, origin (200, 150), first cross set (15 x 15): main cross at (193..207,
// 143..157), secondary 60 to the right, extra 60 to the left. Sprite 0 covers (180..220,
// 110..150), sprite 1 (300..330, 100..130). Boxes hang on the main cross: the attack box at
// (190..210, 70..80), collision boxes at (190..210, 75..85) and (195..205, 145..155).
// Guides at world (-15, 80): x 184 and y 229.
void GraphicsRendererTest::makeHitScene(TestCanvas &canvas, TestSprites &sprites, MemoryBoxes &attack,
                                        MemoryBoxes &collision)
{
    sprites.add(QPointF(0, 0), QSizeF(40, 40), Qt::red, 1, QPointF(20, 40));
    sprites.add(QPointF(100, -50), QSizeF(30, 30), Qt::blue, 2);
    canvas.setSprites(&sprites);
    canvas.setItemPosition(GraphicsRenderer::SecondaryCross, QPointF(60, 0));
    canvas.setItemPosition(GraphicsRenderer::ExtraCross, QPointF(-60, 0));
    attack.append(QRect(-10, -80, 20, 10));
    collision.append(QRect(-10, -75, 20, 10));
    collision.append(QRect(-5, -5, 10, 10));
    canvas.setContactBoxes(ContactBoxCode::Attack, &attack);
    canvas.setContactBoxes(ContactBoxCode::Collision, &collision);
    canvas.setGuideLines(QPoint(-15, 80));
    canvas.setVisibility(true, true, true, true, true, true, true);
    m_widget->setRenderer(&canvas);
}

void GraphicsRendererTest::hitCodes_data()
{
    QTest::addColumn<QPoint>("point");
    QTest::addColumn<QString>("setting");
    QTest::addColumn<int>("hit");
    QTest::newRow("left ruler over a guide") << QPoint(10, 229) << "" << 0;
    QTest::newRow("top ruler over a guide") << QPoint(184, 29) << "" << 0;
    QTest::newRow("rulers hidden") << QPoint(184, 29) << "no rulers" << 6;
    QTest::newRow("vertical guide") << QPoint(186, 200) << "" << 6;
    QTest::newRow("horizontal guide") << QPoint(50, 231) << "" << 5;
    QTest::newRow("beside the guide") << QPoint(187, 200) << "" << 0;
    QTest::newRow("guide above sprites: sprite first") << QPoint(184, 120) << "" << 1;
    QTest::newRow("guide under sprites: guide first") << QPoint(184, 120) << "sprites over guides" << 6;
    QTest::newRow("main cross over a sprite") << QPoint(200, 143) << "" << 2;
    QTest::newRow("secondary cross") << QPoint(260, 150) << "" << 3;
    QTest::newRow("extra cross") << QPoint(140, 150) << "" << 4;
    QTest::newRow("cross before a box") << QPoint(200, 150) << "" << 2;
    QTest::newRow("box before a cross") << QPoint(200, 150) << "contact over cross" << 7;
    QTest::newRow("sprite 0") << QPoint(215, 140) << "" << 1;
    QTest::newRow("sprite 1") << QPoint(310, 110) << "" << 1;
    QTest::newRow("attack box") << QPoint(195, 72) << "" << 7;
    QTest::newRow("nothing") << QPoint(350, 250) << "" << 0;
    QTest::newRow("drawing: nothing") << QPoint(200, 150) << "draw" << 0;
    QTest::newRow("drawing: guides still") << QPoint(184, 200) << "draw sprites over guides" << 6;
    QTest::newRow("capture skips crosses") << QPoint(140, 150) << "capture" << 0;
    QTest::newRow("capture: box") << QPoint(200, 150) << "capture" << 7;
    QTest::newRow("capture: sprite") << QPoint(215, 140) << "capture" << 1;
    QTest::newRow("top left sizer") << QPoint(190, 70) << "select" << 8;
    QTest::newRow("top middle sizer") << QPoint(200, 70) << "select" << 9;
    QTest::newRow("middle left sizer") << QPoint(190, 75) << "select" << 10;
    QTest::newRow("top right sizer") << QPoint(210, 70) << "select" << 11;
    QTest::newRow("bottom left sizer") << QPoint(190, 80) << "select" << 12;
    QTest::newRow("bottom middle sizer") << QPoint(200, 80) << "select" << 13;
    QTest::newRow("bottom right sizer") << QPoint(210, 80) << "select" << 14;
    QTest::newRow("middle right sizer") << QPoint(210, 75) << "select" << 15;
    QTest::newRow("inside the selection") << QPoint(200, 76) << "select" << 7;
}

void GraphicsRendererTest::hitCodes()
{
    QFETCH(QPoint, point);
    QFETCH(QString, setting);
    QFETCH(int, hit);
    TestCanvas canvas;
    TestSprites sprites;
    MemoryBoxes attack(ContactBoxCode::Attack), collision(ContactBoxCode::Collision);
    makeHitScene(canvas, sprites, attack, collision);
    GraphicsRenderer::setPriority(setting.contains(QLatin1String("sprites over guides")),
                                  setting.contains(QLatin1String("contact over cross")));
    if (setting == QLatin1String("no rulers"))
        canvas.setVisibility(true, true, true, true, true, false, true);
    if (setting.startsWith(QLatin1String("draw")))
        canvas.setDrawContactBoxMode(ContactBoxCode::Attack);
    if (setting == QLatin1String("capture"))
        canvas.setCaptureMode();
    if (setting == QLatin1String("select")) {
        canvas.mousePressed(QPoint(195, 72), Qt::LeftButton, Qt::NoModifier);
        canvas.mouseReleased(QPoint(195, 72), Qt::LeftButton, Qt::NoModifier);
        QCOMPARE(canvas.selectedContactBoxes(), QList<ContactBoxCode *>{attack.at(0)});
        QCOMPARE(canvas.boxesSelectionRect(), QRect(-10, -80, 20, 10));
    }
    QCOMPARE(canvas.hitTest(point), hit);
    m_widget->setRenderer(nullptr);
}

void GraphicsRendererTest::clickModes()
{
    TestCanvas canvas;
    MemoryBoxes attack(ContactBoxCode::Attack);
    attack.append(QRect(0, 0, 5, 5));
    canvas.setContactBoxes(ContactBoxCode::Attack, &attack);
    canvas.setVisibility(false, false, false, true, true, false, false);
    QCOMPARE(canvas.clickMode(), GraphicsRenderer::PositioningMode);
    canvas.mousePressed(QPoint(202, 152), Qt::LeftButton, Qt::NoModifier); // box at (200..205, 150..155)
    canvas.mouseReleased(QPoint(202, 152), Qt::LeftButton, Qt::NoModifier);
    QCOMPARE(canvas.selectedContactBoxes().size(), 1);
    canvas.setDrawContactBoxMode(ContactBoxCode::Attack);
    QCOMPARE(canvas.clickMode(), GraphicsRenderer::DrawContactBoxMode);
    QVERIFY(canvas.selectedContactBoxes().isEmpty());
    QCOMPARE(canvas.boxesSelectionRect(), QRect(4444, 4444, -8888, -8888));
    // Leaving the mode while a box is half drawn drops it.
    canvas.mousePressed(QPoint(250, 200), Qt::LeftButton, Qt::NoModifier);
    canvas.mouseMoved(QPoint(260, 230), Qt::NoModifier);
    QCOMPARE(canvas.boxes(ContactBoxCode::Attack).size(), 2);
    canvas.setPositioningMode();
    QCOMPARE(canvas.boxes(ContactBoxCode::Attack).size(), 1);
    QCOMPARE(attack.count(), 1u);
    canvas.setCaptureMode();
    QCOMPARE(canvas.clickMode(), GraphicsRenderer::CaptureMode);
    QCOMPARE(canvas.boxesSelectionRect(), QRect(4444, 4444, -8888, -8888));
}

void GraphicsRendererTest::boxKeys()
{
    TestCanvas canvas;
    MemoryBoxes collision(ContactBoxCode::Collision);
    collision.append(QRect(0, 0, 10, 10));
    collision.append(QRect(20, 0, 10, 10));
    canvas.setContactBoxes(ContactBoxCode::Collision, &collision);
    QSignalSpy released(&canvas, &GraphicsRenderer::itemReleased);
    canvas.keyPressed(Qt::Key_Left, Qt::NoModifier); // nothing selected: nothing happens
    QCOMPARE(released.count(), 0);
    canvas.mousePressed(QPoint(225, 155), Qt::LeftButton, Qt::NoModifier);
    canvas.mouseReleased(QPoint(225, 155), Qt::LeftButton, Qt::NoModifier);
    canvas.keyPressed(Qt::Key_Left, Qt::ShiftModifier); // a modifier: nothing happens
    QCOMPARE(released.count(), 0);
    canvas.keyPressed(Qt::Key_Left, Qt::NoModifier);
    canvas.keyPressed(Qt::Key_Down, Qt::NoModifier);
    canvas.keyPressed(Qt::Key_Down, Qt::NoModifier);
    QCOMPARE(canvas.boxes(ContactBoxCode::Collision).at(1).rect, QRectF(19, 2, 10, 10));
    QCOMPARE(canvas.boxes(ContactBoxCode::Collision).at(0).rect, QRectF(0, 0, 10, 10));
    QCOMPARE(released.count(), 3);
    QCOMPARE(released.last().at(0).value<GraphicsRenderer::ItemType>(), GraphicsRenderer::ContactBoxes);
    QCOMPARE(released.last().at(1).toInt(), -1);
    QCOMPARE(released.last().at(2).toPoint(), QPoint());
    canvas.keyPressed(Qt::Key_Backspace, Qt::NoModifier);
    QCOMPARE(canvas.boxes(ContactBoxCode::Collision).size(), 1);
    QCOMPARE(collision.count(), 1u);
    QCOMPARE(collision.at(0)->rect(), QRect(0, 0, 10, 10));
    QCOMPARE(released.count(), 4);
    canvas.keyPressed(Qt::Key_Delete, Qt::NoModifier); // nothing left selected
    QCOMPARE(released.count(), 4);
}

void GraphicsRendererTest::boxContainerFollows()
{
    TestCanvas canvas;
    MemoryBoxes attack(ContactBoxCode::Attack);
    canvas.setContactBoxes(ContactBoxCode::Attack, &attack);
    ContactBoxCode *code = canvas.appendContactBox(ContactBoxCode::Attack, QRect(1, 2, 3, 4));
    QVERIFY(code);
    canvas.setVisibility(false, false, false, true, true, false, false);
    QCOMPARE(attack.count(), 1u);
    QCOMPARE(code->rect(), QRect(1, 2, 3, 4));
    QCOMPARE(canvas.indexOfItem(GraphicsRenderer::ContactBoxes, code), 0);
    // Setting the same container again keeps the selection; another container doesn't.
    canvas.mousePressed(QPoint(202, 154), Qt::LeftButton, Qt::NoModifier);
    canvas.mouseReleased(QPoint(202, 154), Qt::LeftButton, Qt::NoModifier);
    QCOMPARE(canvas.selectedContactBoxes(), QList<ContactBoxCode *>{code});
    canvas.setContactBoxes(ContactBoxCode::Attack, &attack);
    QCOMPARE(canvas.selectedContactBoxes(), QList<ContactBoxCode *>{code});
    MemoryBoxes other(ContactBoxCode::Attack);
    other.append(QRect(1, 2, 3, 4));
    canvas.setContactBoxes(ContactBoxCode::Attack, &other);
    QVERIFY(canvas.selectedContactBoxes().isEmpty());
    QVERIFY(canvas.appendContactBox(ContactBoxCode::BoxType(9), QRect(0, 0, 1, 1)) == nullptr);
    QVERIFY(canvas.boxes(ContactBoxCode::BoxType(9)).isEmpty());
}

void GraphicsRendererTest::renderOrder_data()
{
    QTest::addColumn<bool>("spriteOverGuides");
    QTest::addColumn<bool>("contactOverCross");
    QTest::newRow("guides and crosses on top") << false << false;
    QTest::newRow("sprites over guides") << true << false;
    QTest::newRow("boxes over the cross") << false << true;
}

// A red sprite crossed by the vertical guide, and a green cross of our own under a
// collision box: which of them is seen says which was drawn last.
void GraphicsRendererTest::renderOrder()
{
    QFETCH(bool, spriteOverGuides);
    QFETCH(bool, contactOverCross);
    QTemporaryDir dir;
    QImage green(9, 9, QImage::Format_ARGB32);
    green.fill(QColor(0, 200, 0));
    const QString crossFile = dir.filePath(QStringLiteral("green.png"));
    QVERIFY(green.save(crossFile));
    GraphicsRenderer::setCrossHair(GraphicsRenderer::FileCrosses, crossFile, crossFile, crossFile);
    GraphicsRenderer::setupContactBoxes(Qt::red, QColor(0, 0, 255), 1.0f);
    GraphicsRenderer::setPriority(spriteOverGuides, contactOverCross);
    TestCanvas canvas;
    TestSprites sprites;
    sprites.add(QPointF(-30, 30), QSizeF(40, 40), QColor(200, 0, 0), 1, QPointF(20, 20)); // (150..190, 160..200)
    canvas.setSprites(&sprites);
    MemoryBoxes collision(ContactBoxCode::Collision);
    collision.append(QRect(-10, -10, 20, 20)); // (190..210, 140..160) over the cross at (196..204, 146..154)
    canvas.setContactBoxes(ContactBoxCode::Collision, &collision);
    canvas.setVisibility(true, false, false, true, true, false, true);
    canvas.setGuideLines(QPoint(-30, 30)); // x 169, y 179
    m_widget->setRenderer(&canvas);
    m_widget->update();
    const QImage shot = m_widget->output().convertToFormat(QImage::Format_RGB32);
    QCOMPARE(shot.pixelColor(169, 190), spriteOverGuides ? QColor(200, 0, 0) : QColor(0, 255, 255));
    if (contactOverCross)
        QVERIFY(shot.pixelColor(200, 150) != QColor(0, 200, 0) && shot.pixelColor(200, 150).blue() > 100);
    else
        QCOMPARE(shot.pixelColor(200, 150), QColor(0, 200, 0));
    m_widget->setRenderer(nullptr);
}

// Selected boxes are hatched in their line colour under the half-opaque fill: forward
// diagonals for attack boxes, backward ones for collision boxes. Where the hatch is, the
// pixel is the line colour exactly; elsewhere half of it over the background.
void GraphicsRendererTest::boxHatches()
{
    GraphicsRenderer::setupContactBoxes(QColor(255, 0, 0), QColor(0, 0, 255), 1.0f);
    TestCanvas canvas;
    MemoryBoxes attack(ContactBoxCode::Attack), collision(ContactBoxCode::Collision);
    attack.append(QRect(-100, -50, 40, 30));
    collision.append(QRect(50, -50, 40, 30));
    canvas.setContactBoxes(ContactBoxCode::Attack, &attack);
    canvas.setContactBoxes(ContactBoxCode::Collision, &collision);
    canvas.setVisibility(false, false, false, true, true, false, false);
    m_widget->setRenderer(&canvas);
    canvas.mousePressed(QPoint(120, 115), Qt::LeftButton, Qt::NoModifier);
    canvas.mouseReleased(QPoint(120, 115), Qt::LeftButton, Qt::NoModifier);
    canvas.mousePressed(QPoint(270, 115), Qt::LeftButton, Qt::ShiftModifier);
    canvas.mouseReleased(QPoint(270, 115), Qt::LeftButton, Qt::ShiftModifier);
    QCOMPARE(canvas.selectedContactBoxes().size(), 2);
    m_widget->update();
    const QImage shot = m_widget->output().convertToFormat(QImage::Format_RGB32);
    shot.save(QCoreApplication::applicationDirPath() + QStringLiteral("/graphics-hatches.png"));
    const struct { QRect inner; Qt::BrushStyle style; QColor line; } boxes[] = {
        {QRect(101, 101, 38, 28), Qt::FDiagPattern, QColor(255, 0, 0)},
        {QRect(251, 101, 38, 28), Qt::BDiagPattern, QColor(0, 0, 255)}};
    for (const auto &box : boxes) {
        QImage pattern(shot.size(), QImage::Format_RGB32);
        pattern.fill(Qt::white);
        QPainter painter(&pattern);
        painter.fillRect(box.inner, QBrush(Qt::black, box.style));
        painter.end();
        int hatched = 0;
        for (int y = box.inner.top(); y <= box.inner.bottom(); ++y) {
            for (int x = box.inner.left(); x <= box.inner.right(); ++x) {
                // The sizers of the selection (100, 100)..(290, 130) lie over the boxes.
                const bool onSizer = (qAbs(x - 100) <= 3 || qAbs(x - 195) <= 3 || qAbs(x - 290) <= 3)
                    && (qAbs(y - 100) <= 3 || qAbs(y - 115) <= 3 || qAbs(y - 130) <= 3);
                if (onSizer)
                    continue;
                const bool inPattern = pattern.pixelColor(x, y) == QColor(Qt::black);
                QCOMPARE(shot.pixelColor(x, y) == box.line, inPattern);
                hatched += inPattern;
            }
        }
        QVERIFY(hatched > 50);
    }
    m_widget->setRenderer(nullptr);
}

QTEST_MAIN(GraphicsRendererTest)
#include "tst_graphicsrenderer.moc"
