#pragma once

// The sample engine's projects. A project is one project file (".ovp", written in the
// definition language) that names the project and lists its files by type; a work is
// the directory that holds projects, a game when the game mark stands in it.
#include "project/parentproject.h"
#include "project/project.h"

#include <memory>

class DefinitionDocument;
class SampleEngineExtension;

namespace Ovra {
class SimpleMessages;
}

class SampleParentProject : public Ovra::ParentProject
{
    Q_OBJECT
public:
    SampleParentProject(SampleEngineExtension *extension, const QString &basePath);
    ~SampleParentProject() override;

    Ovra::Engine *engine() const override;

protected:
    bool copyFile(const QString &relativeName, const QString &targetDirectory) override;
    // The last project closed: the work ends, and the extension forgets it.
    void allProjectsClosed() override;

private:
    SampleEngineExtension *m_extension;
};

class SampleProject : public Ovra::Project
{
    Q_OBJECT
public:
    // Takes a reference of the main file; call load() next.
    SampleProject(Ovra::ParentProject *parent, DefinitionDocument *mainFile);
    ~SampleProject() override;

    // Reads the project file and every file it lists. A listed file that is missing or
    // can't be read, lies outside the work's folder (symbolic links followed), is the
    // project file itself or was listed before is left out with a message among the
    // project's messages; only a project file that can't be read at all makes it false,
    // with the reason in `error`.
    bool load(const QString &fileName, QString *error);

    QString name() const override;
    QString version() const override;
    void fileList(QList<Ovra::PathEntry *> &entries) const override;

    // The problems of the last load, registered with the project's messages.
    Ovra::SimpleMessages *loadMessages() const { return m_loadMessages.get(); }

private:
    // A file added through the model gets its line in the project file.
    void listFile(const Ovra::ProjectFile *file, int type);
    void unlistFile(const Ovra::ProjectFile *file, int type);
    QString relativeName(const Ovra::ProjectFile *file) const;
    DefinitionDocument *document() const;

    std::unique_ptr<Ovra::SimpleMessages> m_loadMessages;
    bool m_loading = false;
};
