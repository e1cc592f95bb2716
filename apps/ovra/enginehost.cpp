#include "enginehost.h"

#include "engine/extension.h"
#include "engine/extensionmanager.h"
#include "project/project.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>

using namespace Ovra;

void ProjectCloser::operator()(Project *project) const
{
    project->release();
}

EngineHost::EngineHost(const QString &directory)
    : m_directory(directory)
{
    if (m_directory.isEmpty()) {
        const QString bin = QCoreApplication::applicationDirPath();
        for (const QString &place : {QStringLiteral("/../lib/plugins"), QStringLiteral("/../lib/ovra/plugins")}) {
            if (QDir(bin + place).exists()) {
                m_directory = QDir::cleanPath(bin + place);
                break;
            }
        }
    }
    if (!m_directory.isEmpty())
        m_manager = std::make_unique<ExtensionManager>(m_directory);
}

EngineHost::~EngineHost() = default;

QString EngineHost::projectFile(const QString &argument, QString *error)
{
    const QFileInfo info(argument);
    if (!info.exists()) {
        *error = QStringLiteral("no such file or directory");
        return QString();
    }
    if (!info.isDir())
        return info.absoluteFilePath();
    // A work: its project files, at most two levels down.
    QStringList found;
    QDirIterator it(info.absoluteFilePath(), QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString name = it.next();
        const int depth = QDir(info.absoluteFilePath()).relativeFilePath(name).count(QLatin1Char('/'));
        if (depth <= 1 && EngineExtension::forProjectFile(name))
            found << name;
    }
    if (found.size() == 1)
        return found.first();
    found.sort();
    *error = found.isEmpty() ? QStringLiteral("no project file in this directory")
                             : QStringLiteral("more than one project file here: %1").arg(found.join(QStringLiteral(", ")));
    return QString();
}

ProjectPointer EngineHost::openProject(const QString &argument, QString *error)
{
    if (!m_manager) {
        *error = QStringLiteral("no engine plug-ins found (give their directory with --plugins)");
        return nullptr;
    }
    const QString file = projectFile(argument, error);
    if (file.isEmpty())
        return nullptr;
    EngineExtension *engine = EngineExtension::forProjectFile(file);
    if (!engine) {
        *error = QStringLiteral("no engine of %1 takes this file as a project").arg(m_directory);
        return nullptr;
    }
    QString reason;
    Project *project = engine->openProject(file, &reason);
    if (!project)
        *error = reason;
    return ProjectPointer(project);
}

ProjectPointer EngineHost::openProject(Cli::Context &context, const QString &command, const QString &argument)
{
    QString error;
    ProjectPointer project = openProject(argument, &error);
    if (!project)
        context.inputError(command, argument, error);
    return project;
}
