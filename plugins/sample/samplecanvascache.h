#pragma once

// What the sample canvas keeps of each sprite it has drawn: the picture as read, its
// texture on the card, and the picture in its palette's colours for the painter. The
// palettes are kept apart, one texture each, shared by the sprites that use them.
#include "render/texture.h"

#include <QImage>
#include <QVector>

#include <memory>
#include <unordered_map>

namespace Ovra {
class Sprite;
}

class SampleCanvasCache
{
public:
    struct PaletteEntry
    {
        QVector<QRgb> colors;
        std::unique_ptr<Ovra::Texture> texture;
        quint64 version = 0; // grows with every change of the colours
        quint64 checked = 0; // the generation the colours were last read in
    };

    struct SpriteEntry
    {
        QImage picture; // Indexed8 or ARGB32; null when the sprite has nothing to show
        const void *paletteKey = nullptr;
        std::unique_ptr<Ovra::Texture> texture;
        quint64 checked = 0;
        // For the painter: the picture in its colours, and the same through an effect.
        QImage shown;
        quint64 shownVersion = 0;
        QImage effected;
        quint8 effect = 0;
        quint64 effectedVersion = 0;
    };

    // Everything goes: sprites came, went or moved.
    void drop();
    // Something may have changed: every entry is read again before it is next used.
    void touch() { ++m_generation; }

    // The entry of the sprite, brought up to date; null for a sprite with no picture.
    SpriteEntry *entry(const Ovra::Sprite *sprite, bool openGL);
    const PaletteEntry *palette(const SpriteEntry &entry) const;
    // The picture for the painter, premultiplied, through the onion effect if any.
    const QImage &picture(SpriteEntry &entry, quint8 effect);
    int count() const { return int(m_sprites.size()); }

private:
    void readPalette(const Ovra::Sprite *sprite, const QImage &image, SpriteEntry &entry, bool openGL);

    std::unordered_map<const Ovra::Sprite *, SpriteEntry> m_sprites;
    std::unordered_map<const void *, PaletteEntry> m_palettes;
    quint64 m_generation = 1;
};
