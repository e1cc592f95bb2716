#pragma once
// What the editors' drawn icons share. A host without pictures of its own would show rows
// of words, too wide for the bars and panels; the editors draw their own instead, each
// from a few strokes on a square of 32 units, so that it stays sharp at every size.
#include <QColor>
#include <QHash>
#include <QIcon>
#include <QPointF>
#include <QString>

#include <functional>

class QPainter;

namespace Ovra {

using IconDrawing = std::function<void(QPainter &)>;
using IconDrawings = QHash<QString, IconDrawing>;

// The dark ink of every drawn icon.
constexpr QRgb iconInk = qRgb(60, 66, 76);
constexpr QRgb iconAddition = qRgb(46, 150, 62);
constexpr QRgb iconRemoval = qRgb(192, 48, 48);

// A round-capped pen of that colour and width, and no brush.
void iconPen(QPainter &painter, const QColor &colour, double width = 2.5);
// A filled arrow head in the ink whose point is at `tip`, pointing along `direction`.
void iconArrowHead(QPainter &painter, QPointF tip, QPointF direction, double length, double half);
// The icon of the drawing of that name at 16 to 64 pixels, drawn once and kept; null for a
// name the table doesn't have.
QIcon drawnIcon(const IconDrawings &drawings, const QString &name);

} // namespace Ovra
