// The sprite editor as a user meets it: the knight's sprites of the example work opened
// through the sample engine's plug-in, the editor on a graphics workspace with the sprite
// explorer and the palette editor beside it, its actions triggered, its dialogs answered
// and its questions answered by script. This half: the sprites of the file and their
// pictures, imported, painted, saved, exported, and the questions on the way.
#include "spriteeditortestsupport.h"

#include "editors/sprite/imagecanvas.h"
#include "editors/sprite/imagelayers.h"
#include "editors/sprite/imagepainter.h"
#include "editors/sprite/imagetool.h"
#include "editors/sprite/imginfodlg.h"
#include "editors/sprite/imgresizedlg.h"
#include "editors/sprite/paldlg.h"
#include "editors/sprite/rotimgdlg.h"
#include "editors/sprite/sprimport.h"

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QMutex>
#include <QSet>
#include <QSignalSpy>
#include <QSlider>
#include <QSpinBox>
#include <QThread>
#include <QToolBar>
#include <QToolButton>
#include <QUndoStack>

using namespace Ovra;

namespace {

QColor pictureColor(int i)
{
    return QColor(i * 5, 255 - i * 5, (i * 37) % 256);
}

} // namespace

class SpriteEditorTest : public QObject, public SpriteEditorFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { startPlugins(); }
    void init() { open(); }
    void cleanup() { close(); }

    void statesAndSelector();
    void importFiftyPictures();
    void importAsksBeforeReplacing();
    void paintSaveAndReopen();
    void discardQuestion_data();
    void discardQuestion();
    void deleteAsksByOption();
    void projectImport();
    void rotateAndResizeDialogs();
    void exportBatch();
    void badFilesLeaveTheSprite();
};

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

QTEST_MAIN(SpriteEditorTest)
#include "tst_spriteeditor.moc"
