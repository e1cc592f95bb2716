#include "project/project.h"

#include "code/codedocument.h"
#include "code/codenodefile.h"
#include "foundation/archive.h"
#include "foundation/interface.h"
#include "foundation/messages.h"
#include "project/parentproject.h"
#include "project/projectfile.h"

namespace Ovra {

struct ProjectPrivate
{
    explicit ProjectPrivate(Project *project) : messages(project) {}

    MessageList messages;
    int type = 0;
    QString typeName;
    ParentProject *parent = nullptr;
    ProjectFile *mainFile = nullptr; // counted
    QMap<ProjectFile *, Project::FileTypes> filesWithIDs;
    QMap<int, QList<ProjectFile *>> filesByType;
    QMap<int, uint> selected;
    QMap<QString, QVariant> options;
    Archive *archive = nullptr; // counted, the parent's
};

namespace {
// Options that a main file carries for the whole project.
const char *const ProjectWideOptions[] = {"parseCode", "highlightCode", "modelCode"};

Project::FileTypes typeBit(int type)
{
    return (type >= 0 && type < 32) ? Project::FileTypes(1u << type) : 0;
}
} // namespace

Project::Project(ParentProject *parent, int type, ProjectFile *mainFile, bool addMainFile)
    : d(new ProjectPrivate(this))
{
    d->type = type;
    d->parent = parent;
    d->mainFile = mainFile;
    if (mainFile)
        mainFile->addRef();
    if (parent) {
        d->archive = &parent->archive();
        d->archive->addRef();
    }
    if (mainFile) {
        for (const char *key : ProjectWideOptions) {
            const QString name = QLatin1String(key);
            setOption(name, mainFile->option(name));
            mainFile->setOption(name, QVariant(), false, false);
        }
    }
    if (addMainFile && mainFile)
        addFile(mainFile, Main);
}

Project::~Project() = default;

void Project::release()
{
    if (d->mainFile) {
        ProjectFile *main = d->mainFile;
        d->mainFile = nullptr;
        main->release();
    }
    // The files close while the parent still listens: leaving it may end it.
    const QList<ProjectFile *> files = d->filesWithIDs.keys();
    d->filesWithIDs.clear();
    d->filesByType.clear();
    for (ProjectFile *file : files)
        forgetFile(file);
    if (d->parent)
        d->parent->removeProject(this);
    d->parent = nullptr;
    for (ProjectFile *file : files)
        file->release();
    if (d->archive)
        d->archive->release();
    d->archive = nullptr;
    delete this;
}

QVariant Project::option(const QString &name) const
{
    const QVariant own = d->options.value(name);
    if (own.isValid())
        return own;
    if (Interface *host = Interface::instance())
        return host->option(name, QVariant());
    return QVariant();
}

QVariant Project::option(const QString &name, const QVariant &defaultValue) const
{
    const QVariant value = option(name);
    return value.isValid() ? value : defaultValue;
}

void Project::setOption(const QString &name, const QVariant &value, bool toHost)
{
    if (toHost) {
        if (Interface *host = Interface::instance())
            host->setOption(name, value);
    }
    if (value.isNull())
        d->options.remove(name);
    else
        d->options.insert(name, value);
}

bool Project::isEmpty() const
{
    for (auto it = d->filesWithIDs.cbegin(); it != d->filesWithIDs.cend(); ++it) {
        if (!it.key()->isEmpty())
            return false;
    }
    return true;
}

bool Project::isModified() const
{
    for (auto it = d->filesWithIDs.cbegin(); it != d->filesWithIDs.cend(); ++it) {
        if (it.key()->isModified())
            return true;
    }
    return false;
}

QString Project::name() const
{
    return QString();
}

QString Project::version() const
{
    return QString();
}

int Project::type() const
{
    return d->type;
}

QString Project::typeName() const
{
    return d->typeName;
}

void Project::setTypeName(const QString &name)
{
    d->typeName = name;
}

QString Project::fileName() const
{
    return d->mainFile ? d->mainFile->fileName() : QString();
}

QString Project::absolutePath() const
{
    const QString name = fileName();
    if (name.isEmpty() || !d->archive)
        return QString();
    QString path = d->archive->absoluteFilePath(name);
    if (!path.endsWith(QLatin1Char('/')))
        path += QLatin1Char('/');
    return path;
}

QString Project::basePath() const
{
    const QString path = absolutePath();
    if (path.isEmpty() || !d->parent)
        return QString();
    const QString root = d->parent->basePath();
    if (!path.startsWith(root))
        return QString();
    return path.mid(root.endsWith(QLatin1Char('/')) ? root.size() : root.size() + 1);
}

ProjectFile *Project::mainFile() const
{
    return d->mainFile;
}

ParentProject *Project::parentProject() const
{
    return d->parent;
}

Archive *Project::archive() const
{
    return d->archive;
}

MessageList *Project::messages() const
{
    return &d->messages;
}

void Project::addToParent()
{
    if (d->parent)
        d->parent->addRef(this);
}

bool Project::addFile(ProjectFile *file, int type)
{
    const FileTypes bit = typeBit(type);
    if (!file || !bit)
        return false;
    FileTypes &types = d->filesWithIDs[file];
    if (types & bit)
        return false;
    types |= bit;

    // A view of nodes makes the project the owner of the document behind it.
    if (auto *nodeFile = dynamic_cast<CodeNodeFile *>(file))
        nodeFile->document()->setProject(this);
    if (Messages *messages = file->fileMessages()) {
        if (messages->messageList() != &d->messages)
            d->messages.registerMessages(messages);
        else
            d->messages.update();
    }
    file->setProject(this);
    d->filesByType[type].append(file);
    if (!d->selected.contains(type))
        d->selected.insert(type, 0);

    emit fileAdded(file, type);
    if (d->parent)
        d->parent->fileAdded(file);
    return true;
}

void Project::dropFiling(ProjectFile *file, int type, int index)
{
    QList<ProjectFile *> &list = d->filesByType[type];
    list.removeAt(index);
    if (d->selected.value(type) >= uint(list.size()) && !list.isEmpty())
        d->selected[type] = uint(list.size() - 1);
    d->filesWithIDs[file] &= ~typeBit(type);
    emit fileRemoved(file, type);
}

void Project::forgetFile(ProjectFile *file)
{
    if (Messages *messages = file->fileMessages()) {
        if (messages->messageList() == &d->messages)
            d->messages.unregisterMessages(messages);
    }
    file->setProject(nullptr);
    if (d->parent)
        d->parent->fileClosed(file);
}

void Project::removeFile(int type, int index)
{
    const QList<ProjectFile *> list = d->filesByType.value(type);
    if (index < 0 || index >= list.size())
        return;
    ProjectFile *file = list.at(index);
    dropFiling(file, type, index);
    if (d->filesWithIDs.value(file) == 0) {
        d->filesWithIDs.remove(file);
        forgetFile(file);
        file->release();
    }
}

ProjectFile *Project::takeFile(ProjectFile *file)
{
    const auto found = d->filesWithIDs.constFind(file);
    if (found == d->filesWithIDs.cend())
        return nullptr;
    const FileTypes types = found.value();
    for (int type = 0; type < 32; ++type) {
        if (!(types & typeBit(type)))
            continue;
        const int index = d->filesByType.value(type).indexOf(file);
        if (index >= 0)
            dropFiling(file, type, index);
    }
    d->filesWithIDs.remove(file);
    forgetFile(file);
    return file;
}

void Project::removeFile(ProjectFile *file)
{
    if (takeFile(file))
        file->release();
}

void Project::moveFile(int type, int from, int to)
{
    auto it = d->filesByType.find(type);
    if (it == d->filesByType.end())
        return;
    QList<ProjectFile *> &list = it.value();
    if (from < 0 || to < 0 || from >= list.size() || to >= list.size() || from == to)
        return;
    list.move(from, to);
    emit fileHierarchyChanged();
}

ProjectFile *Project::file(int type) const
{
    const QList<ProjectFile *> list = d->filesByType.value(type);
    const uint index = d->selected.value(type);
    return index < uint(list.size()) ? list.at(int(index)) : nullptr;
}

uint Project::selectedFile(int type) const
{
    return d->selected.value(type);
}

void Project::setSelectedFile(int type, uint index)
{
    d->selected[type] = index;
}

const QList<ProjectFile *> &Project::filesByType(int type) const
{
    static const QList<ProjectFile *> none;
    const auto it = d->filesByType.constFind(type);
    return it == d->filesByType.cend() ? none : it.value();
}

QList<ProjectFile *> Project::files() const
{
    return d->filesWithIDs.keys();
}

Project::FileTypes Project::fileID(ProjectFile *file) const
{
    return d->filesWithIDs.value(file);
}

void Project::reload()
{
    for (ProjectFile *file : d->filesWithIDs.keys()) {
        if (file->hasArchive() && !file->fileName().isEmpty())
            file->fromFile(file->archive(), file->fileName(), 0, nullptr);
    }
}

bool Project::saveAll(Archive &archive, const QString &pathIn, bool asCopy, QStringList *extraFiles)
{
    if (archive.isReadOnly())
        return false;

    QList<PathEntry *> entries;
    fileList(entries);
    QString path = pathIn;
    if (!path.endsWith(QLatin1Char('/')))
        path += QLatin1Char('/');
    const QString projectPath = absolutePath();
    const int prefix = projectPath.size();
    const QString base = basePath();

    if (asCopy && d->mainFile)
        entries.append(new PathEntry{Main, d->mainFile->fileName().mid(prefix)});
    if (extraFiles) {
        for (const QString &name : qAsConst(*extraFiles))
            entries.append(new PathEntry{Main, name});
    }

    QVector<bool> claimed(entries.size(), false);
    for (auto it = d->filesWithIDs.cbegin(); it != d->filesWithIDs.cend(); ++it) {
        ProjectFile *file = it.key();
        if (!asCopy)
            file->bindArchive(archive);
        const bool livesInside = !asCopy && (it.value() & 1) && &archive == d->archive
                                 && file->fileName().startsWith(projectPath);
        const bool rawCopyServes = asCopy && !file->isModified() && file->hasArchive()
                                   && file->fileExists();
        if (livesInside || rawCopyServes)
            continue;

        const QString relative = file->fileName().mid(prefix);
        for (int i = 0; i < entries.size(); ++i) {
            if (entries.at(i)->name.compare(relative, Qt::CaseInsensitive) != 0)
                continue;
            claimed[i] = true;
            if (file->canSave())
                file->toFile(archive, path + base + entries.at(i)->name, asCopy ? 1 : 0, nullptr);
            break;
        }
    }

    if (d->archive) {
        for (int i = 0; i < entries.size(); ++i) {
            if (!claimed.at(i))
                copyFile(*d->archive, projectPath + entries.at(i)->name, archive,
                         path + base + entries.at(i)->name);
        }
    }
    qDeleteAll(entries);
    archive.flush();
    return true;
}

} // namespace Ovra
