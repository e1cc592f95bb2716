#pragma once

#include "foundation/global.h"

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <QSizeF>

#include <memory>

namespace Ovra {

struct RGBA;
class TexturePrivate;

// Sprite pixels or a palette on the graphics card. Indexed sprites stay indexed there: the
// shader looks each index up in a 256 x 1 palette texture, so that changing a palette costs
// one small upload and never a new upload of the sprite.
//
// Textures can be made on any thread: the GL work runs in a small hidden context of the
// thread that shares its objects with every other context of the process. A worker thread
// gets its surface from the GUI thread through a blocking call, so the GUI thread must be
// running its event loop, not waiting on that worker, while the worker makes its first
// texture.
class OVRA_EXPORT Texture
{
public:
    enum Type {
        EmptyType = 0,
        PaletteType = 1,
        IndexedType = 2, // up to 8 bits a pixel
        RGBType = 3,     // up to 24 bits a pixel
        RGBAType = 4,    // over 24 bits a pixel, stored premultiplied
    };

    // A picture made ready for the card: rows of textureSize, which can be larger than the
    // picture when the card wants sides that are powers of two.
    struct ImageData
    {
        QSize size;
        QSize textureSize;
        qint32 depth = 0;
        QByteArray data;
    };

    Texture();
    explicit Texture(const QImage &image);
    // From a table of 256 colours.
    explicit Texture(const RGBA *palette);
    explicit Texture(const ImageData &data);
    ~Texture();

    void fromImage(const QImage &image);
    void fromData(const ImageData &data);
    // Null leaves the texture empty.
    void fromPalette(const RGBA *palette);
    void reset();
    void swap(Texture &other);

    // Gets a picture ready for upload; safe on any thread. False for a null picture, which
    // leaves data.data empty.
    static bool dataFromImage(const QImage &image, ImageData &data);
    // Turning GL off frees the GL name of every texture; the pictures are to be uploaded again
    // when it comes back.
    static void setOpenGLEnabled(bool enable);
    static bool isOpenGLEnabled();
    // How many pictures went up to the card since the start, and how many bytes: what a
    // palette swap or a benchmark costs, counted where the upload happens.
    static quint64 uploadCount();
    static quint64 uploadedBytes();

    uint glId() const;
    int width() const;
    int height() const;
    QSize size() const;
    Type type() const;
    QSizeF maximumUV() const;
    bool isValid() const;

private:
    std::unique_ptr<TexturePrivate> d;
    Q_DISABLE_COPY(Texture)
};

} // namespace Ovra
