#pragma once

// Not part of the interface: what hq2x, hq3x and hq4x share, included by their sources only.
//
// hqNx looks at each pixel with its eight neighbours, marks those whose colour is far from
// it in a YUV comparison, and fills the N x N pixels it becomes by rules chosen by that
// pattern of marks. The filters treat the four corners of the block alike, turned by
// quarter turns, so each filter's table holds only the pixels of the top-left part, seen
// in the top-left frame: for each corner the pattern is turned into that frame, and so are
// the neighbours the rules blend and the pixels they fill.
#include <QtGlobal>

#include <algorithm>
#include <array>
#include <cstdlib>

namespace Ovra {
namespace Hqx {

// Neighbours numbered as on a keypad seen from above: 1 2 3 / 4 5 6 / 7 8 9, 5 the pixel.
enum Neighbour { N1 = 1, N2, N3, N4, N5, N6, N7, N8, N9 };

// The mark of each neighbour in a pattern (none for the pixel itself).
constexpr int markBit[10] = {0, 1, 2, 4, 8, 0, 16, 32, 64, 128};

// The neighbour pairs some rules compare, in the order of a quarter turn clockwise:
// left and above, above and right, right and below, below and left.
constexpr int pairs[4][2] = {{N4, N2}, {N2, N6}, {N6, N8}, {N8, N4}};

// A rule that holds only while two neighbours look alike names them in the top-left
// frame; if they differ, the rule's other blend is taken.
enum Condition : quint8 {
    Always,
    SideTop,    // the neighbours left and above
    TopRight,   // above and right
    SideBottom, // left and below
};

// For each turn, the bit of a condition's pair in the set of differing pairs. A rule that
// always holds looks at a bit that is always set, so that no branch tells them apart.
constexpr int alwaysDiffers = 16;
constexpr std::array<std::array<int, 4>, 4> conditionBits()
{
    constexpr int pairOf[4] = {-1, 0, 1, 3};
    std::array<std::array<int, 4>, 4> bits{};
    for (int turn = 0; turn < 4; ++turn) {
        bits[turn][Always] = alwaysDiffers;
        for (int c = SideTop; c <= SideBottom; ++c)
            bits[turn][c] = 1 << ((pairOf[c] + turn) & 3);
    }
    return bits;
}
constexpr std::array<std::array<int, 4>, 4> conditionBit = conditionBits();

void weightsMustAddUpToAPowerOfTwo(); // never defined: a bad table entry fails to compile

constexpr quint8 shiftFor(int sum)
{
    return sum == 1 ? 0
           : sum == 2 ? 1
           : sum == 4 ? 2
           : sum == 8 ? 3
           : sum == 16 ? 4
                       : (weightsMustAddUpToAPowerOfTwo(), 0);
}

// How one output pixel is made: the weights, in the four hex digits of the table's
// entries, of the pixel itself (E), the diagonal neighbour at the frame's corner (C), the
// one beside it (S, left in the top-left frame) and the one above it (T). 0x1000 keeps the
// pixel; 0x2011 is (2E + S + T) / 4; 0xE011 is (14E + S + T) / 16. The sum divides by a
// shift, channel by channel, alpha too, truncating.
struct Blend
{
    quint8 pixel;
    quint8 corner;
    quint8 side;
    quint8 top;
    quint8 shift;

    constexpr Blend(quint16 weights)
        : pixel(quint8(weights >> 12))
        , corner(quint8((weights >> 8) & 15))
        , side(quint8((weights >> 4) & 15))
        , top(quint8(weights & 15))
        , shift(shiftFor((weights >> 12) + ((weights >> 8) & 15) + ((weights >> 4) & 15) + (weights & 15)))
    {
    }
};

// A table entry: {blend} for a rule that always holds, or {condition, blend once the
// condition's pair differs, blend while it looks alike}.
struct Rule
{
    Condition condition;
    Blend blends[2]; // while the condition's pair looks alike, and once it differs

    constexpr Rule(quint16 blend)
        : condition(Always)
        , blends{blend, blend}
    {
    }
    constexpr Rule(Condition c, quint16 different, quint16 alike)
        : condition(c)
        , blends{alike, different}
    {
    }
};

// A pixel of the top-left part of the output block, by column and row.
struct Cell
{
    int x;
    int y;
};

// For each number of quarter turns clockwise, where each neighbour of the top-left frame
// lies. One turn takes the top-left corner to the top-right one.
constexpr std::array<std::array<int, 10>, 4> turnedNeighbours()
{
    constexpr int quarterTurn[10] = {0, N3, N6, N9, N2, N5, N8, N1, N4, N7};
    std::array<std::array<int, 10>, 4> at{};
    for (int n = 0; n < 10; ++n)
        at[0][n] = n;
    for (int turn = 1; turn < 4; ++turn) {
        for (int n = 0; n < 10; ++n)
            at[turn][n] = quarterTurn[at[turn - 1][n]];
    }
    return at;
}
constexpr std::array<std::array<int, 10>, 4> neighbourAt = turnedNeighbours();

// Each pattern of marks as the frame of each turn sees it.
constexpr std::array<std::array<quint8, 256>, 4> turnedPatterns()
{
    std::array<std::array<quint8, 256>, 4> seen{};
    for (int turn = 0; turn < 4; ++turn) {
        for (int marks = 0; marks < 256; ++marks) {
            int frame = 0;
            for (int n = N1; n <= N9; ++n) {
                if (n != N5 && (marks & markBit[neighbourAt[turn][n]]))
                    frame |= markBit[n];
            }
            seen[turn][marks] = quint8(frame);
        }
    }
    return seen;
}
constexpr std::array<std::array<quint8, 256>, 4> patternIn = turnedPatterns();

// The integer YUV form the filters compare, packed as Y << 16 | U << 8 | V. The shifts of
// negative values round down, as the comparison has always done.
inline quint32 toYuv(quint32 pixel)
{
    const int r = int((pixel >> 16) & 0xFF);
    const int g = int((pixel >> 8) & 0xFF);
    const int b = int(pixel & 0xFF);
    const int y = (r + g + b) >> 2;
    const int u = 128 + ((r - b) >> 2);
    const int v = 128 + ((-r + 2 * g - b) >> 3);
    return quint32((y << 16) | (u << 8) | v);
}

inline bool farApart(quint32 a, quint32 b)
{
    // Without short cuts: on pictures of many edges the branches would mostly be guessed wrong.
    return (std::abs(int(a & 0xFF0000) - int(b & 0xFF0000)) > 0x300000)
           | (std::abs(int(a & 0x00FF00) - int(b & 0x00FF00)) > 0x000700)
           | (std::abs(int(a & 0x0000FF) - int(b & 0x0000FF)) > 0x000006);
}

// A pixel with each channel in 16 bits of its own (blue, red, green, alpha from the low
// end), so that one multiplication weighs all four: sixteen times 255 still fits.
inline quint64 spread(quint32 pixel)
{
    return (pixel & 0x00FF00FFu) | (quint64(pixel & 0xFF00FF00u) << 24);
}

inline quint32 mix(const Blend &b, quint64 e, quint64 c, quint64 s, quint64 t)
{
    const quint64 sum = ((e * b.pixel + c * b.corner + s * b.side + t * b.top) >> b.shift) & 0x00FF00FF00FF00FFull;
    return quint32(sum | (sum >> 24));
}

// One source pixel with its neighbours (the pixel itself past the picture's edges) and
// their YUV values, kept as three columns that move one place right at a time.
struct Window
{
    quint32 pixel[10];
    quint32 yuv[10];

    void load(int column, const quint32 *above, const quint32 *row, const quint32 *below, int at)
    {
        // Column 0 holds neighbours 1, 4, 7; 1 holds 2, 5, 8; 2 holds 3, 6, 9.
        pixel[1 + column] = above[at];
        pixel[4 + column] = row[at];
        pixel[7 + column] = below[at];
        yuv[1 + column] = toYuv(above[at]);
        yuv[4 + column] = toYuv(row[at]);
        yuv[7 + column] = toYuv(below[at]);
    }
    void shift()
    {
        for (int n = 1; n <= 7; n += 3) {
            pixel[n] = pixel[n + 1];
            pixel[n + 1] = pixel[n + 2];
            yuv[n] = yuv[n + 1];
            yuv[n + 1] = yuv[n + 2];
        }
    }
    // Every blend of one colour is that colour: a pixel amid its own kind needs no rules.
    bool uniform() const
    {
        const quint32 e = pixel[N5];
        return pixel[1] == e && pixel[2] == e && pixel[3] == e && pixel[4] == e && pixel[6] == e && pixel[7] == e
               && pixel[8] == e && pixel[9] == e;
    }
    int marks() const
    {
        int marks = 0;
        for (int n = N1; n <= N9; ++n) {
            if (n != N5)
                marks |= markBit[n] * int((pixel[n] != pixel[N5]) & farApart(yuv[n], yuv[N5]));
        }
        return marks;
    }
    // Bit k set when pair k differs, and the bit of rules that always hold.
    int differingPairs() const
    {
        int differing = alwaysDiffers;
        for (int k = 0; k < 4; ++k)
            differing |= int(farApart(yuv[pairs[k][0]], yuv[pairs[k][1]])) << k;
        return differing;
    }
};

// The filter of factor `Scale` over the rules of the cells of its top-left part. An odd
// factor's centre pixel, which no corner reaches, keeps the pixel.
template <int Scale, int Cells>
void magnify(const quint32 *source, quint32 *target, int width, int height, int bytesPerLine,
             const Rule (&rules)[256][Cells], const Cell (&cells)[Cells])
{
    // Rows closer than a row of output would write into each other and past the target.
    if (!source || !target || width <= 0 || height <= 0 || bytesPerLine < qint64(width) * Scale * 4)
        return;
    // Where each cell lands for each turn, as a row and a column of the block.
    int cellRow[4][Cells];
    int cellColumn[4][Cells];
    for (int k = 0; k < Cells; ++k) {
        int x = cells[k].x;
        int y = cells[k].y;
        for (int turn = 0; turn < 4; ++turn) {
            cellColumn[turn][k] = x;
            cellRow[turn][k] = y;
            const int turned = Scale - 1 - y;
            y = x;
            x = turned;
        }
    }
    auto *bytes = reinterpret_cast<uchar *>(target);
    Window w;
    for (int y = 0; y < height; ++y) {
        const quint32 *row = source + size_t(y) * size_t(width);
        const quint32 *above = y > 0 ? row - width : row;
        const quint32 *below = y + 1 < height ? row + width : row;
        quint32 *out[Scale];
        for (int k = 0; k < Scale; ++k)
            out[k] = reinterpret_cast<quint32 *>(bytes + (size_t(Scale) * size_t(y) + size_t(k)) * size_t(bytesPerLine));
        w.load(0, above, row, below, 0);
        w.load(1, above, row, below, 0);
        for (int x = 0; x < width; ++x) {
            if (x > 0)
                w.shift();
            w.load(2, above, row, below, x + 1 < width ? x + 1 : x);
            const quint32 e = w.pixel[N5];
            const int left = Scale * x;
            if (w.uniform()) {
                for (int k = 0; k < Scale; ++k)
                    std::fill_n(out[k] + left, Scale, e);
                continue;
            }
            const int marks = w.marks();
            const int differing = w.differingPairs();
            quint64 spreadOut[10];
            for (int n = N1; n <= N9; ++n)
                spreadOut[n] = spread(w.pixel[n]);
            const quint64 pixel = spreadOut[N5];
            for (int turn = 0; turn < 4; ++turn) {
                const auto &at = neighbourAt[turn];
                const quint64 c = spreadOut[at[N1]];
                const quint64 s = spreadOut[at[N4]];
                const quint64 t = spreadOut[at[N2]];
                const Rule *rule = rules[patternIn[turn][marks]];
                for (int k = 0; k < Cells; ++k) {
                    const bool differs = differing & conditionBit[turn][rule[k].condition];
                    const Blend &blend = rule[k].blends[differs];
                    out[cellRow[turn][k]][left + cellColumn[turn][k]] = mix(blend, pixel, c, s, t);
                }
            }
            if (Scale % 2)
                out[Scale / 2][left + Scale / 2] = e;
        }
    }
}

} // namespace Hqx
} // namespace Ovra
