#pragma once
// What the sprite editor's tests share: the knight's work copied into a folder of its own
// and opened through the sample engine's plug-in, a host that lists the open projects and
// keeps an organizer, the editor on a graphics workspace with the sprite explorer and the
// palette editor beside it, and the user's hand at file dialogs and dialogs.
#include "held.h"
#include "modalanswer.h"
#include "scriptedanswerer.h"
#include "testfiles.h"
#include "testinterface.h"

#include "editors/graphics/graphicsworkspace.h"
#include "editors/organizer/thumbnailseditor.h"
#include "editors/palette/paletteeditor.h"
#include "editors/sprite/imagerenderer.h"
#include "editors/sprite/spriteeditor.h"
#include "editors/sprite/spriteeditor_p.h"
#include "engine/extension.h"
#include "engine/extensionmanager.h"
#include "image/sprite.h"
#include "project/project.h"
#include "render/renderwidgetbase.h"

#include <QAction>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

#include <functional>
#include <memory>

Q_DECLARE_METATYPE(Ovra::Sprite *)

// A host that lists the projects the test opened and keeps an organizer.
class ProjectsHost : public TestInterface
{
public:
    uint projectCount() override { return uint(open.size()); }
    Ovra::Project *project(uint index) override { return open.value(int(index)); }
    Ovra::ExtraEditor *extraEditor(int index) override { return index == 0 ? organizer : nullptr; }
    void setExtraEditor(Ovra::ExtraEditor *editor) override { shownExtra = editor; }
    QList<Ovra::Project *> open;
    Ovra::ExtraEditor *organizer = nullptr;
    Ovra::ExtraEditor *shownExtra = nullptr;
};

// Each prompt the user saw as "title | text".
inline QStringList promptTexts(const ScriptedAnswerer &answerer)
{
    QStringList texts;
    for (const Ovra::Prompt &prompt : answerer.prompts())
        texts << prompt.title + QStringLiteral(" | ") + prompt.text;
    return texts;
}

class SpriteEditorFixture
{
protected:
    void startPlugins()
    {
        QStandardPaths::setTestModeEnabled(true);
        qRegisterMetaType<Ovra::Sprite *>();
        m_manager = std::make_unique<Ovra::ExtensionManager>(QStringLiteral(OVRA_PLUGIN_DIR));
        m_engine = Ovra::EngineExtension::forProjectFile(QStringLiteral("any.ovp"));
        QVERIFY2(m_engine, "the sample plug-in opens projects");
    }

    Ovra::Project *openWork(const QString &folder)
    {
        if (!copyTree(QStringLiteral(OVRA_EXAMPLES_DIR "/sample"), m_dir->filePath(folder)))
            return nullptr;
        QString error;
        Ovra::Project *project =
            m_engine->openProject(m_dir->filePath(folder + QStringLiteral("/knight/knight.ovp")), &error);
        if (!project)
            qWarning("%s", qPrintable(error));
        return project;
    }

    void open()
    {
        m_host = std::make_unique<ProjectsHost>();
        m_host->options[QStringLiteral("native_painting")] = true;
        m_host->options[QStringLiteral("confirm_delete")] = false;
        m_dir = std::make_unique<QTemporaryDir>();
        m_project.reset(openWork(QStringLiteral("work")));
        QVERIFY(m_project);
        m_host->open << m_project.get();
        m_host->projectInUse = m_project.get();
        m_sprites = dynamic_cast<Ovra::Sprites *>(m_project->file(Ovra::Project::Sprites));
        QVERIFY(m_sprites);
        QVERIFY(m_sprites->count() >= 2);
        m_graphics = std::make_unique<Ovra::GraphicsWorkspace>(m_host.get());
        m_thumbnails = std::make_unique<Ovra::ThumbnailsEditor>();
        m_palettes = std::make_unique<Ovra::PaletteEditor>();
        m_editor.reset(new Ovra::SpriteEditor(m_graphics.get(), m_palettes.get(), m_thumbnails.get(),
                                              Ovra::Project::Sprites));
        m_editor->setCurrentFile(m_sprites);
        m_host->activateEditor(m_editor.get());
        QVERIFY(m_editor->isActive());
    }

    void close()
    {
        Ovra::setSpritePictureLoadHook(nullptr);
        if (m_host)
            m_host->activeEditor = nullptr;
        m_editor.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        m_palettes.reset();
        m_thumbnails.reset();
        m_graphics.reset();
        m_sprites = nullptr;
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

    QAction *action(const char *name) const { return m_host->action(name); }
    template<class T>
    T *field(const char *name) const
    {
        return m_editor->widget()->window()->findChild<T *>(QString::fromLatin1(name));
    }
    QWidget *view() const { return dynamic_cast<QWidget *>(m_graphics->renderWidget()); }
    // The middle of a picture pixel on the view.
    QPoint middle(const QPoint &pixel) const
    {
        Ovra::ImageRenderer *renderer = m_editor->renderer();
        return ((renderer->viewPoint(pixel) + renderer->viewPoint(pixel + QPoint(1, 1))) / 2).toPoint();
    }
    // The sprite's picture as 32-bit colours.
    static QImage colours(const Ovra::Sprite *sprite)
    {
        return sprite->image().convertToFormat(QImage::Format_ARGB32);
    }

    std::unique_ptr<Ovra::ExtensionManager> m_manager;
    Ovra::EngineExtension *m_engine = nullptr;
    std::unique_ptr<ProjectsHost> m_host;
    std::unique_ptr<QTemporaryDir> m_dir;
    Held<Ovra::Project> m_project;
    Ovra::Sprites *m_sprites = nullptr;
    std::unique_ptr<Ovra::GraphicsWorkspace> m_graphics;
    std::unique_ptr<Ovra::ThumbnailsEditor> m_thumbnails;
    std::unique_ptr<Ovra::PaletteEditor> m_palettes;
    Held<Ovra::SpriteEditor> m_editor;
};
