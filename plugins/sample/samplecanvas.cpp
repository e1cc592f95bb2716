#include "samplecanvas.h"

#include "samplecanvascache.h"

#include "code/contactboxcode.h"
#include "image/sprite.h"

#include <QMatrix4x4>
#include <QPainter>
#include <QSet>
#include <QTransform>

#include <cmath>

using namespace Ovra;

namespace {

const float spriteDepth = -4000.0f;

// Screen placement of a picture of `size` in `rect`, turned about `axis` (a screen point)
// counter-clockwise by `angle` degrees. The painter also mirrors here; GL mirrors by UVs.
QTransform placement(const QRectF &rect, QSize size, double angle, QPointF axis, quint8 flip, bool mirror)
{
    QTransform t;
    t.translate(axis.x(), axis.y());
    t.rotate(-angle);
    t.translate(-axis.x(), -axis.y());
    t.translate(rect.x(), rect.y());
    t.scale(rect.width() / size.width(), rect.height() / size.height());
    if (mirror && (flip & FrameCode::Horizontal)) {
        t.translate(size.width(), 0);
        t.scale(-1, 1);
    }
    if (mirror && (flip & FrameCode::Vertical)) {
        t.translate(0, size.height());
        t.scale(1, -1);
    }
    return t;
}

// The picture's shape in one flat colour, to scale or invert what lies under it.
QImage silhouette(const QImage &shown, const QColor &colour)
{
    QImage shape(shown.size(), QImage::Format_ARGB32_Premultiplied);
    shape.fill(colour);
    QPainter painter(&shape);
    painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
    painter.drawImage(0, 0, shown);
    return shape;
}

// The picture with every channel times `factor`: what a sum is to add, where the painter's
// opacity would mix the clamped sum back with the destination instead.
QImage weighted(const QImage &picture, double factor)
{
    if (factor >= 1.0)
        return picture;
    QImage image = picture.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const int weight = int(std::lround(qMax(0.0, factor) * 256));
    for (int y = 0; y < image.height(); ++y) {
        uchar *line = image.scanLine(y);
        for (int x = 0; x < image.width() * 4; ++x)
            line[x] = uchar((line[x] * weight + 128) >> 8);
    }
    return image;
}

} // namespace

// ---- the sprites of the frames shown ---------------------------------------------------

void SampleFrameSprites::setFrames(const QList<FrameCode *> &frames)
{
    m_shown.clear();
    for (FrameCode *frame : frames) {
        Shown shown;
        const Sprite *sprite = frame ? frame->sprite() : nullptr;
        const QSize size = sprite && !sprite->isEmpty() ? sprite->imageProperties().size() : QSize();
        if (!sprite || size.isEmpty())
            continue;
        shown.sprite = sprite;
        // A negative scale is a mirror image at the scale's size.
        const QPointF scale = frame->scale();
        shown.flip = quint8(frame->flipFlags() & FrameCode::Both);
        if (scale.x() < 0)
            shown.flip ^= FrameCode::Horizontal;
        if (scale.y() < 0)
            shown.flip ^= FrameCode::Vertical;
        shown.angle = frame->angle();
        shown.blend = frame->blend();
        const QPoint axis = sprite->axis();
        shown.info.position = QPointF(frame->offset());
        shown.info.offset = QPointF(shown.flip & FrameCode::Horizontal ? size.width() - axis.x() : axis.x(),
                                    shown.flip & FrameCode::Vertical ? size.height() - axis.y() : axis.y());
        shown.info.size = QSizeF(size);
        shown.info.scaleX = std::abs(scale.x());
        shown.info.scaleY = std::abs(scale.y());
        shown.info.flags = GraphicsRenderer::AnchorOrigin | GraphicsRenderer::WorldUnits;
        m_shown << shown;
    }
}

int SampleFrameSprites::colorIndexAt(uint index, const QPoint &pixel) const
{
    if (index >= count())
        return -1;
    const Shown &shown = m_shown.at(int(index));
    const QImage image = shown.sprite->image();
    if (image.isNull() || image.depth() > 8)
        return -1;
    // The pixel is where it shows; the picture may be mirrored there.
    const int x = shown.flip & FrameCode::Horizontal ? image.width() - 1 - pixel.x() : pixel.x();
    const int y = shown.flip & FrameCode::Vertical ? image.height() - 1 - pixel.y() : pixel.y();
    if (!image.valid(x, y))
        return -1;
    return image.convertToFormat(QImage::Format_Indexed8).pixelIndex(x, y);
}

// ---- the canvas ------------------------------------------------------------------------

SampleCanvas::SampleCanvas(QObject *parent)
    : GraphicsRenderer(parent)
    , m_cache(new SampleCanvasCache)
{
    setSprites(&m_sprites);
}

SampleCanvas::~SampleCanvas()
{
    setContainer(nullptr);
}

void SampleCanvas::setContainer(Sprites *container)
{
    if (m_container == container)
        return;
    for (const QMetaObject::Connection &connection : qAsConst(m_connections))
        disconnect(connection);
    m_connections.clear();
    m_container = container;
    m_cache->drop();
    if (!container)
        return;
    auto rebuilt = [this] { containerRebuilt(); };
    auto changed = [this] { containerChanged(); };
    m_connections << connect(container, &QAbstractItemModel::rowsInserted, this, rebuilt)
                  << connect(container, &QAbstractItemModel::rowsRemoved, this, rebuilt)
                  << connect(container, &QAbstractItemModel::rowsMoved, this, rebuilt)
                  << connect(container, &QAbstractItemModel::modelReset, this, rebuilt)
                  << connect(container, &QAbstractItemModel::layoutChanged, this, rebuilt)
                  << connect(container, &QAbstractItemModel::dataChanged, this, changed)
                  << connect(container, &OrganizableObject::modified, this, changed)
                  << connect(container, &QObject::destroyed, this, [this] {
                         m_sprites.clear();
                         m_cache->drop();
                     });
    if (Palettes *palettes = container->palettes()) {
        m_connections << connect(palettes, &QAbstractItemModel::rowsRemoved, this, rebuilt)
                      << connect(palettes, &QAbstractItemModel::modelReset, this, rebuilt)
                      << connect(palettes, &OrganizableObject::modified, this, changed);
    }
}

Sprites *SampleCanvas::container() const
{
    return m_container;
}

// Pixels or colours may have changed: each sprite is compared again before it is drawn,
// and only what differs goes to the card.
void SampleCanvas::containerChanged()
{
    m_cache->touch();
    update();
}

// Sprites came, went or moved: the textures go, and a shown sprite that left the
// container is no longer shown.
void SampleCanvas::containerRebuilt()
{
    m_cache->drop();
    QSet<const Sprite *> present;
    for (uint i = 0; m_container && i < m_container->count(); ++i)
        present.insert(m_container->at(i));
    for (uint i = 0; i < m_sprites.count(); ++i) {
        if (!present.contains(m_sprites.shown(i).sprite))
            m_sprites.item(i).visible = false;
    }
    update();
}

void SampleCanvas::showFrame(FrameCode *frame)
{
    showFrames(frame ? QList<FrameCode *>{frame} : QList<FrameCode *>());
    for (auto type : {ContactBoxCode::Attack, ContactBoxCode::Collision})
        setContactBoxes(type, frame ? frame->contactBoxes(type) : nullptr);
}

void SampleCanvas::showFrames(const QList<FrameCode *> &frames)
{
    m_sprites.setFrames(frames);
    if (!m_container && m_sprites.count() > 0)
        setContainer(m_sprites.shown(0).sprite->parent());
    update();
}

SampleFrameSprites &SampleCanvas::frameSprites()
{
    return m_sprites;
}

int SampleCanvas::cachedSprites() const
{
    return m_cache->count();
}

// Textures are made in a context of their own, so they are got ready here, before the
// canvas starts its native drawing.
void SampleCanvas::render(QPainter &painter)
{
    if (isOpenGL()) {
        for (uint i = 0; i < m_sprites.count(); ++i) {
            if (m_sprites.item(i).visible)
                m_cache->entry(m_sprites.shown(i).sprite, true);
        }
    }
    GraphicsRenderer::render(painter);
}

void SampleCanvas::renderSprite(QPainter &painter, uint index)
{
    const SampleFrameSprites::Shown &shown = m_sprites.shown(index);
    const QRectF rect = spriteRect(index);
    const QPointF axis = itemScreenPosition(SpriteItem, index);
    paint(painter, shown.sprite, rect, shown.flip, shown.angle, axis, shown.blend, 0, 1.0f);
}

void SampleCanvas::renderOnionSprite(QPainter &painter, const Sprite *sprite, const QRect &rect)
{
    const QPointF axis(rect.x() + sprite->axis().x() * scale().x(), rect.y() + sprite->axis().y() * scale().y());
    paint(painter, sprite, QRectF(rect), 0, 0.0, axis, FrameCode::Blend(), quint8(onionEffect()), onionOpacity());
}

void SampleCanvas::glRenderSprite(uint index)
{
    const SampleFrameSprites::Shown &shown = m_sprites.shown(index);
    const QRectF rect = spriteRect(index);
    const QPointF axis = itemScreenPosition(SpriteItem, index);
    glDraw(shown.sprite, rect, shown.flip, shown.angle, axis, shown.blend, 0, 1.0f);
}

void SampleCanvas::glRenderOnionSprite(const Sprite *sprite, const QRect &rect)
{
    const QPointF axis(rect.x() + sprite->axis().x() * scale().x(), rect.y() + sprite->axis().y() * scale().y());
    glDraw(sprite, QRectF(rect), 0, 0.0, axis, FrameCode::Blend(), quint8(onionEffect()), onionOpacity());
}

void SampleCanvas::glDraw(const Sprite *sprite, const QRectF &rect, quint8 flip, double angle, QPointF axis,
                          const FrameCode::Blend &blend, quint8 effect, float opacity)
{
    SampleCanvasCache::SpriteEntry *entry = m_cache->entry(sprite, true);
    if (!entry || !entry->texture || rect.isEmpty())
        return;
    const SampleCanvasCache::PaletteEntry *colors = m_cache->palette(*entry);
    QMatrix4x4 model(placement(rect, entry->picture.size(), angle, axis, flip, false));
    // A depth that both the on-screen view (at -2000) and the off-screen one (at +2000)
    // have between their near and far planes; the projection is orthographic, so it
    // changes nothing else.
    model(2, 3) = spriteDepth;
    RenderPacket packet;
    if (!glRenderPacket(packet, model, entry->texture.get(), colors ? colors->texture.get() : nullptr, flip))
        return;
    packet.effect = effect;
    // The palette shader gives straight colours, the image shader premultiplied ones.
    const BlendFactor source = colors ? SourceAlpha : One;
    const auto s = float(blend.source), d = float(blend.destination);
    glSetBlend(true);
    switch (blend.mode) {
    case FrameCode::Blend::Addition:
    case FrameCode::Blend::Subtraction:
        // source * S (through the opacity) plus or minus destination * D.
        glSetBlendEquation(blend.mode == FrameCode::Blend::Addition ? BlendAdd : BlendReverseSubtract);
        glBlendColor(d, d, d, d);
        glSetBlendFunction(source, ConstantColor);
        opacity *= s;
        break;
    case FrameCode::Blend::Overlay:
    case FrameCode::Blend::HardLight:
        // Without programmable blending both come to twice the product, which is what
        // they are where the darker layer decides.
        glSetBlendEquation(BlendAdd);
        glSetBlendFunction(DestinationColor, SourceColor);
        break;
    case FrameCode::Blend::Dodge:
        // Brightens the destination in proportion to the source.
        glSetBlendEquation(BlendAdd);
        glSetBlendFunction(DestinationColor, One);
        break;
    case FrameCode::Blend::Opacity:
        opacity *= s;
        glSetBlendEquation(BlendAdd);
        glSetBlendFunction(source, OneMinusSourceAlpha);
        break;
    case FrameCode::Blend::None:
        glSetBlendEquation(BlendAdd);
        glSetBlendFunction(source, OneMinusSourceAlpha);
        break;
    }
    packet.opacity = opacity;
    glDrawImage(packet);
}

void SampleCanvas::paint(QPainter &painter, const Sprite *sprite, const QRectF &rect, quint8 flip, double angle,
                         QPointF axis, const FrameCode::Blend &blend, quint8 effect, float opacity)
{
    SampleCanvasCache::SpriteEntry *entry = m_cache->entry(sprite, false);
    if (!entry || rect.isEmpty())
        return;
    const QImage &picture = m_cache->picture(*entry, effect);
    painter.save();
    painter.setTransform(placement(rect, picture.size(), angle, axis, flip, true), true);
    const double s = qBound(0.0, blend.source, 1.0);
    const double d = qBound(0.0, blend.destination, 1.0);
    auto scaleDestination = [&] {
        if (d < 1.0) {
            painter.setCompositionMode(QPainter::CompositionMode_Multiply);
            painter.drawImage(0, 0, silhouette(picture, QColor::fromRgbF(d, d, d)));
        }
    };
    switch (blend.mode) {
    case FrameCode::Blend::Addition:
        scaleDestination();
        painter.setCompositionMode(QPainter::CompositionMode_Plus);
        painter.drawImage(0, 0, weighted(picture, opacity * s));
        break;
    case FrameCode::Blend::Subtraction: {
        // dst - src is the inverse of (inverse dst + src): a difference against white
        // inverts, and the sum clamps as the subtraction would.
        scaleDestination();
        const QImage white = silhouette(picture, Qt::white);
        painter.setCompositionMode(QPainter::CompositionMode_Difference);
        painter.drawImage(0, 0, white);
        painter.setCompositionMode(QPainter::CompositionMode_Plus);
        painter.drawImage(0, 0, weighted(picture, opacity * s));
        painter.setCompositionMode(QPainter::CompositionMode_Difference);
        painter.drawImage(0, 0, white);
        break;
    }
    case FrameCode::Blend::Overlay:
        painter.setCompositionMode(QPainter::CompositionMode_Overlay);
        painter.drawImage(0, 0, picture);
        break;
    case FrameCode::Blend::HardLight:
        painter.setCompositionMode(QPainter::CompositionMode_HardLight);
        painter.drawImage(0, 0, picture);
        break;
    case FrameCode::Blend::Dodge:
        painter.setCompositionMode(QPainter::CompositionMode_ColorDodge);
        painter.drawImage(0, 0, picture);
        break;
    case FrameCode::Blend::Opacity:
        painter.setOpacity(opacity * s);
        painter.drawImage(0, 0, picture);
        break;
    case FrameCode::Blend::None:
        painter.setOpacity(opacity);
        painter.drawImage(0, 0, picture);
        break;
    }
    painter.restore();
}
