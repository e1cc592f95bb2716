#pragma once

#include "foundation/archive.h"
#include "image/imagedata.h"
#include "project/organizable.h"
#include "project/projectfile.h"
#include "project/propertyitem.h"

namespace Ovra {

class Palette;
class Palettes;
class Sprites;

// One image of a sprite container. Its data belongs to the engine's subclass.
class OVRA_EXPORT Sprite : public PropertyItem
{
public:
    // What setImage does with the picture's colours.
    enum PaletteMode { Ignore = 0, OwnPalette = 1, AdaptImage = 2, SwapPalette = 3 };

    Sprite(const Sprite &) = default;

    // "Identifier".
    QStringList propertyNames() const override;

    virtual uint index() const = 0;
    virtual Sprites *parent() const = 0;
    // A copy in the same container.
    virtual Sprite *duplicate() = 0;
    // Crops the picture to its content.
    virtual void crop() = 0;
    // Replaces a true-colour picture by an indexed one with a palette of its own.
    virtual void splitRGB() = 0;
    virtual bool isEmpty() const = 0;
    // The point of the picture that stands on the sprite's axis.
    virtual QPoint axis() const = 0;
    virtual void setAxis(const QPoint &axis) = 0;
    virtual QImage image() const = 0;
    // Size and format, without decoding where the engine can.
    virtual ImageInfo imageProperties() const = 0;
    virtual bool imageIsShared() const = 0;
    virtual void setImage(const QImage &image);
    virtual void setImage(const QImage &image, bool keepAxis, PaletteMode mode, Palette *palette,
                          Archive::ShareMode share) = 0;
    virtual void setImage(const QImage &image, bool keepAxis) = 0;
    virtual Palette *palette() const = 0;
    virtual void setPalette(Palette *palette) = 0;
    // The engine's name of the sprite (group and number, say).
    virtual QVariant identifier() const = 0;
    virtual void setIdentifier(const QVariant &identifier) = 0;

    // The picture laid on a canvas reaching `origin + extent`, with the picture's point
    // `position` on the canvas point `origin`. The picture must fit; nothing is clipped.
    QImage aligned(const QPoint &position, const QPoint &origin, const QPoint &extent) const;

protected:
    Sprite() = default;
    virtual ~Sprite();
};

// The sprites of a file, as an engine keeps them.
class OVRA_EXPORT Sprites : public OrganizableObject, public ProjectFile
{
    Q_OBJECT

public:
    using OrganizableObject::OrganizableObject;

    virtual uint selected() const = 0;
    virtual void setSelected(uint index) = 0;
    virtual Palettes *palettes() const = 0;
    virtual uint count() const = 0;
    virtual Sprite *at(uint index) const = 0;
    virtual Sprite *add(const QVariant &identifier, const QImage &image, Archive::ShareMode share) = 0;
    virtual Sprite *insert(uint index, const QVariant &identifier, const QImage &image, Archive::ShareMode share) = 0;
    virtual void remove(uint index) = 0;
    // From row `from` on, the first sprite of the engine's number `id`, or -1.
    virtual int find(uint from, uint id) const = 0;
    virtual void clear() = 0;
};

// One palette of a container.
class OVRA_EXPORT Palette : public PropertyItem
{
public:
    virtual ~Palette() = default;
    virtual Palettes *parent() const = 0;
    virtual uint index() const = 0;
    // False when the palette has no colours to give.
    virtual bool colorTable(RGBA (&table)[256]) const = 0;
    virtual void setColorTable(const RGBA *table, Archive::ShareMode share) = 0;
    virtual Palette *duplicate() = 0;
};

class OVRA_EXPORT Palettes : public OrganizableObject
{
    Q_OBJECT

public:
    using OrganizableObject::OrganizableObject;

    virtual uint selected() const = 0;
    virtual void setSelected(uint index) = 0;
    virtual Sprites *sprites() const = 0;
    virtual uint count() const = 0;
    virtual Palette *at(uint index) const = 0;
    virtual Palette *add(const RGBA *table, const QVariant &identifier, Archive::ShareMode share) = 0;
    virtual Palette *insert(uint index, const RGBA *table, const QVariant &identifier, Archive::ShareMode share) = 0;
    virtual void remove(uint index) = 0;
    virtual void removeDuplicates() = 0;
    virtual int find(uint from, uint id) const = 0;
    virtual void clear() = 0;
    // Removes the palettes no sprite uses.
    virtual void clearUnused() = 0;
};

} // namespace Ovra
