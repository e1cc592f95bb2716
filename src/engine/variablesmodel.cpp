#include "engine/variablesmodel.h"

#include "engine/variable.h"

namespace Ovra {

VariablesModel::VariablesModel(QObject *parent)
    : TreeModel(parent)
{
}

VariablesModel::~VariablesModel()
{
    qDeleteAll(m_scopes);
}

void VariablesModel::follow(Variable *variable)
{
    connect(variable, &Variable::valueChanged, this, [this, variable] {
        const QModelIndex value = indexOf(variable, ValueColumn);
        emit dataChanged(value, value, {Qt::DisplayRole});
    });
}

Variable *VariablesModel::addScope(const QString &name)
{
    const int row = m_scopes.size();
    beginInsertRows(QModelIndex(), row, row);
    auto *scope = new Variable(name);
    m_scopes.append(scope);
    endInsertRows();
    return scope;
}

Variable *VariablesModel::addVariable(Variable *owner, const QString &name, const QVariant &value)
{
    if (!owner)
        return nullptr;
    const int row = owner->members().size();
    beginInsertRows(indexOf(owner), row, row);
    auto *variable = new Variable(name, value, owner);
    endInsertRows();
    follow(variable);
    return variable;
}

void VariablesModel::addWatch(Variable *variable)
{
    if (!variable || m_watches.contains(variable))
        return;
    // One of the model's own variables has its place in its scope already.
    const Variable *top = variable;
    while (top->owner())
        top = top->owner();
    if (m_scopes.contains(const_cast<Variable *>(top)))
        return;
    const int row = m_scopes.size() + m_watches.size();
    beginInsertRows(QModelIndex(), row, row);
    m_watches.append(variable);
    endInsertRows();
    follow(variable);
    // A watched variable that ends leaves the list with its row.
    connect(variable, &Variable::ending, this, &VariablesModel::removeWatch);
}

void VariablesModel::removeWatch(Variable *variable)
{
    const int watch = m_watches.indexOf(variable);
    if (watch < 0)
        return;
    const int row = m_scopes.size() + watch;
    beginRemoveRows(QModelIndex(), row, row);
    m_watches.removeAt(watch);
    endRemoveRows();
    disconnect(variable, nullptr, this, nullptr);
}

void VariablesModel::clear()
{
    beginResetModel();
    for (Variable *watch : qAsConst(m_watches))
        disconnect(watch, nullptr, this, nullptr);
    m_watches.clear();
    qDeleteAll(m_scopes);
    m_scopes.clear();
    endResetModel();
}

int VariablesModel::topRow(const Variable *variable) const
{
    const int scope = m_scopes.indexOf(const_cast<Variable *>(variable));
    if (scope >= 0)
        return scope;
    const int watch = m_watches.indexOf(const_cast<Variable *>(variable));
    return watch < 0 ? -1 : m_scopes.size() + watch;
}

Variable *VariablesModel::variable(const QModelIndex &index) const
{
    return index.isValid() && index.model() == this ? static_cast<Variable *>(index.internalPointer()) : nullptr;
}

QModelIndex VariablesModel::indexOf(const Variable *variable, int column) const
{
    if (!variable)
        return QModelIndex();
    // A watched member shows at the top, not under its owner.
    const int top = topRow(variable);
    if (top >= 0)
        return createIndex(top, column, const_cast<Variable *>(variable));
    if (!variable->owner())
        return QModelIndex();
    return createIndex(variable->owner()->indexOf(variable), column, const_cast<Variable *>(variable));
}

QModelIndex VariablesModel::index(int row, int column, const QModelIndex &parent) const
{
    if (!hasIndex(row, column, parent))
        return QModelIndex();
    if (!parent.isValid()) {
        Variable *top = row < m_scopes.size() ? m_scopes.at(row) : m_watches.at(row - m_scopes.size());
        return createIndex(row, column, top);
    }
    return createIndex(row, column, variable(parent)->members().at(row));
}

QModelIndex VariablesModel::parent(const QModelIndex &index) const
{
    const Variable *child = variable(index);
    if (!child || topRow(child) >= 0 || !child->owner())
        return QModelIndex();
    const Variable *owner = child->owner();
    const int top = topRow(owner);
    if (top >= 0)
        return createIndex(top, 0, const_cast<Variable *>(owner));
    return owner->owner() ? createIndex(owner->owner()->indexOf(owner), 0, const_cast<Variable *>(owner)) : QModelIndex();
}

int VariablesModel::rowCount(const QModelIndex &parent) const
{
    if (!parent.isValid())
        return m_scopes.size() + m_watches.size();
    if (parent.column() != 0)
        return 0;
    const Variable *owner = variable(parent);
    return owner ? owner->members().size() : 0;
}

int VariablesModel::columnCount(const QModelIndex &) const
{
    return 2;
}

QVariant VariablesModel::data(const QModelIndex &index, int role) const
{
    const Variable *shown = variable(index);
    if (!shown || (role != Qt::DisplayRole && role != Qt::ToolTipRole))
        return QVariant();
    if (index.column() == NameColumn)
        return shown->name();
    return shown->value().toString();
}

QVariant VariablesModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    switch (section) {
    case NameColumn:
        return tr("Name");
    case ValueColumn:
        return tr("Value");
    default:
        return QVariant();
    }
}

} // namespace Ovra
