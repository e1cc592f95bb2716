#include "soundworkspace.h"

#include "editors/sound/audiowaveform.h"
#include "editors/sound/soundworkspace_p.h"

#include <QScrollBar>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include <algorithm>
#include <limits>

namespace Ovra {

SoundWorkspacePrivate::SoundWorkspacePrivate(SoundWorkspace *q)
    : q(q)
{
}

void SoundWorkspacePrivate::setState(SoundSample::State newState)
{
    if (newState == state)
        return;
    state = newState;
    emit q->stateChanged(state);
}

void SoundWorkspacePrivate::updateScrollBar()
{
    AudioWaveform *waveform = widget->waveform();
    const double visible = widget->width() * waveform->framesPerPixel();
    const double hidden = std::max(0.0, double(data.sample.samples) - visible);
    const int maximum = int(std::min(hidden, double(std::numeric_limits<int>::max())));
    const QSignalBlocker blocker(scrollBar);
    scrollBar->setRange(0, maximum);
    scrollBar->setPageStep(int(std::clamp(visible, 1.0, double(std::numeric_limits<int>::max()))));
    scrollBar->setSingleStep(std::max(1, scrollBar->pageStep() / 10));
    scrollBar->setValue(int(std::min(waveform->firstFrame(), uint(maximum))));
}

void SoundWorkspacePrivate::emitSampleChanged()
{
    emit q->sampleChanged(data.sample);
}

SoundWorkspace::SoundWorkspace(Interface *interface, QWidget *parent)
    : Workspace(interface, parent)
    , d(new SoundWorkspacePrivate(this))
{
    qRegisterMetaType<SampleInfo>();
    qRegisterMetaType<SoundSample::State>();
    d->widget = new AudioSampleWidget(&d->data, this);
    d->scrollBar = new QScrollBar(Qt::Horizontal, this);
    auto *column = new QVBoxLayout;
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(d->widget, 1);
    column->addWidget(d->scrollBar);
    d->row = new QHBoxLayout(this);
    d->row->setContentsMargins(0, 0, 0, 0);
    d->row->addLayout(column, 1);

    AudioData *data = &d->data;
    connect(data, &AudioData::selectionChanged, this, &SoundWorkspace::selectionChanged);
    connect(data, &AudioData::currentSampleChanged, this, &SoundWorkspace::currentSampleChanged);
    connect(data, &AudioData::framesReplaced, this, [this] {
        d->modified = true;
        d->emitSampleChanged();
    });
    connect(d->widget, &AudioSampleWidget::toolChanged, this, &SoundWorkspace::toolChanged);
    connect(d->widget, &AudioSampleWidget::playbackEnded, this, [this] {
        d->channel = -1;
        d->setState(SoundSample::Stopped);
    });
    connect(d->widget->waveform(), &AudioWaveform::changed, this, [this] { d->updateScrollBar(); });
    connect(d->scrollBar, &QScrollBar::valueChanged, this,
            [this](int value) { d->widget->waveform()->setFirstFrame(uint(std::max(0, value))); });
}

SoundWorkspace::~SoundWorkspace()
{
    d->player.stop(-1);
}

void SoundWorkspace::setSound(const SoundSample &sample)
{
    stop();
    d->data.setSample(sample);
    d->modified = false;
    d->emitSampleChanged();
}

const SoundSample &SoundWorkspace::sound() const
{
    return d->data.sample;
}

void SoundWorkspace::select(uint start, uint end)
{
    d->data.select(start, end);
}

void SoundWorkspace::selection(uint &start, uint &end) const
{
    d->data.selection(start, end);
}

uint SoundWorkspace::selectionStart() const
{
    return d->data.selectionStart;
}

uint SoundWorkspace::selectionEnd() const
{
    return d->data.selectionEnd;
}

QByteArray SoundWorkspace::selectedSamples() const
{
    return d->data.selectedSamples();
}

bool SoundWorkspace::changeSelectedSamples(const QByteArray &bytes)
{
    return d->data.changeSelectedSamples(bytes);
}

uint SoundWorkspace::currentSample() const
{
    return d->data.currentSample;
}

void SoundWorkspace::setCurrentSample(uint frame)
{
    d->data.setCurrentSample(frame);
}

int SoundWorkspace::currentTool() const
{
    return d->widget->currentTool();
}

void SoundWorkspace::setCurrentTool(int number)
{
    d->widget->setCurrentTool(number);
}

SoundSample::State SoundWorkspace::currentState() const
{
    return d->state;
}

void SoundWorkspace::play(bool loop)
{
    if (d->state == SoundSample::Paused) {
        d->player.resume(d->channel);
        d->widget->resumeCursor();
        d->setState(SoundSample::Playing);
        return;
    }
    stop();
    const SoundSample &whole = d->data.sample;
    const uint frameBytes = d->data.bytesPerFrame();
    uint from, to;
    d->data.selection(from, to);
    if (from == to) {
        from = d->data.currentSample < whole.samples ? d->data.currentSample : 0;
        to = whole.samples;
    }
    if (from >= to || frameBytes == 0)
        return;
    SoundSample part = whole;
    part.data = whole.data.mid(int(from * frameBytes), int((to - from) * frameBytes));
    part.samples = to - from;
    // Without an output device the sound is over at once, and the cursor still shows
    // where it would be.
    d->channel = d->player.play(part, loop, float(d->volume));
    d->widget->startCursor(from, to, loop);
    d->setState(SoundSample::Playing);
}

void SoundWorkspace::pause()
{
    if (d->state != SoundSample::Playing)
        return;
    d->player.pause(d->channel);
    d->widget->pauseCursor();
    d->setState(SoundSample::Paused);
}

void SoundWorkspace::stop()
{
    if (d->state == SoundSample::Stopped)
        return;
    if (d->channel >= 0)
        d->player.stop(d->channel);
    d->channel = -1;
    d->widget->stopCursor();
    d->setState(SoundSample::Stopped);
}

void SoundWorkspace::setVolume(double volume)
{
    d->volume = std::clamp(volume, 0.0, 100.0);
    if (d->channel >= 0)
        d->player.setVolume(d->channel, float(d->volume));
}

double SoundWorkspace::volume() const
{
    return d->volume;
}

void SoundWorkspace::undo()
{
    d->data.undoStack.undo();
}

void SoundWorkspace::redo()
{
    d->data.undoStack.redo();
}

bool SoundWorkspace::isEdited() const
{
    return !d->data.undoStack.isClean();
}

bool SoundWorkspace::isModified() const
{
    return d->modified;
}

void SoundWorkspace::resetModification()
{
    d->modified = false;
    d->data.undoStack.setClean();
}

void SoundWorkspace::zoomIn()
{
    d->widget->zoomIn();
}

void SoundWorkspace::zoomOut()
{
    d->widget->zoomOut();
}

void SoundWorkspace::zoomFit()
{
    d->widget->zoomFit();
}

void SoundWorkspace::zoomActual()
{
    d->widget->zoomActual();
}

AudioSampleWidget *SoundWorkspace::sampleWidget() const
{
    return d->widget;
}

AudioData *SoundWorkspace::audioData() const
{
    return &d->data;
}

void SoundWorkspace::setSidePanel(QWidget *panel)
{
    if (panel == d->sidePanel)
        return;
    if (d->sidePanel) {
        d->row->removeWidget(d->sidePanel);
        d->sidePanel->hide();
    }
    d->sidePanel = panel;
    if (panel) {
        d->row->addWidget(panel);
        panel->show();
    }
}

QWidget *SoundWorkspace::sidePanel() const
{
    return d->sidePanel;
}

} // namespace Ovra
