// The projects group: the work, its projects and files, and the sprite containers.
#include "engine/script/classes_p.h"

#include "code/animations.h"
#include "code/codedocument.h"
#include "engine/engine.h"
#include "foundation/archive.h"
#include "foundation/progress.h"
#include "image/sprite.h"
#include "project/parentproject.h"
#include "project/project.h"
#include "sound/sound.h"

#include <QVector>

namespace Ovra {
namespace ScriptClasses {

namespace {

// A palette as scripts pass it: up to 256 colours, the rest transparent black.
QVector<RGBA> fullTable(const QVector<RGBA> &colors)
{
    if (colors.size() > 256)
        throw std::invalid_argument("a palette has at most 256 colours");
    QVector<RGBA> table = colors;
    table.resize(256);
    return table;
}

// Null where the palette has no colours to give.
QVector<RGBA> colorTableOf(const Palette &palette)
{
    RGBA table[256];
    if (!palette.colorTable(table))
        return QVector<RGBA>();
    return QVector<RGBA>(std::begin(table), std::end(table));
}

bool fromFile(ProjectFile &file, Archive &archive, const QString &name, uint flags, JobStats *stats)
{
    return file.fromFile(archive, name, flags, stats);
}

bool toFile(ProjectFile &file, Archive &archive, const QString &name, uint flags, JobStats *stats)
{
    return file.toFile(archive, name, flags, stats);
}

void registerParentProject(Script::Table &table)
{
    table.usertype<ParentProject>("ParentProject")
        .property("isGame", &ParentProject::isGame)
        .property("engine", &ParentProject::engine)
        .property("archive", [](const ParentProject &self) { return &self.archive(); })
        .function("backup", Script::overload(&ParentProject::backup, [](ParentProject &self, const QString &name) {
                      return self.backup(name, nullptr);
                  }))
        .function("restoreBackup",
                  Script::overload(&ParentProject::restoreBackup, [](ParentProject &self, const QString &name) {
                      return self.restoreBackup(name, nullptr);
                  }))
        .function("save", [](ParentProject &self) { self.save(nullptr); })
        .function("saveAs", Script::overload(&ParentProject::saveAs, [](ParentProject &self, const QString &path) {
                      return self.saveAs(path, nullptr);
                  }))
        .function("openedProjects", &ParentProject::openedProjects);
}

void registerProject(Script::Table &table)
{
    table.usertype<Project>("Project")
        .property("parent", &Project::parentProject)
        .property("archive", &Project::archive)
        .property("type", &Project::type)
        .property("typeName", &Project::typeName)
        .property("fileName", &Project::fileName)
        .property("absolutePath", &Project::absolutePath)
        .property("basePath", &Project::basePath)
        .property("name", &Project::name)
        .property("isEmpty", &Project::isEmpty)
        .property("isModified", &Project::isModified)
        .property("version", &Project::version)
        .function("fileByType", &Project::file)
        .function("filesByType", &Project::filesByType)
        .function("files", &Project::files)
        // Into the project's own archive and place unless told otherwise; the path is the
        // root of a work, below which the project keeps its base path.
        .function("saveAll", Script::overload(
                                 [](Project &self) {
                                     QString root = self.absolutePath();
                                     root.chop(self.basePath().size());
                                     return self.saveAll(required(self.archive(), "the project's archive"), root, false,
                                                         nullptr);
                                 },
                                 [](Project &self, Archive &archive, const QString &path, bool asCopy) {
                                     return self.saveAll(archive, path, asCopy, nullptr);
                                 }))
        .enumeration("FileType", {{"Main", Project::Main},
                                  {"Sprites", Project::Sprites},
                                  {"Sounds", Project::Sounds},
                                  {"Animations", Project::Animations},
                                  {"Scripts", Project::Scripts}});
}

void registerProjectFile(Script::Table &table)
{
    table.usertype<ProjectFile>("ProjectFile")
        .property("project", &ProjectFile::project)
        // A file that was never loaded or saved has no archive yet: nil.
        .property("archive", [](const ProjectFile &self) { return self.hasArchive() ? &self.archive() : nullptr; })
        .property("fileName", &ProjectFile::fileName)
        .property("fileExists", &ProjectFile::fileExists)
        .property("isReadOnly", &ProjectFile::isReadOnly)
        .property("isModified", &ProjectFile::isModified)
        .property("canSave", &ProjectFile::canSave)
        .function("reset", &ProjectFile::reset)
        .function("fromFile", Script::overload(&fromFile, [](ProjectFile &self, Archive &archive, const QString &name) {
                      return self.fromFile(archive, name, 0, nullptr);
                  }))
        .function("toFile", Script::overload(&toFile, [](ProjectFile &self, Archive &archive, const QString &name) {
                      return self.toFile(archive, name, 0, nullptr);
                  }))
        .function("beginChange", &ProjectFile::beginChange)
        .function("endChange", &ProjectFile::endChange)
        .function("undo", &ProjectFile::undo)
        .function("redo", &ProjectFile::redo)
        .function("asSprites", [](ProjectFile &self) { return dynamic_cast<Sprites *>(&self); })
        .function("asSounds", [](ProjectFile &self) { return dynamic_cast<Sounds *>(&self); })
        .function("asAnimations", [](ProjectFile &self) { return dynamic_cast<Animations *>(&self); })
        .function("asSourceCode", [](ProjectFile &self) { return dynamic_cast<CodeDocument *>(&self); });
}

void registerSpritePalette(Script::Table &table)
{
    table.usertype<Palette>("SpritePalette")
        .base<PropertyItem>()
        .property("parent", &Palette::parent)
        .property("index", &Palette::index)
        .property("colorTable", &colorTableOf)
        .function("setColorTable", [](Palette &self, const QVector<RGBA> &colors, Archive::ShareMode share) {
            self.setColorTable(fullTable(colors).constData(), share);
        })
        .function("duplicate", &Palette::duplicate);
}

// The properties of a sprite's picture, and the sprite.
void registerSprite(Script::Table &table)
{
    table.usertype<ImageInfo>("ImageProperties")
        .constructor<>()
        .property("size", &ImageInfo::size)
        .property("format", [](const ImageInfo &self) { return int(self.format); });

    table.usertype<Sprite>("Sprite")
        .base<PropertyItem>()
        .property("parent", &Sprite::parent)
        .property("index", &Sprite::index)
        .property("palette", &Sprite::palette, &Sprite::setPalette)
        .property("imageIsShared", &Sprite::imageIsShared)
        .property("imageProperties", &Sprite::imageProperties)
        .property("image", &Sprite::image, [](Sprite &self, const QImage &image) { self.setImage(image); })
        .function("setImage",
                  Script::overload([](Sprite &self, const QImage &image) { self.setImage(image); },
                                   [](Sprite &self, const QImage &image, bool keepAxis) { self.setImage(image, keepAxis); },
                                   [](Sprite &self, const QImage &image, bool keepAxis, Sprite::PaletteMode mode,
                                      Palette *palette, Archive::ShareMode share) {
                                       self.setImage(image, keepAxis, mode, palette, share);
                                   }))
        .function("duplicate", &Sprite::duplicate)
        .function("splitRGB", &Sprite::splitRGB)
        .function("crop", &Sprite::crop)
        .enumeration("PaletteMode", {{"Ignore", Sprite::Ignore},
                                     {"OwnPalette", Sprite::OwnPalette},
                                     {"AdaptImage", Sprite::AdaptImage},
                                     {"SwapPalette", Sprite::SwapPalette}});
}

void registerPalettes(Script::Table &table)
{
    table.usertype<Palettes>("Palettes")
        .base<OrganizableObject>()
        .property("selected", &Palettes::selected, &Palettes::setSelected)
        .property("sprites", &Palettes::sprites)
        .property("count", &Palettes::count)
        .function("at", &Palettes::at)
        .function("add", [](Palettes &self, const QVector<RGBA> &colors, const QVariant &identifier,
                            Archive::ShareMode share) { return self.add(fullTable(colors).constData(), identifier, share); })
        .function("insert", [](Palettes &self, uint index, const QVector<RGBA> &colors, const QVariant &identifier,
                               Archive::ShareMode share) {
            return self.insert(index, fullTable(colors).constData(), identifier, share);
        })
        .function("remove", &Palettes::remove)
        .function("removeDuplicates", &Palettes::removeDuplicates)
        .function("find", &Palettes::find)
        .function("clear", &Palettes::clear)
        .function("clearUnused", &Palettes::clearUnused);
}

void registerSprites(Script::Table &table)
{
    table.usertype<Sprites>("Sprites")
        .base<ProjectFile>()
        .base<OrganizableObject>()
        .property("selected", &Sprites::selected, &Sprites::setSelected)
        .property("palettes", &Sprites::palettes)
        .property("count", &Sprites::count)
        .function("at", &Sprites::at)
        .function("add", &Sprites::add)
        .function("insert", &Sprites::insert)
        .function("remove", &Sprites::remove)
        .function("find", &Sprites::find)
        .function("clear", &Sprites::clear);
}

void registerSounds(Script::Table &table)
{
    // What asSounds gives needs a type of its own to arrive as more than a ProjectFile.
    table.usertype<Sound>("Sound")
        .base<PropertyItem>()
        .property("parent", &Sound::parent)
        .property("index", &Sound::index)
        .property("duration", &Sound::duration)
        .property("identifier", &Sound::identifier, &Sound::setIdentifier)
        .function("duplicate", &Sound::duplicate);
    table.usertype<Sounds>("Sounds")
        .base<ProjectFile>()
        .base<OrganizableObject>()
        .property("selected", &Sounds::selected, &Sounds::setSelected)
        .property("count", &Sounds::count)
        .function("at", &Sounds::at)
        .function("remove", &Sounds::remove)
        .function("find", &Sounds::find)
        .function("clear", &Sounds::clear);
}

} // namespace

void registerProjects(Script::Table &table)
{
    registerParentProject(table);
    registerProject(table);
    registerProjectFile(table);
    registerSpritePalette(table);
    registerSprite(table);
    registerPalettes(table);
    registerSprites(table);
    registerSounds(table);
}

} // namespace ScriptClasses
} // namespace Ovra
