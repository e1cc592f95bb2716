// Pictures for the sprite editor's tools, for hosts that have none: ten words side by side
// make a tool bar far wider than the view under it. Each is drawn on a square of 32 units
// from a few strokes, in the ink and line widths of the other editors' drawn icons, so that
// it stays sharp at every size; an icon is drawn once and kept.
#include "editors/sprite/imagetoolicons_p.h"

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
constexpr QRgb selection = qRgb(60, 100, 210);
constexpr QRgb wood = qRgb(236, 204, 158);
constexpr QRgb lacquer = qRgb(240, 186, 56);
constexpr QRgb rubber = qRgb(232, 128, 150);
constexpr QRgb sleeve = qRgb(110, 150, 220);
constexpr QRgb spark = qRgb(232, 172, 30);
constexpr QRgb metal = qRgb(196, 204, 214);
constexpr QRgb paint = qRgb(60, 100, 210);
constexpr QRgb glass = qRgb(226, 238, 246);
constexpr QRgb swatchFrom = qRgb(210, 60, 60);
constexpr QRgb swatchTo = qRgb(46, 150, 62);

void pen(QPainter &p, const QColor &colour, double width = 2.5)
{
    iconPen(p, colour, width);
}

void outlined(QPainter &p, const QColor &fill, double width = 2)
{
    p.setPen(QPen(QColor(ink), width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.setBrush(fill);
}

// The marching ants of a selection: short dashes over a faint wash, so that the outline
// reads as a selection and not as a drawn rectangle.
void ants(QPainter &p)
{
    QPen dashes(QColor(ink), 2, Qt::CustomDashLine, Qt::FlatCap, Qt::MiterJoin);
    dashes.setDashPattern({2, 1.5});
    p.setPen(dashes);
    QColor wash(selection);
    wash.setAlpha(60);
    p.setBrush(wash);
}

// A filled arrow head whose point is at `tip`, pointing along `direction`.
void head(QPainter &p, QPointF tip, QPointF direction, double length = 6, double half = 4)
{
    iconArrowHead(p, tip, direction, length, half);
}

void arrow(QPainter &p, QPointF from, QPointF to, double length = 6, double half = 4)
{
    const QPointF d = to - from;
    const double norm = std::hypot(d.x(), d.y());
    if (norm <= length)
        return;
    pen(p, ink);
    p.drawLine(from, to - d / norm * (length - 1));
    head(p, to, d, length, half);
}

// Four arrows out of one point: what moves, in every direction.
void moveCross(QPainter &p, QPointF centre, double arm, double length = 6, double half = 4)
{
    for (const QPointF &way : {QPointF(1, 0), QPointF(-1, 0), QPointF(0, 1), QPointF(0, -1)})
        arrow(p, centre, centre + way * arm, length, half);
}

// A pencil whose point is at `tip`, lying at `angle` degrees (0 points the body to the
// right, -45 to the upper right), `length` units long.
void pencil(QPainter &p, QPointF tip, double angle, double length = 32)
{
    p.save();
    p.translate(tip);
    p.rotate(angle);
    const double scale = length / 32;
    p.scale(scale, scale);
    const double w = 2 / scale;
    outlined(p, QColor(wood), w);
    p.drawPolygon(QPolygonF({QPointF(0, 0), QPointF(9, -4), QPointF(9, 4)}));
    outlined(p, QColor(lacquer), w);
    p.drawRect(QRectF(9, -4, 16, 8));
    outlined(p, QColor(rubber), w);
    p.drawRoundedRect(QRectF(25, -4, 6, 8), 1.5, 1.5);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(ink));
    p.drawPolygon(QPolygonF({QPointF(0, 0), QPointF(3.5, -1.6), QPointF(3.5, 1.6)}));
    p.restore();
}

void swatch(QPainter &p, const QRectF &rect, QRgb colour)
{
    outlined(p, QColor(colour));
    p.drawRoundedRect(rect, 1, 1);
}

using Drawing = IconDrawing;

// The tools that choose a part of the picture or move it.
void addSelectionDrawings(QHash<QString, Drawing> &table)
{
    table.insert({
        {QStringLiteral("spr_tool_canvasmove"), [](QPainter &p) { moveCross(p, QPointF(16, 16), 14, 6, 4.5); }},
        {QStringLiteral("spr_tool_selmove"),
         [](QPainter &p) {
             ants(p);
             p.drawRect(QRectF(2, 2, 18, 18));
             moveCross(p, QPointF(21, 21), 10, 5, 3);
         }},
        {QStringLiteral("spr_tool_rectsel"),
         [](QPainter &p) {
             ants(p);
             p.drawRect(QRectF(3, 6, 26, 20));
         }},
        {QStringLiteral("spr_tool_freesel"),
         [](QPainter &p) {
             QPainterPath loop(QPointF(10, 21));
             loop.cubicTo(1, 18, 2, 5, 14, 3.5);
             loop.cubicTo(26, 2, 32, 10, 27, 16);
             loop.cubicTo(23, 21, 16, 22, 10, 21);
             ants(p);
             p.drawPath(loop);
             QPainterPath rope(QPointF(10, 21));
             rope.cubicTo(5, 24, 12, 27, 7, 30);
             pen(p, ink);
             p.drawPath(rope);
         }},
        {QStringLiteral("spr_tool_magicwand"),
         [](QPainter &p) {
             pen(p, ink, 4.5);
             p.drawLine(QPointF(4, 28), QPointF(19, 13));
             pen(p, ink, 6.5);
             p.drawLine(QPointF(19, 13), QPointF(21, 11));
             pen(p, Qt::white, 3);
             p.drawLine(QPointF(19, 13), QPointF(21, 11));
             p.setPen(QPen(QColor(spark).darker(130), 1, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
             p.setBrush(QColor(spark));
             p.drawPolygon(QPolygonF({QPointF(24, 1), QPointF(26, 6), QPointF(31, 8), QPointF(26, 10),
                                      QPointF(24, 15), QPointF(22, 10), QPointF(17, 8), QPointF(22, 6)}));
             pen(p, QColor(spark), 2);
             p.drawLine(QPointF(11, 4), QPointF(11, 8));
             p.drawLine(QPointF(9, 6), QPointF(13, 6));
             p.drawLine(QPointF(28, 19), QPointF(28, 23));
             p.drawLine(QPointF(26, 21), QPointF(30, 21));
         }},
    });
}

// The tools that read or lay down colour.
void addPaintDrawings(QHash<QString, Drawing> &table)
{
    table.insert({
        {QStringLiteral("spr_tool_picker"),
         [](QPainter &p) {
             p.translate(4, 28);
             p.rotate(-45);
             outlined(p, QColor(glass));
             p.drawPolygon(QPolygonF({QPointF(0, -1), QPointF(9, -3.5), QPointF(9, 3.5), QPointF(0, 1)}));
             p.drawRect(QRectF(9, -3.5, 12, 7));
             p.setPen(Qt::NoPen);
             p.setBrush(QColor(paint));
             p.drawRect(QRectF(10, -2.5, 5, 5));
             outlined(p, QColor(ink));
             p.drawRect(QRectF(21, -5.5, 3, 11));
             p.drawRoundedRect(QRectF(24, -4.5, 9, 9), 4, 4);
         }},
        {QStringLiteral("spr_tool_pen"), [](QPainter &p) { pencil(p, QPointF(3, 29), -45); }},
        {QStringLiteral("spr_tool_eraser"),
         [](QPainter &p) {
             pen(p, ink, 2);
             p.drawLine(QPointF(3, 29), QPointF(29, 29));
             p.translate(17, 15);
             p.rotate(-35);
             outlined(p, QColor(rubber));
             p.drawRoundedRect(QRectF(-12, -6, 10, 12), 2, 2);
             outlined(p, QColor(sleeve));
             p.drawRoundedRect(QRectF(-2, -6, 14, 12), 2, 2);
         }},
        {QStringLiteral("spr_tool_remap_pen"),
         [](QPainter &p) {
             swatch(p, QRectF(2, 2, 9, 9), swatchFrom);
             swatch(p, QRectF(21, 2, 9, 9), swatchTo);
             arrow(p, QPointF(12.5, 6.5), QPointF(19.5, 6.5), 4.5, 3);
             pencil(p, QPointF(5, 29), -45, 21);
         }},
        {QStringLiteral("spr_tool_paintbucket"),
         [](QPainter &p) {
             p.save();
             p.translate(12, 17);
             p.rotate(35);
             pen(p, ink, 2);
             QPainterPath handle(QPointF(-8, -8));
             handle.arcTo(QRectF(-8, -16, 16, 16), 180, -180);
             p.drawPath(handle);
             outlined(p, QColor(metal));
             p.drawPolygon(QPolygonF({QPointF(-8, -8), QPointF(8, -8), QPointF(6, 9), QPointF(-6, 9)}));
             outlined(p, QColor(paint));
             p.drawEllipse(QRectF(-8, -10.5, 16, 5));
             p.restore();
             QPainterPath drop(QPointF(26, 18));
             drop.cubicTo(27, 21, 30, 23, 30, 26);
             drop.arcTo(QRectF(22, 22, 8, 8), 0, -180);
             drop.cubicTo(22, 23, 25, 21, 26, 18);
             p.setPen(QPen(QColor(paint).darker(130), 1));
             p.setBrush(QColor(paint));
             p.drawPath(drop);
         }},
    });
}

const QHash<QString, Drawing> &drawings()
{
    static const QHash<QString, Drawing> table = [] {
        QHash<QString, Drawing> all;
        addSelectionDrawings(all);
        addPaintDrawings(all);
        return all;
    }();
    return table;
}

} // namespace

QIcon imageToolIcon(const QString &actionName)
{
    return drawnIcon(drawings(), actionName);
}

} // namespace Ovra
