#pragma once

#include "foundation/global.h"

#include <QList>
#include <QObject>
#include <QString>

#include <memory>

namespace Ovra {

class Archive;
class Engine;
class Project;
class ProjectFile;
struct ParentProjectPrivate;

// The open root of one piece of work: it owns the archive, counts the projects
// open in it and hears about their files. The engine's subclass decides how it ends
// once the last project has closed.
class OVRA_EXPORT ParentProject : public QObject
{
    Q_OBJECT
public:
    ParentProject(const QString &basePath, Archive &archive);
    ~ParentProject() override;

    Archive &archive() const;
    QString basePath() const;
    uint refCount() const;
    QList<Project *> openedProjects() const;

    // Counts an open project; Project::addToParent calls it.
    void addRef(Project *project);
    // Forgets a closing project; the last one ends the parent through allProjectsClosed.
    void removeProject(Project *project);

    // The engine the work belongs to; the engine's subclass tells.
    virtual Engine *engine() const;

    virtual void fileAdded(ProjectFile *file);
    virtual void fileOpened(ProjectFile *file);
    virtual void fileClosed(ProjectFile *file);
    virtual void fileSaved(ProjectFile *file);

protected:
    virtual void allProjectsClosed() = 0;

private:
    std::unique_ptr<ParentProjectPrivate> d;
};

} // namespace Ovra
