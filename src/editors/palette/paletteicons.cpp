// Pictures for the buttons of the palette editor's bar, for hosts that have none: letters
// and arrows set in the font look out of place beside the drawn icons of the other editors.
// Each is drawn on a square of 32 units from a few strokes, in the same ink and line widths,
// so that it stays sharp at every size; an icon is drawn once and kept.
#include "editors/palette/paletteicons_p.h"

#include "editors/drawnicons_p.h"

#include <QHash>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

#include <cmath>
#include <functional>

namespace Ovra {
namespace {

constexpr QRgb ink = iconInk;
constexpr QRgb addition = iconAddition;
constexpr QRgb removal = iconRemoval;
constexpr QRgb folderBack = qRgb(222, 172, 62);
constexpr QRgb folderFront = qRgb(246, 208, 104);
// The four colours of a swatch, in reading order.
constexpr QRgb swatchColours[] = {qRgb(210, 60, 60), qRgb(236, 190, 50), qRgb(46, 150, 62), qRgb(60, 100, 210)};

void pen(QPainter &p, const QColor &colour, double width = 2.5)
{
    iconPen(p, colour, width);
}

void outlined(QPainter &p, const QColor &fill, double width = 2)
{
    p.setPen(QPen(QColor(ink), width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.setBrush(fill);
}

// A filled arrow head whose point is at `tip`, pointing along `direction`.
void head(QPainter &p, QPointF tip, QPointF direction, double length = 6, double half = 4.5)
{
    iconArrowHead(p, tip, direction, length, half);
}

void arrow(QPainter &p, QPointF from, QPointF to)
{
    const QPointF d = to - from;
    const double norm = std::hypot(d.x(), d.y());
    if (norm <= 6)
        return;
    pen(p, ink);
    p.drawLine(from, to - d / norm * 5);
    head(p, to, d);
}

// A palette as the bar shows it: four colours in a frame.
void swatch(QPainter &p, const QRectF &rect)
{
    const double w = rect.width() / 2;
    const double h = rect.height() / 2;
    p.setPen(Qt::NoPen);
    for (int i = 0; i < 4; ++i) {
        p.setBrush(QColor(swatchColours[i]));
        p.drawRect(QRectF(rect.left() + (i % 2) * w, rect.top() + (i / 2) * h, w, h));
    }
    pen(p, ink, 1.5);
    p.drawLine(QPointF(rect.center().x(), rect.top()), QPointF(rect.center().x(), rect.bottom()));
    p.drawLine(QPointF(rect.left(), rect.center().y()), QPointF(rect.right(), rect.center().y()));
    pen(p, ink, 2);
    p.drawRoundedRect(rect, 1.5, 1.5);
}

// One colour in a frame.
void chip(QPainter &p, const QRectF &rect, QRgb colour)
{
    outlined(p, QColor(colour));
    p.drawRoundedRect(rect, 1.5, 1.5);
}

// A curved arrow over the top, from the lower right round to the left, pointing down:
// going back. Mirrored, it goes forward.
void turn(QPainter &p)
{
    const QRectF circle(7, 9, 18, 18);
    QPainterPath path;
    path.arcMoveTo(circle, -60);
    path.arcTo(circle, -60, 225);
    pen(p, ink, 3);
    p.drawPath(path);
    head(p, QPointF(7, 24), QPointF(0, 1), 8, 5.5);
}

// A small figure, as a sprite of a game might show one.
void figure(QPainter &p)
{
    outlined(p, QColor(swatchColours[1]));
    p.drawEllipse(QPointF(10, 8), 4.5, 4.5);
    outlined(p, QColor(swatchColours[3]));
    p.drawRoundedRect(QRectF(4.5, 13.5, 11, 9), 2, 2);
    pen(p, ink, 3);
    p.drawLine(QPointF(7.5, 23), QPointF(7.5, 29));
    p.drawLine(QPointF(12.5, 23), QPointF(12.5, 29));
}

using Drawing = IconDrawing;

const QHash<QString, Drawing> &drawings()
{
    static const QHash<QString, Drawing> table{
        {QStringLiteral("pal_add"),
         [](QPainter &p) {
             swatch(p, QRectF(3, 3, 18, 18));
             pen(p, addition, 3.5);
             p.drawLine(QPointF(24, 18), QPointF(24, 30));
             p.drawLine(QPointF(18, 24), QPointF(30, 24));
         }},
        {QStringLiteral("pal_delete"),
         [](QPainter &p) {
             swatch(p, QRectF(3, 3, 18, 18));
             pen(p, removal, 3.5);
             p.drawLine(QPointF(18, 25), QPointF(30, 25));
         }},
        {QStringLiteral("pal_open"),
         [](QPainter &p) {
             outlined(p, QColor(folderBack));
             p.drawPolygon(QPolygonF({QPointF(3, 27), QPointF(3, 7), QPointF(11, 7), QPointF(14, 10),
                                      QPointF(25, 10), QPointF(25, 27)}));
             outlined(p, QColor(folderFront));
             p.drawPolygon(QPolygonF({QPointF(3, 27), QPointF(7, 15), QPointF(30, 15), QPointF(26, 27)}));
         }},
        {QStringLiteral("pal_save"),
         [](QPainter &p) {
             pen(p, ink, 3);
             p.drawPolyline(QPolygonF({QPointF(4, 19), QPointF(4, 28), QPointF(28, 28), QPointF(28, 19)}));
             pen(p, ink, 3);
             p.drawLine(QPointF(16, 3), QPointF(16, 17));
             head(p, QPointF(16, 24), QPointF(0, 1), 8, 6);
         }},
        {QStringLiteral("pal_remap"),
         [](QPainter &p) {
             chip(p, QRectF(2, 3, 10, 10), swatchColours[0]);
             chip(p, QRectF(20, 3, 10, 10), swatchColours[3]);
             arrow(p, QPointF(4, 19), QPointF(29, 19));
             arrow(p, QPointF(28, 27), QPointF(3, 27));
         }},
        {QStringLiteral("pal_undo"), [](QPainter &p) { turn(p); }},
        {QStringLiteral("pal_redo"),
         [](QPainter &p) {
             p.translate(32, 0);
             p.scale(-1, 1);
             turn(p);
         }},
        {QStringLiteral("pal_apply_sprite"),
         [](QPainter &p) {
             figure(p);
             swatch(p, QRectF(17, 17, 13, 13));
         }},
        {QStringLiteral("pal_prev"),
         [](QPainter &p) {
             outlined(p, QColor(ink));
             p.drawPolygon(QPolygonF({QPointF(23, 5), QPointF(8, 16), QPointF(23, 27)}));
         }},
        {QStringLiteral("pal_next"),
         [](QPainter &p) {
             outlined(p, QColor(ink));
             p.drawPolygon(QPolygonF({QPointF(9, 5), QPointF(24, 16), QPointF(9, 27)}));
         }},
    };
    return table;
}

} // namespace

QIcon paletteActionIcon(const QString &actionName)
{
    return drawnIcon(drawings(), actionName);
}

} // namespace Ovra
