#pragma once

// The engines of the tool: their plug-ins loaded from --plugins, or from the library's
// default places beside the program, and the projects opened through them.
#include "cli.h"

#include "engine/projectlocator.h"

#include <QString>

#include <memory>

struct ProjectCloser
{
    void operator()(Ovra::Project *project) const;
};
using ProjectPointer = std::unique_ptr<Ovra::Project, ProjectCloser>;

class EngineHost
{
public:
    // An empty directory means the default places.
    explicit EngineHost(const QString &directory) : m_locator(directory) {}

    QString pluginDirectory() const { return m_locator.pluginDirectory(); }

    // The project of the argument, loaded; null with the reason.
    ProjectPointer openProject(const QString &argument, QString *error);
    // The same, with the reason said as the command's input error.
    ProjectPointer openProject(Cli::Context &context, const QString &command, const QString &argument);

private:
    Ovra::ProjectLocator m_locator;
};
