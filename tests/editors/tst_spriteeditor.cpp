// The sprite editor as a user meets it: the knight's sprites of the example work opened
// through the sample engine's plug-in, the editor on a graphics workspace with the sprite
// explorer and the palette editor beside it, its actions triggered, its dialogs answered
// and its questions answered by script.
#include "held.h"
#include "modalanswer.h"
#include "scriptedanswerer.h"
#include "testfiles.h"
#include "testinterface.h"

#include "editors/graphics/graphicsworkspace.h"
#include "editors/organizer/organizereditor.h"
#include "editors/organizer/thumbnailseditor.h"
#include "editors/palette/paletteeditor.h"
#include "editors/sprite/imagecanvas.h"
#include "editors/sprite/imagelayer.h"
#include "editors/sprite/imagelayers.h"
#include "editors/sprite/imagepainter.h"
#include "editors/sprite/imagerenderer.h"
#include "editors/sprite/imagetool.h"
#include "editors/sprite/imginfodlg.h"
#include "editors/sprite/imgresizedlg.h"
#include "editors/sprite/paldlg.h"
#include "editors/sprite/rasterlayer.h"
#include "editors/sprite/rotimgdlg.h"
#include "editors/sprite/spriteeditor.h"
#include "editors/sprite/spriteeditor_p.h"
#include "editors/sprite/sprimport.h"
#include "engine/extension.h"
#include "engine/extensionmanager.h"
#include "image/sprite.h"
#include "project/project.h"
#include "project/regexp.h"
#include "render/renderwidgetbase.h"

#include <QAction>
#include <QClipboard>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QMenu>
#include <QMutex>
#include <QPushButton>
#include <QSet>
#include <QSignalSpy>
#include <QSlider>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QThread>
#include <QToolBar>
#include <QToolButton>
#include <QUndoStack>
#include <QtTest>

#include <memory>

Q_DECLARE_METATYPE(Ovra::Sprite *)

using namespace Ovra;

namespace {

// A host that lists the projects the test opened.
class ProjectsHost : public TestInterface
{
public:
    uint projectCount() override { return uint(open.size()); }
    Project *project(uint index) override { return open.value(int(index)); }
    ExtraEditor *extraEditor(int index) override { return index == 0 ? organizer : nullptr; }
    void setExtraEditor(ExtraEditor *editor) override { shownExtra = editor; }
    QList<Project *> open;
    ExtraEditor *organizer = nullptr;
    ExtraEditor *shownExtra = nullptr;
};

// Clicks a dialog's button of that role, as a user does.
void clickButton(QDialog *dialog, QDialogButtonBox::StandardButton which)
{
    auto *box = dialog->findChild<QDialogButtonBox *>();
    QVERIFY(box);
    QTest::mouseClick(box->button(which), Qt::LeftButton);
}

// Chooses several files of one folder in the next file dialog.
void answerFilesDialog(const QString &folder, const QStringList &names)
{
    whenShown<QFileDialog>([folder, names](QFileDialog *dialog) {
        dialog->setDirectory(folder);
        QStringList quoted;
        for (const QString &name : names)
            quoted << QLatin1Char('"') + name + QLatin1Char('"');
        // Typed into the name field: selectFile() leaves a field that has the focus alone.
        auto *edit = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
        QVERIFY(edit);
        edit->setText(quoted.join(QLatin1Char(' ')));
        QMetaObject::invokeMethod(dialog, "accept");
    });
}

template<class T>
void acceptWhenShown(std::function<void(T *)> fill = nullptr)
{
    whenShown<T>([fill](T *dialog) {
        if (fill)
            fill(dialog);
        clickButton(dialog, QDialogButtonBox::Ok);
    });
}

QColor pictureColor(int i)
{
    return QColor(i * 5, 255 - i * 5, (i * 37) % 256);
}

QStringList promptTexts(const ScriptedAnswerer &answerer)
{
    QStringList texts;
    for (const Prompt &prompt : answerer.prompts())
        texts << prompt.title + QStringLiteral(" | ") + prompt.text;
    return texts;
}

} // namespace

class SpriteEditorTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void statesAndSelector();
    void importFiftyPictures();
    void importAsksBeforeReplacing();
    void paintSaveAndReopen();
    void discardQuestion_data();
    void discardQuestion();
    void deleteAsksByOption();
    void projectImport();
    void rotateAndResizeDialogs();
    void pictureAsLayerGrowsTheCanvas();
    void exportBatch();
    void badFilesLeaveTheSprite();
    void copyCutPaste();
    void toolsAndRemap();
    void layerPanel();
    void pickerSetsTheWells();
    void playLayersAndFind();
    void colourWellsAndPalettes();
    void organizerByOptions_data();
    void organizerByOptions();
    void screenshot();

private:
    Project *openWork(const QString &folder);
    QAction *action(const char *name) const { return m_host->action(name); }
    template<class T>
    T *field(const char *name) const
    {
        return m_editor->widget()->window()->findChild<T *>(QString::fromLatin1(name));
    }
    QWidget *view() const { return dynamic_cast<QWidget *>(m_graphics->renderWidget()); }
    bool showEditor();
    // The sprite's picture as 32-bit colours.
    static QImage colours(const Sprite *sprite) { return sprite->image().convertToFormat(QImage::Format_ARGB32); }

    std::unique_ptr<ExtensionManager> m_manager;
    EngineExtension *m_engine = nullptr;
    std::unique_ptr<ProjectsHost> m_host;
    std::unique_ptr<QTemporaryDir> m_dir;
    Held<Project> m_project;
    Sprites *m_sprites = nullptr;
    std::unique_ptr<GraphicsWorkspace> m_graphics;
    std::unique_ptr<ThumbnailsEditor> m_thumbnails;
    std::unique_ptr<PaletteEditor> m_palettes;
    Held<SpriteEditor> m_editor;
};

void SpriteEditorTest::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    qRegisterMetaType<Sprite *>();
    m_manager = std::make_unique<ExtensionManager>(QStringLiteral(OVRA_PLUGIN_DIR));
    m_engine = EngineExtension::forProjectFile(QStringLiteral("any.ovp"));
    QVERIFY2(m_engine, "the sample plug-in opens projects");
}

Project *SpriteEditorTest::openWork(const QString &folder)
{
    if (!copyTree(QStringLiteral(OVRA_EXAMPLES_DIR "/sample"), m_dir->filePath(folder)))
        return nullptr;
    QString error;
    Project *project = m_engine->openProject(m_dir->filePath(folder + QStringLiteral("/knight/knight.ovp")), &error);
    if (!project)
        qWarning("%s", qPrintable(error));
    return project;
}

void SpriteEditorTest::init()
{
    m_host = std::make_unique<ProjectsHost>();
    m_host->options[QStringLiteral("native_painting")] = true;
    m_host->options[QStringLiteral("confirm_delete")] = false;
    m_dir = std::make_unique<QTemporaryDir>();
    m_project.reset(openWork(QStringLiteral("work")));
    QVERIFY(m_project);
    m_host->open << m_project.get();
    m_host->projectInUse = m_project.get();
    m_sprites = dynamic_cast<Sprites *>(m_project->file(Project::Sprites));
    QVERIFY(m_sprites);
    QVERIFY(m_sprites->count() >= 2);
    m_graphics = std::make_unique<GraphicsWorkspace>(m_host.get());
    m_thumbnails = std::make_unique<ThumbnailsEditor>();
    m_palettes = std::make_unique<PaletteEditor>();
    m_editor.reset(new SpriteEditor(m_graphics.get(), m_palettes.get(), m_thumbnails.get(), Project::Sprites));
    m_editor->setCurrentFile(m_sprites);
    m_host->activateEditor(m_editor.get());
    QVERIFY(m_editor->isActive());
}

void SpriteEditorTest::cleanup()
{
    setSpritePictureLoadHook(nullptr);
    if (m_host)
        m_host->activeEditor = nullptr;
    m_editor.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    m_palettes.reset();
    m_thumbnails.reset();
    m_graphics.reset();
    m_sprites = nullptr;
    m_project.reset();
    m_dir.reset();
    m_host.reset();
}

bool SpriteEditorTest::showEditor()
{
    m_graphics->resize(1000, 640);
    m_graphics->show();
    if (!QTest::qWaitForWindowExposed(m_graphics.get()))
        return false;
    m_editor->renderer()->centralize();
    return true;
}

// The states and the sprite selector with its text, as the file comes and goes.
void SpriteEditorTest::statesAndSelector()
{
    QSignalSpy noFile(m_editor.get(), &SpriteEditor::noFile);
    QSignalSpy enabled(m_editor.get(), &SpriteEditor::enabled);
    auto *label = field<QLabel>("spr_sel_lb");
    auto *selector = field<QSlider>("spr_sel");
    QVERIFY(label && selector);
    const int count = int(m_sprites->count());

    m_editor->setCurrentFile(nullptr);
    QCOMPARE(noFile.last().at(0).toBool(), true);
    QCOMPARE(enabled.last().at(0).toBool(), false);
    QCOMPARE(label->text(), QStringLiteral("0 / 0"));
    QVERIFY(!action("spr_add")->isEnabled());
    QVERIFY(!action("spr_delete")->isEnabled());
    QVERIFY(!action("spr_tool_pen")->isEnabled());

    m_editor->setCurrentFile(m_sprites);
    QCOMPARE(noFile.last().at(0).toBool(), false);
    QCOMPARE(enabled.last().at(0).toBool(), true);
    QVERIFY(action("spr_add")->isEnabled());
    QVERIFY(action("spr_layer_add")->isEnabled());
    QCOMPARE(m_host->actionScopes.value(QStringLiteral("spr_layer_add")), QStringLiteral("sprite/0"));
    QCOMPARE(label->text(), QStringLiteral("%1 / %2").arg(m_editor->currentIndex() + 1).arg(count));
    QCOMPARE(selector->maximum(), count - 1);

    // The keys on the slider walk the sprites.
    m_editor->setCurrentSprite(0);
    QSignalSpy changed(m_editor.get(), &SpriteEditor::spriteChanged);
    selector->setFocus();
    QTest::keyClick(selector, Qt::Key_Right);
    QCOMPARE(m_editor->currentIndex(), 1);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(m_editor->currentSprite(), m_sprites->at(1));
    QCOMPARE(label->text(), QStringLiteral("2 / %1").arg(count));
    QCOMPARE(m_editor->canvas()->size(), m_sprites->at(1)->image().size());
    action("spr_prev")->trigger();
    QCOMPARE(m_editor->currentIndex(), 0);
    QCOMPARE(selector->value(), 0);
    action("spr_prev")->trigger();
    QCOMPARE(m_editor->currentIndex(), 0);
    QCOMPARE(m_editor->name(), "sprites");
}

// Fifty pictures and a broken one among them: read on the pool, added in file order as
// one step of the file's history.
void SpriteEditorTest::importFiftyPictures()
{
    const QString folder = m_dir->filePath(QStringLiteral("pictures"));
    QVERIFY(QDir().mkpath(folder));
    QStringList names;
    for (int i = 0; i < 50; ++i) {
        QImage picture(6 + i % 5, 4 + i % 3, QImage::Format_ARGB32);
        picture.fill(pictureColor(i));
        names << QStringLiteral("pic_%1.png").arg(i, 2, 10, QLatin1Char('0'));
        QVERIFY(picture.save(QDir(folder).filePath(names.last())));
        if (i == 24) {
            names << QStringLiteral("pic_24b.png");
            QVERIFY(writeFile(QDir(folder).filePath(names.last()), QByteArray("\x89PNG not really", 15)));
        }
    }
    QMutex lock;
    QList<QThread *> threads;
    QStringList loaded;
    setSpritePictureLoadHook([&](const QString &path) {
        QMutexLocker locker(&lock);
        threads << QThread::currentThread();
        loaded << QFileInfo(path).fileName();
    });
    const uint before = m_sprites->count();
    ScriptedAnswerer answers({QMessageBox::No, QMessageBox::Ok, QMessageBox::Ok});
    answerFilesDialog(folder, names);
    acceptWhenShown<PalDlg>([](PalDlg *dialog) {
        QCOMPARE(dialog->count(), 51);
        QCOMPARE(dialog->mode(), Sprite::OwnPalette);
    });
    action("spr_add")->trigger();

    QCOMPARE(threads.size(), 51);
    QVERIFY(!threads.contains(QCoreApplication::instance()->thread()));
    QCOMPARE(QSet<QString>(loaded.begin(), loaded.end()), QSet<QString>(names.begin(), names.end()));
    const QStringList texts = promptTexts(answers);
    QCOMPARE(texts.size(), 3);
    QCOMPARE(texts.at(0), QStringLiteral("Crop | Do you want to crop the image?"));
    QVERIFY2(texts.at(1).contains(QStringLiteral("pic_24b.png")), qPrintable(texts.at(1)));
    QCOMPARE(answers.prompts().at(1).icon, QMessageBox::Warning);
    QCOMPARE(texts.at(2), QStringLiteral("Import | 50 new sprite(s) were imported!"));

    QCOMPARE(m_sprites->count(), before + 50);
    for (int i = 0; i < 50; ++i) {
        const QImage picture = colours(m_sprites->at(before + uint(i)));
        QCOMPARE(picture.size(), QSize(6 + i % 5, 4 + i % 3));
        QCOMPARE(QColor(picture.pixel(0, 0)), pictureColor(i));
    }
    QCOMPARE(m_host->options.value(QStringLiteral("spr_path")).toString(), QFileInfo(folder).absoluteFilePath());

    // One undo takes all fifty back out.
    m_editor->undo();
    QCOMPARE(m_sprites->count(), before);
}

// A picture named after a sprite that is there: the question, and the answer kept.
void SpriteEditorTest::importAsksBeforeReplacing()
{
    const QVariant taken = m_sprites->at(0)->identifier();
    const QString text = spriteIdentifierText(taken);
    const QString folder = m_dir->filePath(QStringLiteral("again"));
    QVERIFY(QDir().mkpath(folder));
    QImage picture(5, 5, QImage::Format_ARGB32);
    picture.fill(qRgb(1, 2, 3));
    const QString name = QStringLiteral("back_%1.png").arg(text);
    QVERIFY(picture.save(QDir(folder).filePath(name)));
    const uint before = m_sprites->count();
    const QImage old = colours(m_sprites->at(0));

    // Declined: nothing goes in.
    {
        ScriptedAnswerer answers({QMessageBox::No, QMessageBox::No, QMessageBox::Ok});
        answerFilesDialog(folder, {name});
        acceptWhenShown<PalDlg>();
        action("spr_add")->trigger();
        const QStringList texts = promptTexts(answers);
        QCOMPARE(texts.value(1), QStringLiteral("Replace sprite | The sprite %1 already exists. Do you want to replace it?")
                                     .arg(text));
        QCOMPARE(texts.value(2), QStringLiteral("Import | No new sprite imported!"));
        QCOMPARE(m_sprites->count(), before);
        QCOMPARE(colours(m_sprites->at(0)), old);
    }
    // Accepted: the sprite takes the picture.
    ScriptedAnswerer answers({QMessageBox::No, QMessageBox::Yes, QMessageBox::Ok});
    answerFilesDialog(folder, {name});
    acceptWhenShown<PalDlg>();
    action("spr_add")->trigger();
    QCOMPARE(promptTexts(answers).value(2), QStringLiteral("Import | 1 new sprite(s) were imported!"));
    QCOMPARE(m_sprites->count(), before);
    QCOMPARE(colours(m_sprites->at(0)).pixel(2, 2), qRgb(1, 2, 3));
}

// Pixels painted with the pen on the view are in the file once it is saved and read again.
void SpriteEditorTest::paintSaveAndReopen()
{
    QVERIFY(showEditor());
    m_editor->setCurrentSprite(0);
    const QImage before = m_editor->canvas()->composed();
    QVERIFY(!before.isNull());
    action("spr_tool_pen")->trigger();
    QCOMPARE(m_editor->currentTool()->actionName(), "spr_tool_pen");
    QCOMPARE(m_editor->renderer()->tool(), m_editor->currentTool());
    // A colour the picture doesn't have where the pen goes.
    const QPoint pixel(before.width() / 2, before.height() / 2);
    const uint colour = before.format() == QImage::Format_Indexed8 ? (before.pixelIndex(pixel) + 1) % 256
                                                                   : qRgba(250, 10, 10, 255);
    m_editor->canvas()->painter()->setColor(colour);
    // Closer, as a user paints; then the middle of the pixel on the view.
    m_graphics->zoomIn();
    m_graphics->zoomIn();
    ImageRenderer *renderer = m_editor->renderer();
    const QPoint at = ((renderer->viewPoint(pixel) + renderer->viewPoint(pixel + QPoint(1, 1))) / 2).toPoint();
    QCOMPARE(renderer->pixelAt(at), pixel);
    QTest::mouseClick(view(), Qt::LeftButton, Qt::NoModifier, at);
    const QImage painted = m_editor->canvas()->composed();
    QVERIFY2(painted.pixel(pixel) != before.pixel(pixel), "the pen painted the pixel under the mouse");
    QVERIFY(m_editor->isModified());

    m_editor->save();
    QVERIFY(!m_editor->isModified());
    QVERIFY(!m_sprites->isModified());
    Held<Project> again(m_engine->openProject(m_dir->filePath(QStringLiteral("work/knight/knight.ovp")), nullptr));
    QVERIFY(again);
    auto *read = dynamic_cast<Sprites *>(again->file(Project::Sprites));
    QVERIFY(read);
    const QImage back = read->at(0)->image();
    QCOMPARE(back.convertToFormat(QImage::Format_ARGB32).pixel(pixel),
             painted.convertToFormat(QImage::Format_ARGB32).pixel(pixel));
    QCOMPARE(back.convertToFormat(QImage::Format_ARGB32), painted.convertToFormat(QImage::Format_ARGB32));
}

void SpriteEditorTest::discardQuestion_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<int>("shown");
    QTest::newRow("kept") << int(QMessageBox::No) << 0;
    QTest::newRow("discarded") << int(QMessageBox::Yes) << 1;
}

// Leaving a changed sprite asks first; keeping it stays on it.
void SpriteEditorTest::discardQuestion()
{
    QFETCH(int, answer);
    QFETCH(int, shown);
    m_editor->setCurrentSprite(0);
    auto *menu = field<QMenu>("spr_layers_menu");
    QVERIFY(menu);
    QVERIFY(menu->actions().contains(action("spr_layer_add")));
    action("spr_layer_add")->trigger();
    QCOMPARE(m_editor->canvas()->layers()->count(), 2);
    QVERIFY(m_editor->isModified());
    ScriptedAnswerer answers({QMessageBox::StandardButton(answer)});
    action("spr_next")->trigger();
    QCOMPARE(answers.prompts().size(), 1);
    QCOMPARE(answers.prompts().first().title, QStringLiteral("Discard changes?"));
    QCOMPARE(answers.prompts().first().text,
             QStringLiteral("Do you want to discard the changes made in the current sprite?"));
    QCOMPARE(m_editor->currentIndex(), shown);
    QCOMPARE(field<QSlider>("spr_sel")->value(), shown);
    QCOMPARE(m_editor->canvas()->layers()->count(), shown ? 1 : 2);
}

void SpriteEditorTest::deleteAsksByOption()
{
    const uint before = m_sprites->count();
    m_editor->setCurrentSprite(1);
    const Sprite *second = m_sprites->at(2);
    m_host->options[QStringLiteral("confirm_delete")] = true;
    {
        ScriptedAnswerer answers({QMessageBox::No});
        action("spr_delete")->trigger();
        QCOMPARE(promptTexts(answers), QStringList{QStringLiteral("Delete | Do you really want to delete the sprite?")});
        QCOMPARE(m_sprites->count(), before);
    }
    ScriptedAnswerer answers({QMessageBox::Yes});
    action("spr_delete")->trigger();
    QCOMPARE(m_sprites->count(), before - 1);
    QCOMPARE(m_editor->currentSprite(), second);
    // Without the option no question.
    m_host->options[QStringLiteral("confirm_delete")] = false;
    action("spr_delete")->trigger();
    QCOMPARE(answers.prompts().size(), 1);
    QCOMPARE(m_sprites->count(), before - 2);
}

// From itself the import is refused; from another project each taken identifier is asked.
void SpriteEditorTest::projectImport()
{
    Held<Project> other(openWork(QStringLiteral("other")));
    QVERIFY(other);
    m_host->open << other.get();
    const uint before = m_sprites->count();
    {
        ScriptedAnswerer answers({QMessageBox::Ok});
        acceptWhenShown<ProjImportDlg>([](ProjImportDlg *dialog) { dialog->setChecked(0, true); });
        action("spr_import_proj")->trigger();
        QCOMPARE(promptTexts(answers),
                 QStringList{QStringLiteral("Warning | You can't import from the destination project!")});
    }
    auto *source = dynamic_cast<Sprites *>(other->file(Project::Sprites));
    QVERIFY(source);
    // Every sprite of the other file has its twin here: the first replaced, the rest kept.
    QList<QMessageBox::StandardButton> script{QMessageBox::Yes};
    for (uint row = 1; row < source->count(); ++row)
        script << QMessageBox::No;
    script << QMessageBox::Ok;
    ScriptedAnswerer answers(script);
    acceptWhenShown<ProjImportDlg>([](ProjImportDlg *dialog) { dialog->setChecked(1, true); });
    acceptWhenShown<SprImport>([source](SprImport *dialog) {
        QCOMPARE(dialog->objectName(), QStringLiteral("spr_import"));
        QCOMPARE(dialog->count(), int(source->count()));
    });
    action("spr_import_proj")->trigger();
    const QStringList texts = promptTexts(answers);
    QCOMPARE(texts.size(), int(source->count()) + 1);
    QCOMPARE(texts.first(), QStringLiteral("Conflict resolution! | Sprite '%1' already exists, do you want to replace it?")
                                .arg(spriteIdentifierText(source->at(0)->identifier())));
    QCOMPARE(texts.last(), QStringLiteral("Import | 1 new sprite(s) were imported!"));
    QCOMPARE(m_sprites->count(), before);
}

// The dialogs answered as a user types: a quarter turn in degrees swaps the sides; a
// new size scales every layer.
void SpriteEditorTest::rotateAndResizeDialogs()
{
    m_editor->setCurrentSprite(0);
    const QSize size = m_editor->canvas()->size();
    QVERIFY(size.width() != size.height());
    acceptWhenShown<RotImgDlg>([](RotImgDlg *dialog) {
        dialog->angleBox()->selectAll();
        QTest::keyClicks(dialog->angleBox(), QStringLiteral("90"));
    });
    action("spr_image_rotate")->trigger();
    QCOMPARE(m_editor->canvas()->size(), size.transposed());

    acceptWhenShown<ImgResizeDlg>([](ImgResizeDlg *dialog) {
        dialog->widthBox()->selectAll();
        QTest::keyClicks(dialog->widthBox(), QStringLiteral("20"));
        dialog->heightBox()->selectAll();
        QTest::keyClicks(dialog->heightBox(), QStringLiteral("10"));
        dialog->filterBox()->setCurrentIndex(1);
        QCOMPARE(dialog->filter(), BilinearFilter);
    });
    action("spr_resize")->trigger();
    QCOMPARE(m_editor->canvas()->size(), QSize(20, 10));

    // The properties: true colour, and a larger canvas centred with the axis.
    const QPoint axis = m_editor->currentSprite()->axis();
    acceptWhenShown<ImgInfoDlg>([](ImgInfoDlg *dialog) {
        dialog->formatBox()->setCurrentIndex(1);
        dialog->widthBox()->selectAll();
        QTest::keyClicks(dialog->widthBox(), QStringLiteral("30"));
    });
    action("spr_image_properties")->trigger();
    QCOMPARE(m_editor->canvas()->size(), QSize(30, 10));
    QCOMPARE(m_editor->canvas()->format(), 1);
    action("spr_saveimg")->trigger();
    QCOMPARE(m_editor->currentSprite()->image().size(), QSize(30, 10));
    QCOMPARE(m_editor->currentSprite()->axis(), axis + QPoint(5, 0));
    QVERIFY(!m_editor->isModified() || m_sprites->isModified());
}

// A sprite of the explorer laid as a layer on a smaller one: the canvas grows to hold
// it, centring the old layers, and the axis moves by half the growth when saved.
void SpriteEditorTest::pictureAsLayerGrowsTheCanvas()
{
    int small = -1;
    int large = -1;
    for (uint row = 0; row < m_sprites->count(); ++row) {
        const QSize size = m_sprites->at(row)->image().size();
        if (small < 0 || size.width() < m_sprites->at(uint(small))->image().width())
            small = int(row);
        if (large < 0 || size.width() > m_sprites->at(uint(large))->image().width())
            large = int(row);
    }
    QVERIFY(small != large);
    const QSize smallSize = m_sprites->at(uint(small))->image().size();
    const QSize largeSize = m_sprites->at(uint(large))->image().size();
    const QSize grown = smallSize.expandedTo(largeSize);
    m_editor->setCurrentSprite(small);
    const QPoint axis = m_editor->currentSprite()->axis();
    QVERIFY(showEditor());
    // The explorer's list: the large sprite clicked.
    auto *list = m_thumbnails->widget()->findChild<QListView *>();
    QVERIFY(list);
    m_thumbnails->widget()->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_thumbnails->widget()));
    list->scrollTo(list->model()->index(large, 0));
    QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier,
                      list->visualRect(list->model()->index(large, 0)).center());
    QCOMPARE(m_thumbnails->selected(), QList<Sprite *>{m_sprites->at(uint(large))});
    action("spr_thumb_add")->trigger();
    QCOMPARE(m_editor->canvas()->layers()->count(), 2);
    QCOMPARE(m_editor->canvas()->size(), grown);
    action("spr_saveimg")->trigger();
    const QPoint shift((grown.width() - smallSize.width()) / 2, (grown.height() - smallSize.height()) / 2);
    QCOMPARE(m_editor->currentSprite()->axis(), axis + shift);
    QCOMPARE(m_editor->currentSprite()->image().size(), grown);
}

// Several sprites chosen in the explorer go each to "<folder>/<name>_<identifier>.<ext>".
void SpriteEditorTest::exportBatch()
{
    m_thumbnails->widget()->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_thumbnails->widget()));
    auto *list = m_thumbnails->widget()->findChild<QListView *>();
    QVERIFY(list);
    QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier,
                      list->visualRect(list->model()->index(0, 0)).center());
    QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::ControlModifier,
                      list->visualRect(list->model()->index(1, 0)).center());
    QCOMPARE(m_thumbnails->selected().size(), 2);
    const QString folder = m_dir->filePath(QStringLiteral("out"));
    QVERIFY(QDir().mkpath(folder));
    answerFilesDialog(folder, {QStringLiteral("knight.png")});
    action("spr_saveimgas")->trigger();
    for (uint row = 0; row < 2; ++row) {
        const Sprite *sprite = m_sprites->at(row);
        const QString name = QStringLiteral("%1/knight_%2.png").arg(folder, spriteIdentifierText(sprite->identifier()));
        QImage read;
        QVERIFY2(read.load(name), qPrintable(name));
        QCOMPARE(read.convertToFormat(QImage::Format_ARGB32), colours(sprite));
    }
}

// A file that isn't a picture for the sprite's image: a message, and the sprite as it was.
void SpriteEditorTest::badFilesLeaveTheSprite()
{
    m_editor->setCurrentSprite(0);
    const QImage before = colours(m_sprites->at(0));
    const QString broken = m_dir->filePath(QStringLiteral("broken.png"));
    QVERIFY(writeFile(broken, QByteArray("\x89PNG\r\n\x1a\n truncated")));
    ScriptedAnswerer answers({QMessageBox::Ok});
    answerFilesDialog(m_dir->path(), {QStringLiteral("broken.png")});
    action("spr_openimg")->trigger();
    QCOMPARE(answers.prompts().size(), 1);
    QCOMPARE(answers.prompts().first().icon, QMessageBox::Warning);
    QVERIFY(answers.prompts().first().text.contains(QStringLiteral("broken.png")));
    QCOMPARE(colours(m_sprites->at(0)), before);
    QVERIFY(!m_sprites->isModified());
}

// The selection goes to the clipboard; a cut clears it on the layer as one step; a paste
// comes back as a layer of its own.
void SpriteEditorTest::copyCutPaste()
{
    m_editor->setCurrentSprite(0);
    ImageCanvas *canvas = m_editor->canvas();
    const QImage before = canvas->composed();
    const QSize size = canvas->size();
    const QRect box(size.width() / 4, size.height() / 4, size.width() / 2, size.height() / 2);
    QByteArray mask(size.width() * size.height(), '\0');
    for (int y = box.top(); y <= box.bottom(); ++y)
        for (int x = box.left(); x <= box.right(); ++x)
            mask[y * size.width() + x] = 1;
    QVERIFY(canvas->setSelection(mask));
    m_editor->copy();
    const QImage copied = QApplication::clipboard()->image().convertToFormat(QImage::Format_ARGB32);
    QCOMPARE(copied.size(), box.size());
    QCOMPARE(copied.pixel(3, 3), before.convertToFormat(QImage::Format_ARGB32).pixel(box.topLeft() + QPoint(3, 3)));

    const int steps = canvas->undoStack()->index();
    m_editor->cut();
    QCOMPARE(canvas->undoStack()->index(), steps + 1);
    const QImage cut = canvas->composed();
    QCOMPARE(cut.pixelIndex(box.center()), 0);
    QCOMPARE(cut.pixelIndex(0, 0), before.pixelIndex(0, 0));
    m_editor->undo();
    QCOMPARE(canvas->composed(), before);

    m_editor->paste();
    QCOMPARE(canvas->layers()->count(), 2);
    QCOMPARE(canvas->size(), size);
}

// The tools are one exclusive group; the remap table of the palette editor reaches the
// canvas's painter.
void SpriteEditorTest::toolsAndRemap()
{
    QCOMPARE(m_editor->tools().size(), 10);
    action("spr_tool_eraser")->trigger();
    QCOMPARE(m_editor->currentTool()->actionName(), "spr_tool_eraser");
    QCOMPARE(m_editor->renderer()->tool(), m_editor->currentTool());
    QVERIFY(m_editor->currentTool()->isActive());
    QVERIFY(!action("spr_tool_pen")->isChecked());
    action("spr_tool_picker")->trigger();
    QVERIFY(!action("spr_tool_eraser")->isChecked());
    QVERIFY(action("spr_tool_picker")->isChecked());
    QCOMPARE(m_editor->currentTool()->actionName(), "spr_tool_picker");

    const QMap<uint, uint> table{{1, 7}, {2, 9}};
    emit m_palettes->remapRequested(table);
    QCOMPARE(m_editor->canvas()->painter()->remap(), table);
    // The painter made anew for another format keeps it.
    m_editor->canvas()->setFormat(1 - m_editor->canvas()->format(), false);
    QCOMPARE(m_editor->canvas()->painter()->remap(), table);
}

// The layer panel as a user works it: a layer picked in the list, its blend mode chosen
// in the box with the keys, its opacity dragged by the keys on the slider, each an undo
// step of the canvas.
void SpriteEditorTest::layerPanel()
{
    QVERIFY(showEditor());
    m_editor->setCurrentSprite(0);
    action("spr_layer_add")->trigger();
    ImageLayers *layers = m_editor->canvas()->layers();
    QCOMPARE(layers->count(), 2);
    auto *list = field<QListView>("spr_layers_list");
    auto *blend = field<QComboBox>("spr_layers_blendmode");
    auto *opacity = field<QSlider>("spr_layers_opacity");
    QVERIFY(list && blend && opacity);
    QCOMPARE(blend->count(), int(BlendEntryCount));
    QCOMPARE(blend->itemText(0), QStringLiteral("Normal"));
    QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier, list->visualRect(layers->index(1)).center());
    QCOMPARE(list->currentIndex().row(), 1);
    // The painter paints on the layer picked.
    auto *bottom = dynamic_cast<RasterLayer *>(layers->at(1));
    QVERIFY(bottom);
    QCOMPARE(m_editor->canvas()->painter()->image(), bottom->imagePointer());

    QUndoStack *history = m_editor->canvas()->undoStack();
    const int steps = history->index();
    blend->setFocus();
    QTest::keyClick(blend, Qt::Key_Down);
    QTest::keyClick(blend, Qt::Key_Down);
    QCOMPARE(layers->at(1)->blendMode(), blendModeOfEntry(2));
    QCOMPARE(layers->at(0)->blendMode(), QPainter::CompositionMode_SourceOver);
    opacity->setFocus();
    QTest::keyClick(opacity, Qt::Key_PageDown);
    QCOMPARE(layers->at(1)->opacity(), (100 - opacity->pageStep()) / 100.0);
    // Each key on the box was a step of its own: Add, then Multiply, then the opacity.
    QCOMPARE(history->index(), steps + 3);

    // Back on the top layer the fields show its own values.
    QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier, list->visualRect(layers->index(0)).center());
    QCOMPARE(blend->currentIndex(), 0);
    QCOMPARE(opacity->value(), 100);
    // Undone, the bottom layer is as it was.
    for (int i = 0; i < 3; ++i)
        m_editor->undo();
    QCOMPARE(history->index(), steps);
    QCOMPARE(layers->at(1)->blendMode(), QPainter::CompositionMode_SourceOver);
    QCOMPARE(layers->at(1)->opacity(), 1.0);
}

// The picker on the view: the left button gives the foreground, the right one the
// background, and the pen paints with what was picked.
void SpriteEditorTest::pickerSetsTheWells()
{
    QVERIFY(showEditor());
    m_editor->setCurrentSprite(0);
    m_graphics->zoomIn();
    const QImage picture = m_editor->canvas()->composed();
    QVERIFY(picture.format() == QImage::Format_Indexed8);
    // Two pixels of different colours.
    QPoint first(-1, -1);
    QPoint second(-1, -1);
    for (int y = 0; y < picture.height() && second.x() < 0; ++y) {
        for (int x = 0; x < picture.width() && second.x() < 0; ++x) {
            if (picture.pixelIndex(x, y) == 0)
                continue;
            if (first.x() < 0)
                first = QPoint(x, y);
            else if (picture.pixelIndex(x, y) != picture.pixelIndex(first))
                second = QPoint(x, y);
        }
    }
    QVERIFY(second.x() >= 0);
    ImageRenderer *renderer = m_editor->renderer();
    const auto middle = [renderer](const QPoint &pixel) {
        return ((renderer->viewPoint(pixel) + renderer->viewPoint(pixel + QPoint(1, 1))) / 2).toPoint();
    };
    action("spr_tool_picker")->trigger();
    QTest::mouseClick(view(), Qt::LeftButton, Qt::NoModifier, middle(first));
    QTest::mouseClick(view(), Qt::RightButton, Qt::NoModifier, middle(second));
    const uint foreground = uint(picture.pixelIndex(first));
    const uint background = uint(picture.pixelIndex(second));
    QCOMPARE(m_editor->canvas()->painter()->color(), foreground);
    QCOMPARE(field<QToolButton>("spr_foreground")->toolTip(), QStringLiteral("Foreground: %1").arg(foreground));
    QCOMPARE(field<QToolButton>("spr_background")->toolTip(), QStringLiteral("Background: %1").arg(background));
    // Swapped by the background well, the pen paints the second colour.
    QTest::mouseClick(field<QToolButton>("spr_background"), Qt::LeftButton);
    action("spr_tool_pen")->trigger();
    QTest::mouseClick(view(), Qt::LeftButton, Qt::NoModifier, middle(first));
    QCOMPARE(uint(m_editor->canvas()->composed().pixelIndex(first)), background);
}

// The layers shown one by one and then as they were; the search by the names in the list.
void SpriteEditorTest::playLayersAndFind()
{
    m_editor->setCurrentSprite(0);
    action("spr_layer_add")->trigger();
    action("spr_layer_add")->trigger();
    ImageLayers *layers = m_editor->canvas()->layers();
    QCOMPARE(layers->count(), 3);
    layers->at(1)->setVisible(false);
    QSignalSpy changes(layers, &QAbstractItemModel::dataChanged);
    action("spr_layer_play")->trigger();
    // The bottom layer alone first.
    QVERIFY(layers->at(2)->isVisible());
    QVERIFY(!layers->at(0)->isVisible() && !layers->at(1)->isVisible());
    // Then the middle one, the top one, and the three as they were: six changes of
    // visibility in all.
    QTRY_COMPARE_WITH_TIMEOUT(changes.count(), 6, 10000);
    QVERIFY(layers->at(0)->isVisible() && !layers->at(1)->isVisible() && layers->at(2)->isVisible());
    QCOMPARE(m_editor->canvas()->layers()->count(), 3);

    const int count = int(m_sprites->count());
    const QString last = m_sprites->data(m_sprites->index(count - 1), Qt::DisplayRole).toString();
    ScriptedAnswerer answers({QMessageBox::Yes});
    QVERIFY(m_editor->find(RegExp(QRegularExpression::escape(last) + QLatin1Char('$')), 0));
    QCOMPARE(answers.prompts().size(), 1); // the layers added were changes
    QCOMPARE(m_editor->currentIndex(), count - 1);
    QVERIFY(!m_editor->find(RegExp(QStringLiteral("no such sprite")), 0));
    QCOMPARE(m_editor->currentIndex(), count - 1);
}

// The background well swaps the colours; another palette of the file shows the canvas
// in its colours until it is taken away.
void SpriteEditorTest::colourWellsAndPalettes()
{
    m_editor->setCurrentSprite(0);
    auto *background = field<QToolButton>("spr_background");
    QVERIFY(background && field<QToolButton>("spr_foreground"));
    ImagePainter *painter = m_editor->canvas()->painter();
    const uint first = painter->color();
    QTest::mouseClick(background, Qt::LeftButton);
    QVERIFY(painter->color() != first);
    QTest::mouseClick(background, Qt::LeftButton);
    QCOMPARE(painter->color(), first);

    Palettes *palettes = m_sprites->palettes();
    QVERIFY(palettes && palettes->count() > 0);
    RGBA table[256];
    for (int i = 0; i < 256; ++i)
        table[i] = RGBA(quint8(i), 0, quint8(255 - i), 255);
    Palette *other = palettes->add(table, QPoint(9, 9), Archive::NoShare);
    QVERIFY(other);
    m_editor->switchPalette(other);
    QCOMPARE(m_editor->canvas()->palette()->at(10), table[10]);
    // Edited in the palette editor, the colours shown follow; the pixels stay.
    const QImage pixels = m_editor->canvas()->composed();
    table[10] = RGBA(1, 2, 3, 255);
    other->setColorTable(table, Archive::NoShare);
    m_palettes->setCurrentPalette(other);
    emit m_palettes->paletteChanged();
    QCOMPARE(m_editor->canvas()->palette()->at(10), RGBA(1, 2, 3, 255));
    const QImage after = m_editor->canvas()->composed();
    QCOMPARE(QByteArray(reinterpret_cast<const char *>(after.constBits()), int(after.sizeInBytes())),
             QByteArray(reinterpret_cast<const char *>(pixels.constBits()), int(pixels.sizeInBytes())));
    QVERIFY(m_editor->canvas()->undoStack()->isClean());
    m_editor->switchPalette(nullptr);
    QVERIFY(m_editor->canvas()->palette()->at(10) != table[10] || m_editor->canvas()->format() == 1);
}

void SpriteEditorTest::organizerByOptions_data()
{
    QTest::addColumn<bool>("shown");
    QTest::addColumn<bool>("palettes");
    QTest::newRow("sprites") << true << false;
    QTest::newRow("palettes") << true << true;
    QTest::newRow("hidden") << false << false;
}

void SpriteEditorTest::organizerByOptions()
{
    QFETCH(bool, shown);
    QFETCH(bool, palettes);
    OrganizerEditor organizer;
    m_host->organizer = &organizer;
    m_host->options[QStringLiteral("show_organizer")] = shown;
    m_host->options[QStringLiteral("org_palette")] = palettes;
    m_editor->deactivate();
    m_editor->activate();
    QCOMPARE(m_host->shownExtra, shown ? &organizer : nullptr);
    OrganizableObject *expected = m_sprites;
    if (palettes)
        expected = m_sprites->palettes();
    QCOMPARE(organizer.object(), shown ? expected : nullptr);
    m_host->organizer = nullptr;
    organizer.setObject(nullptr);
}

// The editor with two layers and a selection, for the eye.
void SpriteEditorTest::screenshot()
{
    QVERIFY(showEditor());
    m_editor->setCurrentSprite(0);
    action("spr_layer_duplicate")->trigger();
    QCOMPARE(m_editor->canvas()->layers()->count(), 2);
    const QSize size = m_editor->canvas()->size();
    QByteArray mask(size.width() * size.height(), '\0');
    for (int y = size.height() / 4; y < size.height() * 3 / 4; ++y)
        for (int x = size.width() / 4; x < size.width() * 3 / 4; ++x)
            mask[y * size.width() + x] = 1;
    QVERIFY(m_editor->canvas()->setSelection(mask));
    // Closer, by the view's buttons.
    for (int i = 0; i < 3; ++i)
        QTest::mouseClick(m_graphics->toolBar()->widgetForAction(action("view_zoom_in")), Qt::LeftButton);
    QVERIFY(m_editor->renderer()->zoomFactor() > 1.0f);
    QVERIFY(m_graphics->sidePanel());
    QVERIFY(m_graphics->sidePanel()->isVisible());
    QApplication::processEvents();
    const QImage picture = m_graphics->grab().toImage();
    QVERIFY(!picture.isNull());
    QVERIFY(picture.save(QCoreApplication::applicationDirPath() + QStringLiteral("/spriteeditor.png")));
}

QTEST_MAIN(SpriteEditorTest)
#include "tst_spriteeditor.moc"
