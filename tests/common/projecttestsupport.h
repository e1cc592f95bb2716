#pragma once

// Stand-ins shared by the project tests: a file that records its loads and saves, a
// project with a settable file list, and a parent that records what reaches it.
#include "foundation/messages.h"
#include "project/parentproject.h"
#include "project/project.h"
#include "project/projectfile.h"

#include "memoryarchive.h"

#include <memory>

using namespace Ovra;

// A file that writes `content` when saved and records its loads and saves.
class TestFile : public ProjectFile
{
public:
    explicit TestFile(const QString &name = QString(), const QByteArray &content = QByteArray())
        : name(name), content(content) {}

    QString name;
    QByteArray content;
    bool modified = false;
    bool empty = true;
    bool saveable = true;
    int loads = 0;
    int freed = 0;
    QStringList saves; // "name|flags"
    std::unique_ptr<SimpleMessages> ownMessages;

    QString fileName() const override { return name; }
    bool isModified() const override { return modified; }
    bool isEmpty() const override { return empty; }
    bool canSave() const override { return saveable; }
    bool toFile(Archive &archive, const QString &target, uint flags, JobStats *stats) override
    {
        saves << QStringLiteral("%1|%2").arg(target).arg(flags);
        if (QIODevice *device = archive.openFile(target, QIODevice::WriteOnly)) {
            device->write(content);
            archive.closeFile(device);
        }
        return ProjectFile::toFile(archive, target, flags, stats);
    }
    bool fromFile(Archive &archive, const QString &source, uint flags, JobStats *stats) override
    {
        ++loads;
        return ProjectFile::fromFile(archive, source, flags, stats);
    }
    QList<SearchResult> search(RegExp &, uint) override { return {}; }
    void replace(QList<SearchResult> &, const QString &) override {}
    Messages *fileMessages() const override { return ownMessages.get(); }
    void free() override { ++freed; }
};

class TestProject : public Project
{
public:
    using Project::Project;
    QList<PathEntry> listed;
    void fileList(QList<PathEntry *> &entries) const override
    {
        for (const PathEntry &entry : listed)
            entries.append(new PathEntry(entry));
    }
};

// allProjectsClosed is where a real parent ends itself, so anything reaching it
// afterwards would reach freed memory: that is counted as a fault here.
class RecordingParent : public ParentProject
{
public:
    using ParentProject::ParentProject;
    QList<ProjectFile *> added, opened, closed, saved;
    int allClosed = 0;
    int touchedAfterEnd = 0;

    void fileAdded(ProjectFile *file) override { record(added, file); }
    void fileOpened(ProjectFile *file) override { record(opened, file); }
    void fileClosed(ProjectFile *file) override { record(closed, file); }
    void fileSaved(ProjectFile *file) override { record(saved, file); }

protected:
    void allProjectsClosed() override { ++allClosed; }

private:
    void record(QList<ProjectFile *> &list, ProjectFile *file)
    {
        if (allClosed)
            ++touchedAfterEnd;
        list << file;
    }
};

