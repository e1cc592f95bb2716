#pragma once

#include "foundation/global.h"

#include <QByteArray>
#include <QString>

class QIODevice;

namespace Ovra {

// Reflected CRC-32 (polynomial 0xEDB88320), started at all ones and without the
// final inversion: the result is the register itself, so empty data gives 0xFFFFFFFF.
OVRA_EXPORT quint32 CRC32(const char *data, int length);

// Reflected CRC-64 (polynomial 0x95AC9329AC4BC9B5), started at all ones and
// without the final inversion.
OVRA_EXPORT quint64 CRC64(uchar *data, uint length);

// `length` characters drawn from letters and digits with qrand(); empty below 1.
OVRA_EXPORT QString randomString(int length);

// The upper-case suffix of a file name as Latin-1: the key of every format table ("PNG").
OVRA_EXPORT QByteArray fileExtension(const QString &name);

// Reads and drops `count` bytes, for devices that can't seek. Short reads are ignored.
OVRA_EXPORT void skipRead(QIODevice *device, uint count);

} // namespace Ovra
