#include "editors/graphics/emulatoreditor.h"

#include "editors/graphics/graphicsworkspace.h"
#include "engine/debugger.h"
#include "foundation/interface.h"
#include "render/renderer.h"
#include "render/renderwidgetbase.h"

#include <QAction>
#include <QPointer>
#include <QWidget>

namespace Ovra {

namespace {

// The library's string table: "Emulator".
const uint EmulatorText = 217;
// The host's status bar: the back end on the left, the mouse beside it.
const int RendererField = 0;
const int PositionField = 1;

} // namespace

class EmulatorEditorPrivate
{
public:
    GraphicsWorkspace *workspace = nullptr;
    QPointer<Emulator> emulator;
    QAction *action = nullptr;
};

EmulatorEditor::EmulatorEditor(GraphicsWorkspace *workspace)
    : d(new EmulatorEditorPrivate)
{
    d->workspace = workspace;
    if (m_interface)
        d->action = m_interface->editorAction(QStringLiteral("editor_emul"), ovraTranslator(), EmulatorText);
    if (!d->action) {
        d->action = new QAction(ovraTranslator()->text(EmulatorText), this);
        d->action->setObjectName(QStringLiteral("editor_emul"));
    }
    // Nothing to run until an engine hands its emulator over.
    d->action->setEnabled(false);
    connect(this, &Editor::visible, this, &EmulatorEditor::visibilityChanged);
    connect(this, &EmulatorEditor::mousePosChanged, this, &EmulatorEditor::showMousePos);
}

EmulatorEditor::~EmulatorEditor()
{
    delete d;
}

void EmulatorEditor::setEmulator(Emulator *emulator)
{
    const bool had = d->emulator;
    d->emulator = emulator;
    d->action->setEnabled(emulator != nullptr);
    if (had != (emulator != nullptr))
        emit enabled(emulator != nullptr);
}

Emulator *EmulatorEditor::emulator() const
{
    return d->emulator;
}

GraphicsWorkspace *EmulatorEditor::workspace() const
{
    return d->workspace;
}

QAction *EmulatorEditor::action() const
{
    return d->action;
}

const char *EmulatorEditor::name() const
{
    return "emulator";
}

QWidget *EmulatorEditor::widget()
{
    return d->workspace ? d->workspace->widget() : nullptr;
}

QList<QWidget *> EmulatorEditor::areas() const
{
    QWidget *view = d->workspace ? dynamic_cast<QWidget *>(d->workspace->renderWidget()) : nullptr;
    return view ? QList<QWidget *>{view} : QList<QWidget *>();
}

void EmulatorEditor::activate()
{
    Editor::activate();
    if (d->workspace)
        d->workspace->activate();
    if (m_interface) {
        const bool native = m_interface->option(QStringLiteral("native_painting"), QVariant()).toBool();
        m_interface->setStatusText(RendererField, tr("Renderer: %1").arg(Renderer::name(native)));
    }
}

void EmulatorEditor::deactivate()
{
    if (isActive() && d->workspace)
        d->workspace->deactivate();
    Editor::deactivate();
}

void EmulatorEditor::reconfig()
{
    if (d->workspace)
        d->workspace->reconfig();
}

void EmulatorEditor::retranslate()
{
    d->action->setText(ovraTranslator()->text(EmulatorText));
}

void EmulatorEditor::engineSwitched(bool hasEngine)
{
    // The emulator belongs to the engine that goes.
    if (!hasEngine)
        setEmulator(nullptr);
}

void EmulatorEditor::saveState()
{
}

void EmulatorEditor::restoreState()
{
}

bool EmulatorEditor::find(RegExp &, uint)
{
    return false;
}

int EmulatorEditor::replace(RegExp &, const QString &, uint)
{
    return 0;
}

void EmulatorEditor::visibilityChanged(bool visible)
{
    d->action->setVisible(visible);
}

void EmulatorEditor::showMousePos(QPoint pos)
{
    if (m_interface)
        m_interface->setStatusText(PositionField, tr("Position: %1, %2").arg(pos.x()).arg(pos.y()));
}

} // namespace Ovra
