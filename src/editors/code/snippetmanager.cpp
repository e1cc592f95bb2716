#include "editors/code/snippetmanager.h"

#include <QDir>

// A first cut: the list of snippet files. Reading them and the form come with the dialogs.

namespace Ovra {

SnippetManager::SnippetManager(QObject *parent)
    : QAbstractListModel(parent)
{
}

SnippetManager::~SnippetManager() = default;

void SnippetManager::load(const QString &directory)
{
    beginResetModel();
    m_directory = directory;
    m_names.clear();
    const QStringList files = QDir(directory).entryList({QStringLiteral("*.xml")}, QDir::Files, QDir::Name);
    for (const QString &file : files)
        m_names << file.chopped(4);
    endResetModel();
}

QString SnippetManager::directory() const
{
    return m_directory;
}

int SnippetManager::count() const
{
    return m_names.size();
}

QString SnippetManager::name(int row) const
{
    return m_names.value(row);
}

QString SnippetManager::title(int row) const
{
    return tr(qPrintable(name(row)));
}

QString SnippetManager::fileName(int row) const
{
    return row >= 0 && row < m_names.size() ? m_directory + QLatin1Char('/') + m_names.at(row) + QLatin1String(".xml")
                                            : QString();
}

QString SnippetManager::fillIn(int, QWidget *)
{
    return QString();
}

int SnippetManager::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_names.size();
}

QVariant SnippetManager::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_names.size() || role != Qt::DisplayRole)
        return QVariant();
    return title(index.row());
}

} // namespace Ovra
