#pragma once

#include "foundation/global.h"

#include <QAbstractListModel>
#include <QHash>
#include <QIcon>
#include <QList>
#include <QMetaObject>
#include <QPixmap>
#include <QPointer>

namespace Ovra {

class Sprite;
class Sprites;

// The sprites of a file as a list of small pictures, row for row with the file's own
// list. Thumbnails are drawn when first asked for and kept per sprite until the sprites
// change or update() is called.
class OVRA_EXPORT ThumbnailsModel : public QAbstractListModel
{
    Q_OBJECT
public:
    explicit ThumbnailsModel(QObject *parent = nullptr);
    ~ThumbnailsModel() override;

    // Null shows nothing. The model follows the file's own row changes and lets go of
    // it when it is destroyed.
    void setSprites(Sprites *sprites);
    Sprites *sprites() const;
    Sprite *spriteAt(int row) const;

    // The side of the square thumbnails in pixels.
    void setThumbSize(int size);
    int thumbSize() const { return m_size; }

    // Drops every drawn thumbnail; they are drawn again when the view asks.
    void update();
    int cachedCount() const { return m_cache.size(); }

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

    // The sprite's picture fitted into a `size` square over a checker board (indexed
    // pictures in the colours of their palette, index 0 transparent); small pictures grow
    // by whole factors, so that their pixels stay sharp. A sprite without a picture gives
    // an empty frame.
    static QImage thumbnail(const Sprite *sprite, int size);

private:
    void connectSprites();
    void disconnectSprites();
    void spritesDestroyed();

    QPointer<Sprites> m_sprites;
    QList<QMetaObject::Connection> m_connections;
    mutable QHash<const Sprite *, QIcon> m_cache;
    int m_size = 64;
};

} // namespace Ovra
