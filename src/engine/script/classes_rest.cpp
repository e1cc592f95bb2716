// The rest group, and registerScriptClasses, which registers every group in its order.
#include "engine/script/scriptclasses.h"

#include "engine/script/classes_p.h"
#include "engine/script/scriptimage.h"

#include "engine/debugger.h"
#include "engine/engine.h"
#include "engine/extension.h"
#include "engine/extensionmanager.h"
#include "engine/variable.h"
#include "foundation/filesystemarchive.h"
#include "foundation/progress.h"
#include "image/imagedata.h"
#include "project/organizable.h"
#include "project/project.h"
#include "project/projectfile.h"
#include "project/propertyitem.h"

#include <QFileInfo>

namespace Ovra {
namespace ScriptClasses {

namespace {

// The archive of a container extension whose format is the name's suffix; the file
// system for every other name (and where no extension serves the suffix).
Archive *archiveInstance(const QString &name, QIODevice::OpenMode mode)
{
    const QByteArray suffix = QFileInfo(name).suffix().toUpper().toLatin1();
    for (Extension *extension : ExtensionManager::list(Extension::Container)) {
        if (suffix == extension->format())
            return static_cast<ArchiveExtension *>(extension)->open(name, mode);
    }
    return &FileSystemArchive::instance();
}

QStringList entries(const Archive &archive, const QString &directory, const QStringList &nameFilters,
                    QDir::Filters filters, QDir::SortFlags sort)
{
    return archive.entries(directory, nameFilters, filters, sort);
}

void registerArchive(Script::Table &table)
{
    table.usertype<Archive>("Archive")
        .property("name", &Archive::name)
        .property("path", &Archive::path)
        // These two take the file name: archive:absoluteFileName("knight.def").
        .function("absoluteFilePath", &Archive::absoluteFilePath)
        .function("absoluteFileName", &Archive::absoluteFileName)
        .function("entries", Script::overload(
                                 &entries,
                                 [](const Archive &self, const QString &directory, QDir::Filters filters) {
                                     return self.entries(directory, filters);
                                 },
                                 [](const Archive &self, const QString &directory, QDir::Filters filters,
                                    QDir::SortFlags sort) { return self.entries(directory, filters, sort); }))
        .function("openFile", &Archive::openFile)
        .function("closeFile", [](Archive &self, QIODevice &device) { self.closeFile(&device); })
        .function("removeFile", &Archive::removeFile)
        .function("renameFile", &Archive::renameFile)
        .function("flush", &Archive::flush)
        .property("isReadOnly", &Archive::isReadOnly)
        .function("isWritable", &Archive::isWritable)
        .function("fileExists", &Archive::fileExists)
        .function("directoryExists", &Archive::directoryExists)
        .function("release", [](Archive &self) { self.release(); })
        .staticFunction("instance", &archiveInstance)
        .enumeration("OpenFlags", {{"ReadOnly", Archive::ReadOnly},
                                   {"WriteOnly", Archive::WriteOnly},
                                   {"ReadWrite", Archive::ReadWrite}});
    table.enumeration("ShareMode", {{"NoShare", Archive::NoShare}, {"Share", Archive::Share},
                                    {"AskToShare", Archive::AskToShare}});
}

// The variables a debugger shows, and the debuggers.
void registerDebuggers(Script::Table &table)
{
    table.usertype<Variable>("Variable")
        .property("name", &Variable::name)
        .property("value", &Variable::value, &Variable::setValue);

    table.usertype<BasicDebugger>("DebuggerBase")
        .property("liveUpdateRate", &BasicDebugger::liveUpdateRate, &BasicDebugger::setLiveUpdateRate)
        .function("stepOver", &BasicDebugger::stepOver)
        .function("stepInto", &BasicDebugger::stepInto)
        .function("stepOut", &BasicDebugger::stepOut)
        .function("stepFrame", &BasicDebugger::stepFrame)
        .function("stop", &BasicDebugger::stop)
        .function("variable", &BasicDebugger::variable);
    table.usertype<Debugger>("Debugger")
        .base<BasicDebugger>()
        .function("start", &Debugger::start)
        .function("interrupt", &Debugger::interrupt)
        .function("resume", &Debugger::resume);
    table.usertype<Emulator>("Emulator")
        .base<BasicDebugger>()
        .property("frameEnded", &Emulator::frameEnded)
        .function("canRun", &Emulator::canRun)
        .function("start", &Emulator::start);
}

void registerEngine(Script::Table &table)
{
    table.usertype<Engine>("Engine")
        .property("path", [](const Engine &self) { return self.path(); })
        // Takes its arguments: engine:queryString(Engine.GameMarkFile, 0).
        .function("queryString", &Engine::queryString)
        .function("singleFileFilters",
                  Script::overload([](const Engine &self) { return self.singleFileFilters(); },
                                   [](const Engine &self, int fileType) { return self.singleFileFilters(fileType); }))
        .function("createFile", &Engine::createFile)
        .enumeration("StringType", {{"AnimationFilePattern", Engine::AnimationFilePattern},
                                    {"GameMarkFile", Engine::GameMarkFile},
                                    {"CommentMarker", Engine::CommentMarker}});
}

void registerProgress(Script::Table &table)
{
    table.usertype<JobStats>("Progress")
        .property("wasCancelled", &JobStats::wasCancelled)
        .function("error", &JobStats::error)
        .function("setMaximum", &JobStats::setMaximum)
        .function("setValue", &JobStats::setValue)
        .function("incrementValue", &JobStats::incrementValue);
}

// The bases that the model's lists and items share.
void registerItemBases(Script::Table &table)
{
    table.usertype<OrganizableObject>("Organizable")
        .function("move", &OrganizableObject::move)
        .function("compare", &OrganizableObject::compare)
        .function("autoOrganize", [](OrganizableObject &self) { self.autoOrganize(); });

    table.usertype<PropertyItem>("PropertyItem")
        .function("propertyCount", [](const PropertyItem &self) { return self.propertyNames().size(); })
        .function("propertyName", [](const PropertyItem &self, int index) {
            const QStringList names = self.propertyNames();
            if (index < 0 || index >= names.size())
                throw std::out_of_range("no property at that index");
            return names.at(index);
        })
        .function("propertyValue", &PropertyItem::property)
        .function("setPropertyValue", &PropertyItem::setProperty);
}

void registerRgb(Script::Table &table)
{
    table.usertype<RGB>("RGB")
        .constructor<>()
        .constructor<uint>()
        .constructor<const RGB &>()
        .constructor<quint8, quint8, quint8>()
        .field("red", &RGB::red)
        .field("green", &RGB::green)
        .field("blue", &RGB::blue)
        .field("r", &RGB::red)
        .field("g", &RGB::green)
        .field("b", &RGB::blue)
        .metaFunction("__eq", [](const RGB &a, const RGB &b) { return a == b; });
}

void registerRgba(Script::Table &table)
{
    table.usertype<RGBA>("RGBA")
        .constructor<>()
        .constructor<uint>()
        .constructor<const RGB &>()
        .constructor<const RGBA &>()
        .constructor<quint8, quint8, quint8, quint8>()
        .field("red", &RGBA::red)
        .field("green", &RGBA::green)
        .field("blue", &RGBA::blue)
        .field("alpha", &RGBA::alpha)
        .field("r", &RGBA::red)
        .field("g", &RGBA::green)
        .field("b", &RGBA::blue)
        .field("a", &RGBA::alpha)
        .function("fromRGB", &RGBA::fromRGB)
        .function("toRGB", &RGBA::toRGB)
        .metaFunction("__eq", [](const RGBA &a, const RGBA &b) { return a == b; });
}

} // namespace

void registerRest(Script::Table &table)
{
    registerArchive(table);
    registerDebuggers(table);
    registerEngine(table);
    registerProgress(table);
    registerItemBases(table);
    registerRgb(table);
    registerRgba(table);
}

} // namespace ScriptClasses

void registerScriptClasses(Script::Table &table)
{
    ScriptClasses::registerIo(table);
    ScriptClasses::registerProjects(table);
    ScriptClasses::registerCode(table);
    ScriptClasses::registerValues(table);
    ScriptClasses::registerRest(table);
    registerImageClass(table);
}

void registerEngineScriptClasses(Script::State &state)
{
    for (Extension *extension : ExtensionManager::list(Extension::Named)) {
        if (auto *engineExtension = dynamic_cast<EngineExtension *>(extension)) {
            if (Engine *engine = engineExtension->engine())
                engine->registerScriptClasses(state);
        }
    }
}

} // namespace Ovra
