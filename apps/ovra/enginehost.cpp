#include "enginehost.h"

#include "project/project.h"

void ProjectCloser::operator()(Ovra::Project *project) const
{
    project->release();
}

ProjectPointer EngineHost::openProject(const QString &argument, QString *error)
{
    // Said here rather than by the library: the remedy is the tool's own option.
    if (m_locator.pluginDirectory().isEmpty()) {
        *error = QStringLiteral("no engine plug-ins found (give their directory with --plugins)");
        return nullptr;
    }
    return ProjectPointer(m_locator.openProject(argument, error));
}

ProjectPointer EngineHost::openProject(Cli::Context &context, const QString &command, const QString &argument)
{
    QString error;
    ProjectPointer project = openProject(argument, &error);
    if (!project)
        context.inputError(command, argument, error);
    return project;
}
