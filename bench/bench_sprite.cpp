// The sprite painter under a user's hand. A pen stroke over a 1024 x 1024 indexed picture
// at zoom 8 in a 1280 x 800 view: each of 200 moves with the button held timed from the
// event until its frame is shown (on GL: swapped and the rasteriser done), the median set
// against a repaint of the unchanged view timed the same way, on both roads. An import of
// 200 PNG pictures through the editor's own import, read on the pool, against reading them
// one by one on this thread with the same function.
//
// The mouse goes through the platform layer as a user's does: the moves carry the held
// button, and each is handled (and its repaint drawn) within QTest's call.
#define QTEST_QPA_MOUSE_HANDLING

#include "held.h"
#include "modalanswer.h"
#include "ratioreporter.h"
#include "renderwindow.h"
#include "testfiles.h"
#include "testinterface.h"

#include "editors/graphics/graphicsworkspace.h"
#include "editors/organizer/thumbnailseditor.h"
#include "editors/palette/paletteeditor.h"
#include "editors/sprite/imagecanvas.h"
#include "editors/sprite/imagelayers.h"
#include "editors/sprite/imagepainter.h"
#include "editors/sprite/imagerenderer.h"
#include "editors/sprite/imagetools.h"
#include "editors/sprite/paldlg.h"
#include "editors/sprite/rasterlayer.h"
#include "editors/sprite/spriteeditor.h"
#include "editors/sprite/spriteeditor_p.h"
#include "engine/extension.h"
#include "engine/extensionmanager.h"
#include "foundation/prompt.h"
#include "image/paletteobject.h"
#include "image/sprite.h"
#include "project/project.h"
#include "render/texture.h"

#include <QAction>
#include <QApplication>
#include <QDialogButtonBox>
#include <QEventLoop>
#include <QFileInfo>
#include <QLineEdit>
#include <QLoggingCategory>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QPushButton>
#include <QRandomGenerator>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThreadPool>
#include <QTimer>
#include <QUndoStack>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <vector>

using namespace Ovra;

namespace {

using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

double cpuMilliseconds(std::clock_t from, std::clock_t to)
{
    return double(to - from) * 1000.0 / CLOCKS_PER_SEC;
}

double median(std::vector<double> values)
{
    const auto middle = values.begin() + values.size() / 2;
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// ---- the pen stroke ----

const QSize pictureSize(1024, 1024);
const QSize viewSize(1280, 800);
const int movesPerStroke = 200;
const uint penColour = 251; // not in the picture: every pixel the pen covers changes

// The view's renderer, counting the frames shown: on the raster road a frame is shown once
// drawn, on GL once the window swapped its buffers (the widget reports that).
class CountingRenderer : public ImageRenderer
{
public:
    void render(QPainter &painter) override
    {
        ImageRenderer::render(painter);
        if (!isOpenGL())
            frameShown();
    }
    void frameShown()
    {
        ++frames;
        if (waiting)
            waiting->quit();
    }

    int frames = 0;
    QEventLoop *waiting = nullptr;
};

// Runs the step and waits until the frame it caused is shown. The time in milliseconds, or
// -1 unless exactly one frame came.
double timedFrame(CountingRenderer &renderer, const std::function<void()> &step)
{
    const int before = renderer.frames;
    const Clock::time_point start = Clock::now();
    step();
    if (renderer.frames == before) {
        QEventLoop loop;
        renderer.waiting = &loop;
        QTimer::singleShot(5000, &loop, &QEventLoop::quit);
        loop.exec();
        renderer.waiting = nullptr;
    }
    if (renderer.isOpenGL()) {
        if (QOpenGLContext *context = QOpenGLContext::currentContext())
            context->functions()->glFinish();
    }
    const double time = millisecondsSince(start);
    return renderer.frames == before + 1 ? time : -1;
}

// 256 colours (0 clear) and a picture using the first 240 of them in bands and rings, as a
// large background of a game would.
struct PenScene
{
    PenScene()
    {
        for (int i = 0; i < 256; ++i)
            colours[i] = RGBA(quint8(i * 7), quint8(255 - i), quint8(i * 13), i == 0 ? 0 : 255);
        QVector<QRgb> table;
        for (const RGBA &c : colours)
            table << c.toQRgb();
        QImage picture(pictureSize, QImage::Format_Indexed8);
        picture.setColorTable(table);
        for (int y = 0; y < picture.height(); ++y) {
            uchar *line = picture.scanLine(y);
            for (int x = 0; x < picture.width(); ++x) {
                const int dx = x - 512, dy = y - 512;
                line[x] = uchar(((dx * dx + dy * dy) / 900 + y / 16) % 240);
            }
        }
        canvas.setPalette(&palette);
        canvas.setImage(picture);
        canvas.setScale(8);
        renderer.setCanvas(&canvas);
        canvas.painter()->setColor(penColour);
        renderer.setTool(&pen);
    }

    QImage layerPicture() const { return static_cast<const RasterLayer *>(canvas.layers()->at(0))->image(); }

    RGBA colours[256];
    PaletteObject palette{&colours};
    ImageCanvas canvas;
    CountingRenderer renderer;
    PenTool pen{&canvas};
};

// The time of each of the moves of one stroke (or of as many repaints with nothing changed,
// when `draw` is false); empty when a step brought no frame. The layer is as before after it.
// With `stills`, each move is followed by a repaint with nothing changed, timed there: a
// reference taken under the same load of the machine as the moves.
std::vector<double> strokeTimes(PenScene &scene, QWidget *view, bool draw, qint64 *changed,
                                std::vector<double> *stills)
{
    const QPoint from(100, 100), to(1180, 700);
    const QImage before = scene.layerPicture();
    std::vector<double> times;
    if (draw && timedFrame(scene.renderer, [&] { QTest::mousePress(view, Qt::LeftButton, {}, from); }) < 0)
        return times;
    for (int i = 1; i <= movesPerStroke; ++i) {
        const QPoint at = from + (to - from) * i / movesPerStroke;
        const double time = timedFrame(scene.renderer, [&] {
            if (draw)
                QTest::mouseMove(view, at);
            else
                scene.renderer.update();
        });
        const double still = stills ? timedFrame(scene.renderer, [&] { scene.renderer.update(); }) : 0;
        if (time < 0 || still < 0)
            return {};
        times.push_back(time);
        if (stills)
            stills->push_back(still);
    }
    if (!draw)
        return times;
    QTest::mouseRelease(view, Qt::LeftButton, {}, to);
    const QImage after = scene.layerPicture();
    for (int y = 0; y < after.height(); ++y) {
        for (int x = 0; x < after.width(); ++x)
            *changed += after.constScanLine(y)[x] != before.constScanLine(y)[x];
    }
    scene.canvas.undoStack()->undo();
    return times;
}

// What a change costs the view before it draws: the layers composed and the result turned
// into the colours it paints, both over the whole picture.
void reportChangeCost(benchmark::State &state, const ImageCanvas &canvas)
{
    std::vector<double> compose, convert;
    for (int i = 0; i < 10; ++i) {
        Clock::time_point start = Clock::now();
        const QImage composed = canvas.composed();
        compose.push_back(millisecondsSince(start));
        start = Clock::now();
        const QImage shown = composed.convertToFormat(QImage::Format_ARGB32_Premultiplied);
        convert.push_back(millisecondsSince(start));
    }
    state.counters["compose_ms"] = median(compose);
    state.counters["convert_ms"] = median(convert);
}

// penSize 0: the repaint of the unchanged view; otherwise strokes of the pen of that size.
// The time of an iteration is the median move of its stroke.
void paintMoves(benchmark::State &state, bool openGL, int penSize)
{
    Texture::setOpenGLEnabled(openGL);
    PenScene scene;
    const std::unique_ptr<QWidget> view = showRenderer(&scene.renderer, openGL, viewSize);
    if (!view || scene.renderer.isOpenGL() != openGL) {
        state.SkipWithError("the view did not come up (GL needs an X server: run under xvfb-run)");
        return;
    }
    if (scene.canvas.scale() != 8) {
        state.SkipWithError("the view does not stand at zoom 8");
        return;
    }
    if (auto *gl = qobject_cast<GLRenderWidget *>(view.get()))
        QObject::connect(gl, &QOpenGLWidget::frameSwapped, [&scene] { scene.renderer.frameShown(); });
    scene.pen.setPenSize(qMax(penSize, 1));
    // The pointer over the view first, so that every frame shows the pen's square. (A move
    // to where the pointer already is, as the last view left it, would bring no event.)
    QTest::mouseMove(view.get(), QPoint(80, 80));
    if (timedFrame(scene.renderer, [&] { QTest::mouseMove(view.get(), QPoint(92, 92)); }) < 0) {
        state.SkipWithError("the pointer brought no frame");
        return;
    }
    std::vector<double> all, stills;
    qint64 changed = 0;
    for (auto _ : state) {
        const std::vector<double> times =
            strokeTimes(scene, view.get(), penSize > 0, &changed, penSize > 0 ? &stills : nullptr);
        if (times.empty()) {
            state.SkipWithError("a step did not bring exactly one frame");
            return;
        }
        state.SetIterationTime(median(times) / 1000);
        all.insert(all.end(), times.begin(), times.end());
    }
    if (penSize > 0 && changed == 0) {
        state.SkipWithError("the pen changed no pixel");
        return;
    }
    const double middle = median(all);
    state.counters["median_ms"] = middle;
    std::sort(all.begin(), all.end());
    state.counters["p90_ms"] = all[all.size() * 9 / 10];
    if (penSize == 0)
        return;
    state.counters["pixels"] = double(changed) / double(state.iterations());
    // The move's time over the still repaint's, both taken in turn.
    state.counters["x_still"] = middle / median(stills);
    reportChangeCost(state, scene.canvas);
}

// ---- the import ----

const int pictureCount = 200;
const int pictureSide = 256;
// The first file is named after a sprite of the knight (group 0, number 0): the import
// asks about it as soon as every file is read, which ends the timing.
const char takenName[] = "a_0_0.png";

// Shapes of flat colours over a clear ground, shaded with noise: what sprites look like.
QImage spritePicture(QRandomGenerator &random)
{
    QImage image(pictureSide, pictureSide, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setPen(Qt::NoPen);
    for (int i = 0; i < 14; ++i) {
        painter.setBrush(QColor(QRgb(random.generate() | 0xff000000u)));
        const QRect box(int(random.bounded(200)), int(random.bounded(200)), 16 + int(random.bounded(80)),
                        16 + int(random.bounded(80)));
        if (i % 2)
            painter.drawEllipse(box);
        else
            painter.drawRect(box);
    }
    painter.end();
    for (int y = 48; y < 208; ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 32; x < 224; ++x) {
            if (qAlpha(line[x]) && random.bounded(3) == 0)
                line[x] ^= 0x00100810u;
        }
    }
    return image;
}

struct Pictures
{
    QTemporaryDir dir;
    QStringList names;
    qint64 bytes = 0;
    bool ok = false;
};

const Pictures &pictures()
{
    static const std::unique_ptr<Pictures> made = [] {
        auto pictures = std::make_unique<Pictures>();
        QRandomGenerator random(0x5eed);
        pictures->ok = pictures->dir.isValid();
        for (int i = 0; i < pictureCount && pictures->ok; ++i) {
            pictures->names << (i == 0 ? QString::fromLatin1(takenName)
                                       : QStringLiteral("pic_%1.png").arg(i, 3, 10, QLatin1Char('0')));
            const QString path = pictures->dir.filePath(pictures->names.last());
            pictures->ok = spritePicture(random).save(path, "PNG");
            pictures->bytes += QFileInfo(path).size();
        }
        return pictures;
    }();
    return *made;
}

// Reads every picture on this thread, one after the other, keeping them all until the
// last is read, as an import keeps them. The wall time in milliseconds, or -1 when one
// could not be read; the processor time goes to `cpu`.
double readOneByOne(const Pictures &files, double *cpu)
{
    const std::clock_t cpuStart = std::clock();
    const Clock::time_point start = Clock::now();
    QVector<QImage> images(pictureCount);
    for (int i = 0; i < pictureCount; ++i)
        loadSpritePicture(files.dir.filePath(files.names.at(i)), &images[i]);
    const double time = millisecondsSince(start);
    *cpu += cpuMilliseconds(cpuStart, std::clock());
    const bool all = std::all_of(images.cbegin(), images.cend(), [](const QImage &image) {
        return image.size() == QSize(pictureSide, pictureSide);
    });
    return all ? time : -1;
}

void importOneByOne(benchmark::State &state)
{
    const Pictures &files = pictures();
    double cpu = 0;
    for (auto _ : state) {
        if (!files.ok || readOneByOne(files, &cpu) < 0) {
            state.SkipWithError("the pictures could not be written or read");
            break;
        }
    }
    state.counters["cpu_ms"] = cpu / double(state.iterations());
    state.counters["fileKiB"] = double(files.bytes) / pictureCount / 1024;
}

// The sprite editor on a copy of the knight's work, as its tests build it.
struct ImportScene
{
    bool open()
    {
        host.options[QStringLiteral("native_painting")] = true;
        engine = EngineExtension::forProjectFile(QStringLiteral("any.ovp"));
        QString error;
        if (!engine || !work.isValid() || !copyTree(QStringLiteral(OVRA_EXAMPLES_DIR "/sample"), work.path()))
            return false;
        project.reset(engine->openProject(work.filePath(QStringLiteral("knight/knight.ovp")), &error));
        sprites = project ? dynamic_cast<Sprites *>(project->file(Project::Sprites)) : nullptr;
        if (!sprites)
            return false;
        host.projectInUse = project.get();
        graphics = std::make_unique<GraphicsWorkspace>(&host);
        editor.reset(new SpriteEditor(graphics.get(), &palettes, &thumbnails, Project::Sprites));
        editor->setCurrentFile(sprites);
        host.activateEditor(editor.get());
        return editor->isActive() && host.action("spr_add");
    }
    ~ImportScene()
    {
        host.activeEditor = nullptr;
        editor.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    ExtensionManager manager{QStringLiteral(OVRA_PLUGIN_DIR)};
    EngineExtension *engine = nullptr;
    TestInterface host;
    QTemporaryDir work;
    Held<Project> project;
    Sprites *sprites = nullptr;
    std::unique_ptr<GraphicsWorkspace> graphics;
    ThumbnailsEditor thumbnails;
    PaletteEditor palettes;
    Held<SpriteEditor> editor;
};

// The user's hand at the import's dialogs: the files typed into the file dialog, the
// palette dialog taken as it comes.
void answerDialogs(const Pictures &files)
{
    whenShown<QFileDialog>([&files](QFileDialog *dialog) {
        dialog->setDirectory(files.dir.path());
        if (auto *edit = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit")))
            edit->setText(QLatin1Char('"') + files.names.join(QStringLiteral("\" \"")) + QLatin1Char('"'));
        QMetaObject::invokeMethod(dialog, "accept");
    });
    whenShown<PalDlg>([](PalDlg *dialog) {
        if (auto *box = dialog->findChild<QDialogButtonBox *>())
            QTest::mouseClick(box->button(QDialogButtonBox::Ok), Qt::LeftButton);
    });
}

// The reading of an import, as the answers to its questions see it: from the answer to the
// crop question to the question about the first file, named after a sprite that is there.
struct ReadWindow
{
    QMessageBox::StandardButton answer(const Prompt &prompt)
    {
        if (prompt.title == QStringLiteral("Replace sprite")) {
            end = Clock::now();
            processEnd = std::clock();
        }
        prompts << prompt.title + QStringLiteral(" | ") + prompt.text;
        if (prompt.title == QStringLiteral("Crop")) {
            processStart = std::clock();
            start = Clock::now();
        }
        // No cropping, no replacing.
        return prompt.buttons & QMessageBox::No ? QMessageBox::No : QMessageBox::Ok;
    }

    QStringList prompts;
    Clock::time_point start, end;
    std::clock_t processStart = 0, processEnd = 0;
};

void importOnPool(benchmark::State &state)
{
    const Pictures &files = pictures();
    ImportScene scene;
    if (!files.ok || !scene.open()) {
        state.SkipWithError("the pictures or the knight's work could not be made ready");
        return;
    }
    const uint count = scene.sprites->count();
    const QString done = QStringLiteral("Import | %1 new sprite(s) were imported!").arg(pictureCount - 1);
    double processCpu = 0, onPool = 0, oneByOne = 0, oneByOneCpu = 0;
    for (auto _ : state) {
        // The reading one by one right before, under the same load of the machine.
        const double alone = readOneByOne(files, &oneByOneCpu);
        ReadWindow window;
        answerDialogs(files);
        setAnswerer([&window](const Prompt &prompt) { return window.answer(prompt); });
        scene.host.action("spr_add")->trigger();
        setAnswerer(nullptr);
        const bool asked = window.prompts.size() == 3 && window.prompts.at(2) == done
                           && window.prompts.at(1).startsWith(QStringLiteral("Replace sprite"));
        if (alone < 0 || !asked || scene.sprites->count() != count + pictureCount - 1) {
            state.SkipWithError(qPrintable(QStringLiteral("the import went otherwise: ")
                                           + window.prompts.join(QStringLiteral("; "))));
            break;
        }
        const double time = std::chrono::duration<double, std::milli>(window.end - window.start).count();
        state.SetIterationTime(time / 1000);
        onPool += time;
        oneByOne += alone;
        processCpu += cpuMilliseconds(window.processStart, window.processEnd);
        scene.editor->undo();
        if (scene.sprites->count() != count) {
            state.SkipWithError("the undo did not take the import back");
            break;
        }
    }
    state.counters["threads"] = QThreadPool::globalInstance()->maxThreadCount();
    // The whole process's processor time while the files were read: near the wall time
    // when the pool got one core's worth, near twice it when it had both.
    state.counters["cpu_ms"] = processCpu / double(state.iterations());
    // The speed over the reading one by one, each taken right before the import.
    state.counters["x_oneByOne"] = oneByOne / onPool;
    state.counters["oneByOneCpu_ms"] = oneByOneCpu / double(state.iterations());
}

// The import first: the views' large pictures would leave the heap of this thread (but not
// the pool's) with pages at hand, and the reading on this thread would be spared the page
// faults that the pool's threads pay.
BENCHMARK(importOneByOne)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(importOnPool)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(5);
BENCHMARK_CAPTURE(paintMoves, stillOpenGL, true, 0)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(2);
BENCHMARK_CAPTURE(paintMoves, penOpenGL, true, 1)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(2);
BENCHMARK_CAPTURE(paintMoves, pen8OpenGL, true, 8)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(2);
BENCHMARK_CAPTURE(paintMoves, stillRaster, false, 0)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(2);
BENCHMARK_CAPTURE(paintMoves, penRaster, false, 1)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(2);
BENCHMARK_CAPTURE(paintMoves, pen8Raster, false, 8)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(2);

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QApplication app(argc, argv);
    QStandardPaths::setTestModeEnabled(true);
    // Without a window manager the import's dialogs can't take the focus; the server's
    // refusals would bury the figures.
    QLoggingCategory::setFilterRules(QStringLiteral("qt.qpa.xcb.warning=false"));
    RatioReporter reporter;
    const std::string strokes = "/iterations:2/manual_time";
    reporter.addRatio("paintMoves/penOpenGL" + strokes, "paintMoves/stillOpenGL" + strokes);
    reporter.addRatio("paintMoves/pen8OpenGL" + strokes, "paintMoves/stillOpenGL" + strokes);
    reporter.addRatio("paintMoves/penRaster" + strokes, "paintMoves/stillRaster" + strokes);
    reporter.addRatio("paintMoves/pen8Raster" + strokes, "paintMoves/stillRaster" + strokes);
    reporter.addRatio("importOnPool/iterations:5/manual_time", "importOneByOne/iterations:5");
    return runWithRatios(argc, argv, reporter);
}
