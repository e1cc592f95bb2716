#pragma once

#include "editors/sound/soundeditor.h"
#include "sound/soundsample.h"

#include <QObject>
#include <QPointer>

class QAction;
class QActionGroup;
class QComboBox;
class QLabel;
class QMenu;
class QSlider;
class QSpinBox;
class QToolButton;

namespace Ovra {

class SoundEditorPrivate : public QObject
{
    Q_OBJECT

public:
    SoundEditorPrivate(SoundEditor *editor, SoundWorkspace *workspace, int fileType);

    void buildPanel();
    void buildActions();
    void buildEffects();
    QAction *makeAction(const char *name, uint text, const char *slot, const char *enabling,
                        bool checkable = false);
    QLabel *makeLabel(const char *name, uint text);
    void registerControl(const char *name, QObject *control);
    void showSound(int index);
    void applyEffect(int index);
    // Multiplies every value of the selection by the gain of its frame; the gain of
    // frame `i` of `n` comes from `gainOf`.
    void fade(bool in);
    QString defaultSampleName() const;
    void setSpinSilently(QSpinBox *spin, int value, int maximum);

    SoundEditor *q;
    SoundWorkspace *workspace;
    int type;
    QPointer<Sounds> sounds;
    int current = -1;
    QAction *editorAction = nullptr;
    QPointer<QWidget> panel;
    QComboBox *selector = nullptr;
    QLabel *positionLabel = nullptr;
    QLabel *infoLabel = nullptr;
    QSpinBox *startSpin = nullptr;
    QSpinBox *endSpin = nullptr;
    QSpinBox *currentSpin = nullptr;
    QSlider *volume = nullptr;
    QMenu *effects = nullptr;
    QToolButton *effectsButton = nullptr;
    QActionGroup *tools = nullptr;
    QList<QAction *> toolActions;
    QStringList status{QString(), QString(), QString()};
    bool showing = false;

signals:
    void fileEnabled(bool enabled);
    void soundEnabled(bool enabled);
    void selectionEnabled(bool enabled);
    void editedEnabled(bool enabled);
    void previousEnabled(bool enabled);
    void nextEnabled(bool enabled);
    void playingEnabled(bool enabled);

public slots:
    void toolChanged(int number);
    void stateChanged(Ovra::SoundSample::State state);
    void sampleChanged(const Ovra::SampleInfo &info);
    void selectionChanged(uint start, uint end);
    void currSampleChanged(uint frame);
    void currToolChanged();
    void setPos(int index);
    void effectTriggered();
    void updateStatus();
    void selPosChanged();
    void volumeChanged(int value);
    void startChanged(int value);
    void endChanged(int value);
    void currChanged(int value);
    void previous();
    void next();
    void duplicate();
    void resample();
    void openSnd();
    void saveSndAs();
    void play();
    void playLoop();
    void pause();
    void stop();
    void projImport();
    void selAll();
    void selNone();
    void remSel();
    void muteSel();
    void fadeIn();
    void fadeOut();
    void editSave();
    void editDiscard();
    void add();
    void remove();
    void countChanged();
    void updateEnabling();
};

} // namespace Ovra
