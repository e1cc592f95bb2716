#include "foundation/messages.h"

#include "foundation/interface.h"
#include "project/projectfile.h"

#include <QFileInfo>

namespace Ovra {

QIcon Message::icon(int type)
{
    if (Interface *host = Interface::instance()) {
        switch (type) {
        case Warning: return host->icon(QStringLiteral("warning"));
        case Information: return host->icon(QStringLiteral("information"));
        default: return host->icon(QStringLiteral("error"));
        }
    }
    switch (type) {
    case Warning: return QIcon(QStringLiteral(":/ovra_icons/icons/warn.png"));
    case Information: return QIcon(QStringLiteral(":/ovra_icons/icons/info.png"));
    default: return QIcon(QStringLiteral(":/ovra_icons/icons/error.png"));
    }
}

int Messages::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(count(Message::All));
}

QVariant Messages::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() < 0 || uint(index.row()) >= count(Message::All))
        return QVariant();
    const Message message = at(uint(index.row()), Message::All);
    switch (role) {
    case Qt::DisplayRole:
        return message.text;
    case Qt::DecorationRole:
        return index.column() == 0 ? Message::icon(message.type) : QIcon();
    default:
        return QVariant();
    }
}

SimpleMessages::SimpleMessages(ProjectFile *file, QObject *parent)
    : Messages(parent)
    , m_file(file)
{
}

SimpleMessages::~SimpleMessages()
{
    if (MessageList *list = messageList())
        list->unregisterMessages(this);
    qDeleteAll(m_messages);
}

ProjectFile *SimpleMessages::file() const
{
    return m_file;
}

uint SimpleMessages::count(Message::Type type) const
{
    if (type == Message::All)
        return uint(m_messages.size());
    return uint(type) < 3 ? uint(m_byType[type].size()) : 0;
}

Message SimpleMessages::at(uint index, Message::Type type) const
{
    if (type == Message::All)
        return index < uint(m_messages.size()) ? *m_messages.at(int(index)) : Message();
    if (uint(type) >= 3 || index >= uint(m_byType[type].size()))
        return Message();
    return *m_byType[type].at(int(index));
}

void SimpleMessages::add(Message::Type type, const QString &text, uint line, uint column)
{
    const int row = m_messages.size();
    beginInsertRows(QModelIndex(), row, row);
    auto *message = new Message{type, line, column, text};
    m_messages.append(message);
    endInsertRows();
    if (uint(type) < 3)
        m_byType[type].append(message);
    if (m_changeDepth == 0)
        updateList();
}

void SimpleMessages::clear()
{
    if (m_messages.isEmpty())
        return;
    for (auto &messages : m_byType)
        messages.clear();
    beginRemoveRows(QModelIndex(), 0, m_messages.size() - 1);
    qDeleteAll(m_messages);
    m_messages.clear();
    endRemoveRows();
    if (m_changeDepth == 0)
        updateList();
}

void SimpleMessages::beginChange()
{
    ++m_changeDepth;
}

void SimpleMessages::endChange()
{
    Q_ASSERT(m_changeDepth > 0);
    if (m_changeDepth > 0 && --m_changeDepth == 0)
        updateList();
}

void SimpleMessages::updateList()
{
    if (MessageList *list = messageList())
        list->update();
}

MessageList::MessageList(Project *project, QObject *parent)
    : QAbstractTableModel(parent)
    , m_project(project)
{
}

MessageList::~MessageList()
{
    for (Messages *messages : qAsConst(m_lists))
        messages->m_list = nullptr;
}

void MessageList::registerMessages(Messages *messages)
{
    messages->m_list = this;
    m_lists.append(messages);
    update();
}

void MessageList::unregisterMessages(Messages *messages)
{
    messages->m_list = nullptr;
    m_lists.removeOne(messages);
    update();
}

Message MessageList::messageAt(int row, const Messages *&out) const
{
    out = nullptr;
    if (row < 0)
        return Message();
    uint offset = 0;
    for (const Messages *messages : m_lists) {
        const uint count = messages->count(m_filter);
        if (uint(row) < offset + count) {
            out = messages;
            return messages->at(uint(row) - offset, m_filter);
        }
        offset += count;
    }
    return Message();
}

void MessageList::setFilter(Message::Type filter)
{
    if (filter == m_filter)
        return;
    m_filter = filter;
    update();
}

void MessageList::update()
{
    if (m_rows > 0) {
        beginRemoveRows(QModelIndex(), 0, int(m_rows) - 1);
        m_rows = 0;
        endRemoveRows();
    }
    m_totals[0] = m_totals[1] = m_totals[2] = 0;
    for (const Messages *messages : qAsConst(m_lists)) {
        for (int type = 0; type < 3; ++type)
            m_totals[type] += messages->count(Message::Type(type));
    }
    const uint rows = m_filter == Message::All ? m_totals[0] + m_totals[1] + m_totals[2]
                    : uint(m_filter) < 3       ? m_totals[m_filter]
                                               : 0;
    if (rows > 0) {
        beginInsertRows(QModelIndex(), 0, int(rows) - 1);
        m_rows = rows;
        endInsertRows();
    }
    emit updated();
}

int MessageList::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows);
}

int MessageList::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : 3;
}

QVariant MessageList::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= int(m_rows))
        return QVariant();
    if (role != Qt::DisplayRole && role != Qt::DecorationRole)
        return QVariant();
    const Messages *messages = nullptr;
    const Message message = messageAt(index.row(), messages);
    if (!messages)
        return QVariant();
    if (role == Qt::DecorationRole)
        return index.column() == 0 ? Message::icon(message.type) : QIcon();
    switch (index.column()) {
    case 0:
        return message.text;
    case 1: {
        const ProjectFile *file = messages->file();
        return file ? QFileInfo(file->fileName()).fileName() : QString();
    }
    case 2:
        return int(message.line + 1);
    default:
        return QVariant();
    }
}

} // namespace Ovra
