#include "editors/organizer/organizereditor.h"
#include "editors/organizer/organizereditor_p.h"

#include "code/animations.h"
#include "foundation/interface.h"
#include "foundation/prompt.h"
#include "foundation/translator.h"
#include "image/sprite.h"
#include "project/organizable.h"
#include "project/projectfile.h"
#include "sound/sound.h"

#include <QAction>
#include <QActionEvent>
#include <QBoxLayout>
#include <QDropEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace Ovra {
namespace {

enum Glyph { GlyphUp, GlyphDown, GlyphUp10, GlyphDown10, GlyphTop, GlyphBottom, GlyphSort };

// The actions by the name the host keeps their icon and shortcut under, with the number
// of their text in the library's string table.
struct ActionEntry
{
    const char *name;
    uint text;
    const char *slot;
    Glyph glyph;
};

const ActionEntry organizerActions[] = {
    {"org_up", 200, SLOT(moveUp()), GlyphUp},
    {"org_down", 201, SLOT(moveDown()), GlyphDown},
    {"org_up_10", 202, SLOT(moveUp10()), GlyphUp10},
    {"org_down_10", 203, SLOT(moveDown10()), GlyphDown10},
    {"org_top", 204, SLOT(moveTop()), GlyphTop},
    {"org_bottom", 205, SLOT(moveBottom()), GlyphBottom},
    {"org_auto", 206, SLOT(moveAuto()), GlyphSort},
};
const uint OrganizerText = 199;

// A triangle pointing up (or down) with its base `width` wide, its tip at `tipY`.
QPainterPath triangle(qreal centerX, qreal tipY, qreal width, bool up)
{
    const qreal height = width * 0.6;
    const qreal baseY = up ? tipY + height : tipY - height;
    QPainterPath path;
    path.moveTo(centerX, tipY);
    path.lineTo(centerX + width / 2, baseY);
    path.lineTo(centerX - width / 2, baseY);
    path.closeSubpath();
    return path;
}

// Drawn the same way in every size, so that the buttons read without a host's icons.
QIcon glyphIcon(Glyph glyph)
{
    QIcon icon;
    for (int side : {16, 24, 32}) {
        QPixmap pixmap(side, side);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.scale(side / 16.0, side / 16.0);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(60, 60, 70));
        const bool up = glyph == GlyphUp || glyph == GlyphUp10 || glyph == GlyphTop;
        switch (glyph) {
        case GlyphUp:
        case GlyphDown:
            painter.drawPath(triangle(8, up ? 4 : 12, 10, up));
            break;
        case GlyphUp10:
        case GlyphDown10:
            painter.drawPath(triangle(8, up ? 2 : 14, 10, up));
            painter.drawPath(triangle(8, up ? 8 : 8, 10, up));
            break;
        case GlyphTop:
        case GlyphBottom:
            painter.drawRect(QRectF(3, up ? 2 : 12, 10, 2));
            painter.drawPath(triangle(8, up ? 6 : 10, 10, up));
            break;
        case GlyphSort:
            for (int i = 0; i < 4; ++i)
                painter.drawRect(QRectF(2, 2.5 + i * 3.2, 4 + i * 3, 2));
            break;
        }
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

// An action made here when the host makes none, so that the editor works without one.
QAction *ownAction(QObject *receiver, const ActionEntry &entry)
{
    Translator *strings = ovraTranslator();
    auto *action = new QAction(strings->text(entry.text), receiver);
    action->setObjectName(QString::fromLatin1(entry.name));
    action->setToolTip(strings->tip(entry.text));
    QObject::connect(action, SIGNAL(triggered()), receiver, entry.slot);
    return action;
}

} // namespace

OrganizerListView::OrganizerListView(QWidget *parent)
    : QListView(parent)
{
}

int OrganizerListView::dropTarget(int gap, int firstRow)
{
    return gap <= firstRow ? gap : gap - 1;
}

void OrganizerListView::dropEvent(QDropEvent *event)
{
    auto *organizable = qobject_cast<OrganizableListModel *>(model());
    if (event->source() != this || !organizable) {
        event->ignore();
        return;
    }
    const QModelIndex over = indexAt(event->pos());
    int gap = organizable->rowCount();
    if (over.isValid()) {
        const QRect rect = visualRect(over);
        gap = event->pos().y() < rect.center().y() ? over.row() : over.row() + 1;
    }
    QModelIndexList chosen = selectionModel()->selectedIndexes();
    int first = organizable->rowCount();
    for (const QModelIndex &index : qAsConst(chosen))
        first = qMin(first, index.row());
    bool moved = false;
    if (!chosen.isEmpty()) {
        const int target = dropTarget(gap, first);
        QMimeData *rows = organizable->mimeData(chosen);
        moved = organizable->dropMimeData(rows, Qt::MoveAction, target, 0, QModelIndex());
        delete rows;
    }
    // Reported as a copy: the rows are in their new place already and must stay.
    event->setDropAction(Qt::CopyAction);
    event->setAccepted(moved);
    stopAutoScroll();
    setState(NoState);
    viewport()->update();
}

OrganizerButton::OrganizerButton(QAction *action, const QIcon &fallback, QWidget *parent)
    : QToolButton(parent)
    , m_fallback(fallback)
{
    setObjectName(action->objectName());
    setAutoRaise(true);
    setDefaultAction(action);
    applyIcon();
}

void OrganizerButton::actionEvent(QActionEvent *event)
{
    QToolButton::actionEvent(event);
    if (event->type() == QEvent::ActionChanged)
        applyIcon();
}

void OrganizerButton::applyIcon()
{
    // Hosts without artwork give empty or single-pixel icons.
    const QAction *action = defaultAction();
    const QIcon given = action ? action->icon() : QIcon();
    if (given.isNull() || given.actualSize(QSize(16, 16)).width() < 8)
        setIcon(m_fallback);
}

OrganizerEditorPrivate::OrganizerEditorPrivate(OrganizerEditor *editor)
    : QObject(editor)
    , q(editor)
{
}

OrganizerEditorPrivate::~OrganizerEditorPrivate()
{
    // The host may have taken the widget into its own panel and deleted it already.
    delete widget.data();
}

void OrganizerEditorPrivate::buildWidgets()
{
    widget = new QWidget;
    widget->setObjectName(QStringLiteral("organizer"));
    list = new OrganizerListView(widget);
    list->setObjectName(QStringLiteral("org_list"));
    list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    list->setDragEnabled(true);
    list->setAcceptDrops(true);
    list->setDropIndicatorShown(true);
    list->setDragDropMode(QAbstractItemView::InternalMove);
    list->setDefaultDropAction(Qt::MoveAction);
    list->setAlternatingRowColors(true);
    list->installEventFilter(this);
    connect(list, &QAbstractItemView::doubleClicked, this, &OrganizerEditorPrivate::itemDblClick);

    auto *buttons = new QVBoxLayout;
    buttons->setContentsMargins(0, 0, 0, 0);
    buttons->setSpacing(2);
    for (int i = 0; i < actions.size(); ++i)
        buttons->addWidget(new OrganizerButton(actions.at(i), glyphIcon(organizerActions[i].glyph), widget));
    buttons->addStretch(1);
    auto *layout = new QHBoxLayout(widget);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(2);
    layout->addWidget(list, 1);
    layout->addLayout(buttons);
}

void OrganizerEditorPrivate::buildActions()
{
    Interface *host = Interface::instance();
    const ActionScope scope{"organizer", 0};
    for (const ActionEntry &entry : organizerActions) {
        QAction *action = host ? host->createAction(scope, QString::fromLatin1(entry.name), ovraTranslator(),
                                                    entry.text, false, this, entry.slot, nullptr, false)
                               : nullptr;
        actions << (action ? action : ownAction(this, entry));
    }
}

QList<uint> OrganizerEditorPrivate::selectedRows() const
{
    QList<uint> rows;
    if (!object || !list->selectionModel())
        return rows;
    const QModelIndexList chosen = list->selectionModel()->selectedIndexes();
    for (const QModelIndex &index : chosen) {
        if (index.isValid() && index.row() < object->rowCount() && !rows.contains(uint(index.row())))
            rows.append(uint(index.row()));
    }
    std::sort(rows.begin(), rows.end());
    return rows;
}

void OrganizerEditorPrivate::selectBlock(int first, int last)
{
    const QModelIndex top = object->index(first, 0);
    const QModelIndex bottom = object->index(last, 0);
    if (!top.isValid() || !bottom.isValid())
        return;
    list->selectionModel()->select(QItemSelection(top, bottom), QItemSelectionModel::ClearAndSelect);
    list->selectionModel()->setCurrentIndex(top, QItemSelectionModel::NoUpdate);
}

void OrganizerEditorPrivate::moveBlockUp(const QList<uint> &rows, uint target)
{
    object->moveRowsUp(rows, target);
    selectBlock(int(target), int(target) + rows.size() - 1);
    list->scrollTo(object->index(int(target), 0));
    modified = true;
    emit q->changed();
}

void OrganizerEditorPrivate::moveBlockDown(const QList<uint> &rows, uint target)
{
    object->moveRowsDown(rows, target);
    selectBlock(int(target) - rows.size() + 1, int(target));
    // With more than one row this is past the block, so that what follows it shows too.
    list->scrollTo(object->index(int(target) - 1 + rows.size(), 0));
    modified = true;
    emit q->changed();
}

void OrganizerEditorPrivate::moveUp()
{
    const QList<uint> rows = selectedRows();
    if (!rows.isEmpty() && rows.first() >= 1)
        moveBlockUp(rows, rows.first() - 1);
}

void OrganizerEditorPrivate::moveUp10()
{
    const QList<uint> rows = selectedRows();
    if (rows.isEmpty())
        return;
    const int target = int(rows.first()) - 10;
    moveBlockUp(rows, target < 1 ? 0 : uint(target));
}

void OrganizerEditorPrivate::moveTop()
{
    const QList<uint> rows = selectedRows();
    if (!rows.isEmpty())
        moveBlockUp(rows, 0);
}

void OrganizerEditorPrivate::moveDown()
{
    const QList<uint> rows = selectedRows();
    if (!rows.isEmpty() && int(rows.last()) + 1 < object->rowCount())
        moveBlockDown(rows, rows.last() + 1);
}

void OrganizerEditorPrivate::moveDown10()
{
    const QList<uint> rows = selectedRows();
    if (!rows.isEmpty())
        moveBlockDown(rows, uint(qMin(object->rowCount() - 1, int(rows.last()) + 10)));
}

void OrganizerEditorPrivate::moveBottom()
{
    const QList<uint> rows = selectedRows();
    if (!rows.isEmpty())
        moveBlockDown(rows, uint(object->rowCount() - 1));
}

void OrganizerEditorPrivate::moveAuto()
{
    if (!object)
        return;
    object->autoOrganize();
    modified = true;
    emit q->changed();
}

void OrganizerEditorPrivate::itemDblClick(const QModelIndex &index)
{
    if (index.isValid())
        emit q->itemClicked(index.row());
}

// The kinds of list we know remove an item through their own operation, which keeps
// the file's undo and its related data right; any other list is asked as a model.
void OrganizerEditorPrivate::removeRow(uint row)
{
    if (auto *sprites = qobject_cast<Sprites *>(object.data()))
        sprites->remove(row);
    else if (auto *palettes = qobject_cast<Palettes *>(object.data()))
        palettes->remove(row);
    else if (auto *sounds = qobject_cast<Sounds *>(object.data()))
        sounds->remove(row);
    else if (auto *animations = qobject_cast<Animations *>(object.data()))
        animations->remove(row);
    else
        object->removeRows(int(row), 1);
}

void OrganizerEditorPrivate::deleteSelected()
{
    const QList<uint> rows = selectedRows();
    if (rows.isEmpty())
        return;
    Prompt prompt;
    prompt.icon = QMessageBox::Question;
    prompt.title = OrganizerEditor::tr("Delete");
    prompt.text = OrganizerEditor::tr("Do you really want to delete the selected item(s)?");
    prompt.buttons = QMessageBox::Yes | QMessageBox::No;
    prompt.defaultButton = QMessageBox::No;
    prompt.parent = widget;
    if (ask(prompt) != QMessageBox::Yes || !object)
        return;
    // From the last, so that the rows still to go keep their numbers.
    object->beginChange();
    for (int i = rows.size() - 1; i >= 0; --i) {
        if (object && int(rows.at(i)) < object->rowCount())
            removeRow(rows.at(i));
    }
    if (object)
        object->endChange();
    modified = true;
    emit q->changed();
}

bool OrganizerEditorPrivate::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == list && event->type() == QEvent::KeyPress
        && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Delete) {
        deleteSelected();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

OrganizerEditor::OrganizerEditor()
    : d(new OrganizerEditorPrivate(this))
{
    d->buildActions();
    d->buildWidgets();
}

OrganizerEditor::~OrganizerEditor() = default;

QWidget *OrganizerEditor::widget()
{
    return d->widget;
}

void OrganizerEditor::activate()
{
    ExtraEditor::activate();
}

void OrganizerEditor::deactivate()
{
    ExtraEditor::deactivate();
}

void OrganizerEditor::retranslate()
{
    Translator *strings = ovraTranslator();
    for (int i = 0; i < d->actions.size(); ++i) {
        d->actions.at(i)->setText(strings->text(organizerActions[i].text));
        d->actions.at(i)->setToolTip(strings->tip(organizerActions[i].text));
    }
}

void OrganizerEditor::release()
{
    setObject(nullptr);
    ExtraEditor::release();
}

void OrganizerEditor::setObject(OrganizableObject *object)
{
    if (d->object == object)
        return;
    d->object = object;
    d->modified = false;
    // The view lets go of a model that is destroyed under it by itself.
    d->list->setModel(object);
}

OrganizableObject *OrganizerEditor::object() const
{
    return d->object;
}

bool OrganizerEditor::isModified() const
{
    if (!d->object)
        return false;
    if (auto *file = dynamic_cast<ProjectFile *>(d->object.data()))
        return file->isModified();
    return d->modified;
}

const char *OrganizerEditor::name() const
{
    return "organizer";
}

QString OrganizerEditor::displayName() const
{
    return ovraTranslator()->text(OrganizerText);
}

} // namespace Ovra
