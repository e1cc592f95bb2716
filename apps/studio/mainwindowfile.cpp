// The File road of the main window: opening a work, showing its files, saving, backups,
// closing, and the list of recent works.
#include "mainwindow.h"
#include "mainwindow_p.h"

#include "codeeditors.h"
#include "findreplacedialog.h"
#include "joblist.h"
#include "studiohost.h"

#include "editors/editor.h"
#include "engine/extension.h"
#include "engine/projectlocator.h"
#include "foundation/filedialogs.h"
#include "foundation/prompt.h"
#include "project/parentproject.h"
#include "project/project.h"
#include "project/projectfile.h"

#include <QAction>
#include <QDir>
#include <QFileInfo>
#include <QInputDialog>
#include <QLabel>
#include <QMenu>
#include <QSettings>
#include <QStackedWidget>

using namespace Ovra;

namespace {

const QString recentKey = QStringLiteral("session/recent");
const int recentCount = 8;

QString cleanPath(const QString &path)
{
    return QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

} // namespace

void MainWindow::openDialog()
{
    const QString start = d->project ? d->project->absolutePath() : d->host->option(QStringLiteral("work_path"), QString()).toString();
    const QString chosen = getOpenFileName(this, tr("Open work or project..."), start, tr("All files (*)"));
    if (chosen.isEmpty())
        return;
    // A file no engine takes for a project stands for the work folder it lies in (the
    // work's mark file, or any other file of it).
    QString path = chosen;
    if (!EngineExtension::forProjectFile(chosen))
        path = QFileInfo(chosen).absolutePath();
    d->host->setOption(QStringLiteral("work_path"), QFileInfo(chosen).absolutePath());
    openWork(path);
}

bool MainWindow::openWork(const QString &path)
{
    QString error;
    QString projectFile;
    if (!d->locator || d->locator->pluginDirectory().isEmpty())
        error = tr("no engine plug-ins were loaded (give their folder with --plugins)");
    else
        projectFile = ProjectLocator::projectFile(path, &error);
    if (!projectFile.isEmpty() && d->project && cleanPath(projectFile) == cleanPath(d->project->fileName()))
        return true;
    Project *opened = projectFile.isEmpty() ? nullptr : d->locator->openProject(projectFile, &error);
    if (!opened) {
        tell(QMessageBox::Warning, tr("Open work"), tr("%1 can't be opened: %2.").arg(QDir::toNativeSeparators(path), error), this);
        return false;
    }
    // The work open now is closed only once the new one is there: a failed open changes
    // nothing, and a user who keeps the old work's changes keeps the old work.
    if (!closeWork()) {
        opened->release();
        return false;
    }
    d->switchProject(opened);
    d->addRecent(cleanPath(projectFile));
    if (ProjectFile *main = opened->mainFile())
        showFile(main);
    return true;
}

ProjectFile *MainWindowPrivate::fileOf(const QString &path) const
{
    if (!project || path.isEmpty())
        return nullptr;
    // A relative name is looked for below the work's root, the project's own folder and
    // the folder the program was started in, in that order.
    QStringList candidates;
    if (QFileInfo(path).isRelative()) {
        candidates << QDir(project->parentProject()->basePath()).filePath(path)
                   << QDir(project->absolutePath()).filePath(path);
    }
    candidates << path;
    const QList<ProjectFile *> files = project->files();
    for (const QString &candidate : qAsConst(candidates)) {
        const QString name = cleanPath(candidate);
        for (ProjectFile *file : files) {
            if (!file->fileName().isEmpty() && cleanPath(file->fileName()) == name)
                return file;
        }
    }
    return nullptr;
}

bool MainWindow::openFile(const QString &path)
{
    ProjectFile *file = d->fileOf(path);
    if (!file) {
        tell(QMessageBox::Warning, tr("Open file"),
             d->project ? tr("%1 is not a file of the project %2.").arg(QDir::toNativeSeparators(path), d->project->name())
                        : tr("%1 can't be shown: no work is open.").arg(QDir::toNativeSeparators(path)),
             this);
        return false;
    }
    return showFile(file);
}

bool MainWindow::showFile(ProjectFile *file)
{
    Project *owner = file ? file->project() : nullptr;
    if (!owner)
        return false;
    const Project::FileTypes types = owner->fileID(file);
    for (int type = 0; type < 32; ++type) {
        if (!(types & (Project::FileTypes(1) << type)))
            continue;
        FileEditor *editor = d->host->editorForFile(file, type);
        if (!editor)
            continue;
        const int index = owner->filesByType(type).indexOf(file);
        if (index >= 0)
            owner->setSelectedFile(type, uint(index));
        editor->setCurrentFile(file);
        d->host->activateEditor(editor);
        d->showInTree(file);
        const QString name = cleanPath(file->fileName());
        d->openFiles.removeAll(name);
        d->openFiles.append(name);
        return true;
    }
    tell(QMessageBox::Information, tr("Open file"),
         tr("The studio has no editor for %1 yet.").arg(file->displayName()), this);
    return false;
}

bool MainWindow::closeWork()
{
    if (!d->project)
        return true;
    // Every editor asks about its own files; the first No keeps all of it open.
    for (FileEditor *editor : d->host->editors()) {
        if (!editor->canDiscard(d->project))
            return false;
    }
    d->switchProject(nullptr);
    return true;
}

void MainWindow::closeWorkAction()
{
    closeWork();
}

void MainWindowPrivate::switchProject(Project *next)
{
    if (project) {
        for (FileEditor *editor : host->editors())
            editor->setCurrentFile(nullptr);
        host->removeProject(project);
        Project *closing = project;
        project = nullptr;
        setTreeModels();
        closing->release();
    }
    if (auto *find = q->findChild<FindReplaceDialog *>())
        find->clear();
    project = next;
    openFiles.clear();
    if (project)
        host->addProject(project);
    // The host tells every editor of the new engine and project.
    host->setEngine(project ? project->parentProject()->engine() : nullptr);
    host->setCurrentProject(project);
    setTreeModels();
    if (!project)
        showWorkspace(nullptr);
    updateTitle();
}

QString MainWindowPrivate::workName() const
{
    return project ? project->name() : QString();
}

void MainWindow::save()
{
    if (FileEditor *editor = d->currentFileEditor())
        editor->save();
}

void MainWindow::saveAll()
{
    if (d->project)
        d->project->parentProject()->save(d->host->jobs());
}

void MainWindow::saveAs()
{
    if (FileEditor *editor = d->currentFileEditor())
        editor->saveAs();
}

void MainWindow::backup()
{
    if (!d->project)
        return;
    bool ok = false;
    const QString name = QInputDialog::getText(this, tr("Backup"), tr("A name for the backup (the date goes before it):"),
                                               QLineEdit::Normal, d->project->name(), &ok);
    if (!ok)
        return;
    Job *job = d->host->jobs()->start(tr("Backup"), 0);
    if (!d->project->parentProject()->backup(name, job))
        tell(QMessageBox::Warning, tr("Backup"), tr("The backup could not be written."), this);
}

void MainWindow::restoreBackup()
{
    if (!d->project)
        return;
    const QString folder = QDir(d->project->parentProject()->basePath()).filePath(QStringLiteral("backup"));
    QStringList names;
    for (const QFileInfo &entry : QDir(folder).entryInfoList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot, QDir::Time)) {
        const QString name = entry.isDir() ? entry.fileName() : entry.completeBaseName();
        if (entry.isDir() || entry.suffix() == QLatin1String("zip"))
            names << name;
    }
    if (names.isEmpty()) {
        tell(QMessageBox::Information, tr("Restore from a backup"), tr("This work has no backups yet."), this);
        return;
    }
    bool ok = false;
    const QString name = QInputDialog::getItem(this, tr("Restore from a backup"), tr("The backup to bring back:"), names, 0, false, &ok);
    if (!ok)
        return;
    const QMessageBox::StandardButton answer =
        ask({QMessageBox::Question, tr("Restore from a backup"),
             tr("The files of the work are written over with those of %1. Go on?").arg(name),
             QMessageBox::Yes | QMessageBox::No, QMessageBox::No, this});
    if (answer != QMessageBox::Yes)
        return;
    Job *job = d->host->jobs()->start(tr("Restoring %1").arg(name), 0);
    if (!d->project->parentProject()->restoreBackup(name, job))
        tell(QMessageBox::Warning, tr("Restore from a backup"),
             tr("The backup %1 could not be brought back; the files of the work are as they were.").arg(name), this);
}

QStringList MainWindow::recentWorks() const
{
    return d->host->settings()->value(recentKey).toStringList();
}

QStringList MainWindow::openFiles() const
{
    return d->openFiles;
}

void MainWindowPrivate::addRecent(const QString &path)
{
    QStringList recent = q->recentWorks();
    recent.removeAll(path);
    recent.prepend(path);
    while (recent.size() > recentCount)
        recent.removeLast();
    host->settings()->setValue(recentKey, recent);
    updateRecentMenu();
}

void MainWindowPrivate::updateRecentMenu()
{
    recentMenu->clear();
    const QStringList recent = q->recentWorks();
    for (int i = 0; i < recent.size(); ++i) {
        const QString path = recent.at(i);
        QAction *action = recentMenu->addAction(QStringLiteral("&%1 %2").arg(i + 1).arg(QDir::toNativeSeparators(path)));
        action->setObjectName(QStringLiteral("recent_%1").arg(i));
        QObject::connect(action, &QAction::triggered, q, [this, path] { q->openWork(path); });
    }
    recentMenu->setEnabled(!recent.isEmpty());
}
