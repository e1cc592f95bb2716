// Pictures for the buttons of the animation editor's panel, for hosts that have none: a
// row of words would make the panel wider than the view beside it. Each is drawn on a
// square of 32 units from a few strokes, so that it stays sharp at every size.
#include "editors/animation/animationicons_p.h"

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
constexpr QRgb attack = qRgb(210, 60, 60);
constexpr QRgb collision = qRgb(60, 100, 210);
constexpr QRgb addition = iconAddition;
constexpr QRgb removal = iconRemoval;
constexpr QRgb onion = qRgb(150, 110, 40);

void pen(QPainter &p, const QColor &colour, double width = 2.5)
{
    iconPen(p, colour, width);
}

void arrow(QPainter &p, QPointF from, QPointF to, const QColor &colour = QColor(ink))
{
    pen(p, colour);
    p.drawLine(from, to);
    const QPointF d = to - from;
    const double length = std::hypot(d.x(), d.y());
    if (length <= 0)
        return;
    const QPointF u = d / length;
    const QPointF n(-u.y(), u.x());
    p.drawLine(to, to - u * 6 + n * 5);
    p.drawLine(to, to - u * 6 - n * 5);
}

// A frame of film: the shape most of the frame actions share.
void film(QPainter &p, const QRectF &rect = QRectF(5, 6, 18, 20))
{
    pen(p, ink, 2);
    p.drawRoundedRect(rect, 2, 2);
    for (double y = rect.top() + 3; y < rect.bottom() - 1; y += 5) {
        p.drawPoint(QPointF(rect.left() + 3, y));
        p.drawPoint(QPointF(rect.right() - 3, y));
    }
}

void box(QPainter &p, const QRectF &rect, const QColor &colour)
{
    QColor fill(colour);
    fill.setAlpha(90);
    p.setPen(QPen(colour, 2.5));
    p.setBrush(fill);
    p.drawRect(rect);
}

// The sign in the lower right corner: + adds, - and x take away, >> applies onwards.
void plus(QPainter &p)
{
    pen(p, addition, 3.5);
    p.drawLine(QPointF(24, 18), QPointF(24, 30));
    p.drawLine(QPointF(18, 24), QPointF(30, 24));
}

void minus(QPainter &p)
{
    pen(p, removal, 3.5);
    p.drawLine(QPointF(18, 25), QPointF(30, 25));
}

void cross(QPainter &p)
{
    pen(p, removal, 3.5);
    p.drawLine(QPointF(19, 19), QPointF(29, 29));
    p.drawLine(QPointF(29, 19), QPointF(19, 29));
}

void onwards(QPainter &p)
{
    pen(p, addition, 2.5);
    for (double x : {19.0, 25.0}) {
        p.drawLine(QPointF(x, 20), QPointF(x + 4, 25));
        p.drawLine(QPointF(x + 4, 25), QPointF(x, 30));
    }
}

void onionRings(QPainter &p)
{
    pen(p, onion, 2.5);
    p.drawEllipse(QRectF(4, 6, 16, 16));
    QColor light(onion);
    light.setAlpha(110);
    pen(p, light, 2.5);
    p.drawEllipse(QRectF(11, 10, 16, 16));
}

using Drawing = IconDrawing;

// Playback and frames.
void addFrameDrawings(QHash<QString, Drawing> &table)
{
    table.insert({
        {QStringLiteral("anim_play"),
         [](QPainter &p) {
             p.setPen(QPen(QColor(addition).darker(120), 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
             p.setBrush(QColor(addition));
             p.drawPolygon(QPolygonF({QPointF(9, 6), QPointF(26, 16), QPointF(9, 26)}));
         }},
        {QStringLiteral("anim_stop"),
         [](QPainter &p) {
             p.setPen(QPen(QColor(removal).darker(120), 2));
             p.setBrush(QColor(removal));
             p.drawRect(QRectF(8, 8, 16, 16));
         }},
        {QStringLiteral("anim_prev_frame"),
         [](QPainter &p) {
             film(p, QRectF(12, 6, 16, 20));
             arrow(p, QPointF(12, 16), QPointF(2, 16));
         }},
        {QStringLiteral("anim_next_frame"),
         [](QPainter &p) {
             film(p, QRectF(4, 6, 16, 20));
             arrow(p, QPointF(20, 16), QPointF(30, 16));
         }},
        {QStringLiteral("anim_frame_add"), [](QPainter &p) { film(p); plus(p); }},
        {QStringLiteral("anim_frame_delete"), [](QPainter &p) { film(p); minus(p); }},
        {QStringLiteral("anim_frame_align"),
         [](QPainter &p) {
             pen(p, ink);
             p.drawLine(QPointF(16, 3), QPointF(16, 29));
             box(p, QRectF(6, 7, 20, 6), collision);
             box(p, QRectF(10, 19, 12, 6), collision);
         }},
    });
}

// Moves of the offset, and values applied to the frames behind.
void addMoveDrawings(QHash<QString, Drawing> &table)
{
    table.insert({
        {QStringLiteral("anim_pos_left"), [](QPainter &p) { arrow(p, QPointF(28, 16), QPointF(4, 16)); }},
        {QStringLiteral("anim_pos_right"), [](QPainter &p) { arrow(p, QPointF(4, 16), QPointF(28, 16)); }},
        {QStringLiteral("anim_pos_up"), [](QPainter &p) { arrow(p, QPointF(16, 28), QPointF(16, 4)); }},
        {QStringLiteral("anim_pos_down"), [](QPainter &p) { arrow(p, QPointF(16, 4), QPointF(16, 28)); }},
        {QStringLiteral("anim_frameall_offset"),
         [](QPainter &p) {
             arrow(p, QPointF(4, 10), QPointF(18, 10));
             arrow(p, QPointF(8, 4), QPointF(8, 18));
             onwards(p);
         }},
        {QStringLiteral("anim_frameall_time"),
         [](QPainter &p) {
             pen(p, ink, 2);
             p.drawEllipse(QRectF(2, 2, 18, 18));
             p.drawLine(QPointF(11, 11), QPointF(11, 5));
             p.drawLine(QPointF(11, 11), QPointF(15, 13));
             onwards(p);
         }},
        {QStringLiteral("anim_frameall_flip"),
         [](QPainter &p) {
             pen(p, ink, 2);
             p.drawLine(QPointF(11, 2), QPointF(11, 20));
             p.setBrush(QColor(ink));
             p.drawPolygon(QPolygonF({QPointF(9, 5), QPointF(2, 17), QPointF(9, 17)}));
             p.setBrush(Qt::NoBrush);
             p.drawPolygon(QPolygonF({QPointF(13, 5), QPointF(20, 17), QPointF(13, 17)}));
             onwards(p);
         }},
        {QStringLiteral("anim_frameall_scale"),
         [](QPainter &p) {
             pen(p, ink, 2);
             p.drawRect(QRectF(2, 9, 10, 10));
             p.drawRect(QRectF(2, 3, 16, 16));
             onwards(p);
         }},
    });
}

// Contact boxes and the onion skin.
void addBoxDrawings(QHash<QString, Drawing> &table)
{
    table.insert({
        {QStringLiteral("anim_box_add_attack"), [](QPainter &p) { box(p, QRectF(3, 4, 18, 14), attack); plus(p); }},
        {QStringLiteral("anim_box_add_collision"),
         [](QPainter &p) { box(p, QRectF(3, 4, 18, 14), collision); plus(p); }},
        {QStringLiteral("anim_box_del"), [](QPainter &p) { box(p, QRectF(3, 4, 18, 14), attack); cross(p); }},
        {QStringLiteral("anim_box_delall"),
         [](QPainter &p) {
             box(p, QRectF(2, 3, 14, 10), attack);
             box(p, QRectF(7, 9, 14, 10), collision);
             cross(p);
         }},
        {QStringLiteral("anim_box_delall_anim"),
         [](QPainter &p) {
             film(p, QRectF(2, 3, 18, 20));
             box(p, QRectF(7, 8, 8, 8), collision);
             cross(p);
         }},
        {QStringLiteral("anim_box_prev"),
         [](QPainter &p) {
             pen(p, ink, 2);
             p.drawRect(QRectF(3, 3, 12, 10));
             box(p, QRectF(14, 16, 14, 12), collision);
             arrow(p, QPointF(9, 15), QPointF(9, 26));
         }},
        {QStringLiteral("anim_box_type"),
         [](QPainter &p) {
             box(p, QRectF(2, 3, 12, 10), attack);
             box(p, QRectF(18, 19, 12, 10), collision);
             arrow(p, QPointF(18, 8), QPointF(28, 15));
             arrow(p, QPointF(14, 24), QPointF(4, 17));
         }},
        {QStringLiteral("anim_box_allinst"),
         [](QPainter &p) {
             box(p, QRectF(2, 2, 12, 9), collision);
             box(p, QRectF(10, 11, 12, 9), collision);
             box(p, QRectF(18, 20, 12, 9), collision);
         }},
        {QStringLiteral("anim_onion_skin"), [](QPainter &p) { onionRings(p); }},
        {QStringLiteral("anim_onion_sel"),
         [](QPainter &p) {
             onionRings(p);
             pen(p, ink, 2);
             for (double y : {26.0, 30.0})
                 p.drawLine(QPointF(4, y), QPointF(16, y));
         }},
        {QStringLiteral("anim_onion_framesel"),
         [](QPainter &p) {
             onionRings(p);
             film(p, QRectF(20, 18, 10, 12));
         }},
        {QStringLiteral("anim_onion_find"),
         [](QPainter &p) {
             onionRings(p);
             pen(p, ink, 3);
             p.drawLine(QPointF(22, 22), QPointF(30, 30));
         }},
    });
}

const QHash<QString, Drawing> &drawings()
{
    static const QHash<QString, Drawing> table = [] {
        QHash<QString, Drawing> all;
        addFrameDrawings(all);
        addMoveDrawings(all);
        addBoxDrawings(all);
        return all;
    }();
    return table;
}

} // namespace

QIcon animationActionIcon(const QString &name)
{
    return drawnIcon(drawings(), name);
}

} // namespace Ovra
