#include "spritecontainer.h"
#include "spritecontainer_p.h"

#include <algorithm>

using namespace Ovra;
using namespace SpriteContainerDetail;

// ---- one palette ---------------------------------------------------------------------

ContainerPalette::ContainerPalette(ContainerPalettes *owner, QPoint identifier, const QVector<RGBA> &colors)
    : m_owner(owner)
    , m_identifier(identifier)
    , m_colors(colors)
{
    m_colors.resize(256);
}

QStringList ContainerPalette::propertyNames() const
{
    return {identifierName()};
}

QVariant ContainerPalette::property(const QString &name) const
{
    return name == identifierName() ? QVariant(m_identifier) : QVariant();
}

void ContainerPalette::setProperty(const QString &name, const QVariant &value)
{
    if (name == identifierName())
        setIdentifier(value.toPoint());
}

Palettes *ContainerPalette::parent() const
{
    return m_owner;
}

uint ContainerPalette::index() const
{
    return uint(m_owner->indexOf(this));
}

bool ContainerPalette::colorTable(RGBA (&table)[256]) const
{
    std::copy(m_colors.cbegin(), m_colors.cend(), table);
    return true;
}

void ContainerPalette::setColorTable(const RGBA *table, Archive::ShareMode)
{
    const QVector<RGBA> colors = colorsOf(table);
    if (!table || colors == m_colors)
        return;
    SpriteContainer *container = m_owner->m_container;
    container->beginChange();
    m_colors = colors;
    const QModelIndex row = m_owner->index(int(index()));
    emit m_owner->dataChanged(row, row);
    m_owner->touched();
    // The pictures of its sprites change colour.
    for (ContainerSprite *sprite : qAsConst(container->m_sprites)) {
        if (sprite->m_palette == this)
            container->spriteChanged(sprite);
    }
    container->endChange();
}

Palette *ContainerPalette::duplicate()
{
    return m_owner->adopt(index() + 1, new ContainerPalette(m_owner, m_identifier, m_colors));
}

void ContainerPalette::setIdentifier(const QPoint &identifier)
{
    const QPoint point = fileIdentifier(identifier);
    if (point == m_identifier)
        return;
    m_owner->beginChange();
    m_identifier = point;
    const QModelIndex row = m_owner->index(int(index()));
    emit m_owner->dataChanged(row, row);
    m_owner->touched();
    m_owner->endChange();
}

QVector<QRgb> ContainerPalette::qtColorTable() const
{
    QVector<QRgb> table;
    table.reserve(256);
    for (const RGBA &entry : m_colors)
        table.append(entry.toQRgb());
    return table;
}

// ---- the palettes ------------------------------------------------------------------------

ContainerPalettes::ContainerPalettes(SpriteContainer *container)
    : m_container(container)
{
}

ContainerPalettes::~ContainerPalettes()
{
    qDeleteAll(m_palettes);
}

void ContainerPalettes::setSelected(uint index)
{
    m_selected = qMin(index, qMax(count(), 1u) - 1);
}

Sprites *ContainerPalettes::sprites() const
{
    return m_container;
}

Palette *ContainerPalettes::at(uint index) const
{
    return index < count() ? m_palettes.at(int(index)) : nullptr;
}

Palette *ContainerPalettes::add(const RGBA *table, const QVariant &identifier, Archive::ShareMode share)
{
    return insert(count(), table, identifier, share);
}

Palette *ContainerPalettes::insert(uint index, const RGBA *table, const QVariant &identifier,
                                   Archive::ShareMode share)
{
    const QVector<RGBA> colors = colorsOf(table);
    if (share != Archive::NoShare) {
        for (ContainerPalette *palette : qAsConst(m_palettes)) {
            if (palette->m_colors == colors)
                return palette;
        }
    }
    return adopt(qMin(index, count()), new ContainerPalette(this, fileIdentifier(identifier), colors));
}

ContainerPalette *ContainerPalettes::adopt(uint index, ContainerPalette *palette)
{
    beginChange();
    beginInsertRows(QModelIndex(), int(index), int(index));
    m_palettes.insert(int(index), palette);
    endInsertRows();
    touched();
    endChange();
    return palette;
}

ContainerPalette *ContainerPalettes::findOrAdd(const QVector<RGBA> &colors, QPoint identifier)
{
    for (ContainerPalette *palette : qAsConst(m_palettes)) {
        if (palette->m_colors == colors)
            return palette;
    }
    return adopt(count(), new ContainerPalette(this, identifier, colors));
}

void ContainerPalettes::remove(uint index)
{
    if (index >= count())
        return;
    beginChange();
    removeAt(index, true);
    endChange();
}

void ContainerPalettes::removeAt(uint index, bool keepLooks)
{
    ContainerPalette *palette = m_palettes.at(int(index));
    if (keepLooks)
        m_container->releasePalette(palette);
    beginRemoveRows(QModelIndex(), int(index), int(index));
    delete m_palettes.takeAt(int(index));
    endRemoveRows();
    setSelected(m_selected);
    touched();
}

void ContainerPalettes::removeDuplicates()
{
    beginChange();
    for (int i = m_palettes.size() - 1; i > 0; --i) {
        ContainerPalette *palette = m_palettes.at(i);
        for (int j = 0; j < i; ++j) {
            ContainerPalette *survivor = m_palettes.at(j);
            if (survivor->m_colors != palette->m_colors)
                continue;
            for (ContainerSprite *sprite : qAsConst(m_container->m_sprites)) {
                if (sprite->m_palette == palette) {
                    sprite->m_palette = survivor;
                    m_container->spriteChanged(sprite);
                }
            }
            removeAt(uint(i), false);
            break;
        }
    }
    endChange();
}

int ContainerPalettes::find(uint from, uint id) const
{
    for (int i = int(from); i < m_palettes.size(); ++i) {
        if (matches(m_palettes.at(i)->m_identifier, id))
            return i;
    }
    return -1;
}

void ContainerPalettes::clear()
{
    if (m_palettes.isEmpty())
        return;
    beginChange();
    for (ContainerPalette *palette : qAsConst(m_palettes))
        m_container->releasePalette(palette);
    beginResetModel();
    qDeleteAll(m_palettes);
    m_palettes.clear();
    m_selected = 0;
    endResetModel();
    touched();
    endChange();
}

void ContainerPalettes::clearUnused()
{
    beginChange();
    for (int i = m_palettes.size() - 1; i >= 0; --i) {
        const ContainerPalette *palette = m_palettes.at(i);
        const auto &sprites = m_container->m_sprites;
        const bool used = std::any_of(sprites.cbegin(), sprites.cend(),
                                      [palette](const ContainerSprite *sprite) { return sprite->m_palette == palette; });
        if (!used)
            removeAt(uint(i), false);
    }
    endChange();
}

void ContainerPalettes::move(uint from, uint to)
{
    if (from >= count() || to >= count() || from == to)
        return;
    beginChange();
    beginMoveRows(QModelIndex(), int(from), int(from), QModelIndex(), int(to > from ? to + 1 : to));
    m_palettes.move(int(from), int(to));
    endMoveRows();
    touched();
    endChange();
}

int ContainerPalettes::compare(uint a, uint b)
{
    return compareIdentifiers(m_palettes.at(int(a))->m_identifier, m_palettes.at(int(b))->m_identifier);
}

void ContainerPalettes::beginChange()
{
    m_container->beginChange();
}

void ContainerPalettes::endChange()
{
    m_container->endChange();
}

void ContainerPalettes::touched()
{
    m_container->touched();
    emit modified();
}

int ContainerPalettes::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_palettes.size();
}

QVariant ContainerPalettes::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_palettes.size() || role != Qt::DisplayRole)
        return QVariant();
    return identifierText(m_palettes.at(index.row())->m_identifier);
}

