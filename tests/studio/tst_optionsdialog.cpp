// The options dialog as a user drives it: clicks, picks and keys on its pages, then OK,
// Apply or Cancel, with the results checked in the host and in the settings file itself,
// and again after a restart over the same file.
#include "colorscheme.h"
#include "colorspage.h"
#include "optionsdialog.h"
#include "shortcutseditor.h"
#include "studiohost.h"

#include "engine/engine.h"
#include "foundation/translator.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QFontComboBox>
#include <QKeySequenceEdit>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

// An engine with one option of its own on the page the dialog hands it.
class OptionEngine : public Ovra::Engine
{
public:
    OptionEngine() : Ovra::Engine(QStringLiteral("trial")) {}
    QString queryString(StringType, uint) const override { return QString(); }
    QString singleFileFilters(int) const override { return QString(); }
    Ovra::ProjectFile *createFile(int, Ovra::Project *) override { return nullptr; }
    void registerCustomOptions(QWidget *page) override
    {
        auto *box = new QCheckBox(QStringLiteral("Fast start"), page);
        box->setObjectName(QStringLiteral("fast_start"));
        connect(box, &QCheckBox::toggled, this, [this](bool on) { setOption(QStringLiteral("fast_start"), on); });
    }
};

// Clicks a check box on its box, where a person would, not in the middle of a wide row.
void clickCheck(QCheckBox *box)
{
    QVERIFY(box);
    QStyleOptionButton option;
    option.initFrom(box);
    option.text = box->text();
    const QRect indicator = box->style()->subElementRect(QStyle::SE_CheckBoxIndicator, &option, box);
    QTest::mouseClick(box, Qt::LeftButton, {}, indicator.center());
}

QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class OptionsDialogTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void eachKindOfFieldReachesTheSettingsFile_data();
    void eachKindOfFieldReachesTheSettingsFile();
    void cancelWritesNothing();
    void aReopenedDialogAndARestartShowTheChoices();
    void restoreDefaultsTouchesTheShownPageOnly();
    void badValuesInTheFileShowTheDefaultsAndAnUnknownFontIsKept();
    void missingDefaultsAreWrittenAndTheUsersKept();
    void codeBarFollowsAtOnce();
    void aColourReachesTheHostAndItsDefaultComesBack();
    void bothSchemesKeepTheirOwnColours();
    void aShortcutConflictIsRefused();
    void shortcutsResetOneOrAll();
    void theEngineFillsItsOwnPage();
    void screenshotsOfEveryPage();

private:
    QString settingsPath() const { return m_dir->filePath(QStringLiteral("studio.ini")); }
    void restart();
    OptionsDialog *openDialog();
    void showPage(const QString &title);
    void press(QDialogButtonBox::StandardButton button);
    QVariant stored(const QString &key) const;
    template<typename T>
    T *field(const QString &name) const
    {
        T *widget = m_dialog->findChild<T *>(name);
        if (!widget)
            qWarning("no field %s", qPrintable(name));
        return widget;
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<QSettings> m_settings;
    std::unique_ptr<StudioHost> m_host;
    std::unique_ptr<OptionsDialog> m_dialog;
    QList<QAction *> m_actions;
    QStringList m_pickerTitles;
    QColor m_nextColor;
};

void OptionsDialogTest::init()
{
    m_dir.reset(new QTemporaryDir);
    m_settings.reset(new QSettings(settingsPath(), QSettings::IniFormat));
    m_host.reset(new StudioHost(m_settings.get()));
    m_pickerTitles.clear();
    OptionsDialog::setColorPicker([this](const QColor &, QWidget *, const QString &title) {
        m_pickerTitles.append(title);
        return m_nextColor;
    });
}

void OptionsDialogTest::cleanup()
{
    OptionsDialog::setColorPicker({});
    m_dialog.reset();
    m_host.reset();
    m_settings.reset();
    m_dir.reset();
}

void OptionsDialogTest::restart()
{
    m_dialog.reset();
    m_host.reset();
    m_settings->sync();
    m_settings.reset(new QSettings(settingsPath(), QSettings::IniFormat));
    m_host.reset(new StudioHost(m_settings.get()));
}

OptionsDialog *OptionsDialogTest::openDialog()
{
    m_dialog.reset(new OptionsDialog(m_host.get()));
    m_dialog->show();
    if (!QTest::qWaitForWindowExposed(m_dialog.get()))
        qWarning("the options dialog wasn't shown");
    return m_dialog.get();
}

void OptionsDialogTest::showPage(const QString &title)
{
    auto *list = m_dialog->findChild<QListWidget *>(QStringLiteral("pages"));
    const QList<QListWidgetItem *> items = list->findItems(title, Qt::MatchExactly);
    QCOMPARE(items.size(), 1);
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(items.first()).center());
    QCOMPARE(m_dialog->currentPageTitle(), title);
}

void OptionsDialogTest::press(QDialogButtonBox::StandardButton button)
{
    QTest::mouseClick(m_dialog->findChild<QDialogButtonBox *>(QStringLiteral("buttons"))->button(button),
                      Qt::LeftButton);
}

// What the file on disk says, read by a settings object of its own.
QVariant OptionsDialogTest::stored(const QString &key) const
{
    m_settings->sync();
    return QSettings(settingsPath(), QSettings::IniFormat).value(key);
}

void OptionsDialogTest::eachKindOfFieldReachesTheSettingsFile_data()
{
    QTest::addColumn<QString>("page");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("input");
    QTest::addColumn<QVariant>("expected");
    QTest::newRow("check box on") << "General" << "auto_expand_tree" << "click" << QVariant(true);
    QTest::newRow("check box off") << "General" << "confirm_delete" << "click" << QVariant(false);
    QTest::newRow("cache on disk") << "General" << "cache_type" << "down" << QVariant(2);
    QTest::newRow("native painting") << "General" << "native_painting" << "click" << QVariant(true);
    QTest::newRow("line numbers off") << "Code editor" << "code_line_numbers" << "click" << QVariant(false);
    QTest::newRow("keep formatting") << "Code editor" << "preserve_code_formatting" << "click" << QVariant(true);
    QTest::newRow("font size") << "Code editor" << "font_size" << "type:14" << QVariant(14);
    QTest::newRow("opacity") << "Graphics view" << "box_opacity" << "type:0.75" << QVariant(0.75);
    QTest::newRow("offset") << "Graphics view" << "background_y" << "type:-12" << QVariant(-12);
    QTest::newRow("zoom around origin") << "Graphics view" << "zoom_center" << "up" << QVariant(0);
    QTest::newRow("attack colour") << "Graphics view" << "attackbox" << "click" << QVariant(QColor(10, 200, 30));
}

void OptionsDialogTest::eachKindOfFieldReachesTheSettingsFile()
{
    QFETCH(QString, page);
    QFETCH(QString, name);
    QFETCH(QString, input);
    QFETCH(QVariant, expected);
    m_nextColor = QColor(10, 200, 30);
    openDialog();
    showPage(page);
    QWidget *widget = field<QWidget>(name);
    QVERIFY(widget && widget->isVisible());
    if (input == QLatin1String("click")) {
        if (auto *box = qobject_cast<QCheckBox *>(widget))
            clickCheck(box);
        else
            QTest::mouseClick(widget, Qt::LeftButton);
    } else if (input == QLatin1String("down") || input == QLatin1String("up")) {
        QTest::keyClick(widget, input == QLatin1String("down") ? Qt::Key_Down : Qt::Key_Up);
    } else {
        QTest::mouseClick(widget, Qt::LeftButton);
        QTest::keyClick(widget, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(widget, input.mid(5));
    }
    // Nothing before OK.
    QVERIFY(!stored(QStringLiteral("options/") + name).isValid());
    QSignalSpy reconfigured(m_host.get(), &StudioHost::reconfigured);
    press(QDialogButtonBox::Ok);
    QVERIFY(!m_dialog->isVisible());
    QCOMPARE(reconfigured.count(), 1);
    const QVariant value = stored(QStringLiteral("options/") + name);
    if (expected.type() == QVariant::Double)
        QCOMPARE(value.toDouble(), expected.toDouble());
    else if (expected.type() == QVariant::Color)
        QCOMPARE(value.value<QColor>(), expected.value<QColor>());
    else
        QCOMPARE(value.toString(), expected.toString());
    // OK writes every option of every page, so that the graphics view finds its own.
    QCOMPARE(stored(QStringLiteral("options/collisionbox")).value<QColor>(), QColor(Qt::blue));
}

void OptionsDialogTest::cancelWritesNothing()
{
    auto *save = new QAction(QStringLiteral("&Save"), m_host.get());
    save->setObjectName(QStringLiteral("file_save"));
    m_host->addAction(save, QKeySequence(QStringLiteral("Ctrl+S")));
    m_host->setShortcut(QStringLiteral("file_save"), QKeySequence(QStringLiteral("Ctrl+Alt+S")));
    m_host->setOption(QStringLiteral("font_size"), 12);
    m_settings->sync();
    const QByteArray before = fileBytes(settingsPath());
    QVERIFY(!before.isEmpty());

    m_nextColor = QColor(1, 2, 3);
    openDialog();
    clickCheck(field<QCheckBox>(QStringLiteral("enable_file_watcher")));
    QVERIFY(!field<QCheckBox>(QStringLiteral("enable_file_watcher"))->isChecked());
    showPage(QStringLiteral("Colours"));
    QTest::mouseClick(field<QWidget>(QStringLiteral("color:background")), Qt::LeftButton);
    QTest::keyClick(field<QComboBox>(QStringLiteral("scheme")), Qt::Key_Down);
    QTest::mouseClick(field<QWidget>(QStringLiteral("color:line")), Qt::LeftButton);
    showPage(QStringLiteral("Shortcuts"));
    auto *page = static_cast<ShortcutsEditor *>(m_dialog->page(QStringLiteral("Shortcuts")));
    QTest::mouseClick(field<QPushButton>(QStringLiteral("reset_all_shortcuts")), Qt::LeftButton);
    QCOMPARE(m_pickerTitles.size(), 2);
    QCOMPARE(page->pendingShortcut(QStringLiteral("file_save")), QKeySequence(QStringLiteral("Ctrl+S")));
    press(QDialogButtonBox::Cancel);

    QVERIFY(!m_dialog->isVisible());
    m_settings->sync();
    QCOMPARE(fileBytes(settingsPath()), before);
    QCOMPARE(m_host->colorScheme()->base(), ColorScheme::Light);
    QCOMPARE(m_host->color(QStringLiteral("background"), QColor()), QColor(Qt::white));
    QVERIFY(!m_host->option(QStringLiteral("enable_file_watcher"), QVariant()).isValid());
    QCOMPARE(save->shortcut(), QKeySequence(QStringLiteral("Ctrl+Alt+S")));
}

void OptionsDialogTest::aReopenedDialogAndARestartShowTheChoices()
{
    openDialog();
    clickCheck(field<QCheckBox>(QStringLiteral("sort_file_names")));
    showPage(QStringLiteral("Graphics view"));
    auto *type = field<QComboBox>(QStringLiteral("background_type"));
    QVERIFY(!field<QWidget>(QStringLiteral("background_file"))->isEnabled());
    QTest::keyClick(type, Qt::Key_End);
    QVERIFY(field<QWidget>(QStringLiteral("background_file"))->isEnabled());
    const QString picture = m_dir->filePath(QStringLiteral("stage.png"));
    QFile file(picture);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write("stage") == 5);
    file.close();
    QTimer::singleShot(0, [picture] {
        auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        QVERIFY(dialog);
        dialog->selectFile(picture);
        QMetaObject::invokeMethod(dialog, "accept");
    });
    QTest::mouseClick(field<QWidget>(QStringLiteral("background_file_browse")), Qt::LeftButton);
    QCOMPARE(field<QLineEdit>(QStringLiteral("background_file_edit"))->text(), picture);
    press(QDialogButtonBox::Apply);
    // Apply keeps the dialog open and has written already.
    QVERIFY(m_dialog->isVisible());
    QCOMPARE(stored(QStringLiteral("options/background_type")).toInt(), 2);
    press(QDialogButtonBox::Cancel);

    for (int round = 0; round < 2; ++round) {
        openDialog();
        QVERIFY(field<QCheckBox>(QStringLiteral("sort_file_names"))->isChecked());
        QCOMPARE(field<QComboBox>(QStringLiteral("background_type"))->currentData().toInt(), 2);
        QCOMPARE(field<QLineEdit>(QStringLiteral("background_file_edit"))->text(), picture);
        QVERIFY(field<QCheckBox>(QStringLiteral("confirm_delete"))->isChecked());
        QCOMPARE(m_host->option(QStringLiteral("background_file"), QVariant()).toString(), picture);
        restart();
    }
}

void OptionsDialogTest::restoreDefaultsTouchesTheShownPageOnly()
{
    m_host->setOption(QStringLiteral("cache_type"), 2);
    m_host->setOption(QStringLiteral("use_native_open"), true);
    m_host->setOption(QStringLiteral("code_highlight_line"), false);
    openDialog();
    QCOMPARE(field<QComboBox>(QStringLiteral("cache_type"))->currentData().toInt(), 2);
    press(QDialogButtonBox::RestoreDefaults);
    QCOMPARE(field<QComboBox>(QStringLiteral("cache_type"))->currentData().toInt(), 1);
    QVERIFY(!field<QCheckBox>(QStringLiteral("use_native_open"))->isChecked());
    // Shown, not written: the file has the user's until OK.
    QCOMPARE(stored(QStringLiteral("options/cache_type")).toInt(), 2);
    press(QDialogButtonBox::Ok);
    QCOMPARE(stored(QStringLiteral("options/cache_type")).toInt(), 1);
    QCOMPARE(stored(QStringLiteral("options/use_native_open")).toBool(), false);
    QCOMPARE(stored(QStringLiteral("options/code_highlight_line")).toBool(), false);
}

void OptionsDialogTest::badValuesInTheFileShowTheDefaultsAndAnUnknownFontIsKept()
{
    m_settings->setValue(QStringLiteral("options/cache_type"), QStringLiteral("lots"));
    m_settings->setValue(QStringLiteral("options/zoom_mode"), 7);
    m_settings->setValue(QStringLiteral("options/attackbox"), QStringLiteral("not a colour"));
    m_settings->setValue(QStringLiteral("options/font_name"), QStringLiteral("No Such Family Here"));
    openDialog();
    QCOMPARE(field<QComboBox>(QStringLiteral("cache_type"))->currentData().toInt(), 1);
    QCOMPARE(field<QComboBox>(QStringLiteral("zoom_mode"))->currentData().toInt(), 0);
    QCOMPARE(field<ColorButton>(QStringLiteral("attackbox"))->color(), QColor(Qt::red));
    press(QDialogButtonBox::Ok);
    // The family this system lacks stays the user's, for their other machines.
    QCOMPARE(stored(QStringLiteral("options/font_name")).toString(), QStringLiteral("No Such Family Here"));
    QCOMPARE(stored(QStringLiteral("options/cache_type")).toInt(), 1);
}

void OptionsDialogTest::missingDefaultsAreWrittenAndTheUsersKept()
{
    m_host->setOption(QStringLiteral("back_start"), QColor(Qt::yellow));
    OptionsDialog::writeMissingDefaults(m_host.get());
    QCOMPARE(stored(QStringLiteral("options/back_start")).value<QColor>(), QColor(Qt::yellow));
    QCOMPARE(stored(QStringLiteral("options/box_opacity")).toDouble(), 0.5);
    QCOMPARE(stored(QStringLiteral("options/zoom_center")).toInt(), 1);
    for (const QString &name : OptionsDialog::optionNames())
        QVERIFY2(m_host->option(name, QVariant()).isValid(), qPrintable(name));
}

void OptionsDialogTest::codeBarFollowsAtOnce()
{
    QAction *bar = m_host->createAction({"code", 0}, QStringLiteral("view_code_bar"), Ovra::ovraTranslator(), 4, true,
                                        nullptr, nullptr, nullptr, true);
    QSignalSpy triggered(bar, &QAction::triggered);
    openDialog();
    showPage(QStringLiteral("Code editor"));
    clickCheck(field<QCheckBox>(QStringLiteral("show_code_bar")));
    press(QDialogButtonBox::Apply);
    QCOMPARE(triggered.count(), 1);
    QVERIFY(!bar->isChecked());
    press(QDialogButtonBox::Ok);
    QCOMPARE(triggered.count(), 1);
}

void OptionsDialogTest::aColourReachesTheHostAndItsDefaultComesBack()
{
    openDialog();
    showPage(QStringLiteral("Colours"));
    auto *page = static_cast<ColorsPage *>(m_dialog->page(QStringLiteral("Colours")));
    auto *preview = field<QPlainTextEdit>(QStringLiteral("preview"));
    m_nextColor = QColor(250, 240, 10);
    QTest::mouseClick(field<QWidget>(QStringLiteral("color:line")), Qt::LeftButton);
    QCOMPARE(m_pickerTitles, QStringList{QStringLiteral("Current line")});
    // The preview's band of the current line shows the pending colour at once.
    bool shown = false;
    for (const QTextEdit::ExtraSelection &selection : preview->extraSelections())
        shown = shown || selection.format.background().color() == m_nextColor;
    QVERIFY(shown);
    clickCheck(field<QCheckBox>(QStringLiteral("bold:syntax_comment")));
    QCOMPARE(page->pendingFormat(QStringLiteral("syntax_comment")).fontWeight(), int(QFont::Bold));
    // A click with the picker answered "cancel" changes nothing.
    m_nextColor = QColor();
    QTest::mouseClick(field<QWidget>(QStringLiteral("color:background")), Qt::LeftButton);
    QCOMPARE(page->pendingColor(QStringLiteral("background")), QColor(Qt::white));
    QCOMPARE(m_host->color(QStringLiteral("line"), QColor()), QColor(232, 242, 254));
    press(QDialogButtonBox::Ok);

    QCOMPARE(m_host->color(QStringLiteral("line"), QColor()), QColor(250, 240, 10));
    QCOMPARE(m_host->textFormat(QStringLiteral("syntax_comment"), {}).fontWeight(), int(QFont::Bold));
    QVERIFY(stored(QStringLiteral("colors/light/line")).isValid());
    QVERIFY(!stored(QStringLiteral("colors/light/background")).isValid());

    restart();
    QCOMPARE(m_host->color(QStringLiteral("line"), QColor()), QColor(250, 240, 10));
    openDialog();
    showPage(QStringLiteral("Colours"));
    QCOMPARE(field<ColorButton>(QStringLiteral("color:line"))->color(), QColor(250, 240, 10));
    QVERIFY(field<QCheckBox>(QStringLiteral("bold:syntax_comment"))->isChecked());
    QTest::mouseClick(field<QPushButton>(QStringLiteral("reset_colors")), Qt::LeftButton);
    QCOMPARE(field<ColorButton>(QStringLiteral("color:line"))->color(), QColor(232, 242, 254));
    press(QDialogButtonBox::Ok);
    QCOMPARE(m_host->color(QStringLiteral("line"), QColor()), QColor(232, 242, 254));
    QCOMPARE(m_host->textFormat(QStringLiteral("syntax_comment"), {}).fontWeight(), int(QFont::Normal));
    QVERIFY(!stored(QStringLiteral("colors/light/line")).isValid());
}

void OptionsDialogTest::bothSchemesKeepTheirOwnColours()
{
    openDialog();
    showPage(QStringLiteral("Colours"));
    auto *scheme = field<QComboBox>(QStringLiteral("scheme"));
    QTest::keyClick(scheme, Qt::Key_Down);
    QCOMPARE(field<ColorButton>(QStringLiteral("color:background"))->color(), QColor(30, 34, 42));
    m_nextColor = QColor(5, 5, 5);
    QTest::mouseClick(field<QWidget>(QStringLiteral("color:background")), Qt::LeftButton);
    QTest::keyClick(scheme, Qt::Key_Up);
    m_nextColor = QColor(250, 250, 250);
    QTest::mouseClick(field<QWidget>(QStringLiteral("color:background")), Qt::LeftButton);
    QTest::keyClick(scheme, Qt::Key_Down);
    QCOMPARE(field<ColorButton>(QStringLiteral("color:background"))->color(), QColor(5, 5, 5));
    press(QDialogButtonBox::Ok);

    QCOMPARE(m_host->colorScheme()->base(), ColorScheme::Dark);
    QCOMPARE(m_host->color(QStringLiteral("background"), QColor()), QColor(5, 5, 5));
    QCOMPARE(stored(QStringLiteral("colors/scheme")).toString(), QStringLiteral("dark"));
    QCOMPARE(QColor(stored(QStringLiteral("colors/light/background")).toString()), QColor(250, 250, 250));
    restart();
    QCOMPARE(m_host->color(QStringLiteral("background"), QColor()), QColor(5, 5, 5));
}

void OptionsDialogTest::aShortcutConflictIsRefused()
{
    auto add = [this](const char *name, const char *text, const char *keys) {
        auto *action = new QAction(QString::fromLatin1(text), m_host.get());
        action->setObjectName(QString::fromLatin1(name));
        m_host->addAction(action, QKeySequence(QString::fromLatin1(keys)));
        return action;
    };
    add("file_save", "&Save", "Ctrl+S");
    QAction *open = add("file_open", "&Open...", "Ctrl+O");
    add("file_quit", "&Quit", "Ctrl+Q");
    openDialog();
    showPage(QStringLiteral("Shortcuts"));
    auto *page = static_cast<ShortcutsEditor *>(m_dialog->page(QStringLiteral("Shortcuts")));
    auto *table = field<QTableWidget>(QStringLiteral("shortcuts"));
    QTest::keyClicks(field<QLineEdit>(QStringLiteral("filter")), QStringLiteral("open"));
    int row = -1;
    for (int i = 0; i < table->rowCount(); ++i) {
        if (!table->isRowHidden(i))
            row = row < 0 ? i : -2;
    }
    QVERIFY2(row >= 0, "the filter leaves exactly the one action");
    QCOMPARE(table->item(row, 0)->text(), QStringLiteral("Open..."));
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, table->visualItemRect(table->item(row, 0)).center());

    auto *edit = field<QKeySequenceEdit>(QStringLiteral("sequence"));
    QSignalSpy finished(edit, &QKeySequenceEdit::editingFinished);
    QTest::mouseClick(edit, Qt::LeftButton);
    QTest::keyClick(edit, Qt::Key_S, Qt::ControlModifier);
    QVERIFY(finished.wait(5000));
    QVERIFY2(page->message().contains(QStringLiteral("\"Save\"")), qPrintable(page->message()));
    QCOMPARE(page->pendingShortcut(QStringLiteral("file_open")), QKeySequence(QStringLiteral("Ctrl+O")));
    QCOMPARE(edit->keySequence(), QKeySequence(QStringLiteral("Ctrl+O")));

    QTest::keyClick(edit, Qt::Key_P, Qt::ControlModifier | Qt::ShiftModifier);
    QVERIFY(finished.wait(5000));
    QCOMPARE(page->pendingShortcut(QStringLiteral("file_open")), QKeySequence(QStringLiteral("Ctrl+Shift+P")));
    QCOMPARE(table->item(row, 2)->text(), QKeySequence(QStringLiteral("Ctrl+Shift+P")).toString(QKeySequence::NativeText));
    QCOMPARE(open->shortcut(), QKeySequence(QStringLiteral("Ctrl+O")));
    press(QDialogButtonBox::Ok);
    QCOMPARE(open->shortcut(), QKeySequence(QStringLiteral("Ctrl+Shift+P")));
    QCOMPARE(stored(QStringLiteral("shortcuts/file_open")).toString(), QStringLiteral("Ctrl+Shift+P"));
    QVERIFY(!stored(QStringLiteral("shortcuts/file_save")).isValid());

    restart();
    auto *again = new QAction(QStringLiteral("&Open..."), m_host.get());
    again->setObjectName(QStringLiteral("file_open"));
    m_host->addAction(again, QKeySequence(QStringLiteral("Ctrl+O")));
    QCOMPARE(again->shortcut(), QKeySequence(QStringLiteral("Ctrl+Shift+P")));
}

void OptionsDialogTest::shortcutsResetOneOrAll()
{
    QStringList names{QStringLiteral("edit_undo"), QStringLiteral("edit_redo")};
    for (const QString &name : names) {
        auto *action = new QAction(name, m_host.get());
        action->setObjectName(name);
        m_host->addAction(action, QKeySequence(name == names.first() ? QStringLiteral("Ctrl+Z") : QStringLiteral("Ctrl+Y")));
        m_host->setShortcut(name, QKeySequence(QStringLiteral("F%1").arg(names.indexOf(name) + 5)));
    }
    openDialog();
    showPage(QStringLiteral("Shortcuts"));
    auto *page = static_cast<ShortcutsEditor *>(m_dialog->page(QStringLiteral("Shortcuts")));
    auto *table = field<QTableWidget>(QStringLiteral("shortcuts"));
    QCOMPARE(table->item(0, 1)->text(), QStringLiteral("edit_redo"));
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, table->visualItemRect(table->item(1, 0)).center());
    QTest::mouseClick(field<QPushButton>(QStringLiteral("reset_shortcut")), Qt::LeftButton);
    QCOMPARE(page->pendingShortcut(QStringLiteral("edit_undo")), QKeySequence(QStringLiteral("Ctrl+Z")));
    QCOMPARE(page->pendingShortcut(QStringLiteral("edit_redo")), QKeySequence(QStringLiteral("F6")));
    press(QDialogButtonBox::Apply);
    QVERIFY(!stored(QStringLiteral("shortcuts/edit_undo")).isValid());
    QCOMPARE(stored(QStringLiteral("shortcuts/edit_redo")).toString(), QStringLiteral("F6"));

    QTest::mouseClick(field<QPushButton>(QStringLiteral("clear_shortcut")), Qt::LeftButton);
    QVERIFY(page->pendingShortcut(QStringLiteral("edit_undo")).isEmpty());
    press(QDialogButtonBox::Apply);
    QCOMPARE(stored(QStringLiteral("shortcuts/edit_undo")).toString(), QString());
    QVERIFY(stored(QStringLiteral("shortcuts/edit_undo")).isValid());

    QTest::mouseClick(field<QPushButton>(QStringLiteral("reset_all_shortcuts")), Qt::LeftButton);
    press(QDialogButtonBox::Ok);
    QVERIFY(!stored(QStringLiteral("shortcuts/edit_undo")).isValid());
    QVERIFY(!stored(QStringLiteral("shortcuts/edit_redo")).isValid());
    QCOMPARE(m_host->action("edit_redo")->shortcut(), QKeySequence(QStringLiteral("Ctrl+Y")));
}

void OptionsDialogTest::theEngineFillsItsOwnPage()
{
    openDialog();
    QVERIFY(!m_dialog->pageTitles().contains(QStringLiteral("Engine")));
    OptionEngine engine;
    m_host->setEngine(&engine);
    openDialog();
    showPage(QStringLiteral("Engine"));
    auto *box = field<QCheckBox>(QStringLiteral("fast_start"));
    QVERIFY(box && box->isVisible());
    clickCheck(box);
    const QString config = engine.configFileName();
    QVERIFY(!QFile::exists(config));
    press(QDialogButtonBox::Ok);
    QVERIFY(QFile::exists(config));
    QVERIFY(fileBytes(config).contains("fast_start"));
    m_dialog.reset();
    m_host->setEngine(nullptr);
}

void OptionsDialogTest::screenshotsOfEveryPage()
{
    OptionEngine engine;
    m_host->setEngine(&engine);
    const char *const actions[][3] = {{"file_open", "&Open...", "Ctrl+O"},
                                      {"file_save", "&Save", "Ctrl+S"},
                                      {"file_save_all", "Save a&ll", "Ctrl+Shift+S"},
                                      {"edit_undo", "&Undo", "Ctrl+Z"},
                                      {"edit_find", "&Find...", "Ctrl+F"},
                                      {"tools_options", "&Options...", ""}};
    for (const auto &entry : actions) {
        auto *action = new QAction(m_host->icon(QString::fromLatin1(entry[0])), QString::fromLatin1(entry[1]), m_host.get());
        action->setObjectName(QString::fromLatin1(entry[0]));
        m_host->addAction(action, QKeySequence(QString::fromLatin1(entry[2])));
    }
    // Two actions on one key show as such until the user settles them.
    m_host->setShortcut(QStringLiteral("edit_find"), QKeySequence(QStringLiteral("Ctrl+Z")));
    openDialog();
    const QString folder = QCoreApplication::applicationDirPath();
    for (const QString &title : m_dialog->pageTitles()) {
        showPage(title);
        QVERIFY(m_dialog->page(title)->isVisible());
        const QString name = title.toLower().replace(QLatin1Char(' '), QLatin1Char('-'));
        // Layouts settle through posted events; the picture shows them settled.
        QCoreApplication::processEvents();
        QVERIFY(m_dialog->grab().save(folder + QStringLiteral("/options-%1.png").arg(name)));
    }
    // The dark scheme's preview, shown but never written.
    showPage(QStringLiteral("Colours"));
    QTest::keyClick(field<QComboBox>(QStringLiteral("scheme")), Qt::Key_Down);
    QVERIFY(m_dialog->grab().save(folder + QStringLiteral("/options-colours-dark.png")));
    m_dialog.reset();
    m_host->setEngine(nullptr);
}

QTEST_MAIN(OptionsDialogTest)
#include "tst_optionsdialog.moc"
