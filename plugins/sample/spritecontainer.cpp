#include "spritecontainer.h"
#include "spritecontainer_p.h"
#include "wholefile.h"

#include "foundation/archive.h"
#include "image/gifimage.h"

#include <QHash>

#include <algorithm>
#include <cstring>

using namespace Ovra;
using namespace SpriteContainerDetail;

// ---- one sprite ----------------------------------------------------------------------

ContainerSprite::ContainerSprite(SpriteContainer *container, QPoint identifier)
    : m_container(container)
    , m_identifier(identifier)
{
}

QVariant ContainerSprite::property(const QString &name) const
{
    return name == identifierName() ? QVariant(m_identifier) : QVariant();
}

void ContainerSprite::setProperty(const QString &name, const QVariant &value)
{
    if (name == identifierName())
        setIdentifier(value);
}

uint ContainerSprite::index() const
{
    return uint(m_container->m_sprites.indexOf(const_cast<ContainerSprite *>(this)));
}

Sprites *ContainerSprite::parent() const
{
    return m_container;
}

Sprite *ContainerSprite::duplicate()
{
    auto *copy = new ContainerSprite(m_container, m_identifier);
    copy->m_axis = m_axis;
    copy->m_pixels = m_pixels;
    copy->m_palette = m_palette;
    return m_container->adopt(index() + 1, copy);
}

void ContainerSprite::crop()
{
    QImage picture = image();
    QPoint offset;
    if (picture.isNull() || !cropImage(picture, &offset, 0))
        return;
    m_container->beginChange();
    m_axis -= offset;
    m_container->setPixels(this, encodeSpritePixels(picture), m_palette, Archive::NoShare);
    m_container->endChange();
}

void ContainerSprite::splitRGB()
{
    if (isEmpty() || m_pixels->format != SpritePixels::TrueColor)
        return;
    const QImage picture = image();
    if (picture.isNull())
        return;
    // The quantizer keys colours without alpha, so transparent pixels would pull their
    // colour towards transparency: they go to entry 0 and take no part.
    QVector<QRgb> visible;
    for (int y = 0; y < picture.height(); ++y) {
        const auto *row = reinterpret_cast<const QRgb *>(picture.constScanLine(y));
        for (int x = 0; x < picture.width(); ++x) {
            if (qAlpha(row[x]) >= 128)
                visible.append(row[x]);
        }
    }
    ColorQuantizer quantizer(255, 8);
    if (!visible.isEmpty()) {
        QImage colours(visible.size(), 1, QImage::Format_ARGB32);
        memcpy(colours.scanLine(0), visible.constData(), size_t(visible.size()) * sizeof(QRgb));
        quantizer.processImage(colours);
    }
    RGBA found[256];
    quantizer.getColorTable(found);
    // Entry 0 is the transparent colour; the picture's colours take the others.
    QVector<RGBA> colors(256);
    for (int i = 1; i < 256; ++i)
        colors[i] = found[i - 1];
    QImage indexed = picture;
    adaptImageToPalette(indexed, colors.constData());
    // Alpha alone decides transparency: half transparent and more is index 0, anything
    // more opaque stays off it.
    for (int y = 0; y < picture.height(); ++y) {
        const auto *in = reinterpret_cast<const QRgb *>(picture.constScanLine(y));
        uchar *out = indexed.scanLine(y);
        for (int x = 0; x < picture.width(); ++x) {
            if (qAlpha(in[x]) < 128)
                out[x] = 0;
            else if (out[x] == 0)
                out[x] = 1;
        }
    }
    m_container->beginChange();
    ContainerPalette *palette = m_container->m_palettes->findOrAdd(colors, m_identifier);
    m_container->setPixels(this, encodeSpritePixels(indexed), palette, Archive::NoShare);
    m_container->endChange();
}

void ContainerSprite::setAxis(const QPoint &axis)
{
    const QPoint point(qBound(-32768, axis.x(), 32767), qBound(-32768, axis.y(), 32767));
    if (point == m_axis)
        return;
    m_container->beginChange();
    m_axis = point;
    m_container->spriteChanged(this);
    m_container->endChange();
}

QImage ContainerSprite::image() const
{
    if (isEmpty() || !m_container->streamIsSound(this))
        return QImage();
    return decodeSpritePixels(*m_pixels, m_palette ? m_palette->qtColorTable() : QVector<QRgb>());
}

ImageInfo ContainerSprite::imageProperties() const
{
    ImageInfo info;
    if (isEmpty())
        return info;
    info.width = m_pixels->width;
    info.height = m_pixels->height;
    info.format = m_pixels->format == SpritePixels::TrueColor ? QImage::Format_ARGB32 : QImage::Format_Indexed8;
    return info;
}

bool ContainerSprite::imageIsShared() const
{
    if (!m_pixels)
        return false;
    for (const ContainerSprite *other : qAsConst(m_container->m_sprites)) {
        if (other != this && other->m_pixels == m_pixels)
            return true;
    }
    return false;
}

void ContainerSprite::setImage(const QImage &image, bool keepAxis, PaletteMode mode, Palette *palette,
                               Archive::ShareMode share)
{
    m_container->assign(this, image, keepAxis, mode, palette, share);
}

void ContainerSprite::setImage(const QImage &image, bool keepAxis)
{
    m_container->assign(this, image, keepAxis, Ignore, nullptr, Archive::NoShare);
}

Palette *ContainerSprite::palette() const
{
    return m_palette;
}

void ContainerSprite::setPalette(Palette *palette)
{
    if (!m_palette)
        return;
    m_container->beginChange();
    ContainerPalette *own = m_container->ownPalette(palette, m_identifier);
    if (own && own != m_palette) {
        m_palette = own;
        m_container->spriteChanged(this);
    }
    m_container->endChange();
}

void ContainerSprite::setIdentifier(const QVariant &identifier)
{
    const QPoint point = fileIdentifier(identifier);
    if (point == m_identifier)
        return;
    m_container->beginChange();
    m_identifier = point;
    m_container->spriteChanged(this);
    m_container->endChange();
}

// ---- the container -----------------------------------------------------------------------

SpriteContainer::SpriteContainer()
    : m_palettes(std::make_unique<ContainerPalettes>(this))
    , m_messages(std::make_unique<SimpleMessages>(this))
{
}

SpriteContainer::~SpriteContainer()
{
    qDeleteAll(m_sprites);
}

QByteArray SpriteContainer::toBytes() const
{
    SpriteContainerData data;
    for (const ContainerPalette *palette : qAsConst(m_palettes->m_palettes)) {
        data.palettes << SpriteContainerPalette{quint16(palette->m_identifier.x()), quint16(palette->m_identifier.y()),
                                                palette->m_colors};
    }
    // The first sprite holding some pixels writes them; the others link to it.
    QHash<const SpritePixels *, int> owners;
    for (int i = 0; i < m_sprites.size(); ++i) {
        const ContainerSprite *sprite = m_sprites.at(i);
        SpriteContainerSprite record;
        record.group = quint16(sprite->m_identifier.x());
        record.number = quint16(sprite->m_identifier.y());
        record.axisX = qint16(sprite->m_axis.x());
        record.axisY = qint16(sprite->m_axis.y());
        record.palette = sprite->m_palette ? quint16(m_palettes->indexOf(sprite->m_palette)) : 0;
        const SpritePixels *pixels = sprite->m_pixels.get();
        const int owner = owners.value(pixels, -1);
        if (owner >= 0)
            record.source = owner;
        else if (pixels)
            record.pixels = *pixels;
        if (pixels && owner < 0)
            owners.insert(pixels, i);
        data.sprites << record;
    }
    return writeSpriteContainer(data);
}

bool SpriteContainer::fromBytes(const QByteArray &bytes)
{
    m_messages->clear();
    SpriteContainerData data;
    QString reason;
    // Streams are checked as their sprites are first shown: opening shows none.
    if (!readSpriteContainer(bytes, data, reason, StreamCheck::OnFirstUse)) {
        m_messages->add(Message::Error, reason, 0, 0);
        return false;
    }
    State loaded;
    for (const SpriteContainerPalette &palette : qAsConst(data.palettes))
        loaded.palettes << PaletteState{QPoint(palette.group, palette.number), palette.colors};
    for (const SpriteContainerSprite &record : qAsConst(data.sprites)) {
        SpriteState sprite;
        sprite.identifier = QPoint(record.group, record.number);
        sprite.axis = QPoint(record.axisX, record.axisY);
        sprite.pixels = record.source >= 0 ? loaded.sprites.at(record.source).pixels
                                           : std::make_shared<const SpritePixels>(record.pixels);
        if (sprite.pixels->format == SpritePixels::Indexed)
            sprite.palette = record.palette;
        loaded.sprites << sprite;
    }
    restore(loaded);
    m_undo.clear();
    m_redo.clear();
    m_cleanStep = 0;
    return true;
}

bool SpriteContainer::fromFile(Archive &archive, const QString &name, uint flags, JobStats *stats)
{
    QByteArray bytes;
    if (!readWholeFile(archive, name, bytes)) {
        m_messages->clear();
        m_messages->add(Message::Error, QStringLiteral("The sprite container can't be read."), 0, 0);
        return false;
    }
    if (!fromBytes(bytes))
        return false;
    if (!(flags & Foreign))
        m_fileName = name;
    ProjectFile::fromFile(archive, name, flags, stats); // the parent's bookkeeping
    return true;
}

bool SpriteContainer::toFile(Archive &archive, const QString &name, uint flags, JobStats *stats)
{
    if (!writeWholeFile(archive, name, toBytes()))
        return false;
    if (!(flags & Foreign)) {
        m_fileName = name;
        m_cleanStep = m_undo.size();
        emit changed(false);
    }
    ProjectFile::toFile(archive, name, flags, stats); // the parent's bookkeeping
    return true;
}

SpriteContainer::State SpriteContainer::state() const
{
    State state;
    for (const ContainerPalette *palette : qAsConst(m_palettes->m_palettes))
        state.palettes << PaletteState{palette->m_identifier, palette->m_colors};
    for (const ContainerSprite *sprite : qAsConst(m_sprites)) {
        state.sprites << SpriteState{sprite->m_identifier, sprite->m_axis, sprite->m_pixels,
                                     sprite->m_palette ? m_palettes->indexOf(sprite->m_palette) : -1};
    }
    state.selected = m_selected;
    state.selectedPalette = m_palettes->m_selected;
    return state;
}

// Objects are reused by position, so that a sprite or palette held by an editor stays
// valid as long as its row is still there.
void SpriteContainer::restore(const State &state)
{
    beginResetModel();
    m_palettes->beginResetModel();
    QList<ContainerPalette *> &palettes = m_palettes->m_palettes;
    while (palettes.size() > state.palettes.size())
        delete palettes.takeLast();
    while (palettes.size() < state.palettes.size())
        palettes << new ContainerPalette(m_palettes.get(), QPoint(), {});
    for (int i = 0; i < palettes.size(); ++i) {
        palettes.at(i)->m_identifier = state.palettes.at(i).identifier;
        palettes.at(i)->m_colors = state.palettes.at(i).colors;
        palettes.at(i)->m_colors.resize(256);
    }
    while (m_sprites.size() > state.sprites.size())
        delete m_sprites.takeLast();
    while (m_sprites.size() < state.sprites.size())
        m_sprites << new ContainerSprite(this, QPoint());
    for (int i = 0; i < m_sprites.size(); ++i) {
        const SpriteState &from = state.sprites.at(i);
        ContainerSprite *sprite = m_sprites.at(i);
        sprite->m_identifier = from.identifier;
        sprite->m_axis = from.axis;
        sprite->m_pixels = from.pixels;
        sprite->m_palette = from.palette >= 0 ? palettes.at(from.palette) : nullptr;
    }
    m_selected = state.selected;
    m_palettes->m_selected = state.selectedPalette;
    m_palettes->endResetModel();
    endResetModel();
}

void SpriteContainer::beginChange()
{
    if (m_changes++ == 0) {
        m_before = state();
        m_dirty = false;
    }
}

void SpriteContainer::endChange()
{
    if (m_changes == 0 || --m_changes > 0)
        return;
    if (!m_dirty) {
        m_before = State();
        return;
    }
    m_dirty = false;
    // A step made after undoing past the saved state loses the way back to it.
    if (m_cleanStep > m_undo.size())
        m_cleanStep = -1;
    m_undo << m_before;
    m_redo.clear();
    m_before = State();
    emit changed(isModified());
    emit m_palettes->changed(isModified());
}

void SpriteContainer::undo()
{
    if (m_changes > 0 || m_undo.isEmpty())
        return;
    m_redo << state();
    restore(m_undo.takeLast());
    emit modified();
    emit changed(isModified());
    emit m_palettes->changed(isModified());
}

void SpriteContainer::redo()
{
    if (m_changes > 0 || m_redo.isEmpty())
        return;
    m_undo << state();
    restore(m_redo.takeLast());
    emit modified();
    emit changed(isModified());
    emit m_palettes->changed(isModified());
}

void SpriteContainer::touched()
{
    m_dirty = true;
    emit modified();
}

void SpriteContainer::spriteChanged(ContainerSprite *sprite)
{
    const int row = m_sprites.indexOf(sprite);
    if (row >= 0)
        emit dataChanged(index(row), index(row));
    touched();
}

void SpriteContainer::setSelected(uint index)
{
    m_selected = qMin(index, qMax(count(), 1u) - 1);
}

Sprite *SpriteContainer::at(uint index) const
{
    return index < count() ? m_sprites.at(int(index)) : nullptr;
}

Sprite *SpriteContainer::add(const QVariant &identifier, const QImage &image, Archive::ShareMode share)
{
    return insert(count(), identifier, image, share);
}

Sprite *SpriteContainer::insert(uint index, const QVariant &identifier, const QImage &image,
                                Archive::ShareMode share)
{
    if (image.isNull() || image.width() > MaxSpriteSide || image.height() > MaxSpriteSide)
        return nullptr;
    beginChange();
    auto *sprite = new ContainerSprite(this, fileIdentifier(identifier));
    assign(sprite, image, false, Sprite::OwnPalette, nullptr, share);
    adopt(qMin(index, count()), sprite);
    endChange();
    return sprite;
}

ContainerSprite *SpriteContainer::adopt(uint index, ContainerSprite *sprite)
{
    beginChange();
    beginInsertRows(QModelIndex(), int(index), int(index));
    m_sprites.insert(int(index), sprite);
    endInsertRows();
    touched();
    endChange();
    return sprite;
}

void SpriteContainer::remove(uint index)
{
    if (index >= count())
        return;
    beginChange();
    beginRemoveRows(QModelIndex(), int(index), int(index));
    delete m_sprites.takeAt(int(index));
    endRemoveRows();
    setSelected(m_selected);
    touched();
    endChange();
}

int SpriteContainer::find(uint from, uint id) const
{
    for (int i = int(from); i < m_sprites.size(); ++i) {
        if (matches(m_sprites.at(i)->m_identifier, id))
            return i;
    }
    return -1;
}

void SpriteContainer::clear()
{
    if (m_sprites.isEmpty())
        return;
    beginChange();
    beginResetModel();
    qDeleteAll(m_sprites);
    m_sprites.clear();
    m_selected = 0;
    endResetModel();
    touched();
    endChange();
}

void SpriteContainer::move(uint from, uint to)
{
    if (from >= count() || to >= count() || from == to)
        return;
    beginChange();
    beginMoveRows(QModelIndex(), int(from), int(from), QModelIndex(), int(to > from ? to + 1 : to));
    m_sprites.move(int(from), int(to));
    endMoveRows();
    touched();
    endChange();
}

int SpriteContainer::compare(uint a, uint b)
{
    return compareIdentifiers(m_sprites.at(int(a))->m_identifier, m_sprites.at(int(b))->m_identifier);
}

int SpriteContainer::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_sprites.size();
}

QVariant SpriteContainer::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_sprites.size() || role != Qt::DisplayRole)
        return QVariant();
    return identifierText(m_sprites.at(index.row())->m_identifier);
}

bool SpriteContainer::assign(ContainerSprite *sprite, const QImage &image, bool keepAxis,
                             Sprite::PaletteMode mode, Palette *palette, Archive::ShareMode share)
{
    if (image.isNull() || image.width() > MaxSpriteSide || image.height() > MaxSpriteSide)
        return false;
    QImage picture = image;
    if (picture.format() != QImage::Format_Indexed8 && picture.format() != QImage::Format_ARGB32)
        picture = picture.convertToFormat(QImage::Format_ARGB32);
    const bool indexed = picture.format() == QImage::Format_Indexed8;
    beginChange();
    ContainerPalette *use = nullptr;
    switch (mode) {
    case Sprite::AdaptImage:
    case Sprite::SwapPalette:
        use = ownPalette(palette, sprite->m_identifier);
        if (!use)
            use = sprite->m_palette;
        if (!use && !m_palettes->m_palettes.isEmpty())
            use = m_palettes->m_palettes.first();
        // Indices of a true-colour picture can only come from matching the colours.
        if (use && (mode == Sprite::AdaptImage || !indexed))
            adaptImageToPalette(picture, use->m_colors.constData());
        break;
    case Sprite::Ignore:
        if (indexed)
            use = sprite->m_palette;
        break;
    case Sprite::OwnPalette:
        break;
    }
    // An indexed sprite always has a palette: failing any other, its own colours.
    if (picture.format() == QImage::Format_Indexed8 && !use)
        use = m_palettes->findOrAdd(colorsOf(picture), sprite->m_identifier);
    if (!keepAxis)
        sprite->m_axis = QPoint(picture.width() / 2, picture.height());
    setPixels(sprite, encodeSpritePixels(picture), picture.format() == QImage::Format_Indexed8 ? use : nullptr, share);
    endChange();
    return true;
}

void SpriteContainer::setPixels(ContainerSprite *sprite, const SpritePixels &pixels, ContainerPalette *palette,
                                Archive::ShareMode share)
{
    PixelsPointer pointer;
    if (share != Archive::NoShare) {
        for (const ContainerSprite *other : qAsConst(m_sprites)) {
            if (other != sprite && other->m_pixels && *other->m_pixels == pixels) {
                pointer = other->m_pixels;
                break;
            }
        }
    }
    sprite->m_pixels = pointer ? pointer : std::make_shared<const SpritePixels>(pixels);
    sprite->m_palette = palette;
    spriteChanged(sprite);
}

ContainerPalette *SpriteContainer::ownPalette(Palette *palette, QPoint identifier)
{
    if (!palette)
        return nullptr;
    if (palette->parent() == m_palettes.get())
        return static_cast<ContainerPalette *>(palette);
    // Another file's palette: an equal one of ours, or a copy of it.
    RGBA table[256];
    if (!palette->colorTable(table))
        return nullptr;
    const QVariant own = palette->property(identifierName());
    return m_palettes->findOrAdd(colorsOf(table), own.canConvert<QPoint>() ? fileIdentifier(own) : identifier);
}

void SpriteContainer::releasePalette(ContainerPalette *palette)
{
    for (ContainerSprite *sprite : qAsConst(m_sprites)) {
        if (sprite->m_palette != palette)
            continue;
        QImage picture = sprite->image().convertToFormat(QImage::Format_ARGB32);
        // A damaged stream has no looks to keep, and no palette to keep them with: it turns
        // transparent at its size (its message is out, and undo brings the stream back).
        if (picture.isNull()) {
            picture = QImage(sprite->m_pixels->width, sprite->m_pixels->height, QImage::Format_ARGB32);
            picture.fill(Qt::transparent);
        }
        setPixels(sprite, encodeSpritePixels(picture), nullptr, Archive::NoShare);
    }
}

bool SpriteContainer::streamIsSound(const ContainerSprite *sprite) const
{
    const SpritePixels &pixels = *sprite->m_pixels;
    // Told once for the stream, however often its sprites are asked for their picture.
    if (pixels.check != SpritePixels::Unchecked)
        return pixels.check == SpritePixels::Sound;
    QString reason;
    if (spriteStreamIsSound(pixels, reason))
        return true;
    m_messages->add(Message::Error, QStringLiteral("Sprite %1 doesn't decode: %2.").arg(sprite->index()).arg(reason), 0, 0);
    return false;
}
