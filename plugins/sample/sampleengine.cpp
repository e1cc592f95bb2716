#include "sampleengine.h"

#include "animationdocument.h"
#include "definitiondocument.h"
#include "samplelanguage.h"
#include "sampleproject.h"
#include "scriptdocument.h"
#include "soundbank.h"
#include "spritecontainer.h"

#include "foundation/filesystemarchive.h"
#include "project/project.h"

#include <QDir>
#include <QFileInfo>

using namespace Ovra;

namespace {

struct FileTypeInfo
{
    int type;
    const char *suffix;
    const char *key;  // in the [Files] group of a project file
    const char *name; // for filters and listings
};

// The order of the file dialog's filters.
const FileTypeInfo fileTypes[] = {
    {Project::Main, "ovp", nullptr, "Sample projects"},
    {SampleEngine::Definitions, "def", "definitions", "Definitions"},
    {Project::Sprites, "osp", "sprites", "Sprite containers"},
    {Project::Animations, "oan", "animations", "Animations"},
    {Project::Sounds, "sbk", "sounds", "Sound banks"},
    {Project::Scripts, "lua", "scripts", "Scripts"},
};

const FileTypeInfo *infoOf(int fileType)
{
    for (const FileTypeInfo &info : fileTypes) {
        if (info.type == fileType)
            return &info;
    }
    return nullptr;
}

QString filterOf(const FileTypeInfo &info)
{
    return QStringLiteral("%1 (*.%2)").arg(QLatin1String(info.name), QLatin1String(info.suffix));
}

} // namespace

SampleEngine::SampleEngine()
    : Engine(QStringLiteral("sample"))
{
}

QString SampleEngine::queryString(StringType type, uint index) const
{
    if (index != 0)
        return QString();
    switch (type) {
    case AnimationFilePattern:
        return QStringLiteral("*.oan");
    case GameMarkFile:
        return QStringLiteral("game.ovg");
    case CommentMarker:
        return QString(SampleLanguage::commentMarker());
    }
    return QString();
}

QString SampleEngine::singleFileFilters(int fileType) const
{
    if (fileType >= 0) {
        const FileTypeInfo *info = infoOf(fileType);
        return info ? filterOf(*info) : QString();
    }
    QStringList filters;
    QStringList patterns;
    for (const FileTypeInfo &info : fileTypes) {
        filters << filterOf(info);
        patterns << QStringLiteral("*.") + QLatin1String(info.suffix);
    }
    filters.prepend(QStringLiteral("All sample engine files (%1)").arg(patterns.join(QLatin1Char(' '))));
    return filters.join(QStringLiteral(";;"));
}

ProjectFile *SampleEngine::createFile(int fileType, Project *)
{
    switch (fileType) {
    case Project::Main:
    case Definitions:
        return new DefinitionDocument(short(fileType));
    case Project::Sprites:
        return new SpriteContainer;
    case Project::Sounds:
        return new SoundBank;
    case Project::Animations:
        // The list takes the document's first reference over.
        return new SampleAnimations(new AnimationDocument);
    case Project::Scripts:
        return new ScriptDocument;
    default:
        return nullptr;
    }
}

QString SampleEngine::suffix(int fileType)
{
    const FileTypeInfo *info = infoOf(fileType);
    return info ? QLatin1String(info->suffix) : QString();
}

int SampleEngine::fileTypeOfSuffix(const QString &suffix)
{
    for (const FileTypeInfo &info : fileTypes) {
        if (suffix.compare(QLatin1String(info.suffix), Qt::CaseInsensitive) == 0)
            return info.type;
    }
    return -1;
}

QString SampleEngine::fileKey(int fileType)
{
    const FileTypeInfo *info = infoOf(fileType);
    return info && info->key ? QLatin1String(info->key) : QString();
}

int SampleEngine::fileTypeOfKey(const QString &key)
{
    for (const FileTypeInfo &info : fileTypes) {
        if (info.key && key == QLatin1String(info.key))
            return info.type;
    }
    return -1;
}

QString SampleEngine::fileTypeName(int fileType)
{
    const FileTypeInfo *info = infoOf(fileType);
    return info ? QLatin1String(info->name) : QString();
}

// ---- the extension -------------------------------------------------------------------

SampleEngineExtension::~SampleEngineExtension()
{
    delete m_engine;
}

Engine *SampleEngineExtension::engine()
{
    if (!m_engine)
        m_engine = new SampleEngine;
    return m_engine;
}

bool SampleEngineExtension::isProjectFile(const QString &fileName) const
{
    return QFileInfo(fileName).suffix().compare(QStringLiteral("ovp"), Qt::CaseInsensitive) == 0;
}

QString SampleEngineExtension::workRoot(const QString &fileName)
{
    const QString mark = QStringLiteral("game.ovg");
    const QDir start = QFileInfo(fileName).absoluteDir();
    for (QDir dir = start;;) {
        if (dir.exists(mark))
            return dir.absolutePath();
        if (!dir.cdUp())
            break;
    }
    return start.absolutePath();
}

Project *SampleEngineExtension::openProject(const QString &fileName, QString *error)
{
    const QFileInfo info(fileName);
    if (!info.isFile()) {
        if (error)
            *error = QStringLiteral("No such project file");
        return nullptr;
    }
    const QString root = workRoot(info.absoluteFilePath());
    SampleParentProject *parent = m_works.value(root);
    const bool newWork = !parent;
    if (newWork) {
        parent = new SampleParentProject(this, root);
        m_works.insert(root, parent);
    }
    // The project files its main file under our reference, and holds one of its own.
    auto *project = new SampleProject(parent, new DefinitionDocument(Project::Main));
    if (!project->load(info.absoluteFilePath(), error)) {
        project->release();
        // A work that never held a project doesn't hear of its end: it ends here.
        if (newWork && !parent->refCount()) {
            m_works.remove(root);
            delete parent;
        }
        return nullptr;
    }
    project->addToParent();
    return project;
}

void SampleEngineExtension::forget(SampleParentProject *parent)
{
    m_works.remove(m_works.key(parent));
}
