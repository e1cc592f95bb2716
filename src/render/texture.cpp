#include "texture.h"

#include "image/imagedata.h"
#include "render/qlocalgl_p.h"

#include <QCoreApplication>
#include <QMutex>
#include <QMutexLocker>
#include <QSet>

#include <cstring>

namespace Ovra {

class TexturePrivate
{
public:
    Texture::Type type = Texture::EmptyType;
    uint glId = 0;
    QSizeF maximumUV = QSizeF(1.0, 1.0);
    QSize size;
};

namespace {

// Every live texture, so that turning GL off can free all their names.
struct TextureList
{
    QMutex mutex;
    QSet<Texture *> textures;
};

Q_GLOBAL_STATIC(TextureList, textureList)

void enlist(Texture *texture)
{
    QMutexLocker lock(&textureList->mutex);
    textureList->textures.insert(texture);
}

void delist(Texture *texture)
{
    if (textureList.isDestroyed())
        return;
    QMutexLocker lock(&textureList->mutex);
    textureList->textures.remove(texture);
}

int nextPowerOfTwo(int n)
{
    quint32 v = quint32(n) - 1;
    v |= v >> 1;
    v |= v >> 2;
    v |= v >> 4;
    v |= v >> 8;
    v |= v >> 16;
    return int(v + 1);
}

Texture::Type typeOfDepth(int depth)
{
    if (depth <= 0)
        return Texture::EmptyType;
    if (depth <= 8)
        return Texture::IndexedType;
    return depth <= 24 ? Texture::RGBType : Texture::RGBAType;
}

// The picture in a form whose rows can be copied as they are: indices of one byte, RGB of
// three, or 32-bit words read as B, G, R, A bytes in memory.
QImage uploadable(const QImage &image)
{
    const int depth = image.depth();
    if (depth < 8)
        return image.convertToFormat(QImage::Format_Indexed8);
    if (depth > 8 && depth < 24)
        return image.convertToFormat(QImage::Format_RGB888);
    if (depth == 24 && image.format() != QImage::Format_RGB888)
        return image.convertToFormat(QImage::Format_RGB888);
    if (depth > 24 && image.format() != QImage::Format_ARGB32 && image.format() != QImage::Format_RGB32)
        return image.convertToFormat(QImage::Format_ARGB32);
    return image;
}

// Image textures are kept premultiplied, as the image shader blends them.
void copyPremultiplied(const QImage &image, Texture::ImageData &data)
{
    const int stride = data.textureSize.width() * 4;
    for (int y = 0; y < image.height(); ++y) {
        const uchar *in = image.constScanLine(y);
        auto *out = reinterpret_cast<uchar *>(data.data.data()) + y * stride;
        for (int x = 0; x < image.width(); ++x, in += 4, out += 4) {
            const uint alpha = in[3];
            out[0] = uchar(in[2] * alpha / 255);
            out[1] = uchar(in[1] * alpha / 255);
            out[2] = uchar(in[0] * alpha / 255);
            out[3] = uchar(alpha);
        }
    }
}

void copyRows(const QImage &image, Texture::ImageData &data, int bytesPerPixel)
{
    const int stride = data.textureSize.width() * bytesPerPixel;
    const int rowBytes = image.width() * bytesPerPixel;
    for (int y = 0; y < image.height(); ++y)
        std::memcpy(data.data.data() + y * stride, image.constScanLine(y), size_t(rowBytes));
}

} // namespace

Texture::Texture()
    : d(new TexturePrivate)
{
    enlist(this);
}

Texture::Texture(const QImage &image)
    : Texture()
{
    fromImage(image);
}

Texture::Texture(const RGBA *palette)
    : Texture()
{
    fromPalette(palette);
}

Texture::Texture(const ImageData &data)
    : Texture()
{
    fromData(data);
}

Texture::~Texture()
{
    delist(this);
    reset();
}

bool Texture::dataFromImage(const QImage &original, ImageData &data)
{
    const QImage image = original.isNull() ? original : uploadable(original);
    data.depth = image.depth();
    data.size = image.size();
    data.textureSize = image.size();
    if (image.isNull()) {
        data.depth = 0;
        data.data.clear();
        return false;
    }
    if (!QLocalGL::nonPowerOfTwo())
        data.textureSize = QSize(nextPowerOfTwo(image.width()), nextPowerOfTwo(image.height()));
    const int bytesPerPixel = data.depth / 8;
    data.data.resize(bytesPerPixel * data.textureSize.width() * data.textureSize.height());
    if (data.depth > 24)
        copyPremultiplied(image, data);
    else
        copyRows(image, data, bytesPerPixel);
    return true;
}

void Texture::fromImage(const QImage &image)
{
    ImageData data;
    dataFromImage(image, data);
    fromData(data);
}

void Texture::fromData(const ImageData &data)
{
    if (QLocalGL::enabled()) {
        if (QLocalGL *gl = QLocalGL::forThread())
            gl->fromData(&data, &d->glId);
    }
    const bool empty = data.data.isEmpty() || data.size.isEmpty() || data.textureSize.isEmpty();
    d->size = empty ? QSize() : data.size;
    d->type = empty ? EmptyType : typeOfDepth(data.depth);
    d->maximumUV = empty ? QSizeF(1.0, 1.0)
                         : QSizeF(qreal(data.size.width()) / data.textureSize.width(),
                                  qreal(data.size.height()) / data.textureSize.height());
}

void Texture::fromPalette(const RGBA *palette)
{
    if (!palette) {
        reset();
        return;
    }
    if (QLocalGL::enabled()) {
        if (QLocalGL *gl = QLocalGL::forThread())
            gl->fromPalette(palette, &d->glId);
    }
    d->maximumUV = QSizeF(1.0, 1.0);
    d->size = QSize(256, 1);
    d->type = PaletteType;
}

void Texture::reset()
{
    if (d->glId) {
        if (QLocalGL *gl = QLocalGL::forThread())
            gl->reset(&d->glId);
    }
    d->type = EmptyType;
    d->size = QSize();
    d->maximumUV = QSizeF(1.0, 1.0);
}

void Texture::swap(Texture &other)
{
    QMutexLocker lock(&textureList->mutex);
    d.swap(other.d);
}

void Texture::setOpenGLEnabled(bool enable)
{
    if (!enable) {
        QMutexLocker lock(&textureList->mutex);
        for (Texture *texture : qAsConst(textureList->textures)) {
            if (!texture->d->glId)
                continue;
            if (QLocalGL *gl = QLocalGL::forThread())
                gl->reset(&texture->d->glId);
            texture->d->glId = 0;
        }
    }
    QLocalGL::setEnabled(enable);
    if (!QCoreApplication::testAttribute(Qt::AA_UseOpenGLES) && !enable) {
        // The raster road keeps pictures in memory: nothing to gain from padding them.
        QLocalGL::setNonPowerOfTwo(true);
        return;
    }
    QLocalGL::forThread();
}

bool Texture::isOpenGLEnabled()
{
    return QLocalGL::enabled();
}

quint64 Texture::uploadCount()
{
    return QLocalGL::uploads();
}

quint64 Texture::uploadedBytes()
{
    return QLocalGL::uploadedBytes();
}

uint Texture::glId() const
{
    return d->glId;
}

int Texture::width() const
{
    return d->size.width();
}

int Texture::height() const
{
    return d->size.height();
}

QSize Texture::size() const
{
    return d->size;
}

Texture::Type Texture::type() const
{
    return d->type;
}

QSizeF Texture::maximumUV() const
{
    return d->maximumUV;
}

bool Texture::isValid() const
{
    return d->glId != 0;
}

} // namespace Ovra
