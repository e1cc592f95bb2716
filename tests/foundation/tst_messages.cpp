#include "foundation/messages.h"
#include "project/projectfile.h"

#include "testinterface.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QtTest>

using namespace Ovra;

namespace {

class NamedFile : public ProjectFile
{
public:
    explicit NamedFile(const QString &name) : m_name(name) {}
    QString fileName() const override { return m_name; }
    bool isEmpty() const override { return true; }
    QList<SearchResult> search(RegExp &, uint) override { return {}; }
    void replace(QList<SearchResult> &, const QString &) override {}
    void free() override { delete this; }
    Messages *fileMessages() const override { return nullptr; }

private:
    QString m_name;
};

} // namespace

class MessagesTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void countsAndLookupByType_data();
    void countsAndLookupByType();
    void listModelData();
    void clear();
    void changeBracketUpdatesOnce();
    void tableConcatenatesFiles();
    void tableFilter();
    void emptyTableStillSignals();
    void iconsWithAndWithoutHost();
    void modelTester();

private:
    void fill(SimpleMessages &messages);
};

void MessagesTest::initTestCase()
{
    qRegisterMetaType<Message>();
}

void MessagesTest::fill(SimpleMessages &messages)
{
    messages.add(Message::Error, "e0", 1, 2);
    messages.add(Message::Warning, "w0", 3, 0);
    messages.add(Message::Error, "e1", 4, 5);
    messages.add(Message::Information, "i0", 6, 0);
    messages.add(Message::Error, "e2", 7, 1);
}

void MessagesTest::countsAndLookupByType_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<uint>("index");
    QTest::addColumn<QString>("text");
    QTest::addColumn<uint>("line");
    QTest::newRow("second error") << int(Message::Error) << 1u << "e1" << 4u;
    QTest::newRow("third error") << int(Message::Error) << 2u << "e2" << 7u;
    QTest::newRow("first warning") << int(Message::Warning) << 0u << "w0" << 3u;
    QTest::newRow("information") << int(Message::Information) << 0u << "i0" << 6u;
    QTest::newRow("all, in list order") << int(Message::All) << 3u << "i0" << 6u;
    // Past the end: the empty message, whose type is All.
    QTest::newRow("past the errors") << int(Message::Error) << 3u << QString() << 0u;
    QTest::newRow("past the warnings") << int(Message::Warning) << 1u << QString() << 0u;
    QTest::newRow("past all") << int(Message::All) << 5u << QString() << 0u;
    QTest::newRow("unknown type") << 7 << 0u << QString() << 0u;
}

void MessagesTest::countsAndLookupByType()
{
    QFETCH(int, type);
    QFETCH(uint, index);
    QFETCH(QString, text);
    QFETCH(uint, line);
    SimpleMessages messages(nullptr);
    fill(messages);
    QCOMPARE(messages.count(Message::Error), 3u);
    QCOMPARE(messages.count(Message::Warning), 1u);
    QCOMPARE(messages.count(Message::Information), 1u);
    QCOMPARE(messages.count(Message::All), 5u);
    const Message message = messages.at(index, Message::Type(type));
    QCOMPARE(message.text, text);
    QCOMPARE(message.line, line);
    if (text.isEmpty()) {
        QCOMPARE(message.type, Message::All);
        QCOMPARE(message.column, 0u);
    }
}

void MessagesTest::listModelData()
{
    SimpleMessages messages(nullptr);
    fill(messages);
    QCOMPARE(messages.rowCount(), 5);
    QCOMPARE(messages.rowCount(messages.index(0)), 0);
    QCOMPARE(messages.data(messages.index(1), Qt::DisplayRole).toString(), QStringLiteral("w0"));
    QVERIFY(!messages.data(QModelIndex(), Qt::DisplayRole).isValid());
    QVERIFY(!messages.data(messages.index(1), Qt::ToolTipRole).isValid());
    QVERIFY(messages.data(messages.index(1), Qt::DecorationRole).canConvert<QIcon>());
}

void MessagesTest::clear()
{
    SimpleMessages messages(nullptr);
    MessageList list(nullptr);
    list.registerMessages(&messages);
    fill(messages);
    QSignalSpy removed(&messages, &QAbstractItemModel::rowsRemoved);
    QSignalSpy updated(&list, &MessageList::updated);
    messages.clear();
    QCOMPARE(removed.count(), 1);
    QCOMPARE(removed.first().at(1).toInt(), 0);
    QCOMPARE(removed.first().at(2).toInt(), 4);
    QCOMPARE(updated.count(), 1);
    QCOMPARE(messages.count(Message::Error), 0u);
    QCOMPARE(list.rowCount(), 0);
    // An empty list clears without a word, not even a table update.
    messages.clear();
    QCOMPARE(removed.count(), 1);
    QCOMPARE(updated.count(), 1);
}

void MessagesTest::changeBracketUpdatesOnce()
{
    SimpleMessages messages(nullptr);
    MessageList list(nullptr);
    list.registerMessages(&messages);
    QSignalSpy updated(&list, &MessageList::updated);
    messages.beginChange();
    messages.beginChange();
    fill(messages);
    messages.clear();
    messages.add(Message::Warning, "late", 9, 9);
    messages.endChange();
    QCOMPARE(updated.count(), 0);
    QCOMPARE(list.rowCount(), 0); // the table still shows the old state
    messages.endChange();
    QCOMPARE(updated.count(), 1);
    QCOMPARE(list.rowCount(), 1);
    QCOMPARE(list.warningCount(), 1u);
    // A bracket with nothing in it still brings the table up to date.
    messages.beginChange();
    messages.endChange();
    QCOMPARE(updated.count(), 2);
}

void MessagesTest::tableConcatenatesFiles()
{
    NamedFile *first = new NamedFile(QStringLiteral("/work/actors/hero.def"));
    NamedFile *second = new NamedFile(QStringLiteral("relative/stage.def"));
    SimpleMessages a(first), b(second);
    MessageList list(nullptr);
    list.registerMessages(&a);
    list.registerMessages(&b);
    QCOMPARE(a.messageList(), &list);
    a.add(Message::Error, "bad token", 10, 3);
    b.add(Message::Warning, "old keyword", 0, 0);
    b.add(Message::Error, "missing value", 41, 7);

    QCOMPARE(list.rowCount(), 3);
    QCOMPARE(list.columnCount(), 3);
    QCOMPARE(list.errorCount(), 2u);
    QCOMPARE(list.warningCount(), 1u);
    const Messages *owner = nullptr;
    QCOMPARE(list.messageAt(2, owner).text, QStringLiteral("missing value"));
    QCOMPARE(owner, &b);
    QCOMPARE(list.data(list.index(0, 0)).toString(), QStringLiteral("bad token"));
    QCOMPARE(list.data(list.index(0, 1)).toString(), QStringLiteral("hero.def"));
    QCOMPARE(list.data(list.index(0, 2)).toInt(), 11);
    QCOMPARE(list.data(list.index(1, 1)).toString(), QStringLiteral("stage.def"));
    QCOMPARE(list.data(list.index(1, 2)).toInt(), 1);
    QVERIFY(!list.data(QModelIndex()).isValid());
    QVERIFY(list.data(list.index(2, 1), Qt::DecorationRole).value<QIcon>().isNull());

    list.unregisterMessages(&a);
    QVERIFY(!a.messageList());
    QCOMPARE(list.rowCount(), 2);
    first->release();
    second->release();
}

void MessagesTest::tableFilter()
{
    SimpleMessages messages(nullptr);
    fill(messages);
    MessageList list(nullptr);
    list.registerMessages(&messages);
    QCOMPARE(list.filter(), Message::All);
    QCOMPARE(list.rowCount(), 5);
    list.setFilter(Message::Error);
    QCOMPARE(list.rowCount(), 3);
    QCOMPARE(list.data(list.index(2, 0)).toString(), QStringLiteral("e2"));
    list.setFilter(Message::Information);
    QCOMPARE(list.rowCount(), 1);
    QCOMPARE(list.data(list.index(0, 0)).toString(), QStringLiteral("i0"));
}

void MessagesTest::emptyTableStillSignals()
{
    MessageList list(nullptr);
    QSignalSpy updated(&list, &MessageList::updated);
    QSignalSpy inserted(&list, &QAbstractItemModel::rowsInserted);
    list.update();
    QCOMPARE(list.rowCount(), 0);
    QCOMPARE(updated.count(), 1);
    QCOMPARE(inserted.count(), 0);
}

void MessagesTest::iconsWithAndWithoutHost()
{
    // Without a host the library's own pictures serve.
    const QIcon error = Message::icon(Message::Error);
    QVERIFY(!error.isNull());
    QCOMPARE(error.pixmap(16).toImage().pixelColor(8, 8),
             QImage(":/ovra_icons/icons/error.png").pixelColor(8, 8));
    QCOMPARE(Message::icon(Message::Warning).pixmap(16).toImage().pixelColor(8, 9),
             QImage(":/ovra_icons/icons/warn.png").pixelColor(8, 9));

    TestInterface host;
    QCOMPARE(host.iconName(Message::icon(Message::Error)), QStringLiteral("error"));
    QCOMPARE(host.iconName(Message::icon(Message::Warning)), QStringLiteral("warning"));
    QCOMPARE(host.iconName(Message::icon(Message::Information)), QStringLiteral("information"));
    // Unknown types and the empty-message type show as errors.
    QCOMPARE(host.iconName(Message::icon(Message::All)), QStringLiteral("error"));
    QCOMPARE(host.iconName(Message::icon(42)), QStringLiteral("error"));
}

void MessagesTest::modelTester()
{
    SimpleMessages a(nullptr), b(nullptr);
    MessageList list(nullptr);
    QAbstractItemModelTester listTester(&a, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QAbstractItemModelTester tableTester(&list, QAbstractItemModelTester::FailureReportingMode::QtTest);
    list.registerMessages(&a);
    list.registerMessages(&b);
    fill(a);
    fill(b);
    a.clear();
    list.setFilter(Message::Warning);
    b.add(Message::Warning, "w", 0, 0);
    list.unregisterMessages(&b);
    QCOMPARE(list.rowCount(), 0);
}

QTEST_MAIN(MessagesTest)
#include "tst_messages.moc"
