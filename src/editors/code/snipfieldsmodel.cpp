#include "editors/code/snipfieldsmodel.h"

namespace Ovra {

SnipFieldsModel::SnipFieldsModel(QObject *parent)
    : QAbstractTableModel(parent)
{
}

SnipFieldsModel::~SnipFieldsModel() = default;

void SnipFieldsModel::setFields(const QVector<SnipFieldInfo> &fields)
{
    beginResetModel();
    m_fields = fields;
    endResetModel();
}

SnipFieldInfo SnipFieldsModel::field(int row) const
{
    return m_fields.value(row);
}

int SnipFieldsModel::rowOf(const QString &name) const
{
    for (int i = 0; i < m_fields.size(); ++i) {
        if (m_fields.at(i).name == name)
            return i;
    }
    return -1;
}

void SnipFieldsModel::insertField(int row, const SnipFieldInfo &field)
{
    if (row < 0 || row > m_fields.size())
        return;
    beginInsertRows(QModelIndex(), row, row);
    m_fields.insert(row, field);
    endInsertRows();
}

void SnipFieldsModel::setField(int row, const SnipFieldInfo &field)
{
    if (row < 0 || row >= m_fields.size())
        return;
    m_fields[row] = field;
    emit dataChanged(index(row, 0), index(row, ColumnCount - 1));
}

void SnipFieldsModel::removeField(int row)
{
    if (row < 0 || row >= m_fields.size())
        return;
    beginRemoveRows(QModelIndex(), row, row);
    m_fields.remove(row);
    endRemoveRows();
}

bool SnipFieldsModel::moveField(int row, int step)
{
    const int to = row + (step < 0 ? -1 : 1);
    if (row < 0 || row >= m_fields.size() || to < 0 || to >= m_fields.size())
        return false;
    // Qt's move counts the destination before the move: one further when going down.
    beginMoveRows(QModelIndex(), row, row, QModelIndex(), to > row ? to + 1 : to);
    m_fields.move(row, to);
    endMoveRows();
    return true;
}

int SnipFieldsModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_fields.size();
}

int SnipFieldsModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant SnipFieldsModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_fields.size() || (role != Qt::DisplayRole && role != Qt::ToolTipRole))
        return QVariant();
    const SnipFieldInfo &field = m_fields.at(index.row());
    switch (index.column()) {
    case NameColumn: return field.name;
    case TitleColumn: return field.title;
    case TypeColumn: return field.type;
    default: return QVariant();
    }
}

QVariant SnipFieldsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    switch (section) {
    case NameColumn: return tr("Name");
    case TitleColumn: return tr("Title");
    case TypeColumn: return tr("Type");
    default: return QVariant();
    }
}

} // namespace Ovra
