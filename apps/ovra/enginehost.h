#pragma once

// The engines of the tool: their plug-ins loaded from --plugins, or from beside the program
// (build/<preset>/lib/plugins in a build, lib/ovra/plugins in an installation), and the
// projects opened through them.
#include "cli.h"

#include <QString>

#include <memory>

namespace Ovra {
class ExtensionManager;
class Project;
} // namespace Ovra

struct ProjectCloser
{
    void operator()(Ovra::Project *project) const;
};
using ProjectPointer = std::unique_ptr<Ovra::Project, ProjectCloser>;

class EngineHost
{
public:
    // An empty directory means the default places.
    explicit EngineHost(const QString &directory);
    ~EngineHost();

    QString pluginDirectory() const { return m_directory; }

    // The project file a user's argument means: the file itself, or the one project file
    // in (or right below) a directory. Empty, with the reason, when there is none or more.
    static QString projectFile(const QString &argument, QString *error);
    // The project of the argument, loaded; null with the reason.
    ProjectPointer openProject(const QString &argument, QString *error);
    // The same, with the reason said as the command's input error.
    ProjectPointer openProject(Cli::Context &context, const QString &command, const QString &argument);

private:
    QString m_directory;
    std::unique_ptr<Ovra::ExtensionManager> m_manager;
};
