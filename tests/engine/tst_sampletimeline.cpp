// The sample engine's lane of the time line: frames as blocks of their delays, on the
// knight's animations read from the example work, and the lane against the player.
#include "animationdocument.h"
#include "sampletimeline.h"

#include "code/animationcode.h"
#include "code/animationplayer.h"
#include "code/framecode.h"
#include "editors/animation/timelinewidget.h"
#include "foundation/filesystemarchive.h"

#include <QSignalSpy>
#include <QtTest>

#include <climits>

using namespace Ovra;

namespace {

using Blocks = QMap<uint, uint>;

// Every block of a lane over the first `ticks` ticks.
Blocks blocksOf(const TimeLine &lane, uint ticks)
{
    Blocks blocks;
    for (uint tick = 0; tick < ticks; ++tick) {
        uint length = 0;
        if (lane.blockAt(tick, length))
            blocks.insert(tick, length);
    }
    return blocks;
}

// An animation file in memory, released when it goes.
struct Document
{
    Document() : animations(new SampleAnimations(document)) {}
    ~Document() { animations->release(); }
    AnimationDocument *document = new AnimationDocument;
    SampleAnimations *animations;
};

QString knightFile()
{
    return QStringLiteral(OVRA_EXAMPLES_DIR "/sample/knight/knight.oan");
}

} // namespace

class SampleTimeLineTest : public QObject
{
    Q_OBJECT

private slots:
    void framesAsBlocks_data();
    void framesAsBlocks();
    void followsEditsWhenRefreshed();
    void knightWalkMatchesThePlayer();
    void screenshot();
};

void SampleTimeLineTest::framesAsBlocks_data()
{
    QTest::addColumn<QString>("frames");
    QTest::addColumn<Blocks>("blocks");
    QTest::newRow("back to back") << QStringLiteral("delay=4|delay=3|delay=5") << Blocks{{0, 4}, {4, 3}, {7, 5}};
    QTest::newRow("no delay is passed over") << QStringLiteral("delay=0|delay=3|delay=0|delay=2")
                                             << Blocks{{0, 3}, {3, 2}};
    QTest::newRow("no delay at the end: an instant") << QStringLiteral("delay=2|delay=0") << Blocks{{0, 2}, {2, 0}};
    QTest::newRow("held for ever") << QStringLiteral("delay=3|delay=-1|delay=4")
                                   << Blocks{{0, 3}, {3, UINT_MAX}};
    QTest::newRow("held from the start") << QStringLiteral("delay=-5|delay=2") << Blocks{{0, UINT_MAX}};
    QTest::newRow("no frames") << QString() << Blocks{};
}

void SampleTimeLineTest::framesAsBlocks()
{
    QFETCH(QString, frames);
    QFETCH(Blocks, blocks);
    Document file;
    QString text = QStringLiteral("animation 7 \"Test\"\n");
    int sprite = 0;
    for (const QString &frame : frames.split(QLatin1Char('|'), Qt::SkipEmptyParts))
        text += QStringLiteral("    frame (7, %1) %2\n").arg(sprite++).arg(frame);
    file.document->fromString(text);
    QCOMPARE(file.animations->count(), 1u);
    QCOMPARE(file.animations->at(0)->frameCount(), uint(sprite));

    const SampleTimeLine lane(file.animations->at(0));
    QCOMPARE(lane.name(), QStringLiteral("7 Test"));
    QCOMPARE(blocksOf(lane, 100), blocks);
    QCOMPARE(lane.blockCount(), blocks.size());
}

void SampleTimeLineTest::followsEditsWhenRefreshed()
{
    Document file;
    file.document->fromString(QStringLiteral("animation 3\n    frame (0, 0) delay=2\n    frame (0, 1) delay=2\n"));
    AnimationCode *animation = file.animations->at(0);
    SampleTimeLine lane(animation);
    QCOMPARE(lane.name(), QStringLiteral("Animation 3"));
    animation->frameAt(0)->setDelay(5);
    // Until asked to read again the lane shows what it read.
    QCOMPARE(blocksOf(lane, 20), (Blocks{{0, 2}, {2, 2}}));
    lane.refresh();
    QCOMPARE(blocksOf(lane, 20), (Blocks{{0, 5}, {5, 2}}));
    animation->removeFrame(0);
    lane.refresh();
    QCOMPARE(blocksOf(lane, 20), (Blocks{{0, 2}}));

    const SampleTimeLine none(nullptr);
    QCOMPARE(none.name(), QString());
    QCOMPARE(blocksOf(none, 20), Blocks{});
}

// Whatever tick the time line tells, the player joined to it shows the frame whose
// block covers that tick, through a loop of the walk.
void SampleTimeLineTest::knightWalkMatchesThePlayer()
{
    Document file;
    QVERIFY(file.animations->fromFile(FileSystemArchive::instance(), knightFile(), 0, nullptr));
    const int walk = file.animations->find(0, 10);
    QVERIFY(walk >= 0);
    AnimationCode *animation = file.animations->at(uint(walk));
    SampleTimeLine lane(animation);
    QCOMPARE(lane.name(), QStringLiteral("10 Walk"));
    QCOMPARE(blocksOf(lane, 100), (Blocks{{0, 6}, {6, 6}, {12, 6}, {18, 6}, {24, 6}, {30, 6}}));

    AnimationPlayer player;
    QVERIFY(player.change(file.animations, walk, false));
    QCOMPARE(player.currentFrame(), animation->frameAt(0));
    TimeLineWidget widget;
    uint shown = UINT_MAX;
    QObject::connect(&widget, &TimeLineWidget::tickChanged, &widget, [&](uint) { shown = player.tick(); });
    const QList<uint> starts = blocksOf(lane, 100).keys();
    for (uint tick = 1; tick <= 36 * 3; ++tick) {
        widget.setCurrentTick(tick);
        // The time the player's tick stood for, in the loop of the walk.
        QCOMPARE(shown, (tick - 1) % 36);
        int block = starts.size() - 1;
        while (starts.at(block) > shown)
            --block;
        uint length = 0;
        QVERIFY(lane.blockAt(starts.at(block), length));
        QVERIFY(shown < starts.at(block) + length);
        QCOMPARE(player.currentFrame(), animation->frameAt(uint(block)));
    }
}

void SampleTimeLineTest::screenshot()
{
    Document file;
    QVERIFY(file.animations->fromFile(FileSystemArchive::instance(), knightFile(), 0, nullptr));
    TimeLineWidget widget;
    widget.resize(520, 10);
    widget.addTimeLine(new SampleTimeLine(file.animations->at(uint(file.animations->find(0, 10)))));
    widget.addTimeLine(new SampleTimeLine(file.animations->at(uint(file.animations->find(0, 200)))));
    widget.setCurrentTick(14);
    QCOMPARE(widget.height(), 20 + 2 * 30);
    const QImage image = widget.grab().toImage();
    QVERIFY(image.save(QCoreApplication::applicationDirPath() + QStringLiteral("/timeline.png")));

    // Each frame of the walk starts with a cell of the highlight colour; between starts
    // the body is lighter.
    const QColor highlight = widget.palette().color(QPalette::Highlight);
    const int y = 20 + 15;
    for (int tick = 0; tick < 60; ++tick) {
        const QColor colour = image.pixelColor(125 + tick * 6 + 3, y);
        if (tick == 14)
            continue; // the marker
        if (tick < 36 && tick % 6 == 0)
            QVERIFY2(colour == highlight, qPrintable(QString::number(tick)));
        else
            QVERIFY2(colour != highlight, qPrintable(QString::number(tick)));
    }
}

QTEST_MAIN(SampleTimeLineTest)
#include "tst_sampletimeline.moc"
