// The main window's frame: menus, tool bars, status bar, the centre that shows one
// workspace at a time, and what the window keeps of itself between sessions.
#include "mainwindow.h"
#include "mainwindow_p.h"

#include "codeeditors.h"
#include "graphicseditors.h"
#include "jobswidget.h"
#include "optionsdialog.h"
#include "studiohost.h"

#include "editors/code/codeworkspace.h"
#include "editors/graphics/emulatoreditor.h"
#include "editors/graphics/graphicsworkspace.h"
#include "editors/sound/soundworkspace.h"
#include "editors/editor.h"
#include "editors/extraeditor.h"
#include "editors/workspace.h"
#include "engine/engine.h"
#include "engine/extension.h"
#include "engine/extensionmanager.h"
#include "engine/projectlocator.h"
#include "foundation/prompt.h"
#include "foundation/translator.h"
#include "project/parentproject.h"
#include "project/project.h"
#include "render/texture.h"


#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDockWidget>
#include <QFileInfo>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QSettings>
#include <QStackedWidget>
#include <QStatusBar>
#include <QToolBar>
#include <QTreeView>

using namespace Ovra;

namespace {

const QString geometryKey = QStringLiteral("window/geometry");
const QString stateKey = QStringLiteral("window/state");

} // namespace

MainWindow::MainWindow(StudioHost *host, ProjectLocator *locator, QWidget *parent)
    : QMainWindow(parent)
    , d(new MainWindowPrivate(this))
{
    d->host = host;
    d->locator = locator;
    setObjectName(QStringLiteral("studio_main_window"));
    setWindowIcon(host->icon(QStringLiteral("ovra-studio")));
    host->setMainWidget(this);
    // The graphics views read their options with no default of their own.
    OptionsDialog::writeMissingDefaults(host);

    d->centre = new QStackedWidget(this);
    d->centre->setObjectName(QStringLiteral("studio_centre"));
    d->emptyPage = new QLabel(tr("Open a work or a project with File, Open work or project..."), d->centre);
    d->emptyPage->setObjectName(QStringLiteral("studio_empty_page"));
    d->emptyPage->setAlignment(Qt::AlignCenter);
    d->emptyPage->setWordWrap(true);
    d->centre->addWidget(d->emptyPage);
    setCentralWidget(d->centre);

    // The host's signals first: the editors made next already ask it for menus and controls.
    d->connectHost();
    d->createMenus();
    d->createStatusBar();
    d->createDocks();
    d->codeEditors = std::make_unique<CodeEditors>(host, d->centre);
    d->graphicsEditors = std::make_unique<GraphicsEditors>(host, d->codeEditors.get(), d->centre);
    d->soundEditors = std::make_unique<SoundEditors>(host, d->centre);
    // Each workspace is a page of the centre from the start, hidden until its editor comes.
    d->centre->addWidget(d->codeEditors->workspace());
    d->centre->addWidget(d->graphicsEditors->workspace());
    d->centre->addWidget(d->soundEditors->workspace());
    d->createGraphicsDocks();
    d->createViewMenu();
    d->applyViewOptions();
    QObject::connect(host, &StudioHost::reconfigured, this, [this] { d->applyViewOptions(); });
    for (FileEditor *editor : host->editors()) {
        editor->reconfig();
        editor->restoreState();
    }

    resize(1280, 800);
    QSettings *settings = host->settings();
    if (settings->contains(geometryKey))
        restoreGeometry(settings->value(geometryKey).toByteArray());
    if (settings->contains(stateKey)) {
        restoreState(settings->value(stateKey).toByteArray());
    } else {
        // At first start the text gets most of the room.
        resizeDocks({d->projectDock}, {host->scaleToDPI(220)}, Qt::Horizontal);
        resizeDocks({d->messagesDock}, {host->scaleToDPI(150)}, Qt::Vertical);
    }
    d->updateTitle();
}

MainWindow::~MainWindow()
{
    // The projects go before the editors that show their files, and the editors before
    // the workspace they draw into.
    d->switchProject(nullptr);
    d->host->setMainWidget(nullptr);
    d->soundEditors.reset();
    d->graphicsEditors.reset();
    d->codeEditors.reset();
}

StudioHost *MainWindow::host() const
{
    return d->host;
}

CodeEditors *MainWindow::codeEditors() const
{
    return d->codeEditors.get();
}

GraphicsEditors *MainWindow::graphicsEditors() const
{
    return d->graphicsEditors.get();
}

SoundEditors *MainWindow::soundEditors() const
{
    return d->soundEditors.get();
}

Project *MainWindow::project() const
{
    return d->project;
}

QStackedWidget *MainWindow::centre() const
{
    return d->centre;
}

QAction *MainWindowPrivate::makeAction(const char *name, const QString &text, const QKeySequence &shortcut,
                                       void (MainWindow::*slot)())
{
    auto *action = new QAction(host->icon(QString::fromLatin1(name)), text, q);
    action->setObjectName(QString::fromLatin1(name));
    if (slot)
        QObject::connect(action, &QAction::triggered, q, slot);
    // Through the host, so that the user's own shortcut wins over the default.
    host->addAction(action, shortcut);
    return action;
}

void MainWindowPrivate::createMenus()
{
    fileMenu = q->menuBar()->addMenu(MainWindow::tr("&File"));
    fileMenu->setObjectName(QStringLiteral("menu_file"));
    fileBar = q->addToolBar(MainWindow::tr("File"));
    fileBar->setObjectName(QStringLiteral("bar_file"));
    QAction *open = makeAction("file_open", MainWindow::tr("&Open work or project..."), QKeySequence::Open,
                               &MainWindow::openDialog);
    fileMenu->addAction(open);
    recentMenu = fileMenu->addMenu(MainWindow::tr("Recent works"));
    recentMenu->setObjectName(QStringLiteral("menu_recent"));
    fileMenu->addSeparator();
    QAction *save = makeAction("file_save", MainWindow::tr("&Save"), QKeySequence::Save, &MainWindow::save);
    QAction *saveAll = makeAction("file_save_all", MainWindow::tr("Save a&ll"),
                                  QKeySequence(Qt::CTRL + Qt::SHIFT + Qt::Key_S), &MainWindow::saveAll);
    fileMenu->addAction(save);
    fileMenu->addAction(saveAll);
    fileMenu->addAction(makeAction("file_save_as", MainWindow::tr("Save &as..."), QKeySequence(), &MainWindow::saveAs));
    fileMenu->addSeparator();
    fileMenu->addAction(makeAction("file_backup", MainWindow::tr("&Backup..."), QKeySequence(), &MainWindow::backup));
    fileMenu->addAction(makeAction("file_restore", MainWindow::tr("&Restore from a backup..."), QKeySequence(),
                                   &MainWindow::restoreBackup));
    fileMenu->addSeparator();
    fileMenu->addAction(makeAction("file_close", MainWindow::tr("&Close"), QKeySequence(), &MainWindow::closeWorkAction));
    QAction *quit = makeAction("file_quit", MainWindow::tr("&Quit"), QKeySequence(Qt::CTRL + Qt::Key_Q), nullptr);
    QObject::connect(quit, &QAction::triggered, q, &QWidget::close);
    fileMenu->addAction(quit);
    fileBar->addAction(open);
    fileBar->addAction(save);
    fileBar->addAction(saveAll);
    updateRecentMenu();

    createEditMenu();

    viewMenu = q->menuBar()->addMenu(MainWindow::tr("&View"));
    viewMenu->setObjectName(QStringLiteral("menu_view"));
    toolsMenu = q->menuBar()->addMenu(MainWindow::tr("&Tools"));
    toolsMenu->setObjectName(QStringLiteral("menu_tools"));
    toolsMenu->addAction(makeAction("tools_run_script", MainWindow::tr("&Run Lua script..."), QKeySequence(),
                                    &MainWindow::runScriptDialog));
    toolsMenu->addAction(makeAction("tools_options", MainWindow::tr("&Options..."), QKeySequence(),
                                    &MainWindow::showOptions));
    // The steps a user takes most, beside opening and saving.
    fileBar->addSeparator();
    for (const char *name : {"edit_undo", "edit_redo", "edit_find", "tools_run_script"})
        fileBar->addAction(host->action(name));
    helpMenu = q->menuBar()->addMenu(MainWindow::tr("&Help"));
    helpMenu->setObjectName(QStringLiteral("menu_help"));
    helpMenu->addAction(makeAction("help_about", MainWindow::tr("&About"), QKeySequence(), &MainWindow::about));
    // The editors' menus go between Tools and Help.
    hostMenusBefore = helpMenu->menuAction();

    controlBar = q->addToolBar(MainWindow::tr("Editor"));
    controlBar->setObjectName(QStringLiteral("bar_controls"));
}

void MainWindowPrivate::createEditMenu()
{
    editMenu = q->menuBar()->addMenu(MainWindow::tr("&Edit"));
    editMenu->setObjectName(QStringLiteral("menu_edit"));
    struct Step
    {
        const char *name;
        QString text;
        QKeySequence shortcut;
        void (FileEditor::*call)();
    };
    const Step steps[] = {
        {"edit_undo", MainWindow::tr("&Undo"), QKeySequence::Undo, &FileEditor::undo},
        {"edit_redo", MainWindow::tr("&Redo"), QKeySequence::Redo, &FileEditor::redo},
        {"edit_cut", MainWindow::tr("Cu&t"), QKeySequence::Cut, &FileEditor::cut},
        {"edit_copy", MainWindow::tr("&Copy"), QKeySequence::Copy, &FileEditor::copy},
        {"edit_paste", MainWindow::tr("&Paste"), QKeySequence::Paste, &FileEditor::paste},
    };
    for (const Step &step : steps) {
        QAction *action = makeAction(step.name, step.text, step.shortcut, nullptr);
        // The text widgets know these keys themselves; a window-wide shortcut would take
        // them away from a line edit in a dialog or a dock. The menu only shows them.
        action->setShortcutContext(Qt::WidgetShortcut);
        const auto call = step.call;
        QObject::connect(action, &QAction::triggered, q, [this, call] {
            if (FileEditor *editor = currentFileEditor())
                (editor->*call)();
        });
        editMenu->addAction(action);
        if (call == &FileEditor::redo)
            editMenu->addSeparator();
    }
    editMenu->addSeparator();
    editMenu->addAction(makeAction("edit_find", MainWindow::tr("&Find and replace in the project..."),
                                   QKeySequence::Find, &MainWindow::findAndReplace));
}

void MainWindowPrivate::createViewMenu()
{
    workspaceMenu = viewMenu->addMenu(MainWindow::tr("&Editors"));
    workspaceMenu->setObjectName(QStringLiteral("menu_editors"));
    for (FileEditor *editor : host->editors()) {
        QAction *action = editor->action();
        // The host switches to the editor when its action is triggered.
        if (action && !workspaceMenu->actions().contains(action))
            workspaceMenu->addAction(action);
    }
    if (QAction *emulator = graphicsEditors->emulator()->action())
        workspaceMenu->addAction(emulator);
    toolBarMenu = viewMenu->addMenu(MainWindow::tr("&Tool bars"));
    toolBarMenu->setObjectName(QStringLiteral("menu_toolbars"));
    toolBarMenu->addAction(fileBar->toggleViewAction());
    toolBarMenu->addAction(controlBar->toggleViewAction());
    dockMenu = viewMenu->addMenu(MainWindow::tr("&Docks"));
    dockMenu->setObjectName(QStringLiteral("menu_docks"));
    for (QDockWidget *dock : {projectDock, messagesDock, sideDock, explorerDock, palettesDock, outputDock})
        dockMenu->addAction(dock->toggleViewAction());
}

void MainWindowPrivate::createStatusBar()
{
    const int widths[4] = {260, 180, 0, 160};
    for (int field = 0; field < 4; ++field) {
        statusFields[field] = new QLabel(q);
        statusFields[field]->setObjectName(QStringLiteral("status_%1").arg(field));
        statusFields[field]->setMinimumWidth(host->scaleToDPI(widths[field]));
        q->statusBar()->addWidget(statusFields[field], field == 2 ? 1 : 0);
    }
    auto *jobs = new JobsWidget(host->jobs(), q);
    jobs->setObjectName(QStringLiteral("status_jobs"));
    q->statusBar()->addPermanentWidget(jobs);
}

void MainWindowPrivate::connectHost()
{
    QObject::connect(host, &StudioHost::workspaceRequested, q, [this](Workspace *workspace) { showWorkspace(workspace); });
    QObject::connect(host, &StudioHost::engineChanged, q, [this](Engine *engine) {
        if (graphicsEditors)
            graphicsEditors->engineChanged(engine);
    });
    QObject::connect(host, &StudioHost::editorActivated, q, [this](Editor *editor) { placeExplorer(editor); });
    QObject::connect(host, &StudioHost::extraEditorRequested, q, [this](ExtraEditor *editor) { showExtraEditor(editor); });
    QObject::connect(host, &StudioHost::statusTextChanged, q, [this](int field, const QString &text) {
        if (field >= 0 && field < 4)
            statusFields[field]->setText(text);
    });
    QObject::connect(host, &StudioHost::controlAdded, q, [this](const QString &, QWidget *control) {
        if (control)
            controlBar->addWidget(control);
    });
    QObject::connect(host, &StudioHost::menuCreated, q, [this](const QString &name, QMenu *menu) { addHostMenu(name, menu); });
}

void MainWindowPrivate::addHostMenu(const QString &name, QMenu *menu)
{
    if (!menu)
        return;
    if (menu->title().isEmpty()) {
        QString title = name;
        if (!title.isEmpty())
            title[0] = title.at(0).toUpper();
        menu->setTitle(title);
    }
    if (menu->objectName().isEmpty())
        menu->setObjectName(QStringLiteral("menu_") + name);
    if (hostMenusBefore)
        q->menuBar()->insertMenu(hostMenusBefore, menu);
    else
        q->menuBar()->addMenu(menu);
}

void MainWindowPrivate::applyViewOptions()
{
    // Sprites go to the card as textures only while the views draw through OpenGL; the
    // raster road keeps them as pictures.
    Texture::setOpenGLEnabled(!host->option(QStringLiteral("native_painting"), false).toBool());
    graphicsEditors->workspace()->reconfig();
}

void MainWindowPrivate::showWorkspace(Workspace *workspace)
{
    QWidget *page = workspace ? static_cast<QWidget *>(workspace) : emptyPage;
    if (centre->indexOf(page) < 0)
        centre->addWidget(page);
    centre->setCurrentWidget(page);
}

FileEditor *MainWindowPrivate::currentFileEditor() const
{
    return dynamic_cast<FileEditor *>(host->currentEditor());
}

void MainWindowPrivate::updateTitle()
{
    const QString work = workName();
    q->setWindowTitle(work.isEmpty() ? MainWindow::tr("Ovra Studio") : MainWindow::tr("%1 - Ovra Studio").arg(work));
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    // The session is written while the work is still open, so that its files come back.
    saveSession();
    if (!closeWork()) {
        event->ignore();
        return;
    }
    event->accept();
}

void MainWindow::saveSession()
{
    QSettings *settings = d->host->settings();
    settings->setValue(geometryKey, saveGeometry());
    settings->setValue(stateKey, saveState());
    for (FileEditor *editor : d->host->editors())
        editor->saveState();
    if (d->project) {
        settings->setValue(QStringLiteral("session/work"), d->project->fileName());
        settings->setValue(QStringLiteral("session/files"), d->openFiles);
    }
    settings->sync();
}

bool MainWindow::restoreSession()
{
    QSettings *settings = d->host->settings();
    const QString work = settings->value(QStringLiteral("session/work")).toString();
    if (work.isEmpty() || !QFileInfo::exists(work))
        return false;
    const QStringList files = settings->value(QStringLiteral("session/files")).toStringList();
    if (!openWork(work))
        return false;
    for (const QString &file : files) {
        // A file that has gone since is dropped without a word: the session is a
        // convenience, not something the user asked for now.
        if (ProjectFile *opened = d->fileOf(file))
            showFile(opened);
    }
    return true;
}

void MainWindow::reportEngines()
{
    for (Extension *extension : ExtensionManager::list(Extension::Named)) {
        if (dynamic_cast<EngineExtension *>(extension))
            return;
    }
    const QString directory = d->locator && !d->locator->pluginDirectory().isEmpty()
                                  ? d->locator->pluginDirectory()
                                  : ProjectLocator::defaultPluginDirectories().join(QStringLiteral(", "));
    tell(QMessageBox::Warning, tr("No engine"),
         tr("No engine was loaded from the plug-ins in %1. No work can be opened until the studio finds "
            "an engine (give the plug-ins' folder with --plugins).").arg(directory),
         this);
}

void MainWindow::showOptions()
{
    OptionsDialog dialog(d->host, this);
    dialog.exec();
}

void MainWindow::about()
{
    QStringList plugins;
    for (int type = 0; type < Extension::TypeCount; ++type) {
        for (Extension *extension : ExtensionManager::list(Extension::Type(type))) {
            const QString name = QString::fromUtf8(extension->name());
            const QString entry = type == Extension::Named
                                      ? name
                                      : QStringLiteral("%1 (%2)").arg(name, QString::fromLatin1(extension->format()));
            if (!plugins.contains(entry))
                plugins << entry;
        }
    }
    const QString text = tr("Ovra Studio %1\nThe authoring studio over the Ovra library, version %1.\n\n%2")
                             .arg(QStringLiteral(OVRA_VERSION),
                                  plugins.isEmpty() ? tr("No plug-ins are loaded.")
                                                    : tr("Loaded plug-ins:\n%1").arg(plugins.join(QLatin1Char('\n'))));
    tell(QMessageBox::Information, tr("About Ovra Studio"), text, this);
}
