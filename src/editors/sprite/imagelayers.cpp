#include "editors/sprite/imagelayers.h"

#include "editors/sprite/imagecanvas.h"
#include "editors/sprite/imagelayer.h"

namespace Ovra {

ImageLayers::ImageLayers(ImageCanvas *canvas, QObject *parent)
    : QAbstractListModel(parent)
    , m_canvas(canvas)
{
}

ImageLayers::~ImageLayers()
{
    qDeleteAll(m_layers);
}

int ImageLayers::indexOf(const ImageLayer *layer) const
{
    for (int i = 0; i < m_layers.size(); ++i) {
        if (m_layers.at(i) == layer)
            return i;
    }
    return -1;
}

bool ImageLayers::insertLayer(int row, ImageLayer *layer)
{
    if (!layer || row < 0 || row > m_layers.size() || m_layers.contains(layer))
        return false;
    beginInsertRows(QModelIndex(), row, row);
    m_layers.insert(row, layer);
    endInsertRows();
    if (m_canvas)
        emit m_canvas->changed();
    return true;
}

ImageLayer *ImageLayers::takeLayer(int row)
{
    if (row < 0 || row >= m_layers.size())
        return nullptr;
    beginRemoveRows(QModelIndex(), row, row);
    ImageLayer *layer = m_layers.takeAt(row);
    endRemoveRows();
    if (m_canvas)
        emit m_canvas->changed();
    return layer;
}

bool ImageLayers::moveLayer(int from, int to)
{
    if (from < 0 || from >= m_layers.size() || to < 0 || to >= m_layers.size() || from == to)
        return false;
    // Qt counts the destination before the move: one further when going down.
    beginMoveRows(QModelIndex(), from, from, QModelIndex(), to > from ? to + 1 : to);
    m_layers.move(from, to);
    endMoveRows();
    if (m_canvas)
        emit m_canvas->changed();
    return true;
}

void ImageLayers::clear()
{
    if (m_layers.isEmpty())
        return;
    beginResetModel();
    const QList<ImageLayer *> layers = m_layers;
    m_layers.clear();
    endResetModel();
    qDeleteAll(layers);
}

void ImageLayers::layerChanged(const ImageLayer *layer)
{
    const int row = indexOf(layer);
    if (row >= 0)
        emit dataChanged(index(row), index(row));
}

int ImageLayers::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_layers.size();
}

QVariant ImageLayers::data(const QModelIndex &index, int role) const
{
    const ImageLayer *layer = index.isValid() ? at(index.row()) : nullptr;
    if (!layer)
        return QVariant();
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return layer->name();
    case Qt::CheckStateRole:
        return layer->isVisible() ? Qt::Checked : Qt::Unchecked;
    default:
        return QVariant();
    }
}

bool ImageLayers::setData(const QModelIndex &index, const QVariant &value, int role)
{
    ImageLayer *layer = index.isValid() ? at(index.row()) : nullptr;
    if (!layer)
        return false;
    if (role == Qt::EditRole) {
        if (m_canvas)
            return m_canvas->renameLayer(index.row(), value.toString());
        layer->setName(value.toString());
        return true;
    }
    if (role == Qt::CheckStateRole) {
        layer->setVisible(value.toInt() == Qt::Checked);
        return true;
    }
    return false;
}

Qt::ItemFlags ImageLayers::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    return Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemIsEditable | Qt::ItemIsUserCheckable;
}

} // namespace Ovra
