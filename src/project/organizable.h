#pragma once

#include "foundation/global.h"

#include <QAbstractListModel>
#include <QList>

namespace Ovra {

// A flat list whose rows the user reorders by dragging: rows can be dragged, and
// dropped between rows, never onto one.
class OVRA_EXPORT OrganizableListModel : public QAbstractListModel
{
    Q_OBJECT

public:
    // The mime type of the model's own drags: the dragged row numbers.
    static const QString RowsMimeType;

    using QAbstractListModel::QAbstractListModel;

    Qt::ItemFlags flags(const QModelIndex &index) const override;
    Qt::DropActions supportedDropActions() const override;
    Qt::DropActions supportedDragActions() const override;
    QStringList mimeTypes() const override;
    QMimeData *mimeData(const QModelIndexList &indexes) const override;
    // Takes only moves of this model's rows; the rows go as a block to the target row,
    // held to the list, by the same moves as the organizer's buttons.
    bool dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                      const QModelIndex &parent) override;

    // True while the moves of a drop run.
    bool isMoveFromDrag() const { return m_moveFromDrag; }

protected:
    // The rows, in ascending order, go as a block to `target`.
    virtual void dropRows(const QList<uint> &rows, uint target) = 0;

private:
    bool m_moveFromDrag = false;
};

// The contract of a reorderable list of a file: animations, sprites, palettes, sounds.
class OVRA_EXPORT OrganizableObject : public OrganizableListModel
{
    Q_OBJECT

public:
    using OrganizableListModel::OrganizableListModel;

    virtual void move(uint from, uint to) = 0;
    // Below 0 when item `a` sorts before item `b`.
    virtual int compare(uint a, uint b) = 0;
    virtual void beginChange() = 0;
    virtual void endChange() = 0;
    // A stable insertion sort by compare(), as one change.
    virtual void autoOrganize();

    // The moves behind the organizer's buttons. The rows (in any order) go as a block
    // to `target`: upwards the first of them lands there, downwards the last. Each
    // runs as one change and returns the first row of the block afterwards; an empty
    // list does nothing.
    uint moveRowsUp(QList<uint> rows, uint target);
    uint moveRowsDown(QList<uint> rows, uint target);

signals:
    void modified();
    void changed(bool modified);

protected:
    void dropRows(const QList<uint> &rows, uint target) override;
};

} // namespace Ovra
