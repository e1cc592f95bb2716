// The sample engine's sprite numbers: a group and a number packed as lists find them.
#include "spriteid.h"

#include <QtTest>

class SpriteIdTest : public QObject
{
    Q_OBJECT

private slots:
    void packs_data();
    void packs();
    void ranges_data();
    void ranges();
    void onlyLowBitsArePacked();
    void matches();
};

void SpriteIdTest::packs_data()
{
    QTest::addColumn<int>("group");
    QTest::addColumn<int>("number");
    QTest::addColumn<uint>("id");
    QTest::newRow("zero") << 0 << 0 << 0u;
    QTest::newRow("10, 1") << 10 << 1 << 0x000A0001u;
    QTest::newRow("number only") << 0 << 65535 << 0x0000FFFFu;
    QTest::newRow("group only") << 65535 << 0 << 0xFFFF0000u;
    QTest::newRow("largest") << 65535 << 65535 << 0xFFFFFFFFu;
}

void SpriteIdTest::packs()
{
    QFETCH(int, group);
    QFETCH(int, number);
    QFETCH(uint, id);
    QCOMPARE(SpriteId::pack(group, number), id);
    QCOMPARE(SpriteId::pack(QPoint(group, number)), id);
    QCOMPARE(SpriteId::group(id), group);
    QCOMPARE(SpriteId::number(id), number);
    QCOMPARE(SpriteId::unpack(id), QPoint(group, number));
    QVERIFY(SpriteId::matches(QPoint(group, number), id));
}

void SpriteIdTest::ranges_data()
{
    QTest::addColumn<int>("part");
    QTest::addColumn<bool>("valid");
    QTest::newRow("below") << -1 << false;
    QTest::newRow("zero") << 0 << true;
    QTest::newRow("largest") << 65535 << true;
    QTest::newRow("above") << 65536 << false;
    QTest::newRow("far above") << 0x7FFFFFFF << false;
}

void SpriteIdTest::ranges()
{
    QFETCH(int, part);
    QFETCH(bool, valid);
    QCOMPARE(SpriteId::isValidPart(part), valid);
    QCOMPARE(SpriteId::isValid(part, 0), valid);
    QCOMPARE(SpriteId::isValid(0, part), valid);
}

void SpriteIdTest::onlyLowBitsArePacked()
{
    // A frame's sprite out of range is looked for by the low bits of its parts.
    QCOMPARE(SpriteId::pack(65536 + 3, 7), SpriteId::pack(3, 7));
    QCOMPARE(SpriteId::pack(2, -1), SpriteId::pack(2, 65535));
    QCOMPARE(SpriteId::pack(-1, 0), 0xFFFF0000u);
}

void SpriteIdTest::matches()
{
    // Matching compares the pairs whole: one out of range never matches.
    QVERIFY(!SpriteId::matches(QPoint(10, 2), 0x000A0001u));
    QVERIFY(!SpriteId::matches(QPoint(-1, 0), SpriteId::pack(-1, 0)));
    QVERIFY(!SpriteId::matches(QPoint(65536 + 3, 7), SpriteId::pack(3, 7)));
}

QTEST_GUILESS_MAIN(SpriteIdTest)
#include "tst_spriteid.moc"
