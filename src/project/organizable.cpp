#include "project/organizable.h"

#include <QDataStream>
#include <QMimeData>

#include <algorithm>

namespace Ovra {

const QString OrganizableListModel::RowsMimeType = QStringLiteral("application/x-ovra-rows");

Qt::ItemFlags OrganizableListModel::flags(const QModelIndex &index) const
{
    if (index.isValid() && !index.parent().isValid() && index.row() < rowCount())
        return Qt::ItemIsSelectable | Qt::ItemIsDragEnabled | Qt::ItemIsEnabled | Qt::ItemNeverHasChildren;
    return Qt::ItemIsDropEnabled;
}

Qt::DropActions OrganizableListModel::supportedDropActions() const
{
    return Qt::MoveAction;
}

Qt::DropActions OrganizableListModel::supportedDragActions() const
{
    return Qt::MoveAction;
}

QStringList OrganizableListModel::mimeTypes() const
{
    return {RowsMimeType};
}

QMimeData *OrganizableListModel::mimeData(const QModelIndexList &indexes) const
{
    QList<quint32> rows;
    for (const QModelIndex &index : indexes) {
        if (index.isValid() && index.model() == this && !rows.contains(quint32(index.row())))
            rows.append(quint32(index.row()));
    }
    std::sort(rows.begin(), rows.end());
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << rows;
    auto *data = new QMimeData;
    data->setData(RowsMimeType, bytes);
    return data;
}

bool OrganizableListModel::dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int,
                                        const QModelIndex &)
{
    if (action != Qt::MoveAction || !data || !data->hasFormat(RowsMimeType))
        return false;
    const int count = rowCount();
    if (count == 0)
        return false;
    const uint target = uint(qMin(qMax(row, 0), count - 1));
    QDataStream stream(data->data(RowsMimeType));
    QList<quint32> read;
    stream >> read;
    QList<uint> rows;
    for (quint32 moved : read) {
        if (moved < uint(count) && !rows.contains(moved))
            rows.append(moved);
    }
    if (stream.status() != QDataStream::Ok || rows.isEmpty())
        return false;
    std::sort(rows.begin(), rows.end());
    m_moveFromDrag = true;
    dropRows(rows, target);
    m_moveFromDrag = false;
    // A view that then asks to remove the dragged rows finds removeRows() refusing.
    return true;
}

void OrganizableObject::dropRows(const QList<uint> &rows, uint target)
{
    if (target <= rows.first())
        moveRowsUp(rows, target);
    else
        moveRowsDown(rows, target);
}

uint OrganizableObject::moveRowsUp(QList<uint> rows, uint target)
{
    if (rows.isEmpty())
        return target;
    std::sort(rows.begin(), rows.end());
    beginChange();
    for (int i = 0; i < rows.size(); ++i) {
        if (rows.at(i) != target + uint(i))
            move(rows.at(i), target + uint(i));
    }
    endChange();
    emit modified();
    return target;
}

uint OrganizableObject::moveRowsDown(QList<uint> rows, uint target)
{
    if (rows.isEmpty())
        return target;
    std::sort(rows.begin(), rows.end());
    beginChange();
    uint to = target;
    for (int i = rows.size() - 1; i >= 0; --i, --to) {
        if (rows.at(i) != to)
            move(rows.at(i), to);
    }
    endChange();
    emit modified();
    return target + 1 - uint(rows.size());
}

void OrganizableObject::autoOrganize()
{
    const int count = rowCount();
    beginChange();
    for (int i = 1; i < count; ++i) {
        for (int j = 0; j < i; ++j) {
            if (compare(uint(i), uint(j)) < 0) {
                move(uint(i), uint(j));
                break;
            }
        }
    }
    endChange();
    emit modified();
}

} // namespace Ovra
