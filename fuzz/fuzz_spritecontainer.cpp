#include "spritecontainerformat.h"

#include <cstdint>
#include <cstdlib>

// A sprite container that reads writes back as the very same bytes, and every sprite of it
// decodes to a picture of its stated size; one that doesn't read gives a reason and no data.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), int(size));
    SpriteContainerData container;
    QString reason;
    if (!readSpriteContainer(bytes, container, reason)) {
        if (reason.isEmpty() || !container.sprites.isEmpty() || !container.palettes.isEmpty())
            std::abort();
        return 0;
    }
    if (writeSpriteContainer(container) != bytes)
        std::abort();
    for (const SpriteContainerSprite &sprite : qAsConst(container.sprites)) {
        const SpritePixels &pixels = sprite.source >= 0 ? container.sprites.at(sprite.source).pixels : sprite.pixels;
        QVector<QRgb> table;
        if (pixels.format == SpritePixels::Indexed) {
            for (const Ovra::RGBA &entry : container.palettes.at(sprite.palette).colors)
                table.append(entry.toQRgb());
        }
        const QImage picture = decodeSpritePixels(pixels, table);
        if (picture.isNull() || picture.width() != pixels.width || picture.height() != pixels.height)
            std::abort();
        // Small pictures also go round through the encoder.
        if (qint64(pixels.width) * pixels.height <= 4096
            && decodeSpritePixels(encodeSpritePixels(picture), table) != picture)
            std::abort();
    }
    return 0;
}
