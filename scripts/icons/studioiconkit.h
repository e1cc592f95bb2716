#pragma once

// The colours, the canvas and the shapes the studio's icons are built from:
// pages, folders, disks, arrows, badges and letters drawn as strokes.  All
// coordinates are on the 16 unit grid of Canvas.

#include <QColor>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QPointF>
#include <QRect>
#include <QRectF>

#include <initializer_list>
#include <vector>

namespace IconKit {

// A small palette: a dark slate for outlines, one accent blue, green for
// adding and running, red for errors and removal, amber for warnings, and
// the neutral and warm tones of paper, folders and boxes.  Plain values, so
// no object is constructed before main.
constexpr QRgb kSlate = 0xff2b3645;
constexpr QRgb kSlateMid = 0xff6a788c;
constexpr QRgb kSlateLight = 0xffa8b3c2;
constexpr QRgb kPaper = 0xffffffff;
constexpr QRgb kPaperShade = 0xffdce3ec;
constexpr QRgb kBlue = 0xff2d7fe0;
constexpr QRgb kBlueDark = 0xff1b55a3;
constexpr QRgb kBlueLight = 0xffcbe1fa;
constexpr QRgb kGreen = 0xff2fa84f;
constexpr QRgb kGreenDark = 0xff1c7233;
constexpr QRgb kRed = 0xffe04439;
constexpr QRgb kRedDark = 0xff9a2820;
constexpr QRgb kAmber = 0xfff5b01c;
constexpr QRgb kAmberDark = 0xff9c6400;
constexpr QRgb kTan = 0xfff2c76b;
constexpr QRgb kTanLight = 0xfff9dc98;
constexpr QRgb kBrown = 0xffc98b4e;
constexpr QRgb kBrownLight = 0xffe3b27a;
constexpr QRgb kCream = 0xfff8eac4;

// One icon being drawn: the image, a painter scaled to the 16 unit grid and
// whether this is the large size.
struct Canvas {
    explicit Canvas(int size)
        : img(size, size, QImage::Format_ARGB32_Premultiplied)
    {
        img.fill(Qt::transparent);
        p.begin(&img);
        p.setRenderHint(QPainter::Antialiasing, true);
        p.scale(size / 16.0, size / 16.0);
        big = size > 16;
    }
    // Width of text lines and fine detail: one pixel at either size.
    double hair() const { return big ? 0.5 : 1.0; }

    QImage img;
    QPainter p;
    bool big = false;
};

QPen pen(const QColor &c, double w = 1.0, Qt::PenCapStyle cap = Qt::SquareCap);
QRectF inner(const QRect &r);
void outlined(QPainter &p, const QPainterPath &path, const QColor &fill,
              const QColor &line = QColor(kSlate), double w = 1.0);
void box(QPainter &p, const QRect &r, const QColor &fill, const QColor &line = QColor(kSlate),
         double radius = 0.0);
void fill(QPainter &p, const QRectF &r, const QColor &c);
void polyline(QPainter &p, std::initializer_list<QPointF> pts, const QColor &c,
              double w = 1.0, Qt::PenCapStyle cap = Qt::SquareCap);
void solid(QPainter &p, std::initializer_list<QPointF> pts, const QColor &c);
void arrow(QPainter &p, QPointF from, QPointF to, const QColor &c, double w = 2.0,
           double head = 3.0);
void circleBadge(QPainter &p, QPointF centre, double r, const QColor &fill,
                 const QColor &line);
void pencil(QPainter &p, QPointF tip, double length);

void page(Canvas &c, const QRect &r, int foldSize = 4, const QColor &paper = QColor(kPaper));
void textLines(Canvas &c, double x0, double y0, std::initializer_list<double> ends,
               const QColor &colour = QColor(kSlateLight), double step = 2.0);
void floppy(Canvas &c, const QRect &r);
void folder(Canvas &c, const QRect &r, bool open);
void archiveBox(Canvas &c, int top);
void filmStrip(Canvas &c, const QRect &r, const QColor &frame);
void puzzlePiece(Canvas &c, const QRect &r);
void plusBadge(Canvas &c, QPointF centre);
void infoSymbol(Canvas &c, const QColor &symbol);

// Letters as strokes on pixel centres, three units wide, five high from the
// top of the small letters to the base line; ascenders reach two higher.

using Stroke = std::vector<QPointF>;

inline const std::vector<Stroke> kA = {{{0, 0}, {2, 0}, {2, 4}, {0, 4}, {0, 2}, {2, 2}}};
inline const std::vector<Stroke> kB = {{{0, -2}, {0, 4}, {2, 4}, {2, 0}, {0, 0}}};
inline const std::vector<Stroke> kC = {{{2, 0}, {0, 0}, {0, 4}, {2, 4}}};
inline const std::vector<Stroke> kOne = {{{0, -1}, {1, -2}, {1, 4}}, {{0, 4}, {2, 4}}};
inline const std::vector<Stroke> kFive = {{{2, -2}, {0, -2}, {0, 1}, {2, 1}, {2, 4}, {0, 4}}};
inline const std::vector<Stroke> kDot = {{{0, 4}}};

void letter(Canvas &c, double x, double y, const std::vector<Stroke> &strokes,
            const QColor &colour);
// "{ }" with the opening brace's top left at (x, y), seven units high.
void braces(Canvas &c, double x, double y, const QColor &colour);
// The value kinds' tag: a rounded label in the kind's colour.
void tag(Canvas &c, const QColor &fillColour, const QColor &line);

}  // namespace IconKit
