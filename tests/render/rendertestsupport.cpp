#include "rendertestsupport.h"

#include <QCoreApplication>
#include <QVector4D>

#include <cmath>

namespace {

struct Point
{
    double x, y;
};

double edge(const Point &a, const Point &b, double px, double py)
{
    return (b.x - a.x) * (py - a.y) - (b.y - a.y) * (px - a.x);
}

// A pixel centre on an edge shared by two triangles belongs to one of them only: the
// triangles run along it in opposite directions, and only one direction is taken.
bool takesTies(const Point &a, const Point &b)
{
    const double dx = b.x - a.x;
    const double dy = b.y - a.y;
    return dy < 0 || (dy == 0 && dx > 0);
}

// The colour of a texel as the shaders see it, before the effect: red, green, blue, alpha
// in 0..1. False where the picture has no pixel (padding), which a correct packet never
// samples.
bool texel(const Shading &shading, int x, int y, double rgba[4])
{
    const QImage &image = *shading.image;
    if (x >= image.width() || y >= image.height())
        return false;
    if (image.format() == QImage::Format_Indexed8) {
        const Ovra::RGBA &entry = shading.palette[image.pixelIndex(x, y)];
        rgba[0] = entry.red / 255.0;
        rgba[1] = entry.green / 255.0;
        rgba[2] = entry.blue / 255.0;
        rgba[3] = entry.alpha / 255.0;
        return true;
    }
    const QRgb pixel = image.pixel(x, y);
    const int alpha = qAlpha(pixel);
    // Stored premultiplied, each colour times alpha divided by 255, truncating.
    rgba[0] = (qRed(pixel) * alpha / 255) / 255.0;
    rgba[1] = (qGreen(pixel) * alpha / 255) / 255.0;
    rgba[2] = (qBlue(pixel) * alpha / 255) / 255.0;
    rgba[3] = alpha / 255.0;
    return true;
}

// Shades and blends one sample into the pixel; a discarded fragment leaves it as it is.
void shadeInto(QRgb &pixel, const Shading &shading, const double in[4])
{
    const bool indexed = shading.image->format() == QImage::Format_Indexed8;
    double c[4] = {in[0], in[1], in[2], shading.masked ? in[3] : 1.0};
    if (c[3] == 0.0)
        return;
    if (shading.effect == 1)
        c[1] = c[2] = c[0];
    const double shift = shading.effect == 2 ? 0.5 : shading.effect == 3 ? -0.5 : 0.0;
    for (int i = 0; i < 3; ++i)
        c[i] += shift;
    // The palette shader scales only alpha by the opacity; the image shader, whose colours
    // are premultiplied, all four.
    const double colourScale = indexed ? 1.0 : shading.opacity;
    double out[4];
    for (int i = 0; i < 3; ++i)
        out[i] = qBound(0.0, c[i] * colourScale, 1.0);
    out[3] = qBound(0.0, c[3] * shading.opacity, 1.0);
    const double sourceFactor = indexed ? out[3] : 1.0;
    const double destination[3] = {qRed(pixel) / 255.0, qGreen(pixel) / 255.0, qBlue(pixel) / 255.0};
    int result[3];
    for (int i = 0; i < 3; ++i)
        result[i] = int(std::lround(qBound(0.0, out[i] * sourceFactor + destination[i] * (1.0 - out[3]), 1.0) * 255));
    pixel = qRgba(result[0], result[1], result[2], 255);
}

void drawTriangle(QImage &target, const Point p[3], const QVector4D uv[3], const Shading &shading)
{
    Point a = p[0], b = p[1], c = p[2];
    QVector4D ua = uv[0], ub = uv[1], uc = uv[2];
    double area = edge(a, b, c.x, c.y);
    if (area == 0)
        return;
    if (area < 0) {
        std::swap(b, c);
        std::swap(ub, uc);
        area = -area;
    }
    const int x0 = qMax(0, int(std::floor(qMin(a.x, qMin(b.x, c.x)))));
    const int x1 = qMin(target.width() - 1, int(std::ceil(qMax(a.x, qMax(b.x, c.x)))));
    const int y0 = qMax(0, int(std::floor(qMin(a.y, qMin(b.y, c.y)))));
    const int y1 = qMin(target.height() - 1, int(std::ceil(qMax(a.y, qMax(b.y, c.y)))));
    const QSize stored = shading.textureSize;
    for (int y = y0; y <= y1; ++y) {
        for (int x = x0; x <= x1; ++x) {
            const double px = x + 0.5, py = y + 0.5;
            const double wa = edge(b, c, px, py), wb = edge(c, a, px, py), wc = edge(a, b, px, py);
            if (wa < 0 || wb < 0 || wc < 0 || (wa == 0 && !takesTies(b, c)) || (wb == 0 && !takesTies(c, a))
                || (wc == 0 && !takesTies(a, b)))
                continue;
            const QVector4D t = (ua * float(wa) + ub * float(wb) + uc * float(wc)) / float(area);
            const double s = double(t.x()) / double(t.w());
            const int tx = int(std::floor(s * stored.width())) % stored.width();
            const int ty = int(std::floor(double(t.y()) * stored.height())) % stored.height();
            double colour[4];
            QRgb *row = reinterpret_cast<QRgb *>(target.scanLine(y));
            if (texel(shading, (tx + stored.width()) % stored.width(), (ty + stored.height()) % stored.height(),
                      colour))
                shadeInto(row[x], shading, colour);
            else
                row[x] = qRgb(255, 0, 255); // a sample from the padding: a visible fault
        }
    }
}

} // namespace

void referenceDraw(QImage &target, const Ovra::Renderer::RenderPacket &packet, const Shading &shading)
{
    Q_ASSERT(target.format() == QImage::Format_RGB32);
    const int count = packet.vertices.size();
    QVector<Point> window(count);
    for (int i = 0; i < count; ++i) {
        const QVector4D clip = packet.matrix * QVector4D(packet.vertices[i].x(), packet.vertices[i].y(), 0, 1);
        const double z = double(clip.z()) / double(clip.w());
        if (z < -1 || z > 1)
            return; // outside the depth range: clipped away whole, as the scene is flat
        window[i] = {(double(clip.x()) / double(clip.w()) + 1) * 0.5 * target.width(),
                     (1 - double(clip.y()) / double(clip.w())) * 0.5 * target.height()};
    }
    auto triangle = [&](int i, int j, int k) {
        const Point p[3] = {window[i], window[j], window[k]};
        const QVector4D uv[3] = {packet.uvs[i], packet.uvs[j], packet.uvs[k]};
        drawTriangle(target, p, uv, shading);
    };
    if (packet.primitive == 0) {
        for (int i = 0; i + 2 < count; i += 3)
            triangle(i, i + 1, i + 2);
    } else if (packet.primitive == 1) {
        for (int i = 0; i + 2 < count; ++i)
            triangle(i, i + 1, i + 2);
    } else {
        for (int i = 1; i + 1 < count; ++i)
            triangle(0, i, i + 1);
    }
}

int largestDifference(const QImage &a, const QImage &b, QPoint *where)
{
    if (a.size() != b.size())
        return -1;
    const QImage left = a.convertToFormat(QImage::Format_RGB32);
    const QImage right = b.convertToFormat(QImage::Format_RGB32);
    int largest = 0;
    for (int y = 0; y < left.height(); ++y) {
        const QRgb *l = reinterpret_cast<const QRgb *>(left.constScanLine(y));
        const QRgb *r = reinterpret_cast<const QRgb *>(right.constScanLine(y));
        for (int x = 0; x < left.width(); ++x) {
            const int d = qMax(qMax(qAbs(qRed(l[x]) - qRed(r[x])), qAbs(qGreen(l[x]) - qGreen(r[x]))),
                               qAbs(qBlue(l[x]) - qBlue(r[x])));
            if (d > largest) {
                largest = d;
                if (where)
                    *where = QPoint(x, y);
            }
        }
    }
    return largest;
}

QString picturePath(const QString &name)
{
    return QCoreApplication::applicationDirPath() + QLatin1Char('/') + name;
}
