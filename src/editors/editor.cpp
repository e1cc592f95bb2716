#include "editors/editor.h"

#include "engine/engine.h"
#include "foundation/filedialogs.h"
#include "foundation/filesystemarchive.h"
#include "foundation/interface.h"
#include "foundation/progress.h"
#include "foundation/prompt.h"
#include "project/parentproject.h"
#include "project/project.h"
#include "project/projectfile.h"

#include <QAction>
#include <QFileInfo>
#include <QRegularExpression>

namespace Ovra {
namespace {

Engine *engineOf(const Project *project)
{
    const ParentProject *parent = project ? project->parentProject() : nullptr;
    return parent ? parent->engine() : nullptr;
}

QWidget *dialogParent(Interface *interface)
{
    return interface ? interface->mainWidget() : nullptr;
}

// A question whose safe answer, and default, is No.
bool askYesNo(const QString &title, const QString &text, QMessageBox::Icon icon, QWidget *parent)
{
    Prompt question;
    question.icon = icon;
    question.title = title;
    question.text = text;
    question.buttons = QMessageBox::Yes | QMessageBox::No;
    question.defaultButton = QMessageBox::No;
    question.parent = parent;
    return ask(question) == QMessageBox::Yes;
}

} // namespace

Editor::Editor()
    : m_interface(Interface::instance())
{
}

void Editor::release()
{
    deleteLater();
}

void Editor::activate()
{
    m_active = true;
}

void Editor::deactivate()
{
    m_active = false;
}

void Editor::retranslate()
{
}

void Editor::projectSwitched(Project *)
{
}

void Editor::reconfig()
{
}

void Editor::setVisible(bool shown)
{
    emit visible(shown);
}

void Editor::setWritable(bool canWrite)
{
    emit writable(canWrite);
}

void Editor::switchToThis()
{
    if (!m_active && m_interface)
        m_interface->activateEditor(this);
}

// ---- file editors ----------------------------------------------------------------------

bool FileEditor::isModified() const
{
    return m_currentFile && m_currentFile->isModified();
}

bool FileEditor::canDiscard(const ProjectFile *file)
{
    if (!file || (file->capabilities() & ProjectFile::SharedDocument) || !file->isModified())
        return true;
    return askYesNo(tr("Discard changes?"),
                    tr("Do you want to discard the changes made in %1?").arg(QString::fromLatin1(name())),
                    QMessageBox::Question, dialogParent(m_interface));
}

bool FileEditor::canDiscard(Project *project)
{
    if (!project && m_interface)
        project = m_interface->currentProject();
    if (!project)
        return true;
    bool all = true;
    for (const ProjectFile *file : project->filesByType(fileType()))
        all = canDiscard(file) && all;
    return all;
}

bool FileEditor::canClose(const ProjectFile *)
{
    return true;
}

void FileEditor::navigateTo(uint, uint)
{
}

void FileEditor::setCurrentFile(ProjectFile *file)
{
    m_currentFile = file;
}

QStringList FileEditor::filePatterns() const
{
    const Project *project = m_interface ? m_interface->currentProject() : nullptr;
    if (m_currentFile && m_currentFile->project())
        project = m_currentFile->project();
    const Engine *engine = engineOf(project);
    if (!engine)
        return QStringList();
    // Engines name a type's filter as a dialog does, "Definitions (*.def)", or give
    // the bare patterns.
    QString filter = engine->singleFileFilters(fileType());
    const int open = filter.lastIndexOf(QLatin1Char('('));
    const int close = filter.lastIndexOf(QLatin1Char(')'));
    if (open >= 0 && close > open)
        filter = filter.mid(open + 1, close - open - 1);
    static const QRegularExpression separators(QStringLiteral("[\\s;]+"));
    return filter.split(separators, Qt::SkipEmptyParts);
}

QString FileEditor::pathOption() const
{
    return QString::fromLatin1(name()) + QLatin1String("_path");
}

QString FileEditor::startDirectory() const
{
    const Project *project = m_currentFile && m_currentFile->project() ? m_currentFile->project()
                             : m_interface                           ? m_interface->currentProject()
                                                                     : nullptr;
    if (!project)
        return QString();
    const QString own = project->option(pathOption()).toString();
    return own.isEmpty() ? project->option(QStringLiteral("project_path")).toString() : own;
}

void FileEditor::create()
{
    Project *project = m_interface ? m_interface->currentProject() : nullptr;
    Engine *engine = engineOf(project);
    ProjectFile *file = engine ? engine->createFile(fileType(), project) : nullptr;
    if (!file)
        return;
    if (!project->addFile(file, fileType())) {
        file->release();
        return;
    }
    switchToThis();
    contentsChanged();
}

void FileEditor::open()
{
    Project *project = m_interface ? m_interface->currentProject() : nullptr;
    const QStringList patterns = filePatterns();
    if (!project || patterns.isEmpty())
        return;
    const QString filter = QStringLiteral("%1 (%2)").arg(action() ? action()->text() : QString(), patterns.join(QLatin1Char(' ')));
    const QString name = getOpenFileName(dialogParent(m_interface), tr("Open %1...").arg(QString::fromLatin1(this->name())),
                                         startDirectory(), filter);
    if (name.isEmpty())
        return;
    const bool inProject = name.startsWith(project->absolutePath());
    Engine *engine = engineOf(project);
    ProjectFile *file = engine ? engine->createFile(fileType(), project) : nullptr;
    if (!file)
        return;
    if (!project->addFile(file, fileType())) {
        file->release();
        return;
    }
    uint flags = 0;
    if (!inProject
        && askYesNo(tr("External file!"),
                    tr("This file isn't a child of the project directory, so will be ignored on 'Run in engine', "
                       "'Backup' and 'Save as' functions. Do you want to load it as copy?\nNote: As copy, if you "
                       "save it the previous file will be overwritten!"),
                    QMessageBox::Warning, dialogParent(m_interface)))
        flags = ProjectFile::Foreign;
    if (!file->fromFile(FileSystemArchive::instance(), name, flags, nullptr)) {
        project->removeFile(file);
        return;
    }
    project->setOption(pathOption(), QFileInfo(name).absolutePath(), true);
    switchToThis();
    contentsChanged();
}

void FileEditor::save()
{
    switchToThis();
    ProjectFile *file = m_currentFile;
    if (!file || !file->isModified() || !file->canSave())
        return;
    // A file that was never written has no place yet: the user gives it one.
    if (!file->hasArchive()) {
        saveAs();
        return;
    }
    ProgressProvider *progress = m_interface ? m_interface->progressProvider() : nullptr;
    Job *job = progress ? progress->start(tr("Saving") + QLatin1Char(' ') + file->displayName(), 0) : nullptr;
    uint flags = 0;
    if (file->capabilities() & ProjectFile::AsynchronousSave) {
        flags = ProjectFile::Asynchronous;
        if (job)
            job->setAsynchronous(true);
    }
    if (file->toFile(file->archive(), file->fileName(), flags, job))
        contentsChanged();
    else
        saveAs();
}

void FileEditor::saveAs()
{
    switchToThis();
    if (m_currentFile)
        saveFileAs(m_currentFile, this, m_interface);
}

void FileEditor::saveFileAs(ProjectFile *file, FileEditor *editor, Interface *interface)
{
    if (!file || !editor)
        return;
    const QStringList patterns = editor->filePatterns();
    if (patterns.isEmpty() || !file->canSave())
        return;
    const QString filter = QStringLiteral("%1 (%2);;%3 (*.*)")
                               .arg(editor->action() ? editor->action()->text() : QString(),
                                    patterns.join(QLatin1Char(' ')), tr("All files"));
    QString name = getSaveFileName(dialogParent(interface), tr("Save %1 as...").arg(QString::fromLatin1(editor->name())),
                                   editor->startDirectory(), filter);
    if (name.isEmpty())
        return;
    // With "All files" the name may lack the extension of its kind: the first one comes.
    static const QRegularExpression extension(QStringLiteral("^(?:\\*(\\.[a-zA-Z]+))*$"));
    QStringList extensions;
    for (const QString &pattern : patterns) {
        const QRegularExpressionMatch match = extension.match(pattern);
        if (!match.hasMatch() || match.captured(1).isEmpty()) {
            extensions.clear();
            break;
        }
        extensions << match.captured(1);
    }
    if (!extensions.isEmpty()) {
        bool has = false;
        for (const QString &suffix : qAsConst(extensions))
            has = has || name.endsWith(suffix, Qt::CaseInsensitive);
        if (!has)
            name += extensions.first();
    }
    uint flags = 0;
    const Project *project = file->project();
    if ((!project || !name.startsWith(project->absolutePath()))
        && askYesNo(tr("External file!"),
                    tr("This file isn't a child of the project directory, so will be ignored on 'Run in engine', "
                       "'Backup' and 'Save as' functions. Do you want to save it as copy?\nNote: As copy, we keep "
                       "the reference to the previous file!"),
                    QMessageBox::Warning, dialogParent(interface)))
        flags = ProjectFile::Foreign;
    if (!file->toFile(FileSystemArchive::instance(), name, flags, nullptr))
        tell(QMessageBox::Critical, tr("Save file error!"), tr("An error has occurred while trying to save the file!"),
             dialogParent(interface));
    if (Project *owner = file->project())
        owner->setOption(editor->pathOption(), QFileInfo(name).absolutePath(), true);
    emit editor->modified();
}

void FileEditor::undo()
{
    if (m_currentFile)
        m_currentFile->undo();
}

void FileEditor::redo()
{
    if (m_currentFile)
        m_currentFile->redo();
}

void FileEditor::contentsChanged()
{
    emit modified();
}

} // namespace Ovra
