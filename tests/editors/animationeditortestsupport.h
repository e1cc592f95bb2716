#pragma once
// What the animation editor's tests share: a steady clock for the time line, a host with
// an organizer, texts compared line by line, and the frames a player gives.
#include "held.h"
#include "testfiles.h"
#include "testinterface.h"

#include "code/animationcode.h"
#include "code/animationplayer.h"
#include "code/animations.h"
#include "code/codedocument.h"
#include "editors/animation/animationeditor.h"
#include "editors/animation/animationeditor_p.h"
#include "editors/animation/animationeditorextension.h"
#include "editors/animation/timesource.h"
#include "editors/code/codeworkspace.h"
#include "editors/graphics/graphicsworkspace.h"
#include "editors/organizer/thumbnailseditor.h"
#include "engine/extension.h"
#include "project/project.h"
#include "render/renderwidgetbase.h"

#include <QAction>
#include <QApplication>
#include <QList>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QToolButton>
#include <QtTest>

#include <memory>

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

// The knight's work copied into a folder of its own, opened through the plug-in, with the
// sample engine's animation editor on a code and a graphics workspace, as a host has them.
class AnimationEditorFixture
{
protected:
    void open(Ovra::AnimationEditorExtension *extension)
    {
        QVERIFY(extension);
        m_host = std::make_unique<OrganizerHost>();
        QMap<QString, QVariant> &o = m_host->options;
        o[QStringLiteral("native_painting")] = true;
        o[QStringLiteral("zoom_level")] = 3;
        o[QStringLiteral("back_start")] = QColor(60, 70, 90);
        o[QStringLiteral("back_end")] = QColor(20, 24, 36);
        o[QStringLiteral("attackbox")] = QColor(230, 40, 40);
        o[QStringLiteral("collisionbox")] = QColor(40, 90, 230);
        o[QStringLiteral("box_opacity")] = 0.5;
        o[QStringLiteral("show_attack_box")] = true;
        o[QStringLiteral("show_collision_box")] = true;
        o[QStringLiteral("confirm_delete")] = false;
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(copyTree(QStringLiteral(OVRA_EXAMPLES_DIR "/sample"), m_dir->filePath(QStringLiteral("work"))));
        Ovra::EngineExtension *engine = Ovra::EngineExtension::forProjectFile(QStringLiteral("any.ovp"));
        QVERIFY(engine);
        QString error;
        m_project.reset(engine->openProject(m_dir->filePath(QStringLiteral("work/knight/knight.ovp")), &error));
        QVERIFY2(m_project, qPrintable(error));
        m_animations = dynamic_cast<Ovra::Animations *>(m_project->file(Ovra::Project::Animations));
        QVERIFY(m_animations);
        m_code = std::make_unique<Ovra::CodeWorkspace>(m_host.get());
        m_graphics = std::make_unique<Ovra::GraphicsWorkspace>(m_host.get());
        m_thumbnails = std::make_unique<Ovra::ThumbnailsEditor>();
        m_editor.reset(extension->create(m_code.get(), m_graphics.get(), m_thumbnails.get()));
        QVERIFY(m_editor);
        m_editor->setCurrentFile(m_animations);
        m_host->activateEditor(m_editor.get());
        QVERIFY(m_editor->isActive());
    }

    void close()
    {
        if (m_host)
            m_host->activeEditor = nullptr;
        m_editor.reset();
        // The editor ends at the next turn of the event loop; the workspaces outlive it.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        m_thumbnails.reset();
        m_graphics.reset();
        m_code.reset();
        m_animations = nullptr;
        m_project.reset();
        m_dir.reset();
        m_host.reset();
    }

    bool showEditor()
    {
        m_graphics->resize(1000, 640);
        m_graphics->show();
        if (!QTest::qWaitForWindowExposed(m_graphics.get()))
            return false;
        m_editor->renderer()->centralize();
        return true;
    }

    void drag(QPoint from, QPoint to)
    {
        QWidget *widget = view();
        QTest::mousePress(widget, Qt::LeftButton, Qt::NoModifier, from);
        // Several steps, as a hand moves.
        for (int step = 1; step <= 4; ++step) {
            const QPoint at = from + (to - from) * step / 4;
            QMouseEvent move(QEvent::MouseMove, at, Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(widget, &move);
        }
        QTest::mouseRelease(widget, Qt::LeftButton, Qt::NoModifier, to);
    }

    QString text() const { return m_animations->document()->toString(); }
    QWidget *view() const { return dynamic_cast<QWidget *>(m_graphics->renderWidget()); }
    QAction *action(const char *name) const { return m_host->action(name); }
    QToolButton *button(const char *name) const
    {
        return m_editor->panel()->findChild<QToolButton *>(QString::fromLatin1(name) + QStringLiteral("_button"));
    }
    template<class T>
    T *field(const char *name) const
    {
        return m_editor->panel()->findChild<T *>(QString::fromLatin1(name));
    }
    // The editor's inside, found by its class name: the library doesn't export it.
    Ovra::AnimationEditorPrivate *inside() const
    {
        for (QObject *child : m_editor->children()) {
            if (qstrcmp(child->metaObject()->className(), "Ovra::AnimationEditorPrivate") == 0)
                return static_cast<Ovra::AnimationEditorPrivate *>(child);
        }
        return nullptr;
    }


    std::unique_ptr<OrganizerHost> m_host;
    std::unique_ptr<QTemporaryDir> m_dir;
    Held<Ovra::Project> m_project;
    Ovra::Animations *m_animations = nullptr;
    std::unique_ptr<Ovra::CodeWorkspace> m_code;
    std::unique_ptr<Ovra::GraphicsWorkspace> m_graphics;
    Held<Ovra::AnimationEditor> m_editor;
    std::unique_ptr<Ovra::ThumbnailsEditor> m_thumbnails;
};
