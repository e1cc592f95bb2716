// The animation editor's operations on the sample engine's animation language: the
// alignment tool's arithmetic and buttons, the batch changes of frames and boxes, the
// GIF export read back by Qt and by giflib, the code dialog, and the exchange with files
// and other projects, with the user's answers scripted.
#include "animationdocument.h"
#include "animationexchange.h"
#include "sampleengine.h"
#include "spritecontainer.h"

#include "code/animationcode.h"
#include "code/animations.h"
#include "code/contactboxcode.h"
#include "code/framecode.h"
#include "editors/animation/animalign.h"
#include "editors/animation/animationeditor.h"
#include "editors/animation/animedittxt.h"
#include "editors/animation/animimportdlg.h"
#include "editors/animation/gifdialog.h"
#include "editors/code/codeeditor.h"
#include "editors/code/codeworkspace.h"
#include "engine/extensionmanager.h"
#include "foundation/itemsdialog.h"
#include "image/gifimage.h"
#include "image/sprite.h"
#include "memoryarchive.h"
#include "projecttestsupport.h"
#include "scriptedanswerer.h"
#include "testinterface.h"

#include <QAction>
#include <QBuffer>
#include <QComboBox>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QImageReader>
#include <QInputDialog>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QThread>
#include <QScopeGuard>
#include <QtTest>

#include <gif_lib.h>

#include <cmath>
#include <functional>
#include <memory>

using namespace Ovra;

namespace {

const char *const Knight = "animation 1 \"Stand\"\n"
                           "    frame (0, 0) delay=4 offset=(3, -2)\n"
                           "        attack (7, -5, 16, 7)\n"
                           "        body (-10, -60, 10, 0)\n"
                           "    frame (0, 1) delay=5 flip=h\n"
                           "        body (-3, -9, 4, 2)\n"
                           "    frame (0, 0) delay=6 scale=(2, 0.5)\n"
                           "    frame (0, 2) delay=7 offset=(-4, 1)\n"
                           "        attack (1, 1, 2, 2)\n"
                           "animation 2 \"Walk\"\n"
                           "    frame (0, 0) delay=3\n"
                           "    frame (0, 3) delay=3\n"
                           "        attack (0, 0, 5, 5)\n"
                           "animation 3 \"Empty\"\n";

// An animation file of the sample engine in memory, with sprites, released when it goes.
struct Document
{
    explicit Document(const QString &text = QString::fromLatin1(Knight))
        : animations(new SampleAnimations(document))
    {
        document->fromString(text);
    }
    ~Document()
    {
        document->setSprites(nullptr);
        animations->release();
    }
    FrameCode *frame(uint animation, uint index) const { return animations->at(animation)->frameAt(index); }
    AnimationDocument *document = new AnimationDocument;
    SampleAnimations *animations;
};

QList<QRect> rectsOf(const FrameCode *frame, ContactBoxCode::BoxType type)
{
    QList<QRect> rects;
    const ContactBoxesCode *boxes = frame->contactBoxes(type);
    for (uint i = 0; i < boxes->count(); ++i)
        rects.append(boxes->at(i)->rect());
    return rects;
}

// All a frame says, for comparing frames before and after.
QString describe(const FrameCode *frame)
{
    QString text = QStringLiteral("%1,%2 d%3 f%4 s%5:%6")
                       .arg(frame->offsetX())
                       .arg(frame->offsetY())
                       .arg(frame->delay())
                       .arg(frame->flipFlags())
                       .arg(frame->scaleX())
                       .arg(frame->scaleY());
    for (auto type : {ContactBoxCode::Attack, ContactBoxCode::Collision}) {
        for (const QRect &r : rectsOf(frame, type))
            text += QStringLiteral(" [%1 %2 %3 %4]").arg(r.x()).arg(r.y()).arg(r.width()).arg(r.height());
    }
    return text;
}

QStringList describeAll(const Animations *animations)
{
    QStringList all;
    for (const AnimationCode *animation : animations->animations()) {
        for (const FrameCode *frame : animation->frames())
            all.append(describe(frame));
    }
    return all;
}

// A host with open projects.
class ProjectsHost : public TestInterface
{
public:
    uint projectCount() override { return uint(open.size()); }
    Project *project(uint index) override { return open.value(int(index)); }
    QList<Project *> open;
};

// The editor as an engine derives it, over the sample engine's files.
class OpsEditor : public AnimationEditor
{
public:
    explicit OpsEditor(CodeWorkspace *workspace)
        : AnimationEditor(workspace, nullptr, nullptr, nullptr, spriteInfo(), GraphicsRenderer::ItemType(0))
    {
    }
    int fileType() const override { return Project::Animations; }
    QList<bool> changes;

protected:
    Sprites *spritesOf(Animations *list) const override
    {
        auto *sample = dynamic_cast<SampleAnimations *>(list);
        return sample ? static_cast<AnimationDocument *>(sample->document())->sprites() : nullptr;
    }
    void animationChanged(bool time) override { changes.append(time); }
    int optimizeAnimations(Animations *list) override
    {
        auto *sample = dynamic_cast<SampleAnimations *>(list);
        return sample ? sample->optimize() : -1;
    }

private:
    static GraphicsRenderer::SpriteProvider::Info &spriteInfo()
    {
        static GraphicsRenderer::SpriteProvider::Info info;
        return info;
    }
};

// A picture whose every pixel tells where it is, with a transparent border column.
QImage spritePicture(int width, int height, int seed)
{
    QImage picture(width, height, QImage::Format_ARGB32);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            picture.setPixel(x, y, x == 0 ? qRgba(0, 0, 0, 0) : qRgb(40 * seed + 20, 8 * x, 8 * y));
    }
    return picture;
}

// The GIF as giflib reads it: the delay of each frame, or -1 without a control block.
QList<int> giflibDelays(QByteArray bytes, bool *ok)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    int error = 0;
    GifFileType *gif = DGifOpen(
        &buffer,
        [](GifFileType *file, GifByteType *data, int count) {
            return int(static_cast<QBuffer *>(file->UserData)->read(reinterpret_cast<char *>(data), count));
        },
        &error);
    QList<int> delays;
    *ok = gif && DGifSlurp(gif) == GIF_OK;
    for (int i = 0; *ok && i < gif->ImageCount; ++i) {
        GraphicsControlBlock control;
        delays.append(DGifSavedExtensionToGCB(gif, i, &control) == GIF_OK ? control.DelayTime : -1);
    }
    if (gif)
        DGifCloseFile(gif, &error);
    return delays;
}

// Plays the user at the next modal dialog of type T: answers once the dialog runs its
// own event loop (a loop deeper than `base`), never while it is still being shown, and
// gives up after a minute so that a dialog that never comes fails the test instead of
// hanging it.
template<typename T>
void whenShown(std::function<void(T *)> answer, int base = QThread::currentThread()->loopLevel())
{
    auto *poll = new QTimer;
    auto clock = std::make_shared<QElapsedTimer>();
    clock->start();
    QObject::connect(poll, &QTimer::timeout, [poll, clock, answer, base] {
        auto *dialog = qobject_cast<T *>(QApplication::activeModalWidget());
        if (dialog && dialog->isVisible() && QThread::currentThread()->loopLevel() > base) {
            poll->stop();
            poll->deleteLater();
            answer(dialog);
        } else if (clock->elapsed() > 60000) {
            poll->stop();
            poll->deleteLater();
        }
    });
    poll->start(10);
}

void answerFileDialog(const QString &name)
{
    whenShown<QFileDialog>([name](QFileDialog *dialog) {
        // Typed into the name field, as a user does: an open dialog may not have listed
        // the folder yet, and then it selects nothing.
        dialog->selectFile(name);
        if (auto *field = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit")))
            field->setText(name);
        QMetaObject::invokeMethod(dialog, "accept");
    });
}

QPushButton *button(QWidget *dialog, const QString &text)
{
    for (QPushButton *each : dialog->findChildren<QPushButton *>()) {
        if (each->text() == text)
            return each;
    }
    return nullptr;
}

} // namespace

class AnimationOpsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void alignArithmetic_data();
    void alignArithmetic();
    void alignDialogButtons();
    void frameAll_data();
    void frameAll();
    void frameAllNeedsTwoFrames();
    void boxAllInstance();
    void gifExport();
    void gifFramesFollowFlipAndOffset();
    void emptyAnimationIsNoGIF();
    void addDeleteDuplicate();
    void optimizeReports();
    void editAnimationCode();
    void exportAndImport();
    void importFromProjects();
    void findAnimation();
    void importDialogLists();

private:
    QAction *action(const char *name) const;

    std::unique_ptr<ProjectsHost> m_host;
    std::unique_ptr<CodeWorkspace> m_workspace;
    std::unique_ptr<OpsEditor> m_editor;
    std::unique_ptr<SampleEngine> m_engine;
    std::unique_ptr<QTemporaryDir> m_dir;
};

void AnimationOpsTest::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    ExtensionManager::add(new AnimationExchangeExporter);
    ExtensionManager::add(new AnimationExchangeImporter);
}

void AnimationOpsTest::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_host = std::make_unique<ProjectsHost>();
    m_host->config = m_dir->path();
    m_engine = std::make_unique<SampleEngine>();
    m_host->engineInUse = m_engine.get();
    m_workspace = std::make_unique<CodeWorkspace>(m_host.get());
    m_editor = std::make_unique<OpsEditor>(m_workspace.get());
}

void AnimationOpsTest::cleanup()
{
    m_editor.reset();
    m_workspace.reset();
    m_host->engineInUse = nullptr;
    m_engine.reset();
    m_host.reset();
    m_dir.reset();
}

QAction *AnimationOpsTest::action(const char *name) const
{
    QAction *found = m_host->action(name);
    if (!found)
        qWarning("no action %s", name);
    return found;
}

void AnimationOpsTest::alignArithmetic_data()
{
    QTest::addColumn<int>("operation");
    QTest::addColumn<int>("x");
    QTest::addColumn<int>("y");
    for (int sign : {1, -1}) {
        const QByteArray tail = sign > 0 ? " +" : " -";
        QTest::newRow(QByteArray("offset axis" + tail).constData()) << int(AnimAlign::OffsetAxis) << 5 * sign << -3 * sign;
        QTest::newRow(QByteArray("offset boxes" + tail).constData()) << int(AnimAlign::OffsetBoxes) << 4 * sign << 2 * sign;
        QTest::newRow(QByteArray("resize top-left" + tail).constData()) << int(AnimAlign::ResizeTopLeft) << 2 * sign << 1 * sign;
        QTest::newRow(QByteArray("resize bottom-right" + tail).constData()) << int(AnimAlign::ResizeBottomRight) << 3 * sign << 1 * sign;
    }
    QTest::newRow("scale, odd percentages truncate") << int(AnimAlign::ScaleBoxes) << 33 << 67;
    QTest::newRow("scale up") << int(AnimAlign::ScaleBoxes) << 150 << 250;
}

void AnimationOpsTest::alignArithmetic()
{
    QFETCH(int, operation);
    QFETCH(int, x);
    QFETCH(int, y);
    Document file;
    const QStringList walkBefore = {describe(file.frame(1, 0)), describe(file.frame(1, 1))};
    QList<QPoint> offsets;
    QList<QList<QRect>> boxes;
    for (const FrameCode *frame : file.animations->at(0)->frames()) {
        offsets.append(frame->offset());
        boxes.append(rectsOf(frame, ContactBoxCode::Attack) + rectsOf(frame, ContactBoxCode::Collision));
    }
    const QStringList before = describeAll(file.animations);

    AnimAlign::apply(file.animations, {0, 7, -1}, AnimAlign::Operation(operation), x, y);

    const QList<FrameCode *> frames = file.animations->at(0)->frames();
    QCOMPARE(frames.size(), offsets.size());
    for (int f = 0; f < frames.size(); ++f) {
        const QList<QRect> now = rectsOf(frames[f], ContactBoxCode::Attack)
                                 + rectsOf(frames[f], ContactBoxCode::Collision);
        QCOMPARE(now.size(), boxes[f].size());
        QCOMPARE(frames[f]->offset(),
                 operation == AnimAlign::OffsetAxis ? offsets[f] + QPoint(x, y) : offsets[f]);
        for (int b = 0; b < now.size(); ++b) {
            const QRect old = boxes[f][b];
            const int left = old.x(), top = old.y(), right = old.x() + old.width() - 1,
                      bottom = old.y() + old.height() - 1;
            QRect expected = old;
            switch (operation) {
            case AnimAlign::OffsetBoxes:
                expected = QRect(left + x, top + y, old.width(), old.height());
                break;
            case AnimAlign::ResizeTopLeft:
                expected = QRect(QPoint(left - x, top - y), QPoint(right, bottom));
                break;
            case AnimAlign::ResizeBottomRight:
                expected = QRect(QPoint(left, top), QPoint(right + x, bottom + y));
                break;
            case AnimAlign::ScaleBoxes: {
                // Truncation towards zero, as whole-number division does it.
                const auto part = [](int value, int percent) { return int(std::trunc(value * percent / 100.0)); };
                expected = QRect(part(left, x), part(top, y), part(old.width(), x), part(old.height(), y));
                break;
            }
            }
            QCOMPARE(now[b], expected);
        }
    }
    // The other animation stays as it was, and one undo takes all back.
    QCOMPARE(describe(file.frame(1, 0)), walkBefore[0]);
    QCOMPARE(describe(file.frame(1, 1)), walkBefore[1]);
    file.document->undo();
    QCOMPARE(describeAll(file.animations), before);
}

void AnimationOpsTest::alignDialogButtons()
{
    Document file;
    AnimAlign dialog(file.animations);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Alignment tool"));
    auto *list = dialog.findChild<QListWidget *>();
    QVERIFY(list);
    QCOMPARE(list->count(), 3);
    QCOMPARE(list->item(1)->text(), QStringLiteral("2 Walk"));

    QTest::mouseClick(button(&dialog, QStringLiteral("Select all")), Qt::LeftButton);
    QCOMPARE(dialog.selectedRows(), (QList<int>{0, 1, 2}));
    QTest::mouseClick(button(&dialog, QStringLiteral("Clear selection")), Qt::LeftButton);
    QCOMPARE(dialog.selectedRows(), QList<int>());
    // The user ticks the second row with the keyboard, then inverts.
    list->setFocus();
    list->setCurrentRow(1);
    QTest::keyClick(list, Qt::Key_Space);
    QCOMPARE(dialog.selectedRows(), QList<int>{1});
    QTest::mouseClick(button(&dialog, QStringLiteral("Invert selection")), Qt::LeftButton);
    QCOMPARE(dialog.selectedRows(), (QList<int>{0, 2}));

    auto *operation = dialog.findChild<QComboBox *>(QStringLiteral("operation"));
    QCOMPARE(operation->count(), 5);
    QCOMPARE(operation->itemText(4), QStringLiteral("Resize Contact boxes (bottom-right)"));
    operation->setFocus();
    QTest::keyClick(operation, Qt::Key_Down);
    QCOMPARE(dialog.operation(), AnimAlign::OffsetBoxes);
    for (const char *name : {"x", "y"}) {
        auto *field = dialog.findChild<QSpinBox *>(QLatin1String(name));
        field->setFocus();
        field->selectAll();
        QTest::keyClicks(field, name[0] == 'x' ? QStringLiteral("-6") : QStringLiteral("10"));
    }
    QCOMPARE(dialog.xValue(), -6);
    QCOMPARE(dialog.yValue(), 10);

    const QList<QRect> walk = rectsOf(file.frame(1, 1), ContactBoxCode::Attack);
    const QList<QRect> stand = rectsOf(file.frame(0, 0), ContactBoxCode::Attack);
    QSignalSpy applied(&dialog, &AnimAlign::applied);
    QTest::mouseClick(button(&dialog, QStringLiteral("Apply")), Qt::LeftButton);
    QCOMPARE(applied.count(), 1);
    QCOMPARE(rectsOf(file.frame(0, 0), ContactBoxCode::Attack).first(), stand.first().translated(-6, 10));
    QCOMPARE(rectsOf(file.frame(1, 1), ContactBoxCode::Attack), walk);
    QVERIFY(dialog.isVisible());
    QTest::mouseClick(button(&dialog, QStringLiteral("Close")), Qt::LeftButton);
    QVERIFY(!dialog.isVisible());
    QCOMPARE(dialog.result(), int(QDialog::Rejected));

    dialog.grab().save(QStringLiteral("animalign.png"));
}

void AnimationOpsTest::frameAll_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<bool>("time");
    QTest::newRow("offset") << QByteArray("anim_frameall_offset") << false;
    QTest::newRow("time") << QByteArray("anim_frameall_time") << true;
    QTest::newRow("flip") << QByteArray("anim_frameall_flip") << false;
    QTest::newRow("scale") << QByteArray("anim_frameall_scale") << false;
}

void AnimationOpsTest::frameAll()
{
    QFETCH(QByteArray, name);
    QFETCH(bool, time);
    Document file;
    m_editor->setCurrentFile(file.animations);
    m_editor->selectAnimation(0);
    m_editor->selectFrame(1);
    const QStringList before = describeAll(file.animations);
    const FrameCode *source = file.frame(0, 1);
    const QPoint offset = source->offset();
    const int delay = source->delay();
    const uint flip = source->flipFlags();
    const QPointF scale = source->scale();
    struct Old { QPoint offset; int delay; uint flip; QPointF scale; };
    QList<Old> old;
    for (uint index = 2; index < 4; ++index) {
        const FrameCode *frame = file.frame(0, index);
        old.append({frame->offset(), frame->delay(), frame->flipFlags(), frame->scale()});
    }

    action(name.constData())->trigger();

    // The first frame keeps everything, the second is the source; those behind it take
    // the one value and keep the rest.
    QCOMPARE(describe(file.frame(0, 0)), before[0]);
    QCOMPARE(describe(file.frame(0, 1)), before[1]);
    for (uint index = 2; index < 4; ++index) {
        const FrameCode *frame = file.frame(0, index);
        const Old &was = old[int(index) - 2];
        QCOMPARE(frame->offset(), name.endsWith("offset") ? offset : was.offset);
        QCOMPARE(frame->delay(), name.endsWith("time") ? delay : was.delay);
        QCOMPARE(uint(frame->flipFlags()), name.endsWith("flip") ? flip : was.flip);
        QCOMPARE(frame->scale(), name.endsWith("scale") ? scale : was.scale);
        QCOMPARE(rectsOf(frame, ContactBoxCode::Attack).size(), index == 3 ? 1 : 0);
    }
    // The other animation isn't touched.
    QCOMPARE(describe(file.frame(1, 0)), before[4]);
    QCOMPARE(m_editor->changes, QList<bool>{time});
    file.document->undo();
    QCOMPARE(describeAll(file.animations), before);
}

void AnimationOpsTest::frameAllNeedsTwoFrames()
{
    Document file(QStringLiteral("animation 5\n    frame (0, 0) delay=9 offset=(1, 1)\n"));
    m_editor->setCurrentFile(file.animations);
    m_editor->selectAnimation(0);
    m_editor->selectFrame(0);
    const QString text = file.document->toString();
    for (const char *name : {"anim_frameall_offset", "anim_frameall_time", "anim_frameall_flip", "anim_frameall_scale"})
        action(name)->trigger();
    QCOMPARE(file.document->toString(), text);
    QVERIFY(m_editor->changes.isEmpty());
}

void AnimationOpsTest::boxAllInstance()
{
    Document file;
    m_editor->setCurrentFile(file.animations);
    m_editor->selectAnimation(0);
    m_editor->selectFrame(0); // sprite (0, 0), also at frame 2 and at walk frame 0
    const QList<QRect> attack = rectsOf(file.frame(0, 0), ContactBoxCode::Attack);
    const QList<QRect> body = rectsOf(file.frame(0, 0), ContactBoxCode::Collision);
    const QStringList before = describeAll(file.animations);

    {
        ScriptedAnswerer user({QMessageBox::No});
        action("anim_box_allinst")->trigger();
        QCOMPARE(user.prompts().size(), 1);
        QCOMPARE(user.prompts().first().title, QStringLiteral("Confirmation"));
    }
    QCOMPARE(describeAll(file.animations), before);

    ScriptedAnswerer user({QMessageBox::Yes});
    action("anim_box_allinst")->trigger();
    QCOMPARE(user.pending(), 0);
    for (const FrameCode *frame : {file.frame(0, 2), file.frame(1, 0)}) {
        QCOMPARE(rectsOf(frame, ContactBoxCode::Attack), attack);
        QCOMPARE(rectsOf(frame, ContactBoxCode::Collision), body);
    }
    // The frames of other sprites keep theirs.
    QCOMPARE(describe(file.frame(0, 1)), before[1]);
    QCOMPARE(describe(file.frame(0, 3)), before[3]);
    QCOMPARE(describe(file.frame(1, 1)), before[5]);
    file.document->undo();
    QCOMPARE(describeAll(file.animations), before);
}

void AnimationOpsTest::gifExport()
{
    auto *sprites = new SpriteContainer;
    const QList<QPoint> axes = {QPoint(3, 5), QPoint(6, 2), QPoint(1, 1)};
    for (int n = 0; n < 3; ++n)
        sprites->add(QPoint(0, n), spritePicture(6 + 2 * n, 7 - n, n), Archive::NoShare)->setAxis(axes[n]);
    Document file(QStringLiteral("animation 1\n    frame (0, 0) delay=4\n    frame (0, 1) delay=5\n"
                                 "    frame (0, 2) delay=10\n"));
    file.document->setSprites(sprites);
    m_editor->setCurrentFile(file.animations);
    m_editor->selectAnimation(0);
    const QString target = m_dir->filePath(QStringLiteral("out/stand.gif"));
    QVERIFY(QDir().mkpath(m_dir->filePath(QStringLiteral("out"))));
    m_host->options.insert(QStringLiteral("project_path"), m_dir->path());

    answerFileDialog(target);
    whenShown<GIFDialog>([](GIFDialog *dialog) {
        QCOMPARE(dialog->windowTitle(), QStringLiteral("GIF Options"));
        dialog->setSharedPalette(true);
        dialog->accept();
    });
    action("anim_save_gif")->trigger();
    QVERIFY(QFileInfo::exists(target));
    QCOMPARE(file.animations->option(QStringLiteral("gif_path")).toString(), QFileInfo(target).absolutePath());

    QFile saved(target);
    QVERIFY(saved.open(QIODevice::ReadOnly));
    const QByteArray bytes = saved.readAll();
    QBuffer buffer;
    buffer.setData(bytes);
    QImageReader reader(&buffer, "gif");
    QCOMPARE(reader.imageCount(), 3);
    // The canvas holds every frame with all axes on one point: 6 left of the axis and 9
    // right of it, 5 above and 4 below.
    const int maxX = 6, maxY = 5;
    for (int n = 0; n < 3; ++n) {
        const QImage shown = reader.read();
        QVERIFY(!shown.isNull());
        QCOMPARE(shown.size(), QSize(15, 9));
        // The pixels right of and below the axis are the sprite's own there.
        const QImage picture = sprites->at(uint(n))->image();
        for (const QPoint step : {QPoint(1, 0), QPoint(0, 1), QPoint(1, -1)}) {
            const QPoint at = axes[n] + step;
            QCOMPARE(QColor(shown.pixel(QPoint(maxX, maxY) + step)), QColor(picture.pixel(at)));
        }
    }
    bool ok = false;
    const QList<int> delays = giflibDelays(bytes, &ok);
    QVERIFY(ok);
    // Ticks of a sixtieth to hundredths, the fractions carried from frame to frame.
    float carried = 0;
    QList<int> expected;
    for (int ticks : {4, 5, 10}) {
        const float delay = ((100.0f / 1.0f) * ticks) / 60.0f + carried;
        expected.append(int(delay));
        carried = delay - int(delay);
    }
    QCOMPARE(delays, expected);
    file.document->setSprites(nullptr);
    sprites->release();
}

void AnimationOpsTest::gifFramesFollowFlipAndOffset()
{
    auto *sprites = new SpriteContainer;
    sprites->add(QPoint(0, 0), spritePicture(8, 6, 1), Archive::NoShare)->setAxis(QPoint(2, 1));
    Document file(QStringLiteral("animation 1\n    frame (0, 0) delay=3 offset=(4, -2) flip=hv\n"
                                 "    frame (0, 9) delay=2\n    frame (0, 0) delay=-1\n    frame (0, 0) delay=8\n"));
    file.document->setSprites(sprites);
    const QVector<AnimImageFrame> frames = GIFDialog::framesOf(file.animations->at(0));
    // The frame held for ever is the last one that shows.
    QCOMPARE(frames.size(), 3);
    const QImage picture = sprites->at(0)->image();
    QCOMPARE(frames[0].image, picture.mirrored(true, true));
    QCOMPARE(frames[0].x, 8 - 2 - 4);
    QCOMPARE(frames[0].y, 6 - 1 + 2);
    QCOMPARE(frames[0].ticks, 3);
    QVERIFY(frames[1].image.isNull());
    QCOMPARE(frames[1].ticks, 2);
    QCOMPARE(frames[2].ticks, 0);
    QCOMPARE(QPoint(frames[2].x, frames[2].y), QPoint(2, 1));
    file.document->setSprites(nullptr);
    sprites->release();
}

void AnimationOpsTest::emptyAnimationIsNoGIF()
{
    Document file;
    m_editor->setCurrentFile(file.animations);
    m_editor->selectAnimation(2);
    ScriptedAnswerer user({QMessageBox::Ok});
    action("anim_save_gif")->trigger();
    QCOMPARE(user.prompts().size(), 1);
    QCOMPARE(user.prompts().first().text, QStringLiteral("You can't save an empty animation as GIF."));
}

void AnimationOpsTest::addDeleteDuplicate()
{
    Document file;
    m_editor->setCurrentFile(file.animations);
    action("anim_add")->trigger();
    QCOMPARE(file.animations->count(), 4u);
    QCOMPARE(m_editor->currentAnimation(), file.animations->at(3));

    // Duplicating with a new identifier: the question, then the field.
    m_editor->selectAnimation(1);
    {
        ScriptedAnswerer user({QMessageBox::Yes});
        whenShown<QInputDialog>([](QInputDialog *dialog) {
            QCOMPARE(dialog->labelText(), QStringLiteral("Identifier:"));
            QCOMPARE(dialog->windowTitle(), QStringLiteral("Duplicate animation"));
            dialog->setTextValue(QStringLiteral("77"));
            dialog->accept();
        });
        action("anim_duplicate")->trigger();
        QCOMPARE(user.prompts().first().title, QStringLiteral("Duplicate animation"));
        QCOMPARE(user.prompts().first().text, QStringLiteral("Do you want to define a new identifier?"));
    }
    QCOMPARE(file.animations->count(), 5u);
    QCOMPARE(file.animations->at(2)->property(QStringLiteral("Identifier")).toString(), QStringLiteral("77"));
    QCOMPARE(file.animations->at(2)->frameCount(), 2u);
    QCOMPARE(m_editor->currentAnimation(), file.animations->at(2));

    // Deleting asks only under confirm_delete; No keeps the animation.
    m_host->options.insert(QStringLiteral("confirm_delete"), true);
    {
        ScriptedAnswerer user({QMessageBox::No});
        action("anim_delete")->trigger();
        QCOMPARE(user.prompts().first().text, QStringLiteral("Do you really want to delete the animation?"));
        QCOMPARE(user.prompts().first().title, QStringLiteral("Confirmation"));
    }
    QCOMPARE(file.animations->count(), 5u);
    {
        ScriptedAnswerer user({QMessageBox::Yes});
        action("anim_delete")->trigger();
    }
    QCOMPARE(file.animations->count(), 4u);
    QCOMPARE(file.animations->find(0, QStringLiteral("77")), -1);
    m_host->options.insert(QStringLiteral("confirm_delete"), false);
    {
        ScriptedAnswerer user;
        action("anim_delete")->trigger();
        QVERIFY(user.prompts().isEmpty());
    }
    QCOMPARE(file.animations->count(), 3u);
}

void AnimationOpsTest::optimizeReports()
{
    const QString text = QStringLiteral("\n\nanimation 4\n    frame (0, 0) delay=2 offset=(0, 0)\n"
                                        "    frame (0, 0) delay=3\n\n\n");
    // The engine's own count, on a copy of the file.
    Document copy(text);
    const int removed = copy.animations->optimize();
    QVERIFY(removed > 0);

    Document file(text);
    m_editor->setCurrentFile(file.animations);
    ScriptedAnswerer user({QMessageBox::Ok});
    action("anim_optimize")->trigger();
    QCOMPARE(user.prompts().size(), 1);
    QCOMPARE(user.prompts().first().title, QStringLiteral("Optimize done!"));
    QCOMPARE(user.prompts().first().text,
             QStringLiteral("Code clean, and %1 line(s) were removed in the optimization!").arg(removed));
    QCOMPARE(file.document->toString(), copy.document->toString());
    QCOMPARE(file.animations->at(0)->frameCount(), 1u);
    QCOMPARE(file.frame(0, 0)->delay(), 5);
}

void AnimationOpsTest::editAnimationCode()
{
    Document file;
    m_editor->setCurrentFile(file.animations);
    m_editor->selectAnimation(1);
    // Selecting made the editor current, which it reports; only the edit counts here.
    m_editor->changes.clear();
    m_host->options.insert(QStringLiteral("font_size"), 13);
    action("anim_code")->trigger();
    auto *dialog = QApplication::topLevelWidgets().isEmpty() ? nullptr : [] {
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            if (auto *found = qobject_cast<AnimEditTxt *>(widget))
                return found;
        }
        return static_cast<AnimEditTxt *>(nullptr);
    }();
    QVERIFY(dialog);
    QVERIFY(QTest::qWaitForWindowExposed(dialog));
    QCOMPARE(dialog->windowTitle(), QStringLiteral("Edit animation code"));
    QCOMPARE(dialog->editor()->font().pointSize(), 13);
    QVERIFY(dialog->text().startsWith(QStringLiteral("animation 2 \"Walk\"")));

    // The user types a third frame at the end and applies.
    QWidget *text = dialog->editor();
    text->setFocus();
    QTest::keyClick(text, Qt::Key_End, Qt::ControlModifier);
    QTest::keyClick(text, Qt::Key_Return);
    QTest::keyClicks(text, QStringLiteral("    frame (0, 4) delay=2"));
    QTest::mouseClick(button(dialog, QStringLiteral("Apply")), Qt::LeftButton);
    QCOMPARE(file.animations->at(1)->frameCount(), 3u);
    QCOMPARE(file.frame(1, 2)->delay(), 2);
    QCOMPARE(file.animations->count(), 3u);
    QCOMPARE(m_editor->changes, QList<bool>{true});

    QTest::mouseClick(button(dialog, QStringLiteral("Close")), Qt::LeftButton);
    QTRY_VERIFY(!file.animations->option(QStringLiteral("anim_editcode_geometry")).toByteArray().isEmpty());
    file.document->undo();
    QCOMPARE(file.animations->at(1)->frameCount(), 2u);
}

void AnimationOpsTest::exportAndImport()
{
    Document source;
    m_editor->setCurrentFile(source.animations);
    m_editor->selectAnimation(0);
    const QString exchange = m_dir->filePath(QStringLiteral("knight.json"));
    whenShown<ItemsDialog>([](ItemsDialog *dialog) {
        QVERIFY(dialog->isChecked(0));
        dialog->setChecked(1, true);
        dialog->accept();
    });
    answerFileDialog(exchange);
    action("anim_export")->trigger();
    QVERIFY(QFileInfo::exists(exchange));
    QCOMPARE(source.animations->option(QStringLiteral("anim_path")).toString(), m_dir->path());

    // Into a file that has animation 2 already: the user keeps it, and 1 comes in.
    Document target(QStringLiteral("animation 2 \"Mine\"\n    frame (5, 5) delay=1\n"));
    m_editor->setCurrentFile(target.animations);
    {
        ScriptedAnswerer user({QMessageBox::No, QMessageBox::Ok});
        answerFileDialog(exchange);
        action("anim_import")->trigger();
        QCOMPARE(user.prompts().size(), 2);
        QCOMPARE(user.prompts()[0].title, QStringLiteral("Conflict resolution!"));
        QCOMPARE(user.prompts()[0].text, QStringLiteral("Animation '2' already exists, do you want to replace it?"));
        QCOMPARE(user.prompts()[1].text, QStringLiteral("1 animation(s) were imported!"));
    }
    QCOMPARE(target.animations->count(), 2u);
    QCOMPARE(target.animations->data(target.animations->index(0), Qt::DisplayRole).toString(),
             QStringLiteral("2 Mine"));
    const int stand = target.animations->find(0, QStringLiteral("1"));
    QVERIFY(stand >= 0);
    QCOMPARE(describe(target.frame(uint(stand), 0)), describe(source.frame(0, 0)));

    // Again, declining both: nothing comes in.
    {
        ScriptedAnswerer user({QMessageBox::No, QMessageBox::No, QMessageBox::Ok});
        answerFileDialog(exchange);
        action("anim_import")->trigger();
        QCOMPARE(user.prompts().last().text, QStringLiteral("No animation imported!"));
    }
    QCOMPARE(target.animations->count(), 2u);

    // A file that isn't one: a clear no, and the file stays as it was.
    const QString broken = m_dir->filePath(QStringLiteral("broken.json"));
    QFile bad(broken);
    QVERIFY(bad.open(QIODevice::WriteOnly));
    bad.write("{\"format\": ");
    bad.close();
    const QString before = target.document->toString();
    {
        ScriptedAnswerer user({QMessageBox::Ok});
        answerFileDialog(broken);
        action("anim_import")->trigger();
        QCOMPARE(user.prompts().size(), 1);
        QCOMPARE(user.prompts().first().title, QStringLiteral("Warning"));
        QVERIFY(user.prompts().first().text.startsWith(QStringLiteral("No animation imported!")));
    }
    QCOMPARE(target.document->toString(), before);
}

void AnimationOpsTest::importFromProjects()
{
    MemoryArchive archive;
    RecordingParent parent(QStringLiteral("/work/"), archive);
    auto *home = new TestProject(&parent, 0, nullptr, false);
    auto *other = new TestProject(&parent, 0, nullptr, false);
    // The projects go after the files they hold: a file asks its project for options to
    // the last (made before the files, so ended after them).
    const auto releaseProjects = qScopeGuard([home, other] {
        home->release();
        other->release();
    });
    Document mine(QStringLiteral("animation 2 \"Mine\"\n    frame (5, 5) delay=1\n"));
    Document theirs;
    for (auto pair : {qMakePair(home, &mine), qMakePair(other, &theirs)}) {
        pair.second->animations->addRef();
        QVERIFY(pair.first->addFile(pair.second->animations, Project::Animations));
    }
    m_host->open = {home, other};
    m_editor->setCurrentFile(mine.animations);

    // From its own project: refused.
    {
        ScriptedAnswerer user({QMessageBox::Ok});
        whenShown<ItemsDialog>([](ItemsDialog *dialog) {
            QCOMPARE(dialog->count(), 2);
            dialog->setChecked(0, true);
            dialog->accept();
        });
        action("anim_import_proj")->trigger();
        QCOMPARE(user.prompts().size(), 1);
        QCOMPARE(user.prompts().first().title, QStringLiteral("Warning"));
        QCOMPARE(user.prompts().first().text, QStringLiteral("You can't import from the destination project!"));
    }
    QCOMPARE(mine.animations->count(), 1u);

    // From the other: the project, then its animations 2 and 3; 2 is replaced.
    ScriptedAnswerer user({QMessageBox::Yes, QMessageBox::Ok});
    whenShown<ItemsDialog>([](ItemsDialog *dialog) {
        dialog->setChecked(1, true);
        dialog->accept();
        whenShown<ItemsDialog>([](ItemsDialog *animations) {
            QCOMPARE(animations->count(), 3);
            animations->setChecked(1, true);
            animations->setChecked(2, true);
            animations->accept();
        }, 0);
    });
    action("anim_import_proj")->trigger();
    QCOMPARE(user.prompts().size(), 2);
    QCOMPARE(user.prompts()[0].title, QStringLiteral("Conflict resolution!"));
    QCOMPARE(user.prompts()[0].text, QStringLiteral("Animation '2' already exists, do you want to replace it?"));
    QCOMPARE(user.prompts()[1].text, QStringLiteral("2 animation(s) were imported!"));
    QCOMPARE(mine.animations->count(), 2u);
    QCOMPARE(mine.animations->at(0)->code(), theirs.animations->at(1)->code());
    QCOMPARE(mine.animations->at(1)->code(), theirs.animations->at(2)->code());
    QCOMPARE(m_editor->currentAnimation(), mine.animations->at(0));
    // One undo step.
    mine.document->undo();
    QCOMPARE(mine.animations->count(), 1u);
    QCOMPARE(mine.frame(0, 0)->delay(), 1);

    m_editor->setCurrentFile(nullptr);
    m_host->open.clear();
}

void AnimationOpsTest::findAnimation()
{
    Document file;
    m_editor->setCurrentFile(file.animations);
    m_editor->selectAnimation(0);
    whenShown<QInputDialog>([](QInputDialog *dialog) {
        dialog->setTextValue(QStringLiteral("3"));
        dialog->accept();
    });
    action("anim_find")->trigger();
    QCOMPARE(m_editor->currentAnimation(), file.animations->at(2));
    ScriptedAnswerer user({QMessageBox::Ok});
    whenShown<QInputDialog>([](QInputDialog *dialog) {
        dialog->setTextValue(QStringLiteral("42"));
        dialog->accept();
    });
    action("anim_find")->trigger();
    QCOMPARE(user.prompts().size(), 1);
    QCOMPARE(user.prompts().first().text, QStringLiteral("No animation found!"));
    QCOMPARE(m_editor->currentAnimation(), file.animations->at(2));
}

void AnimationOpsTest::importDialogLists()
{
    Document file;
    const QList<const PropertyItem *> items = {file.animations->at(0), nullptr, file.animations->at(1)};
    AnimImportDlg dialog(items);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Import sprites"));
    auto *list = dialog.findChild<QListWidget *>();
    QCOMPARE(list->count(), 3);
    QCOMPARE(list->item(0)->text(), QStringLiteral("1"));
    QCOMPARE(list->item(2)->text(), QStringLiteral("2"));
    QCOMPARE(dialog.checkedRows(), (QList<int>{0, 1, 2}));
    QTest::mouseClick(button(&dialog, QStringLiteral("Clear selection")), Qt::LeftButton);
    QCOMPARE(dialog.checkedRows(), QList<int>());
    list->setFocus();
    list->setCurrentRow(2);
    QTest::keyClick(list, Qt::Key_Space);
    QCOMPARE(dialog.checkedRows(), QList<int>{2});
    QTest::mouseClick(button(&dialog, QStringLiteral("Invert selection")), Qt::LeftButton);
    QCOMPARE(dialog.checkedRows(), (QList<int>{0, 1}));
    QTest::mouseClick(button(&dialog, QStringLiteral("Select all")), Qt::LeftButton);
    QCOMPARE(dialog.checkedRows(), (QList<int>{0, 1, 2}));
}

QTEST_MAIN(AnimationOpsTest)
#include "tst_animationops.moc"
