// The studio's main window as a person uses it: a copy of the example work opened, files
// shown from the project tree and the messages, text typed and saved, questions answered
// through the prompt seam, and a second window over the same settings file for the
// session. What the window claims is checked in the model and on disk.
#include "studiotestsupport.h"

#include "codeeditors.h"

#include "code/codedocument.h"
#include "editors/code/codeeditor.h"
#include "editors/code/codeworkspace.h"
#include "engine/projectlocator.h"
#include "foundation/messages.h"
#include "project/parentproject.h"
#include "project/project.h"

#include "modalanswer.h"
#include "scriptedanswerer.h"
#include "testfiles.h"

#include <QAction>
#include <QDockWidget>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProcess>
#include <QPushButton>
#include <QStackedWidget>
#include <QTemporaryDir>
#include <QTextBlock>
#include <QToolBar>
#include <QTreeView>
#include <QTreeWidget>
#include <QtTest>

#include <memory>

using namespace Ovra;
using namespace StudioTest;

class StudioWindowTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void typedValueIsSavedAndUndoneByteForByte();
    void saveAllWritesEveryChangedFile();
    void damagedFileShowsItsMessages();
    void closingWithAChangeAsks();
    void sessionAndOptionsSurviveARestart();
    void badWorks_data();
    void badWorks();
    void garbagePluginsLeaveAWorkingWindow();
    void fileThatCantBeWrittenLandsInSaveAs();
    void findAndReplaceAcrossTheProject();
    void backupAndRestore();
    void scriptsWriteToTheOutputDock();
    void aboutNamesVersionAndPlugins();
    void filesOfTheCommandLine();
    void screenshot();
    void commandLineTexts_data();
    void commandLineTexts();
    void commandLineScreenshot();
    void commandLineStartupTime();
    void commandLineScreenshotOfABadWork();

private:
    void startStudio();
    void openTheWork();
    // The file of the project tree shown in its editor by a double click.
    CodeDocument *showFromTree(const QString &name);
    CodeEditor *codeEditor() const;
    // Cursor to the end of the first line holding `text`, as the user gets there.
    void goToEndOfLine(const QString &text);

    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_work;
    QString m_settingsFile;
    std::unique_ptr<ProjectLocator> m_locator;
    std::unique_ptr<Studio> m_studio;
    // Answers what a test doesn't script with the escape answer; recorded for a look.
    std::unique_ptr<ScriptedAnswerer> m_nobody;
};

void StudioWindowTest::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    m_work = m_dir->filePath(QStringLiteral("work"));
    QVERIFY(copyTree(sourceDir() + QStringLiteral("/examples/sample"), m_work));
    m_settingsFile = m_dir->filePath(QStringLiteral("studio.ini"));
    m_nobody = std::make_unique<ScriptedAnswerer>();
    m_locator = std::make_unique<ProjectLocator>(pluginDir());
    QVERIFY(!m_locator->pluginDirectory().isEmpty());
}

void StudioWindowTest::cleanup()
{
    m_studio.reset();
    m_locator.reset();
    m_nobody.reset();
    m_dir.reset();
}

void StudioWindowTest::startStudio()
{
    m_studio = std::make_unique<Studio>(m_settingsFile, m_locator.get());
    m_studio->window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_studio->window.get()));
}

void StudioWindowTest::openTheWork()
{
    if (!m_studio)
        startStudio();
    QVERIFY(m_studio->window->openWork(m_work));
    QVERIFY(m_studio->window->project());
    QCOMPARE(m_studio->window->project()->name(), QStringLiteral("Knight"));
}

CodeEditor *StudioWindowTest::codeEditor() const
{
    return m_studio->window->codeEditors()->workspace()->editor();
}

CodeDocument *StudioWindowTest::showFromTree(const QString &name)
{
    QTreeView *tree = m_studio->window->projectTree();
    const QModelIndex row = findRow(tree->model(), name);
    if (!doubleClickRow(tree, row))
        return nullptr;
    CodeWorkspace *workspace = m_studio->window->codeEditors()->workspace();
    if (m_studio->window->centre()->currentWidget() != workspace || !workspace->document())
        return nullptr;
    return QFileInfo(workspace->document()->fileName()).fileName() == name ? workspace->document() : nullptr;
}

void StudioWindowTest::goToEndOfLine(const QString &text)
{
    CodeEditor *editor = codeEditor();
    const int line = editor->document()->find(text).blockNumber();
    QVERIFY(line >= 0);
    QTest::keyClick(editor, Qt::Key_Home, Qt::ControlModifier);
    for (int i = 0; i < line; ++i)
        QTest::keyClick(editor, Qt::Key_Down);
    QTest::keyClick(editor, Qt::Key_End);
    QCOMPARE(editor->textCursor().blockNumber(), line);
}

void StudioWindowTest::typedValueIsSavedAndUndoneByteForByte()
{
    openTheWork();
    const QString path = m_work + QStringLiteral("/knight/knight.def");
    const QByteArray original = readFile(path);
    QVERIFY(original.contains("    life = 1000\r\n"));
    CodeDocument *document = showFromTree(QStringLiteral("knight.def"));
    QVERIFY(document);
    QVERIFY(m_studio->host->action("editor_code")->isChecked());

    goToEndOfLine(QStringLiteral("life = 1000"));
    QTest::keyClicks(codeEditor(), QStringLiteral("5"));
    QVERIFY(document->isModified());
    QVERIFY(clickToolButton(m_studio->window.get(), "bar_file", "file_save"));
    QByteArray expected = original;
    expected.replace("    life = 1000\r\n", "    life = 10005\r\n");
    QTRY_COMPARE(readFile(path), expected);
    QTRY_VERIFY(!document->isModified());

    QVERIFY(chooseFromMenu(m_studio->window.get(), "menu_edit", "edit_undo"));
    QVERIFY(document->toString().contains(QStringLiteral("    life = 1000\n")));
    QVERIFY(clickToolButton(m_studio->window.get(), "bar_file", "file_save"));
    QTRY_COMPARE(readFile(path), original);
    QVERIFY(m_nobody->prompts().isEmpty());
}

void StudioWindowTest::saveAllWritesEveryChangedFile()
{
    openTheWork();
    const QString definitionsPath = m_work + QStringLiteral("/knight/knight.def");
    const QString scriptPath = m_work + QStringLiteral("/knight/knight.lua");
    const QString animationsPath = m_work + QStringLiteral("/knight/knight.oan");
    const QByteArray animations = readFile(animationsPath);
    CodeDocument *definitions = showFromTree(QStringLiteral("knight.def"));
    QVERIFY(definitions);
    goToEndOfLine(QStringLiteral("power = 3000"));
    QTest::keyClicks(codeEditor(), QStringLiteral("1"));
    CodeDocument *script = showFromTree(QStringLiteral("knight.lua"));
    QVERIFY(script);
    QTest::keyClick(codeEditor(), Qt::Key_Home, Qt::ControlModifier);
    QTest::keyClicks(codeEditor(), QStringLiteral("-- saved with the rest"));
    QTest::keyClick(codeEditor(), Qt::Key_Return);
    QVERIFY(chooseFromMenu(m_studio->window.get(), "menu_file", "file_save_all"));
    QTRY_VERIFY(readFile(definitionsPath).contains("    power = 30001\r\n"));
    QTRY_VERIFY(readFile(scriptPath).startsWith("-- saved with the rest\r\n"));
    QTRY_VERIFY(!definitions->isModified() && !script->isModified());
    // A file without a change is not written again.
    QCOMPARE(readFile(animationsPath), animations);
}

void StudioWindowTest::damagedFileShowsItsMessages()
{
    const QString path = m_work + QStringLiteral("/knight/knight.def");
    QByteArray damaged = readFile(path);
    damaged.replace("    defence = 100\r\n", "    defence = 100\r\n%%% here\r\n    walk = (1\r\n");
    QVERIFY(writeFile(path, damaged));
    openTheWork();

    QTreeView *view = m_studio->window->messageView();
    QVERIFY(m_studio->window->dock(QStringLiteral("dock_messages"))->isVisible());
    QTRY_VERIFY(view->model()->rowCount() >= 2);
    const QModelIndex first = view->model()->index(0, 0);
    QCOMPARE(view->model()->index(0, 1).data().toString(), QStringLiteral("knight.def"));
    const Messages *list = nullptr;
    const Message message = m_studio->window->project()->messages()->messageAt(0, list);
    QVERIFY(list);
    QCOMPARE(view->model()->index(0, 2).data().toInt(), int(message.line) + 1);
    QCOMPARE(first.data().toString(), message.text);

    // The rest of the work is there: another file opens from the tree.
    QVERIFY(showFromTree(QStringLiteral("knight.lua")));
    QVERIFY(m_studio->host->action("editor_script")->isChecked());

    QVERIFY(doubleClickRow(view, first));
    CodeWorkspace *workspace = m_studio->window->codeEditors()->workspace();
    QTRY_COMPARE(QFileInfo(workspace->document()->fileName()).fileName(), QStringLiteral("knight.def"));
    QCOMPARE(codeEditor()->textCursor().blockNumber(), int(message.line));
    QCOMPARE(codeEditor()->textCursor().positionInBlock(), int(message.column));
    QVERIFY(workspace->document()->findBlockByNumber(int(message.line)).text().contains(QStringLiteral("%%%")) ||
            workspace->document()->findBlockByNumber(int(message.line)).text().contains(QStringLiteral("walk")));
}

void StudioWindowTest::closingWithAChangeAsks()
{
    openTheWork();
    CodeDocument *document = showFromTree(QStringLiteral("knight.def"));
    QVERIFY(document);
    goToEndOfLine(QStringLiteral("power = 3000"));
    QTest::keyClicks(codeEditor(), QStringLiteral(" # kept"));
    {
        ScriptedAnswerer user({QMessageBox::No});
        QVERIFY(!m_studio->window->close());
        QCOMPARE(user.prompts().size(), 1);
        QCOMPARE(user.prompts().first().title, QStringLiteral("Discard changes?"));
        QCOMPARE(user.prompts().first().defaultButton, QMessageBox::No);
    }
    QVERIFY(m_studio->window->isVisible());
    QCOMPARE(m_studio->window->project(), document->project());
    QVERIFY(document->isModified());
    QVERIFY(document->toString().contains(QStringLiteral("power = 3000 # kept")));
    QVERIFY(!readFile(m_work + QStringLiteral("/knight/knight.def")).contains("# kept"));

    // Closing the work alone asks the same; Yes lets it go, and nothing is written.
    ScriptedAnswerer user({QMessageBox::Yes});
    QVERIFY(chooseFromMenu(m_studio->window.get(), "menu_file", "file_close"));
    QCOMPARE(user.prompts().size(), 1);
    QVERIFY(!m_studio->window->project());
    QCOMPARE(m_studio->host->projectCount(), 0u);
    QVERIFY(m_studio->window->projectTree()->model() == nullptr);
    QVERIFY(!readFile(m_work + QStringLiteral("/knight/knight.def")).contains("# kept"));
}

void StudioWindowTest::sessionAndOptionsSurviveARestart()
{
    openTheWork();
    QVERIFY(showFromTree(QStringLiteral("knight.def")));
    QVERIFY(showFromTree(QStringLiteral("knight.lua")));
    QAction *bar = m_studio->host->action("view_code_bar");
    QVERIFY(bar && bar->isChecked());
    bar->trigger(); // the code tool bar hidden: an option of the host
    m_studio->window->resize(1000, 700);
    QTRY_COMPARE(m_studio->window->size(), QSize(1000, 700));
    m_studio->window->dock(QStringLiteral("dock_project"))->hide();
    QVERIFY(m_studio->window->close());
    m_studio.reset();

    startStudio();
    QVERIFY(m_studio->window->restoreSession());
    QVERIFY(m_studio->window->project());
    // The project file, shown as the work opened, then the two the user opened.
    const QStringList files = m_studio->window->openFiles();
    QCOMPARE(files.size(), 3);
    QCOMPARE(QFileInfo(files.at(0)).fileName(), QStringLiteral("knight.ovp"));
    QCOMPARE(QFileInfo(files.at(1)).fileName(), QStringLiteral("knight.def"));
    QCOMPARE(QFileInfo(files.at(2)).fileName(), QStringLiteral("knight.lua"));
    CodeWorkspace *workspace = m_studio->window->codeEditors()->workspace();
    QCOMPARE(QFileInfo(workspace->document()->fileName()).fileName(), QStringLiteral("knight.lua"));
    QVERIFY(!m_studio->host->action("view_code_bar")->isChecked());
    QVERIFY(workspace->toolBar()->isHidden());
    QCOMPARE(m_studio->window->size(), QSize(1000, 700));
    QVERIFY(!m_studio->window->dock(QStringLiteral("dock_project"))->isVisible());
    QCOMPARE(m_studio->window->recentWorks().size(), 1);
    QCOMPARE(m_studio->window->recentWorks().first(), QDir::cleanPath(m_work + QStringLiteral("/knight/knight.ovp")));
}

void StudioWindowTest::badWorks_data()
{
    QTest::addColumn<QString>("chosen");   // below the test's folder
    QTest::addColumn<QByteArray>("bytes"); // written there first
    QTest::addColumn<QString>("reason");
    QTest::newRow("folder without a project") << "empty/notes.txt" << QByteArray("just notes\n") << "no project file in this directory";
    QTest::newRow("garbage project file") << "garbage/broken.ovp" << QByteArray("\x00\xff\x13garbage\x01", 11) << "broken.ovp";
}

void StudioWindowTest::badWorks()
{
    QFETCH(QString, chosen);
    QFETCH(QByteArray, bytes);
    QFETCH(QString, reason);
    openTheWork();
    Project *before = m_studio->window->project();
    const QString title = m_studio->window->windowTitle();
    const QString path = m_dir->filePath(chosen);
    QVERIFY(writeFile(path, bytes));

    ScriptedAnswerer user({QMessageBox::Ok});
    answerFileDialog(path);
    QVERIFY(chooseFromMenu(m_studio->window.get(), "menu_file", "file_open"));
    QCOMPARE(user.prompts().size(), 1);
    QCOMPARE(user.prompts().first().title, QStringLiteral("Open work"));
    QCOMPARE(user.prompts().first().icon, QMessageBox::Warning);
    QVERIFY2(user.prompts().first().text.contains(reason), qPrintable(user.prompts().first().text));
    // Nothing else changed: the open work, its tree, the title, the file on disk.
    QCOMPARE(m_studio->window->project(), before);
    QCOMPARE(m_studio->host->projectCount(), 1u);
    QCOMPARE(m_studio->window->projectTree()->model(), static_cast<QAbstractItemModel *>(before->parentProject()));
    QCOMPARE(m_studio->window->windowTitle(), title);
    QCOMPARE(readFile(path), bytes);
    QCOMPARE(m_studio->window->recentWorks().size(), 1);
}

void StudioWindowTest::garbagePluginsLeaveAWorkingWindow()
{
    // One locator at a time: the test's own goes for one over libraries of garbage.
    m_locator.reset();
    const QString junk = m_dir->filePath(QStringLiteral("junk"));
    QVERIFY(writeFile(junk + QStringLiteral("/libjunk.so"), QByteArray(4096, '\x7f')));
    QVERIFY(writeFile(junk + QStringLiteral("/libengine.so"), QByteArray("\x7f" "ELF but nothing more")));
    m_locator = std::make_unique<ProjectLocator>(junk);
    startStudio();
    {
        ScriptedAnswerer user({QMessageBox::Ok});
        m_studio->window->reportEngines();
        QCOMPARE(user.prompts().size(), 1);
        QCOMPARE(user.prompts().first().title, QStringLiteral("No engine"));
        QVERIFY(user.prompts().first().text.contains(junk));
    }
    // The window still does its work: a work can't be opened, and says why; the rest answers.
    ScriptedAnswerer user({QMessageBox::Ok, QMessageBox::Ok});
    QVERIFY(!m_studio->window->openWork(m_work));
    QVERIFY(!m_studio->window->project());
    QVERIFY(chooseFromMenu(m_studio->window.get(), "menu_help", "help_about"));
    QCOMPARE(user.prompts().size(), 2);
    QCOMPARE(user.prompts().at(0).title, QStringLiteral("Open work"));
    QVERIFY(user.prompts().at(1).text.contains(QStringLiteral("No plug-ins are loaded.")));
    QVERIFY(m_studio->window->close());
}

void StudioWindowTest::fileThatCantBeWrittenLandsInSaveAs()
{
    openTheWork();
    CodeDocument *document = showFromTree(QStringLiteral("knight.def"));
    QVERIFY(document);
    goToEndOfLine(QStringLiteral("defence = 100"));
    QTest::keyClicks(codeEditor(), QStringLiteral("0"));
    // Where the file was stands a folder now, which no save can write over.
    const QString own = document->fileName();
    document->pauseWatch(true);
    QVERIFY(QFile::remove(own));
    QVERIFY(QDir().mkpath(own));
    QVERIFY(writeFile(own + QStringLiteral("/inside.txt"), "kept"));
    const QString rescue = m_dir->filePath(QStringLiteral("rescued.def"));
    ScriptedAnswerer user({QMessageBox::No});
    answerFileDialog(rescue);
    QVERIFY(clickToolButton(m_studio->window.get(), "bar_file", "file_save"));
    QCOMPARE(user.prompts().size(), 1);
    QCOMPARE(user.prompts().first().title, QStringLiteral("External file!"));
    QTRY_VERIFY(readFile(rescue).contains("    defence = 1000\r\n"));
    QCOMPARE(document->fileName(), rescue);
    QVERIFY(QFileInfo(own).isDir());
    QCOMPARE(readFile(own + QStringLiteral("/inside.txt")), QByteArray("kept"));
}

void StudioWindowTest::findAndReplaceAcrossTheProject()
{
    openTheWork();
    QVERIFY(showFromTree(QStringLiteral("knight.lua")));
    QVERIFY(chooseFromMenu(m_studio->window.get(), "menu_edit", "edit_find"));
    auto *dialog = m_studio->window->findChild<QDialog *>(QStringLiteral("studio_find_dialog"));
    QVERIFY(dialog);
    QTRY_VERIFY(dialog->isVisible());
    auto *find = dialog->findChild<QLineEdit *>(QStringLiteral("find_text"));
    auto *hits = dialog->findChild<QTreeWidget *>(QStringLiteral("find_hits"));
    QTest::keyClicks(find, QStringLiteral("damage = "));
    QTest::mouseClick(dialog->findChild<QPushButton *>(QStringLiteral("find_all")), Qt::LeftButton);
    auto *definitions = dynamic_cast<CodeDocument *>(m_studio->window->project()->file(5));
    QVERIFY(definitions);
    const int count = definitions->toString().count(QStringLiteral("damage = "));
    QVERIFY(count >= 2);
    QCOMPARE(hits->topLevelItemCount(), count);
    const int firstLine = definitions->find(QStringLiteral("damage = ")).blockNumber();
    QCOMPARE(hits->topLevelItem(0)->text(0), QStringLiteral("knight.def:%1").arg(firstLine + 1));

    // A double click on a hit shows its file with the cursor on it.
    QVERIFY(doubleClickRow(hits, hits->model()->index(1, 0)));
    QCOMPARE(m_studio->window->codeEditors()->workspace()->document(), definitions);
    const int secondLine = definitions->find(QStringLiteral("damage = "), definitions->findBlockByNumber(firstLine + 1).position()).blockNumber();
    QCOMPARE(codeEditor()->textCursor().blockNumber(), secondLine);

    auto *replace = dialog->findChild<QLineEdit *>(QStringLiteral("replace_text"));
    QTest::keyClicks(replace, QStringLiteral("harm = "));
    hits->setCurrentItem(hits->topLevelItem(0));
    QTest::mouseClick(dialog->findChild<QPushButton *>(QStringLiteral("replace_one")), Qt::LeftButton);
    QCOMPARE(definitions->toString().count(QStringLiteral("harm = ")), 1);
    QCOMPARE(hits->topLevelItemCount(), count - 1);
    QTest::mouseClick(dialog->findChild<QPushButton *>(QStringLiteral("replace_all")), Qt::LeftButton);
    QCOMPARE(definitions->toString().count(QStringLiteral("damage = ")), 0);
    QCOMPARE(definitions->toString().count(QStringLiteral("harm = ")), count);
    QCOMPARE(hits->topLevelItemCount(), 0);
    // Replacing is an edit like typing: the file is changed, not yet saved, and undone.
    QVERIFY(definitions->isModified());
    QVERIFY(readFile(m_work + QStringLiteral("/knight/knight.def")).contains("damage = "));
    dialog->close();
}

void StudioWindowTest::backupAndRestore()
{
    openTheWork();
    const QString path = m_work + QStringLiteral("/knight/knight.def");
    const QByteArray original = readFile(path);
    whenShown<QInputDialog>([](QInputDialog *dialog) {
        dialog->setTextValue(QStringLiteral("before-the-change"));
        dialog->accept();
    });
    QVERIFY(chooseFromMenu(m_studio->window.get(), "menu_file", "file_backup"));
    const QFileInfoList backups = QDir(m_work + QStringLiteral("/backup")).entryInfoList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot);
    QCOMPARE(backups.size(), 1);
    QVERIFY2(backups.first().fileName().contains(QStringLiteral("before-the-change")), qPrintable(backups.first().fileName()));

    // The file changes on disk behind the studio's back; the backup brings it back.
    auto *definitions = dynamic_cast<CodeDocument *>(m_studio->window->project()->file(5));
    QVERIFY(definitions);
    QVERIFY(m_studio->window->openFile(QStringLiteral("knight/knight.def")));
    definitions->pauseWatch(true);
    QVERIFY(writeFile(path, "[Character: knight]\r\n    life = 1\r\n"));
    QString offered;
    whenShown<QInputDialog>([&offered](QInputDialog *dialog) {
        offered = dialog->comboBoxItems().join(QLatin1Char('|'));
        dialog->accept();
    });
    ScriptedAnswerer user({QMessageBox::Yes});
    QVERIFY(chooseFromMenu(m_studio->window.get(), "menu_file", "file_restore"));
    QCOMPARE(offered, backups.first().isDir() ? backups.first().fileName() : backups.first().completeBaseName());
    QCOMPARE(user.prompts().size(), 1);
    QCOMPARE(user.prompts().first().defaultButton, QMessageBox::No);
    QCOMPARE(readFile(path), original);
    // The file open in the editor is the restored one.
    const QString shown = m_studio->window->codeEditors()->workspace()->editor()->toPlainText();
    QVERIFY2(shown.contains(QStringLiteral("life = 1000")) && shown.contains(QStringLiteral("[Move: punch]")), qPrintable(shown));
    definitions->pauseWatch(false);
}

void StudioWindowTest::scriptsWriteToTheOutputDock()
{
    openTheWork();
    const QString good = m_dir->filePath(QStringLiteral("good.lua"));
    QVERIFY(writeFile(good, "#!/usr/bin/env lua\nprint('project', project.name)\nprint(1 + 2)\n"));
    QPlainTextEdit *output = m_studio->window->scriptOutput();
    QVERIFY2(m_studio->window->runScript(good), qPrintable(output->toPlainText()));
    QVERIFY(output->isVisible());
    QVERIFY2(output->toPlainText().contains(QStringLiteral("project\tKnight\n3")), qPrintable(output->toPlainText()));

    const QString bad = m_dir->filePath(QStringLiteral("bad.lua"));
    QVERIFY(writeFile(bad, "print('before')\nerror('it broke')\n"));
    QVERIFY(!m_studio->window->runScript(bad));
    QVERIFY2(output->toPlainText().contains(QStringLiteral("before\nbad.lua:2: it broke")), qPrintable(output->toPlainText()));
    QVERIFY(!m_studio->window->runScript(m_dir->filePath(QStringLiteral("missing.lua"))));
    QVERIFY(output->toPlainText().contains(QStringLiteral("missing.lua: ")));
}

void StudioWindowTest::aboutNamesVersionAndPlugins()
{
    startStudio();
    ScriptedAnswerer user({QMessageBox::Ok});
    QVERIFY(chooseFromMenu(m_studio->window.get(), "menu_help", "help_about"));
    QCOMPARE(user.prompts().size(), 1);
    const QString text = user.prompts().first().text;
    QVERIFY2(text.contains(QStringLiteral(OVRA_VERSION)), qPrintable(text));
    QVERIFY2(text.contains(QStringLiteral("Loaded plug-ins:")), qPrintable(text));
    QVERIFY2(text.contains(QStringLiteral("sample"), Qt::CaseInsensitive), qPrintable(text));
}

void StudioWindowTest::filesOfTheCommandLine()
{
    startStudio();
    openTheWork();
    // Relative to the work's root, to the project's folder, or absolute; the last one shown.
    QVERIFY(m_studio->window->openFile(QStringLiteral("knight/knight.lua")));
    QVERIFY(m_studio->window->openFile(QStringLiteral("knight.oan")));
    QVERIFY(m_studio->window->openFile(m_work + QStringLiteral("/knight/knight.def")));
    CodeWorkspace *workspace = m_studio->window->codeEditors()->workspace();
    QCOMPARE(QFileInfo(workspace->document()->fileName()).fileName(), QStringLiteral("knight.def"));
    QCOMPARE(m_studio->window->openFiles().size(), 4); // with the project file shown at the start
    QVERIFY(m_studio->host->action("editor_code")->isChecked());
    // The tree shows which file that is.
    QCOMPARE(m_studio->window->projectTree()->currentIndex().data().toString(), QStringLiteral("knight.def"));
    ScriptedAnswerer user({QMessageBox::Ok});
    QVERIFY(!m_studio->window->openFile(QStringLiteral("knight/nowhere.def")));
    QCOMPARE(user.prompts().size(), 1);
    QVERIFY(user.prompts().first().text.contains(QStringLiteral("is not a file of the project Knight")));
    QCOMPARE(QFileInfo(workspace->document()->fileName()).fileName(), QStringLiteral("knight.def"));
}

void StudioWindowTest::screenshot()
{
    const QString path = m_work + QStringLiteral("/knight/knight.def");
    QByteArray damaged = readFile(path);
    damaged.replace("    gravity = 0.45\r\n", "    gravity = 0.45 %%\r\n");
    QVERIFY(writeFile(path, damaged));
    openTheWork();
    m_studio->window->resize(1280, 800);
    QVERIFY(showFromTree(QStringLiteral("knight.def")));
    QTRY_VERIFY(m_studio->window->messageView()->model()->rowCount() >= 1);
    goToEndOfLine(QStringLiteral("life = 1000"));
    QTRY_VERIFY(!m_studio->window->findChild<QLabel *>(QStringLiteral("status_0"))->text().isEmpty());
    const QImage image = m_studio->window->grab().toImage();
    const QString shot = QCoreApplication::applicationDirPath() + QStringLiteral("/studiowindow.png");
    QVERIFY(image.save(shot));
    qInfo("screenshot: %s", qPrintable(shot));
}

namespace {

struct Run
{
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

// The program itself, run as a user runs it, with the test's settings file; without a
// display of any kind when `headless`.
Run runProgram(const QStringList &arguments, bool headless = false)
{
    QProcess process;
    if (headless) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
            environment.remove(QString::fromLatin1(name));
        process.setProcessEnvironment(environment);
    }
    process.start(QCoreApplication::applicationDirPath() + QStringLiteral("/ovra-studio"), arguments);
    Run run;
    if (!process.waitForFinished(60000)) {
        process.kill();
        process.waitForFinished();
        return run;
    }
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -2;
    run.out = process.readAllStandardOutput();
    run.err = process.readAllStandardError();
    return run;
}

} // namespace

void StudioWindowTest::commandLineTexts_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QStringList>("says"); // on stdout for 0, else on stderr
    QTest::newRow("version") << QStringList{"--version"} << 0 << QStringList{"ovra-studio " OVRA_VERSION "\n"};
    QTest::newRow("help") << QStringList{"--help"} << 0
                          << QStringList{"[WORK|PROJECT] [FILE...]", "--plugins <DIR>", "--settings <FILE>", "--screenshot <FILE>", "--version"};
    QTest::newRow("unknown option") << QStringList{"--colour"} << 2 << QStringList{"Unknown option 'colour'", "--help"};
    QTest::newRow("screenshot without a name") << QStringList{"--screenshot="} << 2 << QStringList{"need a file name"};
}

void StudioWindowTest::commandLineTexts()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QFETCH(QStringList, says);
    // Texts need no window: they come where there is no display at all.
    const Run run = runProgram(QStringList{QStringLiteral("--settings"), m_settingsFile} + arguments, true);
    QCOMPARE(run.exitCode, exitCode);
    const QString text = QString::fromLocal8Bit(exitCode == 0 ? run.out : run.err);
    for (const QString &expected : says)
        QVERIFY2(text.contains(expected), qPrintable(text));
    // Nothing was opened, so nothing was kept.
    QVERIFY(!QFile::exists(m_settingsFile));
}

void StudioWindowTest::commandLineScreenshot()
{
    const QString shot = m_dir->filePath(QStringLiteral("window.png"));
    const QByteArray before = readFile(m_work + QStringLiteral("/knight/knight.def"));
    const Run run = runProgram({QStringLiteral("--settings"), m_settingsFile, QStringLiteral("--plugins"), pluginDir(),
                                QStringLiteral("--screenshot"), shot, m_work, QStringLiteral("knight/knight.def")});
    QVERIFY2(run.exitCode == 0, run.err.constData());
    QImage image(shot);
    QCOMPARE(image.size(), QSize(1280, 800));
    // A painted window, not a blank picture: the text's colours and the frame's greys.
    QSet<QRgb> colours;
    for (int y = 0; y < image.height(); y += 7) {
        for (int x = 0; x < image.width(); x += 7)
            colours.insert(image.pixel(x, y));
    }
    QVERIFY2(colours.size() > 20, qPrintable(QString::number(colours.size())));
    QVERIFY(image.save(QCoreApplication::applicationDirPath() + QStringLiteral("/studiowindow-cli.png")));
    QCOMPARE(readFile(m_work + QStringLiteral("/knight/knight.def")), before);
}

void StudioWindowTest::commandLineStartupTime()
{
    const Run run = runProgram({QStringLiteral("--settings"), m_settingsFile, QStringLiteral("--plugins"), pluginDir(),
                                QStringLiteral("--startup-time"), m_work, QStringLiteral("knight/knight.def")});
    QVERIFY2(run.exitCode == 0, run.err.constData());
    const QStringList lines = QString::fromLocal8Bit(run.out).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QStringList phases;
    double sum = 0;
    for (const QString &line : lines) {
        const QStringList words = line.simplified().split(QLatin1Char(' '));
        QCOMPARE(words.size(), words.first() == QLatin1String("first") ? 4 : 3);
        phases << words.mid(0, words.size() - 2).join(QLatin1Char(' '));
        const double milliseconds = words.at(words.size() - 2).toDouble();
        QVERIFY(milliseconds >= 0);
        if (phases.last() != QLatin1String("total"))
            sum += milliseconds;
        else
            QVERIFY(qAbs(milliseconds - sum) < 0.5);
    }
    QCOMPARE(phases, (QStringList{"application", "plug-ins", "window", "work", "first paint", "total"}));
}

void StudioWindowTest::commandLineScreenshotOfABadWork()
{
    const QString shot = m_dir->filePath(QStringLiteral("none.png"));
    QVERIFY(QDir().mkpath(m_dir->filePath(QStringLiteral("nothing"))));
    const Run run = runProgram({QStringLiteral("--settings"), m_settingsFile, QStringLiteral("--plugins"), pluginDir(),
                                QStringLiteral("--screenshot"), shot, m_dir->filePath(QStringLiteral("nothing"))});
    QCOMPARE(run.exitCode, 1);
    QVERIFY2(run.err.contains("no project file in this directory"), run.err.constData());
    QVERIFY2(run.err.contains("no screenshot taken"), run.err.constData());
    QVERIFY(!QFile::exists(shot));
}

QTEST_MAIN(StudioWindowTest)
#include "tst_studiowindow.moc"
