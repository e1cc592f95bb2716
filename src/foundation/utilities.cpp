#include "foundation/utilities.h"

#include <QFileInfo>
#include <QIODevice>

namespace Ovra {

QString randomString(int length)
{
    static const char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    QString result;
    if (length < 1)
        return result;
    result.reserve(length);
    for (int i = 0; i < length; ++i) {
        // qrand keeps the per-thread sequence that the rest of the program may have seeded.
QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED
        result += QLatin1Char(alphabet[qrand() % 62]);
QT_WARNING_POP
    }
    return result;
}

QByteArray fileExtension(const QString &name)
{
    return QFileInfo(name).suffix().toUpper().toLatin1();
}

void skipRead(QIODevice *device, uint count)
{
    char buffer[256];
    while (count > 0) {
        const uint piece = qMin<uint>(count, sizeof buffer);
        device->read(buffer, piece);
        count -= piece;
    }
}

const char *version()
{
    return OVRA_VERSION;
}

} // namespace Ovra
