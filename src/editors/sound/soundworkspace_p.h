#pragma once

#include "editors/sound/audiodata.h"
#include "editors/sound/audiosamplewidget.h"
#include "sound/soundplayer.h"
#include "sound/soundsample.h"

#include <QPointer>

class QHBoxLayout;
class QScrollBar;

namespace Ovra {

class SoundWorkspace;

class SoundWorkspacePrivate
{
public:
    explicit SoundWorkspacePrivate(SoundWorkspace *q);

    void setState(SoundSample::State state);
    void updateScrollBar();
    void emitSampleChanged();

    SoundWorkspace *q;
    AudioData data;
    AudioSampleWidget *widget = nullptr;
    QScrollBar *scrollBar = nullptr;
    QHBoxLayout *row = nullptr;
    QPointer<QWidget> sidePanel;
    SoundPlayer player{1};
    int channel = -1;
    SoundSample::State state = SoundSample::Stopped;
    double volume = 100.0;
    bool modified = false;
};

} // namespace Ovra
