#pragma once

// Files for tests, written with their directories and read back whole.
#include <QDir>
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
