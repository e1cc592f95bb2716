#include "editors/drawnicons_p.h"

#include <QPainter>
#include <QPixmap>
#include <QPolygonF>

#include <cmath>

namespace Ovra {

void iconPen(QPainter &painter, const QColor &colour, double width)
{
    painter.setPen(QPen(colour, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
}

void iconArrowHead(QPainter &painter, QPointF tip, QPointF direction, double length, double half)
{
    const double norm = std::hypot(direction.x(), direction.y());
    if (norm <= 0)
        return;
    const QPointF u = direction / norm;
    const QPointF n(-u.y(), u.x());
    painter.setPen(QPen(QColor(iconInk), 1, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(QColor(iconInk));
    painter.drawPolygon(QPolygonF({tip, tip - u * length + n * half, tip - u * length - n * half}));
}

namespace {

QPixmap drawn(const IconDrawing &drawing, int size)
{
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(size / 32.0, size / 32.0);
    drawing(painter);
    return pixmap;
}

} // namespace

QIcon drawnIcon(const IconDrawings &drawings, const QString &name)
{
    // Every editor of a kind (and every file it opens) asks for the same pictures.
    static QHash<QPair<const IconDrawings *, QString>, QIcon> made;
    const auto key = qMakePair(&drawings, name);
    if (const auto kept = made.constFind(key); kept != made.constEnd())
        return kept.value();
    const auto found = drawings.constFind(name);
    if (found == drawings.constEnd())
        return QIcon();
    QIcon icon;
    for (int size : {16, 24, 32, 48, 64})
        icon.addPixmap(drawn(found.value(), size));
    made.insert(key, icon);
    return icon;
}

} // namespace Ovra
