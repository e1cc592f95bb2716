#include "editors/graphics/viewicons_p.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace Ovra {

namespace {

const QColor ink(60, 60, 60);

void drawCross(QPainter &p, const QColor &colour, bool ring)
{
    p.setPen(QPen(colour, 2.0, Qt::SolidLine, Qt::FlatCap));
    p.drawLine(QPointF(8, 1.5), QPointF(8, 14.5));
    p.drawLine(QPointF(1.5, 8), QPointF(14.5, 8));
    if (ring) {
        p.setPen(QPen(colour, 1.2));
        p.drawEllipse(QPointF(8, 8), 4.5, 4.5);
    }
}

void drawBox(QPainter &p, const QColor &colour)
{
    QColor fill = colour;
    fill.setAlpha(90);
    p.setPen(QPen(colour, 1.5));
    p.setBrush(fill);
    p.drawRect(QRectF(2.5, 3.5, 11, 9));
}

void drawRuler(QPainter &p)
{
    p.setPen(QPen(ink, 1.0));
    p.setBrush(QColor(240, 210, 120));
    p.drawRect(QRectF(1.5, 4.5, 13, 7));
    for (int x = 3; x <= 13; x += 2)
        p.drawLine(QPointF(x + 0.5, 4.5), QPointF(x + 0.5, x % 4 == 1 ? 9 : 7));
}

void drawGuides(QPainter &p)
{
    p.setPen(QPen(QColor(30, 140, 200), 1.5, Qt::DashLine));
    p.drawLine(QPointF(1, 10.5), QPointF(15, 10.5));
    p.drawLine(QPointF(5.5, 1), QPointF(5.5, 15));
}

void drawCenter(QPainter &p)
{
    p.setPen(QPen(ink, 1.2));
    p.drawRect(QRectF(1.5, 1.5, 13, 13));
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(200, 40, 40));
    p.drawEllipse(QPointF(8, 8), 2.5, 2.5);
}

// A lens with something in it: "+", "-", four corners, or "1".
void drawLens(QPainter &p, char sign)
{
    p.setPen(QPen(ink, 1.5));
    p.setBrush(QColor(255, 255, 255, 200));
    p.drawEllipse(QPointF(6.5, 6.5), 5, 5);
    p.setPen(QPen(ink, 2.5, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(10.5, 10.5), QPointF(14.5, 14.5));
    p.setPen(QPen(ink, 1.3));
    switch (sign) {
    case '+':
        p.drawLine(QPointF(6.5, 4), QPointF(6.5, 9));
        Q_FALLTHROUGH();
    case '-':
        p.drawLine(QPointF(4, 6.5), QPointF(9, 6.5));
        break;
    case 'f': {
        QPainterPath corners;
        for (const QPointF &c : {QPointF(4, 4), QPointF(9, 4), QPointF(9, 9), QPointF(4, 9)}) {
            const qreal dx = c.x() < 6 ? 1.5 : -1.5;
            const qreal dy = c.y() < 6 ? 1.5 : -1.5;
            corners.moveTo(c + QPointF(dx, 0));
            corners.lineTo(c);
            corners.lineTo(c + QPointF(0, dy));
        }
        p.setBrush(Qt::NoBrush);
        p.drawPath(corners);
        break;
    }
    default:
        p.drawLine(QPointF(5.5, 5), QPointF(7, 4));
        p.drawLine(QPointF(7, 4), QPointF(7, 9.5));
        break;
    }
}

bool draw(QPainter &p, const QString &name)
{
    if (name == QLatin1String("view_center_origin"))
        drawCenter(p);
    else if (name == QLatin1String("view_main_cross"))
        drawCross(p, QColor(200, 40, 40), false);
    else if (name == QLatin1String("view_secondary_cross"))
        drawCross(p, QColor(40, 80, 210), false);
    else if (name == QLatin1String("view_extra_cross"))
        drawCross(p, QColor(30, 150, 60), true);
    else if (name == QLatin1String("view_rulers"))
        drawRuler(p);
    else if (name == QLatin1String("view_guide_lines"))
        drawGuides(p);
    else if (name == QLatin1String("view_attack_box"))
        drawBox(p, QColor(210, 40, 40));
    else if (name == QLatin1String("view_collision_box"))
        drawBox(p, QColor(40, 80, 210));
    else if (name == QLatin1String("view_zoom_in"))
        drawLens(p, '+');
    else if (name == QLatin1String("view_zoom_out"))
        drawLens(p, '-');
    else if (name == QLatin1String("view_zoom_fit"))
        drawLens(p, 'f');
    else if (name == QLatin1String("view_zoom_actual"))
        drawLens(p, '1');
    else
        return false;
    return true;
}

} // namespace

QIcon viewActionIcon(const QString &name)
{
    QIcon icon;
    for (int size : {16, 32}) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.scale(size / 16.0, size / 16.0);
        if (!draw(painter, name))
            return QIcon();
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

} // namespace Ovra
