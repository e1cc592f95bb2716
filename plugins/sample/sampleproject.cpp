#include "sampleproject.h"

#include "animationdocument.h"
#include "definitiondocument.h"
#include "sampleengine.h"
#include "samplelanguage.h"

#include "code/groupcode.h"
#include "code/rootcode.h"
#include "code/valuecode.h"
#include "foundation/archive.h"
#include "foundation/filesystemarchive.h"
#include "foundation/messages.h"
#include "image/sprite.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>

using namespace Ovra;

namespace {

// The first group of the kind.
GroupCode *groupOf(RootCode *root, SampleLanguage::GroupKind kind)
{
    for (uint i = 0; i < root->childCount(); ++i) {
        CodeNode *node = root->childAt(i);
        if (node->type() == CodeNode::Group && static_cast<GroupCode *>(node)->subType() == kind)
            return static_cast<GroupCode *>(node);
    }
    return nullptr;
}

// Why a listed file is left out of the project, or empty when it is taken: files outside
// the work's folder (after "..", absolute names and symbolic links) are never read, and a
// file listed before, or the project file itself, would be two documents of one file.
QString refusalOf(const QString &path, const QString &root, const QString &projectFile, const QSet<QString> &listed)
{
    if (!isInsideDirectory(path, root))
        return QStringLiteral("lies outside the work's folder; it is left out");
    const QString real = QFileInfo(path).canonicalFilePath();
    if (!real.isEmpty() && real == projectFile)
        return QStringLiteral("is the project file itself; it is left out");
    if (!real.isEmpty() && listed.contains(real))
        return QStringLiteral("is listed twice; it is taken once");
    return QString();
}

} // namespace

// ---- the work ------------------------------------------------------------------------

SampleParentProject::SampleParentProject(SampleEngineExtension *extension, const QString &basePath)
    : ParentProject(basePath, FileSystemArchive::instance())
    , m_extension(extension)
{
}

SampleParentProject::~SampleParentProject() = default;

Engine *SampleParentProject::engine() const
{
    return m_extension->engine();
}

bool SampleParentProject::copyFile(const QString &relativeName, const QString &targetDirectory)
{
    Archive &source = archive();
    QIODevice *in = source.openFile(basePath() + QLatin1Char('/') + relativeName, QIODevice::ReadOnly);
    if (!in)
        return false;
    const QByteArray bytes = in->readAll();
    source.closeFile(in);

    const QString target = targetDirectory + QLatin1Char('/') + relativeName;
    QDir().mkpath(QFileInfo(target).absolutePath());
    Archive &files = FileSystemArchive::instance();
    QIODevice *out = files.openFile(target, QIODevice::WriteOnly);
    if (!out)
        return false;
    const bool written = out->write(bytes) == bytes.size();
    if (written)
        files.closeFile(out);
    else
        files.discardFile(out);
    return written;
}

void SampleParentProject::allProjectsClosed()
{
    // Nothing of the parent runs after this call: it may end at once.
    m_extension->forget(this);
    delete this;
}

// ---- a project -----------------------------------------------------------------------

SampleProject::SampleProject(ParentProject *parent, DefinitionDocument *mainFile)
    : Project(parent, Main, mainFile, true)
    , m_loadMessages(std::make_unique<SimpleMessages>(mainFile))
{
    setTypeName(QStringLiteral("Sample project"));
    connect(this, &Project::fileAdded, this, &SampleProject::listFile);
    connect(this, &Project::fileRemoved, this, &SampleProject::unlistFile);
}

SampleProject::~SampleProject()
{
    if (MessageList *list = messages())
        list->unregisterMessages(m_loadMessages.get());
}

DefinitionDocument *SampleProject::document() const
{
    return static_cast<DefinitionDocument *>(mainFile());
}

bool SampleProject::load(const QString &fileName, QString *error)
{
    DefinitionDocument *main = document();
    if (!main->fromFile(FileSystemArchive::instance(), fileName, 0, nullptr)) {
        if (error)
            *error = QStringLiteral("Can't read the project file");
        return false;
    }
    GroupCode *files = groupOf(main->root(), SampleLanguage::FilesGroup);
    if (!groupOf(main->root(), SampleLanguage::ProjectGroup) || !files) {
        if (error)
            *error = QStringLiteral("Not a project file: it needs a [Project] and a [Files] group");
        return false;
    }

    if (!m_loadMessages->messageList())
        messages()->registerMessages(m_loadMessages.get());
    m_loadMessages->beginChange();
    m_loadMessages->clear();
    m_loading = true;
    Engine *engine = parentProject() ? parentProject()->engine() : nullptr;
    const QDir directory = QFileInfo(fileName).absoluteDir();
    // Works come from strangers: only files inside the work are read, each once, and
    // never the project file a second time.
    const QString root = parentProject() ? parentProject()->basePath() : directory.absolutePath();
    const QString projectFile = QFileInfo(fileName).canonicalFilePath();
    QSet<QString> listed;
    for (ValueCode *value : files->values()) {
        const int type = SampleEngine::fileTypeOfKey(value->name());
        const uint line = uint(value->block().blockNumber());
        const QString relative = value->value().toString();
        if (type < 0) {
            m_loadMessages->add(Message::Warning, QStringLiteral("'%1' is no kind of file; the line is passed over").arg(value->name()), line, 0);
            continue;
        }
        const QString path = QDir::cleanPath(directory.absoluteFilePath(relative));
        const QString refusal = refusalOf(path, root, projectFile, listed);
        if (!refusal.isEmpty()) {
            m_loadMessages->add(Message::Error, QStringLiteral("The file '%1' %2").arg(relative, refusal), line, 0);
            continue;
        }
        if (!QFileInfo(path).isFile()) {
            m_loadMessages->add(Message::Error, QStringLiteral("The file '%1' is missing").arg(relative), line, 0);
            continue;
        }
        listed.insert(QFileInfo(path).canonicalFilePath());
        ProjectFile *file = engine ? engine->createFile(type, this) : nullptr;
        if (!file)
            continue;
        if (!file->fromFile(FileSystemArchive::instance(), path, 0, nullptr)) {
            QString reason;
            if (Messages *own = file->fileMessages(); own && own->count(Message::Error))
                reason = QStringLiteral(": ") + own->at(0, Message::Error).text;
            m_loadMessages->add(Message::Error, QStringLiteral("The file '%1' can't be read%2").arg(relative, reason), line, 0);
            file->release();
            continue;
        }
        addFile(file, type);
    }
    m_loading = false;
    m_loadMessages->endChange();

    // Frames show the sprites of the project's first sprite container.
    auto *sprites = dynamic_cast<Ovra::Sprites *>(file(Sprites));
    for (ProjectFile *animations : filesByType(Animations)) {
        if (auto *list = dynamic_cast<SampleAnimations *>(animations))
            static_cast<AnimationDocument *>(list->document())->setSprites(sprites);
    }
    return true;
}

QString SampleProject::name() const
{
    GroupCode *group = groupOf(document()->root(), SampleLanguage::ProjectGroup);
    const QString name = group ? group->value(QStringLiteral("name")).toString() : QString();
    return name.isEmpty() ? QFileInfo(fileName()).completeBaseName() : name;
}

QString SampleProject::version() const
{
    GroupCode *group = groupOf(document()->root(), SampleLanguage::ProjectGroup);
    return group ? group->value(QStringLiteral("version")).toString() : QString();
}

QString SampleProject::relativeName(const ProjectFile *file) const
{
    const QString name = file->fileName();
    if (name.isEmpty())
        return QString();
    return QDir(absolutePath()).relativeFilePath(name);
}

void SampleProject::fileList(QList<PathEntry *> &entries) const
{
    for (const int type : {int(Sprites), int(Sounds), int(Animations), int(Scripts), int(SampleEngine::Definitions)}) {
        for (const ProjectFile *file : filesByType(type)) {
            const QString name = relativeName(file);
            if (!name.isEmpty())
                entries.append(new PathEntry{type, name});
        }
    }
}

void SampleProject::listFile(const ProjectFile *file, int type)
{
    const QString key = SampleEngine::fileKey(type);
    const QString name = relativeName(file);
    GroupCode *files = groupOf(document()->root(), SampleLanguage::FilesGroup);
    if (m_loading || key.isEmpty() || name.isEmpty() || !files)
        return;
    for (ValueCode *value : files->values()) {
        if (value->name() == key && value->value().toString() == name)
            return;
    }
    files->addValue(key, name);
}

void SampleProject::unlistFile(const ProjectFile *file, int type)
{
    const QString key = SampleEngine::fileKey(type);
    const QString name = relativeName(file);
    GroupCode *files = groupOf(document()->root(), SampleLanguage::FilesGroup);
    if (key.isEmpty() || name.isEmpty() || !files)
        return;
    for (uint i = 0; i < files->valueCount(); ++i) {
        ValueCode *value = files->valueAt(i);
        if (value->name() == key && value->value().toString() == name) {
            files->removeValue(i);
            return;
        }
    }
}
