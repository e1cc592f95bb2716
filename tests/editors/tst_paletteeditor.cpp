#include "editors/palette/paladddlg.h"
#include "editors/palette/paletteeditor.h"
#include "editors/palette/paletteremapwidget.h"
#include "editors/palette/palettewidget.h"
#include "editors/palette/remapdlg.h"
#include "engine/extensionmanager.h"
#include "foundation/itemsdialog.h"
#include "image/paletteobject.h"

#include "gimppalette.h"
#include "held.h"
#include "iconsheet.h"
#include "modalanswer.h"
#include "scriptedanswerer.h"
#include "spritecontainer.h"
#include "testinterface.h"

#include <QAbstractItemView>
#include <QAction>
#include <QCheckBox>
#include <QColorDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QSlider>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QToolButton>
#include <QtTest>

using namespace Ovra;

namespace {

// The sprite editor as far as the palette editor sees it: an editor named "sprites".
class SpritesStandIn : public FileEditor
{
public:
    SpritesStandIn() : m_action(QStringLiteral("Sprites"), nullptr) {}
    QAction *action() const override { return const_cast<QAction *>(&m_action); }
    const char *name() const override { return "sprites"; }
    QWidget *widget() override { return nullptr; }
    void engineSwitched(bool) override {}
    void saveState() override {}
    void restoreState() override {}
    int fileType() const override { return 1; }
    void cut() override {}
    void copy() override {}
    void paste() override {}

private:
    QAction m_action;
};

class OtherEditor : public SpritesStandIn
{
public:
    const char *name() const override { return "sounds"; }
};

class Host : public TestInterface
{
public:
    FileEditor *editorForFile(ProjectFile *, int type) override
    {
        askedTypes << type;
        return spritesEditor;
    }
    FileEditor *spritesEditor = nullptr;
    QList<int> askedTypes;
};

using Table = QVector<RGBA>;
using RemapTable = QMap<uint, uint>;

Table rampTable(int seed)
{
    Table table(256);
    for (int i = 0; i < 256; ++i)
        table[i] = RGBA(quint8(i * seed), quint8(255 - i), quint8((i * 3 + seed) & 255), 255);
    table[0].alpha = 0;
    return table;
}

QImage indexed(int width, int height, const Table &colours, int step)
{
    QImage picture(width, height, QImage::Format_Indexed8);
    QVector<QRgb> table;
    for (const RGBA &entry : colours)
        table << entry.toQRgb();
    picture.setColorTable(table);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            picture.scanLine(y)[x] = uchar((x + y * width) * step % 40);
    }
    return picture;
}

Table tableOf(const Palette *palette)
{
    RGBA colours[256];
    if (!palette || !palette->colorTable(colours))
        return {};
    return Table(colours, colours + 256);
}

// What a palette becomes when read from a file: index 0 transparent.
Table asRead(Table table)
{
    table[0].alpha = 0;
    return table;
}

Table reversed(Table table)
{
    PaletteObject palette(reinterpret_cast<RGBA(*)[256]>(table.data()));
    palette.switchColors(nullptr, true);
    return table;
}

void writePalette(const QString &name, const char *format, const Table &colours)
{
    Table copy = colours;
    PaletteObject palette(reinterpret_cast<RGBA(*)[256]>(copy.data()));
    QFile file(name);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(palette.toFile(&file, format, CodecRules::Complete));
}

QImage looks(const Sprite *sprite)
{
    return sprite->image().convertToFormat(QImage::Format_ARGB32);
}

// Types the names into the next file dialog, as a person does, and accepts it. The names
// go into the name field itself: a dialog whose field has the focus keeps its own text
// against selectFile().
void chooseFiles(const QString &folder, const QStringList &names, QString *title = nullptr)
{
    whenShown<QFileDialog>([=](QFileDialog *dialog) {
        if (title)
            *title = dialog->windowTitle();
        dialog->setDirectory(folder);
        QStringList typed;
        for (const QString &name : names)
            typed << (names.size() > 1 ? QLatin1Char('"') + name + QLatin1Char('"') : name);
        if (auto *field = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit")))
            field->setText(typed.join(QLatin1Char(' ')));
        QMetaObject::invokeMethod(dialog, "accept", Qt::QueuedConnection);
    });
}

} // namespace

class PaletteEditorTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void actionsCarryTheirTexts_data();
    void actionsCarryTheirTexts();
    void barShowsDrawnIcons();
    void commandsFirstBringTheSpriteEditor();
    void selectorFollowsThePalettes();
    void addingAnEmptyPalette();
    void addingFromFiles_data();
    void addingFromFiles();
    void addingCancelledLeavesTheFile();
    void deletingAsksFirst();
    void deletingDuplicates_data();
    void deletingDuplicates();
    void savingOneAndSeveral();
    void movingAColourKeepsTheSprites();
    void applyingToSprites();
    void colourChoiceAndUndo();
    void remapTool();
    void organizerOfThePalettes();
    void screenshot();

private:
    QAction *action(const char *name) { return m_host->action(name); }
    QPoint slot(int index) const { return m_editor->paletteWidget()->slotRect(index).center(); }
    void show();

    std::unique_ptr<Host> m_host;
    std::unique_ptr<SpritesStandIn> m_sprites;
    std::unique_ptr<PaletteEditor> m_editor;
    Held<SpriteContainer> m_file;
    std::unique_ptr<QTemporaryDir> m_dir;
};

void PaletteEditorTest::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    qRegisterMetaType<QMap<uint, uint>>();
    m_host = std::make_unique<Host>();
    ExtensionManager::add(new GimpPaletteLoader);
    ExtensionManager::add(new GimpPaletteSaver);
}

void PaletteEditorTest::init()
{
    m_host->options.clear();
    m_dir = std::make_unique<QTemporaryDir>();
    m_host->options.insert(QStringLiteral("project_path"), m_dir->path());
    m_sprites = std::make_unique<SpritesStandIn>();
    m_host->spritesEditor = m_sprites.get();
    m_host->activeEditor = nullptr;
    m_host->activations.clear();
    m_file.reset(new SpriteContainer);
    // Two sprites over one palette, a third over another.
    m_file->add(QPoint(0, 0), indexed(6, 4, rampTable(1), 1), Archive::NoShare);
    m_file->add(QPoint(0, 1), indexed(5, 5, rampTable(1), 7), Archive::NoShare);
    m_file->add(QPoint(1, 0), indexed(3, 3, rampTable(5), 3), Archive::NoShare);
    QCOMPARE(m_file->palettes()->count(), 2u);
    m_editor = std::make_unique<PaletteEditor>();
    m_editor->setPalettes(m_file->palettes());
    m_editor->setCurrentPalette(m_file->palettes()->at(0));
}

void PaletteEditorTest::cleanup()
{
    m_editor.reset();
    m_file.reset();
    m_host->activeEditor = nullptr;
    m_sprites.reset();
}

void PaletteEditorTest::show()
{
    m_editor->widget()->resize(360, 460);
    m_editor->widget()->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_editor->widget()));
}

void PaletteEditorTest::actionsCarryTheirTexts_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("tip");
    QTest::newRow("clear") << "pal_clear" << "Clear" << "Remove all palettes";
    QTest::newRow("unused") << "pal_clear_unused" << "Clear all unused" << "Remove all unused palettes";
    QTest::newRow("add") << "pal_add" << "Add" << "Add one or more palettes";
    QTest::newRow("delete") << "pal_delete" << "Delete" << "Remove the current palette";
    QTest::newRow("duplicates") << "pal_delete_duplicates" << "Remove all duplicates" << "Remove all duplicate palettes";
    QTest::newRow("open") << "pal_open" << "Change..." << "Define new colors to the palette from a file...";
    QTest::newRow("save") << "pal_save" << "Save as..." << "Save the palette as a file...";
    QTest::newRow("remap") << "pal_remap" << "Remap" << "Open the palette Remap tool";
    QTest::newRow("undo") << "pal_undo" << "Undo" << "Undo";
    QTest::newRow("redo") << "pal_redo" << "Redo" << "Redo";
    QTest::newRow("switch") << "pal_switch_color" << "Exchange position of selected colors"
                            << "Exchange position of selected colors";
    QTest::newRow("set") << "pal_set_color" << "Sets the color of the selected slots"
                         << "Sets the color of the selected slots";
    QTest::newRow("apply") << "pal_apply_sprite" << "Apply to the sprites"
                           << "Apply the current palette to the specified sprites";
    QTest::newRow("previous") << "pal_prev" << "Previous palette" << "Previous palette";
    QTest::newRow("next") << "pal_next" << "Next palette" << "Next palette";
}

void PaletteEditorTest::actionsCarryTheirTexts()
{
    QFETCH(QString, name);
    QFETCH(QString, label);
    QFETCH(QString, tip);
    QAction *made = action(name.toLatin1().constData());
    QVERIFY(made);
    QCOMPARE(made->text(), label);
    QCOMPARE(made->toolTip(), tip);
    QCOMPARE(m_host->actionScopes.value(name), QStringLiteral("palettes/0"));
}

// The bar keeps its ten buttons, in order; the test host's icons are single pixels, so each
// shows a drawing of its own, sharp at the sizes a bar asks for. The sheet of them, for the
// eye, goes beside the program as paletteicons.png.
void PaletteEditorTest::barShowsDrawnIcons()
{
    show();
    QList<QToolButton *> buttons = m_editor->widget()->findChildren<QToolButton *>(QRegularExpression(QStringLiteral("_button$")));
    std::sort(buttons.begin(), buttons.end(), [](QToolButton *a, QToolButton *b) { return a->x() < b->x(); });
    QStringList names;
    for (const QToolButton *button : qAsConst(buttons))
        names << button->defaultAction()->objectName();
    QCOMPARE(names, QStringList({"pal_add", "pal_delete", "pal_open", "pal_save", "pal_remap", "pal_undo", "pal_redo",
                                 "pal_apply_sprite", "pal_prev", "pal_next"}));

    QList<QPair<QString, QIcon>> icons;
    for (const QToolButton *button : qAsConst(buttons))
        icons << qMakePair(button->defaultAction()->objectName(), button->icon());
    checkIconSheet(icons, QStringLiteral("paletteicons.png"));
}

void PaletteEditorTest::commandsFirstBringTheSpriteEditor()
{
    OtherEditor other;
    m_host->activateEditor(&other);
    action("pal_next")->trigger();
    QCOMPARE(m_host->activeEditor.data(), m_sprites.get());
    QCOMPARE(m_host->askedTypes.value(0), 1);
    QCOMPARE(m_editor->currentPalette(), m_file->palettes()->at(1));

    // No sprite editor to be had: the command does nothing.
    m_host->activateEditor(&other);
    m_host->spritesEditor = nullptr;
    action("pal_prev")->trigger();
    QCOMPARE(m_editor->currentPalette(), m_file->palettes()->at(1));
    m_host->activateEditor(nullptr);
}

void PaletteEditorTest::selectorFollowsThePalettes()
{
    show();
    auto *selector = m_editor->widget()->findChild<QSlider *>(QStringLiteral("pal_sel"));
    auto *label = m_editor->widget()->findChild<QLabel *>(QStringLiteral("pal_sel_lb"));
    QVERIFY(selector && label);
    QCOMPARE(label->text(), QStringLiteral("1 / 2"));
    QCOMPARE(selector->maximum(), 1);
    // A person moving the selector shows the other palette.
    QSignalSpy texts(m_editor.get(), &PaletteEditor::setPosText);
    selector->setFocus();
    QTest::keyClick(selector, Qt::Key_Right);
    QCOMPARE(m_editor->currentPalette(), m_file->palettes()->at(1));
    QCOMPARE(label->text(), QStringLiteral("2 / 2"));
    QCOMPARE(texts.last().at(0).toString(), QStringLiteral("2 / 2"));
    QCOMPARE(m_editor->paletteWidget()->paletteObject()->at(uchar(7)), rampTable(5).at(7));

    // Set from code, the palette is shown once: the selector's own signal does nothing.
    QSignalSpy shown(m_editor.get(), &PaletteEditor::paletteChanged);
    m_editor->setCurrentPalette(m_file->palettes()->at(0));
    QCOMPARE(shown.count(), 1);
    QCOMPARE(selector->value(), 0);

    QSignalSpy enabled(m_editor.get(), &PaletteEditor::enabled);
    m_file->palettes()->clear();
    QCOMPARE(label->text(), QStringLiteral("0 / 0"));
    QCOMPARE(m_editor->currentPalette(), nullptr);
    QVERIFY(!enabled.isEmpty());
    QCOMPARE(enabled.last().at(0).toBool(), false);
    QVERIFY(!action("pal_delete")->isEnabled());
    QVERIFY(action("pal_add")->isEnabled());
    m_editor->setPalettes(nullptr);
    QVERIFY(!action("pal_add")->isEnabled());
}

void PaletteEditorTest::addingAnEmptyPalette()
{
    ScriptedAnswerer user({QMessageBox::No});
    action("pal_add")->trigger();
    QCOMPARE(user.prompts().size(), 1);
    QCOMPARE(user.prompts().first().title, QStringLiteral("Add palette"));
    QCOMPARE(user.prompts().first().text, QStringLiteral("Do you want to load the palettes from files?"));
    // Behind the current one, and shown.
    QCOMPARE(m_file->palettes()->count(), 3u);
    QCOMPARE(m_editor->currentPalette(), m_file->palettes()->at(1));
    QCOMPARE(tableOf(m_file->palettes()->at(2)), asRead(rampTable(5)));
    // The next number of the group of the palette that was shown.
    QCOMPARE(m_file->palettes()->at(1)->property(QStringLiteral("Identifier")).toPoint(), QPoint(0, 1));
}

void PaletteEditorTest::addingFromFiles_data()
{
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<bool>("reverse");
    QTest::newRow("colour table") << QStringList{QStringLiteral("a.act")} << false;
    QTest::newRow("riff, reversed") << QStringList{QStringLiteral("b.pal")} << true;
    QTest::newRow("extension's format") << QStringList{QStringLiteral("c.gpl")} << false;
    QTest::newRow("three kinds") << QStringList{QStringLiteral("a.act"), QStringLiteral("b.pal"), QStringLiteral("c.gpl")}
                                 << false;
    // In the order of the dialog's list: once the dialog has read its folder, it gives the
    // names typed in that order, not in the order they were typed.
    QTest::newRow("two, reversed") << QStringList{QStringLiteral("a.act"), QStringLiteral("c.gpl")} << true;
}

void PaletteEditorTest::addingFromFiles()
{
    QFETCH(QStringList, files);
    QFETCH(bool, reverse);
    QMap<QString, Table> written{{QStringLiteral("a.act"), rampTable(11)},
                                 {QStringLiteral("b.pal"), rampTable(13)},
                                 {QStringLiteral("c.gpl"), rampTable(17)}};
    writePalette(m_dir->filePath(QStringLiteral("a.act")), "ACT", written.value(QStringLiteral("a.act")));
    writePalette(m_dir->filePath(QStringLiteral("b.pal")), "PAL", written.value(QStringLiteral("b.pal")));
    writePalette(m_dir->filePath(QStringLiteral("c.gpl")), "GPL", written.value(QStringLiteral("c.gpl")));
    // The file of the extension keeps no alpha: every entry comes back opaque.
    for (Table *table : {&written[QStringLiteral("c.gpl")]}) {
        for (RGBA &entry : *table)
            entry.alpha = 255;
    }

    QString dialogTitle;
    chooseFiles(m_dir->path(), files, &dialogTitle);
    QStringList offered;
    QString boxText;
    bool ticked = false;
    whenShown<PalAddDlg>([&](PalAddDlg *dialog) {
        offered = dialog->identifiers();
        for (int row = 0; row < dialog->table()->rowCount(); ++row)
            dialog->setIdentifier(row, QStringLiteral("7, %1").arg(row + 20));
        auto *box = dialog->findChild<QCheckBox *>(QStringLiteral("pal_add_reversed"));
        boxText = box->text();
        // Clicked where a person clicks: on the box itself, not beyond its text.
        if (reverse)
            QTest::mouseClick(box, Qt::LeftButton, Qt::NoModifier, QPoint(8, box->height() / 2));
        ticked = dialog->isReversed();
        dialog->accept();
    });
    ScriptedAnswerer user({QMessageBox::Yes});
    action("pal_add")->trigger();

    QCOMPARE(dialogTitle, QStringLiteral("Add palettes"));
    QCOMPARE(boxText, QStringLiteral("Reversed"));
    QCOMPARE(ticked, reverse);
    QCOMPARE(offered.size(), files.size());
    QCOMPARE(offered.value(0), QStringLiteral("0, 1"));
    QCOMPARE(m_file->palettes()->count(), uint(2 + files.size()));
    for (int i = 0; i < files.size(); ++i) {
        Palette *added = m_file->palettes()->at(uint(1 + i));
        Table expected = asRead(written.value(files.at(i)));
        if (reverse)
            expected = reversed(expected);
        QCOMPARE(tableOf(added), expected);
        QCOMPARE(added->property(QStringLiteral("Identifier")).toPoint(), QPoint(7, 20 + i));
    }
    QCOMPARE(m_editor->currentPalette(), m_file->palettes()->at(uint(files.size())));
    // One undo of the file takes every palette of the command back.
    m_file->undo();
    QCOMPARE(m_file->palettes()->count(), 2u);
    QCOMPARE(tableOf(m_file->palettes()->at(1)), asRead(rampTable(5)));
}

void PaletteEditorTest::addingCancelledLeavesTheFile()
{
    writePalette(m_dir->filePath(QStringLiteral("a.act")), "ACT", rampTable(3));
    writePalette(m_dir->filePath(QStringLiteral("b.act")), "ACT", rampTable(4));
    chooseFiles(m_dir->path(), {QStringLiteral("a.act"), QStringLiteral("b.act")});
    whenShown<PalAddDlg>([](PalAddDlg *dialog) { dialog->reject(); });
    ScriptedAnswerer user({QMessageBox::Yes, QMessageBox::Yes});
    const QByteArray before = m_file->toBytes();
    action("pal_add")->trigger();
    QCOMPARE(m_file->palettes()->count(), 2u);

    // A file dialog closed without a choice ends it as well.
    whenShown<QFileDialog>([](QFileDialog *dialog) { dialog->reject(); });
    action("pal_add")->trigger();
    QCOMPARE(m_file->palettes()->count(), 2u);
    QCOMPARE(m_file->toBytes(), before);
    QCOMPARE(user.pending(), 0);
    // No empty step was left and the bracket was closed: the last step of the file is
    // still the third sprite, and the next change is a step of its own.
    m_file->palettes()->remove(1);
    m_file->undo();
    QCOMPARE(m_file->palettes()->count(), 2u);
    m_file->undo();
    QCOMPARE(m_file->count(), 2u);
}

void PaletteEditorTest::deletingAsksFirst()
{
    m_host->options.insert(QStringLiteral("confirm_delete"), true);
    m_editor->setCurrentPalette(m_file->palettes()->at(1));
    ScriptedAnswerer user({QMessageBox::No, QMessageBox::Yes});
    action("pal_delete")->trigger();
    QCOMPARE(m_file->palettes()->count(), 2u);
    QCOMPARE(user.prompts().first().title, QStringLiteral("Delete palette"));
    QCOMPARE(user.prompts().first().text, QStringLiteral("Do you really want to delete the palette?"));
    action("pal_delete")->trigger();
    QCOMPARE(m_file->palettes()->count(), 1u);
    // The last one went: the position stays in the list.
    QCOMPARE(m_editor->currentPalette(), m_file->palettes()->at(0));
    // Without the option nobody is asked.
    m_host->options.remove(QStringLiteral("confirm_delete"));
    action("pal_delete")->trigger();
    QCOMPARE(user.prompts().size(), 2);
    QCOMPARE(m_file->palettes()->count(), 0u);
    QCOMPARE(m_editor->currentPalette(), nullptr);
}

void PaletteEditorTest::deletingDuplicates_data()
{
    QTest::addColumn<QList<int>>("seeds");
    QTest::addColumn<int>("position");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("after");
    QTest::newRow("position kept") << QList<int>{1, 2, 1, 3, 2} << 1 << 3 << 1;
    QTest::newRow("beyond the end: the last") << QList<int>{1, 2, 1, 3, 2} << 4 << 3 << 2;
    QTest::newRow("nothing equal") << QList<int>{1, 2, 3} << 2 << 3 << 2;
    QTest::newRow("all equal") << QList<int>{4, 4, 4, 4} << 3 << 1 << 0;
}

void PaletteEditorTest::deletingDuplicates()
{
    QFETCH(QList<int>, seeds);
    QFETCH(int, position);
    QFETCH(int, count);
    QFETCH(int, after);
    m_file->palettes()->clear();
    for (int i = 0; i < seeds.size(); ++i)
        m_file->palettes()->add(rampTable(seeds.at(i)).constData(), QPoint(2, i), Archive::NoShare);
    m_editor->setCurrentPalette(m_file->palettes()->at(uint(position)));
    QSignalSpy enabled(m_editor.get(), &PaletteEditor::enabled);
    QSignalSpy texts(m_editor.get(), &PaletteEditor::setPosText);
    action("pal_delete_duplicates")->trigger();
    QCOMPARE(int(m_file->palettes()->count()), count);
    QCOMPARE(m_editor->currentPalette(), m_file->palettes()->at(uint(after)));
    QCOMPARE(enabled.last().at(0).toBool(), true);
    QCOMPARE(texts.last().at(0).toString(), QStringLiteral("%1 / %2").arg(after + 1).arg(count));
    QCOMPARE(m_editor->widget()->findChild<QSlider *>(QStringLiteral("pal_sel"))->maximum(), count - 1);
}

void PaletteEditorTest::savingOneAndSeveral()
{
    m_file->palettes()->at(1)->setProperty(QStringLiteral("Identifier"), QPoint(3, 9));
    m_editor->setCurrentPalette(m_file->palettes()->at(1));
    QString listTitle;
    bool currentTicked = false;
    whenShown<ItemsDialog>([&](ItemsDialog *dialog) {
        listTitle = dialog->windowTitle();
        currentTicked = dialog->isChecked(1) && !dialog->isChecked(0) && dialog->objectName() == QLatin1String("pal_save");
        dialog->accept();
    });
    chooseFiles(m_dir->path(), {QStringLiteral("one.act")});
    action("pal_save")->trigger();
    QCOMPARE(listTitle, QStringLiteral("Save as..."));
    QVERIFY(currentTicked);
    const auto bytesOf = [](const Table &table) {
        QByteArray bytes;
        for (const RGBA &entry : table)
        {
            bytes.append(char(entry.red));
            bytes.append(char(entry.green));
            bytes.append(char(entry.blue));
        }
        return bytes;
    };
    QFile one(m_dir->filePath(QStringLiteral("one.act")));
    QVERIFY(one.open(QIODevice::ReadOnly));
    QCOMPARE(one.readAll(), bytesOf(rampTable(5)));

    // Several: the answer names the folder and the suffix, the identifiers the files.
    whenShown<ItemsDialog>([](ItemsDialog *dialog) {
        dialog->selectAll();
        dialog->accept();
    });
    chooseFiles(m_dir->path(), {QStringLiteral("base.gpl")});
    action("pal_save")->trigger();
    const QStringList names{QStringLiteral("0_0.gpl"), QStringLiteral("3_9.gpl")};
    const QList<Table> tables{asRead(rampTable(1)), asRead(rampTable(5))};
    for (int i = 0; i < 2; ++i) {
        QFile file(m_dir->filePath(names.at(i)));
        QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(names.at(i)));
        Table back(256);
        PaletteObject palette(reinterpret_cast<RGBA(*)[256]>(back.data()));
        QVERIFY(palette.fromFile(&file, "GPL", CodecRules::Complete));
        for (int c = 1; c < 256; ++c)
            QCOMPARE(back.at(c), tables.at(i).at(c));
    }
    QVERIFY(!QFileInfo::exists(m_dir->filePath(QStringLiteral("base.gpl"))));
}

void PaletteEditorTest::movingAColourKeepsTheSprites()
{
    show();
    QList<QImage> before;
    for (uint i = 0; i < m_file->count(); ++i)
        before << looks(m_file->at(i));
    const QImage indicesBefore = m_file->at(0)->image();
    QSignalSpy moved(m_editor.get(), &PaletteEditor::colorMoved);
    PaletteWidget *colours = m_editor->paletteWidget();
    QTest::mousePress(colours, Qt::LeftButton, Qt::NoModifier, slot(3));
    QTest::mouseMove(colours, slot(10));
    QTest::mouseMove(colours, slot(30));
    QTest::mouseRelease(colours, Qt::LeftButton, Qt::NoModifier, slot(30));
    QCOMPARE(moved.count(), 1);
    QCOMPARE(moved.first().at(0).toInt(), 3);
    QCOMPARE(moved.first().at(1).toInt(), 30);

    const Table ramp = asRead(rampTable(1));
    const Table now = tableOf(m_file->palettes()->at(0));
    QCOMPARE(now.at(30), ramp.at(3));
    QCOMPARE(now.at(3), ramp.at(4));
    QCOMPARE(now.at(29), ramp.at(30));
    QCOMPARE(now.at(31), ramp.at(31));
    for (uint i = 0; i < m_file->count(); ++i)
        QCOMPARE(looks(m_file->at(i)), before.at(int(i)));
    QVERIFY(m_file->at(0)->image().constBits()[3] == 30);
    QCOMPARE(m_editor->paletteWidget()->paletteObject()->at(uchar(30)), ramp.at(3));

    // Undo puts the colour and the indices back.
    action("pal_undo")->trigger();
    QCOMPARE(tableOf(m_file->palettes()->at(0)), ramp);
    QCOMPARE(m_file->at(0)->image(), indicesBefore);
    for (uint i = 0; i < m_file->count(); ++i)
        QCOMPARE(looks(m_file->at(i)), before.at(int(i)));
}

void PaletteEditorTest::applyingToSprites()
{
    m_editor->setCurrentPalette(m_file->palettes()->at(1));
    QString title;
    QString label;
    whenShown<ItemsDialog>([&](ItemsDialog *dialog) {
        title = dialog->windowTitle();
        label = dialog->findChild<QLabel *>()->text();
        dialog->setChecked(0, true);
        dialog->setChecked(1, true);
        dialog->accept();
    });
    action("pal_apply_sprite")->trigger();
    QCOMPARE(title, QStringLiteral("Sprites"));
    QCOMPARE(label, QStringLiteral("Apply to the sprites"));
    QCOMPARE(m_file->at(0)->palette(), m_file->palettes()->at(1));
    QCOMPARE(m_file->at(1)->palette(), m_file->palettes()->at(1));
    QCOMPARE(m_file->at(2)->palette(), m_file->palettes()->at(1));
    // Their pixels now show the colours of that palette.
    QCOMPARE(QColor(m_file->at(0)->image().pixel(1, 0)), QColor(rampTable(5).at(1).toQRgb()));
    // One step of the file.
    m_file->undo();
    QCOMPARE(m_file->at(0)->palette(), m_file->palettes()->at(0));
    QCOMPARE(m_file->at(1)->palette(), m_file->palettes()->at(0));
}

void PaletteEditorTest::colourChoiceAndUndo()
{
    show();
    QString title;
    whenShown<QColorDialog>([&](QColorDialog *dialog) {
        title = dialog->windowTitle();
        dialog->setCurrentColor(QColor(12, 34, 56));
        dialog->accept();
    });
    QTest::mouseDClick(m_editor->paletteWidget(), Qt::LeftButton, Qt::NoModifier, slot(5));
    QTRY_COMPARE(tableOf(m_file->palettes()->at(0)).at(5), RGBA(12, 34, 56, 255));
    QCOMPARE(title, QStringLiteral("Color"));
    QVERIFY(action("pal_undo")->isEnabled());
    action("pal_undo")->trigger();
    QCOMPARE(tableOf(m_file->palettes()->at(0)).at(5), rampTable(1).at(5));
    QVERIFY(action("pal_redo")->isEnabled());
    action("pal_redo")->trigger();
    QCOMPARE(tableOf(m_file->palettes()->at(0)).at(5), RGBA(12, 34, 56, 255));

    // Two slots exchanged by the command.
    QTest::mouseClick(m_editor->paletteWidget(), Qt::LeftButton, Qt::NoModifier, slot(8));
    QTest::mouseClick(m_editor->paletteWidget(), Qt::LeftButton, Qt::ControlModifier, slot(9));
    action("pal_switch_color")->trigger();
    QCOMPARE(tableOf(m_file->palettes()->at(0)).at(8), rampTable(1).at(9));
    QCOMPARE(tableOf(m_file->palettes()->at(0)).at(9), rampTable(1).at(8));
}

void PaletteEditorTest::remapTool()
{
    show();
    m_host->activateEditor(m_sprites.get());
    QSignalSpy remaps(m_editor.get(), &PaletteEditor::remapRequested);
    action("pal_remap")->trigger();
    auto *dialog = m_editor->widget()->findChild<RemapDlg *>();
    QVERIFY(dialog);
    QVERIFY(QTest::qWaitForWindowExposed(dialog));
    QCOMPARE(dialog->windowTitle(), QStringLiteral("Remap"));
    auto *remove = dialog->findChild<QPushButton *>(QStringLiteral("pal_remap_delete"));
    auto *clear = dialog->findChild<QPushButton *>(QStringLiteral("pal_remap_clear"));
    QCOMPARE(remove->text(), QStringLiteral("Delete"));
    QCOMPARE(clear->text(), QStringLiteral("Clear"));

    // A left click picks the source, a right click the target.
    QTest::mouseClick(m_editor->paletteWidget(), Qt::LeftButton, Qt::NoModifier, slot(2));
    QTest::mouseClick(m_editor->paletteWidget(), Qt::RightButton, Qt::NoModifier, slot(7));
    QTest::mouseClick(m_editor->paletteWidget(), Qt::LeftButton, Qt::NoModifier, slot(4));
    QTest::mouseClick(m_editor->paletteWidget(), Qt::RightButton, Qt::NoModifier, slot(9));
    QCOMPARE(remaps.count(), 2);
    const QMap<uint, uint> expected{{2, 7}, {4, 9}};
    QCOMPARE(remaps.last().at(0).value<RemapTable>(), expected);
    QCOMPARE(m_editor->remapTable(), expected);

    QTableWidget *rows = dialog->remapWidget()->view();
    rows->selectRow(0);
    QTest::mouseClick(remove, Qt::LeftButton);
    const QMap<uint, uint> left{{4, 9}};
    QCOMPARE(m_editor->remapTable(), left);
    QTest::mouseClick(clear, Qt::LeftButton);
    QCOMPARE(remaps.last().at(0).value<RemapTable>(), RemapTable());

    // Another editor in front: the table stays with the tool.
    OtherEditor other;
    m_host->activateEditor(&other);
    const int before = remaps.count();
    QTest::mouseClick(m_editor->paletteWidget(), Qt::LeftButton, Qt::NoModifier, slot(1));
    QTest::mouseClick(m_editor->paletteWidget(), Qt::RightButton, Qt::NoModifier, slot(3));
    QCOMPARE(remaps.count(), before);
    const QMap<uint, uint> kept{{1, 3}};
    QCOMPARE(m_editor->remapTable(), kept);
    m_host->activateEditor(nullptr);
}

void PaletteEditorTest::organizerOfThePalettes()
{
    show();
    QAction *organize = action("org_palette");
    QVERIFY(organize->isCheckable());
    QCOMPARE(organize->text(), QStringLiteral("Organizer"));
    organize->trigger();
    QCOMPARE(m_host->options.value(QStringLiteral("org_palette")).toBool(), true);
    auto *list = m_editor->widget()->findChild<QAbstractItemView *>();
    QVERIFY(list);
    QTRY_VERIFY(list->isVisible());
    QCOMPARE(list->model()->rowCount(), 2);
    organize->trigger();
    QCOMPARE(m_host->options.value(QStringLiteral("org_palette")).toBool(), false);
    QVERIFY(!list->isVisible());
}

void PaletteEditorTest::screenshot()
{
    show();
    QTest::mouseClick(m_editor->paletteWidget(), Qt::LeftButton, Qt::NoModifier, slot(18));
    QTest::mouseClick(m_editor->paletteWidget(), Qt::LeftButton, Qt::ShiftModifier, slot(22));
    const QImage shot = m_editor->widget()->grab().toImage();
    const QString path = QCoreApplication::applicationDirPath() + QStringLiteral("/paletteeditor.png");
    QVERIFY(shot.save(path));
    // The grid shows the palette's colours where its slots are.
    const QPoint inside = m_editor->paletteWidget()->mapTo(m_editor->widget(), slot(40));
    const qreal ratio = shot.devicePixelRatio();
    QCOMPARE(QColor(shot.pixel(inside * ratio)), QColor(rampTable(1).at(40).toQRgb()));
}

QTEST_MAIN(PaletteEditorTest)
#include "tst_paletteeditor.moc"
