#include "sampleart.h"

#include <QtMath>

#include <cmath>

namespace SampleArt {
namespace {

// Palette indices of the knight.
enum Ink : uchar {
    Clear = 0, Outline, Skin, SkinShade, ArmourLight, Armour, ArmourDark, Cloth, ClothShade,
    Plume, Boots, Steel, Gold, White, Shadow, InkCount
};

const int canvasWidth = 48;
const int canvasHeight = 64;

// A small generator of our own, so that noise is the same on every platform.
class Noise
{
public:
    explicit Noise(quint32 seed) : m_state(seed * 2654435761u + 1) {}
    quint32 next()
    {
        m_state = m_state * 1664525u + 1013904223u;
        return m_state >> 8;
    }
    // -1 to 1.
    double real() { return double(next() & 0xffff) / 32768.0 - 1.0; }

private:
    quint32 m_state;
};

quint32 hash(int x, int y, int z)
{
    quint32 h = quint32(x) * 73856093u ^ quint32(y) * 19349663u ^ quint32(z) * 83492791u;
    h ^= h >> 13;
    h *= 0x5bd1e995u;
    return h ^ (h >> 15);
}

void plot(QImage &image, int x, int y, uchar ink)
{
    if (x >= 0 && y >= 0 && x < image.width() && y < image.height())
        image.scanLine(y)[x] = ink;
}

void disc(QImage &image, int cx, int cy, int r, uchar ink)
{
    for (int y = -r; y <= r; ++y) {
        for (int x = -r; x <= r; ++x) {
            if (x * x + y * y <= r * r + r / 2)
                plot(image, cx + x, cy + y, ink);
        }
    }
}

void ellipse(QImage &image, int cx, int cy, int rx, int ry, uchar ink)
{
    for (int y = -ry; y <= ry; ++y) {
        for (int x = -rx; x <= rx; ++x) {
            if (x * x * ry * ry + y * y * rx * rx <= rx * rx * ry * ry)
                plot(image, cx + x, cy + y, ink);
        }
    }
}

// A line of discs along Bresenham's steps.
void stroke(QImage &image, QPoint from, QPoint to, int radius, uchar ink)
{
    int x = from.x(), y = from.y();
    const int dx = std::abs(to.x() - x), dy = -std::abs(to.y() - y);
    const int sx = x < to.x() ? 1 : -1, sy = y < to.y() ? 1 : -1;
    int error = dx + dy;
    for (;;) {
        disc(image, x, y, radius, ink);
        if (x == to.x() && y == to.y())
            break;
        const int twice = 2 * error;
        if (twice >= dy) {
            error += dy;
            x += sx;
        }
        if (twice <= dx) {
            error += dx;
            y += sy;
        }
    }
}

// Every clear pixel next to the figure becomes outline.
void outline(QImage &image)
{
    const QImage before = image.copy();
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (before.pixelIndex(x, y) != Clear)
                continue;
            const auto inked = [&](int nx, int ny) {
                return nx >= 0 && ny >= 0 && nx < image.width() && ny < image.height()
                       && before.pixelIndex(nx, ny) != Clear && before.pixelIndex(nx, ny) != Outline;
            };
            if (inked(x - 1, y) || inked(x + 1, y) || inked(x, y - 1) || inked(x, y + 1))
                image.scanLine(y)[x] = Outline;
        }
    }
}

// Angles in degrees from straight down, growing towards the front (right).
QPoint limb(QPoint from, double degrees, int length)
{
    const double radians = qDegreesToRadians(degrees);
    return from + QPoint(int(std::lround(length * std::sin(radians))), int(std::lround(length * std::cos(radians))));
}

struct Pose
{
    int lean = 0;   // shoulders ahead of the hips
    int lift = 0;   // the body above its standing height
    double thigh[2] = {8, -8};
    double shin[2] = {8, -8};
    double upperArm[2] = {-12, 14};
    double foreArm[2] = {-20, 40};
};

Pose pose(Move move, int frame)
{
    Pose p;
    switch (move) {
    case Move::Idle:
        p.lift = (frame == 1 || frame == 2) ? -1 : 0;
        p.foreArm[1] = 40 + 4 * frame;
        break;
    case Move::Walk: {
        const double s = std::sin(2 * M_PI * frame / 6);
        p.thigh[0] = 28 * s;
        p.thigh[1] = -28 * s;
        p.shin[0] = 28 * s - 14 * std::fabs(s);
        p.shin[1] = -28 * s - 14 * std::fabs(s);
        p.upperArm[0] = -22 * s;
        p.upperArm[1] = 22 * s;
        p.foreArm[0] = p.upperArm[0] + 24;
        p.foreArm[1] = p.upperArm[1] + 24;
        p.lift = (frame % 3 == 0) ? 0 : 1;
        break;
    }
    case Move::Punch: {
        static const double upper[4] = {20, 60, 90, 45};
        static const double fore[4] = {110, 85, 90, 110};
        p.upperArm[1] = upper[frame];
        p.foreArm[1] = fore[frame];
        p.lean = frame == 2 ? 3 : frame == 1 ? 1 : 0;
        p.thigh[0] = 18;
        p.shin[0] = 10;
        p.thigh[1] = -16;
        p.shin[1] = -12;
        break;
    }
    case Move::Jump: {
        static const int lift[4] = {-5, 6, 9, 4};
        static const double thigh[4] = {55, 70, 80, 30};
        static const double shin[4] = {-40, -60, -70, -10};
        p.lift = lift[frame];
        for (int side = 0; side < 2; ++side) {
            p.thigh[side] = thigh[frame] - side * 25;
            p.shin[side] = shin[frame] - side * 10;
            p.upperArm[side] = frame ? 150 - side * 40 : -30;
            p.foreArm[side] = frame ? 160 - side * 30 : -10;
        }
        break;
    }
    case Move::Hurt:
        p.lean = frame ? -5 : -3;
        p.upperArm[0] = -60;
        p.upperArm[1] = -40;
        p.foreArm[0] = -100;
        p.foreArm[1] = -80;
        p.thigh[0] = 10;
        p.thigh[1] = -20;
        break;
    }
    return p;
}

void drawArm(QImage &image, QPoint shoulder, double upper, double fore, bool front)
{
    const QPoint elbow = limb(shoulder, upper, 8);
    const QPoint hand = limb(elbow, fore, 8);
    stroke(image, shoulder, elbow, 2, front ? ArmourLight : ArmourDark);
    stroke(image, elbow, hand, 2, front ? Armour : ArmourDark);
    disc(image, hand.x(), hand.y(), 2, front ? Skin : SkinShade);
}

void drawLeg(QImage &image, QPoint hip, double thigh, double shin, bool front)
{
    const QPoint knee = limb(hip, thigh, 11);
    const QPoint foot = limb(knee, shin, 10);
    stroke(image, hip, knee, 3, front ? Armour : ArmourDark);
    stroke(image, knee, foot, 2, front ? Boots : ArmourDark);
    plot(image, foot.x() + 2, foot.y(), Boots);
    plot(image, foot.x() + 3, foot.y(), Boots);
}

QImage blankIndexed(int width, int height, const QVector<QRgb> &palette)
{
    QImage image(width, height, QImage::Format_Indexed8);
    image.setColorTable(palette);
    image.fill(0);
    return image;
}

int clampByte(double value)
{
    return qBound(0, int(std::lround(value)), 255);
}

Ovra::SoundSample mono(quint32 rate, int frames)
{
    Ovra::SoundSample sample;
    sample.channels = 1;
    sample.bits = 16;
    sample.frequency = rate;
    sample.samples = quint32(frames);
    sample.data.resize(frames * 2);
    return sample;
}

void put(Ovra::SoundSample &sample, int index, double value)
{
    const qint16 v = qint16(qBound(-32767L, std::lround(value * 32767.0), 32767L));
    sample.data[index * 2] = char(v & 0xff);
    sample.data[index * 2 + 1] = char((v >> 8) & 0xff);
}

const quint32 rate = 22050;

} // namespace

const QVector<MoveInfo> &moves()
{
    static const QVector<MoveInfo> list{
        {Move::Idle, 0, 4, "idle"},
        {Move::Walk, 10, 6, "walk"},
        {Move::Punch, 200, 4, "punch"},
        {Move::Jump, 40, 4, "jump"},
        {Move::Hurt, 50, 2, "hurt"},
    };
    return list;
}

QVector<QRgb> knightPalette(int team)
{
    static const QRgb cloth[3][2] = {
        {qRgb(196, 40, 44), qRgb(128, 24, 30)},
        {qRgb(44, 84, 200), qRgb(26, 48, 128)},
        {qRgb(44, 160, 72), qRgb(24, 100, 44)},
    };
    const int t = qBound(0, team, 2);
    QVector<QRgb> palette(256, qRgba(0, 0, 0, 255));
    palette[Clear] = qRgba(0, 0, 0, 0);
    palette[Outline] = qRgb(20, 20, 28);
    palette[Skin] = qRgb(236, 188, 140);
    palette[SkinShade] = qRgb(196, 140, 100);
    palette[ArmourLight] = qRgb(196, 202, 216);
    palette[Armour] = qRgb(142, 150, 170);
    palette[ArmourDark] = qRgb(88, 94, 116);
    palette[Cloth] = cloth[t][0];
    palette[ClothShade] = cloth[t][1];
    palette[Plume] = qRgb(240, 210, 60);
    palette[Boots] = qRgb(110, 70, 40);
    palette[Steel] = qRgb(222, 226, 236);
    palette[Gold] = qRgb(210, 170, 40);
    palette[White] = qRgb(250, 250, 250);
    palette[Shadow] = qRgba(0, 0, 0, 96);
    return palette;
}

Ovra::RGBA paletteEntry(const QVector<QRgb> &palette, int index)
{
    const QRgb c = palette.value(index);
    return Ovra::RGBA(uchar(qRed(c)), uchar(qGreen(c)), uchar(qBlue(c)), uchar(qAlpha(c)));
}

QPoint knightAxis()
{
    return QPoint(canvasWidth / 2, canvasHeight - 2);
}

QPoint fist(int frame)
{
    const Pose p = pose(Move::Punch, frame);
    const QPoint shoulder(canvasWidth / 2 + p.lean + 2, 24 - p.lift);
    return limb(limb(shoulder, p.upperArm[1], 8), p.foreArm[1], 8);
}

QImage knight(Move move, int frame)
{
    QImage image = blankIndexed(canvasWidth, canvasHeight, knightPalette(0));
    const Pose p = pose(move, frame);
    const int cx = canvasWidth / 2;
    const QPoint hip(cx, 40 - p.lift);
    const QPoint shoulder(cx + p.lean, 24 - p.lift);

    // Back to front: far limbs, body, head, near limbs.
    drawArm(image, shoulder - QPoint(2, 0), p.upperArm[0], p.foreArm[0], false);
    drawLeg(image, hip - QPoint(2, 0), p.thigh[1], p.shin[1], false);
    stroke(image, hip, shoulder, 5, Armour);
    stroke(image, hip + QPoint(1, -2), shoulder + QPoint(1, 2), 2, ArmourLight);
    for (int x = -5; x <= 5; ++x) {
        for (int y = 0; y < 4; ++y)
            plot(image, hip.x() + x, hip.y() - 1 + y, y == 3 ? ClothShade : Cloth);
    }
    plot(image, hip.x(), hip.y(), Gold);
    drawLeg(image, hip + QPoint(2, 0), p.thigh[0], p.shin[0], true);

    const QPoint head = shoulder + QPoint(p.lean / 2, -9);
    ellipse(image, head.x(), head.y(), 5, 6, Skin);
    ellipse(image, head.x(), head.y() - 2, 6, 4, ArmourLight);
    for (int x = -6; x <= 6; ++x)
        plot(image, head.x() + x, head.y() + 1, ArmourDark);
    plot(image, head.x() + 3, head.y() + 2, White);
    stroke(image, head + QPoint(-1, -6), head + QPoint(-5, -9), 1, Plume);
    drawArm(image, shoulder + QPoint(2, 0), p.upperArm[1], p.foreArm[1], true);
    outline(image);
    // The shadow under the feet, where nothing else is.
    for (int x = -9; x <= 9; ++x) {
        uchar *row = image.scanLine(canvasHeight - 1);
        if (row[cx + x] == Clear)
            row[cx + x] = Shadow;
    }
    return image;
}

QImage spark(int frame)
{
    QImage image(32, 32, QImage::Format_ARGB32);
    const double radius = 4.0 + 3.0 * frame;
    for (int y = 0; y < 32; ++y) {
        auto *row = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < 32; ++x) {
            const double dx = x - 15.5, dy = y - 15.5;
            const double distance = std::sqrt(dx * dx + dy * dy);
            const double ray = std::pow(std::fabs(std::cos(4 * std::atan2(dy, dx) + frame * 0.4)), 8.0);
            const double value = qMax(0.0, 1.0 - distance / (radius * (0.45 + ray)));
            const double fade = 1.0 - frame * 0.2;
            row[x] = qRgba(255, clampByte(200 + 55 * value), clampByte(120 * value), clampByte(255 * value * fade));
        }
    }
    return image;
}

QImage fireball(int frame)
{
    QImage image(40, 24, QImage::Format_ARGB32);
    for (int y = 0; y < 24; ++y) {
        auto *row = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < 40; ++x) {
            const double dx = (x - 27) / 11.0, dy = (y - 11.5) / 8.0;
            double heat = 1.0 - (dx * dx + dy * dy);
            if (x < 27) // the tail thins out behind the ball
                heat = qMax(heat, 1.0 - std::fabs(dy) * (1.6 + (27 - x) / 8.0) - (27 - x) / 30.0);
            heat += (int(hash(x, y, frame) % 100) - 50) / 400.0;
            heat = qBound(0.0, heat, 1.0);
            row[x] = qRgba(255, clampByte(60 + 195 * heat * heat), clampByte(40 * heat * heat * heat), clampByte(255 * std::sqrt(heat)));
        }
    }
    return image;
}

QImage portrait()
{
    QImage image(64, 64, QImage::Format_ARGB32);
    for (int y = 0; y < 64; ++y) {
        auto *row = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < 64; ++x) {
            const double dx = (x - 32) / 18.0, dy = (y - 30) / 22.0;
            const double face = dx * dx + dy * dy;
            QRgb colour = qRgb(40 + y, 60 + y / 2, 110 + y);
            if (face < 1.0) {
                const double light = 1.0 - 0.4 * (x / 64.0);
                colour = y < 24 ? qRgb(clampByte(190 * light), clampByte(196 * light), clampByte(214 * light))
                                : qRgb(clampByte(236 * light), clampByte(188 * light), clampByte(140 * light));
                if (y >= 22 && y <= 24)
                    colour = qRgb(88, 94, 116);
                if ((x == 25 || x == 39) && y >= 32 && y <= 34)
                    colour = qRgb(20, 20, 28);
            } else if (y > 52 && std::fabs(x - 32.0) < 26 - (64 - y) / 2.0) {
                colour = qRgb(196, 40, 44);
            }
            row[x] = colour;
        }
    }
    return image;
}

QImage tile(int seed, int width, int height)
{
    QImage image = blankIndexed(width, height, knightPalette(seed % 3));
    for (int y = 0; y < height; ++y) {
        uchar *row = image.scanLine(y);
        for (int x = 0; x < width; ++x) {
            const bool border = x == 0 || y == 0 || x == width - 1 || y == height - 1;
            row[x] = border ? uchar(Outline) : uchar(2 + (((x / 4 + y / 4 + seed) & 1) ? 3 : hash(x, y, seed) % 12));
        }
    }
    return image;
}

Ovra::SoundSample swing()
{
    const int frames = int(rate / 4);
    Ovra::SoundSample sample = mono(rate, frames);
    Noise noise(1);
    double low = 0;
    for (int i = 0; i < frames; ++i) {
        const double t = double(i) / frames;
        const double cut = 0.05 + 0.5 * std::sin(M_PI * t); // the whoosh opens and closes
        low += cut * (noise.real() - low);
        const double envelope = qMin(1.0, t * 12) * (1.0 - t);
        put(sample, i, 0.8 * envelope * low);
    }
    return sample;
}

Ovra::SoundSample hit()
{
    const int frames = int(rate / 5);
    Ovra::SoundSample sample = mono(rate, frames);
    Noise noise(2);
    double phase = 0;
    for (int i = 0; i < frames; ++i) {
        const double t = double(i) / rate;
        phase += 2 * M_PI * (140.0 - 300.0 * t) / rate;
        const double body = std::sin(phase) * std::exp(-t * 18);
        const double crack = noise.real() * std::exp(-t * 90);
        put(sample, i, 0.7 * body + 0.4 * crack);
    }
    return sample;
}

Ovra::SoundSample jump()
{
    const int frames = int(rate * 3 / 10);
    Ovra::SoundSample sample = mono(rate, frames);
    double phase = 0;
    for (int i = 0; i < frames; ++i) {
        const double t = double(i) / frames;
        phase += 2 * M_PI * (300.0 + 600.0 * t) / rate;
        const double square = std::sin(phase) > 0 ? 1.0 : -1.0;
        put(sample, i, 0.3 * square * (1.0 - t) * qMin(1.0, t * 30));
    }
    return sample;
}

Ovra::SoundSample step()
{
    const int frames = int(rate * 8 / 100);
    Ovra::SoundSample sample = mono(rate, frames);
    Noise noise(3);
    double low = 0;
    for (int i = 0; i < frames; ++i) {
        low += 0.08 * (noise.real() - low);
        put(sample, i, 2.5 * low * std::exp(-double(i) / rate * 50));
    }
    return sample;
}

Ovra::SoundSample tune()
{
    const int frames = 65536;
    Ovra::SoundSample sample = mono(rate, frames);
    // A rising arpeggio over a bass line, eight notes of 8192 frames.
    static const int melody[8] = {60, 64, 67, 72, 67, 64, 62, 60};
    static const int bass[8] = {36, 36, 43, 43, 41, 41, 43, 36};
    const auto hertz = [](int note) { return 440.0 * std::pow(2.0, (note - 69) / 12.0); };
    double high = 0, low = 0;
    for (int i = 0; i < frames; ++i) {
        const int note = i / 8192;
        const double within = double(i % 8192) / 8192;
        const double envelope = qMin(1.0, within * 40) * (1.0 - 0.7 * within);
        high += 2 * M_PI * hertz(melody[note]) / rate;
        low += 2 * M_PI * hertz(bass[note]) / rate;
        const double lead = envelope * (0.5 * std::sin(high) + 0.15 * std::sin(2 * high));
        put(sample, i, 0.6 * (lead + 0.45 * std::sin(low) + 0.1 * std::sin(3 * low)));
    }
    return sample;
}

Ovra::SoundSample blip(int seed, int frames)
{
    Ovra::SoundSample sample = mono(rate, qMax(frames, 1));
    Noise noise(quint32(seed) + 7);
    for (int i = 0; i < int(sample.samples); ++i)
        put(sample, i, std::abs(i - frames / 2) < 16 ? noise.real() * 0.5 : 0.0);
    return sample;
}

QImage icon()
{
    QImage image(32, 32, QImage::Format_ARGB32);
    for (int y = 0; y < 32; ++y) {
        auto *row = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < 32; ++x) {
            // A rounded square in the team red, with a helmet in the middle.
            const int cornerX = qMax(0, qMax(4 - x, x - 27)), cornerY = qMax(0, qMax(4 - y, y - 27));
            const bool inside = cornerX * cornerX + cornerY * cornerY <= 16;
            const double dx = (x - 15.5) / 10.0, dy = (y - 15.5) / 11.0;
            const bool helmet = dx * dx + dy * dy < 1.0 && !(y > 15 && y < 19 && x > 8 && x < 23);
            QRgb colour = qRgba(0, 0, 0, 0);
            if (inside)
                colour = qRgb(160 + y * 2, 36, 44);
            if (helmet)
                colour = qRgb(clampByte(230 - y * 3), clampByte(234 - y * 3), clampByte(244 - y * 2));
            row[x] = colour;
        }
    }
    return image;
}

} // namespace SampleArt
