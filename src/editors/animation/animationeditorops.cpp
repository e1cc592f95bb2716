// The operations of the animation editor over whole animations and files: adding,
// deleting and copying animations, the batch changes of frames and boxes, the GIF
// export, the exchange with files and other projects, and their dialogs.
#include "editors/animation/animationeditor_p.h"

#include "code/animationcode.h"
#include "code/animations.h"
#include "code/framecode.h"
#include "editors/animation/animalign.h"
#include "editors/animation/animedittxt.h"
#include "editors/animation/gifdialog.h"
#include "editors/code/codeeditor.h"
#include "engine/engine.h"
#include "engine/extension.h"
#include "engine/extensionmanager.h"
#include "foundation/filedialogs.h"
#include "foundation/interface.h"
#include "foundation/itemsdialog.h"
#include "foundation/progress.h"
#include "foundation/prompt.h"
#include "image/gifimage.h"
#include "project/project.h"

#include <QFileInfo>
#include <QInputDialog>
#include <QSaveFile>
#include <QStandardItemModel>

#include <memory>

namespace Ovra {

namespace {

QWidget *dialogParent(Interface *host)
{
    return host ? host->mainWidget() : nullptr;
}

bool confirmed(Interface *host, const QString &title, const QString &text)
{
    Prompt prompt;
    prompt.icon = QMessageBox::Question;
    prompt.title = title;
    prompt.text = text;
    prompt.buttons = QMessageBox::Yes | QMessageBox::No;
    prompt.defaultButton = QMessageBox::No;
    prompt.parent = dialogParent(host);
    return ask(prompt) == QMessageBox::Yes;
}

// The folder a file dialog starts in: the option's, else the project's.
QString startFolder(const Animations *animations, const QString &option)
{
    QString folder = animations->option(option).toString();
    if (folder.isEmpty())
        folder = animations->option(QStringLiteral("project_path")).toString();
    return folder;
}

// Two frames show the same sprite: by the engine's reference when both have one, else
// by the sprite objects.
bool sameSprite(const FrameCode *a, const FrameCode *b)
{
    const QVariant idA = a->spriteId();
    const QVariant idB = b->spriteId();
    if (idA.isValid() && idB.isValid())
        return idA == idB;
    return a->sprite() && a->sprite() == b->sprite();
}

QList<QRect> rectsOf(const ContactBoxesCode *boxes)
{
    QList<QRect> rects;
    for (uint i = 0; boxes && i < boxes->count(); ++i) {
        if (const ContactBoxCode *box = boxes->at(i))
            rects.append(box->rect());
    }
    return rects;
}

// The animation converter of the kind for the engine's animation files, or null.
template<typename Converter>
Converter *converterFor(Interface *host, Extension::Type kind)
{
    Engine *engine = host ? host->engine() : nullptr;
    if (!engine)
        return nullptr;
    const QString pattern = engine->queryString(Engine::AnimationFilePattern, 0);
    for (Extension *extension : ExtensionManager::list(kind)) {
        auto *converter = dynamic_cast<Converter *>(extension);
        if (converter && converter->filePattern() == pattern)
            return converter;
    }
    return nullptr;
}

// Ticks the rows of the chooser that are `checked` and runs it; the rows the user ticked,
// empty when cancelled.
QList<int> choose(Interface *host, const QString &name, const QString &title, QAbstractItemModel *model,
                  const QList<int> &checked)
{
    if (!host)
        return {};
    std::unique_ptr<ItemsDialog> dialog(host->itemsDialog(host->mainWidget(), name, title, model, 0));
    if (!dialog)
        return {};
    for (int row : checked)
        dialog->setChecked(row, true);
    if (dialog->exec() != QDialog::Accepted)
        return {};
    return dialog->checkedRows();
}

} // namespace

int AnimationEditor::optimizeAnimations(Animations *)
{
    return -1;
}

void AnimationEditorPrivate::add()
{
    makeActive();
    if (!animations)
        return;
    AnimationCode *added = animations->add(animations->newIdentifier().toString());
    const int row = animations->indexOf(added);
    if (row >= 0)
        q->selectAnimation(row);
}

void AnimationEditorPrivate::del()
{
    makeActive();
    if (!animations || !animation)
        return;
    const int row = animations->indexOf(animation);
    if (row < 0)
        return;
    if (animations->option(QStringLiteral("confirm_delete")).toBool()
        && !confirmed(interface, tr("Confirmation"), tr("Do you really want to delete the animation?")))
        return;
    animations->remove(uint(row));
    if (animations->count() > 0)
        q->selectAnimation(qMin(row, int(animations->count()) - 1));
    else
        updateState();
}

void AnimationEditorPrivate::textEditClosed()
{
    if (!textEditor)
        return;
    if (animations) {
        animations->setOption(QStringLiteral("anim_editcode_geometry"), textEditor->saveGeometry(), true, true);
    } else if (interface) {
        interface->setOption(QStringLiteral("anim_editcode_geometry"), textEditor->saveGeometry());
    }
    textEditor->deleteLater();
    textEditor.clear();
}

void AnimationEditorPrivate::editCode(bool checked)
{
    makeActive();
    q->setEditCodeMode(checked);
}

void AnimationEditorPrivate::editAnimCode()
{
    makeActive();
    if (!animations || !animation)
        return;
    if (!textEditor) {
        textEditor = new AnimEditTxt(dialogParent(interface));
        textEditor->setAttribute(Qt::WA_DeleteOnClose, false);
        if (interface) {
            QFont font(interface->option(QStringLiteral("font_name"), QStringLiteral("Courier")).toString(),
                       interface->option(QStringLiteral("font_size"), 10).toInt());
            textEditor->editor()->setFont(font);
            const QColor foreground = interface->color(QStringLiteral("foreground"), QColor(Qt::black));
            textEditor->editor()->setStyleSheet(
                QStringLiteral("QPlainTextEdit { color: %1; }").arg(foreground.name()));
        }
        const QByteArray geometry = animations->option(QStringLiteral("anim_editcode_geometry")).toByteArray();
        if (!geometry.isEmpty())
            textEditor->restoreGeometry(geometry);
        connect(textEditor.data(), &QDialog::finished, this, &AnimationEditorPrivate::textEditClosed);
        connect(textEditor.data(), &AnimEditTxt::applied, this, [this] { reportAnimationChanged(true); });
    }
    textEditor->setAnimation(animations, animation);
    textEditor->show();
    textEditor->raise();
    textEditor->activateWindow();
}

void AnimationEditorPrivate::duplicate()
{
    makeActive();
    if (!animations || !animation)
        return;
    const int row = animations->indexOf(animation);
    if (row < 0)
        return;
    QString name;
    if (confirmed(interface, tr("Duplicate animation"), tr("Do you want to define a new identifier?"))) {
        bool ok = false;
        name = QInputDialog::getText(dialogParent(interface), tr("Duplicate animation"), tr("Identifier:"),
                                     QLineEdit::Normal, animations->newIdentifier().toString(), &ok)
                   .trimmed();
        if (!ok)
            return;
    }
    animations->duplicate(uint(row), name);
    if (int(animations->count()) > row + 1)
        q->selectAnimation(row + 1);
}

void AnimationEditorPrivate::saveGIF()
{
    makeActive();
    if (!animations || !animation)
        return;
    QWidget *parent = dialogParent(interface);
    if (animation->frameCount() == 0) {
        tell(QMessageBox::Warning, tr("Warning"), tr("You can't save an empty animation as GIF."), parent);
        return;
    }
    const QString fileName = getSaveFileName(parent, tr("Save animation as GIF"),
                                             startFolder(animations, QStringLiteral("gif_path")),
                                             tr("GIF images (*.gif)"));
    if (fileName.isEmpty())
        return;
    GIFDialog options(parent);
    if (options.exec() != QDialog::Accepted)
        return;
    animations->setOption(QStringLiteral("gif_path"), QFileInfo(fileName).absolutePath(), true, false);

    // Written beside and put in place only when whole: a failed export leaves the old file.
    QSaveFile file(fileName);
    const bool saved = file.open(QIODevice::WriteOnly)
                       && Ovra::saveGIF(&file, GIFDialog::framesOf(animation), options.scale(), options.velocity(),
                                        options.sharedPalette(), options.loop(), CodecRules::Complete)
                       && file.commit();
    if (!saved) {
        tell(QMessageBox::Critical, tr("Error"), tr("Can't save the animation to '%1'!").arg(fileName), parent);
        return;
    }
    setStatus(tr("Animation saved to '%1'").arg(QFileInfo(fileName).fileName()));
}

// Reads one value of the selected frame and writes it on every frame behind it, as one
// undo step; the frames before it keep theirs.
template<typename Read, typename Write>
static bool setOnNextFrames(AnimationEditorPrivate *d, Read read, Write write)
{
    if (!d->animations || !d->animation || d->animation->frameCount() < 2 || !d->frame)
        return false;
    const int selected = d->animation->indexOfFrame(d->frame);
    if (selected < 0)
        return false;
    const auto value = read(d->frame);
    ++d->updating;
    d->animations->beginChange();
    for (uint index = uint(selected) + 1; index < d->animation->frameCount(); ++index)
        write(d->animation->frameAt(index), value);
    d->animations->endChange();
    --d->updating;
    return true;
}

void AnimationEditorPrivate::frameAllOffset()
{
    makeActive();
    if (setOnNextFrames(
            this, [](FrameCode *frame) { return frame->offset(); },
            [](FrameCode *frame, QPoint offset) {
                frame->setOffsetX(offset.x());
                frame->setOffsetY(offset.y());
            }))
        reportAnimationChanged(false);
}

void AnimationEditorPrivate::frameAllTime()
{
    makeActive();
    if (setOnNextFrames(
            this, [](FrameCode *frame) { return frame->delay(); },
            [](FrameCode *frame, int delay) { frame->setDelay(delay); }))
        reportAnimationChanged(true);
}

void AnimationEditorPrivate::frameAllFlip()
{
    makeActive();
    if (setOnNextFrames(
            this, [](FrameCode *frame) { return uint(frame->flipFlags()); },
            [](FrameCode *frame, uint flip) { frame->setFlipFlags(flip); }))
        reportAnimationChanged(false);
}

void AnimationEditorPrivate::frameAllScale()
{
    makeActive();
    if (setOnNextFrames(
            this, [](FrameCode *frame) { return frame->scale(); },
            [](FrameCode *frame, QPointF scale) { frame->setScale(scale); }))
        reportAnimationChanged(false);
}

void AnimationEditorPrivate::frameAlign()
{
    makeActive();
    if (!animations || animations->count() == 0)
        return;
    AnimAlign dialog(animations, dialogParent(interface));
    if (animation)
        dialog.setSelected(animations->indexOf(animation), true);
    connect(&dialog, &AnimAlign::applied, this, [this] {
        fillFields();
        reportAnimationChanged(false);
    });
    dialog.exec();
}

void AnimationEditorPrivate::boxAllInst()
{
    makeActive();
    if (!animations || !frame)
        return;
    if (!confirmed(interface, tr("Confirmation"),
                   tr("Do you want to give the contact boxes of this frame to every frame with the same sprite?")))
        return;
    const QList<QRect> attack = rectsOf(frame->contactBoxes(ContactBoxCode::Attack));
    const QList<QRect> collision = rectsOf(frame->contactBoxes(ContactBoxCode::Collision));
    int changed = 0;
    ++updating;
    animations->beginChange();
    for (AnimationCode *each : animations->animations()) {
        for (FrameCode *other : each->frames()) {
            if (other == frame || !sameSprite(other, frame))
                continue;
            for (ContactBoxCode::BoxType type : {ContactBoxCode::Attack, ContactBoxCode::Collision}) {
                ContactBoxesCode *boxes = other->contactBoxes(type);
                const QList<QRect> &wanted = type == ContactBoxCode::Attack ? attack : collision;
                if (!boxes || rectsOf(boxes) == wanted)
                    continue;
                boxes->clear();
                for (const QRect &rect : wanted)
                    boxes->append(rect);
                ++changed;
            }
        }
    }
    animations->endChange();
    --updating;
    if (changed)
        reportAnimationChanged(false);
}

void AnimationEditorPrivate::optimize()
{
    makeActive();
    if (!animations)
        return;
    const int removed = q->optimizeAnimations(animations);
    if (removed < 0) {
        setStatus(tr("The engine can't optimize animation files"));
        return;
    }
    tell(QMessageBox::Information, tr("Optimize done!"),
         tr("Code clean, and %1 line(s) were removed in the optimization!").arg(removed), dialogParent(interface));
}

void AnimationEditorPrivate::exportTo()
{
    makeActive();
    if (!animations || animations->count() == 0)
        return;
    QWidget *parent = dialogParent(interface);
    auto *exporter = converterFor<AnimationExporterExtension>(interface, Extension::AnimationExporter);
    if (!exporter) {
        tell(QMessageBox::Warning, tr("Warning"), tr("The engine can't export animations."), parent);
        return;
    }
    QList<int> current;
    if (animation)
        current.append(animations->indexOf(animation));
    const QList<int> rows = choose(interface, QStringLiteral("anim_export"), tr("Export animations"),
                                   animations->model(), current);
    if (rows.isEmpty())
        return;
    const QString fileName = getSaveFileName(parent, tr("Export animations"),
                                             startFolder(animations, QStringLiteral("anim_path")),
                                             exporter->fileFilter());
    if (fileName.isEmpty())
        return;
    animations->setOption(QStringLiteral("anim_path"), QFileInfo(fileName).absolutePath(), true, false);

    ProgressProvider *progress = interface ? interface->progressProvider() : nullptr;
    Job *job = progress ? progress->start(tr("Exporting animations..."), 0) : nullptr;
    if (job)
        job->setMaximum(1);
    QList<uint> exported;
    for (int row : rows)
        exported.append(uint(row));
    QSaveFile file(fileName);
    const bool opened = file.open(QIODevice::WriteOnly);
    const bool written = opened && exporter->exportAnimations(*animations, exported, &file);
    const bool saved = written && file.commit();
    if (job)
        job->incrementValue();
    if (!saved) {
        QString reason = written || !opened ? file.errorString() : exporter->errorString();
        const QString text = tr("Can't export the animations to '%1'!").arg(fileName)
                             + (reason.isEmpty() ? QString() : QLatin1Char('\n') + reason);
        if (job)
            job->error(text);
        tell(QMessageBox::Critical, tr("Error"), text, parent);
        return;
    }
    setStatus(tr("%n animation(s) exported", nullptr, exported.size()));
}

void AnimationEditorPrivate::importFrom()
{
    makeActive();
    if (!animations)
        return;
    QWidget *parent = dialogParent(interface);
    auto *importer = converterFor<AnimationImporterExtension>(interface, Extension::AnimationImporter);
    if (!importer) {
        tell(QMessageBox::Warning, tr("Warning"), tr("The engine can't import animations."), parent);
        return;
    }
    const QString fileName = getOpenFileName(parent, tr("Import animations"),
                                             startFolder(animations, QStringLiteral("anim_path")),
                                             importer->fileFilter());
    if (fileName.isEmpty())
        return;
    animations->setOption(QStringLiteral("anim_path"), QFileInfo(fileName).absolutePath(), true, false);

    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        tell(QMessageBox::Critical, tr("Error"),
             tr("Can't open '%1'!").arg(fileName) + QLatin1Char('\n') + file.errorString(), parent);
        return;
    }
    ProgressProvider *progress = interface ? interface->progressProvider() : nullptr;
    Job *job = progress ? progress->start(tr("Importing animations..."), 0) : nullptr;
    if (job)
        job->setMaximum(1);
    const auto conflict = [parent](const QString &identifier) {
        Prompt prompt;
        prompt.icon = QMessageBox::Question;
        prompt.title = tr("Conflict resolution!");
        prompt.text = tr("Animation '%1' already exists, do you want to replace it?").arg(identifier);
        prompt.buttons = QMessageBox::Yes | QMessageBox::No;
        prompt.defaultButton = QMessageBox::No;
        prompt.parent = parent;
        return ask(prompt) == QMessageBox::Yes;
    };
    QStringList imported;
    ++updating;
    const bool ok = importer->importAnimations(&file, *animations, conflict, &imported);
    --updating;
    if (job)
        job->incrementValue();
    if (!ok) {
        const QString reason = importer->errorString();
        if (job)
            job->error(reason);
        tell(QMessageBox::Warning, tr("Warning"),
             tr("No animation imported!") + (reason.isEmpty() ? QString() : QLatin1Char('\n') + reason), parent);
        return;
    }
    reportImport(imported);
}

void AnimationEditorPrivate::reportImport(const QStringList &identifiers)
{
    QWidget *parent = dialogParent(interface);
    if (identifiers.isEmpty()) {
        tell(QMessageBox::Information, tr("Import"), tr("No animation imported!"), parent);
        return;
    }
    const int row = animations->find(0, identifiers.first());
    if (row >= 0)
        q->selectAnimation(row);
    else
        updateState();
    tell(QMessageBox::Information, tr("Import"),
         tr("%n animation(s) were imported!", nullptr, identifiers.size()), parent);
}

void AnimationEditorPrivate::projImport()
{
    makeActive();
    if (!animations || !interface)
        return;
    // The source: one of the open projects.
    QStandardItemModel projects;
    QList<Project *> open;
    for (uint index = 0; index < interface->projectCount(); ++index) {
        if (Project *project = interface->project(index)) {
            open.append(project);
            projects.appendRow(new QStandardItem(project->name()));
        }
    }
    const QList<int> chosenProject = choose(interface, QStringLiteral("anim_import_proj"),
                                            tr("Import from another project"), &projects, {});
    if (chosenProject.isEmpty())
        return;
    Project *source = open.at(chosenProject.first());
    if (source == animations->project()) {
        tell(QMessageBox::Warning, tr("Warning"), tr("You can't import from the destination project!"),
             dialogParent(interface));
        return;
    }
    // Then its animations, of all its animation files.
    QStandardItemModel offered;
    QList<AnimationCode *> candidates;
    for (ProjectFile *file : source->files()) {
        auto *list = dynamic_cast<Animations *>(file);
        for (uint row = 0; list && row < list->count(); ++row) {
            candidates.append(list->at(row));
            offered.appendRow(new QStandardItem(list->data(list->index(int(row)), Qt::DisplayRole).toString()));
        }
    }
    if (candidates.isEmpty()) {
        tell(QMessageBox::Information, tr("Import"), tr("No animation imported!"), dialogParent(interface));
        return;
    }
    const QList<int> rows = choose(interface, QStringLiteral("anim_import_proj"), tr("Import animations"),
                                   &offered, {});
    if (rows.isEmpty())
        return;
    QList<AnimationCode *> chosen;
    for (int row : rows)
        chosen.append(candidates.at(row));
    reportImport(copyAnimations(chosen));
}

QStringList AnimationEditorPrivate::copyAnimations(const QList<AnimationCode *> &sources)
{
    const QString identifier = QStringLiteral("Identifier");
    // Every question first, so that no box stands open over a half-made change.
    QList<AnimationCode *> copied;
    for (AnimationCode *source : sources) {
        const QVariant id = source->property(identifier);
        if (animations->find(0, id) >= 0) {
            Prompt prompt;
            prompt.icon = QMessageBox::Question;
            prompt.title = tr("Conflict resolution!");
            prompt.text = tr("Animation '%1' already exists, do you want to replace it?").arg(id.toString());
            prompt.buttons = QMessageBox::Yes | QMessageBox::No;
            prompt.defaultButton = QMessageBox::No;
            prompt.parent = dialogParent(interface);
            if (ask(prompt) != QMessageBox::Yes)
                continue;
        }
        copied.append(source);
    }
    ProgressProvider *progress = interface ? interface->progressProvider() : nullptr;
    Job *job = progress && !copied.isEmpty() ? progress->start(tr("Importing animations..."), 0) : nullptr;
    if (job)
        job->setMaximum(uint(copied.size()));
    QStringList imported;
    ++updating;
    animations->beginChange();
    for (AnimationCode *source : copied) {
        const QVariant id = source->property(identifier);
        const int existing = animations->find(0, id);
        AnimationCode *target = existing >= 0 ? animations->at(uint(existing)) : animations->add(id.toString());
        if (target) {
            target->setCode(source->code());
            imported.append(id.toString());
        }
        if (job)
            job->incrementValue();
    }
    animations->endChange();
    --updating;
    return imported;
}

void AnimationEditorPrivate::find()
{
    makeActive();
    if (!animations || animations->count() == 0)
        return;
    bool ok = false;
    const QString id = QInputDialog::getText(dialogParent(interface), tr("Find animation"), tr("Identifier:"),
                                             QLineEdit::Normal, QString(), &ok)
                           .trimmed();
    if (!ok || id.isEmpty())
        return;
    // From the animation behind the current one, round to the start.
    const int current = animation ? animations->indexOf(animation) : -1;
    int row = animations->find(uint(current + 1), id);
    if (row < 0)
        row = animations->find(0, id);
    if (row < 0) {
        tell(QMessageBox::Information, tr("Find animation"), tr("No animation found!"), dialogParent(interface));
        return;
    }
    q->selectAnimation(row);
}

} // namespace Ovra
