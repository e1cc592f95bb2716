#include "testengine.h"

#include "code/animationplayer.h"

#include <QtTest>

using namespace Ovra;

namespace {

// What a player must show, worked out from the delays alone: the time each tick stands
// for, and the frame on show at that time.
struct Reference
{
    QVector<int> delays;
    int loop = 0;

    int total() const
    {
        int sum = 0;
        for (int delay : delays) {
            if (delay < 0)
                return -1;
            sum += delay;
        }
        return sum;
    }
    int loopTime() const
    {
        int sum = 0;
        for (int i = 0; i < loop; ++i)
            sum += delays.at(i);
        return sum;
    }
    // The time of tick n (counted from 0).
    long timeOf(long n) const
    {
        const int all = total();
        if (all < 0 || n < all)
            return n;
        const int period = all - loopTime();
        return period <= 0 ? loopTime() : loopTime() + (n - all) % period;
    }
    // Whether tick n went back to the loop frame.
    bool looped(long n) const
    {
        const int all = total();
        if (all < 0 || n < all)
            return false;
        const int period = all - loopTime();
        return period <= 0 || (n - all) % period == 0;
    }
    // The last frame that has started by `time`; frames behind a negative delay never do.
    int frameAt(long time) const
    {
        int frame = 0;
        long start = 0;
        for (int i = 0; i < delays.size(); ++i) {
            if (start > time)
                break;
            frame = i;
            if (delays.at(i) < 0)
                break;
            start += delays.at(i);
        }
        return frame;
    }
};

QString animationText(const QString &id, const QVector<int> &delays, int loop)
{
    QString text = QStringLiteral("<%1>\n").arg(id);
    for (int i = 0; i < delays.size(); ++i)
        text += QStringLiteral("frame s%1, 0, 0, %2%3\n").arg(i).arg(delays.at(i)).arg(i == loop && loop ? QStringLiteral(", loop") : QString());
    return text;
}

struct Case
{
    const char *name;
    QVector<int> delays;
    int loop;
};

const QVector<Case> &cases()
{
    static const QVector<Case> list{
        {"simple", {4, 3, 5}, 0},
        {"loop in the middle", {6, 2, 3, 1}, 2},
        {"zero delays", {0, 3, 0, 0, 2, 0}, 0},
        {"zero delays behind the loop", {2, 3, 0, 0}, 2},
        {"loop on the last", {3, 1, 2}, 2},
        {"all zero", {0, 0, 0}, 1},
        {"one frame", {7}, 0},
        {"negative delay", {3, 2, -1, 4}, 1},
        {"negative first", {-5, 2}, 0},
        {"one frame held", {-1}, 0},
        {"held behind the loop", {2, 3, -4}, 1},
        {"no delay before the held", {2, 0, -1}, 0},
        {"long delays", {60, 1, 120}, 1},
    };
    return list;
}

// Every case as an animation of one document.
struct Fixture : AnimationsDocument
{
    Fixture() : AnimationsDocument(allCases()) {}
    static QString allCases()
    {
        QString text;
        for (const Case &c : cases())
            text += animationText(QString::fromLatin1(c.name).replace(QLatin1Char(' '), QLatin1Char('_')), c.delays, c.loop);
        return text;
    }
};

} // namespace

class AnimationPlayerTest : public QObject
{
    Q_OBJECT

private slots:
    void framesFollowAnIndependentReference_data();
    void framesFollowAnIndependentReference();
    void secondChangeStops();
    void refusesWhatIsNotThere();
    void resetAndAGoneAnimation();
};

void AnimationPlayerTest::framesFollowAnIndependentReference_data()
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < cases().size(); ++i)
        QTest::addRow("%s", cases().at(i).name) << i;
}

void AnimationPlayerTest::framesFollowAnIndependentReference()
{
    QFETCH(int, index);
    const Case &c = cases().at(index);
    const Reference reference{c.delays, c.loop};
    Fixture f;
    AnimationCode *animation = f.animations->at(uint(index));
    QCOMPARE(animation->frameCount(), uint(c.delays.size()));
    QCOMPARE(int(animation->loopPoint()), c.loop);

    AnimationPlayer player;
    QVERIFY(player.change(f.animations, index, false));
    QCOMPARE(player.totalTime(), reference.total());
    QCOMPARE(player.loopTime(), reference.loopTime());
    QCOMPARE(player.currentFrame(), animation->frameAt(uint(reference.frameAt(0))));

    int previous = -1;
    uint frameTime = 0;
    for (long n = 0; n < 10000; ++n) {
        const long time = reference.timeOf(n);
        const uint reported = player.tick();
        QCOMPARE(long(reported), time);
        const int frame = reference.frameAt(time);
        QCOMPARE(player.currentFrame(), animation->frameAt(uint(frame)));
        const int next = frame + 1 < c.delays.size() ? frame + 1 : c.loop;
        QCOMPARE(player.nextFrame(), animation->frameAt(uint(next)));
        const bool looped = reference.looped(n);
        frameTime = (looped || frame != previous) ? 1 : frameTime + 1;
        if (n == 0)
            frameTime = 1;
        QCOMPARE(player.frameTime(), frameTime);
        previous = frame;
    }
}

void AnimationPlayerTest::secondChangeStops()
{
    Fixture f;
    AnimationPlayer player;
    QVERIFY(player.change(f.animations, 1, false));
    QVERIFY(player.currentFrame());
    // The same target again, without force: the player stops and is empty.
    QVERIFY(!player.change(f.animations, 1, false));
    QCOMPARE(player.currentFrame(), nullptr);
    QCOMPARE(player.nextFrame(), nullptr);
    QCOMPARE(player.animations(), nullptr);
    QCOMPARE(player.tick(), 0u);
    // With force it loads again; another animation loads without it.
    QVERIFY(player.change(f.animations, 1, true));
    QVERIFY(player.change(f.animations, 1, true));
    QVERIFY(player.change(f.animations, 3, false));
    QCOMPARE(player.currentFrame(), f.animations->at(3)->frameAt(0));
    // Frames of no delay at the start are passed over at once.
    QVERIFY(player.change(f.animations, 2, false));
    QCOMPARE(player.currentFrame(), f.animations->at(2)->frameAt(1));
}

void AnimationPlayerTest::refusesWhatIsNotThere()
{
    Fixture f;
    AnimationPlayer player;
    QVERIFY(!player.change(nullptr, 0, true));
    QVERIFY(!player.change(f.animations, -1, true));
    // The row past the end passes the range test and still finds nothing.
    QVERIFY(!player.change(f.animations, int(f.animations->count()), true));
    QVERIFY(!player.change(f.animations, int(f.animations->count()) + 1, true));
    QCOMPARE(player.currentFrame(), nullptr);
    QCOMPARE(player.tick(), 0u);
}

void AnimationPlayerTest::resetAndAGoneAnimation()
{
    Fixture f;
    AnimationPlayer player;
    QVERIFY(player.change(f.animations, 0, false)); // delays 4, 3, 5
    for (int i = 0; i < 6; ++i)
        player.tick();
    QCOMPARE(player.currentFrame(), f.animations->at(0)->frameAt(1));
    QCOMPARE(player.frameTime(), 2u);
    player.reset();
    QCOMPARE(player.time(), 0u);
    QCOMPARE(player.currentFrame(), f.animations->at(0)->frameAt(0));
    QCOMPARE(player.frameTime(), 0u);

    // The animation's frames go while it plays: nothing is shown, nothing dangles.
    QVERIFY(player.change(f.animations, int(f.animations->count()) - 1, false));
    player.tick();
    AnimationCode *last = f.animations->at(f.animations->count() - 1);
    while (last->frameCount())
        last->removeFrame(0);
    player.tick();
    QCOMPARE(player.currentFrame(), nullptr);
    QCOMPARE(player.nextFrame(), nullptr);
    // And then the animation itself.
    f.animations->remove(f.animations->count() - 1);
    QCOMPARE(player.tick(), 0u);
    QCOMPARE(player.currentFrame(), nullptr);
}

QTEST_MAIN(AnimationPlayerTest)
#include "tst_animationplayer.moc"
