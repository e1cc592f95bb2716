#include "foundation/filedialogs.h"
#include "foundation/interface.h"
#include "foundation/itemsdialog.h"
#include "foundation/prompt.h"

#include "testinterface.h"

#include <QAction>
#include <QApplication>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QTimer>
#include <QtConcurrent>
#include <QtTest>

using namespace Ovra;

namespace {

// Runs `handle` on the next modal dialog of the given class, once it is shown.
template<typename Dialog, typename Handler>
void onNextModal(Handler handle)
{
    auto *timer = new QTimer(qApp);
    timer->setInterval(10);
    QObject::connect(timer, &QTimer::timeout, [timer, handle] {
        auto *dialog = qobject_cast<Dialog *>(QApplication::activeModalWidget());
        if (!dialog || !dialog->isVisible())
            return;
        timer->stop();
        timer->deleteLater();
        handle(dialog);
    });
    timer->start();
}

// Types names into Qt's own file dialog and accepts, as a user would.
void typeAndAccept(QFileDialog *dialog, const QString &typed)
{
    auto *edit = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
    QVERIFY(edit);
    edit->setText(typed);
    static_cast<QDialog *>(dialog)->done(QDialog::Accepted);
}

} // namespace

class InterfaceTest : public QObject
{
    Q_OBJECT

private slots:
    void scaleToDPI();
    void actionControl();
    void itemsDialog();
    void messageBoxOnGuiThread();
    void messageBoxFromWorkerThread();
    void openDialogFollowsNativeOption_data();
    void openDialogFollowsNativeOption();
    void openFileNamesSorted();
    void saveAndDirectoryDialogs();
};

void InterfaceTest::scaleToDPI()
{
    TestInterface host;
    host.scaleNumerator = 3;
    host.scaleDenominator = 2;
    Interface &seam = host;
    QCOMPARE(seam.scaleToDPI(QPoint(10, -4)), QPoint(15, -6));
    // Left, top, width and height each: the right edge follows from them, not from
    // scaling the right coordinate (which would give 3 * 5 / 2 = 7 instead of 2 + 4 - 1 = 5).
    const QRect scaled = seam.scaleToDPI(QRect(1, 1, 3, 3));
    QCOMPARE(scaled, QRect(1, 1, 4, 4));
    QCOMPARE(scaled.right(), 4);
}

void InterfaceTest::actionControl()
{
    TestInterface host;
    QMenu menu;
    QAction action(QStringLiteral("Play"), nullptr);
    host.actionControl(QStringLiteral("anim_play"), &action, &menu);
    QCOMPARE(menu.actions(), QList<QAction *>({&action}));
    QCOMPARE(host.controlRequests.size(), 1);
    QCOMPARE(host.controlRequests.first().first, QStringLiteral("anim_play"));
    QCOMPARE(host.controlRequests.first().second.value<QObject *>(), &action);
    // Without a menu there is still a control.
    host.actionControl(QStringLiteral("anim_stop"), &action, nullptr);
    QCOMPARE(host.controlRequests.size(), 2);
}

void InterfaceTest::itemsDialog()
{
    TestInterface host;
    QStandardItemModel model(4, 2);
    for (int row = 0; row < 4; ++row)
        model.setItem(row, 1, new QStandardItem(QStringLiteral("anim %1").arg(row)));
    QScopedPointer<ItemsDialog> dialog(host.itemsDialog(nullptr, QStringLiteral("pal_save"),
                                                        QStringLiteral("Save palettes"), &model, 1));
    QVERIFY(host.iconRequests.contains(QStringLiteral("pal_save")));
    QCOMPARE(dialog->count(), 4);
    QVERIFY(dialog->checkedRows().isEmpty());
    dialog->setChecked(2, true);
    dialog->setChecked(9, true); // out of range: ignored
    QCOMPARE(dialog->checkedRows(), QList<int>({2}));
    dialog->selectAll();
    QCOMPARE(dialog->checkedRows(), QList<int>({0, 1, 2, 3}));
    dialog->clearSelection();
    QVERIFY(dialog->checkedRows().isEmpty());

    // The buttons do the same, and accepting keeps the ticks.
    dialog->setChecked(1, true);
    const auto buttons = dialog->findChildren<QPushButton *>();
    for (QPushButton *button : buttons) {
        if (button->text() == QLatin1String("Invert selection"))
            button->click();
    }
    QCOMPARE(dialog->checkedRows(), QList<int>({0, 2, 3}));
    onNextModal<ItemsDialog>([](ItemsDialog *shown) { shown->accept(); });
    QCOMPARE(dialog->exec(), int(QDialog::Accepted));
    QCOMPARE(dialog->checkedRows(), QList<int>({0, 2, 3}));
}

void InterfaceTest::messageBoxOnGuiThread()
{
    // With widgets and no answerer the user sees the box with the question's words.
    QString title, text;
    QMessageBox::StandardButtons buttons;
    onNextModal<QMessageBox>([&](QMessageBox *box) {
        title = box->windowTitle();
        text = box->text();
        buttons = box->standardButtons();
        box->button(QMessageBox::No)->click();
    });
    Prompt prompt;
    prompt.title = QStringLiteral("File error!");
    prompt.text = QStringLiteral("Try again?");
    prompt.buttons = QMessageBox::Yes | QMessageBox::No;
    QCOMPARE(ask(prompt), QMessageBox::No);
    QCOMPARE(title, QStringLiteral("File error!"));
    QCOMPARE(text, QStringLiteral("Try again?"));
    QCOMPARE(buttons, QMessageBox::Yes | QMessageBox::No);
}

void InterfaceTest::messageBoxFromWorkerThread()
{
    QThread *boxThread = nullptr;
    onNextModal<QMessageBox>([&](QMessageBox *box) {
        boxThread = box->thread();
        box->button(QMessageBox::Yes)->click();
    });
    Prompt prompt;
    prompt.buttons = QMessageBox::Yes | QMessageBox::No;
    QFuture<QMessageBox::StandardButton> answer = QtConcurrent::run([prompt] { return ask(prompt); });
    QTRY_VERIFY(answer.isFinished());
    QCOMPARE(answer.result(), QMessageBox::Yes);
    QCOMPARE(boxThread, qApp->thread());
}

void InterfaceTest::openDialogFollowsNativeOption_data()
{
    QTest::addColumn<QVariant>("native");
    QTest::addColumn<bool>("ownDialog");
    QTest::newRow("unset") << QVariant() << true;
    QTest::newRow("false") << QVariant(false) << true;
    QTest::newRow("true") << QVariant(true) << false;
}

void InterfaceTest::openDialogFollowsNativeOption()
{
    QFETCH(QVariant, native);
    QFETCH(bool, ownDialog);
    TestInterface host;
    if (native.isValid())
        host.options.insert(QStringLiteral("use_native_open"), native);
    QTemporaryDir dir;
    QFile file(dir.filePath(QStringLiteral("hero.def")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();

    bool sawOwnDialogOption = !ownDialog;
    onNextModal<QFileDialog>([&](QFileDialog *dialog) {
        sawOwnDialogOption = dialog->testOption(QFileDialog::DontUseNativeDialog);
        typeAndAccept(dialog, QStringLiteral("hero.def"));
    });
    const QString chosen = getOpenFileName(nullptr, QStringLiteral("Open"), dir.path(),
                                           QStringLiteral("Definitions (*.def)"));
    QCOMPARE(chosen, file.fileName());
    // No platform here offers a native dialog, so Qt's own opens either way; what the
    // option decides is whether it was asked for.
    QCOMPARE(sawOwnDialogOption, ownDialog);
}

void InterfaceTest::openFileNamesSorted()
{
    TestInterface host;
    QTemporaryDir dir;
    for (const char *name : {"b.pcx", "A.pcx", "a.pcx"}) {
        QFile file(dir.filePath(QLatin1String(name)));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    auto chooseInOrder = [&](const QStringList &names) {
        onNextModal<QFileDialog>([names](QFileDialog *dialog) {
            typeAndAccept(dialog, QLatin1Char('"') + names.join(QStringLiteral("\" \"")) + QLatin1Char('"'));
        });
        return getOpenFileNames(nullptr, QStringLiteral("Import"), dir.path(), QString());
    };
    QStringList names = chooseInOrder({"b.pcx", "a.pcx", "A.pcx"});
    QCOMPARE(names, QStringList({dir.filePath("b.pcx"), dir.filePath("a.pcx"), dir.filePath("A.pcx")}));
    host.options.insert(QStringLiteral("sort_file_names"), true);
    names = chooseInOrder({"b.pcx", "a.pcx", "A.pcx"});
    QCOMPARE(names, QStringList({dir.filePath("A.pcx"), dir.filePath("a.pcx"), dir.filePath("b.pcx")}));
}

void InterfaceTest::saveAndDirectoryDialogs()
{
    TestInterface host;
    QTemporaryDir dir;
    QVERIFY(QDir(dir.path()).mkdir(QStringLiteral("stage")));
    bool showDirsOnly = false;
    onNextModal<QFileDialog>([&](QFileDialog *dialog) {
        showDirsOnly = dialog->testOption(QFileDialog::ShowDirsOnly);
        typeAndAccept(dialog, QStringLiteral("stage"));
    });
    QCOMPARE(getExistingDirectory(nullptr, QStringLiteral("Folder"), dir.path()),
             dir.filePath(QStringLiteral("stage")));
    QVERIFY(showDirsOnly);

    onNextModal<QFileDialog>([&](QFileDialog *dialog) {
        QCOMPARE(dialog->acceptMode(), QFileDialog::AcceptSave);
        typeAndAccept(dialog, QStringLiteral("new.act"));
    });
    QCOMPARE(getSaveFileName(nullptr, QStringLiteral("Save"), dir.path(), QString()),
             dir.filePath(QStringLiteral("new.act")));
}

QTEST_MAIN(InterfaceTest)
#include "tst_interface.moc"
