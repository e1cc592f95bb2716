#pragma once

#include "editors/workspace.h"
#include "sound/soundsample.h"

#include <QMetaType>

#include <memory>

namespace Ovra {

class AudioData;
class AudioSampleWidget;
class SoundWorkspacePrivate;

// The sound view and its state: one sound with its undo history, the selection, the play
// cursor, the mouse tools, the zoom and playback. Selections are in frames.
class OVRA_EXPORT SoundWorkspace : public Workspace
{
    Q_OBJECT

public:
    explicit SoundWorkspace(Interface *interface, QWidget *parent = nullptr);
    ~SoundWorkspace() override;

    // A new sound: playback stops, the undo history and the selection start over.
    void setSound(const SoundSample &sample);
    const SoundSample &sound() const;

    void select(uint start, uint end);
    void selection(uint &start, uint &end) const;
    uint selectionStart() const;
    uint selectionEnd() const;
    QByteArray selectedSamples() const;
    bool changeSelectedSamples(const QByteArray &bytes);

    uint currentSample() const;
    void setCurrentSample(uint frame);
    int currentTool() const;
    void setCurrentTool(int number);

    SoundSample::State currentState() const;
    // Plays the selection, or with none the sound from the play cursor on.
    void play(bool loop);
    void pause();
    void stop();
    // From 0 to 100.
    void setVolume(double volume);
    double volume() const;

    void undo();
    void redo();
    bool isEdited() const;
    bool isModified() const;
    void resetModification();

    void zoomIn();
    void zoomOut();
    void zoomFit();
    void zoomActual();

    AudioSampleWidget *sampleWidget() const;
    AudioData *audioData() const;
    // A panel at the right of the waveform (the controls of the editor shown); the
    // workspace takes it as a child. One at a time; null removes it.
    void setSidePanel(QWidget *panel);
    QWidget *sidePanel() const;

signals:
    void sampleChanged(const Ovra::SampleInfo &info);
    void selectionChanged(uint start, uint end);
    void currentSampleChanged(uint frame);
    void stateChanged(Ovra::SoundSample::State state);
    void toolChanged(int number);

private:
    std::unique_ptr<SoundWorkspacePrivate> d;
};

} // namespace Ovra

Q_DECLARE_METATYPE(Ovra::SampleInfo)
Q_DECLARE_METATYPE(Ovra::SoundSample::State)
