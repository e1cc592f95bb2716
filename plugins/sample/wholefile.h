#pragma once

// The containers of the sample engine are read and written whole, through the archive
// their file lives in.
#include <QByteArray>
#include <QString>

namespace Ovra {
class Archive;
}

// The file's bytes; false when it can't be opened.
bool readWholeFile(Ovra::Archive &archive, const QString &name, QByteArray &bytes);
// The file replaced by the bytes; false, and the old file kept, when they can't be written.
bool writeWholeFile(Ovra::Archive &archive, const QString &name, const QByteArray &bytes);
