#pragma once

// Helpers shared by the sprite container's sprites and palettes.
#include "image/imagedata.h"
#include "spriteid.h"

#include <QImage>
#include <QPoint>
#include <QString>
#include <QVariant>
#include <QVector>

namespace SpriteContainerDetail {

using Ovra::RGBA;

inline const QString &identifierName()
{
    static const QString name = QStringLiteral("Identifier");
    return name;
}

// Group and number are 16 bits in the file.
inline QPoint fileIdentifier(const QVariant &identifier)
{
    const QPoint point = identifier.toPoint();
    return QPoint(qBound(0, point.x(), SpriteId::MaximumPart), qBound(0, point.y(), SpriteId::MaximumPart));
}

inline QString identifierText(const QPoint &identifier)
{
    return QStringLiteral("%1, %2").arg(identifier.x()).arg(identifier.y());
}

inline int compareIdentifiers(const QPoint &x, const QPoint &y)
{
    if (x.x() != y.x())
        return x.x() < y.x() ? -1 : 1;
    return x.y() == y.y() ? 0 : x.y() < y.y() ? -1 : 1;
}

inline bool matches(const QPoint &identifier, uint id)
{
    return SpriteId::matches(identifier, id);
}

// The 256 entries of a picture's colour table; those it lacks are transparent black.
inline QVector<RGBA> colorsOf(const QImage &picture)
{
    QVector<RGBA> colors(256);
    const QVector<QRgb> table = picture.colorTable();
    for (int i = 0; i < table.size() && i < 256; ++i)
        colors[i] = RGBA(table.at(i));
    return colors;
}

inline QVector<RGBA> colorsOf(const RGBA *table)
{
    return table ? QVector<RGBA>(table, table + 256) : QVector<RGBA>(256);
}

} // namespace SpriteContainerDetail
