#include "editors/sound/soundeditor.h"

#include "editors/sound/audiodata.h"
#include "editors/sound/audiosamplewidget.h"
#include "editors/sound/soundeditor_p.h"
#include "editors/sound/soundworkspace.h"
#include "engine/extension.h"
#include "engine/extensionmanager.h"
#include "foundation/interface.h"
#include "foundation/prompt.h"
#include "foundation/translator.h"
#include "project/project.h"
#include "sound/sound.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QSlider>
#include <QSpinBox>
#include <QStringListModel>
#include <QToolButton>
#include <QVBoxLayout>

#include <cmath>

namespace Ovra {
namespace {

// The string numbers of the editor's actions and controls.
enum Text : uint {
    SoundsText = 160, AddText, DeleteText, ChangeSoundText, SaveSoundText, ResampleText, DuplicateText,
    PlayText, PlayLoopText, PauseText, StopText, ImportProjectText = 173, PreviousText, SelectText,
    NextText, AllText, DeselectText, RemoveSelectedText, FillSilenceText, FadeInText, FadeOutText,
    SaveChangesText, DiscardChangesText, EffectsText, SelectionText, StartText, EndText,
    SelectionStartText, SelectionEndText, CurrentSampleText, FirstToolText
};

const char *const toolNames[] = {"snd_tool_move", "snd_tool_zoom", "snd_tool_select", "snd_tool_offset",
                                 "snd_tool_hresize", "snd_tool_vresize", "snd_tool_draw"};

const char *const mimePrefix = "audio/pcm";

} // namespace

SoundEditorPrivate::SoundEditorPrivate(SoundEditor *editor, SoundWorkspace *workspace, int fileType)
    : QObject(editor)
    , q(editor)
    , workspace(workspace)
    , type(fileType)
{
}

QAction *SoundEditorPrivate::makeAction(const char *name, uint text, const char *slot, const char *enabling,
                                        bool checkable)
{
    Interface *host = Interface::instance();
    QAction *made = host ? host->createAction(ActionScope{"sound", 0}, QString::fromLatin1(name), ovraTranslator(),
                                              text, checkable, this, slot, enabling, false)
                         : nullptr;
    if (!made) {
        // A host without actions of its own: the editor keeps working with plain ones.
        made = new QAction(ovraTranslator()->text(text), this);
        made->setObjectName(QString::fromLatin1(name));
        made->setCheckable(checkable);
        if (slot)
            connect(made, checkable ? SIGNAL(toggled(bool)) : SIGNAL(triggered()), this, slot);
        if (enabling)
            connect(this, enabling, made, SLOT(setEnabled(bool)));
    }
    return made;
}

QLabel *SoundEditorPrivate::makeLabel(const char *name, uint text)
{
    auto *label = new QLabel(text ? ovraTranslator()->text(text) : QString(), panel);
    label->setObjectName(QString::fromLatin1(name));
    registerControl(name, label);
    return label;
}

void SoundEditorPrivate::registerControl(const char *name, QObject *control)
{
    control->setObjectName(QString::fromLatin1(name));
    if (Interface *host = Interface::instance())
        host->registerControl(QString::fromLatin1(name), control);
}

void SoundEditorPrivate::buildPanel()
{
    // The host lays the panel out beside the workspace; until then it has no parent, and
    // the editor ends it.
    panel = new QWidget;
    panel->setObjectName(QStringLiteral("snd_panel"));
    auto *layout = new QVBoxLayout(panel);

    auto *soundRow = new QHBoxLayout;
    soundRow->addWidget(makeLabel("snd_sel_lb", SelectText));
    selector = new QComboBox(panel);
    selector->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    registerControl("snd_sel", selector);
    soundRow->addWidget(selector, 1);
    positionLabel = makeLabel("snd_position_lb", 0);
    positionLabel->setText(QStringLiteral("0 / 0"));
    soundRow->addWidget(positionLabel);
    layout->addLayout(soundRow);

    auto *form = new QFormLayout;
    form->addRow(makeLabel("snd_selection", SelectionText));
    startSpin = new QSpinBox(panel);
    registerControl("snd_sel_start", startSpin);
    endSpin = new QSpinBox(panel);
    registerControl("snd_sel_end", endSpin);
    currentSpin = new QSpinBox(panel);
    registerControl("snd_curr_sample", currentSpin);
    QLabel *startLabel = makeLabel("snd_start_lb", StartText);
    QLabel *endLabel = makeLabel("snd_end_lb", EndText);
    startLabel->setToolTip(ovraTranslator()->text(SelectionStartText));
    endLabel->setToolTip(ovraTranslator()->text(SelectionEndText));
    form->addRow(startLabel, startSpin);
    form->addRow(endLabel, endSpin);
    // The long names of the two bounds, for a host that lays the controls out itself.
    makeLabel("snd_sel_start_lb", SelectionStartText)->hide();
    makeLabel("snd_sel_end_lb", SelectionEndText)->hide();
    form->addRow(makeLabel("snd_curr_sample_lb", CurrentSampleText), currentSpin);
    volume = new QSlider(Qt::Horizontal, panel);
    volume->setRange(0, 100);
    volume->setValue(int(workspace->volume()));
    registerControl("snd_volume", volume);
    form->addRow(volume);
    layout->addLayout(form);

    effects = new QMenu(ovraTranslator()->text(EffectsText), panel);
    effects->setObjectName(QStringLiteral("snd_effects"));
    effectsButton = new QToolButton(panel);
    effectsButton->setText(effects->title());
    effectsButton->setMenu(effects);
    effectsButton->setPopupMode(QToolButton::InstantPopup);
    registerControl("snd_effects", effectsButton);
    layout->addWidget(effectsButton);

    infoLabel = makeLabel("snd_info_lb", 0);
    infoLabel->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(infoLabel);
    layout->addStretch(1);

    connect(selector, QOverload<int>::of(&QComboBox::activated), this, &SoundEditorPrivate::setPos);
    connect(startSpin, QOverload<int>::of(&QSpinBox::valueChanged), this, &SoundEditorPrivate::startChanged);
    connect(endSpin, QOverload<int>::of(&QSpinBox::valueChanged), this, &SoundEditorPrivate::endChanged);
    connect(currentSpin, QOverload<int>::of(&QSpinBox::valueChanged), this, &SoundEditorPrivate::currChanged);
    connect(volume, &QSlider::valueChanged, this, &SoundEditorPrivate::volumeChanged);
}

void SoundEditorPrivate::buildActions()
{
    struct Entry
    {
        const char *name;
        uint text;
        const char *slot;
        const char *enabling;
    };
    const Entry entries[] = {
        {"snd_add", AddText, SLOT(add()), SIGNAL(fileEnabled(bool))},
        {"snd_delete", DeleteText, SLOT(remove()), SIGNAL(soundEnabled(bool))},
        {"snd_duplicate", DuplicateText, SLOT(duplicate()), SIGNAL(soundEnabled(bool))},
        {"snd_prev", PreviousText, SLOT(previous()), SIGNAL(previousEnabled(bool))},
        {"snd_next", NextText, SLOT(next()), SIGNAL(nextEnabled(bool))},
        {"snd_open_sample", ChangeSoundText, SLOT(openSnd()), SIGNAL(soundEnabled(bool))},
        {"snd_save_sample", SaveSoundText, SLOT(saveSndAs()), SIGNAL(soundEnabled(bool))},
        {"snd_import_proj", ImportProjectText, SLOT(projImport()), SIGNAL(fileEnabled(bool))},
        {"snd_resample", ResampleText, SLOT(resample()), SIGNAL(soundEnabled(bool))},
        {"snd_play", PlayText, SLOT(play()), SIGNAL(soundEnabled(bool))},
        {"snd_play_loop", PlayLoopText, SLOT(playLoop()), SIGNAL(soundEnabled(bool))},
        {"snd_pause", PauseText, SLOT(pause()), SIGNAL(playingEnabled(bool))},
        {"snd_stop", StopText, SLOT(stop()), SIGNAL(soundEnabled(bool))},
        {"snd_select_all", AllText, SLOT(selAll()), SIGNAL(soundEnabled(bool))},
        {"snd_select_none", DeselectText, SLOT(selNone()), SIGNAL(selectionEnabled(bool))},
        {"snd_remove_selection", RemoveSelectedText, SLOT(remSel()), SIGNAL(selectionEnabled(bool))},
        {"snd_fill_silence", FillSilenceText, SLOT(muteSel()), SIGNAL(selectionEnabled(bool))},
        {"snd_fade_in", FadeInText, SLOT(fadeIn()), SIGNAL(selectionEnabled(bool))},
        {"snd_fade_out", FadeOutText, SLOT(fadeOut()), SIGNAL(selectionEnabled(bool))},
        {"snd_save_changes", SaveChangesText, SLOT(editSave()), SIGNAL(editedEnabled(bool))},
        {"snd_discard_changes", DiscardChangesText, SLOT(editDiscard()), SIGNAL(editedEnabled(bool))},
    };
    for (const Entry &entry : entries)
        makeAction(entry.name, entry.text, entry.slot, entry.enabling);
    tools = new QActionGroup(this);
    tools->setExclusive(true);
    for (int i = 0; i < 7; ++i) {
        QAction *tool = makeAction(toolNames[i], FirstToolText + uint(i), SLOT(currToolChanged()),
                                   SIGNAL(soundEnabled(bool)), true);
        tool->setData(i + 1);
        tools->addAction(tool);
        toolActions << tool;
    }
}

// One action for each sound effect that the loaded engines bring, in the order they came.
void SoundEditorPrivate::buildEffects()
{
    effects->clear();
    const QList<Extension *> &list = ExtensionManager::list(Extension::SoundEffect);
    for (int i = 0; i < list.size(); ++i) {
        QAction *effect = effects->addAction(QString::fromUtf8(list.at(i)->name()));
        effect->setObjectName(QString::fromLatin1(list.at(i)->format()));
        effect->setData(i);
        connect(effect, &QAction::triggered, this, &SoundEditorPrivate::effectTriggered);
    }
    effectsButton->setEnabled(!list.isEmpty() && current >= 0);
}

void SoundEditorPrivate::setSpinSilently(QSpinBox *spin, int value, int maximum)
{
    const QSignalBlocker blocker(spin);
    spin->setMaximum(maximum);
    spin->setValue(value);
}

void SoundEditorPrivate::updateEnabling()
{
    const bool hasFile = !sounds.isNull();
    const bool hasSound = q->currentSound() != nullptr;
    uint start = 0, end = 0;
    workspace->selection(start, end);
    const int count = hasFile ? int(sounds->count()) : 0;
    emit fileEnabled(hasFile);
    emit soundEnabled(hasSound);
    emit selectionEnabled(hasSound && start != end);
    emit editedEnabled(hasSound && workspace->isEdited());
    emit previousEnabled(hasSound && current > 0);
    emit nextEnabled(hasSound && current + 1 < count);
    emit playingEnabled(hasSound && workspace->currentState() == SoundSample::Playing);
    effectsButton->setEnabled(hasSound && !effects->isEmpty());
    selector->setEnabled(count > 0);
    for (QSpinBox *spin : {startSpin, endSpin, currentSpin})
        spin->setEnabled(hasSound);
}

// The sound at `index` (or none) goes into the workspace, unedited.
void SoundEditorPrivate::showSound(int index)
{
    const int count = sounds ? int(sounds->count()) : 0;
    current = index >= 0 && index < count ? index : -1;
    Sound *sound = q->currentSound();
    showing = true;
    workspace->setSound(sound ? sound->sample() : SoundSample());
    showing = false;
    if (sound && sounds->selected() != uint(current))
        sounds->setSelected(uint(current));
    {
        const QSignalBlocker blocker(selector);
        selector->setCurrentIndex(current);
    }
    sampleChanged(workspace->sound());
    selectionChanged(workspace->selectionStart(), workspace->selectionEnd());
    selPosChanged();
    emit q->soundChanged(sound);
}

// ---- slots ------------------------------------------------------------------------------

void SoundEditorPrivate::toolChanged(int number)
{
    for (QAction *tool : qAsConst(toolActions)) {
        const QSignalBlocker blocker(tool);
        tool->setChecked(tool->data().toInt() == number);
    }
}

void SoundEditorPrivate::stateChanged(SoundSample::State)
{
    updateEnabling();
    updateStatus();
}

void SoundEditorPrivate::sampleChanged(const SampleInfo &)
{
    const SoundSample &sound = workspace->sound();
    const int frames = int(std::min<quint32>(sound.samples, quint32(std::numeric_limits<int>::max())));
    setSpinSilently(startSpin, int(workspace->selectionStart()), frames);
    setSpinSilently(endSpin, int(workspace->selectionEnd()), frames);
    setSpinSilently(currentSpin, int(workspace->currentSample()), frames);
    infoLabel->setText(q->infoText());
    updateEnabling();
    updateStatus();
    if (!showing)
        emit q->modified();
}

void SoundEditorPrivate::selectionChanged(uint start, uint end)
{
    const int frames = int(std::min<quint32>(workspace->sound().samples, quint32(std::numeric_limits<int>::max())));
    setSpinSilently(startSpin, int(start), frames);
    setSpinSilently(endSpin, int(end), frames);
    updateEnabling();
    updateStatus();
}

void SoundEditorPrivate::currSampleChanged(uint frame)
{
    setSpinSilently(currentSpin, int(frame), currentSpin->maximum());
    updateStatus();
}

void SoundEditorPrivate::currToolChanged()
{
    auto *tool = qobject_cast<QAction *>(sender());
    if (tool && tool->isChecked())
        workspace->setCurrentTool(tool->data().toInt());
}

void SoundEditorPrivate::setPos(int index)
{
    if (index == current)
        return;
    if (!q->canDiscardChanges()) {
        const QSignalBlocker blocker(selector);
        selector->setCurrentIndex(current);
        return;
    }
    showSound(index);
}

void SoundEditorPrivate::effectTriggered()
{
    auto *effect = qobject_cast<QAction *>(sender());
    if (effect)
        applyEffect(effect->data().toInt());
}

void SoundEditorPrivate::updateStatus()
{
    const bool hasSound = q->currentSound() != nullptr;
    const SoundSample &sound = workspace->sound();
    static const char *const states[] = {QT_TR_NOOP("Stopped"), QT_TR_NOOP("Playing"), QT_TR_NOOP("Paused")};
    status[0] = tr("Status: %1").arg(tr(states[int(workspace->currentState())]));
    uint start = 0, end = 0;
    workspace->selection(start, end);
    if (hasSound) {
        status[1] = tr("Sample: %1/%2, Selection: %3/%4")
                        .arg(workspace->currentSample())
                        .arg(sound.samples)
                        .arg(start)
                        .arg(end);
        const double rate = sound.frequency ? double(sound.frequency) : 1.0;
        auto seconds = [rate](uint frames) { return QString::number(frames / rate, 'f', 3); };
        status[2] = tr("Time: %1/%2s, Selection: %3/%4s")
                        .arg(seconds(workspace->currentSample()), seconds(sound.samples), seconds(start),
                             seconds(end));
    } else {
        status[1] = tr("Sample: ---/---");
        status[2] = tr("Time: ---/---");
    }
    if (Interface *host = Interface::instance(); host && q->isActive()) {
        host->setStatusText(0, status[0]);
        host->setStatusText(1, status[1]);
        host->setStatusText(3, status[2]);
    }
}

void SoundEditorPrivate::selPosChanged()
{
    const int count = sounds ? int(sounds->count()) : 0;
    positionLabel->setText(current >= 0 ? QStringLiteral("%1 / %2").arg(current + 1).arg(count)
                                        : QStringLiteral("0 / 0"));
}

void SoundEditorPrivate::volumeChanged(int value)
{
    workspace->setVolume(value);
}

void SoundEditorPrivate::startChanged(int value)
{
    workspace->select(uint(value), workspace->selectionEnd());
}

void SoundEditorPrivate::endChanged(int value)
{
    workspace->select(workspace->selectionStart(), uint(value));
}

void SoundEditorPrivate::currChanged(int value)
{
    workspace->setCurrentSample(uint(value));
}

void SoundEditorPrivate::previous()
{
    if (current > 0)
        setPos(current - 1);
}

void SoundEditorPrivate::next()
{
    if (sounds && current + 1 < int(sounds->count()))
        setPos(current + 1);
}

void SoundEditorPrivate::play()
{
    workspace->play(false);
}

void SoundEditorPrivate::playLoop()
{
    workspace->play(true);
}

void SoundEditorPrivate::pause()
{
    workspace->pause();
}

void SoundEditorPrivate::stop()
{
    workspace->stop();
}

void SoundEditorPrivate::selAll()
{
    workspace->select(0, workspace->sound().samples);
}

void SoundEditorPrivate::selNone()
{
    workspace->select(0, 0);
}

void SoundEditorPrivate::countChanged()
{
    if (sounds && current >= int(sounds->count()))
        showSound(int(sounds->count()) - 1);
    selPosChanged();
    updateEnabling();
    emit q->soundCountChanged();
}

// ---- the editor -------------------------------------------------------------------------

SoundEditor::SoundEditor(SoundWorkspace *workspace, int fileType)
    : d(new SoundEditorPrivate(this, workspace, fileType))
{
    d->buildPanel();
    d->buildActions();
    d->buildEffects();
    if (m_interface)
        d->editorAction = m_interface->editorAction(QStringLiteral("editor_snd"), ovraTranslator(), SoundsText);
    connect(workspace, &SoundWorkspace::toolChanged, d, &SoundEditorPrivate::toolChanged);
    connect(workspace, &SoundWorkspace::stateChanged, d, &SoundEditorPrivate::stateChanged);
    connect(workspace, &SoundWorkspace::sampleChanged, d, &SoundEditorPrivate::sampleChanged);
    connect(workspace, &SoundWorkspace::selectionChanged, d, &SoundEditorPrivate::selectionChanged);
    connect(workspace, &SoundWorkspace::currentSampleChanged, d, &SoundEditorPrivate::currSampleChanged);
    // The history knows it is edited only once a step is on it, after the bytes changed.
    connect(&workspace->audioData()->undoStack, &QUndoStack::cleanChanged, d, &SoundEditorPrivate::updateEnabling);
    d->toolChanged(workspace->currentTool());
    d->showSound(-1);
}

SoundEditor::~SoundEditor()
{
    delete d->panel.data();
}

QAction *SoundEditor::action() const
{
    return d->editorAction;
}

const char *SoundEditor::name() const
{
    return "sounds";
}

QWidget *SoundEditor::widget()
{
    return d->workspace;
}

int SoundEditor::fileType() const
{
    return d->type;
}

void SoundEditor::activate()
{
    Editor::activate();
    d->workspace->setSidePanel(d->panel);
    if (m_interface)
        m_interface->setWorkspace(d->workspace);
    d->updateStatus();
}

void SoundEditor::deactivate()
{
    d->workspace->stop();
    Editor::deactivate();
}

void SoundEditor::retranslate()
{
    d->effects->setTitle(ovraTranslator()->text(EffectsText));
    d->effectsButton->setText(d->effects->title());
    d->infoLabel->setText(infoText());
    d->updateStatus();
}

void SoundEditor::engineSwitched(bool)
{
    d->buildEffects();
    d->updateEnabling();
}

void SoundEditor::projectSwitched(Project *project)
{
    const QList<ProjectFile *> files = project ? project->filesByType(d->type) : QList<ProjectFile *>();
    setCurrentFile(files.isEmpty() ? nullptr : files.first());
}

void SoundEditor::reconfig()
{
    d->workspace->sampleWidget()->reconfig();
}

void SoundEditor::saveState()
{
    if (m_interface)
        m_interface->setOption(QStringLiteral("snd_volume"), d->volume->value());
}

void SoundEditor::restoreState()
{
    if (m_interface)
        d->volume->setValue(m_interface->option(QStringLiteral("snd_volume"), 100).toInt());
}

void SoundEditor::setCurrentFile(ProjectFile *file)
{
    auto *sounds = dynamic_cast<Sounds *>(file);
    if (sounds == d->sounds && file == m_currentFile)
        return;
    if (d->sounds)
        disconnect(d->sounds, nullptr, d, nullptr);
    FileEditor::setCurrentFile(sounds);
    d->sounds = sounds;
    // A combo box can't be left without a model: with no sounds it gets an empty one.
    if (sounds)
        d->selector->setModel(sounds);
    else
        d->selector->setModel(new QStringListModel(d->selector));
    if (sounds) {
        connect(sounds, &QAbstractItemModel::rowsInserted, d, &SoundEditorPrivate::countChanged);
        connect(sounds, &QAbstractItemModel::rowsRemoved, d, &SoundEditorPrivate::countChanged);
        connect(sounds, &QAbstractItemModel::modelReset, d, &SoundEditorPrivate::countChanged);
    }
    const int count = sounds ? int(sounds->count()) : 0;
    const int selected = sounds ? int(sounds->selected()) : -1;
    d->showSound(count == 0 ? -1 : selected < count ? selected : 0);
    emit soundCountChanged();
}

bool SoundEditor::isModified() const
{
    return FileEditor::isModified() || (currentSound() && d->workspace->isEdited());
}

bool SoundEditor::canDiscard(const ProjectFile *file)
{
    if (file == m_currentFile && !canDiscardChanges())
        return false;
    return FileEditor::canDiscard(file);
}

void SoundEditor::save()
{
    if (currentSound() && d->workspace->isEdited())
        d->editSave();
    FileEditor::save();
}

void SoundEditor::copy()
{
    const QByteArray bytes = d->workspace->selectedSamples();
    if (bytes.isEmpty())
        return;
    auto *mime = new QMimeData;
    mime->setData(mimeFormat(d->workspace->sound()), bytes);
    QApplication::clipboard()->setMimeData(mime);
}

void SoundEditor::cut()
{
    if (d->workspace->selectedSamples().isEmpty())
        return;
    copy();
    d->remSel();
}

// The first clipboard format of raw frames; its shape is read from the parameters behind
// it, and a shape other than the sound's own is converted first.
void SoundEditor::paste()
{
    const QMimeData *mime = QApplication::clipboard()->mimeData();
    if (!mime || !currentSound())
        return;
    QString format;
    for (const QString &candidate : mime->formats()) {
        if (candidate.startsWith(QLatin1String(mimePrefix))) {
            format = candidate;
            break;
        }
    }
    if (format.isEmpty())
        return;
    SoundSample pasted;
    pasted.channels = 0;
    pasted.bits = 0;
    pasted.frequency = 0;
    const QStringList parts = format.split(QLatin1Char(';'));
    for (const QString &raw : parts.mid(1)) {
        const QString part = raw.trimmed();
        if (part.startsWith(QLatin1String("channels=")))
            pasted.channels = quint16(part.mid(9).toUInt());
        else if (part.startsWith(QLatin1String("precision=")))
            pasted.bits = quint16(part.mid(10).toUInt());
        else if (part.startsWith(QLatin1String("frequency=")))
            pasted.frequency = part.mid(10).toUInt();
    }
    const uint frameBytes = uint(pasted.channels) * (pasted.bits / 8u);
    if (frameBytes == 0 || pasted.frequency == 0)
        return;
    pasted.data = mime->data(format);
    pasted.samples = quint32(uint(pasted.data.size()) / frameBytes);
    pasted.data.truncate(int(pasted.samples * frameBytes));
    const SoundSample &own = d->workspace->sound();
    if (pasted.samples == 0)
        return;
    // Frames of the sound's own shape go in as they are: the converter works through
    // floats and would round 8- and 24-bit values that need no change at all.
    const bool sameShape = pasted.channels == own.channels && pasted.bits == own.bits
                           && pasted.frequency == own.frequency;
    if (!sameShape && !resampleSound(pasted, own))
        return;
    uint start = 0, end = 0;
    d->workspace->selection(start, end);
    if (d->workspace->changeSelectedSamples(pasted.data))
        d->workspace->select(start, start + uint(pasted.data.size()) / d->workspace->audioData()->bytesPerFrame());
}

void SoundEditor::undo()
{
    d->workspace->undo();
}

void SoundEditor::redo()
{
    d->workspace->redo();
}

void SoundEditor::navigateTo(uint line, uint)
{
    setCurrentSound(int(line));
}

SoundWorkspace *SoundEditor::workspace() const
{
    return d->workspace;
}

QWidget *SoundEditor::panel() const
{
    return d->panel;
}

QMenu *SoundEditor::effectMenu() const
{
    return d->effects;
}

Sounds *SoundEditor::sounds() const
{
    return d->sounds;
}

Sound *SoundEditor::currentSound() const
{
    return d->sounds && d->current >= 0 && d->current < int(d->sounds->count()) ? d->sounds->at(uint(d->current))
                                                                                 : nullptr;
}

int SoundEditor::currentIndex() const
{
    return currentSound() ? d->current : -1;
}

bool SoundEditor::setCurrentSound(int index)
{
    if (!d->sounds || index < 0 || index >= int(d->sounds->count()))
        return false;
    d->setPos(index);
    return d->current == index;
}

void SoundEditor::refreshSound()
{
    d->showSound(d->current);
}

bool SoundEditor::canDiscardChanges() const
{
    if (!currentSound() || !d->workspace->isEdited())
        return true;
    Prompt question;
    question.icon = QMessageBox::Question;
    question.title = tr("Discard changes?");
    question.text = tr("Do you want to discard the changes made in the current sound?");
    question.buttons = QMessageBox::Yes | QMessageBox::No;
    question.defaultButton = QMessageBox::No;
    question.parent = m_interface ? m_interface->mainWidget() : nullptr;
    return ask(question) == QMessageBox::Yes;
}

bool SoundEditor::canChangeFieldValue() const
{
    return currentSound() != nullptr;
}

QStringList SoundEditor::statusTexts() const
{
    return d->status;
}

QString SoundEditor::infoText() const
{
    if (!currentSound())
        return tr("Channels: ---\nSample rate: ---\nBits per sample: ---\nDuration: ---\nTick count: ---");
    const SoundSample &sound = d->workspace->sound();
    const double duration = sound.frequency ? double(sound.samples) / sound.frequency : 0.0;
    return tr("Channels: %1 (%2)\nSample rate: %3 Hz\nBits per sample: %4 bits\nDuration: %5 seconds")
        .arg(sound.channels)
        .arg(sound.channels == 1 ? tr("Mono") : tr("Stereo"))
        .arg(sound.frequency)
        .arg(sound.bits)
        .arg(QString::number(duration, 'f', 3));
}

QString SoundEditor::mimeFormat(const SampleInfo &info)
{
    return QStringLiteral("audio/pcm;precision=%1;channels=%2;frequency=%3")
        .arg(info.bits)
        .arg(info.channels)
        .arg(info.frequency);
}

} // namespace Ovra
