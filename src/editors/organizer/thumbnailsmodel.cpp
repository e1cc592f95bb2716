#include "editors/organizer/thumbnailsmodel.h"

#include "image/imagedata.h"
#include "image/sprite.h"

#include <QPainter>

namespace Ovra {
namespace {

// The picture in a form that paints: indexed ones take their palette's colours where
// the sprite has one, with index 0 always transparent.
QImage paintable(const Sprite *sprite)
{
    QImage picture = sprite->image();
    if (picture.isNull())
        return picture;
    if (picture.format() == QImage::Format_Indexed8) {
        QVector<QRgb> colors = picture.colorTable();
        RGBA table[256];
        const Palette *palette = sprite->palette();
        if (palette && palette->colorTable(table)) {
            colors.resize(256);
            for (int i = 0; i < 256; ++i)
                colors[i] = table[i].toQRgb();
        }
        // A picture without any colours shows its indices as greys.
        if (colors.isEmpty()) {
            for (int i = 0; i < 256; ++i)
                colors << qRgb(i, i, i);
        }
        colors.resize(256);
        colors[0] = qRgba(0, 0, 0, 0);
        picture.setColorTable(colors);
    }
    return picture.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

void paintChecker(QPainter &painter, const QRect &area)
{
    const int cell = 4;
    painter.fillRect(area, QColor(236, 236, 236));
    for (int y = area.top(); y <= area.bottom(); y += cell) {
        for (int x = area.left() + ((y - area.top()) / cell % 2) * cell; x <= area.right(); x += 2 * cell)
            painter.fillRect(QRect(x, y, cell, cell).intersected(area), QColor(200, 200, 200));
    }
}

} // namespace

ThumbnailsModel::ThumbnailsModel(QObject *parent)
    : QAbstractListModel(parent)
{
}

ThumbnailsModel::~ThumbnailsModel()
{
    disconnectSprites();
}

void ThumbnailsModel::setSprites(Sprites *sprites)
{
    beginResetModel();
    disconnectSprites();
    m_cache.clear();
    m_sprites = sprites;
    connectSprites();
    endResetModel();
}

Sprites *ThumbnailsModel::sprites() const
{
    return m_sprites;
}

Sprite *ThumbnailsModel::spriteAt(int row) const
{
    if (!m_sprites || row < 0 || uint(row) >= m_sprites->count())
        return nullptr;
    return m_sprites->at(uint(row));
}

void ThumbnailsModel::setThumbSize(int size)
{
    if (size == m_size || size < 1)
        return;
    m_size = size;
    update();
}

void ThumbnailsModel::update()
{
    m_cache.clear();
    if (rowCount() > 0)
        emit dataChanged(index(0, 0), index(rowCount() - 1, 0), {Qt::DecorationRole, Qt::SizeHintRole});
}

int ThumbnailsModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() || !m_sprites ? 0 : int(m_sprites->count());
}

QVariant ThumbnailsModel::data(const QModelIndex &index, int role) const
{
    const Sprite *sprite = index.isValid() ? spriteAt(index.row()) : nullptr;
    if (!sprite)
        return QVariant();
    switch (role) {
    case Qt::DisplayRole:
        return m_sprites->data(m_sprites->index(index.row(), 0), Qt::DisplayRole);
    case Qt::ToolTipRole: {
        const ImageInfo info = sprite->imageProperties();
        return tr("%1 (%2 x %3)")
            .arg(m_sprites->data(m_sprites->index(index.row(), 0), Qt::DisplayRole).toString())
            .arg(info.width)
            .arg(info.height);
    }
    case Qt::DecorationRole: {
        auto cached = m_cache.constFind(sprite);
        if (cached != m_cache.constEnd())
            return *cached;
        // An icon, so that the view can tint the pictures of the chosen sprites.
        const QIcon icon(QPixmap::fromImage(thumbnail(sprite, m_size)));
        m_cache.insert(sprite, icon);
        return icon;
    }
    default:
        return QVariant();
    }
}

Qt::ItemFlags ThumbnailsModel::flags(const QModelIndex &index) const
{
    if (!index.isValid() || index.row() >= rowCount())
        return Qt::NoItemFlags;
    return Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemNeverHasChildren;
}

QImage ThumbnailsModel::thumbnail(const Sprite *sprite, int size)
{
    QImage canvas(size, size, QImage::Format_ARGB32_Premultiplied);
    canvas.fill(Qt::transparent);
    QPainter painter(&canvas);
    const QImage picture = sprite ? paintable(sprite) : QImage();
    if (picture.isNull()) {
        painter.setPen(QColor(160, 160, 160));
        painter.drawRect(canvas.rect().adjusted(0, 0, -1, -1));
        return canvas;
    }
    QSize fitted = picture.size().scaled(size, size, Qt::KeepAspectRatio);
    Qt::TransformationMode mode = Qt::SmoothTransformation;
    if (picture.width() <= size && picture.height() <= size) {
        const int factor = qMax(1, qMin(size / picture.width(), size / picture.height()));
        fitted = picture.size() * factor;
        mode = Qt::FastTransformation;
    }
    const QRect place(QPoint((size - fitted.width()) / 2, (size - fitted.height()) / 2), fitted);
    paintChecker(painter, place);
    painter.drawImage(place, picture.scaled(fitted, Qt::IgnoreAspectRatio, mode));
    return canvas;
}

void ThumbnailsModel::connectSprites()
{
    if (!m_sprites)
        return;
    Sprites *source = m_sprites;
    // Rows follow the file's one for one; drawn thumbnails of sprites that may be gone
    // are dropped, since a new sprite can take the address of a deleted one.
    m_connections << connect(source, &QObject::destroyed, this, &ThumbnailsModel::spritesDestroyed);
    m_connections << connect(source, &QAbstractItemModel::modelAboutToBeReset, this, [this] {
        beginResetModel();
        m_cache.clear();
    });
    m_connections << connect(source, &QAbstractItemModel::modelReset, this, [this] { endResetModel(); });
    m_connections << connect(source, &QAbstractItemModel::rowsAboutToBeInserted, this,
                             [this](const QModelIndex &, int first, int last) {
                                 beginInsertRows(QModelIndex(), first, last);
                             });
    m_connections << connect(source, &QAbstractItemModel::rowsInserted, this, [this] {
        m_cache.clear();
        endInsertRows();
    });
    m_connections << connect(source, &QAbstractItemModel::rowsAboutToBeRemoved, this,
                             [this](const QModelIndex &, int first, int last) {
                                 beginRemoveRows(QModelIndex(), first, last);
                             });
    m_connections << connect(source, &QAbstractItemModel::rowsRemoved, this, [this] {
        m_cache.clear();
        endRemoveRows();
    });
    m_connections << connect(source, &QAbstractItemModel::rowsAboutToBeMoved, this,
                             [this](const QModelIndex &, int first, int last, const QModelIndex &, int to) {
                                 beginMoveRows(QModelIndex(), first, last, QModelIndex(), to);
                             });
    m_connections << connect(source, &QAbstractItemModel::rowsMoved, this, [this] { endMoveRows(); });
    m_connections << connect(source, &QAbstractItemModel::dataChanged, this,
                             [this](const QModelIndex &from, const QModelIndex &to) {
                                 m_cache.clear();
                                 if (from.isValid() && to.isValid())
                                     emit dataChanged(index(from.row(), 0), index(to.row(), 0));
                             });
    m_connections << connect(source, &QAbstractItemModel::layoutChanged, this, [this] { update(); });
}

void ThumbnailsModel::disconnectSprites()
{
    for (const QMetaObject::Connection &connection : qAsConst(m_connections))
        disconnect(connection);
    m_connections.clear();
}

void ThumbnailsModel::spritesDestroyed()
{
    beginResetModel();
    disconnectSprites();
    m_cache.clear();
    m_sprites = nullptr;
    endResetModel();
}

} // namespace Ovra
