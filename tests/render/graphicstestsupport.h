#pragma once

#include "code/contactboxcode.h"
#include "image/sprite.h"
#include "render/graphicsrenderer.h"
#include "render/texture.h"

#include <QColor>
#include <QImage>
#include <QMap>
#include <QPainter>
#include <QTextBlock>
#include <QVector>

#include <map>
#include <memory>

// A contact box held in memory, as an engine's box line would be, without a document.
class MemoryBox : public Ovra::ContactBoxCode
{
public:
    MemoryBox(BoxType type, const QRect &rect) : ContactBoxCode(QTextBlock(), nullptr), m_type(type), m_rect(rect) {}
    BoxType boxType() const override { return m_type; }
    QRect rect() const override { return m_rect; }
    void setRect(const QRect &rect) override { m_rect = rect; }
    QStringList propertyNames() const override { return {}; }
    QVariant property(const QString &) const override { return QVariant(); }
    void setProperty(const QString &, const QVariant &) override {}

private:
    BoxType m_type;
    QRect m_rect;
};

// The boxes of one type of one frame. Nodes come from a pool that lives as long as the
// process, so removed boxes are only dropped from the list.
class MemoryBoxes : public Ovra::ContactBoxesCode
{
public:
    explicit MemoryBoxes(Ovra::ContactBoxCode::BoxType type) : m_type(type) {}
    Ovra::FrameCode *frame() const override { return nullptr; }
    Ovra::ContactBoxCode::BoxType boxType() const override { return m_type; }
    uint count() const override { return uint(boxes.size()); }
    Ovra::ContactBoxCode *at(uint index) const override { return boxes.value(int(index)); }
    Ovra::ContactBoxCode *append(const QRect &rect) override
    {
        boxes << new MemoryBox(m_type, rect);
        return boxes.last();
    }
    void remove(uint index) override
    {
        if (int(index) < boxes.size())
            boxes.removeAt(int(index));
    }
    void clear() override { boxes.clear(); }

    QList<Ovra::ContactBoxCode *> boxes;

private:
    Ovra::ContactBoxCode::BoxType m_type;
};

// Sprites as solid rectangles of one colour, each with the palette index it "is made of".
class TestSprites : public Ovra::GraphicsRenderer::SpriteProvider
{
public:
    void add(const QPointF &position, const QSizeF &size, const QColor &colour, int paletteIndex,
             const QPointF &offset = QPointF())
    {
        Info info;
        info.position = position;
        info.size = size;
        info.offset = offset;
        infos << info;
        colours << colour;
        indices << paletteIndex;
    }
    uint count() const override { return uint(infos.size()); }
    int colorIndexAt(uint index, const QPoint &pixel) const override
    {
        const Info &info = infos.at(int(index));
        if (pixel.x() < 0 || pixel.y() < 0 || pixel.x() >= info.size.width() || pixel.y() >= info.size.height())
            return -1;
        // The right half of each sprite is made of the next index, so that a capture must
        // find the right pixel, not only the right sprite.
        return indices.at(int(index)) + (pixel.x() >= info.size.width() / 2 ? 1 : 0);
    }
    Info &item(uint index) override { return infos[int(index)]; }

    QVector<Info> infos;
    QVector<QColor> colours;
    QVector<int> indices;
};

// A picture with an axis, for the onion skin.
class TestSprite : public Ovra::Sprite
{
public:
    TestSprite(const QSize &size, const QPoint &axis) : m_size(size), m_axis(axis) {}
    uint index() const override { return 0; }
    Ovra::Sprites *parent() const override { return nullptr; }
    Sprite *duplicate() override { return nullptr; }
    void crop() override {}
    void splitRGB() override {}
    bool isEmpty() const override { return false; }
    QPoint axis() const override { return m_axis; }
    void setAxis(const QPoint &axis) override { m_axis = axis; }
    QImage image() const override { return QImage(m_size, QImage::Format_ARGB32); }
    Ovra::ImageInfo imageProperties() const override
    {
        Ovra::ImageInfo info;
        info.width = quint16(m_size.width());
        info.height = quint16(m_size.height());
        info.format = QImage::Format_ARGB32;
        return info;
    }
    bool imageIsShared() const override { return false; }
    using Sprite::setImage;
    void setImage(const QImage &, bool, PaletteMode, Ovra::Palette *, Ovra::Archive::ShareMode) override {}
    void setImage(const QImage &, bool) override {}
    Ovra::Palette *palette() const override { return nullptr; }
    void setPalette(Ovra::Palette *) override {}
    QVariant identifier() const override { return 0; }
    void setIdentifier(const QVariant &) override {}
    QVariant property(const QString &) const override { return QVariant(); }
    void setProperty(const QString &, const QVariant &) override {}

private:
    QSize m_size;
    QPoint m_axis;
};

// The concrete canvas of the tests: sprites are filled rectangles, drawn with the painter
// on the raster road and as textured packets on OpenGL; the onion frame is a grey one.
class TestCanvas : public Ovra::GraphicsRenderer
{
public:
    using GraphicsRenderer::onionEffect;
    using GraphicsRenderer::onionOpacity;

    void render(QPainter &painter) override
    {
        ++renders;
        GraphicsRenderer::render(painter);
    }

    // Makes the textures of the sprites' colours and of the onion frame. Textures are made
    // in the hidden context of the thread, so this happens before painting, not during it.
    void prepareTextures()
    {
        auto *sprites = static_cast<TestSprites *>(spriteProvider());
        for (int i = 0; sprites && i < sprites->colours.size(); ++i)
            textureOf(sprites->colours.at(i));
        textureOf(onionColour);
    }

    int renders = 0;
    float depth = 0; // the off-screen GL view looks at -4000
    QColor onionColour = QColor(120, 120, 120);

protected:
    void renderSprite(QPainter &painter, uint index) override
    {
        painter.fillRect(spriteRect(index), colourOf(index));
    }
    void renderOnionSprite(QPainter &painter, const Ovra::Sprite *, const QRect &rect) override
    {
        painter.setOpacity(onionOpacity());
        painter.fillRect(rect, onionColour);
        painter.setOpacity(1.0);
    }
    void glRenderSprite(uint index) override { drawPacket(spriteRect(index), colourOf(index), 1.0f, 0); }
    void glRenderOnionSprite(const Ovra::Sprite *, const QRect &rect) override
    {
        drawPacket(QRectF(rect), onionColour, onionOpacity(), quint8(onionEffect()));
    }

private:
    QColor colourOf(uint index) const
    {
        auto *sprites = static_cast<TestSprites *>(spriteProvider());
        return sprites->colours.at(int(index));
    }
    void drawPacket(const QRectF &rect, const QColor &colour, float opacity, quint8 effect)
    {
        const Ovra::Texture *texture = m_textures.count(colour.rgba()) ? m_textures.at(colour.rgba()).get() : nullptr;
        RenderPacket packet;
        QMatrix4x4 model;
        model.translate(float(rect.x()), float(rect.y()), depth);
        model.scale(float(rect.width() / 4.0), float(rect.height() / 4.0));
        if (!glRenderPacket(packet, model, texture, nullptr))
            return;
        packet.opacity = opacity;
        packet.effect = effect;
        glSetBlend(true);
        glSetBlendFunction(One, OneMinusSourceAlpha);
        glDrawImage(packet);
    }

    void textureOf(const QColor &colour)
    {
        std::unique_ptr<Ovra::Texture> &texture = m_textures[colour.rgba()];
        if (!texture) {
            QImage image(4, 4, QImage::Format_ARGB32);
            image.fill(colour);
            texture.reset(new Ovra::Texture(image));
        }
    }

    std::map<QRgb, std::unique_ptr<Ovra::Texture>> m_textures;
};
