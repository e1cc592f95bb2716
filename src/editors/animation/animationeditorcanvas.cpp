// The animation editor on its canvas: the workspace it shows in, the boxes and the sprite
// the user drags, the contact box tools, the onion skin and the sprite explorer's actions.
#include "editors/animation/animationeditor.h"
#include "editors/animation/animationeditor_p.h"

#include "code/animationcode.h"
#include "code/animations.h"
#include "code/framecode.h"
#include "editors/animation/timelinewidget.h"
#include "editors/graphics/graphicsworkspace.h"
#include "editors/organizer/organizereditor.h"
#include "editors/organizer/thumbnailseditor.h"
#include "foundation/interface.h"
#include "foundation/itemsdialog.h"
#include "foundation/prompt.h"
#include "image/sprite.h"
#include "render/renderer.h"

#include <QAction>
#include <QInputDialog>
#include <QLabel>
#include <QPointer>
#include <QSpinBox>
#include <QStringListModel>

#include <memory>

namespace Ovra {
namespace {

const ContactBoxCode::BoxType boxTypes[] = {ContactBoxCode::Attack, ContactBoxCode::Collision};

// The frame at the rows, read from the list each time: inside a bracket of changes each
// edit may replace the nodes read before it.
FrameCode *liveFrame(Animations *animations, int animation, int frame)
{
    if (!animations || animation < 0 || animation >= int(animations->count()))
        return nullptr;
    AnimationCode *code = animations->at(uint(animation));
    return frame >= 0 && frame < int(code->frameCount()) ? code->frameAt(uint(frame)) : nullptr;
}

// One undo step of the animation file for the life of the object.
class ChangeBracket
{
public:
    explicit ChangeBracket(Animations *animations) : m_animations(animations) { m_animations->beginChange(); }
    ~ChangeBracket() { m_animations->endChange(); }
    ChangeBracket(const ChangeBracket &) = delete;
    ChangeBracket &operator=(const ChangeBracket &) = delete;

private:
    Animations *m_animations;
};

// The organizer, if the host keeps one among its extra editors.
OrganizerEditor *hostOrganizer(Interface *host)
{
    for (int i = 0; host && i < 16; ++i) {
        if (auto *organizer = qobject_cast<OrganizerEditor *>(host->extraEditor(i)))
            return organizer;
    }
    return nullptr;
}

} // namespace

void AnimationEditorPrivate::connectRenderer()
{
    if (!renderer)
        return;
    connect(renderer, &GraphicsRenderer::itemMoved, this, &AnimationEditorPrivate::itemMoved);
    connect(renderer, &GraphicsRenderer::itemReleased, this, &AnimationEditorPrivate::itemReleased);
    connect(renderer, &GraphicsRenderer::cursorChanged, this, &AnimationEditorPrivate::cursorChanged);
    connect(renderer, &GraphicsRenderer::contactDrawingExit, this, &AnimationEditorPrivate::contactDrawingExit);
}

void AnimationEditorPrivate::enterCanvas()
{
    if (!graphicsWorkspace)
        return;
    for (const QMetaObject::Connection &connection : qAsConst(canvasConnections))
        disconnect(connection);
    canvasConnections.clear();
    graphicsWorkspace->setRenderer(renderer);
    graphicsWorkspace->activate();
    graphicsWorkspace->setSidePanel(panel);
    if (interface)
        interface->setWorkspace(graphicsWorkspace);
    if (TimeLineWidget *line = timeLine())
        canvasConnections << connect(line, &TimeLineWidget::tickChanged, this, &AnimationEditorPrivate::tick);
    canvasConnections << connect(graphicsWorkspace, &GraphicsWorkspace::extraAxisChanged, this,
                                 &AnimationEditorPrivate::extraAxisChanged);
    if (thumbnails) {
        QAction *thumbActions[4] = {actionNamed("anim_thumb_add"), actionNamed("anim_thumb_add_all"),
                                    actionNamed("anim_thumb_new"), actionNamed("anim_thumb_new_all")};
        thumbnails->setFiles(sprites, thumbActions);
    }
    if (interface) {
        const bool native = interface->option(QStringLiteral("native_painting"), false).toBool();
        setStatus(tr("Renderer: %1").arg(Renderer::name(native)));
        // The host shows its organizer on the animations of the file when the user wants
        // it beside the canvas; a host without one has nothing to show.
        if (OrganizerEditor *organizer = hostOrganizer(interface)) {
            const bool shown = interface->option(QStringLiteral("show_organizer"), true).toBool();
            organizer->setObject(shown ? animations : nullptr);
            interface->setExtraEditor(shown ? organizer : nullptr);
        }
    }
    reportAnimationChanged(true);
    loadPlayer();
    showFrame();
    updateOnion();
}

void AnimationEditorPrivate::leaveCanvas()
{
    if (!graphicsWorkspace)
        return;
    TimeLineWidget *line = timeLine();
    if (line && line->isPlaying())
        stopChanged();
    for (const QMetaObject::Connection &connection : qAsConst(canvasConnections))
        disconnect(connection);
    canvasConnections.clear();
    if (line)
        line->clearTimeLines();
    contactDrawingExit();
    if (thumbnails)
        thumbnails->setFiles(nullptr, nullptr);
    graphicsWorkspace->deactivate();
    if (graphicsWorkspace->sidePanel() == panel)
        graphicsWorkspace->setSidePanel(nullptr);
}

// The operations on the selected boxes read the canvas's list: it must name the boxes of
// the text as it is now, not as it was before an undo that the canvas hasn't seen yet.
void AnimationEditorPrivate::flushBoxSync()
{
    if (!boxSyncPending)
        return;
    syncBoxes();
    q->frameChanged();
}

void AnimationEditorPrivate::syncBoxes()
{
    boxSyncPending = false;
    if (!renderer)
        return;
    for (ContactBoxCode::BoxType type : boxTypes)
        renderer->setContactBoxes(type, frame ? frame->contactBoxes(type) : nullptr);
}

void AnimationEditorPrivate::writeBoxes()
{
    FrameCode *current = liveFrame(animations, animationIndex, frameIndex);
    if (!current || !renderer || !q->canChangeFieldValue())
        return;
    struct Change
    {
        ContactBoxCode::BoxType type;
        uint index;
        QRect rect;
    };
    QList<Change> changes;
    for (ContactBoxCode::BoxType type : boxTypes) {
        const QList<GraphicsRenderer::BoxItem> &items = renderer->boxes(type);
        ContactBoxesCode *list = current->contactBoxes(type);
        for (uint i = 0; list && i < list->count() && int(i) < items.size(); ++i) {
            const QRect rect = items.at(int(i)).rect.normalized().toRect();
            if (list->at(i) && list->at(i)->rect() != rect)
                changes << Change{type, i, rect};
        }
    }
    if (changes.isEmpty())
        return;
    ChangeBracket bracket(animations);
    for (const Change &change : qAsConst(changes)) {
        if (FrameCode *live = liveFrame(animations, animationIndex, frameIndex)) {
            if (ContactBoxCode *box = live->contactBoxes(change.type)->at(change.index))
                box->setRect(change.rect);
        }
    }
}

void AnimationEditorPrivate::setFrameOffset(QPoint offset)
{
    FrameCode *current = liveFrame(animations, animationIndex, frameIndex);
    if (!current || !q->canChangeFieldValue() || current->offset() == offset)
        return;
    ChangeBracket bracket(animations);
    if (current->offsetX() != offset.x())
        current->setOffsetX(offset.x());
    if (FrameCode *live = liveFrame(animations, animationIndex, frameIndex); live && live->offsetY() != offset.y())
        live->setOffsetY(offset.y());
}

// ---- items on the canvas -------------------------------------------------------------------

void AnimationEditorPrivate::itemMoved(GraphicsRenderer::ItemType type, int index, QPoint position)
{
    q->itemMoved(type, index, position);
}

void AnimationEditorPrivate::itemReleased(GraphicsRenderer::ItemType type, int index, QPoint position)
{
    q->itemReleased(type, index, position);
}

// While the sprite moves, the offset fields follow it; the code changes at the release.
void AnimationEditor::itemMoved(GraphicsRenderer::ItemType type, int, QPoint position)
{
    if (type != d->spriteItem || !d->frame)
        return;
    const QPoint offset = offsetToParentFromInterpolation(position);
    ++d->updating;
    d->xField->setValue(offset.x());
    d->yField->setValue(offset.y());
    --d->updating;
}

void AnimationEditor::itemReleased(GraphicsRenderer::ItemType type, int, QPoint position)
{
    if (type == d->spriteItem && d->frame) {
        d->makeActive();
        d->setFrameOffset(offsetToParentFromInterpolation(position));
        // Nothing written (no change, or the code mode): the sprite goes back.
        frameChanged();
        d->fillFields();
    } else if (type == GraphicsRenderer::ContactBoxes) {
        d->makeActive();
        d->writeBoxes();
        d->syncBoxes();
    }
}

// Selected boxes move by a pixel; without any, the frame's offset does.
static void nudge(AnimationEditorPrivate *d, QPoint delta)
{
    if (!d->frame || !d->q->canChangeFieldValue())
        return;
    d->makeActive();
    d->flushBoxSync();
    if (d->renderer && !d->renderer->selectedContactBoxes().isEmpty()) {
        d->renderer->moveSelectedContactBoxes(delta);
        d->writeBoxes();
        d->syncBoxes();
        return;
    }
    d->setFrameOffset(d->frame->offset() + delta);
}

void AnimationEditorPrivate::axisLeft()
{
    nudge(this, QPoint(-1, 0));
}

void AnimationEditorPrivate::axisRight()
{
    nudge(this, QPoint(1, 0));
}

void AnimationEditorPrivate::axisUp()
{
    nudge(this, QPoint(0, -1));
}

void AnimationEditorPrivate::axisDown()
{
    nudge(this, QPoint(0, 1));
}

// ---- contact boxes -------------------------------------------------------------------------

namespace {

void setDrawing(AnimationEditorPrivate *d, ContactBoxCode::BoxType type, bool checked)
{
    QAction *mine = d->actionNamed(type == ContactBoxCode::Attack ? "anim_box_add_attack" : "anim_box_add_collision");
    QAction *other = d->actionNamed(type == ContactBoxCode::Attack ? "anim_box_add_collision" : "anim_box_add_attack");
    if (!d->renderer)
        return;
    if (!checked) {
        if (d->renderer->clickMode() == GraphicsRenderer::DrawContactBoxMode && !(other && other->isChecked()))
            d->renderer->setPositioningMode();
        return;
    }
    if (!d->frame || !d->q->canChangeFieldValue()) {
        QSignalBlocker blocker(mine);
        mine->setChecked(false);
        return;
    }
    d->makeActive();
    if (other) {
        QSignalBlocker blocker(other);
        other->setChecked(false);
    }
    d->renderer->setDrawContactBoxMode(type);
}

} // namespace

void AnimationEditorPrivate::boxAddAChanged(bool checked)
{
    setDrawing(this, ContactBoxCode::Attack, checked);
}

void AnimationEditorPrivate::boxAddCChanged(bool checked)
{
    setDrawing(this, ContactBoxCode::Collision, checked);
}

void AnimationEditorPrivate::contactDrawingExit()
{
    for (const char *name : {"anim_box_add_attack", "anim_box_add_collision"}) {
        if (QAction *action = actionNamed(name)) {
            QSignalBlocker blocker(action);
            action->setChecked(false);
        }
    }
    if (renderer && renderer->clickMode() == GraphicsRenderer::DrawContactBoxMode)
        renderer->setPositioningMode();
}

void AnimationEditorPrivate::boxDel()
{
    flushBoxSync();
    if (!renderer || !frame || !q->canChangeFieldValue() || renderer->selectedContactBoxes().isEmpty())
        return;
    makeActive();
    {
        ChangeBracket bracket(animations);
        renderer->removeSelectedContactBoxes();
    }
    syncBoxes();
}

void AnimationEditorPrivate::boxDelAll()
{
    if (!frame || !q->canChangeFieldValue())
        return;
    makeActive();
    {
        ChangeBracket bracket(animations);
        for (ContactBoxCode::BoxType type : boxTypes) {
            if (FrameCode *live = liveFrame(animations, animationIndex, frameIndex))
                live->contactBoxes(type)->clear();
        }
    }
    syncBoxes();
}

void AnimationEditorPrivate::boxDelAllAnim()
{
    if (!animation || !q->canChangeFieldValue())
        return;
    makeActive();
    {
        ChangeBracket bracket(animations);
        const int frames = int(animation->frameCount());
        for (int i = 0; i < frames; ++i) {
            for (ContactBoxCode::BoxType type : boxTypes) {
                if (FrameCode *live = liveFrame(animations, animationIndex, i))
                    live->contactBoxes(type)->clear();
            }
        }
    }
    syncBoxes();
}

// Each selected box leaves its list and joins the other type's at its end, as one step.
void AnimationEditorPrivate::boxSwType()
{
    flushBoxSync();
    if (!renderer || !frame || !q->canChangeFieldValue())
        return;
    QList<QPair<ContactBoxCode::BoxType, QRect>> moved;
    QMap<ContactBoxCode::BoxType, QList<uint>> rows;
    for (ContactBoxCode::BoxType type : boxTypes) {
        const QList<GraphicsRenderer::BoxItem> &items = renderer->boxes(type);
        for (int i = 0; i < items.size(); ++i) {
            if (items.at(i).selected) {
                moved << qMakePair(type, items.at(i).rect.normalized().toRect());
                rows[type].prepend(uint(i)); // the last first, so the rows before stay
            }
        }
    }
    if (moved.isEmpty())
        return;
    makeActive();
    {
        ChangeBracket bracket(animations);
        for (auto it = rows.cbegin(); it != rows.cend(); ++it) {
            for (uint row : it.value()) {
                if (FrameCode *live = liveFrame(animations, animationIndex, frameIndex))
                    live->contactBoxes(it.key())->remove(row);
            }
        }
        for (const auto &box : qAsConst(moved)) {
            const auto other = box.first == ContactBoxCode::Attack ? ContactBoxCode::Collision : ContactBoxCode::Attack;
            if (FrameCode *live = liveFrame(animations, animationIndex, frameIndex))
                live->contactBoxes(other)->append(box.second);
        }
    }
    syncBoxes();
}

// The boxes of the frame before take the place of the current frame's, as one step.
void AnimationEditorPrivate::boxPrev()
{
    if (!frame || frameIndex < 1 || !q->canChangeFieldValue())
        return;
    FrameCode *previous = liveFrame(animations, animationIndex, frameIndex - 1);
    QList<QPair<ContactBoxCode::BoxType, QRect>> copied;
    for (ContactBoxCode::BoxType type : boxTypes) {
        ContactBoxesCode *list = previous->contactBoxes(type);
        for (uint i = 0; i < list->count(); ++i)
            copied << qMakePair(type, list->at(i)->rect());
    }
    makeActive();
    {
        ChangeBracket bracket(animations);
        for (ContactBoxCode::BoxType type : boxTypes) {
            if (FrameCode *live = liveFrame(animations, animationIndex, frameIndex))
                live->contactBoxes(type)->clear();
        }
        for (const auto &box : qAsConst(copied)) {
            if (FrameCode *live = liveFrame(animations, animationIndex, frameIndex))
                live->contactBoxes(box.first)->append(box.second);
        }
    }
    syncBoxes();
}

// ---- onion skin ----------------------------------------------------------------------------

void AnimationEditorPrivate::onionSkinChanged(bool checked)
{
    onion.enabled = checked;
    if (QAction *action = actionNamed("anim_onion_skin"); action && action->isChecked() != checked) {
        QSignalBlocker blocker(action);
        action->setChecked(checked);
    }
    if (renderer) {
        const int effect = interface ? interface->option(QStringLiteral("onion_effect"), 0).toInt() : 0;
        double opacity = interface ? interface->option(QStringLiteral("onion_opacity"), 0.5).toDouble() : 0.5;
        // Kept as a fraction; a percentage from an older setting is read as one.
        if (opacity > 1.0)
            opacity /= 100.0;
        renderer->setOnionSkin(checked, GraphicsRenderer::OnionEffect(qBound(0, effect, 3)),
                               float(qBound(0.0, opacity, 1.0)));
    }
    updateOnion();
}

void AnimationEditorPrivate::updateOnion()
{
    // The text of the label is the last thing here that needs the panel.
    const FrameCode *onionFrame = onion.animation && onion.selectedFrame >= 0
            && onion.selectedFrame < int(onion.animation->frameCount())
        ? onion.animation->frameAt(uint(onion.selectedFrame))
        : nullptr;
    if (onionLabel) {
        onionLabel->setText(onionFrame ? tr("Animation: %1, Frame: %2")
                                             .arg(onion.animation->displayName())
                                             .arg(onion.selectedFrame + 1)
                                       : tr("Animation: none, Frame: none"));
    }
    if (renderer) {
        const bool shown = onion.enabled && onionFrame;
        renderer->setOnionSkinSprite(shown ? onionFrame->sprite() : nullptr,
                                     shown ? onionFrame->offset() : QPoint());
    }
    q->onionFrameChanged();
}

namespace {

// The first row ticked in a list dialog over `model`, starting with `current` ticked;
// -1 when the user cancels or ticks nothing.
int chooseRow(AnimationEditorPrivate *d, const char *name, const QString &title, QAbstractItemModel *model,
              int current)
{
    Interface *host = d->interface;
    std::unique_ptr<ItemsDialog> dialog(host ? host->itemsDialog(d->panel, QString::fromLatin1(name), title, model, 0)
                                             : new ItemsDialog(d->panel, QString::fromLatin1(name), title, model, 0));
    if (current >= 0 && current < dialog->count())
        dialog->setChecked(current, true);
    if (dialog->exec() != QDialog::Accepted)
        return -1;
    const QList<int> rows = dialog->checkedRows();
    return rows.isEmpty() ? -1 : rows.first();
}

} // namespace

void AnimationEditorPrivate::onionSelect()
{
    if (!animations || !animations->count())
        return;
    makeActive();
    const int row = chooseRow(this, "anim_onion_sel", tr("Onion skin animation"), animations->model(),
                              onion.selectedAnimation);
    if (row < 0)
        return;
    onion.selectedAnimation = row;
    onion.selectedFrame = 0;
    rememberOnion();
    refreshPointers();
    updateOnion();
}

void AnimationEditorPrivate::onionFrameSelect()
{
    if (!onion.animation || !onion.animation->frameCount())
        return;
    makeActive();
    QStringList names;
    for (uint i = 0; i < onion.animation->frameCount(); ++i)
        names << tr("Frame %1").arg(i + 1);
    QStringListModel model(names);
    const int row = chooseRow(this, "anim_onion_framesel", tr("Onion skin frame"), &model, onion.selectedFrame);
    if (row < 0)
        return;
    onion.selectedFrame = row;
    rememberOnion();
    updateOnion();
}

// The choice is kept for the file until the file goes.
void AnimationEditorPrivate::rememberOnion()
{
    if (!onionChoices.contains(animations)) {
        connect(animations, &QObject::destroyed, this, [this](QObject *gone) { onionChoices.remove(gone); });
    }
    onionChoices.insert(animations, QPoint(onion.selectedAnimation, onion.selectedFrame));
}

// The onion skin's animation by its identifier, quicker than the list in a long file.
void AnimationEditorPrivate::onionFind()
{
    if (!animations || !animations->count())
        return;
    makeActive();
    bool ok = false;
    const QString id = QInputDialog::getText(panel, tr("Find animation"), tr("Identifier:"), QLineEdit::Normal,
                                             QString(), &ok)
                           .trimmed();
    if (!ok || id.isEmpty())
        return;
    const int row = animations->find(0, id);
    if (row < 0) {
        tell(QMessageBox::Information, tr("Find animation"), tr("No animation found!"), panel);
        return;
    }
    onion.selectedAnimation = row;
    onion.selectedFrame = 0;
    rememberOnion();
    refreshPointers();
    updateOnion();
}

// ---- the sprite explorer's actions ---------------------------------------------------------

// A frame for each sprite, behind the animation's last one, each showing its sprite.
void AnimationEditorPrivate::addFrames(int row, const QList<Sprite *> &list)
{
    if (!animations || row < 0 || row >= int(animations->count()) || list.isEmpty() || editCodeMode)
        return;
    makeActive();
    {
        ChangeBracket bracket(animations);
        for (Sprite *sprite : list) {
            if (!sprite || row >= int(animations->count()))
                continue;
            if (FrameCode *added = animations->at(uint(row))->addFrame())
                added->setSpriteId(sprite->identifier());
        }
    }
    if (row == animationIndex) {
        frameIndex = int(animations->at(uint(row))->frameCount()) - 1;
        refreshPointers();
        fillFrameBox();
        fillFields();
        updateState();
        showFrame();
    }
}

// One new animation that shows the sprites in their order, one frame each: a run of
// pictures picked in the explorer is most often the run of an animation.
void AnimationEditorPrivate::newAnimation(const QList<Sprite *> &list)
{
    if (!animations || list.isEmpty() || editCodeMode)
        return;
    makeActive();
    int row = -1;
    {
        // The animation and its frames are one step of the user's.
        ChangeBracket bracket(animations);
        if (AnimationCode *added = animations->add(animations->newIdentifier().toString()))
            row = animations->indexOf(added);
        addFrames(row, list);
    }
    if (row >= 0)
        q->selectAnimation(row);
}

void AnimationEditorPrivate::thumbAdd()
{
    if (thumbnails)
        addFrames(animationIndex, thumbnails->selected());
}

void AnimationEditorPrivate::thumbAddAll()
{
    if (thumbnails)
        addFrames(animationIndex, thumbnails->all());
}

void AnimationEditorPrivate::thumbNew()
{
    if (thumbnails)
        newAnimation(thumbnails->selected());
}

void AnimationEditorPrivate::thumbNewAll()
{
    if (thumbnails)
        newAnimation(thumbnails->all());
}

} // namespace Ovra
