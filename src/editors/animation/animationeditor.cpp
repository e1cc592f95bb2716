// The animation editor: the file it shows, the current animation and frame kept by their
// rows, the states that enable its actions, and its place among the host's editors.
#include "editors/animation/animationeditor.h"
#include "editors/animation/animationeditor_p.h"

#include "code/animationcode.h"
#include "code/animations.h"
#include "code/codedocument.h"
#include "code/framecode.h"
#include "editors/animation/timelinewidget.h"
#include "editors/code/codeworkspace.h"
#include "editors/graphics/graphicsworkspace.h"
#include "foundation/interface.h"

#include <QAction>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QSpinBox>

namespace Ovra {

// ---- the private part: the file, the selection and the states ------------------------------

AnimationEditorPrivate::AnimationEditorPrivate(AnimationEditor *editor, GraphicsRenderer::SpriteProvider::Info &sprite,
                                               GraphicsRenderer::ItemType spriteItem)
    : QObject(editor)
    , q(editor)
    , interface(Interface::instance())
    , spriteInfo(sprite)
    , spriteItem(spriteItem)
{
}

AnimationEditorPrivate::~AnimationEditorPrivate() = default;

void AnimationEditorPrivate::makeActive()
{
    q->switchToThis();
}

QAction *AnimationEditorPrivate::actionNamed(const char *name) const
{
    return actions.value(QString::fromLatin1(name));
}

void AnimationEditorPrivate::setAnimations(Animations *list)
{
    disconnect(textConnection);
    disconnect(goneConnection);
    if (timeLine() && timeLine()->isPlaying())
        stopChanged();
    animations = list;
    sprites = list ? q->spritesOf(list) : nullptr;
    animationIndex = list && list->count() ? int(qMin(list->selected(), list->count() - 1)) : -1;
    animation = nullptr;
    frame = nullptr;
    frameIndex = -1;
    animationsFile = list;
    if (list) {
        if (CodeDocument *document = list->document()) {
            textConnection = connect(document, &QTextDocument::contentsChanged, this, [this, document] {
                // A file that leaves its document on its way out (its project closing under
                // the editor) is dropped unread: its nodes may be gone already.
                if (document->nodeFile(CodeNode::Animation, 0) != animationsFile) {
                    fileGone();
                    return;
                }
                updateFromText();
            });
        }
        // The onion choices of a file end with it.
        goneConnection = connect(list, &QObject::destroyed, this, [this](QObject *gone) {
            if (gone == animations)
                setAnimations(nullptr);
        });
        const QPoint choice = onionChoices.value(list, QPoint(-1, -1));
        onion.selectedAnimation = choice.x();
        onion.selectedFrame = choice.y();
    } else {
        onion.selectedAnimation = onion.selectedFrame = -1;
    }
    refreshPointers();
    fillAnimationBox();
    fillFields();
    loadPlayer();
    updateState();
    showFrame();
    reportIfShown();
    updateOnion();
    q->animationCountChanged();
}

void AnimationEditorPrivate::fileGone()
{
    onionChoices.remove(animations);
    disconnect(goneConnection);
    // Not through setCurrentFile: that would ask the dying file for its models.
    if (q->m_currentFile == static_cast<ProjectFile *>(animationsFile))
        q->m_currentFile = nullptr;
    setAnimations(nullptr);
}

// The current animation and frame again from their rows: a parse may have replaced the
// nodes that the pointers named.
void AnimationEditorPrivate::refreshPointers()
{
    const int count = animations ? int(animations->count()) : 0;
    if (count == 0)
        animationIndex = -1;
    else
        animationIndex = qBound(0, animationIndex, count - 1);
    animation = animationIndex >= 0 ? animations->at(uint(animationIndex)) : nullptr;
    const int frames = animation ? int(animation->frameCount()) : 0;
    frameIndex = frames ? qBound(0, frameIndex < 0 ? int(animation->selectedFrame()) : frameIndex, frames - 1) : -1;
    frame = frameIndex >= 0 ? animation->frameAt(uint(frameIndex)) : nullptr;
    onion.animation = animations && onion.selectedAnimation >= 0 && onion.selectedAnimation < count
        ? animations->at(uint(onion.selectedAnimation))
        : nullptr;
}

void AnimationEditorPrivate::fillAnimationBox()
{
    if (!panel)
        return;
    QStringList names;
    for (int i = 0; animations && i < int(animations->count()); ++i)
        names << animations->at(uint(i))->displayName();
    ++updating;
    bool same = names.size() == animationBox->count();
    for (int i = 0; same && i < names.size(); ++i)
        same = animationBox->itemText(i) == names.at(i);
    if (!same) {
        animationBox->clear();
        animationBox->addItems(names);
    }
    animationBox->setCurrentIndex(animationIndex);
    fillFrameBox();
    --updating;
}

void AnimationEditorPrivate::fillFrameBox()
{
    if (!panel)
        return;
    const int frames = animation ? int(animation->frameCount()) : 0;
    ++updating;
    if (frameBox->count() != frames) {
        frameBox->clear();
        for (int i = 0; i < frames; ++i)
            frameBox->addItem(QString::number(i + 1));
    }
    frameBox->setCurrentIndex(frameIndex);
    --updating;
}

void AnimationEditorPrivate::updateState()
{
    const bool hasFile = animations != nullptr;
    for (const QPointer<QAction> &action : qAsConst(fileActions)) {
        if (action)
            action->setEnabled(hasFile);
    }
    emit q->noFile(!hasFile);
    emit q->enabled(animation != nullptr);
    emit q->frameEnabled(frame != nullptr);
    if (!panel)
        return;
    animationBox->setEnabled(hasFile && animations->count() > 0);
    frameBox->setEnabled(frame != nullptr);
    for (QWidget *field : {static_cast<QWidget *>(xField), static_cast<QWidget *>(yField),
                           static_cast<QWidget *>(timeField), static_cast<QWidget *>(flipField),
                           static_cast<QWidget *>(xScaleField), static_cast<QWidget *>(yScaleField),
                           static_cast<QWidget *>(angleField)})
        field->setEnabled(frame != nullptr && !editCodeMode);
    positionLabel->setText(positionText());
}

QString AnimationEditorPrivate::positionText() const
{
    if (!frame || !animation)
        return tr("0 / 0");
    return tr("%1 / %2 - %3 ticks").arg(frameIndex + 1).arg(animation->frameCount()).arg(frame->delay());
}

void AnimationEditorPrivate::fillFields()
{
    if (!panel)
        return;
    ++updating;
    xField->setValue(frame ? frame->offsetX() : 0);
    yField->setValue(frame ? frame->offsetY() : 0);
    timeField->setValue(frame ? frame->delay() : 0);
    flipField->setCurrentIndex(frame ? int(frame->flipFlags() & FrameCode::Both) : 0);
    xScaleField->setValue(frame ? frame->scaleX() : 0.0);
    yScaleField->setValue(frame ? frame->scaleY() : 0.0);
    angleField->setValue(frame ? frame->angle() : 0.0);
    --updating;
}

void AnimationEditorPrivate::setStatus(const QString &text)
{
    if (interface)
        interface->setStatusText(0, text);
}

// ---- the editor ----------------------------------------------------------------------------

AnimationEditor::AnimationEditor(CodeWorkspace *codeWorkspace, GraphicsWorkspace *graphicsWorkspace,
                                 ThumbnailsEditor *thumbnails, GraphicsRenderer *renderer,
                                 GraphicsRenderer::SpriteProvider::Info &sprite, GraphicsRenderer::ItemType spriteItem)
    : CodeFileEditor(codeWorkspace, "animations")
    , d(new AnimationEditorPrivate(this, sprite, spriteItem))
{
    d->codeWorkspace = codeWorkspace;
    d->graphicsWorkspace = graphicsWorkspace;
    d->thumbnails = thumbnails;
    d->renderer = renderer;
    d->buildPanel();
    d->buildActions();
    d->connectRenderer();
    d->updateState();
    d->fillFields();
    d->updateOnion();
}

AnimationEditor::~AnimationEditor()
{
    // The panel may live in the workspace, which outlives the editor.
    if (d->graphicsWorkspace && d->graphicsWorkspace->sidePanel() == d->panel)
        d->graphicsWorkspace->setSidePanel(nullptr);
    delete d->panel;
}

QAction *AnimationEditor::action() const
{
    return d->editorAction;
}

QWidget *AnimationEditor::widget()
{
    if (d->editCodeMode || !d->graphicsWorkspace)
        return CodeFileEditor::widget();
    return d->graphicsWorkspace->widget();
}

GraphicsWorkspace *AnimationEditor::graphicsWorkspace() const
{
    return d->graphicsWorkspace;
}

ThumbnailsEditor *AnimationEditor::thumbnails() const
{
    return d->thumbnails;
}

GraphicsRenderer *AnimationEditor::renderer() const
{
    return d->renderer;
}

TimeLineWidget *AnimationEditor::timeLine() const
{
    return d->timeLine();
}

QWidget *AnimationEditor::panel() const
{
    return d->panel;
}

Animations *AnimationEditor::animations() const
{
    return d->animations;
}

Sprites *AnimationEditor::sprites() const
{
    return d->sprites;
}

AnimationCode *AnimationEditor::currentAnimation() const
{
    return d->animation;
}

FrameCode *AnimationEditor::currentFrame() const
{
    return d->frame;
}

const AnimationPlayer &AnimationEditor::player() const
{
    return d->player;
}

void AnimationEditor::selectAnimation(int index)
{
    if (d->animations && index >= 0 && index < int(d->animations->count()))
        d->animationBox->setCurrentIndex(index);
}

void AnimationEditor::selectFrame(int index)
{
    if (d->animation && index >= 0 && index < int(d->animation->frameCount()))
        d->frameBox->setCurrentIndex(index);
}

void AnimationEditor::setEditCodeMode(bool on)
{
    if (d->editCodeMode == on)
        return;
    d->editCodeMode = on;
    if (QAction *action = d->actionNamed("anim_editcode")) {
        QSignalBlocker blocker(action);
        action->setChecked(on);
    }
    if (isActive()) {
        // The code and the canvas take turns in the host's main area.
        if (on) {
            d->leaveCanvas();
            CodeFileEditor::activate();
        } else {
            CodeFileEditor::deactivate();
            FileEditor::activate();
            d->enterCanvas();
        }
    }
    d->updateState();
}

bool AnimationEditor::isEditCodeMode() const
{
    return d->editCodeMode;
}

bool AnimationEditor::canChangeFieldValue() const
{
    return !d->editCodeMode && d->frame;
}

void AnimationEditor::beginChangeFieldValue()
{
    ++d->fieldChanges;
}

void AnimationEditor::endChangeFieldValue()
{
    if (d->fieldChanges > 0)
        --d->fieldChanges;
}

bool AnimationEditor::changeNotFromField() const
{
    return d->fieldChanges == 0;
}

void AnimationEditor::activate()
{
    if (d->editCodeMode) {
        CodeFileEditor::activate();
        return;
    }
    // The canvas replaces the code view: only the editor's own part of activation.
    FileEditor::activate();
    d->enterCanvas();
}

void AnimationEditor::deactivate()
{
    if (d->editCodeMode)
        CodeFileEditor::deactivate();
    else
        d->leaveCanvas();
    FileEditor::deactivate();
}

void AnimationEditor::reconfig()
{
    CodeFileEditor::reconfig();
    // The canvas takes the look of the options through the workspace it is shown in.
    if (isActive() && !d->editCodeMode && d->graphicsWorkspace)
        d->graphicsWorkspace->reconfig();
    if (d->onion.enabled)
        d->onionSkinChanged(true);
}

void AnimationEditor::projectSwitched(Project *project)
{
    CodeFileEditor::projectSwitched(project);
    d->onionChoices.clear();
}

void AnimationEditor::engineSwitched(bool hasEngine)
{
    CodeFileEditor::engineSwitched(hasEngine);
}

// The view keeps its own state through the graphics workspace; the code view through
// the code workspace.
void AnimationEditor::saveState()
{
    CodeFileEditor::saveState();
}

void AnimationEditor::restoreState()
{
    CodeFileEditor::restoreState();
}

void AnimationEditor::setCurrentFile(ProjectFile *file)
{
    CodeFileEditor::setCurrentFile(file);
    d->setAnimations(dynamic_cast<Animations *>(file));
    if (isActive() && !d->editCodeMode)
        d->enterCanvas();
}

bool AnimationEditor::interpolateFrames(FrameCode *, uint)
{
    return false;
}

QPoint AnimationEditor::offsetToParentFromInterpolation(QPoint offset)
{
    return offset;
}

void AnimationEditor::animationChanged(bool)
{
}

void AnimationEditor::frameChanged()
{
}

void AnimationEditor::onionFrameChanged()
{
}

void AnimationEditor::animationCountChanged()
{
}

} // namespace Ovra

