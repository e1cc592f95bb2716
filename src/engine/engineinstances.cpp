#include "engine/engineinstances.h"

#include "foundation/interface.h"

#include <QDir>
#include <QIcon>

namespace Ovra {

EngineInstances::EngineInstances(const QString &engineName, QObject *parent)
    : QAbstractListModel(parent)
    , m_path(QStringLiteral("/engines/") + engineName)
{
    if (Interface *host = Interface::instance())
        m_configFileName = host->configPath() + QLatin1Char('/') + engineName + QStringLiteral("_config.xml");
}

EngineInstances::~EngineInstances()
{
    qDeleteAll(m_instances);
}

int EngineInstances::count() const
{
    return m_instances.size();
}

EngineInstances::Info EngineInstances::at(int index) const
{
    return index >= 0 && index < m_instances.size() ? *m_instances.at(index) : Info();
}

void EngineInstances::add(const QString &name, const QString &exe, const QString &params,
                          const QString &icon)
{
    const int row = m_instances.size();
    beginInsertRows(QModelIndex(), row, row);
    m_instances.append(new Info{name, exe, params, icon});
    endInsertRows();
}

void EngineInstances::edit(int index, const QString &name, const QString &exe,
                           const QString &params, const QString &icon)
{
    if (index < 0 || index >= m_instances.size())
        return;
    *m_instances[index] = Info{name, exe, params, icon};
    const QModelIndex changed = this->index(index);
    emit dataChanged(changed, changed);
}

void EngineInstances::remove(int index)
{
    if (index < 0 || index >= m_instances.size())
        return;
    beginRemoveRows(QModelIndex(), index, index);
    delete m_instances.takeAt(index);
    endRemoveRows();
}

void EngineInstances::move(int from, int to)
{
    const int size = m_instances.size();
    if (from < 0 || to < 0 || from >= size || to >= size || from == to)
        return;
    // Qt counts the destination before the move: a row moving down lands before `to + 1`.
    beginMoveRows(QModelIndex(), from, from, QModelIndex(), to > from ? to + 1 : to);
    m_instances.move(from, to);
    endMoveRows();
}

void EngineInstances::clear()
{
    if (m_instances.isEmpty())
        return;
    beginResetModel();
    qDeleteAll(m_instances);
    m_instances.clear();
    endResetModel();
}

int EngineInstances::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_instances.size();
}

QVariant EngineInstances::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_instances.size())
        return QVariant();
    const Info *info = m_instances.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return info->name;
    case Qt::DecorationRole:
        return QIcon(info->icon.isEmpty() ? installDirectory() + QStringLiteral("/icon.png") : info->icon);
    default:
        return QVariant();
    }
}

QString EngineInstances::userDataDirectory() const
{
    Interface *host = Interface::instance();
    return (host ? host->userDataPath() : QDir::currentPath()) + m_path;
}

QString EngineInstances::installDirectory() const
{
    Interface *host = Interface::instance();
    return (host ? host->installPath() : QDir::currentPath()) + m_path;
}

} // namespace Ovra
