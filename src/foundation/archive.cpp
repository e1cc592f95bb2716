#include "foundation/archive.h"

#include <QFileInfo>

namespace Ovra {

void Archive::release()
{
    if (--m_refCount == 0)
        free();
}

bool copyFile(Archive &from, const QString &fromName, Archive &to, const QString &toName)
{
    if (fromName == toName)
        return false;

    QIODevice *source = from.openFile(fromName, QIODevice::ReadOnly);
    QIODevice *target = to.openFile(toName, QIODevice::WriteOnly);
    if (!source || !target) {
        if (source)
            from.closeFile(source);
        if (target)
            to.discardFile(target);
        return false;
    }

    char block[0x20000];
    while (!source->atEnd()) {
        const qint64 length = source->read(block, sizeof block);
        if (length <= 0)
            break;
        target->write(block, length);
    }
    from.closeFile(source);
    to.closeFile(target);
    return true;
}

QString fixFileCase(const QString &base, Archive &archive, const QString &relative)
{
    QString full = base + relative;
    if (!archive.fileExists(full)) {
        full = base;
        const QStringList parts = relative.split(QLatin1Char('/'));
        for (int i = 0; i < parts.size(); ++i) {
            QString part = parts.at(i);
            const QDir::Filters kind = i == parts.size() - 1 ? QDir::Files : QDir::Dirs;
            const QStringList names = archive.entries(full, kind, QDir::SortFlags());
            for (const QString &name : names) {
                if (name.compare(part, Qt::CaseInsensitive) == 0) {
                    part = name;
                    break;
                }
            }
            if (!full.endsWith(QLatin1Char('/')))
                full += QLatin1Char('/');
            full += part;
        }
    }
    return archive.absoluteFileName(full);
}

QString absolutePathToRelative(const QString &pathIn, const QString &baseIn)
{
    QString path = pathIn;
    QString base = baseIn;
    path.replace(QLatin1Char('\\'), QLatin1Char('/'));
    base.replace(QLatin1Char('\\'), QLatin1Char('/'));
    if (!base.endsWith(QLatin1Char('/')))
        base += QLatin1Char('/');

    int common = 0;
    for (int i = 0; i < base.size() && i < path.size(); ++i) {
        if (base.at(i) != path.at(i))
            break;
        if (base.at(i) == QLatin1Char('/'))
            common = i;
    }
    // Without any common slash this is 1, which drops the first character: paths
    // without a common root keep that long-standing behaviour.
    const int start = common + 1;

    QString result;
    for (int i = start; i < base.size(); ++i) {
        if (base.at(i) == QLatin1Char('/'))
            result += QLatin1String("../");
    }
    if (start < 2 && path.size() < 2)
        return path;
    return result + path.mid(start);
}

QString entryNameProblem(const QString &name)
{
    if (name.contains(QLatin1Char('\\')))
        return QStringLiteral("holds a backslash");
    const QString cleaned = QDir::cleanPath(name);
    if (cleaned.size() >= 2 && cleaned.at(1) == QLatin1Char(':') && cleaned.at(0).isLetter())
        return QStringLiteral("holds a drive letter");
    if (cleaned.startsWith(QLatin1Char('/')))
        return QStringLiteral("is an absolute path");
    if (cleaned.isEmpty() || cleaned == QLatin1String("."))
        return QStringLiteral("names no file");
    if (cleaned == QLatin1String("..") || cleaned.startsWith(QLatin1String("../")))
        return QStringLiteral("climbs out of its folder with '..'");
    return QString();
}

bool isInsideDirectory(const QString &path, const QString &directory)
{
    const QString root = QFileInfo(directory).canonicalFilePath();
    if (root.isEmpty() || path.isEmpty())
        return false;
    // The deepest part of the path that is there: a file, a folder, or a link, which
    // counts even when it leads nowhere.
    QFileInfo info(QDir::cleanPath(QFileInfo(path).absoluteFilePath()));
    while (!info.exists() && !info.isSymLink()) {
        const QString above = info.absolutePath();
        if (above == info.absoluteFilePath())
            return false;
        info = QFileInfo(above);
    }
    const QString real = info.canonicalFilePath();
    if (real.isEmpty())
        return false;
    if (root == QLatin1String("/"))
        return true;
    return real == root || real.startsWith(root + QLatin1Char('/'));
}

StoredEntries::~StoredEntries() = default;

} // namespace Ovra
