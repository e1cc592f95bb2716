#pragma once

#include "foundation/global.h"

#include <QAbstractItemModel>

namespace Ovra {

// An item model whose items announce their own changes. Trees of model objects
// (project directories, parsed code) insert and remove their rows from inside the
// items, so the row bracket is open to them here.
class OVRA_EXPORT ItemModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    using QAbstractItemModel::QAbstractItemModel;

    void beginInsertItems(const QModelIndex &parent, int first, int last) { beginInsertRows(parent, first, last); }
    void endInsertItems() { endInsertRows(); }
    void beginRemoveItems(const QModelIndex &parent, int first, int last) { beginRemoveRows(parent, first, last); }
    void endRemoveItems() { endRemoveRows(); }
    // Every role of one item may have changed.
    void itemChanged(const QModelIndex &index) { emit dataChanged(index, index, {}); }
};

// A one-column tree.
class OVRA_EXPORT TreeModel : public ItemModel
{
    Q_OBJECT
public:
    using ItemModel::ItemModel;

    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
};

} // namespace Ovra
