// The docks of the main window: the work's tree, the messages of its files, the place of
// the side editors, and the output of the scripts the user runs.
#include "mainwindow.h"
#include "mainwindow_p.h"

#include "studiohost.h"

#include "editors/editor.h"
#include "editors/extraeditor.h"
#include "editors/animation/animationeditor.h"
#include "editors/organizer/thumbnailseditor.h"
#include "editors/palette/paletteeditor.h"
#include "editors/sprite/spriteeditor.h"
#include "engine/script/script.h"
#include "engine/script/scriptclasses.h"
#include "foundation/filedialogs.h"
#include "foundation/messages.h"
#include "foundation/prompt.h"
#include "project/parentproject.h"
#include "project/project.h"
#include "project/projectfile.h"

#include <QAction>
#include <QDockWidget>
#include <QFile>
#include <QFileInfo>
#include <QHeaderView>
#include <QIdentityProxyModel>
#include <QLabel>
#include <QPlainTextEdit>
#include <QTreeView>

using namespace Ovra;

namespace {

// The message table with the names of its columns.
class MessageColumns : public QIdentityProxyModel
{
public:
    using QIdentityProxyModel::QIdentityProxyModel;

    QVariant headerData(int section, Qt::Orientation orientation, int role) const override
    {
        if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
            return QIdentityProxyModel::headerData(section, orientation, role);
        switch (section) {
        case 0: return MainWindow::tr("Message");
        case 1: return MainWindow::tr("File");
        case 2: return MainWindow::tr("Line");
        default: return QVariant();
        }
    }
};

QDockWidget *makeDock(MainWindow *window, const QString &name, const QString &title, QWidget *content,
                      Qt::DockWidgetArea area)
{
    auto *dock = new QDockWidget(title, window);
    dock->setObjectName(name);
    dock->setWidget(content);
    window->addDockWidget(area, dock);
    return dock;
}

} // namespace

void MainWindowPrivate::createDocks()
{
    tree = new QTreeView;
    tree->setObjectName(QStringLiteral("studio_project_tree"));
    tree->setHeaderHidden(true);
    tree->setEditTriggers(QAbstractItemView::NoEditTriggers);
    QObject::connect(tree, &QTreeView::doubleClicked, q, [this](const QModelIndex &index) { treeActivated(index); });
    projectDock = makeDock(q, QStringLiteral("dock_project"), MainWindow::tr("Project"), tree, Qt::LeftDockWidgetArea);

    messages = new QTreeView;
    messages->setObjectName(QStringLiteral("studio_messages"));
    messages->setRootIsDecorated(false);
    messages->setEditTriggers(QAbstractItemView::NoEditTriggers);
    messages->setModel(new MessageColumns(messages));
    messages->header()->setStretchLastSection(false);
    QObject::connect(messages, &QTreeView::doubleClicked, q, [this](const QModelIndex &index) { messageActivated(index); });
    messagesDock = makeDock(q, QStringLiteral("dock_messages"), MainWindow::tr("Messages"), messages, Qt::BottomDockWidgetArea);

    noSideEditor = new QLabel(MainWindow::tr("No tool is open."));
    noSideEditor->setObjectName(QStringLiteral("studio_no_side_editor"));
    noSideEditor->setAlignment(Qt::AlignCenter);
    sideDock = makeDock(q, QStringLiteral("dock_side"), MainWindow::tr("Tools"), noSideEditor, Qt::RightDockWidgetArea);
    sideDock->hide();

    output = new QPlainTextEdit;
    output->setObjectName(QStringLiteral("studio_script_output"));
    output->setReadOnly(true);
    outputDock = makeDock(q, QStringLiteral("dock_output"), MainWindow::tr("Script output"), output, Qt::BottomDockWidgetArea);
    q->tabifyDockWidget(messagesDock, outputDock);
    messagesDock->raise();
}

void MainWindowPrivate::createGraphicsDocks()
{
    ThumbnailsEditor *explorer = graphicsEditors->explorer();
    explorerDock = makeDock(q, QStringLiteral("dock_explorer"), MainWindow::tr("Sprite explorer"), explorer->widget(),
                            Qt::RightDockWidgetArea);
    explorerDock->hide();
    PaletteEditor *palettes = graphicsEditors->palettes();
    palettesDock = makeDock(q, QStringLiteral("dock_palettes"), palettes->displayName(), palettes->widget(),
                            Qt::RightDockWidgetArea);
    // The dock's title names the editor: its own heading would say it twice.
    if (auto *heading = palettes->widget()->findChild<QLabel *>(QStringLiteral("pal_title")))
        heading->hide();
    // The palettes share the side editors' place, one tab each, above the explorer.
    q->tabifyDockWidget(sideDock, palettesDock);
    palettesDock->hide();
    // The sprite painter's switch of the explorer shows or hides the explorer's dock; the
    // painter starts with its explorer beside it.
    if (QAction *shown = host->action("spr_explorer")) {
        shown->setChecked(true);
        QObject::connect(shown, &QAction::toggled, q, [this] { placeExplorer(host->currentEditor()); });
    }
}

void MainWindowPrivate::placeExplorer(Editor *active)
{
    const bool animations = active && graphicsEditors && active == graphicsEditors->animationEditor();
    const bool sprites = active && graphicsEditors && active == graphicsEditors->spriteEditor();
    QAction *explorerSwitch = host->action("spr_explorer");
    const bool uses = animations || (sprites && explorerSwitch && explorerSwitch->isChecked());
    explorerDock->setVisible(uses);
    ThumbnailsEditor *explorer = graphicsEditors ? graphicsEditors->explorer() : nullptr;
    if (explorer && uses != explorer->isActive()) {
        if (uses)
            explorer->activate();
        else
            explorer->deactivate();
    }
    PaletteEditor *palettes = graphicsEditors ? graphicsEditors->palettes() : nullptr;
    if (palettes && sprites != palettes->isActive()) {
        palettesDock->setVisible(sprites);
        if (sprites) {
            palettes->activate();
            palettesDock->raise();
        } else {
            palettes->deactivate();
        }
    }
}

void MainWindowPrivate::setTreeModels()
{
    auto *columns = static_cast<QIdentityProxyModel *>(messages->model());
    tree->setModel(project ? project->parentProject() : nullptr);
    columns->setSourceModel(project ? project->messages() : nullptr);
    if (project) {
        // The project's own folder open, the rest as the user leaves it.
        const QModelIndex root = tree->model()->index(0, 0);
        tree->expand(root);
        for (int row = 0; row < tree->model()->rowCount(root); ++row)
            tree->expand(tree->model()->index(row, 0, root));
        // The text takes the room the file and the line leave.
        messages->header()->setSectionResizeMode(0, QHeaderView::Stretch);
        messages->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
        messages->header()->setSectionResizeMode(2, QHeaderView::ResizeToContents);
    }
}

void MainWindowPrivate::showInTree(ProjectFile *file)
{
    ParentProject *work = project ? project->parentProject() : nullptr;
    const ParentProject::Path *node = work ? work->filePath(file->fileName()) : nullptr;
    if (!node)
        return;
    const QModelIndex index = work->indexOf(node);
    tree->setCurrentIndex(index);
    tree->scrollTo(index);
}

void MainWindowPrivate::treeActivated(const QModelIndex &index)
{
    if (!project)
        return;
    ParentProject *work = project->parentProject();
    const ParentProject::Path *node = work->itemPath(index);
    if (!node || !node->isFile())
        return;
    for (ProjectFile *file : project->files()) {
        if (!file->fileName().isEmpty() && work->filePath(file->fileName()) == node) {
            q->showFile(file);
            return;
        }
    }
}

void MainWindowPrivate::messageActivated(const QModelIndex &index)
{
    if (!project || !index.isValid())
        return;
    const Messages *list = nullptr;
    const Message message = project->messages()->messageAt(index.row(), list);
    ProjectFile *file = list ? list->file() : nullptr;
    if (!file || !q->showFile(file))
        return;
    if (FileEditor *editor = currentFileEditor())
        editor->navigateTo(message.line, message.column);
}

void MainWindowPrivate::showExtraEditor(ExtraEditor *editor)
{
    // The explorer and the palettes have docks of their own, placed with their editors.
    if (graphicsEditors && (editor == graphicsEditors->explorer() || editor == graphicsEditors->palettes())) {
        placeExplorer(host->currentEditor());
        return;
    }
    QWidget *shown = editor ? editor->widget() : nullptr;
    if (sideDock->widget() != (shown ? shown : noSideEditor)) {
        // The dock gives its widget back instead of ending it: the editor owns its own.
        if (QWidget *before = sideDock->widget(); before && before != noSideEditor)
            before->setParent(nullptr);
        sideDock->setWidget(shown ? shown : noSideEditor);
    }
    sideDock->setVisible(shown != nullptr);
    if (editor && !editor->isActive())
        editor->activate();
}

void MainWindowPrivate::appendOutput(const QString &text)
{
    output->appendPlainText(text);
}

QTreeView *MainWindow::projectTree() const
{
    return d->tree;
}

QTreeView *MainWindow::messageView() const
{
    return d->messages;
}

QPlainTextEdit *MainWindow::scriptOutput() const
{
    return d->output;
}

QDockWidget *MainWindow::dock(const QString &name) const
{
    return findChild<QDockWidget *>(name);
}

void MainWindow::runScriptDialog()
{
    const QString start = d->host->option(QStringLiteral("script_path"), d->project ? d->project->absolutePath() : QString()).toString();
    const QString name = getOpenFileName(this, tr("Run Lua script..."), start, tr("Lua scripts (*.lua);;All files (*)"));
    if (name.isEmpty())
        return;
    d->host->setOption(QStringLiteral("script_path"), QFileInfo(name).absolutePath());
    runScript(name);
}

bool MainWindow::runScript(const QString &fileName)
{
    d->outputDock->show();
    d->outputDock->raise();
    d->appendOutput(tr("--- %1").arg(QFileInfo(fileName).fileName()));
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        d->appendOutput(tr("%1: %2").arg(fileName, file.errorString()));
        return false;
    }
    QByteArray source = file.readAll();
    // A first line "#!..." makes a script a program of its own; as a comment it keeps
    // the line numbers.
    if (source.startsWith("#!"))
        source.replace(0, 2, "--");

    // The libraries of the command-line tool's run: the safe set with io and os, so that
    // a script can read lists and write reports; no native modules, no debug library.
    Script::State state;
    state.openLibraries(Script::State::SafeLibraries | Script::State::IoLibrary | Script::State::OsLibrary);
    Script::Table globals = state.globals();
    registerScriptClasses(globals);
    registerEngineScriptClasses(state);
    if (d->project)
        globals.set("project", d->project);
    globals.set("arg", QStringList());
    // print() of a script run from the studio writes its line into the output dock.
    state.setPrint([this](const QString &line) { d->appendOutput(line); });

    QString error;
    if (!state.run(QString::fromUtf8(source), QFileInfo(fileName).fileName(), &error)) {
        const QLatin1String prefix("lua: error: ");
        if (error.startsWith(prefix))
            error.remove(0, prefix.size());
        d->appendOutput(error);
        return false;
    }
    return true;
}
