// The sample engine's canvas during playback and under load.
//
// Playback: the time line plays for ten seconds while the canvas shows the knight's walk,
// stepped by a player at every tick and repainted there and then, on a GL widget and on
// the raster one. What counts is the tick period: its mean against 1000 / 60 ms, and the
// 99th percentile of its deviation from that.
//
// Load: one repaint of the canvas with 200 of the knight's frames and 100 boxes, through
// GL (off screen, Mesa's software rasteriser here) against the raster road.
//
// Runs on a virtual X server (CTest uses xvfb-run): Qt's offscreen platform has no GL.
#include "ratioreporter.h"
#include "tickperiods.h"

#include "animationdocument.h"
#include "samplecanvas.h"
#include "sampletimeline.h"
#include "spritecontainer.h"

#include "code/animationcode.h"
#include "code/animationplayer.h"
#include "code/framecode.h"
#include "editors/animation/timelinewidget.h"
#include "foundation/filesystemarchive.h"
#include "render/glrenderwidget.h"
#include "render/offscreenrenderwidget.h"
#include "render/renderwidget.h"
#include "render/texture.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QRandomGenerator>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <vector>

using namespace Ovra;

namespace {

const QSize viewSize(640, 480);
const QSize loadSize(1024, 768);

QString knight(const char *file)
{
    return QStringLiteral(OVRA_EXAMPLES_DIR "/sample/knight/") + QLatin1String(file);
}

// The knight's sprites and animations, read from the example work.
struct Work
{
    Work() : animations(new SampleAnimations(document))
    {
        ok = sprites.fromFile(FileSystemArchive::instance(), knight("knight.osp"), 0, nullptr)
            && animations->fromFile(FileSystemArchive::instance(), knight("knight.oan"), 0, nullptr);
        document->setSprites(&sprites);
    }
    ~Work()
    {
        document->setSprites(nullptr);
        animations->release();
    }
    AnimationCode *animation(int id) const
    {
        const int index = animations->find(0, uint(id));
        return index < 0 ? nullptr : animations->at(uint(index));
    }

    SpriteContainer sprites;
    AnimationDocument *document = new AnimationDocument;
    SampleAnimations *animations;
    bool ok = false;
};

// The canvas, with the frame done when the rasteriser is.
class Canvas : public SampleCanvas
{
public:
    void render(QPainter &painter) override
    {
        SampleCanvas::render(painter);
        if (isOpenGL())
            glFinish();
    }
};

void report(benchmark::State &state, const char *what, const TickPeriods &periods, int shown)
{
    const double off = (periods.mean - IdealTickMs) / IdealTickMs * 100.0;
    state.counters["mean_ms"] = periods.mean;
    state.counters["mean_off_%"] = off;
    state.counters["p99_dev_ms"] = periods.p99;
    state.counters["ticks"] = double(periods.ticks);
    state.counters["frames_shown"] = shown;
    std::printf("%s: %zu ticks, mean period %.4f ms (%+.3f %% against %.4f ms), 99th percentile of the deviation "
                "%.3f ms, %d frame changes\n",
                what, periods.ticks, periods.mean, off, IdealTickMs, periods.p99, shown);
}

// The view of a road, shown and ready; null when the road can't be had here.
std::unique_ptr<QWidget> showView(Canvas &canvas, bool openGL)
{
    std::unique_ptr<QWidget> view;
    if (openGL) {
        auto *gl = new GLRenderWidget;
        view.reset(gl);
        gl->resize(viewSize);
        gl->show();
        QElapsedTimer wait;
        wait.start();
        while (!gl->context() && wait.elapsed() < 5000)
            QApplication::processEvents(QEventLoop::AllEvents, 50);
        gl->setRenderer(&canvas);
        if (!canvas.isOpenGL())
            return nullptr;
    } else {
        auto *raster = new RenderWidget;
        view.reset(raster);
        raster->resize(viewSize);
        raster->setRenderer(&canvas);
        raster->show();
    }
    QApplication::processEvents();
    return view;
}

void playback(benchmark::State &state, bool openGL)
{
    Texture::setOpenGLEnabled(true);
    Work work;
    AnimationCode *walk = work.animation(10);
    if (!work.ok || !walk) {
        state.SkipWithError("the example work can't be read");
        return;
    }
    for (auto _ : state) {
        Canvas canvas;
        GraphicsRenderer::setOrigin(QPoint(viewSize.width() / 2, viewSize.height() * 3 / 4));
        canvas.setZoomLevel(5);
        AnimationPlayer player;
        player.change(work.animations, work.animations->find(0, 10), true);
        canvas.showFrame(player.currentFrame());
        std::unique_ptr<QWidget> view = showView(canvas, openGL);
        if (!view) {
            state.SkipWithError("no OpenGL on this platform: run on an X server");
            return;
        }
        TimeLineWidget timeLine;
        timeLine.resize(640, 10);
        timeLine.addTimeLine(new SampleTimeLine(walk));
        timeLine.show();
        QApplication::processEvents();
        std::vector<qint64> moments;
        moments.reserve(size_t(runSeconds("OVRA_PLAYBACK_SECONDS") * 70));
        int shown = 0;
        QElapsedTimer clock;
        clock.start();
        QObject::connect(&timeLine, &TimeLineWidget::tickChanged, view.get(), [&](uint) {
            moments.push_back(clock.nsecsElapsed());
            player.tick();
            FrameCode *frame = player.currentFrame();
            if (canvas.frameSprites().count() == 0 || canvas.frameSprites().shown(0).sprite != frame->sprite()) {
                canvas.showFrame(frame);
                ++shown;
            }
            view->repaint();
        });
        timeLine.play();
        QEventLoop loop;
        QTimer::singleShot(int(runSeconds("OVRA_PLAYBACK_SECONDS") * 1000), &loop, &QEventLoop::quit);
        loop.exec();
        timeLine.stop();
        // The first moment is play's own report of the tick it starts from.
        if (!moments.empty())
            moments.erase(moments.begin());
        report(state, openGL ? "playback on GL" : "playback on the raster road", measureTicks(moments), shown);
        if (auto *base = dynamic_cast<RenderWidgetBase *>(view.get()))
            base->setRenderer(nullptr);
    }
}

// 200 frames of the knight's animations at places of their own, and 100 boxes.
QString loadText()
{
    QRandomGenerator random(23);
    const int groups[] = {0, 10, 200, 40, 50};
    const int counts[] = {4, 6, 4, 4, 2};
    QString text = QStringLiteral("animation 1\n");
    for (int i = 0; i < 200; ++i) {
        const int g = int(random.bounded(5));
        text += QStringLiteral("    frame (%1, %2) delay=1 offset=(%3, %4)%5\n")
                    .arg(groups[g])
                    .arg(random.bounded(counts[g]))
                    .arg(random.bounded(-480, 480))
                    .arg(random.bounded(-300, 380))
                    .arg(i % 7 == 0 ? QStringLiteral(" flip=h") : QString());
    }
    text += QStringLiteral("animation 2\n    frame (0, 0) delay=1\n");
    for (int i = 0; i < 100; ++i) {
        const int x = random.bounded(-480, 440), y = random.bounded(-360, 340);
        text += QStringLiteral("        %1 (%2, %3, %4, %5)\n")
                    .arg(i % 2 ? QStringLiteral("attack") : QStringLiteral("body"))
                    .arg(x).arg(y).arg(x + random.bounded(8, 60)).arg(y + random.bounded(8, 60));
    }
    return text;
}

void repaint(benchmark::State &state, bool openGL)
{
    Texture::setOpenGLEnabled(true);
    Work work;
    work.document->fromString(loadText());
    if (!work.ok || work.animations->count() != 2) {
        state.SkipWithError("the example work can't be read");
        return;
    }
    Canvas canvas;
    GraphicsRenderer::setOrigin(QPoint(loadSize.width() / 2, loadSize.height() / 2));
    GraphicsRenderer::setBackground(QColor(40, 40, 90), QColor(10, 10, 30), GraphicsRenderer::StageBackground,
                                    QPoint(), QString(), QSize(1280, 720));
    GraphicsRenderer::setCrossHair(GraphicsRenderer::SecondCrossSet, QString(), QString(), QString());
    canvas.setVisibility(true, true, true, true, true, true, true);
    canvas.showFrames(work.animations->at(0)->frames());
    FrameCode *boxes = work.animations->at(1)->frameAt(0);
    canvas.setContactBoxes(ContactBoxCode::Attack, boxes->contactBoxes(ContactBoxCode::Attack));
    canvas.setContactBoxes(ContactBoxCode::Collision, boxes->contactBoxes(ContactBoxCode::Collision));
    std::unique_ptr<OffScreenRenderWidget> offScreen;
    std::unique_ptr<RenderWidget> raster;
    QImage frame(loadSize, QImage::Format_ARGB32_Premultiplied);
    if (openGL) {
        offScreen.reset(new OffScreenRenderWidget(true, loadSize));
        offScreen->setRenderer(&canvas);
        if (!canvas.isOpenGL()) {
            state.SkipWithError("no OpenGL on this platform: run on an X server");
            return;
        }
    } else {
        raster.reset(new RenderWidget);
        raster->resize(loadSize);
        raster->setRenderer(&canvas);
    }
    for (auto _ : state) {
        if (offScreen)
            offScreen->update();
        else
            raster->render(&frame);
    }
    // Both roads must draw the same scene: the share of the view that the sprites change.
    auto frameNow = [&] {
        if (offScreen) {
            offScreen->update();
            return offScreen->output().convertToFormat(QImage::Format_RGB32);
        }
        raster->render(&frame);
        return frame.convertToFormat(QImage::Format_RGB32);
    };
    const QImage with = frameNow();
    canvas.showFrames({});
    const QImage without = frameNow();
    qint64 changed = 0;
    for (int y = 0; y < with.height(); ++y) {
        for (int x = 0; x < with.width(); ++x)
            changed += with.pixel(x, y) != without.pixel(x, y);
    }
    state.counters["spriteShare"] = double(changed) / (double(with.width()) * with.height());
    state.counters["sprites"] = double(work.animations->at(0)->frameCount());
    state.counters["cached"] = canvas.cachedSprites();
    if (offScreen)
        offScreen->setRenderer(nullptr);
    if (raster)
        raster->setRenderer(nullptr);
}

void playbackOpenGL(benchmark::State &state) { playback(state, true); }
void playbackRaster(benchmark::State &state) { playback(state, false); }
void repaintOpenGL(benchmark::State &state) { repaint(state, true); }
void repaintRaster(benchmark::State &state) { repaint(state, false); }
BENCHMARK(playbackOpenGL)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(playbackRaster)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(repaintOpenGL)->Unit(benchmark::kMillisecond);
BENCHMARK(repaintRaster)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QApplication app(argc, argv);
    RatioReporter reporter;
    reporter.addRatio("repaintOpenGL", "repaintRaster");
    return runWithRatios(argc, argv, reporter);
}
