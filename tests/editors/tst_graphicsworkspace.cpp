// The graphics workspace as its editors and a user meet it: the look and the zoom from the
// host's options, the view state kept between activations, the tool bar's buttons, the
// back end chosen by an option, the extra cross typed in, and the emulator view on top.
#include "../render/graphicstestsupport.h"
#include "../render/rendertestsupport.h"

#include "testinterface.h"
#include "projecttestsupport.h"

#include "editors/animation/timelinewidget.h"
#include "editors/graphics/emulatoreditor.h"
#include "editors/graphics/exaxisdlg.h"
#include "editors/graphics/graphicsworkspace.h"
#include "engine/debugger.h"
#include "engine/engine.h"
#include "foundation/filesystemarchive.h"
#include "render/glrenderwidget.h"
#include "render/renderwidget.h"

#include <QAction>
#include <QLabel>
#include <QPainter>
#include <QSpinBox>
#include <QSplitter>
#include <QTemporaryDir>
#include <QToolBar>
#include <QtTest>

using namespace Ovra;

namespace {

// The canvas of these tests, which also keeps what the workspace last asked it to show.
class RecordingCanvas : public TestCanvas
{
public:
    void setVisibility(bool mainCross, bool secondaryCross, bool extraCross, bool attackBoxes, bool collisionBoxes,
                       bool rulers, bool guides) override
    {
        shown = {mainCross, secondaryCross, extraCross, attackBoxes, collisionBoxes, rulers, guides};
        ++visibilityCalls;
        TestCanvas::setVisibility(mainCross, secondaryCross, extraCross, attackBoxes, collisionBoxes, rulers,
                                  guides);
    }
    // main, secondary, extra, attack, collision, rulers, guides
    QVector<bool> shown;
    int visibilityCalls = 0;
};

class WideEngine : public Engine
{
public:
    WideEngine(QSize size, QPointF scale) : Engine(QStringLiteral("wide")), m_size(size), m_scale(scale) {}
    QString queryString(StringType, uint) const override { return QString(); }
    QString singleFileFilters(int) const override { return QString(); }
    ProjectFile *createFile(int, Project *) override { return nullptr; }
    QSize gameSize() const override { return m_size; }
    QPointF scaleFactors() const override { return m_scale; }

private:
    QSize m_size;
    QPointF m_scale;
};

class EngineWork : public RecordingParent
{
public:
    EngineWork(const QString &root, Archive &archive, Engine *engine) : RecordingParent(root, archive), m_engine(engine)
    {
    }
    Engine *engine() const override { return m_engine; }

private:
    Engine *m_engine;
};

class IdleEmulator : public Emulator
{
public:
    void stepOver() override {}
    void stepInto() override {}
    void stepOut() override {}
    void stepFrame() override {}
    void stop() override {}
    Variable *variable(const QString &) override { return nullptr; }
    bool frameEnded() const override { return false; }
    bool canRun(int) const override { return false; }
    bool start(const Project *) override { return false; }
};

const char *const viewKeyNames[] = {"show_cross1", "show_cross2", "show_attack_box", "show_collision_box",
                                    "show_rulers", "show_guides"};

QImage stagePicture(const char *name)
{
    return QImage(QStringLiteral(":/ovra_icons/icons/") + QLatin1String(name)).convertToFormat(QImage::Format_ARGB32);
}

int colourCount(const QImage &image)
{
    QSet<QRgb> colours;
    for (int y = 0; y < image.height(); y += 3) {
        for (int x = 0; x < image.width(); x += 3)
            colours.insert(image.pixel(x, y));
    }
    return colours.size();
}

} // namespace

class GraphicsWorkspaceTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void background_data();
    void background();
    void zoomOptions_data();
    void zoomOptions();
    void boxColoursAndCrosses();
    void setRendererReadsOptionsAgain();
    void viewStateRoundTrip_data();
    void viewStateRoundTrip();
    void originRoundTrip();
    void clickOnRulersButton();
    void zoomButtons_data();
    void zoomButtons();
    void enableCross_data();
    void enableCross();
    void backEndSwitch();
    void sidePanel();
    void extraAxisTypedIn();
    void extraCrossDragged();
    void emulatorEditor();
    void screenshot();

private:
    void setLookOptions();
    QWidget *buttonOf(const char *action) const;
    bool showWorkspace(QSize size = QSize(900, 520));
    QImage grabView() const;

    std::unique_ptr<TestInterface> m_host;
    std::unique_ptr<GraphicsWorkspace> m_workspace;
    std::unique_ptr<RecordingCanvas> m_canvas;
};

void GraphicsWorkspaceTest::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    qRegisterMetaType<GraphicsRenderer::ItemType>();
}

void GraphicsWorkspaceTest::init()
{
    m_host.reset(new TestInterface);
    setLookOptions();
    m_canvas.reset(new RecordingCanvas);
    m_workspace.reset(new GraphicsWorkspace(m_host.get()));
}

void GraphicsWorkspaceTest::cleanup()
{
    m_workspace.reset();
    m_canvas.reset();
    m_host.reset();
}

// The look of a host that has every option: what a first start of the program writes.
void GraphicsWorkspaceTest::setLookOptions()
{
    QMap<QString, QVariant> &o = m_host->options;
    o[QStringLiteral("back_start")] = QColor(40, 40, 60);
    o[QStringLiteral("back_end")] = QColor(90, 90, 120);
    o[QStringLiteral("background_type")] = 0;
    o[QStringLiteral("background_x")] = 0;
    o[QStringLiteral("background_y")] = 0;
    o[QStringLiteral("attackbox")] = QColor(230, 30, 30);
    o[QStringLiteral("collisionbox")] = QColor(30, 30, 230);
    o[QStringLiteral("box_opacity")] = 0.5;
    o[QStringLiteral("crosshair_type")] = 0;
    o[QStringLiteral("sprite_over_guides")] = false;
    o[QStringLiteral("contact_over_cross")] = false;
    o[QStringLiteral("zoom_mode")] = 0;
    o[QStringLiteral("zoom_center")] = 0;
    o[QStringLiteral("zoom_level")] = 3;
    o[QStringLiteral("native_painting")] = true;
}

QWidget *GraphicsWorkspaceTest::buttonOf(const char *action) const
{
    QAction *known = m_host->action(action);
    return known ? m_workspace->toolBar()->widgetForAction(known) : nullptr;
}

bool GraphicsWorkspaceTest::showWorkspace(QSize size)
{
    m_workspace->resize(size);
    m_workspace->show();
    return QTest::qWaitForWindowExposed(m_workspace.get());
}

QImage GraphicsWorkspaceTest::grabView() const
{
    auto *view = dynamic_cast<QWidget *>(m_workspace->renderWidget());
    if (auto *gl = qobject_cast<GLRenderWidget *>(view))
        return gl->grabFramebuffer().convertToFormat(QImage::Format_RGB32);
    return view ? view->grab().toImage().convertToFormat(QImage::Format_RGB32) : QImage();
}

void GraphicsWorkspaceTest::background_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QSize>("gameSize"); // empty: no project open
    QTest::addColumn<QPointF>("scale");
    QTest::addColumn<QString>("picture"); // "" none, "file" the one written here
    QTest::addColumn<QPoint>("offset");

    QTest::newRow("no project: 240p") << 1 << QSize() << QPointF() << "240p.png" << QPoint(-212, -207);
    QTest::newRow("engine 1280 wide") << 1 << QSize(1280, 720) << QPointF(1, 1) << "720p.png" << QPoint(-638, -623);
    QTest::newRow("scale halves 1280") << 1 << QSize(1280, 720) << QPointF(2, 2) << "480p.png" << QPoint(-424, -415);
    QTest::newRow("scale truncates 1919.9") << 1 << QSize(1920, 1080) << QPointF(1.00001, 1) << "720p.png"
                                            << QPoint(-638, -623);
    QTest::newRow("gradient only") << 0 << QSize() << QPointF() << "" << QPoint();
    QTest::newRow("file with offset") << 2 << QSize() << QPointF() << "file" << QPoint(5, -7);
    QTest::newRow("type out of range") << 9 << QSize() << QPointF() << "file" << QPoint(5, -7);
}

void GraphicsWorkspaceTest::background()
{
    QFETCH(int, type);
    QFETCH(QSize, gameSize);
    QFETCH(QPointF, scale);
    QFETCH(QString, picture);
    QFETCH(QPoint, offset);

    QTemporaryDir dir;
    QImage own(11, 6, QImage::Format_ARGB32);
    own.fill(QColor(10, 120, 200));
    const QString file = dir.filePath(QStringLiteral("back.png"));
    QVERIFY(own.save(file));

    WideEngine engine(gameSize, scale);
    EngineWork work(dir.path() + QLatin1Char('/'), FileSystemArchive::instance(), &engine);
    // Released before the parent goes, also when a check below fails.
    const auto release = [](Project *project) { project->release(); };
    std::unique_ptr<Project, decltype(release)> project(
        gameSize.isEmpty() ? nullptr : new TestProject(&work, 0, nullptr, false), release);
    m_host->projectInUse = project.get();

    m_host->options[QStringLiteral("background_type")] = type;
    m_host->options[QStringLiteral("background_file")] = file;
    m_host->options[QStringLiteral("background_x")] = 5;
    m_host->options[QStringLiteral("background_y")] = -7;
    m_workspace->reconfig();

    const QImage shown = GraphicsRenderer::backgroundPicture().toImage().convertToFormat(QImage::Format_ARGB32);
    if (picture.isEmpty())
        QVERIFY(shown.isNull());
    else if (picture == QLatin1String("file"))
        QCOMPARE(shown, own);
    else
        QCOMPARE(shown, stagePicture(picture.toLatin1().constData()));
    QCOMPARE(GraphicsRenderer::backgroundOffset(), offset);
    m_host->projectInUse = nullptr;
}

void GraphicsWorkspaceTest::zoomOptions_data()
{
    QTest::addColumn<QVariant>("mode");
    QTest::addColumn<QVariant>("center");
    QTest::addColumn<QVariant>("level");
    QTest::addColumn<int>("table");
    QTest::addColumn<int>("zoomMode");
    QTest::addColumn<int>("zoomLevel");
    QTest::addColumn<float>("factor");

    // Level 3 of the fine row and level 2 of the whole row are both one to one, so the
    // factor tells whether the row was chosen before the level went to the canvas.
    QTest::newRow("fine row, actual") << QVariant(0) << QVariant(0) << QVariant(3) << 0 << 0 << 3 << 1.0f;
    QTest::newRow("whole row, actual") << QVariant(1) << QVariant(1) << QVariant(2) << 1 << 1 << 2 << 1.0f;
    QTest::newRow("mode 2 is the whole row") << QVariant(2) << QVariant(0) << QVariant(2) << 1 << 0 << 2 << 1.0f;
    QTest::newRow("mode 9 is the whole row") << QVariant(9) << QVariant(0) << QVariant(2) << 1 << 0 << 2 << 1.0f;
    QTest::newRow("center clamped high") << QVariant(0) << QVariant(7) << QVariant(3) << 0 << 1 << 3 << 1.0f;
    QTest::newRow("center clamped low") << QVariant(0) << QVariant(-4) << QVariant(3) << 0 << 0 << 3 << 1.0f;
    QTest::newRow("negative mode is the fine row") << QVariant(-1) << QVariant(0) << QVariant(3) << 0 << 0 << 3
                                                    << 1.0f;
    // The factor of the last level is whatever the canvas gives it when asked directly.
    QTest::newRow("level above the table") << QVariant(0) << QVariant(0) << QVariant(99) << 0 << 0 << 16 << -1.0f;
    QTest::newRow("negative level") << QVariant(0) << QVariant(0) << QVariant(-5) << 0 << 0 << 0 << -1.0f;
    QTest::newRow("text options") << QVariant(QStringLiteral("1")) << QVariant(QStringLiteral("1"))
                                  << QVariant(QStringLiteral("2")) << 1 << 1 << 2 << 1.0f;
}

void GraphicsWorkspaceTest::zoomOptions()
{
    QFETCH(QVariant, mode);
    QFETCH(QVariant, center);
    QFETCH(QVariant, level);
    QFETCH(int, table);
    QFETCH(int, zoomMode);
    QFETCH(int, zoomLevel);
    QFETCH(float, factor);

    // Start from the other row, so that a level applied before the row would show.
    GraphicsRenderer::setZoomTable(table == 0 ? 1 : 0);
    m_workspace->setRenderer(m_canvas.get());
    m_host->options[QStringLiteral("zoom_mode")] = mode;
    m_host->options[QStringLiteral("zoom_center")] = center;
    m_host->options[QStringLiteral("zoom_level")] = level;
    m_workspace->reconfig();

    QCOMPARE(int(GraphicsRenderer::zoomTable()), table);
    QCOMPARE(int(GraphicsRenderer::zoomMode()), zoomMode);
    QCOMPARE(int(m_canvas->zoomLevel()), zoomLevel);
    if (factor < 0) {
        RecordingCanvas direct;
        direct.setZoomLevel(static_cast<unsigned char>(zoomLevel));
        factor = direct.zoomFactor();
    }
    QCOMPARE(m_canvas->zoomFactor(), factor);
}

// Colours, crosses and draw order reach the picture the user sees.
void GraphicsWorkspaceTest::boxColoursAndCrosses()
{
    MemoryBoxes attack(ContactBoxCode::Attack);
    MemoryBoxes collision(ContactBoxCode::Collision);
    attack.append(QRect(-40, -60, 30, 40));
    collision.append(QRect(10, -50, 30, 40));
    m_canvas->setContactBoxes(ContactBoxCode::Attack, &attack);
    m_canvas->setContactBoxes(ContactBoxCode::Collision, &collision);
    m_host->options[QStringLiteral("attackbox")] = QColor(10, 200, 30);
    m_host->options[QStringLiteral("collisionbox")] = QStringLiteral("#8010f0"); // a host that keeps text
    m_host->options[QStringLiteral("show_attack_box")] = true;
    m_host->options[QStringLiteral("show_collision_box")] = true;
    m_host->options[QStringLiteral("crosshair_type")] = 1;
    m_host->options[QStringLiteral("origin_x")] = 300;
    m_host->options[QStringLiteral("origin_y")] = 200;
    QVERIFY(showWorkspace());
    m_workspace->setRenderer(m_canvas.get());
    m_workspace->reconfig();
    m_workspace->activate();

    QCOMPARE(GraphicsRenderer::crossPicture(0).toImage().convertToFormat(QImage::Format_ARGB32),
             stagePicture("cruz.png"));
    QTRY_VERIFY(m_canvas->renders > 0);
    const QImage shot = grabView();
    const QRect attackRect = m_canvas->boxScreenRect(ContactBoxCode::Attack, 0);
    const QRect collisionRect = m_canvas->boxScreenRect(ContactBoxCode::Collision, 0);
    QVERIFY(shot.rect().contains(attackRect) && shot.rect().contains(collisionRect));
    QCOMPARE(QColor(shot.pixel(attackRect.topLeft())), QColor(10, 200, 30));
    QCOMPARE(QColor(shot.pixel(collisionRect.bottomRight())), QColor(0x80, 0x10, 0xf0));
}

void GraphicsWorkspaceTest::setRendererReadsOptionsAgain()
{
    RecordingCanvas first;
    m_workspace->setRenderer(&first);
    QVERIFY(GraphicsRenderer::backgroundPicture().isNull());

    // The host changed its options without a reconfig: a new canvas still gets them.
    m_host->options[QStringLiteral("background_type")] = 1;
    m_host->options[QStringLiteral("zoom_level")] = 5;
    m_workspace->setRenderer(m_canvas.get());
    QCOMPARE(m_workspace->renderer(), m_canvas.get());
    QCOMPARE(GraphicsRenderer::backgroundPicture().toImage().convertToFormat(QImage::Format_ARGB32),
             stagePicture("240p.png"));
    QCOMPARE(int(m_canvas->zoomLevel()), 5);
    QCOMPARE(first.renderWidget(), nullptr);
    QCOMPARE(m_canvas->renderWidget(), m_workspace->renderWidget());

    m_workspace->release();
    QCOMPARE(m_workspace->renderer(), nullptr);
    QCOMPARE(m_canvas->renderWidget(), nullptr);
}

void GraphicsWorkspaceTest::viewStateRoundTrip_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("shownIndex"); // in RecordingCanvas::shown
    for (int key = 0; key < 6; ++key) {
        static const int shownIndex[] = {0, 1, 3, 4, 5, 6};
        QTest::newRow(viewKeyNames[key]) << key << shownIndex[key];
    }
}

void GraphicsWorkspaceTest::viewStateRoundTrip()
{
    QFETCH(int, key);
    QFETCH(int, shownIndex);
    const QString name = QString::fromLatin1(viewKeyNames[key]);
    for (const char *other : viewKeyNames)
        m_host->options[QString::fromLatin1(other)] = false;
    m_host->options[name] = true;
    m_workspace->setRenderer(m_canvas.get());
    const int callsBefore = m_canvas->visibilityCalls;
    m_workspace->activate();

    // One call with all states, not one for each action that changed.
    QCOMPARE(m_canvas->visibilityCalls, callsBefore + 1);
    QVector<bool> expected(7, false);
    expected[shownIndex] = true;
    QCOMPARE(m_canvas->shown, expected);

    // Everything the other way round, then stored.
    for (QAction *action : m_workspace->toolBar()->actions()) {
        if (action->isCheckable() && action->objectName() != QLatin1String("view_extra_cross"))
            action->toggle();
    }
    m_host->optionWrites.clear();
    m_workspace->deactivate();
    for (const char *written : viewKeyNames) {
        const QString writtenName = QString::fromLatin1(written);
        QVERIFY2(m_host->optionWrites.contains(writtenName), written);
        QCOMPARE(m_host->options.value(writtenName).toBool(), writtenName != name);
    }
}

void GraphicsWorkspaceTest::originRoundTrip()
{
    m_host->options[QStringLiteral("origin_x")] = 33;
    m_host->options[QStringLiteral("origin_y")] = -44;
    m_workspace->activate();
    QCOMPARE(GraphicsRenderer::origin(), QPoint(33, -44));
    GraphicsRenderer::setOrigin(QPoint(120, 95));
    m_workspace->deactivate();
    QCOMPARE(m_host->options.value(QStringLiteral("origin_x")).toInt(), 120);
    QCOMPARE(m_host->options.value(QStringLiteral("origin_y")).toInt(), 95);

    // A host that kept nothing: the origin goes to the middle of the view once the view
    // has its size, and a view that never got one keeps nothing either.
    m_host->options.remove(QStringLiteral("origin_x"));
    m_host->options.remove(QStringLiteral("origin_y"));
    m_workspace->activate();
    m_workspace->deactivate();
    QVERIFY(!m_host->options.contains(QStringLiteral("origin_x")));
    m_workspace->setRenderer(m_canvas.get());
    m_workspace->activate();
    QVERIFY(showWorkspace());
    const QSize view = m_canvas->viewSize();
    QTRY_VERIFY(QRect(QPoint(view.width() / 2 - 2, view.height() / 2 - 2), QSize(5, 5)).contains(GraphicsRenderer::origin()));
}

void GraphicsWorkspaceTest::clickOnRulersButton()
{
    m_workspace->setRenderer(m_canvas.get());
    QVERIFY(showWorkspace());
    QWidget *button = buttonOf("view_rulers");
    QVERIFY(button);
    QVERIFY(button->isVisible());
    QVERIFY(!m_canvas->rulersVisible());
    // The test host's icons are single pixels: the workspace drew its own, at full size.
    QCOMPARE(m_host->action("view_rulers")->icon().actualSize(QSize(16, 16)), QSize(16, 16));

    QTest::mouseClick(button, Qt::LeftButton);
    QVERIFY(m_host->action("view_rulers")->isChecked());
    QVERIFY(m_canvas->rulersVisible());
    QCOMPARE(m_canvas->shown, QVector<bool>({false, false, false, false, false, true, false}));

    QTest::mouseClick(buttonOf("view_guide_lines"), Qt::LeftButton);
    QVERIFY(m_canvas->guidesVisible());
    QTest::mouseClick(button, Qt::LeftButton);
    QVERIFY(!m_canvas->rulersVisible());
    QVERIFY(m_canvas->guidesVisible());
    QCOMPARE(m_host->actionScopes.value(QStringLiteral("view_rulers")), QStringLiteral("graphics/0"));
}

void GraphicsWorkspaceTest::zoomButtons_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<int>("level");
    QTest::newRow("in") << "view_zoom_in" << 5;
    QTest::newRow("out") << "view_zoom_out" << 3;
    QTest::newRow("actual") << "view_zoom_actual" << 3;
}

void GraphicsWorkspaceTest::zoomButtons()
{
    QFETCH(QString, action);
    QFETCH(int, level);
    m_host->options[QStringLiteral("zoom_level")] = 4;
    m_workspace->setRenderer(m_canvas.get());
    QVERIFY(showWorkspace());
    QCOMPARE(int(m_canvas->zoomLevel()), 4);
    QWidget *button = buttonOf(action.toLatin1().constData());
    QVERIFY(button);
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(int(m_canvas->zoomLevel()), level);
}

void GraphicsWorkspaceTest::enableCross_data()
{
    QTest::addColumn<int>("cross");
    QTest::addColumn<QString>("action");
    QTest::newRow("main") << 0 << "view_main_cross";
    QTest::newRow("secondary") << 1 << "view_secondary_cross";
    QTest::newRow("extra") << 2 << "view_extra_cross";
}

void GraphicsWorkspaceTest::enableCross()
{
    QFETCH(int, cross);
    QFETCH(QString, action);
    m_workspace->enableCross(GraphicsWorkspace::Cross(cross), false);
    for (const char *name : {"view_main_cross", "view_secondary_cross", "view_extra_cross"})
        QCOMPARE(m_host->action(name)->isEnabled(), action != QLatin1String(name));
    m_workspace->enableCross(GraphicsWorkspace::Cross(cross), true);
    QVERIFY(m_host->action(action.toLatin1().constData())->isEnabled());
}

void GraphicsWorkspaceTest::backEndSwitch()
{
    m_host->options[QStringLiteral("show_rulers")] = true;
    m_host->options[QStringLiteral("show_cross1")] = true;
    m_workspace->setRenderer(m_canvas.get());
    m_workspace->activate();
    QVERIFY(showWorkspace(QSize(500, 360)));
    RenderWidgetBase *raster = m_workspace->renderWidget();
    QVERIFY(dynamic_cast<RenderWidget *>(raster));
    m_workspace->reconfig();
    QCOMPARE(m_workspace->renderWidget(), raster);
    QCOMPARE(m_canvas->renderWidget(), raster);

    // To OpenGL: a new widget, which takes the canvas once its context is there.
    m_host->options[QStringLiteral("native_painting")] = false;
    m_workspace->reconfig();
    auto *gl = dynamic_cast<GLRenderWidget *>(m_workspace->renderWidget());
    QVERIFY(gl);
    QTRY_COMPARE(m_canvas->renderWidget(), static_cast<RenderWidgetBase *>(gl));
    QVERIFY(m_canvas->isOpenGL());
    m_workspace->reconfig();
    QCOMPARE(m_workspace->renderWidget(), static_cast<RenderWidgetBase *>(gl));
    QTRY_VERIFY(colourCount(grabView()) > 3);

    // And back: the canvas follows and still draws.
    m_host->options[QStringLiteral("native_painting")] = true;
    m_workspace->reconfig();
    auto *again = dynamic_cast<RenderWidget *>(m_workspace->renderWidget());
    QVERIFY(again);
    QCOMPARE(m_canvas->renderWidget(), static_cast<RenderWidgetBase *>(again));
    QVERIFY(!m_canvas->isOpenGL());
    const int before = m_canvas->renders;
    QTRY_VERIFY(m_canvas->renders > before);
    QVERIFY(colourCount(grabView()) > 3);
}

void GraphicsWorkspaceTest::sidePanel()
{
    QVERIFY(showWorkspace());
    auto *first = new QLabel(QStringLiteral("fields"));
    m_workspace->setSidePanel(first);
    QCOMPARE(m_workspace->sidePanel(), first);
    QVERIFY(m_workspace->isAncestorOf(first));
    QTRY_VERIFY(first->isVisible());
    auto *view = dynamic_cast<QWidget *>(m_workspace->renderWidget());
    QVERIFY(first->mapTo(m_workspace.get(), QPoint()).x() > view->mapTo(m_workspace.get(), QPoint()).x());
    // The panel is beside the view, and the time line under both.
    QVERIFY(m_workspace->timeLine()->mapTo(m_workspace.get(), QPoint()).y()
            >= first->mapTo(m_workspace.get(), QPoint(0, first->height())).y());

    QPointer<QLabel> second = new QLabel(QStringLiteral("other"));
    m_workspace->setSidePanel(second);
    QVERIFY(!first->isVisible());
    QVERIFY(second->isVisible());
    m_workspace->setSidePanel(nullptr);
    QCOMPARE(m_workspace->sidePanel(), nullptr);
    QVERIFY(!second->isVisible());
    m_workspace.reset();
    QVERIFY(second.isNull());
}

void GraphicsWorkspaceTest::extraAxisTypedIn()
{
    m_workspace->setRenderer(m_canvas.get());
    QVERIFY(showWorkspace());
    QSignalSpy axisChanged(m_workspace.get(), &GraphicsWorkspace::extraAxisChanged);
    QTest::mouseClick(buttonOf("view_extra_cross"), Qt::LeftButton);
    QVERIFY(m_canvas->shown.at(2));
    ExAxisDlg *dialog = m_workspace->findChild<ExAxisDlg *>();
    QVERIFY(dialog);
    QTRY_VERIFY(dialog->isVisible());
    QCOMPARE(dialog->windowTitle(), QStringLiteral("Extra cross"));

    dialog->xBox()->selectAll();
    QTest::keyClicks(dialog->xBox(), QStringLiteral("42"));
    QVERIFY(!axisChanged.isEmpty());
    QCOMPARE(axisChanged.last().at(0).toPoint(), QPoint(42, 0));
    dialog->yBox()->selectAll();
    QTest::keyClicks(dialog->yBox(), QStringLiteral("-17"));
    QCOMPARE(axisChanged.last().at(0).toPoint(), QPoint(42, -17));
    QCOMPARE(m_workspace->extraAxis(), QPoint(42, -17));
    QCOMPARE(m_canvas->itemPosition(GraphicsRenderer::ExtraCross), QPointF(42, -17));

    // Beyond the range the box stops; nothing else follows.
    dialog->xBox()->selectAll();
    QTest::keyClicks(dialog->xBox(), QStringLiteral("123456"));
    QVERIFY(qAbs(m_workspace->extraAxis().x()) <= 9999);

    // Hiding the cross puts the dialog away; showing it again brings the same place.
    QTest::mouseClick(buttonOf("view_extra_cross"), Qt::LeftButton);
    QTRY_VERIFY(!dialog->isVisible());
    QVERIFY(!m_canvas->shown.at(2));
    m_workspace->setExtraAxis(QPoint(-3, 8));
    QTest::mouseClick(buttonOf("view_extra_cross"), Qt::LeftButton);
    QTRY_VERIFY(dialog->isVisible());
    QCOMPARE(dialog->axis(), QPoint(-3, 8));
}

void GraphicsWorkspaceTest::extraCrossDragged()
{
    m_host->options[QStringLiteral("origin_x")] = 250;
    m_host->options[QStringLiteral("origin_y")] = 200;
    m_host->options[QStringLiteral("zoom_level")] = 3;
    m_workspace->setRenderer(m_canvas.get());
    m_workspace->activate();
    m_workspace->setExtraAxis(QPoint(20, -30));
    QTest::mouseClick(buttonOf("view_extra_cross"), Qt::LeftButton);
    QVERIFY(showWorkspace());
    QSignalSpy axisChanged(m_workspace.get(), &GraphicsWorkspace::extraAxisChanged);

    auto *view = dynamic_cast<QWidget *>(m_workspace->renderWidget());
    const QPoint start = m_canvas->itemScreenPosition(GraphicsRenderer::ExtraCross).toPoint();
    QCOMPARE(m_canvas->hitTest(start), int(GraphicsRenderer::HitExtraCross));
    QTest::mousePress(view, Qt::LeftButton, Qt::NoModifier, start);
    QMouseEvent move(QEvent::MouseMove, start + QPoint(15, 10), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view, &move);
    QTest::mouseRelease(view, Qt::LeftButton, Qt::NoModifier, start + QPoint(15, 10));

    QVERIFY(!axisChanged.isEmpty());
    const QPoint moved = m_workspace->extraAxis();
    QCOMPARE(moved, m_canvas->itemPosition(GraphicsRenderer::ExtraCross).toPoint());
    QVERIFY(moved.x() > 20 && moved.y() > -30);
    ExAxisDlg *dialog = m_workspace->findChild<ExAxisDlg *>();
    QVERIFY(dialog);
    QCOMPARE(dialog->axis(), moved);
}

void GraphicsWorkspaceTest::emulatorEditor()
{
    EmulatorEditor editor(m_workspace.get());
    QCOMPARE(editor.action(), m_host->action("editor_emul"));
    QCOMPARE(QByteArray(editor.name()), QByteArray("emulator"));
    QCOMPARE(editor.widget(), static_cast<QWidget *>(m_workspace.get()));
    QCOMPARE(editor.workspace(), m_workspace.get());
    QCOMPARE(editor.areas(), QList<QWidget *>{dynamic_cast<QWidget *>(m_workspace->renderWidget())});
    QCOMPARE(editor.emulator(), nullptr);
    QVERIFY(!editor.action()->isEnabled());

    QSignalSpy enabled(&editor, &EmulatorEditor::enabled);
    IdleEmulator emulator;
    editor.setEmulator(&emulator);
    QCOMPARE(editor.emulator(), &emulator);
    QCOMPARE(enabled.count(), 1);
    QVERIFY(enabled.last().at(0).toBool());
    QVERIFY(editor.action()->isEnabled());
    editor.engineSwitched(false);
    QCOMPARE(editor.emulator(), nullptr);
    QCOMPARE(enabled.count(), 2);
    QVERIFY(!enabled.last().at(0).toBool());

    m_host->options[QStringLiteral("show_rulers")] = true;
    m_host->options[QStringLiteral("native_painting")] = true;
    m_host->activateEditor(&editor);
    QVERIFY(editor.isActive());
    QCOMPARE(m_host->statusTexts.value(0), QStringLiteral("Renderer: %1").arg(Renderer::name(true)));
    QVERIFY(m_host->action("view_rulers")->isChecked());
    m_host->options[QStringLiteral("native_painting")] = false;
    editor.activate();
    QCOMPARE(m_host->statusTexts.value(0), QStringLiteral("Renderer: %1").arg(Renderer::name(false)));

    emit editor.mousePosChanged(QPoint(12, -7));
    QCOMPARE(m_host->statusTexts.value(1), QStringLiteral("Position: 12, -7"));

    m_host->action("view_rulers")->setChecked(false);
    editor.deactivate();
    QVERIFY(!editor.isActive());
    QCOMPARE(m_host->options.value(QStringLiteral("show_rulers")).toBool(), false);

    editor.setVisible(false);
    QVERIFY(!editor.action()->isVisible());
    editor.setVisible(true);
    QVERIFY(editor.action()->isVisible());
}

void GraphicsWorkspaceTest::screenshot()
{
    TestSprites sprites;
    sprites.add(QPointF(-30, -90), QSizeF(60, 90), QColor(220, 170, 60), 1);
    MemoryBoxes attack(ContactBoxCode::Attack);
    MemoryBoxes collision(ContactBoxCode::Collision);
    attack.append(QRect(10, -70, 45, 25));
    collision.append(QRect(-22, -84, 44, 84));
    m_canvas->setSprites(&sprites);
    m_canvas->setContactBoxes(ContactBoxCode::Attack, &attack);
    m_canvas->setContactBoxes(ContactBoxCode::Collision, &collision);
    m_canvas->setGuideLines(QPoint(-60, -40));
    for (const char *key : viewKeyNames)
        m_host->options[QString::fromLatin1(key)] = true;
    m_host->options[QStringLiteral("native_painting")] = true;
    m_host->options[QStringLiteral("origin_x")] = 330;
    m_host->options[QStringLiteral("origin_y")] = 300;
    m_host->options[QStringLiteral("zoom_level")] = 5;
    m_host->options[QStringLiteral("box_opacity")] = 0.6;

    m_canvas->prepareTextures();
    m_workspace->reconfig();
    m_workspace->setRenderer(m_canvas.get());
    m_workspace->activate();
    m_workspace->setExtraAxis(QPoint(70, -20));
    m_host->action("view_extra_cross")->setChecked(true);
    auto *fields = new QLabel(QStringLiteral("Frame fields"));
    fields->setMinimumWidth(140);
    fields->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    m_workspace->setSidePanel(fields);
    QVERIFY(showWorkspace(QSize(900, 560)));
    QTRY_VERIFY(m_canvas->renderWidget());
    m_workspace->update();
    QTRY_VERIFY(colourCount(grabView()) > 6);

    // The GL picture is read from its frame buffer and put in its place on the window's.
    QImage shot = m_workspace->grab().toImage().convertToFormat(QImage::Format_RGB32);
    const QImage view = grabView();
    auto *viewWidget = dynamic_cast<QWidget *>(m_workspace->renderWidget());
    {
        QPainter painter(&shot);
        painter.drawImage(viewWidget->mapTo(m_workspace.get(), QPoint()), view);
    }
    const QString path = QCoreApplication::applicationDirPath() + QStringLiteral("/graphicsworkspace.png");
    QVERIFY(shot.save(path));
    // The sprite's own colour where no box lies over it: the canvas drew it, not just a
    // background; and the attack box's edge in its colour.
    const QPoint spriteCorner = m_canvas->spriteRect(0).bottomRight().toPoint() - QPoint(2, 2);
    QCOMPARE(QColor(view.pixel(spriteCorner)), QColor(220, 170, 60));
    const QRect attackRect = m_canvas->boxScreenRect(ContactBoxCode::Attack, 0);
    QCOMPARE(QColor(view.pixel(attackRect.topLeft() + QPoint(attackRect.width() / 2, 0))), QColor(230, 30, 30));
}

OVRA_GL_TEST_MAIN(GraphicsWorkspaceTest)
#include "tst_graphicsworkspace.moc"
