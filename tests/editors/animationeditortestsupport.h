#pragma once
// What the animation editor's tests share: a steady clock for the time line, a host with
// an organizer, texts compared line by line, and the frames a player gives.
#include "testinterface.h"

#include "code/animationcode.h"
#include "code/animationplayer.h"
#include "code/animations.h"
#include "editors/animation/timesource.h"

#include <QList>
#include <QString>
#include <QStringList>

// A clock that says a tick took exactly its period, so that the time line's correction
// keeps its interval whatever the machine does meanwhile.
class SteadyClock : public Ovra::TimeSource
{
public:
    void start() override { m_count = 0; }
    qint64 restart() override { return ++m_count % 3 == 0 ? 16 : 17; }

private:
    qint64 m_count = 0;
};

inline QStringList linesOf(const QString &text)
{
    QString plain = text;
    plain.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    return plain.split(QLatin1Char('\n'));
}

// The rows where two texts of as many lines differ.
inline QList<int> differingLines(const QStringList &before, const QStringList &after)
{
    QList<int> rows;
    for (int i = 0; i < qMin(before.size(), after.size()); ++i) {
        if (before.at(i) != after.at(i))
            rows << i;
    }
    return rows;
}

// The frame an animation player shows after `tick` ticks of the time line: the way the
// editor steps it, from the start.
inline int playedFrame(Ovra::Animations *animations, int animation, uint tick)
{
    Ovra::AnimationPlayer player;
    player.change(animations, animation, true);
    for (uint i = 0; i <= tick; ++i)
        player.tick();
    return player.currentFrame() ? animations->at(uint(animation))->indexOfFrame(player.currentFrame()) : -1;
}

// A host that keeps an organizer among its side editors.
class OrganizerHost : public TestInterface
{
public:
    Ovra::ExtraEditor *extraEditor(int index) override { return index == 0 ? organizer : nullptr; }
    void setExtraEditor(Ovra::ExtraEditor *editor) override { shownExtra = editor; }

    Ovra::ExtraEditor *organizer = nullptr;
    Ovra::ExtraEditor *shownExtra = nullptr;
};
