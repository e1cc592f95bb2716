#include "editors/organizer/thumbnailseditor.h"
#include "editors/organizer/thumbnailsmodel.h"

#include "held.h"
#include "scriptedanswerer.h"
#include "spritecontainer.h"
#include "testinterface.h"

#include <QAbstractItemModelTester>
#include <QAction>
#include <QApplication>
#include <QFileDialog>
#include <QThread>
#include <QPointer>
#include <QListView>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QToolButton>
#include <QtTest>

using namespace Ovra;

namespace {

// Index 0 transparent, 1 red, 2 green, 3 blue, the rest a grey ramp.
QVector<QRgb> colours()
{
    QVector<QRgb> table(256);
    for (int i = 0; i < 256; ++i)
        table[i] = qRgb(i, i, i);
    table[0] = qRgba(0, 0, 0, 0);
    table[1] = qRgb(255, 0, 0);
    table[2] = qRgb(0, 255, 0);
    table[3] = qRgb(0, 0, 255);
    return table;
}

// 4 x 4, pixel (x, y) of index (x + y) % 4.
QImage indexedPicture()
{
    QImage picture(4, 4, QImage::Format_Indexed8);
    picture.setColorTable(colours());
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 4; ++x)
            picture.scanLine(y)[x] = uchar((x + y) % 4);
    }
    return picture;
}

QImage filled(int width, int height, QRgb colour)
{
    QImage picture(width, height, QImage::Format_ARGB32);
    picture.fill(colour);
    return picture;
}

// Four sprites: indexed, wide true colour, tall true colour, indexed again.
SpriteContainer *fourSprites()
{
    auto *sprites = new SpriteContainer;
    sprites->add(QPoint(0, 0), indexedPicture(), Archive::NoShare);
    sprites->add(QPoint(0, 1), filled(100, 50, qRgb(200, 100, 50)), Archive::NoShare);
    sprites->add(QPoint(1, 0), filled(6, 20, qRgb(20, 40, 160)), Archive::NoShare);
    sprites->add(QPoint(5, 5), indexedPicture().mirrored(true, false), Archive::NoShare);
    return sprites;
}

bool isChecker(QRgb pixel)
{
    return pixel == qRgb(236, 236, 236) || pixel == qRgb(200, 200, 200);
}

class RecordingExplorer : public ThumbnailsEditor
{
public:
    QList<QPair<uint, uint>> calls;
    uint cancelAt = 0xffffffffu;
    void onSaveProgress(uint current, uint maximum, bool *cancel) override
    {
        calls << qMakePair(current, maximum);
        if (current == cancelAt)
            *cancel = true;
    }
};

// What the user saw in the file dialog.
struct DialogSeen
{
    QString title;
    QString directory;
    QStringList filters;
};

// Answers the file dialog the save opens, as a user typing the name would, once the
// dialog waits in its own event loop: an answer given while it is still being shown would
// be lost and leave it open for ever. It watches for the dialog to show and answers
// through posted calls, which the dialog's loop always delivers.
class SaveAnswerer : public QObject
{
public:
    SaveAnswerer(const QString &name, DialogSeen *seen)
        : m_name(name)
        , m_seen(seen)
        , m_outerLoops(QThread::currentThread()->loopLevel())
    {
        qApp->installEventFilter(this);
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        auto *dialog = qobject_cast<QFileDialog *>(watched);
        if (dialog && event->type() == QEvent::Show && !m_answered) {
            m_answered = true;
            answerLater(dialog);
        }
        return false;
    }

private:
    void answerLater(QFileDialog *dialog)
    {
        const QPointer<QFileDialog> guard = dialog;
        QMetaObject::invokeMethod(this, [this, guard] {
            if (!guard)
                return;
            if (QThread::currentThread()->loopLevel() <= m_outerLoops) {
                answerLater(guard);
                return;
            }
            m_seen->title = guard->windowTitle();
            m_seen->directory = guard->directory().absolutePath();
            m_seen->filters = guard->nameFilters();
            guard->selectFile(m_name);
            QMetaObject::invokeMethod(guard.data(), "accept");
        }, Qt::QueuedConnection);
    }

    QString m_name;
    DialogSeen *m_seen;
    int m_outerLoops;
    bool m_answered = false;
};

} // namespace

class ThumbnailsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void thumbnailPixels();
    void modelCachesAndFollowsTheFile();
    void selectionMapsToSprites();
    void actionsOfTheEditorBeside();
    void viewAndSizeButtons();
    void saveWritesTheChosenSprites_data();
    void saveWritesTheChosenSprites();
    void saveFailureIsTold();
    void fileClosedUnderTheExplorer();
    void screenshot();

private:
    void show(ThumbnailsEditor &editor, QSize size = QSize(300, 360));
    void clickSprites(ThumbnailsEditor &editor, const QList<int> &rows);
    QToolButton *button(ThumbnailsEditor &editor, const QString &name);

    std::unique_ptr<TestInterface> m_host;
};

void ThumbnailsTest::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    m_host = std::make_unique<TestInterface>();
}

void ThumbnailsTest::init()
{
    m_host->options.clear();
}

void ThumbnailsTest::show(ThumbnailsEditor &editor, QSize size)
{
    editor.widget()->resize(size);
    editor.widget()->show();
    QVERIFY(QTest::qWaitForWindowExposed(editor.widget()));
}

void ThumbnailsTest::clickSprites(ThumbnailsEditor &editor, const QList<int> &rows)
{
    auto *view = editor.widget()->findChild<QListView *>(QStringLiteral("thumb_list"));
    QVERIFY(view);
    for (int i = 0; i < rows.size(); ++i) {
        const QModelIndex index = view->model()->index(rows.at(i), 0);
        view->scrollTo(index);
        QTest::mouseClick(view->viewport(), Qt::LeftButton, i == 0 ? Qt::NoModifier : Qt::ControlModifier,
                          view->visualRect(index).center());
    }
}

QToolButton *ThumbnailsTest::button(ThumbnailsEditor &editor, const QString &name)
{
    return editor.widget()->findChild<QToolButton *>(name);
}

void ThumbnailsTest::thumbnailPixels()
{
    Held<SpriteContainer> sprites(fourSprites());
    // 4 x 4 grows eight times into 32: every source pixel is an 8 x 8 cell.
    const QImage small = ThumbnailsModel::thumbnail(sprites->at(0), 32).convertToFormat(QImage::Format_ARGB32);
    QCOMPARE(small.size(), QSize(32, 32));
    const QVector<QRgb> table = colours();
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 4; ++x) {
            const int index = (x + y) % 4;
            for (const QPoint corner : {QPoint(0, 0), QPoint(7, 7), QPoint(3, 5)}) {
                const QRgb pixel = small.pixel(x * 8 + corner.x(), y * 8 + corner.y());
                if (index == 0)
                    QVERIFY2(isChecker(pixel), qPrintable(QString::number(pixel, 16)));
                else
                    QCOMPARE(pixel, table.at(index));
            }
        }
    }
    // 100 x 50 shrinks to 32 x 16 in the middle of the square.
    const QImage wide = ThumbnailsModel::thumbnail(sprites->at(1), 32).convertToFormat(QImage::Format_ARGB32);
    QCOMPARE(qAlpha(wide.pixel(16, 7)), 0);
    QCOMPARE(wide.pixel(16, 8), qRgb(200, 100, 50));
    QCOMPARE(wide.pixel(31, 23), qRgb(200, 100, 50));
    QCOMPARE(qAlpha(wide.pixel(16, 24)), 0);
    // 6 x 20 grows by one whole factor only (3 x 20 = 60 > 48 ... 48 / 20 = 2): 12 x 40.
    const QImage tall = ThumbnailsModel::thumbnail(sprites->at(2), 48).convertToFormat(QImage::Format_ARGB32);
    QCOMPARE(tall.pixel(18, 4), qRgb(20, 40, 160));
    QCOMPARE(tall.pixel(29, 43), qRgb(20, 40, 160));
    QCOMPARE(qAlpha(tall.pixel(17, 20)), 0);
    QCOMPARE(qAlpha(tall.pixel(30, 20)), 0);
    // No sprite: an empty frame.
    const QImage none = ThumbnailsModel::thumbnail(nullptr, 16).convertToFormat(QImage::Format_ARGB32);
    QCOMPARE(qAlpha(none.pixel(0, 0)), 255);
    QCOMPARE(qAlpha(none.pixel(8, 8)), 0);
}

void ThumbnailsTest::modelCachesAndFollowsTheFile()
{
    Held<SpriteContainer> sprites(fourSprites());
    ThumbnailsModel model;
    QAbstractItemModelTester tester(&model);
    model.setThumbSize(32);
    model.setSprites(sprites.get());
    QCOMPARE(model.rowCount(), 4);
    QCOMPARE(model.data(model.index(3, 0), Qt::DisplayRole).toString(), QStringLiteral("5, 5"));
    const QIcon first = model.data(model.index(0, 0), Qt::DecorationRole).value<QIcon>();
    QCOMPARE(first.availableSizes(), QList<QSize>{QSize(32, 32)});
    model.data(model.index(1, 0), Qt::DecorationRole);
    QCOMPARE(model.cachedCount(), 2);
    QCOMPARE(model.data(model.index(0, 0), Qt::DecorationRole).value<QIcon>().cacheKey(), first.cacheKey());
    QCOMPARE(model.cachedCount(), 2);

    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
    model.update();
    QCOMPARE(model.cachedCount(), 0);
    QCOMPARE(changed.count(), 1);
    model.setThumbSize(48);
    QCOMPARE(model.data(model.index(0, 0), Qt::DecorationRole).value<QIcon>().availableSizes(), QList<QSize>{QSize(48, 48)});

    // The file's own row changes come through one for one.
    QSignalSpy moved(&model, &QAbstractItemModel::rowsMoved);
    QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
    Sprite *last = sprites->at(3);
    sprites->beginChange();
    sprites->move(3, 0);
    sprites->endChange();
    QCOMPARE(moved.count(), 1);
    QCOMPARE(model.spriteAt(0), last);
    sprites->remove(1);
    QCOMPARE(removed.count(), 1);
    QCOMPARE(model.rowCount(), 3);
    QCOMPARE(model.cachedCount(), 0);
    QVERIFY(!model.spriteAt(3));
    QVERIFY(!model.data(model.index(3, 0), Qt::DecorationRole).isValid());
}

void ThumbnailsTest::selectionMapsToSprites()
{
    Held<SpriteContainer> sprites(fourSprites());
    ThumbnailsEditor editor;
    editor.setFiles(sprites.get(), nullptr);
    show(editor);
    QCOMPARE(editor.files(), sprites.get());
    QCOMPARE(editor.all(), QList<Sprite *>({sprites->at(0), sprites->at(1), sprites->at(2), sprites->at(3)}));
    // Picked from the end: still given in the list's order.
    clickSprites(editor, {3, 0, 2});
    QCOMPARE(editor.selected(), QList<Sprite *>({sprites->at(0), sprites->at(2), sprites->at(3)}));
    // The picked sprites stay picked when the file reorders them.
    Sprite *a = sprites->at(0);
    Sprite *c = sprites->at(2);
    Sprite *d = sprites->at(3);
    sprites->beginChange();
    sprites->move(0, 3);
    sprites->endChange();
    QCOMPARE(editor.selected(), QList<Sprite *>({c, d, a}));
}

void ThumbnailsTest::actionsOfTheEditorBeside()
{
    Held<SpriteContainer> sprites(fourSprites());
    QAction first(QStringLiteral("Add selected to the current animation"), nullptr);
    QAction second(QStringLiteral("Add all to the current animation"), nullptr);
    auto *fourth = new QAction(QStringLiteral("New animation with all"), nullptr);
    QAction *given[4] = {&first, &second, nullptr, fourth};
    ThumbnailsEditor editor;
    editor.setFiles(sprites.get(), given);
    show(editor);
    for (int i = 0; i < 4; ++i) {
        QToolButton *shown = button(editor, QStringLiteral("thumb_action%1").arg(i + 1));
        QVERIFY(shown);
        QCOMPARE(shown->isVisible(), given[i] != nullptr);
        if (given[i])
            QCOMPARE(shown->text(), given[i]->text());
    }
    QSignalSpy triggered(&second, &QAction::triggered);
    QTest::mouseClick(button(editor, QStringLiteral("thumb_action2")), Qt::LeftButton);
    QCOMPARE(triggered.count(), 1);
    // The editor beside goes away with its actions.
    delete fourth;
    QVERIFY(!button(editor, QStringLiteral("thumb_action4"))->isVisible());
    editor.setFiles(sprites.get(), nullptr);
    QVERIFY(!button(editor, QStringLiteral("thumb_action1"))->isVisible());
}

void ThumbnailsTest::viewAndSizeButtons()
{
    Held<SpriteContainer> sprites(fourSprites());
    ThumbnailsEditor editor;
    editor.setFiles(sprites.get(), nullptr);
    show(editor);
    auto *view = editor.widget()->findChild<QListView *>(QStringLiteral("thumb_list"));
    auto *model = qobject_cast<ThumbnailsModel *>(view->model());
    QVERIFY(model);
    QCOMPARE(view->viewMode(), QListView::IconMode);
    QCOMPARE(view->iconSize(), QSize(64, 64));
    QTest::mouseClick(button(editor, QStringLiteral("thumb_view")), Qt::LeftButton);
    QCOMPARE(view->viewMode(), QListView::ListMode);
    QTest::mouseClick(button(editor, QStringLiteral("thumb_view")), Qt::LeftButton);
    QCOMPARE(view->viewMode(), QListView::IconMode);

    // The size button steps up through the sizes and comes round again; the option keeps it.
    QToolButton *size = button(editor, QStringLiteral("thumb_size"));
    for (int expected : {96, 128, 32, 48}) {
        QTest::mouseClick(size, Qt::LeftButton, Qt::NoModifier, QPoint(4, size->height() / 2));
        QCOMPARE(view->iconSize(), QSize(expected, expected));
        QCOMPARE(model->thumbSize(), expected);
        QCOMPARE(m_host->options.value(QStringLiteral("thumb_size")).toInt(), expected);
    }
    QCOMPARE(model->data(model->index(0, 0), Qt::DecorationRole).value<QIcon>().availableSizes(),
             QList<QSize>{QSize(48, 48)});
    // Settings from elsewhere come in with reconfig, to the nearest size.
    m_host->options.insert(QStringLiteral("thumb_size"), 100);
    editor.reconfig();
    QCOMPARE(view->iconSize(), QSize(96, 96));
    m_host->options.insert(QStringLiteral("thumb_size"), QStringLiteral("large"));
    editor.reconfig();
    QCOMPARE(view->iconSize(), QSize(64, 64));
}

void ThumbnailsTest::saveWritesTheChosenSprites_data()
{
    QTest::addColumn<uint>("cancelAt");
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<int>("progressCalls");
    QTest::newRow("all") << 0xffffffffu << QStringList{QStringLiteral("shot_1.png"), QStringLiteral("shot_3.png")} << 3;
    QTest::newRow("cancelled after the first") << 1u << QStringList{QStringLiteral("shot_1.png")} << 2;
}

void ThumbnailsTest::saveWritesTheChosenSprites()
{
    QFETCH(uint, cancelAt);
    QFETCH(QStringList, files);
    QFETCH(int, progressCalls);
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("start")));
    QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("out")));
    m_host->options.insert(QStringLiteral("spr_path"), dir.filePath(QStringLiteral("start")));
    Held<SpriteContainer> sprites(fourSprites());
    RecordingExplorer editor;
    editor.cancelAt = cancelAt;
    editor.setFiles(sprites.get(), nullptr);
    show(editor);
    clickSprites(editor, {3, 1});
    // Any notice would mean a failed save: it must not come.
    ScriptedAnswerer user;

    DialogSeen seen;
    SaveAnswerer answer(dir.filePath(QStringLiteral("out/shot.png")), &seen);
    QTest::mouseClick(button(editor, QStringLiteral("thumb_save")), Qt::LeftButton);
    QTRY_COMPARE(editor.calls.size(), progressCalls);
    for (const Prompt &prompt : user.prompts())
        qWarning() << prompt.title << prompt.text;
    QCOMPARE(user.prompts().size(), 0);

    QCOMPARE(seen.title, QStringLiteral("Save sprites"));
    QCOMPARE(seen.directory, dir.filePath(QStringLiteral("start")));
    QCOMPARE(seen.filters.first(), QStringLiteral("Portable Network Graphic (*.png)"));
    QCOMPARE(m_host->options.value(QStringLiteral("spr_path")).toString(), dir.filePath(QStringLiteral("out")));
    QList<QPair<uint, uint>> expectedCalls;
    for (int i = 0; i < progressCalls; ++i)
        expectedCalls << qMakePair(uint(i), 2u);
    QCOMPARE(editor.calls, expectedCalls);
    QDir out(dir.filePath(QStringLiteral("out")));
    QCOMPARE(out.entryList(QDir::Files, QDir::Name), files);
    for (const QString &file : qAsConst(files)) {
        const uint index = file.midRef(5, 1).toUInt();
        const QImage back(out.filePath(file));
        QVERIFY(!back.isNull());
        QCOMPARE(back.convertToFormat(QImage::Format_ARGB32),
                 sprites->at(index)->image().convertToFormat(QImage::Format_ARGB32));
    }
}

void ThumbnailsTest::saveFailureIsTold()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    Held<SpriteContainer> sprites(fourSprites());
    RecordingExplorer editor;
    editor.setFiles(sprites.get(), nullptr);
    show(editor);
    clickSprites(editor, {0, 2});
    ScriptedAnswerer user({QMessageBox::Ok});
    DialogSeen seen;
    // No picture format is called "txt": the first file fails, the user hears of it, and
    // nothing is left on disk.
    SaveAnswerer answer(dir.filePath(QStringLiteral("shot.txt")), &seen);
    QTest::mouseClick(button(editor, QStringLiteral("thumb_save")), Qt::LeftButton);
    QTRY_COMPARE(user.prompts().size(), 1);
    QCOMPARE(user.prompts().first().icon, QMessageBox::Warning);
    QVERIFY(user.prompts().first().text.contains(dir.filePath(QStringLiteral("shot_0.txt"))));
    QCOMPARE(editor.calls, (QList<QPair<uint, uint>>{{0u, 2u}}));
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList());
}

void ThumbnailsTest::fileClosedUnderTheExplorer()
{
    Held<SpriteContainer> sprites(fourSprites());
    ThumbnailsEditor editor;
    editor.setFiles(sprites.get(), nullptr);
    show(editor);
    clickSprites(editor, {1, 2});
    QCOMPARE(editor.selected().size(), 2);
    sprites.reset();
    QVERIFY(!editor.files());
    QVERIFY(editor.selected().isEmpty());
    QVERIFY(editor.all().isEmpty());
    auto *view = editor.widget()->findChild<QListView *>(QStringLiteral("thumb_list"));
    QCOMPARE(view->model()->rowCount(), 0);
    editor.update();
    editor.widget()->repaint();
    // A new file in its place shows.
    Held<SpriteContainer> other(fourSprites());
    editor.filesChanged(other.get());
    QCOMPARE(editor.all().size(), 4);
}

void ThumbnailsTest::screenshot()
{
    Held<SpriteContainer> sprites(fourSprites());
    for (int i = 0; i < 8; ++i) {
        QImage picture(24 + 6 * i, 40, QImage::Format_ARGB32);
        picture.fill(Qt::transparent);
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                if ((x - picture.width() / 2) * (x - picture.width() / 2) + (y - 20) * (y - 20) < 18 * 18)
                    picture.setPixel(x, y, qRgb(30 * i, 160 - 15 * i, 90 + 20 * i));
            }
        }
        sprites->add(QPoint(2, i), picture, Archive::NoShare);
    }
    QAction first(QStringLiteral("Add selected to the current animation"), nullptr);
    QAction second(QStringLiteral("Add all to the current animation"), nullptr);
    QAction third(QStringLiteral("New animation with selected"), nullptr);
    QAction fourth(QStringLiteral("New animation with all"), nullptr);
    QAction *given[4] = {&first, &second, &third, &fourth};
    ThumbnailsEditor editor;
    editor.setFiles(sprites.get(), given);
    show(editor, QSize(320, 460));
    clickSprites(editor, {1, 5});
    const QImage shot = editor.widget()->grab().toImage();
    QVERIFY(shot.save(QCoreApplication::applicationDirPath() + QStringLiteral("/thumbnails.png")));
}

QTEST_MAIN(ThumbnailsTest)
#include "tst_thumbnails.moc"
