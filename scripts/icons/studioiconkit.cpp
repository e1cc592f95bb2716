#include "studioiconkit.h"

#include <QPolygonF>

#include <cmath>

namespace IconKit {

QPen pen(const QColor &c, double w, Qt::PenCapStyle cap)
{
    QPen result(c, w, Qt::SolidLine, cap, Qt::MiterJoin);
    if (cap == Qt::RoundCap)
        result.setJoinStyle(Qt::RoundJoin);
    return result;
}

// Shapes are given by their outer pixel bounds; the one unit outline runs
// half a unit inside them.
QRectF inner(const QRect &r)
{
    return QRectF(r).adjusted(0.5, 0.5, -0.5, -0.5);
}

void outlined(QPainter &p, const QPainterPath &path, const QColor &fill,
              const QColor &line, double w)
{
    p.setPen(pen(line, w));
    p.setBrush(fill);
    p.drawPath(path);
}

void box(QPainter &p, const QRect &r, const QColor &fill, const QColor &line,
         double radius)
{
    QPainterPath path;
    path.addRoundedRect(inner(r), radius, radius);
    outlined(p, path, fill, line);
}

void fill(QPainter &p, const QRectF &r, const QColor &c)
{
    p.fillRect(r, c);
}

void polyline(QPainter &p, std::initializer_list<QPointF> pts, const QColor &c,
              double w, Qt::PenCapStyle cap)
{
    p.setPen(pen(c, w, cap));
    p.setBrush(Qt::NoBrush);
    p.drawPolyline(QPolygonF(QVector<QPointF>(pts)));
}

void solid(QPainter &p, std::initializer_list<QPointF> pts, const QColor &c)
{
    p.setPen(Qt::NoPen);
    p.setBrush(c);
    p.drawPolygon(QPolygonF(QVector<QPointF>(pts)));
}

// Straight arrow of width `w` whose head tip is at `to`.
void arrow(QPainter &p, QPointF from, QPointF to, const QColor &c, double w,
           double head)
{
    const QPointF d = to - from;
    const double len = std::hypot(d.x(), d.y());
    const QPointF u = d / len;
    const QPointF n(-u.y(), u.x());
    const QPointF base = to - u * head;
    p.setPen(pen(c, w, Qt::FlatCap));
    p.drawLine(from, base + u * 0.5);
    solid(p, {to, base + n * head, base - n * head}, c);
}

// A page with its top right corner folded over; `lines` text lines below.
void page(Canvas &c, const QRect &r, int foldSize, const QColor &paper)
{
    const QRectF q = inner(r);
    const double f = foldSize;
    QPainterPath path;
    path.moveTo(q.left(), q.top());
    path.lineTo(q.right() - f, q.top());
    path.lineTo(q.right(), q.top() + f);
    path.lineTo(q.right(), q.bottom());
    path.lineTo(q.left(), q.bottom());
    path.closeSubpath();
    outlined(c.p, path, paper);
    QPainterPath ear;
    ear.moveTo(q.right() - f, q.top());
    ear.lineTo(q.right() - f, q.top() + f);
    ear.lineTo(q.right(), q.top() + f);
    outlined(c.p, ear, kPaperShade);
}

// Text lines from x0 to the given ends, one every `step` units from y0;
// the large size fits twice as many, half as thick.
void textLines(Canvas &c, double x0, double y0, std::initializer_list<double> ends,
               const QColor &colour, double step)
{
    double y = y0;
    for (double end : ends) {
        fill(c.p, QRectF(x0, y, end - x0, c.hair()), colour);
        if (c.big)
            fill(c.p, QRectF(x0, y + step / 2, (end - x0) * 0.8, c.hair()), colour);
        y += step;
    }
}

void circleBadge(QPainter &p, QPointF centre, double r, const QColor &fill,
                 const QColor &line)
{
    p.setPen(pen(line));
    p.setBrush(fill);
    p.drawEllipse(centre, r, r);
}

// Pencil lying from bottom left (the tip) to top right.
void pencil(QPainter &p, QPointF tip, double length)
{
    p.save();
    p.translate(tip);
    p.rotate(-45);
    const double l = length;
    QPainterPath body;
    body.moveTo(0, 0);
    body.lineTo(3, -1.5);
    body.lineTo(l, -1.5);
    body.lineTo(l, 1.5);
    body.lineTo(3, 1.5);
    body.closeSubpath();
    outlined(p, body, kAmber, kSlate, 0.9);
    solid(p, {QPointF(0, 0), QPointF(1.6, -0.8), QPointF(1.6, 0.8)}, kSlate);
    p.fillRect(QRectF(l - 2, -1.5, 2, 3), kRed);
    p.restore();
}

// Floppy disk within the pixel bounds `r`.
void floppy(Canvas &c, const QRect &r)
{
    const QRectF q = inner(r);
    const double cut = r.width() > 12 ? 3 : 2;
    QPainterPath body;
    body.moveTo(q.left(), q.top());
    body.lineTo(q.right() - cut, q.top());
    body.lineTo(q.right(), q.top() + cut);
    body.lineTo(q.right(), q.bottom());
    body.lineTo(q.left(), q.bottom());
    body.closeSubpath();
    outlined(c.p, body, kBlue);
    const int w = r.width();
    const int h = r.height();
    // Metal shutter at the top with its slot, paper label at the bottom.
    const QRectF shutter(r.left() + w / 4, r.top() + 1, w / 2, h / 3 - 1);
    fill(c.p, shutter, kPaperShade);
    fill(c.p, QRectF(shutter.right() - 2, shutter.top() + 1, 1, shutter.height() - 1),
         kSlate);
    const QRectF label(r.left() + 2, r.top() + h / 2 + 1, w - 4, h / 2 - 3);
    fill(c.p, label, kPaper);
    if (c.big) {
        fill(c.p, QRectF(label.left() + 1, label.top() + 1.25, label.width() - 2, 0.5),
             kSlateLight);
        fill(c.p, QRectF(label.left() + 1, label.top() + 2.75, label.width() - 3, 0.5),
             kSlateLight);
    }
}

// Folder within `r`: tab on the top left; open folders show their front flap
// tipped forward.
void folder(Canvas &c, const QRect &r, bool open)
{
    const QRectF q = inner(r);
    QPainterPath back;
    back.moveTo(q.left(), q.top());
    back.lineTo(q.left() + 5, q.top());
    back.lineTo(q.left() + 7, q.top() + 2);
    back.lineTo(q.right(), q.top() + 2);
    back.lineTo(q.right(), q.bottom());
    back.lineTo(q.left(), q.bottom());
    back.closeSubpath();
    outlined(c.p, back, open ? kBrownLight : kTan);
    if (!open) {
        fill(c.p, QRectF(r.left() + 1, r.top() + 4, r.width() - 2, c.hair()), kTanLight);
        return;
    }
    QPainterPath front;
    front.moveTo(q.left(), q.bottom());
    front.lineTo(q.left() + 2.5, q.top() + 5);
    front.lineTo(q.right() + 0.5 > 15.5 ? 15.5 : q.right() + 1, q.top() + 5);
    front.lineTo(q.right(), q.bottom());
    front.closeSubpath();
    outlined(c.p, front, kTan);
}

// Archive box: a lid over a body with a handle slot.
void archiveBox(Canvas &c, int top)
{
    box(c.p, QRect(2, top + 3, 12, 15 - top - 2), kBrownLight);
    box(c.p, QRect(1, top, 14, 4), kBrown);
    fill(c.p, QRectF(5, top + 7, 6, c.big ? 1.5 : 1), kSlate);
}

void letter(Canvas &c, double x, double y, const std::vector<Stroke> &strokes,
            const QColor &colour)
{
    c.p.setPen(pen(colour, 1.0, c.big ? Qt::RoundCap : Qt::SquareCap));
    c.p.setBrush(Qt::NoBrush);
    for (const Stroke &s : strokes) {
        QPolygonF poly;
        for (const QPointF &pt : s)
            poly << QPointF(x + 0.5 + pt.x(), y + 0.5 + pt.y());
        if (poly.size() == 1)
            c.p.fillRect(QRectF(poly[0] - QPointF(0.5, 0.5), QSizeF(1, 1)), colour);
        else
            c.p.drawPolyline(poly);
    }
}

void tag(Canvas &c, const QColor &fillColour, const QColor &line)
{
    box(c.p, QRect(0, 2, 16, 12), fillColour, line, 2.5);
}

void braces(Canvas &c, double x, double y, const QColor &colour)
{
    const std::vector<Stroke> open = {{{2, 0}, {1, 0}, {1, 2}, {0, 3}, {1, 4}, {1, 6}, {2, 6}}};
    const std::vector<Stroke> close = {{{0, 0}, {1, 0}, {1, 2}, {2, 3}, {1, 4}, {1, 6}, {0, 6}}};
    letter(c, x, y, open, colour);
    letter(c, x + 5, y, close, colour);
}

void filmStrip(Canvas &c, const QRect &r, const QColor &frame)
{
    // A mid grey base rather than black film, so it stays visible on dark
    // panels too.
    box(c.p, r, kSlateMid, kSlate, 1.0);
    const int frames = 2;
    const int fw = (r.width() - 2 - (frames - 1)) / frames;
    for (int i = 0; i < frames; ++i)
        fill(c.p, QRectF(r.left() + 1 + i * (fw + 1), r.top() + 3, fw, r.height() - 6), frame);
    // Sprocket holes, evenly spread along both edges.
    const double hole = c.big ? 1.5 : 1.0;
    const double step = c.big ? 2.5 : 3.0;
    const int count = int((r.width() - 2) / step);
    const double first = r.left() + (r.width() - (count - 1) * step - hole) / 2;
    for (int i = 0; i < count; ++i) {
        const double x = std::round((first + i * step) * 2) / 2;
        fill(c.p, QRectF(x, r.top() + 1, hole, 1), kPaper);
        fill(c.p, QRectF(x, r.bottom() - 1, hole, 1), kPaper);
    }
}

void puzzlePiece(Canvas &c, const QRect &r)
{
    // A square body with a knob on top and on the right and a socket on the
    // left, each knob on a narrow neck so it reads as a jigsaw piece.
    const QRectF q = inner(r);
    const QRectF body(q.left(), q.top() + 3, q.width() - 3, q.height() - 3);
    QPainterPath piece;
    piece.addRect(body);
    QPainterPath knobs;
    const QPointF top(body.center().x(), body.top() - 1.2);
    const QPointF right(body.right() + 1.2, body.center().y());
    knobs.addEllipse(top, 1.8, 1.8);
    knobs.addRect(QRectF(top.x() - 1, top.y(), 2, 1.5));
    knobs.addEllipse(right, 1.8, 1.8);
    knobs.addRect(QRectF(right.x() - 1.5, right.y() - 1, 1.5, 2));
    QPainterPath socket;
    socket.addEllipse(QPointF(body.left() + 0.6, body.center().y()), 1.6, 1.6);
    outlined(c.p, piece.united(knobs).subtracted(socket), kBlue, kBlueDark);
}

void plusBadge(Canvas &c, QPointF centre)
{
    circleBadge(c.p, centre, 4, kGreen, kGreenDark);
    fill(c.p, QRectF(centre.x() - 2.5, centre.y() - 0.5, 5, 1), kPaper);
    fill(c.p, QRectF(centre.x() - 0.5, centre.y() - 2.5, 1, 5), kPaper);
}

void infoSymbol(Canvas &c, const QColor &symbol)
{
    fill(c.p, QRectF(7, 4, 2, 2), symbol);
    fill(c.p, QRectF(7, 7, 2, 5), symbol);
    if (c.big) {
        fill(c.p, QRectF(6, 7, 1, 0.5), symbol);
        fill(c.p, QRectF(6, 11.5, 4, 0.5), symbol);
    }
}

}  // namespace IconKit
