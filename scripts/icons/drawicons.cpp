// drawicons: draws every icon and stage background the Ovra library ships
// and writes them as PNG files into the directory given on the command line.
//
// Everything is produced from code so that the artwork can be regenerated
// and reviewed like any other source.  The program only uses QImage and
// QPainter raster drawing (no fonts, no platform plugin), and it never reads
// the clock or the environment, so running it twice gives identical bytes.
//
// Usage: drawicons OUTPUT_DIR

#include <QDir>
#include <QImage>
#include <QImageWriter>
#include <QPainter>
#include <QPainterPath>
#include <QPolygonF>
#include <QRect>
#include <QRectF>
#include <QString>
#include <QVector>

#include <algorithm>
#include <cstdio>
#include <cmath>
#include <functional>
#include <vector>

namespace {

// Fixed physical resolution (96 dpi).  QImage would otherwise pick a value
// from the screen, which would make the pHYs chunk differ between machines.
constexpr int kDotsPerMeter = 3780;

QImage newTransparent(int w, int h)
{
    QImage img(w, h, QImage::Format_ARGB32_Premultiplied);
    img.fill(Qt::transparent);
    img.setDotsPerMeterX(kDotsPerMeter);
    img.setDotsPerMeterY(kDotsPerMeter);
    return img;
}

bool savePng(const QImage &image, const QString &dir, const QString &name)
{
    const QString path = QDir(dir).filePath(name + QStringLiteral(".png"));
    QImageWriter writer(path, "png");
    // Quality 0 asks the PNG writer for its strongest compression; it
    // does not lose anything, PNG is lossless either way.
    writer.setQuality(0);
    QImage out = image;
    if (out.format() == QImage::Format_ARGB32_Premultiplied)
        out = out.convertToFormat(QImage::Format_ARGB32);
    out.setDotsPerMeterX(kDotsPerMeter);
    out.setDotsPerMeterY(kDotsPerMeter);
    if (!writer.write(out)) {
        std::fprintf(stderr, "drawicons: cannot write %s: %s\n",
                     qPrintable(path), qPrintable(writer.errorString()));
        return false;
    }
    return true;
}

// ---------------------------------------------------------------------------
// Message icons (16x16, antialiased).  They sit in front of each line of a
// message list, so the shapes are bold and the symbols are built from plain
// geometry instead of glyphs to stay independent of the installed fonts.

QImage drawInfo()
{
    QImage img = newTransparent(16, 16);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing, true);
    p.setPen(QPen(QColor(0x1c, 0x4f, 0x9c), 1.0));
    p.setBrush(QColor(0x2f, 0x78, 0xd6));
    p.drawEllipse(QRectF(0.5, 0.5, 15.0, 15.0));

    p.setPen(Qt::NoPen);
    p.setBrush(Qt::white);
    // Dot of the "i".
    p.drawEllipse(QRectF(6.75, 2.75, 2.5, 2.5));
    // Stem, kept on whole pixels so it stays sharp.
    p.drawRect(QRectF(7.0, 6.5, 2.0, 6.5));
    p.end();
    return img;
}

QImage drawWarn()
{
    QImage img = newTransparent(16, 16);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing, true);

    QPainterPath tri;
    tri.moveTo(8.0, 0.9);
    tri.lineTo(15.3, 14.6);
    tri.lineTo(0.7, 14.6);
    tri.closeSubpath();
    QPen edge(QColor(0x9a, 0x66, 0x00), 1.0);
    edge.setJoinStyle(Qt::RoundJoin);
    p.setPen(edge);
    p.setBrush(QColor(0xf6, 0xbe, 0x1a));
    p.drawPath(tri);

    p.setPen(Qt::NoPen);
    p.setBrush(QColor(0x33, 0x26, 0x00));
    // Exclamation bar, slightly tapered towards the bottom.
    QPolygonF bar;
    bar << QPointF(6.9, 5.0) << QPointF(9.1, 5.0) << QPointF(8.6, 10.2)
        << QPointF(7.4, 10.2);
    p.drawPolygon(bar);
    p.drawEllipse(QRectF(6.9, 11.1, 2.2, 2.2));
    p.end();
    return img;
}

QImage drawError()
{
    QImage img = newTransparent(16, 16);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing, true);
    p.setPen(QPen(QColor(0x8e, 0x17, 0x10), 1.0));
    p.setBrush(QColor(0xd9, 0x35, 0x2a));
    p.drawEllipse(QRectF(0.5, 0.5, 15.0, 15.0));

    QPen cross(Qt::white, 2.2);
    cross.setCapStyle(Qt::FlatCap);
    p.setPen(cross);
    p.drawLine(QPointF(4.8, 4.8), QPointF(11.2, 11.2));
    p.drawLine(QPointF(11.2, 4.8), QPointF(4.8, 11.2));
    p.end();
    return img;
}

// ---------------------------------------------------------------------------
// Fold handles for the code editor gutter (16x16, no antialiasing).  A light
// box with a solid arrow: pointing right for a folded block, pointing down
// for an open one.  The arrow is set pixel by pixel so both handles are exact
// mirror images of each other around the centre of the box.

void fillRectPixels(QImage &img, const QRect &r, QRgb c)
{
    for (int y = r.top(); y <= r.bottom(); ++y)
        for (int x = r.left(); x <= r.right(); ++x)
            if (img.valid(x, y))
                img.setPixel(x, y, c);
}

QImage drawFoldHandle(bool pointRight)
{
    QImage img = newTransparent(16, 16);
    const QRgb border = qRgba(0x8c, 0x8c, 0x8c, 0xff);
    const QRgb fill = qRgba(0xf2, 0xf2, 0xf2, 0xff);
    const QRgb arrow = qRgba(0x55, 0x55, 0x55, 0xff);

    // Box from (1,1) to (14,14) with its corner pixels left out, which
    // reads as a slightly rounded button.
    fillRectPixels(img, QRect(2, 2, 12, 12), fill);
    for (int i = 2; i <= 13; ++i) {
        img.setPixel(i, 1, border);
        img.setPixel(i, 14, border);
        img.setPixel(1, i, border);
        img.setPixel(14, i, border);
    }

    // Arrow of five steps: 10, 8, 6, 4 and 2 pixels, centred on 7.5.
    for (int k = 0; k < 5; ++k) {
        const int along = 5 + k;  // position along the pointing direction
        for (int across = 3 + k; across <= 12 - k; ++across) {
            if (pointRight)
                img.setPixel(along, across, arrow);
            else
                img.setPixel(across, along, arrow);
        }
    }
    return img;
}

// ---------------------------------------------------------------------------
// Cross markers for the animation view.  Odd sizes so that the centre pixel
// marks the axis point exactly; drawn without antialiasing so that the view
// can scale them by whole factors and they stay sharp.

void plot(QImage &img, int x, int y, QRgb c)
{
    if (img.valid(x, y))
        img.setPixel(x, y, c);
}

// Plain "+" with arms from `inner` to `outer` pixels away from the centre.
// inner == 0 draws a continuous cross; a larger value leaves a gap around
// the centre pixel, which is still set.
void plotCross(QImage &img, int c, int inner, int outer, QRgb colour)
{
    plot(img, c, c, colour);
    for (int d = std::max(inner, 1); d <= outer; ++d) {
        plot(img, c + d, c, colour);
        plot(img, c - d, c, colour);
        plot(img, c, c + d, colour);
        plot(img, c, c - d, colour);
    }
}

// Midpoint circle, plotted with eightfold symmetry so it is perfectly
// symmetric around the centre pixel.
void plotCircle(QImage &img, int c, int r, QRgb colour)
{
    int x = r;
    int y = 0;
    int err = 1 - r;
    while (x >= y) {
        plot(img, c + x, c + y, colour);
        plot(img, c - x, c + y, colour);
        plot(img, c + x, c - y, colour);
        plot(img, c - x, c - y, colour);
        plot(img, c + y, c + x, colour);
        plot(img, c - y, c + x, colour);
        plot(img, c + y, c - x, colour);
        plot(img, c - y, c - x, colour);
        ++y;
        if (err < 0) {
            err += 2 * y + 1;
        } else {
            --x;
            err += 2 * (y - x) + 1;
        }
    }
}

// Diamond (a square standing on a corner) with its corners `r` pixels away.
void plotDiamond(QImage &img, int c, int r, QRgb colour)
{
    for (int i = 0; i <= r; ++i) {
        const int j = r - i;
        plot(img, c + i, c + j, colour);
        plot(img, c - i, c + j, colour);
        plot(img, c + i, c - j, colour);
        plot(img, c - i, c - j, colour);
    }
}

// Surrounds every drawn pixel with a one pixel border, so a light marker is
// still visible on a light background and the other way round.
void outline(QImage &img, QRgb colour)
{
    const QImage src = img.copy();
    for (int y = 0; y < img.height(); ++y) {
        for (int x = 0; x < img.width(); ++x) {
            if (qAlpha(src.pixel(x, y)) != 0)
                continue;
            bool near = false;
            for (int dy = -1; dy <= 1 && !near; ++dy)
                for (int dx = -1; dx <= 1 && !near; ++dx)
                    if (src.valid(x + dx, y + dy)
                        && qAlpha(src.pixel(x + dx, y + dy)) != 0)
                        near = true;
            if (near)
                img.setPixel(x, y, colour);
        }
    }
}

const QRgb kWhite = qRgba(0xff, 0xff, 0xff, 0xff);
const QRgb kBlack = qRgba(0x00, 0x00, 0x00, 0xff);
const QRgb kGreen = qRgba(0x3c, 0xe6, 0x3c, 0xff);
const QRgb kDarkGreen = qRgba(0x0a, 0x3c, 0x0a, 0xff);
const QRgb kMagenta = qRgba(0xff, 0x3c, 0xff, 0xff);
const QRgb kDarkMagenta = qRgba(0x46, 0x0a, 0x46, 0xff);

// Small style, 15x15 with the centre at (7,7).
QImage drawMainCross()
{
    QImage img = newTransparent(15, 15);
    plotCross(img, 7, 0, 6, kWhite);
    outline(img, kBlack);
    return img;
}

QImage drawSecondaryCross()
{
    QImage img = newTransparent(15, 15);
    plotCross(img, 7, 0, 7, kGreen);
    return img;
}

QImage drawExtraCross()
{
    QImage img = newTransparent(15, 15);
    // The gap around the centre tells it apart from the secondary cross
    // even where the colours are hard to distinguish.
    plotCross(img, 7, 2, 7, kMagenta);
    return img;
}

// Alternative style, 25x25 with the centre at (12,12): a ring (or diamond)
// around the axis point, all outlined.  The ring is wide enough to leave
// clear space between it and the cross once the outline is added.
QImage drawMainCrossAlt()
{
    QImage img = newTransparent(25, 25);
    plotCircle(img, 12, 7, kWhite);
    plotCross(img, 12, 0, 11, kWhite);
    outline(img, kBlack);
    return img;
}

QImage drawSecondaryCrossAlt()
{
    QImage img = newTransparent(25, 25);
    plotCircle(img, 12, 7, kGreen);
    plotCross(img, 12, 0, 0, kGreen);  // centre pixel only
    plotCross(img, 12, 9, 11, kGreen);  // arms outside the ring
    outline(img, kDarkGreen);
    return img;
}

QImage drawExtraCrossAlt()
{
    QImage img = newTransparent(25, 25);
    plotDiamond(img, 12, 8, kMagenta);
    plotCross(img, 12, 0, 0, kMagenta);
    plotCross(img, 12, 10, 11, kMagenta);
    outline(img, kDarkMagenta);
    return img;
}

// ---------------------------------------------------------------------------
// Stage backgrounds.  The view places each picture so that (centreX, groundY)
// lands on the origin of the animation, so the floor begins exactly at
// groundY and the floor tiles are aligned on centreX, which gives the author
// a visual reference for the axis.  Only flat colours are used and the
// result is stored as an 8-bit indexed image, which keeps the files small.

struct StageColours {
    QVector<QRgb> sky;  // top to bottom
    QRgb sun;
    QRgb cloud;
    QRgb mountains;
    QRgb hills;
    QRgb floorEdge;
    QRgb floorA;
    QRgb floorB;
};

StageColours stageColours()
{
    StageColours c;
    c.sky = {qRgb(0x2a, 0x4a, 0x8a), qRgb(0x36, 0x5e, 0xa0),
             qRgb(0x46, 0x74, 0xb4), qRgb(0x5c, 0x8c, 0xc6),
             qRgb(0x7a, 0xa6, 0xd6), qRgb(0x9c, 0xc2, 0xe4)};
    c.sun = qRgb(0xf6, 0xe6, 0xa6);
    c.cloud = qRgb(0xe2, 0xec, 0xf6);
    c.mountains = qRgb(0x6e, 0x84, 0xa6);
    c.hills = qRgb(0x4c, 0x78, 0x48);
    c.floorEdge = qRgb(0xd2, 0xbe, 0x90);
    c.floorA = qRgb(0xa2, 0x86, 0x5c);
    c.floorB = qRgb(0x8e, 0x74, 0x4e);
    return c;
}

QVector<QRgb> stagePalette(const StageColours &c)
{
    QVector<QRgb> pal = c.sky;
    pal << c.sun << c.cloud << c.mountains << c.hills << c.floorEdge
        << c.floorA << c.floorB;
    return pal;
}

// What the parts of a stage picture share: every size is derived from the 240 line
// picture so the four backgrounds look alike, measured from the centre and the ground
// line.
struct StageCanvas {
    QPainter &p;
    const StageColours &col;
    int centreX;
    int groundY;
    double s;

    double sx(double v) const { return centreX + v * s; }
    double sy(double v) const { return groundY + v * s; }
};

// Sky: flat bands, getting lighter towards the horizon; the sun, upper right.
void drawSky(StageCanvas &c, int w)
{
    const int bands = c.col.sky.size();
    const double skyBottom = c.groundY;
    for (int i = 0; i < bands; ++i) {
        const int top = int(std::lround(skyBottom * i / bands));
        const int bottom = int(std::lround(skyBottom * (i + 1) / bands));
        c.p.fillRect(QRect(0, top, w, bottom - top), QColor(c.col.sky[i]));
    }
    c.p.setBrush(QColor(c.col.sun));
    const double sunR = 14 * c.s;
    c.p.drawEllipse(QPointF(c.sx(130), c.sy(-170)), sunR, sunR);
}

// A few clouds made of overlapping ellipses.
void drawClouds(StageCanvas &c)
{
    c.p.setBrush(QColor(c.col.cloud));
    const double s = c.s;
    const auto cloud = [&](double cx, double cy, double size) {
        c.p.drawEllipse(QPointF(c.sx(cx), c.sy(cy)), 16 * size * s, 6 * size * s);
        c.p.drawEllipse(QPointF(c.sx(cx - 9 * size), c.sy(cy + 1 * size)),
                        10 * size * s, 4.5 * size * s);
        c.p.drawEllipse(QPointF(c.sx(cx + 10 * size), c.sy(cy + 1 * size)),
                        11 * size * s, 4.5 * size * s);
    };
    cloud(-140, -165, 1.0);
    cloud(-40, -180, 0.8);
    cloud(60, -150, 1.2);
    cloud(185, -135, 0.7);
}

// Distant mountains, then nearer rolling hills: fixed ridge lines, x relative to the
// centre.
void drawRidges(StageCanvas &c)
{
    static const double ridge[][2] = {
        {-260, -30}, {-215, -62}, {-180, -48}, {-140, -80}, {-95, -55},
        {-60, -66},  {-20, -42},  {25, -72},   {70, -50},   {110, -86},
        {150, -58},  {190, -68},  {230, -44},  {270, -60}};
    QPolygonF m;
    m << QPointF(c.sx(-300), c.sy(0));
    for (const auto &pt : ridge)
        m << QPointF(c.sx(pt[0]), c.sy(pt[1]));
    m << QPointF(c.sx(300), c.sy(-40)) << QPointF(c.sx(300), c.sy(0));
    c.p.setBrush(QColor(c.col.mountains));
    c.p.drawPolygon(m);

    static const double hillTops[][2] = {
        {-250, -20}, {-200, -28}, {-150, -18}, {-100, -24}, {-50, -14},
        {0, -10},    {50, -16},   {100, -26},  {150, -20},  {200, -30},
        {250, -22}};
    QPolygonF hl;
    hl << QPointF(c.sx(-300), c.sy(0)) << QPointF(c.sx(-300), c.sy(-16));
    for (const auto &pt : hillTops)
        hl << QPointF(c.sx(pt[0]), c.sy(pt[1]));
    hl << QPointF(c.sx(300), c.sy(-18)) << QPointF(c.sx(300), c.sy(0));
    c.p.setBrush(QColor(c.col.hills));
    c.p.drawPolygon(hl);
}

// Floor: a light edge on the ground line, then tiles whose seams are
// aligned on the centre so the axis is visible in the picture.
void drawFloor(QImage &img, const StageColours &col, int centreX, int groundY, double s)
{
    const int w = img.width();
    const int h = img.height();
    const int edge = std::max(1, int(std::lround(2 * s)));
    const int tile = std::max(2, int(std::lround(32 * s)));
    const int row = std::max(2, int(std::lround(12 * s)));
    for (int y = groundY; y < h; ++y) {
        QRgb *line = reinterpret_cast<QRgb *>(img.scanLine(y));
        for (int x = 0; x < w; ++x) {
            if (y < groundY + edge) {
                line[x] = col.floorEdge;
                continue;
            }
            // Floor division so tiles keep alternating left of the centre.
            const int dx = x - centreX;
            const int tx = (dx >= 0) ? dx / tile : -((-dx - 1) / tile) - 1;
            const int ty = (y - groundY - edge) / row;
            line[x] = ((tx + ty) & 1) ? col.floorB : col.floorA;
        }
    }
}

QImage drawStage(int w, int h, int centreX, int groundY)
{
    const StageColours col = stageColours();
    QImage img(w, h, QImage::Format_RGB32);
    img.setDotsPerMeterX(kDotsPerMeter);
    img.setDotsPerMeterY(kDotsPerMeter);
    img.fill(col.sky.front());

    const double s = h / 240.0;
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing, false);
    p.setPen(Qt::NoPen);
    StageCanvas canvas{p, col, centreX, groundY, s};
    drawSky(canvas, w);
    drawClouds(canvas);
    drawRidges(canvas);
    p.end();
    drawFloor(img, col, centreX, groundY, s);

    // Every colour used is in the palette, so the conversion is exact.
    QImage indexed = img.convertToFormat(
        QImage::Format_Indexed8, stagePalette(col),
        Qt::ThresholdDither | Qt::AvoidDither);
    indexed.setDotsPerMeterX(kDotsPerMeter);
    indexed.setDotsPerMeterY(kDotsPerMeter);
    return indexed;
}

struct Entry {
    const char *name;
    std::function<QImage()> draw;
};

}  // namespace

int main(int argc, char **argv)
{
    if (argc != 2 || argv[1][0] == '\0') {
        std::fprintf(stderr, "usage: %s OUTPUT_DIR\n",
                     argc > 0 ? argv[0] : "drawicons");
        return 2;
    }
    const QString outDir = QString::fromLocal8Bit(argv[1]);
    if (!QDir().mkpath(outDir)) {
        std::fprintf(stderr, "drawicons: cannot create directory %s\n",
                     argv[1]);
        return 1;
    }

    const std::vector<Entry> entries = {
        {"info", drawInfo},
        {"warn", drawWarn},
        {"error", drawError},
        {"expand", [] { return drawFoldHandle(true); }},
        {"contract", [] { return drawFoldHandle(false); }},
        {"sff", drawMainCross},
        {"air", drawSecondaryCross},
        {"extra", drawExtraCross},
        {"cruz", drawMainCrossAlt},
        {"cruz2", drawSecondaryCrossAlt},
        {"cruz3", drawExtraCrossAlt},
        {"240p", [] { return drawStage(424, 240, 212, 207); }},
        {"480p", [] { return drawStage(848, 480, 424, 415); }},
        {"720p", [] { return drawStage(1276, 720, 638, 623); }},
        {"1080p", [] { return drawStage(1916, 1080, 958, 936); }},
    };

    int failures = 0;
    for (const Entry &e : entries) {
        const QImage img = e.draw();
        if (img.isNull() || !savePng(img, outDir, QString::fromLatin1(e.name)))
            ++failures;
    }
    return failures == 0 ? 0 : 1;
}
