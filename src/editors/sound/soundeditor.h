#pragma once

#include "editors/editor.h"

#include <QList>

class QMenu;

namespace Ovra {

class Sound;
class SoundEditorPrivate;
class SoundWorkspace;
class Sounds;
struct SampleInfo;

// The editor of the sounds of a project file. The current sound is shown in the sound
// workspace, where every edit is undoable; the edits reach the file only when they are
// saved back into the sound ("Save changes", or when the file itself is saved), so that
// a half-done edit never lands in the file by accident. The file type is the engine's:
// the host names it when it builds the editor.
//
// The status bar gets three fields: the play state (field 0), the sample position and
// selection (field 1) and the same in seconds (field 3).
class OVRA_EXPORT SoundEditor : public FileEditor
{
    Q_OBJECT

public:
    SoundEditor(SoundWorkspace *workspace, int fileType);
    ~SoundEditor() override;

    QAction *action() const override;
    const char *name() const override;
    QWidget *widget() override;
    int fileType() const override;
    void activate() override;
    void deactivate() override;
    void retranslate() override;
    void engineSwitched(bool hasEngine) override;
    void projectSwitched(Project *project) override;
    void reconfig() override;
    void saveState() override;
    void restoreState() override;
    void setCurrentFile(ProjectFile *file) override;
    bool isModified() const override;
    bool canDiscard(const ProjectFile *file) override;
    // The sound under edit goes back into the file before the file is written.
    void save() override;
    void cut() override;
    void copy() override;
    void paste() override;
    void undo() override;
    void redo() override;
    // `line` is the index of the sound to show.
    void navigateTo(uint line, uint column) override;

    SoundWorkspace *workspace() const;
    // The controls beside the waveform: the sound selector, the selection, the volume, the
    // information of the sound. Also registered with the host under their names.
    QWidget *panel() const;
    QMenu *effectMenu() const;

    Sounds *sounds() const;
    Sound *currentSound() const;
    int currentIndex() const;
    // Shows the sound at `index` (after asking about changes in the one shown); false
    // when the user keeps the current one or there is no such sound.
    bool setCurrentSound(int index);
    // Reloads the current sound from the file; its edits are dropped.
    void refreshSound();
    // True when nothing is edited or the user agrees to lose the edits.
    bool canDiscardChanges() const;
    bool canChangeFieldValue() const;
    // The texts of the status bar and of the information label, as shown.
    QStringList statusTexts() const;
    QString infoText() const;

    // Resamples the sounds at `indexes` to `target`; with more than one a progress dialog
    // runs and its cancel button ends the walk. The number of sounds done.
    int resampleSounds(const QList<uint> &indexes, const SampleInfo &target);

    // Brings in sounds of another open project: each `indexes` entry of `from`.
    int importSounds(Sounds *from, const QList<uint> &indexes);

    // The clipboard format of the editor's copies.
    static QString mimeFormat(const SampleInfo &info);

signals:
    void soundChanged(Ovra::Sound *sound);
    void soundCountChanged();

private:
    friend class SoundEditorPrivate;
    SoundEditorPrivate *const d;
};

} // namespace Ovra
