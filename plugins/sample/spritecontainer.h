#pragma once

// The sample engine's sprite container: indexed and true-colour sprites, each under a
// group and a number, with the palettes the indexed ones use. FORMATS.md describes the
// file. Every edit is an undo step, or part of one inside beginChange()/endChange().
#include "spritecontainerformat.h"

#include "foundation/messages.h"
#include "image/sprite.h"

#include <QPoint>
#include <QVector>

#include <memory>

class ContainerPalettes;
class SpriteContainer;

// Pixels are immutable once made, so sprites and undo steps hold them together.
using PixelsPointer = std::shared_ptr<const SpritePixels>;

// A palette: 256 entries, its identifier a QPoint of the group (x) and the number (y).
class ContainerPalette : public Ovra::Palette
{
public:
    ContainerPalette(ContainerPalettes *owner, QPoint identifier, const QVector<Ovra::RGBA> &colors);

    QStringList propertyNames() const override;
    QVariant property(const QString &name) const override;
    void setProperty(const QString &name, const QVariant &value) override;
    Ovra::Palettes *parent() const override;
    uint index() const override;
    bool colorTable(Ovra::RGBA (&table)[256]) const override;
    void setColorTable(const Ovra::RGBA *table, Ovra::Archive::ShareMode share) override;
    Ovra::Palette *duplicate() override;

    QPoint identifier() const { return m_identifier; }
    void setIdentifier(const QPoint &identifier);
    QVector<Ovra::RGBA> colors() const { return m_colors; }
    QVector<QRgb> qtColorTable() const;

private:
    friend class ContainerPalettes;
    friend class SpriteContainer;
    ContainerPalettes *m_owner;
    QPoint m_identifier;
    QVector<Ovra::RGBA> m_colors; // always 256
};

// A sprite: its identifier is a QPoint of the group (x) and the number (y); the axis is
// the point of the picture that stands on the sprite's place.
class ContainerSprite : public Ovra::Sprite
{
public:
    ContainerSprite(SpriteContainer *container, QPoint identifier);

    QVariant property(const QString &name) const override;
    void setProperty(const QString &name, const QVariant &value) override;
    uint index() const override;
    Ovra::Sprites *parent() const override;
    // A copy after this one that shares this one's pixels.
    Ovra::Sprite *duplicate() override;
    // Cuts away the transparent border; the axis stays on the same pixel.
    void crop() override;
    // A true-colour sprite becomes indexed over a palette made for it, index 0 transparent.
    void splitRGB() override;
    bool isEmpty() const override { return !m_pixels || m_pixels->isNull(); }
    QPoint axis() const override { return m_axis; }
    void setAxis(const QPoint &axis) override;
    // Null, with a message of the container, for a stream that doesn't unpack to its picture.
    QImage image() const override;
    Ovra::ImageInfo imageProperties() const override;
    bool imageIsShared() const override;
    using Ovra::Sprite::setImage;
    // A picture too large for the file (or null) is not taken. Without keepAxis the axis
    // goes to the middle of the bottom edge. Sharing (Share or AskToShare) takes the
    // pixels of a sprite that has the same ones.
    void setImage(const QImage &image, bool keepAxis, PaletteMode mode, Ovra::Palette *palette,
                  Ovra::Archive::ShareMode share) override;
    void setImage(const QImage &image, bool keepAxis) override;
    Ovra::Palette *palette() const override;
    // Indexed sprites only: the indices stay, the colours come from the palette.
    void setPalette(Ovra::Palette *palette) override;
    QVariant identifier() const override { return m_identifier; }
    void setIdentifier(const QVariant &identifier) override;

    PixelsPointer pixels() const { return m_pixels; }

private:
    friend class SpriteContainer;
    friend class ContainerPalette;
    friend class ContainerPalettes;
    SpriteContainer *m_container;
    QPoint m_identifier;
    QPoint m_axis;
    PixelsPointer m_pixels;
    ContainerPalette *m_palette = nullptr; // set exactly when the pixels are indexed
};

class ContainerPalettes : public Ovra::Palettes
{
    Q_OBJECT

public:
    explicit ContainerPalettes(SpriteContainer *container);
    ~ContainerPalettes() override;

    uint selected() const override { return m_selected; }
    void setSelected(uint index) override;
    Ovra::Sprites *sprites() const override;
    uint count() const override { return uint(m_palettes.size()); }
    Ovra::Palette *at(uint index) const override;
    // A null table gives a palette of transparent black. Sharing gives an equal palette
    // that is there already instead of a new one.
    Ovra::Palette *add(const Ovra::RGBA *table, const QVariant &identifier, Ovra::Archive::ShareMode share) override;
    Ovra::Palette *insert(uint index, const Ovra::RGBA *table, const QVariant &identifier,
                          Ovra::Archive::ShareMode share) override;
    // The sprites that used a removed palette become true colour and look as before.
    void remove(uint index) override;
    // Sprites of a palette equal to an earlier one go to the earlier one.
    void removeDuplicates() override;
    // `id` is the group in the upper 16 bits and the number in the lower.
    int find(uint from, uint id) const override;
    void clear() override;
    void clearUnused() override;

    void move(uint from, uint to) override;
    int compare(uint a, uint b) override;
    void beginChange() override;
    void endChange() override;
    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;

    int indexOf(const ContainerPalette *palette) const { return m_palettes.indexOf(const_cast<ContainerPalette *>(palette)); }
    // An equal palette of this container, or a new one at the end.
    ContainerPalette *findOrAdd(const QVector<Ovra::RGBA> &colors, QPoint identifier);

private:
    friend class ContainerPalette;
    friend class SpriteContainer;
    ContainerPalette *adopt(uint index, ContainerPalette *palette);
    void removeAt(uint index, bool keepLooks);
    void touched();

    SpriteContainer *m_container;
    QList<ContainerPalette *> m_palettes;
    uint m_selected = 0;
};

class SpriteContainer : public Ovra::Sprites
{
    Q_OBJECT

public:
    SpriteContainer();
    ~SpriteContainer() override;

    // The bytes of a container file, and a container from them; false (and the container
    // as it was) for bytes that aren't one, with the reason among the file's messages.
    QByteArray toBytes() const;
    bool fromBytes(const QByteArray &bytes);

    // Project file
    bool fromFile(Ovra::Archive &archive, const QString &name, uint flags, Ovra::JobStats *stats) override;
    bool toFile(Ovra::Archive &archive, const QString &name, uint flags, Ovra::JobStats *stats) override;
    const char *fileExtension() const override { return "osp"; }
    QString fileName() const override { return m_fileName; }
    bool isEmpty() const override { return m_sprites.isEmpty() && m_palettes->count() == 0; }
    bool isModified() const override { return m_undo.size() != m_cleanStep; }
    // The container writes itself whole; nothing keeps it from saving.
    bool canSave() const override { return true; }
    void beginChange() override;
    void endChange() override;
    void undo() override;
    void redo() override;
    bool canUndo() const { return !m_undo.isEmpty(); }
    bool canRedo() const { return !m_redo.isEmpty(); }
    QList<SearchResult> search(Ovra::RegExp &, uint) override { return {}; }
    void replace(QList<SearchResult> &, const QString &) override {}
    void free() override { delete this; }
    Ovra::Messages *fileMessages() const override { return m_messages.get(); }
    QAbstractItemModel *model() override { return this; }

    // Sprites
    uint selected() const override { return m_selected; }
    void setSelected(uint index) override;
    Ovra::Palettes *palettes() const override { return m_palettes.get(); }
    uint count() const override { return uint(m_sprites.size()); }
    Ovra::Sprite *at(uint index) const override;
    // An indexed picture brings its palette (unless an equal one is there); null for a
    // null picture or one too large for the file.
    Ovra::Sprite *add(const QVariant &identifier, const QImage &image, Ovra::Archive::ShareMode share) override;
    Ovra::Sprite *insert(uint index, const QVariant &identifier, const QImage &image,
                         Ovra::Archive::ShareMode share) override;
    void remove(uint index) override;
    // `id` is the group in the upper 16 bits and the number in the lower.
    int find(uint from, uint id) const override;
    // Removes the sprites; the palettes stay.
    void clear() override;

    // Organizable
    void move(uint from, uint to) override;
    int compare(uint a, uint b) override;
    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;

private:
    friend class ContainerSprite;
    friend class ContainerPalette;
    friend class ContainerPalettes;

    struct SpriteState
    {
        QPoint identifier;
        QPoint axis;
        PixelsPointer pixels;
        int palette = -1;
    };
    struct PaletteState
    {
        QPoint identifier;
        QVector<Ovra::RGBA> colors;
    };
    struct State
    {
        QVector<SpriteState> sprites;
        QVector<PaletteState> palettes;
        uint selected = 0;
        uint selectedPalette = 0;
    };

    State state() const;
    void restore(const State &state);
    void touched();
    void spriteChanged(ContainerSprite *sprite);
    ContainerSprite *adopt(uint index, ContainerSprite *sprite);
    bool assign(ContainerSprite *sprite, const QImage &image, bool keepAxis, Ovra::Sprite::PaletteMode mode,
                Ovra::Palette *palette, Ovra::Archive::ShareMode share);
    void setPixels(ContainerSprite *sprite, const SpritePixels &pixels, ContainerPalette *palette,
                   Ovra::Archive::ShareMode share);
    ContainerPalette *ownPalette(Ovra::Palette *palette, QPoint identifier);
    // The sprites of the palette become true colour, looking as before.
    void releasePalette(ContainerPalette *palette);
    // Whether the sprite's stream unpacks to its picture, checked on first use; a damaged
    // one puts "Sprite N doesn't decode: ..." among the file's messages, once.
    bool streamIsSound(const ContainerSprite *sprite) const;

    QList<ContainerSprite *> m_sprites;
    std::unique_ptr<ContainerPalettes> m_palettes;
    QString m_fileName;
    uint m_selected = 0;
    int m_changes = 0;
    bool m_dirty = false; // something changed inside the open bracket
    State m_before;       // the state at the opening of the bracket
    QVector<State> m_undo;
    QVector<State> m_redo;
    int m_cleanStep = 0; // the undo depth of the saved state; -1 when it can't come back
    std::unique_ptr<Ovra::SimpleMessages> m_messages;
};
