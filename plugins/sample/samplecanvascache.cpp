#include "samplecanvascache.h"

#include "image/imagedata.h"
#include "image/sprite.h"

#include <QColor>

#include <cstring>

using namespace Ovra;

namespace {

// A texture to make (again): none yet, or its GL name freed while GL was off.
bool wanted(const std::unique_ptr<Texture> &texture, bool openGL)
{
    return openGL && Texture::isOpenGLEnabled() && (!texture || !texture->glId());
}

// Pixels alike, whatever the colour tables say: an indexed picture compares by indices.
bool samePixels(const QImage &a, const QImage &b)
{
    if (a.isNull() || b.isNull() || a.format() != b.format() || a.size() != b.size())
        return false;
    const size_t row = size_t(a.width()) * size_t(a.depth() / 8);
    for (int y = 0; y < a.height(); ++y) {
        if (std::memcmp(a.constScanLine(y), b.constScanLine(y), row) != 0)
            return false;
    }
    return true;
}

QImage withEffect(const QImage &shown, quint8 effect)
{
    // The same arithmetic as the shaders: grey from the red channel, or half the range
    // added or taken away, alpha untouched.
    QImage image = shown.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < image.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            const QRgb p = line[x];
            int r = qRed(p), g = qGreen(p), b = qBlue(p);
            if (effect == 1) {
                g = b = r;
            } else {
                const int shift = effect == 2 ? 128 : -128;
                r = qBound(0, r + shift, 255);
                g = qBound(0, g + shift, 255);
                b = qBound(0, b + shift, 255);
            }
            line[x] = qRgba(r, g, b, qAlpha(p));
        }
    }
    return image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

} // namespace

void SampleCanvasCache::drop()
{
    m_sprites.clear();
    m_palettes.clear();
    ++m_generation;
}

SampleCanvasCache::SpriteEntry *SampleCanvasCache::entry(const Sprite *sprite, bool openGL)
{
    if (!sprite)
        return nullptr;
    SpriteEntry &entry = m_sprites[sprite];
    // Pictures keep their textures across views that change roads; a texture missing
    // where GL wants one is made now.
    if (entry.checked == m_generation) {
        if (!entry.picture.isNull() && wanted(entry.texture, openGL))
            entry.texture.reset(new Texture(entry.picture));
        if (entry.paletteKey && wanted(m_palettes[entry.paletteKey].texture, openGL))
            readPalette(sprite, entry.picture, entry, openGL);
        return entry.picture.isNull() ? nullptr : &entry;
    }
    entry.checked = m_generation;
    QImage image = sprite->isEmpty() ? QImage() : sprite->image();
    if (image.isNull()) {
        entry = SpriteEntry();
        entry.checked = m_generation;
        return nullptr;
    }
    if (image.depth() <= 8)
        image = image.convertToFormat(QImage::Format_Indexed8);
    else
        image = image.convertToFormat(QImage::Format_ARGB32);
    if (!samePixels(entry.picture, image)) {
        entry.picture = image;
        entry.texture.reset();
        entry.shownVersion = 0;
        entry.effectedVersion = 0;
    }
    if (wanted(entry.texture, openGL))
        entry.texture.reset(new Texture(entry.picture));
    if (image.format() == QImage::Format_Indexed8)
        readPalette(sprite, image, entry, openGL);
    else
        entry.paletteKey = nullptr;
    return &entry;
}

// The colours come from the sprite's palette, or from its own picture when it has none;
// the palette's texture goes up again only when they differ from what the card has.
void SampleCanvasCache::readPalette(const Sprite *sprite, const QImage &image, SpriteEntry &entry, bool openGL)
{
    Palette *palette = sprite->palette();
    const void *key = palette ? static_cast<const void *>(palette) : static_cast<const void *>(sprite);
    if (entry.paletteKey != key) {
        entry.paletteKey = key;
        entry.shownVersion = 0;
        entry.effectedVersion = 0;
    }
    PaletteEntry &colors = m_palettes[key];
    if (colors.checked != m_generation) {
        colors.checked = m_generation;
        QVector<QRgb> table(256, 0);
        RGBA entries[256];
        if (palette && palette->colorTable(entries)) {
            for (int i = 0; i < 256; ++i)
                table[i] = entries[i].toQRgb();
        } else {
            const QVector<QRgb> own = image.colorTable();
            std::copy(own.begin(), own.begin() + qMin(256, own.size()), table.begin());
        }
        if (table != colors.colors) {
            colors.colors = table;
            ++colors.version;
            colors.texture.reset();
        }
    }
    if (wanted(colors.texture, openGL)) {
        RGBA entries[256];
        for (int i = 0; i < 256; ++i)
            entries[i] = RGBA(colors.colors.at(i));
        colors.texture.reset(new Texture(entries));
    }
}

const SampleCanvasCache::PaletteEntry *SampleCanvasCache::palette(const SpriteEntry &entry) const
{
    if (!entry.paletteKey)
        return nullptr;
    auto found = m_palettes.find(entry.paletteKey);
    return found == m_palettes.end() ? nullptr : &found->second;
}

const QImage &SampleCanvasCache::picture(SpriteEntry &entry, quint8 effect)
{
    const PaletteEntry *colors = palette(entry);
    // A version of 0 means "not made yet"; true-colour pictures have version 1 for good.
    const quint64 version = colors ? colors->version : 1;
    if (entry.shownVersion != version || entry.shown.isNull()) {
        QImage coloured = entry.picture;
        if (colors)
            coloured.setColorTable(colors->colors);
        entry.shown = coloured.convertToFormat(QImage::Format_ARGB32_Premultiplied);
        entry.shownVersion = version;
        entry.effectedVersion = 0;
    }
    if (effect == 0)
        return entry.shown;
    if (entry.effectedVersion != version || entry.effect != effect) {
        entry.effected = withEffect(entry.shown, effect);
        entry.effect = effect;
        entry.effectedVersion = version;
    }
    return entry.effected;
}
