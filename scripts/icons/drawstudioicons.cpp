// drawstudioicons: draws the studio's action, tree and message icons and the
// program icon, and writes them with their resource file.
//
// Every icon is drawn twice, once for 16 and once for 32 pixels, on a grid of
// 16 units: the painter is scaled by 1 or 2, outlines are one unit wide and
// run on half units, so they cover whole pixels at both sizes.  Where the
// larger size has room, it gets finer detail (thinner text lines, highlights)
// instead of a blown-up copy of the small one.  Letters are plain strokes, not
// font glyphs, and nothing depends on the clock or the machine, so running
// the program twice gives identical bytes.
//
// Usage: drawstudioicons OUTPUT_DIR
// writes OUTPUT_DIR/icons/{16,32}/<name>.png, OUTPUT_DIR/icons/ovra-studio.png
// (256 pixels) and OUTPUT_DIR/studioicons.qrc.

#include "studioiconkit.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QImageWriter>
#include <QPainter>
#include <QPainterPath>
#include <QString>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

using namespace IconKit;

constexpr int kDotsPerMeter = 3780;  // 96 dpi, never the screen's


// ---------------------------------------------------------------------------
// File actions

void drawOpen(Canvas &c)
{
    folder(c, QRect(0, 3, 15, 12), true);
    QPainterPath bend;
    bend.moveTo(6, 9);
    bend.cubicTo(6, 4.5, 8.5, 2.5, 11.5, 2.5);
    c.p.setPen(pen(kBlue, 2.0, Qt::FlatCap));
    c.p.setBrush(Qt::NoBrush);
    c.p.drawPath(bend);
    solid(c.p, {QPointF(15.5, 2.5), QPointF(11.5, -1), QPointF(11.5, 6)}, kBlue);
}

void drawSave(Canvas &c) { floppy(c, QRect(1, 1, 14, 14)); }

void drawSaveAll(Canvas &c)
{
    floppy(c, QRect(0, 0, 11, 11));
    floppy(c, QRect(4, 4, 12, 12));
}

void drawSaveAs(Canvas &c)
{
    floppy(c, QRect(0, 0, 13, 13));
    pencil(c.p, QPointF(7.5, 15), 10.5);
}

void drawBackup(Canvas &c)
{
    archiveBox(c, 2);
    if (c.big)
        fill(c.p, QRectF(2, 3.5, 12, 0.5), kBrownLight);
}

void drawRestore(Canvas &c)
{
    // The arrow leaves the box and turns back: what was kept comes out again.
    archiveBox(c, 6);
    QPainterPath back;
    back.moveTo(12, 6);
    back.lineTo(12, 5);
    back.quadTo(12, 3, 10, 3);
    back.lineTo(5.5, 3);
    c.p.setPen(pen(kBlue, 2.0, Qt::FlatCap));
    c.p.setBrush(Qt::NoBrush);
    c.p.drawPath(back);
    solid(c.p, {QPointF(1, 3), QPointF(6, -0.5), QPointF(6, 6.5)}, kBlue);
}

void drawClose(Canvas &c)
{
    page(c, QRect(1, 0, 12, 15));
    textLines(c, 3, 5, {9, 8});
    circleBadge(c.p, QPointF(11.5, 11.5), 4, kRed, kRedDark);
    polyline(c.p, {QPointF(9.75, 9.75), QPointF(13.25, 13.25)}, kPaper, 1.4, Qt::FlatCap);
    polyline(c.p, {QPointF(13.25, 9.75), QPointF(9.75, 13.25)}, kPaper, 1.4, Qt::FlatCap);
}

void drawQuit(Canvas &c)
{
    QPainterPath ring;
    const QRectF r(2, 2.5, 12, 12);
    ring.arcMoveTo(r, 125);
    ring.arcTo(r, 125, 290);
    c.p.setPen(pen(kRed, 2.0, Qt::RoundCap));
    c.p.setBrush(Qt::NoBrush);
    c.p.drawPath(ring);
    polyline(c.p, {QPointF(8, 1.5), QPointF(8, 7.5)}, kRed, 2.0, Qt::RoundCap);
}

// ---------------------------------------------------------------------------
// Edit actions

void drawTurn(Canvas &c, bool backwards)
{
    if (!backwards) {  // redo is the mirror image of undo
        c.p.translate(16, 0);
        c.p.scale(-1, 1);
    }
    QPainterPath shaft;
    shaft.moveTo(13, 14);
    shaft.lineTo(13, 10);
    shaft.arcTo(QRectF(3, 5, 10, 10), 0, 90);
    shaft.lineTo(6, 5);
    c.p.setPen(pen(kBlue, 2.0, Qt::FlatCap));
    c.p.setBrush(Qt::NoBrush);
    c.p.drawPath(shaft);
    solid(c.p, {QPointF(0.5, 5), QPointF(6.5, 0.5), QPointF(6.5, 9.5)}, kBlue);
}

void drawCut(Canvas &c)
{
    polyline(c.p, {QPointF(6, 10), QPointF(11.5, 0.5)}, kSlateMid, 2.0, Qt::RoundCap);
    polyline(c.p, {QPointF(10, 10), QPointF(4.5, 0.5)}, kSlateMid, 2.0, Qt::RoundCap);
    c.p.setPen(pen(kRed, 1.5));
    c.p.setBrush(Qt::NoBrush);
    c.p.drawEllipse(QPointF(4.5, 12.5), 2.5, 2.5);
    c.p.drawEllipse(QPointF(11.5, 12.5), 2.5, 2.5);
    c.p.setPen(Qt::NoPen);
    c.p.setBrush(QColor(kSlate));
    c.p.drawEllipse(QPointF(8, 6.6), 1.0, 1.0);
}

void drawCopy(Canvas &c)
{
    page(c, QRect(1, 0, 10, 12), 3);
    page(c, QRect(5, 4, 10, 12), 3);
    textLines(c, 7, 9, {13, 12, 13});
}

void drawPaste(Canvas &c)
{
    box(c.p, QRect(1, 2, 14, 14), kBrown, kSlate, 1.5);
    fill(c.p, QRectF(3, 5, 10, 9), kPaper);
    box(c.p, QRect(5, 0, 6, 4), kSlateMid, kSlate, 1.0);
    textLines(c, 4, 7, {12, 11, 12});
}

void drawFind(Canvas &c)
{
    polyline(c.p, {QPointF(10, 10), QPointF(14, 14)}, kSlateMid, 3.0, Qt::RoundCap);
    c.p.setPen(pen(kSlate, 1.5));
    c.p.setBrush(QColor(kBlueLight));
    c.p.drawEllipse(QPointF(6.5, 6.5), 5, 5);
    if (c.big) {
        QPainterPath glint;
        glint.arcMoveTo(QRectF(3.5, 3.5, 6, 6), 100);
        glint.arcTo(QRectF(3.5, 3.5, 6, 6), 100, 70);
        c.p.setPen(pen(kPaper, 1.0, Qt::RoundCap));
        c.p.setBrush(Qt::NoBrush);
        c.p.drawPath(glint);
    }
}

// ---------------------------------------------------------------------------
// Tools and help

void drawRunScript(Canvas &c)
{
    page(c, QRect(1, 0, 12, 15));
    textLines(c, 3, 5, {9, 8, 6});
    circleBadge(c.p, QPointF(11.5, 11.5), 4, kGreen, kGreenDark);
    solid(c.p, {QPointF(10.2, 9.4), QPointF(13.8, 11.5), QPointF(10.2, 13.6)}, kPaper);
}

void drawGear(Canvas &c)
{
    QPolygonF outline;
    const int teeth = 8;
    for (int i = 0; i < teeth * 4; ++i) {
        const double a = (i - 1.5) * M_PI * 2 / (teeth * 4);
        const double r = (i % 4 < 2) ? 7.3 : 5.2;
        outline << QPointF(8 + r * std::cos(a), 8 + r * std::sin(a));
    }
    QPainterPath gear;
    gear.addPolygon(outline);
    gear.closeSubpath();
    gear.addEllipse(QPointF(8, 8), 2.2, 2.2);
    gear.setFillRule(Qt::OddEvenFill);
    outlined(c.p, gear, kSlateMid);
}

void drawAbout(Canvas &c)
{
    c.p.setPen(pen(kBlue, 1.5));
    c.p.setBrush(QColor(kPaper));
    c.p.drawEllipse(QPointF(8, 8), 6.75, 6.75);
    infoSymbol(c, kBlue);
}

// ---------------------------------------------------------------------------
// Editors

void drawProject(Canvas &c)
{
    // A parcel seen from above one corner: lid, left and right faces.
    const QPointF top(8, 0.5), left(1, 4), right(15, 4), mid(8, 7.5);
    const QPointF bl(1, 12), br(15, 12), bottom(8, 15.5);
    QPainterPath lid;
    lid.moveTo(top); lid.lineTo(right); lid.lineTo(mid); lid.lineTo(left); lid.closeSubpath();
    QPainterPath lf;
    lf.moveTo(left); lf.lineTo(mid); lf.lineTo(bottom); lf.lineTo(bl); lf.closeSubpath();
    QPainterPath rf;
    rf.moveTo(mid); rf.lineTo(right); rf.lineTo(br); rf.lineTo(bottom); rf.closeSubpath();
    outlined(c.p, lf, kBrownLight);
    outlined(c.p, rf, kBrown);
    outlined(c.p, lid, kTanLight);
    // Tape over the lid.
    polyline(c.p, {QPointF(4.5, 2.25), QPointF(11.5, 5.75)}, kBlue, 1.5, Qt::FlatCap);
}

void drawCodeEditor(Canvas &c)
{
    page(c, QRect(1, 0, 14, 16));
    braces(c, 3, 6, kBlue);
}

void drawAnimEditor(Canvas &c)
{
    // Two frames of a ball in flight: the picture of motion.
    filmStrip(c, QRect(0, 2, 16, 12), kBlueLight);
    c.p.setPen(Qt::NoPen);
    c.p.setBrush(QColor(kBlue));
    c.p.drawEllipse(QRectF(3, 5, 3, 3));
    c.p.setBrush(QColor(kRed));
    c.p.drawEllipse(QRectF(10, 8, 3, 3));
}

void drawScroll(Canvas &c)
{
    box(c.p, QRect(3, 2, 10, 12), kCream);
    textLines(c, 5, 5, {11, 10, 11, 9}, kBrown);
    // Rolls at both ends.
    box(c.p, QRect(1, 0, 14, 3), kBrownLight, kSlate, 1.5);
    box(c.p, QRect(1, 13, 14, 3), kBrownLight, kSlate, 1.5);
}

// ---------------------------------------------------------------------------
// Code workspace

void drawCodeBar(Canvas &c)
{
    box(c.p, QRect(0, 1, 16, 14), kPaper, kSlate, 1.0);
    fill(c.p, QRectF(1, 2, 14, 4), kBlueLight);
    fill(c.p, QRectF(1, 6, 14, c.hair()), kSlate);
    const QColor buttons[] = {kBlue, kGreen, kAmber};
    for (int i = 0; i < 3; ++i)
        fill(c.p, QRectF(3 + i * 3, 3, 2, 2), buttons[i]);
    textLines(c, 3, 9, {12, 10});
}

void drawSnippetInsert(Canvas &c)
{
    // The piece goes in where the text cursor stands.
    puzzlePiece(c, QRect(0, 0, 12, 12));
    fill(c.p, QRectF(14, 8, 1, 8), kSlateMid);
    arrow(c.p, QPointF(6, 13), QPointF(13, 13), kGreen, 2.0, 3.0);
}

void drawSnippetNew(Canvas &c)
{
    puzzlePiece(c, QRect(0, 0, 12, 12));
    plusBadge(c, QPointF(11.5, 11.5));
}

void drawSnippetEdit(Canvas &c)
{
    puzzlePiece(c, QRect(0, 0, 12, 12));
    pencil(c.p, QPointF(6.5, 15.5), 11.5);
}

void drawGoto(Canvas &c)
{
    textLines(c, 7, 2, {15, 13});
    fill(c.p, QRectF(6, 7, 10, 3), kBlueLight);
    fill(c.p, QRectF(7, 8, 7, 1), kBlue);
    textLines(c, 7, 12, {14});
    arrow(c.p, QPointF(0, 8.5), QPointF(5.5, 8.5), kBlue, 2.0, 3.0);
}

// A marker (error dot or deprecation triangle) with an up or down arrow.
void drawMarkerStep(Canvas &c, bool error, bool down)
{
    if (error) {
        circleBadge(c.p, QPointF(5, 8), 4.5, kRed, kRedDark);
    } else {
        QPainterPath tri;
        tri.moveTo(5, 2.5);
        tri.lineTo(10, 12.5);
        tri.lineTo(0, 12.5);
        tri.closeSubpath();
        outlined(c.p, tri, kAmber, kAmberDark);
        fill(c.p, QRectF(4.5, 6, 1, 3.5), kSlate);
        fill(c.p, QRectF(4.5, 10.5, 1, 1), kSlate);
    }
    if (down)
        arrow(c.p, QPointF(13, 2), QPointF(13, 15), kBlue, 2.0, 3.0);
    else
        arrow(c.p, QPointF(13, 14), QPointF(13, 1), kBlue, 2.0, 3.0);
}

void drawComment(Canvas &c)
{
    polyline(c.p, {QPointF(1.5, 13.5), QPointF(6, 2.5)}, kGreen, 2.0, Qt::RoundCap);
    polyline(c.p, {QPointF(6.5, 13.5), QPointF(11, 2.5)}, kGreen, 2.0, Qt::RoundCap);
    fill(c.p, QRectF(11, 13, 4, 1), kSlateLight);
}

void drawFold(Canvas &c, bool plus)
{
    for (int row = 0; row < 2; ++row) {
        const int y = 1 + row * 8;
        box(c.p, QRect(0, y, 7, 7), kPaper, kSlate);
        fill(c.p, QRectF(2, y + 3, 3, 1), kSlate);
        if (plus)
            fill(c.p, QRectF(3, y + 2, 1, 3), kSlate);
        textLines(c, 9, y + 3, {16}, kSlateMid);
    }
}

void drawAutoIndent(Canvas &c)
{
    textLines(c, 1, 1, {15});
    textLines(c, 7, 5, {15, 13, 15}, kSlateMid);
    arrow(c.p, QPointF(0, 8.5), QPointF(5.5, 8.5), kBlue, 2.0, 3.0);
    textLines(c, 1, 14, {12});
}

void drawAutoFormat(Canvas &c)
{
    textLines(c, 1, 1, {15, 11, 13}, kSlateMid);
    polyline(c.p, {QPointF(2.5, 14.5), QPointF(10, 7)}, kSlateMid, 2.0, Qt::FlatCap);
    polyline(c.p, {QPointF(10, 7), QPointF(11.5, 5.5)}, kPaper, 2.0, Qt::FlatCap);
    // Sparkle: a four pointed star by the wand's tip.
    const QPointF s(13, 10);
    solid(c.p, {s + QPointF(0, -3), s + QPointF(0.8, -0.8), s + QPointF(3, 0),
                s + QPointF(0.8, 0.8), s + QPointF(0, 3), s + QPointF(-0.8, 0.8),
                s + QPointF(-3, 0), s + QPointF(-0.8, -0.8)}, kAmber);
}

// ---------------------------------------------------------------------------
// Tree

void drawTreeFolder(Canvas &c) { folder(c, QRect(0, 2, 16, 13), false); }

void drawTreeCode(Canvas &c)
{
    page(c, QRect(2, 0, 12, 16));
    fill(c.p, QRectF(4, 5, 4, c.hair()), kBlue);
    fill(c.p, QRectF(6, 7, 5, c.hair()), kGreen);
    fill(c.p, QRectF(6, 9, 4, c.hair()), kSlateMid);
    fill(c.p, QRectF(4, 11, 3, c.hair()), kBlue);
    if (c.big) {
        fill(c.p, QRectF(9, 5, 3, 0.5), kSlateMid);
        fill(c.p, QRectF(8, 11, 3, 0.5), kSlateMid);
    }
}

void drawSprite(Canvas &c)
{
    box(c.p, QRect(0, 1, 16, 14), kBlueLight);
    c.p.setPen(Qt::NoPen);
    c.p.setBrush(QColor(kAmber));
    c.p.drawEllipse(QPointF(11.5, 5), 1.8, 1.8);
    solid(c.p, {QPointF(1, 14), QPointF(5.5, 6.5), QPointF(10, 14)}, kGreenDark);
    solid(c.p, {QPointF(6, 14), QPointF(10, 9), QPointF(15, 14)}, kGreen);
    box(c.p, QRect(0, 1, 16, 14), Qt::transparent);
}

void drawSound(Canvas &c)
{
    // The bars of a waveform, symmetric about the middle line.  The small
    // size keeps one pixel between bars; the large one fits ten bars.
    static const double small[] = {2, 6, 10, 6, 12, 8, 4, 2};
    static const double large[] = {2, 5, 9, 6, 12, 10, 7, 4, 6, 2};
    const int count = c.big ? 10 : 8;
    const double step = c.big ? 1.5 : 2.0;
    const double first = 1;
    for (int i = 0; i < count; ++i) {
        const double h = c.big ? large[i] : small[i];
        fill(c.p, QRectF(first + i * step, 8 - h / 2, 1, h), i % 2 ? kBlue : kBlueDark);
    }
}

void drawTreeAnimation(Canvas &c)
{
    // An upright strip, so the tree's file tells itself apart from the
    // editor's button at a glance.
    c.p.translate(16, 0);
    c.p.rotate(90);
    filmStrip(c, QRect(1, 2, 14, 12), kBlueLight);
    fill(c.p, QRectF(3, 6, 3, 3), kGreen);
    fill(c.p, QRectF(10, 7, 3, 3), kGreen);
}

void drawTreeFile(Canvas &c)
{
    page(c, QRect(2, 0, 12, 16));
    textLines(c, 4, 6, {11, 12, 10, 12});
}

// ---------------------------------------------------------------------------
// Value kinds

void drawString(Canvas &c)
{
    tag(c, kGreen, kGreenDark);
    letter(c, 2, 6, kA, kPaper);
    letter(c, 6, 6, kB, kPaper);
    letter(c, 10, 6, kC, kPaper);
}

void drawBool(Canvas &c)
{
    box(c.p, QRect(1, 1, 14, 14), kPaper, kSlate, 2.0);
    polyline(c.p, {QPointF(4, 8), QPointF(7, 11), QPointF(12.5, 4.5)}, kGreen, 2.0,
             Qt::RoundCap);
}

void drawValueFile(Canvas &c)
{
    page(c, QRect(2, 0, 12, 16));
    textLines(c, 4, 6, {11, 12, 10, 12}, kBlue);
}

void drawDate(Canvas &c)
{
    box(c.p, QRect(1, 2, 14, 13), kPaper);
    fill(c.p, QRectF(2, 3, 12, 3), kRed);
    fill(c.p, QRectF(4, 1, 1, 3), kSlate);
    fill(c.p, QRectF(11, 1, 1, 3), kSlate);
    for (int row = 0; row < 3; ++row)
        for (int col = 0; col < 4; ++col)
            if (row * 4 + col < 10)
                fill(c.p, QRectF(3 + col * 3, 7 + row * (c.big ? 2.5 : 2), c.big ? 1.5 : 1,
                                 c.big ? 1.5 : 1),
                     (row == 1 && col == 2) ? kBlue : kSlateMid);
}

void drawKeyword(Canvas &c)
{
    tag(c, kBlue, kBlueDark);
    letter(c, 5, 6, {{{0, -2}, {0, 4}}, {{4, -2}, {1, 1}, {4, 4}}}, kPaper);
}

void drawFloat(Canvas &c)
{
    tag(c, kAmber, kAmberDark);
    letter(c, 2, 6, kOne, kSlate);
    letter(c, 7, 6, kDot, kSlate);
    letter(c, 10, 6, kFive, kSlate);
}

void drawInt(Canvas &c)
{
    tag(c, kSlateMid, kSlate);
    letter(c, 5, 5, {{{1, -1}, {1, 5}}, {{4, -1}, {4, 5}}, {{-1, 1}, {6, 1}}, {{-1, 4}, {6, 4}}},
           kPaper);
}

// ---------------------------------------------------------------------------
// Messages

void drawWarning(Canvas &c)
{
    QPainterPath tri;
    tri.moveTo(8, 1);
    tri.lineTo(15.5, 14.5);
    tri.lineTo(0.5, 14.5);
    tri.closeSubpath();
    QPen edge = pen(kAmberDark, 1.0);
    edge.setJoinStyle(Qt::RoundJoin);
    c.p.setPen(edge);
    c.p.setBrush(QColor(kAmber));
    c.p.drawPath(tri);
    fill(c.p, QRectF(7, 5, 2, 5), kSlate);
    fill(c.p, QRectF(7, 11, 2, 2), kSlate);
}

void drawInformation(Canvas &c)
{
    circleBadge(c.p, QPointF(8, 8), 7.5, kBlue, kBlueDark);
    infoSymbol(c, kPaper);
}

void drawErrorMessage(Canvas &c)
{
    circleBadge(c.p, QPointF(8, 8), 7.5, kRed, kRedDark);
    polyline(c.p, {QPointF(5, 5), QPointF(11, 11)}, kPaper, 2.0, Qt::FlatCap);
    polyline(c.p, {QPointF(11, 5), QPointF(5, 11)}, kPaper, 2.0, Qt::FlatCap);
}

// ---------------------------------------------------------------------------
// The program icon: a little pixel-art knight standing on a strip of palette
// colours, on a dark tile with a faint checker board, as the canvas of a
// sprite editor shows transparency.  The figure is a pixel map scaled by a
// whole factor, so it stays sharp at every size.

const char *const kFigure[] = {
    "....oo....",
    "...orro...",
    "..oosso...",
    ".osssssso.",
    ".osvvvvso.",
    ".ossssssow",
    "..obbbbo.w",
    ".obbBBbbow",
    ".sbbBBbbsh",
    "..oboobo..",
    "..oo..oo..",
};

QColor figureColour(char ch)
{
    switch (ch) {
    case 'o': return QColor(0x1a, 0x21, 0x2b);
    case 'r': return kRed;
    case 's': return QColor(0xc9, 0xd3, 0xdf);
    case 'v': return kSlate;
    case 'b': return kBlue;
    case 'B': return kBlueDark;
    case 'w': return QColor(0xee, 0xf2, 0xf7);
    case 'h': return kAmber;
    default: return Qt::transparent;
    }
}

QImage drawProgramIcon(int size)
{
    QImage img(size, size, QImage::Format_ARGB32_Premultiplied);
    img.fill(Qt::transparent);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing, true);
    const double radius = size / 6.0;
    QPainterPath tile;
    tile.addRoundedRect(QRectF(0, 0, size, size), radius, radius);
    p.fillPath(tile, QColor(0x2b, 0x36, 0x45));
    // Checker board inside the tile, a cell being one figure pixel.
    const int scale = size >= 256 ? 16 : size / 16;
    const int figW = 10 * scale;
    const int left = (size - figW) / 2;
    const int swatchH = size >= 256 ? 32 : (size >= 32 ? 4 : 2);
    const int top = size >= 256 ? 24 : 1;
    if (size >= 32) {
        p.save();
        p.setClipPath(tile);
        for (int y = 0; y * scale < size; ++y)
            for (int x = 0; x * scale < size; ++x)
                if ((x + y) % 2 == 0)
                    p.fillRect(QRect(x * scale, y * scale, scale, scale),
                               QColor(0x34, 0x41, 0x53));
        p.restore();
    }
    // A lighter rim keeps the tile's edge visible on dark panels.
    const double rim = std::max(1.0, size / 32.0);
    p.setPen(QPen(QColor(0x5a, 0x6b, 0x84), rim));
    p.setBrush(Qt::NoBrush);
    p.drawRoundedRect(QRectF(rim / 2, rim / 2, size - rim, size - rim), radius - rim / 2,
                      radius - rim / 2);
    p.setRenderHint(QPainter::Antialiasing, false);
    for (int y = 0; y < 11; ++y)
        for (int x = 0; x < 10; ++x) {
            const QColor colour = figureColour(kFigure[y][x]);
            if (colour.alpha() != 0)
                p.fillRect(QRect(left + x * scale, top + y * scale, scale, scale), colour);
        }
    // Palette strip below the figure.
    const QColor swatches[] = {kRed, kAmber, kGreen, kBlue};
    const int margin = size >= 256 ? 40 : (size >= 32 ? 4 : 2);
    const int gap = size >= 256 ? 8 : (size >= 32 ? 1 : 0);
    const int stripTop = size >= 256 ? size - 32 - swatchH : size - (size >= 32 ? 3 : 2) - swatchH;
    const int w = (size - 2 * margin - 3 * gap) / 4;
    p.setRenderHint(QPainter::Antialiasing, true);
    for (int i = 0; i < 4; ++i) {
        const QRectF r(margin + i * (w + gap), stripTop, w, swatchH);
        if (size >= 256) {
            QPainterPath sw;
            sw.addRoundedRect(r, 6, 6);
            p.fillPath(sw, swatches[i]);
        } else {
            p.fillRect(r, swatches[i]);
        }
    }
    p.end();
    return img;
}

// ---------------------------------------------------------------------------

struct Entry {
    const char *name;
    void (*draw)(Canvas &);
};

const Entry kEntries[] = {
    {"file_open", drawOpen},
    {"file_save", drawSave},
    {"file_save_all", drawSaveAll},
    {"file_save_as", drawSaveAs},
    {"file_backup", drawBackup},
    {"file_restore", drawRestore},
    {"file_close", drawClose},
    {"file_quit", drawQuit},
    {"edit_undo", [](Canvas &c) { drawTurn(c, true); }},
    {"edit_redo", [](Canvas &c) { drawTurn(c, false); }},
    {"edit_cut", drawCut},
    {"edit_copy", drawCopy},
    {"edit_paste", drawPaste},
    {"edit_find", drawFind},
    {"tools_run_script", drawRunScript},
    {"tools_options", drawGear},
    {"help_about", drawAbout},
    {"editor_project", drawProject},
    {"editor_code", drawCodeEditor},
    {"editor_anim", drawAnimEditor},
    {"editor_script", drawScroll},
    {"view_code_bar", drawCodeBar},
    {"code_snippet_insert", drawSnippetInsert},
    {"code_snippet_new", drawSnippetNew},
    {"code_snippet_edit", drawSnippetEdit},
    {"code_goto", drawGoto},
    {"code_prev_error", [](Canvas &c) { drawMarkerStep(c, true, false); }},
    {"code_next_error", [](Canvas &c) { drawMarkerStep(c, true, true); }},
    {"code_prev_deprecation", [](Canvas &c) { drawMarkerStep(c, false, false); }},
    {"code_next_deprecation", [](Canvas &c) { drawMarkerStep(c, false, true); }},
    {"code_comment", drawComment},
    {"code_fold_all", [](Canvas &c) { drawFold(c, false); }},
    {"code_unfold_all", [](Canvas &c) { drawFold(c, true); }},
    {"code_auto_indent", drawAutoIndent},
    {"code_auto_format", drawAutoFormat},
    {"icon_folder", drawTreeFolder},
    {"icon_code", drawTreeCode},
    {"icon_sprite", drawSprite},
    {"icon_sound", drawSound},
    {"icon_animation", drawTreeAnimation},
    {"icon_file", drawTreeFile},
    {"code_string", drawString},
    {"code_bool", drawBool},
    {"code_file", drawValueFile},
    {"code_date", drawDate},
    {"code_keyword", drawKeyword},
    {"code_float", drawFloat},
    {"code_int", drawInt},
    {"warning", drawWarning},
    {"information", drawInformation},
    {"error", drawErrorMessage},
};

const char kProgramIcon[] = "ovra-studio";

bool savePng(QImage image, const QString &path)
{
    QImageWriter writer(path, "png");
    writer.setQuality(0);  // strongest compression; PNG stays lossless
    image = image.convertToFormat(QImage::Format_ARGB32);
    image.setDotsPerMeterX(kDotsPerMeter);
    image.setDotsPerMeterY(kDotsPerMeter);
    if (!writer.write(image)) {
        std::fprintf(stderr, "drawstudioicons: cannot write %s: %s\n", qPrintable(path),
                     qPrintable(writer.errorString()));
        return false;
    }
    return true;
}

// The resource file lists exactly what was drawn, so a renamed or removed
// icon can never linger in it.
bool writeResourceFile(const QString &path, const QStringList &files)
{
    QByteArray text = "<!DOCTYPE RCC>\n<RCC version=\"1.0\">\n"
                      "  <qresource prefix=\"/studio\">\n";
    for (const QString &file : files)
        text += "    <file>" + file.toUtf8() + "</file>\n";
    text += "  </qresource>\n</RCC>\n";
    QFile out(path);
    if (!out.open(QIODevice::WriteOnly | QIODevice::Truncate) || out.write(text) != text.size()) {
        std::fprintf(stderr, "drawstudioicons: cannot write %s\n", qPrintable(path));
        return false;
    }
    return true;
}

}  // namespace

int main(int argc, char **argv)
{
    if (argc != 2 || argv[1][0] == '\0') {
        std::fprintf(stderr, "usage: %s OUTPUT_DIR\n", argc > 0 ? argv[0] : "drawstudioicons");
        return 2;
    }
    const QDir out(QString::fromLocal8Bit(argv[1]));
    if (!out.mkpath(QStringLiteral("icons/16")) || !out.mkpath(QStringLiteral("icons/32"))) {
        std::fprintf(stderr, "drawstudioicons: cannot create directories in %s\n", argv[1]);
        return 1;
    }

    QStringList files;
    int failures = 0;
    const auto save = [&](const QImage &img, const QString &file) {
        if (savePng(img, out.filePath(file)))
            files << file;
        else
            ++failures;
    };
    for (int size : {16, 32}) {
        const QString dir = QStringLiteral("icons/%1/").arg(size);
        for (const Entry &e : kEntries) {
            Canvas c(size);
            e.draw(c);
            c.p.end();
            save(c.img, dir + QLatin1String(e.name) + QStringLiteral(".png"));
        }
        save(drawProgramIcon(size), dir + QLatin1String(kProgramIcon) + QStringLiteral(".png"));
    }
    save(drawProgramIcon(256),
         QStringLiteral("icons/") + QLatin1String(kProgramIcon) + QStringLiteral(".png"));

    if (failures == 0 && !writeResourceFile(out.filePath(QStringLiteral("studioicons.qrc")), files))
        ++failures;
    return failures == 0 ? 0 : 1;
}
