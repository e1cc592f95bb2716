// The io group: string lists, devices, and the flags of files and directory listings.
#include "engine/script/classes_p.h"

#include <QDir>
#include <QIODevice>

namespace Ovra {
namespace ScriptClasses {

namespace {

// Lua strings can't be filled in place, so "read" gives the bytes it read as a string
// (shorter at the end of the device, empty on an error).
QByteArray readBytes(QIODevice &device, qint64 size)
{
    if (size < 0)
        throw std::invalid_argument("the size to read is negative");
    return device.read(size);
}

qint64 writeBytes(QIODevice &device, const QByteArray &data, qint64 size)
{
    if (size < 0 || size > data.size())
        throw std::invalid_argument("the size to write is outside the data");
    return device.write(data.constData(), size);
}

} // namespace

void registerIo(Script::Table &table)
{
    table.usertype<QStringList>("StringList").constructor<>();

    table.usertype<QIODevice>("File")
        .property("isSequential", &QIODevice::isSequential)
        .property("pos", &QIODevice::pos)
        .property("size", &QIODevice::size)
        .property("atEnd", &QIODevice::atEnd)
        .function("seek", &QIODevice::seek)
        .function("reset", &QIODevice::reset)
        .function("read", &readBytes)
        .function("write", Script::overload(&writeBytes, [](QIODevice &device, const QByteArray &data) {
                      return device.write(data);
                  }));

    table.enumeration("OpenMode", {{"ReadOnly", QIODevice::ReadOnly},
                                   {"WriteOnly", QIODevice::WriteOnly},
                                   {"ReadWrite", QIODevice::ReadWrite}});

    table.enumeration("Filter", {{"Dirs", QDir::Dirs},
                                 {"Files", QDir::Files},
                                 {"NoSymLinks", QDir::NoSymLinks},
                                 {"AllEntries", QDir::AllEntries},
                                 {"AllDirs", QDir::AllDirs},
                                 {"CaseSensitive", QDir::CaseSensitive},
                                 {"NoFilter", QDir::NoFilter}});
    table.usertype<QDir::Filters>("Filters")
        .constructor<>()
        .metaFunction("__bor", [](QDir::Filters a, QDir::Filters b) { return a | b; });

    table.enumeration("SortFlag", {{"Name", QDir::Name},
                                   {"Time", QDir::Time},
                                   {"Size", QDir::Size},
                                   {"DirsFirst", QDir::DirsFirst},
                                   {"DirsLast", QDir::DirsLast},
                                   {"Reversed", QDir::Reversed},
                                   {"IgnoreCase", QDir::IgnoreCase},
                                   {"Type", QDir::Type},
                                   {"NoSort", QDir::NoSort}});
    table.usertype<QDir::SortFlags>("SortFlags")
        .constructor<>()
        .metaFunction("__bor", [](QDir::SortFlags a, QDir::SortFlags b) { return a | b; });
}

} // namespace ScriptClasses
} // namespace Ovra
