#include "wholefile.h"

#include "foundation/archive.h"

bool readWholeFile(Ovra::Archive &archive, const QString &name, QByteArray &bytes)
{
    QIODevice *device = archive.openFile(name, QIODevice::ReadOnly);
    if (!device)
        return false;
    bytes = device->readAll();
    archive.closeFile(device);
    return true;
}

bool writeWholeFile(Ovra::Archive &archive, const QString &name, const QByteArray &bytes)
{
    QIODevice *device = archive.openFile(name, QIODevice::WriteOnly);
    if (!device)
        return false;
    if (device->write(bytes) != bytes.size()) {
        archive.discardFile(device);
        return false;
    }
    archive.closeFile(device);
    return true;
}
