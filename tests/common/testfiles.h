#pragma once

// Files for tests, written with their directories and read back whole.
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

inline bool writeFile(const QString &name, const QByteArray &data = QByteArray("x"))
{
    QDir().mkpath(QFileInfo(name).absolutePath());
    QFile file(name);
    return file.open(QIODevice::WriteOnly) && file.write(data) == data.size();
}

// The file's bytes, or `missing` when it can't be read.
inline QByteArray readFile(const QString &name, const QByteArray &missing = QByteArray())
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : missing;
}

// Copies every file below `source` to the same place below `target`; false when a file
// can't be copied or there was none.
inline bool copyTree(const QString &source, const QString &target)
{
    QDirIterator files(source, QDir::Files, QDirIterator::Subdirectories);
    bool any = false;
    while (files.hasNext()) {
        const QString name = files.next();
        if (!writeFile(target + QLatin1Char('/') + QDir(source).relativeFilePath(name), readFile(name)))
            return false;
        any = true;
    }
    return any;
}
