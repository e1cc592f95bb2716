#pragma once

#include "editors/editor.h"

#include <QList>
#include <QPoint>

namespace Ovra {

class Emulator;
class EmulatorEditorPrivate;
class GraphicsWorkspace;
class RegExp;

// The view of a project running inside the tool: the engine's emulator draws into the
// graphics workspace, and the editor only tells the host about it (the back end in use,
// where the mouse is) and whether there is anything to run.
class OVRA_EXPORT EmulatorEditor : public Editor
{
    Q_OBJECT

public:
    explicit EmulatorEditor(GraphicsWorkspace *workspace);
    ~EmulatorEditor() override;

    // Null for none; the engine keeps it.
    void setEmulator(Emulator *emulator);
    Emulator *emulator() const;
    GraphicsWorkspace *workspace() const;

    QAction *action() const override;
    const char *name() const override;
    QWidget *widget() override;
    // Where the user works in this editor: the render widget.
    QList<QWidget *> areas() const;

    void activate() override;
    void deactivate() override;
    void reconfig() override;
    void retranslate() override;
    void engineSwitched(bool hasEngine) override;
    void saveState() override;
    void restoreState() override;

    // A running game holds no text to look in.
    bool find(RegExp &expression, uint flags);
    int replace(RegExp &expression, const QString &text, uint flags);

signals:
    // There is an emulator to run, or no longer.
    void enabled(bool enabled);
    // The game position under the mouse.
    void mousePosChanged(QPoint pos);

private:
    void visibilityChanged(bool visible);
    void showMousePos(QPoint pos);

    EmulatorEditorPrivate *const d;
};

} // namespace Ovra
