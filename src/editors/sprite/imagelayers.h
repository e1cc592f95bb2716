#pragma once

#include "foundation/global.h"

#include <QAbstractListModel>
#include <QList>

namespace Ovra {

class ImageCanvas;
class ImageLayer;

// The layers of a canvas as the layer panel shows them: the first row is the top layer,
// the last one is drawn first. The display and edit roles give the name, the check state
// role (10) the visibility. The model owns its layers.
class OVRA_EXPORT ImageLayers : public QAbstractListModel
{
    Q_OBJECT
public:
    explicit ImageLayers(ImageCanvas *canvas, QObject *parent = nullptr);
    ~ImageLayers() override;

    int count() const { return m_layers.size(); }
    // The layer of a row, or null.
    ImageLayer *at(int row) const { return m_layers.value(row); }
    int indexOf(const ImageLayer *layer) const;
    const QList<ImageLayer *> &layers() const { return m_layers; }

    // The plain list edits that the undo commands are made of. A row out of range is
    // ignored (false, null).
    bool insertLayer(int row, ImageLayer *layer);
    ImageLayer *takeLayer(int row);
    bool moveLayer(int from, int to);
    // Deletes every layer.
    void clear();
    // Tells the views that a layer's name, visibility or pixels changed.
    void layerChanged(const ImageLayer *layer);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    // A new name goes onto the canvas's undo stack; the check state shows or hides.
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

private:
    ImageCanvas *m_canvas;
    QList<ImageLayer *> m_layers;
};

} // namespace Ovra
