#pragma once

#include "foundation/object.h"

#include <QList>
#include <QMap>
#include <QObject>
#include <QStringList>
#include <QVariant>

#include <memory>

namespace Ovra {

class Archive;
class MessageList;
class ParentProject;
class ProjectFile;
struct ProjectPrivate;

// One file of a project as its engine lists it: a file type and a name relative
// to the project's directory.
struct OVRA_EXPORT PathEntry
{
    int type = 0;
    QString name;
};

// One work of an engine (a character, a stage): files filed by numeric type, with
// one main file. A file may be filed under several types at once, so its type is a
// set of bits (bit n for type n).
class OVRA_EXPORT Project : public QObject, public Object
{
    Q_OBJECT
public:
    enum FileType { Main = 0, Sprites = 1, Sounds = 2, Animations = 3, Scripts = 4 };
    using FileTypes = quint32;

    Project(ParentProject *parent, int type, ProjectFile *mainFile, bool addMainFile);
    ~Project() override;

    // Closes the project: its files are released and it leaves its parent.
    void release() override;

    virtual QVariant option(const QString &name, const QVariant &defaultValue) const;
    virtual bool isEmpty() const;
    virtual bool isModified() const;
    virtual QString name() const;
    virtual QString version() const;
    // Every file of the project; the caller owns the entries.
    virtual void fileList(QList<PathEntry *> &entries) const = 0;
    virtual bool saveAll(Archive &archive, const QString &path, bool asCopy, QStringList *extraFiles);
    virtual void reload();

    QVariant option(const QString &name) const;
    // A null value removes the key. With toHost the host's store gets the pair first.
    void setOption(const QString &name, const QVariant &value, bool toHost = false);

    int type() const;
    QString typeName() const;
    QString fileName() const;
    // The directory of the main file, ending with "/".
    QString absolutePath() const;
    // That directory relative to the parent's root, ending with "/" unless empty.
    QString basePath() const;
    ProjectFile *mainFile() const;
    ParentProject *parentProject() const;
    Archive *archive() const;
    MessageList *messages() const;

    // Enters the project into its parent's tree.
    void addToParent();

    bool addFile(ProjectFile *file, int type);
    void removeFile(int type, int index);
    void removeFile(ProjectFile *file);
    // Takes all filings of the file away and hands its reference to the caller.
    ProjectFile *takeFile(ProjectFile *file);
    void moveFile(int type, int from, int to);

    ProjectFile *file(int type) const;
    uint selectedFile(int type) const;
    void setSelectedFile(int type, uint index);
    const QList<ProjectFile *> &filesByType(int type) const;
    QList<ProjectFile *> files() const;
    FileTypes fileID(ProjectFile *file) const;

signals:
    void fileAdded(const Ovra::ProjectFile *file, int type);
    void fileRemoved(const Ovra::ProjectFile *file, int type);
    void fileHierarchyChanged();

protected:
    void setTypeName(const QString &name);

private:
    void dropFiling(ProjectFile *file, int type, int index);
    void forgetFile(ProjectFile *file);

    std::unique_ptr<ProjectPrivate> d;
};

} // namespace Ovra
