#include "editors/organizer/organizereditor.h"
#include "project/organizable.h"

#include "held.h"
#include "scriptedanswerer.h"
#include "spritecontainer.h"
#include "testinterface.h"

#include <QAbstractItemModelTester>
#include <QAction>
#include <QListView>
#include <QMimeData>
#include <QScrollBar>
#include <QSignalSpy>
#include <QToolButton>
#include <QtTest>

#include <algorithm>

using namespace Ovra;

namespace {

// A list of (key, tag) pairs ordered by key alone, so that a sort's stability shows in
// the tags. It counts its change brackets and how deep they went.
class KeyList : public OrganizableObject
{
    Q_OBJECT
public:
    QList<QPair<int, int>> items;
    int brackets = 0;
    int depth = 0;
    int deepest = 0;

    void move(uint from, uint to) override
    {
        QVERIFY2(depth > 0, "a move outside a change bracket");
        beginMoveRows(QModelIndex(), int(from), int(from), QModelIndex(), int(to > from ? to + 1 : to));
        items.move(int(from), int(to));
        endMoveRows();
    }
    int compare(uint a, uint b) override { return items.at(int(a)).first - items.at(int(b)).first; }
    void beginChange() override
    {
        if (depth++ == 0)
            ++brackets;
        deepest = qMax(deepest, depth);
    }
    void endChange() override { --depth; }
    int rowCount(const QModelIndex &parent = QModelIndex()) const override
    {
        return parent.isValid() ? 0 : items.size();
    }
    QVariant data(const QModelIndex &index, int role) const override
    {
        if (role != Qt::DisplayRole || !index.isValid() || index.row() >= items.size())
            return QVariant();
        return QStringLiteral("%1.%2").arg(items.at(index.row()).first).arg(items.at(index.row()).second);
    }
    bool removeRows(int row, int count, const QModelIndex &parent = QModelIndex()) override
    {
        if (parent.isValid() || row < 0 || count < 1 || row + count > items.size())
            return false;
        beginRemoveRows(QModelIndex(), row, row + count - 1);
        for (int i = 0; i < count; ++i)
            items.removeAt(row);
        endRemoveRows();
        return true;
    }
    QList<int> tags() const
    {
        QList<int> result;
        for (const auto &item : items)
            result << item.second;
        return result;
    }
};

// Keys 0, 1, 2 ... with the tag equal to the key: the tags show the order.
void fill(KeyList &list, int count)
{
    list.items.clear();
    for (int i = 0; i < count; ++i)
        list.items << qMakePair(i, i);
}

// The order the move table asks for: the chosen rows leave their places and go, in their
// order, as one block that starts at `blockStart` of the final list.
QList<int> blockMoved(const QList<int> &order, QList<int> rows, int blockStart)
{
    std::sort(rows.begin(), rows.end());
    QList<int> block;
    QList<int> rest;
    for (int i = 0; i < order.size(); ++i)
        (rows.contains(i) ? block : rest) << order.at(i);
    for (int i = 0; i < block.size(); ++i)
        rest.insert(blockStart + i, block.at(i));
    return rest;
}

enum Button { Up, Up10, Top, Down, Down10, Bottom };

const char *buttonName(Button button)
{
    static const char *const names[] = {"org_up", "org_up_10", "org_top", "org_down", "org_down_10", "org_bottom"};
    return names[button];
}

// The target row by the table, or -1 when the button does nothing.
int tableTarget(Button button, const QList<int> &rows, int count)
{
    const int first = *std::min_element(rows.begin(), rows.end());
    const int last = *std::max_element(rows.begin(), rows.end());
    switch (button) {
    case Up:
        return first - 1 >= 0 ? first - 1 : -1;
    case Up10:
        return first - 10 < 1 ? 0 : first - 10;
    case Top:
        return 0;
    case Down:
        return last + 1 < count ? last + 1 : -1;
    case Down10:
        return qMin(count - 1, last + 10);
    case Bottom:
        return count - 1;
    }
    return -1;
}

} // namespace

Q_DECLARE_METATYPE(Button)

class OrganizerTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void actionsAreTheHostsWithTheirLabels();
    void buttonsMoveBySelection_data();
    void buttonsMoveBySelection();
    void scrollsToTheTableRow_data();
    void scrollsToTheTableRow();
    void autoOrganizeIsStable();
    void dropMovesLikeTheButtons_data();
    void dropMovesLikeTheButtons();
    void deleteKeyAsksFirst_data();
    void deleteKeyAsksFirst();
    void doubleClickReportsTheRow();
    void spriteContainerSortsDeletesAndUndoes();
    void listDestroyedUnderTheEditor();
    void screenshot();

private:
    QToolButton *button(OrganizerEditor &editor, const char *name);
    QListView *list(OrganizerEditor &editor);
    void show(OrganizerEditor &editor, int height);
    void clickRows(OrganizerEditor &editor, const QList<int> &rows);
    QList<int> selectedRows(OrganizerEditor &editor);

    std::unique_ptr<TestInterface> m_host;
};

void OrganizerTest::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    m_host = std::make_unique<TestInterface>();
}

QToolButton *OrganizerTest::button(OrganizerEditor &editor, const char *name)
{
    return editor.widget()->findChild<QToolButton *>(QString::fromLatin1(name));
}

QListView *OrganizerTest::list(OrganizerEditor &editor)
{
    return editor.widget()->findChild<QListView *>(QStringLiteral("org_list"));
}

void OrganizerTest::show(OrganizerEditor &editor, int height)
{
    editor.widget()->resize(260, height);
    editor.widget()->show();
    QVERIFY(QTest::qWaitForWindowExposed(editor.widget()));
}

// As a user does: scroll the row into sight, click it, Ctrl-click the others.
void OrganizerTest::clickRows(OrganizerEditor &editor, const QList<int> &rows)
{
    QListView *view = list(editor);
    for (int i = 0; i < rows.size(); ++i) {
        const QModelIndex index = view->model()->index(rows.at(i), 0);
        view->scrollTo(index);
        QTest::mouseClick(view->viewport(), Qt::LeftButton, i == 0 ? Qt::NoModifier : Qt::ControlModifier,
                          view->visualRect(index).center());
    }
}

QList<int> OrganizerTest::selectedRows(OrganizerEditor &editor)
{
    QList<int> rows;
    const QModelIndexList chosen = list(editor)->selectionModel()->selectedIndexes();
    for (const QModelIndex &index : chosen)
        rows << index.row();
    std::sort(rows.begin(), rows.end());
    return rows;
}

void OrganizerTest::actionsAreTheHostsWithTheirLabels()
{
    OrganizerEditor editor;
    const QStringList names = {QStringLiteral("org_up"),      QStringLiteral("org_down"),
                               QStringLiteral("org_up_10"),   QStringLiteral("org_down_10"),
                               QStringLiteral("org_top"),     QStringLiteral("org_bottom"),
                               QStringLiteral("org_auto")};
    const QStringList labels = {QStringLiteral("Move one position up"),    QStringLiteral("Move one position down"),
                                QStringLiteral("Move ten positions up"),   QStringLiteral("Move ten positions down"),
                                QStringLiteral("Move to the top"),         QStringLiteral("Move to the bottom"),
                                QStringLiteral("Organize automatically")};
    for (int i = 0; i < names.size(); ++i) {
        QAction *hosts = m_host->action(names.at(i).toLatin1().constData());
        QVERIFY2(hosts, qPrintable(names.at(i)));
        QCOMPARE(hosts->text(), labels.at(i));
        QToolButton *shown = button(editor, names.at(i).toLatin1().constData());
        QVERIFY(shown);
        QCOMPARE(shown->defaultAction(), hosts);
    }
    QCOMPARE(editor.displayName(), QStringLiteral("Organizer"));
    QCOMPARE(list(editor)->dragDropMode(), QAbstractItemView::InternalMove);
    QCOMPARE(list(editor)->selectionMode(), QAbstractItemView::ExtendedSelection);
}

void OrganizerTest::buttonsMoveBySelection_data()
{
    QTest::addColumn<QList<int>>("rows");
    QTest::addColumn<Button>("pressed");
    const QList<QPair<const char *, QList<int>>> selections = {
        {"single", {12}},         {"block", {5, 6, 7}},       {"apart", {3, 9, 16}},
        {"first", {0}},           {"first two", {0, 1}},      {"last", {24}},
        {"last two", {23, 24}},   {"both ends", {0, 24}},     {"near top", {4, 8}},
    };
    for (const auto &selection : selections) {
        for (Button pressed : {Up, Up10, Top, Down, Down10, Bottom}) {
            QTest::addRow("%s, %s", selection.first, buttonName(pressed)) << selection.second << pressed;
        }
    }
}

void OrganizerTest::buttonsMoveBySelection()
{
    QFETCH(QList<int>, rows);
    QFETCH(Button, pressed);
    const int count = 25;
    KeyList keys;
    fill(keys, count);
    OrganizerEditor editor;
    editor.setObject(&keys);
    show(editor, 700);
    clickRows(editor, rows);
    QCOMPARE(selectedRows(editor), rows);
    QSignalSpy changed(&editor, &OrganizerEditor::changed);

    const QList<int> before = keys.tags();
    const int target = tableTarget(pressed, rows, count);
    QTest::mouseClick(button(editor, buttonName(pressed)), Qt::LeftButton);

    if (target < 0) {
        QCOMPARE(keys.tags(), before);
        QCOMPARE(selectedRows(editor), rows);
        QCOMPARE(changed.count(), 0);
        QCOMPARE(keys.brackets, 0);
        QVERIFY(!editor.isModified());
        return;
    }
    const int n = rows.size();
    const bool up = pressed == Up || pressed == Up10 || pressed == Top;
    const int blockStart = up ? target : target - n + 1;
    QCOMPARE(keys.tags(), blockMoved(before, rows, blockStart));
    QList<int> block;
    for (int i = 0; i < n; ++i)
        block << blockStart + i;
    QCOMPARE(selectedRows(editor), block);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(keys.brackets, 1);
    QCOMPARE(keys.deepest, 1);
    QVERIFY(editor.isModified());
}

void OrganizerTest::scrollsToTheTableRow_data()
{
    QTest::addColumn<QList<int>>("rows");
    QTest::addColumn<Button>("pressed");
    QTest::addColumn<int>("scrollRow");
    // Downwards the view goes to target - 1 + n: with a block, the rows after it show.
    QTest::newRow("one down ten") << QList<int>{10} << Down10 << 20;
    QTest::newRow("three down ten") << QList<int>{10, 11, 12} << Down10 << 24;
    QTest::newRow("two apart down") << QList<int>{10, 14} << Down << 16;
    QTest::newRow("two to the top") << QList<int>{40, 50} << Top << 0;
    QTest::newRow("one up ten") << QList<int>{45} << Up10 << 35;
}

void OrganizerTest::scrollsToTheTableRow()
{
    QFETCH(QList<int>, rows);
    QFETCH(Button, pressed);
    QFETCH(int, scrollRow);
    KeyList keys;
    fill(keys, 60);
    OrganizerEditor editor;
    editor.setObject(&keys);
    show(editor, 200);
    QListView *view = list(editor);
    clickRows(editor, rows);
    // Start from the far side, so that the view has to travel to the row.
    const bool up = pressed == Up || pressed == Up10 || pressed == Top;
    view->verticalScrollBar()->setValue(up ? view->verticalScrollBar()->maximum() : 0);
    QTest::mouseClick(button(editor, buttonName(pressed)), Qt::LeftButton);

    const QRect shown = view->viewport()->rect();
    QVERIFY(shown.contains(view->visualRect(keys.index(scrollRow, 0))));
    // EnsureVisible stops as soon as the row shows: coming from above it is the last
    // whole row, coming from below the first.
    const QModelIndex beyond = keys.index(up ? scrollRow - 1 : scrollRow + 1, 0);
    if (beyond.isValid())
        QVERIFY(!shown.contains(view->visualRect(beyond)));
}

void OrganizerTest::autoOrganizeIsStable()
{
    KeyList keys;
    // Keys from a small generator with many repeats; the tags are the first positions.
    quint32 seed = 12345;
    for (int i = 0; i < 40; ++i) {
        seed = seed * 1103515245u + 12345u;
        keys.items << qMakePair(int((seed >> 16) % 7), i);
    }
    QList<QPair<int, int>> reference = keys.items;
    std::stable_sort(reference.begin(), reference.end(),
                     [](const QPair<int, int> &a, const QPair<int, int> &b) { return a.first < b.first; });
    QVERIFY(reference != keys.items);
    OrganizerEditor editor;
    editor.setObject(&keys);
    show(editor, 300);
    QSignalSpy changed(&editor, &OrganizerEditor::changed);
    QTest::mouseClick(button(editor, "org_auto"), Qt::LeftButton);
    QCOMPARE(keys.items, reference);
    QCOMPARE(keys.brackets, 1);
    QCOMPARE(changed.count(), 1);
}

void OrganizerTest::dropMovesLikeTheButtons_data()
{
    QTest::addColumn<QList<int>>("rows");
    QTest::addColumn<int>("dropRow");
    QTest::addColumn<Button>("sameAs");
    QTest::newRow("block to the top") << QList<int>{5, 6, 7} << 0 << Top;
    QTest::newRow("apart to the top") << QList<int>{3, 9, 16} << 0 << Top;
    QTest::newRow("block to the bottom") << QList<int>{5, 6, 7} << 24 << Bottom;
    QTest::newRow("past the end is the bottom") << QList<int>{2, 20} << 99 << Bottom;
    QTest::newRow("one up") << QList<int>{12} << 11 << Up;
    QTest::newRow("one down") << QList<int>{12} << 13 << Down;
    QTest::newRow("apart ten down") << QList<int>{4, 8} << 18 << Down10;
    QTest::newRow("apart ten up") << QList<int>{14, 20} << 4 << Up10;
}

void OrganizerTest::dropMovesLikeTheButtons()
{
    QFETCH(QList<int>, rows);
    QFETCH(int, dropRow);
    QFETCH(Button, sameAs);
    KeyList dropped;
    fill(dropped, 25);
    QModelIndexList indexes;
    for (int row : qAsConst(rows))
        indexes << dropped.index(row, 0);
    std::unique_ptr<QMimeData> data(dropped.mimeData(indexes));
    QVERIFY(dropped.dropMimeData(data.get(), Qt::MoveAction, dropRow, 0, QModelIndex()));
    QVERIFY(!dropped.dropMimeData(data.get(), Qt::CopyAction, dropRow, 0, QModelIndex()));

    KeyList pressed;
    fill(pressed, 25);
    OrganizerEditor editor;
    editor.setObject(&pressed);
    show(editor, 700);
    clickRows(editor, rows);
    QTest::mouseClick(button(editor, buttonName(sameAs)), Qt::LeftButton);
    QCOMPARE(dropped.tags(), pressed.tags());
    KeyList untouched;
    fill(untouched, 25);
    QVERIFY(dropped.tags() != untouched.tags());
}

void OrganizerTest::deleteKeyAsksFirst_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<QList<int>>("left");
    QTest::newRow("yes") << int(QMessageBox::Yes) << QList<int>{0, 2, 4, 5};
    QTest::newRow("no") << int(QMessageBox::No) << QList<int>{0, 1, 2, 3, 4, 5};
}

void OrganizerTest::deleteKeyAsksFirst()
{
    QFETCH(int, answer);
    QFETCH(QList<int>, left);
    KeyList keys;
    fill(keys, 6);
    OrganizerEditor editor;
    editor.setObject(&keys);
    show(editor, 300);
    QSignalSpy changed(&editor, &OrganizerEditor::changed);
    ScriptedAnswerer user({QMessageBox::StandardButton(answer)});
    clickRows(editor, {1, 3});
    QTest::keyClick(list(editor), Qt::Key_Delete);
    QCOMPARE(user.prompts().size(), 1);
    QCOMPARE(user.prompts().first().title, QStringLiteral("Delete"));
    QCOMPARE(user.prompts().first().text, QStringLiteral("Do you really want to delete the selected item(s)?"));
    QCOMPARE(keys.tags(), left);
    QCOMPARE(changed.count(), answer == int(QMessageBox::Yes) ? 1 : 0);

    // Nothing chosen: nothing to ask.
    list(editor)->clearSelection();
    QTest::keyClick(list(editor), Qt::Key_Delete);
    QCOMPARE(user.prompts().size(), 1);
}

void OrganizerTest::doubleClickReportsTheRow()
{
    KeyList keys;
    fill(keys, 8);
    OrganizerEditor editor;
    editor.setObject(&keys);
    show(editor, 300);
    QSignalSpy clicked(&editor, &OrganizerEditor::itemClicked);
    QListView *view = list(editor);
    const QPoint at = view->visualRect(keys.index(5, 0)).center();
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, at);
    QTest::mouseDClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, at);
    QCOMPARE(clicked.count(), 1);
    QCOMPARE(clicked.first().first().toInt(), 5);
}

void OrganizerTest::spriteContainerSortsDeletesAndUndoes()
{
    Held<SpriteContainer> sprites(new SpriteContainer);
    const QList<QPoint> ids = {{3, 1}, {0, 2}, {3, 0}, {1, 5}, {0, 2}, {2, 2}, {0, 1}};
    for (int i = 0; i < ids.size(); ++i) {
        QImage picture(2 + i, 2, QImage::Format_ARGB32);
        picture.fill(qRgba(10 * i, 0, 0, 255));
        QVERIFY(sprites->add(ids.at(i), picture, Archive::NoShare));
    }
    QAbstractItemModelTester tester(sprites.get());
    OrganizerEditor editor;
    editor.setObject(sprites.get());
    show(editor, 300);

    // Sorted by group, then number; equal identifiers keep their order (told by width).
    QTest::mouseClick(button(editor, "org_auto"), Qt::LeftButton);
    QList<QPair<QPoint, int>> reference;
    for (int i = 0; i < ids.size(); ++i)
        reference << qMakePair(ids.at(i), 2 + i);
    std::stable_sort(reference.begin(), reference.end(), [](const auto &a, const auto &b) {
        return a.first.x() != b.first.x() ? a.first.x() < b.first.x() : a.first.y() < b.first.y();
    });
    for (int i = 0; i < reference.size(); ++i) {
        QCOMPARE(sprites->at(uint(i))->identifier().toPoint(), reference.at(i).first);
        QCOMPARE(int(sprites->at(uint(i))->imageProperties().width), reference.at(i).second);
    }
    QCOMPARE(editor.isModified(), sprites->isModified());

    // Two rows deleted with one yes, as one step of the file's undo.
    ScriptedAnswerer user({QMessageBox::Yes});
    clickRows(editor, {1, 4});
    QTest::keyClick(list(editor), Qt::Key_Delete);
    QCOMPARE(sprites->count(), uint(ids.size() - 2));
    QCOMPARE(sprites->at(1)->identifier().toPoint(), reference.at(2).first);
    QCOMPARE(sprites->at(3)->identifier().toPoint(), reference.at(5).first);
    sprites->undo();
    QCOMPARE(sprites->count(), uint(ids.size()));
    QCOMPARE(sprites->at(4)->identifier().toPoint(), reference.at(4).first);
}

void OrganizerTest::listDestroyedUnderTheEditor()
{
    auto *keys = new KeyList;
    fill(*keys, 10);
    OrganizerEditor editor;
    editor.setObject(keys);
    show(editor, 300);
    clickRows(editor, {2, 3});
    QSignalSpy changed(&editor, &OrganizerEditor::changed);
    delete keys;
    QVERIFY(!editor.object());
    ScriptedAnswerer user({QMessageBox::Yes});
    for (Button pressed : {Up, Up10, Top, Down, Down10, Bottom})
        QTest::mouseClick(button(editor, buttonName(pressed)), Qt::LeftButton);
    QTest::mouseClick(button(editor, "org_auto"), Qt::LeftButton);
    QTest::keyClick(list(editor), Qt::Key_Delete);
    QCOMPARE(changed.count(), 0);
    QCOMPARE(user.prompts().size(), 0);
    QVERIFY(!editor.isModified());
}

void OrganizerTest::screenshot()
{
    Held<SpriteContainer> sprites(new SpriteContainer);
    for (int i = 0; i < 12; ++i) {
        QImage picture(4, 4, QImage::Format_ARGB32);
        picture.fill(qRgba(20 * i, 120, 200, 255));
        sprites->add(QPoint(i % 3, i), picture, Archive::NoShare);
    }
    OrganizerEditor editor;
    editor.setObject(sprites.get());
    show(editor, 320);
    clickRows(editor, {2, 3, 7});
    const QImage shot = editor.widget()->grab().toImage();
    QVERIFY(shot.save(QCoreApplication::applicationDirPath() + QStringLiteral("/organizer.png")));
}

QTEST_MAIN(OrganizerTest)
#include "tst_organizer.moc"
