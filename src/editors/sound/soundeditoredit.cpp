// The editing slots of the sound editor: the changes of the selected frames, the effects,
// the sounds of the file (add, delete, duplicate, change, resample, import) and the road
// of the edits back into the file.
#include "editors/sound/audiodata.h"
#include "editors/sound/resampledlg.h"
#include "editors/sound/soundeditor_p.h"
#include "editors/sound/soundworkspace.h"
#include "engine/extension.h"
#include "engine/extensionmanager.h"
#include "foundation/filedialogs.h"
#include "foundation/interface.h"
#include "foundation/prompt.h"
#include "foundation/utilities.h"
#include "project/project.h"
#include "sound/sound.h"
#include "sound/soundcodecs.h"

#include <QFile>
#include <QFileInfo>
#include <QPoint>
#include <QPointer>
#include <QProgressDialog>
#include <QSaveFile>

namespace Ovra {
namespace {

QWidget *dialogParent()
{
    Interface *host = Interface::instance();
    return host ? host->mainWidget() : nullptr;
}

bool askYesNo(const QString &title, const QString &text)
{
    Prompt question;
    question.icon = QMessageBox::Question;
    question.title = title;
    question.text = text;
    question.buttons = QMessageBox::Yes | QMessageBox::No;
    question.defaultButton = QMessageBox::No;
    question.parent = dialogParent();
    return ask(question) == QMessageBox::Yes;
}

const char *soundFilter = "Sound files (*.wav *.ogg *.flac *.mp3)";

// An identifier of the same kind as the file's others that none of them has yet.
QVariant freshIdentifier(Sounds *sounds)
{
    const uint count = sounds->count();
    const QVariant last = count ? sounds->at(count - 1)->identifier() : QVariant(QPoint(0, 0));
    QVariant candidate = last;
    for (int step = 1; step < 1 << 20; ++step) {
        if (last.type() == QVariant::Point)
            candidate = QPoint(last.toPoint().x(), last.toPoint().y() + step);
        else if (last.canConvert<int>())
            candidate = last.toInt() + step;
        else
            return QVariant();
        if (sounds->find(0, candidate) < 0)
            return candidate;
    }
    return QVariant();
}

bool readSoundFile(const QString &name, SoundSample &sample)
{
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    return loadSound(&file, fileExtension(name).constData(), sample, CodecRules::Complete) && sample.samples > 0;
}

} // namespace

void SoundEditorPrivate::remSel()
{
    uint start = 0, end = 0;
    workspace->selection(start, end);
    workspace->changeSelectedSamples(QByteArray());
    workspace->select(start, start);
}

void SoundEditorPrivate::muteSel()
{
    const QByteArray selected = workspace->selectedSamples();
    if (selected.isEmpty())
        return;
    const char silence = workspace->sound().bits > 8 ? 0 : char(128);
    workspace->changeSelectedSamples(QByteArray(selected.size(), silence));
}

// The depth handed on to the scaling is the bytes of a value rather than its bits, a
// depth the scaling doesn't know: the values come back as they went. Files made with
// the fades have always had it so, and the fades stay as they are.
void SoundEditorPrivate::fade(bool in)
{
    QByteArray bytes = workspace->selectedSamples();
    const SoundSample &sound = workspace->sound();
    const uint frameBytes = workspace->audioData()->bytesPerFrame();
    if (bytes.isEmpty() || frameBytes == 0)
        return;
    const uint n = uint(bytes.size()) / frameBytes;
    const uint valueBytes = sound.bits / 8u;
    const float step = float(1.0 / double(n - 1));
    char *data = bytes.data();
    for (uint i = 0; i < n; ++i) {
        const float gain = in ? float(i) * step : float(n - i - 1) * step;
        for (uint channel = 0; channel < sound.channels; ++channel) {
            char *value = data + i * frameBytes + channel * valueBytes;
            scaleSample(value, value, gain, quint16(sound.bits >> 3));
        }
    }
    workspace->changeSelectedSamples(bytes);
}

void SoundEditorPrivate::fadeIn()
{
    fade(true);
}

void SoundEditorPrivate::fadeOut()
{
    fade(false);
}

// The effect works on the selection; with none, on the whole sound, and the selection is
// empty again afterwards.
void SoundEditorPrivate::applyEffect(int index)
{
    const QList<Extension *> &list = ExtensionManager::list(Extension::SoundEffect);
    auto *effect = index >= 0 && index < list.size() ? dynamic_cast<SoundEffectExtension *>(list.at(index)) : nullptr;
    const uint frameBytes = workspace->audioData()->bytesPerFrame();
    if (!effect || !q->currentSound() || frameBytes == 0)
        return;
    uint start = 0, end = 0;
    workspace->selection(start, end);
    const bool whole = start == end;
    if (whole) {
        workspace->select(0, workspace->sound().samples);
        workspace->selection(start, end);
    }
    QByteArray bytes = workspace->selectedSamples();
    if (!bytes.isEmpty() && effect->apply(workspace->sound(), bytes) && workspace->changeSelectedSamples(bytes))
        workspace->select(start, start + uint(bytes.size()) / frameBytes);
    if (whole)
        workspace->select(0, 0);
}

void SoundEditorPrivate::editSave()
{
    Sound *sound = q->currentSound();
    if (!sound || !workspace->isEdited())
        return;
    if (!sound->setSample(workspace->sound())) {
        tell(QMessageBox::Critical, tr("Error"), tr("The file can't keep the sound in this form."), dialogParent());
        return;
    }
    workspace->audioData()->undoStack.setClean();
    workspace->resetModification();
    updateEnabling();
    q->contentsChanged();
}

void SoundEditorPrivate::editDiscard()
{
    if (q->currentSound())
        showSound(current);
}

void SoundEditorPrivate::add()
{
    if (!sounds)
        return;
    const QStringList names = getOpenFileNames(dialogParent(), tr("Add sounds"), q->startDirectory(),
                                               QString::fromLatin1(soundFilter));
    int last = -1;
    QStringList failed;
    for (const QString &name : names) {
        SoundSample sample;
        Sound *added = readSoundFile(name, sample) ? sounds->add(freshIdentifier(sounds), sample) : nullptr;
        if (added)
            last = int(added->index());
        else
            failed << QFileInfo(name).fileName();
    }
    if (!failed.isEmpty())
        tell(QMessageBox::Warning, tr("Warning"), tr("These files couldn't be added:\n%1").arg(failed.join(QLatin1Char('\n'))),
             dialogParent());
    if (last >= 0 && q->canDiscardChanges())
        showSound(last);
    countChanged();
    q->contentsChanged();
}

void SoundEditorPrivate::remove()
{
    if (!q->currentSound())
        return;
    Interface *host = Interface::instance();
    const bool confirm = host && host->option(QStringLiteral("confirm_delete"), false).toBool();
    if (confirm && !askYesNo(tr("Delete"), tr("Do you really want to delete the sound?")))
        return;
    const int index = current;
    workspace->setSound(SoundSample());
    current = -1;
    sounds->remove(uint(index));
    const int count = int(sounds->count());
    showSound(count == 0 ? -1 : std::min(index, count - 1));
    countChanged();
    q->contentsChanged();
}

void SoundEditorPrivate::duplicate()
{
    Sound *sound = q->currentSound();
    if (!sound || !q->canDiscardChanges())
        return;
    Sound *copy = sound->duplicate();
    if (!copy)
        return;
    showSound(int(copy->index()));
    countChanged();
    q->contentsChanged();
}

void SoundEditorPrivate::openSnd()
{
    Sound *sound = q->currentSound();
    if (!sound || !q->canDiscardChanges())
        return;
    const QString name = getOpenFileName(dialogParent(), tr("Change sound"), q->startDirectory(),
                                         QString::fromLatin1(soundFilter));
    if (name.isEmpty())
        return;
    SoundSample sample;
    if (!readSoundFile(name, sample) || !sound->setSample(sample)) {
        tell(QMessageBox::Critical, tr("Error"), tr("The sound of '%1' couldn't be used.").arg(name), dialogParent());
        return;
    }
    showSound(current);
    q->contentsChanged();
}

QString SoundEditorPrivate::defaultSampleName() const
{
    const Project *project = sounds ? sounds->project() : nullptr;
    QString folder = project ? project->option(QStringLiteral("snd_path")).toString() : QString();
    if (folder.isEmpty() && project)
        folder = project->option(QStringLiteral("project_path")).toString();
    const QString owner = project ? project->name() : QFileInfo(sounds ? sounds->fileName() : QString()).baseName();
    const Sound *sound = q->currentSound();
    return QStringLiteral("%1/%2_%3.%4")
        .arg(folder, owner, sound ? soundIdentifierText(sound->identifier()).replace(QLatin1Char(','), QLatin1Char('_')) : QString(),
             QStringLiteral("wav"));
}

void SoundEditorPrivate::saveSndAs()
{
    if (!q->currentSound())
        return;
    const QString name = getSaveFileName(dialogParent(), tr("Save sound as"), defaultSampleName(),
                                         QStringLiteral("WAV (*.wav)"));
    if (name.isEmpty())
        return;
    QSaveFile file(name);
    const bool written = file.open(QIODevice::WriteOnly)
                         && saveSound(&file, "WAV", workspace->sound(), CodecRules::Complete) && file.commit();
    if (!written) {
        tell(QMessageBox::Critical, tr("Error"), tr("The sound couldn't be written to '%1'.").arg(name), dialogParent());
        return;
    }
    if (Project *project = sounds->project())
        project->setOption(QStringLiteral("snd_path"), QFileInfo(name).absolutePath(), true);
}

void SoundEditorPrivate::resample()
{
    if (!sounds || !q->currentSound())
        return;
    workspace->stop();
    if (!q->canDiscardChanges())
        return;
    ResampleDlg dialog(sounds, workspace->sound(), dialogParent());
    if (dialog.exec() != QDialog::Accepted)
        return;
    q->resampleSounds(dialog.selectedSounds(), dialog.target());
}

void SoundEditorPrivate::projImport()
{
    Interface *host = Interface::instance();
    if (!sounds || !host)
        return;
    QList<Sounds *> sources;
    QStringList names;
    for (uint i = 0; i < host->projectCount(); ++i) {
        Project *project = host->project(i);
        if (!project)
            continue;
        for (ProjectFile *file : project->filesByType(type)) {
            if (auto *other = dynamic_cast<Sounds *>(file); other && other != sounds) {
                sources << other;
                names << QStringLiteral("%1: %2").arg(project->name(), file->displayName());
            }
        }
    }
    SndImportDlg dialog(sources, names, dialogParent());
    if (dialog.exec() != QDialog::Accepted || !dialog.source())
        return;
    if (dialog.source()->project() && dialog.source()->project() == sounds->project()) {
        tell(QMessageBox::Warning, tr("Warning"), tr("You can't import from the destination project!"), dialogParent());
        return;
    }
    q->importSounds(dialog.source(), dialog.selectedSounds());
}

// ---- the editor's walks over many sounds ------------------------------------------------

int SoundEditor::resampleSounds(const QList<uint> &indexes, const SampleInfo &target)
{
    if (!d->sounds || indexes.isEmpty())
        return 0;
    d->workspace->stop();
    std::unique_ptr<QProgressDialog> progress;
    if (indexes.size() > 1) {
        progress.reset(new QProgressDialog(tr("Resampling..."), tr("Cancel"), 0, indexes.size(), dialogParent()));
        progress->setObjectName(QStringLiteral("snd_resample_progress"));
        progress->setWindowModality(Qt::WindowModal);
        progress->setMinimumDuration(0);
        progress->setValue(0);
    }
    int done = 0;
    static_cast<ProjectFile *>(d->sounds.data())->beginChange();
    for (int i = 0; i < indexes.size(); ++i) {
        if (progress && progress->wasCanceled())
            break;
        Sound *sound = indexes.at(i) < d->sounds->count() ? d->sounds->at(indexes.at(i)) : nullptr;
        SoundSample sample = sound ? sound->sample() : SoundSample();
        // A sound that can't be converted stays as it is.
        if (sound && sample.samples > 0 && resampleSound(sample, target) && sound->setSample(sample))
            ++done;
        if (progress)
            progress->setValue(i + 1);
    }
    static_cast<ProjectFile *>(d->sounds.data())->endChange();
    d->showSound(d->current);
    if (done)
        contentsChanged();
    return done;
}

int SoundEditor::importSounds(Sounds *from, const QList<uint> &indexes)
{
    if (!d->sounds || !from || from == d->sounds)
        return 0;
    int imported = 0;
    for (uint index : indexes) {
        Sound *sound = index < from->count() ? from->at(index) : nullptr;
        if (!sound)
            continue;
        const QVariant identifier = sound->identifier();
        const SoundSample sample = sound->sample();
        const int existing = d->sounds->find(0, identifier);
        if (existing >= 0) {
            if (!askYesNo(tr("Conflict resolution!"), tr("Sound '%1' already exists, do you want to replace it?")
                                                          .arg(soundIdentifierText(identifier))))
                continue;
            if (existing == d->current && d->workspace->isEdited())
                d->workspace->audioData()->undoStack.setClean();
            if (d->sounds->at(uint(existing))->setSample(sample))
                ++imported;
        } else if (d->sounds->add(identifier, sample)) {
            ++imported;
        }
    }
    if (imported) {
        tell(QMessageBox::Information, tr("Import"), tr("%n sound(s) were imported!", nullptr, imported), dialogParent());
        d->showSound(d->current < 0 ? 0 : d->current);
        d->countChanged();
        contentsChanged();
    } else {
        tell(QMessageBox::Information, tr("Import"), tr("No sound imported!"), dialogParent());
    }
    return imported;
}

} // namespace Ovra
