#include "image/hqx_p.h"

#include <cstdlib>
#include <vector>

// hqNx looks at each pixel with its eight neighbours, marks those whose colour is far from
// it in a YUV comparison, and fills each corner of the enlarged pixel by a rule chosen by
// that pattern of marks. The filters treat the four corners alike, turned by quarter
// turns, so one table for the top-left corner serves all four: the pattern is turned
// into the corner's frame, and so are the neighbours the rule blends.

namespace Ovra {
namespace {

// Neighbours numbered as on a keypad seen from above: 1 2 3 / 4 5 6 / 7 8 9, 5 the pixel.
enum { N1 = 1, N2, N3, N4, N5, N6, N7, N8, N9 };

// The mark of each neighbour in a pattern.
constexpr int markBit[10] = {0, 1, 2, 4, 8, 0, 16, 32, 64, 128};

// A quarter turn clockwise: where each neighbour of the top-left frame lies for the corner
// that is one turn further (top-left, top-right, bottom-right, bottom-left).
constexpr int quarterTurn[10] = {0, N3, N6, N9, N2, N5, N8, N1, N4, N7};

// How a corner pixel is made from the pixel (E), the diagonal neighbour at its corner (C),
// the neighbour beside it (S, left in the top-left frame) and the one above it (T).
enum Blend : quint8 {
    Keep,        // E
    Corner,      // (3E + C) / 4
    Side,        // (3E + S) / 4
    Top,         // (3E + T) / 4
    Both,        // (2E + S + T) / 4
    CornerTop,   // (2E + C + T) / 4
    CornerSide,  // (2E + C + S) / 4
    TopLeaning,  // (5E + 2T + S) / 8
    SideLeaning, // (5E + 2S + T) / 8
    Soft,        // (6E + S + T) / 8
    Edge,        // (2E + 3S + 3T) / 8
    Faint,       // (14E + S + T) / 16
};

// Some rules hold only while two neighbours look alike; if they differ, the other blend
// is taken. Named in the top-left frame.
enum Condition : quint8 {
    Always,
    SideTop,    // the neighbours left and above
    TopRight,   // above and right
    SideBottom, // left and below
};

struct Rule
{
    Condition condition = Always;
    Blend ifDifferent = Keep;
    Blend ifAlike = Keep;
    constexpr Rule(Blend blend) : ifDifferent(blend), ifAlike(blend) {}
    constexpr Rule(Condition c, Blend different, Blend alike) : condition(c), ifDifferent(different), ifAlike(alike) {}
};

// The hq2x rules of the top-left pixel by the pattern of marks in its own frame
// (bit 1: top-left, 2: top, 4: top-right, 8: left, 16: right, 32: bottom-left,
// 64: bottom, 128: bottom-right).
constexpr Rule hq2xRules[256] = {
    {Both}, {Both}, {CornerSide}, {Side}, // 0
    {Both}, {Both}, {CornerSide}, {Side}, // 4
    {CornerTop}, {Top}, {SideTop, Corner, Both}, {SideTop, Keep, Both}, // 8
    {CornerTop}, {Top}, {SideTop, Corner, Edge}, {SideTop, Keep, Edge}, // 12
    {Both}, {Both}, {CornerSide}, {TopRight, Side, TopLeaning}, // 16
    {Both}, {Both}, {CornerSide}, {TopRight, Side, TopLeaning}, // 20
    {CornerTop}, {Top}, {SideTop, Keep, Both}, {SideTop, Keep, Both}, // 24
    {CornerTop}, {Top}, {Corner}, {SideTop, Keep, Both}, // 28
    {Both}, {Both}, {CornerSide}, {Side}, // 32
    {Both}, {Both}, {CornerSide}, {Side}, // 36
    {CornerTop}, {Top}, {SideTop, Corner, Edge}, {SideTop, Keep, Edge}, // 40
    {CornerTop}, {Top}, {SideTop, Corner, Soft}, {SideTop, Keep, Faint}, // 44
    {Both}, {Both}, {CornerSide}, {TopRight, Side, TopLeaning}, // 48
    {Both}, {Both}, {CornerSide}, {TopRight, Side, TopLeaning}, // 52
    {CornerTop}, {Top}, {SideTop, Corner, Soft}, {SideTop, Keep, Both}, // 56
    {CornerTop}, {Top}, {Corner}, {SideTop, Keep, Faint}, // 60
    {Both}, {Both}, {CornerSide}, {Side}, // 64
    {Both}, {Both}, {CornerSide}, {Side}, // 68
    {CornerTop}, {SideBottom, Top, SideLeaning}, {SideTop, Keep, Both}, {SideTop, Keep, Both}, // 72
    {CornerTop}, {SideBottom, Top, SideLeaning}, {SideTop, Corner, Soft}, {SideTop, Keep, Both}, // 76
    {Both}, {Both}, {CornerSide}, {Side}, // 80
    {Both}, {Both}, {CornerSide}, {Side}, // 84
    {CornerTop}, {Top}, {SideTop, Corner, Soft}, {SideTop, Keep, Both}, // 88
    {CornerTop}, {Top}, {SideTop, Corner, Soft}, {SideTop, Keep, Both}, // 92
    {Both}, {Both}, {CornerSide}, {Side}, // 96
    {Both}, {Both}, {CornerSide}, {Side}, // 100
    {CornerTop}, {SideBottom, Top, SideLeaning}, {Corner}, {SideTop, Keep, Both}, // 104
    {CornerTop}, {SideBottom, Top, SideLeaning}, {Corner}, {SideTop, Keep, Faint}, // 108
    {Both}, {Both}, {CornerSide}, {Side}, // 112
    {Both}, {Both}, {CornerSide}, {TopRight, Side, TopLeaning}, // 116
    {CornerTop}, {Top}, {SideTop, Corner, Soft}, {SideTop, Keep, Both}, // 120
    {CornerTop}, {SideBottom, Top, SideLeaning}, {Corner}, {SideTop, Keep, Faint}, // 124
    {Both}, {Both}, {CornerSide}, {Side}, // 128
    {Both}, {Both}, {CornerSide}, {Side}, // 132
    {CornerTop}, {Top}, {SideTop, Corner, Both}, {SideTop, Keep, Both}, // 136
    {CornerTop}, {Top}, {SideTop, Corner, Edge}, {SideTop, Keep, Edge}, // 140
    {Both}, {Both}, {CornerSide}, {Side}, // 144
    {Both}, {Both}, {CornerSide}, {Side}, // 148
    {CornerTop}, {Top}, {SideTop, Corner, Soft}, {SideTop, Keep, Both}, // 152
    {CornerTop}, {Top}, {SideTop, Corner, Soft}, {SideTop, Keep, Both}, // 156
    {Both}, {Both}, {CornerSide}, {Side}, // 160
    {Both}, {Both}, {CornerSide}, {Side}, // 164
    {CornerTop}, {Top}, {SideTop, Corner, Edge}, {SideTop, Keep, Edge}, // 168
    {CornerTop}, {Top}, {SideTop, Corner, Soft}, {SideTop, Keep, Faint}, // 172
    {Both}, {Both}, {CornerSide}, {Side}, // 176
    {Both}, {Both}, {CornerSide}, {Side}, // 180
    {CornerTop}, {Top}, {SideTop, Corner, Soft}, {SideTop, Keep, Edge}, // 184
    {CornerTop}, {Top}, {Corner}, {SideTop, Keep, Faint}, // 188
    {Both}, {Both}, {CornerSide}, {Side}, // 192
    {Both}, {Both}, {CornerSide}, {Side}, // 196
    {CornerTop}, {Top}, {SideTop, Corner, Soft}, {SideTop, Keep, Both}, // 200
    {CornerTop}, {Top}, {SideTop, Corner, Soft}, {SideTop, Keep, Edge}, // 204
    {Both}, {Both}, {CornerSide}, {Side}, // 208
    {Both}, {Both}, {CornerSide}, {Side}, // 212
    {CornerTop}, {Top}, {SideTop, Corner, Soft}, {SideTop, Keep, Both}, // 216
    {CornerTop}, {Top}, {Corner}, {SideTop, Keep, Both}, // 220
    {Both}, {Both}, {CornerSide}, {Side}, // 224
    {Both}, {Both}, {CornerSide}, {Side}, // 228
    {CornerTop}, {Top}, {SideTop, Corner, Soft}, {SideTop, Keep, Both}, // 232
    {CornerTop}, {Top}, {Corner}, {SideTop, Keep, Faint}, // 236
    {Both}, {Both}, {CornerSide}, {Side}, // 240
    {Both}, {Both}, {CornerSide}, {Side}, // 244
    {CornerTop}, {Top}, {Corner}, {SideTop, Keep, Both}, // 248
    {CornerTop}, {Top}, {Corner}, {SideTop, Keep, Faint}, // 252
};

quint32 toYuv(quint32 pixel)
{
    const int r = int((pixel >> 16) & 0xFF);
    const int g = int((pixel >> 8) & 0xFF);
    const int b = int(pixel & 0xFF);
    const int y = (r + g + b) >> 2;
    const int u = 128 + ((r - b) >> 2);
    const int v = 128 + ((-r + 2 * g - b) >> 3);
    return quint32((y << 16) + (u << 8) + v);
}

bool farApart(quint32 a, quint32 b)
{
    return std::abs(int(a & 0xFF0000) - int(b & 0xFF0000)) > 0x300000
           || std::abs(int(a & 0x00FF00) - int(b & 0x00FF00)) > 0x000700
           || std::abs(int(a & 0x0000FF) - int(b & 0x0000FF)) > 0x000006;
}

// Weighs four pixels channel by channel, alpha included.
quint32 mix(quint32 e, quint32 c, quint32 s, quint32 t, int we, int wc, int ws, int wt, int shift)
{
    quint32 result = 0;
    for (int channel = 0; channel < 32; channel += 8) {
        const int value = (int((e >> channel) & 0xFF) * we + int((c >> channel) & 0xFF) * wc
                           + int((s >> channel) & 0xFF) * ws + int((t >> channel) & 0xFF) * wt)
                          >> shift;
        result |= quint32(value) << channel;
    }
    return result;
}

quint32 blend(Blend rule, quint32 e, quint32 c, quint32 s, quint32 t)
{
    switch (rule) {
    case Keep:
        return e;
    case Corner:
        return mix(e, c, s, t, 3, 1, 0, 0, 2);
    case Side:
        return mix(e, c, s, t, 3, 0, 1, 0, 2);
    case Top:
        return mix(e, c, s, t, 3, 0, 0, 1, 2);
    case Both:
        return mix(e, c, s, t, 2, 0, 1, 1, 2);
    case CornerTop:
        return mix(e, c, s, t, 2, 1, 0, 1, 2);
    case CornerSide:
        return mix(e, c, s, t, 2, 1, 1, 0, 2);
    case TopLeaning:
        return mix(e, c, s, t, 5, 0, 1, 2, 3);
    case SideLeaning:
        return mix(e, c, s, t, 5, 0, 2, 1, 3);
    case Soft:
        return mix(e, c, s, t, 6, 0, 1, 1, 3);
    case Edge:
        return mix(e, c, s, t, 2, 0, 3, 3, 3);
    case Faint:
        return mix(e, c, s, t, 14, 0, 1, 1, 4);
    }
    return e;
}

// The turns of the frame: for each corner, where the top-left frame's neighbours lie,
// and each pattern as that corner sees it.
struct Frames
{
    int neighbour[4][10];
    quint8 pattern[4][256];

    Frames()
    {
        for (int n = 0; n < 10; ++n)
            neighbour[0][n] = n;
        for (int turn = 1; turn < 4; ++turn) {
            for (int n = 0; n < 10; ++n)
                neighbour[turn][n] = quarterTurn[neighbour[turn - 1][n]];
        }
        for (int turn = 0; turn < 4; ++turn) {
            for (int marks = 0; marks < 256; ++marks) {
                int seen = 0;
                for (int n = N1; n <= N9; ++n) {
                    if (n != N5 && (marks & markBit[neighbour[turn][n]]))
                        seen |= markBit[n];
                }
                pattern[turn][marks] = quint8(seen);
            }
        }
    }
};

const Frames &frames()
{
    static const Frames instance;
    return instance;
}

// One source pixel with its neighbours, their YUV values and the pattern of marks.
struct Surroundings
{
    quint32 pixel[10];
    quint32 yuv[10];
    int marks = 0;

    bool differ(int a, int b) const { return farApart(yuv[a], yuv[b]); }
};

// Walks the picture and hands each pixel's surroundings to `place`.
template <typename Place>
void walk(const quint32 *source, int width, int height, Place place)
{
    std::vector<quint32> yuv(size_t(width) * size_t(height));
    for (size_t i = 0; i < yuv.size(); ++i)
        yuv[i] = toYuv(source[i]);
    Surroundings s;
    for (int y = 0; y < height; ++y) {
        const int above = y > 0 ? y - 1 : y;
        const int below = y + 1 < height ? y + 1 : y;
        for (int x = 0; x < width; ++x) {
            const int left = x > 0 ? x - 1 : x;
            const int right = x + 1 < width ? x + 1 : x;
            const int rows[3] = {above, y, below};
            const int columns[3] = {left, x, right};
            for (int row = 0; row < 3; ++row) {
                for (int column = 0; column < 3; ++column) {
                    const size_t at = size_t(rows[row]) * size_t(width) + size_t(columns[column]);
                    s.pixel[1 + row * 3 + column] = source[at];
                    s.yuv[1 + row * 3 + column] = yuv[at];
                }
            }
            s.marks = 0;
            for (int n = N1; n <= N9; ++n) {
                if (n != N5 && s.pixel[n] != s.pixel[N5] && s.differ(n, N5))
                    s.marks |= markBit[n];
            }
            place(x, y, s);
        }
    }
}

// The two neighbours a condition compares, in the top-left frame.
constexpr int conditionPair[4][2] = {{N5, N5}, {N4, N2}, {N2, N6}, {N4, N8}};

quint32 cornerPixel(const Surroundings &s, int turn)
{
    const Frames &f = frames();
    const int *at = f.neighbour[turn];
    const Rule rule = hq2xRules[f.pattern[turn][s.marks]];
    Blend chosen = rule.ifDifferent;
    if (rule.condition != Always
        && !s.differ(at[conditionPair[rule.condition][0]], at[conditionPair[rule.condition][1]]))
        chosen = rule.ifAlike;
    return blend(chosen, s.pixel[N5], s.pixel[at[N1]], s.pixel[at[N4]], s.pixel[at[N2]]);
}

} // namespace

void hq2x(const quint32 *source, quint32 *target, int width, int height, int bytesPerLine)
{
    // The corners in the order of the turns: top-left, top-right, bottom-right, bottom-left.
    static const int cornerX[4] = {0, 1, 1, 0};
    static const int cornerY[4] = {0, 0, 1, 1};
    auto *bytes = reinterpret_cast<uchar *>(target);
    walk(source, width, height, [&](int x, int y, const Surroundings &s) {
        for (int turn = 0; turn < 4; ++turn) {
            auto *row = reinterpret_cast<quint32 *>(bytes + size_t(2 * y + cornerY[turn]) * size_t(bytesPerLine));
            row[2 * x + cornerX[turn]] = cornerPixel(s, turn);
        }
    });
}

} // namespace Ovra
