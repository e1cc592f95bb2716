#pragma once

#include "foundation/global.h"

#include <QAbstractListModel>
#include <QAbstractTableModel>
#include <QIcon>
#include <QList>
#include <QVector>
#include <QString>

namespace Ovra {

class MessageList;
class Project;
class ProjectFile;

// One diagnostic of a file.
struct OVRA_EXPORT Message
{
    enum Type {
        Error = 0,
        Warning = 1,
        Information = 2,
        // All types in a query; an empty message in a result.
        All = 3,
    };

    Type type = All;
    uint line = 0; // zero-based
    uint column = 0;
    QString text;

    // The icon of a message type: the host's if there is one, else the library's own.
    static QIcon icon(int type);
};

// The messages of one file, as a list model.
class OVRA_EXPORT Messages : public QAbstractListModel
{
    Q_OBJECT
public:
    using QAbstractListModel::QAbstractListModel;

    virtual ProjectFile *file() const = 0;
    virtual uint count(Message::Type type) const = 0;
    // The index-th message of the type; a message of type All with empty text past the end.
    virtual Message at(uint index, Message::Type type) const = 0;

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

    // The project table this list is registered with, or null.
    MessageList *messageList() const { return m_list; }

private:
    friend class MessageList;
    MessageList *m_list = nullptr;
};

// A plain list of messages, kept in the order they were added.
class OVRA_EXPORT SimpleMessages : public Messages
{
    Q_OBJECT
public:
    explicit SimpleMessages(ProjectFile *file, QObject *parent = nullptr);
    ~SimpleMessages() override;

    ProjectFile *file() const override;
    uint count(Message::Type type) const override;
    Message at(uint index, Message::Type type) const override;

    void add(Message::Type type, const QString &text, uint line, uint column);
    void clear();

    // Brackets a batch: the project table is recounted once, at the outer endChange.
    void beginChange();
    void endChange();

private:
    void updateList();

    ProjectFile *const m_file;
    QList<Message *> m_messages;
    // The messages of each type in list order: the counters, and O(1) look-ups by
    // type for tables that walk thousands of rows.
    QVector<const Message *> m_byType[3];
    uint m_changeDepth = 0;
};

// The messages of all files of a project in one table: message, file, line.
// Rows are not copied; each data() call walks the registered lists.
class OVRA_EXPORT MessageList : public QAbstractTableModel
{
    Q_OBJECT
public:
    explicit MessageList(Project *project, QObject *parent = nullptr);
    ~MessageList() override;

    Project *project() const { return m_project; }

    void registerMessages(Messages *messages);
    void unregisterMessages(Messages *messages);

    Message messageAt(int row, const Messages *&out) const;
    uint errorCount() const { return m_totals[Message::Error]; }
    uint warningCount() const { return m_totals[Message::Warning]; }
    uint informationCount() const { return m_totals[Message::Information]; }

    Message::Type filter() const { return m_filter; }
    void setFilter(Message::Type filter);

    // A full recount: all rows go and come back, and updated() follows in every case.
    void update();

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

signals:
    void updated();

private:
    Project *m_project;
    QList<Messages *> m_lists;
    uint m_totals[3] = {0, 0, 0};
    uint m_rows = 0;
    Message::Type m_filter = Message::All;
};

} // namespace Ovra

Q_DECLARE_METATYPE(Ovra::Message)
