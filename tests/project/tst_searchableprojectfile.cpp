#include "project/propertyitem.h"
#include "project/regexp.h"
#include "project/searchableprojectfile.h"

#include <QtTest>

using namespace Ovra;

namespace {

class NamedItem : public PropertyItem
{
public:
    QVariantMap values;
    QStringList propertyNames() const override { return values.keys(); }
    QVariant property(const QString &name) const override { return values.value(name); }
    void setProperty(const QString &name, const QVariant &value) override { values.insert(name, value); }
};

// A list of actions named after what they show; the search looks at those names.
class ActionList : public SearchableProjectFile
{
public:
    explicit ActionList(const QStringList &names, uint current = 0)
        : current(current)
    {
        for (const QString &name : names) {
            items.append(NamedItem());
            items.last().values.insert(QStringLiteral("Identifier"), name);
            items.last().values.insert(QStringLiteral("Number"), items.size());
        }
    }

    mutable QList<NamedItem> items;
    uint current;
    int changesEnded = 0;

    uint itemCount() const override { return uint(items.size()); }
    uint currentItem() const override { return current; }
    PropertyItem *item(uint index) const override
    {
        return index < uint(items.size()) ? &items[int(index)] : nullptr;
    }
    QStringList identifiers() const
    {
        QStringList names;
        for (const NamedItem &entry : qAsConst(items))
            names << entry.property(QStringLiteral("Identifier")).toString();
        return names;
    }
    void endChange() override { ++changesEnded; }
    bool isEmpty() const override { return items.isEmpty(); }
    Messages *fileMessages() const override { return nullptr; }
    void free() override {}
};

const QStringList Names{QStringLiteral("hero_idle"), QStringLiteral("hero_walk"),
                        QStringLiteral("enemy_idle"), QStringLiteral("hero_jump"),
                        QStringLiteral("enemy_walk")};

QList<int> hitItems(const QList<ProjectFile::SearchResult> &results)
{
    QList<int> items;
    for (const ProjectFile::SearchResult &result : results)
        items << int(result.item);
    return items;
}

} // namespace

class SearchableProjectFileTest : public QObject
{
    Q_OBJECT

private slots:
    void search_data();
    void search();
    void searchRecordsTheMatch();
    void replace_data();
    void replace();
    void replaceSkipsMissingItems();
};

void SearchableProjectFileTest::search_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<int>("count"); // items of Names taken
    QTest::addColumn<uint>("current");
    QTest::addColumn<uint>("flags");
    QTest::addColumn<QList<int>>("hits");
    using F = ProjectFile::SearchFlag;
    const QString hero = QStringLiteral("hero_");
    // hero_ is at 0, 1 and 3.
    QTest::newRow("forward, next") << hero << 5 << 0u << 0u << QList<int>{1};
    QTest::newRow("forward, skips others") << hero << 5 << 1u << 0u << QList<int>{3};
    QTest::newRow("forward, none after") << hero << 5 << 3u << 0u << QList<int>{};
    QTest::newRow("forward, last item") << hero << 5 << 4u << 0u << QList<int>{};
    QTest::newRow("wrap from the last item") << hero << 5 << 4u << uint(F::Wrap) << QList<int>{0};
    QTest::newRow("wrap after the last hit") << hero << 5 << 3u << uint(F::Wrap) << QList<int>{0};
    QTest::newRow("wrap reaches the current item") << "jump" << 5 << 3u << uint(F::Wrap) << QList<int>{3};
    QTest::newRow("wrap, nothing anywhere") << "boss" << 5 << 2u << uint(F::Wrap) << QList<int>{};
    QTest::newRow("from the start") << hero << 5 << 3u << uint(F::FromEnd) << QList<int>{0};
    QTest::newRow("from the start, wrap set") << "walk" << 5 << 4u << uint(F::FromEnd | F::Wrap) << QList<int>{1};
    QTest::newRow("backwards, previous") << hero << 5 << 3u << uint(F::Backwards) << QList<int>{1};
    QTest::newRow("backwards, first item") << hero << 5 << 0u << uint(F::Backwards) << QList<int>{};
    QTest::newRow("backwards, skips the current") << "jump" << 5 << 3u << uint(F::Backwards) << QList<int>{};
    QTest::newRow("backwards wrap from the first") << hero << 5 << 0u << uint(F::Backwards | F::Wrap) << QList<int>{3};
    QTest::newRow("backwards wrap reaches the current") << "enemy_walk" << 5 << 4u << uint(F::Backwards | F::Wrap)
                                                        << QList<int>{4};
    QTest::newRow("backwards from the end") << "idle" << 5 << 0u << uint(F::Backwards | F::FromEnd) << QList<int>{2};
    QTest::newRow("current past the end") << hero << 5 << 9u << uint(F::Backwards) << QList<int>{3};
    QTest::newRow("all") << hero << 5 << 3u << uint(F::All) << QList<int>{0, 1, 3};
    QTest::newRow("all, backwards too") << "walk" << 5 << 2u << uint(F::All | F::Backwards) << QList<int>{1, 4};
    QTest::newRow("all, nothing") << "boss" << 5 << 0u << uint(F::All) << QList<int>{};
    QTest::newRow("no items") << hero << 0 << 0u << uint(F::Wrap) << QList<int>{};
    QTest::newRow("no items, all") << hero << 0 << 0u << uint(F::All) << QList<int>{};
    QTest::newRow("no items, backwards wrap") << hero << 0 << 0u << uint(F::Backwards | F::Wrap) << QList<int>{};
}

void SearchableProjectFileTest::search()
{
    QFETCH(QString, pattern);
    QFETCH(int, count);
    QFETCH(uint, current);
    QFETCH(uint, flags);
    QFETCH(QList<int>, hits);
    ActionList file(Names.mid(0, count), current);
    RegExp expression(pattern);
    QCOMPARE(hitItems(file.search(expression, flags)), hits);
}

void SearchableProjectFileTest::searchRecordsTheMatch()
{
    ActionList file(Names);
    RegExp expression(QStringLiteral("_(w(\\w))"));
    const QList<ProjectFile::SearchResult> results = file.search(expression, ProjectFile::All);
    QCOMPARE(hitItems(results), (QList<int>{1, 4}));
    const ProjectFile::SearchResult &last = results.last();
    QCOMPARE(last.start, 5);
    QCOMPARE(last.length, 3);
    QCOMPARE(last.text, QStringLiteral("enemy_walk"));
    QCOMPARE(last.captures, (QStringList{"_wa", "wa", "a"}));
}

void SearchableProjectFileTest::replace_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<uint>("flags");
    QTest::addColumn<QString>("replacement");
    QTest::addColumn<QStringList>("after");
    QTest::addColumn<int>("changesEnded");
    QTest::newRow("one hit, group first")
        << "hero_(\\w+)" << 0u << "%2_%1"
        << QStringList{"hero_idle", "walk_hero_walk", "enemy_idle", "hero_jump", "enemy_walk"} << 0;
    QTest::newRow("all hits")
        << "(\\w+)_walk" << uint(ProjectFile::All) << "%2 runs (%1)"
        << QStringList{"hero_idle", "hero runs (hero_walk)", "enemy_idle", "hero_jump", "enemy runs (enemy_walk)"}
        << 1;
    QTest::newRow("two groups")
        << "(\\w)\\w*_(\\w+)" << uint(ProjectFile::All) << "%3.%2 (%1)"
        << QStringList{"idle.h (hero_idle)", "walk.h (hero_walk)", "idle.e (enemy_idle)", "jump.h (hero_jump)",
                       "walk.e (enemy_walk)"}
        << 1;
    QTest::newRow("nothing found") << "boss" << uint(ProjectFile::All) << "%1" << Names << 0;
}

void SearchableProjectFileTest::replace()
{
    QFETCH(QString, pattern);
    QFETCH(uint, flags);
    QFETCH(QString, replacement);
    QFETCH(QStringList, after);
    QFETCH(int, changesEnded);
    ActionList file(Names);
    RegExp expression(pattern);
    QList<ProjectFile::SearchResult> results = file.search(expression, flags);
    file.replace(results, replacement);
    QCOMPARE(file.identifiers(), after);
    QCOMPARE(file.changesEnded, changesEnded);
    // Only the identifier is rewritten.
    QCOMPARE(file.items.at(4).property(QStringLiteral("Number")), QVariant(5));
}

void SearchableProjectFileTest::replaceSkipsMissingItems()
{
    ActionList file(Names.mid(0, 2));
    QList<ProjectFile::SearchResult> results{{}, {}};
    results[0].item = 7;
    results[0].captures = QStringList{QStringLiteral("gone")};
    results[1].item = 1;
    results[1].captures = QStringList{QStringLiteral("walk")};
    file.replace(results, QStringLiteral("[%1]"));
    QCOMPARE(file.identifiers(), (QStringList{"hero_idle", "[walk]"}));
    QCOMPARE(file.changesEnded, 1); // two results make a batch, found or not
}

QTEST_GUILESS_MAIN(SearchableProjectFileTest)
#include "tst_searchableprojectfile.moc"
